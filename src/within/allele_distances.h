// Distances between haplotypes that are lists of alleles, from plain tables of loci.
#pragma once

#include <cstdint>
#include <vector>

namespace mnd {

// Numbers of loci at which two haplotypes have different alleles, both of them known.
class AlleleDifferences {
public:
    // One identity of an allele per haplotype and locus; kMissing where it is not known.
    static constexpr std::int32_t kMissing = 0;
    using Table = std::vector<std::vector<std::int32_t>>;  // [haplotype][locus], rows of one length

    // Cost: O(haplotypes * loci); loci that do not vary are dropped
    explicit AlleleDifferences(const Table& identities);

    // Cost: O(loci that vary); allocates nothing
    int count(int i, int j) const;

private:
    std::size_t loci_ = 0;
    std::vector<std::int32_t> identities_;  // haplotype after haplotype
};

// A microsatellite allele as a number of repeats.
struct RepeatAllele {
    double size = 0.0;
    bool missing = false;  // the missing-data character
};

// Distances of microsatellite haplotypes: numbers of loci whose sizes differ, or sums of
// squared differences of size.
class RepeatDistances {
public:
    // Size that marks an allele as unknown where its haplotype comes first in a pair. One that
    // comes second is known by its missing-data character alone.
    static constexpr double kUnknownSize = -99999.0;
    using Table = std::vector<std::vector<RepeatAllele>>;  // [haplotype][locus], rows of one length

    // Cost: O(haplotypes * loci)
    explicit RepeatDistances(const Table& alleles);

    // Distance of haplotype i, the first of the pair, from j. False if a difference of sizes
    // is infinite. Allocates nothing.
    bool number_of_differences(int i, int j, double& distance) const;
    bool sum_of_squares(int i, int j, double& distance) const;

private:
    template <class Term>
    bool sum(int i, int j, Term term, double& distance) const;

    std::size_t loci_ = 0;
    bool any_order_ = false;           // sums of squares do not round, nor overflow
    std::vector<double> sizes_;        // haplotype after haplotype; 0 where missing
    std::vector<double> known_first_;  // 1, or 0 where the allele adds nothing as first one
    std::vector<double> known_second_;
};

}  // namespace mnd
