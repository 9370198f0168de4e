#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "input/dist_mat.h"
#include "model/haplotypes.h"
#include "run/errors.h"
#include "support/captured_reports.h"

namespace {

using mnd::DistMat;
using mnd::Haplo_DB;
using mnd::HaploDef;
using mnd_test::CapturedReports;
using mnd_test::Report;

class HaplotypeRows : public ::testing::Test {
protected:
    void SetUp() override {
        mnd::_AOS_ = &log;
        for (const char* name : {"a", "b"})
            haplotypes.append(new HaploDef(name));
        haplotypes.list.at_const(0)->id = haplotypes.list.at_const(1)->id = 77;
    }
    void TearDown() override { mnd::_AOS_ = &mnd::null_stream(); }
    void label(std::vector<const char*> labels) {
        matrix.MatrixSize = static_cast<int>(labels.size());
        for (const char* text : labels)
            matrix.labels.emplace_back(text);
    }
    int id(int i) const { return haplotypes.list.at_const(i)->id; }

    std::ostringstream log;
    CapturedReports reports;
    Haplo_DB haplotypes;
    DistMat matrix;
};

TEST_F(HaplotypeRows, ByLabel) {
    label({"b", "a"});
    EXPECT_TRUE(haplotypes.associate_with1(matrix));
    EXPECT_EQ(id(0), 1);
    EXPECT_EQ(id(1), 0);
    EXPECT_TRUE(reports.all().empty());
    EXPECT_EQ(log.str(), "");
}

TEST_F(HaplotypeRows, WithoutLabelsThereIsNothingToBind) {
    EXPECT_FALSE(haplotypes.associate_with1(matrix));
    EXPECT_EQ(id(0), -1);
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Warning, "Haplo_DB::associate_with1()", 29}}));
}

TEST_F(HaplotypeRows, SpareLabelsAreTold) {
    label({"b", "x", "a"});
    EXPECT_TRUE(haplotypes.associate_with1(matrix));
    EXPECT_EQ(id(0), 2);
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Warning, "Haplo_DB::associate_with1()", 28}}));
    EXPECT_EQ(log.str(),
              "\tHaplotype \"x\" defined in the labels of the user-defined\n"
              "\tdistance matrix was not found in any population sample\n"
              "      During the association of the Distance matrix LABELS and \n"
              "      the haplotype list, 1 LABELS where found\n"
              "      that did not correspond to any haplotype defined in the samples.\n"
              "      To be sure that there is no error in the data input file\n"
              "      check if all LABELS or Haplotype names are valid.\n");
}

TEST_F(HaplotypeRows, AHaplotypeWithoutLabelFails) {
    label({"a"});
    EXPECT_FALSE(haplotypes.associate_with1(matrix));
    EXPECT_EQ(id(0), 0);
    EXPECT_EQ(id(1), -1);
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, "Haplo_DB::associate_with1()", 173}}));
}

TEST_F(HaplotypeRows, ByPositionNeedsTheSameSize) {
    matrix.MatrixSize = 3;
    EXPECT_FALSE(haplotypes.associate_with2(matrix));
    EXPECT_EQ(id(0), 77);
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, "Haplo_DB::associate_with2()", 30}}));
    matrix.MatrixSize = 2;
    EXPECT_TRUE(haplotypes.associate_with2(matrix));
    EXPECT_EQ(id(0), 0);
    EXPECT_EQ(id(1), 1);
}

TEST_F(HaplotypeRows, AConventionalMatrixFitsAnySize) {
    matrix.conventional = 1;
    EXPECT_TRUE(haplotypes.associate_with2(matrix));
    EXPECT_EQ(id(1), 1);
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(HaplotypeRows, AMatrixWithCellsNeedsARowForEachHaplotypeAlsoWhenItIsNotGiven) {
    matrix.GivenDistMat = 0;
    EXPECT_FALSE(haplotypes.associate_with2(matrix));
    EXPECT_EQ(id(1), 77);
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, "Haplo_DB::associate_with2()", 30}}));
}

}  // namespace
