#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "between/divergence_times.h"
#include "between/pairwise_block.h"
#include "between/pairwise_statistics.h"
#include "between/pairwise_tests.h"
#include "foundation/random.h"
#include "input/dist_mat.h"
#include "run/settings.h"

namespace {

// Kinds of distances between haplotypes.
enum Kind : int { kConventional, kCounts, kFractions };

void fill(mnd::DistMat& D, int rows, int kind) {
    D.MatrixSize = rows;
    if (kind == kConventional) {
        D.conventional = 1;
        return;
    }
    std::mt19937 random(1);
    D.initializeMatrixAndArrays(rows);
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < i; ++j) {
            const double d = static_cast<double>(1 + random() % 30);
            D(i, j) = kind == kCounts ? d : d / 3.0;
        }
    }
}

std::vector<int> random_sample(std::mt19937& random, int copies, int rows) {
    std::vector<int> sample(static_cast<std::size_t>(copies));
    for (int& row : sample)
        row = static_cast<int>(random() % static_cast<unsigned>(rows));
    return sample;
}

// The tests of all pairs of samples over 200 haplotypes.
void BM_PairwiseTests(benchmark::State& state) {
    const int nb_samples = static_cast<int>(state.range(0));
    const int copies = static_cast<int>(state.range(1));
    mnd::DistMat D;
    fill(D, 200, static_cast<int>(state.range(2)));
    std::mt19937 random(2);
    std::vector<std::vector<int>> samples;
    for (int i = 0; i < nb_samples; ++i)
        samples.push_back(random_sample(random, copies, 200));
    mnd::PairTestPlan plan;
    plan.permutations = mnd::plan_batches(1000);
    const mnd::settings s;
    const mnd::PairDesign design = mnd::pair_design(copies, copies);
    for (auto _ : state) {
        for (int i = 0; i < nb_samples; ++i) {
            for (int j = i + 1; j < nb_samples; ++j) {
                std::vector<int> rows = samples[static_cast<std::size_t>(i)];
                rows.insert(rows.end(), samples[static_cast<std::size_t>(j)].begin(),
                            samples[static_cast<std::size_t>(j)].end());
                mnd::PairBlock block(D, rows, copies);
                const mnd::PairSSD ssd = block.sums();
                const mnd::PairObserved observed = {
                    mnd::pair_variance(design, ssd), mnd::pair_differences(design, ssd), {}};
                mnd::PairTestResult result;
                mnd::test_pair(block, design, observed, plan, s, result);
                benchmark::DoNotOptimize(result);
            }
        }
    }
}
BENCHMARK(BM_PairwiseTests)
    ->ArgsProduct({{10, 30}, {25, 50, 100}, {kConventional, kCounts, kFractions}})
    ->ArgNames({"samples", "copies", "kind"})
    ->Unit(benchmark::kMillisecond);

// The shuffles of these tests alone.
void BM_PairwiseShuffles(benchmark::State& state) {
    const int copies = static_cast<int>(state.range(0));
    mnd::DistMat D;
    fill(D, 200, kConventional);
    std::mt19937 random(2);
    mnd::PairBlock block(D, random_sample(random, 2 * copies, 200), copies);
    for (auto _ : state)
        block.shuffle_copies();
}
BENCHMARK(BM_PairwiseShuffles)->Arg(25)->Arg(50)->Arg(100)->ArgName("copies");

void BM_PairwiseSums(benchmark::State& state) {
    const int copies = static_cast<int>(state.range(0));
    mnd::DistMat D;
    fill(D, 200, static_cast<int>(state.range(1)));
    std::mt19937 random(2);
    mnd::PairBlock block(D, random_sample(random, 2 * copies, 200), copies);
    for (auto _ : state)
        benchmark::DoNotOptimize(block.sums());
}
BENCHMARK(BM_PairwiseSums)
    ->ArgsProduct({{25, 50, 100, 400}, {kConventional, kCounts, kFractions}})
    ->ArgNames({"copies", "kind"});

void BM_SolveDivTimes(benchmark::State& state) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> draw(0.5, 2.0);
    mnd::TSolveDivTimes solver(0.0L, 0.0L, 0.0L);
    for (auto _ : state) {
        solver.set_targets(3.0 * draw(random), 3.0 * draw(random), 6.0 + draw(random));
        benchmark::DoNotOptimize(solver.solve(20));
    }
}
BENCHMARK(BM_SolveDivTimes);

// Differences as a permutation gives them: those between the samples are as large as those within.
// Nearly all the time goes into attempts that drift until their steps are used up.
void BM_SolvePermutedDivTimes(benchmark::State& state) {
    std::mt19937 random(3);
    std::normal_distribution<double> draw;
    long seed = -12345;
    mnd::ran3(&seed);
    mnd::TSolveDivTimes solver(0.0L, 0.0L, 0.0L);
    for (auto _ : state) {
        const double pi_X = 5.0 + 0.4 * draw(random);
        const double pi_Y = 5.0 + 0.4 * draw(random);
        solver.set_targets(pi_X, pi_Y, (pi_X + pi_Y) / 2.0 + 0.05 * draw(random));
        benchmark::DoNotOptimize(solver.solve(20));
    }
}
BENCHMARK(BM_SolvePermutedDivTimes);

}  // namespace
