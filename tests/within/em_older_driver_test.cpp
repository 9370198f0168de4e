#include <gtest/gtest.h>

#include <cmath>

#include "within/em_engine.h"
#include "within/em_iteration.h"
#include "within/em_sample.h"

namespace {

using mnd_test::Estimated;
using mnd_test::Individuals;
using mnd_test::PlainEm;

using OlderEmDriver = mnd_test::EmTest;

double run_older(Estimated& data, int starts, int max_iter) {
    return data.sample.calc_ML_hapl_freq(data.sample.phen_db, data.haplo, data.s, data.num_lhoods, 0, starts,
                                         max_iter, 1.0);
}

// The rules of the older driver on the resolutions of the plain estimation: shares of individuals
// are counted instead of individuals, which makes frequencies twice as large, and twice the same
// haplotype outside of homozygotes counts twice.
struct PlainOlder {
    std::vector<double> best;
    std::vector<double> best_previous;
    std::vector<double> likelihoods;  // of each start
    int distinct = 0;

    PlainOlder(PlainEm em, double individuals, int starts, int max_iter, int after_poor, double epsilon) {
        double best_likelihood = -3.4028234663852886e+38;
        double likelihood = 0.0;
        std::vector<double> entered;
        for (int start = 0; start < starts; ++start) {
            const bool poor = start > 0 && likelihood < best_likelihood;
            const int limit = poor ? std::min(max_iter, after_poor) : max_iter;
            em.draw_start();
            std::vector<double> previous = em.freq;
            for (int i = 0; i < limit; ++i) {
                std::vector<double> next(em.freq.size(), 0.0);
                for (PlainEm::Phenotype& phenotype : em.phenotypes) {
                    phenotype.prob = 0.0;
                    for (PlainEm::Genotype& g : phenotype.genotypes)
                        phenotype.prob += g.prob =
                            (phenotype.homozygous ? 1 : 2) * em.freq[g.h_1] * em.freq[g.h_2];
                    for (const PlainEm::Genotype& g : phenotype.genotypes) {
                        next[g.h_1] += phenotype.count / individuals * (g.prob / phenotype.prob);
                        next[g.h_2] += phenotype.count / individuals * (g.prob / phenotype.prob);
                    }
                }
                double change = 0.0;
                for (std::size_t h = 0; h < next.size(); ++h)
                    change += std::fabs(next[h] - previous[h]);
                em.freq = previous = next;
                if (change < epsilon) break;
            }
            bool is_new = true;
            for (const double value : entered)
                is_new = is_new && std::fabs(value - likelihood) >= 0.001;
            if (is_new) entered.push_back(likelihood);
            likelihood = em.log_likelihood();
            likelihoods.push_back(likelihood);
            if (likelihood > best_likelihood) {
                best_likelihood = likelihood;
                best = em.freq;
                best_previous = previous;
            }
        }
        distinct = static_cast<int>(entered.size());
    }
};

// Heterozygotes at two and three loci alone: the starts climb to different maxima.
const std::vector<Individuals> kSlow = {{"AAA", "BBB", 40}, {"ACA", "BBC", 37}, {"CAA", "BBC", 30},
                                        {"AAC", "BCB", 25}, {"CBA", "ACB", 33}, {"AAB", "CCA", 29}};
constexpr double kSlowIndividuals = 194.0;

TEST_F(OlderEmDriver, FollowsItsOwnRules) {
    Estimated found(kSlow);
    found.s.EpsilonValue = 1e-10;
    const double last = run_older(found, 12, 3000);
    const double next_found = next();
    seed();
    const PlainOlder plain(PlainEm(kSlow), kSlowIndividuals, 12, 3000, 202, 1e-10);
    EXPECT_EQ(next(), next_found);
    ASSERT_EQ(static_cast<std::size_t>(found.haplo.count), plain.best.size());
    for (std::size_t h = 0; h < plain.best.size(); ++h) {
        EXPECT_NEAR(found.haplo.data[h]->freq, plain.best[h], 1e-10);
        EXPECT_NEAR(found.haplo.data[h]->prev_freq, plain.best_previous[h], 1e-10);
    }
    EXPECT_NEAR(last, plain.likelihoods.back(), 1e-8);
    EXPECT_EQ(found.num_lhoods, plain.distinct);
    EXPECT_NEAR(found.sum_of_freq(), 2.0, 1e-9);
}

// The last start is returned though an earlier one was better.
TEST_F(OlderEmDriver, ReturnsTheLastLikelihood) {
    const PlainOlder plain(PlainEm(kSlow), kSlowIndividuals, 12, 3000, 202, 1e-10);
    std::size_t starts = 1;
    double best = plain.likelihoods[0];
    while (starts < plain.likelihoods.size() && plain.likelihoods[starts] > best - 0.01) {
        best = std::max(best, plain.likelihoods[starts]);
        ++starts;
    }
    ASSERT_LT(starts, plain.likelihoods.size()) << "no start below the best";
    seed();
    Estimated found(kSlow);
    found.s.EpsilonValue = 1e-10;
    EXPECT_NEAR(run_older(found, static_cast<int>(starts) + 1, 3000), plain.likelihoods[starts], 1e-8);
    EXPECT_LT(plain.likelihoods[starts], best);
}

// As many double heterozygotes as all others, and these without association: linkage equilibrium
// is on the point of becoming unstable, and a start comes closer to it by 1 / sqrt(iterations) only.
const std::vector<Individuals> kCritical = {
    {"AA", "BB", 40}, {"AA", "AA", 10}, {"AB", "AB", 10}, {"BA", "BA", 10}, {"BB", "BB", 10}};

TEST_F(OlderEmDriver, GivesAStartAfterAPoorOneTwoHundredAndTwoIterations) {
    const auto plain_last = [](int starts, int after_poor) {
        seed();
        return PlainOlder(PlainEm(kCritical), 80.0, starts, 3000, after_poor, 0.0).likelihoods.back();
    };
    int told_apart = 0;
    for (int starts = 2; starts <= 12; ++starts) {
        seed();
        Estimated data(kCritical);
        data.s.EpsilonValue = 0.0;
        const double expected = plain_last(starts, 202);
        seed();
        EXPECT_NEAR(run_older(data, starts, 3000), expected, 1e-10) << starts;
        const bool differs = std::fabs(plain_last(starts, 201) - expected) > 1e-8 &&
                             std::fabs(plain_last(starts, 203) - expected) > 1e-8;
        if (differs) ++told_apart;
    }
    EXPECT_GT(told_apart, 0);
    EXPECT_LT(told_apart, 11);
}

// The list gets the likelihood before the one just made: 0 for the first start, and never the last.
TEST_F(OlderEmDriver, EntersTheLikelihoodOfTheStartBefore) {
    Estimated one(std::vector<Individuals>{{"AB", "AC"}});
    one.s.EpsilonValue = 1e-7;
    run_older(one, 1, 100);
    EXPECT_EQ(one.num_lhoods, 1);
    seed();
    // Both frequencies are 1: the likelihood of every start is ln(2).
    Estimated three(std::vector<Individuals>{{"AB", "AC"}});
    three.s.EpsilonValue = 1e-7;
    EXPECT_NEAR(run_older(three, 3, 100), std::log(2.0), 1e-12);
    EXPECT_EQ(three.num_lhoods, 2);
}

TEST_F(OlderEmDriver, CountsWorkByTheNumberOfLoci) {
    mnd::settings::global_work_done = 0.0;
    Estimated found(kSlow);
    found.s.EpsilonValue = 1e-3;
    run_older(found, 4, 10);
    EXPECT_NEAR(mnd::settings::global_work_done, 4 * std::exp(3.0), 1e-9);
    mnd::settings::global_work_done = 0.0;
}

TEST_F(OlderEmDriver, StopsWhenTold) {
    Estimated found(kSlow);
    found.s.stop_computations = 1;
    mnd::reset_draws_taken();
    EXPECT_EQ(run_older(found, 4, 10), -1000.0);
    EXPECT_EQ(mnd::draws_taken(), 0U);
}

}  // namespace
