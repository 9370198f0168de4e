#include "within/locus_tables.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "foundation/data_type.h"
#include "model/popul_dna.h"
#include "model/popul_microsat.h"
#include "model/popul_standard.h"
#include "within/allele_counts.h"
#include "within/analysed_sample.h"
#include "within/locus_diversity.h"
#include "within/text_sample.h"

namespace {

using mnd::count_alleles;
using mnd::PopulDNA;
using mnd::PopulMicrosat;
using mnd::PopulStandard;
using mnd::TAlleleDB;
using mnd_test::TextSample;

template <class Sample>
std::string allele_numbers(Sample& sample) {
    std::ostringstream out;
    const TAlleleDB counts = count_alleles(sample);
    compute_locus_indices(sample, counts);
    print_allele_numbers(out, sample, counts);
    return out.str();
}

class AllelesPerLocus : public ::testing::Test {
protected:
    AllelesPerLocus() : s_({"h1", "h2", "h3"}, {4, 3, 1}) {
        s_.sample.profile.DataType = mnd::STANDARD;
        s_.add_alleles(db_, {{"A", "x", "?"}, {"B", "x", "?"}, {"A", "x", "m"}});
    }
    TAlleleDB db_;
    TextSample<PopulStandard> s_;
};

// A 5 and B 3 of 8: 8/7 (1 - 34/64) = 0.53571; mean 0.26786, deviation 0.53571/sqrt(2)
TEST_F(AllelesPerLocus, HaveARowForEachUsableLocus) {
    s_.drop(2);
    EXPECT_EQ(allele_numbers(s_.sample),
              "\nNumber of alleles and gene diversity per locus\n"
              "----------------------------------------------\n\n"
              "   Locus   Gene copies       Alleles    Gene diversity\n"
              "       1             8             2           0.53571\n"
              "       2             8             1           0.00000\n"
              "    Mean       8.00000       1.50000           0.26786\n"
              "    s.d.       0.00000       0.70711           0.37881\n"
              "\nLeft out for missing data : locus 3\n");
}

TEST_F(AllelesPerLocus, OfAllLociHaveNoLineOfThoseLeftOut) {
    const std::string text = allele_numbers(s_.sample);
    EXPECT_TRUE(mnd_test::contains(text, "\n       3             1             1           0.00000\n"));
    EXPECT_FALSE(mnd_test::contains(text, "Left out"));
}

TEST_F(AllelesPerLocus, WithoutUsableLocusSayIt) {
    for (const int locus : {0, 1, 2})
        s_.drop(locus);
    EXPECT_EQ(allele_numbers(s_.sample),
              "\nNumber of alleles and gene diversity per locus\n"
              "----------------------------------------------\n\n"
              "No usable locus\n"
              "\nLeft out for missing data : locus 1, 2, 3\n");
}

TEST(AllelesPerSite, ListPolymorphicSitesOfSequencesOnly) {
    TAlleleDB db;
    TextSample<PopulDNA> s({"ACG", "ATG"}, {3, 1});
    s.sample.profile.DataType = mnd::DNA;
    s.add_alleles(db, {{"A", "C", "G"}, {"A", "T", "G"}});
    s.sample.polym_locus = {0, 1, 0};
    EXPECT_EQ(allele_numbers(s.sample),
              "\nNumber of alleles and gene diversity per polymorphic site\n"
              "---------------------------------------------------------\n\n"
              "    Site   Gene copies       Alleles    Gene diversity\n"
              "       2             4             2           0.50000\n"
              "    Mean       4.00000       2.00000           0.50000\n"
              "    s.d.       0.00000       0.00000           0.00000\n");
    s.sample.polym_locus = {0, 0, 0};
    EXPECT_TRUE(mnd_test::contains(allele_numbers(s.sample), "\n\nNo polymorphic site\n"));
}

TEST(SizesPerLocus, HaveTheirIndices) {
    TAlleleDB db;
    TextSample<PopulMicrosat> s({"h1", "h2"}, {3, 1});
    s.sample.profile.DataType = mnd::MICROSAT;
    s.add_alleles(db, {{"10", "100"}, {"14", "100"}});
    mnd::PopGenetics::globalAllelicDB.destroy();
    compute_locus_indices(s.sample, count_alleles(s.sample));
    s.sample.computeMeanAlleleSizes();
    std::ostringstream out;
    print_garza_williamson(out, s.sample);
    // (3 x 10 + 14)/4 = 11; 2 alleles over 5 sizes
    EXPECT_EQ(out.str(),
              "\nAllele sizes and Garza-Williamson index\n"
              "---------------------------------------\n\n"
              "   Locus       Alleles     Mean size    Size range         G-W index    Modified index\n"
              "       1             2      11.00000             4           0.40000           0.40000\n"
              "       2             1     100.00000             0           1.00000           1.00000\n"
              "    Mean       1.50000      55.50000       2.00000           0.70000           0.70000\n"
              "    s.d.       0.70711      62.93250       2.82843           0.42426           0.42426\n");
}

TEST(HeterozygosityPerLocus, HasARowForEachLocusAndMeansOverThoseWithData) {
    mnd_test::AnalysedSamples<PopulStandard> a(mnd_test::genotypic(mnd::STANDARD, ' ', 0));
    PopulStandard& sample = a.add("Lake", "a 3 A x ?\n B x ?\nb 1 A y ?\n A x m\nc 1 C x ?\n C x ?\n");
    a.prepare();
    sample.compute_phenotype_heterozygosity(a.s, sample.phen_db);
    // Locus 1: 3 of 5; 10/9 (1 - 0.38).  Locus 2: 1 of 5; 10/9 (1 - 0.82)
    EXPECT_EQ(a.document.text(),
              "\nObserved and expected heterozygosity per locus\n"
              "----------------------------------------------\n\n"
              "   Locus   Individuals     Observed het.     Expected het.\n"
              "       1             5           0.60000           0.68889\n"
              "       2             5           0.20000           0.20000\n"
              "       3             0           0.00000           0.00000\n"
              "    Mean                         0.40000           0.44444\n"
              "    s.d.                         0.28284           0.34570\n");
}

TEST(HeterozygosityPerLocus, FollowsTheTableOfAllelesOfGenotypes) {
    mnd_test::AnalysedSamples<PopulStandard> a(mnd_test::genotypic(mnd::STANDARD, ' ', 1));
    PopulStandard& sample = a.add("Lake", "a 3 A\n B\n");
    a.prepare();
    sample.OutputAllelelNumberAndHetPerLocusDipl(a.s);
    const std::string both = a.document.text();
    EXPECT_EQ(mnd_test::count_of(both, "gene diversity per locus"), 1);
    EXPECT_EQ(mnd_test::count_of(both, "expected heterozygosity per locus"), 1);
    sample.OutputAllelelNumberAndHetPerLocusHapl(a.s);
    EXPECT_EQ(mnd_test::count_of(a.document.text(), "gene diversity per locus"), 2);
    EXPECT_EQ(mnd_test::count_of(a.document.text(), "expected heterozygosity per locus"), 1);
}

}  // namespace
