// The samples section: keywords, external files, names, checks across samples, writing.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "model/popul_dna.h"
#include "model/popul_microsat.h"
#include "model/popul_rflp.h"
#include "model/popul_standard.h"
#include "model/samples.h"
#include "run/settings.h"
#include "support/project_log.h"
#include "support/sample_texts.h"
#include "support/temp_folder.h"

namespace {

using mnd::Haplo_DB;
using mnd::my_string;
using mnd::Population;
using mnd::ProfileSettings;
using mnd::Samples;
using mnd::TAlleleDB;
using mnd_test::genotypic;
using mnd_test::haplotypic;
using mnd_test::ProjectLog;

class SamplesSection : public mnd_test::InTempFolder {
protected:
    SamplesSection() { profile_ = haplotypic(mnd::DNA, 0); }

    int read(const std::string& text) {
        mnd_test::write_text(folder / "p.txt", text);
        std::ifstream in((folder / "p.txt").string());
        line_no_ = 0;
        found_name_ = found_size_ = found_data_ = false;
        return samples_.NewReadSamples(in, profile_, db_, line_no_, line_, found_name_, found_size_,
                                       found_data_);
    }
    const Population& sample(long i) const { return *samples_.populations.data[i]; }

    ProjectLog log_;
    ProfileSettings profile_;
    Haplo_DB db_;
    Samples samples_;
    my_string line_;
    int line_no_ = 0;
    bool found_name_ = false, found_size_ = false, found_data_ = false;
};

constexpr const char* kTwoSamples =
    "\t\tSampleName=\"x\"\n\t\tSampleSize=2\n\t\tSampleData={\n h1 1 AC\n h2 1 AG\n}\n"
    "sampleName = \"y\"\nsamplesize=3\nSAMPLEDATA= {\n h1 3\n}\n";

TEST_F(SamplesSection, ReadsSamplesToTheEndOfTheFile) {
    profile_.NbSamples = 2;
    EXPECT_EQ(read(kTwoSamples), 1);
    ASSERT_EQ(samples_.populations.count, 2);
    EXPECT_STREQ(sample(0).name.c_str(), "x");
    EXPECT_STREQ(sample(1).name.c_str(), "y");
    EXPECT_EQ(sample(1).id, 1);
    EXPECT_EQ(sample(1).sample_size, 3.0);
    EXPECT_EQ(line_no_, 11);
    EXPECT_TRUE(found_name_ && found_size_ && found_data_);
    EXPECT_TRUE(log_.holds("\tReading x ... \tdone ! ("));
    EXPECT_FALSE(log_.holds("#["));
}

TEST_F(SamplesSection, TheClassIsTheDataType) {
    profile_.NbSamples = 1;
    const std::string data = "SampleName=\"x\"\nSampleSize=1\nSampleData={\nh1 1 1\n}\n";
    profile_.DataType = mnd::RFLP;
    EXPECT_EQ(read(data), 1);
    EXPECT_NE(dynamic_cast<const mnd::PopulRFLP*>(&sample(0)), nullptr);
    profile_.DataType = mnd::MICROSAT;
    EXPECT_EQ(read(data), 1);
    EXPECT_NE(dynamic_cast<const mnd::PopulMicrosat*>(&sample(0)), nullptr);
    for (const int type : {static_cast<int>(mnd::STANDARD), static_cast<int>(mnd::FREQUENCY), 17}) {
        profile_.DataType = type;
        EXPECT_EQ(read(data), 1);
        EXPECT_NE(dynamic_cast<const mnd::PopulStandard*>(&sample(0)), nullptr) << type;
    }
    profile_.DataType = mnd::DNA;
    db_.reset();
    EXPECT_EQ(read("SampleName=\"x\"\nSampleSize=1\nSampleData={\nh1 1 A\n}\n"), 1);
    EXPECT_NE(dynamic_cast<const mnd::PopulDNA*>(&sample(0)), nullptr);
}

TEST_F(SamplesSection, StopsAtTheStructure) {
    profile_.NbSamples = 2;
    EXPECT_EQ(read(std::string(kTwoSamples) + "\t[[Structure]] # groups\nSampleName=\"z\"\n"), 1);
    EXPECT_STREQ(line_.c_str(), "\t[[Structure]] ");
    EXPECT_EQ(samples_.populations.count, 2);
    EXPECT_EQ(read(std::string(kTwoSamples) + "[[mantel]]\n"), 1);
    EXPECT_STREQ(line_.c_str(), "[[mantel]]");
}

TEST_F(SamplesSection, OtherSectionsArePassedOver) {
    profile_.NbSamples = 2;
    EXPECT_EQ(read("[[DistanceMatrix]]\nMatrixSize=3\n" + std::string(kTwoSamples)), 1);
    EXPECT_EQ(samples_.populations.count, 2);
}

TEST_F(SamplesSection, NbSamplesIsAdjustedAtTheEndOfTheFile) {
    profile_.NbSamples = 5;
    EXPECT_EQ(read(kTwoSamples), 1);
    EXPECT_EQ(samples_.NbSamples, 2);
    EXPECT_EQ(profile_.NbSamples, 2);
    EXPECT_TRUE(log_.reports("WARNING", "Samples::NewRead()", "invalid value for \"NbSamples\""));
    EXPECT_TRUE(
        log_.holds("Warning: 2 samples are actually listed in project file, while \n5 are defined in the "
                   "[[Profile]] section. Adjusting no. of samples...\n"));
}

TEST_F(SamplesSection, NbSamplesStaysAtTheNextSection) {
    profile_.NbSamples = 1;
    EXPECT_EQ(read(std::string(kTwoSamples) + "[[Structure]]\n"), 1);
    EXPECT_EQ(samples_.NbSamples, 1);
    EXPECT_TRUE(
        log_.holds("Warning: 2 samples are actually listed in project file, while 1 are defined in the "
                   "[[Profile]] section\n"));
}

TEST_F(SamplesSection, AnEmptySectionHasNoSamples) {
    profile_.NbSamples = 1;
    EXPECT_EQ(read(""), 1);
    EXPECT_EQ(samples_.populations.count, 0);
    EXPECT_EQ(samples_.NbSamples, 0);
    EXPECT_FALSE(found_name_ || found_size_ || found_data_);
}

TEST_F(SamplesSection, ABadNameStopsTheReading) {
    EXPECT_EQ(read("SampleName=x\n" + std::string(kTwoSamples)), 0);
    EXPECT_TRUE(found_name_);
    EXPECT_TRUE(
        log_.reports("WARNING", "Samples::NewReadSamples()", "invalid value assigned to \"SampleName\""));
}

TEST_F(SamplesSection, ABadSizeHasTheSameMessage) {
    for (const char* size : {"", "12x", "inf", "nan", "-4", "1e12"}) {
        EXPECT_EQ(read(std::string("SampleName=\"x\"\nSampleSize=") + size + "\n"), 0) << size;
    }
    EXPECT_TRUE(
        log_.reports("WARNING", "Samples::NewReadSamples()", "invalid value assigned to \"SampleName\""));
}

TEST_F(SamplesSection, AKeywordWithoutEqualSignIsPassedOver) {
    profile_.NbSamples = 2;
    EXPECT_EQ(read("SampleSize\nSampleName\n" + std::string(kTwoSamples)), 1);
    EXPECT_EQ(samples_.populations.count, 2);
    EXPECT_TRUE(log_.holds("Missing equal sign after keyword 'SampleName'"));
}

TEST_F(SamplesSection, ASizeLeftOutIsTheOneBefore) {
    profile_.NbSamples = 2;
    EXPECT_EQ(read("SampleName=\"x\"\nSampleSize=4.9\nSampleData={\nh1 4 A\n}\n"
                   "SampleName=\"y\"\nSampleData={\nh1 4\n}\n"),
              1);
    EXPECT_FALSE(log_.holds("adjusting sample size"));
}

TEST_F(SamplesSection, DataWithoutANameStopReadingAndKeepWhatWasRead) {
    profile_.NbSamples = 2;
    EXPECT_EQ(read("SampleName=\"x\"\nSampleSize=1\nSampleData={\nh1 1 A\n}\nSampleData={\nh1 1\n}\n"), 1);
    EXPECT_EQ(samples_.populations.count, 1);
    EXPECT_TRUE(log_.reports("WARNING", "Samples::NewReadSamples()", "\"SampleName\" keyword not found"));
    EXPECT_TRUE(
        log_.holds("Warning: Keyword \"SampleName\" not found while data is defined for population #2"));
}

TEST_F(SamplesSection, DataWithoutANameDoNotCountAsMet) {
    EXPECT_EQ(read("SampleName\nSampleSize=1\nSampleData={\nh1 1 A\n}\n"), 1);
    EXPECT_TRUE(found_name_ && found_size_);
    EXPECT_FALSE(found_data_);
}

TEST_F(SamplesSection, AFailedBlockKeepsTheSamplesBefore) {
    EXPECT_EQ(read("SampleName=\"x\"\nSampleSize=1\nSampleData={\nh1 1 A\n}\n"
                   "SampleName=\"y\"\nSampleSize=1\nSampleData={\nh1 what\n}\n"),
              0);
    EXPECT_EQ(samples_.populations.count, 1);
    EXPECT_TRUE(log_.reports("ERROR", "Samples::NewReadSamples()", "unable to read sample data"));
}

TEST_F(SamplesSection, EqualNamesGetDigits) {
    std::string text;
    for (int i = 0; i < 3; ++i)
        text += "SampleName=\"x\"\nSampleSize=1\nSampleData={\nh1 1 A\n}\n";
    profile_.NbSamples = 3;
    EXPECT_EQ(read(text), 1);
    EXPECT_STREQ(sample(0).name.c_str(), "x");
    EXPECT_STREQ(sample(1).name.c_str(), "x0");
    EXPECT_STREQ(sample(2).name.c_str(), "x01");
    EXPECT_TRUE(log_.reports("WARNING", "Samples::NewReadSamples()",
                             "two samples have the same name: renaming second sample"));
}

TEST_F(SamplesSection, AfterAHundredRoundsANameStays) {
    // The k-th clash appends k: sample k + 1 is called x012...k, and so clashes once more than
    // the one before. 103 samples let the last two run out of rounds.
    std::string text;
    for (int i = 0; i < 103; ++i)
        text += "SampleName=\"x\"\nSampleSize=1\nSampleData={\nh1 1 A\n}\n";
    EXPECT_EQ(read(text), 1);
    ASSERT_EQ(samples_.populations.count, 103);
    EXPECT_STREQ(sample(101).name.c_str(), sample(100).name.c_str());
}

TEST_F(SamplesSection, DataMayLieInAnExternalFile) {
    mnd::settings s;
    profile_.the_settings = &s;
    profile_.NbSamples = 2;
    s.project_directory = (folder.path().string() + "/").c_str();
    s.result_directory = (folder.path().string() + "/p.res/").c_str();
    mnd_test::write_text(folder / "data.txt", "h1 1 AC\nh2 1 AG\n");
    const std::string text =
        "SampleName=\"x\"\nSampleSize=2\nSampleData=extern \"data.txt\"\nSampleName=\"y\"\nSampleData={\nh1 "
        "2\n}\n";
    EXPECT_EQ(read(text), 1);
    ASSERT_EQ(samples_.populations.count, 2);
    EXPECT_EQ(sample(0).hapl_list.count, 2);
    EXPECT_EQ(line_no_, 7);
    EXPECT_TRUE(log_.reports("INFO", "Samples::NewReadSamples()", "reading sample data in external file"));
    EXPECT_TRUE(log_.holds("\tReading sample data for population \"x\" in external file\"data.txt\""));
}

TEST_F(SamplesSection, TheCleanedCopyIsReadWhenItExists) {
    mnd::settings s;
    profile_.the_settings = &s;
    s.project_directory = (folder.path().string() + "/").c_str();
    s.result_directory = (folder.path().string() + "/p.res/").c_str();
    mnd_test::write_text(folder / "data.txt", "h1 1 AC\n");
    mnd_test::write_text(folder / "p.res/data.txt", "h1 1 TT\n");
    EXPECT_EQ(read("SampleName=\"x\"\nSampleSize=1\nSampleData=EXTERN \"data.txt\"\n"), 1);
    EXPECT_STREQ(sample(0).hapl_list.data[0]->def->content.c_str(), "TT");
    db_.reset();
    EXPECT_EQ(read("SampleName=\"x\"\nSampleSize=1\nSampleData=EXTERN \"" + (folder / "data.txt").string() +
                   "\"\n"),
              1);
    EXPECT_STREQ(sample(0).hapl_list.data[0]->def->content.c_str(), "AC");
}

TEST_F(SamplesSection, AMissingExternalFileFails) {
    mnd::settings s;
    profile_.the_settings = &s;
    EXPECT_EQ(read("SampleName=\"x\"\nSampleSize=1\nSampleData=EXTERN \"none.txt\"\n"), 0);
    EXPECT_TRUE(log_.holds(
        "\tWarning: External file \"none.txt\" listed on line 3 cannot be open. Check that it exists...\n"));
    EXPECT_TRUE(log_.reports("ERROR", "Samples::NewReadSamples()", "unable to read sample data"));
    EXPECT_EQ(samples_.populations.count, 0);
}

TEST_F(SamplesSection, AFolderIsNoExternalFile) {
    mnd::settings s;
    profile_.the_settings = &s;
    EXPECT_EQ(read("SampleName=\"x\"\nSampleSize=1\nSampleData=EXTERN \"" + folder.path().string() + "\"\n"),
              0);
    EXPECT_TRUE(log_.holds("\tUnable to read the data of sample \"x\""));
    EXPECT_TRUE(log_.reports("ERROR", "Samples::NewReadSamples()", "unable to read sample data"));
}

TEST_F(SamplesSection, ALineBeyondTheLimitIsRefused) {
    EXPECT_EQ(read("SampleName=\"x\"\n" + std::string(160000, 'x') + "\nSampleSize=1\n"), 0);
    EXPECT_TRUE(log_.holds("\tLine #2 of the Samples section is longer than 149999 characters"));
}

TEST_F(SamplesSection, ReadingTwiceStartsAfresh) {
    profile_.NbSamples = 2;
    EXPECT_EQ(read(kTwoSamples), 1);
    db_.reset();
    EXPECT_EQ(read(kTwoSamples), 1);
    EXPECT_EQ(samples_.populations.count, 2);
}

// ---- verify_data

class VerifyData : public ::testing::Test {
protected:
    void add(const ProfileSettings& profile, const std::string& lines) {
        samples_.set_profile(profile);
        Population sample("s", static_cast<int>(samples_.populations.count), profile);
        ASSERT_EQ(mnd_test::read_lines(sample, db_, lines), 1);
        samples_.populations.Add(Samples::new_sample(profile.DataType, sample).release());
        mnd_test::build_vectors(*samples_.populations.data[samples_.populations.count - 1], db_, alleles_);
    }
    Population& sample(long i) { return *samples_.populations.data[i]; }
    bool error(const char* message) const { return log_.reports("ERROR", "Samples::verify_data()", message); }

    ProjectLog log_;
    TAlleleDB alleles_;
    Haplo_DB db_;
    Samples samples_;
};

TEST_F(VerifyData, AMissingHaplotypeLeavesTheSample) {
    add(haplotypic(mnd::DNA, 0), "h1 3 AC\nh2 2 ??\nh3 1 A?\n");
    EXPECT_TRUE(samples_.verify_data());
    ASSERT_EQ(sample(0).hapl_list.count, 2);
    EXPECT_STREQ(sample(0).hapl_list.data[1]->def->name.c_str(), "h3");
    EXPECT_EQ(sample(0).sample_size, 4.0);
    EXPECT_EQ(sample(0).inv_sample_size, 0.25);
    EXPECT_EQ(sample(0).nb_hapl, 2);
    EXPECT_EQ(db_.find_by_name("h2")->count, 0);
}

TEST_F(VerifyData, AMissingIndividualLeavesTheSample) {
    add(genotypic(mnd::MICROSAT, ' ', 0), "a 1 12 14\n 12 14\nb 3 ? ?\n ? ?\nc 1 ? ?\n ? 14\n");
    EXPECT_EQ(sample(0).nb_hapl, 6);
    EXPECT_TRUE(samples_.verify_data());
    ASSERT_EQ(sample(0).phen_db.count, 2);
    EXPECT_STREQ(sample(0).phen_db.data[1]->c_str(), "c");
    EXPECT_EQ(sample(0).sample_size, 4.0);
    // Each individual of the class takes two off, though reading added two for the class.
    EXPECT_EQ(sample(0).nb_hapl, 0);
    EXPECT_EQ(sample(0).phen_db.data[0]->real_freq, 0.5);
}

TEST_F(VerifyData, AMissingIndividualOfHugeFrequencyLeavesTheSample) {
    add(genotypic(mnd::MICROSAT, ' ', 0), "a 1 12\n 12\nb 2000000000 ?\n ?\n");
    EXPECT_TRUE(samples_.verify_data());
    EXPECT_EQ(sample(0).sample_size, 2.0);
    // 4 less 4000000000 is beyond an int.
    EXPECT_EQ(sample(0).nb_hapl, -2147483647);
}

TEST_F(VerifyData, FrequencyDataStay) {
    add(haplotypic(mnd::FREQUENCY, ' '), "h1 3\nh2 2\n");
    EXPECT_TRUE(samples_.verify_data());
    EXPECT_EQ(sample(0).hapl_list.count, 2);
}

TEST_F(VerifyData, AGenotypicSampleNeedsData) {
    add(genotypic(mnd::STANDARD, ' ', 0), "");
    EXPECT_FALSE(samples_.verify_data());
    EXPECT_TRUE(error("a population has no defined data"));
}

TEST_F(VerifyData, AnEmptyHaplotypicSampleIsPassedOver) {
    add(haplotypic(mnd::DNA, 0), "h1 1 AC\n");
    add(haplotypic(mnd::DNA, 0), "");
    add(haplotypic(mnd::DNA, 0), "h1 1\n");
    EXPECT_TRUE(samples_.verify_data());
}

TEST_F(VerifyData, HaplotypesHaveEqualNumbersOfLoci) {
    // Joined by commas the line is one token, so that only the alleles tell.
    add(haplotypic(mnd::STANDARD, ','), "h1 1 A,B\nh2 1 A,B,C\n");
    EXPECT_FALSE(samples_.verify_data());
    EXPECT_TRUE(error("haplotypes have different number of loci"));
}

TEST_F(VerifyData, PhenotypesHaveEqualNumbersOfLoci) {
    add(genotypic(mnd::STANDARD, ',', 0), "a 1 A,B\n A,B\nb 1 A,B,C\n A,B,C\n");
    EXPECT_FALSE(samples_.verify_data());
    EXPECT_TRUE(error("phenotypes have different number of loci"));
}

TEST_F(VerifyData, SamplesHaveEqualNumbersOfLoci) {
    add(haplotypic(mnd::DNA, 0), "h1 1 AC\n");
    add(haplotypic(mnd::DNA, 0), "h2 1 ACG\n");
    EXPECT_FALSE(samples_.verify_data());
    EXPECT_TRUE(error("samples do not have the same number of loci"));
}

TEST_F(VerifyData, AnEmptiedSampleHasNoNumberOfLoci) {
    add(haplotypic(mnd::DNA, 0), "h0 1 ??\n");
    add(haplotypic(mnd::DNA, 0), "h1 1 AC\n");
    EXPECT_TRUE(samples_.verify_data());
    EXPECT_EQ(sample(0).hapl_list.count, 0);
    EXPECT_EQ(sample(0).sample_size, 0.0);
}

// ---- explore

TEST_F(SamplesSection, ExploreWritesTheNames) {
    profile_.NbSamples = 2;
    mnd_test::write_text(folder / "p.txt", kTwoSamples);
    std::ifstream in((folder / "p.txt").string());
    EXPECT_EQ(samples_.explore(in, profile_), 1);
    EXPECT_EQ(mnd_test::read_text(folder / "samples.txt"), "2\nx\ny\n");
}

TEST_F(SamplesSection, ExploreReportsTooFewNames) {
    profile_.NbSamples = 3;
    mnd_test::write_text(folder / "p.txt", kTwoSamples);
    std::ifstream in((folder / "p.txt").string());
    EXPECT_EQ(samples_.explore(in, profile_), 0);
    EXPECT_TRUE(log_.holds("Samples::explore(): Unable to extract all population names"));
}

// ---- Writing

TEST_F(SamplesSection, WrittenHaplotypesAreReadAgain) {
    profile_.NbSamples = 2;
    ASSERT_EQ(read(kTwoSamples), 1);
    std::ostringstream out;
    out << samples_;
    EXPECT_EQ(
        out.str(),
        "\n\t[[Samples]]\n\n\t\tSampleName=\"x\"\n\t\tSampleSize=2\n\t\tSampleData={\n\t\t\th1\t1\tAC\n"
        "\t\t\th2\t1\tAG\n\t\t}\n\t\tSampleName=\"y\"\n\t\tSampleSize=3\n\t\tSampleData={\n\t\t\th1\t3\tAC\n"
        "\t\t}\n");
    db_.reset();
    EXPECT_EQ(read(out.str()), 1);
    EXPECT_EQ(samples_.populations.count, 2);
}

TEST_F(SamplesSection, WrittenGenotypesAreReadAgain) {
    profile_ = genotypic(mnd::STANDARD, ' ', 0);
    profile_.NbSamples = 1;
    ASSERT_EQ(read("SampleName='a b'\nSampleSize=3\nSampleData={\ni 2 A B\n C D\nj 1 A A\n A A\n}\n"), 1);
    std::ostringstream out;
    out << samples_;
    EXPECT_EQ(
        out.str(),
        "\n\t[[Samples]]\n\n\t\tSampleName=\"a b\"\n\t\tSampleSize=3\n\t\tSampleData={\n\t\t\ti\t2\tA B\n"
        "\t\t\t\t\tC D\n\t\t\tj\t1\tA A\n\t\t\t\t\tA A\n\t\t}\n");
}

TEST_F(SamplesSection, ProportionsAreWrittenAsSuch) {
    profile_ = haplotypic(mnd::FREQUENCY, ' ');
    profile_.Frequency = 1;
    profile_.NbSamples = 1;
    ASSERT_EQ(read("SampleName=\"x\"\nSampleSize=4\nSampleData={\nh1 0.25\nh2 0.75\n}\n"), 1);
    std::ostringstream out;
    out << samples_;
    EXPECT_NE(out.str().find("\t\t\th1\t0.25\n\t\t\th2\t0.75\n"), std::string::npos);
}

}  // namespace
