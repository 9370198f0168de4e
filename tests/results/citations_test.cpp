#include "results/citations.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include "results/xml_tags.h"

namespace mnd {
namespace {

constexpr const char* kTajima =
    "Tajima, F. (1989) Statistical method for testing the neutral mutation hypothesis by DNA polymorphism. "
    "Genetics 123:585-595.";

class ReferencesTest : public ::testing::Test {
protected:
    void TearDown() override { xmlOutput = false; }
    std::ostringstream out;
};

TEST_F(ReferencesTest, SingleCitationInHtml) {
    References(out, "Tajima_1989");
    EXPECT_EQ(out.str(), std::string("Reference: <i>") + kTajima + "</i>\n");
}

TEST_F(ReferencesTest, SingleCitationInXml) {
    xmlOutput = true;
    References(out, Citation::Tajima_1989);
    EXPECT_EQ(out.str(), std::string("Reference: </data>\n<Reference>") + kTajima + "</Reference>\n<data>\n");
}

TEST_F(ReferencesTest, UnknownKeyGivesTheEmptyTextBetweenTheMarkers) {
    References(out, "Nobody_1900");
    EXPECT_EQ(out.str(), "Reference: <i></i>\n");
    out.str("");
    xmlOutput = true;
    References(out, "Nobody_1900");
    EXPECT_EQ(out.str(), "Reference: </data>\n<Reference></Reference>\n<data>\n");
}

TEST_F(ReferencesTest, LookupIsByTheExactKey) {
    EXPECT_EQ(References::get_reference("Tajima_1989"), kTajima);
    EXPECT_EQ(References::get_reference("tajima_1989"), "");
    EXPECT_EQ(References::get_reference("Tajima_198"), "");
    EXPECT_EQ(References::get_reference(""), "");
}

TEST_F(ReferencesTest, ListInHtmlIgnoresTheMode) {
    for (const int mode : {References::kFirst, References::kMiddle, References::kLast, 7}) {
        out.str("");
        References(out, Citation::Tajima_1989, mode);
        EXPECT_EQ(out.str(), std::string("           <i>") + kTajima + "</i>\n");
    }
}

TEST_F(ReferencesTest, ListInXmlFollowsTheMode) {
    xmlOutput = true;
    References(out, "Tajima_1989", 0);
    EXPECT_EQ(out.str(), std::string("</data>\n<Reference>") + kTajima + "</Reference>\n");
    out.str("");
    References(out, "Tajima_1989", 1);
    EXPECT_EQ(out.str(), std::string("<Reference>") + kTajima + "</Reference>\n");
    out.str("");
    References(out, Citation::Tajima_1989, 2);
    EXPECT_EQ(out.str(), std::string("<Reference>") + kTajima + "</Reference>\n<data>\n");
    out.str("");
    References(out, "Tajima_1989", 3);
    References(out, "Tajima_1989", -1);
    EXPECT_EQ(out.str(), "");
}

TEST(CitationTable, HoldsEachKeyOnceWithItsYear) {
    std::set<std::string> keys;
    for (int i = 0; i < kCitationCount; ++i) {
        const std::string key(citation_key(static_cast<Citation>(i)));
        const std::string text(References::get_reference(key));
        EXPECT_TRUE(keys.insert(key).second) << key;
        const std::string year = key.substr(key.size() - 4);
        EXPECT_NE(text.find("(" + year + ")"), std::string::npos) << key;
        EXPECT_EQ(text.back(), '.') << key;
    }
    EXPECT_EQ(keys.size(), 73u);
}

// The first author of the text is the first name of the key.
TEST(CitationTable, KeysNameTheFirstAuthor) {
    for (int i = 0; i < kCitationCount; ++i) {
        const std::string key(citation_key(static_cast<Citation>(i)));
        const std::string text(References::get_reference(key));
        EXPECT_EQ(text.substr(0, text.find(',')), key.substr(0, key.find('_')));
    }
}

TEST(CitationTable, TextsNeedNoEscaping) {
    for (int i = 0; i < kCitationCount; ++i) {
        for (const char c : References::get_reference(citation_key(static_cast<Citation>(i)))) {
            EXPECT_TRUE(c >= 32 && c < 127);
            EXPECT_EQ(std::string("&<>\"").find(c), std::string::npos);
        }
    }
}

}  // namespace
}  // namespace mnd
