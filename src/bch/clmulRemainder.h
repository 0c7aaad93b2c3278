// ClmulRemainder: (x^r m(x)) mod g(x) over GF(2) by carry-less
// multiplication, the accelerated twin of GeneratorRemainder's byte tables
// (same result, same word layout).
//
// The remainder is computed modulo g'(x) = x^p g(x) with p = 64W - r and
// W = ceil(r/64), whose degree rho = 64W is a whole number of words:
// (x^p a) mod (x^p g) = x^p (a mod g), so x^rho m mod g' is the wanted
// remainder already aligned to the top of W words. The message is read as
// 64-bit words M_0 (highest degree) .. M_(N-1) and folded as fast CRC
// implementations fold, generalised to a rho-bit modulus:
// - an accumulator A of K = W+1 words stays congruent to the message read
//   so far (A has degree < 64K);
// - the next K words D are taken in by
//     A <- D + sum_j A_j C_j,   C_j = x^(64(K+j)) mod g',
//   where A_j is the word of A at degree 64j; each A_j C_j (64 x rho bits,
//   W carry-less products) has degree < 64 + rho = 64K, so A keeps K words.
//   The K*W products of a step are independent: only the steps form a chain.
//   The message is read as if it had leading zero words up to a multiple
//   of K (they change no remainder), so every step is a whole one. With
//   512-bit registers K is W+1 rounded up to a multiple of 8, which the
//   transposed layout of foldWide needs; a longer step also leaves fewer
//   steps, whose chain (every product of a step waits for the previous
//   step's sum) is what the processor cannot overlap.
// - finally x^rho A = sum_j A_j F_j with F_j = x^(rho+64j) mod g' leaves one
//   word H above x^rho, reduced by Barrett's method:
//     H x^rho mod g' = low rho bits of q (g' - x^rho),
//     q = floor(H mu / x^64) = H + floor(H (mu - x^64) / x^64),
//     mu = floor(x^(rho+64) / g') = floor(x^(r+64) / g),
//   exact for polynomials (the remainder has degree < rho).
// Products are laid out so that no data move between vector lanes: with
// C_j's words c_w in lanes of two, the products A_j c_(2l) (the even ones)
// land on words 2l, 2l+1 and A_j c_(2l+1) (the odd ones) on 2l+1, 2l+2, so
// even and odd products add up in two accumulators that are combined, one
// word apart, once per step.
//
// Only for levels other than KernelLevel::Scalar (x86-64 with PCLMULQDQ).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "bch/kernelLevel.h"

class ClmulRemainder {
 public:
  // The largest r supported: W words plus one fit the kernels' registers.
  static constexpr int kMaxWords = 32;
  static bool supports(KernelLevel level, int r);
  // generator: r+1 bits in degree order, 0 < r <= 64 * kMaxWords.
  ClmulRemainder(const int* generator, int r, KernelLevel level);

  // rem (W words, GeneratorRemainder's layout) = x^r m(x) mod g.
  void shiftedRemainder(const uint8_t* message, size_t bits, uint64_t* rem) const;

  // One step's products: out[0..K) = sum_j a[j] * c_j for K constants of
  // stride() words each (words low first).
  using FoldKernel = void (*)(const uint64_t* a, const uint64_t* constants, int K, uint64_t* out);
  // The 512-bit step: out[0..W] = sum_j a[j] * c_j over 8 `groups` of j, the
  // constants split into their first 8 (W / 8) words and the transposed rest.
  using WideKernel = void (*)(const uint64_t* a, const uint64_t* mainConstants, const uint64_t* tailConstants,
                              int groups, uint64_t* out);

 private:
  // The wide step's constants for a table of K W-word constants.
  void splitForWide(const std::vector<uint64_t>& constants, std::vector<uint64_t>& mainPart,
                    std::vector<uint64_t>& tailPart) const;

  int W, K;
  int stride;  // W padded to the kernel's register width
  FoldKernel fold;
  WideKernel wide;  // VectorClmul only; then K is a multiple of 8
  std::vector<uint64_t> stepConstants, finalConstants;  // C_j, F_j: K x stride words
  std::vector<uint64_t> stepMain, stepTail, finalMain, finalTail;  // the same, split for `wide`
  std::vector<uint64_t> lowGenerator;                     // g' - x^rho, W words
  std::vector<uint64_t> muLow;                            // mu - x^64, padded
};
