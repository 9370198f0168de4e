#include "simulation/gamma_rates.h"

#include <gtest/gtest.h>

#include <numeric>

#include "support/seeded_stream.h"

namespace {

class GammaRatesTest : public mnd_test::SeededStream {};

double sum(const mnd::GammaRates& g) {
    return std::accumulate(g.rates.begin(), g.rates.end(), 0.0);
}

TEST_F(GammaRatesTest, AreGammaDeviatesOverTheirSum) {
    mnd::GammaRates g;
    g.build(5, 0.7, 0.0, 1.0);
    const double after = next();
    seed();
    double deviates[5];
    double total = 0.0;
    for (double& x : deviates)
        total += x = mnd::gamma_dev(0.7);
    EXPECT_EQ(next(), after);  // the same draws
    ASSERT_EQ(g.rates.size(), 5U);
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(g.rates[i], deviates[i] / total);
    EXPECT_NEAR(sum(g), 1.0, 1e-15);
}

TEST_F(GammaRatesTest, NewRatesAreDrawnEachTime) {
    mnd::GammaRates g;
    g.build(4, 1.5, 0.0, 1.0);
    const auto before = g.rates;
    g.get_new_rates();
    EXPECT_NE(g.rates, before);
    EXPECT_NEAR(sum(g), 1.0, 1e-15);
}

// 1 + (int)(10 * 0.25) = 3 sites of rate 4, 7 of rate 1: the sum is 19.
TEST_F(GammaRatesTest, WithoutAShapeAShareOfTheSitesHasTheOtherRate) {
    for (const double a : {0.0, -1.0}) {
        mnd::GammaRates g;
        g.build(10, a, 0.25, 4.0);
        for (std::size_t i = 0; i < 10; ++i)
            EXPECT_EQ(g.rates[i], (i < 3 ? 4.0 : 1.0) / 19.0);
    }
    const double after = next();
    seed();
    EXPECT_EQ(next(), after);  // no draws
}

TEST_F(GammaRatesTest, AShareOfAllSitesStaysWithinThem) {
    mnd::GammaRates g;
    g.build(3, 0.0, 1.0, 7.0);
    for (const double rate : g.rates)
        EXPECT_NEAR(rate, 1.0 / 3.0, 1e-15);
    g.build(3, 0.0, 1e300, 7.0);
    EXPECT_NEAR(sum(g), 1.0, 1e-15);
    g.build(0, 0.0, 0.5, 7.0);
    EXPECT_TRUE(g.rates.empty());
    g.build(1, 0.0, 1.0, 0.0);
    EXPECT_EQ(g.rates[0], 0.0);
}

}  // namespace
