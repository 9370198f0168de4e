#include "input/keyword_reader.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>

#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "run/errors.h"

namespace mnd {

const std::array<const char*, 40> Identifiers = {"recessiveallele",    "datatype",      "distmat",
                                                 "distmatlabel",       "exthaplfile",   "frequency",
                                                 "genotypicdata",      "group",         "gameticphase",
                                                 "hapllabels",         "hapllistname",  "hapllist",
                                                 "individuallevel",    "interleave",    "labelposition",
                                                 "locilabels",         "locuslisting",  "locusseparator",
                                                 "matrixname",         "matrixsize",    "matrixdata",
                                                 "missingdata",        "nbgroups",      "nbloci",
                                                 "nbsamples",          "sampledata",    "samplename",
                                                 "samplesize",         "structurename", "title",
                                                 "usedhapllist",       "recessivedata", "compdistmatrix",
                                                 "frequencythreshold", "epsilonvalue",  "distmatmantel",
                                                 "usedymatrixlabels",  "matrixnumber",  "ymatrix",
                                                 "ymatrixlabels"};

const std::array<const char*, 5> SubSections = {"distancematrix", "haplotypedefinition", "samples",
                                                "structure", "mantel"};

IniFile INIFILE;

namespace {

// Room that callers of my_itoa and my_ftoa give.
constexpr std::size_t kIntegerBuffer = 12;
constexpr std::size_t kFloatBuffer = 48;

// ---- Lines

std::ostream& log_at_line(int line) {
    return *_AOS_ << "\tProject file, Line #" << line;
}

bool bad_value() {
    report(Warning, "readStringContent(...)", kBadKeywordValue);
    return false;
}

std::string_view behind_equal_sign(my_string const& text) {
    std::string_view all = text.view();
    const std::size_t sign = all.find('=');
    return sign == std::string_view::npos ? all : all.substr(sign + 1);
}

// The kind of quotes that a value stands in: double quotes if it holds any, unless they belong to
// a text in single quotes.
char quote_of(std::string_view value) {
    const std::size_t double_quote = value.find('"');
    if (double_quote == std::string_view::npos) return '\'';
    const std::size_t start = value.find_first_not_of(" \t");
    if (value[start] != '\'') return '"';
    const std::size_t end = value.find('\'', start + 1);
    return end != std::string_view::npos && end > double_quote ? '\'' : '"';
}

my_string text_of(std::string_view part) {
    return my_string(std::string(part).c_str());
}

// The text with a blank for all that stands between two quotes of a kind.
std::string without_quoted_parts(std::string_view text) {
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool is_quote = text[at] == '"' || text[at] == '\'';
        const std::size_t closing = is_quote ? text.find(text[at], at + 1) : std::string_view::npos;
        const bool is_quoted = closing != std::string_view::npos;
        plain += is_quoted ? ' ' : text[at];
        if (is_quoted) at = closing;
    }
    return plain;
}

// ---- Characters of a stream

constexpr int kEnd = std::char_traits<char>::eof();

bool is_white(int c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
bool is_digit(int c) {
    return c >= '0' && c <= '9';
}
bool is_graphic(int c) {
    return c > 0x20 && c < 0x7f;
}

// What get_next_subsection drops at most of a comment, and of a line behind a name.
constexpr std::streamsize kDroppedAtMost = 80;

void drop_rest_of_line(std::istream& is) {
    is.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
}

// The next graphic character of this line, left in the stream; LF when the line ends first
// (it is consumed), kEnd at the end of the stream.
int next_on_line(std::istream& is) {
    for (int c = is.peek(); c != kEnd; c = is.peek()) {
        if (is_graphic(c)) return c;
        is.get();
        if (c == '\n') return '\n';
    }
    return kEnd;
}

// Consumes up to and with the next "[" that is in no comment.
bool go_behind_any_bracket(std::istream& is) {
    for (int c = is.get(); c != kEnd; c = is.get()) {
        if (c == '#') is.ignore(kDroppedAtMost, '\n');
        if (c == '[') return true;
    }
    return false;
}

// Consumes what is left of this line and further lines, up to and with a "[" that begins one of
// them. Brackets within a value are none.
bool go_behind_heading_bracket(std::istream& is) {
    for (int c = peek_beyond_comments(is); c != kEnd; c = peek_beyond_comments(is)) {
        is.get();
        if (c == '[') return true;
        drop_rest_of_line(is);
    }
    return false;
}

// What stands up to the "]" on this line, in lower case; one more "]" is consumed.
my_string bracketed_name(std::istream& is) {
    my_string name;
    name.read_to_delim(is, ']');
    if (is.peek() == ']') is.get();
    name.to_lower();
    return name;
}

// Cuts a keyword at the blank before its "=" sign and lowers it.
void tidy_keyword(my_string& keyword) {
    const std::size_t blank = keyword.view().find_first_of(" \t");
    if (blank != std::string_view::npos) keyword.remove(static_cast<int>(blank), keyword.length());
    keyword.to_lower();
}

bool is_not_found(std::istream& is, const char* stage) {
    is.clear();
    report(Error, stage, kProfileSectionNotFound);
    return false;
}

bool find_section(std::istream& is, my_string const& section) {
    while (go_behind_heading_bracket(is)) {
        if (bracketed_name(is) == section) return true;
        drop_rest_of_line(is);
    }
    return is_not_found(is, "position_after() (1)");
}

bool find_subsection(std::istream& is, my_string const& subsection) {
    while (go_behind_heading_bracket(is)) {
        if (is.peek() != '[') return is_not_found(is, "position_after() (3)");
        is.get();
        if (bracketed_name(is) == subsection) return true;
        drop_rest_of_line(is);
    }
    return is_not_found(is, "position_after() (2)");
}

// Reads the text of this line up to its "=" sign, which is consumed.
// Returns: false when the line has none; its end is then consumed
bool read_up_to_equal_sign(std::istream& is, my_string& text) {
    std::string read;
    for (int c = is.get(); c != kEnd && c != '\n'; c = is.get()) {
        if (c == '=') {
            text = text_of(read);
            return true;
        }
        read += static_cast<char>(c);
    }
    return false;
}

bool find_keyword(std::istream& is, my_string const& keyword) {
    for (;;) {
        const int c = peek_beyond_comments(is);
        if (c == '[') return is_not_found(is, "position_after() (5)");
        if (c == kEnd) return is_not_found(is, "position_after() (4)");
        my_string found;
        if (!read_up_to_equal_sign(is, found)) continue;
        tidy_keyword(found);
        if (found == keyword) return true;
        drop_rest_of_line(is);
    }
}

// A bare word up to white space or a closing brace, which stays in the stream. What follows
// a slash is dropped.
my_string bare_word(std::istream& is) {
    std::string word;
    for (int c = is.peek(); c != kEnd; c = is.peek()) {
        if (c == '}' || c == '\n') break;
        is.get();
        if (c == ' ' || c == '\t' || c == '\r' || c == 0xff) break;
        word += static_cast<char>(c);
    }
    return text_of(std::string_view(word).substr(0, word.find('/')));
}

}  // namespace

// ---- Line reader

void clearLineAfterPoundSign(my_string& text) {
    const int sign = text.find_first_of('#');
    if (sign >= 0) text.remove(sign, text.length() - sign);
}

bool checkForPresenceOfEqualSign(my_string const& text, char const* keyword, int line) {
    if (text.contains('=')) return true;
    report(Warning, "checkForPresenceOfEqualSign(...)", kMissingEqualSign);
    log_at_line(line) << " : Missing equal sign after keyword '" << keyword << "'\n";
    return false;
}

bool getValue(my_string const& text, double& value, char const* keyword, int line) {
    const std::string number(behind_equal_sign(text));
    char* end = nullptr;
    const double read = std::strtod(number.c_str(), &end);
    const bool whole = end != number.c_str() && end == number.c_str() + number.size();
    if (whole && std::isfinite(read)) {
        value = read;
        return true;
    }
    log_at_line(line) << " : Bad value after keyword '" << keyword << "'\n";
    return bad_value();
}

int whole_part(double value) {
    if (std::isnan(value)) return 0;
    constexpr double kLowest = std::numeric_limits<int>::min();
    constexpr double kHighest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(value, kLowest, kHighest));
}

bool getQuotedString(my_string const& text, my_string& value, char const* keyword, int line) {
    const std::string_view behind = behind_equal_sign(text);
    const char quote = quote_of(behind);
    if (behind.find(quote) == std::string_view::npos) {
        log_at_line(line) << " : No open quote after keyword '" << keyword << "'\n";
        return bad_value();
    }
    const std::string_view all = text.view();
    const std::size_t opening = all.find(quote);
    const std::size_t closing = all.find(quote, opening + 1);
    if (closing == std::string_view::npos) {
        log_at_line(line) << " : Opened quote not closed after keyword '" << keyword
                          << "'. Unable to assign value to key...\n";
        return bad_value();
    }
    value = text_of(all.substr(opening + 1, closing - opening - 1));
    return true;
}

bool getUnQuotedString(my_string const& text, my_string& value, [[maybe_unused]] char const* keyword,
                       [[maybe_unused]] int line) {
    value = text_of(behind_equal_sign(text));
    return true;
}

bool detectFullPathInFileName(my_string const& name) {
    return name.view().starts_with('/');
}

my_string upper_copy(my_string const& text) {
    my_string upper = text;
    upper.to_upper();
    return upper;
}

bool holds_heading(std::string_view line, std::string_view upper_heading) {
    std::string plain = without_quoted_parts(line);
    for (char& c : plain) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return plain.find(upper_heading) != std::string::npos;
}

bool read_project_line(std::istream& is, my_string& line, int& line_no) {
    line.read_line(is);
    const bool nothing_left = is.fail() && line.is_null();
    if (nothing_left || line_was_too_long(is)) return false;
    ++line_no;
    if (line.view().ends_with('\r')) line.remove(line.length() - 1, 1);
    clearLineAfterPoundSign(line);
    return true;
}

bool line_was_too_long(std::istream const& is) {
    return is.fail() && !is.eof() && !is.bad();
}

bool pass_over_subsection(std::istream& is, std::initializer_list<const char*> headings, int& line_no,
                          my_string& line) {
    while (read_project_line(is, line, line_no)) {
        const auto stands_here = [&line](const char* heading) { return holds_heading(line.view(), heading); };
        if (std::any_of(headings.begin(), headings.end(), stands_here)) return true;
    }
    line = "";
    return false;
}

// ---- Token reader

int peek_beyond_comments(std::istream& is) {
    for (int c = is.peek(); c != kEnd; c = is.peek()) {
        if (c == '#') {
            drop_rest_of_line(is);
        } else if (c == '\0' || is_graphic(c)) {
            return c;
        } else {
            is.get();
        }
    }
    return kEnd;
}

bool is_letter_or_digit(int c) {
    return is_digit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool skip_comments(std::istream& is) {
    if (is.eof()) return true;
    const int c = peek_beyond_comments(is);
    if (c == kEnd) {
        is.setstate(std::ios_base::failbit);
        return false;
    }
    if (is_letter_or_digit(c) || c == '"' || c == '\'' || c == '[' || c == '}' || c == '\0') return true;
    is.get();
    *_AOS_ << " ** a_public::skip_comments_l_253:the character is not the expected one c:"
           << static_cast<char>(c) << '\n';
    std::array<char, 64> origin{};
    std::snprintf(origin.data(), origin.size(), "skip_comments(ifstream& ifs) (\"%c\")", c);
    report(Error, origin.data(), kInvalidInputCharacter);
    return false;
}

bool get_next_ident(std::istream& is, my_string& ident) {
    skip_comments(is);
    int c = peek_beyond_comments(is);
    for (; c != kEnd && !is_letter_or_digit(c); c = peek_beyond_comments(is)) {
        if (c == '[') return false;
        is.get();
    }
    if (c != kEnd) {
        ident.read_to_delim(is, '=');
        tidy_keyword(ident);
        if (!is.fail()) return true;
    }
    ident = "*";
    return false;
}

bool is_identifier(my_string const& text) {
    return std::any_of(Identifiers.begin(), Identifiers.end(),
                       [&text](const char* known) { return text == known; });
}

bool get_qstring(std::istream& is, my_string& text) {
    int c = is.peek();
    for (; is_white(c) || c == '\v' || c == '\f'; c = is.peek())
        is.get();
    if (c == '"') {
        is.get();
        text.read_to_delim(is, '"');
        return !is.fail();
    }
    if (c == '\'') {
        is.get();
        text.read_to_delim(is, '\'');
        if (text.length() <= 1) return !is.fail();
        report(Error, "get_qstring(ifstream& ifs, my_string& s)", kUnreadableInputCharacter);
        return false;
    }
    if (c == kEnd || !is_letter_or_digit(c)) return false;
    text = bare_word(is);
    return true;
}

bool get_qchar(std::istream& is, char& c) {
    const int opening = next_on_line(is);
    if (opening != '"' && opening != '\'') return false;
    is.get();
    const int value = is.get();
    const int closing = is.peek();
    if (closing != '"' && closing != '\'') return false;
    is.get();
    c = static_cast<char>(value);
    return true;
}

bool get_int(std::istream& is, int& value) {
    if (!is_digit(next_on_line(is))) return false;
    int read = 0;
    if (!(is >> read)) return false;
    value = read;
    return true;
}

bool get_plain_word(std::istream& is, my_string& word) {
    while (is.peek() == ' ' || is.peek() == '\t')
        is.get();
    std::string read;
    for (int c = is.peek(); c != kEnd && !is_white(c); c = is.peek())
        read += static_cast<char>(is.get());
    word = text_of(read);
    return !read.empty();
}

bool get_word(std::istream& is, my_string& word) {
    const int c = next_on_line(is);
    if (c == '#') drop_rest_of_line(is);
    if (!is_letter_or_digit(c)) return false;
    word.read_token(is);
    word.to_lower();
    return true;
}

bool test_end_of_line(std::istream& is) {
    const int c = next_on_line(is);
    if (c == '#') drop_rest_of_line(is);
    return c == '#' || c == '\n' || c == kEnd;
}

int get_next_subsection(std::istream& is, my_string& name) {
    if (!go_behind_any_bracket(is)) {
        is.clear();
        return kNoSubSection;
    }
    if (is.peek() != '[') {
        is.clear();
        report(Error, "get_next_subsection()", kUnreadableSubsectionId);
        return kNoSubSection;
    }
    is.get();
    name.read_to_delim(is, ']');
    name.to_lower();
    is.ignore(kDroppedAtMost, '\n');
    const auto known = std::find_if(SubSections.begin(), SubSections.end(),
                                    [&name](const char* one) { return name == one; });
    if (known != SubSections.end()) return static_cast<int>(known - SubSections.begin()) + 1;
    std::array<char, kDirectiveBuffer> origin{};
    std::snprintf(origin.data(), origin.size(), "get_next_subsection() (\"%s\"", name.c_str());
    report(Error, origin.data(), kNumericalError);  // the text does not fit; the number stands
    return kNoSubSection;
}

bool position_after(std::istream& is, my_string section, my_string subsection, my_string keyword) {
    section.to_lower();
    subsection.to_lower();
    keyword.to_lower();
    if (!section.is_null() && !find_section(is, section)) return false;
    if (!subsection.is_null() && !find_subsection(is, subsection)) return false;
    return keyword.is_null() || find_keyword(is, keyword);
}

bool go_to_section(std::istream& is, my_string section) {
    return position_after(is, section, "", "");
}

bool go_to_sub_section(std::istream& is, my_string subsection) {
    return position_after(is, "", subsection, "");
}

long read_directive_value(std::istream& is) {
    long value = 0;
    return is >> value ? value : -1;
}

bool read_directive_my_string(std::istream& is, char* buffer) {
    my_string token;
    token.read_token(is);
    token.to_lower();
    std::snprintf(buffer, kDirectiveBuffer, "%s", token.c_str());
    return is.good();
}

// ---- Single values

namespace {

// Opens the file and goes behind the keyword; error 103 from `reader` when it can't.
bool open_behind_keyword(std::ifstream& is, char const* file_name, my_string const& section,
                         my_string const& subsection, my_string const& keyword, const char* reader) {
    is.open(file_name);
    if (is.is_open() && position_after(is, section, subsection, keyword)) return true;
    report(Error, reader, kCannotOpenInputFile);
    return false;
}

}  // namespace

int get_mnd_profile_int(char const* file_name, my_string section, my_string subsection, my_string keyword,
                        [[maybe_unused]] int default_value) {
    std::ifstream is;
    if (!open_behind_keyword(is, file_name, section, subsection, keyword, "get_mnd_profile_int()")) return -1;
    int value = 0;
    if (is >> value) return value;
    report(Error, "get_mnd_profile_int()", kCannotOpenInputFile);
    return -1;
}

my_string get_mnd_profile_my_string(char const* file_name, my_string section, my_string subsection,
                                    my_string keyword, my_string default_value) {
    std::ifstream is;
    const char* const self = "get_mnd_profile_my_string()";
    if (!open_behind_keyword(is, file_name, section, subsection, keyword, self)) return default_value;
    my_string value;
    if (get_qstring(is, value)) return value;
    report(Error, self, kCannotOpenInputFile);
    return default_value;
}

char get_mnd_profile_char(char const* file_name, my_string section, my_string subsection, my_string keyword,
                          char default_value) {
    std::ifstream is;
    const char* const self = "get_mnd_profile_char()";
    if (!open_behind_keyword(is, file_name, section, subsection, keyword, self)) return default_value;
    char value = default_value;
    if (get_qchar(is, value)) return value;
    report(Error, self, kCannotOpenInputFile);
    return default_value;
}

// ---- Numbers written as text

char* my_itoa(int value, char* buffer, [[maybe_unused]] int format) {
    std::snprintf(buffer, kIntegerBuffer, "%d", value);
    return buffer;
}

char* my_ftoa(float value, char* buffer, [[maybe_unused]] float format) {
    std::snprintf(buffer, kFloatBuffer, "%g", static_cast<double>(value));
    return buffer;
}

// ---- The ini file

void IniFile::read_ini() {}

void IniFile::write_ini() {
    std::ofstream ini("Mendrake.ini");
    if (!ini) {
        report(Error, "IniFile::write_ini()", kCannotOpenIniFile);
        return;
    }
    ini << "[Mendrake]\nVersion=\n\n"
           "[Directories]\nProjectDirectory=\nResultDirectory=\n\n"
           "[Startup]\nLastProject=\n\n"
           "[Project]\nTitle=\n\n"
           "[options]\n"
           "SaveProject=1\n"
           "PrintHaploDataInSamples=1\n"
           "PrettyPrintDistMat=1\n"
           "GenerateLogFile=1\n";
}

}  // namespace mnd
