// Mean number of pairwise differences and nucleotide diversity, with their standard deviations
// for both the sampling and the stochastic processes.
//
// Source: Tajima 1983, Genetics 105:437-460; Nei 1987, Molecular Evolutionary Genetics, 10.5-10.9
#include "within/molecular_diversity.h"

#include <cmath>
#include <vector>

#include "foundation/message_codes.h"
#include "model/popul_dna.h"
#include "model/popul_microsat.h"
#include "model/popul_rflp.h"
#include "model/popul_standard.h"
#include "run/errors.h"
#include "run/settings.h"
#include "within/dna_site_counts.h"

namespace mnd {

namespace {

// Sum over pairs of haplotypes of f_i f_j D(i, j), f in gene copies.
double weighted_sum_of_distances(const Population& sample, const RectMat& D) {
    std::vector<double> f;
    for (const PHaploDef* entry : sample.hapl_list)
        f.push_back(entry->freq);
    double sum = 0.0;
    for (std::size_t i = 0; i < f.size(); ++i) {
        const double* row = D.data[i];
        for (std::size_t j = 0; j < i; ++j)
            sum += f[i] * f[j] * row[j];
    }
    return sum;
}

// Returns: false after a report, when there is nothing to take distances from
bool ensure_distances(PopGenetics& sample, settings& s, const char* reporter) {
    if (sample.dist_mat == nullptr && sample.compute_distance_matrix(nullptr, &s, 0) == 0)
        E.error(Error, reporter, kDistanceMatrixNotComputed);
    if (sample.hapl_list.count == 0) {
        E.error(Error, reporter, kHaplotypeListIsEmpty);
        return false;
    }
    if (sample.dist_mat == nullptr) {
        E.error(Error, reporter, kDistanceMatrixDoesNotExist);
        return false;
    }
    return true;
}

// Whether the method in force gives differences per site. A number that is no method stands
// for the number of differences.
bool is_per_site(const PopulDNA& sample) {
    return sample.distance_method > kPairwiseDifference && sample.distance_method <= kTamuraNei;
}
bool is_per_site(const PopulRFLP& sample) {
    return sample.distance_method == 1;
}
// Kept on purpose: distances between lists of alleles are sums over the loci under every method.
// Test: MolecularDiversity.AlleleListsAreNotMultipliedByTheLoci
bool is_per_site(const PopGenetics&) {
    return false;
}

// The total of all distances, in differences per pair of gene copies.
double total_distance(const PopGenetics& sample, bool per_site) {
    const HaploDef* first = sample.hapl_list[0]->def;
    if (first == nullptr || first->content.length() == 0) return 0.0;
    const double P = weighted_sum_of_distances(sample, *sample.dist_mat);
    return per_site ? P * sample.nb_usable_loci : P;
}

template <class Sample>
bool compute_pairwise_diff(Sample& sample, settings& s, const char* reporter, MolecularDiversity& d) {
    if (!ensure_distances(sample, s, reporter)) return false;
    d = molecular_diversity(total_distance(sample, is_per_site(sample)), sample.sample_size,
                            sample.nb_usable_loci);
    sample.mean_pairwise_diff = d.mean_pairwise_diff;
    sample.sd_pairwise_diff = d.sd_pairwise_diff;
    return true;
}

template <class Sample>
int compute_for_sequences(Sample& sample, settings& s, const char* reporter) {
    MolecularDiversity d;
    if (!compute_pairwise_diff(sample, s, reporter, d)) return 0;
    sample.nucl_diversity = d.nucl_diversity;
    sample.sd_nucl_diversity = d.sd_nucl_diversity;
    return 1;
}

template <class Sample>
int compute_for_allele_lists(Sample& sample, settings& s, const char* reporter) {
    MolecularDiversity d;
    return compute_pairwise_diff(sample, s, reporter, d) ? 1 : 0;
}

double root_or_zero(double variance) {
    return variance > 0.0 ? std::sqrt(variance) : 0.0;
}

}  // namespace

MolecularDiversity molecular_diversity(double total, double n, int nb_usable_loci) {
    MolecularDiversity result;
    if (n <= 1.0 || nb_usable_loci == 0) return result;
    const double pi = total / (n * (n - 1.0) / 2.0);
    const double b = 2.0 * (n * n + n + 3.0);
    result.mean_pairwise_diff = pi;
    result.sd_pairwise_diff =
        root_or_zero((pi * pi * b + 3.0 * (n * n + n) * pi) / (11.0 * n * n - 7.0 * n + 6.0));
    const double L = nb_usable_loci;
    const double d = pi / L;
    result.nucl_diversity = d;
    result.sd_nucl_diversity =
        root_or_zero(b * d * d / (9.0 * (n * n - n)) + (n + 1.0) * d / (3.0 * (n - 1.0) * L));
    return result;
}

int PopulDNA::compute_molecular_diversity(settings& s) {
    if (dist_mat == nullptr) {
        ts_weight = s.TransitionWeight;
        tv_weight = s.TranversionWeight;
        del_weight = s.DeletionWeight;
    }
    return compute_for_sequences(*this, s, "PopulDNA::compute_molecular_diversity()");
}

int PopulRFLP::compute_molecular_diversity(settings& s) {
    if (dist_mat == nullptr) del_weight = s.DeletionWeight;
    return compute_for_sequences(*this, s, "PopulRFLP::compute_molecular_diversity()");
}

int PopulMicrosat::compute_molecular_diversity(settings& s) {
    return compute_for_allele_lists(*this, s, "PopulMicrosat::compute_molecular_diversity()");
}

int PopulStandard::compute_molecular_diversity(settings& s) {
    return compute_for_allele_lists(*this, s, "PopulStandard::compute_molecular_diversity()");
}

}  // namespace mnd
