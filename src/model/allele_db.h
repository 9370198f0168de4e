// The alleles of a project: each exists once, and is told from another by its address.
//
// Haplotypes and phenotypes hold pointers to the alleles of one TAlleleDB, so that two
// alleles are the same exactly when their pointers are equal. What points to an allele must
// be released before the database is destroyed.
#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string_view>
#include <vector>

#include "foundation/arrays.h"
#include "foundation/my_string.h"
#include "model/first_match_index.h"

namespace mnd {

// Index of the blank allele of a locus, in a project whose blanks have been made.
inline constexpr int kBlankIndex = 0;

// One allele; as a string it is its name, by default "UNDEF".
class TAllele : public my_string {
public:
    static int32_t numPop;    // slots of pop_freqs, the same in all alleles
    static int32_t numGroup;  // slots of group_freqs, the same in all alleles

    double freq = 0.0;     // weight from insertions; later the relative frequency in its locus
    int32_t locus = 0;     // index of the locus, as given at insertion
    int32_t hapl_pos = 0;  // position in the parent haplotype; set by TPopHaplotype::build_sub_haplotype
    int32_t selected = 1;  // 0: excluded from computation
    std::vector<double> pop_freqs;    // one slot per sample; empty until create_pop_freq_vector
    std::vector<double> group_freqs;  // one slot per group; empty until create_group_freq_vector
    double exp_freq = 0.0;            // frequency expected under linkage equilibrium, in EM
    double exp_freq_acc = 0.0;        // accumulator of exp_freq during an EM step
    // Scratch of EM under inbreeding: [0] accumulated count, [1] last estimate.
    std::array<double, 2> inbreeding_freqs{};

    TAllele();
    explicit TAllele(my_string const& name);
    TAllele(TAllele const& other);
    // Copies name, freq, selected, locus, exp_freq, both frequency vectors and inbreeding_freqs.
    // Kept on purpose: not hapl_pos, exp_freq_acc.
    // Test: TAllele.AssignmentLeavesHaplotypePositionAndAccumulator
    TAllele& operator=(TAllele const& other);

    const my_string& name() const { return *this; }
    // Whether the name is this one character, as with the missing-data mark.
    bool is_char(char c) const { return len == 1 && str[0] == c; }
};

// Order of allele lists: by name, ascending.
bool sorts_before(TAllele const& a, TAllele const& b);

// Prints the name.
std::ostream& operator<<(std::ostream& out, TAllele const& allele);

// The alleles of one locus in order of first appearance; an index never changes.
class TLocus : public MY_TIArrayAsVector<TAllele> {
public:
    static constexpr int kNumResults = 12;

    my_string name;           // label
    int32_t print_width = 0;  // column width, computed when the database is printed
    // Results of the locus-by-locus AMOVA, kept here to outlive it; the first two stay zero.
    std::array<double, kNumResults> amova_values{};

    TLocus();
    explicit TLocus(my_string const& locus_name);
    TLocus(TLocus const& other);
    // Deep: each allele is copied.
    TLocus& operator=(TLocus const& other);

    // The allele of this name (exact, case counts), or null.
    TAllele* find_allele_by_name(my_string const& allele_name) const;
    // Index of this very allele, or -1.
    int get_allele_index(TAllele* allele) const;
    // Whether the locus varies, apart from the blank at index 0 and from the allele whose name
    // is the one character c: false below 3 alleles, at 3 only without c, from 4 on true.
    bool is_polymorph(char c) const;

    // Index of the first allele of this name, or -1.
    // Cost: a scan up to 16 alleles, hashed above
    int find_index(std::string_view allele_name) const;
    // Index of the allele of this name after adding weight to its freq; a new one is appended
    // with freq = weight and locus = locus_index.
    int insert(std::string_view allele_name, double weight, int locus_index);
    // Deletes all alleles. Single ones are never taken out: their indices would change.
    void Flush();
    bool Destroy(int const& i) = delete;
    bool Detach(int const& i) = delete;

private:
    mutable FirstMatchIndex index_;  // by name; used above 16 alleles
};

// All loci of a project, or a copy of them made for one analysis. Owns loci and alleles.
class TAlleleDB : public MY_TIArrayAsVector<TLocus> {
public:
    int32_t blanks_done = 0;  // set by Population::make_all_blanks: the blanks stand at index 0
    TAllele not_found;        // sentinel, named "Allele not found"

    TAlleleDB();
    // An array of capacity n + 1.
    explicit TAlleleDB(int const& n);
    TAlleleDB(TAlleleDB const& other);
    // Deep copy of all loci.
    TAlleleDB& operator=(TAlleleDB const& other);

    // Insertion: returns the allele's index in its locus; the weight is added to freq, or is the
    // freq of a new allele. A locus index not below the number of loci appends one locus, called
    // "Locus " and the index, and goes on in the last locus; the allele still records the index
    // asked for. A negative index inserts nothing and gives -1.
    int32_t InsertAllPos(int const& locus, my_string const& allele_name, double freq);
    // The same; the last argument has no effect.
    int32_t InsertAllPos(int const& locus, my_string const& allele_name, double& freq, int const&);
    // By the name of the locus, which is appended when there is none.
    int32_t InsertAllPos(my_string const& locus_name, my_string const& allele_name, double freq);
    // The same as the first, without a my_string at hand; returns the allele itself, or null for a
    // negative index. What reads whole lines of data calls this.
    TAllele* insert_allele(int locus, std::string_view allele_name, double freq);

    // Lookup; null when there is none, nothing is reported. Names compare exactly.
    TAllele* operator()(int const& locus, int const& allele) const;
    TAllele* operator()(int const& locus, my_string const& allele_name) const;
    TAllele* operator()(my_string const& locus_name, int const& allele) const;
    TAllele* operator()(my_string const& locus_name, my_string const& allele_name) const;
    // The first locus of this name, or null.
    TLocus* find_locus(my_string const& locus_name) const;

    // Gives every allele n zeroed slots of pop_freqs (group_freqs) and sets TAllele::numPop
    // (numGroup) to n.
    void create_pop_freq_vector(int const& n);
    void create_group_freq_vector(int const& n);
    // Release the slots of all alleles.
    void flush_pop_freq_vector();
    void flush_group_freq_vector();
    void reset_all_pop_freqs();
    // Zeroes exp_freq and exp_freq_acc of every allele.
    void reset_exp_freq();
    // Random exp_freq, summing to 1 in each locus.
    // Draws: one per allele, in order of loci and alleles
    void assign_rand_exp_freq();
    // One step of the allele frequencies of EM under inbreeding:
    //   new = (inbreeding_freqs[0] - exp_freq_acc) / F
    //   F     inbreeding coefficient; not positive: returns -1.0 and changes nothing
    // Writes:  exp_freq = inbreeding_freqs[1] = new; exp_freq_acc = 0
    // Returns: sum over alleles of |new - old inbreeding_freqs[1]|
    double update_all_freq_with_inbreeding(double const& F);
    // Deletes all loci and alleles and clears blanks_done.
    void destroy();

private:
    TLocus& locus_for_insertion(int index);
};

// A table with one row per allele index and one column per locus: the name, right-aligned in
// the locus's print_width, the integer part of 100 freq in width 4, "%" and "|".
// Writes: print_width of each locus (longest name there plus 1)
std::ostream& operator<<(std::ostream& out, TAlleleDB& db);

}  // namespace mnd
