#include "between/pairwise_tables.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "foundation/data_type.h"
#include "results/xml_tags.h"
#include "run/settings.h"
#include "support/temp_folder.h"

namespace mnd {
namespace {

using mnd_test::contains;
using mnd_test::TempFolder;

class PairwiseTables : public ::testing::Test {
protected:
    void SetUp() override {
        s_.PrintFstVals = 0;
        s_.PrintMissIntermatchs = 0;
        s_.ComputeDeltaMuSqr = 0;
        s_.UnequalPopSizeDiv = 0;
        s_.PrintConcestryCoeff = 0;
        s_.PrintSlatkinsDist = 0;
        s_.ComputeConventionalFST = 0;
        s_.data_type = DNA;
        s_.DistanceMethodAMOVA = 0;
        s_.FSTSignifLevel = 0.05;
        results_.names = {"Alpha", "Beta & Co", "Gamma"};
        results_.compared = true;
        set(results_.fst, 0.25, -0.125, 1.0);
    }
    void TearDown() override { xmlOutput = false; }

    // The cells of samples 2 and 1, 3 and 1, 3 and 2.
    static void set(TriMat& m, double c21, double c31, double c32) {
        m(1, 0) = c21;
        m(2, 0) = c31;
        m(2, 1) = c32;
    }

    std::string text() {
        std::ostringstream out;
        print_pairwise_tables(out, s_, results_);
        return out.str();
    }

    settings s_;
    PairwiseResults results_{3, true, true};
};

const std::string kHead =
    "\n"
    "======================================================================================\n"
    "== Comparisons of pairs of population samples\n"
    "======================================================================================\n"
    "\nList of labels for population samples used below:\n\n"
    "Label  \tPopulation name\n"
    "-----  \t---------------\n"
    "  1:\tAlpha\n"
    "  2:\tBeta &amp; Co\n"
    "  3:\tGamma\n";

TEST_F(PairwiseTables, BannerAndLabelsAreAlwaysThere) {
    EXPECT_EQ(text(), kHead);
    const std::string rule(86, '=');
    EXPECT_TRUE(contains(text(), rule + "\n== Comparisons"));
    EXPECT_FALSE(contains(text(), rule + "="));
}

TEST_F(PairwiseTables, Fst) {
    s_.PrintFstVals = 1;
    EXPECT_EQ(text(), kHead +
                          "\n\n------------------------\n"
                          "Population pairwise FSTs\n"
                          "------------------------\n"
                          "\nDistance method: Pairwise difference\n"
                          "\n"
                          "                 1           2           3\n"
                          "     1     0.00000\n"
                          "     2     0.25000     0.00000\n"
                          "     3    -0.12500     1.00000     0.00000\n");
}

TEST_F(PairwiseTables, MethodOfOtherData) {
    s_.PrintFstVals = 1;
    s_.data_type = MICROSAT;
    s_.DistanceMethodAMOVA = 1;
    EXPECT_TRUE(contains(text(), "\nDistance method: Sum of squared size difference (RST)\n"));
    s_.data_type = FREQUENCY;
    EXPECT_TRUE(contains(text(), "\nDistance method: Pairwise differences\n"));
    s_.ComputeConventionalFST = 1;
    EXPECT_TRUE(contains(text(), "\nComputing conventional F-Statistics from haplotype frequencies\n"));
    EXPECT_FALSE(contains(text(), "Distance method"));
}

TEST_F(PairwiseTables, PValuesAndSignificance) {
    s_.PrintFstVals = 1;
    results_.tested = true;
    results_.num_perm = 1023;
    set(results_.fst_p, 0.04999, 0.05, 0.5);
    EXPECT_TRUE(contains(text(),
                         "\n\n------------\n"
                         "FST P values\n"
                         "------------\n"
                         "\nNumber of permutations : 1023\n"
                         "\n"
                         "                 1              2              3   \n"
                         "     1\n"
                         "     2     0.04999  *\n"
                         "     3     0.05000        0.50000   \n"
                         "\n\n----------------------------------\n"
                         "Matrix of significant Fst P values\n"
                         "----------------------------------\n"
                         "\nSignificance Level=0.0500\n"
                         "\n"
                         "                 1           2           3\n"
                         "     1                       +           -\n"
                         "     2           +                       -\n"
                         "     3           -           -            \n"));
}

TEST_F(PairwiseTables, Differences) {
    s_.PrintMissIntermatchs = 1;
    results_.pi(0, 0) = 1.0;
    results_.pi(0, 1) = 2.0;
    results_.pi(1, 0) = -0.5;
    results_.pi(2, 2) = 123456.789;
    EXPECT_EQ(text(),
              kHead +
                  "\n\n---------------------------------------\n"
                  "Population average pairwise differences\n"
                  "---------------------------------------\n"
                  "\nAbove diagonal    : Average number of pairwise differences between populations (PiXY)"
                  "\nDiagonal elements : Average number of pairwise differences within population (PiX)"
                  "\nBelow diagonal    : Corrected average pairwise difference (PiXY-(PiX+PiY)/2)\n"
                  "\n"
                  "                 1           2           3\n"
                  "     1     1.00000     2.00000     0.00000\n"
                  "     2    -0.50000     0.00000     0.00000\n"
                  "     3     0.00000     0.00000 123456.78900\n");
}

TEST_F(PairwiseTables, PValuesOfDifferencesNeedATestOnly) {
    results_.tested = true;
    set(results_.pi_p, 0.1, 0.2, 0.3);
    set(results_.pi_corr_p, 0.4, 0.5, 0.6);
    EXPECT_EQ(text(), kHead +
                          "\n\n-----------\n"
                          "PXY P value\n"
                          "-----------\n"
                          "\n"
                          "                 1           2           3\n"
                          "     1\n"
                          "     2     0.10000\n"
                          "     3     0.20000     0.30000\n"
                          "\n\n---------------------\n"
                          "Corrected PXY P value\n"
                          "---------------------\n"
                          "\n"
                          "                 1           2           3\n"
                          "     1\n"
                          "     2     0.40000\n"
                          "     3     0.50000     0.60000\n");
}

TEST_F(PairwiseTables, DeltaMuSquare) {
    s_.ComputeDeltaMuSqr = 1;
    set(results_.delta_mu, 0.5, 10.0, 3.25);
    const std::string found = text();
    EXPECT_TRUE(contains(found,
                         "\nDelta mu-square distance between all pairs of populations\n"
                         "---------------------------------------------------------\n"
                         "Reference: <i>Goldstein, D. B., "));
    EXPECT_TRUE(contains(found,
                         "     1     0.00000\n"
                         "     2     0.50000     0.00000\n"
                         "     3    10.00000     3.25000     0.00000\n"));
}

TEST_F(PairwiseTables, DivergenceNeedsTheTableOfDifferences) {
    s_.UnequalPopSizeDiv = 1;
    EXPECT_FALSE(contains(text(), "Divergence times"));
    s_.PrintMissIntermatchs = 1;
    EXPECT_TRUE(contains(text(), "\nDivergence times allowing for unequal population sizes (tau)\n"));
}

TEST_F(PairwiseTables, DivergenceMarksWhatWasNotFound) {
    s_.UnequalPopSizeDiv = 1;
    s_.PrintMissIntermatchs = 1;
    set(results_.tau, 1.5, 0.0, 7.25);
    set(results_.k_ratio, 0.5, 0.0, 0.125);
    set(results_.theta0, 2.5, 0.0, -3.0);
    set(results_.not_converged, 0.0, 0.0, 1.0);
    const std::string found = text();
    const std::string header = "\n                 1            2            3 \n     1\n";
    const std::string foot =
        "\nAn * denotes the cases where the estimation of divergence time did not converge\n";
    EXPECT_TRUE(contains(found, "\ntau values\n----------\n" + header +
                                    "     2     1.50000 \n     3     0.00000      7.25000*\n" + foot));
    EXPECT_TRUE(contains(found, "\nUnequal population sizes (k)\n----------------------------\n" + header +
                                    "     2     0.50000 \n     3     0.00000      0.12500*\n" + foot));
    EXPECT_TRUE(
        contains(found, "\nAncestral population sizes (theta0)\n-----------------------------------\n" +
                            header + "     2     2.50000 \n     3     0.00000     -3.00000*\n" + foot));
    // Without a test there are no P-values to show.
    EXPECT_FALSE(contains(found, "P values"));
}

TEST_F(PairwiseTables, TransformsOfFst) {
    s_.PrintConcestryCoeff = 1;
    s_.PrintSlatkinsDist = 1;
    EXPECT_EQ(text(), kHead);
    s_.PrintFstVals = 1;
    const std::string found = text();
    // 0.25, -0.125 and 1: -ln 0.75 = 0.28768, 1/3, 0.75/0.5.
    EXPECT_TRUE(contains(found,
                         "\nMatrix of coancestry coefficients as t/M=-ln(1-FST)\n"
                         "(M=N for haploid data, M=2N for diploid data)\n"));
    EXPECT_TRUE(contains(found,
                         "     1     0.00000\n"
                         "     2     0.28768     0.00000\n"
                         "     3           0         inf     0.00000\n"));
    EXPECT_TRUE(contains(found,
                         "\nMatrix of Slatkin linearized FSTs as t/M=FST/(1-FST)\n"
                         "(M=N for haploid data, M=2N for diploid data)\n"));
    EXPECT_TRUE(contains(found,
                         "     1     0.00000\n"
                         "     2     0.33333     0.00000\n"
                         "     3           0         inf     0.00000\n"));
    EXPECT_TRUE(contains(found, "\nMatrix of M values (M=Nm for haploid data, M=2Nm for diploid data)\n"));
    EXPECT_TRUE(contains(found,
                         "     1         inf\n"
                         "     2     1.50000         inf\n"
                         "     3         inf     0.00000         inf\n"));
}

TEST_F(PairwiseTables, PValuesOfDivergenceStandBelowTheirValues) {
    s_.UnequalPopSizeDiv = s_.PrintMissIntermatchs = 1;
    results_.tested = true;
    set(results_.tau_p, 0.11, 0.12, 0.13);
    set(results_.k_p, 0.21, 0.22, 0.23);
    set(results_.theta0_p, 0.31, 0.32, 0.33);
    const std::string found = text();
    const std::string header = "\n                 1           2           3\n     1\n";
    EXPECT_TRUE(contains(found, "\ntau P values\n------------\n" + header +
                                    "     2     0.11000\n     3     0.12000     0.13000\n\n\n"
                                    "----------------------------\nUnequal population sizes (k)\n"));
    EXPECT_TRUE(contains(found, "\nk P values\n----------\n" + header +
                                    "     2     0.21000\n     3     0.22000     0.23000\n\n\n"
                                    "-----------------------------------\n"
                                    "Ancestral population sizes (theta0)\n"));
    EXPECT_TRUE(contains(found, "\ntheta0 P values\n---------------\n" + header +
                                    "     2     0.31000\n     3     0.32000     0.33000\n"));
}

// In the order of the sections of the document.
TEST_F(PairwiseTables, AllTablesInTheirOrder) {
    s_.PrintFstVals = s_.PrintMissIntermatchs = s_.ComputeDeltaMuSqr = s_.UnequalPopSizeDiv = 1;
    s_.PrintConcestryCoeff = s_.PrintSlatkinsDist = 1;
    results_.tested = true;
    const std::string found = text();
    std::size_t at = 0;
    for (const char* title :
         {"== Comparisons of pairs of population samples",
          "List of labels for population samples used below:", "Population pairwise FSTs", "FST P values",
          "Matrix of significant Fst P values", "Population average pairwise differences", "\nPXY P value",
          "Corrected PXY P value", "Delta mu-square distance between all pairs of populations",
          "Divergence times allowing for unequal population sizes (tau)", "tau values", "tau P values",
          "Unequal population sizes (k)", "k P values", "Ancestral population sizes (theta0)",
          "theta0 P values", "Matrix of coancestry coefficients as t/M=-ln(1-FST)",
          "Matrix of Slatkin linearized FSTs as t/M=FST/(1-FST)", "Matrix of M values"}) {
        const std::size_t next = found.find(title, at);
        ASSERT_NE(next, std::string::npos) << title;
        at = next + 1;
    }
}

TEST_F(PairwiseTables, WhatWasNotComputedIsNotShown) {
    s_.PrintFstVals = s_.PrintMissIntermatchs = s_.UnequalPopSizeDiv = 1;
    s_.PrintConcestryCoeff = s_.PrintSlatkinsDist = 1;
    results_.compared = false;
    EXPECT_EQ(text(), kHead);
}

TEST_F(PairwiseTables, TablesAreTaggedInXml) {
    s_.PrintFstVals = s_.PrintMissIntermatchs = s_.UnequalPopSizeDiv = 1;
    s_.PrintConcestryCoeff = s_.PrintSlatkinsDist = 1;
    results_.tested = true;
    xmlOutput = true;
    const std::string found = text();
    for (const char* tag : {"pairDistPopLabels", "PairFstMat", "PairFstPvalMat", "pairwiseDifferenceMatrix",
                            "tauMatrix", "ancestralPopSize", "coancestryCoefficients", "slatkinFst"}) {
        EXPECT_EQ(mnd_test::count_of(found, std::string("<") + tag + " "), 1) << tag;
        EXPECT_EQ(mnd_test::count_of(found, std::string("</") + tag + ">"), 1) << tag;
    }
}

TEST_F(PairwiseTables, StreamKeepsItsFormat) {
    s_.PrintFstVals = 1;
    results_.tested = true;
    std::ostringstream out;
    out << std::hex;
    out.precision(3);
    print_pairwise_tables(out, s_, results_);
    out.str("");
    out << 255 << ' ' << 0.12345;
    EXPECT_EQ(out.str(), "ff 0.123");
}

// --- Batch summaries

class PairwiseRows : public PairwiseTables {
protected:
    void SetUp() override {
        PairwiseTables::SetUp();
        for (auto& [file, name] : streams())
            *file = new std::ofstream(folder_ / name);
        s_.PrintFstVals = s_.PrintMissIntermatchs = s_.UnequalPopSizeDiv = 1;
        s_.PrintConcestryCoeff = s_.PrintSlatkinsDist = 1;
    }
    void TearDown() override { close(); }

    void close() {
        for (auto& [file, name] : streams()) {
            delete *file;
            *file = nullptr;
        }
    }
    static std::vector<std::pair<std::ofstream**, const char*>> streams() {
        return {{&ofs_pairw_dist, "pairw"}, {&ofs_FST_dist, "fst"},    {&ofs_varComp_dist, "var"},
                {&ofs_pairw_diffs, "diff"}, {&ofs_tau_uneq, "tau"},    {&ofs_concest, "concest"},
                {&ofs_slatkins, "slatkin"}, {&ofs_NM_vals, "migrants"}};
    }
    std::string row(const char* name) { return mnd_test::read_text(folder_ / name); }
    void write() {
        write_pairwise_rows(s_, results_, "a dir/p.mnp");
        close();
    }

    TempFolder folder_;
};

TEST_F(PairwiseRows, EachSummaryGetsARow) {
    set(results_.fst_var, 1.0, 2.0, 3.0);
    set(results_.tau, 4.0, 5.0, 6.0);
    results_.pi(0, 1) = 9.0;
    write();
    const std::string project = "\"a dir/p.mnp\"\t";
    EXPECT_EQ(row("fst"), project + "0.25000\t-0.12500\t1.00000\t\n");
    EXPECT_EQ(row("pairw"), row("fst"));
    EXPECT_EQ(row("var"), project + "1.00000\t2.00000\t3.00000\t\n");
    EXPECT_EQ(row("tau"), project + "4.00000\t5.00000\t6.00000\t\n");
    EXPECT_EQ(row("concest"), project + "0.28768\t0\tinf\t\n");
    EXPECT_EQ(row("slatkin"), project + "0.33333\t0\tinf\t\n");
    EXPECT_EQ(row("migrants"), project + "1.50000\tinf\t0.00000\t\n");
    EXPECT_EQ(row("diff"), project +
                               "0.00000\t9.00000\t0.00000\t0.00000\t0.00000\t0.00000\t0.00000\t0.00000\t"
                               "0.00000\t\n");
}

TEST_F(PairwiseRows, PairsGetPValuesWithTheirErrors) {
    results_.tested = true;
    results_.num_perm = 110;
    set(results_.fst_p, 0.5, 0.25, 0.0);
    set(results_.fst_sd, 0.01, 0.02, 0.0);
    write();
    EXPECT_EQ(row("pairw"),
              "\"a dir/p.mnp\"\t0.25000\t-0.12500\t1.00000\t\n"
              "p-Values matrix : No of permutations : 110\n"
              "0.50000+-0.01000\t\n"
              "0.25000+-0.02000\t0.00000+-0.00000\t\n");
}

TEST_F(PairwiseRows, NothingIsWrittenWithoutAStream) {
    close();
    write();
    EXPECT_EQ(row("fst"), "");
}

TEST_F(PairwiseRows, OnlyWhatWasAskedForIsWritten) {
    s_.PrintMissIntermatchs = s_.PrintConcestryCoeff = s_.PrintSlatkinsDist = 0;
    write();
    EXPECT_NE(row("fst"), "");
    EXPECT_EQ(row("diff"), "");
    EXPECT_EQ(row("tau"), "");
    EXPECT_EQ(row("concest"), "");
    EXPECT_EQ(row("slatkin"), "");
    EXPECT_EQ(row("migrants"), "");
}

}  // namespace
}  // namespace mnd
