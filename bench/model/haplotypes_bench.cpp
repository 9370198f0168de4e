#include "model/haplotypes.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

std::string random_sequence(std::mt19937& random, long sites) {
    std::string sequence(static_cast<std::size_t>(sites), 'A');
    for (char& c : sequence)
        c = "ACGT"[random() % 4];
    return sequence;
}

// Distinct haplotypes of 1000 sites enter the list, each looked for by name and by content.
void BM_HaploDBIndex(benchmark::State& state) {
    std::mt19937 random(2);
    std::vector<mnd::my_string> names, contents;
    for (long i = 0; i < state.range(0); ++i) {
        names.emplace_back(("h" + std::to_string(i)).c_str());
        contents.emplace_back(random_sequence(random, 1000).c_str());
    }
    for (auto _ : state) {
        mnd::Haplo_DB db;
        for (std::size_t i = 0; i < names.size(); ++i) {
            benchmark::DoNotOptimize(db.find_by_name(names[i]));
            benchmark::DoNotOptimize(db.find(contents[i]));
            auto definition = std::make_unique<mnd::HaploDef>(names[i]);
            definition->content = contents[i];
            db.append(definition.release());
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_HaploDBIndex)
    ->ArgName("haplotypes")
    ->RangeMultiplier(10)
    ->Range(100, 10000)
    ->Unit(benchmark::kMillisecond);

// Sequences of 1000 sites become vectors of alleles.
void BM_BuildHaplovect(benchmark::State& state) {
    std::mt19937 random(3);
    std::vector<std::unique_ptr<mnd::HaploDef>> definitions;
    for (long i = 0; i < state.range(0); ++i) {
        definitions.push_back(std::make_unique<mnd::HaploDef>());
        definitions.back()->content = random_sequence(random, 1000).c_str();
    }
    for (auto _ : state) {
        mnd::TAlleleDB alleles;
        for (auto& definition : definitions)
            definition->build_haplovect(&alleles, '\0', 0, 0.1);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * 1000);
}
BENCHMARK(BM_BuildHaplovect)
    ->ArgName("haplotypes")
    ->RangeMultiplier(10)
    ->Range(100, 10000)
    ->Unit(benchmark::kMillisecond);

}  // namespace
