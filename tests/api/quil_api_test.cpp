// The exported C interface as a host sees it: lifecycle, layout, the test
// channel, and the calls that are made safe outside the calling order (the
// coding itself is compared with the packed codec elsewhere); hostile arrays
// and layouts: elements other than 0 and 1 are read as their lowest bit
// wherever they enter, and a block too long for int offsets is refused at
// initialisation.
#include <algorithm>
#include <climits>
#include <cmath>
#include <filesystem>
#include <random>
#include <vector>

#include "api/codec_reference.h"
#include "quilFlashBCH.h"
#include "support/testutil.h"

namespace {

using V = std::vector<int>;
using qfbtest::randomBits;

// Each test starts from, and leaves, a library with no instance.
class QuilApi : public ::testing::Test {
 protected:
  void SetUp() override { quilReleaseFlashBCH(); }
  void TearDown() override { quilReleaseFlashBCH(); }
};

TEST_F(QuilApi, NoInstanceMeansMinusOne) {
  V in(64), out(256);
  int len = 64;
  auto codecCallsRefuse = [&](const char* state) {
    EXPECT_EQ(quilEncodeBCH(in.data(), out.data()), -1) << state;
    EXPECT_EQ(quilDecodeBCH(out.data(), in.data()), -1) << state;
    EXPECT_EQ(quilGetParityLength(), -1) << state;
  };
  codecCallsRefuse("no instance");
  EXPECT_EQ(quilInitializeFlashBCH(1, &len, 4), -1);
  EXPECT_EQ(quilReleaseFlashBCH(), -1);
  ASSERT_EQ(quilCreateFlashBCH(), 0);
  codecCallsRefuse("created, never configured");
  // Released: everything refuses again, a second release too.
  EXPECT_EQ(quilReleaseFlashBCH(), 0);
  EXPECT_EQ(quilReleaseFlashBCH(), -1);
  codecCallsRefuse("released");
  EXPECT_EQ(quilInitializeFlashBCH(1, &len, 4), -1);
}

TEST_F(QuilApi, VersionWritesExactlySixBytes) {
  char buf[8] = "#######";
  quilFlashBCHVersion(buf);
  EXPECT_EQ(std::string(buf, 6), std::string("1.0.1\0", 6));
  EXPECT_EQ(buf[6], '#');
}

TEST_F(QuilApi, CreationLeavesNoFileAndNeedsNoWritableDirectory) {
  qfbtest::ScratchDir dir;
  ASSERT_EQ(quilCreateFlashBCH(), 0);
  EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
  int len = 1024;
  ASSERT_EQ(quilInitializeFlashBCH(1, &len, 8), 0);
  std::mt19937 rng(1);
  V data = randomBits(rng, 1024), writable(1024 + 120), readOnly(1024 + 120);
  quilEncodeBCH(data.data(), writable.data());

  std::filesystem::permissions(dir.path(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
  ASSERT_EQ(quilCreateFlashBCH(), 0);  // replaces the first instance
  ASSERT_EQ(quilInitializeFlashBCH(1, &len, 8), 0);
  quilEncodeBCH(data.data(), readOnly.data());
  EXPECT_EQ(readOnly, writable);
  EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
}

TEST_F(QuilApi, ParityLengthsAndLayoutChecks) {
  ASSERT_EQ(quilCreateFlashBCH(), 0);
  struct Case { V lengths; int t; int expected; };
  const Case cases[] = {
      {{1024}, 8, 120}, {{1024}, 5, 80}, {{1024}, 0, 0}, {{100, 200}, 2, 32},
      {{32767 - 15 * 128}, 128, 1920}, {{32767}, 0, 0},
  };
  for (const Case& c : cases) {
    V lengths = c.lengths;
    ASSERT_EQ(quilInitializeFlashBCH(int(lengths.size()), lengths.data(), c.t), 0) << c.t;
    EXPECT_EQ(quilGetParityLength(), c.expected) << c.t;
  }
  // Unusable layouts are refused and the last good configuration stays.
  int ok = 1024;
  ASSERT_EQ(quilInitializeFlashBCH(1, &ok, 5), 0);
  struct Bad { V lengths; int count; int t; };
  const Bad bad[] = {{{1024}, 0, 5},   {{1024}, -3, 5},  {{0}, 1, 5},   {{1024, -1}, 2, 5},
                     {{1024}, 1, -1},  {{1024}, 1, 129}, {{32767 - 15 * 8 + 1}, 1, 8}, {{}, 1, 5}};
  for (const Bad& b : bad) {
    V lengths = b.lengths;  // empty: a null length array
    EXPECT_EQ(quilInitializeFlashBCH(b.count, lengths.empty() ? nullptr : lengths.data(), b.t), -1)
        << b.count << " " << b.t;
    EXPECT_EQ(quilGetParityLength(), 80);
  }
}

TEST_F(QuilApi, RandomBitsFollowTheTwisterStream) {
  V a(1000), b(1000), c(1000);
  quilGenerateRandomBits(a.data(), 1000, 77);  // works before creation
  ASSERT_EQ(quilCreateFlashBCH(), 0);
  quilGenerateRandomBits(c.data(), 1000, 5);
  quilGenerateRandomBits(b.data(), 1000, 77);
  EXPECT_EQ(a, b);
  std::mt19937 reference(77);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(a[i], reference() > 0x80000000u ? 1 : 0) << i;
}

TEST_F(QuilApi, GaussianChannel) {
  ASSERT_EQ(quilCreateFlashBCH(), 0);
  V bits{0, 1, 1, 0, 1};
  std::vector<double> out(5);
  quilAddGaussianNoise(bits.data(), out.data(), 5, 300.0, 3);
  for (int i = 0; i < 5; ++i) EXPECT_NEAR(out[i], 1.0 - 2 * bits[i], 1e-12);

  // The first samples follow the polar method on the seeded twister.
  quilAddGaussianNoise(bits.data(), out.data(), 5, 6.0, 11);
  std::mt19937 mt(11);
  const double a = std::pow(10.0, -6.0 / 20.0);
  for (int i = 0; i < 5; ++i) {
    double x1, x2, s;
    do {
      x1 = 2 * (mt() * 2.3283064365386963e-10) - 1;
      x2 = 2 * (mt() * 2.3283064365386963e-10) - 1;
      s = x1 * x1 + x2 * x2;
    } while (s >= 1 || s == 0);
    EXPECT_NEAR(out[i], (1 - 2 * bits[i]) + 2 * a * x2 * std::sqrt(-2 * std::log(s) / s), 1e-12) << i;
  }

}

TEST_F(QuilApi, SwapNeedsNoInstance) {
  V in(32), out(32);
  for (int i = 0; i < 32; ++i) in[i] = ((i / 8) >> (i % 2)) & 1;  // four distinct bytes
  quilSwapData(in.data(), 32, out.data(), 32, 8, 1, 0);
  for (int i = 0; i < 32; ++i) EXPECT_EQ(out[i], in[8 * (3 - i / 8) + i % 8]) << i;
}

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

TEST_F(QuilApi, StrayBitValuesActAsTheirLowestBit) {
  ASSERT_EQ(quilCreateFlashBCH(), 0);
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

TEST_F(QuilApi, BlocksBeyondIntOffsetsAreRefused) {
  ASSERT_EQ(quilCreateFlashBCH(), 0);
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
