// Simulated samples of a neutral population of constant size, for the P-values of the tests of
// neutrality on sequences.
#pragma once

#include <cmath>

#include "model/integer_part.h"
#include "model/popul_dna.h"
#include "model/popul_rflp.h"
#include "run/settings.h"
#include "simulation/mutated_sites.h"
#include "within/replicate_progress.h"

namespace mnd {

// Mean and standard deviation of values of which only sums are kept.
class RunningSums {
public:
    void add(double value) {
        ++count_;
        sum_ += value;
        sum_sq_ += value * value;
    }
    int count() const { return count_; }
    // 0 without values.
    double mean() const { return count_ == 0 ? 0.0 : sum_ / count_; }
    // Divisor count - 1; 0 for fewer than two values.
    double sd() const {
        if (count_ < 2) return 0.0;
        const double variance = (sum_sq_ - sum_ * sum_ / count_) / (count_ - 1);
        return variance > 0.0 ? std::sqrt(variance) : 0.0;
    }

private:
    int count_ = 0;
    double sum_ = 0.0;
    double sum_sq_ = 0.0;
};

inline Mut_Type mutation_of(const PopulDNA&) {
    return kNucleotideMutation;
}
inline Mut_Type mutation_of(const PopulRFLP&) {
    return kBinaryMutation;
}

// Whether the distances of a sample count some substitutions other than once.
inline bool has_weights(const PopulDNA& sample) {
    return sample.ts_weight != 1.0 || sample.tv_weight != 1.0;
}
inline bool has_weights(const PopulRFLP&) {
    return false;
}

// Samples of as many gene copies and sites as a sample has, all sites alike, a third of the
// mutations of nucleotides transitions.
//
// The sites are those of its whole sequences, unusable ones too: theta is that of a sequence
// whatever its length, which only tells how often mutations hit a site again, and a gap or
// missing data in some copies do not make a sequence shorter.
//
// Every difference counts 1, whatever weights the distances of the sample have.
class NeutralSamples {
public:
    //   sample   PopulDNA or PopulRFLP, its loci compared; its tree is made
    template <class Sample>
    NeutralSamples(Sample& sample, double theta) : sample_(sample), n_(integer_part(sample.sample_size)) {
        model_.mu = theta / 2.0;
        model_.sites = sample.nb_observed_sites;
        model_.type = mutation_of(sample);
        sample.allocate_tree(n_);
    }

    // Simulates num_sim samples one after the other and calls take(*this) for each.
    // Draws:    those of PopGenetics::simulate_sample for each
    // Writes:   settings::global_work_done
    // Returns:  false when the run was stopped
    template <class Take>
    bool simulate(int num_sim, const settings& s, Take take) {
        for (int done = 0; done < num_sim;) {
            sample_.fast_simulate_sample(mutated_, model_);
            take(*this);
            kSequenceTestProgress.note(++done);
            if (s.stopped()) return false;
        }
        return true;
    }

    // --- Of the sample simulated last

    int segregating_sites() const { return mutated_.num_segregating_sites(); }
    // Mean number of pairwise differences, as molecular_diversity has it.
    double mean_pairwise_differences() const {
        const double n = n_;
        return static_cast<double>(mutated_.pair_differences()) / (n * (n - 1.0) / 2.0);
    }
    int alleles() { return mutated_.num_haplotypes(); }

private:
    PopGenetics& sample_;
    int n_;
    MutationModel model_;
    MutatedSites mutated_;
};

}  // namespace mnd
