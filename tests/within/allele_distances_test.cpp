#include "within/allele_distances.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/seeded_stream.h"

namespace {

using mnd::AlleleDifferences;
using mnd::RepeatDistances;

class AlleleDistances : public mnd_test::SeededStream {
protected:
    static int below(int n) { return static_cast<int>(next() * n); }
};

TEST_F(AlleleDistances, CountsLociWithDifferentKnownAlleles) {
    for (const int loci : {0, 1, 7, 64, 133}) {
        AlleleDifferences::Table table(6, std::vector<std::int32_t>(static_cast<std::size_t>(loci)));
        for (auto& row : table) {
            for (std::size_t l = 0; l < row.size(); ++l)
                row[l] = l % 4 == 0 ? 1 : below(4);
        }
        const AlleleDifferences differences(table);
        for (int i = 0; i < 6; ++i) {
            for (int j = 0; j < 6; ++j) {
                int expected = 0;
                for (std::size_t l = 0; l < static_cast<std::size_t>(loci); ++l) {
                    const int a = table[static_cast<std::size_t>(i)][l];
                    const int b = table[static_cast<std::size_t>(j)][l];
                    if (a != 0 && b != 0 && a != b) ++expected;
                }
                EXPECT_EQ(differences.count(i, j), expected);
            }
        }
    }
}

// One locus after another, as two loops say it.
TEST_F(AlleleDistances, RepeatDistancesAreSumsOverKnownLoci) {
    for (const double unit : {1.0, 0.1, 1e7}) {
        for (const int loci : {1, 3, 4, 11, 64}) {
            RepeatDistances::Table table(5);
            for (auto& row : table) {
                for (int l = 0; l < loci; ++l) {
                    const int kind = below(12);
                    const double size = kind == 0 ? -99999.0 : unit * below(30);
                    row.push_back({size, kind == 1});
                }
            }
            const RepeatDistances distances(table);
            for (int i = 0; i < 5; ++i) {
                for (int j = 0; j < 5; ++j) {
                    double differences = 0.0, squares = 0.0;
                    for (std::size_t l = 0; l < static_cast<std::size_t>(loci); ++l) {
                        const auto& a = table[static_cast<std::size_t>(i)][l];
                        const auto& b = table[static_cast<std::size_t>(j)][l];
                        if (a.missing || b.missing || a.size == -99999.0) continue;
                        differences += a.size != b.size ? 1.0 : 0.0;
                        squares += (a.size - b.size) * (a.size - b.size);
                    }
                    double found = -1.0;
                    ASSERT_TRUE(distances.number_of_differences(i, j, found));
                    EXPECT_EQ(found, differences);
                    ASSERT_TRUE(distances.sum_of_squares(i, j, found));
                    EXPECT_EQ(found, squares);
                }
            }
        }
    }
}

TEST(RepeatDistances, AnInfiniteDifferenceIsRefused) {
    const RepeatDistances distances({{{HUGE_VAL, false}}, {{3.0, false}}, {{HUGE_VAL, true}}});
    double found = 0.0;
    EXPECT_FALSE(distances.number_of_differences(1, 0, found));
    EXPECT_FALSE(distances.sum_of_squares(1, 0, found));
    EXPECT_TRUE(distances.sum_of_squares(1, 2, found));
    EXPECT_EQ(found, 0.0);
    const RepeatDistances overflow({{{1e308, false}}, {{-1e308, false}}});
    EXPECT_FALSE(overflow.sum_of_squares(1, 0, found));
}

}  // namespace
