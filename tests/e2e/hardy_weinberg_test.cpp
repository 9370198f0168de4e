// Tests of Hardy-Weinberg proportions as a user starts them: real projects in, documents out.
#include <gtest/gtest.h>

#include <string>

#include "support/project_runs.h"
#include "support/temp_folder.h"
#include "support/text_files.h"

namespace {

using mnd_test::contains;
using mnd_test::count_of;

class HardyWeinbergRuns : public mnd_test::ProjectRuns {
protected:
    // Analyses a project of the test data under a seed; the lines of settings stand first.
    std::string analyse(const std::string& project, const std::string& settings,
                        const char* ending = ".htm") {
        return run_project(
            project,
            settings +
                "TaskNumber=32\nMakeHWExactTest=1\nMarkovChainStepsHW=100000\n"
                "MarkovChainDememorisationStepsHW=1500\nMarkovChainDememorisationStepsLD=2000\n",
            ending);
    }

    // The block of a sample, from its heading to its citation.
    static std::string block_of(const std::string& document, const std::string& sample) {
        const std::size_t begin = document.find("== Hardy-Weinberg equilibrium : (" + sample + ")");
        if (begin == std::string::npos) return "";
        return document.substr(begin, document.find("Reference: ", begin) - begin);
    }
};

// Heterozygosities from counts, P from 20000 shuffles of the allele copies at each locus, by a program of
// a few lines apart from this one. Its s.d. is at most 0.0035; chains of so many alleles mix slowly.
TEST_F(HardyWeinbergRuns, LociOfTheHlaSystem) {
    const std::string document = analyse("hla_standard", "MarkovChainStepsHW=1000000\n");
    const std::string low = block_of(document, "low");
    EXPECT_TRUE(contains(low,
                         "\nExact test using a Markov chain (for all Loci):\n"
                         "Forecasted chain length     :1000000\n"
                         "Dememorization steps        :1500\n\n"));
    EXPECT_NEAR(number_behind(low, "\n    1      63       0.79365      0.82832"), 0.3656, 0.04);
    EXPECT_NEAR(number_behind(low, "\n    2      63       0.80952      0.87746"), 0.0809, 0.02);
    EXPECT_NEAR(number_behind(low, "\n    3      62       0.85484      0.89352"), 0.6255, 0.04);
    const std::string high = block_of(document, "normal_high");
    EXPECT_NEAR(number_behind(high, "\n    1     156       0.79487      0.87052"), 0.0134, 0.01);
    EXPECT_NEAR(number_behind(high, "\n    2     157       0.86624      0.88102"), 0.8616, 0.04);
    EXPECT_NEAR(number_behind(high, "\n    3     156       0.95513      0.91355"), 0.0119, 0.01);
    EXPECT_EQ(count_of(document, "     1001000\n"), 6);
    EXPECT_FALSE(contains(document, "Haplotypes)"));
    EXPECT_TRUE(contains(log(), "\tTesting Hardy-Weinberg equilibrium... done in "));
}

TEST_F(HardyWeinbergRuns, ColoniesOfCats) {
    const std::string document = analyse("cats_microsat", "MarkovChainStepsHW=10000\n");
    EXPECT_EQ(count_of(document, "== Hardy-Weinberg equilibrium : (colony"), 17);
    const std::string block = block_of(document, "colony1");
    // The first locus of two cats is missing.
    EXPECT_TRUE(contains(block, "\n    1       8       0.75000      0.64167"));
    EXPECT_TRUE(contains(block, "\n    9      10       0.20000      0.35789"));
    EXPECT_EQ(count_of(block, "       10100\n"), 9);
    EXPECT_TRUE(contains(console(), "50% : Testing Hardy-Weinberg equilibrium...\n"));
}

// P of haplotypes from shuffles as above. With about as many haplotypes as individuals few steps move;
// hence the long burn-in of each of the 547 chains.
TEST_F(HardyWeinbergRuns, HaplotypesOfKnownPhase) {
    const std::string document =
        analyse("known_phase_dna",
                "TypeOfTestHW=1\nMarkovChainStepsHW=300000\nMarkovChainDememorisationStepsLD=10000\n");
    EXPECT_FALSE(contains(document, "(for all Loci)"));
    EXPECT_EQ(count_of(document, "\nMarkov Chain test:  P value : "), 5);
    EXPECT_EQ(count_of(document, "       (300303 steps done\n"), 5);
    const std::string label = "\nMarkov Chain test:  P value : ";
    EXPECT_NEAR(number_behind(block_of(document, "Season 2002"), label), 0.111, 0.02);
    EXPECT_NEAR(number_behind(block_of(document, "Season 2003"), label), 0.507, 0.04);
    EXPECT_NEAR(number_behind(block_of(document, "Season 2004"), label), 0.560, 0.04);
    // One blank row for each of the 60 sites.
    const std::string rule(72, '-');
    EXPECT_TRUE(contains(document, "Steps done\n" + rule + std::string(61, '\n') + rule + "\n"));
}

TEST_F(HardyWeinbergRuns, LociAndHaplotypesOfKnownPhase) {
    const std::string document = analyse("known_phase_dna", "TypeOfTestHW=2\n");
    EXPECT_EQ(count_of(document, "(for all Loci)"), 5);
    EXPECT_EQ(count_of(document, "(for all Haplotypes)"), 5);
    const std::string block = block_of(document, "Season 2002");
    EXPECT_NEAR(number_behind(block, "\n    1      19       0.10526      0.19346"), 0.1595, 0.02);
    EXPECT_TRUE(contains(block, "\n    4   This locus is monomorphic: no test done.\n"));
    EXPECT_NEAR(number_behind(block, "\n    9      20       0.30000      0.43077"), 0.2799, 0.02);
}

TEST_F(HardyWeinbergRuns, AreRepeatedUnderTheSameSeed) {
    const std::string first = analyse("hla_standard", "");
    const std::string block = mnd_test::without_anchors(block_of(first, "normal_high"));
    EXPECT_TRUE(contains(block, "      100172\n"));
    EXPECT_EQ(mnd_test::without_anchors(block_of(analyse("hla_standard", ""), "normal_high")), block);
}

TEST_F(HardyWeinbergRuns, GroupsAndXml) {
    const std::string document =
        analyse("hla_standard", "XMLOutput=1\nComputeSumStatsWithinGroups=1\n", ".xml");
    EXPECT_TRUE(is_well_formed());
    // Both samples together
    EXPECT_TRUE(contains(block_of(document, "Group 1"), "\n    1     219 "));
    EXPECT_EQ(count_of(document, "(for all Loci)"), 3);
}

TEST_F(HardyWeinbergRuns, HaplotypesOfUnrelatedIndividualsAreRefused) {
    const std::string document = analyse("woodmouse", "");
    EXPECT_FALSE(contains(document, "Exact test using a Markov chain"));
    EXPECT_TRUE(contains(log(),
                         "     !!!Hardy-Weinberg disequilibrium test is not possible on Haplotypic data,\n"
                         "        this task will be skipped.\n"));
}

}  // namespace
