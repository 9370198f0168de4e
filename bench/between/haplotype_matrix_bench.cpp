#include "between/haplotype_matrix.h"

#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "foundation/data_type.h"
#include "input/dist_mat.h"
#include "model/allele_db.h"
#include "model/haplotypes.h"
#include "run/settings.h"

namespace {

using namespace mnd;

// Sequences of 500 sites that differ at a tenth of them.
void fill(Haplo_DB& db, int haplotypes) {
    constexpr int kSites = 500;
    std::mt19937 generator(1);
    std::uniform_int_distribution<int> base(0, 3);
    for (int h = 0; h < haplotypes; ++h) {
        std::string text(kSites, 'A');
        for (int site = 0; site < kSites; site += 10)
            text[static_cast<std::size_t>(site)] = "ACGT"[base(generator)];
        auto* definition = new HaploDef(my_string(("h" + std::to_string(h)).c_str()));
        definition->content = text.c_str();
        definition->count = 1;
        db.append(definition);
    }
}

void BM_ComputeHaplotypeMatrix(benchmark::State& state) {
    Haplo_DB db;
    fill(db, static_cast<int>(state.range(0)));
    TAlleleDB alleles;
    settings s;
    const ProfileSettings profile;
    for (auto _ : state) {
        DistMat matrix;
        UsableLoci usable;
        compute_haplotype_matrix(matrix, db, alleles, profile, s, {DNA, 0, 0.0}, usable);
        benchmark::DoNotOptimize(matrix.data);
    }
}
BENCHMARK(BM_ComputeHaplotypeMatrix)
    ->ArgName("haplotypes")
    ->RangeMultiplier(4)
    ->Range(64, 1024)
    ->Unit(benchmark::kMillisecond);

void BM_ClassesOfIdenticalHaplotypes(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    Haplo_DB db;
    fill(db, n);
    DistMat matrix;
    matrix.initializeMatrixAndArrays(n);
    for (int i = 0; i < n; ++i) {
        db.list[i]->id = i;
        for (int j = 0; j < i; ++j)
            matrix(i, j) = (i + j) % 50;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(classes_of_identical_haplotypes(matrix, db).data());
}
BENCHMARK(BM_ClassesOfIdenticalHaplotypes)
    ->ArgName("haplotypes")
    ->RangeMultiplier(4)
    ->Range(64, 4096)
    ->Unit(benchmark::kMillisecond);

}  // namespace
