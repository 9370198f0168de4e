#include "simulation/project_writer.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

std::string header(int samples, mnd::TDataType type) {
    std::ostringstream out;
    mnd::write_Mendrake_header(samples, type, out);
    return out.str();
}

TEST(ProjectWriter, WritesTheProfileOfSimulatedSamples) {
    EXPECT_EQ(header(3, mnd::DNA),
              "\n[Profile]\n"
              "\tTitle=\"A series of simulated samples\"\n"
              "\tNbSamples=3\n"
              "\tGenotypicData=1\n"
              "\tGameticPhase=0\n"
              "\tRecessiveData=0\n"
              "\tDataType=DNA\n"
              "\tLocusSeparator=NONE\n"
              "\tMissingData='?'\n"
              "\n[Data]\n"
              "\t[[Samples]]\n\n");
}

TEST(ProjectWriter, SeparatesTheLociOfSizesAndAllelesByTabs) {
    EXPECT_NE(header(1, mnd::RFLP).find("\tDataType=RFLP\n\tLocusSeparator=NONE\n"), std::string::npos);
    EXPECT_NE(header(1, mnd::MICROSAT).find("\tDataType=MICROSAT\n\tLocusSeparator=TAB\n"),
              std::string::npos);
    EXPECT_NE(header(1, mnd::STANDARD).find("\tDataType=STANDARD\n\tLocusSeparator=TAB\n"),
              std::string::npos);
    EXPECT_NE(header(1, mnd::FREQUENCY).find("\tDataType=STANDARD\n\tLocusSeparator=TAB\n"),
              std::string::npos);
}

TEST(ProjectWriter, WritesTheFrameOfASample) {
    std::ostringstream out;
    mnd::write_Mendrake_sample_header(2, 40, out);
    mnd::write_Mendrake_sample_footer(out);
    EXPECT_EQ(out.str(), "\t\tSampleName=\"Sample 2\"\n\t\tSampleSize=40\n\t\tSampleData= {\n}\n");
}

TEST(ProjectWriter, TakesTitleAndNameOfEstimatedPhases) {
    std::ostringstream out;
    mnd::write_Mendrake_header_gibbs(3, mnd::DNA, "Modal phase", out);
    std::string expected = header(3, mnd::DNA);
    const std::string title = "A series of simulated samples";
    expected.replace(expected.find(title), title.size(), "Modal phase");
    EXPECT_EQ(out.str(), expected);
    std::ostringstream sample;
    mnd::write_Mendrake_sample_header_gibbs("Wolof", 12, sample);
    mnd::write_Mendrake_sample_footer_gibbs(sample);
    EXPECT_EQ(sample.str(), "\t\tSampleName=\"Wolof\"\n\t\tSampleSize=12\n\t\tSampleData= {\n}\n");
}

}  // namespace
