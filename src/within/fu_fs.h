// Fu's test of neutrality: the number of alleles against the mean number of pairwise differences
// of DNA or RFLP sequences.
// Source: Fu 1997, Genetics 147:915-925
#pragma once

#include <ostream>

namespace mnd {

class PopulDNA;
class PopulRFLP;
class settings;

// Fu's test as it is printed.
struct FuReport {
    int n = 0;              // gene copies
    int k = 0;              // alleles
    int original_k = 0;     // alleles before identical ones were merged
    bool checked = false;   // identical alleles were looked for by their distances
    bool weighted = false;  // substitutions have weights other than 1
    // Numbers that are not known or can't be computed are not numbers.
    double theta_pi = 0.0;       // from the mean number of pairwise differences, indels left out
    double k_est = 0.0;          // expected number of alleles under it
    double Fs = 0.0;             // +/- kNumericalInfinity when it is not finite
    double P = -1.0;             // share of simulated Fs that are not above Fs; -1: not tested
    int num_sim = 0;             // simulated samples
    double mean_theta_pi = 0.0;  // over simulated samples
    double sd_theta_pi = 0.0;
    double mean_k = 0.0;
    double sd_k = 0.0;
};

// The test of a sample whose loci have been compared, with its block in out and its row in the
// batch summary. Its simulated samples are those of NeutralSamples with theta(Pi); of an Fs that
// can't be computed, and without differences, there are none. Fs is 0 of a single gene copy or
// allele, or without distances. The distances and the diversity of the sample stay as they are.
// Reads:     NumSimulFuTest
// Writes:    fu_Fs, fu_p, fu_theta_pi, exp_k; settings::global_work_done
// Draws:     those of the simulated samples
// Reports:   those of PopGenetics::Fu_Fs, for the sample itself
// A stopped run leaves P at -1, and writes no row and no more than the observed values.
void fu_test(PopulDNA& sample, settings& s, std::ostream& out);
void fu_test(PopulRFLP& sample, settings& s, std::ostream& out);

}  // namespace mnd
