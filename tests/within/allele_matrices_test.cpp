// Distance matrices of samples of generic and of microsatellite alleles.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "model/popul_microsat.h"
#include "model/popul_standard.h"
#include "run/errors.h"
#include "run/settings.h"
#include "support/captured_reports.h"
#include "support/temp_folder.h"
#include "within/text_sample.h"

namespace {

using mnd_test::CapturedReports;
using mnd_test::Report;
using StandardSample = mnd_test::TextSample<mnd::PopulStandard>;
using MicrosatSample = mnd_test::TextSample<mnd::PopulMicrosat>;

class AlleleMatrices : public ::testing::Test {
protected:
    mnd::TAlleleDB db;  // outlives the samples
    mnd::settings s;
    mnd_test::CapturedOutput progress;
    std::ostringstream log;

    void SetUp() override { mnd::_AOS_ = &log; }
    void TearDown() override { mnd::_AOS_ = &mnd::null_stream(); }
};

TEST_F(AlleleMatrices, StandardCountsDifferentKnownAlleles) {
    StandardSample t(std::vector<std::string>(3, ""));
    t.add_alleles(db, {{"a", "b", "c", "d"}, {"a", "x", "?", "e"}, {"z", "x", "y", "d"}});
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
    EXPECT_EQ(t.cell(1, 0), 2.0);
    EXPECT_EQ(t.cell(2, 0), 3.0);
    EXPECT_EQ(t.cell(2, 1), 2.0);
    EXPECT_EQ(t.cell(0, 1), 0.0);  // nothing above the diagonal
    EXPECT_EQ(t.sample.max_dist, 3);
    EXPECT_EQ(t.sample.nb_hapl, 3);
}

TEST_F(AlleleMatrices, StandardTakesUsableLociOnlyAndNoMethod) {
    StandardSample t(std::vector<std::string>(2, ""));
    t.add_alleles(db, {{"a", "b", "c"}, {"x", "y", "z"}});
    t.drop(1);
    t.sample.distance_method = 3;
    t.sample.gamma_a = 0.5;
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 1), 1);
    EXPECT_EQ(t.cell(1, 0), 2.0);
}

// A longer name that begins with the missing-data character is an allele like any other.
TEST_F(AlleleMatrices, OnlyTheOneCharacterNameIsMissing) {
    StandardSample t(std::vector<std::string>(2, ""));
    t.add_alleles(db, {{"??", "a"}, {"b", "?"}});
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
    EXPECT_EQ(t.cell(1, 0), 1.0);
}

TEST_F(AlleleMatrices, LociThatAHaplotypeLacksAreMissing) {
    StandardSample t(std::vector<std::string>(3, ""));
    t.add_alleles(db, {{"a", "b"}, {"x"}, {}});
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
    EXPECT_EQ(t.cell(1, 0), 1.0);
    EXPECT_EQ(t.cell(2, 0), 0.0);
}

TEST_F(AlleleMatrices, MicrosatCountsLociOrSquaresSizes) {
    MicrosatSample t(std::vector<std::string>(2, ""));
    t.add_alleles(db, {{"12"}, {"15"}});
    t.sample.distance_method = 0;
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
    EXPECT_EQ(t.cell(1, 0), 1.0);
    for (const int method : {1, 2, -1}) {
        t.sample.distance_method = method;
        ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
        EXPECT_EQ(t.cell(1, 0), 9.0);
        EXPECT_EQ(t.sample.max_dist, 9);
    }
}

TEST_F(AlleleMatrices, MicrosatLeavesOutMissingAlleles) {
    MicrosatSample t(std::vector<std::string>(3, ""));
    t.add_alleles(db, {{"12", "?", "7"}, {"?", "15", "9"}, {"14", "15", "007"}});
    t.sample.distance_method = 1;
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
    EXPECT_EQ(t.cell(1, 0), 4.0);
    EXPECT_EQ(t.cell(2, 0), 4.0);
    EXPECT_EQ(t.cell(2, 1), 4.0);
    t.sample.distance_method = 0;
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
    EXPECT_EQ(t.cell(2, 0), 1.0);  // "7" and "007" are one size
}

TEST_F(AlleleMatrices, AnInfiniteMicrosatIsReported) {
    MicrosatSample t(std::vector<std::string>(2, ""));
    t.add_alleles(db, {{"12"}, {"1e999"}});
    const CapturedReports captured;
    EXPECT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 0);
    EXPECT_EQ(captured.all(),
              (std::vector<Report>{{mnd::Error, "PopulMicrosat::compute_distance_matrix()", 121}}));
    EXPECT_EQ(t.sample.dist_mat, nullptr);
}

TEST_F(AlleleMatrices, SamplesWithoutHaplotypesAreReported) {
    mnd::PopulStandard standard;
    mnd::PopulMicrosat microsat;
    const CapturedReports captured;
    EXPECT_EQ(standard.compute_distance_matrix(nullptr, &s, 0), 0);
    EXPECT_EQ(microsat.compute_distance_matrix(nullptr, &s, 0), 0);
    EXPECT_EQ(captured.all(),
              (std::vector<Report>{{mnd::Error, "PopulStandard::compute_distance_matrix()", 108},
                                   {mnd::Error, "PopulMicrosat::compute_distance_matrix()", 108}}));
}

TEST_F(AlleleMatrices, TheStopFlagEndsTheWork) {
    StandardSample t(std::vector<std::string>(2, ""));
    t.add_alleles(db, {{"a"}, {"b"}});
    s.stop_computations = 1;
    EXPECT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 0);
}

TEST_F(AlleleMatrices, ProgressGoesToTheLogAndTheTableToTheFile) {
    const mnd_test::TempFolder folder;
    MicrosatSample t(std::vector<std::string>(2, ""));
    t.add_alleles(db, {{"12"}, {"15"}});
    t.sample.distance_method = 1;
    std::fstream out(folder / "matrix.txt", std::ios::out);
    ASSERT_EQ(t.sample.compute_distance_matrix(&out, &s, 0), 1);
    out.close();
    EXPECT_EQ(mnd_test::read_text(folder / "matrix.txt"),
              "\nInter-haplotypic distance matrix:\n\n"
              "          0.0000\n"
              "  9.0000        \n");
    const std::string text = log.str();
    EXPECT_EQ(text.find("\t\tBeginning distance computations ...\n\t\tdone ! ("), 0U);
    EXPECT_NE(text.find(" ms)\n\t\t\tWriting matrix to file ...\n"), std::string::npos);
}

}  // namespace
