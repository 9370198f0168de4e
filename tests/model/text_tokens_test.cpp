#include "model/text_tokens.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> texts_of(std::string_view text, char sep) {
    std::vector<std::string> found;
    mnd::for_each_locus_text(text, sep, [&](std::string_view token) { found.emplace_back(token); });
    EXPECT_EQ(mnd::count_locus_texts(text, sep), static_cast<int>(found.size()));
    return found;
}

using Texts = std::vector<std::string>;

TEST(TextTokens, WithoutSeparatorEachCharacterIsALocus) {
    EXPECT_EQ(texts_of("AC G", '\0'), (Texts{"A", "C", " ", "G"}));
    EXPECT_EQ(texts_of("", '\0'), Texts{});
}

TEST(TextTokens, SeparatorsMayBeDoubledAndStandAtTheEnds) {
    EXPECT_EQ(texts_of("12,7", ','), (Texts{"12", "7"}));
    EXPECT_EQ(texts_of(",12,,7,", ','), (Texts{"12", "7"}));
    EXPECT_EQ(texts_of(",,", ','), Texts{});
    EXPECT_EQ(texts_of("", ','), Texts{});
}

}  // namespace
