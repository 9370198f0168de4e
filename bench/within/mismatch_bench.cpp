// Cost of the curves of expansion models, of their fits and of bootstrap replicates.
#include <benchmark/benchmark.h>

#include <vector>

#include "foundation/random.h"
#include "model/popul_dna.h"
#include "run/settings.h"
#include "within/mismatch_fit.h"
#include "within/mismatch_spatial.h"

namespace {

void seed() {
    long idum = -12345;
    mnd::ran3(&idum);
}

struct Data {
    std::vector<double> diff = std::vector<double>(520);
    std::vector<double> freq = std::vector<double>(520);
    int count = 0;
};

// Shares of the classes 0 .. classes - 1 under a sudden expansion.
Data sudden_data(int classes) {
    mnd::ann_missmatch model;
    model.init_data(1.0, 30.0, classes / 3.0, 1.0);
    model.compute_curve(classes);
    Data data;
    data.count = classes + 1;
    for (std::size_t k = 0; k < 510; ++k)
        data.diff[k + 1] = static_cast<double>(k);
    for (std::size_t k = 0; k < static_cast<std::size_t>(classes); ++k)
        data.freq[k + 1] = model.f_vect[k];
    return data;
}

// The parameters move as in a search that does not gain: each in turn up and down from where it stands,
// by steps that never come again.
template <class Fit>
struct Walk {
    Fit& fit;
    double base[3] = {fit.Theta1, fit.Theta0, fit.Tau};
    double by = 0.125;
    int turn = 0;

    explicit Walk(Fit& walked) : fit(walked) {}

    void step() {
        double* const parameters[] = {&fit.Theta1, &fit.Theta0, &fit.Tau};
        for (int i = 0; i < 3; ++i)
            *parameters[i] = base[i];
        if (turn % 2 == 0) by = by < 0.25 ? by + 1e-7 : 0.125;
        *parameters[turn / 2] += turn % 2 == 0 ? by : -by;
        turn = (turn + 1) % 6;
    }
};

void BM_SuddenSum(benchmark::State& state) {
    Data data = sudden_data(static_cast<int>(state.range(0)));
    mnd::ann_missmatch fit;
    fit.init_data(1.0, 5.0, 3.0, 1.0);
    Walk walk{fit};
    for (auto _ : state) {
        walk.step();
        benchmark::DoNotOptimize(fit.f_SRod_Harp(data.diff.data(), data.freq.data(), data.count));
    }
}
BENCHMARK(BM_SuddenSum)->ArgName("classes")->Arg(10)->Arg(20)->Arg(40)->Arg(80);

void BM_SuddenSumPlainForm(benchmark::State& state) {
    Data data = sudden_data(static_cast<int>(state.range(0)));
    mnd::ann_missmatch fit;
    fit.init_data(1.0, 5.0, 3.0, 1.0);
    Walk walk{fit};
    for (auto _ : state) {
        walk.step();
        double ssd = 0.0;
        for (int k = 1; k < data.count; ++k) {
            const double d = fit.f_i_exp(k - 1) - data.freq[static_cast<std::size_t>(k)];
            ssd += d * d;
        }
        benchmark::DoNotOptimize(ssd);
    }
}
BENCHMARK(BM_SuddenSumPlainForm)->ArgName("classes")->Arg(10)->Arg(20)->Arg(40)->Arg(80);

void BM_SpatialSum(benchmark::State& state) {
    Data data = sudden_data(static_cast<int>(state.range(0)));
    mnd::mismatchSpatialExpansion fit;
    fit.init_data(1.0, 5.0, 3.0, 10.0, 1.0);
    Walk walk{fit};
    for (auto _ : state) {
        walk.step();
        benchmark::DoNotOptimize(fit.f_S_Spatial_Exp_4p(data.diff.data(), data.freq.data(), data.count));
    }
}
BENCHMARK(BM_SpatialSum)->ArgName("classes")->Arg(10)->Arg(20)->Arg(40)->Arg(80);

void BM_SpatialSumPlainForm(benchmark::State& state) {
    Data data = sudden_data(static_cast<int>(state.range(0)));
    mnd::mismatchSpatialExpansion fit;
    fit.init_data(1.0, 5.0, 3.0, 10.0, 1.0);
    Walk walk{fit};
    for (auto _ : state) {
        walk.step();
        double ssd = 0.0;
        for (int k = 1; k < data.count; ++k) {
            const double d = fit.f_i_spatial_exp_4p(k - 1) - data.freq[static_cast<std::size_t>(k)];
            ssd += d * d;
        }
        benchmark::DoNotOptimize(ssd);
    }
}
BENCHMARK(BM_SpatialSumPlainForm)->ArgName("classes")->Arg(10)->Arg(20)->Arg(40)->Arg(80);

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

}  // namespace
