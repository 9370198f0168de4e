#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "foundation/random.h"
#include "foundation/special_functions.h"
#include "model/popul_dna.h"
#include "run/settings.h"
#include "support/captured_reports.h"
#include "support/temp_folder.h"
#include "within/text_sample.h"

namespace {

using mnd_test::CapturedReports;
using mnd_test::Report;
using Sample = mnd_test::TextSample<mnd::PopulDNA>;

class MismatchDistribution : public ::testing::Test {
protected:
    mnd::settings s;
    std::fstream unopened;

    int compute(mnd::PopulDNA& sample) {
        sample.del_weight = sample.ts_weight = sample.tv_weight = 1.0;
        if (sample.dist_mat == nullptr) sample.compute_distance_matrix(nullptr, &s, 1);
        return sample.compute_mm_distr(unopened, s);
    }
};

// a AAAA twice, b AAAC once, c CCAA three times. Pairs: a-a 1, c-c 3, a-b 2 with one difference,
// a-c 6 with two, b-c 3 with three.
Sample three_haplotypes() {
    return Sample({"AAAA", "AAAC", "CCAA"}, {2, 1, 3});
}

TEST_F(MismatchDistribution, CountsPairsOfGeneCopies) {
    Sample sample = three_haplotypes();
    ASSERT_EQ(compute(sample.sample), 1);
    EXPECT_EQ(sample.sample.max_diff, 3);
    EXPECT_EQ(sample.sample.mm_counts, (std::vector<std::int64_t>{4, 2, 6, 3, 0, 0, 0}));
    EXPECT_EQ(sample.sample.mm_expected.size(), 7u);
}

// Total 15, S1 = 2 + 12 + 9 = 23, S2 = 2 + 24 + 27 = 53. Mean 23/15, variance
// (53 - 23^2/15)/14 = 1.266666..; raggedness ((2-4)^2 + (6-2)^2 + (3-6)^2 + 3^2)/225 = 38/225.
TEST_F(MismatchDistribution, HasTheseMoments) {
    Sample sample = three_haplotypes();
    compute(sample.sample);
    EXPECT_DOUBLE_EQ(sample.sample.mm_mean, 23.0 / 15.0);
    EXPECT_DOUBLE_EQ(sample.sample.mm_variance, (53.0 - 529.0 / 15.0) / 14.0);
    EXPECT_DOUBLE_EQ(sample.sample.mm_raggedness, 38.0 / 225.0);
}

// A variance below the mean: theta 0, tau the mean, and nothing is expected.
TEST_F(MismatchDistribution, AVarianceBelowTheMeanGivesNoTheta) {
    Sample sample = three_haplotypes();
    compute(sample.sample);
    EXPECT_EQ(sample.sample.mm_theta, 0.0);
    EXPECT_DOUBLE_EQ(sample.sample.mm_tau, 23.0 / 15.0);
    for (const double expected : sample.sample.mm_expected)
        EXPECT_EQ(expected, 0.0);
    EXPECT_EQ(sample.sample.last_expected_class, 0);
    EXPECT_EQ(sample.sample.mm_chi2, 0.0);
    EXPECT_EQ(sample.sample.mm_chi2_p, 0.0);
    EXPECT_EQ(sample.sample.mm_chi2_df, 0);
}

// Two clusters five differences apart: 10 + 10 pairs without difference, 25 with five.
// Mean 125/45, variance (625 - 125^2/45)/44 = 6.313131; theta = sqrt(variance - mean), tau the rest.
TEST_F(MismatchDistribution, ExpectsWhatTheMomentsSay) {
    Sample sample({"AAAAAA", "CCCCCA"}, {5, 5});
    compute(sample.sample);
    const double mean = 125.0 / 45.0;
    const double variance = (625.0 - 125.0 * 125.0 / 45.0) / 44.0;
    const double theta = std::sqrt(variance - mean);
    const double tau = mean - theta;
    EXPECT_DOUBLE_EQ(sample.sample.mm_theta, theta);
    EXPECT_DOUBLE_EQ(sample.sample.mm_tau, tau);
    ASSERT_EQ(sample.sample.mm_expected.size(), 11u);
    for (int i = 0; i <= 10; ++i) {
        // Differences before tau are Poisson, those of the founders geometric.
        double share = 0.0;
        double poisson = std::exp(-tau);
        for (int j = 0; j <= i; ++j) {
            share += poisson * std::pow(theta / (theta + 1.0), i - j) / (theta + 1.0);
            poisson *= tau / (j + 1);
        }
        EXPECT_NEAR(sample.sample.mm_expected[static_cast<std::size_t>(i)], 45.0 * share, 1e-8) << i;
    }
    EXPECT_EQ(sample.sample.last_expected_class, 10);
}

// Three pairs with 380, 399 and 420 differences: theta is below 1, and the sum over the mutations since the
// expansion runs up to exp(tau (theta + 1)/theta), beyond a double. Geometric and Poisson differences are added in logarithms here.
TEST_F(MismatchDistribution, ExpectsHundredsOfDifferences) {
    Sample sample({"A", "C", "G"});
    sample.sample.dist_mat = std::make_unique<mnd::RectMat>(3, 3);
    sample.sample.nb_hapl = 3;
    sample.sample.dist_mat->data[1][0] = 380.0;
    sample.sample.dist_mat->data[2][0] = 399.0;
    sample.sample.dist_mat->data[2][1] = 420.0;
    sample.sample.max_dist = 420;
    ASSERT_EQ(sample.sample.compute_mm_distr(unopened, s), 1);
    // Mean 1199/3; variance (479521 - 1199^2/3)/2 = 400.3333: theta^2 = 2/3.
    const double theta = std::sqrt(2.0 / 3.0);
    const double tau = 1199.0 / 3.0 - theta;
    ASSERT_NEAR(sample.sample.mm_theta, theta, 1e-9);
    ASSERT_EQ(sample.sample.mm_expected.size(), 841u);
    double all = 0.0;
    int last = 0;
    for (int i = 0; i <= 840; ++i) {
        double share = 0.0;
        for (int j = 0; j <= i; ++j)
            share += std::exp(j * std::log(tau) - tau - std::lgamma(j + 1.0) -
                              (i - j) * std::log1p(1.0 / theta) - std::log1p(theta));
        const double expected = sample.sample.mm_expected[static_cast<std::size_t>(i)];
        EXPECT_NEAR(expected, 3.0 * share, 1e-9) << i;
        all += expected;
        if (3.0 * share > 1e-05) last = i;
    }
    EXPECT_NEAR(all, 3.0, 1e-8);
    EXPECT_EQ(sample.sample.last_expected_class, last);
}

// The classes of the test above: 20 pairs without difference, 25 with five. Expected, by the same
// sum: classes 0 .. 10; runs of at least five are merged from the first class on.
TEST_F(MismatchDistribution, TestsTheFitOnMergedClasses) {
    Sample sample({"AAAAAA", "CCCCCA"}, {5, 5});
    compute(sample.sample);
    const std::vector<double>& e = sample.sample.mm_expected;
    double chi2 = 0.0;
    int classes = 0;
    double run_expected = 0.0;
    double run_observed = 0.0;
    for (std::size_t i = 0; i < e.size(); ++i) {
        run_expected += e[i];
        run_observed += static_cast<double>(sample.sample.mm_counts[i]);
        if (run_expected < 5.0) continue;
        chi2 += (run_expected - run_observed) * (run_expected - run_observed) / run_expected;
        ++classes;
        run_expected = run_observed = 0.0;
    }
    ASSERT_GT(classes, 3);
    EXPECT_NEAR(sample.sample.mm_chi2, chi2, 1e-9);
    EXPECT_EQ(sample.sample.mm_chi2_df, classes - 2);
    EXPECT_EQ(sample.sample.mm_chi2_p, mnd::Prob_of_chi_sq(static_cast<float>(classes - 2),
                                                           static_cast<float>(sample.sample.mm_chi2)));
}

TEST_F(MismatchDistribution, OfIdenticalCopiesHasNoMoments) {
    Sample sample({"ACGT"}, {7});
    EXPECT_EQ(compute(sample.sample), 1);
    EXPECT_EQ(sample.sample.max_diff, 0);
    EXPECT_TRUE(sample.sample.mm_counts.empty());
    EXPECT_EQ(sample.sample.mm_mean, 0.0);
    EXPECT_EQ(sample.sample.mm_variance, 0.0);
    EXPECT_EQ(sample.sample.mm_theta, 0.0);
    EXPECT_EQ(sample.sample.mm_tau, 0.0);
    EXPECT_EQ(sample.sample.mm_chi2_df, 0);
}

TEST_F(MismatchDistribution, OfTwoCopiesHasNoVariance) {
    Sample sample({"ACGT", "ACCA"});
    compute(sample.sample);
    EXPECT_EQ(sample.sample.mm_counts, (std::vector<std::int64_t>{0, 0, 1, 0, 0}));
    EXPECT_EQ(sample.sample.mm_mean, 2.0);
    EXPECT_EQ(sample.sample.mm_variance, 0.0);
    // 1 for the step up to the last class, 1 for the last class.
    EXPECT_EQ(sample.sample.mm_raggedness, 2.0);
}

TEST_F(MismatchDistribution, TruncatesDistances) {
    Sample sample({"AAAA", "AAAC", "AACC"});
    sample.sample.dist_mat = std::make_unique<mnd::RectMat>(3, 3);
    sample.sample.nb_hapl = 3;
    sample.sample.dist_mat->data[1][0] = 0.9;
    sample.sample.dist_mat->data[2][0] = 1.99;
    sample.sample.dist_mat->data[2][1] = 2.0;
    sample.sample.max_dist = 2;
    ASSERT_EQ(sample.sample.compute_mm_distr(unopened, s), 1);
    EXPECT_EQ(sample.sample.mm_counts, (std::vector<std::int64_t>{1, 1, 1, 0, 0}));
}

TEST_F(MismatchDistribution, WithAStreamPrintsEachPairAndCountsTheSame) {
    Sample sample = three_haplotypes();
    compute(sample.sample);
    const std::vector<std::int64_t> counts = sample.sample.mm_counts;
    mnd_test::TempFolder folder;
    const auto path = folder / "pairs.txt";
    std::fstream file(path, std::ios::out);
    file << std::hex;
    ASSERT_EQ(sample.sample.compute_mm_distr(file, s), 1);
    EXPECT_EQ(file.flags() & std::ios::basefield, std::ios::hex);
    file.close();
    EXPECT_EQ(sample.sample.mm_counts, counts);
    EXPECT_EQ(mnd_test::read_text(path),
              "\n"
              "   0.0\n"
              "   1.0   1.0\n"
              "   2.0   2.0   3.0\n"
              "   2.0   2.0   3.0   0.0\n"
              "   2.0   2.0   3.0   0.0   0.0\n");
}

TEST_F(MismatchDistribution, CountsManyPairsWithoutOverflow) {
    Sample sample({"AAAA", "AAAC"}, {100000, 100000});
    compute(sample.sample);
    EXPECT_EQ(sample.sample.mm_counts[0], 2 * std::int64_t{100000} * 99999 / 2);
    EXPECT_EQ(sample.sample.mm_counts[1], std::int64_t{10000000000});
}

TEST_F(MismatchDistribution, WithoutHaplotypesIsAnError) {
    Sample sample({}, {});
    sample.sample.max_dist = 3;
    CapturedReports reports;
    EXPECT_EQ(sample.sample.compute_mm_distr(unopened, s), 0);
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, "PopGenetics::compute_mm_distr()", 108}}));
}

TEST_F(MismatchDistribution, WithoutAMatrixIsAnError) {
    Sample sample = three_haplotypes();
    sample.sample.max_dist = 3;
    CapturedReports reports;
    EXPECT_EQ(sample.sample.compute_mm_distr(unopened, s), 0);
    EXPECT_EQ(reports.all(),
              (std::vector<Report>{{mnd::Error, "PopGenetics::compute_mm_distr(ofstream ofs)", 122}}));
}

// --- Differences that are too many for tables

// Distances between three haplotypes with 2, 1 and 3 copies: 1 pair of the first alike, 3 of the third.
// The class of each distance lies at `step` times what it is among three_haplotypes.
struct SpreadSample : Sample {
    SpreadSample(double step, int largest) : Sample({"AAAA", "AAAC", "CCAA"}, {2, 1, 3}) {
        sample.dist_mat = std::make_unique<mnd::RectMat>(3, 3);
        sample.nb_hapl = 3;
        sample.dist_mat->data[1][0] = step;
        sample.dist_mat->data[2][0] = 2.0 * step + 0.75;
        sample.dist_mat->data[2][1] = 3.0 * step;
        sample.max_dist = largest;
    }
};

// Total 15, S1 = 23 step, S2 = 53 step^2 as above. All classes lie apart: raggedness
// (4^2 down from class 0, 2 2^2 + 2 6^2 up and down, 3^2 up and 3^2 behind the last)/225 = 114/225.
class SpreadDistribution : public MismatchDistribution, public ::testing::WithParamInterface<int> {};

TEST_P(SpreadDistribution, HasItsMomentsAtAnySize) {
    const double step = GetParam();
    SpreadSample sample(step, 3 * GetParam());
    CapturedReports reports;
    ASSERT_EQ(sample.sample.compute_mm_distr(unopened, s), 1);
    EXPECT_TRUE(reports.all().empty());
    EXPECT_EQ(sample.sample.max_diff, 3 * GetParam());
    EXPECT_DOUBLE_EQ(sample.sample.mm_mean, 23.0 * step / 15.0);
    EXPECT_NEAR(sample.sample.mm_variance / (step * step), (53.0 - 529.0 / 15.0) / 14.0, 1e-14);
    EXPECT_DOUBLE_EQ(sample.sample.mm_raggedness, 114.0 / 225.0);
    const bool tabled = sample.sample.max_diff <= mnd::kMostTabledDifferences;
    EXPECT_EQ(sample.sample.mm_counts.empty(), !tabled);
    EXPECT_EQ(sample.sample.mm_expected.empty(), !tabled);
}

INSTANTIATE_TEST_SUITE_P(Steps, SpreadDistribution,
                         ::testing::Values(2, 1000, 2796202, 2796203, 400000000, 715827882));

// The estimates come from the moments; what needs a table stays 0.
TEST_F(MismatchDistribution, TooLargeForTablesHasEstimatesAndNoTest) {
    SpreadSample sample(500000000.0, 1500000000);
    ASSERT_EQ(sample.sample.compute_mm_distr(unopened, s), 1);
    const double mean = sample.sample.mm_mean;
    EXPECT_DOUBLE_EQ(sample.sample.mm_theta, std::sqrt(sample.sample.mm_variance - mean));
    EXPECT_DOUBLE_EQ(sample.sample.mm_tau, mean - sample.sample.mm_theta);
    EXPECT_EQ(sample.sample.mm_chi2, 0.0);
    EXPECT_EQ(sample.sample.mm_chi2_p, 0.0);
    EXPECT_EQ(sample.sample.mm_chi2_df, 0);
    EXPECT_EQ(sample.sample.last_expected_class, 0);
}

// Neighbouring classes take one step between them, beyond the tables too: 2 pairs in one class and 1 in
// the next give (2^2 up, 1 between them, 1 behind the last)/9.
TEST_F(MismatchDistribution, TooLargeForTablesKnowsNeighbours) {
    Sample sample({"A", "C", "G"});
    sample.sample.dist_mat = std::make_unique<mnd::RectMat>(3, 3);
    sample.sample.nb_hapl = 3;
    sample.sample.dist_mat->data[1][0] = sample.sample.dist_mat->data[2][1] = 1e9;
    sample.sample.dist_mat->data[2][0] = 1e9 + 1.0;
    sample.sample.max_dist = 1000000001;
    ASSERT_EQ(sample.sample.compute_mm_distr(unopened, s), 1);
    EXPECT_DOUBLE_EQ(sample.sample.mm_raggedness, 6.0 / 9.0);
}

// Identical sums, to the last bit: the largest difference of one sample is such that it has tables,
// that of the other, which has no more pairs, is beyond.
TEST_F(MismatchDistribution, WithAndWithoutTablesAreTheSame) {
    long idum = -12345;
    mnd::ran3(&idum);
    for (int round = 0; round < 30; ++round) {
        const int n = 30;
        std::vector<std::string> texts(static_cast<std::size_t>(n), "A");
        std::vector<int> copies;
        for (int h = 0; h < n; ++h)
            copies.push_back(1 + static_cast<int>(4.0 * mnd::ran3()));
        Sample tabled(texts, copies);
        Sample listed(texts, copies);
        const double range = round % 2 == 0 ? 12.0 : 3000.0;
        for (mnd::PopulDNA* sample : {&tabled.sample, &listed.sample}) {
            sample->dist_mat = std::make_unique<mnd::RectMat>(n, n);
            sample->nb_hapl = n;
        }
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < i; ++j)
                tabled.sample.dist_mat->data[i][j] = listed.sample.dist_mat->data[i][j] = range * mnd::ran3();
        }
        tabled.sample.max_dist = static_cast<int>(range);
        listed.sample.max_dist = 2000000000;
        ASSERT_EQ(tabled.sample.compute_mm_distr(unopened, s), 1);
        ASSERT_EQ(listed.sample.compute_mm_distr(unopened, s), 1);
        ASSERT_FALSE(tabled.sample.mm_counts.empty());
        ASSERT_TRUE(listed.sample.mm_counts.empty());
        EXPECT_EQ(listed.sample.mm_mean, tabled.sample.mm_mean);
        EXPECT_EQ(listed.sample.mm_variance, tabled.sample.mm_variance);
        EXPECT_EQ(listed.sample.mm_raggedness, tabled.sample.mm_raggedness);
        EXPECT_EQ(listed.sample.mm_theta, tabled.sample.mm_theta);
        EXPECT_EQ(listed.sample.mm_tau, tabled.sample.mm_tau);
    }
}

// A distance that is larger than any int has its own class, though max_diff can't say so.
TEST_F(MismatchDistribution, DifferencesBeyondAnIntKeepTheirMoments) {
    SpreadSample sample(1e12, std::numeric_limits<int>::max());
    ASSERT_EQ(sample.sample.compute_mm_distr(unopened, s), 1);
    EXPECT_DOUBLE_EQ(sample.sample.mm_mean, 23e12 / 15.0);
}

TEST_F(MismatchDistribution, TooLargeForTablesPrintsItsPairsToo) {
    SpreadSample sample(1e9, 2000000000);
    sample.sample.dist_mat->data[2][1] = 2e9;
    mnd_test::TempFolder folder;
    std::fstream file(folder / "pairs.txt", std::ios::out);
    ASSERT_EQ(sample.sample.compute_mm_distr(file, s), 1);
    file.close();
    EXPECT_EQ(mnd_test::read_text(folder / "pairs.txt").substr(0, 33),
              "\n   0.0\n1000000000.01000000000.0\n");
    SpreadSample silent(1e9, 2000000000);
    silent.sample.dist_mat->data[2][1] = 2e9;
    ASSERT_EQ(silent.sample.compute_mm_distr(unopened, s), 1);
    EXPECT_EQ(silent.sample.mm_mean, sample.sample.mm_mean);
    EXPECT_EQ(silent.sample.mm_raggedness, sample.sample.mm_raggedness);
}

}  // namespace
