// Syndromes through the minimal polynomials of the code's roots; see the
// header for the reduction and the evaluation.
#include "bch/syndromeEvaluator.h"

#include <algorithm>
#include <map>

#include "bch/fieldTables.h"

#if defined(__x86_64__) && defined(__GNUC__) && !defined(QFB_PORTABLE_ONLY)
#include <immintrin.h>
#define QFB_HAVE_CLMUL 1
#endif

namespace {

// a b mod M over GF(2), deg M = d <= 16, a and b reduced.
uint64_t mulMod(uint64_t a, uint64_t b, uint32_t M, int d) {
  uint64_t p = 0;
  for (int i = d - 1; i >= 0; --i) {
    p <<= 1;
    if (p >> d) p ^= M;
    if ((b >> i) & 1) p ^= a;
  }
  return p;
}

uint64_t powerOfX(int64_t e, uint32_t M, int d) {
  uint64_t result = 1 % (uint64_t{1} << d), base = d > 1 ? 2 : (2 ^ M);
  for (; e > 0; e >>= 1) {
    if (e & 1) result = mulMod(result, base, M, d);
    base = mulMod(base, base, M, d);
  }
  return result;
}

#ifdef QFB_HAVE_CLMUL
__attribute__((target("pclmul,sse4.1"))) inline __m128i clmul(uint64_t a, uint64_t b) {
  return _mm_clmulepi64_si128(_mm_cvtsi64_si128(static_cast<long long>(a)),
                              _mm_cvtsi64_si128(static_cast<long long>(b)), 0x00);
}
#endif

}  // namespace

SyndromeEvaluator::SyndromeEvaluator(const FieldTables& f, int b, int t, int r, KernelLevel level) : field(f) {
  const int m = field.m(), order = field.order();
  std::map<int, int> cosetByLeader;
  nibbleSums.assign(static_cast<size_t>(2 * t) * 64, 0);
  for (int j = 0; j < 2 * t; ++j) {
    const int e = (b + j) % order;
    // A coset is named by its least member.
    std::vector<int> members;
    const std::vector<int> minimal = field.minimalPolynomial(e, members);
    const int leader = *std::min_element(members.begin(), members.end());
    auto found = cosetByLeader.find(leader);
    if (found == cosetByLeader.end()) {
      Coset c;
      c.degree = static_cast<int>(members.size());
      c.polynomial = 0;
      for (int i = 0; i <= c.degree; ++i) c.polynomial |= static_cast<uint32_t>(minimal[i] & 1) << i;
      if (c.degree >= 8) {
        const uint32_t mask = (uint32_t{1} << c.degree) - 1;
        c.byteReduction.assign(256, 0);
        for (uint32_t u = 0; u < 256; ++u) {
          // u(x) x^d mod M, one bit at a time from the top.
          uint32_t s = 0;
          for (int bit = 7; bit >= 0; --bit) {
            s = (s << 1) ^ (((u >> bit) & 1) << c.degree);
            if (s >> c.degree) s ^= c.polynomial;
          }
          c.byteReduction[u] = s & mask;
        }
      }
      found = cosetByLeader.emplace(leader, static_cast<int>(cosets.size())).first;
      cosets.push_back(std::move(c));
    }
    cosetOfSyndrome.push_back(found->second);
    squareOf.push_back(e % 2 == 0 && e / 2 >= b && e / 2 - b < j ? e / 2 - b : -1);
    uint16_t* sums = &nibbleSums[static_cast<size_t>(j) * 64];
    for (int i = 0; i < m; ++i) {
      const uint16_t power = field.exp(static_cast<int>((static_cast<int64_t>(e) * i) % order));
      for (int v = 0; v < 16; ++v)
        if ((v >> (i % 4)) & 1) sums[16 * (i / 4) + v] ^= power;
    }
  }
  residues.assign(cosets.size(), 0);
#ifdef QFB_HAVE_CLMUL
  carryless = level != KernelLevel::Scalar && static_cast<int>(level) <= static_cast<int>(detectedKernelLevel()) && r > 0;
#else
  (void)level;
#endif
  if (!carryless) return;
  words = (r + 63) / 64;
  const int pad = 64 * words - r;
  for (Coset& c : cosets) {
    const int d = c.degree;
    for (int i = 0; i < words; ++i) {
      const int64_t e = ((64 * static_cast<int64_t>(words - 1 - i) - pad) % order + order) % order;
      c.wordFactors.push_back(powerOfX(e, c.polynomial, d));
    }
    c.x64 = powerOfX(64, c.polynomial, d);
    // mu = floor(x^64 / M) by long division; the x^(64-d) term is implicit.
    uint64_t rest[2] = {0, 1};  // x^64 as two words
    for (int i = 64 - d; i >= 0; --i) {
      const int top = i + d;
      if ((rest[top / 64] >> (top % 64)) & 1) {
        if (i < 64 - d) c.mu |= uint64_t{1} << i;
        for (int k = 0; k <= d; ++k)
          if ((c.polynomial >> k) & 1) rest[(i + k) / 64] ^= uint64_t{1} << ((i + k) % 64);
      }
    }
  }
  vector = level == KernelLevel::VectorClmul && detectedKernelLevel() == KernelLevel::VectorClmul;
  if (!vector) return;
  const size_t groups = (cosets.size() + 7) / 8, stride = static_cast<size_t>(words) + 5;
  groupOperands.assign(groups * stride * 8, 0);
  residues.assign(groups * 8, 0);
  for (size_t c = 0; c < cosets.size(); ++c) {
    const Coset& co = cosets[c];
    uint64_t* g = &groupOperands[c / 8 * stride * 8 + c % 8];
    for (int i = 0; i < words; ++i) g[8 * i] = co.wordFactors[i];
    g[8 * words] = co.x64;
    g[8 * (words + 1)] = co.mu;
    g[8 * (words + 2)] = co.polynomial;
    g[8 * (words + 3)] = static_cast<uint64_t>(co.degree);
    g[8 * (words + 4)] = (uint64_t{1} << co.degree) - 1;
  }
}

#ifdef QFB_HAVE_CLMUL
__attribute__((target("pclmul,sse4.1"))) void SyndromeEvaluator::clmulResidues(const uint64_t* rem) const {
  for (size_t c = 0; c < cosets.size(); ++c) {
    const Coset& co = cosets[c];
    const int d = co.degree;
    __m128i a = _mm_setzero_si128();
    for (int i = 0; i < words; ++i) a = _mm_xor_si128(a, clmul(rem[i], co.wordFactors[i]));
    const uint64_t low = static_cast<uint64_t>(_mm_cvtsi128_si64(a));
    const uint64_t high = static_cast<uint64_t>(_mm_extract_epi64(a, 1));
    const uint64_t folded = low ^ static_cast<uint64_t>(_mm_cvtsi128_si64(clmul(high, co.x64)));
    // q = floor(floor(A'/x^d) mu / x^(64-d)) with mu = x^(64-d) + co.mu.
    const uint64_t above = folded >> d;
    const __m128i product = clmul(above, co.mu);
    const uint64_t pl = static_cast<uint64_t>(_mm_cvtsi128_si64(product));
    const uint64_t ph = static_cast<uint64_t>(_mm_extract_epi64(product, 1));
    const uint64_t q = above ^ (d == 0 ? 0 : (pl >> (64 - d)) | (ph << d));
    const uint64_t qm = static_cast<uint64_t>(_mm_cvtsi128_si64(clmul(q, co.polynomial)));
    residues[c] = static_cast<uint32_t>((folded ^ qm) & ((uint64_t{1} << d) - 1));
  }
}
#else
void SyndromeEvaluator::clmulResidues(const uint64_t*) const {}
#endif

#ifdef QFB_HAVE_CLMUL
namespace {

// Lane-wise 64 x 64-bit carry-less products of eight words: low halves, and
// (with high) the high halves too.
__attribute__((target("avx512f,avx512bw,vpclmulqdq"))) inline __m512i productLow(__m512i a, __m512i b) {
  return _mm512_maskz_unpacklo_epi64(0xff, _mm512_clmulepi64_epi128(a, b, 0x00), _mm512_clmulepi64_epi128(a, b, 0x11));
}
__attribute__((target("avx512f,avx512bw,vpclmulqdq"))) inline __m512i productHigh(__m512i a, __m512i b) {
  return _mm512_maskz_unpackhi_epi64(0xff, _mm512_clmulepi64_epi128(a, b, 0x00), _mm512_clmulepi64_epi128(a, b, 0x11));
}

}  // namespace

__attribute__((target("avx512f,avx512bw,vpclmulqdq"))) void SyndromeEvaluator::vectorResidues(
    const uint64_t* rem) const {
  const size_t groups = (cosets.size() + 7) / 8, stride = static_cast<size_t>(words) + 5;
  const __m512i sixtyFour = _mm512_set1_epi64(64);
  for (size_t g = 0; g < groups; ++g) {
    const uint64_t* op = &groupOperands[g * stride * 8];
    // A = sum_i W_i K_i: even products in lanes' low words' cosets, odd in
    // the high words'.
    __m512i even = _mm512_setzero_si512(), odd = _mm512_setzero_si512();
    for (int i = 0; i < words; ++i) {
      const __m512i w = _mm512_set1_epi64(static_cast<long long>(rem[i]));
      const __m512i k = _mm512_loadu_si512(op + 8 * i);
      even = _mm512_xor_si512(even, _mm512_clmulepi64_epi128(w, k, 0x00));
      odd = _mm512_xor_si512(odd, _mm512_clmulepi64_epi128(w, k, 0x10));
    }
    const __m512i low = _mm512_maskz_unpacklo_epi64(0xff, even, odd), high = _mm512_maskz_unpackhi_epi64(0xff, even, odd);
    const __m512i x64 = _mm512_loadu_si512(op + 8 * words), mu = _mm512_loadu_si512(op + 8 * (words + 1));
    const __m512i poly = _mm512_loadu_si512(op + 8 * (words + 2)), degree = _mm512_loadu_si512(op + 8 * (words + 3));
    const __m512i mask = _mm512_loadu_si512(op + 8 * (words + 4));
    const __m512i folded = _mm512_xor_si512(low, productLow(high, x64));
    const __m512i above = _mm512_maskz_srlv_epi64(0xff, folded, degree);
    const __m512i q = _mm512_ternarylogic_epi64(
        above, _mm512_maskz_srlv_epi64(0xff, productLow(above, mu), _mm512_sub_epi64(sixtyFour, degree)),
        _mm512_maskz_sllv_epi64(0xff, productHigh(above, mu), degree), 0x96);
    const __m512i residue = _mm512_and_si512(_mm512_xor_si512(folded, productLow(q, poly)), mask);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(&residues[8 * g]), _mm512_maskz_cvtepi64_epi32(0xff, residue));
  }
}
#else
void SyndromeEvaluator::vectorResidues(const uint64_t*) const {}
#endif

uint32_t SyndromeEvaluator::reduce(const Coset& c, const uint64_t* rem, int r) const {
  uint32_t s = 0;
  int i = 0;
  if (c.degree >= 8) {
    const uint32_t mask = (uint32_t{1} << c.degree) - 1;
    const int shift = c.degree - 8;
    for (; i + 8 <= r; i += 8) {
      const uint32_t byte = static_cast<uint32_t>(rem[i / 64] >> (56 - i % 64)) & 0xff;
      s = ((s << 8) & mask) ^ c.byteReduction[s >> shift] ^ byte;
    }
  }
  for (; i < r; ++i) {
    s = (s << 1) | static_cast<uint32_t>((rem[i / 64] >> (63 - i % 64)) & 1);
    if (s >> c.degree) s ^= c.polynomial;
  }
  return s;
}

void SyndromeEvaluator::reduceFour(const Coset* c, const uint64_t* rem, int r, uint32_t* out) const {
  // Four independent table chains per byte hide each other's latency.
  uint32_t s0 = 0, s1 = 0, s2 = 0, s3 = 0;
  const uint32_t m0 = (uint32_t{1} << c[0].degree) - 1, m1 = (uint32_t{1} << c[1].degree) - 1,
                 m2 = (uint32_t{1} << c[2].degree) - 1, m3 = (uint32_t{1} << c[3].degree) - 1;
  const int h0 = c[0].degree - 8, h1 = c[1].degree - 8, h2 = c[2].degree - 8, h3 = c[3].degree - 8;
  const uint32_t *t0 = c[0].byteReduction.data(), *t1 = c[1].byteReduction.data(), *t2 = c[2].byteReduction.data(),
                 *t3 = c[3].byteReduction.data();
  int i = 0;
  for (; i + 8 <= r; i += 8) {
    const uint32_t byte = static_cast<uint32_t>(rem[i / 64] >> (56 - i % 64)) & 0xff;
    s0 = ((s0 << 8) & m0) ^ t0[s0 >> h0] ^ byte;
    s1 = ((s1 << 8) & m1) ^ t1[s1 >> h1] ^ byte;
    s2 = ((s2 << 8) & m2) ^ t2[s2 >> h2] ^ byte;
    s3 = ((s3 << 8) & m3) ^ t3[s3 >> h3] ^ byte;
  }
  uint32_t s[4] = {s0, s1, s2, s3};
  for (int q = 0; q < 4; ++q) {
    for (int j = i; j < r; ++j) {
      s[q] = (s[q] << 1) | static_cast<uint32_t>((rem[j / 64] >> (63 - j % 64)) & 1);
      if (s[q] >> c[q].degree) s[q] ^= c[q].polynomial;
    }
    out[q] = s[q];
  }
}

void SyndromeEvaluator::evaluate(const uint64_t* rem, int r, int* S) const {
  if (vector) {
    vectorResidues(rem);
  } else if (carryless) {
    clmulResidues(rem);
  } else {
    reduceAll(rem, r);
  }
  evaluateResidues(S);
}

void SyndromeEvaluator::reduceAll(const uint64_t* rem, int r) const {
  size_t c = 0;
  const size_t count4 = cosets.size() - cosets.size() % 4;
  for (; c < count4; c += 4) {
    const bool wide =
        cosets[c].degree >= 8 && cosets[c + 1].degree >= 8 && cosets[c + 2].degree >= 8 && cosets[c + 3].degree >= 8;
    if (wide) {
      reduceFour(&cosets[c], rem, r, &residues[c]);
    } else {
      for (size_t q = c; q < c + 4; ++q) residues[q] = reduce(cosets[q], rem, r);
    }
  }
  for (; c < cosets.size(); ++c) residues[c] = reduce(cosets[c], rem, r);
}

void SyndromeEvaluator::evaluateResidues(int* S) const {
  const int count = static_cast<int>(cosetOfSyndrome.size());
  const int order = field.order();
  for (int j = 0; j < count; ++j) {
    if (squareOf[j] >= 0) {
      const int half = S[squareOf[j]];
      S[j] = half == order ? order : 2 * half >= order ? 2 * half - order : 2 * half;
      continue;
    }
    const uint32_t s = residues[cosetOfSyndrome[j]];
    const uint16_t* sums = &nibbleSums[static_cast<size_t>(j) * 64];
    const uint16_t value = sums[s & 15] ^ sums[16 + ((s >> 4) & 15)] ^ sums[32 + ((s >> 8) & 15)] ^ sums[48 + ((s >> 12) & 15)];
    S[j] = field.toExponent(value);
  }
}
