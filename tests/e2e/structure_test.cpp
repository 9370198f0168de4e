// Comparisons of samples as a user starts them: real projects in, documents out.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "support/project_runs.h"
#include "support/temp_folder.h"
#include "support/text_files.h"

namespace {

using mnd_test::contains;
using mnd_test::count_of;
using mnd_test::read_text;
using mnd_test::write_text;

namespace fs = std::filesystem;

class StructureRuns : public mnd_test::ProjectRuns {
protected:
    // Analyses a project of the test data. The lines of settings come before those of the rest.
    std::string analyse(const std::string& project, const std::string& settings,
                        const char* ending = ".htm") {
        return run_project(project,
                           settings +
                               "MarkovChainDememorisationStepsLD=1000\n"
                               "MarkovChainDememorisationStepsHW=1000\nFSTSignifLevel=0.05\n",
                           ending, "run_silent");
    }
    static std::string part_from(const std::string& text, const std::string& begin) {
        const std::size_t at = text.find(begin);
        return at == std::string::npos ? "" : text.substr(at);
    }
    static std::string part_between(const std::string& text, const std::string& begin,
                                    const std::string& end) {
        const std::string rest = part_from(text, begin);
        return rest.substr(0, rest.find(end));
    }
};

constexpr char kAmova[] = "TaskNumber=512\nHaplAMOVA=1\nNumPermutationsAMOVA=0\n";

// Sums of squares from all pairs of the 100 gene copies, over the 97 of 125 sites with at most 5 % of
// missing data, by a program of a few lines apart from this one.
TEST_F(StructureRuns, VarianceAmongSequencesOfTwoGroups) {
    const std::string document =
        analyse("influenza_small", std::string(kAmova) + "ComputeDistanceMatrixAMOVA=1\n");
    EXPECT_TRUE(contains(document, "Number of usable loci for distance computation : 97\n"));
    EXPECT_TRUE(contains(document, "\n groups           1        297.160        5.21236 Va"));
    EXPECT_TRUE(contains(document, "\n groups           3        140.900        2.13620 Vb"));
    EXPECT_TRUE(contains(document, "\n populations     95        403.050        4.24263 Vc"));
    EXPECT_TRUE(contains(document, "\n Total           99        841.110       11.59119\n"));
    EXPECT_TRUE(contains(document,
                         "      FSC :      0.33489\n      FST :      0.63398\n"
                         "      FCT :      0.44968\n"));
    EXPECT_FALSE(contains(document, "Not computed"));
}

constexpr char kFrequencyTable[] =
    " Among\n groups           1        359.073        4.02015 Va            35.75\n"
    " Among\n populations\n within\n groups           3        208.867        2.15167 Vb            19.14\n"
    " Within\n populations    145        735.467        5.07218 Vc            45.11\n";

TEST_F(StructureRuns, VarianceUnderTheMatrixOfTheProject) {
    const std::string document = analyse("influenza_frequency", kAmova);
    EXPECT_TRUE(contains(document, kFrequencyTable));
    EXPECT_TRUE(contains(document,
                         "      FSC :      0.29786\n      FST :      0.54890\n"
                         "      FCT :      0.35754\n"));
    EXPECT_FALSE(contains(document, "usable loci"));
}

// The same matrix in a file of its own, with its labels on a line and an indent.
TEST_F(StructureRuns, MatrixInAFileOfItsOwnGivesTheSame) {
    std::istringstream project(read_text(fs::path(MENDCORE_TEST_DATA) / "influenza_frequency.mnp"));
    std::string line, text, labels, rows;
    bool in_matrix = false;
    while (std::getline(project, line)) {
        if (contains(line, "LabelPosition")) line = "LabelPosition=LINE";
        if (in_matrix && contains(line, "}")) {
            in_matrix = false;
        } else if (in_matrix) {
            std::istringstream row(line);
            std::string label, distance;
            row >> label;
            labels += "  " + label;
            rows += '\t';
            while (row >> distance)
                rows += distance + "   ";
            rows += "# a row\n";
        } else if (contains(line, "MatrixData")) {
            in_matrix = true;
            text += "MatrixData= EXTERN \"matrix.txt\"\n";
        } else {
            text += line + '\n';
        }
    }
    write_text(folder / "extern.mnp", text);
    write_text(folder / "matrix.txt", labels + '\n' + rows);
    EXPECT_TRUE(contains(analyse("extern", kAmova), kFrequencyTable));
    EXPECT_TRUE(contains(log_of("extern"), "\tReading Distance Matrix in external file \"matrix.txt\""));
}

TEST_F(StructureRuns, ConventionalStatisticsOfEachDataType) {
    for (const char* project : {"influenza_small", "influenza_frequency", "binary_rflp", "known_phase_dna"}) {
        const std::string document = analyse(
            project, std::string(kAmova) + "ComputeConventionalFST=1\nComputeDistanceMatrixAMOVA=1\n");
        EXPECT_TRUE(contains(document, "\nComputing conventional F-Statistics from haplotype frequencies\n"))
            << project;
        EXPECT_EQ(count_of(document, "AMOVA design and results"), 1) << project;
        EXPECT_FALSE(contains(log_of(project), "#[ERROR")) << project;
    }
}

TEST_F(StructureRuns, EveryDataTypeAndDistanceRunsToItsEnd) {
    for (const char* project :
         {"influenza_small", "binary_rflp", "cats_microsat", "hla_standard", "known_phase_dna"}) {
        for (const char* method : {"0", "1"}) {
            for (const char* level : {"0", "1"}) {
                const std::string document =
                    analyse(project,
                            std::string("TaskNumber=1536\nHaplAMOVA=1\nNumPermutationsAMOVA=20\nXMLOutput=1\n"
                                        "ComputeDistanceMatrixAMOVA=1\nComputePairwiseFST=1\n"
                                        "NumPermutationsFST=20\nPrintDistanceMatrix=1\n"
                                        "PrintMinSpannNetworkGlob=1\nPopSpecificFST=1\nPopSpecificFIS=1\n"
                                        "DistanceMethodAMOVA=") +
                                method + "\nIncludeIndividualLevel=" + level + "\n",
                            ".xml");
                EXPECT_TRUE(is_well_formed()) << project;
                EXPECT_EQ(count_of(document, "AMOVA design and results"), 1) << project;
                EXPECT_EQ(count_of(document, "== Comparisons of pairs of population samples"), 1) << project;
                EXPECT_FALSE(contains(document, "nan")) << project;
                EXPECT_FALSE(contains(log_of(project), "#[ERROR")) << project;
                EXPECT_TRUE(contains(log_of(project), "Successful run of")) << project;
            }
        }
    }
}

TEST_F(StructureRuns, TestsRepeatUnderTheSameSeed) {
    const std::string settings =
        "TaskNumber=512\nHaplAMOVA=1\nNumPermutationsAMOVA=100\nComputeDistanceMatrixAMOVA=1\n";
    const auto results = [&] {
        return mnd_test::without_anchors(
            part_between(analyse("influenza_small", settings), "AMOVA ANALYSIS", "END OF RUN"));
    };
    const std::string first = results();
    EXPECT_TRUE(contains(first, "Significance tests ("));
    EXPECT_EQ(results(), first);
}

TEST_F(StructureRuns, GroupPassPoolsTheGroupsAndLeavesTheSamplesAsTheyAre) {
    const std::string heading = "== ANALYSES AT THE INTRA-POPULATION LEVEL";
    for (const char* project : {"influenza_small", "cats_microsat", "known_phase_dna"}) {
        const std::string settings =
            "TaskNumber=1537\nHaplAMOVA=1\nNumPermutationsAMOVA=0\nNumPermutationsFST=0\n"
            "ComputeDistanceMatrixAMOVA=1\nComputePairwiseFST=1\n";
        const std::string plain = analyse(project, settings);
        const std::string both = analyse(project, settings + "ComputeSumStatsWithinGroups=1\n");
        EXPECT_FALSE(contains(plain, "INTRA-GROUP")) << project;
        const std::string groups = part_between(both, "== ANALYSES AT THE INTRA-GROUP LEVEL", heading);
        EXPECT_TRUE(contains(groups, "== Sample : \tGroup 1")) << project;
        EXPECT_TRUE(contains(groups, "== Sample : \tGroup 2")) << project;
        EXPECT_TRUE(contains(groups, "_gr_amova")) << project;
        EXPECT_EQ(count_of(groups, "AMOVA design and results"), 1) << project;
        const auto without_times = [](const std::string& text) {
            return mnd_test::without_anchors(text.substr(0, text.find("END OF RUN")));
        };
        EXPECT_EQ(without_times(part_from(both, heading)), without_times(part_from(plain, heading)))
            << project;
    }
}

// 14, 17, 19, 19 and 16 haplotypes stand in the samples of the project file.
TEST_F(StructureRuns, NetworkOfEachSample) {
    const std::string document = analyse("influenza_small", "TaskNumber=2\nPrintMinSpannNetworkPop=1\n");
    EXPECT_EQ(count_of(document, "MINIMUM SPANNING TREE between "), 5);
    EXPECT_EQ(count_of(document, "MINIMUM SPANNING TREE between 14 OTUs\n"), 1);
    EXPECT_TRUE(contains(document, "tree Season2002_MST = "));
}

// Two groups as two samples: the sum among groups is the sum among samples of one group.
TEST_F(StructureRuns, PooledGroupsAreTheSamplesOfOneGroup) {
    const std::string both = analyse("influenza_small", std::string(kAmova) +
                                                            "ComputeDistanceMatrixAMOVA=1\n"
                                                            "ComputeSumStatsWithinGroups=1\n");
    EXPECT_TRUE(contains(both, "populations      1        297.160"));
    EXPECT_TRUE(contains(both, "populations     98        543.950"));
    EXPECT_TRUE(contains(both, "groups           1        297.160"));
}

TEST_F(StructureRuns, NullDistributionsAreKeptWhenTheRunFileAsks) {
    analyse("influenza_small", "TaskNumber=0\n");
    write_text(folder / "mnd_run.mns",
               "TaskNumber=512\nHaplAMOVA=1\nNumPermutationsAMOVA=50\n"
               "ComputeDistanceMatrixAMOVA=1\nKeepNullDistrib=1\n"
               "AllowedLevelOfMissingData=0.05\n");
    write_text(folder / "mnd_run.txt", "\nuse_interf_settings\ninfluenza_small.mnp\n0\n1\nend\n");
    EXPECT_EQ(start("run_silent"), "");
    int files = 0;
    for (const auto& entry : fs::directory_iterator(folder / "influenza_small.res"))
        files += entry.path().extension() == ".va" || entry.path().extension() == ".vb" ||
                 entry.path().extension() == ".vc";
    EXPECT_EQ(files, 3);
}

TEST_F(StructureRuns, WithoutGroupsThereIsNoAnalysisOfVariance) {
    const std::string document =
        analyse("woodmouse", std::string(kAmova) + "ComputeSumStatsWithinGroups=1\n");
    EXPECT_TRUE(contains(document,
                         "  An AMOVA analysis was selected and no Genetic structure\n"
                         "  is defined, AMOVA task is skipped.\n"));
    EXPECT_TRUE(contains(document,
                         "\nThe project has no groups of samples, nothing is analysed at the "
                         "group level.\n"));
}

TEST_F(StructureRuns, BrokenGroupsAndMatricesFailTheirProjectOnly) {
    const std::string good = read_text(fs::path(MENDCORE_TEST_DATA) / "influenza_frequency.mnp");
    const auto with = [&good](const std::string& old_text, const std::string& new_text) {
        std::string text = good;
        const std::size_t at = text.find(old_text);
        EXPECT_NE(at, std::string::npos) << old_text;
        return text.replace(at, old_text.size(), new_text);
    };
    write_text(folder / "good.mnp", good);
    write_text(folder / "group.mnp", with("\"Season 2003\"\n\t\t}", "\"Season 1999\"\n\t\t}"));
    write_text(folder / "quote.mnp",
               with("\t\t\t\"Season 2002\"\n\t\t\t\"Season 2003\"\n\t\t}", "\t\t\tSeason 2002\n\t\t}"));
    write_text(folder / "value.mnp", with("h2 4 0", "h2 four 0"));
    write_text(folder / "row.mnp", with("h2 4 0", "h2 4"));
    write_text(folder / "label.mnp", with("h2 4 0", "h999 4 0"));
    write_text(folder / "mnd_run.mns", kAmova);
    std::string run = "\nuse_interf_settings\n";
    for (const char* name : {"group", "quote", "value", "row", "label", "good"})
        run += std::string(name) + ".mnp\n0\n0\n";
    write_text(folder / "mnd_run.txt", run + "end\n");
    const std::string errors = start("run_silent");
    EXPECT_EQ(count_of(errors, "the genetic structure can't be read"), 2) << errors;
    EXPECT_EQ(count_of(errors, "the distance matrix can't be read"), 2) << errors;
    EXPECT_TRUE(contains(log_of("group"), "\tError: Sample \"Season 1999\" defined in Group #1 on line 263"));
    EXPECT_TRUE(contains(log_of("quote"), "for unquoted sample names"));
    EXPECT_TRUE(contains(log_of("value"), "\tBad value (\"four\") for distance #1 on line 15."));
    EXPECT_TRUE(contains(log_of("row"), "\tUnable to read distance #2 on line 15."));
    EXPECT_TRUE(contains(log_of("label"), "unable to associate Haplotype with a valid matrix LABEL"));
    EXPECT_FALSE(contains(read_text(folder / "label.res/label.htm"), "AMOVA design and results"));
    EXPECT_TRUE(contains(read_text(folder / "good.res/good.htm"), kFrequencyTable));
}

}  // namespace
