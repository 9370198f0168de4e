// The indices of a sample as methods; their formulae are tested with the plain functions.
#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>

#include "model/pop_haplotypes.h"
#include "model/popul_standard.h"
#include "within/text_sample.h"

namespace {

using mnd::AHaplFreq;
using mnd::kNumericalInfinity;
using mnd::PopulStandard;
using FrequencyList = mnd::MY_TISArrayAsVector<AHaplFreq>;
using StandardSample = mnd_test::TextSample<PopulStandard>;

struct FiveThreeTwo : StandardSample {
    FiveThreeTwo() : StandardSample({"a", "b", "c"}, {5, 3, 2}) { sample.nb_hapl = 3; }
};

void fill(FrequencyList& list, std::initializer_list<double> frequencies) {
    for (const double p : frequencies) {
        auto* record = new AHaplFreq;
        record->freq = p;
        list.Add(record);
    }
}

TEST(SampleDiversity, SumOfSquaresIsReturnedAndStored) {
    FiveThreeTwo s;
    EXPECT_DOUBLE_EQ(s.sample.calc_F(), 0.38);
    EXPECT_DOUBLE_EQ(s.sample.sum_sq_freq, 0.38);
}

TEST(SampleDiversity, AZeroCountContributesNothing) {
    StandardSample s({"a", "b", "c"}, {5, 0, 5});
    EXPECT_DOUBLE_EQ(s.sample.calc_F(), 0.5);
}

TEST(SampleDiversity, AnEmptySampleHasNoSumOfSquares) {
    PopulStandard empty;
    EXPECT_EQ(empty.calc_F(), 0.0);
}

TEST(SampleDiversity, SumOfSquaresOfAList) {
    FiveThreeTwo s;
    FrequencyList list(4, 4);
    fill(list, {0.7, 0.2, 0.1});
    EXPECT_DOUBLE_EQ(s.sample.calc_F(list), 0.54);
    EXPECT_DOUBLE_EQ(s.sample.sum_sq_freq, 0.54);
}

TEST(SampleDiversity, HomozygosityAndHeterozygosity) {
    FiveThreeTwo s;
    EXPECT_DOUBLE_EQ(s.sample.calc_sample_homozygosity(), 14.0 / 45.0);
    EXPECT_DOUBLE_EQ(s.sample.homozygosity, 14.0 / 45.0);
    EXPECT_DOUBLE_EQ(s.sample.heterozygosity, 31.0 / 45.0);
}

TEST(SampleDiversity, HomozygosityOfAList) {
    FiveThreeTwo s;
    FrequencyList list(4, 4);
    fill(list, {0.7, 0.2, 0.1});
    s.sample.calc_sample_homozygosity(list);
    EXPECT_DOUBLE_EQ(s.sample.heterozygosity, 10.0 / 9.0 * 0.46);
}

TEST(SampleDiversity, StandardDeviation) {
    FiveThreeTwo s;
    EXPECT_NEAR(s.sample.calc_sample_sd_heterozygosity(), std::sqrt(0.9704 / 90.0), 1e-15);
    EXPECT_NEAR(s.sample.sd_heterozygosity, std::sqrt(0.9704 / 90.0), 1e-15);
}

TEST(SampleDiversity, AllCopiesDifferentHaveNoThetaHom) {
    StandardSample s({"a", "b", "c"});
    s.sample.nb_hapl = 3;
    s.sample.sd_theta_hom = 77.0;
    EXPECT_EQ(s.sample.calc_theta_Hom(), kNumericalInfinity);
    EXPECT_EQ(s.sample.theta_hom, kNumericalInfinity);
    EXPECT_EQ(s.sample.homozygosity, 0.0);
    EXPECT_EQ(s.sample.heterozygosity, 1.0);
    EXPECT_EQ(s.sample.sd_theta_hom, 77.0);  // nothing else is computed
}

TEST(SampleDiversity, OneHaplotypeHasThetaHomZero) {
    StandardSample s({"a"}, {9});
    s.sample.nb_hapl = 1;
    s.sample.sd_theta_hom = 77.0;
    EXPECT_EQ(s.sample.calc_theta_Hom(), 0.0);
    EXPECT_EQ(s.sample.homozygosity, 1.0);
    EXPECT_EQ(s.sample.sd_theta_hom, 0.0);
}

TEST(SampleDiversity, ThetaHomSolvesItsRelation) {
    FiveThreeTwo s;
    const double t = s.sample.calc_theta_Hom();
    const double odds = t * (1.0 + 2.0 * (t + 1.0) / ((t + 2.0) * (t + 3.0)));
    EXPECT_NEAR(odds, 31.0 / 14.0, 1e-7);
    EXPECT_EQ(s.sample.theta_hom, t);
    EXPECT_GT(s.sample.sd_theta_hom, 0.0);
}

TEST(SampleDiversity, ThetaHomOfAListWithTheSameFrequenciesIsTheSame) {
    FiveThreeTwo s;
    const double t = s.sample.calc_theta_Hom();
    const double sd = s.sample.sd_theta_hom;
    FrequencyList list(4, 4);
    fill(list, {0.5, 0.3, 0.2});
    EXPECT_DOUBLE_EQ(s.sample.calc_theta_Hom(list), t);
    EXPECT_DOUBLE_EQ(s.sample.sd_theta_hom, sd);
}

TEST(SampleDiversity, EstimatorsOfThetaAreStored) {
    FiveThreeTwo s;
    s.sample.calc_theta_S(2, 3);
    EXPECT_DOUBLE_EQ(s.sample.theta_S, 3.0);
    EXPECT_DOUBLE_EQ(s.sample.sd_theta_S, std::sqrt(6.0));
    // n = 10: 11/27 x 3 + 2 x 113/810 x 9
    s.sample.calc_theta_pi(3.0);
    EXPECT_DOUBLE_EQ(s.sample.theta_pi, 3.0);
    EXPECT_DOUBLE_EQ(s.sample.sd_theta_pi, std::sqrt(33.0 / 27.0 + 2034.0 / 810.0));
    EXPECT_DOUBLE_EQ(s.sample.k_est(1.0, 4), 25.0 / 12.0);
    EXPECT_DOUBLE_EQ(s.sample.exp_k, 25.0 / 12.0);
}

}  // namespace
