// Sums of squared distances within and between samples, by haplotypes present in a sample.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "input/dist_mat.h"
#include "model/population.h"

namespace {

// Two samples of as many copies as the matrix has rows, of which a third does not occur.
struct SamplesOverRows {
    mnd::DistMat dist;
    mnd::Population a, b;

    SamplesOverRows(int rows, bool conventional) {
        std::mt19937 random(3);
        if (conventional) {
            dist.conventional = 1;
        } else {
            dist.initializeMatrixAndArrays(rows);
            for (int i = 0; i < rows; ++i) {
                for (int j = 0; j < i; ++j)
                    dist(i, j) = static_cast<double>(random() % 40);
            }
        }
        dist.MatrixSize = rows;
        for (mnd::Population* sample : {&a, &b}) {
            std::vector<int> copies;
            for (int k = 0; k < rows; ++k)
                copies.push_back(static_cast<int>(random() % static_cast<unsigned>(rows)));
            sample->sample_size = rows;
            sample->CreatePermutationVectors(rows);
            sample->SetUpVectorsAfterPermutation(copies.data());
        }
    }
};

void BM_ComputeSSDWP(benchmark::State& state) {
    SamplesOverRows data(static_cast<int>(state.range(0)), state.range(1) != 0);
    for (auto _ : state) {
        data.a.ComputeSSDWP(data.dist);
        benchmark::DoNotOptimize(data.a.amova.SSD);
    }
}
BENCHMARK(BM_ComputeSSDWP)->ArgNames({"rows", "conventional"})->ArgsProduct({{20, 100, 500, 2500}, {0, 1}});

void BM_ComputeSSDAP(benchmark::State& state) {
    SamplesOverRows data(static_cast<int>(state.range(0)), state.range(1) != 0);
    for (auto _ : state)
        benchmark::DoNotOptimize(data.a.ComputeSSDAP(&data.b, data.dist));
}
BENCHMARK(BM_ComputeSSDAP)->ArgNames({"rows", "conventional"})->ArgsProduct({{20, 100, 500, 2500}, {0, 1}});

}  // namespace
