#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "run/process.h"
#include "run/project.h"
#include "support/captured_log.h"
#include "support/captured_reports.h"
#include "support/temp_folder.h"

namespace {

using namespace mnd;
using mnd_test::CapturedLog;
using mnd_test::CapturedReports;
using mnd_test::count_of;
using mnd_test::Report;
using mnd_test::TempFolder;
using mnd_test::write_text;

constexpr char kOrigin[] = "Project::open()";
constexpr char kProfile[] =
    "[Profile]\n Title=\"A [test]\" # [Data]\n NbSamples=2\n GenotypicData=0\n DataType=STANDARD\n"
    " LocusSeparator=WHITESPACE\n MissingData='?'\n";
constexpr char kSamples[] =
    "[[Samples]]\n SampleName=\"one\" SampleSize=3\n SampleData={\n h1 1 a b\n h2 2 a c\n }\n"
    " SampleName = \"two\"\n SampleSize=4\n SampleData={ h1 4\n }\n";
constexpr char kList[] =
    "[[HaplotypeDefinition]]\n HaplListName=\"all\"\n HaplList={\n h1 a b\n h2 a c\n h3 c c\n }\n";
constexpr char kMatrix[] =
    "[[DistanceMatrix]]\n MatrixName=\"m [1]\"\n MatrixSize=2\n MatrixData={\n h2 h1\n 0\n 1.1 0\n }\n";
constexpr char kStructure[] = "[[Structure]]\n NbGroups=1\n Group={ \"one\" \"two\" }\n";
constexpr char kMantel[] = "[[Mantel]]\n MatrixSize=3\n MatrixNumber=2\n";

class FreeFormProject : public ::testing::Test {
protected:
    FreeFormProject() { project.the_settings.project_directory = (folder.path().string() + "/").c_str(); }

    bool open_file(const std::string& path) {
        copy_path(settings::input_file, path.c_str(), settings::kInputFileSize);
        return project.open();
    }
    bool open(const std::string& text) {
        write_text(folder / "p.mnp", text);
        return open_file((folder / "p.mnp").string());
    }
    bool open_data(const std::string& data) { return open(kProfile + std::string("[Data]\n") + data); }

    TempFolder folder;
    CapturedLog log;
    CapturedReports reports;
    Project project;
};

TEST_F(FreeFormProject, ReadsProfileHaplotypesAndSamples) {
    project.dist_matrix_computed = true;
    ASSERT_TRUE(open_data(std::string(kList) + kSamples)) << log.text();
    EXPECT_EQ(project.Title.view(), "A [test]");
    EXPECT_EQ(project.haplo_db.name.view(), "all");
    EXPECT_EQ(project.haplo_db.list.count, 3);
    ASSERT_EQ(project.samples->populations.count, 2);
    EXPECT_EQ(project.samples->populations.at_const(0)->name.view(), "one");
    EXPECT_EQ(project.samples->populations.at_const(0)->hapl_list.count, 2);
    EXPECT_EQ(project.samples->populations.at_const(1)->sample_size, 4.0);
    EXPECT_FALSE(project.dist_matrix_computed);
    EXPECT_TRUE(reports.all().empty());
    EXPECT_EQ(log.text(),
              "Reading general settings in input file ...\nReading data section in input file ...\n"
              "\tReading haplotype list ...\n\tReading sample data ...\n");
}

TEST_F(FreeFormProject, ReadsMatrixAndStructureAndPassesOverMantel) {
    ASSERT_TRUE(open_data(std::string(kMatrix) + kSamples + kStructure + kMantel)) << log.text();
    EXPECT_EQ(project.samples->populations.count, 2);
    EXPECT_EQ(project.dist_mat.MatrixName.view(), "m [1]");
    EXPECT_EQ(project.dist_mat.MatrixSize, 2);
    EXPECT_EQ(project.dist_mat.labels[0].view(), "h2");
    EXPECT_EQ(project.dist_mat.get(1, 0), static_cast<double>(1.1F));
    EXPECT_EQ(project.dist_mat.NbSamples, 2);
    EXPECT_EQ(project.structure->NbGroups, 1);
    EXPECT_EQ(project.structure->NbSamples, 2);
    EXPECT_EQ(project.structure->groups[0][1], project.samples->populations[1]);
    EXPECT_EQ(project.structure->DataType, STANDARD);
    EXPECT_EQ(static_cast<ProfileSettings&>(project.mantel).NbSamples, 2);
    EXPECT_TRUE(reports.all().empty());
    EXPECT_EQ(log.text(),
              "Reading general settings in input file ...\nReading data section in input file ...\n"
              "\tReading distance matrix ...\n\tReading sample data ...\n\tReading genetic structure ...\n"
              "\tReading mantel section ...\n"
              "\tThe Mantel section of the project is passed over, none of its matrices is used\n");
}

TEST_F(FreeFormProject, FaultyMatrixStops) {
    EXPECT_FALSE(open_data(std::string("[[DistanceMatrix]]\n MatrixSize=0 MatrixData={\n }\n") + kSamples));
    EXPECT_EQ(project.failure_reason.view(), "the distance matrix can't be read");
    EXPECT_EQ(count_of(log.text(), "Reading sample data"), 0);
}

TEST_F(FreeFormProject, FaultyStructureStops) {
    EXPECT_FALSE(open_data(std::string(kSamples) + "[[Structure]]\n NbGroups=2\n Group={ one }\n"));
    EXPECT_EQ(project.failure_reason.view(), "the genetic structure can't be read");
    EXPECT_EQ(reports.all().back(), (Report{Error, "Structure::explore_content()", 47}));
}

TEST_F(FreeFormProject, FifthSubsectionIsError131) {
    EXPECT_TRUE(open_data(std::string(kMatrix) + kList + kSamples + kStructure)) << log.text();
    EXPECT_TRUE(reports.all().empty());
    EXPECT_FALSE(open_data(std::string(kMatrix) + kList + kSamples + kStructure + kMantel));
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Error, kOrigin, 131}));
}

TEST_F(FreeFormProject, MissingFileIsError126) {
    EXPECT_FALSE(open_file((folder / "absent.mnp").string()));
    EXPECT_FALSE(open_file(folder.path().string()));
    ASSERT_EQ(reports.all().size(), 2u);
    for (const Report& one : reports.all())
        EXPECT_EQ(one, (Report{Error, kOrigin, 126}));
    EXPECT_FALSE(project.failure_reason.is_null());
}

TEST_F(FreeFormProject, UnreadableProfileIsError127) {
    for (const char* text : {"", "[Data]\n", "[Profile]\nNbSamples=x\n", "[Profile]\nNonsense=1\n"}) {
        EXPECT_FALSE(open(text)) << text;
        EXPECT_EQ(reports.all().back(), (Report{Error, kOrigin, 127})) << text;
    }
    EXPECT_EQ(count_of(log.text(), "Reading data section"), 0);
}

TEST_F(FreeFormProject, DataWithoutSubsectionsAreError128) {
    for (const std::string& data :
         {std::string(), std::string("[Data]\n"), std::string("[Data]\n[Data]\n")}) {
        EXPECT_FALSE(open(kProfile + data)) << data;
        EXPECT_EQ(reports.all().back(), (Report{Error, kOrigin, 128})) << data;
    }
}

TEST_F(FreeFormProject, TooFewSamplesStop) {
    EXPECT_FALSE(open_data("[[Samples]]\n SampleName=\"one\"\n SampleSize=1\n SampleData={ h1 1 a b\n }\n"));
    EXPECT_TRUE(log.holds("\n\tUnable to read the specified number of populations.\n"));
}

TEST_F(FreeFormProject, FaultyHaplotypeListStops) {
    EXPECT_FALSE(
        open_data(std::string("[[HaplotypeDefinition]]\n HaplList={\n h1 a b\n h1 a b\n }\n") + kSamples));
    EXPECT_EQ(count_of(log.text(), "Reading sample data"), 0);
    EXPECT_EQ(project.failure_reason.view(), "the haplotype list can't be read");
}

TEST_F(FreeFormProject, NamedHaplotypeListIsWarning130) {
    ASSERT_TRUE(open(kProfile + std::string("UsedHaplList=\"all\"\n[Data]\n") + kList + kSamples));
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Warning, kOrigin, 130}));
}

TEST_F(FreeFormProject, StructureNeedsSamplesBeforeIt) {
    EXPECT_FALSE(open_data(std::string(kStructure) + kSamples));
    EXPECT_TRUE(
        log.holds("[STRUCTURE] section defined before the [SAMPLES] section. Aborting reading project\n"));
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Error, kOrigin, 172}));
}

// Every file that is cut short is refused or read, but never loops or crashes.
TEST_F(FreeFormProject, CutProjectsEnd) {
    const std::string whole = kProfile + std::string("[Data]\n") + kMatrix + kList + kSamples + kStructure;
    for (std::size_t length = 0; length < whole.size(); length += 3) {
        project.clean();
        project.ProfileSettings::initialize();
        open(whole.substr(0, length));
    }
    std::string junk;
    for (int i = 0; i < 20000; ++i)
        junk += static_cast<char>((i * 167 + i / 256 + 13) % 256);
    EXPECT_FALSE(open(junk));
    EXPECT_FALSE(open(kProfile + junk));
    for (const char* heading :
         {"[[Samples]]\n", "[[HaplotypeDefinition]]\n", "[[Structure]]\n", "[[DistanceMatrix]]\n"})
        open_data(heading + junk);
    EXPECT_TRUE(open(whole)) << log.text();
}

void expect_same_groups(const Structure& read, const Structure& expected, const char* file) {
    ASSERT_EQ(read.groups.size(), expected.groups.size()) << file;
    EXPECT_EQ(read.group_sizes, expected.group_sizes) << file;
    for (std::size_t g = 0; g < expected.groups.size(); ++g) {
        for (long i = 0; i < expected.groups[g].count; ++i)
            EXPECT_EQ(read.groups[g].at_const(i)->name, expected.groups[g].at_const(i)->name) << file;
    }
}

// The distances of the older syntax are kept in single precision.
void expect_same_distances(const DistMat& read, const DistMat& expected, const char* file) {
    ASSERT_EQ(read.MatrixSize, expected.MatrixSize) << file;
    EXPECT_EQ(read.labels, expected.labels) << file;
    for (int i = 0; i < expected.MatrixSize; ++i) {
        for (int j = 0; j <= i; ++j)
            EXPECT_EQ(read.get(i, j), static_cast<double>(static_cast<float>(expected.get(i, j)))) << file;
    }
}

// Both ways of reading give the same data.
TEST_F(FreeFormProject, RealProjectsAreReadAsLineByLine) {
    for (const char* file :
         {"woodmouse.mnp", "influenza_small.mnp", "influenza_frequency.mnp", "known_phase_dna.mnp",
          "binary_rflp.mnp", "cats_microsat.mnp", "hla_standard.mnp"}) {
        project.clean();
        project.ProfileSettings::initialize();
        ASSERT_TRUE(open_file(std::string(MENDCORE_TEST_DATA) + "/" + file)) << file << log.text();
        Project by_lines;
        ASSERT_TRUE(by_lines.newOpen()) << file;
        ASSERT_EQ(project.samples->populations.count, by_lines.samples->populations.count) << file;
        EXPECT_EQ(project.haplo_db.list.count, by_lines.haplo_db.list.count) << file;
        for (long i = 0; i < by_lines.samples->populations.count; ++i) {
            const Population& read = *project.samples->populations.at_const(i);
            const Population& expected = *by_lines.samples->populations.at_const(i);
            EXPECT_EQ(read.name, expected.name) << file;
            EXPECT_EQ(read.sample_size, expected.sample_size) << file;
            EXPECT_EQ(read.hapl_list.count, expected.hapl_list.count) << file;
            EXPECT_EQ(read.phen_db.count, expected.phen_db.count) << file;
        }
        for (long i = 0; i < by_lines.haplo_db.list.count; ++i)
            EXPECT_EQ(project.haplo_db.list.at_const(i)->content, by_lines.haplo_db.list.at_const(i)->content)
                << file;
        expect_same_groups(*project.structure, *by_lines.structure, file);
        expect_same_distances(project.dist_mat, by_lines.dist_mat, file);
    }
}

}  // namespace
