// Indices of diversity locus by locus.
#pragma once

#include <vector>

#include "model/allele_db.h"
#include "model/population.h"

namespace mnd {

// Gene diversity of a locus from the weights of its alleles, in gene copies:
//
//   w/(w - 1) (1 - sum p^2),  p = weight/w,  w the sum of the weights
//
// and 0 for w of 1 or less. The character has no effect.
// Source: Nei 1987, Molecular Evolutionary Genetics, eq. 8.4
double computeHeterozygosity(TLocus* locus, char);

// Sum of the weights of the alleles of a locus.
double gene_copies(const TLocus& locus);

// Size of a microsatellite allele in repeats: the integer part of the number + 0.5.
long allele_size(const my_string& allele);

// Largest less smallest size among the alleles of a locus; -1 for a locus without alleles.
long allele_size_range(const TLocus& locus);

// Garza-Williamson index, the number of alleles over the number of sizes they could have had:
//
//   k/(range + 1)
//
// 0 without alleles. With the range over all samples it is the modified index.
// Source: Garza and Williamson 2001, Molecular Ecology 10:305-318; Excoffier, Estoup and
//         Cornuet 2005, Genetics 169:1727-1738 (range + 1)
double garza_williamson_index(int nb_alleles, double range);

// Observed and expected heterozygosity of one locus of a set of phenotypes:
//
//   observed   heterozygotes over n
//   expected   2 n/(2 n - 1) (1 - sum p^2)
//
// n is the number of individuals without missing alleles at the locus; a phenotype counts with
// the integer part of its frequency. 0 gives zeros.
// Source: Nei 1978, Genetics 89:583-590
struct LocusHeterozygosity {
    double observed = 0.0;
    double expected = 0.0;
    int individuals = 0;
};

// The heterozygosity at nb_loci loci from the first one on.
//   missing   name of the missing allele
// Cost:     O(individuals x loci)
std::vector<LocusHeterozygosity> locus_heterozygosity(const TPhenDB& phenotypes, int first, int nb_loci,
                                                      char missing);

// Mean and standard deviation over loci, the latter 0 for fewer than two.
struct MeanAndSd {
    double mean = 0.0;
    double sd = 0.0;
};
MeanAndSd mean_and_sd(const std::vector<double>& values);

// Gathers the indices per locus of a sample into its fields `locus_nb_alleles` and
// `locus_heterozygosity`; for microsatellites also `allele_range` and `garza_williamson`, and
// `garza_williamson_modified`, which takes its range from `PopGenetics::globalAllelicDB` as far
// as that holds more than the sample.
//   counts   gene copies of the alleles of the sample, see count_alleles
void compute_locus_indices(PopGenetics& sample, const TAlleleDB& counts);

}  // namespace mnd
