// Shared fixtures of the BCH tests: the two fields, access to the code's
// configuration, and a syndrome evaluation independent of the codec (XOR of
// polynomial-basis powers taken straight from the field table).
#pragma once

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include "bch/bch.h"
#include "support/differential.h"
#include "support/fields.h"
#include "support/testutil.h"

namespace bchtest {

inline GF2m& gf16() {  // x^4 + x + 1
  static const auto f = qfbtest::computedField(4);
  return *f;
}

inline GF2m& gf32768() {  // x^15 + x + 1, from the codec's stored table
  static const auto f = qfbtest::codecField();
  return *f;
}

struct Probe : BCH {
  using BCH::BCH;
  using BCH::genPoly;
  using BCH::k;
  using BCH::n;
  using BCH::parity;
  using BCH::syndromes;
  using BCH::lambda;
  std::vector<int> generator() const { return std::vector<int>(genPoly, genPoly + n - k + 1); }
};

// w(alpha^e) in exponent form for a bit word w in degree order.
inline int evaluateBits(GF& f, const std::vector<int>& byDegree, int e) {
  const int64_t order = f.getN() - 1;
  int acc = 0;
  for (size_t p = 0; p < byDegree.size(); ++p)
    if (byDegree[p]) acc ^= f.exp2Int(static_cast<int>(static_cast<int64_t>(e) * static_cast<int64_t>(p) % order));
  return f.int2Exp(acc);
}

inline std::vector<int> reversed(std::vector<int> v) { return std::vector<int>(v.rbegin(), v.rend()); }

using qfbtest::randomBits;

// The word with min(count, size) distinct bits flipped.
inline std::vector<int> withErrors(std::mt19937& rng, std::vector<int> word, int count) {
  qfbtest::flipDistinct(rng, word.data(), static_cast<int>(word.size()), count);
  return word;
}

}  // namespace bchtest
