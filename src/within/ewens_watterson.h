// The tests of neutrality on the allele counts of a sample: the homozygosity test of Ewens and
// Watterson, and Slatkin's exact test.
//
// Both compare the sample with random ones of as many gene copies and alleles under neutrality.
// Sources: Watterson 1978, Genetics 88:405-417; Slatkin 1994, Genetical Research 64:71-74;
//          Slatkin 1996, Genetical Research 68:259-260
#pragma once

#include <vector>

#include "foundation/arrays.h"
#include "model/pop_haplotypes.h"

namespace mnd {

class Population;
class settings;

// Sum of p^2, p = c/n, over counts in ascending order: equal configurations have equal sums to
// the last digit. A count below 1 is used as it stands.
//   counts   k counts in descending order
double homozygosity_of_counts(const int* counts, int k, int n);

// Slatkin's statistic of a configuration, -sum a(c) ln c over the counts c present, ascending,
// where a(c) alleles have c copies. It leaves out the factorials of a(c) of the probability.
//   counts         k counts in descending order; 0 is no class
//   class_counts   written: a(c) at c, 0 .. n
//   log_of         ln c at c, 1 .. n
double slatkin_statistic(const int* counts, int k, int n, int* class_counts,
                         const std::vector<double>& log_of);

// Haplotypes that gene copies of a sample have.
int number_of_alleles(const Population& sample);

// The haplotypes of a sample as records: count, its square, and no deviations; descending counts.
// Haplotypes that no gene copy has are left out. The list is filled afresh.
void list_of_counts(const Population& sample, MY_TISArrayAsVector<AHaplFreq>& list);

}  // namespace mnd
