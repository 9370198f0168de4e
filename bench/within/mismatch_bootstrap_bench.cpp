// Cost of bootstrap replicates of expansion models: a sample is simulated, and fitted.
#include <benchmark/benchmark.h>

#include <vector>

#include "foundation/random.h"
#include "model/popul_dna.h"
#include "within/mismatch_fit.h"
#include "within/mismatch_spatial.h"

namespace {

void seed() {
    long idum = -12345;
    mnd::ran3(&idum);
}

// A simulated sample and its fit, 1,000 times.
template <class Fit, class Simulate, class Search>
void replicates(benchmark::State& state, Fit& fit, const Simulate& simulate, const Search& search) {
    mnd::PopulDNA sample;
    sample.sample_size = static_cast<double>(state.range(0));
    sample.allocate_tree(static_cast<int>(state.range(0)));
    fit.pop = &sample;
    fit.sample_size = static_cast<int>(state.range(0));
    int count = 31;
    std::vector<double> diff(520), freq(520);
    seed();
    for (auto _ : state) {
        for (int b = 0; b < 1000; ++b) {
            simulate(diff.data(), freq.data(), count);
            search(diff.data(), freq.data(), count);
        }
    }
}

void BM_ThousandSuddenReplicates(benchmark::State& state) {
    mnd::ann_missmatch fit;
    replicates(
        state, fit,
        [&](double* diff, double* freq, int& count) {
            fit.init_data(1.0, 30.0, 6.0, 1.0);
            return fit.simulate_miss(diff, freq, count);
        },
        [&](double* diff, double* freq, int count) { fit.hook_jeeves_rh(diff, freq, count, 2000, 0.001); });
}
BENCHMARK(BM_ThousandSuddenReplicates)
    ->ArgName("copies")
    ->Arg(25)
    ->Arg(100)
    ->Arg(400)
    ->Unit(benchmark::kMillisecond);

void BM_ThousandSpatialReplicates(benchmark::State& state) {
    mnd::mismatchSpatialExpansion fit;
    replicates(
        state, fit,
        [&](double* diff, double* freq, int& count) {
            fit.init_data(2.0, 2.0, 6.0, 20.0, 1.0);
            return fit.simulate_spatial_exp(diff, freq, count);
        },
        [&](double* diff, double* freq, int count) {
            fit.hook_jeeves_spatial_exp_3_par(diff, freq, count, 2000, 0.001);
        });
}
BENCHMARK(BM_ThousandSpatialReplicates)
    ->ArgName("copies")
    ->Arg(25)
    ->Arg(100)
    ->Arg(400)
    ->Unit(benchmark::kMillisecond);

// Simulations alone: what a replicate takes besides its fit.
void BM_ThousandSuddenSimulations(benchmark::State& state) {
    mnd::ann_missmatch fit;
    replicates(
        state, fit,
        [&](double* diff, double* freq, int& count) {
            fit.init_data(1.0, 30.0, 6.0, 1.0);
            return fit.simulate_miss(diff, freq, count);
        },
        [](double*, double*, int) {});
}
BENCHMARK(BM_ThousandSuddenSimulations)
    ->ArgName("copies")
    ->Arg(25)
    ->Arg(100)
    ->Arg(400)
    ->Unit(benchmark::kMillisecond);

}  // namespace
