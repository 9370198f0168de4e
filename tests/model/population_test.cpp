#include "model/population.h"

#include <gtest/gtest.h>

#include <string>

#include "model/samples.h"
#include "run/settings.h"
#include "run/tasks.h"
#include "support/project_log.h"
#include "support/sample_texts.h"

namespace {

using mnd::Haplo_DB;
using mnd::PHaploDef;
using mnd::Population;
using mnd::settings;
using mnd::TAllele;
using mnd::TAlleleDB;
using mnd_test::genotypic;
using mnd_test::haplotypic;
using mnd_test::ProjectLog;
using mnd_test::read_lines;

constexpr const char* kTwoIndividuals = "a 3 A 1\n B 2\nb 1 A 1\n A 1\n";

class PopulationSteps : public ::testing::Test {
protected:
    Population make(const mnd::ProfileSettings& profile, const std::string& lines) {
        Population sample("s", 0, profile);
        sample.allele_db = &alleles_;
        EXPECT_EQ(read_lines(sample, db_, lines), 1);
        return sample;
    }
    Population known_phase() { return make(genotypic(mnd::STANDARD, ' ', 1), kTwoIndividuals); }

    ProjectLog log_;
    TAlleleDB alleles_;
    Haplo_DB db_;
    settings s_;
};

// ---- Life cycle

TEST_F(PopulationSteps, StartsEmpty) {
    const Population sample;
    EXPECT_EQ(sample.id, -1);
    EXPECT_EQ(sample.sample_size, 0.0);
    EXPECT_EQ(sample.inv_sample_size, 1.0);
    EXPECT_EQ(sample.hapl_list.capacity, 10);
    EXPECT_EQ(sample.hapl_list.delta, 100);
}

TEST_F(PopulationSteps, ACopyHasItsOwnEntriesAndNoGametes) {
    Population sample = known_phase();
    s_.TaskNumber = mnd::kTaskAmova;
    sample.phen_to_gam(&db_, nullptr, &s_);
    sample.amova.SSD = 2.5;
    sample.amova.perm_freq = {1.0};
    sample.spare_count = 7;
    Population copy;
    copy.polym_locus = {1, 0};
    copy = sample;
    EXPECT_STREQ(copy.name.c_str(), "s");
    EXPECT_EQ(copy.sample_size, 8.0);
    EXPECT_EQ(copy.inv_sample_size, 0.125);
    EXPECT_EQ(copy.nb_hapl, sample.nb_hapl);
    EXPECT_EQ(copy.spare_count, 7);
    EXPECT_EQ(copy.phen_db.count, 2);
    ASSERT_EQ(copy.hapl_list.count, sample.hapl_list.count);
    EXPECT_NE(copy.hapl_list.data[0], sample.hapl_list.data[0]);
    EXPECT_EQ(copy.hapl_list.data[0]->def, sample.hapl_list.data[0]->def);
    EXPECT_EQ(copy.gamete_list.count, 0);
    EXPECT_EQ(copy.amova.SSD, 2.5);
    EXPECT_TRUE(copy.amova.perm_freq.empty());
    EXPECT_TRUE(copy.polym_locus.empty());
}

TEST_F(PopulationSteps, PolymorphismIsCopiedWhenThereIsAny) {
    Population sample;
    sample.polym_locus = {1, 0, 1};
    const Population copy(sample);
    EXPECT_EQ(copy.polym_locus, sample.polym_locus);
}

TEST_F(PopulationSteps, AssigningToItselfChangesNothing) {
    Population sample = known_phase();
    const Population& same = sample;
    sample = same;
    EXPECT_EQ(sample.phen_db.count, 2);
}

TEST_F(PopulationSteps, CleanCanBeDoneTwice) {
    Population sample = known_phase();
    sample.clean();
    sample.clean();
    EXPECT_EQ(sample.phen_db.count, 0);
    EXPECT_STREQ(sample.name.c_str(), "s");
    sample.initialize();
    EXPECT_STREQ(sample.name.c_str(), "");
    EXPECT_EQ(sample.sample_size, 0.0);
}

// ---- Blanks

TEST_F(PopulationSteps, BlanksStandFirstAtEveryLocusOnce) {
    Population sample = make(haplotypic(mnd::DNA, 0), "h1 1 ACG\n");
    sample.make_all_blanks(0);
    sample.make_all_blanks(0);
    ASSERT_EQ(alleles_.count, 3);
    EXPECT_EQ(alleles_.data[2]->count, 1);
    EXPECT_STREQ(alleles_(2, mnd::kBlankIndex)->c_str(), "null");
    EXPECT_EQ(alleles_(2, 0)->freq, 0.0);
    EXPECT_EQ(alleles_.blanks_done, 1);
}

TEST_F(PopulationSteps, LociOfBlanksAreTheTokensOfTheFirstText) {
    Population sample = known_phase();
    sample.make_all_blanks(' ');
    EXPECT_EQ(alleles_.count, 2);
}

TEST_F(PopulationSteps, BlanksNeedData) {
    Population sample = make(haplotypic(mnd::DNA, 0), "");
    sample.make_all_blanks(0);
    EXPECT_TRUE(log_.reports("WARNING", "Population::make_all_blanks()", "phenotype data base is empty"));
    EXPECT_EQ(alleles_.blanks_done, 1);
}

TEST_F(PopulationSteps, BlanksBehindAllelesAreAnError) {
    Population sample = make(haplotypic(mnd::DNA, 0), "h1 1 A\n");
    alleles_.InsertAllPos(0, "A", 1.0);
    sample.make_all_blanks(0);
    EXPECT_TRUE(log_.reports("ERROR", "Population::make_all_blanks()",
                             "recessive allele inserted at unspecified position in DB"));
}

// ---- Pseudo-haplotypes

TEST_F(PopulationSteps, AllelesOfALocusSumToOne) {
    Population sample = known_phase();
    sample.build_allele_vectors(' ');
    // Of 4 individuals 3 are A/B and 1 is A/A: A 5/8, B 3/8.
    EXPECT_DOUBLE_EQ(alleles_(0, "A")->freq, 0.625);
    EXPECT_DOUBLE_EQ(alleles_(0, "B")->freq, 0.375);
    const auto& pseudo = sample.phen_db.data[0]->pseudo_hapl;
    ASSERT_TRUE(pseudo[0] && pseudo[1]);
    EXPECT_EQ(pseudo[0]->allele(0), alleles_(0, "A"));
    EXPECT_EQ(pseudo[1]->allele(1), alleles_(1, "2"));
}

TEST_F(PopulationSteps, WithoutSeparatorEachCharacterIsALocus) {
    Population sample = make(genotypic(mnd::DNA, 0, 1), "a 1 AC\n AG\n");
    sample.build_allele_vectors(0);
    EXPECT_EQ(alleles_.count, 2);
    EXPECT_EQ(sample.phen_db.data[0]->pseudo_hapl[1]->allele(1), alleles_(1, "G"));
}

// ---- Gametes

TEST_F(PopulationSteps, AnIndividualOfFrequencyThreeGivesSixGametes) {
    Population sample = known_phase();
    s_.TaskNumber = mnd::kTaskPairwiseFst;
    sample.phen_to_gam(&db_, nullptr, &s_);
    ASSERT_EQ(sample.gamete_list.count, 8);
    for (const PHaploDef* gamete : sample.gamete_list)
        EXPECT_EQ(gamete->freq, 1);
    // First text, second text, three times over; then the homozygote.
    EXPECT_STREQ(sample.gamete_list.data[4]->def->content.c_str(), " A 1");
    EXPECT_STREQ(sample.gamete_list.data[5]->def->content.c_str(), " B 2");
    EXPECT_STREQ(sample.gamete_list.data[7]->def->content.c_str(), " A 1");
}

TEST_F(PopulationSteps, GametesAreCountedByDefinition) {
    Population sample = known_phase();
    sample.phen_to_gam(&db_, nullptr, &s_);
    EXPECT_EQ(sample.gamete_list.count, 0);
    ASSERT_EQ(sample.hapl_list.count, 2);
    EXPECT_EQ(sample.hapl_list.data[0]->freq, 5);
    EXPECT_EQ(sample.hapl_list.data[1]->freq, 3);
    EXPECT_EQ(sample.nb_hapl, 2);
    EXPECT_EQ(sample.phen_to_gam_done, 1);
    EXPECT_STREQ(db_.list.data[0]->name.c_str(), "h1");
    EXPECT_STREQ(db_.list.data[1]->name.c_str(), "h2");
    EXPECT_EQ(db_.list.data[0]->count, 5);
}

TEST_F(PopulationSteps, GametesAreMadeForTheMantelTestToo) {
    Population sample = known_phase();
    s_.TaskNumber = mnd::kTaskMantel;
    sample.phen_to_gam(&db_, nullptr, &s_);
    EXPECT_EQ(sample.gamete_list.count, 8);
    sample.phen_to_gam(&db_, nullptr, &s_);
    EXPECT_EQ(sample.gamete_list.count, 8);
}

TEST_F(PopulationSteps, TheSameTextInTwoSamplesIsOneDefinition) {
    Population first = known_phase();
    Population second = make(genotypic(mnd::STANDARD, ' ', 1), "c 1 B 2\n C 3\n");
    first.phen_to_gam(&db_, nullptr, &s_);
    second.phen_to_gam(&db_, nullptr, &s_);
    EXPECT_EQ(second.hapl_list.data[0]->def, first.hapl_list.data[1]->def);
    EXPECT_EQ(db_.list.count, 3);
    EXPECT_EQ(db_.list.data[1]->count, 4);
    EXPECT_STREQ(db_.list.data[2]->name.c_str(), "h3");
}

TEST_F(PopulationSteps, RunsOfSeparatorsAreReduced) {
    Population sample = make(genotypic(mnd::STANDARD, ',', 1), "a 1 A,,B\n A,B\n");
    sample.phen_to_gam(&db_, nullptr, &s_);
    EXPECT_EQ(db_.list.count, 1);
    EXPECT_STREQ(db_.list.data[0]->content.c_str(), ",A,B");
}

TEST_F(PopulationSteps, ManyCopiesMakeNoGameteList) {
    Population sample = make(genotypic(mnd::STANDARD, ' ', 1), "a 2000000000 A\n B\n");
    s_.TaskNumber = mnd::kTaskAmova;
    sample.phen_to_gam(&db_, nullptr, &s_);
    EXPECT_EQ(sample.gamete_list.count, 0);
    EXPECT_TRUE(log_.reports("ERROR", "Population::phen_to_gam()", "not enough memory"));
}

TEST_F(PopulationSteps, EstimatedFrequenciesBecomeCounts) {
    Population sample("s", 0, genotypic(mnd::STANDARD, ',', 0));
    sample.sample_size = 10;
    alleles_.InsertAllPos(0, "A", 1.0);
    alleles_.InsertAllPos(0, "B", 1.0);
    alleles_.InsertAllPos(1, "C", 1.0);
    for (const auto& [name, freq] : {std::pair{"A", 0.64}, std::pair{"B", 0.32}, std::pair{"A", 0.04}}) {
        auto* haplotype = new mnd::TPopHaplotype();
        haplotype->alleles.Add(alleles_(0, name));
        haplotype->alleles.Add(alleles_(1, "C"));
        haplotype->freq = freq;
        sample.hapl_db.Add(haplotype);
    }
    sample.h_pop_db_to_gam(&db_);
    // 6.4 + 0.5 and 3.2 + 0.5 are cut to 6 and 3; 0.4 + 0.5 to 0.
    ASSERT_EQ(sample.hapl_list.count, 2);
    EXPECT_EQ(sample.hapl_list.data[0]->freq, 6);
    EXPECT_EQ(sample.hapl_list.data[1]->freq, 3);
    EXPECT_STREQ(db_.list.data[1]->content.c_str(), "B,C");
    EXPECT_STREQ(db_.list.data[1]->name.c_str(), "h2");
    EXPECT_EQ(db_.list.data[1]->id, 2);
    EXPECT_EQ(db_.list.data[1]->num_alleles(), 2);
    EXPECT_EQ(sample.sample_size, 9.0);
    EXPECT_EQ(sample.nb_hapl, 2);
}

TEST_F(PopulationSteps, ANullAlleleIsReported) {
    Population sample("s", 0, genotypic(mnd::STANDARD, ' ', 0));
    sample.sample_size = 2;
    auto* haplotype = new mnd::TPopHaplotype();
    haplotype->alleles.Add(nullptr);
    haplotype->freq = 1.0;
    sample.hapl_db.Add(haplotype);
    mnd::MY_TIArrayAsVector<PHaploDef> list;
    sample.h_pop_db_to_gam(&db_, &list);
    EXPECT_EQ(list.count, 1);
    EXPECT_EQ(sample.hapl_list.count, 0);
    EXPECT_TRUE(log_.reports("ERROR", "Population::h_pop_db_to_gam()", "allele not found in DB"));
}

TEST_F(PopulationSteps, HaplotypeTransferWarnsWith56) {
    Population sample = make(haplotypic(mnd::DNA, 0), "h1 1 AC\nh2 2 AG\n");
    db_.list.data[1]->count = 9;
    sample.haplotype_transf(db_);
    ASSERT_EQ(sample.hapl_list.count, 2);
    EXPECT_EQ(sample.hapl_list.data[1]->freq, 9);
    EXPECT_TRUE(log_.reports("WARNING", "Population::haplotype_transf()",
                             "invalid value assigned to \"StructureName\""));
}

TEST_F(PopulationSteps, TransferToAnEmptySampleIsSilent) {
    make(haplotypic(mnd::DNA, 0), "h1 1 AC\n");
    Population sample("t", 1, haplotypic(mnd::DNA, 0));
    sample.haplotype_transf(db_);
    EXPECT_EQ(sample.hapl_list.count, 1);
    EXPECT_FALSE(log_.holds("haplotype_transf"));
}

TEST_F(PopulationSteps, EntriesOfOneDefinitionAreMergedAtTheFirstPlace) {
    Population sample = make(haplotypic(mnd::DNA, 0), "h1 1 AC\nh2 2 AG\nh1 4\nh3 1 AT\nh2 1\n");
    sample.check_phaplodef_redond();
    ASSERT_EQ(sample.hapl_list.count, 3);
    EXPECT_EQ(sample.hapl_list.data[0]->freq, 5);
    EXPECT_EQ(sample.hapl_list.data[1]->freq, 3);
    EXPECT_STREQ(sample.hapl_list.data[2]->def->name.c_str(), "h3");
}

// ---- Allele frequencies

TEST_F(PopulationSteps, AlleleFrequenciesAreSharesOfTheSample) {
    Population sample = make(haplotypic(mnd::DNA, 0), "h1 3 AC\nh2 1 GC\nh3 0 TC\n");
    mnd_test::build_vectors(sample, db_, alleles_);
    alleles_(0, "T")->freq = 0.7;
    sample.update_allele_freq();
    EXPECT_EQ(alleles_(0, "A")->freq, 0.75);
    EXPECT_EQ(alleles_(0, "G")->freq, 0.25);
    EXPECT_EQ(alleles_(0, "T")->freq, 0.7);
    EXPECT_EQ(alleles_(1, "C")->freq, 1.0);
}

TEST_F(PopulationSteps, UnknownPhaseCountsBothPseudoHaplotypes) {
    Population sample = make(genotypic(mnd::STANDARD, ' ', 0), kTwoIndividuals);
    sample.build_allele_vectors(' ');
    alleles_(0, "A")->freq = 0.0;
    sample.update_allele_freq();
    EXPECT_EQ(alleles_(0, "A")->freq, 0.625);
    EXPECT_EQ(alleles_(0, "B")->freq, 0.375);
}

TEST_F(PopulationSteps, ALocusWithoutCopiesEndsTheUpdate) {
    Population sample = make(haplotypic(mnd::DNA, 0), "h1 1 AC\n");
    mnd_test::build_vectors(sample, db_, alleles_);
    sample.hapl_list.data[0]->freq = 0;
    sample.update_allele_freq();
    EXPECT_TRUE(
        log_.reports("ERROR", "Population::update_allele_freq()", "sum of allele frequencies is zero"));
    EXPECT_EQ(alleles_(0, "A")->freq, 0.1);
}

TEST_F(PopulationSteps, NumberOfLoci) {
    Population haplotypes = make(haplotypic(mnd::DNA, 0), "h1 1 ACG\n");
    EXPECT_EQ(haplotypes.evaluate_nb_loci(), 0);
    mnd_test::build_vectors(haplotypes, db_, alleles_);
    EXPECT_EQ(haplotypes.evaluate_nb_loci(), 3);
    EXPECT_EQ(known_phase().evaluate_nb_loci(), 2);
    EXPECT_EQ(make(genotypic(mnd::DNA, 0, 1), "a 1 ACGT\n ACGT\n").evaluate_nb_loci(), 4);
    EXPECT_EQ(Population("e", 0, genotypic(mnd::DNA, 0, 1)).evaluate_nb_loci(), 0);
}

// ---- Work

TEST_F(PopulationSteps, WorkOfTheTasks) {
    Population sample = make(haplotypic(mnd::DNA, 0), "h1 1 ACG\n");
    mnd_test::build_vectors(sample, db_, alleles_);
    s_.TaskNumber = mnd::kTaskFuFs | mnd::kTaskTajima | mnd::kTaskEwensWatterson;
    s_.NumSimulFuTest = 1000;
    s_.NumIterationsNeutralityTests = 300;
    EXPECT_EQ(sample.evaluate_work(s_), 20.0 + 20.0 + 3.0);
    s_.TaskNumber = mnd::kTaskMismatch;
    s_.MismatchDemogExp = s_.MismatchSpatialExp = true;
    s_.NumBootExpDem = 70;
    EXPECT_EQ(sample.evaluate_work(s_), 140.0);
    s_.TaskNumber = mnd::kTaskLinkageDisequilibrium;
    s_.MakeExactTestLD = 1;
    s_.MarkovChainStepsLD = 4000;
    EXPECT_EQ(sample.evaluate_work(s_), 3 * 2.0);  // pairs of 3 loci
    s_.TaskNumber = mnd::kTaskPairwiseFst;
    s_.NumPermutationsFST = 500;
    EXPECT_EQ(sample.evaluate_work(s_), 5.0);
}

TEST_F(PopulationSteps, WorkTakesTheRecessiveSettingAndNothingElse) {
    Population sample = known_phase();
    s_.TaskNumber = 0x1ffff;
    s_.RecessiveAllelesEM = 1;
    const long tasks = s_.TaskNumber;
    sample.evaluate_work(s_);
    EXPECT_EQ(sample.RecessiveAllelesEM, 1);
    EXPECT_EQ(s_.TaskNumber, tasks);
    EXPECT_EQ(sample.sample_size, 8.0);
    EXPECT_EQ(sample.phen_db.count, 2);
    EXPECT_EQ(sample.hapl_list.count, 0);
}

}  // namespace
