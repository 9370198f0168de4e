// Permutation tests of variance components. A run is 1,000 permutations asked for, 1,023 done.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "between/amova.h"
#include "between/amova_fast_sums.h"
#include "foundation/random.h"
#include "input/dist_mat.h"
#include "input/structure.h"
#include "model/haplotypes.h"
#include "model/population.h"
#include "model/samples.h"
#include "run/settings.h"

namespace {

enum class Distances { kWhole, kFractional, kConventional };

constexpr long kPermutations = 1000;

// Samples of copies that are drawn from all rows alike, in groups of the same number of samples.
struct Data {
    mnd::settings s;
    mnd::Samples samples;
    mnd::Structure structure;
    mnd::DistMat dist;
    std::vector<std::unique_ptr<mnd::HaploDef>> definitions;

    Data(int nb_groups, int nb_samples, int copies, int rows, Distances distances) {
        s.NumPermutationsAMOVA = kPermutations;
        make_matrix(rows, distances);
        structure.NbGroups = nb_groups;
        structure.allocate_groups();
        for (int i = 0; i < nb_samples; ++i)
            add_sample(i, i * nb_groups / nb_samples, copies, rows);
    }

    std::unique_ptr<mnd::Amova> prepare() {
        auto analysis = std::make_unique<mnd::Amova>();
        analysis->sett = &s;
        analysis->structure = &structure;
        analysis->samples = &samples;
        analysis->dist = &dist;
        analysis->initialize();
        return analysis;
    }

private:
    std::mt19937 random_{1};

    int below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }

    void make_matrix(int rows, Distances distances) {
        if (distances == Distances::kConventional) {
            dist.conventional = 1;
        } else {
            dist.initializeMatrixAndArrays(rows);
            const double unit = distances == Distances::kWhole ? 1.0 : 1.0 / 7.0;
            for (int i = 0; i < rows; ++i) {
                for (int j = 0; j < i; ++j)
                    dist(i, j) = (1 + below(20)) * unit;
            }
        }
        dist.MatrixSize = rows;
        for (int row = 0; row < rows; ++row) {
            definitions.push_back(std::make_unique<mnd::HaploDef>());
            definitions.back()->id = row;
        }
    }

    void add_sample(int number, int group, int copies, int rows) {
        auto* sample = new mnd::Population("sample", number, samples);
        sample->sample_size = copies;
        sample->amova.amova_id = number;
        sample->amova.work_list = &sample->gamete_list;
        for (int i = 0; i < copies; ++i) {
            mnd::HaploDef* const definition = definitions[static_cast<std::size_t>(below(rows))].get();
            sample->gamete_list.Add(new mnd::PHaploDef(definition, 1));
        }
        samples.populations.Add(sample);
        structure.groups[static_cast<std::size_t>(group)].Add(sample);
        ++structure.group_sizes[static_cast<std::size_t>(group)];
    }
};

// The test of one group of samples of haplotypes.
void test_haplotypes(benchmark::State& state, Distances distances) {
    Data data(1, static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
              static_cast<int>(state.range(2)), distances);
    for (auto _ : state) {
        state.PauseTiming();
        const auto analysis = data.prepare();
        state.ResumeTiming();
        analysis->AMOVA_1G_P_H();
    }
}

void BM_TestWholeDistances(benchmark::State& state) {
    test_haplotypes(state, Distances::kWhole);
}
void BM_TestFractionalDistances(benchmark::State& state) {
    test_haplotypes(state, Distances::kFractional);
}
void BM_TestConventionalDistances(benchmark::State& state) {
    test_haplotypes(state, Distances::kConventional);
}

// The draws and swaps of the same test alone: what no way of summing can save.
void BM_ShuffleHaplotypes(benchmark::State& state) {
    Data data(1, static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
              static_cast<int>(state.range(2)), Distances::kConventional);
    const auto analysis = data.prepare();
    for (auto _ : state) {
        for (int i = 0; i < 1023; ++i)
            analysis->PHAPWG();
        benchmark::DoNotOptimize(analysis->haplo_index.data());
    }
}

void sizes_of_haplotypes(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"samples", "copies", "haplotypes"})
        ->Args({5, 20, 50})
        ->Args({20, 50, 20})
        ->Args({20, 50, 200})
        ->Args({20, 50, 1000})
        ->Args({20, 200, 200})
        ->Args({100, 50, 500})
        ->Unit(benchmark::kMillisecond);
}
BENCHMARK(BM_ShuffleHaplotypes)->Apply(sizes_of_haplotypes);
BENCHMARK(BM_TestWholeDistances)->Apply(sizes_of_haplotypes);
BENCHMARK(BM_TestFractionalDistances)->Apply(sizes_of_haplotypes);
BENCHMARK(BM_TestConventionalDistances)->Apply(sizes_of_haplotypes);

// All tests of several groups, of haplotypes and of individuals.
void test_groups(benchmark::State& state, int (mnd::Amova::*design)(), int individual_level) {
    const int nb_samples = static_cast<int>(state.range(0));
    Data data(nb_samples / 5, nb_samples, 50, 200, Distances::kWhole);
    data.s.IncludeIndividualLevel = individual_level;
    for (auto _ : state) {
        state.PauseTiming();
        const auto analysis = data.prepare();
        state.ResumeTiming();
        ((*analysis).*design)();
    }
    state.SetComplexityN(nb_samples);
}

void BM_TestGroupsOfHaplotypes(benchmark::State& state) {
    test_groups(state, &mnd::Amova::AMOVA_G_P_H, 0);
}
void BM_TestGroupsOfIndividuals(benchmark::State& state) {
    test_groups(state, &mnd::Amova::AMOVA_G_P_I, 1);
}
BENCHMARK(BM_TestGroupsOfHaplotypes)
    ->ArgName("samples")
    ->RangeMultiplier(2)
    ->Range(10, 80)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TestGroupsOfIndividuals)
    ->ArgName("samples")
    ->RangeMultiplier(2)
    ->Range(10, 80)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);

}  // namespace
