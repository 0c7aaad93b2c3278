// Saturating LLR arithmetic, the Jacobian logarithm and the XOR LLR rules,
// checked against the worked values and against direct evaluations of the
// underlying formulas.
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "Tools/llrArithmetic.h"
#include "support/testutil.h"

namespace {

const double kInf = std::numeric_limits<double>::infinity();

TEST(LlrArithmetic, SaturatingSumsAndDifferences) {
  struct Case { const char* name; double (*f)(double, double); double a, b, want; };
  const Case cases[] = {
      // LLRAdd: the negative saturation wins; only the inputs are tested.
      {"LLRAdd", LLRAdd, -2e6, 5e6, -1e6}, {"LLRAdd", LLRAdd, 5e6, -1e6, -1e6}, {"LLRAdd", LLRAdd, 2e6, 3, 1e6},
      {"LLRAdd", LLRAdd, 3, 1e6, 1e6}, {"LLRAdd", LLRAdd, 2, 3, 5}, {"LLRAdd", LLRAdd, 999999, 999999, 1999998},
      {"LogAdd", LogAdd, -2e6, 5e6, 3e6}, {"LogAdd", LogAdd, -1e7, 5, -1e7}, {"LogAdd", LogAdd, 2e7, -3, 1e7},
      {"LLRSub", LLRSub, 2e6, 3e6, 0}, {"LLRSub", LLRSub, -2e6, -1e6, 0}, {"LLRSub", LLRSub, 2e6, -3e6, 5e6},
      {"LLRSub", LLRSub, 2e6, 3, 1999997}, {"LogSub", LogSub, 2e6, 3e6, -1e6}, {"LogSub", LogSub, 2e7, 1e7, 0},
      // LLRSub2 never tests b.
      {"LLRSub2", LLRSub2, 5, 2e6, -1999995}, {"LLRSub2", LLRSub2, -2e6, 0, -1e4},
      {"LLRSub2", LLRSub2, 1e6, -7, 1e4}, {"LLRSub2", LLRSub2, 999999, -1, 1e6},
  };
  for (const Case& c : cases)
    EXPECT_EQ(c.f(c.a, c.b), c.want) << c.name << "(" << c.a << ", " << c.b << ")";
}

TEST(LlrArithmetic, JacobianLogarithmAddsTheCorrectionInBothForms) {
  const double pairs[][2] = {{0, 0}, {1, 3}, {-4, 2.5}, {10, -10}, {-0.3, -0.2}};
  for (const auto& p : pairs) {
    const double corr = std::log(1 + std::exp(-std::fabs(p[0] - p[1])));
    EXPECT_NEAR(maxstar(p[0], p[1]), std::log(std::exp(p[0]) + std::exp(p[1])), 1e-12);
    EXPECT_NEAR(minstar(p[0], p[1]), std::min(p[0], p[1]) + corr, 1e-12);
  }
}

// The table entry for a distance d is the one whose step k*5/7 is nearest.
double tableLogsum(const std::vector<double>& v) {
  const double table[9] = {0.6931, 0.3985, 0.2148, 0.1109, 0.0558, 0.0277, 0.0137, 0.0067, 0.0};
  double r = v[0];
  for (size_t i = 1; i < v.size(); ++i) {
    const double d = std::fabs(r - v[i]);
    const int k = int(std::min(8.0, std::floor(d / (5.0 / 7.0) + 0.5)));
    r = std::max(r, v[i]) + (v[i] == -kInf ? 0.0 : table[k]);
  }
  return r;
}

TEST(LlrArithmetic, LogsumFollowsTheTable) {
  // The reference walks the same table to 1e-12, so a looser check against
  // log(sum exp) would add nothing.
  const std::vector<std::vector<double>> cases = {{0, 0},   {0, -kInf},       {-kInf, 0}, {1, 2, 3},  {-2, 5, 0.1, 0.2},
                                                   {0, 0.3571}, {0, 0.3572}, {0, 5.8}, {0, 100}, {3, 3, 3, 3}};
  for (const auto& v : cases)
    EXPECT_NEAR(logsum(v.data(), int(v.size())), tableLogsum(v), 1e-12) << v[0] << ", " << v[1];
  const double one[] = {-4.5};
  EXPECT_EQ(logsum(one, 1), -4.5);
  EXPECT_EQ(logsum(one, 0), -kInf);
  EXPECT_EQ(logsum(nullptr, -3), -kInf);
}

double tanhRule(double a, double b) {
  const double p = -std::tanh(a / 2) * std::tanh(b / 2);
  return std::log((1 + p) / (1 - p));
}

TEST(LlrArithmetic, XorLlrBranches) {
  struct Case { double a, b, want; };
  const Case exact[] = {{60, 70, -60}, {60, -70, 60}, {-51, -3, -3}, {-2, 55, 2},
                        {0, 5, 0},     {40, 45, -37}, {-40, 45, 37}};
  for (const Case& c : exact) EXPECT_EQ(XorLLR(c.a, c.b), c.want) << c.a << ", " << c.b;
  const double moderate[][2] = {{1, 2}, {-3, 0.5}, {7, -7}, {12, 20}, {-0.1, -30}};
  for (const auto& p : moderate) EXPECT_NEAR(XorLLR(p[0], p[1]), tanhRule(p[0], p[1]), 1e-9);
}

TEST(LlrArithmetic, XorLlrInverseUndoesXor) {
  // The exact branch inverts XorLLR: x with LLR lx, y with ly, then recover lx.
  const double llrs[][2] = {{1, 2}, {-3, 0.5}, {2.5, -4}, {-6, -1}};
  for (const auto& p : llrs)
    EXPECT_NEAR(XorLLRInverse(XorLLR(p[0], p[1]), p[1]), p[0], 1e-9) << p[0] << ", " << p[1];
  struct Case { double a, b, want; };
  // Min-sum when |a| > 30 and far from b; close values stay exact and
  // saturate; tanh(b/2) = 0 gives an infinite p, clamped.
  const Case cases[] = {{40, 1, -1}, {-40, 1, 1}, {31, 200, -31}, {40, 38, -37}, {3, 0, -37}, {-3, 0, 37}};
  for (const Case& c : cases) EXPECT_EQ(XorLLRInverse(c.a, c.b), c.want) << c.a << ", " << c.b;
}

TEST(LlrArithmetic, XorVectorIsMinSumWithoutTheExcludedEntry) {
  std::mt19937 rng(11);
  std::uniform_real_distribution<double> llr(-9, 9);
  for (int trial = 0; trial < 200; ++trial) {
    const int n = 2 + trial % 7, idx = int(rng() % unsigned(n));
    std::vector<double> v(n);
    for (double& x : v) x = llr(rng);
    if (trial % 5 == 0) v[rng() % unsigned(n)] = 0.0;  // zero counts as positive
    const std::vector<double> before = v;
    // XOR of bits whose LLRs combine pairwise: each further entry flips the sign.
    // With n - 1 factors, an even count gives one extra flip.
    double mag = kInf, sign = n % 2 == 0 ? 1 : -1;
    for (int j = 0; j < n; ++j) {
      if (j == idx) continue;
      mag = std::min(mag, std::fabs(v[j]));
      sign *= v[j] < 0 ? -1 : 1;
    }
    const double want = mag * sign;
    EXPECT_EQ(XORVectorLLR(v.data(), n, idx, 0), want);
    EXPECT_EQ(v, before);
    EXPECT_EQ(XORVectorLLR(v.data(), n, idx, 1), 0.0);
  }
}

}  // namespace
