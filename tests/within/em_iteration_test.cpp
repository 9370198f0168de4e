#include "within/em_iteration.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

#include "within/em_sample.h"

namespace {

using mnd::EmIteration;
using mnd::EmResolutions;
using mnd_test::EmTest;
using mnd_test::GenotypeSample;
using mnd_test::Individuals;

using EmIterationRandom = EmTest;

double sum(const std::vector<double>& values) {
    return std::accumulate(values.begin(), values.end(), 0.0);
}

// n phenotypes of random alleles, three at each locus.
std::vector<Individuals> random_individuals(int n, int loci) {
    const auto text = [loci] {
        std::string result;
        for (int l = 0; l < loci; ++l)
            result += static_cast<char>('A' + static_cast<int>(3.0 * mnd::ran3()));
        return result;
    };
    std::vector<Individuals> all;
    for (int i = 0; i < n; ++i)
        all.push_back({text(), text(), 1.0 + std::floor(4.0 * mnd::ran3())});
    return all;
}

TEST(EmResolutions, ListsGenotypesByNumberOfHaplotypeAndKind) {
    GenotypeSample data({{"AA", "AA"}, {"AA", "AB", 3.0}, {"AA", "BB"}});
    mnd::TPopHaploDB haplo;
    ASSERT_TRUE(data.sample.phen_db.build_all_genotypes(haplo, &data.alleles, 0));
    const EmResolutions resolutions(data.sample.phen_db, haplo);
    // Haplotypes in order: AA; AB; BB and AA, then BA and AB.
    ASSERT_EQ(haplo.count, 4);
    ASSERT_EQ(resolutions.phenotypes(), 3U);
    EXPECT_EQ(resolutions.kind(0), EmResolutions::kHomozygous);
    EXPECT_EQ(resolutions.kind(1), EmResolutions::kOne);
    EXPECT_EQ(resolutions.kind(2), EmResolutions::kMany);
    EXPECT_EQ(resolutions.count(1), 3.0);
    EXPECT_EQ(resolutions.begin(2), 2U);
    EXPECT_EQ(resolutions.end(2), 4U);
    EXPECT_EQ(resolutions.most_genotypes(), 2U);
    EXPECT_EQ(resolutions.hapl_1(0), 0U);
    EXPECT_EQ(resolutions.hapl_2(0), 0U);
    EXPECT_EQ(resolutions.hapl_1(1), 0U);
    EXPECT_EQ(resolutions.hapl_2(1), 1U);
    EXPECT_EQ(resolutions.hapl_1(2), 0U);
    EXPECT_EQ(resolutions.hapl_2(2), 2U);
    EXPECT_EQ(resolutions.hapl_1(3), 1U);
    EXPECT_EQ(resolutions.hapl_2(3), 3U);
}

// A single genotype of one haplotype twice need not come from a homozygote as read.
TEST(EmResolutions, TellsOneGenotypeOfTwoEqualHaplotypesFromAHomozygote) {
    EmResolutions resolutions;
    resolutions.begin_phenotype(2.0, false);
    resolutions.add_genotype(0, 0);
    resolutions.begin_phenotype(1.0, false);
    EXPECT_EQ(resolutions.kind(0), EmResolutions::kOne);
    EXPECT_EQ(resolutions.kind(1), EmResolutions::kNone);
    EmIteration iteration(resolutions, 1, {6.0, false, false});
    iteration.freq[0] = 0.5;
    iteration.step();
    EXPECT_DOUBLE_EQ(iteration.prob[0], 0.25);
    EXPECT_EQ(iteration.prob[1], 0.0);
    EXPECT_DOUBLE_EQ(iteration.freq[0], 4.0 / 6.0);
}

// Two double heterozygotes and two homozygotes AA, from AA 0.4, BB 0.2, AB 0.1, BA 0.3:
// AA/BB has probability 2 x 0.4 x 0.2 = 0.16, AB/BA 2 x 0.1 x 0.3 = 0.06. AA gets
// (4 + 2 x 0.16/0.22) / 8, BB (2 x 0.16/0.22) / 8, AB and BA (2 x 0.06/0.22) / 8.
TEST(EmIteration, SharesTheGenesOfAHeterozygoteByTheProbabilityOfItsGenotypes) {
    EmResolutions resolutions;
    resolutions.begin_phenotype(2.0, true);
    resolutions.add_genotype(0, 0);
    resolutions.begin_phenotype(2.0, false);
    resolutions.add_genotype(0, 1);
    resolutions.add_genotype(2, 3);
    EmIteration iteration(resolutions, 4, {8.0, false, false});
    iteration.freq = iteration.old_freq = {0.4, 0.2, 0.1, 0.3};
    const double change = iteration.step();
    EXPECT_NEAR(iteration.prob[0], 0.16, 1e-15);
    EXPECT_NEAR(iteration.prob[1], 0.22, 1e-15);
    EXPECT_NEAR(iteration.freq[0], (4.0 + 0.32 / 0.22) / 8.0, 1e-15);
    EXPECT_NEAR(iteration.freq[1], 0.32 / 0.22 / 8.0, 1e-15);
    EXPECT_NEAR(iteration.freq[2], 0.12 / 0.22 / 8.0, 1e-15);
    EXPECT_NEAR(iteration.freq[3], 0.12 / 0.22 / 8.0, 1e-15);
    const double expected = std::fabs(iteration.freq[0] - 0.4) + std::fabs(iteration.freq[1] - 0.2) +
                            std::fabs(iteration.freq[2] - 0.1) + std::fabs(iteration.freq[3] - 0.3);
    EXPECT_NEAR(change, expected, 1e-15);
    EXPECT_EQ(iteration.old_freq, iteration.freq);
    EXPECT_NEAR(iteration.ln_likelihood(), 2.0 * std::log(0.16) + 2.0 * std::log(0.22), 1e-14);
}

// Three homozygotes AA and one AB, with p(A) = 0.6, p(B) = 0.4, F = 0.25:
// identical copies of A: 3 x 0.25 / (0.6 x 0.75 + 0.25) = 0.75 / 0.7.
// Genotypes: AA 0.6 x 0.25 + 0.75 x 0.36 = 0.42; AB 2 x 0.75 x 0.6 x 0.4 = 0.36.
// p(A) = (7 - 0.75/0.7) / (8 - 0.75/0.7), p(B) = 1 / (8 - 0.75/0.7).
TEST(EmIteration, CountsIdenticalCopiesOnce) {
    EmResolutions resolutions;
    resolutions.begin_phenotype(3.0, true);
    resolutions.add_genotype(0, 0);
    resolutions.begin_phenotype(1.0, false);
    resolutions.add_genotype(0, 1);
    EmIteration iteration(resolutions, 2, {8.0, true, false});
    iteration.freq = iteration.old_freq = {0.6, 0.4};
    iteration.F = 0.25;
    iteration.step();
    const double identical = 0.75 / 0.7;
    EXPECT_NEAR(iteration.ibd[0], identical, 1e-15);
    EXPECT_EQ(iteration.ibd[1], 0.0);
    EXPECT_NEAR(iteration.prob[0], 0.42, 1e-15);
    EXPECT_NEAR(iteration.prob[1], 0.36, 1e-15);
    EXPECT_NEAR(iteration.freq[0], (7.0 - identical) / (8.0 - identical), 1e-15);
    EXPECT_NEAR(iteration.freq[1], 1.0 / (8.0 - identical), 1e-15);
    EXPECT_EQ(iteration.F, 0.25);
}

// The same individuals one by one: all of them count, and the frequencies still sum to 1. F
// follows from the identical copies, over 4 individuals, before the genotypes are weighed.
TEST(EmIteration, AddsUpTheIdenticalCopiesOfSeveralEqualHomozygotes) {
    EmResolutions resolutions;
    for (int i = 0; i < 3; ++i) {
        resolutions.begin_phenotype(1.0, true);
        resolutions.add_genotype(0, 0);
    }
    resolutions.begin_phenotype(1.0, false);
    resolutions.add_genotype(0, 1);
    EmIteration iteration(resolutions, 2, {8.0, true, true});
    iteration.freq = iteration.old_freq = {0.6, 0.4};
    iteration.F = 0.25;
    iteration.step();
    const double F = 0.75 / 0.7 / 4.0;
    EXPECT_NEAR(iteration.ibd[0], 0.75 / 0.7, 1e-15);
    EXPECT_NEAR(iteration.F, F, 1e-15);
    EXPECT_NEAR(iteration.prob[0], 0.6 * F + (1.0 - F) * 0.36, 1e-15);
    EXPECT_NEAR(sum(iteration.freq), 1.0, 1e-15);
}

TEST(EmIteration, KeepsTheIdenticalCopiesOfHaplotypesWithoutHomozygotes) {
    EmResolutions resolutions;
    resolutions.begin_phenotype(1.0, true);
    resolutions.add_genotype(0, 0);
    resolutions.begin_phenotype(1.0, false);
    resolutions.add_genotype(0, 1);
    EmIteration iteration(resolutions, 2, {4.0, true, false});
    iteration.freq = iteration.old_freq = {0.5, 0.5};
    iteration.ibd = {9.0, 0.125};
    iteration.F = 0.5;
    iteration.step();
    EXPECT_NEAR(iteration.ibd[0], 0.5 / 0.75, 1e-15);
    EXPECT_EQ(iteration.ibd[1], 0.125);
}

TEST(EmIteration, PassesOverPhenotypesWithoutProbability) {
    EmResolutions resolutions;
    resolutions.begin_phenotype(2.0, false);
    resolutions.add_genotype(0, 1);
    resolutions.add_genotype(0, 2);
    resolutions.begin_phenotype(2.0, true);
    resolutions.add_genotype(0, 0);
    EmIteration iteration(resolutions, 3, {8.0, false, false});
    iteration.freq = iteration.old_freq = {1.0, 0.0, 0.0};
    iteration.step();
    EXPECT_EQ(iteration.prob[0], 0.0);
    EXPECT_DOUBLE_EQ(iteration.freq[0], 0.5);
    EXPECT_EQ(iteration.freq[1], 0.0);
    EXPECT_EQ(iteration.ln_likelihood(), mnd::kLowestLogLikelihood);
}

TEST(EmIteration, TakesAProbabilityThatIsNoNumberAsNone) {
    EmResolutions resolutions;
    resolutions.begin_phenotype(2.0, false);
    resolutions.add_genotype(0, 1);
    resolutions.add_genotype(0, 2);
    EmIteration iteration(resolutions, 3, {4.0, false, false});
    iteration.freq = {std::numeric_limits<double>::quiet_NaN(), 0.5, 0.5};
    iteration.step();
    EXPECT_EQ(iteration.ln_likelihood(), mnd::kLowestLogLikelihood);
    for (const double f : iteration.freq)
        EXPECT_EQ(f, 0.0);
}

// With F = 0 a homozygote whose haplotype has no frequency leaves 0 over 0.
TEST(EmIteration, ExpectsNoIdenticalCopiesOfAHaplotypeWithoutFrequency) {
    EmResolutions resolutions;
    resolutions.begin_phenotype(1.0, true);
    resolutions.add_genotype(0, 0);
    EmIteration iteration(resolutions, 1, {2.0, true, true});
    iteration.step();
    EXPECT_EQ(iteration.ibd[0], 0.0);
    EXPECT_EQ(iteration.F, 0.0);
    EXPECT_DOUBLE_EQ(iteration.freq[0], 1.0);
}

TEST_F(EmIterationRandom, NeverLowersTheLikelihood) {
    for (int data_set = 0; data_set < 20; ++data_set) {
        GenotypeSample data(random_individuals(30, 2 + data_set % 4));
        mnd::TPopHaploDB haplo;
        ASSERT_TRUE(data.sample.phen_db.build_all_genotypes(haplo, &data.alleles, 0));
        const EmResolutions resolutions(data.sample.phen_db, haplo);
        for (const bool inbreeding : {false, true}) {
            EmIteration iteration(resolutions, static_cast<std::size_t>(haplo.count),
                                  {data.sample.sample_size, inbreeding, false});
            haplo.assign_rand_init_freq(1000);
            for (long h = 0; h < haplo.count; ++h)
                iteration.freq[static_cast<std::size_t>(h)] = haplo.data[h]->freq;
            iteration.F = inbreeding ? 0.2 : 0.0;
            iteration.step();
            double before = iteration.ln_likelihood();
            for (int i = 0; i < 100; ++i) {
                iteration.step();
                const double now = iteration.ln_likelihood();
                ASSERT_GE(now, before - 1e-10 * std::fabs(before)) << data_set << ' ' << i;
                before = now;
                ASSERT_NEAR(sum(iteration.freq), 1.0, 1e-12);
            }
        }
    }
}

}  // namespace
