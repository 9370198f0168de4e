#include "between/amova_null_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <numeric>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "amova_data.h"
#include "between/amova_tests.h"
#include "foundation/random.h"
#include "model/population.h"
#include "support/captured_log.h"
#include "support/project_log.h"
#include "support/seeded_stream.h"
#include "support/temp_folder.h"

namespace {

using mnd::FloatsAndPops;
using mnd::NullDistribution;
using mnd::NullHistogram;
using mnd_test::AmovaData;

double distance(int i, int j) {
    return i == j ? 0.0 : std::abs(i - j);
}

FloatsAndPops arrangement(double value, std::vector<std::int32_t> pops) {
    const auto count = static_cast<std::int32_t>(pops.size());
    return {value, std::move(pops), count};
}

std::string printed(double value) {
    std::ostringstream out;
    out.precision(2);
    mnd::print_MND_DOUBLE(out, value);
    EXPECT_EQ(out.precision(), 2);
    return out.str();
}

TEST(PrintMndDouble, ShowsSignAndTenDecimals) {
    EXPECT_EQ(printed(0.25), "+0.2500000000");
    EXPECT_EQ(printed(-0.000012345678), "-0.0000123457");
    EXPECT_EQ(printed(1234.5), "+1234.5000000000");
    EXPECT_EQ(printed(0.0), "+0.0000000000");
    EXPECT_EQ(printed(std::numeric_limits<double>::infinity()), "000000000+inf");
}

TEST(PrintP, CutsTheSamplesByTheGroups) {
    std::ostringstream out;
    mnd::print_p(out, arrangement(-0.5, {3, 0, 4, 1, 2}), {2, 1, 2});
    EXPECT_EQ(out.str(), "[4,1],[5],[2,3]\t\t-0.5000000000\n");
}

TEST(PrintPopvect, NumbersTheSamples) {
    mnd::Population north, south;
    north.name = "north";
    north.amova.amova_id = 0;
    south.name = "south";
    south.amova.amova_id = 1;
    std::ostringstream out;
    mnd::print_popvect(out, {&north, &south});
    EXPECT_EQ(out.str(), "\nList of populations:\n\n   1 : north\n   2 : south\n\n\n");
}

TEST(NullDistribution, SortsBothListsWithWhatIsNoNumberLast) {
    NullDistribution null;
    null.values = {0.5, std::nan(""), -1.0, 0.25};
    null.arrangements = {arrangement(2.0, {0, 1}), arrangement(1.0, {1, 0}), arrangement(2.0, {1, 0})};
    null.sort();
    EXPECT_EQ(std::vector<double>(null.values.begin(), null.values.begin() + 3),
              (std::vector<double>{-1.0, 0.25, 0.5}));
    EXPECT_TRUE(std::isnan(null.values[3]));
    EXPECT_EQ(null.arrangements[0].value, 1.0);
    EXPECT_EQ(null.arrangements[1].pops, (std::vector<std::int32_t>{0, 1}));
    EXPECT_EQ(null.arrangements[2].pops, (std::vector<std::int32_t>{1, 0}));
}

class NullFile : public ::testing::Test {
protected:
    NullFile() : data({{{0, 1}, {1, 2}}, {{0, 0}, {2, 2}}}, 3, distance), analysis(data.prepare()) {
        analysis->time_string = "stamp";
    }

    std::string text_of(const NullDistribution& null) {
        std::ostringstream out;
        mnd::print_null_distribution(out, *analysis, null, 12);
        return out.str();
    }

    AmovaData data;
    std::unique_ptr<mnd::Amova> analysis;
};

TEST_F(NullFile, ListsTheValuesOfAShuffleOfCopies) {
    NullDistribution null;
    null.component = 2;
    null.values = {-0.5, 0.0, 0.25};
    EXPECT_EQ(text_of(null),
              "File creation time    stamp\n"
              "===============================================\n\n"
              "Number of permutations : 3\n"
              "Time for computation   : 12 ms\n\n"
              "Results : Vc\n============\n\n"
              "-0.5000000000\n+0.0000000000\n+0.2500000000\n");
}

// The samples stand permuted by then; their list is in the order of their numbers.
TEST_F(NullFile, ListsTheArrangementsOfSamples) {
    std::swap(analysis->all_pops[0], analysis->all_pops[3]);
    NullDistribution null;
    null.arrangements = {arrangement(0.125, {1, 0, 3, 2}), arrangement(0.5, {3, 1, 2, 0})};
    EXPECT_EQ(text_of(null),
              "File creation time    stamp\n"
              "===============================================\n\n"
              "Number of permutations : 2\n"
              "Time for computation   : 12 ms\n\n"
              "Results : Va\n============\n\n"
              "\nList of populations:\n\n   1 : pop1\n   2 : pop2\n   3 : pop3\n   4 : pop4\n\n\n"
              "[2,1],[4,3]\t\t+0.1250000000\n[4,2],[3,1]\t\t+0.5000000000\n");
}

TEST_F(NullFile, IsWrittenOverTheFormerOneAndTold) {
    const mnd_test::TempFolder folder;
    const std::string path = (folder / "result.vb").string();
    mnd_test::write_text(path, std::string(1000, 'x'));
    data.s.sigm_histo_f_name[1] = path.c_str();
    NullDistribution null;
    null.component = 1;
    null.values = {1.0};
    const mnd_test::CapturedLog log;
    EXPECT_TRUE(mnd::write_null_file(*analysis, null, 12, "origin"));
    EXPECT_EQ(mnd_test::read_text(path), text_of(null));
    EXPECT_EQ(log.text(), "\t\tdone ! (12 ms)\tResults in file : \"" + path + "\"\n");
}

TEST_F(NullFile, WithoutANameIsReportedByItsComponent) {
    const char* const messages[] = {
        "missing file (Var A null distribution)", "missing file (Var B null distribution)",
        "missing file (Var C null distribution)", "missing file (Var D null distribution)"};
    for (int component = 0; component < 4; ++component) {
        for (const char* name : {"", "/no/such/folder/x"}) {
            const mnd_test::ProjectLog log;
            data.s.sigm_histo_f_name[component] = name;
            NullDistribution null;
            null.component = component;
            EXPECT_FALSE(mnd::write_null_file(*analysis, null, 1, "Amova::AMOVA_G_P_I()"));
            EXPECT_TRUE(log.reports("WARNING", "Amova::AMOVA_G_P_I()", messages[component])) << log.text();
        }
    }
}

// Sixteen values give 4 bounds: 0, 1.5, 3, 4.5 over the range 0 to 3, and 3 classes.
TEST(NullHistogram, ClassesStartAtTheSmallestAndEndBehindTheLargest) {
    NullDistribution null;
    null.values = {0, 0, 0.5, 1, 1.25, 1.5, 1.5, 1.75, 2, 2, 2.5, 2.75, 2.875, 2.9375, 3, 3};
    const NullHistogram histogram = mnd::null_histogram(null);
    EXPECT_EQ(histogram.bound, (std::vector<float>{0.0F, 1.5F, 3.0F, 4.5F}));
    EXPECT_EQ(histogram.counts, (std::vector<std::int64_t>{5, 9, 2}));
    EXPECT_EQ(histogram.centre(0), 0.75F);
    EXPECT_EQ(histogram.centre(2), 3.75F);
}

TEST(NullHistogram, HasTwoToNineteenClasses) {
    NullDistribution null;
    EXPECT_TRUE(mnd::null_histogram(null).counts.empty());
    null.values = {1.0, 2.0};
    EXPECT_EQ(mnd::null_histogram(null).counts, (std::vector<std::int64_t>{1, 1}));
    null.values.resize(1000);
    std::iota(null.values.begin(), null.values.end(), 0.0);
    const NullHistogram histogram = mnd::null_histogram(null);
    EXPECT_EQ(histogram.counts.size(), 19U);
    EXPECT_EQ(std::accumulate(histogram.counts.begin(), histogram.counts.end(), std::int64_t{0}), 1000);
}

// The float nearest to 0.1 is larger than the double. Held to double precision, the smallest
// value would fall below the first bound.
TEST(NullHistogram, CountsTheSmallestValueWhateverItsRounding) {
    NullDistribution null;
    null.values = {0.1, 0.2, 0.3, 0.7};
    ASSERT_GT(static_cast<double>(0.1F), 0.1);
    const NullHistogram histogram = mnd::null_histogram(null);
    EXPECT_EQ(std::accumulate(histogram.counts.begin(), histogram.counts.end(), std::int64_t{0}), 4);
}

TEST(NullHistogram, EqualValuesFallIntoNoClass) {
    NullDistribution null;
    null.values = {0.5, 0.5, 0.5};
    EXPECT_EQ(mnd::null_histogram(null).counts, (std::vector<std::int64_t>{0, 0}));
}

TEST(PrintNullHistograms, StandSideBySideInTheOrderOfTheComponents) {
    NullDistribution c;
    c.component = 2;
    c.observed = 1.5;
    c.values = {0, 0, 1, 2};
    NullDistribution a;
    a.observed = -0.25;
    a.arrangements = {arrangement(-1.0, {0, 1}), arrangement(1.0, {1, 0})};
    std::ostringstream out;
    out.precision(3);
    mnd::print_null_histograms(out, {c, a});
    EXPECT_EQ(out.str(),
              "\n\nHistogram of variance components null distributions\n"
              "===================================================\n"
              "                  Va                  Vc\n"
              "   0.00000         1   1.00000         3\n"
              "   2.00000         1   3.00000         1\n"
              "\nObserved  values:\n-----------------"
              "\nVa : -0.25000000\nVc : 1.50000000\n");
    EXPECT_EQ(out.precision(), 3);
}

TEST(PrintNullHistograms, WideNumbersStayApart) {
    NullDistribution null;
    null.values = {10000.0, 20000.0};
    std::ostringstream out;
    mnd::print_null_histograms(out, {null});
    EXPECT_NE(out.str().find(" 15000.00000         1\n 25000.00000         1\n"), std::string::npos)
        << out.str();
}

TEST(PrintNullHistograms, NothingIsPrintedWithoutADistribution) {
    std::ostringstream out;
    mnd::print_null_histograms(out, {});
    EXPECT_EQ(out.str(), "");
}

class KeptNullDistributions : public mnd_test::SeededStream {};

// Every test of the design leaves its file, and all of them stand in the histogram.
TEST_F(KeptNullDistributions, FollowTheTests) {
    const mnd_test::TempFolder folder;
    const mnd_test::CapturedLog log;
    AmovaData data({{{0, 1, 2}, {1, 2, 2}}, {{0, 0, 1}, {3, 3, 2, 1}}}, 4, distance);
    data.s.NumPermutationsAMOVA = 50;
    data.s.KeepNullDistrib = 1;
    data.s.result_file_name = (folder / "result.htm").string().c_str();
    std::fstream document((folder / "document").string(), std::ios::out);
    data.s.result_stream = &document;
    mnd::amova_results record;
    data.analyse(1, &record);
    document.close();
    const std::string text = mnd_test::read_text(folder / "document");
    EXPECT_TRUE(mnd_test::contains(text, "\nHistogram of variance components null distributions\n"));
    EXPECT_TRUE(mnd_test::contains(text, "\n                  Va                  Vb                  Vc\n"));
    const std::vector<const std::vector<double>*> nulls = {&record.null_Va, &record.null_Vb, &record.null_Vc};
    for (int component = 0; component < 3; ++component) {
        const char letter = static_cast<char>('a' + component);
        const std::string file = mnd_test::read_text(folder / (std::string("result.v") + letter));
        EXPECT_TRUE(mnd_test::contains(file, "Number of permutations : 56\n"));
        EXPECT_TRUE(mnd_test::contains(file, std::string("Results : V") + letter + "\n"));
        std::vector<double> values = *nulls[static_cast<std::size_t>(component)];
        ASSERT_EQ(values.size(), 56U);
        EXPECT_FALSE(std::is_sorted(values.begin(), values.end()));
        std::sort(values.begin(), values.end());
        std::size_t at = 0;
        for (const double value : values) {
            at = file.find(printed(value) + "\n", at);
            ASSERT_NE(at, std::string::npos);
            ++at;
        }
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "result.vd"));
    EXPECT_TRUE(mnd_test::contains(mnd_test::read_text(folder / "result.va"), "\n[1,2],[3,4]\t\t"));
}

TEST_F(KeptNullDistributions, WithoutAFileEndTheDesign) {
    AmovaData data({{{0, 1, 2}, {1, 2, 2}}, {{0, 0, 1}, {3, 3, 2, 1}}}, 4, distance);
    data.s.NumPermutationsAMOVA = 50;
    data.s.KeepNullDistrib = 1;
    const auto analysis = data.prepare();
    const mnd_test::ProjectLog log;
    mnd::reset_draws_taken();
    EXPECT_EQ(analysis->AMOVA_G_P_H(), 0);
    EXPECT_TRUE(log.reports("WARNING", "Amova::AMOVA_G_P_H()", "missing file (Var C null distribution)"));
    EXPECT_EQ(mnd::draws_taken(), 56U * 10);  // those of the first test alone
}

TEST_F(KeptNullDistributions, AreNotWrittenUnlessAskedFor) {
    const mnd_test::TempFolder folder;
    AmovaData data({{{0, 1, 2}, {1, 2, 2}, {3, 3, 2, 1}}}, 4, distance);
    data.s.NumPermutationsAMOVA = 50;
    data.s.result_file_name = (folder / "result.htm").string().c_str();
    data.analyse();
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

}  // namespace
