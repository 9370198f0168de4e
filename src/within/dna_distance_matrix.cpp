#include "within/dna_distance_matrix.h"

#include <cstddef>

namespace mnd {
namespace {

constexpr std::size_t kMemorySize = 1U << 13U;  // places; a quarter of a megabyte

// Tajima and Nei's seven counts seldom come again, and sums need no memory.
bool remembers(int method) {
    return !is_weighted_method(method) && method != kTajimaNei;
}

std::size_t place_of(const std::array<std::int32_t, 4>& counts) {
    std::uint64_t h = 0;
    for (const std::int32_t count : counts) {
        h = (h ^ static_cast<std::uint32_t>(count)) * 0x9E3779B97F4A7C15U;
        h ^= h >> 29U;
    }
    return (h >> 20U) & (kMemorySize - 1);
}

bool same_counts(const std::array<std::int32_t, 4>& a, const std::array<std::int32_t, 4>& b) {
    return ((a[0] ^ b[0]) | (a[1] ^ b[1]) | (a[2] ^ b[2]) | (a[3] ^ b[3])) == 0;
}

SitePairCounter::Rule rule_of(const DnaDistanceParameters& p) {
    return [method = p.method, weights = p.weights, missing = p.missing](char a, char b) {
        return dna_site_counters(method, weights, missing, a, b);
    };
}

}  // namespace

bool needs_base_composition(int method) {
    return method == kTajimaNei || method == kTamura || method == kTamuraNei;
}

DnaDistances::DnaDistances(const DnaDistanceParameters& parameters,
                           const std::vector<std::string_view>& sequences, const std::vector<int>& sites)
    : parameters_(parameters),
      class_weights_(class_weights(parameters.weights)),
      weighted_(is_weighted_method(parameters.method)),
      exact_(sums_are_exact(class_weights_, static_cast<int>(sites.size()))),
      counter_(sequences, sites, parameters.missing, num_dna_counters(parameters.method), rule_of(parameters),
               weighted_ && !exact_ ? SitePairCounter::Order::kKept : SitePairCounter::Order::kAny),
      memory_(remembers(parameters.method) ? kMemorySize : 0) {}

WeightedSums DnaDistances::sums(int i, int j) const {
    if (exact_) return weighted_sums(class_weights_, counter_.count(i, j), counter_.num_sites());
    return ordered_weighted_sums(class_weights_, counter_, i, j);
}

DnaFault DnaDistances::from_counts(const SiteCounts& counts, DnaPair& pair) const {
    return distance_from_counts(parameters_.method, counts, parameters_.weights, parameters_.composition,
                                parameters_.gamma_a, pair);
}

DnaFault DnaDistances::compare(int i, int j, DnaPair& pair) const {
    if (!weighted_) return from_counts(counter_.count(i, j), pair);
    distance_from_sums(parameters_.method, sums(i, j), pair);
    return DnaFault::kNone;
}

DnaFault DnaDistances::distance(int i, int j, DnaPair& pair) {
    if (memory_.empty()) return compare(i, j, pair);
    const SiteCounts counts = counter_.count(i, j);
    const std::array<std::int32_t, 4> key = {counts[0], counts[1], counts[2], counts[3]};
    Remembered& place = memory_[place_of(key)];
    if (!same_counts(place.counts, key)) {
        const DnaFault fault = from_counts(counts, pair);
        if (fault != DnaFault::kNone) return fault;
        place = {key, pair.distance, pair.distance_var};
    }
    pair.distance = place.distance;
    pair.distance_var = place.distance_var;
    return DnaFault::kNone;
}

DnaFault compare_texts(const DnaDistanceParameters& p, const std::vector<int>& sites, std::string_view s1,
                       std::string_view s2, DnaPair& pair) {
    if (is_weighted_method(p.method)) {
        distance_from_sums(p.method, weighted_sums_of_texts(p.weights, p.missing, sites, s1, s2), pair);
        return DnaFault::kNone;
    }
    const SiteCounts counts = dna_counts_of_texts(p.method, p.weights, p.missing, sites, s1, s2);
    return distance_from_counts(p.method, counts, p.weights, p.composition, p.gamma_a, pair);
}

}  // namespace mnd
