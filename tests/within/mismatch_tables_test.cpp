// Blocks and rows of mismatch distributions, as they are read.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/data_type.h"
#include "model/popul_dna.h"
#include "model/popul_microsat.h"
#include "run/settings.h"
#include "run/tasks.h"
#include "support/seeded_stream.h"
#include "support/temp_folder.h"
#include "within/analysed_sample.h"
#include "within/mismatch_analyses.h"
#include "within/mismatch_fit.h"
#include "within/mismatch_spatial.h"
#include "within/mismatch_tables.h"

namespace {

using mnd_test::contains;
using mnd_test::count_of;

// --- Text blocks

mnd::ExpansionFit some_fit() {
    mnd::ExpansionFit fit;
    fit.ssd = 0.0125;
    fit.p_ssd = 0.25;
    fit.rag = 0.5;
    fit.p_rag = 0.75;
    return fit;
}

struct Replicates {
    double diff[4] = {0, 0, 1, 2};
    double observed[4] = {0, 0.5, 0.5, 0.0};
    double expected[4] = {0, 0.4, 0.4, 0.2};
    mnd::FitTable table{diff, observed, expected, 2, 10};
    mnd::ReplicateResults results;
    std::vector<double> tau = {1.0, 2.0};
    std::optional<double> founder_theta;

    explicit Replicates(int kept) {
        results.kept = kept;
        results.shares.assign(2, std::vector<double>(static_cast<std::size_t>(kept), 0.5));
    }
    std::string print(const char* region_heading, int asked = 2) {
        std::ostringstream out;
        mnd::print_replicates(
            out, {"table", "region", region_heading, "Lake", {{"Tau:", 1.5, &tau}}, founder_theta, 4000000},
            some_fit(), results, table, asked);
        return out.str();
    }
};

TEST(MismatchTables, SuddenGoodnessOfFitHasARuleUnderItsTitle) {
    const std::string text = Replicates(2).print(nullptr);
    const std::string expected =
        "\nTest of goodness-of-fit:"
        "\n------------------------\n"
        "\n         Sum of Squared deviation: 0.01250000"
        "\n          P(Sim. Ssd >= Obs. Ssd): 0.25000000"
        "\n    Harpending's Raggedness index: 0.50000000"
        "\n        P(Sim. Rag. >= Obs. Rag.): 0.75000000"
        "\nMismatch distributions:\n"
        "        #Diff     Observed    Simulated   Model Freq.\n"
        "            0          5.0          5.0          4.0\n"
        "            1          5.0          5.0          4.0\n"
        "\n\nConfidence intervals (Percentile method):\t alpha=\t0.01"
        "\nBased on 2 replicates\n"
        "                  Variable:       Est. val:     Low. bound:      Up. bound:     Mean Value:\n"
        "                       Tau:           1.500           1.000           2.000           1.500\n"
        "\n        #Diff     Observed    Low. bound  Up. bound   Model Freq.\n";
    EXPECT_EQ(text.substr(0, expected.size()), expected);
}

TEST(MismatchTables, SpatialGoodnessOfFitHasNone) {
    const std::string text = Replicates(2).print("\nConfidence region for the observed mismatch:\n");
    const std::string expected =
        "\nTest of goodness-of-fit:"
        "\n         Sum of Squared deviation: 0.01250000"
        "\n          P(Sim. Ssd >= Obs. Ssd): 0.25000000";
    EXPECT_EQ(text.substr(0, expected.size()), expected);
    EXPECT_FALSE(contains(text, "----"));
    EXPECT_TRUE(contains(text,
                         "           2.000           1.500\n"
                         "\nConfidence region for the observed mismatch:\n"
                         "        #Diff     Observed    Low. bound  Up. bound   Model Freq.\n"));
}

TEST(MismatchTables, FoundersThatCannotBeSimulatedAreSaid) {
    Replicates r(2);
    r.founder_theta = 3577.0771;
    EXPECT_TRUE(contains(
        r.print(nullptr),
        "\n        P(Sim. Rag. >= Obs. Rag.): 0.75000000"
        "\nTheta1 is too large to be simulated: even one founder of 4000000 individuals has a theta of\n"
        "3577.077, which stands in for Theta0. The replicates do not test the model as it was fitted."
        "\nMismatch distributions:\n"));
    r.founder_theta.reset();
    EXPECT_FALSE(contains(r.print(nullptr), "founder"));
}

// What is known of the data is there, what only replicates could tell is not, and the document says why.
TEST(MismatchTables, NoReplicateThatConvergesLeavesNoPValue) {
    for (const char* region : {static_cast<const char*>(nullptr), "\nConfidence region\n"}) {
        const std::string text = Replicates(0).print(region, 7);
        EXPECT_TRUE(
            contains(text,
                     "\n         Sum of Squared deviation: 0.01250000"
                     "\n          P(Sim. Ssd >= Obs. Ssd):       N.A."
                     "\n    Harpending's Raggedness index: 0.50000000"
                     "\n        P(Sim. Rag. >= Obs. Rag.):       N.A."
                     "\nThe fit converged in none of 7 replicates: there are no P-values and no "
                     "confidence intervals.\n" +
                         std::string(region == nullptr ? "\n-----------------------------------------\n"
                                                         "        #Diff     Observed    Model Freq.\n"
                                                       : "\n          #Diff     Observed    Model Freq.\n") +
                         "            0          5.0          4.0\n"
                         "            1          5.0          4.0\n"));
        EXPECT_FALSE(contains(text, "Percentile"));
        EXPECT_FALSE(contains(text, "Based on"));
        EXPECT_FALSE(contains(text, "Confidence region"));
    }
}

TEST(MismatchTables, EstimatesEndWithTheirLastNumber) {
    mnd::mismatchSpatialExpansion fit;
    fit.init_data(1.0, 2.5, 3.0, 4.0, 1.0);
    std::ostringstream sudden, three, four;
    mnd::print_sudden_estimates(sudden, fit);
    EXPECT_EQ(sudden.str(),
              "\nTau                                 :        3.000"
              "\nTheta0                              :        1.000"
              "\nTheta1                              :        2.500");
    mnd::print_spatial_estimates_3(three, fit);
    EXPECT_EQ(three.str(),
              "\n\n===============================================================\n"
              "Parameters of the spatial expansion assuming constant deme size\n"
              "===============================================================\n"
              "\nTau                                 :        3.000"
              "\nTheta                               :        2.500"
              "\nM                                   :        4.000");
    mnd::print_spatial_estimates_4(four, fit);
    EXPECT_EQ(
        four.str(),
        "\n\nParameters of the spatial expansion assuming different deme size before (theta0) and after "
        "(theta1) expansion\n"
        "\nTau                                 :        3.000"
        "\nTheta0                              :        1.000"
        "\nTheta1                              :        2.500"
        "\nM                                   :        4.000");
}

TEST(MismatchTables, OnlyTheFitOfASuddenExpansionHasARule) {
    const Replicates data(0);
    std::ostringstream sudden, spatial;
    mnd::print_fit_table(sudden, data.table);
    EXPECT_EQ(sudden.str(),
              "\n-----------------------------------------\n"
              "        #Diff     Observed    Model Freq.\n"
              "            0          5.0          4.0\n"
              "            1          5.0          4.0\n");
    mnd::print_spatial_fit_table(spatial, data.table);
    EXPECT_EQ(spatial.str(),
              "\n          #Diff     Observed    Model Freq.\n"
              "            0          5.0          4.0\n"
              "            1          5.0          4.0\n");
}

TEST(MismatchTables, ASearchThatDidNotEndIsSaid) {
    mnd::mismatchSpatialExpansion fit;
    fit.not_converged = 1;
    std::ostringstream sudden, three, four;
    mnd::print_sudden_estimates(sudden, fit);
    EXPECT_TRUE(contains(sudden.str(),
                         "\nLeast-square procedure to fit expected and observed"
                         "\nmismatch distribution did not converge after 2000steps \n"));
    mnd::print_spatial_estimates_3(three, fit);
    EXPECT_TRUE(contains(three.str(),
                         "\nLeast-square procedure to fit expected to observed mismatch distribution\n"
                         "did not converge after 2000 steps\n"));
    mnd::print_spatial_estimates_4(four, fit);
    EXPECT_TRUE(contains(four.str(),
                         "\nLeast square procedure to fit model mismatch distribution\n"
                         "and observed distribution did not converge after 2000steps\n"));
}

TEST(MismatchTables, TheVarianceLineIsThis) {
    std::ostringstream out;
    mnd::print_variance_too_small(out);
    EXPECT_EQ(out.str(),
              "\n\n    The variance of the mismatch distribution is to small,\n"
              "    no demographic parameters can be estimated.");
}

// --- Distributions that have no table

// Three haplotypes at these distances.
template <class Sample>
struct Distances {
    mnd::settings s;
    mnd_test::Document document{s};
    mnd::HaploDef definitions[3];
    Sample sample;

    Distances(double d10, double d20, double d21, int largest) {
        sample.profile.DataType = mnd::DNA;
        for (mnd::HaploDef& definition : definitions)
            sample.hapl_list.Add(new mnd::PHaploDef(&definition, 2));
        sample.dist_mat = std::make_unique<mnd::RectMat>(3, 3);
        sample.dist_mat->data[1][0] = d10;
        sample.dist_mat->data[2][0] = d20;
        sample.dist_mat->data[2][1] = d21;
        sample.max_dist = largest;
        sample.nb_hapl = 3;
        sample.sample_size = 6;
        std::fstream unopened;
        EXPECT_EQ(sample.compute_mm_distr(unopened, s), 1);
    }
    std::string print() {
        std::ostringstream out;
        mnd::print_mismatch_distribution(out, sample);
        return out.str();
    }
};

// 3 pairs alike, 4 of each distance: mean 4 (1e9 + 2e9 + 3e9)/15.
TEST(MismatchTables, DifferencesBeyondATableHaveTheirMoments) {
    Distances<mnd::PopulDNA> d(1e9, 1e9, 2e9, 2000000000);
    const std::string text = d.print();
    EXPECT_TRUE(contains(text, "\nMismatch observed mean              : 1066666666.667"));
    EXPECT_TRUE(contains(text, "\nP(Chi-square)                       :         N.A."));
    EXPECT_TRUE(contains(text,
                         "\nThe classes up to 2000000000 differences are too many for a table: no model is "
                         "fitted to them, and no fit is tested.\n"));
    EXPECT_FALSE(contains(text, "#Diff"));
    EXPECT_FALSE(contains(text, "identical"));
}

// The 3 pairs alike and 4 of each distance, in rows of their own, and none without pairs.
TEST(MismatchTables, ThousandsOfClassesAreListedWhereTheyHavePairs) {
    const std::string text = Distances<mnd::PopulDNA>(20000.0, 20000.0, 30000.0, 30000).print();
    EXPECT_TRUE(contains(text, " only those with pairs are listed.\n"));
    const std::size_t rows = text.find("Model Freq.\n") + std::string("Model Freq.\n").size();
    EXPECT_EQ(count_of(text.substr(rows), "\n"), 3);
    EXPECT_TRUE(contains(text, "\n            0          3.0"));
    EXPECT_TRUE(contains(text, "\n        20000          8.0"));
    EXPECT_TRUE(contains(text, "\n        30000          4.0"));
    const std::string all = Distances<mnd::PopulDNA>(30.0, 30.0, 40.0, 40).print();
    EXPECT_FALSE(contains(all, "only those with pairs"));
    EXPECT_TRUE(contains(all, "\n            7          0.0"));
}

TEST(MismatchTables, DifferencesBeyondATableGetNoFitWhichIsSaid) {
    Distances<mnd::PopulDNA> d(1e9, 1e9, 2e9, 2000000000);
    d.s.MismatchDemogExp = d.s.MismatchSpatialExp = true;
    d.s.MismatchSpatialExpNumParams = 2;
    ASSERT_TRUE(mnd::fit_expansions(d.sample, d.s, *d.s.result_stream));
    const std::string text = d.document.text();
    EXPECT_EQ(count_of(text, "are too many for a table"), 1);
    EXPECT_FALSE(contains(text, "Theta"));
    EXPECT_FALSE(d.sample.sudden_expansion.fitted);
}

TEST(MismatchTables, DistancesBelowOneAreNotSaidToBeNone) {
    Distances<mnd::PopulDNA> d(0.5, 0.5, 0.25, 0);
    EXPECT_TRUE(contains(d.print(), "\n\nNo pair of gene copies has a distance of 1 or more.\n"));
}

TEST(MismatchTables, OtherDataAreToldThatNoModelIsFitted) {
    Distances<mnd::PopulMicrosat> d(1.0, 1.0, 2.0, 2);
    d.sample.profile.DataType = mnd::MICROSAT;
    EXPECT_TRUE(
        contains(d.print(), "\nModels of expansion are fitted to DNA sequences and RFLP haplotypes only.\n"));
    d.sample.profile.DataType = mnd::DNA;
    EXPECT_FALSE(contains(d.print(), "Models of expansion"));
}

// 500 classes can be fitted. Of the 15 pairs 3 are alike, 4 have 30 and 8 have 600 differences.
TEST(MismatchTables, PairsWithTooManyDifferencesForAFitAreCounted) {
    Distances<mnd::PopulDNA> d(30.0, 600.0, 600.0, 600);
    d.s.MismatchDemogExp = true;
    ASSERT_TRUE(mnd::fit_expansions(d.sample, d.s, *d.s.result_stream));
    EXPECT_TRUE(contains(d.document.text(),
                         "\n\nPairs with more than 499 differences do not enter the fit: 8 of 15\n"
                         "\nTau                                 : "));
}

TEST(MismatchTables, WithoutAPairForAFitNothingIsEstimated) {
    mnd_test::TempFolder folder;
    std::ofstream rows(folder / "mismatch.sum");
    mnd::ofs_mismatch = &rows;
    Distances<mnd::PopulDNA> d(600.0, 620.0, 640.0, 640);
    for (mnd::PHaploDef* entry : d.sample.hapl_list)
        entry->freq = 1;
    std::fstream unopened;
    d.sample.compute_mm_distr(unopened, d.s);
    d.s.MismatchDemogExp = d.s.MismatchSpatialExp = true;
    d.s.MismatchSpatialExpNumParams = 3;
    ASSERT_TRUE(mnd::fit_expansions(d.sample, d.s, *d.s.result_stream));
    mnd::ofs_mismatch = nullptr;
    const std::string text = d.document.text();
    EXPECT_EQ(count_of(text,
                       "Pairs with more than 499 differences do not enter the fit: 3 of 3\n"
                       "No demographic parameters can be estimated.\n"),
              1);
    EXPECT_EQ(count_of(text, "do not enter the fit"), 1);
    EXPECT_FALSE(contains(text, "Theta"));
    EXPECT_EQ(mnd_test::read_text(folder / "mismatch.sum"), "");
}

// --- Rows of the batch summaries, under the headers of their files

const char* const kLines =
    "a 3 ACGTACGTACGTACGTACGT\nb 2 ACGTACGAACGTACGTACGT\nc 2 ACGTACCTACGGACGTACGA\n"
    "d 1 CCGTACCTACGGACGTACGA\ne 2 ACTTACGTACGTAAGTACGT\n";

std::vector<std::string> fields(const std::string& line) {
    std::vector<std::string> parts(1);
    for (const char c : line) {
        if (c == '\t') {
            parts.emplace_back();
        } else if (c != '\n') {
            parts.back() += c;
        }
    }
    return parts;
}

// Cells of the only row of a file, by the column titles of its header; what comes behind them are
// the classes.
struct Row {
    std::vector<std::string> titles;
    std::vector<std::string> cells;

    Row(const char* header, const std::string& text) : titles(fields(header)), cells(fields(text)) {
        titles.pop_back();  // behind the last tab
        EXPECT_EQ(count_of(text, "\n"), 1);
    }
    std::string cell(const std::string& title) const {
        for (std::size_t i = 0; i < titles.size(); ++i) {
            if (titles[i] == title) return cells.at(i);
        }
        return "no column " + title;
    }
    double number(const std::string& title) const { return std::atof(cell(title).c_str()); }
    std::vector<std::int64_t> classes() const {
        std::vector<std::int64_t> counts;
        for (std::size_t i = titles.size(); i < cells.size(); ++i)
            counts.push_back(std::atoll(cells[i].c_str()));
        return counts;
    }
};

class MismatchRows : public mnd_test::SeededStream {
protected:
    mnd_test::TempFolder folder;
    mnd_test::AnalysedSamples<mnd::PopulDNA> a{mnd_test::haplotypic(mnd::DNA, 0)};
    std::string sudden, three, four, only;

    void analyse() {
        std::ofstream files[] = {std::ofstream(folder / "sudden"), std::ofstream(folder / "three"),
                                 std::ofstream(folder / "four"), std::ofstream(folder / "only")};
        mnd::ofs_mismatch = &files[0];
        mnd::ofs_mismatch_sp3 = &files[1];
        mnd::ofs_mismatch_sp4 = &files[2];
        mnd::ofs_only_mismatch = &files[3];
        a.s.DeletionWeight = a.s.TransitionWeight = a.s.TranversionWeight = 1.0;
        a.s.AllowedLevelOfMissingData = 0.05;
        a.s.NumBootExpDem = 3;
        a.s.MismatchDemogExp = a.s.MismatchSpatialExp = true;
        a.s.MismatchSpatialExpNumParams = 2;
        a.add("Lake", kLines);
        a.prepare();
        a.analyse(mnd::kTaskMismatch);
        mnd::ofs_mismatch = mnd::ofs_mismatch_sp3 = mnd::ofs_mismatch_sp4 = mnd::ofs_only_mismatch = nullptr;
        sudden = mnd_test::read_text(folder / "sudden");
        three = mnd_test::read_text(folder / "three");
        four = mnd_test::read_text(folder / "four");
        only = mnd_test::read_text(folder / "only");
    }
    mnd::PopGenetics& sample() { return static_cast<mnd::PopGenetics&>(*a.samples.populations[0]); }
    void expect_sample(const Row& row) {
        EXPECT_EQ(row.cell("pop_name"), "\"Lake\"");
        EXPECT_EQ(row.cell("Distance"), "Pairwise difference");
        EXPECT_EQ(row.number("gamma_a"), 0.0);
        EXPECT_NEAR(row.number("mean"), sample().mm_mean, 5e-6);
        EXPECT_NEAR(row.number("variance"), sample().mm_variance, 5e-6);
        const std::vector<std::int64_t>& counts = sample().mm_counts;
        EXPECT_EQ(row.classes(),
                  (std::vector<std::int64_t>(counts.begin(), counts.begin() + sample().max_diff + 1)));
    }
};

TEST_F(MismatchRows, OfTheSuddenExpansionAgreeWithTheirHeader) {
    analyse();
    const Row row("file_name\tpop_name\tDistance\tgamma_a\tmean\tvariance\ttheta0\ttau\t", sudden);
    expect_sample(row);
    EXPECT_NEAR(row.number("theta0"), sample().sudden_expansion.Theta0, 5e-6);
    EXPECT_NEAR(row.number("tau"), sample().sudden_expansion.Tau, 5e-6);
}

TEST_F(MismatchRows, OfTheSpatialExpansionOfThreeParametersAgreeWithTheirHeader) {
    analyse();
    const Row row("file_name\tpop_name\tDistance\tgamma_a\tmean\tvariance\ttau\ttheta\tM\t", three);
    expect_sample(row);
    EXPECT_NEAR(row.number("tau"), sample().spatial_expansion_3.Tau, 5e-6);
    EXPECT_NEAR(row.number("theta"), sample().spatial_expansion_3.Theta1, 5e-6);
    EXPECT_NEAR(row.number("M"), sample().spatial_expansion_3.M, 5e-6);
}

TEST_F(MismatchRows, OfTheSpatialExpansionOfFourParametersAgreeWithTheirHeader) {
    analyse();
    const Row row("file_name\tpop_name\tDistance\tgamma_a\tmean\tvariance\ttheta0\ttau\ttheta\tM\t", four);
    expect_sample(row);
    EXPECT_NEAR(row.number("theta0"), sample().spatial_expansion_4.Theta0, 5e-6);
    EXPECT_NEAR(row.number("tau"), sample().spatial_expansion_4.Tau, 5e-6);
    EXPECT_NEAR(row.number("theta"), sample().spatial_expansion_4.Theta1, 5e-6);
    EXPECT_NEAR(row.number("M"), sample().spatial_expansion_4.M, 5e-6);
}

// 45 pairs of 10 copies: 3 + 1 + 1 + 1 alike; a-b one difference (6), c-d one (2), a-e two (6), b-e three
// (4), a-c three (6), a-d four (3), b-c four (4), b-d five (2), c-e five (4), d-e six (2).
TEST_F(MismatchRows, OfTheDistributionAloneHoldItsClasses) {
    analyse();
    EXPECT_EQ(only, "6\t8\t6\t10\t7\t6\t2\n");
}

TEST_F(MismatchRows, OfDistributionsWithoutATableEndWithTheParameters) {
    Distances<mnd::PopulDNA> d(1e9, 1e9, 2e9, 2000000000);
    std::ofstream file(folder / "row");
    mnd::ofs_mismatch = mnd::ofs_only_mismatch = &file;
    mnd::write_mismatch_row(d.sample);
    mnd::write_only_mismatch_row(d.sample);
    mnd::ofs_mismatch = mnd::ofs_only_mismatch = nullptr;
    EXPECT_EQ(count_of(mnd_test::read_text(folder / "row"), "\t"), 7);
}

}  // namespace
