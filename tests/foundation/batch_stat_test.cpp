#include "foundation/batch_stat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <span>
#include <vector>

namespace {

using mnd::batch_error;
using mnd::BatchPlan;
using mnd::plan_batches;

TEST(BatchPlan, HasAboutAsManyBatchesAsStepsInEach) {
    const struct {
        std::int64_t requested, batches, per_batch, total;
    } cases[] = {{1, 1, 2, 2},
                 {3, 1, 4, 4},
                 {4, 2, 3, 6},
                 {8, 2, 5, 10},
                 {9, 3, 4, 12},
                 {1000, 31, 33, 1023},
                 {1000000, 1000, 1001, 1001000},
                 {9223372030000000000, 3037000498, 3037000500, 9223372030926249000},
                 // 2^63 - 1 is below 3037000500 squared, and the product above it
                 {INT64_MAX, 3037000499, 3037000501, INT64_MAX},
                 {1000000000000000000, 1000000000, 1000000001, 1000000001000000000}};
    for (const auto& c : cases) {
        const BatchPlan plan = plan_batches(c.requested);
        EXPECT_EQ(plan.batches, c.batches);
        EXPECT_EQ(plan.per_batch, c.per_batch);
        EXPECT_EQ(plan.total, c.total);
    }
}

TEST(BatchPlan, IsEmptyForNoSteps) {
    for (const std::int64_t requested : {std::int64_t{0}, std::int64_t{-1}, INT64_MIN}) {
        const BatchPlan plan = plan_batches(requested);
        EXPECT_EQ(plan.batches, 0);
        EXPECT_EQ(plan.per_batch, 0);
        EXPECT_EQ(plan.total, 0);
    }
}

template <class Real, class Count>
Real error_of(const std::vector<Count>& hits, std::int64_t per_batch, Real p) {
    return batch_error(std::span(hits), per_batch, p);
}

// Deviations from 0.25: 0.25, -0.25, 0, 0.25; 3/16 over 4 x 3 is 1/64.
TEST(BatchError, IsThatOfTheMeanOfTheShares) {
    EXPECT_EQ(error_of(std::vector<std::int64_t>{4, 0, 2, 4}, 8, 0.25), 0.125);
    EXPECT_EQ(error_of(std::vector<double>{4.0, 0.0, 2.0, 4.0}, 8, 0.25), 0.125);
    EXPECT_EQ(error_of(std::vector<float>{4.0F, 0.0F, 2.0F, 4.0F}, 8, 0.25F), 0.125F);
}

// Shares of 2/3 and 1/3 deviate from 1/3 by about 1/3 and by 0.
TEST(BatchError, IsReckonedInThePrecisionOfP) {
    const double deviation = 2.0 / 3.0 - 1.0 / 3.0;
    EXPECT_EQ(error_of(std::vector<int>{2, 1}, 3, 1.0 / 3.0), std::sqrt(deviation * deviation / 2.0));
    const float deviation_f = 2.0F / 3.0F - 1.0F / 3.0F;
    EXPECT_EQ(error_of(std::vector<int>{2, 1}, 3, 1.0F / 3.0F), std::sqrt(deviation_f * deviation_f / 2.0F));
}

TEST(BatchError, IsZeroForFewerThanTwoBatches) {
    EXPECT_EQ(error_of(std::vector<int>{}, 4, 0.25), 0.0);
    EXPECT_EQ(error_of(std::vector<int>{3}, 4, 0.25), 0.0);
    EXPECT_GT(error_of(std::vector<int>{3, 3}, 4, 0.25), 0.0);
}

}  // namespace
