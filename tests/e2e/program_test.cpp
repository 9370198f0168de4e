// The program as a user starts it: files in, files out.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "support/limited_memory.h"
#include "support/temp_folder.h"

namespace {

using mnd_test::contains;
using mnd_test::count_of;
using mnd_test::read_text;
using mnd_test::write_text;

namespace fs = std::filesystem;

// What a start of the program left behind.
struct Outcome {
    int status = -1;
    std::string out;
    std::string errors;
};

class Program : public ::testing::Test {
protected:
    // Starts the program in the folder of the test.
    //   before   what the shell puts before the command, such as "MENDCORE_SEED=5"
    Outcome start(const std::string& arguments = "", const std::string& before = "") {
        const std::string command = "cd '" + folder.path().string() + "' && " + before +
                                    " '" MENDCORE_BINARY "' " + arguments + " > stdout.txt 2> stderr.txt";
        const int result = std::system(command.c_str());
        return {WIFEXITED(result) ? WEXITSTATUS(result) : -1, read(std::string("stdout.txt")),
                read(std::string("stderr.txt"))};
    }
    void write(const std::string& name, const std::string& text) { write_text(folder / name, text); }
    std::string read(const std::string& name) { return read_text(folder / name); }
    bool exists(const std::string& name) { return fs::exists(folder / name); }
    void copy_data(const std::string& name) {
        fs::copy_file(fs::path(MENDCORE_TEST_DATA) / name, folder / name,
                      fs::copy_options::overwrite_existing);
    }
    std::string log_of(const std::string& project) { return read(project + ".res/Mendrake_log.txt"); }
    bool is_well_formed(const std::string& name) {
        return std::system(("xmllint --noout '" + (folder / name).string() + "' 2>/dev/null").c_str()) == 0;
    }
    mnd_test::TempFolder folder;
};

std::string settings_text(int tasks, bool xml) {
    return "TaskNumber=" + std::to_string(tasks) + "\nXMLOutput=" + (xml ? "1" : "0") +
           "\nDeletionWeight=1.0\nTransitionWeight=1.0\nTranversionWeight=1.0\n"
           "AllowedLevelOfMissingData=0.05\nEpsilonValue=0.0000001\nFrequencyThreshold=0.00001\n";
}

constexpr int kDiversityTasks = 1 + 2 + 2048;
constexpr int kFuTask = 16384;

// A project of two samples of three gene copies.
std::string small_project(const std::string& first_name = "North", const std::string& second_name = "South") {
    return "[Profile]\n\tTitle=\"Small\"\n\tNbSamples=2\n\tGenotypicData=0\n\tDataType=DNA\n"
           "\tLocusSeparator=NONE\n\tMissingData=\"?\"\n[Data]\n\t[[Samples]]\n"
           "\t\tSampleName=\"" +
           first_name +
           "\"\n\t\tSampleSize=3\n\t\tSampleData={\n"
           "\t\t\ta 2 ACGTACGT\n\t\t\tb 1 ACGTACGA\n\t\t}\n"
           "\t\tSampleName=\"" +
           second_name +
           "\"\n\t\tSampleSize=3\n\t\tSampleData={\n"
           "\t\t\tc 1 ACGTACCT\n\t\t\td 2 ACTTACGT\n\t\t}\n";
}

// --- One project on the command line

TEST_F(Program, AnalysesAProjectUnderASettingsFile) {
    write("small.mnp", small_project());
    write("small.mns", settings_text(kDiversityTasks, false));
    const Outcome outcome = start("small.mnp small.mns");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_TRUE(contains(outcome.out, "Mendcore terminated gracefully\n"));
    const std::string document = read("small.res/small.htm");
    EXPECT_TRUE(contains(document, "== Standard diversity indices : (North)"));
    EXPECT_TRUE(contains(document, "== Molecular diversity indices : (South)"));
    EXPECT_TRUE(contains(document, "\n</body>\n</PRE>\n</html>\n"));
    for (const char* name : {"small_main.htm", "small_tree.htm", "small.js", "North.dis", "South.dis"})
        EXPECT_TRUE(exists(std::string("small.res/") + name)) << name;
    EXPECT_FALSE(exists("small.res/small.mnp")) << "the cleaned copy must be removed";
    EXPECT_TRUE(contains(log_of("small"), "Successful run of small.mnp"));
    EXPECT_FALSE(exists("mnd_pro.txt"));
}

TEST_F(Program, TaskNumberZeroGoesThroughThePipelineWithoutAnalysis) {
    write("small.mnp", small_project());
    write("small.mns", settings_text(0, false));
    EXPECT_EQ(start("small.mnp small.mns").errors, "");
    const std::string document = read("small.res/small.htm");
    EXPECT_TRUE(contains(document, "Settings used for Calculations"));
    EXPECT_TRUE(contains(document, "END OF RUN NUMBER 1 ("));
    EXPECT_FALSE(contains(document, "== Sample :"));
}

TEST_F(Program, EndOfRunLineEndsInTwoParentheses) {
    write("small.mnp", small_project());
    write("small.mns", settings_text(0, false));
    start("small.mnp small.mns");
    const std::string document = read("small.res/small.htm");
    const std::size_t at = document.find("END OF RUN NUMBER 1 (");
    ASSERT_NE(at, std::string::npos);
    const std::string line = document.substr(at, document.find('\n', at) - at);
    EXPECT_EQ(line.substr(line.size() - 2), "))");
}

// The table is made within a step of the analysis of a sample, whose line of the log is then open.
TEST_F(Program, LogTellsOfTheTableOfBNumbersOnALineOfItsOwn) {
    copy_data("woodmouse.mnp");
    write("s.mns", "NumSimulFuTest=10\n" + settings_text(kFuTask, false));
    EXPECT_EQ(start("woodmouse.mnp s.mns").errors, "");
    const std::string log = log_of("woodmouse");
    EXPECT_TRUE(contains(log, "\n\tComputing Fu's Fs test...\n\t\tComputing BMat ...\t\tdone ! (")) << log;
    EXPECT_TRUE(contains(log, " ms)\n done in ")) << log;
}

TEST_F(Program, SilentRunShowsNoProgress) {
    write("small.mnp", small_project());
    write("small.mns", settings_text(kDiversityTasks, false));
    const Outcome outcome = start("small.mnp small.mns run_silent");
    EXPECT_FALSE(contains(outcome.out, "Computing"));
    EXPECT_TRUE(contains(outcome.out, "Running mendcore in silent mode ...\n"));
}

TEST_F(Program, ProjectInAFolderWithBlanksWorks) {
    write("my data/small one.mnp", small_project());
    write("s.mns", settings_text(kDiversityTasks, true));
    EXPECT_EQ(start("'my data/small one.mnp' s.mns").errors, "");
    EXPECT_TRUE(exists("my data/small one.res/small one.xml"));
    EXPECT_TRUE(is_well_formed("my data/small one.res/small one.xml"));
    EXPECT_TRUE(contains(read("my data/small one.res/small one.js"), "small%20one.xml#"));
}

TEST_F(Program, LaterOfTwoProjectsAloneIsAnalysed) {
    write("a.mnp", small_project());
    write("b.mnp", small_project());
    write("s.mns", settings_text(0, false));
    EXPECT_EQ(start("a.mnp s.mns b.mnp").errors, "");
    EXPECT_FALSE(exists("a.res"));
    EXPECT_TRUE(contains(log_of("b"), "Successful run of b.mnp"));
}

TEST_F(Program, ProjectAndSettingsOfTheCommandLineOverwriteTheControlFiles) {
    write("a.mnp", small_project());
    write("s.mns", settings_text(1, false));
    write("mnd_run.txt", "an older run file\n");
    write("mnd_run.mns", "older settings\n");
    start("a.mnp s.mns");
    EXPECT_TRUE(contains(read("mnd_run.txt"), "\nuse_interf_settings\na.mnp\n0\n0\nend\n"));
    EXPECT_EQ(read("mnd_run.mns"), settings_text(1, false));
}

// --- Seeds

TEST_F(Program, SeedOfTheEnvironmentRepeatsARun) {
    write("small.mnp", small_project());
    write("s.mns", settings_text(0, false));
    const Outcome outcome = start("small.mnp s.mns", "MENDCORE_SEED=12345");
    EXPECT_TRUE(contains(outcome.out, "Random generator initialized with seed=-12345\n"));
    EXPECT_FALSE(exists("randseed.txt"));
    EXPECT_TRUE(contains(start("small.mnp s.mns", "MENDCORE_SEED=-12345").out, "seed=-12345\n"));
}

TEST_F(Program, UnusableSeedIsSaidAndTheClockIsUsed) {
    write("small.mnp", small_project());
    write("s.mns", settings_text(0, false));
    for (const char* seed : {"0", "161803399", "12x", "''", "1.5"}) {
        const Outcome outcome = start("small.mnp s.mns", std::string("MENDCORE_SEED=") + seed);
        EXPECT_TRUE(contains(outcome.errors, "MENDCORE_SEED=")) << seed;
        EXPECT_TRUE(contains(log_of("small"), "is not a whole number from 1 to 161803398")) << seed;
        EXPECT_TRUE(contains(outcome.out, "Random number generator initialized with lidum=")) << seed;
    }
}

TEST_F(Program, EveryProjectOfAWalkIsSeeded) {
    write("a.mnp", small_project());
    write("b.mnp", small_project());
    write("mnd_run.mns", settings_text(0, false));
    write("mnd_run.txt", "\nuse_interf_settings\na.mnp\n0\n0\nb.mnp\n0\n0\nend\n");
    EXPECT_EQ(count_of(start("", "MENDCORE_SEED=7").out, "initialized with seed=-7\n"), 2);
}

// --- Batches

TEST_F(Program, BrokenProjectDoesNotStopTheBatch) {
    write("a.mnp", small_project());
    write("broken.mnp", "[Profile]\nNbSamples=1\n");
    write("b.mnp", small_project());
    write("mnd_run.mns", settings_text(kDiversityTasks, false));
    write("mnd_run.txt", "\nuse_interf_settings\na.mnp\n0\n0\nbroken.mnp\n0\n0\nb.mnp\n0\n0\nend\n");
    const Outcome outcome = start();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(contains(log_of("a"), "Successful run of a.mnp"));
    EXPECT_TRUE(contains(log_of("broken"), "Error during run of broken.mnp"));
    EXPECT_TRUE(contains(log_of("b"), "Successful run of b.mnp"));
    EXPECT_EQ(read("mnd_pro.txt"), "error\n");
    EXPECT_EQ(count_of(outcome.errors, "\n"), 1);
    EXPECT_TRUE(contains(outcome.errors, "broken.mnp"));
    EXPECT_TRUE(contains(outcome.errors, "broken.res/Mendrake_log.txt"));
    EXPECT_TRUE(contains(read("broken.res/broken.htm"), "</html>"));
    EXPECT_TRUE(contains(read("b.res/b.htm"), "RUN NUMBER 3 ("));
}

TEST_F(Program, MatrixTooBigForTheMemoryFailsItsProjectOnly) {
    std::string huge = small_project();
    huge.replace(huge.find("\t[[Samples]]"), 1,
                 "\t[[DistanceMatrix]]\n\t\tMatrixName=\"D\"\n\t\tMatrixSize=2000000000\n\t");
    write("huge.mnp", huge);
    write("b.mnp", small_project());
    write("mnd_run.mns", settings_text(kDiversityTasks, true));
    write("mnd_run.txt", "\nuse_interf_settings\nhuge.mnp\n0\n0\nb.mnp\n0\n0\nend\n");
    const Outcome outcome = start();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(contains(log_of("huge"), "is probably too big..."));
    EXPECT_EQ(count_of(outcome.errors, "\n"), 1);
    EXPECT_TRUE(is_well_formed("huge.res/huge.xml"));
    EXPECT_TRUE(contains(log_of("b"), "Successful run of b.mnp"));
}

// One sample of n sequences that all differ.
std::string many_haplotypes(int n) {
    constexpr char kBases[] = {'A', 'C', 'G', 'T'};
    constexpr int kSites = 8;
    std::string text =
        "[Profile]\nTitle=\"M\"\nNbSamples=1\nGenotypicData=0\nDataType=DNA\nLocusSeparator=NONE\n"
        "MissingData=\"?\"\n[Data]\n[[Samples]]\nSampleName=\"S\"\nSampleSize=" +
        std::to_string(n) + "\nSampleData={\n";
    for (int i = 0; i < n; ++i) {
        text += "h" + std::to_string(i) + " 1 ";
        for (int site = 0, rest = i; site < kSites; ++site, rest /= 4)
            text += kBases[rest % 4];
        text += '\n';
    }
    return text + "}\n";
}

TEST_F(Program, ExhaustedMemoryFailsItsProjectOnly) {
    if (!mnd_test::kMemoryCanBeLimited) GTEST_SKIP() << "the memory of this build can't be limited";
    // 4000 haplotypes have 16 million distances, of 8 bytes each.
    write("big.mnp", many_haplotypes(4000));
    write("b.mnp", small_project());
    write("mnd_run.mns", settings_text(kDiversityTasks, true));
    write("mnd_run.txt", "\nuse_interf_settings\nbig.mnp\n0\n0\nb.mnp\n0\n0\nend\n");
    const Outcome outcome = start("", "ulimit -v 100000 &&");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(contains(outcome.out, "Mendcore terminated gracefully\n"));
    EXPECT_TRUE(contains(outcome.errors, "project 'big.mnp' failed: the memory is exhausted"));
    EXPECT_EQ(count_of(outcome.errors, "\n"), 1);
    EXPECT_EQ(read("mnd_pro.txt"), "error\n");
    EXPECT_TRUE(is_well_formed("big.res/big.xml"));
    EXPECT_FALSE(exists("big.res/big.mnp"));
    EXPECT_TRUE(contains(log_of("big"), "Error during run of big.mnp"));
    EXPECT_TRUE(contains(log_of("b"), "Successful run of b.mnp"));
    EXPECT_TRUE(contains(read("b.res/b.xml"), "== Molecular diversity indices : (South)"));
}

TEST_F(Program, MissingProjectOfAListEndsTheWalk) {
    write("a.mnp", small_project());
    write("b.mnp", small_project());
    write("mnd_run.mns", settings_text(0, false));
    write("mnd_run.txt", "\nuse_interf_settings\na.mnp\n0\n0\nabsent.mnp\n0\n0\nb.mnp\n0\n0\nend\n");
    const Outcome outcome = start();
    EXPECT_EQ(read("mnd_pro.txt"), "error\n");
    EXPECT_TRUE(exists("a.res/a.htm"));
    EXPECT_FALSE(exists("b.res"));
    EXPECT_TRUE(contains(outcome.errors, "absent.mnp"));
}

TEST_F(Program, EndInAnotherCaseIsTakenForAProject) {
    write("a.mnp", small_project());
    write("mnd_run.mns", settings_text(0, false));
    write("mnd_run.txt", "\nuse_interf_settings\na.mnp\n0\n0\nEnd\n");
    EXPECT_TRUE(contains(start().errors, "'End'"));
    EXPECT_EQ(read("mnd_pro.txt"), "error\n");
}

TEST_F(Program, CarriageReturnsOfARunFileAreKept) {
    write("a.mnp", small_project());
    write("mnd_run.mns", settings_text(0, false));
    write("mnd_run.txt", "\r\nexplore\r\na.mnp\r\n0\r\n0\r\nend\r\n");
    start();
    EXPECT_FALSE(exists("a.res"));
}

TEST_F(Program, RunFileCutShortEndsTheWalkWithoutHarm) {
    write("a.mnp", small_project());
    write("mnd_run.mns", settings_text(0, false));
    write("mnd_run.txt", "\nuse_interf_settings\na.mnp\n0");
    const Outcome outcome = start();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(contains(log_of("a"), "Successful run of a.mnp"));
    EXPECT_TRUE(contains(outcome.errors, "mnd_run.txt' stops before its last line"));
}

TEST_F(Program, OverlongLineOfARunFileEndsTheWalk) {
    write("a.mnp", small_project());
    write("mnd_run.mns", settings_text(0, false));
    write("mnd_run.txt", "\nuse_interf_settings\na.mnp\n" + std::string(40, '1') + "\n0\na.mnp\n0\n0\nend\n");
    EXPECT_EQ(start().status, 0);
    EXPECT_TRUE(contains(log_of("a"), "Successful run of a.mnp"));
}

TEST_F(Program, SpecificSettingsStandOnLineThree) {
    write("a.mnp", small_project());
    write("elsewhere/x.mns", settings_text(kDiversityTasks, true));
    write("mnd_run.txt", "\nuse_spe_settings\nelsewhere/x.mns\na.mnp\n0\n0\nend\n");
    EXPECT_EQ(start().errors, "");
    EXPECT_TRUE(is_well_formed("a.res/a.xml"));
    EXPECT_TRUE(contains(read("a.res/a.xml"), "== Standard diversity indices"));
}

TEST_F(Program, AssociatedSettingsAreThoseOfEachProject) {
    write("a.mnp", small_project());
    write("a.mns", settings_text(1, false));
    write("b.mnp", small_project());
    write("b.mns", settings_text(2, true));
    write("mnd_run.txt", "\nuse_ass_settings\na.mnp\n0\n0\nb.mnp\n0\n0\nend\n");
    EXPECT_EQ(start().errors, "");
    EXPECT_TRUE(contains(read("a.res/a.htm"), "== Standard diversity indices"));
    EXPECT_FALSE(contains(read("a.res/a.htm"), "== Molecular diversity indices"));
    EXPECT_TRUE(contains(read("b.res/b.xml"), "== Molecular diversity indices"));
}

TEST_F(Program, MissingAssociatedSettingsEndTheWalk) {
    write("a.mnp", small_project());
    write("mnd_run.txt", "\nuse_ass_settings\na.mnp\n0\n0\nend\n");
    const Outcome outcome = start();
    EXPECT_TRUE(contains(log_of("a"), "The Core Routine did not find the associated settings:\n    a.mns\n"));
    EXPECT_TRUE(contains(outcome.errors, "settings"));
}

TEST_F(Program, MissingDefaultSettingsEndTheWalk) {
    write("a.mnp", small_project());
    write("mnd_run.txt", "\nuse_interf_settings\na.mnp\n0\n0\nend\n");
    start();
    EXPECT_TRUE(contains(log_of("a"), "Core Routine did not find its settings in:\n    "));
    EXPECT_FALSE(exists("a.res/a.htm"));
}

// --- Exploring

TEST_F(Program, ExploreReportsWhatAProjectHolds) {
    copy_data("influenza_small.mnp");
    write("mnd_run.txt", "\nexplore\ninfluenza_small.mnp\n0\n0\nend\n");
    EXPECT_EQ(start().errors, "");
    const std::string report = read("mnd_pro.txt");
    EXPECT_TRUE(contains(report, "5=NbSamples;\n"));
    EXPECT_TRUE(
        contains(report, "DNA=DataType;\nNONE=LocusSeparator;\n?=MissingData;\nnone=DistMatLabel;\n"));
    EXPECT_EQ(count_of(report, "\n"), 19);
    EXPECT_TRUE(contains(read("groups.txt"), "Season 2006"));
    EXPECT_TRUE(contains(read("samples.txt"), "Season 2002"));
}

TEST_F(Program, ExploreOfABrokenProjectSaysErrorAndGoesOn) {
    write("broken.mnp", "no section at all\n");
    copy_data("woodmouse.mnp");
    write("mnd_run.txt", "\nexplore\nbroken.mnp\n0\n0\nwoodmouse.mnp\n0\n0\nend\n");
    EXPECT_TRUE(contains(start().errors, "broken.mnp"));
    EXPECT_TRUE(contains(read("mnd_pro.txt"), "1=NbSamples;\n"));
    EXPECT_EQ(read("groups.txt"), "0\n");
}

// --- Documents

TEST_F(Program, TwoAppendedRunsAreOneWellFormedDocument) {
    write("a.mnp", small_project());
    write("mnd_run.mns", settings_text(kDiversityTasks, true));
    write("mnd_run.txt", "\nuse_interf_settings\na.mnp\n1\n0\na.mnp\n1\n0\nend\n");
    EXPECT_EQ(start().errors, "");
    EXPECT_EQ(start().errors, "");
    ASSERT_TRUE(is_well_formed("a.res/a.xml"));
    const std::string document = read("a.res/a.xml");
    EXPECT_EQ(count_of(document, "<run "), 4);
    EXPECT_EQ(count_of(document, "</Mendrake>"), 1);
    EXPECT_EQ(count_of(document, "<?xml version"), 1);
}

TEST_F(Program, AppendingAnHtmlDocumentEmptiesItAndKeepsTheTree) {
    write("a.mnp", small_project());
    write("mnd_run.mns", settings_text(0, false));
    write("mnd_run.txt", "\nuse_interf_settings\na.mnp\n1\n0\na.mnp\n1\n0\nend\n");
    start();
    EXPECT_EQ(count_of(read("a.res/a.htm"), "END OF RUN"), 1);
    EXPECT_EQ(count_of(read("a.res/a.js"), "Run of"), 2);
}

TEST_F(Program, AnyNameGivesAWellFormedDocument) {
    write("names.mnp", small_project("<b>&amp;'x'</data>", "a]]> & <!-- \\"));
    write("s.mns", settings_text(kDiversityTasks, true) + "PrintHaplDistMat=1\n");
    EXPECT_EQ(start("names.mnp s.mns").errors, "");
    EXPECT_TRUE(is_well_formed("names.res/names.xml"));
    write("h.mns", settings_text(kDiversityTasks, false));
    start("names.mnp h.mns");
    EXPECT_FALSE(contains(read("names.res/names.htm"), "<b>"));
}

TEST_F(Program, TitleAndListNamesWithMarkupAreEscaped) {
    std::string project = small_project();
    project.replace(project.find("Small"), 5, "A < B & C > D");
    write("p&q.mnp", project);
    write("s.mns", settings_text(kDiversityTasks, true));
    EXPECT_EQ(start("'p&q.mnp' s.mns").errors, "");
    EXPECT_TRUE(is_well_formed("p&q.res/p&q.xml"));
}

// --- Real data

class RealProject : public Program, public ::testing::WithParamInterface<const char*> {};

TEST_P(RealProject, RunsWithoutTasksAndWithDiversity) {
    const std::string name = GetParam();
    copy_data(name + ".mnp");
    for (const int tasks : {0, kDiversityTasks}) {
        write("s.mns", settings_text(tasks, true));
        const Outcome outcome = start(name + ".mnp s.mns");
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.errors, "");
        EXPECT_TRUE(contains(log_of(name), "Successful run of"));
        EXPECT_TRUE(is_well_formed(name + ".res/" + name + ".xml"));
        const std::string document = read(name + ".res/" + name + ".xml");
        EXPECT_FALSE(contains(document, "nan")) << tasks;
        EXPECT_FALSE(contains(document, "inf\n")) << tasks;
    }
}

INSTANTIATE_TEST_SUITE_P(Data, RealProject,
                         ::testing::Values("woodmouse", "influenza_small", "influenza_large",
                                           "influenza_frequency", "known_phase_dna", "binary_rflp",
                                           "cats_microsat", "hla_standard"),
                         [](const auto& instance) { return std::string(instance.param); });

TEST_F(Program, EveryExampleRunsUnderItsSettings) {
    int count = 0;
    for (const auto& entry : fs::directory_iterator(MENDCORE_SOURCE_DIR "/examples"))
        fs::copy_file(entry.path(), folder / entry.path().filename().string());
    for (const auto& entry : fs::directory_iterator(MENDCORE_SOURCE_DIR "/examples")) {
        if (entry.path().extension() != ".mnp") continue;
        const std::string stem = entry.path().stem().string();
        ++count;
        EXPECT_EQ(start(stem + ".mnp " + stem + ".mns").errors, "") << stem;
        EXPECT_TRUE(contains(log_of(stem), "Successful run of")) << stem;
    }
    EXPECT_GE(count, 6);
}

// --- Broken input: a message, never a crash, and the batch goes on

struct Broken {
    const char* name;
    std::string project;
};

std::vector<Broken> broken_projects() {
    const std::string good = small_project();
    std::string unclosed = good.substr(0, good.rfind('}'));
    std::string wrong_number = good;
    wrong_number.replace(wrong_number.find("NbSamples=2"), 11, "NbSamples=two");
    std::string no_data = good;
    no_data.replace(no_data.find("[Data]"), 6, "[Date]");
    std::string external = good;
    external.replace(external.find("SampleData={"), 12, "SampleData=EXTERN \"absent.txt\"");
    std::string junk;
    for (int i = 0; i < 5000; ++i)
        junk += static_cast<char>((i * 7919) % 256);
    return {
        {"empty", ""},
        {"junk", junk},
        {"one_brace", "{"},
        {"unclosed_sample", unclosed},
        {"number_in_words", wrong_number},
        {"no_data_section", no_data},
        {"missing_external_file", external},
        {"long_line", std::string(200000, 'A')},
        {"profile_only", good.substr(0, good.find("[Data]"))},
        {"structure_first", "[Profile]\n[Data]\n[[Structure]]\n"},
    };
}

TEST_F(Program, BrokenProjectsAreReportedAndTheBatchGoesOn) {
    write("s.mns", settings_text(kDiversityTasks, true));
    write("good.mnp", small_project());
    for (const Broken& broken : broken_projects()) {
        write(std::string(broken.name) + ".mnp", broken.project);
        write("mnd_run.mns", settings_text(kDiversityTasks, true));
        write("mnd_run.txt",
              "\nuse_interf_settings\n" + std::string(broken.name) + ".mnp\n0\n0\ngood.mnp\n0\n0\nend\n");
        const Outcome outcome = start();
        EXPECT_EQ(outcome.status, 0) << broken.name;
        EXPECT_TRUE(contains(outcome.out, "terminated gracefully")) << broken.name;
        EXPECT_TRUE(contains(log_of("good"), "Successful run of good.mnp")) << broken.name;
        EXPECT_TRUE(contains(log_of(broken.name), "Error during run of")) << broken.name;
        EXPECT_TRUE(contains(outcome.errors, std::string(broken.name) + ".mnp")) << broken.name;
    }
}

TEST_F(Program, ResultFolderThatIsAFileIsSaidOnStandardError) {
    write("a.mnp", small_project());
    write("a.res", "in the way");
    write("s.mns", settings_text(kDiversityTasks, false));
    const Outcome outcome = start("a.mnp s.mns");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(contains(outcome.errors, "can't be opened"));
    EXPECT_EQ(read("a.res"), "in the way");
}

TEST_F(Program, ExternalSampleAndHaplotypeFilesAreRead) {
    write("p/list.hap", "a ACGTACGT # comment\r\nb\tACGTACGA\n");
    write("p/s.txt", "a 2\nb 1\n");
    write("p/e.mnp",
          "[Profile]\nTitle=\"E\"\nNbSamples=1\nGenotypicData=0\nDataType=DNA\nLocusSeparator=NONE\n"
          "MissingData=\"?\"\n[Data]\n[[HaplotypeDefinition]]\nHaplListName=\"l\"\nHaplList=EXTERN "
          "\"list.hap\"\n"
          "[[Samples]]\nSampleName=\"S\"\nSampleSize=3\nSampleData=EXTERN \"s.txt\"\n");
    write("s.mns", settings_text(kDiversityTasks, false));
    EXPECT_EQ(start("p/e.mnp s.mns").errors, "");
    const std::string document = read("p/e.res/e.htm");
    EXPECT_TRUE(contains(document, "No. of gene copies       : 3\nNo. of sequences         : 2\n"));
    EXPECT_FALSE(exists("p/e.res/list.hap"));
    EXPECT_TRUE(exists("p/list.hap"));
}

TEST_F(Program, DefinitionThatNoSampleHoldsTakesTheFormOfTheOthers) {
    // With blanks between the sites and in lower case "b" would have more sites and other bases.
    write("p.mnp",
          "[Profile]\nTitle=\"E\"\nNbSamples=1\nGenotypicData=0\nDataType=DNA\nLocusSeparator=WHITESPACE\n"
          "MissingData=\"?\"\n[Data]\n[[HaplotypeDefinition]]\nHaplListName=\"l\"\nHaplList={\n"
          "a a c g t\nb a c g a\n}\n[[Samples]]\nSampleName=\"S\"\nSampleSize=3\nSampleData={\na 3\n}\n");
    write("s.mns", settings_text(1, false));
    EXPECT_EQ(start("p.mnp s.mns").errors, "");
    EXPECT_TRUE(contains(read("p.res/p.htm"), "No. of loci              : 4\n"));
    EXPECT_TRUE(contains(log_of("p"), "The locus separator has been removed"));
}

TEST_F(Program, ExternalFileAboveTheProjectIsNotSoughtInTheResultFolder) {
    // From p/e.res/ the name would lead to p/s.txt, which is another file.
    write("s.txt", "a 2 ACGT\nb 1 ACGA\n");
    write("p/s.txt", "a 1 ACGT\nb 4 ACGA\n");
    write("p/e.mnp",
          "[Profile]\nTitle=\"E\"\nNbSamples=1\nGenotypicData=0\nDataType=DNA\nLocusSeparator=NONE\n"
          "MissingData=\"?\"\n[Data]\n[[Samples]]\nSampleName=\"S\"\nSampleSize=3\n"
          "SampleData=EXTERN \"../s.txt\"\n");
    write("s.mns", settings_text(1, false));
    EXPECT_EQ(start("p/e.mnp s.mns").errors, "");
    EXPECT_TRUE(contains(read("p/e.res/e.htm"), "No. of gene copies       : 3\n"));
}

// A project of two haplotypes at two loci, separated by a comma.
std::string comma_project() {
    return "[Profile]\nTitle=\"C\"\nNbSamples=1\nGenotypicData=0\nDataType=STANDARD\nLocusSeparator=','\n"
           "MissingData=\"?\"\n[Data]\n[[Samples]]\nSampleName=\"x,y\"\nSampleSize=2\nSampleData={\n"
           "a 1 1,2\nb 1 1,3\n}\n";
}

TEST_F(Program, FirstProjectOfAWalkIsCleanedWithABlankAsSeparator) {
    // The separator line is rewritten, so that a text with commas is a single locus. The log warns.
    write("comma.mnp", comma_project());
    write("s.mns", settings_text(1, false));
    EXPECT_EQ(start("comma.mnp s.mns").errors, "");
    EXPECT_TRUE(contains(read("comma.res/comma.htm"), "No. of loci              : 1\n"));
    EXPECT_TRUE(contains(log_of("comma"), "is read as \"LocusSeparator=WHITESPACE\""));
}

TEST_F(Program, SeparatorOfTheProjectBeforeDecidesHowTheNextOneIsCleaned) {
    // DNA leaves no separator, so the comma of "one" stands; it is carried over to "two", whose
    // commas, in names too, become blanks.
    write("dna.mnp", small_project());
    write("one.mnp", comma_project());
    write("two.mnp", comma_project());
    write("mnd_run.mns", settings_text(1, false));
    write("mnd_run.txt", "\nuse_interf_settings\ndna.mnp\n0\n0\none.mnp\n0\n0\ntwo.mnp\n0\n0\nend\n");
    EXPECT_EQ(start().errors, "");
    for (const char* project : {"one", "two"}) {
        const std::string document = read(std::string(project) + ".res/" + project + ".htm");
        EXPECT_TRUE(contains(document, "No. of loci              : 2\n")) << project;
        EXPECT_FALSE(contains(log_of(project), "is read as \"LocusSeparator")) << project;
    }
    EXPECT_TRUE(contains(read("one.res/one.htm"), "== Sample : \tx,y\n"));
    EXPECT_TRUE(contains(read("two.res/two.htm"), "== Sample : \tx y\n"));
}

TEST_F(Program, NumberOfSamplesThatLiesIsWarnedOfAndNothingIsLost) {
    std::string lying = small_project();
    lying.replace(lying.find("NbSamples=2"), 11, "NbSamples=9");
    write("lying.mnp", lying);
    write("s.mns", settings_text(1, false));
    start("lying.mnp s.mns");
    EXPECT_TRUE(contains(log_of("lying"), "invalid value for \"NbSamples\""));
    EXPECT_TRUE(contains(read("lying.res/lying.htm"), "(North)"));
    EXPECT_TRUE(contains(read("lying.res/lying.htm"), "(South)"));
}

}  // namespace
