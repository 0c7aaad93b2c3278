// Thirty-two shifts of the register: shifting multiplies the state by x, and
// whenever x^32 appears it is replaced by x^22 + x^2 + x + 1 (0x400007).
#include "randgen/primitiveRng.h"

#include <istream>
#include <ostream>

namespace {
constexpr std::uint32_t kFeedback = 0x400007u;
}

unsigned int Primitive_RNG::uniform_int() {
  const std::uint32_t out = state;
  for (int step = 0; step < 32; ++step)
    state = (state & 0x80000000u) ? (state << 1) ^ kFeedback : state << 1;
  return out;
}

void Primitive_RNG::record_state(std::ostream& out) const { out << state << std::endl; }

void Primitive_RNG::load_state(std::istream& in) {
  std::uint32_t word = 0;
  if (in >> word) state = word;
}

void Primitive_RNG::set_state(const unsigned int* words) { state = words[0]; }

void Primitive_RNG::get_state(unsigned int* words) const { words[0] = state; }
