// The Berlekamp-Massey iteration on 512-bit carry-less products; see the
// header for the slot layout and the discrepancy's word pairing.
#include "bch/clmulMassey.h"

#include <algorithm>

#include "bch/fieldTables.h"
#include "bch/slotReduction.h"

#if defined(__x86_64__) && defined(__GNUC__) && !defined(QFB_PORTABLE_ONLY)
#include <immintrin.h>
#define QFB_HAVE_VPCLMUL 1
#endif

namespace {

#ifdef QFB_HAVE_VPCLMUL
// Locators of up to 16 x kMaxRegisters coefficients.
constexpr int kMaxRegisters = 16;

#define QFB_TARGET __attribute__((target("avx512f,avx512bw,vpclmulqdq")))
constexpr __mmask16 kAll = 0xffff;

// x P for P in R registers: every slot one up.
template <int R>
QFB_TARGET inline void shiftUp(__m512i* p) {
#pragma GCC unroll 8
  for (int k = R - 1; k > 0; --k) p[k] = _mm512_maskz_alignr_epi32(kAll, p[k], p[k - 1], 15);
  p[0] = _mm512_maskz_alignr_epi32(kAll, p[0], _mm512_setzero_si512(), 15);
}

// The whole iteration with Lambda and B = x^shift B0 in R registers each
// (16 R > 2t: by Massey's bounds neither reaches degree 2t + 1). syn points
// at S_0, with 16 zeros below it (the discrepancy of step r reads back to
// S_(r-15)); Lambda's slots are stored to out.
template <int R>
QFB_TARGET void iterate(const SlotReduction& slots, const FieldTables& field, const uint32_t* syn, int steps,
                        bool squaredSyndromes, uint32_t* out) {
  const __m512i reverseWords = _mm512_set_epi64(0, 1, 2, 3, 4, 5, 6, 7);
  __m512i lambda[R], b[R];
#pragma GCC unroll 8
  for (int k = 0; k < R; ++k) lambda[k] = b[k] = _mm512_setzero_si512();
  lambda[0] = b[0] = _mm512_maskz_set1_epi32(0x1, 1);
  int L = 0, degB = 0;
  for (int r = 0; r < steps; ++r) {
    if (squaredSyndromes && (r & 1)) {
      shiftUp<R>(b);
    ++degB;
      continue;
    }
    // Registers k with 16 k > L hold zeros of Lambda.
    __m512i sum = _mm512_setzero_si512();
#pragma GCC unroll 8
    for (int k = 0; k < R; ++k) {
      if (16 * k > L) break;
      const __m512i s = _mm512_maskz_permutexvar_epi64(0xff, reverseWords, _mm512_loadu_si512(syn + r - 16 * k - 15));
      sum = _mm512_xor_si512(sum, _mm512_clmulepi64_epi128(lambda[k], s, 0x00));
      sum = _mm512_xor_si512(sum, _mm512_clmulepi64_epi128(lambda[k], s, 0x11));
    }
    alignas(64) uint64_t words[8];
    _mm512_store_si512(words, sum);
    const uint32_t delta = slots.reduce(static_cast<uint32_t>((words[0] ^ words[2] ^ words[4] ^ words[6]) >> 32));
    if (delta == 0) {
      shiftUp<R>(b);
    ++degB;
      continue;
    }
    const bool lengthChange = r >= 2 * L;
    __m512i oldLambda[R];
    shiftUp<R>(b);
    ++degB;
    const __m512i d = _mm512_set1_epi64(delta);
#pragma GCC unroll 8
    for (int k = 0; k < R; ++k) {
      oldLambda[k] = lambda[k];
      if (16 * k > degB) continue;
      lambda[k] = _mm512_xor_si512(lambda[k], reduceSlots(slots, timesScalar(b[k], d)));
    }
    if (lengthChange) {
      const __m512i inverse = _mm512_set1_epi64(field.inverse(static_cast<uint16_t>(delta)));
#pragma GCC unroll 8
      for (int k = 0; k < R; ++k) b[k] = 16 * k > L ? _mm512_setzero_si512() : reduceSlots(slots, timesScalar(oldLambda[k], inverse));
      degB = L;
      L = r + 1 - L;
    }
  }
#pragma GCC unroll 8
  for (int k = 0; k < R; ++k) _mm512_storeu_si512(out + 16 * k, lambda[k]);
}

using Iteration = void (*)(const SlotReduction&, const FieldTables&, const uint32_t*, int, bool, uint32_t*);
#endif

}  // namespace

bool ClmulMassey::supports(const FieldTables& field, int t, KernelLevel level) {
#ifdef QFB_HAVE_VPCLMUL
  return level == KernelLevel::VectorClmul && detectedKernelLevel() == KernelLevel::VectorClmul && field.m() <= 16 &&
         2 * t + 1 <= 16 * kMaxRegisters;
#else
  (void)field;
  (void)t;
  (void)level;
  return false;
#endif
}

ClmulMassey::ClmulMassey(const FieldTables& f, int t_)
    : field(f),
      t(t_),
      registers((2 * t_ + 1 + 15) / 16),
      lambda(16 * static_cast<size_t>(registers), 0),
      syndromes(16 + 2 * static_cast<size_t>(t_), 0),
      slots(f) {}

void ClmulMassey::locator(const uint16_t* S, int steps, uint16_t* Lambda, bool squaredSyndromes) {
#ifdef QFB_HAVE_VPCLMUL
  static constexpr Iteration kIterations[] = {&iterate<1>, &iterate<2>, &iterate<3>, &iterate<4>,
                                              &iterate<5>, &iterate<6>, &iterate<7>, &iterate<8>,
                                              &iterate<9>, &iterate<10>, &iterate<11>, &iterate<12>,
                                              &iterate<13>, &iterate<14>, &iterate<15>, &iterate<16>};
  uint32_t* syn = syndromes.data() + 16;
  std::copy(S, S + steps, syn);
  kIterations[registers - 1](slots, field, syn, steps, squaredSyndromes, lambda.data());
  for (int i = 0; i <= 2 * t; ++i) Lambda[i] = static_cast<uint16_t>(lambda[i]);
  std::fill(syn, syn + steps, 0u);
#else
  (void)S;
  (void)steps;
  (void)Lambda;
  (void)squaredSyndromes;
#endif
}
