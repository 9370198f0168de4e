// What a site of two DNA sequences counts for, under each of the distance methods.
//
// A site where exactly one sequence has the missing-data character shows no difference,
// whatever that character is; methods differ in whether such a site is counted at all.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "within/site_pair_counter.h"

namespace mnd {

// Numbers of the distance methods, as in the settings file. Any other number stands for the
// pairwise difference.
enum DnaDistanceMethod : int {
    kPairwiseDifference = 0,
    kJukesCantor = 1,
    kKimuraTwoParameters = 2,
    kProportionOfDifference = 3,
    kTajimaNei = 4,
    kTamura = 5,
    kTamuraNei = 6
};

// Name of a method in the results, and the label of its column in tables.
const char* dna_distance_name(int method);
const char* dna_distance_label(int method);

// Order of the bases in frequencies and in counts of pairs.
enum BaseIndex : int { kBaseC = 0, kBaseT = 1, kBaseA = 2, kBaseG = 3 };

// Index of a base; -1 for any other character.
int base_index(char c);

// Weights of the classes of differences; one of 0 or less takes its class out of the distance.
struct DnaWeights {
    double transition = 1.0;
    double transversion = 1.0;
    double deletion = 1.0;
};

// Counters of a pair of sequences. Each method uses one of these sets; kCompared is the
// number of sites compared, the L of the formulae.
using SiteCounts = SitePairCounter::Counts;

// Pairwise difference and proportion of difference: one counter per class of difference,
// whatever the weights, and the sites missing in both sequences.
enum WeightedCounter : int {
    kWeightedTransitions = 0,
    kWeightedTransversions = 1,
    kWeightedDeletions = 2,
    kWeightedUndetermined = 3,
    kWeightedBothMissing = 4,
    kNumWeightedCounters = 5
};
// Jukes and Cantor.
enum JukesCantorCounter : int {
    kJukesCantorDifferences = 0,
    kJukesCantorCompared = 1,
    kNumJukesCantorCounters = 2
};
// Kimura, and Tamura.
enum TwoClassCounter : int {
    kTwoClassTransitions = 0,
    kTwoClassTransversions = 1,
    kTwoClassCompared = 2,
    kNumTwoClassCounters = 3
};
// Tajima and Nei: unordered pairs of different bases; base i with base j below i is at
// i (i - 1) / 2 + j.
enum TajimaNeiCounter : int { kTajimaNeiPairs = 0, kTajimaNeiCompared = 6, kNumTajimaNeiCounters = 7 };
// Tamura and Nei.
enum TamuraNeiCounter : int {
    kTamuraNeiPyrimidines = 0,  // C with T
    kTamuraNeiPurines = 1,      // A with G
    kTamuraNeiTransversions = 2,
    kTamuraNeiCompared = 3,
    kNumTamuraNeiCounters = 4
};

// Number of counters that a method uses.
int num_dna_counters(int method);

// Set of counters that a site with the characters a, of the first sequence, and b adds 1 to.
//   weights   only whether they are above 0 counts here
unsigned dna_site_counters(int method, const DnaWeights& weights, char missing, char a, char b);

// Sums of weights over the sites of a pair.
struct WeightedSums {
    double compared = 0.0;     // L: a site that differs weighs as its class, any other one 1
    double differences = 0.0;  // all classes
    double transitions = 0.0;
    double transversions = 0.0;
    double deletions = 0.0;
};

// How sites of one class of difference enter the sums.
struct ClassWeight {
    double compared = 1.0;    // added to WeightedSums::compared
    double difference = 0.0;  // added to differences and to one of the three classes
    double WeightedSums::*kind = &WeightedSums::transitions;

    void add_to(WeightedSums& sums) const {
        sums.compared += compared;
        sums.differences += difference;
        sums.*kind += difference;
    }
};

// By counter, from kWeightedTransitions to kWeightedUndetermined. A substitution between
// ambiguity symbols weighs as the lighter of transition and transversion.
using ClassWeights = std::array<ClassWeight, 4>;
ClassWeights class_weights(const DnaWeights& weights);

// Whether sums of these weights over that many sites are exact in double precision, whatever
// their order, so that counts may be multiplied by weights.
bool sums_are_exact(const ClassWeights& weights, int num_sites);

// The sums from the counters of a pair; exact sums only.
WeightedSums weighted_sums(const ClassWeights& weights, const SiteCounts& counts, int num_sites);

// The sums in the order of the sites, for weights whose sums round.
//   counter   of the weighted counters, with the sites in their order
WeightedSums ordered_weighted_sums(const ClassWeights& weights, const SitePairCounter& counter, int i, int j);

// The sums of two texts, site by site.
WeightedSums weighted_sums_of_texts(const DnaWeights& weights, char missing, const std::vector<int>& sites,
                                    std::string_view s1, std::string_view s2);

// The counters of two texts, site by site; sites beyond the end of a text are missing there.
SiteCounts dna_counts_of_texts(int method, const DnaWeights& weights, char missing,
                               const std::vector<int>& sites, std::string_view s1, std::string_view s2);

}  // namespace mnd
