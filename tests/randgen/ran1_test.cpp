// ran1 against the bare minimal-standard sequence x(n+1) = 16807 x(n) mod
// (2^31 - 1), computed here in 64-bit arithmetic rather than by Schrage's
// method: the caller's seed word must follow that sequence, and every
// deviate must be one of its values scaled by 1/(2^31 - 1), handed out once.
#include <cstdint>
#include <set>
#include <vector>

#include "randgen/classicGenerators.h"
#include "support/testutil.h"

namespace {

constexpr std::int64_t kModulus = 2147483647;

std::int64_t minstdNext(std::int64_t x) { return 16807 * x % kModulus; }

std::vector<double> ran1Run(long seed, int n) {
  std::vector<double> v(n);
  for (double& u : v) u = ran1(&seed);
  return v;
}

TEST(Ran1, FollowsTheMinimalStandardSequenceThroughTheShuffle) {
  long seed = -1;
  std::int64_t x = 1;
  std::set<std::int64_t> produced, handedOut;
  // Forty steps fill the table; the first eight are thrown away.
  for (int n = 1; n <= 40; ++n) {
    x = minstdNext(x);
    if (n > 8) produced.insert(x);
  }
  for (int call = 1; call <= 9960; ++call) {
    const double u = ran1(&seed);
    produced.insert(x = minstdNext(x));
    ASSERT_EQ(seed, x) << "call " << call;
    ASSERT_GT(u, 0.0);
    ASSERT_LE(u, 0.99999988);
    const std::int64_t value = static_cast<std::int64_t>(u * kModulus + 0.5);
    if (u < 0.99999988) {
      ASSERT_TRUE(produced.count(value)) << "call " << call;
      ASSERT_TRUE(handedOut.insert(value).second) << "value handed out twice at call " << call;
    }
  }
  // Park and Miller's published check: x(10000) from x(0) = 1.
  EXPECT_EQ(seed, 1043618065);
}

TEST(Ran1, RestartsAreReproducibleAndUseThe32BitWord) {
  const std::vector<double> fromMinusOne = ran1Run(-1, 50);
  EXPECT_EQ(ran1Run(-1, 50), fromMinusOne);
  EXPECT_EQ(ran1Run(0, 50), fromMinusOne);  // 0 and -1 both restart from 1
  EXPECT_EQ(ran1Run(INT32_MIN, 50), fromMinusOne);
  EXPECT_NE(ran1Run(-2, 50), fromMinusOne);
  if constexpr (sizeof(long) > 4) {
    EXPECT_EQ(ran1Run(static_cast<long>(0xffffffffL), 50), fromMinusOne);
    long wide = static_cast<long>(0x1fffffffeL);  // low word -2
    EXPECT_EQ(ran1Run(wide, 50), ran1Run(-2, 50));
  }
}

}  // namespace
