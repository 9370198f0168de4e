#include "within/haplotype_frequencies.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/data_type.h"
#include "foundation/message_codes.h"
#include "model/popul_dna.h"
#include "model/popul_standard.h"
#include "results/citations.h"
#include "run/tasks.h"
#include "support/captured_log.h"
#include "support/captured_reports.h"
#include "support/watched_stream.h"
#include "within/analysed_sample.h"
#include "within/em_sample.h"
#include "within/gametic_phase_comparison.h"

namespace {

using namespace mnd;
using mnd_test::AnalysedSamples;
using mnd_test::contains;
using mnd_test::count_of;
using mnd_test::genotypic;
using mnd_test::Individuals;
using mnd_test::PlainEm;
using mnd_test::simulate;

std::string citation() {
    return "Reference: <i>" + std::string(References::get_reference("Excoffier_Slatkin_1995")) + "</i>\n";
}

// One sample of genotypes of unknown phase, as a run analyses it.
class HaplotypeFrequencyAnalysis : public mnd_test::EmTest {
protected:
    HaplotypeFrequencyAnalysis() : data(genotypic(STANDARD, ' ', 0)) {
        settings& s = data.s;
        s.ComputeAllHaplotypesEM = 1;
        s.InitialConditionsEM = 4;
        s.MaximumNumOfIterationsEM = 500;
        s.EpsilonValue = 1e-07;
        s.FrequencyThreshold = 1e-05;
    }
    // Reads the sample; the program knows it from then on.
    PopulStandard& read(const std::string& lines) {
        PopulStandard& sample = data.add("Lake", lines);
        data.samples.build_all_vectors(' ');
        return sample;
    }
    std::string analyse(const std::string& lines) {
        result = read(lines).comp_gam_phase_EM(data.s);
        return data.document.text();
    }

    AnalysedSamples<PopulStandard> data;
    unsigned result = 0;
};

// The texts as lines of a data block.
std::string lines_of(const std::vector<Individuals>& all) {
    std::ostringstream out;
    int number = 0;
    for (const Individuals& kind : all) {
        out << "i" << ++number << ' ' << kind.count;
        for (const char allele : kind.first)
            out << ' ' << allele;
        out << "\n ";
        for (const char allele : kind.second)
            out << ' ' << allele;
        out << '\n';
    }
    return out.str();
}

// The place of each text, which all stand behind one another.
void expect_in_order(const std::string& document, const std::vector<std::string>& texts) {
    std::size_t at = 0;
    for (const std::string& text : texts) {
        const std::size_t found = document.find(text, at);
        ASSERT_NE(found, std::string::npos) << "missing behind the others: " << text << "\nin\n" << document;
        at = found + text.size();
    }
}

// A row of a table of haplotypes.
struct Row {
    int rank;
    std::string label;
    double freq;
    double sd;
    std::string alleles;
};

// The rows of the table at this place of the document.
std::vector<Row> rows_of_table(const std::string& document, std::size_t from) {
    const std::string rule = "---------------------------------------\n";
    std::size_t at = document.find("    #   Haplotype     Freq.      s.d.\n" + rule, from);
    EXPECT_NE(at, std::string::npos);
    std::istringstream in(document.substr(document.find(rule, at) + rule.size()));
    std::vector<Row> rows;
    for (std::string line; std::getline(in, line) && !line.starts_with("Sum of all ");) {
        Row row;
        std::istringstream cells(line);
        EXPECT_TRUE(cells >> row.rank >> row.label >> row.freq >> row.sd) << line;
        for (std::string allele; cells >> allele;)
            row.alleles += allele;
        rows.push_back(row);
    }
    return rows;
}

// --- Whole documents

// No individual is heterozygous at more than one locus: frequencies are counts, whatever the start.
// Eight copies: A B seven, C B one. ln L = 3 ln(49/64) + ln(2 x 7/64) = -2.3210141095.
constexpr char kUnambiguous[] = "i1 3 A B\n A B\ni2 1 A B\n C B\n";

TEST_F(HaplotypeFrequencyAnalysis, OverAllLociAtOnce) {
    const std::string document = analyse(kUnambiguous);
    EXPECT_EQ(result, 1U);
    const std::string expected =
        "\n-------------------------------------\n"
        "Conventional EM algorithm  (one pass)\n"
        "-------------------------------------\n\n"
        "No. of gene copies in sample                : 8\n"
        "No. of random initial conditions for EM     : 4\n"
        "No. of different maximum likelihoods found  : 1\n"
        "Epsilon value for stopping iterations       : 1.000000e-07\n"
        "LogLHood  : -2.3210141095\n" +
        citation() +
        "Standard deviations not computed \n"
        "\n------------------------------------------\n"
        "Maximum-likelihood haplotype frequencies :\n"
        "------------------------------------------\n\n"
        "Total number of possible haplotypes      :              2\n"
        "Minimum frequency to reach for output    :      1.000e-05\n"
        "---------------------------------------\n"
        "    #   Haplotype     Freq.      s.d.\n"
        "---------------------------------------\n"
        "    1     UNKNOWN\t  0.875000  0.000000\tA B \n"
        "    2     UNKNOWN\t  0.125000  0.000000\tC B \n"
        "Sum of all 2 haplotype frequencies : 1.000000\n"
        "Sum of 2 listed frequencies : 1.000000\n"
        "\n//------------------------------------------------------\n\n"
        "\nMaximum-likelihood frequencies of genotypes\n"
        "(Haplotypes that are not listed above have a negative id)\n\n";
    EXPECT_EQ(document.substr(0, expected.size()), expected);
    EXPECT_EQ(count_of(document, "Conventional EM"), 1);
    EXPECT_FALSE(contains(document, "Zipper"));
    EXPECT_FALSE(contains(document, "Allele frequencies"));
    EXPECT_FALSE(contains(document, "Bi-locus"));
    EXPECT_FALSE(contains(document, "Inbreeding"));
}

TEST_F(HaplotypeFrequencyAnalysis, OfSingleLociAlone) {
    data.s.ComputeAllHaplotypesEM = 0;
    data.s.ComputeAllAllelesEM = 1;
    const auto locus = [](const char* number, const char* ln_likelihood, const std::string& rows) {
        const int entries = count_of(rows, "\n");
        const std::string n = std::to_string(entries);
        return "Allele frequencies for the locus " + std::string(number) +
               "\n--------------------------------\n"
               "\nNo. of gene copies in sample                : 8\n"
               "No. of random initial conditions for EM     : 4\n"
               "No bootstrap confidence interval estimation\n"
               "No. of different maximum likelihoods found  : 1\n"
               "Epsilon value for stopping iterations       : 1.000000e-07\n"
               "Logarithm of the sample maximum-likelihood  : " +
               ln_likelihood +
               "\n"
               "\n------------------------------------------\n"
               "Maximum-likelihood haplotype frequencies :\n"
               "------------------------------------------\n\n"
               "Total number of possible haplotypes      :              " +
               n +
               "\n"
               "Minimum frequency to reach for output    :      1.000e-05\n"
               "---------------------------------------\n"
               "    #   Haplotype     Freq.      s.d.\n"
               "---------------------------------------\n" +
               rows + "Sum of all " + n + " haplotype frequencies : 1.000000\nSum of " + n +
               " listed frequencies : 1.000000\n\n\n";
    };
    EXPECT_EQ(analyse(kUnambiguous),
              " \n\nAllele frequencies : \n\n(0 bootstrap replicates)\n\n" +
                  locus("1", "-2.32101",
                        "    1     UNKNOWN\t  0.875000  0.000000\tA \n"
                        "    2     UNKNOWN\t  0.125000  0.000000\tC \n") +
                  locus("2", "0.00000", "    1     UNKNOWN\t  1.000000  0.000000\tB \n") + citation());
    EXPECT_EQ(result, 1U);
}

TEST_F(HaplotypeFrequencyAnalysis, AllThatCanBeAskedForStandsInOrder) {
    settings& s = data.s;
    s.EMUseZipper = 1;
    s.EMWinSize = 2;
    s.EMNumZipRandOrders = 3;
    s.ComputeAllAllelesEM = 1;
    s.ComputeAllSubHaplotypesEM = 1;
    s.NumBootstrapReplicatesEM = 5;
    s.NumInitCondBootstrapEM = 2;
    s.EMEstimateInbreedingCoeff = 1;
    const std::string document = analyse(lines_of(simulate(12, {{"AAA", 0.5}, {"BBA", 0.3}, {"ABB", 0.2}})));
    expect_in_order(
        document,
        {"Zipper version of the EM algorithm\n",
         "No. of gene copies in sample                : 24\n",
         "No. of random initial conditions for EM     : 4\n",
         "No. of different maximum likelihoods found  : ",
         "Epsilon value for stopping iterations       : 1.000000e-07\n",
         "\nWindow size for zipper EM                   : 2\n",
         "Number or loci order                        : 3\n",
         "Loci within window                          : ",
         "LogLhood  : -",
         "Inbreeding coefficient                      : ",
         "Maximum-likelihood haplotype frequencies :\n",
         "\n//------------------------------------------------------\n\n",
         "\nMaximum-likelihood frequencies of genotypes\n"
         "(Haplotypes that are not listed above have a negative id)\n\n",
         "Conventional EM algorithm  (one pass)\n",
         "LogLHood  : -",
         citation(),
         "Inbreeding coefficient                      : ",
         "No. of bootstraps for generating s.d.'s      : 5\n",
         "Maximum-likelihood haplotype frequencies :\n",
         "\n//------------------------------------------------------\n\n",
         "\nMaximum-likelihood frequencies of genotypes\n",
         " \n\nBi-locus ML haplotype frequencies : \n\n(5 bootstrap replicates)\n\n",
         "Allele frequencies for the pair of loci( 1 , 2 )\n---------------------------------------\n",
         "No. of bootstrap replicates                 : 5\n",
         "Allele frequencies for the pair of loci( 1 , 3 )\n",
         "Allele frequencies for the pair of loci( 2 , 3 )\n",
         " \n\nAllele frequencies : \n\n(5 bootstrap replicates)\n\n",
         "Allele frequencies for the locus 1\n",
         "Allele frequencies for the locus 2\n",
         "Allele frequencies for the locus 3\n"});
    EXPECT_EQ(count_of(document, "Maximum-likelihood haplotype frequencies"), 2 + 3 + 3);
}

TEST_F(HaplotypeFrequencyAnalysis, PairsGoByTheSecondLocus) {
    data.s.ComputeAllSubHaplotypesEM = 1;
    const std::string document = analyse("i 2 A B C D\n A C C E\n");
    expect_in_order(document, {"loci( 1 , 2 )", "loci( 1 , 3 )", "loci( 2 , 3 )", "loci( 1 , 4 )",
                               "loci( 2 , 4 )", "loci( 3 , 4 )"});
    EXPECT_EQ(count_of(document, "the pair of loci("), 6);
}

TEST_F(HaplotypeFrequencyAnalysis, ZipperAloneEndsWithoutAllelesToEstimate) {
    data.s.EMUseZipper = 1;
    data.s.ComputeAllSubHaplotypesEM = 1;
    const std::string document = analyse(kUnambiguous);
    EXPECT_TRUE(contains(document, "Zipper version of the EM algorithm\n"));
    EXPECT_TRUE(
        contains(document, "Window size for zipper EM                   : 2 (all loci, as a window of 0 is"));
    EXPECT_TRUE(document.ends_with(citation()));
    EXPECT_TRUE(contains(document, "Number or loci order                        : 1\n"));
    EXPECT_TRUE(contains(document, "Loci within window                          : 1 2\n"));
    EXPECT_TRUE(contains(document, "LogLhood  : -2.3210141095\n"));
    EXPECT_FALSE(contains(document, "Conventional"));
    EXPECT_FALSE(contains(document, "Bi-locus"));
    EXPECT_EQ(result, 1U);
}

TEST_F(HaplotypeFrequencyAnalysis, ZipperServesWholeHaplotypesOnly) {
    data.s.EMUseZipper = 1;
    data.s.ComputeAllHaplotypesEM = 0;
    data.s.ComputeAllAllelesEM = 1;
    const std::string document = analyse(kUnambiguous);
    EXPECT_FALSE(contains(document, "Zipper"));
    EXPECT_TRUE(contains(document, "Allele frequencies for the locus 2"));
}

TEST_F(HaplotypeFrequencyAnalysis, AnotherNumberThanOneIsNoZipper) {
    data.s.EMUseZipper = 2;
    EXPECT_FALSE(contains(analyse(kUnambiguous), "Zipper"));
}

TEST_F(HaplotypeFrequencyAnalysis, ZipperIsSilentWhenResultsAreNotPrinted) {
    data.s.EMUseZipper = 1;
    data.s.print_em_results = false;
    EXPECT_EQ(analyse(kUnambiguous), "");
}

TEST_F(HaplotypeFrequencyAnalysis, WindowOutsideTheLociIsAllOfThem) {
    data.s.EMUseZipper = 1;
    data.s.EMWinSize = 9;
    EXPECT_TRUE(contains(analyse(kUnambiguous), "Window size for zipper EM                   : 2 (all loci"));
}

TEST_F(HaplotypeFrequencyAnalysis, NothingAskedForWritesNothing) {
    data.s.ComputeAllHaplotypesEM = 0;
    data.s.ComputeAllSubHaplotypesEM = 1;
    EXPECT_EQ(analyse(kUnambiguous), "");
    EXPECT_EQ(result, 1U);
}

TEST_F(HaplotypeFrequencyAnalysis, OfNobody) {
    data.s.ComputeAllAllelesEM = 1;
    EXPECT_EQ(analyse(""), "The sample has no individuals\n\n");
}

TEST_F(HaplotypeFrequencyAnalysis, TellsTheConsole) {
    const mnd_test::CapturedLog log;
    data.s.EMUseZipper = 1;
    analyse(kUnambiguous);
    EXPECT_TRUE(log.holds("\t\tComputing ML haplotype frequencies using the EM algorithm...\n"));
}

TEST_F(HaplotypeFrequencyAnalysis, ProgressNamesEachStep) {
    settings& s = data.s;
    s.ComputeAllAllelesEM = 1;
    s.ComputeAllSubHaplotypesEM = 1;
    s.NumBootstrapReplicatesEM = 2;
    PopulStandard& sample = read(kUnambiguous);
    mnd_test::WatchedOutput console;
    silentMendrake = false;
    sample.comp_gam_phase_EM(s);
    silentMendrake = true;
    expect_in_order(console.text(), {"Computing ML hapl. freq. standard deviations ...",
                                     "Computing bi-locus haplotype ML frequencies ..."});
}

// --- Numbers

TEST_F(HaplotypeFrequencyAnalysis, TableHoldsTheEstimateOfAPlainSecondWriting) {
    const std::vector<Individuals> all =
        simulate(25, {{"AABA", 0.4}, {"BBAA", 0.3}, {"ABAB", 0.2}, {"BABB", 0.1}});
    seed();
    PlainEm plain(all);
    plain.run(false, 0.0, 4, 500, 1e-07);
    seed();
    data.s.FrequencyThreshold = 0.01;
    const std::string document = analyse(lines_of(all));
    std::map<std::string, double> expected;
    for (std::size_t h = 0; h < plain.haplotypes.size(); ++h)
        if (plain.best[h] > 0.01) expected[plain.haplotypes[h]] = plain.best[h];
    const std::vector<Row> rows = rows_of_table(document, 0);
    ASSERT_EQ(rows.size(), expected.size());
    // Rows go by alleles, as the entries of a map do.
    int rank = 0;
    auto next_expected = expected.begin();
    double listed = 0.0;
    for (const Row& row : rows) {
        EXPECT_EQ(row.rank, ++rank);
        EXPECT_EQ(row.label, "UNKNOWN");
        EXPECT_EQ(row.alleles, next_expected->first);
        EXPECT_NEAR(row.freq, next_expected->second, 1e-6);
        EXPECT_EQ(row.sd, 0.0);
        listed += (next_expected++)->second;
    }
    char sum[100];
    std::snprintf(sum, sizeof sum, "Sum of %d listed frequencies : %.6f\n", rank, listed);
    EXPECT_TRUE(contains(document, sum)) << sum;
    std::snprintf(sum, sizeof sum, "Sum of all %d haplotype frequencies : 1.000000\n",
                  static_cast<int>(plain.haplotypes.size()));
    EXPECT_TRUE(contains(document, sum)) << sum;
    std::snprintf(sum, sizeof sum, "LogLHood  : %.10f\n", plain.best_likelihood);
    EXPECT_TRUE(contains(document, sum)) << sum;
    std::snprintf(sum, sizeof sum, "maximum likelihoods found  : %d\n",
                  static_cast<int>(plain.likelihoods.size()));
    EXPECT_TRUE(contains(document, sum)) << sum;
}

TEST_F(HaplotypeFrequencyAnalysis, EstimatesInbreeding) {
    const std::vector<Individuals> all = simulate(60, {{"AA", 0.5}, {"BB", 0.3}, {"AB", 0.2}}, 0.4);
    seed();
    PlainEm plain(all);
    plain.run(true, 0.0, 4, 500, 1e-07);
    seed();
    data.s.EMEstimateInbreedingCoeff = 1;
    char line[100];
    std::snprintf(line, sizeof line, "Inbreeding coefficient                      : %.5f\n", plain.best_F);
    EXPECT_TRUE(contains(analyse(lines_of(all)), line)) << line;
    EXPECT_GT(plain.best_F, 0.1);
}

TEST_F(HaplotypeFrequencyAnalysis, HeldInbreedingIsReportedAsGiven) {
    data.s.EMEstimateInbreedingCoeff = 1;
    data.s.EMInbreedingFixedVal = 0.25;
    EXPECT_TRUE(contains(analyse(kUnambiguous), "Inbreeding coefficient                      : 0.25000\n"));
}

TEST_F(HaplotypeFrequencyAnalysis, HeldInbreedingWithoutTheModelIsIgnored) {
    data.s.EMInbreedingFixedVal = 0.25;
    const std::string document = analyse(kUnambiguous);
    EXPECT_TRUE(contains(document, "LogLHood  : -2.3210141095\n"));
    EXPECT_FALSE(contains(document, "Inbreeding"));
}

// A sample that has one haplotype gives only this one in each replicate.
TEST_F(HaplotypeFrequencyAnalysis, OneReplicateLeavesTheRawSquare) {
    data.s.NumBootstrapReplicatesEM = 1;
    EXPECT_TRUE(contains(analyse("i 3 A B\n A B\n"), "    1     UNKNOWN\t  1.000000  1.000000\tA B \n"));
}

TEST_F(HaplotypeFrequencyAnalysis, ReplicatesOfOneHaplotypeDoNotVary) {
    data.s.NumBootstrapReplicatesEM = 3;
    const std::string document = analyse("i 3 A B\n A B\n");
    EXPECT_TRUE(contains(document, "No. of bootstraps for generating s.d.'s      : 3\n"));
    EXPECT_TRUE(contains(document, "    1     UNKNOWN\t  1.000000  0.000000\tA B \n"));
}

// Without ambiguity the bootstrap repeats binomial sampling: s.d. sqrt(p (1 - p) / 2n).
TEST_F(HaplotypeFrequencyAnalysis, StandardDeviationOfAnAlleleIsBinomial) {
    settings& s = data.s;
    s.ComputeAllHaplotypesEM = 0;
    s.ComputeAllAllelesEM = 1;
    s.NumBootstrapReplicatesEM = 800;
    s.NumInitCondBootstrapEM = 1;
    const std::vector<Row> rows = rows_of_table(analyse("i 5 A\n A\nj 10 A\n B\nk 5 B\n B\n"), 0);
    ASSERT_EQ(rows.size(), 2U);
    const double expected = std::sqrt(0.25 / 40.0);
    for (const Row& row : rows) {
        EXPECT_NEAR(row.freq, 0.5, 1e-6);
        // The estimate of an s.d. from 800 replicates has a relative error of 2.5 %: four of them.
        EXPECT_NEAR(row.sd, expected, 0.1 * expected);
    }
}

// Compacted haplotypes are shown over all loci again. Locus 2 is the same everywhere.
TEST_F(HaplotypeFrequencyAnalysis, CompactedHaplotypesAreShownInFull) {
    data.s.CompactHaplotypeDataBaseEM = 1;
    const std::string document = analyse("i 2 A B C\n A B C\nj 1 A B C\n D B C\nk 1 A B C\n A B E\n");
    const std::vector<Row> rows = rows_of_table(document, 0);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].alleles, "ABC");
    EXPECT_EQ(rows[1].alleles, "ABE");
    EXPECT_EQ(rows[2].alleles, "DBC");
    EXPECT_EQ(rows[0].freq, 0.75);
}

// The zipper needs the positions of all loci.
TEST_F(HaplotypeFrequencyAnalysis, ZipperTurnsCompactionOffForGood) {
    data.s.CompactHaplotypeDataBaseEM = 1;
    data.s.EMUseZipper = 1;
    data.s.ComputeAllAllelesEM = 1;
    PopulStandard& sample = read("i 2 A B C\n A B C\nj 1 A B C\n D B C\n");
    sample.comp_gam_phase_EM(data.s);
    ASSERT_EQ(sample.hapl_db.count, 2);
    EXPECT_EQ(sample.hapl_db.at_const(0)->num_loci(), 3);
    EXPECT_EQ(sample.hapl_db.poly_mask, nullptr);
    EXPECT_EQ(data.s.CompactHaplotypeDataBaseEM, 1);
}

TEST_F(HaplotypeFrequencyAnalysis, MergingEqualPhenotypesLeavesTheSampleAsItIs) {
    data.s.EMCheckPhenRedundancy = 1;
    PopulStandard& sample = read("i 1 A B\n C D\nj 1 C B\n A D\nk 1 A B\n A B\n");
    sample.comp_gam_phase_EM(data.s);
    EXPECT_EQ(sample.phen_db.count, 3);
    EXPECT_EQ(sample.phen_db.at_const(0)->freq, 1.0);
    EXPECT_EQ(sample.phen_db.at_const(0)->genotypes.count, 0);
}

// A and a dominant over 0 (the blank): 3 phenotypes A of 4 leave sqrt(1/4) to the blank.
TEST_F(HaplotypeFrequencyAnalysis, RecessiveAllelesHideInHomozygotes) {
    data.s.ComputeAllHaplotypesEM = 0;
    data.s.ComputeAllAllelesEM = 1;
    data.s.InitialConditionsEM = 10;
    data.s.MaximumNumOfIterationsEM = 5000;
    data.s.EpsilonValue = 1e-12;
    PopulStandard& sample = data.add("Lake", "i 75 A\n A\nj 25 null\n null\n");
    sample.make_all_blanks(' ');
    data.samples.build_all_vectors(' ');
    const std::string blank = (*sample.allele_db)(0, 0)->c_str();
    sample.RecessiveAllelesEM = 1;
    // The recessive phenotype is written with the recessive allele.
    for (auto& haplotype : sample.phen_db.at_const(1)->pseudo_hapl)
        haplotype->alleles.data[0] = (*sample.allele_db)(0, 0);
    sample.comp_gam_phase_EM(data.s);
    const std::vector<Row> rows = rows_of_table(data.document.text(), 0);
    ASSERT_EQ(rows.size(), 2U);
    for (const Row& row : rows)
        EXPECT_NEAR(row.freq, 0.5, 1e-5) << row.alleles;
}

TEST_F(HaplotypeFrequencyAnalysis, StoreOfTheSampleHoldsTheEstimate) {
    PopulStandard& sample = read(kUnambiguous);
    sample.comp_gam_phase_EM(data.s);
    ASSERT_EQ(sample.hapl_db.count, 2);
    EXPECT_NEAR(sample.hapl_db.at_const(0)->freq, 0.875, 1e-12);
    sample.comp_gam_phase_EM(data.s);  // anew
    EXPECT_EQ(sample.hapl_db.count, 2);
}

TEST_F(HaplotypeFrequencyAnalysis, PairsCarryTheirDisequilibrium) {
    PopulStandard& sample = read("i 3 A B\n A B\nj 2 C D\n C D\n");
    SubsetEstimate pair;
    const int subset[] = {2, 0, 1};
    ASSERT_TRUE(estimate_subset(sample, subset, sample.phen_db, data.s, 2, 0, 100, 1e-07, pair));
    ASSERT_EQ(pair.haplotypes.count, 2);
    // 0.6 - 0.6 x 0.6 = 0.24, the largest possible.
    EXPECT_NEAR(pair.haplotypes.at_const(0)->ld_d, 0.24, 1e-12);
    EXPECT_NEAR(pair.haplotypes.at_const(0)->ld_d_prime, 1.0, 1e-9);
    EXPECT_FALSE(pair.has_sd);
}

// --- What can go wrong

TEST_F(HaplotypeFrequencyAnalysis, TooManyHeterozygousLociEndTheEstimationNotTheRest) {
    const mnd_test::CapturedReports reports;
    data.s.ComputeAllAllelesEM = 1;
    const std::string document = analyse(lines_of({{std::string(33, 'A'), std::string(33, 'B'), 1.0}}));
    ASSERT_EQ(reports.all().size(), 1U);
    EXPECT_EQ(reports.all()[0].code, kTooManyHeterozygousLoci);
    EXPECT_TRUE(document.starts_with(
        "The frequencies cannot be estimated: an individual has too many heterozygous loci\n"));
    EXPECT_FALSE(contains(document, "Conventional"));
    EXPECT_EQ(count_of(document, "Allele frequencies for the locus "), 33);
}

TEST_F(HaplotypeFrequencyAnalysis, NoIterationHasNoLikelihood) {
    data.s.MaximumNumOfIterationsEM = 0;
    data.s.NumBootstrapReplicatesEM = 3;
    const std::string document = analyse(kUnambiguous);
    EXPECT_TRUE(contains(document, "LogLHood  : N.A.\n"));
    EXPECT_TRUE(contains(document, "Sum of 0 listed frequencies : 0.000000\n"));
}

TEST_F(HaplotypeFrequencyAnalysis, StopBeforeTheStartIsTold) {
    data.s.stop_computations = 1;
    data.s.ComputeAllAllelesEM = 1;
    EXPECT_EQ(analyse(kUnambiguous), "");
    EXPECT_EQ(result, kEmStopped);
    EXPECT_EQ(result, 4294966296U);  // -1000 without its sign
}

TEST_F(HaplotypeFrequencyAnalysis, StopInTheZipperIsTold) {
    data.s.EMUseZipper = 1;
    data.s.stop_computations = 1;
    EXPECT_EQ(analyse(kUnambiguous), "");
    EXPECT_EQ(result, kEmStopped);
}

TEST_F(HaplotypeFrequencyAnalysis, StopWithinTheReplicatesKeepsTheEstimate) {
    settings& s = data.s;
    s.NumBootstrapReplicatesEM = 10;
    s.ComputeAllAllelesEM = 1;
    PopulStandard& sample = read(kUnambiguous);
    {
        mnd_test::WatchedOutput console;
        console.when("Computing ML hapl. freq. standard deviations ...", [&] { s.stop_computations = 1; });
        silentMendrake = false;
        result = sample.comp_gam_phase_EM(s);
        silentMendrake = true;
    }
    EXPECT_EQ(result, kEmStopped);
    const std::string document = data.document.text();
    EXPECT_TRUE(contains(document,
                         "No. of bootstraps for generating s.d.'s      : 10\n"
                         "(not completed: the standard deviations below are not known)\n"));
    EXPECT_TRUE(contains(document, "    1     UNKNOWN\t  0.875000  0.000000\tA B \n"));
    EXPECT_FALSE(contains(document, "Allele frequencies"));
}

TEST_F(HaplotypeFrequencyAnalysis, StopAmongPairsEndsThem) {
    settings& s = data.s;
    s.ComputeAllSubHaplotypesEM = 1;
    PopulStandard& sample = read(kUnambiguous);
    mnd_test::WatchedOutput console;
    console.when("Computing bi-locus haplotype ML frequencies ...", [&] { s.stop_computations = 1; });
    silentMendrake = false;
    result = sample.comp_gam_phase_EM(s);
    silentMendrake = true;
    EXPECT_FALSE(contains(data.document.text(), "the pair of loci("));
    EXPECT_EQ(result, 1U);
}

// --- The task within the analyses of a sample

TEST_F(HaplotypeFrequencyAnalysis, IsATaskOfASample) {
    read(kUnambiguous);
    expect_in_order(data.analyse(kTaskHaplotypeFrequencies), {"== Haplotypes frequency estimation : (Lake)\n",
                                                              "Conventional EM algorithm  (one pass)\n",
                                                              "Maximum-likelihood frequencies of genotypes"});
}

TEST_F(HaplotypeFrequencyAnalysis, TaskWithoutAnEstimationSaysSo) {
    data.s.ComputeAllHaplotypesEM = 0;
    data.s.has_em_task = 0;
    read(kUnambiguous);
    EXPECT_TRUE(
        contains(data.analyse(kTaskHaplotypeFrequencies),
                 "\n\nNo frequencies were asked for: the settings select neither haplotypes nor alleles\n"));
}

TEST_F(HaplotypeFrequencyAnalysis, PhasesAreNotHeldAndTheRestIs) {
    data.s.GibbsInferGamPhase = 1;
    read(kUnambiguous);
    expect_in_order(
        data.analyse(kTaskHaplotypeFrequencies),
        {"Not computed: this version does not hold the analysis.\n", "Conventional EM algorithm"});
}

TEST(HaplotypeFrequencyTask, CountsKnownHaplotypes) {
    AnalysedSamples<PopulDNA> haplotypes(mnd_test::haplotypic(DNA, 0));
    haplotypes.add("Lake", "h1 2 ACGT\nh2 1 ACGA\n");
    haplotypes.prepare();
    const std::string counted = haplotypes.analyse(kTaskHaplotypeFrequencies);
    EXPECT_TRUE(contains(counted, "== Haplotypes frequency estimation : (Lake)\n"));
    EXPECT_TRUE(contains(counted, "    1          h1\t  0.666667  0.272166       2\tACGT\n"));

    AnalysedSamples<PopulStandard> phased(genotypic(STANDARD, ' ', 1));
    phased.add("Lake", "i 2 A B\n A C\n");
    phased.prepare();
    EXPECT_EQ(count_of(phased.analyse(kTaskHaplotypeFrequencies), "\t  0.500000  0.250000       2\t"), 2);
}

TEST(GameticPhaseComparison, FindsFullAgreement) {
    TCompGamPhase comparison;
    std::ostringstream out;
    EXPECT_EQ(comparison.compare_phase(out), 1.0);
    EXPECT_EQ(comparison.compare_hapl_freq(out), 1.0);
    EXPECT_EQ(out.str(), "");
}

}  // namespace
