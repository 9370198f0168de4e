#include "model/phenotypes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <new>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/captured_reports.h"
#include "support/lettered_phenotypes.h"
#include "support/seeded_stream.h"

namespace {

using mnd::my_string;
using mnd::TAllele;
using mnd::TAlleleDB;
using mnd::TGenotype;
using mnd::TPhenDB;
using mnd::TPhenotype;
using mnd::TPopHaploDB;
using mnd::TPopHaplotype;
using mnd_test::CapturedReports;
using mnd_test::Letters;
using mnd_test::letters_of;
using mnd_test::Report;

constexpr double kLowest = -3.4028234663852886e+38;

// The resolutions as texts, without regard to order.
std::multiset<std::multiset<std::string>> resolutions(const TPhenotype& p) {
    std::multiset<std::multiset<std::string>> all;
    for (const TGenotype* g : p.genotypes)
        all.insert({letters_of(*g->hapl_1), letters_of(*g->hapl_2)});
    return all;
}

// ---- TPhenotype: data

TEST(TPhenotype, Defaults) {
    const TPhenotype p("ind7", 3.0);
    EXPECT_STREQ(p.c_str(), "ind7");
    EXPECT_EQ(p.freq, 3.0);
    EXPECT_EQ(p.phen_prob, 0.0);
    EXPECT_EQ(p.nb_genotypes, 0);
    EXPECT_EQ(p.pseudo_hapl[0], nullptr);
    EXPECT_EQ(p.num_loci(), 0);
    EXPECT_EQ(p.genotypes.capacity, 16);
    EXPECT_EQ(p.redundant + p.nb_het_loci + p.fully_homozygous, 0);
}

TEST(TPhenotype, FromTwoHaplotypesIsOneIndividual) {
    Letters letters;
    const TPhenotype source = letters.individual("AC", "GT");
    const TPhenotype p(source.pseudo_hapl[0].get(), nullptr, 12);
    EXPECT_STREQ(p.c_str(), "12");
    EXPECT_EQ(p.freq, 1.0);
    ASSERT_NE(p.pseudo_hapl[0], nullptr);
    EXPECT_NE(p.pseudo_hapl[0], source.pseudo_hapl[0]);
    EXPECT_EQ(letters_of(*p.pseudo_hapl[0]), "AC");
    EXPECT_EQ(p.pseudo_hapl[1], nullptr);
}

TEST(TPhenotype, ReadsAStringWithoutSeparator) {
    TAlleleDB db;
    TPhenotype p("id", 1.0);
    p.real_freq = 0.5;
    p.text[1] = "AC";
    p.read_pseudo_hapl(1, db, '\0');
    EXPECT_EQ(p.pseudo_hapl[0], nullptr);
    ASSERT_EQ(p.pseudo_hapl[1]->num_loci(), 2);
    EXPECT_EQ(p.pseudo_hapl[1]->allele(1), db(1, my_string("C")));
    EXPECT_EQ(db(1, 0)->freq, 0.25);  // half of the relative frequency
    EXPECT_EQ(p.pseudo_hapl[1]->separator, 0);
}

TEST(TPhenotype, EmptyTokensDoNotShiftTheLoci) {
    TAlleleDB db;
    TPhenotype p("id", 1.0);
    p.text[0] = " 120  7 ";  // texts as read begin with a separator
    p.read_pseudo_hapl(0, db, ' ');
    ASSERT_EQ(p.pseudo_hapl[0]->num_loci(), 2);
    EXPECT_EQ(p.pseudo_hapl[0]->allele(0), db(0, my_string("120")));
    EXPECT_EQ(p.pseudo_hapl[0]->allele(1), db(1, my_string("7")));
    p.read_pseudo_hapl(2, db, ' ');
    EXPECT_EQ(p.pseudo_hapl[1], nullptr);
}

TEST(TPhenotype, SetPseudoHaplIgnoresOtherSlots) {
    Letters letters;
    const TPhenotype source = letters.individual("AC", "GT");
    TPhenotype p("id", 1.0);
    p.set_pseudo_hapl(*source.pseudo_hapl[0], 2);
    p.set_pseudo_hapl(*source.pseudo_hapl[0], -1);
    EXPECT_EQ(p.pseudo_hapl[0], nullptr);
    p.set_pseudo_hapl(*source.pseudo_hapl[0], 1);
    p.set_pseudo_hapl(*source.pseudo_hapl[1], 1);
    EXPECT_EQ(letters_of(*p.pseudo_hapl[1]), "GT");
}

TEST(TPhenotype, CopiesAreDeep) {
    Letters letters;
    TPopHaploDB haplotypes;
    TPhenotype p = letters.individual("AC", "GT", 2.0);
    p.build_genotypes(haplotypes, &letters.db, 0, false);
    p.phen_prob = 0.5;
    p.redundant = 1;
    TPhenotype assigned("other", 9.0);
    assigned = p;
    const TPhenotype copy(p);
    for (const TPhenotype* other : {static_cast<const TPhenotype*>(&assigned), &copy}) {
        EXPECT_STREQ(other->c_str(), "id");
        EXPECT_EQ(other->freq, 2.0);
        EXPECT_EQ(other->real_freq, 2.0);
        EXPECT_EQ(other->phen_prob, 0.5);
        EXPECT_EQ(other->nb_genotypes, 2);
        EXPECT_EQ(other->redundant, 1);
        EXPECT_EQ(other->nb_het_loci, 2);
        EXPECT_STREQ(other->text[1].c_str(), "GT");
        EXPECT_EQ(letters_of(*other), "AC/GT");
        EXPECT_NE(other->pseudo_hapl[0], p.pseudo_hapl[0]);
        ASSERT_EQ(other->genotypes.count, 2);
        EXPECT_NE(other->genotypes.at_const(0), p.genotypes.at_const(0));
        EXPECT_EQ(other->genotypes.at_const(0)->hapl_1, p.genotypes.at_const(0)->hapl_1);
    }
}

TEST(TPhenotype, DeleteEmptiesIt) {
    Letters letters;
    TPopHaploDB haplotypes;
    TPhenotype p = letters.individual("AC", "GT");
    p.build_genotypes(haplotypes, &letters.db, 0, false);
    p.delete_pheno();
    p.delete_pheno();
    EXPECT_TRUE(p.is_null());
    EXPECT_TRUE(p.text[0].is_null());
    EXPECT_EQ(letters_of(p), "/");
    EXPECT_EQ(p.genotypes.count, 0);
    EXPECT_EQ(p.nb_genotypes, 0);
}

TEST(TPhenotype, EqualWhenTheStringsAreExchangedAtOneLocus) {
    Letters letters;
    const TPhenotype p = letters.individual("AC", "GT");
    EXPECT_TRUE(p == letters.individual("GC", "AT"));
    EXPECT_TRUE(p == letters.individual("GT", "AC"));
    EXPECT_TRUE(p != letters.individual("AC", "GC"));
    EXPECT_TRUE(p != letters.individual("ACA", "GTA"));
    EXPECT_TRUE(letters.individual("AA", "CC") != letters.individual("AA", "AC"));
}

TEST(TPhenotype, WithoutStringsTheFrequencyIsCompared) {
    Letters letters;
    const TPhenotype two("a", 2.0), also_two("b", 2.0), three("c", 3.0);
    EXPECT_TRUE(two == also_two);
    EXPECT_FALSE(two == three);
    EXPECT_TRUE(two == letters.individual("A", "C", 2.0));
}

TEST(TPhenotype, CountsHeterozygousLoci) {
    Letters letters;
    TPhenotype p = letters.individual("ACGT", "AGGA");
    p.count_hetero_loci();
    EXPECT_EQ(p.nb_het_loci, 2);
    TPhenotype none("a", 1.0);
    none.nb_het_loci = 7;
    none.count_hetero_loci();
    EXPECT_EQ(none.nb_het_loci, 0);
}

TEST(TPhenotype, AllMissingNeedsBothStringsAndALocus) {
    Letters letters;
    EXPECT_TRUE(letters.individual("??", "??").is_all_missing('?'));
    EXPECT_FALSE(letters.individual("??", "?A").is_all_missing('?'));
    EXPECT_FALSE(letters.individual("A?", "??").is_all_missing('?'));
    EXPECT_FALSE(letters.individual("", "").is_all_missing('?'));
    EXPECT_FALSE(TPhenotype("a", 1.0).is_all_missing('?'));
}

TEST(TPhenotype, BinaryIncrementCountsAndStopsAtTheLimit) {
    int bits[5] = {0, 0, 0, 0, 0};
    for (int i = 0; i < 6; ++i)
        TPhenotype::binary_inc(bits, 4);
    EXPECT_EQ(bits[0] + 2 * bits[1] + 4 * bits[2] + 8 * bits[3], 6);
    int ones[5] = {1, 1, 1, 0, 0};
    TPhenotype::binary_inc(ones, 3);
    EXPECT_EQ(ones[0] + ones[1] + ones[2], 0);
    EXPECT_EQ(ones[3], 1);
    int limited[3] = {1, 1, 1};
    TPhenotype::binary_inc(limited, 2);
    EXPECT_EQ(limited[0], 0);
    EXPECT_EQ(limited[1], 0);
    EXPECT_EQ(limited[2], 1);
}

TEST(TPhenotype, PartsKeepIdentifierAndFrequencies) {
    Letters letters;
    const TPhenotype src = letters.individual("ACGT", "TGCA", 4.0);
    TPhenotype part = letters.individual("A", "A");
    const int mask[] = {0, 1, 0, 1};
    part.build_sub_phenotype(mask, src);
    EXPECT_EQ(letters_of(part), "CT/GA");
    EXPECT_STREQ(part.c_str(), "id");
    EXPECT_EQ(part.freq, 4.0);
    EXPECT_EQ(part.real_freq, 4.0);
    const int list[] = {2, 3, 0};
    part.copy_restricted_pheno(list, src);
    EXPECT_EQ(letters_of(part), "TA/AT");
}

TEST(TPhenotype, PartsOfAPhenotypeWithoutStringsHaveNone) {
    Letters letters;
    const TPhenotype src("none", 2.0);
    const int mask[] = {1};
    const int list[] = {1, 0};
    TPhenotype part = letters.individual("A", "C");
    part.build_sub_phenotype(mask, src);
    EXPECT_EQ(part.pseudo_hapl[0], nullptr);
    TPhenotype other = letters.individual("A", "C");
    other.copy_restricted_pheno(list, src);
    EXPECT_EQ(other.pseudo_hapl[1], nullptr);
}

// ---- TPhenotype: genotypes

TEST(TPhenotype, FullHomozygoteHasOneGenotype) {
    Letters letters;
    TPopHaploDB haplotypes;
    TPhenotype p = letters.individual("AC", "AC");
    p.build_genotypes(haplotypes, &letters.db, 0, false);
    EXPECT_EQ(p.fully_homozygous, 1);
    EXPECT_EQ(p.nb_genotypes, 1);
    ASSERT_EQ(p.genotypes.count, 1);
    EXPECT_EQ(p.genotypes.at_const(0)->hapl_1, p.genotypes.at_const(0)->hapl_2);
    EXPECT_EQ(haplotypes.at_const(0)->freq, 2.0);  // counted once per string
    haplotypes.at_const(0)->freq = 0.25;
    p.update_gen_prob();
    EXPECT_EQ(p.genotypes.at_const(0)->prob, 0.0625);
    EXPECT_EQ(p.phen_prob, 0.0625);
    EXPECT_EQ(p.genotypes.at_const(0)->rel_prob, 1.0);
}

TEST(TPhenotype, OneHeterozygousLocusGivesOneGenotypeThreeGiveFour) {
    Letters letters;
    TPopHaploDB haplotypes;
    TPhenotype one = letters.individual("AC", "GC");
    one.build_genotypes(haplotypes, &letters.db, 0, false);
    EXPECT_EQ(one.nb_genotypes, 1);
    EXPECT_EQ(one.fully_homozygous, 0);
    TPopHaploDB more;
    TPhenotype three = letters.individual("AACA", "TATT");
    three.build_genotypes(more, &letters.db, 0, false);
    EXPECT_EQ(three.nb_het_loci, 3);
    EXPECT_EQ(three.nb_genotypes, 4);
    const std::multiset<std::multiset<std::string>> expected = {
        {"AACA", "TATT"}, {"AATA", "TACT"}, {"AACT", "TATA"}, {"AATT", "TACA"}};
    EXPECT_EQ(resolutions(three), expected);
}

TEST(TPhenotype, TheSecondStringEntersTheDatabaseFirst) {
    Letters letters;
    TPopHaploDB haplotypes;
    TPhenotype p = letters.individual("AC", "GT");
    p.build_genotypes(haplotypes, &letters.db, 0, false);
    std::vector<std::string> order;
    for (const TPopHaplotype* h : haplotypes)
        order.push_back(letters_of(*h));
    EXPECT_EQ(order, (std::vector<std::string>{"GT", "AC", "GC", "AT"}));
}

TEST(TPhenotype, ThirtyThreeHeterozygousLociAreTooMany) {
    const CapturedReports reports;
    Letters letters;
    TPopHaploDB haplotypes;
    TPhenotype p = letters.individual(std::string(33, 'A'), std::string(33, 'C'));
    p.build_genotypes(haplotypes, &letters.db, 0, false);
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, "TPhenotype::build_genotypes()", 114}}));
    EXPECT_EQ(p.genotypes.count, 0);
    EXPECT_EQ(p.nb_het_loci, 33);
    EXPECT_EQ(haplotypes.count, 0);
}

TEST(TPhenotype, ThirtyThreeLociAreTooManyForRecessiveData) {
    const CapturedReports reports;
    Letters letters;
    TPopHaploDB haplotypes;
    TPhenotype p = letters.individual(std::string(33, 'A'), std::string(33, 'A'));
    p.build_genotypes(haplotypes, &letters.db, 1, false);
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, "TPhenotype::build_genotypes()", 114}}));
    EXPECT_EQ(haplotypes.count, 0);
}

TEST(TPhenotype, ADominantHomozygoteMayHideTheRecessiveAllele) {
    Letters letters;
    for (int l = 0; l < 2; ++l)
        letters.db.InsertAllPos(l, my_string("0"), 0.0);  // the blanks
    TPopHaploDB haplotypes;
    TPhenotype p = letters.individual("AB", "AB");
    p.build_genotypes(haplotypes, &letters.db, 1, false);
    const std::multiset<std::multiset<std::string>> expected = {
        {"AB", "AB"}, {"AB", "0B"}, {"AB", "A0"}, {"AB", "00"}};
    EXPECT_EQ(resolutions(p), expected);
    EXPECT_EQ(p.nb_genotypes, 4);
    EXPECT_EQ(p.fully_homozygous, 0);
    for (const TGenotype* genotype : p.genotypes)
        EXPECT_EQ(letters_of(*genotype->hapl_1), "AB");  // the recessive hides in the second string
}

TEST(TPhenotype, RecessiveResolutionsThatRepeatAreKeptOnce) {
    Letters letters;
    for (int l = 0; l < 2; ++l)
        letters.db.InsertAllPos(l, my_string("0"), 0.0);
    TPopHaploDB haplotypes;
    // Locus 1 shows the recessive itself, twice: its bit changes nothing.
    TPhenotype p = letters.individual("A0", "A0");
    p.build_genotypes(haplotypes, &letters.db, 1, false);
    const std::multiset<std::multiset<std::string>> expected = {{"A0", "A0"}, {"A0", "00"}};
    EXPECT_EQ(resolutions(p), expected);
    // Every one of the 2^2 passes counted both haplotypes all the same.
    double total = 0.0;
    for (const TPopHaplotype* h : haplotypes)
        total += h->freq;
    EXPECT_EQ(total, 8.0);
    // A heterozygous locus is exchanged; with all loci heterozygous, the codominant rule holds.
    TPopHaploDB others;
    TPhenotype het = letters.individual("AB", "CD");
    het.build_genotypes(others, &letters.db, 1, false);
    EXPECT_EQ(het.nb_genotypes, 2);
    total = 0.0;
    for (const TPopHaplotype* h : others)
        total += h->freq;
    EXPECT_EQ(total, 4.0);  // two passes, not 2^2
}

TEST(TPhenotype, RecessiveLocusMayGoByPosition) {
    Letters letters;
    letters.db.InsertAllPos(0, my_string("0"), 0.0);
    letters.db.InsertAllPos(1, my_string("1"), 0.0);
    const TPhenotype whole = letters.individual("XA", "XA");
    TPhenotype part("p", 1.0);
    const int mask[] = {0, 1};
    part.build_sub_phenotype(mask, whole);  // locus 1, at position 1 of the whole
    TPopHaploDB by_locus;
    part.build_genotypes(by_locus, &letters.db, 1, false);
    EXPECT_EQ(resolutions(part), (std::multiset<std::multiset<std::string>>{{"A", "A"}, {"A", "1"}}));
    part.kill_gen_list();
    part.pseudo_hapl[0]->allele(0)->hapl_pos = 0;
    TPopHaploDB by_position;
    part.build_genotypes(by_position, &letters.db, 1, true);
    EXPECT_EQ(resolutions(part), (std::multiset<std::multiset<std::string>>{{"A", "A"}, {"A", "0"}}));
}

TEST(TPhenotype, GenotypesOfRandomIndividualsAreAllPairsThatFit) {
    std::mt19937 random(29);
    for (int round = 0; round < 40; ++round) {
        Letters letters;
        std::string first, second;
        for (int l = 0; l < 6; ++l) {
            first += "ABC"[random() % 3];
            second += "ABC"[random() % 3];
        }
        TPopHaploDB haplotypes;
        TPhenotype p = letters.individual(first, second);
        p.build_genotypes(haplotypes, &letters.db, 0, false);
        // Brute force: all exchanges of all loci, as a set of unordered pairs.
        std::set<std::multiset<std::string>> expected;
        for (unsigned g = 0; g < 64; ++g) {
            std::string a = first, b = second;
            for (unsigned l = 0; l < 6; ++l) {
                if ((g >> l & 1u) != 0) std::swap(a[l], b[l]);
            }
            expected.insert({a, b});
        }
        const auto found = resolutions(p);
        ASSERT_EQ(found.size(), expected.size());
        ASSERT_TRUE(std::equal(found.begin(), found.end(), expected.begin()));
    }
}

TEST(TPhenotype, ANumberOfGenotypesLeftFromBeforeIsKept) {
    Letters letters;
    TPopHaploDB haplotypes;
    TPhenotype p = letters.individual("AAA", "CCC");
    p.nb_genotypes = 2;
    p.build_genotypes(haplotypes, &letters.db, 0, false);
    EXPECT_EQ(p.nb_genotypes, 2);
    p.nb_genotypes = 100;  // more than there are
    p.build_genotypes(haplotypes, &letters.db, 0, false);
    EXPECT_EQ(p.nb_genotypes, 4);
    EXPECT_EQ(p.genotypes.count, 4);
    p.kill_gen_list();
    p.build_genotypes(haplotypes, &letters.db, 0, false);
    EXPECT_EQ(p.nb_genotypes, 4);
    // Recessive data: the number of settings is known, whatever was left.
    Letters recessive;
    recessive.make_blanks(2);
    TPhenotype dominant = recessive.individual("AA", "AA");
    dominant.nb_genotypes = 1;
    TPopHaploDB others;
    dominant.build_genotypes(others, &recessive.db, 1, false);
    EXPECT_EQ(dominant.nb_genotypes, 4);
}

TEST(TPhenotype, ProbabilitiesDoubleAndAreShared) {
    Letters letters;
    TPopHaploDB haplotypes;
    TPhenotype p = letters.individual("AC", "GT");
    p.build_genotypes(haplotypes, &letters.db, 0, false);
    const double f[] = {0.5, 0.25, 0.125, 0.125};  // GT, AC, GC, AT
    for (int i = 0; i < 4; ++i)
        haplotypes.at_const(i)->freq = f[i];
    p.update_gen_prob();
    EXPECT_EQ(p.genotypes.at_const(0)->prob, 0.25);     // 2 * 0.5 * 0.25
    EXPECT_EQ(p.genotypes.at_const(1)->prob, 0.03125);  // 2 * 0.125 * 0.125
    EXPECT_EQ(p.phen_prob, 0.28125);
    EXPECT_DOUBLE_EQ(p.genotypes.at_const(0)->rel_prob, 8.0 / 9.0);
    for (TPopHaplotype* h : haplotypes)
        h->freq = 0.0;
    p.update_gen_prob();
    EXPECT_EQ(p.phen_prob, 0.0);
    EXPECT_DOUBLE_EQ(p.genotypes.at_const(0)->rel_prob, 8.0 / 9.0);  // the old share stays
}

TEST(TPhenotype, ExpectationGivesAHomozygoteTwice) {
    Letters letters;
    TPopHaploDB haplotypes;
    TPhenotype p = letters.individual("A", "A", 0.25);
    p.build_genotypes(haplotypes, &letters.db, 0, false);
    haplotypes.at_const(0)->freq = 1.0;
    p.update_gen_prob();
    haplotypes.reset_freq();
    p.update_hapl_freq_in_genotypes();
    EXPECT_EQ(haplotypes.at_const(0)->freq, 0.5);
}

TEST(TPhenotype, EquilibriumProbabilityLeavesOutAllelesNotSelected) {
    Letters letters;
    const TPhenotype p = letters.individual("AC", "GC");
    const auto set = [&](int locus, const char* name, double f) {
        letters.db(locus, my_string(name))->freq = f;
    };
    set(0, "A", 0.25);
    set(0, "G", 0.5);
    set(1, "C", 0.5);
    EXPECT_EQ(p.link_equil_pheno_prob(), 2 * 0.25 * 0.5 * 0.5 * 0.5);
    const CapturedReports reports;
    letters.db(0, my_string("A"))->selected = 0;
    EXPECT_EQ(p.link_equil_pheno_prob(), 2 * 0.5 * 0.5);  // the doubling stays
    EXPECT_EQ(reports.all(),
              (std::vector<Report>{{mnd::Warning, "TPhenotype::link_equil_pheno_prob()", 115}}));
    // The allele of the second string is not asked.
    letters.db(0, my_string("A"))->selected = 1;
    letters.db(0, my_string("G"))->selected = 0;
    EXPECT_EQ(p.link_equil_pheno_prob(), 2 * 0.25 * 0.5 * 0.5 * 0.5);
    EXPECT_EQ(reports.all().size(), 1u);
}

TEST(TGenotype, PrintsBothHaplotypesUnderEachOther) {
    Letters letters;
    TPhenotype p = letters.individual("AC", "GT");
    p.pseudo_hapl[0]->set_label("h1");
    p.pseudo_hapl[1]->set_label("h22");
    std::ostringstream out;
    out << TGenotype(p.pseudo_hapl[0].get(), p.pseudo_hapl[1].get());
    EXPECT_EQ(out.str(), "           h1  AC\n          h22  GT\n");
}

// ---- TPhenDB

TEST(TPhenDB, CountsLociAndIndividuals) {
    Letters letters;
    TPhenDB db;
    EXPECT_EQ(db.num_loci(), 0);
    EXPECT_EQ(db.nb_individuals(), 0);
    EXPECT_EQ(db.capacity, 10);
    letters.append(db, "ACG", "ACG", 2.9);
    letters.append(db, "ACG", "ACT", 1.0);
    EXPECT_EQ(db.num_loci(), 3);
    EXPECT_EQ(db.nb_individuals(), 3);
    db.destroy();
    EXPECT_EQ(db.count, 0);
}

TEST(TPhenDB, TooManyIndividualsAreTheLargestInt) {
    TPhenDB db;
    for (int i = 0; i < 3; ++i)
        db.Add(new TPhenotype("x", 2.0e9));
    EXPECT_EQ(db.nb_individuals(), std::numeric_limits<int>::max());
    EXPECT_TRUE(std::isfinite(db.calc_ln_multinom()));
}

TEST(TPhenDB, RelativeFrequenciesSumToOne) {
    TPhenDB db;
    db.Add(new TPhenotype("a", 3.0));
    db.Add(new TPhenotype("b", 1.0));
    db.convert_freq_to_real();
    EXPECT_EQ(db.at_const(0)->real_freq, 0.75);
    EXPECT_EQ(db.at_const(1)->real_freq, 0.25);
    db.at_const(0)->freq = db.at_const(1)->freq = 0.0;
    db.convert_freq_to_real();
    EXPECT_EQ(db.at_const(0)->real_freq, 0.0);
}

TEST(TPhenDB, CopyIsDeepWithItsScalars) {
    Letters letters;
    TPhenDB db;
    letters.append(db, "AC", "GT", 2.0);
    db.ln_likelihood = -1.5;
    db.identity_coeff = 0.5;
    db.inbreeding = 0.25;
    TPhenDB assigned;
    letters.append(assigned, "T", "T");
    assigned = db;
    const TPhenDB copy(db);
    db.destroy();
    for (const TPhenDB* other : {static_cast<const TPhenDB*>(&assigned), &copy}) {
        ASSERT_EQ(other->count, 1);
        EXPECT_EQ(letters_of(*other->at_const(0)), "AC/GT");
        EXPECT_EQ(other->ln_likelihood, -1.5);
        EXPECT_EQ(other->identity_coeff, 0.5);
        EXPECT_EQ(other->inbreeding, 0.25);
    }
}

TEST(TPhenDB, ExpectationAndMaximisationClimb) {
    // AC/AC twice, GT/GT once, and one double heterozygote: EM pairs the latter as AC/GT, and
    // the frequencies go to 5/8 and 3/8.
    Letters letters;
    TPhenDB db;
    letters.append(db, "AC", "AC", 2.0);
    letters.append(db, "GT", "GT", 1.0);
    letters.append(db, "AT", "GC", 1.0);
    db.convert_freq_to_real();
    TPopHaploDB haplotypes;
    db.build_all_genotypes(haplotypes, &letters.db, 0);
    ASSERT_EQ(haplotypes.count, 4);
    for (TPopHaplotype* h : haplotypes)
        h->freq = 0.25;
    double previous = kLowest;
    for (int step = 0; step < 200; ++step) {
        db.update_genotypes();
        const double likelihood = db.calc_ln_likelihood();
        EXPECT_GE(likelihood, previous - 1e-12);
        EXPECT_EQ(db.ln_likelihood, likelihood);
        previous = likelihood;
        db.update_hapl_freq(haplotypes);
        for (TPopHaplotype* h : haplotypes)
            h->freq /= 2.0;  // two haplotypes an individual
    }
    std::map<std::string, double> freq;
    for (const TPopHaplotype* h : haplotypes)
        freq[letters_of(*h)] = h->freq;
    EXPECT_NEAR(freq["AC"], 0.625, 1e-9);
    EXPECT_NEAR(freq["GT"], 0.375, 1e-9);
    EXPECT_NEAR(freq["AT"], 0.0, 1e-9);
    db.kill_gen_lists();
    EXPECT_EQ(db.at_const(2)->genotypes.count, 0);
    EXPECT_EQ(db.at_const(2)->nb_genotypes, 0);
}

TEST(TPhenDB, LikelihoodOfAnImpossiblePhenotypeIsTheLowest) {
    TPhenDB db;
    db.Add(new TPhenotype("a", 2.0));
    db.Add(new TPhenotype("b", 1.0));
    db.at_const(0)->phen_prob = 0.5;
    EXPECT_EQ(db.calc_ln_likelihood(), kLowest);
    EXPECT_EQ(db.ln_likelihood, kLowest);
    db.at_const(1)->phen_prob = 0.25;
    EXPECT_DOUBLE_EQ(db.calc_ln_likelihood(), 2 * std::log(0.5) + std::log(0.25));
}

TEST(TPhenDB, EquilibriumLikelihood) {
    Letters letters;
    TPhenDB db;
    letters.append(db, "A", "C", 3.0);
    letters.db(0, my_string("A"))->freq = 0.25;
    letters.db(0, my_string("C"))->freq = 0.75;
    EXPECT_DOUBLE_EQ(db.link_equil_ln_likelihood(), 3.0 * std::log(0.375));
    letters.db(0, my_string("A"))->freq = 0.0;
    EXPECT_EQ(db.link_equil_ln_likelihood(), kLowest);
    EXPECT_EQ(db.ln_likelihood, 0.0);
}

TEST(TPhenDB, MultinomialCoefficient) {
    TPhenDB db;
    for (double f : {2.0, 3.0, 1.0})
        db.Add(new TPhenotype("x", f));
    EXPECT_NEAR(db.calc_ln_multinom(), std::log(720.0 / (2.0 * 6.0)), 1e-9);
    db.data[1]->freq = 3.9;  // counts as 3
    EXPECT_NEAR(db.calc_ln_multinom(), std::log(720.0 / (2.0 * 6.0)), 1e-9);
}

TEST(TPhenDB, IdentityCoefficientOfTwoDistributions) {
    Letters letters;
    TPhenDB db;
    letters.append(db, "A", "A");
    letters.append(db, "A", "B");
    // Counted from the strings: A 0.75, B 0.25.
    TPopHaploDB same, other;
    same.insert(*db.at_const(0)->pseudo_hapl[0], 0.75);
    same.insert(*db.at_const(1)->pseudo_hapl[1], 0.25);
    EXPECT_EQ(db.compute_IF_coeff(&same), 1.0);
    EXPECT_EQ(same.at_const(1)->visited, 1);
    // A 0.5 and C 0.5 against A 0.75 and B 0.25: 1 - (0.25 + 0.25 + 0.5) / 2.
    const TPhenotype c = letters.individual("C", "C");
    other.insert(*db.at_const(0)->pseudo_hapl[0], 0.5);
    other.insert(*c.pseudo_hapl[0], 0.5);
    EXPECT_EQ(db.compute_IF_coeff(&other), 0.5);
    EXPECT_EQ(db.identity_coeff, 0.5);
    EXPECT_EQ(other.at_const(1)->visited, 0);
    // A class of individuals counts once: 1 - (|0.75 - 0.5| + 0.25 + 0.5) / 2 still.
    db.at_const(0)->freq = 8.0;
    EXPECT_EQ(db.compute_IF_coeff(&other), 0.5);
    // Nothing in common: 1 - (1 + 1) / 2.
    TPopHaploDB apart;
    apart.insert(*c.pseudo_hapl[0], 1.0);
    EXPECT_EQ(db.compute_IF_coeff(&apart), 0.0);
    apart.data[0]->visited = 1;  // a mark from before
    EXPECT_EQ(db.compute_IF_coeff(&apart), 0.0);
}

TEST(TPhenDB, ExplodeBaseSharesTheFrequency) {
    const CapturedReports reports;
    TPhenDB db;
    db.Add(new TPhenotype("a", 3.0));
    db.Add(new TPhenotype("b", 1.0));
    db.at_const(0)->real_freq = 0.75;
    db.at_const(1)->real_freq = 0.25;
    db.explode_base();
    ASSERT_EQ(db.count, 4);
    for (const TPhenotype* p : db) {
        EXPECT_EQ(p->freq, 1.0);
        EXPECT_EQ(p->real_freq, 0.25);
    }
    EXPECT_STREQ(db.at_const(1)->c_str(), "b");
    EXPECT_STREQ(db.at_const(3)->c_str(), "a");  // copies stand at the end
    EXPECT_TRUE(reports.all().empty());
}

TEST(TPhenDB, ExplodeBaseReportsWhatIsNoCount) {
    const CapturedReports reports;
    TPhenDB db;
    db.Add(new TPhenotype("a", 0.5));
    db.explode_base();
    EXPECT_EQ(db.at_const(0)->freq, 1.0);
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, "TPhenDB::explode_base()", 120}}));
}

TEST(TPhenDB, ExplodeBaseTakesTheIntegerPartOfACount) {
    const CapturedReports reports;
    TPhenDB db;
    db.Add(new TPhenotype("a", 2.99995));  // 3 but for rounding
    db.Add(new TPhenotype("b", 2.5));
    db.Add(new TPhenotype("c", 1.9));
    for (TPhenotype* p : db)
        p->real_freq = 0.75;
    db.explode_base();
    ASSERT_EQ(db.count, 6);
    const char* names[] = {"a", "b", "c", "a", "a", "b"};
    const double shares[] = {0.25, 0.375, 0.75, 0.25, 0.25, 0.375};
    for (int i = 0; i < 6; ++i) {
        EXPECT_STREQ(db.at_const(i)->c_str(), names[i]);
        EXPECT_EQ(db.at_const(i)->freq, 1.0);
        EXPECT_EQ(db.at_const(i)->real_freq, shares[i]);
    }
    EXPECT_TRUE(reports.all().empty());
}

// Each takes 1 KB and more.
TEST(TPhenDB, MoreIndividualsThanFitAreRefusedBeforehand) {
    Letters letters;
    TPhenDB db;
    letters.append(db, "AC", "GT", 2.0);
    letters.append(db, "AC", "AC", 5.0e6);
    EXPECT_THROW(db.explode_base(), std::bad_alloc);
    EXPECT_EQ(db.count, 2);
    EXPECT_EQ(db.at_const(0)->freq, 2.0);
    TPopHaploDB haplotypes;
    haplotypes.insert(*db.at_const(0)->pseudo_hapl[0], 1.0);
    EXPECT_THROW(TPhenDB(5000000, haplotypes), std::bad_alloc);
}

TEST(TPhenDB, RedundantPhenotypesJoinTheFirst) {
    Letters letters;
    TPhenDB db;
    letters.append(db, "AC", "GT", 1.0);
    letters.append(db, "AA", "AA", 2.0);
    letters.append(db, "GC", "AT", 4.0);
    letters.append(db, "AA", "AA", 8.0);
    letters.append(db, "AC", "GT", 16.0);
    db.check_pheno_redundancy();
    ASSERT_EQ(db.count, 2);
    EXPECT_EQ(letters_of(*db.at_const(0)), "AC/GT");
    EXPECT_EQ(db.at_const(0)->freq, 21.0);
    EXPECT_EQ(db.at_const(0)->real_freq, 21.0);
    EXPECT_EQ(db.at_const(1)->freq, 10.0);
}

TEST(TPhenDB, RedundancyWithoutStringsGoesByTheGrowingFrequency) {
    TPhenDB db;
    for (double f : {1.0, 1.0, 2.0, 3.0})
        db.Add(new TPhenotype("x", f));
    db.check_pheno_redundancy();
    // 1 takes 1 and is 2, takes 2 and is 4; 3 stays.
    ASSERT_EQ(db.count, 2);
    EXPECT_EQ(db.at_const(0)->freq, 4.0);
    EXPECT_EQ(db.at_const(1)->freq, 3.0);
}

TEST(TPhenDB, RedundancyAgreesWithComparingAllPairs) {
    std::mt19937 random(31);
    Letters letters;
    TPhenDB db;
    std::vector<TPhenotype> first_ones;
    for (int i = 0; i < 300; ++i) {
        std::string a, b;
        for (int l = 0; l < 3; ++l) {
            a += "AB"[random() % 2];
            b += "AB"[random() % 2];
        }
        letters.append(db, a, b, 1.0);
        const TPhenotype& added = *db.at_const(i);
        bool is_known = false;
        for (TPhenotype& known : first_ones) {
            if (!(known == added)) continue;
            known.freq += 1.0;
            is_known = true;
            break;
        }
        if (!is_known) first_ones.push_back(added);
    }
    db.check_pheno_redundancy();
    ASSERT_EQ(db.count, static_cast<long>(first_ones.size()));
    for (long i = 0; i < db.count; ++i) {
        EXPECT_TRUE(*db.at_const(i) == first_ones[static_cast<std::size_t>(i)]);
        EXPECT_EQ(db.at_const(i)->freq, first_ones[static_cast<std::size_t>(i)].freq);
    }
}

TEST(TPhenDB, PartsOfAllPhenotypes) {
    Letters letters;
    TPhenDB db, part;
    letters.append(db, "ACG", "TTT", 2.0);
    letters.append(db, "CCC", "GGG", 1.0);
    letters.append(part, "A", "A");
    const int list[] = {1, 2};
    part.create_temp_PhenDB(list, db);
    ASSERT_EQ(part.count, 2);
    EXPECT_EQ(letters_of(*part.at_const(0)), "G/T");
    EXPECT_EQ(part.at_const(0)->freq, 2.0);
    const int mask[] = {1, 0, 1};
    part.build_sub_PhenDB(mask, db);
    EXPECT_EQ(letters_of(*part.at_const(1)), "CC/GG");
}

TEST(TPhenDB, DegreesOfFreedomOfTwoLoci) {
    Letters letters;
    TPhenDB db;
    EXPECT_EQ(db.get_num_of_deg_freed(), 0);
    letters.append(db, "AX", "BX");
    letters.append(db, "CX", "AY");
    EXPECT_EQ(db.get_num_of_deg_freed(), 2);  // (3 - 1)(2 - 1)
}

TEST(TPhenDB, HardyWeinbergStatistic) {
    Letters letters;
    TPhenDB db;
    letters.append(db, "A", "A", 30.0);
    letters.append(db, "A", "B", 20.0);
    letters.append(db, "B", "B", 25.0);
    letters.append(db, "B", "A", 25.0);  // the same genotype as the second
    letters.append(db, "?", "A", 7.0);   // left out
    // n = 100, genotypes 30, 45, 25, p(A) = 105 / 200:
    // G = 2 sum O ln(O / E) with E = n p^2, 2 n p q, n q^2.
    const double p = 105.0 / 200.0, q = 1.0 - p;
    const double expected = 2.0 * (30 * std::log(30 / (100 * p * p)) + 45 * std::log(45 / (200 * p * q)) +
                                   25 * std::log(25 / (100 * q * q)));
    int df = -1;
    EXPECT_NEAR(db.hw_chi_stat(&letters.db, 0, '?', df), expected, 1e-9);
    EXPECT_EQ(df, 1);
}

TEST(TPhenDB, HardyWeinbergStatisticOfThreeAlleles) {
    Letters letters;
    TPhenDB db;
    letters.append(db, "A", "A", 10.0);
    letters.append(db, "B", "A", 4.0);
    letters.append(db, "B", "C", 6.0);
    letters.append(db, "C", "C", 5.0);
    // n = 25, alleles A 24, B 10, C 16 of 50; expected AA 5.76, AB 4.8, BC 3.2, CC 2.56:
    // 2 (10 ln(10 / 5.76) + 4 ln(4 / 4.8) + 6 ln(6 / 3.2) + 5 ln(5 / 2.56))
    int df = -1;
    EXPECT_NEAR(db.hw_chi_stat(&letters.db, 0, '?', df), 23.811990363868, 1e-9);
    EXPECT_EQ(df, 3);
}

TEST(TPhenDB, HardyWeinbergOfOneAlleleIsZero) {
    Letters letters;
    TPhenDB db;
    letters.append(db, "A", "A", 30.0);
    int df = -1;
    EXPECT_EQ(db.hw_chi_stat(&letters.db, 0, '?', df), 0.0);
    EXPECT_EQ(df, 0);
}

TEST(TPhenDB, DegreesOfFreedomOfVeryManyAllelesAreTheLargestInt) {
    // 66000 alleles at each of two loci, and at one: both products are beyond an int.
    Letters letters;
    TPhenDB two_loci, one_locus;
    for (int i = 0; i < 66000; ++i) {
        TPopHaplotype h;
        h.alleles.Add(letters.db.insert_allele(0, std::to_string(i), 1.0));
        one_locus.Add(new TPhenotype(&h, &h, i));
        h.alleles.Add(letters.db.insert_allele(1, std::to_string(i), 1.0));
        two_loci.Add(new TPhenotype(&h, &h, i));
    }
    int df = -1;
    // All are homozygous: G = 2 (-n ln n - 2 n ln 2 + 2 n ln 2 n) = 2 n ln n
    const double expected = 2.0 * 66000 * std::log(66000.0);
    EXPECT_NEAR(one_locus.hw_chi_stat(&letters.db, 0, '?', df), expected, 1e-10 * expected);
    EXPECT_EQ(df, std::numeric_limits<int>::max());
    EXPECT_EQ(two_loci.get_num_of_deg_freed(), std::numeric_limits<int>::max());
}

TEST(TPhenDB, HardyWeinbergNeedsOneLocus) {
    const CapturedReports reports;
    Letters letters;
    TPhenDB db;
    letters.append(db, "AC", "AC", 30.0);
    int df = -1;
    EXPECT_EQ(db.hw_chi_stat(&letters.db, 0, '?', df), -1000.0);
    EXPECT_EQ(df, 0);
    const Report report{mnd::Error, "TPhenDB::hw_chi_stat()", 118};
    EXPECT_EQ(reports.all(), (std::vector<Report>{report}));
    TPhenDB second_is_longer;
    letters.append(second_is_longer, "A", "AC", 30.0);
    EXPECT_EQ(second_is_longer.hw_chi_stat(&letters.db, 0, '?', df), -1000.0);
    EXPECT_EQ(reports.all(), (std::vector<Report>{report, report}));
}

class TPhenDBRandom : public mnd_test::SeededStream {};

TEST_F(TPhenDBRandom, RandomSampleDrawsTwoHaplotypesEach) {
    Letters letters;
    const TPhenotype source = letters.individual("A", "B");
    TPopHaploDB haplotypes;
    haplotypes.insert(*source.pseudo_hapl[0], 0.5);
    haplotypes.insert(*source.pseudo_hapl[1], 0.5);
    std::string expected;
    for (int i = 0; i < 6; ++i)
        expected += next() < 0.5 ? 'A' : 'B';
    const double seventh = next();
    seed();
    const TPhenDB db(3, haplotypes);
    EXPECT_EQ(next(), seventh);
    std::string drawn;
    for (const TPhenotype* p : db)
        drawn += letters_of(*p->pseudo_hapl[0]) + letters_of(*p->pseudo_hapl[1]);
    EXPECT_EQ(drawn, expected);
    EXPECT_EQ(db.at_const(0)->freq, 1.0);
}

TEST_F(TPhenDBRandom, RandomSampleGivesUpAfterAHundredFailures) {
    const CapturedReports reports;
    TPopHaploDB haplotypes;  // nothing to draw from
    const TPhenDB db(3, haplotypes);
    EXPECT_EQ(db.count, 0);
    ASSERT_EQ(reports.all().size(), 100u);
    EXPECT_EQ(reports.all()[0], (Report{mnd::Error, "TPhenDB::create_random_list()", 116}));
}

TEST_F(TPhenDBRandom, PermuteShufflesGeneCopiesForward) {
    Letters letters;
    TPhenDB db;
    letters.append(db, "AX", "BX");
    letters.append(db, "CY", "DY");
    std::string expected = "ABCD";
    for (int i = 0; i < 4; ++i) {
        std::swap(expected[static_cast<std::size_t>(i)],
                  expected[static_cast<std::size_t>(i + (4 - i) * next())]);
    }
    const double fifth = next();
    seed();
    const CapturedReports reports;
    const int loci[] = {1, 0, 1};
    long seed_argument = 1;
    db.permute_alleles(loci, seed_argument);
    EXPECT_EQ(next(), fifth);
    std::string found;
    for (const TPhenotype* p : db) {
        for (const auto& h : p->pseudo_hapl)
            found += h->allele(0)->c_str();
    }
    EXPECT_EQ(found, expected);
    EXPECT_EQ(letters_of(*db.at_const(0)).substr(1, 1), "X");  // the second locus stays
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(TPhenDBRandom, PermuteShufflesTwoLociOneAfterTheOther) {
    Letters letters;
    TPhenDB db;
    letters.append(db, "AX", "BY");
    letters.append(db, "CZ", "DW");
    std::string expected[2] = {"ABCD", "XYZW"};
    for (std::string& locus : expected) {
        for (std::size_t i = 0; i < 4; ++i)
            std::swap(locus[i], locus[i + static_cast<std::size_t>(static_cast<double>(4 - i) * next())]);
    }
    seed();
    const CapturedReports reports;
    const int loci[] = {2, 0, 1};
    long seed_argument = 1;
    db.permute_alleles(loci, seed_argument);
    std::string found[2];
    for (const TPhenotype* p : db) {
        for (const auto& h : p->pseudo_hapl) {
            for (long l = 0; l < 2; ++l)
                found[l] += h->allele(l)->c_str();
        }
    }
    EXPECT_EQ(found[0], expected[0]);
    EXPECT_EQ(found[1], expected[1]);
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(TPhenDBRandom, PermuteOfMoreThanTwoLociIsReportedAndDone) {
    Letters letters;
    TPhenDB db;
    letters.append(db, "ABC", "DEF");
    const CapturedReports reports;
    const int loci[] = {3, 0, 1, 2};
    long seed_argument = 1;
    mnd::reset_draws_taken();
    db.permute_alleles(loci, seed_argument);
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, "TPhenDB::permute_alleles()", 118}}));
    const double next_draw = next();
    seed();
    for (int i = 0; i < 6; ++i)
        next();
    EXPECT_EQ(next(), next_draw);  // six draws: two gene copies at three loci
}

TEST_F(TPhenDBRandom, PermuteReportsAMissingString) {
    Letters letters;
    TPhenDB db;
    letters.append(db, "A", "B");
    letters.append(db, "A", "B");
    db.at_const(1)->pseudo_hapl[1].reset();
    const CapturedReports reports;
    const int loci[] = {1, 0};
    long seed_argument = 1;
    db.permute_alleles(loci, seed_argument);
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, "TPhenDB::permute_alleles()", 119}}));
}

TEST_F(TPhenDBRandom, ResampledPhenotypeTakesTheIntervalOfEachDraw) {
    Letters letters;
    TPopHaploDB locus_1, locus_2;
    for (const char* name : {"A", "B"}) {
        TPopHaplotype h;
        h.alleles.Add(letters.db.insert_allele(0, name, 1.0));
        locus_1.insert(h, 1.0);
    }
    for (const char* name : {"X", "Y", "Z"}) {
        TPopHaplotype h;
        h.alleles.Add(letters.db.insert_allele(1, name, 1.0));
        locus_2.insert(h, 1.0);
    }
    const double u[] = {next(), next(), next(), next()};
    const double fifth = next();
    const auto first_locus = [](double x) { return x <= 0.5 ? "A" : "B"; };
    const auto second_locus = [](double x) { return x <= 0.25 ? "X" : x <= 0.75 ? "Y" : "Z"; };
    const double cum1[] = {0.5, 1.0};
    const double cum2[] = {0.25, 0.75, 1.0};
    long seed_argument = 1;
    TPhenotype p("old", 9.0);
    p.text[0] = "old";
    p.genotypes.Add(new TGenotype());
    seed();
    p.build_resam_pheno(20, 4, cum1, 2, cum2, 3, locus_1, locus_2, seed_argument, &letters.db, nullptr,
                        nullptr);
    EXPECT_EQ(next(), fifth);
    EXPECT_EQ(letters_of(p), std::string(first_locus(u[0])) + second_locus(u[2]) + "/" + first_locus(u[1]) +
                                 second_locus(u[3]));
    EXPECT_STREQ(p.c_str(), "4");
    EXPECT_STREQ(p.pseudo_hapl[0]->c_str(), "4");
    EXPECT_STREQ(p.pseudo_hapl[1]->c_str(), "5");
    EXPECT_EQ(p.freq, 1.0);
    EXPECT_EQ(p.real_freq, 0.05);
    EXPECT_EQ(p.nb_het_loci, 2);
    EXPECT_EQ(p.genotypes.count, 0);
    EXPECT_TRUE(p.text[0].is_null());
    // With the drawn alleles given, they give way to the second draws.
    TAllele* a1 = p.pseudo_hapl[0]->allele(0);
    TAllele* a2 = p.pseudo_hapl[0]->allele(1);
    seed();
    p.build_resam_pheno(20, 4, cum1, 2, cum2, 3, locus_1, locus_2, seed_argument, &letters.db, a1, a2);
    EXPECT_EQ(letters_of(*p.pseudo_hapl[0]), letters_of(*p.pseudo_hapl[1]));
    // A draw that falls on a bound belongs to the interval below it.
    const double bound_at_draw[] = {u[0], 1.0};
    seed();
    p.build_resam_pheno(20, 4, bound_at_draw, 2, cum2, 3, locus_1, locus_2, seed_argument, &letters.db,
                        nullptr, nullptr);
    EXPECT_STREQ(p.pseudo_hapl[0]->allele(0)->c_str(), "A");
}

TEST_F(TPhenDBRandom, ResampleTakesFourDrawsAnIndividual) {
    Letters letters;
    TPopHaploDB locus_1, locus_2;
    TPopHaplotype h;
    h.alleles.Add(letters.db.insert_allele(0, "A", 1.0));
    locus_1.insert(h, 7.0);
    TPopHaplotype k;
    k.alleles.Add(letters.db.insert_allele(1, "X", 1.0));
    locus_2.insert(k, 7.0);
    for (int i = 0; i < 12; ++i)
        next();
    const double thirteenth = next();
    seed();
    TPhenDB db;
    letters.append(db, "ZZ", "ZZ");
    long seed_argument = 1;
    db.resample(3, locus_1, locus_2, seed_argument, &letters.db);
    EXPECT_EQ(next(), thirteenth);
    ASSERT_EQ(db.count, 3);
    EXPECT_EQ(letters_of(*db.at_const(2)), "AX/AX");
    EXPECT_EQ(db.at_const(2)->real_freq, 1.0 / 3.0);
    TPopHaploDB nothing;
    db.resample(3, locus_1, nothing, seed_argument, &letters.db);
    EXPECT_EQ(db.count, 0);
}

TEST_F(TPhenDBRandom, ResampleDrawsInProportionToTheCounts) {
    Letters letters;
    TPopHaploDB locus_1, locus_2;
    const auto add = [&](TPopHaploDB& to, int locus, const char* name, double freq) {
        TPopHaplotype h;
        h.alleles.Add(letters.db.insert_allele(locus, name, 1.0));
        to.insert(h, freq);
        return h.allele(0);
    };
    TAllele* a = add(locus_1, 0, "A", 6.0);  // cumulative: 0.75, 1
    add(locus_1, 0, "B", 2.0);
    add(locus_2, 1, "X", 1.0);  // 0.125, 0.5, 1
    TAllele* y = add(locus_2, 1, "Y", 3.0);
    add(locus_2, 1, "Z", 4.0);
    const auto first = [](double u) { return u <= 0.75 ? 'A' : 'B'; };
    const auto second = [](double u) { return u <= 0.125 ? 'X' : u <= 0.5 ? 'Y' : 'Z'; };
    std::string plain, replaced;
    for (int i = 0; i < 40; ++i) {
        std::string strings[2] = {"  ", "  "};
        for (std::string& string : strings)
            string[0] = first(next());
        for (std::string& string : strings)
            string[1] = second(next());
        plain += strings[0] + "/" + strings[1] + " ";
        if (strings[0][0] == 'A') strings[0][0] = strings[1][0];
        if (strings[0][1] == 'Y') strings[0][1] = strings[1][1];
        replaced += strings[0] + "/" + strings[1] + " ";
    }
    const auto drawn = [&](TAllele* a1, TAllele* a2) {
        seed();
        long seed_argument = 1;
        TPhenDB db;
        db.resample(40, locus_1, locus_2, seed_argument, &letters.db, a1, a2);
        std::string all;
        for (const TPhenotype* p : db)
            all += letters_of(*p) + " ";
        return all;
    };
    EXPECT_EQ(drawn(nullptr, nullptr), plain);
    EXPECT_EQ(drawn(a, y), replaced);
}

}  // namespace
