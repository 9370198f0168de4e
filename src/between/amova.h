// Analysis of molecular variance of the genetic structure of a project.
//
// The squared distances between all pairs of gene copies are summed within individuals, within
// samples, within groups and in total. These sums of squares give mean squares, these the
// variance components of the levels, and these the fixation indices. Each component is tested
// by permuting what its level holds: gene copies, individuals or whole samples.
//
// Gene copies are known by their row of the distance matrix alone. `haplo_index` lists the rows
// of all copies, sample after sample, the two copies of an individual side by side; a sample
// tallies its copies by row (Population::AmovaWork).
//
// Source: Excoffier, Smouse and Quattro 1992, Genetics 131:479-491; Michalakis and Excoffier
//         1996, Genetics 142:1061-1064; Weir and Cockerham 1984, Evolution 38:1358-1370
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "foundation/arrays.h"
#include "foundation/my_string.h"
#include "foundation/tri_mat.h"

namespace mnd {

class DistMat;
class Haplo_DB;
class Mantel;
class Population;
class Samples;
class Structure;
class TAlleleDB;
class TPhenotype;
class settings;

// The designs of an analysis: G groups of P samples of haplotypes (H), of individuals whose
// phase is known or irrelevant (I), or of individuals whose two rows are shuffled together (IH,
// RIH with recessive alleles). "1G" and "1P" stand for a single group and a single sample.
enum AmovaDesign : std::int32_t {
    kDesignNone = 0,
    kDesign1G1PI = 2,
    kDesign1GPH = 3,
    kDesign1GPI = 4,
    kDesignGPH = 5,
    kDesignGPI = 6,
    kDesign1GPIH = 7,
    kDesignGPIH = 8,
    kDesign1GPRIH = 9,
    kDesignGPRIH = 10
};

// The code by which the result record knows a design; 0 for no design.
std::int32_t result_code_of_design(std::int32_t design);

// Components and indices closer than this count as equal in all tests.
inline constexpr double kAmovaEpsilon = 1e-10;

// What stands for a total variance of exactly 0.
inline constexpr double kZeroTotalVariance = 1e-18;

// The index of a sample in which it is not defined.
inline constexpr double kUndefinedFis = -9.99999;

// One permutation of samples among groups: the component that it gave, and the samples in the
// order of `all_pops`.
struct FloatsAndPops {
    double value = 0.0;
    std::vector<std::int32_t> pops;  // amova_id of each sample
    std::int32_t count = 0;          // samples
};

// One line of a table of variance.
struct AmovaResultRow {
    std::int32_t df = 0;
    double SSD = 0.0;
    double variance = 0.0;
};

// What an analysis hands to the tables over loci and to the summaries. An index or P-value that
// the design does not have is 0.
struct amova_results {
    std::int32_t locus = 0;             // number of the locus from 0; 0 for whole haplotypes
    std::int32_t design_code = 0;       // result_code_of_design
    std::array<AmovaResultRow, 4> row;  // a to d
    AmovaResultRow total;
    double FST = 0.0, FSC = 0.0, FCT = 0.0, FIT = 0.0, FIS = 0.0;
    double FST_pvalue = 0.0, FSC_pvalue = 0.0, FCT_pvalue = 0.0, FIT_pvalue = 0.0, FIS_pvalue = 0.0;
    // Component of each permutation, in the order of the permutations: num_perm values for each
    // component that was tested, else none.
    std::vector<double> null_Va, null_Vb, null_Vc, null_Vd;
    // Per sample, in the order of the structure; empty when they were not asked for or the design has
    // none: FST is there for the samples of one group of haplotypes, FIS for individuals.
    std::vector<double> pop_Fst, pop_Fis, pop_Fis_pvalue;
};

class Amova {
public:
    // Thrown when the working arrays find no memory.
    class AmovaFatalError {};

    double SSDAG = 0.0;      // sum of squares among groups
    double SSDAP = 0.0;      // among samples (within groups)
    double SSDWP = 0.0;      // within samples; in the individual designs among individuals within samples
    double SSD_spare = 0.0;  // kept in the layout; unused
    double SSDWI = 0.0;      // within individuals
    double SSDT = 0.0;       // total: the sum of the rows of the design
    std::array<std::int32_t, 4> df{};  // degrees of freedom of the rows a, b, c, d of the table
    std::array<double, 4> MSD{};       // mean squares of the same rows
    double n = 0.0;                    // coefficients of the components in the mean squares
    double n_prime = 0.0;
    double n_second = 0.0;
    double Va = 0.0, Vb = 0.0, Vc = 0.0, Vd = 0.0;  // variance components of the rows
    double V_total = 0.0;                           // their sum; 1e-18 when that is exactly 0
    double FIS = 0.0, FIT = 0.0, FCT = 0.0, FSC = 0.0, FST = 0.0;
    double epsilon = kAmovaEpsilon;

    settings* sett = nullptr;        // not owned
    Structure* structure = nullptr;  // not owned
    Samples* samples = nullptr;      // not owned
    DistMat* dist = nullptr;         // not owned: squared distances between the matrix rows
    Haplo_DB* haplo_db = nullptr;    // not owned
    TAlleleDB* allele_db = nullptr;  // not owned
    Mantel* mantel = nullptr;        // not owned

    std::int32_t design = kDesignNone;  // an AmovaDesign
    std::int32_t individual_level = 0;  // copy of IncludeIndividualLevel
    std::int64_t num_perm = 0;          // NumPermutationsAMOVA; in the tests the adjusted count
    my_string time_string;              // when the analysis began
    double N_genes = 0.0;               // N: gene copies in all samples of the structure
    double N_units = 0.0;               // N, or the individuals N / 2 with the individual level
    std::vector<double> group_size;     // owned: gene copies of each group, G long
    std::vector<double> group_SSD;      // owned: SSD inside each group over its gene copies, G long
    double SSD_total = 0.0;             // sum of the stored cells of SSD_pops
    TriMat SSD_pops{0};                 // P rows: (a, a) SSD inside sample a, (a, b) between a and b,
                                        // by the position of the samples in all_pops
    TriMat SSD_groups{0};               // G rows: (g, g) SSD inside group g; nothing reads the other cells
    std::vector<std::vector<Population*>> group_pops;  // not owned: the samples of each group
    std::vector<Population*> all_pops;                 // not owned: P samples in the order of the structure,
                                                       // which the permutation of samples shuffles
    std::vector<int> haplo_index;      // owned: matrix row of each gene copy, N + P + 1 long, N used
    std::vector<double> ind_F;         // owned: statistic of each individual, N/2 long, or empty
    std::vector<double> ind_d;         // owned: distance between its two gene copies, N/2 long, or empty
    std::vector<double> pop_Fst;       // owned: indices of each sample, P long
    std::vector<double> pop_Fis;       // owned
    std::vector<double> pop_Fis_hits;  // owned: permutations that gave at least pop_Fis
    MY_TArrayAsVector<TPhenotype*> phen_vector{11, 100};  // entries not owned: see Load_Phen_Vector
    std::int32_t print_results = 0;  // 0: nothing is written; 1: tables, tests and citations
    std::int32_t reserved_flag = 0;
    amova_results* results = nullptr;  // not owned: receives the results; may be null

    // Runs the analysis that the settings ask for, and the pairwise comparisons. The matrix rows of
    // the haplotypes and the amova_id of the samples must stand.
    //   print_flag   see print_results
    //   record       receives the results; may be null
    // Writes: the result document of the settings, null distribution files, the permutation
    //         vectors of the samples, which are released at the end
    // Draws:  those of the tests of the design (amova_tests.h) and of CalcPairDist
    // Throws: AmovaFatalError, or ExceptionType after a report of the type Memory
    Amova(settings& computation, Structure* genetic_structure, Samples* all_samples, DistMat* distances,
          Haplo_DB* haplotypes, TAlleleDB* alleles, Mantel* mantel_test, int print_flag, int reserved,
          amova_results* record);
    // The same arguments and no work: for the parts of an analysis on their own.
    Amova() = default;
    ~Amova();
    Amova(const Amova&) = delete;
    Amova& operator=(const Amova&) = delete;

    // Sizes all arrays by the structure, tallies the samples in their observed arrangement.
    // Report: Memory 0, when there is no memory.
    void initialize();
    // Releases all arrays. Can be done twice.
    void clean();

    // --- Sums of squares (amova_sums.cpp), of the present tallies of the samples ---

    // SSD of each sample and of each pair, into SSD_pops and the samples.
    void compute_SSDP();
    // SSD_total from SSD_pops.
    void compute_total_SSD();
    // SSD of each sample anew; SSDWP = sum of SSD / n_i.
    void compute_SSDWP();
    // SSDAP = sum over groups of SSD_groups(g, g) / n_g less the SSD / n_i of its samples.
    void compute_SSDAP();
    // SSDAG = SSD_total / N less the sum over groups of SSD_groups(g, g) / n_g.
    void compute_SSDAG();
    // SSD_groups, group_size and group_SSD from SSD_pops, and SSDAG. The off-diagonal cells (g, h)
    // hold only what the last sample of group g has with group h.
    void compute_SSDG_SSDAG();
    // SSDWI, ind_d and the SSD_within_ind of each sample from haplo_index; of a sample with an odd
    // number of copies the last one is left out.
    void compute_SSDWI();
    // Sum of D over the pairs of compute_SSDWI, halved; nothing is written.
    double half_pair_sum() const;
    // Sum of the cells of SSD_pops over all pairs of samples of a group, each sample with itself
    // included: the SSD inside the group.
    double group_sum_of_squares(const std::vector<Population*>& group) const;
    // group_pops from all_pops, cut by the group sizes of the structure.
    void distribute_populations();

    // --- Designs, a file each. Result: 1; 0 after a report or when the work was stopped ---

    int AMOVA_G_P_H();
    int AMOVA_1G_P_H();
    int AMOVA_G_P_I();
    int AMOVA_1G_P_I();
    int AMOVA_1G_1P_I();
    int AMOVA_G_P_IH();
    int AMOVA_1G_P_IH();
    // Not available for recessive alleles: these do nothing. Result: 1
    int AMOVA_G_P_RIH();
    int AMOVA_1G_P_RIH();

    // Anchor of this analysis in the result document and an entry of the tree. Its name is the
    // title of the project without blanks, "_amova_" and the word.
    void print_amova_anchor(int level, settings& s, const my_string& label, const my_string& anchor);

    // Fills the record `results` with degrees of freedom, sums, components, indices and the
    // indices of the samples. Does nothing without a record.
    void set_amova_results();

    // --- Permutations (amova_permutations.cpp) ---
    //
    // Each shuffles from the top of a range down to a bound: position k swaps with a random r
    // below k. The first block is not drawn for: it takes what remains.

    // haplo_index as observed, from the work_list of the samples; all samples are tallied.
    void load_HaplotypeIndexVector();
    // Tallies the samples of all_pops by their stretches of haplo_index.
    void distribute_HaplotypeIndexVector();

    void PHAPAG();  // haplotypes among samples among groups
    void PHAPWG();  // haplotypes among samples within groups
    void PHAIWP();  // haplotypes among individuals within samples
    void PIAPAG();  // individuals among samples among groups
    void PIAPWG();  // individuals among samples within groups
    void PPAG();    // samples among groups, in all_pops

    // General forms: positions last down to stop swap with one in [first, k). Genes, individuals
    // (pairs of cells) and entries of phen_vector.
    void permute_genes(int last, int first, int stop);
    void permute_indiv(int last, int first, int stop);
    void permute_phenotypes(int last, int first, int stop);
    void PPAPAG();  // phenotypes among samples among groups, in phen_vector
    void PPAPWG();  // phenotypes among samples within groups, in phen_vector
    // phen_vector from the phenotypes of the samples.
    void Load_Phen_Vector();

    // --- Pairs of samples (pairwise_comparisons.cpp) ---

    // All comparisons of pairs of samples that the settings ask for, and their tables.
    void CalcPairDist();
    // Matrix rows of all gene copies of a, then of b, into out.
    void fill_bipop_vector(Population* a, Population* b, int* out);

private:
    bool design_runs() const;
    std::int32_t choose_design() const;
    int run_design();
    void run_pairwise();
    void list_samples();
    void place_sample(Population& sample);
    void allocate_arrays();
};

}  // namespace mnd
