#include "foundation/arrays.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

namespace {

// Ascending by key.
struct Keyed {
    double key = 0.0;
};
bool sorts_before(const Keyed& a, const Keyed& b) {
    return a.key < b.key;
}

std::vector<double> random_keys(std::int64_t n) {
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> uniform;
    std::vector<double> keys(static_cast<std::size_t>(n));
    for (double& key : keys)
        key = uniform(random);
    return keys;
}

// The recorded capacity grows by the small step; the time stays linear.
void BM_ValueArrayAdd(benchmark::State& state) {
    for (auto _ : state) {
        mnd::MY_TArrayAsVector<double> a(0, 10);
        for (std::int64_t i = 0; i < state.range(0); ++i)
            a.Add(static_cast<double>(i));
        benchmark::DoNotOptimize(a.data.get());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ValueArrayAdd)->ArgName("elements")->RangeMultiplier(10)->Range(1000, 1000000);

void BM_PointerArrayAdd(benchmark::State& state) {
    double shared = 0.0;
    for (auto _ : state) {
        mnd::MY_TIArrayAsVector<double> a;
        a.owns_elements = 0;
        for (std::int64_t i = 0; i < state.range(0); ++i)
            a.Add(&shared);
        benchmark::DoNotOptimize(a.data.get());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PointerArrayAdd)->ArgName("elements")->RangeMultiplier(10)->Range(1000, 1000000);

// Insertion bubbles: quadratic in the number of elements.
void BM_SortedArrayAdd(benchmark::State& state) {
    std::vector<Keyed> elements;
    for (const double key : random_keys(state.range(0)))
        elements.push_back({key});
    for (auto _ : state) {
        mnd::MY_TISArrayAsVector<Keyed> a;
        a.owns_elements = 0;
        for (Keyed& element : elements)
            a.Add(&element);
        benchmark::DoNotOptimize(a.data.get());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SortedArrayAdd)->ArgName("elements")->RangeMultiplier(4)->Range(64, 4096);

void BM_QuickSortArray(benchmark::State& state) {
    const std::vector<double> keys = random_keys(state.range(0));
    mnd::MY_TArrayAsVector<double> a(0, 1000);
    for (const double key : keys)
        a.Add(key);
    for (auto _ : state) {
        std::copy(keys.begin(), keys.end(), a.begin());
        a.quickSortArray();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_QuickSortArray)->ArgName("elements")->RangeMultiplier(10)->Range(1000, 100000);

}  // namespace
