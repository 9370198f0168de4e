// Counting of site classes between all pairs of a set of sequences, by bit operations.
//
// A rule says, for a character of one sequence and the character of another at the same
// site, which counters grow by one. From the characters that occur, the rule is turned into
// a few products of bit planes, so that one machine operation serves 64 sites:
//
//   counter c of (i, j) = number of bits in  OR_t  rows_t(i) AND columns_t(j)
//
// where a plane marks the sites of a sequence that hold a character of some set. Sites at
// which all sequences hold the same character are counted once for all pairs.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace mnd {

class SitePairCounter {
public:
    static constexpr int kMaxCounters = 8;
    using Counts = std::array<int, kMaxCounters>;

    // Set of counters that a site with (first, second) adds one to: bit c for counter c.
    using Rule = std::function<unsigned(char first, char second)>;

    // kAny: sites may be regrouped, and those that do not vary are counted once.
    // kKept: planes hold all sites in their order; needed by site_mask.
    enum class Order { kAny, kKept };

    // The fastest code for this processor, at most that for AVX2, or the one for any processor; they
    // count the same.
    enum class Code { kBest, kAtMostAvx2, kPortable };

    // Encodes the sequences; they need not outlive the call.
    //   sites         indices of the sites compared, ascending
    //   missing       character taken for sites beyond the end of a sequence
    //   num_counters  counters that the rule uses, at most kMaxCounters
    // Cost:  O(sequences * (sites + planes * sites / 64))
    SitePairCounter(const std::vector<std::string_view>& sequences, const std::vector<int>& sites,
                    char missing, int num_counters, const Rule& rule, Order order = Order::kAny,
                    Code code = Code::kBest);

    // Counters of sequence i, the first of the pair, against sequence j, the second one.
    // Cost: O(planes * varying sites / 64); allocates nothing
    Counts count(int i, int j) const;

    int num_words() const;  // words of a mask of all sites
    int num_sites() const { return num_sites_; }
    // Word w of the mask of sites that add to a counter; bit b is site 64 w + b of the list.
    // Order::kKept only.
    std::uint64_t site_mask(int i, int j, int counter, int w) const;

private:
    using SymbolSet = std::bitset<256>;

    // One product of planes.
    struct Term {
        int row, column;  // offsets of the planes inside a sequence's block, in words
    };
    // A counter as the sites in one of its products; or as those in none of them.
    struct CounterTerms {
        std::vector<Term> terms;
        bool complement = false;
    };
    // Sites treated alike, with the planes of every sequence in one block of `stride` words.
    struct Group {
        std::vector<int> sites;
        SymbolSet symbols;  // characters that occur there
        int words = 0;
        int stride = 0;
        std::vector<SymbolSet> planes;
        std::vector<CounterTerms> counters;
        std::vector<std::uint64_t> bits;
    };

    void sort_sites(const std::vector<std::string_view>& sequences, const std::vector<int>& sites,
                    const Rule& rule, Order order);
    void compile(Group& group, const Rule& rule) const;
    CounterTerms compile_counter(Group& group, const Rule& rule, int counter) const;
    void encode(Group& group, const std::vector<std::string_view>& sequences) const;
    static int plane_of(Group& group, const SymbolSet& symbols);

    char missing_;
    int num_counters_;
    int num_sites_;
    Counts constant_{};  // what the sites that do not vary add to each pair
    std::vector<Group> groups_;
    using GroupCounter = void (*)(const Group&, int, int, Counts&);
    struct Kernels;
    GroupCounter kernel_;  // chosen by what the processor can do
};

}  // namespace mnd
