#include "within/allele_distances.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace mnd {
namespace {

// Loci at which not all haplotypes have the same entry.
std::vector<std::size_t> varying_loci(const AlleleDifferences::Table& table) {
    std::vector<std::size_t> loci;
    if (table.empty()) return loci;
    for (std::size_t locus = 0; locus < table.front().size(); ++locus) {
        const auto same = [&](const auto& row) { return row[locus] == table.front()[locus]; };
        if (!std::all_of(table.begin(), table.end(), same)) loci.push_back(locus);
    }
    return loci;
}

// Whether sums of that many squares are exact in double precision, whatever their order.
bool squares_are_exact(const std::vector<double>& sizes, std::size_t loci) {
    constexpr double kLargestSize = 1048576.0;  // 2^20: a squared difference is at most 2^42
    constexpr std::size_t kMostLoci = 2048;     // and 2^11 of them stay within 2^53
    const auto small_integer = [](double x) { return std::fabs(x) <= kLargestSize && std::trunc(x) == x; };
    return loci <= kMostLoci && std::all_of(sizes.begin(), sizes.end(), small_integer);
}

}  // namespace

AlleleDifferences::AlleleDifferences(const Table& identities) {
    const std::vector<std::size_t> loci = varying_loci(identities);
    loci_ = loci.size();
    identities_.reserve(identities.size() * loci_);
    for (const auto& row : identities) {
        for (const std::size_t locus : loci)
            identities_.push_back(row[locus]);
    }
}

int AlleleDifferences::count(int i, int j) const {
    const std::int32_t* first = identities_.data() + loci_ * static_cast<std::size_t>(i);
    const std::int32_t* second = identities_.data() + loci_ * static_cast<std::size_t>(j);
    std::int32_t differences = 0;
    for (std::size_t locus = 0; locus < loci_; ++locus) {
        const std::int32_t a = first[locus];
        const std::int32_t b = second[locus];
        differences += static_cast<std::int32_t>(a != b) & static_cast<std::int32_t>(a != kMissing) &
                       static_cast<std::int32_t>(b != kMissing);
    }
    return differences;
}

RepeatDistances::RepeatDistances(const Table& alleles) {
    if (!alleles.empty()) loci_ = alleles.front().size();
    for (const auto& row : alleles) {
        for (const RepeatAllele& allele : row) {
            sizes_.push_back(allele.missing ? 0.0 : allele.size);
            known_second_.push_back(allele.missing ? 0.0 : 1.0);
            known_first_.push_back(allele.missing || allele.size == kUnknownSize ? 0.0 : 1.0);
        }
    }
    any_order_ = squares_are_exact(sizes_, loci_);
}

// Sum of term(x) over the differences x of known sizes. Exact sums run in four lanes, others
// in the order of the loci; adding the 0 of a missing allele changes neither.
template <class Term>
bool RepeatDistances::sum(int i, int j, Term term, double& distance) const {
    const std::size_t begin_i = loci_ * static_cast<std::size_t>(i);
    const std::size_t begin_j = loci_ * static_cast<std::size_t>(j);
    const double* a = sizes_.data() + begin_i;
    const double* b = sizes_.data() + begin_j;
    const double* known_a = known_first_.data() + begin_i;
    const double* known_b = known_second_.data() + begin_j;
    std::size_t locus = 0;
    double lanes[4] = {0.0, 0.0, 0.0, 0.0};
    if (any_order_) {
        for (; locus + 4 <= loci_; locus += 4) {
            for (std::size_t k = 0; k < 4; ++k) {
                const std::size_t l = locus + k;
                lanes[k] += term(a[l] - b[l]) * (known_a[l] * known_b[l]);
            }
        }
    }
    double total = (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]);
    for (; locus < loci_; ++locus) {
        if (known_a[locus] * known_b[locus] == 0.0) continue;
        const double x = a[locus] - b[locus];
        if (std::isinf(x)) return false;
        total += term(x);
    }
    distance = total;
    return true;
}

bool RepeatDistances::number_of_differences(int i, int j, double& distance) const {
    return sum(
        i, j, [](double x) { return std::fabs(x) > 0.0 ? 1.0 : 0.0; }, distance);
}

bool RepeatDistances::sum_of_squares(int i, int j, double& distance) const {
    return sum(
        i, j, [](double x) { return x * x; }, distance);
}

}  // namespace mnd
