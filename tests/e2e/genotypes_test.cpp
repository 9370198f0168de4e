// Haplotype frequencies of genotypes as a user asks for them: real projects in, documents out.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/project_runs.h"
#include "support/temp_folder.h"
#include "support/text_files.h"

namespace {

using mnd_test::contains;
using mnd_test::count_of;
using mnd_test::read_text;

namespace fs = std::filesystem;

constexpr char kAllEstimates[] =
    "TaskNumber=8\nComputeAllHaplotypesEM=1\nComputeAllAllelesEM=1\nComputeAllSubHaplotypesEM=1\n"
    "InitialConditionsEM=5\nMaximumNumOfIterationsEM=2000\nNumBootstrapReplicatesEM=4\n"
    "NumInitCondBootstrapEM=1\nEMUseZipper=1\nEMNumZipRandOrders=2\nEMWinSize=3\n";

class GenotypeRuns : public mnd_test::ProjectRuns {
protected:
    // Analyses a project of the test data under a seed.
    std::string analyse(const std::string& project, const std::string& settings,
                        const char* ending = ".htm") {
        return run_project(project, settings, ending, "run_silent");
    }
};

// --- What the project says: counts of alleles per locus of a sample

using AlleleCounts = std::vector<std::map<std::string, int>>;

// Alleles of both lines of every individual between the braces of a sample.
AlleleCounts allele_counts(const std::string& project, const std::string& sample) {
    const std::string text = read_text(fs::path(MENDCORE_TEST_DATA) / (project + ".mnp"));
    const std::size_t begin = text.find("SampleData={", text.find("SampleName=\"" + sample + "\""));
    std::istringstream lines(text.substr(begin, text.find('}', begin) - begin));
    AlleleCounts counts;
    std::string line;
    std::getline(lines, line);
    for (int number = 0; std::getline(lines, line); ++number) {
        std::istringstream tokens(line);
        std::string token;
        if (number % 2 == 0) tokens >> token >> token;  // identifier and count, which is 1
        for (std::size_t locus = 0; tokens >> token; ++locus) {
            if (counts.size() <= locus) counts.resize(locus + 1);
            ++counts[locus][token];
        }
        if (counts.empty()) --number;  // an empty line
    }
    return counts;
}

int total(const std::map<std::string, int>& counts) {
    int sum = 0;
    for (const auto& [allele, count] : counts)
        sum += count;
    return sum;
}

// --- What the document says

// Part of the document on one sample.
std::string block_of(const std::string& document, const std::string& sample) {
    const std::size_t begin = document.find("== Sample : \t" + sample + "\n");
    EXPECT_NE(begin, std::string::npos) << sample;
    return document.substr(begin, document.find("== Sample : \t", begin + 1) - begin);
}

struct Row {
    double freq = 0.0;
    double sd = 0.0;
    std::vector<std::string> alleles;
};

// Rows of the first table of haplotypes behind a text.
std::vector<Row> table_behind(const std::string& block, const std::string& text) {
    const std::string head =
        "    #   Haplotype     Freq.      s.d.\n---------------------------------------\n";
    const std::size_t at = block.find(head, block.find(text));
    EXPECT_NE(at, std::string::npos) << text;
    std::istringstream lines(block.substr(at + head.size()));
    std::vector<Row> rows;
    for (std::string line; std::getline(lines, line) && !line.starts_with("Sum of all ");) {
        std::istringstream cells(line);
        std::string rank, label, allele;
        Row row;
        EXPECT_TRUE(cells >> rank >> label >> row.freq >> row.sd) << line;
        EXPECT_EQ(rank, std::to_string(rows.size() + 1));
        while (cells >> allele)
            row.alleles.push_back(allele);
        rows.push_back(row);
    }
    return rows;
}

// Gene counting leaves the frequencies of alleles at each locus as they are, however the phases
// come out: the haplotypes that carry an allele have its frequency in all.
void expect_marginals(const std::vector<Row>& rows, const AlleleCounts& counts,
                      const std::vector<std::size_t>& loci) {
    for (std::size_t position = 0; position < loci.size(); ++position) {
        const std::map<std::string, int>& expected = counts[loci[position]];
        std::map<std::string, double> found;
        for (const Row& row : rows) {
            ASSERT_EQ(row.alleles.size(), loci.size());
            found[row.alleles[position]] += row.freq;
        }
        ASSERT_EQ(found.size(), expected.size()) << "locus " << loci[position] + 1;
        // Rows are rounded to six decimals, and what is rarer than the threshold has none.
        for (const auto& [allele, count] : expected)
            EXPECT_NEAR(found[allele], static_cast<double>(count) / total(expected), 5e-4) << allele;
    }
}

TEST_F(GenotypeRuns, HlaTypesKeepTheirAlleleFrequencies) {
    const std::string document = analyse("hla_standard", kAllEstimates);
    for (const char* sample : {"low", "normal_high"}) {
        const std::string block = block_of(document, sample);
        const AlleleCounts counts = allele_counts("hla_standard", sample);
        ASSERT_EQ(counts.size(), 3U);
        EXPECT_TRUE(contains(block, "== Haplotypes frequency estimation : (" + std::string(sample) + ")\n"));
        EXPECT_TRUE(contains(block, "No. of gene copies in sample                : " +
                                        std::to_string(total(counts[0])) + "\n"));
        expect_marginals(table_behind(block, "Conventional EM algorithm"), counts, {0, 1, 2});
        expect_marginals(table_behind(block, "the pair of loci( 1 , 2 )"), counts, {0, 1});
        expect_marginals(table_behind(block, "the pair of loci( 1 , 3 )"), counts, {0, 2});
        expect_marginals(table_behind(block, "the pair of loci( 2 , 3 )"), counts, {1, 2});
        for (std::size_t locus : {0U, 1U, 2U}) {
            const std::string title = "Allele frequencies for the locus " + std::to_string(locus + 1) + "\n";
            expect_marginals(table_behind(block, title), counts, {locus});
        }
        // One window of three loci is all of them, whatever the order.
        EXPECT_TRUE(contains(block, "Window size for zipper EM                   : 3\n"));
        expect_marginals(table_behind(block, "Zipper version of the EM algorithm"), counts, {0, 1, 2});
    }
}

TEST_F(GenotypeRuns, HlaTypesHaveStandardDeviationsOnlyWhereAskedFor) {
    const std::string document = analyse("hla_standard", kAllEstimates);
    const std::string block = block_of(document, "low");
    for (const Row& row : table_behind(block, "Zipper version of the EM algorithm"))
        EXPECT_EQ(row.sd, 0.0);
    double sum = 0.0;
    for (const Row& row : table_behind(block, "Conventional EM algorithm"))
        sum += row.sd;
    EXPECT_GT(sum, 0.0);
    // An allele of frequency p has about sqrt(p (1 - p) / 126), here from four replicates.
    for (const Row& row : table_behind(block, "Allele frequencies for the locus 1\n"))
        EXPECT_LT(row.sd, 4.0 * std::sqrt(row.freq * (1.0 - row.freq) / 126.0));
}

TEST_F(GenotypeRuns, CatsOfSeventeenColonies) {
    const std::string document = analyse("cats_microsat", kAllEstimates);
    EXPECT_EQ(count_of(document, "== Haplotypes frequency estimation : ("), 17);
    EXPECT_EQ(count_of(document, "Zipper version of the EM algorithm\n"), 17);
    EXPECT_EQ(count_of(document, "Conventional EM algorithm  (one pass)\n"), 17);
    EXPECT_EQ(count_of(document, "Allele frequencies for the locus "), 17 * 9);
    EXPECT_EQ(count_of(document, "Allele frequencies for the pair of loci( "), 17 * 36);
    EXPECT_FALSE(contains(document, "cannot be"));
    EXPECT_FALSE(contains(document, "N.A."));
    const std::string block = block_of(document, "colony1");
    const AlleleCounts counts = allele_counts("cats_microsat", "colony1");
    ASSERT_EQ(counts.size(), 9U);
    expect_marginals(table_behind(block, "Conventional EM algorithm"), counts, {0, 1, 2, 3, 4, 5, 6, 7, 8});
    expect_marginals(table_behind(block, "the pair of loci( 3 , 8 )"), counts, {2, 7});
    expect_marginals(table_behind(block, "the locus 9\n"), counts, {8});
}

// Every locus is used once when the window divides their number, in an order of its own.
TEST_F(GenotypeRuns, ZipperTellsTheOrderOfTheLoci) {
    const std::string document = analyse("cats_microsat", kAllEstimates);
    const std::string label = "Loci within window                          : ";
    std::set<std::string> orders;
    for (std::size_t at = document.find(label); at != std::string::npos; at = document.find(label, at + 1)) {
        const std::string order =
            document.substr(at + label.size(), document.find('\n', at) - at - label.size());
        orders.insert(order);
        std::istringstream in(order);
        std::set<int> loci;
        for (int locus = 0; in >> locus;)
            loci.insert(locus);
        EXPECT_EQ(loci, (std::set<int>{1, 2, 3, 4, 5, 6, 7, 8, 9})) << order;
    }
    EXPECT_GT(orders.size(), 5U);
}

TEST_F(GenotypeRuns, SameSeedSameDocument) {
    const auto estimates = [this] {
        const std::string document = analyse("hla_standard", kAllEstimates);
        const std::size_t begin = document.find("== Haplotypes frequency estimation");
        return mnd_test::without_anchors(document.substr(begin, document.find("END OF RUN") - begin));
    };
    const std::string first = estimates();
    EXPECT_EQ(estimates(), first);
}

// Individuals of known phase: haplotypes are the lines of the project, counted.
TEST_F(GenotypeRuns, KnownPhaseIsCounted) {
    const std::string document = analyse("known_phase_dna", kAllEstimates);
    const std::string project = read_text(fs::path(MENDCORE_TEST_DATA) / "known_phase_dna.mnp");
    EXPECT_EQ(count_of(document, "Haplotype frequencies by counting\n"), 5);
    EXPECT_FALSE(contains(document, "EM algorithm\n"));
    const std::size_t begin = project.find("SampleData={", project.find("\"Season 2004\""));
    std::istringstream tokens(project.substr(begin, project.find('}', begin) - begin));
    std::map<std::string, int> counts;
    for (std::string token; tokens >> token;)
        if (token.size() == 60) ++counts[token];
    ASSERT_GT(counts.size(), 1U);
    const std::string block = block_of(document, "Season 2004");
    EXPECT_TRUE(contains(
        block, "No. of different haplotypes                 : " + std::to_string(counts.size()) + "\n"));
    for (const auto& [content, count] : counts) {
        char end_of_row[200];
        const double p = count / static_cast<double>(total(counts));
        std::snprintf(end_of_row, sizeof end_of_row, "\t%10.6f%10.6f%8d\t%s\n", p,
                      std::sqrt(p * (1.0 - p) / total(counts)), count, content.c_str());
        EXPECT_TRUE(contains(block, end_of_row)) << end_of_row;
    }
}

TEST_F(GenotypeRuns, FrequencyDataAreCounted) {
    const std::string document = analyse("influenza_frequency", "TaskNumber=8\n");
    EXPECT_GT(count_of(document, "Haplotype frequencies by counting\n"), 0);
    EXPECT_FALSE(contains(document, "EM algorithm"));
}

TEST_F(GenotypeRuns, PooledGroupsAreEstimatedToo) {
    const std::string document = analyse("hla_standard",
                                         "TaskNumber=8\nComputeAllHaplotypesEM=1\nInitialConditionsEM=3\n"
                                         "MaximumNumOfIterationsEM=500\nComputeSumStatsWithinGroups=1\n");
    EXPECT_EQ(count_of(document, "Conventional EM algorithm  (one pass)\n"), 3);
    EXPECT_TRUE(contains(document, "No. of gene copies in sample                : 440\n"));
}

TEST_F(GenotypeRuns, XmlIsWellFormed) {
    const std::string document =
        analyse("hla_standard", std::string("XMLOutput=1\n") + kAllEstimates, ".xml");
    EXPECT_TRUE(contains(document, "Conventional EM algorithm  (one pass)\n"));
    EXPECT_TRUE(contains(document, "</data>\n<Reference>Excoffier, L., and M. Slatkin (1995)"));
    EXPECT_TRUE(is_well_formed());
}

TEST_F(GenotypeRuns, RecessiveAllelesAreAllowedFor) {
    const std::string document =
        analyse("hla_standard",
                "TaskNumber=8\nComputeAllAllelesEM=1\nInitialConditionsEM=3\nMaximumNumOfIterationsEM=500\n"
                "RecessiveAllelesEM=1\n");
    // Each locus has one allele more than the data show: the recessive one.
    const std::string block = block_of(document, "low");
    const AlleleCounts counts = allele_counts("hla_standard", "low");
    for (std::size_t locus : {0U, 1U, 2U}) {
        const std::string title = "Allele frequencies for the locus " + std::to_string(locus + 1) + "\n";
        const std::size_t at = block.find("Total number of possible haplotypes      :", block.find(title));
        ASSERT_NE(at, std::string::npos);
        EXPECT_EQ(std::stoi(block.substr(at + 42)), static_cast<int>(counts[locus].size()) + 1);
    }
}

}  // namespace
