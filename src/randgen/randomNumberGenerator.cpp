// Conversions shared by all generators: the 32-bit draw scaled to [0, 1),
// and the polar method for normal deviates. For (x1, x2) uniform on the unit
// disc without its centre, x2 * sqrt(-2 ln s / s) with s = x1^2 + x2^2 is
// standard normal (as is the x1 companion, which is not kept).
#include "randgen/randomNumberGenerator.h"

#include <cmath>
#include <istream>
#include <ostream>

namespace {
constexpr double kTwoToMinus32 = 2.3283064365386963e-10;
}

Random_Number_Generator::~Random_Number_Generator() = default;

void Random_Number_Generator::record_state(std::ostream& /*out*/) const {}

void Random_Number_Generator::load_state(std::istream& /*in*/) {}

void Random_Number_Generator::set_state(const unsigned int* /*state*/) {}

void Random_Number_Generator::get_state(unsigned int* /*state*/) const {}

void Random_Number_Generator::initialize(unsigned int /*seed*/) {}

double Random_Number_Generator::uniform() { return static_cast<double>(uniform_int()) * kTwoToMinus32; }

double Random_Number_Generator::normal() {
  double x1, x2, s;
  do {
    const double u1 = uniform();
    const double u2 = uniform();
    x1 = 2.0 * u1 - 1.0;
    x2 = 2.0 * u2 - 1.0;
    s = x1 * x1 + x2 * x2;
  } while (s >= 1.0 || s == 0.0);
  return x2 * std::sqrt(-2.0 * std::log(s) / s);
}
