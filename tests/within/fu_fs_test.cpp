#include "within/fu_fs.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/message_codes.h"
#include "model/popul_dna.h"
#include "model/popul_microsat.h"
#include "model/popul_rflp.h"
#include "model/popul_standard.h"
#include "run/tasks.h"
#include "support/captured_reports.h"
#include "support/seeded_stream.h"
#include "within/analysed_sample.h"
#include "within/neutral_samples.h"
#include "within/neutrality_tables.h"

namespace {

using mnd::kNumericalInfinity;
using mnd::kTaskFuFs;
using mnd::PopulDNA;
using mnd::PopulRFLP;
using mnd_test::AnalysedSamples;
using mnd_test::CapturedReports;
using mnd_test::contains;
using mnd_test::haplotypic;
using mnd_test::Report;

constexpr double kUntouched = 123.0;

Report fu_warning(int code) {
    return {mnd::Warning, "PopGenetics::Fu_Fs()", code};
}

// --- Fs

// S' = P(K >= k) from exact fractions |s(n, k)| theta^k / (theta (theta + 1) ... (theta + n - 1)).
// The logarithm of gamma leaves an error of some 1e-9 in P(K < k), which shows in small S'.
TEST(FuFs, IsThatOfExactFractions) {
    struct Case {
        int n;
        int k;
        double theta;
        double Fs;
        double tolerance;
    };
    for (const Case& c :
         {Case{10, 4, 2.5, 1.1032007946626174, 1e-7}, Case{25, 10, 3.5, -1.3866233298796007, 1e-7},
          Case{25, 3, 3.5, 6.324562924551993, 1e-6}, Case{50, 20, 9.75, -0.7531328045674222, 1e-7},
          Case{60, 31, 5.0, -17.33377541941728, 0.1}, Case{100, 50, 12.2, -15.811403350628375, 0.05}}) {
        PopulDNA sample;
        sample.sample_size = c.n;
        double Fs = kUntouched;
        EXPECT_EQ(sample.Fu_Fs(c.theta, c.k, Fs, true), 1);
        EXPECT_NEAR(Fs, c.Fs, c.tolerance) << c.n << ' ' << c.k;
    }
}

// n = 3, theta = 1: P(K = 1, 2, 3) = 2/6, 3/6, 1/6. k = 2: S' = 4/6, Fs = ln 2; k = 3: S' = 1/6, -ln 5.
TEST(FuFs, ThreeCopiesByHand) {
    PopulDNA sample;
    sample.sample_size = 3;
    double Fs = kUntouched;
    EXPECT_EQ(sample.Fu_Fs(1.0, 2, Fs, true), 1);
    EXPECT_NEAR(Fs, std::log(2.0), 1e-8);
    EXPECT_EQ(sample.Fu_Fs(1.0, 3, Fs, true), 1);
    EXPECT_NEAR(Fs, -std::log(5.0), 1e-8);
}

TEST(FuFs, WithoutDiversityIsInfinite) {
    PopulDNA sample;
    sample.sample_size = 10;
    for (const double theta : {0.0, -1.0}) {
        const CapturedReports reports;
        double Fs = kUntouched;
        EXPECT_EQ(sample.Fu_Fs(theta, 3, Fs, false), 0);
        EXPECT_EQ(Fs, kNumericalInfinity);
        EXPECT_TRUE(reports.all().empty());
        EXPECT_EQ(sample.Fu_Fs(theta, 3, Fs, true), 0);
        EXPECT_EQ(reports.all(), std::vector<Report>{fu_warning(mnd::kNoDiversityInFuTest)});
    }
}

// A single allele: no number of alleles is below it, S' = 1.
TEST(FuFs, IsInfiniteWhenNoFewerAllelesArePossible) {
    PopulDNA sample;
    sample.sample_size = 10;
    const CapturedReports reports;
    double Fs = kUntouched;
    EXPECT_EQ(sample.Fu_Fs(2.0, 1, Fs, false), 0);
    EXPECT_EQ(Fs, kNumericalInfinity);
    EXPECT_TRUE(reports.all().empty());
    EXPECT_EQ(sample.Fu_Fs(2.0, 1, Fs, true), 0);
    EXPECT_EQ(reports.all(), std::vector<Report>{fu_warning(mnd::kNoDiversityInFuTest)});
    // Above the limit of theta all probabilities are 0, and so is P(K < k).
    EXPECT_EQ(sample.Fu_Fs(10001.0, 5, Fs, false), 0);
    EXPECT_EQ(Fs, kNumericalInfinity);
}

TEST(FuFs, HasTheLimitsOfTheTable) {
    PopulDNA sample;
    for (const auto& [n, k] : {std::pair{5000, 3}, {4000, 1000}}) {
        sample.sample_size = n;
        const CapturedReports reports;
        double Fs = kUntouched;
        EXPECT_EQ(sample.Fu_Fs(2.0, k, Fs, false), 0);
        EXPECT_EQ(Fs, kUntouched);
        EXPECT_TRUE(reports.all().empty());
        EXPECT_EQ(sample.Fu_Fs(2.0, k, Fs, true), 0);
        EXPECT_EQ(Fs, kUntouched);
        EXPECT_EQ(reports.all(), std::vector<Report>{fu_warning(mnd::kTooManyAllelesOrTooLargeSample)});
    }
    sample.sample_size = 4999;
    double Fs = kUntouched;
    EXPECT_EQ(sample.Fu_Fs(2.0, 5, Fs, true), 1);
    EXPECT_NE(Fs, kUntouched);
    sample.clean_bnum();
}

// Far more alleles than expected: P(K < k) comes out as 1 or above it, within its rounding. Each way
// of it has its own end, and all are told apart.
TEST(FuFs, TellsASmallSumFromANegativeOne) {
    int negative = 0;
    int finite = 0;
    PopulDNA sample;
    sample.sample_size = 60;
    for (int i = 0; i < 200; ++i) {
        const CapturedReports reports;
        double Fs = kUntouched;
        const int result = sample.Fu_Fs(0.02 * (i + 1), 30, Fs, true);
        if (result == 1) {
            ++finite;
            EXPECT_LT(Fs, -15.0) << i;
            EXPECT_TRUE(reports.all().empty());
        } else if (Fs == kUntouched) {
            ++negative;
            EXPECT_EQ(reports.all(), std::vector<Report>{fu_warning(mnd::kNegativeSInFs)});
        } else {
            EXPECT_EQ(Fs, -kNumericalInfinity);
            EXPECT_TRUE(reports.all().empty());
        }
    }
    EXPECT_GT(negative, 0);
    EXPECT_GT(finite, 0);
}

// --- The test of a sample

class Fu : public mnd_test::SeededStream {
protected:
    AnalysedSamples<PopulDNA> a{haplotypic(mnd::DNA, 0)};

    // 6 copies of 4 alleles, which differ at three sites with substitutions and one with an indel:
    // 5 : 1 (5 pairs), 4 : 2 (8), 5 : 1 (5); pi = 18/15 = 1.2.
    PopulDNA& six() {
        PopulDNA& sample = a.add("Lake",
                                 "h1 3 AACCGGAA\n"
                                 "h2 1 AATCGGAA\n"
                                 "h3 1 AACTGGAA\n"
                                 "h4 1 AACTA-AA\n");
        a.prepare();
        return sample;
    }
};

// theta = 1.2, n = 6, |s(6, k)| = 120, 274, 225, 85, 15, 1:
//   theta (theta + 1) ... (theta + 5) = 1.2 2.2 3.2 4.2 5.2 6.2 = 1143.926784
//   P(K < 4) = (120 1.2 + 274 1.44 + 225 1.728)/1143.926784 = 0.8106813, Fs = -1.4544429
//   E(K) = sum of 1.2/(1.2 + i), i = 0 .. 5, = 2.6304864
TEST_F(Fu, WritesItsObservedValues) {
    a.s.NumSimulFuTest = 0;
    PopulDNA& sample = six();
    const std::string document = a.analyse(kTaskFuFs);
    const double product = 1.2 * 2.2 * 3.2 * 4.2 * 5.2 * 6.2;
    const double fewer = (120 * 1.2 + 274 * 1.44 + 225 * 1.728) / product;
    EXPECT_NEAR(sample.fu_Fs, std::log((1.0 - fewer) / fewer), 1e-8);
    EXPECT_EQ(sample.fu_p, -1.0);
    EXPECT_NEAR(sample.fu_theta_pi, 1.2, 1e-15);
    EXPECT_TRUE(contains(document,
                         "== Fu's Fs test of selective neutrality : (Lake)\n"
                         "================================================\n\n"
                         "\nSample size                  : 6"
                         "\nObs. k                       : 4\n"
                         "Original No. of alleles(k)   : 4\n"
                         "Theta(Pi)                    : 1.20000\n"
                         "Exp. No. of alleles          : 2.63049\n"
                         "Fs                           : -1.45444\n"
                         "\nNo. of simulations           : 0"
                         "\nMean Theta(Pi)               : N.A."
                         "\nS.D. Theta(Pi)               : N.A."
                         "\nMean k                       : N.A."
                         "\nS.D. k                       : N.A."
                         "\nP(sim. Fs &lt;= obs. Fs)        : N.A.\n"))
        << document;
    EXPECT_TRUE(contains(document, "<i>Fu, Y.-X. (1997)"));
}

TEST_F(Fu, SaysWhenFewDigitsAreKnown) {
    mnd::FuReport report;
    report.theta_pi = 1.0;
    report.defined = true;
    const auto text = [&report](double Fs) {
        report.Fs = Fs;
        std::ostringstream out;
        print_fu(out, report);
        return out.str();
    };
    const std::string caution =
        "So small an Fs rests on a probability of which few digits are known: take it as a bound\n";
    EXPECT_TRUE(contains(text(-18.5), "Fs                           : -18.50000\n" + caution));
    EXPECT_TRUE(contains(text(-kNumericalInfinity), "Fs                           : -infinity\n" + caution));
    EXPECT_FALSE(contains(text(-17.5), caution));
    report.defined = false;
    EXPECT_TRUE(contains(text(-18.5), "Fs                           : N.A.\n"));
    EXPECT_FALSE(contains(text(-18.5), caution));
}

TEST_F(Fu, TellsThatHaplotypesWereChecked) {
    a.s.NumSimulFuTest = 0;
    a.s.InferHaplotypeDefinitionFromDistanceMatrix = 1;
    six().nb_orig_hapl = 5;
    EXPECT_TRUE(contains(a.analyse(kTaskFuFs),
                         "\nObs. k                       : 4\n"
                         "Original No. of alleles      : 5\n"
                         "Actual No. of # alleles  (k) : 4\n"
                         "Theta(Pi)                    : 1.20000\n"));
}

TEST_F(Fu, LeavesDistancesAndDiversityAsTheyWere) {
    a.s.NumSimulFuTest = 10;
    PopulDNA& sample = six();
    a.analyse(mnd::kTaskMolecularDiversity);
    const mnd::RectMat* const matrix = sample.dist_mat.get();
    const double theta_pi = sample.theta_pi;
    EXPECT_GT(theta_pi, 1.2);  // the indel counts
    std::ostringstream out;
    fu_test(sample, a.s, out);
    EXPECT_EQ(sample.dist_mat.get(), matrix);
    EXPECT_EQ(sample.theta_pi, theta_pi);
    EXPECT_EQ(sample.mean_pairwise_diff, theta_pi);
    EXPECT_EQ(sample.del_weight, a.s.DeletionWeight);
}

TEST_F(Fu, NeedsTwoAlleles) {
    PopulDNA& sample = a.add("Lake", "h1 3 AACC\n");
    a.prepare();
    sample.fu_Fs = 5.0;
    sample.fu_p = 0.5;
    mnd::reset_draws_taken();
    EXPECT_TRUE(
        contains(a.analyse(kTaskFuFs), "Fu's Fs test cannot be computed if only one allele in sample\n"));
    EXPECT_EQ(sample.fu_Fs, 0.0);
    EXPECT_EQ(sample.fu_p, -1.0);
    EXPECT_EQ(mnd::draws_taken(), 0U);
}

TEST_F(Fu, NeedsTwoGenes) {
    a.add("Lake", "h1 1 AACC\n");
    a.prepare();
    EXPECT_TRUE(
        contains(a.analyse(kTaskFuFs), "Fu's Fs test cannot be computed if only one gene in sample\n"));
}

// Alleles that differ by indels alone: there are two, but no differences.
TEST_F(Fu, WithoutDifferencesIsInfiniteAndNotTested) {
    PopulDNA& sample = a.add("Lake", "h1 3 AACC\nh2 2 AA-C\n");
    a.prepare();
    const CapturedReports reports;
    mnd::reset_draws_taken();
    const std::string document = a.analyse(kTaskFuFs);
    EXPECT_TRUE(contains(document,
                         "Theta(Pi)                    : 0.00000\n"
                         "Exp. No. of alleles          : 1.00000\n"
                         "Fs                           : +infinity\n"));
    EXPECT_FALSE(contains(document, "No. of simulations"));
    EXPECT_EQ(reports.all(), std::vector<Report>{fu_warning(mnd::kNoDiversityInFuTest)});
    EXPECT_EQ(sample.fu_Fs, kNumericalInfinity);
    EXPECT_EQ(sample.fu_p, -1.0);
    EXPECT_EQ(mnd::draws_taken(), 0U);
}

// --- P-values

// Each replicate as a whole sample: sequences made, read, compared, and the Fs of that sample.
template <class Sample>
void expect_p_value_of_whole_samples(Sample& sample, mnd::settings& s, mnd::Mut_Type type, int num_sim) {
    s.NumSimulFuTest = num_sim;
    long idum = -12345;
    mnd::ran3(&idum);
    std::ostringstream out;
    mnd::settings::global_work_done = 0.0;
    mnd::reset_draws_taken();
    fu_test(sample, s, out);
    const auto draws = mnd::draws_taken();
    EXPECT_EQ(mnd::settings::global_work_done, num_sim / 50);

    idum = -12345;
    mnd::ran3(&idum);
    mnd::reset_draws_taken();
    sample.allocate_tree(static_cast<int>(sample.sample_size));
    int below = 0;
    mnd::RunningSums theta;
    mnd::RunningSums k;
    const CapturedReports reports;
    for (int i = 0; i < num_sim; ++i) {
        sample.simulate_sample(sample.fu_theta_pi / 2.0, sample.nb_usable_loci, type, 0.0, 1.0, 1.0, 0.33);
        Sample replicate;
        mnd::Haplo_DB definitions;
        replicate.read_simulated_sample(sample.tree.make(), definitions, type);
        replicate.check_data();
        replicate.evaluate_polymorphism(s);
        replicate.compute_distance_matrix(nullptr, &s, 0);
        replicate.compute_molecular_diversity(s);
        replicate.calc_theta_pi(replicate.mean_pairwise_diff);
        double Fs = 0.0;
        replicate.Fu_Fs(replicate.theta_pi, replicate.nb_hapl, Fs, false);
        theta.add(replicate.theta_pi);
        k.add(replicate.nb_hapl);
        if (Fs <= sample.fu_Fs) ++below;
    }
    EXPECT_TRUE(reports.all().empty());
    EXPECT_EQ(mnd::draws_taken(), draws);
    EXPECT_EQ(sample.fu_p, static_cast<double>(below) / num_sim);
    EXPECT_GT(below, 0);
    char lines[300];
    std::snprintf(lines, sizeof lines,
                  "\nNo. of simulations           : %d"
                  "\nMean Theta(Pi)               : %.5f"
                  "\nS.D. Theta(Pi)               : %.5f"
                  "\nMean k                       : %.5f"
                  "\nS.D. k                       : %.5f"
                  "\nP(sim. Fs &lt;= obs. Fs)        : %.5f\n",
                  num_sim, theta.mean(), theta.sd(), k.mean(), k.sd(), sample.fu_p);
    EXPECT_TRUE(contains(out.str(), lines)) << out.str() << lines;
}

TEST_F(Fu, PValueIsThatOfWholeSamples) {
    PopulDNA& sample = six();
    sample.evaluate_polymorphism(a.s);
    expect_p_value_of_whole_samples(sample, a.s, mnd::kNucleotideMutation, 520);
}

TEST_F(Fu, PValueOfRestrictionSitesIsThatOfWholeSamples) {
    AnalysedSamples<PopulRFLP> rflp(haplotypic(mnd::RFLP, 0));
    PopulRFLP& sample = rflp.add("Lake",
                                 "h1 3 0000011010\n"
                                 "h2 2 0110011010\n"
                                 "h3 1 1111011010\n"
                                 "h4 1 0011111010\n"
                                 "h5 2 0110011011\n");
    rflp.prepare();
    sample.build_arbitrary_haplotype();
    sample.evaluate_polymorphism(rflp.s);
    expect_p_value_of_whole_samples(sample, rflp.s, mnd::kBinaryMutation, 520);
}

TEST_F(Fu, AStoppedRunHasNoPValue) {
    PopulDNA& sample = six();
    sample.evaluate_polymorphism(a.s);
    a.s.stop_computations = 1;
    std::ostringstream out;
    fu_test(sample, a.s, out);
    EXPECT_EQ(sample.fu_p, -1.0);
    EXPECT_EQ(out.str(), "");
}

template <class Sample>
void expect_no_sequence_model(int data_type, const std::string& lines) {
    AnalysedSamples<Sample> a(haplotypic(data_type, ' '));
    a.add("Lake", lines);
    a.prepare();
    mnd::reset_draws_taken();
    EXPECT_TRUE(contains(a.analyse(kTaskFuFs),
                         "== Fu's Fs test of selective neutrality : (Lake)\n"
                         "================================================\n\n"
                         "Fu's Fs test cannot be computed \n"
                         "without DNA sequences or RFLP haplotypes\n\n"));
    EXPECT_EQ(mnd::draws_taken(), 0U);
}

TEST_F(Fu, NeedsSequences) {
    expect_no_sequence_model<mnd::PopulStandard>(mnd::STANDARD, "h1 2 x\nh2 1 y\n");
    expect_no_sequence_model<mnd::PopulStandard>(mnd::FREQUENCY, "h1 2\nh2 1\n");
    expect_no_sequence_model<mnd::PopulMicrosat>(mnd::MICROSAT, "h1 2 10\nh2 1 11\n");
}

TEST_F(Fu, WritesARowOfTheBatchSummary) {
    const mnd_test::TempFolder folder;
    std::ofstream summary(folder / "fu_fs.sum");
    mnd::ofs_fu_fs = &summary;
    char* const before = mnd::settings::input_file;
    std::string project = "dir/lakes.mnp";
    mnd::settings::input_file = project.data();
    a.s.NumSimulFuTest = 0;
    PopulDNA& sample = six();
    a.analyse(kTaskFuFs);
    mnd::FuReport report;
    report.n = 6;
    report.k = 4;
    report.original_k = 5;
    report.theta_pi = 1.2;
    report.exp_k = 2.5;
    report.defined = true;
    report.Fs = -kNumericalInfinity;
    report.P = 0.25;
    report.num_sim = 1000;
    write_fu_row(sample, report);
    report.defined = false;
    write_fu_row(sample, report);
    mnd::ofs_fu_fs = nullptr;
    mnd::settings::input_file = before;
    summary.close();
    EXPECT_EQ(mnd_test::read_text(folder / "fu_fs.sum"),
              "\"dir/lakes.mnp\"\t\"Lake\"\t6\t4\t4\t1.20000\t2.63049\t-1.45444\tN.A.\t0\n"
              "\"dir/lakes.mnp\"\t\"Lake\"\t6\t4\t5\t1.20000\t2.50000\t-infinity\t0.25000\t1000\n"
              "\"dir/lakes.mnp\"\t\"Lake\"\t6\t4\t5\t1.20000\t2.50000\tN.A.\t0.25000\t1000\n");
}

}  // namespace
