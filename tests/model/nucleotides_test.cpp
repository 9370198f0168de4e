#include "model/nucleotides.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

using mnd::compare_nucleotides;

// Bases that each symbol of the IUPAC code stands for (A 1, C 2, G 4, T 8).
const std::map<char, int>& base_sets() {
    static const std::map<char, int> sets = {{'A', 1},  {'C', 2},  {'G', 4},  {'T', 8},  {'R', 5},
                                             {'Y', 10}, {'M', 3},  {'K', 12}, {'S', 6},  {'W', 9},
                                             {'H', 11}, {'B', 14}, {'V', 7},  {'D', 13}, {'N', 15}};
    return sets;
}

// Class of two symbols from the bases that they stand for: symbols that share a base do not
// differ; all pairs of their bases transitions, or all transversions, decide; else undetermined.
int class_from_bases(int a, int b) {
    if ((a & b) != 0) return 0;
    const int purines = 5;
    const int pyrimidines = 10;
    const auto within = [](int set, int family) { return (set & ~family) == 0; };
    if ((within(a, purines) && within(b, purines)) || (within(a, pyrimidines) && within(b, pyrimidines))) {
        return 1;
    }
    if ((within(a, purines) && within(b, pyrimidines)) || (within(a, pyrimidines) && within(b, purines))) {
        return 2;
    }
    return 4;
}

TEST(Nucleotides, ClassesFollowFromTheBasesOfTheSymbols) {
    for (const auto& [a, set_a] : base_sets()) {
        for (const auto& [b, set_b] : base_sets()) {
            EXPECT_EQ(compare_nucleotides(a, b), class_from_bases(set_a, set_b)) << a << " against " << b;
        }
    }
}

TEST(Nucleotides, AGapAgainstAnySymbolIsADeletion) {
    for (const auto& [symbol, set] : base_sets()) {
        EXPECT_EQ(compare_nucleotides('-', symbol), mnd::kDeletion) << symbol;
        if (symbol != 'B') {
            EXPECT_EQ(compare_nucleotides(symbol, '-'), mnd::kDeletion) << symbol;
        }
    }
}

TEST(Nucleotides, BAgainstAGapIsNoDeletion) {
    EXPECT_EQ(compare_nucleotides('B', '-'), mnd::kNoSubstitution);
    EXPECT_EQ(compare_nucleotides('-', 'B'), mnd::kDeletion);
}

TEST(Nucleotides, BinaryCharactersDifferWithoutAClassOfTheirOwn) {
    EXPECT_EQ(compare_nucleotides('0', '1'), mnd::kUndeterminedSubstitution);
    EXPECT_EQ(compare_nucleotides('1', '0'), mnd::kUndeterminedSubstitution);
    EXPECT_EQ(compare_nucleotides('0', '-'), mnd::kDeletion);
    EXPECT_EQ(compare_nucleotides('-', '0'), mnd::kNoSubstitution);
    EXPECT_EQ(compare_nucleotides('0', 'A'), mnd::kNoSubstitution);
}

TEST(Nucleotides, AnyOtherPairHasNoClass) {
    const std::string known = "-01ABCDGHKMNRSTVWY";
    int with_a_class = 0;
    for (int a = -128; a < 128; ++a) {
        for (int b = -128; b < 128; ++b) {
            const int found = compare_nucleotides(static_cast<char>(a), static_cast<char>(b));
            if (found == 0) continue;
            ++with_a_class;
            EXPECT_NE(known.find(static_cast<char>(a)), std::string::npos);
            EXPECT_NE(known.find(static_cast<char>(b)), std::string::npos);
        }
    }
    // 4 transitions, 18 transversions, 15 + 16 deletions, 12 pairs of a base and a
    // symbol in both orders (3 for each base), K-M, S-W and 0-1 in both orders.
    EXPECT_EQ(with_a_class, 4 + 18 + 31 + 24 + 6);
}

TEST(Nucleotides, TheMissingCharacterHasNoClass) {
    for (const char c : std::string("ACGTRYN-01")) {
        EXPECT_EQ(compare_nucleotides('?', c), mnd::kNoSubstitution);
        EXPECT_EQ(compare_nucleotides(c, '?'), mnd::kNoSubstitution);
    }
}

}  // namespace
