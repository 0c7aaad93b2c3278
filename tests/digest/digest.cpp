// qfb_digest: a canonical fingerprint of the library's integer outputs, for
// checking that a cross-compiled build computes bit for bit what the native
// build computes (32-bit ARM against x86-64 in CI).
//
// Each section drives one family of library functions with inputs drawn from
// a fixed xorshift32 stream, so the inputs themselves are identical on every
// platform, and folds every output value into a 64-bit FNV-1a hash of its
// 32-bit little-endian encoding. The output is one line per section,
// "<name> <values> <hash>", so a diff of two runs names the family that
// differs. The hash is a fingerprint, not a checksum against tampering.
//
// Extending: when a module lands, write one function `void name(Digest&)`
// that exercises it (encoded blocks, decoded outputs, generator streams)
// and add one row to kSections below. Nothing else changes: CI prints and
// compares every section on both builds.
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

#include "Tools/utilities.h"
#include "gf/exp2Int15.h"
#include "gf/gf2m.h"
#include "gf/gfutilities.h"
#include "support/primitive_polynomials.h"

namespace {

class Digest {
 public:
  void add(int32_t v) {
    const uint32_t u = static_cast<uint32_t>(v);
    for (int shift = 0; shift < 32; shift += 8) {
      hash_ ^= (u >> shift) & 0xFFu;
      hash_ *= 0x100000001B3ull;
    }
    ++count_;
  }
  void add(const int* values, int n) {
    for (int i = 0; i < n; ++i) add(values[i]);
  }
  void add(const std::vector<int>& values) { add(values.data(), static_cast<int>(values.size())); }

  uint64_t hash() const { return hash_; }
  uint64_t count() const { return count_; }

 private:
  uint64_t hash_ = 0xCBF29CE484222325ull;
  uint64_t count_ = 0;
};

// Marsaglia's xorshift32: a platform-independent input stream.
class InputStream {
 public:
  explicit InputStream(uint32_t seed) : state_(seed ? seed : 1u) {}
  uint32_t next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 17;
    state_ ^= state_ << 5;
    return state_;
  }
  int below(int n) { return static_cast<int>(next() % static_cast<uint32_t>(n)); }
  int bit() { return static_cast<int>(next() >> 31); }
  std::vector<int> bits(int n) {
    std::vector<int> v(static_cast<size_t>(n));
    for (int& b : v) b = bit();
    return v;
  }

 private:
  uint32_t state_;
};

std::unique_ptr<GF2m> codecField() {
  const std::vector<int> p = qfbtest::primitivePolynomial(15);
  return std::make_unique<GF2m>(15, p.data(), 15, exp2Int15.data(), kExp2Int15Size);
}

std::vector<int> exp2Table(const GF& f) {
  std::vector<int> t(static_cast<size_t>(f.getN()));
  f.getExp2IntConversionTable(t.data(), f.getN());
  return t;
}

std::vector<int> int2Table(const GF& f) {
  std::vector<int> t(static_cast<size_t>(f.getN()));
  f.getInt2ExpConversionTable(t.data(), f.getN());
  return t;
}

void storedCodecField(Digest& d) {
  const auto f = codecField();
  d.add(exp2Table(*f));
  d.add(int2Table(*f));
}

// Every degree with its tables computed from p(x) rather than stored.
void computedFields(Digest& d) {
  for (int m = qfbtest::kMinFieldDegree; m <= qfbtest::kMaxFieldDegree; ++m) {
    const std::vector<int> p = qfbtest::primitivePolynomial(m);
    GF2m f(m, p.data(), m, static_cast<const char*>(nullptr));
    d.add(exp2Table(f));
    d.add(int2Table(f));
  }
}

// Element arithmetic, including power() with exponents over the whole int
// range, whose product wraps in 32 bits.
void fieldElementOps(Digest& d) {
  const auto f = codecField();
  InputStream in(0x9E3779B9u);
  const int q = f->getN();
  for (int i = 0; i < 4096; ++i) {
    const int a = in.below(q), b = in.below(q);
    d.add(f->add(a, b));
    d.add(f->multiply(a, b));
    d.add(f->multInverse(a == f->getZero() ? b % (q - 1) : a));
    d.add(f->power(a, static_cast<int32_t>(in.next())));
  }
}

std::vector<int> randomPoly(InputStream& in, const GF& f, int deg) {
  std::vector<int> p(static_cast<size_t>(deg + 1));
  for (int& c : p) c = in.below(f.getN());
  p[static_cast<size_t>(deg)] = in.below(f.getN() - 1);  // nonzero top coefficient
  return p;
}

// Polynomial arithmetic in both coefficient orders, and the bit <-> symbol
// streams, over GF(2^8) and the codec's GF(2^15).
void fieldPolynomialOps(Digest& d) {
  InputStream in(0x2545F491u);
  const std::vector<int> p8 = qfbtest::primitivePolynomial(8);
  GF2m f8(8, p8.data(), 8, static_cast<const char*>(nullptr));
  const auto f15 = codecField();
  for (GF* f : {static_cast<GF*>(&f8), static_cast<GF*>(f15.get())}) {
    for (int trial = 0; trial < 64; ++trial) {
      const int degA = 1 + in.below(40), degB = 1 + in.below(degA);
      const std::vector<int> a = randomPoly(in, *f, degA), b = randomPoly(in, *f, degB);
      std::vector<int> prod(static_cast<size_t>(degA + degB + 1));
      polyMult(f, a.data(), degA, b.data(), degB, prod.data());
      d.add(prod);
      std::vector<int> quot(static_cast<size_t>(degA + 1)), rem(static_cast<size_t>(degB + 1));
      int degQ = 0, degR = 0;
      longDivision(f, a.data(), degA, b.data(), degB, quot.data(), degQ, rem.data(), degR);
      d.add(degQ);
      d.add(degR);
      d.add(quot.data(), degQ + 1);
      d.add(rem.data(), degR + 1);
      d.add(evaluatePoly(f, a.data(), degA, in.below(f->getN())));
      d.add(f->evaluatePoly(b.data(), degB + 1, in.below(f->getN())));

      const int nSymbols = 1 + in.below(32);
      const std::vector<int> bits = in.bits(nSymbols * f->getM());
      std::vector<int> symbols(static_cast<size_t>(nSymbols)), back(bits.size());
      bitStream2symbolStream(f, bits.data(), static_cast<int>(bits.size()), symbols.data(), nSymbols);
      symbolStream2bitStream(f, symbols.data(), nSymbols, back.data(), static_cast<int>(back.size()));
      d.add(symbols);
      d.add(back);
    }
  }
}

// Integer <-> bit conversions and the byte/bit re-ordering of flash data.
void bitUtilities(Digest& d) {
  InputStream in(0x6A09E667u);
  for (int trial = 0; trial < 256; ++trial) {
    const int value = static_cast<int32_t>(in.next());
    const int w = 1 + in.below(32);
    std::vector<int> bits(32);
    hex2binary(value, bits.data(), w);
    d.add(bits.data(), w);
    d.add(binary2hex(bits.data(), w));
    hex2binary_rev(value, bits.data(), w);
    d.add(bits.data(), w);
    d.add(binary2hex_rev(bits.data(), w));

    const int n = 1 + in.below(700);
    const std::vector<int> data = in.bits(n);
    std::vector<int> symbols(static_cast<size_t>(n)), out(static_cast<size_t>(n));
    const int sw = 1 + in.below(16);
    d.add(bits2symbols(data.data(), symbols.data(), n, sw));
    d.add(symbols.data(), n / sw);
    bits2symbols_rev(data.data(), symbols.data(), n, sw);
    d.add(symbols.data(), n / sw);

    const int wordBits = 8 * in.below(9), groupBits = in.below(20);
    endianness_swap(data.data(), out.data(), n, wordBits);
    d.add(out);
    bit_order_swap(data.data(), out.data(), n, groupBits);
    d.add(out);
    // Drawn one per statement: argument evaluation order differs between
    // compilers and targets, and the inputs must not.
    const int doByteSwap = in.bit();
    const int doBitSwap = in.bit();
    byte_and_bit_swap(data.data(), n, out.data(), wordBits, groupBits, doByteSwap, doBitSwap);
    d.add(out);
  }
}

struct Section {
  const char* name;
  void (*produce)(Digest&);
};

const Section kSections[] = {
    {"gf15.stored_tables", storedCodecField},
    {"gf.computed_tables", computedFields},
    {"gf15.element_ops", fieldElementOps},
    {"gf.polynomial_ops", fieldPolynomialOps},
    {"tools.bit_utilities", bitUtilities},
};

}  // namespace

int main() {
  for (const Section& s : kSections) {
    Digest d;
    s.produce(d);
    std::printf("%s %llu %016llx\n", s.name, static_cast<unsigned long long>(d.count()),
                static_cast<unsigned long long>(d.hash()));
  }
  return 0;
}
