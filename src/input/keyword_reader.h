// The language of a project file, and the two ways of reading it.
//
// A project file is a text of sections ("[Profile]", "[Data]"), subsections ("[[Samples]]"),
// lines `Keyword=value`, quoted values, blocks in braces, and comments from a number sign to
// the end of the line. Keywords are matched without regard to case, values with it.
//
// The line reader takes a line, looks for keywords anywhere in it, and is forgiving about
// layout. The token reader walks over the characters of the open stream; it serves the
// exploring of a project and the older syntax.
#pragma once

#include <array>
#include <fstream>
#include <initializer_list>
#include <istream>
#include <string_view>

#include "foundation/my_string.h"
#include "foundation/number_text.h"

namespace mnd {

// ---- Tables of the language

// Every keyword, in lower case; what is_identifier knows.
extern const std::array<const char*, 40> Identifiers;
// Names of the subsections, in lower case; get_next_subsection gives the index plus 1.
extern const std::array<const char*, 5> SubSections;

// What get_next_subsection gives.
enum SubSectionNumber : int {
    kNoSubSection = 0,
    kSubDistanceMatrix = 1,
    kSubHaplotypeDefinition = 2,
    kSubSamples = 3,
    kSubStructure = 4,
    kSubMantel = 5,
};

// ---- Line reader
//
// `keyword` is the keyword as the log shall show it, `line` the number of the line, from 1.
// A failure writes "\tProject file, Line #", the number and the reason to the log.

// Cuts the line at its first number sign, within quotes too.
void clearLineAfterPoundSign(my_string& text);

// False without "=" sign: warning 188.
bool checkForPresenceOfEqualSign(my_string const& text, char const* keyword, int line);

// The number behind the first "=" sign. False, with warning 190 and value untouched, when
// it is not finite or when anything, even a blank, stands behind it. Takes what strtod
// takes; an absent number is 0 only for the line's end, so `NbSamples=` is a bad value.
bool getValue(my_string const& text, double& value, char const* keyword, int line);

// Integer part of a value, cut to the range of an int; 0 for one that is no number.
int whole_part(double value);

// The text between the next pair of double quotes; between single quotes when no double quote
// stands behind the "=" sign, or when the value begins with a text in single quotes that holds
// one ('the "old" stock'). No escapes. The opening quote is the first of its kind in the whole
// line, so none may stand before the value.
// False with warning 190 and value untouched when a quote is missing.
bool getQuotedString(my_string const& text, my_string& value, char const* keyword, int line);

// All behind the first "=" sign, untrimmed; always true.
bool getUnQuotedString(my_string const& text, my_string& value, char const* keyword, int line);

// True when the name of an external file begins with a slash; other names are joined to
// the project's folder.
bool detectFullPathInFileName(my_string const& name);

// Copy of the text in upper case, to look for keywords in.
my_string upper_copy(my_string const& text);

// Whether the heading of a section, given in upper case such as "[MANTEL]", stands on the line in any
// case of letters. Between quotes of either kind it is part of a name; a quote that is not closed on
// the line hides nothing.
bool holds_heading(std::string_view line, std::string_view upper_heading);

// Reads the next line of a project file: raises line_no, cuts the comment, and strips a CR
// at the end. False when there was no line left to read, and when the line is longer than
// a text may be: then the stream is failed without being at its end.
bool read_project_line(std::istream& is, my_string& line, int& line_no);

// True when the last read_project_line failed because of the length of the line.
bool line_was_too_long(std::istream const& is);

// Passes over a subsection whatever braces and quotes it holds: reads lines until one holds
// one of the headings (see holds_heading) or the stream ends. That line is left in `line` for the
// caller to classify; at the end of the stream `line` is empty.
// Returns: true when a heading was met
bool pass_over_subsection(std::istream& is, std::initializer_list<const char*> headings, int& line_no,
                          my_string& line);

// ---- Token reader
//
// White space is blank, TAB, CR and LF unless told otherwise. All leave the stream behind
// what they took; a character that stopped them is put back.

// Whether c, a character or the end of a stream, is an ASCII letter or digit.
bool is_letter_or_digit(int c);

// Skips white space and comments up to a letter, digit, quote, "[", "}" or zero byte, which
// stays in the stream. True there and at the end of the stream; a stream that fails gives
// false, and so does any other character, with error 100.
bool skip_comments(std::istream& is);

// The lower-case keyword before the next "=" sign. False at a "[", which stays in the
// stream; false with ident "*" when the stream fails.
bool get_next_ident(std::istream& is, my_string& ident);

// True when the lower-case text is a keyword of the language.
bool is_identifier(my_string const& text);

// A text in double quotes (perhaps empty), one character in single quotes (else error
// 101), or a bare word, which ends at white space or a closing brace (the brace stays in
// the stream) and loses what follows a slash. False at any other character, which stays.
bool get_qstring(std::istream& is, my_string& text);

// The next character outside of white space and comments, left in the stream; -1 at its end.
int peek_beyond_comments(std::istream& is);

// A character in quotes on this line; false when none follows.
bool get_qchar(std::istream& is, char& c);

// A whole number without sign on this line; false when none follows.
bool get_int(std::istream& is, int& value);

// What stands on this line up to white space, which stays; false when the line ends first.
bool get_plain_word(std::istream& is, my_string& word);

// A word on this line, in lower case; false when the line ends or another character comes.
bool get_word(std::istream& is, my_string& word);

// True when nothing but white space and perhaps a comment is left on this line.
bool test_end_of_line(std::istream& is);

// Goes to the next subsection and gives its number (see SubSectionNumber), its lower-case
// name in `name`. 0 at the end of the stream, for an unknown name (error 105), and for a
// section in single brackets (error 104). Of a comment, and of the line behind a name, 80
// characters at most are dropped: what follows them is read as text.
int get_next_subsection(std::istream& is, my_string& name);

// Goes forward to a section, a subsection and a keyword, each at the beginning of a line, in any
// case of letters; an empty one skips its level. The stream is then behind the bracket or the "=" sign.
// False with error 102 when it is not found; the stream's state is then cleared, so that
// callers must not test fail() afterwards.
bool position_after(std::istream& is, my_string section, my_string subsection, my_string keyword);
bool go_to_section(std::istream& is, my_string section);
bool go_to_sub_section(std::istream& is, my_string subsection);

// A whole number, sign allowed; -1 on failure.
long read_directive_value(std::istream& is);
// A lower-case token, cut to kDirectiveBuffer bytes with its zero; true while the stream is good.
inline constexpr int kDirectiveBuffer = 400;
bool read_directive_my_string(std::istream& is, char* buffer);

// ---- Single values for a front end; each opens the file and reads behind the keyword.
// On failure: error 103, and -1 or the default.

int get_mnd_profile_int(char const* file_name, my_string section, my_string subsection, my_string keyword,
                        int default_value);
my_string get_mnd_profile_my_string(char const* file_name, my_string section, my_string subsection,
                                    my_string keyword, my_string default_value);
char get_mnd_profile_char(char const* file_name, my_string section, my_string subsection, my_string keyword,
                          char default_value);

// ---- Numbers written as text

// Write the number's decimal text into the buffer, which must have room for 12 and 48
// bytes; return the buffer. The last argument has no effect.
char* my_itoa(int value, char* buffer, int format);
char* my_ftoa(float value, char* buffer, float format);

// ---- The ini file of a front end; no part of a run.
class IniFile {
public:
    // Does nothing.
    void read_ini();
    // Writes the template "Mendrake.ini" into the working directory; error 99 when that fails.
    void write_ini();
};
extern IniFile INIFILE;

}  // namespace mnd
