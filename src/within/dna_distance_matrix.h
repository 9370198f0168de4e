// Distances between all pairs of a set of DNA sequences.
//
// The numbers are those of a comparison site by site, to the last digit: counts of sites are
// whole numbers, and where weights make a sum round it is taken in the order of the sites.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "within/dna_distance_formulas.h"
#include "within/dna_site_counts.h"
#include "within/site_pair_counter.h"

namespace mnd {

struct DnaDistanceParameters {
    int method = kPairwiseDifference;  // DnaDistanceMethod, or any other number for the same
    DnaWeights weights;
    double gamma_a = 0.0;         // shape of the gamma correction; 0: none
    char missing = '?';           // missing-data character
    BaseComposition composition;  // read by methods 4 to 6
};

class DnaDistances {
public:
    // Encodes the sequences; they need not outlive the call.
    //   sites   indices of the sites compared, ascending; one beyond the end of a sequence
    //           counts as missing there
    DnaDistances(const DnaDistanceParameters& parameters, const std::vector<std::string_view>& sequences,
                 const std::vector<int>& sites);

    // Distance of sequence i from j, i the first of the pair; all fields of the method.
    DnaFault compare(int i, int j, DnaPair& pair) const;

    // The same, but of the fields only distance and distance_var are sure to be written.
    // Results are remembered by their counts. Allocates nothing.
    DnaFault distance(int i, int j, DnaPair& pair);

private:
    // Result of counts that were met before.
    struct Remembered {
        std::array<std::int32_t, 4> counts{-1, -1, -1, -1};
        double distance = 0.0;
        double distance_var = 0.0;
    };

    WeightedSums sums(int i, int j) const;
    DnaFault from_counts(const SiteCounts& counts, DnaPair& pair) const;

    DnaDistanceParameters parameters_;
    ClassWeights class_weights_;
    bool weighted_;  // a method of sums
    bool exact_;     // whose sums do not round
    SitePairCounter counter_;
    std::vector<Remembered> memory_;  // by a hash of the counts; empty where it does not pay
};

// Distance of two texts compared site by site, without any encoding; the plain form for one pair.
DnaFault compare_texts(const DnaDistanceParameters& parameters, const std::vector<int>& sites,
                       std::string_view s1, std::string_view s2, DnaPair& pair);

// Whether a method corrects by the composition of the sample.
bool needs_base_composition(int method);

}  // namespace mnd
