// Speed of the flash codec: µs per block and Mbit/s of data for the
// benchmark layouts through the exported functions, the same against the
// plain per-codeword reference for P1, creation and initialisation, the
// packed-bit codec per codeword, and the machine's memory read bandwidth
// (a 64 MB buffer summed once per iteration) to set beside the codec's rates.
// The kernel level in use (QFB_FORCE_SCALAR=1 selects the portable one) is
// in the report's context.
//
// Layouts (codewords x data bits, t): P1 = 4 x 8192, t = 40; P2 = 8 x 4096,
// t = 8; P3 = 1 x 16384, t = 72. Decode inputs carry 0, t/2, t or t+1
// errors per codeword at random positions of its data and parity; several
// different blocks are cycled so that no branch pattern repeats.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <cstdint>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "bch/kernelLevel.h"
#include "quilFlashBCH.h"
#include "quilPackedBCH.h"
#include "support/referenceFlashBch.h"

namespace {

using V = std::vector<int>;
constexpr int kVariants = 16;

struct Layout {
  const char* name;
  int codewords, dataBits, t;
};
const Layout kLayouts[] = {{"P1", 4, 8192, 40}, {"P2", 8, 4096, 8}, {"P3", 1, 16384, 72}};

enum class Op { Encode, Clean, HalfT, T, TPlus1 };
struct OpInfo {
  Op op;
  const char* name;
};
const OpInfo kOps[] = {{Op::Encode, "encode"},
                       {Op::Clean, "decode_clean"},
                       {Op::HalfT, "decode_t/2"},
                       {Op::T, "decode_t"},
                       {Op::TPlus1, "decode_t+1"}};

int errorsFor(Op op, int t) {
  switch (op) {
    case Op::HalfT:
      return t / 2;
    case Op::T:
      return t;
    case Op::TPlus1:
      return t + 1;
    default:
      return 0;
  }
}

V randomBits(std::mt19937& rng, size_t n) {
  V v(n);
  for (int& x : v) x = static_cast<int>(rng() & 1);
  return v;
}

void flipDistinct(std::mt19937& rng, int* word, int length, int count) {
  V pos(length);
  std::iota(pos.begin(), pos.end(), 0);
  for (int e = 0; e < count; ++e) {
    std::swap(pos[e], pos[e + rng() % (length - e)]);
    word[pos[e]] ^= 1;
  }
}

// Data, their encoded block and corrupted copies, through any adapter with
// encode_au / get_parity_length (the reference) or the exported functions.
struct Blocks {
  V data, encoded;
  std::vector<V> received;
};

template <class Encode>
Blocks makeBlocks(const Layout& l, int stored, Op op, Encode encode) {
  std::mt19937 rng(12345);
  Blocks b;
  b.data = randomBits(rng, static_cast<size_t>(l.codewords) * l.dataBits);
  b.encoded.assign(static_cast<size_t>(l.codewords) * (l.dataBits + stored), 0);
  encode(b.data.data(), b.encoded.data());
  for (int v = 0; v < kVariants; ++v) {
    V r = b.encoded;
    for (int c = 0; c < l.codewords; ++c)
      flipDistinct(rng, r.data() + static_cast<size_t>(c) * (l.dataBits + stored), l.dataBits + 15 * l.t,
                   errorsFor(op, l.t));
    b.received.push_back(std::move(r));
  }
  return b;
}

// data_Mbit is a rate: the console shows it per second (1.8k/s = 1800 Mbit/s).
void setRates(benchmark::State& state, double bitsPerIteration) {
  state.counters["data_Mbit"] =
      benchmark::Counter(bitsPerIteration * static_cast<double>(state.iterations()) / 1e6, benchmark::Counter::kIsRate);
}

void exportedFunctions(benchmark::State& state, Layout l, Op op) {
  quilCreateFlashBCH();
  V lengths(l.codewords, l.dataBits);
  quilInitializeFlashBCH(l.codewords, lengths.data(), l.t);
  const int stored = quilGetParityLength();
  Blocks b = makeBlocks(l, stored, op, [](int* in, int* out) { quilEncodeBCH(in, out); });
  V out(b.encoded.size());
  size_t i = 0;
  int uncorrectable = 0;
  for (auto _ : state) {
    if (op == Op::Encode) {
      quilEncodeBCH(b.data.data(), out.data());
    } else {
      uncorrectable += quilDecodeBCH(b.received[i++ % kVariants].data(), out.data());
    }
    benchmark::ClobberMemory();
  }
  state.counters["uncorrectable/block"] =
      static_cast<double>(uncorrectable) / static_cast<double>(std::max<int64_t>(state.iterations(), 1));
  setRates(state, static_cast<double>(l.codewords) * l.dataBits);
  quilReleaseFlashBCH();
}

void reference(benchmark::State& state, Layout l, Op op) {
  ReferenceFlashBCH codec;
  V lengths(l.codewords, l.dataBits);
  codec.init(l.codewords, lengths.data(), l.t, false, true, -1, 0, 0);
  const int stored = codec.get_parity_length();
  Blocks b = makeBlocks(l, stored, op, [&codec](int* in, int* out) { codec.encode_au(in, out); });
  V out(b.encoded.size());
  size_t i = 0;
  for (auto _ : state) {
    if (op == Op::Encode)
      codec.encode_au(b.data.data(), out.data());
    else
      codec.decode_au(b.received[i++ % kVariants].data(), out.data(), nullptr);
    benchmark::ClobberMemory();
  }
  setRates(state, static_cast<double>(l.codewords) * l.dataBits);
}

void createAndRelease(benchmark::State& state) {
  for (auto _ : state) {
    quilCreateFlashBCH();
    quilReleaseFlashBCH();
  }
}

void initialize(benchmark::State& state, Layout l) {
  quilCreateFlashBCH();
  V lengths(l.codewords, l.dataBits);
  for (auto _ : state) quilInitializeFlashBCH(l.codewords, lengths.data(), l.t);
  quilReleaseFlashBCH();
}

// One codeword through the packed-bit codec. Decoding corrects in place,
// so each iteration first restores the received word (a copy of about
// 1 KB, included in the time).
void packed(benchmark::State& state, int dataBits, int t, Op op) {
  quil::PackedBCH codec(dataBits, t);
  std::mt19937 rng(99);
  std::vector<uint8_t> data(codec.dataBytes()), parity(codec.parityBytes());
  for (uint8_t& x : data) x = static_cast<uint8_t>(rng());
  codec.encode(data.data(), parity.data());
  std::vector<std::vector<uint8_t>> received;
  for (int v = 0; v < kVariants; ++v) {
    std::vector<uint8_t> word(data);
    word.insert(word.end(), parity.begin(), parity.end());
    V pos(dataBits + codec.parityBits());
    std::iota(pos.begin(), pos.end(), 0);
    for (int e = 0; e < errorsFor(op, t); ++e) {
      std::swap(pos[e], pos[e + rng() % (pos.size() - e)]);
      const int bit = pos[e] < dataBits ? pos[e] : codec.dataBytes() * 8 + (pos[e] - dataBits);
      word[bit / 8] = static_cast<uint8_t>(word[bit / 8] ^ (0x80 >> (bit % 8)));
    }
    received.push_back(std::move(word));
  }
  std::vector<uint8_t> work(received[0].size()), out(codec.parityBytes());
  int positions[256];
  size_t i = 0;
  for (auto _ : state) {
    if (op == Op::Encode) {
      codec.encode(data.data(), out.data());
    } else {
      const std::vector<uint8_t>& r = received[i++ % kVariants];
      std::copy(r.begin(), r.end(), work.begin());
      benchmark::DoNotOptimize(codec.decode(work.data(), work.data() + codec.dataBytes(), positions));
    }
    benchmark::ClobberMemory();
  }
  setRates(state, dataBits);
}

// Memory read bandwidth: a buffer far larger than the caches, summed with
// independent 64-bit lanes so that the loads, not the additions, set the pace.
void memoryRead(benchmark::State& state) {
  std::vector<uint64_t> buffer((64u << 20) / sizeof(uint64_t));
  std::iota(buffer.begin(), buffer.end(), uint64_t{1});
  for (auto _ : state) {
    uint64_t lanes[8] = {};
    for (size_t i = 0; i < buffer.size(); i += 8)
      for (int l = 0; l < 8; ++l) lanes[l] += buffer[i + l];
    uint64_t sum = 0;
    for (uint64_t x : lanes) sum += x;
    benchmark::DoNotOptimize(sum);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(buffer.size() * 8));
}

// The console report, followed by the speed-up of each P1 operation over
// the plain reference.
class SpeedupReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      std::string name = run.benchmark_name();
      const size_t fixed = name.find("/iterations:");
      if (fixed != std::string::npos) name.erase(fixed);
      seconds[name] = run.GetAdjustedRealTime();
    }
    ConsoleReporter::ReportRuns(runs);
  }
  void Finalize() override {
    ConsoleReporter::Finalize();
    for (const OpInfo& o : kOps) {
      const auto fast = seconds.find(std::string("P1/") + o.name);
      const auto plain = seconds.find(std::string("P1/reference/") + o.name);
      if (fast != seconds.end() && plain != seconds.end() && fast->second > 0)
        std::printf("P1 %-13s speed-up over the reference: %.0fx\n", o.name, plain->second / fast->second);
    }
  }

 private:
  std::map<std::string, double> seconds;
};

}  // namespace

int main(int argc, char** argv) {
  for (const Layout& l : kLayouts)
    for (const OpInfo& o : kOps)
      benchmark::RegisterBenchmark((std::string(l.name) + "/" + o.name).c_str(), exportedFunctions, l, o.op)
          ->Unit(benchmark::kMicrosecond);
  for (const OpInfo& o : kOps)
    benchmark::RegisterBenchmark((std::string("P1/reference/") + o.name).c_str(), reference, kLayouts[0], o.op)
        ->Unit(benchmark::kMicrosecond)
        ->Iterations(3);
  benchmark::RegisterBenchmark("create+release", createAndRelease)->Unit(benchmark::kMicrosecond);
  benchmark::RegisterBenchmark("P1/initialize", initialize, kLayouts[0])->Unit(benchmark::kMicrosecond);

  struct PackedCase {
    int dataBits, t;
    Op op;
    const char* name;
  };
  const PackedCase packedCases[] = {
      {8192, 40, Op::Encode, "encode"}, {8192, 40, Op::Clean, "decode_clean"}, {8192, 40, Op::HalfT, "decode_t/2"},
      {8192, 40, Op::T, "decode_t"},    {8192, 40, Op::TPlus1, "decode_t+1"},  {4096, 8, Op::Encode, "encode"},
      {4096, 8, Op::T, "decode_t"},     {16384, 72, Op::Encode, "encode"},     {16384, 72, Op::T, "decode_t"}};
  for (const PackedCase& c : packedCases)
    benchmark::RegisterBenchmark(
        ("packed/" + std::to_string(c.dataBits) + "_t" + std::to_string(c.t) + "/" + c.name).c_str(), packed,
        c.dataBits, c.t, c.op)
        ->Unit(benchmark::kMicrosecond);

  benchmark::RegisterBenchmark("memory/read_64MB", memoryRead)->Unit(benchmark::kMicrosecond);

  benchmark::AddCustomContext("kernel_level", kernelLevelName(defaultKernelLevel()));
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  SpeedupReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
