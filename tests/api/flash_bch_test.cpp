// The flash adapter FlashBCH. Against the plain per-codeword reference
// adapter on random layouts: every init parameter, clean blocks, 0..t+5
// errors per codeword (padding included), random blocks, and the syndromes
// and locators kept per codeword across successive decodes. From outside,
// with arithmetic of its own: the block layout, the stored word of every
// codeword, and the syndromes and locators it reports. (The exported
// functions wrap this class; the packed-codec test compares them codeword
// for codeword.)
#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "api/FlashBCH.h"
#include "bch/bch.h"
#include "support/differential.h"
#include "support/fields.h"
#include "support/referenceFlashBch.h"
#include "support/testutil.h"
#include "api/codec_reference.h"

namespace {

using V = std::vector<int>;
using qfbtest::flipDistinct;
using qfbtest::randomBits;

struct Layout {
  V lengths;
  int t, tDecode, lengthUnit, placement;
  bool bypass, byteAlign;
};

int messageLength(int len, int unit) { return unit == 0 ? len : (len + unit - 1) / unit * unit; }

// Round r has kind r mod 20, so that the first rounds already hold t = 0
// (kind 0), bypass (1) and unaligned parity (3, 7, ...) however few there are.
Layout randomLayout(std::mt19937& rng, int round) {
  Layout l;
  const int kind = round % 20;
  l.t = kind == 0 ? 0 : qfbtest::randomT(rng);
  l.bypass = kind == 1;
  l.byteAlign = kind % 4 != 3;
  const int limits[] = {-1, -1, 0, qfbtest::uniformInt(rng, 1, std::max(l.t, 1)), l.t + 2};
  l.tDecode = limits[qfbtest::uniformInt(rng, 0, 4)];
  const int units[] = {0, 0, 8, 64, qfbtest::uniformInt(rng, 1, 300)};
  l.lengthUnit = units[qfbtest::uniformInt(rng, 0, 4)];
  l.placement = qfbtest::uniformInt(rng, 0, 2) == 2 ? 1 : 0;
  // The reference rebuilds the code per codeword; large t gets short words.
  const int kMax = std::min(32767 - 15 * l.t, l.t > 48 ? 2500 : 12000);
  l.lengths.resize(qfbtest::uniformInt(rng, 1, 4));
  for (int& len : l.lengths) {
    // With placement 1 the reference reads the parity from the data, so
    // the data must be at least as long as the stored parity.
    const int lo = l.placement == 1 ? 15 * l.t + 8 : 1;
    do len = qfbtest::logUniformInt(rng, lo, std::max(kMax, lo));
    while (messageLength(len, l.lengthUnit) > 32767 - 15 * l.t);
  }
  return l;
}

// Per-codeword syndromes and locators of both adapters.
template <class Codec>
std::pair<std::vector<V>, std::vector<V>> diagnostics(Codec& codec, int count, int t, int lambdaLen) {
  std::vector<V> syn(count, V(2 * t, -9)), lam(count, V(lambdaLen, -9));
  std::vector<int*> s(count), l(count);
  for (int i = 0; i < count; ++i) s[i] = syn[i].data(), l[i] = lam[i].data();
  codec.getSyndromes(s.data());
  codec.getLambda(l.data());
  return {syn, lam};
}

TEST(FlashDifferential, RandomLayoutsAgreeWithTheReference) {
  std::mt19937 rng(1021);
  FlashBCH codec;
  ReferenceFlashBCH ref;
  const int rounds = qfbtest::differentialRounds(14);
  for (int round = 0; round < rounds; ++round) {
    const Layout l = randomLayout(rng, round);
    const int count = static_cast<int>(l.lengths.size());
    SCOPED_TRACE(::testing::Message() << "round " << round << " t=" << l.t << " tDecode=" << l.tDecode << " unit="
                                      << l.lengthUnit << " placement=" << l.placement << " bypass=" << l.bypass
                                      << " align=" << l.byteAlign << " first len=" << l.lengths[0]);
    V lengths(l.lengths);
    codec.init(count, lengths.data(), l.t, l.bypass, l.byteAlign, l.tDecode, l.lengthUnit, l.placement);
    ref.init(count, lengths.data(), l.t, l.bypass, l.byteAlign, l.tDecode, l.lengthUnit, l.placement);
    ASSERT_EQ(codec.get_parity_length(), ref.get_parity_length());
    const int stored = ref.get_parity_length();
    const int dataBits = std::accumulate(lengths.begin(), lengths.end(), 0);
    const int lambdaLen = std::max(2 * std::min(l.tDecode == -1 ? l.t : l.tDecode, l.t) + 1, 0);

    for (int block = 0; block < 3; ++block) {
      V data = randomBits(rng, dataBits);
      // Now and then entries other than 0 and 1, which the plain arithmetic
      // treats in its own ways (by value in sums mod 2, as one when tested).
      if (round % 5 == 4)
        for (int j = 0; j < 3; ++j) data[qfbtest::uniformInt(rng, 0, dataBits - 1)] = qfbtest::uniformInt(rng, -2, 3);
      // A guard of 64 entries past the block shows any write beyond it.
      V enc(dataBits + count * stored + 64, -9), encRef(enc);
      codec.encode_au(V(data).data(), enc.data());
      ref.encode_au(data.data(), encRef.data());
      ASSERT_EQ(enc, encRef);

      V received = enc;
      if (round % 5 == 3)
        for (int j = 0; j < 3; ++j)
          received[qfbtest::uniformInt(rng, 0, dataBits + count * stored - 1)] = qfbtest::uniformInt(rng, -2, 3);
      for (int i = 0, at = 0; i < count; at += lengths[i] + stored, ++i) {
        const int errors = block == 2 && i == 0 ? -1 : qfbtest::uniformInt(rng, 0, l.t + 5);
        if (errors < 0) {
          const V noise = randomBits(rng, lengths[i] + stored);
          std::copy(noise.begin(), noise.end(), received.begin() + at);
        } else {
          flipDistinct(rng, received.data() + at, lengths[i] + stored, errors);
        }
      }
      V out(dataBits + 64, -9), outRef(out), results(count, -9), resultsRef(results);
      ASSERT_EQ(codec.decode_au(V(received).data(), out.data(), results.data()),
                ref.decode_au(received.data(), outRef.data(), resultsRef.data()));
      EXPECT_EQ(results, resultsRef);
      EXPECT_EQ(out, outRef);
      EXPECT_EQ(diagnostics(codec, count, l.t, lambdaLen), diagnostics(ref, count, l.t, lambdaLen));
    }
  }
}

// With placement 1 the decoder takes its parity from the first data bits,
// so random blocks are almost never correctable. A block is made
// correctable by searching the first 15 data bits x for a fixed point
// parity([x, rest, fill]) = x of the t = 1 code; one flipped data bit then
// has to be corrected at its own offset, with the fill after the data.
TEST(FlashDifferential, PlacementOneCorrectsDataBits) {
  const auto field = qfbtest::codecField();
  int len = 40;
  const int k = 64;
  BCH code(field.get(), 0, 1, 1, k);
  std::mt19937 rng(15);
  V message(k, 0), parity(15);
  bool found = false;
  while (!found) {
    for (int i = 15; i < len; ++i) message[i] = static_cast<int>(rng() & 1);
    for (int x = 0; x < (1 << 15) && !found; ++x) {
      for (int i = 0; i < 15; ++i) message[i] = (x >> (14 - i)) & 1;
      code.encode_parity(message.data(), parity.data());
      found = std::equal(parity.begin(), parity.end(), message.begin());
    }
  }
  FlashBCH codec;
  ReferenceFlashBCH ref;
  codec.init(1, &len, 1, false, true, -1, k, 1);
  ref.init(1, &len, 1, false, true, -1, k, 1);
  for (int flip = 15; flip < len; flip += 6) {
    V block(len + 16, 0);
    std::copy(message.begin(), message.begin() + len, block.begin());
    block[flip] ^= 1;
    V out(len, -9), outRef(len, -9);
    EXPECT_EQ(codec.decode_au(block.data(), out.data(), nullptr), ref.decode_au(block.data(), outRef.data(), nullptr));
    EXPECT_EQ(out, outRef) << flip;
    EXPECT_TRUE(std::equal(out.begin(), out.end(), message.begin())) << flip;
  }
}

// Each codeword is stored as its data, then parity making data + 15t bits a
// codeword of the shortened code (fill zeros of a length unit sit in front,
// unstored), then zero padding; t flips per codeword and random padding decode.
TEST(FlashBCH, BlockLayouts) {
  struct Case { V lengths; int t; bool align; int unit, stored; };
  const Case cases[] = {{{96}, 8, true, 0, 120},   {{96}, 5, true, 0, 80},          {{96}, 5, false, 0, 75},
                        {{96}, 1, true, 0, 16},    {{100}, 4, true, 64, 64},        {{100, 200}, 2, true, 0, 32},
                        {{100, 200, 64}, 5, true, 0, 80}, {{50, 70}, 0, true, 0, 0}};
  FlashBCH codec;
  std::mt19937 rng(2);
  for (Case c : cases) {
    SCOPED_TRACE(::testing::Message() << "t=" << c.t << " unit=" << c.unit << " codewords=" << c.lengths.size());
    const int count = int(c.lengths.size()), total = std::accumulate(c.lengths.begin(), c.lengths.end(), 0);
    codec.init(count, c.lengths.data(), c.t, false, c.align, -1, c.unit, 0);
    ASSERT_EQ(codec.get_parity_length(), c.stored);
    V data = randomBits(rng, total), block(total + count * c.stored, -1), back(total, -1), results(count, -1);
    codec.encode_au(data.data(), block.data());
    V noisy = block;
    for (int i = 0, at = 0, d = 0; i < count; at += c.lengths[i] + c.stored, d += c.lengths[i], ++i) {
      const int len = c.lengths[i], cwLen = len + 15 * c.t;
      EXPECT_TRUE(std::equal(data.begin() + d, data.begin() + d + len, block.begin() + at));
      EXPECT_TRUE(qfbtest::isCodeword(V(block.begin() + at, block.begin() + at + cwLen), c.t));
      EXPECT_EQ(std::count(block.begin() + at + cwLen, block.begin() + at + len + c.stored, 0), c.stored - 15 * c.t);
      flipDistinct(rng, noisy.data() + at, cwLen, c.t);
      for (int p = cwLen; p < len + c.stored; ++p) noisy[at + p] ^= int(rng() & 1);
    }
    EXPECT_EQ(codec.decode_au(noisy.data(), back.data(), results.data()), 0);
    EXPECT_EQ(results, V(count, 0));
    EXPECT_EQ(back, data);
  }
}

// Lambda(x) = prod (1 + alpha^deg x) over the error degrees, at most
// 2 tDecode + 1 entries copied; syndromes are those of the received word.
TEST(FlashBCH, DecodeLimitAndLocators) {
  FlashBCH codec;
  int len = 512;
  const int n = 512 + 120;
  codec.init(1, &len, 8, false, true, 3, 0, 0);
  std::mt19937 rng(5);
  V data = randomBits(rng, 512), noisy(n), back(512), lambda(10, -7), syndromes(16);
  codec.encode(data.data(), noisy.data(), 0);
  const int positions[] = {7, 300, 600};
  for (int p : positions) noisy[p] ^= 1;
  EXPECT_EQ(codec.decode(noisy.data(), back.data(), 0), 0);
  EXPECT_EQ(back, data);
  int* lambdaRow[] = {lambda.data()};
  int* syndromeRow[] = {syndromes.data()};
  codec.getLambda(lambdaRow);
  codec.getSyndromes(syndromeRow);
  EXPECT_EQ(lambda[0], 1);
  EXPECT_NE(lambda[3], 0);
  EXPECT_EQ(V(lambda.begin() + 4, lambda.end()), (V{0, 0, 0, -7, -7, -7}));
  const V locator(lambda.begin(), lambda.begin() + 7);
  for (int p : positions) EXPECT_EQ(qfbtest::evaluateAscending(locator, qfbtest::alphaPower(-(n - 1 - p))), 0) << p;
  EXPECT_EQ(syndromes, qfbtest::syndromesOf(noisy, 16));
  noisy[900 % n] ^= 1;  // four errors: beyond the limit of three
  EXPECT_EQ(codec.decode(noisy.data(), back.data(), 0), 1);
  EXPECT_TRUE(std::equal(back.begin(), back.end(), noisy.begin()));
}

}  // namespace
