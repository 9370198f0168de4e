#include "run/structure_analyses.h"

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "results/xml_tags.h"
#include "run/messages.h"
#include "run/project.h"
#include "run/tasks.h"
#include "support/project_log.h"
#include "support/sample_texts.h"
#include "support/temp_folder.h"

namespace {

using namespace mnd;
using mnd_test::contains;
using mnd_test::count_of;
using mnd_test::read_text;

// --- When what is called

class Conditions : public ::testing::Test {
protected:
    Conditions() {
        s.ComputeDistanceMatrixAMOVA = 1;
        s.ComputeConventionalFST = 0;
        s.ComputePairwiseFST = s.UnequalPopSizeDiv = s.PrintMissIntermatchs = 0;
        s.PrintDistanceMatrix = s.PrintMinSpannNetworkGlob = 0;
        set(0, 0, 0);
    }
    void set(long tasks, int hapl_amova, int loc_by_loc) {
        s.TaskNumber = tasks;
        s.HaplAMOVA = hapl_amova;
        s.LocByLocAMOVA = loc_by_loc;
    }
    settings s;
};

TEST_F(Conditions, AmovaNeedsItsTaskAndAForm) {
    EXPECT_FALSE(wants_amova(s));
    set(kTaskAmova, 0, 0);
    EXPECT_FALSE(wants_amova(s));
    set(kTaskAmova, 1, 0);
    EXPECT_TRUE(wants_amova(s));
    set(kTaskAmova, 0, 1);
    EXPECT_TRUE(wants_amova(s));
    set(kTaskPairwiseFst, 1, 1);
    EXPECT_FALSE(wants_amova(s));
}

TEST_F(Conditions, SectionOpensForAmovaAndPairs) {
    set(kTaskAmova, 0, 0);
    EXPECT_FALSE(opens_structure_section(s));
    set(kTaskAmova, 0, 1);
    EXPECT_TRUE(opens_structure_section(s));
    set(kTaskPairwiseFst, 0, 0);
    EXPECT_TRUE(opens_structure_section(s));
    set(kTaskMantel | kTaskExactDifferentiation, 1, 1);
    EXPECT_FALSE(opens_structure_section(s));
}

TEST_F(Conditions, FolderOpensForExactTestsToo) {
    set(kTaskMantel, 1, 1);
    EXPECT_FALSE(opens_structure_folder(s));
    set(kTaskExactDifferentiation, 0, 0);
    EXPECT_TRUE(opens_structure_folder(s));
    set(kTaskPairwiseFst, 0, 0);
    EXPECT_TRUE(opens_structure_folder(s));
    set(kTaskAmova, 0, 0);
    EXPECT_FALSE(opens_structure_folder(s));
}

TEST_F(Conditions, MatrixIsNeededByAmovaOverHaplotypes) {
    set(kTaskAmova, 1, 0);
    EXPECT_TRUE(needs_haplotype_matrix(s));
    set(kTaskAmova, 0, 1);
    EXPECT_FALSE(needs_haplotype_matrix(s));
}

TEST_F(Conditions, MatrixIsNeededByThePairsThatUseIt) {
    set(kTaskPairwiseFst, 0, 0);
    EXPECT_FALSE(needs_haplotype_matrix(s));
    for (int settings::*key :
         {&settings::ComputePairwiseFST, &settings::UnequalPopSizeDiv, &settings::PrintMissIntermatchs}) {
        s.*key = 1;
        EXPECT_TRUE(needs_haplotype_matrix(s));
        s.TaskNumber = kTaskExactDifferentiation;
        EXPECT_FALSE(needs_haplotype_matrix(s));
        s.TaskNumber = kTaskPairwiseFst;
        s.*key = 0;
    }
}

TEST_F(Conditions, MatrixIsNeededByTheCorrelationAlone) {
    set(kTaskMantel, 0, 0);
    EXPECT_TRUE(needs_haplotype_matrix(s));
}

TEST_F(Conditions, MatrixThatNobodyComputesIsNotNeeded) {
    set(kTaskAmova | kTaskPairwiseFst | kTaskMantel, 1, 1);
    s.ComputePairwiseFST = 1;
    s.ComputeDistanceMatrixAMOVA = 0;
    EXPECT_FALSE(needs_haplotype_matrix(s));
    s.ComputeConventionalFST = 1;
    EXPECT_TRUE(needs_haplotype_matrix(s));
}

TEST_F(Conditions, RowsAreBoundForWhatReadsTheMatrix) {
    EXPECT_FALSE(needs_matrix_rows(s, true));
    set(kTaskAmova, 0, 1);
    EXPECT_TRUE(needs_matrix_rows(s, false));
    set(kTaskPairwiseFst, 0, 0);
    EXPECT_FALSE(needs_matrix_rows(s, true));
    s.PrintMissIntermatchs = 1;
    EXPECT_TRUE(needs_matrix_rows(s, false));
    // A correlation of given matrices has no haplotypes to bind.
    set(kTaskMantel, 0, 0);
    EXPECT_TRUE(needs_matrix_rows(s, true));
    EXPECT_FALSE(needs_matrix_rows(s, false));
}

TEST_F(Conditions, MatrixIsPrintedForItselfAndForTheNetwork) {
    EXPECT_FALSE(prints_haplotype_matrix(s));
    s.PrintDistanceMatrix = 1;
    EXPECT_TRUE(prints_haplotype_matrix(s));
    s.PrintDistanceMatrix = 0;
    s.PrintMinSpannNetworkGlob = 1;
    EXPECT_TRUE(prints_haplotype_matrix(s));
}

TEST_F(Conditions, WholeHaplotypesAreComparedForPairsAndCorrelationToo) {
    set(kTaskExactDifferentiation, 1, 1);
    EXPECT_FALSE(compares_samples(s));
    EXPECT_FALSE(compares_whole_haplotypes(s));
    EXPECT_FALSE(compares_locus_by_locus(s));
    set(kTaskAmova, 0, 0);
    EXPECT_TRUE(compares_samples(s));
    EXPECT_FALSE(compares_whole_haplotypes(s));
    for (const long task : {kTaskPairwiseFst, kTaskMantel}) {
        set(task, 0, 0);
        EXPECT_TRUE(compares_whole_haplotypes(s)) << task;
        EXPECT_FALSE(compares_locus_by_locus(s)) << task;
    }
    set(kTaskAmova, 1, 1);
    EXPECT_TRUE(compares_whole_haplotypes(s));
    EXPECT_TRUE(compares_locus_by_locus(s));
}

// --- The frame of the analyses between samples

class StructureAnalyses : public ::testing::Test {
protected:
    StructureAnalyses() : s(project.the_settings) {
        s.js_file_name = (folder / "p.js").c_str();
        s.result_file_name = "p.htm";
        s.run_time_stamp = "01/02/03at04:05:06";
        s.TaskNumber = 0;
        s.HaplAMOVA = s.LocByLocAMOVA = s.ComputeConventionalFST = 0;
        document_stream.open(folder / "p.htm", std::ios::out);
        s.result_stream = E.result_stream = &document_stream;
    }
    ~StructureAnalyses() override {
        s.result_stream = E.result_stream = nullptr;
        htmlOutput = true;
    }
    void profile(int data_type, int genotypic, int phase, int recessive) {
        project.DataType = s.data_type = data_type;
        project.GenotypicData = s.genotypic_data = genotypic;
        project.GameticPhase = s.gametic_phase = phase;
        project.RecessiveData = recessive;
    }
    std::string document() {
        document_stream.flush();
        return read_text(folder / "p.htm");
    }
    std::string tree() { return read_text(folder / "p.js"); }

    mnd_test::TempFolder folder;
    mnd_test::ProjectLog log;
    Project project;
    settings& s;
    std::fstream document_stream;
};

TEST_F(StructureAnalyses, ConventionalFstOfUnknownPhaseIsSkipped) {
    constexpr const char* kText =
        "\n\nThe computation of AMOVA with the option \"CONVENTIONAL FST\" is"
        "\nnot possible with unknown gametic phase data.\n"
        "SKIPPING COMPUTATION OF GENETIC STRUCTURE\n";
    profile(STANDARD, 1, 0, 0);
    s.ComputeConventionalFST = 1;
    s.HaplAMOVA = 1;
    s.TaskNumber = kTaskAmova | kTaskPairwiseFst | kTaskStandardIndices;
    project.GenStructCalculations(&document_stream);
    EXPECT_EQ(s.TaskNumber, kTaskStandardIndices);
    EXPECT_EQ(count_of(document(), kText), 1);
    EXPECT_TRUE(log.holds(kText));
    EXPECT_TRUE(
        log.reports("WARNING", "GenStructCalculations()", message_text(kCannotComputeGeneticStructure)));
    EXPECT_FALSE(contains(document(), "GENETIC STRUCTURE ANALYSIS"));
    EXPECT_TRUE(log.holds("\tConverting phenotypic to haplotypic data ...\n"));
    EXPECT_TRUE(log.holds("\tdone ! ("));
}

TEST_F(StructureAnalyses, KnownPhaseKeepsItsTasksUnderConventionalFst) {
    profile(STANDARD, 1, 1, 0);
    s.ComputeConventionalFST = 1;
    s.TaskNumber = kTaskPairwiseFst;
    project.GenStructCalculations(&document_stream);
    EXPECT_EQ(s.TaskNumber, kTaskPairwiseFst);
    EXPECT_TRUE(project.phenotypes_converted);
    EXPECT_TRUE(project.haplotype_vectors_built);
}

TEST_F(StructureAnalyses, ConversionsAreDoneOnce) {
    profile(STANDARD, 1, 1, 0);
    project.phenotypes_converted = project.haplotype_vectors_built = true;
    s.TaskNumber = kTaskPairwiseFst;
    project.GenStructCalculations(&document_stream);
    EXPECT_FALSE(log.holds("Processing phenotypes"));
    EXPECT_FALSE(log.holds("Building vectors"));
}

TEST_F(StructureAnalyses, RecessiveDataSkipAmovaAndPairsButNotExactTests) {
    profile(STANDARD, 1, 0, 1);
    s.HaplAMOVA = 1;
    s.TaskNumber = kTaskAmova | kTaskPairwiseFst | kTaskExactDifferentiation;
    project.GenStructCalculations(&document_stream);
    EXPECT_EQ(s.TaskNumber, kTaskExactDifferentiation);
    EXPECT_TRUE(contains(document(),
                         "\n\nThe computation of AMOVA and PAIRWISE FST is"
                         "\nnot implemented yet with recessive data, sorry\n"));
    EXPECT_FALSE(project.phenotypes_converted);
}

TEST_F(StructureAnalyses, MicrosatellitesSkipTheDetectionOfRepeatLengths) {
    profile(MICROSAT, 0, 1, 0);
    s.TaskNumber = kTaskExactDifferentiation;
    project.GenStructCalculations(&document_stream);
    EXPECT_EQ(count_of(log.text(), "\nSkipping microsat repeat length detection\n"), 1);
}

TEST_F(StructureAnalyses, HeadingStandsBetweenLinesOfEqualsSigns) {
    profile(DNA, 0, 1, 0);
    s.TaskNumber = kTaskPairwiseFst;
    project.GenStructCalculations(&document_stream);
    EXPECT_TRUE(contains(document(), "=\n== GENETIC STRUCTURE ANALYSIS\n="));
}

TEST_F(StructureAnalyses, TreeTellsSamplesFromGroups) {
    profile(DNA, 0, 1, 0);
    s.HaplAMOVA = 1;
    s.TaskNumber = kTaskAmova | kTaskExactDifferentiation;
    project.GenStructCalculations(&document_stream);
    for (const char* part : {"_pop_gen_struct\"))", "Genetic structure (samp=pop)", "_pop_amova\"))",
                             "\"AMOVA\"", "_pop_exct_tests\"))", "\"Exact tests\""})
        EXPECT_EQ(count_of(tree(), part), 1) << part;
    project.samples->output_by_sample = false;
    project.GenStructCalculations(&document_stream);
    for (const char* part :
         {"_gr_gen_struct\"))", "Genetic structure (samp=group)", "_gr_amova\"))", "_gr_exct_tests\"))"})
        EXPECT_EQ(count_of(tree(), part), 1) << part;
    EXPECT_EQ(count_of(document(), "<A NAME="), 6);
}

TEST_F(StructureAnalyses, NoEntriesWhileTheTreeIsOff) {
    profile(DNA, 0, 1, 0);
    htmlOutput = false;
    s.HaplAMOVA = 1;
    s.TaskNumber = kTaskAmova | kTaskExactDifferentiation;
    project.GenStructCalculations(&document_stream);
    EXPECT_EQ(tree(), "");
    EXPECT_FALSE(contains(document(), "<A NAME="));
}

TEST_F(StructureAnalyses, EachAnalysisThatIsNotHeldIsNamedOnce) {
    profile(DNA, 0, 1, 0);
    s.HaplAMOVA = s.LocByLocAMOVA = 1;
    s.TaskNumber = kTaskAmova | kTaskPairwiseFst | kTaskMantel | kTaskExactDifferentiation;
    project.GenStructCalculations(&document_stream);
    for (const char* name :
         {"analysis of molecular variance locus by locus", "correlation between distance matrices",
          "exact test of population differentiation"})
        EXPECT_EQ(count_of(document(), std::string("this version does not hold the ") + name + ".\n"), 1)
            << name;
    EXPECT_EQ(count_of(document(), "Not computed"), 3);
}

// --- Pooling

// Samples and a structure over them, in memory.
class Pooling : public ::testing::Test {
protected:
    Population& add_sample(const char* name) {
        const Population empty(my_string(name), static_cast<int>(samples.populations.count), samples);
        samples.populations.Add(Samples::new_sample(samples.DataType, empty).release());
        samples.NbSamples = static_cast<int>(samples.populations.count);
        Population& sample = *samples.populations[samples.populations.count - 1];
        sample.allele_db = &project.allele_db;
        return sample;
    }
    Population& add_sample(const char* name, const std::string& lines) {
        Population& sample = add_sample(name);
        EXPECT_NE(mnd_test::read_lines(sample, project.haplo_db, lines), 0);
        return sample;
    }
    // Each inner list holds the indices of the samples of one group.
    void group(const std::vector<std::vector<int>>& groups) {
        structure.StructureName = "East and west";
        structure.NbGroups = static_cast<int>(groups.size());
        structure.allocate_groups();
        for (std::size_t g = 0; g < groups.size(); ++g) {
            for (const int index : groups[g]) {
                structure.groups[g].Add(samples.populations[index]);
                ++structure.group_sizes[g];
                ++structure.NbSamples;
            }
        }
    }
    void pool_groups() {
        pooled.set_profile(samples);
        project.poolSamplesInGroups(samples, structure, pooled, pooled_structure);
    }

    mnd_test::ProjectLog log;
    Project project;
    Samples samples;
    Structure structure;
    Samples pooled;
    Structure pooled_structure;
};

TEST_F(Pooling, EntriesOfOneDefinitionBecomeOneInOrderOfFirstAppearance) {
    samples.set_profile(mnd_test::haplotypic(STANDARD, ' '));
    add_sample("A", "h1 2 1 1\nh2 3 1 2\n");
    add_sample("B", "h3 1 2 2\nh2 4\n");
    add_sample("C", "h1 5\n");
    samples.populations[0]->sample_size = 5;
    samples.populations[1]->sample_size = 5;
    samples.populations[2]->sample_size = 5;
    group({{0, 1}, {2}});
    pool_groups();
    ASSERT_EQ(pooled.populations.count, 2);
    const Population& first = *pooled.populations[0];
    EXPECT_EQ(first.name.view(), "Group 1");
    EXPECT_EQ(first.id, 0);
    EXPECT_EQ(first.sample_size, 10.0);
    EXPECT_EQ(first.inv_sample_size, 0.1);
    EXPECT_EQ(first.nb_hapl, 3);
    EXPECT_EQ(first.nb_orig_hapl, 3);
    ASSERT_EQ(first.hapl_list.count, 3);
    const struct {
        const char* name;
        int count;
    } expected[] = {{"h1", 2}, {"h2", 7}, {"h3", 1}};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(first.hapl_list.at_const(i)->def->name.view(), expected[i].name);
        EXPECT_EQ(first.hapl_list.at_const(i)->freq, expected[i].count);
    }
    const Population& second = *pooled.populations[1];
    EXPECT_EQ(second.name.view(), "Group 2");
    EXPECT_EQ(second.id, 1);
    EXPECT_EQ(second.sample_size, 5.0);
    EXPECT_EQ(second.hapl_list.count, 1);
}

TEST_F(Pooling, SamplesThatArePooledStayAsTheyAre) {
    samples.set_profile(mnd_test::haplotypic(STANDARD, ' '));
    add_sample("A", "h1 2 1 1\n");
    add_sample("B", "h1 4\n");
    group({{0, 1}});
    pool_groups();
    EXPECT_EQ(pooled.populations[0]->hapl_list[0]->freq, 6);
    EXPECT_EQ(samples.populations[0]->hapl_list[0]->freq, 2);
    EXPECT_EQ(samples.populations[1]->hapl_list[0]->freq, 4);
    // Definitions are shared, entries are not.
    EXPECT_EQ(pooled.populations[0]->hapl_list[0]->def, samples.populations[0]->hapl_list[0]->def);
    EXPECT_NE(pooled.populations[0]->hapl_list[0], samples.populations[0]->hapl_list[0]);
}

TEST_F(Pooling, PooledSampleIsOfTheClassOfTheData) {
    for (const int type : {DNA, RFLP, MICROSAT, STANDARD, FREQUENCY}) {
        samples.clean();
        pooled.clean();
        samples.set_profile(mnd_test::haplotypic(type, ' '));
        add_sample("A");
        structure.reset();
        group({{0}});
        pool_groups();
        const Population& pool = *pooled.populations[0];
        const Population& sample = *samples.populations[0];
        EXPECT_EQ(typeid(pool), typeid(sample)) << type;
        EXPECT_EQ(pool.allele_db, &project.allele_db);
        EXPECT_EQ(pool.profile.DataType, type);
    }
}

TEST_F(Pooling, IndividualsAreConcatenatedWithSharesOfTheirGroup) {
    samples.set_profile(mnd_test::genotypic(STANDARD, ' ', 0));
    add_sample("A", "i 1 1 2\n  1 3\n");
    add_sample("B", "j 3 1 2\n  1 3\n");
    group({{0, 1}});
    pool_groups();
    const Population& pool = *pooled.populations[0];
    ASSERT_EQ(pool.phen_db.count, 2);
    EXPECT_EQ(pool.phen_db.at_const(0)->label().view(), "i");
    EXPECT_EQ(pool.phen_db.at_const(1)->label().view(), "j");
    EXPECT_EQ(pool.phen_db.at_const(0)->real_freq, 0.25);
    EXPECT_EQ(pool.phen_db.at_const(1)->real_freq, 0.75);
    EXPECT_EQ(pool.hapl_list.count, 0);
    EXPECT_EQ(pool.nb_hapl, samples.populations[0]->nb_hapl + samples.populations[1]->nb_hapl);
    EXPECT_EQ(pool.sample_size, samples.populations[0]->sample_size + samples.populations[1]->sample_size);
}

TEST_F(Pooling, GametesAreConcatenatedInOrder) {
    samples.set_profile(mnd_test::genotypic(STANDARD, ' ', 1));
    HaploDef x(my_string("x"));
    HaploDef y(my_string("y"));
    add_sample("A").gamete_list.Add(new PHaploDef(&x, 1));
    add_sample("B").gamete_list.Add(new PHaploDef(&y, 1));
    samples.populations[0]->phen_to_gam_done = samples.populations[1]->phen_to_gam_done = 1;
    group({{1, 0}});
    pool_groups();
    const Population& pool = *pooled.populations[0];
    ASSERT_EQ(pool.gamete_list.count, 2);
    EXPECT_EQ(pool.gamete_list.at_const(0)->def, &y);
    EXPECT_EQ(pool.gamete_list.at_const(1)->def, &x);
    EXPECT_EQ(pool.phen_to_gam_done, 1);
}

TEST_F(Pooling, PooledStructureIsOneGroupOfAllPooledSamples) {
    samples.set_profile(mnd_test::haplotypic(STANDARD, ' '));
    add_sample("A", "h1 2 1 1\n");
    add_sample("B", "h1 4\n");
    add_sample("C", "h1 1\n");
    group({{2}, {0, 1}});
    pool_groups();
    EXPECT_EQ(pooled.NbSamples, 2);
    EXPECT_EQ(pooled_structure.StructureName.view(), "East and west");
    EXPECT_EQ(pooled_structure.NbGroups, 1);
    EXPECT_EQ(pooled_structure.NbSamples, 2);
    ASSERT_EQ(pooled_structure.groups.size(), 1u);
    EXPECT_EQ(pooled_structure.group_sizes[0], 2);
    ASSERT_EQ(pooled_structure.groups[0].count, 2);
    EXPECT_EQ(pooled_structure.groups[0][0], pooled.populations[0]);
    EXPECT_EQ(pooled_structure.groups[0][1], pooled.populations[1]);
}

TEST_F(Pooling, NoGroupsGiveNoSamples) {
    samples.set_profile(mnd_test::haplotypic(STANDARD, ' '));
    add_sample("A", "h1 2 1 1\n");
    pool_groups();
    EXPECT_EQ(pooled.populations.count, 0);
    EXPECT_EQ(pooled_structure.NbGroups, 0);
    EXPECT_TRUE(pooled_structure.groups.empty());
}

}  // namespace
