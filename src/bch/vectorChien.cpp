// The Chien search on byte planes with GF2P8AFFINEQB; see the header.
#include "bch/vectorChien.h"

#include <algorithm>
#include <cstddef>

#include "bch/fieldTables.h"

#if defined(__x86_64__) && defined(__GNUC__) && !defined(QFB_PORTABLE_ONLY)
#include <immintrin.h>
#define QFB_HAVE_GFNI 1
#endif

namespace {

// The four 8 x 8 blocks of multiplication by c, in GF2P8AFFINEQB's layout:
// byte 7-o of a block is the row of output bit o (its set bits name the
// input bits that sum to it). Order: low from low, low from high, high from
// low, high from high.
void matrixBlocks(const FieldTables& field, uint16_t c, uint64_t* blocks) {
  uint32_t rows[16] = {};
  for (int k = 0; k < field.m(); ++k) {
    const uint16_t column = field.mul(c, field.exp(k));
    for (int o = 0; o < 16; ++o) rows[o] |= static_cast<uint32_t>((column >> o) & 1) << k;
  }
  for (int b = 0; b < 4; ++b) blocks[b] = 0;
  for (int o = 0; o < 8; ++o) {
    const int byte = 8 * (7 - o);
    blocks[0] |= static_cast<uint64_t>(rows[o] & 0xff) << byte;
    blocks[1] |= static_cast<uint64_t>(rows[o] >> 8) << byte;
    blocks[2] |= static_cast<uint64_t>(rows[o + 8] & 0xff) << byte;
    blocks[3] |= static_cast<uint64_t>(rows[o + 8] >> 8) << byte;
  }
}

#ifdef QFB_HAVE_GFNI
constexpr int kChunkBlocks = 8;  // positions are searched 8 x 64 at a time

// G terms (states in registers) over nb blocks of 64 positions: each
// block's sum planes take the terms' values, then the terms advance.
// blocks: per term its four step matrices, each repeated in all eight
// qwords of a register (see VectorChien::stepBlocks).
template <int G>
__attribute__((target("avx512f,avx512bw,gfni"))) void sumTerms(uint8_t* planes, const uint64_t* blocks, int nb,
                                                                uint8_t* sums) {
  __m512i lo[G], hi[G];
#pragma GCC unroll 16
  for (int q = 0; q < G; ++q) {
    lo[q] = _mm512_loadu_si512(planes + 128 * q);
    hi[q] = _mm512_loadu_si512(planes + 128 * q + 64);
  }
  // Two blocks per pass: with one, gcc 12 rotated the sixteen state
  // registers through copies on every block, nearly as many instructions
  // as the affine steps themselves.
#pragma GCC unroll 2
  for (int b = 0; b < nb; ++b) {
    __m512i sumLo = _mm512_loadu_si512(sums + 128 * b), sumHi = _mm512_loadu_si512(sums + 128 * b + 64);
#pragma GCC unroll 16
    for (int q = 0; q < G; ++q) {
      const uint64_t* m = blocks + 32 * q;
      sumLo = _mm512_xor_si512(sumLo, lo[q]);
      sumHi = _mm512_xor_si512(sumHi, hi[q]);
      const __m512i nextLo = _mm512_xor_si512(_mm512_gf2p8affine_epi64_epi8(lo[q], _mm512_loadu_si512(m), 0),
                                              _mm512_gf2p8affine_epi64_epi8(hi[q], _mm512_loadu_si512(m + 8), 0));
      hi[q] = _mm512_xor_si512(_mm512_gf2p8affine_epi64_epi8(lo[q], _mm512_loadu_si512(m + 16), 0),
                               _mm512_gf2p8affine_epi64_epi8(hi[q], _mm512_loadu_si512(m + 24), 0));
      lo[q] = nextLo;
    }
    _mm512_storeu_si512(sums + 128 * b, sumLo);
    _mm512_storeu_si512(sums + 128 * b + 64, sumHi);
  }
#pragma GCC unroll 16
  for (int q = 0; q < G; ++q) {
    _mm512_storeu_si512(planes + 128 * q, lo[q]);
    _mm512_storeu_si512(planes + 128 * q + 64, hi[q]);
  }
}

// The 64 lanes of a term from its first 8 (low and high bytes packed in
// lo8, hi8): qword q of the planes is the first qword times alpha^(-8iq),
// one matrix per qword (blocks: four groups of eight).
__attribute__((target("avx512f,avx512bw,gfni"))) void expandLanes(uint64_t lo8, uint64_t hi8, const uint64_t* blocks,
                                                                   uint8_t* plane) {
  const __m512i lo = _mm512_set1_epi64(static_cast<long long>(lo8));
  const __m512i hi = _mm512_set1_epi64(static_cast<long long>(hi8));
  _mm512_storeu_si512(plane, _mm512_xor_si512(_mm512_gf2p8affine_epi64_epi8(lo, _mm512_loadu_si512(blocks), 0),
                                              _mm512_gf2p8affine_epi64_epi8(hi, _mm512_loadu_si512(blocks + 8), 0)));
  _mm512_storeu_si512(plane + 64,
                      _mm512_xor_si512(_mm512_gf2p8affine_epi64_epi8(lo, _mm512_loadu_si512(blocks + 16), 0),
                                       _mm512_gf2p8affine_epi64_epi8(hi, _mm512_loadu_si512(blocks + 24), 0)));
}

// terms: d rounded up to a multiple of 4, the extra planes zero. Returns
// the number of roots found, at most `wanted`.
__attribute__((target("avx512f,avx512bw,gfni"))) int searchPlanes(uint8_t* planes, const uint64_t* blocks, int terms,
                                                                   int wanted, uint16_t lambda0, int n, int* positions) {
  alignas(64) uint8_t sums[kChunkBlocks * 128];
  const __m512i lo0 = _mm512_set1_epi8(static_cast<char>(lambda0 & 0xff));
  const __m512i hi0 = _mm512_set1_epi8(static_cast<char>(lambda0 >> 8));
  int found = 0;
  for (int p0 = 0; p0 < n; p0 += 64 * kChunkBlocks) {
    const int nb = std::min(kChunkBlocks, (n - p0 + 63) / 64);
    for (int b = 0; b < nb; ++b) {
      _mm512_store_si512(sums + 128 * b, lo0);
      _mm512_store_si512(sums + 128 * b + 64, hi0);
    }
    int i = 0;
    for (; i + 8 <= terms; i += 8) sumTerms<8>(planes + 128 * i, blocks + 32 * i, nb, sums);
    if (i < terms) sumTerms<4>(planes + 128 * i, blocks + 32 * i, nb, sums);
    for (int b = 0; b < nb; ++b) {
      const int at = p0 + 64 * b;
      const __m512i sum = _mm512_or_si512(_mm512_load_si512(sums + 128 * b), _mm512_load_si512(sums + 128 * b + 64));
      uint64_t roots = _mm512_cmpeq_epi8_mask(sum, _mm512_setzero_si512());
      if (n - at < 64) roots &= (uint64_t{1} << (n - at)) - 1;
      while (roots != 0) {
        positions[found++] = at + __builtin_ctzll(roots);
        if (found == wanted) return found;
        roots &= roots - 1;
      }
    }
  }
  return found;
}
#endif

}  // namespace

bool VectorChien::supports(KernelLevel level) {
#ifdef QFB_HAVE_GFNI
  return level == KernelLevel::VectorClmul && detectedKernelLevel() == KernelLevel::VectorClmul;
#else
  (void)level;
  return false;
#endif
}

VectorChien::VectorChien(const FieldTables& f, int t_)
    : field(f),
      t(t_),
      stepBlocks(32 * static_cast<size_t>(t_ + 3), 0),
      laneLogs(8 * static_cast<size_t>(t_)),
      laneBlocks(32 * static_cast<size_t>(t_)),
      planes(128 * static_cast<size_t>(t_ + 3), 0) {
  const int64_t order = field.order();
  for (int i = 1; i <= t; ++i) {
    const int step = static_cast<int>((order - (64 * static_cast<int64_t>(i)) % order) % order);
    uint64_t blocks[4];
    matrixBlocks(field, field.exp(step), blocks);
    for (int b = 0; b < 4; ++b)
      std::fill_n(&stepBlocks[32 * static_cast<size_t>(i - 1) + 8 * b], 8, blocks[b]);
    for (int l = 0; l < 8; ++l)
      laneLogs[8 * static_cast<size_t>(i - 1) + l] =
          static_cast<int32_t>((order - (static_cast<int64_t>(i) * l) % order) % order);
    for (int q = 0; q < 8; ++q) {
      uint64_t blocks[4];
      matrixBlocks(field, field.exp(static_cast<int>((order - (8 * static_cast<int64_t>(i) * q) % order) % order)),
                   blocks);
      for (int b = 0; b < 4; ++b) laneBlocks[32 * static_cast<size_t>(i - 1) + 8 * b + q] = blocks[b];
    }
  }
}

bool VectorChien::find(const uint16_t* lambda, int d, int n, int* positions, bool distinctRoots) {
  // Without a constant term x divides Lambda: fewer than d non-zero roots.
  if (d < 1 || d > t || lambda[0] == 0) return false;
#ifdef QFB_HAVE_GFNI
  for (int i = 1; i <= d; ++i) {
    const int logLambda = field.log(lambda[i]);
    const int32_t* lanes = &laneLogs[8 * static_cast<size_t>(i - 1)];
    uint64_t lo8 = 0, hi8 = 0;
    for (int l = 0; l < 8; ++l) {
      const uint64_t v = field.expOfLogSum(logLambda, lanes[l]);
      lo8 |= (v & 0xff) << (8 * l);
      hi8 |= (v >> 8) << (8 * l);
    }
    expandLanes(lo8, hi8, &laneBlocks[32 * static_cast<size_t>(i - 1)], &planes[128 * static_cast<size_t>(i - 1)]);
  }
  // Up to three zero terms round the count to whole groups.
  const int terms = (d + 3) / 4 * 4;
  std::fill(planes.begin() + 128 * static_cast<std::ptrdiff_t>(d), planes.begin() + 128 * static_cast<std::ptrdiff_t>(terms), 0);
  if (!distinctRoots || d < 3)
    return searchPlanes(planes.data(), stepBlocks.data(), terms, d, lambda[0], n, positions) == d;
  if (searchPlanes(planes.data(), stepBlocks.data(), terms, d - 2, lambda[0], n, positions) != d - 2) return false;
  return lastTwoRoots(lambda, d, n, positions);
#else
  (void)n;
  (void)positions;
  (void)distinctRoots;
  return false;
#endif
}

bool VectorChien::lastTwoRoots(const uint16_t* lambda, int d, int n, int* positions) const {
  // Elementary symmetric functions e1, e2 of the roots found, and E1, E2
  // of all d roots (coefficients of the monic locator, signs vanish in
  // characteristic 2). The other two roots u, v then have
  //   u + v = E1 + e1 = s,   u v = E2 + e2 + e1 s,
  // a quadratic solved by x = s y, y^2 + y = u v / s^2.
  const int order = field.order();
  uint16_t e1 = 0, e2 = 0;
  for (int k = 0; k < d - 2; ++k) {
    const int logRoot = order - positions[k];  // in 1..order: positions are below the order
    e2 ^= field.mulByLog(e1, logRoot);
    e1 ^= field.exp(logRoot);
  }
  const uint16_t inverseLead = field.inverse(lambda[d]);
  const uint16_t s = field.mul(lambda[d - 1], inverseLead) ^ e1;
  const uint16_t product = field.mul(lambda[d - 2], inverseLead) ^ e2 ^ field.mul(e1, s);
  if (s == 0 || product == 0) return false;  // a double root, or the root 0
  const int y = field.quadraticRoot(field.mul(product, field.inverse(field.mul(s, s))));
  if (y < 0) return false;
  const uint16_t u = field.mul(s, static_cast<uint16_t>(y));
  int pu = (order - field.log(u)) % order, pv = (order - field.log(u ^ s)) % order;
  if (pu > pv) std::swap(pu, pv);
  if (pv >= n) return false;
  positions[d - 2] = pu;
  positions[d - 1] = pv;
  return true;
}
