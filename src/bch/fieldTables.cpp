// Logarithm, exponential and quadratic-root tables of GF(2^m), built from
// the field object's own table of powers after checking that it is one.
#include "bch/fieldTables.h"

#include <cstddef>
#include <typeinfo>

#include "gf/gf.h"
#include "gf/gf2m.h"

bool FieldTables::supports(GF* gf) {
  if (gf == nullptr || typeid(*gf) != typeid(GF2m)) return false;
  const int m = gf->getM();
  if (m < 2 || m > 16 || gf->getdegP() != m || gf->getN() != (1 << m)) return false;
  const int order = gf->getN() - 1;
  // alpha^(e+1) must be x * alpha^e reduced by p(x); with p primitive this
  // visits every non-zero value once, which the seen-set confirms.
  std::vector<int> p(m + 1);
  gf->getPP(p.data(), m);
  int reduction = 0;  // p(x) - x^m as an m-bit integer
  for (int j = 0; j < m; ++j) reduction |= (p[m - j] & 1) << j;
  if (p[0] != 1) return false;
  std::vector<bool> seen(order + 1, false);
  int value = 1;
  for (int e = 0; e < order; ++e) {
    if (gf->exp2Int(e) != value || seen[value] || gf->int2Exp(value) != e) return false;
    seen[value] = true;
    value <<= 1;
    if (value >> m) value = (value & order) ^ reduction;
  }
  return value == 1 && gf->exp2Int(order) == 0 && gf->int2Exp(0) == order;
}

FieldTables::FieldTables(GF* gf)
    : degree(gf->getM()),
      groupOrder(gf->getN() - 1),
      expTable(4 * static_cast<size_t>(groupOrder) + 1, 0),
      logTable(static_cast<size_t>(groupOrder) + 1),
      quadraticRoots(static_cast<size_t>(groupOrder) + 1, -1) {
  for (int e = 0; e < groupOrder; ++e) {
    const uint16_t v = static_cast<uint16_t>(gf->exp2Int(e));
    expTable[e] = expTable[e + groupOrder] = v;
    logTable[v] = e;
  }
  logTable[0] = logZero();
  // y and y+1 share c = y^2 + y; half of all c have roots.
  for (int y = 0; y <= groupOrder; ++y) {
    const int c = mul(static_cast<uint16_t>(y), static_cast<uint16_t>(y)) ^ y;
    if (quadraticRoots[c] < 0) quadraticRoots[c] = y;
  }
}

std::vector<int> FieldTables::minimalPolynomial(int e, std::vector<int>& coset) const {
  coset.assign(1, e);
  for (int x = static_cast<int>((2 * static_cast<int64_t>(e)) % groupOrder); x != e;
       x = static_cast<int>((2 * static_cast<int64_t>(x)) % groupOrder))
    coset.push_back(x);
  std::vector<uint16_t> poly{1};
  for (int x : coset) {
    std::vector<uint16_t> next(poly.size() + 1, 0);
    for (size_t i = 0; i < poly.size(); ++i) {
      next[i + 1] ^= poly[i];
      next[i] ^= mul(poly[i], expTable[x]);
    }
    poly.swap(next);
  }
  // The coset is closed under squaring, so the product is its own square:
  // every coefficient is 0 or 1.
  return std::vector<int>(poly.begin(), poly.end());
}
