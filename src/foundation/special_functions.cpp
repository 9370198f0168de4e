#include "foundation/special_functions.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <iostream>

#include "foundation/message_codes.h"
#include "foundation/report.h"

namespace mnd {

namespace {

constexpr int kMaxCachedFactorial = 100;
constexpr int kMaxRounds = 100;      // of the series, of the continued fraction, of the root finder
constexpr double kSettled = 3e-07;   // relative change at which a series has settled
constexpr float kSmallest = 1e-30F;  // what a vanishing term of the continued fraction becomes

// Coefficients of the six-term series for log gamma.
template <typename Real>
struct Lanczos;

template <>
struct Lanczos<double> {
    static constexpr double base = 1.000000000190015;
    static constexpr std::array<double, 6> coefficient = {76.18009172947146,    -86.50532032941678,
                                                          24.01409824083091,    -1.231739572450155,
                                                          0.001208650973866179, -5.395239384953e-06};
};

template <>
struct Lanczos<long double> {
    static constexpr long double base = 1.000000000190015L;
    static constexpr std::array<long double, 6> coefficient = {76.18009172947146L,    -86.50532032941678L,
                                                               24.01409824083091L,    -1.231739572450155L,
                                                               0.001208650973866179L, -5.395239384953e-06L};
};

// Square root of 2 pi. In extended precision, too, it is the value of this double.
constexpr double kLanczosScale = 2.5066282746310005;

// base + sum of coefficient[k] / (x + 1 + k).
template <typename Real>
Real lanczos_series(Real x) {
    Real y = x;
    Real ser = Lanczos<Real>::base;
    for (const Real c : Lanczos<Real>::coefficient) {
        y += 1;
        ser += c / y;
    }
    return ser;
}

// Value kept for n in 2 to 100, made by `compute` on first use; a zero is one not yet made.
template <typename Real>
Real cached_factorial(std::array<Real, kMaxCachedFactorial + 1>& a, int n, Real (*compute)(Real)) {
    if (n > kMaxCachedFactorial) return compute(n + 1.0);
    Real& kept = a[static_cast<std::size_t>(n)];
    if (kept == 0) kept = compute(n + 1.0);
    return kept;
}

}  // namespace

long double logl(long double x) {
    return std::log(static_cast<double>(x));
}

double gammln(double x) {
    const double ser = lanczos_series(x);
    double tmp = x + 5.5;
    tmp -= (x + 0.5) * std::log(tmp);
    return std::log(kLanczosScale * ser / x) - tmp;
}

long double gammlnl(long double x) {
    const long double ser = lanczos_series(x);
    long double tmp = x + 5.5L;
    tmp -= (x + 0.5L) * mnd::logl(tmp);
    return mnd::logl(kLanczosScale * ser / x) - tmp;
}

double factln(int n) {
    static std::array<double, kMaxCachedFactorial + 1> a{};
    if (n < 0) {
        report(Error, "factln(int n) negative factorial: setting it to zero", kNumericalError);
        return 0.0;
    }
    if (n <= 1) return 0.0;
    return cached_factorial(a, n, gammln);
}

long double factlnl(int n) {
    static std::array<long double, kMaxCachedFactorial + 1> a{};
    if (n < 0) {
        std::cout << "factlnl(int n) negative factorial: setting it to zero" << '\n';
        return 0.0L;
    }
    if (n <= 1) return 0.0L;
    return cached_factorial(a, n, gammlnl);
}

double factorial(const float& n) {
    const double k = n + 0.1;
    if (!(k >= 2.0)) return 0.0;
    const int last = static_cast<int>(std::min(k, INT_MAX - 1.0));
    double sum = 0.0;
    for (int i = 2; i <= last; ++i) {
        sum += std::log(static_cast<double>(i));
    }
    return sum;
}

namespace {

// x^a e^-x / gamma(a), the factor before the series and the continued fraction.
double gamma_density_factor(float a, float x, float gln) {
    const double log_x = std::log(static_cast<double>(x));
    return std::exp(a * log_x - x - gln);
}

float away_from_zero(float value) {
    return std::fabs(value) < kSmallest ? kSmallest : value;
}

}  // namespace

void gser(float* gamser, float a, float x, float* gln) {
    *gln = static_cast<float>(gammln(a));
    if (x <= 0.0F) {
        if (x < 0.0F) report(Error, "gser() x less than 0", kNumericalError);
        *gamser = 0.0F;
        return;
    }
    float ap = a;
    float sum = 1.0F / a;
    float del = sum;
    for (int n = 1; n <= kMaxRounds; ++n) {
        ap += 1.0F;
        del *= x / ap;
        sum += del;
        if (std::fabs(del) < std::fabs(sum) * kSettled) {
            *gamser = static_cast<float>(sum * gamma_density_factor(a, x, *gln));
            return;
        }
    }
    report(Error, "gser() a too large, ITMAX too small ", kNumericalError);
}

void gcf(float* gammcf, float a, float x, float* gln) {
    *gln = static_cast<float>(gammln(a));
    float b = x + 1.0F - a;
    float c = 1e30F;
    float d = 1.0F / b;
    float h = d;
    bool settled = false;
    for (int i = 1; i <= kMaxRounds && !settled; ++i) {
        const float an = -static_cast<float>(i) * (static_cast<float>(i) - a);
        b += 2.0F;
        d = 1.0F / away_from_zero(an * d + b);
        c = away_from_zero(b + an / c);
        const float del = d * c;
        h *= del;
        settled = std::fabs(del - 1.0) < kSettled;
    }
    if (!settled) report(Error, "gcf() a too large, ITMAX too small in gcf", kNumericalError);
    *gammcf = static_cast<float>(h * gamma_density_factor(a, x, *gln));
}

float Prob_of_chi_sq(float df, float chi2) {
    const float a = df / 2.0F;
    const float x = chi2 / 2.0F;
    if (x < 0.0F) {
        report(Error, "Prob_of_chi_sq()  invalid arguments", kNumericalError);
        return -1.0F;
    }
    if (a <= 0.0F) return -1.0F;
    float gln = 0.0F;
    if (x < a + 1.0) {
        float gamser = 0.0F;
        gser(&gamser, a, x, &gln);
        return 1.0F - gamser;
    }
    float gammcf = 0.0F;
    gcf(&gammcf, a, x, &gln);
    return gammcf;
}

namespace {

bool share_a_strict_sign(float f1, float f2) {
    return (f1 > 0.0F && f2 > 0.0F) || (f1 < 0.0F && f2 < 0.0F);
}

// The bracket of Brent's method: b the best abscissa, a the one before, c on the other side.
struct BrentBracket {
    float a, b, c;
    float fa, fb, fc;
    float d, e;  // the last step and the one before it

    void reset_other_side() {
        c = a;
        fc = fa;
        d = b - a;
        e = d;
    }
    void make_b_the_best() {
        a = b;
        b = c;
        c = a;
        fa = fb;
        fb = fc;
        fc = fa;
    }
    // Chooses the next step d: inverse quadratic interpolation (the secant when a is c) where
    // it falls well inside the bracket, otherwise half of it.
    void choose_step(float xm, float tol1) {
        if (std::fabs(e) >= tol1 && std::fabs(fa) > std::fabs(fb) && interpolate(xm, tol1)) return;
        d = xm;
        e = d;
    }

private:
    bool interpolate(float xm, float tol1) {
        const double s = fb / fa;
        double p = 2.0 * xm * s;
        double q = 1.0 - s;
        if (a != c) {
            const double t = fa / fc;
            const double r = fb / fc;
            p = s * (2.0 * xm * t * (t - r) - (b - a) * (r - 1.0));
            q = (t - 1.0) * (r - 1.0) * (s - 1.0);
        }
        if (p > 0.0) q = -q;
        p = std::fabs(p);
        if (!(2.0 * p < std::min(3.0 * xm * q - std::fabs(tol1 * q), std::fabs(e * q)))) return false;
        e = d;
        d = static_cast<float>(p / q);
        return true;
    }
};

}  // namespace

float zbrent(float (*func)(float), float x1, float x2, float tol) {
    BrentBracket s{x1, x2, x2, func(x1), func(x2), 0.0F, 0.0F, 0.0F};
    if (share_a_strict_sign(s.fa, s.fb)) {
        report(Error, "zbrent() root must be bracketed in zbrent", kNumericalError);
    }
    s.fc = s.fb;
    for (int iter = 1; iter <= kMaxRounds; ++iter) {
        if (share_a_strict_sign(s.fb, s.fc)) s.reset_other_side();
        if (std::fabs(s.fc) < std::fabs(s.fb)) s.make_b_the_best();
        const auto tol1 = static_cast<float>(6e-08 * std::fabs(s.b) + 0.5 * tol);
        const auto xm = static_cast<float>(0.5 * (s.c - s.b));
        if (std::fabs(xm) <= tol1 || s.fb == 0.0F) return s.b;
        s.choose_step(xm, tol1);
        s.a = s.b;
        s.fa = s.fb;
        s.b += std::fabs(s.d) > tol1 ? s.d : std::copysign(tol1, xm);
        s.fb = func(s.b);
    }
    report(Error, "zbrent() maximum number of iterations exceeded in zbrent", kNumericalError);
    return s.b;
}

}  // namespace mnd
