#include "model/samples.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "model/popul_standard.h"
#include "run/settings.h"
#include "run/tasks.h"
#include "support/project_log.h"
#include "support/sample_texts.h"
#include "support/temp_folder.h"

namespace {

using mnd::Population;
using mnd::ProfileSettings;
using mnd::Samples;
using mnd::settings;
using mnd_test::genotypic;
using mnd_test::haplotypic;

// Records what the run of a sample calls.
class RecordingSample : public mnd::PopulStandard {
public:
    RecordingSample(const char* sample_name, std::string& record) : record_(record) { name = sample_name; }
    void test_methods(settings&) override { record_ += std::string("test ") + name.c_str() + "\n"; }
    void clean_bnum() override { record_ += std::string("clean ") + name.c_str() + "\n"; }

private:
    std::string& record_;
};

class SamplesSteps : public mnd_test::InTempFolder {
protected:
    void add(const ProfileSettings& profile, const std::string& lines) {
        samples_.set_profile(profile);
        Population sample("s", static_cast<int>(samples_.populations.count), profile);
        ASSERT_EQ(mnd_test::read_lines(sample, db_, lines), 1);
        samples_.populations.Add(Samples::new_sample(profile.DataType, sample).release());
    }
    Population& sample(long i) { return *samples_.populations.data[i]; }

    mnd_test::ProjectLog log_;
    mnd::TAlleleDB alleles_;
    mnd::Haplo_DB db_;
    Samples samples_;
    settings s_;
};

TEST_F(SamplesSteps, RoomForTwentySamples) {
    EXPECT_EQ(samples_.populations.capacity, 20);
    EXPECT_EQ(samples_.populations.delta, 20);
    EXPECT_TRUE(samples_.output_by_sample);
}

TEST_F(SamplesSteps, DnaIsUpperCased) {
    add(haplotypic(mnd::DNA, 0), "h1 1 acg-n\n");
    add(haplotypic(mnd::DNA, 0), "h1 1\nh2 1 ACGTa\n");
    samples_.convert_dna_upper();
    EXPECT_STREQ(db_.list.data[0]->content.c_str(), "ACG-N");
    EXPECT_STREQ(db_.list.data[1]->content.c_str(), "ACGTA");
}

TEST_F(SamplesSteps, GenotypicDnaIsUpperCased) {
    add(genotypic(mnd::DNA, 0, 1), "a 1 ac\n gT\n");
    samples_.convert_dna_upper();
    EXPECT_STREQ(sample(0).phen_db.data[0]->text[0].c_str(), "AC");
    EXPECT_STREQ(sample(0).phen_db.data[0]->text[1].c_str(), "GT");
}

TEST_F(SamplesSteps, OtherDataKeepTheirCase) {
    add(haplotypic(mnd::STANDARD, ' '), "h1 1 ab cd\n");
    samples_.convert_dna_upper();
    EXPECT_STREQ(db_.list.data[0]->content.c_str(), "ab cd");
}

TEST_F(SamplesSteps, SamplesWithoutDataAreReported) {
    add(haplotypic(mnd::DNA, ' '), "");
    samples_.convert_dna_upper();
    samples_.rm_separators();
    EXPECT_TRUE(log_.reports("ERROR", "Samples::convert_dna_upper()", "a population has no defined data"));
    EXPECT_TRUE(log_.reports("ERROR", "Samples::rm_separators()", "a population has no defined data"));
}

TEST_F(SamplesSteps, SeparatorsOfSequencesAreRemoved) {
    add(haplotypic(mnd::DNA, ' '), "h1 1 A C G\n");
    add(haplotypic(mnd::DNA, ' '), "h1 1\n");
    samples_.rm_separators();
    EXPECT_STREQ(db_.list.data[0]->content.c_str(), "ACG");
    EXPECT_EQ(samples_.LocusSeparator, 0);
    EXPECT_EQ(sample(1).profile.LocusSeparator, 0);
}

TEST_F(SamplesSteps, AnySeparatorOfSequencesIsRemoved) {
    add(genotypic(mnd::RFLP, ',', 1), "a 1 0 1 1\n 1 1 1\n");
    samples_.rm_separators();
    EXPECT_STREQ(sample(0).phen_db.data[0]->text[0].c_str(), "011");
    EXPECT_STREQ(sample(0).phen_db.data[0]->text[1].c_str(), "111");
}

TEST_F(SamplesSteps, OtherDataKeepTheirSeparator) {
    add(haplotypic(mnd::MICROSAT, ' '), "h1 1 12 14\n");
    samples_.rm_separators();
    EXPECT_STREQ(db_.list.data[0]->content.c_str(), "12 14");
    EXPECT_EQ(samples_.LocusSeparator, ' ');
}

TEST_F(SamplesSteps, StepsReachEverySample) {
    add(genotypic(mnd::STANDARD, ' ', 1), "a 1 A\n B\n");
    add(genotypic(mnd::STANDARD, ' ', 1), "b 2 A\n C\n");
    samples_.init_all_pointers(&alleles_);
    samples_.build_all_vectors(' ');
    samples_.phen_to_gam(&db_, nullptr, &s_);
    EXPECT_EQ(sample(1).allele_db, &alleles_);
    EXPECT_TRUE(sample(1).phen_db.data[0]->pseudo_hapl[1]);
    EXPECT_EQ(sample(1).hapl_list.count, 2);
    EXPECT_EQ(db_.list.count, 3);
    EXPECT_DOUBLE_EQ(alleles_(0, "A")->freq, 1.0);
}

TEST_F(SamplesSteps, WorkBetweenSamples) {
    for (int i = 0; i < 4; ++i)
        add(genotypic(mnd::STANDARD, ' ', 1), "a 1 A 1\n B 1\n");
    s_.TaskNumber = mnd::kTaskAmova;
    s_.HaplAMOVA = s_.LocByLocAMOVA = 1;
    s_.NumPermutationsAMOVA = 1000;
    settings::global_work_done = 5.0;
    samples_.evaluate_work(s_);
    EXPECT_EQ(settings::global_work_done, 0.0);
    EXPECT_EQ(settings::global_work_to_do, 30.0 + 2 * 30.0);
    s_.IncludeIndividualLevel = 1;
    samples_.evaluate_work(s_);
    EXPECT_EQ(settings::global_work_to_do, 40.0 + 2 * 40.0);
    s_.TaskNumber = mnd::kTaskPairwiseFst;
    s_.NumPermutationsFST = 100;
    samples_.evaluate_work(s_);
    EXPECT_EQ(settings::global_work_to_do, 6.0 + 4 * 1.0);  // 6 pairs, and each sample's share
    s_.TaskNumber = mnd::kTaskExactDifferentiation;
    s_.NumPermutPopDiff = 10000;
    samples_.evaluate_work(s_);
    EXPECT_EQ(settings::global_work_to_do, 140.0);
    s_.NumPermutPopDiff = 20000;
    samples_.evaluate_work(s_);
    EXPECT_EQ(settings::global_work_to_do, 140.0);
    s_.TaskNumber = 0;
    s_.DetectSelectedLoci = 1;
    s_.NumberOfSimsForFDist2 = 50;
    samples_.evaluate_work(s_);
    EXPECT_EQ(settings::global_work_to_do, 506.0);
    settings::global_work_to_do = 0.0;
}

TEST_F(SamplesSteps, EverySampleIsAnalysedInOrderThenTheTableReleased) {
    std::string record;
    for (const char* name : {"x", "y", "z"})
        samples_.populations.Add(new RecordingSample(name, record));
    EXPECT_EQ(samples_.compute_stuff(s_), 1);
    EXPECT_EQ(record, "test x\ntest y\ntest z\nclean x\n");
    EXPECT_TRUE(log_.holds("\nPopulation 'y' : done in "));
    EXPECT_TRUE(log_.holds(" ms"));
}

TEST_F(SamplesSteps, NoSamplesNothingToDo) {
    EXPECT_EQ(samples_.compute_stuff(s_), 1);
}

TEST_F(SamplesSteps, StandardIndicesPrepareOneSlotPerSample) {
    std::string record;
    for (const char* name : {"x", "y"})
        samples_.populations.Add(new RecordingSample(name, record));
    alleles_.InsertAllPos(0, "A", 1.0);
    samples_.init_all_pointers(&alleles_);
    s_.TaskNumber = mnd::kTaskStandardIndices;
    samples_.compute_stuff(s_);
    EXPECT_EQ(alleles_(0, 0)->pop_freqs.size(), 2u);
}

TEST_F(SamplesSteps, AnExistingLinkageFileIsEmptiedAndNoneIsMade) {
    s_.TaskNumber = mnd::kTaskLinkageDisequilibrium;
    s_.ld_file_name = (folder / "ld_dis.xl").string().c_str();
    samples_.compute_stuff(s_);
    EXPECT_FALSE(std::filesystem::exists(folder / "ld_dis.xl"));
    mnd_test::write_text(folder / "ld_dis.xl", "old");
    samples_.compute_stuff(s_);
    EXPECT_EQ(mnd_test::read_text(folder / "ld_dis.xl"), "");
}

TEST_F(SamplesSteps, CopiesHaveSamplesOfTheirOwnClass) {
    add(haplotypic(mnd::STANDARD, ' '), "h1 1 A\n");
    const Samples copy(samples_);
    ASSERT_EQ(copy.populations.count, 1);
    EXPECT_NE(copy.populations.data[0], samples_.populations.data[0]);
    EXPECT_NE(dynamic_cast<mnd::PopulStandard*>(copy.populations.data[0]), nullptr);
    EXPECT_EQ(copy.DataType, mnd::STANDARD);
}

TEST_F(SamplesSteps, CleanDestroysTheSamples) {
    add(haplotypic(mnd::STANDARD, ' '), "h1 1 A\n");
    samples_.clean();
    EXPECT_EQ(samples_.populations.count, 0);
}

}  // namespace
