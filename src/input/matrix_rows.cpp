#include "input/matrix_rows.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <ostream>

#include "input/keyword_reader.h"
#include "run/errors.h"

namespace mnd {

namespace {

constexpr std::string_view kTokenEnds("\0 \t\n\xFF", 5);

constexpr std::array<const char*, 3> kNextSections = {"[SAMPLES]", "[STRUCTURE]", "[MANTEL]"};

}  // namespace

void RowTokens::skip_ends() {
    const std::size_t start = rest_.find_first_not_of(kTokenEnds);
    rest_.remove_prefix(start == std::string_view::npos ? rest_.size() : start);
}

std::string_view RowTokens::next() {
    const std::string_view token = rest_.substr(0, rest_.find_first_of(kTokenEnds));
    rest_.remove_prefix(token.size());
    skip_ends();
    return token;
}

bool read_distance(std::string_view token, double& value) {
    const std::string text(token);
    char* end = nullptr;
    const double read = std::strtod(text.c_str(), &end);
    if (end == text.c_str() || *end != 0 || !std::isfinite(read)) return false;
    value = read;
    return true;
}

bool MatrixLines::next() {
    if (closed_ || !is_.good()) return false;
    if (!read_project_line(is_, line_, line_no_)) {
        if (line_was_too_long(is_)) {
            *_AOS_ << "\tLine #" << line_no_ + 1 << " of the matrix is longer than " << kMaxTextLength - 1
                   << " characters" << std::endl;
        }
        return false;
    }
    closed_ = line_.contains('}');
    if (closed_) line_ = line_.extract_before('}');
    return true;
}

bool MatrixLines::next_with_tokens() {
    while (next()) {
        if (closed_ || !RowTokens(text()).at_end()) return true;
    }
    return false;
}

bool MatrixLines::go_to_closing_brace() {
    while (!closed_) {
        if (!next()) return false;
        const my_string upper = upper_copy(line_);
        for (const char* heading : kNextSections) {
            if (!closed_ && upper.contains(heading)) return false;
        }
    }
    return true;
}

}  // namespace mnd
