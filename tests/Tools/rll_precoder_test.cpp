// Precoder filters, parity framing and dummy-position helpers.
#include <random>
#include <vector>

#include "Tools/precoder.h"
#include "support/differential.h"
#include "support/testutil.h"

namespace {

using Bits = std::vector<int>;
using qfbtest::randomBits;
const Bits kDicode{1, 0, -1};  // 1/(1+D^2)

// y[t] = x[t] ^ (XOR of y[t-j] over the nonzero taps j >= 1), with the
// outputs before the start given newest first in `past` (zero beyond).
Bits feedbackFilter(const Bits& taps, const Bits& x, const Bits& past = {}) {
  Bits y(past.rbegin(), past.rend());
  y.insert(y.end(), x.begin(), x.end());
  for (std::size_t t = past.size(); t < y.size(); ++t)
    for (std::size_t j = 1; j < taps.size() && j <= t; ++j) y[t] ^= taps[j] != 0 ? y[t - j] : 0;
  return Bits(y.begin() + past.size(), y.end());
}

// Positions 33 and 34 of each 35-bit framed block.
std::vector<int> parityPositions(int blocks) {
  std::vector<int> pos;
  for (int b = 0; b < blocks; ++b) pos.insert(pos.end(), {35 * b + 33, 35 * b + 34});
  return pos;
}

TEST(RllPrecoder, PrecodeAndUnprecodeAreInverseAndOneTapIsIdentity) {
  std::mt19937 rng(2);
  const std::vector<Bits> tapSets = {{1}, {1, 1}, {1, 0, -1}, {1, -1, 0, 1}};
  for (const Bits& taps : tapSets) {
    Precoder p(taps.data(), static_cast<int>(taps.size()));
    EXPECT_EQ(p.is_trivial(), taps.size() == 1);
    const Bits x = randomBits(rng, 64);
    Bits y = x;
    // Two calls carry the delays across the split.
    p.precode(y.data(), 25);
    p.precode(y.data() + 25, 39);
    EXPECT_EQ(y, feedbackFilter(taps, x)) << taps.size();
    p.reset();
    p.unprecode(y.data(), 64);
    EXPECT_EQ(y, x) << taps.size();
  }
  Precoder identity;
  Bits x = randomBits(rng, 9), y = x;
  identity.precode(y.data(), 9);
  EXPECT_EQ(y, x);
}

TEST(RllPrecoder, InitialDelaysSeedTheFilter) {
  const struct { int init[2]; int d0, d1; } cases[] = {
      {{-1, -1}, 0, 0}, {{1, 0}, 1, 0}, {{0, 1}, 0, 1}, {{1, -1}, 1, 0}};
  const Bits x{1, 0, 0, 1, 1, 0, 1};
  for (const auto& c : cases) {
    Precoder p(kDicode.data(), 3);
    p.init_delays(c.init);
    Precoder copy(p);
    p.reset();
    int delays[2];
    copy.getDelays(delays);
    EXPECT_EQ(Bits(delays, delays + 2), (Bits{c.d0, c.d1}));
    Bits y = x;
    copy.precode(y.data(), 7);
    EXPECT_EQ(y, feedbackFilter(kDicode, x, {c.d1, c.d0}));
  }
  Precoder p(kDicode.data(), 3);
  const int bad[] = {0, 2};
  EXPECT_EXIT_PRINTS(p.init_delays(bad), 255, "RPECODER::init_delays: wromg initial values\n");
}

TEST(RllPrecoder, InsertBfPrecodeAppendsTheLastTwoPrecoderOutputs) {
  std::mt19937 rng(4);
  Precoder p(kDicode.data(), 3);
  const Bits in = randomBits(rng, 66);
  Bits out(71, -1);
  // Only one of the two lengths needs to be regular: 71 is not 35k.
  p.InsertBfPrecode(in.data(), 66, out.data(), 71);
  EXPECT_EQ(out[70], -1);
  for (int b = 0; b < 2; ++b) {
    const Bits block(in.begin() + 33 * b, in.begin() + 33 * b + 33), y = feedbackFilter(kDicode, block);
    EXPECT_EQ(Bits(out.begin() + 35 * b, out.begin() + 35 * b + 33), block);
    EXPECT_EQ(Bits(out.begin() + 35 * b + 33, out.begin() + 35 * b + 35), Bits(y.end() - 2, y.end()));
  }
  const std::vector<int> pos = parityPositions(2);
  Bits data(66);
  Precoder::RemoveDummy(out.data(), 70, data.data(), 66, pos.data(), 4);
  EXPECT_EQ(data, in);
}

TEST(RllPrecoder, InsertBfPostcodeFillsListedPositions) {
  std::mt19937 rng(5);
  Precoder p(kDicode.data(), 3);
  const int blocks = 35, inLen = 33 * blocks, outLen = 35 * blocks;
  Bits in = randomBits(rng, inLen);
  in.back() = 1;
  Bits expected;
  for (int b = 0; b < blocks; ++b) {
    expected.insert(expected.end(), in.begin() + 33 * b, in.begin() + 33 * b + 33);
    expected.insert(expected.end(), {0, 0});
  }
  // Entries 68 and 69 may come in either order; the list is given back as it was.
  for (bool swapped : {false, true}) {
    std::vector<int> list = parityPositions(blocks);
    if (swapped) std::swap(list[68], list[69]);
    const std::vector<int> given = list;
    Bits out(outLen, -1);
    p.InsertBfPostcode(in.data(), inLen, out.data(), outLen, list.data());
    EXPECT_EQ(out, expected) << swapped;
    EXPECT_EQ(list, given);
  }
  // With 69 positions (only the input length regular) the list is walked as
  // given: an out-of-order entry just past its end is not swapped in.
  std::vector<int> list = parityPositions(blocks);
  list[69] = outLen - 3;
  Bits out(outLen - 1, -1);
  p.InsertBfPostcode(in.data(), inLen, out.data(), outLen - 1, list.data());
  EXPECT_EQ(out, Bits(expected.begin(), expected.end() - 1));
}

TEST(RllPrecoder, DummyPositionsGoInAndOut) {
  const std::vector<int> pos{0, 3, 4, 9};
  for (int i = -1; i <= 10; ++i)
    EXPECT_EQ(Precoder::PositionNotParity(i, pos.data(), 4), i != 0 && i != 3 && i != 4 && i != 9) << i;
  const Bits in{1, 1, 0, 1, 1, 1};
  Bits out(10, -1), back(6, -1);
  Precoder::InsertDummy(in.data(), 6, out.data(), 10, pos.data(), 4);
  EXPECT_EQ(out, (Bits{0, 1, 1, 0, 0, 0, 1, 1, 1, 0}));
  Precoder::RemoveDummy(out.data(), 10, back.data(), 6, pos.data(), 4);
  EXPECT_EQ(back, in);
}

TEST(RllPrecoder, IrregularLengthsAreFatal) {
  Precoder p(kDicode.data(), 3);
  Bits a(80), b(80);
  std::vector<int> pos(80, 0);
  const char* dummyMsg = "Input or Output Length is not regular in RemoveDummy()\n";
  EXPECT_EXIT_PRINTS(p.InsertBfPrecode(a.data(), 34, b.data(), 36), 255,
                     "Input or Output Length is not regular in InsertBfPrecode()\n");
  EXPECT_EXIT_PRINTS(p.InsertBfPostcode(a.data(), 32, b.data(), 34, pos.data()), 255,
                     "Input or Output Length is not regular in InsertBfPostcode()\n");
  EXPECT_EXIT_PRINTS(Precoder::RemoveDummy(a.data(), 10, b.data(), 7, pos.data(), 2), 255, dummyMsg);
  EXPECT_EXIT_PRINTS(Precoder::InsertDummy(a.data(), 7, b.data(), 10, pos.data(), 2), 255, dummyMsg);
}

}  // namespace
