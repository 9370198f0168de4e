#include "between/divergence_times.h"

#include <algorithm>

#include "foundation/random.h"

namespace mnd {

namespace {

constexpr int kUnknowns = 3;

// Places of the unknowns and the targets in a point.
enum Place : std::size_t { kTheta = 1, kK = 2, kTau = 3, kPiX = 4, kPiY = 5, kPiXY = 6 };

constexpr long double kExponentOfZero = -400.0L;  // exponent where its denominator is 0
constexpr long double kClip = 300.0L;             // largest exponent taken, of either sign

// Exponential within bounds.
struct ClippedExp {
    long double lower, upper;
    long double operator()(long double z) const {
        if (z < -kClip) return lower;
        if (z > kClip) return upper;
        return my_expl(z);
    }
};
constexpr ClippedExp kInEquations = {1e-50L, 1e+50L};
constexpr ClippedExp kInDerivatives = {1.1754943508222876e-39L, 3.4028234663852886e+39L};

long double exponent(long double tau, long double denominator) {
    return denominator == 0.0L ? kExponentOfZero : -tau / denominator;
}

// Mean difference within a sample of the relative size k, less its target.
long double within_residual(long double theta, long double k, long double tau, long double target) {
    const long double e = kInEquations(exponent(tau, theta * k));
    return theta * (k + (1.0L - k) * e) - target;
}

// Derivatives of that value by theta, k and tau.
struct Derivatives {
    long double by_theta, by_k, by_tau;
};
Derivatives within_derivatives(long double theta, long double k, long double tau) {
    const long double denominator = theta * k;
    const long double z = exponent(tau, denominator);
    const long double e = kInDerivatives(z);
    const long double rest = (1.0L - k) * e;
    if (denominator == 0.0L) return {k + rest, theta * (1.0L - e), 0.0L};
    return {k + rest * (1.0L - z), theta * (1.0L - e) + rest * tau / (k * k), -rest / k};
}

// From 0.01 to 2.01.
long double scatter_factor() {
    return (200.0L * static_cast<long double>(ran3()) + 1.0L) / 100.0L;
}

}  // namespace

void divergence_equations(int, const long double* x, long double* fvec) {
    const long double theta = x[kTheta];
    const long double k = x[kK];
    const long double tau = x[kTau];
    fvec[1] = within_residual(theta, k, tau, x[kPiX]);
    fvec[2] = within_residual(theta, 1.0L - k, tau, x[kPiY]);
    fvec[3] = theta + tau - x[kPiXY];
}

void my_jacobian2(int, const long double* x, LongMatrix& df) {
    const long double theta = x[kTheta];
    const long double k = x[kK];
    const long double tau = x[kTau];
    const Derivatives first = within_derivatives(theta, k, tau);
    const Derivatives second = within_derivatives(theta, 1.0L - k, tau);
    df[1][kTheta] = first.by_theta;
    df[1][kK] = first.by_k;
    df[1][kTau] = first.by_tau;
    df[2][kTheta] = second.by_theta;
    df[2][kK] = -second.by_k;
    df[2][kTau] = second.by_tau;
    df[3][kTheta] = 1.0L;
    df[3][kK] = 0.0L;
    df[3][kTau] = 1.0L;
}

TSolveDivTimes::TSolveDivTimes(const long double& within_X, const long double& within_Y,
                               const long double& between)
    : TBroyden(kUnknowns, nullptr, divergence_equations, my_jacobian2) {
    x = point_.data();
    set_targets(within_X, within_Y, between);
}

void TSolveDivTimes::set_targets(const long double& within_X, const long double& within_Y,
                                 const long double& between) {
    pi_X = within_X;
    pi_Y = within_Y;
    pi_XY = between;
    theta = tau = k = 0.0L;
    point_[kPiX] = pi_X;
    point_[kPiY] = pi_Y;
    point_[kPiXY] = pi_XY;
}

int TSolveDivTimes::solve(const int& attempts) {
    max_restarts = attempts;
    for (int i = 0; i < max_restarts; ++i) {
        if (attempt(i > 0)) return 0;
    }
    return 1;
}

bool TSolveDivTimes::attempt(bool scatter) {
    const long double M = divide_targets();
    set_start(scatter);
    int check = 1;
    broydn(point_.data(), kUnknowns, &check);
    for (const Place target : {kPiX, kPiY, kPiXY})
        point_[target] *= M;
    theta = point_[kTheta] * M;
    tau = point_[kTau] * M;
    k = point_[kK];
    return check == 0 && theta >= 0.0L;
}

// Returns: by what the targets were divided, so that the largest is 1
long double TSolveDivTimes::divide_targets() {
    long double M = std::max({point_[kPiX], point_[kPiY], point_[kPiXY]});
    if (M == 0.0L) M = 1.0L;
    for (const Place target : {kPiX, kPiY, kPiXY})
        point_[target] /= M;
    return M;
}

void TSolveDivTimes::set_start(bool scatter) {
    const long double sum = point_[kPiX] + point_[kPiY];
    point_[kTheta] = sum / 2.0L;
    point_[kTau] = point_[kPiXY] - point_[kTheta];
    point_[kK] = sum == 0.0L ? 0.5L : point_[kPiX] / sum;
    if (!scatter) return;
    for (const Place unknown : {kTheta, kTau, kK})
        point_[unknown] *= scatter_factor();
}

}  // namespace mnd
