#include "model/pop_haplotypes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "support/captured_reports.h"
#include "support/seeded_stream.h"

namespace {

using mnd::AHaplFreq;
using mnd::HaplotypeSampler;
using mnd::my_string;
using mnd::TAllele;
using mnd::TAlleleDB;
using mnd::TPopHaploDB;
using mnd::TPopHaplotype;
using mnd_test::CapturedReports;
using mnd_test::Report;

// Alleles of one letter, made as they are asked for.
struct Letters {
    TAlleleDB db;
    TPopHaplotype haplotype(const std::string& letters) {
        TPopHaplotype h;
        for (std::size_t l = 0; l < letters.size(); ++l) {
            h.alleles.Add(db.insert_allele(static_cast<int>(l), letters.substr(l, 1), 1.0));
        }
        return h;
    }
    // Appends without merging.
    TPopHaplotype* append(TPopHaploDB& list, const std::string& letters, double freq) {
        auto* h = new TPopHaplotype(haplotype(letters));
        h->freq = freq;
        list.Add(h);
        return h;
    }
};

std::string letters_of(const TPopHaplotype& h) {
    std::string letters;
    for (const TAllele* allele : h.alleles)
        letters += allele->c_str();
    return letters;
}

std::vector<std::string> letters_of(const TPopHaploDB& db) {
    std::vector<std::string> all;
    for (const TPopHaplotype* h : db)
        all.push_back(letters_of(*h));
    return all;
}

std::vector<double> freqs_of(const TPopHaploDB& db) {
    std::vector<double> all;
    for (const TPopHaplotype* h : db)
        all.push_back(h->freq);
    return all;
}

using Words = std::vector<std::string>;
using Numbers = std::vector<double>;

// ---- TPopHaplotype

TEST(TPopHaplotype, Defaults) {
    const TPopHaplotype h;
    EXPECT_STREQ(h.c_str(), "UNKNOWN");
    EXPECT_EQ(h.separator, ' ');
    EXPECT_EQ(h.rank, -1);
    EXPECT_EQ(h.freq + h.prev_freq + h.sum_freq + h.sum_sq_freq + h.ld_d + h.ld_d_prime + h.homo_freq, 0.0);
    EXPECT_EQ(h.homo_flag + h.homo_count + h.visited, 0);
    EXPECT_EQ(h.alleles.capacity, 10);
    EXPECT_EQ(TPopHaplotype('|').separator, '|');
}

TEST(TPopHaplotype, CopiesHaveAllFieldsAndTheSameAlleles) {
    Letters letters;
    TPopHaplotype h = letters.haplotype("AC");
    h.set_label("h7");
    h.freq = 1;
    h.prev_freq = 2;
    h.sum_sq_freq = 3;
    h.sum_freq = 4;
    h.separator = '/';
    h.ld_d = 5;
    h.ld_d_prime = 6;
    h.homo_flag = 7;
    h.homo_freq = 8;
    h.homo_count = 9;
    h.visited = 1;
    h.rank = 11;
    TPopHaplotype assigned = letters.haplotype("GGG");
    assigned = h;
    const TPopHaplotype copy(h);
    for (const TPopHaplotype* other : {static_cast<const TPopHaplotype*>(&assigned), &copy}) {
        EXPECT_STREQ(other->c_str(), "h7");
        EXPECT_EQ(other->freq, 1);
        EXPECT_EQ(other->prev_freq, 2);
        EXPECT_EQ(other->sum_sq_freq, 3);
        EXPECT_EQ(other->sum_freq, 4);
        EXPECT_EQ(other->separator, '/');
        EXPECT_EQ(other->ld_d, 5);
        EXPECT_EQ(other->ld_d_prime, 6);
        EXPECT_EQ(other->homo_flag, 7);
        EXPECT_EQ(other->homo_freq, 8);
        EXPECT_EQ(other->homo_count, 9);
        EXPECT_EQ(other->visited, 1);
        EXPECT_EQ(other->rank, 11);
        EXPECT_TRUE(*other == h);
    }
}

TEST(TPopHaplotype, EqualityNeedsTheSameLengthAndTheSameAlleles) {
    Letters letters, others;
    EXPECT_TRUE(letters.haplotype("AC") == letters.haplotype("AC"));
    EXPECT_FALSE(letters.haplotype("AC") == letters.haplotype("ACG"));
    EXPECT_FALSE(letters.haplotype("ACG") == letters.haplotype("AC"));
    EXPECT_TRUE(letters.haplotype("AC") != letters.haplotype("CA"));
    // The same name in another database is another allele.
    EXPECT_FALSE(letters.haplotype("AC") == others.haplotype("AC"));
}

TEST(TPopHaplotype, OrderIsByNamesAndTheFirstDifferenceDecides) {
    Letters letters;
    EXPECT_TRUE(letters.haplotype("AT") < letters.haplotype("CA"));
    EXPECT_FALSE(letters.haplotype("CA") < letters.haplotype("AT"));
    EXPECT_TRUE(letters.haplotype("AA") < letters.haplotype("AC"));
    EXPECT_FALSE(letters.haplotype("AC") < letters.haplotype("AC"));
    EXPECT_FALSE(letters.haplotype("A") < letters.haplotype("AC"));
}

TEST(TPopHaplotype, SampledHaplotypeHasTwoAlleles) {
    Letters letters;
    TPopHaplotype h = letters.haplotype("ACG");
    TAllele a("x"), b("y");
    h.freq = h.prev_freq = h.sum_freq = h.sum_sq_freq = h.homo_freq = h.ld_d = h.ld_d_prime = 1.0;
    h.separator = 0;
    h.build_sampled_haplo(12, &a, &b);
    EXPECT_STREQ(h.c_str(), "12");
    EXPECT_EQ(letters_of(h), "xy");
    EXPECT_EQ(h.separator, ' ');
    EXPECT_EQ(h.freq + h.prev_freq + h.sum_freq + h.sum_sq_freq + h.homo_freq + h.ld_d + h.ld_d_prime, 0.0);
}

TEST(TPopHaplotype, SubHaplotypeKeepsTheLociOfTheMask) {
    Letters letters;
    TPopHaplotype src = letters.haplotype("ACGT");
    src.set_label("src");
    src.freq = 0.5;
    src.prev_freq = 0.25;
    src.sum_freq = 2;
    src.sum_sq_freq = 4;
    src.separator = '-';
    src.ld_d = 1;
    TPopHaplotype part = letters.haplotype("TT");
    part.ld_d = 3;
    const int mask[] = {0, 1, 0, 1};
    part.build_sub_haplotype(mask, src);
    EXPECT_EQ(letters_of(part), "CT");
    EXPECT_STREQ(part.c_str(), "src");
    EXPECT_EQ(part.freq, 0.5);
    EXPECT_EQ(part.prev_freq, 0.25);
    EXPECT_EQ(part.sum_freq, 2);
    EXPECT_EQ(part.sum_sq_freq, 4);
    EXPECT_EQ(part.separator, '-');
    EXPECT_EQ(part.ld_d, 0);
    EXPECT_EQ(part.allele(1)->hapl_pos, 3);
}

TEST(TPopHaplotype, SubHaplotypeMasksByLocusNotByPosition) {
    Letters letters;
    const TPopHaplotype whole = letters.haplotype("ACGT");
    TPopHaplotype part, part_of_part;
    const int first[] = {0, 1, 0, 1};
    const int second[] = {1, 0, 1, 1};
    part.build_sub_haplotype(first, whole);
    part_of_part.build_sub_haplotype(second, part);
    EXPECT_EQ(letters_of(part_of_part), "T");
    EXPECT_EQ(part_of_part.allele(0)->hapl_pos, 1);  // its place in `part`
}

TEST(TPopHaplotype, RestrictedCopyTakesPositionsInTheOrderGiven) {
    Letters letters;
    const TPopHaplotype src = letters.haplotype("ACGT");
    TPopHaplotype part;
    const int list[] = {3, 3, 0, 9};  // position 9 does not exist
    part.copy_restricted_hapl(list, src);
    EXPECT_EQ(letters_of(part), "TA");
}

TEST(TPopHaplotype, PrintsAllelesWithSeparators) {
    Letters letters;
    TPopHaplotype h = letters.haplotype("AC");
    std::ostringstream out;
    out << h << '|';
    h.separator = 0;
    out << h;
    EXPECT_EQ(out.str(), "A C |AC");
}

TEST(TPopHaplotype, ShrinkTakesOutThePositionsOfZero) {
    Letters letters;
    TPopHaplotype h = letters.haplotype("ABCDEF");
    int mask[] = {0, 1, 0, 0};
    mnd::ShrinkArg arg{4, mask};
    mnd::shrink(h, &arg);
    EXPECT_EQ(letters_of(h), "BEF");
}

// ---- TPopHaploDB: the list

TEST(TPopHaploDB, InsertAddsToTheEntryThatIsThere) {
    Letters letters;
    TPopHaploDB db;
    TPopHaplotype* first = db.insert(letters.haplotype("AC"), 1.5);
    EXPECT_EQ(first->freq, 1.5);
    TPopHaplotype* second = db.insert(letters.haplotype("AG"), 1.0);
    EXPECT_EQ(db.insert(letters.haplotype("AC"), 2.0), first);
    EXPECT_EQ(first->freq, 3.5);
    EXPECT_EQ(db.count, 2);
    EXPECT_EQ(db.find(letters.haplotype("AG")), second);
    EXPECT_EQ(db.find(letters.haplotype("AT")), nullptr);
}

TEST(TPopHaploDB, FindAgreesWithAScanThroughAllChanges) {
    std::mt19937 random(5);
    Letters letters;
    TPopHaploDB db;
    const auto random_word = [&] {
        std::string word(4, 'A');
        for (char& c : word)
            c = "AC"[random() % 2];
        return word;
    };
    for (int step = 0; step < 3000; ++step) {
        const std::string word = random_word();
        switch (random() % 6) {
            case 0:
                letters.append(db, word, 1.0);
                break;
            case 1:
                db.Destroy(static_cast<int>(random() % 8));
                break;
            case 2:
                if (db.count > 20) db.flush_haplotypes();
                break;
            default:
                break;
        }
        const TPopHaplotype wanted = letters.haplotype(word);
        const TPopHaplotype* expected = nullptr;
        for (long i = 0; i < db.count && expected == nullptr; ++i) {
            if (*db.data[i] == wanted) expected = db.data[i];
        }
        ASSERT_EQ(db.find(wanted), expected);
    }
}

TEST(TPopHaploDB, SelectTakesTheFirstWhoseRunningSumExceeds) {
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "A", 0.25);
    letters.append(db, "B", 0.0);
    letters.append(db, "C", 0.75);
    const HaplotypeSampler sampler(db);
    const std::map<double, const TPopHaplotype*> expected = {{0.0, db.at_const(0)},  {0.125, db.at_const(0)},
                                                             {0.25, db.at_const(2)}, {0.999, db.at_const(2)},
                                                             {1.0, nullptr},         {2.0, nullptr}};
    for (const auto& [r, haplotype] : expected) {
        EXPECT_EQ(db.select_haplotype(r), haplotype) << r;
        EXPECT_EQ(sampler.select(r), haplotype) << r;
    }
}

TEST(TPopHaploDB, CopyIsDeep) {
    Letters letters;
    TPopHaploDB db;
    db.insert(letters.haplotype("AC"), 1.0);
    db.insert(letters.haplotype("AG"), 1.0);
    db.build_reference_haplotype(&letters.db, '?');
    TPopHaploDB assigned;
    assigned.insert(letters.haplotype("TT"), 1.0);
    assigned = db;
    const TPopHaploDB copy(db);
    db.empty();
    EXPECT_EQ(db.count, 0);
    EXPECT_EQ(db.poly_mask, nullptr);
    EXPECT_EQ(db.reference, nullptr);
    for (const TPopHaploDB* other : {static_cast<const TPopHaploDB*>(&assigned), &copy}) {
        EXPECT_EQ(letters_of(*other), (Words{"AC", "AG"}));
        ASSERT_NE(other->poly_mask, nullptr);
        EXPECT_EQ(other->poly_mask[0], 0);
        EXPECT_EQ(other->poly_mask[1], 1);
        EXPECT_EQ(letters_of(*other->reference), "AC");
        EXPECT_EQ(other->find(letters.haplotype("TT")), nullptr);
        EXPECT_NE(other->find(letters.haplotype("AG")), nullptr);
    }
}

TEST(TPopHaploDB, PrintsItsEntries) {
    Letters letters;
    TPopHaploDB db;
    db.insert(letters.haplotype("AC"), 1.5);
    std::ostringstream out;
    out << db;
    EXPECT_EQ(out.str(), "A C   1.50000\n\n");
}

// ---- TPopHaploDB: frequencies

TEST(TPopHaploDB, ResetsSetZero) {
    Letters letters;
    TPopHaploDB db;
    TPopHaplotype* h = letters.append(db, "A", 0.5);
    h->homo_count = 3;
    db.reset_freq();
    EXPECT_EQ(h->freq, 0.0);
    EXPECT_EQ(h->homo_count, 3);
    db.reset_homo_count();
    EXPECT_EQ(h->homo_count, 0);
}

TEST(TPopHaploDB, ConvergenceIsStrictAndRemembers) {
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "A", 0.5)->prev_freq = 0.25;
    letters.append(db, "B", 0.5)->prev_freq = 0.75;
    EXPECT_FALSE(db.convergence(0.5));  // the changes sum to 0.5 exactly
    EXPECT_TRUE(db.convergence(1e-300));
    db.at_const(0)->freq = 0.75;
    EXPECT_TRUE(db.convergence(0.2500001));
}

class TPopHaploDBRandom : public mnd_test::SeededStream {};

TEST_F(TPopHaploDBRandom, RandomStartLeavesTheFlaggedAtWeightOne) {
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "A", 0.0);
    letters.append(db, "B", 0.0)->homo_flag = 1;
    letters.append(db, "C", 0.0);
    const double u1 = next(), u2 = next(), u3 = next();
    seed();
    db.assign_rand_init_freq(1000);
    EXPECT_EQ(next(), u3);  // two draws for three entries
    const double w1 = 1000 * u1 + 1.0, w3 = 1000 * u2 + 1.0;
    const double sum = w1 + 1.0 + w3;
    EXPECT_EQ(freqs_of(db), (Numbers{w1 / sum, 1.0 / sum, w3 / sum}));
    for (const TPopHaplotype* h : db)
        EXPECT_EQ(h->prev_freq, h->freq);
}

TEST(TPopHaploDB, LinkageDisequilibriumOfTwoLoci) {
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "AB", 0.5);
    letters.append(db, "Ab", 0.25);
    letters.append(db, "aB", 0.25);
    db.update_lk_equil();
    // p(A) = p(B) = 0.75, p(a) = p(b) = 0.25.
    // AB: D = 0.5 - 0.5625 = -0.0625; bound min(0.25 * 0.25, 0.75 * 0.75) = 0.0625; D' = -1
    EXPECT_DOUBLE_EQ(db.at_const(0)->ld_d, -0.0625);
    EXPECT_DOUBLE_EQ(db.at_const(0)->ld_d_prime, -1.0);
    // Ab: D = 0.25 - 0.1875 = 0.0625; bound min(0.25 * 0.25, 0.75 * 0.75) = 0.0625; D' = 1
    EXPECT_DOUBLE_EQ(db.at_const(1)->ld_d, 0.0625);
    EXPECT_DOUBLE_EQ(db.at_const(1)->ld_d_prime, 1.0);
    EXPECT_DOUBLE_EQ(db.at_const(2)->ld_d, 0.0625);
}

TEST(TPopHaploDB, TheBoundIsTheSmallerOfTwo) {
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "AB", 0.5);
    letters.append(db, "aB", 0.125);
    letters.append(db, "ab", 0.375);
    db.update_lk_equil();
    // p(A) = p(a) = 0.5, p(B) = 0.625, p(b) = 0.375; Ab is missing, so |D'| is 1 everywhere.
    // AB: D = 0.5 - 0.3125 = 0.1875; bound min(0.5 * 0.625, 0.375 * 0.5) = 0.1875
    // aB: D = 0.125 - 0.3125 = -0.1875; bound min(0.5 * 0.375, 0.5 * 0.625) = 0.1875
    // ab: D = 0.375 - 0.1875 = 0.1875; bound min(0.5 * 0.375, 0.625 * 0.5) = 0.1875
    const double expected[] = {1.0, -1.0, 1.0};
    for (long i = 0; i < 3; ++i)
        EXPECT_EQ(db.at_const(i)->ld_d_prime, expected[i]) << i;
    // AB 0.5, Ab 0.125, aB 0.125, ab 0.25: p(A) = p(B) = 0.625, D = 0.109375, bound 0.234375.
    TPopHaploDB partial;
    letters.append(partial, "AB", 0.5);
    letters.append(partial, "Ab", 0.125);
    letters.append(partial, "aB", 0.125);
    letters.append(partial, "ab", 0.25);
    partial.update_lk_equil();
    EXPECT_DOUBLE_EQ(partial.at_const(0)->ld_d_prime, 7.0 / 15.0);
}

TEST(TPopHaploDB, NormalisedDisequilibriumNeedsABoundAboveAMillionth) {
    Letters letters;
    TPopHaploDB below, above;
    letters.append(below, "AB", 1.0 - 1e-7);  // bound about 1e-07
    letters.append(below, "ab", 1e-7);
    letters.append(above, "AB", 1.0 - 1e-5);  // bound about 1e-05
    letters.append(above, "ab", 1e-5);
    below.update_lk_equil();
    above.update_lk_equil();
    EXPECT_GT(below.at_const(0)->ld_d, 0.0);
    EXPECT_EQ(below.at_const(0)->ld_d_prime, 0.0);
    EXPECT_NEAR(above.at_const(0)->ld_d_prime, 1.0, 1e-9);
}

TEST(TPopHaploDB, NormalisedDisequilibriumIsZeroAtATinyBound) {
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "AB", 1.0);  // both marginals 1: the bound is 0
    db.at_const(0)->ld_d_prime = 9.0;
    db.update_lk_equil();
    EXPECT_EQ(db.at_const(0)->ld_d, 0.0);
    EXPECT_EQ(db.at_const(0)->ld_d_prime, 0.0);
}

TEST(TPopHaploDB, DisequilibriumOfAHaplotypeWithoutLociIsItsFrequencyLessOne) {
    TPopHaploDB db;
    db.insert(TPopHaplotype(), 0.25);
    db.update_lk_equil();
    EXPECT_EQ(db.at_const(0)->ld_d, -0.75);
    EXPECT_EQ(db.at_const(0)->ld_d_prime, 0.0);
}

TEST(TPopHaploDB, MarginalsAreThoseOfThePlainDoubleLoop) {
    std::mt19937 random(17);
    Letters letters;
    TPopHaploDB db;
    for (int i = 0; i < 60; ++i) {
        std::string word(3, 'A');
        for (char& c : word)
            c = "ABC"[random() % 3];
        letters.append(db, word, static_cast<double>(random() % 1000) / 777.0);
    }
    db.update_lk_equil();
    for (const TPopHaplotype* h : db) {
        double product = 1.0;
        for (long p = 0; p < 3; ++p) {
            double m = 0.0;
            for (const TPopHaplotype* other : db) {
                if (other->allele(p) == h->allele(p)) m += other->freq;
            }
            product *= m;
        }
        EXPECT_EQ(h->ld_d, h->freq - product);
    }
}

TEST(TPopHaploDB, EquilibriumFrequencyIsTheProductOfExpected) {
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "AB", 0.5);
    db.Add(new TPopHaplotype());
    db.at_const(0)->allele(0)->exp_freq = 0.5;
    db.at_const(0)->allele(1)->exp_freq = 0.25;
    db.comp_link_equil_hapl_freq();
    EXPECT_EQ(freqs_of(db), (Numbers{0.125, 1.0}));
}

TEST(TPopHaploDB, ReplicatesAreSummedAboveTheThreshold) {
    Letters letters;
    TPopHaploDB db, replicate;
    letters.append(db, "A", 0.5);
    letters.append(db, "B", 0.25);  // at the threshold: not above it
    letters.append(db, "C", 0.75);  // absent from the replicate
    letters.append(replicate, "B", 0.5);
    letters.append(replicate, "A", 3.0);
    db.sums_hapl_frequencies(replicate, 0.25);
    db.sums_hapl_frequencies(replicate, 0.25);
    EXPECT_EQ(db.at_const(0)->sum_freq, 6.0);
    EXPECT_EQ(db.at_const(0)->sum_sq_freq, 18.0);
    EXPECT_EQ(db.at_const(1)->sum_freq, 0.0);
    EXPECT_EQ(db.at_const(2)->sum_sq_freq, 0.0);
}

TEST(TPopHaploDB, CalcSdCarriesTheVarianceOver) {
    Letters letters;
    TPopHaploDB db;
    for (const char* word : {"A", "B", "C"})
        letters.append(db, word, 0.0);
    db.at_const(1)->freq = 0.5;
    // Replicates 1, 2, 3: sum 6, sum of squares 14; variance (14 - 36 / 3) / 2 = 1.
    db.at_const(1)->sum_freq = 6.0;
    db.at_const(1)->sum_sq_freq = 14.0;
    db.at_const(0)->sum_sq_freq = db.at_const(2)->sum_sq_freq = 5.0;
    db.calc_sd(3);
    EXPECT_EQ(db.at_const(0)->sum_sq_freq, 0.0);  // nothing to carry over yet
    EXPECT_EQ(db.at_const(1)->sum_sq_freq, 1.0);
    EXPECT_EQ(db.at_const(2)->sum_sq_freq, 1.0);  // that of the entry before
    db.at_const(1)->sum_sq_freq = 7.0;
    db.calc_sd(1);
    EXPECT_EQ(db.at_const(1)->sum_sq_freq, 7.0);
}

TEST(TPopHaploDB, HomozygotesUnderInbreeding) {
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "A", 0.5)->homo_count = 3;
    letters.append(db, "B", 0.25)->homo_count = 0;
    letters.append(db, "C", 0.25)->homo_count = 1;
    // F = 0.5: 3 / (0.5 * 0.5 + 0.5) + 1 / (0.75 * 0.5 + 0.25) = 4 + 1.6
    EXPECT_DOUBLE_EQ(db.sum_homoz_inbreeding(0.5), 5.6);
    letters.append(db, "D", 0.0);  // no homozygotes: left out, where its term would be 0 / 0
    EXPECT_DOUBLE_EQ(db.sum_homoz_inbreeding(0.0), 10.0);
}

TEST(TPopHaploDB, LogFactorialsOfTheCounts) {
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "A", 3.9);  // 3! = 6
    letters.append(db, "B", 4.0);  // 4! = 24
    letters.append(db, "C", 0.5);
    EXPECT_NEAR(db.calc_hapl_lk_dis(), std::log(144.0), 1e-9);
}

// ---- TPopHaploDB: rearranging

TEST_F(TPopHaploDBRandom, PermuteShufflesEachLocusForward) {
    Letters letters;
    TPopHaploDB db;
    for (const char* word : {"AX", "BY", "CZ"})
        letters.append(db, word, 1.0);
    std::vector<std::string> expected = {"AX", "BY", "CZ"};
    for (std::size_t l = 0; l < 2; ++l) {
        for (int i = 0; i < 3; ++i) {
            const auto r = static_cast<std::size_t>(i + (3 - i) * next());
            std::swap(expected[static_cast<std::size_t>(i)][l], expected[r][l]);
        }
    }
    const double seventh = next();
    seed();
    int loci = 2;
    db.permute(&loci);
    EXPECT_EQ(letters_of(db), expected);
    EXPECT_EQ(next(), seventh);
    EXPECT_EQ(db.find(letters.haplotype(expected[1])), db.at_const(1));
}

TEST_F(TPopHaploDBRandom, PermuteGivesEveryOrderTheSameChance) {
    // 6 orders of three alleles, 6000 shuffles: chi-square with 5 degrees of freedom, whose
    // 0.1 % point is 20.5.
    Letters letters;
    TPopHaploDB db;
    for (const char* word : {"A", "B", "C"})
        letters.append(db, word, 1.0);
    std::map<std::string, int> seen;
    int loci = 1;
    for (int k = 0; k < 6000; ++k) {
        db.permute(&loci);
        std::string order;
        for (const std::string& word : letters_of(db))
            order += word;
        ++seen[order];
    }
    ASSERT_EQ(seen.size(), 6u);
    double chi_square = 0.0;
    for (const auto& [order, n] : seen)
        chi_square += (n - 1000.0) * (n - 1000.0) / 1000.0;
    EXPECT_LT(chi_square, 20.5);
}

TEST_F(TPopHaploDBRandom, PermuteStopsAtALocusThatIsNotThere) {
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "A", 1.0);
    const double first = next(), second = next();
    seed();
    int loci = 5;
    db.permute(&loci);
    EXPECT_EQ(next(), second);
    EXPECT_NE(first, second);
}

TEST(TPopHaploDB, CheckRedundancyMergesAPair) {
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "A", 1.0);
    letters.append(db, "B", 2.0);
    letters.append(db, "A", 4.0);
    db.check_redundancy();
    EXPECT_EQ(letters_of(db), (Words{"A", "B"}));
    EXPECT_EQ(freqs_of(db), (Numbers{5.0, 2.0}));
    EXPECT_EQ(db.find(letters.haplotype("B")), db.at_const(1));
}

TEST(TPopHaploDB, CheckRedundancyCanLeaveTwoOfThree) {
    Letters letters;
    TPopHaploDB db;
    for (double f : {1.0, 2.0, 4.0})
        letters.append(db, "A", f);
    db.check_redundancy();
    // Entry 2 joins entry 1; the pair (1, 0) is then passed over.
    EXPECT_EQ(freqs_of(db), (Numbers{1.0, 6.0}));
}

TEST(TPopHaploDB, CheckRedundancyGoesOnBehindThePassedOverPair) {
    Letters letters;
    TPopHaploDB db;
    // 0 A, 1 B, 2 A, 3 A: entry 3 joins 2; (2, 1) is passed over, (2, 0) is not: 2 joins 0.
    letters.append(db, "A", 1.0);
    letters.append(db, "B", 2.0);
    letters.append(db, "A", 4.0);
    letters.append(db, "A", 8.0);
    db.check_redundancy();
    EXPECT_EQ(letters_of(db), (Words{"A", "B"}));
    EXPECT_EQ(freqs_of(db), (Numbers{13.0, 2.0}));
}

TEST(TPopHaploDB, CleanKeepsTheThresholdItself) {
    Letters letters;
    TPopHaploDB db;
    for (double f : {1.999, 2.0, 0.0, 3.0, 1.0})
        letters.append(db, "A", f);
    double threshold = 2.0;
    db.cleanDB(threshold);
    EXPECT_EQ(freqs_of(db), (Numbers{2.0, 3.0}));
}

TEST(TPopHaploDB, ExplodeMakesSingleCopies) {
    const CapturedReports reports;
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "A", 3.0);
    letters.append(db, "B", 1.0);
    db.explode_base();
    EXPECT_EQ(letters_of(db), (Words{"A", "B", "A", "A"}));
    EXPECT_EQ(freqs_of(db), (Numbers{1, 1, 1, 1}));
    EXPECT_TRUE(reports.all().empty());
}

TEST(TPopHaploDB, ExplodeWarnsOfWhatIsNoCount) {
    const CapturedReports reports;
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "A", 2.5);
    db.explode_base();
    EXPECT_EQ(freqs_of(db), (Numbers{1, 1}));
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Warning, "TPopHaploDB::explode_base()", 106}}));
}

TEST(TPopHaploDB, ReferenceTakesTheFirstAlleleThatIsNotMissing) {
    Letters letters;
    TPopHaploDB db;
    auto* first = letters.append(db, "A?C", 1.0);
    first->separator = '/';
    letters.append(db, "ATG", 1.0);
    db.build_reference_haplotype(&letters.db, '?');
    ASSERT_NE(db.reference, nullptr);
    EXPECT_EQ(letters_of(*db.reference), "ATC");
    EXPECT_EQ(db.reference->separator, '/');
    ASSERT_EQ(db.poly_mask_size, 3);
    EXPECT_EQ(db.poly_mask[0], 0);
    EXPECT_EQ(db.poly_mask[1], 1);
    EXPECT_EQ(db.poly_mask[2], 1);
}

TEST(TPopHaploDB, ReferenceOfALocusThatIsMissingThroughoutIsMissing) {
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "?A", 1.0);
    letters.append(db, "?C", 1.0);
    db.build_reference_haplotype(&letters.db, '?');
    ASSERT_NE(db.reference, nullptr);
    EXPECT_EQ(letters_of(*db.reference), "?A");
    EXPECT_EQ(db.poly_mask[0], 0);
}

TEST(TPopHaploDB, WithoutAVariableLocusTheReferenceStays) {
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "AC", 1.0);
    db.compact(&letters.db, '?');
    EXPECT_EQ(db.reference, nullptr);
    EXPECT_EQ(db.poly_mask, nullptr);
    EXPECT_EQ(letters_of(db), (Words{"AC"}));
}

TEST(TPopHaploDB, CompactKeepsTheVariableLoci) {
    Letters letters;
    TPopHaploDB db;
    db.insert(letters.haplotype("ACGT"), 1.0);
    db.insert(letters.haplotype("AGGA"), 1.0);
    db.compact(&letters.db, '?');
    EXPECT_EQ(letters_of(db), (Words{"CT", "GA"}));
    EXPECT_EQ(db.find(*db.at_const(1)), db.at_const(1));
    EXPECT_EQ(db.find(letters.haplotype("ACGT")), nullptr);
}

TEST(TPopHaploDB, AnArbitraryReferenceHoldsOneAllele) {
    TPopHaploDB db;
    const int n = 3;
    db.init_ref_hapl(&n);
    ASSERT_EQ(db.reference->num_loci(), 3);
    EXPECT_EQ(db.reference->allele(0), db.reference->allele(2));
    EXPECT_STREQ(db.reference->allele(0)->c_str(), "UNDEF");
}

// ---- TPopHaploDB: the table

TEST(TPopHaploDB, TableListsWhatIsAboveTheThreshold) {
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "CA", 0.5)->sum_sq_freq = 0.125;
    letters.append(db, "AG", 0.25);
    letters.append(db, "AC", 0.25);
    letters.append(db, "AA", 0.3)->set_label("h4");
    std::ostringstream out;
    out << std::setprecision(2);
    db.print(out, 0, 0.25);
    EXPECT_EQ(out.str(),
              "\n------------------------------------------\n"
              "Maximum-likelihood haplotype frequencies :\n"
              "------------------------------------------\n\n"
              "Total number of possible haplotypes      :              4\n"
              "Minimum frequency to reach for output    :      2.500e-01\n"
              "---------------------------------------\n"
              "    #   Haplotype     Freq.      s.d.\n"
              "---------------------------------------\n"
              "    1          h4\t  0.300000  0.000000\tA A \n"
              "    2     UNKNOWN\t  0.500000  0.125000\tC A \n"
              "Sum of all 4 haplotype frequencies : 1.300000\n"
              "Sum of 2 listed frequencies : 0.800000\n");
    EXPECT_EQ(db.at_const(0)->rank, 2);
    EXPECT_EQ(db.at_const(1)->rank, -2);  // AG sorts behind AC
    EXPECT_EQ(db.at_const(2)->rank, -1);
    EXPECT_EQ(db.at_const(3)->rank, 1);
    EXPECT_EQ(letters_of(db), (Words{"CA", "AG", "AC", "AA"}));  // the list keeps its order
    EXPECT_EQ(out.precision(), 2);
}

TEST(TPopHaploDB, TableEscapesLabelsAndAlleles) {
    Letters letters;
    TPopHaploDB db;
    TPopHaplotype* h = letters.append(db, "<&", 0.5);
    h->set_label("a<b");
    h->separator = '>';
    letters.append(db, ">&", 0.5);
    for (int use_compact : {0, 1}) {
        if (use_compact != 0) db.compact(&letters.db, '?');
        std::ostringstream out;
        db.print(out, use_compact, 0.0);
        EXPECT_NE(out.str().find("    1         a&lt;b\t  0.500000  0.000000\t&lt;&gt;&amp;&gt;\n"),
                  std::string::npos)
            << out.str();
    }
}

TEST(TPopHaploDB, TableDoesNotTakeTheFormatOfTheStream) {
    Letters letters;
    TPopHaploDB db;
    letters.append(db, "AC", 0.5);
    std::ostringstream plain, odd;
    odd << std::left << std::showpos << std::scientific << std::setprecision(1) << std::setfill('*');
    db.print(plain, 0, 0.0);
    db.print(odd, 0, 0.0);
    EXPECT_EQ(odd.str(), plain.str());
}

TEST(TPopHaploDB, TableOfACompactedListShowsAllLoci) {
    Letters letters;
    TPopHaploDB db;
    db.insert(letters.haplotype("ACGT"), 0.5);
    db.insert(letters.haplotype("AGGA"), 0.5);
    db.compact(&letters.db, '?');
    std::ostringstream full, own;
    db.print(full, 1, 0.0);
    db.print(own, 0, 0.0);
    EXPECT_NE(full.str().find("\tA C G T \n"), std::string::npos);
    EXPECT_NE(full.str().find("\tA G G A \n"), std::string::npos);
    EXPECT_NE(own.str().find("\tC T \n"), std::string::npos);
}

TEST(TPopHaploDB, TableOrderIsThatOfTheSortedArray) {
    std::mt19937 random(23);
    Letters letters;
    TPopHaploDB db;
    mnd::MY_TISArrayAsVector<TPopHaplotype> sorted;
    sorted.owns_elements = 0;
    for (int i = 0; i < 200; ++i) {
        std::string word(3, 'A');
        for (char& c : word)
            c = "ABC"[random() % 3];
        sorted.Add(letters.append(db, word, 1.0));
    }
    std::ostringstream out;
    db.print(out, 0, 0.0);
    for (long i = 0; i < sorted.count; ++i)
        EXPECT_EQ(sorted.at_const(i)->rank, i + 1);
}

// ---- AHaplFreq

TEST(AHaplFreq, PlusAssignAddsTwoFieldsOnly) {
    AHaplFreq sum{1, 2, 3, 4};
    sum += AHaplFreq{10, 20, 30, 40};
    EXPECT_EQ(sum.freq, 11);
    EXPECT_EQ(sum.sd, 22);
    EXPECT_EQ(sum.mean_count, 3);
    EXPECT_EQ(sum.sd_count, 4);
}

TEST(AHaplFreq, MeanAndDeviationOfCounts) {
    // Counts 1, 2, 3 of 10: mean 2, variance (14 - 36 / 3) / 2 = 1.
    AHaplFreq record{6, 14, 0, 0};
    record.calc_mean_freq(3, 10);
    EXPECT_EQ(record.mean_count, 2.0);
    EXPECT_EQ(record.sd_count, 1.0);
    EXPECT_EQ(record.freq, 0.2);
    EXPECT_EQ(record.sd, 0.1);
}

TEST(AHaplFreq, OneCountHasNoDeviationAndAnEmptySampleNothing) {
    AHaplFreq one{6, 36, 1, 1};
    one.calc_mean_freq(1, 12);
    EXPECT_EQ(one.freq, 0.5);
    EXPECT_EQ(one.sd_count, 0.0);
    EXPECT_EQ(one.sd, 0.0);
    AHaplFreq empty{6, 36, 1, 1};
    empty.calc_mean_freq(3, 0);
    EXPECT_EQ(empty.freq + empty.sd + empty.mean_count + empty.sd_count, 0.0);
}

TEST(AHaplFreq, SortedArrayIsDescendingAndKeepsTheOrderOfEquals) {
    mnd::MY_TISArrayAsVector<AHaplFreq> sorted;
    for (const AHaplFreq& record : {AHaplFreq{1, 0, 1, 0}, AHaplFreq{3, 0, 2, 0}, AHaplFreq{1, 0, 3, 0}}) {
        sorted.Add(new AHaplFreq(record));
    }
    ASSERT_EQ(sorted.count, 3);
    EXPECT_EQ(sorted.at_const(0)->mean_count, 2);
    EXPECT_EQ(sorted.at_const(1)->mean_count, 1);
    EXPECT_EQ(sorted.at_const(2)->mean_count, 3);
}

TEST(AHaplFreq, PrintsFourColumns) {
    std::ostringstream out;
    out << std::left << AHaplFreq{0.25, 0.0123456, 12.5, 3};
    EXPECT_EQ(out.str(), "   0.2500000   0.0123456         12.5000      3.0000\n");
}

}  // namespace
