// Field construction shared by the gf tests.
#pragma once

#include <memory>
#include <vector>

#include "gf/gf2m.h"

namespace gftest {

// Leading-first coefficients of p(x) from a mask whose bit j is the coefficient of x^j.
inline std::vector<int> leadingFirst(unsigned mask) {
  int m = 0;
  while ((mask >> (m + 1)) != 0) ++m;
  std::vector<int> p(m + 1);
  for (int j = 0; j <= m; ++j) p[m - j] = (mask >> j) & 1;
  return p;
}

// GF(2^m) computed from p(x) given as a mask.
inline std::unique_ptr<GF2m> field(unsigned mask) {
  const std::vector<int> p = leadingFirst(mask);
  const int m = int(p.size()) - 1;
  return std::make_unique<GF2m>(m, p.data(), m, static_cast<const char*>(nullptr));
}

inline std::vector<int> exp2Table(const GF& f) {
  std::vector<int> t(f.getN());
  f.getExp2IntConversionTable(t.data(), f.getN());
  return t;
}
inline std::vector<int> int2Table(const GF& f) {
  std::vector<int> t(f.getN());
  f.getInt2ExpConversionTable(t.data(), f.getN());
  return t;
}

}  // namespace gftest
