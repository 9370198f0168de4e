// The tests of neutrality on the allele counts of a sample: the homozygosity test of Ewens and
// Watterson, and Slatkin's exact test.
//
// Both compare the sample with random ones of as many gene copies and alleles under neutrality: the
// P-value is the share of those whose statistic is not above that of the sample. Ties are frequent,
// not only of equal configurations: the squares of 6 3 3 and of 5 5 2 add up to 54, the products of
// 6 6 1 and of 9 2 2 are 36. All count, as the definition of P has it. Both statistics are therefore formed
// in a way that gives equal values to the last digit whenever they are mathematically equal, and are
// compared as they are.
// Sources: Watterson 1978, Genetics 88:405-417; Slatkin 1994, Genetical Research 64:71-74;
//          Slatkin 1996, Genetical Research 68:259-260
#pragma once

#include "foundation/arrays.h"
#include "model/pop_haplotypes.h"

namespace mnd {

class LogOfProduct;
class Population;

// F, the sum of p^2, p = c/n. It is formed as sum c^2 / n^2, of whole numbers that a double holds
// exactly, so that values are equal, or in order, just as the sums of squares are. A count below 1,
// a zero of the draw, contributes 0.
//   counts   k counts in any order, of n below 2^26 copies
double homozygosity_of_counts(const int* counts, int k, int n);

// Slatkin's statistic of a configuration, -sum a(c) ln c over the counts c present, where a(c)
// alleles have c copies. It leaves out the factorials of a(c) of the probability, and is equal for
// configurations with the same product of counts. Different products come out in their order as
// long as their logarithms differ by more than the rounding of the sum, some 1e-13 of it.
//   counts         k counts in descending order; 0 is no class
//   class_counts   written: a(c) at c, 0 .. n
//   product        of numbers up to n
double slatkin_statistic(const int* counts, int k, int n, int* class_counts, LogOfProduct& product);

// Haplotypes that gene copies of a sample have.
int number_of_alleles(const Population& sample);

// The haplotypes of a sample as records: count, its square, and no deviations; descending counts.
// Haplotypes that no gene copy has are left out. The list is filled afresh.
void list_of_counts(const Population& sample, MY_TISArrayAsVector<AHaplFreq>& list);

}  // namespace mnd
