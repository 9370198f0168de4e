#include "between/spanning_tree.h"

#include <benchmark/benchmark.h>

#include <random>

namespace {

// Whole distances as between sequences: many ties.
void fill(mnd::RectMat& matrix, int largest) {
    std::mt19937 generator(1);
    std::uniform_int_distribution<int> draw(1, largest);
    for (int i = 0; i < matrix.rows; ++i)
        for (int j = 0; j < i; ++j)
            matrix.data[i][j] = matrix.data[j][i] = draw(generator);
}

void BM_MakeNetwork(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    mnd::RectMat matrix(n, n);
    fill(matrix, static_cast<int>(state.range(1)));
    for (auto _ : state) {
        mnd::TMinSpaNet network(&matrix);
        network.MakeNetwork();
        benchmark::DoNotOptimize(network.length.data());
    }
}
BENCHMARK(BM_MakeNetwork)
    ->ArgsProduct({{125, 500, 2000}, {1, 20, 1000}})
    ->ArgNames({"OTUs", "largest"})
    ->Unit(benchmark::kMillisecond);

}  // namespace
