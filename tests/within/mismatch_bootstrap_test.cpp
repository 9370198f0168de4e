#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "foundation/data_type.h"
#include "foundation/random.h"
#include "model/popul_dna.h"
#include "model/popul_microsat.h"
#include "model/popul_rflp.h"
#include "model/popul_standard.h"
#include "run/tasks.h"
#include "simulation/coalescent_tree.h"
#include "support/captured_log.h"
#include "support/captured_reports.h"
#include "support/seeded_stream.h"
#include "within/analysed_sample.h"
#include "within/mismatch_fit.h"
#include "within/mismatch_spatial.h"

namespace {

using mnd::ann_missmatch;
using mnd_test::contains;
using mnd_test::count_of;

// What a replicate of a script comes to.
struct Outcome {
    bool simulated = true;
    bool converged = true;
    double value = 0.0;  // its Tau; Theta0 is a tenth of it, Theta1 ten times it
    double ssd = 0.0;
    double second_class = 0.0;  // share of pairs with one difference, the rest has none
};

class ScriptedFit : public ann_missmatch {
public:
    std::vector<Outcome> script;
    std::vector<double> tau_before_fit;
    int stop_at = -1;

    using ann_missmatch::ann_missmatch;

protected:
    bool simulate_replicate(double* diff, double* freq, int& count) override {
        const Outcome& o = script[next_];
        if (static_cast<int>(next_) == stop_at) settings->stop_computations = 1;
        if (!o.simulated) {
            ++next_;
            return false;
        }
        for (int k = 0; k < count; ++k) {
            diff[k + 1] = k;
            freq[k + 1] = 0.0;
        }
        freq[1] = 1.0 - o.second_class;
        freq[2] = o.second_class;
        Tau = -1.0;  // the fit is to start from the fitted value, whatever a simulation leaves
        return true;
    }
    bool fit_replicate(double*, double*, int) override {
        const Outcome& o = script[next_++];
        tau_before_fit.push_back(Tau);
        Tau = o.value;
        Theta0 = o.value / 10.0;
        Theta1 = o.value * 10.0;
        ssd_work = o.ssd;
        not_converged = o.converged ? 0 : 1;
        return o.converged;
    }

private:
    std::size_t next_ = 0;
};

class Bootstrap : public mnd_test::SeededStream {
protected:
    mnd::settings s;
    mnd_test::Document document{s};
    mnd::PopulDNA sample;
    double diff[5] = {0, 0, 1, 2, 0};
    double freq[5] = {0, 0.5, 0.5, 0.0, 0};
    double fitted[5] = {0, 0.4, 0.4, 0.2, 0};
    int count = 3;

    void SetUp() override {
        SeededStream::SetUp();
        sample.sample_size = 5;
        sample.name = "Lake";
        sample.nb_polym_loci = 4;
    }
    bool run(ScriptedFit& fit) {
        fit.pop = &sample;
        fit.settings = &s;
        fit.init_data(1.0, 20.0, 7.0, 1.0);
        return fit.make_bootstrap(diff, freq, fitted, count, 10, *s.result_stream,
                                  static_cast<int>(fit.script.size()));
    }
};

// Of 6 replicates one is not simulated and two do not converge: 3 count, of which 2 have an SSD, and
// 1 a raggedness, that is not below the observed one.
TEST_F(Bootstrap, CountsEachReplicateThatConvergesOnceAndNoOther) {
    ScriptedFit fit;
    fit.ssd_obs = 0.3;
    fit.rag_obs = 0.5;
    // Shares 1 - x and x are ragged by (2 x - 1)^2 + x^2: 0.25 at 0.5, 1.45 at 0.9.
    fit.script = {{true, true, 3.0, 0.3, 0.5}, {false, true, 99.0, 9.0, 0.9}, {true, false, 98.0, 9.0, 0.9},
                  {true, true, 1.0, 0.2, 0.5}, {true, true, 2.0, 0.4, 0.9},   {true, false, 97.0, 9.0, 0.9}};
    const double done = mnd::settings::global_work_done;
    ASSERT_TRUE(run(fit));
    EXPECT_NEAR(mnd::settings::global_work_done - done, 6.0, 1e-6);
    EXPECT_EQ(fit.num_boot, 3);
    EXPECT_DOUBLE_EQ(fit.p_ssd, 2.0 / 3.0);
    EXPECT_DOUBLE_EQ(fit.p_rag, 1.0 / 3.0);
    EXPECT_EQ(fit.tau_before_fit, (std::vector<double>{7.0, 7.0, 7.0, 7.0, 7.0}));
    EXPECT_EQ(fit.Tau, 7.0);
    EXPECT_EQ(fit.Theta0, 1.0);
    EXPECT_EQ(fit.Theta1, 20.0);
    EXPECT_EQ(fit.not_converged, 0);
}

TEST_F(Bootstrap, WritesThisBlock) {
    ScriptedFit fit;
    fit.ssd_obs = 0.3;
    fit.rag_obs = 0.25;
    fit.script = {{true, true, 3.0, 0.3, 0.5}, {true, true, 1.0, 0.2, 0.5}};
    ASSERT_TRUE(run(fit));
    const std::string text = document.text();
    EXPECT_TRUE(contains(text,
                         "\nTest of goodness-of-fit:"
                         "\n------------------------\n"
                         "\n         Sum of Squared deviation: 0.30000000"
                         "\n          P(Sim. Ssd >= Obs. Ssd): 0.50000000"
                         "\n    Harpending's Raggedness index: 0.25000000"
                         "\n        P(Sim. Rag. >= Obs. Rag.): 1.00000000"
                         "\nMismatch distributions:\n"
                         "        #Diff     Observed    Simulated   Model Freq.\n"
                         "            0          5.0          5.0          4.0\n"
                         "            1          5.0          5.0          4.0\n"
                         "            2          0.0          0.0          2.0\n"))
        << text;
    EXPECT_TRUE(contains(
        text,
        "\n\nConfidence intervals (Percentile method):\t alpha=\t0.05"
        "\nBased on 2 replicates\n"
        "                  Variable:       Est. val:     Low. bound:      Up. bound:     Mean Value:\n"
        "                       Tau:           7.000           1.000           3.000           2.000\n"
        "                    Theta0:           1.000           0.100           0.300           0.200\n"
        "                    Theta1:          20.000          10.000          30.000          20.000\n"
        " Mean No. of pairwise diff.           0.500           0.500           0.500           0.500\n"
        "            No. pol. sites:           4.000           0.000           0.000           0.000\n"
        "\n"
        "        #Diff     Observed    Low. bound  Up. bound   Model Freq.\n"
        "            0          5.0          5.0          5.0          4.0\n"))
        << text;
    EXPECT_EQ(count_of(text, "Confidence intervals (Percentile method):\t alpha=\t"), 3);
}

// 40 replicates with Tau 40, 39 .. 1. Sorted, index i holds i + 1. Intervals: alpha 0.05 takes
// (int)(0.025 40) = 1 and (int)(0.975 40) = 39; 0.01 takes 0 and (int)39.8 = 39; 0.10 takes 2 and 38.
// Summary: (int)(0.025 40 - 1) = 0, (int)(0.05 40 - 1) = 1, (int)(0.95 40 - 1) = 37, (int)(39 - 1) = 38.
TEST_F(Bootstrap, TakesPercentilesByTheseIndices) {
    ScriptedFit fit;
    for (int i = 40; i >= 1; --i)
        fit.script.push_back({true, true, static_cast<double>(i), 0.0, 0.5});
    ASSERT_TRUE(run(fit));
    EXPECT_EQ(fit.tau_percentiles.q025, 1.0);
    EXPECT_EQ(fit.tau_percentiles.q050, 2.0);
    EXPECT_EQ(fit.tau_percentiles.q950, 38.0);
    EXPECT_EQ(fit.tau_percentiles.q975, 39.0);
    EXPECT_DOUBLE_EQ(fit.theta0_percentiles.q975, 3.9);
    EXPECT_DOUBLE_EQ(fit.theta1_percentiles.q050, 20.0);
    const std::string text = document.text();
    const char* const row = "                       Tau:           7.000";
    EXPECT_TRUE(contains(text, std::string(row) + "           2.000          40.000          20.500\n"));
    EXPECT_TRUE(contains(text, std::string(row) + "           1.000          40.000          20.500\n"));
    EXPECT_TRUE(contains(text, std::string(row) + "           3.000          39.000          20.500\n"));
}

// (int)((1 - 0.005) 1) = 0 and (int)(0.025 1 - 1.0) = 0: one replicate serves for all.
TEST_F(Bootstrap, OneReplicateIsEveryPercentile) {
    ScriptedFit fit;
    fit.script = {{true, true, 3.0, 0.0, 0.5}};
    ASSERT_TRUE(run(fit));
    EXPECT_EQ(fit.tau_percentiles.q025, 3.0);
    EXPECT_EQ(fit.tau_percentiles.q975, 3.0);
}

TEST_F(Bootstrap, WithoutAReplicateThatConvergesHasNoPValuesAndNoIntervals) {
    ScriptedFit fit;
    fit.script = {{true, false, 3.0, 0.0, 0.5}, {false, true, 3.0, 0.0, 0.5}};
    ASSERT_TRUE(run(fit));
    EXPECT_EQ(fit.num_boot, 0);
    EXPECT_EQ(fit.p_ssd, 0.0);
    EXPECT_EQ(fit.p_rag, 0.0);
    EXPECT_EQ(fit.tau_percentiles.q975, 0.0);
    const std::string text = document.text();
    EXPECT_TRUE(contains(text, "P(Sim. Ssd >= Obs. Ssd):       N.A."));
    EXPECT_TRUE(contains(text,
                         "\nThe fit converged in none of 2 replicates: there are no P-values and no "
                         "confidence intervals.\n"));
    EXPECT_FALSE(contains(text, "Percentile method"));
}

TEST_F(Bootstrap, AStopDropsWhatWasGathered) {
    ScriptedFit fit;
    for (int i = 0; i < 5; ++i)
        fit.script.push_back({true, true, 1.0, 9.0, 0.5});
    fit.stop_at = 2;
    EXPECT_FALSE(run(fit));
    EXPECT_EQ(fit.tau_before_fit.size(), 3u);
    EXPECT_EQ(fit.p_ssd, 0.0);
    EXPECT_EQ(fit.Tau, 7.0);
    EXPECT_FALSE(contains(document.text(), "goodness"));
}

// A replicate without a size before the expansion has no ratio of sizes.
TEST_F(Bootstrap, KeepsTheGrowthOfReplicatesThatHaveOne) {
    struct Open : ann_missmatch {
        using ann_missmatch::keep_parameters;
    };
    Open fit;
    mnd::ReplicateResults results;
    for (const double theta0 : {2.0, 0.0, 4.0}) {
        fit.init_data(theta0, 10.0, 3.0, 1.0);
        fit.keep_parameters(results);
    }
    EXPECT_EQ(results.growth, (std::vector<double>{5.0, 2.5}));
    EXPECT_EQ(results.Theta0, (std::vector<double>{2.0, 0.0, 4.0}));
}

// One of 4 000 000 individuals has theta 250 when all have 1e9, be Theta0 what it may.
TEST_F(Bootstrap, FoundersThatAreFarFromTheFittedOnesAreSaid) {
    const auto text_of = [this](double theta0, double theta1) {
        ScriptedFit fit(&sample, &s);
        fit.script.resize(1);
        fit.init_data(theta0, theta1, 7.0, 1.0);
        const std::string before = document.text();
        EXPECT_TRUE(fit.make_bootstrap(diff, freq, fitted, count, 10, *s.result_stream, 1));
        return document.text().substr(before.size());
    };
    EXPECT_TRUE(
        contains(text_of(1.0, 1e9), " individuals has a theta of\n250.000, which stands in for Theta0."));
    EXPECT_TRUE(contains(text_of(1.0, 1e17), " individuals has a theta of\n10000.000, which"));
    EXPECT_FALSE(contains(text_of(249.95, 1e9), "founder"));
    EXPECT_FALSE(contains(text_of(0.0, 99999.0), "founder"));
    EXPECT_FALSE(contains(text_of(2.0, 20.0), "founder"));
    EXPECT_FALSE(contains(text_of(2e4, 2e4), "founder"));
}

TEST_F(Bootstrap, WrapsItsTablesUnderXml) {
    mnd::xmlOutput = true;
    ScriptedFit fit;
    fit.script = {{true, true, 3.0, 0.0, 0.5}};
    ASSERT_TRUE(run(fit));
    const std::string text = document.text();
    EXPECT_EQ(count_of(text, "<mismatchDemogExp pop=\"Lake\""), 1);
    EXPECT_EQ(count_of(text, "</mismatchDemogExp>"), 1);
    EXPECT_EQ(count_of(text, "<mismatchDemogExpCI pop=\"Lake\""), 3);
    EXPECT_EQ(count_of(text, "</mismatchDemogExpCI>"), 3);
}

TEST_F(Bootstrap, HugeSizesKeepTheirColumns) {
    ScriptedFit fit;
    fit.script = {{true, true, 1e18, 0.0, 0.5}};
    ASSERT_TRUE(run(fit));
    EXPECT_TRUE(contains(document.text(), "Theta1:          20.000       1.000e+19       1.000e+19"));
}

// A spatial expansion whose replicates follow a script.
class ScriptedSpatialFit : public mnd::mismatchSpatialExpansion {
public:
    std::vector<Outcome> script;

protected:
    bool simulate_replicate(double* diff, double* freq, int& count) override {
        const Outcome& o = script[next_];
        if (!o.simulated) ++next_;
        for (int k = 0; k < count; ++k) {
            diff[k + 1] = k;
            freq[k + 1] = 0.0;
        }
        freq[1] = 1.0 - o.second_class;
        freq[2] = o.second_class;
        return o.simulated;
    }
    bool fit_replicate(double*, double*, int) override {
        const Outcome& o = script[next_++];
        Tau = o.value;
        Theta0 = Theta1 = o.value / 10.0;
        M = o.value * 100.0;
        ssd_work = o.ssd;
        return o.converged;
    }

private:
    std::size_t next_ = 0;
};

class SpatialBootstrap : public Bootstrap {
protected:
    ScriptedSpatialFit fit;

    void run_script() {
        fit.pop = &sample;
        fit.settings = &s;
        fit.init_data(2.0, 2.0, 7.0, 50.0, 1.0);
        ASSERT_TRUE(fit.make_bootstrap_spatial_exp(diff, freq, fitted, count, 10, *s.result_stream,
                                                   static_cast<int>(fit.script.size())));
    }
};

// As of the sudden expansion: 3 of 5 count, 2 and 1 of them against the fit.
TEST_F(SpatialBootstrap, CountsEachReplicateThatConvergesOnceAndNoOther) {
    fit.ssd_obs = 0.3;
    fit.rag_obs = 0.5;
    fit.script = {{true, false, 98.0, 9.0, 0.9},
                  {true, true, 3.0, 0.3, 0.5},
                  {false, true, 99.0, 9.0, 0.9},
                  {true, true, 1.0, 0.2, 0.5},
                  {true, true, 2.0, 0.4, 0.9}};
    run_script();
    EXPECT_EQ(fit.num_boot, 3);
    EXPECT_DOUBLE_EQ(fit.p_ssd, 2.0 / 3.0);
    EXPECT_DOUBLE_EQ(fit.p_rag, 1.0 / 3.0);
    EXPECT_EQ(fit.Tau, 7.0);
    EXPECT_EQ(fit.Theta0, 2.0);
    EXPECT_EQ(fit.Theta1, 2.0);
    EXPECT_EQ(fit.M, 50.0);
    EXPECT_EQ(count_of(document.text(), "\nBased on 3 replicates\n"), 3);
}

// 40 replicates with M 4000, 3900 .. 100: indices 0, 1, 37 and 38 of the sorted list, as of Tau above.
TEST_F(SpatialBootstrap, TakesPercentilesOfMByTheseIndices) {
    for (int i = 40; i >= 1; --i)
        fit.script.push_back({true, true, static_cast<double>(i), 0.0, 0.5});
    run_script();
    const mnd::ExpansionFit result = fit.result();
    EXPECT_EQ(result.m_percentiles.q025, 100.0);
    EXPECT_EQ(result.m_percentiles.q050, 200.0);
    EXPECT_EQ(result.m_percentiles.q950, 3800.0);
    EXPECT_EQ(result.m_percentiles.q975, 3900.0);
    EXPECT_EQ(result.tau_percentiles.q975, 39.0);
    EXPECT_DOUBLE_EQ(result.theta1_percentiles.q025, 0.1);
    EXPECT_DOUBLE_EQ(result.theta1_percentiles.q950, 3.8);
    // alpha 0.05: indices 1 and 39, mean 20.5 hundreds.
    EXPECT_TRUE(contains(document.text(),
                         "                       Tau:           7.000           2.000          40.000"
                         "          20.500\n"
                         "                         M:          50.000         200.000        4000.000"
                         "        2050.000\n"
                         "                     Theta:           2.000           0.200           4.000"
                         "           2.050\n"));
}

// Shares 1.5 and -0.5 of one replicate: the first is no share. Left are 0.75 and 0.5 of class 0, while
// class 1 keeps all three: means of 10 pairs are 6.25, and (-0.5 + 0.25 + 0.5)/3 = 0.8.
TEST_F(SpatialBootstrap, LeavesOutSharesAboveOne) {
    fit.script = {{true, true, 1.0, 0.0, -0.5}, {true, true, 2.0, 0.0, 0.25}, {true, true, 3.0, 0.0, 0.5}};
    run_script();
    EXPECT_TRUE(contains(document.text(),
                         "        #Diff     Observed    Simulated   Model Freq.\n"
                         "            0          5.0          6.2          4.0\n"
                         "            1          5.0          0.8          4.0\n"));
    // alpha 0.05 of two: (int)0.05 = 0 and (int)1.95 = 1; of three 0 and (int)2.925 = 2.
    EXPECT_TRUE(contains(document.text(),
                         "        #Diff     Observed    Low. bound  Up. bound   Model Freq.\n"
                         "            0          5.0          5.0          7.5          4.0\n"
                         "            1          5.0         -5.0          5.0          4.0\n"));
}

// Searches that run out of rounds in some replicates only: nothing of these is counted.
class CountedFit : public ann_missmatch {
public:
    using ann_missmatch::ann_missmatch;
    int kept = 0, failed = 0, not_better = 0;
    std::vector<double> kept_tau;

protected:
    bool fit_replicate(double* diff, double* freq, int count) override {
        if (!ann_missmatch::fit_replicate(diff, freq, count)) {
            ++failed;
            return false;
        }
        ++kept;
        if (ssd_work >= ssd_obs) ++not_better;
        kept_tau.push_back(Tau);
        return true;
    }
};

TEST_F(Bootstrap, KeptAndFailedReplicatesAreThoseAskedFor) {
    sample.sample_size = 20;
    CountedFit fit(&sample, &s);
    fit.sample_size = 20;
    fit.init_data(1.0, 20.0, 4.0, 1.0);
    fit.max_steps = 60;
    fit.ssd_obs = 0.02;
    std::vector<double> d(20), f(20), model(20);
    for (std::size_t k = 1; k < 20; ++k)
        d[k] = static_cast<double>(k) - 1.0;
    int classes = 12;
    ASSERT_TRUE(fit.make_bootstrap(d.data(), f.data(), model.data(), classes, 190, *s.result_stream, 80));
    EXPECT_GT(fit.kept, 0);
    EXPECT_GT(fit.failed, 0);
    EXPECT_EQ(fit.kept + fit.failed, 80);
    EXPECT_EQ(fit.num_boot, fit.kept);
    EXPECT_GT(fit.not_better, 0);
    EXPECT_LT(fit.not_better, fit.kept);
    EXPECT_DOUBLE_EQ(fit.p_ssd, static_cast<double>(fit.not_better) / fit.kept);
    std::sort(fit.kept_tau.begin(), fit.kept_tau.end());
    EXPECT_EQ(fit.tau_percentiles.q975,
              fit.kept_tau[static_cast<std::size_t>(static_cast<int>(0.975 * fit.kept - 1.0))]);
    EXPECT_EQ(count_of(document.text(), "\nBased on " + std::to_string(fit.kept) + " replicates\n"), 3);
}

// --- Simulated distributions, against sequences compared site by site

std::vector<double> plain_distribution(mnd::TTree& tree, int n, int count, int& sites) {
    std::vector<double> freq(static_cast<std::size_t>(count) + 2);
    std::vector<bool> marked(400);
    for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            int differences = 0;
            for (std::size_t site = 0; site < 400; ++site) {
                if ((*tree.nodes[i].sequence)[site] == (*tree.nodes[j].sequence)[site]) continue;
                ++differences;
                marked[site] = true;
            }
            if (differences <= count - 2) freq[static_cast<std::size_t>(differences) + 1] += 1.0;
        }
    }
    for (double& f : freq)
        f /= n * (n - 1) / 2.0;
    sites = 0;
    for (const bool m : marked)
        sites += m ? 1 : 0;
    return freq;
}

TEST_F(Bootstrap, SimulatesASuddenExpansionAsThePlainFormDoes) {
    sample.sample_size = 12;
    ann_missmatch fit(&sample, &s);
    fit.sample_size = 12;
    std::vector<double> d(30), f(30);
    for (int replicate = 0; replicate < 20; ++replicate) {
        fit.init_data(0.5 + replicate, 30.0, 6.0, 1.0);
        int classes = 5 + replicate % 8;
        sample.allocate_tree(12);
        seed();
        auto draws = mnd::draws_taken();
        ASSERT_EQ(fit.simulate_miss(d.data(), f.data(), classes), 1);
        draws = mnd::draws_taken() - draws;
        const double after = next();

        mnd::PopulDNA plain;
        plain.sample_size = 12;
        plain.allocate_tree(12);
        seed();
        auto plain_draws = mnd::draws_taken();
        const int N = 4000000;
        const double mu = 30.0 / 2.0 / N;
        plain.simulate_sample_exp(mu, 400, mnd::kNewStateMutation, -1.0, 1.0, 1.0, 0.33, 6.0 / 2.0 / (mu * N),
                                  std::max(1.0 / N, (0.5 + replicate) / 30.0), N);
        plain_draws = mnd::draws_taken() - plain_draws;
        EXPECT_EQ(draws, plain_draws);
        EXPECT_EQ(next(), after);
        int sites = 0;
        const std::vector<double> expected = plain_distribution(*plain.tree, 12, classes, sites);
        for (std::size_t k = 1; k <= static_cast<std::size_t>(classes); ++k) {
            EXPECT_EQ(d[k], static_cast<double>(k - 1));
            EXPECT_EQ(f[k], expected[k]);
        }
        EXPECT_EQ(fit.simulated_sites(), sites);
    }
}

// Founders are one of the N individuals at least: of 10, though 0.5/50 would make them a tenth of one.
TEST_F(Bootstrap, SimulatesAtLeastOneFounder) {
    sample.sample_size = 12;
    ann_missmatch fit(&sample, &s);
    fit.sample_size = 12;
    std::vector<double> d(30), f(30);
    int otherwise = 0;
    for (int replicate = 0; replicate < 10; ++replicate) {
        fit.init_data(0.5, 50.0, 3.0, 1.0);
        fit.N = 10;
        int classes = 20;
        long idum = -100 - replicate;
        mnd::ran3(&idum);
        ASSERT_EQ(fit.simulate_miss(d.data(), f.data(), classes), 1);
        for (const double growth : {1.0 / 10.0, 0.5 / 50.0}) {
            mnd::PopulDNA plain;
            plain.sample_size = 12;
            plain.allocate_tree(12);
            idum = -100 - replicate;
            mnd::ran3(&idum);
            const double mu = 50.0 / 2.0 / 10;
            plain.simulate_sample_exp(mu, 400, mnd::kNewStateMutation, -1.0, 1.0, 1.0, 0.33,
                                      3.0 / 2.0 / (mu * 10), growth, 10);
            int sites = 0;
            const std::vector<double> expected = plain_distribution(*plain.tree, 12, classes, sites);
            if (growth == 1.0 / 10.0) {
                EXPECT_EQ(fit.simulated_sites(), sites);
                for (std::size_t k = 1; k <= 20; ++k)
                    EXPECT_EQ(f[k], expected[k]);
            } else {
                otherwise += fit.simulated_sites() != sites ? 1 : 0;
            }
        }
    }
    EXPECT_GT(otherwise, 5);
}

TEST_F(Bootstrap, SimulatesASpatialExpansionAsThePlainFormDoes) {
    sample.sample_size = 12;
    mnd::mismatchSpatialExpansion fit(&sample, &s);
    std::vector<double> d(30), f(30);
    for (int replicate = 0; replicate < 20; ++replicate) {
        fit.init_data(3.0, 3.0, 6.0, 0.5 + replicate, 1.0);
        int classes = 5 + replicate % 8;
        sample.allocate_tree(12);
        seed();
        ASSERT_EQ(fit.simulate_spatial_exp(d.data(), f.data(), classes), 1);
        const double after = next();

        mnd::PopulDNA plain;
        plain.sample_size = 12;
        plain.allocate_tree(12);
        seed();
        const int N = 4000000;
        plain.simulate_range_exp(3.0 / 2.0 / N, 400, mnd::kNewStateMutation, -1.0, 1.0, 1.0, 0.33, 6.0 / 3.0,
                                 (0.5 + replicate) / 2.0, N);
        EXPECT_EQ(next(), after);
        int sites = 0;
        const std::vector<double> expected = plain_distribution(*plain.tree, 12, classes, sites);
        for (std::size_t k = 1; k <= static_cast<std::size_t>(classes); ++k)
            EXPECT_EQ(f[k], expected[k]);
    }
}

TEST_F(Bootstrap, WithoutASizeNothingIsSimulated) {
    ann_missmatch sudden(&sample, &s);
    sudden.init_data(1.0, 0.0, 3.0, 1.0);
    mnd::mismatchSpatialExpansion spatial(&sample, &s);
    spatial.init_data(0.0, 0.0, 3.0, 1.0, 1.0);
    const auto draws = mnd::draws_taken();
    EXPECT_EQ(sudden.simulate_miss(diff, freq, count), 0);
    EXPECT_EQ(spatial.simulate_spatial_exp(diff, freq, count), 0);
    EXPECT_EQ(mnd::draws_taken(), draws);
}

TEST_F(Bootstrap, AnotherNumberOfCopiesIsSaidInTheLog) {
    ann_missmatch fit(&sample, &s);
    fit.sample_size = 4;
    fit.init_data(1.0, 5.0, 3.0, 1.0);
    mnd_test::CapturedLog log;
    EXPECT_EQ(fit.simulate_miss(diff, freq, count), 1);
    EXPECT_TRUE(log.holds("Problem with population sample size in simulation"));
}

// Classes of a spatial expansion leave out shares above 1; here none is.
TEST_F(Bootstrap, SpatialReplicatesTakeNineDrawsForEachFit) {
    mnd::mismatchSpatialExpansion fit(&sample, &s);
    fit.init_data(2.0, 2.0, 4.0, 3.0, 1.0);
    ASSERT_TRUE(fit.make_bootstrap_spatial_exp(diff, freq, fitted, count, 10, *s.result_stream, 4));
    const auto after = next();
    seed();
    mnd::PopulDNA plain;
    plain.sample_size = 5;
    plain.allocate_tree(5);
    for (int b = 0; b < 4; ++b) {
        plain.simulate_range_exp(2.0 / 2.0 / 4000000, 400, mnd::kNewStateMutation, -1.0, 1.0, 1.0, 0.33,
                                 4.0 / 2.0, 1.5, 4000000);
        for (int i = 0; i < 9; ++i)
            next();
    }
    EXPECT_EQ(next(), after);
    const std::string text = document.text();
    EXPECT_EQ(count_of(text, "\nConfidence region for the observed mismatch:\n"), 3);
    EXPECT_TRUE(contains(text, "\n                         M:           3.000"));
    EXPECT_TRUE(contains(text, "\n                     Theta:           2.000"));
    EXPECT_FALSE(contains(text, "No. pol. sites"));
}

// --- The blocks of estimates

// 45 pairs of 10 copies, in six classes.
class EstimateBlock : public Bootstrap {
protected:
    void SetUp() override {
        Bootstrap::SetUp();
        sample.sample_size = 10;
        sample.mm_counts = {6, 9, 12, 10, 5, 3, 0, 0, 0, 0, 0};
        sample.max_diff = 5;
    }
};

TEST_F(EstimateBlock, OfASuddenExpansionTellsThatTheSearchDidNotConverge) {
    ann_missmatch fit(&sample, &s);
    fit.max_steps = 3;
    ASSERT_TRUE(fit.solve_least_square_rh(*s.result_stream));
    EXPECT_EQ(fit.not_converged, 1);
    EXPECT_TRUE(contains(document.text(),
                         "\nLeast-square procedure to fit expected and observed"
                         "\nmismatch distribution did not converge after 3steps \n"));
    ann_missmatch longer(&sample, &s);
    ASSERT_TRUE(longer.solve_least_square_rh(*s.result_stream));
    EXPECT_EQ(longer.not_converged, 0);
    EXPECT_EQ(count_of(document.text(), "converge"), 1);
}

TEST_F(EstimateBlock, OfThreeParametersTellsThatTheSearchDidNotConverge) {
    mnd::mismatchSpatialExpansion fit(&sample, &s);
    fit.max_steps = 3;
    ASSERT_TRUE(fit.solve_least_square_spatial_expansion_3_par(*s.result_stream));
    EXPECT_TRUE(contains(document.text(),
                         "\nLeast-square procedure to fit expected to observed mismatch distribution\n"
                         "did not converge after 3 steps\n"
                         "\nTau                                 : "));
    mnd::mismatchSpatialExpansion longer(&sample, &s);
    ASSERT_TRUE(longer.solve_least_square_spatial_expansion_3_par(*s.result_stream));
    EXPECT_EQ(longer.not_converged, 0);
    EXPECT_EQ(count_of(document.text(), "converge"), 1);
}

TEST_F(EstimateBlock, OfFourParametersTellsThatTheSearchDidNotConverge) {
    mnd::mismatchSpatialExpansion fit(&sample, &s);
    fit.max_steps = 3;
    mnd_test::CapturedLog log;
    ASSERT_TRUE(fit.solve_least_square_spatial_expansion_4_par(*s.result_stream));
    EXPECT_TRUE(contains(document.text(),
                         "\nLeast square procedure to fit model mismatch distribution\n"
                         "and observed distribution did not converge after 3steps\n"
                         "\nTau                                 : "));
    EXPECT_EQ(count_of(log.text(), "\t\tno convergence after 3 steps (#="), 10);
    EXPECT_EQ(count_of(log.text(), ")\n"), 10);
}

// Each row fixed, 12 wide, with three decimals, in this order.
TEST_F(EstimateBlock, OfFourParametersHasFourRows) {
    mnd::mismatchSpatialExpansion fit(&sample, &s);
    fit.num_boot = 7;
    fit.max_steps = 3;
    mnd_test::CapturedLog log;
    ASSERT_TRUE(fit.solve_least_square_spatial_expansion_4_par(*s.result_stream));
    char rows[400];
    std::snprintf(rows, sizeof rows,
                  "\nTau                                 : %12.3f"
                  "\nTheta0                              : %12.3f"
                  "\nTheta1                              : %12.3f"
                  "\nM                                   : %12.3f\n",
                  fit.Tau, fit.Theta0, fit.Theta1, fit.M);
    EXPECT_TRUE(contains(document.text(), rows)) << document.text();
    EXPECT_TRUE(contains(document.text(), "          #Diff     Observed    Model Freq.\n"));
    EXPECT_EQ(fit.num_boot, 0);
    EXPECT_FALSE(contains(document.text(), "goodness"));
}

TEST_F(EstimateBlock, OfThreeParametersHasThreeRows) {
    mnd::mismatchSpatialExpansion fit(&sample, &s);
    ASSERT_TRUE(fit.solve_least_square_spatial_expansion_3_par(*s.result_stream));
    char rows[400];
    std::snprintf(rows, sizeof rows,
                  "\nTau                                 : %12.3f"
                  "\nTheta                               : %12.3f"
                  "\nM                                   : %12.3f\n",
                  fit.Tau, fit.Theta1, fit.M);
    EXPECT_TRUE(contains(document.text(), rows)) << document.text();
}

TEST_F(EstimateBlock, SkippingTheReplicatesLeavesThePlainTable) {
    ann_missmatch fit(&sample, &s);
    fit.num_boot = 5;
    fit.skip_obs = 1;
    const auto draws = mnd::draws_taken();
    ASSERT_TRUE(fit.solve_least_square_rh(*s.result_stream));
    EXPECT_EQ(mnd::draws_taken(), draws);
    EXPECT_EQ(fit.num_boot, 0);
    const std::string text = document.text();
    EXPECT_FALSE(contains(text, "goodness"));
    EXPECT_TRUE(contains(text,
                         "\n-----------------------------------------\n"
                         "        #Diff     Observed    Model Freq.\n"
                         "            0          6.0"));
    fit.num_boot = 5;
    fit.skip_obs = 0;
    ASSERT_TRUE(fit.solve_least_square_rh(*s.result_stream));
    EXPECT_GT(mnd::draws_taken(), draws);
    EXPECT_TRUE(contains(document.text(), "goodness"));
}

// --- The step of the driver

const char* const kLines =
    "a 3 ACGTACGTACGTACGTACGT\nb 2 ACGTACGAACGTACGTACGT\nc 2 ACGTACCTACGGACGTACGA\n"
    "d 1 CCGTACCTACGGACGTACGA\ne 2 ACTTACGTACGTAAGTACGT\n";

template <class Sample>
struct Step {
    mnd_test::AnalysedSamples<Sample> a;
    explicit Step(int type = mnd::DNA, const char* lines = kLines, char separator = 0)
        : a(mnd_test::haplotypic(type, separator)) {
        a.s.DeletionWeight = a.s.TransitionWeight = a.s.TranversionWeight = 1.0;
        a.s.AllowedLevelOfMissingData = 0.05;
        a.s.NumBootExpDem = 20;
        a.add("Lake", lines);
        a.prepare();
    }
    std::string run(long tasks = mnd::kTaskMismatch) { return a.analyse(tasks); }
    Sample& sample() { return static_cast<Sample&>(*a.samples.populations[0]); }
};

class MismatchStep : public mnd_test::SeededStream {};

TEST_F(MismatchStep, FitsASuddenExpansion) {
    Step<mnd::PopulDNA> step;
    step.a.s.MismatchDemogExp = true;
    const std::string text = step.run();
    EXPECT_TRUE(contains(text,
                         "\n\n******************************************************"
                         "\nParameters estimated under the sudden expansion model:"
                         "\n******************************************************"
                         "\n\nMismatch observed mean              : "));
    EXPECT_TRUE(contains(text, "\nTau                                 : "));
    EXPECT_TRUE(contains(text, "\nTheta0                              : "));
    EXPECT_TRUE(contains(text, "Rogers, A. R., and H. Harpending (1992)"));
    EXPECT_FALSE(contains(text, "spatial"));
    const mnd::ExpansionFit& fit = step.sample().sudden_expansion;
    EXPECT_TRUE(fit.fitted);
    EXPECT_GT(fit.replicates, 0);
    EXPECT_LE(fit.replicates, 20);
    EXPECT_GT(fit.Tau, 0.0);
    EXPECT_GE(fit.Theta1, fit.Theta0);
    EXPECT_FALSE(step.sample().spatial_expansion_3.fitted);
}

TEST_F(MismatchStep, WithoutReplicatesPrintsThePlainTable) {
    Step<mnd::PopulDNA> step;
    step.a.s.MismatchDemogExp = step.a.s.MismatchSpatialExp = true;
    step.a.s.MismatchSpatialExpNumParams = 3;
    step.a.s.NumBootExpDem = 0;
    const std::string text = step.run();
    EXPECT_TRUE(contains(text,
                         "\n-----------------------------------------\n"
                         "        #Diff     Observed    Model Freq.\n"
                         "            0          6.0"));
    EXPECT_TRUE(contains(text,
                         "\n===============================================================\n"
                         "Parameters of the spatial expansion assuming constant deme size\n"
                         "===============================================================\n"
                         "\nTau                                 : "));
    EXPECT_TRUE(contains(text, "          #Diff     Observed    Model Freq.\n            0          6.0"));
    EXPECT_FALSE(contains(text, "goodness"));
    EXPECT_FALSE(contains(text, "Confidence"));
}

TEST_F(MismatchStep, ParametersOfTwoMeanBothSpatialFitsTheOneOfFourFirst) {
    Step<mnd::PopulDNA> step;
    step.a.s.MismatchSpatialExp = true;
    step.a.s.MismatchSpatialExpNumParams = 2;
    const std::string text = step.run();
    const auto four = text.find(
        "\n\nParameters of the spatial expansion assuming different deme size before (theta0) "
        "and after (theta1) expansion\n");
    const auto three = text.find("Parameters of the spatial expansion assuming constant deme size\n");
    ASSERT_NE(four, std::string::npos);
    ASSERT_NE(three, std::string::npos);
    EXPECT_LT(four, three);
    EXPECT_EQ(count_of(text, "goodness"), 1);
    EXPECT_TRUE(step.sample().spatial_expansion_4.fitted);
    EXPECT_EQ(step.sample().spatial_expansion_4.replicates, 0);
    EXPECT_GT(step.sample().spatial_expansion_3.replicates, 0);
    EXPECT_EQ(count_of(text, "Mismatch observed mean"), 1);
}

TEST_F(MismatchStep, AStopBetweenTheSpatialFitsEndsThem) {
    Step<mnd::PopulDNA> step;
    step.run();
    step.a.s.MismatchSpatialExpNumParams = 2;
    step.a.s.stop_computations = 1;
    EXPECT_EQ(step.sample().est_spatial_mis(&step.a.s, *step.a.s.result_stream), 0);
    EXPECT_TRUE(step.sample().spatial_expansion_4.fitted);
    EXPECT_FALSE(step.sample().spatial_expansion_3.fitted);
    EXPECT_FALSE(contains(step.a.document.text(), "assuming constant deme size"));
}

TEST_F(MismatchStep, AnotherNumberOfParametersFitsNothing) {
    Step<mnd::PopulDNA> step;
    step.a.s.MismatchSpatialExp = true;
    step.a.s.MismatchSpatialExpNumParams = 5;
    EXPECT_TRUE(
        contains(step.run(), "No spatial expansion is fitted: 5 is none of the numbers of parameters"));
    EXPECT_FALSE(step.sample().spatial_expansion_3.fitted);
}

TEST_F(MismatchStep, AVarianceOfNothingAllowsNoFit) {
    Step<mnd::PopulDNA> step(mnd::DNA, "a 4 ACGT\n");
    step.a.s.MismatchDemogExp = step.a.s.MismatchSpatialExp = true;
    step.a.s.MismatchSpatialExpNumParams = 3;
    const auto draws = mnd::draws_taken();
    const std::string text = step.run();
    EXPECT_EQ(mnd::draws_taken(), draws);
    EXPECT_TRUE(contains(text,
                         "\nMismatch observed mean              :        0.000"
                         "\nMismatch observed variance          :        0.000"
                         "\n\n    The variance of the mismatch distribution is to small,\n"
                         "    no demographic parameters can be estimated."));
    EXPECT_EQ(count_of(text, "variance of the mismatch"), 1);
}

TEST_F(MismatchStep, WithoutModelsPrintsTheDistribution) {
    Step<mnd::PopulDNA> step;
    const std::string text = step.run();
    EXPECT_TRUE(contains(text, "\nTheta_0                             : "));
    EXPECT_TRUE(contains(text, "        #Diff     Observed    Model Freq.\n            0          6.0"));
    EXPECT_FALSE(contains(text, "sudden"));
}

TEST_F(MismatchStep, RestrictionSitesAreFittedToo) {
    Step<mnd::PopulRFLP> step(mnd::RFLP, "a 3 1010101\nb 2 1110101\nc 3 0000101\nd 1 1111111\n");
    step.a.s.MismatchDemogExp = step.a.s.MismatchSpatialExp = true;
    step.a.s.MismatchSpatialExpNumParams = 3;
    step.run();
    EXPECT_TRUE(step.sample().sudden_expansion.fitted);
    EXPECT_TRUE(step.sample().spatial_expansion_3.fitted);
}

TEST_F(MismatchStep, OtherDataHaveTheirMomentsOnly) {
    Step<mnd::PopulStandard> standard(mnd::STANDARD, "a 3 A B C\nb 2 A B D\nc 1 B B D\n", ' ');
    standard.a.s.MismatchDemogExp = true;
    const auto draws = mnd::draws_taken();
    const std::string text = standard.run();
    EXPECT_TRUE(contains(text, "\nTheta_0                             : ")) << text;
    // 3 + 1 pairs alike, a-b 6 and b-c 2 with one difference, a-c 3 with two.
    EXPECT_EQ(standard.sample().mm_counts, (std::vector<std::int64_t>{4, 8, 3, 0, 0}));
    EXPECT_EQ(mnd::draws_taken(), draws);
    Step<mnd::PopulMicrosat> microsat(mnd::MICROSAT, "a 3 10 12\nb 2 11 12\n", ' ');
    EXPECT_TRUE(contains(microsat.run(), "\nTheta_0                             : "));
}

// Proportions are scaled to differences per sequence, and leave no matrix to the tasks behind.
TEST_F(MismatchStep, MethodsThatGiveProportionsAreScaled) {
    Step<mnd::PopulDNA> plain;
    plain.run();
    Step<mnd::PopulDNA> proportion;
    proportion.a.s.MismatchDistanceMethod = 3;
    proportion.run();
    EXPECT_EQ(proportion.sample().distance_method, 3);
    EXPECT_EQ(proportion.sample().max_diff, plain.sample().max_diff);
    EXPECT_EQ(proportion.sample().dist_mat, nullptr);
}

// A number that is no method counts differences: without scaling, which is for proportions.
TEST_F(MismatchStep, NumbersThatAreNoMethodCountDifferences) {
    Step<mnd::PopulDNA> plain;
    plain.run();
    for (const int method : {7, 8, 99, -3}) {
        Step<mnd::PopulDNA> unknown;
        unknown.a.s.MismatchDistanceMethod = method;
        unknown.run();
        EXPECT_EQ(unknown.sample().mm_mean, plain.sample().mm_mean) << method;
        EXPECT_EQ(unknown.sample().max_diff, plain.sample().max_diff) << method;
    }
}

// Two haplotypes of 20 sites with 12 transitions between them: 1 - 2 0.6 is below 0, so that the distance of
// Kimura is not a number. The 5 pairs with the single copy have none.
TEST_F(MismatchStep, PairsWithoutADistanceAreSaid) {
    Step<mnd::PopulDNA> step(mnd::DNA,
                             "a 3 ACGTACGTACGTACGTACGT\nb 2 ACGTACGAACGTACGTACGT\n"
                             "c 1 GTACGTACGTACACGTACGT\n");
    step.a.s.MismatchDistanceMethod = 2;
    const std::string text = step.run();
    EXPECT_EQ(step.sample().pairs_without_distance, 5);
    EXPECT_TRUE(contains(text,
                         "\n\nPairs that are too divergent for the correction of distances, and left out: 5\n"
                         "\nTheta_0 "));
    step.a.s.MismatchDistanceMethod = 0;
    const std::size_t before = text.size();
    EXPECT_FALSE(contains(step.run().substr(before), "left out"));
    EXPECT_EQ(step.sample().pairs_without_distance, 0);
}

// The sites that one analysis simulates are not those of another: each gives what it gives alone.
TEST_F(MismatchStep, AndTestsOfNeutralityKeepTheirSimulationsApart) {
    const auto of_tasks = [](long first, long second) {
        Step<mnd::PopulDNA> step;
        step.a.s.MismatchDemogExp = true;
        step.a.s.NumIterationsNeutralityTests = 200;
        if (first != 0) step.run(first);
        const std::size_t before = step.a.document.text().size();
        seed();
        const std::string text = step.run(second).substr(before);
        return text.substr(text.find("== ", text.find("== Sample") + 5));
    };
    mnd_test::CapturedReports reports;
    const std::string tajima = of_tasks(0, mnd::kTaskTajima | mnd::kTaskFuFs);
    const std::string mismatch = of_tasks(0, mnd::kTaskMismatch);
    EXPECT_EQ(of_tasks(mnd::kTaskMismatch, mnd::kTaskTajima | mnd::kTaskFuFs), tajima);
    EXPECT_EQ(of_tasks(mnd::kTaskTajima | mnd::kTaskFuFs, mnd::kTaskMismatch), mismatch);
    EXPECT_TRUE(reports.all().empty());
    EXPECT_TRUE(contains(mismatch, "Based on "));
}

}  // namespace
