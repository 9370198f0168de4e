#include "within/ewens_sampling.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "foundation/random.h"
#include "foundation/special_functions.h"

namespace mnd {

namespace {

constexpr std::int32_t kNoRoom = -2;

double b_number(const BnumMat& B, int n, int k) {
    return B.data[n - 1][k - 1];
}

// ln of Gamma(theta) n!/Gamma(n + theta), what all probabilities of one theta share.
double log_scale(int n, double theta) {
    return factln(n) + gammln(theta) - gammln(n + theta);
}

// B(m, j) theta^j / j! for j = 1 .. last; not finite when the numbers are beyond their type.
template <typename Number>
long double sum_of_terms(const Number* b_numbers, int last, double log_theta) {
    long double sum = 0.0L;
    for (int j = 1; j <= last; ++j)
        sum += b_numbers[j - 1] * std::exp(static_cast<long double>(j * log_theta - factln(j)));
    return sum;
}

}  // namespace

double probability_of_k(int k, int n, double theta, const BnumMat& B) {
    if (theta <= 0.0) return k == 1 ? 1.0 : 0.0;
    if (theta > kLargestSamplingTheta || k >= n || k < 1) return 0.0;
    const double table_value = b_number(B, n, k);
    const long double b = std::isfinite(table_value) ? table_value : long_b_numbers(n, k, B).back();
    const double exponent = gammln(theta) + factln(n) + k * std::log(theta) - gammln(n + theta) - factln(k);
    return static_cast<double>(b * std::exp(static_cast<long double>(exponent)));
}

long double probability_below_k(int k, int n, double theta, const BnumMat& B) {
    if (theta <= 0.0) return k > 1 ? 1.0L : 0.0L;
    const int last = std::min(k - 1, n);
    if (theta > kLargestSamplingTheta || last < 1) return 0.0L;
    const double log_theta = std::log(theta);
    long double sum = sum_of_terms(B.data[n - 1], last, log_theta);
    if (!std::isfinite(sum)) sum = sum_of_terms(long_b_numbers(n, last, B).data(), last, log_theta);
    return sum * std::exp(static_cast<long double>(log_scale(n, theta)));
}

LogOfProduct::LogOfProduct(int n) : factor_(static_cast<std::size_t>(n) + 1, -1) {
    for (int p = 2; p <= n; ++p) {
        if (factor_[static_cast<std::size_t>(p)] >= 0) continue;
        const int place = static_cast<int>(primes_.size());
        primes_.push_back(p);
        log_of_.push_back(std::log(p));
        for (int multiple = p; multiple <= n; multiple += p)
            factor_[static_cast<std::size_t>(multiple)] = place;
    }
    exponents_.resize(primes_.size());
}

void LogOfProduct::multiply(int c, int times) {
    while (c > 1) {
        const int place = factor_[static_cast<std::size_t>(c)];
        exponents_[static_cast<std::size_t>(place)] += times;
        num_used_ = std::max(num_used_, place + 1);
        c /= primes_[static_cast<std::size_t>(place)];
    }
}

double LogOfProduct::take() {
    double sum = 0.0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(num_used_); ++i) {
        if (exponents_[i] == 0) continue;
        sum += exponents_[i] * log_of_[i];
        exponents_[i] = 0;
    }
    num_used_ = 0;
    return sum;
}

// The B numbers up to (n, k), row after row of k cells.
struct ConfigurationSampler::LongTable {
    LongTable(int n, int k) : columns(k), cells(static_cast<std::size_t>(n) * static_cast<std::size_t>(k)) {
        cells[0] = 1.0L;
        for (int genes = 2; genes <= n; ++genes) {
            long double* const row =
                &cells[static_cast<std::size_t>(genes - 1) * static_cast<std::size_t>(k)];
            std::copy(row - k, row, row);
            next_b_numbers(row, genes, k);
        }
    }
    long double at(int n, int k) const {
        return cells[static_cast<std::size_t>(n - 1) * static_cast<std::size_t>(columns) +
                     static_cast<std::size_t>(k - 1)];
    }
    int columns;
    std::vector<long double> cells;
};

ConfigurationSampler::~ConfigurationSampler() = default;

// B(n, k) is the sum of B(n - c, k - 1)/c: when n B(n, k) is a double, so is all that a draw reads.
ConfigurationSampler::ConfigurationSampler(int n, int k, const BnumMat& B, std::size_t pool_size)
    : n_(n), k_(k), B_(B), counts_(static_cast<std::size_t>(k)), log_of_product_(n) {
    if (k < 2) return;
    if (!(b_number(B, n, k) <= std::numeric_limits<double>::max() / n)) {
        long_table_ = std::make_unique<LongTable>(n, k);
        return;
    }
    const auto alleles = static_cast<std::size_t>(k - 1);
    const auto longest = static_cast<std::size_t>(n - k + 1);
    pool_size_ = std::min(pool_size, alleles * longest * (longest + 1) / 2);
    if (pool_size_ == 0) return;
    pool_ = std::make_unique_for_overwrite<double[]>(pool_size_);
    states_.resize(alleles * longest);
}

void ConfigurationSampler::draw(int* counts) {
    int left = n_;
    for (int j = k_; j > 1; --j) {
        *counts = next_count(left, j);
        left -= *counts++;
    }
    *counts = left;
}

const int* ConfigurationSampler::draw_sorted() {
    draw(counts_.data());
    std::sort(counts_.begin(), counts_.end(), std::greater<>());
    return counts_.data();
}

int ConfigurationSampler::draw_first() {
    return k_ < 2 ? n_ : next_count(n_, k_);
}

// Count of the next allele when m copies are left for j alleles, j of 2 or more.
int ConfigurationSampler::next_count(int m, int j) {
    const double uniform = ran3();
    if (long_table_ != nullptr) return count_in_long_table(m, j, uniform);
    const double u = uniform * b_number(B_, m, j);
    if (u <= 0.0) return 0;
    // A count of 0 leaves more copies than the states have room for.
    const int spare = m - j;
    if (states_.empty() || spare > n_ - k_) return count_without_sums(m, j, u);
    State& state = states_[static_cast<std::size_t>(j - 2) * static_cast<std::size_t>(n_ - k_ + 1) +
                           static_cast<std::size_t>(spare)];
    if (!give_room(state, spare + 1)) return count_without_sums(m, j, u);
    return count_by_sums(m, j, u, state);
}

// Returns: false when the pool has no room for the running sums of a state
bool ConfigurationSampler::give_room(State& state, int length) {
    if (state.offset >= 0) return true;
    if (state.offset == kNoRoom) return false;
    if (pool_size_ - pool_used_ < static_cast<std::size_t>(length)) {
        state.offset = kNoRoom;
        return false;
    }
    state.offset = static_cast<std::int32_t>(pool_used_);
    pool_used_ += static_cast<std::size_t>(length);
    return true;
}

// The first c whose running sum is at least u; sums are added up to there.
int ConfigurationSampler::count_by_sums(int m, int j, double u, State& state) {
    double* const sums = &pool_[static_cast<std::size_t>(state.offset)];
    double sum = state.filled == 0 ? 0.0 : sums[state.filled - 1];
    if (u <= sum) return static_cast<int>(std::lower_bound(sums, sums + state.filled, u) - sums) + 1;
    for (int c = state.filled + 1; c <= m + 1 - j; ++c) {
        sum += b_number(B_, m - c, j - 1) / c;
        sums[c - 1] = sum;
        state.filled = c;
        if (u <= sum) return c;
    }
    return 0;
}

int ConfigurationSampler::count_without_sums(int m, int j, double u) const {
    double sum = 0.0;
    for (int c = 1; c <= m + 1 - j; ++c) {
        sum += b_number(B_, m - c, j - 1) / c;
        if (u <= sum) return c;
    }
    return 0;
}

int ConfigurationSampler::count_in_long_table(int m, int j, double uniform) const {
    const long double u = uniform * long_table_->at(m, j);
    if (u <= 0.0L) return 0;
    long double sum = 0.0L;
    for (int c = 1; c <= m + 1 - j; ++c) {
        sum += long_table_->at(m - c, j - 1) / c;
        if (u <= sum) return c;
    }
    return 0;
}

}  // namespace mnd
