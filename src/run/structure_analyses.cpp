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

bool pairs_need_matrix(const settings& s) {
    const bool wanted = s.ComputePairwiseFST != 0 || s.UnequalPopSizeDiv != 0 || s.PrintMissIntermatchs != 0;
    return has_task(s, kTaskPairwiseFst) && wanted;
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

// Numbers the samples in the order of the structure; those in no group get the numbers behind.
void number_samples(Samples& samples, const Structure& structure) {
    for (Population* sample : samples.populations)
        sample->amova.amova_id = -1;
    int next = 0;
    for (const auto& group : structure.groups) {
        for (Population* sample : group)
            sample->amova.amova_id = next++;
    }
    for (Population* sample : samples.populations) {
        if (sample->amova.amova_id < 0) sample->amova.amova_id = next++;
    }
}

// The haplotypes that a given matrix lacks, which the report does not name.
void name_unlabelled_haplotypes(const Haplo_DB& definitions) {
    for (const HaploDef* definition : definitions.list) {
        if (definition->id >= 0) continue;
        *_AOS_ << "\tHaplotype \"" << definition->name << "\" has no label in the distance matrix\n";
    }
}

// Leaves a task out for as long as it lives.
class TaskLeftOut {
public:
    TaskLeftOut(settings& s, long tasks) : s_(s), left_out_(s.TaskNumber & tasks) {
        s_.TaskNumber &= ~left_out_;
    }
    ~TaskLeftOut() { s_.TaskNumber |= left_out_; }
    TaskLeftOut(const TaskLeftOut&) = delete;
    TaskLeftOut& operator=(const TaskLeftOut&) = delete;

private:
    settings& s_;
    long left_out_;
};

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
    return (has_task(s, kTaskAmova) && s.HaplAMOVA != 0) || pairs_need_matrix(s) || has_task(s, kTaskMantel);
}

bool needs_matrix_rows(const settings& s, bool has_matrix) {
    return wants_amova(s) || pairs_need_matrix(s) || (has_task(s, kTaskMantel) && has_matrix);
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
    for (std::size_t g = 0; g < from_structure.groups.size(); ++g) {
        const auto& group = from_structure.groups[g];
        if (group.count == 0) continue;
        const my_string name(("Group " + std::to_string(g + 1)).c_str());
        const Population empty(name, static_cast<int>(pooled_samples.populations.count), from_samples);
        std::unique_ptr<Population> pool = Samples::new_sample(from_samples.DataType, empty);
        pool->allele_db = &allele_db;
        pool_one_group(group, *pool);
        pooled_samples.populations.Add(pool.release());
    }
    const int nb_pools = static_cast<int>(pooled_samples.populations.count);
    pooled_samples.NbSamples = nb_pools;

    pooled_structure.reset();
    pooled_structure.StructureName = from_structure.StructureName;
    pooled_structure.NbGroups = nb_pools > 0 ? 1 : 0;
    pooled_structure.NbSamples = nb_pools;
    pooled_structure.allocate_groups();
    if (nb_pools == 0) return;
    pooled_structure.group_sizes[0] = nb_pools;
    for (Population* pool : pooled_samples.populations)
        pooled_structure.groups[0].Add(pool);
}

void Project::convert_individuals(std::fstream& results) {
    skip_conventional_fst_of_unknown_phase(the_settings, results);
    *_AOS_ << "\tConverting phenotypic to haplotypic data ...\n";
    const std::clock_t begin = std::clock();
    convert_phenotypes();
    build_haplotype_vectors();
    *_AOS_ << "\tdone ! (" << milliseconds_since(begin) << " ms)\n";
}

// Binds each haplotype to its row: by label for a matrix of the project file, by position for a
// computed one, whose labels then are the names of the haplotypes.
bool Project::bind_haplotypes(DistMat& matrix, Haplo_DB& definitions) {
    constexpr const char* kReporter = "Project::AMOVA()";
    if (!dist_matrix_computed) {
        if (definitions.associate_with1(matrix)) return true;
        name_unlabelled_haplotypes(definitions);
        E.error(Warning, kReporter, kHaplotypeListIncompatibleWithMatrix);
        return false;
    }
    if (!definitions.associate_with2(matrix)) {
        E.error(Error, kReporter, kHaplotypeListIncompatibleWithMatrix);
        return false;
    }
    matrix.labels.clear();
    for (const HaploDef* definition : definitions.list)
        matrix.labels.push_back(definition->name);
    return true;
}

bool Project::AMOVA(DistMat& matrix, Haplo_DB& definitions, Samples& all_samples, Structure& groups,
                    TAlleleDB& alleles, amova_results* record) {
    settings& s = the_settings;
    if (wants_amova(s) && !IsAmovaStructure()) {
        E.error(Warning, "Project::AMOVA()", kInvalidDataAfterCheck);
        if (!has_task(s, kTaskPairwiseFst)) return false;
    }
    const bool has_matrix = matrix.MatrixSize > 0;
    if (needs_matrix_rows(s, has_matrix) && !bind_haplotypes(matrix, definitions)) return false;
    number_samples(all_samples, groups);
    s.current_samples = &all_samples;
    s.current_structure = &groups;
    s.current_matrix = &matrix;
    s.current_haplo_db = &definitions;
    s.current_allele_db = &alleles;
    try {
        const Amova analysis(s, &groups, &all_samples, &matrix, &definitions, &alleles, &mantel, 1, 0,
                             record);
    } catch (const Amova::AmovaFatalError&) {
        *_AOS_ << "\tThe analysis of molecular variance was abandoned\n";
        return false;
    }
    return true;
}

void Project::compute_haplotype_matrix() {
    const settings& s = the_settings;
    if (!needs_haplotype_matrix(s)) return;
    calc_dist_matrix(s.DistanceMethodAMOVA, s.GammaAValueAMOVA);
    if (prints_haplotype_matrix(s)) print_distance_matrix();
}

// What works on the whole table of samples: variance components, pairs, correlations.
void Project::compare_samples(std::fstream& results) {
    settings& s = the_settings;
    if (s.silent_simulation == 0) {
        if (wants_amova(s)) *_AOS_ << "\t\tComputing F statistics ...\n";
        settings::set_message("Computing population genetic structure...");
        settings::print_message();
    }
    if (mnd::compares_whole_haplotypes(s)) compare_whole_haplotypes(results);
    if (compares_locus_by_locus(s))
        tell_missing_analysis(results, "analysis of molecular variance locus by locus");
}

void Project::compare_whole_haplotypes(std::fstream& results) {
    settings& s = the_settings;
    const bool group_level = !samples->output_by_sample;
    if (s.HaplAMOVA != 0 && htmlOutput)
        print_js_doc_entry(s, 2, group_level ? "_gr_amova" : "_pop_amova", "AMOVA");
    const TaskLeftOut pairs_only(s, s.HaplAMOVA == 0 ? kTaskAmova : 0);
    amova_result = amova_results();
    AMOVA(dist_mat, haplo_db, *samples, *structure, allele_db, &amova_result);
    if (has_task(s, kTaskMantel)) tell_missing_analysis(results, "correlation between distance matrices");
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
    compute_haplotype_matrix();
    if (compares_samples(s)) compare_samples(*results);
    if (has_task(s, kTaskExactDifferentiation)) test_differentiation(*results);
}

}  // namespace mnd
