#include "between/amova_fast_sums.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <functional>
#include <random>
#include <vector>

#include "input/dist_mat.h"
#include "model/population.h"

namespace {

using mnd::DistMat;
using mnd::PairSums;

using Cell = std::function<double(int, int)>;

void fill(DistMat& D, int rows, const Cell& cell) {
    D.initializeMatrixAndArrays(rows);
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j <= i; ++j)
            D(i, j) = cell(i, j);
    }
}

std::vector<int> random_copies(std::mt19937& random, int n, int rows) {
    std::vector<int> copies(static_cast<std::size_t>(n));
    for (int& row : copies)
        row = static_cast<int>(random() % static_cast<unsigned>(rows));
    return copies;
}

double all_pairs(const DistMat& D, const std::vector<int>& copies) {
    double sum = 0.0;
    for (std::size_t a = 0; a < copies.size(); ++a) {
        for (std::size_t b = 0; b < a; ++b)
            sum += D(copies[a], copies[b]);
    }
    return sum;
}

double tallied(const DistMat& D, std::vector<int> copies, int rows) {
    mnd::Population sample;
    sample.sample_size = static_cast<double>(copies.size());
    sample.CreatePermutationVectors(rows);
    sample.SetUpVectorsAfterPermutation(copies.data());
    sample.ComputeSSDWP(D);
    return sample.amova.SSD;
}

// Sums of samples of 1 to 90 copies among `rows` rows: to the last digit those of the tally, and
// close to those over all pairs.
void expect_sums(const Cell& cell, int rows, bool whole) {
    std::mt19937 random(7);
    DistMat D;
    fill(D, rows, cell);
    const std::vector<int> all = random_copies(random, 400, rows);
    PairSums sums(D, all);
    EXPECT_EQ(sums.whole_numbers(), whole);
    for (int n = 1; n <= 90; ++n) {
        for (int first = 0; first <= 300; first += 150) {
            const std::vector<int> copies(all.begin() + first, all.begin() + first + n);
            const double sum = sums.within(copies.data(), n);
            ASSERT_EQ(sum, tallied(D, copies, rows)) << n;
            ASSERT_NEAR(sum, all_pairs(D, copies), 1e-9 * std::abs(sum));
        }
    }
    for (int i = 0; i < 400; ++i)
        ASSERT_EQ(sums.between(all[static_cast<std::size_t>(i)], all[0]),
                  D(all[static_cast<std::size_t>(i)], all[0]));
}

// Up to 30 samples of 0 to 8 copies.
void expect_sums_of_each(const Cell& cell, int rows) {
    std::mt19937 random(11);
    DistMat D;
    fill(D, rows, cell);
    const std::vector<int> all = random_copies(random, 240, rows);
    PairSums sums(D, all);
    for (std::size_t nb_samples = 0; nb_samples <= 30; ++nb_samples) {
        std::vector<int> sizes(nb_samples);
        for (int& size : sizes)
            size = static_cast<int>(random() % 9);
        std::vector<double> each;
        sums.within_each(all.data(), sizes, each);
        ASSERT_EQ(each.size(), nb_samples);
        const int* copies = all.data();
        for (std::size_t i = 0; i < nb_samples; ++i) {
            ASSERT_EQ(each[i], sums.within(copies, sizes[i]));
            ASSERT_EQ(each[i], tallied(D, {copies, copies + sizes[i]}, rows));
            copies += sizes[i];
        }
    }
}

TEST(PairSums, ConsecutiveSamplesOfAnySizes) {
    expect_sums_of_each([](int i, int j) { return i == j ? 0.0 : 1 + (i * 31 + j * 17) % 23; }, 20);
    for (const int rows : {1, 3, 20, 100})
        expect_sums_of_each([](int i, int j) { return 0.1 + ((i * 31 + j * 17) % 23) / 7.0; }, rows);
}

TEST(PairSums, SmallWholeNumbers) {
    for (const int rows : {1, 2, 7, 40, 64, 65, 200, 1000})
        expect_sums([](int i, int j) { return i == j ? 0.0 : 1 + (i * 31 + j * 17) % 23; }, rows, true);
}

TEST(PairSums, WholeNumbersOfTheDiagonal) {
    expect_sums([](int i, int j) { return (i + j) % 5; }, 30, true);
}

// Samples of 90 copies at such distances would overflow 16 bits.
TEST(PairSums, LargeWholeNumbers) {
    for (const double largest : {255.0, 256.0, 65535.0, 65536.0, 2147483647.0}) {
        for (const int rows : {5, 300})
            expect_sums([largest](int i, int j) { return i == j ? 0.0 : largest - (i + j) % 3; }, rows, true);
    }
}

TEST(PairSums, NegativeWholeNumbers) {
    expect_sums([](int i, int j) { return i == j ? 0.0 : (i + j) % 7 - 9; }, 20, true);
}

TEST(PairSums, Fractions) {
    for (const int rows : {1, 2, 7, 64, 65, 200})
        expect_sums([](int i, int j) { return i == j ? 0.0 : 0.1 + ((i * 31 + j * 17) % 23) / 7.0; }, rows,
                    rows == 1);
}

TEST(PairSums, FractionsOfTheDiagonal) {
    expect_sums([](int i, int j) { return (i + j + 1) / 3.0; }, 50, false);
}

// A sum of these would not be exact; they are summed in the order of the rows.
TEST(PairSums, HugeWholeNumbers) {
    expect_sums([](int i, int j) { return i == j ? 0.0 : 1e15 + i; }, 10, false);
}

TEST(PairSums, ConventionalDistancesCountDifferentRows) {
    std::mt19937 random(3);
    DistMat D;
    D.conventional = 1;
    const std::vector<int> copies = random_copies(random, 50, 8);
    PairSums sums(D, copies);
    EXPECT_TRUE(sums.whole_numbers());
    for (int n = 1; n <= 50; ++n) {
        const std::vector<int> part(copies.begin(), copies.begin() + n);
        EXPECT_EQ(sums.within(copies.data(), n), all_pairs(D, part));
    }
    EXPECT_EQ(sums.between(copies[0], copies[0]), 0.0);
}

// Only the rows that occur are numbered: gaps do not matter.
TEST(PairSums, RowsMayBeFewAndFarBetween) {
    DistMat D;
    fill(D, 500, [](int i, int j) { return i == j ? 0.0 : (i + j) % 11 + 1; });
    const std::vector<int> copies = {499, 3, 499, 250, 3, 0};
    PairSums sums(D, copies);
    EXPECT_EQ(sums.within(copies.data(), 6), all_pairs(D, copies));
    EXPECT_EQ(sums.within(copies.data() + 1, 1), 0.0);
    EXPECT_EQ(sums.within(copies.data(), 0), 0.0);
}

TEST(PairSums, NoCopiesNoSums) {
    DistMat D;
    PairSums sums(D, {});
    EXPECT_EQ(sums.within(nullptr, 0), 0.0);
}

}  // namespace
