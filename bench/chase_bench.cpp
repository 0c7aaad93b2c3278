// Chase-II soft decoding against hard decoding of the same words: one
// codeword of 8192 data bits with t = 40 (the codewords of the 4 x 8192
// layout), carrying exactly `errors` errors. Reliabilities are those of
// +-1 signalling in Gaussian noise (sigma 0.39): |y| of a draw conditioned
// on the wrong sign for the errors and on the right sign elsewhere. The
// time is per codeword; 16 different words are cycled.
//
// BM_TestWordDecision times what one test pattern costs when it has to be
// decided, the locator (Berlekamp-Massey) and the root search, on the
// syndromes of the same words; with more than t errors the search rejects
// the locator, as it does for nearly every test pattern near and beyond t.
// Its counter locator_runs is the mean number of test patterns per word
// that the Chase decoder (eta = 6) sends through the locator: the two
// multiplied give the part of a Chase decode that no shortcut removes.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include "bch/bch.h"
#include "bch/bchEngine.h"
#include "bch/berlekampMassey.h"
#include "bch/chaseDecoder.h"
#include "bch/locatorRoots.h"
#include "gf/exp2Int15.h"
#include "gf/gf2m.h"
#include "quilPackedBCH.h"

namespace {

constexpr int kDataBits = 8192, kT = 40, kVariants = 16;

struct Received {
  std::vector<uint8_t> data, parity;
  std::vector<float> reliability;
};

std::vector<Received> makeWords(quil::PackedBCH& codec, int errors) {
  std::mt19937 rng(2026);
  std::normal_distribution<double> noise(0.0, 0.39);
  const int n = kDataBits + codec.parityBits();
  std::vector<Received> words;
  for (int v = 0; v < kVariants; ++v) {
    Received w{std::vector<uint8_t>(codec.dataBytes()), std::vector<uint8_t>(codec.parityBytes()),
               std::vector<float>(n), };
    for (auto& b : w.data) b = static_cast<uint8_t>(rng());
    codec.encode(w.data.data(), w.parity.data());
    std::vector<int> order(n);
    std::iota(order.begin(), order.end(), 0);
    for (int e = 0; e < errors; ++e) std::swap(order[e], order[e + rng() % (n - e)]);
    std::vector<bool> wrong(n, false);
    for (int e = 0; e < errors; ++e) wrong[order[e]] = true;
    for (int i = 0; i < n; ++i) {
      double y;
      do y = 1.0 + noise(rng);
      while ((y < 0) != wrong[i]);
      w.reliability[i] = static_cast<float>(2.0 * std::fabs(y) / (0.39 * 0.39));
      if (wrong[i]) {
        uint8_t& byte = i < kDataBits ? w.data[i / 8] : w.parity[(i - kDataBits) / 8];
        byte = static_cast<uint8_t>(byte ^ (0x80 >> (i < kDataBits ? i % 8 : (i - kDataBits) % 8)));
      }
    }
    words.push_back(w);
  }
  return words;
}

// Arguments: errors, and for Chase the number of flipped positions.
void BM_HardDecode(benchmark::State& state) {
  quil::PackedBCH codec(kDataBits, kT);
  const std::vector<Received> words = makeWords(codec, static_cast<int>(state.range(0)));
  Received scratch = words[0];
  size_t v = 0;
  for (auto _ : state) {
    const Received& w = words[v++ % kVariants];
    scratch.data = w.data;
    scratch.parity = w.parity;
    benchmark::DoNotOptimize(codec.decode(scratch.data.data(), scratch.parity.data()));
  }
}

void BM_ChaseDecode(benchmark::State& state) {
  quil::PackedBCH codec(kDataBits, kT);
  const std::vector<Received> words = makeWords(codec, static_cast<int>(state.range(0)));
  const int positions = static_cast<int>(state.range(1));
  Received scratch = words[0];
  size_t v = 0;
  for (auto _ : state) {
    const Received& w = words[v++ % kVariants];
    scratch.data = w.data;
    scratch.parity = w.parity;
    benchmark::DoNotOptimize(
        codec.decodeSoft(scratch.data.data(), scratch.parity.data(), w.reliability.data(), positions));
  }
}

// The codec's code built from its parts: GF(2^15) from x^15 + x + 1,
// narrow sense, so that the engine and the Chase decoder can be driven
// directly.
struct EngineCode {
  GF2m field;
  BCH code;
  BchEngine& engine;
  static constexpr int kPolynomial[16] = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1};
  EngineCode()
      : field(15, kPolynomial, 15, exp2Int15.data(), kExp2Int15Size),
        code(&field, 0, kT, 1, kDataBits),
        engine(*code.packedEngine()) {}
};

// Second argument 1: the locator alone.
void BM_TestWordDecision(benchmark::State& state) {
  quil::PackedBCH codec(kDataBits, kT);
  const std::vector<Received> words = makeWords(codec, static_cast<int>(state.range(0)));
  EngineCode c;
  const FieldTables& field = *c.engine.sharedField();
  std::vector<std::vector<uint16_t>> syndromes;
  std::vector<int> S(2 * kT);
  ChaseDecoder chase(c.engine, 1);
  double runs = 0;
  for (const Received& w : words) {
    c.engine.syndromes(w.data.data(), kDataBits, w.parity.data(), S.data());
    syndromes.emplace_back(2 * kT);
    for (int j = 0; j < 2 * kT; ++j) syndromes.back()[j] = field.fromExponent(S[j]);
    Received scratch = w;
    chase.decode(scratch.data.data(), scratch.parity.data(), w.reliability.data(), 6);
    runs += chase.locatorRuns();
  }
  BerlekampMassey massey(field, kT, c.engine.sharedDivider()->kernelLevel());
  const bool locatorOnly = state.range(1) == 1;
  LocatorRoots finder(field, kT, c.engine.sharedDivider()->kernelLevel());
  std::vector<uint16_t> lambda(2 * kT + 1);
  std::vector<int> roots(kT + 1);
  size_t v = 0;
  for (auto _ : state) {
    massey.locator(syndromes[v++ % kVariants].data(), -1, lambda.data(), true);
    if (locatorOnly) {
      benchmark::DoNotOptimize(lambda.data());
      continue;
    }
    int d = 2 * kT;
    while (d > 0 && lambda[d] == 0) --d;
    benchmark::DoNotOptimize(d <= kT && finder.find(lambda.data(), d, c.engine.codeLength(), roots.data()));
  }
  state.counters["locator_runs"] = runs / kVariants;
}

BENCHMARK(BM_HardDecode)->Arg(10)->Arg(20)->Arg(40)->Arg(41)->Arg(43)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ChaseDecode)
    ->Args({10, 0})
    ->Args({10, 6})
    ->Args({20, 6})
    ->Args({40, 6})
    ->Args({41, 6})
    ->Args({43, 6})
    ->Args({41, 10})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TestWordDecision)
    ->Args({40, 0})
    ->Args({41, 0})
    ->Args({43, 0})
    ->Args({43, 1})
    ->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
