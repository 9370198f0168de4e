// Computing time as the log shows it.
#pragma once

#include <ctime>

namespace mnd {

// Milliseconds of computing time since `begin`, a value of std::clock().
inline long milliseconds_since(std::clock_t begin) {
    return static_cast<long>(static_cast<double>(std::clock() - begin) * 1000.0 / CLOCKS_PER_SEC);
}

}  // namespace mnd
