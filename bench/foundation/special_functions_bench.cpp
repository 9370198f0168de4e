#include "foundation/special_functions.h"

#include <benchmark/benchmark.h>

namespace {

// Log-factorials of 0 to n - 1: kept ones up to 100, computed ones above.
void BM_Factln(benchmark::State& state) {
    const auto n = static_cast<int>(state.range(0));
    for (auto _ : state) {
        double sum = 0.0;
        for (int i = 0; i < n; ++i)
            sum += mnd::factln(i);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * n);
}

void BM_Factlnl(benchmark::State& state) {
    const auto n = static_cast<int>(state.range(0));
    for (auto _ : state) {
        long double sum = 0.0L;
        for (int i = 0; i < n; ++i)
            sum += mnd::factlnl(i);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * n);
}

void BM_ProbOfChiSq(benchmark::State& state) {
    const auto df = static_cast<float>(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(mnd::Prob_of_chi_sq(df, 0.9F * df));
        benchmark::DoNotOptimize(mnd::Prob_of_chi_sq(df, 1.5F * df));
    }
}

}  // namespace

BENCHMARK(BM_Factln)->ArgName("n")->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(BM_Factlnl)->ArgName("n")->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(BM_ProbOfChiSq)->ArgName("df")->Arg(1)->Arg(10)->Arg(100);
