// Cost of the indices of diversity: sums over distances, counts of alleles, theta(k).
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "model/popul_standard.h"
#include "run/settings.h"
#include "within/allele_counts.h"
#include "within/diversity_indices.h"
#include "within/locus_diversity.h"

namespace {

using mnd::PopulStandard;
using mnd::TAllele;
using mnd::TAlleleDB;

// A number below n, different from call to call.
class Numbers {
public:
    int below(int n) {
        state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<int>((state_ >> 33U) % static_cast<unsigned>(n));
    }

private:
    unsigned long long state_ = 1;
};

// Individuals with their alleles, `kAlleles` at each locus.
struct Genotypes {
    TAlleleDB alleles;
    PopulStandard sample;

    Genotypes(int individuals, int loci, int nb_alleles) {
        Numbers numbers;
        for (int i = 0; i < individuals; ++i) {
            auto phenotype = std::make_unique<mnd::TPhenotype>();
            phenotype->freq = 1.0;
            for (auto& string : phenotype->pseudo_hapl) {
                string = std::make_unique<mnd::TPopHaplotype>();
                for (int locus = 0; locus < loci; ++locus)
                    string->alleles.Add(
                        alleles.insert_allele(locus, std::to_string(100 + numbers.below(nb_alleles)), 1.0));
            }
            sample.phen_db.Add(phenotype.release());
        }
    }
};

constexpr int kIndividuals = 5000;

void BM_count_alleles(benchmark::State& state) {
    const Genotypes data(kIndividuals, static_cast<int>(state.range(0)), 12);
    for (auto _ : state)
        benchmark::DoNotOptimize(mnd::count_alleles(data.sample).count);
}
BENCHMARK(BM_count_alleles)
    ->ArgName("loci_of_5000")
    ->Arg(10)
    ->Arg(100)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond);

// Above 16 alleles at a locus a tally is hashed.
void BM_count_many_alleles(benchmark::State& state) {
    const Genotypes data(kIndividuals, 20, static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(mnd::count_alleles(data.sample).count);
}
BENCHMARK(BM_count_many_alleles)
    ->ArgName("alleles")
    ->Arg(8)
    ->Arg(16)
    ->Arg(64)
    ->Arg(1024)
    ->Unit(benchmark::kMillisecond);

void BM_locus_heterozygosity(benchmark::State& state) {
    const int loci = static_cast<int>(state.range(0));
    const Genotypes data(kIndividuals, loci, 12);
    for (auto _ : state)
        benchmark::DoNotOptimize(mnd::locus_heterozygosity(data.sample.phen_db, 0, loci, '?').data());
}
BENCHMARK(BM_locus_heterozygosity)
    ->ArgName("loci_of_5000")
    ->Arg(10)
    ->Arg(100)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond);

void BM_compute_molecular_diversity(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    mnd::settings s;
    std::vector<mnd::HaploDef> definitions(static_cast<std::size_t>(n));
    PopulStandard sample;
    Numbers numbers;
    for (mnd::HaploDef& definition : definitions) {
        definition.content = "x";
        sample.hapl_list.Add(new mnd::PHaploDef(&definition, 1 + numbers.below(5)));
        sample.sample_size += sample.hapl_list.data[sample.hapl_list.count - 1]->freq;
    }
    sample.nb_usable_loci = 100;
    sample.dist_mat = std::make_unique<mnd::RectMat>(n, n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < i; ++j)
            sample.dist_mat->data[i][j] = numbers.below(100);
    for (auto _ : state) {
        sample.compute_molecular_diversity(s);
        benchmark::DoNotOptimize(sample.mean_pairwise_diff);
    }
    state.SetComplexityN(n);
}
BENCHMARK(BM_compute_molecular_diversity)
    ->ArgName("haplotypes")
    ->RangeMultiplier(4)
    ->Range(64, 4096)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity();

void BM_theta_k(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const int k = n / 5;
    mnd::BnumMat B(1, 1);
    B.re_allocate_matrix(n, k);
    for (auto _ : state)
        benchmark::DoNotOptimize(mnd::theta_from_number_of_alleles(k, n, B).upper);
}
BENCHMARK(BM_theta_k)
    ->ArgName("gene_copies")
    ->Arg(50)
    ->Arg(500)
    ->Arg(1500)
    ->Arg(4999)
    ->Unit(benchmark::kMillisecond);

void BM_theta_from_segregating_sites(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(mnd::theta_from_segregating_sites(n, 100).sd);
}
BENCHMARK(BM_theta_from_segregating_sites)->ArgName("gene_copies")->Arg(100)->Arg(10000)->Arg(2000000000);

}  // namespace
