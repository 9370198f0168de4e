// Batches of a Monte Carlo run, whose spread gives the error of its P-value.
//
// The tests differ in how steps go to batches, in the batches that count so far and in the
// precision of their sums; each has its own loop and shares what stands here.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

namespace mnd {

// Division of a run into about as many batches as each has steps.
struct BatchPlan {
    std::int64_t batches = 0;    // whole part of the square root of the number asked for
    std::int64_t per_batch = 0;  // steps in each batch

    // A little more than asked for.
    std::int64_t total() const { return batches * per_batch; }
};

// Plan for a number of steps asked for; all 0 when that is below 1.
inline BatchPlan plan_batches(std::int64_t requested) {
    if (requested < 1) return {};
    BatchPlan plan;
    plan.batches = static_cast<std::int64_t>(std::sqrt(static_cast<double>(requested)));
    plan.per_batch = requested / plan.batches + 1;
    return plan;
}

// Standard deviation of the P-value p, from the shares of hits s_i in m batches:
//
//   sqrt( sum_i (s_i - p)^2 / (m (m - 1)) )
//
// and 0 for fewer than two. The shares need not be all those that p is made of.
template <class Real>
Real batch_error(std::span<const Real> shares, Real p) {
    const auto m = static_cast<Real>(shares.size());
    if (shares.size() < 2) return Real{0};
    Real sum = 0;
    for (const Real share : shares)
        sum += (share - p) * (share - p);
    return std::sqrt(sum / (m * (m - 1)));
}

}  // namespace mnd
