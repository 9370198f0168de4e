// From the counts of a pair of DNA sequences to their distance and its variance.
//
// P and Q are the proportions of sites with a transition and with a transversion among L
// compared sites, f the frequencies of the bases, a the shape of a gamma distribution of
// mutation rates over sites (0: all sites have one rate).
#pragma once

#include <array>

#include "within/dna_site_counts.h"

namespace mnd {

// What a method found for a pair. Each function writes the fields that its comment names and
// leaves the others as they stand.
struct DnaPair {
    double distance = 0.0;
    double distance_var = 0.0;
    int ts_count = 0, tv_count = 0;                      // sites with a transition, with a transversion
    int site_count = 0;                                  // L
    int diff_count = 0;                                  // sites that differ
    double ts_dist = 0.0, tv_dist = 0.0;                 // the parts of the distance
    double ts_rate = 0.0, tv_rate = 0.0;                 // P and Q
    double ts_tv_ratio = 0.0, ts_tv_ratio_var = 0.0;     // -1: not available
    std::array<std::array<double, 4>, 4> pair_counts{};  // types of pairs; row i has i entries
};

// Composition by which the last three methods correct: bases in the order C, T, A, G.
struct BaseComposition {
    std::array<double, 4> frequency{};
    double gc_content = 0.0;
};

// Why there is no distance.
enum class DnaFault {
    kNone,
    kJukesCantorDivergent,
    kKimuraDivergent,
    kTajimaNeiNoNucleotide,
    kTajimaNeiDivergent,
    kTamuraUnbalanced,
    kTamuraLogOfZero,
    kTamuraNeiUnbalanced,
    kTamuraNeiOutOfRange  // reported as unbalanced, then as a distance not computed
};

// Reports a fault as the method that found it; nothing for kNone.
void report_dna_fault(DnaFault fault);

// d = weighted number of differences; var = (1 - p) p L with p = d / L.
void difference_distance(const WeightedSums& sums, DnaPair& pair);

// D = differences / L; var = (1 - D) D / L. With L not above 0 both are 0.
// Writes:  ts_rate, tv_rate, and their ratio R = P/Q with its variance by the delta method
void proportion_distance(const WeightedSums& sums, DnaPair& pair);

// d = -3/4 ln(1 - 4/3 p); with gamma 3/4 a ((1 - 4/3 p)^(-1/a) - 1).
// Fault:   p of 0.75 or more; distance is then -p
// Source:  Jukes and Cantor 1969, in Mammalian Protein Metabolism; Jin and Nei 1990,
//          Mol. Biol. Evol. 7:82-102
DnaFault jukes_cantor_distance(const SiteCounts& counts, double gamma_a, DnaPair& pair);

// d = 1/2 ln(1/(1 - 2P - Q)) + 1/4 ln(1/(1 - 2Q)), and its gamma form. Beyond the range of the
// logarithms the distance is NaN, which is no fault.
// Writes:  also ts_count, tv_count, site_count, ts_rate, tv_rate, ratio and its variance
// Fault:   an argument of exactly 0
// Source:  Kimura 1980, J. Mol. Evol. 16:111-120; Jin and Nei 1990
DnaFault kimura_distance(const SiteCounts& counts, double gamma_a, DnaPair& pair);

// d = -b ln(1 - p/b), b from the frequencies and from the types of pairs.
//   weights   a class of 0 or less makes no difference, but its pairs enter b
// Writes:  also pair_counts (per compared site, unless there is no difference or a fault
//          comes before)
// Fault:   a base that does not occur; p/b of 1 or more
// Source:  Tajima and Nei 1984, Mol. Biol. Evol. 1:269-285
DnaFault tajima_nei_distance(const SiteCounts& counts, const DnaWeights& weights,
                             const BaseComposition& composition, DnaPair& pair);

// d = -h ln(1 - P/h - Q) - (1 - h)/2 ln(1 - 2Q), h = 2 g (1 - g), g the content of G and C.
// Writes:  as kimura_distance
// Fault:   h or an argument of a logarithm not above 0
// Source:  Tamura 1992, Mol. Biol. Evol. 9:678-687
DnaFault tamura_distance(const SiteCounts& counts, const BaseComposition& composition, DnaPair& pair);

// The distance for two rates of transitions and one of transversions, with gamma if a is not 0.
// Writes:  also diff_count, tv_rate; without gamma ts_dist, tv_dist, ratio and its variance
// Fault:   a base that does not occur, an argument not above 0; with gamma, a distance outside
//          the positive range of single precision. The distance and its variance are then 0.
// Kept on purpose: two sequences without a difference have the distance 0, which is within
// the method without gamma and a fault with it.
// Test: DnaDistances.TamuraNeiWithGammaFailsForIdenticalSequences
// Source:  Tamura and Nei 1993, Mol. Biol. Evol. 10:512-526
DnaFault tamura_nei_distance(const SiteCounts& counts, const BaseComposition& composition, double gamma_a,
                             DnaPair& pair);

// The methods of counts by number: 1, 2, 4, 5 and 6.
DnaFault distance_from_counts(int method, const SiteCounts& counts, const DnaWeights& weights,
                              const BaseComposition& composition, double gamma_a, DnaPair& pair);

// Whether a method works on weighted sums: 0, 3, and any number that is not a method.
bool is_weighted_method(int method);

// The methods of sums by number: 3, and the pairwise difference for any other one.
void distance_from_sums(int method, const WeightedSums& sums, DnaPair& pair);

}  // namespace mnd
