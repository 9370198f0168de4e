#include "within/hardy_weinberg.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#include "model/popul_standard.h"
#include "run/tasks.h"
#include "support/captured_log.h"
#include "support/captured_reports.h"
#include "support/lettered_phenotypes.h"
#include "support/seeded_stream.h"
#include "support/temp_folder.h"
#include "support/watched_stream.h"
#include "within/analysed_sample.h"
#include "within/plain_genotype_chain.h"

namespace {

using mnd::ChainResult;
using mnd::Population;
using mnd::PopulStandard;
using mnd::settings;
using mnd_test::as_counts;
using mnd_test::CapturedReports;
using mnd_test::contains;
using mnd_test::enumerate;
using mnd_test::Enumeration;
using mnd_test::GenotypeCounts;
using mnd_test::Letters;
using mnd_test::Report;

const Report kBadIndex{mnd::Error, "Population::make_hw_table()", 60};
const Report kBadLocus{mnd::Error, "Population::make_hw_table() ", 60};
const Report kBadSwap{mnd::Error, "Population::swap_in_table2()", 60};

constexpr int kHaplotypes = -1;

// A sample of genotypes of single letters, tested under settings of its own.
class HardyWeinberg : public mnd_test::SeededStream {
protected:
    HardyWeinberg() : document_(s) {
        sample.profile = mnd_test::genotypic(mnd::STANDARD, ' ', 1);
        sample.allele_db = &letters_.db;
        sample.name = "Lake";
        s.MakeHWExactTest = 1;
        s.TypeOfTestHW = 0;
        s.MarkovChainStepsHW = 1000;
        s.MarkovChainDememorisationStepsHW = 700;
        s.MarkovChainDememorisationStepsLD = 50;
        s.PrecisionOnPValueHW = 0.0;
        settings::global_work_done = 0.0;
        settings::global_work_to_do = 0.0;
    }
    ~HardyWeinberg() override { settings::global_work_done = settings::global_work_to_do = 0.0; }

    void add(const std::string& first, const std::string& second, double freq = 1.0) {
        letters_.append(sample.phen_db, first, second, freq);
    }
    // A locus with these genotype counts; its alleles are A, B, C, ... in this order.
    void add_locus(const GenotypeCounts& counts) {
        const auto letter = [](std::size_t i) { return std::string(1, static_cast<char>('A' + i)); };
        for (std::size_t i = 0; i < counts.size(); ++i)
            add(letter(i), letter(i), counts[i][i]);
        for (std::size_t i = 0; i < counts.size(); ++i) {
            for (std::size_t j = i + 1; j < counts.size(); ++j)
                add(letter(i), letter(j), counts[i][j]);
        }
    }

    using Test = void (Population::*)(long const&, double&, settings&, long&, int*);
    ChainResult run(Test test, long steps, int locus = 0) {
        int hw_info[2] = {-7, locus};
        ChainResult result;
        double stat = -7.0;
        result.steps_done = -7;
        (sample.*test)(steps, stat, s, result.steps_done, hw_info);
        EXPECT_EQ(stat, 0.0);
        EXPECT_FALSE(sample.table.exists());
        result.p_value = s.hw_p_value;
        result.sd = s.hw_precision;
        return result;
    }
    ChainResult long_chain(long steps, int locus = 0) {
        return run(&Population::make_hw_test2, steps, locus);
    }
    ChainResult short_chains(long steps, int locus = 0) {
        return run(&Population::make_hw_test3, steps, locus);
    }

    // What the analysis of the sample writes.
    std::string analyse() {
        std::fstream& out = document_.stream();
        const std::size_t before = document_.text().size();
        sample.make_all_hw(out, sample.phen_db, s.MarkovChainStepsHW, s);
        return document_.text().substr(before);
    }

    Letters letters_;
    settings s;
    PopulStandard sample;
    mnd_test::Document document_;
};

// --- The table

class HardyWeinbergTable : public HardyWeinberg {
protected:
    int make(int locus) {
        info[0] = -7;
        info[1] = locus;
        sample.monomorphic = -7;
        return sample.make_hw_table(info);
    }
    GenotypeCounts counts() const { return as_counts(sample.table); }
    int info[2] = {};
};

TEST_F(HardyWeinbergTable, NumbersAllelesByFirstAppearance) {
    add("C", "A", 2.0);
    add("B", "C", 3.0);
    add("A", "A", 4.0);
    add("C", "B", 1.0);  // the same genotype from the other side
    ASSERT_EQ(make(0), 1);
    EXPECT_EQ(info[0], 3);
    EXPECT_EQ(info[1], 0);
    EXPECT_EQ(sample.monomorphic, 0);
    // C = 0, A = 1, B = 2
    EXPECT_EQ(counts(), (GenotypeCounts{{0, 2, 4}, {0, 4, 0}, {0, 0, 0}}));
    sample.clear_table(info);
    EXPECT_FALSE(sample.table.exists());
    sample.clear_table(info);
}

TEST_F(HardyWeinbergTable, TakesTheIntegerPartOfFrequencies) {
    add("A", "B", 2.9);
    add("A", "A", 0.7);
    add("B", "B", 1.0);
    ASSERT_EQ(make(0), 1);
    EXPECT_EQ(counts(), (GenotypeCounts{{0, 2}, {0, 1}}));
}

TEST_F(HardyWeinbergTable, LeavesIndividualsWithOneMissingAlleleOut) {
    add("A", "?", 5.0);
    add("?", "C", 5.0);
    add("?", "?", 5.0);
    add("A", "B", 2.0);
    add("B", "B", 1.0);
    ASSERT_EQ(make(0), 1);
    EXPECT_EQ(counts(), (GenotypeCounts{{0, 2}, {0, 1}}));  // C is no allele of the table
    sample.profile.MissingData = '!';
    ASSERT_EQ(make(0), 1);
    EXPECT_EQ(info[0], 4);
}

TEST_F(HardyWeinbergTable, TakesTheLocusAskedFor) {
    add("AX", "AY", 2.0);
    add("BX", "AX", 3.0);
    ASSERT_EQ(make(1), 1);
    EXPECT_EQ(counts(), (GenotypeCounts{{3, 2}, {0, 0}}));
    ASSERT_EQ(make(0), 1);
    EXPECT_EQ(counts(), (GenotypeCounts{{2, 3}, {0, 0}}));
}

TEST_F(HardyWeinbergTable, AMonomorphicLocusHasNone) {
    const CapturedReports reports;
    add("A", "A", 5.0);
    add("A", "?", 5.0);
    EXPECT_EQ(make(0), 0);
    EXPECT_EQ(info[0], 0);
    EXPECT_EQ(sample.monomorphic, 1);
    EXPECT_FALSE(sample.table.exists());
    EXPECT_TRUE(reports.all().empty());
    sample.phen_db.Flush();
    add("?", "?", 5.0);
    EXPECT_EQ(make(0), 0);
    EXPECT_EQ(sample.monomorphic, 1);
    sample.phen_db.Flush();
    EXPECT_EQ(make(0), 0);
    EXPECT_EQ(sample.monomorphic, 1);
}

TEST_F(HardyWeinbergTable, ALocusBeyondTheHaplotypeIsReported) {
    const CapturedReports reports;
    add("AX", "AY");
    EXPECT_EQ(make(2), 0);
    EXPECT_EQ(sample.monomorphic, 0);
    EXPECT_FALSE(sample.table.exists());
    EXPECT_EQ(reports.all(), (std::vector<Report>{kBadLocus}));
    add("BX", "B");  // the second haplotype alone is short
    EXPECT_EQ(make(1), 0);
    EXPECT_EQ(reports.all(), (std::vector<Report>{kBadLocus, kBadLocus}));
    sample.phen_db[1]->pseudo_hapl[1].reset();
    EXPECT_EQ(make(0), 0);
    EXPECT_EQ(reports.all().size(), 3U);
}

TEST_F(HardyWeinbergTable, OfHaplotypesComparesWholeHaplotypes) {
    add("AX", "AY", 2.0);
    add("BX", "AX", 3.0);
    add("A?", "AY", 4.0);  // a missing allele is one like others here
    add("AX", "AX", 5.0);
    ASSERT_EQ(make(kHaplotypes), 1);
    EXPECT_EQ(info[0], 4);
    EXPECT_EQ(info[1], kHaplotypes);
    // AX, AY, BX, A?
    EXPECT_EQ(counts(), (GenotypeCounts{{5, 2, 3, 0}, {0, 0, 0, 4}, {0, 0, 0, 0}, {0, 0, 0, 0}}));
}

TEST_F(HardyWeinbergTable, OfASingleHaplotypeIsNoFailure) {
    const CapturedReports reports;
    add("AX", "AX", 2.0);
    sample.monomorphic = 1;
    EXPECT_EQ(make(kHaplotypes), 1);
    EXPECT_EQ(info[0], 0);
    EXPECT_EQ(sample.monomorphic, 0);
    EXPECT_FALSE(sample.table.exists());
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(HardyWeinbergTable, AnIndividualWithoutHaplotypesIsReported) {
    const CapturedReports reports;
    add("AX", "AY", 2.0);
    add("AX", "AY", 2.0);
    sample.phen_db[1]->pseudo_hapl[0].reset();
    EXPECT_EQ(make(kHaplotypes), 0);
    EXPECT_EQ(reports.all(), (std::vector<Report>{kBadIndex}));
}

TEST_F(HardyWeinbergTable, MoreIndividualsThanACellCountsAreReported) {
    const CapturedReports reports;
    add("A", "A", std::numeric_limits<int>::max());
    add("A", "B", 1.0);
    EXPECT_EQ(make(0), 0);
    EXPECT_FALSE(sample.table.exists());
    EXPECT_EQ(reports.all(), (std::vector<Report>{kBadIndex}));
}

// --- One step

TEST_F(HardyWeinbergTable, AStepIsThatOfAPlainChain) {
    add_locus({{5, 2, 1}, {0, 3, 0}, {0, 0, 2}});
    ASSERT_EQ(make(0), 1);
    mnd_test::PlainChain plain(counts());
    std::vector<double> expected;
    seed();
    for (int k = 0; k < 200; ++k)
        expected.push_back(plain.step());
    const double behind = next();
    seed();
    long dummy = 1;
    for (const double ratio : expected)
        ASSERT_EQ(sample.swap_in_table2(info, dummy), ratio);
    EXPECT_EQ(next(), behind);
    EXPECT_EQ(dummy, 1);
    EXPECT_EQ(counts(), plain.table);
}

TEST_F(HardyWeinbergTable, AStepNeedsATableOfItsSize) {
    const CapturedReports reports;
    add_locus({{5, 2}, {0, 3}});
    long dummy = 1;
    EXPECT_EQ(sample.swap_in_table2(info, dummy), 1.0);  // none yet
    ASSERT_EQ(make(0), 1);
    for (const int n : {0, 1, 3, -1}) {
        info[0] = n;
        EXPECT_EQ(sample.swap_in_table2(info, dummy), 1.0);
    }
    EXPECT_EQ(reports.all(), (std::vector<Report>(5, kBadSwap)));
    EXPECT_EQ(counts(), (GenotypeCounts{{5, 2}, {0, 3}}));
}

TEST_F(HardyWeinbergTable, AnIndexOutOfRangeIsReported) {
    const CapturedReports reports;
    const mnd_test::CapturedOutput strange;
    add_locus({{500, 200}, {0, 300}});
    ASSERT_EQ(make(0), 1);
    mnd::seed_stream(3000000000L);
    long dummy = 1;
    for (int k = 0; k < 100000 && reports.all().empty(); ++k)
        sample.swap_in_table2(info, dummy);
    EXPECT_EQ(reports.all(), (std::vector<Report>{kBadSwap}));
}

// --- The chains

class HardyWeinbergChain : public HardyWeinberg {};

const std::vector<GenotypeCounts> kObserved = {
    {{4, 1}, {0, 4}},
    {{0, 6}, {0, 2}},
    {{1, 5}, {0, 1}},
    {{3, 1, 2}, {0, 1, 3}, {0, 0, 2}},
    {{0, 2, 2}, {0, 0, 2}, {0, 0, 0}},
    {{2, 0, 0}, {0, 2, 0}, {0, 0, 2}},
    {{1, 1, 0, 2}, {0, 1, 1, 0}, {0, 0, 1, 1}, {0, 0, 0, 1}},
    {{2, 1, 1, 0}, {0, 0, 2, 1}, {0, 0, 0, 1}, {0, 0, 0, 2}},
};

TEST_F(HardyWeinbergChain, LongChainIsThePlainOne) {
    for (const GenotypeCounts& observed : kObserved) {
        sample.phen_db.Flush();
        add_locus(observed);
        for (const long steps : {1L, 3L, 4L, 99L, 1000L, 5000L}) {
            seed();
            const mnd_test::PlainResult plain = mnd_test::plain_long_chain(observed, steps, 50);
            const double behind = next();
            seed();
            s.hw_p_value = -7.0;
            const ChainResult result = long_chain(steps);
            EXPECT_EQ(result.p_value, plain.p) << steps;
            EXPECT_EQ(result.sd, plain.sd) << steps;
            EXPECT_EQ(result.steps_done, plain.steps_done);
            EXPECT_EQ(next(), behind);
        }
    }
}

TEST_F(HardyWeinbergChain, ShortChainsAreThePlainOnes) {
    for (const GenotypeCounts& observed : kObserved) {
        sample.phen_db.Flush();
        add_locus(observed);
        for (const double precision : {0.0, 0.02, 10.0}) {
            for (const long steps : {1L, 3L, 4L, 9L, 16L, 1000L}) {
                seed();
                const auto plain = mnd_test::plain_short_chains(observed, steps, 50, precision);
                const double behind = next();
                seed();
                s.PrecisionOnPValueHW = precision;
                const ChainResult result = short_chains(steps);
                EXPECT_EQ(result.p_value, plain.p) << steps;
                EXPECT_EQ(result.sd, plain.sd) << steps;
                EXPECT_EQ(result.steps_done, plain.steps_done);
                EXPECT_EQ(next(), behind);
            }
        }
    }
}

// P of all tables. The mean over 30 runs may lie 5 of its standard deviations off.
class HardyWeinbergEnumeration : public HardyWeinberg {
protected:
    void expect_agreement(Test test, long steps, const GenotypeCounts& observed) {
        sample.phen_db.Flush();
        add_locus(observed);
        const Enumeration all = enumerate(observed);
        s.MarkovChainDememorisationStepsLD = 300;
        constexpr int kRuns = 30;
        std::vector<double> p;
        for (int i = 0; i < kRuns; ++i)
            p.push_back(run(test, steps).p_value);
        const double mean = std::accumulate(p.begin(), p.end(), 0.0) / kRuns;
        double sum = 0.0;
        for (const double x : p)
            sum += (x - mean) * (x - mean);
        const double error = std::sqrt(sum / (kRuns * (kRuns - 1)));
        EXPECT_LT(error, 0.005);
        EXPECT_NEAR(mean, all.p, 5.0 * error + 1e-12)
            << all.tables << " tables, " << all.ties << " as probable as that observed";
    }
};

TEST_F(HardyWeinbergEnumeration, LongChainAgreesWithAllTables) {
    for (const GenotypeCounts& observed : kObserved)
        expect_agreement(&Population::make_hw_test2, 20000, observed);
}

TEST_F(HardyWeinbergEnumeration, ShortChainsAgreeWithAllTables) {
    for (const GenotypeCounts& observed : kObserved)
        expect_agreement(&Population::make_hw_test3, 20000, observed);
}

// Tables as probable as the observed one count: here they make up a good part of P.
TEST_F(HardyWeinbergEnumeration, TiesCount) {
    long with_ties = 0;
    for (const GenotypeCounts& observed : kObserved) {
        const Enumeration all = enumerate(observed);
        if (all.ties < 2 || all.p - all.p_below < 0.02) continue;
        ++with_ties;
        sample.phen_db.Flush();
        add_locus(observed);
        s.MarkovChainDememorisationStepsLD = 1000;
        EXPECT_NEAR(long_chain(200000).p_value, all.p, 0.01);
    }
    EXPECT_GE(with_ties, 3);
}

// Genotypes at a locus of four alleles of 45 individuals (Guo and Thompson 1992, figure 2, after Louis
// and Dempster 1987), whose exact P is published as 0.0174.
TEST_F(HardyWeinbergEnumeration, PublishedExample) {
    const GenotypeCounts observed = {{0, 3, 5, 3}, {0, 1, 18, 7}, {0, 0, 1, 5}, {0, 0, 0, 2}};
    EXPECT_NEAR(enumerate(observed).p, 0.0174, 0.00005);
    add_locus(observed);
    s.MarkovChainDememorisationStepsLD = 2000;
    EXPECT_NEAR(long_chain(1000000).p_value, 0.0174, 0.002);
    EXPECT_NEAR(short_chains(1000000).p_value, 0.0174, 0.002);
}

TEST_F(HardyWeinbergChain, BurnsInByTheKeyOfTheLinkageTest) {
    const GenotypeCounts observed = {{3, 1, 2}, {0, 1, 3}, {0, 0, 2}};
    add_locus(observed);
    for (const long burn_in : {0L, 37L, 411L}) {
        s.MarkovChainDememorisationStepsLD = burn_in;
        for (const long ignored : {0L, 2000L}) {
            s.MarkovChainDememorisationStepsHW = ignored;
            seed();
            const auto plain_long = mnd_test::plain_long_chain(observed, 400, burn_in);
            const auto plain_short = mnd_test::plain_short_chains(observed, 400, burn_in, 0.0);
            const double behind = next();
            seed();
            EXPECT_EQ(long_chain(400).p_value, plain_long.p);
            s.PrecisionOnPValueHW = 0.0;
            EXPECT_EQ(short_chains(400).p_value, plain_short.p);
            EXPECT_EQ(next(), behind);
        }
    }
}

// 3 chains give the deviation of the first two from the mean of all three.
TEST_F(HardyWeinbergChain, ShortChainsStopAtThePrecisionAfterThree) {
    const GenotypeCounts observed = {{3, 1, 2}, {0, 1, 3}, {0, 0, 2}};
    add_locus(observed);
    seed();
    s.PrecisionOnPValueHW = 0.9;
    const ChainResult result = short_chains(10000);
    EXPECT_EQ(result.steps_done, 3 * 101);
    EXPECT_LT(result.sd, 0.9);
    EXPECT_GT(result.sd, 0.0);
    // A long chain has no such rule.
    s.PrecisionOnPValueHW = 0.9;
    EXPECT_EQ(long_chain(10000).steps_done, 100 * 101);
    s.PrecisionOnPValueHW = 0.0;
    EXPECT_EQ(short_chains(10000).steps_done, 100 * 101);
    // An error of exactly the precision is not below it.
    seed();
    s.PrecisionOnPValueHW = result.sd;
    EXPECT_GT(short_chains(10000).steps_done, 3 * 101);
}

TEST_F(HardyWeinbergChain, NoStepsGiveNoChain) {
    add_locus({{3, 1}, {0, 2}});
    for (const long steps : {0L, -1L, std::numeric_limits<long>::min()}) {
        for (const Test test : {&Population::make_hw_test2, &Population::make_hw_test3}) {
            const double first = [] {
                seed();
                return next();
            }();
            seed();
            s.hw_p_value = 1.0;
            s.hw_precision = 0.25;
            const ChainResult result = run(test, steps);
            EXPECT_EQ(result.p_value, 0.0);
            EXPECT_EQ(result.sd, 0.0);
            EXPECT_EQ(result.steps_done, 0);
            EXPECT_EQ(next(), first);
        }
    }
}

// As many batches as would take gigabytes, for a chain of years.
TEST_F(HardyWeinbergChain, TooManyBatchesAreReported) {
    add_locus({{3, 1}, {0, 2}});
    const double first = next();
    seed();
    for (const long steps : {1'000'000'000'000'000'000L, std::numeric_limits<long>::max()}) {
        const CapturedReports reports;
        const mnd_test::CapturedLog log;
        s.hw_p_value = 1.0;
        s.hw_precision = 0.25;
        const ChainResult result = long_chain(steps);
        EXPECT_EQ(result.p_value, 1.0);
        EXPECT_EQ(result.sd, 0.0);
        EXPECT_EQ(result.steps_done, 0);
        EXPECT_EQ(reports.all(), (std::vector<Report>{{mnd::Error, "Population::make_hw_test2()", 0}}));
        const std::string batches = steps == 1'000'000'000'000'000'000L ? "1000000000" : "3037000499";
        EXPECT_TRUE(log.holds("The Hardy-Weinberg test of " + std::to_string(steps) + " steps goes in " +
                              batches + " batches, for which there is no memory: test not done\n"))
            << log.text();
    }
    EXPECT_EQ(next(), first);
}

TEST_F(HardyWeinbergChain, AMonomorphicLocusNeedsNoChain) {
    add("A", "A", 5.0);
    const double first = next();
    seed();
    for (const Test test : {&Population::make_hw_test2, &Population::make_hw_test3}) {
        s.hw_p_value = 0.75;
        s.hw_precision = 0.25;
        const ChainResult result = run(test, 1000);
        EXPECT_EQ(result.p_value, 0.75);
        EXPECT_EQ(result.sd, 0.0);
        EXPECT_EQ(result.steps_done, 0);
        EXPECT_EQ(sample.monomorphic, 1);
    }
    EXPECT_EQ(settings::global_work_done, 0.0);
    EXPECT_EQ(next(), first);
}

TEST_F(HardyWeinbergChain, OneHaplotypeNeedsNoChain) {
    add("AX", "AX", 5.0);
    const double first = next();
    seed();
    double work = 0.0;
    for (const Test test : {&Population::make_hw_test2, &Population::make_hw_test3}) {
        s.hw_p_value = 0.75;
        s.hw_precision = 0.25;
        const ChainResult result = run(test, 1000, kHaplotypes);
        EXPECT_EQ(result.p_value, 0.75);
        EXPECT_EQ(result.sd, 0.0);
        EXPECT_EQ(result.steps_done, 0);
        EXPECT_EQ(settings::global_work_done, work += 1000.0);
    }
    EXPECT_EQ(next(), first);
}

TEST_F(HardyWeinbergChain, AFailureOfTheTableHasNoResult) {
    const CapturedReports reports;
    add("A", "B", 5.0);
    for (const Test test : {&Population::make_hw_test2, &Population::make_hw_test3}) {
        s.hw_p_value = 1.0;
        s.hw_precision = 0.25;
        const ChainResult result = run(test, 1000, 1);
        EXPECT_EQ(result.p_value, 1.0);
        EXPECT_EQ(result.sd, 0.0);
        EXPECT_EQ(result.steps_done, 0);
    }
    EXPECT_EQ(reports.all(), (std::vector<Report>{kBadLocus, kBadLocus}));
}

TEST_F(HardyWeinbergChain, AnIndexOutOfRangeEndsTheTest) {
    const mnd_test::CapturedOutput strange;
    add_locus({{500, 200}, {0, 300}});
    for (const Test test : {&Population::make_hw_test2, &Population::make_hw_test3}) {
        const CapturedReports reports;
        mnd::seed_stream(3000000000L);
        s.hw_p_value = 1.0;
        const ChainResult result = run(test, 1000000);
        EXPECT_EQ(reports.all(), (std::vector<Report>{kBadSwap}));
        EXPECT_EQ(result.p_value, 1.0);
        EXPECT_EQ(result.sd, 0.0);
        EXPECT_EQ(result.steps_done, 0);
    }
}

TEST_F(HardyWeinbergChain, TellsItsProgressInThousandsOfSteps) {
    add_locus({{3, 1}, {0, 2}});
    long_chain(10000);
    EXPECT_NEAR(settings::global_work_done, 10.1, 1e-9);
    short_chains(10000);
    EXPECT_NEAR(settings::global_work_done, 20.2, 1e-9);
}

// The flag is raised by the fourth progress line: after four rounds of 31 slots, or four batches of 33.
TEST_F(HardyWeinbergChain, StopsInTheMidst) {
    add_locus({{3, 1}, {0, 2}});
    for (const Test test : {&Population::make_hw_test2, &Population::make_hw_test3}) {
        const bool is_long = test == &Population::make_hw_test2;
        seed();
        if (is_long) {
            mnd_test::PlainChain plain({{3, 1}, {0, 2}});
            for (int k = 0; k < 50 + 4 * 31; ++k)
                plain.step();
        } else {
            for (int batch = 0; batch < 4; ++batch) {
                mnd_test::PlainChain plain({{3, 1}, {0, 2}});
                for (int k = 0; k < 50 + 33; ++k)
                    plain.step();
            }
        }
        const double behind = next();
        seed();
        settings::global_work_done = 0.0;
        settings::global_work_to_do = (is_long ? 0.031 : 0.033) * 99.9;  // one percent a line
        settings::set_message("Testing");
        s.stop_computations = 0;
        s.hw_p_value = 1.0;
        s.hw_precision = 1e-12;
        mnd_test::WatchedOutput console;
        console.when("4% : Testing", [this] { s.stop_computations = 1; });
        mnd::silentMendrake = false;
        const ChainResult result = run(test, 1000);
        mnd::silentMendrake = true;
        EXPECT_EQ(s.stop_computations, 1) << console.text();
        EXPECT_EQ(result.steps_done, 0);
        EXPECT_EQ(result.p_value, 1.0);
        EXPECT_EQ(result.sd, 0.0);
        EXPECT_EQ(next(), behind) << console.text();
    }
}

// --- The likelihood-ratio test

// A 110, B 90 of 200 copies: 2 (30 ln(30/30.25) + 50 ln(50/49.5) + 20 ln(20/20.25)), one degree of freedom.
TEST_F(HardyWeinberg, LikelihoodRatioTestOfTwoAlleles) {
    add_locus({{30, 50}, {0, 20}});
    int hw_info[2] = {0, 0};
    double stat = -7.0;
    EXPECT_EQ(sample.make_hw_test1(sample.phen_db, stat, s, hw_info), 1);
    const double G = 2.0 * (30 * std::log(30 / 30.25) + 50 * std::log(50 / 49.5) + 20 * std::log(20 / 20.25));
    EXPECT_NEAR(stat, G, 1e-10);
    EXPECT_NEAR(s.hw_p_value, std::erfc(std::sqrt(G / 2.0)), 1e-5);
}

// The second locus: A 10, B 7, C 5 of 22. Sum of 2 O ln(O/E) over the genotypes that occur, E from the
// squares and products of the shares; 3 degrees of freedom.
TEST_F(HardyWeinberg, LikelihoodRatioTestOfOneLocusOfThree) {
    add("XAQ", "YAQ", 2.0);
    add("XBQ", "XBQ", 1.0);
    add("YBQ", "XAQ", 3.0);
    add("YAQ", "XBQ", 1.0);  // A and B again
    add("YCQ", "YAQ", 2.0);
    add("YC?", "YCQ", 1.0);
    add("YBQ", "YCQ", 1.0);
    add("Y?Q", "YCQ", 9.0);  // not counted
    const double e = 11.0;
    const auto g = [e](double o, double p) { return 2.0 * o * std::log(o / (e * p)); };
    const double a = 10.0 / 22.0;
    const double b = 7.0 / 22.0;
    const double c = 5.0 / 22.0;
    const double expected =
        g(2, a * a) + g(1, b * b) + g(4, 2 * a * b) + g(2, 2 * a * c) + g(1, c * c) + g(1, 2 * b * c);
    for (const int redundancy : {1, 0}) {
        s.EMCheckPhenRedundancy = redundancy;
        int hw_info[2] = {0, 1};
        double stat = -7.0;
        EXPECT_EQ(sample.make_hw_test1(sample.phen_db, stat, s, hw_info), 3);
        // Without merging, the two entries of A and B are still one genotype.
        EXPECT_NEAR(stat, expected, 1e-10);
    }
    EXPECT_EQ(sample.phen_db.count, 8);
    // Tail of chi-square with 3 degrees of freedom: erfc(sqrt(G/2)) + sqrt(2 G/pi) exp(-G/2)
    EXPECT_NEAR(s.hw_p_value,
                std::erfc(std::sqrt(expected / 2)) +
                    std::sqrt(2 * expected / 3.14159265358979) * std::exp(-expected / 2),
                1e-5);
}

TEST_F(HardyWeinberg, LikelihoodRatioTestOfNoLocusIsReported) {
    const CapturedReports reports;
    add("A", "B", 3.0);
    for (const int locus : {1, -1}) {
        int hw_info[2] = {0, locus};
        double stat = -7.0;
        s.hw_p_value = 0.5;
        EXPECT_EQ(sample.make_hw_test1(sample.phen_db, stat, s, hw_info), 0);
        EXPECT_EQ(stat, -1000.0);
        EXPECT_EQ(s.hw_p_value, 1.0);
    }
    const Report report{mnd::Error, "TPhenDB::hw_chi_stat()", 118};
    EXPECT_EQ(reports.all(), (std::vector<Report>{report, report}));
}

TEST_F(HardyWeinberg, LikelihoodRatioTestOfOneAlleleIsNone) {
    add("A", "A", 3.0);
    int hw_info[2] = {0, 0};
    double stat = -7.0;
    EXPECT_EQ(sample.make_hw_test1(sample.phen_db, stat, s, hw_info), 0);
    EXPECT_EQ(stat, 0.0);
    EXPECT_EQ(s.hw_p_value, 1.0);
}

// --- The tables of the document

const std::string kRule(72, '-');
const std::string kColumns =
    kRule + "\nLocus  #Genot       Obs.Het.     Exp.Het.   P-value     s.d.  Steps done\n" + kRule + "\n";

std::string heading(const std::string& level) {
    return "\nExact test using a Markov chain (for all " + level +
           "):\nForecasted chain length     :1000\nDememorization steps        :700\n\n";
}

// Number in a field, five decimals.
std::string field(double x, int width) {
    char text[64];
    std::snprintf(text, sizeof text, "%*.5f", width, x);
    return text;
}
std::string row(int locus, int n, double observed, double expected, const ChainResult& test) {
    char text[128];
    std::snprintf(text, sizeof text, "%5d%8d%14.5f%13.5f%11.5f%9.5f%12ld\n", locus, n, observed, expected,
                  test.p_value, test.sd, test.steps_done);
    return text;
}
std::string haplotype_line(const ChainResult& test) {
    return "Markov Chain test:  P value : " + field(test.p_value, 0) + " +/- " + field(test.sd, 10) +
           "       (" + std::to_string(test.steps_done) + " steps done\n";
}

TEST(HardyWeinbergTables, AreAlignedByColumns) {
    std::ostringstream out;
    out.fill('*');
    out << std::scientific;
    mnd::print_hw_columns(out);
    mnd::print_hw_locus(out, 3);
    mnd::print_hw_row(out, {28, 0.642857, 0.6123377, {0.04321, 0.00123, 1001000}});
    out << '\n';
    mnd::print_hw_locus(out, 12);
    mnd::print_hw_monomorphic(out);
    out << '\n';
    mnd::print_hw_rule(out);
    EXPECT_EQ(out.str(),
              "------------------------------------------------------------------------\n"
              "Locus  #Genot       Obs.Het.     Exp.Het.   P-value     s.d.  Steps done\n"
              "------------------------------------------------------------------------\n"
              "    3      28       0.64286      0.61234    0.04321  0.00123     1001000\n"
              "   12   This locus is monomorphic: no test done.\n"
              "------------------------------------------------------------------------\n");
    EXPECT_EQ(out.fill(), '*');
    EXPECT_TRUE((out.flags() & std::ios::scientific) != 0);
}

TEST(HardyWeinbergTables, TellTheTestOfHaplotypes) {
    std::ostringstream out;
    mnd::print_hw_haplotypes_label(out);
    mnd::print_hw_haplotypes(out, {0.04321, 0.00123, 200256});
    EXPECT_EQ(out.str(), "Markov Chain test:  P value : 0.04321 +/-    0.00123       (200256 steps done\n");
}

class HardyWeinbergDocument : public HardyWeinberg {
protected:
    // Two polymorphic loci with a monomorphic one between them.
    void add_three_loci() {
        add("AXM", "BXN", 4.0);
        add("AXM", "AXM", 3.0);
        add("BXN", "BXM", 2.0);
        add("AXN", "?XN", 1.0);
    }
    // Results in the order in which the analysis comes to them.
    ChainResult locus_result(int locus) {
        s.hw_p_value = 1.0;
        const ChainResult result = long_chain(s.MarkovChainStepsHW, locus);
        s.hw_precision = 0.0;
        return result;
    }
    ChainResult haplotype_result() {
        s.hw_p_value = 1.0;
        const ChainResult result = long_chain(s.MarkovChainStepsHW, kHaplotypes);
        s.hw_precision = 0.0;
        return result;
    }
    // Locus 1: 9 individuals, 4 heterozygous, A 10, B 8 of 18: 18/17 (1 - 164/324).
    // Locus 3: 10 individuals, 6 heterozygous, M 12, N 8 of 20: 20/19 (1 - 208/400).
    std::string rows() {
        std::string text = row(1, 9, 4.0 / 9.0, 18.0 / 17.0 * (1.0 - 164.0 / 324.0), locus_result(0));
        text += "    2   This locus is monomorphic: no test done.\n";
        return text + row(3, 10, 0.6, 20.0 / 19.0 * (1.0 - 208.0 / 400.0), locus_result(2));
    }
};

TEST_F(HardyWeinbergDocument, ListsTheLoci) {
    add_three_loci();
    for (const int phase : {0, 1}) {
        sample.profile.GameticPhase = phase;
        seed();
        const std::string expected = heading("Loci") + kColumns + rows() + kRule + "\n\n";
        const double behind = next();
        seed();
        s.PrecisionOnPValueHW = 0.125;
        EXPECT_EQ(analyse(), expected);
        EXPECT_EQ(next(), behind);
        EXPECT_EQ(s.PrecisionOnPValueHW, 0.125);
        EXPECT_FALSE(sample.table.exists());
    }
}

TEST_F(HardyWeinbergDocument, TestsHaplotypesAlone) {
    add_three_loci();
    s.TypeOfTestHW = 1;
    const std::string expected = kColumns + "\n\n\n" + kRule + "\n" + heading("Haplotypes") +
                                 haplotype_line(haplotype_result()) + "\n";
    seed();
    s.PrecisionOnPValueHW = 0.125;
    EXPECT_EQ(analyse(), expected);
    EXPECT_EQ(s.PrecisionOnPValueHW, 0.125);
}

TEST_F(HardyWeinbergDocument, TestsLociAndHaplotypes) {
    add_three_loci();
    s.TypeOfTestHW = 2;
    std::string expected = heading("Loci") + kColumns + rows() + kRule + "\n";
    expected += heading("Haplotypes") + haplotype_line(haplotype_result()) + "\n";
    seed();
    EXPECT_EQ(analyse(), expected);
}

TEST_F(HardyWeinbergDocument, UnknownPhaseHasNoHaplotypes) {
    add_three_loci();
    sample.profile.GameticPhase = 0;
    const std::string expected = heading("Loci") + kColumns + rows() + kRule + "\n\n";
    for (const int type : {0, 1, 2}) {
        s.TypeOfTestHW = type;
        seed();
        EXPECT_EQ(analyse(), expected) << type;
    }
}

TEST_F(HardyWeinbergDocument, ATestThatIsOffLeavesBlankRows) {
    add_three_loci();
    s.MakeHWExactTest = 0;
    const double first = next();
    seed();
    for (const int type : {0, 2}) {
        s.TypeOfTestHW = type;
        EXPECT_EQ(analyse(), heading("Loci") + kColumns + "\n\n\n" + kRule + "\n\n");
    }
    s.TypeOfTestHW = 1;
    EXPECT_EQ(analyse(), kColumns + "\n\n\n" + kRule + "\n\n");
    EXPECT_EQ(next(), first);
    EXPECT_EQ(s.hw_p_value, 1.0);
}

TEST_F(HardyWeinbergDocument, ASampleWithoutPhenotypesHasNoRows) {
    const CapturedReports reports;
    s.TypeOfTestHW = 2;
    EXPECT_EQ(analyse(), heading("Loci") + kColumns + kRule + "\n\n");
    EXPECT_TRUE(reports.all().empty());
    EXPECT_EQ(settings::global_work_done, 0.0);
}

TEST_F(HardyWeinbergDocument, OneHaplotypeHasThePValueOne) {
    add("AX", "AX", 3.0);
    s.TypeOfTestHW = 1;
    s.hw_p_value = 0.5;
    s.PrecisionOnPValueHW = 0.125;
    EXPECT_EQ(analyse(), kColumns + "\n\n" + kRule + "\n" + heading("Haplotypes") +
                             "Markov Chain test:  P value : 1.00000 +/-    0.00000       (0 steps done\n\n");
}

TEST_F(HardyWeinbergDocument, AnIndividualWithOneMissingAlleleIsInNeitherTableNorHeterozygosity) {
    add("A", "B", 4.0);
    add("B", "B", 2.0);
    seed();
    const std::string expected = analyse();
    add("A", "?", 5.0);
    add("?", "C", 5.0);
    seed();
    EXPECT_EQ(analyse(), expected);
    EXPECT_TRUE(contains(expected, "\n    1       6       0.66667"));
}

TEST_F(HardyWeinbergDocument, FrequenciesCountInWholeIndividuals) {
    add("A", "B", 4.0);
    add("B", "B", 2.0);
    seed();
    const std::string expected = analyse();
    sample.phen_db[0]->freq = 4.75;
    sample.phen_db[1]->freq = 2.5;
    seed();
    EXPECT_EQ(analyse(), expected);
}

// 200000 steps are one chain of 447 x 448 steps with one burn-in, one more as many chains.
TEST_F(HardyWeinbergDocument, LongHaplotypeTestsAreManyChains) {
    add_three_loci();
    s.TypeOfTestHW = 1;
    s.MarkovChainDememorisationStepsLD = 3;
    for (const auto& [steps, test] :
         {std::pair{200000L, &Population::make_hw_test2}, {200001L, &Population::make_hw_test3}}) {
        s.MarkovChainStepsHW = steps;
        seed();
        s.hw_p_value = 1.0;
        const ChainResult result = run(test, steps, kHaplotypes);
        s.hw_precision = 0.0;
        const double behind = next();
        EXPECT_EQ(result.steps_done, 447 * 448);
        seed();
        EXPECT_TRUE(contains(analyse(), haplotype_line(result)));
        EXPECT_EQ(next(), behind);
    }
    // Loci keep to one chain, and the precision ends chains of haplotypes alone.
    s.TypeOfTestHW = 2;
    s.PrecisionOnPValueHW = 0.9;
    const std::string document = analyse();
    EXPECT_TRUE(contains(document, "      200256\n" + kRule));
    EXPECT_TRUE(contains(document, "(1344 steps done\n"));
}

TEST_F(HardyWeinbergDocument, NoStepsGiveZeros) {
    add("A", "B", 4.0);
    s.TypeOfTestHW = 2;
    s.MarkovChainStepsHW = 0;
    const std::string document = analyse();
    EXPECT_TRUE(contains(document, "\nForecasted chain length     :0\n"));
    EXPECT_TRUE(contains(document, "    0.00000  0.00000           0\n"));
    EXPECT_TRUE(contains(document, "P value : 0.00000 +/-    0.00000       (0 steps done\n"));
}

TEST_F(HardyWeinbergDocument, AFailureKeepsItsRow) {
    const CapturedReports reports;
    add("AB", "BA", 4.0);
    add("A", "B", 4.0);
    const std::string document = analyse();
    EXPECT_TRUE(contains(document, "    1       8"));
    EXPECT_TRUE(contains(document, "    1.00000  0.00000           0\n"));
    EXPECT_EQ(reports.all(), (std::vector<Report>{kBadLocus}));
}

TEST_F(HardyWeinbergDocument, AStoppedWorkTestsNothingMore) {
    add_three_loci();
    s.TypeOfTestHW = 2;
    s.stop_computations = 1;
    EXPECT_EQ(analyse(), heading("Loci") + kColumns + kRule + "\n\n");
}

TEST_F(HardyWeinbergDocument, LeavesTheFormatOfTheDocumentAsItWas) {
    add_three_loci();
    s.TypeOfTestHW = 2;
    seed();
    const std::string expected = analyse();
    std::fstream& out = document_.stream();
    out << std::scientific << std::showpos << std::left;
    out.precision(3);
    out.fill('*');
    const auto flags = out.flags();
    seed();
    EXPECT_EQ(analyse(), expected);
    EXPECT_EQ(out.flags(), flags);
    EXPECT_EQ(out.precision(), 3);
    EXPECT_EQ(out.fill(), '*');
}

// --- The batch summary

TEST_F(HardyWeinbergDocument, WritesARowOfTheBatchSummary) {
    add_three_loci();
    s.TypeOfTestHW = 2;
    const mnd_test::TempFolder folder;
    std::ofstream summary(folder / "hw.sum");
    mnd::ofs_HW = &summary;
    char* const before = settings::input_file;
    std::string project = "dir/cats.mnp";
    settings::input_file = project.data();
    seed();
    const ChainResult first = locus_result(0);
    const ChainResult third = locus_result(2);
    seed();
    analyse();
    s.TypeOfTestHW = 1;
    analyse();
    s.TypeOfTestHW = 0;
    s.MakeHWExactTest = 0;
    analyse();
    mnd::ofs_HW = nullptr;
    settings::input_file = before;
    summary.close();
    EXPECT_EQ(mnd_test::read_text(folder / "hw.sum"),
              "\"dir/cats.mnp\"\t\"Lake\"\t" + field(first.p_value, 0) + "\t" + field(first.sd, 0) +
                  "\tN.A.\tN.A.\t" + field(third.p_value, 0) + "\t" + field(third.sd, 0) + "\n");
}

TEST_F(HardyWeinbergDocument, TheBatchSummaryShowsNoValuesOfATestThatDidNotRun) {
    const CapturedReports reports;
    const mnd_test::TempFolder folder;
    std::ofstream summary(folder / "hw.sum");
    mnd::ofs_HW = &summary;
    add("A", "B", 4.0);
    s.MarkovChainStepsHW = 0;
    analyse();
    s.MarkovChainStepsHW = 1000;
    add("A", "", 4.0);  // the second haplotype is without the locus
    analyse();
    mnd::ofs_HW = nullptr;
    summary.close();
    const std::string row = "\"\"\t\"Lake\"\tN.A.\tN.A.\n";
    EXPECT_EQ(mnd_test::read_text(folder / "hw.sum"), row + row);
    EXPECT_EQ(reports.all(), (std::vector<Report>{kBadLocus}));
}

// --- As a step of the analyses of a sample

TEST(HardyWeinbergStep, HasItsHeadingAndItsReference) {
    mnd_test::AnalysedSamples<PopulStandard> a(mnd_test::genotypic(mnd::STANDARD, ' ', 0));
    a.add("Lake", "a 2 A x\n B x\nb 1 A x\n A x\n");
    a.prepare();
    a.s.MakeHWExactTest = 1;
    a.s.MarkovChainStepsHW = 100;
    a.s.MarkovChainDememorisationStepsLD = 10;
    const std::string document = a.analyse(mnd::kTaskHardyWeinberg);
    EXPECT_TRUE(contains(document,
                         "\n======================================\n"
                         "== Hardy-Weinberg equilibrium : (Lake)\n"
                         "======================================\n\n"
                         "\nExact test using a Markov chain (for all Loci):\n"));
    EXPECT_TRUE(
        contains(document, "\n    2   This locus is monomorphic: no test done.\n" + kRule +
                               "\n\nReference: <i>Guo, S. W., and E. A. Thompson (1992) Performing the exact "
                               "test of Hardy-Weinberg proportion for multiple alleles. Biometrics "
                               "48:361-372.</i>\n"));
}

TEST(HardyWeinbergStep, OfHaplotypesHasNoRows) {
    mnd_test::AnalysedSamples<PopulStandard> a(mnd_test::haplotypic(mnd::STANDARD, ' '));
    a.add("Lake", "h1 2 A x\nh2 1 B x\n");
    a.prepare();
    a.s.MakeHWExactTest = 1;
    a.s.MarkovChainStepsHW = 100;
    a.s.TypeOfTestHW = 2;
    EXPECT_TRUE(contains(a.analyse(mnd::kTaskHardyWeinberg), kColumns + kRule + "\n\nReference: "));
}

}  // namespace
