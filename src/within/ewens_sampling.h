// The sampling theory of neutral alleles: the distribution of the number of alleles in a sample,
// and random samples with a given number of alleles.
//
// Source: Ewens 1972, Theoretical Population Biology 3:87-112. B(n, k) are the B numbers of
//         `BnumMat`. Where they are beyond double precision (from about 1558 gene copies of 890
//         alleles on) they are formed anew in extended precision.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "foundation/bnum_mat.h"

namespace mnd {

// Samples that the tests serve have fewer gene copies and fewer alleles than these.
inline constexpr int kNeutralityCopyLimit = 5000;
inline constexpr int kNeutralityAlleleLimit = 1000;

// Above this theta the probabilities of the number of alleles are taken as 0.
inline constexpr double kLargestSamplingTheta = 10000.0;

// Bound of the error of a probability below, that of `gammln` and `factln`.
inline constexpr double kErrorOfProbabilities = 1e-8;

// P(K = k | theta) among n gene copies,
//
//   B(n, k) exp(ln Gamma(theta) + ln n! + k ln theta - ln Gamma(n + theta) - ln k!)
//
//   B   a table of at least n rows and k columns, when k is 1 to n - 1
// Theta of 0 or less gives 1 for k = 1 and 0 otherwise; theta above kLargestSamplingTheta gives 0.
// Kept on purpose: k of n or more has the probability 0, though k = n can happen.
// Test: EwensSampling.AsManyAllelesAsCopiesHaveNoProbability
double probability_of_k(int k, int n, double theta, const BnumMat& B);

// P(K < k | theta), the sum of the same over 1 .. k - 1 in extended precision; k above n counts as
// n + 1. Theta of 0 or less gives 1 for k of 2 or more, and 0 otherwise; theta above
// kLargestSamplingTheta gives 0. A probability closer to 1 than its error can come out above it.
//   B   a table of at least n rows and k - 1 columns
long double probability_below_k(int k, int n, double theta, const BnumMat& B);

// ln of a product of whole numbers from 1 to n, summed over its prime factors in ascending order:
// products that are equal have the same logarithm to the last digit, whatever their factors.
class LogOfProduct {
public:
    explicit LogOfProduct(int n);
    // Multiplies the product by c^times, c of 1 to n.
    void multiply(int c, int times);
    // The logarithm; the product is 1 again.
    double take();

private:
    std::vector<int> factor_;     // of each number up to n, the place of a prime factor in primes
    std::vector<int> primes_;     // up to n, ascending
    std::vector<double> log_of_;  // ln of each prime
    std::vector<int> exponents_;  // of each prime in the product
    int num_used_ = 0;            // primes from the first to the largest one in the product
};

// Draws the allele counts of n gene copies with exactly k alleles under neutrality, whatever theta.
//
// The alleles are drawn one after the other: of m copies left with j alleles, the next one has c
// copies with the probability B(m - c, j - 1)/(c B(m, j)), c = 1 .. m + 1 - j; the last takes what
// remains. The running sums over c are kept, for the states (m, j) seen, as long as there is room
// for them: a draw is then a binary search in the same sums.
// Source: Stewart 1977, Genetics 86:482-483
class ConfigurationSampler {
public:
    // Room for running sums that a sampler takes at most, in numbers.
    static constexpr std::size_t kLargestPool = std::size_t{1} << 22;

    //   n, k       1 <= k <= n
    //   B          a table of at least n rows and k columns; it must stay as it is
    //   pool_size  room for running sums; without any the sums are formed at each draw
    ConfigurationSampler(int n, int k, const BnumMat& B, std::size_t pool_size = kLargestPool);
    ~ConfigurationSampler();
    ConfigurationSampler(const ConfigurationSampler&) = delete;
    ConfigurationSampler& operator=(const ConfigurationSampler&) = delete;

    int n() const { return n_; }
    int k() const { return k_; }

    // One configuration into counts[0..k-1], in the order of drawing. A count is 0 when the number
    // drawn is 0, or is above the last sum by rounding.
    // Draws:    k - 1
    void draw(int* counts);
    // One configuration in descending order, k counts that stay until the next draw.
    // Draws:    k - 1
    const int* draw_sorted();
    // For products of counts.
    LogOfProduct& log_of_product() { return log_of_product_; }
    // The first count alone.
    // Draws:    1, or none for one allele
    int draw_first();

private:
    struct State {
        std::int32_t offset = -1;  // of its sums in the pool; -1: not seen yet, -2: no room
        std::int32_t filled = 0;   // sums made so far
    };
    struct LongTable;

    int next_count(int m, int j);
    int count_by_sums(int m, int j, double u, State& state);
    int count_without_sums(int m, int j, double u) const;
    int count_in_long_table(int m, int j, double uniform) const;
    bool give_room(State& state, int length);

    int n_;
    int k_;
    const BnumMat& B_;         // not owned
    std::vector<int> counts_;  // owned: k, the configuration of draw_sorted
    LogOfProduct log_of_product_;
    std::size_t pool_size_ = 0;              // numbers
    std::size_t pool_used_ = 0;              // numbers
    std::unique_ptr<double[]> pool_;         // owned: running sums of the states seen
    std::vector<State> states_;              // owned: of (m, j) at (j - 2)(n - k + 1) + m - j
    std::unique_ptr<LongTable> long_table_;  // owned: B numbers that double precision lacks; else null
};

}  // namespace mnd
