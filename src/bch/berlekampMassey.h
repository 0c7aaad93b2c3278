// BerlekampMassey: the error locator of a syndrome sequence, step for step
// the iteration of BCH::BMA (scaled correction polynomial, one inverse per
// length change, all 2t' steps), on polynomial-basis integers.
//
// Lambda <- Lambda + Delta x B at every step; on a length change
// B <- Delta^-1 Lambda (the old Lambda), otherwise B <- x B. The loops run
// only over coefficients that can be non-zero: the sums and products they
// skip are zero plus zero times something, so every coefficient, zeros
// included, comes out as the full iteration computes it.
#pragma once

#include <cstdint>
#include <vector>

class FieldTables;

class BerlekampMassey {
 public:
  BerlekampMassey(const FieldTables& field, int t);

  // S: the syndromes in polynomial basis (only S[0..2t'-1] are read);
  // Lambda: 2t+1 coefficients, written in full. tLimit as BCH::BMA.
  void locator(const uint16_t* S, int tLimit, uint16_t* Lambda);

 private:
  const FieldTables& field;
  int t;
  std::vector<int32_t> B;  // logarithms
  std::vector<uint16_t> T;
  std::vector<int32_t> syndromeLogs, lambdaLogs;
};
