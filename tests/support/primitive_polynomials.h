// One primitive polynomial over GF(2) for each field degree 4 .. 15, as bit
// masks (bit j = coefficient of x^j), and their leading-first coefficient
// form as GF2m takes it. Each has an odd number of terms and is the usual
// minimal-weight choice for its degree; degree 15 is the codec's x^15 + x + 1.
#pragma once

#include <vector>

namespace qfbtest {

constexpr int kMinFieldDegree = 4;
constexpr int kMaxFieldDegree = 15;

inline unsigned primitivePolynomialMask(int m) {
  static const unsigned masks[] = {0x13,  0x25,  0x43,   0x89,   0x11D,  0x211,
                                   0x409, 0x805, 0x1053, 0x201B, 0x4443, 0x8003};
  return masks[m - kMinFieldDegree];
}

// Leading-first coefficients of p(x) from a mask whose bit j is the coefficient of x^j.
inline std::vector<int> leadingFirst(unsigned mask) {
  int m = 0;
  while ((mask >> (m + 1)) != 0) ++m;
  std::vector<int> p(m + 1);
  for (int j = 0; j <= m; ++j) p[m - j] = (mask >> j) & 1;
  return p;
}

inline std::vector<int> primitivePolynomial(int m) { return leadingFirst(primitivePolynomialMask(m)); }

}  // namespace qfbtest
