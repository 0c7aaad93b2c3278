// A fixed-point register as plain integers, written from the rules of the
// mode letters rather than from the library: round (r: half up, z: half
// away from zero) or truncate (t) to a multiple k of the quantum 2^scale,
// then saturate at the range (l) or wrap k modulo 2^w (o). Signed registers
// are two's complement unless m (sign-magnitude) or c (ones' complement) is
// given; those two truncate the magnitude and keep the input's sign, so they
// have a negative zero. Later letters win; u leaves the sign-magnitude family.
// Shared by the unit test and the fuzz target, whose build may mark the
// oracle uninstrumented through QFB_ORACLE.
#pragma once

#include <cmath>
#include <cstdlib>
#include <string>

#ifndef QFB_ORACLE
#define QFB_ORACLE
#endif

namespace qfbtest {

struct FixedPointModel {
  int w = 0;
  bool isSigned = true, limit = true;
  char rounding = 'r', repr = '2';  // repr: '2' two's complement, 'm', 'c'

  QFB_ORACLE static FixedPointModel parse(int w, const std::string& mode) {
    FixedPointModel f;
    f.w = w;
    for (char ch : mode) {
      switch (ch | 0x20) {
        case 's': f.isSigned = true; break;
        case 'u': f.isSigned = false; f.repr = '2'; break;
        case 'l': f.limit = true; break;
        case 'o': f.limit = false; break;
        case 'r': case 'z': case 't': f.rounding = static_cast<char>(ch | 0x20); break;
        case 'm': case 'c': f.isSigned = true; f.repr = static_cast<char>(ch | 0x20); break;
        default: break;
      }
    }
    return f;
  }
  long long lo() const { return !isSigned ? 0 : repr == '2' ? -(1LL << (w - 1)) : 1 - (1LL << (w - 1)); }
  long long hi() const { return isSigned ? (1LL << (w - 1)) - 1 : (1LL << w) - 1; }
  QFB_ORACLE long long toGrid(double u) const {
    if (rounding == 't') return static_cast<long long>(repr == '2' ? std::floor(u) : std::floor(std::fabs(u)));
    return static_cast<long long>(rounding == 'z' && u <= 0 ? std::ceil(u - 0.5) : std::floor(u + 0.5));
  }
  // k in units of the quantum, with the overflow flag.
  QFB_ORACLE long long quantise(double u, bool& ovf) const {
    const long long k = toGrid(u);
    ovf = k < lo() || k > hi();
    if (limit) return k < lo() ? lo() : k > hi() ? hi() : k;
    const long long span = 1LL << w, base = isSigned ? -(1LL << (w - 1)) : 0;
    const long long wrapped = ((k - base) % span + span) % span + base;
    ovf = wrapped != k;
    return wrapped;
  }
  // The stored value of x in a register of quantum 2^scale.
  QFB_ORACLE double assign(double x, int scale, bool& ovf) const {
    const double q = std::ldexp(1.0, scale), v = static_cast<double>(quantise(x / q, ovf)) * q;
    return repr == '2' ? v : std::copysign(std::fabs(v), x);
  }
  // Register words. Wrapping is modulo 2^w even for m, so -2^(w-1) LSBs can
  // occur: its code overflows w bits.
  unsigned encode(long long k, bool negative) const {
    const unsigned mask = (1u << w) - 1, mag = static_cast<unsigned>(std::llabs(k));
    if (repr == 'm' && negative) return (1u << (w - 1)) + mag;
    if (repr == 'c' && negative) return ~mag & mask;
    return static_cast<unsigned>(k) & mask;
  }
  long long decode(unsigned p) const {
    const unsigned signBit = 1u << (w - 1);
    if (!isSigned || !(p & signBit)) return p;
    if (repr == 'm') return -static_cast<long long>(p - signBit);
    if (repr == 'c') return -static_cast<long long>(((1u << w) - 1) - p);
    return static_cast<long long>(p) - (1LL << w);
  }
};

}  // namespace qfbtest
