#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include "between/amova_data.h"
#include "between/amova_designs.h"
#include "model/population.h"
#include "support/project_log.h"

namespace mnd_test {
namespace {

using Design = int (mnd::Amova::*)();

CopyDistance of_rows(const Distance& d) {
    return [d](const PlacedCopy& a, const PlacedCopy& b) { return d(a.row, b.row); };
}

void expect_near_all(const std::vector<double>& found, const std::vector<double>& expected, int round) {
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i)
        EXPECT_NEAR(found[i], expected[i], 1e-9 * (1.0 + std::fabs(expected[i])))
            << "row " << i << " round " << round;
}

double conventional(int i, int j) {
    return i == j ? 0.0 : 1.0;
}

// ---- Against all pairs of gene copies, and components from expectations of the sums of squares

TEST(AmovaDesigns, GroupsOfHaplotypesAgreeWithAllPairs) {
    std::mt19937 random(21);
    for (int round = 0; round < 30; ++round) {
        const Distance d = random_distance(random, 5);
        const std::vector<Group> groups = random_groups(random, 2 + round % 3, 5, false);
        AmovaData data(groups, 5, d);
        const auto a = data.prepare();
        ASSERT_EQ(a->AMOVA_G_P_H(), 1);
        const auto copies = place_copies(groups);
        const std::vector<Unit> levels = {group_unit, sample_unit};
        expect_near_all({a->SSDAG, a->SSDAP, a->SSDWP}, nested_ss(copies, levels, of_rows(d)), round);
        const std::vector<double> v = nested_components(copies, levels, of_rows(d));
        expect_near_all({a->Va, a->Vb, a->Vc}, v, round);
        const double total = v[0] + v[1] + v[2];
        expect_near_all({a->V_total, a->FCT, a->FSC, a->FST},
                        {total, v[0] / total, v[1] / (v[1] + v[2]), (v[0] + v[1]) / total}, round);
        EXPECT_NEAR(a->SSDT, ss_within(copies, no_unit, of_rows(d)), 1e-9);
    }
}

TEST(AmovaDesigns, SamplesOfHaplotypesAgreeWithAllPairs) {
    std::mt19937 random(22);
    for (int round = 0; round < 30; ++round) {
        const Distance d = random_distance(random, 6);
        const std::vector<Group> groups = random_groups(random, 1, 6, false);
        AmovaData data(groups, 6, d);
        const auto a = data.prepare();
        ASSERT_EQ(a->AMOVA_1G_P_H(), 1);
        const auto copies = place_copies(groups);
        expect_near_all({a->SSDAP, a->SSDWP}, nested_ss(copies, {sample_unit}, of_rows(d)), round);
        const std::vector<double> v = nested_components(copies, {sample_unit}, of_rows(d));
        expect_near_all({a->Va, a->Vb, a->FST}, {v[0], v[1], v[0] / (v[0] + v[1])}, round);
    }
}

TEST(AmovaDesigns, SamplesOfIndividualsAgreeWithAllPairs) {
    std::mt19937 random(23);
    for (int round = 0; round < 30; ++round) {
        const Distance d = random_distance(random, 5);
        const std::vector<Group> groups = random_groups(random, 1, 5, true);
        AmovaData data(groups, 5, d, true);
        data.s.IncludeIndividualLevel = 1;
        const auto a = data.prepare();
        ASSERT_EQ(a->AMOVA_1G_P_I(), 1);
        const auto copies = place_copies(groups);
        const std::vector<Unit> levels = {sample_unit, individual_unit};
        expect_near_all({a->SSDAP, a->SSDWP, a->SSDWI}, nested_ss(copies, levels, of_rows(d)), round);
        const std::vector<double> v = nested_components(copies, levels, of_rows(d));
        const double total = v[0] + v[1] + v[2];
        expect_near_all({a->Va, a->Vb, a->Vc, a->FST, a->FIT, a->FIS},
                        {v[0], v[1], v[2], v[0] / total, (v[0] + v[1]) / total, v[1] / (v[1] + v[2])}, round);
    }
}

TEST(AmovaDesigns, GroupsOfIndividualsAgreeWithAllPairs) {
    std::mt19937 random(24);
    for (int round = 0; round < 30; ++round) {
        const Distance d = random_distance(random, 5);
        const std::vector<Group> groups = random_groups(random, 2 + round % 3, 5, true);
        AmovaData data(groups, 5, d, true);
        data.s.IncludeIndividualLevel = 1;
        const auto a = data.prepare();
        ASSERT_EQ(a->AMOVA_G_P_I(), 1);
        const auto copies = place_copies(groups);
        const std::vector<Unit> levels = {group_unit, sample_unit, individual_unit};
        expect_near_all({a->SSDAG, a->SSDAP, a->SSDWP, a->SSDWI}, nested_ss(copies, levels, of_rows(d)),
                        round);
        const std::vector<double> v = nested_components(copies, levels, of_rows(d));
        const double total = v[0] + v[1] + v[2] + v[3];
        expect_near_all({a->Va, a->Vb, a->Vc, a->Vd}, v, round);
        expect_near_all({a->FCT, a->FSC, a->FIS, a->FIT},
                        {v[0] / total, v[1] / (v[1] + v[2] + v[3]), v[2] / (v[2] + v[3]), 1.0 - v[3] / total},
                        round);
    }
}

TEST(AmovaDesigns, OneSampleOfIndividualsAgreesWithAllPairs) {
    std::mt19937 random(25);
    for (int round = 0; round < 30; ++round) {
        const Distance d = random_distance(random, 5);
        std::vector<Group> groups = random_groups(random, 1, 5, true);
        groups[0].resize(1);
        AmovaData data(groups, 5, d, true);
        data.s.IncludeIndividualLevel = 1;
        const auto a = data.prepare();
        ASSERT_EQ(a->AMOVA_1G_1P_I(), 1);
        const auto copies = place_copies(groups);
        expect_near_all({a->SSDWP, a->SSDWI}, nested_ss(copies, {individual_unit}, of_rows(d)), round);
        const std::vector<double> v = nested_components(copies, {individual_unit}, of_rows(d));
        expect_near_all({a->Va, a->Vb, a->FIS}, {v[0], v[1], v[0] / (v[0] + v[1])}, round);
        double mean = 0.0;
        for (const double f : a->ind_F)
            mean += f / a->N_units;
        EXPECT_NEAR(mean, a->FIS, 1e-9) << "the statistics of the individuals average to the index";
    }
}

TEST(AmovaDesigns, UnknownPhaseHasTheObservedTableOfHaplotypes) {
    std::mt19937 random(26);
    const Distance d = random_distance(random, 5);
    const struct {
        int nb_groups;
        Design unknown, known;
    } kCases[] = {{1, &mnd::Amova::AMOVA_1G_P_IH, &mnd::Amova::AMOVA_1G_P_H},
                  {3, &mnd::Amova::AMOVA_G_P_IH, &mnd::Amova::AMOVA_G_P_H}};
    for (const auto& c : kCases) {
        const std::vector<Group> groups = random_groups(random, c.nb_groups, 5, true);
        AmovaData data(groups, 5, d, true);
        data.s.IncludeIndividualLevel = 1;  // has no say in these designs
        const auto a = data.prepare();
        const auto b = data.prepare();
        ASSERT_EQ((a.get()->*c.unknown)(), 1);
        ASSERT_EQ((b.get()->*c.known)(), 1);
        EXPECT_EQ(a->df, b->df);
        EXPECT_EQ(a->Va, b->Va);
        EXPECT_EQ(a->Vb, b->Vb);
        EXPECT_EQ(a->Vc, b->Vc);
        EXPECT_EQ(a->FST, b->FST);
        EXPECT_NE(a->FST, 0.0);
    }
}

TEST(AmovaDesigns, RecessiveAllelesYieldNothing) {
    AmovaData data({{{0, 1}, {1, 1}}}, 2, nullptr, true);
    mnd::amova_results record;
    const auto a = data.prepare();
    a->results = &record;
    EXPECT_EQ(a->AMOVA_1G_P_RIH(), 1);
    EXPECT_EQ(a->AMOVA_G_P_RIH(), 1);
    EXPECT_EQ(a->SSDT, 0.0);
    EXPECT_EQ(record.total.df, 0);
}

// ---- Examples of the literature

// Sokal and Rohlf 1995, Biometry, 3rd ed., box 10.1: two measurements of the wing of each of four
// mosquitoes in each of three cages. With the squared difference of two measurements as distance, the
// analysis is the nested analysis of variance worked there: sums of squares 665.676, 1720.678 and 15.620
// with 2, 9 and 12 degrees of freedom, components 17.706, 94.942 and 1.302.
const std::vector<double> kWings = {58.5, 59.5, 77.8, 80.9, 84.0, 83.6, 70.1, 68.3, 69.8, 69.8, 56.0, 54.5,
                                    50.7, 49.3, 63.8, 65.8, 56.6, 57.5, 77.8, 79.2, 69.9, 69.2, 62.1, 64.5};

double wing_distance(int i, int j) {
    const double difference = kWings[static_cast<std::size_t>(i)] - kWings[static_cast<std::size_t>(j)];
    return difference * difference;
}

TEST(AmovaDesigns, NestedMeasurementsOfWingsAsGroupsAndSamples) {
    std::vector<Group> cages(3);
    for (int copy = 0; copy < 24; copy += 2)
        cages[static_cast<std::size_t>(copy / 8)].push_back({copy, copy + 1});
    AmovaData data(cages, 24, wing_distance);
    const auto a = data.prepare();
    ASSERT_EQ(a->AMOVA_G_P_H(), 1);
    EXPECT_EQ(a->df[0], 2);
    EXPECT_EQ(a->df[1], 9);
    EXPECT_EQ(a->df[2], 12);
    EXPECT_NEAR(a->SSDAG, 665.676, 1e-3);
    EXPECT_NEAR(a->SSDAP, 1720.678, 1e-3);
    EXPECT_NEAR(a->SSDWP, 15.620, 1e-3);
    EXPECT_NEAR(a->Va, 17.706, 1e-3);
    EXPECT_NEAR(a->Vb, 94.942, 1e-3);
    EXPECT_NEAR(a->Vc, 1.302, 1e-3);
}

TEST(AmovaDesigns, NestedMeasurementsOfWingsAsSamplesAndIndividuals) {
    std::vector<Group> cages(1, Group(3));
    for (int copy = 0; copy < 24; ++copy)
        cages[0][static_cast<std::size_t>(copy / 8)].push_back(copy);
    AmovaData data(cages, 24, wing_distance, true);
    data.s.IncludeIndividualLevel = 1;
    const auto a = data.prepare();
    ASSERT_EQ(a->AMOVA_1G_P_I(), 1);
    EXPECT_NEAR(a->SSDAP, 665.676, 1e-3);
    EXPECT_NEAR(a->SSDWP, 1720.678, 1e-3);
    EXPECT_NEAR(a->SSDWI, 15.620, 1e-3);
    EXPECT_NEAR(a->Va, 17.706, 1e-3);
    EXPECT_NEAR(a->Vb, 94.942, 1e-3);
    EXPECT_NEAR(a->Vc, 1.302, 1e-3);
}

// Weir 1996, Genetic Data Analysis II, p. 173: theta of haploid samples from allele frequencies.
double haploid_theta(const Group& samples, int nb_alleles) {
    const double r = static_cast<double>(samples.size());
    double copies = 0.0;
    double squares = 0.0;
    for (const Copies& sample : samples) {
        const double n = static_cast<double>(sample.size());
        copies += n;
        squares += n * n;
    }
    const double n_c = (copies - squares / copies) / (r - 1.0);
    double numerator = 0.0;
    double denominator = 0.0;
    for (int allele = 0; allele < nb_alleles; ++allele) {
        std::vector<double> p;
        double mean = 0.0;
        for (const Copies& sample : samples) {
            const double count = static_cast<double>(std::count(sample.begin(), sample.end(), allele));
            p.push_back(count / static_cast<double>(sample.size()));
            mean += count / copies;
        }
        double msp = 0.0;
        double msg = 0.0;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const double n = static_cast<double>(samples[i].size());
            msp += n * (p[i] - mean) * (p[i] - mean) / (r - 1.0);
            msg += n * p[i] * (1.0 - p[i]) / (copies - r);
        }
        numerator += msp - msg;
        denominator += msp + (n_c - 1.0) * msg;
    }
    return numerator / denominator;
}

TEST(AmovaDesigns, ConventionalFstIsThetaOfAlleleFrequencies) {
    std::mt19937 random(31);
    for (int round = 0; round < 20; ++round) {
        const std::vector<Group> groups = random_groups(random, 1, 4, false);
        AmovaData data(groups, 4, nullptr);
        const auto a = data.prepare();
        ASSERT_EQ(a->AMOVA_1G_P_H(), 1);
        EXPECT_NEAR(a->FST, haploid_theta(groups[0], 4), 1e-11) << round;
    }
}

// Components of one allele of Weir and Cockerham 1984, Evolution 38:1358-1370, equations 2 to 4.
struct Components {
    double a = 0.0, b = 0.0, c = 0.0;
};

Components components_of_allele(const Group& samples, int allele) {
    const double r = static_cast<double>(samples.size());
    double individuals = 0.0;
    double squares = 0.0;
    double p_mean = 0.0;
    double h_mean = 0.0;
    std::vector<double> p;
    for (const Copies& sample : samples) {
        const double n = static_cast<double>(sample.size()) / 2.0;
        double heterozygotes = 0.0;
        for (std::size_t k = 0; k < sample.size(); k += 2)
            heterozygotes += (sample[k] == allele) != (sample[k + 1] == allele) ? 1.0 : 0.0;
        p.push_back(static_cast<double>(std::count(sample.begin(), sample.end(), allele)) / (2.0 * n));
        individuals += n;
        squares += n * n;
        p_mean += n * p.back();
        h_mean += heterozygotes;
    }
    p_mean /= individuals;
    h_mean /= individuals;
    const double n = individuals / r;
    const double n_c = (individuals - squares / individuals) / (r - 1.0);
    double s2 = 0.0;
    for (std::size_t i = 0; i < samples.size(); ++i)
        s2 += static_cast<double>(samples[i].size()) / 2.0 * (p[i] - p_mean) * (p[i] - p_mean) /
              ((r - 1.0) * n);
    const double common = p_mean * (1.0 - p_mean) - (r - 1.0) / r * s2;
    return {n / n_c * (s2 - (common - h_mean / 4.0) / (n - 1.0)),
            n / (n - 1.0) * (common - (2.0 * n - 1.0) / (4.0 * n) * h_mean), h_mean / 2.0};
}

TEST(AmovaDesigns, ConventionalIndicesOfIndividualsAreThoseOfAlleleAndGenotypeFrequencies) {
    std::mt19937 random(32);
    for (int round = 0; round < 20; ++round) {
        const std::vector<Group> groups = random_groups(random, 1, 3, true);
        AmovaData data(groups, 3, nullptr, true);
        data.s.IncludeIndividualLevel = 1;
        const auto analysis = data.prepare();
        ASSERT_EQ(analysis->AMOVA_1G_P_I(), 1);
        Components sum;
        for (int allele = 0; allele < 3; ++allele) {
            const Components part = components_of_allele(groups[0], allele);
            sum.a += part.a;
            sum.b += part.b;
            sum.c += part.c;
        }
        const double total = sum.a + sum.b + sum.c;
        EXPECT_NEAR(analysis->FST, sum.a / total, 1e-11) << round;
        EXPECT_NEAR(analysis->FIT, 1.0 - sum.c / total, 1e-11) << round;
        EXPECT_NEAR(analysis->FIS, 1.0 - sum.c / (sum.b + sum.c), 1e-11) << round;
    }
}

// ---- Edges

void expect_ill_defined(const std::vector<Group>& groups, Design design, const std::string& origin) {
    AmovaData data(groups, 3, conventional, true);
    data.s.IncludeIndividualLevel = 1;
    mnd::amova_results record;
    const auto a = data.prepare();
    a->results = &record;
    const ProjectLog log;
    EXPECT_EQ((a.get()->*design)(), 0) << origin;
    EXPECT_TRUE(log.reports("ERROR", origin, "ill-defined genetic structure")) << log.text();
    EXPECT_EQ(record.total.df, 0) << origin;
}

TEST(AmovaDesigns, StructureWithoutDegreesOfFreedomIsIllDefined) {
    const Copies two = {0, 1};
    const Copies one = {0};
    expect_ill_defined({{two}, {two}}, &mnd::Amova::AMOVA_G_P_H, "Amova::AMOVA_G_P_H()");
    expect_ill_defined({{two, two}}, &mnd::Amova::AMOVA_G_P_H, "Amova::AMOVA_G_P_H()");
    expect_ill_defined({{one, one}, {one}}, &mnd::Amova::AMOVA_G_P_H, "Amova::AMOVA_G_P_H()");
    expect_ill_defined({{two}, {two}}, &mnd::Amova::AMOVA_G_P_IH, "Amova::AMOVA_G_P_IH()");
    expect_ill_defined({{two}}, &mnd::Amova::AMOVA_1G_P_H, "Amova::AMOVA_1G_P_H()");
    expect_ill_defined({{one, one}}, &mnd::Amova::AMOVA_1G_P_H, "Amova::AMOVA_1G_P_H()");
    expect_ill_defined({{one, one}}, &mnd::Amova::AMOVA_1G_P_IH, "Amova::AMOVA_1G_P_IH()");
    expect_ill_defined({{two}}, &mnd::Amova::AMOVA_1G_P_I, "Amova::AMOVA_1G_P_I()");
    expect_ill_defined({{two, two}}, &mnd::Amova::AMOVA_1G_P_I, "Amova::AMOVA_1G_P_I()");
    expect_ill_defined({{two}}, &mnd::Amova::AMOVA_1G_1P_I, "Amova::AMOVA_1G_1P_I()");
    expect_ill_defined({{Copies{}}}, &mnd::Amova::AMOVA_1G_1P_I, "Amova::AMOVA_1G_1P_I()");
}

TEST(AmovaDesigns, GroupsOfIndividualsAreNotCheckedForTheirStructure) {
    AmovaData data({{{0, 1, 1, 1}}, {{2, 2, 0, 0}}}, 3, conventional, true);
    data.s.IncludeIndividualLevel = 1;
    const auto a = data.prepare();
    const ProjectLog log;
    EXPECT_EQ(a->AMOVA_G_P_I(), 1);
    EXPECT_EQ(log.text().find("ERROR"), std::string::npos);
    EXPECT_EQ(a->df[1], 0);
    EXPECT_FALSE(std::isfinite(a->MSD[1]));
}

TEST(AmovaDesigns, IdenticalCopiesHaveNoVariance) {
    const struct {
        Design design;
        std::vector<Group> groups;
    } kCases[] = {{&mnd::Amova::AMOVA_G_P_H, {{{0, 0}, {0, 0}}, {{0, 0, 0}}}},
                  {&mnd::Amova::AMOVA_1G_P_H, {{{0, 0}, {0, 0, 0}}}},
                  {&mnd::Amova::AMOVA_1G_P_I, {{{0, 0, 0, 0}, {0, 0, 0, 0}}}},
                  {&mnd::Amova::AMOVA_G_P_I, {{{0, 0, 0, 0}, {0, 0, 0, 0}}, {{0, 0, 0, 0}}}},
                  {&mnd::Amova::AMOVA_1G_1P_I, {{{0, 0, 0, 0}}}}};
    for (const auto& c : kCases) {
        AmovaData data(c.groups, 1, nullptr, true);
        data.s.IncludeIndividualLevel = 1;
        data.s.PopSpecificFST = 1;
        const auto a = data.prepare();
        ASSERT_EQ((a.get()->*c.design)(), 1);
        EXPECT_EQ(a->V_total, 1e-18);
        for (const double value : {a->Va, a->Vb, a->Vc, a->Vd, a->FST, a->FSC, a->FCT, a->FIS, a->FIT})
            EXPECT_EQ(value, 0.0);
        for (const double value : a->pop_Fst)
            EXPECT_EQ(value, 0.0);
    }
}

// Indices are ratios: however small the distances are, they are those of distance 1. 2^-90 is a
// power of two, so that nothing is rounded.
TEST(AmovaDesigns, NoVarianceMeansExactlyNone) {
    const auto tiny = [](int i, int j) { return i == j ? 0.0 : std::ldexp(1.0, -90); };
    const auto one = [](int i, int j) { return i == j ? 0.0 : 1.0; };
    const struct {
        Design design;
        std::vector<Group> groups;
    } kCases[] = {{&mnd::Amova::AMOVA_G_P_H, {{{0, 0}, {0, 1}}, {{1, 1, 1}}}},
                  {&mnd::Amova::AMOVA_1G_P_H, {{{0, 0}, {1, 0, 1}}}},
                  {&mnd::Amova::AMOVA_1G_P_I, {{{0, 1, 0, 0}, {1, 1, 0, 1}}}},
                  {&mnd::Amova::AMOVA_G_P_I, {{{0, 0, 0, 1}, {0, 0, 0, 0}}, {{1, 1, 1, 0}}}},
                  {&mnd::Amova::AMOVA_1G_1P_I, {{{0, 1, 0, 0, 1, 1}}}}};
    for (const auto& c : kCases) {
        AmovaData small(c.groups, 2, tiny, true);
        AmovaData large(c.groups, 2, one, true);
        for (AmovaData* data : {&small, &large}) {
            data->s.IncludeIndividualLevel = 1;
            data->s.PopSpecificFST = 1;
        }
        const auto a = small.prepare();
        const auto b = large.prepare();
        ASSERT_EQ((a.get()->*c.design)(), 1);
        ASSERT_EQ((b.get()->*c.design)(), 1);
        ASSERT_NE(b->V_total, 0.0);
        EXPECT_EQ(a->V_total, std::ldexp(b->V_total, -90));
        EXPECT_EQ(a->FST, b->FST);
        EXPECT_EQ(a->FSC, b->FSC);
        EXPECT_EQ(a->FCT, b->FCT);
        EXPECT_EQ(a->FIS, b->FIS);
        EXPECT_EQ(a->FIT, b->FIT);
        EXPECT_EQ(a->pop_Fst, b->pop_Fst);
    }
}

TEST(AmovaDesigns, ComponentsMayBeNegative) {
    // Equal frequencies in both samples: nothing among them, so that Va = -MSD b / n.
    AmovaData data({{{0, 1}, {0, 1}}}, 2, nullptr);
    const auto a = data.prepare();
    ASSERT_EQ(a->AMOVA_1G_P_H(), 1);
    EXPECT_DOUBLE_EQ(a->MSD[0], 0.0);
    EXPECT_DOUBLE_EQ(a->Vb, 0.5);
    EXPECT_DOUBLE_EQ(a->Va, -0.25);
    EXPECT_DOUBLE_EQ(a->FST, -1.0);
}

TEST(AmovaDesigns, HaplotypesCountGeneCopiesWhateverTheIndividualLevel) {
    const std::vector<Group> groups = {{{0, 1}, {1, 1, 2}}, {{2, 0}, {0, 0}}};
    AmovaData plain(groups, 3, conventional);
    AmovaData level(groups, 3, conventional);
    level.s.IncludeIndividualLevel = 1;
    const auto a = plain.prepare();
    const auto b = level.prepare();
    ASSERT_EQ(a->AMOVA_G_P_H(), 1);
    ASSERT_EQ(b->AMOVA_G_P_H(), 1);
    EXPECT_EQ(b->N_units, 4.5);
    EXPECT_EQ(a->SSDAG, b->SSDAG);
    EXPECT_EQ(a->df, b->df);
    a->compute_SSDG_SSDAG();
    b->compute_SSDG_SSDAG();
    EXPECT_EQ(a->SSDAG, b->SSDAG);
}

TEST(AmovaDesigns, CoefficientsOfIndividualsTakeTheWholePartOfTheirNumber) {
    // Groups of 3 + 4 and 4 + 4 copies: 7.5 individuals count as 7, so 14 copies stand for 15.
    AmovaData data({{{0, 1, 0}, {0, 1, 1, 0}}, {{0, 0, 0, 1}, {0, 1, 1, 1}}}, 2, nullptr, true);
    data.s.IncludeIndividualLevel = 1;
    const auto a = data.prepare();
    mnd::set_individual_coefficients(*a);
    EXPECT_DOUBLE_EQ(a->n, (14.0 - 25.0 / 7.0 - 32.0 / 8.0) / 2.0);
    EXPECT_DOUBLE_EQ(a->n_prime, (7.0 * 25.0 / (14.0 * 7.0) + 6.0 * 32.0 / (14.0 * 8.0)) / 1.0);
    EXPECT_DOUBLE_EQ(a->n_second, 14.0 - (49.0 + 64.0) / 14.0);
}

// ---- Indices of single samples

TEST(AmovaDesigns, PopulationFstAveragesToTheCommonIndex) {
    std::mt19937 random(41);
    const Distance d = random_distance(random, 5);
    const std::vector<Group> groups = random_groups(random, 1, 5, false);
    AmovaData data(groups, 5, d);
    data.s.PopSpecificFST = 1;
    const auto a = data.prepare();
    ASSERT_EQ(a->AMOVA_1G_P_H(), 1);
    double mean = 0.0;
    for (std::size_t i = 0; i < a->pop_Fst.size(); ++i)
        mean += a->pop_Fst[i] * static_cast<double>(groups[0][i].size()) / a->N_genes;
    EXPECT_NEAR(mean, a->FST, 1e-12);
}

TEST(AmovaDesigns, PopulationFstOfAFixedSampleByHand) {
    // Two samples of 2: one fixed, one with both alleles. Pairs that differ: 0 + 1 + 2 = 3 of N = 4.
    // SSDAP = 3/4 - 1/2 = 0.25, SSDWP = 0.5; MSD a = 0.25, MSD b = 0.25; n = (4 - 8/4)/1 = 2; Va = 0,
    // V_total = 0.25. Fixed: (0.25 - 0) / 2 / 0.25 = 0.5. Mixed: (0.25 - 4 * 0.5 / 2 / 2) / 2 / 0.25 = -0.5.
    AmovaData data({{{0, 0}, {0, 1}}}, 2, nullptr);
    data.s.PopSpecificFST = 1;
    const auto a = data.prepare();
    ASSERT_EQ(a->AMOVA_1G_P_H(), 1);
    EXPECT_DOUBLE_EQ(a->pop_Fst[0], 0.5);
    EXPECT_DOUBLE_EQ(a->pop_Fst[1], -0.5);
}

TEST(AmovaDesigns, PopulationFisIsTheIndexOfTheSampleAlone) {
    std::mt19937 random(42);
    const Distance d = random_distance(random, 5);
    for (int nb_groups = 1; nb_groups <= 2; ++nb_groups) {
        const std::vector<Group> groups = random_groups(random, nb_groups, 5, true);
        AmovaData data(groups, 5, d, true);
        data.s.IncludeIndividualLevel = 1;
        data.s.PopSpecificFIS = 1;
        const auto a = data.prepare();
        ASSERT_EQ(nb_groups == 1 ? a->AMOVA_1G_P_I() : a->AMOVA_G_P_I(), 1);
        std::size_t i = 0;
        for (const Group& group : groups) {
            for (const Copies& sample : group) {
                const std::vector<double> v =
                    nested_components(place_copies({{sample}}), {individual_unit}, of_rows(d));
                EXPECT_NEAR(a->pop_Fis[i++], v[0] / (v[0] + v[1]), 1e-9);
            }
        }
    }
}

TEST(AmovaDesigns, PopulationFisOfOddSamples) {
    mnd::Population sample;
    EXPECT_EQ(mnd::population_fis(sample), -9.99999) << "no copies";
    sample.sample_size = 4.0;
    EXPECT_EQ(mnd::population_fis(sample), -9.99999) << "no variance";
    sample.sample_size = 2.0;
    sample.amova.SSD_within_ind = 0.5;
    sample.amova.SSD_div_n = 0.5;
    EXPECT_EQ(mnd::population_fis(sample), 0.0) << "one individual: nothing among individuals";
}

// ---- The result record

TEST(AmovaDesigns, RecordHoldsTheTable) {
    AmovaData data({{{0, 1}, {1, 1, 2}}, {{2, 0}, {0, 0}}}, 3, conventional);
    mnd::amova_results record;
    const auto a = data.prepare();
    a->results = &record;
    ASSERT_EQ(a->AMOVA_G_P_H(), 1);
    EXPECT_EQ(record.design_code, 3);
    EXPECT_EQ(record.row[0].df, 1);
    EXPECT_EQ(record.row[1].df, 2);
    EXPECT_EQ(record.row[2].df, 5);
    EXPECT_EQ(record.row[0].SSD, a->SSDAG);
    EXPECT_EQ(record.row[1].SSD, a->SSDAP);
    EXPECT_EQ(record.row[2].SSD, a->SSDWP);
    EXPECT_EQ(record.row[0].variance, a->Va);
    EXPECT_EQ(record.row[2].variance, a->Vc);
    EXPECT_EQ(record.row[3].df, 0);
    EXPECT_EQ(record.total.df, 8);
    EXPECT_EQ(record.total.SSD, a->SSDT);
    EXPECT_EQ(record.total.variance, a->V_total);
    EXPECT_EQ(record.FST, a->FST);
    EXPECT_EQ(record.FSC, a->FSC);
    EXPECT_EQ(record.FCT, a->FCT);
    EXPECT_TRUE(record.pop_Fst.empty());
}

TEST(AmovaDesigns, RecordOfIndividualsCountsThem) {
    AmovaData data({{{0, 1, 1, 1}, {2, 0, 0, 0}}}, 3, conventional, true);
    data.s.IncludeIndividualLevel = 1;
    data.s.PopSpecificFIS = 1;
    mnd::amova_results record;
    const auto a = data.prepare();
    a->results = &record;
    ASSERT_EQ(a->AMOVA_1G_P_I(), 1);
    EXPECT_EQ(record.design_code, 2);
    EXPECT_EQ(record.total.df, 3);
    EXPECT_EQ(record.row[2].df, 4);
    EXPECT_EQ(record.row[2].SSD, a->SSDWI);
    EXPECT_EQ(record.pop_Fis, a->pop_Fis);
    EXPECT_EQ(record.pop_Fis.size(), 2u);
}

// A 0 would pass for an index.
TEST(AmovaDesigns, RecordLacksTheIndicesOfSamplesThatADesignDoesNotHave) {
    const std::vector<Group> one_group = {{{0, 1, 1, 1}, {2, 0, 0, 0}}};
    const std::vector<Group> two_groups = {{{0, 1, 1, 1}, {2, 0, 0, 0}}, {{0, 0, 1, 2}, {1, 1, 0, 2}}};
    struct Case {
        int (mnd::Amova::*design)();
        bool individuals, several_groups;
        std::size_t nb_fst, nb_fis;
    };
    const std::vector<Case> cases = {
        {&mnd::Amova::AMOVA_1G_P_H, false, false, 2, 0}, {&mnd::Amova::AMOVA_1G_P_IH, false, false, 2, 0},
        {&mnd::Amova::AMOVA_G_P_H, false, true, 0, 0},   {&mnd::Amova::AMOVA_G_P_IH, false, true, 0, 0},
        {&mnd::Amova::AMOVA_1G_P_I, true, false, 0, 2},  {&mnd::Amova::AMOVA_G_P_I, true, true, 0, 4}};
    for (const Case& c : cases) {
        AmovaData data(c.several_groups ? two_groups : one_group, 3, conventional, true);
        data.s.IncludeIndividualLevel = c.individuals ? 1 : 0;
        data.s.PopSpecificFIS = data.s.PopSpecificFST = 1;
        mnd::amova_results record;
        const auto a = data.prepare();
        a->results = &record;
        ASSERT_EQ(((*a).*c.design)(), 1);
        EXPECT_EQ(record.pop_Fst.size(), c.nb_fst) << a->design;
        EXPECT_EQ(record.pop_Fis.size(), c.nb_fis) << a->design;
        EXPECT_EQ(record.pop_Fis_pvalue.size(), 0u) << a->design;
    }
}

}  // namespace
}  // namespace mnd_test
