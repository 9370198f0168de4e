#include "within/ewens_sampling.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <vector>

#include "support/seeded_stream.h"

namespace {

using mnd::BnumMat;
using mnd::ConfigurationSampler;
using mnd::probability_below_k;
using mnd::probability_of_k;

constexpr double kOfGammln = 1e-8;  // relative error that the logarithms of gamma leave

void fill(BnumMat& B, int n, int k) {
    ASSERT_EQ(B.re_allocate_matrix(n, k), 1);
}

void expect_relative(double value, double expected, double tolerance) {
    EXPECT_NEAR(value, expected, std::fabs(expected) * tolerance);
}

// --- Probabilities of the number of alleles

// Exact fractions |s(n, k)| theta^k / (theta (theta + 1) ... (theta + n - 1)) from integer Stirling
// numbers, rounded at the end.
TEST(EwensSampling, ProbabilitiesAreThoseOfExactFractions) {
    struct Case {
        int n;
        int k;
        double theta;
        double exactly;
        double fewer;
    };
    BnumMat B(0, 0);
    fill(B, 110, 60);
    for (const Case& c : {Case{10, 4, 2.5, 0.2746117136953563, 0.2491406424256452},
                          Case{25, 10, 3.5, 0.10401745025177157, 0.8000526298070103},
                          Case{25, 3, 3.5, 0.009751057475424069, 0.0017885445856644423},
                          Case{50, 20, 9.75, 0.10458262723524332, 0.6798609380866562},
                          Case{60, 31, 5.0, 2.4067460184984512e-08, 0.999999970349162},
                          Case{100, 50, 12.2, 9.53142708150662e-08, 0.9999998641077421}}) {
        expect_relative(probability_of_k(c.k, c.n, c.theta, B), c.exactly, kOfGammln);
        expect_relative(static_cast<double>(probability_below_k(c.k, c.n, c.theta, B)), c.fewer, kOfGammln);
    }
}

// n = 3, theta = 1: |s(3, k)| = 2, 3, 1 over 1 2 3 = 6.
TEST(EwensSampling, ThreeCopiesByHand) {
    BnumMat B(0, 0);
    fill(B, 5, 5);
    expect_relative(probability_of_k(1, 3, 1.0, B), 2.0 / 6.0, kOfGammln);
    expect_relative(probability_of_k(2, 3, 1.0, B), 3.0 / 6.0, kOfGammln);
    EXPECT_EQ(probability_below_k(1, 3, 1.0, B), 0.0L);
    expect_relative(static_cast<double>(probability_below_k(2, 3, 1.0, B)), 2.0 / 6.0, kOfGammln);
    expect_relative(static_cast<double>(probability_below_k(3, 3, 1.0, B)), 5.0 / 6.0, kOfGammln);
}

TEST(EwensSampling, AsManyAllelesAsCopiesHaveNoProbability) {
    BnumMat B(0, 0);
    fill(B, 5, 5);
    EXPECT_EQ(probability_of_k(3, 3, 1.0, B), 0.0);
    EXPECT_EQ(probability_of_k(4, 3, 1.0, B), 0.0);
    EXPECT_EQ(probability_of_k(0, 3, 1.0, B), 0.0);
    // All numbers of alleles together, that of k = n among them.
    expect_relative(static_cast<double>(probability_below_k(4, 3, 1.0, B)), 1.0, kOfGammln);
    expect_relative(static_cast<double>(probability_below_k(9, 3, 1.0, B)), 1.0, kOfGammln);
}

TEST(EwensSampling, ThetaHasItsLimits) {
    BnumMat B(0, 0);
    fill(B, 10, 10);
    for (const double theta : {0.0, -1.0}) {
        EXPECT_EQ(probability_of_k(1, 5, theta, B), 1.0);
        EXPECT_EQ(probability_of_k(2, 5, theta, B), 0.0);
        EXPECT_EQ(probability_below_k(1, 5, theta, B), 0.0L);
        EXPECT_EQ(probability_below_k(2, 5, theta, B), 1.0L);
    }
    EXPECT_GT(probability_of_k(4, 5, 10000.0, B), 0.0);
    EXPECT_EQ(probability_of_k(4, 5, 10000.1, B), 0.0);
    EXPECT_GT(probability_below_k(4, 5, 10000.0, B), 0.0L);
    EXPECT_EQ(probability_below_k(4, 5, 10000.1, B), 0.0L);
}

// The B numbers of 2000 copies pass the largest double between 600 and 800 alleles. Expected from
// the Stirling recursion with 30 digits and no bound of the exponent.
TEST(EwensSampling, LargeSamplesAreWithinReach) {
    BnumMat B(0, 0);
    fill(B, 2000, 1000);
    ASSERT_FALSE(std::isfinite(B.data[1999][949]));
    expect_relative(probability_of_k(950, 2000, 700.0, B), 0.018819276076494945, 1e-6);
    expect_relative(static_cast<double>(probability_below_k(950, 2000, 700.0, B)), 0.58052999744011564, 1e-6);
    expect_relative(probability_of_k(900, 2000, 600.0, B), 0.012171546521915764, 1e-6);
    expect_relative(static_cast<double>(probability_below_k(900, 2000, 600.0, B)), 0.82756697674222225, 1e-6);
}

// --- Logarithms of products

TEST(LogOfProduct, IsThatOfThePrimeFactors) {
    mnd::LogOfProduct product(30);
    EXPECT_EQ(product.take(), 0.0);
    product.multiply(1, 5);
    EXPECT_EQ(product.take(), 0.0);
    product.multiply(12, 2);
    product.multiply(29, 1);
    EXPECT_NEAR(product.take(), std::log(144.0 * 29.0), 1e-14);
    EXPECT_EQ(product.take(), 0.0);  // it starts again
    product.multiply(10, 1);
    product.multiply(2, 2);
    const double of_40 = product.take();
    product.multiply(8, 1);
    product.multiply(5, 1);
    EXPECT_EQ(product.take(), of_40);
    EXPECT_NE(std::log(10.0) + 2 * std::log(2.0), std::log(8.0) + std::log(5.0));
}

TEST(LogOfProduct, OfLargeNumbersIsWithinRounding) {
    mnd::LogOfProduct product(4999);
    double sum = 0.0;
    for (int c = 1; c <= 4999; ++c) {
        product.multiply(c, 3);
        sum += 3.0 * std::log(c);
    }
    EXPECT_NEAR(product.take(), sum, 1e-12 * sum);
}

// --- Random configurations

class ConfigurationSamplerDraws : public mnd_test::SeededStream {
protected:
    BnumMat B{0, 0};

    // The definition, with nothing kept from one draw to the next.
    template <class Number>
    static std::vector<int> plain_draw(int n, int k, const std::function<Number(int, int)>& b) {
        std::vector<int> counts;
        int m = n;
        for (int i = 1; i < k; ++i) {
            const int j = k - i + 1;
            const Number u = next() * b(m, j);
            int c = 0;
            Number cum = 0;
            if (u > 0) {
                int trial = 1;
                while (trial <= m + 1 - j) {
                    cum += b(m - trial, j - 1) / trial;
                    if (u <= cum) {
                        c = trial;
                        break;
                    }
                    ++trial;
                }
            }
            counts.push_back(c);
            m -= c;
        }
        counts.push_back(m);
        return counts;
    }
    std::vector<int> plain_draw(int n, int k) const {
        return plain_draw<double>(n, k, [this](int a, int b) { return B.data[a - 1][b - 1]; });
    }
    static std::vector<int> draw(ConfigurationSampler& sampler) {
        std::vector<int> counts(static_cast<std::size_t>(sampler.k()));
        sampler.draw(counts.data());
        return counts;
    }
    // Puts a number in the place of the one that the stream hands out next.
    static void set_next(std::int64_t value) {
        if (mnd::uniform_stream.inext == mnd::kStreamLag) next();
        mnd::uniform_stream.ma[mnd::uniform_stream.inext + 1] = value;
    }
};

TEST_F(ConfigurationSamplerDraws, AreThoseOfThePlainSums) {
    fill(B, 700, 90);
    struct Case {
        int n;
        int k;
        int draws;
        std::size_t pool;
    };
    for (const Case& c : {Case{5, 2, 500, 1000}, Case{12, 5, 3000, ConfigurationSampler::kLargestPool},
                          Case{12, 5, 3000, 20}, Case{12, 5, 3000, 0}, Case{12, 11, 500, 1000},
                          Case{12, 12, 100, 1000}, Case{60, 13, 2000, ConfigurationSampler::kLargestPool},
                          Case{60, 13, 2000, 300}, Case{650, 80, 100, ConfigurationSampler::kLargestPool},
                          Case{650, 80, 100, 5000}, Case{650, 3, 300, ConfigurationSampler::kLargestPool}}) {
        seed();
        std::vector<std::vector<int>> expected;
        for (int i = 0; i < c.draws; ++i)
            expected.push_back(plain_draw(c.n, c.k));
        const double after = next();
        seed();
        ConfigurationSampler sampler(c.n, c.k, B, c.pool);
        for (int i = 0; i < c.draws; ++i)
            ASSERT_EQ(draw(sampler), expected[static_cast<std::size_t>(i)]) << c.n << ' ' << c.k << ' ' << i;
        EXPECT_EQ(next(), after);
    }
}

// The B numbers of this sample are beyond a double: the same draws from numbers of more range.
TEST_F(ConfigurationSamplerDraws, AreThoseOfThePlainSumsInLargeSamplesToo) {
    constexpr int n = 1700;
    constexpr int k = 900;
    fill(B, n, k);
    ASSERT_FALSE(std::isfinite(B.data[n - 1][k - 1]));
    std::vector<std::vector<long double>> b(n + 1, std::vector<long double>(k + 1, 0.0L));
    for (int m = 1; m <= n; ++m) {
        for (int j = 1; j <= std::min(m, k); ++j)
            b[static_cast<std::size_t>(m)][static_cast<std::size_t>(j)] =
                m == j ? 1.0L
                       : (j * b[static_cast<std::size_t>(m - 1)][static_cast<std::size_t>(j - 1)] +
                          (m - 1.0L) * b[static_cast<std::size_t>(m - 1)][static_cast<std::size_t>(j)]) /
                             m;
    }
    const std::function<long double(int, int)> number = [&b](int m, int j) {
        return b[static_cast<std::size_t>(m)][static_cast<std::size_t>(j)];
    };
    ConfigurationSampler sampler(n, k, B);
    for (int i = 0; i < 5; ++i) {
        seed();
        for (int skipped = 0; skipped < i; ++skipped)
            next();
        const std::vector<int> expected = plain_draw<long double>(n, k, number);
        seed();
        for (int skipped = 0; skipped < i; ++skipped)
            next();
        const std::vector<int> counts = draw(sampler);
        EXPECT_EQ(counts, expected);
        EXPECT_GE(*std::min_element(counts.begin(), counts.end()), 1);
    }
}

// All partitions of n into k parts with their probabilities given k alleles,
//   n! / (|s(n, k)| prod_c c^a(c) a(c)!),  |s(n, k)| = B(n, k) n!/k!
using Partitions = std::map<std::vector<int>, double>;

void add_partitions(int left, int parts, int largest, std::vector<int>& prefix, Partitions& all) {
    if (parts == 0) {
        if (left == 0) all[prefix] = 0.0;
        return;
    }
    for (int c = std::min(left, largest); c >= 1; --c) {
        prefix.push_back(c);
        add_partitions(left - c, parts - 1, c, prefix, all);
        prefix.pop_back();
    }
}

// |s(n, k)| by its recursion, in integers.
long stirling(int n, int k) {
    if (n == k) return 1;
    if (k < 1 || k > n) return 0;
    return stirling(n - 1, k - 1) + (n - 1) * stirling(n - 1, k);
}

double factorial(int n) {
    double product = 1.0;
    for (int i = 2; i <= n; ++i)
        product *= i;
    return product;
}

Partitions partitions(int n, int k) {
    Partitions all;
    std::vector<int> prefix;
    add_partitions(n, k, n, prefix, all);
    for (auto& [counts, probability] : all) {
        std::map<int, int> classes;
        for (const int c : counts)
            ++classes[c];
        double divisor = 1.0;
        for (const auto& [c, a] : classes)
            divisor *= std::pow(c, a) * factorial(a);
        probability = factorial(n) / (static_cast<double>(stirling(n, k)) * divisor);
    }
    return all;
}

// Each partition as often as it should, within 5 standard deviations, over all partitions of each
// n and k; none that does not exist.
TEST_F(ConfigurationSamplerDraws, HaveTheProbabilitiesOfAllPartitions) {
    constexpr int kDraws = 40000;
    fill(B, 20, 20);
    for (int n = 3; n <= 10; ++n) {
        for (int k = 2; k < n; ++k) {
            const Partitions expected = partitions(n, k);
            double total = 0.0;
            for (const auto& [counts, probability] : expected)
                total += probability;
            ASSERT_NEAR(total, 1.0, 1e-12) << n << ' ' << k;
            std::map<std::vector<int>, int> seen;
            ConfigurationSampler sampler(n, k, B);
            for (int i = 0; i < kDraws; ++i) {
                const int* const counts = sampler.draw_sorted();
                ++seen[{counts, counts + k}];
            }
            for (const auto& [counts, times] : seen)
                EXPECT_TRUE(expected.contains(counts)) << n << ' ' << k;
            for (const auto& [counts, p] : expected) {
                const double sd = std::sqrt(kDraws * p * (1.0 - p));
                EXPECT_NEAR(seen[counts], kDraws * p, 5.0 * sd + 1e-9) << n << ' ' << k;
            }
        }
    }
}

TEST_F(ConfigurationSamplerDraws, TakeOneNumberLessThanThereAreAlleles) {
    fill(B, 40, 40);
    for (const int k : {1, 2, 17, 40}) {
        ConfigurationSampler sampler(40, k, B);
        mnd::reset_draws_taken();
        const std::vector<int> counts = draw(sampler);
        EXPECT_EQ(mnd::draws_taken(), static_cast<std::uint64_t>(k - 1));
        int sum = 0;
        for (const int c : counts)
            sum += c;
        EXPECT_EQ(sum, 40);
    }
}

TEST_F(ConfigurationSamplerDraws, OfOneAlleleAndOfAllDifferentAreFixed) {
    fill(B, 10, 10);
    ConfigurationSampler one(7, 1, B);
    EXPECT_EQ(draw(one), std::vector<int>{7});
    EXPECT_EQ(one.draw_first(), 7);
    ConfigurationSampler all(7, 7, B);
    EXPECT_EQ(draw(all), std::vector<int>(7, 1));
}

// A number 0 gives the count 0, and leaves more copies to the next alleles than they can have
// otherwise.
TEST_F(ConfigurationSamplerDraws, ANumberOfZeroGivesACountOfZero) {
    fill(B, 20, 20);
    for (const std::size_t pool : {std::size_t{0}, ConfigurationSampler::kLargestPool}) {
        ConfigurationSampler sampler(9, 4, B, pool);
        for (int i = 0; i < 50; ++i) {
            set_next(0);
            const std::vector<int> counts = draw(sampler);
            EXPECT_EQ(counts[0], 0);
            EXPECT_GE(*std::min_element(counts.begin() + 1, counts.end()), 1);
            EXPECT_EQ(counts[1] + counts[2] + counts[3], 9);
        }
    }
}

TEST_F(ConfigurationSamplerDraws, TheFirstCountAloneIsThatOfAWholeDraw) {
    fill(B, 40, 20);
    ConfigurationSampler sampler(40, 11, B);
    for (int i = 0; i < 100; ++i) {
        seed();
        for (int skipped = 0; skipped < i; ++skipped)
            next();
        const int first = draw(sampler).front();
        seed();
        for (int skipped = 0; skipped < i; ++skipped)
            next();
        mnd::reset_draws_taken();
        EXPECT_EQ(sampler.draw_first(), first);
        EXPECT_EQ(mnd::draws_taken(), 1U);
    }
}

TEST_F(ConfigurationSamplerDraws, AreSortedInDescendingOrder) {
    fill(B, 60, 20);
    ConfigurationSampler sampler(60, 9, B);
    for (int i = 0; i < 100; ++i) {
        const int* const counts = sampler.draw_sorted();
        EXPECT_TRUE(std::is_sorted(counts, counts + 9, std::greater<>()));
    }
}

}  // namespace
