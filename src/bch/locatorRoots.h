// LocatorRoots: the error degrees of a locator, with the acceptance rule of
// the Chien search: a locator of degree d (1 <= d <= t) is accepted when
// exactly d distinct positions p in 0..n-1 have Lambda(alpha^-p) = 0.
//
// Instead of evaluating Lambda at all n positions, the roots are found in
// the whole field and then mapped to positions:
// - the d roots are distinct, non-zero and in GF(2^m) exactly when
//   Lambda(0) != 0 and x^(2^m) = x modulo Lambda. The m squarings use the
//   table Q_j = x^(2j) mod Lambda, so squaring is sum p_j^2 Q_j;
// - degree 1 and 2 are solved in closed form (a quadratic through the
//   table of roots of y^2 + y = c);
// - larger factors are split by the Berlekamp trace algorithm: for
//   beta = alpha^k, gcd(f, Tr(beta x) mod f) takes the roots whose trace
//   with beta is 0. Tr(beta x) = sum_i beta^(2^i) x^(2^i) is assembled from
//   the squarings already made, and some beta in the basis alpha^0..alpha^(m-1)
//   separates any two distinct roots.
// A locator with fewer than d such roots has fewer than d roots at the
// code's positions too, so both rules reject the same locators; when all
// d roots lie in the field, the positions decide.
//
// The factorisation costs about d^1.75 table steps (measured), a search of
// every position n d; where the processor has the vector search
// (VectorChien), it takes the locators for which that is faster. Measured
// on one x86-64 core (AVX-512 with GFNI), the search wins when
// n < 1800 d^0.75: for n = 8192 + 15t from d = 8 on, for n = 4096 + 15t
// from d = 4 on. Before that search, SplitCheck tests x^(2^m) = x modulo
// Lambda, the factorisation's own first step, with carry-less products: a
// locator of a word beyond the code's power almost never passes, and the
// test costs a fraction of the search it saves.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "bch/kernelLevel.h"
#include "bch/splitCheck.h"
#include "bch/vectorChien.h"

class FieldTables;

class LocatorRoots {
 public:
  LocatorRoots(const FieldTables& field, int t, KernelLevel level = KernelLevel::Scalar);

  // lambda: d+1 coefficients in polynomial basis, lambda[d] != 0, d <= t.
  // On acceptance writes the d positions in ascending order and returns
  // true; n is the code length.
  bool find(const uint16_t* lambda, int d, int n, int* positions);

 private:
  // Splits the monic locator into linear factors, recording their positions;
  // false as soon as a root lies beyond the code or a factor will not split.
  bool splitFactors(int deg, int n, int* positions, int& found);
  bool rootOfLinear(const uint16_t* f, int n, int* positions, int& found) const;
  bool rootsOfQuadratic(const uint16_t* f, int n, int* positions, int& found) const;
  void squareModulo(const uint16_t* p, uint16_t* out) const;
  // a mod f in place (f[degF] != 0); returns the remainder's degree.
  int remainder(uint16_t* a, int degA, const uint16_t* f, int degF);
  int gcd(uint16_t* a, int degA, uint16_t* b, int degB, uint16_t*& result);
  void traceModulo(int k, uint16_t* out);

  const FieldTables& field;
  [[maybe_unused]] int t;  // the largest locator degree; the buffers are sized from it at construction
  int d = 0;
  std::vector<uint16_t> monic;      // Lambda / lambda_d
  std::vector<int32_t> squareLogs;  // log of Q_j = x^(2j) mod Lambda, j = 0..d-1, d entries each
  std::vector<uint16_t> frobenius;  // P_i = x^(2^i) mod Lambda, i = 0..m, d entries each
  std::vector<uint16_t> trace, scratchA, scratchB, quotient;
  std::vector<uint16_t> pool;  // pending factors, monic, stacked
  std::vector<int> poolDegree, poolBasis;
  std::vector<int32_t> divisorLogs;
  std::unique_ptr<VectorChien> search;
  std::unique_ptr<SplitCheck> splitTest;
  std::vector<int> searchBelowLength;  // per degree: the search is faster for n below this
};
