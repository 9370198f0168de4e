#include "foundation/rect_mat.h"

#include <benchmark/benchmark.h>

#include "foundation/random.h"

namespace {

void fill(const mnd::RectMat& m) {
    for (int i = 0; i < m.rows; ++i) {
        for (int j = 0; j < m.cols; ++j)
            m(i, j) = mnd::ran3();
    }
}

// One permutation of the Mantel test.
void BM_ComputeZ(benchmark::State& state) {
    const auto n = static_cast<int>(state.range(0));
    mnd::RectMat m(n, n);
    mnd::RectMat fixed(n, n);
    fill(m);
    fill(fixed);
    m.create_index();
    for (auto _ : state) {
        m.permute_index();
        benchmark::DoNotOptimize(m.computeZ(fixed));
    }
    state.SetItemsProcessed(state.iterations() * n * (n - 1) / 2);
}

}  // namespace

BENCHMARK(BM_ComputeZ)->ArgName("rows")->Arg(10)->Arg(100)->Arg(1000);
