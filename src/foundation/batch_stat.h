// Batches of a Monte Carlo run, whose spread gives the error of its P-value.
//
// The tests differ in how steps go to batches, in the batches that count so far and in the
// precision of their sums; each has its own loop and shares what stands here.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

namespace mnd {

// Division of a run into about as many batches as each has steps.
struct BatchPlan {
    std::int64_t batches = 0;    // whole part of the square root of the number asked for
    std::int64_t per_batch = 0;  // steps in each batch
    std::int64_t total = 0;      // batches x per_batch, a little more than asked for
};

// Plan for a number of steps asked for; all 0 when that is below 1. A total beyond the largest
// number is that number.
inline BatchPlan plan_batches(std::int64_t requested) {
    if (requested < 1) return {};
    BatchPlan plan;
    plan.batches = static_cast<std::int64_t>(std::sqrt(static_cast<double>(requested)));
    plan.per_batch = requested / plan.batches + 1;
    constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
    const bool fits = plan.per_batch <= kLargest / plan.batches;
    plan.total = fits ? plan.batches * plan.per_batch : kLargest;
    return plan;
}

// Standard deviation of the P-value p, from the hits h_i in m batches of n steps each:
//
//   sqrt( sum_i (h_i/n - p)^2 / (m (m - 1)) )
//
// and 0 for fewer than two batches. They need not be all those that p is made of. All is reckoned
// in the precision of p.
template <class Real, class Count>
Real batch_error(std::span<Count> hits, std::int64_t per_batch, Real p) {
    if (hits.size() < 2) return Real{0};
    const auto m = static_cast<Real>(hits.size());
    const auto n = static_cast<Real>(per_batch);
    Real sum = 0;
    for (const Count& of_batch : hits) {
        const Real deviation = static_cast<Real>(of_batch) / n - p;
        sum += deviation * deviation;
    }
    return std::sqrt(sum / (m * (m - 1)));
}

}  // namespace mnd
