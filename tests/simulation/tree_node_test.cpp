#include "simulation/tree_node.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "simulation/coalescent_tree.h"
#include "simulation/mutation_process.h"
#include "support/plain_genealogy.h"
#include "support/sample_moments.h"
#include "support/seeded_stream.h"

namespace {

using mnd::MutationModel;
using mnd::MutationProcess;
using mnd::TNode;
using mnd::TTree;

class TreeNode : public mnd_test::SeededStream {
protected:
    void SetUp() override {
        SeededStream::SetUp();
        TNode::hits.clear();
        TNode::mut_rates = mnd::GammaRates();
        TNode::min_mic = 0;
        TNode::max_mic = 1000;
    }
    void TearDown() override { TreeNode::SetUp(); }

    static long add(TTree& tree, const MutationModel& m, int on_root = 0) {
        long dummy = 1;
        return tree.root()->add_mutations(m.mu, &dummy, on_root, m.sites, m.type, m.gamma_a, m.ts_rate,
                                          m.bounded, m.step_geom);
    }
};

std::vector<int> states_of(const TNode& node) {
    return {node.sequence->begin(), node.sequence->end()};
}

TEST_F(TreeNode, MutationsDrawAsAPlainRecursionDoes) {
    for (const int n : {2, 5, 23}) {
        for (const double mu : {0.0, 0.7, 15.0, 80.0}) {
            for (int variant = 0; variant < 12; ++variant) {
                MutationModel model{.mu = mu, .sites = 9, .type = static_cast<mnd::Mut_Type>(variant % 4)};
                model.bounded = variant >= 8 ? 1 : 0;
                model.step_geom = variant >= 4 ? 0.4 : 0.0;
                TNode::max_mic = 6;
                TNode::hits.assign(9, 0);
                TTree tree(n);
                TNode::hits.assign(9, 0);
                seed();
                tree.build_tree();
                const long total = add(tree, model);
                const double after = next();
                seed();
                mnd_test::PlainTree plain = mnd_test::plain_kingman(n);
                mnd_test::PlainMutations mutations(plain, model);
                EXPECT_EQ(mutations.drop(), total);
                EXPECT_EQ(next(), after);
                EXPECT_EQ(TNode::hits, mutations.hits);
                for (std::size_t i = 0; i < plain.size(); ++i)
                    ASSERT_EQ(states_of(tree.nodes[i]), plain[i].sequence) << variant << ' ' << i;
            }
        }
    }
}

// Below 0 the shape stands for two classes of sites, which are counted so too.
TEST_F(TreeNode, SitesOfDifferentRatesAreCountedFromTheLastOneDown) {
    for (const double shape : {0.5, -1.0}) {
        const MutationModel model{.mu = 30.0, .sites = 6, .type = mnd::kNewStateMutation, .gamma_a = shape};
        TTree tree(12);
        TNode::mut_rates.build(6, shape, 0.3, 5.0);
        seed();
        tree.build_tree();
        const long total = add(tree, model);
        const double after = next();
        seed();
        mnd_test::PlainTree plain = mnd_test::plain_kingman(12);
        mnd_test::PlainMutations mutations(plain, model, TNode::mut_rates.rates);
        EXPECT_EQ(mutations.drop(), total);
        EXPECT_EQ(next(), after);
        EXPECT_EQ(TNode::hits, mutations.hits) << shape;
    }
}

TEST_F(TreeNode, ASumOfRatesBelowTheNumberDrawnHitsTheFirstSite) {
    TNode::mut_rates.rates = {0.0, 0.0, 1e-12};
    const MutationProcess process({.sites = 3, .gamma_a = 1.0});
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(process.draw_site(), 0);
    TNode::mut_rates.rates = {0.0, 0.0, 1.0};
    const MutationProcess last({.sites = 3, .gamma_a = 1.0});
    EXPECT_EQ(last.draw_site(), 2);
    TNode::mut_rates.rates.clear();
    const MutationProcess none({.sites = 3, .gamma_a = 1.0});
    EXPECT_EQ(none.draw_site(), 0);
}

TEST_F(TreeNode, AShapeNearZeroMakesSitesAlike) {
    TNode::mut_rates.rates = {0.0, 0.0, 0.0, 1.0};
    const MutationProcess process({.sites = 4, .gamma_a = -9e-8});
    std::vector<int> seen(4, 0);
    for (int i = 0; i < 1000; ++i)
        ++seen[static_cast<std::size_t>(process.draw_site())];
    for (const int count : seen)
        EXPECT_NEAR(count, 250, 60);
}

TEST_F(TreeNode, MutationsOnTheBranchOfTheTopAreTakenAsGiven) {
    TTree tree(3);
    tree.build_tree();
    const MutationModel model{.mu = 0.0, .sites = 1, .type = mnd::kNewStateMutation};
    EXPECT_EQ(add(tree, model, 5), 5);
    EXPECT_EQ(tree.root()->num_mutations, 5);
    EXPECT_EQ(states_of(tree.nodes[0]), std::vector{5});
    EXPECT_EQ(TNode::hits, std::vector{5L});
}

TEST_F(TreeNode, ASubtreeStartsFromTheSequenceAboveIt) {
    TTree tree(6);
    tree.build_tree();
    add(tree, {.mu = 40.0, .sites = 4, .type = mnd::kNucleotideMutation});
    TNode* below = tree.root()->desc1;
    const std::vector<int> root = states_of(*tree.root());
    const std::vector<int> other = states_of(*tree.root()->desc2);
    long dummy = 1;
    EXPECT_EQ(below->add_mutations(0.0, &dummy, 0, 4, mnd::kNucleotideMutation, 0.0, 0.33), 0);
    EXPECT_EQ(states_of(*below), root);
    EXPECT_EQ(states_of(*tree.root()->desc2), other);
}

TEST_F(TreeNode, WithoutSitesNothingIsDrawn) {
    TTree tree(4);
    tree.build_tree();
    mnd::reset_draws_taken();
    EXPECT_EQ(add(tree, {.mu = 50.0, .sites = 0}), 0);
    EXPECT_EQ(mnd::draws_taken(), 0U);
}

TEST_F(TreeNode, MutationsFollowAPoissonLawOfTheLength) {
    TTree tree(15);
    mnd_test::SampleMoments excess;
    const double mu = 2.5;
    for (int r = 0; r < 20000; ++r) {
        tree.build_tree();
        const double mean = mu * tree.total_length();
        const auto total =
            static_cast<double>(add(tree, {.mu = mu, .sites = 5, .type = mnd::kBinaryMutation}));
        excess.add((total - mean) / std::sqrt(mean));
    }
    EXPECT_NEAR(excess.mean(), 0.0, 4.0 * excess.mean_error());
    EXPECT_NEAR(excess.variance(), 1.0, 0.05);
}

// Share of each new state after a mutation of a state.
std::vector<double> shares_of(const MutationProcess& process, int state, int states) {
    std::vector<double> share(static_cast<std::size_t>(states), 0.0);
    constexpr int kTrials = 100000;
    for (int i = 0; i < kTrials; ++i)
        share[static_cast<std::size_t>(process.new_state(state, 7))] += 1.0 / kTrials;
    return share;
}

TEST_F(TreeNode, NucleotidesChangeByTransitionInTheGivenProportion) {
    const MutationProcess process({.sites = 1, .type = mnd::kNucleotideMutation, .ts_rate = 0.6});
    const std::vector<std::vector<double>> expected = {
        {0, 0.6, 0.2, 0.2}, {0.6, 0, 0.2, 0.2}, {0.2, 0.2, 0, 0.6}, {0.2, 0.2, 0.6, 0}};
    for (int state = 0; state < 4; ++state) {
        const std::vector<double> share = shares_of(process, state, 4);
        for (std::size_t k = 0; k < 4; ++k)
            EXPECT_NEAR(share[k], expected[static_cast<std::size_t>(state)][k], 0.008);
    }
}

TEST_F(TreeNode, ATransversionGoesToTheHigherStateFromAHalfUp) {
    const MutationProcess process({.sites = 1, .type = mnd::kNucleotideMutation, .ts_rate = 0.0});
    for (int i = 0; i < 50; ++i) {
        const mnd::UniformStream here = mnd::uniform_stream;
        next();
        const bool upper = next() >= 0.5;
        for (int state = 0; state < 4; ++state) {
            mnd::uniform_stream = here;
            EXPECT_EQ(process.new_state(state, 1), (state < 2 ? 2 : 0) + (upper ? 1 : 0));
        }
    }
}

TEST_F(TreeNode, BinarySitesFlipAndNewStatesCountTheHits) {
    const MutationProcess binary({.sites = 1, .type = mnd::kBinaryMutation});
    const MutationProcess fresh({.sites = 1, .type = mnd::kNewStateMutation});
    mnd::reset_draws_taken();
    EXPECT_EQ(binary.new_state(0, 3), 1);
    EXPECT_EQ(binary.new_state(1, 3), 0);
    EXPECT_EQ(fresh.new_state(2, 9), 9);
    EXPECT_EQ(mnd::draws_taken(), 0U);
}

TEST_F(TreeNode, StepsGoBothWaysAlike) {
    const MutationProcess process({.sites = 1, .type = mnd::kStepwiseMutation});
    const std::vector<double> share = shares_of(process, 5, 11);
    EXPECT_NEAR(share[4], 0.5, 0.008);
    EXPECT_NEAR(share[6], 0.5, 0.008);
}

// P(step = 1 + k) = (1 - p) p^k each way.
TEST_F(TreeNode, GeometricStepsHaveTheirLaw) {
    const MutationProcess process({.sites = 1, .type = mnd::kStepwiseMutation, .step_geom = 0.5});
    const std::vector<double> share = shares_of(process, 40, 81);
    for (const int k : {0, 1, 2, 3}) {
        const double expected = 0.5 * 0.5 * std::pow(0.5, k);
        EXPECT_NEAR(share[static_cast<std::size_t>(41 + k)], expected, 0.006);
        EXPECT_NEAR(share[static_cast<std::size_t>(39 - k)], expected, 0.006);
    }
}

TEST_F(TreeNode, BoundedStepsTurnAtTheBoundsWithoutADrawAndStayWithin) {
    TNode::min_mic = 2;
    TNode::max_mic = 4;
    const MutationProcess process({.sites = 1, .type = mnd::kStepwiseMutation, .bounded = 1});
    mnd::reset_draws_taken();
    EXPECT_EQ(process.new_state(2, 1), 3);
    EXPECT_EQ(process.new_state(4, 1), 3);
    EXPECT_EQ(mnd::draws_taken(), 0U);
    process.new_state(3, 1);
    EXPECT_EQ(mnd::draws_taken(), 1U);
    const MutationProcess wide({.sites = 1, .type = mnd::kStepwiseMutation, .bounded = 1, .step_geom = 0.9});
    for (int i = 0; i < 200; ++i) {
        const int state = wide.new_state(2 + i % 3, 1);
        EXPECT_GE(state, 2);
        EXPECT_LE(state, 4);
    }
}

// A tree drawn by hand: ((0, 1), 2) with the ages 1 and 3.
TTree cherry() {
    TTree tree(3);
    tree.nodes[3].time = 1.0;
    tree.nodes[4].time = 3.0;
    const auto join = [&tree](std::size_t parent, std::size_t a, std::size_t b) {
        tree.nodes[parent].desc1 = &tree.nodes[a];
        tree.nodes[parent].desc2 = &tree.nodes[b];
        tree.nodes[a].ancestor = tree.nodes[b].ancestor = &tree.nodes[parent];
    };
    join(3, 0, 1);
    join(4, 2, 3);
    return tree;
}

TEST_F(TreeNode, CountsAndListsTheLeavesBelowEachNode) {
    const TTree tree = cherry();
    EXPECT_EQ(tree.root()->count_desc(), 3);
    EXPECT_EQ(tree.nodes[3].count_desc(), 2);
    EXPECT_EQ(tree.nodes[0].count_desc(), 1);
    const mnd::DescendantLists lists = tree.root()->build_lists_of_descendent_nodes();
    const TNode* n = tree.nodes.data();
    EXPECT_EQ(lists.leaves, (std::vector<const TNode*>{n + 2, n + 0, n + 1}));
    ASSERT_EQ(lists.nodes.size(), 5U);
    const int expected[5][3] = {{4, 0, 3}, {2, 0, 1}, {3, 1, 2}, {0, 1, 1}, {1, 2, 1}};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(lists.nodes[i].node, n + expected[i][0]);
        EXPECT_EQ(lists.nodes[i].first, expected[i][1]);
        EXPECT_EQ(lists.nodes[i].count, expected[i][2]);
    }
}

TEST_F(TreeNode, MomentsOverPairsOfADrawnTree) {
    const TTree tree = cherry();
    // Pairs (0,1) at age 1, (0,2) and (1,2) at age 3: mean 7/3, mean square 19/3, variance 8/9.
    const TTree::Moments ages = tree.compute_moments_of_coalescence_times();
    EXPECT_NEAR(ages.mean, 7.0 / 3.0, 1e-14);
    EXPECT_NEAR(ages.variance, 8.0 / 9.0, 1e-14);
    double mean = 0.0;
    double variance = 0.0;
    tree.root()->compute_moments_of_pairwise_divergence(mean, variance);
    EXPECT_NEAR(mean, 14.0 / 3.0, 1e-14);
    EXPECT_NEAR(variance, 32.0 / 9.0, 1e-14);
    tree.nodes[3].compute_moments_of_pairwise_divergence(mean, variance);
    EXPECT_EQ(mean, 2.0);
    EXPECT_EQ(variance, 0.0);
    tree.nodes[2].compute_moments_of_pairwise_divergence(mean, variance);
    EXPECT_EQ(mean, 0.0);
    EXPECT_EQ(tree.total_length(), 1.0 + 1.0 + 3.0 + 2.0);
}

TEST_F(TreeNode, ASingleMutationMarksTheSubtreeBelowIt) {
    TTree tree = cherry();
    TNode::hits.assign(2, 0);
    TNode::_tot_mut = 0;
    TNode* carrier = &tree.nodes[3];
    tree.root()->new_Add_SNP_Mutation(1, carrier, 7, 9);
    const int expected[5] = {9, 9, 7, 9, 7};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(states_of(tree.nodes[i]), (std::vector{0, expected[i]}));
        EXPECT_EQ(tree.nodes[i].mutation_mask[1], expected[i] == 9 ? 1 : 0);
        EXPECT_EQ(tree.nodes[i].num_sites, 2);
    }
    EXPECT_EQ(tree.nodes[3].num_mutations, 1);
    EXPECT_EQ(TNode::hits, (std::vector{0L, 1L}));
    EXPECT_EQ(TNode::_tot_mut, 1);
    TNode* none = nullptr;
    tree.root()->new_Add_SNP_Mutation(1, none, 3, 4);
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(states_of(tree.nodes[i])[1], 3);
    tree.root()->new_Add_SNP_Mutation(-1, carrier, 3, 4);
    EXPECT_EQ(states_of(tree.nodes[0]).size(), 2U);
}

TEST_F(TreeNode, CandidatesForAMutationAreTheBranchesThatReachTheShare) {
    TTree tree = cherry();
    mnd::MY_TIArrayAsVector<TNode> matching;
    matching.owns_elements = 0;
    mnd::MY_TArrayAsVector<double> weights;
    double total = 0.0;
    TTree::getListofMatchingNodesNoRec(tree.root(), matching, weights, total, 1);
    EXPECT_EQ(matching.count, 4);
    EXPECT_EQ(total, 7.0);
    matching.Flush();
    weights.Flush();
    total = 0.0;
    TTree::getListofMatchingNodesNoRec(tree.root(), matching, weights, total, 2);
    ASSERT_EQ(matching.count, 1);
    EXPECT_EQ(matching.at_const(0), &tree.nodes[3]);
    EXPECT_EQ(weights[0], 2.0);
    EXPECT_EQ(total, 2.0);
}

TEST_F(TreeNode, TheBranchOfASingleMutationIsDrawnByItsLength) {
    TTree tree = cherry();
    TTree::matchingNodes.Flush();
    std::vector<double> share(5, 0.0);
    constexpr int kTrials = 70000;
    mnd::reset_draws_taken();
    for (int i = 0; i < kTrials; ++i) {
        const TNode* drawn = tree.getRootNodeForMutation(0, 0.0);
        share[static_cast<std::size_t>(drawn - tree.nodes.data())] += 7.0 / kTrials;
    }
    EXPECT_EQ(mnd::draws_taken(), static_cast<unsigned>(kTrials));
    const double lengths[5] = {1.0, 1.0, 3.0, 2.0, 0.0};
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_NEAR(share[i], lengths[i], 0.06);
    TTree::matchingNodes.Flush();
    EXPECT_EQ(tree.getRootNodeForMutation(0, 0.6), &tree.nodes[3]);
    TTree::matchingNodes.Flush();
    EXPECT_EQ(tree.getRootNodeForMutation(0, 0.9), nullptr);
    // The cache lasts until a tree is built.
    EXPECT_EQ(tree.getRootNodeForMutation(0, 0.6), &tree.nodes[3]);
    tree.build_tree();
    EXPECT_EQ(TTree::matchingNodes.count, 0);
}

TEST_F(TreeNode, SequencesAreWrittenByTheirType) {
    const mnd::myVectInt states{0, 1, 2, 3, 12, -4};
    EXPECT_EQ(mnd::sequence_text(states, mnd::kBinaryMutation), "010000");
    EXPECT_EQ(mnd::sequence_text(states, mnd::kNucleotideMutation), "AGCTAA");
    EXPECT_EQ(mnd::sequence_text(states, mnd::kStepwiseMutation), "0 1 2 3 12 -4");
    EXPECT_EQ(mnd::sequence_text(states, mnd::kNewStateMutation), "0 1 2 3 12 -4");
    EXPECT_EQ(mnd::sequence_text({}, mnd::kNewStateMutation), "");
}

TEST_F(TreeNode, TreesArePrintedNodeByNodeAndLeafByLeaf) {
    TTree tree = cherry();
    std::ostringstream nodes;
    tree.print_nodes(nodes);
    EXPECT_EQ(nodes.str(),
              "     0    -1    -1       0.00000       1.00000       0     0\n"
              "     1    -1    -1       0.00000       1.00000       0     0\n"
              "     2    -1    -1       0.00000       3.00000       0     0\n"
              "     3     0     1       1.00000       2.00000       0     0\n"
              "     4     2     3       3.00000       0.00000       0     0\n");
    TNode* carrier = &tree.nodes[3];
    tree.root()->new_Add_SNP_Mutation(0, carrier, 0, 2);
    std::ostringstream sequences;
    tree.print_sequences(sequences, mnd::kNucleotideMutation);
    EXPECT_EQ(sequences.str(), "0\tC\n1\tC\n2\tA\n");
}

TEST_F(TreeNode, AGenealogyIsSimulatedAndPrinted) {
    mnd::TGenealogy genealogy;
    std::ostringstream out;
    const MutationModel model{.sites = 20, .type = mnd::kBinaryMutation};
    seed();
    const long mutations = genealogy.build_genealogy(out, 5, 0.2, 3.0, 8.0, model);
    TTree tree(5);
    seed();
    tree.build_tree();
    tree.bottleneck(0.2, 3.0);
    MutationModel with_mu = model;
    with_mu.mu = 4.0;
    EXPECT_EQ(mnd::drop_mutations(tree, with_mu), mutations);
    EXPECT_EQ(genealogy.root()->time, tree.root()->time);
    std::ostringstream expected;
    tree.print_sequences(expected, mnd::kBinaryMutation);
    const std::string text = out.str();
    EXPECT_NE(text.find("Number of mutations : " + std::to_string(mutations) + '\n' + expected.str()),
              std::string::npos);
    EXPECT_EQ(genealogy.build_genealogy(out, 0, 0.2, 3.0, 8.0, model), 0);
}

TEST_F(TreeNode, ALongCombIsWalkedWithoutRecursion) {
    constexpr int n = 200000;
    TTree tree(n);
    for (int k = 0; k < n - 1; ++k) {
        TNode& parent = tree.nodes[static_cast<std::size_t>(n + k)];
        parent.time = k + 1.0;
        parent.desc1 = k == 0 ? &tree.nodes[0] : &tree.nodes[static_cast<std::size_t>(n + k - 1)];
        parent.desc2 = &tree.nodes[static_cast<std::size_t>(k + 1)];
        parent.desc1->ancestor = parent.desc2->ancestor = &parent;
    }
    EXPECT_EQ(tree.root()->count_desc(), n);
    EXPECT_EQ(tree.root()->build_lists_of_descendent_nodes().leaves.size(), static_cast<std::size_t>(n));
    EXPECT_GE(add(tree, {.mu = 1e-12, .sites = 1, .type = mnd::kBinaryMutation}), 0);
}

}  // namespace
