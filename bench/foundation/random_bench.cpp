#include "foundation/random.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <numeric>
#include <vector>

namespace {

void seed() {
    long idum = -12345;
    mnd::ran3(&idum);
}

void BM_Ran3(benchmark::State& state) {
    seed();
    const auto n = state.range(0);
    for (auto _ : state) {
        double sum = 0.0;
        for (std::int64_t i = 0; i < n; ++i) {
            long idum = 1;
            sum += mnd::ran3(&idum);
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * n);
}

// The least a draw can cost its caller: the number goes to memory.
void BM_Ran3Stored(benchmark::State& state) {
    seed();
    std::vector<double> u(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        for (double& x : u)
            x = mnd::ran3();
        benchmark::DoNotOptimize(u.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Ran3Block(benchmark::State& state) {
    seed();
    std::vector<double> u(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        mnd::ran3_block(u.data(), static_cast<int>(u.size()));
        benchmark::DoNotOptimize(u.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Permute(benchmark::State& state) {
    seed();
    std::vector<int> a(static_cast<std::size_t>(state.range(0)));
    std::iota(a.begin(), a.end(), 0);
    for (auto _ : state) {
        mnd::permute(a.data(), static_cast<int>(a.size()));
        benchmark::DoNotOptimize(a.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Poidev(benchmark::State& state) {
    seed();
    const auto mean = static_cast<float>(state.range(0));
    for (auto _ : state) {
        long idum = 1;
        benchmark::DoNotOptimize(mnd::poidev(mean, &idum));
    }
}

void BM_GammaDev(benchmark::State& state) {
    seed();
    const double order = static_cast<double>(state.range(0)) + 0.5;
    for (auto _ : state) {
        benchmark::DoNotOptimize(mnd::gamma_dev(order));
    }
}

}  // namespace

BENCHMARK(BM_Ran3)->ArgName("draws")->RangeMultiplier(16)->Range(64, 1 << 18);
BENCHMARK(BM_Ran3Stored)->ArgName("draws")->RangeMultiplier(16)->Range(64, 1 << 18);
BENCHMARK(BM_Ran3Block)->ArgName("draws")->RangeMultiplier(16)->Range(64, 1 << 18);
BENCHMARK(BM_Permute)->ArgName("elements")->RangeMultiplier(10)->Range(10, 100000);
BENCHMARK(BM_Poidev)->ArgName("mean")->Arg(1)->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(BM_GammaDev)->ArgName("order")->Arg(0)->Arg(5)->Arg(50);
