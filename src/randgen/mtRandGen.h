// MT_Rand_Gen: the Mersenne Twister MT19937, a twisted generalised feedback
// shift register of degree 19937 over 624 words of 32 bits, period
// 2^19937 - 1, equidistributed in 623 dimensions. Each output is one state
// word passed through a fixed invertible tempering transform.
//
// State as words: [mti, mt[0..623]] (625 words). State as text: mti and the
// 624 words in decimal, each followed by one space, then an end of line.
#pragma once

#include <cstdint>

#include "randgen/randomNumberGenerator.h"

class MT_Rand_Gen : public Random_Number_Generator {
 public:
  static constexpr int kN = 624;

  // Seeded from the clock (seconds since the epoch).
  MT_Rand_Gen();
  // seed == 0 means "seed from the clock"; initialize(0) really seeds with 0.
  explicit MT_Rand_Gen(unsigned int seed);
  // Seeding from a key of `length` words; a length <= 0 is an empty key,
  // whose words all count as 0 (key is then never read).
  MT_Rand_Gen(const unsigned int* key, int length);

  unsigned int uniform_int() override;
  void record_state(std::ostream& out) const override;
  // Reads mti and the 624 words; on a read error or an mti outside 0..624
  // the stream's failbit is set and the generator keeps its previous state.
  void load_state(std::istream& in) override;
  // An mti word above 624 only forces the next draw to regenerate the block.
  void set_state(const unsigned int* state) override;
  void get_state(unsigned int* state) const override;
  int get_state_len() const override { return kN + 1; }
  void initialize(unsigned int seed) override;

 private:
  void initializeByArray(const unsigned int* key, int length);
  void regenerate();

  std::uint32_t mt[kN];
  int mti = kN;
};
