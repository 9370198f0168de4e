#include "foundation/escape.h"

#include <gtest/gtest.h>

#include <string>

namespace mnd {
namespace {

TEST(EscapeText, EscapesMarkupAndKeepsQuotesAndLayout) {
    EXPECT_EQ(escape_text("a&b<c>\"d\"'\t\r\n"), "a&amp;b&lt;c&gt;\"d\"'\t\r\n");
}

TEST(EscapeText, EscapesAnEntityThatAUserWrote) {
    EXPECT_EQ(escape_text("&amp;"), "&amp;amp;");
}

TEST(EscapeText, ReplacesControlCharactersThatXmlForbids) {
    EXPECT_EQ(escape_text(std::string("a\0b\x1b\x1f", 5)), "a&#xFFFD;b&#xFFFD;&#xFFFD;");
}

TEST(EscapeText, KeepsBytesAbove127) {
    EXPECT_EQ(escape_text("S\xe3o \xc3\xa9"), "S\xe3o \xc3\xa9");
}

TEST(EscapeAttribute, EscapesTheDoubleQuoteToo) {
    EXPECT_EQ(escape_attribute("<\"A\" & 'b'>\x01"), "&lt;&quot;A&quot; &amp; 'b'&gt;&#xFFFD;");
}

TEST(EscapeScript, EscapesBackslashQuoteAndLineEnds) {
    EXPECT_EQ(escape_script("C:\\d \"x\" \r\n\t'</script>"), "C:\\\\d \\\"x\\\" \\r\\n\\x09'</script>");
}

TEST(EncodeFileLink, EncodesBlanksAndWhatEndsALink) {
    EXPECT_EQ(encode_file_link("my file.htm"), "my%20file.htm");
    EXPECT_EQ(encode_file_link("50% #1?\"'<a>:b\\c&d.htm"), "50%25%20%231%3F%22%27%3Ca%3E%3Ab%5Cc&d.htm");
    EXPECT_EQ(encode_file_link("\xc3\xa9\x7f\n"), "%C3%A9%7F%0A");
    EXPECT_EQ(encode_file_link("plain-name_1.2~(3)!.htm"), "plain-name_1.2~(3)!.htm");
}

TEST(EncodePath, KeepsColonsAndTurnsBackslashes) {
    EXPECT_EQ(encode_path("C:\\my dir\\x/"), "C:/my%20dir/x/");
    EXPECT_EQ(encode_path("/it's/"), "/it%27s/");
}

TEST(EncodeAnchor, KeepsBytesAbove127) {
    EXPECT_EQ(encode_anchor("a b%\xe3#"), "a%20b%25\xe3%23");
}

TEST(EscapedCell, CountsAnEntityAsOneCharacter) {
    EXPECT_EQ(escaped_left("a<b", 6), "a&lt;b   ");
    EXPECT_EQ(escaped_right("a<b", 6), "   a&lt;b");
    EXPECT_EQ(escaped_left("long", 2), "long");
    EXPECT_EQ(escaped_right("x", -1), "x");
}

}  // namespace
}  // namespace mnd
