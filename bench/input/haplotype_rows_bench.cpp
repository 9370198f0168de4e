#include "input/haplotype_rows.h"

#include <benchmark/benchmark.h>

#include <string>

#include "input/dist_mat.h"
#include "model/haplotypes.h"

namespace {

// Rows in tens: those of one ten are at distance 0 of each other.
void BM_ClassesOfIdenticalRows(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    mnd::DistMat distances(n);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < i; ++j)
            distances(i, j) = i / 10 == j / 10 ? 0.0 : 1.0;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(mnd::classes_of_identical_rows(distances, n));
    state.SetComplexityN(n);
}
BENCHMARK(BM_ClassesOfIdenticalRows)
    ->ArgName("rows")
    ->RangeMultiplier(4)
    ->Range(64, 4096)
    ->Complexity(benchmark::oNSquared)
    ->Unit(benchmark::kMillisecond);

// All haplotypes are found by their label.
void BM_AssociateByLabel(benchmark::State& state) {
    mnd::Haplo_DB haplotypes;
    mnd::DistMat distances;
    for (long i = 0; i < state.range(0); ++i) {
        const mnd::my_string name(("h" + std::to_string(i)).c_str());
        haplotypes.append(new mnd::HaploDef(name));
        distances.labels.push_back(name);
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(haplotypes.associate_with1(distances));
}
BENCHMARK(BM_AssociateByLabel)
    ->ArgName("haplotypes")
    ->RangeMultiplier(10)
    ->Range(100, 10000)
    ->Unit(benchmark::kMillisecond);

}  // namespace
