// ClmulMassey: the Berlekamp-Massey iteration of BerlekampMassey, step for
// step, on 512-bit registers with carry-less multiplication.
//
// Coefficients are held one per 32-bit slot in polynomial basis
// (SlotReduction), so the two slots of a 64-bit word share one carry-less
// product:
// - Lambda <- Lambda + Delta x^(s+1) B0 multiplies 16 slots of B0 by the
//   scalar Delta with two VPCLMULQDQ (the low and the high word of each
//   128-bit lane) and reduces the slots modulo p(y) = y^m + rho(y) by
//   shifts (h = c >> m, c = c mod y^m + h rho);
// - the discrepancy sum_j Lambda_j S_(r-j) pairs the word
//   (Lambda_2q, Lambda_2q+1) with the word (S_(r-2q-1), S_(r-2q)): bits 32
//   to 62 of their product are Lambda_2q S_(r-2q) + Lambda_2q+1 S_(r-2q-1),
//   and the other two products fall below bit 31 and above bit 63. The
//   unreduced pair sums are added over the whole register and reduced once.
// The words of syndromes come from one load of 16 consecutive syndromes
// with the order of its words reversed. Lambda and B = x^s B0 stay in
// registers for the whole iteration (B <- x B moves every slot one up), and
// keep zeros beyond their degrees, so whole registers can be added.
//
// Only for KernelLevel::VectorClmul and m <= 16; the logarithm-table
// iteration computes the same locator on every processor.
#pragma once

#include <cstdint>
#include <vector>

#include "bch/kernelLevel.h"
#include "bch/slotReduction.h"

class FieldTables;

class ClmulMassey {
 public:
  // VectorClmul, m <= 16 and 2t + 1 <= 256.
  static bool supports(const FieldTables& field, int t, KernelLevel level);
  ClmulMassey(const FieldTables& field, int t);

  // The first `steps` syndromes S (polynomial basis; S[j] = S_(j+1)),
  // steps <= 2t; Lambda receives 2t + 1 coefficients. squaredSyndromes as
  // BerlekampMassey::locator.
  void locator(const uint16_t* S, int steps, uint16_t* Lambda, bool squaredSyndromes);

 private:
  const FieldTables& field;
  int t;
  int registers;  // 16-slot registers per polynomial
  std::vector<uint32_t> lambda, syndromes;
  SlotReduction slots;
};
