#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "input/structure.h"
#include "model/samples.h"
#include "run/settings.h"
#include "support/captured_log.h"
#include "support/captured_reports.h"
#include "support/temp_folder.h"

namespace {

using namespace mnd;
using mnd_test::CapturedLog;
using mnd_test::CapturedReports;
using mnd_test::read_text;
using mnd_test::Report;
using mnd_test::TempFolder;
using mnd_test::write_text;

constexpr char kContent[] = "Structure::read_id_content()";

// Reads sections over the samples "one" to "four"; the project's folder is a fresh one.
class FreeFormStructure : public ::testing::Test {
protected:
    using Names = std::vector<std::string>;
    using Reports = std::vector<Report>;

    FreeFormStructure() {
        for (const char* name : {"one", "two", "three", "four"}) {
            auto* sample = new Population;
            sample->name = name;
            samples.populations.Add(sample);
        }
        s.project_directory = (folder.path().string() + "/").c_str();
        profile.the_settings = &s;
    }
    int open(const std::string& text) {
        write_text(folder / "section.txt", text);
        std::ifstream file(folder / "section.txt");
        const int result = structure.open(file, profile, samples);
        rest.assign(std::istreambuf_iterator<char>(file.rdbuf()), {});
        return result;
    }
    Names names(std::size_t group) const {
        Names list;
        for (const Population* sample : structure.groups.at(group))
            list.emplace_back(sample->name.view());
        return list;
    }
    // The section is refused at the keyword, after an error from a function.
    void expect_refused(const std::string& text, const char* keyword, const std::string& origin, int code) {
        const CapturedReports own;
        EXPECT_EQ(open(text), 0) << text;
        const std::string refusal = std::string("Structure::open() (\"") + keyword + "\")";
        EXPECT_EQ(own.all(), (Reports{{Error, origin, code}, {Error, refusal, 55}})) << text;
        EXPECT_EQ(structure.NbSamples, 0);
        EXPECT_EQ(structure.NbGroups, 0);
        EXPECT_TRUE(structure.groups.empty());
    }

    TempFolder folder;
    settings s;
    CapturedLog log;
    CapturedReports reports;
    ProfileSettings profile;
    Samples samples;
    Structure structure;
    std::string rest;  // what the reader left in the stream
};

TEST_F(FreeFormStructure, TakesNameAndGroups) {
    profile.Title = "Of the project";
    profile.NbGroups = 7;
    ASSERT_EQ(open(" # before\n StructureName = \"A group\" NbGroups=2 # two\n DistMatLabel=steps\n"
                   " Group = { \"one\" # a comment\n two }Group\n=\n{\n'f'\"four\"\n}\n [[Mantel]]\n"),
              0);
    samples.populations[2]->name = "f";
    ASSERT_EQ(open(" # before\n StructureName = \"A group\" NbGroups=2 # two\n DistMatLabel=steps\n"
                   " Group = { \"one\" # a comment\n two }Group\n=\n{\n'f'\"four\"\n}\n [[Mantel]]\n"),
              1)
        << log.text();
    EXPECT_EQ(structure.StructureName.view(), "A group");
    EXPECT_EQ(structure.Title.view(), "Of the project");
    EXPECT_EQ(structure.DistMatLabel.view(), "steps");
    EXPECT_EQ(structure.NbGroups, 2);
    EXPECT_EQ(structure.NbSamples, 4);
    EXPECT_EQ(structure.group_sizes, (std::vector<std::int32_t>{2, 2}));
    EXPECT_EQ(names(0), (Names{"one", "two"}));
    EXPECT_EQ(names(1), (Names{"f", "four"}));
    EXPECT_EQ(structure.groups[0].owns_elements, 0);
    EXPECT_EQ(NbGroupsRead, 2);
    EXPECT_EQ(rest, "[[Mantel]]\n");
    EXPECT_EQ(log.text(), "");
}

TEST_F(FreeFormStructure, ItsOutputIsReadAgain) {
    ASSERT_EQ(open("StructureName=\"x y\" NbGroups=2 Group={four} Group={one two}"), 1) << log.text();
    std::ostringstream text;
    text << structure;
    const std::string section = text.str();
    ASSERT_EQ(open(section.substr(section.find("]]") + 2)), 1) << log.text();
    EXPECT_EQ(names(1), (Names{"one", "two"}));
    std::ostringstream again;
    again << structure;
    EXPECT_EQ(again.str(), section);
}

TEST_F(FreeFormStructure, ASecondReadingForgetsTheFirst) {
    ASSERT_EQ(open("NbGroups=2\nGroup={one}\nGroup={two}\n"), 1);
    ASSERT_EQ(open("NbGroups=1\nGroup={one}\n"), 1) << log.text();
    EXPECT_EQ(structure.NbSamples, 1);
    EXPECT_EQ(names(0), (Names{"one"}));
}

TEST_F(FreeFormStructure, OwnProfileValuesAreTaken) {
    ASSERT_EQ(open("GenotypicData=1\nNbGroups=1\nGroup={one}\n"), 1);
    EXPECT_EQ(structure.GenotypicData, 1);
    EXPECT_EQ(profile.GenotypicData, 0);
}

TEST_F(FreeFormStructure, EmptySectionHasNoGroups) {
    EXPECT_EQ(open("\n[[Mantel]]\n"), 1);
    EXPECT_EQ(open(""), 1);
    EXPECT_EQ(structure.NbGroups, 0);
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(FreeFormStructure, GroupMayBeEmpty) {
    ASSERT_EQ(open("NbGroups=1\nGroup={ # none\n }\n"), 1);
    EXPECT_EQ(structure.group_sizes, (std::vector<std::int32_t>{0}));
}

TEST_F(FreeFormStructure, MissingGroupsAreAnInvalidNumber) {
    EXPECT_EQ(open("NbGroups=3\nGroup={one}\nGroup={two}\n"), 0);
    EXPECT_EQ(reports.all(), (Reports{{Error, "Structure::explore_content()", 47}}));
}

TEST_F(FreeFormStructure, SurplusGroupsAreRefused) {
    expect_refused("NbGroups=1\nGroup={one}\nGroup={two}\n", "group", kContent, 53);
}

TEST_F(FreeFormStructure, GroupBeforeTheirNumberIsRefused) {
    profile.NbGroups = 1;  // that of the profile says nothing of these
    expect_refused("Group={one}\n", "group", kContent, 49);
    expect_refused("NbGroups=0\nGroup={one}\n", "group", kContent, 49);
}

TEST_F(FreeFormStructure, ForeignWordsEndTheReading) {
    EXPECT_EQ(open("NbGroups=1\nNonsense=1\nGroup={one}\n"), 0);
    EXPECT_EQ(open("NbGroups=1.5\nGroup={one}\n"), 0);
    const Report foreign{Error, "Structure::open()", 54};
    const Report point{Error, "skip_comments(ifstream& ifs) (\".\")", 100};
    EXPECT_EQ(reports.all(), (Reports{foreign, point, foreign}));
    expect_refused("SampleName=\"x\"\n", "samplename", kContent, 54);
}

TEST_F(FreeFormStructure, NumberOfGroupsMustBeOne) {
    expect_refused("NbGroups=two\nGroup={one}\n", "nbgroups", kContent, 47);
    expect_refused("NbGroups=", "nbgroups", kContent, 47);
}

TEST_F(FreeFormStructure, NumberOfGroupsThatIsNotStoredIsTold) {
    for (const char* number : {"1001", "2147483648", "4294967297", "99999999999999999999999", "-1"}) {
        const CapturedReports own;
        EXPECT_EQ(open(std::string("NbGroups=1\nNbGroups=") + number + "\nGroup={one}\n"), 1) << number;
        EXPECT_EQ(own.all(), (Reports{{Error, kContent, 47}})) << number;
        EXPECT_EQ(structure.NbGroups, 1);
    }
    EXPECT_EQ(open("NbGroups=1000\nGroup={one}\n"), 0);
    EXPECT_EQ(structure.NbGroups, 1000);
    EXPECT_EQ(structure.groups.size(), 1000u);
}

TEST_F(FreeFormStructure, NumberOfGroupsMayChangeOnTheWay) {
    ASSERT_EQ(open("NbGroups=1\nGroup={one}\nNbGroups=3\nGroup={two}\nGroup={four}\n"), 1) << log.text();
    EXPECT_EQ(names(0), (Names{"one"}));
    EXPECT_EQ(names(2), (Names{"four"}));
    EXPECT_EQ(open("NbGroups=2\nGroup={one}\nGroup={two}\nNbGroups=1\n"), 0);
    EXPECT_EQ(structure.groups.size(), 1u);
    EXPECT_EQ(structure.NbSamples, 1);
    EXPECT_EQ(open("NbGroups=2\nGroup={one}\nGroup={two}\nNbGroups=1\nNbGroups=2\n"), 1);
    EXPECT_EQ(names(1), (Names{"two"}));
    EXPECT_EQ(structure.NbSamples, 2);
}

TEST_F(FreeFormStructure, UnknownSampleIsRefusedByName) {
    expect_refused("NbGroups=2\nGroup={one}\nGroup={ One }\n", "group",
                   "Structure::read_id_content() (\"One\")", 51);
    EXPECT_EQ(NbGroupsRead, 0);
    expect_refused("NbGroups=1\nGroup={ \"\" }\n", "group", "Structure::read_id_content() (\"\")", 51);
}

TEST_F(FreeFormStructure, SampleInAGroupCantBeAddedAgain) {
    expect_refused("NbGroups=1\nGroup={one one}\n", "group", "Structure::read_id_content() (group#1)", 51);
    EXPECT_TRUE(log.holds("\tError: Sample \"one\" of Group #1 stands in a group already\n"));
    expect_refused("NbGroups=2\nGroup={one}\nGroup={two one}\n", "group",
                   "Structure::read_id_content() (group#2)", 51);
}

// Single quotes hold one character; a longer name in them must not get lost.
TEST_F(FreeFormStructure, LongNameInSingleQuotesIsRefused) {
    EXPECT_EQ(open("NbGroups=1\nGroup={ one 'two' }\n"), 0);
    EXPECT_EQ(reports.all(), (Reports{{Error, "get_qstring(ifstream& ifs, my_string& s)", 101},
                                      {Error, "Structure::read_id_content() (group#1)", 51},
                                      {Error, "Structure::open() (\"group\")", 55}}));
    EXPECT_EQ(structure.NbSamples, 0);
}

TEST_F(FreeFormStructure, MissingOpeningBrace) {
    expect_refused("NbGroups=1\nGroup=\"one\"\n", "group", "Structure::read_id_content() (group#1)", 50);
    expect_refused("NbGroups=2\nGroup={one}\nGroup=", "group", "Structure::read_id_content() (group#2)", 50);
}

TEST_F(FreeFormStructure, WhatStandsAheadOfTheOpeningBraceIsToldOf) {
    ASSERT_EQ(open("NbGroups=1\nGroup= the { one }\n"), 1);
    EXPECT_EQ(log.text(), "\tWarning: What stands ahead of the opening brace of Group #1 is passed over\n");
}

TEST_F(FreeFormStructure, MissingClosingBraceNamesBuf) {
    expect_refused("NbGroups=1\nGroup={ one\n [[Mantel]]\n", "group", "buf", 52);
    expect_refused("NbGroups=1\nGroup={ one", "group", "buf", 52);
    expect_refused("NbGroups=1\nGroup={ \"one\", \"two\" }", "group", "buf", 52);
}

TEST_F(FreeFormStructure, NameInOtherLettersNeedsQuotes) {
    samples.populations[1]->name = "\xC3\xA9";
    ASSERT_EQ(open("NbGroups=1\nGroup={ one \"\xC3\xA9\" }"), 1);
    EXPECT_EQ(names(0), (Names{"one", "\xC3\xA9"}));
    expect_refused("NbGroups=1\nGroup={ one \xC3\xA9 }", "group", "buf", 52);
}

TEST_F(FreeFormStructure, BraceMayFollowAStrayCharacter) {
    ASSERT_EQ(open("NbGroups=1\nGroup={ \"one\" ; # end\n }\n"), 1);
    EXPECT_EQ(names(0), (Names{"one"}));
}

TEST_F(FreeFormStructure, HeadingsAndBracesWithinAName) {
    samples.populations[1]->name = "the [Mantel] {x}";
    ASSERT_EQ(open("NbGroups=1\nGroup={ \"the [Mantel] {x}\" one }"), 1) << log.text();
    EXPECT_EQ(names(0), (Names{"the [Mantel] {x}", "one"}));
}

TEST_F(FreeFormStructure, BadNamesAreRefused) {
    expect_refused("StructureName=;\n", "structurename", kContent, 46);
    expect_refused("StructureName=EXTERN ;\n", "structurename", kContent, 46);
    expect_refused("DistMatLabel=;\n", "distmatlabel", kContent, 48);
}

TEST_F(FreeFormStructure, ExternalFileGivesItsNameAlone) {
    write_text(folder / "old groups.txt", "NbGroups=9\n");
    ASSERT_EQ(open("StructureName = EXTERN \"old groups.txt\"\nNbGroups=1\nGroup={one}\n"), 1);
    EXPECT_EQ(log.text(), "\t\tMust read External AMOVA Group file...\n");
    EXPECT_EQ(structure.StructureName.view(), "old groups.txt");
    EXPECT_EQ(structure.NbGroups, 1);
    ASSERT_EQ(open("StructureName = \"EXTERN\" \"" + (folder / "old groups.txt").string() + "\"\n"), 1);
    ASSERT_EQ(open("StructureName = EXTERN \"section.txt\"\n"), 1);  // of itself
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(FreeFormStructure, ExternalFileThatDoesNotOpenIsRefused) {
    const std::string path = folder.path().string();
    for (const std::string& name : {std::string("absent.txt"), path, std::string(), std::string(5000, 'x')})
        expect_refused("StructureName = EXTERN \"" + name + "\"\n", "structurename", kContent, 45);
}

// Every section that is cut short is refused or read, but never loops or crashes.
TEST_F(FreeFormStructure, HostileSectionsEnd) {
    const std::string whole =
        "StructureName=EXTERN \"section.txt\"\nNbGroups=2\nGroup={ \"one\" two }\nGroup={four}";
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        const int result = open(whole.substr(0, length));
        EXPECT_EQ(structure.groups.empty() ? 0u : static_cast<std::size_t>(structure.NbGroups),
                  structure.groups.size());
        if (length < whole.size() && structure.NbGroups > 0) {
            EXPECT_EQ(result, 0) << length;
        }
    }
    EXPECT_EQ(open(whole), 1);
    std::string junk;
    for (int i = 0; i < 20000; ++i)
        junk += static_cast<char>((i * 167 + i / 256 + 13) % 256);
    open(junk);
    EXPECT_EQ(open("NbGroups=2\nGroup={" + junk), 0);
    EXPECT_EQ(open("NbGroups=2\nGroup={one}\nGroup={\"" + std::string(400000, 'x')), 0);
    EXPECT_EQ(open(std::string("NbGroups=1\nGroup\0={\xff}", 21)), 0);
    EXPECT_EQ(open("NbGroups=2\nGroup={{{{\""), 0);
}

// ---- Listing

class StructureExplore : public ::testing::Test {
protected:
    int explore(const std::string& text) {
        write_text(folder / "p.mnp", text);
        std::ifstream file(folder / "p.mnp");
        const int result = structure.explore(file, (folder / "groups.txt").c_str());
        next = static_cast<char>(file.peek());
        return result;
    }
    std::string groups() const { return read_text(folder / "groups.txt"); }

    TempFolder folder;
    CapturedLog log;
    CapturedReports reports;
    Structure structure;
    char next = 0;  // where the reader stopped
};

TEST_F(StructureExplore, ListsTheGroups) {
    EXPECT_EQ(
        explore("\n StructureName = \"A group\"\n DistMatLabel=x\n NbGroups = 2 # two\n"
                " Group = { \"Sample 1\" # one\n \"Sample 2\" }\n #Group2\n Group={\n s3}\n [[Mantel]]"),
        1);
    EXPECT_EQ(groups(), "2\n{\nSample 1\nSample 2\n}\n{\ns3\n}\n");
    EXPECT_EQ(NbGroupsRead, 2);
    EXPECT_EQ(next, '[');
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(StructureExplore, ExternalStructureIsDropped) {
    EXPECT_EQ(explore("StructureName=EXTERN \"groups of old.txt\"\nNbGroups=1\nGroup={\"a\"}\n"), 1);
    EXPECT_EQ(groups(), "1\n{\na\n}\n");
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(StructureExplore, BraceMayFollowAStrayCharacter) {
    EXPECT_EQ(explore("NbGroups=1\nGroup={ \"a\" ; # end\n }\n"), 1);
    EXPECT_EQ(groups(), "1\n{\na\n}\n");
    EXPECT_EQ(explore("NbGroups=1\nGroup={ \"a\", \"b\" }\n"), 0);
    EXPECT_EQ(reports.all()[0], (Report{Error, "buf", 52}));
}

TEST_F(StructureExplore, LongNameInSingleQuotesIsRefused) {
    EXPECT_EQ(explore("NbGroups=1\nGroup={ a 'two' }\n"), 0);
    ASSERT_EQ(reports.all().size(), 3u);
    EXPECT_EQ(reports.all()[1], (Report{Error, "Structure::explore_content()", 51}));
    EXPECT_EQ(explore("NbGroups=1\nGroup={ a 't' }\n"), 1);
    EXPECT_EQ(groups(), "1\n{\na\nt\n}\n");
}

TEST_F(StructureExplore, SurplusGroupsAreSkipped) {
    EXPECT_EQ(explore("NbGroups=1\nGroup={\"a\"}\nGroup={\"b\" \"c\"}\n"), 1);
    EXPECT_EQ(groups(), "1\n{\na\n}\n");
}

TEST_F(StructureExplore, MissingGroupsAreAnInvalidNumber) {
    EXPECT_EQ(explore("NbGroups=3\nGroup={\"a\"}\n"), 0);
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Error, "Structure::explore_content()", 47}));
}

TEST_F(StructureExplore, GroupBeforeTheirNumber) {
    EXPECT_EQ(explore("Group={\"a\"}\n"), 0);
    ASSERT_EQ(reports.all().size(), 2u);
    EXPECT_EQ(reports.all()[0], (Report{Error, "Structure::explore_content()", 49}));
    EXPECT_EQ(reports.all()[1], (Report{Error, "Structure::explore(\"group\")", 55}));
}

TEST_F(StructureExplore, TooManyGroupsAreToldAndReadingGoesOn) {
    EXPECT_EQ(explore("NbGroups=1001\nNbGroups=1\nGroup={\"a\"}\n"), 1);
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Error, "Structure::explore_content()", 47}));
    EXPECT_EQ(groups(), "0\n1\n{\na\n}\n");
    EXPECT_EQ(explore("NbGroups=1\nNbGroups=99999999999\nNbGroups=-1\nGroup={\"a\"}\n"), 1);
    EXPECT_EQ(groups(), "1\n1\n1\n{\na\n}\n");
}

TEST_F(StructureExplore, ThousandGroupsAreStored) {
    EXPECT_EQ(explore("NbGroups=1000\n"), 0);
    EXPECT_EQ(structure.NbGroups, 1000);
    EXPECT_EQ(groups(), "1000\n");
}

TEST_F(StructureExplore, NumberOfGroupsMustBeOne) {
    EXPECT_EQ(explore("NbGroups=two\n"), 0);
    ASSERT_EQ(reports.all().size(), 2u);
    EXPECT_EQ(reports.all()[0], (Report{Error, "Structure::explore_content()", 47}));
    EXPECT_EQ(reports.all()[1], (Report{Error, "Structure::explore(\"nbgroups\")", 55}));
}

TEST_F(StructureExplore, MissingOpeningBrace) {
    EXPECT_EQ(explore("NbGroups=1\nGroup=\"a\"\n"), 0);
    EXPECT_EQ(reports.all()[0], (Report{Error, "Structure::explore_content()", 50}));
}

TEST_F(StructureExplore, MissingClosingBraceNamesBuf) {
    EXPECT_EQ(explore("NbGroups=1\nGroup={ \"a\"\n [[Mantel]]\n"), 0);
    ASSERT_EQ(reports.all().size(), 2u);
    EXPECT_EQ(reports.all()[0], (Report{Error, "buf", 52}));
}

TEST_F(StructureExplore, BadNamesHaveTheirOwnCodes) {
    explore("StructureName=;\n");
    EXPECT_EQ(reports.all()[0], (Report{Error, "Structure::explore_content()", 56}));
    explore("DistMatLabel=;\n");
    EXPECT_EQ(reports.all()[2], (Report{Error, "Structure::explore_content()", 57}));
}

TEST_F(StructureExplore, ForeignKeywords) {
    EXPECT_EQ(explore("Nonsense=1\n"), 0);
    EXPECT_EQ(reports.all()[0], (Report{Error, "Structure::explore_content()", 54}));
    EXPECT_EQ(explore("SampleName=\"x\"\n"), 0);
    EXPECT_EQ(reports.all()[1], (Report{Error, "Structure::explore_content()", 54}));
    EXPECT_EQ(explore("GenotypicData=1\n"), 1);
    EXPECT_EQ(structure.GenotypicData, 1);
}

TEST_F(StructureExplore, HostileFilesEnd) {
    explore("");
    explore("NbGroups=99999999999999\n");
    explore("NbGroups=2\nGroup={{{{\"");
    explore(std::string("Group\0={\xff}", 10));
    EXPECT_FALSE(reports.all().empty());
}

}  // namespace
