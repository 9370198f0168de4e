#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "between/haplotype_matrix.h"
#include "foundation/message_codes.h"
#include "foundation/random.h"
#include "run/messages.h"
#include "run/process.h"
#include "run/project.h"
#include "run/structure_analyses.h"
#include "run/tasks.h"
#include "support/project_log.h"
#include "support/temp_folder.h"

namespace {

using namespace mnd;
using mnd_test::contains;
using mnd_test::count_of;
using mnd_test::read_text;
using mnd_test::write_text;

constexpr char kProfile[] =
    "[Profile]\nTitle=\"T\"\nNbSamples=5\nGenotypicData=0\nDataType=STANDARD\nLocusSeparator=WHITESPACE\n"
    "MissingData=\"?\"\n[Data]\n";
// Counts: A 3 x h1, 1 x h2; B 2 x h1, 2 x h3; C 1 x h2, 4 x h3; D 3 x h4; E, which is in no group, 2 x h4.
constexpr char kSamples[] =
    "[[Samples]]\n"
    "SampleName=\"A\"\nSampleSize=4\nSampleData={\nh1 3 1 1 1\nh2 1 1 1 2\n}\n"
    "SampleName=\"E\"\nSampleSize=2\nSampleData={\nh4 2 2 2 2\n}\n"
    "SampleName=\"B\"\nSampleSize=4\nSampleData={\nh1 2\nh3 2 2 1 2\n}\n"
    "SampleName=\"C\"\nSampleSize=5\nSampleData={\nh2 1\nh3 4\n}\n"
    "SampleName=\"D\"\nSampleSize=3\nSampleData={\nh4 3\n}\n";
constexpr char kStructure[] =
    "[[Structure]]\nStructureName=\"two\"\nNbGroups=2\nGroup={\"C\" \"D\"}\nGroup={\"A\" \"B\"}\n";

using Groups = std::vector<std::vector<std::vector<std::string>>>;  // gene copies of samples of groups
using Distances = std::map<std::pair<std::string, std::string>, double>;

std::vector<std::string> copies(std::initializer_list<std::pair<const char*, int>> counts) {
    std::vector<std::string> list;
    for (const auto& [name, count] : counts)
        list.insert(list.end(), static_cast<std::size_t>(count), name);
    return list;
}

const Groups kGroups = {{copies({{"h2", 1}, {"h3", 4}}), copies({{"h4", 3}})},
                        {copies({{"h1", 3}, {"h2", 1}}), copies({{"h1", 2}, {"h3", 2}})}};

// Loci at which the haplotypes above differ: 111, 112, 212, 222.
const Distances kDifferences = {{{"h1", "h2"}, 1}, {{"h1", "h3"}, 2}, {{"h1", "h4"}, 3},
                                {{"h2", "h3"}, 1}, {{"h2", "h4"}, 2}, {{"h3", "h4"}, 1}};

// Sum of squares of a set of gene copies, from all its pairs.
double sum_of_squares(const std::vector<std::string>& set, const Distances& distances) {
    double sum = 0.0;
    for (std::size_t i = 0; i < set.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (set[i] != set[j]) sum += distances.at(std::minmax(set[i], set[j]));
        }
    }
    return sum / static_cast<double>(set.size());
}

// Sums of squares among groups, among samples within groups, within samples, and in total.
std::array<double, 4> brute_force(const Groups& groups, const Distances& distances) {
    double within_samples = 0.0, within_groups = 0.0;
    std::vector<std::string> all;
    for (const auto& group : groups) {
        std::vector<std::string> of_group;
        for (const auto& sample : group) {
            within_samples += sum_of_squares(sample, distances);
            of_group.insert(of_group.end(), sample.begin(), sample.end());
        }
        within_groups += sum_of_squares(of_group, distances);
        all.insert(all.end(), of_group.begin(), of_group.end());
    }
    const double total = sum_of_squares(all, distances);
    return {total - within_groups, within_groups - within_samples, within_samples, total};
}

class ProjectAmova : public ::testing::Test {
protected:
    ProjectAmova() : s(project.the_settings) {
        project.ProfileSettings::the_settings = &s;
        s.project_directory = (folder.path().string() + "/").c_str();
        s.result_directory = s.project_directory;
        s.js_file_name = (folder / "p.js").c_str();
        s.result_file_name = "p.htm";
        s.TaskNumber = kTaskAmova;
        s.HaplAMOVA = 1;
        s.LocByLocAMOVA = 0;
        s.NumPermutationsAMOVA = s.NumPermutationsFST = 0;
        s.PopSpecificFST = s.PopSpecificFIS = s.KeepNullDistrib = 0;
        s.ComputePairwiseFST = s.UnequalPopSizeDiv = s.PrintMissIntermatchs = s.ComputeDeltaMuSqr = 0;
        s.ComputeDistanceMatrixAMOVA = s.ComputeConventionalFST = 0;
        s.DistanceMethodAMOVA = 0;
        s.GammaAValueAMOVA = 0.0;
        s.AllowedLevelOfMissingData = 0.05;
        s.PrintDistanceMatrix = s.PrintMinSpannNetworkGlob = 0;
        s.InferHaplotypeDefinitionFromDistanceMatrix = s.EliminateRedondHaplodefs = 0;
        s.RecessiveAllelesEM = s.IncludeIndividualLevel = 0;
        document_stream.open(folder / "p.htm", std::ios::out);
        s.result_stream = E.result_stream = &document_stream;
    }
    ~ProjectAmova() override { s.result_stream = E.result_stream = nullptr; }

    void open(const std::string& text, bool (Project::*read)() = &Project::newOpen) {
        write_text(folder / "p.mnp", text);
        copy_path(settings::input_file, (folder / "p.mnp").c_str(), settings::kInputFileSize);
        ASSERT_TRUE((project.*read)()) << log.text();
        s.data_type = project.DataType;
        s.genotypic_data = project.GenotypicData;
        s.gametic_phase = project.GameticPhase;
    }
    void open_standard(const std::string& matrix = "", const std::string& structure = kStructure) {
        open(kProfile + matrix + kSamples + structure);
    }
    void analyse() {
        ASSERT_TRUE(project.make_run_possible()) << log.text();
        project.GenStructCalculations(&document_stream);
    }
    std::string document() {
        document_stream.flush();
        return read_text(folder / "p.htm");
    }
    void expect_sums(const std::array<double, 4>& expected) const {
        const amova_results& r = project.amova_result;
        for (std::size_t row = 0; row < 3; ++row)
            EXPECT_NEAR(r.row[row].SSD, expected[row], 1e-12) << row;
        EXPECT_NEAR(r.total.SSD, expected[3], 1e-12);
        EXPECT_EQ(r.row[0].df, 1);
        EXPECT_EQ(r.row[1].df, 2);
        EXPECT_EQ(r.row[2].df, 12);
        EXPECT_EQ(r.total.df, 15);
        EXPECT_EQ(r.design_code, 3);
    }
    bool run_amova() {
        return project.AMOVA(project.dist_mat, project.haplo_db, *project.samples, *project.structure,
                             project.allele_db, &project.amova_result);
    }

    mnd_test::TempFolder folder;
    mnd_test::ProjectLog log;
    Project project;
    settings& s;
    std::fstream document_stream;
};

TEST_F(ProjectAmova, ComputedDistances) {
    open_standard();
    s.ComputeDistanceMatrixAMOVA = 1;
    analyse();
    expect_sums(brute_force(kGroups, kDifferences));
    EXPECT_TRUE(project.dist_matrix_computed);
    EXPECT_EQ(project.dist_mat.labels, (std::vector<my_string>{"h1", "h2", "h4", "h3"}));
    EXPECT_TRUE(contains(document(), "\nNumber of usable loci for distance computation : 3\n"));
    EXPECT_EQ(count_of(document(), "AMOVA design and results"), 1);
    EXPECT_TRUE(log.holds("\t\tComputing F statistics ...\n"));
    EXPECT_TRUE(log.holds("No matrix was specified") == false);
}

TEST_F(ProjectAmova, WithoutAMatrixItIsComputed) {
    open_standard();
    analyse();
    EXPECT_TRUE(log.holds("No matrix was specified in input file, Mendrake will compute it from the data"));
    expect_sums(brute_force(kGroups, kDifferences));
}

TEST_F(ProjectAmova, ConventionalStatistics) {
    open_standard();
    s.ComputeConventionalFST = 1;
    analyse();
    Distances ones = kDifferences;
    for (auto& [pair, distance] : ones)
        distance = 1.0;
    expect_sums(brute_force(kGroups, ones));
    EXPECT_EQ(project.dist_mat.conventional, 1);
}

// The rows of a given matrix are in an order of their own, and one of its labels has no haplotype.
TEST_F(ProjectAmova, GivenMatrixIsBoundByItsLabels) {
    open_standard(
        "[[DistanceMatrix]]\nMatrixName=\"m\"\nMatrixSize=5\nLabelPosition=LINE\nMatrixData={\n"
        "h4 h2 other h1 h3\n0\n2.5 0\n9 9 0\n3 0.5 9 0\n4 8 9 0.25 0\n}\n");
    analyse();
    expect_sums(brute_force(kGroups, {{{"h1", "h2"}, 0.5},
                                      {{"h1", "h3"}, 0.25},
                                      {{"h1", "h4"}, 3},
                                      {{"h2", "h3"}, 8},
                                      {{"h2", "h4"}, 2.5},
                                      {{"h3", "h4"}, 4}}));
    EXPECT_FALSE(project.dist_matrix_computed);
    EXPECT_EQ(project.haplo_db.list[0]->id, 3);
    EXPECT_TRUE(log.holds("\tHaplotype \"other\" defined in the labels of the user-defined\n"));
    EXPECT_TRUE(log.holds(", 1 LABELS where found\n"));
    EXPECT_FALSE(contains(document(), "usable loci"));
}

// The same data in both syntaxes, with permutations from the same seed. All distances are exact in
// single precision.
TEST_F(ProjectAmova, OlderSyntaxGivesTheSameNumbers) {
    constexpr char kRows[] = "MatrixData={\nh4 h2 h1 h3\n0\n2.5 0\n3 0.5 0\n4 8 0.25 0\n}\n";
    constexpr char kWrapped[] =
        "MatrixData={ # in two blocks\nh4 0\nh2 2.5\nh1 3\nh3 4\n\nh2 0\nh1 0.5 0\nh3 8 0.25 0 }\n";
    const std::string section = "[[DistanceMatrix]]\nMatrixName=\"m\"\nMatrixSize=4\n";
    const std::string groups =
        "[[Structure]]\nStructureName=two NbGroups=2 Group={C D}Group =\n{ A \"B\" }\n";
    const auto analysed = [this] {
        s.NumPermutationsAMOVA = 100;
        long idum = -12345;
        ran3(&idum);
        analyse();
        return project.amova_result;
    };

    open(kProfile + section + "LabelPosition=LINE\n" + kRows + kSamples + kStructure);
    const amova_results by_lines = analysed();
    project.clean();
    open(kProfile + section + "LabelPosition=COLUMN " + kWrapped + kSamples + groups, &Project::open);
    const amova_results by_tokens = analysed();

    expect_sums(brute_force(kGroups, {{{"h1", "h2"}, 0.5},
                                      {{"h1", "h3"}, 0.25},
                                      {{"h1", "h4"}, 3},
                                      {{"h2", "h3"}, 8},
                                      {{"h2", "h4"}, 2.5},
                                      {{"h3", "h4"}, 4}}));
    EXPECT_EQ(by_tokens.design_code, by_lines.design_code);
    for (std::size_t row = 0; row < by_lines.row.size(); ++row) {
        EXPECT_EQ(by_tokens.row[row].SSD, by_lines.row[row].SSD) << row;
        EXPECT_EQ(by_tokens.row[row].df, by_lines.row[row].df) << row;
    }
    EXPECT_EQ(by_tokens.total.SSD, by_lines.total.SSD);
    EXPECT_EQ(by_tokens.FST, by_lines.FST);
    EXPECT_EQ(by_tokens.FSC, by_lines.FSC);
    EXPECT_EQ(by_tokens.FCT, by_lines.FCT);
    EXPECT_EQ(by_tokens.FST_pvalue, by_lines.FST_pvalue);
    EXPECT_GE(by_lines.null_Va.size(), 100u);
    EXPECT_EQ(by_tokens.null_Va, by_lines.null_Va);
    EXPECT_EQ(by_tokens.null_Vb, by_lines.null_Vb);
    EXPECT_EQ(by_tokens.null_Vc, by_lines.null_Vc);
    EXPECT_FALSE(project.dist_matrix_computed);
}

TEST_F(ProjectAmova, HaplotypeWithoutLabelHasNoAnalysis) {
    open_standard(
        "[[DistanceMatrix]]\nMatrixName=\"m\"\nMatrixSize=3\nLabelPosition=LINE\nMatrixData={\n"
        "h1 h2 h3\n0\n1 0\n1 1 0\n}\n");
    analyse();
    EXPECT_TRUE(
        log.reports("WARNING", "Project::AMOVA()", message_text(kHaplotypeListIncompatibleWithMatrix)));
    EXPECT_TRUE(log.holds("\tHaplotype \"h4\" has no label in the distance matrix\n"));
    EXPECT_FALSE(log.holds("\"h1\" has no label"));
    EXPECT_FALSE(contains(document(), "AMOVA design and results"));
    EXPECT_EQ(project.amova_result.design_code, 0);
    EXPECT_FALSE(run_amova());
}

TEST_F(ProjectAmova, ComputedMatrixThatDoesNotFitIsAnError) {
    open_standard();
    s.ComputeDistanceMatrixAMOVA = 1;
    ASSERT_TRUE(project.make_run_possible());
    project.calc_dist_matrix(0, 0.0);
    ASSERT_TRUE(run_amova());
    project.haplo_db.append(new HaploDef(my_string("late")));
    EXPECT_FALSE(run_amova());
    EXPECT_TRUE(log.reports("ERROR", "Project::AMOVA()", message_text(kHaplotypeListIncompatibleWithMatrix)));
}

TEST_F(ProjectAmova, SamplesAreNumberedInTheOrderOfTheStructure) {
    open_standard();
    s.ComputeDistanceMatrixAMOVA = 1;
    analyse();
    std::map<std::string, int> numbers;
    for (const Population* sample : project.samples->populations)
        numbers[sample->name.c_str()] = sample->amova.amova_id;
    EXPECT_EQ(numbers, (std::map<std::string, int>{{"C", 0}, {"D", 1}, {"A", 2}, {"B", 3}, {"E", 4}}));
    EXPECT_EQ(s.current_samples, project.samples);
    EXPECT_EQ(s.current_structure, project.structure);
    EXPECT_EQ(s.current_matrix, &project.dist_mat);
    EXPECT_EQ(s.current_haplo_db, &project.haplo_db);
    EXPECT_EQ(s.current_allele_db, &project.allele_db);
}

TEST_F(ProjectAmova, StructureThatCannotBeComparedEndsItUnlessPairsAreWanted) {
    open_standard("", "[[Structure]]\nNbGroups=2\nGroup={\"A\"}\nGroup={\"B\"}\n");
    s.ComputeDistanceMatrixAMOVA = 1;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(s.TaskNumber, 0);
    EXPECT_TRUE(contains(document(),
                         "  An AMOVA analysis was selected and no Genetic structure\n"
                         "  is defined, AMOVA task is skipped.\n"));
    s.TaskNumber = kTaskAmova;
    project.calc_dist_matrix(0, 0.0);
    EXPECT_FALSE(run_amova());
    EXPECT_TRUE(log.reports("WARNING", "Project::AMOVA()", message_text(kInvalidDataAfterCheck)));
    s.TaskNumber = kTaskAmova | kTaskPairwiseFst;
    EXPECT_TRUE(run_amova());
    EXPECT_FALSE(contains(document(), "AMOVA design and results"));
}

TEST_F(ProjectAmova, PairsAloneLeaveTheDesignOut) {
    open_standard();
    s.ComputeDistanceMatrixAMOVA = 1;
    s.HaplAMOVA = 0;
    s.ComputePairwiseFST = 1;
    s.TaskNumber = kTaskAmova | kTaskPairwiseFst;
    analyse();
    EXPECT_EQ(s.TaskNumber, kTaskAmova | kTaskPairwiseFst);
    EXPECT_FALSE(contains(document(), "AMOVA design and results"));
    EXPECT_FALSE(log.holds("Computing F statistics"));
    EXPECT_TRUE(contains(document(), "== Comparisons of pairs of population samples"));
}

TEST_F(ProjectAmova, SilentSimulationsSayNothing) {
    open_standard();
    s.ComputeDistanceMatrixAMOVA = 1;
    s.silent_simulation = 1;
    analyse();
    EXPECT_FALSE(log.holds("Computing F statistics"));
    EXPECT_EQ(project.amova_result.design_code, 3);
}

TEST_F(ProjectAmova, MatrixAndNetworkArePrinted) {
    open_standard();
    s.ComputeDistanceMatrixAMOVA = s.PrintDistanceMatrix = s.PrintMinSpannNetworkGlob = 1;
    analyse();
    const std::string text = document();
    EXPECT_TRUE(contains(text,
                         "\t\tMatrixSize= 4\n\t\tLabelPosition=LINE\n\t\tMatrixData={\n\nh1 h2 h4 h3 \n"
                         "   0.00000\n   1.00000   0.00000\n   3.00000   2.00000   0.00000\n"));
    EXPECT_TRUE(contains(text, "MINIMUM SPANNING TREE between 4 OTUs\n"));
    EXPECT_EQ(count_of(read_text(folder / "p.js"), "_pop_glob_spann\"))"), 1);
}

// ---- Frequencies

constexpr char kFrequencyProfile[] =
    "[Profile]\nTitle=\"T\"\nNbSamples=5\nGenotypicData=0\nDataType=FREQUENCY\n[Data]\n";
constexpr char kFrequencies[] =
    "[[Samples]]\n"
    "SampleName=\"A\"\nSampleSize=4\nSampleData={\nh1 3\nh2 1\n}\n"
    "SampleName=\"E\"\nSampleSize=2\nSampleData={\nh4 2\n}\n"
    "SampleName=\"B\"\nSampleSize=4\nSampleData={\nh1 2\nh3 2\n}\n"
    "SampleName=\"C\"\nSampleSize=5\nSampleData={\nh2 1\nh3 4\n}\n"
    "SampleName=\"D\"\nSampleSize=3\nSampleData={\nh4 3\n}\n";
constexpr char kFrequencyMatrix[] =
    "[[DistanceMatrix]]\nMatrixName=\"m\"\nMatrixSize=4\nLabelPosition=COLUMN\nMatrixData={\n"
    "h4 0\nh3 1 0\nh2 2 1 0\nh1 3 2 1 0\n}\n";

TEST_F(ProjectAmova, FrequenciesWithAGivenMatrix) {
    open(std::string(kFrequencyProfile) + kFrequencyMatrix + kFrequencies + kStructure);
    analyse();
    expect_sums(brute_force(kGroups, kDifferences));
    EXPECT_EQ(s.ComputeConventionalFST, 0);
}

TEST_F(ProjectAmova, FrequenciesWithoutAMatrixAreConventional) {
    for (const char* matrix : {"", kFrequencyMatrix}) {
        project.clean();
        open(std::string(kFrequencyProfile) + matrix + kFrequencies + kStructure);
        s.ComputeDistanceMatrixAMOVA = 1;
        s.ComputeConventionalFST = 0;
        analyse();
        Distances ones = kDifferences;
        for (auto& [pair, distance] : ones)
            distance = 1.0;
        expect_sums(brute_force(kGroups, ones));
        EXPECT_EQ(s.ComputeConventionalFST, 1);
        EXPECT_TRUE(contains(document(), "computation : 0\n"));
    }
}

// Without content the distance of names would be 0 throughout.
TEST_F(ProjectAmova, DistancesOfFrequenciesAreNeverZeros) {
    open(std::string(kFrequencyProfile) + kFrequencies + kStructure);
    project.calc_dist_matrix(0, 0.0);
    EXPECT_EQ(project.dist_mat.get(1, 0), 1.0);
}

// ---- Genotypes

constexpr char kGenotypes[] =
    "[Profile]\nTitle=\"T\"\nNbSamples=2\nGenotypicData=1\nGameticPhase=0\nDataType=STANDARD\n"
    "LocusSeparator=WHITESPACE\nMissingData=\"?\"\n[Data]\n[[Samples]]\n"
    "SampleName=\"A\"\nSampleSize=3\nSampleData={\ni 2 1 1\n  1 2\nj 1 2 1\n  1 2\n}\n"
    "SampleName=\"B\"\nSampleSize=2\nSampleData={\nk 2 2 1\n  2 2\n}\n"
    "[[Structure]]\nNbGroups=1\nGroup={\"A\" \"B\"}\n";

// The two rows of an individual enter as two gene copies, as they stand.
TEST_F(ProjectAmova, UnknownPhaseTakesTheRowsAsTheyStand) {
    open(kGenotypes);
    s.ComputeDistanceMatrixAMOVA = 1;
    analyse();
    const Distances d = {{{"11", "12"}, 1}, {{"11", "21"}, 1}, {{"11", "22"}, 2},
                         {{"12", "21"}, 2}, {{"12", "22"}, 1}, {{"21", "22"}, 1}};
    const auto sums =
        brute_force({{copies({{"11", 2}, {"12", 3}, {"21", 1}}), copies({{"21", 2}, {"22", 2}})}}, d);
    EXPECT_EQ(project.amova_result.design_code, 7);
    EXPECT_NEAR(project.amova_result.row[0].SSD, sums[1], 1e-12);
    EXPECT_NEAR(project.amova_result.row[1].SSD, sums[2], 1e-12);
}

TEST_F(ProjectAmova, SecondConversionCountsAnew) {
    open(kGenotypes);
    s.ComputeDistanceMatrixAMOVA = 1;
    analyse();
    const auto counts = [this] {
        std::vector<int> list;
        for (const HaploDef* definition : project.haplo_db.list)
            list.push_back(definition->count);
        return list;
    };
    const std::vector<int> first = counts();
    EXPECT_EQ(first, (std::vector<int>{2, 3, 3, 2}));
    project.phenotypes_converted = false;
    project.GenStructCalculations(&document_stream);
    EXPECT_EQ(counts(), first);
}

// ---- Haplotypes that are one and the same

constexpr char kDna[] =
    "[Profile]\nTitle=\"T\"\nNbSamples=2\nGenotypicData=0\nDataType=DNA\nLocusSeparator=NONE\n"
    "MissingData=\"?\"\n[Data]\n";
// h3 is h1 but for a site that is missing in it, and h4 is h2 once more.
constexpr char kDnaSamples[] =
    "[[Samples]]\n"
    "SampleName=\"A\"\nSampleSize=40\nSampleData={\nh1 20 ACGT\nh2 19 ACGA\nh3 1 ?CGT\n}\n"
    "SampleName=\"B\"\nSampleSize=10\nSampleData={\nh4 4 ACGA\nh2 6\n}\n";

TEST_F(ProjectAmova, RedundantHaplotypesAreToldAndMerged) {
    open(std::string(kDna) + kDnaSamples);
    s.TaskNumber = 0;
    s.InferHaplotypeDefinitionFromDistanceMatrix = 1;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(project.DataType, DNA);
    const Population& a = *project.samples->populations[0];
    const Population& b = *project.samples->populations[1];
    ASSERT_EQ(a.hapl_list.count, 2);
    EXPECT_EQ(a.nb_hapl, 2);
    EXPECT_EQ(a.nb_orig_hapl, 3);
    EXPECT_EQ(a.hapl_list.at_const(0)->freq, 21);
    EXPECT_EQ(a.hapl_list.at_const(1)->freq, 19);
    ASSERT_EQ(b.hapl_list.count, 1);
    EXPECT_EQ(b.hapl_list.at_const(0)->freq, 10);
    const std::string text = document();
    EXPECT_TRUE(contains(text, "== Checking for haplotypes shared among populations:"));
    EXPECT_TRUE(contains(text, "== Population : A"));
    EXPECT_TRUE(contains(text, "\nHaplotypes shared with B :\n"));
}

TEST_F(ProjectAmova, RedundantHaplotypesAreOnlyToldWhenTheyAreTrusted) {
    open(std::string(kDna) + kDnaSamples);
    s.TaskNumber = 0;
    s.EliminateRedondHaplodefs = 1;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(project.samples->populations[0]->hapl_list.count, 3);
    EXPECT_TRUE(contains(document(), "    = h3\n"));
    EXPECT_TRUE(contains(document(), "    = h4\n"));
}

// Conventional statistics take all haplotypes as different, but not those that are the same.
TEST_F(ProjectAmova, ConventionalStatisticsDoNotHideRedundantHaplotypes) {
    open(std::string(kDna) + kDnaSamples);
    s.TaskNumber = kTaskPairwiseFst;
    s.ComputeConventionalFST = s.ComputePairwiseFST = 1;
    s.InferHaplotypeDefinitionFromDistanceMatrix = 1;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_EQ(project.samples->populations[0]->hapl_list.count, 2);
    EXPECT_EQ(project.dist_mat.MatrixSize, 0);
}

TEST_F(ProjectAmova, GivenMatrixComesBackAfterTheSearch) {
    open(std::string(kDna) +
         "[[DistanceMatrix]]\nMatrixName=\"m\"\nMatrixSize=4\nLabelPosition=LINE\nMatrixData={\n"
         "h4 h3 h2 h1\n0\n2 0\n3 4 0\n5 6 7 0\n}\n" +
         kDnaSamples);
    s.TaskNumber = 0;
    s.EliminateRedondHaplodefs = 1;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_FALSE(project.dist_matrix_computed);
    EXPECT_EQ(project.dist_mat.MatrixSize, 4);
    EXPECT_EQ(project.dist_mat.MatrixName.view(), "m");
    EXPECT_EQ(project.dist_mat.labels[0].view(), "h4");
    EXPECT_EQ(project.dist_mat.get(3, 2), 7.0);
}

TEST_F(ProjectAmova, ConventionalMatrixComesBackAfterTheSearch) {
    open(std::string(kDna) + kDnaSamples);
    s.TaskNumber = 0;
    ASSERT_TRUE(project.make_run_possible());
    make_conventional_matrix(project.dist_mat, project.haplo_db);
    project.eliminate_redond_haplodef();
    EXPECT_EQ(project.dist_mat.conventional, 1);
    EXPECT_EQ(project.dist_mat.MatrixSize, 4);
    EXPECT_EQ(project.dist_mat.get(1, 0), 1.0);
    EXPECT_EQ(project.dist_mat.get(1, 1), 0.0);
}

TEST_F(ProjectAmova, RedundantFrequenciesGoByTheGivenMatrix) {
    open(std::string(kFrequencyProfile) +
         "[[DistanceMatrix]]\nMatrixName=\"m\"\nMatrixSize=4\nLabelPosition=COLUMN\nMatrixData={\n"
         "h4 0\nh3 1 0\nh2 2 1 0\nh1 3 2 0 0\n}\n" +
         kFrequencies + kStructure);
    s.EliminateRedondHaplodefs = s.InferHaplotypeDefinitionFromDistanceMatrix = 1;
    ASSERT_TRUE(project.make_run_possible());
    // Frequencies are told to be the same, and stay apart.
    EXPECT_EQ(project.samples->populations[0]->hapl_list.count, 2);
    EXPECT_TRUE(contains(document(), "h1                  ")) << document();
    EXPECT_TRUE(contains(document(), "    = h2\n"));
    EXPECT_EQ(project.dist_mat.MatrixSize, 4);
}

TEST_F(ProjectAmova, RedundantFrequenciesWithoutAMatrixAreAllDifferent) {
    open(std::string(kFrequencyProfile) + kFrequencies + kStructure);
    s.EliminateRedondHaplodefs = 1;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_FALSE(contains(document(), "    = "));
    EXPECT_TRUE(contains(document(), "Classes of identical haplotypes"));
}

TEST_F(ProjectAmova, SearchNeedsAMatrixThatFits) {
    open(std::string(kFrequencyProfile) +
         "[[DistanceMatrix]]\nMatrixName=\"m\"\nMatrixSize=1\nLabelPosition=COLUMN\nMatrixData={\nh4 0\n}\n" +
         kFrequencies + kStructure);
    s.EliminateRedondHaplodefs = 1;
    ASSERT_TRUE(project.make_run_possible());
    EXPECT_TRUE(log.reports("ERROR", "Project::eliminate_redond_haplodef()",
                            message_text(kHaplotypeListIncompatibleWithMatrix)));
    EXPECT_FALSE(contains(document(), "Checking for haplotypes"));
}

// ---- Groups without samples

TEST_F(ProjectAmova, GroupsWithoutSamplesArePassedOver) {
    open_standard("", "[[Structure]]\nNbGroups=4\nGroup={\"C\" \"D\"}\nGroup={\"A\" \"B\"}\n[[Mantel]]\n");
    ASSERT_EQ(project.structure->groups.size(), 4U);
    s.ComputeDistanceMatrixAMOVA = 1;
    analyse();
    EXPECT_FALSE(document().empty());
    Samples pooled;
    Structure pooled_structure;
    pooled.set_profile(project);
    project.poolSamplesInGroups(*project.samples, *project.structure, pooled, pooled_structure);
    ASSERT_EQ(pooled.populations.count, 2);
    EXPECT_EQ(pooled_structure.NbSamples, 2);
    EXPECT_EQ(pooled.populations[1]->name.view(), "Group 2");
    EXPECT_EQ(pooled.populations[1]->sample_size, 8.0);
}

}  // namespace
