#include "model/haplotypes.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "run/errors.h"
#include "run/settings.h"

namespace {

using mnd::Haplo_DB;
using mnd::HaploDef;
using mnd::my_string;
using mnd::TAllele;
using mnd::TAlleleDB;

HaploDef* definition(const char* name, const char* content) {
    auto* def = new HaploDef(name);
    def->content = content;
    return def;
}

TEST(HaploDef, DefaultIsEmpty) {
    const HaploDef def;
    EXPECT_EQ(def.id, -1);
    EXPECT_EQ(def.count, 0);
    EXPECT_EQ(def.num_alleles(), 0);
    EXPECT_EQ(def.capacity, 11);
    EXPECT_TRUE(def.name.is_null());
    EXPECT_TRUE(def.content.is_null());
}

TEST(HaploDef, VectorHoldsOneAllelePerCharacterWithoutSeparator) {
    TAlleleDB db;
    HaploDef def("h");
    def.content = "ACGA";
    def.build_haplovect(&db, '\0', 0, 0.5);
    ASSERT_EQ(db.count, 4);
    ASSERT_EQ(def.num_alleles(), 4);
    EXPECT_STREQ(def.at_const(1)->c_str(), "C");
    EXPECT_EQ(def.at_const(1), db(1, 0));
    EXPECT_EQ(def.at_const(3)->locus, 3);
    EXPECT_NE(def.at_const(0), def.at_const(3));  // "A" of two loci are two alleles
    EXPECT_EQ(def.at_const(0)->freq, 0.5);
}

TEST(HaploDef, BuildingTwiceDoublesTheWeightOnly) {
    TAlleleDB db;
    HaploDef def("h");
    def.content = "12 7 12";
    for (int pass = 0; pass < 2; ++pass)
        def.build_haplovect(&db, ' ', 0, 0.25);
    EXPECT_EQ(def.num_alleles(), 3);
    ASSERT_EQ(db.count, 3);
    EXPECT_EQ(db(0, 0)->freq, 0.5);
    EXPECT_EQ(db.at_const(2)->count, 1);
}

TEST(HaploDef, DoubledSeparatorsDoNotShiftTheLoci) {
    TAlleleDB db;
    HaploDef def("h");
    def.content = ",,12,,7,";
    def.build_haplovect(&db, ',', 0, 1.0);
    ASSERT_EQ(def.num_alleles(), 2);
    EXPECT_EQ(def.at_const(0), db(0, my_string("12")));
    EXPECT_EQ(def.at_const(1), db(1, my_string("7")));
}

TEST(HaploDef, SameAllelicContentIsByAddressAndLooksAtItsOwnLoci) {
    TAlleleDB db;
    HaploDef ac("1"), ac2("2"), acg("3"), at("4");
    ac.content = ac2.content = "AC";
    acg.content = "ACG";
    at.content = "AT";
    for (HaploDef* def : {&ac, &ac2, &acg, &at})
        def->build_haplovect(&db, '\0', 0, 0.1);
    EXPECT_TRUE(ac.hasSameAllelicContent(ac2));
    EXPECT_TRUE(ac.hasSameAllelicContent(acg));
    EXPECT_FALSE(acg.hasSameAllelicContent(ac));
    EXPECT_FALSE(ac.hasSameAllelicContent(at));
}

TEST(HaploDef, AllMissingNeedsALocus) {
    TAlleleDB db;
    HaploDef none("1"), all("2"), some("3");
    all.content = "??";
    some.content = "?A";
    for (HaploDef* def : {&none, &all, &some})
        def->build_haplovect(&db, '\0', 0, 0.1);
    EXPECT_FALSE(none.is_all_missing('?'));
    EXPECT_TRUE(all.is_all_missing('?'));
    EXPECT_FALSE(some.is_all_missing('?'));
}

TEST(HaploDef, CopiesShareTheAlleles) {
    TAlleleDB db;
    HaploDef def("h");
    def.content = "AC";
    def.id = 4;
    def.count = 9;
    def.build_haplovect(&db, '\0', 0, 0.1);
    HaploDef assigned("other");
    assigned = def;
    const HaploDef copy(def);
    for (const HaploDef* other : {static_cast<const HaploDef*>(&assigned), &copy}) {
        EXPECT_STREQ(other->name.c_str(), "h");
        EXPECT_STREQ(other->content.c_str(), "AC");
        EXPECT_EQ(other->id, 4);
        EXPECT_EQ(other->count, 9);
        ASSERT_EQ(other->num_alleles(), 2);
        EXPECT_EQ(other->at_const(1), db(1, 0));
    }
}

TEST(HaploDef, PrintsNameAndContent) {
    HaploDef def("h1");
    std::ostringstream out;
    out << def << '|';
    def.content = "AC GT";
    out << def;
    EXPECT_EQ(out.str(), " h1|h1\tAC GT");
}

TEST(HaploDB, DefaultsAndReset) {
    Haplo_DB db;
    EXPECT_STREQ(db.name.c_str(), "no_name");
    EXPECT_EQ(db.list.capacity, 10);
    db.name = "mine";
    db.append(definition("a", "AC"));
    db.reset();
    db.reset();
    EXPECT_STREQ(db.name.c_str(), "no_name");
    EXPECT_EQ(db.list.count, 0);
    EXPECT_EQ(db.find("AC"), nullptr);
    EXPECT_EQ(db.find_by_name("a"), nullptr);
}

TEST(HaploDB, FindsTheFirstByContentAndByName) {
    Haplo_DB db;
    HaploDef* first = db.append(definition("x", "AC"));
    db.append(definition("y", "AC"));
    db.append(definition("x", "GT"));
    EXPECT_EQ(db.find("AC"), first);
    EXPECT_EQ(db.find("ac"), nullptr);
    EXPECT_EQ(db.find_by_name("x"), first);
    EXPECT_EQ(db.find_by_name("y"), db.list.at_const(1));
    EXPECT_EQ(db.find("x"), nullptr);  // by content, not by name
}

TEST(HaploDB, FindsADefinitionWhoseContentCameLater) {
    Haplo_DB db;
    HaploDef* def = db.append(definition("x", ""));
    EXPECT_EQ(db.find("AC"), nullptr);
    def->content = "AC";
    db.content_changed();
    EXPECT_EQ(db.find("AC"), def);
    EXPECT_EQ(db.find(""), nullptr);
}

TEST(HaploDB, SearchesAgreeWithAScan) {
    std::mt19937 random(11);
    Haplo_DB db;
    std::vector<std::string> names, contents;
    for (int i = 0; i < 600; ++i) {
        const std::string name = "n" + std::to_string(random() % 300);
        const std::string content = std::to_string(random() % 300);
        names.push_back(name);
        contents.push_back(content);
        db.append(definition(name.c_str(), content.c_str()));
        const std::string wanted = std::to_string(random() % 330);
        long by_content = -1, by_name = -1;
        for (long k = i; k >= 0; --k) {
            if (contents[static_cast<std::size_t>(k)] == wanted) by_content = k;
            if (names[static_cast<std::size_t>(k)] == "n" + wanted) by_name = k;
        }
        ASSERT_EQ(db.find(wanted.c_str()), by_content < 0 ? nullptr : db.list.at_const(by_content));
        ASSERT_EQ(db.find_by_name(("n" + wanted).c_str()), by_name < 0 ? nullptr : db.list.at_const(by_name));
    }
}

TEST(HaploDB, CopyIsDeepAndSearchesItself) {
    Haplo_DB db;
    db.name = "mine";
    db.MissingData = 'N';
    db.append(definition("x", "AC"));
    Haplo_DB copy;
    copy.append(definition("z", "TT"));
    EXPECT_NE(copy.find("TT"), nullptr);
    copy = db;
    EXPECT_STREQ(copy.name.c_str(), "mine");
    EXPECT_EQ(copy.MissingData, 'N');
    ASSERT_NE(copy.find("AC"), nullptr);
    EXPECT_NE(copy.find("AC"), db.find("AC"));
    EXPECT_EQ(copy.find("TT"), nullptr);
    const Haplo_DB constructed(db);
    EXPECT_NE(constructed.find_by_name("x"), nullptr);
}

TEST(HaploDB, RmSeparatorsTakesTheLengthOfTheFirst) {
    Haplo_DB db;
    HaploDef* first = db.append(definition("1", "A C G"));
    HaploDef* longer = db.append(definition("2", "T T TGG"));
    HaploDef* shorter = db.append(definition("3", "A A"));
    EXPECT_EQ(db.find("A C G"), first);
    db.rm_separators(' ');
    EXPECT_STREQ(first->content.c_str(), "ACG");
    EXPECT_STREQ(longer->content.c_str(), "TTT");
    EXPECT_STREQ(shorter->content.c_str(), "AA");
    EXPECT_EQ(db.find("ACG"), first);
    EXPECT_EQ(db.find("A C G"), nullptr);
}

TEST(HaploDB, RmSeparatorsOfNothingDoesNothing) {
    Haplo_DB db;
    db.rm_separators(' ');
    EXPECT_EQ(db.list.count, 0);
}

class HaploDBPaths : public ::testing::Test {
protected:
    void SetUp() override { mnd::_AOS_ = &log; }
    void TearDown() override { mnd::_AOS_ = &mnd::null_stream(); }
    std::string ext_name(const char* file) {
        char out[400];
        db.build_ext_name(out, file);
        return out;
    }
    Haplo_DB db;
    std::ostringstream log;
};

TEST_F(HaploDBPaths, APlainNameGoesBehindTheProjectDirectory) {
    mnd::settings s;
    s.project_directory = "some/where/";
    db.the_settings = &s;
    EXPECT_EQ(ext_name("list.txt"), "some/where/list.txt");
    EXPECT_EQ(ext_name("sub/list.txt"), "sub/list.txt");
    EXPECT_EQ(ext_name("sub\\list.txt"), "sub\\list.txt");
    EXPECT_EQ(log.str(), "");
}

TEST_F(HaploDBPaths, WithoutSettingsTheNameStays) {
    EXPECT_EQ(ext_name("list.txt"), "list.txt");
    EXPECT_EQ(log.str(), "Pointer to project dir is not initialized. ERROR");
}

TEST_F(HaploDBPaths, ALongPathIsCutToTheBuffer) {
    EXPECT_EQ(ext_name((std::string(1000, 'p') + "/x").c_str()), std::string(399, 'p'));
}

}  // namespace
