// The permutation tests of all designs of the analysis of molecular variance, on simulated data.
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "between/amova.h"
#include "between/amova_data.h"
#include "calibration.h"
#include "run/process.h"
#include "simulated_samples.h"
#include "support/seeded_stream.h"

namespace {

using mnd::Amova;
using mnd::amova_results;
using mnd_test::AmovaData;
using mnd_test::Distances;
using mnd_test::Layout;
using mnd_test::PValues;
using mnd_test::Structured;

constexpr int kPermutationsAsked = 240;  // makes 255
constexpr std::size_t kReplicates = 12000;
constexpr std::size_t kStructuredReplicates = 3000;
constexpr double kPower = 0.8;       // share of the P-values of structured data that are 0.05 or less
constexpr double kStructured = 0.9;  // probability with which a group or sample claims a copy
constexpr double kInbred = 0.6;

// ---- The tests of each design

// Levels of structure, as bits.
enum Level : unsigned { kNone = 0, kInGroups = 1, kInSamples = 2, kInIndividuals = 4 };

enum class Tail { kLower, kUpper };

struct ComponentTest {
    const char* name;
    double amova_results::*p_value;
    std::vector<double> amova_results::*null_values;
    std::function<double(const Amova&)> observed;  // on the footing of the null values
    Tail tail;
    unsigned finds;     // levels of structure that make its P-values small
    bool same_footing;  // whether the program compares with the observed value on that footing
};

struct Design {
    const char* name;
    Layout layout;
    bool genotypic;
    bool known_phase;
    bool individual_level;
    std::int32_t code;
    std::vector<ComponentTest> tests;
    std::vector<unsigned> structures;  // combinations of levels to be tried
};

ComponentTest component_test(const char* name, double amova_results::*p_value,
                             std::vector<double> amova_results::*null_values, double Amova::*component,
                             Tail tail, unsigned finds) {
    return {name, p_value, null_values, [component](const Amova& a) { return a.*component; },
            tail, finds,   true};
}

// The permuted values of this test count the mean square of individuals half, the observed one
// counts it whole: its P-values are far too large.
ComponentTest among_samples_of_individuals() {
    return {"FST",
            &amova_results::FST_pvalue,
            &amova_results::null_Va,
            [](const Amova& a) { return a.MSD[0] / a.n - a.MSD[1] / (2.0 * a.n); },
            Tail::kUpper,
            kInSamples,
            false};
}

// In samples of so many individuals the pairs of copies can be made in more ways than matter.
constexpr int kManyIndividuals = 7;

const Layout kGroupsOfHaplotypes = {{3, 3, 3, 3}, 5, 9, false};
const Layout kGroupsOfIndividuals = {{3, 3, 3, 3}, 3, 6, true};
const Layout kSamplesOfHaplotypes = {{5}, 6, 14, false};
const Layout kSamplesOfIndividuals = {{4}, 7, 12, true};
const Layout kOneSample = {{1}, 12, 18, true};

std::vector<Design> designs() {
    using R = amova_results;
    const auto fct = component_test("FCT", &R::FCT_pvalue, &R::null_Va, &Amova::Va, Tail::kUpper, kInGroups);
    const auto fsc = component_test("FSC", &R::FSC_pvalue, &R::null_Vb, &Amova::Vb, Tail::kUpper, kInSamples);
    const auto fst_of_groups =
        component_test("FST", &R::FST_pvalue, &R::null_Vc, &Amova::Vc, Tail::kLower, kInGroups | kInSamples);
    const auto fst = component_test("FST", &R::FST_pvalue, &R::null_Va, &Amova::Va, Tail::kUpper, kInSamples);
    const auto fis = [](std::vector<double> R::*null, double Amova::*component) {
        return component_test("FIS", &R::FIS_pvalue, null, component, Tail::kUpper, kInIndividuals);
    };
    const auto fit = [](std::vector<double> R::*null, double Amova::*component, unsigned finds) {
        return component_test("FIT", &R::FIT_pvalue, null, component, Tail::kLower, finds);
    };
    constexpr unsigned kAll = kInGroups | kInSamples | kInIndividuals;
    return {
        {"SeveralGroupsOfHaplotypes",
         kGroupsOfHaplotypes,
         false,
         true,
         false,
         mnd::kDesignGPH,
         {fst_of_groups, fsc, fct},
         {kInSamples, kInGroups}},
        {"OneGroupOfHaplotypes",
         kSamplesOfHaplotypes,
         false,
         true,
         false,
         mnd::kDesign1GPH,
         {fst},
         {kInSamples}},
        {"SeveralGroupsOfUnknownPhase",
         kGroupsOfIndividuals,
         true,
         false,
         false,
         mnd::kDesignGPIH,
         {fst_of_groups, fsc, fct},
         {kInIndividuals, kInSamples | kInIndividuals, kInGroups}},
        {"OneGroupOfUnknownPhase",
         kSamplesOfIndividuals,
         true,
         false,
         false,
         mnd::kDesign1GPIH,
         {fst},
         {kInIndividuals, kInSamples}},
        {"SeveralGroupsOfIndividuals",
         kGroupsOfIndividuals,
         true,
         true,
         true,
         mnd::kDesignGPI,
         {fit(&R::null_Vd, &Amova::Vd, kAll), fis(&R::null_Vc, &Amova::Vc), fsc, fct},
         {kInIndividuals, kInSamples, kInGroups}},
        {"OneGroupOfIndividuals",
         kSamplesOfIndividuals,
         true,
         true,
         true,
         mnd::kDesign1GPI,
         {fis(&R::null_Vb, &Amova::Vb), among_samples_of_individuals(),
          fit(&R::null_Vc, &Amova::Vc, kInSamples | kInIndividuals)},
         {kInIndividuals, kInSamples}},
        {"OneSampleOfIndividuals",
         kOneSample,
         true,
         true,
         true,
         mnd::kDesign1G1PI,
         {fis(&R::null_Va, &Amova::Va)},
         {kInIndividuals}},
    };
}

// ---- Running them

// P-values of one test over all data sets.
struct TestRecord {
    PValues printed;  // as the program gives them
    PValues spread;   // equal values put in random order with the observed one: uniform with ties too
};

struct DesignRecord {
    std::vector<TestRecord> tests;
    std::vector<PValues> fis_of_sample;  // of each sample of the data sets
};

// Proportions of the null values of one data set.
struct NullShares {
    double hits;    // as the program counts: beyond or equal, over all
    double spread;  // the observed value is one of those equal to it, at a random place
};

NullShares null_shares(const std::vector<double>& null, double observed, Tail tail, double u) {
    double beyond = 0.0;
    double equal = 0.0;
    for (const double value : null) {
        if (std::fabs(value - observed) < mnd::kAmovaEpsilon) {
            equal += 1.0;
        } else if ((value < observed) == (tail == Tail::kLower)) {
            beyond += 1.0;
        }
    }
    const double m = static_cast<double>(null.size());
    return {(beyond + equal) / m, (beyond + u * (equal + 1.0)) / (m + 1.0)};
}

void set_up(AmovaData& data, const Design& design) {
    data.s.NumPermutationsAMOVA = kPermutationsAsked;
    data.s.IncludeIndividualLevel = design.individual_level ? 1 : 0;
    data.s.PopSpecificFIS = design.individual_level ? 1 : 0;
    data.samples.GameticPhase = design.known_phase ? 1 : 0;
}

void record_data_set(const Design& design, const Amova& analysis, const amova_results& results,
                     mnd_test::Simulation& random, DesignRecord& record) {
    for (std::size_t t = 0; t < design.tests.size(); ++t) {
        const ComponentTest& test = design.tests[t];
        const NullShares shares =
            null_shares(results.*test.null_values, test.observed(analysis), test.tail, random.uniform());
        if (test.same_footing) {
            ASSERT_NEAR(results.*test.p_value, shares.hits, 1e-12) << test.name;
        }
        record.tests[t].printed.p.push_back(results.*test.p_value);
        record.tests[t].spread.p.push_back(shares.spread);
    }
    record.fis_of_sample.resize(results.pop_Fis_pvalue.size());
    for (std::size_t i = 0; i < results.pop_Fis_pvalue.size(); ++i)
        record.fis_of_sample[i].p.push_back(results.pop_Fis_pvalue[i]);
}

DesignRecord run(const Design& design, Distances kind, const Structured& structure, std::size_t replicates,
                 std::uint64_t seed) {
    mnd_test::Simulation random(seed);
    DesignRecord record;
    record.tests.resize(design.tests.size());
    std::size_t num_perm = 0;
    for (std::size_t i = 0; i < replicates; ++i) {
        const mnd_test::Haplotypes haplotypes(kind, random);
        mnd_test::SampleMaker maker(haplotypes, structure, random);
        AmovaData data(maker.make(design.layout), haplotypes.rows(), haplotypes.distance(), design.genotypic);
        set_up(data, design);
        amova_results results;
        const std::unique_ptr<Amova> analysis = data.analyse(0, &results);
        EXPECT_EQ(analysis->design, design.code);
        num_perm = (results.*design.tests[0].null_values).size();
        record_data_set(design, *analysis, results, random, record);
        if (::testing::Test::HasFailure()) break;
    }
    const double resolution = 1.0 / (static_cast<double>(num_perm) + 1.0);
    for (std::size_t t = 0; t < design.tests.size(); ++t) {
        record.tests[t].printed.test = record.tests[t].spread.test = design.tests[t].name;
        record.tests[t].printed.resolution = resolution;
    }
    for (std::size_t i = 0; i < record.fis_of_sample.size(); ++i) {
        record.fis_of_sample[i].test = "FIS of sample " + std::to_string(i + 1);
        record.fis_of_sample[i].resolution = resolution;
    }
    return record;
}

// ---- Data without structure

struct Case {
    Design design;
    Distances kind;
    unsigned levels;
};

std::string name_of(const Case& c) {
    const unsigned levels = c.levels;
    std::string name = std::string(c.design.name) + mnd_test::name_of(c.kind);
    if ((levels & kInGroups) != 0) name += "Groups";
    if ((levels & kInSamples) != 0) name += "Samples";
    if ((levels & kInIndividuals) != 0) name += "Inbreeding";
    return name;
}

// How a failed test shows its case.
void PrintTo(const Case& c, std::ostream* out) {
    *out << name_of(c);
}

std::string name_of_case(const ::testing::TestParamInfo<Case>& info) {
    return name_of(info.param);
}

std::vector<Case> unstructured_cases() {
    std::vector<Case> cases;
    for (const Design& design : designs()) {
        for (const Distances kind : {Distances::kConventional, Distances::kWhole, Distances::kReal})
            cases.push_back({design, kind, kNone});
    }
    return cases;
}

class AmovaPValues : public mnd_test::SeededStream, public ::testing::WithParamInterface<Case> {
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

TEST_P(AmovaPValues, AreUniformWithoutStructure) {
    const DesignRecord record = run(GetParam().design, GetParam().kind, {}, kReplicates, 20260101);
    ASSERT_FALSE(HasFailure());
    for (const TestRecord& test : record.tests) {
        expect_valid(test.printed);
        expect_uniform(test.spread);
    }
    const bool has_ties =
        GetParam().kind != Distances::kReal || GetParam().design.layout.smallest < kManyIndividuals;
    for (const PValues& fis : record.fis_of_sample) {
        expect_valid(fis);
        if (!has_ties) expect_uniform(fis);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, AmovaPValues, ::testing::ValuesIn(unstructured_cases()), name_of_case);

// ---- Data with structure at some levels

std::vector<Case> structured_cases() {
    std::vector<Case> cases;
    for (const Design& design : designs()) {
        for (const unsigned levels : design.structures)
            cases.push_back({design, Distances::kWhole, levels});
    }
    return cases;
}

class AmovaOfStructuredData : public AmovaPValues {};

// A test finds the structure of its own levels, and takes no other for it.
TEST_P(AmovaOfStructuredData, PValuesTellTheLevel) {
    const unsigned levels = GetParam().levels;
    Structured structure;
    structure.by_group = (levels & kInGroups) != 0 ? kStructured : 0.0;
    structure.by_sample = (levels & kInSamples) != 0 ? kStructured : 0.0;
    structure.by_individual = (levels & kInIndividuals) != 0 ? kInbred : 0.0;
    const Design& design = GetParam().design;
    const DesignRecord record = run(design, GetParam().kind, structure, kStructuredReplicates, 20260102);
    ASSERT_FALSE(HasFailure());
    for (std::size_t t = 0; t < design.tests.size(); ++t) {
        const bool finds = (design.tests[t].finds & levels) != 0;
        if (finds) {
            expect_powerful(record.tests[t].printed, kPower);
        } else {
            expect_valid(record.tests[t].printed);
            expect_uniform(record.tests[t].spread);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Of, AmovaOfStructuredData, ::testing::ValuesIn(structured_cases()), name_of_case);

}  // namespace
