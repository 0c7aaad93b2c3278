// MT19937. Seeding fills the 624 words with the Knuth-style recurrence
// mt[i] = 1812433253 * (mt[i-1] ^ (mt[i-1] >> 30)) + i (mod 2^32); key
// seeding then mixes the key words in with two further nonlinear passes.
// A block regeneration applies the twist
//   mt[k] = mt[k+397] ^ ((upper(mt[k]) | lower(mt[k+1])) * A)
// where multiplying by the companion matrix A is a right shift plus a
// conditional XOR with 0x9908b0df; upper keeps bit 31, lower bits 0..30.
// All arithmetic is on uint32_t, so it wraps modulo 2^32 on every platform.
#include "randgen/mtRandGen.h"

#include <ctime>
#include <istream>
#include <ostream>

namespace {

constexpr int kM = 397;
constexpr std::uint32_t kMatrixA = 0x9908b0dfu;
constexpr std::uint32_t kUpperMask = 0x80000000u;
constexpr std::uint32_t kLowerMask = 0x7fffffffu;

unsigned int clockSeed() { return static_cast<unsigned int>(std::time(nullptr)); }

std::uint32_t twist(std::uint32_t upperFrom, std::uint32_t lowerFrom, std::uint32_t far) {
  const std::uint32_t y = (upperFrom & kUpperMask) | (lowerFrom & kLowerMask);
  return far ^ (y >> 1) ^ ((y & 1u) ? kMatrixA : 0u);
}

std::uint32_t temper(std::uint32_t y) {
  y ^= y >> 11;
  y ^= (y << 7) & 0x9d2c5680u;
  y ^= (y << 15) & 0xefc60000u;
  y ^= y >> 18;
  return y;
}

}  // namespace

MT_Rand_Gen::MT_Rand_Gen() { initialize(clockSeed()); }

MT_Rand_Gen::MT_Rand_Gen(unsigned int seed) { initialize(seed != 0 ? seed : clockSeed()); }

MT_Rand_Gen::MT_Rand_Gen(const unsigned int* key, int length) { initializeByArray(key, length); }

void MT_Rand_Gen::initialize(unsigned int seed) {
  mt[0] = seed;
  for (int i = 1; i < kN; ++i)
    mt[i] = 1812433253u * (mt[i - 1] ^ (mt[i - 1] >> 30)) + static_cast<std::uint32_t>(i);
  mti = kN;
}

void MT_Rand_Gen::initializeByArray(const unsigned int* key, int length) {
  initialize(19650218u);
  int i = 1, j = 0;
  for (int k = (kN > length ? kN : length); k > 0; --k) {
    const std::uint32_t word = length > 0 ? key[j] : 0u;
    mt[i] = (mt[i] ^ ((mt[i - 1] ^ (mt[i - 1] >> 30)) * 1664525u)) + word + static_cast<std::uint32_t>(j);
    ++i;
    ++j;
    if (i >= kN) {
      mt[0] = mt[kN - 1];
      i = 1;
    }
    if (j >= length) j = 0;
  }
  for (int k = kN - 1; k > 0; --k) {
    mt[i] = (mt[i] ^ ((mt[i - 1] ^ (mt[i - 1] >> 30)) * 1566083941u)) - static_cast<std::uint32_t>(i);
    ++i;
    if (i >= kN) {
      mt[0] = mt[kN - 1];
      i = 1;
    }
  }
  // Guarantees a non-zero state whatever the key.
  mt[0] = 0x80000000u;
}

void MT_Rand_Gen::regenerate() {
  int k = 0;
  for (; k < kN - kM; ++k) mt[k] = twist(mt[k], mt[k + 1], mt[k + kM]);
  for (; k < kN - 1; ++k) mt[k] = twist(mt[k], mt[k + 1], mt[k + kM - kN]);
  mt[kN - 1] = twist(mt[kN - 1], mt[0], mt[kM - 1]);
  mti = 0;
}

unsigned int MT_Rand_Gen::uniform_int() {
  if (mti >= kN) regenerate();
  return temper(mt[mti++]);
}

void MT_Rand_Gen::record_state(std::ostream& out) const {
  out << mti << ' ';
  for (std::uint32_t w : mt) out << w << ' ';
  out << std::endl;
}

void MT_Rand_Gen::load_state(std::istream& in) {
  int index = 0;
  std::uint32_t words[kN];
  in >> index;
  for (std::uint32_t& w : words) in >> w;
  if (!in) return;
  if (index < 0 || index > kN) {
    in.setstate(std::ios::failbit);
    return;
  }
  mti = index;
  for (int k = 0; k < kN; ++k) mt[k] = words[k];
}

void MT_Rand_Gen::set_state(const unsigned int* state) {
  mti = state[0] > static_cast<unsigned int>(kN) ? kN : static_cast<int>(state[0]);
  for (int k = 0; k < kN; ++k) mt[k] = state[k + 1];
}

void MT_Rand_Gen::get_state(unsigned int* state) const {
  state[0] = static_cast<unsigned int>(mti);
  for (int k = 0; k < kN; ++k) state[k + 1] = mt[k];
}
