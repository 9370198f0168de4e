#include "within/em_zipper.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "foundation/random.h"
#include "model/population.h"
#include "run/settings.h"
#include "within/haplotype_frequencies.h"

namespace mnd {

namespace {

// The steps along one order of the loci.
class LocusOrder {
public:
    LocusOrder(Population& sample, settings& s, const TPhenDB& individuals, std::vector<int> order)
        : sample_(sample),
          s_(s),
          individuals_(individuals),
          order_(std::move(order)),
          selected_(order_.size(), 0),
          done_(order_.size(), 0) {}

    // Returns: null when a step failed
    std::unique_ptr<ZipperEstimate> estimate(int window) {
        const int steps = static_cast<int>(order_.size()) / window;
        std::unique_ptr<ZipperEstimate> reached;
        for (int step = 0; step < steps; ++step) {
            mark(step * window, window, selected_);
            reached = add_window(reached.get());
            if (reached == nullptr) return nullptr;
            mark(step * window, window, done_);
        }
        reached->order = std::move(order_);
        reached->loci_used = steps * window;
        return reached;
    }

private:
    void mark(int first, int window, std::vector<int>& mask) const {
        for (int i = first; i < first + window; ++i)
            mask[static_cast<std::size_t>(order_[static_cast<std::size_t>(i)])] = 1;
    }

    // Estimates over the selected loci, within what was reached before on the loci done.
    std::unique_ptr<ZipperEstimate> add_window(ZipperEstimate* reached) {
        auto next = std::make_unique<ZipperEstimate>();
        next->phenotypes.build_sub_PhenDB(selected_.data(), individuals_);
        next->F = s_.EMInbreedingFixedVal;
        next->ln_likelihood = sample_.calc_ML_hapl_freq_hill95_LD(
            next->phenotypes, next->haplotypes, s_, next->num_likelihoods, s_.EMEstimateInbreedingCoeff,
            next->F, reached == nullptr ? nullptr : &reached->haplotypes,
            reached == nullptr ? nullptr : done_.data(), kNotCompacted, s_.InitialConditionsEM,
            s_.MaximumNumOfIterationsEM, s_.EpsilonValue);
        if (estimation_failed(s_, next->ln_likelihood, next->haplotypes)) return nullptr;
        return next;
    }

    static constexpr int kNotCompacted = 0;

    Population& sample_;
    settings& s_;
    const TPhenDB& individuals_;
    std::vector<int> order_;
    std::vector<int> selected_;  // loci of the step under way, 0/1 per locus
    std::vector<int> done_;      // loci of the step before
};

}  // namespace

int zipper_window(int wanted, int loci) {
    return wanted < 1 || wanted > loci ? loci : wanted;
}

int zipper_orders(const settings& s) {
    return std::max(s.EMNumZipRandOrders, 1);
}

void shuffle_loci(std::vector<int>& order) {
    for (std::size_t i = order.size(); i-- > 1;) {
        const auto j = static_cast<std::size_t>(static_cast<double>(i) * ran3());
        std::swap(order[i], order[j]);
    }
}

std::unique_ptr<ZipperEstimate> estimate_by_zipper(Population& sample, settings& s) {
    TPhenDB individuals(sample.phen_db);
    individuals.explode_base();
    const int loci = individuals.num_loci();
    if (loci == 0) return nullptr;
    const int window = zipper_window(s.EMWinSize, loci);
    std::unique_ptr<ZipperEstimate> best;
    for (int run = 0; run < zipper_orders(s) && !s.stopped(); ++run) {
        std::vector<int> order(static_cast<std::size_t>(loci));
        std::iota(order.begin(), order.end(), 0);
        if (s.EMNumZipRandOrders > 0) shuffle_loci(order);
        auto estimate = LocusOrder(sample, s, individuals, std::move(order)).estimate(window);
        if (estimate == nullptr) continue;
        if (best == nullptr || estimate->ln_likelihood > best->ln_likelihood) best = std::move(estimate);
    }
    return best;
}

}  // namespace mnd
