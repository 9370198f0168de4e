#include "run/driver.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

#include "results/xml_tags.h"
#include "run/errors.h"
#include "run/process.h"
#include "run/project.h"
#include "run/tasks.h"
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

// Walks run files in a folder of its own, as the program does.
class Walking : public mnd_test::InTempFolder {
protected:
    void SetUp() override {
        InTempFolder::SetUp();
        unsetenv("MENDCORE_SEED");
        write_text(folder / "mnd_run.mns", settings_of(0));
    }
    void TearDown() override {
        first_log.reset();
        destroy_project();
        free_process_paths();
        E.CloseLog_file();
        E.log_open = 0;
        _AOS_ = &null_stream();
        xmlOutput = false;
        unsetenv("MENDCORE_SEED");
        InTempFolder::TearDown();
    }
    // Walks a run file of these lines behind the line of the directory, which is empty.
    int walk(const std::string& lines) {
        write_text(folder / "mnd_run.txt", "\n" + lines);
        return walk_as_it_stands();
    }
    int walk_as_it_stands() {
        ::testing::internal::CaptureStderr();
        char here[] = "";
        const int data_type = mendstart(here);
        errors = ::testing::internal::GetCapturedStderr();
        return data_type;
    }
    void project(const std::string& name) { write_text(folder / (name + ".mnp"), dna_project()); }
    std::string log_of(const std::string& name) {
        return read_text(folder / (name + ".res/Mendrake_log.txt"));
    }
    std::string document(const std::string& name, const std::string& extension = ".htm") {
        return read_text(folder / (name + ".res/" + name + extension));
    }
    // Throws when a text reaches the log of the first project, from which on that log is kept here.
    void throw_at(const std::string& text, void (*thrower)()) {
        setenv("MENDCORE_SEED", "5", 1);
        output.when("seed=-5", [this, text, thrower] {
            first_log = std::make_unique<mnd_test::WatchedLog>();
            first_log->when(text, thrower);
        });
    }
    bool is_well_formed(const std::string& name) {
        const std::string path = (folder / (name + ".res/" + name + ".xml")).string();
        return std::system(("xmllint --noout '" + path + "' 2>/dev/null").c_str()) == 0;
    }

    std::string errors;  // what went to standard error in the last walk
    std::unique_ptr<mnd_test::WatchedLog> first_log;
    mnd_test::WatchedOutput output;  // standard output
};

// --- The run file

TEST_F(Walking, WithoutARunFileNothingIsDone) {
    EXPECT_EQ(walk_as_it_stands(), FREQUENCY) << "the data type of fresh settings";
    EXPECT_EQ(errors, "");
    EXPECT_NE(PPP, nullptr);
}

TEST_F(Walking, ReturnsTheDataTypeOfTheLastProject) {
    project("a");
    EXPECT_EQ(walk("use_interf_settings\na.mnp\n0\n0\nend\n"), DNA);
}

TEST_F(Walking, DirectoryOfTheControlFilesIsClosedBySlash) {
    for (const char* ending : {"", "/"}) {
        write_text(folder / "control/mnd_run.mns", settings_of(0));
        project("a");
        fs::remove_all(folder / "a.res");
        write_text(folder / "mnd_run.txt",
                   std::string("control") + ending + "\nany_other_word\na.mnp\n0\n0\nend\n");
        walk_as_it_stands();
        EXPECT_STREQ(MendrakeExeDirectory, "control/");
        EXPECT_TRUE(contains(log_of("a"),
                             "Log file path: a.res/Mendrake_log.txt\nCore Routine Directory: control/\n"));
        EXPECT_STREQ(set_file, "control/mnd_run.mns");
        EXPECT_TRUE(contains(log_of("a"), "Successful run of a.mnp\n"));
    }
}

TEST_F(Walking, BackslashAlsoClosesTheDirectory) {
    write_text(folder / "mnd_run.txt", "c:\\data\\\nexplore\nend\n");
    walk_as_it_stands();
    EXPECT_STREQ(MendrakeExeDirectory, "c:\\data\\");
}

TEST_F(Walking, UpperCaseEndEndsTheWalkToo) {
    project("a");
    walk("use_interf_settings\na.mnp\n0\n0\nEND\n");
    EXPECT_EQ(errors, "");
    EXPECT_EQ(settings::num_proj_done, 1);
}

TEST_F(Walking, EndMustStandAlone) {
    for (const char* word : {"End", " end", "end "}) {
        walk(std::string("use_interf_settings\n") + word + "\n");
        EXPECT_TRUE(contains(errors, "mendcore: project '" + std::string(word) +
                                         "' failed: the project file can't be opened\n"));
        EXPECT_EQ(read_text("mnd_pro.txt"), "error\n");
        EXPECT_EQ(settings::num_proj_done, 0);
    }
}

TEST_F(Walking, CarriageReturnsAreKeptInWordsAndPaths) {
    project("a");
    walk("explore\r\na.mnp\r\n0\r\n0\r\nend\r\n");
    EXPECT_STREQ(proj_file, "a.mnp\r");
    EXPECT_FALSE(fs::exists(folder / "a.res"));
    EXPECT_EQ(read_text("mnd_pro.txt"), "error\n");
}

TEST_F(Walking, RunFileCutShortEndsTheWalkAfterItsProject) {
    project("a");
    walk("use_interf_settings\na.mnp\n1");
    EXPECT_TRUE(contains(log_of("a"), "Successful run of a.mnp\n"));
    EXPECT_TRUE(contains(errors, "stops before its last line"));
}

TEST_F(Walking, LinesOfTheRunFileHaveLimits) {
    project("a");
    // A path of 399 characters is read, one of 400 is not; likewise 18 and 19 digits.
    walk("use_interf_settings\n" + std::string(399, 'x') + "\n0\n0\nend\n");
    EXPECT_EQ(std::string(proj_file), std::string(399, 'x'));
    walk("use_interf_settings\n" + std::string(400, 'x') + "\n0\n0\nend\n");
    EXPECT_TRUE(contains(errors, "stops before its last line"));
    walk("use_interf_settings\na.mnp\n" + std::string(18, '0') + "\n0\na.mnp\n0\n0\nend\n");
    EXPECT_EQ(settings::num_proj_done, 2);
    walk("use_interf_settings\na.mnp\n" + std::string(19, '0') + "\n0\na.mnp\n0\n0\nend\n");
    EXPECT_EQ(settings::num_proj_done, 1);
}

TEST_F(Walking, IntegerLinesOverrideTheSettings) {
    project("a");
    write_text(folder / "mnd_run.mns", settings_of(0, "KeepNullDistrib=0\n"));
    walk("use_interf_settings\na.mnp\n1\n1\nend\n");
    EXPECT_EQ(PPP->the_settings.append_results, 1);
    EXPECT_EQ(PPP->the_settings.KeepNullDistrib, 1);
}

// --- Where settings come from

TEST_F(Walking, DefaultSettingsAreNamedInTheSettings) {
    project("a");
    walk("use_interf_settings\na.mnp\n0\n0\nend\n");
    EXPECT_EQ(PPP->the_settings.settings_file_name.view(), "mnd_run.mns");
}

TEST_F(Walking, SpecificSettingsLeaveTheirNameEmpty) {
    project("a");
    write_text(folder / "x.mns", settings_of(kDiversity));
    walk("use_spe_settings\nx.mns\na.mnp\n0\n0\nend\n");
    EXPECT_EQ(PPP->the_settings.settings_file_name.length(), 0);
    EXPECT_TRUE(contains(document("a"), "== Molecular diversity indices"));
}

TEST_F(Walking, SpecificSettingsWithAGroupPassEndInZeros) {
    project("a");
    write_text(folder / "x.mns", settings_of(kDiversity, "ComputeSumStatsWithinGroups=1\nXMLOutput=1\n"));
    walk("use_spe_settings\nx.mns\na.mnp\n0\n1\nend\n");
    EXPECT_EQ(PPP->the_settings.TaskNumber, 0);
    EXPECT_EQ(PPP->the_settings.KeepNullDistrib, 0);
    EXPECT_TRUE(is_well_formed("a"));
    EXPECT_FALSE(contains(document("a", ".xml"), "INTRA-POPULATION"));
    EXPECT_TRUE(contains(log_of("a"), "Successful run of a.mnp\n"));
}

TEST_F(Walking, AssociatedSettingsAreThoseOfEachProject) {
    project("a");
    project("b");
    write_text(folder / "a.mns", settings_of(kTaskStandardIndices));
    write_text(folder / "b.mns", settings_of(kTaskMolecularDiversity));
    fs::remove(folder / "mnd_run.mns");
    walk("use_ass_settings\na.mnp\n0\n0\nb.mnp\n0\n0\nend\n");
    EXPECT_EQ(errors, "");
    EXPECT_TRUE(contains(document("a"), "== Standard diversity indices"));
    EXPECT_FALSE(contains(document("b"), "== Standard diversity indices"));
    EXPECT_TRUE(contains(document("b"), "== Molecular diversity indices"));
    EXPECT_EQ(PPP->the_settings.settings_file_name.view(), "b.mns");
}

TEST_F(Walking, MissingSettingsEndTheWalk) {
    project("a");
    fs::remove(folder / "mnd_run.mns");
    walk("use_interf_settings\na.mnp\n0\n0\nend\n");
    EXPECT_TRUE(contains(log_of("a"), "Core Routine did not find its settings in:\n    mnd_run.mns\n"));
    EXPECT_FALSE(fs::exists(folder / "a.res/a.htm"));
    EXPECT_EQ(count_of(errors, "\n"), 1);
    EXPECT_EQ(output.text(), "") << "the generator is not seeded";
}

TEST_F(Walking, MissingAssociatedSettingsEndTheWalk) {
    project("a");
    project("b");
    write_text(folder / "b.mns", settings_of(0));
    walk("use_ass_settings\na.mnp\n0\n0\nb.mnp\n0\n0\nend\n");
    EXPECT_TRUE(
        contains(log_of("a"), "done !\nThe Core Routine did not find the associated settings:\n    a.mns\n"));
    EXPECT_FALSE(fs::exists(folder / "b.res"));
}

TEST_F(Walking, ExplorationNeedsNoSettings) {
    project("a");
    fs::remove(folder / "mnd_run.mns");
    walk("explore\na.mnp\n0\n0\nend\n");
    EXPECT_EQ(errors, "");
    EXPECT_TRUE(contains(log_of("a"), "Exploring  a.mnp ...\n"));
    EXPECT_TRUE(contains(log_of("a"), "done!\n"));
    EXPECT_TRUE(contains(read_text("mnd_pro.txt"), "Small=Title;\n"));
}

TEST_F(Walking, ProfileOfTheProjectBeforeGivesThreeSettingsUntilTheFileIsRead) {
    project("a");
    setenv("MENDCORE_SEED", "5", 1);
    double epsilon = 0.0;
    double threshold = 0.0;
    int matrix = -1;
    output.when("seed=-5", [&] {
        PPP->EpsilonValue = 0.5;
        PPP->FrequencyThreshold = 0.25;
        PPP->GivenDistMat = 0;
        first_log = std::make_unique<mnd_test::WatchedLog>();
        first_log->when("Reading project profile section...done !\n", [&] {
            epsilon = PPP->the_settings.EpsilonValue;
            threshold = PPP->the_settings.FrequencyThreshold;
            matrix = PPP->the_settings.ComputeDistanceMatrixAMOVA;
        });
    });
    walk("use_interf_settings\na.mnp\n0\n0\nend\n");
    EXPECT_EQ(epsilon, 0.5);
    EXPECT_EQ(threshold, 0.25);
    EXPECT_EQ(matrix, 1);
    EXPECT_EQ(PPP->the_settings.EpsilonValue, 1e-7);
    EXPECT_EQ(PPP->the_settings.FrequencyThreshold, 1e-5);
    EXPECT_EQ(PPP->the_settings.ComputeDistanceMatrixAMOVA, 0);
}

// --- Batches

TEST_F(Walking, ProjectAfterAFailedOneHasItsOwnLogAndSeed) {
    write_text(folder / "broken.mnp", "[Profile]\n");
    project("b");
    setenv("MENDCORE_SEED", "77", 1);
    walk("use_interf_settings\nbroken.mnp\n0\n0\nb.mnp\n0\n0\nend\n");
    EXPECT_TRUE(contains(log_of("broken"), "Error during run of broken.mnp\n"));
    EXPECT_TRUE(log_of("b").starts_with("Log file path: b.res/Mendrake_log.txt\n"));
    EXPECT_TRUE(contains(log_of("b"), "Opening next project...b.mnp\n"));
    EXPECT_TRUE(contains(log_of("b"), "Successful run of b.mnp\n"));
    EXPECT_EQ(count_of(output.text(), "seed=-77\n"), 2);
}

TEST_F(Walking, CountOfProjectsRisesForAFailedOneToo) {
    write_text(folder / "broken.mnp", "[Profile]\n");
    project("b");
    walk("use_interf_settings\nbroken.mnp\n0\n0\nb.mnp\n0\n0\nend\n");
    EXPECT_EQ(settings::num_proj_done, 2);
    walk("use_interf_settings\nend\n");
    EXPECT_EQ(settings::num_proj_done, 0);
}

TEST_F(Walking, FailedProjectGivesOneLineOnStandardError) {
    write_text(folder / "broken.mnp", "[Profile]\n");
    walk("use_interf_settings\nbroken.mnp\n0\n0\nend\n");
    EXPECT_EQ(errors,
              "mendcore: project 'broken.mnp' failed: required sections or keywords are missing "
              "(log: broken.res/Mendrake_log.txt)\n");
    walk("explore\nbroken.mnp\n0\n0\nend\n");
    EXPECT_EQ(count_of(errors, "\n"), 1);
    EXPECT_EQ(read_text("mnd_pro.txt"), "error\n");
}

TEST_F(Walking, StopEndsTheWalkAfterTheProject) {
    project("a");
    project("b");
    write_text(folder / "mnd_run.mns", settings_of(kDiversity));
    output.when("Computing standard diversity", [] { PPP->the_settings.stop_computations = 1; });
    walk("use_interf_settings\na.mnp\n0\n0\nb.mnp\n0\n0\nend\n");
    EXPECT_TRUE(contains(log_of("a"), "Successful run of a.mnp\n"));
    EXPECT_FALSE(fs::exists(folder / "b.res"));
    EXPECT_EQ(settings::num_proj_done, 1);
    EXPECT_EQ(errors, "");
}

TEST_F(Walking, ExhaustedMemoryEndsOneProjectOnly) {
    for (const char* name : {"a", "b", "c"})
        project(name);
    write_text(folder / "mnd_run.mns", settings_of(kDiversity, "XMLOutput=1\n"));
    throw_at("Computing molecular diversity", [] { throw ExceptionType(); });
    walk("use_interf_settings\na.mnp\n0\n0\nb.mnp\n0\n0\nc.mnp\n0\n0\nend\n");
    EXPECT_EQ(errors,
              "mendcore: project 'a.mnp' failed: the memory is exhausted (log: a.res/Mendrake_log.txt)\n");
    EXPECT_EQ(read_text("mnd_pro.txt"), "error\n");
    EXPECT_TRUE(first_log->holds("The run was abandoned: the memory is exhausted\n"));
    EXPECT_TRUE(first_log->holds("Error during run of a.mnp\n"));
    for (const char* name : {"b", "c"}) {
        EXPECT_TRUE(contains(log_of(name), std::string("Successful run of ") + name + ".mnp\n"));
        EXPECT_FALSE(fs::exists(folder / (std::string(name) + ".res/" + name + ".mnp")));
    }
    for (const char* name : {"a", "b", "c"})
        EXPECT_TRUE(is_well_formed(name)) << name;
    EXPECT_FALSE(fs::exists(folder / "a.res/a.mnp"));
}

TEST_F(Walking, ExceptionInAnExplorationEndsOneProjectOnly) {
    project("a");
    project("b");
    throw_at("Exploring Samples", [] { throw std::runtime_error("no good"); });
    walk("explore\na.mnp\n0\n0\nb.mnp\n0\n0\nend\n");
    EXPECT_TRUE(first_log->holds("Error during exploration of a.mnp\n"));
    EXPECT_EQ(errors, "mendcore: project 'a.mnp' failed: no good (log: a.res/Mendrake_log.txt)\n");
    EXPECT_TRUE(contains(read_text("mnd_pro.txt"), "Small=Title;\n"));
}

TEST_F(Walking, ExceptionBetweenProjectsEndsTheWalkWithAWord) {
    project("a");
    throw_at("Reading project profile section", [] { throw std::bad_alloc(); });
    walk("use_interf_settings\na.mnp\n0\n0\nend\n");
    EXPECT_TRUE(contains(errors, "project 'a.mnp' failed: the memory is exhausted"));
}

// --- Translation

TEST_F(Walking, TranslationIsSaidNotToBeHeld) {
    write_text(folder / "data/in.gen", "x");
    walk("translate\nGenepop\nMendrake\ndata/in.gen\nout.mnp\n1\n");
    const std::string log = read_text("data/Mendrake_log.txt");
    EXPECT_TRUE(log.starts_with("Log file path: data/Mendrake_log.txt\nCore Routine Directory: \n"));
    EXPECT_TRUE(contains(log, "The translation of files is not available\n"));
    EXPECT_EQ(errors, "mendcore: the translation of files is not available\n");
    EXPECT_FALSE(fs::exists(folder / "out.mnp"));
}

// --- Parts of the walk

TEST_F(Walking, LogFolderIsThePathLessItsExtension) {
    char dir[] = "";
    my_string log_dir;
    project("sub/x");
    char path[] = "sub/x.mnp";
    EXPECT_TRUE(create_log_dir(dir, path, log_dir));
    EXPECT_EQ(log_dir.view(), "sub/x.res/");
    EXPECT_TRUE(fs::is_directory(folder / "sub/x.res"));
    EXPECT_TRUE(create_log_dir(dir, path, log_dir)) << "an existing folder is no failure";
}

TEST_F(Walking, LogFolderIsCutAtTheFirstPlaceOfTheExtension) {
    char dir[] = "";
    my_string log_dir;
    project("a.mnp.d/b");
    char path[] = "a.mnp.d/b.mnp";
    EXPECT_TRUE(create_log_dir(dir, path, log_dir));
    EXPECT_EQ(log_dir.view(), "a.res/");
}

TEST_F(Walking, MissingProjectLeavesTheWordErrorInTheControlDirectory) {
    char dir[] = "control_";
    char path[] = "absent.mnp";
    my_string log_dir;
    write_text(folder / "control_mnd_pro.txt", "an older report\n");
    EXPECT_FALSE(create_log_dir(dir, path, log_dir));
    EXPECT_EQ(read_text("control_mnd_pro.txt"), "error\n");
}

TEST(Seeds, AreWholeNumbersWithinTheRangeOfTheGenerator) {
    EXPECT_EQ(seed_from_text("1"), 1);
    EXPECT_EQ(seed_from_text("161803398"), 161803398);
    EXPECT_EQ(seed_from_text("-42"), 42);
    EXPECT_EQ(seed_from_text("+42"), 42);
    EXPECT_EQ(seed_from_text("000000000042"), 42);
    for (const char* bad : {"", "-", "+", "0", "-0", "161803399", "99999999999999999999", "1.0", "1 ", " 1",
                            "0x10", "--1", "one"})
        EXPECT_EQ(seed_from_text(bad), 0) << bad;
}

}  // namespace
