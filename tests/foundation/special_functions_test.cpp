#include "foundation/special_functions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "support/captured_reports.h"

namespace {

using mnd_test::CapturedOutput;
using mnd_test::CapturedReports;
using mnd_test::Report;

const std::vector<Report> kNoReport;

std::vector<Report> one_error(const std::string& function_name) {
    return {{mnd::Error, function_name, 105}};
}

// Logarithm of n! as a plain sum in extended precision.
long double log_factorial(int n) {
    long double sum = 0.0L;
    for (int i = 2; i <= n; ++i)
        sum += ::logl(static_cast<long double>(i));
    return sum;
}

TEST(Logl, IsTheDoubleLogarithmOfTheRoundedArgument) {
    for (const long double x : {0.1L, 1.0L / 3.0L, 2.0L, 1234567.890123L}) {
        EXPECT_EQ(mnd::logl(x), static_cast<long double>(std::log(static_cast<double>(x))));
    }
    EXPECT_NE(mnd::logl(3.0L), ::logl(3.0L));
}

// The six-term series is good to a relative 2e-10 of gamma itself, an absolute 2e-10 of its log.
TEST(Gammln, AgreesWithTheLibraryFunction) {
    for (const double x : {0.01, 0.5, 1.0, 1.5, 2.0, 3.7, 10.0, 55.5, 171.0, 1000.25, 1e6}) {
        const double expected = std::lgamma(x);
        EXPECT_NEAR(mnd::gammln(x), expected, 2e-10 * std::max(1.0, std::fabs(expected))) << x;
    }
}

// The series worked term by term for x = 1, where gamma is 1:
// ser = 1.000000000190015 + 76.18009172947146/2 - 86.50532032941678/3 + 24.01409824083091/4
//       - 1.231739572450155/5 + 0.001208650973866179/6 - 5.395239384953e-06/7
// log gamma = log(2.5066282746310005 ser) - (6.5 - 1.5 log 6.5)
TEST(Gammln, FollowsTheSixTermSeries) {
    const double ser = 1.000000000190015 + 76.18009172947146 / 2 - 86.50532032941678 / 3 +
                       24.01409824083091 / 4 - 1.231739572450155 / 5 + 0.001208650973866179 / 6 -
                       5.395239384953e-06 / 7;
    const double expected = std::log(2.5066282746310005 * ser) - (6.5 - 1.5 * std::log(6.5));
    EXPECT_NEAR(mnd::gammln(1.0), expected, 1e-14);
}

TEST(Gammlnl, AgreesWithTheDoubleSeries) {
    for (const double x : {0.5, 1.0, 2.5, 20.0, 101.0, 5000.0}) {
        const double expected = mnd::gammln(x);
        EXPECT_NEAR(static_cast<double>(mnd::gammlnl(x)), expected,
                    4e-16 * std::max(10.0, std::fabs(expected)))
            << x;
    }
}

// All but the logarithms is extended: with x = 1, tmp = 6.5 exactly and the two logarithms
// are doubles, so the result is their extended combination.
TEST(Gammlnl, HoldsAllButTheLogarithmsInExtendedPrecision) {
    const long double ser = 1.000000000190015L + 76.18009172947146L / 2 - 86.50532032941678L / 3 +
                            24.01409824083091L / 4 - 1.231739572450155L / 5 + 0.001208650973866179L / 6 -
                            5.395239384953e-06L / 7;
    const long double log_gamma = std::log(static_cast<double>(2.5066282746310005 * ser));
    const long double log_tmp = std::log(6.5);
    EXPECT_EQ(mnd::gammlnl(1.0L), log_gamma - (6.5L - 1.5L * log_tmp));
}

TEST(Factln, IsTheLogarithmOfTheFactorial) {
    for (int n = 0; n <= 300; ++n) {
        const auto expected = static_cast<double>(log_factorial(n));
        EXPECT_NEAR(mnd::factln(n), expected, 2e-10 * std::max(1.0, expected)) << n;
    }
}

TEST(Factln, ZeroAndOneAreExactlyZero) {
    EXPECT_EQ(mnd::factln(0), 0.0);
    EXPECT_EQ(mnd::factln(1), 0.0);
}

TEST(Factln, CachedAndRecomputedValuesAreThoseOfGammln) {
    for (const int n : {2, 99, 100, 101, 102}) {
        EXPECT_EQ(mnd::factln(n), mnd::gammln(n + 1.0)) << n;
        EXPECT_EQ(mnd::factln(n), mnd::gammln(n + 1.0)) << n << ", again";
    }
}

TEST(Factln, NegativeArgumentReportsAndGivesZero) {
    const CapturedReports reports;
    EXPECT_EQ(mnd::factln(-1), 0.0);
    EXPECT_EQ(reports.all(), one_error("factln(int n) negative factorial: setting it to zero"));
}

TEST(Factlnl, IsTheLogarithmOfTheFactorial) {
    for (int n = 0; n <= 300; ++n) {
        const auto expected = static_cast<double>(log_factorial(n));
        EXPECT_NEAR(static_cast<double>(mnd::factlnl(n)), expected, 2e-10 * std::max(1.0, expected)) << n;
    }
    EXPECT_EQ(mnd::factlnl(0), 0.0L);
    EXPECT_EQ(mnd::factlnl(1), 0.0L);
}

TEST(Factlnl, CachedAndRecomputedValuesAreThoseOfGammlnl) {
    for (const int n : {2, 100, 101}) {
        EXPECT_EQ(mnd::factlnl(n), mnd::gammlnl(n + 1.0)) << n;
        EXPECT_EQ(mnd::factlnl(n), mnd::gammlnl(n + 1.0)) << n << ", again";
    }
}

TEST(Factlnl, NegativeArgumentSpeaksOnStandardOutputOnly) {
    const CapturedReports reports;
    const CapturedOutput output;
    EXPECT_EQ(mnd::factlnl(-1), 0.0L);
    EXPECT_EQ(output.text(), "factlnl(int n) negative factorial: setting it to zero\n");
    EXPECT_EQ(reports.all(), kNoReport);
}

TEST(Factorial, IsTheSumOfLogarithms) {
    EXPECT_EQ(mnd::factorial(2.0F), std::log(2.0));
    EXPECT_NEAR(mnd::factorial(5.0F), std::log(120.0), 1e-14);
    EXPECT_NEAR(mnd::factorial(100.0F), static_cast<double>(log_factorial(100)), 1e-10);
}

TEST(Factorial, TakesTheWholePartAfterAddingATenth) {
    EXPECT_EQ(mnd::factorial(4.95F), mnd::factorial(5.0F));
    EXPECT_EQ(mnd::factorial(4.85F), mnd::factorial(4.0F));
}

TEST(Factorial, BelowTwoIsZero) {
    for (const float n : {1.0F, 0.0F, -7.0F, std::nanf("")})
        EXPECT_EQ(mnd::factorial(n), 0.0);
}

// P(1, x) = 1 - exp(-x); P(2, x) = 1 - (1 + x) exp(-x); P(1/2, x) = erf(sqrt(x)).
TEST(Gser, GivesTheIncompleteGammaFunction) {
    for (const float x : {0.1F, 0.9F, 1.4F}) {
        float p = 0.0F;
        float gln = 0.0F;
        mnd::gser(&p, 1.0F, x, &gln);
        EXPECT_NEAR(p, 1.0 - std::exp(-x), 1e-6);
        EXPECT_NEAR(gln, 0.0, 1e-6);
        mnd::gser(&p, 2.0F, x, &gln);
        EXPECT_NEAR(p, 1.0 - (1.0 + x) * std::exp(-x), 1e-6);
        mnd::gser(&p, 0.5F, x, &gln);
        EXPECT_NEAR(p, std::erf(std::sqrt(x)), 1e-6);
        EXPECT_NEAR(gln, 0.5 * std::log(3.14159265358979), 1e-6);
    }
}

TEST(Gser, ZeroArgumentGivesZeroSilently) {
    const CapturedReports reports;
    float p = 7.0F;
    float gln = 7.0F;
    mnd::gser(&p, 3.0F, 0.0F, &gln);
    EXPECT_EQ(p, 0.0F);
    EXPECT_NEAR(gln, std::log(2.0), 1e-6);
    EXPECT_EQ(reports.all(), kNoReport);
}

TEST(Gser, NegativeArgumentReportsAndGivesZero) {
    const CapturedReports reports;
    float p = 7.0F;
    float gln = 7.0F;
    mnd::gser(&p, 3.0F, -1.0F, &gln);
    EXPECT_EQ(p, 0.0F);
    EXPECT_EQ(reports.all(), one_error("gser() x less than 0"));
}

TEST(Gser, PastItsRoundsReportsAndLeavesTheOutput) {
    const CapturedReports reports;
    float p = 7.0F;
    float gln = 0.0F;
    mnd::gser(&p, 5000.0F, 5000.0F, &gln);
    EXPECT_EQ(p, 7.0F);
    EXPECT_NEAR(gln, std::lgamma(5000.0), 1e-2);
    EXPECT_EQ(reports.all(), one_error("gser() a too large, ITMAX too small "));
}

// Q(1, x) = exp(-x); Q(3, x) = (1 + x + x^2/2) exp(-x); Q(1/2, x) = erfc(sqrt(x)).
TEST(Gcf, GivesTheComplement) {
    for (const float x : {4.0F, 7.5F, 20.0F}) {
        float q = 0.0F;
        float gln = 0.0F;
        mnd::gcf(&q, 1.0F, x, &gln);
        EXPECT_NEAR(q / std::exp(-x), 1.0, 1e-5);
        mnd::gcf(&q, 3.0F, x, &gln);
        EXPECT_NEAR(q / ((1.0 + x + x * x / 2.0) * std::exp(-x)), 1.0, 1e-5);
        EXPECT_NEAR(gln, std::log(2.0), 1e-6);
        mnd::gcf(&q, 0.5F, x, &gln);
        EXPECT_NEAR(q / std::erfc(std::sqrt(x)), 1.0, 1e-5);
    }
}

TEST(Gcf, PastItsRoundsReportsAndStillWrites) {
    const CapturedReports reports;
    float q = 7.0F;
    float gln = 0.0F;
    mnd::gcf(&q, 50000.0F, 50001.0F, &gln);
    EXPECT_NE(q, 7.0F);
    EXPECT_EQ(reports.all(), one_error("gcf() a too large, ITMAX too small in gcf"));
}

// Percentage points of printed chi-square tables.
TEST(ProbOfChiSq, GivesTheTabledPercentagePoints) {
    struct Point {
        float df, chi2, p;
    };
    for (const Point& t :
         {Point{1.0F, 3.841459F, 0.05F}, Point{1.0F, 6.634897F, 0.01F}, Point{2.0F, 5.991465F, 0.05F},
          Point{5.0F, 1.145476F, 0.95F}, Point{10.0F, 18.307038F, 0.05F}, Point{30.0F, 20.599235F, 0.90F},
          Point{100.0F, 124.342113F, 0.05F}}) {
        EXPECT_NEAR(mnd::Prob_of_chi_sq(t.df, t.chi2), t.p, 3e-6) << t.df << " df";
    }
}

// Even df have closed tails: exp(-x) and exp(-x) (1 + x), x = chi2 / 2; on both sides of
// x = a + 1, where the series gives way to the continued fraction.
TEST(ProbOfChiSq, MatchesClosedFormsOnBothBranches) {
    for (float chi2 = 0.25F; chi2 < 30.0F; chi2 += 0.25F) {
        const double x = chi2 / 2.0;
        EXPECT_NEAR(mnd::Prob_of_chi_sq(2.0F, chi2), std::exp(-x), 1e-6) << chi2;
        EXPECT_NEAR(mnd::Prob_of_chi_sq(4.0F, chi2), std::exp(-x) * (1.0 + x), 1e-6) << chi2;
    }
}

// Below x = a + 1 the value is that of the series, from there on that of the continued fraction:
// they differ in the last digits of single precision.
TEST(ProbOfChiSq, ChangesItsMethodAtOneAboveHalfTheDegreesOfFreedom) {
    int distinct_at = 0;
    int distinct_below = 0;
    for (int df = 1; df <= 60; ++df) {
        const float a = static_cast<float>(df) / 2.0F;
        const float at = a + 1.0F;
        const float below = std::nextafter(at, 0.0F);
        float series = 0.0F;
        float fraction = 0.0F;
        float gln = 0.0F;
        mnd::gser(&series, a, at, &gln);
        mnd::gcf(&fraction, a, at, &gln);
        EXPECT_EQ(mnd::Prob_of_chi_sq(2.0F * a, 2.0F * at), fraction) << df;
        distinct_at += fraction != 1.0F - series ? 1 : 0;
        mnd::gser(&series, a, below, &gln);
        mnd::gcf(&fraction, a, below, &gln);
        EXPECT_EQ(mnd::Prob_of_chi_sq(2.0F * a, 2.0F * below), 1.0F - series) << df;
        distinct_below += fraction != 1.0F - series ? 1 : 0;
    }
    EXPECT_GT(distinct_at, 0);
    EXPECT_GT(distinct_below, 0);
}

TEST(ProbOfChiSq, ZeroIsCertain) {
    EXPECT_EQ(mnd::Prob_of_chi_sq(3.0F, 0.0F), 1.0F);
}

TEST(ProbOfChiSq, NegativeArgumentReportsAndGivesMinusOne) {
    const CapturedReports reports;
    EXPECT_EQ(mnd::Prob_of_chi_sq(1.0F, -1.0F), -1.0F);
    EXPECT_EQ(reports.all(), one_error("Prob_of_chi_sq()  invalid arguments"));
}

TEST(ProbOfChiSq, NoDegreesOfFreedomGiveMinusOneSilently) {
    const CapturedReports reports;
    EXPECT_EQ(mnd::Prob_of_chi_sq(0.0F, 1.0F), -1.0F);
    EXPECT_EQ(mnd::Prob_of_chi_sq(-2.0F, 1.0F), -1.0F);
    EXPECT_EQ(reports.all(), kNoReport);
}

TEST(ProbOfChiSq, UnsettledSeriesReportsAndGivesOne) {
    const CapturedReports reports;
    EXPECT_EQ(mnd::Prob_of_chi_sq(10000.0F, 10000.0F), 1.0F);
    EXPECT_EQ(reports.all(), one_error("gser() a too large, ITMAX too small "));
}

float cosine(float x) {
    return std::cos(x);
}
float cubic(float x) {
    return x * x * x - 2.0F * x - 5.0F;
}
float line(float x) {
    return 3.0F * x - 1.5F;
}
float above_zero(float x) {
    return x * x + 1.0F;
}
float sign(float x) {
    return x < 0.0F ? -1.0F : 1.0F;
}
float identity(float x) {
    return x;
}

int evaluations = 0;
float counted_cosine(float x) {
    ++evaluations;
    return cosine(x);
}
float counted_sign(float x) {
    ++evaluations;
    return sign(x);
}

TEST(Zbrent, FindsKnownRoots) {
    const CapturedReports reports;
    EXPECT_NEAR(mnd::zbrent(cosine, 0.0F, 3.0F, 1e-6F), 1.5707964F, 2e-6F);
    EXPECT_NEAR(mnd::zbrent(cosine, 3.0F, 0.0F, 1e-6F), 1.5707964F, 2e-6F);
    EXPECT_NEAR(mnd::zbrent(cubic, 2.0F, 3.0F, 1e-6F), 2.0945515F, 2e-6F);  // Wallis 1685
    EXPECT_NEAR(mnd::zbrent(line, -10.0F, 10.0F, 1e-6F), 0.5F, 1e-6F);
    EXPECT_EQ(reports.all(), kNoReport);
}

TEST(Zbrent, RootAtAnEndIsReturnedAtOnce) {
    const CapturedReports reports;
    EXPECT_EQ(mnd::zbrent(identity, -1.0F, 0.0F, 1e-6F), 0.0F);
    EXPECT_EQ(mnd::zbrent(identity, 0.0F, 1.0F, 1e-6F), 0.0F);
    EXPECT_EQ(reports.all(), kNoReport);
}

// Halving 3 down to 1e-6 takes 22 steps; interpolation on a smooth function a third of that.
TEST(Zbrent, InterpolatesSmoothFunctions) {
    evaluations = 0;
    EXPECT_NEAR(mnd::zbrent(counted_cosine, 0.0F, 3.0F, 1e-6F), 1.5707964F, 2e-6F);
    EXPECT_LE(evaluations, 9);
    evaluations = 0;
    EXPECT_NEAR(mnd::zbrent(counted_cosine, 3.0F, 0.0F, 1e-6F), 1.5707964F, 2e-6F);
    EXPECT_LE(evaluations, 9);
}

TEST(Zbrent, KeepsToItsTolerance) {
    for (const float tol : {1e-1F, 1e-2F, 1e-4F}) {
        EXPECT_NEAR(mnd::zbrent(cosine, 0.0F, 3.0F, tol), 1.5707964F, tol);
    }
}

TEST(Zbrent, UnbracketedRootReportsAndCarriesOn) {
    const CapturedReports reports;
    const float x = mnd::zbrent(above_zero, 1.0F, 2.0F, 1e-3F);
    ASSERT_FALSE(reports.all().empty());
    EXPECT_EQ(reports.all().front(), one_error("zbrent() root must be bracketed in zbrent").front());
    EXPECT_TRUE(std::isfinite(x));
}

// A jump at 0 between -1 and 0: the bracket halves towards 0, whose relative tolerance
// vanishes with it, so 100 halvings do not settle; each end is then 2^-100 or less away.
TEST(Zbrent, PastItsRoundsReportsAndReturnsTheBestAbscissa) {
    const CapturedReports reports;
    evaluations = 0;
    const float x = mnd::zbrent(counted_sign, -1.0F, 1.0F, 0.0F);
    EXPECT_EQ(evaluations, 2 + 100);
    EXPECT_EQ(reports.all(), one_error("zbrent() maximum number of iterations exceeded in zbrent"));
    EXPECT_LT(std::fabs(x), 1e-28F);
}

}  // namespace
