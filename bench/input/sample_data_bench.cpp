// Reading of sample data and of haplotype lists: time grows with the number of lines.
#include <benchmark/benchmark.h>

#include <random>
#include <sstream>
#include <string>

#include "model/haplotypes.h"
#include "model/population.h"

namespace {

constexpr int kSites = 100;

mnd::ProfileSettings profile_of(int data_type, char separator, int genotypic) {
    mnd::ProfileSettings profile;
    profile.DataType = data_type;
    profile.LocusSeparator = separator;
    profile.GenotypicData = genotypic;
    return profile;
}

std::string random_sequence(std::mt19937& random) {
    std::string sequence;
    for (int i = 0; i < kSites; ++i)
        sequence += "ACGT"[random() % 4];
    return sequence;
}

std::string haplotype_lines(long lines, bool with_frequency) {
    std::mt19937 random(1);
    std::string text;
    for (long i = 0; i < lines; ++i) {
        text +=
            "haplotype" + std::to_string(i) + (with_frequency ? " 1 " : " ") + random_sequence(random) + "\n";
    }
    return text + "}\n";
}

std::string genotype_lines(long individuals, int loci) {
    std::mt19937 random(1);
    std::string text;
    for (long i = 0; i < individuals; ++i) {
        for (int k = 0; k < 2; ++k) {
            text += k == 0 ? "id" + std::to_string(i) + " 1" : std::string("\t");
            for (int locus = 0; locus < loci; ++locus)
                text += " " + std::to_string(100 + random() % 12);
            text += "\n";
        }
    }
    return text + "}\n";
}

void BM_ReadHaplotypes(benchmark::State& state) {
    const std::string text = haplotype_lines(state.range(0), true);
    for (auto _ : state) {
        mnd::Haplo_DB db;
        mnd::Population sample("s", 0, profile_of(mnd::DNA, 0, 0));
        sample.sample_size = static_cast<double>(state.range(0));
        std::istringstream in(text);
        mnd::my_string line;
        int line_no = 0;
        benchmark::DoNotOptimize(sample.New_read_gametic_data(in, db, 0, line_no, line));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_ReadHaplotypes)
    ->ArgName("lines")
    ->RangeMultiplier(10)
    ->Range(100, 100000)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);

void BM_ReadHaplotypeList(benchmark::State& state) {
    const std::string text = haplotype_lines(state.range(0), false);
    for (auto _ : state) {
        mnd::Haplo_DB db;
        mnd::ProfileSettings profile = profile_of(mnd::DNA, 0, 0);
        std::istringstream in(text);
        int line_no = 0;
        benchmark::DoNotOptimize(db.NewReadHaplotypeList(in, profile, false, line_no));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_ReadHaplotypeList)
    ->ArgName("lines")
    ->RangeMultiplier(10)
    ->Range(100, 100000)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);

// Genotypes of 1000 loci, with the vectors of their alleles.
void BM_ReadAndIndexGenotypes(benchmark::State& state) {
    const std::string text = genotype_lines(state.range(0), 1000);
    for (auto _ : state) {
        mnd::TAlleleDB alleles;
        mnd::Population sample("s", 0, profile_of(mnd::MICROSAT, ' ', 1));
        sample.allele_db = &alleles;
        sample.sample_size = static_cast<double>(state.range(0));
        std::istringstream in(text);
        mnd::my_string line;
        int line_no = 0;
        benchmark::DoNotOptimize(sample.New_read_genotypic_data(in, 0, line_no, line));
        sample.build_allele_vectors(' ');
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_ReadAndIndexGenotypes)
    ->ArgName("individuals")
    ->RangeMultiplier(10)
    ->Range(5, 5000)
    ->Complexity()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);

}  // namespace
