#include "input/structure.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "model/population.h"

namespace {

using namespace mnd;

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

TEST_F(GroupedSamples, FitToTheirNumber) {
    structure.NbGroups = 3;
    structure.fit_groups();
    EXPECT_EQ(structure.group_sizes, (std::vector<std::int32_t>{2, 1, 0}));
    EXPECT_EQ(structure.groups[1].at_const(0), &samples[2]);
    EXPECT_EQ(structure.groups[2].owns_elements, 0);
    structure.NbGroups = 1;
    structure.fit_groups();
    EXPECT_EQ(structure.groups.size(), 1u);
    EXPECT_EQ(structure.NbSamples, 2);
    structure.NbGroups = -1;
    structure.fit_groups();
    EXPECT_TRUE(structure.groups.empty());
    EXPECT_EQ(structure.NbSamples, 0);
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

}  // namespace
