// Roots of systems of equations by the globally convergent method of Broyden.
//
// Each step goes in the direction that solves the system made linear at x. The Jacobian is
// evaluated at the start only and when the search stalls; between, its QR factors are mended by
// the secant condition. Along each direction a line search sees to it that the sum of squared
// residuals falls enough.
//
// Everything is of extended precision. Vectors and matrices count from 1, as in the literature of
// the method; entry 0 is not used.
//
// Source: Broyden 1965, Mathematics of Computation 19:577-593; Dennis and Schnabel 1983,
//         Numerical Methods for Unconstrained Optimization and Nonlinear Equations, 6.3 and 8.3;
//         QR updates: Gill, Golub, Murray and Saunders 1974, Mathematics of Computation 28:505-535
#pragma once

#include <cstdint>
#include <vector>

namespace mnd {

using LongVector = std::vector<long double>;
using LongMatrix = std::vector<LongVector>;

// A zeroed vector with the entries 1 to n, and a zeroed n x n matrix.
LongVector my_vector(int n);
LongMatrix my_matrix(int n);
// Give the storage back.
void my_free_vector(LongVector& v);
void my_free_matrix(LongMatrix& m);

// The exponential in double precision, widened: exp(z) of the argument rounded to double.
long double my_expl(long double z);
// The square root in extended precision; 0 for an argument below 0.
long double my_sqrtl(long double z);

class TBroyden {
public:
    // Writes the residuals of the equations 1 to n at x into fvec. What stands in x behind entry
    // n is the caller's own.
    using Function = void (*)(int n, const long double* x, long double* fvec);
    // Writes the derivative of residual i by unknown j at x into df[i][j].
    using Jacobian = void (*)(int n, const long double* x, LongMatrix& df);

    static constexpr int kNoFailure = -1;

    std::int32_t n;                      // unknowns and equations, at least 1
    LongVector fvec;                     // residuals at the last point tried
    long double* x;                      // not owned: unknowns, entries 1 to n; start, then result
    Function function;                   // the system
    Jacobian jacobian = nullptr;         // null: differences take its place
    std::int32_t analytic_jacobian = 0;  // 1: `jacobian` is used
    std::int32_t converged = 0;          // 1 when the last run found a root
    int failure = kNoFailure;            // why the last run broke off: kSingularJacobian,
                                         // kSingularRInBroyden, kEquationSolvingDidNotConverge or
                                         // kRoundoffProblemInLineSearch, which nobody reports

    TBroyden(int dimension, long double* unknowns, Function system);
    TBroyden(int dimension, long double* unknowns, Function system, Jacobian derivatives);
    virtual ~TBroyden() = default;
    TBroyden(const TBroyden&) = delete;
    TBroyden& operator=(const TBroyden&) = delete;

    // Looks for a root from `start` on, which then holds the last point reached, and becomes `x`.
    //   check   written: 0 when all residuals are below 1e-4 or the steps have become
    //           negligible; 1 when the search is stuck at a point that is no root, or failed
    // Writes:   fvec, converged, failure
    // Cost:     at most 200 steps of O(n^2) and a line search each; a restart costs O(n^3)
    void broydn(long double* start, int dimension, int* check);

    // Gives back all working storage; the next run makes it anew.
    void clean();

    // --- the parts of the method ---

    // Half of the sum of squared residuals at `point`; leaves them in fvec.
    long double fmin(const long double* point);

    // Goes from xold along p, which is shortened to step_max first, to an x where fmin has
    // fallen enough, first by the full step.
    //   fold, g  fmin and its gradient at xold
    //   f        written: fmin at x
    //   check    written: 1 when x would be too close to xold; x is then xold
    // Returns:   false when p does not lead downhill
    bool lnsrch(const LongVector& xold, long double fold, const LongVector& g, LongVector& p, long double* f,
                long double step_max, int* check);

    // The Jacobian at x by forward differences, from the residuals in fvec.
    void approx_fdjac(LongMatrix& df);

    // QR factors of a by Householder reflections: R above the diagonal of a, its diagonal in d;
    // the reflections below and on it, their scale in c.
    // Returns:   true when a is singular; the factors are complete all the same
    static bool qrdcmp(LongMatrix& a, int n, LongVector& c, LongVector& d);

    // Factors of Q (R + u v^T) from those of Q R; u is destroyed.
    //   r, qt   R and the transpose of Q
    static void qrupdt(LongMatrix& r, LongMatrix& qt, int n, LongVector& u, const LongVector& v);

    // Solves R x = b, with R above the diagonal of a and its diagonal in d; x takes the place of b.
    static void rsolv(const LongMatrix& a, int n, const LongVector& d, LongVector& b);

    // The Jacobi rotation of rows i and i + 1 of r and qt by the angle with cosine
    // a / sqrt(a^2 + b^2) and sine b / sqrt(a^2 + b^2).
    // Returns:   sqrt(a^2 + b^2)
    static long double rotate(LongMatrix& r, LongMatrix& qt, int n, int i, long double a, long double b);

private:
    // Working storage of a run.
    LongVector c_, d_, g_, p_, s_, t_, w_, xold_, fvcold_;
    LongMatrix r_, qt_;
    long double f_ = 0.0L;  // fmin at x

    void allocate(int dimension);
    bool search();
    bool start_factors();
    void form_q();
    void form_r();
    bool update_factors();
    bool secant_error();
    void set_direction();
    long double largest_residual() const;
    bool step_vanishes() const;
    bool gradient_vanishes() const;
    bool fail(int code);
};

}  // namespace mnd
