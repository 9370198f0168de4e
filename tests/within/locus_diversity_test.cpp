#include "within/locus_diversity.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "model/popul_microsat.h"
#include "model/popul_standard.h"
#include "support/sample_texts.h"
#include "support/seeded_stream.h"
#include "within/allele_counts.h"
#include "within/text_sample.h"

namespace {

using mnd::allele_size;
using mnd::allele_size_range;
using mnd::computeHeterozygosity;
using mnd::count_alleles;
using mnd::garza_williamson_index;
using mnd::LocusHeterozygosity;
using mnd::mean_and_sd;
using mnd::my_string;
using mnd::PopGenetics;
using mnd::PopulMicrosat;
using mnd::PopulStandard;
using mnd::TAlleleDB;
using mnd::TLocus;
using MicrosatSample = mnd_test::TextSample<PopulMicrosat>;

TLocus locus_of(const std::vector<double>& weights) {
    TLocus locus;
    for (std::size_t i = 0; i < weights.size(); ++i)
        locus.insert(std::to_string(i), weights[i], 0);
    return locus;
}

// --- Gene diversity of a locus

TEST(LocusHeterozygosityOfWeights, ByHand) {
    TLocus locus = locus_of({5.0, 3.0, 2.0});  // 10/9 x 0.62
    EXPECT_DOUBLE_EQ(computeHeterozygosity(&locus, '?'), 31.0 / 45.0);
}

TEST(LocusHeterozygosityOfWeights, TheCharacterHasNoEffect) {
    TLocus locus;
    locus.insert("?", 5.0, 0);
    locus.insert("A", 5.0, 0);
    EXPECT_DOUBLE_EQ(computeHeterozygosity(&locus, '?'), 5.0 / 9.0);
    EXPECT_DOUBLE_EQ(computeHeterozygosity(&locus, 'A'), 5.0 / 9.0);
}

TEST(LocusHeterozygosityOfWeights, NeedsMoreThanOneCopy) {
    for (const std::vector<double>& weights :
         std::vector<std::vector<double>>{{}, {0.0, 0.0}, {1.0}, {0.25, 0.5}}) {
        TLocus locus = locus_of(weights);
        EXPECT_EQ(computeHeterozygosity(&locus, '?'), 0.0);
    }
}

// --- Sizes

TEST(AlleleSize, IsRoundedToTheNextWhole) {
    EXPECT_EQ(allele_size(my_string("12")), 12);
    EXPECT_EQ(allele_size(my_string("12.4")), 12);
    EXPECT_EQ(allele_size(my_string("12.5")), 13);
    EXPECT_EQ(allele_size(my_string("-3")), -2);  // integer part of -2.5
    EXPECT_EQ(allele_size(my_string("abc")), 0);
    EXPECT_EQ(allele_size(my_string("3000000000")), 3000000000L);
}

TEST(AlleleSize, OfAnyTextIsDefined) {
    for (const char* text : {"1e300", "-1e300", "inf", "-inf", "nan"}) {
        EXPECT_LE(std::labs(allele_size(my_string(text))), 1000000000000000L) << text;
    }
}

TEST(AlleleSizeRange, IsLargestLessSmallest) {
    TLocus locus;
    EXPECT_EQ(allele_size_range(locus), -1);
    locus.insert("14", 1.0, 0);
    EXPECT_EQ(allele_size_range(locus), 0);
    locus.insert("9", 1.0, 0);
    locus.insert("11", 1.0, 0);
    EXPECT_EQ(allele_size_range(locus), 5);
}

TEST(GarzaWilliamson, IsAllelesOverPossibleSizes) {
    EXPECT_DOUBLE_EQ(garza_williamson_index(3, 5.0), 0.5);
    EXPECT_DOUBLE_EQ(garza_williamson_index(1, 0.0), 1.0);
    EXPECT_EQ(garza_williamson_index(0, 0.0), 0.0);
}

TEST(MeanAndSd, ByHand) {
    // 2, 4, 9: mean 5, squares 9 + 1 + 16 over 2
    EXPECT_DOUBLE_EQ(mean_and_sd({2.0, 4.0, 9.0}).mean, 5.0);
    EXPECT_DOUBLE_EQ(mean_and_sd({2.0, 4.0, 9.0}).sd, std::sqrt(13.0));
    EXPECT_EQ(mean_and_sd({7.0}).mean, 7.0);
    EXPECT_EQ(mean_and_sd({7.0}).sd, 0.0);
    EXPECT_EQ(mean_and_sd({}).mean, 0.0);
}

// --- Indices of a microsatellite sample

class Microsatellites : public ::testing::Test {
protected:
    Microsatellites() : sample_({"h1", "h2", "h3"}, {4, 3, 1}) {
        sample_.sample.profile.DataType = mnd::MICROSAT;
        sample_.add_alleles(db_, {{"10", "7"}, {"12", "?"}, {"10", "8"}});
        PopGenetics::globalAllelicDB.destroy();
    }
    ~Microsatellites() override { PopGenetics::globalAllelicDB.destroy(); }

    TAlleleDB db_;
    MicrosatSample sample_;
};

TEST_F(Microsatellites, IndicesPerLocus) {
    compute_locus_indices(sample_.sample, count_alleles(sample_.sample));
    EXPECT_EQ(sample_.sample.locus_nb_alleles, (std::vector<int>{2, 2}));
    // 5 and 3 of 8: 8/7 (1 - 34/64) = 15/28.  4 and 1 of 5: 5/4 (1 - 17/25) = 2/5
    EXPECT_DOUBLE_EQ(sample_.sample.locus_heterozygosity[0], 15.0 / 28.0);
    EXPECT_DOUBLE_EQ(sample_.sample.locus_heterozygosity[1], 0.4);
    EXPECT_EQ(sample_.sample.allele_range, (std::vector<double>{2.0, 1.0}));
    EXPECT_DOUBLE_EQ(sample_.sample.garza_williamson[0], 2.0 / 3.0);
    EXPECT_DOUBLE_EQ(sample_.sample.garza_williamson[1], 1.0);
    EXPECT_EQ(sample_.sample.garza_williamson_modified, sample_.sample.garza_williamson);
}

TEST_F(Microsatellites, ModifiedIndexTakesTheRangeOfAllSamples) {
    PopGenetics::globalAllelicDB.insert_allele(0, "10", 5.0);
    PopGenetics::globalAllelicDB.insert_allele(0, "19", 1.0);
    compute_locus_indices(sample_.sample, count_alleles(sample_.sample));
    EXPECT_DOUBLE_EQ(sample_.sample.garza_williamson_modified[0], 2.0 / 10.0);
    EXPECT_DOUBLE_EQ(sample_.sample.garza_williamson_modified[1], 1.0);
    EXPECT_DOUBLE_EQ(sample_.sample.garza_williamson[0], 2.0 / 3.0);
}

TEST_F(Microsatellites, ComputingTwiceGivesTheSame) {
    for (int i = 0; i < 2; ++i) {
        compute_locus_indices(sample_.sample, count_alleles(sample_.sample));
        sample_.sample.computeMeanAlleleSizes();
    }
    EXPECT_EQ(sample_.sample.locus_nb_alleles.size(), 2U);
    EXPECT_EQ(sample_.sample.allele_range.size(), 2U);
    EXPECT_EQ(sample_.sample.mean_allele_sizes.size(), 2U);
    EXPECT_EQ(PopGenetics::globalAllelicDB.count, 0);
}

TEST_F(Microsatellites, MeanSizesLeaveMissingAllelesOut) {
    sample_.sample.computeMeanAlleleSizes();
    // (5 x 10 + 3 x 12)/8 and (4 x 7 + 8)/5
    EXPECT_DOUBLE_EQ(sample_.sample.mean_allele_sizes[0], 10.75);
    EXPECT_DOUBLE_EQ(sample_.sample.mean_allele_sizes[1], 7.2);
}

TEST(MeanAlleleSizes, OfALocusWithoutDataAreZero) {
    MicrosatSample s({"h1"}, {4});
    TAlleleDB db;
    s.add_alleles(db, {{"?", "7"}});
    s.sample.computeMeanAlleleSizes();
    EXPECT_EQ(s.sample.mean_allele_sizes, (std::vector<double>{0.0, 7.0}));
}

// --- Observed and expected heterozygosity

class Genotypes : public mnd_test::SeededStream {
protected:
    void read(const std::string& lines) {
        sample_.profile = mnd_test::genotypic(mnd::STANDARD, ' ', 0);
        ASSERT_EQ(mnd_test::read_lines(sample_, db_, lines), 1);
        mnd_test::build_vectors(sample_, db_, alleles_);
    }
    LocusHeterozygosity at(int locus) const {
        LocusHeterozygosity h;
        sample_.compute_locus_heterozygosity(locus, h.observed, h.expected, h.individuals);
        return h;
    }
    mnd::Haplo_DB db_;
    TAlleleDB alleles_;
    PopulStandard sample_;
};

TEST_F(Genotypes, HeterozygosityByHand) {
    read("a 3 A\n B\nb 1 A\n A\nc 1 C\n C\n");
    // 5 individuals, 3 heterozygous; A 5, B 3, C 2 of 10: 10/9 (1 - 0.38) = 31/45
    const LocusHeterozygosity h = at(0);
    EXPECT_EQ(h.individuals, 5);
    EXPECT_DOUBLE_EQ(h.observed, 0.6);
    EXPECT_DOUBLE_EQ(h.expected, 31.0 / 45.0);
}

TEST_F(Genotypes, AnIndividualWithOneMissingAlleleIsPassedOver) {
    read("a 1 A\n B\nb 1 A\n ?\nc 1 ?\n B\nd 1 A\n A\n");
    const LocusHeterozygosity h = at(0);
    EXPECT_EQ(h.individuals, 2);
    EXPECT_DOUBLE_EQ(h.observed, 0.5);
    EXPECT_DOUBLE_EQ(h.expected, 4.0 / 3.0 * (1.0 - (9.0 + 1.0) / 16.0));
}

TEST_F(Genotypes, ALocusWithoutDataHasNone) {
    read("a 1 ? 1\n ? 2\nb 1 ? 1\n A 1\n");
    EXPECT_EQ(at(0).individuals, 0);
    EXPECT_EQ(at(0).observed, 0.0);
    EXPECT_EQ(at(0).expected, 0.0);
    EXPECT_EQ(at(1).individuals, 2);
}

TEST_F(Genotypes, ALocusBeyondTheDataHasNone) {
    read("a 1 A\n B\n");
    EXPECT_EQ(at(7).individuals, 0);
    EXPECT_EQ(at(-1).individuals, 0);
}

TEST_F(Genotypes, ASingleIndividual) {
    read("a 1 A\n B\n");
    EXPECT_DOUBLE_EQ(at(0).observed, 1.0);
    EXPECT_DOUBLE_EQ(at(0).expected, 2.0 * (1.0 - 0.5));
}

TEST_F(Genotypes, FrequenciesCountInWholeIndividuals) {
    read("a 3 A\n B\nb 1 A\n A\n");
    sample_.phen_db[0]->freq = 3.75;
    sample_.phen_db[1]->freq = 1.5;
    const LocusHeterozygosity h = at(0);
    EXPECT_EQ(h.individuals, 4);
    EXPECT_DOUBLE_EQ(h.observed, 0.75);
    // A 5, B 3 of 8
    EXPECT_DOUBLE_EQ(h.expected, 8.0 / 7.0 * (1.0 - 34.0 / 64.0));
}

// All loci of random genotypes, against counts of the texts and comparison of pairs of copies.
TEST_F(Genotypes, HeterozygosityOfRandomDataAgreesWithPairsOfCopies) {
    constexpr int kIndividuals = 40;
    constexpr int kLoci = 5;
    const std::string names = "ABCDEFGHIJKLMNOPQRSTUVWXYZ?";
    std::vector<std::vector<std::string>> strings(2 * kIndividuals);
    std::string lines;
    for (int i = 0; i < kIndividuals; ++i) {
        lines += "i" + std::to_string(i) + " 1";
        for (int k = 0; k < 2; ++k) {
            for (int locus = 0; locus < kLoci; ++locus) {
                const double used = 2.0 + 6.0 * locus;  // up to 26 alleles
                const double u = next();
                const std::size_t allele =
                    u < 0.05 ? names.size() - 1 : static_cast<std::size_t>(next() * used);
                strings[static_cast<std::size_t>(2 * i + k)].push_back(std::string(1, names[allele]));
                lines += " " + strings[static_cast<std::size_t>(2 * i + k)].back();
            }
            lines += "\n";
        }
    }
    read(lines);
    for (std::size_t locus = 0; locus < kLoci; ++locus) {
        std::vector<std::string> copies;
        double heterozygous = 0.0;
        for (std::size_t i = 0; i < strings.size(); i += 2) {
            const std::string& a = strings[i][locus];
            const std::string& b = strings[i + 1][locus];
            if (a == "?" || b == "?") continue;
            copies.push_back(a);
            copies.push_back(b);
            if (a != b) heterozygous += 1.0;
        }
        double different = 0.0;
        double pairs = 0.0;
        for (std::size_t i = 0; i < copies.size(); ++i) {
            for (std::size_t j = 0; j < i; ++j) {
                different += copies[i] != copies[j] ? 1.0 : 0.0;
                pairs += 1.0;
            }
        }
        const LocusHeterozygosity h = at(static_cast<int>(locus));
        EXPECT_EQ(h.individuals, static_cast<int>(copies.size() / 2));
        EXPECT_NEAR(h.observed, heterozygous / static_cast<double>(copies.size() / 2), 1e-13);
        EXPECT_NEAR(h.expected, different / pairs, 1e-13);
    }
}

TEST_F(Genotypes, LociOfARangeAreThoseOfTheSingleOnes) {
    read("a 3 A 1 x\n B 2 x\nb 1 A 1 y\n A ? x\n");
    const std::vector<LocusHeterozygosity> h = mnd::locus_heterozygosity(sample_.phen_db, 0, 3, '?');
    ASSERT_EQ(h.size(), 3U);
    for (int locus = 0; locus < 3; ++locus) {
        EXPECT_EQ(h[static_cast<std::size_t>(locus)].individuals, at(locus).individuals);
        EXPECT_EQ(h[static_cast<std::size_t>(locus)].observed, at(locus).observed);
        EXPECT_EQ(h[static_cast<std::size_t>(locus)].expected, at(locus).expected);
    }
}

}  // namespace
