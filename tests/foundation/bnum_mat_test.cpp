#include "foundation/bnum_mat.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/captured_reports.h"

namespace {

using mnd::BnumMat;
using mnd_test::CapturedReports;
using mnd_test::Report;

const std::vector<Report> kNoReport;

double B(const BnumMat& m, int n, int k) {
    return m.data[n - 1][k - 1];
}

// Unsigned Stirling number of the first kind, by its own recursion in integers.
std::int64_t stirling(int n, int k) {
    if (n == 0 || k == 0) return n == k ? 1 : 0;
    return stirling(n - 1, k - 1) + (n - 1) * stirling(n - 1, k);
}

std::int64_t factorial(int n) {
    return n <= 1 ? 1 : n * factorial(n - 1);
}

// The file form: two 32-bit integers, then doubles.
std::string file_image(std::int32_t rows, std::int32_t cols, const std::vector<double>& cells) {
    std::string image(8 + 8 * cells.size(), '\0');
    std::copy_n(reinterpret_cast<const char*>(&rows), 4, image.begin());
    std::copy_n(reinterpret_cast<const char*>(&cols), 4, image.begin() + 4);
    std::copy_n(reinterpret_cast<const char*>(cells.data()), 8 * cells.size(), image.begin() + 8);
    return image;
}

void expect_same_table(const BnumMat& a, const BnumMat& b) {
    ASSERT_EQ(a.rows, b.rows);
    ASSERT_EQ(a.cols, b.cols);
    for (int i = 0; i < a.rows; ++i) {
        for (int j = 0; j < std::min(i + 1, a.cols); ++j) {
            ASSERT_EQ(a.data[i][j], b.data[i][j]) << i << ' ' << j;
        }
    }
}

TEST(BnumMat, StartsZeroed) {
    const BnumMat m(3, 2);
    EXPECT_EQ(m.rows, 3);
    EXPECT_EQ(m.cols, 2);
    EXPECT_EQ(m.data[0][0], 0.0);
    EXPECT_EQ(m.data[2][1], 0.0);
}

TEST(BnumMat, AllocateKeepsWhatIsThere) {
    BnumMat m(3, 3);
    m.data[2][1] = 4.0;
    m.allocate_matrix();
    EXPECT_EQ(m.data[2][1], 4.0);
}

// B(3, 2) = (2 B(2, 1) + 2 B(2, 2)) / 3 = (1 + 2) / 3.
TEST(BnumMat, FirstNumbersByHand) {
    BnumMat m(0, 0);
    ASSERT_EQ(m.re_allocate_matrix(3, 3), 1);
    EXPECT_EQ(B(m, 1, 1), 1.0);
    EXPECT_EQ(B(m, 2, 1), 0.5);
    EXPECT_EQ(B(m, 2, 2), 1.0);
    EXPECT_DOUBLE_EQ(B(m, 3, 1), 1.0 / 3.0);
    EXPECT_DOUBLE_EQ(B(m, 3, 2), 1.0);
    EXPECT_EQ(B(m, 3, 3), 1.0);
}

TEST(BnumMat, NumbersAreStirlingNumbers) {
    BnumMat m(0, 0);
    ASSERT_EQ(m.re_allocate_matrix(15, 15), 1);
    for (int n = 1; n <= 15; ++n) {
        for (int k = 1; k <= n; ++k) {
            const double expected = static_cast<double>(stirling(n, k)) * static_cast<double>(factorial(k)) /
                                    static_cast<double>(factorial(n));
            EXPECT_NEAR(B(m, n, k) / expected, 1.0, 1e-13) << n << ' ' << k;
        }
    }
}

// Sampling formula: the probabilities of k = 1 to n alleles, B(n, k) theta^k n! / (k! (theta)_n),
// add to 1.
TEST(BnumMat, NumbersGiveADistributionOfAlleles) {
    BnumMat m(0, 0);
    ASSERT_EQ(m.re_allocate_matrix(60, 60), 1);
    const double theta = 2.5;
    for (const int n : {1, 2, 17, 60}) {
        double scale = 1.0;  // n! / (theta (theta + 1) ... (theta + n - 1))
        for (int i = 0; i < n; ++i)
            scale *= (i + 1.0) / (theta + i);
        double term = 1.0;  // theta^k / k!
        double sum = 0.0;
        for (int k = 1; k <= n; ++k) {
            term *= theta / k;
            sum += B(m, n, k) * term * scale;
        }
        EXPECT_NEAR(sum, 1.0, 1e-12) << n;
    }
}

TEST(BnumMat, NarrowTableHoldsTheSameNumbers) {
    BnumMat wide(0, 0);
    BnumMat narrow(0, 0);
    ASSERT_EQ(wide.re_allocate_matrix(40, 40), 1);
    ASSERT_EQ(narrow.re_allocate_matrix(40, 7), 1);
    for (int n = 1; n <= 40; ++n) {
        for (int k = 1; k <= std::min(n, 7); ++k)
            EXPECT_EQ(B(narrow, n, k), B(wide, n, k));
    }
}

TEST(BnumMat, GrowthGivesTheNumbersOfAFreshTable) {
    for (const auto& [rows, cols] : {std::pair{30, 8}, std::pair{30, 20}, std::pair{5, 8}, std::pair{5, 5}}) {
        BnumMat grown(0, 0);
        ASSERT_EQ(grown.re_allocate_matrix(12, 8), 1);
        ASSERT_EQ(grown.re_allocate_matrix(rows, cols), 1);
        BnumMat fresh(0, 0);
        ASSERT_EQ(fresh.re_allocate_matrix(rows, cols), 1);
        expect_same_table(grown, fresh);
    }
}

TEST(BnumMat, GrowthOfATableThatWasNotComputedFillsAllOfIt) {
    BnumMat m(12, 8);
    ASSERT_EQ(m.re_allocate_matrix(20, 8), 1);
    BnumMat fresh(0, 0);
    ASSERT_EQ(fresh.re_allocate_matrix(20, 8), 1);
    expect_same_table(m, fresh);
}

TEST(BnumMat, OwnFieldsMayBeTheArguments) {
    BnumMat m(6, 4);
    ASSERT_EQ(m.re_allocate_matrix(m.rows, m.cols), 1);
    EXPECT_EQ(m.rows, 6);
    EXPECT_EQ(m.cols, 4);
    EXPECT_EQ(B(m, 2, 1), 0.5);
}

TEST(BnumMat, TooManyRowsOrColumnsLeaveNoTable) {
    for (const auto& [rows, cols] :
         {std::pair{5001, 10}, std::pair{10, 1001}, std::pair{-1, 10}, std::pair{10, -1}}) {
        BnumMat m(4, 3);
        EXPECT_EQ(m.re_allocate_matrix(rows, cols), 0);
        EXPECT_EQ(m.data, nullptr);
        EXPECT_EQ(m.rows, 4);
        EXPECT_EQ(m.cols, 3);
        EXPECT_EQ(m.re_allocate_matrix(4, 3), 1);
        EXPECT_EQ(B(m, 2, 1), 0.5);
    }
}

TEST(BnumMat, LargestTableIsMade) {
    BnumMat m(0, 0);
    EXPECT_EQ(m.re_allocate_matrix(5000, 1000), 1);
    EXPECT_EQ(m.rows, 5000);
    EXPECT_EQ(m.cols, 1000);
    EXPECT_DOUBLE_EQ(B(m, 5000, 1), 1.0 / 5000.0);
    // B(n, 2) = 2 (1 + 1/2 + ... + 1/(n-1)) / n, as |s(n, 2)| = (n-1)! H(n-1).
    double harmonic = 0.0;
    for (int i = 1; i < 5000; ++i)
        harmonic += 1.0 / i;
    EXPECT_NEAR(B(m, 5000, 2) / (2.0 * harmonic / 5000.0), 1.0, 1e-11);
}

TEST(BnumMat, ShrinksToTheTableOfFive) {
    BnumMat m(0, 0);
    ASSERT_EQ(m.re_allocate_matrix(200, 80), 1);
    ASSERT_EQ(m.re_allocate_matrix(5, 5), 1);
    EXPECT_EQ(m.rows, 5);
    EXPECT_DOUBLE_EQ(B(m, 5, 2), 2.0 / 120.0 * 50.0);  // |s(5, 2)| = 50
}

TEST(BnumMatFile, IsReadRowByRow) {
    const CapturedReports reports;
    std::istringstream is(file_image(3, 2, {1, 2, 3, 4, 5}));
    BnumMat m(0, 0);
    is >> m;
    EXPECT_EQ(reports.all(), kNoReport);
    EXPECT_EQ(m.rows, 3);
    EXPECT_EQ(m.cols, 2);
    EXPECT_EQ(m.data[0][0], 1.0);
    EXPECT_EQ(m.data[1][0], 2.0);
    EXPECT_EQ(m.data[1][1], 3.0);
    EXPECT_EQ(m.data[2][0], 4.0);
    EXPECT_EQ(m.data[2][1], 5.0);
}

TEST(BnumMatFile, ReplacesAnEarlierTable) {
    BnumMat m(0, 0);
    ASSERT_EQ(m.re_allocate_matrix(2, 2), 1);
    std::istringstream is(file_image(3, 2, {1, 2, 3, 4, 5}));
    is >> m;
    EXPECT_EQ(m.data[2][1], 5.0);
    ASSERT_EQ(m.re_allocate_matrix(4, 2), 1);
    EXPECT_EQ(B(m, 2, 1), 0.5);
}

TEST(BnumMatFile, WithColsAboveRowsIsRefused) {
    const CapturedReports reports;
    std::istringstream is(file_image(2, 3, {1, 2, 3, 4, 5, 6}));
    BnumMat m(1, 1);
    is >> m;
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, "operator>>(istream& is, BnumMat& S)", 10}}));
    EXPECT_EQ(m.rows, 1);
    EXPECT_EQ(m.data[0][0], 0.0);
}

TEST(BnumMatFile, WithAnImpossibleHeaderIsRefused) {
    for (const auto& [rows, cols] :
         {std::pair{-1, -1}, std::pair{3, -2}, std::pair{2147483647, 2147483647}}) {
        const CapturedReports reports;
        std::istringstream is(file_image(rows, cols, {}));
        BnumMat m(1, 1);
        is >> m;
        EXPECT_EQ(reports.all(),
                  (std::vector<Report>{{mnd::Error, "operator>>(istream& is, BnumMat& S)", 10}}));
        EXPECT_EQ(m.rows, 1);
    }
}

TEST(BnumMatFile, WithoutAWholeHeaderIsRefused) {
    const CapturedReports reports;
    std::istringstream is("abc");
    BnumMat m(1, 1);
    is >> m;
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, "operator>>(istream& is, BnumMat& S)", 10}}));
}

TEST(BnumMatFile, CutShortKeepsWhatWasRead) {
    const CapturedReports reports;
    std::istringstream is(file_image(3, 3, {1, 2, 3, 4}) + "half");
    BnumMat m(0, 0);
    is >> m;
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, "operator>>(istream& is, BnumMat& M)", 9}}));
    EXPECT_EQ(m.rows, 3);
    EXPECT_EQ(m.data[1][1], 3.0);
    EXPECT_EQ(m.data[2][0], 4.0);
    EXPECT_EQ(m.data[2][1], 0.0);
    EXPECT_EQ(m.data[2][2], 0.0);
}

TEST(BnumMatFile, FailedStreamIsRefused) {
    const CapturedReports reports;
    std::istringstream is;
    is.setstate(std::ios::failbit);
    BnumMat m(1, 1);
    is >> m;
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, "operator>>(ifstream& is, BnumMat& S)", 9}}));
}

TEST(BnumMatFile, ThatIsMissingWarns) {
    const CapturedReports reports;
    BnumMat m(0, 0);
    EXPECT_EQ(m.read_from_file("no such file.bnb"), 0);
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Warning, "BnumMat::read_from_file()", 8}}));
    EXPECT_STREQ(m.file_name.c_str(), "no such file.bnb");
}

TEST(BnumMatFile, IsReadByName) {
    const mnd_test::ScratchDirectory here("mendcore_bnum_by_name");
    std::ofstream("table.bnb", std::ios::binary) << file_image(2, 1, {0.25, 10.0});
    const CapturedReports reports;
    const BnumMat by_constructor(mnd::my_string("table.bnb"));
    EXPECT_EQ(by_constructor.rows, 2);
    EXPECT_EQ(by_constructor.data[1][0], 10.0);
    EXPECT_STREQ(by_constructor.file_name.c_str(), "table.bnb");
    BnumMat by_name(0, 0);
    EXPECT_EQ(by_name.read_from_file("table.bnb"), 1);
    EXPECT_EQ(by_name.data[0][0], 0.25);
    EXPECT_EQ(reports.all(), kNoReport);
}

}  // namespace
