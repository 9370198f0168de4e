// The analyses between samples, and the pooling of samples by group.
#include "run/structure_analyses.h"

#include <ctime>
#include <memory>
#include <ostream>
#include <string>
#include <unordered_map>

#include "foundation/clock_time.h"
#include "foundation/data_type.h"
#include "results/tree_script.h"
#include "results/xml_tags.h"
#include "run/errors.h"
#include "run/missing_analysis.h"
#include "run/project.h"
#include "run/tasks.h"

namespace mnd {

namespace {

bool has_task(const settings& s, long tasks) {
    return (s.TaskNumber & tasks) != 0;
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
    if (!opens_structure_folder(s) || !htmlOutput) return;
    if (group_level) {
        print_js_aux_entry(s, 2, "_gr_gen_struct", "Genetic structure (samp=group)");
    } else {
        print_js_aux_entry(s, 2, "_pop_gen_struct", "Genetic structure (samp=pop)");
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
    for (int i = 0; i < group.count; ++i) {
        const Population& sample = *group[i];
        pool.phen_to_gam_done = sample.phen_to_gam_done;
        pool.RecessiveAllelesEM = sample.RecessiveAllelesEM;
        pool.nb_hapl += sample.nb_hapl;
        pool.sample_size += sample.sample_size;
        merge_haplotypes(sample, pool, index_of);
        append_individuals(sample, pool);
    }
    // Individuals whose haplotypes are unknown keep the number of their rows.
    if (pool.hapl_list.count > 0) pool.nb_hapl = static_cast<int>(pool.hapl_list.count);
    pool.nb_orig_hapl = pool.nb_hapl;
    pool.inv_sample_size = pool.sample_size > 0.0 ? 1.0 / pool.sample_size : 1.0;
    pool.phen_db.convert_freq_to_real();
}

}  // namespace

bool wants_amova(const settings& s) {
    return has_task(s, kTaskAmova) && (s.HaplAMOVA != 0 || s.LocByLocAMOVA != 0);
}

bool opens_structure_section(const settings& s) {
    return wants_amova(s) || has_task(s, kTaskPairwiseFst);
}

bool opens_structure_folder(const settings& s) {
    return opens_structure_section(s) || has_task(s, kTaskExactDifferentiation);
}

bool needs_haplotype_matrix(const settings& s) {
    if (s.ComputeDistanceMatrixAMOVA == 0 && s.ComputeConventionalFST == 0) return false;
    const bool pairs_need_it =
        s.ComputePairwiseFST != 0 || s.UnequalPopSizeDiv != 0 || s.PrintMissIntermatchs != 0;
    return (has_task(s, kTaskAmova) && s.HaplAMOVA != 0) ||
           (has_task(s, kTaskPairwiseFst) && pairs_need_it) || has_task(s, kTaskMantel);
}

bool prints_haplotype_matrix(const settings& s) {
    return s.PrintDistanceMatrix != 0 || s.PrintMinSpannNetworkGlob != 0;
}

bool compares_samples(const settings& s) {
    return has_task(s, kTaskAmova | kTaskPairwiseFst | kTaskMantel);
}

bool compares_whole_haplotypes(const settings& s) {
    return compares_samples(s) && (s.HaplAMOVA != 0 || has_task(s, kTaskPairwiseFst | kTaskMantel));
}

bool compares_locus_by_locus(const settings& s) {
    return compares_samples(s) && s.LocByLocAMOVA != 0;
}

void Project::poolSamplesInGroups(Samples const& from_samples, Structure const& from_structure,
                                  Samples& pooled_samples, Structure& pooled_structure) {
    const int nb_groups = static_cast<int>(from_structure.groups.size());
    for (int g = 0; g < nb_groups; ++g) {
        const my_string name(("Group " + std::to_string(g + 1)).c_str());
        const Population empty(name, g, from_samples);
        std::unique_ptr<Population> pool = Samples::new_sample(from_samples.DataType, empty);
        pool->allele_db = &allele_db;
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

// What works on the whole table of samples: variance components, pairs, correlations.
void Project::compare_samples(std::fstream& results) {
    settings& s = the_settings;
    const bool group_level = !samples->output_by_sample;
    if (compares_whole_haplotypes(s)) {
        if (s.HaplAMOVA != 0 && htmlOutput)
            print_js_doc_entry(s, 2, group_level ? "_gr_amova" : "_pop_amova", "AMOVA");
        if (has_task(s, kTaskAmova) && s.HaplAMOVA != 0)
            tell_missing_analysis(results, "analysis of molecular variance");
        if (has_task(s, kTaskPairwiseFst)) tell_missing_analysis(results, "pairwise comparison of samples");
        if (has_task(s, kTaskMantel)) tell_missing_analysis(results, "correlation between distance matrices");
    }
    if (compares_locus_by_locus(s))
        tell_missing_analysis(results, "analysis of molecular variance locus by locus");
}

void Project::test_differentiation(std::fstream& results) {
    const bool group_level = !samples->output_by_sample;
    print_js_doc_entry(the_settings, 2, group_level ? "_gr_exct_tests" : "_pop_exct_tests", "Exact tests");
    tell_missing_analysis(results, "exact test of population differentiation");
}

void Project::GenStructCalculations(std::fstream* results) {
    settings& s = the_settings;
    if (GenotypicData != 0 && RecessiveData == 0) convert_individuals(*results);
    if (DataType == MICROSAT) *_AOS_ << "\nSkipping microsat repeat length detection\n";
    if (GenotypicData != 0 && RecessiveData != 0) skip_recessive_data(s, *results);
    open_structure_folder(s, !samples->output_by_sample);
    if (opens_structure_section(s)) {
        constexpr const char* kRule = "==============================\n";
        *results << '\n' << kRule << "== GENETIC STRUCTURE ANALYSIS\n" << kRule;
    }
    if (compares_samples(s)) compare_samples(*results);
    if (has_task(s, kTaskExactDifferentiation)) test_differentiation(*results);
}

}  // namespace mnd
