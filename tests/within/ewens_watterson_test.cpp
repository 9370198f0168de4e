#include "within/ewens_watterson.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "model/popul_dna.h"
#include "model/popul_microsat.h"
#include "model/popul_standard.h"
#include "run/tasks.h"
#include "support/batch_summary.h"
#include "support/captured_log.h"
#include "support/captured_reports.h"
#include "support/stop_at_progress.h"
#include "support/text_files.h"
#include "within/counted_sample.h"
#include "within/ewens_sampling.h"
#include "within/neutrality_tables.h"

namespace {

using mnd::AHaplFreq;
using mnd::homozygosity_of_counts;
using mnd::kTaskEwensWatterson;
using mnd::MY_TISArrayAsVector;
using mnd::PopulStandard;
using mnd::slatkin_statistic;
using mnd_test::AnalysedSamples;
using mnd_test::contains;
using mnd_test::haplotypic;

using AlleleList = MY_TISArrayAsVector<AHaplFreq>;

// --- The statistics

TEST(EwensWattersonStatistics, HomozygosityIsTheSumOfSquares) {
    const int counts[] = {5, 2, 2, 1};  // (25 + 4 + 4 + 1)/100
    EXPECT_NEAR(homozygosity_of_counts(counts, 4, 10), 0.34, 1e-15);
    const int one[] = {7};
    EXPECT_EQ(homozygosity_of_counts(one, 1, 7), 1.0);
}

TEST(EwensWattersonStatistics, ACountOfZeroContributesNothing) {
    const int counts[] = {6, 4, 0};
    EXPECT_EQ(homozygosity_of_counts(counts, 3, 10), homozygosity_of_counts(counts, 2, 10));
    mnd::LogOfProduct product(10);
    std::vector<int> classes(11, 99);
    EXPECT_NEAR(slatkin_statistic(counts, 3, 10, classes.data(), product), -(std::log(6.0) + std::log(4.0)),
                1e-15);
    EXPECT_EQ(classes, (std::vector<int>{1, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0}));
}

TEST(EwensWattersonStatistics, SlatkinsLeavesOutTheFactorials) {
    const int counts[] = {5, 2, 2, 1, 1};  // a(1) = a(2) = 2, a(5) = 1
    mnd::LogOfProduct product(11);
    std::vector<int> classes(12);
    EXPECT_NEAR(slatkin_statistic(counts, 5, 11, classes.data(), product),
                -(2.0 * std::log(2.0) + std::log(5.0)), 1e-15);
    EXPECT_EQ(classes, (std::vector<int>{0, 2, 2, 0, 0, 1, 0, 0, 0, 0, 0, 0}));
}

// All partitions of n into k parts, descending.
void add_partitions(int n, int k, int largest, std::vector<int>& prefix, std::vector<std::vector<int>>& all) {
    if (k == 0) {
        if (n == 0) all.push_back(prefix);
        return;
    }
    for (int c = std::min(n, largest); c >= 1; --c) {
        prefix.push_back(c);
        add_partitions(n - c, k - 1, c, prefix, all);
        prefix.pop_back();
    }
}

// Both statistics compare as the sums of squares and the products of the counts do, which are whole
// numbers: 5 2 2 and 4 4 1 have the squares 33, 10 2 2 and 8 5 1 the product 40, and sums in floating
// point would tell them apart.
TEST(EwensWattersonStatistics, CompareAsWholeNumbersDo) {
    int equal_squares = 0;
    int equal_products = 0;
    for (int n = 5; n <= 24; ++n) {
        mnd::LogOfProduct product(n);
        std::vector<int> classes(static_cast<std::size_t>(n) + 1);
        for (int k = 2; k <= 5; ++k) {
            std::vector<std::vector<int>> all;
            std::vector<int> prefix;
            add_partitions(n, k, n, prefix, all);
            std::vector<int> squares(all.size());
            std::vector<int> products(all.size(), 1);
            std::vector<double> F(all.size());
            std::vector<double> s(all.size());
            for (std::size_t i = 0; i < all.size(); ++i) {
                for (const int c : all[i]) {
                    squares[i] += c * c;
                    products[i] *= c;
                }
                F[i] = homozygosity_of_counts(all[i].data(), k, n);
                s[i] = slatkin_statistic(all[i].data(), k, n, classes.data(), product);
                EXPECT_NEAR(s[i], -std::log(products[i]), 1e-14 * (1.0 - s[i]));
                for (std::size_t j = 0; j < i; ++j) {
                    ASSERT_EQ(F[i] <= F[j], squares[i] <= squares[j]) << n << ' ' << k;
                    ASSERT_EQ(F[j] <= F[i], squares[j] <= squares[i]) << n << ' ' << k;
                    ASSERT_EQ(s[i] <= s[j], products[i] >= products[j]) << n << ' ' << k;
                    ASSERT_EQ(s[j] <= s[i], products[j] >= products[i]) << n << ' ' << k;
                    equal_squares += squares[i] == squares[j] ? 1 : 0;
                    equal_products += products[i] == products[j] ? 1 : 0;
                }
            }
        }
    }
    EXPECT_GT(equal_squares, 100);
    EXPECT_GT(equal_products, 50);
}

TEST(EwensWattersonStatistics, DoNotDependOnTheOrderOfCounts) {
    std::vector<int> counts = {17, 11, 7, 3, 2};
    const double F = homozygosity_of_counts(counts.data(), 5, 40);
    while (std::next_permutation(counts.begin(), counts.end(), std::greater<>()))
        ASSERT_EQ(homozygosity_of_counts(counts.data(), 5, 40), F);
}

// --- A sample of given counts

class EwensWatterson : public mnd_test::AlleleSample {
protected:
    // What the test writes, without what the driver puts around it.
    std::string test(PopulStandard& sample) { return test(sample, a.s); }
    static std::string test(PopulStandard& sample, mnd::settings& s) {
        AlleleList alleles;
        list_of_counts(sample, alleles);
        std::ostringstream out;
        sample.EW_neutrality_tests(s, out, alleles);
        return out.str();
    }
};

TEST_F(EwensWatterson, ListsCountsInDescendingOrderWithoutEmptyHaplotypes) {
    PopulStandard& sample = add({2, 7, 1, 7});
    sample.hapl_list[0]->freq = 0;
    AlleleList list;
    list.Add(new AHaplFreq);
    list_of_counts(sample, list);
    ASSERT_EQ(list.count, 3);
    EXPECT_EQ(number_of_alleles(sample), 3);
    for (const auto& [i, count] : {std::pair{0, 7.0}, {1, 7.0}, {2, 1.0}}) {
        EXPECT_EQ(list[i]->freq, count);
        EXPECT_EQ(list[i]->sd, count * count);
        EXPECT_EQ(list[i]->mean_count, 0.0);
        EXPECT_EQ(list[i]->sd_count, 0.0);
    }
}

// Of 4 copies of 2 alleles there are {3, 1} with 8/11 and {2, 2} with 3/11. The larger F is that of
// {3, 1}; the smaller of -ln 3 and -2 ln 2 is that of {2, 2}.
TEST_F(EwensWatterson, EqualConfigurationsCompareEqual) {
    a.s.NumIterationsNeutralityTests = 20000;
    PopulStandard& uneven = add({1, 3}, "A");
    test(uneven);
    EXPECT_EQ(uneven.ew_p, 1.0);
    EXPECT_EQ(uneven.slatkin_p, 1.0);
    EXPECT_NEAR(uneven.exp_F, (8.0 * 0.625 + 3.0 * 0.5) / 11.0, 0.002);
    AnalysedSamples<PopulStandard> b(haplotypic(mnd::STANDARD, ' '));
    b.s.NumIterationsNeutralityTests = 20000;
    PopulStandard& even = mnd_test::add_counts(b, {2, 2});
    test(even, b.s);
    EXPECT_NEAR(even.ew_p, 3.0 / 11.0, 5.0 * std::sqrt(3.0 * 8.0 / 121.0 / 20000.0));
    EXPECT_EQ(even.slatkin_p, even.ew_p);
}

// The sum of squares is the same to the last digit in whatever order the haplotypes are listed.
TEST_F(EwensWatterson, TheOrderOfHaplotypesHasNoEffect) {
    std::vector<int> counts = {13, 7, 7, 5, 3, 2, 1, 1, 1};
    a.s.NumIterationsNeutralityTests = 500;
    PopulStandard& first = add(counts, "A");
    seed();
    test(first);
    for (int i = 0; i < 5; ++i) {
        std::next_permutation(counts.begin(), counts.end(), std::greater<>());
        AnalysedSamples<PopulStandard> b(haplotypic(mnd::STANDARD, ' '));
        b.s.NumIterationsNeutralityTests = 500;
        PopulStandard& other = mnd_test::add_counts(b, counts);
        seed();
        test(other, b.s);
        EXPECT_EQ(other.obs_F, first.obs_F);
        EXPECT_EQ(other.slatkin_obs, first.slatkin_obs);
        EXPECT_EQ(other.ew_p, first.ew_p);
        EXPECT_EQ(other.slatkin_p, first.slatkin_p);
    }
}

// Probabilities over all partitions of 9 into 4 parts, n!/(|s(9, 4)| prod c^a a!), |s(9, 4)| = 67284,
// 9! = 362880:
//   6111 362880/(6 3!) = 10080           F 39/81   s -ln 6
//   5211 362880/(10 2!) = 18144          F 31/81   s -ln 10
//   4311 362880/(12 2!) = 15120          F 27/81   s -ln 12
//   4221 362880/(4 2^2 2!) = 11340       F 25/81   s -ln 16
//   3321 362880/(9 2! 2) = 10080         F 23/81   s -ln 18
//   3222 362880/(3 8 3!) = 2520          F 21/81   s -ln 24
// which is 67284 in all. For 4311 both statistics take in 4311 and all below.
TEST_F(EwensWatterson, PValuesAreThoseOfAllPartitions) {
    constexpr int kReplicates = 50000;
    a.s.NumIterationsNeutralityTests = kReplicates;
    PopulStandard& sample = add({1, 4, 1, 3});
    test(sample);
    const double p = (15120.0 + 11340.0 + 10080.0 + 2520.0) / 67284.0;
    const double tolerance = 5.0 * std::sqrt(p * (1.0 - p) / kReplicates);
    EXPECT_NEAR(sample.ew_p, p, tolerance);
    EXPECT_EQ(sample.slatkin_p, sample.ew_p);
    EXPECT_NEAR(sample.obs_F, 27.0 / 81.0, 1e-15);
    const double F =
        (10080.0 * 39 + 18144.0 * 31 + 15120.0 * 27 + 11340.0 * 25 + 10080.0 * 23 + 2520.0 * 21) / 67284.0 /
        81.0;
    EXPECT_NEAR(sample.exp_F, F, 5.0 * 0.07 / std::sqrt(kReplicates));
}

// Different configurations with the same statistic are hits. By n!/(|s(n, k)| prod c^a a!), of 9 copies
// of 3 alleles, |s(9, 3)| = 118124, 9! = 362880:
//   711 362880/(7 2!) = 25920       522 362880/(20 2!) = 9072
//   621 362880/12 = 30240           441 362880/(16 2!) = 11340
//   531 362880/15 = 24192           432 362880/24 = 15120
//   333 362880/(27 3!) = 2240
// which is 118124 in all. 5 2 2 and 4 4 1 tie for F (33/81); 4 3 2 (29/81) and 3 3 3 are below.
TEST_F(EwensWatterson, OtherConfigurationsWithTheSameFAreHits) {
    constexpr int kReplicates = 50000;
    a.s.NumIterationsNeutralityTests = kReplicates;
    const double p = (9072.0 + 11340.0 + 15120.0 + 2240.0) / 118124.0;
    const double tolerance = 5.0 * std::sqrt(p * (1.0 - p) / kReplicates);
    PopulStandard& first = add({5, 2, 2}, "A");
    seed();
    test(first);
    EXPECT_NEAR(first.ew_p, p, tolerance);
    PopulStandard& second = add({1, 4, 4}, "B");
    seed();
    test(second);
    EXPECT_EQ(second.ew_p, first.ew_p);
    EXPECT_EQ(second.obs_F, first.obs_F);
}

// And 10 2 2 and 8 5 1 of 14 copies for Slatkin's statistic, -ln 40.
TEST_F(EwensWatterson, OtherConfigurationsWithTheSameProductAreHits) {
    a.s.NumIterationsNeutralityTests = 5000;
    PopulStandard& first = add({10, 2, 2}, "A");
    seed();
    test(first);
    PopulStandard& second = add({1, 8, 5}, "B");
    seed();
    test(second);
    EXPECT_EQ(second.slatkin_obs, first.slatkin_obs);
    EXPECT_EQ(second.slatkin_p, first.slatkin_p);
    EXPECT_NE(second.ew_p, first.ew_p);
}

// The planned replicates are part of the estimate of the work, so they count when they are not needed.
TEST_F(EwensWatterson, ReplicatesThatAreNotNeededAreWorkDone) {
    a.s.NumIterationsNeutralityTests = 350;
    mnd::settings::global_work_done = 0.0;
    test(add({1, 1, 1}, "A"));
    EXPECT_EQ(mnd::settings::global_work_done, 3.0);
    test(add({7}, "B"));
    EXPECT_EQ(mnd::settings::global_work_done, 6.0);
    test(add({4998, 2}, "C"));
    EXPECT_EQ(mnd::settings::global_work_done, 9.0);
}

// F and Slatkin's statistic rank some configurations differently: of 10 copies of 3 alleles, 6 3 1 has
// F 0.46 and s -ln 18, 6 2 2 has 0.44 and -ln 24, 5 4 1 has 0.42 and -ln 20.
TEST_F(EwensWatterson, TheTwoTestsDiffer) {
    a.s.NumIterationsNeutralityTests = 20000;
    PopulStandard& sample = add({5, 4, 1});
    test(sample);
    EXPECT_GT(sample.slatkin_p, sample.ew_p + 0.02);
}

// The whole test once more, from the sampler alone: sums, hits and ranks.
TEST_F(EwensWatterson, IsThatOfAPlainRun) {
    constexpr int kReplicates = 1237;
    a.s.NumIterationsNeutralityTests = kReplicates;
    const std::vector<int> observed = {21, 9, 4, 4, 1, 1};
    PopulStandard& sample = add(observed);
    mnd::settings::global_work_done = 0.0;
    seed();
    mnd::reset_draws_taken();
    const std::string text = test(sample);
    EXPECT_EQ(mnd::draws_taken(), kReplicates * 5U);
    EXPECT_EQ(mnd::settings::global_work_done, 12.0);

    seed();
    mnd::BnumMat B(60, 20);
    ASSERT_EQ(B.re_allocate_matrix(60, 20), 1);
    mnd::ConfigurationSampler sampler(40, 6, B);
    const auto squares = [](const std::vector<int>& counts) {
        int sum = 0;
        for (const int c : counts)
            sum += c * c;
        return sum;
    };
    const auto product = [](const std::vector<int>& counts) {
        double p = 1.0;  // exact: the order of s is that of the product of all counts
        for (const int c : counts)
            p *= c;
        return p;
    };
    long below_F = 0;
    long below_s = 0;
    double sum_F = 0.0;
    std::vector<double> sums(6), sums_of_squares(6);
    for (int i = 0; i < kReplicates; ++i) {
        std::vector<int> counts(6);
        sampler.draw(counts.data());
        std::sort(counts.begin(), counts.end(), std::greater<>());
        below_F += squares(counts) <= squares(observed) ? 1 : 0;
        below_s += product(counts) >= product(observed) ? 1 : 0;
        sum_F += squares(counts) / 1600.0;
        for (std::size_t r = 0; r < 6; ++r) {
            sums[r] += counts[r];
            sums_of_squares[r] += counts[r] * counts[r];
        }
    }
    EXPECT_EQ(sample.ew_p, static_cast<double>(below_F) / kReplicates);
    EXPECT_EQ(sample.slatkin_p, static_cast<double>(below_s) / kReplicates);
    EXPECT_NEAR(sample.exp_F, sum_F / kReplicates, 1e-12);
    EXPECT_NEAR(sample.obs_F, squares(observed) / 1600.0, 1e-15);
    for (std::size_t r = 0; r < 6; ++r) {
        const double mean = sums[r] / kReplicates;
        const double sd =
            std::sqrt((sums_of_squares[r] - sums[r] * sums[r] / kReplicates) / (kReplicates - 1));
        char line[100];
        std::snprintf(line, sizeof line, "%6d%12.7f%12.7f%16.4f%12.4f\n", static_cast<int>(r) + 1,
                      mean / 40.0, sd / 40.0, mean, sd);
        EXPECT_TRUE(contains(text, line)) << line << text;
    }
    EXPECT_EQ(sample.slatkin_test, 0);
    EXPECT_EQ(sample.sampler, nullptr);
}

TEST_F(EwensWatterson, OneConfigurationAtATimeAddsToTheRanks) {
    PopulStandard& sample = add({5, 3, 2});
    AlleleList ranks;
    for (int i = 0; i < 3; ++i)
        ranks.Add(new AHaplFreq);
    std::vector<int> classes(11);
    int* class_counts = classes.data();
    double count_F = 0.0;
    double count_slatkin = 0.0;
    sample.slatkin_obs = 0.0;  // above all values
    seed();
    const double F = sample.compute_rand_frequencies_and_F(ranks, 2.0, count_F, class_counts, count_slatkin);
    EXPECT_EQ(count_F, 1.0);
    EXPECT_EQ(count_slatkin, 0.0);  // the test is off
    double sum = 0.0;
    double squares = 0.0;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(ranks[i]->sd, ranks[i]->freq * ranks[i]->freq);
        if (i > 0) {
            EXPECT_LE(ranks[i]->freq, ranks[i - 1]->freq);
        }
        sum += ranks[i]->freq;
        squares += ranks[i]->sd;
    }
    EXPECT_EQ(sum, 10.0);
    EXPECT_NEAR(F, squares / 100.0, 1e-15);
    sample.slatkin_test = 1;
    sample.compute_rand_frequencies_and_F(ranks, 0.0, count_F, class_counts, count_slatkin);
    EXPECT_EQ(count_F, 1.0);
    EXPECT_EQ(count_slatkin, 1.0);
    EXPECT_EQ(classes[0] + classes[1] + classes[2] + classes[3] + classes[4] + classes[5] + classes[6] +
                  classes[7] + classes[8],
              3);
    EXPECT_EQ(ranks[0]->freq + ranks[1]->freq + ranks[2]->freq, 20.0);
}

// The numbers of copies and of alleles are those at hand, not those of the draw before; and the shared
// table may have been shrunk in between.
TEST_F(EwensWatterson, EachConfigurationHasItsOwnSizesAndATable) {
    PopulStandard& sample = add({5, 3, 2});
    const auto draw = [&sample](int k, double n) {
        AlleleList ranks;
        for (int i = 0; i < k; ++i)
            ranks.Add(new AHaplFreq);
        double hits = 0.0;
        int* no_classes = nullptr;
        sample.sample_size = n;
        seed();
        mnd::reset_draws_taken();
        sample.compute_rand_frequencies_and_F(ranks, 2.0, hits, no_classes, hits);
        EXPECT_EQ(mnd::draws_taken(), static_cast<unsigned>(k - 1));
        std::vector<double> counts;
        for (long i = 0; i < ranks.count; ++i)
            counts.push_back(ranks[i]->freq);
        return counts;
    };
    const auto copies = [](const std::vector<double>& counts) {
        return std::accumulate(counts.begin(), counts.end(), 0.0);
    };
    const std::vector<double> three = draw(3, 10.0);
    EXPECT_EQ(copies(three), 10.0);
    const std::vector<double> four = draw(4, 10.0);
    EXPECT_EQ(four.size(), 4U);
    EXPECT_EQ(copies(four), 10.0);
    EXPECT_GT(four.back(), 0.0);
    const std::vector<double> many = draw(4, 300.0);
    EXPECT_EQ(copies(many), 300.0);
    sample.clean_bnum();
    EXPECT_EQ(draw(4, 300.0), many);
    EXPECT_EQ(draw(3, 10.0), three);
    sample.clean_bnum();
}

TEST_F(EwensWatterson, TheFirstFrequencyIsDrawnAlone) {
    PopulStandard& sample = add({5, 3, 2});
    for (int i = 0; i < 20; ++i) {
        AHaplFreq first;
        mnd::reset_draws_taken();
        sample.get_first_rand_freq(first, 3, 10);
        EXPECT_EQ(mnd::draws_taken(), 1U);
        EXPECT_GE(first.freq, 1.0);
        EXPECT_LE(first.freq, 8.0);
        EXPECT_EQ(first.sd, first.freq * first.freq);
    }
    AHaplFreq all;
    sample.get_first_rand_freq(all, 1, 10);
    EXPECT_EQ(all.freq, 10.0);
    sample.get_first_rand_freq(all, 11, 10);
    EXPECT_EQ(all.freq, 0.0);
}

// --- Texts

// R = 0: there is nothing to compare with.
TEST_F(EwensWatterson, WithoutSimulatedSamplesThereIsNoPValue) {
    a.s.NumIterationsNeutralityTests = 0;
    PopulStandard& sample = add({2, 3});
    sample.exp_F = sample.ew_p = sample.slatkin_p = 0.5;
    mnd::reset_draws_taken();
    EXPECT_EQ(test(sample),
              "Original haplotype definition was used for the tests\n\n"
              "No. of genes in sample                 : 5\n"
              "No. of haplotypes in sample            : 2\n"
              "Observed F value                       : 0.52000\n"
              "Expected F value                       : N.A.\n"
              "No. of simulated samples               : 0\n\n"
              "Ewens-Watterson test:\n"
              "Pr(rand F &lt;= obs F)                    : N.A.\n\n"
              "Slatkin's Exact test P-value           : N.A.\n"
              "\nObserved haplotype frequencies by rank:\n\n"
              "  Rank       Freq.       Count\n"
              "     1   0.6000000           3\n"
              "     2   0.4000000           2\n"
              "\nExpected haplotype frequencies by rank, with standard deviations:\n\n"
              "  Rank       Freq.        s.d.           Count        s.d.\n"
              "     1   0.0000000   0.0000000          0.0000      0.0000\n"
              "     2   0.0000000   0.0000000          0.0000      0.0000\n");
    EXPECT_EQ(mnd::draws_taken(), 0U);
    EXPECT_EQ(sample.exp_F, 0.0);
    EXPECT_EQ(sample.ew_p, -1.0);
    EXPECT_EQ(sample.slatkin_p, -1.0);
    a.s.NumIterationsNeutralityTests = -5;
    test(sample);
    EXPECT_EQ(sample.ew_p, -1.0);
}

// 3 copies of 2 alleles can only be 2 and 1.
TEST_F(EwensWatterson, WritesItsBlock) {
    a.s.NumIterationsNeutralityTests = 150;
    PopulStandard& sample = add({2, 1});
    EXPECT_EQ(test(sample),
              "Original haplotype definition was used for the tests\n\n"
              "No. of genes in sample                 : 3\n"
              "No. of haplotypes in sample            : 2\n"
              "Observed F value                       : 0.55556\n"
              "Expected F value                       : 0.55556\n"
              "No. of simulated samples               : 150\n\n"
              "Ewens-Watterson test:\n"
              "Pr(rand F &lt;= obs F)                    : 1.00000\n\n"
              "Slatkin's Exact test P-value           : 1.00000\n"
              "\nObserved haplotype frequencies by rank:\n\n"
              "  Rank       Freq.       Count\n"
              "     1   0.6666667           2\n"
              "     2   0.3333333           1\n"
              "\nExpected haplotype frequencies by rank, with standard deviations:\n\n"
              "  Rank       Freq.        s.d.           Count        s.d.\n"
              "     1   0.6666667   0.0000000          2.0000      0.0000\n"
              "     2   0.3333333   0.0000000          1.0000      0.0000\n");
}

TEST_F(EwensWatterson, ASingleSimulatedSampleGivesNoFrequencies) {
    a.s.NumIterationsNeutralityTests = 1;
    PopulStandard& sample = add({2, 1});
    const std::string text = test(sample);
    EXPECT_TRUE(contains(text, "     1   0.0000000   0.0000000          0.0000      0.0000\n"));
    EXPECT_EQ(sample.ew_p, 1.0);
}

TEST_F(EwensWatterson, TellsThatHaplotypesWereChecked) {
    a.s.NumIterationsNeutralityTests = 0;
    a.s.InferHaplotypeDefinitionFromDistanceMatrix = 1;
    PopulStandard& sample = add({2, 3});
    sample.nb_orig_hapl = 4;
    EXPECT_TRUE(contains(test(sample),
                         "Haplotype real differences were checked before tests\n\n"
                         "No. of genes in sample                 : 5\n"
                         "No. of original haplotypes in sample   : 4\n"
                         "No. of different haplotypes in sample  : 2\n"
                         "Observed F value                       : 0.52000\n"));
}

TEST_F(EwensWatterson, IsImpossibleWhenAllCopiesDiffer) {
    PopulStandard& sample = add({1, 1, 1});
    mnd::reset_draws_taken();
    EXPECT_EQ(test(sample),
              "\nThe test is impossible because all gene copies are different\n"
              "\nNo. of genes in sample   : 3"
              "\nNo. of alleles in sample : 3\n");
    EXPECT_EQ(sample.ew_p, -1.0);
    EXPECT_EQ(mnd::draws_taken(), 0U);
}

TEST_F(EwensWatterson, IsImpossibleWithOneAllele) {
    PopulStandard& sample = add({3});
    const std::string expected =
        "\nThe test is impossible because there is only one allele in \n"
        "the sample\n"
        "\nNo. of genes in sample   : 3"
        "\nNo. of alleles in sample : 1\n";
    EXPECT_EQ(test(sample), expected);
    a.s.InferHaplotypeDefinitionFromDistanceMatrix = 1;
    sample.nb_orig_hapl = 2;
    EXPECT_EQ(test(sample), expected);
    sample.profile.GameticPhase = 0;
    EXPECT_EQ(test(sample), expected + "No. of original alleles in sample   : 2\n");
}

TEST_F(EwensWatterson, RefusesFiveThousandCopies) {
    a.s.NumIterationsNeutralityTests = 1;
    const std::string refusal =
        "Watterson F-test of selective neutrality is not possible with more than 1000 alleles or "
        "with more than 5000 gene copies\n";
    PopulStandard& accepted = add({4997, 2}, "A");
    EXPECT_TRUE(contains(test(accepted), "No. of genes in sample                 : 4999\n"));
    EXPECT_GE(accepted.ew_p, 0.0);
    PopulStandard& refused = add({4998, 2}, "B");
    mnd::reset_draws_taken();
    EXPECT_EQ(test(refused), refusal);
    EXPECT_EQ(refused.ew_p, -1.0);
    EXPECT_EQ(mnd::draws_taken(), 0U);
    accepted.clean_bnum();
}

TEST_F(EwensWatterson, RefusesAThousandAlleles) {
    a.s.NumIterationsNeutralityTests = 1;
    std::vector<int> counts(999, 1);
    counts[0] = 10;
    PopulStandard& accepted = add(counts, "A");
    test(accepted);
    EXPECT_GE(accepted.ew_p, 0.0);
    counts.push_back(1);
    PopulStandard& refused = add(counts, "B");
    EXPECT_TRUE(contains(test(refused), "is not possible with more than 1000 alleles"));
    EXPECT_EQ(refused.ew_p, -1.0);
    accepted.clean_bnum();
}

TEST_F(EwensWatterson, AStoppedRunGivesNothing) {
    PopulStandard& sample = add({2, 3});
    a.s.stop_computations = 1;
    EXPECT_EQ(test(sample), "");
    EXPECT_EQ(sample.ew_p, -1.0);
}

// The first message comes after 100 of 1000 simulated samples.
TEST_F(EwensWatterson, EndsWhenTheRunIsStopped) {
    mnd_test::BatchSummary summary(&mnd::ofs_ewens_watt);
    a.s.NumIterationsNeutralityTests = 1000;
    PopulStandard& sample = add({6, 3, 2});
    mnd::reset_draws_taken();
    const mnd_test::StopAtProgress stop(a.s, 10.0);
    EXPECT_EQ(test(sample), "");
    EXPECT_EQ(mnd::draws_taken(), 200U);
    EXPECT_EQ(sample.ew_p, -1.0);
    EXPECT_EQ(sample.slatkin_p, -1.0);
    EXPECT_EQ(sample.slatkin_test, 0);
    EXPECT_EQ(summary.rows(), "");
}

TEST_F(EwensWatterson, TablesAreElementsOfAnXmlDocument) {
    a.s.NumIterationsNeutralityTests = 0;
    PopulStandard& sample = add({2, 3}, "L&M");
    mnd::xmlOutput = true;
    const std::string text = test(sample);
    mnd::xmlOutput = false;
    for (const char* part :
         {"<obsHapFreq samp=\"L&amp;M\"", "</obsHapFreq>", "<expHapFreq samp=\"L&amp;M\"", "</expHapFreq>"})
        EXPECT_TRUE(contains(text, part)) << part << text;
}

// --- The batch summary

TEST_F(EwensWatterson, WritesARowOfTheBatchSummary) {
    mnd_test::BatchSummary summary(&mnd::ofs_ewens_watt);
    a.s.NumIterationsNeutralityTests = 10;
    test(add({2, 1}, "A"));
    a.s.NumIterationsNeutralityTests = 0;
    test(add({2, 3}, "B"));
    test(add({1, 1}, "C"));
    test(add({4}, "D"));
    test(add({4998, 2}, "E"));
    EXPECT_EQ(summary.rows(),
              "\"A\"\t3\t2\t2\t0.55556\t0.55556\t1.00000\t1.00000\n"
              "\"B\"\t5\t2\t2\t0.52000\tN.A.\tN.A.\tN.A.\n"
              "\"C\"\tEwens-Watterson test is impossible because all gene copies are different\n"
              "\"D\"\tEwens-Watterson test is impossible because there is only one allele in the sample\n"
              "\"E\"\t5000\t2\t2\tN.A.\tN.A.\tN.A.\tN.A.\n");
}

// --- As a step of the analyses of a sample

TEST_F(EwensWatterson, HasItsHeadingAndItsReferences) {
    a.s.NumIterationsNeutralityTests = 10;
    a.add("Lake", "h1 2 x\nh2 1 y\n");
    a.prepare();
    const std::string document = a.analyse(kTaskEwensWatterson);
    EXPECT_TRUE(contains(document, "== Ewens-Watterson tests of selective neutrality : (Lake)\n"));
    EXPECT_TRUE(contains(document, "Pr(rand F &lt;= obs F)                    : 1.00000\n"));
    EXPECT_TRUE(contains(document, "\nReferences:\n           <i>Ewens, W. J. (1972)"));
    EXPECT_TRUE(contains(document, "<i>Watterson, G. A. (1978) The homozygosity test of neutrality."));
    EXPECT_TRUE(contains(document, "<i>Slatkin, M. (1994)"));
    EXPECT_TRUE(contains(document, "<i>Slatkin, M. (1996)"));
}

TEST_F(EwensWatterson, ASingleStandardHaplotypeGetsAWarning) {
    a.add("Lake", "h1 2 x\n");
    a.prepare();
    a.s.NumIterationsNeutralityTests = 200;
    mnd::settings::global_work_done = 0.0;
    const std::string document = a.analyse(kTaskEwensWatterson);
    EXPECT_TRUE(contains(document,
                         "Warning: Ewens-Watterson's test of selective neutrality cannot be performed \n"
                         "when there is a single haplotype in the sample. Skipping task...\n"));
    EXPECT_FALSE(contains(document, "The test is impossible"));
    EXPECT_EQ(mnd::settings::global_work_done, 2.0);  // as planned
}

TEST_F(EwensWatterson, ASingleSequenceIsToldOnlyOneAllele) {
    AnalysedSamples<mnd::PopulDNA> dna(haplotypic(mnd::DNA, 0));
    dna.add("Lake", "h1 2 ACGT\n");
    dna.prepare();
    const std::string document = dna.analyse(kTaskEwensWatterson);
    EXPECT_TRUE(
        contains(document, "\nThe test is impossible because there is only one allele in \nthe sample\n"));
    EXPECT_FALSE(contains(document, "Warning"));
}

TEST_F(EwensWatterson, MicrosatellitesAreNotTested) {
    AnalysedSamples<mnd::PopulMicrosat> microsat(haplotypic(mnd::MICROSAT, ' '));
    microsat.add("Lake", "h1 2 10\nh2 1 11\n");
    microsat.prepare();
    microsat.s.NumIterationsNeutralityTests = 200;
    mnd::settings::global_work_done = 0.0;
    mnd::reset_draws_taken();
    const std::string document = microsat.analyse(kTaskEwensWatterson | mnd::kTaskChakraborty);
    EXPECT_TRUE(contains(document,
                         "Warning: Chakraborty's test of selective neutrality cannot be performed \n"
                         "for microsatellite data. Skipping task...\n"));
    EXPECT_TRUE(contains(document,
                         "Warning: Ewens-Watterson's test of selective neutrality cannot be performed \n"
                         "for microsatellite data. Skipping task...\n"));
    EXPECT_EQ(mnd::draws_taken(), 0U);
    EXPECT_EQ(mnd::settings::global_work_done, 2.0);  // as planned
}

// Frequencies without haplotype data are all that the test needs.
TEST_F(EwensWatterson, FrequenciesAreTested) {
    AnalysedSamples<PopulStandard> frequencies(haplotypic(mnd::FREQUENCY, ' '));
    frequencies.s.NumIterationsNeutralityTests = 10;
    frequencies.add("Lake", "h1 2\nh2 1\n");
    frequencies.prepare();
    EXPECT_TRUE(
        contains(frequencies.analyse(kTaskEwensWatterson), "No. of haplotypes in sample            : 2\n"));
}

}  // namespace
