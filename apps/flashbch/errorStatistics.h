// Error statistics of a binary channel followed by a bounded-distance
// decoder, and the confidence interval of a measured failure rate.
//
// A decoder that corrects every pattern of at most t errors in an n-bit
// codeword, and nothing else, fails exactly when the number X of channel
// errors exceeds t. With independent errors of probability p,
// X ~ Binomial(n, p), so the codeword failure rate is P(X > t). The terms
// C(n,i) p^i (1-p)^(n-i) under- and overflow long before n = 32767, so the
// tail is summed as logarithms (lgamma for the binomial coefficient, log1p
// for log(1-p)) and only the side of the mode that is the smaller tail is
// summed directly; the other side is reached by complement.
#pragma once

#include <cstdint>
#include <vector>

namespace flashbch {

// Natural logarithm of P(X > t), X ~ Binomial(n, p); -infinity when the
// probability is 0 (p = 0, or t >= n).
double logBinomialUpperTail(int n, int t, double p);
// P(X > t); underflows to 0 below about 1e-308 (use the log form there).
double binomialUpperTail(int n, int t, double p);

// Probability that a hard decision on +-1 in Gaussian noise of standard
// deviation sigma picks the wrong sign: Q(1/sigma).
double hardDecisionErrorRate(double sigma);
// Noise standard deviation of the library's test channel at snrDb:
// 2 * 10^(-snrDb/20).
double testChannelSigma(double snrDb);

// Two-sided 95% Wilson score interval for a binomial proportion measured as
// `events` out of `trials`; [0, 1] when there are no trials.
struct Interval {
  double low;
  double high;
};
Interval wilsonInterval95(std::int64_t events, std::int64_t trials);
// Normal-theory 95% interval of a mean from the sum and the sum of squares
// of `count` observations (sample variance), its low end cut at 0.
Interval meanInterval95(double sum, double sumOfSquares, std::int64_t count);

}  // namespace flashbch

namespace flashbch {

// ln [C(n,w) p^w (1-p)^(n-w)]: -infinity when the probability is 0.
double logBinomialProbability(int n, int w, double p);

// A weighted sum of independent estimates, sum_i e^logWeight_i * value_i,
// each estimate with its own 95% interval [low, high].
struct WeightedEstimate {
  double logWeight;
  double value, low, high;
};
// Base-10 logarithms (-infinity for 0) of a positive quantity and its limits.
struct LogInterval {
  double log10Value, log10Low, log10High;
};
// The sum and its 95% interval by the method of variance estimates recovery
// (MOVER; Zou and Donner, Stat. Med. 27 (2008) 1693-1702): each term's
// limits stand for the normal-theory ones, so its distance to a limit is
// 1.96 standard errors on that side, and the distances of independent terms
// add in quadrature:
//   L = S - sqrt(sum w_i^2 (v_i - l_i)^2),  U = S + sqrt(sum w_i^2 (h_i - v_i)^2).
// With Wilson limits per term this keeps their asymmetry near 0 and 1 (a
// term with no events still widens U), which a plain normal interval on the
// sum loses. `logOmitted` (ln, may be -infinity) is mass whose term was not
// estimated but is known to lie in [0, that mass]; it is added to U. All
// arithmetic is scaled by the largest weight, so sums far below 1e-308 keep
// their digits.
LogInterval combineStrata(const std::vector<WeightedEstimate>& terms, double logOmitted);

}  // namespace flashbch
