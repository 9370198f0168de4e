// What the designs of the analysis of molecular variance share.
#pragma once

#include <ostream>
#include <vector>

#include "between/amova.h"

namespace mnd {

// The result document of an analysis; a stream that keeps nothing while there is none or the
// analysis is silent.
std::ostream& document_of(const Amova& analysis);

// True when the samples of the analysis are groups pooled into one sample each.
bool is_group_level(const Amova& analysis);

// Divides the sums of squares of the rows by their degrees of freedom.
void set_mean_squares(Amova& analysis);

// V_total, the sum of the components of the design; 1e-18 when that is exactly 0.
// Returns: false in that case
bool set_total_variance(Amova& analysis);

// numerator / denominator; 0 when the denominator is exactly 0.
double ratio_or_zero(double numerator, double denominator);

// group_SSD and group_size from group_pops and SSD_pops.
// Returns: the sum of group_SSD
double sum_of_group_ssd(Amova& analysis);
// Sum of SSD / n_i over the samples, as their last tallies gave them.
double sum_within_samples(const Amova& analysis);

// n, n_prime and n_second of several groups from group_pops, group_size and df, for haplotypes
// and for individuals.
void set_haplotype_coefficients(Amova& analysis);
void set_individual_coefficients(Amova& analysis);
// n of a single group: (N - (sum of n_i squared) / N) / (P - 1).
void set_one_group_coefficient(Amova& analysis);

// Writes table and summary row of the observed results and fills the result record.
void publish_observed(Amova& analysis);

// pop_Fis of each sample from SSD_div_n and SSD_within_ind: a / (w + a) with w the component
// within its individuals, a that among them; kUndefinedFis when w + a is exactly 0.
double population_fis(const Population& sample);
// pop_Fis of all samples, when the settings ask for it.
void set_population_fis(Amova& analysis);
// Anchor and table of pop_Fis, when the settings ask for it; with num_perm above 0 the P-values
// pop_Fis_hits / num_perm, which enter the result record too.
void publish_population_fis(Amova& analysis);

// The analysis of haplotypes in several groups, and in samples of one group. Designs that differ
// only in what the tests shuffle share it.
//   origin   reporting function
// Returns: as the designs do
int analyse_groups_of_samples(Amova& analysis, const char* origin);
int analyse_samples(Amova& analysis, const char* origin);

}  // namespace mnd
