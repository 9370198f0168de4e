// Divergence time of two samples of different sizes.
//
// An ancestral population of size theta0 split tau ago into two of the relative sizes k and
// 1 - k. The mean numbers of pairwise differences within the two samples and between them give
// three equations for these three unknowns:
//
//   pi_X  = theta (k + (1 - k) exp(-tau / (theta k)))
//   pi_Y  = theta ((1 - k) + k exp(-tau / (theta (1 - k))))
//   pi_XY = theta + tau
//
// Source: Gaggiotti and Excoffier 2000, Proceedings of the Royal Society of London B 267:81-87
#pragma once

#include <array>
#include <cstdint>

#include "foundation/broyden.h"

namespace mnd {

// Residuals of the three equations. x holds theta, k and tau, and behind them the targets pi_X,
// pi_Y and pi_XY. An exponent is -400 where its denominator is 0; below -300 and above 300 the
// exponential becomes 1e-50 and 1e+50.
void divergence_equations(int n, const long double* x, long double* fvec);

// Their derivatives, with other bounds for the exponential than in the equations. Where a
// denominator is 0 the terms with the exponential are left out, as it vanishes there.
void my_jacobian2(int n, const long double* x, LongMatrix& df);

class TSolveDivTimes : public TBroyden {
public:
    long double pi_X = 0.0L, pi_Y = 0.0L, pi_XY = 0.0L;  // observed values
    long double theta = 0.0L, tau = 0.0L, k = 0.0L;      // results, also those of a failed attempt
    std::int32_t max_restarts = 20;                      // most attempts of the last call of solve

    TSolveDivTimes(const long double& within_X, const long double& within_Y, const long double& between);

    // Other values to be solved for, by the same object.
    void set_targets(const long double& within_X, const long double& within_Y, const long double& between);

    // Looks for the root, from starting values that all attempts but the first scatter.
    // Returns:  0; not 0 when no attempt found one with a theta of 0 or more
    // Draws:    3 for each attempt after the first, for theta, tau and k
    int solve(const int& attempts);

private:
    std::array<long double, 7> point_{};  // entries 1 to 3 the unknowns, 4 to 6 the targets

    bool attempt(bool scatter);
    long double divide_targets();
    void set_start(bool scatter);
};

}  // namespace mnd
