// A hash index over a list that answers "which element is the first that equals this?".
//
// The lists of the data model keep their order and may hold equal elements; a search gives
// the first. The index keeps no copy of the elements, only their positions, so the owner of
// the list says how to hash and to compare them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mnd {

class FirstMatchIndex {
public:
    // Forgets all positions; the next use covers the list anew.
    void forget() {
        head_.clear();
        next_.clear();
    }

    // Number of elements of the list that are indexed, from the first on.
    long covered() const { return static_cast<long>(next_.size()); }

    // Indexes the elements covered() to n - 1; when the list has become shorter, all of it anew.
    //   hash_at(i)    hash of element i
    //   same(i, j)    whether the elements i and j are equal
    // Cost: O(1) an element
    template <class HashAt, class Same>
    void cover(long n, HashAt hash_at, Same same) {
        if (n < covered()) forget();
        for (long i = covered(); i < n; ++i)
            add(i, hash_at(i), same);
    }

    // First indexed element with this hash for which equals(i) holds, or -1.
    template <class Equals>
    long first(std::size_t hash, Equals equals) const {
        const auto found = head_.find(hash);
        if (found == head_.end()) return kNone;
        for (long i = found->second; i != kNone; i = next_[static_cast<std::size_t>(i)]) {
            if (equals(i)) return i;
        }
        return kNone;
    }

    // Whether some element was indexed under this hash. When it was and none is equal, the
    // elements have most likely changed since, and the owner should cover the list anew.
    bool knows(std::size_t hash) const { return head_.count(hash) != 0; }

private:
    static constexpr long kNone = -1;

    template <class Same>
    void add(long i, std::size_t hash, Same same) {
        next_.push_back(kNone);
        const auto [place, is_new] = head_.try_emplace(hash, i);
        if (is_new) return;
        long last = place->second;
        for (long j = last; j != kNone; j = next_[static_cast<std::size_t>(j)]) {
            if (same(i, j)) return;  // only the first of equal elements is ever the answer
            last = j;
        }
        next_[static_cast<std::size_t>(last)] = i;
    }

    std::unordered_map<std::size_t, long> head_;  // hash to the first position that has it
    std::vector<long> next_;                      // per position, the next one of another content
};

// Hash of a text, for an index of texts.
inline std::size_t hash_text(std::string_view text) {
    return std::hash<std::string_view>{}(text);
}

// Folds an address into a hash, for an index of lists of pointers.
inline std::size_t hash_address(std::size_t hash, const void* address) {
    // Multiply and fold of 64 bits; the addresses themselves differ in few bits only.
    constexpr std::uint64_t kGolden = 0x9E3779B97F4A7C15ULL;
    const std::uint64_t mixed = (hash ^ (reinterpret_cast<std::uintptr_t>(address) >> 4)) * kGolden;
    return static_cast<std::size_t>(mixed ^ (mixed >> 29));
}

}  // namespace mnd
