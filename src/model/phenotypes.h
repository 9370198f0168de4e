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

    // Both haplotypes under each other, alleles escaped; behind the first one prob and rel_prob.
    void print_genot(std::ostream& out) const;
    // One row of the table of genotype frequencies: the ranks of both haplotypes, prob, rel_prob,
    // the alleles of both.
    //   compacted   as in TPhenDB::printGenotypeFrequencies
    void printGenotFreqs(std::ostream& out, TPopHaploDB const* compacted = nullptr) const;
};

// Descending prob.
inline bool sorts_before(TGenotype const& a, TGenotype const& b) {
    return a.prob > b.prob;
}

// Genotypes that one estimation may list. One takes some 60 bytes, in all 1 GB.
inline constexpr int64_t kMaxGenotypes = int64_t{1} << 24;
// Haplotypes of so many loci that the store of an estimation may hold: what 2 GB hold. The
// resolutions of one individual with 22 heterozygous loci just find room.
constexpr int64_t max_haplotypes(int64_t loci) {
    constexpr int64_t kBytes = int64_t{1} << 31;
    constexpr int64_t kBytesWithoutLoci = 320;  // an entry with its label and its places in the index
    return kBytes / (kBytesWithoutLoci + 8 * loci);
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

    // Expands into the genotypes and inserts their haplotypes into db with weight 1 an occurrence:
    // all the pairs of haplotypes, and only those, that give this phenotype.
    //   recessive     not 0: a homozygote may hide the recessive allele (index 0 of its locus)
    //   by_position   the locus of an allele is its hapl_pos, not its locus
    //   room          genotypes that may still be listed in this estimation
    // Result:  false after error 114, with an empty list: above 32 heterozygous loci (32 loci in
    //          recessive mode), or more genotypes than room, or haplotypes than max_haplotypes, or
    //          than there is memory for. The estimation cannot go on then.
    // Cost:    doubles with each heterozygous locus
    bool build_genotypes(TPopHaploDB& db, TAlleleDB* alleles, int const& recessive, bool by_position,
                         int64_t room = kMaxGenotypes);
    // The same, but only pairs of haplotypes whose parts on the loci estimated before both stand in
    // the store of that estimation: in the order in which the whole list would hold them.
    //   prev_haplo   haplotypes of the loci estimated before
    //   prev_loci    per locus of the project, not 0 for those
    //   haplo        gains the haplotypes, weight 1 an occurrence
    //   mode         as recessive above; the locus of an allele is its locus
    //   threshold    both parts have a freq above it
    // Result:  as above, but for the limit of 32 loci; an empty list is no failure.
    // Cost:    linear in the genotypes kept and in the smaller of prev_haplo and the number of
    //          resolutions of the part
    bool build_compatible_genotypes(TPopHaploDB& prev_haplo, int* prev_loci, TPopHaploDB& haplo,
                                    TAlleleDB* alleles, int const& mode, double const& threshold,
                                    int64_t room = kMaxGenotypes);
    // prob of each genotype: f^2 for a full homozygote, else 2 f1 f2; phen_prob their sum;
    // rel_prob the share, left as it is when the sum is 0.
    void update_gen_prob();
    // prob and rel_prob from the current freq of the haplotypes, under an inbreeding coefficient F:
    // p F + (1 - F) p^2 for twice the same haplotype, 2 (1 - F) p1 p2 for two; phen_prob their sum.
    // All rel_prob are 0 when it is not above 0.
    void update_posteriors(double F);
    // Adds real_freq rel_prob to freq of both haplotypes of each genotype.
    void update_hapl_freq_in_genotypes();
    // Probability under linkage equilibrium from freq of the alleles. Warning 115 for an allele
    // that is not selected, whose locus is left out of the product but for the doubling.
    double link_equil_pheno_prob() const;
    // Empties the genotype list and its count.
    void kill_gen_list();
    // Identifier, freq, number of genotypes and phen_prob, then each genotype (print_genot).
    void print_detailed_genotypes(std::ostream& out) const;
    // Rows of the table of genotype frequencies, see TPhenDB::printGenotypeFrequencies.
    void printGenotypeFreqs(std::ostream& out, TPopHaploDB const* compacted = nullptr) const;
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
    // n individuals drawn from the haplotypes of db in proportion to freq. Error 116 when none is
    // drawn; the individual is drawn anew, until there are 100 such errors.
    // Throws: std::bad_alloc, before anything is drawn, for more individuals than 4 GB hold
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
    // build_genotypes for every phenotype, kMaxGenotypes for all together. False at the first that
    // fails; all lists are then empty, and the estimation of the sample ends.
    bool build_all_genotypes(TPopHaploDB& db, TAlleleDB* alleles, int const& recessive);
    // The same with build_compatible_genotypes.
    bool build_all_compatible_genotypes(TPopHaploDB& prev_haplo, int* prev_loci, TPopHaploDB& haplo,
                                        TAlleleDB* alleles, int const& mode, double const& threshold);
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
    // Throws: std::bad_alloc, with nothing changed, for more individuals than 4 GB hold
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
    // Error 118, -1000.0 and df 0 when a phenotype does not hold exactly one allele.
    double hw_chi_stat(TAlleleDB* alleles, int, char c, int& df) const;
    // Becomes the part of src on the loci of the mask (indexed by locus) or of the list
    // (list[0] positions, list[1..]).
    void build_sub_PhenDB(int const* mask, TPhenDB const& src);
    void create_temp_PhenDB(int const* list, TPhenDB const& src);
    // Table of the estimated genotypes for the result document, to follow the table of haplotypes
    // (TPopHaploDB::print), whose ranks are the ids here. Per phenotype its identifier, count and
    // probability, then its resolutions in descending order of probability: ids, frequency
    // expected of the genotype, posterior probability, alleles of both haplotypes. Resolutions
    // with a posterior below half a millionth are not listed but counted in one line.
    //   F           inbreeding coefficient of the estimation, 0 without
    //   compacted   the haplotype store, when its entries hold the variable loci only; null when
    //               they hold all
    // Writes: prob, rel_prob and phen_prob, by update_posteriors(F) at the current frequencies
    void printGenotypeFrequencies(std::ostream& out, double F = 0.0, TPopHaploDB const* compacted = nullptr);
    // print_detailed_genotypes of every phenotype, with the prob and rel_prob that stand there.
    void print_all_genotypes(std::ostream& out) const;
    // Percentage of the individuals with two or more resolutions whose most probable one is the
    // pair of strings as read, and a line that says so. It means something when the strings were
    // written by gamete, as simulated data are. Resolutions that tie share the individual.
    //   compacted   as above
    // Result: 0 to 100; 100 when every individual has one resolution only
    double percent_correct_gametic_phase(std::ostream& out, TPopHaploDB const* compacted = nullptr) const;
    // Degrees of freedom of the likelihood-ratio test of association of two loci:
    // (k1 - 1)(k2 - 1), with the alleles seen at the first two loci.
    int get_num_of_deg_freed() const;
    // Deletes the phenotypes.
    void destroy();
};

}  // namespace mnd
