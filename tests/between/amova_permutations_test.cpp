#include "between/amova.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <numeric>
#include <vector>

#include "amova_data.h"
#include "foundation/random.h"
#include "model/population.h"
#include "run/errors.h"
#include "support/captured_log.h"
#include "support/project_log.h"
#include "support/seeded_stream.h"

namespace {

using mnd_test::AmovaData;
using mnd_test::Copies;
using mnd_test::Group;

double one(int i, int j) {
    return i == j ? 0.0 : 1.0;
}

// Makes these the next numbers of the stream, in billionths.
void next_draws(std::initializer_list<std::int64_t> billionths) {
    std::int32_t slot = 0;
    for (const std::int64_t u : billionths)
        mnd::uniform_stream.ma[++slot] = u;
    mnd::uniform_stream.inext = 0;
    mnd::reset_draws_taken();
}

// Groups of samples of these sizes, whose copies are the rows 0, 1, 2, ... in order.
std::vector<Group> numbered(const std::vector<std::vector<int>>& sizes) {
    std::vector<Group> groups;
    int row = 0;
    for (const std::vector<int>& group : sizes) {
        groups.emplace_back();
        for (const int size : group) {
            Copies copies(static_cast<std::size_t>(size));
            std::iota(copies.begin(), copies.end(), row);
            row += size;
            groups.back().push_back(copies);
        }
    }
    return groups;
}

class AmovaPermutations : public mnd_test::SeededStream {
protected:
    void prepare(const std::vector<std::vector<int>>& sizes) {
        int rows = 0;
        for (const std::vector<int>& group : sizes)
            rows = std::accumulate(group.begin(), group.end(), rows);
        data = std::make_unique<AmovaData>(numbered(sizes), rows, one, true);
        analysis = data->prepare();
    }

    Copies copies() const {
        return {analysis->haplo_index.begin(),
                analysis->haplo_index.begin() + static_cast<std::ptrdiff_t>(analysis->N_genes)};
    }

    std::vector<int> order_of_samples() const {
        std::vector<int> order;
        for (const mnd::Population* sample : analysis->all_pops)
            order.push_back(sample->amova.amova_id);
        return order;
    }

    std::unique_ptr<AmovaData> data;
    std::unique_ptr<mnd::Amova> analysis;
};

// k = 4, 3, 2 with r = 0.6 * 4, 0.9 * 3, 0.4 * 2, that is 2, 2, 0:
// 01234 -> 01432 -> 01342 -> 31042
TEST_F(AmovaPermutations, HaplotypesAmongGroups) {
    prepare({{2, 1}, {2}});
    next_draws({600000000, 900000000, 400000000});
    analysis->PHAPAG();
    EXPECT_EQ(copies(), (Copies{3, 1, 0, 4, 2}));
    EXPECT_EQ(mnd::draws_taken(), 3U);
}

// First group: k = 3, 2 with r = 0.99 * 3, 0.5 * 2, that is 2, 1: 0123 -> 0132 -> 0312.
// Second group at 4: k = 7, 6, 5 with r = 4 + 0.4 * 3, 4 + 0.9 * 2, 4 + 0.7 * 1, that is 5, 5,
// 4: 4567 -> 4765 -> 4675 -> 6475.
TEST_F(AmovaPermutations, HaplotypesWithinGroups) {
    prepare({{2, 2}, {1, 3}});
    next_draws({990000000, 500000000, 400000000, 900000000, 700000000});
    analysis->PHAPWG();
    EXPECT_EQ(copies(), (Copies{0, 3, 1, 2, 6, 4, 7, 5}));
    EXPECT_EQ(mnd::draws_taken(), 5U);
}

// The sample of two copies draws nothing. That of four at 2: k = 5, 4 with r = 2 + 0.7 * 3,
// 2 + 0.6 * 2, that is 4, 3: 2345 -> 2354 -> 2534. That of three at 6: k = 8 with
// r = 6 + 0.1 * 2 = 6: 678 -> 876.
TEST_F(AmovaPermutations, HaplotypesWithinSamples) {
    prepare({{2, 4}, {3}});
    next_draws({700000000, 600000000, 100000000});
    analysis->PHAIWP();
    EXPECT_EQ(copies(), (Copies{0, 1, 2, 5, 3, 4, 8, 7, 6}));
    EXPECT_EQ(mnd::draws_taken(), 3U);
}

TEST_F(AmovaPermutations, HaplotypesWithinASampleOfTwoDrawNothing) {
    prepare({{2}, {2, 2}});
    mnd::reset_draws_taken();
    analysis->PHAIWP();
    EXPECT_EQ(mnd::draws_taken(), 0U);
    EXPECT_EQ(copies(), (Copies{0, 1, 2, 3, 4, 5}));
}

// Individuals 0 to 4 are the pairs 01 23 45 67 89; k = 4, 3, 2, 1 with r = 0.5 * 4, 0.4 * 3,
// 0.3 * 2, 0.8 * 1, that is 2, 1, 0, 0:
// ABCDE -> ABEDC -> ADEBC -> EDABC -> DEABC
TEST_F(AmovaPermutations, IndividualsAmongGroups) {
    prepare({{2, 4}, {4}});
    next_draws({500000000, 400000000, 300000000, 800000000});
    analysis->PIAPAG();
    EXPECT_EQ(copies(), (Copies{6, 7, 8, 9, 0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(mnd::draws_taken(), 4U);
}

// First group, three individuals of which the first sample holds two: k = 2 with
// r = 0.9 * 2 = 1: ABC -> ACB. Second group at 3, three individuals, one in its first sample:
// k = 5, 4 with r = 3 + 0.2 * 2, 3 + 0.9 * 1, that is 3, 3: DEF -> FED -> EFD.
TEST_F(AmovaPermutations, IndividualsWithinGroups) {
    prepare({{4, 2}, {2, 4}});
    next_draws({900000000, 200000000, 900000000});
    analysis->PIAPWG();
    EXPECT_EQ(copies(), (Copies{0, 1, 4, 5, 2, 3, 8, 9, 10, 11, 6, 7}));
    EXPECT_EQ(mnd::draws_taken(), 3U);
}

// k = 3, 2, 1 with r = 0.7 * 3, 0.3 * 2, 0.6 * 1, that is 2, 0, 0:
// 0123 -> 0132 -> 3102 -> 1302
TEST_F(AmovaPermutations, SamplesAmongGroupsStopAtTheFirstGroup) {
    prepare({{1}, {1, 1, 1}});
    next_draws({700000000, 300000000, 600000000});
    analysis->PPAG();
    EXPECT_EQ(order_of_samples(), (std::vector<int>{1, 3, 0, 2}));
    EXPECT_EQ(mnd::draws_taken(), 3U);
    prepare({{1, 1, 1}, {1}});
    next_draws({400000000});
    analysis->PPAG();
    EXPECT_EQ(order_of_samples(), (std::vector<int>{0, 3, 2, 1}));
    EXPECT_EQ(mnd::draws_taken(), 1U);
}

// 0.999999999 * 4 is 4.0 in single precision: the copy stays where it is. In double precision,
// as for individuals and samples, it is below 4.
TEST_F(AmovaPermutations, SinglePrecisionMayRoundUpToThePositionItself) {
    prepare({{4, 1}});
    next_draws({999999999});
    analysis->PHAPAG();
    EXPECT_EQ(copies(), (Copies{0, 1, 2, 3, 4}));
    prepare({{1, 1, 1, 1}, {1}});
    next_draws({999999999});
    analysis->PPAG();
    EXPECT_EQ(order_of_samples(), (std::vector<int>{0, 1, 2, 4, 3}));
}

TEST_F(AmovaPermutations, FirstPositionIsNeverDrawnFor) {
    prepare({{0, 3}, {2}});
    mnd::reset_draws_taken();
    analysis->PHAPAG();
    EXPECT_EQ(mnd::draws_taken(), 4U);
    mnd::reset_draws_taken();
    analysis->PHAPWG();
    EXPECT_EQ(mnd::draws_taken(), 2U);
}

// Each general form gives what the shuffle of the whole data gives with the same draws.
TEST_F(AmovaPermutations, GeneralFormsCoverTheShuffles) {
    prepare({{4, 2}, {2, 4}});
    seed();
    analysis->PHAPAG();
    const Copies genes = copies();
    analysis->load_HaplotypeIndexVector();
    seed();
    analysis->permute_genes(11, 0, 4);
    EXPECT_EQ(copies(), genes);

    analysis->load_HaplotypeIndexVector();
    seed();
    analysis->PIAPAG();
    const Copies individuals = copies();
    analysis->load_HaplotypeIndexVector();
    seed();
    analysis->permute_indiv(5, 0, 2);
    EXPECT_EQ(copies(), individuals);
}

// Positions 4, 3 with r = 2 + 0.5 * 2, 2 + 0.4 * 1, that is 3, 2; what lies before 2 stays.
TEST_F(AmovaPermutations, GeneralFormTakesABlockInTheMiddle) {
    prepare({{6}});
    next_draws({500000000, 400000000});
    analysis->permute_genes(4, 2, 3);
    EXPECT_EQ(copies(), (Copies{0, 1, 4, 2, 3, 5}));
}

TEST_F(AmovaPermutations, PhenotypesAreLoadedAndShuffledLikeIndividuals) {
    prepare({{4, 2}, {2, 4}});
    for (mnd::Population* sample : analysis->all_pops) {
        for (int i = 0; i < static_cast<int>(sample->sample_size) / 2; ++i)
            sample->phen_db.Add(new mnd::TPhenotype("id", 1.0));
    }
    const mnd_test::CapturedLog log;
    analysis->Load_Phen_Vector();
    ASSERT_EQ(analysis->phen_vector.count, 6);
    EXPECT_EQ(log.text(), "");
    std::vector<mnd::TPhenotype*> order(analysis->phen_vector.begin(), analysis->phen_vector.end());
    const auto in_order = [&] {
        std::vector<int> rows;
        for (const mnd::TPhenotype* phenotype : analysis->phen_vector) {
            const auto place = std::find(order.begin(), order.end(), phenotype) - order.begin();
            rows.insert(rows.end(), {2 * static_cast<int>(place), 2 * static_cast<int>(place) + 1});
        }
        return rows;
    };
    seed();
    analysis->PIAPAG();
    seed();
    analysis->PPAPAG();
    EXPECT_EQ(in_order(), copies());
    seed();
    analysis->PIAPWG();
    seed();
    analysis->PPAPWG();
    EXPECT_EQ(in_order(), copies());
}

TEST_F(AmovaPermutations, PhenotypesOfAnotherNumberAreTold) {
    prepare({{4}});
    analysis->all_pops[0]->phen_db.Add(new mnd::TPhenotype("id", 1.0));
    const mnd_test::CapturedLog log;
    analysis->Load_Phen_Vector();
    EXPECT_EQ(log.text(), "     Amova::Load_Phen_Vector() Population size incompatibility during the load");
}

TEST_F(AmovaPermutations, LoadRepeatsEachRowAsOftenAsItOccurs) {
    AmovaData haplotypic({{{2, 0, 2}, {1, 2}}}, 3, one);
    const auto loaded = haplotypic.prepare();
    const Copies expected = {2, 2, 0, 1, 2};
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), loaded->haplo_index.begin()));
    const mnd::Population::AmovaWork& first = loaded->all_pops[0]->amova;
    EXPECT_EQ(first.num_existing, 2);
    EXPECT_EQ((Copies{first.perm_list[0], first.perm_list[1]}), (Copies{0, 2}));
    EXPECT_EQ(first.perm_freq, (std::vector<double>{1, 0, 2}));
    loaded->PHAPAG();
    loaded->load_HaplotypeIndexVector();
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), loaded->haplo_index.begin()));
}

// The tally made of touched rows is that of counting from nothing.
TEST_F(AmovaPermutations, DistributionTalliesTheStretchOfEachSample) {
    AmovaData crowded({{{0, 1, 1, 5}, {2, 2, 3}}, {{4, 4, 4, 4, 0}, {6}}}, 8, one);
    const auto tallied = crowded.prepare();
    for (int repeat = 0; repeat < 20; ++repeat) {
        tallied->PHAPAG();
        tallied->distribute_HaplotypeIndexVector();
        std::size_t first = 0;
        for (const mnd::Population* sample : tallied->all_pops) {
            std::vector<double> freq(8, 0.0);
            for (int i = 0; i < static_cast<int>(sample->sample_size); ++i)
                freq[static_cast<std::size_t>(tallied->haplo_index[first++])] += 1.0;
            Copies rows;
            for (int row = 0; row < 8; ++row) {
                if (freq[static_cast<std::size_t>(row)] != 0.0) rows.push_back(row);
            }
            ASSERT_EQ(sample->amova.perm_freq, freq);
            ASSERT_EQ(sample->amova.num_existing, static_cast<int>(rows.size()));
            ASSERT_TRUE(std::equal(rows.begin(), rows.end(), sample->amova.perm_list.begin()));
        }
    }
}

TEST_F(AmovaPermutations, ExistingHaplotypesAreListedInAscendingOrder) {
    mnd::Population sample;
    sample.CreatePermutationVectors(5);
    EXPECT_EQ(sample.amova.perm_size, 5);
    EXPECT_EQ(sample.amova.perm_freq, std::vector<double>(5, 0.0));
    sample.amova.perm_freq = {0, 2, 0, 0, 1};
    sample.SetUpVectorOfExistingHaplotypes();
    EXPECT_EQ(sample.amova.num_existing, 2);
    EXPECT_EQ(sample.amova.perm_list[0], 1);
    EXPECT_EQ(sample.amova.perm_list[1], 4);
    sample.DeletePermutationVectors();
    EXPECT_EQ(sample.amova.perm_size, 0);
    EXPECT_TRUE(sample.amova.perm_freq.empty());
}

TEST_F(AmovaPermutations, RowOutsideTheMatrixIsReported) {
    mnd::Population sample;
    sample.name = "north";
    sample.sample_size = 3.0;
    sample.CreatePermutationVectors(4);
    int genes[] = {0, 3, 4};
    const mnd_test::ProjectLog log;
    EXPECT_THROW(sample.SetUpVectorsAfterPermutation(genes), mnd::ExceptionType);
    EXPECT_TRUE(
        log.holds("\nAbnormal behaviour for pop:north\nnb_gene_copies=3\nHDB.Nb_haplo=4\ni=2 H_vect:4\n"));
    EXPECT_TRUE(
        log.holds("from function \"Population::SetUpVectorsAfterPermutation\" : array out of bounds"));
    EXPECT_EQ(sample.amova.perm_freq, std::vector<double>(4, 0.0));
    int negative[] = {0, -1, 2};
    EXPECT_THROW(sample.SetUpVectorsAfterPermutation(negative), mnd::ExceptionType);
}

// Over many repeats each copy of four comes to each of the positions equally often.
TEST_F(AmovaPermutations, EveryCopyReachesEveryPosition) {
    prepare({{1, 1, 1, 1}});
    constexpr int kRepeats = 40000;
    int counts[4][4] = {};
    for (int repeat = 0; repeat < kRepeats; ++repeat) {
        analysis->PHAPAG();
        for (int position = 0; position < 4; ++position)
            ++counts[analysis->haplo_index[static_cast<std::size_t>(position)]][position];
    }
    // 5 standard deviations of a binomial count of probability 1/4.
    const double bound = 5.0 * std::sqrt(kRepeats * 0.25 * 0.75);
    for (const auto& row : counts) {
        for (const int count : row)
            EXPECT_NEAR(count, kRepeats / 4.0, bound);
    }
}

}  // namespace
