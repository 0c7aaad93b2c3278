// VectorChien: the Chien search, 64 positions at a time, with the
// acceptance rule of LocatorRoots (a locator of degree d is accepted when
// exactly d positions p in 0..n-1 have Lambda(alpha^-p) = 0; the search
// stops at the d-th root).
//
// Term i of Lambda at position p is lambda_i alpha^(-ip); going from
// positions p0..p0+63 to p0+64..p0+127 multiplies every term i by the
// constant alpha^(-64i). Multiplication by a constant is GF(2)-linear: a
// 16 x 16 bit matrix on the element's bits, which splits into four 8 x 8
// blocks acting on the low and high bytes. The elements of 64 positions are
// held as two 64-byte planes (low bytes, high bytes), and GF2P8AFFINEQB
// applies an 8 x 8 block to 64 bytes in one instruction, so one step of one
// term is four of them and two XORs, with no table look-ups. The sum of the
// terms is zero exactly at the roots; a byte compare gives their mask.
// Eight terms at a time stay in registers while they sweep 512 positions,
// adding into the sums of those positions; then the next eight. After each
// 512 positions the roots found so far are counted, and the search stops
// at the d-th, or at the (d-2)-th when the roots are known to be distinct
// (the last two then cost a quadratic, and the search is spared on
// average 2n/(d+1) positions). A term's 64 starting values lambda_i alpha^(-il) take eight
// table look-ups (l < 8) and four more affine steps, one matrix per qword.
//
// Only for KernelLevel::VectorClmul (AVX-512F/BW with GFNI); LocatorRoots,
// which finds the same roots by factorisation, is the portable twin.
#pragma once

#include <cstdint>
#include <vector>

#include "bch/kernelLevel.h"

class FieldTables;

class VectorChien {
 public:
  static bool supports(KernelLevel level);
  VectorChien(const FieldTables& field, int t);

  // lambda: d+1 coefficients in polynomial basis, lambda[d] != 0,
  // 1 <= d <= t. As LocatorRoots::find. With distinctRoots the caller
  // knows that Lambda has d distinct roots in the field (SplitCheck): the
  // search then stops at the (d-2)-th root, and the last two come from a
  // quadratic (lastTwoRoots).
  bool find(const uint16_t* lambda, int d, int n, int* positions, bool distinctRoots = false);

 private:
  // positions[0..d-3]: the roots found, ascending. Since Lambda is their
  // product with a quadratic, the quadratic's coefficients follow from
  // Lambda's top two and the found roots' symmetric functions; its roots
  // are the remaining two, beyond the positions searched.
  bool lastTwoRoots(const uint16_t* lambda, int d, int n, int* positions) const;

  const FieldTables& field;
  int t;
  // Per term i = 1..t (and 3 spare zero terms): the four blocks of
  // alpha^(-64i), each repeated in 8 qwords, so that the search loads whole
  // registers. Held as one qword each, the matrices were loaded by 64-bit
  // broadcast memory operands, and clang 14 encodes the compressed
  // displacement of GF2P8AFFINEQB's broadcast form in bytes where the
  // processor scales it by 8: every matrix but the first of a group was
  // read from the wrong address in some builds (fuzzing found it).
  std::vector<uint64_t> stepBlocks;
  std::vector<int32_t> laneLogs;     // per term i = 1..t, lane l < 8: log alpha^(-il)
  std::vector<uint64_t> laneBlocks;  // per term i: blocks of alpha^(-8iq), q < 8, by block then q
  std::vector<uint8_t> planes;       // per term: 64 low bytes, 64 high bytes (3 spare zero terms)
};
