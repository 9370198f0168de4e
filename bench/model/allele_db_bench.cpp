#include "model/allele_db.h"

#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

namespace {

// 100 000 insertions at one locus, spread over its alleles.
void BM_InsertAllele(benchmark::State& state) {
    std::mt19937 random(1);
    std::vector<std::string> names;
    for (int i = 0; i < 100000; ++i) {
        names.push_back(std::to_string(random() % static_cast<unsigned>(state.range(0))));
    }
    for (auto _ : state) {
        mnd::TAlleleDB db;
        for (const std::string& name : names)
            db.insert_allele(0, name, 1.0);
        benchmark::DoNotOptimize(db.data[0]->count);
    }
    state.SetItemsProcessed(state.iterations() * 100000);
}
BENCHMARK(BM_InsertAllele)->ArgName("alleles")->RangeMultiplier(8)->Range(2, 8192);

}  // namespace
