// RanrotB: a RANROT type B generator, a lagged Fibonacci generator whose two
// lagged terms are rotated before they are added:
//   x(n) = rotl(x(n-10), 13) + rotl(x(n-17), 9)   (mod 2^32).
// The last 17 outputs live in a ring buffer; p1 is the slot of x(n-17),
// which the new output overwrites, and p2 = p1 + 10 (mod 17) that of x(n-10).
//
// State as words: [p1, p2, buffer[0..16]] (19 words). State as text: the
// same numbers in decimal, each followed by one space, then an end of line.
#pragma once

#include <cstdint>

#include "randgen/randomNumberGenerator.h"

class RanrotB : public Random_Number_Generator {
 public:
  static constexpr int kBufferSize = 17;

  // Seeded from the clock (seconds since the epoch).
  RanrotB();
  // seed == 0 means "seed from the clock"; initialize(0) really seeds with 0.
  explicit RanrotB(unsigned int seed);

  unsigned int uniform_int() override;
  void record_state(std::ostream& out) const override;
  // On a read error or a lag position outside 0..16 the stream's failbit is
  // set and the generator keeps its previous state.
  void load_state(std::istream& in) override;
  // Lag positions are taken modulo 17, so any array keeps the draws in bounds.
  void set_state(const unsigned int* state) override;
  void get_state(unsigned int* state) const override;
  int get_state_len() const override { return kBufferSize + 2; }
  void initialize(unsigned int seed) override;

 private:
  std::uint32_t buffer[kBufferSize];
  int p1 = 0;
  int p2 = 10;
};
