// One sample of a project, and what all genetic data types share in analysing it.
//
// The class of a sample is the data type of the project: the tree below keeps the analyses
// of each type apart, while reading, the handling of gametes and the driver stay common.
// The methods of one analysis are defined with that analysis; this header declares them.
#pragma once

#include <fstream>
#include <memory>
#include <ostream>
#include <string_view>
#include <vector>

#include "foundation/arrays.h"
#include "foundation/bnum_mat.h"
#include "foundation/count_table.h"
#include "foundation/my_string.h"
#include "foundation/rect_mat.h"
#include "input/profile.h"
#include "model/allele_db.h"
#include "model/haplotypes.h"
#include "model/mismatch_result.h"
#include "model/phenotypes.h"
#include "model/pop_haplotypes.h"
#include "model/tree_holder.h"

namespace mnd {

class settings;
class DistMat;
class MutatedSites;
struct MutationModel;
enum Mut_Type : int;
class ConfigurationSampler;

// The number that stands for infinity in printed results: the largest of single precision.
inline constexpr double kNumericalInfinity = 3.4028234663852886e+38;

// The data of one sample as read from the project.
class Population {
public:
    // Working fields of the between-sample analyses; nothing else reads them.
    struct AmovaWork {
        MY_TIArrayAsVector<PHaploDef>* work_list =
            nullptr;                    // not owned: hapl_list or gamete_list of this sample
        int amova_id = -1;              // number of the sample in the order of the structure
        double SSD = 0.0;               // sum of squared distances within the sample
        double SSD_div_n = 0.0;         // the same over the number of gene copies
        double SSD_within_ind = 0.0;    // sum of squared distances within individuals
        std::vector<double> perm_freq;  // owned: gene copies per matrix row, perm_size long
        std::vector<int> perm_list;     // owned: the rows with a perm_freq that is not 0, first num_existing
        int num_existing = 0;           // used entries of perm_list
        int perm_size = 0;              // length of both vectors
    };

    std::vector<int>
        polym_locus;          // owned: per locus, 1 if it is polymorphic in this sample; empty until compared
    ProfileSettings profile;  // how the data are written: types, separator, missing-data mark
    my_string name;
    int id = -1;                                       // index in the project
    MY_TIArrayAsVector<PHaploDef> hapl_list{10, 100};  // owned entries: distinct haplotypes with their counts
    MY_TIArrayAsVector<PHaploDef> gamete_list{
        10, 100};                    // owned entries: one of count 1 per gene copy, by individual
    TPhenDB phen_db;                 // phenotypes of a genotypic sample
    TAlleleDB* allele_db = nullptr;  // not owned: the allele store of the project, outlives every sample
    TPopHaploDB hapl_db;             // working haplotypes of the estimations
    int spare_count = 0;             // carried along by copies; no computation reads it
    int nb_hapl = 0;                 // number of distinct haplotypes; rows of data while reading
    int nb_orig_hapl = 0;            // the same before identical haplotypes were merged
    double sample_size = 0.0;        // gene copies
    double inv_sample_size = 1.0;    // 1 / sample_size; 1 for an empty sample
    int phen_to_gam_done = 0;        // 1 once phen_to_gam has filled hapl_list
    int RecessiveAllelesEM = 0;      // copy of the setting, taken by evaluate_work
    AmovaWork amova;                 // see above; scalars are copied by assignment, vectors are released
    CountTable table;                // contingency table of the exact test under way; else without cells
    int monomorphic = 0;             // 1 when the locus tabled last has fewer than two alleles

    Population();
    // An empty sample that will be read under this profile.
    Population(const my_string& sample_name, int sample_id, const ProfileSettings& sample_profile);
    Population(const Population& other);
    // Cleans this sample, then copies name, id, counts, size, profile, working haplotypes,
    // phenotypes and hapl_list (entry by entry); polym_locus only if the source has one.
    // gamete_list is not copied: whoever pools or copies samples fills it anew.
    Population& operator=(const Population& other);
    virtual ~Population();  // slots 1 and 2

    // Slots 3 and 4; a bare sample has no analysis and no table to release.
    virtual void test_methods(settings& s);
    virtual void clean_bnum();

    // A new sample of the same class with the same data, results at their defaults.
    virtual Population* clone() const;

    // Sets the scalars to their defaults and empties the sample.
    void initialize();
    // Releases permutation vectors, phenotypes, both lists, working haplotypes, polym_locus.
    void clean();
    // Releases amova.perm_freq and amova.perm_list.
    void DeletePermutationVectors();

    // --- Sums of squares between gene copies (between/amova_sums.cpp) ---
    //
    // Of the tally of this sample: amova.perm_freq gene copies at the rows amova.perm_list of D.

    // Sum of squared distances among the gene copies of this sample:
    //   SSD = sum_r f_r (f_r - 1)/2 D(r,r) + sum_{r<s} f_r f_s D(r,s)
    // The diagonal counts, since a matrix from a file may have one.
    // Writes: amova.SSD; amova.SSD_div_n = SSD / sample_size, 0 for an empty sample
    // Cost:   O(num_existing^2); allocates nothing
    void ComputeSSDWP(const DistMat& D);
    // Sum of squared distances between the gene copies of this sample and those of the other:
    //   sum_r sum_s f_ir f_js D(r,s)
    double ComputeSSDAP(const Population* other, const DistMat& D) const;
    // ComputeSSDWP; the result is SSD_div_n.
    double SSDWP_div_freq(const DistMat& D);

    // --- Tallies of the permutations (between/amova_permutations.cpp) ---

    // Zeroed tally over `size` matrix rows.
    void CreatePermutationVectors(const int& size);
    // amova.perm_list and num_existing from perm_freq, in ascending order of rows.
    void SetUpVectorOfExistingHaplotypes();
    // Tally of the next sample_size entries of genes, which are matrix rows.
    // Report: Memory 1 for a row that the matrix does not have, after a text in the log.
    void SetUpVectorsAfterPermutation(int* genes);

    // --- Reading (input/sample_data.cpp, input/free_form_samples.cpp) ---

    // Read one data block, from the line behind SampleData={ to its closing brace; with
    // external not 0 to the end of the stream, no brace needed.
    //   haplo    gains the definitions met for the first time
    //   line_no  running line number, raised for each line taken
    //   line     working line; holds the last one read
    // Result: 1, or 0 after a report and a line in the log.
    int New_read_gametic_data(std::istream& file, Haplo_DB& haplo, int external, int& line_no,
                              my_string& line);
    int New_read_genotypic_data(std::istream& file, int external, int& line_no, my_string& line);
    // The same blocks in the older, free-form syntax, for the token reader.
    int read_gametic_data(std::istream& file, Haplo_DB& haplo, bool external);
    int read_genotypic_data(std::istream& file, bool external);

    // --- From texts to alleles and gametes (model/gametes.cpp) ---

    // Inserts the recessive allele, weight 0, as the first allele of each locus of the
    // project, once per allele store (its blanks_done). The number of loci is that of the
    // first text of this sample. Reports: 152 with no data, 153 if an allele stands first.
    void make_all_blanks(const char& sep);
    // Turns every phenotype's two texts into pseudo-haplotypes; sep 0 means one character per
    // locus. The alleles enter allele_db with half the phenotype's relative frequency each.
    void build_allele_vectors(const char& sep);
    // Turns a genotypic sample into gametes: fills hapl_list, and gamete_list if AMOVA,
    // pairwise comparisons or the Mantel test will run. Definitions are found in db by
    // content; new ones are named "h" and a number.
    void phen_to_gam(Haplo_DB* db, ProfileSettings* project_profile, settings* s);
    // Turns the estimated frequencies of hapl_db into whole counts in list (null: hapl_list).
    // sample_size becomes their sum. Report: 160 for a null allele.
    void h_pop_db_to_gam(Haplo_DB* db, MY_TIArrayAsVector<PHaploDef>* list = nullptr);
    // hapl_list becomes one entry per definition of db, with its project-wide count.
    // Reports: 56 if there was a list already, 157 if the sizes then differ.
    void haplotype_transf(Haplo_DB& db);
    // Merges entries of hapl_list of the same definition, keeping the first one's place.
    void check_phaplodef_redond();
    // Gives every allele that occurs in this sample its share at its locus as freq. Alleles
    // not seen keep the value of the sample before: read freq of present alleles only.
    // Report: 158 when a locus has no allele copies; the work ends there.
    void update_allele_freq();
    // Number of loci by the first definition's vector (haplotypic data) or by the first
    // phenotype's first text; 0 without data.
    int evaluate_nb_loci() const;

    // True for haplotypic data, known phase, or once phen_to_gam has run: hapl_list is then
    // the content of the sample.
    bool has_haplotypes() const;

    // Estimate of the steps that the tasks of s will take on this sample, in units of the
    // progress display. Copies RecessiveAllelesEM; changes nothing else.
    double evaluate_work(const settings& s);

    // Writes which haplotypes this sample shares with other, by the classes of identical
    // definitions (class_of[i] for the definition at matrix row i).
    void print_out_redondant(std::ostream& out, const Population& other,
                             const std::vector<int>& class_of) const;
    // Merges entries whose definitions have the same class and distance exactly 0; emptied
    // entries leave the list in order, nb_hapl follows, nb_orig_hapl keeps the old number.
    void IdentifyIdenticalHaplotypes(const std::vector<int>& class_of, const DistMat& distances);

    // Anchor of this sample in the result document with an entry of the tree.
    void print_population_anchor(int level, settings& s, const my_string& suffix) const;

    // --- Haplotype frequencies of genotypes of unknown phase (within/em_engine.cpp) ---
    //
    // Maximum likelihood by gene counting over the resolutions of each phenotype, from random
    // starts (Excoffier and Slatkin 1995, Mol. Biol. Evol. 12:921-927). Gene copies are
    // sample_size, individuals half of it; the mode of resolution is RecessiveAllelesEM, the
    // missing allele that of the profile.

    // Estimates the frequencies of all haplotypes that phen can be resolved into.
    //   phen            merged first with EMCheckPhenRedundancy; its genotypes are built anew and stay
    //                   afterwards, with prob, rel_prob and phen_prob at the best estimate. They point
    //                   into haplo: kill_gen_lists before haplo goes. ln_likelihood and inbreeding are
    //                   those of the last start.
    //   haplo           receives the haplotypes in the order in which the resolutions name them (pass
    //                   an empty one); freq holds the best estimate, prev_freq nothing of use
    //   num_lhoods      receives the number of log likelihoods that are 1e-06 or more apart
    //   use_inbreeding  not 0: identity by descent within individuals is allowed for
    //   F               with inbreeding: 0 asks for an estimate, which is returned here; another value
    //                   is held. Without: ignored, taken as 0 and left as it is
    //   prev_haplo      not null: only pairs whose parts on the loci prev_loci (0/1 per locus of the
    //                   project) both stand in this store with a frequency above 0
    //   compact         not 0: monomorphic loci are taken out of the haplotypes before the starts
    //   num_init        random starts
    //   max_iter        iterations of one start at most; 0 leaves the frequencies at the start
    //   epsilon         a start ends once the frequencies have changed by less than this in all
    // Returns: the best log likelihood; the most negative float when every start failed (all freq are
    //   then 0); -1000.0 when the work was stopped (freq is then of no use) or when a phenotype has
    //   too many resolutions. In that case error 114 was reported, haplo is empty, the genotypes are
    //   gone and num_lhoods is 0: nothing more can be estimated from this sample.
    // Draws:   per start one a haplotype in the order of haplo, then one for F if it is estimated
    // Writes:  settings::global_work_done, 100 a start
    // Cost:    O(num_init x iterations x genotypes); the genotypes of a phenotype double with each
    //          heterozygous locus
    double calc_ML_hapl_freq_hill95_LD(TPhenDB& phen, TPopHaploDB& haplo, settings& s, int& num_lhoods,
                                       int const& use_inbreeding, double& F, TPopHaploDB* prev_haplo,
                                       int* prev_loci, int const& compact, int const& num_init,
                                       int const& max_iter, double const& epsilon);
    // The earlier driver, without inbreeding, on the steps of TPhenDB and TPopHaploDB; nothing calls
    // it. The threshold is EpsilonValue; the parameter epsilon has no effect.
    // Kept on purpose: a start that follows one below the best so far makes at most 202 iterations;
    // num_lhoods counts values 0.001 apart, of which the first is 0 and the last start's is none.
    // Test: OlderEmDriver
    // Returns: the log likelihood of the last start, not the best; -1000.0 as above
    // Writes:  freq and prev_freq of haplo, those of the best start; settings::global_work_done, exp(loci)
    //          a start
    double calc_ML_hapl_freq(TPhenDB& phen, TPopHaploDB& haplo, settings& s, int& num_lhoods,
                             int const& compact, int const& num_init, int const& max_iter,
                             double const& epsilon);
    // Standard deviations of the frequencies by parametric bootstrap: samples of the size of phen are
    // drawn from haplo by random union of gametes and estimated anew, without inbreeding, from
    // NumInitCondBootstrapEM starts. The individuals observed are never resampled.
    //   haplo      estimated before; its sum_sq_freq receives the s.d. (num_boot 1: the raw square)
    //   num_boot   replicates; below 1 nothing is done
    // Returns: true when all replicates were made. False, with all s.d. 0, when the work was stopped or
    //   a replicate could not be resolved (error 114). When no haplotype has a frequency, all s.d. are
    //   0, nothing is drawn and the result is true.
    // Draws:   per replicate 2 an individual (and 2 a redraw), then those of the estimation
    bool calc_sd_hapl_freq(TPhenDB& phen, TPopHaploDB& haplo, settings& s, int const& num_boot,
                           int const& max_iter, double const& epsilon);

    // --- Haplotype frequencies of some of the loci (within/haplotype_frequencies.cpp) ---

    // Estimates the frequencies on a subset of the loci of phen, without inbreeding, with s.d. from
    // num_boot replicates, and writes the block of results to out.
    //   subset   [0] number of loci, [1..] their positions, from 0
    // Returns: 1, or 0 when the work was stopped or could not be done
    int calc_subset_hapl_freq(std::basic_fstream<char>& out, int const* subset, TPhenDB const& phen,
                              settings& s, int const& num_init, int const& num_boot, int const& max_iter,
                              double const& epsilon);
    // The same for each locus alone, and for each pair (i, j), i below j, ordered by j, then i.
    int calc_all_sites(std::basic_fstream<char>& out, TPhenDB const& phen, settings& s, int const& num_init,
                       int const& num_boot, int const& max_iter, double const& epsilon);
    int calc_all_pairs(std::basic_fstream<char>& out, TPhenDB const& phen, settings& s, int const& num_init,
                       int const& num_boot, int const& max_iter, double const& epsilon);

    // --- Heterozygosity of genotypic samples (within/diversity) ---

    // Observed and expected heterozygosity of a locus. Phenotypes with a missing allele there
    // are left out; n is the number of individuals kept. All 0 if n is 0.
    void compute_locus_heterozygosity(const int& locus, double& obs, double& exp, int& n) const;
    // Writes the table of these for all loci to the result stream of s.
    void compute_phenotype_heterozygosity(settings& s, const TPhenDB& phenotypes) const;

    // --- Hardy-Weinberg equilibrium (within/hardy_weinberg.cpp) ---
    //
    // The exact test: a Markov chain over the triangular tables of genotype counts that have the
    // allele counts of the sample. P is the share of visited tables that are no more probable
    // than the observed one.
    //
    //   hw_info   [0] number n of alleles of the table, [1] locus; negative: whole haplotypes
    //   steps     forecasted length of the chain; below 1 no chain runs, P and its s.d. are 0
    //
    // Source: Guo and Thompson 1992, Biometrics 48:361-372

    // The test of all loci, and for known phase of whole haplotypes, as TypeOfTestHW selects, with
    // its tables in the document and its row in the batch summary.
    //   phen     the phenotypes of this sample, phen_db; without any there are no rows
    // Reads:     MakeHWExactTest, TypeOfTestHW, the lengths of burn-in
    // Writes:    hw_p_value; hw_precision is put back
    // Draws:     those of the chains; the loci of no chain draw none
    void make_all_hw(std::basic_fstream<char>& out, TPhenDB const& phen, long const& steps, settings& s);
    // Builds the table n x n of the locus or of the haplotypes: table[i][j], i <= j, individuals of
    // genotype (i, j), alleles numbered by first appearance. Individuals with a missing allele at
    // the locus are left out; whole haplotypes are compared with their missing alleles.
    // Reads:     phen_db
    // Writes:    table; hw_info[0]; monomorphic: 1 for a locus of fewer than two alleles
    // Reports:   60 for a locus that an individual does not have
    // Returns:   1; 0 after a report or for a monomorphic locus. Fewer than two haplotypes give 1,
    //            n = 0 and no table
    int make_hw_table(int* hw_info);
    // One step of the chain on the table.
    //   seed     a dummy, see ran3
    // Returns:   probability of the new table over that of the old one; 1 when the chain stays
    // Draws:     5, and one more for each index drawn anew
    // Reports:   60 for an index out of range, drawn only from a stream seeded out of range, or
    //            with no table of at least 2 x 2; the table stays and 1 is returned
    double swap_in_table2(int* hw_info, long& seed);
    // Releases the table.
    void clear_table(int* hw_info);
    // One long chain, whose steps go to about sqrt(steps) batches in turn.
    //   stat     0. Reports 0 when its batches do not fit into memory, and runs no chain
    // Writes:    hw_p_value, and hw_precision: its s.d. from the batches. Without a chain, or when
    //            the work was stopped, P stays, the s.d. and steps_done are 0
    // Kept on purpose: the burn-in is MarkovChainDememorisationStepsLD, not that of the document.
    // Test: HardyWeinbergChain.BurnsInByTheKeyOfTheLinkageTest
    void make_hw_test2(long const& steps, double& stat, settings& s, long& steps_done, int* hw_info);
    // About sqrt(steps) short chains, each from the observed table with its own burn-in, so that no
    // long chain is locked in one part of the tables. Ends early when the s.d., from the chains
    // before the last one, is below PrecisionOnPValueHW. Otherwise as make_hw_test2.
    void make_hw_test3(long const& steps, double& stat, settings& s, long& steps_done, int* hw_info);
    // The likelihood-ratio test of one locus, see TPhenDB::hw_chi_stat.
    //   stat     the statistic; -1000 after a report, then with P = 1
    // Reads:     EMCheckPhenRedundancy
    // Writes:    hw_p_value, from the chi-square distribution
    // Returns:   degrees of freedom
    int make_hw_test1(TPhenDB const& phen, double& stat, settings& s, int* hw_info);
};

// Result of Tajima's test.
struct TajimaResult {
    int tajima_S = 0;        // sites with substitutions
    double tajima_pi = 0.0;  // mean number of pairwise differences, indels left out
    double tajima_D = 0.0;
    double tajima_p = -1.0;  // -1: D could not be computed, or was not tested
};

// Locus comparison, indices and analysis results common to all data types. Only its four
// subclasses are analysed.
class PopGenetics : public Population, public TajimaResult, public MismatchResult {
public:
    // Comparison of the loci, written by evaluate_polymorphism.
    int nb_polym_loci = 0;              // polymorphic among the usable loci
    HaploDef ref_hapl;                  // first column of comparison of DNA and RFLP samples
    std::vector<double> missing_level;  // owned: per locus, proportion of missing gene copies
    double allowed_missing = 0.0;       // copy of AllowedLevelOfMissingData
    std::vector<int> usable_site;       // owned: per locus, 0 if it has too much missing data
    int nb_usable_loci = 0;
    int nb_loci = 0;  // loci or sites compared

    // Distance between haplotypes. The driver sets the method before each task.
    int distance_method = 0;            // number as in the settings file
    double gamma_a = 0.0;               // shape of the gamma correction; 0: none
    double distance = 0.0;              // result of the last pair
    double distance_var = 0.0;          // its variance
    int max_dist = 0;                   // integer part of the largest finite distance of dist_mat
    std::unique_ptr<RectMat> dist_mat;  // owned: nb_hapl x nb_hapl, distance below the diagonal, for DNA and
                                        // RFLP its standard deviation above it; null until computed

    // Standard indices.
    double sum_sq_freq = 0.0;        // sum of squared haplotype frequencies
    double homozygosity = 0.0;       // sample homozygosity
    double heterozygosity = 0.0;     // gene diversity
    double sd_heterozygosity = 0.0;  // standard deviation of gene diversity, sampling process
    double exp_k = 0.0;              // expected number of alleles, by k_est

    // Molecular diversity and estimators of theta = 4Nu.
    double mean_pairwise_diff = 0.0;
    double sd_pairwise_diff = 0.0;
    double nucl_diversity = 0.0;  // mean_pairwise_diff over the number of usable loci
    double sd_nucl_diversity = 0.0;
    double theta_S = 0.0;  // from the number of segregating sites
    double sd_theta_S = 0.0;
    double theta_hom = 0.0;  // from homozygosity; kNumericalInfinity when all copies differ
    double sd_theta_hom = 0.0;
    double theta_pi = 0.0;  // from the mean number of pairwise differences
    double sd_theta_pi = 0.0;
    double theta_k = 0.0;        // from the number of alleles
    double theta_k_lower = 0.0;  // its 95 % confidence limits
    double theta_k_upper = 0.0;

    // Tests of neutrality; P-values are -1 when not tested.
    double obs_F = 0.0;         // sum of squared haplotype frequencies
    double exp_F = 0.0;         // its mean over simulated samples
    double ew_p = -1.0;         // share of simulated samples with a sum that is not above obs_F
    double slatkin_obs = 0.0;   // statistic of Slatkin's test
    double slatkin_p = -1.0;    // share of simulated samples with one that is not above it
    int slatkin_test = 0;       // 1 while simulated samples are counted for Slatkin's test
    double p_exactly_k = -1.0;  // Chakraborty's test: P of the observed number of alleles
    double p_k_or_more = -1.0;  // and of at least as many
    double fu_Fs = 0.0;         // +/- kNumericalInfinity when it is not finite
    double fu_p = -1.0;         // share of simulated Fs that are not above fu_Fs
    double fu_theta_pi = 0.0;   // theta(Pi) without indels, on which Fs rests
    std::shared_ptr<ConfigurationSampler> sampler;  // owned: of the test under way, or null

    // Indices per locus.
    std::vector<double> mean_allele_sizes;          // owned: microsatellites, mean size
    std::vector<double> locus_heterozygosity;       // owned: gene diversity
    std::vector<int> locus_nb_alleles;              // owned: number of alleles
    std::vector<double> allele_range;               // owned: microsatellites, largest less smallest size
    std::vector<double> garza_williamson;           // owned: microsatellites, k / (range + 1)
    std::vector<double> garza_williamson_modified;  // owned: the same with the range over all samples

    // Simulated genealogy of the gene copies of this sample.
    TreeHolder tree;           // see allocate_tree; neither copied nor cleaned with the data
    long total_mutations = 0;  // on the tree, by the last simulation

    // Shared by all samples of the process.
    static TAlleleDB globalAllelicDB;  // allele counts over all samples, for the summaries
    static std::vector<bool>
        globalSubstPolymSites;  // per site: a substitution in any sample; emptied per pass
    static BnumMat BMat;        // B numbers of the sampling theory of neutral alleles
    static int B_num_exist;     // 1 when BMat is filled

    PopGenetics();
    PopGenetics(const my_string& sample_name, int sample_id, const ProfileSettings& sample_profile);
    explicit PopGenetics(const Population& other);
    PopGenetics& operator=(const Population& other);
    PopGenetics(const PopGenetics&) = delete;  // results are never copied, data are: use the forms above
    PopGenetics& operator=(const PopGenetics&) = delete;
    ~PopGenetics() override;

    Population* clone() const override;
    // Does nothing: each data type has its own driver of analyses.
    void test_methods(settings& s) override;
    // Shrinks the shared table of B numbers and forgets it.
    void clean_bnum() override;
    // Slots 5 to 7; empty here, with the result 0.
    //
    // check_data: are sizes and counts consistent? Sets sample_size to the sum of the entries.
    // Reports 110 (sum), 111 (number of haplotypes), 161 or 139 (lengths); result 1 or 0.
    virtual int check_data();
    // Fills dist_mat from hapl_list by distance_method and gamma_a, over usable loci.
    //   out            receives the matrix as text, if not null
    //   scale_by_loci  not 0: proportional methods are scaled to differences per sequence
    // Result: 1, or 0 after a report (108 no haplotypes, 136 no distance, 121 allele sizes).
    virtual int compute_distance_matrix(std::fstream* out, settings* s, int scale_by_loci);
    // Finds usable and polymorphic loci, by the representation that the data have.
    // Result: 1, or 0 after a report (108 no haplotypes).
    virtual int evaluate_polymorphism(const settings& s);

    // Resets results and comparison to their defaults, not the data.
    void initialize_results();
    // Missing levels, usable and polymorphic loci from the allele vectors of hapl_list; 0
    // with report 108 when the list is empty.
    int compare_haplotypes();
    // The same over both pseudo-haplotypes of each phenotype.
    int compare_phenotypes();

    // B numbers for n genes and k alleles: fills or grows the shared table. False when it
    // cannot serve them (5000 genes and 1000 alleles are refused). Its making is told in the log.
    static bool ensure_B(int n, int k);
    // At least the table of 200 genes by 80 alleles. Result: 1, or 0 if it was refused.
    static int get_B_num_mat();

    // --- Haplotype frequencies (within/haplotype_frequencies.cpp) ---

    // Estimates haplotype frequencies of the phenotypes of this sample into hapl_db, as the settings
    // ask: over all loci, window by window, per locus and per pair of loci, with their s.d.; writes
    // all blocks to the result stream.
    // Returns: 1; -1000 as an unsigned number when the work was stopped before the s.d.
    unsigned comp_gam_phase_EM(settings& s);

    // --- Diversity (within/diversity) ---

    // Sum of squared frequencies, of hapl_list or of a list; stored as sum_sq_freq.
    double calc_F();
    double calc_F(const MY_TISArrayAsVector<AHaplFreq>& list);
    // homozygosity and heterozygosity (Nei 1987, Molecular Evolutionary Genetics, 8.4-8.5).
    double calc_sample_homozygosity();
    double calc_sample_homozygosity(const MY_TISArrayAsVector<AHaplFreq>& list);
    // sd_heterozygosity (Nei 1987, 8.6).
    double calc_sample_sd_heterozygosity();
    // theta_hom and sd_theta_hom, from homozygosity under the infinite-allele model.
    double calc_theta_Hom();
    double calc_theta_Hom(const MY_TISArrayAsVector<AHaplFreq>& list);
    // theta_S and sd_theta_S from S segregating sites among n gene copies.
    void calc_theta_S(const int& n, const int& S);
    // theta_pi and sd_theta_pi from the mean number of pairwise differences.
    void calc_theta_pi(const double& pi);
    // Expected number of alleles of n gene copies under theta (Ewens 1972).
    double k_est(const double& theta, const int& n);
    // Mean allele sizes of microsatellite loci, into mean_allele_sizes.
    void computeMeanAlleleSizes();

    // --- Mismatch distribution (within/mismatch_distribution.cpp) ---

    // Distribution of differences between pairs of gene copies, by the integer part of the distance,
    // its moments, raggedness and chi-square fit: see MismatchResult.
    //   out      when it is open, receives the distance of each pair of gene copies, a row per copy;
    //            the counts are those of the printed distances
    // Reads:     hapl_list, dist_mat, max_dist
    // Reports:   108 without haplotypes, 122 without a matrix, 0 when the classes do not fit into memory
    // Returns:   1, or 0 after a report
    // Source:    Rogers 1995, Evolution 49:608-615 (moments)
    int compute_mm_distr(std::basic_fstream<char>& out, settings& s);

    // --- Neutrality (within/ewens_watterson.cpp, chakraborty.cpp, fu_fs.cpp, tajima.cpp) ---
    //
    // The probabilities of the number of alleles are those of Ewens 1972 (within/ewens_sampling.h)
    // with the shared table of B numbers, which is made or grown; 0 beyond its limits.

    // The tests of Ewens and Watterson and of Slatkin, with their block in out and their row in
    // the batch summary.
    //   alleles   one record per allele: its count in freq, the square in sd; descending counts
    // Reads:     NumIterationsNeutralityTests; none: P-values stay -1
    // Writes:    obs_F, exp_F, ew_p, slatkin_obs, slatkin_p; settings::global_work_done
    // Draws:     per simulated sample one less than there are alleles
    // A stopped run leaves P-values at -1 and writes no results.
    void EW_neutrality_tests(settings& s, std::ostream& out, MY_TISArrayAsVector<AHaplFreq> const& alleles);
    // One random configuration of sample_size gene copies with ranks.count alleles.
    //   ranks            its counts are added, in descending order, to freq, their squares to sd
    //   obs_F            count_F gains 1 when the F drawn is not above it
    //   class_counts     written with slatkin_test: alleles of each count, 0 .. n
    //   count_slatkin    gains 1, with slatkin_test, when the statistic drawn is not above slatkin_obs
    // Returns:   F, see homozygosity_of_counts
    // Draws:     one less than there are alleles
    double compute_rand_frequencies_and_F(MY_TISArrayAsVector<AHaplFreq>& ranks, double const& obs_F,
                                          double& count_F, int*& class_counts, double& count_slatkin);
    // Count, and its square, of the first allele of a random configuration of n copies and k alleles.
    // Draws:     1, or none for one allele
    void get_first_rand_freq(AHaplFreq& first, int const& k, int const& n);
    // Chakraborty's test of population amalgamation: the number of alleles expected under the theta
    // of the homozygosity. From hapl_list, or from records as above.
    // Writes:    p_exactly_k, p_k_or_more, exp_k, theta_hom and the indices it rests on
    void Chakraborty_neutr_test(std::ostream& out);
    void Chakraborty_neutr_test(std::ostream& out, MY_TISArrayAsVector<AHaplFreq> const& alleles);
    // P(K = k) and P(K < k) among n gene copies under theta.
    double proba_exactly_k(int const& k, int const& n, double const& theta);
    double proba_less_than_k(int const& k, int const& n, double const& theta);
    // Fs = ln(S'/(1 - S')), S' = P(K >= k) under theta.
    //   report    warnings are reported: 187 without diversity, 179 for too large a sample, 178 for
    //             S' out of range
    //   Fs        +/- kNumericalInfinity when S' is 1 or 0, or theta not positive; left as it was
    //             when the sample is too large or S' out of range
    // Returns:   1 if Fs is finite
    int Fu_Fs(double const& theta, int const& k, double& Fs, bool report);
    // Tajima's D of S segregating sites and pi differences per pair among n gene copies. P becomes
    // -1 when D can't be computed, which is then 0.
    // Returns:   where tajima_D and tajima_p are stored
    const TajimaResult* tajimaD(int const& n, double const& pi, double const& S);
    // The same for replicates: no check of the last digit of the numerator, nor of e2.
    const TajimaResult* fast_tajimaD(int const& n, double const& pi, double const& S);
    // The tables of allele numbers and heterozygosity per locus, for haplotypes and genotypes.
    void OutputAllelelNumberAndHetPerLocusHapl(settings& s);
    void OutputAllelelNumberAndHetPerLocusDipl(settings& s);

    // --- Simulated samples (simulation/sample_simulation.cpp) ---
    //
    // The tree has sample_size leaves. An analysis calls allocate_tree once, then one of the forms
    // below per replicate. Two scales of time, told by the name of the mutation rate of the sequence:
    //   mu_coal   per unit of coalescent time, theta / 2: trees as they are built
    //   mu_gen    per generation: trees multiplied by the number of generations
    // p_fixed, fixed_rate: see MutationModel, whose fields the arguments are.

    // Makes the tree, for n leaves, and starts a series of replicates, see TTree::allocate_tree.
    void allocate_tree(int const& n);

    // Build the tree of sample_size leaves, which is made if there is none.
    // Draws:   those of TTree::build_tree or build_tree_range_exp
    void fast_build_tree();
    // Kingman's coalescent with the ages beyond t multiplied by scale, in generations.
    void build_tree_fast_one_pop(double t, double scale, int const& generations);
    // The tree of a spatial expansion T ago, with D migrants, in generations.
    void build_tree_fast_range_exp(double T, double D, int const& generations);

    // Drops mutations on the tree that stands there; every node gets its sequence.
    // Writes:  total_mutations, TNode::hits, and the rates of the sites if gamma_a is not 0: made the
    //          first time, drawn anew for each tree
    // Report:  177 when TNode::hits has another number of sites than asked for, from a series of
    //          replicates that never ended; then there is no mutation and nothing is drawn
    // Returns: total_mutations
    // Draws:   those of the rates, then those of TNode::add_mutations
    long* sprinkle_mutations(double const& mu, int const& sites, Mut_Type const& type, double const& shape,
                             double const& p_fixed, double const& fixed_rate, double const& ts_rate);
    long* sprinkle_mutations(MutationModel const& model);

    // A tree and mutations on it.
    // Returns: total_mutations
    long* simulate_sample(double const& mu_coal, int const& sites, Mut_Type const& type, double const& shape,
                          double const& p_fixed, double const& fixed_rate, double const& ts_rate);
    long* simulate_sample(MutationModel const& model);
    // The same after a sudden change of size T ago; see build_tree_fast_one_pop.
    long* simulate_sample_exp(double const& mu_gen, int const& sites, Mut_Type const& type,
                              double const& shape, double const& p_fixed, double const& fixed_rate,
                              double const& ts_rate, double const& T, double const& scale,
                              int const& generations);
    long* simulate_sample_exp(MutationModel const& model, double const& T, double const& scale,
                              int const& generations);
    // The same after a spatial expansion; see build_tree_fast_range_exp.
    long* simulate_range_exp(double const& mu_gen, int const& sites, Mut_Type const& type,
                             double const& shape, double const& p_fixed, double const& fixed_rate,
                             double const& ts_rate, double const& T, double const& D, int const& generations);
    long* simulate_range_exp(MutationModel const& model, double const& T, double const& D,
                             int const& generations);

    // The same three, which count the mutated sites instead of making sequences: same draws, same
    // trees, same states, and total_mutations; only a fraction of the time. See MutatedSites.
    long* fast_simulate_sample(MutatedSites& mutated, MutationModel const& model);
    long* fast_simulate_sample_exp(MutatedSites& mutated, MutationModel const& model, double const& T,
                                   double const& scale, int const& generations);
    long* fast_simulate_range_exp(MutatedSites& mutated, MutationModel const& model, double const& T,
                                  double const& D, int const& generations);

    // Makes this sample the leaves of a tree on which mutations were dropped: one haplotype for each
    // distinct sequence, in order of the first leaf that has it, whose number is its name.
    //   simulated     may be the tree of another sample
    //   definitions   emptied, then holds the haplotypes; id is the place in the list
    // Writes:  hapl_list, nb_hapl, nb_orig_hapl, sample_size, inv_sample_size
    // Report:  59 from "PopGenetics::read_simulated sample()" when a leaf has no sequence, or one of
    //          another length than the first leaf; it is left out of the list
    void read_simulated_sample(TTree& simulated, Haplo_DB& definitions, Mut_Type const& type);

protected:
    // The parts of check_data that all types share: sum and number of the entries.
    bool check_counts(const char* reporter);
    // All texts as long as the first one; else a warning of this code.
    bool check_content_lengths(const char* reporter, int code) const;
    // Makes ref_hapl, unless it has a content, from the first text of hapl_list. A character
    // of passed_over gives way to the one of the next text at the site that is none, if any.
    void build_reference(std::string_view passed_over);
    // Sizes the vectors per locus: nothing missing, every locus usable, none polymorphic.
    void reset_loci(int n);
    // Divides missing_level by sample_size and counts usable and polymorphic loci.
    void settle_loci();
};

}  // namespace mnd
