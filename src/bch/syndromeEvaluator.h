// SyndromeEvaluator: the syndromes S_j = c(alpha^(b+j)), j = 0..2t-1, of a
// received word c from its remainder R(x) = c(x) mod g(x).
//
// Every alpha^(b+j) is a root of g, so S_j = R(alpha^(b+j)). R has r = deg g
// coefficients, far fewer than the word; it is reduced further modulo the
// minimal polynomial M of each root's cyclotomic coset (degree d <= m):
// with s(x) = R(x) mod M(x), S_j = s(alpha^(b+j)) for every root of M. The
// reduction runs a byte at a time with a 256-entry table per coset,
// T[u] = u(x) x^d mod M; the evaluation sums at most m powers of alpha,
// a nibble of the residue at a time from tables.
// Only one root per coset needs that sum: over GF(2), c(beta^2) = c(beta)^2,
// so a syndrome whose exponent b+j is twice that of an earlier one is the
// earlier one squared, a doubling of its logarithm. For a narrow-sense code
// that is every even exponent: t residues, t short sums and t doublings
// for 2t syndromes, with no general field multiplication at all (the
// byte-table reduction is the costly part, and it is per coset).
//
// With carry-less multiplication the residues come from products instead:
// R x^p = sum_i W_i x^(64(W-1-i)) for the remainder's words W_i (p = 64W - r
// padding bits), and x is invertible modulo an irreducible M, with
// x^order = 1 (deg M divides m). So
//   s = sum_i W_i K_i mod M,   K_i = x^((64(W-1-i) - p) mod order) mod M,
// W products of 64 x d bits whose sum A has degree < 64 + d; then
// A' = (A mod x^64) + floor(A / x^64) (x^64 mod M) has degree < 64, and a
// Barrett step with mu = floor(x^64 / M) finishes:
//   s = A' + q M (low d bits),   q = floor(floor(A' / x^d) mu / x^(64-d)).
// That is W + 3 products per coset instead of r/8 dependent table steps.
// With 512-bit registers eight cosets go side by side, one per word: a
// remainder word is broadcast against eight factors (four products per
// instruction), and the folding and the Barrett step run lane-wise, with
// per-lane shifts for the cosets' degrees.
#pragma once

#include <cstdint>
#include <vector>

#include "bch/kernelLevel.h"

class FieldTables;

class SyndromeEvaluator {
 public:
  // The roots alpha^b .. alpha^(b+2t-1); b + 2t - 1 must be below the
  // multiplicative order, so that each exponent names a non-zero element.
  // r: the remainder's degree; level: carry-less residues unless Scalar.
  SyndromeEvaluator(const FieldTables& field, int b, int t, int r = 0, KernelLevel level = KernelLevel::Scalar);

  // S[0..2t-1] in exponent form from the r-bit remainder (layout of
  // GeneratorRemainder: highest degree at bit 63 of word 0).
  void evaluate(const uint64_t* rem, int r, int* S) const;

 private:
  struct Coset {
    int degree;
    uint32_t polynomial;  // M(x), bit i = coefficient of x^i, x^degree included
    std::vector<uint32_t> byteReduction;
    // Carry-less form: K_i per remainder word, x^64 mod M, mu - x^(64-d).
    std::vector<uint64_t> wordFactors;
    uint64_t x64 = 0, mu = 0;
  };
  void reduceAll(const uint64_t* rem, int r) const;
  void clmulResidues(const uint64_t* rem) const;
  // clmulResidues for eight cosets per 512-bit register (VectorClmul).
  void vectorResidues(const uint64_t* rem) const;
  void evaluateResidues(int* S) const;
  uint32_t reduce(const Coset& c, const uint64_t* rem, int r) const;
  // reduce() for four cosets of degree >= 8 at once.
  void reduceFour(const Coset* c, const uint64_t* rem, int r, uint32_t* out) const;

  const FieldTables& field;
  std::vector<Coset> cosets;
  std::vector<int> cosetOfSyndrome;
  std::vector<int> squareOf;  // per syndrome: the earlier one it is the square of, or -1
  // Per syndrome j, four tables of 16: entry v of table k is
  // sum over the set bits b of v of alpha^(e_j (4k + b)), so a residue's
  // value at alpha^(e_j) is four look-ups, one per nibble.
  std::vector<uint16_t> nibbleSums;
  mutable std::vector<uint32_t> residues;
  bool carryless = false, vector = false;
  int words = 0;
  // vectorResidues' operands, eight cosets per group (the last padded with
  // zero factors): per group the W word factors, then x^64 mod M, mu,
  // M, deg M and the mask of deg M bits, eight words each.
  std::vector<uint64_t> groupOperands;
};
