#include "foundation/tri_mat.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <vector>

#include "support/captured_reports.h"

namespace {

using mnd::TriMat;
using mnd_test::CapturedReports;
using mnd_test::Report;

const std::vector<Report> kNoReport;

// Cell (i, j) holds 10 i + j, i the row.
TriMat numbered(int dim) {
    TriMat m(dim);
    for (int i = 0; i < dim; ++i) {
        for (int j = 0; j <= i; ++j)
            m(i, j) = 10.0 * i + j;
    }
    return m;
}

TEST(TriMat, StartsZeroed) {
    const TriMat m(4);
    EXPECT_EQ(m.dim, 4);
    EXPECT_EQ(m.zero, 0.0);
    EXPECT_EQ(m.one, 1.0);
    EXPECT_EQ(m.conventional, 0);
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j <= i; ++j)
            EXPECT_EQ(m.data[i][j], 0.0);
    }
}

TEST(TriMat, BothOrdersOfIndicesAreOneCell) {
    const TriMat m(5);
    m(1, 4) = 2.5;
    EXPECT_EQ(m(4, 1), 2.5);
    EXPECT_EQ(m.data[4][1], 2.5);
    EXPECT_EQ(&m(1, 4), &m(4, 1));
}

TEST(TriMat, OfNoRowsHasNoStorage) {
    for (const int dim : {0, -3}) {
        const CapturedReports reports;
        const TriMat m(dim);
        EXPECT_EQ(m.dim, 0);
        EXPECT_EQ(m.data, nullptr);
        EXPECT_EQ(m(0, 0), 0.0);  // passes the test of bounds, and shows a zero
        EXPECT_EQ(reports.all(), kNoReport);
    }
}

TEST(TriMat, IndexAboveDimWarnsAndShowsZero) {
    const TriMat m = numbered(3);
    for (const auto& [i, j] : {std::pair{4, 0}, std::pair{0, 4}, std::pair{-1, 2}, std::pair{2, -1}}) {
        const CapturedReports reports;
        EXPECT_EQ(m(i, j), 0.0);
        EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Warning, "TriMat::operator()", 1}}));
    }
}

// Kept on purpose: the test is for larger than dim, so dim itself passes without a warning.
TEST(TriMat, IndexOfExactlyDimPassesTheTest) {
    const CapturedReports reports;
    const TriMat m = numbered(3);
    EXPECT_EQ(m(3, 1), 0.0);
    EXPECT_EQ(m(3, 3), 0.0);
    EXPECT_EQ(m(0, 3), 0.0);
    EXPECT_EQ(reports.all(), kNoReport);
}

TEST(TriMat, WriteOutsideIsLost) {
    TriMat m(2);
    m(7, 0) = 5.0;
    EXPECT_EQ(m(7, 0), 0.0);
    m(2, 0) = 5.0;
    EXPECT_EQ(m(2, 0), 0.0);
    m.conventional = 1;
    m(0, 0) = 5.0;
    m(1, 0) = 5.0;
    EXPECT_EQ(m(0, 0), 0.0);
    EXPECT_EQ(m(1, 0), 1.0);
}

TEST(TriMat, ConventionalModeShowsZeroAndOneForAnyIndices) {
    const CapturedReports reports;
    TriMat m = numbered(2);
    m.conventional = 1;
    EXPECT_EQ(m(3, 3), 0.0);
    EXPECT_EQ(m(3, 2), 1.0);
    EXPECT_EQ(m(1, 1), 0.0);
    EXPECT_EQ(m(1, 0), 1.0);
    EXPECT_EQ(m(-5, 700), 1.0);
    EXPECT_EQ(reports.all(), kNoReport);
}

TEST(TriMat, GetReadsBothOrders) {
    const TriMat m = numbered(3);
    EXPECT_EQ(m.get(2, 1), 21.0);
    EXPECT_EQ(m.get(1, 2), 21.0);
}

TEST(TriMat, CreateGivesANewZeroedMatrix) {
    TriMat m = numbered(3);
    m.create(5);
    EXPECT_EQ(m.dim, 5);
    EXPECT_EQ(m(2, 1), 0.0);
    EXPECT_EQ(m(4, 4), 0.0);
    m.create(m.dim);
    EXPECT_EQ(m.dim, 5);
    m.create(0);
    EXPECT_EQ(m.data, nullptr);
}

TEST(TriMat, DestroyCanBeDoneTwice) {
    TriMat m = numbered(3);
    m.destroy();
    EXPECT_EQ(m.data, nullptr);
    EXPECT_EQ(m.dim, 0);
    m.destroy();
    m.delete_matrix();
    EXPECT_EQ(m.dim, 0);
    TriMat n = numbered(3);
    n.delete_matrix();
    EXPECT_EQ(n.data, nullptr);
    EXPECT_EQ(n.dim, 0);
}

TEST(TriMat, AllocateBuildsRowsForThePresentDim) {
    TriMat m(0);
    m.dim = 3;
    m.allocate_matrix();
    ASSERT_NE(m.data, nullptr);
    EXPECT_EQ(m(2, 2), 0.0);
}

TEST(TriMat, InitializeZeroesEveryCell) {
    TriMat m = numbered(4);
    m.initialize();
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j <= i; ++j)
            EXPECT_EQ(m(i, j), 0.0);
    }
}

TEST(TriMat, AssignmentCopiesCells) {
    TriMat m(2);
    m = numbered(4);
    EXPECT_EQ(m.dim, 4);
    EXPECT_EQ(m(3, 2), 32.0);
    const TriMat& same = m;
    m = same;
    EXPECT_EQ(m(3, 2), 32.0);
}

TEST(TriMat, AssignmentFromConventionalStoresThePattern) {
    TriMat source = numbered(3);
    source.conventional = 1;
    TriMat m(1);
    m = source;
    EXPECT_EQ(m.conventional, 0);
    EXPECT_EQ(m.data[2][1], 1.0);
    EXPECT_EQ(m.data[2][2], 0.0);
    const TriMat copy(source);
    EXPECT_EQ(copy.conventional, 0);
    EXPECT_EQ(copy.data[1][0], 1.0);
}

TEST(TriMat, CopyIsIndependent) {
    TriMat source = numbered(3);
    const TriMat copy(source);
    source(2, 1) = -1.0;
    EXPECT_EQ(copy(2, 1), 21.0);
}

TEST(TriMat, AddAssignAddsCellByCell) {
    TriMat m = numbered(3);
    m += numbered(3);
    EXPECT_EQ(m(2, 1), 42.0);
    EXPECT_EQ(m(1, 1), 22.0);
}

TEST(TriMat, MultiplyAssignAdds) {
    TriMat m(2);
    TriMat other(2);
    m(1, 0) = 2.0;
    other(1, 0) = 3.0;
    m *= other;
    EXPECT_EQ(m(1, 0), 5.0);
}

TEST(TriMat, DifferentSizesReportAndChangeNothing) {
    TriMat m = numbered(3);
    {
        const CapturedReports reports;
        m += numbered(4);
        EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, "TriMat::operator+=()", 44}}));
    }
    {
        const CapturedReports reports;
        m *= numbered(2);
        EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, "TriMat::operator*=()", 44}}));
    }
    EXPECT_EQ(m.dim, 3);
    EXPECT_EQ(m(2, 1), 21.0);
}

TEST(TriMat, PrintsItsRows) {
    TriMat m(3);
    m(1, 0) = 0.5;
    m(2, 0) = -1.25;
    m(2, 1) = 123.456789;
    std::ostringstream out;
    m.print_data(out);
    EXPECT_EQ(out.str(),
              "   0.00000\n"
              "   0.50000   0.00000\n"
              "  -1.25000 123.45679   0.00000");
}

TEST(TriMat, PrintingLeavesTheFormatOfTheStream) {
    std::ostringstream out;
    out << std::scientific << std::setprecision(2);
    numbered(1).print_data(out);
    out << ' ' << 0.125;
    EXPECT_EQ(out.str(), "   0.00000 1.25e-01");
}

TEST(TriMat, OfNoRowsPrintsNothing) {
    std::ostringstream out;
    TriMat(0).print_data(out);
    EXPECT_EQ(out.str(), "");
}

}  // namespace
