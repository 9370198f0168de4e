#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "model/popul_standard.h"
#include "run/tasks.h"
#include "support/batch_summary.h"
#include "within/counted_sample.h"
#include "within/ewens_watterson.h"
#include "within/neutrality_tables.h"

namespace {

using mnd::PopulStandard;
using mnd_test::AnalysedSamples;
using mnd_test::contains;
using mnd_test::haplotypic;

constexpr double kOfGammln = 1e-8;

class Chakraborty : public mnd_test::AlleleSample {
protected:
    static std::string test(PopulStandard& sample) {
        std::ostringstream out;
        sample.Chakraborty_neutr_test(out);
        return out.str();
    }
};

// The probabilities of a sample's method, from exact fractions |s(n, k)| theta^k / theta^(n).
TEST_F(Chakraborty, ProbabilitiesAreThoseOfExactFractions) {
    PopulStandard& sample = add({2, 1});
    EXPECT_NEAR(sample.proba_exactly_k(10, 25, 3.5), 0.10401745025177157, 0.104 * kOfGammln);
    EXPECT_NEAR(sample.proba_less_than_k(10, 25, 3.5), 0.8000526298070103, 0.8 * kOfGammln);
    EXPECT_EQ(sample.proba_exactly_k(1, 25, 0.0), 1.0);
    EXPECT_EQ(sample.proba_exactly_k(2, 25, 0.0), 0.0);
    EXPECT_EQ(sample.proba_exactly_k(25, 25, 3.5), 0.0);
    EXPECT_EQ(sample.proba_exactly_k(10, 25, 10001.0), 0.0);
    EXPECT_EQ(sample.proba_less_than_k(10, 25, 10001.0), 0.0);
    EXPECT_EQ(sample.proba_less_than_k(1, 25, 3.5), 0.0);
}

// Beyond the table, growing it: E(K) is the sum of k P(K = k), as of theta/(theta + i).
TEST_F(Chakraborty, ProbabilitiesHaveTheMeanOfTheNumberOfAlleles) {
    PopulStandard& sample = add({2, 1});
    sample.clean_bnum();
    constexpr int n = 300;
    constexpr double theta = 20.0;
    double total = 0.0;
    double mean = 0.0;
    for (int k = 1; k < n; ++k) {
        const double p = sample.proba_exactly_k(k, n, theta);
        total += p;
        mean += k * p;
    }
    double expected = 0.0;
    for (int i = 0; i < n; ++i)
        expected += theta / (theta + i);
    EXPECT_NEAR(total, 1.0, 1e-8);
    EXPECT_NEAR(mean, expected, 1e-6);
    sample.clean_bnum();
}

TEST_F(Chakraborty, BeyondTheTableThereIsNoProbability) {
    PopulStandard& sample = add({2, 1});
    EXPECT_EQ(sample.proba_exactly_k(3, 5000, 2.0), 0.0);
    EXPECT_EQ(sample.proba_exactly_k(1000, 4000, 2.0), 0.0);
    EXPECT_EQ(sample.proba_less_than_k(3, 5000, 2.0), 0.0);
    EXPECT_EQ(sample.proba_less_than_k(1001, 4000, 2.0), 0.0);
}

// More alleles than copies need no larger table: they are surely not reached.
TEST_F(Chakraborty, FewerAllelesThanALargeNumberAreCertain) {
    PopulStandard& sample = add({2, 1});
    for (const int k : {11, 12, 1000, 2000})
        EXPECT_NEAR(sample.proba_less_than_k(k, 10, 2.0), 1.0, 1e-8) << k;
    EXPECT_NEAR(sample.proba_less_than_k(10, 10, 2.0), 1.0 - 2.0 * 512.0 / 39916800.0, 1e-8);
}

// Counts 6, 3, 2, 1 of 12: sum p^2 = 50/144, H = 12/11 (1 - 50/144) = 0.712121, h = 0.287879.
// theta solves 1/h - 1 = 2.473684 = theta (1 + 2 (theta + 1)/((theta + 2)(theta + 3))): 1.897593 by a
// root finder of 30 digits. At that theta, by integer Stirling numbers of 12:
//   E(K) = 4.252089, P(K = 4) = 0.274840, P(K >= 4) = 0.689671
TEST_F(Chakraborty, WritesItsBlock) {
    PopulStandard& sample = add({3, 6, 1, 2});
    EXPECT_EQ(test(sample),
              "No. of genes in sample       : 12\n"
              "No. of alleles in sample (k) : 4\n"
              "Observed Homozygosity        : 0.28788\n"
              "Exp. No. of alleles          : 4.25209\n"
              "P(exactly k alleles)         : 0.27484\n"
              "P(k or more alleles)         : 0.68967\n");
}

// 21 alleles, 20 of them single, where theta is 0.27: P is below 1e-20, and the sum of all that is less
// comes out above 1 by its last digits.
TEST_F(Chakraborty, RoundingDoesNotGiveAProbabilityBelowZero) {
    std::vector<int> counts(20, 1);
    counts.push_back(120);
    PopulStandard& sample = add(counts);
    const std::string text = test(sample);
    const double complement = 1.0 - sample.proba_less_than_k(21, 140, sample.theta_hom);
    ASSERT_LT(complement, 0.0);
    ASSERT_GT(complement, -1e-11);
    EXPECT_EQ(sample.p_k_or_more, 0.0);
    EXPECT_TRUE(contains(text, "P(k or more alleles)         : 0.00000\n"));
}

// The complement of the sum as it is.
TEST_F(Chakraborty, IsTheComplementOfFewerAlleles) {
    for (const std::vector<int>& counts :
         {std::vector<int>{3, 6, 1, 2}, {20, 1, 1, 1}, {2, 2, 2, 1, 1, 1, 1}}) {
        AnalysedSamples<PopulStandard> b(haplotypic(mnd::STANDARD, ' '));
        PopulStandard& sample = mnd_test::add_counts(b, counts);
        test(sample);
        const int n = static_cast<int>(sample.sample_size);
        const int k = static_cast<int>(counts.size());
        EXPECT_EQ(sample.p_k_or_more, 1.0 - sample.proba_less_than_k(k, n, sample.theta_hom));
    }
}

TEST_F(Chakraborty, ASingleHaplotypeGetsAWarning) {
    const std::string warning =
        "Warning: Chakraborty's test of selective neutrality cannot be performed \n"
        "when there is a single haplotype in the sample. Skipping task...\n";
    PopulStandard& sample = add({3});
    sample.p_exactly_k = 0.5;
    EXPECT_EQ(test(sample), warning);
    EXPECT_EQ(sample.p_exactly_k, -1.0);
    EXPECT_EQ(sample.p_k_or_more, -1.0);
}

TEST_F(Chakraborty, IsImpossibleWhenAllCopiesDiffer) {
    EXPECT_EQ(test(add({1, 1, 1})), "\nThe test is impossible because all gene copies are different\n");
}

TEST_F(Chakraborty, HasTheLimitsOfTheTable) {
    const std::string refusal =
        "\nThe test is impossible because the number of genes is bigger than 5000"
        "\n or the number of Alleles is bigger than 1000\n";
    PopulStandard& accepted = add({4997, 2}, "A");
    EXPECT_TRUE(contains(test(accepted), "No. of genes in sample       : 4999\n"));
    EXPECT_EQ(test(add({4998, 2}, "B")), refusal);
    std::vector<int> counts(1000, 1);
    counts[0] = 10;
    EXPECT_EQ(test(add(counts, "C")), refusal);
    accepted.clean_bnum();
}

// Haplotypes without gene copies are no alleles of the sample.
TEST_F(Chakraborty, EmptyHaplotypesDoNotCount) {
    PopulStandard& sample = add({3, 6, 1, 2}, "A");
    const std::string text = test(sample);
    PopulStandard& with_empty = add({3, 6, 9, 1, 2}, "B");
    with_empty.hapl_list[2]->freq = 0;
    with_empty.sample_size = 12.0;
    EXPECT_EQ(test(with_empty), text);
}

TEST_F(Chakraborty, WritesARowOfTheBatchSummary) {
    mnd_test::BatchSummary summary(&mnd::ofs_chakra);
    test(add({3, 6, 1, 2}, "A"));
    test(add({3}, "B"));
    EXPECT_EQ(summary.rows(),
              "\"A\"\t12\t4\t0.28788\t4.25209\t0.27484\t0.68967\n"
              "\"B\"\t3\t1\tN.A.\tN.A.\tN.A.\tN.A.\n");
}

TEST_F(Chakraborty, HasItsHeadingAndItsReferences) {
    a.add("Lake", "h1 2 x\nh2 1 y\n");
    a.prepare();
    const std::string document = a.analyse(mnd::kTaskChakraborty);
    EXPECT_TRUE(contains(document, "== Chakraborty's test of selective neutrality : (Lake)\n"));
    EXPECT_TRUE(contains(document, "No. of alleles in sample (k) : 2\n"));
    EXPECT_TRUE(contains(document, "<i>Chakraborty, R. (1990)"));
    EXPECT_TRUE(contains(document, "<i>Ewens, W. J. (1972)"));
}

}  // namespace
