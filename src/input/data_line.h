// A line of haplotype or genotype data: its tokens, and its data joined to one text.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

namespace mnd {

// Walks over the tokens of a line, split at white space.
class DataLine {
public:
    explicit DataLine(std::string_view text) : rest_(text) {}

    // The next token, or an empty view when there is none.
    std::string_view next();

private:
    std::string_view rest_;
};

// The data of a line.
struct JoinedTokens {
    std::string text;  // the tokens, joined by the separator, or without one by nothing
    int tokens = 0;    // how many there were

    // Number of loci: tokens with a separator, characters without one.
    int loci(char separator) const { return separator != 0 ? tokens : static_cast<int>(text.size()); }
};

// Whether a separator stands before the first token too.
enum class LeadingSeparator { kNo, kYes };

// Joins the remaining tokens of a line.
//   separator  0: none
JoinedTokens join_tokens(DataLine& line, char separator, LeadingSeparator leading);

// What peek_data gives at the end of a stream.
inline constexpr int kEndOfStream = std::char_traits<char>::eof();

// Next character that is neither white space nor part of a comment; it stays in the stream.
int peek_data(std::istream& in);

// Whether the text holds the word, which is given in upper case, in any case of letters.
bool holds_word(std::string_view text, std::string_view upper_word);

}  // namespace mnd
