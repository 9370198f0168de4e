// The rows of a matrix in a project file, as the lines of a lower triangle.
#pragma once

#include <istream>
#include <string>
#include <string_view>

#include "foundation/my_string.h"

namespace mnd {

// Walks over the tokens of a row. A token ends at a blank, TAB, LF, zero byte or the byte 0xFF;
// runs of these count as one, also before the first and behind the last token.
class RowTokens {
public:
    explicit RowTokens(std::string_view row) : rest_(row) { skip_ends(); }

    // The next token; empty when there is none.
    std::string_view next();
    bool at_end() const { return rest_.empty(); }

private:
    void skip_ends();

    std::string_view rest_;
};

// The distance that a token is, as strtod takes it. False when anything stands behind it and for
// one that is not finite.
bool read_distance(std::string_view token, double& value);

// The lines of one matrix, up to its closing brace.
class MatrixLines {
public:
    // line_no is raised for each line taken.
    MatrixLines(std::istream& is, int& line_no) : is_(is), line_no_(line_no) {}

    // The next line, without comment and cut before a closing brace. False when there is none, behind
    // the brace, and for a line that is too long, which then is told in the log.
    bool next();
    // The same, but lines without any token are passed over.
    bool next_with_tokens();
    // Passes over lines to the closing brace. False when a heading of another section ([SAMPLES],
    // [STRUCTURE], [MANTEL]) or the end of the stream comes first.
    bool go_to_closing_brace();

    std::string_view text() const { return line_.view(); }
    bool closed() const { return closed_; }
    int number() const { return line_no_; }

private:
    std::istream& is_;
    int& line_no_;
    my_string line_;
    bool closed_ = false;
};

}  // namespace mnd
