// One project of a walk: its data, its settings, and the order in which everything is done.
#pragma once

#include <cstdint>
#include <ctime>
#include <fstream>
#include <memory>

#include "between/amova.h"
#include "foundation/my_string.h"
#include "input/dist_mat.h"
#include "input/mantel.h"
#include "input/profile.h"
#include "input/structure.h"
#include "model/allele_db.h"
#include "model/haplotypes.h"
#include "model/samples.h"
#include "run/settings.h"

namespace mnd {

class cleaner;
enum Mut_Type : int;
struct OpenedDocument;

// The central object of the process. It is made once by `mendstart`, and emptied, not
// destroyed, between projects; its base holds the values of the [Profile] section.
class Project : public ProfileSettings {
public:
    Project();
    ~Project();
    Project(const Project&) = delete;
    Project& operator=(const Project&) = delete;

    // Runs every selected analysis of the project `settings::input_file` under `the_settings`
    // (project_run.cpp). An analysis that turns out to be impossible is skipped with its message.
    // An exception, such as the end of the memory, closes the document and ends the run.
    // Returns: false when the project could not be opened, checked or finished; the reason stands
    //          in `failure_reason`
    bool run();

    // Reports what the project file holds, without analysing it, in dir + "mnd_pro.txt"
    // (project_explore.cpp).
    // Returns: false when the file can't be read that far
    bool explore(char* dir);

    // Checks the settings against the data, prepares the data, and clears the task bits of
    // what can't be done (feasibility.cpp).
    // Returns: false when nothing can be done with these data
    bool make_run_possible();

    // Empties the project for the next one.
    void clean();

    // Derives the names of the result and the back-up file and the project folder from
    // `settings::input_file`.
    void build_res_bac_names();

    // True when the structure has groups that an AMOVA can compare. Each fault gives a warning:
    // 123 without samples, 124 without groups, 125 when every group has a single sample.
    bool IsAmovaStructure();

    // Writes "error" to the control directory's "mnd_pro.txt", where a front end looks for it.
    void print_error_message();

    // The analyses between samples, in their order (structure_analyses.cpp).
    void GenStructCalculations(std::fstream* results);

    // Analysis of molecular variance and comparisons of pairs of samples: binds the haplotypes to
    // the rows of the matrix, numbers the samples in the order of the structure, and runs an `Amova`
    // over them (structure_analyses.cpp).
    //   record  receives the results; may be null
    // Returns: false when the structure has nothing to compare and no pairs are wanted (warning 134),
    //          when haplotypes and matrix do not fit (135), or when there is no memory
    bool AMOVA(DistMat& matrix, Haplo_DB& definitions, Samples& all_samples, Structure& groups,
               TAlleleDB& alleles, amova_results* record);

    // Computes the distances between all haplotypes into `dist_mat`, and tells the usable loci in
    // the result document (haplotype_distances.cpp). Conventional F-statistics and frequencies have
    // a conventional matrix. After a failure (136) the matrix is empty.
    void calc_dist_matrix(int const& method, double const& gamma);

    // Prints `dist_mat` and its minimum spanning network, as the settings ask for
    // (haplotype_distances.cpp).
    void print_distance_matrix();

    // Finds haplotypes at distance 0 from one another, tells which samples share them, and merges
    // them in each sample when the settings ask for it (haplotype_distances.cpp).
    void eliminate_redond_haplodef();

    // Fills `pooled_samples` with one sample per group of `from_structure` that has any, and
    // `pooled_structure` with one group that holds them all (structure_analyses.cpp).
    void poolSamplesInGroups(Samples const& from_samples, Structure const& from_structure,
                             Samples& pooled_samples, Structure& pooled_structure);

    // Replaces the data of the samples by simulated ones, of the same numbers of gene copies: a
    // genealogy of demes, mutations on it, its leaves as gene copies (simulated_samples.cpp). The first
    // form is the finite island model, the second the hierarchical one, whose groups are those of
    // `structure`. The haplotype and the allele store are made anew, and the groups refer to the
    // simulated samples.
    //   mu to ts_rate   mutation, see MutationModel; times are in units of the size of a deme
    //   the rest        see TTree::build_tree_struct_pop
    // Returns: 1, or 0 after a text in the log when the replicate failed; the data are then as they were
    int simulateSample(double const& mu, int const& sites, Mut_Type const& type, double const& gamma_a,
                       double const& p_fixed, double const& fixed_rate, double const& ts_rate,
                       double const& F_st, int num_demes);
    int simulateSample(double const& mu, int const& sites, Mut_Type const& type, double const& gamma_a,
                       double const& p_fixed, double const& fixed_rate, double const& ts_rate,
                       double const& F_st, double const& F_ct, int demes_per_group, int num_groups);

    // Reads the project file `settings::input_file` in one pass of lines (project_opening.cpp).
    // Returns: false when the file is not usable; the log says why
    bool newOpen();

    // Reads the project file `settings::input_file` in its older, free-form syntax
    // (project_free_form.cpp). The Mantel section is passed over.
    // Returns: false after the first fault, which is reported
    bool open();

    // Writes the sections that were read to `the_settings.backup_file_name`, when
    // `backup_written` is set (project_opening.cpp).
    // Returns: false when the file can't be opened (error 133)
    bool write();

    // Writes the settings beside the project, as its associated settings file.
    void save_associated_set();

    // The frame of the result document (result_document.h).
    void New_print_html_results_header(bool xml);
    void New_print_html_results_footer(bool flag, bool xml);
    void New_print_html_frames_output(bool flag);

    Haplo_DB haplo_db;                     // haplotype definitions of the project
    DistMat dist_mat;                      // the distance matrix section and its matrix
    Samples* samples = nullptr;            // owned: the population samples; replaced for the group pass
    Structure* structure = nullptr;        // owned: the genetic structure; replaced for the group pass
    Mantel mantel;                         // the Mantel section
    TAlleleDB allele_db;                   // every allele of the project
    std::clock_t start_clock = 0;          // taken when the run starts
    std::uint64_t elapsed_ms = 0;          // computing time of the run
    bool haplotype_vectors_built = false;  // allele vectors of all `HaploDef` are built
    bool phenotypes_converted = false;     // genotypes have been turned into pseudo-haplotypes
    int run_number = 0;                    // raised at each run
    bool backup_written = false;           // enables `write`; a front end's business
    bool dist_matrix_computed = false;     // the haplotype matrix stands; cleared by `newOpen`
    bool project_valid = false;            // set before `run`; false while the data are checked
    settings the_settings;                 // all computation settings
    amova_results amova_result;            // of the last analysis of variance over whole haplotypes

    // Separator of the project before, which the pre-pass of the next one applies to names. A
    // "," project is therefore cleaned differently as first and as second of a batch.
    char carried_separator() const { return LocusSeparator; }

    // Why the last `run` or `explore` failed, in a few words, for standard error.
    my_string failure_reason;

private:
    // Stages of `run`.
    void use_cleaned_copy(cleaner& pre_pass);
    void name_result_files();
    void start_document(const OpenedDocument& document);
    bool read_project();
    void remove_sequence_separator(std::fstream& results);
    void describe_project(std::fstream& results);
    bool check_project(std::fstream& results);
    bool run_on_document(const OpenedDocument& document, cleaner& pre_pass);
    void analyse_level(std::fstream& results, const char* label, const char* heading);
    void analyse_samples(std::fstream& results, const char* label, const char* heading);
    void assign_individuals();
    void group_pass(std::fstream& results);
    void population_pass(std::fstream& results);
    void detect_selected_loci(std::fstream& results);
    void finish_run(std::fstream& results, char separator, cleaner& pre_pass);
    bool abandon_run();
    void close_broken_document(const OpenedDocument& document, const char* reason);

    // Stages of `eliminate_redond_haplodef`.
    bool measure_redundancy();

    // Stages of `make_run_possible`.
    void build_haplotype_vectors();
    void convert_phenotypes();
    void build_phenotype_vectors();
    void prepare_gametes();
    bool refuse_recessive_with_known_phase();
    bool check_structure_tasks();
    void find_redundant_haplotypes();

    // Stages of `GenStructCalculations`.
    void convert_individuals(std::fstream& results);
    void compute_haplotype_matrix();
    void compare_samples(std::fstream& results);
    void compare_whole_haplotypes(std::fstream& results);
    bool bind_haplotypes(DistMat& matrix, Haplo_DB& definitions);
    void test_differentiation(std::fstream& results);

    int take_simulated_data(Mut_Type const& type);

    // Stages of `explore`.
    bool refuse(int code);
    bool explore_subsection(std::ifstream& file, int subsection);
};

// What the exception under way says, in a few words. To be called in its handler; the text is
// valid as long as the handler runs.
const char* reason_of_exception();

// Creates an empty file of that name, truncating it (project_opening.cpp).
void create_mnp_example(char* path);

}  // namespace mnd
