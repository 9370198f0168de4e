// The samples section in its older, free-form syntax.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "model/samples.h"
#include "support/project_log.h"
#include "support/sample_texts.h"
#include "support/temp_folder.h"

namespace {

using mnd::Haplo_DB;
using mnd::Population;
using mnd::ProfileSettings;
using mnd::Samples;

class FreeFormSamples : public mnd_test::InTempFolder {
protected:
    int read(const ProfileSettings& profile, const std::string& text) {
        profile_ = profile;
        profile_.NbSamples = 1;
        mnd_test::write_text(folder / "p.txt", text);
        std::ifstream in((folder / "p.txt").string());
        return samples_.Read(in, profile_, db_);
    }
    const Population& sample(long i) const { return *samples_.populations.data[i]; }

    mnd_test::ProjectLog log_;
    ProfileSettings profile_;
    Haplo_DB db_;
    Samples samples_;
};

TEST_F(FreeFormSamples, ReadsHaplotypes) {
    EXPECT_EQ(
        read(mnd_test::haplotypic(mnd::DNA, 0),
             "SampleName=\"x\"\nSampleSize= 3 # note\nSampleLocation=(1.5,\n2)\nSampleData={\n# note\nh1 1 "
             "AC\n"
             "h2 2 AG # note\n}\nSampleName=\"y\"\nSampleSize=4\nSampleData={ h1 4\n}\n[[Structure]]\n"),
        1);
    ASSERT_EQ(samples_.populations.count, 2);
    EXPECT_STREQ(sample(1).name.c_str(), "y");
    EXPECT_EQ(sample(0).sample_size, 3.0);
    EXPECT_EQ(sample(0).hapl_list.data[1]->freq, 2);
    EXPECT_STREQ(sample(0).hapl_list.data[1]->def->content.c_str(), "AG");
    EXPECT_EQ(db_.list.data[0]->count, 5);
}

TEST_F(FreeFormSamples, ReadsGenotypes) {
    EXPECT_EQ(read(mnd_test::genotypic(mnd::STANDARD, ' ', 0),
                   "SampleName=\"x\"\nSampleSize=2\nSampleData={\na 2 A B\n C D # note\n}\n[[Structure]]\n"),
              1);
    ASSERT_EQ(sample(0).phen_db.count, 1);
    EXPECT_STREQ(sample(0).phen_db.data[0]->text[0].c_str(), " A B");
    EXPECT_STREQ(sample(0).phen_db.data[0]->text[1].c_str(), " C D");
    EXPECT_EQ(sample(0).sample_size, 4.0);
}

TEST_F(FreeFormSamples, ASampleMaySetItsOwnProfile) {
    EXPECT_EQ(
        read(mnd_test::haplotypic(mnd::DNA, 0),
             "SampleName=\"x\"\nDataType=RFLP\nSampleSize=1\nSampleData={\nh1 1 01\n}\n[[Structure]]\n"),
        1);
    EXPECT_EQ(sample(0).profile.DataType, mnd::RFLP);
}

TEST_F(FreeFormSamples, CountsOverSamplesStayInRange) {
    const std::string sample = "SampleSize=2000000000\nSampleData={\nh1 2000000000 AC\n}\n";
    EXPECT_EQ(read(mnd_test::haplotypic(mnd::DNA, 0),
                   "SampleName=\"x\"\n" + sample + "SampleName=\"y\"\n" + sample + "[[Structure]]\n"),
              1);
    EXPECT_EQ(db_.list.data[0]->count, 2147483647);
}

TEST_F(FreeFormSamples, ReadsAnExternalFile) {
    mnd_test::write_text(folder / "data.txt", "h1 1 AC\nh2 2 AG");
    const std::string path = (folder / "data.txt").string();
    EXPECT_EQ(read(mnd_test::haplotypic(mnd::DNA, 0),
                   "SampleName=\"x\"\nSampleSize=3\nSampleData=EXTERN \"" + path + "\"\n[[Structure]]\n"),
              1);
    EXPECT_EQ(sample(0).hapl_list.count, 2);
    EXPECT_TRUE(log_.holds("reading haplotype list in external file"));
}

TEST_F(FreeFormSamples, FailuresHaveTheirMessages) {
    const ProfileSettings profile = mnd_test::haplotypic(mnd::DNA, 0);
    const std::string head = "SampleName=\"x\"\n";
    const struct {
        std::string text;
        const char* message;
    } cases[] = {
        {"SampleSize=3\n", "section [Samples] must begin with \"SampleName\""},
        {"SampleName=?\n", "invalid value assigned to \"SampleName\""},
        {head + "SampleSize=-3\n", "invalid value assigned to \"SampleSize\""},
        {head + "Group=3\n", "invalid keyword in section [Samples]"},
        {head + "SampleData=?\n", "missing braces after HaplList"},
        {head + "SampleData=INTERN \"x\"\n", "invalid keyword assigned to \"HaplList\""},
        {head + "SampleData=EXTERN \"/nowhere/x\"\n", "unable to open external haplotype file"},
        {head + "SampleSize=2\nSampleData={\nh1 1 AC\n}\n", "error while reading haplotypic data"},
        {head + "SampleSize=2\nSampleData={\nh1 x AC\n}\n", "unable to read haplotype frequency"},
        {head + "SampleSize=2\nSampleData={\nh1 2 A!\n}\n", "unable to read haplotype data"},
        {head + "SampleSize=2\nSampleData={\nnew 2\n}\n", "unable to read haplotype data"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(read(profile, c.text), 0) << c.text;
        EXPECT_TRUE(log_.holds(c.message)) << c.text;
    }
}

TEST_F(FreeFormSamples, RepeatedDataMustBeTheSame) {
    const std::string head = "SampleName=\"x\"\nSampleSize=2\nSampleData={\nh1 1 AC\n";
    const mnd::ProfileSettings profile = mnd_test::haplotypic(mnd::DNA, 0);
    EXPECT_EQ(read(profile, head + "h1 1 AC\n}\n[[Structure]]\n"), 1);
    EXPECT_TRUE(log_.reports("WARNING", "Population::read_gametic_data(),  h1 : ", "data already defined"));
    EXPECT_FALSE(log_.holds("#[ERROR"));
    EXPECT_EQ(read(profile, head + "h1 1 AG\n}\n[[Structure]]\n"), 0);
    EXPECT_TRUE(log_.reports("ERROR", "Population::read_gametic_data()", "haplotype already defined"));
}

TEST_F(FreeFormSamples, UnexpectedCharactersAreShown) {
    EXPECT_EQ(read(mnd_test::haplotypic(mnd::DNA, 0), "SampleName=\"x\"\nSampleSize=2\nSampleData={\n!\n}\n"),
              0);
    EXPECT_TRUE(log_.holds(" ** read gametic data1_l_172:the character is not the expected one c:!"));
    EXPECT_EQ(read(mnd_test::genotypic(mnd::STANDARD, ' ', 0),
                   "SampleName=\"x\"\nSampleSize=2\nSampleData={\n!\n}\n"),
              0);
    EXPECT_TRUE(log_.holds(" ** read gametic data2_l_285:the character is not the expected one c:!"));
    EXPECT_TRUE(log_.holds("invalid character in input file"));
}

TEST_F(FreeFormSamples, TooFewSamplesAreAFailure) {
    profile_.NbSamples = 2;
    mnd_test::write_text(folder / "p.txt", "SampleName=\"x\"\n[[Structure]]\n");
    std::ifstream in((folder / "p.txt").string());
    EXPECT_EQ(samples_.Read(in, profile_, db_), 0);
    EXPECT_EQ(samples_.populations.count, 1);
}

}  // namespace
