// The Frobenius test x^(2^m) = x (mod Lambda) on packed coefficient slots;
// see the header for the layout and the squaring.
#include "bch/splitCheck.h"

#include <algorithm>

#include "bch/fieldTables.h"
#include "bch/slotReduction.h"

#if defined(__x86_64__) && defined(__GNUC__) && !defined(QFB_PORTABLE_ONLY)
#include <immintrin.h>
#define QFB_HAVE_VPCLMUL 1
#endif

namespace {

// Degrees up to 16 x kMaxRegisters are tested; beyond, splits() says yes
// and leaves the decision to the search.
constexpr int kMaxRegisters = 8;

#ifdef QFB_HAVE_VPCLMUL
#define QFB_TARGET __attribute__((target("avx512f,avx512bw,vpclmulqdq")))
constexpr __mmask16 kAll = 0xffff;

// The whole test for degree d with R registers per polynomial.
template <int R>
QFB_TARGET bool splitsIn(const SlotReduction& slots, const uint32_t* monic, int d, uint32_t* reductions,
                         uint64_t* squares, int m) {
  const __mmask16 lastMask = static_cast<__mmask16>((1u << (d - 16 * (R - 1))) - 1);
  auto slotMask = [&](int k) { return k == R - 1 ? lastMask : static_cast<__mmask16>(0xffff); };
  __m512i lambda[R], x[R];
#pragma GCC unroll 8
  for (int k = 0; k < R; ++k) x[k] = lambda[k] = _mm512_maskz_loadu_epi32(slotMask(k), monic + 16 * k);
  // Q_j = x^(2j) mod Lambda for 2j = d .. 2d-2, from x^d = monic by
  // multiplications by x: shift up one slot, the coefficient shifted out
  // times the monic part comes back in.
  const int firstJ = (d + 1) / 2;
  for (int e = d;; ++e) {
    if (e % 2 == 0) {
#pragma GCC unroll 8
      for (int k = 0; k < R; ++k)
        _mm512_storeu_si512(reductions + 16 * (static_cast<size_t>(e / 2 - firstJ) * R + k), x[k]);
    }
    if (e == 2 * d - 2) break;
    alignas(64) uint32_t top[16];
    _mm512_store_si512(top, x[R - 1]);
    const __m512i c = _mm512_set1_epi64(top[(d - 1) % 16]);
#pragma GCC unroll 8
    for (int k = R - 1; k >= 0; --k) {
      const __m512i below = k > 0 ? x[k - 1] : _mm512_setzero_si512();
      const __m512i shifted = _mm512_maskz_alignr_epi32(kAll, x[k], below, 15);
      x[k] = _mm512_maskz_xor_epi32(slotMask(k), shifted, reduceSlots(slots, timesScalar(lambda[k], c)));
    }
  }
  // P = x, squared m times.
  __m512i p[R];
#pragma GCC unroll 8
  for (int k = 0; k < R; ++k) p[k] = _mm512_setzero_si512();
  p[0] = _mm512_maskz_set1_epi32(0x2, 1);
  const __m512i firstHalf = _mm512_set_epi64(11, 10, 3, 2, 9, 8, 1, 0);
  const __m512i secondHalf = _mm512_set_epi64(15, 14, 7, 6, 13, 12, 5, 4);
  for (int i = 0; i < m; ++i) {
    // p_j^2 as one 64-bit word per coefficient: word j at 32-bit slot 2j.
#pragma GCC unroll 8
    for (int k = 0; k < R; ++k) {
      const __m512i lo = _mm512_clmulepi64_epi128(p[k], p[k], 0x00);  // slots 4l, 4l+1 of lane l
      const __m512i hi = _mm512_clmulepi64_epi128(p[k], p[k], 0x11);  // slots 4l+2, 4l+3
      _mm512_storeu_si512(squares + 16 * k, reduceSlots(slots, _mm512_maskz_permutex2var_epi64(0xff, lo, firstHalf, hi)));
      _mm512_storeu_si512(squares + 16 * k + 8, reduceSlots(slots, _mm512_maskz_permutex2var_epi64(0xff, lo, secondHalf, hi)));
    }
    __m512i even[R], odd[R];  // products of the low and of the high words
#pragma GCC unroll 8
    for (int k = 0; k < R; ++k) even[k] = odd[k] = _mm512_setzero_si512();
    for (int j = firstJ; j < d; ++j) {
      const __m512i s = _mm512_set1_epi64(static_cast<long long>(squares[j]));
      const uint32_t* q = reductions + 16 * static_cast<size_t>(j - firstJ) * R;
#pragma GCC unroll 8
      for (int k = 0; k < R; ++k) {
        const __m512i v = _mm512_loadu_si512(q + 16 * k);
        even[k] = _mm512_xor_si512(even[k], _mm512_clmulepi64_epi128(v, s, 0x00));
        odd[k] = _mm512_xor_si512(odd[k], _mm512_clmulepi64_epi128(v, s, 0x01));
      }
    }
    // The squares with 2j < d are in place already: word j is slot 2j.
#pragma GCC unroll 8
    for (int k = 0; k < R; ++k) {
      const __m512i inPlace = _mm512_maskz_loadu_epi32(slotMask(k), reinterpret_cast<const uint32_t*>(squares) + 16 * k);
      p[k] = reduceSlots(slots, _mm512_xor_si512(inPlace, _mm512_maskz_unpacklo_epi64(0xff, even[k], odd[k])));
    }
  }
  // x^(2^m) = x.
  const __m512i xPoly = _mm512_maskz_set1_epi32(0x2, 1);
  __mmask16 differ = _mm512_cmpneq_epi32_mask(p[0], xPoly);
#pragma GCC unroll 8
  for (int k = 1; k < R; ++k) differ |= _mm512_test_epi32_mask(p[k], p[k]);
  return differ == 0;
}

using SplitKernel = bool (*)(const SlotReduction&, const uint32_t*, int, uint32_t*, uint64_t*, int);
constexpr SplitKernel kKernels[kMaxRegisters] = {&splitsIn<1>, &splitsIn<2>, &splitsIn<3>, &splitsIn<4>,
                                                  &splitsIn<5>, &splitsIn<6>, &splitsIn<7>, &splitsIn<8>};
#endif

}  // namespace

bool SplitCheck::supports(KernelLevel level) {
#ifdef QFB_HAVE_VPCLMUL
  return level == KernelLevel::VectorClmul && detectedKernelLevel() == KernelLevel::VectorClmul;
#else
  (void)level;
  return false;
#endif
}

SplitCheck::SplitCheck(const FieldTables& f, int t_)
    : field(f),
      registers(std::min((t_ + 15) / 16, kMaxRegisters)),
      monic(16 * static_cast<size_t>(registers), 0),
      reductions(16 * static_cast<size_t>(registers) * (std::min(t_, 16 * kMaxRegisters) / 2 + 1), 0),
      squares(16 * static_cast<size_t>(registers), 0),
      slots(f) {}

bool SplitCheck::tests(int d) const {
#ifdef QFB_HAVE_VPCLMUL
  return d >= 1 && (d + 15) / 16 <= registers;
#else
  (void)d;
  return false;
#endif
}

bool SplitCheck::splits(const uint16_t* lambda, int d) {
  if (d <= 1) return true;
#ifdef QFB_HAVE_VPCLMUL
  const int R = (d + 15) / 16;
  if (R > registers) return true;
  const int logInverse = field.order() - field.log(lambda[d]);
  for (int i = 0; i < d; ++i) monic[i] = field.mulByLog(lambda[i], logInverse);
  std::fill(monic.begin() + d, monic.end(), 0);
  return kKernels[R - 1](slots, monic.data(), d, reductions.data(), squares.data(), field.m());
#else
  (void)lambda;
  return true;
#endif
}
