// The base-class conversions, driven by a generator that replays a script
// of 32-bit draws, and the moments of long MT19937 runs.
#include <cmath>
#include <deque>

#include "randgen/randgen.h"
#include "support/testutil.h"

namespace {

class ScriptedDraws : public Random_Number_Generator {
 public:
  explicit ScriptedDraws(std::deque<unsigned int> d) : script(std::move(d)) {}
  unsigned int uniform_int() override {
    const unsigned int x = script.front();
    script.pop_front();
    ++used;
    return x;
  }
  int get_state_len() const override { return 0; }
  std::deque<unsigned int> script;
  int used = 0;
};

constexpr unsigned int kHalf = 0x80000000u;     // uniform 0.5, x = 0
constexpr unsigned int kQuarter = 0x40000000u;  // uniform 0.25, x = -0.5

TEST(RandomNumberGenerator, UniformScalesBy2ToMinus32) {
  ScriptedDraws g({0u, 0xffffffffu, kHalf, 1u});
  EXPECT_EQ(g.uniform(), 0.0);
  EXPECT_EQ(g.uniform(), 1.0 - std::ldexp(1.0, -32));
  EXPECT_EQ(g.uniform(), 0.5);
  EXPECT_EQ(g.uniform(), std::ldexp(1.0, -32));
}

TEST(RandomNumberGenerator, NormalRejectsOutsideTheDiscAndItsCentre) {
  struct Case {
    std::deque<unsigned int> draws;
    int used;
  };
  // Every script ends with the accepted pair x1 = x2 = -0.5, s = 1/2.
  const Case cases[] = {
      {{kQuarter, kQuarter}, 2},
      {{kHalf, kHalf, kQuarter, kQuarter}, 4},                // s = 0
      {{0u, kHalf, kQuarter, kQuarter}, 4},                   // s = 1 exactly
      {{0u, 0u, kHalf, kHalf, kQuarter, kQuarter}, 6},        // s = 2, then s = 0
  };
  const double expected = -0.5 * std::sqrt(-2.0 * std::log(0.5) / 0.5);
  for (const Case& c : cases) {
    ScriptedDraws g(c.draws);
    EXPECT_DOUBLE_EQ(g.normal(), expected);
    EXPECT_EQ(g.used, c.used);
  }
  // The returned deviate is the second coordinate's: x1 = -0.5, x2 = +0.5.
  ScriptedDraws g({kQuarter, 3u * kQuarter});
  EXPECT_DOUBLE_EQ(g.normal(), -expected);
}

TEST(RandomNumberGenerator, MomentsOfLongRuns) {
  constexpr int n = 200000;
  MT_Rand_Gen g(2024u);
  double su = 0, suu = 0, sn = 0, snn = 0;
  for (int i = 0; i < n; ++i) {
    const double u = g.uniform(), z = g.normal();
    ASSERT_GE(u, 0.0);
    ASSERT_LT(u, 1.0);
    su += u, suu += u * u, sn += z, snn += z * z;
  }
  // Five standard errors: var(u) = 1/12, var(u^2) = 4/45; var(z^2) = 2.
  EXPECT_NEAR(su / n, 0.5, 5 * std::sqrt(1.0 / 12 / n));
  EXPECT_NEAR(suu / n, 1.0 / 3, 5 * std::sqrt(4.0 / 45 / n));
  EXPECT_NEAR(sn / n, 0.0, 5 * std::sqrt(1.0 / n));
  EXPECT_NEAR(snn / n, 1.0, 5 * std::sqrt(2.0 / n));
}

}  // namespace
