#include "between/genotype_assignment.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <string>

#include "foundation/data_type.h"
#include "foundation/random.h"
#include "model/allele_db.h"
#include "model/popul_microsat.h"
#include "run/process.h"
#include "run/settings.h"

namespace {

constexpr unsigned kAlleles = 8;  // at each locus

mnd::TPopHaplotype random_string(mnd::TAlleleDB& alleles, int nb_loci, std::mt19937& random) {
    mnd::TPopHaplotype string;
    for (int locus = 0; locus < nb_loci; ++locus) {
        const std::string name = std::to_string(100 + 2 * (random() % kAlleles));
        string.alleles.Add(alleles.insert_allele(locus, name, 1.0));
    }
    return string;
}

// Samples of individuals with random alleles, of known or unknown phase.
struct Colonies {
    mnd::TAlleleDB alleles;
    mnd::Samples samples;
    mnd::settings s;

    Colonies(int nb_samples, int nb_individuals, int nb_loci, int phase) {
        mnd::silentMendrake = true;
        samples.GenotypicData = 1;
        samples.GameticPhase = phase;
        samples.DataType = mnd::MICROSAT;
        s.InitialConditionsEM = 50;
        std::mt19937 random(1);
        for (int i = 0; i < nb_samples; ++i) {
            auto sample = std::make_unique<mnd::PopulMicrosat>(mnd::my_string("S"), i, samples);
            sample->allele_db = &alleles;
            sample->sample_size = 2.0 * nb_individuals;
            for (int individual = 0; individual < nb_individuals; ++individual) {
                const mnd::TPopHaplotype a = random_string(alleles, nb_loci, random);
                const mnd::TPopHaplotype b = random_string(alleles, nb_loci, random);
                sample->phen_db.Add(new mnd::TPhenotype(&a, &b, individual));
            }
            samples.populations.Add(sample.release());
        }
    }
};

// One estimation of each locus of each sample.
void BM_AssignmentFrequencies(benchmark::State& state) {
    const int nb_samples = static_cast<int>(state.range(0));
    const int nb_loci = static_cast<int>(state.range(2));
    Colonies colonies(nb_samples, static_cast<int>(state.range(1)), nb_loci, 0);
    mnd::IndLikelihood analysis(colonies.samples, colonies.s, 1e-10);
    for (auto _ : state)
        benchmark::DoNotOptimize(analysis.calc_alleles_freqs());
    state.SetItemsProcessed(state.iterations() * nb_samples * nb_loci);
}
BENCHMARK(BM_AssignmentFrequencies)
    ->ArgNames({"samples", "individuals", "loci"})
    ->Args({4, 25, 10})
    ->Args({16, 25, 10})
    ->Args({16, 100, 10})
    ->Args({16, 100, 100})
    ->Unit(benchmark::kMillisecond);

// The likelihoods of all individuals in all samples.
void BM_AssignmentLikelihoods(benchmark::State& state) {
    const int nb_samples = static_cast<int>(state.range(0));
    const int nb_individuals = static_cast<int>(state.range(1));
    const int nb_loci = static_cast<int>(state.range(2));
    Colonies colonies(nb_samples, nb_individuals, nb_loci, static_cast<int>(state.range(3)));
    colonies.s.InitialConditionsEM = 1;
    mnd::IndLikelihood analysis(colonies.samples, colonies.s, 1e-10);
    analysis.calc_alleles_freqs();
    for (auto _ : state) {
        for (const mnd::Population* sample : colonies.samples.populations) {
            for (const mnd::TPhenotype* genotype : sample->phen_db)
                benchmark::DoNotOptimize(analysis.log_likelihoods(*genotype).data());
        }
    }
    state.SetItemsProcessed(state.iterations() * nb_samples * nb_samples * nb_individuals * nb_loci);
}
BENCHMARK(BM_AssignmentLikelihoods)
    ->ArgNames({"samples", "individuals", "loci", "phase"})
    ->Args({4, 25, 10, 0})
    ->Args({16, 25, 10, 0})
    ->Args({16, 100, 10, 0})
    ->Args({16, 100, 100, 0})
    ->Args({16, 100, 1000, 0})
    ->Args({16, 100, 10, 1})
    ->Args({16, 100, 100, 1})
    ->Unit(benchmark::kMillisecond);

}  // namespace
