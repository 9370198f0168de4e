// Observed and expected heterozygosity of the loci of a genotypic sample.
#include <cmath>
#include <fstream>
#include <iomanip>
#include <unordered_map>
#include <vector>

#include "foundation/format_guard.h"
#include "model/population.h"
#include "run/settings.h"
#include "within/locus_diversity.h"

namespace mnd {

namespace {

// What one locus of a set of phenotypes shows.
struct LocusHeterozygosity {
    double observed = 0.0;
    double expected = 0.0;
    int individuals = 0;  // without missing alleles at the locus
};

// Source: Nei 1987, Molecular Evolutionary Genetics, eq. 7.39 without the correction for
//         observed heterozygosity
LocusHeterozygosity locus_heterozygosity_of(const TPhenDB& phenotypes, int locus, char missing) {
    double kept = 0.0;
    double heterozygous = 0.0;
    std::unordered_map<const TAllele*, double> copies;
    std::vector<const TAllele*> order;  // of first appearance: fixes the order of the sum
    for (int i = 0; i < phenotypes.count; ++i) {
        const TPhenotype& phenotype = *phenotypes[i];
        if (phenotype.pseudo_hapl[0] == nullptr || phenotype.pseudo_hapl[1] == nullptr) continue;
        const TAllele* a = phenotype.pseudo_hapl[0]->alleles.at_const(locus);
        const TAllele* b = phenotype.pseudo_hapl[1]->alleles.at_const(locus);
        if (a == nullptr || b == nullptr || a->is_char(missing) || b->is_char(missing)) continue;
        kept += phenotype.freq;
        if (a != b) heterozygous += phenotype.freq;
        for (const TAllele* allele : {a, b}) {
            const auto [entry, is_new] = copies.try_emplace(allele, 0.0);
            if (is_new) order.push_back(allele);
            entry->second += phenotype.freq;
        }
    }
    LocusHeterozygosity result;
    result.individuals = static_cast<int>(kept);
    if (result.individuals == 0) return result;
    const double n = result.individuals;
    double sum_sq = 0.0;
    for (const TAllele* allele : order)
        sum_sq += copies[allele] * copies[allele];
    result.observed = heterozygous / n;
    result.expected = 2.0 * n * (1.0 - sum_sq / (4.0 * n * n)) / (2.0 * n - 1.0);
    return result;
}

void print_row(std::ostream& out, int locus, const LocusHeterozygosity& h) {
    out << std::setw(8) << locus + 1 << std::setw(14) << h.individuals << std::setw(18) << h.observed
        << std::setw(18) << h.expected << '\n';
}

void print_means(std::ostream& out, const char* label, double observed, double expected) {
    out << std::setw(8) << label << std::setw(14) << ' ' << std::setw(18) << observed << std::setw(18)
        << expected << '\n';
}

}  // namespace

void Population::compute_locus_heterozygosity(const int& locus, double& obs, double& exp, int& n) const {
    const LocusHeterozygosity h = locus_heterozygosity_of(phen_db, locus, profile.MissingData);
    obs = h.observed;
    exp = h.expected;
    n = h.individuals;
}

void Population::compute_phenotype_heterozygosity(settings& s, const TPhenDB& phenotypes) const {
    std::ostream& out = *s.result_stream;
    const FormatGuard guard(out);
    out << "\nObserved and expected heterozygosity per locus\n"
        << "----------------------------------------------\n\n"
        << std::fixed << std::setprecision(5) << std::right << std::setw(8) << "Locus" << std::setw(14)
        << "Individuals" << std::setw(18) << "Observed het." << std::setw(18) << "Expected het." << '\n';
    std::vector<double> observed;
    std::vector<double> expected;
    const int nb_loci = phenotypes.num_loci();
    for (int locus = 0; locus < nb_loci; ++locus) {
        const LocusHeterozygosity h = locus_heterozygosity_of(phenotypes, locus, profile.MissingData);
        print_row(out, locus, h);
        if (h.individuals == 0) continue;
        observed.push_back(h.observed);
        expected.push_back(h.expected);
    }
    const MeanAndSd obs = mean_and_sd(observed);
    const MeanAndSd exp = mean_and_sd(expected);
    print_means(out, "Mean", obs.mean, exp.mean);
    print_means(out, "s.d.", obs.sd, exp.sd);
}

}  // namespace mnd
