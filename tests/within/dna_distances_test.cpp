// Distances of samples of DNA sequences, by the methods of the sample itself.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "model/popul_dna.h"
#include "run/settings.h"
#include "support/captured_reports.h"
#include "support/seeded_stream.h"
#include "support/temp_folder.h"
#include "within/plain_dna_distance.h"
#include "within/text_sample.h"

namespace {

using mnd::PopulDNA;
using mnd_test::CapturedReports;
using mnd_test::Report;
using DnaSample = mnd_test::TextSample<PopulDNA>;
using PairMethod = int (PopulDNA::*)(const char*, const char*);

constexpr PairMethod kMethods[] = {&PopulDNA::diff_dist,  &PopulDNA::jk_dist,     &PopulDNA::kim2p_dist,
                                   &PopulDNA::p_dist,     &PopulDNA::tajnei_dist, &PopulDNA::tamura_dist,
                                   &PopulDNA::tamnei_dist};

void set_composition(PopulDNA& sample) {
    sample.nucl_freq = {0.25, 0.25, 0.25, 0.25};
    sample.gc_content = 0.5;
}

TEST(DnaDistances, IdenticalSequencesHaveNoDistance) {
    DnaSample s({"ACGTACGT", "ACGTACGT"});
    set_composition(s.sample);
    for (const PairMethod method : kMethods) {
        s.sample.distance = s.sample.distance_var = 9.0;
        EXPECT_EQ((s.sample.*method)("ACGTACGT", "ACGTACGT"), 1);
        EXPECT_EQ(s.sample.distance, 0.0);
        EXPECT_EQ(s.sample.distance_var, 0.0);
    }
}

TEST(DnaDistances, TamuraNeiWithGammaFailsForIdenticalSequences) {
    DnaSample s({"ACGTACGT", "ACGTACGT"});
    set_composition(s.sample);
    s.sample.gamma_a = 0.5;
    const CapturedReports captured;
    EXPECT_EQ(s.sample.tamnei_dist("ACGTACGT", "ACGTACGT"), 0);
    EXPECT_EQ(s.sample.distance, 0.0);
    EXPECT_EQ(captured.all(), (std::vector<Report>{{mnd::Warning, "PopulDNA::tamnei_dist(s1,s2)", 176},
                                                   {mnd::Warning, "PopulDNA::tamnei_dist(s1,s2)", 136}}));
}

// "A" against "?": compared and equal for the number of differences; the second site tells L.
TEST(DnaDistances, AMissingCharacterOnOneSideIsComparedOrNot) {
    DnaSample s({"AA", "?G"});
    set_composition(s.sample);
    ASSERT_EQ(s.sample.diff_dist("A", "?"), 1);
    EXPECT_EQ(s.sample.distance, 0.0);
    ASSERT_EQ(s.sample.diff_dist("AA", "?G"), 1);
    EXPECT_EQ(s.sample.distance_var, 0.5 * 0.5 * 2.0);  // L = 2
    ASSERT_EQ(s.sample.p_dist("AA", "?G"), 1);
    EXPECT_EQ(s.sample.distance, 0.5);
    ASSERT_EQ(s.sample.tajnei_dist("A", "?"), 1);
    EXPECT_EQ(s.sample.distance, 0.0);
    // One transition in one compared site, not in two: p = 1 is too much.
    const CapturedReports captured;
    EXPECT_EQ(s.sample.tajnei_dist("AA", "?G"), 0);
    EXPECT_EQ(captured.all(), (std::vector<Report>{{mnd::Warning, "PopulDNA::tajnei_dist(s1, s2)", 165}}));
}

TEST(DnaDistances, AClassWithoutWeightIsComparedOnly) {
    DnaSample s({"ACGT", "ACGT"});
    s.sample.tv_weight = 0.0;
    ASSERT_EQ(s.sample.diff_dist("ACAA", "CCGA"), 1);  // a transversion and a transition
    EXPECT_EQ(s.sample.distance, 1.0);
    EXPECT_EQ(s.sample.distance_var, 0.25 * 0.75 * 4.0);  // L = 4
    ASSERT_EQ(s.sample.jk_dist("ACAA", "CCGA"), 1);
    EXPECT_NEAR(s.sample.distance, -0.75 * std::log(1.0 - 4.0 / 3.0 * 0.25), 1e-15);
}

TEST(DnaDistances, UndeterminedSubstitutionsTakeTheSmallerWeight) {
    DnaSample s({"AC", "AC"});
    PopulDNA& p = s.sample;
    const auto distance = [&](double ts, double tv) {
        p.ts_weight = ts;
        p.tv_weight = tv;
        EXPECT_EQ(p.diff_dist("AA", "BA"), 1);
        return p.distance;
    };
    EXPECT_EQ(distance(2.0, 5.0), 2.0);
    EXPECT_EQ(distance(5.0, 2.0), 2.0);
    EXPECT_EQ(distance(3.0, 3.0), 3.0);
    EXPECT_EQ(distance(3.0, -1.0), -1.0);  // the smaller weight, as it is
    EXPECT_EQ(distance(3.0, 0.0), 0.0);
    EXPECT_EQ(distance(0.0, 4.0), 0.0);  // then it only lengthens the comparison
    // Into the class of the weight: of 2 sites of weights 2 and 1, L = 3.
    p.ts_weight = 5.0;
    p.tv_weight = 2.0;
    ASSERT_EQ(p.p_dist("AA", "BA"), 1);
    EXPECT_EQ(p.tv_rate, 2.0 / 3.0);
    EXPECT_EQ(p.ts_rate, 0.0);
    // Equal weights: into the class of the transitions.
    p.ts_weight = p.tv_weight = 2.0;
    ASSERT_EQ(p.p_dist("AA", "BA"), 1);
    EXPECT_EQ(p.ts_rate, 2.0 / 3.0);
    EXPECT_EQ(p.tv_rate, 0.0);
    // Without transitions: the transversion A to C and L = 4 + 4; without both L = 1 + 1.
    p.ts_weight = 0.0;
    p.tv_weight = 4.0;
    ASSERT_EQ(p.p_dist("AA", "BC"), 1);
    EXPECT_EQ(p.distance, 0.5);
    p.tv_weight = 0.0;
    ASSERT_EQ(p.p_dist("AA", "B-"), 1);
    EXPECT_EQ(p.distance, 0.5);
}

TEST(DnaDistances, UndeterminedSubstitutionsAreDifferencesForJukesCantorOnly) {
    DnaSample s({"AAAA", "BAAA"});
    ASSERT_EQ(s.sample.jk_dist("AAAA", "BAAA"), 1);
    EXPECT_GT(s.sample.distance, 0.0);
    ASSERT_EQ(s.sample.kim2p_dist("AAAA", "BAAA"), 1);
    EXPECT_EQ(s.sample.distance, 0.0);
    EXPECT_EQ(s.sample.site_count, 4);
}

TEST(DnaDistances, DeletionsCountByTheirWeight) {
    DnaSample s({"ACGT", "A-GT"});
    ASSERT_EQ(s.sample.diff_dist("ACGT", "A-GT"), 1);
    EXPECT_EQ(s.sample.distance, 1.0);
    s.sample.del_weight = 3.0;
    ASSERT_EQ(s.sample.diff_dist("ACGT", "A-GT"), 1);
    EXPECT_EQ(s.sample.distance, 3.0);
    EXPECT_EQ(s.sample.distance_var, 0.5 * 0.5 * 6.0);  // L = 3 + 3
    s.sample.del_weight = 0.0;
    ASSERT_EQ(s.sample.diff_dist("ACGT", "A-GT"), 1);
    EXPECT_EQ(s.sample.distance, 0.0);
}

TEST(DnaDistances, ThreeQuartersOfDifferencesWarnForJukesCantor) {
    DnaSample s({"AAAA", "CCCA"});
    const CapturedReports captured;
    EXPECT_EQ(s.sample.jk_dist("AAAA", "CCCA"), 0);
    EXPECT_EQ(s.sample.distance, -0.75);
    EXPECT_EQ(captured.all(), (std::vector<Report>{{mnd::Warning, "PopulDNA::jk_dist()", 162}}));
}

TEST(DnaDistances, KimuraBeyondItsRangeIsNoNumberAndNoError) {
    DnaSample s({"AAAA", "GGGA"});
    const CapturedReports captured;
    EXPECT_EQ(s.sample.kim2p_dist("AAAA", "GGGA"), 1);  // P = 3/4, Q = 0
    EXPECT_TRUE(std::isnan(s.sample.distance));
    EXPECT_TRUE(captured.all().empty());
}

TEST(DnaDistances, OnlyUsableSitesAreCompared) {
    DnaSample s({"AAAA", "GAAA"});
    s.drop(0);
    ASSERT_EQ(s.sample.diff_dist("AAAA", "GAAG"), 1);
    EXPECT_EQ(s.sample.distance, 1.0);
    EXPECT_NEAR(s.sample.distance_var, (1.0 - 1.0 / 3.0) * (1.0 / 3.0) * 3.0, 1e-15);
}

// An empty list of flags: nothing was compared yet, and no site is left out.
TEST(DnaDistances, AllSitesAreComparedBeforeTheSampleIs) {
    PopulDNA sample;
    ASSERT_EQ(sample.diff_dist("AAAA", "GAAG"), 1);
    EXPECT_EQ(sample.distance, 2.0);
    ASSERT_EQ(sample.diff_dist("", ""), 1);
    EXPECT_EQ(sample.distance, 0.0);
    EXPECT_EQ(sample.distance_var, 0.0);
}

TEST(DnaDistances, PairwiseCompositionTakesBasesOfBothSequencesAtUsableSites) {
    DnaSample s({"ACGTN", "AAGT-"});
    s.drop(2);
    s.sample.compute_pairwise_nucl_freq("ACGTN", "AAGT-");
    // A, C, T and A, A, T: six bases.
    EXPECT_NEAR(s.sample.nucl_freq[0], 1.0 / 6.0, 1e-15);
    EXPECT_NEAR(s.sample.nucl_freq[1], 2.0 / 6.0, 1e-15);
    EXPECT_NEAR(s.sample.nucl_freq[2], 3.0 / 6.0, 1e-15);
    EXPECT_EQ(s.sample.nucl_freq[3], 0.0);
    s.sample.compute_pairwise_nucl_freq("??NN-", "-----");
    for (const double f : s.sample.nucl_freq)
        EXPECT_EQ(f, 0.0);
}

TEST(DnaDistances, CompositionOfTheSampleWeighsHaplotypesAndIgnoresUsableSites) {
    DnaSample s({"CCTA", "GN-A"}, {3, 1});
    s.drop(0);
    ASSERT_EQ(s.sample.comp_nucl_freq(), 1);
    // C 6, T 3, A 4, G 1 of 14 bases.
    EXPECT_NEAR(s.sample.nucl_freq[0], 6.0 / 14.0, 1e-15);
    EXPECT_NEAR(s.sample.nucl_freq[1], 3.0 / 14.0, 1e-15);
    EXPECT_NEAR(s.sample.nucl_freq[2], 4.0 / 14.0, 1e-15);
    EXPECT_NEAR(s.sample.nucl_freq[3], 1.0 / 14.0, 1e-15);
    EXPECT_NEAR(s.sample.gc_content, 0.5, 1e-15);
}

TEST(DnaDistances, CompositionOfTheSampleIsComputedOnce) {
    DnaSample s({"CCTA"});
    s.sample.nucl_freq = {0.1, 0.2, 0.3, 0.4};
    s.sample.gc_content = 0.7;
    ASSERT_EQ(s.sample.comp_nucl_freq(), 1);
    EXPECT_EQ(s.sample.nucl_freq[0], 0.1);
    EXPECT_EQ(s.sample.gc_content, 0.7);
}

TEST(DnaDistances, CompositionNeedsHaplotypes) {
    PopulDNA sample;
    const CapturedReports captured;
    EXPECT_EQ(sample.comp_nucl_freq(), 0);
    EXPECT_EQ(captured.all(), (std::vector<Report>{{mnd::Error, "PopulDNA::comp_nucl_freq()", 108}}));
}

// ---- The matrix.

class DnaMatrix : public mnd_test::SeededStream {
protected:
    mnd::settings s;
    mnd_test::CapturedOutput progress;  // keeps the progress line off the terminal

    static std::vector<std::string> random_texts(int n, int length, const std::string& alphabet) {
        std::vector<std::string> texts(static_cast<std::size_t>(n));
        std::string common;
        for (int k = 0; k < length; ++k)
            common += pick("ACGT");
        for (std::string& text : texts) {
            text = common;
            for (char& c : text) {
                if (next() < 0.15) c = pick(alphabet);
            }
        }
        return texts;
    }
    static char pick(const std::string& alphabet) {
        return alphabet[static_cast<std::size_t>(next() * static_cast<double>(alphabet.size()))];
    }
};

// Every cell of every method, with and without gamma, against the plain loop over the sites.
TEST_F(DnaMatrix, HoldsDistancesBelowAndStandardDeviationsAboveTheDiagonal) {
    const std::vector<std::string> texts = random_texts(9, 120, "ACGTACGT-?RN");
    for (int method = 0; method <= 6; ++method) {
        for (const double a : {0.0, 0.8}) {
            DnaSample t(texts);
            t.drop(5);
            t.sample.distance_method = method;
            t.sample.gamma_a = a;
            ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
            mnd_test::PlainDnaDistance plain;
            plain.method = method;
            plain.a = a;
            if (method >= 4) {
                plain.fC = t.sample.nucl_freq[0];
                plain.fT = t.sample.nucl_freq[1];
                plain.fA = t.sample.nucl_freq[2];
                plain.fG = t.sample.nucl_freq[3];
                plain.gc = t.sample.gc_content;
            }
            double largest = 0.0;
            for (int i = 0; i < 9; ++i) {
                EXPECT_EQ(t.cell(i, i), 0.0);
                for (int j = 0; j < i; ++j) {
                    plain.compare(texts[static_cast<std::size_t>(i)], texts[static_cast<std::size_t>(j)],
                                  t.sample.usable_site);
                    EXPECT_NEAR(t.cell(i, j), plain.distance, 1e-12);
                    EXPECT_NEAR(t.cell(j, i), std::sqrt(plain.variance), 1e-12);
                    largest = std::max(largest, plain.distance);
                }
            }
            EXPECT_EQ(t.sample.max_dist, static_cast<int>(largest));
            EXPECT_EQ(t.sample.nb_hapl, 9);
        }
    }
}

TEST_F(DnaMatrix, CellsAreThoseOfThePairMethods) {
    const std::vector<std::string> texts = random_texts(6, 80, "ACGT-?YW");
    for (int method = 0; method <= 6; ++method) {
        DnaSample t(texts);
        t.sample.distance_method = method;
        ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
        for (int i = 0; i < 6; ++i) {
            for (int j = 0; j < i; ++j) {
                const char* first = texts[static_cast<std::size_t>(i)].c_str();
                const char* second = texts[static_cast<std::size_t>(j)].c_str();
                ASSERT_EQ((t.sample.*kMethods[method])(first, second), 1);
                EXPECT_EQ(t.cell(i, j), t.sample.distance);
                EXPECT_EQ(t.cell(j, i), std::sqrt(t.sample.distance_var));
            }
        }
    }
}

TEST_F(DnaMatrix, LeavesTheWorkingValuesOfTheLastPair) {
    DnaSample t({"AAAACCCC", "AAAACCCT", "GAAACACC"});
    t.sample.distance_method = 2;
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
    EXPECT_EQ(t.sample.ts_count, 2);
    EXPECT_EQ(t.sample.tv_count, 1);
    EXPECT_EQ(t.sample.site_count, 8);
    EXPECT_EQ(t.sample.ts_rate, 0.25);
}

TEST_F(DnaMatrix, TheLargestDistanceIsThatOfTheLastMatrix) {
    DnaSample t({"AAAACCCC", "AAAACCTT"});
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
    EXPECT_EQ(t.sample.max_dist, 2);
    t.sample.distance_method = 3;
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
    EXPECT_EQ(t.sample.max_dist, 0);
}

TEST_F(DnaMatrix, ScalesProportionalMethodsToTheUsableSites) {
    DnaSample t({"AAAACCCCGG", "AAAACCCTGG"});
    t.drop(0);
    t.sample.distance_method = 3;
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 1), 1);
    EXPECT_NEAR(t.cell(1, 0), 1.0, 1e-15);
    EXPECT_NEAR(t.cell(0, 1), 9.0 * std::sqrt(8.0 / 9.0 / 9.0 / 9.0), 1e-14);
    t.sample.distance_method = 0;
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 1), 1);
    EXPECT_EQ(t.cell(1, 0), 1.0);
}

// A weight of -0.5 for the one difference: d = -0.5 and L = 0.5, so p = -1.
TEST_F(DnaMatrix, ANegativeVarianceGivesAStandardDeviationOfZero) {
    DnaSample t({"AA", "BA"});
    t.sample.tv_weight = -0.5;
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
    EXPECT_EQ(t.cell(1, 0), -0.5);
    EXPECT_EQ(t.sample.distance_var, -1.0);
    EXPECT_EQ(t.cell(0, 1), 0.0);
}

TEST_F(DnaMatrix, OneHaplotypeHasOnlyADiagonal) {
    DnaSample t({"ACGT"});
    for (int method = 0; method <= 6; ++method) {
        t.sample.distance_method = method;
        ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
        ASSERT_EQ(t.sample.dist_mat->rows, 1);
        EXPECT_EQ(t.cell(0, 0), 0.0);
        EXPECT_EQ(t.sample.max_dist, 0);
    }
}

TEST_F(DnaMatrix, DistancesThatAreNoNumberDoNotCountAsTheLargest) {
    DnaSample t({"AAAA", "GGGA", "AAAC"});
    t.sample.distance_method = 2;
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 1), 1);
    EXPECT_TRUE(std::isnan(t.cell(1, 0)));
    // K of "AAAA" and "AAAC": Q = 1/4, times 4 sites; that of the others is no number either.
    EXPECT_EQ(t.sample.max_dist, static_cast<int>(4.0 * (-0.5 * std::log(0.75) - 0.25 * std::log(0.5))));
}

TEST_F(DnaMatrix, ASampleWithoutHaplotypesIsReported) {
    PopulDNA sample;
    const CapturedReports captured;
    EXPECT_EQ(sample.compute_distance_matrix(nullptr, &s, 0), 0);
    EXPECT_EQ(captured.all(),
              (std::vector<Report>{{mnd::Error, "PopulDNA::compute_distance_matrix()", 108}}));
}

TEST_F(DnaMatrix, APairWithoutADistanceStopsTheMatrix) {
    DnaSample t({"AAAA", "CCCA", "CCCC"});
    t.sample.distance_method = 1;
    const CapturedReports captured;
    EXPECT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 0);
    EXPECT_EQ(captured.all(),
              (std::vector<Report>{{mnd::Warning, "PopulDNA::jk_dist()", 162},
                                   {mnd::Error, "PopulDNA::compute_distance_matrix(ofstream)", 136}}));
    EXPECT_EQ(t.sample.distance, -0.75);
    EXPECT_EQ(t.sample.dist_mat, nullptr);
}

TEST_F(DnaMatrix, TheStopFlagEndsTheWork) {
    DnaSample t({"AAAA", "CCCA", "CCCC"});
    s.stop_computations = 1;
    EXPECT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 0);
    EXPECT_EQ(t.sample.dist_mat, nullptr);
}

TEST_F(DnaMatrix, WithoutContentAllDistancesAreZero) {
    DnaSample t({"", ""});
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
    EXPECT_EQ(t.cell(1, 0), 0.0);
}

TEST_F(DnaMatrix, ShorterSequencesAreMissingBeyondTheirEnd) {
    DnaSample t({"AAAA", "GA"});
    t.sample.distance_method = 3;
    ASSERT_EQ(t.sample.compute_distance_matrix(nullptr, &s, 0), 1);
    EXPECT_EQ(t.cell(1, 0), 0.25);
}

TEST_F(DnaMatrix, IsWrittenAsATable) {
    const mnd_test::TempFolder folder;
    DnaSample t({"AAAAAAAA", "AAAAAAAG", "AAAAAACG"});
    std::fstream out((folder / "matrix.txt"), std::ios::out);
    out << std::scientific << std::left;
    ASSERT_EQ(t.sample.compute_distance_matrix(&out, &s, 0), 1);
    out << 1.0;  // the stream's own format is back
    out.close();
    // d = 1: var = 7/8; d = 2: var = 3/4 * 2 = 3/2.
    EXPECT_EQ(mnd_test::read_text(folder / "matrix.txt"),
              "\nInter-haplotypic distance matrix:\n\n"
              "          0.9354  1.2247\n"
              "  1.0000          0.9354\n"
              "  2.0000  1.0000        \n"
              "1.000000e+00");
}

}  // namespace
