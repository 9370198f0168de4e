// Individuals of unknown gametic phase, and the pairs of haplotypes that may lie behind them.
#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <memory>

#include "foundation/arrays.h"
#include "foundation/data_type.h"
#include "foundation/my_string.h"
#include "model/allele_db.h"
#include "model/pop_haplotypes.h"

namespace mnd {

using TDataType = DataTypeCode;

// One possible resolution of a phenotype.
class TGenotype {
public:
    TPopHaplotype* hapl_1 = nullptr;  // not owned: entry of the estimation's TPopHaploDB
    TPopHaplotype* hapl_2 = nullptr;  // not owned: likewise
    double prob = 0.0;                // probability from the current frequencies
    double rel_prob = 0.0;            // prob over the phenotype's total

    TGenotype() = default;
    TGenotype(TPopHaplotype* a, TPopHaplotype* b) : hapl_1(a), hapl_2(b) {}
};

// Descending prob.
inline bool sorts_before(TGenotype const& a, TGenotype const& b) {
    return a.prob > b.prob;
}

// Both haplotypes under each other, each in a field of width 13 with two blanks and a line end.
std::ostream& operator<<(std::ostream& out, TGenotype const& genotype);

// An individual, or a class of identical individuals; as a string it is the identifier.
class TPhenotype : public my_string {
public:
    double freq = 0.0;         // number of individuals
    double real_freq = 0.0;    // relative frequency in the sample
    double phen_prob = 0.0;    // sum of prob over the genotypes
    int64_t nb_genotypes = 0;  // genotypes in the list
    // owned: the two strings of alleles, in the order read; null until built
    std::array<std::unique_ptr<TPopHaplotype>, 2> pseudo_hapl;
    std::array<my_string, 2> text;            // the two texts read
    MY_TIArrayAsVector<TGenotype> genotypes;  // owned: the possible resolutions
    int32_t redundant = 0;                    // mark of check_pheno_redundancy
    int32_t nb_het_loci = 0;                  // heterozygous loci
    int32_t fully_homozygous = 0;             // 1: the single genotype is twice one haplotype

    TPhenotype();
    TPhenotype(my_string const& id, double const& f);
    // Copies of a and b unless null; identifier the decimal id, freq 1.
    TPhenotype(TPopHaplotype const* a, TPopHaplotype const* b, int const& id);
    TPhenotype(TPhenotype const& other);
    // Deep; the genotypes of the copy point to the same haplotypes.
    TPhenotype& operator=(TPhenotype const& other);

    const my_string& label() const { return *this; }
    void set_label(my_string const& identifier) { my_string::operator=(identifier); }
    // Alleles of the first pseudo-haplotype, 0 without one.
    int num_loci() const;

    // Replaces slot k (0 or 1) by a copy of h; nothing for another k.
    void set_pseudo_hapl(TPopHaplotype const& h, int const& k);
    // Reads text[k] into slot k, inserting each allele into db with weight real_freq / 2. This is
    // the work of build_pseudo_hapl0 (sep 0: one character per locus) and of build_pseudo_hapl1
    // (tokens; empty ones are skipped and do not advance the locus).
    void read_pseudo_hapl(int k, TAlleleDB& db, char sep);
    // nb_het_loci = positions where the two pointers differ.
    void count_hetero_loci();
    // Adds 1 to a little-endian bit vector: clears leading ones, at most n, sets the next entry.
    //   bits   at least n + 1 entries
    static void binary_inc(int* bits, int const& n);
    // At each locus the same unordered pair of alleles; without pseudo-haplotypes, equal freq.
    bool operator==(TPhenotype const& other) const;
    bool operator!=(TPhenotype const& other) const { return !(*this == other); }
    // Whether every locus of both strings holds the one-character allele c; false for no locus.
    bool is_all_missing(char c) const;

    // Expands into the genotypes and inserts their haplotypes into db with weight 1 an occurrence.
    //   recessive     not 0: a homozygote may hide the recessive allele (index 0 of its locus)
    //   by_position   the locus of an allele is its hapl_pos, not its locus
    // Error 114 and no genotype above 32 heterozygous loci, or 32 loci in recessive mode.
    // Cost:    doubles with each heterozygous locus
    void build_genotypes(TPopHaploDB& db, TAlleleDB* alleles, int const& recessive, bool by_position);
    // prob of each genotype: f^2 for a full homozygote, else 2 f1 f2; phen_prob their sum;
    // rel_prob the share, left as it is when the sum is 0.
    void update_gen_prob();
    // Adds real_freq rel_prob to freq of both haplotypes of each genotype.
    void update_hapl_freq_in_genotypes();
    // Probability under linkage equilibrium from freq of the alleles. Warning 115 for an allele
    // that is not selected, whose locus is left out of the product but for the doubling.
    double link_equil_pheno_prob() const;
    // Empties the genotype list and its count.
    void kill_gen_list();
    // Flushes the alleles of both strings, clears identifier, texts and genotypes.
    void delete_pheno();
    // A two-locus phenotype drawn from cumulative distributions over the alleles of two loci.
    //   nb           individuals in the sample to be: real_freq = 1 / nb
    //   k            number of the individual
    //   cum1, cum2   cumulative frequencies, n1 and n2 entries, the last 1
    //   db1, db2     one-locus haplotypes that hold the alleles, in the order of cum1 and cum2
    //   alleles      accepted, no effect
    //   a1, a2       alleles that, drawn first at their locus, give way to the second draw
    // Draws: 4
    void build_resam_pheno(int nb, int k, double const* cum1, int n1, double const* cum2, int n2,
                           TPopHaploDB const& db1, TPopHaploDB const& db2, long& seed, TAlleleDB* alleles,
                           TAllele* a1, TAllele* a2);
    // As build_sub_haplotype and copy_restricted_hapl, for both strings.
    void build_sub_phenotype(int const* mask, TPhenotype const& src);
    void copy_restricted_pheno(int const* list, TPhenotype const& src);
    // Reader of the older syntax; defined with the samples section.
    bool read_data(std::istream& in, TDataType type, char separator);

private:
    void copy_scalars(TPhenotype const& src);
    template <class Build>
    void take_part(TPhenotype const& src, Build build);
};

// The phenotypes of one sample. Owns them.
class TPhenDB : public MY_TIArrayAsVector<TPhenotype> {
public:
    long cursor = 0;              // place of an iteration
    double ln_likelihood = 0.0;   // of the last calc_ln_likelihood
    double identity_coeff = 0.0;  // of the last compute_IF_coeff
    double inbreeding = 0.0;      // last F of EM under inbreeding

    TPhenDB();
    // n individuals drawn from the haplotypes of db in proportion to freq.
    TPhenDB(int const& n, TPopHaploDB const& db);
    TPhenDB(TPhenDB const& other);
    // Deep copy of the phenotypes and of the scalars.
    TPhenDB& operator=(TPhenDB const& other);

    // Alleles in the first pseudo-haplotype of the first phenotype, or 0.
    int num_loci() const;
    // Sum of the integer parts of freq, at most the largest int.
    int nb_individuals() const;
    // real_freq = freq / sum of freq; 0 when the sum is not above 0.
    void convert_freq_to_real();
    void build_all_genotypes(TPopHaploDB& db, TAlleleDB* alleles, int const& recessive);
    // Empties the genotype list of every phenotype.
    void kill_gen_lists();
    // update_gen_prob of every phenotype.
    void update_genotypes();
    // Expectation step: freq of the haplotypes of db anew from all genotypes.
    void update_hapl_freq(TPopHaploDB& db);
    // Stores and returns sum freq ln(phen_prob); -3.4028234663852886e+38 as soon as one is <= 0.
    double calc_ln_likelihood();
    // The same with link_equil_pheno_prob; stores nothing.
    double link_equil_ln_likelihood() const;
    // ln(N!) - sum ln(k!), k the integer freq of each phenotype, N their sum.
    double calc_ln_multinom() const;
    // Identity of the haplotypes estimated (freq of db) with those counted from the strings:
    // 1 - sum |difference| / 2. Stored in identity_coeff.  Writes: visited of entries of db
    double compute_IF_coeff(TPopHaploDB* db);
    // Turns classes into individuals of freq 1; copies go to the end. Error 120 when the number
    // of entries is not the number of individuals.
    void explode_base();
    // Merges equal phenotypes into the first of them, adding freq and real_freq.
    // Cost: O(phenotypes x loci)
    void check_pheno_redundancy();
    // Becomes a sample of nb two-locus individuals whose alleles are drawn independently at both
    // loci, in proportion to the freq of the one-locus haplotypes of db1 and db2. The second form
    // replaces the alleles a1 and a2, see TPhenotype::build_resam_pheno.
    // Draws: 4 an individual
    void resample(int nb, TPopHaploDB const& db1, TPopHaploDB const& db2, long& seed, TAlleleDB* alleles);
    void resample(int nb, TPopHaploDB const& db1, TPopHaploDB const& db2, long& seed, TAlleleDB* alleles,
                  TAllele* a1, TAllele* a2);
    // Shuffles the alleles of the selected loci among all gene copies.
    //   loci   [0] number of loci, 1 or 2 (else error 118 and the work goes on)
    // Draws: one a gene copy and locus. Error 107 for a bad index, 119 for a changed number.
    void permute_alleles(int const* loci, long& seed);
    // Likelihood-ratio statistic of Hardy-Weinberg proportions of one-locus phenotypes.
    //   c      name of the missing allele; phenotypes that hold it are left out
    //   df     k (k - 1) / 2 for k alleles seen
    // Error 118 and -1000.0 when a phenotype does not hold exactly one allele.
    double hw_chi_stat(TAlleleDB* alleles, int, char c, int& df) const;
    // Becomes the part of src on the loci of the mask (indexed by locus) or of the list
    // (list[0] positions, list[1..]).
    void build_sub_PhenDB(int const* mask, TPhenDB const& src);
    void create_temp_PhenDB(int const* list, TPhenDB const& src);
    // Degrees of freedom of the likelihood-ratio test of association of two loci:
    // (k1 - 1)(k2 - 1), with the alleles seen at the first two loci.
    int get_num_of_deg_freed() const;
    // Deletes the phenotypes.
    void destroy();
};

}  // namespace mnd
