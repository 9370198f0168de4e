// The exact test of Hardy-Weinberg proportions, on simulated samples of individuals.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "calibration.h"
#include "simulated_samples.h"
#include "spread.h"
#include "within/em_sample.h"
#include "within/hardy_weinberg.h"

namespace {

using mnd_test::Individuals;
using mnd_test::PValues;
using mnd_test::Simulation;

constexpr long kSteps = 20000;
constexpr int kBurnIn = 300;
// Successive tables of a chain resemble each other: in the data below a chain is worth at least this
// many independent ones.
constexpr double kIndependentTables = 150.0;
constexpr std::size_t kReplicates = 6000;
constexpr std::size_t kInbredReplicates = 1000;
constexpr double kInbred = 0.6;  // probability that the copies of an individual are the same
constexpr double kPower = 0.8;   // share of the P-values of inbred samples that are 0.05 or less

constexpr int kSamplesRepeated = 3;
constexpr int kRepeats = 800;
constexpr double kAllowance = 0.1;  // chains begin near the table observed, and the last is left out

using Test = void (mnd::Population::*)(long const&, double&, mnd::settings&, long&, int*);

constexpr Test kOneChain = &mnd::Population::make_hw_test2;
constexpr Test kManyChains = &mnd::Population::make_hw_test3;

struct Case {
    const char* name;
    Test test;
    int individuals;
    std::vector<double> frequencies;  // of the alleles, or haplotypes
    int loci;                         // 1: alleles are tested; more: haplotypes
    bool has_ties;                    // tables are often as probable as others
};

void PrintTo(const Case& c, std::ostream* out) {
    *out << c.name;
}

std::string name_of_case(const ::testing::TestParamInfo<Case>& info) {
    return info.param.name;
}

// Copies of kind k are written as the digits of k to the base 3 where there are loci, else as a letter.
std::string text_of_kind(int kind, int loci) {
    if (loci == 1) return std::string(1, static_cast<char>('a' + kind));
    std::string text;
    for (int l = 0; l < loci; ++l, kind /= 3)
        text += static_cast<char>('a' + kind % 3);
    return text;
}

int draw_kind(const std::vector<double>& frequencies, Simulation& random) {
    double u = random.uniform();
    for (std::size_t k = 0; k + 1 < frequencies.size(); ++k) {
        if (u < frequencies[k]) return static_cast<int>(k);
        u -= frequencies[k];
    }
    return static_cast<int>(frequencies.size()) - 1;
}

std::vector<Individuals> draw_individuals(const Case& c, double inbred, Simulation& random) {
    std::vector<Individuals> all;
    for (int i = 0; i < c.individuals; ++i) {
        const std::string first = text_of_kind(draw_kind(c.frequencies, random), c.loci);
        const bool twice = random.happens(inbred);
        all.push_back({first, twice ? first : text_of_kind(draw_kind(c.frequencies, random), c.loci), 1.0});
    }
    return all;
}

// A test of one sample: its P-value and the error of it.
struct Tested {
    double p;
    double sd;
};

Tested test_sample(const Case& c, const std::vector<Individuals>& individuals) {
    mnd::settings s;
    s.MarkovChainDememorisationStepsLD = kBurnIn;
    mnd_test::GenotypeSample data(individuals, false);
    int hw_info[2] = {0, c.loci == 1 ? 0 : -1};
    double stat = 0.0;
    long steps_done = 0;
    s.hw_p_value = 1.0;
    s.PrecisionOnPValueHW = 0.0;
    (data.sample.*c.test)(kSteps, stat, s, steps_done, hw_info);
    EXPECT_GE(steps_done, kSteps);
    return {s.hw_p_value, s.hw_precision};
}

PValues run(const Case& c, double inbred, std::size_t replicates, std::uint64_t seed) {
    Simulation random(seed);
    PValues v{c.name, {}, 1.0 / kIndependentTables};
    for (std::size_t i = 0; i < replicates && !::testing::Test::HasFailure(); ++i)
        v.p.push_back(test_sample(c, draw_individuals(c, inbred, random)).p);
    return v;
}

class HardyWeinbergPValues : public mnd_test::EmTest, public ::testing::WithParamInterface<Case> {};

TEST_P(HardyWeinbergPValues, AreUniformWithRandomMating) {
    const PValues v = run(GetParam(), 0.0, kReplicates, 20260301);
    ASSERT_FALSE(HasFailure());
    expect_valid(v);
    if (!GetParam().has_ties) expect_uniform(v);
}

TEST_P(HardyWeinbergPValues, AreSmallWithInbreeding) {
    const PValues v = run(GetParam(), kInbred, kInbredReplicates, 20260302);
    ASSERT_FALSE(HasFailure());
    expect_powerful(v, kPower);
}

const std::vector<double> kFive = {0.3, 0.25, 0.2, 0.15, 0.1};
const std::vector<double> kNine = {0.2, 0.16, 0.14, 0.12, 0.1, 0.08, 0.08, 0.06, 0.06};

INSTANTIATE_TEST_SUITE_P(Of, HardyWeinbergPValues,
                         ::testing::Values(Case{"TwoAlleles", kOneChain, 30, {0.6, 0.4}, 1, true},
                                           Case{"FiveAlleles", kOneChain, 24, kFive, 1, false},
                                           Case{"FiveHaplotypes", kOneChain, 24, kFive, 2, false},
                                           Case{"NineHaplotypes", kOneChain, 24, kNine, 2, true},
                                           Case{"FiveHaplotypesInManyChains", kManyChains, 24, kFive, 2,
                                                false}),
                         name_of_case);

class HardyWeinbergErrors : public mnd_test::EmTest {};

// The error of a P-value is the spread of P-values of the same data from other chains. One long chain
// can't tell it: its successive tables resemble each other and go to its batches in turn, so that all
// batches err alike.
TEST_F(HardyWeinbergErrors, OfManyChainsAreTheSpreadOfPValues) {
    const Case c = {"FiveHaplotypes", kManyChains, 24, kFive, 2, false};
    Simulation random(20260303);
    for (int checked = 0; checked < kSamplesRepeated;) {
        const std::vector<Individuals> individuals = draw_individuals(c, 0.0, random);
        const double p = test_sample(c, individuals).p;
        if (p < 0.1 || p > 0.9) continue;
        ++checked;
        mnd_test::Repeated repeated;
        for (int i = 0; i < kRepeats; ++i) {
            const Tested tested = test_sample(c, individuals);
            repeated.add(tested.p, tested.sd);
        }
        expect_spread("sample " + std::to_string(checked), repeated, kAllowance);
    }
}

}  // namespace
