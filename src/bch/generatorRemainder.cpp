// Byte-table division by the generator polynomial; see the header for the
// word layout and the recurrence.
#include "bch/generatorRemainder.h"

#include <algorithm>

#include "bch/packedBits.h"

GeneratorRemainder::GeneratorRemainder(const int* generator, int r_, KernelLevel level_)
    : r(r_), nWords(std::max((r_ + 63) / 64, 1)), tables(8 * 256 * static_cast<size_t>(nWords), 0), level(level_) {
  if (ClmulRemainder::supports(level, r)) accelerated = std::make_unique<const ClmulRemainder>(generator, r, level);
  // row[i] = x^(r+i) mod g for i = 0..63, starting from x^r = g - x^r.
  std::vector<uint64_t> row(64 * static_cast<size_t>(nWords), 0);
  for (int d = 0; d < r; ++d)
    if (generator[d] & 1) {
      const int i = r - 1 - d;
      row[i / 64] |= uint64_t{1} << (63 - i % 64);
    }
  for (int i = 1; i < 64 && r > 0; ++i) {
    const uint64_t* prev = &row[(i - 1) * static_cast<size_t>(nWords)];
    uint64_t* cur = &row[i * static_cast<size_t>(nWords)];
    const bool carry = (prev[0] >> 63) != 0;
    for (int w = 0; w < nWords; ++w) cur[w] = (prev[w] << 1) | (w + 1 < nWords ? prev[w + 1] >> 63 : 0);
    if (carry)
      for (int w = 0; w < nWords; ++w) cur[w] ^= row[w];
  }
  // Each table entry is the XOR of the rows of its set bits.
  for (int j = 0; j < 8; ++j)
    for (int v = 1; v < 256; ++v) {
      const int low = v & -v;
      int bit = 0;
      while ((1 << bit) != low) ++bit;
      uint64_t* dst = &tables[(static_cast<size_t>(j) * 256 + v) * nWords];
      const uint64_t* rest = &tables[(static_cast<size_t>(j) * 256 + (v & (v - 1))) * nWords];
      const uint64_t* single = &row[static_cast<size_t>(8 * j + bit) * nWords];
      for (int w = 0; w < nWords; ++w) dst[w] = rest[w] ^ single[w];
    }
}

void GeneratorRemainder::step(uint64_t* rem, uint64_t chunk) const {
  const uint64_t f = rem[0] ^ chunk;
  for (int w = 0; w + 1 < nWords; ++w) rem[w] = rem[w + 1];
  rem[nWords - 1] = 0;
  const uint64_t* t = tables.data();
  const size_t stride = 256 * static_cast<size_t>(nWords);
  const uint64_t* t0 = t + ((f >> 0) & 0xff) * nWords;
  const uint64_t* t1 = t + stride + ((f >> 8) & 0xff) * nWords;
  const uint64_t* t2 = t + 2 * stride + ((f >> 16) & 0xff) * nWords;
  const uint64_t* t3 = t + 3 * stride + ((f >> 24) & 0xff) * nWords;
  const uint64_t* t4 = t + 4 * stride + ((f >> 32) & 0xff) * nWords;
  const uint64_t* t5 = t + 5 * stride + ((f >> 40) & 0xff) * nWords;
  const uint64_t* t6 = t + 6 * stride + ((f >> 48) & 0xff) * nWords;
  const uint64_t* t7 = t + 7 * stride + ((f >> 56) & 0xff) * nWords;
  for (int w = 0; w < nWords; ++w) rem[w] ^= t0[w] ^ t1[w] ^ t2[w] ^ t3[w] ^ t4[w] ^ t5[w] ^ t6[w] ^ t7[w];
}

template <int W>
void GeneratorRemainder::divideInRegisters(const uint8_t* message, size_t bits, uint64_t* rem) const {
  uint64_t R[W] = {};
  const size_t stride = 256 * W;
  auto feed = [&](uint64_t chunk) {
    const uint64_t f = R[0] ^ chunk;
    for (int w = 0; w + 1 < W; ++w) R[w] = R[w + 1];
    R[W - 1] = 0;
    const uint64_t* t = tables.data();
    for (int j = 0; j < 8; ++j) {
      const uint64_t* row = t + j * stride + ((f >> (8 * j)) & 0xff) * W;
      for (int w = 0; w < W; ++w) R[w] ^= row[w];
    }
  };
  const size_t head = bits % 64;
  size_t at = 0;
  if (head != 0) {
    feed(packedbits::load(message, 0, static_cast<int>(head)));
    at = head;
  }
  for (; at < bits; at += 64) feed(packedbits::load(message, at, 64));
  std::copy(R, R + W, rem);
}

void GeneratorRemainder::shiftedRemainder(const uint8_t* message, size_t bits, uint64_t* rem) const {
  std::fill(rem, rem + nWords, 0);
  if (r == 0) return;
  if (accelerated) return accelerated->shiftedRemainder(message, bits, rem);
  // Fixed word counts let the compiler unroll and keep the remainder local;
  // beyond 12 words (t > 51 over GF(2^15)) the unrolled form spills and the
  // plain loop is faster.
  switch (nWords) {
    case 1: return divideInRegisters<1>(message, bits, rem);
    case 2: return divideInRegisters<2>(message, bits, rem);
    case 3: return divideInRegisters<3>(message, bits, rem);
    case 4: return divideInRegisters<4>(message, bits, rem);
    case 5: return divideInRegisters<5>(message, bits, rem);
    case 6: return divideInRegisters<6>(message, bits, rem);
    case 7: return divideInRegisters<7>(message, bits, rem);
    case 8: return divideInRegisters<8>(message, bits, rem);
    case 9: return divideInRegisters<9>(message, bits, rem);
    case 10: return divideInRegisters<10>(message, bits, rem);
    case 11: return divideInRegisters<11>(message, bits, rem);
    case 12: return divideInRegisters<12>(message, bits, rem);
    default: break;
  }
  // A first short chunk stands for 64 bits with leading zeros, which do not
  // change the polynomial; the rest are whole 64-bit chunks.
  const size_t head = bits % 64;
  size_t at = 0;
  if (head != 0) {
    step(rem, packedbits::load(message, 0, static_cast<int>(head)));
    at = head;
  }
  for (; at < bits; at += 64) step(rem, packedbits::load(message, at, 64));
}

void GeneratorRemainder::addParity(const uint8_t* parity, uint64_t* rem) const {
  for (int w = 0; w * 64 < r; ++w) {
    const int count = std::min(64, r - 64 * w);
    rem[w] ^= packedbits::load(parity, 64 * static_cast<size_t>(w), count) << (64 - count);
  }
}

void GeneratorRemainder::storeParity(const uint64_t* rem, uint8_t* dst) const {
  const size_t bytes = packedbits::bytesFor(r);
  for (size_t i = 0; i < bytes; ++i) dst[i] = static_cast<uint8_t>(rem[i / 8] >> (56 - 8 * (i % 8)));
}
