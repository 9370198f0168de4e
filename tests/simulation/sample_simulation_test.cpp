// Simulated samples: trees, mutations, and the leaves read back.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "foundation/message_codes.h"
#include "model/popul_dna.h"
#include "model/popul_rflp.h"
#include "run/settings.h"
#include "simulation/coalescent_tree.h"
#include "simulation/mutated_sites.h"
#include "support/captured_reports.h"
#include "support/plain_genealogy.h"
#include "support/sample_moments.h"
#include "support/seeded_stream.h"

namespace {

using mnd::MutationModel;
using mnd::TNode;

class SampleSimulation : public mnd_test::SeededStream {
protected:
    static void start(mnd::PopGenetics& sample, int n) {
        sample.sample_size = n;
        sample.allocate_tree(n);
    }
};

TEST_F(SampleSimulation, HasTheTreeThenTheMutations) {
    mnd::PopulDNA sample;
    start(sample, 9);
    seed();
    TNode::_tot_mut = 77;
    TNode::node_count = 5;
    const long total = *sample.simulate_sample(3.0, 40, mnd::kNucleotideMutation, 0.0, 1.0, 1.0, 0.33);
    const double after = next();
    EXPECT_EQ(sample.total_mutations, total);
    EXPECT_EQ(TNode::_tot_mut, total);
    EXPECT_EQ(TNode::node_count, 8);
    seed();
    mnd_test::PlainTree plain = mnd_test::plain_kingman(9);
    const MutationModel model{.mu = 3.0, .sites = 40};
    mnd_test::PlainMutations mutations(plain, model);
    EXPECT_EQ(mutations.drop(), total);
    EXPECT_EQ(next(), after);
    EXPECT_TRUE(mnd_test::same_genealogy(*sample.tree, plain));
    EXPECT_EQ(TNode::hits, mutations.hits);
}

TEST_F(SampleSimulation, TheTwoFormsOfEachSimulationAreOne) {
    mnd::PopulDNA sample;
    start(sample, 12);
    const MutationModel model{3e-6, 30, mnd::kNucleotideMutation, 0.7, 0.2, 4.0, 0.4};
    const auto same = [&](auto plain, auto named) {
        seed();
        sample.allocate_tree(12);
        const long total = *plain();
        const double after = next();
        seed();
        sample.allocate_tree(12);
        EXPECT_EQ(*named(), total);
        EXPECT_EQ(next(), after);
    };
    same([&] { return sample.simulate_sample(3e-6, 30, mnd::kNucleotideMutation, 0.7, 0.2, 4.0, 0.4); },
         [&] { return sample.simulate_sample(model); });
    same(
        [&] {
            return sample.simulate_sample_exp(3e-6, 30, mnd::kNucleotideMutation, 0.7, 0.2, 4.0, 0.4, 0.3,
                                              0.2, 1000000);
        },
        [&] { return sample.simulate_sample_exp(model, 0.3, 0.2, 1000000); });
    same(
        [&] {
            return sample.simulate_range_exp(3e-6, 30, mnd::kNucleotideMutation, 0.7, 0.2, 4.0, 0.4, 0.3, 2.0,
                                             1000000);
        },
        [&] { return sample.simulate_range_exp(model, 0.3, 2.0, 1000000); });
    MutationModel high = model;
    high.mu = 3.0;
    same(
        [&] {
            sample.fast_build_tree();
            return sample.sprinkle_mutations(3.0, 30, mnd::kNucleotideMutation, 0.7, 0.2, 4.0, 0.4);
        },
        [&] {
            sample.fast_build_tree();
            return sample.sprinkle_mutations(high);
        });
    EXPECT_GT(sample.total_mutations, 0);
}

TEST_F(SampleSimulation, ATreeThatWasNotBuiltHasNoMutations) {
    mnd::PopulDNA sample;
    start(sample, 12);
    sample.simulate_sample({.mu = 9.0, .sites = 5});
    sample.allocate_tree(12);
    mnd::reset_draws_taken();
    EXPECT_EQ(*sample.sprinkle_mutations({.mu = 9.0, .sites = 5}), 0);
    mnd::MutatedSites mutated;
    EXPECT_EQ(mutated.sprinkle(*sample.tree, {.mu = 9.0, .sites = 5}), 0);
    EXPECT_EQ(mutated.haplotype_counts(), std::vector{12});
    EXPECT_EQ(mnd::draws_taken(), 0U);
}

// theta = 2 N u: with times in coalescent units mutations fall at theta / 2, with times in generations
// at u = (theta / 2) / N; an expansion of scale 1 is none.
TEST_F(SampleSimulation, BothTimeScalesGiveTheSameNumberOfMutations) {
    constexpr int n = 10;
    constexpr double theta = 5.0;
    constexpr int N = 4000000;
    mnd::PopulDNA sample;
    start(sample, n);
    mnd_test::SampleMoments coalescent;
    mnd_test::SampleMoments generations;
    double a1 = 0.0;
    for (int i = 1; i < n; ++i)
        a1 += 1.0 / i;
    for (int r = 0; r < 10000; ++r) {
        coalescent.add(static_cast<double>(*sample.simulate_sample({.mu = theta / 2.0, .sites = 20})));
        generations.add(static_cast<double>(
            *sample.simulate_sample_exp({.mu = theta / 2.0 / N, .sites = 20}, 0.7, 1.0, N)));
    }
    EXPECT_NEAR(coalescent.mean(), theta * a1, 4.0 * coalescent.mean_error());
    EXPECT_NEAR(generations.mean(), theta * a1, 4.0 * generations.mean_error());
}

TEST_F(SampleSimulation, AnExpansionIsTheTreeStretchedAndScaled) {
    mnd::PopulDNA sample;
    start(sample, 8);
    seed();
    sample.build_tree_fast_one_pop(0.4, 0.1, 1000);
    mnd::TTree tree(8);
    seed();
    tree.build_tree();
    for (std::size_t i = 8; i < 15; ++i) {
        const double age = tree.nodes[i].time;
        EXPECT_EQ(sample.tree->nodes[i].time, (age > 0.4 ? (age - 0.4) * 0.1 + 0.4 : age) * 1000.0);
    }
    seed();
    sample.build_tree_fast_range_exp(0.4, 3.0, 1000);
    seed();
    tree.build_tree_range_exp(0.4, 3.0);
    for (std::size_t i = 8; i < 15; ++i)
        EXPECT_EQ(sample.tree->nodes[i].time, tree.nodes[i].time * 1000.0);
}

TEST_F(SampleSimulation, RatesAreMadeOnceAndDrawnAnewForEachTree) {
    mnd::PopulDNA sample;
    start(sample, 5);
    const MutationModel model{.mu = 1.0, .sites = 8, .gamma_a = 0.6};
    sample.simulate_sample(model);
    const std::vector<double> first = TNode::mut_rates.rates;
    ASSERT_EQ(first.size(), 8U);
    sample.simulate_sample(model);
    EXPECT_NE(TNode::mut_rates.rates, first);
    double sum = 0.0;
    for (const double rate : TNode::mut_rates.rates)
        sum += rate;
    EXPECT_NEAR(sum, 1.0, 1e-12);
}

TEST_F(SampleSimulation, GammaZeroUsesNoTableOfRates) {
    mnd::PopulDNA sample;
    start(sample, 5);
    sample.simulate_sample({.mu = 20.0, .sites = 8});
    EXPECT_TRUE(TNode::mut_rates.rates.empty());
}

TEST_F(SampleSimulation, ANegativeShapeMakesTwoClassesWithoutDraws) {
    mnd::PopulDNA sample;
    start(sample, 5);
    sample.simulate_sample({.mu = 0.0, .sites = 4, .type = mnd::kNewStateMutation, .gamma_a = -1.0});
    EXPECT_EQ(TNode::mut_rates.rates, (std::vector<double>{0.25, 0.25, 0.25, 0.25}));
}

TEST_F(SampleSimulation, AnotherNumberOfSitesIsWarnedOfAndGivesNoMutation) {
    mnd::PopulDNA sample;
    start(sample, 6);
    EXPECT_GT(*sample.simulate_sample({.mu = 50.0, .sites = 400}), 0);
    const mnd_test::CapturedReports reports;
    mnd::reset_draws_taken();
    EXPECT_EQ(*sample.simulate_sample({.mu = 50.0, .sites = 399}), 0);
    EXPECT_EQ(mnd::draws_taken(), 15U);
    EXPECT_EQ(sample.total_mutations, 0);
    const mnd_test::Report warning{mnd::Warning, "PopGenetics::sprinkle_mutations()",
                                   mnd::kHitsVectorHasBadSize};
    EXPECT_EQ(reports.all(), std::vector{warning});
}

TEST_F(SampleSimulation, ANewSeriesMayHaveAnotherNumberOfSites) {
    mnd::PopulDNA sample;
    start(sample, 6);
    sample.simulate_sample({.mu = 50.0, .sites = 400, .gamma_a = -1.0});
    mnd::PopulDNA other;
    start(other, 4);
    const mnd_test::CapturedReports reports;
    EXPECT_GT(*other.simulate_sample({.mu = 50.0, .sites = 30, .gamma_a = 0.4}), 0);
    EXPECT_TRUE(reports.all().empty());
    EXPECT_EQ(TNode::hits.size(), 30U);
    EXPECT_EQ(TNode::mut_rates.rates.size(), 30U);
}

TEST_F(SampleSimulation, ATreeIsMadeWhereNoneWasAllocated) {
    TNode::hits.clear();
    mnd::PopulDNA sample;
    sample.sample_size = 7;
    sample.fast_build_tree();
    EXPECT_EQ(sample.tree->root()->count_desc(), 7);
    mnd::PopulDNA empty;
    EXPECT_EQ(*empty.simulate_sample({.mu = 5.0, .sites = 4}), 0);
}

TEST_F(SampleSimulation, TreesAreNotCopiedWithTheData) {
    mnd::PopulDNA sample;
    start(sample, 7);
    sample.fast_build_tree();
    const std::unique_ptr<mnd::Population> copy(sample.clone());
    EXPECT_FALSE(static_cast<bool>(static_cast<mnd::PopulDNA&>(*copy).tree));
    EXPECT_TRUE(static_cast<bool>(sample.tree));
}

TEST_F(SampleSimulation, WithoutMutationThereIsOneHaplotype) {
    mnd::PopulDNA sample;
    start(sample, 11);
    sample.simulate_sample({.mu = 0.0, .sites = 6});
    mnd::Haplo_DB definitions;
    mnd::PopulDNA read;
    read.read_simulated_sample(*sample.tree, definitions, mnd::kNucleotideMutation);
    EXPECT_EQ(read.sample_size, 11.0);
    ASSERT_EQ(read.hapl_list.count, 1);
    EXPECT_EQ(read.hapl_list.at_const(0)->freq, 11);
    EXPECT_EQ(read.hapl_list.at_const(0)->def->name, mnd::my_string("0"));
    EXPECT_EQ(std::string(read.hapl_list.at_const(0)->def->content.view()),
              mnd::sequence_text(*sample.tree->root()->sequence, mnd::kNucleotideMutation));
}

TEST_F(SampleSimulation, LeavesAreReadAsHaplotypesOfTheirFirstLeaf) {
    mnd::PopulDNA sample;
    start(sample, 30);
    sample.simulate_sample({.mu = 1.5, .sites = 25});
    mnd::Haplo_DB definitions;
    mnd::PopulDNA read;
    read.nb_hapl = 9;
    for (int twice = 0; twice < 2; ++twice)
        read.read_simulated_sample(*sample.tree, definitions, mnd::kNucleotideMutation);
    std::vector<std::string> texts;
    std::vector<std::string> names;
    std::vector<int> counts;
    for (int i = 0; i < 30; ++i) {
        const std::string text = mnd::sequence_text(*sample.tree->nodes[static_cast<std::size_t>(i)].sequence,
                                                    mnd::kNucleotideMutation);
        const auto found = std::find(texts.begin(), texts.end(), text);
        if (found == texts.end()) {
            texts.push_back(text);
            names.push_back(std::to_string(i));
            counts.push_back(1);
        } else {
            ++counts[static_cast<std::size_t>(found - texts.begin())];
        }
    }
    ASSERT_GT(texts.size(), 1U);
    EXPECT_EQ(read.nb_hapl, static_cast<int>(texts.size()));
    EXPECT_EQ(read.nb_orig_hapl, read.nb_hapl);
    EXPECT_EQ(read.inv_sample_size, 1.0 / 30);
    ASSERT_EQ(definitions.list.count, static_cast<std::int64_t>(texts.size()));
    for (std::size_t h = 0; h < texts.size(); ++h) {
        const mnd::PHaploDef& entry = *read.hapl_list.at_const(static_cast<std::int64_t>(h));
        EXPECT_EQ(entry.def, definitions.list.at_const(static_cast<std::int64_t>(h)));
        EXPECT_EQ(std::string(entry.def->content.view()), texts[h]);
        EXPECT_EQ(std::string(entry.def->name.view()), names[h]);
        EXPECT_EQ(entry.freq, counts[h]);
        EXPECT_EQ(entry.def->count, counts[h]);
        EXPECT_EQ(entry.def->id, static_cast<int>(h));
    }
}

TEST_F(SampleSimulation, ASimulatedSampleIsAnalysedAsAReadOneIs) {
    mnd::PopulDNA sample;
    start(sample, 20);
    sample.simulate_sample({.mu = 4.0, .sites = 200});
    mnd::Haplo_DB definitions;
    mnd::PopulDNA read;
    read.read_simulated_sample(*sample.tree, definitions, mnd::kNucleotideMutation);
    const mnd_test::CapturedReports reports;
    EXPECT_EQ(read.check_data(), 1);
    EXPECT_EQ(read.evaluate_polymorphism(mnd::settings()), 1);
    EXPECT_TRUE(reports.all().empty());
    int segregating = 0;
    for (std::size_t s = 0; s < 200; ++s) {
        bool differs = false;
        for (std::size_t i = 1; i < 20; ++i)
            differs = differs || (*sample.tree->nodes[i].sequence)[s] != (*sample.tree->nodes[0].sequence)[s];
        segregating += differs ? 1 : 0;
    }
    EXPECT_GT(segregating, 0);
    EXPECT_EQ(read.nb_polym_loci, segregating);
}

TEST_F(SampleSimulation, ALeafWithoutSequenceIsReportedAndLeftOut) {
    mnd::PopulDNA sample;
    start(sample, 4);
    sample.simulate_sample({.mu = 0.0, .sites = 3});
    sample.tree->nodes[2].sequence.reset();
    sample.tree->nodes[3].sequence->resize(2);
    mnd::Haplo_DB definitions;
    mnd::PopulDNA read;
    const mnd_test::CapturedReports reports;
    read.read_simulated_sample(*sample.tree, definitions, mnd::kNucleotideMutation);
    const mnd_test::Report error{mnd::Error, "PopGenetics::read_simulated sample()",
                                 mnd::kInvalidDataOrOutput};
    EXPECT_EQ(reports.all(), (std::vector{error, error}));
    ASSERT_EQ(read.hapl_list.count, 1);
    EXPECT_EQ(read.hapl_list.at_const(0)->freq, 2);
}

TEST_F(SampleSimulation, BinarySitesAreReadAsRestrictionSites) {
    mnd::PopulRFLP sample;
    start(sample, 10);
    sample.simulate_sample({.mu = 3.0, .sites = 12, .type = mnd::kBinaryMutation});
    mnd::Haplo_DB definitions;
    mnd::PopulRFLP read;
    read.read_simulated_sample(*sample.tree, definitions, mnd::kBinaryMutation);
    for (const mnd::PHaploDef* entry : read.hapl_list)
        EXPECT_EQ(entry->def->content.view().find_first_not_of("01"), std::string_view::npos);
    EXPECT_EQ(read.check_data(), 1);
}

}  // namespace
