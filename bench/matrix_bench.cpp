// Dense GF(2) elimination and Tanner-graph cycle counting on sizes met in
// practice: the rank of a random 4096 x 8192 matrix, and the girth and
// short-cycle counts of a 4096 x 36864 quasi-cyclic matrix of column
// weight 4.
#include <benchmark/benchmark.h>

#include <random>

#include "Tools/mymatrix/binaryMatrix.h"
#include "Tools/mymatrix/sparseBinaryMatrix.h"
#include "Tools/mymatrix/tannerCycles.h"

namespace {

void BM_RankDense(benchmark::State& state) {
  const size_t rows = static_cast<size_t>(state.range(0)), cols = static_cast<size_t>(state.range(1));
  std::mt19937_64 rng(1);
  tools::BinaryMatrix a(rows, cols);
  for (size_t r = 0; r < rows; ++r)
    for (size_t w = 0; w < a.wordsPerRow(); ++w) a.row(r)[w] = rng();
  if (cols % 64 != 0)
    for (size_t r = 0; r < rows; ++r) a.row(r)[a.wordsPerRow() - 1] &= (uint64_t{1} << (cols % 64)) - 1;
  for (auto _ : state) benchmark::DoNotOptimize(a.rank());
}
BENCHMARK(BM_RankDense)->Args({1024, 2048})->Args({4096, 8192})->Unit(benchmark::kMillisecond);

// Base matrix 4 x 36 of random shifts, circulant size 1024.
void BM_CycleCountsQc(benchmark::State& state) {
  const size_t z = static_cast<size_t>(state.range(0));
  std::mt19937 rng(2);
  std::vector<std::vector<int>> base(4, std::vector<int>(36));
  for (auto& row : base)
    for (int& s : row) s = static_cast<int>(rng() % z);
  const tools::SparseBinaryMatrix h = tools::quasiCyclic(base, z);
  for (auto _ : state) benchmark::DoNotOptimize(tools::countShortCycles(h));
}
BENCHMARK(BM_CycleCountsQc)->Arg(1024)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
