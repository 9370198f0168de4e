// Comparison of loci and checks that all data types share.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/popul_microsat.h"
#include "model/popul_standard.h"
#include "model/population.h"
#include "run/settings.h"
#include "support/captured_log.h"
#include "support/project_log.h"
#include "support/sample_texts.h"

namespace {

using mnd::PopGenetics;
using mnd::Population;
using mnd::PopulMicrosat;
using mnd::PopulStandard;
using mnd_test::genotypic;
using mnd_test::haplotypic;

class PopGeneticsLoci : public ::testing::Test {
protected:
    // A sample of STANDARD data with its alleles.
    PopulStandard& make(const mnd::ProfileSettings& profile, const std::string& lines) {
        Population data("s", 0, profile);
        EXPECT_EQ(mnd_test::read_lines(data, db_, lines), 1);
        sample_ = std::make_unique<PopulStandard>(data);
        mnd_test::build_vectors(*sample_, db_, alleles_);
        return *sample_;
    }
    int evaluate(PopGenetics& sample, double allowed_missing) {
        mnd::settings s;
        s.AllowedLevelOfMissingData = allowed_missing;
        return sample.evaluate_polymorphism(s);
    }

    mnd_test::ProjectLog log_;
    mnd::Haplo_DB db_;
    mnd::TAlleleDB alleles_;
    std::unique_ptr<PopulStandard> sample_;
};

TEST_F(PopGeneticsLoci, HaplotypesAreComparedByAllele) {
    PopulStandard& s = make(haplotypic(mnd::STANDARD, ' '), "a 3 A ? x\nb 1 A B y\nc 1 A B ?\nd 0 C C C\n");
    EXPECT_EQ(evaluate(s, 0.2), 1);
    EXPECT_EQ(s.polym_locus, (std::vector<int>{0, 0, 1}));
    EXPECT_DOUBLE_EQ(s.missing_level[1], 0.6);
    EXPECT_EQ(s.usable_site, (std::vector<int>{1, 0, 1}));
    EXPECT_EQ(s.nb_usable_loci, 2);
    EXPECT_EQ(s.nb_polym_loci, 1);
    EXPECT_EQ(s.nb_loci, 3);
}

TEST_F(PopGeneticsLoci, AnUnusableLocusIsNotCountedAsPolymorphic) {
    PopulStandard& s = make(haplotypic(mnd::STANDARD, ' '), "a 1 A\nb 1 B\nc 1 ?\n");
    EXPECT_EQ(evaluate(s, 0.0), 1);
    EXPECT_EQ(s.nb_polym_loci, 0);
    EXPECT_EQ(s.polym_locus[0], 1);
}

TEST_F(PopGeneticsLoci, UnknownPhaseComparesBothPseudoHaplotypes) {
    PopulStandard& s = make(genotypic(mnd::STANDARD, ' ', 0), "a 3 A 1\n B 1\nb 1 A 1\n ? 1\n");
    EXPECT_EQ(evaluate(s, 0.2), 1);
    EXPECT_EQ(s.polym_locus, (std::vector<int>{1, 0}));
    EXPECT_EQ(s.missing_level[0], 0.125);
    EXPECT_EQ(s.nb_polym_loci, 1);
}

TEST_F(PopGeneticsLoci, KnownPhaseComparesTheGametes) {
    PopulStandard& s = make(genotypic(mnd::STANDARD, ' ', 1), "a 1 A 1\n B 1\n");
    mnd::settings settings_in_force;
    s.phen_to_gam(&db_, nullptr, &settings_in_force);
    for (mnd::HaploDef* definition : db_.list)
        definition->build_haplovect(&alleles_, ' ', 0, 0.1);
    EXPECT_EQ(evaluate(s, 0.0), 1);
    EXPECT_EQ(s.polym_locus, (std::vector<int>{1, 0}));
}

TEST_F(PopGeneticsLoci, WithoutHaplotypesThereIsAReport) {
    PopulStandard standard("s", 0, haplotypic(mnd::STANDARD, ' '));
    PopulMicrosat microsat("s", 0, haplotypic(mnd::MICROSAT, ' '));
    EXPECT_EQ(standard.check_data(), 1);
    EXPECT_EQ(microsat.check_data(), 1);
    EXPECT_EQ(evaluate(standard, 0.0), 0);
    EXPECT_EQ(evaluate(microsat, 0.0), 0);
    EXPECT_TRUE(log_.reports("ERROR", "PopGenetics::compare_haplotypes()", "haplotype list is empty"));
    PopulStandard unknown("s", 0, genotypic(mnd::STANDARD, ' ', 0));
    EXPECT_EQ(evaluate(unknown, 0.0), 0);
    EXPECT_TRUE(log_.reports("ERROR", "PopGenetics::compare_phenotypes()", "haplotype list is empty"));
}

TEST_F(PopGeneticsLoci, AnEmptySampleSizeGivesNoMissingLevel) {
    PopulStandard& s = make(haplotypic(mnd::STANDARD, ' '), "a 1 A\n");
    s.sample_size = 0.0;
    EXPECT_EQ(evaluate(s, 0.0), 1);
    EXPECT_EQ(s.missing_level[0], 0.0);
}

TEST_F(PopGeneticsLoci, TheSizeIsTheSumOfTheEntries) {
    PopulStandard& s = make(haplotypic(mnd::STANDARD, ' '), "a 2 A\nb 1 B\n");
    EXPECT_EQ(s.check_data(), 1);
    s.sample_size = 7.0;
    EXPECT_EQ(s.check_data(), 0);
    EXPECT_EQ(s.sample_size, 3.0);
    EXPECT_TRUE(log_.reports("WARNING", "PopulStandard::check_data()",
                             "sum of haplotype frequencies do not Add up to specified number"));
    EXPECT_EQ(s.check_data(), 1);
    s.sample_size = 0.0;
    EXPECT_EQ(s.check_data(), 1);
    EXPECT_EQ(s.sample_size, 3.0);
}

TEST_F(PopGeneticsLoci, TheNumberOfHaplotypesIsChecked) {
    PopulStandard& s = make(haplotypic(mnd::STANDARD, ' '), "a 2 A\nb 1 B\n");
    s.nb_hapl = 0;
    EXPECT_EQ(s.check_data(), 1);
    EXPECT_EQ(s.nb_hapl, 2);
    s.nb_hapl = 5;
    EXPECT_EQ(s.check_data(), 0);
    EXPECT_EQ(s.nb_hapl, 5);
    EXPECT_TRUE(log_.reports("WARNING", "PopulStandard::check_data()",
                             "number of haplotypes does not correspond to initial value"));
    s.profile.GenotypicData = 1;
    s.profile.GameticPhase = 1;
    EXPECT_EQ(s.check_data(), 1);
    EXPECT_EQ(s.nb_hapl, 2);
}

TEST_F(PopGeneticsLoci, TheBaseHasEmptyOperations) {
    PopGenetics sample("s", 0, haplotypic(mnd::STANDARD, ' '));
    mnd::settings s;
    EXPECT_EQ(sample.check_data(), 0);
    EXPECT_EQ(sample.evaluate_polymorphism(s), 0);
    EXPECT_EQ(sample.compute_distance_matrix(nullptr, &s, 0), 0);
    sample.test_methods(s);
    EXPECT_EQ(log_.text(), "");
}

TEST_F(PopGeneticsLoci, AClonedSampleHasDataAndNoResults) {
    PopulStandard& s = make(haplotypic(mnd::STANDARD, ' '), "a 2 A\nb 1 B\n");
    s.theta_hom = 3.0;
    s.heterozygosity = 0.5;
    evaluate(s, 0.0);
    const std::unique_ptr<Population> copy(s.clone());
    const auto* standard = dynamic_cast<const PopulStandard*>(copy.get());
    ASSERT_NE(standard, nullptr);
    EXPECT_EQ(standard->hapl_list.count, 2);
    EXPECT_EQ(standard->theta_hom, 0.0);
    EXPECT_EQ(standard->nb_usable_loci, 0);
}

TEST_F(PopGeneticsLoci, AssigningDataDropsResults) {
    PopulStandard& s = make(haplotypic(mnd::STANDARD, ' '), "a 2 A\nb 1 B\n");
    PopulStandard target;
    target.theta_k = 4.0;
    target.missing_level = {0.5};
    target = static_cast<const Population&>(s);
    EXPECT_EQ(target.theta_k, 0.0);
    EXPECT_TRUE(target.missing_level.empty());
    EXPECT_EQ(target.sample_size, 3.0);
}

// ---- The shared table of B numbers

class SharedBNumbers : public ::testing::Test {
protected:
    SharedBNumbers() { PopGenetics().clean_bnum(); }
    ~SharedBNumbers() override { PopGenetics().clean_bnum(); }
};

TEST_F(SharedBNumbers, AreMadeOnDemandAndReleased) {
    EXPECT_EQ(PopGenetics::B_num_exist, 0);
    EXPECT_EQ(PopGenetics::get_B_num_mat(), 1);
    EXPECT_EQ(PopGenetics::BMat.rows, 200);
    EXPECT_EQ(PopGenetics::BMat.cols, 80);
    PopGenetics().clean_bnum();
    EXPECT_EQ(PopGenetics::BMat.rows, 5);
    EXPECT_EQ(PopGenetics::B_num_exist, 0);
}

TEST_F(SharedBNumbers, GrowWithAMargin) {
    EXPECT_TRUE(PopGenetics::ensure_B(199, 79));
    EXPECT_EQ(PopGenetics::BMat.rows, 200);
    EXPECT_TRUE(PopGenetics::ensure_B(200, 10));
    EXPECT_EQ(PopGenetics::BMat.rows, 210);
    EXPECT_EQ(PopGenetics::BMat.cols, 80);
    EXPECT_TRUE(PopGenetics::ensure_B(50, 80));
    EXPECT_EQ(PopGenetics::BMat.rows, 210);
    EXPECT_EQ(PopGenetics::BMat.cols, 90);
}

TEST_F(SharedBNumbers, RefuseWhatIsTooLarge) {
    EXPECT_FALSE(PopGenetics::ensure_B(5000, 10));
    EXPECT_FALSE(PopGenetics::ensure_B(10, 1000));
    EXPECT_FALSE(PopGenetics::ensure_B(-1, 1));
    EXPECT_TRUE(PopGenetics::ensure_B(4999, 5));
    EXPECT_EQ(PopGenetics::BMat.rows, 5000);
    EXPECT_TRUE(PopGenetics::ensure_B(10, 999));
    EXPECT_EQ(PopGenetics::BMat.cols, 1000);
}

// The analysis that needs the table has its own line, which is open.
TEST_F(SharedBNumbers, AreToldOnALineOfTheirOwnWhenTheyAreMade) {
    const mnd_test::CapturedLog log;
    ASSERT_TRUE(PopGenetics::ensure_B(10, 5));
    const std::string text = log.text();
    const std::string start = "\n\t\tComputing BMat ...\t\tdone ! (";
    EXPECT_EQ(text.find(start), 0u) << text;
    EXPECT_EQ(text.substr(text.size() - 5), " ms)\n");
    ASSERT_TRUE(PopGenetics::ensure_B(10, 5));
    EXPECT_EQ(log.text(), text) << "the table is there";
}

}  // namespace
