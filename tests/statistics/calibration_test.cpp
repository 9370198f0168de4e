// Whether the checks of this suite let pass what is right and notice what is not.
#include "calibration.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "simulated_samples.h"

namespace {

using mnd_test::distance_from_uniform;
using mnd_test::PValues;

constexpr std::size_t kMany = 12000;

PValues drawn(const std::function<double(double)>& change, std::size_t n = kMany) {
    mnd_test::Simulation random(1);
    PValues v;
    v.test = "drawn";
    for (std::size_t i = 0; i < n; ++i)
        v.p.push_back(change(random.uniform()));
    return v;
}

TEST(Calibration, DistancesOfAFewValues) {
    // The steps of {0.1, 0.1, 0.8, 0.9}: 0.5 from 0.1 on, 0.75 from 0.8 on, 1 from 0.9 on. Above the
    // diagonal: 0.5 - 0.1. Below it, just before 0.8: 0.8 - 0.5.
    const auto d = distance_from_uniform({0.8, 0.1, 0.9, 0.1});
    EXPECT_NEAR(d.above, 0.4, 1e-12);
    EXPECT_NEAR(d.below, 0.3, 1e-12);
    EXPECT_NEAR(d.both(), 0.4, 1e-12);
}

TEST(Calibration, LimitsAreThoseOfTheBounds) {
    // exp(-2 N e^2) = 1e-6 for one side, twice that for both.
    const double one = mnd_test::one_sided_limit(kMany);
    const double two = mnd_test::two_sided_limit(kMany);
    EXPECT_NEAR(std::exp(-2.0 * kMany * one * one), 1e-6, 1e-12);
    EXPECT_NEAR(2.0 * std::exp(-2.0 * kMany * two * two), 1e-6, 1e-12);
    // 0.05 log(0.05 / 0.04) + 0.95 log(0.95 / 0.96) = 0.0111572 - 0.0099477.
    EXPECT_NEAR(mnd_test::divergence_of_shares(0.05, 0.04), 0.0012094, 1e-7);
    EXPECT_NEAR(mnd_test::divergence_of_shares(0.0, 0.5), std::log(2.0), 1e-12);
}

bool mentions(const std::string& faults, const char* part) {
    return faults.find(part) != std::string::npos;
}

TEST(Calibration, UniformValuesPass) {
    const PValues v = drawn([](double u) { return u; });
    EXPECT_EQ(faults_of_uniform(v), "");
    EXPECT_EQ(faults_of_valid(v), "");
}

TEST(Calibration, LargeValuesAreValidButNotUniform) {
    const PValues v = drawn([](double u) { return std::pow(u, 0.8); });
    EXPECT_TRUE(mentions(faults_of_uniform(v), "too large: distance"));
    EXPECT_EQ(faults_of_valid(v), "");
}

TEST(Calibration, SmallValuesAreNeither) {
    const PValues v = drawn([](double u) { return std::pow(u, 1.15); });
    EXPECT_TRUE(mentions(faults_of_uniform(v), "too small: distance"));
    EXPECT_TRUE(mentions(faults_of_valid(v), "too small: distance"));
}

// A fault of the tail alone, where the distance tells nothing: one P-value in a hundred is 0.
TEST(Calibration, SpuriousZeroesAreNoticed) {
    const PValues v = drawn([](double u) { return u >= 0.02 && u < 0.03 ? 0.0 : u; });
    EXPECT_LE(distance_from_uniform(v.p).both(), mnd_test::two_sided_limit(kMany));
    EXPECT_TRUE(mentions(faults_of_uniform(v), "share up to 0.01"));
    EXPECT_TRUE(mentions(faults_of_valid(v), "share up to 0.01"));
}

TEST(Calibration, MissingSmallValuesAreNotUniform) {
    const PValues v = drawn([](double u) { return u < 0.01 ? 0.02 : u; });
    EXPECT_LE(distance_from_uniform(v.p).both(), mnd_test::two_sided_limit(kMany));
    EXPECT_TRUE(mentions(faults_of_uniform(v), "share up to 0.01"));
    EXPECT_EQ(faults_of_valid(v), "");
}

// Two arrangements with equal chances: their P-values are 0.5 and 1, or 0 and 0.5 without the
// arrangement as observed.
TEST(Calibration, LeavingOutTiesIsNoticed) {
    EXPECT_EQ(faults_of_valid(drawn([](double u) { return u < 0.5 ? 0.5 : 1.0; })), "");
    EXPECT_TRUE(mentions(faults_of_valid(drawn([](double u) { return u < 0.5 ? 0.0 : 0.5; })), "too small"));
}

// 9 permutations: P-values of hits / 9 are 0, 1/9, ... with a chance of 1/10 each.
TEST(Calibration, ResolutionAllowsForTheLackOfTheObservedValue) {
    PValues v = drawn([](double u) { return std::floor(10.0 * u) / 9.0; });
    EXPECT_NE(faults_of_valid(v), "");
    v.resolution = 0.1;
    EXPECT_EQ(faults_of_valid(v), "");
    EXPECT_EQ(faults_of_uniform(v), "");
}

}  // namespace
