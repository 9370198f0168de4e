#include "within/molecular_diversity.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "foundation/message_codes.h"
#include "model/popul_dna.h"
#include "model/popul_microsat.h"
#include "model/popul_rflp.h"
#include "model/popul_standard.h"
#include "run/process.h"
#include "run/settings.h"
#include "support/project_log.h"
#include "support/seeded_stream.h"
#include "within/text_sample.h"

namespace {

using mnd::molecular_diversity;
using mnd::MolecularDiversity;
using mnd::PopulDNA;
using mnd::PopulMicrosat;
using mnd::PopulRFLP;
using mnd::PopulStandard;
using mnd::settings;
using mnd_test::ProjectLog;
using mnd_test::TextSample;

// --- The formulae

TEST(MolecularDiversity, ByHand) {
    // 5 copies, 10 pairs that differ at 24 sites in all, of 12 sites: pi = 2.4, d = 0.2
    // Var(pi) = (2.4^2 x 66 + 3 x 30 x 2.4)/(275 - 35 + 6) = (380.16 + 216)/246
    // Var(d) = 66 x 0.04/(9 x 20) + 6 x 0.2/(3 x 4 x 12)
    const MolecularDiversity d = molecular_diversity(24.0, 5.0, 12);
    EXPECT_DOUBLE_EQ(d.mean_pairwise_diff, 2.4);
    EXPECT_DOUBLE_EQ(d.nucl_diversity, 0.2);
    EXPECT_DOUBLE_EQ(d.sd_pairwise_diff, std::sqrt(596.16 / 246.0));
    EXPECT_DOUBLE_EQ(d.sd_nucl_diversity, std::sqrt(2.64 / 180.0 + 1.2 / 144.0));
}

// With V = b1 theta + b2 theta^2 (Tajima 1983), pi^2 - V estimates theta^2 without bias, so
// that (b1 pi + b2 pi^2)/(1 + b2) estimates V.
TEST(MolecularDiversity, VarianceOfPiIsTheUnbiasedOne) {
    for (const double n : {2.0, 7.0, 60.0}) {
        for (const double pi : {0.1, 3.0, 25.0}) {
            const double b1 = (n + 1.0) / (3.0 * (n - 1.0));
            const double b2 = 2.0 * (n * n + n + 3.0) / (9.0 * n * (n - 1.0));
            const double sd = std::sqrt((b1 * pi + b2 * pi * pi) / (1.0 + b2));
            EXPECT_NEAR(molecular_diversity(pi * n * (n - 1.0) / 2.0, n, 10).sd_pairwise_diff, sd,
                        1e-12 * sd);
        }
    }
}

TEST(MolecularDiversity, OneCopyOrNoUsableSiteGivesZeros) {
    for (const MolecularDiversity& d : {molecular_diversity(5.0, 1.0, 10), molecular_diversity(5.0, 0.0, 10),
                                        molecular_diversity(5.0, 8.0, 0)}) {
        EXPECT_EQ(d.mean_pairwise_diff, 0.0);
        EXPECT_EQ(d.sd_pairwise_diff, 0.0);
        EXPECT_EQ(d.nucl_diversity, 0.0);
        EXPECT_EQ(d.sd_nucl_diversity, 0.0);
    }
}

TEST(MolecularDiversity, AVarianceThatIsNotAboveZeroGivesNoDeviation) {
    const MolecularDiversity d = molecular_diversity(-1.0, 10.0, 5);
    EXPECT_LT(d.mean_pairwise_diff, 0.0);
    EXPECT_EQ(d.sd_pairwise_diff, 0.0);
    EXPECT_EQ(d.sd_nucl_diversity, 0.0);
    EXPECT_EQ(molecular_diversity(std::numeric_limits<double>::quiet_NaN(), 10.0, 5).sd_pairwise_diff, 0.0);
}

// --- Samples

class MolecularDiversityOfSamples : public mnd_test::SeededStream {
protected:
    void SetUp() override {
        SeededStream::SetUp();
        silent_before_ = mnd::silentMendrake;
        mnd::silentMendrake = true;
    }
    void TearDown() override { mnd::silentMendrake = silent_before_; }

    ProjectLog log_;
    settings s_;

private:
    bool silent_before_ = false;
};

TEST_F(MolecularDiversityOfSamples, DnaByHand) {
    // Counts 2, 1, 2. h1-h2: 1 site, h1-h3: 2, h2-h3: 3. Total 2 x 1 x 1 + 2 x 2 x 2 + 1 x 2 x 3 = 16
    TextSample<PopulDNA> s({"ACGTACGT", "ACGTACGA", "ACGTCCTT"}, {2, 1, 2});
    EXPECT_EQ(s.sample.compute_molecular_diversity(s_), 1);
    EXPECT_DOUBLE_EQ(s.sample.mean_pairwise_diff, 1.6);
    EXPECT_DOUBLE_EQ(s.sample.nucl_diversity, 0.2);
    EXPECT_DOUBLE_EQ(s.sample.sd_pairwise_diff, molecular_diversity(16.0, 5.0, 8).sd_pairwise_diff);
    EXPECT_DOUBLE_EQ(s.sample.sd_nucl_diversity, molecular_diversity(16.0, 5.0, 8).sd_nucl_diversity);
}

// Any sample of sequences, pair of gene copies by pair of gene copies.
TEST_F(MolecularDiversityOfSamples, DnaAgreesWithAllPairsOfCopies) {
    for (int round = 0; round < 20; ++round) {
        std::vector<std::string> contents;
        std::vector<int> counts;
        std::vector<std::string> copies;
        for (int h = 0; h < 6; ++h) {
            std::string text;
            for (int site = 0; site < 12; ++site)
                text += "ACGT-?"[static_cast<int>(next() * 6.0)];
            contents.push_back(text);
            counts.push_back(1 + static_cast<int>(next() * 4.0));
            copies.insert(copies.end(), static_cast<std::size_t>(counts.back()), text);
        }
        double total = 0.0;
        for (std::size_t i = 0; i < copies.size(); ++i) {
            for (std::size_t j = 0; j < i; ++j) {
                for (std::size_t site = 0; site < 12; ++site) {
                    const char a = copies[i][site];
                    const char b = copies[j][site];
                    total += a != b && a != '?' && b != '?' ? 1.0 : 0.0;
                }
            }
        }
        TextSample<PopulDNA> s(contents, counts);
        const double n = static_cast<double>(copies.size());
        ASSERT_EQ(s.sample.compute_molecular_diversity(s_), 1);
        EXPECT_NEAR(s.sample.mean_pairwise_diff, total / (n * (n - 1.0) / 2.0), 1e-12);
    }
}

TEST_F(MolecularDiversityOfSamples, WeightsAreTakenFromTheSettings) {
    // One transition, one transversion, one deletion between two copies.
    TextSample<PopulDNA> s({"AAAC", "GC-C"});
    s_.TransitionWeight = 2.0;
    s_.TranversionWeight = 3.0;
    s_.DeletionWeight = 5.0;
    ASSERT_EQ(s.sample.compute_molecular_diversity(s_), 1);
    EXPECT_DOUBLE_EQ(s.sample.mean_pairwise_diff, 10.0);
}

TEST_F(MolecularDiversityOfSamples, AMatrixThatIsThereServesAsItIs) {
    TextSample<PopulDNA> s({"AAAC", "GC-C"});
    ASSERT_EQ(s.sample.compute_distance_matrix(nullptr, &s_, 0), 1);
    s_.TransitionWeight = 20.0;
    ASSERT_EQ(s.sample.compute_molecular_diversity(s_), 1);
    EXPECT_DOUBLE_EQ(s.sample.mean_pairwise_diff, 3.0);
    EXPECT_DOUBLE_EQ(s.sample.ts_weight, 1.0);
}

TEST_F(MolecularDiversityOfSamples, DistancesPerSiteAreMultipliedByTheSites) {
    TextSample<PopulDNA> s({"ACGTACGT", "ACGTACGA", "ACGTCCTT"}, {2, 1, 2});
    s.sample.distance_method = 3;  // proportion of differences: 16/8 over 10 pairs
    ASSERT_EQ(s.sample.compute_molecular_diversity(s_), 1);
    EXPECT_DOUBLE_EQ(s.sample.mean_pairwise_diff, 1.6);
    s.sample.dist_mat.reset();
    s.sample.distance_method = 1;  // Jukes and Cantor: -3/4 ln(1 - 4/3 p)
    ASSERT_EQ(s.sample.compute_molecular_diversity(s_), 1);
    const auto jukes_cantor = [](double p) { return -0.75 * std::log(1.0 - 4.0 * p / 3.0); };
    const double total = 2.0 * jukes_cantor(1.0 / 8.0) + 4.0 * jukes_cantor(0.25) + 2.0 * jukes_cantor(0.375);
    EXPECT_NEAR(s.sample.mean_pairwise_diff, 8.0 * total / 10.0, 1e-12);
    EXPECT_NEAR(s.sample.nucl_diversity, total / 10.0, 1e-13);
}

TEST_F(MolecularDiversityOfSamples, AnUnknownMethodIsTheNumberOfDifferences) {
    TextSample<PopulDNA> s({"ACGTACGT", "ACGTACGA", "ACGTCCTT"}, {2, 1, 2});
    s.sample.distance_method = 9;
    ASSERT_EQ(s.sample.compute_molecular_diversity(s_), 1);
    EXPECT_DOUBLE_EQ(s.sample.mean_pairwise_diff, 1.6);
}

TEST_F(MolecularDiversityOfSamples, RflpUnderBothMethods) {
    // 3 copies: distances 2 (twice) and 0
    TextSample<PopulRFLP> s({"1010", "0110"}, {2, 1});
    for (const int method : {0, 1, 5}) {
        s.sample.dist_mat.reset();
        s.sample.distance_method = method;
        ASSERT_EQ(s.sample.compute_molecular_diversity(s_), 1);
        EXPECT_DOUBLE_EQ(s.sample.mean_pairwise_diff, 4.0 / 3.0) << method;
        EXPECT_DOUBLE_EQ(s.sample.nucl_diversity, 1.0 / 3.0) << method;
    }
}

TEST(MolecularDiversity, AlleleListsAreNotMultipliedByTheLoci) {
    const ProjectLog log;
    settings s;
    mnd::TAlleleDB db;
    TextSample<PopulMicrosat> microsat({"10 7", "12 8"}, {2, 1});
    microsat.add_alleles(db, {{"10", "7"}, {"12", "8"}});
    mnd::TAlleleDB other_db;
    TextSample<PopulStandard> standard({"A x", "B y"}, {2, 1});
    standard.add_alleles(other_db, {{"A", "x"}, {"B", "y"}});
    const bool silent = mnd::silentMendrake;
    mnd::silentMendrake = true;
    // Squared size differences: 2 pairs of 4 + 1, of 3 pairs.
    microsat.sample.distance_method = 1;
    ASSERT_EQ(microsat.sample.compute_molecular_diversity(s), 1);
    EXPECT_DOUBLE_EQ(microsat.sample.mean_pairwise_diff, 10.0 / 3.0);
    EXPECT_EQ(microsat.sample.nucl_diversity, 0.0);
    standard.sample.distance_method = 1;
    ASSERT_EQ(standard.sample.compute_molecular_diversity(s), 1);
    EXPECT_DOUBLE_EQ(standard.sample.mean_pairwise_diff, 4.0 / 3.0);
    EXPECT_EQ(standard.sample.nucl_diversity, 0.0);
    mnd::silentMendrake = silent;
}

TEST_F(MolecularDiversityOfSamples, ASingleCopyHasNone) {
    TextSample<PopulDNA> s({"ACGT"}, {1});
    s.sample.mean_pairwise_diff = 5.0;
    EXPECT_EQ(s.sample.compute_molecular_diversity(s_), 1);
    EXPECT_EQ(s.sample.mean_pairwise_diff, 0.0);
    EXPECT_EQ(s.sample.sd_nucl_diversity, 0.0);
}

TEST_F(MolecularDiversityOfSamples, HaplotypesWithoutContentHaveNone) {
    TextSample<PopulDNA> s({"", ""}, {2, 3});
    s.use_all(4);
    EXPECT_EQ(s.sample.compute_molecular_diversity(s_), 1);
    EXPECT_EQ(s.sample.mean_pairwise_diff, 0.0);
}

TEST_F(MolecularDiversityOfSamples, ReportsASampleWithoutHaplotypes) {
    PopulStandard empty;
    EXPECT_EQ(empty.compute_molecular_diversity(s_), 0);
    EXPECT_TRUE(log_.reports("ERROR", "PopulStandard::compute_molecular_diversity()",
                             "distance matrix could not be computed"));
    EXPECT_TRUE(
        log_.reports("ERROR", "PopulStandard::compute_molecular_diversity()", "haplotype list is empty"));
}

TEST_F(MolecularDiversityOfSamples, ReportsDistancesThatDoNotExist) {
    // Beyond Jukes and Cantor: 4 of 4 sites differ.
    TextSample<PopulDNA> s({"ACGT", "CATG"});
    s.sample.distance_method = 1;
    s.sample.mean_pairwise_diff = 5.0;
    EXPECT_EQ(s.sample.compute_molecular_diversity(s_), 0);
    EXPECT_TRUE(log_.reports("ERROR", "PopulDNA::compute_molecular_diversity()",
                             "distance matrix could not be computed"));
    EXPECT_TRUE(
        log_.reports("ERROR", "PopulDNA::compute_molecular_diversity()", "distance matrix does not exist"));
    EXPECT_EQ(s.sample.mean_pairwise_diff, 5.0);
}

}  // namespace
