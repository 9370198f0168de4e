// Assignment of individuals as a user starts it: real projects in, documents out.
#include <gtest/gtest.h>

#include <string>

#include "support/project_runs.h"
#include "support/temp_folder.h"

namespace {

using mnd_test::contains;
using mnd_test::count_of;

class AssignmentRuns : public mnd_test::ProjectRuns {
protected:
    // Analyses a project of the test data under a seed; the lines of settings stand first.
    std::string analyse(const std::string& project, const std::string& settings,
                        const char* ending = ".htm") {
        return run_project(project, settings + "InitialConditionsEM=10\nMaximumNumOfIterationsEM=1000\n",
                           ending, "run_silent");
    }
};

// The numbers below come from a program of a few lines apart from this one, which counts alleles by
// name and agrees with the documents in all 4029, 440 and 500 cells.

TEST_F(AssignmentRuns, MicrosatellitesOfSeventeenColonies) {
    const std::string document = analyse("cats_microsat", "TaskNumber=32768\n");
    EXPECT_TRUE(contains(document, "       1:\tcolony1\n"));
    EXPECT_TRUE(contains(document, "       17:\tcolony17\n\nNatural logarithms of the likelihoods, "));
    EXPECT_TRUE(contains(document, "\nMissing data count as an allele of their own.\n\nSample 1\n"));
    EXPECT_TRUE(contains(document, "\n      N215\t   -14.792   -49.579   -40.253   -35.181   -35.307"));
    EXPECT_TRUE(contains(document, "\n      N146\t   -82.166   -25.198   -74.744   -77.371   -79.642"));
    EXPECT_EQ(count_of(document, "\nSample "), 18);  // the labels have one more
    EXPECT_FALSE(contains(document, "-inf"));
    EXPECT_FALSE(contains(document, " nan"));
    EXPECT_FALSE(contains(document, "Not computed"));
}

TEST_F(AssignmentRuns, SequencesOfKnownPhaseAreSeenSiteBySite) {
    const std::string document = analyse("known_phase_dna", "TaskNumber=32768\n");
    EXPECT_TRUE(contains(document,
                         "\nSample 1\n----------\n"
                         "           \t          1          2          3          4          5\n"
                         "     2002_1\t    -31.765    -49.026   -139.018   -164.503   -164.083\n"
                         "     2002_2\t    -17.086    -79.199   -247.247   -280.543   -276.733\n"));
    EXPECT_TRUE(
        contains(document, "\n    2005_17\t   -231.854   -212.150   -149.276    -67.599   -138.742\n"));
}

TEST_F(AssignmentRuns, TypesOfTwoClassesWithTheirHeterozygosity) {
    const std::string document = analyse("hla_standard", "TaskNumber=32769\nXMLOutput=1\n", ".xml");
    EXPECT_TRUE(contains(document, "</data> <genotypeLikelihoodMatrix pop=\"low\" time=\""));
    EXPECT_TRUE(contains(document, "</data> <genotypeLikelihoodMatrix pop=\"normal_high\" time=\""));
    EXPECT_TRUE(contains(document,
                         "   Locus   Individuals     Observed het.     Expected het.\n"
                         "       1            63           0.79365           0.82832\n"
                         "       2            63           0.80952           0.87746\n"
                         "       3            62           0.85484           0.89352\n"));
    EXPECT_TRUE(contains(document, "       3           156           0.95513           0.91355\n"));
    EXPECT_TRUE(contains(document, "\nSum of square freqs.     : 0.01612\n"));
    EXPECT_LT(document.find("== LIKELIHOOD OF"), document.find("== ANALYSES AT THE INTRA-POPULATION LEVEL"));
    EXPECT_TRUE(is_well_formed());
}

TEST_F(AssignmentRuns, HaplotypesAreNotAssigned) {
    const std::string document = analyse("influenza_small", "TaskNumber=32768\n");
    EXPECT_FALSE(contains(document, "== LIKELIHOOD"));
    EXPECT_TRUE(contains(log(),
                         "   !!!The computation of the likelihood of all individuals in each\n"
                         "      population is only possible for Genotypic data \n"
                         "      skipping the task...\n"));
}

// The groups of the project are its samples first, then the colonies.
TEST_F(AssignmentRuns, ColoniesInTwoGroups) {
    const std::string document =
        analyse("cats_microsat", "TaskNumber=32769\nComputeSumStatsWithinGroups=1\n");
    const std::size_t groups = document.find("== LIKELIHOOD OF");
    const std::size_t colonies = document.find("== LIKELIHOOD OF", groups + 1);
    ASSERT_NE(colonies, std::string::npos);
    EXPECT_LT(groups, document.find("== ANALYSES AT THE INTRA-GROUP LEVEL"));
    EXPECT_LT(document.find("== ANALYSES AT THE INTRA-GROUP LEVEL"), colonies);
    EXPECT_LT(colonies, document.find("== ANALYSES AT THE INTRA-POPULATION LEVEL"));
    EXPECT_TRUE(contains(document, "       2:\tGroup 2\n\nNatural logarithms"));
    EXPECT_TRUE(contains(document,
                         "\nMissing data count as an allele of their own.\n\nSample 1\n----------\n"
                         "          \t         1         2\n"
                         "        N7\t   -27.880   -31.019\n"
                         "      N141\t   -24.026   -35.634\n"));
    EXPECT_TRUE(contains(document, "\n      N215\t   -14.792   -49.579   -40.253   -35.181   -35.307"));
}

}  // namespace
