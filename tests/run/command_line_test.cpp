#include "run/command_line.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "run/process.h"
#include "support/temp_folder.h"

namespace mnd {
namespace {

using mnd_test::contains;
using mnd_test::read_text;
using mnd_test::write_text;

CommandLine classify(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "mendcore");
    return classify_arguments(static_cast<int>(arguments.size()), arguments.data());
}

TEST(CommandLine, TakesProjectAndSettingsInAnyOrderAsTyped) {
    const CommandLine asked = classify({"Dir/My.MNS", "Data/Mice.MNP"});
    EXPECT_EQ(asked.project, "Data/Mice.MNP");
    EXPECT_EQ(asked.settings, "Dir/My.MNS");
    EXPECT_FALSE(asked.help);
}

TEST(CommandLine, LaterProjectReplacesAnEarlierOne) {
    EXPECT_EQ(classify({"a.mnp", "b.mnp"}).project, "b.mnp");
    EXPECT_EQ(classify({"a.mns", "b.mns"}).settings, "b.mns");
}

TEST(CommandLine, HelpInsideAPathCountsAsHelp) {
    const CommandLine asked = classify({"/home/x-helpers/p.mnp"});
    EXPECT_TRUE(asked.help);
    EXPECT_EQ(asked.project, "");
}

TEST(CommandLine, SilentIsTestedBeforeHelpAndProject) {
    const CommandLine asked = classify({"RUN_SILENT-help.mnp"});
    EXPECT_EQ(asked.silent, 1);
    EXPECT_FALSE(asked.help);
    EXPECT_EQ(asked.project, "");
}

TEST(CommandLine, ProjectExtensionIsTestedBeforeSettings) {
    const CommandLine asked = classify({"x.mnp.mns"});
    EXPECT_EQ(asked.project, "x.mnp.mns");
    EXPECT_EQ(asked.settings, "");
}

TEST(CommandLine, IgnoresOtherArguments) {
    const CommandLine asked = classify({"--verbose", "x.txt"});
    EXPECT_FALSE(asked.help || asked.silent != 0);
    EXPECT_TRUE(asked.project.empty() && asked.settings.empty());
}

TEST(ShowHelp, PrintsTheUsageText) {
    ::testing::internal::CaptureStdout();
    showHelp();
    const std::string text = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(text.rfind("\n                             MENDCORE v 3.5.1.3 (17.09.11)\n"
                         "                             =============================\n\n"
                         "  MENDCORE is the console version of Mendrake\n\n  Usage:\n  ------\n",
                         0),
              0u);
    EXPECT_TRUE(contains(text, "\n  within quotes if it contains whitepaces\n\n"));
    const std::string tail = "file to use (mnd_run.mns) or <project name>.mns.\n\n";
    EXPECT_EQ(text.substr(text.size() - tail.size()), tail);
}

class ControlFiles : public mnd_test::InTempFolder {};

TEST_F(ControlFiles, IniHasTwentyTwoLinesAndAnEmptyOne) {
    make_mendrake_ini(my_string("bin\\mendcore"));
    const std::string here = std::filesystem::current_path().string();
    std::string expected =
        "false\ntrue\nfalse\nfalse\nWeb browser\nText editor\nbin/mendcore\nRcmd\n" + here + "\n";
    for (int i = 0; i < 13; ++i)
        expected += "false\n";
    expected += "\n";
    EXPECT_EQ(read_text("mendrake.ini"), expected);
}

TEST_F(ControlFiles, RunFileNamesTheProjectAsGiven) {
    write_text(folder / "mnd_run.txt", std::string(1000, 'x'));
    make_mnd_run_txt(my_string("sub dir/mice.mnp"));
    const std::string here = std::filesystem::current_path().string();
    EXPECT_EQ(read_text("mnd_run.txt"), here + "\nuse_interf_settings\nsub dir/mice.mnp\n0\n0\nend\n");
}

class Program : public mnd_test::InTempFolder {
protected:
    std::string run(std::vector<const char*> arguments) {
        arguments.insert(arguments.begin(), "mendcore");
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        EXPECT_EQ(run_command_line(static_cast<int>(arguments.size()), arguments.data()), 0);
        errors = ::testing::internal::GetCapturedStderr();
        return ::testing::internal::GetCapturedStdout();
    }
    void TearDown() override {
        silentMendrake = false;
        InTempFolder::TearDown();
    }
    std::string errors;
};

TEST_F(Program, WithoutRunFileSaysSoAndShowsHelp) {
    const std::string out = run({});
    EXPECT_EQ(out.rfind("The necessary file 'mnd_run.txt' does not exist, aborting mendcore\n\n", 0), 0u);
    EXPECT_TRUE(contains(out, "MENDCORE v 3.5.1.3"));
}

TEST_F(Program, MissingProjectOfTheCommandLineStops) {
    const std::string out = run({"absent.mnp"});
    EXPECT_EQ(out.rfind("Project file 'absent.mnp' does not exist, aborting mendcore\n\n", 0), 0u);
    EXPECT_FALSE(contains(out, "terminated gracefully"));
}

TEST_F(Program, MissingProjectOfTheRunFileStops) {
    write_text(folder / "mnd_run.txt", "\nexplore\nabsent.mnp\n0\n0\nend\n");
    const std::string out = run({});
    EXPECT_EQ(
        out.rfind("Project file 'absent.mnp' listed in mnd_run.txt does not exist, aborting mendcore\n\n", 0),
        0u);
}

TEST_F(Program, AnyFirstLineWithTheExtensionIsTakenForTheProject) {
    // A folder called x.mnp_data stands on line 1; it is cut at the first ".mnp_data".
    write_text(folder / "mnd_run.txt", "x.mnp_data\nexplore\nabsent.mnp\n0\n0\nend\n");
    EXPECT_EQ(run({}).rfind("Project file 'x.mnp' listed in mnd_run.txt does not exist", 0), 0u);
}

TEST_F(Program, RunFileWithoutProjectGoesThrough) {
    write_text(folder / "mnd_run.txt", "\nuse_interf_settings\nend\n");
    EXPECT_EQ(run({}), "Mendcore terminated gracefully\n");
    EXPECT_TRUE(std::filesystem::exists("mendrake.ini"));
}

TEST_F(Program, MissingSettingsOfTheCommandLineStops) {
    write_text(folder / "p.mnp", "[Profile]\n");
    const std::string out = run({"p.mnp", "absent.mns"});
    EXPECT_EQ(out.rfind("The setting file 'absent.mns' does not exist, aborting mendcore\n\n", 0), 0u);
}

TEST_F(Program, SettingsAreCopiedOverTheDefaultFile) {
    write_text(folder / "p.mnp", "[Profile]\n");
    write_text(folder / "mine.mns", "TaskNumber=0\r\nXMLOutput=0\n");
    write_text(folder / "mnd_run.mns", "TaskNumber=3\n");
    run({"p.mnp", "mine.mns"});
    EXPECT_EQ(read_text("mnd_run.mns"), "TaskNumber=0\r\nXMLOutput=0\n");
    EXPECT_TRUE(contains(read_text("mnd_run.txt"), "\np.mnp\n0\n0\nend\n"));
}

TEST_F(Program, SettingsUnderAnotherNameOfTheDefaultFileAreNotEmptied) {
    write_text(folder / "p.mnp", "[Profile]\n");
    write_text(folder / "mnd_run.mns", "TaskNumber=0\n");
    run({"p.mnp", "./mnd_run.mns"});
    EXPECT_EQ(read_text("mnd_run.mns"), "TaskNumber=0\n");
}

TEST_F(Program, SilentSaysSo) {
    write_text(folder / "mnd_run.txt", "\nuse_interf_settings\nend\n");
    EXPECT_EQ(run({"run_silent"}), "Running mendcore in silent mode ...\nMendcore terminated gracefully\n");
}

TEST_F(Program, HelpPrintsOnlyTheUsageText) {
    write_text(folder / "mnd_run.txt", "\nuse_interf_settings\nend\n");
    EXPECT_FALSE(contains(run({"-help"}), "terminated gracefully"));
}

}  // namespace
}  // namespace mnd
