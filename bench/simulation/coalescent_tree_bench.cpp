#include "simulation/coalescent_tree.h"

#include <benchmark/benchmark.h>

#include "foundation/random.h"
#include "model/popul_standard.h"
#include "model/samples.h"

namespace {

void seed() {
    long idum = -12345;
    mnd::ran3(&idum);
}

void BM_BuildTree(benchmark::State& state) {
    seed();
    mnd::TTree tree(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(tree.build_tree());
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_BuildTree)->ArgName("leaves")->RangeMultiplier(4)->Range(10, 40960)->Complexity();

void BM_BuildTreeRangeExp(benchmark::State& state) {
    seed();
    mnd::TTree tree(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(tree.build_tree_range_exp(1.0, 10.0));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_BuildTreeRangeExp)->ArgName("leaves")->RangeMultiplier(4)->Range(10, 2560)->Complexity();

// Ten samples of 20 gene copies among more and more demes; F of 0.1.
void BM_BuildTreeOfIslands(benchmark::State& state) {
    seed();
    mnd::Samples samples;
    for (int i = 0; i < 10; ++i) {
        auto* sample = new mnd::PopulStandard;
        sample->sample_size = 20;
        samples.populations.Add(sample);
    }
    mnd::TTree tree;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            tree.build_tree_struct_pop(samples, 0.0, 0.1, static_cast<int>(state.range(0))));
}
BENCHMARK(BM_BuildTreeOfIslands)->ArgName("demes")->RangeMultiplier(4)->Range(10, 640);

}  // namespace
