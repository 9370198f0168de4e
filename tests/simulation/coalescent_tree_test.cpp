#include "simulation/coalescent_tree.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/plain_genealogy.h"
#include "support/sample_moments.h"
#include "support/seeded_stream.h"

namespace {

using mnd::TTree;
using mnd_test::SampleMoments;

class CoalescentTree : public mnd_test::SeededStream {};

// a_p = sum of 1 / i^p for i below n.
double harmonic(int n, int p) {
    double sum = 0.0;
    for (int i = 1; i < n; ++i)
        sum += std::pow(i, -p);
    return sum;
}

// Every internal node is older than its descendants, and all leaves hang below the root.
void expect_sound(const TTree& tree) {
    const int n = tree.sample_size;
    for (int i = n; i < 2 * n - 1; ++i) {
        const mnd::TNode& node = tree.nodes[static_cast<std::size_t>(i)];
        EXPECT_EQ(node.desc1->ancestor, &node);
        EXPECT_EQ(node.desc2->ancestor, &node);
        EXPECT_GE(node.time, node.desc1->time);
        EXPECT_GE(node.time, node.desc2->time);
    }
    EXPECT_EQ(tree.root()->ancestor, nullptr);
    EXPECT_EQ(tree.root()->count_desc(), n);
}

TEST_F(CoalescentTree, DrawsAllTimesFirstAndThenTheTopology) {
    for (const int n : {2, 3, 10, 57}) {
        TTree tree(n);
        seed();
        mnd::reset_draws_taken();
        EXPECT_EQ(tree.build_tree(), 1);
        EXPECT_EQ(mnd::draws_taken(), static_cast<unsigned>(3 * (n - 1)));
        const double after = next();
        seed();
        const mnd_test::PlainTree plain = mnd_test::plain_kingman(n);
        EXPECT_EQ(next(), after);
        EXPECT_TRUE(mnd_test::same_genealogy(tree, plain)) << n;
        expect_sound(tree);
    }
}

TEST_F(CoalescentTree, TwoLeavesMeetInOneInternalNode) {
    TTree tree(2);
    const double u = next();
    seed();
    tree.build_tree();
    ASSERT_EQ(tree.nodes.size(), 3U);
    EXPECT_EQ(tree.root(), &tree.nodes[2]);
    EXPECT_EQ(tree.root()->time, -std::log(1.0 - u));
    EXPECT_EQ(tree.total_length(), 2.0 * tree.root()->time);
}

TEST_F(CoalescentTree, AgeOfTheRootAndLengthFollowTheory) {
    constexpr int kReplicates = 20000;
    for (const int n : {2, 5, 20, 50}) {
        TTree tree(n);
        SampleMoments age;
        SampleMoments length;
        for (int r = 0; r < kReplicates; ++r) {
            tree.build_tree();
            age.add(tree.root()->time);
            length.add(tree.total_length());
        }
        double age_variance = 0.0;
        for (double k = 2; k <= n; ++k)
            age_variance += 4.0 / (k * k * (k - 1) * (k - 1));
        EXPECT_NEAR(age.mean(), 2.0 * (1.0 - 1.0 / n), 4.0 * age.mean_error());
        EXPECT_NEAR(age.variance() / age_variance, 1.0, 0.08);
        EXPECT_NEAR(length.mean(), 2.0 * harmonic(n, 1), 4.0 * length.mean_error());
        EXPECT_NEAR(length.variance() / (4.0 * harmonic(n, 2)), 1.0, 0.08);
    }
}

TEST_F(CoalescentTree, PairsOfLeavesMeetAfterOneUnitOnAverage) {
    TTree tree(12);
    SampleMoments mean_time;
    for (int r = 0; r < 20000; ++r) {
        tree.build_tree();
        mean_time.add(tree.compute_moments_of_coalescence_times().mean);
    }
    EXPECT_NEAR(mean_time.mean(), 1.0, 4.0 * mean_time.mean_error());
}

TEST_F(CoalescentTree, ASmallerSampleReusesTheNodesOfALargerOne) {
    TTree tree(30);
    tree.build_tree();
    const mnd::TNode* before = tree.nodes.data();
    tree.sample_size = 4;
    seed();
    tree.build_tree();
    EXPECT_EQ(tree.nodes.data(), before);
    seed();
    EXPECT_TRUE(mnd_test::same_genealogy(tree, mnd_test::plain_kingman(4)));
}

TEST_F(CoalescentTree, OneLeafAndNoLeafDrawNothing) {
    TTree tree(1);
    mnd::reset_draws_taken();
    tree.build_tree();
    tree.build_tree_range_exp(1.0, 1.0);
    EXPECT_EQ(tree.root(), &tree.nodes[0]);
    EXPECT_EQ(tree.total_length(), 0.0);
    TTree none(-3);
    none.build_tree();
    EXPECT_EQ(none.root(), nullptr);
    EXPECT_EQ(mnd::draws_taken(), 0U);
}

TEST_F(CoalescentTree, RangeExpansionDrawsAsToldStepByStep) {
    for (const double T : {0.0, 0.05, 0.4, 3.0}) {
        for (const double D : {0.0, 0.3, 2.0, 40.0}) {
            for (const int n : {2, 7, 30}) {
                TTree tree(n);
                seed();
                EXPECT_EQ(tree.build_tree_range_exp(T, D), 1);
                const double after = next();
                seed();
                const mnd_test::PlainTree plain = mnd_test::plain_range_expansion(n, T, D);
                EXPECT_EQ(next(), after);
                EXPECT_TRUE(mnd_test::same_genealogy(tree, plain)) << T << ' ' << D << ' ' << n;
                expect_sound(tree);
            }
        }
    }
}

TEST_F(CoalescentTree, RangeExpansionAtTimeZeroIsAPlainCoalescent) {
    constexpr int n = 10;
    TTree tree(n);
    SampleMoments age;
    mnd::reset_draws_taken();
    for (int r = 0; r < 20000; ++r) {
        tree.build_tree_range_exp(0.0, 5.0);
        age.add(tree.root()->time);
    }
    EXPECT_EQ(mnd::draws_taken(), 20000U * 3U * (n - 1));
    EXPECT_NEAR(age.mean(), 2.0 * (1.0 - 1.0 / n), 4.0 * age.mean_error());
}

// Two lineages meet at rate 1 before T or part at rate 2 D; parted, they meet at rate 1 from T on.
// With a = 1 + 2 D the mean time is
//   (1 - e^(-a T)) / a^2 - T e^(-a T) / a            met before T: E[t; t < T] / a, and the rest
//   + (1 - (1 - e^(-a T)) / a) (T + 1)               not met before T
TEST_F(CoalescentTree, RangeExpansionMeetsPairsAsTheoryTells) {
    for (const double D : {0.5, 3.0}) {
        const double T = 0.8;
        const double a = 1.0 + 2.0 * D;
        const double decay = std::exp(-a * T);
        const double met = (1.0 - decay) / a;
        const double expected = (1.0 - decay) / (a * a) - T * decay / a + (1.0 - met) * (T + 1.0);
        TTree tree(2);
        SampleMoments time;
        for (int r = 0; r < 40000; ++r) {
            tree.build_tree_range_exp(T, D);
            time.add(tree.root()->time);
        }
        EXPECT_NEAR(time.mean(), expected, 4.0 * time.mean_error());
    }
}

TEST_F(CoalescentTree, RangeExpansionEndsWhateverTheParameters) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    TTree tree(6);
    for (const double T : {-1.0, 0.0, 1.0, inf, nan}) {
        for (const double D : {-2.0, 0.0, 1.0, inf, nan}) {
            EXPECT_EQ(tree.build_tree_range_exp(T, D), 1);
            EXPECT_EQ(tree.root()->count_desc(), 6);
        }
    }
}

TEST_F(CoalescentTree, ARateOfLeavingBelowZeroIsNone) {
    TTree none(8);
    none.build_tree_range_exp(0.5, 0.0);
    TTree below(8);
    seed();
    below.build_tree_range_exp(0.5, -0.2);
    for (std::size_t i = 8; i < 15; ++i)
        EXPECT_EQ(below.nodes[i].time, none.nodes[i].time);
}

TEST_F(CoalescentTree, AReplicateForgetsTheCandidatesOfTheOneBefore) {
    TTree tree(4);
    TTree::matchingNodes.Add(nullptr);
    TTree::nodeWeights.Add(1.0);
    tree.build_tree();
    EXPECT_EQ(TTree::matchingNodes.count, 0);
    EXPECT_EQ(TTree::nodeWeights.count, 0);
}

TEST_F(CoalescentTree, BottleneckStretchesTheAgesBeyondT) {
    TTree tree(20);
    tree.build_tree();
    std::vector<double> ages;
    for (const mnd::TNode& node : tree.nodes)
        ages.push_back(node.time);
    const double t = ages[30];
    tree.bottleneck(t, 0.25);
    for (std::size_t i = 0; i < ages.size(); ++i)
        EXPECT_EQ(tree.nodes[i].time, i <= 30 ? ages[i] : (ages[i] - t) * 0.25 + t);
}

TEST_F(CoalescentTree, ScalingMultipliesTheAgesOfInternalNodes) {
    TTree tree(9);
    tree.build_tree();
    const double age = tree.root()->time;
    const double length = tree.total_length();
    tree.scale_to_num_generations(4000000);
    EXPECT_EQ(tree.root()->time, age * 4e6);
    EXPECT_NEAR(tree.total_length(), length * 4e6, length * 1e-5);
    EXPECT_EQ(tree.nodes[0].time, 0.0);
}

TEST_F(CoalescentTree, AllocationEndsTheSeriesOfReplicatesBefore) {
    mnd::TNode::hits.assign(400, 3);
    mnd::TNode::mut_rates.build(400, -1.0, 1.0, 1.0);
    TTree tree;
    tree.set_sample_size(5);
    EXPECT_EQ(mnd::TNode::hits.size(), 400U);
    tree.allocate_tree(5);
    EXPECT_TRUE(mnd::TNode::hits.empty());
    EXPECT_TRUE(mnd::TNode::mut_rates.rates.empty());
}

// A tree that is allocated, or whose replicate failed, has no branches.
TEST_F(CoalescentTree, ATreeThatWasNotBuiltHasNoLengthAndNoMoments) {
    TTree tree(5);
    EXPECT_EQ(tree.total_length(), 0.0);
    EXPECT_EQ(tree.compute_moments_of_coalescence_times().mean, 0.0);
    tree.build_tree();
    EXPECT_GT(tree.total_length(), 0.0);
    EXPECT_GT(tree.compute_moments_of_coalescence_times().mean, 0.0);
    tree.set_sample_size(5);
    EXPECT_EQ(tree.total_length(), 0.0);
    EXPECT_EQ(tree.compute_moments_of_coalescence_times().mean, 0.0);
    EXPECT_EQ(tree.compute_moments_of_coalescence_times().variance, 0.0);
}

TEST_F(CoalescentTree, CountsItsCoalescences) {
    TTree tree(8);
    mnd::TNode::node_count = 0;
    tree.build_tree();
    EXPECT_EQ(mnd::TNode::node_count, 7);
}

}  // namespace
