// Reduction of carry-less products modulo the field polynomial; see the header.
#include "bch/slotReduction.h"

#include <algorithm>

#include "bch/fieldTables.h"

SlotReduction::SlotReduction(const FieldTables& field) : degree(field.m()) {
  const int rho = field.exp(degree);  // alpha^m in polynomial basis is rho(alpha)
  for (int b = 0; b < degree; ++b)
    if ((rho >> b) & 1) bits.push_back(b);
  for (int D = 2 * degree - 2; D >= degree; D = std::max(degree - 1, D - degree + bits.back())) ++roundCount;
}

uint32_t SlotReduction::reduce(uint32_t c) const {
  for (int r = 0; r < roundCount; ++r) {
    const uint32_t h = c >> degree;
    c &= (1u << degree) - 1;
    for (int b : bits) c ^= h << b;
  }
  return c;
}
