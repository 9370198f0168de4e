// Lists the resolutions of a phenotype: the pairs of haplotypes that may lie behind it.
//
// A resolution is a binary number with one digit for each locus that can vary, the first such
// locus giving the lowest digit. The lists are in ascending order of these numbers, which
// decides the order of the haplotypes in the store, and with it every random start of an
// estimation.
//
// With known dominance the heterozygous loci vary, but for the first: a digit 1 exchanges the
// two alleles, and exchanging all of them would give the same pair. With recessive data (unless
// every locus is heterozygous) all heterozygous loci vary in this way, and so do the loci that
// show one dominant allele twice, where 1 puts the recessive allele into the second haplotype.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "model/allele_db.h"
#include "model/phenotypes.h"
#include "model/pop_haplotypes.h"

namespace mnd {

// The loci of a phenotype that vary among its resolutions.
struct VaryingLoci {
    struct Locus {
        long position;       // in both strings
        TAllele* recessive;  // not owned: takes the place of the second allele; null: exchange
    };
    std::vector<Locus> loci;      // ascending; loci[d] is digit d
    bool first_is_fixed = false;  // known dominance: the first heterozygous locus has no digit
    double occurrences = 1.0;     // of each number, if loci that do not vary had a digit too
};

// Positions at which both strings have an allele.
long shared_loci(TPhenotype const& phenotype);

// Whether homozygous loci vary too: recessive data, unless every locus is heterozygous.
//   phenotype   nb_het_loci is known
bool varies_homozygotes(TPhenotype const& phenotype, int recessive);

// What varies in a phenotype that has both strings.
//   alleles       the recessive allele is index 0 of its locus there
//   homozygotes   see varies_homozygotes
//   by_position   the locus of an allele is its hapl_pos, not its locus
VaryingLoci varying_loci(TPhenotype const& phenotype, TAlleleDB const* alleles, bool homozygotes,
                         bool by_position);

// Changes the digit of a locus to this value from its other one, in a pair of haplotypes.
void set_locus(VaryingLoci::Locus const& locus, bool value, TPopHaplotype& a, TPopHaplotype& b);

// The settings of some of the digits to which the list is limited.
struct KnownDigits {
    std::vector<std::size_t> digits;          // ascending
    std::vector<std::vector<bool>> settings;  // of these digits, the highest first; ascending, distinct
};

// No digit is limited.
inline KnownDigits every_setting() {
    return {{}, {{}}};
}

// Lists genotypes of one phenotype.
class GenotypeBuilder {
public:
    // The phenotype has both strings; it and db outlive the builder.
    //   haplotypes   that db may hold
    GenotypeBuilder(TPhenotype& phenotype, TPopHaploDB& db, VaryingLoci varying, int64_t haplotypes);

    // Appends to the phenotype's list the resolutions that agree with one of the known settings,
    // the first n of them, and inserts their haplotypes into db: the second before the first, with
    // the weight of their occurrences.
    //   room   genotypes that the list may hold
    // Result: false when the genotypes, or the haplotypes of db, are too many; nothing is done
    //         when that is certain beforehand. May throw std::bad_alloc.
    bool list(KnownDigits const& known, int64_t n, int64_t room);

private:
    bool fits(KnownDigits const& known, int64_t n, int64_t room) const;
    bool extend(std::size_t left, std::size_t known_left, std::size_t first, std::size_t last);
    bool add();
    void set(std::size_t digit, bool value);
    // Known dominance has no pair twice. Otherwise only pairs that hide nothing appear twice, the
    // second time with the highest exchange made.
    bool appears_twice() const { return !varying_.first_is_fixed && hidden_ == 0 && exchanges_ > 0; }

    TPhenotype& phenotype_;
    TPopHaploDB& db_;
    VaryingLoci varying_;
    std::size_t exchanges_ = 0;           // digits with exchange
    std::size_t top_exchange_ = 0;        // the highest of them
    TPopHaplotype a_;                     // first haplotype of the resolution in hand
    TPopHaplotype b_;                     // second
    long hidden_ = 0;                     // digits at 1 that hide a recessive allele
    bool top_exchanged_ = false;          // whether top_exchange_ is 1
    KnownDigits const* known_ = nullptr;  // not owned: of the list in hand
    int64_t wanted_ = 0;                  // resolutions still to be listed
    int64_t max_haplotypes_;              // that db_ may hold
    int64_t room_ = 0;                    // genotypes that the list may hold
    bool is_full_ = false;                // whether one was to be listed for which there is no room
};

// Empties the genotype list and fills it by `fill`, a function without argument that returns
// whether it succeeded. When not, or when memory runs out, the list is empty and error 114 comes
// from `source`.
template <class Fill>
bool list_anew(TPhenotype& phenotype, const char* source, Fill fill) {
    phenotype.kill_gen_list();
    try {
        if (fill()) return true;
    } catch (const std::bad_alloc&) {
        // Reported as what it is to the user: more resolutions than can be held.
    }
    phenotype.kill_gen_list();
    report(Error, source, kTooManyHeterozygousLoci);
    return false;
}

}  // namespace mnd
