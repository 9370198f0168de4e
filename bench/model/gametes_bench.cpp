// The making of gametes, and the comparison of sequences site by site.
#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "model/popul_dna.h"
#include "model/population.h"
#include "run/settings.h"

namespace {

std::string random_sequence(std::mt19937& random, long sites) {
    std::string sequence;
    for (long i = 0; i < sites; ++i)
        sequence += "ACGT"[random() % 4];
    return sequence;
}

// Individuals of two different gametes each, 50 sites long.
void BM_PhenToGam(benchmark::State& state) {
    std::mt19937 random(1);
    mnd::ProfileSettings profile;
    profile.DataType = mnd::DNA;
    profile.LocusSeparator = 0;
    profile.GenotypicData = 1;
    mnd::Population sample("s", 0, profile);
    for (long i = 0; i < state.range(0); ++i) {
        auto* phenotype = new mnd::TPhenotype("id", 1.0);
        for (mnd::my_string& text : phenotype->text)
            text = random_sequence(random, 50).c_str();
        sample.phen_db.Add(phenotype);
    }
    mnd::settings s;
    for (auto _ : state) {
        mnd::Haplo_DB db;
        sample.phen_to_gam(&db, nullptr, &s);
        benchmark::DoNotOptimize(sample.hapl_list.count);
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_PhenToGam)
    ->ArgName("individuals")
    ->RangeMultiplier(10)
    ->Range(100, 100000)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);

// Sequences of 1000 sites.
void BM_CompareDnaSequences(benchmark::State& state) {
    std::mt19937 random(1);
    mnd::ProfileSettings profile;
    profile.DataType = mnd::DNA;
    profile.LocusSeparator = 0;
    mnd::Haplo_DB db;
    mnd::PopulDNA sample("s", 0, profile);
    const std::string base = random_sequence(random, 1000);
    for (long i = 0; i < state.range(0); ++i) {
        std::string sequence = base;
        for (int change = 0; change < 10; ++change)
            sequence[random() % 1000] = "ACGT"[random() % 4];
        auto* definition = new mnd::HaploDef("h");
        definition->content = sequence.c_str();
        sample.hapl_list.Add(new mnd::PHaploDef(db.append(definition), 1));
    }
    sample.sample_size = static_cast<double>(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(sample.compare_DNA_sequences());
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_CompareDnaSequences)
    ->ArgName("sequences")
    ->RangeMultiplier(10)
    ->Range(10, 1000)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);

}  // namespace
