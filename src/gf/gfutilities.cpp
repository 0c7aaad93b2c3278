#include "gf/gfutilities.h"

#include <algorithm>
#include <vector>

#include "gf/gf.h"

int evaluatePoly(GF* gf, const int* poly, int deg, int x) {
  int result = gf->getZero();
  for (int i = 0; i <= deg; ++i) result = gf->add(result, gf->multiply(poly[i], gf->power(x, i)));
  return result;
}

void polyMult(GF* gf, const int* a, int degA, const int* b, int degB, int* prod) {
  std::fill(prod, prod + degA + degB + 1, gf->getZero());
  for (int i = 0; i <= degA; ++i)
    for (int j = 0; j <= degB; ++j) prod[i + j] = gf->add(prod[i + j], gf->multiply(a[i], b[j]));
}

void polyMultGF2(const int* a, int degA, const int* b, int degB, int* prod) {
  std::fill(prod, prod + degA + degB + 1, 0);
  for (int i = 0; i <= degA; ++i)
    for (int j = 0; j <= degB; ++j) prod[i + j] = (b[j] * a[i] + prod[i + j]) % 2;
}

void polyAdd(GF* gf, const int* a, int degA, const int* b, int degB, int* sum, int& degSum) {
  degSum = std::max(degA, degB);
  const int low = std::min(degA, degB);
  for (int i = 0; i <= low; ++i) sum[i] = gf->add(a[i], b[i]);
  const int* longer = degA > degB ? a : b;
  for (int i = low + 1; i <= degSum; ++i) sum[i] = longer[i];
  if (degA != degB) return;
  while (degSum >= 0 && sum[degSum] == gf->getZero()) --degSum;
}

static void trimDegrees(GF* gf, const int* quot, int& degQ, const int* rem, int& degR) {
  while (degQ >= 0 && quot[degQ] == gf->getZero()) --degQ;
  while (degR >= 0 && rem[degR] == gf->getZero()) --degR;
}

void longDivision(GF* gf, const int* a, int degA, const int* b, int degB, int* quot, int& degQ, int* rem,
                  int& degR) {
  degQ = degA - degB;
  degR = degB - 1;
  if (degB == 0) {
    const int inv = gf->multInverse(b[0]);
    for (int i = 0; i <= degQ; ++i) quot[i] = gf->multiply(a[i], inv);
    trimDegrees(gf, quot, degQ, rem, degR);
    return;
  }
  std::fill(quot, quot + std::max(degQ + 1, 0), gf->getZero());
  std::fill(rem, rem + degR + 1, gf->getZero());
  if (degB > degA) {
    std::copy(a, a + degA + 1, rem);
    degR = degA;
    return;
  }
  // rem holds the running top degB coefficients; each step produces one
  // quotient digit, brings down the next dividend coefficient and subtracts.
  for (int i = 0; i <= degR; ++i) rem[degR - i] = a[degA - i];
  const int inv = gf->multInverse(b[degB]);
  for (int k = degA - degB; k >= 0; --k) {
    quot[k] = gf->multiply(rem[degR], inv);
    for (int j = degR; j >= 1; --j) rem[j] = rem[j - 1];
    rem[0] = a[k];
    if (quot[k] != gf->getZero())
      for (int j = 0; j <= degR; ++j) rem[j] = gf->add(rem[j], gf->multiply(b[j], quot[k]));
  }
  trimDegrees(gf, quot, degQ, rem, degR);
}

void longDivisionOld(GF* gf, const int* a, int degA, const int* b, int degB, int* quot, int& degQ,
                     int* rem, int& degR) {
  degQ = degA - degB;
  degR = degB - 1;
  std::vector<int> aLead(a, a + degA + 1), bLead(b, b + degB + 1);
  std::reverse(aLead.begin(), aLead.end());
  std::reverse(bLead.begin(), bLead.end());
  std::vector<int> qLead(static_cast<size_t>(std::max(degQ + 1, 0)), gf->getZero());
  std::vector<int> rLead(static_cast<size_t>(std::max(degB, 0)), gf->getZero());
  gf->longDivision(aLead.data(), degA, bLead.data(), degB, qLead.data(), degQ, rLead.data(), 0);
  std::reverse_copy(qLead.begin(), qLead.end(), quot);
  std::reverse_copy(rLead.begin(), rLead.end(), rem);
  trimDegrees(gf, quot, degQ, rem, degR);
}

int bitStream2symbolStream(GF* gf, const int* bits, int nBits, int* symbols, int nSymbols) {
  const int m = gf->getM();
  int last = 0;
  for (int i = 0; i < nSymbols; ++i) {
    const int start = m * i;
    const int n = std::min(nBits - start, m);
    int value = 0;
    for (int j = 0; j < n; ++j) value = (value << 1) | (bits[start + j] > 0 ? 1 : 0);
    last = symbols[i] = gf->int2Exp(value);
  }
  return last;
}

void symbolStream2bitStream(GF* gf, const int* symbols, int nSymbols, int* bits, int nBits) {
  const int m = gf->getM();
  for (int i = 0; i < nSymbols; ++i) {
    const int start = m * i;
    const int n = std::min(nBits - start, m);
    const int value = gf->exp2Int(symbols[i]);
    for (int j = 0; j < n; ++j) bits[start + j] = (value >> (n - 1 - j)) & 1;
  }
}
