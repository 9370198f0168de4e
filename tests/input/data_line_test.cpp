#include "input/data_line.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using mnd::DataLine;
using mnd::holds_word;
using mnd::join_tokens;
using mnd::LeadingSeparator;

TEST(DataLine, SplitsAtRunsOfBlanksAndTabs) {
    DataLine line(" a\t\tbc  d \t");
    EXPECT_EQ(line.next(), "a");
    EXPECT_EQ(line.next(), "bc");
    EXPECT_EQ(line.next(), "d");
    EXPECT_EQ(line.next(), "");
    EXPECT_EQ(line.next(), "");
}

TEST(DataLine, JoinsTheRestWithTheSeparator) {
    DataLine line("id 1 12  14 16");
    line.next();
    line.next();
    const auto data = join_tokens(line, ',', LeadingSeparator::kNo);
    EXPECT_EQ(data.text, "12,14,16");
    EXPECT_EQ(data.tokens, 3);
    EXPECT_EQ(data.loci(','), 3);
}

TEST(DataLine, JoinsWithALeadingSeparator) {
    DataLine line("A B");
    EXPECT_EQ(join_tokens(line, ' ', LeadingSeparator::kYes).text, " A B");
}

TEST(DataLine, WithoutSeparatorEveryCharacterIsALocus) {
    DataLine line("ACG T A");
    const auto data = join_tokens(line, 0, LeadingSeparator::kYes);
    EXPECT_EQ(data.text, "ACGTA");
    EXPECT_EQ(data.loci(0), 5);
}

TEST(DataLine, WordsAreFoundInAnyCase) {
    EXPECT_TRUE(holds_word("\t[[Structure]]", "[STRUCTURE]"));
    EXPECT_FALSE(holds_word("[ structure ]", "[STRUCTURE]"));
    EXPECT_FALSE(holds_word("", "[MANTEL]"));
}

TEST(DataLine, PeekingPassesWhiteSpaceAndComments) {
    std::istringstream in(" \t\r\n# a } comment\n  x");
    EXPECT_EQ(mnd::peek_data(in), 'x');
    EXPECT_EQ(in.get(), 'x');
    EXPECT_EQ(mnd::peek_data(in), mnd::kEndOfStream);
}

}  // namespace
