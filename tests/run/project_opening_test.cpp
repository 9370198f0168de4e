#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

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
using mnd_test::read_text;
using mnd_test::Report;
using mnd_test::TempFolder;
using mnd_test::write_text;

constexpr char kOrigin[] = "Project::newOpen()";

constexpr char kProfile[] =
    "[Profile]\n\tTitle=\"A test\"\n\tNbSamples=1\n\tGenotypicData=0\n\tDataType=STANDARD\n"
    "\tLocusSeparator=WHITESPACE\n\tMissingData='?'\n";
constexpr char kSamples[] =
    "\t[[Samples]]\n\t\tSampleName=\"one\"\n\t\tSampleSize=3\n\t\tSampleData={\n"
    "\t\t\th1\t1\ta b\n\t\t\th2\t2\ta c\n\t\t}\n";

class Opening : public ::testing::Test {
protected:
    Opening() {
        project.ProfileSettings::the_settings = &project.the_settings;
        project.the_settings.project_directory = (folder.path().string() + "/").c_str();
    }

    bool open_file(const std::string& path) {
        copy_path(settings::input_file, path.c_str(), settings::kInputFileSize);
        return project.newOpen();
    }
    bool open(const std::string& text) {
        write_text(folder / "p.mnp", text);
        return open_file((folder / "p.mnp").string());
    }
    // A complete project with these lines in the [Data] section, before and behind the samples.
    bool open_data(const std::string& before, const std::string& behind = "") {
        return open(kProfile + std::string("[Data]\n") + before + kSamples + behind);
    }
    bool reported(ErrorType type, int code, const char* origin = kOrigin) const {
        const auto& all = reports.all();
        return std::find(all.begin(), all.end(), Report{type, origin, code}) != all.end();
    }

    TempFolder folder;
    CapturedLog log;
    CapturedReports reports;
    Project project;
};

// ---- Projects that open

TEST_F(Opening, ReadsProfileAndSamples) {
    project.dist_matrix_computed = true;
    ASSERT_TRUE(open_data("")) << log.text();
    EXPECT_EQ(project.Title.view(), "A test");
    EXPECT_EQ(project.NbSamples, 1);
    EXPECT_EQ(project.DataType, STANDARD);
    ASSERT_EQ(project.samples->populations.count, 1);
    const Population* const sample = project.samples->populations.at_const(0);
    EXPECT_EQ(sample->name.view(), "one");
    EXPECT_EQ(sample->sample_size, 3.0);
    EXPECT_EQ(sample->hapl_list.count, 2);
    EXPECT_EQ(project.haplo_db.list.count, 2);
    EXPECT_FALSE(project.dist_matrix_computed);
    EXPECT_TRUE(reports.all().empty());
    const std::string text = log.text();
    EXPECT_TRUE(text.starts_with("Reading input file ...\n\tReading Samples section ...\n")) << text;
    EXPECT_TRUE(log.holds("\tdone reading Samples section! ("));
    EXPECT_TRUE(text.ends_with(" ms)\n"));
    EXPECT_EQ(count_of(text, "Check your project file."), 0);
}

TEST_F(Opening, KeywordsInAnyCaseAndLayout) {
    ASSERT_TRUE(
        open("x [profile] # c\nnbsamples = 1\nGENOTYPICDATA=0\ndatatype= standard\n"
             "locusseparator=whitespace\nmissingdata='?'\r\n[DATA]\n[[SAMPLES]]\n"
             "samplename=\"one\"\nsamplesize=1\nsampledata={\nh1 1 a b\n}\n"))
        << log.text();
    EXPECT_EQ(project.samples->populations.count, 1);
}

TEST_F(Opening, BlankWithinTheBracketsHidesASection) {
    EXPECT_FALSE(open(kProfile + std::string("[Data]\n[[ Samples ]]\nSampleName=\"one\"\n")));
    EXPECT_TRUE(log.holds("\tSection \"Samples\" not found in project."));
    EXPECT_FALSE(open("[ Profile ]\nNbSamples=1\n"));
    EXPECT_TRUE(log.holds("\t[PROFILE] section not defined. Check your project file.\n"));
}

TEST_F(Opening, TitleMayHoldDoubleQuotesWithinSingleOnes) {
    ASSERT_TRUE(open_data("Title='The \"old\" stock'\n"));
    EXPECT_EQ(project.Title.view(), "The \"old\" stock");
    project.backup_written = true;
    project.the_settings.backup_file_name = (folder / "p.bac").c_str();
    ASSERT_TRUE(project.write());
    ASSERT_TRUE(open_file((folder / "p.bac").string()));
    EXPECT_EQ(project.Title.view(), "The \"old\" stock");
}

TEST_F(Opening, HaplotypeListComesFirst) {
    ASSERT_TRUE(
        open_data("[[HaplotypeDefinition]]\nHaplListName=\"all\"\nHaplList={\nh1 a b\nh2 a c\nh3 c c\n}\n"))
        << log.text();
    EXPECT_EQ(project.haplo_db.name.view(), "all");
    EXPECT_EQ(project.haplo_db.list.count, 3);
    EXPECT_EQ(project.haplo_db.DataType, STANDARD);
    EXPECT_TRUE(log.holds("Reading Haplotype List ...\n"));
    EXPECT_TRUE(log.holds("done ! ("));
}

TEST_F(Opening, HaplotypeListInAnExternalFile) {
    write_text(folder / "list.hap", "h1 a b\nh2 a c\n");
    ASSERT_TRUE(open_data("[[HaplotypeDefinition]]\nHaplList=EXTERN \"list.hap\"\n")) << log.text();
    EXPECT_EQ(project.haplo_db.list.count, 2);
    EXPECT_TRUE(log.holds("\tReading haplotype list in external file \"list.hap\"\n"));
}

TEST_F(Opening, CleanedCopyOfAnExternalFileIsPreferred) {
    project.the_settings.result_directory = (folder.path().string() + "/p.res/").c_str();
    write_text(folder / "list.hap", "h1 a b\nh2 a c\n");
    write_text(folder / "p.res/list.hap", "h1 a b\nh2 a c\nh3 b b\n");
    ASSERT_TRUE(open_data("[[HaplotypeDefinition]]\nHaplList=EXTERN \"list.hap\"\n")) << log.text();
    EXPECT_EQ(project.haplo_db.list.count, 3);
}

TEST_F(Opening, UsedHaplListAndCommentsStartNoList) {
    EXPECT_TRUE(open_data("UsedHaplList=\"x\"\n# HaplList={\n")) << log.text();
    EXPECT_EQ(count_of(log.text(), "HaplList"), 0);
}

TEST_F(Opening, BadHaplListNameIsEmptyWithWarning34) {
    EXPECT_TRUE(open_data("[[HaplotypeDefinition]]\nHaplListName=all\nHaplList={\nh1 a b\nh2 a c\n}\n"));
    EXPECT_EQ(project.haplo_db.name.view(), "");
    EXPECT_TRUE(reported(Warning, 34));
}

// ---- Matrix, structure, and the section that is passed over

constexpr char kStructure[] =
    "\t[[Structure]]\n\t\tStructureName=\"s\"\n\t\tNbGroups=1\n\t\tGroup={\n\"one\"\n\t\t}\n";
constexpr char kMantel[] =
    "\t[[Mantel]]\n\t\tMatrixSize=17\n\t\tMatrixNumber=2\n\t\tDistMatMantel={\n 0\n 1 0\n\t\t}\n";
constexpr char kMatrix[] =
    "[[DistanceMatrix]]\nMatrixName=\"m\"\nMatrixSize=2\nLabelPosition=COLUMN\nMatrixData={\nh1 0\nh2 1.5 "
    "0\n}\n";

TEST_F(Opening, StructureReferencesTheSamplesAndMantelIsPassedOver) {
    ASSERT_TRUE(open_data("", std::string(kStructure) + kMantel)) << log.text();
    ASSERT_EQ(project.structure->NbGroups, 1);
    EXPECT_EQ(project.structure->NbSamples, 1);
    EXPECT_EQ(project.structure->StructureName.view(), "s");
    EXPECT_EQ(project.structure->groups[0].at_const(0), project.samples->populations.at_const(0));
    EXPECT_EQ(project.structure->DataType, STANDARD);
    EXPECT_EQ(project.dist_mat.MatrixSize, 0);
    EXPECT_TRUE(log.holds("\tReading genetic structure ...\n\tdone reading genetic structure! ("));
    EXPECT_TRUE(log.holds("\tReading mantel section ...\n"));
    EXPECT_TRUE(reports.all().empty());
    project.clean();
    EXPECT_EQ(project.structure->NbGroups, 0);
}

TEST_F(Opening, MantelBehindAnUnfinishedGroupIsFound) {
    ASSERT_TRUE(open_data("", "[[Structure]]\nNbGroups=1\nGroup={\n\"one\"\n" + std::string(kMantel)))
        << log.text();
    EXPECT_EQ(project.structure->NbSamples, 1);
    EXPECT_TRUE(log.holds("\tReading mantel section ...\n"));
}

// The last line has no line feed, so that it is still there when its section has been read.
TEST_F(Opening, HeadingInTheNameOfASampleIsNone) {
    for (const std::string& name :
         {std::string("of [Mantel]"), std::string("of [[Structure]]"), std::string("of [Samples]")}) {
        project.clean();
        const std::string samples =
            "[[Samples]]\nSampleName=\"" + name + "\"\nSampleSize=3\nSampleData={\nh1 3 a b\n}\n";
        ASSERT_TRUE(open(kProfile + std::string("[Data]\n") + samples +
                         "[[Structure]]\nNbGroups=1\nGroup={ \"" + name + "\" }"))
            << log.text();
        EXPECT_EQ(project.samples->populations.count, 1);
        EXPECT_EQ(project.structure->NbSamples, 1);
    }
    EXPECT_EQ(count_of(log.text(), "Reading mantel section"), 0);
    EXPECT_EQ(count_of(log.text(), "Reading genetic structure"), 3);
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(Opening, StructureThatIsWrongStops) {
    EXPECT_FALSE(open_data("", "[[Structure]]\nNbGroups=1\nGroup={\n\"two\"\n}\n"));
    EXPECT_TRUE(log.holds("\tError: Sample \"two\" defined in Group #1 on line 19 has not been defined"));
    EXPECT_TRUE(reported(Error, 51, "Structure::NewReadStructure()"));
    EXPECT_FALSE(reported(Error, 203));
    EXPECT_EQ(project.failure_reason.view(), "the genetic structure can't be read");
}

TEST_F(Opening, StructureNeedsItsKeywords) {
    EXPECT_FALSE(open_data("", "[[Structure]]\n"));
    EXPECT_TRUE(
        log.holds("\tKeyword \"NbGroups\" not found in Structure section. Unknown number of groups to read. "
                  "Check your project file.\n"
                  "\tKeyword \"Group\" not found in Structure section. No groups definition could be read. "
                  "Check your project file.\n"));
    EXPECT_TRUE(reported(Error, 203));
}

TEST_F(Opening, DistanceMatrixIsReadInItsPlace) {
    ASSERT_TRUE(open_data(kMatrix)) << log.text();
    EXPECT_EQ(project.samples->populations.count, 1);
    EXPECT_EQ(project.dist_mat.MatrixSize, 2);
    EXPECT_EQ(project.dist_mat.MatrixName.view(), "m");
    EXPECT_EQ(project.dist_mat.labels.at(1).view(), "h2");
    EXPECT_EQ(project.dist_mat.get(0, 1), 1.5);
    EXPECT_EQ(project.dist_mat.DataType, STANDARD);
    EXPECT_EQ(project.dist_mat.LabelPosition, kLabelsInColumn);
    EXPECT_TRUE(log.holds("\tReading distance matrix ...\n\tdone ! ("));
    EXPECT_TRUE(reports.all().empty());
    // The lines of the matrix count: the samples stand where they stand.
    EXPECT_FALSE(open_data(kMatrix, "[[Structure]]\nNbGroups=1\nGroup={\n\"two\"\n}\n"));
    EXPECT_TRUE(log.holds("defined in Group #1 on line 27 has not"));
}

TEST_F(Opening, DistanceMatrixInAnExternalFile) {
    write_text(folder / "m.txt", "h1 h2\n0\n7 0\n");
    ASSERT_TRUE(open_data("[[DistanceMatrix]]\nMatrixSize=2\nMatrixData=EXTERN \"m.txt\"\n")) << log.text();
    EXPECT_TRUE(log.holds("\tReading Distance Matrix in external file \"m.txt\"\n"));
    EXPECT_TRUE(reported(Warning, 17));
    EXPECT_EQ(project.dist_mat.get(1, 0), 7.0);
    EXPECT_EQ(project.samples->populations.count, 1);
    write_text(folder / "m.txt", "h1 h2\n0\n7\n");
    EXPECT_FALSE(open_data("[[DistanceMatrix]]\nMatrixSize=2\nMatrixData=EXTERN \"m.txt\"\n"));
    EXPECT_TRUE(log.holds("\tUnable to read distance #2 on line 3."));
    EXPECT_TRUE(
        log.holds("\t\tProblems in reading DistanceMatrix section... aborting reading  project file.\n"));
}

TEST_F(Opening, MatrixThatIsWrongStops) {
    EXPECT_FALSE(open_data("[[DistanceMatrix]]\nMatrixSize=2\nMatrixData={\nh1 h2\n0\n1.5x 0\n}\n"));
    EXPECT_TRUE(
        log.holds("\tBad value (\"1.5x\") for distance #1 on line 14. Aborting reading distance matrix.\n"
                  "\t\tProblems in reading DistanceMatrix section... aborting reading  project file.\n"));
    EXPECT_TRUE(reported(Error, 13, "DistMat::ReadDistanceMatrix()"));
}

// The size of a Mantel section without a structure, too, makes the matrix anew; it has no labels then.
TEST_F(Opening, SizeBehindTheRowsMakesAnEmptyMatrix) {
    ASSERT_TRUE(open_data(std::string(kMatrix) + "MatrixSize=3\n")) << log.text();
    EXPECT_EQ(project.dist_mat.MatrixSize, 3);
    EXPECT_EQ(project.dist_mat.get(0, 1), 0.0);
    EXPECT_EQ(project.dist_mat.labels, std::vector<my_string>(3));
}

TEST_F(Opening, MantelWithoutStructureIsUnreadYetItsSizeCounts) {
    ASSERT_TRUE(open_data("", kMantel)) << log.text();
    EXPECT_EQ(count_of(log.text(), "mantel section"), 0);
    EXPECT_EQ(project.dist_mat.MatrixSize, 17);
}

// ---- Projects that do not open

TEST_F(Opening, MissingFileIsWarning126) {
    EXPECT_FALSE(open_file((folder / "absent.mnp").string()));
    EXPECT_TRUE(reported(Warning, 126));
    EXPECT_FALSE(project.failure_reason.is_null());
    std::filesystem::create_directory(folder / "folder.mnp");
    EXPECT_FALSE(open_file((folder / "folder.mnp").string()));
    EXPECT_EQ(reports.all().size(), 2u);
}

TEST_F(Opening, EmptyFileLacksEverything) {
    EXPECT_FALSE(open(""));
    const char* const expected =
        "\t[PROFILE] section not defined. Check your project file.\n"
        "\tKeyword \"NbSamples\" not found. Undefined number of samples to read. Check your project file.\n"
        "\tKeyword \"DataType\" not found. Undefined data type. Check your project file.\n"
        "\tKeyword \"GenotypicData\" not found. Undefined data type. Check your project file.\n"
        "\tKeyword \"LocusSeparator\" not found. Check your project file.\n"
        "\tKeyword \"MissingData\" not found. Using default value (\"?\"). Check your project file.\n"
        "\t[DATA] section not defined. Check your project file.\n"
        "\tSection \"Samples\" not found in project. At least one sample needs to be defined. "
        "Check your project file.\n"
        "\tKeyword \"SampleSize\" not found in Samples section. Sample size is undefined.\n"
        "\t\tUsing sum of haplotype frequencies. Check your project file.\n"
        "\tKeyword \"SampleData\" not found in Samples section. Sample data is undefined. "
        "Check your project file.\n"
        "done ! (";
    EXPECT_TRUE(log.holds(expected)) << log.text();
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Error, kOrigin, 203}));
}

TEST_F(Opening, GenotypesNeedTheirPhase) {
    EXPECT_FALSE(open("[Profile]\nGenotypicData=1\n"));
    EXPECT_TRUE(
        log.holds("\tKeyword \"GameticPhase\" not found. Undefined gametic phase for genotypic data. "
                  "Check your project file.\n"));
    EXPECT_TRUE(log.holds("\t\tUsing sum of genotype frequencies. Check your project file.\n"));
}

TEST_F(Opening, RecessiveAlleleAndMissingDataHaveDefaults) {
    EXPECT_TRUE(
        open("[Profile]\nNbSamples=1\nGenotypicData=0\nDataType=STANDARD\nLocusSeparator=WHITESPACE\n"
             "RecessiveData=1\n[Data]\n" +
             std::string(kSamples)));
    EXPECT_TRUE(log.holds(
        "\tKeyword \"RecessiveAllele\" not found. Undefined recessive allele for recessive data. "));
    EXPECT_TRUE(log.holds("\t\tUsing default value (null). Check your project file.\n"));
    EXPECT_TRUE(log.holds("\tKeyword \"MissingData\" not found. Using default value (\"?\")."));
}

TEST_F(Opening, FrequenciesNeedNoSeparator) {
    EXPECT_TRUE(
        open("[Profile]\nNbSamples=1\nGenotypicData=0\nDataType=FREQUENCY\n[Data]\n[[Samples]]\n"
             "SampleName=\"a\"\nSampleSize=3\nSampleData={\nh1 1\nh2 2\n}\n"))
        << log.text();
    EXPECT_EQ(count_of(log.text(), "not found"), 0);
}

TEST_F(Opening, SampleSizeMayBeLeftOut) {
    EXPECT_TRUE(
        open(kProfile + std::string("[Data]\n[[Samples]]\nSampleName=\"a\"\nSampleData={\nh1 3 a b\n}\n")));
    EXPECT_TRUE(
        log.holds("\tKeyword \"SampleSize\" not found in Samples section. Sample size is undefined.\n"
                  "\t\tUsing sum of haplotype frequencies. Check your project file.\n"));
    EXPECT_EQ(project.samples->populations.at_const(0)->sample_size, 3.0);
}

TEST_F(Opening, SectionsWithoutTheirKeywordsAreFatal) {
    EXPECT_FALSE(open_data("[[HaplotypeDefinition]]\n"));
    EXPECT_TRUE(
        log.holds("\tKeyword \"HaplList\" not found in Haplotype section. Haplotype list not found. "
                  "Check your project file.\n"));
    EXPECT_FALSE(open_data("[[DistanceMatrix]]\n"));
    EXPECT_TRUE(log.holds(
        "\tKeyword \"MatrixSize\" not found in Distance Matrix section.Check your project file.\n"));
    EXPECT_TRUE(log.holds(
        "\tKeyword \"MatrixData\" not found in Distance Matrix section. Distance matrix is undefined. "
        "Check your project file.\n"));
}

TEST_F(Opening, BadNbSamplesStops) {
    EXPECT_FALSE(open("[Profile]\nNbSamples=\n"));
    EXPECT_TRUE(reported(Error, 95));
    EXPECT_FALSE(reported(Error, 203));
}

TEST_F(Opening, SectionsBeforeDataStop) {
    const std::string profile(kProfile);
    EXPECT_FALSE(open(profile + "[[HaplotypeDefinition]]\n"));
    EXPECT_TRUE(log.holds(
        "\tProject file, Line #8 : HaplotypeDefinition keyword declared before the beginning of the 'Data' "
        "section...\n"));
    EXPECT_FALSE(open(profile + "HaplListName=\"x\"\n"));
    EXPECT_TRUE(
        log.holds("\tProject file, Line #8 : HaplListName keyword declared before the beginning of the "
                  "'HaplotypeDefinition' section...\n"));
    EXPECT_FALSE(open(profile + "HaplList={\n"));
    EXPECT_TRUE(
        log.holds("\tProject file, Line #8 : HaplList keyword declared before the beginning of the "
                  "'HaplotypeDefinition' "
                  "section...\n\t Stopping reading input file!\n"));
    EXPECT_FALSE(open(profile + "[[DistanceMatrix]]\n"));
    EXPECT_TRUE(log.holds(
        "\tProject file, Line #8 : DistanceMatrix keyword declared before the beginning of the 'Data' "
        "section..., aborting project reading!\n"));
}

TEST_F(Opening, MissingExternalFilesStop) {
    EXPECT_FALSE(open_data("[[HaplotypeDefinition]]\nHaplList=EXTERN \"none.hap\"\n"));
    EXPECT_TRUE(
        log.holds("\tWarning: External file \"none.hap\" listed on line 10 cannot be open. "
                  "Check that it exists. Aborting reading project\n"));
    EXPECT_TRUE(reported(Error, 200));
    EXPECT_FALSE(open_data("[[DistanceMatrix]]\nMatrixSize=2\nMatrixData=EXTERN \"none.dis\"\n"));
    EXPECT_TRUE(log.holds("\tWarning: External file \"none.dis\" listed on line 11 cannot be open. "));
    EXPECT_FALSE(open_data("[[HaplotypeDefinition]]\nHaplList=EXTERN none.hap\n"));
    EXPECT_TRUE(reported(Warning, 190, "readStringContent(...)"));
}

TEST_F(Opening, FolderIsNoExternalFile) {
    std::filesystem::create_directory(folder / "list.hap");
    EXPECT_FALSE(open_data("[[HaplotypeDefinition]]\nHaplList=EXTERN \"list.hap\"\n"));
    EXPECT_TRUE(log.holds("\tWarning: External file \"list.hap\" listed on line 10 cannot be open. "));
    EXPECT_TRUE(reported(Error, 200));
}

TEST_F(Opening, ExternIsMatchedAsWritten) {
    write_text(folder / "list.hap", "h1 a b\nh2 a c\n");
    open_data("[[HaplotypeDefinition]]\nHaplList=Extern \"list.hap\"\n");
    EXPECT_EQ(count_of(log.text(), "external file \"list.hap\""), 0);
}

TEST_F(Opening, MatrixKeywordsWithBadValues) {
    EXPECT_TRUE(open_data("MatrixName=x\n"));
    EXPECT_TRUE(log.holds("\tWarning: Unable to read MatrixName on line 9\n"));
    EXPECT_TRUE(reported(Warning, 24));
    EXPECT_EQ(project.dist_mat.MatrixName.view(), "undefined");
    EXPECT_FALSE(open_data("MatrixSize=x\n"));
    EXPECT_TRUE(log.holds("\tWarning: Unable to read MatrixSize on line 9. Aborting project reading.\n"));
    EXPECT_FALSE(open_data("MatrixName=\"m\"\nMatrixSize=0\n"));
    EXPECT_TRUE(log.holds("\tBad size (0) for distance matrix \"m\". Check size (0) reported on line 10\n"));
    EXPECT_TRUE(reported(Error, 15));
    EXPECT_FALSE(open_data("LabelPosition=ROW\n"));
    EXPECT_TRUE(log.holds("\tInvalid keyword for LabelPosition on line9. Aborting reading project.\n"));
    EXPECT_TRUE(reported(Error, 16));
}

TEST_F(Opening, HugeMatrixIsRefused) {
    for (const char* size : {"100000", "2147483647", "1e300"}) {
        EXPECT_FALSE(open_data(std::string("MatrixName=\"m\"\nMatrixSize=") + size + "\n"));
    }
    EXPECT_TRUE(log.holds(
        "\tUnable to allocate memory for distance matrix \"m\". Required size (100000) reported on line "
        "10 is probably too big...\n"));
    EXPECT_EQ(project.dist_mat.MatrixSize, 0);
}

TEST_F(Opening, UnclosedMatrixStops) {
    EXPECT_FALSE(
        open_data("[[DistanceMatrix]]\nMatrixName=\"m\"\nMatrixSize=2\nMatrixData={\nh1 h2\n0\n1 0\n"));
    EXPECT_TRUE(
        log.holds("\tNo closing brace in Matrix Data \"m\"definition. Aborting reading project.\n"
                  "\t\tProblems in reading DistanceMatrix section... aborting reading  project file.\n"));
    EXPECT_TRUE(reported(Error, 21, "DistMat::ReadDistanceMatrix()"));
}

TEST_F(Opening, UnreadableSamplesStop) {
    EXPECT_FALSE(
        open(kProfile + std::string("[Data]\n[[Samples]]\nSampleName=\"a\"\nSampleSize=2\nSampleData={\n"
                                    "h1 x a b\n}\n")));
    EXPECT_TRUE(log.holds("\tProblems in reading Samples section... aborting reading  project file.\n"));
    EXPECT_FALSE(reported(Error, 203));
}

TEST_F(Opening, StructureBeforeOrWithoutSamplesStops) {
    EXPECT_FALSE(open(kProfile + std::string("[Data]\n[[Structure]]\n")));
    EXPECT_TRUE(
        log.holds("[STRUCTURE] section defined before the [SAMPLES] section. Aborting reading project\n"));
    EXPECT_FALSE(open(kProfile + std::string("[Data]\n[[Samples]]\n[[Structure]]\n")));
    EXPECT_TRUE(
        log.holds("No samples were defined before the [STRUCTURE] section. Aborting reading project\n"));
    EXPECT_TRUE(reported(Error, 172, "Project::open()"));
}

TEST_F(Opening, OverLongLineIsToldAndStops) {
    EXPECT_FALSE(open(kProfile + std::string("# ") + std::string(200000, 'x') + "\n[Data]\n" + kSamples));
    EXPECT_TRUE(
        log.holds("\tProject file, Line #8 : the line is longer than 149999 characters. "
                  "Aborting reading project.\n"));
    EXPECT_FALSE(project.failure_reason.is_null());
}

TEST_F(Opening, OverLongLineInASectionLosesNothingSilently) {
    const std::string too_long(200000, 'x');
    EXPECT_FALSE(open(kProfile +
                      std::string("[Data]\n[[Samples]]\nSampleName=\"a\"\nSampleSize=1\nSampleData={\n"
                                  "h1 1 ") +
                      too_long + "\n}\nSampleName=\"b\"\n"));
    EXPECT_FALSE(open_data("", "[[Structure]]\n" + too_long + "\n"));
    EXPECT_TRUE(
        log.holds("\tLine #17 of the Structure section is longer than 149999 characters. "
                  "Aborting reading project.\n"));
}

TEST_F(Opening, JunkIsNoProject) {
    std::string junk;
    for (int i = 0; i < 100000; ++i)
        junk += static_cast<char>((i * 167 + i / 256 + 13) % 256);
    EXPECT_FALSE(open(junk));
    EXPECT_FALSE(open(kProfile + std::string("[Data]\n[[Samples]]\n") + junk));
    EXPECT_FALSE(open(std::string(100000, '{')));
    EXPECT_FALSE(open(std::string(100000, '\0')));
}

// Every file that is cut short is refused or read, but never loops or crashes.
TEST_F(Opening, CutProjectsEnd) {
    const std::string whole = kProfile +
                              std::string("[Data]\n[[HaplotypeDefinition]]\nHaplList={\nh1 a b\n}\n") +
                              kSamples + kStructure + kMantel;
    for (std::size_t length = 0; length < whole.size(); length += 7) {
        project.clean();
        project.ProfileSettings::initialize();
        project.ProfileSettings::the_settings = &project.the_settings;
        open(whole.substr(0, length));
    }
    EXPECT_TRUE(open(whole)) << log.text();
}

// ---- Real projects

struct ExpectedProject {
    const char* file;
    int data_type;
    std::vector<double> sizes;  // gene copies per sample
};

TEST_F(Opening, RealProjectsHaveTheirSamples) {
    const std::vector<ExpectedProject> expected = {
        {"woodmouse.mnp", DNA, {15}},
        {"influenza_small.mnp", DNA, {20, 20, 20, 20, 20}},
        {"influenza_large.mnp", DNA, {150, 150, 150, 150, 150}},
        {"influenza_frequency.mnp", FREQUENCY, {30, 30, 30, 30, 30}},
        {"known_phase_dna.mnp", DNA, {40, 40, 40, 40, 40}},
        {"binary_rflp.mnp", RFLP, {40, 40, 40}},
        {"cats_microsat.mnp", MICROSAT, {20, 44, 24, 46, 30, 22, 28, 20, 18, 22, 40, 28, 26, 34, 22, 24, 26}},
        {"hla_standard.mnp", STANDARD, {126, 314}},
    };
    for (const ExpectedProject& one : expected) {
        project.clean();
        project.ProfileSettings::initialize();
        project.ProfileSettings::the_settings = &project.the_settings;
        ASSERT_TRUE(open_file(std::string(MENDCORE_TEST_DATA) + "/" + one.file)) << one.file << log.text();
        EXPECT_EQ(project.DataType, one.data_type) << one.file;
        std::vector<double> sizes;
        for (const Population* sample : project.samples->populations)
            sizes.push_back(sample->sample_size);
        EXPECT_EQ(sizes, one.sizes) << one.file;
        EXPECT_EQ(project.NbSamples, static_cast<int>(one.sizes.size())) << one.file;
        const bool has_matrix = one.data_type == FREQUENCY;
        EXPECT_EQ(project.dist_mat.MatrixSize, has_matrix ? 105 : 0) << one.file;
        const bool has_groups = one.sizes.size() > 1;
        EXPECT_EQ(project.structure->NbSamples, has_groups ? project.NbSamples : 0) << one.file;
    }
}

// The users' description shows nothing that does not open.
TEST_F(Opening, EveryExampleOfTheDescriptionOpens) {
    const std::string text = read_text(std::string(MENDCORE_SOURCE_DIR) + "/docs/project_file.md");
    const std::string begin = "```mnp\n";
    int examples = 0;
    for (std::size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at)) {
        at += begin.size();
        const std::string example = text.substr(at, text.find("```", at) - at);
        project.clean();
        project.ProfileSettings::initialize();
        project.ProfileSettings::the_settings = &project.the_settings;
        EXPECT_TRUE(open(example)) << example << log.text();
        EXPECT_EQ(project.samples->populations.count, project.NbSamples);
        for (const Population* sample : project.samples->populations)
            EXPECT_GT(sample->sample_size, 0.0);
        ++examples;
    }
    EXPECT_EQ(examples, 7);
    EXPECT_TRUE(reports.all().empty());
    EXPECT_EQ(count_of(log.text(), "Check your project file"), 0);
}

// ---- Writing back

TEST_F(Opening, NothingIsWrittenUnlessAsked) {
    project.the_settings.backup_file_name = (folder / "p.bac").c_str();
    EXPECT_TRUE(project.write());
    EXPECT_FALSE(std::filesystem::exists(folder / "p.bac"));
}

TEST_F(Opening, BackUpIsReadAgain) {
    ASSERT_TRUE(open_data(""));
    project.backup_written = true;
    project.the_settings.backup_file_name = (folder / "p.bac").c_str();
    ASSERT_TRUE(project.write());
    EXPECT_TRUE(log.holds("Back-up file with input data written in " + (folder / "p.bac").string() + "\n"));
    const std::string written = read_text(folder / "p.bac");
    EXPECT_TRUE(written.starts_with("[Profile]\n\n\tTitle=\"A test\"\n")) << written;

    Project again;
    again.ProfileSettings::the_settings = &again.the_settings;
    copy_path(settings::input_file, (folder / "p.bac").c_str(), settings::kInputFileSize);
    ASSERT_TRUE(again.newOpen()) << written << log.text();
    ASSERT_EQ(again.samples->populations.count, 1);
    EXPECT_EQ(again.samples->populations.at_const(0)->sample_size, 3.0);
    EXPECT_EQ(again.haplo_db.list.count, 2);
    EXPECT_EQ(again.haplo_db.list.at_const(1)->content, project.haplo_db.list.at_const(1)->content);
}

TEST_F(Opening, BackUpHasMatrixAndGroups) {
    ASSERT_TRUE(open_data(kMatrix, kStructure));
    project.backup_written = true;
    project.the_settings.backup_file_name = (folder / "p.bac").c_str();
    ASSERT_TRUE(project.write());
    Project again;
    again.ProfileSettings::the_settings = &again.the_settings;
    copy_path(settings::input_file, (folder / "p.bac").c_str(), settings::kInputFileSize);
    ASSERT_TRUE(again.newOpen()) << read_text(folder / "p.bac") << log.text();
    EXPECT_EQ(again.dist_mat.MatrixSize, 2);
    EXPECT_EQ(again.dist_mat.get(1, 0), 1.5);
    EXPECT_EQ(again.dist_mat.labels, project.dist_mat.labels);
    EXPECT_EQ(again.structure->NbSamples, 1);
    EXPECT_EQ(again.structure->StructureName.view(), "s");
}

TEST_F(Opening, BackUpOfSequencesHasNoSeparator) {
    project.DataType = RFLP;
    project.LocusSeparator = ' ';
    project.backup_written = true;
    project.the_settings.backup_file_name = (folder / "p.bac").c_str();
    ASSERT_TRUE(project.write());
    EXPECT_EQ(project.LocusSeparator, 0);
    EXPECT_NE(read_text(folder / "p.bac").find("LocusSeparator=NONE\n"), std::string::npos);
}

TEST_F(Opening, BackUpThatCannotBeWrittenIsError133) {
    project.backup_written = true;
    project.the_settings.backup_file_name = (folder / "none/p.bac").c_str();
    EXPECT_FALSE(project.write());
    EXPECT_TRUE(reported(Error, 133, "Project::write()"));
}

TEST_F(Opening, SettingsAreSavedBesideTheProject) {
    copy_path(settings::input_file, (folder / "p.mnp").c_str(), settings::kInputFileSize);
    project.save_associated_set();
    EXPECT_EQ(project.the_settings.settings_file_name.view(), (folder / "p.mns").string());
    EXPECT_NE(read_text(folder / "p.mns").find("TaskNumber="), std::string::npos);
}

TEST_F(Opening, ExampleIsAnEmptyFile) {
    write_text(folder / "x.mnp", "old");
    std::string path = (folder / "x.mnp").string();
    create_mnp_example(path.data());
    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_EQ(read_text(path), "");
}

}  // namespace
