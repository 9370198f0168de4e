// Cost of the chains of the exact test of Hardy-Weinberg proportions.
#include <benchmark/benchmark.h>

#include <vector>

#include "foundation/count_table.h"
#include "foundation/random.h"
#include "within/genotype_chain.h"

namespace {

void seed() {
    long idum = -12345;
    mnd::ran3(&idum);
}

// Genotypes of individuals whose alleles are drawn with frequencies that fall by a third from one
// to the next, as those of microsatellites do.
mnd::CountTable genotypes(int nb_alleles, int individuals) {
    std::vector<double> bounds;
    double sum = 0.0;
    double share = 1.0;
    for (int i = 0; i < nb_alleles; ++i) {
        bounds.push_back(sum += share);
        share = share > 0.02 ? share / 1.5 : share;
    }
    mnd::CountTable table;
    table.build(nb_alleles, nb_alleles);
    const auto draw = [&bounds, sum] {
        const double u = mnd::ran3() * sum;
        int i = 0;
        while (bounds[static_cast<std::size_t>(i)] <= u && i + 1 < static_cast<int>(bounds.size()))
            ++i;
        return i;
    };
    for (int k = 0; k < individuals; ++k) {
        const int i = draw();
        const int j = draw();
        ++table[i < j ? i : j][i < j ? j : i];
    }
    return table;
}

constexpr int kIndividuals = 200;
constexpr int kSteps = 100000;

void BM_GenotypeChain(benchmark::State& state) {
    seed();
    mnd::CountTable table = genotypes(static_cast<int>(state.range(0)), kIndividuals);
    mnd::GenotypeChain chain(table);
    std::vector<std::int64_t> hits(kSteps);
    for (auto _ : state) {
        chain.run(hits);
        benchmark::DoNotOptimize(hits.data());
    }
    state.SetItemsProcessed(state.iterations() * kSteps);
}
BENCHMARK(BM_GenotypeChain)
    ->ArgName("alleles_of_200")
    ->Arg(2)
    ->Arg(3)
    ->Arg(5)
    ->Arg(10)
    ->Arg(20)
    ->Arg(40)
    ->Arg(100)
    ->Arg(300);

}  // namespace
