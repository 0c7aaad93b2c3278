// Helpers of the randomised tests: how many rounds to run, random choices
// biased towards the shapes that matter, random bit words and flips.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <random>
#include <vector>

namespace qfbtest {

// Rounds of a randomised comparison: the default, or QFB_DIFF_ROUNDS when
// set (CI under emulation sets it low; a soak run sets it high).
inline int differentialRounds(int fallback) {
  const char* env = std::getenv("QFB_DIFF_ROUNDS");
  if (env == nullptr) return fallback;
  const int rounds = std::atoi(env);
  return rounds > 0 ? rounds : fallback;
}

// Uniform in lo..hi.
inline int uniformInt(std::mt19937& rng, int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); }

// lo..hi with a logarithmic bias, so short and long lengths both show up.
inline int logUniformInt(std::mt19937& rng, int lo, int hi) {
  const double a = std::log(static_cast<double>(lo)), b = std::log(static_cast<double>(hi) + 1);
  const int v = static_cast<int>(std::exp(std::uniform_real_distribution<double>(a, b)(rng)));
  return v < lo ? lo : (v > hi ? hi : v);
}

// A correction power: mostly small, sometimes up to 128.
inline int randomT(std::mt19937& rng) {
  const int kind = uniformInt(rng, 0, 9);
  if (kind < 5) return uniformInt(rng, 1, 12);
  if (kind < 8) return uniformInt(rng, 13, 48);
  return uniformInt(rng, 49, 128);
}

inline std::vector<int> randomBits(std::mt19937& rng, size_t n) {
  std::vector<int> v(n);
  for (int& x : v) x = static_cast<int>(rng() & 1);
  return v;
}

// Flips min(count, length) distinct bits of word[0 .. length).
inline void flipDistinct(std::mt19937& rng, int* word, int length, int count) {
  std::vector<int> pos(length);
  std::iota(pos.begin(), pos.end(), 0);
  std::shuffle(pos.begin(), pos.end(), rng);
  for (int e = 0; e < std::min(count, length); ++e) word[pos[e]] ^= 1;
}

}  // namespace qfbtest
