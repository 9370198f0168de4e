#include "between/pairwise_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

#include "foundation/random.h"
#include "input/dist_mat.h"
#include "model/population.h"
#include "support/seeded_stream.h"

namespace mnd {
namespace {

using Distance = std::function<double(int, int)>;

void fill(DistMat& D, int rows, const Distance& distance) {
    D.initializeMatrixAndArrays(rows);
    D.MatrixSize = rows;
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j <= i; ++j)
            D(i, j) = distance(i, j);
    }
}

// From all pairs of gene copies.
PairSSD brute_force(const DistMat& D, const std::vector<int>& rows, int nb_first) {
    PairSSD ssd;
    const int n = static_cast<int>(rows.size());
    for (int a = 0; a < n; ++a) {
        for (int b = 0; b < a; ++b) {
            double& sum = a < nb_first ? ssd.first : b >= nb_first ? ssd.second : ssd.between;
            sum += D(rows[a], rows[b]);
        }
    }
    return ssd;
}

// A sample whose tally holds these rows.
void tally(Population& sample, const DistMat& D, std::vector<int> rows) {
    sample.sample_size = static_cast<double>(rows.size());
    sample.CreatePermutationVectors(D.MatrixSize);
    sample.SetUpVectorsAfterPermutation(rows.data());
}

// The sums in the order in which the samples themselves take them.
PairSSD sums_of_samples(const DistMat& D, const std::vector<int>& rows, int nb_first) {
    Population first;
    Population second;
    tally(first, D, {rows.begin(), rows.begin() + nb_first});
    tally(second, D, {rows.begin() + nb_first, rows.end()});
    first.ComputeSSDWP(D);
    second.ComputeSSDWP(D);
    return {first.amova.SSD, second.amova.SSD, first.ComputeSSDAP(&second, D)};
}

void expect_same(const PairSSD& found, const PairSSD& expected) {
    EXPECT_EQ(found.first, expected.first);
    EXPECT_EQ(found.second, expected.second);
    EXPECT_EQ(found.between, expected.between);
}

// Kinds of distances, each of which is summed in a way of its own.
struct Kind {
    const char* name;
    Distance distance;
    bool whole;
};
std::vector<Kind> kinds(std::mt19937& random, int rows) {
    std::vector<int> cells(static_cast<std::size_t>(rows * rows));
    for (int& cell : cells)
        cell = static_cast<int>(random() % 1000);
    const auto cell = [cells, rows](int i, int j) {
        return cells[static_cast<std::size_t>(std::max(i, j) * rows + std::min(i, j))];
    };
    return {
        {"0 and 1", [](int i, int j) { return i == j ? 0.0 : 1.0; }, true},
        {"small", [cell](int i, int j) { return i == j ? 0.0 : cell(i, j) % 20; }, true},
        {"small with a diagonal", [cell](int i, int j) { return cell(i, j) % 20; }, true},
        {"negative", [cell](int i, int j) { return cell(i, j) % 20 - 10; }, true},
        {"beyond 16 bits", [cell](int i, int j) { return i == j ? 0.0 : 1000.0 * cell(i, j); }, true},
        {"beyond 32 bits", [cell](int i, int j) { return i == j ? 0.0 : 1e7 * cell(i, j); }, true},
        {"fractions", [cell](int i, int j) { return i == j ? 0.0 : cell(i, j) / 7.0; }, false},
        {"fractions with a diagonal", [cell](int i, int j) { return cell(i, j) / 7.0; }, false},
        {"too large to be exact", [cell](int i, int j) { return 1e14 * cell(i, j); }, false},
    };
}

class PairBlockStream : public mnd_test::SeededStream {
protected:
    std::mt19937 random_{1};

    std::vector<int> random_rows(int n, int rows) {
        std::vector<int> copies(static_cast<std::size_t>(n));
        for (int& row : copies)
            row = static_cast<int>(random_() % static_cast<unsigned>(rows));
        return copies;
    }
};

TEST_F(PairBlockStream, SumsAreThoseOverAllPairsOfCopies) {
    for (int repeat = 0; repeat < 20; ++repeat) {
        const int rows = 1 + static_cast<int>(random_() % 30);
        for (const Kind& kind : kinds(random_, rows)) {
            DistMat D;
            fill(D, rows, kind.distance);
            const int n_i = 1 + static_cast<int>(random_() % 12);
            const int n_j = 1 + static_cast<int>(random_() % 12);
            const std::vector<int> copies = random_rows(n_i + n_j, rows);
            PairBlock block(D, copies, n_i);
            EXPECT_EQ(block.nb_copies(), n_i + n_j);
            EXPECT_EQ(block.nb_first(), n_i);
            const PairSSD found = block.sums();
            const PairSSD expected = brute_force(D, copies, n_i);
            for (const auto sum : {&PairSSD::first, &PairSSD::second, &PairSSD::between})
                EXPECT_NEAR(found.*sum, expected.*sum, 1e-12 * std::abs(expected.*sum)) << kind.name;
            if (kind.whole) {
                EXPECT_TRUE(block.whole_numbers()) << kind.name;
                expect_same(found, expected);
            }
        }
    }
}

TEST_F(PairBlockStream, SumsAreThoseOfTheSamplesToTheLastDigit) {
    for (int repeat = 0; repeat < 20; ++repeat) {
        const int rows = 1 + static_cast<int>(random_() % 30);
        for (const Kind& kind : kinds(random_, rows)) {
            DistMat D;
            fill(D, rows, kind.distance);
            const int n_i = 1 + static_cast<int>(random_() % 12);
            const std::vector<int> copies = random_rows(n_i + 7, rows);
            PairBlock block(D, copies, n_i);
            expect_same(block.sums(), sums_of_samples(D, copies, n_i));
            // The working tallies are clean again.
            expect_same(block.sums(), sums_of_samples(D, copies, n_i));
        }
    }
}

TEST_F(PairBlockStream, FractionsAreNoWholeNumbers) {
    DistMat D;
    fill(D, 2, [](int i, int j) { return i == j ? 0.0 : 0.5; });
    EXPECT_FALSE(PairBlock(D, {0, 1}, 1).whole_numbers());
}

// Sums of up to 200^2 distances stay below 2^53 or not.
TEST_F(PairBlockStream, LargeDistancesAreWholeNumbersWhileTheirSumsAreExact) {
    DistMat D;
    fill(D, 2, [](int i, int j) { return i == j ? 0.0 : 1e12; });
    EXPECT_TRUE(PairBlock(D, std::vector<int>(90, 1), 45).whole_numbers());
    std::vector<int> copies(200, 0);
    copies[0] = 1;
    EXPECT_FALSE(PairBlock(D, copies, 100).whole_numbers());
    EXPECT_TRUE(PairBlock(D, {0, 1, 1}, 1).whole_numbers());
}

// The largest distances and samples that words of 16 bits hold.
TEST_F(PairBlockStream, SumsOfShortWordsDoNotOverflow) {
    DistMat D;
    fill(D, 2, [](int i, int j) { return i == j ? 0.0 : 32767.0; });
    std::vector<int> copies(32767, 1);
    copies[0] = 0;
    PairBlock block(D, copies, 2);
    // One copy of row 0 in the first sample, all others of row 1.
    expect_same(block.sums(), {32767.0, 0.0, 32767.0 * 32765.0});
    PairBlock other(D, copies, 32000);
    expect_same(other.sums(), {32767.0 * 31999.0, 0.0, 32767.0 * 767.0});
}

// 35000 copies of a row are more than 16 bits count.
TEST_F(PairBlockStream, SumsOfManyCopiesDoNotOverflow) {
    DistMat D;
    fill(D, 2, [](int i, int j) { return i == j ? 0.0 : 2.0; });
    std::vector<int> copies(70000, 1);
    copies[0] = 0;
    PairBlock block(D, copies, 35000);
    expect_same(block.sums(), {2.0 * 34999.0, 0.0, 2.0 * 35000.0});
}

TEST_F(PairBlockStream, ConventionalMatrixNeedsNoCells) {
    DistMat stored;
    fill(stored, 9, [](int i, int j) { return i == j ? 0.0 : 1.0; });
    DistMat conventional;
    conventional.conventional = 1;
    conventional.MatrixSize = 9;
    const std::vector<int> copies = random_rows(17, 9);
    PairBlock block(conventional, copies, 6);
    EXPECT_TRUE(block.whole_numbers());
    expect_same(block.sums(), brute_force(stored, copies, 6));
}

TEST_F(PairBlockStream, RowsAreThoseOfTheMatrix) {
    DistMat D;
    fill(D, 100, [](int i, int j) { return std::abs(i - j); });
    PairBlock block(D, {99, 40, 40, 3}, 2);
    expect_same(block.sums(), {59.0, 37.0, 59.0 + 96.0 + 0.0 + 37.0});
}

TEST_F(PairBlockStream, OneCopyEach) {
    DistMat D;
    fill(D, 2, [](int i, int j) { return i == j ? 0.0 : 6.0; });
    PairBlock block(D, {0, 1}, 1);
    expect_same(block.sums(), {0.0, 0.0, 6.0});
    block.shuffle_copies();
    expect_same(block.sums(), {0.0, 0.0, 6.0});
}

TEST_F(PairBlockStream, AnEmptySampleHasNoSums) {
    DistMat D;
    fill(D, 2, [](int i, int j) { return i == j ? 0.0 : 6.0; });
    PairBlock block(D, {0, 1, 1}, 3);
    expect_same(block.sums(), {12.0, 0.0, 0.0});
    PairBlock other(D, {0, 1, 1}, 0);
    expect_same(other.sums(), {0.0, 12.0, 0.0});
    PairBlock none(D, {}, 0);
    expect_same(none.sums(), {0.0, 0.0, 0.0});
}

// --- Shuffles, against plain ones on the rows themselves

void plain_shuffle(std::vector<int>& rows, int n_i, const std::function<double()>& u) {
    for (int k = static_cast<int>(rows.size()) - 1; k > n_i; --k)
        std::swap(rows[static_cast<std::size_t>(k)], rows[static_cast<std::size_t>(k * u())]);
}

// The individuals are moved as pairs that are named by their second cell.
void plain_shuffle_individuals(std::vector<int>& rows, int n_i, const std::function<double()>& u) {
    for (int k = static_cast<int>(rows.size()) - 1; k > n_i + 1; k -= 2) {
        const int drawn = static_cast<int>(k * u());
        const int second = drawn % 2 == 0 ? drawn + 1 : drawn;
        std::swap_ranges(rows.begin() + k - 1, rows.begin() + k + 1, rows.begin() + second - 1);
    }
}

TEST_F(PairBlockStream, ShufflingCopiesFollowsTheDraws) {
    DistMat D;
    fill(D, 40, [](int i, int j) { return i == j ? 0.0 : (i * 7 + j * 7) % 11 + 1; });
    for (const int n_i : {1, 5, 19}) {
        std::vector<int> copies = random_rows(20, 40);
        PairBlock block(D, copies, n_i);
        seed();
        reset_draws_taken();
        for (int i = 0; i < 5; ++i)
            block.shuffle_copies();
        EXPECT_EQ(draws_taken(), 5u * static_cast<unsigned>(20 - 1 - n_i));
        seed();
        for (int i = 0; i < 5; ++i)
            plain_shuffle(copies, n_i, next);
        expect_same(block.sums(), brute_force(D, copies, n_i));
    }
}

TEST_F(PairBlockStream, ShufflingIndividualsFollowsTheDraws) {
    DistMat D;
    fill(D, 40, [](int i, int j) { return i == j ? 0.0 : (i * 7 + j * 7) % 11 + 1; });
    for (const int n_i : {2, 6, 18}) {
        std::vector<int> copies = random_rows(20, 40);
        PairBlock block(D, copies, n_i);
        seed();
        reset_draws_taken();
        for (int i = 0; i < 5; ++i)
            block.shuffle_individuals();
        EXPECT_EQ(draws_taken(), 5u * static_cast<unsigned>((20 - n_i) / 2 - 1));
        seed();
        for (int i = 0; i < 5; ++i)
            plain_shuffle_individuals(copies, n_i, next);
        expect_same(block.sums(), brute_force(D, copies, n_i));
    }
}

// Individuals stay whole: with D = 1 only between the copies of one individual, the sum within the
// two samples counts the individuals.
TEST_F(PairBlockStream, IndividualsStayWhole) {
    DistMat D;
    fill(D, 12, [](int i, int j) { return i / 2 == j / 2 && i != j ? 1.0 : 0.0; });
    PairBlock block(D, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}, 4);
    for (int i = 0; i < 200; ++i) {
        block.shuffle_individuals();
        expect_same(block.sums(), {2.0, 4.0, 0.0});
    }
}

// Sample sizes that hold no whole individuals must not lead outside.
TEST_F(PairBlockStream, OddSizesOfIndividualsStayInside) {
    DistMat D;
    fill(D, 9, [](int i, int j) { return std::abs(i - j); });
    for (int n_i = 0; n_i <= 9; ++n_i) {
        PairBlock block(D, {0, 1, 2, 3, 4, 5, 6, 7, 8}, n_i);
        for (int i = 0; i < 50; ++i) {
            block.shuffle_individuals();
            const PairSSD ssd = block.sums();
            EXPECT_EQ(ssd.first + ssd.second + ssd.between, 120.0);
        }
    }
}

TEST_F(PairBlockStream, TheTotalIsTheSameInEachArrangement) {
    for (const Kind& kind : kinds(random_, 25)) {
        if (!kind.whole) continue;
        DistMat D;
        fill(D, 25, kind.distance);
        PairBlock block(D, random_rows(30, 25), 11);
        const PairSSD before = block.sums();
        for (int i = 0; i < 20; ++i) {
            block.shuffle_copies();
            const PairSSD ssd = block.sums();
            EXPECT_EQ(ssd.first + ssd.second + ssd.between, before.first + before.second + before.between);
        }
    }
}

}  // namespace
}  // namespace mnd
