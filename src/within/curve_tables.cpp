#include "within/curve_tables.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace mnd {

namespace {

// The value of std::pow(base, k) if `power`, the same in extended precision, leaves no doubt of it;
// otherwise std::pow is asked. A product of k factors is off by less than k 2^-64 of itself, thus k 2^-11
// units in the last place of a double. std::pow of the C libraries in use is within 0.54 of such a unit
// (glibc states that bound), so it rounds a power that is further than a sixteenth of a unit from the
// middle of two doubles to the nearest one.
double rounded_power(long double power, double base, int k) {
    constexpr std::uint64_t kExponent = 0x7FF0000000000000U;
    constexpr double kUnit = 0x1p-52;
    constexpr double kLeastPower = 1e-290;  // well above numbers of fewer digits
    const auto nearest = static_cast<double>(power);
    const auto rest = static_cast<double>(power - static_cast<long double>(nearest));
    // Of the double below, so that the smaller unit counts on the border of two.
    const auto scale = std::bit_cast<double>((std::bit_cast<std::uint64_t>(nearest) - 1) & kExponent);
    const double clear = (7.0 / 16.0 - k * 0x1p-11) * kUnit * scale;
    return std::fabs(rest) < clear && nearest > kLeastPower ? nearest : std::pow(base, k);
}

// Two numbers of one register. Written out, since compilers shuffle the loop below to pieces instead.
using Pair [[gnu::vector_size(16)]] = double;

Pair load(const double* from) {
    Pair pair;
    std::memcpy(&pair, from, sizeof pair);
    return pair;
}

// The sums of 2 Pairs neighbouring classes side by side, from class `first` on. Where j is above i,
// a zero in front of b stands in: to add a product of 0 leaves a sum as it is, since none is ever -0.
template <int Pairs>
void add_block(const double* a, const double* b, int first, double* sums) {
    Pair lanes[Pairs] = {};
    const int last = first + 2 * Pairs - 1;
    for (int j = 0; j <= last; ++j) {
        const Pair of_a = {a[j], a[j]};
        const double* const of_b = b + (first - j);
        for (int pair = 0; pair < Pairs; ++pair)
            lanes[pair] += of_a * load(of_b + 2 * pair);
    }
    std::memcpy(sums + first, lanes, sizeof lanes);
}

double sum_of_products(const double* a, const double* b, int i) {
    double sum = 0.0;
    for (int j = 0; j <= i; ++j)
        sum += a[j] * b[i - j];
    return sum;
}

}  // namespace

void fill_powers(double base, int top, double* values) {
    // Elsewhere a long double has other digits, or none more than a double.
    constexpr bool kExtended = std::numeric_limits<long double>::digits == 64;
    const bool clear = kExtended && base > 0.0 && base <= 1.0;
    long double power = 1.0L;
    for (int k = 0; k <= top; ++k) {
        values[k] = clear ? rounded_power(power, base, k) : std::pow(base, k);
        power *= static_cast<long double>(base);
    }
}

void add_products(const CurveTable& a, const CurveTable& b, int top, double* sums) {
    int first = 0;
    // A product of a zero and a number that is not finite would spoil a sum.
    if (a.finite) {
        for (; first + 8 <= top + 1; first += 8)
            add_block<4>(a.values, b.values, first, sums);
        if (first + 4 <= top + 1) {
            add_block<2>(a.values, b.values, first, sums);
            first += 4;
        }
        if (first + 2 <= top + 1) {
            add_block<1>(a.values, b.values, first, sums);
            first += 2;
        }
    }
    for (; first <= top; ++first)
        sums[first] = sum_of_products(a.values, b.values, first);
}

}  // namespace mnd
