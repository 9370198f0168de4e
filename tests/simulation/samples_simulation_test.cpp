// Simulated data of all samples of a project.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "model/samples.h"
#include "run/project.h"
#include "simulation/coalescent_tree.h"
#include "support/captured_log.h"
#include "support/captured_reports.h"
#include "support/sample_moments.h"
#include "support/seeded_stream.h"
#include "support/simulated_samples.h"

namespace {

using mnd::Haplo_DB;
using mnd::Samples;
using mnd::TAlleleDB;
using mnd_test::add_groups;
using mnd_test::add_samples;

class SamplesSimulation : public mnd_test::SeededStream {
protected:
    // A tree of islands over the samples, with mutations.
    static void simulate(Samples& samples, mnd::Mut_Type type, int sites, double mu) {
        mnd::TTree& tree = samples.tree.make();
        tree.allocate_tree(0);
        ASSERT_EQ(tree.build_tree_struct_pop(samples, mu, 0.3, 6), 1);
        EXPECT_EQ(*samples.sprinkle_mutations(mu, sites, type, 0.0, 1.0, 1.0, 1.0 / 3.0),
                  samples.total_mutations);
    }

    static std::string leaf(const Samples& samples, int i, mnd::Mut_Type type) {
        return mnd::sequence_text(*samples.tree->nodes[static_cast<std::size_t>(i)].sequence, type);
    }
};

TEST_F(SamplesSimulation, LeavesBecomeTheHaplotypesOfTheirSample) {
    Samples samples;
    samples.DataType = mnd::DNA;
    samples.LocusSeparator = 0;
    samples.RecessiveAllele = "null";
    add_samples(samples, {6, 0, 9});
    simulate(samples, mnd::kNucleotideMutation, 5, 2.0);
    Haplo_DB definitions;
    TAlleleDB alleles;
    ASSERT_EQ(samples.readPopDataFromSims(definitions, alleles, mnd::kNucleotideMutation), 1);
    std::set<std::string> distinct;
    int i = 0;
    for (const mnd::Population* sample : samples.populations) {
        EXPECT_EQ(sample->allele_db, &alleles);
        int copies = 0;
        for (const mnd::PHaploDef* copy : sample->gamete_list) {
            const std::string text = leaf(samples, i++, mnd::kNucleotideMutation);
            EXPECT_EQ(std::string(copy->def->content.view()), text);
            distinct.insert(text);
        }
        for (const mnd::PHaploDef* entry : sample->hapl_list)
            copies += entry->freq;
        EXPECT_EQ(copies, sample->gamete_list.count);
        EXPECT_EQ(sample->sample_size, copies);
        EXPECT_EQ(sample->nb_hapl, sample->hapl_list.count);
    }
    EXPECT_EQ(i, 15);
    EXPECT_EQ(definitions.list.count, static_cast<std::int64_t>(distinct.size()));
    ASSERT_EQ(alleles.count, 5);
    for (const mnd::TLocus* locus : alleles) {
        EXPECT_EQ(locus->at_const(0)->name(), mnd::my_string("null"));
        EXPECT_EQ(locus->at_const(0)->freq, 0.0);
    }
    for (const mnd::HaploDef* definition : definitions.list)
        EXPECT_EQ(definition->num_alleles(), 5);
    EXPECT_EQ(samples.populations.at_const(1)->sample_size, 0.0);
}

TEST_F(SamplesSimulation, PairsOfLeavesBecomeIndividuals) {
    Samples samples;
    samples.DataType = mnd::MICROSAT;
    samples.GenotypicData = 1;
    samples.LocusSeparator = 0;
    add_samples(samples, {4, 6});
    simulate(samples, mnd::kStepwiseMutation, 1, 3.0);
    Haplo_DB definitions;
    TAlleleDB alleles;
    ASSERT_EQ(samples.readPopDataFromSims(definitions, alleles, mnd::kStepwiseMutation), 1);
    EXPECT_EQ(samples.LocusSeparator, ' ');  // sizes of several digits are one token
    int i = 0;
    for (const mnd::Population* sample : samples.populations) {
        EXPECT_EQ(sample->profile.LocusSeparator, ' ');
        EXPECT_EQ(2 * sample->phen_db.count, static_cast<std::int64_t>(sample->sample_size));
        for (const mnd::TPhenotype* individual : sample->phen_db) {
            for (std::size_t k = 0; k < 2; ++k) {
                const std::string text = leaf(samples, i++, mnd::kStepwiseMutation);
                EXPECT_EQ(std::string(individual->text[k].view()), text);
                EXPECT_EQ(std::string(individual->pseudo_hapl[k]->alleles.at_const(0)->view()), text);
            }
        }
    }
    EXPECT_EQ(i, 10);
    EXPECT_EQ(definitions.list.count, 0);
    double weight = 0.0;
    for (const mnd::TAllele* allele : *alleles.at_const(0))
        weight += allele->freq;
    EXPECT_NEAR(weight, 2.0, 1e-12);  // 1 a sample
}

TEST_F(SamplesSimulation, ATreeThatDoesNotFitChangesNothing) {
    Samples samples;
    Haplo_DB definitions;
    TAlleleDB alleles;
    EXPECT_EQ(samples.readPopDataFromSims(definitions, alleles, mnd::kNewStateMutation), 0);
    samples.GenotypicData = 1;
    add_samples(samples, {3, 5});
    simulate(samples, mnd::kNewStateMutation, 1, 1.0);
    EXPECT_EQ(samples.readPopDataFromSims(definitions, alleles, mnd::kNewStateMutation), 0);
    samples.GenotypicData = 0;
    EXPECT_EQ(samples.readPopDataFromSims(definitions, alleles, mnd::kNewStateMutation), 1);
    samples.tree->nodes[4].sequence.reset();
    EXPECT_EQ(samples.readPopDataFromSims(definitions, alleles, mnd::kNewStateMutation), 0);
    EXPECT_EQ(samples.populations.at_const(0)->gamete_list.count, 3);
}

// Loci simulated one after the other, appended to a second set of samples.
void append_loci(bool genotypic, char separator, mnd::Mut_Type type) {
    Samples source;
    Samples target;
    for (Samples* samples : {&source, &target}) {
        samples->GenotypicData = genotypic ? 1 : 0;
        samples->LocusSeparator = separator;
        add_samples(*samples, {4, 2});
    }
    Haplo_DB definitions;
    TAlleleDB alleles;
    TAlleleDB appended;
    target.init_all_pointers(&appended);
    std::vector<std::string> expected(6);
    for (int locus = 0; locus < 3; ++locus) {
        mnd::TTree& tree = source.tree.make();
        if (locus == 0) tree.allocate_tree(0);
        ASSERT_EQ(tree.build_tree_struct_pop(source, 1.0, 0.3, 6), 1);
        source.sprinkle_mutations(1.0, 1, type, 0.0, 1.0, 1.0, 0.33);
        ASSERT_EQ(source.readPopDataFromSims(definitions, alleles, type), 1);
        ASSERT_EQ(target.addLocus(source, 0, locus, genotypic), 1);
        for (std::size_t i = 0; i < 6; ++i) {
            if (locus > 0 && separator != 0) expected[i] += separator;
            expected[i] += mnd::sequence_text(*tree.nodes[i].sequence, type);
        }
        EXPECT_EQ(appended.count, locus + 1);
    }
    EXPECT_EQ(target.addLocus(source, 0, 2, genotypic), 0);  // there are three
    EXPECT_EQ(target.addLocus(source, 1, 3, genotypic), 0);  // the source has one
    EXPECT_EQ(target.addLocus(source, -1, 3, genotypic), 0);
    EXPECT_EQ(target.addLocus(Samples(), 0, 3, genotypic), 0);
    std::size_t i = 0;
    for (const mnd::Population* sample : target.populations) {
        for (const mnd::PHaploDef* copy : sample->gamete_list) {
            EXPECT_EQ(std::string(copy->def->content.view()), expected[i++]);
            EXPECT_EQ(copy->def->num_alleles(), 3);
        }
        for (const mnd::TPhenotype* individual : sample->phen_db) {
            EXPECT_EQ(individual->num_loci(), 3);
            int het = 0;
            for (int locus = 0; locus < 3; ++locus)
                het += individual->pseudo_hapl[0]->alleles.at_const(locus) !=
                               individual->pseudo_hapl[1]->alleles.at_const(locus)
                           ? 1
                           : 0;
            EXPECT_EQ(individual->nb_het_loci, het);
            for (const auto& text : individual->text)
                EXPECT_EQ(std::string(text.view()), expected[i++]);
        }
    }
    EXPECT_EQ(i, 6U);
    ASSERT_EQ(target.addLocus(source, 0, 0, genotypic), 1);
    EXPECT_EQ(appended.count, 1);
    EXPECT_EQ(target.populations.at_const(0)->evaluate_nb_loci(), 1);
}

TEST_F(SamplesSimulation, LociAreAppendedToHaplotypes) {
    append_loci(false, ' ', mnd::kStepwiseMutation);
    append_loci(false, 0, mnd::kNucleotideMutation);
}

TEST_F(SamplesSimulation, LociAreAppendedToIndividuals) {
    append_loci(true, '\t', mnd::kNewStateMutation);
    append_loci(true, 0, mnd::kBinaryMutation);
}

TEST_F(SamplesSimulation, CopiesOfAppendedSamplesKeepTheirDefinitions) {
    Samples copy;
    {
        Samples source;
        add_samples(source, {4});
        source.tree.make().allocate_tree(0);
        source.tree->build_tree_struct_pop(source, 1.0, 0.3, 6);
        source.sprinkle_mutations(1.0, 1, mnd::kNewStateMutation, 0.0, 1.0, 1.0, 0.33);
        Haplo_DB definitions;
        TAlleleDB alleles;
        source.readPopDataFromSims(definitions, alleles, mnd::kNewStateMutation);
        Samples target;
        add_samples(target, {4});
        TAlleleDB appended;
        target.init_all_pointers(&appended);
        ASSERT_EQ(target.addLocus(source, 0, 0, false), 1);
        copy = target;
        EXPECT_FALSE(static_cast<bool>(copy.tree));
    }
    EXPECT_EQ(copy.populations.at_const(0)->hapl_list.at_const(3)->def->name, mnd::my_string("h4"));
}

class SimulatedProject : public mnd_test::SeededStream {
protected:
    void SetUp() override {
        SeededStream::SetUp();
        project.clean();
        delete project.samples;
        delete project.structure;
        project.samples = new Samples;
        project.structure = new mnd::Structure;
        add_samples(*project.samples, {6, 4, 8});
        mnd::TNode::hits.assign(400, 0);  // as another analysis leaves it
    }
    mnd::Project project;
};

TEST_F(SimulatedProject, HasNewDataOfTheSameSizesInBothModels) {
    add_groups(*project.structure, *project.samples, {{2}, {0, 1}});
    for (int r = 0; r < 20; ++r) {
        ASSERT_EQ(project.simulateSample(0.5, 1, mnd::kNewStateMutation, 0.0, 1.0, 1.0, 1.0 / 3.0, 0.2, 10),
                  1);
        EXPECT_EQ(mnd::TNode::hits.size(), 1U);
        ASSERT_EQ(
            project.simulateSample(0.5, 1, mnd::kNewStateMutation, 0.0, 1.0, 1.0, 1.0 / 3.0, 0.3, 0.1, 5, 4),
            1);
        const int sizes[3] = {6, 4, 8};
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(project.samples->populations.at_const(i)->sample_size, sizes[i]);
    }
    EXPECT_TRUE(project.samples->tree->deme_nodes.empty());
    EXPECT_TRUE(project.haplotype_vectors_built);
    // The groups are those of before, over the simulated samples.
    ASSERT_EQ(project.structure->groups.size(), 2U);
    EXPECT_EQ(project.structure->groups[0].at_const(0), project.samples->populations.at_const(2));
    EXPECT_EQ(project.structure->groups[1].at_const(0), project.samples->populations.at_const(0));
    EXPECT_EQ(project.structure->groups[1].at_const(1), project.samples->populations.at_const(1));
}

// Between two replicates another analysis simulates 400 sites.
TEST_F(SimulatedProject, GoesOnAfterAnotherAnalysisHasSimulated) {
    add_groups(*project.structure, *project.samples, {{2}, {0, 1}});
    const auto island = [&] {
        return project.simulateSample(9.0, 1, mnd::kNewStateMutation, 0.0, 1.0, 1.0, 0.33, 0.2, 10);
    };
    const auto hierarchical = [&] {
        return project.simulateSample(9.0, 1, mnd::kNewStateMutation, 0.0, 1.0, 1.0, 0.33, 0.3, 0.1, 5, 4);
    };
    ASSERT_EQ(island(), 1);
    const mnd_test::CapturedReports reports;
    mnd::TNode::hits.assign(400, 0);
    EXPECT_EQ(island(), 1);
    EXPECT_GT(project.samples->total_mutations, 0);
    mnd::TNode::hits.assign(400, 0);
    EXPECT_EQ(hierarchical(), 1);
    EXPECT_GT(project.samples->total_mutations, 0);
    EXPECT_TRUE(reports.all().empty());
}

// In the hierarchical form the leaves come group by group, and each block goes to its own sample.
TEST_F(SimulatedProject, GivesEachSampleItsOwnLeaves) {
    add_groups(*project.structure, *project.samples, {{2}, {0, 1}});
    mnd::TTree& tree = project.samples->tree.make();
    tree.allocate_tree(0);
    ASSERT_EQ(tree.build_tree_struct_pop(*project.samples, *project.structure, 0.5, 0.3, 0.1, 5, 4), 1);
    project.samples->sprinkle_mutations(0.5, 1, mnd::kNewStateMutation, 0.0, 1.0, 1.0, 0.33);
    const auto state = [&](int leaf) {
        return std::to_string((*tree.nodes[static_cast<std::size_t>(leaf)].sequence)[0]);
    };
    project.samples->readPopDataFromSims(project.haplo_db, project.allele_db, mnd::kNewStateMutation);
    const int first[3] = {8, 14, 0};
    for (int s = 0; s < 3; ++s) {
        int leaf = first[s];
        for (const mnd::PHaploDef* copy : project.samples->populations.at_const(s)->gamete_list)
            EXPECT_EQ(std::string(copy->def->content.view()), state(leaf++));
    }
}

TEST_F(SimulatedProject, AFailedReplicateIsToldAndKeepsTheData) {
    add_groups(*project.structure, *project.samples, {{2}, {0, 1}});
    ASSERT_EQ(project.simulateSample(0.5, 1, mnd::kNewStateMutation, 0.0, 1.0, 1.0, 1.0 / 3.0, 0.2, 10), 1);
    const std::string text =
        "\tProject::simulateSample(): Unable to simulate samples\n"
        "\tpotentially due to migration rates not within interval ]0..1[\n";
    {
        const mnd_test::CapturedLog log;
        EXPECT_EQ(project.simulateSample(0.5, 1, mnd::kNewStateMutation, 0.0, 1.0, 1.0, 0.33, 0.3, 1.0, 5, 4),
                  0);
        EXPECT_EQ(log.text(), text);
    }
    {
        const mnd_test::CapturedLog log;
        EXPECT_EQ(project.simulateSample(0.5, 1, mnd::kNewStateMutation, 0.0, 1.0, 1.0, 0.33, 1.0, 10), 0);
        EXPECT_EQ(log.text(), text);
    }
    EXPECT_EQ(project.samples->populations.at_const(0)->gamete_list.count, 6);
}

// With new states only, the probability that two gene copies differ is the share of pairs of leaves with
// a mutation between them; F_ST from these probabilities recovers the one simulated when mutation is
// rare: (H_between - H_within) / H_between (Slatkin 1991).
TEST_F(SimulatedProject, RecoversTheDifferentiationAskedFor) {
    double within = 0.0;
    double between = 0.0;
    for (int r = 0; r < 20000; ++r) {
        ASSERT_EQ(project.simulateSample(0.01, 1, mnd::kNewStateMutation, 0.0, 1.0, 1.0, 0.33, 0.25, 10), 1);
        const auto& samples = project.samples->populations;
        const auto def = [&](int s, int i) { return samples.at_const(s)->gamete_list.at_const(i)->def; };
        within += def(0, 0) != def(0, 1) ? 1.0 : 0.0;
        within += def(1, 0) != def(1, 1) ? 1.0 : 0.0;
        between += def(0, 0) != def(1, 0) ? 1.0 : 0.0;
        between += def(0, 1) != def(2, 0) ? 1.0 : 0.0;
    }
    EXPECT_NEAR((between - within) / between, 0.25, 0.04);
}

}  // namespace
