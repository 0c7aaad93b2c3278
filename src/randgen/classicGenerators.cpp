// Classic shuffled generators and the special functions built around them.
//
// Multiplicative congruential steps s <- a*s mod m with m near 2^31 are done
// by Schrage's decomposition m = a*q + r (r < q): a*(s mod q) - r*(s div q)
// lies in (-m, m) and is congruent to a*s, so one conditional add of m
// finishes the reduction without ever leaving 32-bit signed range.
//
// The Bays-Durham shuffle keeps a table of earlier outputs; the previous
// output picks which entry to hand out next and the fresh value takes its
// place, which breaks up the serial correlations of the bare generator.
#include "randgen/classicGenerators.h"

#include <cstdint>

namespace {

constexpr int kTableSize = 32;

// The caller's word, narrowed to its 32-bit meaning.
std::int32_t seedWord(const long* idum) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<unsigned long>(*idum)));
}

// -seed as a restart value: at least 1; the one unrepresentable case,
// INT32_MIN, wraps onto itself in 32-bit arithmetic and so also becomes 1.
std::int32_t restartSeed(std::int32_t seed) {
  if (seed == INT32_MIN) return 1;
  return -seed < 1 ? 1 : -seed;
}

struct Lcg {
  std::int32_t a, m, q, r;

  std::int32_t step(std::int32_t s) const {
    const std::int32_t k = s / q;
    s = a * (s - k * q) - r * k;
    return s < 0 ? s + m : s;
  }
};

constexpr Lcg kMinimalStandard{16807, 2147483647, 127773, 2836};

// Park-Miller state of ran1: the last output and the shuffle table.
struct Ran1State {
  std::int32_t iy = 0;
  std::int32_t iv[kTableSize] = {};
};

}  // namespace

double ran1(long* idum) {
  constexpr std::int32_t kTableDivisor = 1 + (2147483647 - 1) / kTableSize;
  constexpr double kScale = 4.656612875245797e-10;
  constexpr double kLargest = 0.99999988;
  static Ran1State st;

  std::int32_t seed = seedWord(idum);
  if (seed <= 0 || st.iy == 0) {
    seed = restartSeed(seed);
    // Eight warm-up steps, then the table filled from its top down.
    for (int j = kTableSize + 7; j >= 0; --j) {
      seed = kMinimalStandard.step(seed);
      if (j < kTableSize) st.iv[j] = seed;
    }
    st.iy = st.iv[0];
  }
  seed = kMinimalStandard.step(seed);
  const int j = st.iy / kTableDivisor;
  st.iy = st.iv[j];
  st.iv[j] = seed;
  *idum = seed;
  const double u = kScale * st.iy;
  return u < kLargest ? u : kLargest;
}
