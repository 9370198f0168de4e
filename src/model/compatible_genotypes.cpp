#include "model/genotype_builder.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace mnd {

namespace {

// The part of a phenotype on the loci estimated before, and which of its resolutions have both
// haplotypes in the store of that estimation.
class PreviousPart {
public:
    PreviousPart(TPhenotype const& phenotype, VaryingLoci const& varying, int const* prev_loci,
                 TPopHaploDB const& store, double threshold)
        : store_(store), threshold_(threshold) {
        std::size_t digit = 0;
        for (long l = 0; l < shared_loci(phenotype); ++l) {
            const bool has_digit = digit < varying.loci.size() && varying.loci[digit].position == l;
            TAllele* a = phenotype.pseudo_hapl[0]->allele(l);
            if (prev_loci[a->locus] != 0) {
                if (has_digit) {
                    known_.digits.push_back(digit);
                    loci_.push_back({a_.alleles.count, varying.loci[digit].recessive});
                }
                a_.alleles.Add(a);
                b_.alleles.Add(phenotype.pseudo_hapl[1]->allele(l));
            }
            if (has_digit) ++digit;
        }
    }

    // Takes the shorter way to the settings: through all of them, or through the store.
    KnownDigits compatible() {
        const std::size_t digits = known_.digits.size();
        if (digits < 62 && int64_t{1} << digits <= store_.count) {
            try_all_settings();
        } else {
            try_all_haplotypes();
        }
        return std::move(known_);
    }

private:
    // Counts from 0 to the highest number and makes the loci follow, two digits a step on average.
    void try_all_settings() {
        const std::size_t digits = known_.digits.size();
        std::vector<bool> setting(digits, false);
        const auto set = [&](std::size_t digit, bool value) {
            setting[digits - 1 - digit] = value;
            set_locus(loci_[digit], value, a_, b_);
        };
        for (std::size_t digit = 0;; digit = 0) {
            if (is_estimated(a_) && is_estimated(b_)) known_.settings.push_back(setting);
            for (; digit < digits && setting[digits - 1 - digit]; ++digit)
                set(digit, false);
            if (digit == digits) return;
            set(digit, true);
        }
    }

    // Each haplotype of the store that can be the second one of a resolution names its setting.
    void try_all_haplotypes() {
        std::vector<bool> setting(known_.digits.size());
        for (TPopHaplotype const* second : store_) {
            if (second->freq > threshold_ && read_setting(*second, setting)) keep_if_estimated(setting);
        }
        std::sort(known_.settings.begin(), known_.settings.end());
        known_.settings.erase(std::unique(known_.settings.begin(), known_.settings.end()),
                              known_.settings.end());
    }

    // The setting that makes this haplotype the second of the pair; false if none does.
    bool read_setting(TPopHaplotype const& second, std::vector<bool>& setting) const {
        if (second.alleles.count != b_.alleles.count) return false;
        std::size_t digit = 0;
        for (long p = 0; p < b_.alleles.count; ++p) {
            const bool has_digit = digit < loci_.size() && loci_[digit].position == p;
            const bool is_one = second.allele(p) != b_.allele(p);
            if (is_one && (!has_digit || second.allele(p) != allele_of_one(loci_[digit]))) return false;
            if (has_digit) setting[setting.size() - ++digit] = is_one;
        }
        return true;
    }

    // What stands in the second haplotype when the digit of the locus is 1.
    TAllele* allele_of_one(VaryingLoci::Locus const& locus) const {
        return locus.recessive != nullptr ? locus.recessive : a_.allele(locus.position);
    }

    void keep_if_estimated(std::vector<bool> const& setting) {
        put(setting, true);
        if (is_estimated(a_) && is_estimated(b_)) known_.settings.push_back(setting);
        put(setting, false);
    }

    // Makes or takes back what the digits of the setting that are 1 stand for.
    void put(std::vector<bool> const& setting, bool value) {
        for (std::size_t digit = 0; digit < loci_.size(); ++digit) {
            if (setting[setting.size() - 1 - digit]) set_locus(loci_[digit], value, a_, b_);
        }
    }

    bool is_estimated(TPopHaplotype const& part) const {
        const TPopHaplotype* found = store_.find(part);
        return found != nullptr && found->freq > threshold_;
    }

    TPopHaploDB const& store_;
    double threshold_;
    TPopHaplotype a_;                       // part of the first string
    TPopHaplotype b_;                       // part of the second
    KnownDigits known_;                     // digits of the part, ascending, and the settings found
    std::vector<VaryingLoci::Locus> loci_;  // of these digits; positions in the part
};

}  // namespace

bool TPhenotype::build_compatible_genotypes(TPopHaploDB& prev_haplo, int* prev_loci, TPopHaploDB& haplo,
                                            TAlleleDB* alleles, int const& mode, double const& threshold,
                                            int64_t room) {
    count_hetero_loci();
    fully_homozygous = mode == 0 && nb_het_loci == 0 ? 1 : 0;
    if (pseudo_hapl[0] == nullptr || pseudo_hapl[1] == nullptr) return true;
    return list_anew(*this, "TPhenotype::build_compatible_genotypes()", [&] {
        const VaryingLoci varying = varying_loci(*this, alleles, varies_homozygotes(*this, mode), false);
        const KnownDigits known = PreviousPart(*this, varying, prev_loci, prev_haplo, threshold).compatible();
        GenotypeBuilder builder(*this, haplo, varying, max_haplotypes(shared_loci(*this)));
        return builder.list(known, std::numeric_limits<int64_t>::max(), room);
    });
}

}  // namespace mnd
