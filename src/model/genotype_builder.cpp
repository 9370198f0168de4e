#include "model/genotype_builder.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace mnd {

namespace {

// Beyond this many heterozygous loci the genotypes cannot be listed.
constexpr int kMaxHetLoci = 32;
// A number of more digits than this is not searched for: a level of recursion each.
constexpr std::size_t kMaxDigits = 10000;
// Powers of two beyond this one are all the same here: too many.
constexpr int64_t kTooMany = int64_t{1} << 60;

// a 2^n, at most kTooMany.
int64_t doubled(int64_t a, std::size_t n) {
    for (; n > 0 && a < kTooMany; --n)
        a *= 2;
    return std::min(a, kTooMany);
}

}  // namespace

long shared_loci(TPhenotype const& phenotype) {
    return std::min(phenotype.pseudo_hapl[0]->alleles.count, phenotype.pseudo_hapl[1]->alleles.count);
}

bool varies_homozygotes(TPhenotype const& phenotype, int recessive) {
    return recessive != 0 && phenotype.nb_het_loci != shared_loci(phenotype);
}

VaryingLoci varying_loci(TPhenotype const& phenotype, TAlleleDB const* alleles, bool homozygotes,
                         bool by_position) {
    VaryingLoci varying;
    varying.first_is_fixed = !homozygotes;
    bool first = true;
    for (long l = 0; l < shared_loci(phenotype); ++l) {
        TAllele* own = phenotype.pseudo_hapl[0]->allele(l);
        if (own != phenotype.pseudo_hapl[1]->allele(l)) {
            if (homozygotes || !first) varying.loci.push_back({l, nullptr});
            first = false;
        } else if (homozygotes) {
            TAllele* recessive = (*alleles)(by_position ? own->hapl_pos : own->locus, kBlankIndex);
            if (recessive != nullptr && recessive != own) {
                varying.loci.push_back({l, recessive});
            } else {
                varying.occurrences *= 2.0;  // the digit of this locus changes nothing
            }
        }
    }
    return varying;
}

void set_locus(VaryingLoci::Locus const& locus, bool value, TPopHaplotype& a, TPopHaplotype& b) {
    TAllele*& in_a = a.alleles.data[locus.position];
    TAllele*& in_b = b.alleles.data[locus.position];
    if (locus.recessive == nullptr) {
        std::swap(in_a, in_b);
    } else {
        in_b = value ? locus.recessive : in_a;
    }
}

GenotypeBuilder::GenotypeBuilder(TPhenotype& phenotype, TPopHaploDB& db, VaryingLoci varying,
                                 int64_t haplotypes)
    : phenotype_(phenotype),
      db_(db),
      varying_(std::move(varying)),
      a_(*phenotype.pseudo_hapl[0]),
      b_(*phenotype.pseudo_hapl[1]),
      max_haplotypes_(haplotypes) {
    for (std::size_t d = 0; d < varying_.loci.size(); ++d) {
        if (varying_.loci[d].recessive != nullptr) continue;
        ++exchanges_;
        top_exchange_ = d;
    }
}

bool GenotypeBuilder::list(KnownDigits const& known, int64_t n, int64_t room) {
    if (!fits(known, n, room)) return false;
    known_ = &known;
    wanted_ = n;
    room_ = room;
    is_full_ = false;
    extend(varying_.loci.size(), known.digits.size(), 0, known.settings.size());
    return !is_full_;
}

// Whether the least number of genotypes and haplotypes that the list can have finds room.
bool GenotypeBuilder::fits(KnownDigits const& known, int64_t n, int64_t room) const {
    const std::size_t digits = varying_.loci.size();
    if (digits > kMaxDigits) return false;
    const auto settings = static_cast<int64_t>(known.settings.size());
    const int64_t numbers = std::min(n, doubled(settings, digits - known.digits.size()));
    // A number of recessive data may repeat another, and any of its haplotypes.
    const int64_t genotypes = varying_.first_is_fixed ? numbers : numbers / 2;
    const int64_t haplotypes = varying_.first_is_fixed && numbers > 1 ? 2 * numbers : genotypes;
    return genotypes <= room && haplotypes <= max_haplotypes_;
}

// Goes through all settings of the digits below `left`, 0 before 1; those above are set.
//   known_left    known digits below left
//   first, last   range of the known settings that agree with the digits set
// Result: false once nothing more is to be listed.
bool GenotypeBuilder::extend(std::size_t left, std::size_t known_left, std::size_t first, std::size_t last) {
    if (first == last) return true;
    if (left == 0) return add();
    const std::size_t digit = left - 1;
    std::size_t zeros_end = last;
    std::size_t ones_begin = first;
    if (known_left > 0 && known_->digits[known_left - 1] == digit) {
        const std::size_t place = known_->digits.size() - known_left;
        const auto begin = known_->settings.begin();
        const auto is_zero = [place](std::vector<bool> const& setting) { return !setting[place]; };
        const auto split =
            std::partition_point(begin + static_cast<long>(first), begin + static_cast<long>(last), is_zero);
        zeros_end = ones_begin = static_cast<std::size_t>(split - begin);
        --known_left;
    }
    if (!extend(digit, known_left, first, zeros_end)) return false;
    if (ones_begin == last) return true;
    set(digit, true);
    const bool goes_on = extend(digit, known_left, ones_begin, last);
    set(digit, false);
    return goes_on;
}

void GenotypeBuilder::set(std::size_t digit, bool value) {
    set_locus(varying_.loci[digit], value, a_, b_);
    if (varying_.loci[digit].recessive != nullptr) {
        hidden_ += value ? 1 : -1;
    } else if (digit == top_exchange_) {
        top_exchanged_ = value;
    }
}

// The second haplotype before the first: the order in the database decides the random starts.
bool GenotypeBuilder::add() {
    if (wanted_ == 0) return false;
    if (appears_twice() && top_exchanged_) return true;
    if (phenotype_.genotypes.count >= room_ || db_.count > max_haplotypes_) {
        is_full_ = true;
        return false;
    }
    const double weight = appears_twice() ? 2.0 * varying_.occurrences : varying_.occurrences;
    TPopHaplotype* in_b = db_.insert(b_, weight);
    TPopHaplotype* in_a = db_.insert(a_, weight);
    auto genotype = std::make_unique<TGenotype>(in_a, in_b);
    phenotype_.genotypes.Add(genotype.get());
    genotype.release();
    ++phenotype_.nb_genotypes;
    --wanted_;
    return true;
}

// ---- TPhenotype

bool TPhenotype::build_genotypes(TPopHaploDB& db, TAlleleDB* alleles, int const& recessive, bool by_position,
                                 int64_t room) {
    count_hetero_loci();
    fully_homozygous = recessive == 0 && nb_het_loci == 0 ? 1 : 0;
    if (pseudo_hapl[0] == nullptr || pseudo_hapl[1] == nullptr) return true;
    const bool homozygotes = varies_homozygotes(*this, recessive);
    const bool is_within_limit =
        nb_het_loci <= kMaxHetLoci && (!homozygotes || shared_loci(*this) <= kMaxHetLoci);
    // A number left from before is kept, but for what would only repeat genotypes.
    const int64_t n = !homozygotes && nb_genotypes > 0 ? nb_genotypes : kTooMany;
    return list_anew(*this, "TPhenotype::build_genotypes()", [&] {
        if (!is_within_limit) return false;
        GenotypeBuilder builder(*this, db, varying_loci(*this, alleles, homozygotes, by_position),
                                max_haplotypes(shared_loci(*this)));
        return builder.list(every_setting(), n, room);
    });
}

}  // namespace mnd
