#include "within/em_engine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <limits>
#include <streambuf>

#include "foundation/message_codes.h"
#include "support/captured_reports.h"
#include "within/em_iteration.h"
#include "within/em_sample.h"

namespace {

using mnd_test::CapturedReports;
using mnd_test::EmTest;
using mnd_test::Estimated;
using mnd_test::Individuals;
using mnd_test::PlainEm;
using mnd_test::simulate;
using mnd_test::text_of;

using EmEngine = EmTest;
using EmBootstrap = EmTest;

// Frequencies as the program and the plain estimation have them, in the same order.
void expect_same_estimate(const Estimated& found, const PlainEm& plain, double tolerance) {
    ASSERT_EQ(static_cast<std::size_t>(found.haplo.count), plain.haplotypes.size());
    for (long h = 0; h < found.haplo.count; ++h) {
        const auto i = static_cast<std::size_t>(h);
        EXPECT_EQ(text_of(*found.haplo.data[h]), plain.haplotypes[i]);
        EXPECT_NEAR(found.haplo.data[h]->freq, plain.best[i], tolerance);
    }
    EXPECT_NEAR(found.likelihood, plain.best_likelihood, 1e-9);
    EXPECT_EQ(found.num_lhoods, static_cast<int>(plain.likelihoods.size()));
}

std::vector<double> frequencies(const mnd::TPopHaploDB& haplo) {
    std::vector<double> all;
    for (const mnd::TPopHaplotype* haplotype : haplo)
        all.push_back(haplotype->freq);
    return all;
}

const std::vector<Individuals> kThreeLoci = {
    {"AAA", "ABB", 3}, {"AAA", "BBB", 4}, {"ABC", "BAC", 2}, {"CCA", "ABB", 5}, {"AAA", "AAA", 2},
    {"BBB", "BBB", 1}, {"ABA", "BBC", 3}, {"CCA", "BBA", 2}, {"CBA", "CAB", 1}, {"AAC", "CBC", 2},
};

// ---- DistinctValues

TEST(DistinctValues, CountsValuesThatAreTheToleranceApart) {
    mnd::DistinctValues values(0.5);
    EXPECT_EQ(values.count(), 0);
    values.add(2.0);
    values.add(2.25);
    values.add(1.75);
    EXPECT_EQ(values.count(), 1);
    values.add(2.5);
    values.add(1.5);
    EXPECT_EQ(values.count(), 3);
    values.add(2.3);
    values.add(-7.0);
    values.add(-7.0);
    EXPECT_EQ(values.count(), 4);
    values.add(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(values.count(), 4);
}

// ---- Two loci: the cubic

// Counts of two biallelic loci, n[i][j] individuals with i copies of B at the first locus and j at
// the second.
using TwoLoci = int[3][3];

std::vector<Individuals> individuals_of(const TwoLoci& n) {
    const char* const strings[3][2] = {{"A", "A"}, {"A", "B"}, {"B", "B"}};
    std::vector<Individuals> all;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            if (n[i][j] == 0) continue;
            all.push_back({std::string(strings[i][0]) + strings[j][0],
                           std::string(strings[i][1]) + strings[j][1], static_cast<double>(n[i][j])});
        }
    }
    return all;
}

// The maximum-likelihood frequency of BB from the cubic equation of Hill 1974, Heredity 33:229-239:
// the root, of up to three, with the highest likelihood.
double exact_bb(const TwoLoci& n) {
    double N = 0;
    double p = 0;
    double q = 0;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            N += n[i][j];
            p += i * n[i][j];
            q += j * n[i][j];
        }
    }
    p /= 2 * N;
    q /= 2 * N;
    const double known = 2 * n[2][2] + n[2][1] + n[1][2];
    const auto cubic = [&](double f) {
        const double coupling = f * (1 - p - q + f);
        const double repulsion = (p - f) * (q - f);
        return (2 * N * f - known) * (coupling + repulsion) - n[1][1] * coupling;
    };
    const auto likelihood = [&](double f) {
        const double x[4] = {1 - p - q + f, q - f, p - f, f};  // AA, AB, BA, BB
        double sum = 0;
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) {
                double prob = 0;
                for (int g = 0; g < 4; ++g)
                    for (int h = 0; h < 4; ++h)
                        if (g / 2 + h / 2 == i && g % 2 + h % 2 == j) prob += x[g] * x[h];
                if (n[i][j] > 0) sum += n[i][j] * std::log(prob);
            }
        }
        return sum;
    };
    const double low = std::max(0.0, p + q - 1) + 1e-12;
    const double high = std::min(p, q) - 1e-12;
    const int kPieces = 100000;
    double best = low;
    for (int k = 0; k < kPieces; ++k) {
        double a = low + (high - low) * k / kPieces;
        double b = low + (high - low) * (k + 1) / kPieces;
        if (cubic(a) * cubic(b) > 0) continue;
        for (int halving = 0; halving < 60; ++halving) {
            const double middle = (a + b) / 2;
            (cubic(a) * cubic(middle) <= 0 ? b : a) = middle;
        }
        if (likelihood(a) > likelihood(best)) best = a;
    }
    return best;
}

TEST_F(EmEngine, SolvesTheCubicOfTwoLoci) {
    const TwoLoci tables[] = {
        {{10, 6, 2}, {8, 12, 4}, {1, 3, 5}},
        {{20, 3, 0}, {5, 15, 1}, {0, 2, 8}},
        {{2, 7, 11}, {6, 20, 3}, {14, 5, 1}},
        // Mostly double heterozygotes: two maxima, of which only the better one counts.
        {{1, 0, 2}, {1, 30, 0}, {1, 0, 2}},
    };
    for (const TwoLoci& n : tables) {
        Estimated found(individuals_of(n));
        found.run(20, 100000, 1e-12);
        EXPECT_NEAR(found.freq("BB"), exact_bb(n), 1e-7);
        EXPECT_NEAR(found.sum_of_freq(), 1.0, 1e-12);
    }
}

// ---- Against the plain estimation

TEST_F(EmEngine, ThreeLociAsThePlainEstimation) {
    Estimated found(kThreeLoci);
    PlainEm plain(kThreeLoci);
    mnd::reset_draws_taken();
    found.run(25, 500, 1e-7);
    EXPECT_EQ(mnd::draws_taken(), 25U * static_cast<unsigned>(found.haplo.count));
    const double next_found = next();
    seed();
    plain.run(false, 0.0, 25, 500, 1e-7);
    EXPECT_EQ(next(), next_found);
    expect_same_estimate(found, plain, 1e-12);
    EXPECT_GT(found.num_lhoods, 1);  // several maxima, of which the best is taken
}

TEST_F(EmEngine, EndsAStartAtTheNumberOfIterations) {
    for (const int iterations : {1, 2, 5}) {
        seed();
        Estimated found(kThreeLoci);
        PlainEm plain(kThreeLoci);
        found.run(3, iterations, 1e-12);
        seed();
        plain.run(false, 0.0, 3, iterations, 1e-12);
        expect_same_estimate(found, plain, 1e-13);
    }
}

TEST_F(EmEngine, EndsAStartWhenTheFrequenciesHardlyChange) {
    // A coarse threshold ends early: the plain estimation stops at the same iteration.
    for (const double epsilon : {0.5, 0.05, 0.005}) {
        seed();
        Estimated found(kThreeLoci);
        PlainEm plain(kThreeLoci);
        found.run(3, 10000, epsilon);
        seed();
        plain.run(false, 0.0, 3, 10000, epsilon);
        expect_same_estimate(found, plain, 1e-13);
    }
}

TEST_F(EmEngine, EndsAStartWhenNothingChangesAnyMore) {
    // No change is below a threshold of 0, yet the start does not run through its iterations.
    Estimated found(kThreeLoci);
    PlainEm plain(kThreeLoci);
    found.run(2, std::numeric_limits<int>::max(), 0.0);
    seed();
    plain.run(false, 0.0, 2, 20000, 0.0);
    expect_same_estimate(found, plain, 1e-13);
}

TEST_F(EmEngine, InbreedingEstimatedAsThePlainEstimation) {
    Estimated found(kThreeLoci);
    PlainEm plain(kThreeLoci);
    mnd::reset_draws_taken();
    found.run(10, 300, 1e-9, true);
    // One draw a haplotype and one for F in each start.
    EXPECT_EQ(mnd::draws_taken(), 10U * static_cast<unsigned>(found.haplo.count + 1));
    seed();
    plain.run(true, 0.0, 10, 300, 1e-9);
    expect_same_estimate(found, plain, 1e-12);
    EXPECT_NEAR(found.F, plain.best_F, 1e-12);
    for (long h = 0; h < found.haplo.count; ++h)
        EXPECT_NEAR(found.haplo.data[h]->homo_freq, plain.ibd[static_cast<std::size_t>(h)], 1e-9);
}

TEST_F(EmEngine, InbreedingHeldAsThePlainEstimation) {
    Estimated found(kThreeLoci);
    PlainEm plain(kThreeLoci);
    found.F = 0.35;
    mnd::reset_draws_taken();
    found.run(10, 300, 1e-9, true);
    EXPECT_EQ(mnd::draws_taken(), 10U * static_cast<unsigned>(found.haplo.count));
    seed();
    plain.run(true, 0.35, 10, 300, 1e-9);
    expect_same_estimate(found, plain, 1e-12);
    EXPECT_EQ(found.F, 0.35);
    EXPECT_EQ(found.sample.phen_db.inbreeding, 0.35);
}

// ---- Maxima found without iterations

// One locus: p = 2 nAA + nAB over 2N and F = 1 - nAB / (2 N p q) fit the three counts exactly, so
// they are the maximum. Here N = 100, p = 0.6, and half of the 48 heterozygotes expected.
TEST_F(EmEngine, InbreedingOfOneLocusIsTheDeficitOfHeterozygotes) {
    Estimated found({{"A", "A", 48}, {"A", "B", 24}, {"B", "B", 28}});
    found.run(5, 100000, 1e-13, true);
    EXPECT_NEAR(found.freq("A"), 0.6, 1e-8);
    EXPECT_NEAR(found.F, 0.5, 1e-8);
    EXPECT_NEAR(found.likelihood, 48 * std::log(0.48) + 24 * std::log(0.24) + 28 * std::log(0.28), 1e-8);
}

// No step in any direction on the simplex, nor of F, raises the likelihood.
void expect_maximum(const PlainEm& model, const std::vector<double>& p, double F, bool vary_F) {
    const double at_estimate = model.log_likelihood_of(p, F);
    for (const double size : {1e-2, 1e-3, 1e-4}) {
        for (std::size_t to = 0; to < p.size(); ++to) {
            for (std::size_t from = 0; from < p.size(); ++from) {
                if (to == from || p[from] < size) continue;
                std::vector<double> moved = p;
                moved[to] += size;
                moved[from] -= size;
                ASSERT_LE(model.log_likelihood_of(moved, F), at_estimate + 1e-6) << to << ' ' << from;
            }
        }
        if (!vary_F) continue;
        ASSERT_LE(model.log_likelihood_of(p, F + size), at_estimate + 1e-6);
        ASSERT_LE(model.log_likelihood_of(p, F - size), at_estimate + 1e-6);
    }
}

TEST_F(EmEngine, FindsTheMaximumWithInbreedingEstimated) {
    const std::vector<Individuals> data =
        simulate(150, {{"AA", 0.4}, {"AB", 0.1}, {"BA", 0.2}, {"BB", 0.3}}, 0.3);
    Estimated found(data);
    found.run(10, 100000, 1e-12, true);
    EXPECT_GT(found.F, 0.1);
    expect_maximum(PlainEm(data), frequencies(found.haplo), found.F, true);
}

TEST_F(EmEngine, FindsTheMaximumWithInbreedingHeld) {
    const std::vector<Individuals> data =
        simulate(150, {{"AA", 0.4}, {"AB", 0.1}, {"BA", 0.2}, {"BB", 0.3}}, 0.3);
    Estimated found(data);
    found.F = 0.6;
    found.run(10, 100000, 1e-12, true);
    expect_maximum(PlainEm(data), frequencies(found.haplo), 0.6, false);
}

TEST_F(EmEngine, FindsTheMaximumOfManyHaplotypes) {
    Estimated found(kThreeLoci);
    found.run(50, 100000, 1e-10);
    expect_maximum(PlainEm(kThreeLoci), frequencies(found.haplo), 0.0, false);
}

// A dominant allele hides the recessive: only the share of 0/0 shows it, r = sqrt(9 / 100).
TEST_F(EmEngine, RecessiveAlleleIsTheRootOfItsHomozygotes) {
    Estimated found({{"A", "A", 91}, {"0", "0", 9}});
    found.sample.RecessiveAllelesEM = 1;
    found.run(5, 100000, 1e-13);
    EXPECT_EQ(found.haplo.count, 2);
    EXPECT_NEAR(found.freq("0"), 0.3, 1e-9);
    EXPECT_NEAR(found.freq("A"), 0.7, 1e-9);
}

TEST_F(EmEngine, RecoversKnownFrequencies) {
    const std::vector<std::pair<std::string, double>> truth = {
        {"AAAAA", 0.35}, {"ABBAB", 0.25}, {"BABBA", 0.2}, {"BBAAB", 0.15}, {"ABABA", 0.05}};
    Estimated found(simulate(2000, truth));
    found.s.EMCheckPhenRedundancy = 1;
    found.run(20, 1000, 1e-8);
    double others = 1.0;
    for (const auto& [text, freq] : truth) {
        // Four standard errors of a share of 4000 gene copies.
        EXPECT_NEAR(found.freq(text), freq, 4.0 * std::sqrt(freq * (1 - freq) / 4000)) << text;
        others -= found.freq(text);
    }
    EXPECT_NEAR(others, 0.0, 1e-3);
}

TEST_F(EmEngine, RecoversAKnownCoefficientOfInbreeding) {
    Estimated found(simulate(3000, {{"AAA", 0.4}, {"ABB", 0.3}, {"BAB", 0.2}, {"BBA", 0.1}}, 0.25));
    found.s.EMCheckPhenRedundancy = 1;
    found.run(10, 2000, 1e-9, true);
    // The standard error of a share of 3000 is below 0.01.
    EXPECT_NEAR(found.F, 0.25, 0.04);
}

// ---- What the operation promises

TEST_F(EmEngine, OneGenotypeTakesASecondIterationToShowThatNothingChanges) {
    const std::vector<Individuals> one = {{"AB", "AC"}};
    Estimated found(one);
    // After one iteration the solution stands there, whatever the threshold.
    found.run(1, 1, 1e-9);
    EXPECT_DOUBLE_EQ(found.freq("AB"), 0.5);
    EXPECT_DOUBLE_EQ(found.freq("AC"), 0.5);
    // The likelihood of a single iteration is still the one of the start.
    EXPECT_LT(found.likelihood, std::log(0.5) - 1e-6);
    Estimated again(one);
    again.run(1, 100, 1e-9);
    EXPECT_DOUBLE_EQ(again.likelihood, std::log(0.5));
}

TEST_F(EmEngine, OneHaplotypeStartsAtItsSolution) {
    Estimated found({{"AB", "AB", 5}});
    found.run(1, 1, 1e-9);
    EXPECT_EQ(found.freq("AB"), 1.0);
    EXPECT_EQ(found.likelihood, 0.0);
}

TEST_F(EmEngine, OneStartHasOneLikelihood) {
    Estimated found(kThreeLoci);
    found.run(1, 100, 1e-7);
    EXPECT_EQ(found.num_lhoods, 1);
}

TEST_F(EmEngine, IgnoresFWithoutInbreeding) {
    Estimated with_F(kThreeLoci);
    with_F.F = 0.4;
    with_F.run(5, 100, 1e-7);
    seed();
    Estimated without(kThreeLoci);
    without.run(5, 100, 1e-7);
    EXPECT_EQ(with_F.F, 0.4);
    EXPECT_EQ(with_F.sample.phen_db.inbreeding, 0.0);
    EXPECT_EQ(frequencies(with_F.haplo), frequencies(without.haplo));
    EXPECT_EQ(with_F.likelihood, without.likelihood);
}

// Without iterations a start keeps its weights, and its likelihood is that of the probabilities
// that the phenotypes came with: here the third start of three, as all have the same one.
TEST_F(EmEngine, NoIterationLeavesTheFrequenciesAtTheStart) {
    Estimated found(kThreeLoci);
    for (mnd::TPhenotype* phenotype : found.sample.phen_db)
        phenotype->phen_prob = 0.5;
    found.run(3, 0, 1e-7);
    seed();
    PlainEm plain(kThreeLoci);
    plain.draw_start();
    EXPECT_NEAR(found.likelihood, 25 * std::log(0.5), 1e-12);  // 25 individuals
    EXPECT_EQ(found.num_lhoods, 1);
    // Equal likelihoods: the earliest start stays.
    for (std::size_t h = 0; h < plain.freq.size(); ++h)
        EXPECT_DOUBLE_EQ(found.haplo.data[h]->freq, plain.freq[h]);
}

// A haplotype whose start is fixed has the weight 1, takes no draw, and keeps both at every start.
TEST_F(EmEngine, FixedStartsTakeNoDraw) {
    Estimated found({{"A", "B", 3}});
    for (mnd::TPhenotype* phenotype : found.sample.phen_db)
        phenotype->phen_prob = 0.5;
    found.haplo.insert(found.haplotype("A"), 0.0)->homo_flag = 1;
    seed();
    const double weight = 1.0 + 1000.0 * mnd::ran3();
    seed();
    mnd::reset_draws_taken();
    found.run(2, 0, 1e-7);
    EXPECT_EQ(mnd::draws_taken(), 2U);
    EXPECT_DOUBLE_EQ(found.freq("A"), 1.0 / (1.0 + weight));
    EXPECT_DOUBLE_EQ(found.freq("B"), weight / (1.0 + weight));
}

TEST_F(EmEngine, NoIterationOfNewPhenotypesIsAFailure) {
    Estimated found(kThreeLoci);
    EXPECT_EQ(found.run(3, 0, 1e-7), mnd::kLowestLogLikelihood);
    EXPECT_EQ(found.num_lhoods, 1);
    EXPECT_EQ(found.sum_of_freq(), 0.0);
}

TEST_F(EmEngine, NoStartEstimatesNothing) {
    Estimated found(kThreeLoci);
    mnd::reset_draws_taken();
    EXPECT_EQ(found.run(0, 100, 1e-7), mnd::kLowestLogLikelihood);
    EXPECT_EQ(found.num_lhoods, 0);
    EXPECT_EQ(found.sum_of_freq(), 0.0);
    EXPECT_EQ(mnd::draws_taken(), 0U);
}

TEST_F(EmEngine, AnEmptySampleEstimatesNothing) {
    Estimated found(std::vector<Individuals>{});
    found.run(3, 100, 1e-7, true);
    EXPECT_EQ(found.haplo.count, 0);
    EXPECT_TRUE(std::isfinite(found.likelihood));
    EXPECT_TRUE(std::isfinite(found.F));
}

TEST_F(EmEngine, LeavesTheGenotypesAtTheBestEstimate) {
    Estimated found({{"AA", "BB", 3}, {"AA", "AA", 2}, {"AB", "AB", 1}});
    found.run(10, 1000, 1e-9);
    const mnd::TPhenotype& phenotype = *found.sample.phen_db.data[0];
    ASSERT_EQ(phenotype.genotypes.count, 2);
    const double coupling = 2 * found.freq("AA") * found.freq("BB");
    const double repulsion = 2 * found.freq("AB") * found.freq("BA");
    EXPECT_NEAR(phenotype.genotypes.data[0]->prob, coupling, 1e-12);
    EXPECT_NEAR(phenotype.genotypes.data[0]->rel_prob, coupling / (coupling + repulsion), 1e-12);
    EXPECT_NEAR(phenotype.phen_prob, coupling + repulsion, 1e-12);
}

TEST_F(EmEngine, EstimatesTheSameStoreAnew) {
    Estimated found(kThreeLoci);
    found.run(3, 100, 1e-7);
    const std::vector<double> first = frequencies(found.haplo);
    found.haplo.empty();
    seed();
    found.run(3, 100, 1e-7);
    EXPECT_EQ(frequencies(found.haplo), first);
}

TEST_F(EmEngine, CountsHundredUnitsOfWorkAStart) {
    mnd::settings::global_work_done = 0.0;
    Estimated found(kThreeLoci);
    found.run(7, 10, 1e-7);
    EXPECT_EQ(mnd::settings::global_work_done, 700.0);
    mnd::settings::global_work_done = 0.0;
}

TEST_F(EmEngine, ShowsTheProgress) {
    mnd::silentMendrake = false;
    mnd::settings::global_work_done = 0.0;
    mnd::settings::global_work_to_do = 400.0;
    mnd::settings::old_message[0] = '\0';
    mnd::settings::set_message("Estimating");
    Estimated found(kThreeLoci);
    mnd_test::CapturedOutput output;
    found.run(2, 10, 1e-7);
    EXPECT_EQ(output.text(), "25% : Estimating\n50% : Estimating\n");
    mnd::settings::global_work_to_do = mnd::settings::global_work_done = 0.0;
    mnd::settings::set_message("");
    mnd::settings::old_message[0] = '\0';
}

TEST_F(EmEngine, StopsWhenTold) {
    Estimated found(kThreeLoci);
    found.s.stop_computations = 1;
    mnd::reset_draws_taken();
    EXPECT_EQ(found.run(3, 100, 1e-7), -1000.0);
    EXPECT_EQ(mnd::draws_taken(), 0U);
    EXPECT_EQ(found.haplo.count, 0);
}

// Sets the stop flag as soon as a line is shown.
class StoppingOutput : public std::streambuf {
public:
    explicit StoppingOutput(mnd::settings& s) : settings_(s), before_(std::cout.rdbuf(this)) {}
    ~StoppingOutput() override { std::cout.rdbuf(before_); }
    StoppingOutput(const StoppingOutput&) = delete;
    StoppingOutput& operator=(const StoppingOutput&) = delete;

protected:
    int overflow(int c) override {
        settings_.stop_computations = 1;
        return c;
    }

private:
    mnd::settings& settings_;
    std::streambuf* before_;  // not owned: the buffer of std::cout
};

TEST_F(EmEngine, StopsBetweenStarts) {
    mnd::silentMendrake = false;
    mnd::settings::old_message[0] = '\0';
    mnd::settings::set_message("Estimating");
    Estimated found(kThreeLoci);
    mnd::reset_draws_taken();
    {
        const StoppingOutput output(found.s);
        EXPECT_EQ(found.run(5, 100, 1e-7), -1000.0);
    }
    EXPECT_EQ(found.num_lhoods, 1);
    EXPECT_EQ(mnd::draws_taken(), static_cast<unsigned>(found.haplo.count));
    mnd::settings::set_message("");
    mnd::settings::old_message[0] = '\0';
}

TEST_F(EmEngine, MergesEqualPhenotypesWhenAsked) {
    std::vector<Individuals> one_by_one;
    for (const Individuals& kind : kThreeLoci)
        for (int i = 0; i < static_cast<int>(kind.count); ++i)
            one_by_one.push_back(i % 2 == 0 ? Individuals{kind.first, kind.second}
                                            : Individuals{kind.second, kind.first});
    // Seen in the other order an individual lists its haplotypes in another order, but the
    // first of each kind decides once they are merged.
    Estimated merged(one_by_one);
    merged.s.EMCheckPhenRedundancy = 1;
    merged.run(5, 100, 1e-7);
    seed();
    Estimated classes(kThreeLoci);
    classes.run(5, 100, 1e-7);
    EXPECT_EQ(merged.sample.phen_db.count, classes.sample.phen_db.count);
    EXPECT_EQ(frequencies(merged.haplo), frequencies(classes.haplo));
    Estimated apart(one_by_one);
    apart.run(1, 1, 1e-7);
    EXPECT_EQ(apart.sample.phen_db.count, 25);
}

TEST_F(EmEngine, IndividualsOneByOneGiveTheInbreedingOfTheirClasses) {
    Estimated apart({{"A", "A"}, {"A", "B"}, {"A", "A"}, {"B", "B"}, {"A", "A"}, {"B", "B"}});
    apart.run(5, 10000, 1e-12, true);
    Estimated classes({{"A", "A", 3}, {"A", "B"}, {"B", "B", 2}});
    classes.run(5, 10000, 1e-12, true);
    // p = 7/12, F = 1 - 1 / (12 p q) = 1 - 12/35.
    EXPECT_NEAR(apart.F, 1.0 - 12.0 / 35.0, 1e-9);
    EXPECT_NEAR(classes.F, apart.F, 1e-9);
    EXPECT_NEAR(apart.sum_of_freq(), 1.0, 1e-12);
}

TEST_F(EmEngine, CompactsTheHaplotypes) {
    // The second and the last locus have a single allele.
    std::vector<Individuals> data;
    for (const Individuals& kind : kThreeLoci)
        data.push_back({std::string{kind.first[0], 'Z', kind.first[1], kind.first[2], 'Z'},
                        std::string{kind.second[0], 'Z', kind.second[1], kind.second[2], 'Z'}, kind.count});
    Estimated found(data, false);
    found.run(5, 100, 1e-7, false, true);
    seed();
    Estimated plain(kThreeLoci);
    plain.run(5, 100, 1e-7);
    ASSERT_EQ(found.haplo.count, plain.haplo.count);
    for (long h = 0; h < plain.haplo.count; ++h)
        EXPECT_EQ(text_of(*found.haplo.data[h]), text_of(*plain.haplo.data[h]));
    EXPECT_EQ(frequencies(found.haplo), frequencies(plain.haplo));
    ASSERT_NE(found.haplo.reference, nullptr);
    EXPECT_EQ(found.haplo.reference->num_loci(), 5);
    EXPECT_EQ(found.haplo.poly_mask[1], 0);
    EXPECT_EQ(found.haplo.poly_mask[2], 1);
    EXPECT_NE(found.haplo.find(*found.haplo.data[1]), nullptr);
}

TEST_F(EmEngine, RefusesAPhenotypeWithTooManyHeterozygousLoci) {
    Estimated found({{std::string(33, 'A'), std::string(33, 'A')},
                     {std::string(33, 'A'), std::string(33, 'B')},
                     {std::string(33, 'A'), std::string(33, 'A')}});
    CapturedReports reports;
    mnd::reset_draws_taken();
    EXPECT_EQ(found.run(3, 100, 1e-7), -1000.0);
    EXPECT_EQ(mnd::draws_taken(), 0U);
    EXPECT_EQ(found.num_lhoods, 0);
    EXPECT_EQ(found.haplo.count, 0);
    for (const mnd::TPhenotype* phenotype : found.sample.phen_db)
        EXPECT_EQ(phenotype->genotypes.count, 0);
    ASSERT_EQ(reports.all().size(), 1U);
    EXPECT_EQ(reports.all()[0],
              (mnd_test::Report{mnd::Error, "TPhenotype::build_genotypes()", mnd::kTooManyHeterozygousLoci}));
}

// ---- Continuing from part of the loci

TEST_F(EmEngine, KeepsOnlyPairsWhosePartsWereFoundBefore) {
    Estimated found({{"AAA", "BBB", 3}, {"AAA", "AAB", 2}});
    // On the first two loci only AA and BB were found.
    mnd::TPopHaploDB before;
    mnd::TPopHaplotype part = found.haplotype("AA");
    before.insert(part, 0.6);
    part = found.haplotype("BB");
    before.insert(part, 0.4);
    part = found.haplotype("AB");
    before.insert(part, 0.0);
    int loci[] = {1, 1, 0};
    found.likelihood =
        found.sample.calc_ML_hapl_freq_hill95_LD(found.sample.phen_db, found.haplo, found.s, found.num_lhoods,
                                                 0, found.F, &before, loci, 0, 5, 1000, 1e-10);
    // AAA/BBB and AAB/BBA stay of the four resolutions of the first kind.
    EXPECT_EQ(found.haplo.count, 4);
    EXPECT_EQ(found.sample.phen_db.data[0]->genotypes.count, 2);
    EXPECT_EQ(found.freq("ABA"), -1.0);
    EXPECT_NEAR(found.sum_of_freq(), 1.0, 1e-12);
}

TEST_F(EmEngine, FailsAsAWholeWhenAPhenotypeHasNoResolution) {
    Estimated found({{"AA", "AB", 3}, {"BA", "BB", 2}});
    mnd::TPopHaploDB before;
    before.insert(found.haplotype("A"), 1.0);
    int loci[] = {1, 0};
    found.likelihood =
        found.sample.calc_ML_hapl_freq_hill95_LD(found.sample.phen_db, found.haplo, found.s, found.num_lhoods,
                                                 0, found.F, &before, loci, 0, 5, 1000, 1e-10);
    EXPECT_EQ(found.likelihood, mnd::kLowestLogLikelihood);
    EXPECT_EQ(found.num_lhoods, 1);
    EXPECT_EQ(found.haplo.count, 2);
    EXPECT_EQ(found.sum_of_freq(), 0.0);
    // No replicate can be drawn from it.
    found.haplo.data[0]->sum_sq_freq = 7.0;
    mnd::reset_draws_taken();
    EXPECT_TRUE(found.sample.calc_sd_hapl_freq(found.sample.phen_db, found.haplo, found.s, 10, 100, 1e-7));
    EXPECT_EQ(mnd::draws_taken(), 0U);
    EXPECT_EQ(found.haplo.data[0]->sum_sq_freq, 0.0);
}

// An impossible coefficient makes every heterozygote impossible; nothing breaks.
TEST_F(EmEngine, AnImpossibleCoefficientFails) {
    for (const double F : {2.0, 1.0, 1e300}) {
        Estimated found(kThreeLoci);
        found.F = F;
        EXPECT_EQ(found.run(2, 50, 1e-7, true), mnd::kLowestLogLikelihood) << F;
        EXPECT_EQ(found.sum_of_freq(), 0.0);
    }
}

// ---- Bootstrap

struct PlainBootstrap {
    std::vector<double> sum;
    std::vector<double> sum_sq;
    std::vector<double> sd;

    PlainBootstrap(const PlainEm& estimate, const std::vector<double>& freq, int n, int replicates,
                   int starts, int max_iter, double epsilon)
        : sum(freq.size()), sum_sq(freq.size()), sd(freq.size()) {
        for (int r = 0; r < replicates; ++r) {
            std::vector<Individuals> drawn;
            for (int i = 0; i < n; ++i) {
                const std::string first = draw(estimate, freq);
                drawn.push_back({first, draw(estimate, freq)});
            }
            PlainEm replicate(drawn);
            replicate.run(false, 0.0, starts, max_iter, epsilon);
            for (std::size_t h = 0; h < freq.size(); ++h) {
                if (freq[h] <= 1e-07) continue;
                for (std::size_t k = 0; k < replicate.haplotypes.size(); ++k) {
                    if (replicate.haplotypes[k] != estimate.haplotypes[h]) continue;
                    sum[h] += replicate.best[k];
                    sum_sq[h] += replicate.best[k] * replicate.best[k];
                }
            }
        }
        double v = 0.0;
        for (std::size_t h = 0; h < freq.size(); ++h) {
            if (freq[h] > 0.0) v = (sum_sq[h] - sum[h] * sum[h] / replicates) / (replicates - 1);
            sd[h] = v > 0.0 ? std::sqrt(v) : 0.0;
        }
    }

private:
    static std::string draw(const PlainEm& estimate, const std::vector<double>& freq) {
        const double u = mnd::ran3();
        double running = 0.0;
        for (std::size_t h = 0; h < freq.size(); ++h) {
            running += freq[h];
            if (running > u) return estimate.haplotypes[h];
        }
        ADD_FAILURE() << "no haplotype drawn";
        return "";
    }
};

TEST_F(EmBootstrap, StandardDeviationsAsThePlainBootstrap) {
    Estimated found(kThreeLoci);
    found.run(5, 200, 1e-7);
    found.s.NumInitCondBootstrapEM = 3;
    const std::vector<double> freq = frequencies(found.haplo);
    seed();
    ASSERT_TRUE(found.sample.calc_sd_hapl_freq(found.sample.phen_db, found.haplo, found.s, 20, 200, 1e-7));
    const double next_found = next();
    seed();
    const PlainBootstrap plain(PlainEm(kThreeLoci), freq, 25, 20, 3, 200, 1e-7);
    EXPECT_EQ(next(), next_found);
    double largest = 0.0;
    for (std::size_t h = 0; h < freq.size(); ++h) {
        EXPECT_NEAR(found.haplo.data[h]->sum_sq_freq, plain.sd[h], 1e-9) << h;
        EXPECT_NEAR(found.haplo.data[h]->sum_freq, plain.sum[h], 1e-9) << h;
        EXPECT_EQ(found.haplo.data[h]->freq, freq[h]);
        largest = std::max(largest, plain.sd[h]);
    }
    EXPECT_GT(largest, 0.03);
}

// One locus is counted, not estimated: the s.d. is that of a share of 200 gene copies.
TEST_F(EmBootstrap, StandardDeviationOfAnAlleleIsBinomial) {
    Estimated found({{"A", "A", 9}, {"A", "B", 42}, {"B", "B", 49}});
    found.run(2, 100, 1e-9);
    found.s.NumInitCondBootstrapEM = 1;
    found.s.EMCheckPhenRedundancy = 1;
    found.sample.calc_sd_hapl_freq(found.sample.phen_db, found.haplo, found.s, 1000, 100, 1e-9);
    const double expected = std::sqrt(0.3 * 0.7 / 200);
    // The s.d. of an s.d. from 1000 replicates is 1 / sqrt(2000) of it.
    for (const mnd::TPopHaplotype* haplotype : found.haplo)
        EXPECT_NEAR(haplotype->sum_sq_freq, expected, 4.0 * expected / std::sqrt(2000.0));
}

TEST_F(EmBootstrap, OneReplicateLeavesTheSquare) {
    Estimated found(kThreeLoci);
    found.run(5, 200, 1e-7);
    found.s.NumInitCondBootstrapEM = 2;
    EXPECT_TRUE(found.sample.calc_sd_hapl_freq(found.sample.phen_db, found.haplo, found.s, 1, 200, 1e-7));
    bool any = false;
    for (const mnd::TPopHaplotype* haplotype : found.haplo) {
        EXPECT_DOUBLE_EQ(haplotype->sum_sq_freq, haplotype->sum_freq * haplotype->sum_freq);
        any = any || haplotype->sum_freq > 0.0;
    }
    EXPECT_TRUE(any);
}

TEST_F(EmBootstrap, NoReplicateDoesNothing) {
    Estimated found(kThreeLoci);
    found.run(5, 200, 1e-7);
    mnd::reset_draws_taken();
    for (const int replicates : {0, -3})
        EXPECT_TRUE(found.sample.calc_sd_hapl_freq(found.sample.phen_db, found.haplo, found.s, replicates,
                                                   200, 1e-7));
    EXPECT_EQ(mnd::draws_taken(), 0U);
}

TEST_F(EmBootstrap, StartsAfreshWhenCalledAgain) {
    Estimated found(kThreeLoci);
    found.run(5, 200, 1e-7);
    found.s.NumInitCondBootstrapEM = 1;
    std::vector<double> first;
    for (int time = 0; time < 2; ++time) {
        seed();
        found.sample.calc_sd_hapl_freq(found.sample.phen_db, found.haplo, found.s, 5, 200, 1e-7);
        std::vector<double> sds;
        for (const mnd::TPopHaplotype* haplotype : found.haplo)
            sds.push_back(haplotype->sum_sq_freq);
        if (time == 0) first = sds;
        EXPECT_EQ(sds, first);
    }
}

TEST_F(EmBootstrap, LeavesTheObservedIndividualsAlone) {
    Estimated found(kThreeLoci);
    found.run(5, 200, 1e-7);
    found.s.NumInitCondBootstrapEM = 1;
    found.sample.calc_sd_hapl_freq(found.sample.phen_db, found.haplo, found.s, 5, 200, 1e-7);
    ASSERT_EQ(found.sample.phen_db.count, static_cast<long>(kThreeLoci.size()));
    EXPECT_EQ(found.sample.phen_db.data[3]->freq, 5.0);
    EXPECT_EQ(found.sample.phen_db.data[3]->genotypes.data[0]->hapl_2,
              found.haplo.find(found.haplotype("ABB")));
}

TEST_F(EmBootstrap, SaysWhenItWasStopped) {
    Estimated found(kThreeLoci);
    found.run(5, 200, 1e-7);
    found.s.NumInitCondBootstrapEM = 1;
    found.s.stop_computations = 1;
    EXPECT_FALSE(found.sample.calc_sd_hapl_freq(found.sample.phen_db, found.haplo, found.s, 5, 200, 1e-7));
    for (const mnd::TPopHaplotype* haplotype : found.haplo)
        EXPECT_EQ(haplotype->sum_sq_freq, 0.0);
}

// Two haplotypes that differ at 33 loci, never seen in one individual, meet in a replicate.
TEST_F(EmBootstrap, EndsWhenAReplicateCannotBeResolved) {
    Estimated found(
        {{std::string(33, 'A'), std::string(33, 'A'), 5}, {std::string(33, 'B'), std::string(33, 'B'), 5}});
    found.run(1, 100, 1e-7);
    ASSERT_NEAR(found.sum_of_freq(), 1.0, 1e-12);
    found.s.NumInitCondBootstrapEM = 1;
    CapturedReports reports;
    EXPECT_FALSE(found.sample.calc_sd_hapl_freq(found.sample.phen_db, found.haplo, found.s, 50, 100, 1e-7));
    ASSERT_EQ(reports.all().size(), 1U);
    EXPECT_EQ(reports.all()[0].code, mnd::kTooManyHeterozygousLoci);
    for (const mnd::TPopHaplotype* haplotype : found.haplo)
        EXPECT_EQ(haplotype->sum_sq_freq, 0.0);
}

// Frequencies that sum to less than 1 leave draws without a haplotype: each is reported, and the
// individual drawn anew, both copies of it.
TEST_F(EmBootstrap, RedrawsAnIndividualWhoseDrawFindsNoHaplotype) {
    Estimated found({{"A", "A", 5}, {"B", "B", 5}});
    found.run(1, 100, 1e-7);
    found.haplo.data[0]->freq = 0.4;
    found.haplo.data[1]->freq = 0.4;
    seed();
    int redrawn = 0;
    for (int i = 0; i < 10; ++i) {
        const double u_1 = next();
        const double u_2 = next();
        if (u_1 < 0.8 && u_2 < 0.8) continue;
        ++redrawn;
        --i;
    }
    ASSERT_GT(redrawn, 0);
    const double after = next();
    seed();
    CapturedReports reports;
    const mnd::TPhenDB drawn(10, found.haplo);
    EXPECT_EQ(drawn.count, 10);
    EXPECT_EQ(next(), after);
    ASSERT_EQ(reports.all().size(), static_cast<std::size_t>(redrawn));
    EXPECT_EQ(reports.all()[0].code, mnd::kSpecifiedAlleleNotFound);
    EXPECT_EQ(reports.all()[0].function_name, "TPhenDB::create_random_list()");
}

}  // namespace
