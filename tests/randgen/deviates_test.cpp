// Gaussian, exponential and skew-normal deviates. The Gaussian generators
// cache one deviate across calls, so each test first brings its generator
// to an empty cache: a call that leaves a restart seed word untouched was
// served from the cache.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <vector>

#include "randgen/classicGenerators.h"
#include "support/testutil.h"

namespace {

// Restarts from `restart` (< 0) and returns after the first freshly drawn
// pair's two deviates, leaving the cache empty; `first` gets that pair.
void alignFresh(const std::function<double(long*)>& gauss, long& seed, long restart, double first[2]) {
  seed = restart;
  do first[0] = gauss(&seed);
  while (seed == restart);
  first[1] = gauss(&seed);
}

// The polar method written out on a uniform source: accepted points give
// their second coordinate's deviate first and the first coordinate's next.
std::vector<double> polarReference(const std::function<double()>& uniform, int n) {
  std::vector<double> out;
  while (static_cast<int>(out.size()) < n) {
    const double x1 = 2 * uniform() - 1, x2 = 2 * uniform() - 1, r = x1 * x1 + x2 * x2;
    if (r <= 1e-8 || r >= 0.99999999) continue;
    const double f = std::sqrt(-2 * std::log(r) / r);
    out.push_back(x2 * f);
    out.push_back(x1 * f);
  }
  return out;
}

TEST(Gasdev, PolarPairsOnRan2) {
  long refSeed = -31;
  const std::vector<double> ref = polarReference([&] { return ran2(&refSeed); }, 400);
  long seed;
  double first[2];
  alignFresh([](long* s) { return gasdev(s); }, seed, -31, first);
  EXPECT_EQ(first[0], ref[0]);
  EXPECT_EQ(first[1], ref[1]);
  for (size_t i = 2; i < ref.size(); ++i) ASSERT_EQ(gasdev(&seed), ref[i]) << i;

  long modeRefSeed = -32;
  const std::vector<double> modeRef = polarReference([&] { return ran2(&modeRefSeed, 0); }, 40);
  alignFresh([](long* s) { return gasdev(s, 7); }, seed, -32, first);
  EXPECT_EQ(first[0], modeRef[0]);
  for (size_t i = 2; i < modeRef.size(); ++i) ASSERT_EQ(gasdev(&seed, 0), modeRef[i]) << i;
}

TEST(Deviates, MomentsAndSupport) {
  constexpr int n = 100000;
  struct Case {
    const char* name;
    std::function<double(long*)> draw;
    double mean, variance, lowest, highest;
  };
  const double pi = std::acos(-1.0), d = 0.6;
  const Case cases[] = {
      {"gasdev", [](long* s) { return gasdev(s); }, 0, 1, -HUGE_VAL, HUGE_VAL},
      {"expdev", [](long* s) { return expdev(s); }, 1, 1, 0, HUGE_VAL},
      {"skewedNormal 0.6", [d](long* s) { return skewedNormal(static_cast<float>(d), s); },
       d * std::sqrt(2 / pi), 1 - 2 * d * d / pi, -HUGE_VAL, HUGE_VAL},
      {"skewedNormal 1", [](long* s) { return skewedNormal(1.0f, s); }, std::sqrt(2 / pi), 1 - 2 / pi, 0,
       HUGE_VAL},
      {"skewedNormal -1", [](long* s) { return skewedNormal(-1.0f, s); }, -std::sqrt(2 / pi), 1 - 2 / pi,
       -HUGE_VAL, 0},
  };
  for (const Case& c : cases) {
    long seed = -99;
    double sum = 0, sum2 = 0;
    for (int i = 0; i < n; ++i) {
      const double x = c.draw(&seed);
      ASSERT_GE(x, c.lowest) << c.name;
      ASSERT_LE(x, c.highest) << c.name;
      sum += x, sum2 += x * x;
    }
    const double mean = sum / n, variance = sum2 / n - mean * mean;
    // Five standard errors; the variance bound allows a kurtosis up to 9.
    EXPECT_NEAR(mean, c.mean, 5 * std::sqrt(c.variance / n)) << c.name;
    EXPECT_NEAR(variance, c.variance, 5 * c.variance * std::sqrt(8.0 / n)) << c.name;
  }
}

TEST(Deviates, ExpdevIsMinusLogOfRan1) {
  // Both draw on the one process-wide ran1, so one run after the other.
  long seed = -8;
  std::vector<double> e(1000);
  for (double& x : e) x = expdev(&seed);
  seed = -8;
  for (double x : e) ASSERT_NEAR(std::exp(-x), ran1(&seed), 1e-15);
}

TEST(Deviates, SkewedNormalCombinesTwoGasdevDeviatesInSinglePrecision) {
  long refSeed = -55;
  const std::vector<double> ref = polarReference([&] { return ran2(&refSeed); }, 6);
  long seed;
  double first[2];
  alignFresh([](long* s) { return gasdev(s); }, seed, -55, first);
  const float delta = 0.3f;
  for (int pair = 1; pair < 3; ++pair) {
    const float u0 = static_cast<float>(ref[2 * pair]), v = static_cast<float>(ref[2 * pair + 1]);
    const float u1 = delta * u0 + std::sqrt(1.0f - delta * delta) * v;
    EXPECT_EQ(skewedNormal(delta, &seed), u0 >= 0 ? u1 : -u1);
  }
}

TEST(Gasdev, StateFilesRoundTrip) {
  qfbtest::ScratchDir dir;
  long seed;
  double first[2];
  alignFresh([](long* s) { return gasdev(s, 0); }, seed, -64, first);

  // Empty cache: the restored sequence is exact.
  long saved = seed;
  ASSERT_EQ(gasdev(&seed, 1), 0.0);
  std::vector<double> expected(10);
  for (double& x : expected) x = gasdev(&seed, 0);
  seed = saved;
  ASSERT_EQ(gasdev(&seed, 2), 0.0);
  for (double x : expected) EXPECT_EQ(gasdev(&seed, 0), x);

  // Full cache: the file holds the cached deviate with six decimals; reading
  // it back replaces only the first four bytes of the double in the cache.
  gasdev(&seed, 0);  // a fresh pair: its companion is now cached
  saved = seed;
  ASSERT_EQ(gasdev(&seed, 1), 0.0);
  std::vector<double> next(11);
  for (double& x : next) x = gasdev(&seed, 0);
  char line[64];
  std::snprintf(line, sizeof line, "1\n%f\n", next[0]);
  EXPECT_EQ(qfbtest::readFile("gasdev_seed.txt"), line);
  double mangled = next[10];  // the cache still holds the last companion
  const float asRead = std::strtof(line + 2, nullptr);
  std::memcpy(&mangled, &asRead, sizeof asRead);
  seed = saved;
  ASSERT_EQ(gasdev(&seed, 2), 0.0);
  EXPECT_EQ(gasdev(&seed, 0), mangled);
  for (size_t i = 1; i < next.size(); ++i) EXPECT_EQ(gasdev(&seed, 0), next[i]);

  // Without the uniform generator's file nothing is loaded, not even the cache.
  saved = seed;
  ASSERT_EQ(gasdev(&seed, 1), 0.0);
  for (double& x : expected) x = gasdev(&seed, 0);
  seed = saved;
  ASSERT_EQ(gasdev(&seed, 2), 0.0);
  qfbtest::writeFile("gasdev_seed.txt", "1\n5.000000\n");
  std::remove("rand2_seed.txt");
  EXPECT_EQ(gasdev(&seed, 2), -1.0);
  for (double x : expected) EXPECT_EQ(gasdev(&seed, 0), x);
  std::remove("gasdev_seed.txt");
  EXPECT_EQ(gasdev(&seed, 2), -1.0);
}

}  // namespace
