// Opening of projects of growing size. The time per line must stay level.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "run/process.h"
#include "run/project.h"

namespace {

using namespace mnd;

std::string temporary_project() {
    return (std::filesystem::temp_directory_path() / "opening_bench.mnp").string();
}

void open_repeatedly(benchmark::State& state, std::size_t lines) {
    const std::string path = temporary_project();
    for (auto _ : state) {
        Project project;
        project.ProfileSettings::the_settings = &project.the_settings;
        copy_path(settings::input_file, path.c_str(), settings::kInputFileSize);
        if (!project.newOpen()) state.SkipWithError("the project does not open");
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(lines));
    std::remove(path.c_str());
}

// Distinct haplotypes of 100 sites, one line each.
void BM_OpenHaplotypes(benchmark::State& state) {
    const auto haplotypes = static_cast<std::size_t>(state.range(0));
    {
        std::ofstream file(temporary_project());
        file
            << "[Profile]\nNbSamples=1\nGenotypicData=0\nDataType=DNA\nLocusSeparator=NONE\nMissingData='?'\n"
               "[Data]\n[[Samples]]\nSampleName=\"a\"\nSampleSize="
            << haplotypes << "\nSampleData={\n";
        for (std::size_t h = 0; h < haplotypes; ++h) {
            std::string sequence;
            for (std::size_t site = 0; site < 100; ++site)
                sequence += "ACGT"[(h * 31 + site * (h % 97)) % 4];
            for (std::size_t bit = 0; bit < 20; ++bit)
                sequence[bit] = ((h >> bit) & 1) != 0 ? 'A' : 'C';
            file << "hapl" << h << " 1 " << sequence << '\n';
        }
        file << "}\n";
    }
    open_repeatedly(state, haplotypes);
}
BENCHMARK(BM_OpenHaplotypes)->ArgName("haplotypes")->RangeMultiplier(10)->Range(100, 100000);

// Individuals of unknown phase at 1000 loci, two lines each.
void BM_OpenGenotypes(benchmark::State& state) {
    const auto individuals = static_cast<std::size_t>(state.range(0));
    {
        std::ofstream file(temporary_project());
        file << "[Profile]\nNbSamples=1\nGenotypicData=1\nGameticPhase=0\nDataType=MICROSAT\n"
                "LocusSeparator=WHITESPACE\nMissingData='?'\n[Data]\n[[Samples]]\nSampleName="
                "\"a\"\nSampleSize="
             << individuals << "\nSampleData={\n";
        for (std::size_t i = 0; i < individuals; ++i) {
            for (std::size_t gamete = 0; gamete < 2; ++gamete) {
                if (gamete == 0) file << "ind" << i << " 1";
                for (std::size_t locus = 0; locus < 1000; ++locus)
                    file << ' ' << 100 + (i * 7 + gamete * 3 + locus) % 40;
                file << '\n';
            }
        }
        file << "}\n";
    }
    open_repeatedly(state, 2 * individuals);
}
BENCHMARK(BM_OpenGenotypes)
    ->ArgName("individuals")
    ->Arg(50)
    ->Arg(500)
    ->Arg(5000)
    ->Unit(benchmark::kMillisecond);

// A section that is passed over, however long.
void BM_PassOverStructure(benchmark::State& state) {
    const auto lines = static_cast<std::size_t>(state.range(0));
    {
        std::ofstream file(temporary_project());
        file << "[Profile]\nNbSamples=1\nGenotypicData=0\nDataType=FREQUENCY\n[Data]\n[[Samples]]\n"
                "SampleName=\"a\"\nSampleSize=1\nSampleData={\nh1 1\n}\n[[Structure]]\n";
        for (std::size_t i = 0; i < lines; ++i)
            file << "\t\"Sample number " << i << "\" {\n";
    }
    open_repeatedly(state, lines);
}
BENCHMARK(BM_PassOverStructure)->ArgName("lines")->RangeMultiplier(10)->Range(1000, 100000);

}  // namespace
