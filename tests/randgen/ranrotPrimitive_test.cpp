// RanrotB and Primitive_RNG against independent formulations of the same
// recurrences: RANROT as an ever-growing history of outputs instead of a
// ring buffer, the shift register as polynomial arithmetic modulo P(x).
#include <cstdint>
#include <vector>

#include "randgen/randgen.h"
#include "support/testutil.h"

namespace {

std::uint32_t rotl(std::uint32_t x, int r) { return (x << r) | (x >> (32 - r)); }

// x(n) = rotl(x(n-10), 13) + rotl(x(n-17), 9), with x(-17..-1) the seed words
// as the ring buffer holds them: slot 0 is the oldest, slot k was written k
// steps ago.
std::vector<std::uint32_t> ranrotHistory(std::uint32_t seed, int n) {
  std::uint32_t slot[17], s = seed;
  for (std::uint32_t& w : slot) w = s = s * 2891336453u + 1u;
  std::vector<std::uint32_t> x{slot[0]};
  for (int k = 16; k >= 1; --k) x.push_back(slot[k]);
  for (int i = 0; i < 9 + n; ++i) {
    const size_t t = x.size();
    x.push_back(rotl(x[t - 10], 13) + rotl(x[t - 17], 9));
  }
  return std::vector<std::uint32_t>(x.end() - n, x.end());
}

// state * x^32 mod P(x), P = x^32 + x^22 + x^2 + x + 1, by long division of
// the 64-bit product.
std::uint32_t timesX32ModP(std::uint32_t state) {
  constexpr std::uint64_t p = (1ull << 32) | 0x400007u;
  std::uint64_t r = static_cast<std::uint64_t>(state) << 32;
  for (int bit = 63; bit >= 32; --bit)
    if (r >> bit & 1u) r ^= p << (bit - 32);
  return static_cast<std::uint32_t>(r);
}

TEST(RanrotB, FollowsTheLaggedRecurrence) {
  for (unsigned int seed : {1u, 12345u, 0xdeadbeefu}) {
    RanrotB g(seed), again(7u);
    again.initialize(seed);
    const std::vector<std::uint32_t> expected = ranrotHistory(seed, 500);
    for (int i = 0; i < 500; ++i) {
      ASSERT_EQ(g.uniform_int(), expected[i]) << "seed " << seed << " draw " << i;
      ASSERT_EQ(again.uniform_int(), expected[i]) << "seed " << seed << " draw " << i;
    }
  }
  RanrotB zero(3u);
  zero.initialize(0);
  EXPECT_EQ(zero.uniform_int(), ranrotHistory(0, 1)[0]);
}

TEST(PrimitiveRng, StepsByX32ModuloTheFeedbackPolynomial) {
  Primitive_RNG g;
  EXPECT_EQ(g.uniform_int(), 1u);  // a new register holds 1
  EXPECT_EQ(g.uniform_int(), 0x400007u);
  unsigned int state = 0x9e3779b9u;
  g.set_state(&state);
  for (int i = 0; i < 200; ++i) {
    const unsigned int expected = state;
    ASSERT_EQ(g.uniform_int(), expected);
    state = timesX32ModP(state);
  }
  unsigned int zero = 0;
  g.set_state(&zero);
  EXPECT_EQ(g.uniform_int(), 0u);
  EXPECT_EQ(g.uniform(), 0.0);
  g.initialize(99u);  // no seeding of its own
  EXPECT_EQ(g.uniform_int(), 0u);
}

}  // namespace
