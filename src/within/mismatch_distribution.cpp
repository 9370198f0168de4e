// The distribution of pairwise differences of a sample, its moments and how well they fit.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <limits>
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
constexpr double kLeastExpected = 1e-05;  // of a class that counts as expected
constexpr double kLeastOfTest = 5.0;      // expected pairs of a class of the chi-square test

void reset_chi_square(MismatchResult& result) {
    result.mm_chi2 = result.mm_chi2_p = 0.0;
    result.mm_chi2_df = 0;
}

void reset_moments(MismatchResult& result) {
    result.mm_mean = result.mm_variance = result.mm_theta = result.mm_tau = result.mm_raggedness = 0.0;
}

// Classes as tables, 0 .. 2 max_diff.
class TabledClasses {
public:
    explicit TabledClasses(std::vector<std::int64_t>& counts) : counts_(counts) {}

    // Distances that are not finite, or below 0, have no class.
    void add(double d, std::int64_t pairs) {
        if (!(d >= 0.0) || d >= static_cast<double>(counts_.size())) return;
        counts_[static_cast<std::size_t>(d)] += pairs;
    }

    // Calls visit(i, pairs) for the classes 0 .. top that have pairs, in ascending order.
    template <class Visit>
    void for_each(int top, const Visit& visit) {
        for (std::size_t i = 0; i <= static_cast<std::size_t>(top); ++i) {
            if (counts_[i] != 0) visit(static_cast<double>(i), counts_[i]);
        }
    }

private:
    std::vector<std::int64_t>& counts_;
};

// Classes as a list of those that have pairs, which differences of any size leave short: no longer
// than twice their number.
class ListedClasses {
public:
    void add(double d, std::int64_t pairs) {
        if (!(d >= 0.0) || !std::isfinite(d) || pairs == 0) return;
        if (list_.size() >= merge_at_) merge();
        list_.push_back({std::trunc(d), pairs});
    }

    // A top that is as large as an int can be stands for any larger one.
    template <class Visit>
    void for_each(int top, const Visit& visit) {
        merge();
        for (const Listed& c : list_) {
            if (c.difference <= static_cast<double>(top) || top == std::numeric_limits<int>::max())
                visit(c.difference, c.pairs);
        }
    }

private:
    struct Listed {
        double difference;  // a whole number
        std::int64_t pairs;
    };

    // Sorts the list and leaves one entry per class.
    void merge() {
        std::sort(list_.begin(), list_.end(),
                  [](const Listed& a, const Listed& b) { return a.difference < b.difference; });
        std::size_t kept = 0;
        for (const Listed& c : list_) {
            if (kept > 0 && list_[kept - 1].difference == c.difference) {
                list_[kept - 1].pairs += c.pairs;
            } else {
                list_[kept++] = c;
            }
        }
        list_.resize(kept);
        merge_at_ = std::max(merge_at_, 2 * kept);
    }

    std::vector<Listed> list_;
    std::size_t merge_at_ = 4096;
};

template <class Classes>
class MismatchCounter {
public:
    MismatchCounter(const PopGenetics& sample, Classes& classes) : sample_(sample), classes_(classes) {}

    // Pairs of haplotypes, with the counts of both.
    void count_haplotypes() {
        const int n = sample_.hapl_list.count;
        for (int h = 0; h < n; ++h) {
            const std::int64_t copies = copies_of(h);
            for (int g = 0; g < h; ++g)
                classes_.add(distance(h, g), copies * copies_of(g));
            classes_.add(distance(h, h), copies * (copies - 1) / 2);
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
                classes_.add(d, 1);
            }
        }
        out << '\n';
    }

    std::int64_t copies_of(int h) const { return sample_.hapl_list[h]->freq; }
    double distance(int h, int g) const { return sample_.dist_mat->data[h][g]; }

    const PopGenetics& sample_;
    Classes& classes_;
};

// Sums over the classes of a distribution, of which those with pairs are added in ascending order.
class MomentSums {
public:
    void add(double i, std::int64_t pairs) {
        const auto c = static_cast<double>(pairs);
        total_ += pairs;
        s1_ += i * c;
        s2_ += i * i * c;
        if (i > last_ + 1.0) {
            add_step(last_count_);  // down to the empty classes, then up from them
            last_count_ = 0.0;
        }
        if (i > 0.0) add_step(c - last_count_);
        last_ = i;
        last_count_ = c;
    }

    // Moments and raggedness; that has the step down from the last class with pairs, be the last
    // class of all that one or an empty one.
    void write(MismatchResult& result) const {
        reset_moments(result);
        if (total_ <= 0) return;
        const auto n = static_cast<double>(total_);
        result.mm_raggedness = (steps_ + last_count_ * last_count_) / (n * n);
        result.mm_mean = s1_ / n;
        result.mm_variance = total_ <= 1 ? 0.0 : (s2_ - s1_ * s1_ / n) / (n - 1.0);
    }

    std::int64_t total() const { return total_; }

private:
    void add_step(double step) { steps_ += step * step; }

    std::int64_t total_ = 0;
    double s1_ = 0.0;
    double s2_ = 0.0;
    double steps_ = 0.0;
    double last_ = -1.0;  // class before the first one, which is no step
    double last_count_ = 0.0;
};

// Counts the pairs and writes the moments of their classes. Returns: their number
template <class Classes>
std::int64_t count_pairs(PopGenetics& sample, Classes classes, std::basic_fstream<char>& out) {
    MismatchCounter counter(sample, classes);
    if (out.is_open()) {
        counter.count_copies(out);
    } else {
        counter.count_haplotypes();
    }
    MomentSums sums;
    classes.for_each(sample.max_diff, [&](double i, std::int64_t pairs) { sums.add(i, pairs); });
    sums.write(sample);
    return sums.total();
}

void estimate_from_moments(MismatchResult& result) {
    const double mean = result.mm_mean;
    const double variance = result.mm_variance;
    result.mm_theta = mean <= variance ? std::sqrt(variance - mean) : 0.0;
    result.mm_tau = result.mm_theta <= mean ? mean - result.mm_theta : 0.0;
}

// Expected pairs of class k from those of the class below it, for a tau of hundreds, with which the running
// sum is beyond the range of a double: the mutations of the founders are geometric, those since Poisson.
double expected_from_last(const MismatchResult& result, int k, double total) {
    const double theta = result.mm_theta;
    const double tau = result.mm_tau;
    const double poisson = std::exp(k * std::log(tau) - factln(k) - tau);
    const double below = k > 0 ? result.mm_expected[static_cast<std::size_t>(k) - 1] : 0.0;
    return theta / (theta + 1.0) * below + total * poisson / (theta + 1.0);
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
        if (!std::isfinite(expected)) expected = expected_from_last(result, k, total);
        if (expected > kLeastExpected) result.last_expected_class = k;
    }
}

// Chi-square of the classes, from the first one on merged into runs that each have enough expected
// pairs; classes behind the last such run are left out.
void test_fit(MismatchResult& result) {
    reset_chi_square(result);
    if (result.last_expected_class == 0) return;
    int k = 0;
    double expected = 0.0;
    double observed = 0.0;
    for (std::size_t i = 0; i < result.mm_expected.size(); ++i) {
        expected += result.mm_expected[i];
        observed += static_cast<double>(result.mm_counts[i]);
        if (!(expected >= kLeastOfTest)) continue;
        result.mm_chi2 += (expected - observed) * (expected - observed) / expected;
        ++k;
        expected = observed = 0.0;
    }
    result.mm_chi2_df = k - 2;
    result.mm_chi2_p = result.mm_chi2_df < 1 ? -1.0
                                             : Prob_of_chi_sq(static_cast<float>(result.mm_chi2_df),
                                                              static_cast<float>(result.mm_chi2));
}

// Returns: false, with empty tables, when the classes are too many or do not fit into memory
bool make_tables(MismatchResult& result) {
    if (result.max_diff > kMostTabledDifferences) return false;
    try {
        const std::size_t classes = 2 * static_cast<std::size_t>(result.max_diff) + 1;
        result.mm_counts.assign(classes, 0);
        result.mm_expected.assign(classes, 0.0);
        return true;
    } catch (const std::bad_alloc&) {
        std::vector<std::int64_t>().swap(result.mm_counts);
        std::vector<double>().swap(result.mm_expected);
        return false;
    }
}

std::int64_t count_without_distance(const PopGenetics& sample) {
    const int n = sample.hapl_list.count;
    if (sample.dist_mat == nullptr || sample.dist_mat->rows < n) return 0;
    std::int64_t pairs = 0;
    for (int h = 0; h < n; ++h) {
        const std::int64_t copies = sample.hapl_list[h]->freq;
        for (int g = 0; g < h; ++g) {
            if (!std::isfinite(sample.dist_mat->data[h][g])) pairs += copies * sample.hapl_list[g]->freq;
        }
    }
    return pairs;
}

// Returns: false after a report
bool compute_distribution(PopGenetics& sample, std::basic_fstream<char>& out) {
    if (make_tables(sample)) {
        const std::int64_t total = count_pairs(sample, TabledClasses(sample.mm_counts), out);
        estimate_from_moments(sample);
        compute_expected(sample, static_cast<double>(total));
        test_fit(sample);
        return true;
    }
    try {
        count_pairs(sample, ListedClasses(), out);
        estimate_from_moments(sample);
        return true;
    } catch (const std::bad_alloc&) {
        report(Memory, kReporter, kNotEnoughMemory);
        return false;
    }
}

}  // namespace

int PopGenetics::compute_mm_distr(std::basic_fstream<char>& out, settings&) {
    static_cast<MismatchResult&>(*this) = MismatchResult{};
    pairs_without_distance = count_without_distance(*this);
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
    return compute_distribution(*this, out) ? 1 : 0;
}

}  // namespace mnd
