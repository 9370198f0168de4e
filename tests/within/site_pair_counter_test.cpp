#include "within/site_pair_counter.h"

#include <gtest/gtest.h>

#include <string>

#include "support/seeded_stream.h"

namespace {

using mnd::SitePairCounter;

// A rule without any order or sense in it: any pair of characters has any set of counters.
unsigned scrambled(char a, char b) {
    const unsigned mixed = (static_cast<unsigned char>(a) * 7919U + static_cast<unsigned char>(b) * 104729U);
    return (mixed >> 3U) & 0xFFU;
}

class SitePairCounterTest : public mnd_test::SeededStream {
protected:
    std::vector<std::string> texts;
    std::vector<std::string_view> views;
    std::vector<int> sites;

    // n random texts over an alphabet; every fifth site does not vary; two sites in three used.
    void make(int n, int length, const std::string& alphabet) {
        texts.assign(static_cast<std::size_t>(n), "");
        sites.clear();
        for (int site = 0; site < length; ++site) {
            const char common = pick(alphabet);
            for (std::string& text : texts)
                text += site % 5 == 0 ? common : pick(alphabet);
            if (site % 3 != 2) sites.push_back(site);
        }
        views.assign(texts.begin(), texts.end());
    }
    static char pick(const std::string& alphabet) {
        return alphabet[static_cast<std::size_t>(next() * static_cast<double>(alphabet.size()))];
    }
    SitePairCounter::Counts brute_force(std::size_t i, std::size_t j) const {
        SitePairCounter::Counts counts{};
        for (const int site : sites) {
            const auto at = static_cast<std::size_t>(site);
            const unsigned grown = scrambled(texts[i][at], texts[j][at]);
            for (std::size_t c = 0; c < 8; ++c)
                counts[c] += static_cast<int>((grown >> c) & 1U);
        }
        return counts;
    }
    void expect_all_pairs(SitePairCounter::Order order) {
        using Code = SitePairCounter::Code;
        for (const auto code : {Code::kBest, Code::kAtMostAvx2, Code::kPortable}) {
            const SitePairCounter counter(views, sites, '?', 8, scrambled, order, code);
            for (std::size_t i = 0; i < texts.size(); ++i) {
                for (std::size_t j = 0; j < texts.size(); ++j) {
                    ASSERT_EQ(counter.count(static_cast<int>(i), static_cast<int>(j)), brute_force(i, j));
                }
            }
        }
    }
};

TEST_F(SitePairCounterTest, CountsAsALoopOverSitesDoes) {
    for (const int length : {0, 1, 2, 63, 64, 65, 200, 321, 20000}) {
        make(6, length, "ACGT");
        expect_all_pairs(SitePairCounter::Order::kAny);
        make(6, length, "ACGT-?RYN01x");
        expect_all_pairs(SitePairCounter::Order::kAny);
        expect_all_pairs(SitePairCounter::Order::kKept);
    }
}

TEST_F(SitePairCounterTest, MixesSitesOfBasesWithOtherSites) {
    make(8, 150, "ACGT");
    for (std::size_t at = 0; at < 150; at += 7)
        texts[at % 8][at] = "-?N"[at % 3];
    views.assign(texts.begin(), texts.end());
    expect_all_pairs(SitePairCounter::Order::kAny);
}

TEST_F(SitePairCounterTest, MasksNameTheSitesInTheirOrder) {
    make(5, 100, "ACG-?");
    const SitePairCounter counter(views, sites, '?', 8, scrambled, SitePairCounter::Order::kKept);
    ASSERT_EQ(counter.num_sites(), static_cast<int>(sites.size()));
    ASSERT_EQ(counter.num_words(), 2);
    for (int c = 0; c < 8; ++c) {
        for (std::size_t s = 0; s < 128; ++s) {
            const std::uint64_t word = counter.site_mask(4, 1, c, static_cast<int>(s / 64));
            const bool expected =
                s < sites.size() && ((scrambled(texts[4][static_cast<std::size_t>(sites[s])],
                                                texts[1][static_cast<std::size_t>(sites[s])]) >>
                                      static_cast<unsigned>(c)) &
                                     1U) != 0;
            ASSERT_EQ((word >> (s % 64)) & 1U, expected ? 1U : 0U) << "counter " << c << " site " << s;
        }
    }
}

TEST(SitePairCounter, SitesBeyondTheEndOfASequenceAreMissing) {
    const std::vector<std::string_view> views = {"AC", "ACGT", ""};
    const auto missing_in_first = [](char a, char) { return a == '?' ? 1U : 0U; };
    const SitePairCounter counter(views, {0, 1, 2, 3}, '?', 1, missing_in_first);
    EXPECT_EQ(counter.count(0, 1)[0], 2);
    EXPECT_EQ(counter.count(1, 0)[0], 0);
    EXPECT_EQ(counter.count(2, 1)[0], 4);
}

TEST(SitePairCounter, TheOrderOfAPairCounts) {
    const std::vector<std::string_view> views = {"-B", "B-"};
    const auto gap_first = [](char a, char b) { return a == '-' && b == 'B' ? 1U : 0U; };
    const SitePairCounter counter(views, {0}, '?', 1, gap_first);
    EXPECT_EQ(counter.count(0, 1)[0], 1);
    EXPECT_EQ(counter.count(1, 0)[0], 0);
}

TEST(SitePairCounter, AllByteValuesAreCharacters) {
    std::string first, second;
    std::vector<int> sites;
    for (int c = 0; c < 256; ++c) {
        first += static_cast<char>(c);
        second += static_cast<char>(255 - c);
        sites.push_back(c);
    }
    const std::vector<std::string_view> views = {first, second};
    const auto same = [](char a, char b) { return a == b ? 1U : 2U; };
    const SitePairCounter counter(views, sites, '?', 2, same);
    EXPECT_EQ(counter.count(0, 1)[0], 0);
    EXPECT_EQ(counter.count(0, 1)[1], 256);
    EXPECT_EQ(counter.count(1, 1)[0], 256);
}

}  // namespace
