#include "model/allele_db.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <iomanip>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "support/seeded_stream.h"

namespace {

using mnd::my_string;
using mnd::TAllele;
using mnd::TAlleleDB;
using mnd::TLocus;

TEST(TAllele, DefaultIsUndefined) {
    const TAllele allele;
    EXPECT_STREQ(allele.c_str(), "UNDEF");
    EXPECT_EQ(allele.freq, 0.0);
    EXPECT_EQ(allele.selected, 1);
    EXPECT_TRUE(allele.pop_freqs.empty());
    EXPECT_TRUE(allele.group_freqs.empty());
}

TEST(TAllele, PrintsItsName) {
    std::ostringstream out;
    out << TAllele("A12");
    EXPECT_EQ(out.str(), "A12");
}

TEST(TAllele, AssignmentLeavesHaplotypePositionAndAccumulator) {
    TAllele from("x");
    from.freq = 0.5;
    from.selected = 0;
    from.locus = 3;
    from.exp_freq = 0.25;
    from.hapl_pos = 8;
    from.exp_freq_acc = 9.0;
    from.pop_freqs = {1.0, 2.0};
    from.inbreeding_freqs = {0.5, 0.75};
    TAllele to("y");
    to.hapl_pos = 1;
    to.exp_freq_acc = 2.0;
    to.group_freqs = {7.0};
    to = from;
    EXPECT_STREQ(to.c_str(), "x");
    EXPECT_EQ(to.freq, 0.5);
    EXPECT_EQ(to.selected, 0);
    EXPECT_EQ(to.locus, 3);
    EXPECT_EQ(to.exp_freq, 0.25);
    EXPECT_EQ(to.hapl_pos, 1);
    EXPECT_EQ(to.exp_freq_acc, 2.0);
    EXPECT_EQ(to.pop_freqs, (std::vector<double>{1.0, 2.0}));
    EXPECT_EQ(to.inbreeding_freqs, (std::array<double, 2>{0.5, 0.75}));
    EXPECT_TRUE(to.group_freqs.empty());
}

TEST(TAllele, IsCharTellsAOneCharacterName) {
    EXPECT_TRUE(TAllele("?").is_char('?'));
    EXPECT_FALSE(TAllele("??").is_char('?'));
    EXPECT_FALSE(TAllele("").is_char('?'));
    EXPECT_FALSE(TAllele("a").is_char('?'));
}

TEST(TAlleleDB, InsertingTwiceSumsTheWeight) {
    TAlleleDB db;
    EXPECT_EQ(db.InsertAllPos(0, my_string("a"), 0.25), 0);
    EXPECT_EQ(db.InsertAllPos(0, my_string("b"), 1.0), 1);
    EXPECT_EQ(db.InsertAllPos(0, my_string("a"), 0.5), 0);
    ASSERT_EQ(db.count, 1);
    ASSERT_EQ(db.at_const(0)->count, 2);
    EXPECT_EQ(db(0, 0)->freq, 0.75);
    EXPECT_EQ(db(0, 1)->freq, 1.0);
}

TEST(TAlleleDB, TheFourInsertionsAgree) {
    TAlleleDB db;
    double weight = 2.0;
    EXPECT_EQ(db.InsertAllPos(0, my_string("a"), weight, 99), 0);
    EXPECT_EQ(db.insert_allele(0, "a", 1.0), db(0, 0));
    EXPECT_EQ(db.InsertAllPos(my_string("Locus 0"), my_string("a"), 4.0), 0);
    EXPECT_EQ(db(0, 0)->freq, 7.0);
    EXPECT_EQ(weight, 2.0);
}

TEST(TAlleleDB, AGapInTheLociGivesOneLocusWithTheNumberAskedFor) {
    TAlleleDB db;
    EXPECT_EQ(db.InsertAllPos(5, my_string("a"), 1.0), 0);
    ASSERT_EQ(db.count, 1);
    EXPECT_STREQ(db.at_const(0)->name.c_str(), "Locus 5");
    EXPECT_EQ(db(0, 0)->locus, 5);
    // The next insertion at 5 is again beyond the end: it appends another locus.
    db.InsertAllPos(5, my_string("a"), 1.0);
    EXPECT_EQ(db.count, 2);
}

TEST(TAlleleDB, ANegativeLocusInsertsNothing) {
    TAlleleDB db;
    EXPECT_EQ(db.InsertAllPos(-1, my_string("a"), 1.0), -1);
    EXPECT_EQ(db.insert_allele(-1, "a", 1.0), nullptr);
    EXPECT_EQ(db.count, 0);
}

TEST(TAlleleDB, AnUnknownLocusNameAppendsALocus) {
    TAlleleDB db;
    db.InsertAllPos(my_string("first"), my_string("a"), 1.0);
    EXPECT_EQ(db.InsertAllPos(my_string("second"), my_string("b"), 0.5), 0);
    ASSERT_EQ(db.count, 2);
    EXPECT_EQ(db(my_string("second"), my_string("b")), db(1, 0));
    EXPECT_EQ(db(1, 0)->locus, 1);
    EXPECT_EQ(db(1, 0)->freq, 0.5);
}

TEST(TAlleleDB, CaseTellsAllelesApart) {
    TAlleleDB db;
    EXPECT_EQ(db.InsertAllPos(0, my_string("a"), 1.0), 0);
    EXPECT_EQ(db.InsertAllPos(0, my_string("A"), 1.0), 1);
}

TEST(TAlleleDB, LookupsGiveNullForWhatIsNotThere) {
    TAlleleDB db;
    db.InsertAllPos(my_string("L"), my_string("a"), 1.0);
    EXPECT_NE(db(0, 0), nullptr);
    EXPECT_EQ(db(0, 1), nullptr);
    EXPECT_EQ(db(1, 0), nullptr);
    EXPECT_EQ(db(-1, 0), nullptr);
    EXPECT_EQ(db(0, -1), nullptr);
    EXPECT_EQ(db(0, my_string("b")), nullptr);
    EXPECT_EQ(db(3, my_string("a")), nullptr);
    EXPECT_EQ(db(0, my_string("a")), db(0, 0));
    EXPECT_EQ(db(my_string("L"), 0), db(0, 0));
    EXPECT_EQ(db(my_string("L"), 1), nullptr);
    EXPECT_EQ(db(my_string("l"), 0), nullptr);
    EXPECT_EQ(db(my_string("l"), my_string("a")), nullptr);
    EXPECT_EQ(db.count, 1);
    EXPECT_STREQ(db.not_found.c_str(), "Allele not found");
    EXPECT_EQ(db.not_found.freq, 0.0);
}

TEST(TAlleleDB, ManyAllelesAreFoundAsByAScan) {
    std::mt19937 random(3);
    TAlleleDB db;
    std::vector<std::string> names;  // the plain list: position of the first equal name
    for (int i = 0; i < 3000; ++i) {
        const std::string name = std::to_string(random() % 400);
        std::size_t expected = 0;
        while (expected < names.size() && names[expected] != name)
            ++expected;
        if (expected == names.size()) names.push_back(name);
        ASSERT_EQ(db.InsertAllPos(0, my_string(name.c_str()), 1.0), static_cast<int>(expected));
    }
    EXPECT_EQ(db(0, my_string("400")), nullptr);
    double total = 0.0;
    for (const TAllele* allele : *db.at_const(0))
        total += allele->freq;
    EXPECT_EQ(total, 3000.0);
}

TEST(TLocus, FindsAllelesAfterTheyWereRenamed) {
    TLocus locus("L");
    for (int i = 0; i < 40; ++i)
        locus.insert(std::to_string(i), 1.0, 0);
    EXPECT_EQ(locus.find_index("20"), 20);
    std::swap(locus.data[20], locus.data[30]);
    EXPECT_EQ(locus.find_index("20"), 30);
    EXPECT_EQ(locus.find_index("30"), 20);
    locus.Flush();
    EXPECT_EQ(locus.find_index("20"), -1);
}

TEST(TLocus, AlleleIndexIsByAddress) {
    TLocus locus("L");
    locus.insert("a", 1.0, 0);
    locus.insert("b", 1.0, 0);
    TAllele stranger("b");
    EXPECT_EQ(locus.get_allele_index(locus.data[1]), 1);
    EXPECT_EQ(locus.get_allele_index(&stranger), -1);
    EXPECT_EQ(locus.find_allele_by_name(my_string("b")), locus.data[1]);
    EXPECT_EQ(locus.find_allele_by_name(my_string("c")), nullptr);
}

TEST(TLocus, IsPolymorphCountsTheBlank) {
    TLocus locus("L");
    EXPECT_FALSE(locus.is_polymorph('?'));
    locus.insert("null", 0.0, 0);
    locus.insert("a", 1.0, 0);
    EXPECT_FALSE(locus.is_polymorph('?'));  // two alleles: the blank and one
    EXPECT_FALSE(locus.is_polymorph('a'));
    locus.insert("b", 1.0, 0);
    EXPECT_TRUE(locus.is_polymorph('?'));
    EXPECT_FALSE(locus.is_polymorph('b'));  // one of three is the missing mark
    locus.insert("?", 1.0, 0);
    EXPECT_TRUE(locus.is_polymorph('?'));  // four and more always vary
}

TEST(TAlleleDB, CopiesAreDeep) {
    TAlleleDB db;
    db.InsertAllPos(0, my_string("a"), 1.0);
    db.at_const(0)->amova_values[11] = 3.5;
    db.blanks_done = 1;
    TAlleleDB copy(db);
    TAlleleDB assigned(500);
    assigned.InsertAllPos(0, my_string("z"), 1.0);
    assigned = db;
    for (TAlleleDB* other : {&copy, &assigned}) {
        ASSERT_EQ(other->count, 1);
        EXPECT_NE((*other)(0, 0), db(0, 0));
        EXPECT_STREQ((*other)(0, 0)->c_str(), "a");
        EXPECT_EQ(other->at_const(0)->amova_values[11], 3.5);
        EXPECT_STREQ(other->at_const(0)->name.c_str(), "Locus 0");
        EXPECT_EQ(other->blanks_done, 1);
    }
    db.destroy();
    EXPECT_EQ(copy(0, 0)->freq, 1.0);
}

TEST(TLocus, AssignmentIsDeepAndTakesTheResults) {
    TLocus from("L"), to("M");
    from.insert("a", 1.0, 0);
    for (std::size_t i = 0; i < from.amova_values.size(); ++i)
        from.amova_values[i] = static_cast<double>(i) + 1.0;
    to.insert("z", 1.0, 0);
    to = from;
    EXPECT_STREQ(to.name.c_str(), "L");
    EXPECT_EQ(to.amova_values, from.amova_values);
    ASSERT_EQ(to.count, 1);
    EXPECT_NE(to.data[0], from.data[0]);
    EXPECT_EQ(to.find_index("a"), 0);
    EXPECT_EQ(to.find_index("z"), -1);
}

TEST(TAlleleDB, SizedConstructorMakesRoomForOneMore) {
    EXPECT_EQ(TAlleleDB(7).capacity, 8);
    EXPECT_EQ(TAlleleDB().capacity, 11);
}

TEST(TAlleleDB, DestroyEmptiesAndMayBeRepeated) {
    TAlleleDB db;
    db.InsertAllPos(0, my_string("a"), 1.0);
    db.blanks_done = 1;
    db.destroy();
    db.destroy();
    EXPECT_EQ(db.count, 0);
    EXPECT_EQ(db.blanks_done, 0);
    EXPECT_EQ(db.InsertAllPos(0, my_string("b"), 1.0), 0);
}

TEST(TAlleleDB, FrequencyVectorsHaveOneSlotPerSampleAndGroup) {
    TAlleleDB db;
    db.InsertAllPos(0, my_string("a"), 1.0);
    db.InsertAllPos(1, my_string("b"), 1.0);
    db.create_pop_freq_vector(3);
    db(1, 0)->pop_freqs[2] = 5.0;
    db.create_pop_freq_vector(4);
    db.create_group_freq_vector(2);
    EXPECT_EQ(TAllele::numPop, 4);
    EXPECT_EQ(TAllele::numGroup, 2);
    EXPECT_EQ(db(1, 0)->pop_freqs, std::vector<double>(4, 0.0));
    EXPECT_EQ(db(0, 0)->group_freqs, std::vector<double>(2, 0.0));
    db.reset_all_pop_freqs();
    EXPECT_TRUE(db(1, 0)->pop_freqs.empty());
    db.flush_group_freq_vector();
    db.flush_pop_freq_vector();
    EXPECT_TRUE(db(0, 0)->group_freqs.empty());
}

TEST(TAlleleDB, ResetExpFreqZeroesBothFields) {
    TAlleleDB db;
    db.InsertAllPos(0, my_string("a"), 1.0);
    db(0, 0)->exp_freq = 0.5;
    db(0, 0)->exp_freq_acc = 0.5;
    db.reset_exp_freq();
    EXPECT_EQ(db(0, 0)->exp_freq, 0.0);
    EXPECT_EQ(db(0, 0)->exp_freq_acc, 0.0);
    EXPECT_EQ(db(0, 0)->freq, 1.0);
}

class TAlleleDBRandom : public mnd_test::SeededStream {};

TEST_F(TAlleleDBRandom, RandomStartTakesOneDrawPerAlleleAndSumsToOne) {
    TAlleleDB db;
    for (const char* name : {"a", "b", "c"})
        db.InsertAllPos(0, my_string(name), 1.0);
    for (const char* name : {"d", "e"})
        db.InsertAllPos(1, my_string(name), 1.0);
    double u[6];
    for (double& draw : u)
        draw = next();
    seed();
    db.assign_rand_exp_freq();
    EXPECT_EQ(next(), u[5]);
    const double first = u[0] + u[1] + u[2];
    EXPECT_EQ(db(0, 0)->exp_freq, u[0] / first);
    EXPECT_EQ(db(0, 2)->exp_freq, u[2] / first);
    EXPECT_EQ(db(1, 1)->exp_freq, u[4] / (u[3] + u[4]));
    EXPECT_NEAR(db(0, 0)->exp_freq + db(0, 1)->exp_freq + db(0, 2)->exp_freq, 1.0, 1e-15);
}

TEST(TAlleleDB, InbreedingStepWithoutInbreedingChangesNothing) {
    TAlleleDB db;
    db.InsertAllPos(0, my_string("a"), 1.0);
    db(0, 0)->exp_freq = 0.25;
    EXPECT_EQ(db.update_all_freq_with_inbreeding(0.0), -1.0);
    EXPECT_EQ(db.update_all_freq_with_inbreeding(-0.5), -1.0);
    EXPECT_EQ(db(0, 0)->exp_freq, 0.25);
}

TEST(TAlleleDB, InbreedingStepDividesWhatIsLeftByF) {
    TAlleleDB db;
    for (const char* name : {"a", "b"})
        db.InsertAllPos(0, my_string(name), 1.0);
    db(0, 0)->inbreeding_freqs = {0.75, 1.0};
    db(0, 0)->exp_freq_acc = 0.25;
    db(0, 1)->inbreeding_freqs = {0.5, 0.25};
    db(0, 1)->exp_freq_acc = 0.125;
    // new: (0.75 - 0.25) / 0.5 = 1, change 0; (0.5 - 0.125) / 0.5 = 0.75, change 0.5
    EXPECT_EQ(db.update_all_freq_with_inbreeding(0.5), 0.5);
    EXPECT_EQ(db(0, 0)->exp_freq, 1.0);
    EXPECT_EQ(db(0, 1)->exp_freq, 0.75);
    EXPECT_EQ(db(0, 1)->inbreeding_freqs[1], 0.75);
    EXPECT_EQ(db(0, 1)->exp_freq_acc, 0.0);
}

TEST(TAlleleDB, TableHasOneColumnPerLocus) {
    TAlleleDB db;
    db.InsertAllPos(0, my_string("null"), 0.0);
    db.InsertAllPos(0, my_string("a"), 0.999);
    db.InsertAllPos(0, my_string("b"), 1.0);
    db.InsertAllPos(1, my_string("T"), 0.29);
    std::ostringstream out;
    out << std::left << std::fixed << db << 0.5;
    EXPECT_EQ(out.str(),
              " null   0%| T  28%|\n"  // 100 * 0.29 is just below 29: the integer part is taken
              "    a  99%|       |\n"
              "    b 100%|       |\n"
              "0.500000");
    EXPECT_EQ(db.at_const(0)->print_width, 5);
    EXPECT_EQ(db.at_const(1)->print_width, 2);
}

}  // namespace
