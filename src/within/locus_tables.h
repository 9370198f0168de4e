// Tables of the alleles and of the heterozygosity of the loci of a sample.
#pragma once

#include <ostream>

#include "model/allele_db.h"

namespace mnd {

class PopGenetics;

// Copies, alleles and gene diversity of the usable loci, with mean and standard deviation; of
// sequences only the polymorphic sites have a row. Other data say which loci are left out.
//   counts   as given to compute_locus_indices
void print_allele_numbers(std::ostream& out, const PopGenetics& sample, const TAlleleDB& counts);

// Sizes of the alleles and Garza-Williamson indices of a microsatellite sample.
void print_garza_williamson(std::ostream& out, const PopGenetics& sample);

}  // namespace mnd
