// Simulation throughput against the packed decoder alone, per thread, for
// one codeword of 8192 data bits with t = 40.
//
//   packed_decode_t/2   decode of a stored word with 20 errors (copied in
//                       from 16 prepared variants), nothing else;
//   simulate_codeword   one block of the engine: random data, encoding, the
//                       BSC's error positions at p = 20 / 8792 (t/2 errors on
//                       average), decoding and the tally;
//   stratified_w41      one pattern of 41 errors drawn and decoded, as the
//                       stratified estimator does per sample.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "blockWorker.h"
#include "quilPackedBCH.h"

namespace {

using namespace flashbch;
constexpr int kData = 8192, kT = 40, kCode = kData + 15 * kT;

void packedDecodeHalfT(benchmark::State& state) {
  quil::PackedBCH codec(kData, kT);
  std::mt19937 rng(1);
  std::vector<std::vector<std::uint8_t>> data(16), parity(16);
  for (int v = 0; v < 16; ++v) {
    data[v].resize(static_cast<size_t>(codec.dataBytes()));
    parity[v].resize(static_cast<size_t>(codec.parityBytes()));
    for (auto& byte : data[v]) byte = static_cast<std::uint8_t>(rng());
    codec.encode(data[v].data(), parity[v].data());
    for (int e = 0; e < kT / 2; ++e) {
      const int bit = static_cast<int>(rng() % kCode);
      auto& word = bit < kData ? data[v] : parity[v];
      const int at = bit < kData ? bit : bit - kData;
      word[at / 8] ^= static_cast<std::uint8_t>(0x80 >> (at % 8));
    }
  }
  std::vector<std::uint8_t> d(data[0].size()), p(parity[0].size());
  int v = 0;
  for (auto _ : state) {
    std::memcpy(d.data(), data[v].data(), d.size());
    std::memcpy(p.data(), parity[v].data(), p.size());
    benchmark::DoNotOptimize(codec.decode(d.data(), p.data()));
    v = (v + 1) % 16;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(packedDecodeHalfT)->Name("packed_decode_t/2");

void simulateCodeword(benchmark::State& state) {
  BlockWorker worker(makeLayout({kData}, kT, false), {});
  const auto channel = makeChannel(ChannelKind::Bsc, 0.5 * kT / kCode);
  std::uint64_t block = 0;
  for (auto _ : state) benchmark::DoNotOptimize(worker.simulate(*channel, streamKey({1, 0, block++})));
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(simulateCodeword)->Name("simulate_codeword");

void stratifiedSample(benchmark::State& state) {
  BlockWorker worker(makeLayout({kData}, kT, false), {});
  const auto channel = makeChannel(ChannelKind::Bsc, 0.01);
  CodewordDecoder& decoder = worker.decoderFor(kData);
  std::vector<int> positions;
  RandomStream rng(1);
  for (auto _ : state) {
    channel->sampleErrorsOfWeight(kCode, kT + 1, rng, positions);
    benchmark::DoNotOptimize(decoder.decode(positions));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(stratifiedSample)->Name("stratified_w41");

}  // namespace

BENCHMARK_MAIN();
