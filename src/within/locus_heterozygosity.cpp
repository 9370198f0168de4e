// Observed and expected heterozygosity of the loci of a genotypic sample.
#include "model/integer_part.h"
#include "within/allele_counts.h"
#include "within/locus_diversity.h"

namespace mnd {

namespace {

// What the individuals show at one locus, as far as none of their two alleles is missing.
class LocusGenotypes {
public:
    void add(const TAllele* a, const TAllele* b, double individuals, char missing) {
        if (a == nullptr || b == nullptr || is_missing(a, missing) || is_missing(b, missing)) return;
        kept_ += individuals;
        if (a != b) heterozygotes_ += individuals;
        copies_.add(a, individuals);
        copies_.add(b, individuals);
    }

    LocusHeterozygosity heterozygosity() const {
        LocusHeterozygosity result;
        result.individuals = integer_part(kept_);
        if (result.individuals == 0) return result;
        const double n = result.individuals;
        double sum_sq = 0.0;
        for (const AlleleTally::Entry& entry : copies_.entries())
            sum_sq += entry.copies * entry.copies;
        result.observed = heterozygotes_ / n;
        result.expected = 2.0 * n * (1.0 - sum_sq / (4.0 * n * n)) / (2.0 * n - 1.0);
        return result;
    }

private:
    bool is_missing(const TAllele* allele, char missing) {
        if (allele == missing_) return true;
        if (!allele->is_char(missing)) return false;
        missing_ = allele;
        return true;
    }

    double kept_ = 0.0;
    double heterozygotes_ = 0.0;
    AlleleTally copies_;
    const TAllele* missing_ = nullptr;  // not owned: the missing allele of the locus, once seen
};

}  // namespace

std::vector<LocusHeterozygosity> locus_heterozygosity(const TPhenDB& phenotypes, int first, int nb_loci,
                                                      char missing) {
    std::vector<LocusGenotypes> loci(static_cast<std::size_t>(nb_loci));
    for (const TPhenotype* phenotype : phenotypes) {
        if (phenotype->pseudo_hapl[0] == nullptr || phenotype->pseudo_hapl[1] == nullptr) continue;
        const double individuals = integer_part(phenotype->freq);
        const auto& a = phenotype->pseudo_hapl[0]->alleles;
        const auto& b = phenotype->pseudo_hapl[1]->alleles;
        for (int i = 0; i < nb_loci; ++i) {
            loci[static_cast<std::size_t>(i)].add(a.at_const(first + i), b.at_const(first + i), individuals,
                                                  missing);
        }
    }
    std::vector<LocusHeterozygosity> result;
    for (const LocusGenotypes& locus : loci)
        result.push_back(locus.heterozygosity());
    return result;
}

void Population::compute_locus_heterozygosity(const int& locus, double& obs, double& exp, int& n) const {
    const LocusHeterozygosity h = locus_heterozygosity(phen_db, locus, 1, profile.MissingData).front();
    obs = h.observed;
    exp = h.expected;
    n = h.individuals;
}

}  // namespace mnd
