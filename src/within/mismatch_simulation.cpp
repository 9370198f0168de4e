// Samples simulated under a fitted model of expansion, and their mismatch distribution.
#include <algorithm>
#include <vector>

#include "model/population.h"
#include "run/errors.h"
#include "simulation/coalescent_tree.h"
#include "simulation/mutated_sites.h"
#include "simulation/mutation_model.h"
#include "within/mismatch_fit.h"
#include "within/mismatch_spatial.h"

namespace mnd {

namespace {

// Sites that mutate to states not seen before, so that two hits of a site never look like none.
MutationModel mutation_model(double mu, int sites, double alpha, double transition_rate) {
    MutationModel model;
    model.mu = mu;
    model.sites = sites;
    model.type = kNewStateMutation;
    model.gamma_a = alpha;
    model.p_fixed = 1.0;
    model.fixed_rate = 1.0;
    model.ts_rate = transition_rate;
    return model;
}

// Largest theta of the founders in a simulation. Their genealogy carries about theta ln n mutations: at
// this bound a replicate of 100 copies has some 40 000 of them and takes about 10 ms. A search that a
// flat sum of squares lets run away may ask for 1e15, which would never end. All but a few of the
// 400 sites then differ between any two founders, so that a larger theta would show nothing else.
constexpr double kMostFounderTheta = 1e4;

// Sizes of a sudden expansion that can be simulated. The founders' theta is Theta0, but they are at
// least one of the N individuals, which makes it Theta1 / N when that is larger.
struct SuddenSizes {
    double theta1;
    double growth;  // founders over the present size
};

SuddenSizes sudden_sizes(double theta0, double theta1, int N) {
    const double simulated = std::min(theta1, N * kMostFounderTheta);
    return {simulated, std::max(1.0 / N, std::min(theta0, kMostFounderTheta) / simulated)};
}

}  // namespace

double ann_missmatch::founder_theta() const {
    const auto [theta1, growth] = sudden_sizes(Theta0, Theta1, N);
    return growth * theta1;
}

void ann_missmatch::begin_simulations() {
    pop->allocate_tree(static_cast<int>(pop->sample_size));
    if (simulated_ == nullptr) simulated_ = std::make_unique<MutatedSites>();
}

int ann_missmatch::simulate_miss(double* diff, double* freq, int& count) {
    if (!(Theta1 > 0.0)) return 0;
    if (simulated_ == nullptr) begin_simulations();
    const auto [theta1, growth] = sudden_sizes(Theta0, Theta1, N);
    const double mu = theta1 / 2.0 / N;
    const double T = Tau / 2.0 / (mu * N);
    pop->fast_simulate_sample_exp(*simulated_, mutation_model(mu, m1, -1.0, transition_rate), T, growth, N);
    m2 = 0;
    calc_mismatch(diff, freq, sample_size, count);
    return 1;
}

int mismatchSpatialExpansion::simulate_spatial_exp(double* diff, double* freq, int& count) {
    if (!(Theta1 > 0.0)) return 0;
    if (simulated_ == nullptr) begin_simulations();
    const double theta = std::min(Theta1, kMostFounderTheta);
    const double mu = theta / 2.0 / N;
    const double D = M / 2.0;
    const double T = Tau / theta;
    pop->fast_simulate_range_exp(*simulated_, mutation_model(mu, m1, -1.0, transition_rate), T, D, N);
    calc_mismatch(diff, freq, static_cast<int>(pop->sample_size), count);
    return 1;
}

void ann_missmatch::calc_mismatch(double* diff, double* freq, int copies, int count) {
    const int n = simulated_->num_leaves();
    if (copies != n) *_AOS_ << "\nProblem with population sample size in simulation\n";
    for (int k = 0; k < count; ++k) {
        diff[k + 1] = k;
        freq[k + 1] = 0.0;
    }
    simulated_sites_ = simulated_->num_segregating_sites();
    simulated_->count_pair_differences(simulated_pairs_);
    const double pairs_in_all = static_cast<double>(n) * (n - 1) / 2.0;
    if (!(pairs_in_all > 0.0)) return;
    const int classes = std::min(count - 1, static_cast<int>(simulated_pairs_.size()));
    for (int k = 0; k < classes; ++k)
        freq[k + 1] = static_cast<double>(simulated_pairs_[static_cast<std::size_t>(k)]) / pairs_in_all;
}

}  // namespace mnd
