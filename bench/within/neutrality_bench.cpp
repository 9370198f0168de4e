// Cost of the tests of selective neutrality.
#include <benchmark/benchmark.h>

#include <vector>

#include "foundation/random.h"
#include "model/popul_dna.h"
#include "run/process.h"
#include "run/settings.h"
#include "within/ewens_sampling.h"
#include "within/neutral_samples.h"
#include "within/tajima.h"

namespace {

void seed() {
    long idum = -12345;
    mnd::ran3(&idum);
}

// One configuration of n gene copies and k alleles: with the running sums of the states seen, and
// summing anew at each draw.
void BM_Configuration(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const int k = static_cast<int>(state.range(1));
    mnd::PopGenetics::ensure_B(n, k);
    const std::size_t pool = state.range(2) != 0 ? mnd::ConfigurationSampler::kLargestPool : 0;
    mnd::ConfigurationSampler sampler(n, k, mnd::PopGenetics::BMat, pool);
    seed();
    for (auto _ : state)
        benchmark::DoNotOptimize(sampler.draw_sorted());
}
BENCHMARK(BM_Configuration)
    ->ArgNames({"copies", "alleles", "sums_kept"})
    ->ArgsProduct({{50, 200, 1000, 4000}, {5, 20, 40}, {0, 1}});

// Replicates of Tajima's test, theta = 10.
void BM_TajimaReplicates(benchmark::State& state) {
    mnd::PopulDNA sample;
    sample.sample_size = static_cast<double>(state.range(0));
    sample.nb_observed_sites = static_cast<int>(state.range(1));
    mnd::settings s;
    mnd::silentMendrake = true;
    const mnd::TajimaConstants constants = mnd::tajima_constants(static_cast<int>(state.range(0)));
    mnd::NeutralSamples samples(sample, 10.0);
    seed();
    for (auto _ : state) {
        double sum = 0.0;
        samples.simulate(1000, s, [&](const mnd::NeutralSamples& replicate) {
            sum += mnd::fast_tajima_D(constants, replicate.mean_pairwise_differences(),
                                      replicate.segregating_sites());
        });
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(BM_TajimaReplicates)
    ->ArgNames({"copies", "sites"})
    ->Args({10, 1000})
    ->Args({50, 300})
    ->Args({50, 1000})
    ->Args({200, 1000});

// Replicates of Fu's test, theta = 10.
void BM_FuReplicates(benchmark::State& state) {
    mnd::PopulDNA sample;
    sample.sample_size = static_cast<double>(state.range(0));
    sample.nb_observed_sites = 1000;
    mnd::settings s;
    mnd::silentMendrake = true;
    mnd::NeutralSamples samples(sample, 10.0);
    seed();
    for (auto _ : state) {
        double sum = 0.0;
        samples.simulate(1000, s, [&](mnd::NeutralSamples& replicate) {
            double Fs = 0.0;
            sample.Fu_Fs(replicate.mean_pairwise_differences(), replicate.alleles(), Fs, false);
            sum += Fs;
        });
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(BM_FuReplicates)->ArgName("copies")->Arg(10)->Arg(50)->Arg(200);

}  // namespace
