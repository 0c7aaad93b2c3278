// Fuzz target: FlashBCH::decode_au on arbitrary received blocks under a
// spread of valid layouts.
//
// A layout: 1 .. 4 codewords of 1 .. 256 data bits, t in 0 .. 8 (one
// layout in 32: 9 .. 128 with up to two codewords), bypass, byte-aligned
// parity, tDecode in -1 .. t+1 (above t is capped to t), lengthUnit 0 or
// 1 .. 128, placement 0 or 1: enough to reach every path of the adapter
// (whole and partial bytes, fill before and after the data), and every such
// code fits GF(2^15).
//
// Building a layout's codes costs a hundred times more than decoding with
// them, and libFuzzer picks the input to mutate from its whole corpus, so a
// layout drawn freely from the input would almost never meet a configured
// codec again. The input therefore picks one of kLayouts layouts, each
// drawn once from its own fixed seed and configured on first use; the
// fuzzer's search goes into the blocks.
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
#include <cstdint>
#include <memory>
#include <vector>

#include "api/FlashBCH.h"
#include "fuzz/fuzz_check.h"
#include "support/xorshift.h"

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

constexpr int kLayouts = 64;

Layout layoutNumber(int index) {
  qfbtest::XorShift32 draw(0x9E3779B9u * static_cast<uint32_t>(index + 1));
  for (int warmUp = 0; warmUp < 4; ++warmUp) draw.next();
  Layout l;
  // A code's cost grows with t (its generator, encoder, syndromes and
  // search), so wide t comes with at most two codewords.
  const bool wideT = index % 32 == 31;
  l.t = wideT ? draw.inRange(9, 128) : draw.inRange(0, 8);
  l.lengths.resize(static_cast<size_t>(draw.inRange(1, wideT ? 2 : 4)));
  for (int& len : l.lengths) len = draw.inRange(1, 256);
  l.bypass = draw.inRange(0, 7) == 0;
  l.byteAlign = draw.bit();
  l.tDecode = draw.inRange(-1, l.t + 1);
  l.lengthUnit = draw.bit() ? 0 : draw.inRange(1, 128);
  l.placement = draw.bit();
  return l;
}

// Layout number index and its configured codec, both made on first use.
struct Configured {
  Layout layout;
  std::unique_ptr<FlashBCH> codec;
};

Configured& configured(int index) {
  static std::vector<Configured> all(kLayouts);
  Configured& c = all[static_cast<size_t>(index)];
  if (!c.codec) {
    c.layout = layoutNumber(index);
    c.codec = std::make_unique<FlashBCH>();
    std::vector<int> lengths = c.layout.lengths;
    c.codec->init(static_cast<int>(lengths.size()), lengths.data(), c.layout.t, c.layout.bypass,
                  c.layout.byteAlign, c.layout.tDecode, c.layout.lengthUnit, c.layout.placement);
  }
  return c;
}

// The decoder's real error limit after init's mending of tDecode.
int effectiveTDecode(const Layout& l) { return l.tDecode == -1 || l.tDecode > l.t ? l.t : l.tDecode; }

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
  FUZZ_CHECK(fuzz::allWithin(results, 0, 1), "a per-codeword result is not 0 or 1");
  FUZZ_CHECK(std::accumulate(results.begin(), results.end(), 0) == uncorrectable,
             "the result is not the sum of the per-codeword results");
  FUZZ_CHECK(block == received, "decode_au modified the received block");
  FUZZ_CHECK(fuzz::allWithin(decoded, 0, 1), "a decoded element is not a bit");

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

FUZZ_MUTE_AT_START(std::cout)

// Each layout serves two blocks: one within the limit, one of arbitrary bits.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  Configured& c = configured(in.ConsumeIntegralInRange<int>(0, kLayouts - 1));
  const Layout& l = c.layout;
  FlashBCH& codec = *c.codec;
  const std::vector<int>& lengths = l.lengths;
  const int n = static_cast<int>(lengths.size());
  const int stored = codec.get_parity_length();
  const int totalData = std::accumulate(lengths.begin(), lengths.end(), 0);
  const int blockLen = totalData + n * stored;
  const int tEff = effectiveTDecode(l);

  std::vector<int> sent(static_cast<size_t>(totalData)), received(static_cast<size_t>(blockLen));
  qfbtest::XorShift32 bits(in.ConsumeIntegral<uint32_t>());
  for (int& b : sent) b = bits.bit();
  codec.encode_au(sent.data(), received.data());
  for (int i = 0, start = 0; i < n; start += lengths[static_cast<size_t>(i)] + stored, ++i) {
    const int span = lengths[static_cast<size_t>(i)] + stored;
    const int flips = std::min(in.ConsumeIntegralInRange<int>(0, std::max(tEff, 0)), span);
    for (int p : fuzz::distinctPositions(in, span, flips)) received[static_cast<size_t>(start + p)] ^= 1;
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
