#include "simulation/mutation_process.h"

#include <climits>

#include "foundation/message_codes.h"
#include "foundation/report.h"

namespace mnd {
namespace {

// Sums of TNode::mut_rates from the last site down: entry i is that of the last i + 1 sites. Kept
// between trees, so that no replicate allocates.
std::vector<double> rate_sums;

// Fills rate_sums for the sites of a sequence. True when no sum is below the one before it.
bool sum_rates(int sites) {
    const std::vector<double>& rates = TNode::mut_rates.rates;
    const std::size_t n = std::min(rates.size(), static_cast<std::size_t>(sites));
    rate_sums.resize(n);
    double sum = 0.0;
    bool ascending = true;
    for (std::size_t i = 0; i < n; ++i) {
        const double rate = rates[n - 1 - i];
        ascending = ascending && rate >= 0.0;
        rate_sums[i] = sum += rate;
    }
    return ascending;
}

// a + b within the range of int.
int add_within_range(int a, int b) {
    const long sum = static_cast<long>(a) + b;
    return static_cast<int>(std::clamp<long>(sum, INT_MIN, INT_MAX));
}

}  // namespace

MutationProcess::MutationProcess(const MutationModel& model)
    : type_(model.type),
      sites_(model.sites),
      ts_rate_(model.ts_rate),
      bounded_(model.bounded != 0),
      step_geom_(model.step_geom) {
    const auto sites = static_cast<std::size_t>(sites_);
    if (TNode::hits.size() < sites) TNode::hits.resize(sites, 0);
    if (std::fabs(model.gamma_a) < kNoGammaShape) return;
    ascending_ = sum_rates(sites_);
    sums_ = &rate_sums;
}

// The sum may stay below u by rounding: the first site is then hit.
int MutationProcess::site_of_rates(double u) const {
    const auto exceeds = [u](double sum) { return sum > u; };
    const auto found = ascending_ ? std::upper_bound(sums_->begin(), sums_->end(), u)
                                  : std::find_if(sums_->begin(), sums_->end(), exceeds);
    if (found == sums_->end()) return 0;
    return static_cast<int>(sums_->end() - found) - 1;
}

int MutationProcess::step(int state) const {
    int size = 1;
    if (step_geom_ > 0.0) size = add_within_range(geometric(step_geom_), 1);
    const bool at_min = bounded_ && state == TNode::min_mic;
    const bool at_max = bounded_ && state == TNode::max_mic;
    bool down = at_max;
    if (!at_min && !at_max) down = ran3() < 0.5;
    const int moved = add_within_range(state, down ? -size : size);
    if (!bounded_) return moved;
    return std::max(TNode::min_mic, std::min(moved, TNode::max_mic));
}

int mutations_on_branch(double mu, double length, long* seed) {
    const float number = poidev(static_cast<float>(mu * length), seed);
    return static_cast<int>(std::min(static_cast<double>(number), static_cast<double>(INT_MAX)));
}

bool prepare_sites(const MutationModel& model) {
    const auto sites = static_cast<std::size_t>(std::max(model.sites, 0));
    if (!TNode::hits.empty() && TNode::hits.size() != sites) {
        report(Warning, "PopGenetics::sprinkle_mutations()", kHitsVectorHasBadSize);
        return false;
    }
    TNode::hits.assign(sites, 0);
    if (model.gamma_a == 0.0) return true;
    if (TNode::mut_rates.rates.size() != sites) {
        TNode::mut_rates.build(model.sites, model.gamma_a, model.p_fixed, model.fixed_rate);
    } else {
        TNode::mut_rates.get_new_rates(model.gamma_a, model.p_fixed, model.fixed_rate);
    }
    return true;
}

}  // namespace mnd
