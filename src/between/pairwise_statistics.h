// Statistics of pairs of samples: FST, pairwise differences and what is derived from them.
//
// Source: FST: Excoffier, Smouse and Quattro 1992, Genetics 131:479-491 (analysis of variance of
//         two samples); differences between samples: Nei and Li 1979, Proceedings of the National
//         Academy of Sciences 76:5269-5273
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "between/pairwise_block.h"
#include "foundation/rect_mat.h"
#include "foundation/tri_mat.h"

namespace mnd {

// Sizes of two samples in gene copies and the coefficients that follow from them.
struct PairDesign {
    double n_i = 0.0;
    double n_j = 0.0;
    double N = 0.0;       // both together
    double inv_df = 0.0;  // 1 / (N - 2); 100000 when N is not above 2
    double n = 0.0;       // N - (n_i^2 + n_j^2) / N; 0 when a sample is empty: nothing can be estimated
};
PairDesign pair_design(double n_i, double n_j);

// Components of variance among and within two samples.
struct PairVariance {
    double Va = 0.0;
    double Vw = 0.0;
    double FST = 0.0;  // Va / (Va + Vw); 100000 Va when that sum is not above 0
};
// Both samples hold copies.
PairVariance pair_variance(const PairDesign& design, const PairSSD& ssd);
// Va in the form in which permutations give it: the same but for rounding.
double permuted_component(const PairDesign& design, const PairSSD& ssd);

// Mean numbers of differences between two gene copies.
struct PairDifferences {
    double pi_X = 0.0;       // within the first sample: 2 SSD / ((n - 1) n), 0 for n of 1 or less
    double pi_Y = 0.0;       // within the second one
    double pi_XY = 0.0;      // between: B / (n_i n_j), 0 when a sample is empty
    double corrected = 0.0;  // pi_XY - (pi_X + pi_Y) / 2
    // The same times n_i n_j (n_i - 1) (n_j - 1), a factor of 0 left out. With whole distances it is a
    // whole number, so that arrangements of equal value compare equal, which rounding would hide.
    double corrected_multiple = 0.0;
};
PairDifferences pair_differences(const PairDesign& design, const PairSSD& ssd);

// Mean over loci of the squared difference of mean allele sizes; a locus counts where neither
// mean is 0. 0 with no such locus.
// Source:   Goldstein et al. 1995, Proceedings of the National Academy of Sciences 92:6723-6727
double delta_mu_square(const std::vector<double>& mean_sizes_i, const std::vector<double>& mean_sizes_j);

// --- Transforms of FST; where one is infinite, it is the infinity of double

// -ln(1 - F): 0 for F of 0 or less, infinite for F of 1 or more.
// Source:   Reynolds, Weir and Cockerham 1983, Genetics 105:767-779
double coancestry(double F);
// F / (1 - F), with the same guards.
// Source:   Slatkin 1995, Genetics 139:457-462
double slatkin_distance(double F);
// (1 - F) / (2 F): infinite for F of 0 or less.
// Source:   Slatkin 1991, Genetical Research 58:167-175
double migrants(double F);

// All comparisons of P samples. Tables of what was not asked for are empty.
struct PairwiseResults {
    //   with_divergence   makes room for tau, k and theta0
    //   with_sizes        makes room for delta_mu
    PairwiseResults(int nb_samples, bool with_divergence, bool with_sizes);

    int P;                           // samples
    std::vector<std::string> names;  // of the samples, as they are
    bool compared = false;           // FST and differences were computed
    bool tested = false;             // and tested
    std::int64_t num_perm = 0;       // permutations of each test

    RectMat pi;            // diagonal: within; above: pi_XY; below: corrected
    TriMat fst;            // FST
    TriMat fst_var;        // component of variance among the two samples
    TriMat fst_p;          // P-value of FST
    TriMat fst_sd;         // and its error
    TriMat pi_p;           // P-value of pi_XY
    TriMat pi_corr_p;      // and of the corrected value
    TriMat tau;            // divergence time
    TriMat k_ratio;        // relative size of the first sample's population
    TriMat theta0;         // size of the ancestral population
    TriMat not_converged;  // 1 where these three were not found
    TriMat tau_p;          // P-values of the three
    TriMat k_p;
    TriMat theta0_p;
    TriMat delta_mu;  // delta mu squared
};

}  // namespace mnd
