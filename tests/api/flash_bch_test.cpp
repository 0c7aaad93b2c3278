// The flash adapter through its C++ interface: every init parameter, the
// block layout, per-codeword results, syndromes and locators.
#include <algorithm>
#include <functional>
#include <numeric>
#include <random>
#include <vector>

#include "api/FlashBCH.h"
#include "api/codec_reference.h"
#include "bch/bch.h"
#include "gf/exp2Int15.h"
#include "gf/gf2m.h"
#include "support/testutil.h"

namespace {

using V = std::vector<int>;
using qfbtest::flipDistinct;
using qfbtest::randomBits;

// One row of getSyndromes or getLambda for a single-codeword layout.
V firstRow(FlashBCH& codec, void (FlashBCH::*get)(int**), int size) {
  V v(size, -7);
  int* rows[] = {v.data()};
  (codec.*get)(rows);
  return v;
}

TEST(FlashBCH, BypassAndZeroTCopyData) {
  FlashBCH codec;
  V len{50, 70};
  std::mt19937 rng(1);
  V data = randomBits(rng, 120);
  for (bool bypass : {true, false}) {
    codec.init(2, len.data(), bypass ? 8 : 0, bypass, true, -1, 0, 0);
    EXPECT_EQ(codec.get_parity_length(), 0);
    V block(120, -1), back(120, -1);
    codec.encode_au(data.data(), block.data());
    EXPECT_EQ(block, data);
    block[3] ^= 1;
    EXPECT_EQ(codec.decode_au(block.data(), back.data(), nullptr), 0);
    EXPECT_EQ(back, block);
  }
}

// One codeword of len bits: the data leads the stored word, len + 15t bits
// form a codeword of the shortened code (fill zeros of a length unit sit in
// front, unstored), the padding is zero on encoding and ignored on decoding,
// and t flips anywhere in the codeword are corrected.
TEST(FlashBCH, SingleCodewordLayouts) {
  struct Case { int len, t; bool align; int unit, stored; };
  const Case cases[] = {{96, 8, true, 0, 120}, {96, 5, true, 0, 80}, {96, 5, false, 0, 75},
                        {96, 1, true, 0, 16},  {96, 3, true, 0, 48}, {100, 4, true, 64, 64}};
  FlashBCH codec;
  std::mt19937 rng(2);
  for (Case c : cases) {
    SCOPED_TRACE(::testing::Message() << "t=" << c.t << " unit=" << c.unit);
    codec.init(1, &c.len, c.t, false, c.align, -1, c.unit, 0);
    ASSERT_EQ(codec.get_parity_length(), c.stored);
    const int cwLen = c.len + 15 * c.t;
    V data = randomBits(rng, c.len), block(c.len + c.stored, -1), back(c.len);
    codec.encode(data.data(), block.data(), 0);
    EXPECT_TRUE(std::equal(data.begin(), data.end(), block.begin()));
    EXPECT_TRUE(qfbtest::isCodeword(V(block.begin(), block.begin() + cwLen), c.t));
    EXPECT_EQ(std::count(block.begin() + cwLen, block.end(), 0), c.stored - 15 * c.t);
    std::fill(block.begin() + cwLen, block.end(), 1);
    flipDistinct(rng, block.data(), cwLen, c.t);
    EXPECT_EQ(codec.decode(block.data(), back.data(), 0), 0);
    EXPECT_EQ(back, data);
  }
}

TEST(FlashBCH, TwoCodewordLayout) {
  FlashBCH codec;
  V len{100, 200};
  codec.init(2, len.data(), 2, false, true, -1, 0, 0);
  std::mt19937 rng(3);
  V data = randomBits(rng, 300), block(100 + 32 + 200 + 32, -1);
  codec.encode_au(data.data(), block.data());
  EXPECT_TRUE(std::equal(data.begin() + 100, data.end(), block.begin() + 132));
  // Codeword 1 is its data followed by parity starting at element 332.
  EXPECT_TRUE(qfbtest::isCodeword(V(block.begin() + 132, block.begin() + 332 + 30), 2));
  EXPECT_FALSE(qfbtest::isCodeword(V(block.begin() + 132, block.begin() + 331 + 30), 2));
  EXPECT_EQ(std::count(block.begin() + 362, block.end(), 0), 2);
}

TEST(FlashBCH, DecodeLimitAndLocators) {
  FlashBCH codec;
  int len = 512;
  const int t = 8, tDecode = 3;
  codec.init(1, &len, t, false, true, tDecode, 0, 0);
  std::mt19937 rng(5);
  V data = randomBits(rng, 512), block(512 + 120), back(512);
  codec.encode(data.data(), block.data(), 0);
  V noisy = block;
  const int positions[] = {7, 300, 600};
  for (int p : positions) noisy[p] ^= 1;
  EXPECT_EQ(codec.decode(noisy.data(), back.data(), 0), 0);
  EXPECT_EQ(back, data);
  const V lambda = firstRow(codec, &FlashBCH::getLambda, 10);
  EXPECT_EQ(lambda[0], 1);
  EXPECT_NE(lambda[3], 0);
  // Degree 3, and 2 * tDecode + 1 entries copied, no more.
  EXPECT_EQ(V(lambda.begin() + 4, lambda.end()), (V{0, 0, 0, -7, -7, -7}));
  // Lambda(x) = prod (1 + alpha^deg x): its roots are alpha^-deg of the
  // error degrees.
  const int n = 512 + 120;
  const V locator(lambda.begin(), lambda.begin() + 7);
  for (int p : positions) EXPECT_EQ(qfbtest::evaluateAscending(locator, qfbtest::alphaPower(-(n - 1 - p))), 0) << p;
  EXPECT_EQ(firstRow(codec, &FlashBCH::getSyndromes, 16), qfbtest::syndromesOf(noisy, 16));
  // Four errors are beyond the limit of three.
  noisy[900 % n] ^= 1;
  EXPECT_EQ(codec.decode(noisy.data(), back.data(), 0), 1);
  EXPECT_TRUE(std::equal(back.begin(), back.end(), noisy.begin()));
}

TEST(FlashBCH, RandomLayoutsWithinAndBeyondT) {
  std::mt19937 rng(6);
  FlashBCH codec;
  for (int trial = 0; trial < 25; ++trial) {
    const int count = 1 + int(rng() % 4), t = int(rng() % 11);
    V len(count);
    for (int& l : len) l = 1 + int(rng() % 2000);
    codec.init(count, len.data(), t, false, true, -1, 0, 0);
    const int stored = codec.get_parity_length();
    const int total = std::accumulate(len.begin(), len.end(), 0);
    V data = randomBits(rng, total), block(total + count * stored), back(total), results(count, -1);
    codec.encode_au(data.data(), block.data());
    V noisy = block, errors(count);
    for (int i = 0, at = 0; i < count; at += len[i] + stored, ++i) {
      errors[i] = int(rng() % (t + 4));
      flipDistinct(rng, noisy.data() + at, len[i] + 15 * t, errors[i]);
    }
    const int failed = codec.decode_au(noisy.data(), back.data(), results.data());
    EXPECT_EQ(failed, std::count(results.begin(), results.end(), 1));
    V synStore(count * std::max(2 * t, 1));
    std::vector<int*> rows(count);
    for (int i = 0; i < count; ++i) rows[i] = synStore.data() + i * std::max(2 * t, 1);
    codec.getSyndromes(rows.data());
    for (int i = 0, at = 0, d = 0; i < count; at += len[i] + stored, d += len[i], ++i) {
      const V received(noisy.begin() + at, noisy.begin() + at + len[i] + 15 * t);
      const V out(back.begin() + d, back.begin() + d + len[i]);
      const V sent(data.begin() + d, data.begin() + d + len[i]);
      EXPECT_EQ(V(rows[i], rows[i] + 2 * t), qfbtest::syndromesOf(received, 2 * t));
      if (errors[i] <= t) {
        EXPECT_EQ(results[i], 0) << trial << "/" << i;
        EXPECT_EQ(out, sent);
      } else if (results[i] == 1) {
        EXPECT_TRUE(std::equal(out.begin(), out.end(), received.begin()));
      } else {
        // A miscorrection must land on a codeword within t of the received word.
        V recoded(len[i] + stored);
        codec.encode(const_cast<int*>(out.data()), recoded.data(), i);
        EXPECT_LE(std::inner_product(received.begin(), received.end(), recoded.begin(), 0, std::plus<>(),
                                     std::not_equal_to<>()),
                  t);
      }
    }
  }
}

TEST(FlashBCH, PlacementOneKeepsItsParityReading) {
  int coefficients[16] = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1};
  GF2m field(15, coefficients, 15, exp2Int15.data(), kExp2Int15Size);
  FlashBCH codec;
  int len = 200;
  const int t = 3, unit = 64, k = 256, stored = 48;
  codec.init(1, &len, t, false, true, -1, unit, 1);
  BCH code(&field, 0, t, 1, k);
  std::mt19937 rng(7);
  for (int trial = 0; trial < 4; ++trial) {
    V data = randomBits(rng, len), block(len + stored), message(k, 0), cw(k + 45);
    codec.encode(data.data(), block.data(), 0);
    std::copy(data.begin(), data.end(), message.begin());  // data first, fill after
    code.encode(message.data(), cw.data());
    EXPECT_TRUE(std::equal(data.begin(), data.end(), block.begin()));
    EXPECT_TRUE(std::equal(cw.begin() + k, cw.end(), block.begin() + len));
    // The decoder reads its parity from the start of the input.
    V received(k + 45, 0), expected(k + 45), back(len);
    std::copy(block.begin(), block.begin() + len, received.begin());
    std::copy(block.begin(), block.begin() + 45, received.begin() + k);
    const int direct = code.decode(received.data(), expected.data(), false, -1);
    EXPECT_EQ(codec.decode(block.data(), back.data(), 0), direct == 0 ? 1 : 0);
    EXPECT_TRUE(std::equal(back.begin(), back.end(), expected.begin()));
  }
}

TEST(FlashBCH, ZeroDecodeLimitPassesWordsThrough) {
  FlashBCH codec;
  int len = 64;
  codec.init(1, &len, 4, false, true, 0, 0, 0);
  std::mt19937 rng(8);
  V data = randomBits(rng, 64), block(64 + 64), back(64);
  codec.encode(data.data(), block.data(), 0);
  block[1] ^= 1;
  EXPECT_EQ(codec.decode(block.data(), back.data(), 0), 0);  // "clean": nothing decoded
  EXPECT_TRUE(std::equal(back.begin(), back.end(), block.begin()));
  EXPECT_EQ(firstRow(codec, &FlashBCH::getSyndromes, 8), V(8, 0));
  EXPECT_EQ(firstRow(codec, &FlashBCH::getLambda, 2), (V{0, -7}));
}

}  // namespace
