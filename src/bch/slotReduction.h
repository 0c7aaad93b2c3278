// SlotReduction: field elements as 32-bit slots of 512-bit registers, and the
// reduction of their carry-less products modulo the field polynomial
// p(y) = y^m + rho(y).
//
// A product of two reduced elements has degree <= 2m - 2 <= 30 for m <= 16,
// so the two slots of a 64-bit word can share one carry-less product
// (timesScalar) without their products meeting. A slot c of degree D is
// brought below y^m by rounds of h = c >> m, c = (c mod y^m) + h rho, each
// of which lowers the degree to max(m - 1, D - m + deg rho); `rounds` of
// them take degree 2m - 2 below m.
#pragma once

#include <cstdint>
#include <vector>

#if defined(__x86_64__) && defined(__GNUC__) && !defined(QFB_PORTABLE_ONLY)
#include <immintrin.h>
#endif

class FieldTables;

class SlotReduction {
 public:
  explicit SlotReduction(const FieldTables& field);

  int m() const { return degree; }
  int rounds() const { return roundCount; }
  const std::vector<int>& rhoBits() const { return bits; }
  // One unreduced product (or sum of products) reduced.
  uint32_t reduce(uint32_t c) const;

 private:
  int degree, roundCount = 0;
  std::vector<int> bits;  // the exponents of rho(y)
};

#if defined(__x86_64__) && defined(__GNUC__) && !defined(QFB_PORTABLE_ONLY)
#define QFB_SLOT_TARGET __attribute__((target("avx512f,avx512bw,vpclmulqdq")))

// Every slot of c reduced. (Masked shifts with an all-ones mask: the
// unmasked ones merge into an undefined register, which gcc 12 reports as
// maybe uninitialised.)
QFB_SLOT_TARGET inline __m512i reduceSlots(const SlotReduction& field, __m512i c) {
  const __m512i low = _mm512_set1_epi32((1 << field.m()) - 1);
  const __m128i down = _mm_cvtsi32_si128(field.m());
  const std::vector<int>& rho = field.rhoBits();
  for (int r = 0; r < field.rounds(); ++r) {
    const __m512i h = _mm512_maskz_srl_epi32(0xffff, c, down);
    c = _mm512_and_si512(c, low);
    for (int b : rho) c = _mm512_xor_si512(c, _mm512_maskz_sll_epi32(0xffff, h, _mm_cvtsi32_si128(b)));
  }
  return c;
}

// Slot-wise products v * s, s a reduced scalar in every 64-bit word.
QFB_SLOT_TARGET inline __m512i timesScalar(__m512i v, __m512i s) {
  return _mm512_maskz_unpacklo_epi64(0xff, _mm512_clmulepi64_epi128(v, s, 0x00), _mm512_clmulepi64_epi128(v, s, 0x01));
}
#endif
