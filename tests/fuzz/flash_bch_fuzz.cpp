// Fuzz target: FlashBCH::decode_au on arbitrary received blocks under
// arbitrary valid layouts.
//
// A layout: 1 .. 4 codewords, t in 0 .. 128, bypass, byte-aligned parity,
// tDecode in -1 .. t+1 (above t is capped to t), lengthUnit 0 or 1 .. 128,
// placement 0 or 1. Data lengths run from 1 to 1024 bits (256 for t above
// 16): long enough to reach every path of the adapter, and every such code
// fits GF(2^15) (k + 15t stays far below 32767). One FlashBCH is configured
// again and again, as a host does.
//
// Each layout decodes two received blocks: one encoded here from
// input-derived data with at most tDecode flipped bits in each codeword
// (anywhere in its data, parity or padding), and one of arbitrary bits.
//
// Properties, beyond "no crash, no sanitizer report":
//  - the result counts the uncorrectable codewords: 0 .. numCodewords, the
//    sum of the per-codeword results, each 0 or 1;
//  - the received block is never modified and every output element is a bit;
//  - with bypass or t = 0 the data pass through unchanged, result 0;
//  - with placement 0, a block within tDecode errors per codeword decodes to
//    exactly the data encoded, result 0.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <numeric>
#include <vector>

#include "api/FlashBCH.h"
#include "fuzz/fuzz_check.h"

namespace {

struct Layout {
  std::vector<int> lengths;
  int t = 0;
  bool bypass = false;
  bool byteAlign = true;
  int tDecode = -1;
  int lengthUnit = 0;
  int placement = 0;
};

Layout drawLayout(FuzzedDataProvider& in) {
  Layout l;
  // A code's cost grows with t (its generator, encoder, syndromes and
  // search), so most layouts keep t small and data up to 1024 bits; one in
  // 64 takes t anywhere in 0 .. 128, with up to two codewords of up to 256
  // bits, which still reaches every path while one input stays near 0.1 s
  // under the sanitizers.
  const bool wideT = in.ConsumeIntegralInRange<int>(0, 63) == 0;
  l.t = wideT ? in.ConsumeIntegralInRange<int>(0, 128) : in.ConsumeIntegralInRange<int>(0, 16);
  l.lengths.resize(static_cast<size_t>(in.ConsumeIntegralInRange<int>(1, wideT ? 2 : 4)));
  for (int& len : l.lengths) len = in.ConsumeIntegralInRange<int>(1, wideT ? 256 : 1024);
  l.bypass = in.ConsumeIntegralInRange<int>(0, 7) == 0;
  l.byteAlign = in.ConsumeBool();
  l.tDecode = in.ConsumeIntegralInRange<int>(-1, l.t + 1);
  l.lengthUnit = in.ConsumeBool() ? 0 : in.ConsumeIntegralInRange<int>(1, 128);
  l.placement = in.ConsumeIntegralInRange<int>(0, 1);
  return l;
}

// The decoder's real error limit after init's mending of tDecode.
int effectiveTDecode(const Layout& l) { return l.tDecode == -1 || l.tDecode > l.t ? l.t : l.tDecode; }

FUZZ_NOT_INSTRUMENTED bool allBits(const std::vector<int>& v) {
  return std::all_of(v.begin(), v.end(), [](int b) { return b == 0 || b == 1; });
}

// Marsaglia's xorshift32, to stretch a few input bytes into long data.
class BitStream {
 public:
  explicit BitStream(uint32_t seed) : s_(seed | 1u) {}
  int next() {
    s_ ^= s_ << 13;
    s_ ^= s_ >> 17;
    s_ ^= s_ << 5;
    return static_cast<int>(s_ >> 31);
  }

 private:
  uint32_t s_;
};

// Decodes one received block and checks what holds for any block; sent is
// the encoded data when the block is within tDecode errors per codeword.
void decodeAndCheck(FlashBCH& codec, const Layout& l, const std::vector<int>& received,
                    const std::vector<int>* sent) {
  const int n = static_cast<int>(l.lengths.size());
  const int totalData = std::accumulate(l.lengths.begin(), l.lengths.end(), 0);
  std::vector<int> block = received;
  std::vector<int> decoded(static_cast<size_t>(totalData), -1), results(static_cast<size_t>(n), -1);
  const int uncorrectable = codec.decode_au(block.data(), decoded.data(), results.data());
  FUZZ_CHECK(uncorrectable >= 0 && uncorrectable <= n, "result %d for %d codewords", uncorrectable, n);
  FUZZ_CHECK(std::all_of(results.begin(), results.end(), [](int r) { return r == 0 || r == 1; }),
             "a per-codeword result is not 0 or 1");
  FUZZ_CHECK(std::accumulate(results.begin(), results.end(), 0) == uncorrectable,
             "the result is not the sum of the per-codeword results");
  FUZZ_CHECK(block == received, "decode_au modified the received block");
  FUZZ_CHECK(allBits(decoded), "a decoded element is not a bit");

  if (l.bypass || l.t == 0) {
    FUZZ_CHECK(uncorrectable == 0 && std::equal(decoded.begin(), decoded.end(), received.begin()),
               "pass-through layout changed the data");
  } else if (sent && l.placement == 0) {
    FUZZ_CHECK(uncorrectable == 0 && decoded == *sent,
               "t %d tDecode %d unit %d: a block within the limit was not restored (%d uncorrectable)", l.t,
               l.tDecode, l.lengthUnit, uncorrectable);
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  std::cout.setstate(std::ios::badbit);
  return 0;
}

// Building the codes dominates the cost of an input, so each layout serves
// two blocks: one within the limit, one of arbitrary bits.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static FlashBCH codec;
  FuzzedDataProvider in(data, size);
  const Layout l = drawLayout(in);
  std::vector<int> lengths = l.lengths;
  const int n = static_cast<int>(lengths.size());
  codec.init(n, lengths.data(), l.t, l.bypass, l.byteAlign, l.tDecode, l.lengthUnit, l.placement);
  const int stored = codec.get_parity_length();
  const int totalData = std::accumulate(lengths.begin(), lengths.end(), 0);
  const int blockLen = totalData + n * stored;
  const int tEff = effectiveTDecode(l);

  std::vector<int> sent(static_cast<size_t>(totalData)), received(static_cast<size_t>(blockLen));
  BitStream bits(in.ConsumeIntegral<uint32_t>());
  for (int& b : sent) b = bits.next();
  codec.encode_au(sent.data(), received.data());
  for (int i = 0, start = 0; i < n; start += lengths[static_cast<size_t>(i)] + stored, ++i) {
    const int span = lengths[static_cast<size_t>(i)] + stored;
    const int flips = std::min(in.ConsumeIntegralInRange<int>(0, std::max(tEff, 0)), span);
    std::vector<int> positions(static_cast<size_t>(span));
    std::iota(positions.begin(), positions.end(), 0);
    for (int f = 0; f < flips; ++f) {
      std::swap(positions[static_cast<size_t>(f)],
                positions[static_cast<size_t>(in.ConsumeIntegralInRange<int>(f, span - 1))]);
      received[static_cast<size_t>(start + positions[static_cast<size_t>(f)])] ^= 1;
    }
  }
  decodeAndCheck(codec, l, received, &sent);

  for (int& b : received) b = in.ConsumeIntegral<uint8_t>() & 1;
  decodeAndCheck(codec, l, received, nullptr);

  // The per-codeword diagnostics copy 2t and 2*tDecode+1 entries each.
  std::vector<std::vector<int>> rows(static_cast<size_t>(n),
                                     std::vector<int>(static_cast<size_t>(2 * l.t + 2 * std::max(tEff, 0) + 1)));
  std::vector<int*> rowPointers(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) rowPointers[static_cast<size_t>(i)] = rows[static_cast<size_t>(i)].data();
  codec.getSyndromes(rowPointers.data());
  codec.getLambda(rowPointers.data());
  return 0;
}
