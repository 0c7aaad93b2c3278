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

// The products of the low words (even) and of the high words (odd, one
// word up) of NV registers added into out[0 .. 8 NV - 1]; returns the odd
// products' top word, out[8 NV].
template <int NV>
__attribute__((target("avx512f,avx512bw,vpclmulqdq"))) inline uint64_t storeEvenOdd(const __m512i* even,
                                                                                   const __m512i* odd, uint64_t* out) {
  __m512i below = _mm512_setzero_si512();
  #pragma GCC unroll 16
  for (int v = 0; v < NV; ++v) {
    const __m512i shifted = _mm512_maskz_alignr_epi64(0xff, odd[v], below, 7);
    _mm512_storeu_si512(out + 8 * v, _mm512_xor_si512(even[v], shifted));
    below = odd[v];
  }
  return static_cast<uint64_t>(_mm_extract_epi64(_mm512_maskz_extracti32x4_epi32(0xf, below, 3), 1));
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
  out[8 * NV] = storeEvenOdd<NV>(even, odd, out);
  if constexpr (HALF) {
    out[8 * NV] ^= static_cast<uint64_t>(_mm_cvtsi128_si64(last));
    out[8 * NV + 1] = static_cast<uint64_t>(_mm_extract_epi64(last, 1));
  }
}

// 512-bit registers, W = 8 NV + T words, K a multiple of 8: the first 8 NV
// words of every constant as in foldZmm (a_j broadcast, four products per
// instruction), and the T words beyond them transposed, so that they waste
// no lanes: for eight consecutive j, qword q of a register holds word
// 8 NV + u of C_(j+q), and a's own eight words are the other operand. The
// lanes then hold products that land on the same two words; they are added
// across lanes once per step. That costs 2T instructions per eight j where
// whole registers would cost 16, so a step takes K W / 4 products' worth of
// instructions plus the padding of W to 8 NV + T, none.
template <int NV, int T>
__attribute__((target("avx512f,avx512bw,vpclmulqdq,pclmul"))) void foldWide(const uint64_t* a, const uint64_t* mainC,
                                                                            const uint64_t* tailC, int groups,
                                                                            uint64_t* out) {
  constexpr int kMain = NV > 0 ? NV : 1, kTail = T > 0 ? T : 1;
  __m512i even[kMain], odd[kMain], across[kTail];
  #pragma GCC unroll 8
  for (int v = 0; v < kMain; ++v) even[v] = odd[v] = _mm512_setzero_si512();
  #pragma GCC unroll 8
  for (int u = 0; u < kTail; ++u) across[u] = _mm512_setzero_si512();
  for (int g = 0; g < groups; ++g) {
    if constexpr (T > 0) {
      const __m512i words = _mm512_loadu_si512(a + 8 * g);
      #pragma GCC unroll 8
      for (int u = 0; u < T; ++u) {
        const __m512i cv = _mm512_loadu_si512(tailC + 8 * (static_cast<size_t>(g) * T + u));
        across[u] = _mm512_ternarylogic_epi64(across[u], _mm512_clmulepi64_epi128(words, cv, 0x00),
                                              _mm512_clmulepi64_epi128(words, cv, 0x11), 0x96);
      }
    }
    if constexpr (NV > 0) {
      #pragma GCC unroll 8
      for (int q = 0; q < 8; ++q) {
        const int j = 8 * g + q;
        const __m512i x = _mm512_set1_epi64(static_cast<long long>(a[j]));
        const uint64_t* cj = mainC + static_cast<size_t>(j) * 8 * NV;
        #pragma GCC unroll 8
        for (int v = 0; v < NV; ++v) {
          const __m512i cv = _mm512_loadu_si512(cj + 8 * v);
          even[v] = _mm512_xor_si512(even[v], _mm512_clmulepi64_epi128(x, cv, 0x00));
          odd[v] = _mm512_xor_si512(odd[v], _mm512_clmulepi64_epi128(x, cv, 0x10));
        }
      }
    }
  }
  if constexpr (NV > 0) {
    out[8 * NV] = storeEvenOdd<NV>(even, odd, out);
  } else {
    out[0] = 0;
  }
  if constexpr (T > 0) {
    #pragma GCC unroll 8
    for (int u = 0; u < T; ++u) {
      const __m256i half = _mm256_xor_si256(_mm512_maskz_extracti64x4_epi64(0xf, across[u], 0), _mm512_maskz_extracti64x4_epi64(0xf, across[u], 1));
      const __m128i sum = _mm_xor_si128(_mm256_castsi256_si128(half), _mm256_extracti128_si256(half, 1));
      out[8 * NV + u] ^= static_cast<uint64_t>(_mm_cvtsi128_si64(sum));
      out[8 * NV + u + 1] = static_cast<uint64_t>(_mm_extract_epi64(sum, 1));
    }
  }
}

// The next K message words for a wide step, 8 at a time with 512-bit
// loads: word c of a group is the 64 bits from bit `first` + 64 c,
// big-endian, that is two byte-swapped qwords a byte apart shifted
// together; bytes past the message are masked off, never read. The words
// go to a in reverse (a[K-1] is the first, highest-degree one), added to
// the previous step's sum (zero above word W).
__attribute__((target("avx512f,avx512bw"))) inline __m512i loadSwapped(const uint8_t* message, size_t bytes, size_t at,
                                                                      __m512i swapBytes) {
  const __mmask64 valid = at >= bytes ? 0 : bytes - at >= 64 ? ~__mmask64{0} : (__mmask64{1} << (bytes - at)) - 1;
  return _mm512_shuffle_epi8(_mm512_maskz_loadu_epi8(valid, message + (at < bytes ? at : 0)), swapBytes);
}

__attribute__((target("avx512f,avx512bw"))) void takeWords(const uint8_t* message, size_t bytes, size_t first, int K,
                                                          const uint64_t* sum, uint64_t* a) {
  const __m512i swapBytes = _mm512_set4_epi32(0x08090a0b, 0x0c0d0e0f, 0x00010203, 0x04050607);
  const __m512i reverse = _mm512_set_epi64(0, 1, 2, 3, 4, 5, 6, 7);
  const __m128i up = _mm_cvtsi32_si128(static_cast<int>(first % 8)), down = _mm_cvtsi32_si128(64 - static_cast<int>(first % 8));
  for (int g = 0; g < K / 8; ++g) {
    const size_t at = first / 8 + 64 * static_cast<size_t>(g);
    const __m512i words = _mm512_or_si512(_mm512_maskz_sll_epi64(0xff, loadSwapped(message, bytes, at, swapBytes), up),
                                          _mm512_maskz_srl_epi64(0xff, loadSwapped(message, bytes, at + 8, swapBytes), down));
    uint64_t* to = a + K - 8 - 8 * g;
    _mm512_storeu_si512(to, _mm512_xor_si512(_mm512_loadu_si512(sum + (to - a)), _mm512_maskz_permutexvar_epi64(0xff, reverse, words)));
  }
}

template <int... I>
constexpr std::array<ClmulRemainder::WideKernel, sizeof...(I)> wideKernels(std::integer_sequence<int, I...>) {
  return {&foldWide<I / 8, I % 8>...};
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
    : W((r + 63) / 64), K(W + 1), stride(0), fold(nullptr), wide(nullptr) {
  const int lane = laneWords(level);
  // A last 512-bit register that would hold one word of W gives way to a
  // 128-bit one (foldZmm's HALF).
  const bool half = level == KernelLevel::VectorClmul && W > 8 && W % 8 == 1;
  stride = half ? W + 1 : (W + lane - 1) / lane * lane;
#ifdef QFB_HAVE_CLMUL
  static constexpr auto xmm = xmmKernels(std::make_integer_sequence<int, kMaxWords / 2>());
  static constexpr auto zmm = zmmKernels(std::make_integer_sequence<int, kMaxWords / 8>());
  static constexpr auto zmmHalf = zmmHalfKernels(std::make_integer_sequence<int, kMaxWords / 8 - 1>());
  static constexpr auto wideSteps = wideKernels(std::make_integer_sequence<int, kMaxWords + 1>());
  if (level != KernelLevel::VectorClmul) {
    fold = xmm[stride / 2 - 1];
  } else {
    fold = half ? zmmHalf[W / 8 - 1] : zmm[stride / 8 - 1];
    wide = wideSteps[W];
    K = (W + 8) / 8 * 8;
  }
#endif
  const int pad = 64 * W - r;
  // g' - x^rho, padded to the stride like every kernel operand.
  lowGenerator.assign(stride, 0);
  for (int d = 0; d < r; ++d)
    if (generator[d] & 1) lowGenerator[(d + pad) / 64] |= uint64_t{1} << ((d + pad) % 64);
  // C_j = x^(64(K+j)) mod g' and F_j = x^(64(W+j)) mod g', j < K, by
  // repeated multiplication by x.
  std::vector<uint64_t> steps(static_cast<size_t>(K) * W), finals(static_cast<size_t>(K) * W);
  std::vector<uint64_t> p(W, 0);
  p[0] = 1;
  for (int s = 0; s < 2 * K || s < W + K; ++s) {
    if (s >= K && s < 2 * K) std::copy(p.begin(), p.end(), steps.begin() + static_cast<ptrdiff_t>(s - K) * W);
    if (s >= W && s < W + K) std::copy(p.begin(), p.end(), finals.begin() + static_cast<ptrdiff_t>(s - W) * W);
    for (int e = 0; e < 64; ++e) {
      const bool carry = (p[W - 1] >> 63) != 0;
      for (int w = W - 1; w > 0; --w) p[w] = (p[w] << 1) | (p[w - 1] >> 63);
      p[0] <<= 1;
      if (carry)
        for (int w = 0; w < W; ++w) p[w] ^= lowGenerator[w];
    }
  }
  stepConstants.assign(static_cast<size_t>(K) * stride, 0);
  finalConstants.assign(static_cast<size_t>(K) * stride, 0);
  for (int j = 0; j < K; ++j) {
    std::copy_n(steps.begin() + static_cast<ptrdiff_t>(j) * W, W, stepConstants.begin() + static_cast<ptrdiff_t>(j) * stride);
    std::copy_n(finals.begin() + static_cast<ptrdiff_t>(j) * W, W, finalConstants.begin() + static_cast<ptrdiff_t>(j) * stride);
  }
  if (wide != nullptr) {
    splitForWide(steps, stepMain, stepTail);
    splitForWide(finals, finalMain, finalTail);
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

void ClmulRemainder::splitForWide(const std::vector<uint64_t>& constants, std::vector<uint64_t>& mainPart,
                                  std::vector<uint64_t>& tailPart) const {
  const int full = W / 8 * 8, tail = W % 8;
  mainPart.assign(static_cast<size_t>(K) * full, 0);
  tailPart.assign(static_cast<size_t>(K) * tail, 0);
  for (int j = 0; j < K; ++j) {
    const uint64_t* c = &constants[static_cast<size_t>(j) * W];
    std::copy_n(c, full, mainPart.begin() + static_cast<ptrdiff_t>(j) * full);
    // Group j / 8, tail word u, qword j % 8.
    for (int u = 0; u < tail; ++u) tailPart[8 * (static_cast<size_t>(j / 8) * tail + u) + j % 8] = c[full + u];
  }
}

void ClmulRemainder::shiftedRemainder(const uint8_t* message, size_t bits, uint64_t* rem) const {
  constexpr int kMaxK = kMaxWords + 8;
  uint64_t a[kMaxK] = {}, s[kMaxK];
  const size_t words = (bits + 63) / 64;
  auto step = [&](const uint64_t* constants, const uint64_t* mainC, const uint64_t* tailC) {
    if (wide != nullptr) wide(a, mainC, tailC, K / 8, s);
    else fold(a, constants, K, s);
  };
  if (words > 0) {
    const WordReader reader(message, bits, bits - 64 * (words - 1));
    // Leading zero words make the count a multiple of K.
    const size_t zeros = (K - words % K) % K;
    // Message word i starts at bit bits - 64 (words - i) (before the
    // message when that is negative: the head and the zeros).
    std::fill(s + W + 1, s + K, 0);
    for (size_t q = 0; q < static_cast<size_t>(K); q += 8) {
#ifdef QFB_HAVE_CLMUL
      if (wide != nullptr && q >= zeros && bits >= 64 * (words + zeros - q)) {
        const uint64_t none[8] = {};
        takeWords(message, packedbits::bytesFor(bits), bits - 64 * (words + zeros - q), 8, none, a + K - 8 - q);
        continue;
      }
#endif
      for (size_t w = q; w < q + 8 && w < static_cast<size_t>(K); ++w)
        if (w >= zeros) a[K - 1 - w] = reader.word(w - zeros);
    }
    for (size_t i = K - zeros; i < words; i += K) {
      step(stepConstants.data(), stepMain.data(), stepTail.data());
#ifdef QFB_HAVE_CLMUL
      if (wide != nullptr) {
        takeWords(message, packedbits::bytesFor(bits), bits - 64 * (words - i), K, s, a);
        continue;
      }
#endif
      for (int q = 0; q < K; ++q) a[K - 1 - q] = s[K - 1 - q] ^ reader.word(i + q);
    }
  }
  step(finalConstants.data(), finalMain.data(), finalTail.data());
  // Barrett: q from the word above x^rho, then s += low W words of q (g' - x^rho).
  uint64_t product[kMaxWords + 2];
  fold(&s[W], muLow.data(), 1, product);
  const uint64_t q = s[W] ^ product[1];
  fold(&q, lowGenerator.data(), 1, product);
  for (int w = 0; w < W; ++w) rem[W - 1 - w] = s[w] ^ product[w];
}
