#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <iomanip>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "between/amova.h"
#include "between/amova_data.h"
#include "between/pairwise_block.h"
#include "between/pairwise_statistics.h"
#include "between/pairwise_tables.h"
#include "between/pairwise_tests.h"
#include "foundation/data_type.h"
#include "foundation/random.h"
#include "model/popul_microsat.h"
#include "run/errors.h"
#include "support/captured_log.h"
#include "support/project_log.h"
#include "support/sample_texts.h"
#include "support/seeded_stream.h"
#include "support/temp_folder.h"
#include "support/text_files.h"

namespace mnd {
namespace {

using mnd_test::AmovaData;
using mnd_test::CapturedLog;
using mnd_test::Copies;
using mnd_test::Distance;
using mnd_test::Group;
using mnd_test::ProjectLog;

double line_distance(int i, int j) {
    return (i - j) * (i - j);
}

class CalcPairDist : public mnd_test::SeededStream {
protected:
    // Data with all comparisons selected and no test.
    static std::unique_ptr<AmovaData> make(const std::vector<Group>& groups, int rows, const Distance& d,
                                           bool genotypic = false) {
        auto data = std::make_unique<AmovaData>(groups, rows, d, genotypic);
        settings& s = data->s;
        s.TaskNumber = kTaskPairwiseFst;
        s.ComputePairwiseFST = s.PrintFstVals = s.PrintMissIntermatchs = 1;
        s.PrintConcestryCoeff = s.PrintSlatkinsDist = s.UnequalPopSizeDiv = s.ComputeDeltaMuSqr = 0;
        s.ComputeConventionalFST = 0;
        s.NumPermutationsFST = 0;
        s.FSTSignifLevel = 0.05;
        s.data_type = STANDARD;
        return data;
    }

    // Runs the comparisons; the result is the document.
    static std::string run(AmovaData& data) {
        Amova analysis;
        analysis.sett = &data.s;
        analysis.structure = &data.structure;
        analysis.samples = &data.samples;
        analysis.dist = &data.dist;
        analysis.print_results = 1;
        const std::string path = mnd_test::unique_path("pairwise");
        std::fstream document(path, std::ios::out);
        data.s.result_stream = &document;
        analysis.CalcPairDist();
        data.s.result_stream = nullptr;
        document.close();
        const std::string text = mnd_test::read_file(path);
        std::remove(path.c_str());
        return text;
    }

    // The cells of a table of the document, row by row, without row numbers and marks.
    static std::vector<std::vector<double>> table(const std::string& text, const std::string& title, int P) {
        std::vector<std::vector<double>> rows;
        std::size_t at = text.find("\n" + title + "\n");
        if (at == std::string::npos) return rows;
        at = text.find("\n                 1", at);
        std::istringstream in(text.substr(at + 1));
        std::string line;
        std::getline(in, line);
        for (int i = 0; i < P && std::getline(in, line); ++i) {
            std::istringstream cells(line);
            std::string cell;
            cells >> cell;
            rows.emplace_back();
            while (cells >> cell) {
                if (cell != "*") rows.back().push_back(std::stod(cell));
            }
        }
        return rows;
    }

    static Distance fractions(std::mt19937& random, int rows) {
        return mnd_test::random_distance(random, rows);
    }

    std::mt19937 random_{11};
};

TEST_F(CalcPairDist, FstIsThatOfAnAnalysisOfThePairAlone) {
    const std::vector<Group> groups = {{{0, 1, 2, 2, 3}, {2, 3, 4, 4}}, {{0, 0, 5, 1, 1, 2}, {5, 5, 4}}};
    for (const Distance& d : {Distance(line_distance), fractions(random_, 6), Distance()}) {
        const auto data = make(groups, 6, d);
        const auto fst = table(run(*data), "Population pairwise FSTs", 4);
        ASSERT_EQ(fst.size(), 4u);
        std::vector<Copies> samples;
        for (const Group& group : groups)
            samples.insert(samples.end(), group.begin(), group.end());
        for (std::size_t i = 0; i < 4; ++i) {
            ASSERT_EQ(fst[i].size(), i + 1);
            EXPECT_EQ(fst[i][i], 0.0);
            for (std::size_t j = 0; j < i; ++j) {
                AmovaData pair({{samples[j], samples[i]}}, 6, d);
                const auto analysis = pair.prepare();
                analysis->AMOVA_1G_P_H();
                EXPECT_NEAR(fst[i][j], analysis->FST, 0.5001e-5);
            }
        }
    }
}

TEST_F(CalcPairDist, DifferencesAreMeansOverPairsOfCopies) {
    // {0, 1, 3}: 1, 9, 4, mean 14/3. {2, 5}: 9. Between: 4, 25, 1, 16, 1, 4, mean 51/6.
    const auto data = make({{{0, 1, 3}, {2, 5}}}, 6, line_distance);
    const auto pi = table(run(*data), "Population average pairwise differences", 2);
    // The three lines of explanation stand between title and table.
    ASSERT_EQ(pi.size(), 2u);
    EXPECT_NEAR(pi[0][0], 14.0 / 3.0, 0.5e-5);
    EXPECT_NEAR(pi[1][1], 9.0, 0.5e-5);
    EXPECT_NEAR(pi[0][1], 51.0 / 6.0, 0.5e-5);
    EXPECT_NEAR(pi[1][0], 51.0 / 6.0 - (14.0 / 3.0 + 9.0) / 2.0, 0.5e-5);
}

TEST_F(CalcPairDist, ASingleSampleHasDifferences) {
    const auto data = make({{{0, 1, 3}}}, 6, line_distance);
    const auto pi = table(run(*data), "Population average pairwise differences", 1);
    ASSERT_EQ(pi.size(), 1u);
    EXPECT_NEAR(pi[0][0], 14.0 / 3.0, 0.5e-5);
}

TEST_F(CalcPairDist, OneCopyEachThatDifferIsOneAndInfinite) {
    const auto data = make({{{0}, {1}}}, 2, line_distance);
    data->s.PrintConcestryCoeff = data->s.PrintSlatkinsDist = 1;
    const std::string text = run(*data);
    EXPECT_EQ(table(text, "Population pairwise FSTs", 2)[1][0], 1.0);
    EXPECT_EQ(mnd_test::contains(text, "     2         inf     0.00000\n"), true);
}

// The samples in no group come behind the others; the order is that of their numbers.
TEST_F(CalcPairDist, SamplesStandInTheOrderOfTheirNumbers) {
    const auto data = make({{{0, 1}, {2, 2}, {4, 5}}}, 6, line_distance);
    data->samples.populations[0]->amova.amova_id = 2;
    data->samples.populations[1]->amova.amova_id = 0;
    data->samples.populations[2]->amova.amova_id = 1;
    EXPECT_TRUE(mnd_test::contains(run(*data), "  1:\tpop2\n  2:\tpop3\n  3:\tpop1\n"));
}

TEST_F(CalcPairDist, SamplesOutsideOfTheStructureTakePart) {
    const auto data = make({{{0, 1}, {2, 2}}}, 6, line_distance);
    data->structure.reset();
    EXPECT_EQ(table(run(*data), "Population pairwise FSTs", 2).size(), 2u);
}

TEST_F(CalcPairDist, LeavesNoTalliesBehind) {
    const auto data = make({{{0, 1}, {2, 2}}}, 6, line_distance);
    run(*data);
    for (const Population* sample : data->samples.populations)
        EXPECT_TRUE(sample->amova.perm_freq.empty());
}

// --- Which tests run

TEST_F(CalcPairDist, NoPermutationsNoTestNoDraw) {
    const auto data = make({{{0, 1, 1}, {2, 2, 0}}}, 6, line_distance);
    data->s.TestSignificancePairewiseFST = 1;
    reset_draws_taken();
    const std::string text = run(*data);
    EXPECT_EQ(draws_taken(), 0u);
    EXPECT_EQ(data->s.TestSignificancePairewiseFST, 0);
    EXPECT_FALSE(mnd_test::contains(text, "P value"));
}

TEST_F(CalcPairDist, PermutationsTurnTheTestOn) {
    for (const int fst : {0, 1}) {
        for (const int differences : {0, 1}) {
            const auto data = make({{{0, 1, 1}, {2, 2, 0}}}, 6, line_distance);
            data->s.NumPermutationsFST = 9;
            data->s.ComputePairwiseFST = fst;
            data->s.PrintMissIntermatchs = differences;
            data->s.TestSignificancePairewiseFST = 1 - (fst | differences);
            const std::string text = run(*data);
            EXPECT_EQ(data->s.TestSignificancePairewiseFST, fst | differences);
            EXPECT_EQ(mnd_test::contains(text, "FST P values"), (fst | differences) != 0);
            EXPECT_EQ(mnd_test::contains(text, "PXY P value"), (fst | differences) != 0);
        }
    }
}

// One asked for: 1 class of 2.
TEST_F(CalcPairDist, ASinglePermutationIsATest) {
    const auto data = make({{{0, 1, 1}, {2, 2, 0}}}, 6, line_distance);
    data->s.NumPermutationsFST = 1;
    EXPECT_TRUE(mnd_test::contains(run(*data), "\nNumber of permutations : 2\n"));
}

// 100 asked for: 10 classes of 11. A pair draws one number less than its second sample has copies.
TEST_F(CalcPairDist, DrawsThoseOfEachPairInTurn) {
    const auto data = make({{{0, 1, 1}, {2, 2, 0, 5, 5}, {1, 1}}}, 6, line_distance);
    data->s.NumPermutationsFST = 100;
    reset_draws_taken();
    const std::string text = run(*data);
    EXPECT_EQ(draws_taken(), 110u * (4u + 1u + 1u));
    EXPECT_TRUE(mnd_test::contains(text, "\nNumber of permutations : 110\n"));
}

TEST_F(CalcPairDist, UnknownPhaseShufflesIndividuals) {
    const auto data = make({{{0, 1, 1, 1}, {2, 2, 0, 5, 5, 3}}}, 6, line_distance, true);
    data->samples.GameticPhase = 0;
    data->s.NumPermutationsFST = 100;
    reset_draws_taken();
    run(*data);
    EXPECT_EQ(draws_taken(), 110u * 2u);
    data->samples.GameticPhase = 1;
    reset_draws_taken();
    run(*data);
    EXPECT_EQ(draws_taken(), 110u * 5u);
}

TEST_F(CalcPairDist, PValuesAreThoseOfThePairsInTheirOrder) {
    const std::vector<Copies> samples = {{0, 1, 1, 3, 2}, {2, 5, 5, 4}, {1, 1, 3, 0, 0, 2}};
    const Distance d = fractions(random_, 6);
    const auto data = make({samples}, 6, d);
    data->s.NumPermutationsFST = 400;
    seed();
    const std::string text = run(*data);
    const auto fst_p = table(text, "FST P values", 3);
    const auto pi_p = table(text, "PXY P value", 3);
    const auto corrected_p = table(text, "Corrected PXY P value", 3);
    seed();
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = i + 1; j < 3; ++j) {
            std::vector<int> rows = samples[i];
            rows.insert(rows.end(), samples[j].begin(), samples[j].end());
            PairBlock block(data->dist, rows, static_cast<int>(samples[i].size()));
            const PairDesign design =
                pair_design(static_cast<double>(samples[i].size()), static_cast<double>(samples[j].size()));
            const PairObserved observed = {
                pair_variance(design, block.sums()), pair_differences(design, block.sums()), {}};
            PairTestPlan plan;
            plan.permutations = plan_batches(400);
            PairTestResult expected;
            ASSERT_TRUE(test_pair(block, design, observed, plan, data->s, expected));
            EXPECT_NEAR(fst_p[j][i], expected.fst_p, 0.5001e-5);
            EXPECT_NEAR(pi_p[j][i], expected.pi_p, 0.5001e-5);
            EXPECT_NEAR(corrected_p[j][i], expected.pi_corr_p, 0.5001e-5);
        }
    }
}

TEST_F(CalcPairDist, PairsWithoutDifferencesHitAlwaysAndNeverGetOne) {
    const auto data = make({{{0, 0, 0}, {0, 0, 0}}}, 1, line_distance);
    data->s.NumPermutationsFST = 1000;
    const std::string text = run(*data);
    EXPECT_NEAR(table(text, "FST P values", 2)[1][0], 1023.0 / 1024.0, 0.5e-5);
    EXPECT_EQ(table(text, "PXY P value", 2)[1][0], 1.0);
}

// --- Divergence times

TEST_F(CalcPairDist, DivergenceTimesOfPairs) {
    const auto data = make({{{0, 1, 1, 2}, {10, 11, 13, 12}, {5, 5, 5, 5}}}, 14, line_distance);
    data->s.UnequalPopSizeDiv = 1;
    const std::string text = run(*data);
    const auto tau = table(text, "tau values", 3);
    const auto theta = table(text, "Ancestral population sizes (theta0)", 3);
    const auto pi = table(text, "Population average pairwise differences", 3);
    // pi_XY is the sum of theta and tau.
    EXPECT_NEAR(tau[1][0] + theta[1][0], pi[0][1], 1e-4 * pi[0][1] + 1e-5);
    EXPECT_GT(tau[1][0], 0.0);
    // The third sample has no differences within: the solver does not run.
    EXPECT_EQ(tau[2][0], 0.0);
    EXPECT_EQ(tau[2][1], 0.0);
    EXPECT_FALSE(mnd_test::contains(text, "00000*"));
}

TEST_F(CalcPairDist, DivergenceTimesAreTested) {
    const auto data = make({{{0, 1, 1, 2}, {4, 5, 6, 3}}}, 14, line_distance);
    data->s.UnequalPopSizeDiv = 1;
    data->s.NumPermutationsFST = 50;
    const std::string text = run(*data);
    for (const char* title : {"tau P values", "k P values", "theta0 P values"}) {
        const auto p = table(text, title, 2);
        ASSERT_EQ(p.size(), 2u) << title;
        EXPECT_GT(p[1][0], 0.0) << title;
        EXPECT_LE(p[1][0], 1.0) << title;
    }
}

// Between the first two samples the differences are the mean of those within: nothing tells where
// to look for the time, and all attempts fail.
TEST_F(CalcPairDist, DivergenceTimesThatAreNotFoundAreMarked) {
    const auto data = make({{{0, 1}, {2, 3}, {4, 5}}}, 6, [](int i, int j) {
        if (i == j) return 0.0;
        if (i > 3 || j > 3) return i / 2 == j / 2 ? 1.0 : 4.0;
        return i / 2 != j / 2 ? 2.0 : i < 2 ? 1.0 : 3.0;
    });
    data->s.UnequalPopSizeDiv = 1;
    const std::string text = run(*data);
    EXPECT_EQ(mnd_test::count_of(text, "*\n"), 3);
    EXPECT_EQ(mnd_test::count_of(text, "*"), 3 + 3);
    EXPECT_EQ(mnd_test::count_of(text, "     2     0.00000*\n"), 1);
}

TEST_F(CalcPairDist, DivergenceTestsAreThoseOfThePair) {
    const Copies first = {0, 1, 1, 2, 5};
    const Copies second = {4, 1, 5, 6, 3, 2};
    const auto data = make({{first, second}}, 14, line_distance);
    data->s.UnequalPopSizeDiv = 1;
    data->s.NumPermutationsFST = 50;
    seed();
    const std::string text = run(*data);
    seed();
    std::vector<int> rows = first;
    rows.insert(rows.end(), second.begin(), second.end());
    PairBlock block(data->dist, rows, 5);
    const PairDesign design = pair_design(5.0, 6.0);
    PairObserved observed = {pair_variance(design, block.sums()), pair_differences(design, block.sums()), {}};
    observed.divergence = pair_divergence(observed.differences);
    PairTestPlan plan;
    plan.permutations = plan_batches(50);
    plan.solves_divergence = true;
    PairTestResult expected;
    ASSERT_TRUE(test_pair(block, design, observed, plan, data->s, expected));
    EXPECT_NE(expected.tau_p, expected.k_p);
    EXPECT_NE(expected.theta0_p, expected.k_p);
    EXPECT_NE(expected.tau_p, expected.theta0_p);
    EXPECT_NEAR(table(text, "tau values", 2)[1][0], observed.divergence.tau, 0.5001e-5);
    EXPECT_NEAR(table(text, "Unequal population sizes (k)", 2)[1][0], observed.divergence.k_ratio, 0.5001e-5);
    EXPECT_NEAR(table(text, "tau P values", 2)[1][0], expected.tau_p, 0.5001e-5);
    EXPECT_NEAR(table(text, "k P values", 2)[1][0], expected.k_p, 0.5001e-5);
    EXPECT_NEAR(table(text, "theta0 P values", 2)[1][0], expected.theta0_p, 0.5001e-5);
}

// --- Allele sizes

TEST_F(CalcPairDist, DeltaMuSquareOfMicrosatellites) {
    const ProfileSettings profile = mnd_test::haplotypic(MICROSAT, ' ');
    Samples samples;
    samples.set_profile(profile);
    Haplo_DB db;
    TAlleleDB alleles;
    // Means 10 and 7, and 12 and 7.5: (4 + 0.25) / 2.
    int number = 0;
    for (const char* lines : {"a 2 10 7\n", "b 1 12 7\nc 1 12 8\n"}) {
        auto* sample = new PopulMicrosat(("s" + std::to_string(number)).c_str(), number, profile);
        ASSERT_EQ(mnd_test::read_lines(*sample, db, lines), 1);
        sample->sample_size = 2.0;
        sample->amova.amova_id = number++;
        samples.populations.Add(sample);
    }
    for (Population* sample : samples.populations)
        sample->allele_db = &alleles;
    for (HaploDef* definition : db.list)
        definition->build_haplovect(&alleles, ' ', 0, 0.1);
    settings s;
    s.ComputePairwiseFST = s.PrintMissIntermatchs = 0;
    s.UnequalPopSizeDiv = s.PrintFstVals = 0;
    s.ComputeDeltaMuSqr = 1;
    DistMat none;
    Amova analysis;
    analysis.sett = &s;
    analysis.samples = &samples;
    analysis.dist = &none;
    analysis.print_results = 1;
    const std::string path = mnd_test::unique_path("pairwise");
    std::fstream document(path, std::ios::out);
    s.result_stream = &document;
    analysis.CalcPairDist();
    document.close();
    const std::string text = mnd_test::read_file(path);
    std::remove(path.c_str());
    EXPECT_TRUE(mnd_test::contains(text, "     1     0.00000\n     2     2.12500     0.00000\n"));
}

// --- What does not work

TEST_F(CalcPairDist, RecessiveAllelesOfUnknownPhaseAreRefused) {
    const auto data = make({{{0, 1}, {2, 2}}}, 6, line_distance, true);
    data->samples.GameticPhase = 0;
    data->s.RecessiveAllelesEM = 1;
    EXPECT_EQ(run(*data), "\nPopulation pairwise FSTs not possible with recessive Data\n");
    data->samples.GameticPhase = 1;
    EXPECT_TRUE(mnd_test::contains(run(*data), "Population pairwise FSTs\n---"));
    data->samples.GenotypicData = data->samples.GameticPhase = 0;
    EXPECT_TRUE(mnd_test::contains(run(*data), "Population pairwise FSTs\n---"));
}

TEST_F(CalcPairDist, AnEmptySampleStopsAll) {
    const auto data = make({{{0, 1}, {2, 2}, {}}}, 6, line_distance);
    ProjectLog log;
    EXPECT_EQ(run(*data), "");
    EXPECT_TRUE(log.reports("ERROR", "Amova::CalcPairDist()", "no degrees of freedom left"));
    EXPECT_FALSE(log.holds("All FST distances"));
}

TEST_F(CalcPairDist, AHaplotypeWithoutARowIsReported) {
    const auto data = make({{{0, 1}, {2, 2}}}, 6, line_distance);
    data->definitions[2]->id = 6;
    ProjectLog log;
    EXPECT_THROW(run(*data), ExceptionType);
    EXPECT_TRUE(log.reports("MEMORY", "Population::SetUpVectorsAfterPermutation", "array out of bounds"));
    EXPECT_TRUE(log.holds("\nAbnormal behaviour for pop:pop2\n"));
    EXPECT_TRUE(data->samples.populations[0]->amova.perm_freq.empty());
}

TEST_F(CalcPairDist, CopiesThatNoHaplotypeStandsForAreReported) {
    const auto data = make({{{0, 1}, {2, 2}}}, 6, line_distance);
    data->samples.populations[0]->sample_size = 3.0;
    ProjectLog log;
    EXPECT_THROW(run(*data), ExceptionType);
    EXPECT_TRUE(log.holds("array out of bounds"));
}

TEST_F(CalcPairDist, StopsAtOnceWhenAskedTo) {
    const auto data = make({{{0, 1}, {2, 2}}}, 6, line_distance);
    data->s.stop_computations = 1;
    EXPECT_EQ(run(*data), "");
}

// --- Batch summaries

// The components of {0, 1, 1} and {2, 2}, worked by hand: within 1 + 1 + 0 = 2 and 0, between
// 2 (4 + 1 + 1) = 12. W = 2/3, Vw = W/3, Va = ((14/5 - 2/3) - 2/9) / (12/5) = 43/54,
// FST = Va / (Va + Vw) = 43/55.
TEST_F(CalcPairDist, SummariesGetTheRowsOfTheProject) {
    const mnd_test::TempFolder folder;
    std::ofstream components(folder / "components");
    std::ofstream pairs(folder / "pairs");
    const auto data = make({{{0, 1, 1}, {2, 2}}}, 3, line_distance);
    data->s.NumPermutationsFST = 100;
    ofs_varComp_dist = &components;
    ofs_pairw_dist = &pairs;
    seed();
    run(*data);
    ofs_varComp_dist = ofs_pairw_dist = nullptr;
    components.close();
    pairs.close();
    EXPECT_EQ(mnd_test::read_text(folder / "components"),
              '"' + std::string(settings::input_file) + "\"\t0.79630\t\n");
    seed();
    PairBlock block(data->dist, {0, 1, 1, 2, 2}, 3);
    const PairDesign design = pair_design(3.0, 2.0);
    const PairObserved observed = {
        pair_variance(design, block.sums()), pair_differences(design, block.sums()), {}};
    PairTestPlan plan;
    plan.permutations = plan_batches(100);
    PairTestResult expected;
    ASSERT_TRUE(test_pair(block, design, observed, plan, data->s, expected));
    ASSERT_GT(expected.fst_sd, 0.0);
    std::ostringstream row;
    row << std::fixed << std::setprecision(5) << '"' << settings::input_file << "\"\t0.78182\t\n"
        << "p-Values matrix : No of permutations : 110\n"
        << expected.fst_p << "+-" << expected.fst_sd << "\t\n";
    EXPECT_EQ(mnd_test::read_text(folder / "pairs"), row.str());
}

// --- Progress

TEST_F(CalcPairDist, ProgressGoesToTheLog) {
    const auto data = make({{{0, 1}, {2, 2}}}, 6, line_distance);
    {
        const CapturedLog log;
        run(*data);
        EXPECT_TRUE(log.holds(" ms to compute pairwise differences\n"));
        EXPECT_TRUE(log.holds("\nAll FST distances have been computed and written to file\n"));
    }
    EXPECT_STREQ(settings::message, "Computing pairwise distances...");
    data->s.NumPermutationsFST = 4;
    const CapturedLog log;
    run(*data);
    EXPECT_TRUE(log.holds(" ms to compute pairwise differences and test significance\n"));
}

// --- The work vector

TEST_F(CalcPairDist, BipopVectorHoldsBothSamples) {
    Amova analysis;
    const auto data = make({{{3, 1, 3}, {2, 3}}}, 6, line_distance);
    analysis.samples = &data->samples;
    std::vector<int> rows(6, 99);
    Population* first = data->samples.populations[0];
    Population* second = data->samples.populations[1];
    // Haplotypes with their counts.
    analysis.fill_bipop_vector(first, second, rows.data());
    EXPECT_EQ(rows, (std::vector<int>{3, 3, 1, 2, 3, 99}));
    // Gene copies by individual.
    data->samples.GenotypicData = 1;
    analysis.fill_bipop_vector(second, first, rows.data());
    EXPECT_EQ(rows, (std::vector<int>{2, 3, 3, 1, 3, 99}));
}

TEST_F(CalcPairDist, BipopVectorIsNeverOverrun) {
    Amova analysis;
    const auto data = make({{{3, 1, 3}, {2, 3}}}, 6, line_distance);
    analysis.samples = &data->samples;
    data->samples.populations[0]->sample_size = 2.0;
    std::vector<int> rows(5, 99);
    analysis.fill_bipop_vector(data->samples.populations[0], data->samples.populations[1], rows.data());
    EXPECT_EQ(rows, (std::vector<int>{3, 3, 2, 3, 99}));
}

}  // namespace
}  // namespace mnd
