#include "foundation/tri_mat.h"

#include <benchmark/benchmark.h>

namespace {

// The sum over all pairs that the sums of squared deviations make.
void BM_TriMatPairs(benchmark::State& state) {
    const auto n = static_cast<int>(state.range(0));
    const mnd::TriMat m(n);
    for (auto _ : state) {
        double sum = 0.0;
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < i; ++j)
                sum += m(i, j);
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * n * (n - 1) / 2);
}

}  // namespace

BENCHMARK(BM_TriMatPairs)->ArgName("rows")->Arg(10)->Arg(100)->Arg(1000);
