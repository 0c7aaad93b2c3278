// RANROT type B. Seeding fills the ring buffer from the linear congruential
// sequence s <- 2891336453 s + 1 (mod 2^32), a full-period multiplier, and
// then runs the generator nine steps so that the first output already mixes
// rotated terms of several seed words.
#include "randgen/ranrotB.h"

#include <ctime>
#include <istream>
#include <ostream>

namespace {

// x(n-17) sits in the slot the new output overwrites; x(n-10) ten slots on.
constexpr int kNearLagOffset = 10;

std::uint32_t rotl(std::uint32_t x, int r) { return (x << r) | (x >> (32 - r)); }

int previousSlot(int p) { return p == 0 ? RanrotB::kBufferSize - 1 : p - 1; }

}  // namespace

RanrotB::RanrotB() { initialize(static_cast<unsigned int>(std::time(nullptr))); }

RanrotB::RanrotB(unsigned int seed) {
  initialize(seed != 0 ? seed : static_cast<unsigned int>(std::time(nullptr)));
}

void RanrotB::initialize(unsigned int seed) {
  std::uint32_t s = seed;
  for (std::uint32_t& word : buffer) {
    s = s * 2891336453u + 1u;
    word = s;
  }
  p1 = 0;
  p2 = kNearLagOffset;
  for (int i = 0; i < 9; ++i) uniform_int();
}

unsigned int RanrotB::uniform_int() {
  const std::uint32_t x = rotl(buffer[p2], 13) + rotl(buffer[p1], 9);
  buffer[p1] = x;
  p1 = previousSlot(p1);
  p2 = previousSlot(p2);
  return x;
}

void RanrotB::record_state(std::ostream& out) const {
  out << p1 << ' ' << p2 << ' ';
  for (std::uint32_t w : buffer) out << w << ' ';
  out << std::endl;
}

void RanrotB::load_state(std::istream& in) {
  int lag1 = 0, lag2 = 0;
  std::uint32_t words[kBufferSize];
  in >> lag1 >> lag2;
  for (std::uint32_t& w : words) in >> w;
  if (!in) return;
  if (lag1 < 0 || lag1 >= kBufferSize || lag2 < 0 || lag2 >= kBufferSize) {
    in.setstate(std::ios::failbit);
    return;
  }
  p1 = lag1;
  p2 = lag2;
  for (int k = 0; k < kBufferSize; ++k) buffer[k] = words[k];
}

void RanrotB::set_state(const unsigned int* state) {
  p1 = static_cast<int>(state[0] % kBufferSize);
  p2 = static_cast<int>(state[1] % kBufferSize);
  for (int k = 0; k < kBufferSize; ++k) buffer[k] = state[k + 2];
}

void RanrotB::get_state(unsigned int* state) const {
  state[0] = static_cast<unsigned int>(p1);
  state[1] = static_cast<unsigned int>(p2);
  for (int k = 0; k < kBufferSize; ++k) state[k + 2] = buffer[k];
}
