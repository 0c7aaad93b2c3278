// The Galois fields the tests build: GF(2^m) with its tables computed from
// the degree's primitive polynomial, and the codec's GF(2^15) (x^15 + x + 1)
// from its stored exponent table.
#pragma once

#include <memory>
#include <vector>

#include "gf/exp2Int15.h"
#include "gf/gf2m.h"
#include "support/primitive_polynomials.h"

namespace qfbtest {

// GF(2^m) computed from p(x) given as a mask.
inline std::unique_ptr<GF2m> fieldFromMask(unsigned mask) {
  const std::vector<int> p = leadingFirst(mask);
  const int m = static_cast<int>(p.size()) - 1;
  return std::make_unique<GF2m>(m, p.data(), m, static_cast<const char*>(nullptr));
}

inline std::unique_ptr<GF2m> computedField(int m) { return fieldFromMask(primitivePolynomialMask(m)); }

inline std::unique_ptr<GF2m> codecField() {
  const std::vector<int> p = primitivePolynomial(15);
  return std::make_unique<GF2m>(15, p.data(), 15, exp2Int15.data(), kExp2Int15Size);
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

}  // namespace qfbtest
