// Tables of the functions that make up the curve of an expansion model, and the sums of their
// products. A search for the parameters evaluates a curve thousands of times, and goes to and fro
// about a point: most of what a curve needs was computed for a curve before it.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace mnd {

// Values of a function for 0 .. top, with kLanes zeros in front of them and room for as many behind.
struct CurveTable {
    static constexpr int kLanes = 8;  // classes that are summed side by side at most

    const double* values;  // not owned
    bool finite;           // all of them are
};

// Tables of one function for its latest parameters: one for each of kSlots keys.
class KeptTables {
public:
    // The values of the function under these parameters, computed unless they are kept.
    //   fill   fill(values) writes those for 0 .. top
    // Returns: a table that is valid until the next call
    template <class Fill>
    CurveTable get(double first, double second, int top, const Fill& fill) {
        if (top > top_) reserve(top);
        const std::size_t at = slot(first, second);
        Key& key = keys_[at];
        double* const values = values_.data() + at * stride_ + CurveTable::kLanes;
        // Compared by their bits, so that a parameter that is not a number is found, too.
        if (key.first != bits(first) || key.second != bits(second) || key.top < top) {
            fill(values);
            key = {bits(first), bits(second), top,
                   std::all_of(values, values + top + 1, [](double x) { return std::isfinite(x); })};
        }
        return {values, key.finite};
    }

private:
    static constexpr int kSlotBits = 8;
    static constexpr std::size_t kSlots = std::size_t{1} << kSlotBits;

    struct Key {
        std::uint64_t first = 0;
        std::uint64_t second = 0;
        int top = -1;  // last value that is there
        bool finite = false;
    };

    static std::uint64_t bits(double x) { return std::bit_cast<std::uint64_t>(x); }
    // Multiplicative hashing: the highest bits depend on all bits of the parameters.
    static std::size_t slot(double first, double second) {
        const std::uint64_t mixed = (bits(first) ^ std::rotl(bits(second), 21)) * 0x9E3779B97F4A7C15U;
        return static_cast<std::size_t>((mixed ^ (mixed << 32)) >> (64 - kSlotBits));
    }
    void reserve(int top) {
        top_ = top;
        stride_ = static_cast<std::size_t>(top) + 1 + 2 * CurveTable::kLanes;
        keys_.assign(kSlots, Key{});
        values_.assign(kSlots * stride_, 0.0);
    }

    int top_ = -1;
    std::size_t stride_ = 0;
    std::vector<Key> keys_;
    std::vector<double> values_;
};

// values[k] = std::pow(base, k) for k = 0 .. top, to the last bit, mostly by multiplication.
void fill_powers(double base, int top, double* values);

// sums[i] = sum over j = 0 .. i of a[j] b[i - j], for i = 0 .. top: to the last bit as if each sum
// were formed by itself, in the order of j.
//   b   a table with its zeros in front
void add_products(const CurveTable& a, const CurveTable& b, int top, double* sums);

}  // namespace mnd
