#include "within/dna_site_counts.h"

#include <bit>
#include <cmath>
#include <cstddef>

#include "model/nucleotides.h"

namespace mnd {
namespace {

constexpr char kGap = '-';

constexpr unsigned grow(int counter) {
    return 1U << static_cast<unsigned>(counter);
}

// A pair of characters with the class of their difference.
struct Site {
    char a, b, missing;
    NucleotideClass difference;

    Site(char first, char second, char missing_mark)
        : a(first),
          b(second),
          missing(missing_mark),
          difference(first == missing_mark || second == missing_mark ? kNoSubstitution
                                                                     : compare_nucleotides(first, second)) {}

    bool same() const { return a == b; }
    bool same_and_present() const { return a == b && a != missing && a != kGap; }
    // Pairs of no class count unless data are wanting on both sides, by this criterion.
    bool counts_with_one_side() const { return (a != missing && b != kGap) || (b != missing && a != kGap); }
    bool counts_with_both_sides() const { return a != missing && b != missing && a != kGap && b != kGap; }
};

unsigned weighted_site(const Site& site) {
    if (site.same()) return site.a == site.missing ? grow(kWeightedBothMissing) : 0U;
    switch (site.difference) {
        case kTransition:
            return grow(kWeightedTransitions);
        case kTransversion:
            return grow(kWeightedTransversions);
        case kDeletion:
            return grow(kWeightedDeletions);
        case kUndeterminedSubstitution:
            return grow(kWeightedUndetermined);
        default:
            return 0U;
    }
}

unsigned jukes_cantor_site(const Site& site, const DnaWeights& weights) {
    if (site.same()) return site.same_and_present() ? grow(kJukesCantorCompared) : 0U;
    double weight = 0.0;
    switch (site.difference) {
        case kTransition:
        case kUndeterminedSubstitution:
            weight = weights.transition;
            break;
        case kTransversion:
            weight = weights.transversion;
            break;
        default:
            return site.counts_with_one_side() ? grow(kJukesCantorCompared) : 0U;
    }
    return grow(kJukesCantorCompared) | (weight > 0.0 ? grow(kJukesCantorDifferences) : 0U);
}

// Kimura's counts; Tamura's ask for both characters of a site without a class.
unsigned two_class_site(const Site& site, const DnaWeights& weights, bool both_sides) {
    if (site.same()) return site.same_and_present() ? grow(kTwoClassCompared) : 0U;
    switch (site.difference) {
        case kTransition:
            return grow(kTwoClassCompared) | (weights.transition > 0.0 ? grow(kTwoClassTransitions) : 0U);
        case kTransversion:
            return grow(kTwoClassCompared) | (weights.transversion > 0.0 ? grow(kTwoClassTransversions) : 0U);
        case kUndeterminedSubstitution:
            return grow(kTwoClassCompared);
        default:
            break;
    }
    const bool counts = both_sides ? site.counts_with_both_sides() : site.counts_with_one_side();
    return counts ? grow(kTwoClassCompared) : 0U;
}

bool is_pair_of_bases(const Site& site, int i, int j) {
    return i >= 0 && j >= 0 && site.a != site.missing && site.b != site.missing;
}

unsigned tajima_nei_site(const Site& site) {
    if (site.same()) return site.same_and_present() ? grow(kTajimaNeiCompared) : 0U;
    int i = base_index(site.a);
    int j = base_index(site.b);
    if (!is_pair_of_bases(site, i, j)) return 0U;
    if (i < j) std::swap(i, j);
    return grow(kTajimaNeiCompared) | grow(kTajimaNeiPairs + i * (i - 1) / 2 + j);
}

unsigned tamura_nei_site(const Site& site, const DnaWeights& weights) {
    if (site.same()) return site.same_and_present() ? grow(kTamuraNeiCompared) : 0U;
    const int i = base_index(site.a);
    const int j = base_index(site.b);
    if (!is_pair_of_bases(site, i, j)) return 0U;
    int counter = kTamuraNeiTransversions;
    double weight = weights.transversion;
    if (i / 2 == j / 2) {
        counter = i / 2 == 0 ? kTamuraNeiPyrimidines : kTamuraNeiPurines;
        weight = weights.transition;
    }
    return grow(kTamuraNeiCompared) | (weight > 0.0 ? grow(counter) : 0U);
}

char character_at(std::string_view text, int site, char missing) {
    const auto position = static_cast<std::size_t>(site);
    return position < text.size() ? text[position] : missing;
}

// Bits of a number without those of its significand: equal for numbers of one binade.
std::uint64_t binade(double x) {
    return std::bit_cast<std::uint64_t>(x) >> 52U;
}

// add_ones for the sums that leave their binade.
double add_ones_in_steps(double x, int times) {
    while (times > 0 && x < 1.0) {
        x += 1.0;
        --times;
    }
    while (times > 0 && std::isfinite(x)) {
        int exponent = 0;
        std::frexp(x, &exponent);
        const double steps = std::ceil(std::ldexp(1.0, exponent) - x);
        const int taken = steps < times ? static_cast<int>(steps) : times;
        x += taken;
        times -= taken;
    }
    return x;
}

// Adds 1.0 to x, `times` over, with the rounding of each single addition: within one binade
// the sum is exact, and the step into the next one rounds as the jump to it does.
double add_ones(double x, int times) {
    const double sum = x + times;
    return x >= 1.0 && binade(sum) == binade(x) ? sum : add_ones_in_steps(x, times);
}

struct MethodText {
    const char* name;
    const char* label;
};

constexpr MethodText kMethodTexts[] = {
    {"Pairwise difference", "#Diff"},      {"Jukes and Cantor", "JC"},   {"Kimura 2P", "K2P"},
    {"Proportion of difference", "%Diff"}, {"Tajima and Nei", "TajNei"}, {"Tamura", "Tam"},
    {"Tamura and Nei", "TamNei"},
};
constexpr MethodText kOtherMethod = {"DIFF", "#Diff"};

const MethodText& method_text(int method) {
    return method >= kPairwiseDifference && method <= kTamuraNei ? kMethodTexts[method] : kOtherMethod;
}

}  // namespace

const char* dna_distance_name(int method) {
    return method_text(method).name;
}

const char* dna_distance_label(int method) {
    return method_text(method).label;
}

int base_index(char c) {
    switch (c) {
        case 'C':
            return kBaseC;
        case 'T':
            return kBaseT;
        case 'A':
            return kBaseA;
        case 'G':
            return kBaseG;
        default:
            return -1;
    }
}

int num_dna_counters(int method) {
    switch (method) {
        case kJukesCantor:
            return kNumJukesCantorCounters;
        case kKimuraTwoParameters:
        case kTamura:
            return kNumTwoClassCounters;
        case kTajimaNei:
            return kNumTajimaNeiCounters;
        case kTamuraNei:
            return kNumTamuraNeiCounters;
        default:
            return kNumWeightedCounters;
    }
}

unsigned dna_site_counters(int method, const DnaWeights& weights, char missing, char a, char b) {
    const Site site(a, b, missing);
    switch (method) {
        case kJukesCantor:
            return jukes_cantor_site(site, weights);
        case kKimuraTwoParameters:
            return two_class_site(site, weights, false);
        case kTamura:
            return two_class_site(site, weights, true);
        case kTajimaNei:
            return tajima_nei_site(site);
        case kTamuraNei:
            return tamura_nei_site(site, weights);
        default:
            return weighted_site(site);
    }
}

ClassWeights class_weights(const DnaWeights& weights) {
    const auto of_class = [](double weight, double WeightedSums::*kind) {
        ClassWeight result;
        if (weight > 0.0) result = {weight, weight, kind};
        return result;
    };
    ClassWeights result;
    result[kWeightedTransitions] = of_class(weights.transition, &WeightedSums::transitions);
    result[kWeightedTransversions] = of_class(weights.transversion, &WeightedSums::transversions);
    result[kWeightedDeletions] = of_class(weights.deletion, &WeightedSums::deletions);
    ClassWeight& undetermined = result[kWeightedUndetermined];
    if (weights.transition > 0.0) {
        // Kept on purpose: a transversion weight of 0 or less is taken as it is.
        // Test: DnaDistances.UndeterminedSubstitutionsTakeTheSmallerWeight
        undetermined =
            weights.transversion < weights.transition
                ? ClassWeight{weights.transversion, weights.transversion, &WeightedSums::transversions}
                : ClassWeight{weights.transition, weights.transition, &WeightedSums::transitions};
    } else if (weights.transversion > 0.0) {
        undetermined.compared = weights.transversion;
    }
    return result;
}

bool sums_are_exact(const ClassWeights& weights, int num_sites) {
    constexpr double kFraction = 65536.0;  // weights are multiples of its inverse,
    constexpr double kLargest = 65536.0;   // and not larger than this: 53 bits hold any sum
    constexpr int kMostSites = 1 << 20;
    if (num_sites > kMostSites) return false;
    for (const ClassWeight& w : weights) {
        if (!(std::fabs(w.compared) <= kLargest)) return false;
        if (std::trunc(w.compared * kFraction) != w.compared * kFraction) return false;
    }
    return true;
}

WeightedSums weighted_sums(const ClassWeights& weights, const SiteCounts& counts, int num_sites) {
    WeightedSums sums;
    int plain = num_sites - counts[kWeightedBothMissing];
    for (std::size_t c = 0; c < weights.size(); ++c) {
        const double sites = counts[c];
        plain -= counts[c];
        sums.compared += sites * weights[c].compared;
        sums.differences += sites * weights[c].difference;
        sums.*(weights[c].kind) += sites * weights[c].difference;
    }
    sums.compared += plain;
    return sums;
}

WeightedSums ordered_weighted_sums(const ClassWeights& weights, const SitePairCounter& counter, int i,
                                   int j) {
    WeightedSums sums;
    int plain = 0;  // sites of weight 1 since the last addition
    for (int w = 0; w < counter.num_words(); ++w) {
        const std::uint64_t transitions = counter.site_mask(i, j, kWeightedTransitions, w);
        const std::uint64_t transversions = counter.site_mask(i, j, kWeightedTransversions, w);
        const std::uint64_t deletions = counter.site_mask(i, j, kWeightedDeletions, w);
        const std::uint64_t undetermined = counter.site_mask(i, j, kWeightedUndetermined, w);
        std::uint64_t classed = transitions | transversions | deletions | undetermined;
        const int left = counter.num_sites() - 64 * w;
        const std::uint64_t all = left >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << left) - 1;
        const std::uint64_t ones = all & ~classed & ~counter.site_mask(i, j, kWeightedBothMissing, w);
        // The number of the class of a site, in two bits.
        const std::uint64_t low = transversions | undetermined;
        const std::uint64_t high = deletions | undetermined;
        std::uint64_t done = 0;  // sites before the last one of a class
        for (; classed != 0; classed &= classed - 1) {
            const int site = std::countr_zero(classed);
            const std::uint64_t before = (std::uint64_t{1} << site) - 1;
            plain += std::popcount(ones & before & ~done);
            done = before;
            sums.compared = add_ones(sums.compared, plain);
            plain = 0;
            weights[((low >> site) & 1U) | (((high >> site) & 1U) << 1U)].add_to(sums);
        }
        plain += std::popcount(ones & ~done);
    }
    sums.compared = add_ones(sums.compared, plain);
    return sums;
}

WeightedSums weighted_sums_of_texts(const DnaWeights& weights, char missing, const std::vector<int>& sites,
                                    std::string_view s1, std::string_view s2) {
    const ClassWeights by_class = class_weights(weights);
    WeightedSums sums;
    for (const int site : sites) {
        const char a = character_at(s1, site, missing);
        const char b = character_at(s2, site, missing);
        const unsigned grown = weighted_site(Site(a, b, missing));
        if (grown == grow(kWeightedBothMissing)) continue;
        if (grown == 0U) {
            sums.compared += 1.0;
        } else {
            by_class[static_cast<std::size_t>(std::countr_zero(grown))].add_to(sums);
        }
    }
    return sums;
}

SiteCounts dna_counts_of_texts(int method, const DnaWeights& weights, char missing,
                               const std::vector<int>& sites, std::string_view s1, std::string_view s2) {
    SiteCounts counts{};
    for (const int site : sites) {
        unsigned grown = dna_site_counters(method, weights, missing, character_at(s1, site, missing),
                                           character_at(s2, site, missing));
        for (; grown != 0U; grown &= grown - 1U)
            ++counts[static_cast<std::size_t>(std::countr_zero(grown))];
    }
    return counts;
}

}  // namespace mnd
