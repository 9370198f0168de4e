#include "foundation/random.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#include "support/captured_reports.h"
#include "support/seeded_stream.h"

namespace {

using mnd_test::CapturedOutput;
using mnd_test::CapturedReports;
using mnd_test::Report;
using mnd_test::ScratchDirectory;

void seed_with(long seed) {
    long idum = seed;
    mnd::ran3(&idum);
}

// The generator as it is told: one slot a step, two running indices.
class PlainGenerator {
public:
    explicit PlainGenerator(long long seed) {
        long long mj = (161803398LL - std::llabs(seed)) % 1000000000LL;
        long long mk = 1;
        ma_[55] = mj;
        for (int i = 1; i <= 54; ++i) {
            const int ii = (21 * i) % 55;
            ma_[ii] = mk;
            mk = mj - mk;
            if (mk < 0) mk += 1000000000LL;
            mj = ma_[ii];
        }
        for (int k = 1; k <= 4; ++k) {
            for (int i = 1; i <= 55; ++i) {
                ma_[i] -= ma_[1 + (i + 30) % 55];
                if (ma_[i] < 0) ma_[i] += 1000000000LL;
            }
        }
    }
    double next() {
        if (++inext_ == 56) inext_ = 1;
        if (++inextp_ == 56) inextp_ = 1;
        long long mj = ma_[inext_] - ma_[inextp_];
        if (mj < 0) mj += 1000000000LL;
        ma_[inext_] = mj;
        return static_cast<double>(mj) * 1e-9;
    }

private:
    long long ma_[56] = {};
    int inext_ = 0;
    int inextp_ = 31;
};

class Ran3 : public mnd_test::SeededStream {};
class Deviates : public mnd_test::SeededStream {};
class Shuffles : public mnd_test::SeededStream {};

// Numbers that `draw` takes from the stream.
template <typename Draw>
std::uint64_t draws_of(Draw draw) {
    mnd::reset_draws_taken();
    draw();
    return mnd::draws_taken();
}

// Largest distance between the empirical distribution of a sample and `cdf`, times sqrt(n).
// Kolmogorov: above 1.95 once in a thousand samples.
double kolmogorov_statistic(std::vector<double> sample, const std::function<double(double)>& cdf) {
    std::sort(sample.begin(), sample.end());
    const auto n = static_cast<double>(sample.size());
    double distance = 0.0;
    for (std::size_t i = 0; i < sample.size(); ++i) {
        const double p = cdf(sample[i]);
        const auto rank = static_cast<double>(i);
        distance = std::max({distance, p - rank / n, (rank + 1.0) / n - p});
    }
    return distance * std::sqrt(n);
}

template <typename Draw>
std::vector<double> sample_of(int n, Draw draw) {
    std::vector<double> sample(static_cast<std::size_t>(n));
    std::generate(sample.begin(), sample.end(), draw);
    return sample;
}

// Distribution function of the gamma law of whole order: 1 - sum of Poisson terms.
double erlang_cdf(int order, double x) {
    double term = std::exp(-x);
    double sum = 0.0;
    for (int k = 0; k < order; ++k) {
        sum += term;
        term *= x / (k + 1);
    }
    return 1.0 - sum;
}

// Numbers of an independent implementation in integers of unlimited size (Python).
TEST_F(Ran3, GivesTheKnownNumbersOfASeed) {
    struct Known {
        long seed;
        std::array<long, 3> first;
        long number_1000;
        long number_2000;
    };
    const Known known[] = {{-12345, {860606660, 925464728, 418061483}, 961992332, 747883593},
                           {-1, {298227348, 715119168, 33021107}, 451596420, 716200241},
                           {-161803398, {613610054, 771029073, 127708320}, 22430551, 584312842}};
    for (const Known& k : known) {
        std::vector<double> u(2000);
        long idum = k.seed;
        u[0] = mnd::ran3(&idum);
        EXPECT_EQ(idum, 1);
        std::generate(u.begin() + 1, u.end(), next);
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_EQ(u[i], static_cast<double>(k.first[i]) * 1e-9);
        EXPECT_EQ(u[999], static_cast<double>(k.number_1000) * 1e-9);
        EXPECT_EQ(u[1999], static_cast<double>(k.number_2000) * 1e-9);
    }
}

TEST_F(Ran3, FollowsThePlainGeneratorForManySeeds) {
    for (const long seed : {-1L, -2L, -54L, -55L, -1000L, -12345L, -99999999L, -161803397L, -161803398L}) {
        PlainGenerator plain(seed);
        long idum = seed;
        ASSERT_EQ(mnd::ran3(&idum), plain.next()) << seed;
        for (int i = 1; i < 700; ++i)
            ASSERT_EQ(next(), plain.next()) << "seed " << seed << " draw " << i;
    }
}

TEST_F(Ran3, StaysInTheHalfOpenUnitInterval) {
    for (int i = 0; i < 200000; ++i) {
        const double u = next();
        ASSERT_GE(u, 0.0);
        ASSERT_LT(u, 1.0);
    }
}

TEST_F(Ran3, IsUniform) {
    const double statistic = kolmogorov_statistic(sample_of(100000, next), [](double u) { return u; });
    EXPECT_LT(statistic, 1.95);
}

TEST_F(Ran3, SeedOfExactlyMinusMSEEDStillFillsTheTable) {
    seed_with(-161803398);
    std::vector<double> u = sample_of(110, next);
    std::sort(u.begin(), u.end());
    EXPECT_EQ(std::unique(u.begin(), u.end()), u.end());
}

TEST_F(Ran3, NonNegativeArgumentNeverReseeds) {
    PlainGenerator plain(-12345);
    plain.next();
    for (const long dummy : {0L, 1L, 3L, 161803398L}) {
        long idum = dummy;
        EXPECT_EQ(mnd::ran3(&idum), plain.next());
        EXPECT_EQ(idum, dummy);
    }
}

TEST_F(Ran3, CallWithoutArgumentTakesTheNextNumber) {
    PlainGenerator plain(-12345);
    plain.next();
    EXPECT_EQ(mnd::ran3(), plain.next());
    EXPECT_EQ(next(), plain.next());
}

TEST_F(Ran3, UnseededStreamSeedsItselfFromTheArgument) {
    mnd::uniform_stream = mnd::UniformStream{};
    long idum = 7;
    PlainGenerator plain(7);
    EXPECT_EQ(mnd::ran3(&idum), plain.next());
    EXPECT_EQ(idum, 1);
}

TEST_F(Ran3, UnseededStreamWithoutArgumentSeedsItselfFromOne) {
    mnd::uniform_stream = mnd::UniformStream{};
    PlainGenerator plain(1);
    EXPECT_EQ(mnd::ran3(), plain.next());
}

// |seed| above MSEED gives a negative start, and numbers of 1.0 and more: independent
// integers put the first of them at draws 10 and 17 of seed -999999999.
TEST_F(Ran3, ReportsAStrangeNumberAndReturnsIt) {
    seed_with(-999999999);
    for (int i = 2; i < 10; ++i)
        EXPECT_LT(next(), 1.0);
    const CapturedOutput output;
    EXPECT_EQ(next(), 2910732586 * 1e-9);
    EXPECT_EQ(output.text(), " ** strange ran3:2.91073");
}

TEST_F(Ran3, BlockReportsAStrangeNumberToo) {
    seed_with(-999999999);
    double u[16];
    const CapturedOutput output;
    mnd::ran3_block(u, 16);
    EXPECT_EQ(u[8], 2910732586 * 1e-9);
    EXPECT_EQ(output.text(), " ** strange ran3:2.91073 ** strange ran3:4.84572");
}

TEST_F(Ran3, SeedOfAnySizeIsDefined) {
    const CapturedOutput output;
    for (const long seed : {LONG_MIN, LONG_MIN + 1, -2000000000L}) {
        seed_with(seed);
        for (int i = 0; i < 20000; ++i)
            next();
    }
    EXPECT_NE(output.text(), "");
}

TEST_F(Ran3, BlockGivesTheSameNumbersInTheSameOrder) {
    for (const int size : {1, 2, 23, 24, 54, 55, 56, 110, 1000}) {
        for (const int offset : {0, 1, 30, 54}) {
            seed();
            for (int i = 0; i < offset; ++i)
                next();
            std::vector<double> one_by_one = sample_of(size + 1, next);
            seed();
            for (int i = 0; i < offset; ++i)
                next();
            std::vector<double> block(static_cast<std::size_t>(size));
            mnd::ran3_block(block.data(), size);
            block.push_back(next());
            ASSERT_EQ(block, one_by_one) << "size " << size << " offset " << offset;
        }
    }
}

TEST_F(Ran3, EmptyBlockLeavesTheStream) {
    const double first = next();
    seed();
    mnd::ran3_block(nullptr, 0);
    mnd::ran3_block(nullptr, -3);
    EXPECT_EQ(next(), first);
}

TEST_F(Ran3, CountsItsDraws) {
#ifdef MENDCORE_COUNT_DRAWS
    EXPECT_EQ(draws_of([] {
                  seed();
                  next();
                  double u[100];
                  mnd::ran3_block(u, 100);
              }),
              102U);
#else
    EXPECT_EQ(draws_of(next), 0U);
#endif
}

TEST_F(Ran3, NegativeSeedInitialisesAndSaysSo) {
    const ScratchDirectory here("mendcore_random_negative_seed");
    const CapturedOutput output;
    mnd::initialize_ran3(-4711);
    PlainGenerator plain(-4711);
    plain.next();
    EXPECT_EQ(next(), plain.next());
    EXPECT_EQ(output.text(), "Random generator initialized with seed=-4711\n");
    EXPECT_FALSE(std::filesystem::exists("randseed.txt"));
}

TEST_F(Ran3, LargestSeedIsAccepted) {
    const CapturedReports reports;
    const CapturedOutput output;
    mnd::initialize_ran3(-161803398);
    EXPECT_EQ(output.text(), "Random generator initialized with seed=-161803398\n");
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(Ran3, ClockSeedIsPrintedAndLeftInItsFile) {
    const ScratchDirectory here("mendcore_random_clock_seed");
    std::ofstream("randseed.txt") << "an older and much longer content of the file, to be truncated away\n";
    std::string printed;
    {
        const CapturedOutput output;
        mnd::initialize_ran3(1);
        printed = output.text();
    }
    std::ostringstream left;
    left << std::ifstream("randseed.txt").rdbuf();
    EXPECT_EQ(left.str(), printed);

    const std::string text = "Random number generator initialized with lidum=";
    ASSERT_EQ(printed.substr(0, text.size()), text);
    ASSERT_EQ(printed.back(), '\n');
    const long lidum = std::stol(printed.substr(text.size()));
    ASSERT_LT(lidum, 0);
    const double after = next();
    seed_with(lidum);
    EXPECT_EQ(next(), after);
}

TEST_F(Ran3, TooLargeSeedWarnsAndTakesAClockSeedSilently) {
    const ScratchDirectory here("mendcore_random_large_seed");
    const CapturedReports reports;
    const CapturedOutput output;
    mnd::initialize_ran3(-161803399);
    const std::vector<Report> expected = {{mnd::Warning, "initialize_ran3(const int seed) ", 181}};
    EXPECT_EQ(reports.all(), expected);
    EXPECT_EQ(output.text(), "");
    EXPECT_FALSE(std::filesystem::exists("randseed.txt"));
    PlainGenerator refused(-161803399);
    refused.next();
    EXPECT_NE(next(), refused.next());
}

// With r = 383: 123456 x 789 + (5000 - 383) 383 = 97406784 + 1768311 = 99175095,
// modulo 1999617: 99175095 - 49 x 1999617 = 1193862.
TEST(ClockSeed, FollowsItsFormula) {
    EXPECT_EQ(mnd::clock_seed(5000.0, 123456, 789), 1193862);
}

TEST(ClockSeed, TruncatesTowardsZeroBelowZero) {
    EXPECT_EQ(mnd::clock_seed(0.0, 0, 0), -146689);
}  // -383^2

TEST(ClockSeed, FailedClockIsDefined) {
    const auto failed = static_cast<double>(ULONG_MAX);
    EXPECT_EQ(mnd::clock_seed(failed, 1, 1), mnd::clock_seed(failed, 1, 1));
}

TEST_F(Ran3, IdenticalClockValuesGiveIdenticalStreams) {
    const auto stream_of_tick = [] {
        seed_with(-mnd::clock_seed(5000.0, 123456, 789));
        return sample_of(100, next);
    };
    EXPECT_EQ(stream_of_tick(), stream_of_tick());
}

TEST_F(Ran3, MyRandTakesNothingFromTheStream) {
    const double first = next();
    seed();
    EXPECT_LT(std::labs(mnd::my_rand()), 1999617);
    EXPECT_EQ(next(), first);
}

// The first numbers of seed -1 after the seeding one: 0.715119168, 0.033021107, 0.8743936.
TEST_F(Deviates, RandLongTruncatesTheProduct) {
    seed_with(-1);
    long n = 10;
    EXPECT_EQ(mnd::rand_long(&n), 7);
    EXPECT_EQ(mnd::rand_long(&n), 0);
    EXPECT_EQ(mnd::rand_long(&n), 8);
    EXPECT_EQ(n, 10);
}

TEST_F(Deviates, RandLongOfOneIsZero) {
    long n = 1;
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(mnd::rand_long(&n), 0);
}

// A number of exactly 1, as a seed out of range may give, would be one too many.
TEST_F(Deviates, RandLongStaysBelowItsArgument) {
    mnd::uniform_stream.inext = 0;
    mnd::uniform_stream.ma[1] = mnd::MBIG;
    const CapturedOutput output;  // the number is reported
    long n = 7;
    EXPECT_EQ(mnd::rand_long(&n), 6);
}

TEST_F(Deviates, RandLongReachesEveryValueEvenly) {
    constexpr int kDraws = 70000;
    std::array<int, 7> count{};
    for (int i = 0; i < kDraws; ++i) {
        long n = 7;
        ++count.at(static_cast<std::size_t>(mnd::rand_long(&n)));
    }
    const double sd = std::sqrt(kDraws * (1.0 / 7.0) * (6.0 / 7.0));
    for (const int c : count)
        EXPECT_NEAR(c, kDraws / 7.0, 4.0 * sd);
}

TEST_F(Deviates, RandLongHandsANegativeArgumentToTheSeeding) {
    long n = -5;
    mnd::rand_long(&n);
    EXPECT_EQ(n, 1);
    PlainGenerator plain(-5);
    plain.next();
    EXPECT_EQ(next(), plain.next());
}

TEST_F(Deviates, BootstrapIndexDrawsWithReplacement) {
    seed_with(-1);
    int index[3] = {-1, -1, -1};
    const int n = 3;
    mnd::bootstrap_index(index, n);  // 3 x 0.715, 3 x 0.033, 3 x 0.874
    EXPECT_EQ(index[0], 2);
    EXPECT_EQ(index[1], 0);
    EXPECT_EQ(index[2], 2);
}

// Seed -1, after the seeding number: m = 4, 4 x 0.715 -> 2, exchange a[2], a[3]: 0 1 3 2;
// m = 3, 3 x 0.033 -> 0, exchange a[0], a[2]: 3 1 0 2; m = 2, 2 x 0.874 -> 1, itself; m = 1.
TEST_F(Shuffles, PermuteGoesFromTheLastElementDown) {
    seed_with(-1);
    int a[4] = {0, 1, 2, 3};
    mnd::permute(a, 4);
    EXPECT_EQ((std::vector<int>(a, a + 4)), (std::vector<int>{3, 1, 0, 2}));
}

TEST_F(Shuffles, PermuteDrawsOneNumberPerElement) {
    for (int i = 0; i < 5; ++i)
        next();
    const double sixth = next();
    seed();
    int a[5] = {0, 1, 2, 3, 4};
    mnd::permute(a, 5);
    EXPECT_EQ(next(), sixth);
}

TEST_F(Shuffles, PermuteOfNothingDrawsNothing) {
    const double first = next();
    seed();
    mnd::permute(nullptr, 0);
    EXPECT_EQ(next(), first);
}

TEST_F(Shuffles, PermuteGivesEveryOrderEvenly) {
    constexpr int kShuffles = 24000;
    std::vector<int> count(27, 0);
    for (int i = 0; i < kShuffles; ++i) {
        int a[3] = {0, 1, 2};
        mnd::permute(a, 3);
        ++count[static_cast<std::size_t>(9 * a[0] + 3 * a[1] + a[2])];
    }
    const double sd = std::sqrt(kShuffles * (1.0 / 6.0) * (5.0 / 6.0));
    int orders = 0;
    for (const int c : count) {
        if (c == 0) continue;
        ++orders;
        EXPECT_NEAR(c, kShuffles / 6.0, 4.0 * sd);
    }
    EXPECT_EQ(orders, 6);
}

// u = 0.715119168: log(1 - u) / log(0.9) = -1.255684 / -0.105361 = 11.918.
TEST_F(Deviates, ExpdevTruncatesTheQuotient) {
    seed_with(-1);
    EXPECT_EQ(mnd::expdev(0.1), 11);
}

TEST_F(Deviates, ExpdevCountsFailures) {
    constexpr int kDraws = 100000;
    const double p = 0.2;
    double sum = 0.0;
    for (int i = 0; i < kDraws; ++i)
        sum += mnd::expdev(p);
    const double sd = std::sqrt((1.0 - p) / (p * p) / kDraws);
    EXPECT_NEAR(sum / kDraws, (1.0 - p) / p, 4.0 * sd);
}

TEST_F(Deviates, ExpdevHasNoGuardAndAlwaysDraws) {
    next();
    const double second = next();
    for (const double p : {0.0, 1.0, 0.5, 1e-12, 2.0}) {
        seed();
        mnd::expdev(p);
        EXPECT_EQ(next(), second) << p;
    }
}

TEST_F(Deviates, ExpdevOfTheLimitsIsDefined) {
    EXPECT_EQ(mnd::expdev(0.0), INT_MAX);
    EXPECT_EQ(mnd::expdev(1e-300), INT_MAX);
    EXPECT_EQ(mnd::expdev(1.0), 0);
    EXPECT_EQ(mnd::expdev(2.0), 0);
}

// u = 0.715119168: log(u) / log(0.9) = -0.335306 / -0.105361 = 3.182.
TEST_F(Deviates, GeometricTakesTheFloorOfTheQuotient) {
    seed_with(-1);
    EXPECT_EQ(mnd::geometric(0.9), 3);
}

TEST_F(Deviates, GeometricCountsSuccesses) {
    constexpr int kDraws = 100000;
    const double p = 0.7;
    double sum = 0.0;
    for (int i = 0; i < kDraws; ++i)
        sum += mnd::geometric(p);
    const double sd = std::sqrt(p / ((1.0 - p) * (1.0 - p)) / kDraws);
    EXPECT_NEAR(sum / kDraws, p / (1.0 - p), 4.0 * sd);
}

TEST_F(Deviates, GeometricOfTheLimitsLeavesTheStream) {
    const double first = next();
    seed();
    EXPECT_EQ(mnd::geometric(1.0), 0);
    EXPECT_EQ(mnd::geometric(0.0), 0);
    EXPECT_EQ(mnd::geometric(9e-11), 0);
    EXPECT_EQ(mnd::geometric(-1.0), 0);
    EXPECT_EQ(next(), first);
}

TEST_F(Deviates, GeometricAtItsThresholdDraws) {
    next();
    const double second = next();
    seed();
    EXPECT_EQ(mnd::geometric(1e-10), 0);
    EXPECT_EQ(next(), second);
}

TEST_F(Deviates, IgammaBelowOneIsZeroAndDrawsNothing) {
    const double first = next();
    seed();
    EXPECT_EQ(mnd::igamma_dev(0), 0.0);
    EXPECT_EQ(mnd::igamma_dev(-4), 0.0);
    EXPECT_EQ(next(), first);
}

TEST_F(Deviates, IgammaBelowSixIsTheLogOfAProduct) {
    for (int order = 1; order < 6; ++order) {
        seed();
        double product = 1.0;
        for (int i = 0; i < order; ++i)
            product *= next();
        const double after = next();
        seed();
        EXPECT_EQ(mnd::igamma_dev(order), -std::log(product));
        EXPECT_EQ(next(), after);
    }
}

TEST_F(Deviates, IgammaHasTheLawOfItsOrder) {
    for (const int order : {1, 3, 5, 6, 7, 20}) {
        const auto sample = sample_of(20000, [order] { return mnd::igamma_dev(order); });
        EXPECT_LT(kolmogorov_statistic(sample, [order](double x) { return erlang_cdf(order, x); }), 1.95)
            << order;
    }
}

// Tries of the rejection take two numbers while the point lies outside the disc or x is not
// positive, and one more for the comparison: followed here with the numbers of the stream.
TEST_F(Deviates, IgammaOfSixDrawsItsUniformBeforeTheComparison) {
    for (int round = 0; round < 200; ++round) {
        seed_with(-1000 - round);
        double x = 0.0;
        for (bool accepted = false; !accepted;) {
            const double w = 2.0 * next() - 1.0;
            const double z = 2.0 * next() - 1.0;
            if (w * w + z * z > 1.0) continue;
            const double y = z / w;
            x = std::sqrt(2.0 * 5.0 + 1.0) * y + 5.0;
            if (x <= 0.0) continue;
            accepted = next() <= (1.0 + y * y) * std::exp(5.0 * std::log(x / 5.0) - std::sqrt(11.0) * y);
        }
        const double after = next();
        seed_with(-1000 - round);
        EXPECT_EQ(mnd::igamma_dev(6), x);
        EXPECT_EQ(next(), after);
    }
}

TEST_F(Deviates, GammaOfNothingPositiveIsZeroAndDrawsNothing) {
    const double first = next();
    seed();
    EXPECT_EQ(mnd::gamma_dev(0.0), 0.0);
    EXPECT_EQ(mnd::gamma_dev(-2.5), 0.0);
    EXPECT_EQ(mnd::gamma_dev(std::nan("")), 0.0);
    EXPECT_EQ(next(), first);
}

TEST_F(Deviates, GammaOfWholeOrderIsIgammaAlone) {
    const double expected = mnd::igamma_dev(3);
    const double after = next();
    seed();
    EXPECT_EQ(mnd::gamma_dev(3.0), expected);
    EXPECT_EQ(next(), after);
}

// Order 1/2 by hand: p = u b with b = (1/2 + e)/e; below 1 x = p^2 against exp(-x), else
// x = -log(2 (b - p)) against x^(-1/2).
TEST_F(Deviates, GammaOfOneHalfUsesOnlyTheRejection) {
    constexpr double e = 2.718281828459;
    const double b = (0.5 + e) / e;
    for (int round = 0; round < 200; ++round) {
        seed_with(-5000 - round);
        double x = 0.0;
        double q = 0.0;
        double v = 1.0;
        while (q < v) {
            const double p = next() * b;
            v = next();
            x = p <= 1.0 ? p * p : -std::log((b - p) / 0.5);
            q = p <= 1.0 ? std::exp(-x) : 1.0 / std::sqrt(x);
        }
        const double after = next();
        seed_with(-5000 - round);
        EXPECT_NEAR(mnd::gamma_dev(0.5), x, 1e-14 * x);
        EXPECT_EQ(next(), after);
    }
}

// Half a squared normal deviate: P(X <= x) = erf(sqrt(x)).
TEST_F(Deviates, GammaOfOneHalfHasItsLaw) {
    const auto sample = sample_of(20000, [] { return mnd::gamma_dev(0.5); });
    EXPECT_LT(kolmogorov_statistic(sample, [](double x) { return std::erf(std::sqrt(x)); }), 1.95);
}

// P(a + 1, x) = P(a, x) - x^a e^-x / gamma(a + 1), from order 1/2 up.
TEST_F(Deviates, GammaOfMixedOrderHasItsLaw) {
    for (const int whole : {1, 2, 7}) {
        const auto cdf = [whole](double x) {
            double p = std::erf(std::sqrt(x));
            for (int k = 0; k < whole; ++k)
                p -= std::exp((k + 0.5) * std::log(x) - x - std::lgamma(k + 1.5));
            return p;
        };
        const auto sample = sample_of(20000, [whole] { return mnd::gamma_dev(whole + 0.5); });
        EXPECT_LT(kolmogorov_statistic(sample, cdf), 1.95) << whole;
    }
}

TEST_F(Deviates, GammaOfMixedOrderDrawsTheWholePartFirst) {
    for (const double whole : {2.0, 6.0}) {
        const double waiting_time = mnd::igamma_dev(static_cast<int>(whole));
        const double rest = mnd::gamma_dev(0.5);
        const double after = next();
        seed();
        EXPECT_EQ(mnd::gamma_dev(whole + 0.5), rest + waiting_time);
        EXPECT_EQ(next(), after);
        seed();
    }
}

TEST_F(Deviates, GammaOfInfiniteOrderEnds) {
    EXPECT_GT(mnd::gamma_dev(HUGE_VAL), 0.0);
    EXPECT_GT(mnd::gamma_dev(1e12), 0.0);
}

float poisson(double mean) {
    long idum = 1;
    return mnd::poidev(static_cast<float>(mean), &idum);
}

TEST_F(Deviates, PoissonBelowTwelveDrawsTheResultPlusOne) {
    for (int i = 0; i < 200; ++i) {
        seed_with(-100 - i);
        const int em = static_cast<int>(poisson(3.5));
        const double after = next();
        seed_with(-100 - i);
        double product = 1.0;
        for (int k = 0; k < em; ++k)
            product *= next();
        EXPECT_GT(product, std::exp(-3.5));
        EXPECT_LE(product * next(), std::exp(-3.5));
        EXPECT_EQ(next(), after);
    }
}

TEST_F(Deviates, PoissonHasItsLaw) {
    constexpr int kDraws = 50000;
    for (const double mean : {0.3, 4.0, 11.9, 12.0, 30.0, 200.0}) {
        double sum = 0.0;
        double squares = 0.0;
        for (int i = 0; i < kDraws; ++i) {
            const double k = poisson(mean);
            ASSERT_EQ(k, std::floor(k));
            sum += k;
            squares += (k - mean) * (k - mean);
        }
        EXPECT_NEAR(sum / kDraws, mean, 4.0 * std::sqrt(mean / kDraws)) << mean;
        // The variance of (k - mean)^2 is mean + 2 mean^2.
        EXPECT_NEAR(squares / kDraws, mean, 4.0 * std::sqrt((mean + 2.0 * mean * mean) / kDraws)) << mean;
    }
}

TEST_F(Deviates, PoissonOfTwelveHasItsFrequencies) {
    constexpr int kDraws = 100000;
    std::vector<int> count(60, 0);
    for (int i = 0; i < kDraws; ++i)
        ++count.at(static_cast<std::size_t>(poisson(12.0)));
    for (int k = 4; k <= 22; ++k) {
        const double p = std::exp(k * std::log(12.0) - 12.0 - std::lgamma(k + 1.0));
        EXPECT_NEAR(count[static_cast<std::size_t>(k)], kDraws * p, 4.5 * std::sqrt(kDraws * p * (1.0 - p)))
            << k;
    }
}

// Each proposal takes one number, and one that is not negative another for the comparison of
// the Poisson law with the Lorentzian: followed here with the numbers of the stream.
TEST_F(Deviates, PoissonFromTwelveUpDrawsProposalThenComparison) {
    for (const double mean : {12.0, 40.0}) {
        const double g = mean * std::log(mean) - std::lgamma(mean + 1.0);
        int negative = 0;
        int refused = 0;
        for (int round = 0; round < 3000; ++round) {
            seed_with(-9000 - round);
            double em = -1.0;
            for (bool accepted = false; !accepted;) {
                const double y = std::tan(3.141592654 * next());
                em = std::floor(std::sqrt(2.0 * mean) * y + mean);
                negative += em < 0.0 ? 1 : 0;
                if (em < 0.0) continue;
                const double log_ratio = em * std::log(mean) - std::lgamma(em + 1.0) - g;
                accepted = next() <= 0.9 * (1.0 + y * y) * std::exp(log_ratio);
                refused += accepted ? 0 : 1;
            }
            const double after = next();
            seed_with(-9000 - round);
            EXPECT_EQ(poisson(mean), em);
            EXPECT_EQ(next(), after);
        }
        EXPECT_GT(negative, 0);
        EXPECT_GT(refused, 0);
    }
}

TEST_F(Deviates, PoissonRecomputesItsConstantsAcrossTheThreshold) {
    const auto pass = [] {
        std::vector<float> values;
        for (const double mean : {5.0, 20.0, 5.0, 20.0, 20.0})
            values.push_back(poisson(mean));
        return values;
    };
    const std::vector<float> first = pass();
    seed();
    EXPECT_EQ(pass(), first);
}

TEST_F(Deviates, PoissonOfZeroAndBelowIsZero) {
    EXPECT_EQ(poisson(0.0), 0.0F);
    EXPECT_EQ(poisson(-3.0), 0.0F);
}

TEST_F(Deviates, PoissonOfAnImpossibleMeanEnds) {
    const double first = next();
    seed();
    EXPECT_EQ(poisson(HUGE_VAL), 0.0F);
    EXPECT_EQ(poisson(std::nan("")), 0.0F);
    EXPECT_EQ(next(), first);
    EXPECT_NEAR(poisson(1e30), 1e30F, 1e24F);
    EXPECT_NEAR(poisson(3e9), 3e9F, 1e6F);
}

}  // namespace
