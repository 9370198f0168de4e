#include "within/sample_distances.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "model/popul_dna.h"
#include "model/samples.h"
#include "run/errors.h"
#include "run/settings.h"
#include "support/captured_log.h"
#include "support/captured_reports.h"
#include "support/temp_folder.h"
#include "within/text_sample.h"

namespace {

using DnaSample = mnd_test::TextSample<mnd::PopulDNA>;

TEST(SampleDistances, TextsOfEntriesWithoutADefinitionAreEmpty) {
    DnaSample t({"AC"});
    t.sample.hapl_list.Add(new mnd::PHaploDef());
    const auto texts = mnd::haplotype_texts(t.sample);
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[0], "AC");
    EXPECT_EQ(texts[1], "");
}

TEST(SampleDistances, UsableLociAreThoseWithAFlag) {
    DnaSample t({"ACGT"});
    t.drop(1);
    EXPECT_EQ(mnd::usable_loci(t.sample, 99), (std::vector<int>{0, 2, 3}));
    t.sample.usable_site.clear();
    EXPECT_EQ(mnd::usable_loci(t.sample, 3), (std::vector<int>{0, 1, 2}));
}

TEST(SampleDistances, TheLargestDistanceIsAnIntegerAndFinite) {
    mnd::PopulDNA sample;
    mnd::note_distance(sample, 3.9);
    EXPECT_EQ(sample.max_dist, 3);
    mnd::note_distance(sample, 3.2);
    EXPECT_EQ(sample.max_dist, 3);
    mnd::note_distance(sample, std::nan(""));
    mnd::note_distance(sample, HUGE_VAL);
    EXPECT_EQ(sample.max_dist, 3);
    mnd::note_distance(sample, 1e300);
    EXPECT_EQ(sample.max_dist, std::numeric_limits<int>::max());
}

TEST(SampleDistances, TheTableLeavesTheDiagonalBlank) {
    mnd::RectMat matrix(2, 2);
    matrix(1, 0) = 12.34567;
    matrix(0, 1) = 0.5;
    std::ostringstream out;
    mnd::print_distance_matrix(out, matrix);
    EXPECT_EQ(out.str(),
              "          0.5000\n"
              " 12.3457        \n");
}

TEST(SampleDistances, TheSmallNameHasNoCharactersOfPaths) {
    mnd::PopulDNA sample;
    mnd::settings s;
    s.result_directory = "data/x.res/";
    sample.name = "North / East:\\1";
    EXPECT_STREQ(mnd::get_small_name(sample, s).c_str(), "data/x.res/North___East__1");
}

TEST(SampleDistances, TheDistanceFileHasTheMethodOfTheAmova) {
    const mnd_test::TempFolder folder;
    const mnd_test::CapturedOutput progress;
    mnd::settings s;
    s.result_directory = (folder.path().string() + "/").c_str();
    s.DistanceMethodAMOVA = 3;
    s.GammaAValueAMOVA = 0.25;
    s.DistanceMethod = 1;
    DnaSample t({"AAAA", "AAAG"});
    t.sample.name = "Pop 1";
    ASSERT_EQ(mnd::write_distance_file(t.sample, s), 1);
    EXPECT_EQ(mnd_test::read_text(folder / "Pop_1.dis"),
              "\nInter-haplotypic distance matrix:\n\n"
              "          0.2165\n"
              "  0.2500        \n");
    EXPECT_EQ(t.sample.distance_method, 3);
    EXPECT_EQ(t.sample.gamma_a, 0.25);
}

TEST(SampleDistances, ADistanceFileThatTakesThePlaceOfAnotherSaysSo) {
    const mnd_test::TempFolder folder;
    const mnd_test::CapturedOutput progress;
    DnaSample first({"AAAA", "AAAG"});
    DnaSample other({"AAAA", "AAAG"});
    DnaSample last({"AAAA", "AGGG"});
    first.sample.name = "A B";
    other.sample.name = "B";
    last.sample.name = "A_B";
    mnd::Samples pass;
    pass.populations.owns_elements = 0;
    mnd::settings s;
    s.result_directory = (folder.path().string() + "/").c_str();
    s.current_samples = &pass;
    std::string logs[3];
    int number = 0;
    for (DnaSample* t : {&first, &other, &last})
        pass.populations.Add(&t->sample);
    for (DnaSample* t : {&first, &other, &last}) {
        const mnd_test::CapturedLog log;
        ASSERT_EQ(mnd::write_distance_file(t->sample, s), 1);
        logs[number++] = log.text();
    }
    const std::string path = s.result_directory.c_str() + std::string("A_B.dis");
    EXPECT_EQ(logs[0].find("Warning"), std::string::npos);
    EXPECT_EQ(logs[1].find("Warning"), std::string::npos);
    EXPECT_NE(logs[2].find(
                  "\t\tWarning: the distances of sample \"A_B\" overwrite those of \"A B\" in the file \"" +
                  path + "\"\n"),
              std::string::npos)
        << logs[2];
    EXPECT_NE(mnd_test::read_text(path).find("3.0000"), std::string::npos);
}

TEST(SampleDistances, AnUnwritableDistanceFileIsSaidInTheLog) {
    const mnd_test::TempFolder folder;
    std::ostringstream log;
    mnd::_AOS_ = &log;
    mnd::settings s;
    s.result_directory = (folder.path().string() + "/missing/").c_str();
    DnaSample t({"AAAA", "AAAG"});
    t.sample.name = "P";
    EXPECT_EQ(mnd::write_distance_file(t.sample, s), 0);
    mnd::_AOS_ = &mnd::null_stream();
    EXPECT_NE(log.str().find("Unable to write the distance file"), std::string::npos);
    EXPECT_NE(log.str().find("P.dis"), std::string::npos);
}

}  // namespace
