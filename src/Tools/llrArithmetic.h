// Arithmetic on log-likelihood ratios and log-domain probabilities (doubles).
//
// Saturating sums and differences treat magnitudes at a limit (1e6 for LLRs,
// 1e7 for log-domain values) as certainty. maxstar/minstar and logsum compute
// the Jacobian logarithm ln(e^a + e^b) = max(a, b) + ln(1 + e^-|a-b|), exactly
// or through a nine-entry correction table. The XOR functions give the LLR of
// the exclusive or of bits with the tanh rule
//   L(x ^ y) = ln((1 + p) / (1 - p)),  p = -tanh(La/2) tanh(Lb/2),
// where combining two LLRs of the same sign gives a negative result, and fall
// back to min-sum when the inputs are large.
#pragma once

double LLRAdd(double a, double b);
double LLRSub(double a, double b);
// Tests a against 1e6 but clamps the result to +-1e4; b is not tested.
double LLRSub2(double a, double b);
double LogAdd(double a, double b);
double LogSub(double a, double b);

double maxstar(double a, double b);
// min(a, b) PLUS the same correction term as maxstar: the sign is intended.
double minstar(double a, double b);
// ln(sum e^v[i]) by table; n == 1 gives v[0], n <= 0 gives -infinity.
double logsum(const double* v, int n);

double XorLLR(double a, double b);
// a is the LLR of x ^ y, b that of y; returns the LLR of x.
double XorLLRInverse(double a, double b);
// Min-sum LLR of the XOR of v[0..n-1] without v[idx]; flag == 1 returns 0.
// v is permuted during the call and restored before returning.
double XORVectorLLR(double* v, int n, int idx, int flag);
