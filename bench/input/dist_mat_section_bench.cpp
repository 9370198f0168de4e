#include <benchmark/benchmark.h>

#include <sstream>
#include <string>

#include "input/dist_mat.h"

namespace {

void BM_ReadDistanceMatrix(benchmark::State& state) {
    const int rows = static_cast<int>(state.range(0));
    std::string text;
    for (int i = 0; i < rows; ++i) {
        text += "h" + std::to_string(i);
        for (int j = 0; j <= i; ++j)
            text += ' ' + std::to_string((i * 7 + j) % 40);
        text += '\n';
    }
    text += "}\n";
    mnd::DistMat matrix;
    for (auto _ : state) {
        matrix.initializeMatrixAndArrays(rows);
        matrix.LabelPosition = mnd::kLabelsInColumn;
        std::istringstream in(text);
        int line = 0;
        if (matrix.ReadDistanceMatrix(in, false, line) == 0) state.SkipWithError("the matrix is not read");
    }
    state.SetBytesProcessed(state.iterations() * static_cast<long>(text.size()));
}
BENCHMARK(BM_ReadDistanceMatrix)
    ->ArgName("rows")
    ->RangeMultiplier(4)
    ->Range(64, 4096)
    ->Unit(benchmark::kMillisecond);

}  // namespace
