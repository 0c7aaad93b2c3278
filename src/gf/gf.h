// GF: a finite field of characteristic 2 with q = 2^m elements, and the
// polynomial and matrix arithmetic over it that the BCH and Reed-Solomon
// codecs use.
//
// Elements are ints in exponent (discrete logarithm) form: e in 0..q-2 is
// alpha^e, 0 is therefore the one element and q-1 is the zero element.
// Multiplication is addition of exponents modulo q-1; addition goes through
// the two conversion tables (exponent -> polynomial-basis integer and back).
// Nothing range-checks an element.
//
// The member polynomial operations take leading-first arrays: index 0 is the
// coefficient of x^deg, index deg is the constant term. All arithmetic goes
// through the virtual add() and multiply(), so it holds for any subclass.
#pragma once

#include <memory>

class GF {
 public:
  GF() = default;
  virtual ~GF();
  GF(const GF&) = delete;
  GF& operator=(const GF&) = delete;

  virtual GF* clone() = 0;
  virtual int add(int a, int b);
  virtual int multiply(int a, int b);
  // Reserved hook; deliberately does nothing.
  virtual void getExp2Components(int** components, int rows, int cols);

  int getM() const { return m; }
  int getN() const { return N; }
  int getZero() const { return N - 1; }
  int getOne() const { return 0; }
  int getdegP() const { return degP; }
  int exp2Int(int e) const { return exp2IntTable[e]; }
  int int2Exp(int v) const { return int2ExpTable[v]; }
  // Both copy all q entries; size is not consulted.
  void getExp2IntConversionTable(int* dst, int size) const;
  void getInt2ExpConversionTable(int* dst, int size) const;
  void getPP(int* dst, int deg) const;

  int additiveInverse(int a) const { return a; }
  int multInverse(int a) const;
  int power(int a, int e) const;

  // prod[0..degProduct]; degProduct must equal degA + degB or the process ends.
  void polyMult(const int* a, int degA, const int* b, int degB, int* prod, int degProduct);
  // Aligned at the constant terms; leading zeros are trimmed only when degA == degB.
  void polyAdd(const int* a, int degA, const int* b, int degB, int* sum, int& degSum);
  // rem[0..degP-1]: remainder of a by p.
  void findRemainder(const int* a, int degA, const int* p, int degP, int* rem);
  // quot[0..degQ] and rem[0..degP-1]; callers pass degQ = degA - degP.
  void longDivision(const int* a, int degA, const int* p, int degP, int* quot, int degQ, int* rem,
                    int unused);
  // count = number of coefficients (degree + 1).
  int evaluatePoly(const int* poly, int count, int x);
  // out[0..deg-1], the formal derivative.
  void derivative(const int* poly, int deg, int* out);
  // Gaussian elimination on M in place; 1 if non-singular.
  int isInvertible(int** M, int rows, int cols);
  // 1 if poly has no root in the field (exact for degrees 2 and 3 only).
  int irreducible(const int* poly, int deg);
  // 1 if x has order 2^(deg*m) - 1 modulo poly.
  int primitive(const int* poly, int deg);

  void printAdditionTable();
  void printMultiplicationTable();

 protected:
  // Register step shared by findRemainder and longDivision: shifts the
  // degP-entry remainder register left, feeds in the next dividend
  // coefficient and subtracts the divisor scaled by the quotient digit,
  // which it returns (zero when the register's lead was zero).
  int divisionStep(int* rem, const int* p, int degP, int next);

  std::unique_ptr<int[]> exp2IntTable;
  std::unique_ptr<int[]> int2ExpTable;
  int m = 0;
  int degP = 0;
  int N = 0;
  std::unique_ptr<int[]> PP;  // the field polynomial, filled by the subclass
};
