#include "results/xml_tags.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace mnd {
namespace {

class XmlTags : public ::testing::Test {
protected:
    void SetUp() override { TXmlTag::time = "05/03/24 at 10:11:12"; }
    void TearDown() override {
        xmlOutput = false;
        TXmlTag::time = "not set yet";
    }
    std::ostringstream out;
};

TEST_F(XmlTags, DocumentsAreHtmlByDefault) {
    EXPECT_FALSE(xmlOutput);
    EXPECT_TRUE(htmlOutput);
}

TEST_F(XmlTags, FrameElementsHaveTheirNames) {
    EXPECT_STREQ(MndXmlTags::rootTag.name.c_str(), "Mendrake");
    EXPECT_STREQ(MndXmlTags::refTag.name.c_str(), "reference");
    EXPECT_STREQ(MndXmlTags::dataTag.name.c_str(), "data");
    EXPECT_STREQ(MndXmlTags::headerTag.name.c_str(), "header");
}

TEST(TXmlTagTime, IsNotSetBeforeTheFirstRun) {
    EXPECT_STREQ(TXmlTag::time.c_str(), "not set yet");
}

TEST_F(XmlTags, WriteAndEndAreThePlainTags) {
    const TXmlTag tag("run");
    EXPECT_STREQ(TXmlTag::write(tag).c_str(), "<run>\n");
    EXPECT_STREQ(TXmlTag::end(tag).c_str(), "</run>\n");
}

TEST_F(XmlTags, OpenLeavesTheTextElementAndCloseEntersItAgain) {
    const TXmlTag tag("run");
    EXPECT_STREQ(TXmlTag::open(tag).c_str(), "</data> <run time=\"05/03/24 at 10:11:12\">\n");
    EXPECT_STREQ(TXmlTag::close(tag).c_str(), "</run> <data>\n");
}

TEST_F(XmlTags, OpenWritesAnAttributeOnlyWhenBothPartsAreGiven) {
    TXmlTag tag("obsHapFreq");
    tag.attribute_name = "samp";
    EXPECT_STREQ(TXmlTag::open(tag).c_str(), "</data> <obsHapFreq time=\"05/03/24 at 10:11:12\">\n");
    tag.attribute_value = "A & \"B\"";
    EXPECT_STREQ(TXmlTag::open(tag).c_str(),
                 "</data> <obsHapFreq samp=\"A &amp; &quot;B&quot;\" time=\"05/03/24 at 10:11:12\">\n");
    tag.attribute_name = "";
    EXPECT_STREQ(TXmlTag::open(tag).c_str(), "</data> <obsHapFreq time=\"05/03/24 at 10:11:12\">\n");
}

// A text over the limit of my_string would be dropped, and the element would never be opened.
TEST_F(XmlTags, OpenSurvivesAVeryLongAttribute) {
    const TXmlTag tag("obsHapFreq", "samp", std::string(140000, '<').c_str());
    const std::string text = TXmlTag::open(tag).c_str();
    EXPECT_EQ(text.rfind("</data> <obsHapFreq samp=\"&lt;", 0), 0u);
    EXPECT_NE(text.find("\" time=\"05/03/24 at 10:11:12\">\n"), std::string::npos);
}

TEST_F(XmlTags, NothingOfATagReachesAnHtmlDocument) {
    const TXmlTag tag("run");
    open_table(out, tag);
    close_table(out, tag);
    EXPECT_EQ(out.str(), "");
    xmlOutput = true;
    open_table(out, tag);
    close_table(out, tag);
    EXPECT_EQ(out.str(), "</data> <run time=\"05/03/24 at 10:11:12\">\n</run> <data>\n");
}

TEST_F(XmlTags, HtmlAnchor) {
    out << html_anchor{"05_03_24_run"};
    EXPECT_EQ(out.str(), "<A NAME=\"05_03_24_run\"></A>\n");
}

TEST_F(XmlTags, XmlAnchorStandsOutsideOfTheTextElement) {
    out << xml_anchor{"05_03_24_run"};
    EXPECT_EQ(out.str(), "</data>\n\n <A NAME=\"05_03_24_run\"></A> \n<data>\n\n");
}

TEST_F(XmlTags, AnchorTakesTheFormOfTheDocument) {
    write_anchor(out, "x\"<y>");
    EXPECT_EQ(out.str(), "<A NAME=\"x&quot;&lt;y&gt;\"></A>\n");
    out.str("");
    xmlOutput = true;
    write_anchor(out, "x\"<y>");
    EXPECT_EQ(out.str(), "</data>\n\n <A NAME=\"x&quot;&lt;y&gt;\"></A> \n<data>\n\n");
}

TEST_F(XmlTags, HeaderIsAnElementOfItsOwnInXml) {
    xmlOutput = true;
    out << THeader{"Mendrake results"};
    EXPECT_EQ(out.str(), "\n</data>\n\n<header>\nMendrake results\n</header>\n<data>\n\n");
}

TEST_F(XmlTags, HeaderIsALineOfTextInHtml) {
    out << THeader{"Mendrake results"};
    EXPECT_EQ(out.str(), "\nMendrake results\n");
}

}  // namespace
}  // namespace mnd
