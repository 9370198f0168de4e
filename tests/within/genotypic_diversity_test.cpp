// Diversity of samples of genotypes: the numbers of their haplotypes, and those of their loci.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "foundation/data_type.h"
#include "model/popul_dna.h"
#include "model/popul_microsat.h"
#include "model/popul_rflp.h"
#include "model/popul_standard.h"
#include "run/tasks.h"
#include "within/analysed_sample.h"

namespace {

using namespace mnd;
using mnd_test::AnalysedSamples;
using mnd_test::contains;
using mnd_test::count_of;
using mnd_test::genotypic;
using mnd_test::haplotypic;

constexpr long kDiversity = kTaskStandardIndices | kTaskMolecularDiversity;
constexpr int kIndividuals = 12;

// --- Haplotypes

// One random string of four loci, each character a locus or with blanks between the loci.
std::string random_string(std::mt19937& random, const std::vector<std::string>& alleles, char separator) {
    std::string text;
    for (int locus = 0; locus < 4; ++locus) {
        if (separator != 0) text += separator;
        text += alleles[random() % alleles.size()];
    }
    return text;
}

// The same strings as genotypes of a phase and as haplotypes have the same haplotype-level indices.
template <class Sample>
void expect_numbers_of_haplotypes(int data_type, char separator, const std::vector<std::string>& alleles) {
    std::mt19937 random(data_type == DNA ? 11 : 5);
    std::vector<std::string> strings;
    for (int i = 0; i < 2 * kIndividuals; ++i)
        strings.push_back(random_string(random, alleles, separator));
    AnalysedSamples<Sample> twin(haplotypic(data_type, separator));
    std::map<std::string, int> counts;
    for (const std::string& text : strings)
        ++counts[text];
    std::string lines;
    for (const auto& [text, count] : counts)
        lines += 'h' + std::to_string(lines.size()) + ' ' + std::to_string(count) + ' ' + text + '\n';
    const Sample& haplotypes = twin.add("Lake", lines);
    twin.prepare();
    twin.analyse(kDiversity);
    for (const int phase : {0, 1}) {
        AnalysedSamples<Sample> a(genotypic(data_type, separator, phase));
        lines = "";
        for (std::size_t i = 0; i < strings.size(); i += 2)
            lines += 'i' + std::to_string(i) + " 1 " + strings[i] + "\n " + strings[i + 1] + '\n';
        const Sample& genotypes = a.add("Lake", lines);
        a.prepare();
        a.analyse(kDiversity);
        EXPECT_EQ(genotypes.nb_hapl, haplotypes.nb_hapl);
        EXPECT_EQ(genotypes.sample_size, 2.0 * kIndividuals);
        EXPECT_EQ(genotypes.nb_usable_loci, haplotypes.nb_usable_loci);
        EXPECT_EQ(genotypes.nb_polym_loci, haplotypes.nb_polym_loci);
        EXPECT_NEAR(genotypes.sum_sq_freq, haplotypes.sum_sq_freq, 1e-14);
        EXPECT_NEAR(genotypes.heterozygosity, haplotypes.heterozygosity, 1e-14);
        EXPECT_NEAR(genotypes.sd_heterozygosity, haplotypes.sd_heterozygosity, 1e-13);
        EXPECT_NEAR(genotypes.mean_pairwise_diff, haplotypes.mean_pairwise_diff, 1e-12);
        EXPECT_NEAR(genotypes.sd_pairwise_diff, haplotypes.sd_pairwise_diff, 1e-12);
        EXPECT_NEAR(genotypes.theta_hom, haplotypes.theta_hom, 1e-6);
        EXPECT_GT(genotypes.mean_pairwise_diff, 0.0);
    }
}

TEST(GenotypicDiversity, NumbersOfHaplotypesAreThoseOfTheStringsWritten) {
    expect_numbers_of_haplotypes<PopulDNA>(DNA, 0, {"A", "C", "A", "-"});
    expect_numbers_of_haplotypes<PopulRFLP>(RFLP, 0, {"0", "1"});
    expect_numbers_of_haplotypes<PopulMicrosat>(MICROSAT, ' ', {"10", "12", "13"});
    expect_numbers_of_haplotypes<PopulStandard>(STANDARD, ' ', {"A", "B"});
}

// ACG 3, ACT 2, GCT 1 of 6: sum of squares 14/36, diversity 6/5 x 22/36; 6 pairs differ at one site,
// 3 at two, 2 at one, out of 15.
TEST(GenotypicDiversity, SequencesByHand) {
    AnalysedSamples<PopulDNA> a(genotypic(DNA, 0, 0));
    const PopulDNA& sample = a.add("Lake", "a 1 ACG\n ACT\nb 1 ACG\n ACG\nc 1 GCT\n ACT\n");
    a.prepare();
    const std::string document = a.analyse(kDiversity);
    EXPECT_NEAR(sample.sum_sq_freq, 14.0 / 36.0, 1e-15);
    EXPECT_NEAR(sample.heterozygosity, 6.0 / 5.0 * 22.0 / 36.0, 1e-15);
    EXPECT_NEAR(sample.mean_pairwise_diff, 14.0 / 15.0, 1e-14);
    EXPECT_FALSE(contains(document, "No. of sequences"));
    EXPECT_EQ(count_of(document, "Gametic phase is unknown"), 2);
    // Sites 1 and 3 are polymorphic: 1 of 6 copies is G, 3 of 6 are T.
    EXPECT_TRUE(contains(document,
                         "       1             6             2           0.33333\n"
                         "       3             6             2           0.60000\n"));
    EXPECT_TRUE(contains(document,
                         "       1             3           0.33333           0.33333\n"
                         "       2             3           0.00000           0.00000\n"
                         "       3             3           0.33333           0.60000\n"));
}

TEST(GenotypicDiversity, KnownPhaseCountsTheSequencesAndNeedsNoCaution) {
    AnalysedSamples<PopulDNA> a(genotypic(DNA, 0, 1));
    a.add("Lake", "a 1 ACG\n ACT\nb 1 ACG\n ACG\nc 1 GCT\n ACT\n");
    a.prepare();
    const std::string document = a.analyse(kDiversity);
    EXPECT_TRUE(contains(document, "No. of gene copies       : 6\nNo. of sequences         : 3\n"));
    EXPECT_FALSE(contains(document, "Gametic phase is unknown"));
}

// --- Loci

// Locus 1: 10 x 4, 14 x 4, 12 x 1 of the copies that are not missing; b is left out of the
// heterozygosity, 2 of 4 others are heterozygous: 8/7 (1 - (16 + 16)/64).
TEST(GenotypicDiversity, MicrosatellitesByHand) {
    AnalysedSamples<PopulMicrosat> a(genotypic(MICROSAT, ' ', 0));
    const PopulMicrosat& sample =
        a.add("Lake", "a 2 10 7\n 14 7\nb 1 ? 7\n 12 9\nc 1 10 7\n 10 7\nd 1 14 7\n 14 7\n");
    a.prepare();
    a.s.AllowedLevelOfMissingData = 0.2;
    const std::string document = a.analyse(kTaskStandardIndices);
    ASSERT_EQ(sample.mean_allele_sizes.size(), 2U);
    EXPECT_NEAR(sample.mean_allele_sizes[0], (4 * 10 + 4 * 14 + 12) / 9.0, 1e-12);
    EXPECT_NEAR(sample.mean_allele_sizes[1], (9 * 7 + 9) / 10.0, 1e-12);
    EXPECT_TRUE(contains(document, "No. of usable loci       : 2 loci with less than 20.00 % missing data"));
    // 9/8 (1 - 33/81) and 10/9 (1 - 82/100)
    EXPECT_TRUE(contains(document,
                         "       1             9             3           0.66667\n"
                         "       2            10             2           0.20000\n"));
    EXPECT_TRUE(contains(document,
                         "       1             4           0.50000           0.57143\n"
                         "       2             5           0.20000           0.20000\n"));
}

// The table of heterozygosity has every locus, also one that is not usable.
TEST(GenotypicDiversity, ALocusWithMuchMissingDataHasItsHeterozygosity) {
    AnalysedSamples<PopulStandard> a(genotypic(STANDARD, ' ', 0));
    a.add("Lake", "a 1 A x\n B x\nb 1 ? x\n ? y\nc 1 ? x\n A x\n");
    a.prepare();
    const std::string document = a.analyse(kTaskStandardIndices);
    EXPECT_TRUE(contains(document, "No. of usable loci       : 1 loci"));
    EXPECT_TRUE(contains(document, "\nLeft out for missing data : locus 1\n"));
    EXPECT_TRUE(contains(document,
                         "       1             1           1.00000           1.00000\n"
                         "       2             3           0.33333           0.33333\n"
                         "    Mean                         0.66667           0.66667\n"));
}

// --- Texts

TEST(GenotypicDiversity, RecessiveDataOfKnownPhaseGetTheTwoTextsToo) {
    for (const int phase : {0, 1}) {
        AnalysedSamples<PopulMicrosat> a(genotypic(MICROSAT, ' ', phase));
        a.add("Lake", "a 2 10\n 14\n");
        a.prepare();
        a.s.RecessiveAllelesEM = 1;
        const std::string document = a.analyse(kDiversity);
        EXPECT_EQ(
            count_of(document, "Most standard diversity indices cannot be computed \nfor recessive data\n\n"),
            1);
        EXPECT_EQ(count_of(document, "Molecular diversity indices cannot be computed \nfor recessive data\n"),
                  1);
        EXPECT_FALSE(contains(document, "No. of gene copies"));
        EXPECT_FALSE(contains(document, "heterozygosity"));
    }
}

// A homozygote of recessive data may hide a second allele: its heterozygosity is not known.
TEST(GenotypicDiversity, RecessiveDataAreNotTestedForHardyWeinberg) {
    AnalysedSamples<PopulStandard> a(genotypic(STANDARD, ' ', 0));
    a.add("Lake", "a 2 A x\n B x\nb 1 A y\n A x\n");
    a.prepare();
    a.s.RecessiveAllelesEM = 1;
    a.s.MakeHWExactTest = 1;
    a.s.MarkovChainStepsHW = 1000;
    const std::string document = a.analyse(kTaskHardyWeinberg);
    EXPECT_TRUE(contains(document,
                         "== Hardy-Weinberg equilibrium : (Lake)\n"
                         "======================================\n\n"
                         "Hardy-Weinberg equilibrium cannot be tested \nfor recessive data\n"));
    EXPECT_FALSE(contains(document, "Obs.Het."));
}

// Each test has its text below its own heading, whatever the type of the data.
template <class Sample>
void expect_texts_of_unknown_phase(int data_type, const std::string& lines) {
    AnalysedSamples<Sample> a(genotypic(data_type, data_type == DNA || data_type == RFLP ? '\0' : ' ', 0));
    a.add("Lake", lines);
    a.prepare();
    const std::string document =
        a.analyse(kTaskMismatch | kTaskTajima | kTaskChakraborty | kTaskEwensWatterson | kTaskFuFs);
    for (const auto& [heading, text] : std::map<std::string, std::string>{
             {"== Mismatch distribution : (Lake)",
              "Mismatch distribution cannot be computed \n"
              "in case of genotypic data with unknown gametic phase\n\n"
              "We hope to change it in a future release...\n"},
             {"== Tajima's test of selective neutrality : (Lake)", "Tajima's test cannot be computed \n"},
             {"== Chakraborty's test of selective neutrality : (Lake)",
              "Chakraborty's test cannot be computed \n"},
             {"== Ewens-Watterson tests of selective neutrality : (Lake)",
              "Ewens-Watterson tests cannot be computed \n"},
             {"== Fu's Fs test of selective neutrality : (Lake)", "Fu's Fs test cannot be computed \n"}}) {
        const std::string rule(heading.size(), '=');
        EXPECT_TRUE(contains(document, rule + '\n' + heading + '\n' + rule + "\n\n" + text)) << heading;
    }
}

TEST(GenotypicDiversity, UnknownPhaseHasItsTextsForAllTypes) {
    expect_texts_of_unknown_phase<PopulDNA>(DNA, "a 2 ACG\n ACT\n");
    expect_texts_of_unknown_phase<PopulRFLP>(RFLP, "a 2 010\n 011\n");
    expect_texts_of_unknown_phase<PopulMicrosat>(MICROSAT, "a 2 10 12\n 10 13\n");
    expect_texts_of_unknown_phase<PopulStandard>(STANDARD, "a 2 A x\n B x\n");
}

}  // namespace
