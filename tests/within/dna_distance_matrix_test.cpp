#include "within/dna_distance_matrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>

#include "support/seeded_stream.h"
#include "within/plain_dna_distance.h"

namespace {

using mnd::DnaDistanceParameters;
using mnd::DnaDistances;
using mnd::DnaFault;
using mnd::DnaPair;
using mnd_test::PlainDnaDistance;

std::string printed(double x) {
    char text[64];
    std::snprintf(text, sizeof text, "%.6f", x == 0.0 ? 0.0 : x);
    return text;
}

class DnaDistanceMatrix : public mnd_test::SeededStream {
protected:
    std::vector<std::string> texts;
    std::vector<std::string_view> views;
    std::vector<int> usable;  // flag per site
    std::vector<int> sites;   // the usable ones

    static char pick(const std::string& alphabet) {
        return alphabet[static_cast<std::size_t>(next() * static_cast<double>(alphabet.size()))];
    }
    // Texts that differ from a common one at a share of their sites by characters of `others`.
    void make(int n, int length, double divergence, const std::string& others) {
        texts.clear();
        usable.clear();
        sites.clear();
        std::string common;
        for (int k = 0; k < length; ++k) {
            common += pick("ACGT");
            usable.push_back(next() < 0.9 ? 1 : 0);
            if (usable.back() == 1) sites.push_back(k);
        }
        for (int i = 0; i < n; ++i) {
            texts.push_back(common);
            for (char& c : texts.back()) {
                if (next() < divergence) c = pick(others);
            }
        }
        views.assign(texts.begin(), texts.end());
    }

    // Every ordered pair against the plain form: the texts compared site by site by the engine
    // agree in every bit, the oracle in the printed digits.
    void expect_plain_results(const DnaDistanceParameters& p) {
        PlainDnaDistance plain;
        plain.method = p.method;
        plain.ts_weight = p.weights.transition;
        plain.tv_weight = p.weights.transversion;
        plain.del_weight = p.weights.deletion;
        plain.a = p.gamma_a;
        plain.m = p.missing;
        plain.fC = p.composition.frequency[0];
        plain.fT = p.composition.frequency[1];
        plain.fA = p.composition.frequency[2];
        plain.fG = p.composition.frequency[3];
        plain.gc = p.composition.gc_content;
        DnaDistances distances(p, views, sites);
        for (std::size_t i = 0; i < texts.size(); ++i) {
            for (std::size_t j = 0; j < texts.size(); ++j) {
                DnaPair by_planes, by_texts;
                const DnaFault fault =
                    distances.distance(static_cast<int>(i), static_cast<int>(j), by_planes);
                ASSERT_EQ(fault, compare_texts(p, sites, views[i], views[j], by_texts));
                plain.compare(texts[i], texts[j], usable);
                if (!plain.done) {
                    EXPECT_NE(fault, DnaFault::kNone);
                    continue;
                }
                if (std::isnan(plain.distance)) {
                    EXPECT_TRUE(std::isnan(by_planes.distance));
                    continue;
                }
                ASSERT_EQ(fault, DnaFault::kNone) << texts[i] << " " << texts[j];
                ASSERT_EQ(by_planes.distance, by_texts.distance);
                ASSERT_EQ(by_planes.distance_var, by_texts.distance_var);
                ASSERT_EQ(printed(by_planes.distance), printed(plain.distance)) << "method " << p.method;
                ASSERT_NEAR(by_planes.distance_var, plain.variance,
                            1e-10 * (1.0 + std::fabs(plain.variance)));
            }
        }
    }
    void expect_all_methods(DnaDistanceParameters p) {
        p.composition = {{0.2, 0.3, 0.27, 0.23}, 0.43};
        for (int method = 0; method <= 7; ++method) {
            for (const double a : {0.0, 0.5, 2.0}) {
                p.method = method;
                p.gamma_a = a;
                expect_plain_results(p);
            }
        }
    }
};

TEST_F(DnaDistanceMatrix, AgreesWithTheComparisonSiteBySiteForPlainSequences) {
    make(12, 300, 0.1, "ACGT");
    expect_all_methods({});
}

TEST_F(DnaDistanceMatrix, AgreesWithTheComparisonSiteBySiteForAnyCharacters) {
    make(12, 200, 0.3, "ACGTACGTACGT-?RYMKSWHBVDN");
    expect_all_methods({});
    make(12, 200, 0.2, "ACGTACGTACGT01xa *");
    expect_all_methods({});
    make(12, 200, 0.05, "-?");
    expect_all_methods({});
}

TEST_F(DnaDistanceMatrix, AgreesWhenTheMissingCharacterIsASymbolOrTheGap) {
    for (const char missing : {'N', '-', 'R'}) {
        DnaDistanceParameters p;
        p.missing = missing;
        make(10, 150, 0.2, "ACGTACGTACGT-?RYN");
        expect_all_methods(p);
    }
}

TEST_F(DnaDistanceMatrix, AgreesForEveryKindOfWeights) {
    const double weights[][3] = {{2.0, 1.0, 3.0},  {0.5, 2.0, 0.0},  {0.0, 1.0, 1.0}, {1.0, 0.0, 1.0},
                                 {0.0, 0.0, 0.0},  {1.0, -2.0, 1.0}, {0.1, 0.7, 0.3}, {3.3, 1.1, 1e-3},
                                 {0.3, -0.1, 0.2}, {1.0, 1e9, 1.0}};
    for (const auto& w : weights) {
        DnaDistanceParameters p;
        p.weights = {w[0], w[1], w[2]};
        make(8, 260, 0.25, "ACGTACGT-?RYKSWBN");
        expect_all_methods(p);
    }
}

// 1000 sites of weight 1 and of weight 0.1 in turn: their sum depends on the order of the
// additions, and must be the one site by site.
TEST(DnaDistances, SumsOfRoundingWeightsAreTakenInTheOrderOfTheSites) {
    std::string first, second;
    double L = 0.0, d = 0.0;
    std::vector<int> sites;
    for (int k = 0; k < 1000; ++k) {
        const bool differs = k % 3 == 1;
        first += 'A';
        second += differs ? 'G' : 'A';
        L += differs ? 0.1 : 1.0;
        if (differs) d += 0.1;
        sites.push_back(k);
    }
    ASSERT_NE(d, 333 * 0.1);
    DnaDistanceParameters p;
    p.weights.transition = 0.1;
    DnaDistances distances(p, {first, second}, sites);
    DnaPair pair;
    ASSERT_EQ(distances.distance(1, 0, pair), DnaFault::kNone);
    EXPECT_EQ(pair.distance, d);
    EXPECT_EQ(pair.distance_var, (1.0 - d / L) * (d / L) * L);
}

// 0.001 and four times 1, one by one, is not 4.001: each step beyond a power of 2 rounds.
TEST(DnaDistances, RunsOfEqualSitesRoundAsOneByOne) {
    const double weight = 0.001;
    const double L = weight + 1.0 + 1.0 + 1.0 + 1.0;
    ASSERT_NE(weight / L, weight / (weight + 4.0));
    DnaDistanceParameters p;
    p.method = mnd::kProportionOfDifference;
    p.weights.transition = weight;
    DnaDistances distances(p, {"AAAAA", "GAAAA"}, {0, 1, 2, 3, 4});
    DnaPair pair;
    ASSERT_EQ(distances.distance(1, 0, pair), DnaFault::kNone);
    EXPECT_EQ(pair.distance, weight / L);
}

TEST(DnaDistances, InfiniteWeightsDoNotHang) {
    DnaDistanceParameters p;
    p.weights.transition = HUGE_VAL;
    DnaDistances distances(p, {"AAGA", "AGGA"}, {0, 1, 2, 3});
    DnaPair pair;
    distances.distance(1, 0, pair);
    EXPECT_EQ(pair.distance, HUGE_VAL);
}

// Counts that were met before give what they gave then.
TEST_F(DnaDistanceMatrix, RemembersResultsByTheirCounts) {
    make(40, 60, 0.3, "ACGT");
    DnaDistanceParameters p;
    p.method = mnd::kKimuraTwoParameters;
    DnaDistances distances(p, views, sites);
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 40; ++i) {
            for (int j = 0; j < i; ++j) {
                DnaPair remembered, fresh;
                const DnaFault fault = distances.distance(i, j, remembered);
                ASSERT_EQ(fault, distances.compare(i, j, fresh));
                if (fault != DnaFault::kNone || std::isnan(fresh.distance)) continue;
                ASSERT_EQ(remembered.distance, fresh.distance);
                ASSERT_EQ(remembered.distance_var, fresh.distance_var);
            }
        }
    }
}

}  // namespace
