// The packed-bit codec against the exported int-per-bit functions on the
// same data: parity, verdicts, corrected data and parity, error positions,
// the tails of partial bytes, and the argument checks.
#include <algorithm>
#include <numeric>
#include <random>
#include <stdexcept>
#include <vector>

#include "quilFlashBCH.h"
#include "quilPackedBCH.h"
#include "api/codec_reference.h"
#include "support/testutil.h"

namespace {

using V = std::vector<int>;
using Bytes = std::vector<uint8_t>;

Bytes pack(const int* bits, int count) {
  Bytes b((count + 7) / 8, 0);
  for (int i = 0; i < count; ++i) b[i / 8] = static_cast<uint8_t>(b[i / 8] | bits[i] << (7 - i % 8));
  return b;
}

int bitAt(const Bytes& b, int i) { return (b[i / 8] >> (7 - i % 8)) & 1; }

TEST(PackedBCH, AgreesWithTheExportedFunctions) {
  qfbtest::ScratchDir scratch;
  ASSERT_EQ(quilCreateFlashBCH(), 0);
  struct Code { int k, t; };
  const Code codes[] = {{1, 1}, {13, 3}, {1000, 5}, {4096, 8}, {8191, 40}, {2999, 72}, {1234, 128}};
  std::mt19937 rng(5);
  for (const Code& c : codes) {
    SCOPED_TRACE(::testing::Message() << "k=" << c.k << " t=" << c.t);
    int k = c.k;
    ASSERT_EQ(quilInitializeFlashBCH(1, &k, c.t), 0);
    const int stored = quilGetParityLength(), r = 15 * c.t;
    quil::PackedBCH codec(c.k, c.t);
    ASSERT_EQ(codec.parityBits(), r);
    ASSERT_EQ(codec.parityBytes(), stored / 8);

    for (int errors : {0, 1, c.t / 2, c.t, c.t + 1, c.t + 3}) {
      V data = qfbtest::randomBits(rng, c.k), block(c.k + stored);
      ASSERT_EQ(quilEncodeBCH(data.data(), block.data()), 0);
      Bytes packedData = pack(data.data(), c.k), parity(codec.parityBytes(), 0xAA);
      codec.encode(packedData.data(), parity.data());
      // The stored parity bits, zero padding included, are the packed ones.
      ASSERT_EQ(parity, pack(block.data() + c.k, stored));

      V flips(c.k + r);
      std::iota(flips.begin(), flips.end(), 0);
      std::shuffle(flips.begin(), flips.end(), rng);
      flips.resize(std::min(errors, c.k + r));
      std::sort(flips.begin(), flips.end());
      for (int p : flips) block[p] ^= 1;
      V decoded(c.k);
      const int uncorrectable = quilDecodeBCH(block.data(), decoded.data());

      Bytes rxData = pack(block.data(), c.k), rxParity = pack(block.data() + c.k, r);
      // Bits past the ends are not part of the word.
      if (c.k % 8) rxData.back() = static_cast<uint8_t>(rxData.back() | (0xff >> (c.k % 8)));
      if (r % 8) rxParity.back() = static_cast<uint8_t>(rxParity.back() | (0xff >> (r % 8)));
      V positions(c.t + 1, -1);
      const quil::DecodeResult res = codec.decode(rxData.data(), rxParity.data(), positions.data());
      EXPECT_EQ(res.status == quil::DecodeStatus::Uncorrectable, uncorrectable == 1) << errors;
      for (int i = 0; i < c.k; ++i) ASSERT_EQ(bitAt(rxData, i), decoded[i]) << "data bit " << i;
      if (errors <= c.t) {
        EXPECT_EQ(res.status, errors == 0 ? quil::DecodeStatus::Clean : quil::DecodeStatus::Corrected);
        EXPECT_EQ(res.correctedBits, errors);
        EXPECT_EQ(V(positions.begin(), positions.begin() + errors), flips);
        for (int j = 0; j < r; ++j) ASSERT_EQ(bitAt(rxParity, j), bitAt(parity, j)) << "parity bit " << j;
      }
    }
  }
  EXPECT_EQ(quilReleaseFlashBCH(), 0);
}

TEST(PackedBCH, RejectsCodesOutsideTheField) {
  struct Args { int k, t; };
  const Args bad[] = {{0, 8}, {100, 0}, {100, 129}, {32767 - 15 * 8 + 1, 8}, {-5, 3}};
  for (const Args& a : bad) EXPECT_THROW(quil::PackedBCH(a.k, a.t), std::invalid_argument) << a.k << " " << a.t;
  EXPECT_NO_THROW(quil::PackedBCH(32767 - 15 * 8, 8));
}

}  // namespace
