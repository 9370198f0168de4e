// Tests of selective neutrality as a user starts them: real projects in, documents out.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "support/project_runs.h"
#include "support/temp_folder.h"
#include "support/text_files.h"

namespace {

using mnd_test::contains;
using mnd_test::count_of;

class NeutralityRuns : public mnd_test::ProjectRuns {
protected:
    // Analyses a project of the test data under a seed; the lines of settings stand first.
    std::string analyse(const std::string& project, const std::string& settings,
                        const char* ending = ".htm") {
        return run_project(
            project, settings + "TaskNumber=16832\nNumIterationsNeutralityTests=1000\nNumSimulFuTest=1000\n",
            ending);
    }

    // The blocks of a sample, from that of Tajima's test on.
    static std::string blocks_of(const std::string& document, const std::string& sample) {
        const std::size_t begin =
            document.find("== Tajima's test of selective neutrality : (" + sample + ")");
        if (begin == std::string::npos) return "";
        const std::size_t end =
            std::min(document.find("== Sample : ", begin), document.find("END OF RUN", begin));
        return document.substr(begin, end - begin);
    }
};

constexpr const char* kTajimaP = "\nP(sim. D &lt;= obs. D)                   : ";
constexpr const char* kFuP = "\nP(sim. Fs &lt;= obs. Fs)        : ";

// S, pi and D counted from the sequences, and P-values from 10000 samples, by a program of some lines
// apart from this one: P is within five standard deviations of both.
TEST_F(NeutralityRuns, SequencesOfWoodMice) {
    const std::string document = analyse("woodmouse", "");
    const std::string blocks = blocks_of(document, "woodmouse");
    EXPECT_TRUE(contains(blocks,
                         "Sample size                           : 15\n"
                         "No. of sites with substitutions (S)   : 50\n"
                         "Mean No. of pairwise differences (Pi) : 11.78095\n"));
    EXPECT_TRUE(contains(blocks, "\nTajima's D                            : -1.00691\n"));
    EXPECT_TRUE(contains(blocks, "\nNo. of simulations                    : 1000\n"));
    EXPECT_NEAR(number_behind(blocks, kTajimaP), 0.144, 0.06);
    EXPECT_NEAR(number_behind(blocks, "\nP(sim. D &lt;= 0)                        : "), 0.530, 0.08);
    EXPECT_NEAR(number_behind(blocks, "\nMean Theta(S)                         : "), 14.85, 1.0);
    EXPECT_EQ(count_of(blocks, "\nThe test is impossible because all gene copies are different\n"), 2);
    EXPECT_TRUE(contains(blocks,
                         "\nSample size                  : 15"
                         "\nObs. k                       : 15\n"
                         "Original No. of alleles(k)   : 15\n"
                         "Theta(Pi)                    : 11.78095\n"));
    EXPECT_NEAR(number_behind(blocks, "\nFs                           : "), -6.57675, 2e-5);
    EXPECT_NEAR(number_behind(blocks, kFuP), 0.0040, 0.012);
    EXPECT_NEAR(number_behind(blocks, "\nMean k                       : "), 9.94, 0.35);
    EXPECT_TRUE(contains(log(), "\tComputing Tajima's D... done in "));
    EXPECT_TRUE(contains(log(), "\tComputing Fu's Fs test..."));
    EXPECT_FALSE(contains(document, "Not computed"));
}

// Expected F, P and mean counts by rank over all partitions of 20 into 14 parts; alleles of
// Chakraborty's test from exact numbers; sequences as above.
TEST_F(NeutralityRuns, SeasonsOfInfluenza) {
    const std::string document = analyse("influenza_small", "NumIterationsNeutralityTests=20000\n");
    EXPECT_EQ(count_of(document, "== Ewens-Watterson tests of selective neutrality : (Season 20"), 5);
    const std::string blocks = blocks_of(document, "Season 2002");
    EXPECT_TRUE(contains(blocks, "\nTajima's D                            : -0.72258\n"));
    EXPECT_NEAR(number_behind(blocks, kTajimaP), 0.164, 0.06);
    EXPECT_TRUE(contains(blocks,
                         "No. of genes in sample       : 20\n"
                         "No. of alleles in sample (k) : 14\n"
                         "Observed Homozygosity        : 0.04737\n"
                         "Exp. No. of alleles          : 13.81636\n"
                         "P(exactly k alleles)         : 0.20165\n"
                         "P(k or more alleles)         : 0.57316\n"));
    EXPECT_TRUE(contains(blocks, "Observed F value                       : 0.09500\n"));
    EXPECT_NEAR(number_behind(blocks, "\nExpected F value                       : "), 0.09315, 0.0003);
    EXPECT_NEAR(number_behind(blocks, "\nPr(rand F &lt;= obs F)                    : "), 0.75645, 0.016);
    EXPECT_NEAR(number_behind(blocks, "\nSlatkin's Exact test P-value           : "), 0.75645, 0.016);
    const std::string expected = blocks.substr(blocks.find("\nExpected haplotype frequencies by rank"));
    EXPECT_NEAR(number_behind(expected, "\n     1 "), 3.4880 / 20, 0.002);
    EXPECT_NEAR(number_behind(expected, "\n     2 "), 2.3949 / 20, 0.001);
    EXPECT_NEAR(number_behind(expected, "\n     5 "), 1.3445 / 20, 0.001);
    EXPECT_TRUE(contains(expected, "\n    14   0.0500000   0.0000000          1.0000      0.0000\n"));
    EXPECT_NEAR(number_behind(blocks, "\nFs                           : "), -1.99699, 2e-5);
    EXPECT_NEAR(number_behind(blocks, kFuP), 0.220, 0.07);
    const double D_of_others[] = {-0.07146, -1.11548, -1.06039, -0.67717};
    for (int year = 2003; year <= 2006; ++year)
        EXPECT_NEAR(number_behind(blocks_of(document, "Season " + std::to_string(year)),
                                  "\nTajima's D                            : "),
                    D_of_others[year - 2003], 1e-9);
}

TEST_F(NeutralityRuns, AreRepeatedUnderTheSameSeed) {
    const auto blocks = [this] {
        return mnd_test::without_anchors(blocks_of(analyse("woodmouse", ""), "woodmouse"));
    };
    const std::string first = blocks();
    EXPECT_FALSE(first.empty());
    EXPECT_EQ(blocks(), first);
}

// Tests that want other data than these leave their text, and no number.
TEST_F(NeutralityRuns, OtherDataTypes) {
    const std::string frequencies = analyse("influenza_frequency", "");
    EXPECT_EQ(count_of(frequencies, "Tajima's test cannot be computed \nwithout DNA sequences"), 5);
    EXPECT_EQ(count_of(frequencies, "Fu's Fs test cannot be computed \nwithout DNA sequences"), 5);
    EXPECT_EQ(count_of(frequencies, "Slatkin's Exact test P-value           : "), 5);
    const std::string rflp = analyse("binary_rflp", "");
    EXPECT_GE(count_of(rflp, "No. of segregating sites (S)          : "), 1);
    EXPECT_FALSE(contains(rflp, "cannot be computed"));
    const std::string genotypes = analyse("hla_standard", "");
    EXPECT_EQ(count_of(genotypes, "in case of genotypic data with unknown gametic phase\n\n"), 8);
    const std::string phased = analyse("known_phase_dna", "NumSimulFuTest=100\n");
    EXPECT_EQ(count_of(phased, "\nTajima's D                            : "), 5);
    EXPECT_EQ(count_of(phased, "\nFs                           : "), 5);
}

TEST_F(NeutralityRuns, Xml) {
    const std::string document = analyse("influenza_small", "XMLOutput=1\nNumSimulFuTest=100\n", ".xml");
    EXPECT_TRUE(is_well_formed());
    EXPECT_EQ(count_of(document, "<obsHapFreq samp=\"Season 20"), 5);
    EXPECT_EQ(count_of(document, "</expHapFreq>"), 5);
}

}  // namespace
