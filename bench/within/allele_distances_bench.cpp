// All pairs of haplotypes that are lists of alleles.
#include "within/allele_distances.h"

#include <benchmark/benchmark.h>

#include <random>

namespace {

constexpr int kHaplotypes = 300;

void BM_AlleleDifferences(benchmark::State& state) {
    std::mt19937 random(1);
    mnd::AlleleDifferences::Table table(kHaplotypes);
    for (auto& row : table) {
        for (int l = 0; l < state.range(0); ++l)
            row.push_back(static_cast<std::int32_t>(random() % 12));
    }
    for (auto _ : state) {
        const mnd::AlleleDifferences differences(table);
        long sum = 0;
        for (int i = 1; i < kHaplotypes; ++i) {
            for (int j = 0; j < i; ++j)
                sum += differences.count(i, j);
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * kHaplotypes * (kHaplotypes - 1) / 2 * state.range(0));
}

void BM_SumOfSquaredSizes(benchmark::State& state) {
    std::mt19937 random(1);
    mnd::RepeatDistances::Table table(kHaplotypes);
    for (auto& row : table) {
        for (int l = 0; l < state.range(0); ++l) {
            row.push_back({static_cast<double>(random() % 40), random() % 50 == 0});
        }
    }
    for (auto _ : state) {
        const mnd::RepeatDistances distances(table);
        double sum = 0.0;
        for (int i = 1; i < kHaplotypes; ++i) {
            for (int j = 0; j < i; ++j) {
                double distance = 0.0;
                distances.sum_of_squares(i, j, distance);
                sum += distance;
            }
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * kHaplotypes * (kHaplotypes - 1) / 2 * state.range(0));
}

BENCHMARK(BM_AlleleDifferences)->ArgName("loci")->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(BM_SumOfSquaredSizes)->ArgName("loci")->RangeMultiplier(10)->Range(10, 10000);

}  // namespace
