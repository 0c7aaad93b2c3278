// Primitive_RNG: a 32-bit Galois linear feedback shift register with the
// feedback polynomial P(x) = x^32 + x^22 + x^2 + x + 1. Read as a polynomial
// over GF(2) (bit i = coefficient of x^i), the state is multiplied by x^32
// modulo P on every draw, and the draw is the state before that step.
//
// It has no seeding of its own (initialize is the base's no-op): a new
// register holds 1, and its one state word is set with set_state or
// load_state. The state 0 is a fixed point. State as words: [state]. State as text: the word in decimal and an
// end of line.
#pragma once

#include <cstdint>

#include "randgen/randomNumberGenerator.h"

class Primitive_RNG : public Random_Number_Generator {
 public:
  unsigned int uniform_int() override;
  void record_state(std::ostream& out) const override;
  // On a read error the stream's failbit is set and the state is kept.
  void load_state(std::istream& in) override;
  void set_state(const unsigned int* words) override;
  void get_state(unsigned int* words) const override;
  int get_state_len() const override { return 1; }

 private:
  std::uint32_t state = 1;
};
