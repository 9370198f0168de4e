#include "foundation/escape.h"

#include <algorithm>
#include <cstddef>

namespace mnd {

namespace {

// Written for a control character that XML 1.0 can't hold, not even as a reference.
constexpr std::string_view kReplacement = "&#xFFFD;";

constexpr char kHexDigits[] = "0123456789ABCDEF";

bool is_control(char c) {
    return static_cast<unsigned char>(c) < 32;
}

bool is_above_ascii(char c) {
    return static_cast<unsigned char>(c) > 126;
}

// Appends `prefix` and the two hexadecimal digits of the byte.
void append_hex(std::string& out, std::string_view prefix, char c) {
    const auto byte = static_cast<unsigned char>(c);
    out += prefix;
    out += kHexDigits[byte >> 4];
    out += kHexDigits[byte & 15];
}

void append_text_character(std::string& out, char c) {
    switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        default:
            if (is_control(c) && c != '\t' && c != '\n' && c != '\r') {
                out += kReplacement;
            } else {
                out += c;
            }
    }
}

// Percent-encodes control characters and all characters of `reserved`.
std::string percent_encode(std::string_view text, std::string_view reserved, bool encode_above_ascii) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        if (is_control(c) || reserved.find(c) != std::string_view::npos ||
            (encode_above_ascii && is_above_ascii(c))) {
            append_hex(out, "%", c);
        } else {
            out += c;
        }
    }
    return out;
}

constexpr std::string_view kReservedInPath = " \"#%'<>?\\^`{|}";
constexpr std::string_view kReservedInFileName = " \"#%'<>?\\^`{|}:";

std::string padding(std::string_view text, int width) {
    const auto wanted = static_cast<std::size_t>(std::max(width, 0));
    return std::string(wanted > text.size() ? wanted - text.size() : 0, ' ');
}

}  // namespace

std::string escape_text(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text)
        append_text_character(out, c);
    return out;
}

std::string escape_attribute(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        if (c == '"') {
            out += "&quot;";
        } else {
            append_text_character(out, c);
        }
    }
    return out;
}

std::string escape_script(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        if (c == '\\' || c == '"') {
            out += '\\';
            out += c;
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else if (is_control(c)) {
            append_hex(out, "\\x", c);
        } else {
            out += c;
        }
    }
    return out;
}

std::string encode_file_link(std::string_view file_name) {
    return percent_encode(file_name, kReservedInFileName, true);
}

std::string encode_path(std::string_view path) {
    std::string slashed(path);
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    return percent_encode(slashed, kReservedInPath, true);
}

std::string encode_anchor(std::string_view anchor) {
    return percent_encode(anchor, kReservedInPath, false);
}

std::string escaped_left(std::string_view text, int width) {
    return escape_text(text) + padding(text, width);
}

std::string escaped_right(std::string_view text, int width) {
    return padding(text, width) + escape_text(text);
}

}  // namespace mnd
