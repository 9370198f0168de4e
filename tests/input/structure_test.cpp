#include "input/structure.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "model/population.h"
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

// Three samples, the first two in one group and the third in another.
class GroupedSamples : public ::testing::Test {
protected:
    GroupedSamples() {
        samples[0].name = "Sample 1";
        samples[1].name = "Sample 2";
        samples[2].name = "A & B";
        structure.StructureName = "North";
        structure.NbGroups = 2;
        structure.allocate_groups();
        add(0, samples[0]);
        add(0, samples[1]);
        add(1, samples[2]);
    }
    void add(std::size_t group, Population& sample) {
        structure.groups[group].Add(&sample);
        ++structure.group_sizes[group];
        ++structure.NbSamples;
    }

    Population samples[3];
    Structure structure;
};

TEST(Structure, StartsEmpty) {
    const Structure structure;
    EXPECT_EQ(structure.NbSamples, 0);
    EXPECT_EQ(structure.NbGroups, 0);
    EXPECT_TRUE(structure.groups.empty());
    std::ostringstream text;
    text << structure;
    EXPECT_EQ(text.str(), "");
}

TEST(Structure, TakesNumberOfGroupsFromTheProfile) {
    ProfileSettings profile;
    profile.NbGroups = 4;
    profile.NbSamples = 9;
    profile.DataType = DNA;
    Structure structure(profile);
    EXPECT_EQ(structure.NbGroups, 4);
    EXPECT_EQ(structure.NbSamples, 0);
    EXPECT_EQ(structure.DataType, DNA);
    structure.initialize(static_cast<ProfileSettings const*>(nullptr));
    EXPECT_EQ(structure.NbGroups, 0);
    structure.initialize(&profile);
    EXPECT_EQ(structure.NbGroups, 4);
}

TEST_F(GroupedSamples, InitializeGivesUpTheGroups) {
    ProfileSettings profile;
    profile.NbGroups = 9;
    structure.initialize(&profile);
    EXPECT_EQ(structure.NbGroups, 9);
    EXPECT_TRUE(structure.groups.empty());
    EXPECT_TRUE(structure.group_sizes.empty());
    EXPECT_EQ(structure.NbSamples, 0);
}

TEST_F(GroupedSamples, GroupsReferToTheirSamples) {
    EXPECT_EQ(structure.groups[0].owns_elements, 0);
    EXPECT_EQ(structure.groups[0].capacity, 11);
    EXPECT_EQ(structure.groups[0].delta, 10);
    EXPECT_EQ(structure.has_population(&samples[2]), 1);
    Population other;
    other.name = "Sample 1";
    EXPECT_EQ(structure.has_population(&other), 0);
}

TEST_F(GroupedSamples, CopiesReferToTheSameSamples) {
    const Structure copy(structure);
    Structure assigned;
    assigned = structure;
    for (const Structure* one : {&copy, static_cast<const Structure*>(&assigned)}) {
        EXPECT_EQ(one->StructureName.view(), "North");
        EXPECT_EQ(one->NbSamples, 3);
        EXPECT_EQ(one->NbGroups, 2);
        EXPECT_EQ(one->group_sizes, structure.group_sizes);
        ASSERT_EQ(one->groups.size(), 2u);
        EXPECT_EQ(one->groups[0].at_const(1), &samples[1]);
        EXPECT_EQ(one->groups[0].owns_elements, 0);
    }
    assigned = copy;  // the same number of groups: their arrays stay
    EXPECT_EQ(assigned.groups[1].at_const(0), &samples[2]);
    EXPECT_EQ(assigned.groups[1].owns_elements, 0);
}

TEST_F(GroupedSamples, ResetLeavesTheSamplesAlone) {
    structure.reset();
    structure.reset();
    EXPECT_EQ(structure.NbSamples, 0);
    EXPECT_EQ(structure.NbGroups, 0);
    EXPECT_TRUE(structure.groups.empty());
    EXPECT_TRUE(structure.group_sizes.empty());
    EXPECT_EQ(samples[0].name.view(), "Sample 1");
}

TEST_F(GroupedSamples, AreWrittenAsASection) {
    std::ostringstream text;
    text << structure;
    EXPECT_EQ(text.str(),
              "\n\t[[Structure]]\n\n\t\tStructureName = \"North\"\n\t\tNbGroups = 2\n"
              "\t#Group1\n\t\tGroup={\n\t\t\"Sample 1\"\n\t\t\"Sample 2\"\n\t\t}\n\n"
              "\t#Group2\n\t\tGroup={\n\t\t\"A & B\"\n\t\t}\n\n");
}

TEST_F(GroupedSamples, ArePrintedToTheDocument) {
    structure.groups[0].Flush();
    std::ostringstream text;
    structure.print_structure(text);
    const std::string bar(65, '=');
    EXPECT_EQ(text.str(), "\n" + bar + "\n  AMOVA ANALYSIS\n" + bar +
                              "\n\n\n---------------------------\nGenetic structure to test :\n"
                              "---------------------------\n\nNo. of Groups = 2\n\n"
                              "\n\t[[Structure]]\n\n\t\tStructureName = \"North\"\n\t\tNbGroups = 2\n"
                              "\t#Group1\n\t\tGroup={\n\t\t}\n\n"
                              "\t#Group2\n\t\tGroup={\n\t\t\"A &amp; B\"\n\t\t}\n\n"
                              "---------------------------\n\n");
}

// ---- Exploring

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
