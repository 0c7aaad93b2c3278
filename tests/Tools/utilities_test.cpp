// Bit/symbol conversions, the swap functions and the Gaussian helpers,
// against hand-worked values and an element-wise model of the swaps.
#include <cmath>
#include <numeric>
#include <random>
#include <vector>

#include "Tools/utilities.h"
#include "support/testutil.h"

namespace {

using V = std::vector<int>;

// Narrow widths are checked against the bit vectors (bit_and_index_test.cpp).
TEST(BitUtilities, WideWordsChecksAndReversal) {
  // Beyond 32 elements the sign bit repeats, and such elements add nothing.
  V wide(34);
  hex2binary(-2, wide.data(), 34);
  EXPECT_EQ((V{wide[0], wide[1], wide[2], wide[32], wide[33]}), (V{0, 1, 1, 1, 1}));
  EXPECT_EQ(binary2hex(wide.data(), 34), -2);
  hex2binary(5, wide.data(), 34);
  EXPECT_EQ(wide[33], 0);

  EXPECT_EQ(checkBinary(V{0, 1, 2, 1}.data(), 4), 2);
  EXPECT_EQ(checkBinary(V{0, 1}.data(), 2), -1);
  EXPECT_EQ(checkBinary(V{-1}.data(), 1), 0);

  V a{1, 2, 3, 4, 5};
  array_rev(a.data(), 5);
  EXPECT_EQ(a, (V{5, 4, 3, 2, 1}));
}

TEST(BitUtilities, SymbolStreamsRoundTrip) {
  std::mt19937 rng(9);
  for (int w : {1, 3, 8, 13, 32}) {
    V symbols(7), back(7), bits(7 * w);
    for (int& s : symbols) s = static_cast<int>(rng() >> (32 - w));
    symbols2bits(symbols.data(), bits.data(), 7, w);
    EXPECT_EQ(bits2symbols(bits.data(), back.data(), 7 * w + (w > 1 ? w - 1 : 0), w), 7) << w;
    EXPECT_EQ(back, symbols) << w;
    symbols2bits_rev(symbols.data(), bits.data(), 7, w);
    bits2symbols_rev(bits.data(), back.data(), 7 * w, w);
    EXPECT_EQ(back, symbols) << w;
    // MSB first: element 0 of a symbol is its top bit.
    EXPECT_EQ(bits[0], (static_cast<unsigned>(symbols[0]) >> (w - 1)) & 1u) << w;
  }
}

// Element-wise model: byte b of every whole word goes to byte B-1-b, then
// every group is reversed.
V swapModel(const V& in, int wordBits, int groupBits, bool byteSwap, bool bitSwap) {
  V mid = in;
  if (byteSwap) {
    const int B = wordBits / 8;
    for (size_t w = 0; w + wordBits <= in.size(); w += wordBits)
      for (int b = 0; b < B; ++b)
        for (int e = 0; e < 8; ++e) mid[w + 8 * (B - 1 - b) + e] = in[w + 8 * b + e];
  }
  V out = mid;
  if (bitSwap)
    for (size_t s = 0; s < in.size(); s += groupBits) {
      const size_t L = std::min<size_t>(groupBits, in.size() - s);
      for (size_t j = 0; j < L; ++j) out[s + j] = mid[s + L - 1 - j];
    }
  return out;
}

// Every combination of the two swaps against the model, on whole words and
// on a partial last word (left in byte order) and group (reversed alone).
TEST(BitUtilities, ByteAndBitSwaps) {
  std::mt19937 rng(4);
  for (int trial = 0; trial < 60; ++trial) {
    const int wordBits = 8 * (1 + trial % 8), groupBits = 1 + trial % 37;
    const int n = wordBits * (1 + trial % 3) + trial % 7;
    V in(n), got(n);
    for (int& v : in) v = static_cast<int>(rng() & 1);
    for (int mode = 0; mode < 4; ++mode) {
      byte_and_bit_swap(in.data(), n, got.data(), wordBits, groupBits, mode & 1, mode >> 1);
      ASSERT_EQ(got, swapModel(in, wordBits, groupBits, mode & 1, mode >> 1)) << trial << " " << mode;
    }
    V inPlace = in;  // the exported swap allows in == out
    byte_and_bit_swap(inPlace.data(), n, inPlace.data(), wordBits, groupBits, 1, 1);
    ASSERT_EQ(inPlace, swapModel(in, wordBits, groupBits, true, true));
  }
}

TEST(BitUtilities, GaussianAndLlr) {
  const double sigma2 = 0.5;
  EXPECT_NEAR(Gaussian(0.0, 1.0, 0.0), 1.0 / std::sqrt(2 * M_PI), 1e-9);
  EXPECT_NEAR(Gaussian(1.0, 4.0, 3.0), std::exp(-0.5) / std::sqrt(8 * M_PI), 1e-9);
  for (double x : {-2.0, -0.3, 0.0, 0.7, 1.5}) {
    // For +-1 signalling the LLR is 2x / variance.
    EXPECT_NEAR(LLR(x, sigma2, 0), 2 * x / sigma2, 1e-9) << x;
    EXPECT_NEAR(LLR(x, sigma2, 1), -2 * x / sigma2, 1e-9) << x;
  }
}

}  // namespace
