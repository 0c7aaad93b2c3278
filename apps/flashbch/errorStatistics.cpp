#include "errorStatistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace flashbch {

namespace {

// log of C(n,i) p^i (1-p)^(n-i).
double logBinomialTerm(int n, int i, double logP, double logQ, double logNFactorial) {
  return logNFactorial - std::lgamma(i + 1.0) - std::lgamma(n - i + 1.0) + i * logP + (n - i) * logQ;
}

// Sums exp(logTerm(i)) for i = first, first+step, ... while i stays within
// [0, n], returning the log of the sum. The terms must decrease along the
// walk, so the walk stops once a term no longer moves the sum in double
// precision.
template <typename Term>
double logSumDecreasing(int first, int step, int n, Term logTerm) {
  const double lead = logTerm(first);
  double sum = 1.0;
  for (int i = first + step; i >= 0 && i <= n; i += step) {
    const double ratio = std::exp(logTerm(i) - lead);
    sum += ratio;
    if (ratio < 1e-18 * sum) break;
  }
  return lead + std::log(sum);
}

}  // namespace

double logBinomialUpperTail(int n, int t, double p) {
  const double minusInf = -std::numeric_limits<double>::infinity();
  if (t < 0) return 0.0;
  if (t >= n || !(p > 0.0)) return minusInf;
  if (p >= 1.0) return 0.0;
  const double logP = std::log(p);
  const double logQ = std::log1p(-p);
  const double logNFactorial = std::lgamma(n + 1.0);
  auto logTerm = [&](int i) { return logBinomialTerm(n, i, logP, logQ, logNFactorial); };
  // The terms rise up to the mode floor((n+1)p) and fall after it.
  const double mode = std::floor((n + 1.0) * p);
  if (t + 1 >= mode) return logSumDecreasing(t + 1, +1, n, logTerm);
  // P(X <= t) is the small side: walk down from t.
  const double logLower = logSumDecreasing(t, -1, n, logTerm);
  return std::log1p(-std::exp(logLower));
}

double binomialUpperTail(int n, int t, double p) { return std::exp(logBinomialUpperTail(n, t, p)); }

double hardDecisionErrorRate(double sigma) {
  if (!(sigma > 0.0)) return 0.0;
  return 0.5 * std::erfc(1.0 / (sigma * std::sqrt(2.0)));
}

double testChannelSigma(double snrDb) { return 2.0 * std::pow(10.0, -snrDb / 20.0); }

Interval wilsonInterval95(std::int64_t events, std::int64_t trials) {
  if (trials <= 0) return {0.0, 1.0};
  const double z = 1.959963984540054;  // the 97.5% point of the standard normal
  const double N = static_cast<double>(trials);
  const double x = static_cast<double>(events);
  const double z2 = z * z;
  const double center = (x + z2 / 2.0) / (N + z2);
  const double half = z / (N + z2) * std::sqrt(x * (N - x) / N + z2 / 4.0);
  Interval r{center - half, center + half};
  if (r.low < 0.0 || events == 0) r.low = 0.0;
  if (r.high > 1.0 || events == trials) r.high = 1.0;
  return r;
}

}  // namespace flashbch

namespace flashbch {

Interval meanInterval95(double sum, double sumOfSquares, std::int64_t count) {
  if (count <= 1) return {0.0, INFINITY};
  const double n = static_cast<double>(count), mean = sum / n;
  const double variance = std::max(0.0, (sumOfSquares - sum * mean) / (n - 1));
  const double half = 1.959963984540054 * std::sqrt(variance / n);
  return {std::max(0.0, mean - half), mean + half};
}

double logBinomialProbability(int n, int w, double p) {
  if (w < 0 || w > n) return -INFINITY;
  if (!(p > 0.0)) return w == 0 ? 0.0 : -INFINITY;
  return std::lgamma(n + 1.0) - std::lgamma(w + 1.0) - std::lgamma(n - w + 1.0) + w * std::log(p) +
         (n - w) * std::log1p(-p);
}

LogInterval combineStrata(const std::vector<WeightedEstimate>& terms, double logOmitted) {
  double scale = logOmitted;
  for (const auto& term : terms) scale = std::max(scale, term.logWeight);
  if (scale == -INFINITY) return {-INFINITY, -INFINITY, -INFINITY};
  double sum = 0.0, below = 0.0, above = 0.0;
  for (const auto& term : terms) {
    const double a = std::exp(term.logWeight - scale);
    sum += a * term.value;
    below += a * a * (term.value - term.low) * (term.value - term.low);
    above += a * a * (term.high - term.value) * (term.high - term.value);
  }
  const double low = std::max(0.0, sum - std::sqrt(below));
  const double high = sum + std::sqrt(above) + std::exp(logOmitted - scale);
  const double ln10 = std::log(10.0);
  return {(scale + std::log(sum)) / ln10, (scale + std::log(low)) / ln10, (scale + std::log(high)) / ln10};
}

}  // namespace flashbch
