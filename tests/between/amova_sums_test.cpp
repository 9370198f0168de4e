#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <vector>

#include "between/amova_data.h"
#include "model/population.h"

namespace mnd_test {
namespace {

// A diagonal that counts: two copies of one row may differ.
Distance with_diagonal(const Distance& d) {
    return [d](int i, int j) { return i == j ? 0.25 * (i + 1) : d(i, j); };
}

double pairs_within(const Copies& copies, const Distance& d) {
    double sum = 0.0;
    for (std::size_t i = 0; i < copies.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j)
            sum += d(copies[i], copies[j]);
    }
    return sum;
}

double pairs_between(const Copies& a, const Copies& b, const Distance& d) {
    double sum = 0.0;
    for (const int r : a) {
        for (const int s : b)
            sum += d(r, s);
    }
    return sum;
}

double conventional(int i, int j) {
    return i == j ? 0.0 : 1.0;
}

TEST(AmovaSums, SampleAndPairAgreeWithAllPairsOfCopies) {
    std::mt19937 random(7);
    for (int round = 0; round < 40; ++round) {
        const int rows = 2 + round % 6;
        const Distance d = with_diagonal(random_distance(random, rows));
        const std::vector<Group> groups = random_groups(random, 1, rows, false);
        AmovaData data(groups, rows, d);
        const auto analysis = data.prepare();
        for (std::size_t a = 0; a < groups[0].size(); ++a) {
            mnd::Population& sample = *analysis->all_pops[a];
            sample.ComputeSSDWP(data.dist);
            const double within = pairs_within(groups[0][a], d);
            EXPECT_NEAR(sample.amova.SSD, within, 1e-11 * (1.0 + within));
            EXPECT_DOUBLE_EQ(sample.amova.SSD_div_n, sample.amova.SSD / sample.sample_size);
            EXPECT_EQ(sample.SSDWP_div_freq(data.dist), sample.amova.SSD_div_n);
            const mnd::Population* other = analysis->all_pops[0];
            const double between = pairs_between(groups[0][a], groups[0][0], d);
            EXPECT_NEAR(sample.ComputeSSDAP(other, data.dist), between, 1e-11 * (1.0 + between));
        }
    }
}

TEST(AmovaSums, ConventionalDistancesCountDifferentPairsExactly) {
    std::mt19937 random(8);
    for (int round = 0; round < 20; ++round) {
        const std::vector<Group> groups = random_groups(random, 1, 4, false);
        AmovaData data(groups, 4, nullptr);
        const auto analysis = data.prepare();
        analysis->compute_SSDP();
        for (std::size_t a = 0; a < groups[0].size(); ++a) {
            for (std::size_t b = 0; b < a; ++b) {
                EXPECT_EQ(analysis->SSD_pops(static_cast<int>(a), static_cast<int>(b)),
                          pairs_between(groups[0][a], groups[0][b], conventional));
            }
            EXPECT_EQ(analysis->SSD_pops(static_cast<int>(a), static_cast<int>(a)),
                      pairs_within(groups[0][a], conventional));
        }
    }
}

TEST(AmovaSums, TotalIsTheSumOverAllPairs) {
    std::mt19937 random(9);
    const Distance d = with_diagonal(random_distance(random, 5));
    const std::vector<Group> groups = random_groups(random, 3, 5, false);
    AmovaData data(groups, 5, d);
    const auto analysis = data.prepare();
    analysis->compute_SSDP();
    analysis->compute_total_SSD();
    Copies all;
    for (const Group& group : groups) {
        for (const Copies& copies : group)
            all.insert(all.end(), copies.begin(), copies.end());
    }
    const double expected = pairs_within(all, d);
    EXPECT_NEAR(analysis->SSD_total, expected, 1e-11 * expected);
}

TEST(AmovaSums, EmptySampleHasNoSumOfSquares) {
    AmovaData data({{{0, 1}, {}}}, 2, conventional);
    const auto analysis = data.prepare();
    analysis->compute_SSDWP();
    EXPECT_EQ(analysis->all_pops[1]->amova.SSD, 0.0);
    EXPECT_EQ(analysis->all_pops[1]->amova.SSD_div_n, 0.0);
    EXPECT_EQ(analysis->SSDWP, 0.5);
}

TEST(AmovaSums, PartitionByGroupsAgreesWithAllPairs) {
    std::mt19937 random(10);
    for (int round = 0; round < 20; ++round) {
        const Distance d = random_distance(random, 6);
        const std::vector<Group> groups = random_groups(random, 3, 6, false);
        AmovaData data(groups, 6, d);
        const auto analysis = data.prepare();
        analysis->compute_SSDP();
        analysis->compute_total_SSD();
        analysis->compute_SSDG_SSDAG();
        analysis->compute_SSDAP();
        analysis->compute_SSDWP();
        const std::vector<PlacedCopy> copies = place_copies(groups);
        const std::vector<double> rows =
            nested_ss(copies, {group_unit, sample_unit},
                      [&](const PlacedCopy& a, const PlacedCopy& b) { return d(a.row, b.row); });
        EXPECT_NEAR(analysis->SSDAG, rows[0], 1e-10);
        EXPECT_NEAR(analysis->SSDAP, rows[1], 1e-10);
        EXPECT_NEAR(analysis->SSDWP, rows[2], 1e-10);
        for (std::size_t g = 0; g < groups.size(); ++g) {
            const int row = static_cast<int>(g);
            EXPECT_DOUBLE_EQ(analysis->group_SSD[g],
                             analysis->SSD_groups(row, row) / analysis->group_size[g]);
        }
    }
}

TEST(AmovaSums, GroupsKeepTheLastSampleOffTheDiagonal) {
    // Conventional sums between samples: {0} with {1}: 1 and with {0, 1}: 1; {0, 0} with them: 2 and 2.
    AmovaData data({{{1}, {0, 1}}, {{0}, {0, 0}}}, 2, conventional);
    const auto analysis = data.prepare();
    analysis->compute_SSDP();
    analysis->compute_total_SSD();
    analysis->compute_SSDG_SSDAG();
    EXPECT_EQ(analysis->SSD_groups(1, 0), 4.0);
    EXPECT_EQ(analysis->SSD_groups(0, 0), 2.0);
    EXPECT_EQ(analysis->SSD_groups(1, 1), 0.0);
    EXPECT_EQ(analysis->group_size[0], 3.0);
}

TEST(AmovaSums, WithinIndividualsTakesNeighboursInsideEachSample) {
    AmovaData data(
        {{{0, 3, 1, 1}, {2, 0}}}, 4, [](int i, int j) { return 1.0 * (i - j) * (i - j); }, true);
    data.s.IncludeIndividualLevel = 1;
    const auto analysis = data.prepare();
    analysis->compute_SSDWI();
    EXPECT_EQ(analysis->ind_d, (std::vector<double>{9.0, 0.0, 4.0}));
    EXPECT_EQ(analysis->all_pops[0]->amova.SSD_within_ind, 4.5);
    EXPECT_EQ(analysis->all_pops[1]->amova.SSD_within_ind, 2.0);
    EXPECT_EQ(analysis->SSDWI, 6.5);
    EXPECT_EQ(analysis->half_pair_sum(), 6.5);
    analysis->compute_SSDWI();
    EXPECT_EQ(analysis->SSDWI, 6.5) << "a second time adds nothing";
}

TEST(AmovaSums, OddLastCopyStaysAlone) {
    AmovaData data(
        {{{0, 1, 2}, {0, 3}}}, 4, [](int i, int j) { return 1.0 * (i - j) * (i - j); }, true);
    data.s.IncludeIndividualLevel = 1;
    const auto analysis = data.prepare();
    analysis->compute_SSDWI();
    EXPECT_EQ(analysis->SSDWI, (1.0 + 9.0) / 2.0);
    EXPECT_EQ(analysis->half_pair_sum(), 5.0);
}

TEST(AmovaSums, DistributesPopulationsByTheSizesOfTheGroups) {
    AmovaData data({{{0}, {1}}, {{0}}, {{1}, {1}, {0}}}, 2, nullptr);
    const auto analysis = data.prepare();
    std::swap(analysis->all_pops[0], analysis->all_pops[5]);
    std::swap(analysis->all_pops[1], analysis->all_pops[2]);
    analysis->distribute_populations();
    std::vector<std::vector<int>> numbers;
    for (const auto& group : analysis->group_pops) {
        numbers.emplace_back();
        for (const mnd::Population* sample : group)
            numbers.back().push_back(sample->amova.amova_id);
    }
    EXPECT_EQ(numbers, (std::vector<std::vector<int>>{{5, 2}, {1}, {3, 4, 0}}));
}

}  // namespace
}  // namespace mnd_test
