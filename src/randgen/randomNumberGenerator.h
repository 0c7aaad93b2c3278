// Random_Number_Generator: the common face of the library's seeded uniform
// generators. A concrete generator supplies 32-bit unsigned draws and its
// state; the base turns draws into uniform doubles on [0, 1) and into
// standard normal deviates, so that every generator can stand in for any
// other in simulation code.
//
// State comes in two forms: an array of get_state_len() words (get_state /
// set_state) and a whitespace-separated decimal text (record_state /
// load_state). Either one taken from a generator and given back to a
// generator of the same class resumes the identical sequence.
#pragma once

#include <iosfwd>

class Random_Number_Generator {
 public:
  virtual ~Random_Number_Generator();

  virtual unsigned int uniform_int() = 0;
  // The base keeps no state: the four state operations and initialize do nothing.
  virtual void record_state(std::ostream& out) const;
  virtual void load_state(std::istream& in);
  virtual void set_state(const unsigned int* state);
  virtual void get_state(unsigned int* state) const;
  virtual int get_state_len() const = 0;
  virtual void initialize(unsigned int seed);

  // uniform_int() / 2^32: one of 2^32 equally spaced values in [0, 1).
  double uniform();
  // Polar (Marsaglia) method; one deviate per call, the companion is dropped,
  // so every call consumes an even number of uniform draws.
  double normal();
};
