// Samples simulated under fitted expansions: which parameters the trees and mutations get.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "foundation/random.h"
#include "model/popul_dna.h"
#include "run/settings.h"
#include "simulation/coalescent_tree.h"
#include "support/seeded_stream.h"
#include "within/mismatch_fit.h"
#include "within/mismatch_spatial.h"

namespace {

constexpr int kCopies = 10;
constexpr int kIndividuals = 4000000;
constexpr int kSites = 400;

// Shares of pairs of leaves by the number of sites at which they differ.
std::vector<double> shares_of(const mnd::TTree& tree) {
    std::vector<double> shares(kSites + 1);
    for (int i = 0; i < kCopies; ++i) {
        for (int j = 0; j < i; ++j) {
            const mnd::myVectInt& a = *tree.nodes[static_cast<std::size_t>(i)].sequence;
            const mnd::myVectInt& b = *tree.nodes[static_cast<std::size_t>(j)].sequence;
            std::size_t differences = 0;
            for (std::size_t site = 0; site < kSites; ++site)
                differences += a[site] != b[site] ? 1 : 0;
            shares[differences] += 1.0;
        }
    }
    for (double& share : shares)
        share /= kCopies * (kCopies - 1) / 2.0;
    return shares;
}

class MismatchSimulation : public mnd_test::SeededStream {
protected:
    mnd::settings s;
    mnd::PopulDNA sample;
    std::vector<double> diff = std::vector<double>(kSites + 10);
    std::vector<double> freq = std::vector<double>(kSites + 10);
    int classes = kSites + 2;  // all differences that there can be

    void SetUp() override {
        SeededStream::SetUp();
        sample.sample_size = kCopies;
    }
    std::vector<double> shares() const { return {freq.begin() + 1, freq.begin() + classes}; }
    std::vector<double> sudden(double theta0, double theta1, double tau) {
        mnd::ann_missmatch fit(&sample, &s);
        fit.sample_size = kCopies;
        fit.init_data(theta0, theta1, tau, 1.0);
        seed();
        EXPECT_EQ(fit.simulate_miss(diff.data(), freq.data(), classes), 1);
        return shares();
    }
    std::vector<double> spatial(double theta, double tau, double migrants) {
        mnd::mismatchSpatialExpansion fit(&sample, &s);
        fit.init_data(theta, theta, tau, migrants, 1.0);
        seed();
        EXPECT_EQ(fit.simulate_spatial_exp(diff.data(), freq.data(), classes), 1);
        return shares();
    }

    // One tree of each model, from the rates that it is told.
    static std::vector<double> plain_sudden(double mu, double T, double growth) {
        mnd::PopulDNA plain;
        plain.sample_size = kCopies;
        plain.allocate_tree(kCopies);
        seed();
        plain.simulate_sample_exp(mu, kSites, mnd::kNewStateMutation, -1.0, 1.0, 1.0, 0.33, T, growth,
                                  kIndividuals);
        return shares_of(*plain.tree);
    }
    static std::vector<double> plain_spatial(double mu, double T, double D) {
        mnd::PopulDNA plain;
        plain.sample_size = kCopies;
        plain.allocate_tree(kCopies);
        seed();
        plain.simulate_range_exp(mu, kSites, mnd::kNewStateMutation, -1.0, 1.0, 1.0, 0.33, T, D,
                                 kIndividuals);
        return shares_of(*plain.tree);
    }
};

struct Sizes {
    double theta0, theta1;
};
class SuddenSizesAsFitted : public MismatchSimulation, public ::testing::WithParamInterface<Sizes> {};

// mu = (Theta1 / 2) / N, growth = max(1 / N, Theta0 / Theta1), T = (Tau / 2) / (mu N), up to founders of
// theta 10 000, be that Theta0 or the Theta1 / N of a single founder.
TEST_P(SuddenSizesAsFitted, SimulateTheirOwnRates) {
    const auto [theta0, theta1] = GetParam();
    const std::vector<double> simulated = sudden(theta0, theta1, 6.0);
    const double after = next();
    const double mu = theta1 / 2.0 / kIndividuals;
    EXPECT_EQ(simulated, plain_sudden(mu, 6.0 / 2.0 / (mu * kIndividuals),
                                      std::max(1.0 / kIndividuals, theta0 / theta1)));
    EXPECT_EQ(next(), after);
}

INSTANTIATE_TEST_SUITE_P(UpToTheBound, SuddenSizesAsFitted,
                         ::testing::Values(Sizes{1.0, 5.0}, Sizes{0.0, 99999.0}, Sizes{1e-07, 2e5},
                                           Sizes{0.01, 1e6}, Sizes{1e-07, 1e8}, Sizes{1e-07, 4e9},
                                           Sizes{500.0, 1e5}, Sizes{1e-07, 4e10}, Sizes{1e4, 1e4},
                                           Sizes{1e4, 1e9}));

// A runaway size of one parameter, or of both, is simulated as the bound.
TEST_F(MismatchSimulation, FoundersWithoutBoundAreThoseOfTheBound) {
    const double most = 4e10;
    const double mu = most / 2.0 / kIndividuals;
    const double T = 6.0 / 2.0 / (mu * kIndividuals);
    const std::vector<double> at_bound = plain_sudden(mu, T, 1.0 / kIndividuals);
    EXPECT_EQ(sudden(1e-07, 1e15, 6.0), at_bound);
    EXPECT_EQ(sudden(1e-07, 1e300, 6.0), at_bound);
    EXPECT_EQ(sudden(1e12, 1e15, 6.0), plain_sudden(mu, T, 1e4 / most));
    const double mu_of_founders = 1e9 / 2.0 / kIndividuals;
    EXPECT_EQ(sudden(1e9, 1e9, 6.0),
              plain_sudden(mu_of_founders, 6.0 / 2.0 / (mu_of_founders * kIndividuals), 1e4 / 1e9));
}

TEST_F(MismatchSimulation, SpatialSizesUpToTheBoundAreThoseFitted) {
    for (const double theta : {0.01, 1.0, 300.0, 1e4}) {
        const std::vector<double> simulated = spatial(theta, 5.0, 8.0);
        const double after = next();
        EXPECT_EQ(simulated, plain_spatial(theta / 2.0 / kIndividuals, 5.0 / theta, 4.0)) << theta;
        EXPECT_EQ(next(), after);
    }
}

TEST_F(MismatchSimulation, SpatialSizesWithoutBoundAreTheBound) {
    EXPECT_EQ(spatial(1e15, 5.0, 8.0), plain_spatial(1e4 / 2.0 / kIndividuals, 5.0 / 1e4, 4.0));
    EXPECT_EQ(spatial(1e300, 5.0, 99999.0), plain_spatial(1e4 / 2.0 / kIndividuals, 5.0 / 1e4, 49999.5));
}

// With founders of the bound, all but some of the 400 sites differ in any pair, which is why no larger
// theta need be simulated: a site stays alike in one pair of 1e4 / 400 + 1 = 26.
TEST_F(MismatchSimulation, AtTheBoundFoundersDifferAtAlmostAllSites) {
    double mean = 0.0;
    for (int i = 0; i < 5; ++i) {
        mnd::ann_missmatch fit(&sample, &s);
        fit.sample_size = kCopies;
        fit.init_data(1e4, 1e4, 1e-07, 1.0);
        ASSERT_EQ(fit.simulate_miss(diff.data(), freq.data(), classes), 1);
        mean += mnd::ann_missmatch::calc_mean_mssm(diff.data(), freq.data(), classes) / 5.0;
    }
    EXPECT_NEAR(mean, 400.0 * 25.0 / 26.0, 20.0);
}

}  // namespace
