// Tajima's test of neutrality: the number of segregating sites against the mean number of pairwise
// differences of DNA or RFLP sequences.
// Source: Tajima 1989, Genetics 123:585-595
#pragma once

#include <ostream>

namespace mnd {

class PopulDNA;
class PopulRFLP;
class settings;

// What the variance of Tajima's d depends on in n gene copies, in the notation of the article.
struct TajimaConstants {
    double a1 = 0.0;  // sum of 1/i, i < n
    double e1 = 0.0;
    double e2 = 0.0;
};
// n below 2 gives zeros.
TajimaConstants tajima_constants(int n);

// D, and whether it could be computed; D is 0 when not.
struct TajimaD {
    double D = 0.0;
    bool defined = false;
};

// D = (pi - S/a1) / sqrt(e1 S + e2 S (S - 1)). Not defined without segregating sites, or when the
// variance or e2 is not positive (fewer than four gene copies). A numerator below 1e-15 gives 0.
TajimaD tajima_D(const TajimaConstants& constants, double pi, double S);
// The same for replicates, without the last two checks but that of the variance.
double fast_tajima_D(const TajimaConstants& constants, double pi, double S);

// Density at x of a D that is scaled to between low and high as a beta distribution,
//
//   Gamma(alpha + beta) (high - x)^(alpha - 1) (x - low)^(beta - 1)
//     / (Gamma(alpha) Gamma(beta) (high - low)^(alpha + beta - 1))
//
// and 0 outside of ]low, high[ or for a shape that is not positive. Nothing calls it: P-values
// come from simulations.
double Tajima_D_density(double const& alpha, double const& beta, double const& x, double const& high,
                        double const& low);

// Tajima's test as it is printed.
struct TajimaReport {
    int n = 0;             // gene copies
    int S = 0;             // sites with substitutions
    double pi = 0.0;       // mean number of pairwise differences, indels left out; not a number:
                           // not known
    double theta_S = 0.0;  // from S
    double D = 0.0;
    double P = -1.0;            // share of simulated D that are not above D; -1: not tested
    int num_sim = 0;            // simulated samples
    double mean_theta_S = 0.0;  // over simulated samples
    double sd_theta_S = 0.0;
    double mean_D = 0.0;
    double P_not_positive = -1.0;    // share of simulated D of 0 or less; -1: not tested
    bool defined = false;            // D could be computed
    bool weighted = false;           // substitutions have weights other than 1
    bool restriction_sites = false;  // of RFLP data; otherwise sites of DNA
};

// The test of a sample whose loci have been compared, with its block in out and its row in the
// batch summary. Its simulated samples are those of NeutralSamples with theta(S); of a D that is
// not defined there are none. The distances and the diversity of the sample stay as they are.
// Reads:     NumSimulFuTest
// Writes:    tajima_D, tajima_p; theta_S; settings::global_work_done
// Draws:     those of the simulated samples
// A stopped run leaves P at -1, and writes no row and no more than the observed values.
void tajima_test(PopulDNA& sample, settings& s, std::ostream& out);
void tajima_test(PopulRFLP& sample, settings& s, std::ostream& out);

}  // namespace mnd
