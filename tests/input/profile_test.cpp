#include "input/profile.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "support/captured_log.h"
#include "support/captured_reports.h"
#include "support/temp_folder.h"

namespace {

using namespace mnd;
using mnd_test::CapturedLog;
using mnd_test::CapturedReports;
using mnd_test::Report;
using mnd_test::TempFolder;
using mnd_test::write_text;

class Profile : public ::testing::Test {
protected:
    // Runs the token reader over a file with this text.
    bool read(const std::string& text) {
        write_text(folder / "p.mnp", text);
        std::ifstream file(folder / "p.mnp");
        return profile.get_profile_settings(file);
    }

    TempFolder folder;
    CapturedLog log;
    CapturedReports reports;
    ProfileSettings profile;
};

void expect_defaults(ProfileSettings const& p) {
    EXPECT_EQ(p.Title.view(), "");
    EXPECT_EQ(p.NbSamples, 0);
    EXPECT_EQ(p.NbGroups, 0);
    EXPECT_EQ(p.GenotypicData, 0);
    EXPECT_EQ(p.GameticPhase, 1);
    EXPECT_EQ(p.DataType, STANDARD);
    EXPECT_EQ(p.LocusListing, 0);
    EXPECT_EQ(p.NbLoci, 0);
    EXPECT_TRUE(p.LociLabels.empty());
    EXPECT_EQ(p.LocusSeparator, ' ');
    EXPECT_EQ(p.MissingData, '?');
    EXPECT_EQ(p.DistMatLabel.view(), "");
    EXPECT_EQ(p.UsedHaplList.view(), "NONE");
    EXPECT_EQ(p.ExtHaplFile.view(), "");
    EXPECT_EQ(p.Interleave, 0);
    EXPECT_EQ(p.IndividualLevel, 0);
    EXPECT_EQ(p.Frequency, 0);
    EXPECT_EQ(p.RecessiveData, 0);
    EXPECT_EQ(p.RecessiveAllele.view(), "null");
    EXPECT_EQ(p.GivenDistMat, 1);
    EXPECT_EQ(p.EpsilonValue, 1e-7);
    EXPECT_EQ(p.FrequencyThreshold, 1e-5);
    EXPECT_EQ(p.the_settings, nullptr);
}

constexpr char kFullProfile[] =
    "# a project\n[Profile]\n"
    "  Title=\"A title\"\n NbSamples=3 # three\n NbGroups = 2\n NbLoci=4\n GenotypicData=1\n"
    "  DataType=Microsat\n LocusSeparator='-'\n LociLabels={\"a\" b # c\n d }\n UsedHaplList=\"list\"\n"
    "  MissingData='x'\n LocusListing=1\n IndividualLevel=1\n Interleave=1\n Frequency=REL\n"
    "  GameticPhase=0\n RecessiveData=3\n RecessiveAllele=\"xx\"\n FrequencyThreshold=1e-3\n"
    "  EpsilonValue=1e-4\n CompDistMatrix=1\n[Data]\n";

void expect_full(ProfileSettings const& p) {
    EXPECT_EQ(p.Title.view(), "A title");
    EXPECT_EQ(p.NbSamples, 3);
    EXPECT_EQ(p.NbGroups, 2);
    EXPECT_EQ(p.NbLoci, 4);
    EXPECT_EQ(p.GenotypicData, 1);
    EXPECT_EQ(p.DataType, MICROSAT);
    EXPECT_EQ(p.LocusSeparator, '-');
    ASSERT_EQ(p.LociLabels.size(), 3u);
    EXPECT_EQ(p.LociLabels[2].view(), "d");
    EXPECT_EQ(p.UsedHaplList.view(), "list");
    EXPECT_EQ(p.MissingData, 'x');
    EXPECT_EQ(p.LocusListing, 1);
    EXPECT_EQ(p.IndividualLevel, 1);
    EXPECT_EQ(p.Interleave, 1);
    EXPECT_EQ(p.Frequency, 1);
    EXPECT_EQ(p.GameticPhase, 0);
    EXPECT_EQ(p.RecessiveData, 3);
    EXPECT_EQ(p.RecessiveAllele.view(), "xx");
    EXPECT_EQ(p.FrequencyThreshold, 1e-3);
    EXPECT_EQ(p.EpsilonValue, 1e-4);
}

TEST_F(Profile, Defaults) {
    expect_defaults(profile);
    EXPECT_EQ(RecessiveAlleleDefault.view(), "null");
    EXPECT_EQ(UsedHaplListDefault.view(), "NONE");
}

TEST_F(Profile, TokenReaderTakesEveryKeyword) {
    EXPECT_TRUE(read(kFullProfile));
    expect_full(profile);
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(Profile, CopiesHoldAllFieldsAndInitializeResetsThem) {
    ASSERT_TRUE(read(kFullProfile));
    const ProfileSettings copy(profile);
    expect_full(copy);
    ProfileSettings assigned;
    assigned = profile;
    expect_full(assigned);
    profile.initialize();
    expect_defaults(profile);
}

TEST_F(Profile, SectionMayEndWithTheFile) {
    EXPECT_TRUE(read("[Profile]\nNbSamples=3"));
    EXPECT_EQ(profile.NbSamples, 3);
}

TEST_F(Profile, MissingSectionIsFalse) {
    for (const char* text : {"", "# only a comment", "[Data]\nNbSamples=1\n", "NbSamples=1"}) {
        EXPECT_FALSE(read(text)) << text;
    }
    EXPECT_EQ(reports.all()[0], (Report{Error, "position_after() (1)", 102}));
}

TEST_F(Profile, ForeignKeywordsAreError98) {
    const Report wrong{Error, "ProfileSettings::get_profile_settings(ifstream& ifs", 98};
    EXPECT_FALSE(read("[Profile]\nNonsense=1\n"));
    EXPECT_EQ(reports.all().back(), wrong);
    EXPECT_FALSE(read("[Profile]\nSampleName=\"x\"\n"));
    EXPECT_EQ(reports.all().back(), wrong);
}

TEST_F(Profile, NumberOfSamplesIsDecisive) {
    EXPECT_FALSE(read("[Profile]\nNbSamples=x\n"));
    EXPECT_EQ(reports.all()[0], (Report{Error, "ProfileSettings::read_NbSamples()", 94}));
    EXPECT_FALSE(read("[Profile]\nNbSamples=0\n"));
    EXPECT_EQ(reports.all()[2], (Report{Error, "ProfileSettings::read_NbSamples()", 95}));
    EXPECT_FALSE(read("[Profile]\nNbGroups=-1\n"));
    EXPECT_EQ(reports.all()[4], (Report{Error, "ProfileSettings::read_NbGroups()", 97}));
    EXPECT_FALSE(read("[Profile]\nNbGroups=?\n"));
    EXPECT_EQ(reports.all()[6], (Report{Error, "ProfileSettings::read_NbGroups()", 96}));
}

TEST_F(Profile, BadValuesLeaveTheDefaultWithTheirCode) {
    struct Case {
        const char* line;
        ErrorType type;
        int code;
    };
    for (const Case& one : {Case{"Title=\n;", Error, 93},
                            Case{"NbLoci=-4", Warning, 81},
                            Case{"GenotypicData=2", Warning, 74},
                            Case{"GenotypicData=?", Warning, 73},
                            Case{"DataType=other", Warning, 75},
                            Case{"LocusSeparator=X", Warning, 82},
                            Case{"LociLabels=none", Warning, 76},
                            Case{"LociLabels={}", Warning, 76},
                            Case{"UsedHaplList={", Warning, 77},
                            Case{"MissingData=x", Warning, 78},
                            Case{"LocusListing=?", Warning, 79},
                            Case{"LocusListing=7", Warning, 80},
                            Case{"IndividualLevel=?", Warning, 83},
                            Case{"IndividualLevel=7", Warning, 84},
                            Case{"Interleave=?", Warning, 85},
                            Case{"Interleave=7", Warning, 86},
                            Case{"Frequency=abs", Warning, 87},
                            Case{"GameticPhase=?", Warning, 88},
                            Case{"GameticPhase=5", Warning, 89},
                            Case{"RecessiveAllele=\"a b\"", Warning, 90},
                            Case{"FrequencyThreshold=?", Warning, 91},
                            Case{"EpsilonValue=?", Warning, 92}}) {
        const std::size_t before = reports.all().size();
        read(std::string("[Profile]\n") + one.line);
        ASSERT_GT(reports.all().size(), before) << one.line;
        EXPECT_EQ(reports.all()[before].type, one.type) << one.line;
        EXPECT_EQ(reports.all()[before].code, one.code) << one.line;
        expect_defaults(profile);
    }
}

TEST_F(Profile, WrittenSectionIsReadAgain) {
    ASSERT_TRUE(read(kFullProfile));
    std::ostringstream text;
    text << profile;
    EXPECT_EQ(text.str(),
              "[Profile]\n\n\tTitle=\"A title\"\n\tNbSamples=3\n\tGenotypicData=1\n\tDataType=MICROSAT\n"
              "\tLocusSeparator=\"-\"\n\tMissingData=\"x\"\n\tGameticPhase=0\n\tFrequency=REL\n"
              "\tRecessiveData=3\n\tRecessiveAllele=\"xx\"\n\tFrequencyThreshold=0.001\n"
              "\tEpsilonValue=0.0001\n\n");
    const ProfileSettings written = profile;
    profile.initialize();
    ASSERT_TRUE(read(text.str()));
    EXPECT_EQ(profile.LocusSeparator, written.LocusSeparator);
    EXPECT_EQ(profile.MissingData, written.MissingData);
    EXPECT_EQ(profile.Frequency, 1);
    EXPECT_EQ(profile.EpsilonValue, 1e-4);
}

TEST_F(Profile, DataTypeMayBeFollowedByATabAndAComment) {
    EXPECT_TRUE(read("[Profile]\nDataType=RFLP\t# not DNA\n NbSamples=2\n"));
    EXPECT_EQ(profile.DataType, RFLP);
    EXPECT_EQ(profile.NbSamples, 2);
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(Profile, NumbersAreWrittenInFullWhateverTheFormatOfTheStream) {
    profile.NbSamples = 17;
    profile.FrequencyThreshold = 1.2345678901234e-5;
    profile.EpsilonValue = 0.1;
    std::ostringstream text;
    text << std::hex << std::showpos << std::fixed << profile;
    EXPECT_NE(text.str().find("NbSamples=17\n"), std::string::npos) << text.str();
    EXPECT_NE(text.str().find("FrequencyThreshold=1.2345678901234e-05\n\tEpsilonValue=0.1\n"),
              std::string::npos)
        << text.str();
    EXPECT_TRUE(text.flags() & std::ios_base::hex);
}

TEST_F(Profile, SeparatorsAreWrittenAsWords) {
    const auto written = [](char separator) {
        ProfileSettings p;
        p.LocusSeparator = separator;
        p.Title = "a \"b\"";
        std::ostringstream text;
        text << p;
        return text.str();
    };
    EXPECT_NE(written('\0').find("LocusSeparator=NONE\n"), std::string::npos);
    EXPECT_NE(written(' ').find("LocusSeparator=WHITESPACE\n"), std::string::npos);
    EXPECT_NE(written('\t').find("LocusSeparator=TAB\n"), std::string::npos);
    EXPECT_NE(written(',').find("LocusSeparator=\",\"\n"), std::string::npos);
    EXPECT_NE(written(',').find("Title='a \"b\"'\n"), std::string::npos);
}

TEST_F(Profile, DataTypeNames) {
    EXPECT_STREQ(data_type_name(DNA), "DNA");
    EXPECT_STREQ(data_type_name(FREQUENCY), "FREQUENCY");
    EXPECT_STREQ(data_type_name(-1), "STANDARD");
    EXPECT_STREQ(data_type_name(9), "STANDARD");
}

}  // namespace
