#include "input/keyword_reader.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "support/captured_log.h"
#include "support/captured_reports.h"
#include "support/temp_folder.h"

namespace {

using namespace mnd;
using mnd_test::CapturedLog;
using mnd_test::CapturedReports;
using mnd_test::InTempFolder;
using mnd_test::read_text;
using mnd_test::Report;
using mnd_test::write_text;

// Runs a reader and keeps what it says.
class LineReader : public ::testing::Test {
protected:
    CapturedLog log;
    CapturedReports reports;
};
using TokenReader = LineReader;

std::string rest(std::istream& is) {
    std::ostringstream text;
    text << is.rdbuf();
    return text.str();
}

// ---- Lines

TEST_F(LineReader, PoundSignCutsWithinQuotesToo) {
    my_string line("Title=\"a # b\"");
    clearLineAfterPoundSign(line);
    EXPECT_EQ(line.view(), "Title=\"a ");
    my_string value("before");
    EXPECT_FALSE(getQuotedString(line, value, "Title", 3));
    EXPECT_EQ(value.view(), "before");
    EXPECT_EQ(log.text(),
              "\tProject file, Line #3 : Opened quote not closed after keyword 'Title'. "
              "Unable to assign value to key...\n");
}

TEST_F(LineReader, LineWithoutPoundSignStays) {
    my_string line("NbSamples=3");
    clearLineAfterPoundSign(line);
    EXPECT_EQ(line.view(), "NbSamples=3");
}

TEST_F(LineReader, MissingEqualSignIsWarning188) {
    EXPECT_FALSE(checkForPresenceOfEqualSign("NbSamples 3", "NbSamples", 12));
    EXPECT_EQ(log.text(), "\tProject file, Line #12 : Missing equal sign after keyword 'NbSamples'\n");
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Warning, "checkForPresenceOfEqualSign(...)", 188}));
}

TEST_F(LineReader, EqualSignAnywhereIsEnough) {
    EXPECT_TRUE(checkForPresenceOfEqualSign("NbSamples = 3", "NbSamples", 1));
    EXPECT_TRUE(reports.all().empty());
    EXPECT_EQ(log.text(), "");
}

TEST_F(LineReader, GetValueTakesWhatStrtodTakes) {
    double value = 0.0;
    EXPECT_TRUE(getValue("x=1e3", value, "x", 1));
    EXPECT_EQ(value, 1000.0);
    EXPECT_TRUE(getValue("x = -2.5", value, "x", 1));
    EXPECT_EQ(value, -2.5);
    EXPECT_TRUE(getValue("x=0x10", value, "x", 1));
    EXPECT_EQ(value, 16.0);
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(LineReader, GetValueRefusesAnythingBehindTheNumber) {
    double value = 7.0;
    for (const char* text : {"x=1 ", "x=1\r", "x=1.5x", "x=abc", "x=", "x= ", "x=inf", "x=-1e999", "x=nan"}) {
        EXPECT_FALSE(getValue(text, value, "x", 1)) << text;
    }
    EXPECT_EQ(value, 7.0);
    EXPECT_EQ(reports.all().size(), 9u);
    EXPECT_EQ(reports.all()[0], (Report{Warning, "readStringContent(...)", 190}));
    EXPECT_TRUE(log.text().starts_with("\tProject file, Line #1 : Bad value after keyword 'x'\n"));
}

TEST_F(LineReader, WholePartIsCutToTheRangeOfAnInt) {
    EXPECT_EQ(whole_part(3.99), 3);
    EXPECT_EQ(whole_part(-3.99), -3);
    EXPECT_EQ(whole_part(1e300), 2147483647);
    EXPECT_EQ(whole_part(-1e300), -2147483647 - 1);
    EXPECT_EQ(whole_part(std::stod("nan")), 0);
}

TEST_F(LineReader, QuotedStringInEitherKindOfQuotes) {
    my_string value;
    EXPECT_TRUE(getQuotedString("Title = \"two words\" rest", value, "Title", 1));
    EXPECT_EQ(value.view(), "two words");
    EXPECT_TRUE(getQuotedString("Title='single'", value, "Title", 1));
    EXPECT_EQ(value.view(), "single");
    EXPECT_TRUE(getQuotedString("Title=\"\"", value, "Title", 1));
    EXPECT_EQ(value.view(), "");
}

TEST_F(LineReader, SingleQuotesMayHoldDoubleOnes) {
    my_string value;
    EXPECT_TRUE(getQuotedString("Title= 'the \"old\" stock' rest", value, "Title", 1));
    EXPECT_EQ(value.view(), "the \"old\" stock");
    EXPECT_TRUE(getQuotedString("Title=\"it's 'it'\"", value, "Title", 1));
    EXPECT_EQ(value.view(), "it's 'it'");
    EXPECT_TRUE(reports.all().empty());
}

// Single quotes that do not enclose the double ones are plain characters.
TEST_F(LineReader, DoubleQuotesGoFirstElsewhere) {
    my_string value;
    for (const char* line : {"Title='it is \"it\"", "Title=is' \"it\"'", "Title='is' \"it\""}) {
        EXPECT_TRUE(getQuotedString(line, value, "Title", 1)) << line;
        EXPECT_EQ(value.view(), "it") << line;
    }
}

TEST_F(LineReader, QuotedStringStartsAtTheFirstQuoteOfTheWholeLine) {
    my_string value;
    EXPECT_TRUE(getQuotedString("a \"b\" Title=\"c\"", value, "Title", 1));
    EXPECT_EQ(value.view(), "b");
}

TEST_F(LineReader, MissingOpenQuoteIsWarning190) {
    my_string value;
    EXPECT_FALSE(getQuotedString("Title=plain", value, "Title", 9));
    EXPECT_EQ(log.text(), "\tProject file, Line #9 : No open quote after keyword 'Title'\n");
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Warning, "readStringContent(...)", 190}));
}

TEST_F(LineReader, UnquotedStringIsUntrimmed) {
    my_string value;
    EXPECT_TRUE(getUnQuotedString("Frequency= ABS ", value, "Frequency", 1));
    EXPECT_EQ(value.view(), " ABS ");
}

TEST_F(LineReader, OnlyALeadingSlashMakesAFullPath) {
    EXPECT_TRUE(detectFullPathInFileName("/data/x.hap"));
    EXPECT_FALSE(detectFullPathInFileName("data/x.hap"));
    EXPECT_FALSE(detectFullPathInFileName(""));
}

TEST_F(LineReader, ProjectLinesAreCountedAndCut) {
    std::istringstream is("one # two\r\nthree\r\n\nlast");
    my_string line;
    int number = 0;
    EXPECT_TRUE(read_project_line(is, line, number));
    EXPECT_EQ(line.view(), "one ");
    EXPECT_TRUE(read_project_line(is, line, number));
    EXPECT_EQ(line.view(), "three");
    EXPECT_TRUE(read_project_line(is, line, number));
    EXPECT_EQ(line.view(), "");
    EXPECT_TRUE(read_project_line(is, line, number));
    EXPECT_EQ(line.view(), "last");
    EXPECT_EQ(number, 4);
    EXPECT_FALSE(read_project_line(is, line, number));
    EXPECT_EQ(number, 4);
    EXPECT_FALSE(line_was_too_long(is));
}

TEST_F(LineReader, OverLongLineIsToldFromTheEnd) {
    std::istringstream longest(std::string(149999, 'a') + "\nb\n");
    my_string line;
    int number = 0;
    EXPECT_TRUE(read_project_line(longest, line, number));
    EXPECT_EQ(line.length(), 149999);
    std::istringstream longer(std::string(150000, 'a') + "\nb\n");
    EXPECT_FALSE(read_project_line(longer, line, number));
    EXPECT_TRUE(line_was_too_long(longer));
}

TEST_F(LineReader, HeadingStandsOutsideOfQuotes) {
    for (const char* line : {"[MANTEL]", "  [[Mantel]] # x", "\"a\" [mantel]", "a \" [Mantel]",
                             "don't [Mantel]", "\"it's\" [Mantel] \"it's\""})
        EXPECT_TRUE(holds_heading(line, "[MANTEL]")) << line;
    for (const char* line : {"", "Mantel]", "[ Mantel]", "\"[Mantel]\"", "{ \"a\" \"the [Mantel]\" }",
                             "Title='a [Mantel]'", "'the \"old\" [Mantel]'", "\"don't\" '[Mantel]'"})
        EXPECT_FALSE(holds_heading(line, "[MANTEL]")) << line;
}

TEST_F(LineReader, SubsectionIsPassedOverWhateverBracesItHolds) {
    std::istringstream is("Group={ { \"[Mantel]\" \n}}}{ # [[Mantel]]\n\"x\n[[mantel]]\nrest");
    my_string line;
    int number = 10;
    EXPECT_TRUE(pass_over_subsection(is, {"[MANTEL]"}, number, line));
    EXPECT_EQ(line.view(), "[[mantel]]");
    EXPECT_EQ(number, 14);
    EXPECT_FALSE(pass_over_subsection(is, {"[MANTEL]"}, number, line));
    EXPECT_EQ(line.view(), "");
    EXPECT_EQ(number, 15);
}

// ---- Tokens

TEST_F(TokenReader, SkipCommentsStopsAtWhatBeginsSomething) {
    for (const char* stop : {"a", "7", "\"", "'", "[", "}"}) {
        std::istringstream is(std::string(" \t\r\n# all of { this = [x]\n#\n  ") + stop + "rest");
        EXPECT_TRUE(skip_comments(is)) << stop;
        EXPECT_EQ(rest(is), std::string(stop) + "rest");
    }
    std::istringstream zero(std::string(" \0b", 3));
    EXPECT_TRUE(skip_comments(zero));
    EXPECT_EQ(zero.peek(), 0);
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(TokenReader, SkipCommentsRefusesOtherCharacters) {
    std::istringstream is("  $a");
    EXPECT_FALSE(skip_comments(is));
    EXPECT_EQ(log.text(), " ** a_public::skip_comments_l_253:the character is not the expected one c:$\n");
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Error, "skip_comments(ifstream& ifs) (\"$\")", 100}));
    EXPECT_EQ(rest(is), "a");
}

TEST_F(TokenReader, SkipCommentsAtTheEnd) {
    std::istringstream is("   ");
    EXPECT_FALSE(skip_comments(is));
    EXPECT_TRUE(skip_comments(is));  // the stream is at its end by now
}

TEST_F(TokenReader, NextIdentIsLowerCaseAndCutAtItsBlank) {
    std::istringstream is("# c\n  NbSamples = 3\n;Title=\"x\"\n[Data]");
    my_string ident;
    EXPECT_TRUE(get_next_ident(is, ident));
    EXPECT_EQ(ident.view(), "nbsamples");
    int value = 0;
    EXPECT_TRUE(get_int(is, value));
    EXPECT_EQ(value, 3);
    EXPECT_TRUE(get_next_ident(is, ident));  // past a character that belongs nowhere
    EXPECT_EQ(ident.view(), "title");
    EXPECT_TRUE(get_qstring(is, ident));
    EXPECT_FALSE(get_next_ident(is, ident));
    EXPECT_EQ(is.peek(), '[');
}

TEST_F(TokenReader, NextIdentPassesOverCommentsBehindStrayCharacters) {
    std::istringstream is("} # Title=\"no\"\n) # [Data]\nNbLoci\t=4 } # [\n[[Samples]]");
    my_string ident;
    EXPECT_TRUE(get_next_ident(is, ident));
    EXPECT_EQ(ident.view(), "nbloci");
    is.get();
    EXPECT_FALSE(get_next_ident(is, ident));
    EXPECT_EQ(rest(is), "[[Samples]]");
}

TEST_F(TokenReader, NextIdentAtTheEndIsAStar) {
    std::istringstream is(" # nothing");
    my_string ident("old");
    EXPECT_FALSE(get_next_ident(is, ident));
    EXPECT_EQ(ident.view(), "*");
}

TEST_F(TokenReader, FortyIdentifiers) {
    EXPECT_EQ(Identifiers.size(), 40u);
    for (const char* known : Identifiers)
        EXPECT_TRUE(is_identifier(known)) << known;
    EXPECT_STREQ(Identifiers.front(), "recessiveallele");
    EXPECT_STREQ(Identifiers.back(), "ymatrixlabels");
    EXPECT_FALSE(is_identifier("Title"));
    EXPECT_FALSE(is_identifier("titles"));
    EXPECT_FALSE(is_identifier(""));
}

TEST_F(TokenReader, QuotedStrings) {
    std::istringstream is(" \t\r\n\"two words\" \"\" 'c' word rest/dropped {");
    my_string text;
    for (const char* expected : {"two words", "", "c", "word", "rest"}) {
        EXPECT_TRUE(get_qstring(is, text));
        EXPECT_EQ(text.view(), expected);
    }
    EXPECT_FALSE(get_qstring(is, text));
    EXPECT_EQ(is.peek(), '{');
}

TEST_F(TokenReader, TabEndsABareWord) {
    std::istringstream is("\tsample1\tsample2\t}");
    my_string text;
    EXPECT_TRUE(get_qstring(is, text));
    EXPECT_EQ(text.view(), "sample1");
    EXPECT_TRUE(get_qstring(is, text));
    EXPECT_EQ(text.view(), "sample2");
    EXPECT_FALSE(get_qstring(is, text));
}

TEST_F(TokenReader, PlainWordEndsAtWhiteSpace) {
    my_string word;
    std::istringstream is(" \t.5\t-9\r\n1");
    EXPECT_TRUE(get_plain_word(is, word));
    EXPECT_EQ(word.view(), ".5");
    EXPECT_TRUE(get_plain_word(is, word));
    EXPECT_EQ(word.view(), "-9");
    EXPECT_FALSE(get_plain_word(is, word));
    EXPECT_EQ(rest(is), "\r\n1");
}

TEST_F(TokenReader, BareWordEndsAtAClosingBrace) {
    std::istringstream is("sample1}rest");
    my_string text;
    EXPECT_TRUE(get_qstring(is, text));
    EXPECT_EQ(text.view(), "sample1");
    EXPECT_FALSE(get_qstring(is, text));
    EXPECT_EQ(rest(is), "}rest");
}

TEST_F(TokenReader, SingleQuotesHoldOneCharacter) {
    std::istringstream is("'ab'");
    my_string text;
    EXPECT_FALSE(get_qstring(is, text));
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Error, "get_qstring(ifstream& ifs, my_string& s)", 101}));
}

TEST_F(TokenReader, QuotedCharacter) {
    char c = 0;
    std::istringstream is(" '?' \"-'");
    EXPECT_TRUE(get_qchar(is, c));
    EXPECT_EQ(c, '?');
    EXPECT_TRUE(get_qchar(is, c));
    EXPECT_EQ(c, '-');
    for (const char* bad : {"\n'?'", "x", "'ab'", "'", ""}) {
        std::istringstream other(bad);
        EXPECT_FALSE(get_qchar(other, c)) << bad;
    }
}

TEST_F(TokenReader, WholeNumberHasNoSign) {
    int value = 5;
    std::istringstream is(" 12 -3");
    EXPECT_TRUE(get_int(is, value));
    EXPECT_EQ(value, 12);
    EXPECT_FALSE(get_int(is, value));
    EXPECT_EQ(is.peek(), '-');
    std::istringstream line_end(" \n4");
    EXPECT_FALSE(get_int(line_end, value));
    std::istringstream huge("99999999999999999999");
    EXPECT_FALSE(get_int(huge, value));
    EXPECT_EQ(value, 12);
}

TEST_F(TokenReader, WordOfThisLine) {
    my_string word;
    std::istringstream is("  ABC def");
    EXPECT_TRUE(get_word(is, word));
    EXPECT_EQ(word.view(), "abc");
    for (const char* bad : {"\nabc", "# abc\n", "\"abc\"", ""}) {
        std::istringstream other(bad);
        EXPECT_FALSE(get_word(other, word)) << bad;
    }
}

TEST_F(TokenReader, EndOfLine) {
    for (const char* ended : {"", "  \n", " # x\n", "\t"}) {
        std::istringstream is(ended);
        EXPECT_TRUE(test_end_of_line(is)) << ended;
    }
    std::istringstream is("  3\n");
    EXPECT_FALSE(test_end_of_line(is));
    EXPECT_EQ(is.peek(), '3');
}

TEST_F(TokenReader, SubsectionsInOrder) {
    std::istringstream is(
        "junk # [[Mantel]]\n[[DistanceMatrix]]\n[[HAPLOTYPEDEFINITION]] x\n [[samples]]\n[[Structure]]\n"
        "[[Mantel]]\n");
    my_string name;
    EXPECT_EQ(get_next_subsection(is, name), kSubDistanceMatrix);
    EXPECT_EQ(name.view(), "distancematrix");
    EXPECT_EQ(get_next_subsection(is, name), kSubHaplotypeDefinition);
    EXPECT_EQ(get_next_subsection(is, name), kSubSamples);
    EXPECT_EQ(get_next_subsection(is, name), kSubStructure);
    EXPECT_EQ(get_next_subsection(is, name), kSubMantel);
    EXPECT_EQ(get_next_subsection(is, name), kNoSubSection);
    EXPECT_TRUE(is.good());
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(TokenReader, UnknownSubsectionAndSingleBracket) {
    my_string name;
    std::istringstream unknown("[[Nonsense]]\n");
    EXPECT_EQ(get_next_subsection(unknown, name), 0);
    std::istringstream single("[Profile]\n");
    EXPECT_EQ(get_next_subsection(single, name), 0);
    ASSERT_EQ(reports.all().size(), 2u);
    EXPECT_EQ(reports.all()[0], (Report{Error, "get_next_subsection() (\"nonsense\"", 105}));
    EXPECT_EQ(reports.all()[1], (Report{Error, "get_next_subsection()", 104}));
}

// What lies further behind is read as text again.
TEST_F(TokenReader, SubsectionsDropEightyCharactersOfAComment) {
    my_string name;
    const std::string comment = "#" + std::string(79, 'x');
    std::istringstream within(comment + "[\n[[Samples]]");
    EXPECT_EQ(get_next_subsection(within, name), kSubSamples);
    std::istringstream beyond(comment + "x[[Mantel]]\n[[Samples]]");
    EXPECT_EQ(get_next_subsection(beyond, name), kSubMantel);
    std::istringstream behind("[[Samples]]" + std::string(79, 'x') + "[[Mantel]]\n");
    EXPECT_EQ(get_next_subsection(behind, name), kSubSamples);
    EXPECT_EQ(get_next_subsection(behind, name), kSubMantel);
}

TEST_F(TokenReader, PositionAfterTakesNoBracketWithinAValue) {
    std::istringstream is("[Profile]\nTitle=\"a [Data] of [[Samples]]\"\n [Data] [[Samples]]\nx");
    EXPECT_TRUE(position_after(is, "Data", "", ""));
    EXPECT_TRUE(go_to_sub_section(is, "Samples"));
    EXPECT_EQ(rest(is), "\nx");
}

TEST_F(TokenReader, PositionAfterWalksForward) {
    const std::string file =
        "# [Data]\n[Profile]\nTitle=\"x\"\n[Data]\n[[Structure]]\nNbGroups=3\n"
        "[[Samples]] # first\n# SampleName=\"no\"\n  SampleName = \"one\"\n  SampleSize=4\n";
    std::istringstream is(file);
    EXPECT_TRUE(position_after(is, "DATA", "samples", "SampleSize"));
    EXPECT_EQ(is.peek(), '4');
    std::istringstream again(file);
    EXPECT_TRUE(go_to_section(again, "data"));
    EXPECT_TRUE(go_to_sub_section(again, "Samples"));
    EXPECT_TRUE(position_after(again, "", "", "samplename"));
    EXPECT_EQ(rest(again).substr(0, 6), " \"one\"");
    EXPECT_TRUE(position_after(is, "", "", ""));
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(TokenReader, PositionAfterTellsItsStage) {
    struct Case {
        const char* file;
        const char* section;
        const char* subsection;
        const char* keyword;
        const char* origin;
    };
    for (const Case& one :
         {Case{"[Profile]\n", "Data", "", "", "position_after() (1)"},
          Case{"[Data]\n", "Data", "Samples", "", "position_after() (2)"},
          Case{"[Data]\n[Profile]\n", "Data", "Samples", "", "position_after() (3)"},
          Case{"[Profile]\nTitle=1\n", "Profile", "", "NbSamples", "position_after() (4)"},
          Case{"[Profile]\nTitle=1\n[Data]", "Profile", "", "NbSamples", "position_after() (5)"}}) {
        std::istringstream is(one.file);
        const std::size_t before = reports.all().size();
        EXPECT_FALSE(position_after(is, one.section, one.subsection, one.keyword)) << one.origin;
        ASSERT_EQ(reports.all().size(), before + 1);
        EXPECT_EQ(reports.all().back(), (Report{Error, one.origin, 102}));
        EXPECT_TRUE(is.good());
    }
}

TEST_F(TokenReader, Directives) {
    std::istringstream is(" -12 WORD " + std::string(1000, 'X') + " x");
    EXPECT_EQ(read_directive_value(is), -12);
    char buffer[kDirectiveBuffer];
    EXPECT_TRUE(read_directive_my_string(is, buffer));
    EXPECT_STREQ(buffer, "word");
    EXPECT_TRUE(read_directive_my_string(is, buffer));
    EXPECT_EQ(std::string(buffer), std::string(kDirectiveBuffer - 1, 'x'));
    EXPECT_EQ(read_directive_value(is), -1);
}

TEST_F(TokenReader, NumbersAsText) {
    char buffer[48];
    EXPECT_STREQ(my_itoa(-2147483647 - 1, buffer, 10), "-2147483648");
    EXPECT_STREQ(my_ftoa(0.5F, buffer, 0.0F), "0.5");
}

TEST_F(TokenReader, JunkEndsEveryReader) {
    std::string junk;
    for (int i = 0; i < 4096; ++i)
        junk += static_cast<char>((i * 167 + 13) % 256);
    my_string text;
    char c = 0;
    int n = 0;
    for (int start = 0; start < 256; ++start) {
        std::istringstream is(junk.substr(static_cast<std::size_t>(start)));
        for (int i = 0; i < 5000 && get_next_ident(is, text); ++i)
            get_qstring(is, text);
        get_qchar(is, c);
        get_int(is, n);
        get_word(is, text);
        test_end_of_line(is);
        get_next_subsection(is, text);
        position_after(is, "Profile", "Samples", "x");
        is.peek();
        EXPECT_TRUE(is.eof() || is.good()) << start;
    }
}

// ---- Files

class ProfileValues : public InTempFolder {
protected:
    void SetUp() override {
        InTempFolder::SetUp();
        write_text(folder / "p.mnp", "[Profile]\nTitle=\"t t\"\nNbSamples=7\nMissingData='-'\n[Data]\n");
    }
    CapturedReports reports;
};

TEST_F(ProfileValues, OfAFile) {
    EXPECT_EQ(get_mnd_profile_int("p.mnp", "Profile", "", "NbSamples", 1), 7);
    EXPECT_EQ(get_mnd_profile_my_string("p.mnp", "Profile", "", "Title", "d").view(), "t t");
    EXPECT_EQ(get_mnd_profile_char("p.mnp", "Profile", "", "MissingData", '?'), '-');
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(ProfileValues, DefaultsOnFailure) {
    EXPECT_EQ(get_mnd_profile_int("p.mnp", "Profile", "", "Title", 4), -1);
    EXPECT_EQ(get_mnd_profile_my_string("absent.mnp", "Profile", "", "Title", "d").view(), "d");
    EXPECT_EQ(get_mnd_profile_char("p.mnp", "Profile", "", "NbSamples", '?'), '?');
    ASSERT_EQ(reports.all().size(), 3u);
    EXPECT_EQ(reports.all()[0], (Report{Error, "get_mnd_profile_int()", 103}));
    EXPECT_EQ(reports.all()[1], (Report{Error, "get_mnd_profile_my_string()", 103}));
    EXPECT_EQ(reports.all()[2], (Report{Error, "get_mnd_profile_char()", 103}));
}

TEST_F(ProfileValues, IniFileIsATemplate) {
    INIFILE.read_ini();
    INIFILE.write_ini();
    const std::string ini = read_text("Mendrake.ini");
    for (const char* part : {"[Mendrake]\n", "[Directories]\n", "[Startup]\n", "[Project]\n",
                             "[options]\nSaveProject=1\nPrintHaploDataInSamples=1\nPrettyPrintDistMat=1\n"
                             "GenerateLogFile=1\n"}) {
        EXPECT_NE(ini.find(part), std::string::npos) << part;
    }
    std::filesystem::remove("Mendrake.ini");
    std::filesystem::create_directory("Mendrake.ini");
    INIFILE.write_ini();
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Error, "IniFile::write_ini()", 99}));
}

}  // namespace
