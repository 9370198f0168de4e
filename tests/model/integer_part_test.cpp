#include "model/integer_part.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr int kLargest = std::numeric_limits<int>::max();

TEST(IntegerPart, CutsTowardsZero) {
    EXPECT_EQ(mnd::integer_part(2.999), 2);
    EXPECT_EQ(mnd::integer_part(-2.999), -2);
    EXPECT_EQ(mnd::integer_part(0.0), 0);
}

TEST(IntegerPart, StaysInTheRangeOfInt) {
    EXPECT_EQ(mnd::integer_part(1e300), kLargest);
    EXPECT_EQ(mnd::integer_part(-1e300), -kLargest);
    EXPECT_EQ(mnd::integer_part(std::numeric_limits<double>::infinity()), kLargest);
    EXPECT_EQ(mnd::integer_part(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(SumOfCounts, StaysInTheRangeOfInt) {
    EXPECT_EQ(mnd::sum_of_counts(2, 3), 5);
    EXPECT_EQ(mnd::sum_of_counts(kLargest - 1, 1), kLargest);
    EXPECT_EQ(mnd::sum_of_counts(kLargest, 1), kLargest);
    EXPECT_EQ(mnd::sum_of_counts(kLargest, kLargest), kLargest);
    EXPECT_EQ(mnd::sum_of_counts(-kLargest, -kLargest), -kLargest);
}

}  // namespace
