// From the texts of a sample to alleles, gametes and counts of haplotypes.
#include <algorithm>
#include <string>
#include <unordered_map>

#include "model/compact_list.h"
#include "model/first_match_index.h"
#include "model/integer_part.h"
#include "model/population.h"
#include "model/samples.h"
#include "model/text_tokens.h"
#include "run/errors.h"
#include "run/settings.h"
#include "run/tasks.h"

namespace mnd {

namespace {

// Gene copies that a list of single gametes may hold; a sample beyond it has no such list.
constexpr double kMaxGametes = 2.0e7;

// Tasks that work on the single gametes of a genotypic sample. The Mantel test is one of them:
// it may ask for pairwise comparisons after the gametes were made.
constexpr int kGameteTasks = kTaskAmova | kTaskPairwiseFst | kTaskMantel;

// "h" and the number.
my_string numbered_name(long number) {
    return my_string(("h" + std::to_string(number)).c_str());
}

// The entries of a sample's list, found by their definition. The first entry of a definition
// is the one that counts.
class EntryIndex {
public:
    explicit EntryIndex(MY_TIArrayAsVector<PHaploDef>& list) : list_(list) {}

    // Adds to the entry of the definition, or makes one at the end of the list.
    void add(HaploDef* definition, int count) {
        const auto definition_at = [this](long i) { return list_.data[i]->def; };
        index_.cover(
            list_.count, [&](long i) { return hash_address(0, definition_at(i)); },
            [&](long i, long j) { return definition_at(i) == definition_at(j); });
        const long known =
            index_.first(hash_address(0, definition), [&](long i) { return definition_at(i) == definition; });
        if (known < 0) {
            list_.Add(new PHaploDef(definition, count));
        } else {
            list_.data[known]->freq = sum_of_counts(list_.data[known]->freq, count);
        }
    }

private:
    MY_TIArrayAsVector<PHaploDef>& list_;
    FirstMatchIndex index_;
};

// The definition of a text; a new one is named by the next number.
HaploDef* find_or_define(Haplo_DB& db, const my_string& text, int count, long& number) {
    if (HaploDef* known = db.find(text)) {
        known->count = sum_of_counts(known->count, count);
        return known;
    }
    auto* fresh = new HaploDef(numbered_name(++number));
    fresh->content = text;
    fresh->count = count;
    return db.append(fresh);
}

// The text of a working haplotype: names of its alleles, separated.
my_string joined_names(const TPopHaplotype& haplotype, char separator) {
    std::string text;
    for (const TAllele* allele : haplotype.alleles) {
        if (separator != 0 && !text.empty()) text += separator;
        if (allele != nullptr) text += allele->view();
    }
    return my_string(text.c_str());
}

// Gives a new definition the alleles of a working haplotype.
void take_alleles(HaploDef& definition, const TPopHaplotype& haplotype) {
    for (TAllele* allele : haplotype.alleles) {
        if (allele == nullptr) {
            E.error(Error, "Population::h_pop_db_to_gam()", kAlleleNotFoundInDB);
            continue;
        }
        definition.Add(allele);
    }
}

// Counts of the alleles of one locus, by pointer.
class AlleleCounts {
public:
    void clear() {
        counts_.clear();
        sum_ = 0.0;
    }
    void add(TAllele* allele, double count) {
        if (allele == nullptr) return;
        counts_[allele] += count;
        sum_ += count;
    }
    double sum() const { return sum_; }
    // Sets the share of every allele counted.
    void set_shares() const {
        for (const auto& [allele, count] : counts_)
            allele->freq = count / sum_;
    }

private:
    std::unordered_map<TAllele*, double> counts_;
    double sum_ = 0.0;
};

void count_locus(const MY_TIArrayAsVector<PHaploDef>& list, int locus, AlleleCounts& counts) {
    for (const PHaploDef* entry : list)
        counts.add(entry->def->at_const(locus), entry->freq);
}

void count_locus(const TPhenDB& phenotypes, int locus, AlleleCounts& counts) {
    for (const TPhenotype* phenotype : phenotypes) {
        for (const auto& haplotype : phenotype->pseudo_hapl) {
            if (haplotype) counts.add(haplotype->alleles.at_const(locus), phenotype->freq);
        }
    }
}

}  // namespace

void build_pseudo_hapl0(TPhenotype& p, void* arg) {
    const auto* target = static_cast<const PseudoHaplArg*>(arg);
    for (int k = 0; k < 2; ++k)
        p.read_pseudo_hapl(k, *target->db, 0);
}

void build_pseudo_hapl1(TPhenotype& p, void* arg) {
    const auto* target = static_cast<const PseudoHaplArg*>(arg);
    for (int k = 0; k < 2; ++k)
        p.read_pseudo_hapl(k, *target->db, target->separator);
}

void Population::make_all_blanks(const char& sep) {
    if (allele_db->blanks_done != 0) return;
    allele_db->blanks_done = 1;
    const bool haplotypic = profile.GenotypicData == 0;
    if ((haplotypic ? hapl_list.count : phen_db.count) == 0) {
        E.error(Warning, "Population::make_all_blanks()", kPhenotypeDBIsEmpty);
        return;
    }
    const my_string& text = haplotypic ? hapl_list.data[0]->def->content : phen_db.data[0]->text[0];
    const int loci = count_locus_texts(text.view(), sep);
    for (int locus = 0; locus < loci; ++locus) {
        if (allele_db->InsertAllPos(locus, profile.RecessiveAllele, 0.0) != kBlankIndex) {
            E.error(Error, "Population::make_all_blanks()", kRecessiveAlleleMisplaced);
        }
    }
}

void Population::build_allele_vectors(const char& sep) {
    phen_db.convert_freq_to_real();
    PseudoHaplArg arg{allele_db, sep};
    for (TPhenotype* phenotype : phen_db) {
        if (sep == 0) {
            build_pseudo_hapl0(*phenotype, &arg);
        } else {
            build_pseudo_hapl1(*phenotype, &arg);
        }
    }
}

void Population::phen_to_gam(Haplo_DB* db, ProfileSettings*, settings* s) {
    const char separator = profile.LocusSeparator;
    hapl_list.Flush();
    gamete_list.Flush();
    hapl_list.Reallocate(static_cast<int>(2 * phen_db.count));
    const bool wants_gametes = (s->TaskNumber & kGameteTasks) != 0;
    const bool too_many = sample_size > kMaxGametes;
    if (wants_gametes && too_many) E.error(Error, "Population::phen_to_gam()", kNotEnoughMemory);
    EntryIndex entries(hapl_list);
    long number = db->list.count;
    my_string reduced;  // a text without runs of separators
    for (const TPhenotype* phenotype : phen_db) {
        const int f = integer_part(phenotype->freq);
        HaploDef* definitions[2];
        for (std::size_t k = 0; k < 2; ++k) {
            const my_string& text = phenotype->text[k];
            if (separator != 0) rm_mult_delim(text, reduced, separator);
            definitions[k] = find_or_define(*db, separator != 0 ? reduced : text, f, number);
        }
        for (int copy = 0; wants_gametes && !too_many && copy < f; ++copy) {
            gamete_list.Add(new PHaploDef(definitions[0], 1));
            gamete_list.Add(new PHaploDef(definitions[1], 1));
        }
        entries.add(definitions[0], f);
        entries.add(definitions[1], f);
    }
    nb_hapl = static_cast<int>(hapl_list.count);
    phen_to_gam_done = 1;
}

void Population::h_pop_db_to_gam(Haplo_DB* db, MY_TIArrayAsVector<PHaploDef>* list) {
    MY_TIArrayAsVector<PHaploDef>& target = list == nullptr ? hapl_list : *list;
    EntryIndex entries(target);
    long number = db->list.count;
    double sum = 0.0;
    for (const TPopHaplotype* haplotype : hapl_db) {
        const int count = integer_part(haplotype->freq * sample_size + 0.5);
        if (count == 0) continue;
        const my_string text = joined_names(*haplotype, profile.LocusSeparator);
        HaploDef* definition = db->find(text);
        if (definition == nullptr) {
            definition = new HaploDef(numbered_name(++number));
            definition->content = text;
            definition->id = static_cast<int>(number);
            take_alleles(*definition, *haplotype);
            db->append(definition);
        }
        entries.add(definition, count);
        sum += count;
    }
    nb_hapl = static_cast<int>(target.count);
    sample_size = sum;
    inv_sample_size = sum > 0.0 ? 1.0 / sum : 1.0;
}

void Population::haplotype_transf(Haplo_DB& db) {
    if (hapl_list.count != 0) {
        hapl_list.Flush();
        // Kept on purpose: the number of this report is 56, though the text of 156 would fit.
        // Test: PopulationSteps.HaplotypeTransferWarnsWith56
        E.error(Warning, "Population::haplotype_transf()", kInvalidHaplotypeStructureName);
    }
    for (HaploDef* definition : db.list)
        hapl_list.Add(new PHaploDef(definition, definition->count));
    if (hapl_list.count != db.list.count) {
        E.error(Warning, "Population::haplotype_transf()", kSuspiciousHaplotypeDBTransfer);
    }
}

void Population::check_phaplodef_redond() {
    std::unordered_map<const HaploDef*, PHaploDef*> first_of;
    drop_elements(hapl_list, [&first_of](PHaploDef& entry) {
        const auto [place, is_first] = first_of.try_emplace(entry.def, &entry);
        if (!is_first) place->second->freq = sum_of_counts(place->second->freq, entry.freq);
        return !is_first;
    });
}

void Population::update_allele_freq() {
    const bool by_haplotypes = profile.GenotypicData == 0 || profile.GameticPhase != 0;
    int loci = phen_db.num_loci();
    if (by_haplotypes)
        loci = hapl_list.count == 0 ? 0 : static_cast<int>(hapl_list.data[0]->def->num_alleles());
    AlleleCounts counts;
    for (int locus = 0; locus < loci; ++locus) {
        counts.clear();
        if (by_haplotypes) {
            count_locus(hapl_list, locus, counts);
        } else {
            count_locus(phen_db, locus, counts);
        }
        if (!(counts.sum() > 0.0)) {
            E.error(Error, "Population::update_allele_freq()", kSumOfAlleleFrequenciesIsZero);
            return;
        }
        counts.set_shares();
    }
}

}  // namespace mnd
