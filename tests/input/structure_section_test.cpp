#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "input/structure.h"
#include "model/samples.h"
#include "support/captured_log.h"
#include "support/captured_reports.h"
#include "support/temp_folder.h"

namespace {

using namespace mnd;
using mnd_test::CapturedLog;
using mnd_test::CapturedReports;
using mnd_test::Report;
using mnd_test::TempFolder;
using mnd_test::write_text;

constexpr char kReporter[] = "Structure::NewReadStructure()";
// What stands before the groups in most tests; line 2 of the section holds the number of groups.
constexpr char kTwoGroups[] = "StructureName = \"Test\"\nNbGroups = 2\n";

// Reads sections over the samples "one" to "four". Line numbers start behind line 10.
class StructureSection : public ::testing::Test {
protected:
    StructureSection() {
        for (const char* name : {"one", "two", "three", "four"}) {
            auto* sample = new Population;
            sample->name = name;
            samples.populations.Add(sample);
        }
    }
    int read(const std::string& text) {
        write_text(folder / "section.txt", text);
        std::ifstream file(folder / "section.txt");
        line_no = 10;
        name_seen = nbgroups_seen = level_seen = group_seen = false;
        return structure.NewReadStructure(file, profile, samples, line_no, line, name_seen, nbgroups_seen,
                                          level_seen, group_seen);
    }
    std::vector<std::string> names(std::size_t group) const {
        std::vector<std::string> list;
        for (const Population* sample : structure.groups.at(group))
            list.emplace_back(sample->name.view());
        return list;
    }
    using Names = std::vector<std::string>;

    TempFolder folder;
    CapturedLog log;
    CapturedReports reports;
    ProfileSettings profile;
    Samples samples;
    Structure structure;
    int line_no = 0;
    my_string line;
    bool name_seen = false, nbgroups_seen = false, level_seen = false, group_seen = false;
};

TEST_F(StructureSection, TakesNameAndGroups) {
    profile.Title = "Of the project";
    ASSERT_EQ(read("  StructureName = \"A group of samples\"\n"
                   "  NbGroups = 2\n"
                   "  Group = { \"one\" \"two\" }\n"
                   "  Group = {\n"
                   "    \"four\"\n"
                   "    \"three\"\n"
                   "  }\n"),
              1);
    EXPECT_EQ(structure.StructureName.view(), "A group of samples");
    EXPECT_EQ(structure.Title.view(), "Of the project");
    EXPECT_EQ(structure.NbGroups, 2);
    EXPECT_EQ(structure.NbSamples, 4);
    EXPECT_EQ(structure.group_sizes, (std::vector<std::int32_t>{2, 2}));
    EXPECT_EQ(names(0), (Names{"one", "two"}));
    EXPECT_EQ(names(1), (Names{"four", "three"}));
    EXPECT_EQ(structure.groups[1].at_const(0), samples.populations.at_const(3));
    EXPECT_EQ(line_no, 17);
    EXPECT_TRUE(name_seen && nbgroups_seen && group_seen);
    EXPECT_FALSE(level_seen);
    EXPECT_TRUE(reports.all().empty());
    EXPECT_EQ(log.text(), "");
}

TEST_F(StructureSection, OutputIsReadAgain) {
    ASSERT_EQ(read(kTwoGroups + std::string("Group={\"one\" \"two\"}\nGroup={\"three\"}\n")), 1);
    std::ostringstream first;
    first << structure;
    ASSERT_EQ(read(first.str()), 1) << log.text();
    std::ostringstream second;
    second << structure;
    EXPECT_EQ(second.str(), first.str());
    EXPECT_EQ(structure.NbSamples, 3);
}

TEST_F(StructureSection, ASecondReadingForgetsTheFirst) {
    ASSERT_EQ(read("NbGroups=1\nGroup={\"one\" \"two\"}\n"), 1);
    ASSERT_EQ(read("NbGroups=1\nGroup={\"two\"}\n"), 1);
    EXPECT_EQ(structure.NbSamples, 1);
    EXPECT_EQ(names(0), (Names{"two"}));
    EXPECT_EQ(read(""), 1);
    EXPECT_EQ(structure.NbGroups, 0);
    EXPECT_EQ(structure.NbSamples, 0);
}

TEST_F(StructureSection, BracesMayStandOnLinesOfTheirOwn) {
    ASSERT_EQ(read(kTwoGroups + std::string("Group =\n"
                                            "a line before the brace\n"
                                            "{ \"one\"\n"
                                            "# \"two\" is a comment\n"
                                            "\n"
                                            "\"three\" } \"four\"\n"
                                            "Group={\"two\"}\n")),
              1)
        << log.text();
    EXPECT_EQ(names(0), (Names{"one", "three"}));
    EXPECT_EQ(names(1), (Names{"two"}));
}

TEST_F(StructureSection, CommentEndsALine) {
    ASSERT_EQ(read("NbGroups=1\nGroup={ \"one\" # } \"two\"\n\"three\" }\n"), 1);
    EXPECT_EQ(names(0), (Names{"one", "three"}));
}

TEST_F(StructureSection, BracesWithinANameBelongToIt) {
    samples.populations[0]->name = "site {1}";
    ASSERT_EQ(read("NbGroups=1\nGroup={\n\"site {1}\"\n\"two\"\n}\n"), 1) << log.text();
    EXPECT_EQ(names(0), (Names{"site {1}", "two"}));
}

TEST_F(StructureSection, HeadingWithinANameIsNone) {
    samples.populations[0]->name = "the [Mantel] sample";
    ASSERT_EQ(read("NbGroups=1\nGroup={\n\"the [Mantel] sample\"\n\"two\"\n}\n"), 1) << log.text();
    EXPECT_EQ(names(0), (Names{"the [Mantel] sample", "two"}));
}

TEST_F(StructureSection, CommasBetweenNamesHideNoSample) {
    ASSERT_EQ(read("NbGroups=1\nGroup={\"one\", \"two\"; \"three\"}\n"), 1);
    EXPECT_EQ(names(0), (Names{"one", "two", "three"}));
    EXPECT_TRUE(log.holds("\tWarning: Character ',' between the sample names on line 12 is passed over"));
}

// Single quotes hold one character; a longer name in them must not get lost.
TEST_F(StructureSection, NameInSingleQuotesIsOneCharacterOrRefused) {
    samples.populations[1]->name = "b";
    ASSERT_EQ(read("NbGroups=1\nGroup={\"one\" 'b'}\n"), 1) << log.text();
    EXPECT_EQ(names(0), (Names{"one", "b"}));
    EXPECT_EQ(read("NbGroups=1\nGroup={\"one\" 'three' \"four\"}\n"), 0);
    EXPECT_EQ(log.text(),
              "\tError: Sample \"three\" defined in Group #1 on line 12 stands in single quotes, which hold "
              "one character.\n\tAborting reading project.\n");
    EXPECT_EQ(reports.all(), (std::vector<Report>{{Error, "get_qstring(ifstream& ifs, my_string& s)", 101},
                                                  {Error, kReporter, 51}}));
}

TEST_F(StructureSection, QuoteWithoutEndReachesToTheEndOfItsLine) {
    ASSERT_EQ(read("NbGroups=1\nGroup={\n\"one\n\"two\"\n}\n"), 1) << log.text();
    EXPECT_EQ(names(0), (Names{"one", "two"}));
    EXPECT_EQ(read("NbGroups=1\nGroup={\n\"one }\n"), 0);
    EXPECT_TRUE(log.holds("\tError: Sample \"one }\" defined in Group #1 on line 13"));
}

TEST_F(StructureSection, UnquotedNamesAreNotSeen) {
    EXPECT_EQ(read("NbGroups = 1\nGroup = { one two }\n"), 0);
    EXPECT_EQ(log.text(),
              "\t\tError while exploring structure of Group # 1. It does not contain any population sample\n"
              "\t\t\tCheck your [[Structure]] section, for unquoted sample names\n"
              "\t\tAborting reading project.\n");
    EXPECT_EQ(reports.all(), (std::vector<Report>{{Error, kReporter, 205}}));
}

TEST_F(StructureSection, MissingGroupIsToldAtTheEnd) {
    EXPECT_EQ(read("NbGroups = 3\nGroup={\"one\"}\nGroup={\"two\"}\n"), 0);
    EXPECT_EQ(log.text(),
              "\tInvalid number of groups defined. 3were expected, while 2 have been found!\n"
              "\tCheck your [[Structure]] section, for missing group or unquoted sample names\n"
              "\tAborting reading project.\n");
    EXPECT_EQ(reports.all(), (std::vector<Report>{{Error, kReporter, 47}}));
}

TEST_F(StructureSection, SurplusGroupEndsTheSectionQuietly) {
    ASSERT_EQ(read("NbGroups = 1\nGroup={\"one\"}\nGroup={\"two\"}\nNbGroups = 7\n"), 1);
    EXPECT_EQ(structure.NbSamples, 1);
    EXPECT_EQ(line.view(), "Group={\"two\"}");
    EXPECT_EQ(line_no, 13);
    EXPECT_EQ(log.text(), "");
}

TEST_F(StructureSection, MantelHeadingEndsTheSectionBeforeItsGroups) {
    ASSERT_EQ(read(std::string(kTwoGroups) + "  [[Mantel]]\nGroup={\"one\"}\n"), 1);
    EXPECT_EQ(line.view(), "  [[Mantel]]");
    EXPECT_EQ(structure.NbGroups, 2);
    ASSERT_EQ(structure.groups.size(), 2U);
    EXPECT_EQ(structure.groups[0].count, 0);
    EXPECT_EQ(structure.group_sizes, (std::vector<std::int32_t>{0, 0}));
}

TEST_F(StructureSection, MantelHeadingWithinAGroupLeavesItUnfinished) {
    ASSERT_EQ(read(std::string(kTwoGroups) + "Group={\"one\"}\nGroup={\n\"two\"\n[[Mantel]]\n"), 1);
    EXPECT_EQ(line.view(), "[[Mantel]]");
    EXPECT_EQ(names(1), (Names{"two"}));
    EXPECT_EQ(structure.NbSamples, 2);
    EXPECT_EQ(log.text(), "");
}

TEST_F(StructureSection, LastGroupNeedsNoClosingBrace) {
    ASSERT_EQ(read("NbGroups=1\nGroup={\n\"one\"\n\"two\""), 1);
    EXPECT_EQ(names(0), (Names{"one", "two"}));
}

TEST_F(StructureSection, MissingClosingBraceDrawsTheNextGroupIn) {
    EXPECT_EQ(read(std::string(kTwoGroups) + "Group={\n\"one\"\nGroup={\n\"two\"\n}\n"), 0);
    EXPECT_TRUE(log.holds("2were expected, while 1 have been found!"));
}

TEST_F(StructureSection, SampleTwiceIsAnErrorAlsoWithinItsGroup) {
    EXPECT_EQ(read("NbGroups=1\nGroup={\n\"one\"\n\"one\"\n}\n"), 0);
    EXPECT_EQ(log.text(),
              "\tError: Sample \"one\" defined in Group #1 on line 14 has been alredy included in group #1.\n"
              "\tAborting reading project.\n");
    EXPECT_EQ(reports.all(), (std::vector<Report>{{Error, kReporter, 206}}));
}

TEST_F(StructureSection, SampleInTwoGroupsNamesTheFirst) {
    EXPECT_EQ(read(std::string(kTwoGroups) + "Group={\"two\" \"one\"}\nGroup={\"three\" \"one\"}\n"), 0);
    EXPECT_TRUE(
        log.holds("\tError: Sample \"one\" defined in Group #2 on line 14 "
                  "has been alredy included in group #1.\n"));
}

TEST_F(StructureSection, UnknownSampleIsAnError) {
    EXPECT_EQ(read("NbGroups=1\nGroup={\"One\"}\n"), 0);
    EXPECT_EQ(log.text(),
              "\tError: Sample \"One\" defined in Group #1 on line 12 has not been defined in the [Samples] "
              "section.\n\tAborting reading project.\n");
    EXPECT_EQ(reports.all(), (std::vector<Report>{{Error, kReporter, 51}}));
}

TEST_F(StructureSection, GroupBeforeTheNumberOfGroupsIsAnError) {
    EXPECT_EQ(read("Group={\"one\"}\nNbGroups=1\n"), 0);
    EXPECT_EQ(log.text(),
              "\tError: Unexpected \"Group\" section found on line 11. Expected number of group is zero. "
              "Check that \"NbGroups\" has been previously defined. Aborting reading project.\n");
    EXPECT_EQ(reports.all(), (std::vector<Report>{{Error, kReporter, 49}}));
}

TEST_F(StructureSection, MissingOpeningBraceCountsGroupsFromZero) {
    EXPECT_EQ(read("NbGroups=1\nGroup=\n\"one\"\n}\n"), 0);
    EXPECT_EQ(log.text(), "\tError: Missing opening brace in Group #0. Aborting reading project\n");
    EXPECT_EQ(reports.all(), (std::vector<Report>{{Error, kReporter, 50}}));
}

TEST_F(StructureSection, GroupWithoutEqualSignStaysUnread) {
    EXPECT_EQ(read("NbGroups=1\nGroup { \"one\" }\n"), 0);
    EXPECT_TRUE(group_seen);
    EXPECT_EQ(structure.NbSamples, 0);
    EXPECT_EQ(reports.all().front().code, 188);
    EXPECT_TRUE(log.holds("1were expected, while 0 have been found!"));
}

TEST_F(StructureSection, ExternalDefinitionIsSkippedAndCountedAgainst) {
    EXPECT_EQ(read("NbGroups=1\nStructureName = EXTERN \"x\"\nGroup={\"one\"}\n"), 0);
    EXPECT_EQ(reports.all(), (std::vector<Report>{{Error, kReporter, 195}, {Error, kReporter, 47}}));
    EXPECT_TRUE(
        log.holds("\tWarning: External definition of the GENETIC STRUCTURE is not possible anymore.\n"
                  "\tPlease incorporate it into the project. Skipping reading of the Genetic "
                  "structure.\n\tInvalid number of groups defined. 1were expected"));
    EXPECT_EQ(line_no, 12);
    // Without a declared number there is nothing to miss.
    EXPECT_EQ(read("StructureName = EXTERN \"x\"\nNbGroups=1\n"), 1);
    EXPECT_FALSE(nbgroups_seen);
    EXPECT_EQ(structure.NbGroups, 0);
}

TEST_F(StructureSection, BadNameEndsTheReading) {
    EXPECT_EQ(read("NbGroups=1\nStructureName = unquoted\nGroup={\"one\"}\n"), 0);
    EXPECT_TRUE(log.holds("\tWarning: Bad value assigned to StructureName on line 12\n"));
    const auto& all = reports.all();
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all[1], (Report{Warning, "Structure::NewReadStructure", 46}));
    EXPECT_EQ(all[2], (Report{Error, kReporter, 47}));
}

TEST_F(StructureSection, BadNumberOfGroupsEndsTheReading) {
    for (const char* value : {"two", "-1", "1e9", "", "nan"}) {
        const CapturedReports now;
        EXPECT_EQ(read(std::string("NbGroups=") + value + "\nGroup={\"one\"}\n"), 1) << value;
        EXPECT_EQ(now.all().back(), (Report{Warning, kReporter, 47})) << value;
        EXPECT_EQ(structure.NbGroups, 0);
        EXPECT_TRUE(structure.groups.empty());
        EXPECT_FALSE(group_seen);
        EXPECT_EQ(line_no, 11);
    }
}

TEST_F(StructureSection, NumberOfGroupsLosesItsFraction) {
    EXPECT_EQ(read("NbGroups = 1.9\nGroup={\"one\"}\n"), 1);
    EXPECT_EQ(structure.NbGroups, 1);
}

TEST_F(StructureSection, NumberOfGroupsMayChangeOnTheWay) {
    ASSERT_EQ(read("NbGroups=1\nGroup={\"one\" \"two\"}\nNbGroups=2\nGroup={\"three\"}\n"), 1) << log.text();
    EXPECT_EQ(names(0), (Names{"one", "two"}));
    EXPECT_EQ(names(1), (Names{"three"}));
    EXPECT_EQ(structure.NbSamples, 3);
    ASSERT_EQ(read(std::string(kTwoGroups) + "Group={\"one\"}\nGroup={\"two\"}\nNbGroups=1\n[[Mantel]]\n"),
              1);
    EXPECT_EQ(structure.groups.size(), 1U);
    EXPECT_EQ(structure.NbSamples, 1);
    ASSERT_EQ(read(std::string(kTwoGroups) + "Group={\"one\"}\nGroup={\"two\"}\nNbGroups=1\nNbGroups=2\n"),
              1);
    EXPECT_EQ(names(1), (Names{"two"}));
    EXPECT_EQ(structure.NbSamples, 2);
}

TEST_F(StructureSection, ObsoleteKeywordsAreTold) {
    ASSERT_EQ(read("NbGroups=1\nDistMatLabel=\"x\"\nIndividualLevel=1\nGroup={\"one\"}\n"), 1);
    EXPECT_EQ(log.text(),
              "\tWarning: Keyword \"DistMatLabel\" is obsolete. Skipping keyword.\n"
              "\tWarning: Keyword \"IndividualLevel\" defined on line 13 is obsolete. Activation of this "
              "option is now made through the interface.\n");
    EXPECT_TRUE(level_seen);
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(StructureSection, OverLongLineIsAnError) {
    EXPECT_EQ(read("NbGroups=1\nGroup={\"one\"}\n" + std::string(200000, 'x') + "\n"), 0);
    EXPECT_TRUE(log.holds("\tLine #13 of the Structure section is longer than"));
    EXPECT_EQ(read("NbGroups=1\nGroup={\"one\"\n" + std::string(200000, 'x') + "\n}\n"), 0);
    EXPECT_TRUE(log.holds("\tLine #13 of the Structure section is longer than"));
    EXPECT_EQ(reports.all().back().type, Error);
}

TEST_F(StructureSection, LineEndsOfBothKindsAreTaken) {
    ASSERT_EQ(read("NbGroups=1\r\nGroup={\r\n\"one\"\r\n}\r\n"), 1) << log.text();
    EXPECT_EQ(names(0), (Names{"one"}));
}

// ---- The same structure over other samples

class OneLocusStructure : public StructureSection {
protected:
    void SetUp() override {
        ASSERT_EQ(read(kTwoGroups + std::string("Group={\"four\" \"one\"}\nGroup={\"three\"}\n")), 1);
        for (const char* name : {"three", "one", "four"}) {
            auto* sample = new Population;
            sample->name = name;
            targets.populations.Add(sample);
        }
        targets.Title = "One locus";
    }
    Samples targets;
    Structure copy;
};

TEST_F(OneLocusStructure, FindsTheSamplesByName) {
    ASSERT_EQ(copy.build_one_loci_str(&targets, &structure), 1);
    EXPECT_EQ(copy.Title.view(), "One locus");
    EXPECT_EQ(copy.StructureName.view(), "Test");
    EXPECT_EQ(copy.NbGroups, 2);
    EXPECT_EQ(copy.NbSamples, 3);
    EXPECT_EQ(copy.group_sizes, structure.group_sizes);
    EXPECT_EQ(copy.groups[0].at_const(0), targets.populations.at_const(2));
    EXPECT_EQ(copy.groups[0].at_const(1), targets.populations.at_const(1));
    EXPECT_EQ(copy.groups[1].at_const(0), targets.populations.at_const(0));
}

TEST_F(OneLocusStructure, MissingSampleIsTold) {
    targets.populations[0]->name = "another";
    EXPECT_EQ(copy.build_one_loci_str(&targets, &structure), 0);
    EXPECT_TRUE(log.holds("\tStructure::build_one_loci_str(): impossible to reproduce structure\n"));
}

TEST_F(OneLocusStructure, NoSamplesAtAllIsToldEvenWithoutAnyToBeFound) {
    const char* const text = "\tStructure::build_one_loci_str(): impossible to reproduce structure\n";
    Samples none;
    Structure without_samples;
    for (Structure* source : {&structure, &without_samples}) {
        const CapturedLog own_log;
        EXPECT_EQ(copy.build_one_loci_str(&none, source), 0);
        EXPECT_EQ(own_log.text(), text);
    }
}

}  // namespace
