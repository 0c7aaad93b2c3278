// The beta-binomial channel; see the header.
#include "betaBinomialChannel.h"

#include <cmath>
#include <stdexcept>

namespace flashbch {

BetaBinomialChannel::BetaBinomialChannel(double p, double rho) : p_(p), rho_(rho) {
  if (!(p >= 0.0 && p < 0.5)) throw std::invalid_argument("the raw bit error rate must be in [0, 0.5)");
  if (!(rho >= 0.0 && rho < 1.0)) throw std::invalid_argument("--dispersion: rho must be in [0, 1)");
  if (rho > 0.0) {
    const double total = 1.0 / rho - 1.0;
    alpha_ = p * total;
    beta_ = (1.0 - p) * total;
  }
}

// Marsaglia and Tsang, "A simple method for generating gamma variables",
// ACM TOMS 26(3), 2000; shapes below 1 through Gamma(a + 1) U^(1/a).
double BetaBinomialChannel::gamma(double shape, RandomStream& rng) const {
  if (shape < 1.0) return gamma(shape + 1.0, rng) * std::pow(rng.uniformPositive(), 1.0 / shape);
  const double d = shape - 1.0 / 3.0, c = 1.0 / std::sqrt(9.0 * d);
  for (;;) {
    double u, v;
    const double f = rng.polarPoint(u, v);
    const double x = u * f;
    const double t = 1.0 + c * x;
    if (t <= 0.0) continue;
    const double cube = t * t * t, w = rng.uniformPositive();
    if (std::log(w) < 0.5 * x * x + d - d * cube + d * std::log(cube)) return d * cube;
  }
}

void BetaBinomialChannel::sampleErrors(int n, RandomStream& rng, std::vector<int>& positions) const {
  positions.clear();
  double pi = p_;
  if (rho_ > 0.0 && p_ > 0.0) {
    const double a = gamma(alpha_, rng), b = gamma(beta_, rng);
    pi = a / (a + b);
  }
  if (pi >= 1.0) {
    for (int i = 0; i < n; ++i) positions.push_back(i);
    return;
  }
  appendBernoulliErrors(0, n, pi, std::log1p(-pi), rng, positions);
}

double BetaBinomialChannel::logWeight(int n, int w) const {
  // lgamma near 1/rho loses about 1/rho * 1e-16 in absolute terms, more
  // than the law's distance from the binomial once alpha + beta passes 1e9.
  if (rho_ < 1e-9 || p_ == 0.0) return Channel::logWeight(n, w);
  auto logBeta = [](double a, double b) { return std::lgamma(a) + std::lgamma(b) - std::lgamma(a + b); };
  const double logChoose = std::lgamma(n + 1.0) - std::lgamma(w + 1.0) - std::lgamma(n - w + 1.0);
  return logChoose + logBeta(w + alpha_, n - w + beta_) - logBeta(alpha_, beta_);
}

}  // namespace flashbch
