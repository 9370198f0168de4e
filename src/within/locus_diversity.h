// Alleles and heterozygosity locus by locus.
#pragma once

#include <ostream>
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

// Gene copies of each allele of a sample, locus by locus, missing alleles left out. Counts
// `hapl_list`, or both strings of alleles of each phenotype where the sample has phenotypes.
TAlleleDB count_alleles(const Population& sample);

// Size of a microsatellite allele in repeats: the integer part of the number + 0.5.
int allele_size(const my_string& allele);

// Largest less smallest size among the alleles of a locus with a weight above 0, of which those
// named by the one character `missing` are left out; -1 without any.
int allele_size_range(const TLocus& locus, char missing);

// Garza-Williamson index, the number of alleles over the number of sizes they could have had:
//
//   k/(range + 1)
//
// 0 without alleles. With the range over all samples it is the modified index.
// Source: Garza and Williamson 2001, Molecular Ecology 10:305-318; Excoffier, Estoup and
//         Cornuet 2005, Genetics 169:1727-1738 (range + 1)
double garza_williamson_index(int nb_alleles, int range);

// Mean and standard deviation over loci, the latter 0 for fewer than two.
struct MeanAndSd {
    double mean = 0.0;
    double sd = 0.0;
};
MeanAndSd mean_and_sd(const std::vector<double>& values);

// Gathers the indices per locus of a sample into its fields `locus_nb_alleles` and
// `locus_heterozygosity`, and its alleles into `PopGenetics::globalAllelicDB`; for
// microsatellites also `allele_range`, `garza_williamson` and `garza_williamson_modified`.
void compute_locus_indices(PopGenetics& sample);

// The table of the Garza-Williamson indices of a microsatellite sample.
void print_garza_williamson(std::ostream& out, const PopGenetics& sample);

}  // namespace mnd
