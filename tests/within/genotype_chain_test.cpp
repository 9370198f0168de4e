#include "within/genotype_chain.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <numeric>

#include "foundation/random.h"
#include "support/captured_reports.h"
#include "support/seeded_stream.h"
#include "within/plain_genotype_chain.h"

namespace {

using mnd::CountTable;
using mnd::genotype_swap_ratio;
using mnd::GenotypeChain;
using mnd_test::allele_counts;
using mnd_test::as_counts;
using mnd_test::as_table;
using mnd_test::GenotypeCounts;
using mnd_test::PlainChain;

// --- The ratio, case by case. Tables of three alleles; the working gives f' and 2^change of
// heterozygotes.

const GenotypeCounts kThreeAlleles = {{5, 4, 7}, {0, 3, 2}, {0, 0, 6}};

double ratio(const GenotypeCounts& counts, int i1, int i2, int i3, int i4) {
    return genotype_swap_ratio(as_table(counts), i1, i2, i3, i4);
}

TEST(GenotypeSwapRatio, TwoHomozygotesGiveOneHeterozygoteTwice) {
    // (0,0) and (1,1) to (0,1) twice: 5 x 3 / (5 x 6) x 4
    EXPECT_EQ(ratio(kThreeAlleles, 0, 0, 1, 1), 2.0);
    EXPECT_EQ(ratio(kThreeAlleles, 1, 1, 0, 0), 2.0);
}

TEST(GenotypeSwapRatio, OneHeterozygoteTwiceGivesTwoHomozygotes) {
    // (0,1) twice to (0,0) and (1,1): 4 x 3 / (6 x 4) / 4
    EXPECT_EQ(ratio(kThreeAlleles, 0, 1, 1, 0), 0.125);
    EXPECT_EQ(ratio(kThreeAlleles, 1, 0, 0, 1), 0.125);
}

TEST(GenotypeSwapRatio, AHomozygoteAndAHeterozygoteGiveTwoHeterozygotes) {
    // (0,0) and (1,2) to (0,2) and (0,1): 5 x 2 / (8 x 5) x 2
    EXPECT_EQ(ratio(kThreeAlleles, 0, 0, 1, 2), 0.5);
    // (1,2) and (0,0), the other way round, to (1,0) and (2,0)
    EXPECT_EQ(ratio(kThreeAlleles, 1, 2, 0, 0), 0.5);
}

TEST(GenotypeSwapRatio, TwoHeterozygotesGiveAHomozygoteAndAHeterozygote) {
    // (0,1) and (2,0) to (0,0) and (1,2): 4 x 7 / (6 x 3) / 2
    EXPECT_DOUBLE_EQ(ratio(kThreeAlleles, 0, 1, 2, 0), 7.0 / 9.0);
    // (1,0) and (0,2) to (1,2) and (0,0)
    EXPECT_DOUBLE_EQ(ratio(kThreeAlleles, 1, 0, 0, 2), 7.0 / 9.0);
}

TEST(GenotypeSwapRatio, FourAllelesKeepTheNumberOfHeterozygotes) {
    const GenotypeCounts counts = {{0, 6, 1, 2}, {0, 0, 3, 4}, {0, 0, 0, 5}, {0, 0, 0, 0}};
    // (0,1) and (2,3) to (0,3) and (1,2): 6 x 5 / (3 x 4)
    EXPECT_EQ(ratio(counts, 0, 1, 2, 3), 2.5);
}

TEST(GenotypeSwapRatio, IsZeroWithoutTheGenotypes) {
    EXPECT_EQ(ratio({{0, 4}, {0, 3}}, 0, 0, 1, 1), 0.0);
    EXPECT_EQ(ratio({{4, 4}, {0, 0}}, 0, 0, 1, 1), 0.0);
    EXPECT_EQ(ratio({{4, 0}, {0, 4}}, 0, 1, 1, 0), 0.0);
    EXPECT_EQ(ratio({{4, 1}, {0, 4}}, 0, 1, 1, 0), 0.0);  // one heterozygote is not two
    EXPECT_EQ(ratio({{4, 2}, {0, 4}}, 0, 1, 1, 0), 2.0 / 25.0 / 4.0);
    EXPECT_EQ(ratio({{5, 4, 7}, {0, 3, 0}, {0, 0, 6}}, 0, 0, 1, 2), 0.0);
}

// All tables of allele counts, all index quadruples: the ratio is that of the probabilities, the
// way back has the reciprocal one, and each way there has one way back. With equal chances of all
// quadruples and acceptance below the ratio the chain is in balance in every detail.
void expect_detailed_balance(const std::vector<int>& alleles) {
    const int n = static_cast<int>(alleles.size());
    std::map<GenotypeCounts, double> log_weights;
    mnd_test::for_each_table(
        alleles, [&](const GenotypeCounts& table) { log_weights[table] = mnd_test::log_weight(table); });
    std::map<std::pair<GenotypeCounts, GenotypeCounts>, double> flow;
    for (const auto& [table, log_weight] : log_weights) {
        for (int i1 = 0; i1 < n; ++i1) {
            for (int i2 = 0; i2 < n; ++i2) {
                for (int i3 = 0; i3 < n; ++i3) {
                    for (int i4 = 0; i4 < n; ++i4) {
                        if (i3 == i1 || i4 == i2) continue;
                        const double r = ratio(table, i1, i2, i3, i4);
                        PlainChain next(table);
                        --next.cell(i1, i2);
                        --next.cell(i3, i4);
                        ++next.cell(i1, i4);
                        ++next.cell(i2, i3);
                        const auto to = log_weights.find(next.table);
                        if (to == log_weights.end()) {  // a negative count
                            EXPECT_EQ(r, 0.0);
                            continue;
                        }
                        ASSERT_NEAR(std::log(r), to->second - log_weight, 1e-12);
                        flow[{table, next.table}] += std::exp(log_weight) * std::min(1.0, r);
                    }
                }
            }
        }
    }
    ASSERT_FALSE(flow.empty());
    for (const auto& [way, rate] : flow) {
        const auto back = flow.find({way.second, way.first});
        ASSERT_NE(back, flow.end());
        EXPECT_NEAR(rate, back->second, 1e-12 * rate);
    }
}

TEST(GenotypeSwapRatio, IsInDetailedBalanceOverTwoAlleles) {
    expect_detailed_balance({7, 9});
}
TEST(GenotypeSwapRatio, IsInDetailedBalanceOverThreeAlleles) {
    expect_detailed_balance({5, 4, 3});
}
TEST(GenotypeSwapRatio, IsInDetailedBalanceOverFourAlleles) {
    expect_detailed_balance({3, 3, 2, 2});
}

// --- Chains

class Chain : public mnd_test::SeededStream {
protected:
    // A random table; about half of the heterozygotes do not occur.
    GenotypeCounts random_counts(int n, int largest) {
        GenotypeCounts counts(static_cast<std::size_t>(n), std::vector<int>(static_cast<std::size_t>(n), 0));
        for (std::size_t i = 0; i < counts.size(); ++i) {
            for (std::size_t j = i; j < counts.size(); ++j)
                counts[i][j] = i != j && next() < 0.5 ? 0 : 1 + static_cast<int>(next() * largest);
        }
        return counts;
    }
    static double after_seed(int draws) {
        seed();
        for (int i = 0; i < draws; ++i)
            next();
        return next();
    }
};

TEST_F(Chain, EachStepIsThatOfAPlainChain) {
    for (const int n : {2, 3, 4, 7, 20}) {
        const GenotypeCounts start = random_counts(n, 12);
        constexpr int kSteps = 3000;
        std::vector<double> ratios;
        std::vector<std::uint64_t> draws;
        seed();
        mnd::reset_draws_taken();
        PlainChain plain(start);
        for (int k = 0; k < kSteps; ++k) {
            ratios.push_back(plain.step());
            draws.push_back(mnd::draws_taken());
        }
        const double behind = next();
        CountTable table = as_table(start);
        GenotypeChain chain(table);
        seed();
        mnd::reset_draws_taken();
        for (std::size_t k = 0; k < kSteps; ++k) {
            ASSERT_TRUE(chain.run(1));
            ASSERT_EQ(chain.last_ratio(), ratios[k]) << n << " alleles, step " << k;
            ASSERT_EQ(mnd::draws_taken(), draws[k]) << n << " alleles, step " << k;
        }
        EXPECT_EQ(next(), behind);
        EXPECT_EQ(as_counts(table), plain.table);
        EXPECT_EQ(chain.log_ratio(), plain.log_ratio);
        EXPECT_EQ(allele_counts(as_counts(table)), allele_counts(start));
        EXPECT_GT(plain.impossible, 0);
        EXPECT_LT(plain.impossible, kSteps);
    }
}

TEST_F(Chain, RunsInOnePieceAreStepsOneByOne) {
    const GenotypeCounts start = random_counts(5, 9);
    for (const std::size_t steps : {1u, 2u, 11u, 400u, 5000u}) {
        seed();
        PlainChain plain(start);
        std::vector<std::int64_t> expected(steps, 7);
        std::int64_t total = 3;
        for (std::int64_t& hits : expected) {
            plain.step();
            if (plain.log_ratio <= 1e-06) {
                ++hits;
                ++total;
            }
        }
        const double behind = next();
        CountTable table = as_table(start);
        GenotypeChain by_slots(table);
        std::vector<std::int64_t> hits(steps, 7);
        seed();
        EXPECT_TRUE(by_slots.run(hits));
        EXPECT_EQ(hits, expected);
        EXPECT_EQ(by_slots.log_ratio(), plain.log_ratio);
        EXPECT_EQ(next(), behind);
        table = as_table(start);
        GenotypeChain in_sum(table);
        std::int64_t count = 3;
        seed();
        EXPECT_TRUE(in_sum.run(static_cast<std::int64_t>(steps), count));
        EXPECT_EQ(count, total);
        EXPECT_EQ(as_counts(table), plain.table);
        EXPECT_EQ(next(), behind);
    }
}

TEST_F(Chain, RunsGoOnFromOneAnother) {
    const GenotypeCounts start = random_counts(4, 9);
    seed();
    PlainChain plain(start);
    for (int k = 0; k < 70; ++k)
        plain.step();
    std::int64_t expected = 0;
    for (int k = 0; k < 30; ++k) {
        plain.step();
        expected += plain.log_ratio <= 1e-06 ? 1 : 0;
    }
    CountTable table = as_table(start);
    GenotypeChain chain(table);
    std::int64_t hits = 0;
    seed();
    chain.run(70);
    chain.run(30, hits);
    EXPECT_EQ(hits, expected);
    EXPECT_EQ(chain.log_ratio(), plain.log_ratio);
}

// Nothing can be replaced: with one individual the ratio is always 0.
TEST_F(Chain, AStepWithoutReplacementDrawsItsUniformAndGivesOne) {
    CountTable table = as_table({{0, 1, 0}, {0, 0, 0}, {0, 0, 0}});
    const CountTable before = table;
    // Indices of the first five numbers of the stream, of which none is drawn anew.
    std::vector<int> indices;
    for (int i = 0; i < 4; ++i)
        indices.push_back(static_cast<int>(3 * next()));
    ASSERT_NE(indices[2], indices[0]);
    ASSERT_NE(indices[3], indices[1]);
    const double sixth = after_seed(5);
    seed();
    GenotypeChain chain(table);
    EXPECT_TRUE(chain.run(1));
    EXPECT_EQ(next(), sixth);
    EXPECT_EQ(chain.last_ratio(), 1.0);
    EXPECT_EQ(chain.log_ratio(), 0.0L);
    EXPECT_EQ(table, before);
    std::int64_t hits = 0;
    EXPECT_TRUE(chain.run(1000, hits));
    EXPECT_EQ(hits, 1000);
    EXPECT_EQ(table, before);
}

// Makes a step of (0,0) and (1,1) to (0,1) twice, whose uniform number is u.
GenotypeCounts after_step(const GenotypeCounts& start, double u) {
    mnd::uniform_stream.inext = 0;
    std::int64_t* next = mnd::uniform_stream.ma;
    for (const double number : {0.0, 0.0, 0.5, 0.5, u})
        *++next = std::llround(number * static_cast<double>(mnd::MBIG));
    CountTable table = as_table(start);
    GenotypeChain(table).run(1);
    EXPECT_EQ(mnd::uniform_stream.inext, 5);
    return as_counts(table);
}

// The replacement is made below the ratio, not at it: else genotypes that are not there would be
// taken apart at a uniform number of 0.
TEST_F(Chain, AUniformNumberEqualToTheRatioChangesNothing) {
    const GenotypeCounts without = {{0, 4}, {0, 3}};
    EXPECT_EQ(after_step(without, 0.0), without);
    const GenotypeCounts half = {{7, 6}, {0, 1}};  // 7 x 1 / (7 x 8) x 4
    EXPECT_EQ(after_step(half, 0.5), half);
    EXPECT_EQ(after_step(half, 0.499999999), (GenotypeCounts{{6, 8}, {0, 0}}));
}

TEST_F(Chain, NoStepsDrawNothing) {
    CountTable table = as_table({{3, 1}, {0, 2}});
    const double first = after_seed(0);
    seed();
    GenotypeChain chain(table);
    std::int64_t hits = 0;
    std::vector<std::int64_t> none;
    EXPECT_TRUE(chain.run(0) && chain.run(-5) && chain.run(0, hits) && chain.run(none));
    EXPECT_EQ(hits, 0);
    EXPECT_EQ(next(), first);
}

// Visits in proportion to the probabilities: all tables of 5, 4 and 3 copies, each within 5 standard
// deviations over 200 chains.
TEST_F(Chain, VisitsTablesInProportionToTheirProbability) {
    const GenotypeCounts start = {{2, 1, 0}, {0, 1, 1}, {0, 0, 1}};
    std::map<GenotypeCounts, double> probability;
    double all = 0.0;
    mnd_test::for_each_table(allele_counts(start), [&](const GenotypeCounts& table) {
        all += probability[table] = std::exp(mnd_test::log_weight(table));
    });
    constexpr int kChains = 200;
    constexpr int kSteps = 1000;
    std::map<GenotypeCounts, std::vector<double>> shares;
    for (int c = 0; c < kChains; ++c) {
        CountTable table = as_table(start);
        GenotypeChain chain(table);
        chain.run(200);
        std::map<GenotypeCounts, double> visits;
        for (int k = 0; k < kSteps; ++k) {
            chain.run(1);
            visits[as_counts(table)] += 1.0 / kSteps;
        }
        for (const auto& [counts, weight] : probability)
            shares[counts].push_back(visits[counts]);
    }
    for (const auto& [counts, weight] : probability) {
        const std::vector<double>& x = shares[counts];
        const double mean = std::accumulate(x.begin(), x.end(), 0.0) / kChains;
        double sum = 0.0;
        for (const double share : x)
            sum += (share - mean) * (share - mean);
        const double error = std::sqrt(sum / (kChains * (kChains - 1)));
        EXPECT_NEAR(mean, weight / all, 5.0 * error + 1e-9);
    }
}

// A seed out of range makes a stream whose numbers leave [0, 1).
TEST_F(Chain, EndsAtAnIndexOutOfRange) {
    const mnd_test::CapturedOutput strange;
    CountTable table = as_table({{30, 1}, {0, 20}});
    GenotypeChain chain(table);
    mnd::seed_stream(3000000000L);
    std::int64_t hits = 0;
    EXPECT_FALSE(chain.run(100000, hits));
    EXPECT_LT(hits, 100000);
    EXPECT_EQ(allele_counts(as_counts(table)), (std::vector<int>{61, 41}));
}

}  // namespace
