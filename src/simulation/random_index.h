// One of several lineages, demes or groups, each as probable.
#pragma once

#include <algorithm>

#include "foundation/random.h"

namespace mnd {

// A number from 0 to n - 1, n above 0: also for a number of the stream that is not below 1.
// Draws: 1
inline int random_index(int n) {
    return std::min(static_cast<int>(n * ran3()), n - 1);
}

}  // namespace mnd
