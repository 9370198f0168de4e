#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "run/messages.h"
#include "run/process.h"
#include "run/project.h"
#include "support/project_log.h"
#include "support/temp_folder.h"

namespace {

using namespace mnd;
using mnd_test::contains;
using mnd_test::read_text;
using mnd_test::write_text;

constexpr char kOrigin[] = "Project::explore()";

const std::string kProfile =
    "[Profile]\nTitle=\"Mice\"\nNbSamples=2\nGenotypicData=0\nDataType=STANDARD\n"
    "LocusSeparator=WHITESPACE\nMissingData='?'\n";
const std::string kSamples =
    "[[Samples]]\nSampleName=\"North\"\nSampleSize=2\nSampleData={\na 2 1 2\n}\n"
    "SampleName=\"South\"\nSampleSize=3\nSampleData={\nb 3 1 3\n}\n";
const std::string kStructure =
    "[[Structure]]\nStructureName=\"S\"\nNbGroups=2\nGroup={\n\"North\"\n}\nGroup={\n\"South\"\n}\n";
const std::string kMatrix =
    "[[DistanceMatrix]]\nMatrixName=\"D\"\nMatrixSize=2\nLabelPosition=LINE\nMatrixData={\na b\n0\n1 0\n}\n";

class Exploring : public mnd_test::InTempFolder {
protected:
    bool explore(const std::string& text) {
        write_text(folder / "p.mnp", text);
        return explore_file("p.mnp");
    }
    bool explore_file(const char* name) {
        copy_path(settings::input_file, name, settings::kInputFileSize);
        std::string dir = folder.path().string() + "/control_";
        return project.explore(dir.data());
    }
    std::string report() { return read_text(folder / "control_mnd_pro.txt"); }
    bool reported(int code) { return log.reports("ERROR", kOrigin, message_text(code)); }

    mnd_test::ProjectLog log;
    Project project;
};

TEST_F(Exploring, WritesEveryValueOfTheProfileInItsPlace) {
    ASSERT_TRUE(explore(kProfile + "[Data]\n" + kSamples)) << log.text();
    EXPECT_EQ(report(),
              "Mice=Title;\n2=NbSamples;\n0=NbGroups; \n0=GenotypicData;\n1=GameticPhase;\n"
              "STANDARD=DataType;\nWHITESPACE=LocusSeparator;\n?=MissingData;\nnone=DistMatLabel;\n"
              "NONE=UsedHaplList; \n=ExtHaplFile; \n0=Interleave; \n0=IndividualLevel;\n0=Frequency; \n"
              "0=RecessiveData; \nnull=RecessiveAllele;\n1=GivenDistMat; \n1e-07=EpsilonValue;\n"
              "1e-05=FrequencyThreshold;\n");
    EXPECT_EQ(read_text("groups.txt"), "0\n");
    EXPECT_EQ(read_text("samples.txt"), "2\nNorth\nSouth\n");
    EXPECT_EQ(log.text(), "Reading general settings in input file ...\ndone ! \n\tExploring Samples...\n");
}

TEST_F(Exploring, NamesEverySeparator) {
    const struct {
        const char* in_file;
        const char* in_report;
    } separators[] = {{"NONE", "NONE"}, {"WHITESPACE", "WHITESPACE"}, {"TAB", "TAB"}, {"\",\"", ","}};
    for (const auto& separator : separators) {
        std::string profile = kProfile;
        profile.replace(profile.find("WHITESPACE"), 10, separator.in_file);
        ASSERT_TRUE(explore(profile + "[Data]\n" + kSamples)) << log.text();
        EXPECT_TRUE(contains(report(), std::string("\n") + separator.in_report + "=LocusSeparator;\n"))
            << report();
    }
}

TEST_F(Exploring, NamesEveryDataType) {
    for (const char* type : {"DNA", "RFLP", "MICROSAT", "STANDARD", "FREQUENCY"}) {
        std::string profile = kProfile;
        profile.replace(profile.find("STANDARD"), 8, type);
        ASSERT_TRUE(explore(profile + "[Data]\n" + kSamples));
        EXPECT_TRUE(contains(report(), std::string("\n") + type + "=DataType;\n")) << report();
    }
}

TEST_F(Exploring, ListsTheGroups) {
    ASSERT_TRUE(explore(kProfile + "[Data]\n" + kSamples + kStructure)) << log.text();
    EXPECT_EQ(read_text("groups.txt"), "2\n{\nNorth\n}\n{\nSouth\n}\n");
    EXPECT_TRUE(log.holds("\tExploring genetic structure...\n"));
}

TEST_F(Exploring, TellsWhereTheMatrixComesFrom) {
    ASSERT_TRUE(explore(kProfile + "[Data]\n" + kMatrix + kSamples)) << log.text();
    EXPECT_TRUE(contains(report(), "\nDefined In project file=DistMatLabel;\n")) << report();
    EXPECT_TRUE(log.holds("\tReading distance matrix ...\n"));
}

TEST_F(Exploring, PassesOverListsAndCorrelations) {
    const std::string list = "[[HaplotypeDefinition]]\nHaplListName=\"l\"\nHaplList={\na 1 2\n}\n";
    const std::string mantel = "[[Mantel]]\nMatrixSize=3\n";
    ASSERT_TRUE(explore(kProfile + "[Data]\n" + list + kSamples + kStructure + mantel)) << log.text();
    EXPECT_EQ(read_text("samples.txt"), "2\nNorth\nSouth\n");
    EXPECT_TRUE(contains(report(), "Mice=Title;\n"));
}

TEST_F(Exploring, NothingOfTheProjectBeforeIsReported) {
    ASSERT_TRUE(explore(kProfile + "RecessiveData=1\nRecessiveAllele=\"r\"\n[Data]\n" + kMatrix + kSamples));
    std::string untitled = kProfile;
    untitled.erase(untitled.find("Title"), std::string("Title=\"Mice\"\n").size());
    ASSERT_TRUE(explore(untitled + "[Data]\n" + kSamples));
    EXPECT_TRUE(contains(report(), "=Title;\n2=NbSamples"));
    EXPECT_FALSE(contains(report(), "Mice"));
    EXPECT_TRUE(contains(report(), "\n0=RecessiveData; \nnull=RecessiveAllele;\n"));
    EXPECT_TRUE(contains(report(), "\nnone=DistMatLabel;\n"));
}

TEST_F(Exploring, MissingFileIsReported) {
    EXPECT_FALSE(explore_file("absent.mnp"));
    EXPECT_TRUE(reported(kCannotOpenProject));
    EXPECT_EQ(read_text("groups.txt"), "0\n") << "the list of groups is emptied first";
    EXPECT_EQ(report(), "");
}

TEST_F(Exploring, FolderInPlaceOfTheFileIsReported) {
    std::filesystem::create_directory("p.mnp");
    EXPECT_FALSE(explore_file("p.mnp"));
    EXPECT_NE(project.failure_reason.length(), 0);
}

TEST_F(Exploring, UnreadableProfileIsReported) {
    EXPECT_FALSE(explore("no section at all\n"));
    EXPECT_TRUE(reported(kUnreadableProfile));
    EXPECT_FALSE(log.holds("done !"));
}

TEST_F(Exploring, ProjectWithoutDataIsReported) {
    EXPECT_FALSE(explore(kProfile + "[Data]\n"));
    EXPECT_TRUE(reported(kNoSubsectionsFound));
    EXPECT_FALSE(explore(kProfile));
    EXPECT_EQ(report(), "");
}

TEST_F(Exploring, FourSubsectionsAreTheMost) {
    const std::string list = "[[HaplotypeDefinition]]\nHaplListName=\"l\"\nHaplList={\na 1 2\n}\n";
    EXPECT_TRUE(explore(kProfile + "[Data]\n" + list + kMatrix + kSamples + kStructure)) << log.text();
    EXPECT_FALSE(explore(kProfile + "[Data]\n" + list + kMatrix + kSamples + kStructure +
                         "[[Mantel]]\nMatrixSize=3\n"));
    EXPECT_TRUE(reported(kTooManySubsections));
}

TEST_F(Exploring, SamplesThatAreMissingFail) {
    std::string text = kProfile + "[Data]\n" + kSamples;
    text.replace(text.find("NbSamples=2"), 11, "NbSamples=7");
    EXPECT_FALSE(explore(text));
    EXPECT_NE(project.failure_reason.length(), 0);
    EXPECT_EQ(report(), "");
}

TEST_F(Exploring, StructureThatCannotBeListedFails) {
    std::string structure = kStructure;
    structure.replace(structure.find("NbGroups=2"), 10, "NbGroups=3");
    EXPECT_FALSE(explore(kProfile + "[Data]\n" + kSamples + structure));
    EXPECT_EQ(project.failure_reason.view(), "its structure can't be listed");
}

}  // namespace
