#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "model/phenotypes.h"
#include "support/lettered_phenotypes.h"

namespace {

using mnd::TGenotype;
using mnd::TPhenDB;
using mnd::TPhenotype;
using mnd::TPopHaploDB;
using mnd::TPopHaplotype;
using mnd_test::Letters;

// Haplotypes AC 0.5, GT 0.3, AT 0.2, GC 0 and the individuals AG/CT (3 of them), A/A C/C (1).
struct Estimated {
    Letters letters;
    TPhenDB phenotypes;
    TPopHaploDB haplotypes;
    Estimated() {
        letters.append(phenotypes, "AC", "GT", 3.0);
        letters.append(phenotypes, "AC", "AC", 1.0);
        phenotypes.data[0]->set_label("i<1>");
        phenotypes.data[1]->set_label("i2");
        phenotypes.build_all_genotypes(haplotypes, &letters.db, 0);
        // In the order of the store: GT, AC, GC, AT.
        const double freq[] = {0.3, 0.5, 0.0, 0.2};
        const int rank[] = {2, 1, -1, 3};
        for (int i = 0; i < 4; ++i) {
            haplotypes.data[i]->freq = freq[i];
            haplotypes.data[i]->rank = rank[i];
        }
    }
};

TEST(GenotypeTables, PosteriorsUnderInbreeding) {
    Estimated e;
    const TPhenotype& het = *e.phenotypes.data[0];
    e.haplotypes.data[2]->freq = 0.1;
    e.phenotypes.data[0]->update_posteriors(0.0);
    EXPECT_DOUBLE_EQ(het.genotypes.data[0]->prob, 2 * 0.5 * 0.3);
    EXPECT_DOUBLE_EQ(het.genotypes.data[1]->prob, 2 * 0.1 * 0.2);
    EXPECT_DOUBLE_EQ(het.phen_prob, 0.34);
    EXPECT_DOUBLE_EQ(het.genotypes.data[0]->rel_prob, 0.30 / 0.34);
    e.phenotypes.data[0]->update_posteriors(0.25);
    EXPECT_DOUBLE_EQ(het.phen_prob, 0.75 * 0.34);
    e.phenotypes.data[1]->update_posteriors(0.25);
    // 0.5 * 0.25 + 0.75 * 0.25
    EXPECT_DOUBLE_EQ(e.phenotypes.data[1]->phen_prob, 0.3125);
    EXPECT_EQ(e.phenotypes.data[1]->genotypes.data[0]->rel_prob, 1.0);
}

TEST(GenotypeTables, AnImpossiblePhenotypeHasNoPosterior) {
    Estimated e;
    e.haplotypes.reset_freq();
    e.phenotypes.data[0]->genotypes.data[0]->rel_prob = 0.75;
    e.phenotypes.data[0]->update_posteriors(0.0);
    EXPECT_EQ(e.phenotypes.data[0]->phen_prob, 0.0);
    EXPECT_EQ(e.phenotypes.data[0]->genotypes.data[0]->rel_prob, 0.0);
}

TEST(GenotypeTables, FrequenciesOfGenotypesByRank) {
    Estimated e;
    std::ostringstream out;
    e.phenotypes.printGenotypeFrequencies(out);
    EXPECT_EQ(out.str(),
              "\nMaximum-likelihood frequencies of genotypes\n"
              "(Haplotypes that are not listed above have a negative id)\n\n"
              "--------------------------------------------------------------------------------\n"
              "   Phenotype     Count   Hapl. 1   Hapl. 2  Expected freq.   Posterior\n"
              "--------------------------------------------------------------------------------\n"
              "        i&lt;1&gt;         3                          3.0000e-01\n"
              "                               1         2      3.0000e-01    1.000000\tAC\tGT\n"
              "                         1 more resolution with a posterior below 0.0000005\n"
              "          i2         1                          2.5000e-01\n"
              "                               1         1      2.5000e-01    1.000000\tAC\tAC\n"
              "--------------------------------------------------------------------------------\n\n");
}

TEST(GenotypeTables, TheMostProbableResolutionComesFirst) {
    Estimated e;
    e.haplotypes.data[2]->freq = 1.0;  // GC, beside AT 0.2: 0.4 against 0.3
    std::ostringstream out;
    e.phenotypes.printGenotypeFrequencies(out);
    EXPECT_NE(out.str().find("         3        -1      4.0000e-01    0.571429\tAT\tGC\n"), std::string::npos)
        << out.str();
    EXPECT_LT(out.str().find("0.571429"), out.str().find("0.428571"));
    EXPECT_EQ(out.str().find("more resolution"), std::string::npos);
}

TEST(GenotypeTables, AResolutionThatPrintsAsZeroIsCountedOnly) {
    Estimated e;
    // GC and AT beside 2 0.5 0.3: posteriors 6.67e-07 and 4.0e-07
    for (const auto& [f, is_listed] : {std::pair{1e-06, true}, std::pair{6e-07, false}}) {
        e.haplotypes.data[2]->freq = f;
        e.haplotypes.data[3]->freq = 0.1;
        std::ostringstream out;
        e.phenotypes.printGenotypeFrequencies(out);
        EXPECT_EQ(out.str().find("0.000001\t") != std::string::npos, is_listed) << out.str();
        EXPECT_EQ(out.str().find("1 more resolution") == std::string::npos, is_listed);
    }
}

TEST(GenotypeTables, ACompactedStoreShowsAllLoci) {
    Letters letters;
    TPhenDB phenotypes;
    letters.append(phenotypes, "XAC", "XGT");
    TPopHaploDB haplotypes;
    phenotypes.build_all_genotypes(haplotypes, &letters.db, 0);
    haplotypes.compact(&letters.db, '?');
    for (TPopHaplotype* h : haplotypes)
        h->freq = 0.25;
    ASSERT_EQ(haplotypes.data[0]->num_loci(), 2);
    std::ostringstream whole, kept;
    phenotypes.printGenotypeFrequencies(whole, 0.0, &haplotypes);
    phenotypes.printGenotypeFrequencies(kept);
    EXPECT_NE(whole.str().find("0.500000\tXAC\tXGT\n"), std::string::npos) << whole.str();
    EXPECT_NE(kept.str().find("0.500000\tAC\tGT\n"), std::string::npos) << kept.str();
}

TEST(GenotypeTables, AllGenotypesWithTheirProbabilities) {
    Estimated e;
    e.phenotypes.update_genotypes();
    e.haplotypes.data[0]->separator = ' ';
    std::ostringstream out;
    e.phenotypes.print_all_genotypes(out);
    EXPECT_EQ(out.str(),
              "Phenotype   : i&lt;1&gt;\n"
              "Individuals : 3\n"
              "Genotypes   : 2\n"
              "Probability : 3.0000e-01\n"
              "      3.0000e-01    1.000000  AC\n"
              "                              G T \n"
              "      0.0000e+00    0.000000  AT\n"
              "                              GC\n"
              "\n"
              "Phenotype   : i2\n"
              "Individuals : 1\n"
              "Genotypes   : 1\n"
              "Probability : 2.5000e-01\n"
              "      2.5000e-01    1.000000  AC\n"
              "                              AC\n"
              "\n");
}

TEST(GenotypeTables, TheFormatOfTheStreamStays) {
    Estimated e;
    std::ostringstream plain, odd;
    e.phenotypes.printGenotypeFrequencies(plain);
    e.phenotypes.print_all_genotypes(plain);
    e.phenotypes.percent_correct_gametic_phase(plain);
    odd << std::hex << std::left << std::scientific;
    odd.precision(2);
    odd.fill('*');
    e.phenotypes.printGenotypeFrequencies(odd);
    e.phenotypes.print_all_genotypes(odd);
    e.phenotypes.percent_correct_gametic_phase(odd);
    EXPECT_EQ(odd.str(), plain.str());
    EXPECT_EQ(odd.precision(), 2);
    EXPECT_EQ(odd.fill(), '*');
}

TEST(GenotypeTables, PhaseAsReadIsComparedWithTheMostProbable) {
    Letters letters;
    TPhenDB phenotypes;
    letters.append(phenotypes, "AC", "GT", 3.0);  // as read: AC/GT
    letters.append(phenotypes, "AT", "GC", 1.0);  // the same phenotype, read the other way
    letters.append(phenotypes, "AC", "AC", 9.0);  // one resolution only: does not count
    TPopHaploDB haplotypes;
    phenotypes.build_all_genotypes(haplotypes, &letters.db, 0);
    const auto percent = [&](double f_as_first, double f_other) {
        for (TPopHaplotype* h : haplotypes) {
            const std::string name = mnd_test::letters_of(*h);
            h->freq = name == "AC" || name == "GT" ? f_as_first : f_other;
        }
        phenotypes.update_genotypes();
        std::ostringstream out;
        const double result = phenotypes.percent_correct_gametic_phase(out);
        EXPECT_NE(out.str().find("Individuals with two or more resolutions        : 4\n"), std::string::npos);
        return result;
    };
    EXPECT_DOUBLE_EQ(percent(0.4, 0.1), 75.0);
    EXPECT_DOUBLE_EQ(percent(0.1, 0.4), 25.0);
    EXPECT_DOUBLE_EQ(percent(0.25, 0.25), 50.0);  // ties are shared
    std::ostringstream out;
    phenotypes.percent_correct_gametic_phase(out);
    EXPECT_NE(out.str().find("Percentage whose phase as read is most probable : 50.00\n"), std::string::npos);
}

TEST(GenotypeTables, PhaseAsReadOfACompactedStore) {
    Letters letters;
    TPhenDB phenotypes;
    letters.append(phenotypes, "XAC", "XGT");
    TPopHaploDB haplotypes;
    phenotypes.build_all_genotypes(haplotypes, &letters.db, 0);
    haplotypes.compact(&letters.db, '?');
    for (TPopHaplotype* h : haplotypes)
        h->freq = mnd_test::letters_of(*h) == "AC" ? 0.4 : 0.2;
    phenotypes.update_genotypes();
    std::ostringstream out;
    EXPECT_EQ(phenotypes.percent_correct_gametic_phase(out, &haplotypes), 100.0);
}

TEST(GenotypeTables, PhaseOfUnambiguousIndividualsIsRight) {
    Letters letters;
    TPhenDB phenotypes;
    letters.append(phenotypes, "AC", "AC");
    TPopHaploDB haplotypes;
    phenotypes.build_all_genotypes(haplotypes, &letters.db, 0);
    std::ostringstream out;
    EXPECT_EQ(phenotypes.percent_correct_gametic_phase(out), 100.0);
}

}  // namespace
