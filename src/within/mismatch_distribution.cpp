// The distribution of pairwise differences of a sample, its moments and how well they fit.
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <new>
#include <vector>

#include "foundation/format_guard.h"
#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "foundation/special_functions.h"
#include "model/population.h"

namespace mnd {

namespace {

constexpr const char* kReporter = "PopGenetics::compute_mm_distr()";
constexpr double kLeastExpected = 1e-05;   // of a class that counts as expected
constexpr double kLeastOfTest = 5.0;       // expected pairs of a class of the chi-square test
constexpr int kMostDifferences = 1 << 23;  // beyond: more memory than a distribution is worth

void reset_chi_square(MismatchResult& result) {
    result.mm_chi2 = result.mm_chi2_p = 0.0;
    result.mm_chi2_df = 0;
}

void reset_moments(MismatchResult& result) {
    result.mm_mean = result.mm_variance = result.mm_theta = result.mm_tau = result.mm_raggedness = 0.0;
}

class MismatchCounter {
public:
    explicit MismatchCounter(PopGenetics& sample) : sample_(sample) {}

    // Pairs of haplotypes, with the counts of both.
    void count_haplotypes() {
        const int n = sample_.hapl_list.count;
        for (int h = 0; h < n; ++h) {
            const std::int64_t copies = copies_of(h);
            for (int g = 0; g < h; ++g)
                add(distance(h, g), copies * copies_of(g));
            add(distance(h, h), copies * (copies - 1) / 2);
        }
    }

    // Pair after pair of gene copies, each of which is written.
    void count_copies(std::ostream& out) {
        const FormatGuard guard(out);
        out << std::fixed << std::right << std::setprecision(1);
        const int n = sample_.hapl_list.count;
        for (int h = 0; h < n; ++h) {
            const std::int64_t copies = copies_of(h);
            for (std::int64_t copy = 0; copy < copies; ++copy)
                write_row(out, h, copy);
        }
    }

private:
    // The distances of one copy of h from the copies before it.
    void write_row(std::ostream& out, int h, std::int64_t copies_before) {
        for (int g = 0; g <= h; ++g) {
            const std::int64_t copies = g == h ? copies_before : copies_of(g);
            const double d = distance(h, g);
            for (std::int64_t copy = 0; copy < copies; ++copy) {
                out << std::setw(6) << d;
                add(d, 1);
            }
        }
        out << '\n';
    }

    std::int64_t copies_of(int h) const { return sample_.hapl_list[h]->freq; }
    double distance(int h, int g) const { return sample_.dist_mat->data[h][g]; }

    // Distances that are not finite, or below 0, have no class.
    void add(double d, std::int64_t pairs) {
        if (!(d >= 0.0) || d >= static_cast<double>(sample_.mm_counts.size())) return;
        sample_.mm_counts[static_cast<std::size_t>(d)] += pairs;
    }

    PopGenetics& sample_;
};

// Pairs, their sum of differences and of squares; moments and raggedness of the classes.
std::int64_t compute_moments(MismatchResult& result) {
    const auto top = static_cast<std::size_t>(result.max_diff);
    std::int64_t total = 0;
    double s1 = 0.0;
    double s2 = 0.0;
    double steps = 0.0;
    for (std::size_t i = 0; i <= top; ++i) {
        const auto c = static_cast<double>(result.mm_counts[i]);
        total += result.mm_counts[i];
        s1 += static_cast<double>(i) * c;
        s2 += static_cast<double>(i) * static_cast<double>(i) * c;
        if (i > 0) {
            const double step = c - static_cast<double>(result.mm_counts[i - 1]);
            steps += step * step;
        }
    }
    reset_moments(result);
    if (total <= 0) return 0;
    const auto n = static_cast<double>(total);
    const auto last = static_cast<double>(result.mm_counts[top]);
    result.mm_raggedness = (steps + last * last) / (n * n);
    result.mm_mean = s1 / n;
    result.mm_variance = total <= 1 ? 0.0 : (s2 - s1 * s1 / n) / (n - 1.0);
    return total;
}

void estimate_from_moments(MismatchResult& result) {
    const double mean = result.mm_mean;
    const double variance = result.mm_variance;
    result.mm_theta = mean <= variance ? std::sqrt(variance - mean) : 0.0;
    result.mm_tau = result.mm_theta <= mean ? mean - result.mm_theta : 0.0;
}

// Pairs expected by the moments: of a stable population, or of one that grew without limit.
void compute_expected(MismatchResult& result, double total) {
    const double theta = result.mm_theta;
    const double tau = result.mm_tau;
    const double log_ratio = tau > 0.0 && theta > 0.0 ? std::log(tau * (theta + 1.0) / theta) : 0.0;
    double arrivals = 1.0;  // running sum over j of exp(j log_ratio) / j!
    result.last_expected_class = 0;
    for (std::size_t i = 0; i < result.mm_expected.size(); ++i) {
        const int k = static_cast<int>(i);
        double& expected = result.mm_expected[i];
        const double stable = std::pow(theta / (theta + 1.0), k) / (theta + 1.0);
        if (tau <= 0.0) {
            expected = stable * total;
        } else if (theta <= 0.0) {
            expected = 0.0;
        } else {
            if (k > 0) arrivals += std::exp(k * log_ratio - factln(k));
            expected = stable * arrivals * std::exp(-tau) * total;
        }
        if (!std::isfinite(expected)) expected = 0.0;  // a tau of hundreds, beyond the range of exp
        if (expected > kLeastExpected) result.last_expected_class = k;
    }
}

// Moves classes with too few expected pairs into the first class of their run, until that has
// enough; what stays below is emptied.
void merge_classes(std::vector<double>& expected, std::vector<double>& observed) {
    std::size_t first = 0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (i == first) {
            if (expected[i] >= kLeastOfTest) first = i + 1;
            continue;
        }
        expected[first] += expected[i];
        observed[first] += observed[i];
        expected[i] = observed[i] = 0.0;
        if (expected[first] >= kLeastOfTest) first = i + 1;
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (expected[i] < kLeastOfTest) expected[i] = observed[i] = 0.0;
    }
}

void test_fit(MismatchResult& result) {
    reset_chi_square(result);
    if (result.last_expected_class == 0) return;
    std::vector<double> expected = result.mm_expected;
    std::vector<double> observed(result.mm_counts.begin(), result.mm_counts.end());
    merge_classes(expected, observed);
    int k = 0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (expected[i] <= 1.0) continue;
        const double deviation = expected[i] - observed[i];
        result.mm_chi2 += deviation * deviation / expected[i];
        ++k;
    }
    result.mm_chi2_df = k - 2;
    result.mm_chi2_p = result.mm_chi2_df < 1 ? -1.0
                                             : Prob_of_chi_sq(static_cast<float>(result.mm_chi2_df),
                                                              static_cast<float>(result.mm_chi2));
}

bool make_classes(MismatchResult& result) {
    try {
        if (result.max_diff > kMostDifferences) throw std::bad_alloc();
        const std::size_t classes = 2 * static_cast<std::size_t>(result.max_diff) + 1;
        result.mm_counts.assign(classes, 0);
        result.mm_expected.assign(classes, 0.0);
        return true;
    } catch (const std::bad_alloc&) {
        result.mm_counts.clear();
        result.mm_expected.clear();
        report(Memory, kReporter, kNotEnoughMemory);
        return false;
    }
}

}  // namespace

int PopGenetics::compute_mm_distr(std::basic_fstream<char>& out, settings&) {
    static_cast<MismatchResult&>(*this) = MismatchResult{};
    max_diff = max_dist;
    if (max_diff <= 0) {
        max_diff = 0;
        return 1;
    }
    if (hapl_list.count == 0) {
        report(Error, kReporter, kHaplotypeListIsEmpty);
        return 0;
    }
    if (dist_mat == nullptr) {
        report(Error, "PopGenetics::compute_mm_distr(ofstream ofs)", kDistanceMatrixDoesNotExist);
        return 0;
    }
    if (!make_classes(*this)) return 0;
    if (out.is_open()) {
        MismatchCounter(*this).count_copies(out);
    } else {
        MismatchCounter(*this).count_haplotypes();
    }
    const std::int64_t total = compute_moments(*this);
    estimate_from_moments(*this);
    compute_expected(*this, static_cast<double>(total));
    test_fit(*this);
    return 1;
}

}  // namespace mnd
