#include "foundation/number_text.h"

#include <cmath>
#include <string>
#include <string_view>

namespace mnd {

namespace {

constexpr std::size_t kMaxFractionDigits = 18;

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// Unsigned arithmetic, since the digits of a hostile text overflow.
std::int64_t whole_number(std::string_view text) {
    std::uint64_t total = 0;
    std::uint64_t power = 1;
    bool negate_total = false;
    bool digit_seen = false;
    for (auto c = text.rbegin(); c != text.rend(); ++c) {
        if (is_digit(*c)) {
            total += static_cast<std::uint64_t>(*c - '0') * power;
            power *= 10;
            digit_seen = true;
        } else if (*c == '-') {
            if (digit_seen) {
                total = 0 - total;
            } else {
                negate_total = !negate_total;
            }
        }
    }
    return static_cast<std::int64_t>(negate_total ? 0 - total : total);
}

// The text before the point; of a negative number its last character is missing.
std::string_view integer_text(std::string_view text, std::size_t point) {
    const bool negative = text.front() == '-';
    const std::size_t end = point == std::string_view::npos ? text.size() : point;
    return text.substr(0, negative ? end - 1 : end);
}

// Value of the digits behind the point, in [0, 1) for plain digits.
double fraction_value(std::string_view text) {
    std::string digits;
    for (const char c : text) {
        if (c != ' ' && digits.size() < kMaxFractionDigits) digits += c;
    }
    return static_cast<double>(whole_number(digits)) / std::pow(10.0, static_cast<double>(digits.size()));
}

// `value` times ten to the exponent that stands behind the letter.
double scale_by_exponent(double value, std::string_view text, bool negative) {
    const bool down = !text.empty() && text.front() == '-';
    const std::int64_t exponent = whole_number(down ? text.substr(1) : text);
    if (exponent == 0 || value == 0.0) return value;
    const double signed_value = negative ? -value : value;
    const double power = std::pow(10.0, std::fabs(static_cast<double>(exponent)));
    return down == (exponent > 0) ? signed_value / power : signed_value * power;
}

}  // namespace

std::int64_t my_atol(const char* text) {
    return text == nullptr ? 0 : whole_number(text);
}

std::int32_t my_atoi(const char* text) {
    return static_cast<std::int32_t>(my_atol(text));
}

double my_atof(const char* text) {
    if (text == nullptr || *text == '\0') return 0.0;
    const std::string_view all = text;
    const std::size_t point = all.find('.');
    const std::size_t behind_point = point == std::string_view::npos ? 0 : point + 1;
    const std::size_t letter = all.find_first_of("de", behind_point);

    const auto whole = static_cast<double>(whole_number(integer_text(all, point)));
    double value = whole;
    if (point != std::string_view::npos) {
        const double fraction = fraction_value(all.substr(behind_point, letter - behind_point));
        value = whole >= 0.0 ? whole + fraction : whole - fraction;
    }
    if (letter == std::string_view::npos) return value;
    return scale_by_exponent(value, all.substr(letter + 1), all.front() == '-');
}

}  // namespace mnd
