// Merging of identical haplotypes and the report of shared ones.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "input/dist_mat.h"
#include "model/samples.h"
#include "support/project_log.h"
#include "support/sample_texts.h"

namespace {

using mnd::DistMat;
using mnd::Population;
using mnd::Samples;

class SharedHaplotypes : public ::testing::Test {
protected:
    // Definitions h0 to h3 at the rows 0 to 3; h0, h2 and h3 of one class, but h2 and h3 at a
    // distance of each other.
    SharedHaplotypes() : distances_(4) {
        distances_.initializeMatrixAndArrays(4);
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < i; ++j)
                distances_(i, j) = 1.0;
        }
        distances_(2, 0) = distances_(3, 0) = 0.0;
    }
    void add(const char* name, const std::string& lines) {
        auto sample = std::make_unique<Population>(name, 0, mnd_test::haplotypic(mnd::STANDARD, ' '));
        ASSERT_EQ(mnd_test::read_lines(*sample, db_, lines), 1);
        samples_.populations.Add(sample.release());
        for (long i = 0; i < db_.list.count; ++i)
            db_.list.data[i]->id = static_cast<int>(i);
    }
    const Population& sample(long i) const { return *samples_.populations.data[i]; }

    const std::vector<int> class_of_{0, 1, 0, 0};
    DistMat distances_;
    mnd::Haplo_DB db_;
    Samples samples_;
};

TEST_F(SharedHaplotypes, EntriesOfAClassAtDistanceZeroAreMerged) {
    add("x", "h0 1 A\nh1 2 B\nh2 3 C\nh3 4 D\n");
    samples_.IdentifyIdenticalHaplotypes(class_of_, distances_);
    ASSERT_EQ(sample(0).hapl_list.count, 2);
    EXPECT_EQ(sample(0).hapl_list.data[0]->freq, 8);
    EXPECT_EQ(sample(0).hapl_list.data[1]->freq, 2);
    EXPECT_EQ(db_.list.data[0]->count, 8);
    EXPECT_EQ(db_.list.data[3]->count, 0);
    EXPECT_EQ(sample(0).nb_hapl, 2);
    EXPECT_EQ(sample(0).nb_orig_hapl, 4);
}

TEST_F(SharedHaplotypes, TheSameClassAtADistanceIsNotMerged) {
    add("x", "h0 0 A\nh1 0 B\nh2 3 C\nh3 4 D\n");
    samples_.IdentifyIdenticalHaplotypes(class_of_, distances_);
    EXPECT_EQ(sample(0).hapl_list.count, 2);
}

TEST_F(SharedHaplotypes, DefinitionsWithoutARowStay) {
    add("x", "h0 1 A\nh1 1 B\nh2 1 C\n");
    for (mnd::HaploDef* definition : db_.list)
        definition->id = -1;
    samples_.IdentifyIdenticalHaplotypes(class_of_, distances_);
    EXPECT_EQ(sample(0).hapl_list.count, 3);
}

TEST_F(SharedHaplotypes, TwoEntriesOfOneDefinitionKeepItsCount) {
    add("x", "h0 1 A\nh1 2 B\n");
    mnd::HaploDef* h1 = db_.list.data[1];
    samples_.populations.data[0]->hapl_list.Add(new mnd::PHaploDef(h1, 5));
    h1->count = 7;
    samples_.IdentifyIdenticalHaplotypes(class_of_, distances_);
    ASSERT_EQ(sample(0).hapl_list.count, 2);
    EXPECT_EQ(sample(0).hapl_list.data[1]->freq, 7);
    EXPECT_EQ(h1->count, 7);
}

TEST_F(SharedHaplotypes, TheReportShowsWhatTwoSamplesShare) {
    add("x", "h0 1 A\nh1 2 B\nh2 3 C\n");
    add("y<", "h3 7 D\n");
    std::ostringstream out;
    sample(0).print_out_redondant(out, sample(1), class_of_);
    EXPECT_EQ(out.str(),
              "\nHaplotypes shared with y&lt; :\n"
              "\th0                         1    h3                         7\n"
              "\th2                         3    h3                         7\n");
    std::ostringstream none;
    add("z", "h1 1\n");
    sample(1).print_out_redondant(none, sample(2), class_of_);
    EXPECT_EQ(none.str(), "\nHaplotypes shared with z :\n\tnone\n");
}

TEST_F(SharedHaplotypes, ClassesAreListedWithTheirCopies) {
    add("x", "h0 1 A\nh1 2 B\nh2 3 C\nh3 0 D\n");
    add("y", "h3 7\n");
    std::ostringstream out;
    samples_.print_out_haplo_cl(out, db_, class_of_);
    EXPECT_EQ(out.str(),
              "\nClasses of identical haplotypes, with their copies in each sample :\n\n"
              "h0                         4       7    = h2, h3\n"
              "h1                         2       0\n");
}

}  // namespace
