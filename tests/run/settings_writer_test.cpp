#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "run/settings.h"
#include "run/settings_table.h"
#include "support/text_files.h"

namespace {

using mnd::setting_keys;
using mnd::setting_text;
using mnd::SettingKey;
using mnd::settings;
using mnd_test::read_file;
using mnd_test::unique_path;

std::string written(settings& s) {
    const std::string path = unique_path("settings_writer");
    s.print_settings(path.c_str());
    const std::string text = read_file(path);
    std::remove(path.c_str());
    return text;
}

std::string default_file() {
    settings s;
    return written(s);
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

bool is_written(const SettingKey& key) {
    return key.section != mnd::kSectionReadOnly;
}

// The table of keys as users know it: name, default in the format of the file, in file order.
const char* const kDefaults[] = {
    "TaskNumber=0",
    "XMLOutput=1",
    "DeletionWeight=1.000000",
    "TransitionWeight=1.000000",
    "TranversionWeight=1.000000",
    "ComputeSumStatsWithinGroups=0",
    "InferHaplotypeDefinitionFromDistanceMatrix=0",
    "EliminateRedondHaplodefs=0",
    "AllowedLevelOfMissingData=0.050000",
    "GameticPhaseIsKnown=0",
    "KeepNullDistrib=0",
    "MakeHWExactTest=0",
    "HardyWeinbergTestType=0",
    "TypeOfTestHW=0",
    "MarkovChainStepsHW=1000000",
    "MarkovChainDememorisationStepsHW=100000",
    "PrecisionOnPValueHW=0.000000",
    "SignificanceLevelHW=2",
    "LinkageDisequilibriumTestType=0",
    "MakeExactTestLD=0",
    "MarkovChainDememorisationStepsLD=1000",
    "MarkovChainStepsLD=100000",
    "PrecisionOnPValueLD=0.000000",
    "SignificanceLevelLD=0.050000",
    "PrintFlagHistogramLD=0",
    "InitialCondEMLD=2",
    "ComputeDvalues=0",
    "ComputeStandardDiversityIndices=0",
    "ComputeAllAlleleFreqs=0",
    "DistanceMethod=0",
    "GammaAValue=0.000000",
    "ComputeTheta=0",
    "PrintHaplDistMat=0",
    "PrintPopDistMat=0",
    "PrintMinSpannNetworkPop=0",
    "MismatchDemogExp=0",
    "MismatchSpatialExp=0",
    "MismatchDistanceMethod=0",
    "MismatchGammaAValue=0.000000",
    "NumBootExpDem=100",
    "MismatchSpatialExpNumParams=0",
    "ComputeAllHaplotypesEM=0",
    "ComputeAllAllelesEM=0",
    "InitialConditionsEM=50",
    "MaximumNumOfIterationsEM=1000",
    "RecessiveAllelesEM=0",
    "CompactHaplotypeDataBaseEM=0",
    "NumBootstrapReplicatesEM=0",
    "NumInitCondBootstrapEM=10",
    "ComputeAllSubHaplotypesEM=0",
    "EMCheckPhenRedundancy=0",
    "EpsilonValue=1.000000e-07",
    "FrequencyThreshold=1.000000e-05",
    "EMEstimateInbreedingCoeff=0",
    "EMInbreedingFixedVal=0.000000",
    "EMUseZipper=0",
    "EMLociRandOrder=0",
    "EMNumZipRandOrders=0",
    "GibbsInferGamPhase=0",
    "GibbsBurnIn=100000",
    "GibbsSamplingInterval=500",
    "GibbsNumSamples=2000",
    "GibbsAlphaInitValue=0.010000",
    "GibbsEpsilonValue=0.010000",
    "GibbsGamma=0.000000",
    "GibbsHetSiteInfluenceZone=5",
    "GibbsPercentageOfRecSteps=0.000000",
    "GibbsOutputGamPhase=0",
    "HaplAMOVA=0",
    "LocByLocAMOVA=0",
    "PopSpecificFST=0",
    "PopSpecificFIS=0",
    "TestSignificanceAMOVA=0",
    "NumPermutationsAMOVA=1000",
    "ComputeConventionalFST=0",
    "IncludeIndividualLevel=0",
    "ComputeDistanceMatrixAMOVA=1",
    "DistanceMethodAMOVA=0",
    "GammaAValueAMOVA=0.000000",
    "PrintDistanceMatrix=0",
    "PrintMinSpannNetworkGlob=0",
    "TestSignificancePairewiseFST=0",
    "NumPermutationsFST=100",
    "ComputePairwiseFST=0",
    "ComputeDeltaMuSqr=0",
    "FSTSignifLevel=0.050000",
    "PrintFstVals=0",
    "PrintConcestryCoeff=0",
    "PrintSlatkinsDist=0",
    "PrintMissIntermatchs=0",
    "UnequalPopSizeDiv=0",
    "NumPermutPopDiff=100000",
    "NumDememoPopDiff=10000",
    "PrecProbPopDiff=0.000000",
    "PrintHistoPopDiff=1",
    "SignLevelPopDiff=0.050000",
    "DetectSelectedLoci=0",
    "UseHierarchicalIslandModel=0",
    "NumberOfGroupsForFDist2=10",
    "NumberOfDemesForFDist2=100",
    "NumberOfSimsForFDist2=20000",
    "UseSimFileForFDist2=0",
    "SimFileNameForFDist2=",
    "TargetHetLowBound=0.000000",
    "TargetHetHighBound=1.000000",
    "MinDafFreq=0.000000",
    "IterativeProcForFDist2=0",
    "EwensWattersonHomozygosityTest=0",
    "NumIterationsNeutralityTests=1000",
    "NumSimulFuTest=1000",
    "NumPermMantel=1000",
};

// A value that differs from the default and from that of the other keys, and that the file can
// hold: six decimals, or seven significant digits with an exponent.
void make_distinctive(settings& s, const SettingKey& key, int i) {
    std::visit(
        [&](auto field) {
            using Value = std::decay_t<decltype(s.*field)>;
            if constexpr (std::is_same_v<Value, mnd::my_string>) {
                s.*field = "sims of today.mnb";
            } else if constexpr (std::is_same_v<Value, bool>) {
                s.*field = true;
            } else if constexpr (std::is_same_v<Value, double>) {
                s.*field = (key.traits & mnd::kScientific) != 0 ? 1.234567e-09 * i : 0.012347 * i;
            } else {
                s.*field = static_cast<Value>(i % 3 == 0 ? -17 - i : 1000000 + i);
            }
        },
        key.field);
}

}  // namespace

TEST(SettingsWriter, WritesEveryKeyInOrderWithItsDefault) {
    std::vector<std::string> key_lines;
    for (const std::string& line : lines_of(default_file())) {
        if (!line.empty() && line[0] != '#' && line.find('=') != std::string::npos) key_lines.push_back(line);
    }
    EXPECT_EQ(key_lines, std::vector<std::string>(std::begin(kDefaults), std::end(kDefaults)));
}

TEST(SettingsWriter, BeginsWithTheWarningAndTheTaskNumber) {
    EXPECT_EQ(default_file().substr(0, default_file().find("#       2 :")),
              "\n\n             DO NOT EDIT THIS FILE BY HAND UNLESS YOU KNOW EXACTLY WHAT YOU"
              "\n               ARE DOING. ERRONEOUS COMPUTATIONS MAY RESULT AS A CONSEQUENCE !!!\n"
              "\n#Below are listed all parameter settings used for the choice of "
              "\n#MENDRAKE computations\n\n"
              "[Setting for Calculations]\n\n"
              "#--------------------------------------------------------------------\n"
              "#the sum of the task bits\n"
              "#of the computations to be done:\n"
              "#       1 : standard diversity indices\n");
}

TEST(SettingsWriter, HeadingAndKeyBlockHaveTheirShape) {
    const std::string dashes = "#--------------------------------------------------------------------\n";
    const std::string text = default_file();
    EXPECT_NE(text.find("\n\nTaskNumber=0\n\n" + dashes + "#GENERAL SETTINGS\n" + dashes +
                        "\n"
                        "#if the results are output into an XML or an HTML file format\n"
                        "#(1: XML, 0: HTML)\n"
                        "\n"
                        "XMLOutput=1\n"
                        "\n"
                        "\n"
                        "#the relative weight of deletions\n"),
              std::string::npos);
    EXPECT_NE(text.find(dashes + "#SETTINGS FOR DIVERSITY INDICES\n" + dashes + "\n#if standard"),
              std::string::npos);
}

TEST(SettingsWriter, HasAHeadingForEachOfTheTwelveSections) {
    std::vector<std::string> headings;
    const std::vector<std::string> lines = lines_of(default_file());
    for (std::size_t i = 1; i + 1 < lines.size(); ++i) {
        if (lines[i - 1].starts_with("#---") && lines[i + 1].starts_with("#---"))
            headings.push_back(lines[i]);
    }
    EXPECT_EQ(headings,
              (std::vector<std::string>{
                  "#GENERAL SETTINGS", "#SETTINGS FOR TEST OF HARDY-WEINBERG EQUILIBRIUM",
                  "#SETTINGS FOR TEST OF LINKAGE DISEQUILIBRIUM", "#SETTINGS FOR DIVERSITY INDICES",
                  "#SETTINGS FOR MISMATCH DISTRIBUTION", "#SETTINGS FOR HAPLOTYPE FREQUENCY ESTIMATION",
                  "#SETTINGS FOR AMOVA", "#SETTINGS FOR PAIRWISE DISTANCE COMPUTATIONS",
                  "#SETTINGS FOR POPULATION DIFFERENTIATION",
                  "#SETTINGS FOR DETECTION OF SELECTED LOCI FROM COMPARISON BETWEEN FST AND HETEROZYGOSITY",
                  "#SETTINGS FOR NEUTRALITY TESTS", "#SETTINGS FOR MANTEL TEST"}));
}

TEST(SettingsWriter, EveryTextLineIsACommentButTheTwoThatLackTheSign) {
    std::vector<std::string> unmarked;
    const std::vector<std::string> lines = lines_of(default_file());
    for (std::size_t i = 8; i < lines.size(); ++i) {  // behind the warning and "[Setting ..."
        const std::string& line = lines[i];
        if (!line.empty() && line[0] != '#' && line.find('=') == std::string::npos) unmarked.push_back(line);
    }
    EXPECT_EQ(unmarked, (std::vector<std::string>{"[Setting for Calculations]",
                                                  " for all loci at the same time, as for haplotypes",
                                                  "exact test of popualtion differentiation"}));
}

TEST(SettingsWriter, EveryKeysOwnLineIsItsFirstMatch) {
    settings s;
    int i = 0;
    for (const SettingKey& key : setting_keys())
        make_distinctive(s, key, ++i);
    const std::vector<std::string> lines = lines_of(written(s));
    for (const SettingKey& key : setting_keys()) {
        if (!is_written(key)) continue;
        const auto first = std::find_if(lines.begin(), lines.end(), [&](const std::string& line) {
            return line.find(key.name) != std::string::npos && line.find('=') != std::string::npos;
        });
        ASSERT_NE(first, lines.end()) << key.name;
        EXPECT_EQ(*first, std::string(key.name) + "=" + setting_text(s, key));
    }
}

TEST(SettingsWriter, OnlyOneCommentHoldsAKeyAndAnEqualSign) {
    std::vector<std::string> found;
    for (const std::string& line : lines_of(default_file())) {
        if (line.starts_with("#") && line.find('=') != std::string::npos) found.push_back(line);
    }
    EXPECT_EQ(found, (std::vector<std::string>{
                         "#how many random orders have to be considered assuming EMLociRandOrder=1"}));
}

TEST(SettingsWriter, ReadingBackGivesEveryFieldAgain) {
    settings s;
    int i = 0;
    for (const SettingKey& key : setting_keys())
        make_distinctive(s, key, ++i);
    s.PrecProbPopDiff = 0.0;  // the one key that is read as a whole number and written with decimals
    const std::string path = unique_path("settings_round_trip");
    s.print_settings(path.c_str());
    settings back;
    for (const SettingKey& key : setting_keys())
        assign_setting_number(back, key, 99.0);
    back.read_settings(path.c_str());
    for (const SettingKey& key : setting_keys()) {
        if (!is_written(key)) continue;
        EXPECT_EQ(setting_text(back, key), setting_text(s, key)) << key.name;
    }
    std::remove(path.c_str());
}

TEST(SettingsWriter, ReadingBackTheDefaultsGivesTheExactNumbers) {
    settings s;
    const std::string path = unique_path("settings_round_trip");
    s.print_settings(path.c_str());
    settings back;
    back.read_settings(path.c_str());
    for (const SettingKey& key : setting_keys()) {
        std::visit(
            [&](auto field) {
                if constexpr (std::is_same_v<std::decay_t<decltype(s.*field)>, mnd::my_string>) {
                    EXPECT_STREQ((back.*field).c_str(), (s.*field).c_str());
                } else {
                    EXPECT_EQ(back.*field, s.*field) << key.name;
                }
            },
            key.field);
    }
    EXPECT_EQ(back.EpsilonValue, 1e-07);
    EXPECT_EQ(back.FrequencyThreshold, 1e-05);
    EXPECT_EQ(back.AllowedLevelOfMissingData, 0.05);
    std::remove(path.c_str());
}

TEST(SettingsWriter, TruncatesAFileOfThatName) {
    settings s;
    const std::string path = unique_path("settings_truncate");
    mnd_test::write_file(path, std::string(100000, 'x'));
    s.print_settings(path.c_str());
    EXPECT_EQ(read_file(path), default_file());
    std::remove(path.c_str());
}

TEST(SettingsWriter, ProfileStringIsKeyEqualValue) {
    settings s;
    std::ostringstream out;
    s.aWritePrivateProfileString("TaskNumber", "12", out);
    EXPECT_EQ(out.str(), "TaskNumber=12\n");
}

TEST(SettingsDocument, NamesEveryKeyWithItsDefault) {
    const std::string text = read_file(std::string(MENDCORE_SOURCE_DIR) + "/docs/settings_file.md");
    ASSERT_FALSE(text.empty());
    settings s;
    for (const SettingKey& key : setting_keys()) {
        const std::string row = std::string("| `") + key.name + "` |";
        const std::size_t at = text.find(row);
        ASSERT_NE(at, std::string::npos) << key.name;
        EXPECT_EQ(text.find(row, at + 1), std::string::npos) << key.name << " stands twice";
        const std::string line = text.substr(at, text.find('\n', at) - at);
        const std::string value = setting_text(s, key);
        EXPECT_NE(line.find("| " + (value.empty() ? "empty" : value) + " |"), std::string::npos) << line;
    }
}
