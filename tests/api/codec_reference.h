// Independent arithmetic for checking the flash codec from outside: bit
// polynomials evaluated at powers of alpha in GF(2^15) (x^15 + x + 1) by
// plain shift-and-reduce, without the library's field tables.
#pragma once

#include <cstdint>
#include <vector>

#include "support/differential.h"

namespace qfbtest {

// a * b modulo x^15 + x + 1 on 15-bit polynomial-basis integers.
inline int gfMul(int a, int b) {
  int r = 0;
  for (int bit = 14; bit >= 0; --bit) {
    r <<= 1;
    if (r & 0x8000) r ^= 0x8003;
    if ((b >> bit) & 1) r ^= a;
  }
  return r;
}

// alpha^e as a 15-bit polynomial-basis integer (square and multiply).
inline int alphaPower(long long e) {
  e %= 32767;
  if (e < 0) e += 32767;
  int v = 1, base = 2;
  for (; e; e >>= 1, base = gfMul(base, base))
    if (e & 1) v = gfMul(v, base);
  return v;
}

// p(x) for coefficients p[0] + p[1] x + ... in polynomial-basis form.
inline int evaluateAscending(const std::vector<int>& p, int x) {
  int value = 0;
  for (size_t j = p.size(); j-- > 0;) value = gfMul(value, x) ^ p[j];
  return value;
}

// Syndrome S_j = c(alpha^j) of a word given highest degree first, for
// j = 1 .. count, in polynomial-basis integer form.
inline std::vector<int> syndromesOf(const std::vector<int>& word, int count) {
  std::vector<int> s(count, 0);
  const long long n = static_cast<long long>(word.size());
  for (long long idx = 0; idx < n; ++idx) {
    if (!word[idx]) continue;
    const long long degree = n - 1 - idx;
    for (int j = 1; j <= count; ++j) s[j - 1] ^= alphaPower(degree * j);
  }
  return s;
}

inline bool isCodeword(const std::vector<int>& word, int t) {
  for (int s : syndromesOf(word, 2 * t))
    if (s) return false;
  return true;
}

}  // namespace qfbtest
