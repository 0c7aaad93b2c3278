// The analytic failure rate against plain long-double summation of every
// binomial term, and the interval and channel formulas against published
// values.
#include "errorStatistics.h"

#include <gtest/gtest.h>

#include <cmath>

#include "flashbchRunner.h"

namespace {

using namespace flashbch;
using flashbchtest::directUpperTail;

TEST(BinomialTail, MatchesDirectSummation) {
  struct Case {
    int n, t;
    double p;
  } cases[] = {{20, 2, 0.05},   {20, 2, 0.5},    {100, 0, 0.01},  {100, 10, 0.01},  {100, 10, 0.2},
               {500, 4, 0.001}, {500, 40, 0.05}, {1000, 8, 1e-4}, {1000, 30, 0.03}, {1000, 5, 0.3}};
  for (const Case& c : cases) {
    const long double expected = directUpperTail(c.n, c.t, c.p);
    const double got = binomialUpperTail(c.n, c.t, c.p);
    EXPECT_NEAR(got / static_cast<double>(expected), 1.0, 1e-9) << c.n << " " << c.t << " " << c.p;
  }
}

TEST(BinomialTail, TinyTailsStayInLogSpace) {
  // The first term dominates far in the tail: C(n,t+1) p^(t+1) to leading order.
  const int n = 8792, t = 40;
  const double p = 1e-12;
  const double leading = std::lgamma(n + 1.0) - std::lgamma(t + 2.0) - std::lgamma(n - t + 0.0) +
                         (t + 1) * std::log(p) + (n - t - 1) * std::log1p(-p);
  EXPECT_NEAR(logBinomialUpperTail(n, t, p), leading, 1e-3);
  EXPECT_LT(leading, std::log(1e-308));  // below what a double can hold
}

TEST(BinomialTail, Limits) {
  EXPECT_EQ(binomialUpperTail(100, 5, 0.0), 0.0);
  EXPECT_EQ(binomialUpperTail(100, 100, 0.5), 0.0);
  EXPECT_EQ(binomialUpperTail(100, 5, 1.0), 1.0);
  EXPECT_NEAR(binomialUpperTail(8792, 40, 0.4), 1.0, 1e-15);
}

TEST(WilsonInterval, PublishedValues) {
  struct Case {
    long events, trials;
    double low, high;
  } cases[] = {{0, 10, 0.0, 0.2775}, {5, 10, 0.2366, 0.7634}, {10, 10, 0.7225, 1.0}};
  for (const Case& c : cases) {
    const Interval ci = wilsonInterval95(c.events, c.trials);
    EXPECT_NEAR(ci.low, c.low, 5e-5) << c.events << "/" << c.trials;
    EXPECT_NEAR(ci.high, c.high, 5e-5) << c.events << "/" << c.trials;
  }
  const Interval none = wilsonInterval95(0, 0);  // no trials: the whole range
  EXPECT_TRUE(none.low == 0.0 && none.high == 1.0) << none.low << " " << none.high;
}

TEST(TestChannel, HardDecisionErrorRate) {
  // sigma = 2 * 10^(-snr/20): 20*log10(2) dB gives sigma 1, so Q(1).
  EXPECT_NEAR(testChannelSigma(20 * std::log10(2.0)), 1.0, 1e-12);
  EXPECT_NEAR(testChannelSigma(20.0), 0.2, 1e-12);
  EXPECT_NEAR(hardDecisionErrorRate(1.0), 0.158655253931457, 1e-12);
  EXPECT_NEAR(hardDecisionErrorRate(0.5), 0.0227501319481792, 1e-12);
  EXPECT_EQ(hardDecisionErrorRate(0.0), 0.0);
}

}  // namespace
