// The flash adapter checked from outside with arithmetic of its own (the
// random layouts against the plain reference are in the differential test):
// the block layout, the stored word of every codeword, and the syndromes and
// locators it reports.
#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "api/FlashBCH.h"
#include "api/codec_reference.h"
#include "support/testutil.h"

namespace {

using V = std::vector<int>;
using qfbtest::flipDistinct;
using qfbtest::randomBits;

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
