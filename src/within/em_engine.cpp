#include "within/em_engine.h"

#include <algorithm>
#include <cmath>

#include "foundation/random.h"
#include "model/population.h"
#include "run/settings.h"
#include "within/em_iteration.h"

namespace mnd {

void DistinctValues::add(double value) {
    const auto above = std::lower_bound(values_.begin(), values_.end(), value);
    // The nearest neighbours decide: any other value is farther away.
    if (above != values_.end() && !(std::fabs(*above - value) >= tolerance_)) return;
    if (above != values_.begin() && !(std::fabs(value - *(above - 1)) >= tolerance_)) return;
    values_.insert(above, value);
}

int DistinctValues::count() const {
    return static_cast<int>(values_.size());
}

bool list_resolutions(const Population& sample, TPhenDB& phen, TPopHaploDB& haplo, const settings& s,
                      TPopHaploDB* prev_haplo, int* prev_loci, bool compact) {
    constexpr double kNoThreshold = 0.0;
    if (s.EMCheckPhenRedundancy != 0) phen.check_pheno_redundancy();
    phen.kill_gen_lists();
    const int mode = sample.RecessiveAllelesEM;
    const bool listed = prev_haplo == nullptr
                            ? phen.build_all_genotypes(haplo, sample.allele_db, mode)
                            : phen.build_all_compatible_genotypes(*prev_haplo, prev_loci, haplo,
                                                                  sample.allele_db, mode, kNoThreshold);
    if (!listed) {
        phen.kill_gen_lists();
        haplo.empty();
        return false;
    }
    if (compact && sample.allele_db != nullptr) haplo.compact(sample.allele_db, sample.profile.MissingData);
    return true;
}

namespace {

// The starts of one estimation, and the best of them.
class Estimation {
public:
    struct Task {
        bool inbreeding;
        double F;  // to be held when not 0
        int max_iter;
        double epsilon;
    };

    Estimation(TPhenDB& phen, TPopHaploDB& haplo, double gene_copies, const Task& task)
        : phen_(phen),
          haplo_(haplo),
          task_(task),
          estimates_F_(task.inbreeding && task.F == 0.0),
          resolutions_(phen, haplo),
          iteration_(resolutions_, static_cast<std::size_t>(haplo.count),
                     {gene_copies, task.inbreeding, estimates_F_}),
          is_fixed_(haplo.fixed_starts()),
          best_freq_(static_cast<std::size_t>(haplo.count)) {
        for (std::size_t h = 0; h < best_freq_.size(); ++h)
            iteration_.ibd[h] = haplotype(h).homo_freq;
        for (std::size_t p = 0; p < resolutions_.phenotypes(); ++p)
            iteration_.prob[p] = phen.data[p]->phen_prob;
    }

    void run_start() {
        take_random_start();
        for (int i = 0; i < task_.max_iter; ++i) {
            const double change = iteration_.step();
            if (change < task_.epsilon || is_fixed_point(change)) break;
        }
        const double likelihood = iteration_.ln_likelihood();
        if (likelihood > best_likelihood_) {
            best_likelihood_ = likelihood;
            best_F_ = iteration_.F;
            best_freq_ = iteration_.freq;
        }
        likelihoods_.add(likelihood);
        phen_.ln_likelihood = likelihood;
        phen_.inbreeding = iteration_.F;
    }

    // Hands the best frequencies over to the store, and the genotypes that follow from them.
    void restore_best() {
        for (std::size_t h = 0; h < best_freq_.size(); ++h) {
            haplotype(h).freq = best_freq_[h];
            haplotype(h).prev_freq = iteration_.old_freq[h];
            haplotype(h).homo_freq = iteration_.ibd[h];
        }
        for (TPhenotype* phenotype : phen_)
            phenotype->update_posteriors(best_F_);
    }

    double best_likelihood() const { return best_likelihood_; }
    double best_F() const { return best_F_; }
    bool estimates_F() const { return estimates_F_; }
    int num_likelihoods() const { return likelihoods_.count(); }

private:
    TPopHaplotype& haplotype(std::size_t h) const { return *haplo_.data[h]; }

    // Without inbreeding an iteration depends on nothing but the frequencies: once one changes
    // nothing, none does, whatever the threshold.
    bool is_fixed_point(double change) const { return change == 0.0 && !task_.inbreeding; }

    void take_random_start() {
        draw_start_frequencies(iteration_.freq, is_fixed_, kRandomStartScale);
        iteration_.old_freq = iteration_.freq;
        iteration_.F = estimates_F_ ? ran3() / 3.0 : task_.inbreeding ? task_.F : 0.0;
    }

    TPhenDB& phen_;
    TPopHaploDB& haplo_;
    Task task_;
    bool estimates_F_;
    EmResolutions resolutions_;
    EmIteration iteration_;
    std::vector<char> is_fixed_;     // per haplotype: starts with the least weight
    std::vector<double> best_freq_;  // 0 until a start succeeds
    double best_likelihood_ = kLowestLogLikelihood;
    double best_F_ = 0.0;
    DistinctValues likelihoods_{1e-06};
};

}  // namespace

double Population::calc_ML_hapl_freq_hill95_LD(TPhenDB& phen, TPopHaploDB& haplo, settings& s,
                                               int& num_lhoods, int const& use_inbreeding, double& F,
                                               TPopHaploDB* prev_haplo, int* prev_loci, int const& compact,
                                               int const& num_init, int const& max_iter,
                                               double const& epsilon) {
    constexpr double kWorkPerStart = 100.0;
    num_lhoods = 0;
    if (s.stopped()) return kEstimationStopped;
    if (!list_resolutions(*this, phen, haplo, s, prev_haplo, prev_loci, compact != 0))
        return kEstimationStopped;
    Estimation estimation(phen, haplo, sample_size, {use_inbreeding != 0, F, max_iter, epsilon});
    for (int start = 0; start < num_init; ++start) {
        estimation.run_start();
        num_lhoods = estimation.num_likelihoods();
        settings::global_work_done += kWorkPerStart;
        settings::print_message();
        if (s.stopped()) return kEstimationStopped;
    }
    estimation.restore_best();
    if (estimation.estimates_F()) F = estimation.best_F();
    return estimation.best_likelihood();
}

namespace {

// What the drivers of one replicate need to know.
struct Bootstrap {
    int replicates;
    int max_iter;
    double epsilon;
};

// Draws and estimates one sample of n individuals, and adds its frequencies to the sums in haplo.
bool add_replicate(Population& sample, int n, TPopHaploDB& haplo, settings& s, const Bootstrap& bootstrap) {
    constexpr double kLeastFrequency = 1e-07;
    TPhenDB individuals(n, haplo);
    individuals.convert_freq_to_real();
    TPopHaploDB found;
    int num_lhoods = 0;
    double F = 0.0;
    sample.calc_ML_hapl_freq_hill95_LD(individuals, found, s, num_lhoods, 0, F, nullptr, nullptr, 0,
                                       s.NumInitCondBootstrapEM, bootstrap.max_iter, bootstrap.epsilon);
    if (s.stopped() || (found.count == 0 && individuals.count > 0)) return false;
    haplo.sums_hapl_frequencies(found, kLeastFrequency);
    return true;
}

void reset_sums(TPopHaploDB& haplo) {
    for (TPopHaplotype* haplotype : haplo)
        haplotype->sum_freq = haplotype->sum_sq_freq = 0.0;
}

}  // namespace

bool Population::calc_sd_hapl_freq(TPhenDB& phen, TPopHaploDB& haplo, settings& s, int const& num_boot,
                                   int const& max_iter, double const& epsilon) {
    if (num_boot < 1) return true;
    reset_sums(haplo);
    const auto has_frequency = [](TPopHaplotype const* haplotype) { return haplotype->freq > 0.0; };
    if (std::none_of(haplo.begin(), haplo.end(), has_frequency)) return true;
    const int n = phen.nb_individuals();
    for (int replicate = 0; replicate < num_boot; ++replicate) {
        if (!add_replicate(*this, n, haplo, s, {num_boot, max_iter, epsilon})) {
            reset_sums(haplo);
            return false;
        }
    }
    haplo.calc_sd(num_boot);
    return true;
}

}  // namespace mnd
