// The random streams of a simulation: one independent 64-bit stream per
// unit of work, named by a key of small integers.
//
// A stream's state is derived from its key (the seed, then e.g. the sweep
// point and block index, or the codeword length, error weight and round)
// by chaining the SplitMix64 finaliser, which is a bijection on 64-bit words
// whose every output bit depends on every input bit. Keys are therefore
// 64-bit: the old 32-bit block seeds collide by the birthday bound after
// about 2^16 blocks, 64-bit ones only after about 2^32.
//
// The generator is xoshiro256** (Blackman and Vigna, "Scrambled linear
// pseudorandom number generators", ACM TOMS 2021): 256 bits of state,
// period 2^256 - 1, a few cycles per 64-bit word, seeded by four further
// SplitMix64 steps from the key so that no state is all zero.
#pragma once

#include <cmath>
#include <cstdint>
#include <initializer_list>

namespace flashbch {

inline std::uint64_t mix64(std::uint64_t z) {
  z += 0x9E3779B97F4A7C15ull;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  return z ^ (z >> 31);
}

// The 64-bit key of a unit of work: mix64 chained over the numbers given.
inline std::uint64_t streamKey(std::initializer_list<std::uint64_t> parts) {
  std::uint64_t h = 0;
  for (std::uint64_t part : parts) h = mix64(h ^ part);
  return h;
}

class RandomStream {
 public:
  explicit RandomStream(std::uint64_t key = 0) { reseed(key); }

  void reseed(std::uint64_t key) {
    for (std::uint64_t& word : s_) {
      key += 0x9E3779B97F4A7C15ull;
      word = mix64(key);
    }
  }

  std::uint64_t next() {
    const std::uint64_t result = rotl(s_[1] * 5, 7) * 9;
    const std::uint64_t t = s_[1] << 17;
    s_[2] ^= s_[0];
    s_[3] ^= s_[1];
    s_[1] ^= s_[2];
    s_[0] ^= s_[3];
    s_[2] ^= t;
    s_[3] = rotl(s_[3], 45);
    return result;
  }

  // Uniform on (0, 1]: 53 random bits, never 0 (so its logarithm is finite).
  double uniformPositive() { return static_cast<double>((next() >> 11) + 1) * 0x1.0p-53; }

  // Marsaglia's polar method: a point (u, v) uniform in the unit disc less
  // its centre, and the factor f = sqrt(-2 ln s / s), s = u^2 + v^2, that
  // makes f u and f v two independent standard normal deviates.
  double polarPoint(double& u, double& v) {
    double s;
    do {
      u = 2.0 * uniformPositive() - 1.0;
      v = 2.0 * uniformPositive() - 1.0;
      s = u * u + v * v;
    } while (s >= 1.0 || s == 0.0);
    return std::sqrt(-2.0 * std::log(s) / s);
  }

  // Uniform on 0 .. bound-1 for 1 <= bound <= 2^32, exactly: Lemire's
  // multiply-shift with rejection, in 64-bit arithmetic only (no 128-bit
  // type on 32-bit targets).
  std::uint32_t below(std::uint64_t bound) {
    std::uint64_t m = (next() >> 32) * bound;
    if (static_cast<std::uint32_t>(m) < bound) {
      const std::uint32_t threshold = static_cast<std::uint32_t>((0x100000000ull - bound) % bound);
      while (static_cast<std::uint32_t>(m) < threshold) m = (next() >> 32) * bound;
    }
    return static_cast<std::uint32_t>(m >> 32);
  }

 private:
  static std::uint64_t rotl(std::uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }
  std::uint64_t s_[4];
};

}  // namespace flashbch
