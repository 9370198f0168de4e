#include "simulation/mutated_sites.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "foundation/message_codes.h"
#include "model/popul_dna.h"
#include "run/settings.h"
#include "simulation/coalescent_tree.h"
#include "support/captured_reports.h"
#include "support/plain_genealogy.h"
#include "support/sample_moments.h"
#include "support/seeded_stream.h"

namespace {

using mnd::MutatedSites;
using mnd::MutationModel;
using mnd::TNode;
using mnd::TTree;

class MutatedSitesTest : public mnd_test::SeededStream {};

// The statistics of a list of sequences, pair by pair.
struct PlainCounts {
    int segregating = 0;
    std::int64_t differences = 0;
    std::int64_t transitions = 0;
    std::vector<int> haplotypes;
    std::vector<std::int64_t> pairs;
};

PlainCounts count_plainly(const std::vector<std::vector<int>>& leaves) {
    PlainCounts c;
    const std::size_t sites = leaves.empty() ? 0 : leaves[0].size();
    for (std::size_t s = 0; s < sites; ++s) {
        bool differs = false;
        for (const auto& leaf : leaves)
            differs = differs || leaf[s] != leaves[0][s];
        c.segregating += differs ? 1 : 0;
    }
    c.pairs.assign(static_cast<std::size_t>(c.segregating) + 1, 0);
    for (std::size_t i = 0; i < leaves.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            std::size_t d = 0;
            for (std::size_t s = 0; s < sites; ++s) {
                const int a = std::min(leaves[i][s], leaves[j][s]);
                const int b = std::max(leaves[i][s], leaves[j][s]);
                d += a != b ? 1 : 0;
                c.transitions += (a == 0 && b == 1) || (a == 2 && b == 3) ? 1 : 0;
            }
            c.differences += static_cast<std::int64_t>(d);
            ++c.pairs[d];
        }
    }
    std::map<std::vector<int>, std::size_t> seen;
    for (const auto& leaf : leaves) {
        const auto [found, is_new] = seen.try_emplace(leaf, c.haplotypes.size());
        if (is_new) c.haplotypes.push_back(0);
        ++c.haplotypes[found->second];
    }
    return c;
}

std::vector<std::vector<int>> leaf_sequences(const TTree& tree) {
    std::vector<std::vector<int>> leaves;
    for (int i = 0; i < tree.sample_size; ++i)
        leaves.emplace_back(tree.nodes[static_cast<std::size_t>(i)].sequence->begin(),
                            tree.nodes[static_cast<std::size_t>(i)].sequence->end());
    return leaves;
}

void expect_counts(MutatedSites& mutated, const std::vector<std::vector<int>>& leaves, bool nucleotides) {
    const PlainCounts plain = count_plainly(leaves);
    EXPECT_EQ(mutated.num_leaves(), static_cast<int>(leaves.size()));
    EXPECT_EQ(mutated.num_segregating_sites(), plain.segregating);
    EXPECT_EQ(mutated.pair_differences(), plain.differences);
    EXPECT_EQ(mutated.pair_transitions(), nucleotides ? plain.transitions : 0);
    EXPECT_EQ(mutated.pair_transversions(), plain.differences - mutated.pair_transitions());
    EXPECT_EQ(mutated.haplotype_counts(), plain.haplotypes);
    std::vector<std::int64_t> pairs;
    mutated.count_pair_differences(pairs);
    EXPECT_EQ(pairs, plain.pairs);
    for (int i = 0; i < mutated.num_segregating_sites(); ++i) {
        std::map<int, int> states;
        for (const auto& leaf : leaves)
            ++states[leaf[static_cast<std::size_t>(mutated.site_number(i))]];
        ASSERT_EQ(mutated.num_states(i), static_cast<int>(states.size()));
        for (int k = 0; k < mutated.num_states(i); ++k)
            EXPECT_EQ(mutated.states(i)[k].leaves, states[mutated.states(i)[k].state]);
    }
    for (std::size_t leaf = 0; leaf < leaves.size(); ++leaf) {
        for (std::size_t s = 0; s < leaves[leaf].size(); ++s)
            ASSERT_EQ(mutated.state(static_cast<int>(leaf), static_cast<int>(s)), leaves[leaf][s]);
    }
}

// One replicate each way from the same place of the stream.
void compare_paths(mnd::PopulDNA& sample, MutatedSites& mutated, const MutationModel& model) {
    const mnd::UniformStream here = mnd::uniform_stream;
    const mnd::GammaRates rates = TNode::mut_rates;
    mnd::reset_draws_taken();
    const long full = *sample.simulate_sample(model);
    const auto draws = mnd::draws_taken();
    const std::vector<long> hits = TNode::hits;
    const std::vector<double> full_rates = TNode::mut_rates.rates;
    const auto leaves = leaf_sequences(*sample.tree);
    std::vector<long> branches;
    for (int i = 0; i < 2 * sample.tree->sample_size - 1; ++i)
        branches.push_back(sample.tree->nodes[static_cast<std::size_t>(i)].num_mutations);

    mnd::uniform_stream = here;
    TNode::mut_rates = rates;
    mnd::reset_draws_taken();
    EXPECT_EQ(*sample.fast_simulate_sample(mutated, model), full);
    EXPECT_EQ(mnd::draws_taken(), draws);
    EXPECT_EQ(TNode::_tot_mut, full);
    EXPECT_EQ(mutated.num_mutations(), full);
    EXPECT_EQ(TNode::hits, hits);
    EXPECT_EQ(TNode::mut_rates.rates, full_rates);
    for (std::size_t i = 0; i < branches.size(); ++i)
        EXPECT_EQ(sample.tree->nodes[i].num_mutations, branches[i]);
    expect_counts(mutated, leaves, model.type == mnd::kNucleotideMutation);
}

TEST_F(MutatedSitesTest, EqualTheSequencesForEveryTypeAndDensity) {
    MutatedSites mutated;
    for (const int n : {2, 3, 17, 40}) {
        for (const double mu : {0.0, 0.5, 6.0, 90.0}) {
            for (const int sites : {1, 7, 300}) {
                for (const double gamma : {0.0, 0.4, -1.0}) {
                    for (int type = 0; type < 4; ++type) {
                        mnd::PopulDNA sample;
                        sample.sample_size = n;
                        sample.allocate_tree(n);
                        const MutationModel model{.mu = mu,
                                                  .sites = sites,
                                                  .type = static_cast<mnd::Mut_Type>(type),
                                                  .gamma_a = gamma,
                                                  .p_fixed = 0.3,
                                                  .fixed_rate = 5.0};
                        for (int r = 0; r < 2; ++r)
                            compare_paths(sample, mutated, model);
                    }
                }
            }
        }
    }
}

TEST_F(MutatedSitesTest, EqualTheSequencesOfBoundedMicrosatellites) {
    const int max_before = TNode::max_mic;
    TNode::max_mic = 3;
    MutatedSites mutated;
    mnd::PopulDNA sample;
    sample.sample_size = 25;
    sample.allocate_tree(25);
    for (const double geom : {0.0, 0.6}) {
        for (int r = 0; r < 20; ++r)
            compare_paths(
                sample, mutated,
                {.mu = 20.0, .sites = 5, .type = mnd::kStepwiseMutation, .bounded = 1, .step_geom = geom});
    }
    TNode::max_mic = max_before;
}

TEST_F(MutatedSitesTest, ManySitesFillSeveralWordsOfEveryWidth) {
    MutatedSites mutated;
    mnd::PopulDNA sample;
    sample.sample_size = 60;
    sample.allocate_tree(60);
    for (const double mu : {60.0, 300.0, 1500.0}) {
        for (int type = 0; type < 4; ++type)
            compare_paths(
                sample, mutated,
                {.mu = mu, .sites = 400, .type = static_cast<mnd::Mut_Type>(type), .gamma_a = -1.0});
    }
}

TEST_F(MutatedSitesTest, ExpansionsDrawAndCountAsTheSequencesDo) {
    MutatedSites mutated;
    mnd::PopulDNA sample;
    sample.sample_size = 20;
    sample.allocate_tree(20);
    const MutationModel model{.mu = 5e-6, .sites = 400, .type = mnd::kNewStateMutation, .gamma_a = -1.0};
    seed();
    const long sudden = *sample.simulate_sample_exp(model, 0.5, 0.1, 1000000);
    const auto sudden_leaves = leaf_sequences(*sample.tree);
    const long range = *sample.simulate_range_exp(model, 0.5, 3.0, 1000000);
    const auto range_leaves = leaf_sequences(*sample.tree);
    const double after = next();
    EXPECT_GT(sudden, 0);
    EXPECT_GT(range, 0);
    seed();
    EXPECT_EQ(*sample.fast_simulate_sample_exp(mutated, model, 0.5, 0.1, 1000000), sudden);
    expect_counts(mutated, sudden_leaves, false);
    EXPECT_EQ(*sample.fast_simulate_range_exp(mutated, model, 0.5, 3.0, 1000000), range);
    expect_counts(mutated, range_leaves, false);
    EXPECT_EQ(next(), after);
}

TEST_F(MutatedSitesTest, AnotherNumberOfSitesIsWarnedOfAndGivesNoMutation) {
    MutatedSites mutated;
    mnd::PopulDNA sample;
    sample.sample_size = 30;
    sample.allocate_tree(30);
    sample.fast_simulate_sample(mutated, {.mu = 9.0, .sites = 400});
    EXPECT_GT(mutated.num_segregating_sites(), 0);
    sample.sample_size = 4;
    const mnd_test::CapturedReports reports;
    mnd::reset_draws_taken();
    EXPECT_EQ(*sample.fast_simulate_sample(mutated, {.mu = 9.0, .sites = 100}), 0);
    EXPECT_EQ(mnd::draws_taken(), 9U);  // the tree alone
    const mnd_test::Report warning{mnd::Warning, "PopGenetics::sprinkle_mutations()",
                                   mnd::kHitsVectorHasBadSize};
    EXPECT_EQ(reports.all(), std::vector{warning});
    EXPECT_EQ(mutated.num_segregating_sites(), 0);
    EXPECT_EQ(mutated.haplotype_counts(), std::vector{4});
    std::vector<std::int64_t> pairs;
    mutated.count_pair_differences(pairs);
    EXPECT_EQ(pairs, (std::vector<std::int64_t>{6}));
}

TEST_F(MutatedSitesTest, SegregatingSitesAndDifferencesFollowTheory) {
    constexpr int n = 20;
    constexpr double theta = 4.0;
    MutatedSites mutated;
    mnd::PopulDNA sample;
    sample.sample_size = n;
    sample.allocate_tree(n);
    mnd_test::SampleMoments S;
    mnd_test::SampleMoments pi;
    for (int r = 0; r < 20000; ++r) {
        sample.fast_simulate_sample(mutated,
                                    {.mu = theta / 2.0, .sites = 100000, .type = mnd::kBinaryMutation});
        S.add(mutated.num_segregating_sites());
        pi.add(static_cast<double>(mutated.pair_differences()) / (n * (n - 1) / 2.0));
    }
    double a1 = 0.0;
    double a2 = 0.0;
    for (double i = 1; i < n; ++i) {
        a1 += 1.0 / i;
        a2 += 1.0 / (i * i);
    }
    // Watterson 1975; Tajima 1983 for the variance of the mean number of differences.
    EXPECT_NEAR(S.mean(), theta * a1, 4.0 * S.mean_error());
    EXPECT_NEAR(S.variance() / (theta * a1 + theta * theta * a2), 1.0, 0.06);
    EXPECT_NEAR(pi.mean(), theta, 4.0 * pi.mean_error());
    const double variance = (n + 1.0) / (3.0 * (n - 1.0)) * theta +
                            2.0 * (n * n + n + 3.0) / (9.0 * n * (n - 1.0)) * theta * theta;
    EXPECT_NEAR(pi.variance() / variance, 1.0, 0.08);
}

// The numbers that the analyses of a sample of sequences give, with all weights at 1.
TEST_F(MutatedSitesTest, EqualTheAnalysesOfTheSampleReadBack) {
    constexpr int n = 25;
    MutatedSites mutated;
    mnd::PopulDNA sample;
    sample.sample_size = n;
    sample.allocate_tree(n);
    for (const double mu : {1.0, 8.0, 60.0}) {
        const MutationModel model{.mu = mu, .sites = 150};
        const mnd::UniformStream here = mnd::uniform_stream;
        sample.simulate_sample(model);
        mnd::Haplo_DB definitions;
        mnd::PopulDNA read;
        mnd::settings s;
        s.TransitionWeight = s.TranversionWeight = s.DeletionWeight = 1.0;
        read.read_simulated_sample(*sample.tree, definitions, model.type);
        ASSERT_EQ(read.evaluate_polymorphism(s), 1);
        ASSERT_EQ(read.compute_molecular_diversity(s), 1);
        mnd::uniform_stream = here;
        sample.fast_simulate_sample(mutated, model);
        EXPECT_EQ(mutated.num_segregating_sites(), read.nb_polym_loci);
        EXPECT_EQ(mutated.num_haplotypes(), read.nb_hapl);
        for (int h = 0; h < read.nb_hapl; ++h)
            EXPECT_EQ(mutated.haplotype_counts()[static_cast<std::size_t>(h)],
                      read.hapl_list.at_const(h)->freq);
        const double pi = static_cast<double>(mutated.pair_differences()) / (n * (n - 1) / 2.0);
        EXPECT_NEAR(pi, read.mean_pairwise_diff, 1e-12 * pi);
    }
}

TEST_F(MutatedSitesTest, WithoutATreeAllLeavesHaveTheSameState) {
    MutatedSites mutated;
    TTree tree(4);
    EXPECT_EQ(mutated.sprinkle(tree, {.mu = 5.0, .sites = 10}), 0);
    for (int leaf = 0; leaf < 4; ++leaf) {
        for (int site = 0; site < 10; ++site)
            EXPECT_EQ(mutated.state(leaf, site), 0);
    }
}

TEST_F(MutatedSitesTest, OneGeneCopyHasOneHaplotypeAndNoPair) {
    MutatedSites mutated;
    TTree tree(1);
    tree.build_tree();
    EXPECT_EQ(mutated.sprinkle(tree, {.mu = 5.0, .sites = 10}), 0);
    EXPECT_EQ(mutated.haplotype_counts(), std::vector{1});
    std::vector<std::int64_t> pairs;
    mutated.count_pair_differences(pairs);
    EXPECT_EQ(pairs, (std::vector<std::int64_t>{0}));
    TTree none;
    EXPECT_EQ(mutated.sprinkle(none, {.mu = 5.0, .sites = 10}), 0);
    EXPECT_EQ(mutated.num_haplotypes(), 0);
}

}  // namespace
