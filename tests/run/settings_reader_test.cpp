#include "run/settings_reader.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "run/settings.h"
#include "run/settings_table.h"
#include "support/text_files.h"

namespace {

using mnd::settings;
using mnd_test::unique_path;
using mnd_test::write_file;

// Settings as read from a file of that text.
class SettingsReader : public ::testing::Test {
protected:
    void TearDown() override { std::remove(path_.c_str()); }
    void read(settings& s, const std::string& text) {
        write_file(path_, text);
        s.read_settings(path_.c_str());
    }
    // Value of a key by the single look-up; "(none)" when it has none.
    std::string look_up(const std::string& text, const char* key, int size = 100) {
        write_file(path_, text);
        settings s;
        std::string buffer(static_cast<std::size_t>(size) + 1, '#');
        const int found =
            s.GetPrivateProfileString("section", key, "default", buffer.data(), size, path_.c_str());
        EXPECT_EQ(buffer[static_cast<std::size_t>(size)], '#') << "wrote behind the buffer";
        if (found == 0) {
            EXPECT_EQ(buffer[0], '\0');
        }
        return found != 0 ? buffer.c_str() : "(none)";
    }
    std::string path_ = unique_path("settings_reader");
};

}  // namespace

TEST_F(SettingsReader, ValueIsTheTextBehindTheFirstEqualSign) {
    EXPECT_EQ(look_up("TaskNumber=513\n", "TaskNumber"), "513");
    EXPECT_EQ(look_up("TaskNumber=5=13", "TaskNumber"), "5=13");
    EXPECT_EQ(look_up("no sign TaskNumber\nTaskNumber = 7\n", "TaskNumber"), " 7");
}

TEST_F(SettingsReader, KeyMayStandAnywhereInALineEvenInAComment) {
    EXPECT_EQ(look_up("#if GammaAValue=3 is wanted\nGammaAValue=2\n", "GammaAValue"), "3 is wanted");
    EXPECT_EQ(look_up("x=TaskNumber\n", "TaskNumber"), "TaskNumber");
}

TEST_F(SettingsReader, MissingFileAndMissingKeyGiveTheEmptyText) {
    EXPECT_EQ(look_up("Other=1\n", "TaskNumber"), "(none)");
    settings s;
    char buffer[10] = "junk";
    EXPECT_EQ(s.GetPrivateProfileString("", "TaskNumber", "", buffer, 10, unique_path("absent").c_str()), 0);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(s.GetPrivateProfileSection(), 1);
}

TEST_F(SettingsReader, EmptyValueLetsTheSearchGoOn) {
    EXPECT_EQ(look_up("TaskNumber=\nTaskNumber=4\n", "TaskNumber"), "4");
    EXPECT_EQ(look_up("TaskNumber=\r\nTaskNumber=4\r\n", "TaskNumber"), "4");
    EXPECT_EQ(look_up("TaskNumber=\n", "TaskNumber"), "(none)");
}

TEST_F(SettingsReader, ZeroByteEndsItsLine) {
    using namespace std::string_literals;
    EXPECT_EQ(look_up("TaskNumber=\0005\nTaskNumber=6\n"s, "TaskNumber"), "6");
    EXPECT_EQ(look_up("x\0TaskNumber=5\nTaskNumber=7\0006\n"s, "TaskNumber"), "7");
}

TEST_F(SettingsReader, LimitCountsFromTheStartOfTheLine) {
    const std::string path_of_90(90, 'p');
    // "SimFileNameForFDist2=" has 21 characters; 99 are kept, hence 78 of the value.
    EXPECT_EQ(look_up("SimFileNameForFDist2=" + path_of_90 + "\n", "SimFileNameForFDist2"),
              std::string(78, 'p'));
    EXPECT_EQ(look_up("SimFileNameForFDist2=" + std::string(78, 'q') + "\n", "SimFileNameForFDist2"),
              std::string(78, 'q'));
    EXPECT_EQ(look_up("TaskNumber=12345\n", "TaskNumber", 14), "12");
}

TEST_F(SettingsReader, ValueThatBeginsBehindTheLimitIsLost) {
    EXPECT_EQ(look_up(std::string(98, ' ') + "=5 TaskNumber\nTaskNumber=6\n", "TaskNumber"), "6");
    EXPECT_EQ(look_up(std::string(97, ' ') + "=5 TaskNumber\n", "TaskNumber"), "5");
    EXPECT_EQ(look_up(std::string(300, ' ') + "TaskNumber=5\n", "TaskNumber"), "(none)");
}

TEST_F(SettingsReader, BufferOfNoRoomIsLeftAlone) {
    settings s;
    char c = 'x';
    EXPECT_EQ(s.GetPrivateProfileString("", "TaskNumber", "", &c, 0, path_.c_str()), 0);
    EXPECT_EQ(c, 'x');
    write_file(path_, "TaskNumber=1\n");
    EXPECT_EQ(s.GetPrivateProfileString("", "TaskNumber", "", &c, 1, path_.c_str()), 0);
    EXPECT_EQ(c, '\0');
}

TEST_F(SettingsReader, ReadsEveryKindOfField) {
    settings s;
    read(s,
         "TaskNumber=66049\nXMLOutput=1\nDeletionWeight=2.500000\nComputeAllAlleleFreqs=2\n"
         "PrintHaplDistMat=1\nEpsilonValue=1.000000e-09\nSimFileNameForFDist2=my sims.txt\n"
         "GibbsHetSiteInfluenceZone=-1\n");
    EXPECT_EQ(s.TaskNumber, 66049);
    EXPECT_EQ(s.XMLOutput, 1);
    EXPECT_EQ(s.DeletionWeight, 2.5);
    EXPECT_TRUE(s.ComputeAllAlleleFreqs);
    EXPECT_EQ(s.PrintHaplDistMat, 1);
    EXPECT_EQ(s.EpsilonValue, 1e-09);
    EXPECT_STREQ(s.SimFileNameForFDist2.c_str(), "my sims.txt");
    EXPECT_EQ(s.GibbsHetSiteInfluenceZone, -1);
}

TEST_F(SettingsReader, DosLineEndsDoNotTouchTheNumbers) {
    settings s;
    read(s, "SignificanceLevelLD=0.05\r\nDeletionWeight=1.000000\r\nNumPermMantel=500\r\n");
    EXPECT_EQ(s.SignificanceLevelLD, 0.05);
    EXPECT_EQ(s.DeletionWeight, 1.0);
    EXPECT_EQ(s.NumPermMantel, 500);
}

TEST_F(SettingsReader, MissingFileClearsTheUnguardedKeysAndKeepsTheOthers) {
    settings s;
    s.TaskNumber = 3;
    s.SimFileNameForFDist2 = "old";
    s.GibbsNumSamples = 77;
    s.GibbsGamma = 0.5;
    s.MismatchDemogExp = true;
    s.append_results = 0;
    s.read_settings(unique_path("absent").c_str());
    for (const mnd::SettingKey& key : mnd::setting_keys()) {
        if ((key.traits & mnd::kKeptWhenAbsent) != 0) continue;
        const std::string text = mnd::setting_text(s, key);
        EXPECT_TRUE(text == "0" || text == "0.000000" || text == "0.000000e+00" || text.empty())
            << key.name << " is " << text;
    }
    EXPECT_EQ(s.GibbsNumSamples, 77);
    EXPECT_EQ(s.GibbsGamma, 0.5);
    EXPECT_EQ(s.append_results, 0);
}

TEST_F(SettingsReader, SixteenKeysAreKeptWhenAbsent) {
    std::string names;
    for (const mnd::SettingKey& key : mnd::setting_keys()) {
        if ((key.traits & mnd::kKeptWhenAbsent) != 0) names += std::string(key.name) + " ";
    }
    EXPECT_EQ(
        names,
        "EMCheckPhenRedundancy EMEstimateInbreedingCoeff EMInbreedingFixedVal EMUseZipper EMLociRandOrder "
        "EMNumZipRandOrders GibbsInferGamPhase GibbsBurnIn GibbsSamplingInterval GibbsNumSamples "
        "GibbsAlphaInitValue GibbsEpsilonValue GibbsGamma GibbsHetSiteInfluenceZone "
        "GibbsPercentageOfRecSteps GibbsOutputGamPhase ");
}

TEST_F(SettingsReader, GuardedKeyIsReplacedWhenPresent) {
    settings s;
    s.GibbsNumSamples = 77;
    read(s, "GibbsNumSamples=0\n");
    EXPECT_EQ(s.GibbsNumSamples, 0);
}

TEST_F(SettingsReader, MissingDistanceMethodTakesTheLineOfALongerKey) {
    settings s;
    read(s, "DistanceMethodAMOVA=4\nMismatchDistanceMethod=2\n");
    EXPECT_EQ(s.DistanceMethod, 4);
    read(s, "MismatchDistanceMethod=2\nDistanceMethodAMOVA=4\n");
    EXPECT_EQ(s.DistanceMethod, 2);
    EXPECT_EQ(s.DistanceMethodAMOVA, 4);
}

TEST_F(SettingsReader, SignificanceLevelHWIsAWholeNumber) {
    settings s;
    read(s, "SignificanceLevelHW=2\n");
    EXPECT_EQ(s.SignificanceLevelHW, 2);
    // Its comment speaks of a P-value, but a level below 1 is lost.
    read(s, "SignificanceLevelHW=0.05\n");
    EXPECT_EQ(s.SignificanceLevelHW, 0);
}

TEST_F(SettingsReader, PrecisionOfDifferentiationIsReadAsAWholeNumber) {
    settings s;
    read(s, "PrecProbPopDiff=1\n");
    EXPECT_EQ(s.PrecProbPopDiff, 1.0);
    read(s, "PrecProbPopDiff=0.01\n");
    EXPECT_EQ(s.PrecProbPopDiff, 1.0);
    read(s, "PrecProbPopDiff=0.000000\n");
    EXPECT_EQ(s.PrecProbPopDiff, 0.0);
}

TEST_F(SettingsReader, TwoNamesOfOneFieldTheLaterLineWins) {
    settings s;
    read(s, "ComputeAllHaplotypesEM=1\n");
    EXPECT_EQ(s.EMEstimHaplFreqs, 1);
    read(s, "EMEstimHaplFreqs=1\n");
    EXPECT_EQ(s.ComputeAllHaplotypesEM, 1);
    read(s, "");
    EXPECT_EQ(s.ComputeAllHaplotypesEM, 0);
    read(s, "ComputeAllHaplotypesEM=1\nEMEstimHaplFreqs=0\n");
    EXPECT_EQ(s.ComputeAllHaplotypesEM, 0);
    read(s, "EMEstimHaplFreqs=0\nComputeAllHaplotypesEM=1\n");
    EXPECT_EQ(s.ComputeAllHaplotypesEM, 1);
}

TEST_F(SettingsReader, EmTaskIsSetByAnyOfThreeKeys) {
    settings s;
    read(s, "");
    EXPECT_EQ(s.has_em_task, 0);
    for (const char* key : {"ComputeAllAllelesEM", "ComputeAllHaplotypesEM", "GibbsInferGamPhase"}) {
        s.GibbsInferGamPhase = 0;
        read(s, std::string(key) + "=1\n");
        EXPECT_EQ(s.has_em_task, 1) << key;
    }
}

TEST_F(SettingsReader, KeysThatAreOnlyReadFillTheirFields) {
    settings s;
    read(s,
         "Divergencetime=1\nIsFontKnown=2\nNbFrontSegments=3\nSegmentLength=4\nNumOfGroups=5\nDiffusionMode="
         "6\n"
         "NbFrontPerm=7\nEMWinSize=8\nEMInbreedingEachLocus=9\nEMCompGamPhaseForAllInitConds=10\n");
    EXPECT_EQ(s.Divergencetime, 1);
    EXPECT_EQ(s.IsFontKnown, 2);
    EXPECT_EQ(s.NbFrontSegments, 3);
    EXPECT_EQ(s.SegmentLength, 4);
    EXPECT_EQ(s.NumOfGroups, 5);
    EXPECT_EQ(s.DiffusionMode, 6);
    EXPECT_EQ(s.NbFrontPerm, 7);
    EXPECT_EQ(s.EMWinSize, 8);
    EXPECT_EQ(s.EMInbreedingEachLocus, 9);
    EXPECT_EQ(s.EMCompGamPhaseForAllInitConds, 10);
}

TEST_F(SettingsReader, JunkIsReadWithoutHarm) {
    settings s;
    std::string junk;
    for (int i = 0; i < 5000; ++i)
        junk += static_cast<char>(i * 37 % 256);
    read(s, junk + "\nTaskNumber=" + std::string(1000, '9') + "\nGammaAValue=.e-.=" + junk);
    read(s, std::string(200000, '=') + "TaskNumber\n" + std::string(300, '\0') + "=TaskNumber");
    SUCCEED();
}

TEST_F(SettingsReader, NumbersReadAsOthersAreNamed) {
    settings s;
    read(s,
         "EpsilonValue=1e-7\nFrequencyThreshold= 1.0e-05 \nGammaAValue=-0.5\nEMWinSize=3\n"
         "NumPermutationsAMOVA=10.5\nInitialConditionsEM=many\nTaskNumber=513\n");
    const std::vector<mnd::MisreadSetting> misread = mnd::misread_settings(s, path_.c_str());
    std::string names;
    for (const mnd::MisreadSetting& setting : misread)
        names += std::string(setting.key) + '=' + setting.text + ';';
    EXPECT_NE(names.find("EpsilonValue=1e-7;"), std::string::npos) << names;
    EXPECT_NE(names.find("InitialConditionsEM=many;"), std::string::npos) << names;
    EXPECT_NE(names.find("NumPermutationsAMOVA=10.5;"), std::string::npos) << names;
    EXPECT_EQ(names.find("FrequencyThreshold"), std::string::npos) << names;
    EXPECT_EQ(names.find("EMWinSize"), std::string::npos) << names;
    EXPECT_EQ(names.find("TaskNumber"), std::string::npos) << names;
    ASSERT_FALSE(misread.empty());
    for (const mnd::MisreadSetting& setting : misread) {
        if (std::string(setting.key) == "EpsilonValue") {
            EXPECT_EQ(setting.value, s.EpsilonValue);
        }
    }
}

TEST_F(SettingsReader, WhatTheWriterWritesIsReadAsItself) {
    settings written;
    written.print_settings(path_.c_str());
    settings s;
    s.read_settings(path_.c_str());
    for (const mnd::MisreadSetting& setting : mnd::misread_settings(s, path_.c_str()))
        ADD_FAILURE() << setting.key << '=' << setting.text << " is read as " << setting.value;
}
