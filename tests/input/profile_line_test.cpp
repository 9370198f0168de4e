#include "input/profile_line.h"

#include <gtest/gtest.h>

#include <string>

#include "support/captured_log.h"
#include "support/captured_reports.h"

namespace {

using namespace mnd;
using mnd_test::CapturedLog;
using mnd_test::CapturedReports;
using mnd_test::Report;

class ProfileLine : public ::testing::Test {
protected:
    LineOutcome take(const char* text) {
        const my_string line(text);
        my_string upper = line;
        upper.to_upper();
        return read_profile_line(line, upper, 4, profile, seen);
    }

    CapturedLog log;
    CapturedReports reports;
    ProfileSettings profile;
    ProfileKeywordsSeen seen;
};

TEST_F(ProfileLine, TakesEveryKeyword) {
    for (const char* line :
         {"\tTitle=\"A title\"", "NBSAMPLES=17", "DataType = rflp", "GenotypicData=1",
          "LocusSeparator=\" ,\"", "GameticPhase=0", "RecessiveData=2.9", "RecessiveAllele='r'",
          "MissingData=\"- \"", "Frequency=REL", "FrequencyThreshold=1e-3", "EpsilonValue=1e-4"}) {
        EXPECT_EQ(take(line), LineOutcome::kTaken) << line;
    }
    EXPECT_EQ(profile.Title.view(), "A title");
    EXPECT_EQ(profile.NbSamples, 17);
    EXPECT_EQ(profile.DataType, RFLP);
    EXPECT_EQ(profile.GenotypicData, 1);
    EXPECT_EQ(profile.LocusSeparator, ',');
    EXPECT_EQ(profile.GameticPhase, 0);
    EXPECT_EQ(profile.RecessiveData, 2);
    EXPECT_EQ(profile.RecessiveAllele.view(), "r");
    EXPECT_EQ(profile.MissingData, '-');
    EXPECT_EQ(profile.Frequency, 1);
    EXPECT_EQ(profile.FrequencyThreshold, 1e-3);
    EXPECT_EQ(profile.EpsilonValue, 1e-4);
    EXPECT_TRUE(seen.nb_samples && seen.data_type && seen.genotypic_data && seen.locus_separator &&
                seen.gametic_phase && seen.recessive_allele && seen.missing_data);
    EXPECT_TRUE(reports.all().empty());
    EXPECT_EQ(log.text(), "");
}

TEST_F(ProfileLine, OtherLinesAreNotMine) {
    for (const char* line : {"", "[Profile]", "NbGroups=2", "NbLoci=4", "LociLabels={", "Interleave=1"}) {
        EXPECT_EQ(take(line), LineOutcome::kNotMine) << line;
    }
    EXPECT_EQ(profile.NbGroups, 0);
    EXPECT_EQ(profile.NbLoci, 0);
}

TEST_F(ProfileLine, FirstKeywordOfTheTableDecidesWhereverItStands) {
    EXPECT_EQ(take("NbSamples=2 Title=\"x\""), LineOutcome::kTaken);
    EXPECT_EQ(profile.Title.view(), "x");
    EXPECT_FALSE(seen.nb_samples);
    take("MatrixName=\"my title\"");
    EXPECT_EQ(profile.Title.view(), "my title");
}

TEST_F(ProfileLine, MissingEqualSignCountsAsSeen) {
    EXPECT_EQ(take("NbSamples 3"), LineOutcome::kTaken);
    EXPECT_TRUE(seen.nb_samples);
    EXPECT_EQ(profile.NbSamples, 0);
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0].code, 188);
    EXPECT_EQ(log.text(), "\tProject file, Line #4 : Missing equal sign after keyword 'NbSamples'\n");
}

TEST_F(ProfileLine, BadTitleIsEmpty) {
    profile.Title = "old";
    EXPECT_EQ(take("Title=no quotes"), LineOutcome::kTaken);
    EXPECT_EQ(profile.Title.view(), "");
}

TEST_F(ProfileLine, BadNbSamplesStops) {
    for (const char* line : {"NbSamples=", "NbSamples=x", "NbSamples=1 2", "NbSamples=1e300"}) {
        EXPECT_EQ(take(line), LineOutcome::kStop) << line;
        EXPECT_EQ(reports.all().back(), (Report{Error, "Project::newOpen()", 95}));
    }
}

TEST_F(ProfileLine, DataTypeIsFoundWithinTheValue) {
    for (int type = DNA; type <= FREQUENCY; ++type) {
        EXPECT_EQ(take((std::string("DataType= a ") + data_type_name(type) + "s").c_str()),
                  LineOutcome::kTaken);
        EXPECT_EQ(profile.DataType, type);
    }
    profile.DataType = DNA;
    take("DataType=SNP");
    EXPECT_EQ(profile.DataType, STANDARD);
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Warning, "ProfileSettings::read_DataType()", 75}));
}

TEST_F(ProfileLine, GenotypicDataOf2IsZeroWithWarning74) {
    profile.GenotypicData = 1;
    take("GenotypicData=2");
    EXPECT_EQ(profile.GenotypicData, 0);
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Warning, "ProfileSettings::read_GenotypicData()", 74}));
}

TEST_F(ProfileLine, GameticPhaseOf5IsOneWithWarning89) {
    profile.GameticPhase = 0;
    take("GameticPhase=5");
    EXPECT_EQ(profile.GameticPhase, 1);
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Warning, "ProfileSettings::read_GameticPhase()", 89}));
}

TEST_F(ProfileLine, RecessiveDataOf3IsStoredAs3) {
    take("RecessiveData=3");
    EXPECT_EQ(profile.RecessiveData, 3);
    take("RecessiveData=x");
    EXPECT_EQ(profile.RecessiveData, 3);
}

TEST_F(ProfileLine, LowerCaseFrequencyIsRefused) {
    profile.Frequency = 1;
    take("Frequency=abs");
    EXPECT_EQ(profile.Frequency, 1);
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Warning, "ProfileSettings::read_Frequency()", 87}));
    EXPECT_EQ(log.text(),
              "\tProject file, Line #4 : Invalid value (\"abs\") assigned to keyword \"Frequency\"\n");
}

TEST_F(ProfileLine, SeparatorWordsNeedNoQuotes) {
    take("LocusSeparator=Tab");
    EXPECT_EQ(profile.LocusSeparator, '\t');
    take("LocusSeparator=NONE");
    EXPECT_EQ(profile.LocusSeparator, '\0');
    take("LocusSeparator=Whitespace");
    EXPECT_EQ(profile.LocusSeparator, ' ');
    take("LocusSeparator='\\0'");
    EXPECT_EQ(profile.LocusSeparator, '\0');
    take("LocusSeparator=\"X\"");
    EXPECT_EQ(profile.LocusSeparator, 'X');
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(ProfileLine, UnquotedSeparatorIsABlankWithWarning82) {
    profile.LocusSeparator = ',';
    take("LocusSeparator=X");
    EXPECT_EQ(profile.LocusSeparator, ' ');
    ASSERT_EQ(reports.all().size(), 2u);
    EXPECT_EQ(reports.all()[0].code, 190);
    EXPECT_EQ(reports.all()[1], (Report{Warning, "ProfileSettings::read_LocusSeparator()", 82}));
    EXPECT_TRUE(
        log.holds("\tProject file, Line #4 : Invalid value ('X\") assigned to keyword \"LocusSeparator\"\n"));
}

TEST_F(ProfileLine, RefusedValuesAreToldAsWritten) {
    take("LocusSeparator=\"a b\"");
    EXPECT_TRUE(log.holds(" : Invalid value ('a b\") assigned to keyword \"LocusSeparator\"\n"));
    take("RecessiveAllele=plain");
    EXPECT_TRUE(log.holds(" : Invalid value (\"plain\") assigned to keyword \"RecessiveAllele\"\n"));
    take("MissingData=");
    EXPECT_TRUE(log.holds(" : Invalid value (\"\") assigned to keyword \"MissingData\"\n"));
}

TEST_F(ProfileLine, QuotedBlankSeparatorIsABlankWithWarning82) {
    take("LocusSeparator=\" \"");
    EXPECT_EQ(profile.LocusSeparator, ' ');
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0].code, 82);
}

TEST_F(ProfileLine, RecessiveAlleleHasNoBlank) {
    take("RecessiveAllele=\"a b\"");
    EXPECT_EQ(profile.RecessiveAllele.view(), "null");
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Warning, "ProfileSettings::read_RecessiveAllele()", 90}));
    EXPECT_EQ(log.text(),
              "\tProject file, Line #4 : Invalid value (\"a b\") assigned to keyword \"RecessiveAllele\"\n");
}

TEST_F(ProfileLine, BadMissingDataIsAQuestionMark) {
    profile.MissingData = 'x';
    take("MissingData=\"ab\"");
    EXPECT_EQ(profile.MissingData, '?');
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Warning, "ProfileSettings::read_MissingData()", 78}));
    EXPECT_EQ(log.text(),
              "\tProject file, Line #4 : Invalid value (\"ab\") assigned to keyword \"MissingData\"\n");
}

TEST_F(ProfileLine, CompDistMatrixIsObsolete) {
    EXPECT_EQ(take("CompDistMatrix=1"), LineOutcome::kTaken);
    EXPECT_EQ(profile.GivenDistMat, 1);
    EXPECT_EQ(log.text(),
              "\tProject file, Line #4 : Keyword \"CompDistMatrix\" is now obsolete. "
              "Please set this parameter directly throug the interface\n");
}

TEST_F(ProfileLine, BadEpsilonValueNamesFrequencyThreshold) {
    profile.EpsilonValue = 1.0;
    profile.FrequencyThreshold = 1.0;
    take("EpsilonValue=x");
    EXPECT_EQ(profile.EpsilonValue, 1e-7);
    EXPECT_EQ(log.text(), "\tProject file, Line #4 : Bad value after keyword 'FrequencyThreshold'\n");
    take("FrequencyThreshold=x");
    EXPECT_EQ(profile.FrequencyThreshold, 1e-5);
}

}  // namespace
