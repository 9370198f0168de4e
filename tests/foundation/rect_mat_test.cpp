#include "foundation/rect_mat.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <numeric>
#include <sstream>
#include <vector>

#include "support/captured_reports.h"
#include "support/seeded_stream.h"

namespace {

using mnd::RectMat;
using mnd_test::CapturedOutput;
using mnd_test::CapturedReports;
using mnd_test::Report;

const std::vector<Report> kNoReport;

class RectMatIndex : public mnd_test::SeededStream {};

void fill(RectMat& m, const std::vector<double>& row_by_row) {
    for (int i = 0; i < m.rows; ++i) {
        for (int j = 0; j < m.cols; ++j)
            m(i, j) = row_by_row[static_cast<std::size_t>(i * m.cols + j)];
    }
}

TEST(RectMat, StartsZeroed) {
    const RectMat m(2, 3);
    EXPECT_EQ(m.rows, 2);
    EXPECT_EQ(m.cols, 3);
    EXPECT_EQ(m.conventional, 0);
    EXPECT_EQ(m.mean, 0.0);
    EXPECT_EQ(m.SSX, 0.0);
    EXPECT_EQ(m.Z, 0.0);
    EXPECT_TRUE(m.index.empty());
    EXPECT_STREQ(m.file_name.c_str(), "");
    for (int i = 0; i < 2; ++i) {
        for (int j = 0; j < 3; ++j)
            EXPECT_EQ(m.data[i][j], 0.0);
    }
}

TEST(RectMat, HoldsBothTriangles) {
    const RectMat m(3, 3);
    m(0, 2) = 4.0;
    m(2, 0) = 5.0;
    EXPECT_EQ(m(0, 2), 4.0);
    EXPECT_EQ(m.get(2, 0), 5.0);
    EXPECT_EQ(m.data[0][2], 4.0);
}

TEST(RectMat, IndexOutsideReportsAndShowsZero) {
    const RectMat m(2, 3);
    for (const auto& [i, j] : {std::pair{2, 0}, std::pair{0, 3}, std::pair{9, 9}}) {
        const CapturedReports reports;
        m(i, j) = 6.0;
        EXPECT_EQ(m(i, j), 0.0);
        EXPECT_EQ(reports.all(), (std::vector<Report>(2, {mnd::Error, "RectMat::operator()", 1})));
    }
}

TEST(RectMat, NegativeIndexIsNotReported) {
    const CapturedReports reports;
    const RectMat m(2, 2);
    EXPECT_EQ(m(-1, 0), 0.0);
    EXPECT_EQ(reports.all(), kNoReport);
}

TEST(RectMat, ConventionalModeShowsZeroAndOneForAnyIndices) {
    const CapturedReports reports;
    RectMat m(2, 2);
    m(1, 0) = 8.0;
    m.conventional = 1;
    EXPECT_EQ(m(1, 0), 1.0);
    EXPECT_EQ(m(5, 5), 0.0);
    m(5, 6) = 3.0;
    EXPECT_EQ(m(5, 6), 1.0);
    EXPECT_EQ(reports.all(), kNoReport);
}

TEST(RectMat, AllocateKeepsWhatIsThere) {
    RectMat m(2, 2);
    m(1, 1) = 3.0;
    m.allocate_matrix();
    EXPECT_EQ(m(1, 1), 3.0);
}

TEST(RectMat, DeallocateCanBeDoneTwiceAndKeepsTheIndex) {
    RectMat m(3, 3);
    m.create_index();
    m.de_allocate_matrix();
    m.de_allocate_matrix();
    EXPECT_EQ(m.data, nullptr);
    EXPECT_EQ(m.rows, 0);
    EXPECT_EQ(m.cols, 0);
    EXPECT_EQ(m.index, (std::vector<std::int32_t>{0, 1, 2}));
}

TEST(RectMat, DisplaysItsRows) {
    RectMat m(2, 3);
    fill(m, {1.0, 2.5, -3.0, 0.0, 0.000004, 1234.5});
    std::ostringstream out;
    m.display_matrix(out);
    EXPECT_EQ(out.str(),
              "   1.00000 2.50000 -3.00000 \n"
              "   0.00000 0.00000 1234.50000 \n");
}

TEST(RectMat, DisplayLeavesTheFormatOfTheStream) {
    RectMat m(1, 1);
    std::ostringstream out;
    out << std::scientific << std::setprecision(2);
    m.display_matrix(out);
    out << 0.125;
    EXPECT_EQ(out.str(), "   0.00000 \n1.25e-01");
}

TEST(RectMat, DisplaySaysThatThereIsNoData) {
    RectMat m(2, 2);
    m.de_allocate_matrix();
    std::ostringstream out;
    m.display_matrix(out);
    EXPECT_EQ(out.str(), "Matrix contains no data\n");
}

TEST(RectMat, CreateIndexIsTheIdentity) {
    RectMat m(4, 4);
    m.create_index();
    m.permute_index();
    m.create_index();
    EXPECT_EQ(m.index, (std::vector<std::int32_t>{0, 1, 2, 3}));
}

// Seed -1, after the seeding number: 0.715119168, 0.033021107, 0.8743936. k = 4 draws 2, k = 3
// draws 0, k = 2 draws 1: 0 1 3 2, then 3 1 0 2, then the same.
TEST_F(RectMatIndex, PermutesFromTheTopDown) {
    long idum = -1;
    mnd::ran3(&idum);
    RectMat m(4, 4);
    m.create_index();
    m.permute_index();
    EXPECT_EQ(m.index, (std::vector<std::int32_t>{3, 1, 0, 2}));
}

TEST_F(RectMatIndex, PermuteDrawsOneNumberPerRow) {
    for (int i = 0; i < 6; ++i)
        next();
    const double seventh = next();
    seed();
    RectMat m(6, 6);
    m.create_index();
    m.permute_index();
    EXPECT_EQ(next(), seventh);
    std::sort(m.index.begin(), m.index.end());
    EXPECT_EQ(m.index, (std::vector<std::int32_t>{0, 1, 2, 3, 4, 5}));
}

TEST_F(RectMatIndex, PermuteOfOneRowDrawsOnce) {
    next();
    const double second = next();
    seed();
    RectMat m(1, 1);
    m.create_index();
    m.permute_index();
    EXPECT_EQ(m.index, (std::vector<std::int32_t>{0}));
    EXPECT_EQ(next(), second);
}

TEST_F(RectMatIndex, PermuteWithoutIndexDoesNothing) {
    const double first = next();
    seed();
    RectMat m(3, 3);
    m.permute_index();
    EXPECT_TRUE(m.index.empty());
    EXPECT_EQ(next(), first);
}

// Below the diagonal 2, 4, 9: mean 5, deviations -3, -1, 4, squares 9 + 1 + 16.
TEST(RectMat, ComputeSsxUsesTheLowerTriangle) {
    RectMat m(3, 3);
    fill(m, {100, -7, -7, 2, 100, -7, 4, 9, 100});
    EXPECT_DOUBLE_EQ(m.compute_SSX(), 26.0);
    EXPECT_DOUBLE_EQ(m.SSX, 26.0);
    EXPECT_DOUBLE_EQ(m.mean, 5.0);
}

TEST_F(RectMatIndex, ComputeSsxDoesNotApplyTheIndex) {
    RectMat m(3, 3);
    fill(m, {0, 50, 60, 2, 0, 70, 4, 9, 0});
    m.create_index();
    std::swap(m.index[0], m.index[2]);
    EXPECT_DOUBLE_EQ(m.compute_SSX(), 26.0);
}

TEST(RectMat, ComputeSsxOfOneRowHasNoMean) {
    RectMat m(1, 1);
    EXPECT_EQ(m.compute_SSX(), 0.0);
    EXPECT_TRUE(std::isnan(m.mean));
}

TEST(RectMat, ComputeSsxRefusesARectangle) {
    RectMat m(2, 3);
    const CapturedOutput output;
    EXPECT_EQ(m.compute_SSX(), 0.0);
    EXPECT_EQ(output.text(), "RectMat::compute_SSX() : unable to proceed on non-square matrix\n");
}

// Under the identity: 2 x 1 + 4 x 2 + 9 x 3 = 37. With the index 2 0 1 the cells are
// (0,2) = 60, (1,2) = 70, (1,0) = 2: 60 x 1 + 70 x 2 + 2 x 3 = 206; the first two of them lie
// above the diagonal.
TEST(RectMat, ComputeZTakesThePermutedCells) {
    RectMat m(3, 3);
    RectMat fixed(3, 3);
    fill(m, {0, 50, 60, 2, 0, 70, 4, 9, 0});
    fill(fixed, {0, -1, -1, 1, 0, -1, 2, 3, 0});
    m.create_index();
    EXPECT_DOUBLE_EQ(m.computeZ(fixed), 37.0);
    m.index = {2, 0, 1};
    EXPECT_DOUBLE_EQ(m.computeZ(fixed), 206.0);
    EXPECT_DOUBLE_EQ(m.Z, 206.0);
}

TEST_F(RectMatIndex, ComputeZEqualsThePlainSumForRandomMatrices) {
    for (int n = 1; n <= 8; ++n) {
        RectMat m(n, n);
        RectMat fixed(n, n);
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j) {
                m(i, j) = next();
                fixed(i, j) = next();
            }
        }
        m.create_index();
        for (int round = 0; round < 10; ++round) {
            m.permute_index();
            double expected = 0.0;
            for (int i = 1; i < n; ++i) {
                for (int j = 0; j < i; ++j) {
                    expected +=
                        m(m.index[static_cast<std::size_t>(i)], m.index[static_cast<std::size_t>(j)]) *
                        fixed(i, j);
                }
            }
            EXPECT_EQ(m.computeZ(fixed), expected);
        }
    }
}

TEST(RectMat, ComputeZRefusesARectangle) {
    RectMat m(2, 3);
    m.create_index();
    const CapturedOutput output;
    EXPECT_EQ(m.computeZ(m), 0.0);
    EXPECT_EQ(output.text(), "RectMat::Z(const RectMat& M) : unable to proceed on non-square matrix\n");
}

TEST(RectMat, ComputeZNeedsAnIndex) {
    RectMat m(2, 2);
    const CapturedOutput output;
    EXPECT_EQ(m.computeZ(m), 0.0);
    EXPECT_EQ(output.text(),
              "RectMat::Z(const RectMat& M) : index matrix not available, Z value cannot be computed\n");
}

TEST(RectMat, ComputeZOfASmallerMatrixIsZero) {
    RectMat m(3, 3);
    const RectMat smaller(2, 2);
    m.create_index();
    EXPECT_EQ(m.computeZ(smaller), 0.0);
}

// m below the diagonal 2, 4, 9 (mean 5), M 1, 2, 3 (mean 2): 37 - 3 x 5 x 2 = 7, the sum of
// (2-5)(1-2) + (4-5)(2-2) + (9-5)(3-2) = 3 + 0 + 4.
TEST(RectMat, SumOfProductsIsAboutTheMeans) {
    RectMat m(3, 3);
    RectMat M(3, 3);
    fill(m, {0, 2, 4, 2, 0, 9, 4, 9, 0});
    fill(M, {0, 1, 2, 1, 0, 3, 2, 3, 0});
    m.create_index();
    m.compute_SSX();
    M.compute_SSX();
    EXPECT_DOUBLE_EQ(m.sum_of_products(M), 7.0);
    EXPECT_DOUBLE_EQ(m.Z, 37.0);
}

TEST(RectMat, SumOfProductsRefusesARectangle) {
    RectMat m(2, 3);
    const CapturedOutput output;
    EXPECT_EQ(m.sum_of_products(m), 0.0);
    EXPECT_EQ(output.text(),
              "RectMat::sum_of_products(const RectMat& M) : unable to proceed on non-square matrix\n");
}

TEST(RectMat, SumOfProductsRefusesDifferentSizes) {
    RectMat m(3, 3);
    const RectMat M(2, 2);
    const CapturedOutput output;
    EXPECT_EQ(m.sum_of_products(M), 0.0);
    EXPECT_EQ(
        output.text(),
        "RectMat::sum_of_products(const RectMat& M) : unable to compute correlation between matrices of "
        "different size\n");
}

}  // namespace
