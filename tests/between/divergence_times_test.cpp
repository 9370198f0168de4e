#include "between/divergence_times.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>

#include "support/seeded_stream.h"

namespace mnd {
namespace {

struct Divergence {
    double theta, k, tau;
};

// The three expected differences, straight from the model: two copies of a sample of the relative
// size k differ by theta k when they meet before the split, at the rate 1 / (theta k), and by
// theta more when they do not.
struct Expected {
    double pi_X, pi_Y, pi_XY;
};
Expected expected_differences(const Divergence& d) {
    const double not_met_X = std::exp(-d.tau / (d.theta * d.k));
    const double not_met_Y = std::exp(-d.tau / (d.theta * (1.0 - d.k)));
    return {d.theta * (d.k + (1.0 - d.k) * not_met_X), d.theta * ((1.0 - d.k) + d.k * not_met_Y),
            d.theta + d.tau};
}

using TSolveDivTimesStream = mnd_test::SeededStream;

TEST(DivergenceEquations, AreZeroAtTheRoot) {
    const Divergence d = {4.0, 0.3, 2.0};
    const Expected pi = expected_differences(d);
    const long double x[7] = {0.0L, d.theta, d.k, d.tau, pi.pi_X, pi.pi_Y, pi.pi_XY};
    LongVector f = my_vector(3);
    divergence_equations(3, x, f.data());
    for (std::size_t i = 1; i <= 3; ++i)
        EXPECT_NEAR(static_cast<double>(f[i]), 0.0, 1e-14);
}

TEST(DivergenceEquations, ExponentialsAreBounded) {
    LongVector f = my_vector(3);
    // a = -tau / (theta k) = 400, b = -400: e(a) = 1e50, e(b) = 1e-50.
    const long double x[7] = {0.0L, 1.0L, 0.5L, -200.0L, 0.0L, 0.0L, 0.0L};
    divergence_equations(3, x, f.data());
    EXPECT_EQ(f[1], 0.5L + 0.5L * 1e50L);
    EXPECT_EQ(f[2], 0.5L + 0.5L * 1e50L);
    const long double y[7] = {0.0L, 1.0L, 0.5L, 200.0L, 0.0L, 0.0L, 0.0L};
    divergence_equations(3, y, f.data());
    EXPECT_EQ(f[1], 0.5L + 0.5L * 1e-50L);
    // A denominator of 0 stands for an exponent of -400.
    const long double z[7] = {0.0L, 1.0L, 0.0L, 5.0L, 0.0L, 0.0L, 0.0L};
    divergence_equations(3, z, f.data());
    EXPECT_EQ(f[1], 1e-50L);
    EXPECT_EQ(f[2], 1.0L);
    EXPECT_EQ(f[3], 6.0L);
}

// An exponent of 300 is the last that counts, of either sign.
TEST(DivergenceEquations, ExponentialsAreExactUpToTheirBounds) {
    LongVector f = my_vector(3);
    for (const double z : {-299.0, -300.0, 299.0, 300.0}) {
        const long double x[7] = {0.0L, 1.0L, 0.5L, -0.5L * z, 0.0L, 0.0L, 0.0L};
        divergence_equations(3, x, f.data());
        EXPECT_EQ(f[1], 0.5L + 0.5L * static_cast<long double>(std::exp(z))) << z;
    }
    for (const auto& [z, bound] : {std::pair{-301.0, 1e-50L}, {301.0, 1e50L}}) {
        const long double x[7] = {0.0L, 1.0L, 0.5L, -0.5L * z, 0.0L, 0.0L, 0.0L};
        divergence_equations(3, x, f.data());
        EXPECT_EQ(f[1], 0.5L + 0.5L * bound) << z;
    }
}

// Central differences of the equations.
TEST(MyJacobian2, AgreesWithDifferences) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> draw(0.05, 0.95);
    for (int i = 0; i < 200; ++i) {
        const Divergence d = {5.0 * draw(random), draw(random), 3.0 * draw(random)};
        long double x[7] = {0.0L, d.theta, d.k, d.tau, 1.0L, 1.0L, 1.0L};
        LongMatrix df = my_matrix(3);
        my_jacobian2(3, x, df);
        for (std::size_t j = 1; j <= 3; ++j) {
            const long double kept = x[j];
            const long double h = 1e-6L;
            LongVector above = my_vector(3);
            LongVector below = my_vector(3);
            x[j] = kept + h;
            divergence_equations(3, x, above.data());
            x[j] = kept - h;
            divergence_equations(3, x, below.data());
            x[j] = kept;
            for (std::size_t row = 1; row <= 3; ++row) {
                const double slope = static_cast<double>((above[row] - below[row]) / (2.0L * h));
                EXPECT_NEAR(static_cast<double>(df[row][j]), slope, 1e-5 * (1.0 + std::fabs(slope)));
            }
        }
    }
}

TEST(MyJacobian2, HasBoundsOfItsOwn) {
    LongMatrix df = my_matrix(3);
    const long double far[7] = {0.0L, 1.0L, 0.5L, 200.0L, 0.0L, 0.0L, 0.0L};
    my_jacobian2(3, far, df);
    // -(1 - k) / k e(a)
    EXPECT_EQ(df[1][3], -1.1754943508222876e-39L);
    const long double before[7] = {0.0L, 1.0L, 0.5L, -200.0L, 0.0L, 0.0L, 0.0L};
    my_jacobian2(3, before, df);
    EXPECT_EQ(df[1][3], -3.4028234663852886e+39L);
}

TEST(MyJacobian2, IsFiniteWhereADenominatorVanishes) {
    for (const long double k : {0.0L, 1.0L}) {
        const long double x[7] = {0.0L, 2.0L, k, 1.0L, 0.0L, 0.0L, 0.0L};
        LongMatrix df = my_matrix(3);
        my_jacobian2(3, x, df);
        for (std::size_t i = 1; i <= 3; ++i) {
            for (std::size_t j = 1; j <= 3; ++j)
                EXPECT_TRUE(std::isfinite(df[i][j])) << i << j;
        }
    }
}

TEST_F(TSolveDivTimesStream, FindsTheDivergenceThatMadeTheDifferences) {
    std::mt19937 random(2);
    std::uniform_real_distribution<double> draw(0.0, 1.0);
    for (int i = 0; i < 500; ++i) {
        const Divergence d = {0.5 + 20.0 * draw(random), 0.05 + 0.9 * draw(random), 0.0};
        const double tau = 3.0 * d.theta * draw(random);
        const Expected pi = expected_differences({d.theta, d.k, tau});
        TSolveDivTimes solver(pi.pi_X, pi.pi_Y, pi.pi_XY);
        ASSERT_EQ(solver.solve(50), 0) << i;
        // Residuals below 1e-4 of the largest difference.
        const Expected found =
            expected_differences({static_cast<double>(solver.theta), static_cast<double>(solver.k),
                                  static_cast<double>(solver.tau)});
        EXPECT_NEAR(found.pi_X, pi.pi_X, 1e-4 * pi.pi_XY);
        EXPECT_NEAR(found.pi_Y, pi.pi_Y, 1e-4 * pi.pi_XY);
        EXPECT_NEAR(found.pi_XY, pi.pi_XY, 1e-4 * pi.pi_XY);
    }
}

// Samples of one size: pi_X = pi_Y puts k at 1/2, and with p = exp(-2 tau / theta)
// theta (1 + p) / 2 = pi_X.
TEST_F(TSolveDivTimesStream, EqualSizesAreHalves) {
    const Expected pi = expected_differences({2.0, 0.5, 1.0});
    EXPECT_NEAR(pi.pi_X, 1.0 + std::exp(-1.0), 1e-15);
    TSolveDivTimes solver(pi.pi_X, pi.pi_Y, pi.pi_XY);
    EXPECT_EQ(solver.solve(50), 0);
    EXPECT_NEAR(static_cast<double>(solver.k), 0.5, 1e-3);
    EXPECT_NEAR(static_cast<double>(solver.theta), 2.0, 2e-3);
    EXPECT_NEAR(static_cast<double>(solver.tau), 1.0, 2e-3);
    EXPECT_EQ(solver.pi_X, static_cast<long double>(pi.pi_X));
}

// The first attempt starts from the data alone.
TEST_F(TSolveDivTimesStream, AnEasyStartDrawsNothing) {
    const Expected pi = expected_differences({2.0, 0.4, 1.0});
    TSolveDivTimes solver(pi.pi_X, pi.pi_Y, pi.pi_XY);
    seed();
    EXPECT_EQ(solver.solve(50), 0);
    const double drawn = next();
    seed();
    EXPECT_EQ(drawn, next());
}

// The differences between are smaller than within: no model of a split does that with a theta that
// is not negative, so all attempts are made.
TEST_F(TSolveDivTimesStream, FailedAttemptsDrawThreeNumbersEach) {
    TSolveDivTimes solver(1.0L, 1.0L, -5.0L);
    seed();
    EXPECT_NE(solver.solve(7), 0);
    EXPECT_EQ(solver.max_restarts, 7);
    const double drawn = next();
    seed();
    for (int i = 0; i < 3 * 6; ++i)
        next();
    EXPECT_EQ(drawn, next());
}

TEST_F(TSolveDivTimesStream, NoAttemptIsAFailure) {
    TSolveDivTimes solver(1.0L, 1.0L, 2.0L);
    EXPECT_EQ(solver.max_restarts, 20);
    EXPECT_NE(solver.solve(0), 0);
}

TEST_F(TSolveDivTimesStream, ScalesAreFree) {
    const Expected pi = expected_differences({3.0, 0.25, 2.0});
    TSolveDivTimes one(pi.pi_X, pi.pi_Y, pi.pi_XY);
    ASSERT_EQ(one.solve(50), 0);
    TSolveDivTimes large(1e6L * pi.pi_X, 1e6L * pi.pi_Y, 1e6L * pi.pi_XY);
    ASSERT_EQ(large.solve(50), 0);
    EXPECT_NEAR(static_cast<double>(large.theta), 1e6 * static_cast<double>(one.theta), 1e-3);
    EXPECT_NEAR(static_cast<double>(large.tau), 1e6 * static_cast<double>(one.tau), 1e-3);
    EXPECT_NEAR(static_cast<double>(large.k), static_cast<double>(one.k), 1e-9);
}

TEST_F(TSolveDivTimesStream, AnObjectServesForOtherTargets) {
    const Expected first = expected_differences({3.0, 0.25, 2.0});
    const Expected second = expected_differences({5.0, 0.6, 1.0});
    TSolveDivTimes reused(first.pi_X, first.pi_Y, first.pi_XY);
    reused.solve(50);
    reused.set_targets(second.pi_X, second.pi_Y, second.pi_XY);
    TSolveDivTimes fresh(second.pi_X, second.pi_Y, second.pi_XY);
    EXPECT_EQ(reused.solve(50), fresh.solve(50));
    EXPECT_EQ(reused.theta, fresh.theta);
    EXPECT_EQ(reused.tau, fresh.tau);
    EXPECT_EQ(reused.k, fresh.k);
}

TEST_F(TSolveDivTimesStream, NewTargetsForgetTheResults) {
    TSolveDivTimes solver(1.0L, 1.5L, 3.0L);
    ASSERT_EQ(solver.solve(50), 0);
    solver.set_targets(1.0L, 1.0L, 2.0L);
    EXPECT_EQ(solver.theta, 0.0L);
    EXPECT_EQ(solver.k, 0.0L);
    EXPECT_EQ(solver.tau, 0.0L);
}

// The start is the root: an ancestral size of 0 and halves of it.
TEST_F(TSolveDivTimesStream, WithoutDifferencesWithinTheSizesAreHalves) {
    for (const long double between : {0.0L, 4.0L}) {
        TSolveDivTimes solver(0.0L, 0.0L, between);
        EXPECT_EQ(solver.solve(50), 0);
        EXPECT_EQ(solver.theta, 0.0L);
        EXPECT_EQ(solver.k, 0.5L);
        EXPECT_EQ(solver.tau, between);
    }
}

// The attempts one by one, with starts worked out here: theta is the mean of the differences
// within, tau what those between have more, k the share of the first; from the second attempt on
// each of the three, in this order, times 0.01 to 2.01.
TEST_F(TSolveDivTimesStream, AttemptsStartFromTheDataAndThenScatter) {
    int later = 0;
    for (const long double pi_X : {1e-6L, 0.01L, 0.5L, 7.3L}) {
        for (const long double pi_Y : {1e-6L, 0.5L, 1.0L, 400.0L}) {
            for (const long double pi_XY : {0.01L, 0.5L, 7.3L, 400.0L}) {
                seed();
                TSolveDivTimes solver(pi_X, pi_Y, pi_XY);
                const int failed = solver.solve(9);
                const double left = next();
                seed();
                bool solved = false;
                long double theta = 0.0L, k = 0.0L, tau = 0.0L;
                long double t[3] = {pi_X, pi_Y, pi_XY};
                for (int attempt = 0; attempt < 9 && !solved; ++attempt) {
                    const long double M = std::max({t[0], t[1], t[2]});
                    for (long double& target : t)
                        target /= M;
                    const long double mean = (t[0] + t[1]) / 2.0L;
                    long double x[7] = {0.0L, mean, t[0] / (t[0] + t[1]), t[2] - mean, t[0], t[1], t[2]};
                    if (attempt > 0) {
                        for (const int unknown : {1, 3, 2})
                            x[unknown] *= (200.0L * static_cast<long double>(next()) + 1.0L) / 100.0L;
                    }
                    TBroyden plain(3, x, divergence_equations, my_jacobian2);
                    int check = 1;
                    plain.broydn(x, 3, &check);
                    for (long double& target : t)
                        target *= M;
                    theta = x[1] * M;
                    k = x[2];
                    tau = x[3] * M;
                    solved = check == 0 && theta >= 0.0L;
                    if (solved && attempt > 0) ++later;
                }
                ASSERT_EQ(failed == 0, solved);
                EXPECT_EQ(next(), left);
                if (!solved) continue;
                EXPECT_EQ(solver.theta, theta);
                EXPECT_EQ(solver.k, k);
                EXPECT_EQ(solver.tau, tau);
            }
        }
    }
    EXPECT_GT(later, 0);
}

// Differences within that nearly vanish, sizes that differ widely, hardly any divergence: whatever
// is called a root must be one.
TEST_F(TSolveDivTimesStream, HardStartsAreRootsOrMarkedAsFailures) {
    const double values[] = {1e-6, 0.01, 0.5, 1.0, 7.3, 400.0};
    for (const double x : values) {
        for (const double y : values) {
            for (const double z : values) {
                TSolveDivTimes solver(x, y, z);
                if (solver.solve(50) != 0) continue;
                EXPECT_GE(static_cast<double>(solver.theta), 0.0);
                EXPECT_NEAR(static_cast<double>(solver.theta + solver.tau), z,
                            1e-4 * std::max({x, y, z}) * 1.0001)
                    << x << ' ' << y << ' ' << z;
            }
        }
    }
}

}  // namespace
}  // namespace mnd
