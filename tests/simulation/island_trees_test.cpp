// Genealogies of the finite and of the hierarchical island model.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <set>
#include <vector>

#include "simulation/coalescent_tree.h"
#include "support/captured_log.h"
#include "support/plain_genealogy.h"
#include "support/sample_moments.h"
#include "support/seeded_stream.h"
#include "support/simulated_samples.h"

namespace {

using mnd::Samples;
using mnd::Structure;
using mnd::TNode;
using mnd::TTree;
using mnd_test::add_groups;
using mnd_test::add_samples;
using mnd_test::SampleMoments;

class Islands : public mnd_test::SeededStream {};
class HierarchicalIslands : public mnd_test::SeededStream {};

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Age of the root over replicates of an island tree.
SampleMoments ages(Samples& samples, double F, int demes, int replicates) {
    TTree tree;
    SampleMoments age;
    for (int r = 0; r < replicates; ++r) {
        EXPECT_NE(tree.build_tree_struct_pop(samples, 0.0, F, demes), 0);
        age.add(tree.root()->time);
    }
    return age;
}

// Two gene copies of a deme meet after D units on average, whatever the migration rate; those of two
// demes after (D - 1) / (2 m N) more, the time until they are in one deme (Slatkin 1991).
TEST_F(Islands, PairsMeetAfterTheTimesOfTheory) {
    for (const int demes : {2, 5}) {
        for (const double F : {0.1, 0.4}) {
            Samples one;
            add_samples(one, {2});
            Samples two;
            add_samples(two, {1, 1});
            const double m = (demes - 1) * (1.0 / F - 1.0) / (2.0 * 1000.0 * demes);
            const SampleMoments within = ages(one, F, demes, 8000);
            const SampleMoments between = ages(two, F, demes, 8000);
            EXPECT_NEAR(within.mean(), demes, 4.0 * within.mean_error());
            EXPECT_NEAR(between.mean(), demes + (demes - 1) / (2.0 * m * 1000.0), 4.0 * between.mean_error());
            const double recovered = (between.mean() - within.mean()) / between.mean();
            EXPECT_NEAR(recovered, F, 0.04);
        }
    }
}

TEST_F(Islands, SamplesOfAllSizesGiveSoundTrees) {
    Samples samples;
    add_samples(samples, {7, 1, 12, 0, 5});
    TTree tree;
    for (int r = 0; r < 50; ++r) {
        ASSERT_EQ(tree.build_tree_struct_pop(samples, 0.0, 0.2, 8), 1);
        EXPECT_EQ(tree.sample_size, 25);
        EXPECT_EQ(tree.root()->count_desc(), 25);
        EXPECT_EQ(TNode::node_count, 24);
        for (int i = 25; i < 49; ++i) {
            const TNode& node = tree.nodes[static_cast<std::size_t>(i)];
            EXPECT_GE(node.time, node.desc1->time);
            EXPECT_GE(node.time, node.desc2->time);
        }
    }
    ASSERT_EQ(tree.leaf_blocks.size(), 5U);
    EXPECT_EQ(tree.leaf_blocks[2].first, 8);
    EXPECT_EQ(tree.leaf_blocks[2].count, 12);
    EXPECT_EQ(tree.leaf_blocks[2].sample, samples.populations.at_const(2));
}

// Demes as plain lists of lineages, to go through a replicate a second time. Groups are those of d demes.
class PlainIslands {
public:
    PlainIslands(int demes, int demes_per_group, int leaves)
        : tree(static_cast<std::size_t>(2 * leaves - 1)),
          group_of(tree.size(), 0),
          demes_(static_cast<std::size_t>(demes)),
          demes_per_group_(demes_per_group),
          alive_(leaves) {}

    // The next `count` leaves begin in a deme.
    void settle(int deme, int count) {
        occupied_.push_back(deme);
        for (int i = 0; i < count; ++i)
            put(settled_++, deme, false);
    }

    // Events until one lineage is left; m migrants per lineage and generation.
    template <class Migrate>
    void run(double m, Migrate migrate) {
        double t = 0.0;
        for (int node = alive_; alive_ > 1;) {
            double coal = 0.0;
            for (const int deme : occupied_)
                coal += rate(deme);
            const double total = alive_ * m * 1000.0 + coal;
            t -= std::log(1.0 - mnd::ran3()) / total;
            if (mnd::ran3() * total >= coal) {
                migrate();
            } else {
                tree[static_cast<std::size_t>(node)].time = t;
                coalesce(mnd::ran3() * coal, node++);
            }
        }
    }

    // A random lineage out of its deme, which is told.
    int take(int& source) {
        int place = static_cast<int>(alive_ * mnd::ran3());
        std::size_t o = 0;
        while (place >= size_of(occupied_[o]))
            place -= size_of(occupied_[o++]);
        source = occupied_[o];
        std::vector<int>& deme = at(source);
        const int lineage = deme[static_cast<std::size_t>(place)];
        deme[static_cast<std::size_t>(place)] = deme.back();
        deme.pop_back();
        if (deme.empty()) {
            occupied_[o] = occupied_.back();
            occupied_.pop_back();
        }
        return lineage;
    }

    void put(int lineage, int deme, bool may_be_empty = true) {
        if (may_be_empty && at(deme).empty()) occupied_.push_back(deme);
        at(deme).push_back(lineage);
        group_of[static_cast<std::size_t>(lineage)] = deme / demes_per_group_;
    }

    mnd_test::PlainTree tree;
    std::vector<int> group_of;  // per node, the group in which its lineage was last

private:
    std::vector<int>& at(int deme) { return demes_[static_cast<std::size_t>(deme)]; }
    int size_of(int deme) { return static_cast<int>(at(deme).size()); }
    double rate(int deme) { return size_of(deme) * (size_of(deme) - 1) / 2.0; }

    void coalesce(double u, int node) {
        std::size_t o = 0;
        for (double sum = rate(occupied_[0]); sum < u || rate(occupied_[o]) == 0.0; sum += rate(occupied_[o]))
            ++o;
        mnd_test::plain_meet(tree, at(occupied_[o]), node);
        group_of[static_cast<std::size_t>(node)] = occupied_[o] / demes_per_group_;
        --alive_;
    }

    std::vector<std::vector<int>> demes_;
    std::vector<int> occupied_;
    int demes_per_group_;
    int alive_;
    int settled_ = 0;
};

// Takes a random entry out of a list.
int drawn_from(std::vector<int>& list) {
    const auto place = static_cast<std::size_t>(static_cast<double>(list.size()) * mnd::ran3());
    const int entry = list[place];
    list.erase(list.begin() + static_cast<long>(place));
    return entry;
}

// One of n that is not `other`.
int drawn_but(int n, int other) {
    int drawn = other;
    while (drawn == other)
        drawn = static_cast<int>(n * mnd::ran3());
    return drawn;
}

TEST_F(Islands, DrawsAsToldEventByEvent) {
    Samples samples;
    add_samples(samples, {4, 3, 6});
    constexpr int kDemes = 5;
    constexpr double F = 0.15;
    TTree tree;
    ASSERT_EQ(tree.build_tree_struct_pop(samples, 0.0, F, kDemes), 1);
    const double after = next();

    seed();
    PlainIslands plain(kDemes, kDemes, 13);
    std::vector<int> free{0, 1, 2, 3, 4};
    for (const int size : {4, 3, 6})
        plain.settle(drawn_from(free), size);
    const double m = (kDemes - 1) * (1.0 / F - 1.0) / (2.0 * 1000.0 * kDemes);
    plain.run(m, [&] {
        int source = 0;
        const int lineage = plain.take(source);
        plain.put(lineage, drawn_but(kDemes, source));
    });
    EXPECT_EQ(next(), after);
    EXPECT_TRUE(mnd_test::same_genealogy(tree, plain.tree));
}

TEST_F(Islands, NoDemesOrNoDifferentiationIsRefusedWithALine) {
    Samples samples;
    add_samples(samples, {3, 3});
    TTree tree;
    const mnd_test::CapturedLog log;
    EXPECT_EQ(tree.build_tree_struct_pop(samples, 0.0, 0.0, 5), 0);
    EXPECT_EQ(tree.build_tree_struct_pop(samples, 0.0, 0.2, 0), 0);
    const std::string line = "\tTTree::build_tree_struct_pop(): unable to build Tree\n";
    EXPECT_EQ(log.text(), line + line);
}

TEST_F(Islands, WithoutMigrationOnlyOneDemeCanCoalesce) {
    Samples one;
    add_samples(one, {6});
    TTree tree;
    EXPECT_EQ(tree.build_tree_struct_pop(one, 0.0, 1.0, 3), 1);
    EXPECT_EQ(tree.migration_rate, 0.0);
    EXPECT_EQ(tree.root()->count_desc(), 6);
    Samples two;
    add_samples(two, {6, 2});
    EXPECT_EQ(tree.build_tree_struct_pop(two, 0.0, 1.0, 3), 0);
    EXPECT_EQ(tree.lineages, 2);  // one lineage is left in each deme
}

TEST_F(Islands, RatesThatAreNoRatesFail) {
    Samples samples;
    add_samples(samples, {3, 3});
    TTree tree;
    for (const double F : {-0.1, 1.5, 1e-320, kNaN})
        EXPECT_EQ(tree.build_tree_struct_pop(samples, 0.0, F, 5), 0) << F;
}

TEST_F(Islands, OneDemeIsAPlainCoalescent) {
    Samples samples;
    add_samples(samples, {10});
    const SampleMoments age = ages(samples, 0.3, 1, 8000);
    EXPECT_NEAR(age.mean(), 2.0 * (1.0 - 0.1), 4.0 * age.mean_error());
}

TEST_F(Islands, DemesAreRaisedToTheSamplesAndNeverShared) {
    Samples samples;
    add_samples(samples, {2, 2, 2, 2});
    TTree tree;
    std::set<std::vector<int>> seen;
    for (int r = 0; r < 200; ++r) {
        tree.num_demes = 2;
        mnd::reset_draws_taken();
        tree.createInitialNodes(samples);
        EXPECT_EQ(mnd::draws_taken(), 4U);
        EXPECT_EQ(tree.num_demes, 4.0);
        EXPECT_EQ(tree.deme_lineages, (std::vector<std::int32_t>{2, 2, 2, 2}));
        EXPECT_EQ(tree.num_occupied, 4);
        EXPECT_EQ(tree.total_coal_rate, 4.0);
        seen.insert({tree.occupied.begin(), tree.occupied.end()});
    }
    EXPECT_EQ(seen.size(), 24U);  // every order of the demes
}

// Five samples of 2^29 - 1 gene copies have more leaves than can be numbered.
TEST_F(Islands, MoreGeneCopiesThanCanBeNumberedAreRefused) {
    Samples samples;
    add_samples(samples, {2000000000, 2000000000, 2000000000, 2000000000, 2000000000});
    TTree tree;
    EXPECT_THROW(tree.build_tree_struct_pop(samples, 0.0, 0.2, 5), std::bad_alloc);
    Structure structure;
    add_groups(structure, samples, {{0, 1}, {2, 3, 4}});
    EXPECT_THROW(tree.build_tree_struct_pop(samples, structure, 0.0, 0.3, 0.1, 5, 4), std::bad_alloc);
    EXPECT_EQ(tree.sample_size, 0);
}

TEST_F(Islands, CoalescenceNeedsADemeOfTwo) {
    Samples samples;
    add_samples(samples, {1, 1, 2});
    TTree tree;
    tree.num_demes = 3;
    tree.createInitialNodes(samples);
    tree.coalesceWithinAPop(0.5);
    EXPECT_EQ(tree.lineages, 3);
    EXPECT_EQ(tree.nodes[4].time, 0.5);
    EXPECT_EQ(tree.nodes[4].count_desc(), 2);
    EXPECT_EQ(tree.total_coal_rate, 0.0);
    mnd::reset_draws_taken();
    tree.coalesceWithinAPop(0.9);
    EXPECT_EQ(mnd::draws_taken(), 0U);
    EXPECT_EQ(tree.lineages, 3);
}

// Puts a number at the place of the stream that is drawn next.
void set_next_number(double u) {
    mnd::uniform_stream.ma[mnd::uniform_stream.inext + 1] = static_cast<std::int64_t>(u / mnd::FAC + 0.5);
}

// The deme that stands first has no pair.
TEST_F(Islands, ANumberOfZeroChoosesADemeOfTwo) {
    Samples samples;
    add_samples(samples, {1, 2, 1});
    TTree tree;
    tree.num_demes = 3;
    tree.createInitialNodes(samples);
    set_next_number(0.0);
    tree.coalesceWithinAPop(0.5);
    EXPECT_EQ(tree.lineages, 3);
    EXPECT_EQ(tree.nodes[1].ancestor, &tree.nodes[4]);
    EXPECT_EQ(tree.nodes[2].ancestor, &tree.nodes[4]);
}

// The rates of the two demes are 1 and 1: half of their sum is reached in the first.
TEST_F(Islands, TheDemeIsTheFirstInWhichTheSumOfRatesReachesTheNumber) {
    Samples samples;
    add_samples(samples, {2, 2});
    TTree tree;
    tree.num_demes = 2;
    tree.createInitialNodes(samples);
    set_next_number(0.5);
    tree.coalesceWithinAPop(0.5);
    EXPECT_EQ(tree.nodes[0].ancestor, &tree.nodes[4]);
    EXPECT_EQ(tree.nodes[2].ancestor, nullptr);
}

TEST_F(Islands, AReplicateForgetsTheOneBefore) {
    Samples samples;
    add_samples(samples, {3, 2});
    Structure structure;
    add_groups(structure, samples, {{0}, {1}});
    TTree tree;
    for (const bool hierarchical : {false, true}) {
        tree.deme_size = 20.0;
        TNode::_tot_mut = TNode::node_count = 99;
        TTree::matchingNodes.Add(nullptr);
        TTree::nodeWeights.Add(1.0);
        if (hierarchical) {
            EXPECT_EQ(tree.build_tree_struct_pop(samples, structure, 0.0, 0.3, 0.1, 5, 4), 1);
        } else {
            EXPECT_EQ(tree.build_tree_struct_pop(samples, 0.0, 0.2, 5), 1);
        }
        EXPECT_EQ(tree.deme_size, 1000.0);
        EXPECT_EQ(TNode::_tot_mut, 0);
        EXPECT_EQ(TNode::node_count, 4);
        EXPECT_EQ(TTree::matchingNodes.count, 0);
        EXPECT_EQ(TTree::nodeWeights.count, 0);
    }
}

// Two demes are asked for, but four samples have one each: m = 3 (1 / 0.2 - 1) / (2 1000 4).
TEST_F(Islands, TheRateOfMigrationIsThatOfTheRaisedDemes) {
    Samples samples;
    add_samples(samples, {2, 2, 2, 2});
    TTree tree;
    ASSERT_EQ(tree.build_tree_struct_pop(samples, 0.0, 0.2, 2), 1);
    EXPECT_NEAR(tree.migration_rate, 0.0015, 1e-15);
}

TEST_F(Islands, DemesWithoutASizeHaveNoRateOfCoalescence) {
    Samples samples;
    add_samples(samples, {5, 4});
    TTree tree;
    tree.deme_size = 0.0;
    tree.createInitialNodes(samples);
    EXPECT_EQ(tree.lineages, 9);
    EXPECT_EQ(tree.total_coal_rate, 0.0);
}

TEST_F(Islands, AMigrantNeedsAnotherDemeAndPermission) {
    Samples samples;
    add_samples(samples, {3});
    TTree tree;
    tree.num_demes = 1;
    tree.createInitialNodes(samples);
    mnd::reset_draws_taken();
    tree.sendMigrant();
    EXPECT_EQ(mnd::draws_taken(), 0U);
    tree.num_demes = 2;
    tree.no_migration = 1;
    tree.createInitialNodes(samples);
    EXPECT_EQ(tree.no_migration, 0);
    tree.no_migration = 1;
    mnd::reset_draws_taken();
    tree.sendMigrant();
    EXPECT_EQ(mnd::draws_taken(), 0U);
    tree.no_migration = 0;
    tree.sendMigrant();
    EXPECT_EQ(tree.num_occupied, 2);
    EXPECT_EQ(tree.total_coal_rate, 1.0);
}

TEST_F(Islands, DemesFollowTheModelOfMigration) {
    TTree tree;
    tree.createDemes(mnd::kIslandMigration, 7);
    EXPECT_EQ(tree.deme_nodes.size(), 7U);
    EXPECT_EQ(tree.num_demes, 7.0);
    tree.createDemes(mnd::kSteppingStoneMigration, 7);
    EXPECT_EQ(tree.deme_lineages.size(), 49U);
    tree.createDemes(static_cast<mnd::migrationModel>(2), 7);
    EXPECT_EQ(tree.num_demes, 0.0);
    tree.createDemes(mnd::kIslandMigration, 3, 2);
    EXPECT_EQ(tree.num_demes, 6.0);
    EXPECT_EQ(tree.group_demes, (std::vector<std::vector<std::int32_t>>{{0, 1, 2}, {3, 4, 5}}));
    tree.createDemes(mnd::kSteppingStoneMigration, 3, 2);
    EXPECT_EQ(tree.group_demes[1], (std::vector<std::int32_t>{9, 10, 11, 12, 13, 14, 15, 16, 17}));
    tree.cleanDemes();
    EXPECT_TRUE(tree.deme_nodes.empty());
    EXPECT_TRUE(tree.group_demes.empty());
}

// Mean times until pairs of lineages meet, by the places of the two, from the balance of all events.
std::vector<std::vector<double>> pair_times(double m1, double m2, int d, int g) {
    const int places = d * g;
    const auto n = static_cast<std::size_t>(places);
    std::vector<std::vector<double>> move(n, std::vector<double>(n, 0.0));
    for (int i = 0; i < places; ++i) {
        for (int j = 0; j < places; ++j) {
            if (i == j) continue;
            double& rate = move[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
            if (i / d == j / d) rate = 1000.0 * m1 / (d - 1);
            if (i / d != j / d && j % d == 0) rate = 1000.0 * m2 / (g - 1);
        }
    }
    std::vector<std::vector<double>> times(n, std::vector<double>(n, 0.0));
    for (int round = 0; round < 20000; ++round) {
        for (std::size_t i = 0; i < n; ++i) {
            for (std::size_t j = 0; j < n; ++j) {
                double sum = 1.0;
                for (std::size_t k = 0; k < n; ++k)
                    sum += move[i][k] * times[k][j] + move[j][k] * times[i][k];
                times[i][j] = sum / (2000.0 * (m1 + m2) + (i == j ? 1.0 : 0.0));
            }
        }
    }
    return times;
}

// Average of the times over the pairs of places for which wanted(i, j) holds.
template <class Wanted>
double average(const std::vector<std::vector<double>>& times, Wanted wanted) {
    double sum = 0.0;
    int pairs = 0;
    for (std::size_t i = 0; i < times.size(); ++i) {
        for (std::size_t j = 0; j < times.size(); ++j) {
            if (!wanted(static_cast<int>(i), static_cast<int>(j))) continue;
            sum += times[i][j];
            ++pairs;
        }
    }
    return sum / pairs;
}

SampleMoments ages(Samples& samples, const Structure& structure, double F_st, double F_ct, int d, int g) {
    TTree tree;
    SampleMoments age;
    for (int r = 0; r < 6000; ++r) {
        EXPECT_EQ(tree.build_tree_struct_pop(samples, structure, 0.0, F_st, F_ct, d, g), 1);
        age.add(tree.root()->time);
    }
    return age;
}

TEST_F(HierarchicalIslands, PairsMeetAfterTheTimesOfTheirPlaces) {
    constexpr int d = 3;
    constexpr int g = 3;
    const double F_st = 0.3;
    const double F_ct = 0.15;
    const double F_sc = 1.0 - (1.0 - F_st) / (1.0 - F_ct);
    const double m1 = (d - 1) * (1.0 / F_sc - 1.0) / (2.0 * d * 1000.0);
    const double m2 = (g - 1) * (1.0 - F_ct) * F_sc * m1 / ((d - 1) * g * F_ct);
    const auto times = pair_times(m1, m2, d, g);
    const auto expect_mean = [](const SampleMoments& age, double expected) {
        EXPECT_NEAR(age.mean(), expected, 4.0 * age.mean_error());
    };

    Samples one;
    add_samples(one, {2});
    Structure single;
    add_groups(single, one, {{0}});
    expect_mean(ages(one, single, F_st, F_ct, d, g), average(times, [](int i, int j) { return i == j; }));

    Samples two;
    add_samples(two, {1, 1});
    Structure together;
    add_groups(together, two, {{0, 1}});
    expect_mean(ages(two, together, F_st, F_ct, d, g),
                average(times, [](int i, int j) { return i != j && i / d == j / d; }));
    Structure apart;
    add_groups(apart, two, {{0}, {1}});
    expect_mean(ages(two, apart, F_st, F_ct, d, g),
                average(times, [](int i, int j) { return i / d != j / d; }));
}

// Three groups of four demes. Samples 0 and 2 lie in the first group of the structure, 1 in the second.
TEST_F(HierarchicalIslands, DrawAsToldEventByEvent) {
    constexpr int d = 4;
    constexpr int g = 3;
    constexpr double F_st = 0.2;
    constexpr double F_ct = 0.12;
    Samples samples;
    add_samples(samples, {5, 6, 4});
    Structure structure;
    add_groups(structure, samples, {{0, 2}, {1}});
    TTree tree;
    const double F_sc = 1.0 - (1.0 - F_st) / (1.0 - F_ct);
    const double m1 = (d - 1) * (1.0 / F_sc - 1.0) / (2.0 * d * 1000.0);
    const double m2 = (g - 1) * (1.0 - F_ct) * F_sc * m1 / ((d - 1) * g * F_ct);
    for (int replicate = 0; replicate < 10; ++replicate) {
        const mnd::UniformStream here = mnd::uniform_stream;
        ASSERT_EQ(tree.build_tree_struct_pop(samples, structure, 0.0, F_st, F_ct, d, g), 1);
        const double after = next();

        mnd::uniform_stream = here;
        PlainIslands plain(d * g, d, 15);
        std::vector<int> free_groups{0, 1, 2};
        for (const std::vector<int>& sizes : {std::vector{5, 4}, std::vector{6}}) {
            const int first = d * drawn_from(free_groups);
            std::vector<int> free{first, first + 1, first + 2, first + 3};
            for (const int size : sizes)
                plain.settle(drawn_from(free), size);
        }
        plain.run(m1 + m2, [&] {
            const bool within_group = next() < m1 / (m1 + m2);
            int source = 0;
            const int lineage = plain.take(source);
            if (within_group) {
                plain.put(lineage, source / d * d + drawn_but(d, source % d));
            } else {
                const int group = drawn_but(g, source / d);
                next();  // without effect: always the first deme
                plain.put(lineage, group * d);
            }
        });
        EXPECT_EQ(next(), after);
        EXPECT_TRUE(mnd_test::same_genealogy(tree, plain.tree));
        for (std::size_t i = 0; i < plain.group_of.size(); ++i)
            EXPECT_EQ(tree.nodes[i].deme, plain.group_of[i]);
    }
}

TEST_F(HierarchicalIslands, AMigrantBetweenGroupsEntersTheFirstDeme) {
    Samples samples;
    add_samples(samples, {40, 40});
    Structure structure;
    add_groups(structure, samples, {{0}, {1}});
    TTree tree;
    tree.createInitialNodes(structure, 4, 3);
    std::vector<bool> sampled(12);
    for (int i = 0; i < tree.num_occupied; ++i)
        sampled[static_cast<std::size_t>(tree.occupied[static_cast<std::size_t>(i)])] = true;
    for (int i = 0; i < 500; ++i)
        tree.sendMigrant2Levels(0.0, 0.1, 4, 3);
    for (std::size_t deme = 0; deme < 12; ++deme) {
        if (deme % 4 != 0 && !sampled[deme]) {
            EXPECT_EQ(tree.deme_lineages[deme], 0) << deme;
        }
    }
    int in_groups[3] = {0, 0, 0};
    for (const TNode& leaf : tree.nodes) {
        if (&leaf - tree.nodes.data() < 80) ++in_groups[leaf.deme];
    }
    for (std::size_t group = 0; group < 3; ++group) {
        EXPECT_EQ(tree.group_lineages[group], in_groups[group]);
        EXPECT_EQ(tree.group_lineages[group],
                  tree.deme_lineages[4 * group] + tree.deme_lineages[4 * group + 1] +
                      tree.deme_lineages[4 * group + 2] + tree.deme_lineages[4 * group + 3]);
    }
}

TEST_F(HierarchicalIslands, AMigrantWithinItsGroupEntersAnotherDemeOfIt) {
    Samples samples;
    add_samples(samples, {30, 30});
    Structure structure;
    add_groups(structure, samples, {{0}, {1}});
    TTree tree;
    tree.createInitialNodes(structure, 3, 2);
    for (int i = 0; i < 400; ++i)
        tree.sendMigrant2Levels(0.1, 0.0, 3, 2);
    EXPECT_EQ(tree.group_lineages, (std::vector<std::int32_t>{30, 30}));
    EXPECT_EQ(tree.num_occupied, 6);
}

TEST_F(HierarchicalIslands, AMigrantBetweenGroupsDrawsOneNumberWithoutEffect) {
    Samples samples;
    add_samples(samples, {1});
    Structure structure;
    add_groups(structure, samples, {{0}});
    TTree tree;
    tree.createInitialNodes(structure, 2, 2);
    const int group = tree.nodes[0].deme;
    const mnd::UniformStream here = mnd::uniform_stream;
    mnd::reset_draws_taken();
    tree.sendMigrant2Levels(0.0, 0.1, 2, 2);
    const auto between = mnd::draws_taken();
    const double after = next();
    mnd::uniform_stream = here;
    next();  // kind
    next();  // lineage
    std::uint64_t tries = 1;
    while (static_cast<int>(2.0 * next()) == group)
        ++tries;
    next();  // the number that is cut to 0
    EXPECT_EQ(next(), after);
    EXPECT_EQ(between, 3 + tries);
    EXPECT_EQ(tree.nodes[0].deme, 1 - group);
}

TEST_F(HierarchicalIslands, WithNowhereToGoNothingIsDrawn) {
    Samples samples;
    add_samples(samples, {5});
    Structure structure;
    add_groups(structure, samples, {{0}});
    TTree tree;
    tree.createInitialNodes(structure, 2, 2);
    mnd::reset_draws_taken();
    tree.sendMigrant2Levels(0.0, 0.0, 2, 2);
    tree.sendMigrant2Levels(0.1, 0.1, 1, 4);
    tree.sendMigrant2Levels(0.1, 0.1, 4, 1);
    tree.no_migration = 1;
    tree.sendMigrant2Levels(0.1, 0.1, 2, 2);
    EXPECT_EQ(mnd::draws_taken(), 0U);
}

// The last lineage is alone in its group, and the root knows which one.
TEST_F(HierarchicalIslands, ACoalescenceTakesOneLineageFromItsGroup) {
    Samples samples;
    add_samples(samples, {6, 3, 4});
    Structure structure;
    add_groups(structure, samples, {{0, 1}, {2}});
    TTree tree;
    for (int r = 0; r < 20; ++r) {
        ASSERT_EQ(tree.build_tree_struct_pop(samples, structure, 0.0, 0.3, 0.1, 3, 4), 1);
        ASSERT_EQ(tree.num_occupied, 1);
        const int group = tree.occupied[0] / 3;
        std::vector<std::int32_t> expected(4, 0);
        expected[static_cast<std::size_t>(group)] = 1;
        EXPECT_EQ(tree.group_lineages, expected);
        EXPECT_EQ(tree.root()->deme, group);
    }
}

TEST_F(HierarchicalIslands, RatesOutsideTheOpenUnitIntervalFail) {
    Samples samples;
    add_samples(samples, {4, 4});
    Structure structure;
    add_groups(structure, samples, {{0}, {1}});
    TTree tree;
    const auto build = [&](double F_st, double F_ct, int d, int g) {
        return tree.build_tree_struct_pop(samples, structure, 0.0, F_st, F_ct, d, g);
    };
    EXPECT_EQ(build(0.3, 0.1, 5, 4), 1);
    EXPECT_EQ(build(0.3, 1.0, 5, 4), 0);     // no migration at all
    EXPECT_EQ(build(0.3, 0.0, 5, 4), 0);     // division by F_ct
    EXPECT_EQ(build(0.3, 0.1, 1, 4), 0);     // one deme per group
    EXPECT_EQ(build(0.1, 0.1, 5, 4), 0);     // F_sc 0
    EXPECT_EQ(build(0.05, 0.1, 5, 4), 0);    // F_sc below 0
    EXPECT_EQ(build(0.3, 1e-7, 5, 4), 0);    // m2 above 1
    EXPECT_EQ(build(0.1001, 0.1, 5, 4), 0);  // m1 above 1
    EXPECT_EQ(build(kNaN, 0.1, 5, 4), 0);
    Structure one_group;
    add_groups(one_group, samples, {{0, 1}});
    EXPECT_EQ(tree.build_tree_struct_pop(samples, one_group, 0.0, 0.3, 0.1, 5, 1), 0);
}

TEST_F(HierarchicalIslands, GroupsAndDemesAreRaisedToTheStructure) {
    Samples samples;
    add_samples(samples, {2, 2, 2, 2, 2});
    Structure structure;
    add_groups(structure, samples, {{0, 1, 2}, {3}, {4}});
    TTree tree;
    mnd::reset_draws_taken();
    tree.createInitialNodes(structure, 1, 2);
    EXPECT_EQ(mnd::draws_taken(), 3U + 5U);
    EXPECT_EQ(tree.demes_per_group, 3);
    EXPECT_EQ(tree.num_groups, 3);
    EXPECT_EQ(tree.num_demes, 9.0);
    EXPECT_EQ(tree.num_occupied, 5);
    std::vector<std::int32_t> sizes = tree.group_lineages;
    std::sort(sizes.begin(), sizes.end());
    EXPECT_EQ(sizes, (std::vector<std::int32_t>{2, 2, 6}));
    EXPECT_EQ(tree.build_tree_struct_pop(samples, structure, 0.0, 0.3, 0.1, 1, 2), 1);
}

}  // namespace
