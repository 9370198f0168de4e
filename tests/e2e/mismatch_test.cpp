// Mismatch distributions and expansions as a user starts them: real projects in, documents out.
#include <gtest/gtest.h>

#include <string>

#include "support/project_runs.h"
#include "support/temp_folder.h"

namespace {

using mnd_test::contains;
using mnd_test::count_of;

class MismatchRuns : public mnd_test::ProjectRuns {
protected:
    // Analyses a project of the test data under a seed; the lines of settings stand first.
    std::string analyse(const std::string& project, const std::string& settings,
                        const char* ending = ".htm") {
        return run_project(project,
                           settings +
                               "TaskNumber=4\nMismatchDemogExp=1\nMismatchSpatialExp=1\n"
                               "MismatchSpatialExpNumParams=2\nNumBootExpDem=60\n",
                           ending);
    }
    // From the heading of the step to its publications, which times do not enter.
    static std::string block_of(const std::string& document) {
        const std::size_t begin = document.find("== Mismatch distribution : (");
        if (begin == std::string::npos) return "";
        return document.substr(begin, document.find("References:", begin) - begin);
    }
};

TEST_F(MismatchRuns, WoodMiceAreFittedByAllModels) {
    const std::string block = block_of(analyse("woodmouse", ""));
    ASSERT_NE(block, "");
    // The moments of the 105 pairs. A simplex search (Nelder and Mead) from three starts finds the least sum
    // of squares at Tau 11.525, Theta0 1.6747 and Theta1 88.44; the pattern search stops on steps of 0.001.
    EXPECT_NEAR(number_behind(block, "\nMismatch observed mean              : "), 11.781, 0.0006);
    EXPECT_NEAR(number_behind(block, "\nMismatch observed variance          : "), 17.653, 0.0006);
    EXPECT_NEAR(number_behind(block, "\nTau                                 : "), 11.52, 0.1);
    EXPECT_NEAR(number_behind(block, "\nTheta0                              : "), 1.68, 0.1);
    EXPECT_NEAR(number_behind(block, "\nTheta1                              : "), 88.6, 2.0);
    EXPECT_EQ(count_of(block, "Test of goodness-of-fit:"), 2);
    EXPECT_EQ(count_of(block, "Confidence intervals (Percentile method)"), 6);
    EXPECT_EQ(count_of(block, "\nBased on "), 6);
    EXPECT_TRUE(contains(block, "Parameters of the spatial expansion assuming different deme size"));
    EXPECT_FALSE(contains(block, "nan"));
    EXPECT_FALSE(contains(block, "inf\n"));
}

TEST_F(MismatchRuns, ASeedGivesTheSameDocumentAgain) {
    EXPECT_EQ(block_of(analyse("woodmouse", "")), block_of(analyse("woodmouse", "")));
}

TEST_F(MismatchRuns, TheXmlDocumentIsWellFormed) {
    const std::string document = analyse("woodmouse", "XMLOutput=1\nNumBootExpDem=5\n", ".xml");
    EXPECT_EQ(count_of(document, "<mismatchDemogExp pop="), 1);
    EXPECT_EQ(count_of(document, "<mismatchSpatialExpCI pop="), 3);
    EXPECT_TRUE(is_well_formed());
}

// Every place that the tree of the results opens is one of the document.
TEST_F(MismatchRuns, TheTreeOpensPlacesOfTheDocument) {
    for (const char* ending : {".htm", ".xml"}) {
        const bool xml = std::string(ending) == ".xml";
        const std::string document =
            analyse("influenza_small", xml ? "XMLOutput=1\nNumBootExpDem=2\n" : "NumBootExpDem=2\n", ending);
        const std::string script = mnd_test::read_text(folder / "influenza_small.res" / "influenza_small.js");
        int links = 0;
        for (std::size_t at = script.find('#'); at != std::string::npos; at = script.find('#', at + 1)) {
            const std::string anchor = script.substr(at + 1, script.find('"', at) - at - 1);
            EXPECT_TRUE(contains(document, "NAME=\"" + anchor + "\"")) << anchor;
            ++links;
        }
        EXPECT_EQ(links, 1 + 1 + 5) << "the run, its settings and five samples";
    }
}

TEST_F(MismatchRuns, RestrictionSitesAreFittedByAllModels) {
    const std::string block = block_of(analyse("binary_rflp", "NumBootExpDem=0\n"));
    EXPECT_TRUE(contains(block, "Parameters estimated under the sudden expansion model:"));
    EXPECT_TRUE(contains(block, "Parameters of the spatial expansion assuming different deme size"));
    EXPECT_TRUE(contains(block, "Parameters of the spatial expansion assuming constant deme size\n"));
    EXPECT_FALSE(contains(block, "goodness"));
    EXPECT_FALSE(contains(block, "Confidence"));
    EXPECT_FALSE(contains(block, "nan"));
}

TEST_F(MismatchRuns, GenotypesOfUnknownPhaseAreToldThatThereIsNone) {
    const std::string document = analyse("cats_microsat", "");
    EXPECT_EQ(count_of(document,
                       "Mismatch distribution cannot be computed \n"
                       "in case of genotypic data with unknown gametic phase\n\n"),
              count_of(document, "== Mismatch distribution : ("));
    EXPECT_TRUE(contains(document, "== Mismatch distribution : ("));
}

}  // namespace
