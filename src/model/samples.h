// The samples of a project, and the steps that run over all of them.
#pragma once

#include <fstream>
#include <memory>
#include <ostream>
#include <vector>

#include "foundation/arrays.h"
#include "foundation/my_string.h"
#include "input/dist_mat.h"
#include "input/profile.h"
#include "model/haplotypes.h"
#include "model/population.h"
#include "model/tree_holder.h"

namespace mnd {

class settings;

class Samples : public ProfileSettings {
public:
    MY_TIArrayAsVector<Population> populations{20,
                                               20};  // owned entries: the samples in the order of the file
    my_string name;
    DistMat pop_distances;     // working matrix of distances between samples
    DistMat group_distances;   // working matrix of distances between groups
    TreeHolder tree;           // simulated genealogy of the gene copies of all samples; not copied
    long total_mutations = 0;  // on the tree, by the last simulation
    std::shared_ptr<Haplo_DB> appended_definitions;  // owned with copies: haplotypes made by addLocus
    bool output_by_sample = true;  // false while the samples are groups pooled into one sample each

    Samples();
    Samples(const Samples& other);
    Samples& operator=(const Samples& other);
    ~Samples();

    // Copies the profile of a project into these samples.
    void set_profile(const ProfileSettings& project_profile) { ProfileSettings::operator=(project_profile); }

    // --- Reading and writing (input/samples_section.cpp, input/free_form_samples.cpp) ---

    // Reads the [[Samples]] section from the line behind its keyword, line by line, up to
    // "[STRUCTURE]", "[MANTEL]" or the end of the file.
    //   haplo    gains the definitions met for the first time
    //   line_no  running line number of the project
    //   line     receives the last line read, by which the caller knows the next section
    //   found_*  set when SampleName, SampleSize, SampleData were met
    // Result: 1, or 0 after a report and a line in the log. Samples read before a failure stay.
    int NewReadSamples(std::ifstream& file, ProfileSettings& profile, Haplo_DB& haplo, int& line_no,
                       my_string& line, bool& found_name, bool& found_size, bool& found_data);
    // Reads the section in the older, free-form syntax. Result: 1 or 0 after a report.
    int Read(std::ifstream& file, ProfileSettings& profile, Haplo_DB& haplo);
    // Writes the number of samples and their names to "samples.txt" in the current directory.
    // Result: 1, or 0 after a line in the log if the file has fewer names.
    int explore(std::ifstream& file, ProfileSettings& profile);
    // Are there data in every sample, with the same number of loci everywhere? Individuals and
    // haplotypes with nothing but missing data leave their sample. Reports: 68, 69, 70, 71.
    bool verify_data();

    // --- Steps over all samples (model/samples.cpp) ---

    // Sets allele_db in every sample.
    void init_all_pointers(TAlleleDB* db);
    // Population::build_allele_vectors in every sample.
    void build_all_vectors(const char& sep);
    // Population::phen_to_gam in every sample.
    void phen_to_gam(Haplo_DB* db, ProfileSettings* project_profile, settings* s);
    // Population::h_pop_db_to_gam in every sample.
    void h_pop_db_to_gam(Haplo_DB& db);
    // Upper-cases DNA texts: of each definition, or of each phenotype. Report: 68 for a
    // sample without data.
    void convert_dna_upper();
    // DNA and RFLP with a separator: takes the blanks out of all texts and sets the separator
    // to 0, here and in every sample. Report: 68 for a sample without data.
    void rm_separators();
    // Sets settings::global_work_to_do to an estimate of all steps, and global_work_done to 0.
    // Has no effect on results.
    void evaluate_work(settings& s);
    // Runs the analyses of every sample. Result: 1.
    int compute_stuff(settings& s);
    // Merges haplotypes of the same class in every sample; see the method of Population.
    void IdentifyIdenticalHaplotypes(const std::vector<int>& class_of, const DistMat& distances);
    // Writes the classes of identical definitions: for each class its first definition and the
    // haplotypes merged with it, with their counts in every sample.
    void print_out_haplo_cl(std::ostream& out, const Haplo_DB& db, const std::vector<int>& class_of) const;
    // Destroys the samples.
    void clean();

    // --- Simulated data (simulation/samples_simulation.cpp) ---

    // Drops mutations on the tree of these samples; see the method of PopGenetics.
    // Returns: total_mutations
    long* sprinkle_mutations(double const& mu, int const& sites, Mut_Type const& type, double const& gamma_a,
                             double const& p_fixed, double const& fixed_rate, double const& ts_rate);
    // Replaces the data of the samples by the leaves of the tree, in the order in which the tree took
    // the samples and their gene copies: each haplotype one leaf, each individual two. Each site is a
    // locus. Haplotypic data also have their gene copies in gamete_list. A sample that the tree did not
    // take becomes empty. Data without separator get a blank for it when states are numbers.
    //   definitions   emptied, then the haplotypes of haplotypic data, named "h" and a number
    //   alleles       rebuilt: blanks, and the alleles with the weights that reading a project gives them
    // Returns: 1, or 0 when leaves have no sequences, or individuals no two; nothing is changed then
    int readPopDataFromSims(Haplo_DB& definitions, TAlleleDB& alleles, Mut_Type const& type);
    // Appends one locus of simulated samples to these, gene copy by gene copy in the order of the
    // leaves, and its alleles to the allele store of the first sample. Haplotypes have one definition
    // per gene copy, which grows in place, in appended_definitions.
    //   source        samples filled by readPopDataFromSims, as many as these
    //   source_locus  the locus taken
    //   locus         its number here: 0 starts afresh, with the sizes of the source; else the number of
    //                 loci that there are
    //   genotypic     whether the data are individuals
    // Returns: 1, or 0 when source and locus do not fit, or a text would grow too long; nothing is
    //          changed then
    // Cost:    O(gene copies) as long as the texts find room
    int addLocus(Samples const& source, int source_locus, int locus, bool genotypic);

    // Anchor of a summary table in the result document with an entry of the tree.
    void print_computation_anchor(int level, settings& s, const my_string& suffix,
                                  const my_string& label) const;

    // A new, empty sample of the class for this data type.
    static std::unique_ptr<Population> new_sample(int data_type, const Population& data);
};

// Argument of build_pseudo_hapl0 and build_pseudo_hapl1.
struct PseudoHaplArg {
    TAlleleDB* db;   // not owned: receives the alleles
    char separator;  // between the tokens of a text
};
// Make an observed genotype into two pseudo-haplotypes; arg is a PseudoHaplArg. The first
// takes each character as a locus, the second each token between separators. Which alleles
// stand together says nothing of the true phase.
void build_pseudo_hapl0(TPhenotype& p, void* arg);
void build_pseudo_hapl1(TPhenotype& p, void* arg);

// Writes one sample of the section, or its name alone; arg is the std::ostream.
void Print(Population& sample, void* arg);
void PrintName(Population& sample, void* arg);
// Writes the section back, in the grammar that it is read in.
std::ostream& operator<<(std::ostream& out, Samples& samples);

}  // namespace mnd
