#include "input/dist_mat.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "results/xml_tags.h"
#include "run/process.h"
#include "run/settings.h"
#include "support/captured_log.h"
#include "support/captured_reports.h"

namespace {

using namespace mnd;
using mnd_test::CapturedLog;
using mnd_test::CapturedReports;

DistMat two_rows() {
    DistMat matrix;
    matrix.initializeMatrixAndArrays(2);
    matrix.MatrixName = "steps";
    matrix.labels[0] = "h1";
    matrix.labels[1] = "a<b";
    matrix(1, 0) = 2.5;
    return matrix;
}

std::string document(DistMat const& matrix) {
    std::ostringstream text;
    text << matrix;
    return text.str();
}

TEST(DistMat, StartsWithoutMatrix) {
    const DistMat matrix;
    EXPECT_EQ(matrix.MatrixSize, 0);
    EXPECT_EQ(matrix.LabelPosition, kLabelsOnLine);
    EXPECT_EQ(matrix.MatrixName.view(), "");
    EXPECT_TRUE(matrix.labels.empty());
    EXPECT_EQ(matrix.dim, 0);
    EXPECT_EQ(document(matrix), "");
}

TEST(DistMat, SizedConstructorHasARowsButNoMatrix) {
    const DistMat matrix(3);
    EXPECT_EQ(matrix.dim, 3);
    EXPECT_EQ(matrix.MatrixSize, 0);
    EXPECT_EQ(matrix(2, 1), 0.0);
}

TEST(DistMat, InitializeReplacesCellsAndLabels) {
    DistMat matrix = two_rows();
    matrix.initializeMatrixAndArrays(3);
    EXPECT_EQ(matrix.MatrixSize, 3);
    EXPECT_EQ(matrix.dim, 3);
    EXPECT_EQ(matrix(1, 0), 0.0);
    ASSERT_EQ(matrix.labels.size(), 3u);
    EXPECT_EQ(matrix.labels[0].view(), "");
}

TEST(DistMat, CopyTakesEverything) {
    DistMat matrix = two_rows();
    matrix.LabelPosition = kLabelsInColumn;
    matrix.DataType = DNA;
    DistMat copy(5);
    copy.conventional = 1;
    copy = matrix;
    EXPECT_EQ(copy.MatrixName.view(), "steps");
    EXPECT_EQ(copy.MatrixSize, 2);
    EXPECT_EQ(copy.LabelPosition, kLabelsInColumn);
    EXPECT_EQ(copy.DataType, DNA);
    ASSERT_EQ(copy.labels.size(), 2u);
    EXPECT_EQ(copy.labels[1].view(), "a<b");
    EXPECT_EQ(copy(0, 1), 2.5);
    EXPECT_EQ(copy.conventional, 0);
}

TEST(DistMat, ResetLeavesNoMatrix) {
    DistMat matrix = two_rows();
    matrix.conventional = 1;
    matrix.reset();
    EXPECT_EQ(matrix.MatrixSize, 0);
    EXPECT_EQ(matrix.MatrixName.view(), "");
    EXPECT_TRUE(matrix.labels.empty());
    EXPECT_EQ(matrix.conventional, 0);
    EXPECT_EQ(matrix(1, 0), 0.0);
}

TEST(DistMatText, IsTheSectionAndEscapedInTheDocument) {
    const DistMat matrix = two_rows();
    const std::string head =
        "\t[[DistanceMatrix]]\n\n\t\tMatrixName= \"steps\"\n\t\tMatrixSize= 2\n\t\tLabelPosition=LINE\n"
        "\t\tMatrixData={\n\n";
    const std::string cells = "   0.00000\n   2.50000   0.00000";
    EXPECT_EQ(document(matrix), head + "h1 a&lt;b \n" + cells + "\n\t\t}\n");
    std::ostringstream file;
    matrix.write_section(file);
    EXPECT_EQ(file.str(), head + "h1 a<b \n" + cells + "\n\t\t}\n");
}

TEST(DistMatText, TriangleStandsInATagUnderXml) {
    const DistMat matrix = two_rows();
    xmlOutput = true;
    const std::string text = document(matrix);
    std::ostringstream file;
    matrix.write_section(file);
    xmlOutput = false;
    EXPECT_NE(text.find("<hapDistMatrix"), std::string::npos);
    EXPECT_NE(text.find("</hapDistMatrix>"), std::string::npos);
    EXPECT_NE(text.find("<hapDistMatrixLabels"), std::string::npos);
    EXPECT_NE(text.find("</hapDistMatrixLabels>"), std::string::npos);
    EXPECT_EQ(file.str().find("hapDistMatrix"), std::string::npos);
}

TEST(DistMatText, ConventionalMatrixIsASentence) {
    DistMat matrix = two_rows();
    matrix.conventional = 1;
    EXPECT_NE(document(matrix).find("\nConventional FST Matrix: Dij=1 if i!=j and O else:\n\n\n\t\t}\n"),
              std::string::npos);
    EXPECT_EQ(document(matrix).find("2.50000"), std::string::npos);
}

TEST(DistMatText, MissingLabelsAreAnInfo) {
    CapturedReports reports;
    DistMat matrix = two_rows();
    matrix.labels.clear();
    document(matrix);
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0].type, Info);
    EXPECT_EQ(reports.all()[0].code, 11);
}

TEST(DistMatExternalName, IsJoinedToTheProjectFolder) {
    CapturedLog log;
    settings s;
    s.project_directory = "/data/";
    DistMat matrix;
    matrix.ProfileSettings::the_settings = &s;
    char path[kPathBuffer];
    matrix.build_ext_name(path, "m.txt");
    EXPECT_STREQ(path, "/data/m.txt");
    matrix.build_ext_name(path, "sub/m.txt");
    EXPECT_STREQ(path, "sub/m.txt");
    matrix.build_ext_name(path, "sub\\m.txt");
    EXPECT_STREQ(path, "sub\\m.txt");
    matrix.build_ext_name(path, std::string(1000, 'x').c_str());
    EXPECT_EQ(std::string(path).size(), 399u);
    EXPECT_EQ(log.text(), "");
}

TEST(DistMatExternalName, StaysAsItIsWithoutSettings) {
    CapturedLog log;
    const DistMat matrix;
    char path[kPathBuffer];
    matrix.build_ext_name(path, "m.txt");
    EXPECT_STREQ(path, "m.txt");
    EXPECT_EQ(log.text(), "Pointer to project dir is not initialized. ERROR\n");
}

}  // namespace
