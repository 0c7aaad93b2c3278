// Fields and word generators shared by the RSECC tests.
#pragma once

#include <algorithm>
#include <functional>
#include <numeric>
#include <random>
#include <vector>

#include "gf/gf2m.h"
#include "rsecc/rsecc.h"
#include "support/primitive_polynomials.h"

namespace rstest {

using V = std::vector<int>;

// GF(16) from x^4 + x + 1, GF(2^8) from x^8 + x^4 + x^3 + x^2 + 1, ...
inline GF2m field(int m) {
  const std::vector<int> p = qfbtest::primitivePolynomial(m);
  return GF2m(m, p.data(), m, static_cast<const char*>(nullptr));
}

inline V randomCodeword(RSECC& rs, GF& f, int n, std::mt19937& rng) {
  const int k = n - rs.getNParity();
  std::uniform_int_distribution<int> sym(0, f.getN() - 1);
  V msg(k), cw(n);
  for (int& s : msg) s = sym(rng);
  rs.encode(msg.data(), k, cw.data(), n);
  return cw;
}

// count distinct positions get random non-zero error values; where receives them.
inline V corrupt(const V& cw, GF& f, int count, std::mt19937& rng, V* where = nullptr) {
  V idx(cw.size());
  for (size_t i = 0; i < idx.size(); ++i) idx[i] = int(i);
  std::shuffle(idx.begin(), idx.end(), rng);
  std::uniform_int_distribution<int> nonZero(0, f.getN() - 2);
  V r = cw;
  for (int i = 0; i < count; ++i) r[idx[i]] = f.add(r[idx[i]], nonZero(rng));
  if (where) where->assign(idx.begin(), idx.begin() + count);
  return r;
}

inline int distance(const V& a, const V& b) {
  return std::inner_product(a.begin(), a.end(), b.begin(), 0, std::plus<>(), std::not_equal_to<>());
}

// r(x) at alpha^e by Horner, leading first: independent of the codec's own routines.
inline int evalHorner(GF& f, const V& w, int e) {
  int acc = f.getZero();
  for (int c : w) acc = f.add(f.multiply(acc, e), c);
  return acc;
}

}  // namespace rstest
