// The tests of selective neutrality in the result document and in the batch summaries.
#pragma once

#include <fstream>
#include <ostream>

#include "foundation/arrays.h"
#include "model/pop_haplotypes.h"
#include "within/fu_fs.h"
#include "within/tajima.h"

namespace mnd {

class PopGenetics;
class settings;

// The tests on allele counts need at least two alleles, and fewer than there are gene copies.
enum class AlleleCountFault { kNone, kAllDifferent, kOneAllele };
// A single gene copy counts as all different.
AlleleCountFault allele_count_fault(int k, int n);

// Why the tests of Ewens and Watterson and of Slatkin are impossible, with the sizes of the sample.
void print_impossible(std::ostream& out, const PopGenetics& sample, const settings& s, AlleleCountFault fault,
                      int k);
void print_all_different(std::ostream& out);
// The sample is beyond the limits of the tests.
void print_watterson_limits(std::ostream& out);
void print_too_large(std::ostream& out);
// In place of a test when there is a single haplotype, and of one that microsatellites do not allow.
//   warning   one of these two
inline constexpr const char* kChakrabortyWarning =
    "Warning: Chakraborty's test of selective neutrality cannot be performed \n";
inline constexpr const char* kEwensWattersonWarning =
    "Warning: Ewens-Watterson's test of selective neutrality cannot be performed \n";
void print_single_haplotype(std::ostream& out, const char* warning);
void print_no_infinite_alleles(std::ostream& out, const char* warning);

// The tests of Ewens and Watterson and of Slatkin, from the fields of the sample.
//   k          alleles in the sample
//   num_sim    simulated samples; 0: nothing to compare with
void print_ewens_watterson(std::ostream& out, const PopGenetics& sample, const settings& s, int k,
                           int num_sim);
// Frequencies by rank, the observed ones and their expectations.
//   observed   counts in freq
//   expected   as AHaplFreq::calc_mean_freq leaves them
void print_rank_frequencies(std::ostream& out, const PopGenetics& sample,
                            const MY_TISArrayAsVector<AHaplFreq>& observed,
                            const MY_TISArrayAsVector<AHaplFreq>& expected);

// Chakraborty's test, from the fields of the sample.
void print_chakraborty(std::ostream& out, const PopGenetics& sample, int k);

// In place of a test on sequences whose distances could not be computed.
void print_no_distances_for_test(std::ostream& out);
// The observed values of a test on sequences, and what simulations tell of them.
void print_tajima(std::ostream& out, const TajimaReport& report);
void print_tajima_simulations(std::ostream& out, const TajimaReport& report);
void print_fu(std::ostream& out, const FuReport& report);
void print_fu_simulations(std::ostream& out, const FuReport& report);

// Batch summaries; null while they are not asked for. not owned. A row has the names of project
// and sample in double quotes, then its values behind tabs, "N.A." for one that was not computed.
extern std::ofstream* ofs_tajima;      // "tajima.sum": n, S, pi, theta(S), D, P, mean D, P(D<=0), simulations
extern std::ofstream* ofs_fu_fs;       // "fu_fs.sum": n, k, original k, theta(Pi), exp. k, Fs, P, simulations
extern std::ofstream* ofs_ewens_watt;  // "ewens.sum": n, original k, k, F, expected F, P, Slatkin's P
extern std::ofstream* ofs_chakra;      // "chakra.sum": n, k, homozygosity, exp. k, P(k), P(k or more)

void write_tajima_row(const PopGenetics& sample, const TajimaReport& report);
void write_fu_row(const PopGenetics& sample, const FuReport& report);
void write_ewens_watterson_row(const PopGenetics& sample, int k);
// Tells why there are no values.
void write_ewens_watterson_row(const PopGenetics& sample, AlleleCountFault fault);
void write_chakraborty_row(const PopGenetics& sample, int k);

}  // namespace mnd
