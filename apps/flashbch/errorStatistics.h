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

}  // namespace flashbch
