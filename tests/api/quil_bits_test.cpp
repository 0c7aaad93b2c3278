// The C interface on hostile arrays and layouts: elements other than 0 and
// 1 are read as their lowest bit wherever they enter, and a block too long
// for int offsets is refused at initialisation.
#include <algorithm>
#include <climits>
#include <random>
#include <vector>

#include "api/codec_reference.h"
#include "quilFlashBCH.h"
#include "support/testutil.h"

namespace {

using V = std::vector<int>;

class QuilBits : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(quilCreateFlashBCH(), 0); }
  void TearDown() override { quilReleaseFlashBCH(); }
};

// Replaces every fourth element by a stray value of the same lowest bit.
V withStrayValues(const V& bits) {
  const int odd[] = {INT_MAX, -1, 3, INT_MIN + 1}, even[] = {INT_MIN, -2, 2, INT_MAX - 1};
  V out = bits;
  for (size_t i = 0; i < out.size(); i += 4) {
    const size_t kind = (i / 4) % 4;
    out[i] = out[i] ? odd[kind] : even[kind];
  }
  return out;
}

TEST_F(QuilBits, StrayValuesActAsTheirLowestBit) {
  V lengths{300, 77};
  ASSERT_EQ(quilInitializeFlashBCH(2, lengths.data(), 6), 0);
  const int stored = quilGetParityLength(), dataBits = 377, blockBits = dataBits + 2 * stored;
  std::mt19937 rng(7);
  V data = qfbtest::randomBits(rng, dataBits), block(blockBits), strayBlock(blockBits, -5);
  ASSERT_EQ(quilEncodeBCH(data.data(), block.data()), 0);
  ASSERT_EQ(quilEncodeBCH(withStrayValues(data).data(), strayBlock.data()), 0);
  EXPECT_EQ(strayBlock, block);

  for (int e = 0; e < 6; ++e) block[static_cast<size_t>(41 * e + 3)] ^= 1;  // six errors in codeword 0
  V out(dataBits, -5), strayOut(dataBits, -5);
  EXPECT_EQ(quilDecodeBCH(block.data(), out.data()), 0);
  EXPECT_EQ(out, data);
  EXPECT_EQ(quilDecodeBCH(withStrayValues(block).data(), strayOut.data()), 0);
  EXPECT_EQ(strayOut, data);

  V bits = qfbtest::randomBits(rng, 64);
  std::vector<double> noisy(64), strayNoisy(64);
  quilAddGaussianNoise(bits.data(), noisy.data(), 64, 3.0, 11);
  quilAddGaussianNoise(withStrayValues(bits).data(), strayNoisy.data(), 64, 3.0, 11);
  EXPECT_EQ(strayNoisy, noisy);
}

TEST_F(QuilBits, BlocksBeyondIntOffsetsAreRefused) {
  // t = 0 stores no parity, so the block is the data alone: INT_MAX
  // elements fit, one more does not, and the refusal keeps the layout.
  V lengths;
  for (long long left = INT_MAX; left > 0; left -= 32767) lengths.push_back(static_cast<int>(std::min(left, 32767LL)));
  const int n = static_cast<int>(lengths.size());
  int small = 64;
  ASSERT_EQ(quilInitializeFlashBCH(1, &small, 4), 0);
  ++lengths.back();
  EXPECT_EQ(quilInitializeFlashBCH(n, lengths.data(), 0), -1);
  EXPECT_EQ(quilGetParityLength(), 64);
  --lengths.back();
  EXPECT_EQ(quilInitializeFlashBCH(n, lengths.data(), 0), 0);
  EXPECT_EQ(quilGetParityLength(), 0);
  // With t = 8 every codeword adds 120 stored parity bits.
  lengths.assign(static_cast<size_t>(INT_MAX / 32767 + 1), 32767 - 120);
  EXPECT_EQ(quilInitializeFlashBCH(static_cast<int>(lengths.size()), lengths.data(), 8), -1);
}

}  // namespace
