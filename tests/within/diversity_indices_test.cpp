#include "within/diversity_indices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <vector>

#include "model/population.h"

namespace {

using mnd::BnumMat;
using mnd::Estimate;
using mnd::expected_number_of_alleles;
using mnd::gene_diversity;
using mnd::GeneDiversity;
using mnd::kNumericalInfinity;
using mnd::sd_gene_diversity;
using mnd::sum_of_squares;
using mnd::theta_from_homozygosity;
using mnd::theta_from_number_of_alleles;
using mnd::theta_from_pairwise_differences;
using mnd::theta_from_segregating_sites;
using mnd::ThetaK;

void expect_relative(double actual, double expected, double tolerance) {
    EXPECT_NEAR(actual, expected, tolerance * std::fabs(expected));
}

// --- Gene diversity

TEST(GeneDiversity, SumOfSquaresOfFrequencies) {
    // 0.25 + 0.09 + 0.04
    EXPECT_DOUBLE_EQ(sum_of_squares({0.5, 0.3, 0.2}), 0.38);
    EXPECT_EQ(sum_of_squares({}), 0.0);
}

TEST(GeneDiversity, IsUnbiased) {
    // 10 copies: 10/9 (1 - 0.38) = 0.62/0.9 = 31/45
    const GeneDiversity d = gene_diversity(0.38, 3, 10.0);
    EXPECT_DOUBLE_EQ(d.heterozygosity, 31.0 / 45.0);
    EXPECT_DOUBLE_EQ(d.homozygosity, 14.0 / 45.0);
}

TEST(GeneDiversity, IsExactlyOneWhenAllCopiesDiffer) {
    for (const double sum_sq : {0.2, 0.20000000000000004, 0.7}) {
        const GeneDiversity d = gene_diversity(sum_sq, 5, 5.0);
        EXPECT_EQ(d.heterozygosity, 1.0);
        EXPECT_EQ(d.homozygosity, 0.0);
    }
}

// One copy is "all copies different": that rule comes first.
TEST(GeneDiversity, OfASingleCopyIsOne) {
    EXPECT_EQ(gene_diversity(1.0, 1, 1.0).heterozygosity, 1.0);
}

TEST(GeneDiversity, OfOneCopyOrLessIsZero) {
    for (const double n : {1.0, 0.5, 0.0}) {
        const GeneDiversity d = gene_diversity(1.0, 2, n);
        EXPECT_EQ(d.homozygosity, 1.0);
        EXPECT_EQ(d.heterozygosity, 0.0);
    }
}

TEST(GeneDiversity, IsLimitedToOne) {
    // 4/3 (1 - 0.25 + tiny) is above 1 by rounding of the sum
    const GeneDiversity d = gene_diversity(0.25 - 1e-12, 3, 4.0);
    EXPECT_EQ(d.heterozygosity, 1.0);
    EXPECT_EQ(d.homozygosity, 0.0);
}

TEST(GeneDiversity, OneHaplotypeGivesNone) {
    const GeneDiversity d = gene_diversity(1.0, 1, 12.0);
    EXPECT_EQ(d.homozygosity, 1.0);
    EXPECT_EQ(d.heterozygosity, 0.0);
}

TEST(GeneDiversity, StandardDeviationByHand) {
    // s2 = 0.38, s3 = 0.125 + 0.027 + 0.008 = 0.16, s2^2 = 0.1444
    // 2 x 8 (0.16 - 0.1444) + 0.38 - 0.1444 = 0.2496 + 0.2356 = 0.4852; times 2/90
    EXPECT_NEAR(sd_gene_diversity({0.5, 0.3, 0.2}, 10.0), std::sqrt(0.9704 / 90.0), 1e-15);
}

// The variance is that of the estimator over all samples of n copies from these frequencies:
// every one of the 3^n samples is drawn with its probability.
TEST(GeneDiversity, VarianceIsThatOfAllPossibleSamples) {
    const std::array<double, 3> p = {0.5, 0.3, 0.2};
    for (const int n : {2, 3, 6}) {
        double mean = 0.0;
        double mean_square = 0.0;
        const int samples = static_cast<int>(std::lround(std::pow(3.0, n)));
        for (int code = 0; code < samples; ++code) {
            std::array<double, 3> count{};
            double probability = 1.0;
            for (int i = 0, rest = code; i < n; ++i, rest /= 3) {
                count[static_cast<std::size_t>(rest % 3)] += 1.0;
                probability *= p[static_cast<std::size_t>(rest % 3)];
            }
            double homozygous = 0.0;
            for (const double c : count)
                homozygous += c * c / (n * n);
            const double H = n / (n - 1.0) * (1.0 - homozygous);
            mean += probability * H;
            mean_square += probability * H * H;
        }
        EXPECT_NEAR(mean, 0.62, 1e-12);  // unbiased
        EXPECT_NEAR(sd_gene_diversity({0.5, 0.3, 0.2}, n), std::sqrt(mean_square - mean * mean), 1e-12);
    }
}

TEST(GeneDiversity, StandardDeviationNeedsTwoCopies) {
    EXPECT_EQ(sd_gene_diversity({1.0}, 1.0), 0.0);
    EXPECT_EQ(sd_gene_diversity({}, 0.0), 0.0);
}

TEST(GeneDiversity, StandardDeviationOfOneHaplotypeIsZeroNotANumberBelow) {
    // 1/3 three times: s3 - s2^2 is 0 but for rounding
    const double third = 1.0 / 3.0;
    EXPECT_GE(sd_gene_diversity({third, third, third}, 1e9), 0.0);
    EXPECT_EQ(sd_gene_diversity({1.0}, 20.0), 0.0);
}

// --- theta from homozygosity

// 1/h - 1 as a function of theta.
double odds(double t) {
    return t * (1.0 + 2.0 * (t + 1.0) / ((t + 2.0) * (t + 3.0)));
}

TEST(ThetaHom, SolvesTheRelationByHand) {
    // theta = 1: 1 + 2 x 2/(3 x 4) = 4/3, h = 3/7.  theta = 2: 2 (1 + 2 x 3/(4 x 5)) = 2.6, h = 1/3.6
    EXPECT_NEAR(theta_from_homozygosity(3.0 / 7.0, 0.0).value, 1.0, 1e-7);
    EXPECT_NEAR(theta_from_homozygosity(1.0 / 3.6, 0.0).value, 2.0, 1e-7);
}

TEST(ThetaHom, SolvesTheRelationToItsPrecision) {
    for (double h = 0.001; h < 0.9999; h += 0.0007) {
        const double theta = theta_from_homozygosity(h, 0.0).value;
        EXPECT_NEAR(odds(theta), 1.0 / h - 1.0, 1e-7) << h;
        EXPECT_GT(theta, 0.0) << h;
    }
}

TEST(ThetaHom, EndsForEveryHomozygosity) {
    for (const double h : {1e-300, 1e-16, 1e-9, 1.0 - 1e-15, 1.0 - 1e-9}) {
        EXPECT_TRUE(std::isfinite(theta_from_homozygosity(h, 0.1).value)) << h;
    }
}

TEST(ThetaHom, StandardDeviationByHand) {
    // theta = 1, h = 3/7, s = 0.1: 0.1 x 9 x 16 / (2 x 9/49 x (10 x 3 + 3 x 4 x 5 + 4))
    EXPECT_NEAR(theta_from_homozygosity(3.0 / 7.0, 0.1).sd, 14.4 / (18.0 / 49.0 * 94.0), 1e-7);
}

// The standard deviation is that of h times the slope of theta over h.
TEST(ThetaHom, StandardDeviationFollowsTheSlopeOfTheRelation) {
    for (const double theta : {0.1, 1.0, 5.0, 50.0}) {
        const double step = 1e-5 * theta;
        const double slope = (odds(theta + step) - odds(theta - step)) / (2.0 * step);
        const double h = 1.0 / (1.0 + odds(theta));
        expect_relative(theta_from_homozygosity(h, 0.25).sd, 0.25 / (h * h * slope), 1e-5);
    }
}

TEST(ThetaHom, OneHaplotypeGivesZero) {
    const Estimate theta = theta_from_homozygosity(1.0, 0.3);
    EXPECT_EQ(theta.value, 0.0);
    EXPECT_EQ(theta.sd, 0.0);
}

TEST(ThetaHom, NoHomozygosityGivesInfinity) {
    for (const double h : {0.0, -0.1}) {
        EXPECT_EQ(theta_from_homozygosity(h, 0.3).value, kNumericalInfinity);
        EXPECT_EQ(theta_from_homozygosity(h, 0.3).sd, kNumericalInfinity);
    }
}

// --- theta from segregating sites

TEST(ThetaS, OfTwoCopiesIsTheNumberOfSites) {
    // a1 = a2 = 1: S, and sqrt((S + S^2)/2)
    const Estimate theta = theta_from_segregating_sites(2, 3);
    EXPECT_DOUBLE_EQ(theta.value, 3.0);
    EXPECT_DOUBLE_EQ(theta.sd, std::sqrt(6.0));
}

TEST(ThetaS, OfFiveCopiesByHand) {
    // a1 = 25/12, a2 = 205/144: 4/a1 = 1.92
    const Estimate theta = theta_from_segregating_sites(5, 4);
    EXPECT_DOUBLE_EQ(theta.value, 1.92);
    const double a1 = 25.0 / 12.0;
    const double a2 = 205.0 / 144.0;
    EXPECT_DOUBLE_EQ(theta.sd, std::sqrt((4.0 * a1 * a1 + 16.0 * a2) / ((a2 + a1 * a1) * a1 * a1)));
}

// Var(theta_S) = theta/a1 + a2 theta^2/a1^2 with the unbiased estimates S/a1 of theta and
// S (S - 1)/(a1^2 + a2) of its square (Tajima 1989).
TEST(ThetaS, VarianceIsThatOfTheInfiniteSitesModel) {
    for (const int n : {3, 15, 100}) {
        double a1 = 0.0;
        double a2 = 0.0;
        for (int i = n - 1; i > 0; --i) {
            a1 += 1.0 / i;
            a2 += 1.0 / (static_cast<double>(i) * i);
        }
        for (const int S : {1, 7, 50}) {
            const double variance = S / (a1 * a1) + a2 * S * (S - 1.0) / (a1 * a1 * (a1 * a1 + a2));
            expect_relative(theta_from_segregating_sites(n, S).sd, std::sqrt(variance), 1e-12);
        }
    }
}

TEST(ThetaS, OfFewerThanTwoCopiesIsZero) {
    for (const int n : {1, 0, -4}) {
        EXPECT_EQ(theta_from_segregating_sites(n, 5).value, 0.0);
        EXPECT_EQ(theta_from_segregating_sites(n, 5).sd, 0.0);
    }
}

TEST(ThetaS, WithoutSitesIsZero) {
    EXPECT_EQ(theta_from_segregating_sites(10, 0).value, 0.0);
    EXPECT_EQ(theta_from_segregating_sites(10, 0).sd, 0.0);
}

// From one number of copies on the sums come from their series: both must meet there.
TEST(ThetaS, SumsOfHugeSamplesContinueThoseOfLargeOnes) {
    constexpr int kLast = 10000000;
    const double before = 1000.0 / theta_from_segregating_sites(kLast, 1000).value;
    const double after = 1000.0 / theta_from_segregating_sites(kLast + 1, 1000).value;
    EXPECT_NEAR(after - before, 1e-7, 1e-11);
    expect_relative(theta_from_segregating_sites(kLast + 1, 1000).sd,
                    theta_from_segregating_sites(kLast, 1000).sd, 1e-7);
    EXPECT_GT(theta_from_segregating_sites(2147483647, 1000).value, 0.0);
}

// --- theta from pairwise differences

TEST(ThetaPi, OfTwoCopies) {
    // Two copies differ by theta sites on average, with variance theta + theta^2.
    const Estimate theta = theta_from_pairwise_differences(3.0, 2.0);
    EXPECT_EQ(theta.value, 3.0);
    EXPECT_DOUBLE_EQ(theta.sd, std::sqrt(12.0));
}

TEST(ThetaPi, OfFifteenCopiesByHand) {
    // (16/42) 2 + 2 (225 + 15 + 3)/(9 x 15 x 14) 4 = 32/42 + 1944/1890
    EXPECT_DOUBLE_EQ(theta_from_pairwise_differences(2.0, 15.0).sd, std::sqrt(32.0 / 42.0 + 1944.0 / 1890.0));
}

TEST(ThetaPi, OfFewerThanTwoCopiesIsZero) {
    for (const double n : {1.0, 1.5, 0.0}) {
        EXPECT_EQ(theta_from_pairwise_differences(4.0, n).value, 0.0);
        EXPECT_EQ(theta_from_pairwise_differences(4.0, n).sd, 0.0);
    }
}

// --- Number of alleles

TEST(ExpectedAlleles, ByHand) {
    // theta = 1: 1 + 1/2 + 1/3 + 1/4.  theta = 2: 1 + 2/3 + 2/4
    EXPECT_DOUBLE_EQ(expected_number_of_alleles(1.0, 4), 25.0 / 12.0);
    EXPECT_DOUBLE_EQ(expected_number_of_alleles(2.0, 3), 13.0 / 6.0);
}

TEST(ExpectedAlleles, Limits) {
    EXPECT_EQ(expected_number_of_alleles(0.0, 10), 1.0);
    EXPECT_EQ(expected_number_of_alleles(-1.0, 0), 1.0);
    EXPECT_EQ(expected_number_of_alleles(3.0, 0), 0.0);
    EXPECT_EQ(expected_number_of_alleles(3.0, -2), 0.0);
    EXPECT_EQ(expected_number_of_alleles(3.0, 1), 1.0);
}

ThetaK solve(int k, int n) {
    BnumMat B(1, 1);
    B.re_allocate_matrix(n, k);
    return theta_from_number_of_alleles(k, n, B);
}

// Permutations of n elements by their number of cycles, all of them looked at.
std::vector<double> permutations_by_cycles(int n) {
    std::vector<double> number(static_cast<std::size_t>(n) + 1, 0.0);
    std::vector<std::size_t> p(static_cast<std::size_t>(n));
    std::iota(p.begin(), p.end(), 0U);
    do {
        std::vector<bool> seen(p.size(), false);
        std::size_t cycles = 0;
        for (std::size_t i = 0; i < p.size(); ++i) {
            if (seen[i]) continue;
            ++cycles;
            for (std::size_t j = i; !seen[j]; j = p[j])
                seen[j] = true;
        }
        number[cycles] += 1.0;
    } while (std::next_permutation(p.begin(), p.end()));
    return number;
}

// P(K <= k) where each permutation has the weight theta^cycles.
double at_most(const std::vector<double>& number, int k, double theta) {
    double all = 0.0;
    double some = 0.0;
    for (std::size_t j = 1; j < number.size(); ++j) {
        const double weight = number[j] * std::pow(theta, static_cast<double>(j));
        all += weight;
        if (j <= static_cast<std::size_t>(k)) some += weight;
    }
    return some / all;
}

TEST(ThetaK, LimitsHoldTheirProbabilitiesOverAllPermutations) {
    constexpr int n = 8;
    const std::vector<double> number = permutations_by_cycles(n);
    for (int k = 2; k < n; ++k) {
        const ThetaK theta = solve(k, n);
        EXPECT_NEAR(at_most(number, k, theta.upper), 0.025, 1e-12) << k;
        EXPECT_NEAR(at_most(number, k, theta.lower), 0.975, 1e-12) << k;
        double expected = 0.0;  // E(K) from the distribution, not from its sum
        for (int j = 0; j < n; ++j)
            expected += 1.0 - at_most(number, j, theta.theta);
        EXPECT_NEAR(expected, k, 1e-12) << k;
        EXPECT_LT(theta.lower, theta.theta);
        EXPECT_LT(theta.theta, theta.upper);
    }
}

TEST(ThetaK, TwoOfThreeCopiesInClosedForm) {
    // E(K) = 1 + t/(1 + t) + t/(2 + t) = 2 at t^2 = 2; P(K <= 2) = 1 - t^2/((1 + t)(2 + t))
    const ThetaK theta = solve(2, 3);
    expect_relative(theta.theta, std::sqrt(2.0), 1e-14);
    // t^2 = 0.975 (t^2 + 3 t + 2) and t^2 = 0.025 (t^2 + 3 t + 2)
    expect_relative(theta.upper, (2.925 + std::sqrt(2.925 * 2.925 + 0.195)) / 0.05, 1e-12);
    expect_relative(theta.lower, (0.075 + std::sqrt(0.075 * 0.075 + 0.195)) / 1.95, 1e-13);
}

TEST(ThetaK, OneAlleleInClosedForm) {
    // P(K = 1) = 1/(1 + t), and 2/((1 + t)(2 + t)) for three copies: t^2 + 3 t - 78 = 0
    EXPECT_EQ(solve(1, 2).theta, 0.0);
    EXPECT_EQ(solve(1, 2).lower, 0.0);
    expect_relative(solve(1, 2).upper, 39.0, 1e-13);
    expect_relative(solve(1, 3).upper, (-3.0 + std::sqrt(321.0)) / 2.0, 1e-13);
}

// Values from whole-number Stirling numbers and arithmetic of 40 digits.
TEST(ThetaK, AgreesWithExactArithmetic) {
    struct Case {
        int n, k;
        double theta, lower, upper;
    };
    const Case cases[] = {
        {23, 4, 1.12758761852, 0.375061424177, 4.24007915755},
        {20, 12, 11.7470578389, 5.1129919716, 35.5167306875},
        {50, 10, 3.48031569535, 1.68343794605, 7.85070192922},
        {30, 27, 125.675239051, 48.4094310509, 661.198610104},
        {100, 60, 62.4164055683, 41.8182622046, 98.2213555992},
        {200, 199, 19767.1112543, 5328.49997232, 785941.517897},  // far above 10000
    };
    for (const Case& c : cases) {
        const ThetaK theta = solve(c.k, c.n);
        expect_relative(theta.theta, c.theta, 1e-11);
        expect_relative(theta.lower, c.lower, 1e-11);
        expect_relative(theta.upper, c.upper, 1e-11);
    }
}

// K is a sum of independent events: the copy i + 1 brings a new allele with probability
// theta/(theta + i).
double at_most_by_copies(int k, int n, double theta) {
    std::vector<double> P(static_cast<std::size_t>(k) + 1, 0.0);
    P[0] = 1.0;
    for (int i = 0; i < n; ++i) {
        const double p = theta / (theta + i);
        for (std::size_t j = P.size() - 1; j > 0; --j)
            P[j] = P[j] * (1.0 - p) + P[j - 1] * p;
        P[0] *= 1.0 - p;
    }
    return std::accumulate(P.begin(), P.end(), 0.0);
}

// B numbers of so large samples are beyond double precision.
TEST(ThetaK, HoldsForSamplesWhoseTableOverflows) {
    BnumMat B(1, 1);
    B.re_allocate_matrix(1600, 930);
    ASSERT_TRUE(std::isinf(B.data[1599][919]));
    const ThetaK theta = theta_from_number_of_alleles(920, 1600, B);
    EXPECT_NEAR(at_most_by_copies(920, 1600, theta.upper), 0.025, 1e-10);
    EXPECT_NEAR(at_most_by_copies(920, 1600, theta.lower), 0.975, 1e-10);
    EXPECT_NEAR(expected_number_of_alleles(theta.theta, 1600), 920.0, 1e-9);
}

TEST(ThetaK, HoldsForTheLargestSamples) {
    const int n = mnd::kThetaKCopyLimit - 1;
    const int k = mnd::kThetaKAlleleLimit - 1;
    const ThetaK theta = solve(k, n);
    EXPECT_NEAR(at_most_by_copies(k, n, theta.upper), 0.025, 1e-9);
    EXPECT_NEAR(at_most_by_copies(k, n, theta.lower), 0.975, 1e-9);
}

}  // namespace
