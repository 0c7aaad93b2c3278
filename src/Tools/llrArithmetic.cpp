// Log-likelihood arithmetic; see llrArithmetic.h for the conventions.
#include "Tools/llrArithmetic.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>
#include <utility>

namespace {

const double kLlrLimit = 1e6;
const double kLogLimit = 1e7;
const double kLlrSub2Clamp = 1e4;

// The XOR LLR saturates where (1 + p) / (1 - p) would leave the range that
// double precision resolves near p = +-1.
const double kXorSaturation = 37.0;
const double kLargestBelowOne = 0.9999999999999999;
const double kXorMinSumAbove = 50.0;
const double kInverseExactUpTo = 30.0;
const double kInverseExactCloserThan = 5.0;

// ln(1 + e^(-k*5/7)) for k = 0..8, four decimals, the last entry forced to 0.
const double kJacobianCorrection[9] = {0.6931, 0.3985, 0.2148, 0.1109, 0.0558,
                                       0.0277, 0.0137, 0.0067, 0.0};
// Half a table step (5/14): truncation after adding it rounds to the nearest step.
const double kHalfStep = 0.35714285714285715;

double signOf(double x) { return x < 0 ? -1.0 : 1.0; }

double saturatingAdd(double a, double b, double limit) {
  if (a <= -limit || b <= -limit) return -limit;
  if (std::max(a, b) >= limit) return limit;
  return a + b;
}

double saturatingSub(double a, double b, double limit) {
  if ((a <= -limit && b <= -limit) || (a >= limit && b >= limit)) return 0.0;
  return a - b;
}

double llrOfProbabilityDifference(double p) {
  if (p > kLargestBelowOne) return kXorSaturation;
  if (p < -kLargestBelowOne) return -kXorSaturation;
  return std::log((1 + p) / (1 - p));
}

double minSumXor(double a, double b) {
  return std::min(std::fabs(a), std::fabs(b)) * -(signOf(a) * signOf(b));
}

}  // namespace

double LLRAdd(double a, double b) { return saturatingAdd(a, b, kLlrLimit); }
double LLRSub(double a, double b) { return saturatingSub(a, b, kLlrLimit); }
double LogAdd(double a, double b) { return saturatingAdd(a, b, kLogLimit); }
double LogSub(double a, double b) { return saturatingSub(a, b, kLogLimit); }

double LLRSub2(double a, double b) {
  if (a <= -kLlrLimit) return -kLlrSub2Clamp;
  if (a >= kLlrLimit) return kLlrSub2Clamp;
  return a - b;
}

double maxstar(double a, double b) {
  return std::max(a, b) + std::log1p(std::exp(-std::fabs(a - b)));
}

double minstar(double a, double b) {
  return std::min(a, b) + std::log1p(std::exp(-std::fabs(a - b)));
}

double logsum(const double* v, int n) {
  if (n <= 0) return -std::numeric_limits<double>::infinity();
  double r = v[0];
  for (int i = 1; i < n; ++i) {
    double m = v[i] < r ? r : v[i];
    if (v[i] >= -DBL_MAX) {
      const double steps = ((std::fabs(r - v[i]) + kHalfStep) * 7) / 5;
      // NaN (from inf - inf) takes the last entry, like any huge distance.
      const int index = steps <= 8 ? static_cast<int>(steps) : 8;
      m += kJacobianCorrection[index];
    }
    r = m;
  }
  return r;
}

double XorLLR(double a, double b) {
  if (std::fabs(a) > kXorMinSumAbove || std::fabs(b) > kXorMinSumAbove) return minSumXor(a, b);
  return llrOfProbabilityDifference(-(std::tanh(a / 2) * std::tanh(b / 2)));
}

double XorLLRInverse(double a, double b) {
  const bool bothModerate = std::fabs(a) <= kInverseExactUpTo && std::fabs(b) <= kInverseExactUpTo;
  if (bothModerate || std::fabs(a - b) <= kInverseExactCloserThan)
    return llrOfProbabilityDifference(-std::tanh(a / 2) / std::tanh(b / 2));
  return minSumXor(a, b);
}

double XORVectorLLR(double* v, int n, int idx, int flag) {
  if (flag == 1) return 0.0;
  std::swap(v[n - 1], v[idx]);
  double mu = std::fabs(v[0]);
  for (int j = 1; j <= n - 2; ++j) mu = std::min(mu, std::fabs(v[j]));
  double r = mu * signOf(v[0]);
  for (int j = 1; j <= n - 2; ++j) r = -(r * signOf(v[j]));
  std::swap(v[n - 1], v[idx]);
  return r;
}
