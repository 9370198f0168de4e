#include "foundation/my_string.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <utility>

namespace mnd {

namespace {

constexpr std::int32_t kDefaultCapacity = 10;
constexpr std::int32_t kGrowthStep = 100;
constexpr int kEndOfStream = std::char_traits<char>::eof();
constexpr int kLastByte = 255;  // ends a token, as does the value -1 of a signed character

// Length of a zero-ended text; a null pointer is the empty text.
std::size_t length_of(const char* text) {
    return text == nullptr ? 0 : std::strlen(text);
}

// Next character of the stream without taking it; kEndOfStream sets eofbit.
int look(std::istream& is) {
    const int c = is.rdbuf()->sgetc();
    if (c == kEndOfStream) is.setstate(std::ios_base::eofbit);
    return c;
}

// Next character of the stream; kEndOfStream sets eofbit.
int take(std::istream& is) {
    const int c = is.rdbuf()->sbumpc();
    if (c == kEndOfStream) is.setstate(std::ios_base::eofbit);
    return c;
}

// True when the stream can be read; else sets failbit, as a formatted read does.
bool readable(std::istream& is) {
    if (is.good() && is.rdbuf() != nullptr) return true;
    is.setstate(std::ios_base::failbit);
    return false;
}

// Takes characters up to one that `stops`, which is taken too; zero bytes that do not stop
// are dropped. Sets failbit when the stream ends at once.
template <class Stops>
std::string take_until(std::istream& is, Stops stops) {
    std::string taken;
    bool any = false;
    for (int c = take(is); c != kEndOfStream; c = take(is)) {
        any = true;
        if (stops(c)) return taken;
        if (c != '\0') taken.push_back(static_cast<char>(c));
    }
    if (!any) is.setstate(std::ios_base::failbit);
    return taken;
}

char upper_of(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

char lower_of(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

// ---- construction

my_string::my_string()
    : str(std::make_unique<char[]>(kDefaultCapacity)), delta(kGrowthStep), capacity(kDefaultCapacity) {}

my_string::my_string(const char* text) : delta(kGrowthStep) {
    const std::size_t n = length_of(text);
    if (text == nullptr || n >= kMaxTextLength) {
        str = std::make_unique<char[]>(kDefaultCapacity);
        capacity = kDefaultCapacity;
        return;
    }
    str = std::make_unique_for_overwrite<char[]>(n + 2);
    std::memcpy(str.get(), text, n + 1);
    len = static_cast<std::int32_t>(n);
    capacity = len + 2;
}

my_string::my_string(const my_string& other) : my_string() {
    *this = other;
}

my_string::my_string(my_string&& other) noexcept
    : str(std::move(other.str)),
      delta(other.delta),
      len(std::exchange(other.len, 0)),
      capacity(std::exchange(other.capacity, 0)) {}

// ---- assignment

// Takes the n characters of source, which may lie in this very text.
void my_string::set_text(const char* source, std::int32_t n) {
    if (capacity < n + 2) {
        auto fresh = std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(n) + 2);
        std::copy_n(source, n, fresh.get());
        str = std::move(fresh);
        capacity = n + 2;
    } else {
        std::memmove(str.get(), source, static_cast<std::size_t>(n));
    }
    cut_at(n);
}

my_string& my_string::operator=(const my_string& other) {
    if (this != &other && other.len <= kMaxTextLength) set_text(other.c_str(), other.len);
    return *this;
}

my_string& my_string::operator=(const char* text) {
    const std::size_t n = length_of(text);
    if (n <= kMaxTextLength) set_text(text == nullptr ? "" : text, static_cast<std::int32_t>(n));
    return *this;
}

my_string& my_string::operator=(const char& c) {
    const char kept = c;  // it may be one of our own characters
    if (capacity < 4) {
        str = std::make_unique<char[]>(12);
        capacity = 12;
    }
    str[0] = kept;
    cut_at(kept == '\0' ? 0 : 1);
    return *this;
}

my_string& my_string::operator=(int value) {
    char digits[16];
    const int n = std::snprintf(digits, sizeof digits, "%d", value);
    if (capacity < 20) {
        str = std::make_unique<char[]>(22);
        capacity = 22;
    }
    set_text(digits, n);
    return *this;
}

my_string& my_string::operator=(double value) {
    char digits[512];  // the largest double has 309 digits before its point
    const int n = std::snprintf(digits, sizeof digits, "%f", value);
    if (capacity < 40) {
        str = std::make_unique<char[]>(42);
        capacity = 42;
    }
    set_text(digits, n);
    return *this;
}

// ---- growth and append

void my_string::grow_keeping_text(std::int32_t allocated, std::int32_t recorded) {
    scratch = std::move(str);
    str = std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(allocated));
    if (scratch) std::memcpy(str.get(), scratch.get(), static_cast<std::size_t>(len));
    str[len] = '\0';
    capacity = recorded;
    scratch.reset();
}

// Appends the n characters of source, which may lie in this very text.
void my_string::append_text(const char* source, std::size_t n) {
    if (static_cast<std::size_t>(len) + n > kMaxTextLength) return;
    const std::int32_t total = len + static_cast<std::int32_t>(n);
    if (capacity < total + 2) {
        // The old buffer lives on in scratch until the source has been read.
        scratch = std::move(str);
        str = std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(total) + 2);
        if (scratch) std::memcpy(str.get(), scratch.get(), static_cast<std::size_t>(len));
        capacity = total + 2;
    }
    std::memmove(str.get() + len, source, n);
    cut_at(total);
    scratch.reset();
}

my_string& my_string::operator+=(const my_string& other) {
    append_text(other.c_str(), static_cast<std::size_t>(other.len));
    return *this;
}

my_string& my_string::operator+=(const char* text) {
    append_text(text == nullptr ? "" : text, length_of(text));
    return *this;
}

my_string& my_string::operator+=(char c) {
    append_one_by_one({&c, 1});
    return *this;
}

// Same text and capacity as appending the characters singly, at the cost of one growth.
// None of the characters is a zero byte, except a single one, which appends nothing.
void my_string::append_one_by_one(std::string_view characters) {
    if (characters == std::string_view("\0", 1)) return;
    const std::int32_t room = std::max(kMaxTextLength - len, 0);
    const std::int32_t n = static_cast<std::int32_t>(std::min<std::size_t>(characters.size(), room));
    std::int32_t recorded = capacity;
    for (std::int32_t at = len; at < len + n; ++at) {
        // A text of 7 in a buffer of 10 grows already.
        if (recorded <= at + 3) recorded = at + 1 + delta;
    }
    if (recorded != capacity) grow_keeping_text(recorded + 1, recorded);
    if (n == 0) return;
    std::memcpy(str.get() + len, characters.data(), static_cast<std::size_t>(n));
    cut_at(len + n);
}

void my_string::extendSize(const int& n) {
    if (len >= n) return;
    grow_keeping_text(n + 2, n + 2);
    delta = kGrowthStep;
}

my_string operator+(const my_string& a, const my_string& b) {
    my_string sum;
    if (static_cast<std::int64_t>(a.length()) + b.length() > kMaxTextLength) return sum;
    sum += a;
    sum += b;
    return sum;
}

my_string operator+(const my_string& a, const char* b) {
    my_string sum;
    if (static_cast<std::size_t>(a.length()) + length_of(b) > kMaxTextLength) return sum;
    sum += a;
    sum += b;
    return sum;
}

// ---- comparison

bool operator==(const my_string& a, const my_string& b) {
    return a.view() == b.view();
}

bool operator==(const my_string& a, const char* b) {
    return a.view() == std::string_view(b == nullptr ? "" : b);
}

std::strong_ordering operator<=>(const my_string& a, const my_string& b) {
    return a.view() <=> b.view();
}

std::strong_ordering operator<=>(const my_string& a, const char* b) {
    return a.view() <=> std::string_view(b == nullptr ? "" : b);
}

// ---- searches

bool my_string::contains(char c) const {
    return c != '\0' && find_first_of(c) >= 0;
}

bool my_string::contains(const char* pattern) const {
    return length_of(pattern) > 0 && std::strstr(c_str(), pattern) != nullptr;
}

bool my_string::contains(const my_string& pattern) const {
    return rfind(pattern) >= 0;
}

int my_string::find_first_of(const char& c) const {
    const auto at = view().find(c);
    return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

int my_string::find_first_of(const char& c, int pos) const {
    return pos > len ? -1 : find_first_of(c);
}

int my_string::find_last_of(const char& c) const {
    const auto at = view().rfind(c);
    return at == std::string_view::npos ? len : static_cast<int>(at);
}

int my_string::rfind(const my_string& pattern) const {
    if (pattern.is_null()) return -1;
    const auto at = view().find(pattern.view());
    return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

// ---- operations in place

void my_string::empty() {
    if (str) cut_at(0);
}

// Ends the text at pos, which lies inside the buffer.
void my_string::cut_at(std::int32_t pos) {
    len = pos;
    str[len] = '\0';
}

void my_string::remove(int pos, int n) {
    if (n <= 0 || pos < 0 || pos >= len) return;
    if (n >= len - pos) {
        cut_at(pos);
        return;
    }
    std::memmove(text() + pos, text() + pos + n, static_cast<std::size_t>(len - pos - n));
    cut_at(len - n);
}

void my_string::remove_all_of(char a, char b) {
    if (!str) return;
    char* const end = std::remove_if(text(), text() + len, [a, b](char c) { return c == a || c == b; });
    cut_at(static_cast<std::int32_t>(end - text()));
}

void my_string::remove_blanks() {
    remove_all_of(' ', '\t');
}

void my_string::remove_eol_and_lf() {
    remove_all_of('\n', '\r');
}

void my_string::reverse_string() {
    std::reverse(text(), text() + len);
}

void my_string::Upper() {
    std::transform(text(), text() + len, text(), upper_of);
}

void my_string::Lower() {
    std::transform(text(), text() + len, text(), lower_of);
}

void my_string::replace_all(char from, char to) {
    std::replace(text(), text() + len, from, to);
}

void my_string::convert_to_slash() {
    replace_all('\\', '/');
}

void my_string::convert_to_backslash() {
    replace_all('/', '\\');
}

void my_string::convert_to_underline() {
    replace_all('/', '_');
    replace_all(':', '_');
    replace_all('\\', '_');
}

void my_string::convert_dot_to_underline() {
    replace_all('.', '_');
}

namespace {

// Copy of the text with each blank exchanged for another text.
my_string with_blanks_as(const my_string& source, const char* other) {
    std::string result;
    for (const char c : source.view()) {
        if (c == ' ') {
            result += other;
        } else {
            result += c;
        }
    }
    my_string copy;
    copy = result.c_str();
    return copy;
}

}  // namespace

my_string my_string::convert_blank_to_underline() const {
    return with_blanks_as(*this, "_");
}

my_string my_string::convert_blank_to_linux_blank() const {
    return with_blanks_as(*this, "\\ ");
}

my_string my_string::convert_blank_to_html_blank() const {
    return with_blanks_as(*this, "%20");
}

// ---- parts of a path and of a line

// Index of the last slash or backslash, or -1.
std::int32_t my_string::last_path_mark() const {
    const auto at = view().find_last_of("/\\");
    return at == std::string_view::npos ? -1 : static_cast<std::int32_t>(at);
}

void my_string::extract_path() {
    if (str) cut_at(last_path_mark() + 1);
}

void my_string::rm_path() {
    remove(0, last_path_mark() + 1);
}

void my_string::remove_extension() {
    const auto point = view().rfind('.');
    if (point == std::string_view::npos) return;
    const std::string_view extension = view().substr(point);
    cut_at(static_cast<std::int32_t>(view().find(extension)));
}

my_string my_string::extract_before(char c) const {
    const int at = find_first_of(c);
    my_string before;
    before.append_text(c_str(), static_cast<std::size_t>(at < 0 ? len : at));
    return before;
}

my_string my_string::extract_after(char c) const {
    my_string after;
    after = c_str() + (find_first_of(c) + 1);
    return after;
}

my_string my_string::extract_sub_str(char c) {
    const std::string_view all = view();
    const std::size_t start = std::min(all.find_first_not_of(c), all.size());
    const std::size_t end = std::min(all.find(c, start), all.size());
    my_string field;
    field.append_text(all.data() + start, end - start);
    remove(0, static_cast<int>(end));
    return field;
}

// ---- streams

std::ostream& operator<<(std::ostream& os, const my_string& s) {
    return os << s.c_str();
}

std::istream& operator>>(std::istream& is, my_string& s) {
    s.empty();
    if (!readable(is)) return is;
    int c = look(is);
    while (c == ' ' || c == '\t') {
        is.rdbuf()->sbumpc();
        c = look(is);
    }
    if (c == kEndOfStream) is.setstate(std::ios_base::failbit);
    std::string token;
    while (c != kEndOfStream && c != '\n') {
        is.rdbuf()->sbumpc();
        if (c == ' ' || c == '\r' || c == kLastByte) break;
        if (c != '\0') token.push_back(static_cast<char>(c));
        c = look(is);
    }
    s.append_one_by_one(token);
    return is;
}

bool my_string::read_line(std::istream& is) {
    char line[kMaxTextLength];
    line[0] = '\0';
    is.getline(line, kMaxTextLength);
    *this = line;
    return true;
}

void my_string::read_to_delim(std::istream& is) {
    empty();
    if (!readable(is)) return;
    append_one_by_one(take_until(
        is, [](int c) { return c == ' ' || c == '\t' || c == '\n' || c == '\0' || c == kLastByte; }));
}

void my_string::read_to_delim(std::istream& is, char delim) {
    empty();
    if (!readable(is)) return;
    const int stop = static_cast<unsigned char>(delim);
    append_one_by_one(
        take_until(is, [stop](int c) { return c == stop || c == '\n' || c == '\0' || c == kLastByte; }));
}

void my_string::read_token(std::istream& is) {
    str = std::make_unique<char[]>(kDefaultCapacity);
    capacity = kDefaultCapacity;
    delta = kGrowthStep;
    len = 0;
    if (!readable(is)) return;
    const auto is_white = [](int c) { return c == ' ' || c == '\t' || c == '\n'; };
    while (is_white(look(is)))
        is.rdbuf()->sbumpc();
    const std::string token = take_until(is, is_white);
    if (token.size() > static_cast<std::size_t>(INT32_MAX) - 2 * kGrowthStep) return;
    const std::int32_t n = static_cast<std::int32_t>(token.size());
    // The buffer grows by delta whenever the text reaches the last place but one.
    std::int32_t recorded = capacity;
    if (n >= recorded - 1) recorded += delta * ((n - recorded + 1) / delta + 1);
    if (recorded != capacity) grow_keeping_text(recorded + 2, recorded);
    std::memcpy(str.get(), token.data(), token.size());
    cut_at(n);
}

bool my_string::GetNextQuota(std::istream& is) {
    if (!readable(is)) return false;
    int c = take(is);
    while (c != '"') {
        if (c == '\n' || c == kEndOfStream) return false;
        c = take(is);
    }
    std::string quoted;
    for (c = take(is); c != '"' && c != '\n' && c != kEndOfStream; c = take(is)) {
        if (c != '\0') quoted.push_back(static_cast<char>(c));
    }
    append_one_by_one(quoted);
    return c != '\n';
}

// ---- plain text

char* my_strcpy(char* target, const char* source) {
    std::memmove(target, source, std::strlen(source) + 1);
    return target;
}

char* my_strcat(char* target, const char* source) {
    my_strcpy(target + std::strlen(target), source);
    return target;
}

char* my_strrev(char* text) {
    constexpr std::size_t kLongestReversed = 3000;
    const std::size_t n = std::strlen(text);
    if (n <= kLongestReversed) std::reverse(text, text + n);
    return text;
}

char* my_strtok_right(char* text, char c) {
    char* const last = std::strrchr(text, c);
    if (last != nullptr) *last = '\0';
    return text;
}

void rm_mult_delim(const my_string& in, my_string& out, char c) {
    std::string collapsed;
    for (const char next : in.view()) {
        if (next != c || collapsed.empty() || collapsed.back() != c) collapsed.push_back(next);
    }
    out = collapsed.c_str();
}

void removePath(my_string& path) {
    const int slash = path.find_last_of('/');
    if (slash != 0) path.remove(0, slash + 1);
}

}  // namespace mnd
