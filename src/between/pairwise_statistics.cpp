#include "between/pairwise_statistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace mnd {

namespace {

constexpr double kNoDegreesOfFreedom = 100000.0;  // stands for 1 / (N - 2) when N is not above 2
constexpr double kNoVariance = 100000.0;          // FST over Va when there is no variance at all
constexpr double kInfinite = std::numeric_limits<double>::infinity();

double within_mean(double ssd, double n) {
    return n > 1.0 ? 2.0 * ssd / ((n - 1.0) * n) : 0.0;
}

// Sum of the mean squares within the samples.
double sum_within(const PairDesign& design, const PairSSD& ssd) {
    return ssd.first / design.n_i + ssd.second / design.n_j;
}

double sum_among(const PairDesign& design, const PairSSD& ssd, double W) {
    return (ssd.first + ssd.second + ssd.between) / design.N - W;
}

}  // namespace

PairDesign pair_design(double n_i, double n_j) {
    PairDesign design;
    design.n_i = n_i;
    design.n_j = n_j;
    design.N = n_i + n_j;
    design.inv_df = design.N > 2.0 ? 1.0 / (design.N - 2.0) : kNoDegreesOfFreedom;
    design.n = design.N > 0.0 ? design.N - (n_i * n_i + n_j * n_j) / design.N : 0.0;
    return design;
}

PairVariance pair_variance(const PairDesign& design, const PairSSD& ssd) {
    const double W = sum_within(design, ssd);
    PairVariance variance;
    variance.Vw = W * design.inv_df;
    variance.Va = (sum_among(design, ssd, W) - variance.Vw) / design.n;
    const double total = variance.Vw + variance.Va;
    variance.FST = total > 0.0 ? variance.Va / total : variance.Va * kNoVariance;
    return variance;
}

double permuted_component(const PairDesign& design, const PairSSD& ssd) {
    const double W = sum_within(design, ssd);
    return sum_among(design, ssd, W) / design.n - design.inv_df * W / design.n;
}

PairDifferences pair_differences(const PairDesign& design, const PairSSD& ssd) {
    PairDifferences differences;
    differences.pi_X = within_mean(ssd.first, design.n_i);
    differences.pi_Y = within_mean(ssd.second, design.n_j);
    const double pairs = design.n_i * design.n_j;
    differences.pi_XY = pairs > 0.0 ? ssd.between / pairs : 0.0;
    differences.corrected = differences.pi_XY - (differences.pi_X + differences.pi_Y) / 2.0;
    const double others_i = std::max(design.n_i - 1.0, 1.0);
    const double others_j = std::max(design.n_j - 1.0, 1.0);
    // Summed first, so that two samples of one size may change places.
    const double within = ssd.first * (design.n_j * others_j) + ssd.second * (design.n_i * others_i);
    differences.corrected_multiple = ssd.between * (others_i * others_j) - within;
    return differences;
}

double delta_mu_square(const std::vector<double>& mean_sizes_i, const std::vector<double>& mean_sizes_j) {
    const std::size_t nb_loci = std::min(mean_sizes_i.size(), mean_sizes_j.size());
    double sum = 0.0;
    int counted = 0;
    for (std::size_t locus = 0; locus < nb_loci; ++locus) {
        if (mean_sizes_i[locus] == 0.0 || mean_sizes_j[locus] == 0.0) continue;
        const double difference = mean_sizes_i[locus] - mean_sizes_j[locus];
        sum += difference * difference;
        ++counted;
    }
    return counted > 0 ? sum / counted : 0.0;
}

double coancestry(double F) {
    if (F <= 0.0) return 0.0;
    return F < 1.0 ? -std::log(1.0 - F) : kInfinite;
}

double slatkin_distance(double F) {
    if (F <= 0.0) return 0.0;
    return F < 1.0 ? F / (1.0 - F) : kInfinite;
}

double migrants(double F) {
    return F > 0.0 ? (1.0 - F) / (2.0 * F) : kInfinite;
}

PairwiseResults::PairwiseResults(int nb_samples, bool with_divergence, bool with_sizes)
    : P(nb_samples),
      pi(P, P),
      fst(P),
      fst_var(P),
      fst_p(P),
      fst_sd(P),
      pi_p(P),
      pi_corr_p(P),
      tau(with_divergence ? P : 0),
      k_ratio(with_divergence ? P : 0),
      theta0(with_divergence ? P : 0),
      not_converged(with_divergence ? P : 0),
      tau_p(with_divergence ? P : 0),
      k_p(with_divergence ? P : 0),
      theta0_p(with_divergence ? P : 0),
      delta_mu(with_sizes ? P : 0) {}

}  // namespace mnd
