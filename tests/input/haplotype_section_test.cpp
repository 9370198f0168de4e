// Lists of haplotype definitions: data characters, the line reader, the older reader, writing.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "model/haplotypes.h"
#include "run/settings.h"
#include "support/project_log.h"
#include "support/sample_texts.h"
#include "support/text_files.h"

namespace {

using mnd::Haplo_DB;
using mnd::HaploDef;
using mnd::my_string;
using mnd::ProfileSettings;
using mnd_test::haplotypic;
using mnd_test::ProjectLog;

// Whether the text is usable data of this type; content receives what is kept.
bool parse(int type, char separator, const char* text, std::string& content) {
    ProfileSettings profile = haplotypic(type, separator);
    HaploDef def("h");
    my_string line(text);
    const bool usable = def.read_data(line, profile);
    content = def.content.c_str();
    return usable;
}

TEST(HaplotypeData, DnaTakesLettersGapsAndTheMissingMark) {
    std::string content;
    EXPECT_TRUE(parse(mnd::DNA, 0, "ACgt-?N", content));
    EXPECT_EQ(content, "ACgt-?N");
}

TEST(HaplotypeData, BlanksAreDroppedAndACommentEndsTheData) {
    std::string content;
    EXPECT_TRUE(parse(mnd::DNA, 0, "AC GT #!!", content));
    EXPECT_EQ(content, "ACGT");
    EXPECT_TRUE(parse(mnd::DNA, 0, "AC\nGT", content));
    EXPECT_EQ(content, "AC");
}

TEST(HaplotypeData, ForeignCharactersAreReportedByType) {
    const ProjectLog log;
    std::string content;
    EXPECT_FALSE(parse(mnd::DNA, 0, "AC1", content));
    EXPECT_FALSE(parse(mnd::RFLP, 0, "012", content));
    EXPECT_FALSE(parse(mnd::MICROSAT, ' ', "12 -9", content));
    EXPECT_TRUE(log.reports("ERROR", "HaploDef::read_data()", "invalid DNA data"));
    EXPECT_TRUE(log.reports("ERROR", "HaploDef::read_data()", "invalid RFLP data"));
    EXPECT_TRUE(log.reports("ERROR", "HaploDef::read_data()", "invalid MICROSAT data"));
}

TEST(HaplotypeData, EmptyDataAreRefusedButForStandardAndFrequency) {
    std::string content;
    EXPECT_FALSE(parse(mnd::DNA, 0, "", content));
    EXPECT_FALSE(parse(mnd::RFLP, 0, "  ", content));
    EXPECT_FALSE(parse(mnd::MICROSAT, ' ', "", content));
    EXPECT_TRUE(parse(mnd::STANDARD, ' ', "", content));
    EXPECT_TRUE(parse(mnd::FREQUENCY, ' ', "12 14", content));
    EXPECT_EQ(content, "");
}

TEST(HaplotypeData, StandardKeepsTheTextButItsTrailingBlanks) {
    std::string content;
    EXPECT_TRUE(parse(mnd::STANDARD, ' ', "A* {b} 1\t  ", content));
    EXPECT_EQ(content, "A* {b} 1");
}

TEST(HaplotypeData, TheSeparatorIsKeptButAtTheEnd) {
    std::string content;
    EXPECT_TRUE(parse(mnd::MICROSAT, ' ', "12 14 ? ", content));
    EXPECT_EQ(content, "12 14 ?");
}

TEST(HaplotypeData, AStreamGivesItsNextLine) {
    ProfileSettings profile = haplotypic(mnd::DNA, 0);
    std::istringstream in("ACG T # comment\r\nGG");
    HaploDef first("a");
    HaploDef second("b");
    HaploDef third("c");
    EXPECT_TRUE(first.read_data(in, profile));
    EXPECT_TRUE(second.read_data(in, profile));
    EXPECT_FALSE(third.read_data(in, profile));
    EXPECT_STREQ(first.content.c_str(), "ACGT");
    EXPECT_STREQ(second.content.c_str(), "GG");
}

TEST(HaplotypeData, AFrequencyStreamIsReadUpToTheNextEntry) {
    ProfileSettings profile = haplotypic(mnd::FREQUENCY, 0);
    std::istringstream in("  # nothing\n}");
    HaploDef def("a");
    EXPECT_TRUE(def.read_data(in, profile));
    EXPECT_EQ(in.get(), '}');
}

class HaplotypeList : public ::testing::Test {
protected:
    int read(const std::string& text, int type = mnd::DNA, char separator = 0, bool external = false) {
        profile_ = haplotypic(type, separator);
        std::istringstream in(text);
        line_no_ = 10;
        return db_.NewReadHaplotypeList(in, profile_, external, line_no_);
    }

    ProjectLog log_;
    Haplo_DB db_;
    ProfileSettings profile_;
    int line_no_ = 0;
};

TEST_F(HaplotypeList, ReadsDefinitionsUpToTheBrace) {
    EXPECT_EQ(read("  h1 ACGT\n# a comment\n\n\th2\tAC-? # note\n}\nnext"), 1);
    ASSERT_EQ(db_.list.count, 2);
    EXPECT_STREQ(db_.list.data[0]->name.c_str(), "h1");
    EXPECT_STREQ(db_.list.data[1]->content.c_str(), "AC-?");
    EXPECT_EQ(line_no_, 15);
}

TEST_F(HaplotypeList, LowerCaseIsKept) {
    EXPECT_EQ(read("h acgt\n}"), 1);
    EXPECT_STREQ(db_.list.data[0]->content.c_str(), "acgt");
}

TEST_F(HaplotypeList, AnExternalListNeedsNoBrace) {
    EXPECT_EQ(read("h1 A\r\nh2 C\r\n", mnd::DNA, 0, true), 1);
    EXPECT_EQ(db_.list.count, 2);
    EXPECT_STREQ(db_.list.data[1]->content.c_str(), "C");
}

TEST_F(HaplotypeList, AMissingBraceIsReportedUnderTheNameOfAnotherReader) {
    EXPECT_EQ(read("h1 A\nh2 C\n"), 0);
    EXPECT_EQ(db_.list.count, 2);
    EXPECT_TRUE(
        log_.holds("\tMissing closing brace in Haplotype definition list, aborting reading procedure"));
    EXPECT_TRUE(log_.reports("ERROR", "Population::New_read_gametic_data()",
                             "missing closing brace in Sampledata definition"));
}

TEST_F(HaplotypeList, TheNextSectionEndsTheList) {
    for (const char* section : {"[[DistanceMatrix]]", "[[Samples]]", "[[Structure]]", "[[Mantel]]"}) {
        db_.reset();
        EXPECT_EQ(read(std::string("h1 A\n\t") + section + "\nh2 C\n}"), 0) << section;
        EXPECT_EQ(db_.list.count, 1) << section;
    }
}

TEST_F(HaplotypeList, ABadStreamIsReported) {
    std::istringstream in("h1 A\n}");
    in.setstate(std::ios_base::failbit);
    profile_ = haplotypic(mnd::DNA, 0);
    EXPECT_EQ(db_.NewReadHaplotypeList(in, profile_, false, line_no_), 0);
    EXPECT_TRUE(log_.holds("\tUnable to read haplotype list, aborting reading procedure"));
    EXPECT_TRUE(
        log_.reports("ERROR", "Haplo_DB::NewReadHaplotypeList()", "error while reading haplotype list"));
}

TEST_F(HaplotypeList, AFolderIsNoExternalList) {
    std::ifstream in(".");
    profile_ = haplotypic(mnd::DNA, 0);
    EXPECT_EQ(db_.NewReadHaplotypeList(in, profile_, true, line_no_), 0);
    EXPECT_TRUE(log_.holds("error while reading haplotype list"));
}

TEST_F(HaplotypeList, ADoubleNameFlushesTheWholeList) {
    db_.name = "mine";
    EXPECT_EQ(read("h1 A\nh2 C\nh1 G\n}"), 0);
    EXPECT_EQ(db_.list.count, 0);
    EXPECT_STREQ(db_.name.c_str(), "mine");
    EXPECT_EQ(db_.find_by_name("h1"), nullptr);
    EXPECT_TRUE(log_.holds(
        "\tHaplotype \"h1\" listed on line 13 is already defined previously, aborting reading procedure..."));
    EXPECT_TRUE(log_.reports("ERROR", "Haplo_DB::NewReadHaplotypeList()", "haplotype already defined"));
}

TEST_F(HaplotypeList, AnotherNumberOfLociLeavesTheDefinitionsReadSoFar) {
    EXPECT_EQ(read("h1 12 14\nh2 12 14 16\n}", mnd::MICROSAT, ' '), 0);
    EXPECT_EQ(db_.list.count, 1);
    EXPECT_TRUE(
        log_.holds("\tNumber of loci for haplotype \"h2\" is different (3) from that previously defined (2) "
                   "on line 12"));
    EXPECT_TRUE(log_.reports("ERROR", "Population::NewReadHaplotypeList()",
                             "phenotypes have different number of loci"));
}

TEST_F(HaplotypeList, WithoutSeparatorTheLengthIsTheNumberOfLoci) {
    EXPECT_EQ(read("h1 ACG\nh2 A C\n}"), 0);
    EXPECT_TRUE(log_.holds("is different (2) from that previously defined (3)"));
}

TEST_F(HaplotypeList, BadDataFlushTheList) {
    EXPECT_EQ(read("h1 AC\nh2 A!\n}"), 0);
    EXPECT_EQ(db_.list.count, 0);
    EXPECT_TRUE(log_.holds("\tUnable to read haplotype definition on line 12, aborting reading procedure"));
    EXPECT_TRUE(log_.reports("ERROR", "Haplo_DB::NewReadHaplotypeList()", "unable to read haplotype data"));
}

TEST_F(HaplotypeList, ANameWithoutDataIsRefusedForSequencesAndTakenForStandard) {
    EXPECT_EQ(read("h1\n}", mnd::DNA, 0), 0);
    EXPECT_EQ(read("h1\n}", mnd::RFLP, 0), 0);
    EXPECT_EQ(read("h1\n}", mnd::MICROSAT, ' '), 0);
    EXPECT_EQ(read("h1\n}", mnd::STANDARD, ' '), 1);
    db_.reset();
    EXPECT_EQ(read("h1\nh2\n}", mnd::FREQUENCY, ' '), 1);
    EXPECT_EQ(db_.list.count, 2);
}

TEST_F(HaplotypeList, MinusIsNoMicrosatelliteDatum) {
    EXPECT_EQ(read("h1 12 -\n}", mnd::MICROSAT, ' '), 0);
    EXPECT_TRUE(log_.holds("invalid MICROSAT data"));
}

TEST_F(HaplotypeList, BraceBehindDataBecomesPartOfIt) {
    EXPECT_EQ(read("h1 A B }\nh2 C", mnd::STANDARD, ' '), 1);
    ASSERT_EQ(db_.list.count, 1);
    EXPECT_STREQ(db_.list.data[0]->content.c_str(), "A B }");
    db_.reset();
    EXPECT_EQ(read("h1 AC}\n"), 0);
    EXPECT_TRUE(log_.holds("invalid DNA data"));
}

TEST_F(HaplotypeList, ALineBeyondTheLimitIsRefused) {
    EXPECT_EQ(read("h1 " + std::string(200000, 'A') + "\n}", mnd::DNA, 0, true), 0);
    EXPECT_TRUE(log_.holds("error while reading haplotype list"));
}

TEST_F(HaplotypeList, BinaryJunkIsRefused) {
    EXPECT_EQ(read(std::string("\x01\xff\x80\x7f\n\xfe \x02\n}", 10)), 0);
}

// ---- The older reader

class OlderHaplotypeList : public ::testing::Test {
protected:
    ~OlderHaplotypeList() override { std::remove(path_.c_str()); }

    bool read(const std::string& text) {
        mnd_test::write_file(path_, text);
        std::ifstream in(path_);
        return db_.open(in, haplotypic(mnd::DNA, 0));
    }

    std::string path_ = mnd_test::unique_path("haplotypes");
    ProjectLog log_;
    Haplo_DB db_;
};

TEST_F(OlderHaplotypeList, ReadsNameAndBracedList) {
    EXPECT_TRUE(read(
        "HaplListName=\"my list\"\nHaplList={\n \"h1\" ACGT\n# note\n h2 AC-? # note\n}\n[[Samples]]\n"));
    EXPECT_STREQ(db_.name.c_str(), "my list");
    ASSERT_EQ(db_.list.count, 2);
    EXPECT_STREQ(db_.list.data[0]->content.c_str(), "ACGT");
    EXPECT_STREQ(db_.list.data[1]->content.c_str(), "AC-?");
}

TEST_F(OlderHaplotypeList, ReadsAnExternalFile) {
    const std::string list = mnd_test::unique_path("list");
    mnd_test::write_file(list, "h1 AC\nh2 GT\n");
    EXPECT_TRUE(read("HaplList=EXTERN \"" + list + "\"\n[[Samples]]\n"));
    EXPECT_EQ(db_.list.count, 2);
    EXPECT_TRUE(
        log_.reports("INFO", "Haplo_DB::read_id_content()", "reading haplotype list in external file"));
    std::remove(list.c_str());
}

TEST_F(OlderHaplotypeList, FailuresHaveTheirMessages) {
    EXPECT_FALSE(read("HaplList=?\n"));
    EXPECT_TRUE(log_.holds("missing braces after HaplList"));
    EXPECT_FALSE(read("HaplList=INTERN \"x\"\n"));
    EXPECT_TRUE(log_.holds("invalid keyword assigned to \"HaplList\""));
    EXPECT_FALSE(read("HaplList=EXTERN \"/nowhere/at/all\"\n"));
    EXPECT_TRUE(log_.holds("unable to open external haplotype file"));
    EXPECT_FALSE(read("HaplListName=?\n"));
    EXPECT_TRUE(log_.holds("bad value assigned to \"HaplListName\""));
}

TEST_F(OlderHaplotypeList, DoubleNamesAndMissingDataNameTheHaplotype) {
    EXPECT_FALSE(read("HaplList={\nh1 AC\nh1 AC\n}\n"));
    EXPECT_TRUE(log_.reports("ERROR", "Haplo_DB::read_haplotype() (\"h1\")", "haplotype already defined"));
    EXPECT_EQ(db_.list.count, 0);
    EXPECT_FALSE(read("HaplList={\nh1 AC\nh2\n}\n"));
    EXPECT_TRUE(log_.reports("ERROR", "Haplo_DB::read_haplotype() (\"h2\")", "missing haplotype data"));
    EXPECT_FALSE(read("HaplList={\nh1 A1\n}\n"));
    EXPECT_TRUE(
        log_.reports("ERROR", "Haplo_DB::read_haplotype() (\"h1\")", "unable to read haplotype data"));
    EXPECT_TRUE(log_.holds("error while reading haplotype list"));
}

TEST_F(OlderHaplotypeList, AProfileKeywordMayStandInTheSection) {
    EXPECT_TRUE(read("MissingData='N'\nGroup=3\n[[Samples]]\n"));
    EXPECT_EQ(db_.MissingData, 'N');
    EXPECT_TRUE(log_.reports("WARNING", "Haplo_DB::read_id_content()",
                             "invalid keyword in section [HaplotypeDefinition]"));
}

// ---- Writing

TEST(HaplotypeSection, NothingIsWrittenForAnEmptyList) {
    Haplo_DB db;
    std::ostringstream out;
    out << db;
    EXPECT_EQ(out.str(), "");
}

TEST(HaplotypeSection, TheDefaultNameStandsInQuotes) {
    Haplo_DB db;
    db.append(new HaploDef("h1"))->content = "ACGT";
    std::ostringstream out;
    out << db;
    EXPECT_EQ(
        out.str(),
        "\n\t[[HaplotypeDefinition]]\n\n\t\tHaplListName=\"no_name\"\n\t\tHaplList={\nh1\tACGT\n\t\t}\n\n");
}

TEST(HaplotypeSection, GeneratedNameHasNoLineEnd) {
    Haplo_DB db;
    db.name = "UNKNOWN";
    db.append(new HaploDef("h1"));
    std::ostringstream out;
    out << db;
    EXPECT_EQ(out.str(),
              "\n\t[[HaplotypeDefinition]]\n\n\t\tHaplListName=\"generated by mendrake\"\t\tHaplList={\n h1\n"
              "\t\t}\n\n");
}

}  // namespace
