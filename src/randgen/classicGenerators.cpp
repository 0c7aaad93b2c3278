// Classic shuffled generators, the deviates built on them, and the gamma and error functions.
//
// Multiplicative congruential steps s <- a*s mod m with m near 2^31 are done
// by Schrage's decomposition m = a*q + r (r < q): a*(s mod q) - r*(s div q)
// lies in (-m, m) and is congruent to a*s, so one conditional add of m
// finishes the reduction without ever leaving 32-bit signed range.
//
// The Bays-Durham shuffle keeps a table of earlier outputs; the previous
// output picks which entry to hand out next and the fresh value takes its
// place, which breaks up the serial correlations of the bare generator.
//
// The incomplete gamma function P(a, x) = gamma(a, x) / Gamma(a) is summed
// from its series x^a e^-x / Gamma(a) * sum_n x^n / (a (a+1) ... (a+n)) for
// x < a + 1, and otherwise obtained as 1 - Q(a, x) from the continued
// fraction of Q, which converges fast there. erf(x) = P(1/2, x^2).
#include "randgen/classicGenerators.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <limits>

namespace {

constexpr int kTableSize = 32;

// The caller's word, narrowed to its 32-bit meaning.
std::int32_t seedWord(const long* idum) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<unsigned long>(*idum)));
}

// -seed as a restart value: at least 1; the one unrepresentable case,
// INT32_MIN, wraps onto itself in 32-bit arithmetic and so also becomes 1.
std::int32_t restartSeed(std::int32_t seed) {
  if (seed == INT32_MIN) return 1;
  return -seed < 1 ? 1 : -seed;
}

struct Lcg {
  std::int32_t a, m, q, r;

  std::int32_t step(std::int32_t s) const {
    const std::int32_t k = s / q;
    s = a * (s - k * q) - r * k;
    return s < 0 ? s + m : s;
  }
};

constexpr Lcg kMinimalStandard{16807, 2147483647, 127773, 2836};
constexpr Lcg kLecuyer1{40014, 2147483563, 53668, 12211};
constexpr Lcg kLecuyer2{40692, 2147483399, 52774, 3791};

// Park-Miller state of ran1: the last output and the shuffle table.
struct Ran1State {
  std::int32_t iy = 0;
  std::int32_t iv[kTableSize] = {};
};

// L'Ecuyer state of a ran2: the second generator's word, the last output
// and the shuffle table (the first generator's word is the caller's).
struct Ran2State {
  std::int32_t idum2 = 123456789;
  std::int32_t iy = 0;
  std::int32_t iv[kTableSize] = {};
};

constexpr std::int32_t kRan2Shift = 2147483562;  // m1 - 1, the period of the difference
constexpr std::int32_t kRan2TableDivisor = 1 + kRan2Shift / kTableSize;

double drawRan2(Ran2State& st, long* idum) {
  constexpr double kScale = 4.656613057391769e-10;
  constexpr double kLargest = 0.999999999988;

  std::int32_t seed = seedWord(idum);
  if (seed <= 0) {
    seed = restartSeed(seed);
    st.idum2 = seed;
    for (int j = kTableSize + 7; j >= 0; --j) {
      seed = kLecuyer1.step(seed);
      if (j < kTableSize) st.iv[j] = seed;
    }
    st.iy = st.iv[0];
  }
  seed = kLecuyer1.step(seed);
  st.idum2 = kLecuyer2.step(st.idum2);
  // Invariants: iy and the table lie in [0, m1 - 1], idum2 in [0, m2 - 1],
  // so j is in 0..31 and the difference cannot overflow.
  const int j = st.iy / kRan2TableDivisor;
  st.iy = st.iv[j] - st.idum2;
  st.iv[j] = seed;
  if (st.iy < 1) st.iy += kRan2Shift;
  *idum = seed;
  const double u = kScale * st.iy;
  return u < kLargest ? u : kLargest;
}

// Whitespace-separated decimal integers; false when one is missing,
// malformed or outside [lo, hi].
bool readInt(std::istream& in, std::int32_t& out, long long lo, long long hi) {
  long long v = 0;
  if (!(in >> v) || v < lo || v > hi) return false;
  out = static_cast<std::int32_t>(v);
  return true;
}

const char kRan2File[] = "rand2_seed.txt";
const char kGasdevFile[] = "gasdev_seed.txt";

bool saveRan2(const Ran2State& st) {
  std::FILE* f = std::fopen(kRan2File, "w");
  if (!f) return false;
  bool ok = std::fprintf(f, "%d\n%d\n%d\n", static_cast<int>(st.idum2), static_cast<int>(st.iy),
                         kTableSize) > 0;
  for (std::int32_t v : st.iv) ok = ok && std::fprintf(f, "%d\n", static_cast<int>(v)) > 0;
  return std::fclose(f) == 0 && ok;
}

// Commits nothing unless the whole file is a state ran2 could be in.
bool loadRan2(Ran2State& st) {
  std::ifstream in(kRan2File);
  Ran2State read;
  std::int32_t tableSize = 0;
  long long iy = 0;
  if (!in || !readInt(in, read.idum2, INT32_MIN, INT32_MAX) || !(in >> iy) ||
      !readInt(in, tableSize, INT32_MIN, INT32_MAX))
    return false;
  if (tableSize != kTableSize) {
    std::cerr << "NTAB in rand2_seed.txt does not match the defined macro!";
    std::exit(-1);
  }
  if (iy < 0 || iy > kRan2Shift) return false;
  read.iy = static_cast<std::int32_t>(iy);
  for (std::int32_t& v : read.iv)
    if (!readInt(in, v, 0, kRan2Shift)) return false;
  st = read;
  return true;
}

// The polar method's cache: a flag and the second deviate of the last point.
struct GaussCache {
  int iset = 0;
  double gset = 0.0;
};

template <class Uniform>
double drawGaussian(GaussCache& cache, Uniform uniform) {
  if (cache.iset) {
    cache.iset = 0;
    return cache.gset;
  }
  double x1, x2, r;
  // (x1, x2) uniform in the unit disc, kept off its rim and its centre,
  // where ln(r) / r loses precision or diverges.
  do {
    x1 = 2.0 * uniform() - 1.0;
    x2 = 2.0 * uniform() - 1.0;
    r = x1 * x1 + x2 * x2;
  } while (!(r > 1e-8 && r < 0.99999999));
  const double f = std::sqrt(-2.0 * std::log(r) / r);
  cache.gset = x1 * f;
  cache.iset = 1;
  return x2 * f;
}

constexpr int kMaxIterations = 100;
constexpr double kRelativeAccuracy = 3e-7;
constexpr double kTiny = 1e-30;

}  // namespace

double ran1(long* idum) {
  constexpr std::int32_t kTableDivisor = 1 + (2147483647 - 1) / kTableSize;
  constexpr double kScale = 4.656612875245797e-10;
  constexpr double kLargest = 0.99999988;
  static Ran1State st;

  std::int32_t seed = seedWord(idum);
  if (seed <= 0 || st.iy == 0) {
    seed = restartSeed(seed);
    // Eight warm-up steps, then the table filled from its top down.
    for (int j = kTableSize + 7; j >= 0; --j) {
      seed = kMinimalStandard.step(seed);
      if (j < kTableSize) st.iv[j] = seed;
    }
    st.iy = st.iv[0];
  }
  seed = kMinimalStandard.step(seed);
  const int j = st.iy / kTableDivisor;
  st.iy = st.iv[j];
  st.iv[j] = seed;
  *idum = seed;
  const double u = kScale * st.iy;
  return u < kLargest ? u : kLargest;
}

double ran2(long* idum) {
  static Ran2State st;
  return drawRan2(st, idum);
}

double ran2(long* idum, int mode) {
  static Ran2State st;
  if (mode == 1) return saveRan2(st) ? 0.0 : -1.0;
  if (mode == 2) return loadRan2(st) ? 0.0 : -1.0;
  return drawRan2(st, idum);
}

double expdev(long* idum) {
  double u;
  do u = ran1(idum);
  while (u == 0.0);
  return -std::log(u);
}

double gasdev(long* idum) {
  static GaussCache cache;
  return drawGaussian(cache, [idum] { return ran2(idum); });
}

double gasdev(long* idum, int mode) {
  static GaussCache cache;
  if (mode == 1) {
    std::FILE* f = std::fopen(kGasdevFile, "w");
    if (!f) return -1.0;
    const bool written = std::fprintf(f, "%d\n%f\n", cache.iset, cache.gset) > 0;
    if (std::fclose(f) != 0 || !written) return -1.0;
    return ran2(idum, 1);
  }
  if (mode == 2) {
    std::ifstream in(kGasdevFile);
    int iset = 0;
    float cached = 0.0f;
    if (!(in >> iset >> cached)) return -1.0;
    in.close();
    if (ran2(idum, 2) != 0.0) return -1.0;
    cache.iset = iset;
    // Deliberately only the first four bytes, as the header explains.
    static_assert(sizeof(float) == 4 && sizeof(double) == 8, "four-byte float, eight-byte double");
    std::memcpy(&cache.gset, &cached, sizeof cached);
    return 0.0;
  }
  return drawGaussian(cache, [idum, mode] { return ran2(idum, mode); });
}

float skewedNormal(float delta, long* idum) {
  const float u0 = static_cast<float>(gasdev(idum));
  const float v = static_cast<float>(gasdev(idum));
  const float u1 = delta * u0 + std::sqrt(1.0f - delta * delta) * v;
  return u0 >= 0.0f ? u1 : -u1;
}

double gammln(double x) {
  // Lanczos with gamma = 5 and six terms:
  //   Gamma(x + 1) ~ sqrt(2 pi) (x + 5.5)^(x + 0.5) e^-(x + 5.5) S(x),
  //   S(x) = c0 + sum_{j=1..6} c_j / (x + j),
  // and Gamma(x) = Gamma(x + 1) / x.
  static const double kCoefficients[6] = {76.18009172947146,     -86.50532032941678,
                                          24.01409824083091,     -1.231739572450155,
                                          0.001208650973866179, -5.395239384953e-6};
  const double tmp = x + 5.5;
  double series = 1.000000000190015;
  for (int j = 0; j < 6; ++j) series += kCoefficients[j] / (x + j + 1);
  return -(tmp - (x + 0.5) * std::log(tmp)) + std::log(2.5066282746310007 * series / x);
}

void gser(double* gamser, double a, double x, double* gln) {
  *gln = gammln(a);
  if (x <= 0.0) {
    *gamser = 0.0;
    return;
  }
  double denominator = a;
  double term = 1.0 / a;
  double sum = term;
  for (int n = 1; n <= kMaxIterations; ++n) {
    denominator += 1.0;
    term *= x / denominator;
    sum += term;
    if (std::fabs(term) < std::fabs(sum) * kRelativeAccuracy) {
      *gamser = sum * std::exp(-x + a * std::log(x) - *gln);
      return;
    }
  }
}

void gcf(double* gammcf, double a, double x, double* gln) {
  *gln = gammln(a);
  // Q(a, x) Gamma(a) e^x x^-a = 1 / (x+1-a - 1(1-a) / (x+3-a - 2(2-a) / (x+5-a - ...))),
  // evaluated front to back by the modified Lentz method: h is the value so
  // far, c and d the ratios of successive numerators and denominators.
  double b = x + 1.0 - a;
  double c = 1.0 / kTiny;
  double d = 1.0 / b;
  double h = d;
  bool converged = false;
  for (int i = 1; i <= kMaxIterations; ++i) {
    const double an = -i * (i - a);
    b += 2.0;
    d = an * d + b;
    if (std::fabs(d) < kTiny) d = kTiny;
    c = b + an / c;
    if (std::fabs(c) < kTiny) c = kTiny;
    d = 1.0 / d;
    const double delta = d * c;
    h *= delta;
    if (std::fabs(delta - 1.0) < kRelativeAccuracy) {
      converged = true;
      break;
    }
  }
  if (!converged) std::cout << "****************************** hi ***********************" << std::endl;
  *gammcf = std::exp(-x + a * std::log(x) - *gln) * h;
}

double gammp(double a, double x) {
  if (x < 0.0 || a <= 0.0) std::cout << "Invalid arguments in routine gammp" << std::endl;
  double gln;
  if (x < a + 1.0) {
    double gamser = std::numeric_limits<double>::quiet_NaN();
    gser(&gamser, a, x, &gln);
    return gamser;
  }
  double gammcf;
  gcf(&gammcf, a, x, &gln);
  return 1.0 - gammcf;
}

double erff(double x) {
  if (std::isnan(x)) return x;
  if (std::isinf(x)) return x > 0.0 ? 1.0 : -1.0;
  const double x2 = x * x;
  double p = std::numeric_limits<double>::quiet_NaN(), gln;
  if (x2 < 1.5) {
    gser(&p, 0.5, x2, &gln);
  } else {
    gcf(&p, 0.5, x2, &gln);
    p = 1.0 - p;
  }
  return x < 0.0 ? -p : p;
}

double erfinv(double y) {
  constexpr double kLargestFloat = 3.4028234663852886e+38;
  constexpr double kTwoOverSqrtPi = 1.1283791670955126;
  if (std::fabs(y) > 1.0) std::exit(-1);
  if (std::isnan(y)) return y;
  if (y == 1.0) return kLargestFloat;
  if (y == -1.0) return -kLargestFloat;

  double x;
  if (std::fabs(y) <= 0.7) {
    const double z = y * y;
    x = y * (((-0.140543331 * z + 0.914624893) * z - 1.645349621) * z + 0.886226899) /
        ((((0.012229801 * z - 0.329097515) * z + 1.442710462) * z - 2.118377725) * z + 1.0);
  } else {
    // Tail: a rational function of sqrt(-ln((1 - |y|) / 2)), odd in y.
    const double z = std::sqrt(-std::log((1.0 - std::fabs(y)) / 2.0));
    x = (((1.641345311 * z + 3.429567803) * z - 1.624906493) * z - 1.970840454) /
        ((1.6370678 * z + 3.5438892) * z + 1.0);
    if (y < 0.0) x = -x;
  }
  for (int step = 0; step < 2; ++step) x -= (erff(x) - y) / (kTwoOverSqrtPi * std::exp(-x * x));
  return x;
}
