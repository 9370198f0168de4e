// The mismatch distribution of a sample, and the models of expansion that were fitted to it.
#pragma once

#include <cstdint>
#include <vector>

namespace mnd {

// Percentiles of the estimates of one parameter over the replicates of a parametric bootstrap.
struct ParameterPercentiles {
    double q025 = 0.0;
    double q050 = 0.0;
    double q950 = 0.0;
    double q975 = 0.0;
};

// One model fitted to the mismatch distribution. Parameters that a model does not have stay 0, and
// so does what replicates give when there are none.
struct ExpansionFit {
    bool fitted = false;  // the model was fitted
    double Tau = 0.0;     // time since the expansion, in mutation units (2Tu)
    double Theta0 = 0.0;  // size before it
    double Theta1 = 0.0;  // size after it; the one size of a spatial expansion of equal demes
    double M = 0.0;       // gene copies exchanged by a deme per generation (2Nm)
    double ssd = 0.0;     // sum of squared deviations of the observed shares
    double p_ssd = 0.0;   // share of replicates with a sum that is not below it
    double rag = 0.0;     // raggedness index of the observed shares
    double p_rag = 0.0;   // share of replicates with an index that is not below it
    int replicates = 0;   // replicates that count, those whose own fit converged
    ParameterPercentiles tau_percentiles;
    ParameterPercentiles theta0_percentiles;
    ParameterPercentiles theta1_percentiles;
    ParameterPercentiles m_percentiles;
};

// Largest difference of a distribution that is held as tables, of 17 million classes.
inline constexpr int kMostTabledDifferences = 1 << 23;

// The distribution of differences between pairs of gene copies, written by compute_mm_distr.
//
// Moments and raggedness are those of all pairs, however large the differences. The tables, and with
// them the chi-square test and last_expected_class, are there when max_diff is 1 to
// kMostTabledDifferences and memory suffices; otherwise the tables are empty and those fields 0.
struct MismatchResult {
    std::vector<std::int64_t> mm_counts;      // owned: pairs by difference, 2 max_diff + 1 classes, or none
    std::vector<double> mm_expected;          // owned: what the moment estimates expect, as long
    int max_diff = 0;                         // integer part of the largest difference
    std::int64_t pairs_without_distance = 0;  // in no class: a correction gave no finite distance
    int last_expected_class = 0;              // last class with more than 1e-05 expected pairs
    double mm_mean = 0.0;
    double mm_variance = 0.0;
    double mm_theta = 0.0;       // moment estimate of theta before a sudden expansion
    double mm_tau = 0.0;         // moment estimate of its time
    double mm_raggedness = 0.0;  // sum of squared differences of neighbouring shares
    double mm_chi2 = 0.0;        // fit of mm_expected, over merged classes
    double mm_chi2_p = 0.0;      // -1: no degree of freedom
    int mm_chi2_df = 0;

    ExpansionFit sudden_expansion;
    ExpansionFit spatial_expansion_3;  // demes of one size
    ExpansionFit spatial_expansion_4;  // demes of another size before the expansion
};

}  // namespace mnd
