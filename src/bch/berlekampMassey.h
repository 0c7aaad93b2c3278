// BerlekampMassey: the error locator of a syndrome sequence, step for step
// the iteration of BCH::BMA (scaled correction polynomial, one inverse per
// length change, all 2t' steps), on polynomial-basis integers.
//
// Lambda <- Lambda + Delta x B at every step; on a length change
// B <- Delta^-1 Lambda (the old Lambda), otherwise B <- x B. The loops run
// only over coefficients that can be non-zero: the sums and products they
// skip are zero plus zero times something, so every coefficient, zeros
// included, comes out as the full iteration computes it. Massey's degree
// bounds say which those are (Massey, Shift-register synthesis and BCH
// decoding, IEEE Trans. IT-15, 1969): after r steps with register length L,
// deg Lambda <= L and deg B <= r - L, whatever the syndromes. B is held as
// x^s B0, so that B <- x B only counts.
//
// For a narrow-sense binary code (roots alpha^1 .. alpha^2t) the syndromes
// of any received word satisfy S_2i = S_i^2, and then the discrepancy of
// every even-numbered step (the one that takes in S_2, S_4, ...) is zero,
// the property behind Berlekamp's simplified binary iteration (Berlekamp,
// Algebraic Coding Theory, 1968, ch. 7; Lin and Costello, Error Control
// Coding, sec. 6.2). Such a step leaves Lambda unchanged and only shifts B,
// so with squaredSyndromes set those steps skip the discrepancy and give the
// same locator.
//
// At KernelLevel::VectorClmul the iteration runs on carry-less products
// (ClmulMassey), with the same result.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "bch/clmulMassey.h"
#include "bch/kernelLevel.h"

class FieldTables;

class BerlekampMassey {
 public:
  BerlekampMassey(const FieldTables& field, int t, KernelLevel level = KernelLevel::Scalar);

  // S: the syndromes in polynomial basis (only S[0..2t'-1] are read);
  // Lambda: 2t+1 coefficients, written in full. tLimit as BCH::BMA.
  // squaredSyndromes: S[2i+1] = S[i]^2 for every i (S[j] = S_(j+1)).
  void locator(const uint16_t* S, int tLimit, uint16_t* Lambda, bool squaredSyndromes = false);

 private:
  const FieldTables& field;
  int t;
  std::vector<int32_t> B0, nextB0;  // logarithms of B0's coefficients
  std::vector<int32_t> syndromeLogs, lambdaLogs;
  std::unique_ptr<ClmulMassey> vectorIteration;  // set when the level supports it
};
