// Fu's test of neutrality: the number of alleles against the mean number of pairwise differences
// of DNA or RFLP sequences.
// Source: Fu 1997, Genetics 147:915-925
#pragma once

namespace mnd {

// Fu's test as it is printed.
struct FuReport {
    int n = 0;                   // gene copies
    int k = 0;                   // alleles
    int original_k = 0;          // alleles before identical ones were merged
    bool checked = false;        // identical alleles were looked for by their distances
    double theta_pi = 0.0;       // from the mean number of pairwise differences, indels left out
    double exp_k = 0.0;          // expected number of alleles under it
    double Fs = 0.0;             // +/- kNumericalInfinity when it is not finite
    bool defined = false;        // Fs was computed, finite or not
    double P = -1.0;             // share of simulated Fs that are not above Fs; -1: not tested
    int num_sim = 0;             // simulated samples
    double mean_theta_pi = 0.0;  // over simulated samples
    double sd_theta_pi = 0.0;
    double mean_k = 0.0;
    double sd_k = 0.0;
};

}  // namespace mnd
