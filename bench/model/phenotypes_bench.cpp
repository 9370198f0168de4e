#include "model/phenotypes.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

// Individuals with random microsatellite sizes at each locus.
void fill(mnd::TPhenDB& db, long individuals, int loci) {
    std::mt19937 random(4);
    for (long i = 0; i < individuals; ++i) {
        auto phenotype = std::make_unique<mnd::TPhenotype>("id", 1.0);
        for (mnd::my_string& text : phenotype->text) {
            std::string sizes;
            for (int l = 0; l < loci; ++l)
                sizes += " " + std::to_string(100 + random() % 12);
            text = sizes.c_str();
        }
        db.Add(phenotype.release());
    }
    db.convert_freq_to_real();
}

// Both texts of genotypic individuals of 1000 loci become pseudo-haplotypes.
void BM_ReadPseudoHaplotypes(benchmark::State& state) {
    mnd::TPhenDB db;
    fill(db, state.range(0), 1000);
    for (auto _ : state) {
        mnd::TAlleleDB alleles;
        for (mnd::TPhenotype* phenotype : db) {
            phenotype->read_pseudo_hapl(0, alleles, ' ');
            phenotype->read_pseudo_hapl(1, alleles, ' ');
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * 2000);
}
BENCHMARK(BM_ReadPseudoHaplotypes)
    ->ArgName("individuals")
    ->RangeMultiplier(10)
    ->Range(50, 5000)
    ->Unit(benchmark::kMillisecond);

void BM_CheckPhenoRedundancy(benchmark::State& state) {
    mnd::TAlleleDB alleles;
    mnd::TPhenDB db;
    fill(db, state.range(0), 10);
    for (mnd::TPhenotype* phenotype : db) {
        for (int k = 0; k < 2; ++k)
            phenotype->read_pseudo_hapl(k, alleles, ' ');
    }
    for (auto _ : state) {
        state.PauseTiming();
        mnd::TPhenDB work(db);
        state.ResumeTiming();
        work.check_pheno_redundancy();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_CheckPhenoRedundancy)
    ->ArgName("individuals")
    ->RangeMultiplier(10)
    ->Range(50, 50000)
    ->Unit(benchmark::kMillisecond);

}  // namespace
