// Carry-less-multiply division by the generator; see the header for the
// folding and the Barrett reduction.
#include "bch/clmulRemainder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "bch/packedBits.h"

#if defined(__x86_64__) && defined(__GNUC__) && !defined(QFB_PORTABLE_ONLY)
#include <immintrin.h>
#define QFB_HAVE_CLMUL 1
#endif

namespace {

#ifdef QFB_HAVE_CLMUL
// 128-bit registers: stride = 2 NV words, one product per instruction. The
// registers are taken TILE at a time (even and odd accumulators of a tile
// fit the 16 registers); even sums go to out, odd sums to odd.
template <int TILE>
__attribute__((target("pclmul,ssse3"))) void foldXmmTile(const uint64_t* a, const uint64_t* c, int K, int stride,
                                                         uint64_t* out, uint64_t* odd) {
  __m128i e[TILE], o[TILE];
  #pragma GCC unroll 16
  for (int v = 0; v < TILE; ++v) e[v] = o[v] = _mm_setzero_si128();
  for (int j = 0; j < K; ++j) {
    const __m128i x = _mm_cvtsi64_si128(static_cast<long long>(a[j]));
    const uint64_t* cj = c + static_cast<size_t>(j) * stride;
    #pragma GCC unroll 16
    for (int v = 0; v < TILE; ++v) {
      const __m128i cv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(cj + 2 * v));
      e[v] = _mm_xor_si128(e[v], _mm_clmulepi64_si128(x, cv, 0x00));
      o[v] = _mm_xor_si128(o[v], _mm_clmulepi64_si128(x, cv, 0x10));
    }
  }
  #pragma GCC unroll 16
  for (int v = 0; v < TILE; ++v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 2 * v), e[v]);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(odd + 2 * v), o[v]);
  }
}

template <int NV>
void foldXmm(const uint64_t* a, const uint64_t* c, int K, uint64_t* out) {
  constexpr int kTile = 6;
  uint64_t odd[2 * NV];
  int v = 0;
  for (; v + kTile <= NV; v += kTile) foldXmmTile<kTile>(a, c + 2 * v, K, 2 * NV, out + 2 * v, odd + 2 * v);
  if constexpr (NV % kTile != 0) foldXmmTile<NV % kTile>(a, c + 2 * v, K, 2 * NV, out + 2 * v, odd + 2 * v);
  // Odd products one word up.
  out[2 * NV] = odd[2 * NV - 1];
  for (int w = 2 * NV - 1; w > 0; --w) out[w] ^= odd[w - 1];
}

// 512-bit registers: stride = 8 NV words, four products per instruction.
// With HALF, a constant has one word more (W = 8 NV + 1, stride 8 NV + 2),
// whose products take one 128-bit instruction instead of two 512-bit ones
// that would be seven-eighths padding.
template <int NV, bool HALF>
__attribute__((target("avx512f,avx512bw,vpclmulqdq,pclmul"))) void foldZmm(const uint64_t* a, const uint64_t* c,
                                                                           int K, uint64_t* out) {
  constexpr int stride = 8 * NV + (HALF ? 2 : 0);
  __m128i last = _mm_setzero_si128();
  __m512i even[NV], odd[NV];
  #pragma GCC unroll 16
  for (int v = 0; v < NV; ++v) even[v] = odd[v] = _mm512_setzero_si512();
  for (int j = 0; j < K; ++j) {
    const __m512i x = _mm512_set1_epi64(static_cast<long long>(a[j]));
    const uint64_t* cj = c + static_cast<size_t>(j) * stride;
    if constexpr (HALF)
      last = _mm_xor_si128(last, _mm_clmulepi64_si128(_mm_cvtsi64_si128(static_cast<long long>(a[j])),
                                                      _mm_loadu_si128(reinterpret_cast<const __m128i*>(cj + 8 * NV)),
                                                      0x00));
    #pragma GCC unroll 16
    for (int v = 0; v < NV; ++v) {
      const __m512i cv = _mm512_loadu_si512(cj + 8 * v);
      even[v] = _mm512_xor_si512(even[v], _mm512_clmulepi64_epi128(x, cv, 0x00));
      odd[v] = _mm512_xor_si512(odd[v], _mm512_clmulepi64_epi128(x, cv, 0x10));
    }
  }
  __m512i below = _mm512_setzero_si512();
  #pragma GCC unroll 16
  for (int v = 0; v < NV; ++v) {
    const __m512i shifted = _mm512_maskz_alignr_epi64(0xff, odd[v], below, 7);
    _mm512_storeu_si512(out + 8 * v, _mm512_xor_si512(even[v], shifted));
    below = odd[v];
  }
  uint64_t top[8];
  _mm512_storeu_si512(top, below);
  out[8 * NV] = top[7];
  if constexpr (HALF) {
    out[8 * NV] ^= static_cast<uint64_t>(_mm_cvtsi128_si64(last));
    out[8 * NV + 1] = static_cast<uint64_t>(_mm_extract_epi64(last, 1));
  }
}

template <int... I>
constexpr std::array<ClmulRemainder::FoldKernel, sizeof...(I)> xmmKernels(std::integer_sequence<int, I...>) {
  return {&foldXmm<I + 1>...};
}
template <int... I>
constexpr std::array<ClmulRemainder::FoldKernel, sizeof...(I)> zmmKernels(std::integer_sequence<int, I...>) {
  return {&foldZmm<I + 1, false>...};
}
template <int... I>
constexpr std::array<ClmulRemainder::FoldKernel, sizeof...(I)> zmmHalfKernels(std::integer_sequence<int, I...>) {
  return {&foldZmm<I + 1, true>...};
}
#endif

int laneWords(KernelLevel level) { return level == KernelLevel::VectorClmul ? 8 : 2; }

// The message as 64-bit words, the first one short (head bits) so that the
// others are whole; word i > 0 starts at bit head + 64(i-1).
class WordReader {
 public:
  WordReader(const uint8_t* m, size_t bits, size_t head) : msg(m), head(head) {
    const size_t bytes = packedbits::bytesFor(bits);
    // Words whose nine bytes lie inside the message load without checks.
    fastEnd = bytes >= 9 ? (bytes - 9) * 8 : 0;
  }
  uint64_t word(size_t i) const {
    if (i == 0) return packedbits::load(msg, 0, static_cast<int>(head));
    const size_t offset = head + 64 * (i - 1);
    if (offset >= fastEnd) return packedbits::load(msg, offset, 64);
    const uint8_t* p = msg + offset / 8;
    const int skip = static_cast<int>(offset % 8);
    uint64_t v;
    std::memcpy(&v, p, 8);
    v = __builtin_bswap64(v);
    return skip == 0 ? v : (v << skip) | (p[8] >> (8 - skip));
  }

 private:
  const uint8_t* msg;
  size_t head, fastEnd;
};

}  // namespace

bool ClmulRemainder::supports(KernelLevel level, int r) {
#ifdef QFB_HAVE_CLMUL
  if (level == KernelLevel::Scalar || static_cast<int>(level) > static_cast<int>(detectedKernelLevel())) return false;
  return r > 0 && (r + 63) / 64 <= kMaxWords;
#else
  (void)level;
  (void)r;
  return false;
#endif
}

ClmulRemainder::ClmulRemainder(const int* generator, int r, KernelLevel level)
    : W((r + 63) / 64), K(W + 1), stride(0), fold(nullptr) {
  const int lane = laneWords(level);
  // A last 512-bit register that would hold one word of W gives way to a
  // 128-bit one (foldZmm's HALF).
  const bool half = level == KernelLevel::VectorClmul && W > 8 && W % 8 == 1;
  stride = half ? W + 1 : (W + lane - 1) / lane * lane;
#ifdef QFB_HAVE_CLMUL
  static constexpr auto xmm = xmmKernels(std::make_integer_sequence<int, kMaxWords / 2>());
  static constexpr auto zmm = zmmKernels(std::make_integer_sequence<int, kMaxWords / 8>());
  static constexpr auto zmmHalf = zmmHalfKernels(std::make_integer_sequence<int, kMaxWords / 8 - 1>());
  if (level != KernelLevel::VectorClmul) fold = xmm[stride / 2 - 1];
  else fold = half ? zmmHalf[W / 8 - 1] : zmm[stride / 8 - 1];
#endif
  const int pad = 64 * W - r;
  // g' - x^rho, padded to the stride like every kernel operand.
  lowGenerator.assign(stride, 0);
  for (int d = 0; d < r; ++d)
    if (generator[d] & 1) lowGenerator[(d + pad) / 64] |= uint64_t{1} << ((d + pad) % 64);
  // x^(64s) mod g' for s = W .. 2W+1, by repeated multiplication by x.
  stepConstants.assign(static_cast<size_t>(K) * stride, 0);
  finalConstants.assign(static_cast<size_t>(K) * stride, 0);
  std::vector<uint64_t> p(W, 0);
  p[0] = 1;
  for (int s = 0; s <= 2 * W + 1; ++s) {
    if (s >= K) std::copy(p.begin(), p.end(), stepConstants.begin() + static_cast<ptrdiff_t>(s - K) * stride);
    if (s >= W && s < W + K)
      std::copy(p.begin(), p.end(), finalConstants.begin() + static_cast<ptrdiff_t>(s - W) * stride);
    for (int e = 0; e < 64; ++e) {
      const bool carry = (p[W - 1] >> 63) != 0;
      for (int w = W - 1; w > 0; --w) p[w] = (p[w] << 1) | (p[w - 1] >> 63);
      p[0] <<= 1;
      if (carry)
        for (int w = 0; w < W; ++w) p[w] ^= lowGenerator[w];
    }
  }
  // mu = floor(x^(r+64) / g) by long division; its x^64 term is implicit.
  muLow.assign(stride, 0);
  std::vector<int> dividend(static_cast<size_t>(r) + 65, 0);
  dividend[r + 64] = 1;
  for (int i = 64; i >= 0; --i)
    if (dividend[r + i]) {
      if (i < 64) muLow[0] |= uint64_t{1} << i;
      for (int d = 0; d <= r; ++d) dividend[i + d] ^= generator[d] & 1;
    }
}

void ClmulRemainder::shiftedRemainder(const uint8_t* message, size_t bits, uint64_t* rem) const {
  uint64_t a[kMaxWords + 2] = {}, s[kMaxWords + 2];
  const size_t words = (bits + 63) / 64;
  if (words > 0) {
    const WordReader reader(message, bits, bits - 64 * (words - 1));
    size_t first = words % K;
    if (first == 0) first = K;
    for (size_t q = 0; q < first; ++q) a[first - 1 - q] = reader.word(q);
    for (size_t i = first; i < words; i += K) {
      fold(a, stepConstants.data(), K, s);
      for (int q = 0; q < K; ++q) a[K - 1 - q] = s[K - 1 - q] ^ reader.word(i + q);
    }
  }
  fold(a, finalConstants.data(), K, s);
  // Barrett: q from the word above x^rho, then s += low W words of q (g' - x^rho).
  uint64_t product[kMaxWords + 2];
  fold(&s[W], muLow.data(), 1, product);
  const uint64_t q = s[W] ^ product[1];
  fold(&q, lowGenerator.data(), 1, product);
  for (int w = 0; w < W; ++w) rem[W - 1 - w] = s[w] ^ product[w];
}
