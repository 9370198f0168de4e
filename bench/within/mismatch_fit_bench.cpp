// Cost of a fit of the sudden expansion: the search over tables of the curve, beside the same search
// over the curve's terms one by one.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "foundation/random.h"
#include "within/mismatch_fit.h"

namespace {

constexpr int kRounds = 2000;
constexpr double kThreshold = 0.001;

struct Data {
    std::vector<double> diff = std::vector<double>(520);
    std::vector<double> freq = std::vector<double>(520);
    int count = 0;
};

// Shares of the classes 0 .. classes - 1 after a sudden expansion, uneven as those of a sample are.
Data uneven_data(int classes) {
    mnd::ann_missmatch model;
    model.init_data(1.0, 30.0, classes / 3.0, 1.0);
    long idum = -12345;
    mnd::ran3(&idum);
    Data data;
    data.count = classes + 1;
    for (int k = 0; k <= classes; ++k)
        data.diff[static_cast<std::size_t>(k) + 1] = k;
    for (int k = 0; k < classes; ++k)
        data.freq[static_cast<std::size_t>(k) + 1] = model.f_i_exp(k) * (0.7 + 0.6 * mnd::ran3());
    return data;
}

// The search without tables. Every sum is formed anew from every term.
class PlainFit : public mnd::ann_missmatch {
public:
    double sum(const Data& data) {
        double ssd = 0.0;
        for (int k = 1; k < data.count; ++k) {
            const auto at = static_cast<std::size_t>(k);
            const double d = f_i_exp(static_cast<int>(data.diff[at])) - data.freq[at];
            ssd += d * d;
        }
        return ssd;
    }

    // A trial that gains keeps its value; the pair of sizes is never crossed.
    bool gains(const Data& data, double& parameter, double value, double& ssd) {
        const double sizes[] = {Theta0, Theta1};
        const double before = parameter;
        parameter = value;
        if (Theta0 > Theta1) {
            if (!(parameter > 0.0)) parameter = 1e-07;
            Theta0 = Theta1 = parameter;
        }
        const double reached = sum(data);
        if (!(reached >= ssd)) {
            ssd = reached;
            return true;
        }
        Theta0 = sizes[0];
        Theta1 = sizes[1];
        parameter = before;
        return false;
    }

    void try_both(const Data& data, double& parameter, double start, double& step, double& ssd) {
        if (step >= kThreshold) {
            const bool moved =
                gains(data, parameter, start + step, ssd) || gains(data, parameter, start - step, ssd);
            step *= moved ? 4.0 : 0.5;
        }
        if (step < kThreshold) step = 0.0;
    }

    void search(const Data& data) {
        double step1 = 10.0, step0 = 0.9, step_tau = 1.0, global_step = 1.0;
        for (int round = 0; round < kRounds && kThreshold < global_step; ++round) {
            double ssd = sum(data);
            const double start1 = Theta1, start0 = Theta0, start_tau = Tau;
            try_both(data, Theta1, start1, step1, ssd);
            try_both(data, Theta0, start0, step0, ssd);
            try_both(data, Tau, start_tau, step_tau, ssd);
            global_step = std::max({step1 / (Theta1 + 1.0), step0, step_tau});
        }
        ssd_work = sum(data);
    }
};

void BM_SuddenFit(benchmark::State& state) {
    Data data = uneven_data(static_cast<int>(state.range(0)));
    mnd::ann_missmatch fit;
    for (auto _ : state) {
        fit.init_data(1.0, 5.0, 3.0, 1.0);
        fit.hook_jeeves_rh(data.diff.data(), data.freq.data(), data.count, kRounds, kThreshold);
        benchmark::DoNotOptimize(fit.ssd_work);
    }
}
BENCHMARK(BM_SuddenFit)
    ->ArgName("classes")
    ->Arg(5)
    ->Arg(10)
    ->Arg(20)
    ->Arg(50)
    ->Arg(100)
    ->Unit(benchmark::kMicrosecond);

void BM_SuddenFitPlainForm(benchmark::State& state) {
    const Data data = uneven_data(static_cast<int>(state.range(0)));
    PlainFit fit;
    for (auto _ : state) {
        fit.init_data(1.0, 5.0, 3.0, 1.0);
        fit.search(data);
        benchmark::DoNotOptimize(fit.ssd_work);
    }
}
BENCHMARK(BM_SuddenFitPlainForm)
    ->ArgName("classes")
    ->Arg(5)
    ->Arg(10)
    ->Arg(20)
    ->Arg(50)
    ->Arg(100)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
