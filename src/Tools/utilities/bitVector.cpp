#include "Tools/utilities/bitVector.h"

#include <stdexcept>
#include <string>

namespace tools {

namespace {

void checkWidth(int width, int limit, const char* what) {
  if (width < 0 || width > limit)
    throw std::invalid_argument(std::string(what) + ": width " + std::to_string(width) + " is outside 0 .. " +
                                std::to_string(limit));
}

}  // namespace

void intToBits(uint64_t value, int width, BitOrder order, int* bits) {
  checkWidth(width, 64, "intToBits");
  for (int j = 0; j < width; ++j) {
    const int bit = static_cast<int>((value >> j) & 1);
    bits[order == BitOrder::LsbFirst ? j : width - 1 - j] = bit;
  }
}

uint64_t bitsToInt(const int* bits, int width, BitOrder order) {
  checkWidth(width, 64, "bitsToInt");
  uint64_t v = 0;
  for (int j = 0; j < width; ++j)
    if (bits[order == BitOrder::LsbFirst ? j : width - 1 - j] != 0) v |= uint64_t{1} << j;
  return v;
}

std::vector<uint32_t> bitsToSymbols(const int* bits, size_t nbits, int m, BitOrder order) {
  checkWidth(m, 32, "bitsToSymbols");
  if (m == 0 || nbits % static_cast<size_t>(m) != 0)
    throw std::invalid_argument("bitsToSymbols: " + std::to_string(nbits) + " bits are not whole " +
                                std::to_string(m) + "-bit symbols");
  std::vector<uint32_t> symbols(nbits / m);
  for (size_t s = 0; s < symbols.size(); ++s)
    symbols[s] = static_cast<uint32_t>(bitsToInt(bits + s * m, m, order));
  return symbols;
}

std::vector<int> symbolsToBits(const std::vector<uint32_t>& symbols, int m, BitOrder order) {
  checkWidth(m, 32, "symbolsToBits");
  std::vector<int> bits(symbols.size() * m);
  for (size_t s = 0; s < symbols.size(); ++s) {
    if (m < 32 && (symbols[s] >> m) != 0)
      throw std::invalid_argument("symbolsToBits: symbol " + std::to_string(s) + " = " + std::to_string(symbols[s]) +
                                  " does not fit in " + std::to_string(m) + " bits");
    intToBits(symbols[s], m, order, bits.data() + s * m);
  }
  return bits;
}

size_t hammingWeight(const int* bits, size_t n) {
  size_t w = 0;
  for (size_t i = 0; i < n; ++i) w += bits[i] != 0;
  return w;
}

size_t hammingWeight(const uint64_t* words, size_t nwords) {
  size_t w = 0;
  for (size_t i = 0; i < nwords; ++i) w += static_cast<size_t>(popcount64(words[i]));
  return w;
}

size_t hammingWeight(const uint8_t* bytes, size_t nbytes) {
  size_t w = 0;
  for (size_t i = 0; i < nbytes; ++i) w += static_cast<size_t>(popcount64(bytes[i]));
  return w;
}

size_t hammingDistance(const int* a, const int* b, size_t n) {
  size_t d = 0;
  for (size_t i = 0; i < n; ++i) d += (a[i] != 0) != (b[i] != 0);
  return d;
}

size_t hammingDistance(const uint8_t* a, const uint8_t* b, size_t nbytes) {
  size_t d = 0;
  for (size_t i = 0; i < nbytes; ++i) d += static_cast<size_t>(popcount64(static_cast<uint8_t>(a[i] ^ b[i])));
  return d;
}

}  // namespace tools
