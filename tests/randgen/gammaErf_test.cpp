// The gamma-function family and the error function against the standard
// library and closed forms of P(a, x) for integer and half-integer a.
#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include "randgen/classicGenerators.h"
#include "support/testutil.h"

namespace {

TEST(GammaErf, GammlnMatchesLgamma) {
  for (double x = 0.05; x < 180; x *= 1.1) {
    const double expected = std::lgamma(x);
    ASSERT_NEAR(gammln(x), expected, 1e-10 * std::fmax(1.0, std::fabs(expected))) << x;
  }
  EXPECT_NEAR(gammln(1.0), 0.0, 1e-10);
  EXPECT_NEAR(gammln(2.0), 0.0, 1e-10);
}

TEST(GammaErf, GammpMatchesClosedForms) {
  struct Case {
    double a;
    std::function<double(double)> p;
  };
  const Case cases[] = {
      {0.5, [](double x) { return std::erf(std::sqrt(x)); }},
      {1.0, [](double x) { return 1 - std::exp(-x); }},
      {2.0, [](double x) { return 1 - std::exp(-x) * (1 + x); }},
      {3.0, [](double x) { return 1 - std::exp(-x) * (1 + x + x * x / 2); }},
  };
  // The grid straddles x = a + 1, where the series hands over to the fraction.
  for (const Case& c : cases)
    for (double x = 0.0; x <= 30.0; x += 0.05) ASSERT_NEAR(gammp(c.a, x), c.p(x), 1e-7) << c.a << ", " << x;
}

TEST(GammaErf, ErffMatchesErf) {
  EXPECT_EQ(erff(0.0), 0.0);
  for (double x = 0.01; x <= 6.0; x += 0.01) {
    ASSERT_NEAR(erff(x), std::erf(x), 1e-7) << x;
    ASSERT_EQ(erff(-x), -erff(x)) << x;
  }
  EXPECT_EQ(erff(HUGE_VAL), 1.0);
  EXPECT_EQ(erff(-HUGE_VAL), -1.0);
}

TEST(GammaErf, ErfinvInvertsErf) {
  // Both branches of the first guess, their seam at 0.7, and deep into the tails.
  for (double y = -0.99999; y <= 0.99999; y += 0.00037) ASSERT_NEAR(std::erf(erfinv(y)), y, 1e-7) << y;
  for (double y : {-0.7, 0.7, 1 - 1e-9, -1 + 1e-9}) EXPECT_NEAR(std::erf(erfinv(y)), y, 1e-7) << y;
  EXPECT_EQ(erfinv(1.0), std::numeric_limits<float>::max());
  EXPECT_EQ(erfinv(-1.0), -std::numeric_limits<float>::max());
  EXPECT_EQ(erfinv(1.0), 3.4028234663852886e+38);
  EXPECT_TRUE(std::isnan(erfinv(std::nan(""))));
}

TEST(GammaErfDeathTest, ErfinvOutsideItsDomainExitsSilently) {
  for (double y : {1.0000001, -1.5, HUGE_VAL}) EXPECT_EXIT_PRINTS(erfinv(y), 255, "");
}

TEST(GammaErf, OddArgumentsAndNonConvergence) {
  struct Case {
    double a, x;
    const char* printed;
  };
  const std::string stars = "****************************** hi ***********************\n";
  const std::string invalid = "Invalid arguments in routine gammp\n";
  const Case cases[] = {
      {1.0, 2.0, ""},
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
