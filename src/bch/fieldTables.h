// FieldTables: GF(2^m) arithmetic on polynomial-basis integers (bit j is the
// coefficient of x^j), for the fast BCH engine.
//
// The library's field objects hold elements as exponents and add through
// two table look-ups and a virtual call; the engine instead keeps elements
// as m-bit integers, so addition is XOR, and multiplies through logarithms:
// a*b = exp[log a + log b]. The zero element gets the logarithm
// logZero() = 2*order, so that exp[la + lb] is the product for any two
// logarithms, zero included, without a branch: the table is four orders
// long and its upper half is zero.
//
// The engine gives exactly the results of the plain algorithms only when
// the field object computes in a genuine field: supports() accepts an object
// whose dynamic type is GF2m itself (no overridden add or multiply) and whose
// tables are the powers of a root of its polynomial, each non-zero value
// once. Anything else keeps the plain algorithms.
#pragma once

#include <cstdint>
#include <vector>

class GF;

class FieldTables {
 public:
  static bool supports(GF* gf);
  explicit FieldTables(GF* gf);

  int m() const { return degree; }
  int order() const { return groupOrder; }
  int logZero() const { return 2 * groupOrder; }

  uint16_t mul(uint16_t a, uint16_t b) const { return expTable[logTable[a] + logTable[b]]; }
  uint16_t mulByLog(uint16_t a, int logB) const { return expTable[logTable[a] + logB]; }
  uint16_t expOfLogSum(int la, int lb) const { return expTable[la + lb]; }
  int log(uint16_t a) const { return logTable[a]; }
  // alpha^e for 0 <= e < 2*order; 0 from 2*order on.
  uint16_t exp(int e) const { return expTable[e]; }
  // a != 0.
  uint16_t inverse(uint16_t a) const { return expTable[groupOrder - logTable[a]]; }

  // Between the library's exponent form (zero = order) and integers.
  uint16_t fromExponent(int e) const { return e == groupOrder ? 0 : expTable[e]; }
  int toExponent(uint16_t v) const { return v == 0 ? groupOrder : logTable[v]; }

  // The minimal polynomial of alpha^e over GF(2): the product of
  // (x + alpha^x) over the cyclotomic coset {e 2^s mod order}, as bits in
  // degree order (its degree is the coset's size). coset receives the
  // members, e first.
  std::vector<int> minimalPolynomial(int e, std::vector<int>& coset) const;

  // One root y of y^2 + y = c, or -1 when there is none (trace of c is 1).
  int quadraticRoot(uint16_t c) const { return quadraticRoots[c]; }

 private:
  int degree;
  int groupOrder;
  std::vector<uint16_t> expTable;
  std::vector<int32_t> logTable;
  std::vector<int32_t> quadraticRoots;
};
