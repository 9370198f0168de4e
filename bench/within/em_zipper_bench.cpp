// Cost of estimating haplotype frequencies window by window.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "foundation/random.h"
#include "model/popul_standard.h"
#include "run/process.h"
#include "run/settings.h"
#include "within/em_zipper.h"

namespace {

// Individuals of unknown phase that descend from a few biallelic haplotypes, which differ at half
// of the loci.
struct Descendants {
    mnd::TAlleleDB alleles;
    mnd::PopulStandard sample;
    mnd::settings s;

    Descendants(int individuals, int loci, int founders) {
        mnd::silentMendrake = true;
        seed();
        sample.allele_db = &alleles;
        std::vector<mnd::TPopHaplotype> haplotypes(static_cast<std::size_t>(founders));
        for (mnd::TPopHaplotype& haplotype : haplotypes) {
            for (int locus = 0; locus < loci; ++locus)
                haplotype.alleles.Add(alleles.insert_allele(locus, mnd::ran3() < 0.5 ? "A" : "B", 1.0));
        }
        const auto draw = [&] { return &haplotypes[static_cast<std::size_t>(founders * mnd::ran3())]; };
        for (int i = 0; i < individuals; ++i) {
            const mnd::TPopHaplotype* first = draw();
            const mnd::TPopHaplotype* second = draw();
            sample.phen_db.Add(std::make_unique<mnd::TPhenotype>(first, second, i).release());
        }
        sample.sample_size = 2.0 * individuals;
        s.EMWinSize = 3;
        s.EMNumZipRandOrders = 0;
        s.InitialConditionsEM = 50;
        s.MaximumNumOfIterationsEM = 1000;
        s.EpsilonValue = 1e-7;
    }

    // Each round takes the same starts, and with them the same haplotypes into the next window.
    static void seed() {
        long seed = -4711;
        mnd::ran3(&seed);
    }
};

void BM_zipper_of_60_individuals(benchmark::State& state) {
    Descendants data(60, static_cast<int>(state.range(0)), 8);
    for (auto _ : state) {
        data.seed();
        const auto estimate = mnd::estimate_by_zipper(data.sample, data.s);
        state.counters["haplotypes"] = static_cast<double>(estimate->haplotypes.count);
    }
}
BENCHMARK(BM_zipper_of_60_individuals)
    ->ArgName("biallelic_loci")
    ->DenseRange(6, 30, 6)
    ->Unit(benchmark::kMillisecond);

}  // namespace
