#include "within/tajima.h"

#include <cmath>

#include "foundation/special_functions.h"
#include "model/population.h"

namespace mnd {

namespace {

constexpr double kLeastNumerator = 1e-15;

// Difference of the two estimates of theta.
double numerator_of_D(const TajimaConstants& c, double pi, double S) {
    return pi - S / c.a1;
}

double variance_of_numerator(const TajimaConstants& c, double S) {
    return c.e1 * S + c.e2 * S * (S - 1.0);
}

}  // namespace

TajimaConstants tajima_constants(int n) {
    if (n < 2) return {};
    double a1 = 0.0;
    double a2 = 0.0;
    for (int i = 1; i < n; ++i) {
        const double d = i;
        a1 += 1.0 / d;
        a2 += 1.0 / (d * d);
    }
    const double m = n;
    const double c1 = (m + 1.0) / (3.0 * (m - 1.0)) - 1.0 / a1;
    const double c2 = 2.0 * (m * m + m + 3.0) / (9.0 * m * (m - 1.0)) - (m + 2.0) / (m * a1) + a2 / (a1 * a1);
    return {a1, c1 / a1, c2 / (a1 * a1 + a2)};
}

TajimaD tajima_D(const TajimaConstants& c, double pi, double S) {
    if (S <= 0.0 || c.a1 <= 0.0) return {};
    const double d = numerator_of_D(c, pi, S);
    const double v = variance_of_numerator(c, S);
    if (c.e2 <= 0.0 || !(v > 0.0)) return {};
    return {std::fabs(d) < kLeastNumerator ? 0.0 : d / std::sqrt(v), true};
}

double fast_tajima_D(const TajimaConstants& c, double pi, double S) {
    if (S <= 0.0 || c.a1 <= 0.0) return 0.0;
    const double v = variance_of_numerator(c, S);
    return v > 0.0 ? numerator_of_D(c, pi, S) / std::sqrt(v) : 0.0;
}

double Tajima_D_density(double const& alpha, double const& beta, double const& x, double const& high,
                        double const& low) {
    if (alpha <= 0.0 || beta <= 0.0 || x <= low || x >= high) return 0.0;
    return std::exp(gammln(alpha + beta) - gammln(alpha) - gammln(beta) + (alpha - 1.0) * std::log(high - x) +
                    (beta - 1.0) * std::log(x - low) - (alpha + beta - 1.0) * std::log(high - low));
}

const TajimaResult* PopGenetics::tajimaD(int const& n, double const& pi, double const& S) {
    const TajimaD result = mnd::tajima_D(tajima_constants(n), pi, S);
    tajima_D = result.D;
    if (!result.defined) tajima_p = -1.0;
    return this;
}

const TajimaResult* PopGenetics::fast_tajimaD(int const& n, double const& pi, double const& S) {
    const TajimaConstants constants = tajima_constants(n);
    tajima_D = fast_tajima_D(constants, pi, S);
    if (S <= 0.0 || !(variance_of_numerator(constants, S) > 0.0)) tajima_p = -1.0;
    return this;
}

}  // namespace mnd
