// Comparisons of pairs of samples as a user starts them: real projects in, documents out.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/project_runs.h"
#include "support/temp_folder.h"

namespace {

using mnd_test::contains;
using mnd_test::count_of;

namespace fs = std::filesystem;

class PairwiseRuns : public mnd_test::ProjectRuns {
protected:
    // Analyses a project of the test data under a seed; the lines of settings stand first.
    std::string analyse(const std::string& project, const std::string& settings,
                        const char* ending = ".htm") {
        return run_project(
            project,
            settings +
                "TaskNumber=1024\nComputePairwiseFST=1\nPrintFstVals=1\nPrintMissIntermatchs=1\n"
                "ComputeDistanceMatrixAMOVA=1\nFSTSignifLevel=0.05\n",
            ending, "run_silent");
    }
};

// From all pairs of the 100 sequences over the 97 sites with at most 5 % of missing data, by a program
// of a few lines apart from this one.
constexpr char kFstOfSeasons[] =
    "                 1           2           3           4           5\n"
    "     1     0.00000\n"
    "     2     0.45639     0.00000\n"
    "     3     0.75282     0.31291     0.00000\n"
    "     4     0.75720     0.40357     0.11315     0.00000\n"
    "     5     0.75710     0.46909     0.33830     0.15059     0.00000\n";

TEST_F(PairwiseRuns, SequencesOfFiveSeasons) {
    const std::string document = analyse("influenza_small", "NumPermutationsFST=0\n");
    EXPECT_TRUE(contains(document, "  1:\tSeason 2002\n  2:\tSeason 2003\n"));
    EXPECT_TRUE(contains(document, kFstOfSeasons));
    for (const char* pi : {"19.70750", "27.13750", "13.75750", "30.41250", "16.98250", "6.90500", "34.42000",
                           "20.91750", "10.73000", "9.15500"})
        EXPECT_TRUE(contains(document, pi)) << pi;
    EXPECT_TRUE(contains(document, "     1     7.96842    19.70750"));
    EXPECT_FALSE(contains(document, "P value"));
}

// Seasons differ beyond doubt: hardly a permutation of 1023 does as much.
TEST_F(PairwiseRuns, SeasonsDifferSignificantly) {
    const std::string document = analyse("influenza_small", "NumPermutationsFST=1000\n");
    EXPECT_TRUE(contains(document, kFstOfSeasons));
    EXPECT_TRUE(contains(document, "\nNumber of permutations : 1023\n"));
    EXPECT_TRUE(contains(document,
                         "     2           +                       +           +           +\n"
                         "     3           +           +                       +           +\n"));
}

TEST_F(PairwiseRuns, TheSeedRepeatsAllPValues) {
    const std::string settings = "NumPermutationsFST=100\nUnequalPopSizeDiv=1\n";
    const std::string first = analyse("influenza_small", settings);
    fs::remove_all(folder / "influenza_small.res");
    const std::string second = analyse("influenza_small", settings);
    const std::string begin = "== Comparisons of pairs of population samples";
    const std::string end = "END OF RUN";
    const auto part = [&](const std::string& text) {
        const std::string rest = text.substr(text.find(begin));
        return rest.substr(0, rest.find(end));
    };
    ASSERT_TRUE(contains(first, begin));
    EXPECT_TRUE(contains(part(first), "theta0 P values"));
    EXPECT_EQ(part(first), part(second));
}

// The starts, the shuffles and their draws repeated by a program of its own, from the distances on,
// with a generator of its own and a solver that updates the whole matrix instead of its factors.
TEST_F(PairwiseRuns, DivergenceTimesOfFiveSeasonsAndTheirTests) {
    const std::string document = analyse("influenza_small", "NumPermutationsFST=9\nUnequalPopSizeDiv=1\n");
    for (
        const char* rows : {
            "     2     4.69889 \n     3    14.78140      0.29275 \n"
            "     4    16.78952      2.89382      0.09914 \n"
            "     5    19.00375      5.39068      1.56253      0.35066 \n",
            "     2     0.28981 \n     3     0.59094      0.97688 \n"
            "     4     0.53819      0.80180      0.06097 \n"
            "     5     0.47737      0.67028      0.22838      0.13110 \n",
            "     2    15.00861 \n     3    12.35610     13.46475 \n"
            "     4    13.62298     14.08868      6.80586 \n"
            "     5    15.41625     15.52682      9.16747      8.80434 \n",
            "     2     0.45455\n     3     0.33333     0.50000\n     4     0.41667     0.58333     0.40000\n"
            "     5     0.25000     0.54545     0.75000     0.50000\n",
            "     2     0.72727\n     3     0.41667     0.50000\n     4     0.25000     0.50000     0.80000\n"
            "     5     0.66667     0.54545     0.58333     0.33333\n",
            "     2     0.81818\n     3     1.00000     0.50000\n     4     1.00000     0.41667     0.20000\n"
            "     5     1.00000     0.45455     0.16667     0.25000\n",
        })
        EXPECT_TRUE(contains(document, rows)) << rows;
}

// Mean allele sizes by a program of a few lines apart from this one.
TEST_F(PairwiseRuns, MicrosatellitesOfIndividuals) {
    const std::string document =
        analyse("cats_microsat",
                "XMLOutput=1\nComputeDeltaMuSqr=1\nDistanceMethodAMOVA=1\nNumPermutationsFST=20\n", ".xml");
    EXPECT_TRUE(contains(document, "\nDistance method: Sum of squared size difference (RST)\n"));
    EXPECT_TRUE(contains(document, "  1:\tcolony2\n  2:\tcolony4\n  3:\tcolony8\n"));
    EXPECT_TRUE(contains(document,
                         "     1     0.00000\n"
                         "     2    28.13330     0.00000\n"
                         "     3    23.59364     3.96167     0.00000\n"));
    EXPECT_EQ(count_of(document, "<PairFstMat "), 1);
    EXPECT_EQ(count_of(document, "<PairFstPvalMat "), 1);
    EXPECT_TRUE(is_well_formed());
}

}  // namespace
