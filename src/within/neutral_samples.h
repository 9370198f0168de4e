// Simulated samples of a neutral population of constant size, for the P-values of the tests of
// neutrality on sequences.
#pragma once

#include <cmath>

#include "model/integer_part.h"
#include "model/popul_dna.h"
#include "model/popul_rflp.h"
#include "run/settings.h"
#include "simulation/mutated_sites.h"

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

// Samples of as many gene copies as a sample has, and of as many sites as it has usable ones, all
// sites alike, a third of the mutations of nucleotides transitions.
class NeutralSamples {
public:
    // Replicates between two advances of the work done by 1.
    static constexpr int kReplicatesPerUnit = 50;

    //   sample   PopulDNA or PopulRFLP, its loci compared; its tree is made
    template <class Sample>
    NeutralSamples(Sample& sample, double theta) : sample_(sample), n_(integer_part(sample.sample_size)) {
        model_.mu = theta / 2.0;
        model_.sites = sample.nb_usable_loci;
        model_.type = mutation_of(sample);
        sample.allocate_tree(n_);
    }

    // Simulates num_sim samples one after the other and calls take(*this) for each.
    // Draws:    those of PopGenetics::simulate_sample for each
    // Writes:   settings::global_work_done
    // Returns:  false when the run was stopped
    template <class Take>
    bool simulate(int num_sim, const settings& s, Take take) {
        for (int i = 1; i <= num_sim; ++i) {
            sample_.fast_simulate_sample(mutated_, model_);
            take(*this);
            if (i % kReplicatesPerUnit == 0) {
                settings::global_work_done += 1.0;
                settings::print_message();
            }
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
