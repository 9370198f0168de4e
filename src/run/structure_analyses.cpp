// The analyses between samples, and the pooling of samples by group.
#include <ctime>
#include <ostream>
#include <string>
#include <unordered_map>

#include "foundation/clock_time.h"
#include "foundation/data_type.h"
#include "results/tree_script.h"
#include "results/xml_tags.h"
#include "run/errors.h"
#include "run/project.h"
#include "run/tasks.h"

namespace mnd {

namespace {

bool has_task(const settings& s, long tasks) {
    return (s.TaskNumber & tasks) != 0;
}

bool has_amova_kind(const settings& s) {
    return s.HaplAMOVA != 0 || s.LocByLocAMOVA != 0;
}

// Both the result document and the log.
template <typename Text>
void say_twice(std::ostream& results, const Text& text) {
    results << text;
    *_AOS_ << text;
}

void skip_conventional_fst_of_unknown_phase(settings& s, std::ostream& results) {
    if (s.gametic_phase != 0 || s.ComputeConventionalFST == 0) return;
    say_twice(results,
              "\n\nThe computation of AMOVA with the option \"CONVENTIONAL FST\" is"
              "\nnot possible with unknown gametic phase data.\n"
              "SKIPPING COMPUTATION OF GENETIC STRUCTURE\n");
    E.error(Warning, "GenStructCalculations()", kCannotComputeGeneticStructure);
    s.TaskNumber &= ~static_cast<long>(kTaskAmova | kTaskPairwiseFst);
}

void skip_recessive_data(settings& s, std::ostream& results) {
    s.TaskNumber &= ~static_cast<long>(kTaskAmova | kTaskPairwiseFst);
    results << "\n\nThe computation of AMOVA and PAIRWISE FST is"
            << "\nnot implemented yet with recessive data, sorry\n";
}

void open_structure_folder(settings& s, bool group_level) {
    const bool wanted = has_task(s, kTaskPairwiseFst | kTaskExactDifferentiation) ||
                        (has_task(s, kTaskAmova) && has_amova_kind(s));
    if (!wanted || !htmlOutput) return;
    if (group_level) {
        print_js_aux_entry(s, 2, "_gr_gen_struct", "Genetic structure (samp=group)");
    } else {
        print_js_aux_entry(s, 2, "_pop_gen_struct", "Genetic structure (samp=pop)");
    }
}

struct AnalysisName {
    Task task;
    const char* name;
};

// Analyses that settings may ask for and this version does not hold.
constexpr AnalysisName kMissingAnalyses[] = {
    {kTaskAmova, "analysis of molecular variance"},
    {kTaskPairwiseFst, "pairwise comparison of samples"},
    {kTaskMantel, "correlation between distance matrices"},
    {kTaskExactDifferentiation, "exact test of population differentiation"},
};

// A result that was asked for and is not there must not go unnoticed.
void tell_missing_analyses(const settings& s, std::ostream& results) {
    for (const AnalysisName& analysis : kMissingAnalyses) {
        if (!has_task(s, analysis.task)) continue;
        say_twice(results,
                  std::string("\nNot computed: this version does not hold the ") + analysis.name + ".\n");
    }
}

// Adds the entries of one sample to the pooled one; entries of one definition become one, in
// the order of first appearance.
void merge_haplotypes(const Population& from, Population& pool,
                      std::unordered_map<const HaploDef*, std::int64_t>& index_of) {
    for (int i = 0; i < from.hapl_list.count; ++i) {
        const PHaploDef& entry = *from.hapl_list[i];
        const auto [place, is_new] = index_of.try_emplace(entry.def, pool.hapl_list.count);
        if (is_new) {
            pool.hapl_list.Add(new PHaploDef(entry));
        } else {
            pool.hapl_list[place->second]->freq += entry.freq;
        }
    }
}

void append_individuals(const Population& from, Population& pool) {
    for (int i = 0; i < from.gamete_list.count; ++i)
        pool.gamete_list.Add(new PHaploDef(*from.gamete_list[i]));
    for (int i = 0; i < from.phen_db.count; ++i)
        pool.phen_db.Add(new TPhenotype(*from.phen_db[i]));
}

void pool_one_group(const MY_TIArrayAsVector<Population>& group, Population& pool) {
    std::unordered_map<const HaploDef*, std::int64_t> index_of;
    pool.sample_size = 0.0;
    for (int i = 0; i < group.count; ++i) {
        const Population& sample = *group[i];
        pool.allele_db = sample.allele_db;
        pool.phen_to_gam_done = sample.phen_to_gam_done;
        pool.RecessiveAllelesEM = sample.RecessiveAllelesEM;
        pool.sample_size += sample.sample_size;
        merge_haplotypes(sample, pool, index_of);
        append_individuals(sample, pool);
    }
    pool.nb_hapl = pool.nb_orig_hapl = pool.hapl_list.count;
    pool.inv_sample_size = pool.sample_size > 0.0 ? 1.0 / pool.sample_size : 1.0;
}

}  // namespace

void Project::poolSamplesInGroups(Samples const& from_samples, Structure const& from_structure,
                                  Samples& pooled_samples, Structure& pooled_structure) {
    const int nb_groups = static_cast<int>(from_structure.groups.size());
    for (int g = 0; g < nb_groups; ++g) {
        Population empty;
        empty.profile = from_samples;
        std::unique_ptr<Population> pool = Samples::new_sample(from_samples.DataType, empty);
        pool->name = ("Group " + std::to_string(g + 1)).c_str();
        pool->id = g;
        pool->profile = from_samples;
        pool_one_group(from_structure.groups[static_cast<std::size_t>(g)], *pool);
        pooled_samples.populations.Add(pool.release());
    }
    pooled_samples.NbSamples = nb_groups;

    pooled_structure.reset();
    pooled_structure.StructureName = from_structure.StructureName;
    pooled_structure.NbGroups = nb_groups > 0 ? 1 : 0;
    pooled_structure.NbSamples = nb_groups;
    pooled_structure.allocate_groups();
    if (nb_groups == 0) return;
    pooled_structure.group_sizes[0] = nb_groups;
    for (int g = 0; g < nb_groups; ++g)
        pooled_structure.groups[0].Add(pooled_samples.populations[g]);
}

void Project::convert_individuals(std::fstream& results) {
    skip_conventional_fst_of_unknown_phase(the_settings, results);
    *_AOS_ << "\tConverting phenotypic to haplotypic data ...\n";
    const std::clock_t begin = std::clock();
    convert_phenotypes();
    build_haplotype_vectors();
    *_AOS_ << "\tdone ! (" << milliseconds_since(begin) << " ms)\n";
}

void Project::GenStructCalculations(std::fstream* results) {
    settings& s = the_settings;
    if (GenotypicData != 0 && RecessiveData == 0) convert_individuals(*results);
    if (DataType == MICROSAT) *_AOS_ << "\nSkipping microsat repeat length detection\n";
    if (GenotypicData != 0 && RecessiveData != 0) skip_recessive_data(s, *results);
    open_structure_folder(s, !samples->output_by_sample);
    if ((has_task(s, kTaskAmova) && has_amova_kind(s)) || has_task(s, kTaskPairwiseFst)) {
        constexpr const char* kRule = "==============================\n";
        *results << '\n' << kRule << "== GENETIC STRUCTURE ANALYSIS\n" << kRule;
    }
    tell_missing_analyses(s, *results);
}

}  // namespace mnd
