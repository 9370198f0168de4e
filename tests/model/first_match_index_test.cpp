#include "model/first_match_index.h"

#include <gtest/gtest.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace {

using mnd::FirstMatchIndex;

// A list of texts with an index whose hash is chosen by the test.
struct IndexedTexts {
    std::vector<std::string> texts;
    FirstMatchIndex index;
    bool all_collide = false;

    std::size_t hash(const std::string& text) const { return all_collide ? 7 : mnd::hash_text(text); }
    long find(const std::string& text) {
        index.cover(
            static_cast<long>(texts.size()),
            [this](long i) { return hash(texts[static_cast<std::size_t>(i)]); },
            [this](long i, long j) {
                return texts[static_cast<std::size_t>(i)] == texts[static_cast<std::size_t>(j)];
            });
        return index.first(hash(text), [&](long i) { return texts[static_cast<std::size_t>(i)] == text; });
    }
};

TEST(FirstMatchIndex, GivesTheFirstOfEqualElements) {
    IndexedTexts list{{"a", "b", "a", "c", "b"}, {}};
    EXPECT_EQ(list.find("a"), 0);
    EXPECT_EQ(list.find("b"), 1);
    EXPECT_EQ(list.find("c"), 3);
    EXPECT_EQ(list.find("d"), -1);
}

TEST(FirstMatchIndex, TellsElementsOfTheSameHashApart) {
    IndexedTexts list{{"a", "b", "a", "c", "b"}, {}, true};
    EXPECT_EQ(list.find("a"), 0);
    EXPECT_EQ(list.find("b"), 1);
    EXPECT_EQ(list.find("c"), 3);
    EXPECT_EQ(list.find("d"), -1);
    EXPECT_TRUE(list.index.knows(7));
}

TEST(FirstMatchIndex, FollowsAListThatGrows) {
    IndexedTexts list{{"a"}, {}};
    EXPECT_EQ(list.find("b"), -1);
    list.texts.push_back("b");
    list.texts.push_back("b");
    EXPECT_EQ(list.find("b"), 1);
    EXPECT_EQ(list.index.covered(), 3);
}

TEST(FirstMatchIndex, AgreesWithASearchOfALongList) {
    IndexedTexts list;
    std::unordered_map<std::string, long> first_of;
    for (long i = 0; i < 5000; ++i) {
        // Each text comes back after 1000 places, but for some that are new.
        const std::string text = std::to_string(i % 7 == 0 ? 10000 + i : i % 1000);
        const auto known = first_of.find(text);
        EXPECT_EQ(list.find(text), known == first_of.end() ? -1 : known->second);
        list.texts.push_back(text);
        first_of.try_emplace(text, i);
    }
    for (const auto& [text, position] : first_of)
        EXPECT_EQ(list.find(text), position);
    list.index.forget();
    EXPECT_EQ(list.index.covered(), 0);
    EXPECT_FALSE(list.index.knows(mnd::hash_text("1")));
    EXPECT_EQ(list.find("1"), 1);
}

TEST(FirstMatchIndex, CoversAShorterListAnew) {
    IndexedTexts list{{"a", "b", "c"}, {}};
    EXPECT_EQ(list.find("c"), 2);
    list.texts = {"c"};
    EXPECT_EQ(list.find("c"), 0);
    EXPECT_EQ(list.find("b"), -1);
}

}  // namespace
