// Estimation of haplotype frequencies from genotypes of unknown phase, by the EM algorithm: over
// all loci at once, window by window, and over single loci and pairs of loci.
//
// Source: Excoffier and Slatkin 1995, Mol. Biol. Evol. 12:921-927
#pragma once

#include "model/phenotypes.h"
#include "model/pop_haplotypes.h"

namespace mnd {

class Population;
class settings;

// Result of PopGenetics::comp_gam_phase_EM after a stop.
inline constexpr unsigned kEmStopped = static_cast<unsigned>(-1000);

// Convergence threshold of all bootstrap replicates.
inline constexpr double kBootstrapEpsilon = 1e-07;

// Whether an estimation was stopped, or an individual had too many resolutions for it: there is
// nothing to show then.
bool estimation_failed(const settings& s, double ln_likelihood, const TPopHaploDB& haplotypes);

// Frequencies over a subset of the loci.
struct SubsetEstimate {
    double ln_likelihood = 0.0;
    int num_likelihoods = 0;
    bool has_sd = false;     // standard deviations were computed
    TPopHaploDB haplotypes;  // of two loci: with D and D'
    TPhenDB phenotypes;      // restricted to the loci; their genotypes point into haplotypes
};

// Estimates the frequencies over a subset of the loci of phen, without inbreeding.
//   subset     [0] number of loci, [1..] their positions in phen, from 0
//   num_boot   bootstrap replicates for standard deviations; 0: none
// Writes: estimate, which is passed empty
// Returns: false when the work was stopped, or the phenotypes have too many resolutions
bool estimate_subset(Population& sample, const int* subset, const TPhenDB& phen, settings& s, int num_init,
                     int num_boot, int max_iter, double epsilon, SubsetEstimate& estimate);

}  // namespace mnd
