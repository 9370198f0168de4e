// All pairs of DNA sequences: the engine against the comparison of one site after another.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "model/nucleotides.h"
#include "within/dna_distance_matrix.h"

namespace {

using mnd::DnaDistanceParameters;

struct Sequences {
    std::vector<std::string> texts;
    std::vector<std::string_view> views;
    std::vector<int> sites;
};

// Sequences that differ from a common one at a share of their sites; a few sites in a
// thousand are gaps, missing, or ambiguous.
const Sequences& sequences(int n, int length, double divergence) {
    static Sequences made;
    static int made_n = 0, made_length = 0;
    static double made_divergence = -1.0;
    if (made_n == n && made_length == length && made_divergence == divergence) return made;
    made = {};
    made_n = n;
    made_length = length;
    made_divergence = divergence;
    std::mt19937 random(1);
    const auto share = [&] { return random() / 4294967296.0; };
    const auto base = [&] { return "ACGT"[random() % 4]; };
    std::string ancestor;
    for (int site = 0; site < length; ++site)
        ancestor += base();
    for (int i = 0; i < n; ++i) {
        made.texts.push_back(ancestor);
        for (char& c : made.texts.back()) {
            if (share() < divergence) c = base();
            if (share() < 0.003) c = "-?RYN"[random() % 5];
        }
    }
    for (const std::string& text : made.texts)
        made.views.emplace_back(text);
    for (int site = 0; site < length; ++site)
        made.sites.push_back(site);
    return made;
}

DnaDistanceParameters parameters(int method, double gamma_a) {
    DnaDistanceParameters p;
    p.method = method;
    p.gamma_a = gamma_a;
    p.composition = {{0.25, 0.25, 0.25, 0.25}, 0.5};
    return p;
}

// Kimura's and the other counts with one class lookup per site, as a loop over characters.
mnd::SiteCounts plain_counts(int method, char m, const std::vector<int>& sites, std::string_view s1,
                             std::string_view s2) {
    mnd::SiteCounts counts{};
    const bool four_bases = method == mnd::kTajimaNei || method == mnd::kTamuraNei;
    for (const int site : sites) {
        const char a = s1[static_cast<std::size_t>(site)];
        const char b = s2[static_cast<std::size_t>(site)];
        if (a == b) {
            if (a != m && a != '-') ++counts[7];
            continue;
        }
        const int difference = mnd::compare_nucleotides(a, b);
        if (four_bases) {
            const int i = mnd::base_index(a);
            const int j = mnd::base_index(b);
            if (i < 0 || j < 0) continue;
            ++counts[7];
            ++counts[static_cast<std::size_t>(i > j ? i * (i - 1) / 2 + j : j * (j - 1) / 2 + i)];
        } else {
            ++counts[static_cast<std::size_t>(difference)];
            if (difference != 0 || (a != m && b != '-') || (b != m && a != '-')) ++counts[7];
        }
    }
    return counts;
}

// Puts the plain counts where the formulae look for them.
mnd::SiteCounts as_counters(int method, const mnd::SiteCounts& plain) {
    mnd::SiteCounts counts{};
    switch (method) {
        case mnd::kJukesCantor:
            counts[0] = plain[1] + plain[2] + plain[4];
            counts[1] = plain[7];
            break;
        case mnd::kKimuraTwoParameters:
        case mnd::kTamura:
            counts[0] = plain[1];
            counts[1] = plain[2];
            counts[2] = plain[7];
            break;
        case mnd::kTajimaNei:
            counts = plain;
            counts[6] = plain[7];
            break;
        default:
            counts[0] = plain[0];
            counts[1] = plain[5];
            counts[2] = plain[1] + plain[2] + plain[3] + plain[4];
            counts[3] = plain[7];
            break;
    }
    return counts;
}

mnd::WeightedSums plain_sums(char m, const std::vector<int>& sites, std::string_view s1,
                             std::string_view s2) {
    mnd::WeightedSums sums;
    for (const int site : sites) {
        const char a = s1[static_cast<std::size_t>(site)];
        const char b = s2[static_cast<std::size_t>(site)];
        if (a == b) {
            if (a != m) sums.compared += 1.0;
            continue;
        }
        sums.compared += 1.0;
        switch (mnd::compare_nucleotides(a, b)) {
            case mnd::kTransition:
                sums.transitions += 1.0;
                sums.differences += 1.0;
                break;
            case mnd::kTransversion:
                sums.transversions += 1.0;
                sums.differences += 1.0;
                break;
            case mnd::kDeletion:
                sums.deletions += 1.0;
                sums.differences += 1.0;
                break;
            case mnd::kUndeterminedSubstitution:
                sums.transitions += 1.0;
                sums.differences += 1.0;
                break;
            default:
                break;
        }
    }
    return sums;
}

void plain_pair(const DnaDistanceParameters& p, const Sequences& data, std::size_t i, std::size_t j,
                mnd::DnaPair& pair) {
    if (mnd::is_weighted_method(p.method)) {
        mnd::distance_from_sums(p.method, plain_sums('?', data.sites, data.views[i], data.views[j]), pair);
        return;
    }
    const auto counts = plain_counts(p.method, '?', data.sites, data.views[i], data.views[j]);
    mnd::distance_from_counts(p.method, as_counters(p.method, counts), p.weights, p.composition, p.gamma_a,
                              pair);
}

// Arguments: number of sequences, sites, differing sites per hundred, method, 100 times a.
void BM_DnaDistancesPlain(benchmark::State& state) {
    const Sequences& data = sequences(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                                      static_cast<double>(state.range(2)) / 100.0);
    const auto p = parameters(static_cast<int>(state.range(3)), static_cast<double>(state.range(4)) / 100.0);
    mnd::DnaPair pair;
    double sum = 0.0;
    for (auto _ : state) {
        for (std::size_t i = 1; i < data.views.size(); ++i) {
            for (std::size_t j = 0; j < i; ++j) {
                plain_pair(p, data, i, j, pair);
                sum += pair.distance;
            }
        }
        benchmark::DoNotOptimize(sum);
    }
}

// The same with the encoding of the sequences.
void BM_DnaDistances(benchmark::State& state) {
    const Sequences& data = sequences(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                                      static_cast<double>(state.range(2)) / 100.0);
    const auto p = parameters(static_cast<int>(state.range(3)), static_cast<double>(state.range(4)) / 100.0);
    mnd::DnaPair pair;
    double sum = 0.0;
    for (auto _ : state) {
        mnd::DnaDistances distances(p, data.views, data.sites);
        for (int i = 1; i < static_cast<int>(data.views.size()); ++i) {
            for (int j = 0; j < i; ++j) {
                distances.distance(i, j, pair);
                sum += pair.distance;
            }
        }
        benchmark::DoNotOptimize(sum);
    }
}

// Weights whose sums round are added up in the order of the sites.
void BM_DnaDistancesRoundingWeights(benchmark::State& state) {
    const Sequences& data = sequences(static_cast<int>(state.range(0)), 1000, 0.1);
    auto p = parameters(mnd::kPairwiseDifference, 0.0);
    p.weights = {0.3, 0.7, 0.1};
    mnd::DnaPair pair;
    double sum = 0.0;
    for (auto _ : state) {
        mnd::DnaDistances distances(p, data.views, data.sites);
        for (int i = 1; i < static_cast<int>(data.views.size()); ++i) {
            for (int j = 0; j < i; ++j) {
                distances.distance(i, j, pair);
                sum += pair.distance;
            }
        }
        benchmark::DoNotOptimize(sum);
    }
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"haplotypes", "sites", "divergence", "method", "gamma"})->Unit(benchmark::kMillisecond);
    for (int method = 0; method < 7; ++method)
        bench->Args({500, 1000, 10, method, 0});
    for (const int method : {1, 2, 6})
        bench->Args({500, 1000, 10, method, 50});
    for (const int divergence : {1, 50}) {
        for (int method = 0; method < 7; ++method)
            bench->Args({500, 1000, divergence, method, 0});
    }
    bench->Args({500, 1000, 1, 6, 50});
    for (const int n : {125, 250, 1000})
        bench->Args({n, 1000, 10, 2, 0});
    for (const int length : {250, 4000})
        bench->Args({250, length, 10, 2, 0});
}

BENCHMARK(BM_DnaDistancesPlain)->Apply(sizes);
BENCHMARK(BM_DnaDistances)->Apply(sizes);
BENCHMARK(BM_DnaDistancesRoundingWeights)
    ->ArgName("haplotypes")
    ->Arg(125)
    ->Arg(250)
    ->Arg(500)
    ->Unit(benchmark::kMillisecond);

}  // namespace
