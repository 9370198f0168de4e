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

// Each of these tests needs at least two alleles, fewer than gene copies.
enum class AlleleCountFault { kNone, kAllDifferent, kOneAllele };

// Why the tests on allele counts are impossible, with the sizes of the sample.
void print_impossible(std::ostream& out, const PopGenetics& sample, AlleleCountFault fault);
// The sample is beyond the limits of these tests.
void print_too_large(std::ostream& out);
// The warning that takes the place of a test when there is a single haplotype; test is its name.
void print_single_haplotype(std::ostream& out, const char* test);

// The tests of Ewens and Watterson and of Slatkin, from the fields of the sample.
//   k          alleles in the sample
//   num_sim    simulated samples; 0: P-values are not available
void print_ewens_watterson(std::ostream& out, const PopGenetics& sample, const settings& s, int k,
                           int num_sim);
// Observed counts and frequencies by rank, and their expectations.
//   observed   counts
//   expected   as AHaplFreq::calc_mean_freq leaves them
void print_rank_frequencies(std::ostream& out, const PopGenetics& sample,
                            const MY_TISArrayAsVector<AHaplFreq>& observed,
                            const MY_TISArrayAsVector<AHaplFreq>& expected);

// Chakraborty's test, from the fields of the sample.
void print_chakraborty(std::ostream& out, const PopGenetics& sample, int k);

// The observed values of Tajima's test, and what simulations tell of them.
void print_tajima(std::ostream& out, const TajimaReport& report);
void print_tajima_simulations(std::ostream& out, const TajimaReport& report);
void print_fu(std::ostream& out, const FuReport& report);
void print_fu_simulations(std::ostream& out, const FuReport& report);

// Batch summaries; null while they are not asked for. not owned. A row has the names of project
// and sample in double quotes, then values behind tabs, "N.A." for one that was not computed.
extern std::ofstream* ofs_tajima;  // "tajima.sum": n, S, pi, theta(S), D, P, mean D, P(D<=0), simulations
extern std::ofstream*
    ofs_fu_fs;  // "fu_fs.sum": n, k, [original k], theta(Pi), expected k, Fs, P, simulations
extern std::ofstream*
    ofs_ewens_watt;                // "ewens.sum": n, [original k], k, F, expected F, P, P of Slatkin's test
extern std::ofstream* ofs_chakra;  // "chakra.sum": n, k, homozygosity, expected k, P(k), P(k or more)

void write_tajima_row(const PopGenetics& sample, const TajimaReport& report);
void write_fu_row(const PopGenetics& sample, const FuReport& report);
void write_ewens_watterson_row(const PopGenetics& sample, const settings& s, int k);
// In place of the values, when the test is impossible.
void write_ewens_watterson_row(AlleleCountFault fault);
void write_chakraborty_row(const PopGenetics& sample, int k);

}  // namespace mnd
