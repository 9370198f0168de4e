#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "model/phenotypes.h"
#include "support/captured_reports.h"
#include "support/lettered_phenotypes.h"
#include "support/plain_resolutions.h"

namespace {

using mnd::TGenotype;
using mnd::TPhenDB;
using mnd::TPhenotype;
using mnd::TPopHaploDB;
using mnd::TPopHaplotype;
using mnd_test::Alleles;
using mnd_test::CapturedReports;
using mnd_test::Letters;
using mnd_test::letters_of;
using mnd_test::PlainResolutions;
using mnd_test::Report;

// A haplotype on the loci of the mask, with its frequency, into the store.
void estimate(TPopHaploDB& store, const TPopHaplotype& whole, const std::vector<int>& mask, double freq) {
    TPopHaplotype part;
    part.build_sub_haplotype(mask.data(), whole);
    store.insert(part, 0.0)->freq = freq;
}

std::vector<std::string> pairs_in_order(const TPhenotype& p) {
    std::vector<std::string> pairs;
    for (const TGenotype* g : p.genotypes)
        pairs.push_back(letters_of(*g->hapl_1) + "/" + letters_of(*g->hapl_2));
    return pairs;
}

// Three loci; AC and GT were found at the first two.
struct ThreeLoci {
    Letters letters;
    TPopHaploDB before, after;
    std::vector<int> first_two = {1, 1, 0};
    TPhenotype p = letters.individual("ACA", "GTC");
    ThreeLoci() {
        estimate(before, *p.pseudo_hapl[0], first_two, 0.5);
        estimate(before, *p.pseudo_hapl[1], first_two, 0.25);
    }
    bool build(double threshold) {
        return p.build_compatible_genotypes(before, first_two.data(), after, &letters.db, 0, threshold);
    }
};

TEST(CompatibleGenotypes, OnlyPairsWithBothPartsEstimatedBefore) {
    ThreeLoci data;
    EXPECT_TRUE(data.build(0.0));
    EXPECT_EQ(pairs_in_order(data.p), (std::vector<std::string>{"ACA/GTC", "ACC/GTA"}));
    EXPECT_EQ(data.p.nb_genotypes, 2);
    EXPECT_EQ(data.p.nb_het_loci, 3);
    EXPECT_EQ(data.p.fully_homozygous, 0);
    std::vector<std::string> stored;
    for (const TPopHaplotype* h : data.after)
        stored.push_back(letters_of(*h));
    EXPECT_EQ(stored, (std::vector<std::string>{"GTC", "ACA", "GTA", "ACC"}));  // the second first
}

TEST(CompatibleGenotypes, FrequenciesMustExceedTheThreshold) {
    ThreeLoci data;
    EXPECT_TRUE(data.build(0.25));
    EXPECT_EQ(data.p.genotypes.count, 0);
    EXPECT_EQ(data.after.count, 0);
    EXPECT_TRUE(data.build(0.2499));
    EXPECT_EQ(data.p.genotypes.count, 2);
    data.before.data[1]->freq = 0.0;
    EXPECT_TRUE(data.build(0.0));
    EXPECT_EQ(data.p.genotypes.count, 0);
    EXPECT_EQ(data.p.nb_genotypes, 0);
}

TEST(CompatibleGenotypes, AHomozygoteNeedsItsOnePart) {
    Letters letters;
    std::vector<int> mask = {1, 0};
    TPhenotype p = letters.individual("AC", "AC");
    TPhenotype other = letters.individual("GC", "GC");
    TPopHaploDB before, after;
    estimate(before, *p.pseudo_hapl[0], mask, 1.0);
    EXPECT_TRUE(p.build_compatible_genotypes(before, mask.data(), after, &letters.db, 0, 0.0));
    EXPECT_EQ(pairs_in_order(p), (std::vector<std::string>{"AC/AC"}));
    EXPECT_EQ(p.fully_homozygous, 1);
    EXPECT_EQ(after.data[0]->freq, 2.0);
    EXPECT_TRUE(other.build_compatible_genotypes(before, mask.data(), after, &letters.db, 0, 0.0));
    EXPECT_EQ(other.genotypes.count, 0);
    EXPECT_EQ(other.fully_homozygous, 1);
    EXPECT_EQ(after.count, 1);
}

// ---- Against the plain count

// A random project of individuals and a random store of parts, of which some have frequency 0.
struct RandomWindow {
    Letters letters;
    TPhenDB phenotypes;
    std::vector<int> mask;
    TPopHaploDB before;

    // all: the share of the parts of all resolutions that is in the store
    RandomWindow(std::mt19937& random, const std::string& alphabet, bool recessive, double all) {
        const int loci = 1 + static_cast<int>(random() % 7);
        letters.make_blanks(loci);
        for (int l = 0; l < loci; ++l)
            mask.push_back(static_cast<int>(random() % 2));
        if (std::count(mask.begin(), mask.end(), 1) == 0) mask[0] = 1;
        for (int i = 0; i < 4; ++i) {
            std::string first, second;
            for (int l = 0; l < loci; ++l) {
                first += alphabet[random() % alphabet.size()];
                second += alphabet[random() % alphabet.size()];
            }
            letters.append(phenotypes, first, second);
        }
        TPopHaploDB everything;
        phenotypes.build_all_genotypes(everything, &letters.db, recessive ? 1 : 0);
        std::uniform_real_distribution<double> u;
        for (const TPopHaplotype* h : everything) {
            if (u(random) < all) estimate(before, *h, mask, static_cast<double>(random() % 3));
        }
        phenotypes.kill_gen_lists();
    }

    void add_others(std::mt19937& random, int n) {
        for (int i = 0; i < n; ++i) {
            std::string text;
            for (std::size_t l = 0; l < mask.size(); ++l)
                text += static_cast<char>('a' + random() % 26);
            estimate(before, *letters.individual(text, text).pseudo_hapl[0], mask, 0.5);
        }
    }
};

Alleles part_of(const Alleles& whole, const std::vector<int>& mask) {
    Alleles part;
    for (mnd::TAllele* allele : whole) {
        if (mask[static_cast<std::size_t>(allele->locus)] != 0) part.push_back(allele);
    }
    return part;
}

void expect_the_plain_list(const std::string& alphabet, bool recessive, double all, int others) {
    std::mt19937 random(17);
    long kept = 0;
    for (int round = 0; round < 150; ++round) {
        RandomWindow window(random, alphabet, recessive, all);
        window.add_others(random, others);
        for (const double threshold : {0.0, 1.0}) {
            std::map<Alleles, double> estimated;
            for (const TPopHaplotype* h : window.before)
                estimated[mnd_test::alleles_of(*h)] = h->freq;
            const auto exists = [&](const Alleles& whole) {
                const auto found = estimated.find(part_of(whole, window.mask));
                return found != estimated.end() && found->second > threshold;
            };
            PlainResolutions plain;
            for (const TPhenotype* p : window.phenotypes) {
                plain.add(*p, window.letters.db, recessive,
                          [&](const Alleles& a, const Alleles& b) { return exists(a) && exists(b); });
            }
            TPopHaploDB after;
            ASSERT_TRUE(window.phenotypes.build_all_compatible_genotypes(
                window.before, window.mask.data(), after, &window.letters.db, recessive ? 1 : 0, threshold));
            ASSERT_NO_FATAL_FAILURE(
                plain.expect_same(after, {window.phenotypes.begin(), window.phenotypes.end()}));
            kept += after.count;
        }
    }
    EXPECT_GT(kept, 0);
}

// A store of few haplotypes is gone through; with many others, the settings of the part are.
TEST(CompatibleGenotypes, ListIsThatOfThePlainCount) {
    for (const int others : {0, 200}) {
        expect_the_plain_list("AB", false, 0.5, others);
        expect_the_plain_list("AB", false, 0.9, others);
        expect_the_plain_list("ABC", false, 0.7, others);
    }
}

TEST(CompatibleGenotypes, ListIsThatOfThePlainCountForRecessiveData) {
    for (const int others : {0, 200}) {
        expect_the_plain_list("0A", true, 0.7, others);
        expect_the_plain_list("0AB", true, 0.9, others);
        expect_the_plain_list("AB", true, 0.9, others);
    }
}

TEST(CompatibleGenotypes, WithEveryPartEstimatedTheListIsTheWholeOne) {
    Letters letters;
    TPopHaploDB parts, whole, after;
    std::vector<int> mask = {0, 1, 0, 1, 1, 0};
    TPhenotype p = letters.individual("ABCABC", "BCBBAA");
    ASSERT_TRUE(p.build_genotypes(whole, &letters.db, 0, false));
    const std::vector<std::string> all = pairs_in_order(p);
    for (const TPopHaplotype* h : whole)
        estimate(parts, *h, mask, 0.1);
    ASSERT_TRUE(p.build_compatible_genotypes(parts, mask.data(), after, &letters.db, 0, 0.0));
    EXPECT_EQ(pairs_in_order(p), all);
    EXPECT_EQ(after.count, whole.count);
}

// ---- Many loci

// An individual heterozygous at all loci, and a store of both its strings and of n others on all
// loci but the last five.
struct LongIndividual {
    Letters letters;
    TPopHaploDB before, after;
    std::vector<int> mask;
    TPhenotype p;
    LongIndividual(int loci, int n) {
        std::mt19937 random(5);
        p = letters.individual(std::string(static_cast<std::size_t>(loci), 'A'),
                               std::string(static_cast<std::size_t>(loci), 'C'));
        mask.assign(static_cast<std::size_t>(loci), 1);
        for (int l = loci - 5; l < loci; ++l)
            mask[static_cast<std::size_t>(l)] = 0;
        estimate(before, *p.pseudo_hapl[0], mask, 0.5);
        estimate(before, *p.pseudo_hapl[1], mask, 0.5);
        for (int i = 0; i < n; ++i) {
            TPopHaplotype h(*p.pseudo_hapl[0]);
            for (int l = 0; l < loci; ++l)
                h.alleles.data[l] = p.pseudo_hapl[random() % 2]->allele(l);
            estimate(before, h, mask, 0.1);
        }
    }
    bool build(int64_t room = mnd::kMaxGenotypes) {
        return p.build_compatible_genotypes(before, mask.data(), after, &letters.db, 0, 0.0, room);
    }
};

TEST(CompatibleGenotypes, ThirtyAndMoreHeterozygousLociAreNoLimit) {
    for (const int loci : {30, 64, 300}) {
        LongIndividual individual(loci, 1000);
        ASSERT_TRUE(individual.build());
        EXPECT_EQ(individual.p.nb_het_loci, loci);
        // One pair of parts, and all settings of the five new loci.
        EXPECT_EQ(individual.p.genotypes.count, 32);
        EXPECT_EQ(individual.after.count, 64);
    }
}

TEST(CompatibleGenotypes, TooManyAreReported) {
    const CapturedReports reports;
    const Report too_many = {mnd::Error, "TPhenotype::build_compatible_genotypes()", 114};
    LongIndividual individual(30, 10);
    EXPECT_FALSE(individual.build(31));
    EXPECT_EQ(reports.all(), std::vector<Report>{too_many});
    EXPECT_EQ(individual.p.genotypes.count + individual.after.count, 0);
    EXPECT_TRUE(individual.build(32));
    // Nothing but the first locus was estimated: 2^39 pairs.
    LongIndividual wide(40, 0);
    std::fill(wide.mask.begin() + 1, wide.mask.end(), 0);
    wide.before.empty();
    estimate(wide.before, *wide.p.pseudo_hapl[0], wide.mask, 0.5);
    estimate(wide.before, *wide.p.pseudo_hapl[1], wide.mask, 0.5);
    EXPECT_FALSE(wide.build());
    EXPECT_EQ(reports.all(), (std::vector<Report>{too_many, too_many}));
}

TEST(CompatibleGenotypes, DoNotMoveThePositionsOfAlleles) {
    ThreeLoci data;
    for (mnd::TAllele* allele : data.p.pseudo_hapl[0]->alleles)
        allele->hapl_pos = 7;
    ASSERT_TRUE(data.build(0.0));
    for (const mnd::TAllele* allele : data.p.pseudo_hapl[0]->alleles)
        EXPECT_EQ(allele->hapl_pos, 7);
}

}  // namespace
