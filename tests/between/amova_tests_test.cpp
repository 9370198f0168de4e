#include "between/amova_tests.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <numeric>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "amova_data.h"
#include "between/amova_tables.h"
#include "foundation/random.h"
#include "model/population.h"
#include "run/errors.h"
#include "support/captured_log.h"
#include "support/project_log.h"
#include "support/seeded_stream.h"
#include "support/text_files.h"

namespace {

using mnd::Amova;
using mnd::amova_results;
using mnd::HitCounter;
using mnd::Tail;
using mnd_test::AmovaData;
using mnd_test::Copies;
using mnd_test::Distance;
using mnd_test::Group;

// ---- The tests of the designs, told anew: units are shuffled in plain vectors, and each
// arrangement is analysed from the beginning as data of its own.

// What a shuffle moves, and the blocks within which it does.
enum class Moves { kCopies, kCopiesInGroups, kCopiesInSamples, kPairs, kPairsInGroups, kSamples };

using Component = std::function<double(const Amova&)>;

struct PlainTest {
    Moves moves;
    Tail tail;
    Component component;  // from an analysis of the rearranged data
    double amova_results::*p_value;
    std::vector<double> amova_results::*null_values;
};

struct PlainDesign {
    const char* name;
    int (Amova::*run)();
    bool individuals;
    std::vector<Group> groups;
    std::vector<PlainTest> tests;
};

Component field(double Amova::*component) {
    return [component](const Amova& a) { return a.*component; };
}

// The statistic of this test counts the mean square of individuals half.
double among_samples_of_individuals(const Amova& a) {
    return a.MSD[0] / a.n - a.MSD[1] / (2.0 * a.n);
}

constexpr int kRows = 6;

const std::vector<Group> kTwoGroups = {{{0, 1, 2, 2}, {0, 0}, {5, 5}}, {{3, 4}, {1, 5, 3, 3}}};
const std::vector<Group> kOneGroup = {{{0, 1, 2, 2, 0, 0}, {3, 4}, {1, 5, 3, 3}}};

std::vector<PlainDesign> plain_designs() {
    using R = amova_results;
    const PlainTest samples_among_groups = {Moves::kSamples, Tail::kUpper, field(&Amova::Va), &R::FCT_pvalue,
                                            &R::null_Va};
    const auto within_samples = [](Moves moves) {
        return PlainTest{moves, Tail::kLower, field(&Amova::Vc), &R::FST_pvalue, &R::null_Vc};
    };
    const auto among_samples_in_groups = [](Moves moves) {
        return PlainTest{moves, Tail::kUpper, field(&Amova::Vb), &R::FSC_pvalue, &R::null_Vb};
    };
    const auto among_samples = [](Moves moves) {
        return PlainTest{moves, Tail::kUpper, field(&Amova::Va), &R::FST_pvalue, &R::null_Va};
    };
    return {
        {"G_P_H",
         &Amova::AMOVA_G_P_H,
         false,
         {{{0, 1, 2}, {0, 0}, {5, 5}}, {{3, 4}, {1, 5, 3, 3, 3}}},
         {within_samples(Moves::kCopies), among_samples_in_groups(Moves::kCopiesInGroups),
          samples_among_groups}},
        {"G_P_IH",
         &Amova::AMOVA_G_P_IH,
         false,
         kTwoGroups,
         {within_samples(Moves::kPairs), among_samples_in_groups(Moves::kPairsInGroups),
          samples_among_groups}},
        {"1G_P_H",
         &Amova::AMOVA_1G_P_H,
         false,
         {{{0, 1, 2}, {3, 4}, {1, 5, 3, 3}}},
         {among_samples(Moves::kCopiesInGroups)}},
        {"1G_P_IH", &Amova::AMOVA_1G_P_IH, false, kOneGroup, {among_samples(Moves::kPairsInGroups)}},
        {"1G_P_I",
         &Amova::AMOVA_1G_P_I,
         true,
         kOneGroup,
         {{Moves::kCopiesInSamples, Tail::kUpper, field(&Amova::Vb), &R::FIS_pvalue, &R::null_Vb},
          {Moves::kPairsInGroups, Tail::kUpper, among_samples_of_individuals, &R::FST_pvalue, &R::null_Va},
          {Moves::kCopiesInGroups, Tail::kLower, field(&Amova::Vc), &R::FIT_pvalue, &R::null_Vc}}},
        {"G_P_I",
         &Amova::AMOVA_G_P_I,
         true,
         kTwoGroups,
         {{Moves::kCopies, Tail::kLower, field(&Amova::Vd), &R::FIT_pvalue, &R::null_Vd},
          {Moves::kCopiesInSamples, Tail::kUpper, field(&Amova::Vc), &R::FIS_pvalue, &R::null_Vc},
          among_samples_in_groups(Moves::kPairsInGroups),
          samples_among_groups}},
        {"1G_1P_I",
         &Amova::AMOVA_1G_1P_I,
         true,
         {{{0, 1, 2, 2, 3, 3, 3, 4}}},
         {{Moves::kCopiesInSamples, Tail::kUpper, field(&Amova::Va), &R::FIS_pvalue, &R::null_Va}}},
    };
}

// The observed data as units to be moved, and the blocks in which a test moves them.
struct Units {
    struct Block {
        int first, behind, stop;  // units first to behind - 1; none below stop is drawn for
    };
    bool single_precision;
    std::vector<Copies> unit;
    std::vector<Block> blocks;
};

bool are_copies(Moves moves) {
    return moves == Moves::kCopies || moves == Moves::kCopiesInGroups || moves == Moves::kCopiesInSamples;
}

Units observed_units(const std::vector<Group>& groups, Moves moves) {
    Units units;
    units.single_precision = are_copies(moves);
    const int width = are_copies(moves) ? 1 : 2;
    int all = 0;
    for (const Group& group : groups) {
        for (const Copies& sample : group) {
            const int first = static_cast<int>(units.unit.size());
            if (moves == Moves::kSamples) {
                units.unit.push_back(sample);
                continue;
            }
            for (std::size_t k = 0; k < sample.size(); k += static_cast<std::size_t>(width)) {
                const auto from = sample.begin() + static_cast<std::ptrdiff_t>(k);
                units.unit.emplace_back(from, from + width);
            }
            if (moves == Moves::kCopiesInSamples)
                units.blocks.push_back({first, static_cast<int>(units.unit.size()), first + 2});
        }
        const int behind = static_cast<int>(units.unit.size());
        const int first_size = static_cast<int>(group.front().size()) / width;
        if (moves == Moves::kCopiesInGroups || moves == Moves::kPairsInGroups)
            units.blocks.push_back({all, behind, all + first_size});
        all = behind;
    }
    const int first_sample = static_cast<int>(groups.front().front().size());
    if (moves == Moves::kCopies || moves == Moves::kPairs)
        units.blocks.push_back({0, all, first_sample / width});
    if (moves == Moves::kSamples) units.blocks.push_back({0, all, static_cast<int>(groups.front().size())});
    return units;
}

// The data that the units make, in groups of the observed sizes.
std::vector<Group> rearranged(const std::vector<Group>& groups, const Units& units, Moves moves) {
    std::vector<Group> made;
    std::size_t next_sample = 0;
    Copies all;
    for (const Copies& unit : units.unit)
        all.insert(all.end(), unit.begin(), unit.end());
    auto next = all.begin();
    for (const Group& group : groups) {
        made.emplace_back();
        for (const Copies& sample : group) {
            if (moves == Moves::kSamples) {
                made.back().push_back(units.unit[next_sample++]);
                continue;
            }
            const auto behind = next + static_cast<std::ptrdiff_t>(sample.size());
            made.back().emplace_back(next, behind);
            next = behind;
        }
    }
    return made;
}

void shuffle(Units& units) {
    long idum = 1;
    for (const Units::Block& block : units.blocks) {
        for (int k = block.behind - 1; k >= block.stop && k > block.first; --k) {
            const double product = mnd::ran3(&idum) * (k - block.first);
            const int r =
                static_cast<int>(units.single_precision ? static_cast<double>(static_cast<float>(product))
                                                        : std::floor(product));
            std::swap(units.unit[static_cast<std::size_t>(k)],
                      units.unit[static_cast<std::size_t>(block.first + r)]);
        }
    }
}

// Calls `visit` for each distinct arrangement of the units within their blocks, from block b on.
void visit_arrangements(Units& units, std::size_t b, const std::function<void()>& visit) {
    if (b == units.blocks.size()) {
        visit();
        return;
    }
    const auto first = units.unit.begin() + units.blocks[b].first;
    const auto behind = units.unit.begin() + units.blocks[b].behind;
    std::sort(first, behind);
    do {
        visit_arrangements(units, b + 1, visit);
    } while (std::next_permutation(first, behind));
}

double component_of(const PlainDesign& design, const std::vector<Group>& groups, const Distance& distance,
                    const Component& component, std::vector<double>* fis = nullptr) {
    AmovaData data(groups, kRows, distance, true);
    data.s.IncludeIndividualLevel = design.individuals ? 1 : 0;
    data.s.PopSpecificFIS = fis != nullptr ? 1 : 0;
    const auto analysis = data.prepare();
    ((*analysis).*design.run)();
    if (fis != nullptr) *fis = analysis->pop_Fis;
    return component(*analysis);
}

struct PlainOutcome {
    std::vector<double> values;
    std::vector<double> fis_hits;
    int beyond = 0;
    int equal = 0;

    void count(double value, double observed, Tail tail) {
        if (std::abs(value - observed) < 1e-10) {
            ++equal;
        } else if (tail == Tail::kLower ? value < observed : value > observed) {
            ++beyond;
        }
    }
    double p_value(int permutations) const { return static_cast<double>(beyond + equal) / permutations; }
};

double observed_component(const PlainDesign& design, const PlainTest& test, const Distance& distance) {
    const bool special = test.p_value == &amova_results::FST_pvalue && design.individuals;
    // The observed component is the one of the table, not the statistic.
    return component_of(design, design.groups, distance, special ? field(&Amova::Va) : test.component);
}

PlainOutcome run_plainly(const PlainDesign& design, const PlainTest& test, const Distance& distance,
                         int permutations) {
    PlainOutcome outcome;
    std::vector<double> observed_fis;
    component_of(design, design.groups, distance, test.component, &observed_fis);
    outcome.fis_hits.assign(observed_fis.size(), 0.0);
    const double observed = observed_component(design, test, distance);
    Units units = observed_units(design.groups, test.moves);
    for (int i = 0; i < permutations; ++i) {
        shuffle(units);
        std::vector<double> fis;
        const double value = component_of(design, rearranged(design.groups, units, test.moves), distance,
                                          test.component, &fis);
        outcome.values.push_back(value);
        outcome.count(value, observed, test.tail);
        for (std::size_t p = 0; p < fis.size(); ++p) {
            if (fis[p] != mnd::kUndefinedFis && observed_fis[p] <= fis[p]) outcome.fis_hits[p] += 1.0;
        }
    }
    return outcome;
}

double whole(int i, int j) {
    return i == j ? 0.0 : std::abs(i - j) + (i + j) % 3;
}

double fractional(int i, int j) {
    return i == j ? 0.0 : std::abs(i - j) * 0.37 + 0.11 * ((i + j) % 3);
}

double conventional(int i, int j) {
    return i == j ? 0.0 : 1.0;
}

// A file-like matrix whose diagonal is not 0.
double with_diagonal(int i, int j) {
    return i == j ? 1.0 + i : whole(i, j);
}

class AmovaTests : public mnd_test::SeededStream {
protected:
    // The analysis of a design on its own data, with all tests done.
    struct Run {
        std::unique_ptr<AmovaData> data;
        std::unique_ptr<Amova> analysis;
        std::unique_ptr<amova_results> record = std::make_unique<amova_results>();
        int result = 0;
    };

    static Run prepare(const PlainDesign& design, const Distance& distance, long permutations) {
        Run run;
        run.data = std::make_unique<AmovaData>(design.groups, kRows, distance, true);
        run.data->s.IncludeIndividualLevel = design.individuals ? 1 : 0;
        run.data->s.PopSpecificFIS = 1;
        run.data->s.NumPermutationsAMOVA = permutations;
        run.analysis = run.data->prepare();
        run.analysis->results = run.record.get();
        seed();
        mnd::reset_draws_taken();
        return run;
    }

    static Run test_all(const PlainDesign& design, const Distance& distance, long permutations) {
        Run run = prepare(design, distance, permutations);
        run.result = ((*run.analysis).*design.run)();
        return run;
    }

    void agrees_with_plain(const Distance& distance, const Distance& plain_distance) {
        for (const PlainDesign& design : plain_designs()) {
            SCOPED_TRACE(design.name);
            const Run run = test_all(design, distance, 60);
            ASSERT_EQ(run.result, 1);
            ASSERT_EQ(run.analysis->num_perm, 63);
            const std::uint64_t draws = mnd::draws_taken();
            seed();
            mnd::reset_draws_taken();
            for (const PlainTest& test : design.tests) {
                const PlainOutcome plain = run_plainly(design, test, plain_distance, 63);
                const std::vector<double>& values = (*run.record).*test.null_values;
                ASSERT_EQ(values.size(), 63U);
                for (std::size_t i = 0; i < 63; ++i)
                    ASSERT_NEAR(values[i], plain.values[i], 1e-12) << "permutation " << i;
                EXPECT_EQ((*run.record).*test.p_value, plain.p_value(63));
                if (test.moves == Moves::kCopiesInSamples) {
                    EXPECT_EQ(run.analysis->pop_Fis_hits, plain.fis_hits);
                }
            }
            EXPECT_EQ(mnd::draws_taken(), draws);
        }
    }
};

TEST_F(AmovaTests, AgreeWithPlainOnesOnWholeDistances) {
    agrees_with_plain(whole, whole);
}

TEST_F(AmovaTests, AgreeWithPlainOnesOnFractionalDistances) {
    agrees_with_plain(fractional, fractional);
}

TEST_F(AmovaTests, AgreeWithPlainOnesOnConventionalDistances) {
    agrees_with_plain(nullptr, conventional);
}

TEST_F(AmovaTests, AgreeWithPlainOnesOnADiagonal) {
    agrees_with_plain(with_diagonal, with_diagonal);
}

// Data with few enough rearrangements to visit all of them.
std::vector<Group> few_copies(std::size_t groups, std::size_t samples) {
    if (groups > 1) return {{{0, 1, 0, 2}, {0, 2}}, {{1, 1}, {3, 2}}};
    if (samples > 1) return {{{0, 1, 0, 2}, {0, 2}, {1, 1}}};
    return {{{0, 1, 0, 2, 2, 3, 0, 0}}};
}

// All rearrangements of the units are equally probable in the long run: the proportion of those
// that are as extreme is the limit of the P-value.
TEST_F(AmovaTests, PValuesApproachTheShareOfAllRearrangements) {
    for (PlainDesign design : plain_designs()) {
        SCOPED_TRACE(design.name);
        design.groups = few_copies(design.groups.size(), design.groups.front().size());
        const Run run = test_all(design, whole, 20000);
        const double permutations = static_cast<double>(run.analysis->num_perm);
        for (const PlainTest& test : design.tests) {
            const double observed = observed_component(design, test, whole);
            Units units = observed_units(design.groups, test.moves);
            PlainOutcome all;
            int arrangements = 0;
            visit_arrangements(units, 0, [&] {
                // The components do not depend on the order of the copies within a unit.
                all.count(
                    component_of(design, rearranged(design.groups, units, test.moves), whole, test.component),
                    observed, test.tail);
                ++arrangements;
            });
            const double p = all.p_value(arrangements);
            // 5 standard deviations of independent permutations, and one more digit for their
            // dependence on each other.
            const double bound = 5.0 * std::sqrt(p * (1.0 - p) / permutations) + 0.005;
            EXPECT_NEAR((*run.record).*test.p_value, p, bound) << arrangements << " arrangements";
        }
    }
}

// ---- Calibration

// P-values of one test over data without any structure: gene copies of independent normal
// values, whose squared differences are the distances.
std::vector<double> p_values_without_structure(int (Amova::*run)(), bool individuals,
                                               const std::vector<std::vector<int>>& sizes,
                                               double amova_results::*p_value, int nb_data) {
    std::mt19937 random(5);
    std::normal_distribution<double> normal;
    std::vector<double> p_values;
    for (int i = 0; i < nb_data; ++i) {
        std::vector<Group> groups;
        std::vector<double> x;
        for (const std::vector<int>& group : sizes) {
            groups.emplace_back();
            for (const int size : group) {
                groups.back().emplace_back();
                for (int k = 0; k < size; ++k) {
                    groups.back().back().push_back(static_cast<int>(x.size()));
                    x.push_back(normal(random));
                }
            }
        }
        const Distance squared = [&x](int a, int b) {
            const double difference = x[static_cast<std::size_t>(a)] - x[static_cast<std::size_t>(b)];
            return difference * difference;
        };
        AmovaData data(groups, static_cast<int>(x.size()), squared, true);
        data.s.IncludeIndividualLevel = individuals ? 1 : 0;
        data.s.NumPermutationsAMOVA = 200;
        amova_results record;
        const auto analysis = data.prepare();
        analysis->results = &record;
        ((*analysis).*run)();
        p_values.push_back(record.*p_value);
    }
    std::sort(p_values.begin(), p_values.end());
    return p_values;
}

// Largest distance of the distribution of the P-values from the uniform one, and how far it
// rises above it (Kolmogorov and Smirnov).
struct Deviation {
    double any, above;
};

Deviation deviation_from_uniform(const std::vector<double>& sorted) {
    Deviation deviation{0.0, 0.0};
    const double n = static_cast<double>(sorted.size());
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        const double below = static_cast<double>(i) / n;
        const double up_to = static_cast<double>(i + 1) / n;
        deviation.above = std::max(deviation.above, up_to - sorted[i]);
        deviation.any = std::max({deviation.any, up_to - sorted[i], sorted[i] - below});
    }
    return deviation;
}

constexpr int kDataSets = 300;
// Exceeded in one of 100,000 samples of a uniform distribution; and the grain of 210 permutations.
const double kLargestDeviation = 2.47 / std::sqrt(static_cast<double>(kDataSets)) + 1.0 / 210.0;

TEST_F(AmovaTests, PValuesAreUniformWithoutStructure) {
    const std::vector<std::vector<int>> groups = {{6, 8, 4}, {6, 10}, {4, 6}};
    const std::vector<std::vector<int>> one_group = {{6, 8, 4, 12}};
    struct Case {
        int (Amova::*run)();
        bool individuals;
        std::vector<std::vector<int>> sizes;
        double amova_results::*p_value;
    };
    using R = amova_results;
    const std::vector<Case> cases = {{&Amova::AMOVA_G_P_H, false, groups, &R::FST_pvalue},
                                     {&Amova::AMOVA_G_P_H, false, groups, &R::FSC_pvalue},
                                     {&Amova::AMOVA_G_P_IH, false, groups, &R::FST_pvalue},
                                     {&Amova::AMOVA_G_P_IH, false, groups, &R::FSC_pvalue},
                                     {&Amova::AMOVA_1G_P_H, false, one_group, &R::FST_pvalue},
                                     {&Amova::AMOVA_1G_P_IH, false, one_group, &R::FST_pvalue},
                                     {&Amova::AMOVA_1G_P_I, true, one_group, &R::FIS_pvalue},
                                     {&Amova::AMOVA_1G_P_I, true, one_group, &R::FIT_pvalue},
                                     {&Amova::AMOVA_G_P_I, true, groups, &R::FIT_pvalue},
                                     {&Amova::AMOVA_G_P_I, true, groups, &R::FIS_pvalue},
                                     {&Amova::AMOVA_G_P_I, true, groups, &R::FSC_pvalue},
                                     {&Amova::AMOVA_1G_1P_I, true, {{16}}, &R::FIS_pvalue}};
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const Case& c = cases[i];
        const std::vector<double> p_values =
            p_values_without_structure(c.run, c.individuals, c.sizes, c.p_value, kDataSets);
        EXPECT_LT(deviation_from_uniform(p_values).any, kLargestDeviation) << "case " << i;
    }
}

// Few arrangements of samples differ: ties make the P-value larger, never smaller than uniform.
TEST_F(AmovaTests, PValuesOfGroupsAreNotTooSmallWithoutStructure) {
    const std::vector<std::vector<int>> groups = {{6, 8, 4}, {6, 10}, {4, 6}};
    for (const auto& [run, individuals] :
         {std::pair{&Amova::AMOVA_G_P_H, false}, std::pair{&Amova::AMOVA_G_P_I, true}}) {
        const std::vector<double> p_values =
            p_values_without_structure(run, individuals, groups, &amova_results::FCT_pvalue, kDataSets);
        EXPECT_LT(deviation_from_uniform(p_values).above, kLargestDeviation);
        EXPECT_LT(p_values.front(), 0.1);
    }
}

TEST_F(AmovaTests, DrawsAreThoseOfTheShuffles) {
    const PlainDesign design = plain_designs()[0];
    const Run run = test_all(design, whole, 60);
    // N = 14, first sample 3; groups of 7 with first samples of 3 and 2; 5 samples, first group 3.
    EXPECT_EQ(mnd::draws_taken(), 63U * ((14 - 3) + (7 - 3) + (7 - 2) + (5 - 3)));
}

TEST_F(AmovaTests, NoPermutationMakesNoDrawAndNoSection) {
    for (const PlainDesign& design : plain_designs()) {
        for (const long requested : {0L, -5L}) {
            Run run = prepare(design, whole, requested);
            const std::string path = mnd_test::unique_path("amova_tests");
            std::fstream document(path, std::ios::out);
            run.data->s.result_stream = &document;
            run.analysis->print_results = 1;
            EXPECT_EQ(((*run.analysis).*design.run)(), 1);
            document.close();
            EXPECT_EQ(mnd::draws_taken(), 0U);
            EXPECT_EQ(mnd_test::read_file(path).find("Significance"), std::string::npos);
            EXPECT_TRUE(run.record->null_Va.empty());
            std::remove(path.c_str());
        }
    }
}

TEST_F(AmovaTests, OnePermutationBecomesTwoWithoutAnError) {
    const Run run = test_all(plain_designs()[2], whole, 1);
    EXPECT_EQ(run.analysis->num_perm, 2);
    EXPECT_EQ(run.record->null_Va.size(), 2U);
}

// Room for all values is made before the first permutation: none is left over, as growing would.
TEST_F(AmovaTests, NullArraysAreMadeInTheirLength) {
    const Run run = test_all(plain_designs()[0], whole, 1000);
    for (const std::vector<double>* values :
         {&run.record->null_Va, &run.record->null_Vb, &run.record->null_Vc}) {
        EXPECT_EQ(values->size(), 1023U);
        EXPECT_EQ(values->capacity(), 1023U);
    }
}

TEST_F(AmovaTests, EachTestOfADesignIsPrintedInItsOrder) {
    const std::vector<std::vector<std::string>> prefixes = {
        {"Vc and FST :", "Vb and FSC :", "Va and FCT :"},
        {"Vc and FST :", "Vb and FSC :", "Va and FCT :"},
        {"Va and FST :"},
        {"Va and FST :"},
        {"Vb and FIS :", "Va and FST :", "Vc and FIT :"},
        {"Vd and FIT :", "Vc and FIS :", "Vb and FSC :", "Va and FCT :"},
        {"Va and FIS :"}};
    const std::vector<PlainDesign> designs = plain_designs();
    for (std::size_t d = 0; d < designs.size(); ++d) {
        SCOPED_TRACE(designs[d].name);
        Run run = prepare(designs[d], whole, 10);
        const std::string path = mnd_test::unique_path("amova_tests");
        std::fstream document(path, std::ios::out);
        run.data->s.result_stream = &document;
        run.analysis->print_results = 1;
        run.data->s.PopSpecificFIS = 0;
        ASSERT_EQ(((*run.analysis).*designs[d].run)(), 1);
        document.close();
        const std::string text = mnd_test::read_file(path);
        std::size_t at = text.find("\nSignificance tests (12 permutations)\n------------------\n\n");
        for (const std::string& prefix : prefixes[d]) {
            const std::size_t next = text.find(prefix + " P(rand. value ", at);
            ASSERT_NE(next, std::string::npos) << prefix;
            at = next + 1;
        }
        EXPECT_EQ(text.find(" and F", at + 8), std::string::npos);
        std::remove(path.c_str());
    }
}

// The statistic takes half the mean square of individuals, the component of the table takes it
// whole. Eight copies of row 0 at distance 1 from each other, whatever the arrangement:
// T = 28, W = 2 * 6/4 = 3, SSDWI = 4 * 1/2 = 2; MSD a = 28/8 - 3 = 1/2, MSD b = (3 - 2)/2 = 1/2;
// n = 8 - 32/8 = 4. Va = (1/2 - 1/2)/4 = 0, but the statistic is 1/2 / 4 - 1/2 / 8 = 1/16.
TEST_F(AmovaTests, AmongSamplesOfIndividualsHalvesItsSecondTerm) {
    const PlainDesign design = {"1G_P_I", &Amova::AMOVA_1G_P_I, true, {{{0, 0, 0, 0}, {0, 0, 0, 0}}}, {}};
    const Run run = test_all(design, with_diagonal, 4);
    EXPECT_EQ(run.analysis->Va, 0.0);
    EXPECT_EQ(run.record->null_Va, std::vector<double>(6, 0.0625));
    EXPECT_EQ(run.record->FST_pvalue, 1.0);
}

TEST_F(AmovaTests, SamplesStayWhereTheLastPermutationPutThem) {
    const PlainDesign design = plain_designs()[0];
    const Run run = test_all(design, whole, 60);
    const Amova& a = *run.analysis;
    ASSERT_EQ(a.group_pops.size(), 2U);
    EXPECT_EQ(a.group_pops[0].size(), 3U);
    std::size_t next = 0;
    for (std::size_t g = 0; g < 2; ++g) {
        double size = 0.0;
        for (const mnd::Population* sample : a.group_pops[g]) {
            EXPECT_EQ(sample, a.all_pops[next++]);
            size += sample->sample_size;
        }
        EXPECT_EQ(a.group_size[g], size);
    }
}

// Copies per matrix row of each sample, counted from the data and from the tallies.
TEST_F(AmovaTests, SamplesThatMoveKeepTheirCopies) {
    const PlainDesign design = plain_designs()[0];
    const Run run = test_all(design, whole, 60);
    std::size_t number = 0;
    bool moved = false;
    for (const Group& group : design.groups) {
        for (const Copies& copies : group) {
            std::vector<double> observed(kRows, 0.0);
            for (const int row : copies)
                observed[static_cast<std::size_t>(row)] += 1.0;
            const mnd::Population* const sample = run.data->samples.populations[number];
            EXPECT_EQ(sample->amova.perm_freq, observed) << sample->name.c_str();
            moved = moved || run.analysis->all_pops[number] != sample;
            ++number;
        }
    }
    EXPECT_TRUE(moved) << "else the test shows nothing";
}

// A declared group without samples takes no part: the tests go on with the others.
TEST_F(AmovaTests, EmptyGroupsTakeNoSamples) {
    const std::vector<Group> groups = plain_designs()[0].groups;
    PlainDesign design = plain_designs()[0];
    const Run without = test_all(design, whole, 60);
    design.groups = {groups[0], {}, groups[1]};
    const Run with = test_all(design, whole, 60);
    EXPECT_EQ(with.result, 1);
    EXPECT_EQ(with.record->null_Va, without.record->null_Va);
    EXPECT_EQ(with.analysis->group_pops[1].size(), 2U);
}

TEST_F(AmovaTests, StopEndsTheDesignAtTheNextStep) {
    Run run = prepare(plain_designs()[0], whole, 1000);
    run.data->s.stop_computations = 1;
    EXPECT_EQ(run.analysis->AMOVA_G_P_H(), 0);
    EXPECT_EQ(mnd::draws_taken(), 100U * (14 - 3));
}

TEST_F(AmovaTests, ProgressRisesEveryHundredPermutations) {
    mnd::settings::global_work_done = 0.0;
    test_all(plain_designs()[2], whole, 1000);
    EXPECT_EQ(mnd::settings::global_work_done, 10.0);  // of 1023
    mnd::settings::global_work_done = 0.0;
}

TEST_F(AmovaTests, TooManyElementsAreNotPermuted) {
    const std::vector<std::string> origins = {
        "Amova::AMOVA_G_P_H()",  "Amova::AMOVA_G_P_IH()", "Amova::AMOVA_1G_P_H()", "Amova::AMOVA_1G_P_IH()",
        "Amova::AMOVA_1G_P_I()", "Amova::AMOVA_G_P_I()",  "Amova::AMOVA_1G_1P_I()"};
    const std::vector<std::int32_t> codes = {mnd::kDesignGPH,   mnd::kDesignGPIH, mnd::kDesign1GPH,
                                             mnd::kDesign1GPIH, mnd::kDesign1GPI, mnd::kDesignGPI,
                                             mnd::kDesign1G1PI};
    const std::vector<bool> throws = {true, true, false, false, false, false, true};
    const std::vector<PlainDesign> designs = plain_designs();
    for (std::size_t d = 0; d < designs.size(); ++d) {
        for (const bool by_matrix : {false, true}) {
            SCOPED_TRACE(origins[d]);
            const mnd_test::ProjectLog log;
            Run run = prepare(designs[d], whole, 100);
            if (by_matrix) {
                run.data->dist.MatrixSize = 2147483647;
            } else {
                run.analysis->N_units = 2147483647.0;
            }
            if (throws[d]) {
                EXPECT_THROW(mnd::test_components(*run.analysis, codes[d]), mnd::ExceptionType);
                EXPECT_TRUE(log.holds("from function \"" + origins[d] + "\" : not enough memory\n"));
            } else {
                EXPECT_EQ(mnd::test_components(*run.analysis, codes[d]), 1);
                EXPECT_TRUE(log.reports("ERROR", origins[d], "too many elements to permute distance matrix"));
            }
            EXPECT_EQ(mnd::draws_taken(), 0U);
            EXPECT_EQ(run.analysis->num_perm, 0);
        }
    }
}

// The observed indices stand, and no P-value of 0 beside them.
TEST_F(AmovaTests, TooManyElementsLeaveTheIndicesOfSamplesWithoutPValues) {
    const mnd_test::ProjectLog log;
    Run run = prepare(plain_designs()[4], whole, 100);
    const std::string path = mnd_test::unique_path("amova_tests");
    std::fstream document(path, std::ios::out);
    run.data->s.result_stream = &document;
    run.analysis->print_results = 1;
    run.data->dist.MatrixSize = 2147483647;
    EXPECT_EQ(run.analysis->AMOVA_1G_P_I(), 1);
    document.close();
    const std::string text = mnd_test::read_file(path);
    EXPECT_NE(text.find("\nPopulation specific FIS indices\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("P(Rand FIS>=Obs FIS)"), std::string::npos);
    EXPECT_TRUE(run.record->pop_Fis_pvalue.empty());
    EXPECT_EQ(run.record->pop_Fis.size(), 3U);
    std::remove(path.c_str());
}

TEST_F(AmovaTests, SummaryRowEndsWithTheTests) {
    const std::string path = mnd_test::unique_path("amova_summary");
    std::ofstream summary(path);
    mnd::ofs_amova_res = &summary;
    Run run = prepare(plain_designs()[0], whole, 60);
    run.analysis->AMOVA_G_P_H();
    Run none = prepare(plain_designs()[0], whole, 0);
    none.analysis->AMOVA_G_P_H();
    Run stopped = prepare(plain_designs()[0], whole, 1000);
    stopped.data->s.stop_computations = 1;
    stopped.analysis->AMOVA_G_P_H();
    mnd::ofs_amova_res = nullptr;
    summary.close();
    const std::string text = mnd_test::read_file(path);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3);
    char expected[100];
    std::snprintf(expected, sizeof expected, "\t63\t%.5f\t%.5f\t%.5f\t0\n", run.record->FST_pvalue,
                  run.record->FSC_pvalue, run.record->FCT_pvalue);
    EXPECT_NE(text.find(expected), std::string::npos) << text;
    std::remove(path.c_str());
}

TEST_F(AmovaTests, UnknownDesignHasNoTests) {
    Run run = prepare(plain_designs()[0], whole, 60);
    EXPECT_EQ(mnd::test_components(*run.analysis, mnd::kDesignGPRIH), 1);
    EXPECT_EQ(mnd::draws_taken(), 0U);
}

// ---- Counts and errors

TEST(HitCounter, CountsTiesWithinTheToleranceOnBothSides) {
    for (const Tail tail : {Tail::kLower, Tail::kUpper}) {
        HitCounter hits(0.5, tail, {1, 5, 5});
        hits.add(0.5 + 0.9e-10);
        hits.add(0.5 - 0.9e-10);
        hits.add(0.5 + 1.1e-10);
        hits.add(0.5 - 1.1e-10);
        hits.add(0.5 - 2e-10);
        EXPECT_DOUBLE_EQ(hits.equal(), 2.0 / 5.0);
        EXPECT_DOUBLE_EQ(hits.beyond(), tail == Tail::kLower ? 2.0 / 5.0 : 1.0 / 5.0);
        EXPECT_DOUBLE_EQ(hits.p_value(), hits.beyond() + hits.equal());
        EXPECT_EQ(hits.error(), 0.0F);
    }
}

// Three batches of two: the permutations 1, 4 go to the first, 2, 5 to the second, 3, 6 to the
// third. Hits are 1, 2, 4, 5 (the last one a tie): shares 1, 1, 0, p = 2/3, and the error
// sqrt((1/9 + 1/9 + 4/9) / (2 * 3)) = 1/3.
TEST(HitCounter, ErrorComesFromTheClassesInTurn) {
    HitCounter hits(0.0, Tail::kUpper, {3, 2, 6});
    for (const double value : {1.0, 2.0, -1.0, 3.0, 0.0, -2.0})
        hits.add(value);
    EXPECT_DOUBLE_EQ(hits.p_value(), 4.0 / 6.0);
    EXPECT_NEAR(hits.error(), 1.0 / 3.0, 1e-7);
}

TEST(HitCounter, ValuesThatAreNoNumbersAreNoHits) {
    HitCounter hits(std::nan(""), Tail::kUpper, {1, 2, 2});
    hits.add(1.0);
    hits.add(std::nan(""));
    EXPECT_EQ(hits.p_value(), 0.0);
}

// Eight permutations: 3 beyond, 1 equal; by batches 2, 2, 0, 0 of two, so p = 1/2 and the error
// sqrt(4 * 1/4 / 12) = 0.28868.
TEST(PrintTest, LowerAndUpperTail) {
    HitCounter hits(0.0, Tail::kLower, {4, 2, 8});
    for (const double value : {-1.0, 0.0, 1.0, 1.0, -1.0, -1.0, 1.0, 1.0})
        hits.add(value);
    std::ostringstream lower;
    lower.fill('*');
    mnd::print_test(lower, "Vc and FST :", Tail::kLower, hits);
    EXPECT_EQ(lower.str(),
              "Vc and FST : P(rand. value &lt; obs. value)  =  0.37500\n"
              "             P(rand. value = obs. value)  =  0.12500\n"
              "                                  P-value =  0.50000+- 0.28868\n\n");
    EXPECT_EQ(lower.fill(), '*');
    std::ostringstream upper;
    mnd::print_test(upper, "Va and FCT :", Tail::kUpper, hits);
    EXPECT_EQ(upper.str().substr(0, 46), "Va and FCT : P(rand. value > obs. value)  =  0");
}

TEST(PrintTest, Heading) {
    std::ostringstream out;
    mnd::print_tests_heading(out, 1023);
    EXPECT_EQ(out.str(), "\nSignificance tests (1023 permutations)\n------------------\n\n");
}

}  // namespace
