#include "foundation/broyden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>

#include "foundation/message_codes.h"

namespace mnd {
namespace {

// Two equations with the roots (1, 1) and (-1, -1):  x y = 1,  x^2 - y^2 = 0.
void hyperbola(int, const long double* x, long double* f) {
    f[1] = x[1] * x[2] - 1.0L;
    f[2] = x[1] * x[1] - x[2] * x[2];
}
void hyperbola_derivatives(int, const long double* x, LongMatrix& df) {
    df[1][1] = x[2];
    df[1][2] = x[1];
    df[2][1] = 2.0L * x[1];
    df[2][2] = -2.0L * x[2];
}

// The valley of Rosenbrock 1960 as two equations; root (1, 1).
void rosenbrock(int, const long double* x, long double* f) {
    f[1] = 10.0L * (x[2] - x[1] * x[1]);
    f[2] = 1.0L - x[1];
}

// The singular function of Powell 1962: root 0, where the Jacobian is singular.
void powell_singular(int, const long double* x, long double* f) {
    f[1] = x[1] + 10.0L * x[2];
    f[2] = std::sqrt(5.0L) * (x[3] - x[4]);
    f[3] = (x[2] - 2.0L * x[3]) * (x[2] - 2.0L * x[3]);
    f[4] = std::sqrt(10.0L) * (x[1] - x[4]) * (x[1] - x[4]);
}

// The helical valley of Fletcher and Powell 1963; root (1, 0, 0).
void helical_valley(int, const long double* x, long double* f) {
    const long double two_pi = 6.283185307179586476925L;
    long double angle = std::atan(x[2] / x[1]) / two_pi;
    if (x[1] < 0.0L) angle += 0.5L;
    f[1] = 10.0L * (x[3] - 10.0L * angle);
    f[2] = 10.0L * (std::sqrt(x[1] * x[1] + x[2] * x[2]) - 1.0L);
    f[3] = x[3];
}

// The tridiagonal system of Broyden 1965.
void broyden_tridiagonal(int n, const long double* x, long double* f) {
    for (int i = 1; i <= n; ++i) {
        f[i] = (3.0L - 2.0L * x[i]) * x[i] + 1.0L;
        if (i > 1) f[i] -= x[i - 1];
        if (i < n) f[i] -= 2.0L * x[i + 1];
    }
}

double largest(const LongVector& v) {
    long double most = 0.0L;
    for (std::size_t i = 1; i < v.size(); ++i)
        most = std::max(most, std::fabs(v[i]));
    return static_cast<double>(most);
}

TEST(TBroyden, FindsTheRootWithAnAnalyticJacobian) {
    LongVector x = {0.0L, 3.0L, 0.5L};
    TBroyden solver(2, x.data(), hyperbola, hyperbola_derivatives);
    EXPECT_EQ(solver.analytic_jacobian, 1);
    int check = 7;
    solver.broydn(x.data(), 2, &check);
    EXPECT_EQ(check, 0);
    EXPECT_EQ(solver.converged, 1);
    EXPECT_EQ(solver.failure, TBroyden::kNoFailure);
    EXPECT_NEAR(static_cast<double>(x[1]), 1.0, 1e-3);
    EXPECT_NEAR(static_cast<double>(x[2]), 1.0, 1e-3);
    EXPECT_LT(largest(solver.fvec), 1e-4);
}

TEST(TBroyden, FindsTheRootWithDifferences) {
    LongVector x = {0.0L, -2.0L, -0.3L};
    TBroyden solver(2, x.data(), hyperbola);
    EXPECT_EQ(solver.analytic_jacobian, 0);
    EXPECT_EQ(solver.jacobian, nullptr);
    int check = 7;
    solver.broydn(x.data(), 2, &check);
    EXPECT_EQ(check, 0);
    EXPECT_NEAR(static_cast<double>(x[1]), -1.0, 1e-3);
    EXPECT_NEAR(static_cast<double>(x[2]), -1.0, 1e-3);
}

TEST(TBroyden, FollowsTheCurvedValleyFromItsHardStart) {
    LongVector x = {0.0L, -1.2L, 1.0L};
    TBroyden solver(2, x.data(), rosenbrock);
    int check = 7;
    solver.broydn(x.data(), 2, &check);
    EXPECT_EQ(check, 0);
    EXPECT_NEAR(static_cast<double>(x[1]), 1.0, 1e-3);
    EXPECT_NEAR(static_cast<double>(x[2]), 1.0, 1e-3);
}

TEST(TBroyden, FindsTheRootOfTheHelicalValley) {
    LongVector x = {0.0L, -1.0L, 0.0L, 0.0L};
    TBroyden solver(3, x.data(), helical_valley);
    int check = 7;
    solver.broydn(x.data(), 3, &check);
    EXPECT_EQ(check, 0);
    EXPECT_NEAR(static_cast<double>(x[1]), 1.0, 1e-3);
    EXPECT_NEAR(static_cast<double>(x[2]), 0.0, 1e-3);
    EXPECT_NEAR(static_cast<double>(x[3]), 0.0, 1e-3);
}

TEST(TBroyden, ComesCloseToARootWithASingularJacobian) {
    LongVector x = {0.0L, 3.0L, -1.0L, 0.0L, 1.0L};
    TBroyden solver(4, x.data(), powell_singular);
    int check = 7;
    solver.broydn(x.data(), 4, &check);
    EXPECT_EQ(check, 0);
    EXPECT_LT(largest(solver.fvec), 1e-4);
}

TEST(TBroyden, SolvesLargeBandedSystems) {
    LongVector x(101, -1.0L);
    TBroyden solver(100, x.data(), broyden_tridiagonal);
    int check = 7;
    solver.broydn(x.data(), 100, &check);
    EXPECT_EQ(check, 0);
    EXPECT_LT(largest(solver.fvec), 1e-4);
    // In the middle of a long band all unknowns are alike: (3 - 2x) x + 1 = 3x, x = -1/sqrt(2).
    EXPECT_NEAR(static_cast<double>(x[50]), -std::sqrt(0.5), 1e-3);
}

TEST(TBroyden, ARootToBeginWithIsLeftAlone) {
    LongVector x = {0.0L, 1.0L, 1.0L};
    TBroyden solver(2, x.data(), hyperbola);
    int check = 7;
    solver.broydn(x.data(), 2, &check);
    EXPECT_EQ(check, 0);
    EXPECT_EQ(x[1], 1.0L);
    EXPECT_EQ(x[2], 1.0L);
}

// Residuals below 1e-6 count as a root at the start, later ones below 1e-4.
TEST(TBroyden, TheFirstTestIsTheStrictest) {
    const auto line = [](int, const long double* x, long double* f) { f[1] = x[1]; };
    LongVector x = {0.0L, 0.9e-6L};
    TBroyden solver(1, x.data(), line);
    int check = 7;
    solver.broydn(x.data(), 1, &check);
    EXPECT_EQ(x[1], 0.9e-6L);
    x[1] = 1.1e-6L;
    solver.broydn(x.data(), 1, &check);
    EXPECT_EQ(check, 0);
    EXPECT_LT(std::fabs(x[1]), 1e-9L);
}

TEST(TBroyden, AnotherDimensionMakesNewStorage) {
    LongVector x = {0.0L, 3.0L, 0.5L};
    TBroyden solver(2, x.data(), broyden_tridiagonal);
    LongVector wide(8, -1.0L);
    int check = 7;
    solver.broydn(wide.data(), 7, &check);
    EXPECT_EQ(check, 0);
    EXPECT_EQ(solver.n, 7);
    EXPECT_EQ(solver.x, wide.data());
}

TEST(TBroyden, RunsAgainAfterClean) {
    LongVector x = {0.0L, 3.0L, 0.5L};
    TBroyden solver(2, x.data(), hyperbola);
    solver.clean();
    solver.clean();
    int check = 7;
    solver.broydn(x.data(), 2, &check);
    EXPECT_EQ(check, 0);
}

// --- What stops it

TEST(TBroyden, ASingularJacobianAtTheStartStopsIt) {
    const auto parallel = [](int, const long double* x, long double* f) {
        f[1] = x[1] + x[2] - 1.0L;
        f[2] = x[1] + x[2] - 2.0L;
    };
    const auto derivatives = [](int, const long double*, LongMatrix& df) {
        df[1][1] = df[1][2] = df[2][1] = df[2][2] = 0.0L;
    };
    LongVector x = {0.0L, 5.0L, 6.0L};
    TBroyden solver(2, x.data(), parallel, derivatives);
    int check = 7;
    solver.broydn(x.data(), 2, &check);
    EXPECT_EQ(check, 1);
    EXPECT_EQ(solver.converged, 0);
    EXPECT_EQ(solver.failure, kSingularJacobian);
    EXPECT_EQ(x[1], 5.0L);
    EXPECT_EQ(x[2], 6.0L);
}

// The Jacobian told at the start is {{1, 128}, {0, 1}}; the full step goes to (1, 0), where the
// residuals are (0, 1/128). The factors that also explain these are those of the singular matrix
// {{1, 128}, {1/128, 1}}; all numbers are powers of 2, so that it is exactly so.
TEST(TBroyden, FactorsThatBecomeSingularStopIt) {
    const auto system = [](int, const long double* x, long double* f) {
        f[1] = x[1] - 1.0L;
        f[2] = x[1] / 128.0L;
    };
    const auto derivatives = [](int, const long double*, LongMatrix& df) {
        df[1][1] = df[2][2] = 1.0L;
        df[1][2] = 128.0L;
        df[2][1] = 0.0L;
    };
    LongVector x = {0.0L, 0.0L, 0.0L};
    TBroyden solver(2, x.data(), system, derivatives);
    int check = 7;
    solver.broydn(x.data(), 2, &check);
    EXPECT_EQ(check, 1);
    EXPECT_EQ(solver.failure, kSingularRInBroyden);
    EXPECT_EQ(x[1], 1.0L);
    EXPECT_EQ(x[2], 0.0L);
}

// Derivatives that are no numbers give a slope that is none.
TEST(TBroyden, ADirectionThatDoesNotLeadDownStopsIt) {
    const auto line = [](int, const long double* x, long double* f) {
        f[1] = std::numeric_limits<long double>::quiet_NaN();
        if (x[1] == 3.0L) f[1] = 1.0L;
    };
    const auto derivatives = [](int, const long double*, LongMatrix& df) {
        df[1][1] = std::numeric_limits<long double>::quiet_NaN();
    };
    LongVector x = {0.0L, 3.0L};
    TBroyden solver(1, x.data(), line, derivatives);
    int check = 7;
    solver.broydn(x.data(), 1, &check);
    EXPECT_EQ(check, 1);
    EXPECT_EQ(solver.failure, kRoundoffProblemInLineSearch);
    EXPECT_EQ(x[1], 3.0L);
}

// x^2 + 1 has no real root: the search ends in the minimum at 0.
TEST(TBroyden, AMinimumThatIsNoRootIsNoSuccess) {
    const auto above = [](int, const long double* x, long double* f) { f[1] = x[1] * x[1] + 1.0L; };
    for (const long double start : {0.7L, 3.0L, -20.0L}) {
        LongVector x = {0.0L, start};
        TBroyden solver(1, x.data(), above);
        int check = 7;
        solver.broydn(x.data(), 1, &check);
        EXPECT_EQ(check, 1) << static_cast<double>(start);
        EXPECT_EQ(solver.converged, 0);
    }
}

// The root is further away than all steps together may go.
TEST(TBroyden, TooManyStepsStopIt) {
    const auto line = [](int, const long double* x, long double* f) { f[1] = x[1] - 1e9L; };
    const auto derivatives = [](int, const long double*, LongMatrix& df) { df[1][1] = 1.0L; };
    LongVector x = {0.0L, 1.0L};
    TBroyden solver(1, x.data(), line, derivatives);
    int check = 7;
    solver.broydn(x.data(), 1, &check);
    // 200 steps of at most 100 reach 20001.
    EXPECT_EQ(check, 1);
    EXPECT_EQ(solver.failure, kEquationSolvingDidNotConverge);
    EXPECT_NEAR(static_cast<double>(x[1]), 1.0 + 200 * 100.0, 1e-6);
}

TEST(TBroyden, ResidualsThatAreNoNumbersAreNoRoot) {
    const auto none = [](int, const long double*, long double* f) {
        f[1] = std::numeric_limits<long double>::quiet_NaN();
    };
    LongVector x = {0.0L, 1.0L};
    TBroyden solver(1, x.data(), none);
    int check = 7;
    solver.broydn(x.data(), 1, &check);
    EXPECT_EQ(check, 1);
}

// A function that is defined on one side only makes the line search turn back.
TEST(TBroyden, StepsBackFromWhereTheSystemIsNotDefined) {
    const auto logarithm = [](int, const long double* x, long double* f) { f[1] = std::log(x[1]); };
    LongVector x = {0.0L, 8.0L};
    TBroyden solver(1, x.data(), logarithm);
    int check = 7;
    solver.broydn(x.data(), 1, &check);
    EXPECT_EQ(check, 0);
    EXPECT_NEAR(static_cast<double>(x[1]), 1.0, 1e-3);
}

// --- The parts

TEST(TBroyden, FminIsHalfTheSumOfSquares) {
    LongVector x = {0.0L, 2.0L, 3.0L};
    TBroyden solver(2, x.data(), hyperbola);
    // Residuals 5 and -5.
    EXPECT_EQ(solver.fmin(x.data()), 25.0L);
    EXPECT_EQ(solver.fvec[1], 5.0L);
    EXPECT_EQ(solver.fvec[2], -5.0L);
}

TEST(TBroyden, DifferencesComeCloseToTheDerivatives) {
    LongVector x = {0.0L, 2.0L, 0.0L};
    TBroyden solver(2, x.data(), hyperbola);
    solver.fmin(x.data());
    LongMatrix df = my_matrix(2);
    solver.approx_fdjac(df);
    LongMatrix exact = my_matrix(2);
    hyperbola_derivatives(2, x.data(), exact);
    for (std::size_t i = 1; i <= 2; ++i) {
        for (std::size_t j = 1; j <= 2; ++j)
            EXPECT_NEAR(static_cast<double>(df[i][j]), static_cast<double>(exact[i][j]), 3e-4);
    }
    // Of x^2 by forward differences of 1e-4 |x|: 2x + 1e-4 |x|.
    EXPECT_NEAR(static_cast<double>(df[2][1]), 4.0002, 1e-9);
    // At 0 the step is 1e-4 itself: -(1e-4)^2 / 1e-4.
    EXPECT_NEAR(static_cast<double>(df[2][2]), -1e-4, 1e-12);
    EXPECT_EQ(x[1], 2.0L);
    EXPECT_EQ(x[2], 0.0L);
}

TEST(TBroyden, LineSearchTakesTheFullStepWhenItIsGood) {
    const auto line = [](int, const long double* x, long double* f) { f[1] = x[1]; };
    LongVector x = {0.0L, 4.0L};
    TBroyden solver(1, x.data(), line);
    const LongVector xold = x;
    LongVector p = {0.0L, -4.0L};
    long double f = 0.0L;
    int check = 7;
    EXPECT_TRUE(solver.lnsrch(xold, 8.0L, {0.0L, 4.0L}, p, &f, 100.0L, &check));
    EXPECT_EQ(check, 0);
    EXPECT_EQ(x[1], 0.0L);
    EXPECT_EQ(f, 0.0L);
}

TEST(TBroyden, LineSearchShortensALongStep) {
    const auto line = [](int, const long double* x, long double* f) { f[1] = x[1]; };
    LongVector x = {0.0L, 400.0L};
    TBroyden solver(1, x.data(), line);
    const LongVector xold = x;
    LongVector p = {0.0L, -400.0L};
    long double f = 0.0L;
    int check = 7;
    EXPECT_TRUE(solver.lnsrch(xold, 80000.0L, {0.0L, 400.0L}, p, &f, 100.0L, &check));
    EXPECT_EQ(x[1], 300.0L);
    EXPECT_EQ(p[1], -100.0L);
}

// fmin = x^2 / 2 along p = -6 from x = 2: the parabola through f(2) = 2 with the slope -12 and
// f(-4) = 8 has its minimum at 12 / (2 (8 - 2 + 12)) = 1/3 of the step: x = 0.
TEST(TBroyden, LineSearchTurnsBackToTheMinimumOfTheParabola) {
    const auto line = [](int, const long double* x, long double* f) { f[1] = x[1]; };
    LongVector x = {0.0L, 2.0L};
    TBroyden solver(1, x.data(), line);
    const LongVector xold = x;
    LongVector p = {0.0L, -6.0L};
    long double f = 0.0L;
    int check = 7;
    EXPECT_TRUE(solver.lnsrch(xold, 2.0L, {0.0L, 2.0L}, p, &f, 100.0L, &check));
    EXPECT_EQ(check, 0);
    EXPECT_NEAR(static_cast<double>(x[1]), 0.0, 1e-15);
}

// fmin = (x^3)^2 / 2 along p = -4 from x = 1 has
// f(1) = 0.5, slope -12, f(-3) = 364.5. The parabola gives 12 / (2 (364 + 12)) = 0.01596, held
// at 0.1: f(0.6) = 0.0233, which is enough.
TEST(TBroyden, LineSearchNeverShortensBelowATenth) {
    const auto cube = [](int, const long double* x, long double* f) { f[1] = x[1] * x[1] * x[1]; };
    LongVector x = {0.0L, 1.0L};
    TBroyden solver(1, x.data(), cube);
    const LongVector xold = x;
    LongVector p = {0.0L, -4.0L};
    long double f = 0.0L;
    int check = 7;
    EXPECT_TRUE(solver.lnsrch(xold, 0.5L, {0.0L, 3.0L}, p, &f, 100.0L, &check));
    EXPECT_NEAR(static_cast<double>(x[1]), 0.6, 1e-15);
}

TEST(TBroyden, LineSearchSaysWhenItIsStuck) {
    // The residual is everywhere larger than at the start.
    const auto spike = [](int, const long double* x, long double* f) { f[1] = x[1] == 1.0L ? 1.0L : 2.0L; };
    LongVector x = {0.0L, 1.0L};
    TBroyden solver(1, x.data(), spike);
    const LongVector xold = x;
    LongVector p = {0.0L, -1.0L};
    long double f = 0.0L;
    int check = 7;
    EXPECT_TRUE(solver.lnsrch(xold, 0.5L, {0.0L, 1.0L}, p, &f, 100.0L, &check));
    EXPECT_EQ(check, 1);
    EXPECT_EQ(x[1], 1.0L);
}

TEST(TBroyden, LineSearchRefusesADirectionUphill) {
    LongVector x = {0.0L, 2.0L, 2.0L};
    TBroyden solver(2, x.data(), hyperbola);
    LongVector p = {0.0L, 1.0L, 0.0L};
    long double f = 0.0L;
    int check = 7;
    EXPECT_FALSE(solver.lnsrch(x, 4.5L, {0.0L, 1.0L, 0.0L}, p, &f, 100.0L, &check));
}

// --- QR factors

LongMatrix random_matrix(std::mt19937& random, int n) {
    std::normal_distribution<double> draw;
    LongMatrix m = my_matrix(n);
    for (std::size_t i = 1; i < m.size(); ++i) {
        for (std::size_t j = 1; j < m.size(); ++j)
            m[i][j] = draw(random);
    }
    return m;
}

LongVector times(const LongMatrix& m, const LongVector& v) {
    LongVector product(v.size(), 0.0L);
    for (std::size_t i = 1; i < v.size(); ++i) {
        for (std::size_t j = 1; j < v.size(); ++j)
            product[i] += m[i][j] * v[j];
    }
    return product;
}

// R^T R must be A^T A, since Q is orthogonal.
TEST(TBroyden, FactorsReproduceTheMatrix) {
    std::mt19937 random(1);
    for (int n = 1; n <= 6; ++n) {
        const LongMatrix a = random_matrix(random, n);
        LongMatrix qr = a;
        LongVector c = my_vector(n);
        LongVector d = my_vector(n);
        ASSERT_FALSE(TBroyden::qrdcmp(qr, n, c, d));
        const std::size_t size = static_cast<std::size_t>(n);
        for (std::size_t i = 1; i <= size; ++i) {
            for (std::size_t j = 1; j <= size; ++j) {
                long double expected = 0.0L;
                long double found = 0.0L;
                for (std::size_t k = 1; k <= size; ++k) {
                    expected += a[k][i] * a[k][j];
                    const auto r = [&](std::size_t row, std::size_t col) {
                        return row == col ? d[row] : row < col ? qr[row][col] : 0.0L;
                    };
                    found += r(k, i) * r(k, j);
                }
                EXPECT_NEAR(static_cast<double>(found), static_cast<double>(expected), 1e-14) << n;
            }
        }
    }
}

TEST(TBroyden, FactorsOfASingularMatrixSaySo) {
    LongMatrix a = my_matrix(3);
    for (std::size_t i = 1; i <= 3; ++i) {
        a[i][1] = 1.0L;
        a[i][3] = static_cast<long double>(i);
    }
    LongVector c = my_vector(3);
    LongVector d = my_vector(3);
    EXPECT_TRUE(TBroyden::qrdcmp(a, 3, c, d));
}

TEST(TBroyden, SolvesATriangularSystem) {
    // 2 x + 1 y + 3 z = 13,  4 y + 1 z = 11,  5 z = 15:  z = 3, y = 2, x = 1.
    LongMatrix a = my_matrix(3);
    a[1][2] = 1.0L;
    a[1][3] = 3.0L;
    a[2][3] = 1.0L;
    const LongVector d = {0.0L, 2.0L, 4.0L, 5.0L};
    LongVector b = {0.0L, 13.0L, 11.0L, 15.0L};
    TBroyden::rsolv(a, 3, d, b);
    EXPECT_EQ(b[1], 1.0L);
    EXPECT_EQ(b[2], 2.0L);
    EXPECT_EQ(b[3], 3.0L);
}

// Q (R + u v^T) for a Q of 1: the new factors, multiplied, must give R + u v^T.
TEST(TBroyden, UpdateReproducesTheChangedMatrix) {
    std::mt19937 random(2);
    std::normal_distribution<double> draw;
    for (int n = 2; n <= 6; ++n) {
        for (int zeros = 0; zeros < n; ++zeros) {
            LongMatrix r = random_matrix(random, n);
            LongMatrix qt = my_matrix(n);
            LongVector u = my_vector(n);
            LongVector v = my_vector(n);
            const std::size_t size = static_cast<std::size_t>(n);
            for (std::size_t i = 1; i <= size; ++i) {
                for (std::size_t j = 1; j < i; ++j)
                    r[i][j] = 0.0L;
                qt[i][i] = 1.0L;
                // The last entries may be 0, which shortens the work.
                u[i] = static_cast<int>(i) > n - zeros ? 0.0L : draw(random);
                v[i] = draw(random);
            }
            LongMatrix expected = r;
            for (std::size_t i = 1; i <= size; ++i) {
                for (std::size_t j = 1; j <= size; ++j)
                    expected[i][j] += u[i] * v[j];
            }
            TBroyden::qrupdt(r, qt, n, u, v);
            for (std::size_t j = 1; j <= size; ++j) {
                LongVector column = my_vector(n);
                for (std::size_t i = 1; i <= size; ++i)
                    column[i] = expected[i][j];
                const LongVector rotated = times(qt, column);
                for (std::size_t i = 1; i <= size; ++i) {
                    EXPECT_NEAR(static_cast<double>(rotated[i]), static_cast<double>(r[i][j]), 1e-14);
                    if (i > j) {
                        EXPECT_NEAR(static_cast<double>(r[i][j]), 0.0, 1e-14);
                    }
                }
            }
        }
    }
}

// The update as it is written down: each rotation, and apart from it the length that it leaves in u.
void plain_update(LongMatrix& r, LongMatrix& qt, int n, LongVector u, const LongVector& v) {
    const auto at = [](int i) { return static_cast<std::size_t>(i); };
    int k = n;
    while (k > 1 && u[at(k)] == 0.0L)
        --k;
    for (int i = k - 1; i >= 1; --i) {
        const long double above = std::fabs(u[at(i)]);
        const long double below = std::fabs(u[at(i + 1)]);
        TBroyden::rotate(r, qt, n, i, u[at(i)], -u[at(i + 1)]);
        if (above == 0.0L) {
            u[at(i)] = below;
        } else if (above > below) {
            u[at(i)] = above * std::sqrt(1.0L + (below / above) * (below / above));
        } else {
            u[at(i)] = below * std::sqrt(1.0L + (above / below) * (above / below));
        }
    }
    for (int j = 1; j <= n; ++j)
        r[1][at(j)] += u[1] * v[at(j)];
    for (int i = 1; i < k; ++i)
        TBroyden::rotate(r, qt, n, i, r[at(i)][at(i)], -r[at(i + 1)][at(i)]);
}

// To the last bit, on which the path of a whole search hangs.
TEST(TBroyden, UpdateIsThePlainOneToTheLastBit) {
    std::mt19937 random(3);
    std::normal_distribution<double> draw;
    for (int run = 0; run < 500; ++run) {
        const int n = 1 + run % 5;
        LongMatrix r = random_matrix(random, n);
        LongMatrix qt = random_matrix(random, n);
        LongVector u = my_vector(n);
        LongVector v = my_vector(n);
        for (std::size_t i = 1; i < u.size(); ++i) {
            u[i] = random() % 4 == 0 ? 0.0L : draw(random);
            v[i] = draw(random);
        }
        LongMatrix plain_r = r;
        LongMatrix plain_qt = qt;
        plain_update(plain_r, plain_qt, n, u, v);
        TBroyden::qrupdt(r, qt, n, u, v);
        ASSERT_EQ(r, plain_r) << run;
        ASSERT_EQ(qt, plain_qt) << run;
    }
}

TEST(TBroyden, RotationTakesTheAngleOfItsArguments) {
    // cosine 3/5, sine 4/5 of (3, 4): rows (1, 0) and (0, 1) become (0.6, -0.8) and (0.8, 0.6).
    for (const auto& [a, b, cosine, sine] : {std::array<long double, 4>{3.0L, 4.0L, 0.6L, 0.8L},
                                             {4.0L, 3.0L, 0.8L, 0.6L},
                                             {-3.0L, 4.0L, -0.6L, 0.8L},
                                             {4.0L, -3.0L, 0.8L, -0.6L},
                                             {0.0L, 2.0L, 0.0L, 1.0L},
                                             {0.0L, -2.0L, 0.0L, -1.0L}}) {
        LongMatrix r = my_matrix(2);
        LongMatrix qt = my_matrix(2);
        r[1][1] = r[2][2] = qt[1][1] = qt[2][2] = 1.0L;
        TBroyden::rotate(r, qt, 2, 1, a, b);
        for (const LongMatrix& m : {r, qt}) {
            EXPECT_NEAR(static_cast<double>(m[1][1]), static_cast<double>(cosine), 1e-15);
            EXPECT_NEAR(static_cast<double>(m[1][2]), static_cast<double>(-sine), 1e-15);
            EXPECT_NEAR(static_cast<double>(m[2][1]), static_cast<double>(sine), 1e-15);
            EXPECT_NEAR(static_cast<double>(m[2][2]), static_cast<double>(cosine), 1e-15);
        }
    }
}

TEST(LongVectors, CountFromOneAndAreZeroed) {
    LongVector v = my_vector(3);
    EXPECT_EQ(v, LongVector(4, 0.0L));
    LongMatrix m = my_matrix(2);
    EXPECT_EQ(m, LongMatrix(3, LongVector(3, 0.0L)));
    my_free_vector(v);
    my_free_matrix(m);
    EXPECT_TRUE(v.empty());
    EXPECT_TRUE(m.empty());
    EXPECT_EQ(my_vector(-1).size(), 1u);
}

TEST(LongFunctions, ExponentialIsThatOfDoublePrecision) {
    EXPECT_EQ(my_expl(1.0L), static_cast<long double>(std::exp(1.0)));
    EXPECT_NE(my_expl(1.0L), std::exp(1.0L));
}

TEST(LongFunctions, RootIsOfExtendedPrecision) {
    EXPECT_EQ(my_sqrtl(2.0L), std::sqrt(2.0L));
    EXPECT_EQ(my_sqrtl(-1.0L), 0.0L);
}

}  // namespace
}  // namespace mnd
