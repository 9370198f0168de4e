#include "within/mismatch_fit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <vector>

#include "foundation/random.h"
#include "model/popul_dna.h"
#include "run/settings.h"
#include "support/seeded_stream.h"
#include "within/text_sample.h"

namespace {

using mnd::ann_missmatch;

// Distribution of a sample, in the arrays that start at 1.
struct Data {
    std::vector<double> diff = std::vector<double>(520);
    std::vector<double> freq = std::vector<double>(520);
    int count = 0;
    long total = 0;
};

Data read(ann_missmatch& fit) {
    Data data;
    fit.read_mismatch_pop(data.diff.data(), data.freq.data(), data.count, data.total);
    return data;
}

// The shares that a curve gives to the classes 0 .. top.
Data curve_data(ann_missmatch& model, int top) {
    Data data;
    data.count = top + 2;
    for (int k = 0; k <= top + 1; ++k)
        data.diff[static_cast<std::size_t>(k) + 1] = k;
    for (int k = 0; k <= top; ++k)
        data.freq[static_cast<std::size_t>(k) + 1] = model.f_i_exp(k);
    return data;
}

double stable(int i, double theta) {
    return std::pow(theta / (theta + 1.0), i) / (theta + 1.0);
}

void set(ann_missmatch& fit, double theta0, double theta1, double tau) {
    fit.init_data(theta0, theta1, tau, 1.0);
}

// --- The curve

// By numerical integration (Simpson, 20000 steps) over the age s of the common ancestor in mutational
// time: hazard 1/theta1 up to tau and 1/theta0 beyond, and Poisson(s) differences.
TEST(SuddenExpansionCurve, IsTheIntegralOverTheAgeOfTheCommonAncestor) {
    struct Case {
        double theta0, theta1, tau;
        double share[4];
    };
    const int classes[] = {0, 1, 5, 12};
    const Case cases[] = {
        {1.5, 40.0, 6.0, {0.02519160046984, 0.02906476796724, 0.1105200996112, 0.03258159603193}},
        {0.3, 1000.0, 3.0, {0.03913243650497, 0.1241602377361, 0.1187548898561, 0.000178464499411}},
        {2.0, 2.0, 4.0, {1.0 / 3.0, 2.0 / 9.0, 0.04389574759945, 0.002569115543093}}};
    for (const Case& c : cases) {
        ann_missmatch fit;
        set(fit, c.theta0, c.theta1, c.tau);
        for (int k = 0; k < 4; ++k)
            EXPECT_NEAR(fit.f_i_exp(classes[k]), c.share[k], 1e-9) << c.theta0 << ' ' << classes[k];
    }
}

TEST(SuddenExpansionCurve, SumsToOne) {
    ann_missmatch fit;
    for (const double theta1 : {1.5, 10.0, 30.0}) {
        set(fit, 1.5, theta1, 6.0);
        fit.compute_curve(1000);
        double sum = 0.0;
        for (int i = 0; i <= 1000; ++i)
            sum += fit.f_vect[static_cast<std::size_t>(i)];
        EXPECT_NEAR(sum, 1.0, 1e-9) << theta1;
    }
}

TEST(SuddenExpansionCurve, IsThatOfAStablePopulationAtBothEndsOfTime) {
    ann_missmatch fit;
    for (const int i : {0, 1, 7}) {
        set(fit, 2.0, 50.0, 1e-12);
        EXPECT_NEAR(fit.f_i_exp(i), stable(i, 2.0), 1e-10);
        set(fit, 2.0, 5.0, 600.0);
        EXPECT_NEAR(fit.f_i_exp(i), stable(i, 5.0), 1e-10);
    }
}

// An expansion without limit from a single pair of founders: Poisson(tau).
TEST(SuddenExpansionCurve, IsPoissonFromAlmostNothingToAlmostEverything) {
    ann_missmatch fit;
    set(fit, 1e-7, 1e9, 4.0);
    EXPECT_NEAR(fit.f_i_exp(0), std::exp(-4.0), 1e-7);
    EXPECT_NEAR(fit.f_i_exp(3), std::exp(-4.0) * 64.0 / 6.0, 1e-6);
}

TEST(SuddenExpansionCurve, RaisesTheta0AndTauAndKeepsThemRaised) {
    ann_missmatch fit;
    set(fit, -1.0, 5.0, 0.0);
    fit.f_i_exp(2);
    EXPECT_EQ(fit.Theta0, 1e-07);
    EXPECT_EQ(fit.Tau, 1e-07);
    EXPECT_EQ(fit.Theta1, 5.0);
}

TEST(SuddenExpansionCurve, WithoutTimeOrGrowthIsThatOfTheta0) {
    ann_missmatch fit;
    set(fit, 3.0, 2.0, 0.0);
    EXPECT_EQ(fit.f_i_exp(4), stable(4, 3.0));
    EXPECT_EQ(fit.Theta1, 3.0);
    EXPECT_EQ(fit.Tau, 1e-07);
    // Only both conditions together do that.
    set(fit, 3.0, 2.0, 1.0);
    fit.f_i_exp(4);
    EXPECT_EQ(fit.Theta1, 2.0);
}

// The table of a curve against its terms one by one, to the last bit, for parameters of a search:
// among them those that are raised, equal, huge or below 0.
TEST(SuddenExpansionCurve, TableEqualsThePlainForm) {
    const double endless = std::numeric_limits<double>::infinity();
    const double thetas[] = {-3.0, 0.0, 1e-310, 1e-07, 0.3, 1.0, 4.999, 60.0, 1e4, 3e9, 1e12, 1e160, endless};
    const double taus[] = {-1.0, 0.0, 1e-310, 1e-07, 0.7, 3.0, 25.0, 700.0, 1368.0, endless};
    ann_missmatch table;
    for (const double theta0 : thetas) {
        for (const double theta1 : thetas) {
            for (const double tau : taus) {
                ann_missmatch plain;
                set(plain, theta0, theta1, tau);
                set(table, theta0, theta1, tau);
                table.compute_curve(60);
                for (int i = 0; i <= 60; ++i) {
                    const double expected = plain.f_i_exp(i);
                    const double got = table.f_vect[static_cast<std::size_t>(i)];
                    if (std::isnan(expected)) {
                        EXPECT_TRUE(std::isnan(got));
                    } else {
                        EXPECT_EQ(got, expected) << theta0 << ' ' << theta1 << ' ' << tau << ' ' << i;
                    }
                }
                EXPECT_EQ(table.Theta0, plain.Theta0);
                EXPECT_EQ(table.Theta1, plain.Theta1);
                EXPECT_EQ(table.Tau, plain.Tau);
            }
        }
    }
}

// The same over random parameters and tops.
TEST(SuddenExpansionCurve, TableEqualsThePlainFormAtRandomParameters) {
    long idum = -12345;
    mnd::ran3(&idum);
    ann_missmatch table, plain;
    for (int i = 0; i < 3000; ++i) {
        const double theta0 = std::pow(10.0, 9.0 * mnd::ran3() - 7.0);
        const double theta1 = theta0 * std::pow(10.0, 6.0 * mnd::ran3());
        const double tau = std::pow(10.0, 5.0 * mnd::ran3() - 2.0);
        const int top = static_cast<int>(30.0 * mnd::ran3());
        set(plain, theta0, theta1, tau);
        set(table, theta0, theta1, tau);
        table.compute_curve(top);
        for (int k = 0; k <= top; ++k) {
            EXPECT_EQ(table.f_vect[static_cast<std::size_t>(k)], plain.f_i_exp(k));
            EXPECT_EQ(table.f0_vect[static_cast<std::size_t>(k)], stable(k, theta0));
            EXPECT_EQ(table.f1_vect[static_cast<std::size_t>(k)], stable(k, theta1));
        }
    }
}

// The formula as it stands, in a type that can hold the Poisson terms of a Tau of hundreds.
double share_in_long_double(int i, double theta0, double theta1, double tau) {
    const auto t = static_cast<long double>(tau);
    const auto stable_of = [](int k, long double theta) {
        return std::pow(theta / (theta + 1.0L), k) / (theta + 1.0L);
    };
    long double sum = 0.0L;
    long double poisson = 1.0L;
    for (int j = 0; j <= i; ++j) {
        sum += poisson * (stable_of(i - j, theta0) - stable_of(i - j, theta1));
        poisson *= t / static_cast<long double>(j + 1);
    }
    const auto t1 = static_cast<long double>(theta1);
    return static_cast<double>(stable_of(i, t1) + std::exp(-t * (t1 + 1.0L) / t1) * sum);
}

// tau^j / j! is beyond the range of a double from a tau of 720 on, exp(-tau) below it.
TEST(SuddenExpansionCurve, HasSharesHoweverLongAgoTheExpansionWas) {
    ann_missmatch table, plain;
    for (const double tau : {350.0, 700.0, 760.0, 1368.0, 4000.0}) {
        for (const double theta1 : {5.0, 300.0, 1e9}) {
            set(table, 2.0, theta1, tau);
            set(plain, 2.0, theta1, tau);
            table.compute_curve(900);
            for (int i = 0; i <= 900; i += 10) {
                const double got = plain.f_i_exp(i);
                EXPECT_EQ(table.f_vect[static_cast<std::size_t>(i)], got);
                EXPECT_NEAR(got, share_in_long_double(i, 2.0, theta1, tau), 1e-11) << tau << ' ' << i;
            }
        }
    }
    set(plain, 2.0, 1e9, 1e300);
    EXPECT_NEAR(plain.f_i_exp(400), stable(400, 1e9), 1e-11);
}

// Tables are kept between evaluations: a search that walks to and fro must not see old ones.
TEST(SuddenExpansionCurve, KeptTablesFollowEachParameter) {
    ann_missmatch table;
    const double walk[][3] = {{1, 5, 3},   {1, 15, 3}, {1, 5, 3}, {1.9, 5, 3},
                              {0.1, 5, 3}, {1, 5, 4},  {1, 5, 3}};
    int top = 10;
    for (const auto& p : walk) {
        set(table, p[0], p[1], p[2]);
        table.compute_curve(top);
        ann_missmatch plain;
        set(plain, p[0], p[1], p[2]);
        for (int i = 0; i <= top; ++i)
            EXPECT_EQ(table.f_vect[static_cast<std::size_t>(i)], plain.f_i_exp(i));
        top += 3;
    }
}

TEST(SuddenExpansionSum, AddsSquaredDeviationsOfTheClassesBelowCount) {
    ann_missmatch fit;
    set(fit, 2.0, 2.0, 1.0);
    double diff[] = {0, 0, 1, 2};
    double freq[] = {0, 0.5, 0.25, 9.0};
    // Shares of a stable population of theta 2: 1/3, 2/9; the third slot does not count.
    const double expected = std::pow(1.0 / 3.0 - 0.5, 2) + std::pow(2.0 / 9.0 - 0.25, 2);
    EXPECT_NEAR(fit.f_SRod_Harp(diff, freq, 3), expected, 1e-15);
    EXPECT_EQ(fit.f_SRod_Harp(diff, freq, 1), 0.0);
    EXPECT_EQ(fit.f_SRod_Harp(diff, freq, 0), 0.0);
}

TEST(SuddenExpansionSum, ClassesBeyondTheTableAreEvaluatedOneByOne) {
    ann_missmatch fit;
    set(fit, 2.0, 2.0, 1.0);
    double diff[] = {0, 0, 1200};
    double freq[] = {0, 0.5, 0.25};
    const double expected = std::pow(1.0 / 3.0 - 0.5, 2) + std::pow(stable(1200, 2.0) - 0.25, 2);
    EXPECT_NEAR(fit.f_SRod_Harp(diff, freq, 3), expected, 1e-15);
}

// --- The search

TEST(SuddenExpansionSearch, FindsTheParametersThatMadeTheData) {
    const double truths[][3] = {{1.0, 20.0, 6.0}, {0.5, 12.0, 3.0}, {2.0, 8.0, 9.0}};
    for (const auto& truth : truths) {
        ann_missmatch model;
        set(model, truth[0], truth[1], truth[2]);
        Data data = curve_data(model, 60);
        ann_missmatch fit;
        set(fit, 1.0, 5.0, 3.0);
        EXPECT_TRUE(fit.hook_jeeves_rh(data.diff.data(), data.freq.data(), data.count, 20000, 1e-7));
        EXPECT_NEAR(fit.Theta0, truth[0], 0.02 * truth[0]);
        EXPECT_NEAR(fit.Theta1, truth[1], 0.02 * truth[1]);
        EXPECT_NEAR(fit.Tau, truth[2], 0.02 * truth[2]);
        EXPECT_LT(fit.ssd_work, 1e-9);
        EXPECT_EQ(fit.not_converged, 0);
    }
}

// The search written out step by step, with the plain curve.
struct PlainSearch {
    ann_missmatch curve;
    Data& data;
    bool converged = false;

    double ssd() {
        double sum = 0.0;
        for (int k = 1; k < data.count; ++k) {
            const double d = curve.f_i_exp(static_cast<int>(data.diff[static_cast<std::size_t>(k)])) -
                             data.freq[static_cast<std::size_t>(k)];
            sum += d * d;
        }
        return sum;
    }
    explicit PlainSearch(Data& d, int max_steps, double epsilon) : data(d) {
        set(curve, 1.0, 5.0, 3.0);
        double step1 = 10.0, step0 = 0.9, step_tau = 1.0, global = 1.0;
        for (int n = 0; n < max_steps && epsilon < global; ++n) {
            double best = ssd();
            const double saved1 = curve.Theta1, saved0 = curve.Theta0, saved_tau = curve.Tau;
            if (step1 >= epsilon) {
                const double other = curve.Theta0;
                bool moved = true;
                curve.Theta1 = saved1 + step1;
                double now = ssd();
                if (now >= best) {
                    curve.Theta1 = saved1;
                    curve.Theta0 = other;
                    curve.Theta1 = saved1 - step1;
                    if (curve.Theta1 < curve.Theta0) {
                        if (curve.Theta1 <= 0) curve.Theta1 = 1e-07;
                        curve.Theta0 = curve.Theta1;
                    }
                    now = ssd();
                    if (now >= best) {
                        curve.Theta1 = saved1;
                        curve.Theta0 = other;
                        moved = false;
                    }
                }
                if (moved) best = now;
                step1 = moved ? step1 * 4 : step1 * 0.5;
            }
            if (step1 < epsilon) step1 = 0;
            if (step0 >= epsilon) {
                const double before = curve.Theta0, other = curve.Theta1;
                bool moved = true;
                curve.Theta0 = saved0 + step0;
                if (curve.Theta0 > curve.Theta1) curve.Theta1 = curve.Theta0;
                double now = ssd();
                if (now >= best) {
                    curve.Theta1 = other;
                    curve.Theta0 = saved0 - step0;
                    if (curve.Theta0 > curve.Theta1) curve.Theta1 = curve.Theta0;
                    now = ssd();
                    if (now >= best) {
                        curve.Theta1 = other;
                        curve.Theta0 = before;
                        moved = false;
                    }
                }
                if (moved) best = now;
                step0 = moved ? step0 * 4 : step0 * 0.5;
            }
            if (step0 < epsilon) step0 = 0;
            if (step_tau >= epsilon) {
                bool moved = true;
                curve.Tau = saved_tau + step_tau;
                if (ssd() >= best) {
                    curve.Tau = saved_tau - step_tau;
                    if (ssd() >= best) {
                        curve.Tau = saved_tau;
                        moved = false;
                    }
                }
                step_tau = moved ? step_tau * 4 : step_tau * 0.5;
            }
            if (step_tau < epsilon) step_tau = 0;
            global = std::max(std::max(step1 / (curve.Theta1 + 1.0), step0), step_tau);
        }
        converged = global <= epsilon;
    }
};

class SuddenSearch : public mnd_test::SeededStream {};

TEST_F(SuddenSearch, GoesStepByStepAsThePlainOne) {
    for (int data_set = 0; data_set < 50; ++data_set) {
        ann_missmatch model;
        set(model, 3.0 * next(), 1.0 + 40.0 * next(), 10.0 * next());
        Data data = curve_data(model, 5 + static_cast<int>(25 * next()));
        for (int k = 1; k < data.count; ++k)
            data.freq[static_cast<std::size_t>(k)] *= 0.4 + 1.2 * next();
        ann_missmatch fit;
        set(fit, 1.0, 5.0, 3.0);
        const int limit = data_set % 3 == 0 ? 7 : 2000;
        // The step of Tau halves to 0.25 itself.
        const double threshold = data_set % 2 == 0 ? 0.001 : 0.25;
        const bool converged =
            fit.hook_jeeves_rh(data.diff.data(), data.freq.data(), data.count, limit, threshold);
        PlainSearch plain(data, limit, threshold);
        EXPECT_EQ(fit.Theta0, plain.curve.Theta0);
        EXPECT_EQ(fit.Theta1, plain.curve.Theta1);
        EXPECT_EQ(fit.Tau, plain.curve.Tau);
        EXPECT_EQ(fit.ssd_work, plain.ssd());
        EXPECT_EQ(converged, plain.converged);
        EXPECT_EQ(fit.not_converged, plain.converged ? 0 : 1);
        EXPECT_LE(fit.Theta0, fit.Theta1);
    }
}

// One class alone, of pairs without difference, can be followed by hand:
//   f = (1 - E) / (Theta1 + 1) + E / (Theta0 + 1),  E = exp(-Tau (Theta1 + 1) / Theta1)
struct OneClass {
    double diff[3] = {0, 0, 1};
    double freq[3] = {0, 0, 0};
    ann_missmatch fit;

    explicit OneClass(double share) { freq[1] = share; }
    bool search(double theta0, double theta1, double tau, int rounds, double threshold) {
        set(fit, theta0, theta1, tau);
        return fit.hook_jeeves_rh(diff, freq, 2, rounds, threshold);
    }
    void expect_at(double theta0, double theta1, double tau) const {
        EXPECT_DOUBLE_EQ(fit.Theta0, theta0);
        EXPECT_DOUBLE_EQ(fit.Theta1, theta1);
        EXPECT_DOUBLE_EQ(fit.Tau, tau);
    }
};

// Share 0.2, from Theta0 = 1, Theta1 = 5, Tau = 3: f = 0.17577, SSD 5.87e-4.
// Round 1, steps 10, 0.9, 1:
//   Theta1 15: f = 0.08033, worse. 5 - 10 is below Theta0 and 0: both sizes 1e-07, f = 1, worse.
//   Theta0 1.9: 0.17153, worse. 0.1: 0.18695, SSD 1.70e-4, better.
//   Tau 4: 0.17278, worse. 2: 0.23402, worse.        Steps 5, 3.6, 0.5.
// Round 2:
//   Theta1 10: 0.12109, worse. 0: both sizes 1e-07, worse.
//   Theta0 3.7: 0.16793, worse. 0.1 - 3.6, raised to 1e-07: 0.18944, SSD 1.12e-4, better.
//   Tau 3.5: 0.17916, worse. 2.5: 0.20816, SSD 6.65e-5, better.    Steps 2.5, 14.4, 2.
// Round 3:
//   Theta1 7.5: 0.16954, worse. 2.5: 0.30728, worse.
//   Theta0 14.4 takes Theta1 up to 14.4: 0.06494, worse. 1e-07 - 14.4, raised to 1e-07: the sum is that
//   of the point, not less, thus not better.
//   Tau 4.5: 0.17043, worse. 0.5: 0.62401, worse.
TEST(SuddenExpansionSearch, GoesThreeRoundsAsByHand) {
    OneClass by_hand(0.2);
    EXPECT_FALSE(by_hand.search(1.0, 5.0, 3.0, 1, 0.001));
    by_hand.expect_at(1.0 - 0.9, 5.0, 3.0);
    EXPECT_NEAR(by_hand.fit.ssd_work, 1.702e-4, 5e-8);
    EXPECT_FALSE(by_hand.search(1.0, 5.0, 3.0, 2, 0.001));
    by_hand.expect_at(1e-07, 5.0, 2.5);
    EXPECT_NEAR(by_hand.fit.ssd_work, 6.652e-5, 5e-9);
    EXPECT_FALSE(by_hand.search(1.0, 5.0, 3.0, 3, 0.001));
    by_hand.expect_at(1e-07, 5.0, 2.5);
    EXPECT_NEAR(by_hand.fit.ssd_work, 6.652e-5, 5e-9);
}

// The same start with a threshold of 0.95: the first step of Theta0, 0.9, is below it, and Theta0 rests.
// Round 1: Theta1 15 and below 0 worse, step 5. Tau 4: 0.16941, worse; 2: 0.19691, SSD 9.57e-6, better,
//   step 4. Global step max(5/6, 0, 4).
// Round 2: Theta1 10: 0.13624, 0: 1, worse, step 2.5. Tau 6: 0.16692, -2 raised to 1e-07: 0.5, worse,
//   step 2, which is the global one.
// Round 3: Theta1 7.5: 0.15728, 2.5: 0.29875, worse, step 1.25. Tau 4, 0: worse, step 1.
// Round 4: Theta1 6.25: 0.17351, 3.75: 0.23351, worse, step 0.625 becomes 0. Tau 3, 1: worse, step 0.5
//   becomes 0. Global step 0.
// From the parameters that made the data nothing gains. Steps after two rounds: Theta1 2.5, of 21, Theta0
// 0.225, which is below the threshold, Tau 0.25, which is at it.
TEST(SuddenExpansionSearch, AStepAtTheThresholdEndsIt) {
    ann_missmatch model;
    set(model, 1.0, 20.0, 3.0);
    Data data = curve_data(model, 30);
    ann_missmatch fit;
    set(fit, 1.0, 20.0, 3.0);
    EXPECT_FALSE(fit.hook_jeeves_rh(data.diff.data(), data.freq.data(), data.count, 1, 0.25));
    EXPECT_TRUE(fit.hook_jeeves_rh(data.diff.data(), data.freq.data(), data.count, 2, 0.25));
    EXPECT_EQ(fit.not_converged, 0);
}

TEST(SuddenExpansionSearch, RestsParametersWhoseStepIsBelowTheThreshold) {
    OneClass by_hand(0.2);
    EXPECT_FALSE(by_hand.search(1.0, 5.0, 3.0, 3, 0.95));
    EXPECT_TRUE(by_hand.search(1.0, 5.0, 3.0, 4, 0.95));
    by_hand.expect_at(1.0, 5.0, 2.0);
    EXPECT_NEAR(by_hand.fit.ssd_work, 9.573e-6, 5e-10);
}

// Share 0.325, from 3, 12, 3: f = 0.08363. Theta1 22: 0.05245, worse; 2 takes Theta0 down to 2: 1/3, SSD
// 6.94e-5, better. Theta0 starts from 3, where it stood: 3.9 takes Theta1 up, f = 1/4.9, worse. 3 - 0.9 =
// 2.1 is above Theta1 now, and takes it up, too: 1/3.1, SSD 5.85e-6, better. (With Theta1 left at 2, f
// would be 0.33321, better as well, but the sizes would have crossed.) Tau does not count for equal sizes.
TEST(SuddenExpansionSearch, SizesNeverCrossNotEvenOnTheWayDown) {
    OneClass by_hand(0.325);
    by_hand.search(3.0, 12.0, 3.0, 1, 0.001);
    by_hand.expect_at(3.0 - 0.9, 3.0 - 0.9, 3.0);
    EXPECT_NEAR(by_hand.fit.ssd_work, 5.853e-6, 5e-10);
}

// Data that no size is small enough for: every pair is identical.
TEST(SuddenExpansionSearch, SizesStayAboveNothing) {
    for (const double share : {1.0, 0.9999999, 2.0}) {
        OneClass data(share);
        data.search(1.0, 5.0, 3.0, 2000, 0.001);
        EXPECT_GT(data.fit.Theta0, 0.0);
        EXPECT_GE(data.fit.Theta1, data.fit.Theta0);
        EXPECT_GT(data.fit.Tau, 0.0);
    }
    OneClass data(1.0);
    data.search(1.0, 5.0, 3.0, 1, 0.001);
    // f = 1 - 1e-07 at two sizes of 1e-07, by the first trial down.
    EXPECT_EQ(data.fit.Theta1, 1e-07);
    EXPECT_LT(data.fit.ssd_work, 1e-13);
}

// The steps of Tau grow by 4: on its way to 390 the search tries 1368, too.
TEST(SuddenExpansionSearch, FindsAnExpansionOfHundredsOfMutationsAgo) {
    ann_missmatch model;
    set(model, 1.0, 2000.0, 390.0);
    Data data = curve_data(model, 480);
    ann_missmatch fit;
    set(fit, 1.0, 5.0, 3.0);
    EXPECT_TRUE(fit.hook_jeeves_rh(data.diff.data(), data.freq.data(), data.count, 2000, 0.001));
    EXPECT_NEAR(fit.Tau, 390.0, 0.5);
    EXPECT_NEAR(fit.Theta0, 1.0, 0.3);
    EXPECT_LT(fit.ssd_work, 1e-7);
}

TEST(SuddenExpansionSearch, StopsAtItsLimitOfRounds) {
    ann_missmatch model;
    set(model, 1.0, 20.0, 6.0);
    Data data = curve_data(model, 30);
    ann_missmatch fit;
    set(fit, 1.0, 5.0, 3.0);
    EXPECT_FALSE(fit.hook_jeeves_rh(data.diff.data(), data.freq.data(), data.count, 1, 0.001));
    EXPECT_EQ(fit.not_converged, 1);
    EXPECT_FALSE(fit.hook_jeeves_rh(data.diff.data(), data.freq.data(), data.count, 0, 0.001));
}

TEST(SuddenExpansionSearch, ASumThatIsNotFiniteIsAFailure) {
    double diff[] = {0, 0, 1, 2};
    double freq[] = {0, 0.5, std::numeric_limits<double>::quiet_NaN(), 0.0};
    ann_missmatch fit;
    set(fit, 1.0, 5.0, 3.0);
    EXPECT_FALSE(fit.hook_jeeves_rh(diff, freq, 3, 2000, 0.001));
    EXPECT_EQ(fit.not_converged, 1);
}

// --- Statistics of a distribution

TEST(RaggednessIndex, AddsTheSquaredStepsAndTheLastClass) {
    double diff[] = {0, 0, 1, 2};
    double shares[] = {0, 0.5, 0.25, 0.25};
    // (0.25 - 0.5)^2 + 0 + 0.25^2 = 0.125
    EXPECT_DOUBLE_EQ(ann_missmatch::compute_raggedness_index(diff, shares, 3), 0.125);
    // Counts give the same, by the squared sum of 4.
    double counts[] = {0, 2, 1, 1};
    EXPECT_DOUBLE_EQ(ann_missmatch::compute_raggedness_index(diff, counts, 3), 0.125);
    double none[] = {0, 0, 0, 0};
    EXPECT_EQ(ann_missmatch::compute_raggedness_index(diff, none, 3), 0.0);
    // A class without pairs behind the last one changes nothing.
    double longer[] = {0, 0.5, 0.25, 0.25, 0.0};
    EXPECT_DOUBLE_EQ(ann_missmatch::compute_raggedness_index(diff, longer, 4), 0.125);
}

TEST(MeanOfADistribution, WeighsDifferencesByShares) {
    double diff[] = {0, 0, 1, 2, 3};
    double freq[] = {0, 0.5, 0.25, 0.25, 0.0};
    EXPECT_DOUBLE_EQ(ann_missmatch::calc_mean_mssm(diff, freq, 4), 0.75);
}

// --- The observed distribution

TEST(ObservedDistribution, EndsAtTheLastClassWithPairs) {
    mnd::PopulDNA sample;
    sample.mm_counts = {4, 0, 6, 0, 0, 0, 0, 0, 0};
    sample.max_diff = 4;
    ann_missmatch fit(&sample, nullptr);
    const Data data = read(fit);
    EXPECT_EQ(data.count, 4);
    EXPECT_EQ(data.total, 10);
    EXPECT_EQ(fit.sample_size, 5);
    EXPECT_EQ(data.diff[1], 0.0);
    EXPECT_EQ(data.freq[1], 4.0);
    EXPECT_EQ(data.freq[3], 6.0);
    EXPECT_EQ(data.freq[4], 0.0);
    EXPECT_EQ(data.diff[500], 499.0);
    EXPECT_EQ(data.freq[500], 0.0);
    EXPECT_EQ(fit.Theta0, 1.0);
    EXPECT_EQ(fit.Theta1, 5.0);
    EXPECT_EQ(fit.Tau, 3.0);
    EXPECT_EQ(fit.m1, 400);
}

TEST(ObservedDistribution, EndsAtTheLastExpectedClass) {
    mnd::PopulDNA sample;
    sample.mm_counts = {4, 0, 6, 0, 5, 0, 0, 0, 0};
    sample.max_diff = 4;
    sample.last_expected_class = 3;
    ann_missmatch fit(&sample, nullptr);
    const Data data = read(fit);
    EXPECT_EQ(data.count, 4);
    EXPECT_EQ(data.total, 10);
}

TEST(ObservedDistribution, HasFiveHundredClassesAtMost) {
    mnd::PopulDNA sample;
    sample.mm_counts.assign(2001, 1);
    sample.max_diff = 1000;
    ann_missmatch fit(&sample, nullptr);
    const Data data = read(fit);
    EXPECT_EQ(data.count, 501);
    EXPECT_EQ(data.total, 500);
    EXPECT_EQ(data.diff[500], 499.0);
}

TEST(ObservedDistribution, OfIdenticalCopiesIsEmpty) {
    mnd::PopulDNA sample;
    ann_missmatch fit(&sample, nullptr);
    const Data data = read(fit);
    EXPECT_EQ(data.total, 0);
    EXPECT_EQ(data.count, 2);
}

// Two clusters of five copies, five differences apart: 20 pairs without difference, 25 with five. Mean
// 125/45 = 2.77778, variance (625 - 125^2/45)/44 = 6.31313; theta = sqrt(6.31313 - 2.77778) = 1.88025,
// tau = 2.77778 - 1.88025 = 0.89752. Expected, 45 times the sum over j of e^-tau tau^j/j! r^(i-j) (1 - r)
// with r = theta/(theta + 1) = 0.65281, worked out apart from the program:
//   class      0       1       2       3       4       5       6       7       8       9      10
//   expected  6.3678  9.8723  9.0095  6.6488  4.5126  2.9767  1.9479  1.2722  0.8306  0.5422  0.3540
// Classes 4 and 5 make a run of 7.4893 with 25 pairs; 6 to 10 come to 4.9468, no run, and do not count.
//   (6.3678 - 20)^2/6.3678 = 29.1835, 9.8723, 9.0095, 6.6488, (7.4893 - 25)^2/7.4893 = 40.9415
// Their sum is 95.6556; 5 classes leave 3 degrees of freedom, of which the tail is erfc(sqrt(x/2)) +
// sqrt(2 x/pi) e^(-x/2) = 1.3348e-20.
TEST(ObservedDistribution, IsTestedOnMergedClasses) {
    mnd_test::TextSample<mnd::PopulDNA> sample({"AAAAAA", "CCCCCA"}, {5, 5});
    mnd::settings s;
    std::fstream unopened;
    mnd::PopulDNA& copies = sample.sample;
    copies.del_weight = copies.ts_weight = copies.tv_weight = 1.0;
    copies.compute_distance_matrix(nullptr, &s, 1);
    ASSERT_EQ(copies.compute_mm_distr(unopened, s), 1);
    const double expected[] = {6.367838, 9.872266, 9.009502, 6.648803, 4.512567, 2.976748,
                               1.947869, 1.272178, 0.830555, 0.542200, 0.353953};
    ASSERT_EQ(copies.mm_expected.size(), 11u);
    for (std::size_t i = 0; i < 11; ++i)
        EXPECT_NEAR(copies.mm_expected[i], expected[i], 1e-6) << i;
    EXPECT_NEAR(copies.mm_chi2, 95.65562178264, 1e-9);
    EXPECT_EQ(copies.mm_chi2_df, 3);
    EXPECT_NEAR(copies.mm_chi2_p, 1.334787e-20, 1e-4 * 1.334787e-20);
}

TEST(SuddenExpansionFit, StartsWithTheseDefaults) {
    ann_missmatch fit;
    EXPECT_EQ(fit.pairs, 500);
    EXPECT_EQ(fit.max_steps, 2000);
    EXPECT_EQ(fit.epsilon, 0.001);
    EXPECT_EQ(fit.N, 4000000);
    EXPECT_EQ(fit.m1, 400);
    EXPECT_EQ(fit.alpha, -1.0);
    EXPECT_EQ(fit.use_rh, 1);
    fit.N = 1;
    fit.epsilon = 1.0;
    fit.init_data(0.5, 2.0, 1.0, 1.0);
    EXPECT_EQ(fit.N, 4000000);
    EXPECT_EQ(fit.epsilon, 0.001);
    EXPECT_EQ(fit.Theta0, 0.5);
    EXPECT_EQ(fit.Theta1, 2.0);
    EXPECT_EQ(fit.Tau, 1.0);
}

}  // namespace
