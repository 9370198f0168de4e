#include "foundation/bnum_mat.h"

#include <benchmark/benchmark.h>

namespace {

void BM_BnumTable(benchmark::State& state) {
    const auto rows = static_cast<int>(state.range(0));
    const auto cols = static_cast<int>(state.range(1));
    mnd::BnumMat m(0, 0);
    for (auto _ : state) {
        m.re_allocate_matrix(0, 0);
        benchmark::DoNotOptimize(m.re_allocate_matrix(rows, cols));
    }
}

// A table that grows by rows alone keeps those it has.
void BM_BnumGrowth(benchmark::State& state) {
    const auto rows = static_cast<int>(state.range(0));
    mnd::BnumMat m(0, 0);
    for (auto _ : state) {
        m.re_allocate_matrix(rows, 80);
        m.re_allocate_matrix(rows + 10, 80);
    }
}

}  // namespace

BENCHMARK(BM_BnumTable)->ArgNames({"rows", "cols"})->Args({200, 80})->Args({1000, 200})->Args({5000, 1000});
BENCHMARK(BM_BnumGrowth)->ArgName("rows")->Arg(200)->Arg(1000)->Arg(4000);
