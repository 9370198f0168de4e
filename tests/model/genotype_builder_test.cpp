#include "model/genotype_builder.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdlib>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "support/captured_reports.h"
#include "support/lettered_phenotypes.h"
#include "support/limited_memory.h"
#include "support/plain_resolutions.h"

namespace {

using mnd::TGenotype;
using mnd::TPhenDB;
using mnd::TPhenotype;
using mnd::TPopHaploDB;
using mnd_test::CapturedReports;
using mnd_test::Letters;
using mnd_test::letters_of;
using mnd_test::Report;

using Pair = std::pair<std::string, std::string>;

Pair unordered(std::string a, std::string b) {
    if (b < a) std::swap(a, b);
    return {a, b};
}

std::multiset<Pair> pairs_of(const TPhenotype& p) {
    std::multiset<Pair> pairs;
    for (const TGenotype* g : p.genotypes)
        pairs.insert(unordered(letters_of(*g->hapl_1), letters_of(*g->hapl_2)));
    return pairs;
}

// Every pair of haplotypes that gives the individual, locus by locus: a heterozygote either way
// round, a homozygote twice its allele; with recessive data the second haplotype may hold "0"
// where both letters are the same.
std::set<Pair> compatible_pairs(const std::string& first, const std::string& second, bool recessive) {
    std::set<Pair> pairs = {{"", ""}};
    for (std::size_t l = 0; l < first.size(); ++l) {
        std::set<Pair> longer;
        for (const auto& [a, b] : pairs) {
            longer.insert({a + first[l], b + second[l]});
            longer.insert({a + second[l], b + first[l]});
            if (recessive && first[l] == second[l]) longer.insert({a + first[l], b + "0"});
        }
        pairs.swap(longer);
    }
    std::set<Pair> without_order;
    for (const auto& [a, b] : pairs)
        without_order.insert(unordered(a, b));
    return without_order;
}

// Of `loci` loci, those of the mask heterozygous; letters differ from locus to locus.
Pair individual_of(int loci, unsigned heterozygous) {
    Pair texts;
    for (int l = 0; l < loci; ++l) {
        texts.first += static_cast<char>('A' + l % 3);
        texts.second += static_cast<char>('A' + (l + static_cast<int>(heterozygous >> l & 1u)) % 3);
    }
    return texts;
}

void expect_all_and_only(const Pair& texts, bool recessive, std::size_t number) {
    Letters letters;
    letters.make_blanks(static_cast<int>(texts.first.size()));
    TPopHaploDB haplotypes;
    TPhenotype p = letters.individual(texts.first, texts.second);
    ASSERT_TRUE(p.build_genotypes(haplotypes, &letters.db, recessive ? 1 : 0, false));
    const std::multiset<Pair> found = pairs_of(p);
    const std::set<Pair> expected = compatible_pairs(texts.first, texts.second, recessive);
    EXPECT_EQ(found.size(), number) << texts.first << '/' << texts.second;
    EXPECT_EQ(found, (std::multiset<Pair>(expected.begin(), expected.end())));
    EXPECT_EQ(p.nb_genotypes, static_cast<int64_t>(number));
    std::set<std::string> named;
    for (const auto& [a, b] : expected) {
        named.insert(a);
        named.insert(b);
    }
    std::set<std::string> stored;
    for (const auto* h : haplotypes)
        EXPECT_TRUE(stored.insert(letters_of(*h)).second) << "stored twice";
    EXPECT_EQ(stored, named);
}

TEST(GenotypeBuilder, ZeroToTenHeterozygousLociGiveAllAndOnlyThePairsThatFit) {
    for (int h = 0; h <= 10; ++h) {
        const std::size_t number = h == 0 ? 1 : std::size_t{1} << (h - 1);
        expect_all_and_only(individual_of(h, (1u << h) - 1), false, number);
        // The same among three homozygous loci: at the front, in the middle, at the end.
        expect_all_and_only(individual_of(h + 3, (1u << (h + 1)) - 2), false, number);
    }
    expect_all_and_only(individual_of(9, 0b101010101), false, 16);
}

// With d dominant homozygotes and h heterozygotes: 2^(h+d) settings, of which those that hide
// nothing are 2^h and name 2^(h-1) pairs (one if h is 0).
TEST(GenotypeBuilder, RecessiveDataGiveAllAndOnlyThePairsThatFit) {
    for (int h = 0; h <= 10; ++h) {
        for (int d = 1; d <= 2; ++d) {
            const std::size_t all = std::size_t{1} << (h + d);
            const std::size_t number = h == 0 ? all : all - (std::size_t{1} << (h - 1));
            expect_all_and_only(individual_of(h + d, (1u << h) - 1), true, number);
            expect_all_and_only(individual_of(h + d, ((1u << h) - 1) << d), true, number);
        }
    }
    expect_all_and_only({"ABCABC", "BACCBA"}, true, 64 - 8);
}

TEST(GenotypeBuilder, AllLociHeterozygousIsResolvedAsWithKnownDominance) {
    for (int h = 1; h <= 10; ++h)
        expect_all_and_only(individual_of(h, (1u << h) - 1), true, std::size_t{1} << (h - 1));
}

// ---- Order

// Letters of a random individual; "0" is the recessive allele.
Pair random_texts(std::mt19937& random, int loci, const std::string& alphabet) {
    Pair texts;
    for (int l = 0; l < loci; ++l) {
        texts.first += alphabet[random() % alphabet.size()];
        texts.second += alphabet[random() % alphabet.size()];
    }
    return texts;
}

void expect_the_plain_order(bool recessive, const std::string& alphabet) {
    std::mt19937 random(71);
    for (int round = 0; round < 150; ++round) {
        Letters letters;
        const int loci = 1 + static_cast<int>(random() % 7);
        letters.make_blanks(loci);
        TPopHaploDB haplotypes;
        mnd_test::PlainResolutions plain;
        TPhenDB phenotypes;
        for (int i = 0; i < 4; ++i) {
            const Pair texts = random_texts(random, loci, alphabet);
            letters.append(phenotypes, texts.first, texts.second);
            plain.add(*phenotypes.data[i], letters.db, recessive, [](auto&, auto&) { return true; });
        }
        ASSERT_TRUE(phenotypes.build_all_genotypes(haplotypes, &letters.db, recessive ? 1 : 0));
        ASSERT_NO_FATAL_FAILURE(plain.expect_same(haplotypes, {phenotypes.begin(), phenotypes.end()}));
    }
}

TEST(GenotypeBuilder, OrderAndOccurrencesAreThoseOfThePlainCount) {
    expect_the_plain_order(false, "AB");
    expect_the_plain_order(false, "ABCD");
}

TEST(GenotypeBuilder, OrderAndOccurrencesAreThoseOfThePlainCountForRecessiveData) {
    expect_the_plain_order(true, "0AB");
    expect_the_plain_order(true, "0A");
    expect_the_plain_order(true, "AB");
}

// ---- Limits

constexpr const char* kSource = "TPhenotype::build_genotypes()";

TEST(GenotypeBuilder, WhatCannotBeHeldIsRefusedBeforehand) {
    for (const int h : {23, 26, 31, 32}) {
        const CapturedReports reports;
        Letters letters;
        TPopHaploDB haplotypes;
        TPhenotype p = letters.individual(std::string(static_cast<std::size_t>(h), 'A'),
                                          std::string(static_cast<std::size_t>(h), 'C'));
        EXPECT_FALSE(p.build_genotypes(haplotypes, &letters.db, 0, false));
        EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, kSource, 114}}));
        EXPECT_EQ(p.nb_het_loci, h);
        EXPECT_EQ(p.genotypes.count + haplotypes.count + p.nb_genotypes, 0);
    }
}

TEST(GenotypeBuilder, RecessiveHomozygotesAreAsManyAsTheyHide) {
    const std::string dominant(32, 'A'), recessive(28, '0');
    Letters letters;
    letters.make_blanks(32);
    TPopHaploDB haplotypes;
    const CapturedReports reports;
    TPhenotype many = letters.individual(dominant, dominant);
    EXPECT_FALSE(many.build_genotypes(haplotypes, &letters.db, 1, false));
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, kSource, 114}}));
    // 28 of the 32 loci show the recessive allele, and hide nothing.
    TPhenotype few = letters.individual("AAAA" + recessive, "AAAB" + recessive);
    EXPECT_TRUE(few.build_genotypes(haplotypes, &letters.db, 1, false));
    EXPECT_EQ(few.genotypes.count, 15);  // 2^4 settings, of which 1 repeats
    EXPECT_EQ(reports.all().size(), 1u);
}

TEST(GenotypeBuilder, TheRoomIsThatOfAllIndividuals) {
    Letters letters;
    TPopHaploDB haplotypes;
    TPhenotype p = letters.individual("AAAA", "CCCC");
    const CapturedReports reports;
    EXPECT_FALSE(p.build_genotypes(haplotypes, &letters.db, 0, false, 7));
    EXPECT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(haplotypes.count, 0);
    EXPECT_TRUE(p.build_genotypes(haplotypes, &letters.db, 0, false, 8));
    EXPECT_EQ(p.genotypes.count, 8);
    // Recessive data: 2^3 settings name 6 pairs, which is known only once they are listed.
    Letters recessive;
    recessive.make_blanks(3);
    TPhenotype q = recessive.individual("AAA", "CCA");
    TPopHaploDB others;
    EXPECT_FALSE(q.build_genotypes(others, &recessive.db, 1, false, 5));
    EXPECT_EQ(q.genotypes.count, 0);
    EXPECT_EQ(reports.all().size(), 2u);
    EXPECT_TRUE(q.build_genotypes(others, &recessive.db, 1, false, 6));
    EXPECT_EQ(reports.all().size(), 2u);
}

TEST(GenotypeBuilder, OneIndividualWithTooManyEndsTheListingOfAll) {
    Letters letters;
    TPhenDB phenotypes;
    letters.append(phenotypes, std::string(33, 'A'), "CC" + std::string(31, 'A'));
    letters.append(phenotypes, std::string(33, 'A'), std::string(33, 'C'));
    letters.append(phenotypes, std::string(33, 'A'), std::string(33, 'C'));
    TPopHaploDB haplotypes;
    const CapturedReports reports;
    EXPECT_FALSE(phenotypes.build_all_genotypes(haplotypes, &letters.db, 0));
    EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, kSource, 114}}));  // told once
    for (const TPhenotype* p : phenotypes)
        EXPECT_EQ(p->genotypes.count + p->nb_genotypes, 0);
}

TEST(GenotypeBuilder, AStoreFillsUpOverSeveralIndividuals) {
    Letters letters;
    TPopHaploDB haplotypes;
    const auto list = [&](TPhenotype& p) {
        p.count_hetero_loci();
        mnd::GenotypeBuilder builder(p, haplotypes, mnd::varying_loci(p, &letters.db, false, false), 4);
        return builder.list(mnd::every_setting(), 100, 100);
    };
    TPhenotype first = letters.individual("AAC", "CCC");
    TPhenotype same = letters.individual("ACC", "CAC");
    TPhenotype other = letters.individual("AAG", "CCG");
    TPhenotype wide = letters.individual("AAA", "CCC");
    EXPECT_FALSE(list(wide));  // 8 haplotypes
    EXPECT_EQ(haplotypes.count, 0);
    EXPECT_TRUE(list(first));
    EXPECT_TRUE(list(same));  // none of its haplotypes is new
    EXPECT_EQ(haplotypes.count, 4);
    EXPECT_FALSE(list(other));
}

TEST(GenotypeBuilder, HaplotypesOfManyLociAreFewer) {
    EXPECT_GE(mnd::max_haplotypes(22), 1 << 22);
    EXPECT_LT(mnd::max_haplotypes(23), 1 << 23);
    EXPECT_LE(mnd::max_haplotypes(100000) * 8 * 100000, int64_t{1} << 31);
}

// The child has 64 MB; 20 heterozygous loci need some 500.
TEST(GenotypeBuilderDeathTest, MemoryThatRunsOutIsTooManyLociToo) {
    if (!mnd_test::kMemoryCanBeLimited) GTEST_SKIP() << "the memory of this build can't be limited";
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto run = [] {
        Letters letters;
        TPopHaploDB haplotypes;
        TPhenotype p = letters.individual(std::string(20, 'A'), std::string(20, 'C'));
        const rlimit limit = {64u << 20, 64u << 20};
        setrlimit(RLIMIT_AS, &limit);
        const CapturedReports reports;
        const bool done = p.build_genotypes(haplotypes, &letters.db, 0, false);
        const bool told = reports.all() == std::vector<Report>{{mnd::Error, kSource, 114}};
        std::_Exit(!done && told && p.genotypes.count == 0 && p.nb_genotypes == 0 ? 0 : 1);
    };
    EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "");
}

TEST(GenotypeBuilder, PhenotypesWithoutStringsHaveNoGenotype) {
    TPhenotype p("none", 1.0);
    TPopHaploDB haplotypes;
    mnd::TAlleleDB alleles;
    EXPECT_TRUE(p.build_genotypes(haplotypes, &alleles, 0, false));
    EXPECT_EQ(p.genotypes.count + haplotypes.count, 0);
}

}  // namespace
