#include "within/em_iteration.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "model/phenotypes.h"
#include "model/pop_haplotypes.h"

namespace mnd {

// ---- EmResolutions

EmResolutions::EmResolutions(TPhenDB const& phen, TPopHaploDB const& haplo) {
    std::unordered_map<TPopHaplotype const*, std::uint32_t> number_of;
    number_of.reserve(static_cast<std::size_t>(haplo.count));
    for (TPopHaplotype const* haplotype : haplo)
        number_of.emplace(haplotype, static_cast<std::uint32_t>(number_of.size()));
    for (TPhenotype const* phenotype : phen) {
        begin_phenotype(phenotype->freq, phenotype->fully_homozygous != 0);
        for (TGenotype const* genotype : phenotype->genotypes)
            add_genotype(number_of.at(genotype->hapl_1), number_of.at(genotype->hapl_2));
    }
}

void EmResolutions::begin_phenotype(double n, bool homozygous) {
    counts_.push_back(n);
    homozygous_.push_back(homozygous);
    kinds_.push_back(kNone);
    ends_.push_back(hapl_1_.size());
}

void EmResolutions::add_genotype(std::uint32_t hapl_1, std::uint32_t hapl_2) {
    hapl_1_.push_back(hapl_1);
    hapl_2_.push_back(hapl_2);
    ends_.back() = hapl_1_.size();
    const std::size_t p = phenotypes() - 1;
    const std::size_t n = end(p) - begin(p);
    kinds_[p] = n > 1 ? kMany : homozygous_[p] ? kHomozygous : kOne;
    most_genotypes_ = std::max(most_genotypes_, n);
}

// ---- EmIteration

EmIteration::EmIteration(EmResolutions const& resolutions, std::size_t haplotypes, Model const& model)
    : freq(haplotypes),
      old_freq(haplotypes),
      ibd(haplotypes),
      prob(resolutions.phenotypes()),
      resolutions_(resolutions),
      model_(model),
      next_(haplotypes),
      weights_(resolutions.most_genotypes()) {
    for (std::size_t p = 0; p < resolutions.phenotypes(); ++p) {
        if (resolutions.kind(p) == EmResolutions::kHomozygous) homozygotes_.push_back(p);
    }
}

double EmIteration::step() {
    const double ibd_sum = model_.inbreeding ? expect_ibd() : 0.0;
    std::fill(next_.begin(), next_.end(), 0.0);
    if (model_.inbreeding) {
        count_genes<true>();
    } else {
        count_genes<false>();
    }
    return renew_frequencies(ibd_sum);
}

// Several phenotypes may be the same homozygote: its copies are those of all of them.
// Returns the copies of all haplotypes.
double EmIteration::expect_ibd() {
    for (const std::size_t p : homozygotes_)
        ibd[resolutions_.hapl_1(resolutions_.begin(p))] = 0.0;
    double sum = 0.0;
    for (const std::size_t p : homozygotes_) {
        const std::uint32_t h = resolutions_.hapl_1(resolutions_.begin(p));
        const double total = freq[h] * (1.0 - F) + F;
        if (total == 0.0) continue;
        const double copies = resolutions_.count(p) * F / total;
        ibd[h] += copies;
        sum += copies;
    }
    if (model_.estimate_F && model_.gene_copies > 0.0) F = sum / (model_.gene_copies / 2.0);
    return sum;
}

template <bool kInbreeding>
double EmIteration::probability(std::uint32_t hapl_1, std::uint32_t hapl_2) const {
    const double p_1 = freq[hapl_1];
    const double p_2 = freq[hapl_2];
    if constexpr (kInbreeding) {
        return hapl_1 == hapl_2 ? p_1 * F + (1.0 - F) * p_1 * p_1 : 2.0 * (1.0 - F) * p_1 * p_2;
    } else {
        return hapl_1 == hapl_2 ? p_1 * p_2 : 2.0 * p_1 * p_2;
    }
}

// The genes of an individual, shared out among its genotypes in proportion to their probability.
template <bool kInbreeding>
void EmIteration::count_genes() {
    const std::size_t n = resolutions_.phenotypes();
    for (std::size_t p = 0; p < n; ++p) {
        const EmResolutions::Kind kind = resolutions_.kind(p);
        if (kind == EmResolutions::kMany) {
            count_among_many<kInbreeding>(p);
        } else if (kind == EmResolutions::kNone) {
            prob[p] = 0.0;
        } else {
            count_among_one<kInbreeding>(p, kind == EmResolutions::kHomozygous);
        }
    }
}

template <bool kInbreeding>
void EmIteration::count_among_one(std::size_t p, bool homozygous) {
    const std::uint32_t h_1 = resolutions_.hapl_1(resolutions_.begin(p));
    const std::uint32_t h_2 = resolutions_.hapl_2(resolutions_.begin(p));
    const double n = resolutions_.count(p);
    prob[p] = probability<kInbreeding>(h_1, h_2);
    if (homozygous) {
        next_[h_1] += 2.0 * n;
    } else {
        next_[h_1] += n;
        next_[h_2] += n;
    }
}

template <bool kInbreeding>
void EmIteration::count_among_many(std::size_t p) {
    const std::size_t begin = resolutions_.begin(p);
    const std::size_t end = resolutions_.end(p);
    double* const weight = weights_.data();
    double* const next = next_.data();
    double total = 0.0;
    for (std::size_t g = begin; g < end; ++g) {
        const double w = probability<kInbreeding>(resolutions_.hapl_1(g), resolutions_.hapl_2(g));
        weight[g - begin] = w;
        total += w;
    }
    prob[p] = total;
    if (!(total > 0.0)) return;
    const double n = resolutions_.count(p);
    for (std::size_t g = begin; g < end; ++g) {
        const double share = n * weight[g - begin] / total;
        next[resolutions_.hapl_1(g)] += share;
        next[resolutions_.hapl_2(g)] += share;
    }
}

double EmIteration::renew_frequencies(double ibd_sum) {
    const double genes = model_.gene_copies - ibd_sum;
    double change = 0.0;
    for (std::size_t h = 0; h < freq.size(); ++h) {
        freq[h] = model_.inbreeding ? (next_[h] - ibd[h]) / genes : next_[h] / genes;
        change += std::fabs(freq[h] - old_freq[h]);
        old_freq[h] = freq[h];
    }
    return change;
}

double EmIteration::ln_likelihood() const {
    double sum = 0.0;
    for (std::size_t p = 0; p < prob.size(); ++p) {
        if (!(prob[p] > 0.0)) return kLowestLogLikelihood;
        sum += resolutions_.count(p) * std::log(prob[p]);
    }
    return sum;
}

}  // namespace mnd
