#include "within/diversity_blocks.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>

#include "model/popul_dna.h"
#include "model/popul_microsat.h"
#include "model/popul_rflp.h"
#include "model/popul_standard.h"
#include "results/citations.h"
#include "results/xml_tags.h"
#include "run/settings.h"
#include "within/text_sample.h"

namespace {

using mnd::kNumericalInfinity;
using mnd::PopulDNA;
using mnd::PopulMicrosat;
using mnd::PopulRFLP;
using mnd::PopulStandard;
using mnd::References;
using mnd::settings;

// What a function prints.
template <class Print>
std::string printed(Print print) {
    std::ostringstream out;
    print(out);
    return out.str();
}

// --- Standard indices

class StandardBlock : public ::testing::Test {
protected:
    StandardBlock() {
        sample_.sample_size = 20.0;
        sample_.nb_hapl = 7;
        sample_.nb_loci = 12;
        sample_.nb_usable_loci = 11;
        sample_.nb_polym_loci = 4;
        sample_.allowed_missing = 0.125;
        sample_.sum_sq_freq = 0.25;
        sample_.heterozygosity = 0.789474;
        sample_.sd_heterozygosity = 0.0123456;
    }
    std::string block() const {
        return printed([this](std::ostream& out) {
            print_standard_indices(out, sample_, "\nNo. of polymorphic loci  : ");
        });
    }
    PopulStandard sample_;
};

constexpr const char* kRest =
    "\nNo. of loci              : 12"
    "\nNo. of usable loci       : 11 loci with less than 12.50 % missing data"
    "\nNo. of polymorphic loci  : 4\n"
    "\nHaplotype-level computations\n"
    "----------------------------\n";
constexpr const char* kEnd =
    "\nSum of square freqs.     : 0.25000"
    "\nGene diversity           : 0.78947 +/- 0.01235"
    "\n(Standard deviation is for the sampling process)\n";

TEST_F(StandardBlock, OfHaplotypes) {
    EXPECT_EQ(block(),
              "No. of gene copies       : 20\nNo. of sequences         : 7" + std::string(kRest) + kEnd);
}

TEST_F(StandardBlock, OfKnownPhase) {
    sample_.profile.GenotypicData = 1;
    sample_.profile.GameticPhase = 1;
    EXPECT_EQ(block(),
              "No. of gene copies       : 20\nNo. of sequences         : 7" + std::string(kRest) + kEnd);
}

TEST_F(StandardBlock, OfUnknownPhaseCountsNoSequencesAndCautions) {
    sample_.profile.GenotypicData = 1;
    sample_.profile.GameticPhase = 0;
    EXPECT_EQ(block(),
              "No. of gene copies       : 20" + std::string(kRest) +
                  "\nGametic phase is unknown: the haplotypes are those that the project file writes "
                  "side by side,\nand what is computed from them depends on that writing.\n" +
                  kEnd);
}

TEST_F(StandardBlock, ShowsTheOriginalNumberOfMergedHaplotypes) {
    sample_.nb_orig_hapl = 9;
    EXPECT_EQ(block(),
              "No. of gene copies       : 20\nNo. of sequences         : 7"
              "\nNo. of original \nsequences in sample      : 9" +
                  std::string(kRest) + kEnd);
    sample_.nb_orig_hapl = 7;  // nothing was merged
    EXPECT_EQ(block(),
              "No. of gene copies       : 20\nNo. of sequences         : 7" + std::string(kRest) + kEnd);
}

TEST_F(StandardBlock, AnyNumberOfCopiesIsPrintedWhole) {
    sample_.sample_size = 12345678901.75;
    EXPECT_EQ(block().rfind("No. of gene copies       : 12345678901\n", 0), 0U);
    sample_.sample_size = 1e300;
    EXPECT_EQ(block().rfind("No. of gene copies       : 1000000", 0), 0U);
}

// --- Molecular indices

TEST(MolecularBasis, OfDna) {
    PopulDNA s;
    s.sample_size = 20.0;
    s.nb_hapl = 7;
    s.nb_orig_hapl = 8;
    s.del_weight = 0.5;
    s.ts_weight = 1.0;
    s.tv_weight = 2.0;
    s.allowed_missing = 0.05;
    s.nb_ts = 1;
    s.nb_tv = 2;
    s.nb_subst = 3;
    s.nb_del = 4;
    s.nb_ts_sites = 5;
    s.nb_tv_sites = 6;
    s.nb_subst_sites = 7;
    s.nb_del_sites = 8;
    s.nb_observed_sites = 100;
    s.nb_usable_loci = 90;
    s.nucl_freq = {0.1, 0.2, 0.3, 0.4};
    EXPECT_EQ(printed([&s](std::ostream& out) { print_molecular_basis(out, s); }),
              "Sample size                                  : 20\n"
              "No. of haplotypes                            : 7\n"
              "No. of original haplotypes in sample         : 8\n"
              "\nDeletion weight                              : 0.50000"
              "\nTransition weight                            : 1.00000"
              "\nTransversion weight                          : 2.00000"
              "\nAllowed level of missing data                : 5.00 %\n"
              "\nNumber of observed transitions               : 1"
              "\nNo. of transversions                         : 2"
              "\nNo. of substitutions                         : 3"
              "\nNo. of indels                                : 4"
              "\nNo. of ts. sites                             : 5"
              "\nNo. of tv. sites                             : 6"
              "\nNo. of subst. sites                          : 7"
              "\nNo. of indel sites                           : 8"
              "\nNumber of observed nucleotide sites          : 100"
              "\nNumber of usable nucleotide sites            : 90\n"
              "\nNucleotide composition (Relative values)"
              "\n   C : 10.00%"
              "\n   T : 20.00%"
              "\n   A : 30.00%"
              "\n   G : 40.00%"
              "\n   Total : 100.00%\n");
}

TEST(MolecularBasis, OfRflp) {
    PopulRFLP s;
    s.sample_size = 20.0;
    s.nb_hapl = 7;
    s.del_weight = 0.0;
    s.nb_subst = 3;
    s.nb_del = 4;
    s.nb_subst_sites = 7;
    s.nb_del_sites = 8;
    s.nb_observed_sites = 100;
    s.nb_usable_loci = 90;
    EXPECT_EQ(printed([&s](std::ostream& out) { print_molecular_basis(out, s); }),
              "Sample size                                  : 20\n"
              "No. of haplotypes                            : 7\n"
              "\nDeletion weight                              : 0.00000"
              "\nAllowed level of missing data                : 0.00 %\n"
              "\nNo. of substitutions                         : 3"
              "\nNo. of indels                                : 4"
              "\nNo. of subst. sites                          : 7"
              "\nNo. of indel sites                           : 8"
              "\nNumber of observed sites                     : 100"
              "\nNumber of usable sites                       : 90\n");
}

TEST(MolecularBasis, OfListsOfAlleles) {
    PopulMicrosat microsat;
    PopulStandard standard;
    for (mnd::PopGenetics* s :
         {static_cast<mnd::PopGenetics*>(&microsat), static_cast<mnd::PopGenetics*>(&standard)}) {
        s->sample_size = 20.0;
        s->nb_hapl = 7;
        s->nb_loci = 6;
        s->nb_usable_loci = 5;
        s->nb_polym_loci = 4;
        s->allowed_missing = 1.0;
    }
    constexpr const char* kText =
        "Sample size                                  : 20\n"
        "No. of haplotypes                            : 7\n"
        "\nAllowed level of missing data                : 100.00 %\n"
        "\nNumber of loci                               : 6"
        "\nNumber of usable loci                        : 5"
        "\nNumber of polymorphic loci                   : 4\n";
    EXPECT_EQ(printed([&](std::ostream& out) { print_molecular_basis(out, microsat); }), kText);
    EXPECT_EQ(printed([&](std::ostream& out) { print_molecular_basis(out, standard); }), kText);
}

TEST(PairwiseDifferences, WithAndWithoutNucleotideDiversity) {
    PopulDNA s;
    s.mean_pairwise_diff = 1.5;
    s.sd_pairwise_diff = 0.75;
    s.nucl_diversity = 0.0125;
    s.sd_nucl_diversity = 0.0005;
    EXPECT_EQ(printed([&s](std::ostream& out) { print_pairwise_differences(out, s, true); }),
              "\nMean number of pairwise differences          : 1.50000 +/- 0.75000"
              "\nNucleotide diversity (average over loci)     : 0.01250 +/- 0.00050"
              "\n(Standard deviations are for both the sampling and the stochastic processes)\n");
    EXPECT_EQ(printed([&s](std::ostream& out) { print_pairwise_differences(out, s, false); }),
              "\nMean number of pairwise differences          : 1.50000 +/- 0.75000"
              "\n(Standard deviations are for both the sampling and the stochastic processes)\n");
}

TEST(PairwiseDifferences, ThatAreNotFiniteAreNotAvailable) {
    PopulDNA s;
    s.mean_pairwise_diff = std::numeric_limits<double>::quiet_NaN();
    s.nucl_diversity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(printed([&s](std::ostream& out) { print_pairwise_differences(out, s, true); }),
              "\nMean number of pairwise differences          : N.A. +/- 0.00000"
              "\nNucleotide diversity (average over loci)     : N.A. +/- 0.00000"
              "\n(Standard deviations are for both the sampling and the stochastic processes)\n");
}

// --- Estimators of theta

TEST(ThetaBlock, PrintsEachEstimatorWithItsDeviation) {
    PopulDNA s;
    s.theta_hom = 1.25;
    s.sd_theta_hom = 0.5;
    s.theta_S = 2.0;
    s.sd_theta_S = 0.25;
    s.theta_pi = 3.0;
    s.sd_theta_pi = 0.125;
    EXPECT_EQ(printed([&s](std::ostream& out) { print_theta_Hom(out, s); }),
              "\nTheta(Hom) : 1.25000\nS.D. Theta(Hom) : 0.50000\n");
    EXPECT_EQ(printed([&s](std::ostream& out) { print_theta_S(out, s); }),
              "\nTheta(S) : 2.00000\nS.D. Theta(S) : 0.25000\n");
    EXPECT_EQ(printed([&s](std::ostream& out) { print_theta_pi(out, s); }),
              "\nTheta(Pi) : 3.00000\nS.D. Theta(Pi) : 0.12500\n");
}

TEST(ThetaBlock, SaysWhenAllCopiesDiffer) {
    PopulDNA s;
    s.theta_hom = kNumericalInfinity;
    s.nb_hapl = 5;
    s.sample_size = 5.0;
    EXPECT_EQ(printed([&s](std::ostream& out) { print_theta_Hom(out, s); }),
              "\nUnable to compute Theta(Hom) when all gene copies are different\n");
    EXPECT_EQ(printed([&s](std::ostream& out) { print_theta_k(out, s, false); }),
              "\nUnable to compute Theta(k) when all gene copies are different\n");
}

TEST(ThetaBlock, OfTheNumberOfAlleles) {
    PopulDNA s;
    s.nb_hapl = 5;
    s.sample_size = 6.0;
    s.theta_k = 1.5;
    s.theta_k_lower = 0.5;
    s.theta_k_upper = 12.0;
    EXPECT_EQ(printed([&s](std::ostream& out) { print_theta_k(out, s, true); }),
              "\nTheta(k) : 1.50000\n95 % confidence interval limits for theta(k) : [ 0.50000, 12.00000 ]\n");
    EXPECT_EQ(printed([&s](std::ostream& out) { print_theta_k(out, s, false); }),
              "\nTheta(k) is not computed for so many alleles or gene copies\n");
}

// --- Citations

std::string in_list(std::string_view key) {
    return "           <i>" + std::string(References::get_reference(key)) + "</i>\n";
}

TEST(DiversityCitations, OfStandardIndices) {
    EXPECT_EQ(printed([](std::ostream& out) { mnd::cite_standard_indices(out, false); }),
              "Reference: <i>" + std::string(References::get_reference("Nei_1987")) + "</i>\n");
    EXPECT_EQ(printed([](std::ostream& out) { mnd::cite_standard_indices(out, true); }),
              "References:\n" + in_list("Nei_1987") + in_list("Garza_Williamson_2001"));
}

TEST(DiversityCitations, NameTheDistanceAndItsGammaCorrection) {
    struct Case {
        int method;
        double gamma;
        const char* key;
        bool cites_gamma;
    };
    for (const Case& c : {Case{1, 0.0, "Jukes_Cantor_1969", false}, Case{1, 0.5, "Jukes_Cantor_1969", true},
                          Case{2, 0.5, "Kimura_1980", true}, Case{4, 0.5, "Tajima_Nei_1984", false},
                          Case{5, 0.5, "Tamura_1992", false}, Case{6, 0.5, "Tamura_Nei_1993", true}}) {
        PopulDNA s;
        s.profile.DataType = mnd::DNA;
        s.distance_method = c.method;
        s.gamma_a = c.gamma;
        EXPECT_EQ(printed([&s](std::ostream& out) { cite_molecular_diversity(out, s); }),
                  "References:\n" + in_list("Tajima_1983") + in_list("Tajima_1993") + in_list("Nei_1987") +
                      in_list(c.key) + (c.cites_gamma ? in_list("Jin_Nei_1990") : std::string()));
    }
}

TEST(DiversityCitations, OfXmlCloseAndOpenTheTextElement) {
    mnd::xmlOutput = true;
    const std::string text = printed([](std::ostream& out) { mnd::cite_standard_indices(out, true); });
    mnd::xmlOutput = false;
    EXPECT_EQ(text, "References:\n</data>\n<Reference>" + std::string(References::get_reference("Nei_1987")) +
                        "</Reference>\n<Reference>" +
                        std::string(References::get_reference("Garza_Williamson_2001")) +
                        "</Reference>\n<data>\n");
}

// --- The matrix

TEST(HaplotypeDistances, AreNotPrintedWithoutAMatrix) {
    const PopulDNA s;
    EXPECT_EQ(printed([&s](std::ostream& out) { print_haplotype_distances(out, s); }), "");
}

TEST(HaplotypeDistances, AreTaggedUnderXml) {
    mnd_test::TextSample<PopulDNA> s({"A", "C"});
    s.sample.name = "x\"y";
    s.sample.dist_mat = std::make_unique<mnd::RectMat>(2, 2);
    s.sample.dist_mat->data[1][0] = 1.0;
    s.definitions[1]->name = "<h>";
    mnd::xmlOutput = true;
    const std::string text = printed([&s](std::ostream& out) { print_haplotype_distances(out, s.sample); });
    mnd::xmlOutput = false;
    const std::string time = mnd::TXmlTag::time.c_str();
    EXPECT_EQ(text,
              "\nHaplotypes of the matrix:\n"
              "</data> <interHapDistMatrixLabels samp=\"x&quot;y\" time=\"" +
                  time +
                  "\">\n"
                  "     1  h1\n     2  &lt;h&gt;\n"
                  "</interHapDistMatrixLabels> <data>\n"
                  "\nInter-haplotypic distance matrix:\n\n"
                  "</data> <interHapDistMatrix samp=\"x&quot;y\" time=\"" +
                  time +
                  "\">\n"
                  "          0.0000\n"
                  "  1.0000        \n"
                  "</interHapDistMatrix> <data>\n");
}

}  // namespace
