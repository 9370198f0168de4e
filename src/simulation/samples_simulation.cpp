// Simulated data of all samples of a project: one genealogy, whose leaves become their gene copies.
#include <string>
#include <unordered_map>

#include "model/phenotypes.h"
#include "model/samples.h"
#include "simulation/coalescent_tree.h"

namespace mnd {
namespace {

// Weight of the alleles of a definition, which tells them from the blank of their locus.
constexpr double kDefinitionWeight = 0.1;

// Where the leaves of a sample stand in the tree; a sample that the tree did not take has none.
TTree::LeafBlock block_of(const TTree& tree, const Population& sample) {
    for (const TTree::LeafBlock& block : tree.leaf_blocks) {
        if (block.sample == &sample) return block;
    }
    return {&sample, 0, 0};
}

const myVectInt& leaf_sequence(const TTree& tree, int leaf) {
    return *tree.nodes[static_cast<std::size_t>(leaf)].sequence;
}

// Whether every leaf has a sequence of this length, and individuals whole pairs of leaves.
bool fits(const TTree& tree, std::size_t length, bool genotypic) {
    for (int leaf = 0; leaf < tree.sample_size; ++leaf) {
        const TNode& node = tree.nodes[static_cast<std::size_t>(leaf)];
        if (node.sequence == nullptr || node.sequence->size() != length) return false;
    }
    for (const TTree::LeafBlock& block : tree.leaf_blocks) {
        if (genotypic && block.count % 2 != 0) return false;
    }
    return !tree.leaf_blocks.empty();
}

// The states of a leaf as a line of data.
std::string leaf_text(const myVectInt& sequence, Mut_Type type, char separator) {
    std::string text;
    for (const int state : sequence) {
        if (!text.empty() && separator != 0) text += separator;
        text += sequence_text({state}, type);
    }
    return text;
}

// The blank of a locus, which stands before its alleles.
void insert_blank(TAlleleDB& alleles, int locus, const my_string& name) {
    alleles.insert_allele(locus, name.view(), 0.0);
    alleles.blanks_done = 1;
}

HaploDef* new_definition(Haplo_DB& definitions, const char* text) {
    const long number = definitions.list.count + 1;
    auto* definition = new HaploDef(my_string(("h" + std::to_string(number)).c_str()));
    definition->id = static_cast<int>(number - 1);
    definition->content = text;
    return definitions.append(definition);
}

void set_size(Population& sample, int copies) {
    sample.sample_size = copies;
    sample.inv_sample_size = copies > 0 ? 1.0 / copies : 1.0;
    sample.phen_to_gam_done = 0;
}

// The leaves of a sample as haplotypes: the distinct ones with their counts, and each gene copy.
class HaplotypeReader {
public:
    HaplotypeReader(Haplo_DB& definitions, TAlleleDB& alleles, char separator)
        : definitions_(definitions), alleles_(alleles), separator_(separator) {}

    void read(Population& sample, const TTree& tree, const TTree::LeafBlock& block, Mut_Type type) {
        entries_.clear();
        for (int leaf = block.first; leaf < block.first + block.count; ++leaf)
            add_copy(sample, leaf_text(leaf_sequence(tree, leaf), type, separator_));
        sample.nb_hapl = sample.nb_orig_hapl = static_cast<int>(sample.hapl_list.count);
    }

private:
    void add_copy(Population& sample, const std::string& text) {
        const my_string content(text.c_str());
        HaploDef* definition = definitions_.find(content);
        if (definition == nullptr) {
            definition = new_definition(definitions_, text.c_str());
            definition->build_haplovect(&alleles_, separator_, 0, kDefinitionWeight);
        }
        ++definition->count;
        sample.gamete_list.Add(new PHaploDef(definition, 1));
        PHaploDef*& entry = entries_[definition];
        if (entry == nullptr) sample.hapl_list.Add(entry = new PHaploDef(definition, 0));
        ++entry->freq;
    }

    Haplo_DB& definitions_;
    TAlleleDB& alleles_;
    char separator_;
    std::unordered_map<HaploDef*, PHaploDef*> entries_;  // not owned
};

// The leaves of a sample as individuals of two.
void read_individuals(Population& sample, const TTree& tree, const TTree::LeafBlock& block, Mut_Type type,
                      char separator) {
    for (int i = 0; i < block.count / 2; ++i) {
        auto* individual = new TPhenotype(my_string(std::to_string(i + 1).c_str()), 1.0);
        for (std::size_t k = 0; k < 2; ++k) {
            const int leaf = block.first + 2 * i + static_cast<int>(k);
            individual->text[k] = leaf_text(leaf_sequence(tree, leaf), type, separator).c_str();
        }
        sample.phen_db.Add(individual);
    }
    sample.build_allele_vectors(separator);
}

// --- Appending a locus ---

const TAllele* haplotype_allele(const Population& sample, int copy, int locus) {
    const PHaploDef* entry = sample.gamete_list.at_const(copy);
    return entry == nullptr ? nullptr : entry->def->at_const(locus);
}

const TAllele* individual_allele(const Population& sample, int copy, int locus) {
    const TPhenotype* individual = sample.phen_db.at_const(copy / 2);
    if (individual == nullptr) return nullptr;
    const auto& string = individual->pseudo_hapl[static_cast<std::size_t>(copy % 2)];
    return string == nullptr ? nullptr : string->alleles.at_const(locus);
}

// Allele of a gene copy of simulated samples, in the order of the leaves; null if there is none.
const TAllele* allele_of(const Population& sample, int copy, int locus, bool genotypic) {
    return genotypic ? individual_allele(sample, copy, locus) : haplotype_allele(sample, copy, locus);
}

int gene_copies(const Population& sample, bool genotypic) {
    return static_cast<int>(genotypic ? 2 * sample.phen_db.count : sample.gamete_list.count);
}

// Loci of appended data so far.
int appended_loci(const Population& sample, bool genotypic) {
    if (genotypic) return sample.phen_db.num_loci();
    const PHaploDef* first = sample.gamete_list.at_const(0);
    return first == nullptr ? 0 : static_cast<int>(first->def->num_alleles());
}

// Length of the text of a gene copy so far.
int appended_length(const Population& sample, int copy, bool genotypic) {
    if (!genotypic) return sample.gamete_list.at_const(copy)->def->content.len;
    return sample.phen_db.at_const(copy / 2)->text[static_cast<std::size_t>(copy % 2)].len;
}

bool can_append(const Population& target, const Population& source, int source_locus, int locus,
                bool genotypic) {
    const int copies = gene_copies(source, genotypic);
    if (target.allele_db == nullptr) return false;
    if (locus > 0 && gene_copies(target, genotypic) != copies) return false;
    if (locus > 0 && copies > 0 && appended_loci(target, genotypic) != locus) return false;
    for (int copy = 0; copy < copies; ++copy) {
        const TAllele* allele = allele_of(source, copy, source_locus, genotypic);
        if (allele == nullptr) return false;
        const int length = locus > 0 ? appended_length(target, copy, genotypic) : 0;
        if (length + 1 + allele->len > kMaxTextLength) return false;
    }
    return true;
}

void append_token(my_string& text, const TAllele& allele, char separator) {
    if (!text.is_null() && separator != 0) text += separator;
    text += allele;
}

// Empty texts for the gene copies of a sample.
void start_appending(Population& target, const Population& source, Haplo_DB& definitions, bool genotypic) {
    target.clean();
    const int copies = gene_copies(source, genotypic);
    set_size(target, copies);
    for (int i = 0; genotypic && i < copies / 2; ++i) {
        auto* individual = new TPhenotype(my_string(std::to_string(i + 1).c_str()), 1.0);
        for (const int k : {0, 1})
            individual->set_pseudo_hapl(TPopHaplotype(target.profile.LocusSeparator), k);
        target.phen_db.Add(individual);
    }
    target.phen_db.convert_freq_to_real();
    for (int copy = 0; !genotypic && copy < copies; ++copy) {
        HaploDef* definition = new_definition(definitions, "");
        definition->count = 1;
        target.gamete_list.Add(new PHaploDef(definition, 1));
        target.hapl_list.Add(new PHaploDef(definition, 1));
    }
    target.nb_hapl = target.nb_orig_hapl = static_cast<int>(target.hapl_list.count);
}

void append_to_haplotype(Population& target, int copy, int locus, const TAllele& allele) {
    HaploDef& definition = *target.gamete_list.data[copy]->def;
    append_token(definition.content, allele, target.profile.LocusSeparator);
    definition.Add(target.allele_db->insert_allele(locus, allele.view(), kDefinitionWeight));
}

void append_to_individual(TPhenotype& individual, TAlleleDB& alleles, char separator, int locus,
                          const TAllele* const (&pair)[2]) {
    const TAllele* inserted[2];
    for (std::size_t k = 0; k < 2; ++k) {
        append_token(individual.text[k], *pair[k], separator);
        TAllele* allele = alleles.insert_allele(locus, pair[k]->view(), individual.real_freq / 2.0);
        individual.pseudo_hapl[k]->alleles.Add(allele);
        inserted[k] = allele;
    }
    if (inserted[0] != inserted[1]) ++individual.nb_het_loci;
}

void append_locus(Population& target, const Population& source, int source_locus, int locus, bool genotypic) {
    const int copies = gene_copies(source, genotypic);
    for (int copy = 0; !genotypic && copy < copies; ++copy)
        append_to_haplotype(target, copy, locus, *haplotype_allele(source, copy, source_locus));
    for (int i = 0; genotypic && i < copies / 2; ++i) {
        const TAllele* const pair[2] = {individual_allele(source, 2 * i, source_locus),
                                        individual_allele(source, 2 * i + 1, source_locus)};
        append_to_individual(*target.phen_db.data[i], *target.allele_db, target.profile.LocusSeparator, locus,
                             pair);
    }
}

}  // namespace

long* Samples::sprinkle_mutations(double const& mu, int const& sites, Mut_Type const& type,
                                  double const& gamma_a, double const& p_fixed, double const& fixed_rate,
                                  double const& ts_rate) {
    total_mutations = drop_mutations(tree.make(), {mu, sites, type, gamma_a, p_fixed, fixed_rate, ts_rate});
    return &total_mutations;
}

int Samples::readPopDataFromSims(Haplo_DB& definitions, TAlleleDB& alleles, Mut_Type const& type) {
    const bool genotypic = GenotypicData != 0;
    if (!tree || tree->sample_size < 1 || tree->nodes[0].sequence == nullptr) return 0;
    const std::size_t sites = tree->nodes[0].sequence->size();
    if (!fits(*tree, sites, genotypic)) return 0;
    const bool numbers = type != kBinaryMutation && type != kNucleotideMutation;
    if (numbers && LocusSeparator == 0) LocusSeparator = ' ';
    for (Population* sample : populations)
        sample->clean();
    definitions.reset();
    alleles.destroy();
    for (std::size_t locus = 0; locus < sites; ++locus)
        insert_blank(alleles, static_cast<int>(locus), RecessiveAllele);
    HaplotypeReader haplotypes(definitions, alleles, LocusSeparator);
    for (Population* sample : populations) {
        const TTree::LeafBlock block = block_of(*tree, *sample);
        sample->allele_db = &alleles;
        sample->profile.LocusSeparator = LocusSeparator;
        sample->nb_hapl = sample->nb_orig_hapl = 0;
        set_size(*sample, block.count);
        if (genotypic) {
            read_individuals(*sample, *tree, block, type, LocusSeparator);
        } else {
            haplotypes.read(*sample, *tree, block, type);
        }
    }
    return 1;
}

int Samples::addLocus(Samples const& source, int source_locus, int locus, bool genotypic) {
    const std::int64_t count = populations.count;
    if (count == 0 || source.populations.count != count || source_locus < 0 || locus < 0) return 0;
    for (std::int64_t i = 0; i < count; ++i) {
        if (!can_append(*populations.data[i], *source.populations.data[i], source_locus, locus, genotypic))
            return 0;
    }
    TAlleleDB& alleles = *populations.data[0]->allele_db;
    if (locus == 0) {
        for (Population* sample : populations)
            sample->clean();
        alleles.destroy();
        appended_definitions = std::make_shared<Haplo_DB>();
        for (std::int64_t i = 0; i < count; ++i)
            start_appending(*populations.data[i], *source.populations.data[i], *appended_definitions,
                            genotypic);
    }
    insert_blank(alleles, locus, RecessiveAllele);
    for (std::int64_t i = 0; i < count; ++i)
        append_locus(*populations.data[i], *source.populations.data[i], source_locus, locus, genotypic);
    if (!genotypic && appended_definitions != nullptr) appended_definitions->content_changed();
    return 1;
}

}  // namespace mnd
