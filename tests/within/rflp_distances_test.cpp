// Distances of samples of RFLP haplotypes.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "model/popul_rflp.h"
#include "run/settings.h"
#include "support/captured_reports.h"
#include "support/seeded_stream.h"
#include "within/text_sample.h"

namespace {

using mnd::PopulRFLP;
using mnd_test::CapturedReports;
using mnd_test::Report;
using RflpSample = mnd_test::TextSample<PopulRFLP>;

class RflpDistances : public mnd_test::SeededStream {
protected:
    mnd::settings s;
    mnd_test::CapturedOutput progress;
};

// Sites: equal; both missing; one missing; gap; different.
TEST_F(RflpDistances, ComparesEveryUsableSite) {
    RflpSample t({"0???1", "0?1-0"});
    ASSERT_EQ(t.sample.diff_no_weight("0?1-1", "0???0"), 1);
    EXPECT_EQ(t.sample.distance, 1.0);
    EXPECT_NEAR(t.sample.distance_var, 0.8 * 0.2 * 5.0, 1e-15);
    ASSERT_EQ(t.sample.p_diff("0?1-1", "0???0"), 1);
    EXPECT_EQ(t.sample.distance, 0.2);
    EXPECT_NEAR(t.sample.distance_var, 0.8 * 0.2 / 5.0, 1e-15);
}

TEST_F(RflpDistances, AGapIsADifferenceIfDeletionsHaveAWeight) {
    RflpSample t({"0101", "0-01"});
    ASSERT_EQ(t.sample.diff_no_weight("0101", "0-01"), 1);
    EXPECT_EQ(t.sample.distance, 1.0);
    t.sample.del_weight = 5.0;
    ASSERT_EQ(t.sample.diff_no_weight("0101", "0-01"), 1);
    EXPECT_EQ(t.sample.distance, 1.0);
    t.sample.del_weight = 0.0;
    ASSERT_EQ(t.sample.diff_no_weight("0101", "0-01"), 1);
    EXPECT_EQ(t.sample.distance, 0.0);
    ASSERT_EQ(t.sample.p_diff("0-11", "0111"), 1);
    EXPECT_EQ(t.sample.distance, 0.0);
}

TEST_F(RflpDistances, WithoutAUsableSiteThereIsNoDistance) {
    RflpSample t({"01", "00"});
    t.drop(0);
    t.drop(1);
    t.sample.distance = t.sample.distance_var = 9.0;
    EXPECT_EQ(t.sample.diff_no_weight("01", "00"), 0);
    EXPECT_EQ(t.sample.distance, 0.0);
    EXPECT_EQ(t.sample.distance_var, 0.0);
    EXPECT_EQ(t.sample.p_diff("01", "00"), 0);
    const CapturedReports captured;
    EXPECT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 0);
    EXPECT_EQ(captured.all(),
              (std::vector<Report>{{mnd::Error, "PopulRFLP::compute_distance_matrix(ofstream)", 136}}));
}

TEST_F(RflpDistances, TheMatrixHoldsWhatThePairMethodsGive) {
    std::vector<std::string> texts(7);
    for (std::string& text : texts) {
        for (int k = 0; k < 150; ++k)
            text += "01001?-"[static_cast<std::size_t>(next() * 7.0)];
    }
    for (const int method : {0, 1, 2}) {
        for (const double weight : {1.0, 0.0}) {
            RflpSample t(texts);
            t.drop(3);
            t.sample.del_weight = weight;
            t.sample.distance_method = method;
            ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
            int largest = 0;
            for (int i = 0; i < 7; ++i) {
                EXPECT_EQ(t.cell(i, i), 0.0);
                for (int j = 0; j < i; ++j) {
                    const char* first = texts[static_cast<std::size_t>(i)].c_str();
                    const char* second = texts[static_cast<std::size_t>(j)].c_str();
                    ASSERT_EQ(
                        method == 1 ? t.sample.p_diff(first, second) : t.sample.diff_no_weight(first, second),
                        1);
                    EXPECT_EQ(t.cell(i, j), t.sample.distance);
                    EXPECT_EQ(t.cell(j, i), std::sqrt(t.sample.distance_var));
                    largest = std::max(largest, static_cast<int>(t.sample.distance));
                }
            }
            EXPECT_EQ(t.sample.max_dist, largest);
        }
    }
}

TEST_F(RflpDistances, ProportionsAreScaledWhenAsked) {
    RflpSample t({"0101", "0100"});
    t.sample.distance_method = 1;
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 1), 1);
    EXPECT_EQ(t.cell(1, 0), 1.0);
    t.sample.distance_method = 0;
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 1), 1);
    EXPECT_EQ(t.cell(1, 0), 1.0);
}

TEST_F(RflpDistances, AnExistingMatrixIsKeptAndOverwritten) {
    RflpSample t({"0101", "0100"});
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
    const mnd::RectMat* const matrix = t.sample.dist_mat.get();
    t.sample.distance_method = 1;
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
    EXPECT_EQ(t.sample.dist_mat.get(), matrix);
    EXPECT_EQ(t.cell(1, 0), 0.25);
}

TEST_F(RflpDistances, AMatrixOfAnotherSizeIsReplaced) {
    RflpSample t({"0101", "0100"});
    t.sample.dist_mat = std::make_unique<mnd::RectMat>(1, 1);
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
    EXPECT_EQ(t.sample.dist_mat->rows, 2);
    EXPECT_EQ(t.cell(1, 0), 1.0);
}

TEST_F(RflpDistances, ASampleWithoutHaplotypesIsReported) {
    PopulRFLP sample;
    const CapturedReports captured;
    EXPECT_EQ(sample.compute_distance_matrix(nullptr, &s, 0), 0);
    EXPECT_EQ(captured.all(),
              (std::vector<Report>{{mnd::Error, "PopulRFLP::compute_distance_matrix()", 108}}));
}

}  // namespace
