#include "input/data_line.h"

#include <algorithm>
#include <istream>

namespace mnd {

namespace {

constexpr std::string_view kWhiteSpace = " \t\r\v\f\n";

char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace

std::string_view DataLine::next() {
    const std::size_t begin = rest_.find_first_not_of(kWhiteSpace);
    if (begin == std::string_view::npos) {
        rest_ = {};
        return {};
    }
    const std::size_t end = std::min(rest_.find_first_of(kWhiteSpace, begin), rest_.size());
    const std::string_view token = rest_.substr(begin, end - begin);
    rest_.remove_prefix(end);
    return token;
}

JoinedTokens join_tokens(DataLine& line, char separator, LeadingSeparator leading) {
    JoinedTokens joined;
    for (std::string_view token = line.next(); !token.empty(); token = line.next()) {
        const bool is_first = joined.tokens == 0;
        if (separator != 0 && (!is_first || leading == LeadingSeparator::kYes)) joined.text += separator;
        joined.text += token;
        ++joined.tokens;
    }
    return joined;
}

int peek_data(std::istream& in) {
    std::string comment;
    for (int c = in.peek(); c != kEndOfStream; c = in.peek()) {
        if (c == '#') {
            std::getline(in, comment);
        } else if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
            in.get();
        } else {
            return c;
        }
    }
    return kEndOfStream;
}

bool holds_word(std::string_view text, std::string_view upper_word) {
    const auto same = [](char c, char wanted) { return upper(c) == wanted; };
    return std::search(text.begin(), text.end(), upper_word.begin(), upper_word.end(), same) != text.end();
}

}  // namespace mnd
