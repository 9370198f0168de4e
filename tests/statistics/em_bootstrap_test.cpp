// Haplotype frequencies estimated from unphased genotypes, and their standard deviations by
// parametric bootstrap, over many simulated samples.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "simulated_samples.h"
#include "spread.h"
#include "within/em_sample.h"

namespace {

using mnd_test::Individuals;
using mnd_test::Simulation;

constexpr int kSamples = 4000;
constexpr int kBootstrapReplicates = 50;
constexpr int kStarts = 3;
constexpr int kStartsOfReplicate = 2;
constexpr int kMostIterations = 500;
constexpr double kEpsilon = 1e-7;

// What may lie between the standard deviation under the true frequencies and that under estimated
// ones, which are nearer to 0 and 1 on average: of the order of 1 / copies, and more where the phase
// of many individuals is unknown.
constexpr double kEstimatedForTrue = 0.03;
// Rarer haplotypes are often not estimated at all, and far from normal.
constexpr double kCommon = 0.1;

using Frequencies = std::vector<std::pair<std::string, double>>;

struct Case {
    const char* name;
    int individuals;
    Frequencies haplotypes;
};

void PrintTo(const Case& c, std::ostream* out) {
    *out << c.name;
}

std::string name_of_case(const ::testing::TestParamInfo<Case>& info) {
    return info.param.name;
}

const std::string& draw_haplotype(const Frequencies& haplotypes, Simulation& random) {
    double u = random.uniform();
    for (const auto& [text, freq] : haplotypes) {
        if (u < freq) return text;
        u -= freq;
    }
    return haplotypes.back().first;
}

// Unions of two random haplotypes. Their phase is lost: at each locus the alleles stand in the
// order of the alphabet.
std::vector<Individuals> draw_individuals(const Case& c, Simulation& random) {
    std::vector<Individuals> all;
    for (int i = 0; i < c.individuals; ++i) {
        Individuals one{draw_haplotype(c.haplotypes, random), draw_haplotype(c.haplotypes, random), 1.0};
        for (std::size_t l = 0; l < one.first.size(); ++l) {
            if (one.second[l] < one.first[l]) std::swap(one.first[l], one.second[l]);
        }
        all.push_back(one);
    }
    return all;
}

void add_estimates(const Case& c, Simulation& random, std::vector<mnd_test::Repeated>& estimates) {
    mnd_test::Estimated found(draw_individuals(c, random), false);
    found.s.NumInitCondBootstrapEM = kStartsOfReplicate;
    found.s.EMCheckPhenRedundancy = 1;
    found.run(kStarts, kMostIterations, kEpsilon);
    ASSERT_TRUE(found.sample.calc_sd_hapl_freq(found.sample.phen_db, found.haplo, found.s,
                                               kBootstrapReplicates, kMostIterations, kEpsilon));
    for (std::size_t h = 0; h < c.haplotypes.size(); ++h) {
        double freq = 0.0;
        double sd = 0.0;
        for (const mnd::TPopHaplotype* haplotype : found.haplo) {
            if (mnd_test::text_of(*haplotype) != c.haplotypes[h].first) continue;
            freq = haplotype->freq;
            sd = haplotype->sum_sq_freq;
        }
        estimates[h].add(freq, sd);
    }
    found.sample.phen_db.kill_gen_lists();
}

class EmBootstrap : public mnd_test::EmTest, public ::testing::WithParamInterface<Case> {};

TEST_P(EmBootstrap, TellsTheSpreadOfEstimatesOverSamples) {
    const Case& c = GetParam();
    Simulation random(20260401);
    std::vector<mnd_test::Repeated> estimates(c.haplotypes.size());
    for (int i = 0; i < kSamples && !HasFailure(); ++i)
        add_estimates(c, random, estimates);
    ASSERT_FALSE(HasFailure());
    for (std::size_t h = 0; h < c.haplotypes.size(); ++h) {
        const auto& [text, freq] = c.haplotypes[h];
        if (freq < kCommon) continue;
        expect_unbiased(text, estimates[h], freq);
        expect_spread(text, estimates[h], kEstimatedForTrue);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Of, EmBootstrap,
    ::testing::Values(
        Case{"OneLocus", 50, {{"a", 0.5}, {"b", 0.3}, {"c", 0.2}}},
        Case{"TwoLoci", 60, {{"aa", 0.4}, {"ab", 0.15}, {"ba", 0.15}, {"bb", 0.3}}},
        Case{"ThreeLoci",
             80,
             {{"aaa", 0.3}, {"aab", 0.2}, {"abb", 0.15}, {"bba", 0.15}, {"bbb", 0.15}, {"bab", 0.05}}}),
    name_of_case);

}  // namespace
