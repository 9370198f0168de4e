// Replicates of simulations work in the storage of the ones before.
#include <gtest/gtest.h>

#include <vector>

#include "model/popul_dna.h"
#include "simulation/coalescent_tree.h"
#include "simulation/mutated_sites.h"
#include "support/counted_allocations.h"
#include "support/seeded_stream.h"
#include "support/simulated_samples.h"

namespace {

using mnd::MutationModel;
using mnd::Samples;
using mnd::Structure;
using mnd::TTree;
using mnd_test::add_groups;
using mnd_test::add_samples;

class Replicates : public mnd_test::SeededStream {
protected:
    // Allocations of 50 replicates that need no more room than the 50 before them, of the same draws.
    template <class Simulate>
    static long allocations_of(Simulate simulate) {
        long before = 0;
        for (int round = 0; round < 2; ++round) {
            seed();
            before = mnd_test::allocations;
            for (int r = 0; r < 50; ++r)
                simulate();
        }
        return mnd_test::allocations - before;
    }
};

TEST_F(Replicates, HaveRoomMadeForThemOnce) {
    const long before = mnd_test::allocations;
    TTree tree(30);
    tree.build_tree();
    EXPECT_GT(mnd_test::allocations, before);
}

TEST_F(Replicates, OfOnePopulationAllocateNothing) {
    TTree tree(30);
    EXPECT_EQ(allocations_of([&] { tree.build_tree(); }), 0);
    EXPECT_EQ(allocations_of([&] { tree.build_tree_range_exp(0.6, 4.0); }), 0);
}

TEST_F(Replicates, OfIslandsAllocateNothing) {
    Samples samples;
    add_samples(samples, {12, 7, 5});
    TTree tree;
    EXPECT_EQ(allocations_of([&] { tree.build_tree_struct_pop(samples, 0.0, 0.1, 20); }), 0);
}

TEST_F(Replicates, OfHierarchicalIslandsAllocateNothing) {
    Samples samples;
    add_samples(samples, {12, 7, 5});
    Structure structure;
    add_groups(structure, samples, {{0, 2}, {1}});
    TTree tree;
    EXPECT_EQ(allocations_of(
                  [&] { EXPECT_EQ(tree.build_tree_struct_pop(samples, structure, 0.0, 0.3, 0.1, 6, 5), 1); }),
              0);
}

TEST_F(Replicates, OfMutationsAllocateNothing) {
    mnd::PopulDNA sample;
    sample.sample_size = 25;
    mnd::MutatedSites mutated;
    std::vector<std::int64_t> pairs;
    for (int type = 0; type < 4; ++type) {
        const MutationModel model{
            .mu = 6.0, .sites = 50, .type = static_cast<mnd::Mut_Type>(type), .gamma_a = 0.7};
        sample.allocate_tree(25);
        EXPECT_EQ(allocations_of([&] { sample.simulate_sample(model); }), 0) << type;
        EXPECT_EQ(allocations_of([&] {
                      sample.fast_simulate_sample(mutated, model);
                      mutated.haplotype_counts();
                      mutated.count_pair_differences(pairs);
                  }),
                  0)
            << type;
    }
}

}  // namespace
