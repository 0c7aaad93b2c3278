// Marsaglia's xorshift32 (x ^= x << 13, x >> 17, x << 5): a stream of
// inputs that is bit for bit the same on every compiler and target, unlike
// the standard library's distributions. The digest and the fuzz targets draw
// their inputs from it; a zero state would stay zero, so the seed is made odd.
#pragma once

#include <cstdint>
#include <vector>

namespace qfbtest {

class XorShift32 {
 public:
  explicit XorShift32(uint32_t seed) : state_(seed | 1u) {}
  uint32_t next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 17;
    state_ ^= state_ << 5;
    return state_;
  }
  int below(int n) { return static_cast<int>(next() % static_cast<uint32_t>(n)); }
  int inRange(int lo, int hi) { return lo + below(hi - lo + 1); }
  int bit() { return static_cast<int>(next() >> 31); }
  std::vector<int> bits(int n) {
    std::vector<int> v(static_cast<size_t>(n));
    for (int& b : v) b = bit();
    return v;
  }

 private:
  uint32_t state_;
};

}  // namespace qfbtest
