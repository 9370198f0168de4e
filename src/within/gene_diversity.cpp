// The indices of a sample as methods: frequencies from its haplotypes, results in its fields.
#include <algorithm>
#include <cmath>
#include <vector>

#include "model/population.h"
#include "within/diversity_indices.h"

namespace mnd {

namespace {

std::vector<double> haplotype_frequencies(const Population& sample) {
    std::vector<double> p;
    p.reserve(static_cast<std::size_t>(sample.hapl_list.count));
    for (int i = 0; i < sample.hapl_list.count; ++i) {
        const int count = sample.hapl_list[i]->freq;
        p.push_back(count == 0 || sample.sample_size <= 0.0 ? 0.0 : count / sample.sample_size);
    }
    return p;
}

std::vector<double> listed_frequencies(const MY_TISArrayAsVector<AHaplFreq>& list) {
    std::vector<double> p;
    p.reserve(static_cast<std::size_t>(list.count));
    for (int i = 0; i < list.count; ++i)
        p.push_back(list[i]->freq);
    return p;
}

double store_homozygosity(PopGenetics& sample, int nb_alleles) {
    const GeneDiversity diversity = gene_diversity(sample.sum_sq_freq, nb_alleles, sample.sample_size);
    sample.homozygosity = diversity.homozygosity;
    sample.heterozygosity = diversity.heterozygosity;
    return sample.homozygosity;
}

// All gene copies different: no finite theta fits, and nothing else is computed.
double store_theta_Hom(PopGenetics& sample, int nb_alleles) {
    if (nb_alleles == sample.sample_size) {
        sample.theta_hom = kNumericalInfinity;
        return sample.theta_hom;
    }
    const Estimate theta = theta_from_homozygosity(sample.homozygosity, sample.sd_heterozygosity);
    sample.theta_hom = theta.value;
    sample.sd_theta_hom = theta.sd;
    return sample.theta_hom;
}

}  // namespace

double PopGenetics::calc_F() {
    sum_sq_freq = sum_of_squares(haplotype_frequencies(*this));
    return sum_sq_freq;
}

double PopGenetics::calc_F(const MY_TISArrayAsVector<AHaplFreq>& list) {
    sum_sq_freq = sum_of_squares(listed_frequencies(list));
    return sum_sq_freq;
}

double PopGenetics::calc_sample_homozygosity() {
    calc_F();
    return store_homozygosity(*this, nb_hapl);
}

double PopGenetics::calc_sample_homozygosity(const MY_TISArrayAsVector<AHaplFreq>& list) {
    calc_F(list);
    return store_homozygosity(*this, static_cast<int>(list.count));
}

double PopGenetics::calc_sample_sd_heterozygosity() {
    sd_heterozygosity = sd_gene_diversity(haplotype_frequencies(*this), sample_size);
    return sd_heterozygosity;
}

double PopGenetics::calc_theta_Hom() {
    calc_sample_homozygosity();
    calc_sample_sd_heterozygosity();
    return store_theta_Hom(*this, nb_hapl);
}

double PopGenetics::calc_theta_Hom(const MY_TISArrayAsVector<AHaplFreq>& list) {
    calc_sample_homozygosity(list);
    sd_heterozygosity = sd_gene_diversity(listed_frequencies(list), sample_size);
    return store_theta_Hom(*this, static_cast<int>(list.count));
}

void PopGenetics::calc_theta_S(const int& n, const int& S) {
    const Estimate theta = theta_from_segregating_sites(n, S);
    theta_S = theta.value;
    sd_theta_S = theta.sd;
}

void PopGenetics::calc_theta_pi(const double& pi) {
    const Estimate theta = theta_from_pairwise_differences(pi, sample_size);
    theta_pi = theta.value;
    sd_theta_pi = theta.sd;
}

double PopGenetics::k_est(const double& theta, const int& n) {
    exp_k = expected_number_of_alleles(theta, n);
    return exp_k;
}

}  // namespace mnd
