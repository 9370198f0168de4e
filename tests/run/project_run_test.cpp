#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "results/xml_tags.h"
#include "run/errors.h"
#include "run/messages.h"
#include "run/process.h"
#include "run/project.h"
#include "run/tasks.h"
#include "support/project_log.h"
#include "support/small_projects.h"
#include "support/temp_folder.h"
#include "support/watched_stream.h"

namespace {

using namespace mnd;
using mnd_test::contains;
using mnd_test::count_of;
using mnd_test::dna_project;
using mnd_test::read_text;
using mnd_test::settings_of;
using mnd_test::write_text;

namespace fs = std::filesystem;

constexpr long kDiversity = kTaskStandardIndices | kTaskMolecularDiversity;

// Runs projects of a folder of its own, each as the walk over a run file would.
class ProjectRun : public mnd_test::InTempFolder {
protected:
    void SetUp() override {
        InTempFolder::SetUp();
        silentMendrake = true;
        project = std::make_unique<Project>();
    }
    void TearDown() override {
        project.reset();
        silentMendrake = false;
        xmlOutput = false;
        InTempFolder::TearDown();
    }

    void prepare(const std::string& name, const std::string& settings_text) {
        write_text(folder / "run.mns", settings_text);
        copy_path(settings::input_file, (name + ".mnp").c_str(), settings::kInputFileSize);
        project->build_res_bac_names();
        settings& s = project->the_settings;
        s.settings_file_name = "run.mns";
        s.read_settings(s.settings_file_name);
        s.append_results = 0;
        project->project_valid = true;
    }
    bool run(const std::string& name, const std::string& settings_text) {
        prepare(name, settings_text);
        return project->run();
    }
    std::string document(const std::string& name, const std::string& extension = ".htm") {
        return read_text(folder / (name + ".res/" + name + extension));
    }
    bool is_well_formed(const std::string& name) {
        const std::string path = (folder / (name + ".res/" + name + ".xml")).string();
        return std::system(("xmllint --noout '" + path + "' 2>/dev/null").c_str()) == 0;
    }
    // Puts each sample into a group of its own, once the project is read.
    void group_samples() {
        log.when("  Checking all selected options...", [this] {
            Structure& structure = *project->structure;
            structure.NbGroups = static_cast<int>(project->samples->populations.count);
            structure.NbSamples = structure.NbGroups;
            structure.allocate_groups();
            for (int i = 0; i < structure.NbGroups; ++i) {
                structure.groups[static_cast<std::size_t>(i)].Add(project->samples->populations[i]);
                structure.group_sizes[static_cast<std::size_t>(i)] = 1;
            }
        });
    }

    std::unique_ptr<Project> project;
    mnd_test::WatchedLog log;
};

// --- The frame of a run

TEST_F(ProjectRun, TaskNumberZeroGivesHeadersSettingsAndFootersAndNoAnalysis) {
    write_text(folder / "a.mnp", dna_project());
    ASSERT_TRUE(run("a", settings_of(0)));
    const std::string text = document("a");
    const std::string slashes(68, '/');
    EXPECT_TRUE(contains(text, slashes + "\nRUN NUMBER 1 ("));
    EXPECT_TRUE(contains(text,
                         "\nProject information:\n--------------------\n\tNbSamples      =  2\n"
                         "\tDataType       =  DNA\n\tGenotypicData  =  0\n"));
    EXPECT_TRUE(contains(text, "Settings used for Calculations"));
    EXPECT_TRUE(contains(text, '\n' + slashes + "\nEND OF RUN NUMBER 1 ("));
    EXPECT_TRUE(contains(text, "))\nTotal computing time for this run : 0h 0m 0s "));
    EXPECT_TRUE(contains(text, " ms\n" + slashes + "\n\n</body>\n</PRE>\n</html>\n"));
    for (const char* absent : {"ANALYSES AT", "== Sample", "GENETIC STRUCTURE", "Not computed"})
        EXPECT_FALSE(contains(text, absent)) << absent;
    EXPECT_TRUE(log.holds("\nReading Project: a.mnp\n"));
    EXPECT_TRUE(log.holds(std::string(72, '-') + "\n  Checking all selected options..."));
    EXPECT_TRUE(log.holds("\n Computations are over\n"));
    EXPECT_TRUE(log.holds(slashes + "\nRUN NUMBER 1 ("));
    EXPECT_TRUE(log.holds("END OF RUN NUMBER 1 ("));
}

TEST_F(ProjectRun, GenotypicProjectNamesPhaseAndRecessivity) {
    write_text(folder / "g.mnp",
               "[Profile]\nTitle=\"G\"\nNbSamples=1\nGenotypicData=1\nGameticPhase=0\nDataType=STANDARD\n"
               "LocusSeparator=WHITESPACE\nMissingData=\"?\"\nRecessiveData=0\n[Data]\n[[Samples]]\n"
               "SampleName=\"S\"\nSampleSize=2\nSampleData={\ni 2 1 2\n  1 3\n}\n");
    ASSERT_TRUE(run("g", settings_of(0, "RecessiveAllelesEM=1\n")));
    // The line of recessive data shows the setting of the estimation, not the profile's keyword.
    EXPECT_TRUE(contains(document("g"),
                         "\tDataType       =  STANDARD\n\tGenotypicData  =  1\n\tGameticPhase   =  0\n"
                         "\tRecessiveData  =  1\n"));
}

TEST_F(ProjectRun, RunNumberRisesAndCopiesOfTheProjectGo) {
    write_text(folder / "a.mnp", dna_project());
    ASSERT_TRUE(run("a", settings_of(kDiversity)));
    ASSERT_TRUE(run("a", settings_of(kDiversity)));
    EXPECT_TRUE(contains(document("a"), "RUN NUMBER 2 ("));
    EXPECT_FALSE(fs::exists(folder / "a.res/a.mnp"));
    EXPECT_EQ(project->samples->populations.count, 0);
    EXPECT_EQ(settings::global_work_to_do, 0.0);
    EXPECT_EQ(E.result_stream, nullptr);
    EXPECT_EQ(project->the_settings.result_stream, nullptr);
}

TEST_F(ProjectRun, SeparatorOfSequencesIsRemovedWithAWarning) {
    std::string text = dna_project();
    text.replace(text.find("NONE"), 4, "WHITESPACE");
    write_text(folder / "a.mnp", text);
    ASSERT_TRUE(run("a", settings_of(0)));
    EXPECT_TRUE(contains(document("a"), "\nWarning: The locus separator has been removed\n-------\n\n"));
    EXPECT_TRUE(log.holds("\nWarning: The locus separator has been removed\n\n"));
    EXPECT_EQ(project->carried_separator(), '\0');
}

TEST_F(ProjectRun, WithoutAValidProjectNothingRuns) {
    write_text(folder / "a.mnp", dna_project());
    prepare("a", settings_of(0));
    project->project_valid = false;
    EXPECT_FALSE(project->run());
    EXPECT_EQ(log.text(), "\n No valid project is opened....\n");
    EXPECT_FALSE(fs::exists(folder / "a.res"));
}

TEST_F(ProjectRun, MissingProjectIsReportedUnderTheNameOfTheExploration) {
    const mnd_test::ProjectLog report_log;
    EXPECT_FALSE(run("absent", settings_of(0)));
    EXPECT_TRUE(report_log.reports("ERROR", "Project::explore()", message_text(kCannotOpenProject)));
    EXPECT_FALSE(fs::exists(folder / "absent.res"));
}

TEST_F(ProjectRun, UnusableProjectLeavesAClosedDocumentAndTheWordError) {
    write_text(folder / "a.mnp", "[Profile]\nNbSamples=1\n");
    EXPECT_FALSE(run("a", settings_of(0, "XMLOutput=1\n")));
    EXPECT_TRUE(is_well_formed("a"));
    EXPECT_EQ(read_text("mnd_pro.txt"), "error\n");
    EXPECT_TRUE(log.holds("Error opening project... a.res/a.mnp\n"));
    EXPECT_FALSE(fs::exists(folder / "a.res/a.mnp"));
    EXPECT_NE(project->failure_reason.length(), 0);
}

TEST_F(ProjectRun, ImpossibleProjectSaysWhereToLookAndLeavesNoErrorFile) {
    // Known phase and recessive data exclude one another for the exact test.
    write_text(
        folder / "a.mnp",
        "[Profile]\nTitle=\"G\"\nNbSamples=1\nGenotypicData=1\nGameticPhase=1\nDataType=STANDARD\n"
        "LocusSeparator=WHITESPACE\nMissingData=\"?\"\nRecessiveData=1\nRecessiveAllele=\"r\"\n[Data]\n"
        "[[Samples]]\nSampleName=\"S\"\nSampleSize=2\nSampleData={\ni 2 1 2\n  1 3\n}\n");
    EXPECT_FALSE(run("a", settings_of(kTaskExactDifferentiation)));
    const std::string text = document("a");
    EXPECT_TRUE(contains(text,
                         "\nOne of the scheduled task is not possible with these data,"
                         "for more details look into 'Mendrake_log.txt'"));
    EXPECT_TRUE(contains(text, "</html>"));
    EXPECT_FALSE(contains(text, "END OF RUN"));
    EXPECT_FALSE(fs::exists(folder / "mnd_pro.txt"));
    EXPECT_FALSE(fs::exists(folder / "a.res/a.mnp"));
    EXPECT_FALSE(project->project_valid);
}

TEST_F(ProjectRun, CleaningRemovesWhatTranslationsLeaveInTheControlDirectory) {
    write_text(folder / "a.mnp", dna_project());
    write_text(folder / "trans_out.txt", "x");
    write_text(folder / "dum_mnd.mnp", "x");
    ASSERT_TRUE(run("a", settings_of(0)));
    EXPECT_FALSE(fs::exists(folder / "trans_out.txt"));
    EXPECT_FALSE(fs::exists(folder / "dum_mnd.mnp"));
}

TEST_F(ProjectRun, ProjectThatCannotBeCleanedIsReadAsItIs) {
    write_text(folder / "a.mnp", dna_project());
    write_text(folder / "a.res", "a file in the place of the result folder");
    ASSERT_TRUE(run("a", settings_of(kTaskStandardIndices)));
    EXPECT_TRUE(log.holds("\nAn error has occurred while cleaning-up the project...\n"));
    EXPECT_TRUE(contains(read_text("a.htm"), "== Standard diversity indices : (South)"));
    EXPECT_EQ(read_text("a.res"), "a file in the place of the result folder");
    EXPECT_TRUE(fs::exists(folder / "a.mnp")) << "the project is no copy";
}

TEST_F(ProjectRun, BackslashesOfAPathBecomeSlashes) {
    write_text(folder / "sub/a.mnp", dna_project());
    prepare("sub/a", settings_of(0));
    project->the_settings.backup_file_name = "sub\\a.bac";
    project->the_settings.project_directory = "sub\\";
    ASSERT_TRUE(project->run());
    EXPECT_EQ(project->the_settings.backup_file_name.view(), "sub/a.bac");
    EXPECT_EQ(project->the_settings.project_directory.view(), "sub/");
    EXPECT_EQ(project->the_settings.result_directory.view(), "sub/a.res/");
    EXPECT_EQ(project->the_settings.result_file_name.view(), "sub/a.res/a.htm");
    EXPECT_EQ(project->the_settings.ld_file_name.view(), "sub/a.res/ld_dis.xl");
    EXPECT_STREQ(settings::input_file, "sub/a.res/a.mnp");
}

// --- Appending

TEST_F(ProjectRun, AppendingEmptiesAnHtmlDocumentYetKeepsItsTree) {
    write_text(folder / "a.mnp", dna_project());
    ASSERT_TRUE(run("a", settings_of(0)));
    prepare("a", settings_of(0));
    project->the_settings.append_results = 1;
    ASSERT_TRUE(project->run());
    EXPECT_EQ(count_of(document("a"), "END OF RUN"), 1);
    EXPECT_EQ(count_of(document("a", ".js"), "Run of "), 2);
}

TEST_F(ProjectRun, AppendingAddsToAnXmlDocument) {
    write_text(folder / "a.mnp", dna_project());
    ASSERT_TRUE(run("a", settings_of(kDiversity, "XMLOutput=1\n")));
    prepare("a", settings_of(kDiversity, "XMLOutput=1\n"));
    project->the_settings.append_results = 1;
    ASSERT_TRUE(project->run());
    EXPECT_TRUE(is_well_formed("a"));
    EXPECT_EQ(count_of(document("a", ".xml"), "<run "), 2);
    EXPECT_EQ(count_of(document("a", ".xml"), "<Mendrake>"), 1);
}

TEST_F(ProjectRun, WithoutAppendingTheTreeStartsAfresh) {
    write_text(folder / "a.mnp", dna_project());
    ASSERT_TRUE(run("a", settings_of(0)));
    ASSERT_TRUE(run("a", settings_of(0)));
    EXPECT_EQ(count_of(document("a", ".js"), "Run of "), 1);
}

// --- The levels of analysis

TEST_F(ProjectRun, AnalysesOfSamplesStandUnderTheirHeading) {
    write_text(folder / "a.mnp", dna_project());
    ASSERT_TRUE(run("a", settings_of(kTaskStandardIndices)));
    const std::string text = document("a");
    EXPECT_TRUE(contains(text, "=\n== ANALYSES AT THE INTRA-POPULATION LEVEL\n="));
    EXPECT_TRUE(contains(text, "== Standard diversity indices : (North)"));
    EXPECT_TRUE(contains(document("a", ".js"), "insFld(aux1, gFld(\"Samples\", \"\"))"));
    EXPECT_FALSE(contains(text, "INTRA-GROUP"));
}

TEST_F(ProjectRun, DistanceFilesAloneAreNoTaskOfASample) {
    write_text(folder / "a.mnp", dna_project());
    ASSERT_TRUE(run("a", settings_of(kTaskDistanceFiles)));
    EXPECT_FALSE(contains(document("a"), "ANALYSES AT"));
    EXPECT_FALSE(fs::exists(folder / "a.res/North.dis"));
    EXPECT_FALSE(log.holds("Population 'North'"));
}

TEST_F(ProjectRun, GroupPassAnalysesPooledSamplesBeforeTheSamples) {
    write_text(folder / "a.mnp", dna_project());
    group_samples();
    ASSERT_TRUE(run("a", settings_of(kTaskStandardIndices, "ComputeSumStatsWithinGroups=1\n")));
    const std::string text = document("a");
    const std::size_t groups = text.find("\n== ANALYSES AT THE INTRA-GROUP LEVEL\n");
    const std::size_t pooled = text.find("== Standard diversity indices : (Group 2)");
    const std::size_t samples = text.find("\n== ANALYSES AT THE INTRA-POPULATION LEVEL\n");
    const std::size_t sample = text.find("== Standard diversity indices : (South)");
    ASSERT_NE(sample, std::string::npos);
    EXPECT_TRUE(groups < pooled && pooled < samples && samples < sample);
    EXPECT_TRUE(contains(text, "\t#Group1\n\t\tGroup={\n\t\t\"Group 1\"\n\t\t\"Group 2\"\n\t\t}\n"));
    EXPECT_TRUE(contains(text, "\t#Group2\n\t\tGroup={\n\t\t\"South\"\n\t\t}\n"));
    EXPECT_TRUE(contains(document("a", ".js"), "gFld(\"Groups\", \"\")"));
}

TEST_F(ProjectRun, GroupPassBringsBackTheTasksThatTheChecksCleared) {
    write_text(folder / "a.mnp", dna_project());
    long tasks_of_checks = -1;
    log.when("  check selected settings...", [&] { tasks_of_checks = project->the_settings.TaskNumber; });
    ASSERT_TRUE(
        run("a", settings_of(kTaskStandardIndices | kTaskHardyWeinberg, "ComputeSumStatsWithinGroups=1\n")));
    EXPECT_TRUE(
        log.holds("     !!!Hardy-Weinberg disequilibrium test is not possible on Haplotypic data,\n"));
    EXPECT_EQ(tasks_of_checks, kTaskStandardIndices);
    EXPECT_EQ(project->the_settings.TaskNumber, kTaskStandardIndices | kTaskHardyWeinberg);
}

TEST_F(ProjectRun, WithoutAGroupPassAClearedTaskStaysCleared) {
    write_text(folder / "a.mnp", dna_project());
    ASSERT_TRUE(run("a", settings_of(kTaskStandardIndices | kTaskHardyWeinberg)));
    EXPECT_EQ(project->the_settings.TaskNumber, kTaskStandardIndices);
}

TEST_F(ProjectRun, GroupPassReadsTheSettingsAgainAndWithThemKeepNullDistrib) {
    write_text(folder / "a.mnp", dna_project());
    prepare("a", settings_of(0,
                             "ComputeSumStatsWithinGroups=1\nKeepNullDistrib=1\n"
                             "MarkovChainDememorisationStepsLD=7\n"));
    project->the_settings.KeepNullDistrib = 0;  // as a line of the run file sets it
    ASSERT_TRUE(project->run());
    EXPECT_EQ(project->the_settings.KeepNullDistrib, 1);
    EXPECT_EQ(project->the_settings.MarkovChainDememorisationStepsLD, 7);
}

TEST_F(ProjectRun, GroupPassWithoutANameOfTheSettingsFileLeavesZeros) {
    write_text(folder / "a.mnp", dna_project());
    prepare("a", settings_of(kDiversity, "ComputeSumStatsWithinGroups=1\nXMLOutput=1\n"));
    project->the_settings.settings_file_name = "";
    ASSERT_TRUE(project->run());
    EXPECT_EQ(project->the_settings.TaskNumber, 0);
    EXPECT_EQ(project->the_settings.XMLOutput, 0);
    // The form of the document is settled at the start of the run.
    EXPECT_TRUE(is_well_formed("a"));
    EXPECT_FALSE(contains(document("a", ".xml"), "INTRA-POPULATION"));
}

TEST_F(ProjectRun, GroupPassPutsTheSamplesOfTheProjectBack) {
    write_text(folder / "a.mnp", dna_project());
    group_samples();
    const Samples* const samples = project->samples;
    const Structure* const structure = project->structure;
    ASSERT_TRUE(run("a", settings_of(kDiversity, "ComputeSumStatsWithinGroups=1\n")));
    EXPECT_EQ(project->samples, samples);
    EXPECT_EQ(project->structure, structure);
    EXPECT_TRUE(samples->output_by_sample);
    EXPECT_EQ(project->the_settings.current_samples, samples);
}

TEST_F(ProjectRun, IndividualLevelIsOffForHaplotypes) {
    write_text(folder / "a.mnp", dna_project());
    ASSERT_TRUE(run("a", settings_of(0, "IncludeIndividualLevel=1\n")));
    EXPECT_EQ(project->the_settings.IncludeIndividualLevel, 0);
}

TEST_F(ProjectRun, AssignmentSeesKnownPhaseAsUnknown) {
    for (const int phase : {0, 1}) {
        write_text(
            folder / "g.mnp",
            "[Profile]\nTitle=\"G\"\nNbSamples=1\nGenotypicData=1\nGameticPhase=" + std::to_string(phase) +
                "\nDataType=STANDARD\nLocusSeparator=WHITESPACE\nMissingData=\"?\"\n[Data]\n[[Samples]]\n"
                "SampleName=\"S\"\nSampleSize=2\nSampleData={\ni 2 1 2\n  1 3\n}\n");
        const auto phases = [this] {
            return std::pair(project->the_settings.gametic_phase, project->samples->GameticPhase);
        };
        std::pair seen(-1, -1);
        mnd_test::WatchedLog own_log;
        own_log.when("Computing likelihoods of genotypes...", [&] { seen = phases(); });
        ASSERT_TRUE(run("g", settings_of(kTaskAssignment)));
        EXPECT_EQ(seen, std::pair(0, 0));
        EXPECT_EQ(phases(), std::pair(phase, phase));
    }
}

// Two samples of one locus: North has 1 and 2 in halves, South 2 only.
std::string genotype_project(int phase) {
    return "[Profile]\nTitle=\"G\"\nNbSamples=2\nGenotypicData=1\nGameticPhase=" + std::to_string(phase) +
           "\nDataType=STANDARD\nLocusSeparator=WHITESPACE\nMissingData=\"?\"\n[Data]\n[[Samples]]\n"
           "SampleName=\"North\"\nSampleSize=2\nSampleData={\na 1 1\n  1\nb 1 2\n  2\n}\n"
           "SampleName=\"South\"\nSampleSize=3\nSampleData={\nc 3 2\n  2\n}\n";
}

// ln 1/4 = -1.386; ln u^2 is -9.532 for 6 copies, u the frequency of what was not seen
constexpr const char* kLikelihoodsOfNorth =
    "\nSample 1\n----------\n"
    "          \t         1         2\n"
    "         a\t    -1.386    -9.532\n"
    "         b\t    -1.386     0.000\n";

TEST_F(ProjectRun, AssignmentRunsBeforeTheAnalysesOfEachSample) {
    for (const int phase : {0, 1}) {
        write_text(folder / "g.mnp", genotype_project(phase));
        ASSERT_TRUE(run("g", settings_of(kTaskAssignment | kTaskStandardIndices)));
        const std::string text = document("g");
        const std::size_t at = text.find(kLikelihoodsOfNorth);
        ASSERT_NE(at, std::string::npos);
        EXPECT_LT(at, text.find("== ANALYSES AT THE INTRA-POPULATION LEVEL"));
        EXPECT_EQ(count_of(text, "== LIKELIHOOD OF INDIVIDUAL GENOTYPES"), 1);
        EXPECT_FALSE(contains(text, "Not computed"));
        EXPECT_TRUE(contains(document("g", ".js"), "\tinsDoc(aux1, gLnk(\"R\", \"Genotype assignment\", "));
    }
}

TEST_F(ProjectRun, AssignmentAloneNeedsNoOtherTask) {
    write_text(folder / "g.mnp", genotype_project(0));
    ASSERT_TRUE(run("g", settings_of(kTaskAssignment, "XMLOutput=1\n")));
    const std::string text = document("g", ".xml");
    EXPECT_TRUE(contains(text, kLikelihoodsOfNorth));
    EXPECT_FALSE(contains(text, "INTRA-POPULATION"));
    EXPECT_TRUE(is_well_formed("g"));
    EXPECT_TRUE(log.holds("\n\tComputing likelihoods of genotypes..."));
}

TEST_F(ProjectRun, AssignmentRunsAtTheGroupLevelToo) {
    write_text(folder / "g.mnp", genotype_project(0));
    group_samples();
    ASSERT_TRUE(run("g", settings_of(kTaskAssignment, "ComputeSumStatsWithinGroups=1\n")));
    const std::string text = document("g");
    EXPECT_EQ(count_of(text, "== LIKELIHOOD OF INDIVIDUAL GENOTYPES"), 2);
    EXPECT_EQ(count_of(text, kLikelihoodsOfNorth), 2);
    EXPECT_LT(text.find("       1:\tGroup 1\n       2:\tGroup 2\n"),
              text.find("       1:\tNorth\n       2:\tSouth\n"));
    EXPECT_EQ(count_of(text, "_gr_genot_assignment\"></A>"), 1);
    EXPECT_EQ(count_of(text, "_genot_assignment\"></A>"), 2);
}

// Both samples make one group of five individuals: 2 of 10 copies are 1.
TEST_F(ProjectRun, AssignmentOfGroupsPoolsTheirSamples) {
    write_text(folder / "g.mnp", genotype_project(0) +
                                     "[[Structure]]\nStructureName=\"S\"\nNbGroups=1\n"
                                     "Group={\n\"North\"\n\"South\"\n}\n");
    ASSERT_TRUE(run("g", settings_of(kTaskAssignment, "ComputeSumStatsWithinGroups=1\n")));
    // ln 0.2^2 = -3.219, ln 0.8^2 = -0.446
    EXPECT_TRUE(contains(document("g"),
                         "\nSample 1\n----------\n"
                         "          \t         1\n"
                         "         a\t    -3.219\n"
                         "         b\t    -0.446\n"
                         "         c\t    -0.446\n"));
}

TEST_F(ProjectRun, AssignmentOfHaplotypesStaysSkippedAfterAGroupPass) {
    write_text(folder / "a.mnp", dna_project());
    group_samples();
    ASSERT_TRUE(
        run("a", settings_of(kTaskStandardIndices | kTaskAssignment, "ComputeSumStatsWithinGroups=1\n")));
    EXPECT_TRUE(contains(document("a"), "== Standard diversity indices : (North)"));
    EXPECT_FALSE(contains(document("a"), "== LIKELIHOOD OF INDIVIDUAL GENOTYPES"));
    EXPECT_FALSE(contains(document("a", ".js"), "Genotype assignment"));
    EXPECT_TRUE(log.holds("      skipping the task...\n"));
    EXPECT_FALSE(log.holds("Computing likelihoods of genotypes..."));
}

TEST_F(ProjectRun, SelectionWithoutGroupsSaysThatItIsImpossible) {
    write_text(folder / "a.mnp", dna_project());
    ASSERT_TRUE(run("a", settings_of(0, "DetectSelectedLoci=1\n")));
    const std::string text = document("a");
    EXPECT_TRUE(
        contains(text, "\n== DETECTION OF LOCI UNDER SELECTION FROM GENOME SCANS BASED ON F-STATISTICS\n"));
    EXPECT_TRUE(contains(text, "Beaumont, M. A., and R. A. Nichols (1996)"));
    EXPECT_TRUE(contains(text, "Excoffier, L., T. Hofer, and M. Foll (2009)"));
    EXPECT_TRUE(contains(text, "\nImpossible to detect outlier loci when no genetic structure is defined\n"));
    EXPECT_TRUE(
        log.holds("Detecting loci under selection based on F-statistics\n"
                  "\tImpossible to detect outlier loci when no genetic structure is defined\n"));
    EXPECT_TRUE(log.holds("done with detection of loci under selection! ("));
    EXPECT_TRUE(contains(document("a", ".js"), "_fdist2_\"))"));
    EXPECT_TRUE(contains(document("a", ".js"), "Loci under selection"));
}

TEST_F(ProjectRun, SelectionOnFrequenciesSaysThatItIsImpossible) {
    write_text(
        folder / "f.mnp",
        "[Profile]\nTitle=\"F\"\nNbSamples=2\nGenotypicData=0\nDataType=FREQUENCY\n[Data]\n[[Samples]]\n"
        "SampleName=\"A\"\nSampleSize=4\nSampleData={\na 3\nb 1\n}\n"
        "SampleName=\"B\"\nSampleSize=4\nSampleData={\na 1\nb 3\n}\n");
    group_samples();
    ASSERT_TRUE(run("f", settings_of(0, "DetectSelectedLoci=1\nXMLOutput=1\n")));
    EXPECT_TRUE(contains(document("f", ".xml"),
                         "\nImpossible to detect outlier loci with relative frequency data\n"));
    EXPECT_TRUE(log.holds("\tImpossible to detect outlier loci with relative frequency data\n"));
    EXPECT_TRUE(is_well_formed("f"));
}

TEST_F(ProjectRun, WhatThisVersionDoesNotHoldIsSaidInTheDocumentAndTheLog) {
    write_text(folder / "g.mnp",
               "[Profile]\nTitle=\"G\"\nNbSamples=1\nGenotypicData=1\nGameticPhase=0\nDataType=STANDARD\n"
               "LocusSeparator=WHITESPACE\nMissingData=\"?\"\nRecessiveData=0\n[Data]\n[[Samples]]\n"
               "SampleName=\"S\"\nSampleSize=2\nSampleData={\ni 2 1 2\n  1 3\n}\n");
    ASSERT_TRUE(run("g", settings_of(kTaskPairwiseFst | kTaskMantel | kTaskExactDifferentiation | kTaskAmova,
                                     "HaplAMOVA=1\nXMLOutput=1\n")));
    const std::string text = document("g", ".xml");
    for (const char* name :
         {"correlation between distance matrices", "exact test of population differentiation"}) {
        const std::string line =
            std::string("\nNot computed: this version does not hold the ") + name + ".\n";
        EXPECT_EQ(count_of(text, line), 1) << name;
        EXPECT_TRUE(log.holds(line)) << name;
    }
    EXPECT_TRUE(is_well_formed("g"));
}

// --- Stopped and broken runs

TEST_F(ProjectRun, StoppedRunWritesItsFooterAndReturnsTrue) {
    write_text(folder / "a.mnp", dna_project());
    log.when("Population 'North'", [this] { project->the_settings.stop_computations = 1; });
    EXPECT_TRUE(run("a", settings_of(kDiversity)));
    const std::string text = document("a");
    EXPECT_TRUE(contains(text, "END OF RUN NUMBER 1 ("));
    EXPECT_TRUE(contains(text, "</html>"));
    EXPECT_FALSE(contains(text, "== Standard diversity indices : (South)"));
    EXPECT_TRUE(log.holds("\n WARNING !!! Process stopped by user. The results may be incorrect\n"));
    EXPECT_FALSE(log.holds("Computations are over"));
}

TEST_F(ProjectRun, ExhaustedMemoryClosesAnXmlDocument) {
    write_text(folder / "a.mnp", dna_project());
    log.when("Computing molecular diversity", [] { throw ExceptionType(); });
    EXPECT_FALSE(run("a", settings_of(kDiversity, "XMLOutput=1\n")));
    EXPECT_TRUE(is_well_formed("a"));
    const std::string text = document("a", ".xml");
    EXPECT_TRUE(contains(text, "== Standard diversity indices : (North)")) << "results so far must stay";
    EXPECT_TRUE(contains(text, "\nThe run was abandoned: the memory is exhausted\n"));
    EXPECT_EQ(read_text("mnd_pro.txt"), "error\n");
    EXPECT_EQ(std::string(project->failure_reason.c_str()), "the memory is exhausted");
    EXPECT_FALSE(fs::exists(folder / "a.res/a.mnp"));
    EXPECT_EQ(project->samples->populations.count, 0);
    EXPECT_EQ(E.result_stream, nullptr);
}

TEST_F(ProjectRun, ExceptionInsideAnElementLeavesTheDocumentWellFormed) {
    write_text(folder / "a.mnp", dna_project());
    log.when("Computing standard diversity", [this] {
        *project->the_settings.result_stream << "</data> <table>\n<row kind=\"x\"> 1 &amp; 2";
        throw std::bad_alloc();
    });
    EXPECT_FALSE(run("a", settings_of(kDiversity, "XMLOutput=1\n")));
    EXPECT_TRUE(is_well_formed("a"));
    EXPECT_TRUE(contains(document("a", ".xml"), "the memory is exhausted"));
}

TEST_F(ProjectRun, ExceptionClosesAnHtmlDocument) {
    write_text(folder / "a.mnp", dna_project());
    log.when("Computing molecular diversity", [] { throw std::runtime_error("a < b"); });
    EXPECT_FALSE(run("a", settings_of(kDiversity)));
    const std::string text = document("a");
    EXPECT_TRUE(contains(text, "\nThe run was abandoned: a &lt; b\n\n</body>\n</PRE>\n</html>\n"));
    EXPECT_TRUE(log.holds("\nThe run was abandoned: a < b\n"));
}

TEST_F(ProjectRun, ExceptionInTheGroupPassPutsTheSamplesBack) {
    write_text(folder / "a.mnp", dna_project());
    group_samples();
    const Samples* const samples = project->samples;
    log.when("Population 'Group 1'", [] { throw std::bad_alloc(); });
    EXPECT_FALSE(run("a", settings_of(kDiversity, "ComputeSumStatsWithinGroups=1\nXMLOutput=1\n")));
    EXPECT_EQ(project->samples, samples);
    EXPECT_TRUE(is_well_formed("a"));
}

TEST_F(ProjectRun, ProjectAfterABrokenOneIsAnalysed) {
    write_text(folder / "a.mnp", dna_project());
    write_text(folder / "b.mnp", dna_project());
    log.when("Computing molecular diversity", [] { throw std::bad_alloc(); });
    EXPECT_FALSE(run("a", settings_of(kDiversity)));
    EXPECT_TRUE(run("b", settings_of(kDiversity)));
    EXPECT_TRUE(contains(document("b"), "== Molecular diversity indices : (South)"));
    EXPECT_TRUE(contains(document("b"), "RUN NUMBER 2 ("));
}

TEST_F(ProjectRun, AppendingGoesOnBehindABrokenRun) {
    write_text(folder / "a.mnp", dna_project());
    log.when("Computing molecular diversity", [] { throw std::bad_alloc(); });
    EXPECT_FALSE(run("a", settings_of(kDiversity, "XMLOutput=1\n")));
    prepare("a", settings_of(kDiversity, "XMLOutput=1\n"));
    project->the_settings.append_results = 1;
    EXPECT_TRUE(project->run());
    EXPECT_TRUE(is_well_formed("a"));
    EXPECT_EQ(count_of(document("a", ".xml"), "<run "), 2);
}

}  // namespace
