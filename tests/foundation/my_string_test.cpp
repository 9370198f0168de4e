#include "foundation/my_string.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>
#include <unordered_map>
#include <utility>

namespace {

using mnd::my_string;

std::string text_of(const my_string& s) {
    EXPECT_EQ(std::string(s.c_str()).size(), static_cast<std::size_t>(s.length()));
    return s.c_str();
}

std::string run_of(std::size_t n, char c = 'x') {
    return std::string(n, c);
}

// ---- construction, assignment, limits

TEST(MyString, StartsEmptyInABufferOfTen) {
    const my_string s;
    EXPECT_EQ(text_of(s), "");
    EXPECT_EQ(s.capacity, 10);
    EXPECT_EQ(s.len, 0);
    EXPECT_EQ(s.delta, 100);
    EXPECT_EQ(s.scratch, nullptr);
    EXPECT_NE(s.str, nullptr);
    EXPECT_TRUE(s.is_null());
}

TEST(MyString, IsMadeWithRoomForTwoMoreBytes) {
    const my_string s("abc");
    EXPECT_EQ(text_of(s), "abc");
    EXPECT_EQ(s.len, 3);
    EXPECT_EQ(s.capacity, 5);
    EXPECT_EQ(my_string("").capacity, 2);
}

TEST(MyString, ConstructorRefusesATextOf150000) {
    EXPECT_EQ(my_string(run_of(150000).c_str()).length(), 0);
    EXPECT_EQ(my_string(run_of(150000).c_str()).capacity, 10);
    EXPECT_EQ(my_string(run_of(149999).c_str()).length(), 149999);
}

TEST(MyString, AssignmentTakesATextOf150000ButNotOneMore) {
    my_string s("old");
    s = run_of(150001).c_str();
    EXPECT_EQ(text_of(s), "old");
    s = run_of(150000).c_str();
    EXPECT_EQ(s.length(), 150000);
    EXPECT_EQ(s.capacity, 150002);
}

TEST(MyString, CopyOfATextOf150000IsWhole) {
    my_string s;
    s = run_of(150000).c_str();
    const my_string copy(s);
    EXPECT_EQ(copy, s);
}

TEST(MyString, CopyStartsFromTheDefaultState) {
    my_string s(run_of(50).c_str());
    s = "ab";
    EXPECT_EQ(s.capacity, 52);
    const my_string copy(s);
    EXPECT_EQ(copy.capacity, 10);
    EXPECT_EQ(text_of(copy), "ab");
}

TEST(MyString, AssignmentGrowsToTheExactNeedAndNeverShrinks) {
    my_string s;
    s = "12345678";  // 8 + 2 fit into 10
    EXPECT_EQ(s.capacity, 10);
    s = "123456789";
    EXPECT_EQ(s.capacity, 11);
    s = "1";
    EXPECT_EQ(s.capacity, 11);
}

TEST(MyString, AssignsToItselfAndFromItsOwnTail) {
    my_string s("abcdef");
    const my_string& same = s;
    s = same;
    EXPECT_EQ(text_of(s), "abcdef");
    s = s.c_str() + 2;
    EXPECT_EQ(text_of(s), "cdef");
    s = s.c_str()[1];
    EXPECT_EQ(text_of(s), "d");
}

TEST(MyString, AssignsACharacter) {
    my_string s("");  // a buffer of 2
    s = 'c';
    EXPECT_EQ(text_of(s), "c");
    EXPECT_EQ(s.capacity, 12);
    my_string wide;
    wide = 'd';
    EXPECT_EQ(wide.capacity, 10);
}

TEST(MyString, AssignsNumbersAsPrintfDoes) {
    my_string s;
    s = -12;
    EXPECT_EQ(text_of(s), "-12");
    EXPECT_EQ(s.capacity, 22);
    s = 2.5;
    EXPECT_EQ(text_of(s), "2.500000");
    EXPECT_EQ(s.capacity, 42);
    s = 1e300;  // 301 digits, a point and 6 decimals
    EXPECT_EQ(s.length(), 308);
}

TEST(MyString, NumberAndCharacterTakeANewBufferOnlyBelowTheirNeed) {
    const auto of_capacity = [](int capacity) {
        my_string s(run_of(static_cast<std::size_t>(capacity) - 2).c_str());
        EXPECT_EQ(s.capacity, capacity);
        return s;
    };
    const auto after_character = [&](int capacity) {
        my_string s = of_capacity(capacity);
        s = 'c';
        return s.capacity;
    };
    const auto after_int = [&](int capacity) {
        my_string s = of_capacity(capacity);
        s = 7;
        return s.capacity;
    };
    const auto after_double = [&](int capacity) {
        my_string s = of_capacity(capacity);
        s = 7.0;
        return s.capacity;
    };
    EXPECT_EQ(after_character(3), 12);
    EXPECT_EQ(after_character(4), 4);
    EXPECT_EQ(after_int(19), 22);
    EXPECT_EQ(after_int(20), 20);
    EXPECT_EQ(after_double(39), 42);
    EXPECT_EQ(after_double(40), 40);
}

TEST(MyString, NullPointerIsTheEmptyText) {
    const char* nothing = nullptr;
    my_string s(nothing);
    EXPECT_EQ(text_of(s), "");
    s = "ab";
    s += nothing;
    EXPECT_EQ(text_of(s), "ab");
    s = nothing;
    EXPECT_EQ(text_of(s), "");
    EXPECT_TRUE(s == nothing);
}

TEST(MyString, MovedFromTextIsEmptyAndUsable) {
    my_string s("abc");
    const my_string taken(std::move(s));
    EXPECT_EQ(text_of(taken), "abc");
    EXPECT_EQ(text_of(s), "");  // NOLINT: the state after the move is what is tested
    EXPECT_FALSE(s.contains("a"));
    s.Upper();
    s.reverse_string();
    s.remove_blanks();
    s.extract_path();
    s.remove_extension();
    s += 'x';
    EXPECT_EQ(text_of(s), "x");
}

// ---- append

TEST(MyString, AppendGrowsToTheExactNeed) {
    my_string s("abc");
    s += "de";
    EXPECT_EQ(text_of(s), "abcde");
    EXPECT_EQ(s.capacity, 7);
    s += my_string("f");
    EXPECT_EQ(text_of(s), "abcdef");
    EXPECT_EQ(s.capacity, 8);
    EXPECT_EQ(s.scratch, nullptr);
}

TEST(MyString, AppendsItself) {
    my_string s("ab");
    s += s;
    EXPECT_EQ(text_of(s), "abab");
    s += s.c_str() + 3;
    EXPECT_EQ(text_of(s), "ababb");
    s.extendSize(40);
    s += s.c_str();
    EXPECT_EQ(text_of(s), "ababbababb");
}

TEST(MyString, AppendBeyond150000IsIgnored) {
    my_string s;
    s = run_of(149999).c_str();
    s += "ab";
    EXPECT_EQ(s.length(), 149999);
    s += "a";
    EXPECT_EQ(s.length(), 150000);
    s += 'b';
    EXPECT_EQ(s.length(), 150000);
    s += "";
    EXPECT_EQ(s.length(), 150000);
}

TEST(MyString, AppendedCharacterGrowsTheBufferByDelta) {
    my_string s;
    s = "1234567";
    ASSERT_EQ(s.capacity, 10);
    ASSERT_EQ(s.len, 7);
    s += '8';
    EXPECT_EQ(text_of(s), "12345678");
    EXPECT_EQ(s.capacity, 108);
    my_string shorter;
    shorter = "123456";
    shorter += '7';
    EXPECT_EQ(shorter.capacity, 10);
}

TEST(MyString, CharactersAppendedOneByOneGiveTheSameTextAndKeepRoom) {
    my_string s;
    std::string expected;
    for (int i = 0; i < 1000; ++i) {
        const char c = static_cast<char>('a' + i % 26);
        s += c;
        expected += c;
        ASSERT_GE(s.capacity, s.len + 2);
    }
    EXPECT_EQ(text_of(s), expected);
}

TEST(MyString, ZeroByteAppendsNothing) {
    my_string s("ab");
    s += '\0';
    EXPECT_EQ(text_of(s), "ab");
    s += 'c';
    EXPECT_EQ(text_of(s), "abc");
}

TEST(MyString, PlusJoinsTwoTexts) {
    const my_string a("ab");
    EXPECT_EQ(text_of(a + my_string("cd")), "abcd");
    EXPECT_EQ(text_of(a + "cd"), "abcd");
    EXPECT_EQ(text_of("cd" + a), "cdab");
    EXPECT_EQ(text_of(a), "ab");
}

TEST(MyString, PlusBeyond150000GivesTheEmptyText) {
    my_string half;
    half = run_of(75000).c_str();
    EXPECT_EQ((half + half).length(), 150000);
    EXPECT_EQ((half + (half + "x")).length(), 0);
    EXPECT_EQ((half + run_of(75001).c_str()).length(), 0);
}

TEST(MyString, ExtendSizeMakesRoomAndKeepsTheText) {
    my_string s("abc");
    s.extendSize(20);
    EXPECT_EQ(text_of(s), "abc");
    EXPECT_EQ(s.capacity, 22);
    s.extendSize(3);  // not longer than the text
    EXPECT_EQ(s.capacity, 22);
    s.extendSize(10);  // above the length of 3, hence anew
    EXPECT_EQ(s.capacity, 12);
    EXPECT_EQ(s.delta, 100);
    EXPECT_EQ(s.scratch, nullptr);
}

// ---- comparison

TEST(MyString, ComparesByBytes) {
    const my_string a("abc");
    EXPECT_TRUE(a == my_string("abc"));
    EXPECT_TRUE(a == "abc");
    EXPECT_TRUE("abc" == a);
    EXPECT_TRUE(a != "abC");
    EXPECT_TRUE(a < my_string("abd"));
    EXPECT_TRUE(my_string("ab") < a);
    EXPECT_TRUE(a < my_string("\xe9"));  // bytes are unsigned, as strcmp has them
    EXPECT_TRUE(a > "ABC");
}

TEST(MyString, HashFindsByTextWithoutACopy) {
    std::unordered_map<my_string, int, mnd::MyStringHash, std::equal_to<>> places;
    places.emplace("h1", 7);
    EXPECT_EQ(places.find(my_string("h1"))->second, 7);
    EXPECT_EQ(places.find("h1")->second, 7);
    EXPECT_EQ(places.find("h2"), places.end());
}

// ---- searches

TEST(MyString, ContainsCharactersAndPatterns) {
    const my_string s("abcb");
    EXPECT_TRUE(s.contains('c'));
    EXPECT_FALSE(s.contains('d'));
    EXPECT_FALSE(s.contains('\0'));
    EXPECT_TRUE(s.contains("bc"));
    EXPECT_TRUE(s.contains("abcb"));
    EXPECT_FALSE(s.contains("BC"));
    EXPECT_FALSE(s.contains(""));
    EXPECT_FALSE(s.contains("abcba"));
    EXPECT_TRUE(s.contains(my_string("cb")));
    EXPECT_FALSE(s.contains(my_string("")));
    EXPECT_FALSE(my_string("").contains("a"));
}

TEST(MyString, FindFirstOfGivesMinusOneWhenAbsent) {
    const my_string s("abcb");
    EXPECT_EQ(s.find_first_of('b'), 1);
    EXPECT_EQ(s.find_first_of('x'), -1);
    EXPECT_EQ(my_string("").find_first_of('x'), -1);
}

TEST(MyString, FindFirstOfPositionOnlyGatesTheSearch) {
    const my_string s("abc");
    EXPECT_EQ(s.find_first_of('a', 5), -1);
    EXPECT_EQ(s.find_first_of('b', 5), -1);
    EXPECT_EQ(s.find_first_of('a', 2), 0);
    EXPECT_EQ(s.find_first_of('a', 3), 0);
    EXPECT_EQ(s.find_first_of('a', 4), -1);
}

TEST(MyString, FindLastOfGivesTheLengthWhenAbsent) {
    const my_string s("abcb");
    EXPECT_EQ(s.find_last_of('b'), 3);
    EXPECT_EQ(s.find_last_of('a'), 0);
    EXPECT_EQ(s.find_last_of('x'), 4);
}

TEST(MyString, RfindSearchesForward) {
    const my_string s("abcb");
    EXPECT_EQ(s.rfind("b"), 1);
    EXPECT_EQ(s.rfind("cb"), 2);
    EXPECT_EQ(s.rfind("x"), -1);
    EXPECT_EQ(s.rfind(""), -1);
    EXPECT_EQ(s.rfind("abcba"), -1);
}

// ---- operations in place

TEST(MyString, RemoveCutsOrClosesTheGap) {
    const auto removed = [](int pos, int n) {
        my_string s("abcdef");
        s.remove(pos, n);
        return text_of(s);
    };
    EXPECT_EQ(removed(1, 2), "adef");
    EXPECT_EQ(removed(0, 6), "");
    EXPECT_EQ(removed(4, 2), "abcd");
    EXPECT_EQ(removed(4, 2147483647), "abcd");
    EXPECT_EQ(removed(2, 0), "abcdef");
    EXPECT_EQ(removed(2, -1), "abcdef");
    EXPECT_EQ(removed(-1, 2), "abcdef");
    EXPECT_EQ(removed(6, 1), "abcdef");
    EXPECT_EQ(removed(60, 1), "abcdef");
}

TEST(MyString, RemovesBlanksAndLineEndsAnywhere) {
    my_string s(" a\tb c ");
    s.remove_blanks();
    EXPECT_EQ(text_of(s), "abc");
    my_string lines("\r\na\nb\r");
    lines.remove_eol_and_lf();
    EXPECT_EQ(text_of(lines), "ab");
}

TEST(MyString, ReversesTheText) {
    my_string s("abc");
    s.reverse_string();
    EXPECT_EQ(text_of(s), "cba");
    my_string empty;
    empty.reverse_string();
    EXPECT_EQ(text_of(empty), "");
}

TEST(MyString, CaseMappingTouchesAsciiLettersOnly) {
    my_string s("aZ[`{@\xe9");
    s.Upper();
    EXPECT_EQ(text_of(s), "AZ[`{@\xe9");
    s.Lower();
    EXPECT_EQ(text_of(s), "az[`{@\xe9");
    s.to_upper();
    EXPECT_EQ(text_of(s), "AZ[`{@\xe9");
    s.to_lower();
    EXPECT_EQ(text_of(s), "az[`{@\xe9");
}

TEST(MyString, ConvertsPathCharacters) {
    my_string s("c:\\a/b.c d");
    s.convert_to_slash();
    EXPECT_EQ(text_of(s), "c:/a/b.c d");
    s.convert_to_backslash();
    EXPECT_EQ(text_of(s), "c:\\a\\b.c d");
    s.convert_to_html_slash();
    EXPECT_EQ(text_of(s), "c:/a/b.c d");
    s.convert_to_underline();
    EXPECT_EQ(text_of(s), "c__a_b.c d");
    s.convert_dot_to_underline();
    EXPECT_EQ(text_of(s), "c__a_b_c d");
    my_string mixed("a\\b/c:d");
    mixed.convert_to_underline();
    EXPECT_EQ(text_of(mixed), "a_b_c_d");
}

TEST(MyString, ConvertsBlanksInACopy) {
    const my_string s(" a b");
    EXPECT_EQ(text_of(s.convert_blank_to_underline()), "_a_b");
    EXPECT_EQ(text_of(s.convert_blank_to_linux_blank()), "\\ a\\ b");
    EXPECT_EQ(text_of(s.convert_blank_to_html_blank()), "%20a%20b");
    EXPECT_EQ(text_of(s), " a b");
}

TEST(MyString, ExtractPathKeepsTheLastMark) {
    const auto path_of = [](const char* text) {
        my_string s(text);
        s.extract_path();
        return text_of(s);
    };
    EXPECT_EQ(path_of("abc"), "");
    EXPECT_EQ(path_of("a/b"), "a/");
    EXPECT_EQ(path_of("a\\b/c"), "a\\b/");
    EXPECT_EQ(path_of("a/b\\c"), "a/b\\");
    EXPECT_EQ(path_of("/"), "/");
    EXPECT_EQ(path_of(""), "");
}

TEST(MyString, RmPathDeletesTheLastMark) {
    const auto name_of = [](const char* text) {
        my_string s(text);
        s.rm_path();
        return text_of(s);
    };
    EXPECT_EQ(name_of("a\\b"), "b");
    EXPECT_EQ(name_of("x/a\\b/c"), "c");
    EXPECT_EQ(name_of("abc"), "abc");
    EXPECT_EQ(name_of("a/"), "");
    EXPECT_EQ(name_of("/a"), "a");
}

TEST(MyString, RemoveExtensionCutsAtTheFirstPlaceOfTheLastExtension) {
    const auto cut = [](const char* text) {
        my_string s(text);
        s.remove_extension();
        return text_of(s);
    };
    EXPECT_EQ(cut("a.txt.txt"), "a");
    EXPECT_EQ(cut("a.b.txt"), "a.b");
    EXPECT_EQ(cut("abc"), "abc");
    EXPECT_EQ(cut("/a.mnp.d/b.mnp"), "/a");
    EXPECT_EQ(cut(".mnp"), "");
    EXPECT_EQ(cut("a."), "a");
    EXPECT_EQ(cut(""), "");
}

TEST(MyString, RemoveExtensionKeepsTheLengthInStep) {
    my_string s("name.mnp");
    s.remove_extension();
    EXPECT_EQ(s.len, 4);
    s += '!';
    EXPECT_EQ(text_of(s), "name!");
}

TEST(MyString, ExtractsBeforeAndAfterACharacter) {
    const my_string s("a=b=c");
    EXPECT_EQ(text_of(s.extract_before('=')), "a");
    EXPECT_EQ(text_of(s.extract_after('=')), "b=c");
    EXPECT_EQ(text_of(s.extract_before('x')), "a=b=c");
    EXPECT_EQ(text_of(s.extract_after('x')), "a=b=c");
    EXPECT_EQ(text_of(my_string("a=").extract_after('=')), "");
    EXPECT_EQ(text_of(my_string("=a").extract_before('=')), "");
    EXPECT_EQ(text_of(s), "a=b=c");
}

TEST(MyString, ExtractSubStrWalksOverTheFields) {
    my_string line("  one two");
    EXPECT_EQ(text_of(line.extract_sub_str(' ')), "one");
    EXPECT_EQ(text_of(line), " two");
    EXPECT_EQ(text_of(line.extract_sub_str(' ')), "two");
    EXPECT_EQ(text_of(line), "");
    EXPECT_EQ(text_of(line.extract_sub_str(' ')), "");
    EXPECT_EQ(text_of(line), "");
}

TEST(MyString, ExtractSubStrOfDelimitersAloneEmptiesTheText) {
    my_string line(",,,");
    EXPECT_EQ(text_of(line.extract_sub_str(',')), "");
    EXPECT_EQ(text_of(line), "");
}

// ---- streams

TEST(MyStringStream, WritesTheTextWithTheWidthOfTheStream) {
    std::ostringstream out;
    out << std::setw(5) << my_string("ab") << '|';
    EXPECT_EQ(out.str(), "   ab|");
}

TEST(MyStringStream, ReadsTokensAndLeavesTheLineEnd) {
    std::istringstream in(" \tone\ttab two\nthree\rfour");
    my_string s("old");
    in >> s;
    EXPECT_EQ(text_of(s), "one\ttab");
    in >> s;
    EXPECT_EQ(text_of(s), "two");
    EXPECT_EQ(in.peek(), '\n');
    in >> s;  // the line end is not passed over
    EXPECT_EQ(text_of(s), "");
    EXPECT_TRUE(in.good());
    in.get();
    in >> s;
    EXPECT_EQ(text_of(s), "three");
    EXPECT_EQ(in.peek(), 'f');  // the CR is consumed
}

TEST(MyStringStream, TokenEndsWithTheStream) {
    std::istringstream in("last");
    my_string s;
    EXPECT_TRUE(in >> s);
    EXPECT_EQ(text_of(s), "last");
    EXPECT_TRUE(in.eof());
    EXPECT_FALSE(in >> s);
    EXPECT_EQ(text_of(s), "");
}

TEST(MyStringStream, TokenStopsAtByte255AndDropsZeroBytes) {
    std::istringstream in(
        std::string("a\0b\xff"
                    "c",
                    5));
    my_string s;
    in >> s;
    EXPECT_EQ(text_of(s), "ab");
    EXPECT_EQ(in.peek(), 'c');
}

TEST(MyStringStream, ReadLineKeepsTheCarriageReturn) {
    std::istringstream in("one \r\n\nlast");
    my_string s;
    EXPECT_TRUE(s.read_line(in));
    EXPECT_EQ(text_of(s), "one \r");
    EXPECT_TRUE(s.read_line(in));
    EXPECT_EQ(text_of(s), "");
    EXPECT_TRUE(in.good());
    EXPECT_TRUE(s.read_line(in));
    EXPECT_EQ(text_of(s), "last");
    EXPECT_FALSE(in.fail());
    EXPECT_TRUE(s.read_line(in));  // nothing left, and still true
    EXPECT_EQ(text_of(s), "");
    EXPECT_TRUE(in.fail());
}

TEST(MyStringStream, ReadLineTakesAtMost149999Characters) {
    std::istringstream in(run_of(149999) + "\n" + run_of(150000) + "\n");
    my_string s;
    s.read_line(in);
    EXPECT_EQ(s.length(), 149999);
    EXPECT_TRUE(in.good());
    s.read_line(in);
    EXPECT_EQ(s.length(), 149999);
    EXPECT_TRUE(in.fail());
}

TEST(MyStringStream, ReadToDelimStopsAtWhiteSpaceOtherThanCr) {
    std::istringstream in(std::string("a\rb c\td\n\0e", 10));
    my_string s;
    const auto next = [&] {
        s.read_to_delim(in);
        return text_of(s);
    };
    EXPECT_EQ(next(), "a\rb");
    EXPECT_EQ(next(), "c");
    EXPECT_EQ(next(), "d");
    EXPECT_EQ(next(), "");  // the zero byte stops
    EXPECT_EQ(next(), "e");
    EXPECT_TRUE(in.eof());
    EXPECT_FALSE(in.fail());
    EXPECT_EQ(next(), "");
    EXPECT_TRUE(in.fail());
}

TEST(MyStringStream, ReadToAGivenDelimKeepsBlanksAndTabs) {
    std::istringstream in("a b\tc,d\ne");
    my_string s;
    s.read_to_delim(in, ',');
    EXPECT_EQ(text_of(s), "a b\tc");
    s.read_to_delim(in, ',');
    EXPECT_EQ(text_of(s), "d");
    s.read_to_delim(in, ',');
    EXPECT_EQ(text_of(s), "e");
}

TEST(MyStringStream, ReadToDelimStopsAtByte255AndAGivenDelimAtAZeroByteToo) {
    std::istringstream in(
        std::string("a\xff"
                    "b c\0d\xff"
                    "e",
                    9));
    my_string s;
    s.read_to_delim(in);
    EXPECT_EQ(text_of(s), "a");
    s.read_to_delim(in, ',');
    EXPECT_EQ(text_of(s), "b c");
    s.read_to_delim(in, ',');
    EXPECT_EQ(text_of(s), "d");
    s.read_to_delim(in, ',');
    EXPECT_EQ(text_of(s), "e");
}

TEST(MyStringStream, ReadToDelimOfAFailedStreamGivesTheEmptyText) {
    std::istringstream in("abc");
    in.setstate(std::ios_base::failbit);
    my_string s("old");
    s.read_to_delim(in);
    EXPECT_EQ(text_of(s), "");
    s = "old";
    s.read_to_delim(in, ',');
    EXPECT_EQ(text_of(s), "");
}

TEST(MyStringStream, ReadingNothingAtAllFailsTheStream) {
    my_string s;
    std::istringstream spaces("  "), nothing, no_token(" \n"), no_field;
    EXPECT_FALSE(spaces >> s);
    s.read_to_delim(nothing);
    EXPECT_TRUE(nothing.fail());
    s.read_token(no_token);
    EXPECT_TRUE(no_token.fail());
    s.read_to_delim(no_field, ',');
    EXPECT_TRUE(no_field.fail());
}

TEST(MyStringStream, ReadTokenSkipsLineEndsAndConsumesItsStop) {
    std::istringstream in(" \n\tone\ntwo\r three");
    my_string s(run_of(300).c_str());
    s.read_token(in);
    EXPECT_EQ(text_of(s), "one");
    EXPECT_EQ(s.capacity, 10);  // the old buffer is given up
    EXPECT_EQ(in.peek(), 't');
    s.read_token(in);
    EXPECT_EQ(text_of(s), "two\r");
    s.read_token(in);
    EXPECT_EQ(text_of(s), "three");
    EXPECT_TRUE(in.eof());
    s.read_token(in);
    EXPECT_EQ(text_of(s), "");
}

TEST(MyStringStream, ReadTokenGrowsByDeltaWithoutALimit) {
    const auto capacity_for = [](std::size_t n) {
        std::istringstream in(run_of(n) + " ");
        my_string s;
        s.read_token(in);
        EXPECT_EQ(static_cast<std::size_t>(s.length()), n);
        return s.capacity;
    };
    EXPECT_EQ(capacity_for(8), 10);
    EXPECT_EQ(capacity_for(9), 110);  // 9 is the last place but one of 10
    EXPECT_EQ(capacity_for(108), 110);
    EXPECT_EQ(capacity_for(109), 210);
    EXPECT_GT(capacity_for(200000), 200000);
}

TEST(MyStringStream, GetNextQuotaAppendsTheQuotedText) {
    std::istringstream in("name = \"a b\" \"c\"\n");
    my_string s("<");
    EXPECT_TRUE(s.GetNextQuota(in));
    EXPECT_EQ(text_of(s), "<a b");
    EXPECT_TRUE(s.GetNextQuota(in));
    EXPECT_EQ(text_of(s), "<a bc");
    EXPECT_FALSE(s.GetNextQuota(in));  // the line ends before a quote
    EXPECT_EQ(text_of(s), "<a bc");
    EXPECT_FALSE(s.GetNextQuota(in));  // the stream ends
}

TEST(MyStringStream, GetNextQuotaFailsWhenTheLineEndsInsideTheQuotes) {
    std::istringstream in("\"ab\ncd\"");
    my_string s;
    EXPECT_FALSE(s.GetNextQuota(in));
    EXPECT_EQ(text_of(s), "ab");
}

TEST(MyStringStream, GetNextQuotaTakesWhatTheStreamEndsIn) {
    std::istringstream in("\"ab");
    my_string s;
    EXPECT_TRUE(s.GetNextQuota(in));
    EXPECT_EQ(text_of(s), "ab");
    EXPECT_FALSE(s.GetNextQuota(in));
    EXPECT_EQ(text_of(s), "ab");
}

// ---- plain text

TEST(MyStringFree, CopiesAppendsAndReversesPlainText) {
    char buffer[16] = "old";
    EXPECT_EQ(mnd::my_strcpy(buffer, "ab"), buffer);
    EXPECT_STREQ(buffer, "ab");
    EXPECT_EQ(mnd::my_strcat(buffer, "cd"), buffer);
    EXPECT_STREQ(buffer, "abcd");
    EXPECT_EQ(mnd::my_strrev(buffer), buffer);
    EXPECT_STREQ(buffer, "dcba");
    char empty[] = "";
    EXPECT_STREQ(mnd::my_strrev(empty), "");
}

TEST(MyStringFree, ReversesUpTo3000Characters) {
    std::string at_limit = "b" + run_of(2999, 'a');
    mnd::my_strrev(at_limit.data());
    EXPECT_EQ(at_limit, run_of(2999, 'a') + "b");
    std::string longer = "b" + run_of(3000, 'a');
    mnd::my_strrev(longer.data());
    EXPECT_EQ(longer, "b" + run_of(3000, 'a'));
}

TEST(MyStringFree, StrtokRightCutsAtTheLastCharacter) {
    char path[] = "a/b/c";
    EXPECT_STREQ(mnd::my_strtok_right(path, '/'), "a/b");
    char plain[] = "abc";
    EXPECT_STREQ(mnd::my_strtok_right(plain, '/'), "abc");
}

TEST(MyStringFree, RmMultDelimCollapsesRuns) {
    my_string out("old");
    mnd::rm_mult_delim("  a   b c  ", out, ' ');
    EXPECT_EQ(text_of(out), " a b c ");
    mnd::rm_mult_delim("aabb", out, 'b');
    EXPECT_EQ(text_of(out), "aab");
    mnd::rm_mult_delim("", out, 'b');
    EXPECT_EQ(text_of(out), "");
    my_string same("a//b");
    mnd::rm_mult_delim(same, same, '/');
    EXPECT_EQ(text_of(same), "a/b");
}

TEST(MyStringFree, RemovePathEmptiesATextWithoutSlash) {
    const auto removed = [](const char* text) {
        my_string s(text);
        mnd::removePath(s);
        return text_of(s);
    };
    EXPECT_EQ(removed("abc"), "");
    EXPECT_EQ(removed("/abc"), "/abc");
    EXPECT_EQ(removed("a/b/c"), "c");
    EXPECT_EQ(removed("/a/b"), "b");
    EXPECT_EQ(removed(""), "");
    EXPECT_EQ(removed("a\\b"), "");  // only a slash counts here
}

}  // namespace
