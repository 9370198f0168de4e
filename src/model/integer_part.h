// Counts that are held as doubles.
#pragma once

#include <limits>

namespace mnd {

// Integer part of x, towards zero; the nearest int when x is out of range, 0 for NaN.
constexpr int integer_part(double x) {
    constexpr double kLargest = static_cast<double>(std::numeric_limits<int>::max());
    if (x >= kLargest) return std::numeric_limits<int>::max();
    if (x <= -kLargest) return -std::numeric_limits<int>::max();
    return x == x ? static_cast<int>(x) : 0;
}

// Sum of two counts; the nearest int when it is out of range.
constexpr int sum_of_counts(int a, int b) {
    return integer_part(static_cast<double>(a) + static_cast<double>(b));
}

}  // namespace mnd
