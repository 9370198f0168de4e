#include "model/pop_haplotypes.h"

#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "foundation/random.h"

namespace {

constexpr int kLoci = 20;

// Distinct haplotypes of 20 loci: the binary digits of their number.
std::vector<mnd::TPopHaplotype> distinct_haplotypes(mnd::TAlleleDB& alleles, long n) {
    std::vector<mnd::TPopHaplotype> all;
    for (long i = 0; i < n; ++i) {
        all.emplace_back();
        for (int l = 0; l < kLoci; ++l) {
            all.back().alleles.Add(alleles.insert_allele(l, (i >> l & 1) != 0 ? "A" : "B", 1.0));
        }
    }
    return all;
}

void BM_PopHaploDBInsert(benchmark::State& state) {
    mnd::TAlleleDB alleles;
    const auto haplotypes = distinct_haplotypes(alleles, state.range(0));
    for (auto _ : state) {
        mnd::TPopHaploDB db;
        for (int pass = 0; pass < 2; ++pass) {
            for (const auto& haplotype : haplotypes)
                db.insert(haplotype, 1.0);
        }
        benchmark::DoNotOptimize(db.count);
    }
    state.SetItemsProcessed(state.iterations() * 2 * state.range(0));
}
BENCHMARK(BM_PopHaploDBInsert)
    ->ArgName("haplotypes")
    ->RangeMultiplier(10)
    ->Range(100, 100000)
    ->Unit(benchmark::kMillisecond);

// One draw from the estimated frequencies.
void BM_HaplotypeSampler(benchmark::State& state) {
    mnd::TAlleleDB alleles;
    mnd::TPopHaploDB db;
    for (const auto& haplotype : distinct_haplotypes(alleles, state.range(0))) {
        db.insert(haplotype, 1.0 / static_cast<double>(state.range(0)));
    }
    const mnd::HaplotypeSampler sampler(db);
    for (auto _ : state)
        benchmark::DoNotOptimize(sampler.select(mnd::ran3()));
}
BENCHMARK(BM_HaplotypeSampler)->ArgName("haplotypes")->RangeMultiplier(10)->Range(100, 100000);

void BM_UpdateLkEquil(benchmark::State& state) {
    mnd::TAlleleDB alleles;
    mnd::TPopHaploDB db;
    for (const auto& haplotype : distinct_haplotypes(alleles, state.range(0)))
        db.insert(haplotype, 0.001);
    for (auto _ : state)
        db.update_lk_equil();
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_UpdateLkEquil)
    ->ArgName("haplotypes")
    ->RangeMultiplier(10)
    ->Range(100, 10000)
    ->Unit(benchmark::kMillisecond);

}  // namespace
