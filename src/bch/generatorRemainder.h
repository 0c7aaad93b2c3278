// GeneratorRemainder: (x^r * m(x)) mod g(x) over GF(2) for a binary
// generator g of degree r, 64 message bits per step.
//
// The remainder R(x) is held in W = ceil(r/64) 64-bit words, highest degree
// first: the coefficient of x^(r-1-i) is bit 63 - i%64 of word i/64, and the
// unused low bits of the last word stay zero. Feeding the next 64 message
// bits D (first bit = highest degree) computes
//   R <- (x^64 R + x^r D) mod g = (R without its top word) + (top ^ D)(x) x^r mod g,
// and F(x) x^r mod g for a 64-bit F is the XOR of eight byte tables
//   T_j[v] = v(x) x^(8j) x^r mod g,   j = 0..7 (byte j of F).
// The received word's remainder c(x) mod g is this remainder of its message
// part plus its parity bits, which occupy the same positions as R.
//
// Where the processor multiplies without carries, ClmulRemainder computes
// the same remainder faster; the byte tables remain the portable twin.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "bch/clmulRemainder.h"
#include "bch/kernelLevel.h"

class GeneratorRemainder {
 public:
  // generator: r+1 bits in degree order (entry i = coefficient of x^i).
  // level: the kernels to use where they support this r (Scalar otherwise).
  GeneratorRemainder(const int* generator, int r, KernelLevel level = defaultKernelLevel());

  int degree() const { return r; }
  int words() const { return nWords; }
  KernelLevel kernelLevel() const { return accelerated ? level : KernelLevel::Scalar; }
  // rem (words() words) = x^r m(x) mod g for the `bits` packed message bits.
  void shiftedRemainder(const uint8_t* message, size_t bits, uint64_t* rem) const;
  // rem ^= the r packed parity bits, aligned like the remainder.
  void addParity(const uint8_t* parity, uint64_t* rem) const;
  // The r remainder bits, packed from bit 0 of dst (tail of the last byte 0).
  void storeParity(const uint64_t* rem, uint8_t* dst) const;

 private:
  void step(uint64_t* rem, uint64_t chunk) const;
  // The whole division with a W-word remainder held locally.
  template <int W>
  void divideInRegisters(const uint8_t* message, size_t bits, uint64_t* rem) const;

  int r;
  int nWords;
  std::vector<uint64_t> tables;  // [j][v][word]
  KernelLevel level;
  std::unique_ptr<const ClmulRemainder> accelerated;
};
