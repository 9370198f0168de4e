#include <benchmark/benchmark.h>

#include <string>

#include "input/dist_mat.h"
#include "model/haplotypes.h"

namespace {

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
