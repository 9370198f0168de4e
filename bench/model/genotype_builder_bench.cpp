#include "model/genotype_builder.h"

#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

namespace {

// An individual heterozygous at every locus.
mnd::TPhenotype heterozygote(mnd::TAlleleDB& alleles, std::size_t loci) {
    mnd::TPhenotype phenotype("id", 1.0);
    phenotype.text[0] = std::string(loci, 'A').c_str();
    phenotype.text[1] = std::string(loci, 'C').c_str();
    for (int k = 0; k < 2; ++k)
        phenotype.read_pseudo_hapl(k, alleles, '\0');
    return phenotype;
}

// All resolutions of one individual that is heterozygous at every locus.
void BM_BuildGenotypes(benchmark::State& state) {
    mnd::TAlleleDB alleles;
    mnd::TPhenotype phenotype = heterozygote(alleles, static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        mnd::TPopHaploDB haplotypes;
        phenotype.kill_gen_list();
        phenotype.build_genotypes(haplotypes, &alleles, 0, false);
        state.SetItemsProcessed(state.items_processed() + phenotype.nb_genotypes);
    }
}
BENCHMARK(BM_BuildGenotypes)->ArgName("loci")->DenseRange(4, 20, 4)->Unit(benchmark::kMillisecond);

// Random individuals at 8 loci of two alleles, which share their haplotypes.
void BM_BuildAllGenotypes(benchmark::State& state) {
    constexpr int kLoci = 8;
    std::mt19937 random(3);
    mnd::TAlleleDB alleles;
    mnd::TPhenDB phenotypes;
    for (long i = 0; i < state.range(0); ++i) {
        auto* phenotype = new mnd::TPhenotype("id", 1.0);
        for (int k = 0; k < 2; ++k) {
            std::string letters;
            for (int l = 0; l < kLoci; ++l)
                letters += random() % 2 == 0 ? 'A' : 'C';
            phenotype->text[static_cast<std::size_t>(k)] = letters.c_str();
            phenotype->read_pseudo_hapl(k, alleles, '\0');
        }
        phenotypes.Add(phenotype);
    }
    for (auto _ : state) {
        mnd::TPopHaploDB haplotypes;
        phenotypes.build_all_genotypes(haplotypes, &alleles, 0);
        benchmark::DoNotOptimize(haplotypes.count);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_BuildAllGenotypes)
    ->ArgName("individuals")
    ->RangeMultiplier(10)
    ->Range(20, 20000)
    ->Unit(benchmark::kMillisecond);

// Recessive data: one heterozygous locus, and at the others the dominant allele twice.
void BM_BuildRecessiveGenotypes(benchmark::State& state) {
    const auto loci = static_cast<std::size_t>(state.range(0));
    mnd::TAlleleDB alleles;
    for (int l = 0; l < static_cast<int>(loci); ++l)
        alleles.InsertAllPos(l, mnd::my_string("0"), 0.0);
    mnd::TPhenotype phenotype("id", 1.0);
    phenotype.text[0] = std::string(loci, 'A').c_str();
    phenotype.text[1] = (std::string(loci - 1, 'A') + 'C').c_str();
    for (int k = 0; k < 2; ++k)
        phenotype.read_pseudo_hapl(k, alleles, '\0');
    for (auto _ : state) {
        mnd::TPopHaploDB haplotypes;
        phenotype.build_genotypes(haplotypes, &alleles, 1, false);
        benchmark::DoNotOptimize(haplotypes.count);
    }
}
BENCHMARK(BM_BuildRecessiveGenotypes)->ArgName("loci")->DenseRange(4, 16, 4)->Unit(benchmark::kMillisecond);

// A window of five more loci for an individual heterozygous everywhere, of whose parts some
// hundred stand among `before` haplotypes on the loci estimated before.
void BM_BuildCompatibleGenotypes(benchmark::State& state, long before) {
    const long loci = state.range(0);
    std::mt19937 random(5);
    mnd::TAlleleDB alleles;
    mnd::TPhenotype phenotype = heterozygote(alleles, static_cast<std::size_t>(loci));
    std::vector<int> mask(static_cast<std::size_t>(loci), 1);
    for (long l = loci - 5; l < loci; ++l)
        mask[static_cast<std::size_t>(l)] = 0;
    mnd::TPopHaploDB store;
    for (long i = 0; i < before / 2; ++i) {
        mnd::TPopHaplotype pair[2] = {*phenotype.pseudo_hapl[0], *phenotype.pseudo_hapl[1]};
        for (long l = 0; l < loci; ++l) {
            if (random() % 2 == 0) std::swap(pair[0].alleles.data[l], pair[1].alleles.data[l]);
        }
        for (mnd::TPopHaplotype const& whole : pair) {
            mnd::TPopHaplotype part;
            part.build_sub_haplotype(mask.data(), whole);
            // Of all but fifty the complement is missing: they are not compatible.
            if (i < 50 || &whole == pair) store.insert(part, 0.01);
        }
    }
    for (auto _ : state) {
        mnd::TPopHaploDB haplotypes;
        phenotype.build_compatible_genotypes(store, mask.data(), haplotypes, &alleles, 0, 0.0);
        benchmark::DoNotOptimize(haplotypes.count);
    }
    state.counters["genotypes"] = static_cast<double>(phenotype.nb_genotypes);
}
BENCHMARK_CAPTURE(BM_BuildCompatibleGenotypes, before : 1000, 1000)
    ->ArgName("loci")
    ->DenseRange(15, 60, 15)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_BuildCompatibleGenotypes, before : 100000, 100000)
    ->ArgName("loci")
    ->DenseRange(15, 60, 15)
    ->Unit(benchmark::kMillisecond);

}  // namespace
