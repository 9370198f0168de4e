#include "within/diversity_indices.h"

#include <algorithm>
#include <cmath>

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

// The theta at which a function that falls from above the target to below it takes its value.
template <typename Falling>
double solve_falling(const Falling& function, long double target) {
    constexpr double kLargestTheta = 1e30;
    double low = 0.0;
    double high = 1.0;
    while (function(high) > target && high < kLargestTheta) {
        low = high;
        high *= 2.0;
    }
    for (;;) {
        const double middle = 0.5 * (low + high);
        if (middle <= low || middle >= high) return middle;
        (function(middle) > target ? low : high) = middle;
    }
}

// Sums of 1/i and of 1/i^2 over 0 < i < n.
struct HarmonicSums {
    double first = 0.0;
    double second = 0.0;
};

HarmonicSums harmonic_sums(int n) {
    constexpr int kLongestSum = 10000000;
    constexpr double kEulerGamma = 0.57721566490153286;
    constexpr double kPiSquaredOver6 = 1.6449340668482264;
    const double m = n - 1.0;
    if (n > kLongestSum) {  // the series of Euler and Maclaurin, exact to the last digit by then
        return {std::log(m) + kEulerGamma + 1.0 / (2.0 * m) - 1.0 / (12.0 * m * m),
                kPiSquaredOver6 - 1.0 / m + 1.0 / (2.0 * m * m)};
    }
    HarmonicSums sums;
    for (int i = 1; i < n; ++i) {
        const double d = i;
        sums.first += 1.0 / d;
        sums.second += 1.0 / (d * d);
    }
    return sums;
}

// The sum of theta/(theta + i); extended precision, for k close to n.
long double expected_alleles(double theta, int n) {
    long double k = 0.0L;
    for (int i = 0; i < n; ++i)
        k += theta / (static_cast<long double>(i) + theta);
    return k;
}

// Distribution of the number of alleles K among n gene copies.
class AlleleNumber {
public:
    AlleleNumber(int k, int n, const BnumMat& B) : n_(n), terms_(long_b_numbers(n, k, B)) {
        long double log_factorial = 0.0L;
        for (std::size_t j = 0; j < terms_.size(); ++j) {
            log_factorial += std::log(static_cast<long double>(j + 1));
            terms_[j] = std::log(terms_[j]) - log_factorial;
        }
    }

    // P(K <= k | theta), k as given to the constructor.
    long double at_most_k(double theta) const {
        const long double log_theta = std::log(static_cast<long double>(theta));
        long double log_scale = 0.0L;  // ln of n! over theta (theta + 1) ... (theta + n - 1)
        for (int i = 0; i < n_; ++i)
            log_scale += std::log((i + 1.0L) / (static_cast<long double>(theta) + i));
        long double sum = 0.0L;
        for (std::size_t j = 0; j < terms_.size(); ++j)
            sum += std::exp(terms_[j] + static_cast<long double>(j + 1) * log_theta + log_scale);
        return sum;
    }

private:
    int n_;
    std::vector<long double> terms_;  // owned: ln(B(n, j)/j!), j = 1 .. k
};

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
    const auto [a1, a2] = harmonic_sums(n);
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
    return theta <= 0.0 ? 1.0 : static_cast<double>(expected_alleles(theta, n));
}

ThetaK theta_from_number_of_alleles(int k, int n, const BnumMat& B) {
    constexpr long double kTail = 0.025L;
    const AlleleNumber K(k, n, B);
    const auto at_most_k = [&K](double theta) { return K.at_most_k(theta); };
    ThetaK result;
    result.upper = solve_falling(at_most_k, kTail);
    if (k == 1) return result;
    result.lower = solve_falling(at_most_k, 1.0L - kTail);
    result.theta = solve_falling([n](double theta) { return -expected_alleles(theta, n); }, -k);
    return result;
}

}  // namespace mnd
