#include "within/em_zipper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <string>
#include <vector>

#include "foundation/message_codes.h"
#include "foundation/random.h"
#include "support/captured_reports.h"
#include "within/em_sample.h"

namespace {

using namespace mnd;
using mnd_test::GenotypeSample;
using mnd_test::Individuals;
using mnd_test::PlainEm;
using mnd_test::simulate;
using mnd_test::text_of;

class EmZipper : public mnd_test::EmTest {
protected:
    EmZipper() {
        s.EMUseZipper = 1;
        s.EMWinSize = 2;
        s.EMNumZipRandOrders = 0;
        s.InitialConditionsEM = 3;
        s.MaximumNumOfIterationsEM = 500;
        s.EpsilonValue = 1e-07;
    }
    settings s;
};

// --- A plain second writing of the method, on texts and with searches from end to end

std::vector<Individuals> one_by_one(std::vector<Individuals> all) {
    const std::size_t kinds = all.size();
    for (std::size_t i = 0; i < kinds; ++i) {
        for (int copy = 1; copy < static_cast<int>(all[i].count); ++copy)
            all.push_back({all[i].first, all[i].second, 1.0});
        all[i].count = 1.0;
    }
    return all;
}

std::string part(const std::string& text, const std::vector<bool>& mask) {
    std::string result;
    for (std::size_t l = 0; l < text.size(); ++l)
        if (mask[l]) result += text[l];
    return result;
}

struct PlainStep {
    std::vector<Individuals> individuals;
    std::vector<bool> selected;
    std::vector<bool> done;
    const PlainEm* before;  // null for the first window

    bool is_possible(const std::string& haplotype) const {
        if (before == nullptr) return true;
        std::string known;
        std::size_t at = 0;
        for (std::size_t l = 0; l < selected.size(); ++l) {
            if (!selected[l]) continue;
            if (done[l]) known += haplotype[at];
            ++at;
        }
        for (std::size_t h = 0; h < before->haplotypes.size(); ++h)
            if (before->haplotypes[h] == known) return before->best[h] > 0.0;
        return false;
    }

    static std::size_t number_of(PlainEm& em, const std::string& text) {
        const auto found = std::find(em.haplotypes.begin(), em.haplotypes.end(), text);
        if (found == em.haplotypes.end()) em.haplotypes.push_back(text);
        return static_cast<std::size_t>(std::find(em.haplotypes.begin(), em.haplotypes.end(), text) -
                                        em.haplotypes.begin());
    }

    void resolve(PlainEm& em, const std::string& first, const std::string& second) const {
        std::vector<std::size_t> het;
        for (std::size_t l = 0; l < first.size(); ++l)
            if (first[l] != second[l]) het.push_back(l);
        PlainEm::Phenotype phenotype{1.0, het.empty(), {}};
        for (unsigned way = 0; way < (het.size() > 1 ? 1U << (het.size() - 1) : 1U); ++way) {
            std::string a = first;
            std::string b = second;
            for (std::size_t k = 1; k < het.size(); ++k)
                if ((way >> (k - 1)) & 1U) std::swap(a[het[k]], b[het[k]]);
            if (!is_possible(a) || !is_possible(b)) continue;
            const std::size_t in_b = number_of(em, b);
            phenotype.genotypes.push_back({number_of(em, a), in_b});
        }
        em.phenotypes.push_back(phenotype);
        em.gene_copies += 2.0;
    }

    PlainEm estimate(const settings& s) const {
        PlainEm em({});
        for (const Individuals& one : individuals)
            resolve(em, part(one.first, selected), part(one.second, selected));
        em.ibd.assign(em.haplotypes.size(), 0.0);
        em.best.assign(em.haplotypes.size(), 0.0);
        em.run(s.EMEstimateInbreedingCoeff != 0, s.EMInbreedingFixedVal, s.InitialConditionsEM,
               s.MaximumNumOfIterationsEM, s.EpsilonValue);
        return em;
    }
};

struct PlainZipper {
    std::vector<int> order;
    PlainEm em{{}};
};

PlainZipper plain_order(const std::vector<Individuals>& individuals, std::vector<int> order, int window,
                        const settings& s) {
    const std::size_t loci = order.size();
    std::vector<bool> selected(loci, false);
    std::vector<bool> done(loci, false);
    PlainEm reached({});
    for (std::size_t step = 0; step < loci / static_cast<std::size_t>(window); ++step) {
        std::vector<int> added(order.begin() + static_cast<long>(step) * window,
                               order.begin() + static_cast<long>(step + 1) * window);
        for (const int l : added)
            selected[static_cast<std::size_t>(l)] = true;
        const PlainEm next =
            PlainStep{individuals, selected, done, step == 0 ? nullptr : &reached}.estimate(s);
        reached = next;
        for (const int l : added)
            done[static_cast<std::size_t>(l)] = true;
    }
    return {order, reached};
}

PlainZipper plain_zipper(const std::vector<Individuals>& all, int window, const settings& s) {
    const std::vector<Individuals> individuals = one_by_one(all);
    PlainZipper best;
    for (int run = 0; run < std::max(1, s.EMNumZipRandOrders); ++run) {
        std::vector<int> order(individuals[0].first.size());
        std::iota(order.begin(), order.end(), 0);
        if (s.EMNumZipRandOrders > 0) {
            for (int i = static_cast<int>(order.size()) - 1; i >= 1; --i)
                std::swap(order[static_cast<std::size_t>(i)],
                          order[static_cast<std::size_t>(static_cast<int>(i * ran3()))]);
        }
        PlainZipper zipper = plain_order(individuals, order, window, s);
        if (run == 0 || zipper.em.best_likelihood > best.em.best_likelihood) best = zipper;
    }
    return best;
}

std::vector<Individuals> six_loci() {
    return simulate(14, {{"AACABA", 0.4}, {"BACBBA", 0.2}, {"ABDABB", 0.25}, {"BBCAAB", 0.15}});
}

std::string texts_of(const TPopHaploDB& db) {
    std::string texts;
    for (const TPopHaplotype* haplotype : db)
        texts += text_of(*haplotype) + ' ';
    return texts;
}

std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts)
        all += text + ' ';
    return all;
}

// --- The estimation

class ZipperOfWindow : public EmZipper, public ::testing::WithParamInterface<std::tuple<int, int, int>> {};

TEST_P(ZipperOfWindow, AgreesWithAPlainSecondWriting) {
    const auto [window, orders, inbreeding] = GetParam();
    s.EMWinSize = window;
    s.EMNumZipRandOrders = orders;
    s.EMEstimateInbreedingCoeff = inbreeding;
    std::vector<Individuals> all = six_loci();
    all[3].count = 3.0;
    all[7].count = 2.0;

    seed();
    const PlainZipper plain = plain_zipper(all, window, s);
    const double next_of_plain = next();

    seed();
    GenotypeSample data(all);
    const auto zipper = estimate_by_zipper(data.sample, s);
    ASSERT_NE(zipper, nullptr);
    EXPECT_EQ(next(), next_of_plain);  // as many draws

    EXPECT_EQ(zipper->order, plain.order);
    EXPECT_EQ(zipper->loci_used, 6 / window * window);
    EXPECT_EQ(texts_of(zipper->haplotypes), joined(plain.em.haplotypes));
    EXPECT_NEAR(zipper->ln_likelihood, plain.em.best_likelihood, 1e-9);
    EXPECT_EQ(zipper->num_likelihoods, static_cast<int>(plain.em.likelihoods.size()));
    EXPECT_NEAR(zipper->F, plain.em.best_F, 1e-9);
    for (long h = 0; h < zipper->haplotypes.count; ++h)
        EXPECT_NEAR(zipper->haplotypes.at_const(h)->freq, plain.em.best[static_cast<std::size_t>(h)], 1e-9);
    ASSERT_EQ(zipper->phenotypes.count, static_cast<long>(plain.em.phenotypes.size()));
    for (long p = 0; p < zipper->phenotypes.count; ++p)
        EXPECT_EQ(zipper->phenotypes.at_const(p)->genotypes.count,
                  static_cast<long>(plain.em.phenotypes[static_cast<std::size_t>(p)].genotypes.size()));
}

INSTANTIATE_TEST_SUITE_P(EmZipper, ZipperOfWindow,
                         ::testing::Combine(::testing::Values(1, 2, 3, 4, 6), ::testing::Values(0, 1, 4),
                                            ::testing::Values(0, 1)));

TEST_F(EmZipper, HoldsAGivenInbreedingCoefficientInEachStep) {
    s.EMEstimateInbreedingCoeff = 1;
    s.EMInbreedingFixedVal = 0.125;
    const std::vector<Individuals> all = six_loci();
    seed();
    const PlainZipper plain = plain_zipper(all, 2, s);
    seed();
    GenotypeSample data(all);
    const auto zipper = estimate_by_zipper(data.sample, s);
    ASSERT_NE(zipper, nullptr);
    EXPECT_EQ(zipper->F, 0.125);
    EXPECT_NEAR(zipper->ln_likelihood, plain.em.best_likelihood, 1e-9);
}

TEST_F(EmZipper, LeavesTheLociBehindTheLastWholeWindowOut) {
    s.EMWinSize = 4;
    GenotypeSample data(six_loci());
    const auto zipper = estimate_by_zipper(data.sample, s);
    ASSERT_NE(zipper, nullptr);
    EXPECT_EQ(zipper->loci_used, 4);
    EXPECT_EQ(zipper->order, (std::vector<int>{0, 1, 2, 3, 4, 5}));
    for (const TPopHaplotype* haplotype : zipper->haplotypes)
        EXPECT_EQ(haplotype->num_loci(), 4);
}

TEST_F(EmZipper, LeavesTheSampleAsItIs) {
    std::vector<Individuals> all = six_loci();
    all[0].count = 3.0;
    GenotypeSample data(all);
    const double real_freq = data.sample.phen_db.at_const(0)->real_freq;
    ASSERT_NE(estimate_by_zipper(data.sample, s), nullptr);
    EXPECT_EQ(data.sample.phen_db.count, 14);
    EXPECT_EQ(data.sample.phen_db.at_const(0)->freq, 3.0);
    EXPECT_EQ(data.sample.phen_db.at_const(0)->real_freq, real_freq);
    EXPECT_EQ(data.sample.phen_db.at_const(0)->genotypes.count, 0);
    EXPECT_EQ(data.sample.hapl_db.count, 0);
}

// All of a whole window at once is the ordinary estimation.
TEST_F(EmZipper, OneWindowOfAllLociIsTheOrdinaryEstimation) {
    const std::vector<Individuals> all = six_loci();
    for (const int window : {0, -1, 6, 7, 1000}) {
        s.EMWinSize = window;
        seed();
        GenotypeSample data(all);
        const auto zipper = estimate_by_zipper(data.sample, s);
        ASSERT_NE(zipper, nullptr);
        EXPECT_EQ(zipper->loci_used, 6);
        seed();
        mnd_test::Estimated whole(all);
        whole.run(3, 500, 1e-07);
        EXPECT_EQ(zipper->ln_likelihood, whole.likelihood) << window;
    }
}

// Four haplotypes of 40 loci that differ all over: an individual has up to 27 heterozygous loci.
// Iterated to the end, the frequencies of the phases that nothing supports reach zero, and the next
// window does without them.
TEST_F(EmZipper, ManyLociStayPractical) {
    const std::vector<std::pair<std::string, double>> haplotypes = {
        {"AABABAABBABABAABABBABAABBABABAABABBABBAB", 0.35},
        {"BABAABABABBABAABABABBABAABABABBABAABABBA", 0.25},
        {"AABBABABBAABABBABABAABBABAABBABBABABAABB", 0.2},
        {"BBAABBABABABAABBAABBABABABBAABABBAABBAAB", 0.2}};
    GenotypeSample data(simulate(60, haplotypes));
    s.EMWinSize = 3;
    s.EMNumZipRandOrders = 0;
    s.EpsilonValue = 0.0;
    const auto zipper = estimate_by_zipper(data.sample, s);
    ASSERT_NE(zipper, nullptr);
    EXPECT_EQ(zipper->loci_used, 39);
    EXPECT_LT(zipper->haplotypes.count, 100);
    std::map<std::string, double> found;
    double sum = 0.0;
    for (const TPopHaplotype* haplotype : zipper->haplotypes) {
        sum += haplotype->freq;
        if (haplotype->freq > 1e-06) found[text_of(*haplotype)] = haplotype->freq;
    }
    EXPECT_NEAR(sum, 1.0, 1e-9);
    ASSERT_EQ(found.size(), 4U);
    // Sampling 120 copies has an s.d. of at most 0.044.
    for (const auto& [text, freq] : haplotypes)
        EXPECT_NEAR(found[text.substr(0, 39)], freq, 0.15) << text;
}

TEST_F(EmZipper, NobodyWithACompatiblePhaseIsNoFailure) {
    // No iteration is made, so no frequency is found, and the second window has no phase to extend.
    s.MaximumNumOfIterationsEM = 0;
    GenotypeSample data(six_loci());
    const mnd_test::CapturedReports reports;
    const auto zipper = estimate_by_zipper(data.sample, s);
    ASSERT_NE(zipper, nullptr);
    EXPECT_EQ(zipper->haplotypes.count, 0);
    EXPECT_EQ(zipper->ln_likelihood, -kNumericalInfinity);
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(EmZipper, EndsWhenTheWorkIsStopped) {
    s.stop_computations = 1;
    GenotypeSample data(six_loci());
    EXPECT_EQ(estimate_by_zipper(data.sample, s), nullptr);
}

TEST_F(EmZipper, GivesNothingWhenTheFirstWindowHasTooManyPhases) {
    const mnd_test::CapturedReports reports;
    s.EMWinSize = 33;
    GenotypeSample data({{std::string(33, 'A'), std::string(33, 'B'), 1.0}});
    EXPECT_EQ(estimate_by_zipper(data.sample, s), nullptr);
    ASSERT_FALSE(reports.all().empty());
    EXPECT_EQ(reports.all()[0].code, kTooManyHeterozygousLoci);
}

TEST_F(EmZipper, OfNobodyIsNothing) {
    GenotypeSample data({});
    EXPECT_EQ(estimate_by_zipper(data.sample, s), nullptr);
}

TEST(ZipperWindow, IsWithinTheLoci) {
    EXPECT_EQ(zipper_window(3, 10), 3);
    EXPECT_EQ(zipper_window(10, 10), 10);
    EXPECT_EQ(zipper_window(11, 10), 10);
    EXPECT_EQ(zipper_window(0, 10), 10);
    EXPECT_EQ(zipper_window(-2, 10), 10);
}

TEST(ZipperWindow, OrdersAreAtLeastTheOneGiven) {
    settings s;
    for (const auto& [wanted, orders] : std::map<int, int>{{-1, 1}, {0, 1}, {1, 1}, {7, 7}}) {
        s.EMNumZipRandOrders = wanted;
        EXPECT_EQ(zipper_orders(s), orders);
    }
}

// --- The shuffle

// Each cyclic permutation of 4 elements, 3! of them, comes up equally often and no other does.
TEST_F(EmZipper, ShuffleGivesAllCyclesAlike) {
    std::map<std::vector<int>, int> seen;
    constexpr int kShuffles = 12000;
    for (int i = 0; i < kShuffles; ++i) {
        std::vector<int> order = {0, 1, 2, 3};
        shuffle_loci(order);
        for (int k = 0; k < 4; ++k)
            ASSERT_NE(order[static_cast<std::size_t>(k)], k);
        ++seen[order];
    }
    EXPECT_EQ(seen.size(), 6U);
    // Six standard deviations of a count of mean 2000.
    for (const auto& [order, count] : seen)
        EXPECT_NEAR(count, kShuffles / 6, 250);
}

TEST_F(EmZipper, ShuffleTakesADrawPerElementButTheFirst) {
    for (const std::size_t n : {0U, 1U, 2U, 9U}) {
        seed();
        for (std::size_t i = 1; i < n; ++i)
            ran3();
        const double expected = next();
        seed();
        std::vector<int> order(n, 0);
        shuffle_loci(order);
        EXPECT_EQ(next(), expected) << n;
    }
}

}  // namespace
