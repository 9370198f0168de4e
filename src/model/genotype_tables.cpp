#include "model/phenotypes.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <string>
#include <vector>

#include "foundation/escape.h"
#include "foundation/format_guard.h"

namespace mnd {

namespace {

// Resolutions below it print as 0.000000; the table counts them.
constexpr double kLeastPosterior = 5e-07;

constexpr const char* kRule =
    "--------------------------------------------------------------------------------\n";

struct Width {
    static constexpr int kLabel = 12;
    static constexpr int kFreq = 10;
    static constexpr int kId = 10;
    static constexpr int kProbability = 16;
    static constexpr int kPosterior = 12;
};

std::string escaped_alleles(TPopHaplotype const& haplotype, TPopHaploDB const* compacted) {
    return escape_text(allele_text(haplotype, compacted));
}

// A probability that may be small: five significant digits.
void put_probability(std::ostream& out, double probability) {
    out << std::scientific << std::setprecision(4) << std::setw(Width::kProbability) << probability;
}

void put_posterior(std::ostream& out, double posterior) {
    out << std::fixed << std::setprecision(6) << std::setw(Width::kPosterior) << posterior;
}

// A number of individuals, as short as it can be written.
void put_count(std::ostream& out, double freq) {
    const FormatGuard guard(out);
    out << std::setprecision(15) << std::setw(Width::kFreq) << freq;
}

// The resolutions that get a row, the most probable first; equal ones as they stand.
std::vector<TGenotype const*> listed_resolutions(TPhenotype const& phenotype) {
    std::vector<TGenotype const*> listed;
    for (TGenotype const* genotype : phenotype.genotypes) {
        if (genotype->rel_prob >= kLeastPosterior) listed.push_back(genotype);
    }
    std::stable_sort(listed.begin(), listed.end(),
                     [](TGenotype const* a, TGenotype const* b) { return a->rel_prob > b->rel_prob; });
    return listed;
}

}  // namespace

// ---- One genotype

std::ostream& operator<<(std::ostream& out, TGenotype const& genotype) {
    const FormatGuard guard(out);
    for (TPopHaplotype const* haplotype : {genotype.hapl_1, genotype.hapl_2}) {
        if (haplotype == nullptr) continue;
        out << std::right << std::setw(13) << haplotype->view() << "  " << *haplotype << '\n';
    }
    return out;
}

void TGenotype::print_genot(std::ostream& out) const {
    const FormatGuard guard(out);
    out << std::right;
    put_probability(out, prob);
    put_posterior(out, rel_prob);
    out << "  " << escaped_alleles(*hapl_1, nullptr) << '\n'
        << std::setw(Width::kProbability + Width::kPosterior) << ""
        << "  " << escaped_alleles(*hapl_2, nullptr) << '\n';
}

void TGenotype::printGenotFreqs(std::ostream& out, TPopHaploDB const* compacted) const {
    const FormatGuard guard(out);
    out << std::right << std::setw(Width::kLabel + Width::kFreq) << "" << std::setw(Width::kId)
        << hapl_1->rank << std::setw(Width::kId) << hapl_2->rank;
    put_probability(out, prob);
    put_posterior(out, rel_prob);
    out << '\t' << escaped_alleles(*hapl_1, compacted) << '\t' << escaped_alleles(*hapl_2, compacted) << '\n';
}

// ---- One phenotype

void TPhenotype::print_detailed_genotypes(std::ostream& out) const {
    const FormatGuard guard(out);
    out << "Phenotype   : " << escape_text(view()) << '\n'
        << "Individuals : " << std::setprecision(15) << freq << '\n'
        << "Genotypes   : " << genotypes.count << '\n'
        << "Probability : " << std::scientific << std::setprecision(4) << phen_prob << '\n';
    for (TGenotype const* genotype : genotypes)
        genotype->print_genot(out);
    out << '\n';
}

void TPhenotype::printGenotypeFreqs(std::ostream& out, TPopHaploDB const* compacted) const {
    const FormatGuard guard(out);
    out << escaped_right(view(), Width::kLabel) << std::right;
    put_count(out, freq);
    out << std::setw(2 * Width::kId) << "";
    put_probability(out, phen_prob);
    out << '\n';
    const std::vector<TGenotype const*> listed = listed_resolutions(*this);
    for (TGenotype const* genotype : listed)
        genotype->printGenotFreqs(out, compacted);
    const long others = genotypes.count - static_cast<long>(listed.size());
    if (others > 0) {
        out << std::setw(Width::kLabel + Width::kFreq) << ""
            << "   " << others << (others == 1 ? " more resolution" : " more resolutions")
            << " with a posterior below 0.0000005\n";
    }
}

// ---- All phenotypes

void TPhenDB::print_all_genotypes(std::ostream& out) const {
    for (TPhenotype const* phenotype : *this)
        phenotype->print_detailed_genotypes(out);
}

void TPhenDB::printGenotypeFrequencies(std::ostream& out, double F, TPopHaploDB const* compacted) {
    for (TPhenotype* phenotype : *this)
        phenotype->update_posteriors(F);
    const FormatGuard guard(out);
    out << "\nMaximum-likelihood frequencies of genotypes" << '\n'
        << "(Haplotypes that are not listed above have a negative id)\n\n"
        << kRule << std::right << std::setw(Width::kLabel) << "Phenotype" << std::setw(Width::kFreq)
        << "Count" << std::setw(Width::kId) << "Hapl. 1" << std::setw(Width::kId) << "Hapl. 2"
        << std::setw(Width::kProbability) << "Expected freq." << std::setw(Width::kPosterior) << "Posterior"
        << '\n'
        << kRule;
    for (TPhenotype const* phenotype : *this)
        phenotype->printGenotypeFreqs(out, compacted);
    out << kRule << '\n';
}

namespace {

// Whether the haplotype holds the alleles of a string as read, but for loci that were taken out.
bool shows(TPopHaplotype const& haplotype, TPopHaplotype const& string, TPopHaploDB const* compacted) {
    const int32_t* mask = compacted == nullptr ? nullptr : compacted->poly_mask.get();
    long own = 0;
    for (long l = 0; l < string.alleles.count; ++l) {
        if (mask != nullptr && l < compacted->poly_mask_size && mask[l] == 0) continue;
        if (haplotype.alleles.at_const(own++) != string.allele(l)) return false;
    }
    return own == haplotype.alleles.count;
}

bool is_pair_as_read(TGenotype const& genotype, TPhenotype const& phenotype, TPopHaploDB const* compacted) {
    TPopHaplotype const& first = *phenotype.pseudo_hapl[0];
    TPopHaplotype const& second = *phenotype.pseudo_hapl[1];
    return (shows(*genotype.hapl_1, first, compacted) && shows(*genotype.hapl_2, second, compacted)) ||
           (shows(*genotype.hapl_1, second, compacted) && shows(*genotype.hapl_2, first, compacted));
}

// 1 when the pair as read alone is the most probable one, a share when it ties, else 0.
double share_as_read(TPhenotype const& phenotype, TPopHaploDB const* compacted) {
    double highest = 0.0;
    for (TGenotype const* genotype : phenotype.genotypes)
        highest = std::max(highest, genotype->rel_prob);
    int ties = 0;
    bool as_read = false;
    for (TGenotype const* genotype : phenotype.genotypes) {
        if (genotype->rel_prob < highest) continue;
        ++ties;
        as_read = as_read || is_pair_as_read(*genotype, phenotype, compacted);
    }
    return as_read ? 1.0 / ties : 0.0;
}

}  // namespace

double TPhenDB::percent_correct_gametic_phase(std::ostream& out, TPopHaploDB const* compacted) const {
    double individuals = 0.0;
    double correct = 0.0;
    for (TPhenotype const* phenotype : *this) {
        if (phenotype->genotypes.count < 2) continue;
        individuals += phenotype->freq;
        correct += phenotype->freq * share_as_read(*phenotype, compacted);
    }
    const double percent = individuals > 0.0 ? 100.0 * correct / individuals : 100.0;
    const FormatGuard guard(out);
    out << "Individuals with two or more resolutions        : " << std::setprecision(15) << individuals
        << '\n'
        << "Percentage whose phase as read is most probable : " << std::fixed << std::setprecision(2)
        << percent << '\n';
    return percent;
}

}  // namespace mnd
