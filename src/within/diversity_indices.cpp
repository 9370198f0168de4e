#include "within/diversity_indices.h"

#include <algorithm>
#include <cmath>

#include "foundation/special_functions.h"
#include "model/population.h"

namespace mnd {

namespace {

constexpr double kPrecision = 1e-07;
constexpr int kMostSteps = 1000;

// 1/h - 1 as a function of theta under the infinite-allele model.
double odds_of_diversity(double theta) {
    return theta * (1.0 + 2.0 * (theta + 1.0) / ((theta + 2.0) * (theta + 3.0)));
}

double solve_odds_of_diversity(double odds) {
    double a = odds > 1.0 ? odds - 1.0 : 0.001;
    double b = odds + 1.0;
    double c = b;
    double excess = 0.0;
    int step = 0;
    do {
        const double g_a = odds_of_diversity(a);
        const double g_b = odds_of_diversity(b);
        if (g_b == g_a) return c;  // the bracket has closed: no better point exists
        c = b - (g_b - odds) * (b - a) / (g_b - g_a);
        excess = odds_of_diversity(c) - odds;
        (excess <= 0.0 ? a : b) = c;
    } while (std::fabs(excess) > kPrecision && ++step < kMostSteps);
    return c;
}

double sd_of_theta(double t, double h, double sd_h) {
    return sd_h * (t + 2.0) * (t + 2.0) * (t + 3.0) * (t + 3.0) /
           ((t + 1.0) * h * h * (10.0 * (t + 2.0) + (t + 2.0) * (t + 3.0) * (t + 4.0) + 4.0));
}

// The theta at which a function that falls with theta takes the value `target`.
template <typename Falling>
double solve_falling(const Falling& function, double target) {
    constexpr int kHalvings = 200;
    constexpr double kLargestTheta = 10000.0;
    double low = 0.0;
    double high = 1.0;
    while (function(high) > target && high < kLargestTheta) {
        low = high;
        high *= 2.0;
    }
    for (int i = 0; i < kHalvings && low < high; ++i) {
        const double middle = 0.5 * (low + high);
        if (middle == low || middle == high) break;
        (function(middle) > target ? low : high) = middle;
    }
    return 0.5 * (low + high);
}

}  // namespace

double sum_of_squares(const std::vector<double>& frequencies) {
    double sum = 0.0;
    for (const double p : frequencies)
        sum += p * p;
    return sum;
}

GeneDiversity gene_diversity(double sum_sq, int nb_alleles, double n) {
    if (nb_alleles == n) return {0.0, 1.0};
    if (n <= 1.0) return {1.0, 0.0};
    const double H = std::min(n / (n - 1.0) * (1.0 - sum_sq), 1.0);
    return {1.0 - H, H};
}

double sd_gene_diversity(const std::vector<double>& frequencies, double n) {
    if (n <= 1.0) return 0.0;
    double s2 = 0.0;
    double s3 = 0.0;
    for (const double p : frequencies) {
        s2 += p * p;
        s3 += p * p * p;
    }
    const double variance = (2.0 * (n - 2.0) * (s3 - s2 * s2) + s2 - s2 * s2) * 2.0 / ((n - 1.0) * n);
    return std::sqrt(std::max(variance, 0.0));  // rounding alone can make it negative
}

Estimate theta_from_homozygosity(double h, double sd_h) {
    if (h == 1.0) return {0.0, 0.0};
    if (h <= 0.0) return {kNumericalInfinity, kNumericalInfinity};
    const double theta = solve_odds_of_diversity(1.0 / h - 1.0);
    return {theta, sd_of_theta(theta, h, sd_h)};
}

Estimate theta_from_segregating_sites(int n, int S) {
    if (n <= 1) return {};
    double a1 = 0.0;
    double a2 = 0.0;
    for (int i = 1; i < n; ++i) {
        const double d = i;
        a1 += 1.0 / d;
        a2 += 1.0 / (d * d);
    }
    const double s = S;
    return {s / a1, std::sqrt((s * a1 * a1 + s * s * a2) / ((a2 + a1 * a1) * a1 * a1))};
}

Estimate theta_from_pairwise_differences(double pi, double n) {
    if (n < 2.0) return {};
    const double c = n * n + n + 3.0;
    const double variance = (n + 1.0) / (3.0 * (n - 1.0)) * pi + 2.0 * c / (9.0 * n * (n - 1.0)) * pi * pi;
    return {pi, std::sqrt(std::max(variance, 0.0))};
}

double expected_number_of_alleles(double theta, int n) {
    if (theta <= 0.0) return 1.0;
    double k = 0.0;
    for (int i = 0; i < n; ++i)
        k += theta / (i + theta);
    return k;
}

double probability_of_fewer_alleles(int k, int n, double theta, const BnumMat& B) {
    constexpr double kLargestTheta = 10000.0;
    if (theta > kLargestTheta) return 0.0;
    if (theta <= 0.0) return k > 1 ? 1.0 : 0.0;  // the limit: one allele for sure
    const double log_theta = std::log(theta);
    long double sum = 0.0L;
    for (int j = 1; j < k; ++j) {
        sum += static_cast<long double>(B.data[n - 1][j - 1]) *
               std::exp(static_cast<long double>(j * log_theta - factln(j)));
    }
    const long double scale = factln(n) + gammln(theta) - gammln(n + theta);
    return static_cast<double>(sum * std::exp(scale));
}

ThetaK theta_from_number_of_alleles(int k, int n, const BnumMat& B) {
    constexpr double kTail = 0.025;
    const auto at_most_k = [&](double theta) { return probability_of_fewer_alleles(k + 1, n, theta, B); };
    ThetaK result;
    result.upper = solve_falling(at_most_k, kTail);
    result.lower = solve_falling(at_most_k, 1.0 - kTail);
    if (k <= 1) return {0.0, 0.0, result.upper};
    result.theta = solve_falling([&](double theta) { return -expected_number_of_alleles(theta, n); },
                                 -static_cast<double>(k));
    return result;
}

}  // namespace mnd
