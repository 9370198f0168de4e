// The earlier driver of the estimation of haplotype frequencies, on the steps of the model.
#include <algorithm>
#include <cmath>
#include <vector>

#include "model/population.h"
#include "run/settings.h"
#include "within/em_engine.h"
#include "within/em_iteration.h"

namespace mnd {

namespace {

// The frequencies of a store as they stood at some time.
class SavedFrequencies {
public:
    explicit SavedFrequencies(TPopHaploDB const& haplo)
        : freq_(static_cast<std::size_t>(haplo.count)), prev_freq_(freq_.size()) {}

    void save(TPopHaploDB const& haplo) {
        for (std::size_t h = 0; h < freq_.size(); ++h) {
            freq_[h] = haplo.data[h]->freq;
            prev_freq_[h] = haplo.data[h]->prev_freq;
        }
    }
    void restore(TPopHaploDB& haplo) const {
        for (std::size_t h = 0; h < freq_.size(); ++h) {
            haplo.data[h]->freq = freq_[h];
            haplo.data[h]->prev_freq = prev_freq_[h];
        }
    }

private:
    std::vector<double> freq_;
    std::vector<double> prev_freq_;
};

void run_start(TPhenDB& phen, TPopHaploDB& haplo, int max_iter, double epsilon) {
    haplo.assign_rand_init_freq(kRandomStartScale);
    for (int i = 0; i < max_iter; ++i) {
        phen.update_genotypes();
        phen.update_hapl_freq(haplo);
        if (haplo.convergence(epsilon)) return;
    }
}

}  // namespace

double Population::calc_ML_hapl_freq(TPhenDB& phen, TPopHaploDB& haplo, settings& s, int& num_lhoods,
                                     int const& compact, int const& num_init, int const& max_iter,
                                     double const&) {
    constexpr int kIterationsAfterPoorStart = 202;
    constexpr double kTolerance = 0.001;
    num_lhoods = 0;
    if (s.stopped()) return kEstimationStopped;
    if (!list_resolutions(*this, phen, haplo, s, nullptr, nullptr, compact != 0)) return kEstimationStopped;
    DistinctValues likelihoods(kTolerance);
    SavedFrequencies best(haplo);
    double best_likelihood = kLowestLogLikelihood;
    double likelihood = 0.0;
    for (int start = 0; start < num_init; ++start) {
        const bool after_poor_start = start > 0 && likelihood < best_likelihood;
        run_start(phen, haplo, after_poor_start ? std::min(max_iter, kIterationsAfterPoorStart) : max_iter,
                  s.EpsilonValue);
        // Entered before the likelihood of this start is known: it is the one of the start before.
        likelihoods.add(likelihood);
        likelihood = phen.calc_ln_likelihood();
        if (likelihood > best_likelihood) {
            best_likelihood = likelihood;
            best.save(haplo);
        }
        settings::global_work_done += std::exp(phen.num_loci());
        settings::print_message();
        if (s.stopped()) return kEstimationStopped;
    }
    best.restore(haplo);
    num_lhoods = likelihoods.count();
    return likelihood;
}

}  // namespace mnd
