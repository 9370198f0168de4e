#include "between/pairwise_tests.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

#include "foundation/random.h"
#include "input/dist_mat.h"
#include "run/settings.h"
#include "support/seeded_stream.h"

namespace mnd {
namespace {

using Rows = std::vector<int>;

void fill(DistMat& D, int rows, const std::function<double(int, int)>& distance) {
    D.initializeMatrixAndArrays(rows);
    D.MatrixSize = rows;
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j <= i; ++j)
            D(i, j) = distance(i, j);
    }
}

// The statistics of an arrangement straight from their definitions.
struct Plain {
    double Va, pi_X, pi_Y, pi_XY, corrected;
};
Plain plain_statistics(const DistMat& D, const Rows& rows, int n_i) {
    double within_i = 0.0, within_j = 0.0, between = 0.0;
    const int N = static_cast<int>(rows.size());
    for (int a = 0; a < N; ++a) {
        for (int b = 0; b < a; ++b)
            (a < n_i ? within_i : b >= n_i ? within_j : between) += D(rows[a], rows[b]);
    }
    const int n_j = N - n_i;
    Plain s;
    s.pi_X = n_i > 1 ? within_i / (n_i * (n_i - 1) / 2.0) : 0.0;
    s.pi_Y = n_j > 1 ? within_j / (n_j * (n_j - 1) / 2.0) : 0.0;
    s.pi_XY = between / (n_i * n_j);
    s.corrected = s.pi_XY - 0.5 * (s.pi_X + s.pi_Y);
    const double ms_within = (within_i / n_i + within_j / n_j) / (N - 2);
    const double ss_among = (within_i + within_j + between) / N - within_i / n_i - within_j / n_j;
    const double n_0 = 2.0 * n_i * n_j / N;
    s.Va = (ss_among - ms_within) / n_0;
    return s;
}

struct Pair {
    DistMat D;
    Rows rows;
    int n_i = 0;
};

PairObserved observe(const Pair& pair) {
    PairBlock block(pair.D, pair.rows, pair.n_i);
    const PairDesign design = pair_design(pair.n_i, static_cast<double>(pair.rows.size()) - pair.n_i);
    PairObserved observed;
    observed.variance = pair_variance(design, block.sums());
    observed.differences = pair_differences(design, block.sums());
    return observed;
}

PairTestResult run_test(const Pair& pair, long permutations, bool individuals) {
    PairBlock block(pair.D, pair.rows, pair.n_i);
    const PairDesign design = pair_design(pair.n_i, static_cast<double>(pair.rows.size()) - pair.n_i);
    PairTestPlan plan;
    plan.permutations = plan_batches(permutations);
    plan.shuffles_individuals = individuals;
    const settings s;
    PairTestResult result;
    EXPECT_TRUE(test_pair(block, design, observe(pair), plan, s, result));
    return result;
}

// The same test with nothing shared: rows are shuffled as such and all statistics taken anew.
PairTestResult plain_test(const Pair& pair, long asked, bool individuals, const std::function<double()>& u) {
    const int S = static_cast<int>(std::sqrt(static_cast<double>(asked)));
    const int per_class = static_cast<int>(asked / S) + 1;
    const int total = S * per_class;
    const Plain observed = plain_statistics(pair.D, pair.rows, pair.n_i);
    Rows rows = pair.rows;
    const int N = static_cast<int>(rows.size());
    std::vector<int> hits_of(static_cast<std::size_t>(S), 0);
    int hits = 0, pi_hits = 0, corrected_hits = 0;
    for (int p = 0; p < total; ++p) {
        if (individuals) {
            for (int k = N - 1; k > pair.n_i + 1; k -= 2) {
                const int second = static_cast<int>(k * u()) / 2 * 2 + 1;
                std::swap(rows[static_cast<std::size_t>(k)], rows[static_cast<std::size_t>(second)]);
                std::swap(rows[static_cast<std::size_t>(k - 1)], rows[static_cast<std::size_t>(second - 1)]);
            }
        } else {
            for (int k = N - 1; k > pair.n_i; --k)
                std::swap(rows[static_cast<std::size_t>(k)], rows[static_cast<std::size_t>(k * u())]);
        }
        const Plain s = plain_statistics(pair.D, rows, pair.n_i);
        if (s.Va > observed.Va - 1e-9) {
            ++hits;
            ++hits_of[static_cast<std::size_t>(p % S)];
        }
        if (s.pi_XY > observed.pi_XY - 1e-9) ++pi_hits;
        if (s.corrected > observed.corrected - 1e-9) ++corrected_hits;
    }
    PairTestResult r;
    r.fst_p = hits / (total + 1.0);
    r.pi_p = pi_hits / static_cast<double>(total);
    r.pi_corr_p = corrected_hits / static_cast<double>(total);
    double squares = 0.0;
    for (const int h : hits_of)
        squares += std::pow(h / static_cast<double>(per_class) - r.fst_p, 2.0);
    r.fst_sd = S < 2 ? 0.0 : std::sqrt(squares / ((S - 1.0) * S));
    return r;
}

// Shares of all ways to divide the copies between the samples.
PairTestResult full_enumeration(const Pair& pair) {
    const Plain observed = plain_statistics(pair.D, pair.rows, pair.n_i);
    std::vector<int> in_second(pair.rows.size(), 0);
    std::fill(in_second.begin() + pair.n_i, in_second.end(), 1);
    PairTestResult r;
    int ways = 0;
    do {
        Rows first, second;
        for (std::size_t i = 0; i < pair.rows.size(); ++i)
            (in_second[i] != 0 ? second : first).push_back(pair.rows[i]);
        first.insert(first.end(), second.begin(), second.end());
        const Plain s = plain_statistics(pair.D, first, pair.n_i);
        if (s.Va > observed.Va - 1e-9) r.fst_p += 1.0;
        if (s.pi_XY > observed.pi_XY - 1e-9) r.pi_p += 1.0;
        if (s.corrected > observed.corrected - 1e-9) r.pi_corr_p += 1.0;
        ++ways;
    } while (std::next_permutation(in_second.begin(), in_second.end()));
    r.fst_p /= ways;
    r.pi_p /= ways;
    r.pi_corr_p /= ways;
    return r;
}

class PairTestStream : public mnd_test::SeededStream {
protected:
    std::mt19937 random_{7};

    // Copies of the second sample tend to rows further up.
    void make(Pair& pair, int n_i, int n_j, int rows, double scale) {
        std::vector<int> cells(static_cast<std::size_t>(rows * rows));
        for (int& cell : cells)
            cell = 1 + static_cast<int>(random_() % 9);
        fill(pair.D, rows, [&](int i, int j) {
            return i == j ? 0.0 : scale * cells[static_cast<std::size_t>(i * rows + j)];
        });
        pair.n_i = n_i;
        for (int i = 0; i < n_i + n_j; ++i) {
            const int row = static_cast<int>(random_() % static_cast<unsigned>(rows));
            pair.rows.push_back(i < n_i ? row / 2 : row);
        }
    }
};

TEST_F(PairTestStream, CountersAreThoseOfAPlainTest) {
    for (const bool individuals : {false, true}) {
        // Whole distances, conventional-like ones and fractions that are sums of powers of 2, so
        // that the plain sums are exact too.
        for (const double scale : {1.0, 5000.0, 0.125}) {
            for (const int n_i : {4, 6, 12}) {
                Pair pair;
                make(pair, n_i, 8, 15, scale);
                seed();
                const PairTestResult found = run_test(pair, 200, individuals);
                const double left = next();
                seed();
                const PairTestResult expected = plain_test(pair, 200, individuals, next);
                EXPECT_EQ(next(), left);
                EXPECT_EQ(found.fst_p, expected.fst_p);
                EXPECT_DOUBLE_EQ(found.fst_sd, expected.fst_sd);
                EXPECT_EQ(found.pi_p, expected.pi_p);
                EXPECT_EQ(found.pi_corr_p, expected.pi_corr_p);
                EXPECT_EQ(found.tau_p, 0.0);
            }
        }
    }
}

// All 70 ways of dividing 8 copies, 56 of dividing them 3 to 5. The error of a proportion from
// 40000 permutations is below 0.0025; successive ones hang together, so four times that is allowed.
TEST_F(PairTestStream, ProportionsAreThoseOfAllArrangements) {
    for (const int n_i : {3, 4}) {
        for (int repeat = 0; repeat < 3; ++repeat) {
            Pair pair;
            make(pair, n_i, 8 - n_i, 6, 1.0);
            const PairTestResult found = run_test(pair, 40000, false);
            const PairTestResult expected = full_enumeration(pair);
            EXPECT_NEAR(found.fst_p, expected.fst_p, 0.01);
            EXPECT_NEAR(found.pi_p, expected.pi_p, 0.01);
            EXPECT_NEAR(found.pi_corr_p, expected.pi_corr_p, 0.01);
        }
    }
}

// Without differences each permutation gives what was observed.
TEST_F(PairTestStream, AllPermutationsHitInSamplesAlike) {
    Pair pair;
    fill(pair.D, 3, [](int, int) { return 0.0; });
    pair.rows = {0, 1, 2, 0, 1, 2};
    pair.n_i = 3;
    // 1000 permutations asked for: 31 classes of 33.
    const PairTestResult r = run_test(pair, 1000, false);
    EXPECT_DOUBLE_EQ(r.fst_p, 1023.0 / 1024.0);
    EXPECT_LT(r.fst_p, 1.0);
    EXPECT_EQ(r.pi_p, 1.0);
    EXPECT_EQ(r.pi_corr_p, 1.0);
    // Each class has the proportion 1: 31 (1 - 1023/1024)^2 / (30 x 31), the root of it.
    EXPECT_NEAR(r.fst_sd, std::sqrt(1.0 / 30.0) / 1024.0, 1e-15);
}

// Samples of one size: the corrected difference depends on the sum between the samples alone,
// whichever way the rest is shared out within them; rounded, it does not.
TEST_F(PairTestStream, ArrangementsOfEqualValueAreHits) {
    const PairDesign design = pair_design(7.0, 7.0);
    int equal = 0;
    for (int first = 0; first < 60; ++first) {
        const PairDifferences one = pair_differences(design, {1.0 * first, 60.0 - first, 77.0});
        const PairDifferences other = pair_differences(design, {30.0, 30.0, 77.0});
        EXPECT_EQ(one.corrected_multiple, other.corrected_multiple);
        if (one.corrected == other.corrected) ++equal;
    }
    EXPECT_LT(equal, 60);
}

// One copy each: nothing can be shuffled, no number is drawn and all is as observed.
TEST_F(PairTestStream, OneCopyEachIsAlwaysAsObserved) {
    Pair pair;
    fill(pair.D, 2, [](int i, int j) { return i == j ? 0.0 : 3.3; });
    pair.rows = {0, 1};
    pair.n_i = 1;
    reset_draws_taken();
    const PairTestResult r = run_test(pair, 100, false);
    EXPECT_EQ(draws_taken(), 0u);
    EXPECT_DOUBLE_EQ(r.fst_p, 110.0 / 111.0);
    EXPECT_EQ(r.pi_p, 1.0);
}

// The observed arrangement, met again, is a hit of the tests without tolerance, whatever rounding
// does to the sums.
TEST_F(PairTestStream, TheObservedArrangementIsAHit) {
    for (int repeat = 0; repeat < 50; ++repeat) {
        Pair pair;
        make(pair, 5, 4, 9, 1.0 / 3.0);
        const PairObserved observed = observe(pair);
        PairTestCounters counters(observed, plan_batches(1));
        PairBlock block(pair.D, pair.rows, pair.n_i);
        const PairSSD ssd = block.sums();
        const PairDesign design = pair_design(5.0, 4.0);
        for (int i = 0; i < 2; ++i) {
            counters.count_component(permuted_component(design, ssd));
            counters.count_differences(pair_differences(design, ssd));
        }
        const PairTestResult r = counters.result();
        EXPECT_DOUBLE_EQ(r.fst_p, 2.0 / 3.0);
        EXPECT_EQ(r.pi_p, 1.0);
        EXPECT_EQ(r.pi_corr_p, 1.0);
        EXPECT_EQ(r.fst_sd, 0.0);
    }
}

TEST_F(PairTestStream, StopsAtOnceWhenAskedTo) {
    Pair pair;
    make(pair, 4, 4, 6, 1.0);
    PairBlock block(pair.D, pair.rows, pair.n_i);
    settings s;
    s.stop_computations = 1;
    PairTestPlan plan;
    plan.permutations = plan_batches(1000);
    PairTestResult result;
    result.fst_p = -1.0;
    const double before = settings::global_work_done;
    reset_draws_taken();
    EXPECT_FALSE(test_pair(block, pair_design(4.0, 4.0), observe(pair), plan, s, result));
    EXPECT_EQ(result.fst_p, -1.0);
    EXPECT_EQ(draws_taken(), 100u * 3u);
    EXPECT_EQ(settings::global_work_done, before + 1.0);
}

// --- Divergence

TEST_F(PairTestStream, DivergenceNeedsAllThreeDifferences) {
    const PairDifferences d = {1.0, 1.5, 3.0, 0.0, 0.0};
    const PairDivergence found = pair_divergence(d);
    EXPECT_EQ(found.not_converged, 0.0);
    EXPECT_GT(found.tau, 0.0);
    EXPECT_NEAR(found.tau + found.theta0, 3.0, 3e-4);
    for (const auto part : {&PairDifferences::pi_X, &PairDifferences::pi_Y, &PairDifferences::pi_XY}) {
        PairDifferences none = d;
        none.*part = 0.0;
        const PairDivergence nothing = pair_divergence(none);
        EXPECT_EQ(nothing.tau, 0.0);
        EXPECT_EQ(nothing.k_ratio, 0.0);
        EXPECT_EQ(nothing.theta0, 0.0);
        EXPECT_EQ(nothing.not_converged, 0.0);
    }
}

TEST_F(PairTestStream, DivergenceThatIsNotFoundIsMarked) {
    EXPECT_EQ(pair_divergence({1.0, 1.0, -5.0, 0.0, 0.0}).not_converged, 1.0);
}

// Each attempt but the first draws three numbers.
TEST_F(PairTestStream, DivergenceTakesFiftyAttempts) {
    reset_draws_taken();
    pair_divergence({1.0, 1.0, -5.0, 0.0, 0.0});
    EXPECT_EQ(draws_taken(), 3u * 49u);
}

// A second sample of one copy has no differences within. The equations are at rest there, so that
// a solver would find roots all the time.
TEST_F(PairTestStream, PermutationsThatLackADifferenceAreNotSolved) {
    Pair pair;
    fill(pair.D, 2, [](int i, int j) { return i == j ? 0.0 : 1.0; });
    pair.rows = {0, 0, 0, 0, 1};
    pair.n_i = 3;
    PairTestPlan plan;
    plan.permutations = plan_batches(100);
    plan.solves_divergence = true;
    const settings s;
    // {0, 0, 0} and {0, 1}, or {0, 0, 1} and {0, 0}: there is always a sample without differences.
    PairBlock block(pair.D, pair.rows, pair.n_i);
    PairTestResult found;
    reset_draws_taken();
    ASSERT_TRUE(test_pair(block, pair_design(3.0, 2.0), observe(pair), plan, s, found));
    EXPECT_EQ(draws_taken(), 110u);
    EXPECT_EQ(found.tau_p, 0.0);
    EXPECT_EQ(found.k_p, 0.0);
    EXPECT_EQ(found.theta0_p, 0.0);
    EXPECT_GT(found.pi_p, 0.0);
}

// Each permutation solved anew, by a fresh solver.
TEST_F(PairTestStream, DivergenceIsCountedOverTheSolvedPermutations) {
    Pair pair;
    make(pair, 6, 7, 10, 1.0);
    PairObserved observed = observe(pair);
    observed.divergence = pair_divergence(observed.differences);
    PairTestPlan plan;
    plan.permutations = plan_batches(60);
    plan.solves_divergence = true;
    PairBlock block(pair.D, pair.rows, pair.n_i);
    const settings s;
    PairTestResult found;
    seed();
    ASSERT_TRUE(test_pair(block, pair_design(6.0, 7.0), observed, plan, s, found));
    seed();
    Rows rows = pair.rows;
    int solved = 0, tau_hits = 0, k_hits = 0, theta_hits = 0;
    for (std::int64_t p = 0; p < plan.permutations.total; ++p) {
        for (int k = 12; k > 6; --k)
            std::swap(rows[static_cast<std::size_t>(k)], rows[static_cast<std::size_t>(k * next())]);
        const Plain d = plain_statistics(pair.D, rows, 6);
        if (d.pi_X == 0.0 || d.pi_Y == 0.0 || d.pi_XY == 0.0) continue;
        TSolveDivTimes solver(d.pi_X, d.pi_Y, d.pi_XY);
        if (solver.solve(20) != 0) continue;
        ++solved;
        if (static_cast<double>(solver.tau) >= observed.divergence.not_converged) ++tau_hits;
        if (static_cast<double>(solver.k) >= observed.divergence.k_ratio) ++k_hits;
        if (static_cast<double>(solver.theta) >= observed.divergence.theta0) ++theta_hits;
    }
    ASSERT_GT(solved, 0);
    EXPECT_EQ(found.tau_p, tau_hits / static_cast<double>(solved));
    EXPECT_EQ(found.k_p, k_hits / static_cast<double>(solved));
    EXPECT_EQ(found.theta0_p, theta_hits / static_cast<double>(solved));
}

// --- Counters

PairDifferences differences_of(double pi_XY, double corrected) {
    PairDifferences d;
    d.pi_XY = pi_XY;
    d.corrected_multiple = corrected;
    return d;
}

PairObserved observed_of(double Va, double pi_XY, double corrected) {
    PairObserved o;
    o.variance.Va = Va;
    o.differences = differences_of(pi_XY, corrected);
    return o;
}

TEST(PairTestCounters, FstAloneDividesByOneMore) {
    // 2 asked for: 1 class of 3.
    PairTestCounters counters(observed_of(1.0, 1.0, 1.0), plan_batches(2));
    for (int i = 0; i < 3; ++i) {
        counters.count_component(1.0);
        counters.count_differences(differences_of(1.0, 1.0));
    }
    const PairTestResult r = counters.result();
    EXPECT_EQ(r.fst_p, 0.75);
    EXPECT_EQ(r.pi_p, 1.0);
    EXPECT_EQ(r.pi_corr_p, 1.0);
}

TEST(PairTestCounters, OnlyTheComponentHasATolerance) {
    PairTestCounters counters(observed_of(1.0, 1.0, 1.0), plan_batches(2));
    counters.count_component(1.0 - 0.5e-10);
    counters.count_component(1.0 - 2e-10);
    counters.count_component(2.0);
    counters.count_differences(differences_of(1.0 - 1e-15, 1.0));
    counters.count_differences(differences_of(1.0, 1.0 - 1e-15));
    counters.count_differences(differences_of(2.0, 2.0));
    const PairTestResult r = counters.result();
    EXPECT_EQ(r.fst_p, 2.0 / 4.0);
    EXPECT_DOUBLE_EQ(r.pi_p, 2.0 / 3.0);
    EXPECT_DOUBLE_EQ(r.pi_corr_p, 2.0 / 3.0);
}

// 4 asked for: 2 classes of 3. Hits 1, 0, 1, 0, 1, 1 go to the classes in turn: 3 and 1 of 3, with
// p = 4/7: ((1 - 4/7)^2 + (1/3 - 4/7)^2) / 2 = 0.11961, the root of it.
TEST(PairTestCounters, ErrorIsThatOfTheClasses) {
    PairTestCounters counters(observed_of(1.0, 0.0, 0.0), plan_batches(4));
    for (const double Va : {1.0, 0.0, 1.0, 0.0, 1.0, 1.0})
        counters.count_component(Va);
    const PairTestResult r = counters.result();
    EXPECT_DOUBLE_EQ(r.fst_p, 4.0 / 7.0);
    EXPECT_NEAR(r.fst_sd, std::sqrt((9.0 / 49.0 + 25.0 / 441.0) / 2.0), 1e-15);
}

TEST(PairTestCounters, TauIsComparedWithTheMarkOfFailure) {
    PairObserved o;
    o.divergence = {5.0, 0.5, 2.0, 0.0};
    PairTestCounters counters(o, plan_batches(9));
    counters.count_divergence(0.1, 0.5, 1.9);
    counters.count_divergence(-0.1, 0.4, 2.0);
    EXPECT_EQ(counters.result().tau_p, 0.5);
    EXPECT_EQ(counters.result().k_p, 0.5);
    EXPECT_EQ(counters.result().theta0_p, 0.5);
    o.divergence.not_converged = 1.0;
    PairTestCounters failed(o, plan_batches(9));
    failed.count_divergence(0.9, 0.5, 1.9);
    failed.count_divergence(1.0, 0.5, 1.9);
    EXPECT_EQ(failed.result().tau_p, 0.5);
}

TEST(PairTestCounters, WithoutASolvedPermutationTheyAreZero) {
    PairTestCounters counters(observed_of(1.0, 1.0, 1.0), plan_batches(9));
    EXPECT_EQ(counters.result().tau_p, 0.0);
    EXPECT_EQ(counters.result().k_p, 0.0);
    EXPECT_EQ(counters.result().theta0_p, 0.0);
}

}  // namespace
}  // namespace mnd
