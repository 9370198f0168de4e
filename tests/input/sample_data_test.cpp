// Blocks of haplotypic and genotypic data of one sample.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "input/sample_block.h"
#include "model/haplotypes.h"
#include "model/population.h"
#include "support/project_log.h"
#include "support/sample_texts.h"

namespace {

using mnd::Haplo_DB;
using mnd::my_string;
using mnd::Population;
using mnd::ProfileSettings;
using mnd_test::genotypic;
using mnd_test::haplotypic;
using mnd_test::ProjectLog;

constexpr const char* kGametic = "Population::New_read_gametic_data()";
constexpr const char* kGenotypic = "Population::New_read_genotypic_data()";

class SampleData : public ::testing::Test {
protected:
    // Reads a block into a fresh sample called "s", the first line being line 1.
    int read(const ProfileSettings& profile, double size, const std::string& text, int external = 0) {
        sample_ = std::make_unique<Population>("s", 0, profile);
        sample_->sample_size = size;
        std::istringstream in(text);
        line_no_ = 0;
        if (profile.GenotypicData != 0)
            return sample_->New_read_genotypic_data(in, external, line_no_, line_);
        return sample_->New_read_gametic_data(in, db_, external, line_no_, line_);
    }
    int freq(long i) const { return sample_->hapl_list.data[i]->freq; }
    bool error(const std::string& message) const { return log_.reports("ERROR", kGametic, message); }

    ProjectLog log_;
    Haplo_DB db_;
    std::unique_ptr<Population> sample_;
    my_string line_;
    int line_no_ = 0;
};

TEST_F(SampleData, HaplotypesAreDefinedAndCounted) {
    EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 5, "h1 2 ACGT\n\t h2\t3\tAC GT\n}\nrest"), 1);
    ASSERT_EQ(sample_->hapl_list.count, 2);
    EXPECT_EQ(freq(0), 2);
    EXPECT_EQ(freq(1), 3);
    EXPECT_EQ(sample_->hapl_list.data[1]->def, db_.list.data[1]);
    EXPECT_STREQ(db_.list.data[1]->content.c_str(), "ACGT");
    EXPECT_EQ(db_.list.data[1]->count, 3);
    EXPECT_EQ(sample_->nb_hapl, 2);
    EXPECT_EQ(sample_->sample_size, 5.0);
    EXPECT_EQ(sample_->inv_sample_size, 0.2);
    EXPECT_EQ(line_no_, 3);
    EXPECT_EQ(log_.text(), "");
}

TEST_F(SampleData, CountsAddUpOverSamples) {
    EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 2, "h1 2 A\n}"), 1);
    EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 3, "h1 3\n}"), 1);
    EXPECT_EQ(db_.list.data[0]->count, 5);
}

TEST_F(SampleData, ZeroFrequencyDefinesWithoutListing) {
    EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 1, "h1 0 AC\nh2 1 AG\n}"), 1);
    EXPECT_EQ(sample_->hapl_list.count, 1);
    EXPECT_EQ(db_.list.count, 2);
    EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 4, "h1 4\n}"), 1);
    EXPECT_STREQ(sample_->hapl_list.data[0]->def->content.c_str(), "AC");
}

TEST_F(SampleData, SeparatedDataAreJoined) {
    EXPECT_EQ(read(haplotypic(mnd::MICROSAT, ' '), 1, "h1 1 12   14\t?\n}"), 1);
    EXPECT_STREQ(db_.list.data[0]->content.c_str(), "12 14 ?");
}

TEST_F(SampleData, FrequencyDataHaveNoHaplotypes) {
    EXPECT_EQ(read(haplotypic(mnd::FREQUENCY, ' '), 7, "h1 3\nh2 4 junk !\n}"), 1);
    EXPECT_EQ(sample_->hapl_list.count, 2);
    EXPECT_TRUE(db_.list.data[1]->content.is_null());
}

TEST_F(SampleData, RepeatedDataAreComparedWithAWarning) {
    EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 2, "h1 1 AC\nh1 1 A C\n}"), 1);
    EXPECT_TRUE(
        log_.reports("WARNING", "Population::New_read_gametic_data(),  h1 : ", "data already defined"));
    EXPECT_TRUE(log_.holds("\tHaplotype h1 defined on line 2 has already been defined previously..."));
}

TEST_F(SampleData, OtherDataUnderTheSameNameStopTheProject) {
    EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 2, "h1 1 AC\nh1 1 AG\n}"), 0);
    EXPECT_EQ(sample_->hapl_list.count, 0);
    EXPECT_TRUE(
        log_.holds("\tDefinition of haplotype h1 defined on line 2 does not match its previous definition, "
                   "aborting reading project."));
    EXPECT_TRUE(error("haplotype already defined"));
}

TEST_F(SampleData, AnUnknownHaplotypeNeedsData) {
    EXPECT_EQ(read(haplotypic(mnd::STANDARD, ' '), 2, "h1 2\n}"), 0);
    EXPECT_TRUE(log_.holds("\tHaplotype \"h1\" listed on line 1 is undefined. Aborting reading project."));
    EXPECT_TRUE(error("unable to read sample data"));
}

TEST_F(SampleData, AMissingFrequencyIsReported) {
    EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 2, "\nh1 # 2 AC\n}"), 0);
    EXPECT_TRUE(
        log_.holds("\tUnable to read haplotype \"h1\" frequency on line 2, aborting reading procedure"));
    EXPECT_TRUE(error("unable to read haplotype frequency"));
}

TEST_F(SampleData, ABraceOnItsOwnLineIsTakenForAHaplotype) {
    EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 2, "{\nh1 2 AC\n}"), 0);
    EXPECT_TRUE(log_.holds("\tUnable to read haplotype \"{\" frequency on line 1"));
}

TEST_F(SampleData, WhatIsNoFrequencyIsReported) {
    for (const char* token : {"2x", "ACGT", "inf", "nan", "-3", "1e300"}) {
        EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 2, std::string("h1 ") + token + " AC\n}"), 0) << token;
        EXPECT_TRUE(log_.holds("\tProblem reading haplotype frequency (\"" + std::string(token) +
                               "\") on line 1 . Aborting reading file"));
    }
    EXPECT_TRUE(error("unable to read haplotype frequency"));
}

TEST_F(SampleData, AnotherNumberOfLociIsReported) {
    EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 2, "h1 1 ACG\nh2 1 AC\n}"), 0);
    EXPECT_TRUE(log_.holds(
        "\tNumber of loci for haplotype \"h2\" is different (2) from that previously defined (3) on line 2"));
    EXPECT_TRUE(error("phenotypes have different number of loci"));
}

TEST_F(SampleData, BadDataEmptyTheList) {
    EXPECT_EQ(read(haplotypic(mnd::RFLP, 0), 2, "h1 1 01\nh2 1 0A\n}"), 0);
    EXPECT_EQ(sample_->hapl_list.count, 0);
    EXPECT_TRUE(log_.holds("\tUnable to read haplotype definition on line 2, aborting reading procedure"));
    EXPECT_TRUE(error("unable to read sample data"));
}

TEST_F(SampleData, BadDataOfAKnownNameHaveAnotherNumber) {
    db_.append(new mnd::HaploDef("h1"));
    EXPECT_EQ(read(haplotypic(mnd::RFLP, 0), 2, "h1 1 0A\n}"), 0);
    EXPECT_TRUE(error("unable to read haplotype data"));
}

TEST_F(SampleData, ABraceBehindDataEndsTheBlock) {
    EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 3, "h1 1 AC\nh2 2 AG } h3 1 AT\nh4 1 AA\n}"), 1);
    ASSERT_EQ(sample_->hapl_list.count, 2);
    EXPECT_STREQ(db_.list.data[1]->content.c_str(), "AG");
    EXPECT_EQ(line_no_, 2);
}

TEST_F(SampleData, AnExternalFileNeedsNoBrace) {
    EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 3, "h1 1 AC\r\nh2 2 AG", 1), 1);
    EXPECT_EQ(sample_->sample_size, 3.0);
}

TEST_F(SampleData, AMissingBraceIsReported) {
    EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 1, "h1 1 AC\n"), 0);
    EXPECT_TRUE(log_.holds("\tMissing closing brace for sample \"s\", aborting reading procedure"));
    EXPECT_TRUE(error("missing closing brace in Sampledata definition"));
}

TEST_F(SampleData, ANewSectionInTheBlockIsReported) {
    for (const char* section : {"SampleName=\"x\"", "[[Structure]]", "[[Mantel]]"}) {
        EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 1, std::string("h1 1 AC\n") + section + "\n}"), 0);
    }
    EXPECT_TRUE(
        log_.holds("\tMissing closing brace for sample \"s\". New section found on line 2 before finding "
                   "closing brace.  Aborting reading procedure"));
    EXPECT_TRUE(error("missing closing brace in Sampledata definition"));
}

TEST_F(SampleData, ALineBeyondTheLimitIsRefused) {
    EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 1, "h1 1 " + std::string(200000, 'A') + "\n}", 1), 0);
    EXPECT_TRUE(log_.holds("is longer than 149999 characters"));
}

TEST_F(SampleData, ADifferentSizeIsAdjusted) {
    EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 9, "h1 2.5 AC\nh2 2 AG\n}"), 1);
    EXPECT_TRUE(
        log_.reports("WARNING", "Population::New_read_gametic_data() (SampleSize=9; Sum. Freq.=4.5)",
                     "sum of haplotype frequencies do not match specified sample size : adjusting sample "
                     "size"));
    EXPECT_EQ(sample_->sample_size, 4.5);
    EXPECT_EQ(freq(0), 2);
}

TEST_F(SampleData, AnEmptyBlockHasSizeZero) {
    EXPECT_EQ(read(haplotypic(mnd::DNA, 0), 9, "# nothing\n}"), 1);
    EXPECT_EQ(sample_->sample_size, 0.0);
    EXPECT_EQ(sample_->inv_sample_size, 1.0);
}

TEST_F(SampleData, ProportionsBecomeCounts) {
    ProfileSettings profile = haplotypic(mnd::FREQUENCY, ' ');
    profile.Frequency = 1;
    // 0.5 x 30 = 15; 0.25 x 30 + 0.5 = 8.0 gives 8, twice: the size becomes 31.
    EXPECT_EQ(read(profile, 30, "h1 0.5\nh2 0.25\nh3 0.25\n}"), 1);
    EXPECT_EQ(freq(0), 15);
    EXPECT_EQ(freq(1), 8);
    EXPECT_EQ(sample_->sample_size, 31.0);
    EXPECT_EQ(log_.text(), "");
}

TEST_F(SampleData, ProportionsShouldAddUpToOne) {
    ProfileSettings profile = haplotypic(mnd::FREQUENCY, ' ');
    profile.Frequency = 1;
    EXPECT_EQ(read(profile, 10, "h1 0.5\nh2 0.25\n}"), 1);
    EXPECT_TRUE(log_.reports("WARNING",
                             "Population::New_read_gametic_data() sum of Relative frequencies=0.750000",
                             "Sum of elements should be equal to 1"));
}

TEST_F(SampleData, ASumWithinAThousandthOfOneIsFine) {
    ProfileSettings profile = haplotypic(mnd::FREQUENCY, ' ');
    profile.Frequency = 1;
    EXPECT_EQ(read(profile, 1000, "h1 0.5\nh2 0.4995\n}"), 1);
    EXPECT_EQ(log_.text(), "");
}

// ---- Genotypic data

TEST_F(SampleData, IndividualsHaveTwoLines) {
    std::string text;
    for (int i = 0; i < 10; ++i)
        text += "id" + std::to_string(i) + " 1 A B\n\t\tC D\n";
    EXPECT_EQ(read(genotypic(mnd::STANDARD, ' ', 0), 10, text + "}"), 1);
    ASSERT_EQ(sample_->phen_db.count, 10);
    EXPECT_STREQ(sample_->phen_db.data[3]->c_str(), "id3");
    EXPECT_STREQ(sample_->phen_db.data[3]->text[0].c_str(), " A B");
    EXPECT_STREQ(sample_->phen_db.data[3]->text[1].c_str(), " C D");
    EXPECT_EQ(sample_->sample_size, 20.0);
    EXPECT_EQ(sample_->inv_sample_size, 0.05);
    EXPECT_EQ(sample_->nb_hapl, 20);
    EXPECT_EQ(log_.text(), "");
}

TEST_F(SampleData, WithoutSeparatorTextsHaveNone) {
    EXPECT_EQ(read(genotypic(mnd::DNA, 0, 1), 2, "a 2 AC GT\n ACGA # end\n}"), 1);
    EXPECT_STREQ(sample_->phen_db.data[0]->text[0].c_str(), "ACGT");
    EXPECT_STREQ(sample_->phen_db.data[0]->text[1].c_str(), "ACGA");
    EXPECT_EQ(sample_->sample_size, 4.0);
}

TEST_F(SampleData, CommentLinesBetweenIndividualsArePassedOver) {
    EXPECT_EQ(read(genotypic(mnd::STANDARD, ' ', 0), 2, "# first\na 1 A\n B\n\n# second\nb 1 A\n A }\n"), 1);
    EXPECT_EQ(sample_->phen_db.count, 2);
}

TEST_F(SampleData, AnIndividualOfFrequencyZeroIsNotListed) {
    EXPECT_EQ(read(genotypic(mnd::STANDARD, ' ', 0), 1, "a 0 A\n B\nb 1 A\n A\n}"), 1);
    EXPECT_EQ(sample_->phen_db.count, 1);
    EXPECT_EQ(sample_->nb_hapl, 2);
}

TEST_F(SampleData, GenotypeFrequenciesAreChecked) {
    EXPECT_EQ(read(genotypic(mnd::STANDARD, ' ', 0), 1, "a\n"), 0);
    EXPECT_TRUE(log_.holds("\tUnable to read read genotype frequency on line 1, aborting reading procedure"));
    EXPECT_TRUE(log_.reports("ERROR", "New_read_genotypic_data()", "unable to read genotype frequency"));
    EXPECT_EQ(read(genotypic(mnd::STANDARD, ' ', 0), 1, "a A\n"), 0);
    EXPECT_TRUE(log_.holds("\tProblem reading genotype frequency (\"A\") on line 1"));
    EXPECT_TRUE(log_.reports("ERROR", kGenotypic, "unable to read genotype frequency"));
}

TEST_F(SampleData, ALineWithoutATokenHasNoGenotypeName) {
    EXPECT_EQ(read(genotypic(mnd::STANDARD, ' ', 0), 1, "\v\n}"), 0);
    EXPECT_TRUE(log_.holds("\tUnable to read genotype ID on line 1, aborting reading procedure"));
    EXPECT_TRUE(log_.reports("ERROR", kGenotypic, "unable to read genotype frequency"));
}

TEST_F(SampleData, TheSecondGameteMustFollow) {
    for (const char* text : {"a 1 A B\n\n}", "a 1 A B\n}", "a 1 A B }\n C D\n"}) {
        EXPECT_EQ(read(genotypic(mnd::STANDARD, ' ', 0), 1, text), 0) << text;
    }
    EXPECT_TRUE(
        log_.holds("\tUnable to read genotype \"a\" definition on line 2, aborting reading procedure"));
    EXPECT_TRUE(log_.reports("ERROR", kGenotypic, "unable to read genotype data"));
    EXPECT_EQ(sample_->phen_db.count, 0);
}

TEST_F(SampleData, GenotypesHaveEqualNumbersOfLoci) {
    EXPECT_EQ(read(genotypic(mnd::STANDARD, ' ', 0), 1, "a 1 A B\n A\n}"), 0);
    EXPECT_TRUE(log_.holds(
        "\tNumber of loci for genotype \"a\" is different (1) from that previously defined (2) on line 2"));
    EXPECT_TRUE(log_.reports("ERROR", kGenotypic, "phenotypes have different number of loci"));
}

TEST_F(SampleData, GenotypicSizeWarningNamesTheGameticReader) {
    EXPECT_EQ(read(genotypic(mnd::STANDARD, ' ', 0), 5, "a 3 A\n A\n}"), 1);
    EXPECT_TRUE(
        log_.reports("WARNING", "Population::New_read_gametic_data() (SampleSize=5; Sum. Freq.=3)",
                     "sum of genotype frequencies do not match specified sample size : adjusting sample "
                     "size"));
    EXPECT_EQ(sample_->sample_size, 6.0);
}

TEST_F(SampleData, GenotypicProportionsShouldAddUpToOne) {
    ProfileSettings profile = genotypic(mnd::STANDARD, ' ', 0);
    profile.Frequency = 1;
    EXPECT_EQ(read(profile, 10, "a 0.5 A\n A\nb 0.6 A\n B\n}"), 1);
    EXPECT_TRUE(log_.reports("WARNING",
                             "Population::New_read_genotypic_data() sum of Relative frequencies=1.100000",
                             "Sum of elements should be equal to 1"));
    EXPECT_EQ(sample_->sample_size, 22.0);
}

TEST_F(SampleData, AStreamThatDidNotOpenIsRefused) {
    Population sample("s", 0, haplotypic(mnd::DNA, 0));
    std::istringstream in("h1 1 AC");
    in.setstate(std::ios_base::failbit);
    EXPECT_EQ(sample.New_read_gametic_data(in, db_, 1, line_no_, line_), 0);
    EXPECT_EQ(sample.New_read_genotypic_data(in, 1, line_no_, line_), 0);
}

}  // namespace
