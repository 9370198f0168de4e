#include "model/popul_rflp.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "run/settings.h"
#include "support/project_log.h"
#include "support/sample_texts.h"

namespace {

using mnd::PopulRFLP;

class PopulRFLPSites : public ::testing::Test {
protected:
    PopulRFLP& compare(const std::string& lines, double del_weight = 1.0) {
        db_.reset();
        mnd::Population data("s", 0, mnd_test::haplotypic(mnd::RFLP, 0));
        EXPECT_EQ(mnd_test::read_lines(data, db_, lines), 1);
        sample_ = std::make_unique<PopulRFLP>(data);
        sample_->del_weight = del_weight;
        mnd::settings s;
        s.AllowedLevelOfMissingData = 0.25;
        EXPECT_EQ(sample_->evaluate_polymorphism(s), 1);
        return *sample_;
    }

    mnd::Haplo_DB db_;
    std::unique_ptr<PopulRFLP> sample_;
};

TEST_F(PopulRFLPSites, SubstitutionsAndDeletionsAreCounted) {
    const PopulRFLP& s = compare("a 1 010?-0\nb 1 0010-0\nc 2 01-0-?\n");
    EXPECT_STREQ(s.ref_hapl.content.c_str(), "0100-0");
    EXPECT_EQ(s.subst_site, (std::vector<int>{0, 1, 1, 0, 0, 0}));
    EXPECT_EQ(s.del_site, (std::vector<int>{0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(s.nb_subst, 2);
    EXPECT_EQ(s.nb_del, 1);
    EXPECT_EQ(s.nb_polym_loci, 2);
    // Site 4 is a gap everywhere, site 5 misses half of the copies.
    EXPECT_EQ(s.usable_site, (std::vector<int>{1, 1, 1, 1, 0, 0}));
    EXPECT_EQ(s.nb_usable_loci, 4);
    EXPECT_EQ(s.missing_level[5], 0.5);
    EXPECT_EQ(s.nb_observed_sites, 6);
}

TEST_F(PopulRFLPSites, DeletionsWithoutWeightAreNoPolymorphism) {
    const PopulRFLP& s = compare("a 1 0\nb 1 -\n", 0.0);
    EXPECT_EQ(s.nb_del, 0);
    EXPECT_EQ(s.nb_polym_loci, 0);
    EXPECT_EQ(s.nb_usable_loci, 1);
}

TEST_F(PopulRFLPSites, LengthsAreChecked) {
    const mnd_test::ProjectLog log;
    PopulRFLP& s = compare("a 1 01\nb 1 00\n");
    s.hapl_list.data[1]->def->content = "0";
    EXPECT_EQ(s.check_data(), 0);
    EXPECT_TRUE(log.reports("WARNING", "PopulRFLP::check_data()", "RFLP haplotypes have different length"));
}

TEST_F(PopulRFLPSites, NoHaplotypesNoComparison) {
    PopulRFLP s("s", 0, mnd_test::haplotypic(mnd::RFLP, 0));
    EXPECT_EQ(s.check_data(), 1);
    EXPECT_EQ(s.compare_RFLP_haplotypes(), 0);
}

}  // namespace
