// The text class of the system: names, paths, tokens and messages.
//
// Its limits and its forgiving ways are part of how the system behaves: a text that is too
// long is dropped without a word, and several searches answer a miss in their own manner
// (see each of them). Characters are plain bytes; case mapping touches ASCII letters only.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string_view>

namespace mnd {

// Longest text that assignments and appends accept; a constructor refuses this very length.
inline constexpr std::int32_t kMaxTextLength = 150000;

// Index that spells "not found" wherever a lookup in a container fails.
inline constexpr int kNotFoundIndex = 2147483647;

class my_string {
public:
    std::unique_ptr<char[]> str;      // owned: the text, ended by a zero byte; null only after a move
    std::int32_t delta = 100;         // growth step of single-character appends
    std::int32_t len = 0;             // length of the text, always in step with it
    std::int32_t capacity = 0;        // recorded size of the buffer, never above the allocated one
    std::unique_ptr<char[]> scratch;  // owned: the old text while the buffer grows, else null

    // The empty text in a buffer of 10 bytes.
    my_string();
    // The text of a zero-ended array; one of 150000 characters or more, or a null pointer,
    // gives the empty text.
    my_string(const char* text);  // NOLINT: implicit on purpose, texts are written as literals
    // Default state, then assignment: the capacity of the source is not taken over.
    my_string(const my_string& other);
    // Takes the buffer; the source is left empty and may be assigned to or destroyed.
    my_string(my_string&& other) noexcept;
    ~my_string() = default;

    // Read access.
    const char* c_str() const { return str ? str.get() : ""; }
    std::int32_t length() const { return len; }
    std::string_view view() const { return {c_str(), static_cast<std::size_t>(len)}; }
    // Unchecked character, 0 <= i <= length() (the last is the zero byte).
    char operator[](std::int32_t i) const { return c_str()[i]; }
    bool is_null() const { return len == 0; }

    // Assignment. A text of more than 150000 characters is ignored: the old text stays.
    // The buffer grows to the exact need and never shrinks. A null pointer is the empty text.
    my_string& operator=(const my_string& other);
    my_string& operator=(const char* text);
    my_string& operator=(const char& c);
    my_string& operator=(int value);     // as "%d"
    my_string& operator=(double value);  // as "%f"

    // Append. When the sum would exceed 150000 characters nothing is appended.
    // Texts grow the buffer to the exact need, a character grows it by delta.
    my_string& operator+=(const my_string& other);
    my_string& operator+=(const char* text);
    my_string& operator+=(char c);

    // Makes room for n characters when the text is shorter than n; the text stays.
    void extendSize(const int& n);

    // Searches. Patterns are case-sensitive; an empty pattern never occurs.
    bool contains(char c) const;
    bool contains(const char* pattern) const;
    bool contains(const my_string& pattern) const;
    // First index of c, or -1.
    int find_first_of(const char& c) const;
    // -1 when pos exceeds the length; else the search starts at index 0 all the same.
    // Kept on purpose. Test: MyString.FindFirstOfPositionOnlyGatesTheSearch
    int find_first_of(const char& c, int pos) const;
    // Last index of c; the length of the text, not -1, when c is absent.
    int find_last_of(const char& c) const;
    // FIRST index of the pattern in spite of the name; -1 when absent or empty.
    int rfind(const my_string& pattern) const;

    // Cuts n characters at pos; nothing when n <= 0, pos < 0 or pos behind the text.
    void remove(int pos, int n);
    void remove_blanks();      // every blank and TAB
    void remove_eol_and_lf();  // every LF and CR
    void reverse_string();

    // Mapping of ASCII letters, in place.
    void Upper();
    void Lower();
    void to_upper() { Upper(); }
    void to_lower() { Lower(); }

    // Mapping of path characters, in place.
    void convert_to_slash();                              // backslash to slash
    void convert_to_html_slash() { convert_to_slash(); }  // the same under a second name
    void convert_to_backslash();                          // slash to backslash
    void convert_to_underline();                          // slash, colon and backslash to "_"
    void convert_dot_to_underline();                      // point to "_"
    my_string convert_blank_to_underline() const;         // copy, blank to "_"
    my_string convert_blank_to_linux_blank() const;       // copy, blank to backslash and blank
    my_string convert_blank_to_html_blank() const;        // copy, blank to "%20"

    // Keeps all up to and with the last slash or backslash; without one nothing is kept.
    void extract_path();
    // Deletes all up to and with the last slash or backslash; without one all stays.
    void rm_path();
    // Takes the extension (from the last point on) and cuts the text at the FIRST place
    // where it occurs: "a.txt.txt" becomes "a". Without a point the text stays.
    void remove_extension();
    // Text before the first c, or all of it; this text stays.
    my_string extract_before(char c) const;
    // Text behind the first c, or all of it; this text stays.
    my_string extract_after(char c) const;
    // Splits off the next field of a line delimited by c: skips leading c, returns what
    // stands up to the next c, and leaves that c and all behind it here.
    // Costs one move of the rest: to walk over a very long line, scan view() instead.
    my_string extract_sub_str(char c);

    // Stream input. At the end of a stream a text simply ends there and eofbit is set;
    // failbit too when nothing at all was read. Zero bytes inside a text are dropped.

    // One line without its LF, at most 149999 characters; always true. A CR at the end
    // stays, a zero byte ends the text. A longer line gives its first 149999 characters and
    // sets failbit: a loop over lines must test the stream, not only its end.
    bool read_line(std::istream& is);
    // Up to a blank, TAB, LF, zero byte or byte 255, which is consumed. A CR does not stop.
    // A stream that is failed already gives the empty text.
    void read_to_delim(std::istream& is);
    // Up to delim, LF, zero byte or byte 255, which is consumed.
    void read_to_delim(std::istream& is, char delim);
    // Skips blanks, TABs and LFs, then reads up to the next of them, which is consumed.
    // No limit of length. Starts from the default state: the old buffer is given up.
    void read_token(std::istream& is);
    // Appends the text between the next two double quotes of this line.
    // False: no quote on this line, a failed stream, or an LF inside the quotes (what was
    // read of it stays appended). A stream that ends inside the quotes gives true.
    bool GetNextQuota(std::istream& is);

private:
    friend std::istream& operator>>(std::istream& is, my_string& s);

    char* text() { return str.get(); }
    void set_text(const char* source, std::int32_t n);
    void append_text(const char* source, std::size_t n);
    void append_one_by_one(std::string_view characters);
    void grow_keeping_text(std::int32_t allocated, std::int32_t recorded);
    void empty();
    void cut_at(std::int32_t pos);
    void replace_all(char from, char to);
    void remove_all_of(char a, char b);
    std::int32_t last_path_mark() const;
};

// The joined text; the empty text when it would exceed 150000 characters.
my_string operator+(const my_string& a, const my_string& b);
my_string operator+(const my_string& a, const char* b);

// Comparison by bytes.
bool operator==(const my_string& a, const my_string& b);
bool operator==(const my_string& a, const char* b);
std::strong_ordering operator<=>(const my_string& a, const my_string& b);
std::strong_ordering operator<=>(const my_string& a, const char* b);

std::ostream& operator<<(std::ostream& os, const my_string& s);
// Skips blanks and TABs, then reads up to a blank, CR, LF or byte 255. The LF is left in
// the stream, the others are consumed. A TAB behind the first character belongs to the token.
std::istream& operator>>(std::istream& is, my_string& s);

// Hash for unordered containers keyed by texts; with std::equal_to<> as the comparison a
// container can be searched by a my_string, a string_view or a literal without a copy.
struct MyStringHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
    std::size_t operator()(const my_string& text) const { return (*this)(text.view()); }
    std::size_t operator()(const char* text) const { return (*this)(std::string_view(text)); }
};

// Copies source with its zero byte to target, which must have room; returns target.
char* my_strcpy(char* target, const char* source);
// Appends source to target, which must have room; returns target.
char* my_strcat(char* target, const char* source);
// Reverses in place a text of 1 to 3000 characters; a longer one stays as it is.
char* my_strrev(char* text);
// Cuts the text at its last c; without one the text stays. Returns the text.
char* my_strtok_right(char* text, char c);
// Copies in to out, each run of c as a single c.
void rm_mult_delim(const my_string& in, my_string& out, char c);
// Deletes all up to and with the last slash. A text without a slash becomes empty, one
// whose only slash stands at index 0 stays: kept on purpose.
// Test: MyStringFree.RemovePathEmptiesATextWithoutSlash
void removePath(my_string& path);

}  // namespace mnd
