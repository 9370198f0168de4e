// The Markov chain over genotype tables of the exact test of Hardy-Weinberg proportions.
//
// A step takes two genotypes of the table apart and pairs their four alleles anew. The chain
// keeps the logarithm of the probability of the present table over that of the first one, so
// that no normalising constant is needed.
//
// Source: Guo and Thompson 1992, Biometrics 48:361-372 (the chain); Levene 1949, Ann. Math.
//         Stat. 20:91-94 (the probability of a table)
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "foundation/count_table.h"

namespace mnd {

// A table counts as no more probable than the first one up to this log ratio, which makes room
// for the rounding of the sum of log ratios.
inline constexpr long double kEquiprobableLogRatio = 1e-06L;

// Probability of the table that replaces genotypes (i1, i2) and (i3, i4) by (i1, i4) and (i2, i3),
// over that of the table as it is; 0 when there are no such two genotypes.
//   table    n x n, the cells i <= j in use
//   i1..i4   0 to n - 1; i3 is not i1, i4 is not i2
double genotype_swap_ratio(const CountTable& table, int i1, int i2, int i3, int i4);

// One chain on a table, which it changes: in each step four indices i1, i2, i3, i4 are drawn, the
// last two anew while they equal i1 and i2, then a uniform number, also where nothing can be
// replaced. Below the ratio of genotype_swap_ratio the replacement is made.
class GenotypeChain {
public:
    // n x n, n at least 2. not owned: outlives the chain
    explicit GenotypeChain(CountTable& table) : table_(table) {}

    // All runs return false when an index was out of range, which only a stream seeded out of range
    // can cause; the chain ended there, and the caller reports it.

    // Steps that are not looked at.
    // Draws: 5 a step, and one more for each index drawn anew
    bool run(std::int64_t steps);
    // A step for each entry of hits, which grows by one when the table is then no more probable
    // than the first one.
    bool run(std::span<std::int64_t> hits);
    // Steps; hits grows by the number of those after which the table is no more probable than the
    // first one.
    bool run(std::int64_t steps, std::int64_t& hits);

    // ln of the probability of the present table over that of the first one.
    long double log_ratio() const { return log_ratio_; }
    // The ratio of the last step that was made; 1 when the chain stayed.
    double last_ratio() const { return last_ratio_; }

private:
    CountTable& table_;
    long double log_ratio_ = 0.0L;
    double last_ratio_ = 1.0;

    // hits moves on by `stride` entries a step.
    bool walk(std::int64_t steps, std::int64_t* hits, std::ptrdiff_t stride);
};

}  // namespace mnd
