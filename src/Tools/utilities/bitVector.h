// Conversions between integers, bit vectors (one bit per int) and m-bit
// symbols, and Hamming weights and distances.
//
// Bit order: LsbFirst puts the bit of weight 2^j at element j; MsbFirst puts
// the most significant of the `width` bits at element 0, the order in which
// the codec's interface writes a word (highest degree first). Values are
// uint64_t so that widths up to 64 behave the same on 32- and 64-bit
// targets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tools {

enum class BitOrder { LsbFirst, MsbFirst };

// bits[0..width-1] = the low `width` bits of value; width 0..64.
void intToBits(uint64_t value, int width, BitOrder order, int* bits);
// The inverse: entries are read as 0 / non-zero.
uint64_t bitsToInt(const int* bits, int width, BitOrder order);

// Splits nbits bits into whole m-bit symbols (m 1..32, nbits a multiple of
// m, else std::invalid_argument); each symbol is read in `order`.
std::vector<uint32_t> bitsToSymbols(const int* bits, size_t nbits, int m, BitOrder order);
// The inverse: symbols.size() * m bits. A symbol of more than m bits is an
// std::invalid_argument.
std::vector<int> symbolsToBits(const std::vector<uint32_t>& symbols, int m, BitOrder order);

// Number of non-zero entries.
size_t hammingWeight(const int* bits, size_t n);
// Number of set bits of a packed string.
size_t hammingWeight(const uint64_t* words, size_t nwords);
size_t hammingWeight(const uint8_t* bytes, size_t nbytes);
// Positions where a and b differ (as 0 / non-zero).
size_t hammingDistance(const int* a, const int* b, size_t n);
size_t hammingDistance(const uint8_t* a, const uint8_t* b, size_t nbytes);

// Set bits of one word, without relying on a compiler builtin being fast.
inline int popcount64(uint64_t x) {
  x = x - ((x >> 1) & 0x5555555555555555ULL);
  x = (x & 0x3333333333333333ULL) + ((x >> 2) & 0x3333333333333333ULL);
  x = (x + (x >> 4)) & 0x0F0F0F0F0F0F0F0FULL;
  return static_cast<int>((x * 0x0101010101010101ULL) >> 56);
}

}  // namespace tools
