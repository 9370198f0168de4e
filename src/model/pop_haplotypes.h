// Working haplotypes of an estimation: bare vectors of alleles with real-valued frequencies.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "foundation/arrays.h"
#include "foundation/my_string.h"
#include "model/allele_db.h"
#include "model/first_match_index.h"

namespace mnd {

// One working haplotype; as a string it is its label, by default "UNKNOWN".
class TPopHaplotype : public my_string {
public:
    double freq = 0.0;                    // current frequency or count
    double prev_freq = 0.0;               // freq at the previous EM step
    double sum_sq_freq = 0.0;             // sum of squares over replicates; after calc_sd the s.d.
    double sum_freq = 0.0;                // sum over replicates
    MY_TIArrayAsVector<TAllele> alleles;  // in locus order; the alleles are not owned
    char separator = ' ';                 // printed after each allele when not 0
    double ld_d = 0.0;                    // deviation from linkage equilibrium, D
    double ld_d_prime = 0.0;              // D over its bound
    int32_t homo_flag = 0;                // not 0: assign_rand_init_freq gives the weight 1
    double homo_freq = 0.0;               // part of freq from homozygotes, in EM under inbreeding
    int32_t homo_count = 0;               // homozygous occurrences
    char visited = 0;                     // mark of TPhenDB::compute_IF_coeff
    int32_t rank = -1;                    // number in the printed table; negative when not listed there

    TPopHaplotype();
    explicit TPopHaplotype(char const& sep);
    TPopHaplotype(TPopHaplotype const& other);
    // Copies all fields; a Memory report when the alleles find no room.
    TPopHaplotype& operator=(TPopHaplotype const& other);

    const my_string& label() const { return *this; }
    void set_label(my_string const& text) { my_string::operator=(text); }
    int num_loci() const { return static_cast<int>(alleles.count); }
    // The allele at a position that exists; no check, for inner loops.
    TAllele* allele(long i) const { return alleles.data[i]; }

    // Same length and the same allele at each position.
    bool operator==(TPopHaplotype const& other) const;
    bool operator!=(TPopHaplotype const& other) const { return !(*this == other); }
    // By allele names, position by position; the first that differs decides, equal gives false.
    // A haplotype that is the beginning of the other is not smaller.
    bool operator<(TPopHaplotype const& other) const;

    // Becomes the two-locus haplotype a, b: label the decimal id, separator blank, all frequencies
    // and both ld_ fields 0.
    void build_sampled_haplo(int id, TAllele* a, TAllele* b);
    // Becomes the part of src on the loci whose entry in mask (indexed by locus) is not 0.
    // Writes: hapl_pos of each allele taken, its position in src (the shared allele changes)
    void build_sub_haplotype(int const* mask, TPopHaplotype const& src);
    // Becomes the part of src at the positions list[1..list[0]], in that order; positions that
    // src lacks are passed over.
    void copy_restricted_hapl(int const* list, TPopHaplotype const& src);

private:
    void copy_frequency_fields(TPopHaplotype const& src);
};

// Order of sorted arrays and of the printed table. Nothing sorts before a haplotype without loci.
inline bool sorts_before(TPopHaplotype const& a, TPopHaplotype const& b) {
    return a < b;
}

// Each allele, followed by the separator if it is not 0.
std::ostream& operator<<(std::ostream& out, TPopHaplotype const& haplotype);

// Argument of shrink.
struct ShrinkArg {
    int n;      // positions looked at
    int* mask;  // not owned: 0 takes the position out
};

// Takes the positions i < n with mask[i] = 0 out of the haplotype; arg is a ShrinkArg*.
void shrink(TPopHaplotype& haplotype, void* arg);

// Hash of the allele pointers; equal haplotypes have equal hashes.
std::size_t hash_alleles(TPopHaplotype const& haplotype);

// Frequencies at a random start of an estimation: the weights k u + 1, or 1 where is_fixed is not 0,
// over their sum.
//   is_fixed   per haplotype
// Writes: freq, resized to is_fixed
// Draws:  one per haplotype that is not fixed
void draw_start_frequencies(std::vector<double>& freq, std::vector<char> const& is_fixed, int k);

// The haplotypes of one estimation, in order of insertion. Owns them.
//
// find and insert are hashed and give the first match. Whoever changes the alleles of an entry
// from outside, or takes entries out other than by the operations below, calls
// content_changed() before the next of them.
class TPopHaploDB : public MY_TIArrayAsVector<TPopHaplotype> {
public:
    long cursor = 0;                           // place of an iteration
    std::unique_ptr<int32_t[]> poly_mask;      // owned: per locus of the full data, 1 = kept by compact
    int32_t poly_mask_size = 0;                // entries of poly_mask
    std::unique_ptr<TPopHaplotype> reference;  // owned: one allele for every locus of the full data

    TPopHaploDB();
    TPopHaploDB(TPopHaploDB const& other);
    // Deep copy of entries, reference and poly_mask.
    TPopHaploDB& operator=(TPopHaploDB const& other);

    // The first equal entry, or null.
    TPopHaplotype* find(TPopHaplotype const& haplotype) const;
    // Adds f to the freq of the equal entry, or appends a copy with freq = f; returns the entry.
    TPopHaplotype* insert(TPopHaplotype const& haplotype, double const& f);
    // Says that alleles of entries, or the list itself, were changed from outside.
    void content_changed() const;

    // The first entry at which the running sum of freq exceeds r, or null. Linear; for many
    // draws from unchanged frequencies use HaplotypeSampler.
    TPopHaplotype* select_haplotype(double const& r) const;
    void reset_freq();
    void reset_homo_count();
    // Whether the sum of |freq - prev_freq| is below eps.  Writes: prev_freq = freq
    bool convergence(double const& eps);
    // Random start: freq = prev_freq = the frequency of draw_start_frequencies, which is fixed for
    // an entry with homo_flag set.
    void assign_rand_init_freq(int const& k);
    // Per entry, whether homo_flag is set.
    std::vector<char> fixed_starts() const;
    // ld_d = freq - product of the marginals of the alleles; ld_d_prime = ld_d over its bound at
    // the first two positions, 0 when the bound is 1e-06 or less.
    // Cost:   O(entries x loci)
    // Source: Lewontin 1964, Genetics 49:49-67
    void update_lk_equil();
    // freq = product of the exp_freq of the alleles; 1 without alleles.
    void comp_link_equil_hapl_freq();
    // Adds freq and its square of the equal entry of other to sum_freq and sum_sq_freq, for own
    // entries with freq above thr.
    void sums_hapl_frequencies(TPopHaploDB& other, double thr);
    // sum_sq_freq = s.d. over n replicates; nothing for n <= 1.
    // Kept on purpose: an entry with freq 0 takes the variance of the entry before.
    // Test: TPopHaploDB.CalcSdCarriesTheVarianceOver
    void calc_sd(int const& n);
    // Sum of homo_count / ((1 - freq) F + freq) over entries with homo_count not 0.
    double sum_homoz_inbreeding(double const& F) const;
    // Sum of ln(k!), k the integer part of freq.
    double calc_hapl_lk_dis() const;

    // Shuffles the alleles among the entries, locus by locus, for the first *n_loci positions.
    // Draws: entries x loci. Error 107 when an index leaves the list; the work then stops.
    void permute(int* n_loci);
    // Merges equal entries, from the end; adds freq.
    // Kept on purpose: after a merge one pair is passed over, so a duplicate can survive.
    // Test: TPopHaploDB.CheckRedundancyCanLeaveTwoOfThree
    void check_redundancy();
    // Takes out the entries with freq below thr.
    void cleanDB(double& thr);
    // Turns counts into entries of freq 1; copies go to the end. Warning 106 for a freq that is
    // no count.
    void explode_base();
    // Makes poly_mask and reference from the loci of db; c is the name of the missing allele.
    // Nothing when no locus has two alleles.
    void build_reference_haplotype(TAlleleDB* db, char const& c);
    // Keeps in each entry only the loci with two or more alleles.
    void compact(TAlleleDB* db, char const& c);
    // A reference of n[0] positions that all hold one default allele.
    void init_ref_hapl(int const* n);
    // Table of the estimated frequencies for the result document; labels and alleles are escaped.
    //   use_compact   not 0: rows show all loci of the reference, when there is one
    //   thr           only entries with freq above it get a row
    // Writes: rank of each entry: 1, 2, ... for a row; -1, -2, ... without one
    void print(std::ostream& out, int use_compact, double thr);

    // Deletes the entries.
    void flush_haplotypes();
    // Deletes the entries, releases poly_mask and reference.
    void empty();
    void Flush();
    bool Destroy(int const& i);
    bool Detach(int const& i);

private:
    void cover() const;
    TPopHaplotype* find(TPopHaplotype const& haplotype, std::size_t hash) const;

    mutable FirstMatchIndex index_;  // by alleles
};

// Per entry: the alleles, two blanks, freq with 5 decimals and a line end; then an empty line.
std::ostream& operator<<(std::ostream& out, TPopHaploDB const& db);

// The alleles of a haplotype, each followed by the separator if it is not 0; not escaped.
//   compacted   the database of the haplotype, when its entries hold the variable loci only: the
//               alleles of its reference then stand at the loci taken out. Null when they hold all
std::string allele_text(TPopHaplotype const& haplotype, TPopHaploDB const* compacted);

// Draws haplotypes in proportion to freq from a database that does not change meanwhile.
// The same answers as TPopHaploDB::select_haplotype, in O(log entries).
class HaplotypeSampler {
public:
    explicit HaplotypeSampler(TPopHaploDB const& db);
    // The first entry at which the running sum of freq exceeds r, or null.
    TPopHaplotype* select(double r) const;

private:
    TPopHaploDB const* db_;     // not owned
    std::vector<double> sums_;  // running sums of freq, in entry order
};

// A frequency with its standard deviation, and the same as counts.
class AHaplFreq {
public:
    double freq = 0.0;
    double sd = 0.0;
    double mean_count = 0.0;
    double sd_count = 0.0;

    // Kept on purpose: adds freq and sd alone, in which callers gather a sum and a sum of squares.
    // Test: AHaplFreq.PlusAssignAddsTwoFieldsOnly
    AHaplFreq& operator+=(AHaplFreq const& other);
    // From the sum (freq) and the sum of squares (sd) of n counts in samples of this size to
    // means and standard deviations. A size of 0 zeroes all; n below 2 gives no deviation.
    void calc_mean_freq(int const& n, int const& size);
};

// Descending freq.
inline bool sorts_before(AHaplFreq const& a, AHaplFreq const& b) {
    return a.freq > b.freq;
}

// freq and sd in 12.7, mean_count in 16.4, sd_count in 12.4, fixed and right-aligned; a line end.
std::ostream& operator<<(std::ostream& out, AHaplFreq const& record);

}  // namespace mnd
