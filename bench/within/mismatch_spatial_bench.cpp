// Cost of a fit of the spatial expansion: the searches over tables of the curve, beside the same
// searches over the curve's terms one by one.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "foundation/random.h"
#include "within/mismatch_spatial.h"

namespace {

constexpr int kRounds = 2000;
constexpr double kThreshold = 0.001;

void seed() {
    long idum = -12345;
    mnd::ran3(&idum);
}

struct Data {
    std::vector<double> diff = std::vector<double>(520);
    std::vector<double> freq = std::vector<double>(520);
    int count = 0;
};

// Shares of the classes 0 .. classes - 1 after a spatial expansion, uneven as those of a sample are.
Data uneven_data(int classes) {
    mnd::mismatchSpatialExpansion model;
    model.init_data(1.5, 1.5, classes / 3.0, 15.0, 1.0);
    seed();
    Data data;
    data.count = classes + 1;
    for (int k = 0; k <= classes; ++k)
        data.diff[static_cast<std::size_t>(k) + 1] = k;
    for (int k = 0; k < classes; ++k)
        data.freq[static_cast<std::size_t>(k) + 1] = model.f_i_spatial_exp_3p(k) * (0.7 + 0.6 * mnd::ran3());
    return data;
}

// The searches without tables. Every sum is formed anew from every term.
class PlainFit : public mnd::mismatchSpatialExpansion {
public:
    explicit PlainFit(bool one_theta) : one_theta_(one_theta) {}

    double sum(const Data& data) {
        double ssd = 0.0;
        for (int k = 1; k < data.count; ++k) {
            const auto at = static_cast<std::size_t>(k);
            const auto i = static_cast<int>(data.diff[at]);
            const double d = (one_theta_ ? f_i_spatial_exp_3p(i) : f_i_spatial_exp_4p(i)) - data.freq[at];
            ssd += d * d;
        }
        return ssd;
    }

    void put(double& parameter, double value) {
        parameter = value;
        if (one_theta_ && &parameter == &Theta1) Theta0 = value;
    }

    void try_both(const Data& data, double& parameter, double& step, double& ssd) {
        if (step < kThreshold) return;
        const double before = parameter;
        for (const double by : {step, -step}) {
            put(parameter, before + by);
            const double reached = sum(data);
            if (reached < ssd) {
                ssd = reached;
                step *= 4.0;
                return;
            }
        }
        put(parameter, before);
        step *= 0.5;
    }

    void search(Data& data) {
        const double m0 = calc_mean_mssm(data.diff.data(), data.freq.data(), data.count);
        const double M0 = 1.0 / data.freq[1] - 1.0;
        for (int start = 0; start < (one_theta_ ? 3 : 10); ++start) {
            Theta1 = 5.0 * mnd::ran3();
            Theta0 = one_theta_ ? Theta1 : 2.0 * mnd::ran3();
            Tau = mnd::ran3() * m0 * 1.5 + m0 * 0.5;
            M = mnd::ran3() * M0 * 1.5 + M0 * 0.5;
            double step1 = 0.95, step0 = 1.0, step_tau = 0.89, step_m = 1.1, global_step = 0.95;
            if (one_theta_) {
                step_m = M0 * 0.5 + 0.5;
                step_tau = m0 * 0.5 + 0.5;
                step0 = 0.0;
            }
            for (int round = 0; round < kRounds && kThreshold < global_step; ++round) {
                double ssd = sum(data);
                if (one_theta_) try_both(data, M, step_m, ssd);
                try_both(data, Theta1, step1, ssd);
                try_both(data, Tau, step_tau, ssd);
                if (!one_theta_) try_both(data, M, step_m, ssd);
                if (!one_theta_) try_both(data, Theta0, step0, ssd);
                global_step = std::max({step1, step0, step_tau, step_m / 20.0});
            }
            ssd_work = sum(data);
        }
    }

private:
    bool one_theta_;
};

void BM_SpatialFit3(benchmark::State& state) {
    Data data = uneven_data(static_cast<int>(state.range(0)));
    mnd::mismatchSpatialExpansion fit;
    for (auto _ : state) {
        seed();
        fit.hook_jeeves_spatial_exp_3_par(data.diff.data(), data.freq.data(), data.count, kRounds,
                                          kThreshold);
        benchmark::DoNotOptimize(fit.ssd_work);
    }
}

void BM_SpatialFit4(benchmark::State& state) {
    Data data = uneven_data(static_cast<int>(state.range(0)));
    mnd::mismatchSpatialExpansion fit;
    for (auto _ : state) {
        seed();
        fit.hook_jeeves_spatial_exp_4_par(data.diff.data(), data.freq.data(), data.count, kRounds,
                                          kThreshold);
        benchmark::DoNotOptimize(fit.ssd_work);
    }
}

void search_plainly(benchmark::State& state, bool one_theta) {
    Data data = uneven_data(static_cast<int>(state.range(0)));
    PlainFit fit(one_theta);
    for (auto _ : state) {
        seed();
        fit.search(data);
        benchmark::DoNotOptimize(fit.ssd_work);
    }
}
void BM_SpatialFit3PlainForm(benchmark::State& state) {
    search_plainly(state, true);
}
void BM_SpatialFit4PlainForm(benchmark::State& state) {
    search_plainly(state, false);
}

void of_sizes(benchmark::internal::Benchmark* bench) {
    bench->ArgName("classes")->Arg(5)->Arg(10)->Arg(20)->Arg(50)->Arg(100)->Unit(benchmark::kMicrosecond);
}
BENCHMARK(BM_SpatialFit3)->Apply(of_sizes);
BENCHMARK(BM_SpatialFit3PlainForm)->Apply(of_sizes);
BENCHMARK(BM_SpatialFit4)->Apply(of_sizes);
BENCHMARK(BM_SpatialFit4PlainForm)->Apply(of_sizes);

}  // namespace
