// A hash index over a list that answers "which element is the first that equals this?".
//
// The lists of the data model keep their order and may hold equal elements; a search gives
// the first. The index keeps no copy of the elements, only their positions, so the owner of
// the list says how to hash and to compare them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace mnd {

class FirstMatchIndex {
public:
    // Forgets all positions; the next use covers the list anew.
    void forget() {
        slots_.clear();
        next_.clear();
        used_ = 0;
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
        for (long i = head(hash); i != kNone; i = next_[static_cast<std::size_t>(i)]) {
            if (equals(i)) return i;
        }
        return kNone;
    }

    // Whether some element was indexed under this hash. When it was and none is equal, the
    // elements have most likely changed since, and the owner should cover the list anew.
    bool knows(std::size_t hash) const { return head(hash) != kNone; }

private:
    static constexpr long kNone = -1;
    static constexpr std::size_t kSmallestTable = 16;

    // One hash of the list. The table is flat and at most half full: a search touches one
    // place of memory, which is what counts for a list of many thousands.
    struct Slot {
        std::size_t hash = 0;
        long first = kNone;  // first position that has this hash; none in a free slot
    };

    // Slot of the hash, or the free one where it belongs; there is a table.
    std::size_t slot_of(std::size_t hash) const {
        const std::size_t mask = slots_.size() - 1;
        std::size_t at = (hash ^ (hash >> 32)) & mask;
        while (slots_[at].first != kNone && slots_[at].hash != hash)
            at = (at + 1) & mask;
        return at;
    }

    long head(std::size_t hash) const { return slots_.empty() ? kNone : slots_[slot_of(hash)].first; }

    // Makes room for one more hash.
    void grow() {
        if (2 * (used_ + 1) <= slots_.size()) return;
        std::vector<Slot> old(std::max(kSmallestTable, 2 * slots_.size()));
        old.swap(slots_);
        for (const Slot& slot : old) {
            if (slot.first != kNone) slots_[slot_of(slot.hash)] = slot;
        }
    }

    template <class Same>
    void add(long i, std::size_t hash, Same same) {
        next_.push_back(kNone);
        grow();
        Slot& slot = slots_[slot_of(hash)];
        if (slot.first == kNone) {
            slot = {hash, i};
            ++used_;
            return;
        }
        long last = slot.first;
        for (long j = last; j != kNone; j = next_[static_cast<std::size_t>(j)]) {
            if (same(i, j)) return;  // only the first of equal elements is ever the answer
            last = j;
        }
        next_[static_cast<std::size_t>(last)] = i;
    }

    std::vector<Slot> slots_;  // empty, or a power of two of them
    std::size_t used_ = 0;     // slots that hold a hash
    std::vector<long> next_;   // per position, the next one of another content
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
