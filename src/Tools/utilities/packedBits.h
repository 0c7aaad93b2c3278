// Packed bit strings: bit i of a string is bit 7 - (i mod 8) of byte i/8,
// so the first bit is the most significant bit of the first byte. A word
// of the BCH code packed this way starts with its highest-degree
// coefficient, the order of the int-per-bit interface. This is the one
// conversion between packed bytes and int-per-bit arrays: the codec, the
// page-image tool and the toolkit all use it.
//
// Loads assemble bytes by shifts, never by reinterpreting memory, so they
// are alignment- and endian-free.
#pragma once

#include <cstddef>
#include <cstdint>

namespace packedbits {

inline size_t bytesFor(size_t bits) { return (bits + 7) / 8; }

// `count` (1..64) bits starting at bit `offset`, right-aligned, first bit
// highest. Reads only the bytes that hold those bits.
inline uint64_t load(const uint8_t* s, size_t offset, int count) {
  const uint8_t* p = s + offset / 8;
  const int skip = static_cast<int>(offset % 8);
  if (skip == 0 && count == 64)
    return uint64_t{p[0]} << 56 | uint64_t{p[1]} << 48 | uint64_t{p[2]} << 40 | uint64_t{p[3]} << 32 |
           uint64_t{p[4]} << 24 | uint64_t{p[5]} << 16 | uint64_t{p[6]} << 8 | uint64_t{p[7]};
  const int bytes = (skip + count + 7) / 8;
  uint64_t v = 0;
  for (int i = 0; i < bytes && i < 8; ++i) v = (v << 8) | p[i];
  // bytes*8 bits are loaded (at most 64 here); a ninth byte adds its top bits.
  const int loaded = bytes < 8 ? bytes * 8 : 64;
  if (bytes == 9) {
    v = (v << skip) | (p[8] >> (8 - skip));
    return count == 64 ? v : v >> (64 - count);
  }
  v >>= loaded - skip - count;
  return count == 64 ? v : v & ((uint64_t{1} << count) - 1);
}

// Packs `count` ints (non-zero = 1) into dst from bit 0; the tail of the last
// byte is cleared. Returns true when every int was 0 or 1.
inline bool packInts(const int* src, size_t count, uint8_t* dst) {
  // First assume 0/1 entries, which shift straight into place; the OR of
  // all entries tells afterwards whether the assumption held.
  unsigned all = 0;
  size_t i = 0;
  for (; i + 8 <= count; i += 8) {
    const int* q = src + i;
    const unsigned v0 = static_cast<unsigned>(q[0]), v1 = static_cast<unsigned>(q[1]),
                   v2 = static_cast<unsigned>(q[2]), v3 = static_cast<unsigned>(q[3]),
                   v4 = static_cast<unsigned>(q[4]), v5 = static_cast<unsigned>(q[5]),
                   v6 = static_cast<unsigned>(q[6]), v7 = static_cast<unsigned>(q[7]);
    all |= (v0 | v1) | (v2 | v3) | ((v4 | v5) | (v6 | v7));
    dst[i / 8] = static_cast<uint8_t>(((v0 << 7 | v1 << 6) | (v2 << 5 | v3 << 4)) |
                                      ((v4 << 3 | v5 << 2) | (v6 << 1 | v7)));
  }
  if (i < count) {
    unsigned byte = 0;
    for (size_t j = i; j < count; ++j) {
      all |= static_cast<unsigned>(src[j]);
      byte |= static_cast<unsigned>(src[j] != 0) << (7 - (j - i));
    }
    dst[i / 8] = static_cast<uint8_t>(byte);
  }
  if ((all & ~1u) == 0) return true;
  for (i = 0; i + 8 <= count; i += 8) {
    unsigned byte = 0;
    for (int j = 0; j < 8; ++j) byte = (byte << 1) | static_cast<unsigned>(src[i + j] != 0);
    dst[i / 8] = static_cast<uint8_t>(byte);
  }
  return false;
}

// As packInts, reading src backwards: bit i is src[-i].
inline bool packIntsReversed(const int* srcLast, size_t count, uint8_t* dst) {
  unsigned odd = 0;
  for (size_t i = 0; i < count; ++i) {
    if (i % 8 == 0) dst[i / 8] = 0;
    const int v = *(srcLast - static_cast<ptrdiff_t>(i));
    odd |= static_cast<unsigned>(v);
    dst[i / 8] = static_cast<uint8_t>(dst[i / 8] | (v != 0) << (7 - i % 8));
  }
  return (odd & ~1u) == 0;
}

// dst[i] = bit i, for `count` bits.
inline void unpackInts(const uint8_t* src, size_t count, int* dst) {
  size_t i = 0;
  for (; i + 8 <= count; i += 8) {
    const unsigned b = src[i / 8];
    for (int j = 0; j < 8; ++j) dst[i + j] = static_cast<int>((b >> (7 - j)) & 1);
  }
  for (; i < count; ++i) dst[i] = (src[i / 8] >> (7 - i % 8)) & 1;
}

}  // namespace packedbits
