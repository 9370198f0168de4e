#include "foundation/batch_stat.h"

#include <gtest/gtest.h>

#include <cstdint>
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
                 {1000000000000000000, 1000000000, 1000000001, 1000000001000000000}};
    for (const auto& c : cases) {
        const BatchPlan plan = plan_batches(c.requested);
        EXPECT_EQ(plan.batches, c.batches);
        EXPECT_EQ(plan.per_batch, c.per_batch);
        EXPECT_EQ(plan.total(), c.total);
    }
}

TEST(BatchPlan, IsEmptyForNoSteps) {
    for (const std::int64_t requested : {std::int64_t{0}, std::int64_t{-1}, INT64_MIN}) {
        const BatchPlan plan = plan_batches(requested);
        EXPECT_EQ(plan.batches, 0);
        EXPECT_EQ(plan.per_batch, 0);
        EXPECT_EQ(plan.total(), 0);
    }
}

// Deviations from 0.25: 0.25, -0.25, 0, 0.25; 3/16 over 4 x 3 is 1/64.
TEST(BatchError, IsThatOfTheMeanOfTheShares) {
    EXPECT_EQ(batch_error<double>(std::vector<double>{0.5, 0.0, 0.25, 0.5}, 0.25), 0.125);
    EXPECT_EQ(batch_error<float>(std::vector<float>{0.5F, 0.0F, 0.25F, 0.5F}, 0.25F), 0.125F);
}

TEST(BatchError, IsZeroForFewerThanTwoBatches) {
    EXPECT_EQ(batch_error<double>(std::vector<double>{}, 0.25), 0.0);
    EXPECT_EQ(batch_error<double>(std::vector<double>{0.75}, 0.25), 0.0);
    EXPECT_GT(batch_error<double>(std::vector<double>{0.75, 0.75}, 0.25), 0.0);
}

}  // namespace
