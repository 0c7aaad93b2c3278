// The shuffled uniform generators against their component sequences,
// computed here in 64-bit arithmetic rather than by Schrage's method: the
// caller's word must follow the first generator, and each deviate must be a
// value of that sequence (for ran2 less the second generator's current
// value, modulo 2147483562) that has reached the table, handed out once.
// Then the state files, the Gaussian, exponential and skew-normal deviates
// built on the uniform ones, and the gamma and error functions.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "randgen/classicGenerators.h"
#include "support/testutil.h"

namespace {

using Gen = std::function<double(long*)>;

std::vector<double> run(const Gen& gen, long seed, int n) {
  std::vector<double> v(n);
  for (double& u : v) u = gen(&seed);
  return v;
}

const Gen kRan1 = [](long* s) { return ran1(s); };
const Gen kRan2 = [](long* s) { return ran2(s); };
const Gen kRan2Moded = [](long* s) { return ran2(s, 0); };

struct ShuffleReference {
  std::int64_t a1, m1, a2, m2, x1, x2;
  double largest;
  std::set<std::int64_t> tabled, handedOut;

  // Forty steps fill the table; the first eight are thrown away.
  void restart(std::int64_t seed) {
    x1 = x2 = seed;
    for (int n = 1; n <= 40; ++n) {
      x1 = a1 * x1 % m1;
      if (n > 8) tabled.insert(x1);
    }
  }
  void check(double u, long word) {
    tabled.insert(x1 = a1 * x1 % m1);
    ASSERT_EQ(word, x1);
    ASSERT_TRUE(u > 0.0 && u <= largest) << u;
    if (u == largest) return;
    std::int64_t entry = static_cast<std::int64_t>(u * m1 + 0.5);
    if (a2 != 0) {
      entry += x2 = a2 * x2 % m2;
      if (entry > m1 - 1) entry -= m1 - 1;
    }
    ASSERT_TRUE(tabled.count(entry));
    ASSERT_TRUE(handedOut.insert(entry).second);
  }
};

const ShuffleReference kRan1Reference{16807, 2147483647, 0, 0, 0, 0, 0.99999988, {}, {}};
const ShuffleReference kRan2Reference{40014, 2147483563, 40692, 2147483399, 0, 0, 0.999999999988, {}, {}};

TEST(ShuffledUniforms, FollowTheirComponentSequences) {
  for (const Gen* gen : {&kRan1, &kRan2, &kRan2Moded}) {
    ShuffleReference ref = gen == &kRan1 ? kRan1Reference : kRan2Reference;
    // From 1, ran1's 1286th deviate would exceed the largest value it hands out.
    long seed = -1;
    ref.restart(1);
    for (int call = 0; call < 3000; ++call) {
      const double u = (*gen)(&seed);
      ASSERT_NO_FATAL_FAILURE(ref.check(u, seed)) << "call " << call;
    }
  }
  // Park and Miller's published check: x(10000) = 1043618065 from x(0) = 1.
  long seed = -1;
  for (int i = 0; i < 9960; ++i) ran1(&seed);
  EXPECT_EQ(seed, 1043618065);
}

TEST(ShuffledUniforms, RestartsUseThe32BitWord) {
  for (const Gen& gen : {kRan1, kRan2, kRan2Moded}) {
    const std::vector<double> fromOne = run(gen, -1, 40);
    EXPECT_EQ(run(gen, 0, 40), fromOne);  // also shows that a restart clears the table
    EXPECT_EQ(run(gen, INT32_MIN, 40), fromOne);  // its negation wraps to itself
    EXPECT_NE(run(gen, -2, 40), fromOne);
    if constexpr (sizeof(long) > 4) {
      EXPECT_EQ(run(gen, 0xffffffffL, 40), fromOne);
      EXPECT_EQ(run(gen, 0x1fffffffeL, 40), run(gen, -2, 40));
    }
  }
}

TEST(Ran2State, FileRoundTrip) {
  qfbtest::ScratchDir dir;
  long seed = -777;
  ShuffleReference ref = kRan2Reference;
  ref.restart(777);
  for (int i = 0; i < 20; ++i) {
    const double u = ran2(&seed, 0);
    ASSERT_NO_FATAL_FAILURE(ref.check(u, seed));
  }
  const long saved = seed;
  ASSERT_EQ(ran2(&seed, 1), 0.0);
  const std::vector<double> expected = run(kRan2Moded, saved, 10);
  // idum2, iy, the table size, then the 32 entries not yet handed out.
  std::ifstream in("rand2_seed.txt");
  std::vector<std::int64_t> lines;
  for (std::int64_t v; in >> v;) lines.push_back(v);
  ASSERT_EQ(lines.size(), 35u);
  EXPECT_EQ(std::make_pair(lines[0], lines[2]), std::make_pair(ref.x2, std::int64_t{32}));
  for (size_t k = 3; k < 35; ++k) EXPECT_TRUE(ref.tabled.count(lines[k]) && !ref.handedOut.count(lines[k]));

  run(kRan2Moded, -5, 30);
  ASSERT_EQ(ran2(&seed, 2), 0.0);
  EXPECT_EQ(run(kRan2Moded, saved, 10), expected);  // once the caller restores its word

  // Unusable files are refused and change nothing.
  const std::string good = qfbtest::readFile("rand2_seed.txt");
  std::string table;
  for (int k = 0; k < 32; ++k) table += "1000\n";
  const std::string bad[] = {"",
                             "5\n6\n",
                             "5\n6\n32\n" + table.substr(5),
                             "5\n6\n32\nabc\n" + table,
                             "5\n-6\n32\n" + table,
                             "5\n6\n32\n2147483563\n" + table,
                             "5\n6\n32\n99999999999\n" + table};
  for (const std::string& text : bad) {
    qfbtest::writeFile("rand2_seed.txt", good);
    ASSERT_EQ(ran2(&seed, 2), 0.0);
    qfbtest::writeFile("rand2_seed.txt", text);
    EXPECT_EQ(ran2(&seed, 2), -1.0) << text;
    EXPECT_EQ(run(kRan2Moded, saved, 10), expected) << text;
  }
  // A table entry equal to the second generator's next value (1 -> 40692)
  // gives the difference 0, which wraps to the top of the range, never to 0.
  qfbtest::writeFile("rand2_seed.txt", "1\n0\n32\n40692\n" + table.substr(5));
  ASSERT_EQ(ran2(&seed, 2), 0.0);
  EXPECT_EQ(ran2(&seed, 0), 2147483562 * 4.656613057391769e-10);
  std::remove("rand2_seed.txt");
  EXPECT_EQ(ran2(&seed, 2), -1.0);
  std::filesystem::create_directory("rand2_seed.txt");  // in the way of saving
  EXPECT_EQ(ran2(&seed, 1), -1.0);
}

TEST(Ran2StateDeathTest, TableSizeMismatchEndsTheProcess) {
  qfbtest::ScratchDir dir;
  std::string text = "5\n6\n16\n";
  for (int k = 0; k < 16; ++k) text += "7\n";
  qfbtest::writeFile("rand2_seed.txt", text);
  long seed = 1;
  EXPECT_EXIT(ran2(&seed, 2), ::testing::ExitedWithCode(255),
              ::testing::Eq(std::string("NTAB in rand2_seed.txt does not match the defined macro!")));
}

// The Gaussian generators cache one deviate across calls. This restarts one
// and returns after the first freshly drawn pair, with the cache empty: a
// call that leaves the restart word untouched was served from the cache.
void alignFresh(const Gen& gauss, long& seed, long restart) {
  seed = restart;
  while (gauss(&seed), seed == restart) {
  }
  gauss(&seed);
}

// The polar method written out: accepted points give their second
// coordinate's deviate first and the first coordinate's next.
std::vector<double> polarReference(const Gen& uniform, long seed, int n) {
  std::vector<double> out;
  while (static_cast<int>(out.size()) < n) {
    const double x1 = 2 * uniform(&seed) - 1, x2 = 2 * uniform(&seed) - 1, r = x1 * x1 + x2 * x2;
    if (r <= 1e-8 || r >= 0.99999999) continue;
    const double f = std::sqrt(-2 * std::log(r) / r);
    out.push_back(x2 * f);
    out.push_back(x1 * f);
  }
  return out;
}

TEST(Deviates, GaussianPairsExponentialAndSkewNormal) {
  const Gen gasdevPlain = [](long* s) { return gasdev(s); };
  const Gen gasdevModed = [](long* s) { return gasdev(s, 3); };
  for (const auto& [gauss, uniform] : {std::pair{gasdevPlain, kRan2}, std::pair{gasdevModed, kRan2Moded}}) {
    const std::vector<double> ref = polarReference(uniform, -31, 400);
    long seed;
    alignFresh(gauss, seed, -31);
    for (size_t i = 2; i < ref.size(); ++i) ASSERT_EQ(gauss(&seed), ref[i]) << i;
  }
  // skewedNormal narrows two deviates of the plain gasdev and combines them.
  const std::vector<double> ref = polarReference(kRan2, -55, 6);
  long seed;
  alignFresh(gasdevPlain, seed, -55);
  const float delta = 0.3f;
  for (int pair = 1; pair < 3; ++pair) {
    const float u0 = static_cast<float>(ref[2 * pair]), v = static_cast<float>(ref[2 * pair + 1]);
    const float u1 = delta * u0 + std::sqrt(1.0f - delta * delta) * v;
    EXPECT_EQ(skewedNormal(delta, &seed), u0 >= 0 ? u1 : -u1);
  }
  // expdev is -ln of ran1's deviates (one process-wide ran1, so one run after the other).
  const std::vector<double> e = run([](long* s) { return expdev(s); }, -8, 1000), u = run(kRan1, -8, 1000);
  for (int i = 0; i < 1000; ++i) ASSERT_NEAR(std::exp(-e[i]), u[i], 1e-15);
}

TEST(GasdevState, FilesRoundTrip) {
  qfbtest::ScratchDir dir;
  long seed;
  alignFresh([](long* s) { return gasdev(s, 0); }, seed, -64);
  auto draw = [&seed](int n) {
    std::vector<double> v(n);
    for (double& x : v) x = gasdev(&seed, 0);
    return v;
  };

  // Empty cache: the restored sequence is exact.
  long saved = seed;
  ASSERT_EQ(gasdev(&seed, 1), 0.0);
  std::vector<double> expected = draw(10);
  seed = saved;
  ASSERT_EQ(gasdev(&seed, 2), 0.0);
  EXPECT_EQ(draw(10), expected);

  // Full cache: the file holds the cached deviate with six decimals; reading
  // it back replaces only the first four bytes of the double in the cache.
  draw(1);  // a fresh pair: its companion is now cached
  saved = seed;
  ASSERT_EQ(gasdev(&seed, 1), 0.0);
  const std::vector<double> next = draw(11);  // leaves next[10] in the cache
  char text[64];
  std::snprintf(text, sizeof text, "1\n%f\n", next[0]);
  EXPECT_EQ(qfbtest::readFile("gasdev_seed.txt"), text);
  double mangled = next[10];
  const float asRead = std::strtof(text + 2, nullptr);
  std::memcpy(&mangled, &asRead, sizeof asRead);
  seed = saved;
  ASSERT_EQ(gasdev(&seed, 2), 0.0);
  const std::vector<double> replay = draw(11);
  EXPECT_EQ(replay[0], mangled);
  EXPECT_EQ(std::vector<double>(replay.begin() + 1, replay.end()), std::vector<double>(next.begin() + 1, next.end()));

  // Without the uniform generator's file nothing is loaded, not even the cache.
  saved = seed;
  ASSERT_EQ(gasdev(&seed, 1), 0.0);
  expected = draw(10);
  seed = saved;
  ASSERT_EQ(gasdev(&seed, 2), 0.0);
  qfbtest::writeFile("gasdev_seed.txt", "1\n5.000000\n");
  std::remove("rand2_seed.txt");
  EXPECT_EQ(gasdev(&seed, 2), -1.0);
  EXPECT_EQ(draw(10), expected);
  std::remove("gasdev_seed.txt");
  EXPECT_EQ(gasdev(&seed, 2), -1.0);
}

// The gamma-function family and the error function against the standard
// library and closed forms of P(a, x) for integer and half-integer a (the
// grid straddles x = a + 1, where the series hands over to the fraction).
TEST(GammaErf, MatchTheStandardLibraryAndClosedForms) {
  for (double x = 0.05; x < 180; x *= 1.1)
    ASSERT_NEAR(gammln(x), std::lgamma(x), 1e-10 * std::fmax(1.0, std::fabs(std::lgamma(x)))) << x;
  const std::pair<double, std::function<double(double)>> closedForms[] = {
      {0.5, [](double x) { return std::erf(std::sqrt(x)); }},
      {1.0, [](double x) { return 1 - std::exp(-x); }},
      {2.0, [](double x) { return 1 - std::exp(-x) * (1 + x); }},
      {3.0, [](double x) { return 1 - std::exp(-x) * (1 + x + x * x / 2); }},
  };
  for (const auto& [a, p] : closedForms)
    for (double x = 0.05; x <= 30.0; x += 0.05) ASSERT_NEAR(gammp(a, x), p(x), 1e-7) << a << ", " << x;
  EXPECT_EQ(erff(0.0), 0.0);
  for (double x = 0.01; x <= 6.0; x += 0.01) {
    ASSERT_NEAR(erff(x), std::erf(x), 1e-7) << x;
    ASSERT_EQ(erff(-x), -erff(x)) << x;
  }
  EXPECT_EQ(std::make_pair(erff(HUGE_VAL), erff(-HUGE_VAL)), std::make_pair(1.0, -1.0));
  // Both branches of erfinv's first guess, their seam at 0.7, and the tails.
  for (double y = -0.99999; y <= 0.99999; y += 0.00037) ASSERT_NEAR(std::erf(erfinv(y)), y, 1e-7) << y;
  for (double y : {-0.7, 0.7, 1 - 1e-9, -1 + 1e-9}) EXPECT_NEAR(std::erf(erfinv(y)), y, 1e-7) << y;
  EXPECT_EQ(erfinv(1.0), 3.4028234663852886e+38);  // FLT_MAX
  EXPECT_EQ(erfinv(-1.0), -std::numeric_limits<float>::max());
  EXPECT_TRUE(std::isnan(erfinv(std::nan(""))));
}

TEST(GammaErfDeathTest, ErfinvOutsideItsDomainExitsSilently) {
  for (double y : {1.0000001, -1.5, HUGE_VAL}) EXPECT_EXIT_PRINTS(erfinv(y), 255, "");
}

TEST(GammaErf, OddArgumentsAndNonConvergence) {
  struct Case { double a, x; const char* printed; };
  const std::string stars = "****************************** hi ***********************\n";
  const std::string invalid = "Invalid arguments in routine gammp\n";
  const Case cases[] = {
      {1.0, 2.0, ""},
      {1.0, 0.0, ""},
      {1.0, -1.0, invalid.c_str()},
      {-1.0, 1.0, invalid.c_str()},
      {0.0, 5.0, invalid.c_str()},
      {10000.0, 10002.0, stars.c_str()},  // the fraction needs ~sqrt(a) steps
      {10000.0, 9999.0, ""},              // so does the series, which stays silent
  };
  for (const Case& c : cases) {
    ::testing::internal::CaptureStdout();
    gammp(c.a, c.x);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), c.printed) << c.a << ", " << c.x;
  }
  EXPECT_EQ(gammp(1.0, -1.0), 0.0);  // the invalid argument is reported, then used
  // A series that does not converge leaves its result untouched; gammp says NaN.
  double sentinel = 42.0, gln = 0.0;
  gser(&sentinel, 10000.0, 9999.0, &gln);
  EXPECT_EQ(sentinel, 42.0);
  EXPECT_NEAR(gln, std::lgamma(10000.0), 1e-6);
  EXPECT_TRUE(std::isnan(gammp(10000.0, 9999.0)));
  // The fraction keeps the value it reached, near the median of Gamma(10000).
  ::testing::internal::CaptureStdout();
  EXPECT_NEAR(gammp(10000.0, 10002.0), 0.5, 0.05);
  ::testing::internal::GetCapturedStdout();
}

}  // namespace
