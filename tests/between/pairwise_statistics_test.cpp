#include "between/pairwise_statistics.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

namespace mnd {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Samples {A, A, B} and {B, B} of two alleles, distance 1 between them: 2 differing pairs in the
// first, none in the second, 4 between.
constexpr PairSSD kTwoAlleles = {2.0, 0.0, 4.0};

TEST(PairDesign, CoefficientsOfUnequalSizes) {
    const PairDesign design = pair_design(3.0, 2.0);
    EXPECT_EQ(design.n_i, 3.0);
    EXPECT_EQ(design.n_j, 2.0);
    EXPECT_EQ(design.N, 5.0);
    EXPECT_DOUBLE_EQ(design.inv_df, 1.0 / 3.0);
    EXPECT_DOUBLE_EQ(design.n, 12.0 / 5.0);
}

TEST(PairDesign, ThreeCopiesHaveOneDegreeWithin) {
    EXPECT_EQ(pair_design(2.0, 1.0).inv_df, 1.0);
}

TEST(PairDesign, OneCopyEachHasNoDegreesWithin) {
    const PairDesign design = pair_design(1.0, 1.0);
    EXPECT_EQ(design.inv_df, 100000.0);
    EXPECT_EQ(design.n, 1.0);
}

TEST(PairDesign, AnEmptySampleLeavesNothing) {
    EXPECT_EQ(pair_design(4.0, 0.0).n, 0.0);
    EXPECT_EQ(pair_design(0.0, 4.0).n, 0.0);
    EXPECT_EQ(pair_design(0.0, 0.0).n, 0.0);
}

// W = 2/3, total 6/5. Vw = W/3 = 12/54, Va = (6/5 - 2/3 - 2/9) / (12/5) = 7/54.
TEST(PairVariance, WorkedByHand) {
    const PairVariance v = pair_variance(pair_design(3.0, 2.0), kTwoAlleles);
    EXPECT_NEAR(v.Vw, 12.0 / 54.0, 1e-15);
    EXPECT_NEAR(v.Va, 7.0 / 54.0, 1e-15);
    EXPECT_NEAR(v.FST, 7.0 / 19.0, 1e-15);
}

// Weir and Cockerham 1984, equation 10 for haploid samples of one locus: with the mean squares
// MSP among and MSG within, theta = (MSP - MSG) / (MSP + (n_c - 1) MSG). For an allele of the
// frequencies p_i in samples of n_i copies, MSP = sum n_i (p_i - p)^2 and
// MSG = sum n_i p_i (1 - p_i) / (N - 2), with n_c as n here.
TEST(PairVariance, IsThatOfAlleleFrequencies) {
    for (const auto& [n_i, a_i, n_j, a_j] :
         {std::array<double, 4>{10, 3, 10, 8}, {7, 7, 12, 1}, {30, 15, 5, 2}, {8, 4, 8, 4}}) {
        const double p_i = a_i / n_i;
        const double p_j = a_j / n_j;
        const double p = (a_i + a_j) / (n_i + n_j);
        const double msp = n_i * (p_i - p) * (p_i - p) + n_j * (p_j - p) * (p_j - p);
        const double msg = (n_i * p_i * (1 - p_i) + n_j * p_j * (1 - p_j)) / (n_i + n_j - 2);
        const double n_c = n_i + n_j - (n_i * n_i + n_j * n_j) / (n_i + n_j);
        const double theta = (msp - msg) / (msp + (n_c - 1.0) * msg);
        const PairSSD ssd = {a_i * (n_i - a_i), a_j * (n_j - a_j), a_i * (n_j - a_j) + a_j * (n_i - a_i)};
        EXPECT_NEAR(pair_variance(pair_design(n_i, n_j), ssd).FST, theta, 1e-13);
    }
}

TEST(PairVariance, OneCopyEachThatDiffer) {
    const PairVariance v = pair_variance(pair_design(1.0, 1.0), {0.0, 0.0, 6.0});
    EXPECT_EQ(v.Va, 3.0);
    EXPECT_EQ(v.Vw, 0.0);
    EXPECT_EQ(v.FST, 1.0);
}

// A file may hold distances below 0: Va stays as it falls.
TEST(PairVariance, WithoutVarianceTheComponentIsScaledUp) {
    const PairVariance none = pair_variance(pair_design(4.0, 4.0), {0.0, 0.0, 0.0});
    EXPECT_EQ(none.FST, 0.0);
    const PairVariance negative = pair_variance(pair_design(1.0, 1.0), {0.0, 0.0, -6.0});
    EXPECT_EQ(negative.Va, -3.0);
    EXPECT_EQ(negative.FST, -300000.0);
}

// The same haplotypes in the same numbers: Va = -Vw / n.
TEST(PairVariance, SamplesAlikeGiveANegativeFst) {
    // {A, B} twice: 1 pair in each, 2 between; N = 4, n = 2, W = 1, Vw = 1/2, Va = (1 - 1 - 1/2)/2.
    const PairVariance v = pair_variance(pair_design(2.0, 2.0), {1.0, 1.0, 2.0});
    EXPECT_EQ(v.Va, -0.25);
    EXPECT_EQ(v.FST, -1.0);
}

TEST(PermutedComponent, IsTheObservedOneButForRounding) {
    for (const PairSSD& ssd : {kTwoAlleles, PairSSD{17.0, 33.0, 91.0}, PairSSD{0.3, 0.7, 1.9}}) {
        const PairDesign design = pair_design(3.0, 2.0);
        EXPECT_NEAR(permuted_component(design, ssd), pair_variance(design, ssd).Va, 1e-13);
    }
}

TEST(PairDifferences, WorkedByHand) {
    const PairDifferences d = pair_differences(pair_design(3.0, 2.0), kTwoAlleles);
    EXPECT_DOUBLE_EQ(d.pi_X, 2.0 / 3.0);
    EXPECT_EQ(d.pi_Y, 0.0);
    EXPECT_DOUBLE_EQ(d.pi_XY, 4.0 / 6.0);
    EXPECT_DOUBLE_EQ(d.corrected, 4.0 / 6.0 - 1.0 / 3.0);
    // 1/3 of 3 x 2 x 2 x 1.
    EXPECT_EQ(d.corrected_multiple, 4.0);
}

TEST(PairDifferences, SamplesOfOneSizeMayChangePlaces) {
    const PairDesign design = pair_design(7.0, 7.0);
    for (int i = 1; i < 50; ++i) {
        const PairDifferences d = pair_differences(design, {i / 3.0, 20.0 / i, 77.7});
        const PairDifferences e = pair_differences(design, {20.0 / i, i / 3.0, 77.7});
        EXPECT_EQ(d.corrected_multiple, e.corrected_multiple);
        EXPECT_EQ(d.corrected, e.corrected);
    }
}

TEST(PairDifferences, OneCopyHasNoneWithin) {
    const PairDifferences d = pair_differences(pair_design(1.0, 2.0), {0.0, 4.0, 6.0});
    EXPECT_EQ(d.pi_X, 0.0);
    EXPECT_EQ(d.pi_Y, 4.0);
    EXPECT_EQ(d.pi_XY, 3.0);
    EXPECT_EQ(d.corrected, 1.0);
    // Of 1 x 2 x 1, without the factor 1 - 1.
    EXPECT_EQ(d.corrected_multiple, 2.0);
}

TEST(PairDifferences, AnEmptySampleHasNoneBetween) {
    EXPECT_EQ(pair_differences(pair_design(0.0, 2.0), {0.0, 4.0, 6.0}).pi_XY, 0.0);
}

TEST(DeltaMuSquare, IsTheMeanOverLoci) {
    // (10 - 12)^2 = 4, (7.5 - 7)^2 = 0.25.
    EXPECT_DOUBLE_EQ(delta_mu_square({10.0, 7.5}, {12.0, 7.0}), 4.25 / 2.0);
}

TEST(DeltaMuSquare, LociWithoutDataAreLeftOut) {
    EXPECT_DOUBLE_EQ(delta_mu_square({10.0, 0.0, 3.0}, {12.0, 7.0, 0.0}), 4.0);
    EXPECT_EQ(delta_mu_square({0.0, 5.0}, {4.0, 0.0}), 0.0);
    EXPECT_EQ(delta_mu_square({}, {}), 0.0);
}

TEST(Transforms, ValuesBetweenZeroAndOne) {
    EXPECT_DOUBLE_EQ(coancestry(0.2), 0.22314355131420976);  // ln 1.25
    EXPECT_DOUBLE_EQ(slatkin_distance(0.2), 0.25);
    EXPECT_DOUBLE_EQ(migrants(0.2), 2.0);
}

TEST(Transforms, ZeroIsZeroAndInfinitelyManyMigrants) {
    EXPECT_EQ(coancestry(0.0), 0.0);
    EXPECT_FALSE(std::signbit(coancestry(0.0)));
    EXPECT_EQ(slatkin_distance(0.0), 0.0);
    EXPECT_EQ(migrants(0.0), kInfinity);
}

TEST(Transforms, OneAndMoreIsInfinite) {
    EXPECT_EQ(coancestry(1.0), kInfinity);
    EXPECT_EQ(slatkin_distance(1.0), kInfinity);
    EXPECT_EQ(coancestry(1.5), kInfinity);
    EXPECT_EQ(slatkin_distance(1.5), kInfinity);
    EXPECT_EQ(migrants(1.0), 0.0);
}

TEST(Transforms, BelowZeroIsZero) {
    EXPECT_EQ(coancestry(-0.1), 0.0);
    EXPECT_EQ(slatkin_distance(-0.1), 0.0);
    EXPECT_EQ(migrants(-0.1), kInfinity);
}

TEST(PairwiseResults, TablesOfWhatIsNotAskedForAreEmpty) {
    const PairwiseResults bare(4, false, false);
    EXPECT_EQ(bare.fst.dim, 4);
    EXPECT_EQ(bare.pi.rows, 4);
    EXPECT_EQ(bare.tau.dim, 0);
    EXPECT_EQ(bare.delta_mu.dim, 0);
    const PairwiseResults full(4, true, true);
    EXPECT_EQ(full.tau.dim, 4);
    EXPECT_EQ(full.theta0_p.dim, 4);
    EXPECT_EQ(full.delta_mu.dim, 4);
}

}  // namespace
}  // namespace mnd
