#include "simulation/mutated_sites.h"

#include <benchmark/benchmark.h>

#include <vector>

#include "foundation/random.h"
#include "model/popul_dna.h"
#include "simulation/coalescent_tree.h"

namespace {

// A sample of so many gene copies at the start of a series.
void start(mnd::PopulDNA& sample, std::int64_t n) {
    long idum = -12345;
    mnd::ran3(&idum);
    sample.sample_size = static_cast<double>(n);
    sample.allocate_tree(static_cast<int>(n));
}

constexpr mnd::MutationModel kNucleotides{.mu = 5.0, .sites = 1000};
constexpr mnd::MutationModel kExpansion{
    .mu = 5.0, .sites = 400, .type = mnd::kNewStateMutation, .gamma_a = -1.0};

// Segregating sites and pairwise differences of a replicate, theta 10.
void BM_SimulateSites(benchmark::State& state) {
    mnd::PopulDNA sample;
    start(sample, state.range(0));
    mnd::MutatedSites mutated;
    for (auto _ : state) {
        sample.fast_simulate_sample(mutated, kNucleotides);
        benchmark::DoNotOptimize(mutated.pair_differences());
    }
}
BENCHMARK(BM_SimulateSites)->ArgName("leaves")->Arg(10)->Arg(50)->Arg(250)->Arg(1250);

// The distinct sequences in addition.
void BM_SimulateHaplotypes(benchmark::State& state) {
    mnd::PopulDNA sample;
    start(sample, state.range(0));
    mnd::MutatedSites mutated;
    for (auto _ : state) {
        sample.fast_simulate_sample(mutated, kNucleotides);
        benchmark::DoNotOptimize(mutated.num_haplotypes());
    }
}
BENCHMARK(BM_SimulateHaplotypes)->ArgName("leaves")->Arg(10)->Arg(50)->Arg(250)->Arg(1250);

// The distribution of pairwise differences.
void BM_SimulateMismatches(benchmark::State& state) {
    mnd::PopulDNA sample;
    start(sample, state.range(0));
    mnd::MutatedSites mutated;
    std::vector<std::int64_t> pairs;
    for (auto _ : state) {
        sample.fast_simulate_sample(mutated, kExpansion);
        mutated.count_pair_differences(pairs);
        benchmark::DoNotOptimize(pairs.data());
    }
}
BENCHMARK(BM_SimulateMismatches)->ArgName("leaves")->Arg(10)->Arg(50)->Arg(250)->Arg(1250);

// The same with more and more mutations among 100 gene copies.
void BM_SimulateMismatchesOfMutations(benchmark::State& state) {
    mnd::PopulDNA sample;
    start(sample, 100);
    mnd::MutatedSites mutated;
    mnd::MutationModel model = kExpansion;
    model.mu = static_cast<double>(state.range(0)) / 2.0;
    std::vector<std::int64_t> pairs;
    for (auto _ : state) {
        sample.fast_simulate_sample(mutated, model);
        mutated.count_pair_differences(pairs);
        benchmark::DoNotOptimize(pairs.data());
    }
}
BENCHMARK(BM_SimulateMismatchesOfMutations)->ArgName("theta")->Arg(1)->Arg(10)->Arg(100)->Arg(1000);

// Whole sequences, read back as a sample.
void BM_SimulateSequences(benchmark::State& state) {
    mnd::PopulDNA sample;
    start(sample, state.range(0));
    mnd::Haplo_DB definitions;
    mnd::PopulDNA read;
    for (auto _ : state) {
        sample.simulate_sample(kNucleotides);
        read.read_simulated_sample(*sample.tree, definitions, mnd::kNucleotideMutation);
        benchmark::DoNotOptimize(read.nb_hapl);
    }
}
BENCHMARK(BM_SimulateSequences)->ArgName("leaves")->Arg(10)->Arg(50)->Arg(250);

}  // namespace
