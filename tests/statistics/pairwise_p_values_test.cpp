// The permutation tests of pairs of samples, on simulated data.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "between/amova_data.h"
#include "between/pairwise_block.h"
#include "between/pairwise_statistics.h"
#include "between/pairwise_tests.h"
#include "calibration.h"
#include "run/process.h"
#include "run/settings.h"
#include "simulated_samples.h"
#include "spread.h"
#include "support/seeded_stream.h"

namespace {

using mnd::PairTestResult;
using mnd_test::Distances;
using mnd_test::Group;
using mnd_test::PValues;
using mnd_test::Structured;

constexpr int kPermutationsAsked = 240;  // makes 255
constexpr std::size_t kReplicates = 20000;
constexpr std::size_t kStructuredReplicates = 3000;
constexpr double kPower = 0.7;       // share of the P-values of structured data that are 0.05 or less
constexpr double kStructured = 0.9;  // probability with which a sample claims a copy
constexpr double kInbred = 0.6;

constexpr int kDataSetsRepeated = 3;
constexpr int kRepeats = 4000;
// A shuffle goes on from the one before, to which it bears some resemblance.
constexpr double kAllowance = 0.05;

struct Case {
    Distances kind;
    bool individuals;  // what is shuffled
};

std::string name_of(const Case& c) {
    return std::string(c.individuals ? "Individuals" : "Copies") + mnd_test::name_of(c.kind);
}

// How a failed test shows its case.
void PrintTo(const Case& c, std::ostream* out) {
    *out << name_of(c);
}

std::string name_of_case(const ::testing::TestParamInfo<Case>& info) {
    return name_of(info.param);
}

struct Measured {
    const char* name;
    double PairTestResult::*p_value;
};
constexpr Measured kTests[] = {{"FST", &PairTestResult::fst_p},
                               {"differences between", &PairTestResult::pi_p},
                               {"corrected differences", &PairTestResult::pi_corr_p}};

mnd_test::Layout layout_of(const Case& c) {
    if (c.individuals) return {{2}, 6, 12, true};
    return {{2}, 8, 20, false};
}

PairTestResult test_data(const Case& c, const mnd_test::Haplotypes& haplotypes, const Group& group) {
    const mnd_test::AmovaData data({group}, haplotypes.rows(), haplotypes.distance());
    std::vector<int> rows = group[0];
    rows.insert(rows.end(), group[1].begin(), group[1].end());
    mnd::PairBlock block(data.dist, rows, static_cast<int>(group[0].size()));
    const mnd::PairDesign design =
        mnd::pair_design(static_cast<double>(group[0].size()), static_cast<double>(group[1].size()));
    const mnd::PairSSD ssd = block.sums();
    mnd::PairObserved observed;
    observed.variance = mnd::pair_variance(design, ssd);
    observed.differences = mnd::pair_differences(design, ssd);
    mnd::PairTestPlan plan;
    plan.permutations = mnd::plan_batches(kPermutationsAsked);
    plan.shuffles_individuals = c.individuals;
    PairTestResult result;
    EXPECT_TRUE(mnd::test_pair(block, design, observed, plan, data.s, result));
    return result;
}

std::vector<PValues> run(const Case& c, const Structured& structure, std::size_t replicates,
                         std::uint64_t seed) {
    mnd_test::Simulation random(seed);
    const mnd_test::Layout layout =
        c.individuals ? mnd_test::Layout{{2}, 6, 12, true} : mnd_test::Layout{{2}, 8, 20, false};
    std::vector<PValues> record;
    const double num_perm = static_cast<double>(mnd::plan_batches(kPermutationsAsked).total);
    for (const Measured& test : kTests)
        record.push_back({test.name, {}, 1.0 / (num_perm + 1.0)});
    for (std::size_t i = 0; i < replicates; ++i) {
        const mnd_test::Haplotypes haplotypes(c.kind, random);
        mnd_test::SampleMaker maker(haplotypes, structure, random);
        const PairTestResult result = test_data(c, haplotypes, maker.make(layout)[0]);
        for (std::size_t t = 0; t < record.size(); ++t)
            record[t].p.push_back(result.*kTests[t].p_value);
    }
    return record;
}

class PairwisePValues : public mnd_test::SeededStream, public ::testing::WithParamInterface<Case> {
protected:
    void SetUp() override {
        SeededStream::SetUp();
        silent_before_ = mnd::silentMendrake;
        mnd::silentMendrake = true;
    }
    void TearDown() override { mnd::silentMendrake = silent_before_; }

private:
    bool silent_before_ = false;
};

TEST_P(PairwisePValues, AreUniformWithoutStructure) {
    for (const PValues& v : run(GetParam(), {}, kReplicates, 20260201)) {
        expect_valid(v);
        if (GetParam().kind == Distances::kReal) expect_uniform(v);
    }
}

TEST_P(PairwisePValues, AreSmallWhenSamplesDiffer) {
    const Structured structure = {0.0, kStructured, 0.0};
    for (const PValues& v : run(GetParam(), structure, kStructuredReplicates, 20260203))
        expect_powerful(v, kPower);
}

// The error of a P-value is the spread of P-values of the same data over other permutations.
TEST_P(PairwisePValues, HaveTheErrorReported) {
    mnd_test::Simulation random(20260204);
    const mnd_test::Haplotypes haplotypes(GetParam().kind, random);
    const Structured structure;
    mnd_test::SampleMaker maker(haplotypes, structure, random);
    for (int checked = 0; checked < kDataSetsRepeated;) {
        const Group group = maker.make(layout_of(GetParam()))[0];
        const double p = test_data(GetParam(), haplotypes, group).fst_p;
        if (p < 0.1 || p > 0.9) continue;
        ++checked;
        mnd_test::Repeated repeated;
        for (int i = 0; i < kRepeats; ++i) {
            const PairTestResult result = test_data(GetParam(), haplotypes, group);
            repeated.add(result.fst_p, result.fst_sd);
        }
        expect_spread("data set " + std::to_string(checked), repeated, kAllowance);
    }
}

constexpr Case kCases[] = {{Distances::kConventional, false}, {Distances::kWhole, false},
                           {Distances::kReal, false},         {Distances::kConventional, true},
                           {Distances::kWhole, true},         {Distances::kReal, true}};
constexpr Case kIndividuals[] = {
    {Distances::kConventional, true}, {Distances::kWhole, true}, {Distances::kReal, true}};

INSTANTIATE_TEST_SUITE_P(Of, PairwisePValues, ::testing::ValuesIn(kCases), name_of_case);

class PairwisePValuesOfIndividuals : public PairwisePValues {};

// Related copies within individuals are no difference between samples when individuals move.
TEST_P(PairwisePValuesOfIndividuals, AreUniformWithInbreeding) {
    const Structured structure = {0.0, 0.0, kInbred};
    for (const PValues& v : run(GetParam(), structure, kReplicates / 2, 20260202)) {
        expect_valid(v);
        if (GetParam().kind == Distances::kReal) expect_uniform(v);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, PairwisePValuesOfIndividuals, ::testing::ValuesIn(kIndividuals), name_of_case);

}  // namespace
