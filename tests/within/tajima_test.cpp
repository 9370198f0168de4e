#include "within/tajima.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "model/popul_dna.h"
#include "model/popul_rflp.h"
#include "run/tasks.h"
#include "simulation/coalescent_tree.h"
#include "support/batch_summary.h"
#include "support/captured_reports.h"
#include "support/stop_at_progress.h"
#include "within/neutral_samples.h"
#include "within/neutrality_tables.h"
#include "within/sequence_neutrality.h"

namespace {

using mnd::fast_tajima_D;
using mnd::kTaskTajima;
using mnd::PopulDNA;
using mnd::PopulRFLP;
using mnd::tajima_constants;
using mnd::tajima_D;
using mnd::TajimaD;
using mnd_test::contains;

double D_of(int n, double pi, double S) {
    const TajimaD result = tajima_D(tajima_constants(n), pi, S);
    EXPECT_TRUE(result.defined);
    return result.D;
}

// --- D

// n = 5: a1 = 1 + 1/2 + 1/3 + 1/4 = 25/12, a2 = 1 + 1/4 + 1/9 + 1/16 = 205/144.
//   c1 = 6/12 - 12/25 = 0.02, e1 = 0.02 (12/25) = 0.0096
//   c2 = 66/180 - 7/(125/12) + (205/144)(144/625) = 0.366667 - 0.672 + 0.328 = 0.022667
//   e2 = c2/(625/144 + 205/144) = 0.022667 (144/830) = 0.0039325301
// With S = 4, pi = 2: d = 2 - 4 (12/25) = 0.08, v = 4 e1 + 12 e2 = 0.0855903614, D = 0.08/0.2925583 =
// 0.2734497664
TEST(TajimaD, FiveCopiesByHand) {
    const mnd::TajimaConstants c = tajima_constants(5);
    EXPECT_NEAR(c.a1, 25.0 / 12.0, 1e-14);
    EXPECT_NEAR(c.e1, 0.0096, 1e-14);
    EXPECT_NEAR(c.e2, (66.0 / 180.0 - 0.672 + 0.328) * 144.0 / 830.0, 1e-14);
    EXPECT_NEAR(D_of(5, 2.0, 4.0), 0.27344976645587904, 1e-12);
}

// Mitochondrial DNA of 7 humans (Aquadro and Greenberg 1983), the example of Tajima 1989: 45
// segregating sites, 15.38 differences, D = -0.94. The last digits are from exact fractions.
TEST(TajimaD, ThatOfHumanMitochondria) {
    EXPECT_NEAR(D_of(7, 15.38, 45.0), -0.94, 0.005);
    EXPECT_NEAR(D_of(7, 15.38, 45.0), -0.9382160223310986, 1e-12);
}

// The same formula in exact fractions, rounded at the end.
TEST(TajimaD, ThatOfExactFractions) {
    EXPECT_NEAR(D_of(10, 35.0 / 9.0, 16.0), -1.446172076557919, 1e-12);
    EXPECT_NEAR(D_of(4, 5.0 / 3.0, 3.0), 0.16765579503394926, 1e-12);
}

TEST(TajimaD, WithoutSegregatingSitesIsNotDefined) {
    for (const double S : {0.0, -1.0}) {
        const TajimaD result = tajima_D(tajima_constants(10), 1.0, S);
        EXPECT_FALSE(result.defined);
        EXPECT_EQ(result.D, 0.0);
        EXPECT_EQ(fast_tajima_D(tajima_constants(10), 1.0, S), 0.0);
    }
}

// Two and three copies have one shape of the tree: pi is S or 2 S/3, and nothing is left to vary.
TEST(TajimaD, OfFewerThanFourCopiesIsNotDefined) {
    for (const int n : {0, 1, 2, 3}) {
        for (const double S : {1.0, 2.0, 7.0}) {
            EXPECT_FALSE(tajima_D(tajima_constants(n), 2.0 * S, S).defined) << n;
            EXPECT_EQ(fast_tajima_D(tajima_constants(n), 2.0 * S, S), 0.0) << n;
        }
    }
}

// n = 4: S/a1 = 11 (6/11) = 6. A difference of one unit of the last place is no difference.
TEST(TajimaD, ALastDigitOfTheNumeratorIsZero) {
    const double theta = 11.0 / tajima_constants(4).a1;
    const double pi = theta + 4e-16;
    EXPECT_EQ(D_of(4, theta, 11.0), 0.0);
    EXPECT_EQ(D_of(4, pi, 11.0), 0.0);
    EXPECT_GT(D_of(4, theta + 4e-15, 11.0), 0.0);
    // Replicates have no such check.
    const double small = 1.0 / tajima_constants(4).a1;
    EXPECT_EQ(D_of(4, std::nextafter(small, 1.0), 1.0), 0.0);
    EXPECT_GT(fast_tajima_D(tajima_constants(4), std::nextafter(small, 1.0), 1.0), 0.0);
}

// Below four copies both parts of the variance are 0; the second one alone is enough.
TEST(TajimaD, WithoutASquareTermOfTheVarianceIsNotDefined) {
    for (const double e2 : {0.0, -0.01}) {
        const mnd::TajimaConstants constants{2.0, 0.5, e2};
        EXPECT_FALSE(tajima_D(constants, 3.0, 4.0).defined);
        EXPECT_EQ(tajima_D(constants, 3.0, 4.0).D, 0.0);
        EXPECT_NEAR(fast_tajima_D(constants, 3.0, 4.0), 1.0 / std::sqrt(2.0 + 12.0 * e2), 1e-15);
    }
}

TEST(TajimaD, OfReplicatesIsTheSame) {
    for (int n = 4; n < 60; n += 7) {
        for (double S = 1.0; S < 40.0; S += 3.0) {
            const double pi = 0.4 * S;
            EXPECT_EQ(fast_tajima_D(tajima_constants(n), pi, S), D_of(n, pi, S));
        }
    }
}

TEST(TajimaD, IsStoredInTheSample) {
    PopulDNA sample;
    sample.tajima_p = 0.25;
    const mnd::TajimaResult* const result = sample.tajimaD(5, 2.0, 4.0);
    EXPECT_EQ(result, static_cast<const mnd::TajimaResult*>(&sample));
    EXPECT_NEAR(result->tajima_D, 0.27344976645587904, 1e-12);
    EXPECT_EQ(result->tajima_p, 0.25);
    EXPECT_EQ(sample.fast_tajimaD(5, 2.0, 4.0)->tajima_D, sample.tajima_D);
    sample.tajimaD(5, 2.0, 0.0);
    EXPECT_EQ(sample.tajima_D, 0.0);
    EXPECT_EQ(sample.tajima_p, -1.0);
    sample.tajima_p = 0.25;
    sample.fast_tajimaD(5, 2.0, 0.0);
    EXPECT_EQ(sample.tajima_D, 0.0);
    EXPECT_EQ(sample.tajima_p, -1.0);
}

// A beta distribution of shapes 2 and 3 on [-1, 3], with (high - x) to the power alpha - 1:
// B(2, 3) = 1/12, so at 1 it is 12 (2/4) (2/4)^2 / 4 = 0.375.
TEST(TajimaD, DensityIsABetaDistribution) {
    EXPECT_NEAR(mnd::Tajima_D_density(2.0, 3.0, 1.0, 3.0, -1.0), 0.375, 1e-8);
    double sum = 0.0;
    for (int i = 0; i < 4000; ++i)
        sum += 0.001 * mnd::Tajima_D_density(1.7, 2.6, -1.0 + 0.001 * (i + 0.5), 3.0, -1.0);
    EXPECT_NEAR(sum, 1.0, 1e-4);
    for (const double x : {-1.5, -1.0, 3.0, 4.0})
        EXPECT_EQ(mnd::Tajima_D_density(2.0, 3.0, x, 3.0, -1.0), 0.0);
    EXPECT_EQ(mnd::Tajima_D_density(0.0, 3.0, 1.0, 3.0, -1.0), 0.0);
    EXPECT_EQ(mnd::Tajima_D_density(2.0, -1.0, 1.0, 3.0, -1.0), 0.0);
}

// --- Sums over replicates

TEST(RunningSums, GiveMeanAndDeviation) {
    mnd::RunningSums sums;
    EXPECT_EQ(sums.mean(), 0.0);
    EXPECT_EQ(sums.sd(), 0.0);
    sums.add(2.0);
    EXPECT_EQ(sums.mean(), 2.0);
    EXPECT_EQ(sums.sd(), 0.0);
    sums.add(3.0);
    sums.add(7.0);
    EXPECT_EQ(sums.count(), 3);
    EXPECT_NEAR(sums.mean(), 4.0, 1e-15);
    EXPECT_NEAR(sums.sd(), std::sqrt(14.0 / 2.0), 1e-15);  // 4 + 1 + 9 over 2
}

// --- The test of a sample

constexpr auto test_of_tajima = [](auto& sample, mnd::settings& s, std::ostream& out) {
    tajima_test(sample, s, out);
};

class Tajima : public mnd_test::SequenceNeutrality {
protected:
    // 5 copies; sites 2 to 5 have substitutions (pi 2), site 6 an indel.
    PopulDNA& five() {
        PopulDNA& sample = a.add("Lake",
                                 "h1 1 AACCGGAA\n"
                                 "h2 1 AACCGGAA\n"
                                 "h3 1 ATTCGGAA\n"
                                 "h4 1 ATTTAGAA\n"
                                 "h5 1 AACTA-AA\n");
        a.prepare();
        return sample;
    }
};

// Sites 2 and 3 divide 2 : 3, so 6 pairs each; sites 4 and 5 divide 2 : 3 too. pi = 24/10 = 2.4, S = 4,
// theta(S) = 4 (12/25) = 1.92, D = 0.48/0.2925583 = 1.6406986 (see FiveCopiesByHand). The indel of h5
// is no difference.
TEST_F(Tajima, WritesItsObservedValues) {
    a.s.NumSimulFuTest = 0;
    PopulDNA& sample = five();
    const std::string document = a.analyse(kTaskTajima);
    EXPECT_TRUE(
        contains(document,
                 "Sample size                           : 5\n"
                 "No. of sites with substitutions (S)   : 4\n"
                 "Mean No. of pairwise differences (Pi) : 2.40000\n"
                 "\nDistance method                       : Pairwise difference (no Gamma correction, "
                 "indels not taken into account)\n"
                 "\nTajima's D                            : 1.64070\n"
                 "\nNo. of simulations                    : 0"
                 "\nObs. Theta(S)                         : 1.92000"
                 "\nMean Theta(S)                         : N.A."
                 "\nS.D. Theta(S)                         : N.A."
                 "\nP(sim. D &lt;= obs. D)                   : N.A."
                 "\nP(sim. D &lt;= 0)                        : N.A.\n"))
        << document;
    EXPECT_TRUE(contains(document, "<i>Tajima, F. (1989)"));
    EXPECT_EQ(sample.tajima_p, -1.0);
    EXPECT_EQ(sample.tajima_S, 4);
    EXPECT_NEAR(sample.tajima_pi, 2.4, 1e-14);
    EXPECT_NEAR(sample.tajima_D, 0.48 / std::sqrt(4 * 0.0096 + 12 * 0.003932530120481927), 1e-12);
}

// The test's own distances must not be taken for those of other tasks.
TEST_F(Tajima, LeavesDistancesAndDiversityAsTheyWere) {
    a.s.NumSimulFuTest = 10;
    a.s.DistanceMethod = 2;
    a.s.GammaAValue = 0.5;
    PopulDNA& sample = five();
    a.analyse(mnd::kTaskMolecularDiversity);
    ASSERT_NE(sample.dist_mat, nullptr);
    const mnd::RectMat* const matrix = sample.dist_mat.get();
    const double pi = sample.mean_pairwise_diff;
    const double theta_pi = sample.theta_pi;
    const double sd_pi = sample.sd_pairwise_diff;
    const double diversity = sample.nucl_diversity;
    const double sd = sample.sd_nucl_diversity;
    const int max_dist = sample.max_dist;
    EXPECT_NE(max_dist, 4);  // differences of h1 and h4
    EXPECT_GT(pi, 2.4);      // the indel counts
    const mnd::settings& s = a.s;
    std::ostringstream out;
    tajima_test(sample, a.s, out);
    EXPECT_EQ(sample.dist_mat.get(), matrix);
    EXPECT_EQ(sample.mean_pairwise_diff, pi);
    EXPECT_EQ(sample.sd_pairwise_diff, sd_pi);
    EXPECT_EQ(sample.theta_pi, theta_pi);
    EXPECT_EQ(sample.nucl_diversity, diversity);
    EXPECT_EQ(sample.sd_nucl_diversity, sd);
    EXPECT_EQ(sample.max_dist, max_dist);
    EXPECT_EQ(sample.distance_method, 2);
    EXPECT_EQ(sample.gamma_a, 0.5);
    EXPECT_EQ(sample.del_weight, s.DeletionWeight);
    EXPECT_EQ(sample.nb_del_sites, 1);
    EXPECT_NEAR(sample.tajima_pi, 2.4, 1e-14);
}

TEST_F(Tajima, WithoutSubstitutionsIsNotTested) {
    PopulDNA& sample = a.add("Lake", "h1 3 AACC\nh2 2 AA-C\n");
    a.prepare();
    sample.tajima_p = 0.5;
    mnd::reset_draws_taken();
    const std::string document = a.analyse(kTaskTajima);
    EXPECT_TRUE(contains(document,
                         "No. of sites with substitutions (S)   : 0\n"
                         "Mean No. of pairwise differences (Pi) : 0.00000\n"));
    EXPECT_TRUE(contains(document,
                         "\nTajima's D                            : 0.00000\n"
                         "D is given as 0 and not tested: it needs sites with substitutions and four gene "
                         "copies\n"));
    EXPECT_FALSE(contains(document, "No. of simulations"));
    EXPECT_EQ(sample.tajima_D, 0.0);
    EXPECT_EQ(sample.tajima_p, -1.0);
    EXPECT_EQ(mnd::draws_taken(), 0U);
}

TEST_F(Tajima, SaysWhenWeightsBendTheStatistic) {
    a.s.NumSimulFuTest = 0;
    a.s.TransitionWeight = 2.0;
    five();
    EXPECT_TRUE(
        contains(a.analyse(kTaskTajima),
                 "Substitutions count in Pi by their weights, which are not all 1: D is not the standard "
                 "one,\nand simulated samples are without weights: take its P-value with care\n"));
}

// The planned replicates are part of the estimate of the work, so they count when they are not needed.
TEST_F(Tajima, ReplicatesThatAreNotNeededAreWorkDone) {
    a.s.NumSimulFuTest = 170;
    PopulDNA& sample = compared(a, "h1 3 AACC\nh2 2 AA-C\n");
    mnd::settings::global_work_done = 7.0;
    std::ostringstream out;
    tajima_test(sample, a.s, out);
    EXPECT_EQ(mnd::settings::global_work_done, 10.0);
    a.s.NumSimulFuTest = -170;
    tajima_test(sample, a.s, out);
    EXPECT_EQ(mnd::settings::global_work_done, 10.0);
}

// S is known without distances, pi is not.
TEST_F(Tajima, WithoutDistancesHasNoPValueButARow) {
    mnd_test::BatchSummary summary(&mnd::ofs_tajima);
    const PopulRFLP& sample = expect_no_distances(test_of_tajima);
    EXPECT_EQ(summary.rows(), "\"Lake\"\t5\t0\tN.A.\t0.00000\t0.00000\tN.A.\tN.A.\tN.A.\t0\n");
    EXPECT_EQ(sample.tajima_D, 0.0);
    EXPECT_EQ(sample.tajima_p, -1.0);
}

// --- P-values

// Of whole samples of this many sites, by theta(S) of the sample.
struct PlainPValues {
    double P = 0.0;
    double P_not_positive = 0.0;
    mnd::RunningSums theta;
    mnd::RunningSums D;
    std::uint64_t draws = 0;
};

class TajimaReplicates : public Tajima {
protected:
    template <class Sample>
    static PlainPValues plain_p_values(Sample& sample, mnd::settings& s, int sites) {
        PlainPValues plain;
        const int n = static_cast<int>(sample.sample_size);
        int below = 0;
        int not_positive = 0;
        seed();
        mnd::reset_draws_taken();
        whole_samples(sample, s, sample.theta_S, sites, s.NumSimulFuTest, [&](Sample& replicate) {
            replicate.calc_theta_S(n, replicate.nb_subst_sites);
            replicate.fast_tajimaD(n, replicate.mean_pairwise_diff, replicate.nb_subst_sites);
            plain.theta.add(replicate.theta_S);
            plain.D.add(replicate.tajima_D);
            if (replicate.tajima_D <= sample.tajima_D) ++below;
            if (replicate.tajima_D <= 0.0) ++not_positive;
        });
        plain.draws = mnd::draws_taken();
        plain.P = static_cast<double>(below) / s.NumSimulFuTest;
        plain.P_not_positive = static_cast<double>(not_positive) / s.NumSimulFuTest;
        return plain;
    }

    // Returns: what the test writes
    template <class Sample>
    static std::string expect_p_values_of_whole_samples(Sample& sample, mnd::settings& s, int sites) {
        const Run tested = run(test_of_tajima, sample, s, 520);
        EXPECT_EQ(tested.work_done, 10.0);
        const PlainPValues plain = plain_p_values(sample, s, sites);
        EXPECT_EQ(plain.draws, tested.draws);
        EXPECT_EQ(sample.tajima_p, plain.P);
        char lines[300];
        std::snprintf(lines, sizeof lines,
                      "\nMean Theta(S)                         : %.5f"
                      "\nS.D. Theta(S)                         : %.5f"
                      "\nP(sim. D &lt;= obs. D)                   : %.5f"
                      "\nP(sim. D &lt;= 0)                        : %.5f\n",
                      plain.theta.mean(), plain.theta.sd(), plain.P, plain.P_not_positive);
        EXPECT_TRUE(contains(tested.text, lines)) << tested.text << lines;
        return tested.text;
    }
};

TEST_F(TajimaReplicates, AreWholeSamples) {
    PopulDNA& sample = five();
    sample.evaluate_polymorphism(a.s);
    expect_p_values_of_whole_samples(sample, a.s, 8);
}

TEST_F(TajimaReplicates, OfRestrictionSitesAreWholeSamples) {
    expect_p_values_of_whole_samples(nine(), rflp.s, 10);
}

TEST_F(TajimaReplicates, HaveTheirMeanInTheRow) {
    mnd_test::BatchSummary summary(&mnd::ofs_tajima);
    PopulDNA& sample = five();
    sample.evaluate_polymorphism(a.s);
    run(test_of_tajima, sample, a.s, 30);
    const PlainPValues plain = plain_p_values(sample, a.s, 8);
    char end[100];
    std::snprintf(end, sizeof end, "\t%.5f\t%.5f\t%.5f\t30\n", plain.P, plain.D.mean(), plain.P_not_positive);
    EXPECT_TRUE(contains(summary.rows(), end)) << summary.rows() << end;
}

// theta is that of a sequence: sites that the sample can't use do not make its sequences shorter.
TEST_F(TajimaReplicates, HaveTheSitesThatTheSampleCannotUse) {
    PopulDNA& sample = gappy();
    ASSERT_EQ(sample.nb_usable_loci, kUsableSites);
    const std::string text = expect_p_values_of_whole_samples(sample, a.s, kSites);
    // Of 28 pairs sites 0 and 7 divide 7, sites 2 and 15 divide 12, and site 11, without the copy that
    // has a gap there, 6.
    EXPECT_TRUE(contains(text,
                         "No. of sites with substitutions (S)   : 5\n"
                         "Mean No. of pairwise differences (Pi) : 1.57143\n"));
    const PlainPValues shorter = plain_p_values(sample, a.s, kUsableSites);
    EXPECT_NE(shorter.P, sample.tajima_p);
}

// A gap in some haplotypes is no difference, and does not make them shorter either.
TEST_F(TajimaReplicates, OfRestrictionSitesHaveThoseWithGaps) {
    PopulRFLP& sample = compared(rflp,
                                 "h1 3 00-0-110\n"
                                 "h2 2 01-0-110\n"
                                 "h3 2 11-00110\n");
    ASSERT_EQ(sample.nb_usable_loci, 7);
    ASSERT_EQ(sample.nb_del_sites, 1);
    // Of 21 pairs site 0 divides 10, and site 1 divides 12.
    EXPECT_TRUE(contains(expect_p_values_of_whole_samples(sample, rflp.s, 8),
                         "No. of segregating sites (S)          : 2\n"
                         "Mean No. of pairwise differences (Pi) : 1.04762\n"));
}

// In the sample the transversion of site 2 counts 0.5, and the transitions of sites 3, 4 and 5 count 2,
// in 6 of 10 pairs each: pi = 6 (0.5 + 6)/10. In its replicates all count once.
TEST_F(TajimaReplicates, HaveNoWeights) {
    PopulDNA& sample = five();
    sample.ts_weight = a.s.TransitionWeight = 2.0;
    sample.tv_weight = a.s.TranversionWeight = 0.5;
    sample.evaluate_polymorphism(a.s);
    const std::string text = expect_p_values_of_whole_samples(sample, a.s, 8);
    EXPECT_TRUE(contains(text,
                         "No. of sites with substitutions (S)   : 4\n"
                         "Mean No. of pairwise differences (Pi) : 3.90000\n"));
}

// A mismatch distribution simulates sequences of 400 sites with unequal rates: none of that is left for the
// test, nor the other way round.
TEST_F(TajimaReplicates, AreThoseOfARunWithoutAMismatchDistribution) {
    a.s.MismatchDemogExp = true;
    a.s.NumBootExpDem = 3;
    PopulDNA& sample = gappy();
    const std::string alone = run(test_of_tajima, sample, a.s, 100).text;
    const auto mismatch = [this] {
        const std::size_t before = a.document.text().size();
        seed();
        return a.analyse(mnd::kTaskMismatch).substr(before);
    };
    const mnd_test::CapturedReports reports;
    const std::string fitted = mismatch();
    ASSERT_EQ(mnd::TNode::hits.size(), 400U);
    EXPECT_EQ(run(test_of_tajima, sample, a.s, 100).text, alone);
    EXPECT_EQ(mnd::TNode::hits.size(), static_cast<std::size_t>(kSites));
    EXPECT_EQ(mismatch(), fitted);
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(Tajima, OfRestrictionSitesHasItsOwnLabel) {
    rflp.s.NumSimulFuTest = 0;
    rflp.add("Lake", "h1 3 00110\nh2 2 01100\n");
    rflp.prepare();
    // Two sites divide 3 : 2, 6 pairs of 10 each.
    EXPECT_TRUE(contains(rflp.analyse(kTaskTajima),
                         "Sample size                           : 5\n"
                         "No. of segregating sites (S)          : 2\n"
                         "Mean No. of pairwise differences (Pi) : 1.20000\n"));
}

TEST_F(Tajima, AStoppedRunHasNoPValue) {
    a.s.NumSimulFuTest = 100;
    PopulDNA& sample = five();
    sample.evaluate_polymorphism(a.s);
    a.s.stop_computations = 1;
    std::ostringstream out;
    tajima_test(sample, a.s, out);
    EXPECT_EQ(sample.tajima_p, -1.0);
    EXPECT_EQ(sample.tajima_D, 0.0);
    EXPECT_EQ(out.str(), "");
}

// The first message comes after 50 of 1000 simulated samples.
TEST_F(Tajima, EndsWhenTheRunIsStopped) {
    mnd_test::BatchSummary summary(&mnd::ofs_tajima);
    PopulDNA& sample = five();
    sample.evaluate_polymorphism(a.s);
    a.s.NumSimulFuTest = 1000;
    sample.tajima_p = 0.5;
    std::ostringstream out;
    const mnd_test::StopAtProgress stop(a.s, 20.0);
    tajima_test(sample, a.s, out);
    EXPECT_EQ(mnd::settings::global_work_done, 1.0);
    EXPECT_EQ(sample.tajima_p, -1.0);
    EXPECT_TRUE(contains(out.str(), "Tajima's D  "));
    EXPECT_FALSE(contains(out.str(), "No. of simulations"));
    EXPECT_EQ(summary.rows(), "");
}

TEST_F(Tajima, SimulationsEndWhenTheRunIsStopped) {
    PopulDNA& sample = five();
    sample.evaluate_polymorphism(a.s);
    mnd::NeutralSamples samples(sample, 2.0);
    int taken = 0;
    mnd::settings::global_work_done = 0.0;
    EXPECT_FALSE(samples.simulate(200, a.s, [&](const mnd::NeutralSamples&) {
        if (++taken == 57) a.s.stop_computations = 1;
    }));
    EXPECT_EQ(taken, 57);
    EXPECT_EQ(mnd::settings::global_work_done, 1.0);
    a.s.stop_computations = 0;
    EXPECT_TRUE(samples.simulate(0, a.s, [&](const mnd::NeutralSamples&) { ++taken; }));
    EXPECT_EQ(taken, 57);
}

TEST_F(Tajima, NeedsSequences) {
    expect_sequences_are_needed(kTaskTajima, "Tajima's test");
}

TEST_F(Tajima, WritesARowOfTheBatchSummary) {
    mnd_test::BatchSummary summary(&mnd::ofs_tajima);
    PopulDNA& sample = five();
    a.add("Pond", "p1 3 AACC\n");
    a.prepare();
    a.s.NumSimulFuTest = 0;
    sample.tajima_D = sample.tajima_p = 0.5;  // of a run before
    a.analyse(kTaskTajima);
    EXPECT_EQ(sample.tajima_p, -1.0);
    mnd::TajimaReport report;
    report.n = 5;
    report.S = 4;
    report.pi = 2.4;
    report.theta_S = 1.92;
    report.D = 1.5;
    report.P = 0.25;
    report.num_sim = 1000;
    report.mean_D = -0.125;
    report.P_not_positive = 0.5;
    write_tajima_row(sample, report);
    EXPECT_EQ(summary.rows(),
              "\"Lake\"\t5\t4\t2.40000\t1.92000\t1.64070\tN.A.\tN.A.\tN.A.\t0\n"
              "\"Pond\"\t3\t0\t0.00000\t0.00000\t0.00000\tN.A.\tN.A.\tN.A.\t0\n"
              "\"Lake\"\t5\t4\t2.40000\t1.92000\t1.50000\t0.25000\t-0.12500\t0.50000\t1000\n");
}

TEST_F(Tajima, AStoppedRunHasNoRow) {
    mnd_test::BatchSummary summary(&mnd::ofs_tajima);
    PopulDNA& sample = five();
    sample.evaluate_polymorphism(a.s);
    a.s.NumSimulFuTest = 100;
    a.s.stop_computations = 1;
    std::ostringstream out;
    tajima_test(sample, a.s, out);
    EXPECT_EQ(summary.rows(), "");
}

}  // namespace
