// Counts of gene copies as whole numbers.
#pragma once

#include <cstdint>
#include <limits>

namespace mnd {

// Sum of two counts; the largest int when it would be more.
constexpr int added_counts(int a, int b) {
    const std::int64_t sum = static_cast<std::int64_t>(a) + b;
    constexpr std::int64_t kLargest = std::numeric_limits<int>::max();
    return static_cast<int>(sum < kLargest ? sum : kLargest);
}

}  // namespace mnd
