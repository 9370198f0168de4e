#include "within/haplotype_frequency_tables.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/data_type.h"
#include "model/popul_dna.h"
#include "model/popul_standard.h"
#include "results/citations.h"
#include "within/analysed_sample.h"

namespace {

using namespace mnd;
using mnd_test::AnalysedSamples;
using mnd_test::genotypic;
using mnd_test::haplotypic;

const EmSummary kSummary{20.0, 50, 3, 1e-07, -12.5, false, 0.0};

std::string citation() {
    return "Reference: <i>" + std::string(References::get_reference("Excoffier_Slatkin_1995")) + "</i>\n";
}

TEST(HaplotypeFrequencyTables, HeadOfTheEstimationWindowByWindow) {
    std::ostringstream out;
    print_zipper_head(out, kSummary, {2, 2, 10, {4, 0, 2, 1}});
    EXPECT_EQ(out.str(),
              "\n----------------------------------\n"
              "Zipper version of the EM algorithm\n"
              "----------------------------------\n\n"
              "No. of gene copies in sample                : 20\n"
              "No. of random initial conditions for EM     : 50\n"
              "No. of different maximum likelihoods found  : 3\n"
              "Epsilon value for stopping iterations       : 1.000000e-07\n"
              "\nWindow size for zipper EM                   : 2\n"
              "Number or loci order                        : 10\n"
              "Loci within window                          : 5 1 3 2\n"
              "LogLhood  : -12.5000000000\n");
}

TEST(HaplotypeFrequencyTables, WindowThatIsNotWithinTheLociIsTold) {
    for (const int wanted : {-1, 0, 4}) {
        std::ostringstream out;
        print_zipper_head(out, kSummary, {wanted, 3, 1, {0, 1, 2}});
        EXPECT_NE(
            out.str().find("\nWindow size for zipper EM                   : 3 (all loci, as a window of " +
                           std::to_string(wanted) + " is not within them)\nNumber or loci order"),
            std::string::npos)
            << out.str();
    }
}

TEST(HaplotypeFrequencyTables, HeadOfTheEstimationOverAllLoci) {
    std::ostringstream out;
    print_one_pass_head(out, kSummary);
    EXPECT_EQ(out.str(),
              "\n-------------------------------------\n"
              "Conventional EM algorithm  (one pass)\n"
              "-------------------------------------\n\n"
              "No. of gene copies in sample                : 20\n"
              "No. of random initial conditions for EM     : 50\n"
              "No. of different maximum likelihoods found  : 3\n"
              "Epsilon value for stopping iterations       : 1.000000e-07\n"
              "LogLHood  : -12.5000000000\n" +
                  citation());
}

TEST(HaplotypeFrequencyTables, InbreedingHasALineWhenItIsAllowedFor) {
    EmSummary summary = kSummary;
    summary.with_inbreeding = true;
    summary.F = 0.125;
    std::ostringstream zipper, one_pass;
    print_zipper_head(zipper, summary, {1, 1, 1, {0}});
    print_one_pass_head(one_pass, summary);
    const std::string line = "Inbreeding coefficient                      : 0.12500\n";
    EXPECT_TRUE(zipper.str().ends_with("LogLhood  : -12.5000000000\n" + line)) << zipper.str();
    EXPECT_TRUE(one_pass.str().ends_with(citation() + line)) << one_pass.str();
}

TEST(HaplotypeFrequencyTables, LogLikelihoodOfNothingIsNoNumber) {
    EmSummary summary = kSummary;
    summary.ln_likelihood = -kNumericalInfinity;
    const int one_locus[] = {1, 0};
    std::ostringstream zipper, one_pass, subset;
    print_zipper_head(zipper, summary, {1, 1, 1, {0}});
    print_one_pass_head(one_pass, summary);
    print_subset_head(subset, one_locus, summary, 0);
    EXPECT_NE(zipper.str().find("LogLhood  : N.A.\n"), std::string::npos);
    EXPECT_NE(one_pass.str().find("LogLHood  : N.A.\n"), std::string::npos);
    EXPECT_NE(subset.str().find("maximum-likelihood  : N.A.\n"), std::string::npos);
}

TEST(HaplotypeFrequencyTables, HeadOfALocus) {
    const int subset[] = {1, 2};
    std::ostringstream out;
    print_subset_head(out, subset, kSummary, 0);
    EXPECT_EQ(out.str(),
              "Allele frequencies for the locus 3\n"
              "--------------------------------\n"
              "\nNo. of gene copies in sample                : 20\n"
              "No. of random initial conditions for EM     : 50\n"
              "No bootstrap confidence interval estimation\n"
              "No. of different maximum likelihoods found  : 3\n"
              "Epsilon value for stopping iterations       : 1.000000e-07\n"
              "Logarithm of the sample maximum-likelihood  : -12.50000\n");
}

TEST(HaplotypeFrequencyTables, HeadOfAPairOfLoci) {
    const int subset[] = {2, 0, 3};
    std::ostringstream out;
    print_subset_head(out, subset, kSummary, 100);
    EXPECT_EQ(out.str(),
              "Allele frequencies for the pair of loci( 1 , 4 )\n"
              "---------------------------------------\n"
              "\nNo. of gene copies in sample                : 20\n"
              "No. of random initial conditions for EM     : 50\n"
              "No. of bootstrap replicates                 : 100\n"
              "No. of different maximum likelihoods found  : 3\n"
              "Epsilon value for stopping iterations       : 1.000000e-07\n"
              "Logarithm of the sample maximum-likelihood  : -12.50000\n");
}

TEST(HaplotypeFrequencyTables, HeadsDoNotTakeTheFormatOfTheStream) {
    const int subset[] = {1, 0};
    std::ostringstream plain, odd;
    odd << std::left << std::showpos << std::scientific << std::setprecision(1) << std::setfill('*');
    for (std::ostringstream* out : {&plain, &odd}) {
        print_zipper_head(*out, kSummary, {0, 1, 1, {0}});
        print_one_pass_head(*out, kSummary);
        print_subset_head(*out, subset, kSummary, 2);
    }
    EXPECT_EQ(odd.str(), plain.str());
    EXPECT_EQ(odd.precision(), 1);
}

// Eight copies: p = 5/8 and 2/8, 1/8; standard deviations sqrt(p (1 - p) / 8) by hand:
// sqrt(15/512) = 0.171163, sqrt(12/512) = 0.153093, sqrt(7/512) = 0.116927.
TEST(CountedHaplotypes, OfHaplotypicData) {
    AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
    const PopulDNA& sample = a.add("Lake", "h1 5 ACGT\nh<2 1 ACGA\nh3 2 ACCA\n");
    a.prepare();
    std::ostringstream out;
    print_counted_haplotypes(out, sample, 0.125);
    EXPECT_EQ(out.str(),
              "\n---------------------------------\n"
              "Haplotype frequencies by counting\n"
              "---------------------------------\n\n"
              "No. of gene copies in sample                : 8\n"
              "No. of different haplotypes                 : 3\n"
              "Minimum frequency to reach for output       : 1.250e-01\n"
              "(Standard deviation is for the sampling process)\n\n"
              "-----------------------------------------------\n"
              "    #   Haplotype\t     Freq.      s.d.   Count\n"
              "-----------------------------------------------\n"
              "    1          h1\t  0.625000  0.171163       5\tACGT\n"
              "    2          h3\t  0.250000  0.153093       2\tACCA\n"
              "Sum of 2 listed frequencies : 0.875000\n\n");
    out.str("");
    print_counted_haplotypes(out, sample, 0.0);
    EXPECT_NE(out.str().find("    2         h&lt;2\t  0.125000  0.116927       1\tACGA\n"), std::string::npos)
        << out.str();
}

TEST(CountedHaplotypes, OfIndividualsOfKnownPhase) {
    AnalysedSamples<PopulStandard> a(genotypic(STANDARD, ' ', 1));
    const PopulStandard& sample = a.add("Lake", "i 2 A B\n A C\nj 1 A C\n A C\n");
    a.prepare();
    std::ostringstream out;
    print_counted_haplotypes(out, sample, 0.0);
    EXPECT_NE(out.str().find("No. of gene copies in sample                : 6\n"), std::string::npos);
    EXPECT_NE(out.str().find("\t  0.333333  0.192450       2\t"), std::string::npos) << out.str();
    EXPECT_NE(out.str().find("\t  0.666667  0.192450       4\t"), std::string::npos) << out.str();
    EXPECT_NE(out.str().find("Sum of 2 listed frequencies : 1.000000\n"), std::string::npos);
}

TEST(CountedHaplotypes, OfNobody) {
    PopulDNA sample;
    std::ostringstream out;
    print_counted_haplotypes(out, sample, 0.0);
    EXPECT_EQ(out.str(), "The sample has no haplotypes\n\n");
}

TEST(HaplotypeFrequencyTables, TooManyResolutionsAreTold) {
    std::ostringstream out;
    print_not_resolvable(out);
    EXPECT_EQ(out.str(),
              "The frequencies cannot be estimated: an individual has too many heterozygous loci\n"
              "for all its possible pairs of haplotypes to be listed\n\n");
}

}  // namespace
