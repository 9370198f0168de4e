#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "input/dist_mat.h"
#include "input/matrix_rows.h"
#include "support/captured_log.h"
#include "support/captured_reports.h"

namespace {

using namespace mnd;
using mnd_test::CapturedLog;
using mnd_test::CapturedReports;
using mnd_test::Report;

constexpr char kReporter[] = "DistMat::ReadDistanceMatrix()";

// Reads matrices of three rows; line numbers start behind line 20.
class MatrixRows : public ::testing::Test {
protected:
    int read(const std::string& text, LabelPlace place, bool external = false, int size = 3) {
        std::istringstream is(text);
        matrix.reset();
        matrix.initializeMatrixAndArrays(size);
        matrix.MatrixName = "differences";
        matrix.LabelPosition = place;
        line_no = 20;
        const int result = matrix.ReadDistanceMatrix(is, external, line_no);
        rest.assign(std::istreambuf_iterator<char>(is), {});
        return result;
    }
    std::vector<std::string> labels() const {
        std::vector<std::string> list;
        for (const my_string& label : matrix.labels)
            list.emplace_back(label.view());
        return list;
    }
    std::vector<double> cells() const {
        std::vector<double> list;
        for (int i = 0; i < matrix.MatrixSize; ++i) {
            for (int j = 0; j <= i; ++j)
                list.push_back(matrix.get(i, j));
        }
        return list;
    }
    void expect_error(const std::string& text, int code) const {
        EXPECT_EQ(log.text(), text);
        EXPECT_EQ(reports.all(), (std::vector<Report>{{Error, kReporter, code}}));
    }

    CapturedLog log;
    CapturedReports reports;
    DistMat matrix;
    int line_no = 0;
    std::string rest;  // what the reader left in the stream
};

const std::vector<std::string> kLabels = {"h1", "h2", "h3"};

TEST_F(MatrixRows, LabelsOnALine) {
    ASSERT_EQ(read("h1 h2 h3\n0\n1 0\n2 3 0\n}\nnext\n", kLabelsOnLine), 1) << log.text();
    EXPECT_EQ(labels(), kLabels);
    EXPECT_EQ(cells(), (std::vector<double>{0, 1, 0, 2, 3, 0}));
    EXPECT_EQ(line_no, 25);
    EXPECT_EQ(rest, "next\n");
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(MatrixRows, LabelsInAColumn) {
    ASSERT_EQ(read("h1 0\nh2 1 0\nh3 2 3 0\n}\n", kLabelsInColumn), 1) << log.text();
    EXPECT_EQ(labels(), kLabels);
    EXPECT_EQ(cells(), (std::vector<double>{0, 1, 0, 2, 3, 0}));
}

TEST_F(MatrixRows, DiagonalCountsAsItIsWritten) {
    ASSERT_EQ(read("h1 0.5\nh2 1 0.25\nh3 2 3 7\n}\n", kLabelsInColumn), 1);
    EXPECT_EQ(cells(), (std::vector<double>{0.5, 1, 0.25, 2, 3, 7}));
}

TEST_F(MatrixRows, IndentTabsAndRunsOfBlanksAreNoTokens) {
    ASSERT_EQ(read("\t h1\th2  h3 \r\n 0\t\n\t1  0 # a comment\n 2 3\t0\n }\n", kLabelsOnLine), 1)
        << log.text();
    EXPECT_EQ(labels(), kLabels);
    EXPECT_EQ(cells(), (std::vector<double>{0, 1, 0, 2, 3, 0}));
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(MatrixRows, BraceBehindTheLastRowCloses) {
    ASSERT_EQ(read("h1 0\nh2 1 0\nh3 2.0 3.0 0.0 }\n[[Samples]]\n", kLabelsInColumn), 1) << log.text();
    EXPECT_EQ(cells(), (std::vector<double>{0, 1, 0, 2, 3, 0}));
    EXPECT_EQ(rest, "[[Samples]]\n");
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(MatrixRows, ValuesAreFullDoubles) {
    ASSERT_EQ(read("h1 -1\nh2 .5 1e-3\nh3 0.1 123456789.123456789 +2\n}\n", kLabelsInColumn), 1);
    EXPECT_EQ(cells(), (std::vector<double>{-1, .5, 1e-3, 0.1, 123456789.123456789, 2}));
}

TEST_F(MatrixRows, WhatIsWrittenIsReadAgain) {
    ASSERT_EQ(read("h1 h2 h3\n0\n1.5 0\n2 3 0.25\n}\n", kLabelsOnLine), 1);
    const std::vector<double> before = cells();
    std::ostringstream written;
    matrix.write_section(written);
    const std::string text = written.str();
    const std::string body = text.substr(text.find("MatrixData={\n") + 13);
    ASSERT_EQ(read(body, kLabelsOnLine), 1) << body << log.text();
    EXPECT_EQ(labels(), kLabels);
    EXPECT_EQ(cells(), before);
}

TEST_F(MatrixRows, SurplusDistanceIsDroppedWithAWarning) {
    ASSERT_EQ(read("h1 0 9\nh2 1 0\nh3 2 3 0 9 9\n}\n", kLabelsInColumn), 1);
    EXPECT_EQ(cells(), (std::vector<double>{0, 1, 0, 2, 3, 0}));
    EXPECT_EQ(log.text(),
              "\tWarning:  Too many distances are defined on line 21(2 instead of 1)\n"
              "\tWarning:  Too many distances are defined on line 23(4 instead of 3)\n");
    EXPECT_EQ(reports.all(), (std::vector<Report>{{Warning, kReporter, 15}, {Warning, kReporter, 15}}));
}

TEST_F(MatrixRows, SurplusLabelIsAWarning) {
    ASSERT_EQ(read("h1 h2 h3 h4\n0\n1 0\n2 3 0\n}\n", kLabelsOnLine), 1);
    EXPECT_EQ(labels(), kLabels);
    EXPECT_EQ(log.text(), "\tWarning: More labels than anticipated (3) are declared on line 21\n");
    EXPECT_EQ(reports.all(), (std::vector<Report>{{Warning, kReporter, 15}}));
}

TEST_F(MatrixRows, MissingLabels) {
    EXPECT_EQ(read("h1 h2\n0\n1 0\n2 3 0\n}\n", kLabelsOnLine), 0);
    expect_error(
        "\tMissing labels on line 21. Only 2 labels were found while 3 were expected. Last correctly read "
        "label was \"h2\". Aborting reading Distance Matrix\n",
        12);
}

TEST_F(MatrixRows, BraceAmongTheLabels) {
    EXPECT_EQ(read("h1 h2 h3 }\n", kLabelsOnLine), 0);
    expect_error("\tUnexpected closing brace found on line 21. Aborting reading distance matrix.\n", 12);
}

TEST_F(MatrixRows, EmptyRowHasNoLabel) {
    EXPECT_EQ(read("h1 0\n\nh2 1 0\n", kLabelsInColumn), 0);
    expect_error("\tUnable to read label #2 on line 22. Aborting reading Distance Matrix\n", 12);
}

TEST_F(MatrixRows, ShortRowIsToldAtItsFirstMissingCell) {
    EXPECT_EQ(read("h1 0\nh2 1\nh3 2 3 0\n}\n", kLabelsInColumn), 0);
    expect_error("\tUnable to read distance #2 on line 22. Aborting reading distance matrix.\n", 13);
}

TEST_F(MatrixRows, BadValues) {
    for (const char* value : {"1.5x", "x", "inf", "nan", "1e999", "--1", "\"1\""}) {
        const CapturedLog now;
        EXPECT_EQ(read(std::string("0\n") + value + " 0\n", kLabelsInColumn, false, 2), 0);
        EXPECT_EQ(read(std::string("a 0\nb ") + value + " 0\n", kLabelsInColumn, false, 2), 0) << value;
        EXPECT_TRUE(now.holds("\tBad value (\"" + std::string(value) +
                              "\") for distance #1 on line 22. Aborting reading distance matrix.\n"))
            << now.text();
        EXPECT_EQ(reports.all().back(), (Report{Error, kReporter, 13}));
    }
}

TEST_F(MatrixRows, ClosedTooEarly) {
    EXPECT_EQ(read("h1 0\nh2 1 0 }\n[[Samples]]\n", kLabelsInColumn), 0);
    expect_error(
        "\tInvalid dimension for distance matrix: 3 rows were expected, but only 2 were found. Aborting "
        "reading project.\n",
        13);
    EXPECT_EQ(rest, "[[Samples]]\n");
}

TEST_F(MatrixRows, StreamThatEndsTooEarly) {
    EXPECT_EQ(read("h1 0\nh2 1 0\n", kLabelsInColumn, true), 0);
    expect_error(
        "\tInvalid dimension for distance matrix: 3 rows were expected, but only 2 were found. Aborting "
        "reading project.\n",
        13);
}

TEST_F(MatrixRows, MissingClosingBrace) {
    for (const char* end : {"[[Samples]]\n}\n", "[[structure]]\n}\n", "\t[[MANTEL]]\n}\n", "", "more\n"}) {
        const CapturedLog now;
        EXPECT_EQ(read(std::string("h1 0\nh2 1 0\nh3 2 3 0\n") + end, kLabelsInColumn), 0) << end;
        EXPECT_EQ(now.text(),
                  "\tNo closing brace in Matrix Data \"differences\"definition. Aborting reading project.\n");
        EXPECT_EQ(reports.all().back(), (Report{Error, kReporter, 21}));
    }
}

TEST_F(MatrixRows, LinesBehindTheRowsArePassedOverToTheBrace) {
    ASSERT_EQ(read("h1 0\nh2 1 0\nh3 2 3 0\nh4 1 1 1 0\n\n}\nnext\n", kLabelsInColumn), 1);
    EXPECT_EQ(rest, "next\n");
    EXPECT_EQ(line_no, 26);
}

TEST_F(MatrixRows, ExternalFileNeedsNoBrace) {
    EXPECT_EQ(read("h1 0\nh2 1 0\nh3 2 3 0", kLabelsInColumn, true), 1) << log.text();
    EXPECT_EQ(read("h1 h2 h3\n0\n1 0\n2 3 0\n", kLabelsOnLine, true), 1) << log.text();
}

TEST_F(MatrixRows, EmptyExternalFile) {
    EXPECT_EQ(read("", kLabelsOnLine, true), 0);
    EXPECT_TRUE(log.holds("\tMissing labels on line 20. Only 0 labels were found while 3 were expected."));
    EXPECT_EQ(read("", kLabelsInColumn, true), 0);
    EXPECT_TRUE(log.holds("3 rows were expected, but only 0 were found."));
}

TEST_F(MatrixRows, OverLongRowIsTold) {
    EXPECT_EQ(read("h1 0\nh2 1 0" + std::string(200000, ' ') + "\nh3 2 3 0\n}\n", kLabelsInColumn), 0);
    EXPECT_TRUE(log.holds("\tLine #22 of the matrix is longer than 149999 characters\n"));
    EXPECT_TRUE(log.holds("3 rows were expected, but only 1 were found."));
}

TEST_F(MatrixRows, JunkNeverHangs) {
    constexpr char kBytes[] = "\0\xFF}{\n\"#\n[[\n0 0 0\n\xFF\n";
    const std::string junk(kBytes, sizeof kBytes - 1);
    for (std::size_t n = 0; n <= junk.size(); ++n) {
        for (const LabelPlace place : {kLabelsOnLine, kLabelsInColumn})
            EXPECT_EQ(read(junk.substr(0, n), place), 0);
    }
}

TEST(RowTokens, EndAtBlankTabLineFeedZeroAndFF) {
    RowTokens tokens(
        std::string_view(" a\tb\nc\0d\xFF"
                         "e ",
                         11));
    for (const char* token : {"a", "b", "c", "d", "e"}) {
        EXPECT_FALSE(tokens.at_end());
        EXPECT_EQ(tokens.next(), token);
    }
    EXPECT_TRUE(tokens.at_end());
    EXPECT_EQ(tokens.next(), "");
}

}  // namespace
