#include "run/settings.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <limits>
#include <sstream>
#include <string>

#include "run/errors.h"
#include "run/process.h"
#include "run/settings_table.h"
#include "support/text_files.h"

namespace {

using mnd::settings;

// Text of one progress line, or nothing when none was shown.
std::string progress() {
    ::testing::internal::CaptureStdout();
    settings::print_message();
    return ::testing::internal::GetCapturedStdout();
}

class Progress : public ::testing::Test {
protected:
    void SetUp() override { reset(); }
    void TearDown() override { reset(); }
    static void reset() {
        mnd::silentMendrake = false;
        settings::global_work_to_do = settings::global_work_done = 0.0;
        settings::set_message("");
        settings::old_message[0] = '\0';
    }
};

std::string distance(int data_type, int method) {
    settings s;
    s.data_type = data_type;
    std::ostringstream out;
    s.print_distance_method(out, method);
    return out.str();
}

}  // namespace

TEST(Settings, BeginWithTheirDefaults) {
    const settings s;
    EXPECT_FALSE(s.stopped());
    EXPECT_EQ(s.data_type, 4);
    EXPECT_EQ(s.append_results, 1);
    EXPECT_EQ(s.has_em_task, 1);
    EXPECT_EQ(s.silent_simulation, 0);
    EXPECT_EQ(s.result_stream, nullptr);
    EXPECT_STREQ(s.ld_file_name.c_str(), "ld_dis.xl");
    EXPECT_EQ(s.EpsilonValue, 1e-07);
    EXPECT_EQ(s.TargetHetHighBound, 1.0);
    EXPECT_EQ(s.PrintHistoPopDiff, 1);
}

TEST(Settings, StepsOfTheLinkageTestDependOnTheGameticPhase) {
    settings s;
    s.genotypic_data = 1;
    s.gametic_phase = 0;
    s.reset_initial_values();
    EXPECT_EQ(s.MarkovChainStepsLD, 1000);
    s.gametic_phase = 1;
    s.reset_initial_values();
    EXPECT_EQ(s.MarkovChainStepsLD, 100000);
}

TEST(Settings, SecondNamesAreTheSameFields) {
    settings s;
    s.EMEstimHaplFreqs = 3;
    s.hw_precision = 0.25;
    s.ld_precision = 0.125;
    EXPECT_EQ(s.ComputeAllHaplotypesEM, 3);
    EXPECT_EQ(s.PrecisionOnPValueHW, 0.25);
    EXPECT_EQ(s.PrecisionOnPValueLD, 0.125);
}

TEST(Settings, AssignmentCopiesValuesNamesAndPointers) {
    settings a;
    int i = 0;
    for (const mnd::SettingKey& key : mnd::setting_keys())
        assign_setting_number(a, key, ++i);
    std::fstream stream;
    a.stop_computations = 1;
    a.result_stream = &stream;
    a.data_type = 2;
    a.genotypic_data = a.gametic_phase = 1;
    a.append_results = 0;
    a.has_em_task = 0;
    a.silent_simulation = 1;
    a.gibbs_window_size = 9;
    a.result_file_name = "r.htm";
    a.sigm_histo_f_name[3] = "r.vd";
    a.SimFileNameForFDist2 = "sims";
    settings b;
    b = a;
    for (const mnd::SettingKey& key : mnd::setting_keys()) {
        EXPECT_EQ(setting_text(b, key), setting_text(a, key)) << key.name;
    }
    EXPECT_TRUE(b.stopped());
    EXPECT_EQ(b.result_stream, &stream);
    EXPECT_EQ(b.data_type, 2);
    EXPECT_EQ(b.append_results, 0);
    EXPECT_EQ(b.has_em_task, 0);
    EXPECT_EQ(b.silent_simulation, 1);
    EXPECT_EQ(b.gibbs_window_size, 9);
    EXPECT_STREQ(b.result_file_name.c_str(), "r.htm");
    EXPECT_STREQ(b.sigm_histo_f_name[3].c_str(), "r.vd");
    b.EMEstimHaplFreqs = 777;  // the second name of the copy is a field of the copy
    EXPECT_EQ(b.ComputeAllHaplotypesEM, 777);
    EXPECT_NE(a.ComputeAllHaplotypesEM, 777);
}

TEST(Settings, AssignmentCopiesTheStateOfTheRun) {
    settings a, b;
    // Addresses of objects that are never looked into.
    a.current_samples = reinterpret_cast<mnd::Samples*>(&a);
    a.current_structure = reinterpret_cast<mnd::Structure*>(&a);
    a.current_matrix = reinterpret_cast<mnd::DistMat*>(&a);
    a.current_haplo_db = reinterpret_cast<mnd::Haplo_DB*>(&a);
    a.current_allele_db = reinterpret_cast<mnd::TAlleleDB*>(&a);
    a.print_em_results = false;
    a.hw_p_value = 0.25;
    a.ld_p_value = 0.125;
    a.gibbs_stream_names.emplace_back("phase.mnp");
    mnd::my_string settings::*const names[] = {
        &settings::ld_file_name,       &settings::result_directory, &settings::backup_file_name,
        &settings::project_directory,  &settings::main_file_name,   &settings::settings_file_name,
        &settings::program_directory,  &settings::result_file_copy, &settings::tree_file_name,
        &settings::js_file_name,       &settings::style_file_name,  &settings::tree_script_name,
        &settings::graphics_directory, &settings::run_time_stamp};
    int i = 0;
    for (const auto name : names)
        a.*name = ++i;
    b = a;
    EXPECT_EQ(b.current_samples, a.current_samples);
    EXPECT_EQ(b.current_structure, a.current_structure);
    EXPECT_EQ(b.current_matrix, a.current_matrix);
    EXPECT_EQ(b.current_haplo_db, a.current_haplo_db);
    EXPECT_EQ(b.current_allele_db, a.current_allele_db);
    EXPECT_FALSE(b.print_em_results);
    EXPECT_EQ(b.hw_p_value, 0.25);
    EXPECT_EQ(b.ld_p_value, 0.125);
    ASSERT_EQ(b.gibbs_stream_names.size(), 1U);
    EXPECT_EQ(b.gibbs_stream_names[0], "phase.mnp");
    for (const auto name : names)
        EXPECT_EQ(b.*name, a.*name);
}

TEST(Settings, ResetGivesTheStateOfTheRunItsDefaultsToo) {
    settings s;
    s.stop_computations = s.silent_simulation = 1;
    s.append_results = s.has_em_task = 0;
    s.ld_file_name = "other";
    s.TaskNumber = 3;
    s.reset_initial_values();
    EXPECT_FALSE(s.stopped());
    EXPECT_EQ(s.silent_simulation, 0);
    EXPECT_EQ(s.append_results, 1);
    EXPECT_EQ(s.has_em_task, 1);
    EXPECT_EQ(s.ld_file_name, "ld_dis.xl");
    EXPECT_EQ(s.TaskNumber, 0);
}

TEST(Settings, KeyTableNamesEachKeyOnce) {
    EXPECT_EQ(mnd::setting_keys().size(), 111U + 11U);
    for (const mnd::SettingKey& key : mnd::setting_keys())
        EXPECT_EQ(mnd::find_setting(key.name), &key);
    EXPECT_EQ(mnd::find_setting("Tasknumber"), nullptr);
}

TEST(Settings, KeyContainedInAnotherStandsBeforeIt) {
    const auto keys = mnd::setting_keys();
    std::string contained;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        bool inside_another = false;
        for (std::size_t j = 0; j < keys.size(); ++j) {
            if (i == j || std::strstr(keys[j].name, keys[i].name) == nullptr) continue;
            EXPECT_LT(i, j) << keys[i].name << " in " << keys[j].name;
            inside_another = true;
        }
        if (inside_another) contained += std::string(keys[i].name) + " ";
    }
    EXPECT_EQ(contained, "DistanceMethod GammaAValue MismatchSpatialExp EpsilonValue ");
}

TEST(DistanceNames, StandInTheOrderOfTheMethods) {
    const char* const names[] = {"Pairwise difference",
                                 "Jukes and Cantor",
                                 "Kimura 2P",
                                 "Proportion of difference",
                                 "Tajima and Nei",
                                 "Tamura",
                                 "Tamura and Nei",
                                 "No. of different alleles (FST)",
                                 "Sum of squared size difference (RST)"};
    for (int i = 0; i < mnd::kNumDistanceNames; ++i)
        EXPECT_STREQ(mnd::DistanceNames[i], names[i]);
}

TEST(DistanceNames, MethodIsNamedByTheDataType) {
    EXPECT_EQ(distance(0, 0), "Pairwise difference\n");
    EXPECT_EQ(distance(0, 6), "Tamura and Nei\n");
    EXPECT_EQ(distance(1, 0), "Pairwise difference\n");
    EXPECT_EQ(distance(1, 1), "Proportion of difference\n");
    EXPECT_EQ(distance(2, 0), "No. of different alleles (FST)\n");
    EXPECT_EQ(distance(2, 1), "Sum of squared size difference (RST)\n");
    EXPECT_EQ(distance(3, 0), "Pairwise differences\n");
    EXPECT_EQ(distance(3, 5), "Pairwise differences\n");
}

TEST(DistanceNames, NothingIsWrittenForOtherCombinations) {
    EXPECT_EQ(distance(0, 7), "");
    EXPECT_EQ(distance(0, -1), "");
    EXPECT_EQ(distance(1, 2), "");
    EXPECT_EQ(distance(2, 2), "");
    EXPECT_EQ(distance(4, 0), "");
}

TEST_F(Progress, WithoutAnEstimateShowsNoPercentage) {
    settings::set_message("Reading");
    settings::global_work_done = 5.0;
    EXPECT_EQ(progress(), "Reading\n");
}

TEST_F(Progress, ShowsTheWholePercentBeforeTheText) {
    settings::set_message("Permuting");
    settings::global_work_to_do = 3.0;
    settings::global_work_done = 2.0;
    EXPECT_EQ(progress(), "66% : Permuting\n");
    settings::global_work_done = 2.999;
    EXPECT_EQ(progress(), "99% : Permuting\n");
}

TEST_F(Progress, PercentageNeverExceedsOneHundred) {
    settings::set_message("x");
    settings::global_work_to_do = 1.0;
    settings::global_work_done = 250.0;
    EXPECT_EQ(progress(), "100% : x\n");
    settings::global_work_done = std::numeric_limits<double>::quiet_NaN();
    settings::old_message[0] = '\0';
    EXPECT_EQ(progress(), "100% : x\n");
}

TEST_F(Progress, LineRepeatsOnlyWhenItChanges) {
    settings::set_message("x");
    settings::global_work_to_do = 1000.0;
    settings::global_work_done = 10.0;
    EXPECT_EQ(progress(), "1% : x\n");
    settings::global_work_done = 19.0;
    EXPECT_EQ(progress(), "");
    settings::global_work_done = 20.0;
    EXPECT_EQ(progress(), "2% : x\n");
    EXPECT_STREQ(settings::old_message, "2% : x");
}

TEST_F(Progress, SilentRunShowsNothing) {
    settings::set_message("x");
    mnd::silentMendrake = true;
    EXPECT_EQ(progress(), "");
    EXPECT_STREQ(settings::old_message, "");
}

TEST_F(Progress, OverlongMessageIsCut) {
    settings::set_message(std::string(5000, 'm').c_str());
    settings::global_work_to_do = settings::global_work_done = 1.0;
    EXPECT_EQ(progress(), "100% : " + std::string(settings::kMessageSize - 1, 'm') + "\n");
}

TEST_F(Progress, InfoGoesToTheLog) {
    std::ostringstream log;
    std::ostream* const before = mnd::_AOS_;
    mnd::_AOS_ = &log;
    settings::print_info("Computing theta");
    mnd::_AOS_ = before;
    EXPECT_EQ(log.str(), "Computing theta\n");
    EXPECT_STREQ(settings::message, "Computing theta");
}

TEST(SettingsNames, NullDistributionsTakeTheNameOfTheResults) {
    settings s;
    s.result_file_name = "/data/p.res/p.htm";
    s.build_sigm_histo_f_name();
    EXPECT_STREQ(s.sigm_histo_f_name[0].c_str(), "/data/p.res/p.va");
    EXPECT_STREQ(s.sigm_histo_f_name[1].c_str(), "/data/p.res/p.vb");
    EXPECT_STREQ(s.sigm_histo_f_name[2].c_str(), "/data/p.res/p.vc");
    EXPECT_STREQ(s.sigm_histo_f_name[3].c_str(), "/data/p.res/p.vd");
}

TEST(SettingsNames, FilesOfAProjectLieInItsResultFolder) {
    settings s;
    s.XMLOutput = 0;
    s.buildFilenamesFromCurrentProjectName("/data/mice.mnp");
    EXPECT_STREQ(settings::input_file, "/data/mice.mnp");
    EXPECT_STREQ(s.project_directory.c_str(), "/data/");
    EXPECT_STREQ(s.result_directory.c_str(), "/data/mice.res/");
    EXPECT_STREQ(s.result_file_name.c_str(), "/data/mice.res/mice.htm");
    EXPECT_STREQ(s.result_file_copy.c_str(), "/data/mice.res/mice.htm");
    EXPECT_STREQ(s.tree_file_name.c_str(), "/data/mice.res/mice_tree.htm");
    EXPECT_STREQ(s.main_file_name.c_str(), "/data/mice.res/mice_main.htm");
    EXPECT_STREQ(s.js_file_name.c_str(), "/data/mice.res/mice.js");
    EXPECT_STREQ(s.graphics_directory.c_str(), "/data/mice.res/Graphics/");
    s.XMLOutput = 1;
    s.buildFilenamesFromCurrentProjectName("mice.mnp");
    EXPECT_STREQ(s.project_directory.c_str(), "");
    EXPECT_STREQ(s.result_file_name.c_str(), "mice.res/mice.xml");
    EXPECT_STREQ(s.result_file_copy.c_str(), "mice.res/mice.xml");
}

TEST(SettingsNames, OverlongProjectNameIsCut) {
    settings s;
    s.buildFilenamesFromCurrentProjectName(std::string(450, 'p').c_str());
    EXPECT_EQ(std::strlen(settings::input_file), 400U);
    settings::input_file[0] = '\0';
}
