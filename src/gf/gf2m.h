// GF2m: the binary extension field GF(2^m) defined by a polynomial p(x) of
// degree m with 0/1 coefficients.
//
// alpha is a root of p(x); exp2IntTable[e] is alpha^e reduced modulo p(x) as
// an m-bit integer (bit k = coefficient of x^k) and int2ExpTable is its
// inverse. The tables come from one of three sources: a table file of
// decimal integers (alpha^0, alpha^1, ...), a table handed over in memory,
// or, when neither is available, the powers of alpha computed from p(x).
#pragma once

#include "gf/gf.h"

class GF2m : public GF {
 public:
  // p holds degP+1 coefficients, leading first. tableFile may be null; a
  // name that cannot be opened silently falls back to computing the table.
  GF2m(int m, const int* p, int degP, const char* tableFile);
  // As above, but the powers alpha^0 .. alpha^(2^m-2) are read from memory.
  // A null table, or one with fewer than 2^m-1 entries, computes instead.
  GF2m(int m, const int* p, int degP, const int* exp2Table, int tableLength);
  explicit GF2m(GF2m* other);
  ~GF2m() override;

  GF* clone() override;
  int add(int a, int b) override;
  int multiply(int a, int b) override;

  // Remainder of the binary polynomial a (lenA coefficients, leading first)
  // by p (degree degP, p[0] taken as 1): rem[0..degP-1].
  void findRemainderGF2(const int* a, int lenA, const int* p, int degP, int* rem);
  // The first primitive polynomial of degree 2 over this field, leading
  // first; out is left untouched when there is none. Meant for m <= 10.
  void findPrim2to10(int* out);

 private:
  void checkPolynomial(const int* p) const;
  void computePowers(const int* p);
  bool readPowersFromFile(const char* tableFile);
  void finishTables();
  void selfCheck();
};
