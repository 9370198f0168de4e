#include "within/fu_fs.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/message_codes.h"
#include "model/popul_dna.h"
#include "model/popul_rflp.h"
#include "run/tasks.h"
#include "support/batch_summary.h"
#include "support/captured_reports.h"
#include "support/stop_at_progress.h"
#include "within/neutral_samples.h"
#include "within/neutrality_tables.h"
#include "within/sequence_neutrality.h"

namespace {

using mnd::kNumericalInfinity;
using mnd::kTaskFuFs;
using mnd::PopulDNA;
using mnd::PopulRFLP;
using mnd_test::CapturedReports;
using mnd_test::contains;
using mnd_test::Report;

constexpr double kUntouched = 123.0;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

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

// S' is known to some 1e-10, what `gammln` leaves: Fs loses a digit with each -2.3. The document says so
// from -18 on, where the second decimal goes. Expected by integer Stirling numbers and 60 digits.
TEST(FuFs, IsKnownToTwoDecimalsDownToTheCaution) {
    struct Case {
        int n;
        int k;
        double theta;
        double Fs;
    };
    PopulDNA sample;
    const auto error = [&sample](const Case& c) {
        sample.sample_size = c.n;
        double Fs = kUntouched;
        EXPECT_EQ(sample.Fu_Fs(c.theta, c.k, Fs, true), 1);
        return std::fabs(Fs - c.Fs);
    };
    for (const Case& c : {Case{1000, 114, 17.071638155811605, -17.819497359433605},
                          Case{100, 72, 32.719250187685134, -17.78756201175679},
                          Case{200, 52, 7.590583036749499, -17.922082407739797},
                          Case{60, 42, 12.31588232771746, -17.71542305493433},
                          Case{40, 15, 0.8179922641972991, -17.29081331742961}})
        EXPECT_LT(error(c), 0.01) << c.n << ' ' << c.k;
    EXPECT_GT(error({1000, 134, 20.022934569902265, -23.97471873195816}), 0.1);
    EXPECT_GT(error({400, 98, 16.75672743567445, -23.56583639077406}), 0.1);
    sample.clean_bnum();
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

// A single copy can't have two alleles: P(K < 2) is 1, and comes out so to the last digit for some theta.
TEST(FuFs, IsMinusInfinityWhenAsManyAllelesAreImpossible) {
    PopulDNA sample;
    sample.sample_size = 1;
    int impossible = 0;
    for (int i = 0; i < 500; ++i) {
        const CapturedReports reports;
        double Fs = kUntouched;
        const int result = sample.Fu_Fs(1.9 + i / 2048.0, 2, Fs, true);
        if (Fs > -kNumericalInfinity) continue;  // within rounding
        ++impossible;
        EXPECT_EQ(Fs, -kNumericalInfinity);
        EXPECT_EQ(result, 0);
        EXPECT_TRUE(reports.all().empty());
    }
    EXPECT_GT(impossible, 0);
}

// --- The test of a sample

constexpr auto test_of_fu = [](auto& sample, mnd::settings& s, std::ostream& out) {
    fu_test(sample, s, out);
};

class Fu : public mnd_test::SequenceNeutrality {
protected:
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

    // As many haplotypes, the first of two gene copies.
    static std::string different_haplotypes(int k) {
        const char bases[] = {'A', 'C', 'G', 'T'};
        std::string lines;
        for (int i = 0; i < k; ++i) {
            std::string sequence;
            for (int rest = i, site = 0; site < 6; rest /= 4, ++site)
                sequence += bases[rest % 4];
            lines += 'h' + sequence + (i == 0 ? " 2 " : " 1 ") + sequence + '\n';
        }
        return lines;
    }
    // The block of a sample beyond the limits.
    static void expect_refused(const std::string& text, const std::string& n, const std::string& k) {
        EXPECT_TRUE(contains(
            text, "\nSample size                  : " + n + "\nObs. k                       : " + k + '\n'))
            << text;
        EXPECT_TRUE(contains(text, "Fs                           : N.A.\n")) << text;
        EXPECT_FALSE(contains(text, "No. of simulations")) << text;
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
    EXPECT_TRUE(contains(text(kNaN), "Fs                           : N.A.\n"));
    EXPECT_FALSE(contains(text(kNaN), caution));
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
    const double sd_theta_pi = sample.sd_theta_pi;
    EXPECT_GT(theta_pi, 1.2);  // the indel counts
    std::ostringstream out;
    fu_test(sample, a.s, out);
    EXPECT_EQ(sample.dist_mat.get(), matrix);
    EXPECT_EQ(sample.theta_pi, theta_pi);
    EXPECT_EQ(sample.sd_theta_pi, sd_theta_pi);
    EXPECT_EQ(sample.mean_pairwise_diff, theta_pi);
    EXPECT_EQ(sample.del_weight, a.s.DeletionWeight);
}

// What is known stands in the row: a single allele has no differences.
TEST_F(Fu, NeedsTwoAlleles) {
    mnd_test::BatchSummary summary(&mnd::ofs_fu_fs);
    PopulDNA& sample = a.add("Lake", "h1 3 AACC\n");
    a.prepare();
    sample.fu_Fs = 5.0;
    sample.fu_p = 0.5;
    a.s.NumSimulFuTest = 170;
    mnd::settings::global_work_done = 0.0;
    mnd::reset_draws_taken();
    EXPECT_TRUE(
        contains(a.analyse(kTaskFuFs), "Fu's Fs test cannot be computed if only one allele in sample\n"));
    EXPECT_EQ(sample.fu_Fs, 0.0);
    EXPECT_EQ(sample.fu_p, -1.0);
    EXPECT_EQ(summary.rows(), "\"Lake\"\t3\t1\t1\t0.00000\t1.00000\t0.00000\tN.A.\t0\n");
    EXPECT_EQ(mnd::draws_taken(), 0U);
    EXPECT_EQ(mnd::settings::global_work_done, 3.0);
}

TEST_F(Fu, NeedsTwoGenes) {
    mnd_test::BatchSummary summary(&mnd::ofs_fu_fs);
    a.add("Lake", "h1 1 AACC\n");
    a.prepare();
    EXPECT_TRUE(
        contains(a.analyse(kTaskFuFs), "Fu's Fs test cannot be computed if only one gene in sample\n"));
    EXPECT_EQ(summary.rows(), "\"Lake\"\t1\t1\t1\tN.A.\t1.00000\t0.00000\tN.A.\t0\n");
}

TEST_F(Fu, WithoutDistancesHasNoPValueButARow) {
    mnd_test::BatchSummary summary(&mnd::ofs_fu_fs);
    const PopulRFLP& sample = expect_no_distances(test_of_fu);
    EXPECT_EQ(summary.rows(), "\"Lake\"\t5\t2\t2\tN.A.\tN.A.\t0.00000\tN.A.\t0\n");
    EXPECT_EQ(sample.fu_Fs, 0.0);
    EXPECT_EQ(sample.fu_p, -1.0);
}

// The table of B numbers serves 4999 gene copies. Of two haplotypes that differ at a site: pi is
// 2499 2500/(4999 4998/2) = 0.50010, and 2500^2/(5000 4999/2) = 0.50010.
TEST_F(Fu, HasTheLimitOfGeneCopies) {
    const CapturedReports reports;
    mnd_test::BatchSummary summary(&mnd::ofs_fu_fs);
    a.s.NumSimulFuTest = 3;
    PopulDNA& accepted = compared(a, "h1 2499 AACC\nh2 2500 AACG\n");
    std::ostringstream out;
    fu_test(accepted, a.s, out);
    EXPECT_TRUE(
        contains(out.str(), "\nSample size                  : 4999\nObs. k                       : 2\n"));
    EXPECT_TRUE(contains(out.str(), "Theta(Pi)                    : 0.50010\n"));
    EXPECT_TRUE(contains(out.str(), "\nNo. of simulations           : 3\n"));
    EXPECT_GE(accepted.fu_p, 0.0);
    EXPECT_TRUE(reports.all().empty());

    PopulDNA& refused = compared(a, "h3 2500 AACC\nh4 2500 AACG\n");
    const Run refusal = run(test_of_fu, refused, a.s, 100);
    expect_refused(refusal.text, "5000", "2");
    EXPECT_EQ(reports.all(), std::vector<Report>{fu_warning(mnd::kTooManyAllelesOrTooLargeSample)});
    EXPECT_EQ(refused.fu_Fs, 0.0);
    EXPECT_EQ(refused.fu_p, -1.0);
    EXPECT_EQ(refusal.draws, 0U);
    EXPECT_EQ(refusal.work_done, 2.0);  // as planned
    const std::string row_of_refused = "\"Lake\"\t5000\t2\t2\t0.50010\t";
    EXPECT_TRUE(contains(summary.rows(), row_of_refused)) << summary.rows();
    EXPECT_TRUE(contains(summary.rows(), "\tN.A.\tN.A.\t0\n")) << summary.rows();
    accepted.clean_bnum();
}

// And 999 alleles.
TEST_F(Fu, HasTheLimitOfAlleles) {
    const CapturedReports reports;
    a.s.NumSimulFuTest = 1;
    PopulDNA& accepted = compared(a, different_haplotypes(999));
    std::ostringstream out;
    fu_test(accepted, a.s, out);
    EXPECT_TRUE(contains(out.str(), "Obs. k                       : 999\n"));
    for (const Report& report : reports.all())
        EXPECT_NE(report.code, mnd::kTooManyAllelesOrTooLargeSample);
    const std::size_t before = reports.all().size();
    PopulDNA& refused = compared(a, different_haplotypes(1000));
    std::ostringstream refusal;
    fu_test(refused, a.s, refusal);
    expect_refused(refusal.str(), "1001", "1000");
    ASSERT_EQ(reports.all().size(), before + 1);
    EXPECT_EQ(reports.all().back(), fu_warning(mnd::kTooManyAllelesOrTooLargeSample));
    accepted.clean_bnum();
}

// 4800 copies of 980 alleles that differ at 450 of 600 sites on average. Some 450 ln(1 + 4800/450) = 1106
// alleles are expected, with a deviation of 25: Fs is above 0, and all simulated samples have more alleles
// than the table serves. An Fs that can't be computed counts as 0.
TEST_F(Fu, AReplicateBeyondTheLimitsCountsAsZero) {
    std::string lines;
    for (int i = 0; i < 980; ++i) {
        std::string sequence;
        for (int site = 0; site < 600; ++site)
            sequence += "ACGT"[static_cast<int>(4.0 * next())];
        const std::string name = 'h' + std::to_string(i);
        lines += name + (i < 880 ? " 5 " : " 4 ") + sequence + '\n';
    }
    PopulDNA& sample = compared(a, lines);
    const CapturedReports reports;
    const Run tested = run(test_of_fu, sample, a.s, 3);
    EXPECT_GT(sample.fu_Fs, 0.0);
    EXPECT_LT(sample.fu_Fs, 100.0);
    EXPECT_EQ(sample.fu_p, 1.0);
    const std::string mean_k = "\nMean k                       : ";
    const std::size_t at = tested.text.find(mean_k);
    ASSERT_NE(at, std::string::npos);
    EXPECT_GT(std::stod(tested.text.substr(at + mean_k.size())), 1000.0);
    EXPECT_TRUE(reports.all().empty());
    sample.clean_bnum();
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

class FuReplicates : public Fu {
protected:
    struct PlainPValue {
        double P = 0.0;
        mnd::RunningSums theta;
        mnd::RunningSums k;
        std::uint64_t draws = 0;
    };

    // Of whole samples of this many sites, by theta(Pi) of the sample.
    template <class Sample>
    static PlainPValue plain_p_value(Sample& sample, mnd::settings& s, int sites) {
        PlainPValue plain;
        int below = 0;
        const CapturedReports reports;
        seed();
        mnd::reset_draws_taken();
        whole_samples(sample, s, sample.fu_theta_pi, sites, s.NumSimulFuTest, [&](Sample& replicate) {
            replicate.calc_theta_pi(replicate.mean_pairwise_diff);
            double Fs = 0.0;
            replicate.Fu_Fs(replicate.theta_pi, replicate.nb_hapl, Fs, false);
            plain.theta.add(replicate.theta_pi);
            plain.k.add(replicate.nb_hapl);
            if (Fs <= sample.fu_Fs) ++below;
        });
        plain.draws = mnd::draws_taken();
        EXPECT_TRUE(reports.all().empty());
        plain.P = static_cast<double>(below) / s.NumSimulFuTest;
        return plain;
    }

    // Returns: what the test writes
    template <class Sample>
    static std::string expect_p_value_of_whole_samples(Sample& sample, mnd::settings& s, int sites) {
        const Run tested = run(test_of_fu, sample, s, 520);
        EXPECT_EQ(tested.work_done, 10.0);
        const PlainPValue plain = plain_p_value(sample, s, sites);
        EXPECT_EQ(plain.draws, tested.draws);
        EXPECT_EQ(sample.fu_p, plain.P);
        EXPECT_GT(plain.P, 0.0);
        char lines[300];
        std::snprintf(lines, sizeof lines,
                      "\nNo. of simulations           : 520"
                      "\nMean Theta(Pi)               : %.5f"
                      "\nS.D. Theta(Pi)               : %.5f"
                      "\nMean k                       : %.5f"
                      "\nS.D. k                       : %.5f"
                      "\nP(sim. Fs &lt;= obs. Fs)        : %.5f\n",
                      plain.theta.mean(), plain.theta.sd(), plain.k.mean(), plain.k.sd(), plain.P);
        EXPECT_TRUE(contains(tested.text, lines)) << tested.text << lines;
        return tested.text;
    }
};

TEST_F(FuReplicates, AreWholeSamples) {
    PopulDNA& sample = six();
    sample.evaluate_polymorphism(a.s);
    expect_p_value_of_whole_samples(sample, a.s, 8);
}

TEST_F(FuReplicates, OfRestrictionSitesAreWholeSamples) {
    expect_p_value_of_whole_samples(nine(), rflp.s, 10);
}

// theta is that of a sequence: sites that the sample can't use do not make its sequences shorter.
TEST_F(FuReplicates, HaveTheSitesThatTheSampleCannotUse) {
    PopulDNA& sample = gappy();
    ASSERT_EQ(sample.nb_usable_loci, kUsableSites);
    const std::string text = expect_p_value_of_whole_samples(sample, a.s, kSites);
    EXPECT_TRUE(contains(text, "Theta(Pi)                    : 1.57143\n"));
    EXPECT_NE(plain_p_value(sample, a.s, kUsableSites).theta.mean(),
              plain_p_value(sample, a.s, kSites).theta.mean());
}

// A gap in some haplotypes is no difference, but two haplotypes that differ by it are two alleles.
TEST_F(FuReplicates, OfRestrictionSitesHaveThoseWithGaps) {
    PopulRFLP& sample = compared(rflp,
                                 "h1 3 00-0-110\n"
                                 "h2 2 01-0-110\n"
                                 "h3 2 01-00110\n");
    ASSERT_EQ(sample.nb_usable_loci, 7);
    // Of 21 pairs site 1 divides 12.
    EXPECT_TRUE(contains(expect_p_value_of_whole_samples(sample, rflp.s, 8),
                         "\nObs. k                       : 3\n"
                         "Original No. of alleles(k)   : 3\n"
                         "Theta(Pi)                    : 0.57143\n"));
}

// All three sites have transitions, which count twice in the sample and once in its replicates.
TEST_F(FuReplicates, HaveNoWeights) {
    PopulDNA& sample = six();
    sample.ts_weight = a.s.TransitionWeight = 2.0;
    sample.tv_weight = a.s.TranversionWeight = 0.5;
    sample.evaluate_polymorphism(a.s);
    const std::string text = expect_p_value_of_whole_samples(sample, a.s, 8);
    EXPECT_TRUE(contains(text, "Theta(Pi)                    : 2.40000\n")) << text;
    EXPECT_TRUE(
        contains(text,
                 "Substitutions count in Theta(Pi) by their weights, which are not all 1: Fs is not the "
                 "standard one,\nand simulated samples are without weights: take its P-value with care\n"))
        << text;
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

// The first message comes after 50 of 1000 simulated samples.
TEST_F(Fu, EndsWhenTheRunIsStopped) {
    mnd_test::BatchSummary summary(&mnd::ofs_fu_fs);
    PopulDNA& sample = six();
    sample.evaluate_polymorphism(a.s);
    a.s.NumSimulFuTest = 1000;
    sample.fu_p = 0.5;
    std::ostringstream out;
    const mnd_test::StopAtProgress stop(a.s, 20.0);
    fu_test(sample, a.s, out);
    EXPECT_EQ(mnd::settings::global_work_done, 1.0);
    EXPECT_EQ(sample.fu_p, -1.0);
    EXPECT_TRUE(contains(out.str(), "Fs                           : -1.45444\n"));
    EXPECT_FALSE(contains(out.str(), "No. of simulations"));
    EXPECT_EQ(summary.rows(), "");
}

TEST_F(Fu, AStoppedRunHasNoRow) {
    mnd_test::BatchSummary summary(&mnd::ofs_fu_fs);
    PopulDNA& sample = six();
    sample.evaluate_polymorphism(a.s);
    a.s.NumSimulFuTest = 100;
    a.s.stop_computations = 1;
    std::ostringstream out;
    fu_test(sample, a.s, out);
    fu_test(compared(a, "h9 3 AACC\n"), a.s, out);
    EXPECT_EQ(summary.rows(), "");
    EXPECT_EQ(out.str(), "");
}

TEST_F(Fu, NeedsSequences) {
    expect_sequences_are_needed(kTaskFuFs, "Fu's Fs test");
}

TEST_F(Fu, WritesARowOfTheBatchSummary) {
    mnd_test::BatchSummary summary(&mnd::ofs_fu_fs);
    a.s.NumSimulFuTest = 0;
    PopulDNA& sample = six();
    a.analyse(kTaskFuFs);
    mnd::FuReport report;
    report.n = 6;
    report.k = 4;
    report.original_k = 5;
    report.theta_pi = 1.2;
    report.k_est = 2.5;
    report.Fs = -kNumericalInfinity;
    report.P = 0.25;
    report.num_sim = 1000;
    write_fu_row(sample, report);
    report.Fs = kNaN;
    write_fu_row(sample, report);
    EXPECT_EQ(summary.rows(),
              "\"Lake\"\t6\t4\t4\t1.20000\t2.63049\t-1.45444\tN.A.\t0\n"
              "\"Lake\"\t6\t4\t5\t1.20000\t2.50000\t-infinity\t0.25000\t1000\n"
              "\"Lake\"\t6\t4\t5\t1.20000\t2.50000\tN.A.\t0.25000\t1000\n");
}

}  // namespace
