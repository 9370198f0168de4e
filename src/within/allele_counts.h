// Gene copies of each allele, locus by locus.
#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "model/allele_db.h"
#include "model/population.h"
#include "model/samples.h"

namespace mnd {

// Copies of the alleles of one locus, told apart by address, in order of first appearance.
class AlleleTally {
public:
    struct Entry {
        const TAllele* allele;  // not owned
        double copies;
    };

    // Counts copies of an allele; null is passed over.
    // Cost: a scan up to 16 alleles, hashed above
    void add(const TAllele* allele, double copies);
    const std::vector<Entry>& entries() const { return entries_; }

private:
    using Index = std::unordered_map<const TAllele*, std::size_t>;

    Entry* find(const TAllele* allele);

    std::vector<Entry> entries_;
    std::unique_ptr<Index> index_;  // owned: places in entries_; null while these are few
};

// Gene copies of each allele of a sample, in the field freq of the alleles, without missing
// alleles and alleles of no copy. Counts both strings of alleles of each phenotype of a sample
// with phenotypes, else `hapl_list`. Every locus of the data is there, if only with no allele.
// Cost: O(gene copies or haplotypes x loci)
TAlleleDB count_alleles(const Population& sample);

// The same over all samples, into `PopGenetics::globalAllelicDB`, whose content is replaced.
void count_global_alleles(const Samples& samples);

}  // namespace mnd
