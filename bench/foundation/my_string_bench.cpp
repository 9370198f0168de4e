#include "foundation/my_string.h"

#include <benchmark/benchmark.h>

#include <sstream>
#include <string>

namespace {

// Short tokens of a line of genotypes.
void BM_ReadTokens(benchmark::State& state) {
    std::string line;
    for (std::int64_t i = 0; i < state.range(0); ++i)
        line += std::to_string(100 + i % 100) + ' ';
    mnd::my_string token;
    for (auto _ : state) {
        std::istringstream in(line);
        while (in >> token)
            benchmark::DoNotOptimize(token.len);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ReadTokens)->ArgName("tokens")->RangeMultiplier(10)->Range(100, 100000);

// One long token, such as a sequence.
void BM_ReadLongToken(benchmark::State& state) {
    const std::string sequence(static_cast<std::size_t>(state.range(0)), 'A');
    mnd::my_string token;
    for (auto _ : state) {
        std::istringstream in(sequence);
        token.read_token(in);
        benchmark::DoNotOptimize(token.len);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ReadLongToken)->ArgName("length")->RangeMultiplier(10)->Range(1000, 1000000);

void BM_ReadLines(benchmark::State& state) {
    std::string text;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        text += 'h';
        text += std::to_string(i);
        text += " 1 ACGTACGTACGTACGT\n";
    }
    mnd::my_string line;
    for (auto _ : state) {
        std::istringstream in(text);
        while (in.good())
            line.read_line(in);
        benchmark::DoNotOptimize(line.len);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ReadLines)->ArgName("lines")->RangeMultiplier(10)->Range(100, 100000);

}  // namespace
