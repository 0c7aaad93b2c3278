// SplitCheck: whether a locator Lambda of degree d over GF(2^m) is a
// product of d distinct linear factors, that is whether
//   x^(2^m) = x  (mod Lambda),
// decided by m squarings modulo Lambda with carry-less multiplication.
//
// A locator that fails the test has fewer than d distinct roots in the
// field, so no root search can accept it; words with more errors than the
// code corrects give such locators almost always, and the test costs a
// fraction of a search over every position (m d^2 / 2 coefficient products
// against n d).
//
// Coefficients are held one per 32-bit slot in polynomial basis, 16 to a
// 512-bit register. A product of two reduced elements has degree <= 2m - 2
// <= 30, so it fits its slot: one VPCLMULQDQ multiplies two slots of a
// 64-bit word by a scalar without the products meeting, and the slots are
// reduced modulo the field polynomial p(y) = y^m + rho(y) afterwards by
// shifts (h = c >> m, c = c mod y^m + h rho), repeated until the degree is
// below m. Squaring is linear over GF(2):
//   P^2 = sum_j p_j^2 x^(2j) = sum_(2j<d) p_j^2 x^(2j) + sum_(2j>=d) p_j^2 Q_j,
//   Q_j = x^(2j) mod Lambda,
// and p_j^2 is the carry-less square of p_j (its bits spread apart), which
// VPCLMULQDQ of a word with itself gives for two slots at once.
//
// Only for KernelLevel::VectorClmul; LocatorRoots' squarings through
// logarithm tables compute the same test on every processor.
#pragma once

#include <cstdint>
#include <vector>

#include "bch/kernelLevel.h"
#include "bch/slotReduction.h"

class FieldTables;

class SplitCheck {
 public:
  static bool supports(KernelLevel level);
  SplitCheck(const FieldTables& field, int t);

  // lambda: d+1 coefficients in polynomial basis, lambda[d] != 0,
  // 1 <= d <= t. True when Lambda has d distinct roots in GF(2^m), or
  // when d is beyond the degrees tested (see tests()).
  bool splits(const uint16_t* lambda, int d);
  // Whether splits() decides degree d rather than saying yes.
  bool tests(int d) const;

 private:
  const FieldTables& field;
  int registers;                // 16-slot registers per polynomial of degree < t
  std::vector<uint32_t> monic;  // Lambda / lambda_d below x^d, slots
  std::vector<uint32_t> reductions;  // Q_j for 2j >= d, slots, `registers` each
  std::vector<uint64_t> squares;     // p_j^2 reduced, one per 64-bit word
  SlotReduction slots;
};
