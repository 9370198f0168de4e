#include "within/haplotype_frequencies.h"

#include <algorithm>
#include <array>
#include <fstream>

#include "model/population.h"
#include "run/errors.h"
#include "run/settings.h"
#include "within/em_engine.h"
#include "within/em_zipper.h"
#include "within/haplotype_frequency_tables.h"

namespace mnd {

namespace {

void tell(const char* message) {
    settings::set_message(message);
    settings::print_message();
}

// Data without a polymorphic locus stay as they are.
bool is_compacted(const TPopHaploDB& haplotypes) {
    return haplotypes.poly_mask != nullptr && haplotypes.reference != nullptr;
}

// All estimations that the settings ask for in one sample.
class HaplotypeFrequencies {
public:
    HaplotypeFrequencies(PopGenetics& sample, settings& s) : sample_(sample), s_(s), out_(*s.result_stream) {}

    unsigned run() {
        if (sample_.phen_db.count == 0) {
            out_ << "The sample has no individuals\n\n";
            return kDone;
        }
        if (s_.EMUseZipper == 1 && s_.EMEstimHaplFreqs != 0) {
            compact_ = 0;
            window_by_window();
            if (s_.stopped()) return kEmStopped;
            if (s_.ComputeAllAllelesEM == 0) return kDone;
        }
        if (s_.EMEstimHaplFreqs != 0) {
            all_loci_at_once();
            if (s_.stopped()) return kEmStopped;
            if (s_.ComputeAllSubHaplotypesEM != 0) pairs_of_loci();
        }
        if (s_.ComputeAllAllelesEM != 0) single_loci();
        // Over all loci at once the head has it already.
        if (s_.ComputeAllAllelesEM != 0 && s_.EMEstimHaplFreqs == 0) cite_em(out_);
        return kDone;
    }

private:
    static constexpr unsigned kDone = 1;

    void announce() {
        *_AOS_ << "\n\t\tComputing ML haplotype frequencies using the EM algorithm...\n";
        tell("Computing ML haplotype frequencies using the EM algorithm...");
    }

    EmSummary summary_of(double ln_likelihood, int num_likelihoods, double F) const {
        return {sample_.sample_size,
                s_.InitialConditionsEM,
                num_likelihoods,
                s_.EpsilonValue,
                ln_likelihood,
                s_.EMEstimateInbreedingCoeff != 0,
                F};
    }

    // --- Window by window

    void window_by_window() {
        announce();
        const auto estimate = estimate_by_zipper(sample_, s_);
        if (!s_.print_em_results) return;
        if (estimate == nullptr) {
            if (!s_.stopped()) print_not_resolvable(out_);
            return;
        }
        print_zipper_head(out_, summary_of(estimate->ln_likelihood, estimate->num_likelihoods, estimate->F),
                          {s_.EMWinSize,
                           zipper_window(s_.EMWinSize, sample_.phen_db.num_loci()),
                           zipper_orders(s_),
                           {estimate->order.begin(), estimate->order.begin() + estimate->loci_used}});
        print_frequencies(estimate->phenotypes, estimate->haplotypes, estimate->F);
        if (s_.ComputeAllAllelesEM != 0) return;  // what follows has it
        out_ << '\n';
        cite_em(out_);
    }

    // The genotypes name haplotypes by the ranks that their table has given them.
    void print_frequencies(TPhenDB& phenotypes, TPopHaploDB& haplotypes, double F) {
        haplotypes.print(out_, compact_, s_.FrequencyThreshold);
        out_ << "\n//------------------------------------------------------\n\n";
        phenotypes.printGenotypeFrequencies(out_, F, is_compacted(haplotypes) ? &haplotypes : nullptr);
    }

    // --- All loci at once

    // Works on a copy of the phenotypes: merging equal ones is no business of other analyses.
    void all_loci_at_once() {
        announce();
        sample_.hapl_db.empty();
        TPhenDB phenotypes(sample_.phen_db);
        double F = s_.EMEstimateInbreedingCoeff != 0 ? s_.EMInbreedingFixedVal : 0.0;
        int num_likelihoods = 0;
        const double ln_likelihood = sample_.calc_ML_hapl_freq_hill95_LD(
            phenotypes, sample_.hapl_db, s_, num_likelihoods, s_.EMEstimateInbreedingCoeff, F, nullptr,
            nullptr, compact_, s_.InitialConditionsEM, s_.MaximumNumOfIterationsEM, s_.EpsilonValue);
        if (s_.stopped()) return;
        if (estimation_failed(s_, ln_likelihood, sample_.hapl_db)) {
            print_not_resolvable(out_);
            return;
        }
        print_one_pass_head(out_, summary_of(ln_likelihood, num_likelihoods, F));
        standard_deviations(phenotypes);
        print_frequencies(phenotypes, sample_.hapl_db, F);
        phenotypes.kill_gen_lists();
        drop_unlisted();
    }

    // The store stays with the sample as long as the project: what is too rare to be shown is not
    // worth its room.
    void drop_unlisted() {
        double threshold = s_.FrequencyThreshold;
        sample_.hapl_db.cleanDB(threshold);
    }

    // A line on the replicates stands above the table in any case.
    void standard_deviations(TPhenDB& phenotypes) {
        if (s_.NumBootstrapReplicatesEM <= 0) {
            out_ << "Standard deviations not computed \n";
            return;
        }
        tell("Computing ML hapl. freq. standard deviations ...");
        out_ << "No. of bootstraps for generating s.d.'s      : " << s_.NumBootstrapReplicatesEM << '\n';
        const bool computed =
            sample_.calc_sd_hapl_freq(phenotypes, sample_.hapl_db, s_, s_.NumBootstrapReplicatesEM,
                                      s_.MaximumNumOfIterationsEM, kBootstrapEpsilon);
        if (!computed) out_ << "(not completed: the standard deviations below are not known)\n";
    }

    // --- Some of the loci

    void pairs_of_loci() {
        out_ << " \n\nBi-locus ML haplotype frequencies : \n\n(" << std::max(s_.NumBootstrapReplicatesEM, 0)
             << " bootstrap replicates)\n\n";
        tell("Computing bi-locus haplotype ML frequencies ...");
        sample_.calc_all_pairs(*s_.result_stream, sample_.phen_db, s_, s_.InitialConditionsEM,
                               s_.NumBootstrapReplicatesEM, s_.MaximumNumOfIterationsEM, s_.EpsilonValue);
    }

    void single_loci() {
        out_ << " \n\nAllele frequencies : \n\n(" << std::max(s_.NumBootstrapReplicatesEM, 0)
             << " bootstrap replicates)\n\n";
        tell("Computing ML allele frequencies ...");
        sample_.calc_all_sites(*s_.result_stream, sample_.phen_db, s_, s_.InitialConditionsEM,
                               s_.NumBootstrapReplicatesEM, s_.MaximumNumOfIterationsEM, s_.EpsilonValue);
    }

    PopGenetics& sample_;
    settings& s_;
    std::ostream& out_;
    int compact_ = s_.CompactHaplotypeDataBaseEM;
};

}  // namespace

bool estimation_failed(const settings& s, double ln_likelihood, const TPopHaploDB& haplotypes) {
    return s.stopped() || (haplotypes.count == 0 && ln_likelihood == kEstimationStopped);
}

unsigned PopGenetics::comp_gam_phase_EM(settings& s) {
    return HaplotypeFrequencies(*this, s).run();
}

bool estimate_subset(Population& sample, const int* subset, const TPhenDB& phen, settings& s, int num_init,
                     int num_boot, int max_iter, double epsilon, SubsetEstimate& estimate) {
    constexpr int kNoInbreeding = 0;
    constexpr int kNotCompacted = 0;
    double F = 0.0;
    estimate.phenotypes.create_temp_PhenDB(subset, phen);
    estimate.ln_likelihood = sample.calc_ML_hapl_freq_hill95_LD(
        estimate.phenotypes, estimate.haplotypes, s, estimate.num_likelihoods, kNoInbreeding, F, nullptr,
        nullptr, kNotCompacted, num_init, max_iter, epsilon);
    if (estimation_failed(s, estimate.ln_likelihood, estimate.haplotypes)) return false;
    if (num_boot > 0) {
        estimate.has_sd = sample.calc_sd_hapl_freq(estimate.phenotypes, estimate.haplotypes, s, num_boot,
                                                   max_iter, kBootstrapEpsilon);
    }
    if (subset[0] == 2) estimate.haplotypes.update_lk_equil();
    return !s.stopped();
}

int Population::calc_subset_hapl_freq(std::basic_fstream<char>& out, int const* subset, TPhenDB const& phen,
                                      settings& s, int const& num_init, int const& num_boot,
                                      int const& max_iter, double const& epsilon) {
    SubsetEstimate estimate;
    if (!estimate_subset(*this, subset, phen, s, num_init, num_boot, max_iter, epsilon, estimate)) return 0;
    const EmSummary summary{sample_size, num_init, estimate.num_likelihoods, epsilon, estimate.ln_likelihood};
    print_subset_head(out, subset, summary, num_boot);
    estimate.haplotypes.print(out, 0, s.FrequencyThreshold);
    out << "\n\n";
    return 1;
}

int Population::calc_all_sites(std::basic_fstream<char>& out, TPhenDB const& phen, settings& s,
                               int const& num_init, int const& num_boot, int const& max_iter,
                               double const& epsilon) {
    const int loci = phen.num_loci();
    for (int locus = 0; locus < loci; ++locus) {
        const std::array<int, 2> subset = {1, locus};
        if (calc_subset_hapl_freq(out, subset.data(), phen, s, num_init, num_boot, max_iter, epsilon) == 0)
            return 0;
    }
    return 1;
}

int Population::calc_all_pairs(std::basic_fstream<char>& out, TPhenDB const& phen, settings& s,
                               int const& num_init, int const& num_boot, int const& max_iter,
                               double const& epsilon) {
    const int loci = phen.num_loci();
    for (int j = 1; j < loci; ++j) {
        for (int i = 0; i < j; ++i) {
            const std::array<int, 3> subset = {2, i, j};
            if (calc_subset_hapl_freq(out, subset.data(), phen, s, num_init, num_boot, max_iter, epsilon) ==
                0)
                return 0;
        }
    }
    return 1;
}

}  // namespace mnd
