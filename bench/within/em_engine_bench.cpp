// Cost of estimating haplotype frequencies: listing the resolutions, starts, bootstrap.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "foundation/random.h"
#include "model/popul_standard.h"
#include "run/process.h"
#include "run/settings.h"

namespace {

constexpr int kMaxIterations = 1000;
constexpr double kEpsilon = 1e-7;

// Individuals of unknown phase with random alleles; the settings make one start, one replicate.
struct Genotypes {
    mnd::TAlleleDB alleles;
    mnd::PopulStandard sample;
    mnd::settings s;

    Genotypes(int individuals, int loci, int nb_alleles) {
        mnd::silentMendrake = true;
        long seed = -4711;
        mnd::ran3(&seed);
        sample.allele_db = &alleles;
        for (int i = 0; i < individuals; ++i) {
            auto phenotype = std::make_unique<mnd::TPhenotype>(mnd::my_string("id"), 1.0);
            for (auto& string : phenotype->pseudo_hapl) {
                string = std::make_unique<mnd::TPopHaplotype>('\0');
                for (int locus = 0; locus < loci; ++locus) {
                    const int allele = static_cast<int>(mnd::ran3() * nb_alleles);
                    string->alleles.Add(alleles.insert_allele(locus, std::to_string(100 + allele), 1.0));
                }
            }
            sample.phen_db.Add(phenotype.release());
        }
        sample.sample_size = 2.0 * individuals;
        s.NumInitCondBootstrapEM = 5;
    }

    double estimate(mnd::TPopHaploDB& haplo, int starts, bool inbreeding) {
        int num_lhoods = 0;
        double F = 0.0;
        return sample.calc_ML_hapl_freq_hill95_LD(sample.phen_db, haplo, s, num_lhoods, inbreeding ? 1 : 0, F,
                                                  nullptr, nullptr, 0, starts, kMaxIterations, kEpsilon);
    }
};

void run_starts(benchmark::State& state, Genotypes& data, int starts, bool inbreeding) {
    for (auto _ : state) {
        mnd::TPopHaploDB haplo;
        benchmark::DoNotOptimize(data.estimate(haplo, starts, inbreeding));
        state.counters["haplotypes"] = static_cast<double>(haplo.count);
    }
}

void BM_em_50_starts_of_200_individuals(benchmark::State& state) {
    Genotypes data(200, static_cast<int>(state.range(0)), 2);
    run_starts(state, data, 50, false);
}
BENCHMARK(BM_em_50_starts_of_200_individuals)
    ->ArgName("biallelic_loci")
    ->DenseRange(2, 12, 2)
    ->Unit(benchmark::kMillisecond);

void BM_em_50_starts_at_8_loci(benchmark::State& state) {
    Genotypes data(static_cast<int>(state.range(0)), 8, 2);
    run_starts(state, data, 50, false);
}
BENCHMARK(BM_em_50_starts_at_8_loci)
    ->ArgName("individuals")
    ->RangeMultiplier(4)
    ->Range(50, 3200)
    ->Unit(benchmark::kMillisecond);

void BM_em_50_starts_with_inbreeding(benchmark::State& state) {
    Genotypes data(200, static_cast<int>(state.range(0)), 2);
    run_starts(state, data, 50, true);
}
BENCHMARK(BM_em_50_starts_with_inbreeding)
    ->ArgName("biallelic_loci")
    ->DenseRange(2, 8, 2)
    ->Unit(benchmark::kMillisecond);

// Few alleles are shared at variable loci: most haplotypes are seen once.
void BM_em_50_starts_of_10_alleles(benchmark::State& state) {
    Genotypes data(200, static_cast<int>(state.range(0)), 10);
    run_starts(state, data, 50, false);
}
BENCHMARK(BM_em_50_starts_of_10_alleles)->ArgName("loci")->DenseRange(2, 8, 2)->Unit(benchmark::kMillisecond);

// Listing the resolutions, without a start.
void BM_em_setup(benchmark::State& state) {
    Genotypes data(200, static_cast<int>(state.range(0)), 2);
    run_starts(state, data, 0, false);
}
BENCHMARK(BM_em_setup)->ArgName("biallelic_loci")->DenseRange(2, 14, 4)->Unit(benchmark::kMillisecond);

// One individual that is heterozygous at all loci.
void BM_em_setup_of_one_heterozygote(benchmark::State& state) {
    const int loci = static_cast<int>(state.range(0));
    Genotypes data(0, loci, 2);
    mnd::TPopHaplotype strings[2] = {mnd::TPopHaplotype('\0'), mnd::TPopHaplotype('\0')};
    for (int locus = 0; locus < loci; ++locus) {
        strings[0].alleles.Add(data.alleles.insert_allele(locus, "A", 1.0));
        strings[1].alleles.Add(data.alleles.insert_allele(locus, "B", 1.0));
    }
    data.sample.phen_db.Add(std::make_unique<mnd::TPhenotype>(&strings[0], &strings[1], 1).release());
    data.sample.sample_size = 2.0;
    run_starts(state, data, 1, false);
}
BENCHMARK(BM_em_setup_of_one_heterozygote)
    ->ArgName("heterozygous_loci")
    ->DenseRange(8, 20, 4)
    ->Unit(benchmark::kMillisecond);

// Ten replicates with five starts each.
void BM_em_bootstrap_10_replicates(benchmark::State& state) {
    Genotypes data(200, static_cast<int>(state.range(0)), 2);
    mnd::TPopHaploDB haplo;
    data.estimate(haplo, 10, false);
    for (auto _ : state) {
        data.sample.calc_sd_hapl_freq(data.sample.phen_db, haplo, data.s, 10, kMaxIterations, kEpsilon);
    }
}
BENCHMARK(BM_em_bootstrap_10_replicates)
    ->ArgName("biallelic_loci")
    ->DenseRange(2, 10, 4)
    ->Unit(benchmark::kMillisecond);

}  // namespace
