// Tests of selective neutrality, on simulated samples of a neutral population and of others.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "calibration.h"
#include "model/popul_dna.h"
#include "model/popul_standard.h"
#include "run/process.h"
#include "run/settings.h"
#include "simulated_samples.h"
#include "support/seeded_stream.h"
#include "within/ewens_watterson.h"
#include "within/fu_fs.h"
#include "within/tajima.h"
#include "within/text_sample.h"

namespace {

using mnd::PopulDNA;
using mnd::PopulStandard;
using mnd_test::PValues;
using mnd_test::Simulation;

constexpr int kReplicates = 255;  // simulated samples of each test
constexpr double kResolution = 1.0 / (kReplicates + 1);
constexpr std::size_t kSequenceDataSets = 4000;
constexpr std::size_t kAlleleDataSets = 6000;
constexpr std::size_t kOtherDataSets = 1000;
constexpr double kPower = 0.7;  // share of the P-values of samples that are not neutral that are 0.05 or less

// --- Sequences

constexpr int kSites = 2000;  // so many that few are hit twice

// A genealogy of n gene copies as the lists of copies below each branch, with the lengths of the
// branches. While k lineages are left, two of them meet after an exponential time of mean
// 2/(k (k - 1)); in an expanding population none meets before `star`, and then the rest in a time
// that is `after` as long.
struct Branch {
    std::vector<int> copies;
    double length;
};

std::vector<Branch> genealogy(int n, double star, double after, Simulation& random) {
    std::vector<Branch> finished;
    std::vector<Branch> alive;
    for (int i = 0; i < n; ++i)
        alive.push_back({{i}, star});
    while (alive.size() > 1) {
        const double k = static_cast<double>(alive.size());
        const double time = -std::log(1.0 - random.uniform()) * 2.0 / (k * (k - 1.0)) * after;
        for (Branch& lineage : alive)
            lineage.length += time;
        Branch merged{{}, 0.0};
        for (int side = 0; side < 2; ++side) {
            const auto taken = alive.begin() + random.below(static_cast<int>(alive.size()));
            merged.copies.insert(merged.copies.end(), taken->copies.begin(), taken->copies.end());
            finished.push_back(*taken);
            alive.erase(taken);
        }
        alive.push_back(merged);
    }
    return finished;
}

// Mutations at rate theta/2 per unit of length, as waiting times along each branch, each at a random
// site where it makes the other base of a transition.
std::vector<std::string> mutate(const std::vector<Branch>& branches, int n, double theta,
                                Simulation& random) {
    std::vector<std::string> sequences(static_cast<std::size_t>(n), std::string(kSites, 'A'));
    for (const Branch& branch : branches) {
        double left = branch.length;
        for (;;) {
            left += std::log(1.0 - random.uniform()) * 2.0 / theta;
            if (left <= 0.0) break;
            const auto site = static_cast<std::size_t>(random.below(kSites));
            for (const int copy : branch.copies) {
                char& base = sequences[static_cast<std::size_t>(copy)][site];
                base = base == 'A' ? 'G' : 'A';
            }
        }
    }
    return sequences;
}

// A sample of these sequences, equal ones as one haplotype.
class SequenceSample {
public:
    explicit SequenceSample(const std::vector<std::string>& sequences) : counts_(count(sequences)) {
        std::vector<std::string> texts;
        std::vector<int> numbers;
        for (const auto& [text, number] : counts_) {
            texts.push_back(text);
            numbers.push_back(number);
        }
        data_ = std::make_unique<mnd_test::TextSample<PopulDNA>>(texts, numbers);
        data_->sample.nb_hapl = static_cast<int>(numbers.size());
        data_->sample.compare_DNA_sequences();
    }
    PopulDNA& sample() { return data_->sample; }

private:
    static std::map<std::string, int> count(const std::vector<std::string>& sequences) {
        std::map<std::string, int> counts;
        for (const std::string& text : sequences)
            ++counts[text];
        return counts;
    }
    std::map<std::string, int> counts_;
    std::unique_ptr<mnd_test::TextSample<PopulDNA>> data_;
};

// What is tested, and how the genealogies are made.
struct Case {
    const char* name;
    int copies;
    double theta;
};

void PrintTo(const Case& c, std::ostream* out) {
    *out << c.name;
}

std::string name_of_case(const ::testing::TestParamInfo<Case>& info) {
    return info.param.name;
}

struct SequenceTests {
    PValues tajima;
    PValues fu;
};

SequenceTests test_sequences(const Case& c, double star, double after, bool with_fu, std::size_t data_sets,
                             std::uint64_t seed) {
    Simulation random(seed);
    mnd::settings s;
    s.NumSimulFuTest = kReplicates;
    SequenceTests tests{{std::string("D ") + c.name, {}, kResolution},
                        {std::string("Fs ") + c.name, {}, kResolution}};
    for (std::size_t i = 0; i < data_sets; ++i) {
        SequenceSample data(mutate(genealogy(c.copies, star, after, random), c.copies, c.theta, random));
        std::ostringstream unread;
        tajima_test(data.sample(), s, unread);
        if (with_fu) fu_test(data.sample(), s, unread);
        // Without diversity there is no test.
        if (data.sample().tajima_p >= 0.0) tests.tajima.p.push_back(data.sample().tajima_p);
        if (data.sample().fu_p >= 0.0) tests.fu.p.push_back(data.sample().fu_p);
    }
    return tests;
}

class SequencePValues : public mnd_test::SeededStream, public ::testing::WithParamInterface<Case> {
protected:
    void SetUp() override {
        SeededStream::SetUp();
        silent_ = mnd::silentMendrake;
        mnd::silentMendrake = true;
    }
    void TearDown() override { mnd::silentMendrake = silent_; }

private:
    bool silent_ = false;
};

// P is the share of samples simulated with the theta of the sample itself that have a D as small or
// smaller: for a neutral population it is uniform, but for what the estimate leaves.
TEST_P(SequencePValues, OfTajimaAreUniformUnderNeutrality) {
    const SequenceTests tests = test_sequences(GetParam(), 0.0, 1.0, false, kSequenceDataSets, 20260401);
    ASSERT_GT(tests.tajima.p.size(), kSequenceDataSets * 99 / 100);
    expect_uniform(tests.tajima);
}

// After a sudden expansion most branches lead to one copy: an excess of rare mutations.
TEST_P(SequencePValues, AreSmallAfterAnExpansion) {
    const SequenceTests tests = test_sequences(GetParam(), 0.5, 0.05, true, kOtherDataSets, 20260402);
    expect_powerful(tests.tajima, kPower);
    expect_powerful(tests.fu, kPower);
}

INSTANTIATE_TEST_SUITE_P(Of, SequencePValues,
                         ::testing::Values(Case{"TwentyCopies", 20, 15.0}, Case{"FiftyCopies", 50, 10.0}),
                         name_of_case);

// --- Allele counts

// Gene copies that join one after the other: the next is of a new allele with the probability
// theta/(theta + copies), else of that of a random copy before it (Hoppe 1984, J. Math. Biol. 20:91-94).
std::vector<int> neutral_counts(int n, double theta, Simulation& random) {
    std::vector<int> allele_of;
    std::vector<int> counts;
    for (int i = 0; i < n; ++i) {
        int allele = static_cast<int>(counts.size());
        if (random.happens(theta / (theta + i))) {
            counts.push_back(0);
        } else {
            allele = allele_of[static_cast<std::size_t>(random.below(i))];
        }
        allele_of.push_back(allele);
        ++counts[static_cast<std::size_t>(allele)];
    }
    return counts;
}

// Alleles that selection keeps at equal frequencies.
std::vector<int> balanced_counts(int n, int k, Simulation& random) {
    std::vector<int> counts(static_cast<std::size_t>(k), 0);
    for (int i = 0; i < n; ++i)
        ++counts[static_cast<std::size_t>(random.below(k))];
    counts.erase(std::remove(counts.begin(), counts.end(), 0), counts.end());
    return counts;
}

class AlleleTests {
public:
    explicit AlleleTests(const std::string& name)
        : ewens_watterson{"F " + name, {}, kResolution}, slatkin{"exact " + name, {}, kResolution} {
        s_.NumIterationsNeutralityTests = kReplicates;
    }
    void add(const std::vector<int>& counts) {
        const std::vector<std::string> texts(counts.size(), "x");
        mnd_test::TextSample<PopulStandard> data(texts, counts);
        mnd::MY_TISArrayAsVector<mnd::AHaplFreq> alleles;
        list_of_counts(data.sample, alleles);
        std::ostringstream unread;
        data.sample.EW_neutrality_tests(s_, unread, alleles);
        if (data.sample.ew_p < 0.0) return;  // one allele, or all different
        ewens_watterson.p.push_back(data.sample.ew_p);
        slatkin.p.push_back(data.sample.slatkin_p);
    }
    PValues ewens_watterson;
    PValues slatkin;

private:
    mnd::settings s_;
};

class AllelePValues : public SequencePValues {};

// Given the number of alleles the distribution of their counts does not depend on theta: both tests
// are exact. Many configurations have equal values, so that P-values may be too large.
TEST_P(AllelePValues, AreValidUnderNeutrality) {
    Simulation random(20260403);
    AlleleTests tests(GetParam().name);
    for (std::size_t i = 0; i < kAlleleDataSets; ++i)
        tests.add(neutral_counts(GetParam().copies, GetParam().theta, random));
    expect_valid(tests.ewens_watterson);
    expect_valid(tests.slatkin);
    if (GetParam().copies < 100) return;
    expect_uniform(tests.ewens_watterson);
    expect_uniform(tests.slatkin);
}

TEST_P(AllelePValues, AreSmallForBalancedAlleles) {
    Simulation random(20260404);
    AlleleTests tests(GetParam().name);
    for (std::size_t i = 0; i < kOtherDataSets; ++i)
        tests.add(balanced_counts(GetParam().copies, 6, random));
    expect_powerful(tests.ewens_watterson, kPower);
    expect_powerful(tests.slatkin, kPower);
}

INSTANTIATE_TEST_SUITE_P(Of, AllelePValues,
                         ::testing::Values(Case{"FortyCopies", 40, 3.0},
                                           Case{"ThreeHundredCopies", 300, 8.0}),
                         name_of_case);

}  // namespace
