#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <sstream>
#include <string>

#include "results/xml_tags.h"
#include "run/settings.h"
#include "run/settings_table.h"
#include "run/tasks.h"

namespace {

using mnd::settings;

std::string block(settings& s) {
    std::ostringstream out;
    s.print_pretty_settings(out);
    return out.str();
}

// What follows the list of active tasks.
std::string tasks(settings& s) {
    const std::string text = block(s);
    const std::string head = " Active Tasks:\n -------------\n\n";
    return text.substr(text.find(head) + head.size());
}

// The labels under the heading of one task, each followed by a line end.
std::string labels_of(mnd::Task task) {
    settings s;
    s.TaskNumber = task;
    std::istringstream lines(tasks(s));
    std::string labels;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("= ") == std::string::npos) continue;
        const std::size_t end = line.find_last_not_of(' ', line.find("= ") - 1);
        labels += line.substr(6, end - 5) + '\n';
    }
    return labels;
}

}  // namespace

TEST(SettingsBlock, GeneralSettingsAsText) {
    settings s;
    s.DeletionWeight = 0.5;
    EXPECT_EQ(block(s),
              "==============================\n"
              "Settings used for Calculations\n"
              "==============================\n"
              "\n"
              " General settings:\n"
              " -----------------\n"
              "        Deletion Weight                = 0.5\n"
              "        Transition Weight Weight       = 1\n"
              "        Tranversion Weight Weight      = 1\n"
              "        Epsilon Value                  = 1e-07\n"
              "        Significant digits for output  = 5\n"
              "        Use original haplotype definition\n"
              "        Alllowed level of missing data = 0.05\n"
              "\n"
              " Active Tasks:\n"
              " -------------\n"
              "\n");
}

TEST(SettingsBlock, SignificantDigitsFollowTheFrequencyThreshold) {
    settings s;
    // int(log10(x) - 0.1): -3.1 -> 3; -2.60 -> 2; -0.1 -> 0
    const struct {
        double threshold;
        const char* digits;
    } cases[] = {{1e-3, "= 3\n"}, {0.00316, "= 2\n"}, {1.0, "= 0\n"}, {0.0, "= unspecified\n"}};
    for (const auto& c : cases) {
        s.FrequencyThreshold = c.threshold;
        EXPECT_NE(block(s).find(std::string("        Significant digits for output  ") + c.digits),
                  std::string::npos)
            << c.threshold;
    }
    s.FrequencyThreshold = HUGE_VAL;
    EXPECT_NE(block(s).find("unspecified"), std::string::npos);
}

TEST(SettingsBlock, InferredHaplotypesAreNamed) {
    settings s;
    s.InferHaplotypeDefinitionFromDistanceMatrix = 1;
    EXPECT_NE(block(s).find("\n        Infer haplotype definition from distance matrix\n"),
              std::string::npos);
}

TEST(SettingsBlock, MolecularDiversityNamesItsDistance) {
    settings s;
    s.data_type = 0;
    s.TaskNumber = mnd::kTaskMolecularDiversity;
    s.DistanceMethod = 2;
    s.GammaAValue = 0.25;
    EXPECT_EQ(tasks(s),
              "    Molecular Diversity:\n"
              "    --------------------\n"
              "      Molecular distance               = Kimura 2P\n"
              "      Gamma a value                    = 0.25\n"
              "      Print distance matrix            = No\n"
              "      Minimum spanning tree            = No\n"
              "\n");
}

TEST(SettingsBlock, DistanceThatTheDataDoNotHaveIsANumber) {
    settings s;
    s.data_type = 0;
    s.TaskNumber = mnd::kTaskMolecularDiversity;
    s.DistanceMethod = 12;
    EXPECT_NE(tasks(s).find("      Molecular distance               = 12\n"), std::string::npos);
}

TEST(SettingsBlock, HeadingsFollowInTheirOrder) {
    settings s;
    s.TaskNumber = (1 << 17) - 1;
    const std::string text = block(s);
    const char* const headings[] = {"    Standard indices:\n    -----------------\n",
                                    "    Molecular Diversity:\n    --------------------\n",
                                    "    Mismatch Distribution:\n",
                                    "    Haplotypic Frequency estimation:\n",
                                    "    Linkage disequilibrium test:\n",
                                    "    Hardy-Weinberg equilibrium test:\n",
                                    "    Tajima's selective neutrality test\n",
                                    "    Ewens-Watterson neutrality test\n",
                                    "    Chakraborty's amalgammation test\n",
                                    "    Fu's Neutraliy test:\n    --------------------\n",
                                    "    Analysis of Molecular Variance:\n",
                                    "    Population pairwise Fst values:\n",
                                    "    Exact test of population differentiation:\n",
                                    "\n    Assignement of individual genotypes to populations\n    ------",
                                    "\n    Correlation between distance matrices.\n    ------"};
    std::size_t at = 0;
    for (const char* heading : headings) {
        const std::size_t next = text.find(heading);
        ASSERT_NE(next, std::string::npos) << heading;
        EXPECT_GT(next, at) << heading;
        at = next;
    }
}

TEST(SettingsBlock, EachTaskStandsAlone) {
    settings s;
    for (const mnd::Task task : {mnd::kTaskStandardIndices, mnd::kTaskHardyWeinberg, mnd::kTaskMantel}) {
        s.TaskNumber = task;
        EXPECT_EQ(tasks(s).find("    ---"), tasks(s).rfind("    ---")) << task;
    }
    s.TaskNumber = mnd::kTaskDistanceFiles | mnd::kTaskAmovaPermutations;
    EXPECT_EQ(tasks(s), "");
}

TEST(SettingsBlock, AssignmentSaysWhenItIsSkipped) {
    const std::string skipped =
        "\n      Test is only possible for genotypic data with unknown gametic phase, skipping task...\n\n";
    settings s;
    s.TaskNumber = mnd::kTaskAssignment;
    EXPECT_NE(tasks(s).find(skipped), std::string::npos);
    s.genotypic_data = 1;
    EXPECT_EQ(tasks(s).find(skipped), std::string::npos);
    s.gametic_phase = 1;
    EXPECT_NE(tasks(s).find(skipped), std::string::npos);
}

TEST(SettingsBlock, TasksOfOneSampleShowTheirParameters) {
    EXPECT_EQ(labels_of(mnd::kTaskStandardIndices), "Allele frequencies at all loci\n");
    EXPECT_EQ(labels_of(mnd::kTaskMismatch),
              "Molecular distance\nGamma a value\nDemographic expansion\nSpatial expansion\n"
              "Model of spatial expansion\nBootstrap replicates\n");
    EXPECT_EQ(labels_of(mnd::kTaskHaplotypeFrequencies),
              "Haplotype frequencies by EM\nAllele frequencies by EM\nAll two-locus haplotypes\n"
              "Initial conditions for EM\nMaximum no. of iterations\nRecessive alleles\n"
              "Bootstrap replicates\nInitial cond. per bootstrap\nInbreeding coefficient\n"
              "Fixed inbreeding coefficient\nZipper version of EM\nRandom orders of loci\n"
              "Gametic phase by Gibbs sampling\nBurn-in steps\nSampling interval\nNo. of samples\n"
              "Dirichlet alpha\nDirichlet epsilon\nGamma\nInfluence zone of het. sites\n"
              "Fraction of recombination steps\nOutput of phases in files\n");
    EXPECT_EQ(labels_of(mnd::kTaskLinkageDisequilibrium),
              "Test of linkage\nSteps, or permutations\nDememorization steps\nPrecision on P-value\n"
              "Initial conditions for EM\nSignificance level\nSummary file\nD, D' and r2 coefficients\n");
    EXPECT_EQ(labels_of(mnd::kTaskHardyWeinberg),
              "Exact test\nLevel (locus 0, hapl. 1, both 2)\nSteps in Markov chain\n"
              "Dememorization steps\nPrecision on P-value\n");
    EXPECT_EQ(labels_of(mnd::kTaskTajima), "No. of simulated samples\n");
    EXPECT_EQ(labels_of(mnd::kTaskEwensWatterson), "Homozygosity test\nNo. of simulated samples\n");
    EXPECT_EQ(labels_of(mnd::kTaskChakraborty), "No. of simulated samples\n");
    EXPECT_EQ(labels_of(mnd::kTaskFuFs), "No. of simulated samples\n");
}

TEST(SettingsBlock, TasksBetweenSamplesShowTheirParameters) {
    EXPECT_EQ(labels_of(mnd::kTaskAmova),
              "Global AMOVA\nLocus by locus AMOVA\nConventional F-statistics\nCompute distance matrix\n"
              "Molecular distance\nGamma a value\nInclude individual level\nPopulation specific FST\n"
              "Population specific FIS\nNo. of permutations\nPrint distance matrix\n"
              "Minimum spanning tree\n");
    EXPECT_EQ(labels_of(mnd::kTaskPairwiseFst),
              "Pairwise FST\nTest of significance\nNo. of permutations\nSignificance level\n"
              "Print pairwise FST\nReynolds' distance\nSlatkin's distance\nPairwise differences\n"
              "Unequal population sizes\nDelta-mu square\n");
    EXPECT_EQ(labels_of(mnd::kTaskExactDifferentiation),
              "Steps in Markov chain\nDememorization steps\nPrecision on P-value\n"
              "Table of significant tests\nSignificance level\n");
    EXPECT_EQ(labels_of(mnd::kTaskAssignment), "");
    EXPECT_EQ(labels_of(mnd::kTaskMantel), "No. of permutations\n");
}

// Two tasks may show one label for two keys; each shows the value of its own.
TEST(SettingsBlock, EachLabelShowsItsOwnKey) {
    settings s;
    s.TaskNumber = mnd::kTaskTajima | mnd::kTaskEwensWatterson | mnd::kTaskHardyWeinberg |
                   mnd::kTaskLinkageDisequilibrium | mnd::kTaskMantel;
    s.NumSimulFuTest = 11;
    s.NumIterationsNeutralityTests = 12;
    s.MarkovChainDememorisationStepsHW = 13;
    s.MarkovChainDememorisationStepsLD = 14;
    s.NumPermMantel = 15;
    s.SignificanceLevelLD = 0.01;
    const std::string text = tasks(s);
    const auto behind = [&](const char* heading, const char* label) {
        const std::size_t at = text.find(label, text.find(heading));
        const std::size_t value = text.find("= ", at) + 2;
        return text.substr(value, text.find('\n', value) - value);
    };
    EXPECT_EQ(behind("Tajima's", "No. of simulated samples"), "11");
    EXPECT_EQ(behind("Ewens-Watterson", "No. of simulated samples"), "12");
    EXPECT_EQ(behind("Hardy-Weinberg", "Dememorization steps"), "13");
    EXPECT_EQ(behind("Linkage", "Dememorization steps"), "14");
    EXPECT_EQ(behind("Linkage", "Significance level"), "0.01");
    EXPECT_EQ(behind("Correlation", "No. of permutations"), "15");
}

TEST(SettingsBlock, LinesHaveOneColumnOfValues) {
    settings s;
    s.TaskNumber = (1 << 17) - 1;
    std::istringstream lines(tasks(s));
    int values = 0;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t sign = line.find("= ");
        if (sign == std::string::npos) continue;
        ++values;
        EXPECT_EQ(sign, 39U) << line;
        EXPECT_EQ(line[38], ' ') << line;
    }
    EXPECT_GT(values, 70);
}

TEST(SettingsBlock, XmlPutsTheTitleInItsTag) {
    mnd::xmlOutput = true;
    settings s;
    const std::string text = block(s);
    mnd::xmlOutput = false;
    const std::string open = mnd::TXmlTag::open(mnd::TXmlTag("title")).c_str();
    const std::string close = mnd::TXmlTag::close(mnd::TXmlTag("title")).c_str();
    EXPECT_EQ(text.find(open + "====="), 0U);
    EXPECT_NE(text.find("==\n\n" + close + " General settings:\n"), std::string::npos);
}

TEST(SettingsBlock, DoesNotDependOnTheFormatOfTheStreamAndLeavesIt) {
    settings s;
    std::ostringstream out;
    out << std::fixed << std::setprecision(2) << std::setfill('*');
    s.print_pretty_settings(out);
    EXPECT_EQ(out.str(), block(s));
    EXPECT_EQ(out.precision(), 2);
    EXPECT_EQ(out.fill(), '*');
}
