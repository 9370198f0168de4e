#include "within/dna_distance_formulas.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <vector>

#include "support/captured_reports.h"

namespace {

using mnd::BaseComposition;
using mnd::DnaFault;
using mnd::DnaPair;
using mnd::DnaWeights;
using mnd::SiteCounts;

// ---- Markov models of substitution, solved numerically: the distance put into the model must
// come out of the method. Bases in the order C, T, A, G.

using Matrix = std::array<std::array<double, 4>, 4>;
using Vector = std::array<double, 4>;

Matrix identity() {
    Matrix m{};
    for (std::size_t i = 0; i < 4; ++i)
        m[i][i] = 1.0;
    return m;
}

Matrix product(const Matrix& a, const Matrix& b) {
    Matrix c{};
    for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t k = 0; k < 4; ++k) {
            for (std::size_t j = 0; j < 4; ++j)
                c[i][j] += a[i][k] * b[k][j];
        }
    }
    return c;
}

// Rates of substitution from i to j, f_j times the factor of the class of the change (C-T, A-G,
// transversion), scaled to one substitution per site and unit of time.
Matrix rates(const Vector& f, double ct, double ag, double tv) {
    Matrix q{};
    double total = 0.0;
    for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t j = 0; j < 4; ++j) {
            if (i == j) continue;
            const double factor = i / 2 != j / 2 ? tv : i / 2 == 0 ? ct : ag;
            q[i][j] = factor * f[j];
            q[i][i] -= q[i][j];
            total += f[i] * q[i][j];
        }
    }
    for (auto& row : q) {
        for (double& x : row)
            x /= total;
    }
    return q;
}

// exp(q d), by a Taylor series of exp(q d / 1024), squared ten times.
Matrix exponential(const Matrix& q, double d) {
    Matrix sum = identity(), term = identity();
    for (int n = 1; n < 20; ++n) {
        term = product(term, q);
        for (auto& row : term) {
            for (double& x : row)
                x *= d / 1024.0 / n;
        }
        for (std::size_t i = 0; i < 4; ++i) {
            for (std::size_t j = 0; j < 4; ++j)
                sum[i][j] += term[i][j];
        }
    }
    for (int n = 0; n < 10; ++n)
        sum = product(sum, sum);
    return sum;
}

// Inverse by Gauss-Jordan elimination; diagonally dominant, so no pivoting is needed.
Matrix inverse(Matrix m) {
    Matrix result = identity();
    for (std::size_t k = 0; k < 4; ++k) {
        const double pivot = m[k][k];
        for (std::size_t j = 0; j < 4; ++j) {
            m[k][j] /= pivot;
            result[k][j] /= pivot;
        }
        for (std::size_t i = 0; i < 4; ++i) {
            if (i == k) continue;
            const double factor = m[i][k];
            for (std::size_t j = 0; j < 4; ++j) {
                m[i][j] -= factor * m[k][j];
                result[i][j] -= factor * result[k][j];
            }
        }
    }
    return result;
}

// Mean of exp(r q d) over rates r of a gamma distribution with shape a and mean 1, which is
// (1 - q d / a)^-a; a a whole number.
Matrix gamma_mean(const Matrix& q, double d, int a) {
    Matrix m = identity();
    for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t j = 0; j < 4; ++j)
            m[i][j] -= q[i][j] * d / a;
    }
    const Matrix once = inverse(m);
    Matrix result = identity();
    for (int n = 0; n < a; ++n)
        result = product(result, once);
    return result;
}

// Sites of each unordered type of pair, in the counters of Tajima and Nei, among L sites.
constexpr double kSites = 2e9;
SiteCounts pair_types(const Vector& f, const Matrix& change) {
    SiteCounts counts{};
    std::size_t c = 0;
    for (std::size_t i = 1; i < 4; ++i) {
        for (std::size_t j = 0; j < i; ++j, ++c) {
            counts[c] = static_cast<int>(std::lround(kSites * (f[i] * change[i][j] + f[j] * change[j][i])));
        }
    }
    counts[mnd::kTajimaNeiCompared] = static_cast<int>(kSites);
    return counts;
}

SiteCounts jukes_cantor_counts(const SiteCounts& types) {
    int differences = 0;
    for (std::size_t c = 0; c < 6; ++c)
        differences += types[c];
    return {differences, types[6]};
}

// Types in order: C-T, C-A, T-A, C-G, T-G, A-G.
SiteCounts two_class_counts(const SiteCounts& t) {
    return {t[0] + t[5], t[1] + t[2] + t[3] + t[4], t[6]};
}
SiteCounts tamura_nei_counts(const SiteCounts& t) {
    return {t[0], t[5], t[1] + t[2] + t[3] + t[4], t[6]};
}

constexpr Vector kEqual = {0.25, 0.25, 0.25, 0.25};
constexpr Vector kUnequal = {0.15, 0.32, 0.34, 0.19};
// Absolute error by rounding the counts of 2e9 sites.
constexpr double kRounding = 2e-7;

TEST(DnaDistanceFormulas, JukesCantorInvertsTheModelOfOneRate) {
    const Matrix q = rates(kEqual, 1.0, 1.0, 1.0);
    for (const double d : {0.01, 0.3, 1.5}) {
        DnaPair pair;
        const SiteCounts c = jukes_cantor_counts(pair_types(kEqual, exponential(q, d)));
        ASSERT_EQ(jukes_cantor_distance(c, 0.0, pair), DnaFault::kNone);
        EXPECT_NEAR(pair.distance, d, kRounding);
        for (const int a : {1, 2, 3}) {
            const SiteCounts g = jukes_cantor_counts(pair_types(kEqual, gamma_mean(q, d, a)));
            ASSERT_EQ(jukes_cantor_distance(g, a, pair), DnaFault::kNone);
            EXPECT_NEAR(pair.distance, d, kRounding);
        }
    }
}

TEST(DnaDistanceFormulas, KimuraInvertsTheModelOfTwoRates) {
    for (const double ratio : {0.5, 1.0, 8.0}) {
        const Matrix q = rates(kEqual, ratio, ratio, 1.0);
        for (const double d : {0.02, 0.3, 1.0}) {
            DnaPair pair;
            const SiteCounts c = two_class_counts(pair_types(kEqual, exponential(q, d)));
            ASSERT_EQ(kimura_distance(c, 0.0, pair), DnaFault::kNone);
            EXPECT_NEAR(pair.distance, d, 10 * kRounding);
            // alpha / (2 beta): one kind of transition, two of transversion.
            EXPECT_NEAR(pair.ts_tv_ratio, ratio / 2.0, 1e-5);
            for (const int a : {1, 2}) {
                const SiteCounts g = two_class_counts(pair_types(kEqual, gamma_mean(q, d, a)));
                ASSERT_EQ(kimura_distance(g, a, pair), DnaFault::kNone);
                EXPECT_NEAR(pair.distance, d, 10 * kRounding);
                EXPECT_NEAR(pair.ts_tv_ratio, ratio / 2.0, 1e-5);
            }
        }
    }
}

// Substitution to any base by its frequency. Then p^2 / c = 1 - sum f^2, and the method is exact.
TEST(DnaDistanceFormulas, TajimaNeiInvertsTheModelOfEqualInput) {
    const Matrix q = rates(kUnequal, 1.0, 1.0, 1.0);
    for (const double d : {0.02, 0.3, 1.0}) {
        DnaPair pair;
        const SiteCounts c = pair_types(kUnequal, exponential(q, d));
        ASSERT_EQ(tajima_nei_distance(c, {}, {kUnequal, 0.34}, pair), DnaFault::kNone);
        EXPECT_NEAR(pair.distance, d, kRounding);
    }
}

// Two rates, and a content of G and C other than one half.
TEST(DnaDistanceFormulas, TamuraInvertsHisModel) {
    for (const double gc : {0.2, 0.5, 0.7}) {
        const Vector f = {gc / 2, 0.5 - gc / 2, 0.5 - gc / 2, gc / 2};
        const Matrix q = rates(f, 5.0, 5.0, 1.0);
        for (const double d : {0.02, 0.3, 0.9}) {
            DnaPair pair;
            const SiteCounts c = two_class_counts(pair_types(f, exponential(q, d)));
            ASSERT_EQ(tamura_distance(c, {f, gc}, pair), DnaFault::kNone);
            EXPECT_NEAR(pair.distance, d, 10 * kRounding);
        }
    }
}

TEST(DnaDistanceFormulas, TamuraWithHalfGcIsKimura) {
    const SiteCounts counts = {37, 21, 400};
    DnaPair kimura, tamura;
    ASSERT_EQ(kimura_distance(counts, 0.0, kimura), DnaFault::kNone);
    ASSERT_EQ(tamura_distance(counts, {kEqual, 0.5}, tamura), DnaFault::kNone);
    EXPECT_NEAR(tamura.distance, kimura.distance, 1e-14);
    EXPECT_NEAR(tamura.distance_var, kimura.distance_var, 1e-16);
    EXPECT_NEAR(tamura.ts_tv_ratio, kimura.ts_tv_ratio, 1e-12);
    EXPECT_NEAR(tamura.ts_tv_ratio_var, kimura.ts_tv_ratio_var, 1e-12);
}

TEST(DnaDistanceFormulas, TamuraNeiInvertsTheirModel) {
    const Matrix q = rates(kUnequal, 6.0, 3.0, 1.0);
    for (const double d : {0.02, 0.3, 0.8}) {
        DnaPair pair;
        const SiteCounts c = tamura_nei_counts(pair_types(kUnequal, exponential(q, d)));
        ASSERT_EQ(tamura_nei_distance(c, {kUnequal, 0.34}, 0.0, pair), DnaFault::kNone);
        EXPECT_NEAR(pair.distance, d, 10 * kRounding);
        // Transversions are 2 gY gR times their rate, of all substitutions.
        double transversions = 0.0;
        for (std::size_t i = 0; i < 4; ++i) {
            for (std::size_t j = 0; j < 4; ++j)
                transversions += i / 2 == j / 2 ? 0.0 : kUnequal[i] * q[i][j];
        }
        EXPECT_NEAR(pair.tv_dist, d * transversions, 10 * kRounding);
        EXPECT_NEAR(pair.ts_dist, d * (1.0 - transversions), 10 * kRounding);
        EXPECT_NEAR(pair.ts_tv_ratio, 1.0 - transversions, 1e-5);
        EXPECT_EQ(pair.ts_tv_ratio_var, -1.0);
        for (const int a : {1, 2, 3}) {
            const SiteCounts g = tamura_nei_counts(pair_types(kUnequal, gamma_mean(q, d, a)));
            ASSERT_EQ(tamura_nei_distance(g, {kUnequal, 0.34}, a, pair), DnaFault::kNone);
            EXPECT_NEAR(pair.distance, d, 10 * kRounding);
        }
    }
}

// ---- Variances: the delta method with slopes by central differences of the distance itself.

double numerical_variance(const SiteCounts& counts, const std::vector<std::size_t>& classes, int L,
                          const std::function<double(const SiteCounts&)>& f) {
    constexpr int kStep = 2000;
    double squares = 0.0, mean = 0.0;
    for (const std::size_t c : classes) {
        SiteCounts up = counts, down = counts;
        up[c] += kStep;
        down[c] -= kStep;
        const double slope = (f(up) - f(down)) / (2.0 * kStep / L);
        squares += slope * slope * counts[c] / L;
        mean += slope * counts[c] / L;
    }
    return (squares - mean * mean) / L;
}

TEST(DnaDistanceFormulas, VariancesFollowFromTheDeltaMethod) {
    constexpr int L = 100000000;
    for (const double a : {0.0, 0.4, 2.5}) {
        DnaPair pair;
        const SiteCounts one = {21000000, L};
        jukes_cantor_distance(one, a, pair);
        EXPECT_NEAR(pair.distance_var / numerical_variance(one, {0}, L,
                                                           [&](const SiteCounts& c) {
                                                               DnaPair p;
                                                               jukes_cantor_distance(c, a, p);
                                                               return p.distance;
                                                           }),
                    1.0, 1e-5);
        const SiteCounts two = {14000000, 6000000, L};
        kimura_distance(two, a, pair);
        EXPECT_NEAR(pair.distance_var / numerical_variance(two, {0, 1}, L,
                                                           [&](const SiteCounts& c) {
                                                               DnaPair p;
                                                               kimura_distance(c, a, p);
                                                               return p.distance;
                                                           }),
                    1.0, 1e-5);
        const SiteCounts three = {9000000, 4000000, 7000000, L};
        const BaseComposition f = {kUnequal, 0.34};
        tamura_nei_distance(three, f, a, pair);
        EXPECT_NEAR(pair.distance_var / numerical_variance(three, {0, 1, 2}, L,
                                                           [&](const SiteCounts& c) {
                                                               DnaPair p;
                                                               tamura_nei_distance(c, f, a, p);
                                                               return p.distance;
                                                           }),
                    1.0, 1e-5);
    }
}

TEST(DnaDistanceFormulas, VariancesOfTamuraAndOfTheRatiosFollowFromTheDeltaMethod) {
    constexpr int L = 100000000;
    const SiteCounts counts = {14000000, 6000000, L};
    const BaseComposition f = {kUnequal, 0.34};
    DnaPair pair;
    const auto tamura = [&](double DnaPair::*field) {
        return [&f, field](const SiteCounts& c) {
            DnaPair p;
            tamura_distance(c, f, p);
            return p.*field;
        };
    };
    tamura_distance(counts, f, pair);
    EXPECT_NEAR(pair.distance_var / numerical_variance(counts, {0, 1}, L, tamura(&DnaPair::distance)), 1.0,
                1e-5);
    EXPECT_NEAR(pair.ts_tv_ratio_var / numerical_variance(counts, {0, 1}, L, tamura(&DnaPair::ts_tv_ratio)),
                1.0, 1e-5);
    kimura_distance(counts, 0.0, pair);
    EXPECT_NEAR(pair.ts_tv_ratio_var / numerical_variance(counts, {0, 1}, L,
                                                          [](const SiteCounts& c) {
                                                              DnaPair p;
                                                              kimura_distance(c, 0.0, p);
                                                              return p.ts_tv_ratio;
                                                          }),
                1.0, 1e-5);
}

// ---- Worked by hand.

// p = 1/10, x = 1 - 4/30 = 13/15: d = -0.75 ln(13/15) = 0.75 * 0.143100843640673;
// var = 0.09 / (100 * (13/15)^2) = 0.09 / 75.1111... = 0.00119822485207101.
TEST(DnaDistanceFormulas, JukesCantorWorkedExample) {
    DnaPair pair;
    ASSERT_EQ(jukes_cantor_distance({10, 100}, 0.0, pair), DnaFault::kNone);
    EXPECT_NEAR(pair.distance, 0.107325632730505, 1e-14);
    EXPECT_NEAR(pair.distance_var, 0.00119822485207101, 1e-16);
}

// P = 1/10, Q = 1/20: w1 = 3/4, w2 = 9/10, d = 0.5 ln(4/3) + 0.25 ln(10/9)
// = 0.5 * 0.287682072451781 + 0.25 * 0.105360515657826 = 0.170181165140347.
// c1 = 4/3, c3 = (4/3 + 10/9)/2 = 11/9; var = (16/9/10 + 121/81/20 - (4/30 + 11/180)^2)/100
// = (0.1777777778 + 0.0746913580 - 0.0378086420)/100 = 0.00214660493827160.
TEST(DnaDistanceFormulas, KimuraWorkedExample) {
    DnaPair pair;
    ASSERT_EQ(kimura_distance({10, 5, 100}, 0.0, pair), DnaFault::kNone);
    EXPECT_NEAR(pair.distance, 0.170181165140347, 1e-14);
    EXPECT_NEAR(pair.distance_var, 0.00214660493827160, 1e-16);
    EXPECT_EQ(pair.ts_count, 10);
    EXPECT_EQ(pair.tv_count, 5);
    EXPECT_EQ(pair.site_count, 100);
    EXPECT_EQ(pair.ts_rate, 0.1);
    EXPECT_EQ(pair.tv_rate, 0.05);
}

// The same with a = 1: A = 10/9, B = 4/3, d = (4/3 + 5/9 - 3/2)/2 = 7/36;
// ratio (4/3 - 5/9 - 1/2)/(1/9) = 5/2.
TEST(DnaDistanceFormulas, KimuraWithGammaWorkedExample) {
    DnaPair pair;
    ASSERT_EQ(kimura_distance({10, 5, 100}, 1.0, pair), DnaFault::kNone);
    EXPECT_NEAR(pair.distance, 7.0 / 36.0, 1e-15);
    EXPECT_NEAR(pair.ts_tv_ratio, 2.5, 1e-12);
    EXPECT_EQ(pair.ts_tv_ratio_var, -1.0);
}

// Equal frequencies, 2 sites of each type of pair in 100: p = 0.12,
// c = 0.5 * 6 * 0.0004 * 16 = 0.0192, b = (0.0144/0.0192 + 0.75)/2 = 0.75: Jukes and Cantor,
// -0.75 ln(1 - 0.16) = 0.130765039... .
TEST(DnaDistanceFormulas, TajimaNeiWithEqualFrequenciesIsJukesCantor) {
    const SiteCounts counts = {2, 2, 2, 2, 2, 2, 100};
    DnaPair pair;
    ASSERT_EQ(tajima_nei_distance(counts, {}, {kEqual, 0.5}, pair), DnaFault::kNone);
    EXPECT_NEAR(pair.distance, -0.75 * std::log(0.84), 1e-14);
    EXPECT_NEAR(pair.distance_var, 0.12 * 0.88 / (0.84 * 0.84 * 100), 1e-16);
    for (std::size_t i = 1; i < 4; ++i) {
        for (std::size_t j = 0; j < i; ++j)
            EXPECT_EQ(pair.pair_counts[i][j], 0.02);
    }
}

// With equal frequencies and P1 = P2: kR = kY = 1/4, w1 = w2 = 1 - 2P - Q, w3 = 1 - 2Q: Kimura.
TEST(DnaDistanceFormulas, TamuraNeiWithEqualFrequenciesIsKimura) {
    for (const double a : {0.0, 0.7}) {
        DnaPair tamura_nei, kimura;
        ASSERT_EQ(tamura_nei_distance({20, 20, 30, 500}, {kEqual, 0.5}, a, tamura_nei), DnaFault::kNone);
        ASSERT_EQ(kimura_distance({40, 30, 500}, a, kimura), DnaFault::kNone);
        EXPECT_NEAR(tamura_nei.distance, kimura.distance, 1e-13);
        EXPECT_NEAR(tamura_nei.distance_var, kimura.distance_var, 1e-15);
        EXPECT_EQ(tamura_nei.tv_rate, 0.06);
        EXPECT_EQ(tamura_nei.diff_count, 70);
    }
}

// 3 transitions, 1 transversion, 1 deletion at weights 1, among 20 sites.
TEST(DnaDistanceFormulas, DifferencesAndTheirProportionWorkedExample) {
    mnd::WeightedSums sums;
    sums.compared = 20.0;
    sums.differences = 5.0;
    sums.transitions = 3.0;
    sums.transversions = 1.0;
    sums.deletions = 1.0;
    DnaPair pair;
    difference_distance(sums, pair);
    EXPECT_EQ(pair.distance, 5.0);
    EXPECT_EQ(pair.distance_var, 0.75 * 0.25 * 20.0);
    proportion_distance(sums, pair);
    EXPECT_EQ(pair.distance, 0.25);
    EXPECT_EQ(pair.distance_var, 0.25 * 0.75 / 20.0);
    // P = 0.15, Q = 0.05: R = 3; u = 20, v = -60, w = -3 + 3 = 0: (3600*0.05 + 400*0.15)/20 = 12.
    EXPECT_NEAR(pair.ts_tv_ratio, 3.0, 1e-14);
    EXPECT_NEAR(pair.ts_tv_ratio_var, 12.0, 1e-11);
}

TEST(DnaDistanceFormulas, NoTransversionsLeaveNoRatio) {
    mnd::WeightedSums sums;
    sums.compared = 10.0;
    sums.transitions = sums.differences = 2.0;
    DnaPair pair;
    proportion_distance(sums, pair);
    EXPECT_EQ(pair.ts_tv_ratio, -1.0);
    EXPECT_EQ(pair.ts_tv_ratio_var, -1.0);
    kimura_distance({2, 0, 10}, 0.0, pair);
    EXPECT_EQ(pair.ts_tv_ratio, -1.0);
    EXPECT_EQ(pair.ts_tv_ratio_var, -1.0);
    kimura_distance({2, 0, 10}, 0.5, pair);
    EXPECT_EQ(pair.ts_tv_ratio, -1.0);
    tamura_distance({2, 0, 10}, {kEqual, 0.5}, pair);
    EXPECT_EQ(pair.ts_tv_ratio, -1.0);
    EXPECT_EQ(pair.ts_tv_ratio_var, -1.0);
}

TEST(DnaDistanceFormulas, NothingComparedIsDistanceZero) {
    DnaPair pair;
    for (int method = 0; method <= 6; ++method) {
        pair.distance = pair.distance_var = 9.0;
        if (mnd::is_weighted_method(method)) {
            distance_from_sums(method, {}, pair);
        } else {
            ASSERT_EQ(distance_from_counts(method, {}, {}, {kEqual, 0.5}, 0.0, pair), DnaFault::kNone);
        }
        EXPECT_EQ(pair.distance, 0.0) << method;
        EXPECT_EQ(pair.distance_var, 0.0) << method;
    }
}

TEST(DnaDistanceFormulas, IdenticalSequencesHaveAZeroWithoutASign) {
    for (const int method : {1, 2, 4, 5, 6}) {
        SiteCounts counts{};
        counts[method == 1 ? 1 : method == 4 ? 6 : method == 6 ? 3 : 2] = 50;
        DnaPair pair;
        ASSERT_EQ(distance_from_counts(method, counts, {}, {kEqual, 0.5}, 0.0, pair), DnaFault::kNone);
        EXPECT_EQ(pair.distance, 0.0);
        EXPECT_FALSE(std::signbit(pair.distance)) << method;
        EXPECT_EQ(pair.distance_var, 0.0);
    }
}

// ---- Beyond the methods.

TEST(DnaDistanceFormulas, ThreeQuartersOfDifferencesAreTooMuchForJukesCantor) {
    DnaPair pair;
    EXPECT_EQ(jukes_cantor_distance({3, 4}, 0.0, pair), DnaFault::kJukesCantorDivergent);
    EXPECT_EQ(pair.distance, -0.75);
    EXPECT_EQ(jukes_cantor_distance({74, 100}, 0.0, pair), DnaFault::kNone);
    EXPECT_EQ(jukes_cantor_distance({75, 100}, 0.5, pair), DnaFault::kJukesCantorDivergent);
}

TEST(DnaDistanceFormulas, KimuraFailsAtZeroArgumentsOnly) {
    DnaPair pair;
    EXPECT_EQ(kimura_distance({2, 0, 4}, 0.0, pair), DnaFault::kKimuraDivergent);
    EXPECT_EQ(kimura_distance({0, 2, 4}, 0.0, pair), DnaFault::kKimuraDivergent);
    EXPECT_EQ(kimura_distance({3, 0, 4}, 0.0, pair), DnaFault::kNone);
    EXPECT_TRUE(std::isnan(pair.distance));
}

TEST(DnaDistanceFormulas, TajimaNeiNeedsEveryBase) {
    DnaPair pair;
    const SiteCounts counts = {1, 1, 1, 1, 1, 1, 50};
    for (std::size_t base = 0; base < 4; ++base) {
        mnd::BaseComposition without = {{0.3, 0.3, 0.3, 0.3}, 0.5};
        without.frequency[base] = 0.0;
        EXPECT_EQ(tajima_nei_distance(counts, {}, without, pair), DnaFault::kTajimaNeiNoNucleotide) << base;
    }
    // Without a difference the composition does not matter.
    EXPECT_EQ(tajima_nei_distance({0, 0, 0, 0, 0, 0, 50}, {}, {{1.0, 0.0, 0.0, 0.0}, 1.0}, pair),
              DnaFault::kNone);
}

TEST(DnaDistanceFormulas, TajimaNeiFailsForDivergentSequences) {
    DnaPair pair;
    pair.distance = pair.distance_var = 9.0;
    const SiteCounts counts = {15, 15, 15, 15, 15, 15, 100};
    EXPECT_EQ(tajima_nei_distance(counts, {}, {kEqual, 0.5}, pair), DnaFault::kTajimaNeiDivergent);
    EXPECT_EQ(pair.distance, 0.0);
    EXPECT_EQ(pair.distance_var, 0.0);
}

TEST(DnaDistanceFormulas, TajimaNeiCountsPairsOfClassesWithoutWeight) {
    const DnaWeights no_transitions = {0.0, 1.0, 1.0};
    const SiteCounts counts = {10, 1, 1, 1, 1, 10, 100};
    DnaPair pair;
    ASSERT_EQ(tajima_nei_distance(counts, no_transitions, {kEqual, 0.5}, pair), DnaFault::kNone);
    // c = 8 * (2 * 0.01 + 4 * 0.0001) = 0.1632, p = 0.04, b = (0.0016/0.1632 + 0.75)/2.
    const double b = (0.0016 / 0.1632 + 0.75) / 2.0;
    EXPECT_NEAR(pair.distance, -b * std::log(1.0 - 0.04 / b), 1e-14);
    EXPECT_EQ(pair.pair_counts[1][0], 0.1);
}

TEST(DnaDistanceFormulas, TamuraFailsForUnbalancedOrDivergentSequences) {
    DnaPair pair;
    EXPECT_EQ(tamura_distance({1, 1, 10}, {kEqual, 0.0}, pair), DnaFault::kTamuraUnbalanced);
    EXPECT_EQ(tamura_distance({1, 1, 10}, {kEqual, 1.0}, pair), DnaFault::kTamuraUnbalanced);
    EXPECT_EQ(tamura_distance({5, 0, 10}, {kEqual, 0.5}, pair), DnaFault::kTamuraUnbalanced);
    EXPECT_EQ(tamura_distance({0, 5, 10}, {kEqual, 0.5}, pair), DnaFault::kTamuraUnbalanced);
}

TEST(DnaDistanceFormulas, TamuraNeiFailsForUnbalancedOrDivergentSequences) {
    DnaPair pair;
    pair.distance = pair.distance_var = 9.0;
    EXPECT_EQ(tamura_nei_distance({1, 1, 1, 10}, {{0.5, 0.25, 0.25, 0.0}, 0.5}, 0.0, pair),
              DnaFault::kTamuraNeiUnbalanced);
    EXPECT_EQ(pair.distance, 0.0);
    EXPECT_EQ(pair.distance_var, 0.0);
    pair.distance = pair.distance_var = 9.0;
    EXPECT_EQ(tamura_nei_distance({5, 5, 0, 10}, {kEqual, 0.5}, 0.0, pair), DnaFault::kTamuraNeiUnbalanced);
    EXPECT_EQ(pair.distance, 0.0);
    EXPECT_EQ(pair.distance_var, 0.0);
}

TEST(DnaDistanceFormulas, TamuraNeiWithGammaFailsOutsideSinglePrecision) {
    DnaPair pair;
    pair.distance = pair.distance_var = 9.0;
    // A negative argument to the power of -2 is no number.
    EXPECT_EQ(tamura_nei_distance({6, 3, 0, 10}, {kEqual, 0.5}, 0.3, pair), DnaFault::kTamuraNeiOutOfRange);
    EXPECT_EQ(pair.distance, 0.0);
    EXPECT_EQ(pair.distance_var, 0.0);
}

// ---- What is reported.

TEST(DnaDistanceFormulas, FaultsReportTheirMessages) {
    using mnd_test::Report;
    const struct {
        DnaFault fault;
        std::vector<Report> reports;
    } cases[] = {
        {DnaFault::kNone, {}},
        {DnaFault::kJukesCantorDivergent, {{mnd::Warning, "PopulDNA::jk_dist()", 162}}},
        {DnaFault::kKimuraDivergent, {{mnd::Warning, "PopulDNA::kim2p_dist()", 163}}},
        {DnaFault::kTajimaNeiNoNucleotide, {{mnd::Error, "PopulDNA::tajnei_dist(s1, s2)", 164}}},
        {DnaFault::kTajimaNeiDivergent, {{mnd::Warning, "PopulDNA::tajnei_dist(s1, s2)", 165}}},
        {DnaFault::kTamuraUnbalanced, {{mnd::Error, "PopulDNA::tamura_dist(s1, s2)", 171}}},
        {DnaFault::kTamuraLogOfZero, {{mnd::Error, "PopulDNA::tamura_dist(s1, s2)", 175}}},
        {DnaFault::kTamuraNeiUnbalanced, {{mnd::Warning, "PopulDNA::tamnei_dist(s1,s2)", 176}}},
        {DnaFault::kTamuraNeiOutOfRange,
         {{mnd::Warning, "PopulDNA::tamnei_dist(s1,s2)", 176},
          {mnd::Warning, "PopulDNA::tamnei_dist(s1,s2)", 136}}},
    };
    for (const auto& c : cases) {
        const mnd_test::CapturedReports captured;
        report_dna_fault(c.fault);
        EXPECT_EQ(captured.all(), c.reports);
    }
}

TEST(DnaDistanceFormulas, MethodsHaveNamesAndColumnLabels) {
    const char* names[] = {
        "Pairwise difference", "Jukes and Cantor", "Kimura 2P",      "Proportion of difference",
        "Tajima and Nei",      "Tamura",           "Tamura and Nei", "DIFF"};
    const char* labels[] = {"#Diff", "JC", "K2P", "%Diff", "TajNei", "Tam", "TamNei", "#Diff"};
    for (int method = 0; method <= 7; ++method) {
        EXPECT_STREQ(mnd::dna_distance_name(method), names[method]);
        EXPECT_STREQ(mnd::dna_distance_label(method), labels[method]);
    }
    EXPECT_STREQ(mnd::dna_distance_name(-1), "DIFF");
}

}  // namespace
