#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "run/messages.h"
#include "run/process.h"
#include "run/project.h"
#include "run/tasks.h"
#include "support/project_log.h"
#include "support/small_projects.h"
#include "support/temp_folder.h"

namespace {

using namespace mnd;
using mnd_test::contains;
using mnd_test::count_of;
using mnd_test::dna_project;
using mnd_test::read_text;
using mnd_test::write_text;

std::string profile_of(const std::string& data_type, const std::string& more) {
    return "[Profile]\nTitle=\"T\"\nNbSamples=2\nDataType=" + data_type +
           "\nLocusSeparator=WHITESPACE\nMissingData=\"?\"\n" + more + "\n[Data]\n[[Samples]]\n";
}

// Two samples of two individuals each, at two loci.
std::string genotypic_project(const std::string& data_type, int phase, const std::string& more = "") {
    const std::string sample = "\"\nSampleSize=2\nSampleData={\ni 1 1 2\n  1 3\nj 1 1 2\n  2 2\n}\n";
    return profile_of(data_type, "GenotypicData=1\nGameticPhase=" + std::to_string(phase) + "\n" + more) +
           "SampleName=\"A" + sample + "SampleName=\"B" + sample;
}

std::string haplotypic_project(const std::string& data_type) {
    const std::string sample = "\"\nSampleSize=3\nSampleData={\n";
    return profile_of(data_type, "GenotypicData=0") + "SampleName=\"A" + sample + "a 2 1 2\nb 1 1 3\n}\n" +
           "SampleName=\"B" + sample + "c 3 2 2\n}\n";
}

std::string frequency_project() {
    return profile_of("FREQUENCY", "GenotypicData=0") +
           "SampleName=\"A\"\nSampleSize=3\nSampleData={\na 2\nb 1\n}\n"
           "SampleName=\"B\"\nSampleSize=3\nSampleData={\na 3\n}\n";
}

class Feasibility : public ::testing::Test {
protected:
    Feasibility() : s(project.the_settings) {
        project.ProfileSettings::the_settings = &s;
        s.MarkovChainDememorisationStepsLD = s.MarkovChainDememorisationStepsHW = 1000;
        s.InferHaplotypeDefinitionFromDistanceMatrix = s.EliminateRedondHaplodefs = 0;
        s.RecessiveAllelesEM = s.DetectSelectedLoci = 0;
        s.TaskNumber = 0;
        s.project_directory = (folder.path().string() + "/").c_str();
        results.open(folder / "results.txt", std::ios::out);
        s.result_stream = &results;
    }
    ~Feasibility() override { s.result_stream = nullptr; }

    void open(const std::string& text) {
        write_text(folder / "p.mnp", text);
        copy_path(settings::input_file, (folder / "p.mnp").c_str(), settings::kInputFileSize);
        ASSERT_TRUE(project.newOpen()) << log.text();
        s.genotypic_data = project.GenotypicData;
        s.gametic_phase = project.GameticPhase;
        s.data_type = project.DataType;
    }
    std::string document() {
        results.flush();
        return read_text(folder / "results.txt");
    }

    mnd_test::TempFolder folder;
    mnd_test::ProjectLog log;
    Project project;
    settings& s;
    std::fstream results;
};

TEST_F(Feasibility, ChecksLogTheirBeginAndEnd) {
    open(dna_project());
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_TRUE(
        log.holds("  Checking all selected options...\t\tBuilding vectors of alleles...\n\t\tdone in "));
    EXPECT_TRUE(log.holds("  done!  check selected settings...  done!\n"));
    EXPECT_TRUE(project.haplotype_vectors_built);
}

TEST_F(Feasibility, HardyWeinbergOfHaplotypesIsSkipped) {
    open(dna_project());
    s.TaskNumber = kTaskHardyWeinberg | kTaskTajima;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.TaskNumber, kTaskTajima);
    EXPECT_TRUE(
        log.holds("     !!!Hardy-Weinberg disequilibrium test is not possible on Haplotypic data,\n"
                  "        this task will be skipped.\n"));
}

TEST_F(Feasibility, NoSamplesFail) {
    EXPECT_FALSE(project.make_run_possible());
    EXPECT_TRUE(
        log.reports("ERROR", "Project::make_run_possible()", message_text(kNoSamplesHaveBeenDefined)));
    EXPECT_EQ(project.failure_reason.view(), "no samples have been defined");
}

TEST_F(Feasibility, DataThatAreNotValidFail) {
    open(haplotypic_project("STANDARD"));
    project.haplo_db.find_by_name(my_string("c"))->content = "2 2 2";
    EXPECT_FALSE(project.make_run_possible());
    EXPECT_EQ(project.failure_reason.view(), "the data of a sample are not valid");
}

TEST_F(Feasibility, HaplotypeVectorsAreBuiltOnce) {
    open(haplotypic_project("MICROSAT"));
    ASSERT_TRUE(project.make_run_possible());
    for (const HaploDef* definition : project.haplo_db.list)
        EXPECT_EQ(definition->num_alleles(), 2);
    EXPECT_EQ(count_of(log.text(), "Building vectors of alleles"), 1);
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(count_of(log.text(), "Building vectors of alleles"), 1);
}

TEST_F(Feasibility, KnownPhaseGivesGametesAtOnce) {
    open(genotypic_project("STANDARD", 1));
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_TRUE(project.phenotypes_converted);
    EXPECT_TRUE(project.haplotype_vectors_built);
    EXPECT_TRUE(log.holds("\t\tProcessing phenotypes into pseudo-haplotypes...\t\tBuilding vectors"));
    EXPECT_EQ(project.samples->populations[0]->hapl_list.count, 3);  // "1 2" twice, "1 3", "2 2"
}

TEST_F(Feasibility, UnknownPhaseGivesGametesOnlyWhereTheyAreNeeded) {
    struct Case {
        long tasks;
        int recessive, selection;
        bool converted;
    };
    for (const Case& c : {Case{0, 0, 0, false}, Case{kTaskTajima, 0, 0, false},
                          Case{kTaskStandardIndices, 0, 0, true}, Case{kTaskMolecularDiversity, 0, 0, true},
                          Case{0, 0, 1, true}, Case{kTaskStandardIndices, 1, 1, false}}) {
        project.clean();
        project.phenotypes_converted = project.haplotype_vectors_built = false;
        open(genotypic_project("STANDARD", 0));
        s.TaskNumber = c.tasks;
        s.RecessiveAllelesEM = c.recessive;
        s.DetectSelectedLoci = c.selection;
        ASSERT_TRUE(project.make_run_possible());
        EXPECT_EQ(project.phenotypes_converted, c.converted) << c.tasks << c.recessive << c.selection;
    }
}

TEST_F(Feasibility, KnownPhaseWithRecessiveDataFailsTheComparisonsOfSamples) {
    for (const long task : {kTaskExactDifferentiation, kTaskAmova, kTaskPairwiseFst}) {
        project.clean();
        open(genotypic_project("STANDARD", 1, "RecessiveData=1\nRecessiveAllele=\"r\""));
        s.TaskNumber = task;
        EXPECT_FALSE(project.make_run_possible()) << task;
        EXPECT_TRUE(
            log.reports("ERROR", "Project::make_run_possible()", message_text(kKnownPhaseWithRecessiveData)));
    }
    project.clean();
    open(genotypic_project("STANDARD", 0, "RecessiveData=1\nRecessiveAllele=\"r\""));
    s.TaskNumber = kTaskExactDifferentiation;
    EXPECT_TRUE(project.make_run_possible());
}

TEST_F(Feasibility, AssignmentOfHaplotypesIsSkipped) {
    open(dna_project());
    s.TaskNumber = kTaskAssignment;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.TaskNumber, 0);
    EXPECT_TRUE(
        log.holds("   !!!The computation of the likelihood of all individuals in each\n"
                  "      population is only possible for Genotypic data \n"
                  "      skipping the task...\n"));
    project.clean();
    open(genotypic_project("STANDARD", 0));
    s.TaskNumber = kTaskAssignment;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.TaskNumber, kTaskAssignment);
}

// --- The matrix of distances

constexpr const char* kComputesMatrix =
    "    !!!No matrix was specified in input file, Mendrake will compute it from the data\n";
constexpr const char* kUsesFrequencies =
    "   !!!No molecular information is available for testing genetic structure,\n"
    "      haplotype frequencies will be used, and conventional Fst will be computed\n";

TEST_F(Feasibility, ConventionalFstComputesItsMatrix) {
    open(dna_project());
    s.TaskNumber = kTaskPairwiseFst;
    s.ComputeConventionalFST = 1;
    s.ComputeDistanceMatrixAMOVA = 0;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.ComputeDistanceMatrixAMOVA, 1);
    EXPECT_FALSE(log.holds(kComputesMatrix));
}

TEST_F(Feasibility, MatrixThatIsNeitherGivenNorWantedIsComputed) {
    open(dna_project());
    s.TaskNumber = kTaskPairwiseFst;
    s.ComputeConventionalFST = s.ComputeDistanceMatrixAMOVA = 0;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.ComputeDistanceMatrixAMOVA, 1);
    EXPECT_TRUE(log.holds(kComputesMatrix));
}

TEST_F(Feasibility, GivenMatrixIsUsed) {
    open(dna_project());
    project.dist_mat.initializeMatrixAndArrays(4);
    s.TaskNumber = kTaskPairwiseFst;
    s.ComputeConventionalFST = s.ComputeDistanceMatrixAMOVA = 0;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.ComputeDistanceMatrixAMOVA, 0);
    EXPECT_FALSE(log.holds(kComputesMatrix));
    EXPECT_EQ(project.dist_mat.MatrixSize, 4);
}

TEST_F(Feasibility, WithoutComparisonOfSamplesTheMatrixIsLeftAlone) {
    open(dna_project());
    s.ComputeConventionalFST = s.ComputeDistanceMatrixAMOVA = 0;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.ComputeDistanceMatrixAMOVA, 0);
}

TEST_F(Feasibility, FrequenciesWithoutMatrixGiveConventionalFst) {
    open(frequency_project());
    s.TaskNumber = kTaskPairwiseFst;
    s.ComputeConventionalFST = s.ComputeDistanceMatrixAMOVA = 0;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.ComputeDistanceMatrixAMOVA, 1);
    EXPECT_EQ(s.ComputeConventionalFST, 1);
    EXPECT_TRUE(log.holds(std::string(kComputesMatrix) + kUsesFrequencies));
}

TEST_F(Feasibility, FrequenciesWithAMatrixKeepIt) {
    open(frequency_project());
    project.dist_mat.initializeMatrixAndArrays(2);
    s.TaskNumber = kTaskPairwiseFst;
    s.ComputeConventionalFST = s.ComputeDistanceMatrixAMOVA = 0;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.ComputeConventionalFST, 0);
    EXPECT_FALSE(log.holds(kUsesFrequencies));
}

TEST_F(Feasibility, FrequenciesUnderAComputedMatrixGiveConventionalFst) {
    open(frequency_project());
    project.dist_mat.initializeMatrixAndArrays(2);
    s.EliminateRedondHaplodefs = 1;  // reason enough to settle the matrix
    s.ComputeConventionalFST = 0;
    s.ComputeDistanceMatrixAMOVA = 1;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.ComputeConventionalFST, 1);
    EXPECT_FALSE(log.holds(kUsesFrequencies));
    EXPECT_EQ(project.dist_mat.MatrixSize, 0) << "a computed matrix is forgotten after the search";
}

// --- The structure

constexpr const char* kSkipsAmova =
    "  An AMOVA analysis was selected and no Genetic structure\n"
    "  is defined, AMOVA task is skipped.\n";

TEST_F(Feasibility, AmovaWithoutStructureIsSkipped) {
    for (const bool locus_by_locus : {false, true}) {
        project.clean();
        open(dna_project());
        s.TaskNumber = kTaskAmova | kTaskTajima;
        s.HaplAMOVA = locus_by_locus ? 0 : 1;
        s.LocByLocAMOVA = locus_by_locus ? 1 : 0;
        ASSERT_TRUE(project.make_run_possible());
        EXPECT_EQ(s.TaskNumber, kTaskTajima);
    }
    EXPECT_EQ(count_of(log.text(), kSkipsAmova), 2);
    EXPECT_EQ(count_of(document(), kSkipsAmova), 2);
}

TEST_F(Feasibility, AmovaInNoFormKeepsItsTask) {
    open(dna_project());
    s.TaskNumber = kTaskAmova;
    s.HaplAMOVA = s.LocByLocAMOVA = 0;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.TaskNumber, kTaskAmova);
    EXPECT_FALSE(log.holds(kSkipsAmova));
}

TEST_F(Feasibility, AmovaOnAStructureKeepsItsTask) {
    open(dna_project());
    project.structure->NbGroups = 1;
    project.structure->NbSamples = 2;
    s.TaskNumber = kTaskAmova;
    s.HaplAMOVA = 1;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.TaskNumber, kTaskAmova);
}

TEST_F(Feasibility, EachFaultOfAStructureIsWarnedOf) {
    constexpr const char* kOrigin = "Project::IsAmovaStructure()";
    const auto warns = [&](int code) { return log.reports("WARNING", kOrigin, message_text(code)); };
    Structure& structure = *project.structure;
    structure.NbSamples = 3;
    structure.NbGroups = 3;
    EXPECT_FALSE(project.IsAmovaStructure());
    EXPECT_TRUE(warns(kOnePopulationPerGroup));
    EXPECT_FALSE(warns(kNoSamplesHaveBeenDefined));
    EXPECT_FALSE(warns(kNoGroupsHaveBeenDefined));
    structure.NbGroups = 0;
    EXPECT_FALSE(project.IsAmovaStructure());
    EXPECT_TRUE(warns(kNoGroupsHaveBeenDefined));
    structure.NbSamples = 0;
    EXPECT_FALSE(project.IsAmovaStructure());
    EXPECT_TRUE(warns(kNoSamplesHaveBeenDefined));
}

TEST_F(Feasibility, OneGroupOfOneSampleIsAStructure) {
    project.structure->NbSamples = project.structure->NbGroups = 1;
    EXPECT_TRUE(project.IsAmovaStructure());
    project.structure->NbSamples = 4;
    project.structure->NbGroups = 2;
    EXPECT_TRUE(project.IsAmovaStructure());
}

// --- Settings

TEST_F(Feasibility, TooFewDememorisationStepsAreRaised) {
    open(dna_project());
    s.MarkovChainDememorisationStepsLD = 499;
    s.MarkovChainDememorisationStepsHW = 500;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.MarkovChainDememorisationStepsLD, 1000);
    EXPECT_EQ(s.MarkovChainDememorisationStepsHW, 500);
    EXPECT_TRUE(
        log.holds(" Too few steps for dememorization (499 ) in linkage disequilibrium test, "
                  "setting it to 1000...\n  done!\n"));
}

// DNA has the distances 0 to 6.
TEST_F(Feasibility, WarnsOfDistancesThatTheDataDoNotHave) {
    open(dna_project());
    s.TaskNumber = kTaskMolecularDiversity | kTaskMismatch | kTaskPairwiseFst;
    s.DistanceMethod = 7;
    s.MismatchDistanceMethod = -3;
    s.DistanceMethodAMOVA = 99;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_TRUE(log.holds(
        "  done!\n"
        "Warning: the setting DistanceMethod=7 is none of the distances of these data, another one is "
        "used\n"
        "Warning: the setting MismatchDistanceMethod=-3 is none of the distances of these data, another "
        "one is used\n"
        "Warning: the setting DistanceMethodAMOVA=99 is none of the distances of these data, another "
        "one is used\n"));
}

TEST_F(Feasibility, SaysNothingOfDistancesThatAreKnownOrNotUsed) {
    open(dna_project());
    s.TaskNumber = kTaskMismatch | kTaskAmova;
    s.DistanceMethod = 7;
    s.MismatchDistanceMethod = 6;
    s.DistanceMethodAMOVA = 99;
    s.ComputeConventionalFST = 1;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_FALSE(log.holds("none of the distances"));
}

TEST_F(Feasibility, SaysNothingOfTheDistanceOfGenericAlleles) {
    open(haplotypic_project("STANDARD"));
    s.TaskNumber = kTaskMolecularDiversity;
    s.DistanceMethod = 7;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_FALSE(log.holds("none of the distances"));
}

TEST_F(Feasibility, HardyWeinbergMessageShowsTheLinkageValue) {
    open(dna_project());
    s.MarkovChainDememorisationStepsLD = 7500;
    s.MarkovChainDememorisationStepsHW = 10;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.MarkovChainDememorisationStepsHW, 1000);
    EXPECT_TRUE(
        log.holds("  check selected settings... Too few steps for dememorization (7500 ) in Hardy-Weinberg "
                  "disequilibrium test, setting it to 1000...\n"));
}

TEST_F(Feasibility, HardyWeinbergMessageShowsTheLinkageValueAfterItsCorrection) {
    open(dna_project());
    s.MarkovChainDememorisationStepsLD = 20;
    s.MarkovChainDememorisationStepsHW = 10;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_TRUE(log.holds("(20 ) in linkage"));
    EXPECT_TRUE(log.holds("(1000 ) in Hardy-Weinberg"));
}

TEST_F(Feasibility, HardyWeinbergOfRecessiveDataIsSkipped) {
    open(genotypic_project("STANDARD", 0));
    s.TaskNumber = kTaskHardyWeinberg;
    s.RecessiveAllelesEM = 1;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.TaskNumber, 0);
    EXPECT_TRUE(
        log.holds("   !!!Hardy-Weinberg disequilibrium test is not possible with recessive data,\n"
                  "      skipping task...\n"));
}

TEST_F(Feasibility, MicrosatellitesLoseTheTestsOfNeutralSamplingInSilence) {
    constexpr long kTests = kTaskEwensWatterson | kTaskChakraborty;
    open(haplotypic_project("MICROSAT"));
    s.TaskNumber = kTests | kTaskFuFs;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.TaskNumber, kTaskFuFs);
    EXPECT_FALSE(contains(log.text(), "!!!"));
    project.clean();
    project.haplotype_vectors_built = false;
    open(haplotypic_project("STANDARD"));
    s.TaskNumber = kTests;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.TaskNumber, kTests);
}

TEST_F(Feasibility, CorrelationWithGeneticDistancesNeedsThePairs) {
    open(dna_project());
    s.TaskNumber = kTaskMantel;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.TaskNumber, kTaskMantel | kTaskPairwiseFst);
}

TEST_F(Feasibility, CorrelationOfGivenMatricesNeedsNoPairs) {
    open(dna_project());
    project.mantel.YMatrixType = "custom";
    s.TaskNumber = kTaskMantel;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.TaskNumber, kTaskMantel);
}

TEST_F(Feasibility, UnknownPhaseDropsThePrintsOfHaplotypes) {
    for (const int phase : {0, 1}) {
        project.clean();
        project.haplotype_vectors_built = project.phenotypes_converted = false;
        open(genotypic_project("STANDARD", phase));
        s.TaskNumber = 0;
        s.PrintMinSpannNetworkPop = s.PrintMinSpannNetworkGlob = s.PrintDistanceMatrix = s.PrintHaplDistMat =
            s.PrintPopDistMat = 1;
        ASSERT_TRUE(project.make_run_possible());
        for (const int value : {s.PrintMinSpannNetworkPop, s.PrintMinSpannNetworkGlob, s.PrintDistanceMatrix,
                                s.PrintHaplDistMat, s.PrintPopDistMat})
            EXPECT_EQ(value, phase);
    }
}

TEST_F(Feasibility, SearchForRedundantHaplotypesForgetsAMatrixToBeComputed) {
    for (const int computed : {0, 1}) {
        project.clean();
        project.haplotype_vectors_built = false;
        open(dna_project());
        project.dist_mat.initializeMatrixAndArrays(4);
        project.dist_mat(3, 2) = 7.0;
        s.ComputeDistanceMatrixAMOVA = computed;
        s.InferHaplotypeDefinitionFromDistanceMatrix = 1;
        ASSERT_TRUE(project.make_run_possible());
        EXPECT_EQ(project.dist_mat.MatrixSize, computed != 0 ? 0 : 4);
        EXPECT_EQ(project.dist_mat.get(3, 2), computed != 0 ? 0.0 : 7.0);
        EXPECT_FALSE(project.dist_matrix_computed);
    }
    EXPECT_EQ(count_of(document(), "== Checking for haplotypes shared among populations:"), 2);
}

TEST_F(Feasibility, RedundantHaplotypesAreNotSearchedForInUnknownPhaseAndFrequencies) {
    open(genotypic_project("STANDARD", 0));
    s.InferHaplotypeDefinitionFromDistanceMatrix = s.EliminateRedondHaplodefs = 1;
    ASSERT_TRUE(project.make_run_possible());
    project.clean();
    open(frequency_project());
    s.InferHaplotypeDefinitionFromDistanceMatrix = 1;
    s.EliminateRedondHaplodefs = 0;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.InferHaplotypeDefinitionFromDistanceMatrix, 0);
    EXPECT_EQ(document(), "");
}

}  // namespace
