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
// and add one row to kSections below. CI prints and compares every section.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "Tools/FixedPoint.h"
#include "Tools/code12_13_v2.h"
#include "Tools/code30_31nrz_v2.h"
#include "Tools/utilities.h"
#include "bch/bch.h"
#include "gf/gfutilities.h"
#include "quilFlashBCH.h"
#include "randgen/classicGenerators.h"
#include "randgen/randgen.h"
#include "rsecc/rsecc.h"
#include "support/fields.h"
#include "support/xorshift.h"

namespace {

using V = std::vector<int>;
using Inputs = qfbtest::XorShift32;

class Digest {
 public:
  void add(int32_t v) {
    for (int shift = 0; shift < 32; shift += 8) {
      hash_ ^= (static_cast<uint32_t>(v) >> shift) & 0xFFu;
      hash_ *= 0x100000001B3ull;
    }
    ++count_;
  }
  void add(const int* values, int n) {
    for (int i = 0; i < n; ++i) add(values[i]);
  }
  void add(const V& values) { add(values.data(), static_cast<int>(values.size())); }
  // A double by its IEEE-754 bit pattern, low word first.
  void addDouble(double v) {
    uint64_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    add(static_cast<int32_t>(static_cast<uint32_t>(bits)));
    add(static_cast<int32_t>(static_cast<uint32_t>(bits >> 32)));
  }
  uint64_t hash() const { return hash_; }
  uint64_t count() const { return count_; }

 private:
  uint64_t hash_ = 0xCBF29CE484222325ull;
  uint64_t count_ = 0;
};

// Both conversion tables of the codec's stored GF(2^15), then of every
// degree with its tables computed from p(x).
void fieldTables(Digest& d) {
  auto addTables = [&d](const GF& f) {
    d.add(qfbtest::exp2Table(f));
    d.add(qfbtest::int2Table(f));
  };
  addTables(*qfbtest::codecField());
  for (int m = qfbtest::kMinFieldDegree; m <= qfbtest::kMaxFieldDegree; ++m) addTables(*qfbtest::computedField(m));
}

// Element arithmetic, including power() with exponents over the whole int
// range, whose product wraps in 32 bits.
void fieldElementOps(Digest& d) {
  const auto f = qfbtest::codecField();
  Inputs in(0x9E3779B9u);
  const int q = f->getN();
  for (int i = 0; i < 4096; ++i) {
    const int a = in.below(q), b = in.below(q);
    d.add(f->add(a, b));
    d.add(f->multiply(a, b));
    d.add(f->multInverse(a == f->getZero() ? b % (q - 1) : a));
    d.add(f->power(a, static_cast<int32_t>(in.next())));
  }
}

// Polynomial arithmetic in both coefficient orders, and the bit <-> symbol
// streams, over GF(2^8) and the codec's GF(2^15).
void fieldPolynomialOps(Digest& d) {
  Inputs in(0x2545F491u);
  for (const auto& f : {qfbtest::computedField(8), qfbtest::codecField()}) {
    auto poly = [&](int deg) {  // nonzero top coefficient
      V p(deg + 1);
      for (int& c : p) c = in.below(f->getN());
      p[deg] = in.below(f->getN() - 1);
      return p;
    };
    for (int trial = 0; trial < 64; ++trial) {
      const int degA = 1 + in.below(40), degB = 1 + in.below(degA);
      const V a = poly(degA), b = poly(degB);
      V prod(degA + degB + 1), quot(degA + 1), rem(degB + 1);
      polyMult(f.get(), a.data(), degA, b.data(), degB, prod.data());
      int degQ = 0, degR = 0;
      longDivision(f.get(), a.data(), degA, b.data(), degB, quot.data(), degQ, rem.data(), degR);
      d.add(prod);
      d.add({degQ, degR});
      d.add(quot.data(), degQ + 1);
      d.add(rem.data(), degR + 1);
      d.add(evaluatePoly(f.get(), a.data(), degA, in.below(f->getN())));
      d.add(f->evaluatePoly(b.data(), degB + 1, in.below(f->getN())));

      const int nSymbols = 1 + in.below(32);
      const V bits = in.bits(nSymbols * f->getM());
      V symbols(nSymbols), back(bits.size());
      bitStream2symbolStream(f.get(), bits.data(), static_cast<int>(bits.size()), symbols.data(), nSymbols);
      symbolStream2bitStream(f.get(), symbols.data(), nSymbols, back.data(), static_cast<int>(back.size()));
      d.add(symbols);
      d.add(back);
    }
  }
}

// Integer <-> bit conversions and the byte/bit re-ordering of flash data.
// Inputs are drawn one per statement: argument evaluation order differs
// between compilers and targets, and the inputs must not.
void bitUtilities(Digest& d) {
  Inputs in(0x6A09E667u);
  for (int trial = 0; trial < 256; ++trial) {
    const int value = static_cast<int32_t>(in.next());
    const int w = 1 + in.below(32);
    V bits(32);
    hex2binary(value, bits.data(), w);
    d.add(bits.data(), w);
    d.add(binary2hex(bits.data(), w));
    hex2binary_rev(value, bits.data(), w);
    d.add(bits.data(), w);
    d.add(binary2hex_rev(bits.data(), w));

    const int n = 1 + in.below(700);
    const V data = in.bits(n);
    V symbols(n), out(n);
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
    const int doByteSwap = in.bit();
    const int doBitSwap = in.bit();
    byte_and_bit_swap(data.data(), n, out.data(), wordBits, groupBits, doByteSwap, doBitSwap);
    d.add(out);
  }
}

// Flash blocks through the exported interface: layouts from one short
// codeword to t = 128, data from quilGenerateRandomBits, the encoded blocks,
// then the decoder's results and data when codeword i gets i + t - 1 flips
// (the first codewords within t, the last beyond it).
void flashBlocks(Digest& d) {
  struct Layout {
    V lengths;
    int t;
  };
  const Layout layouts[] = {{{512}, 8}, {{100, 2000, 4096}, 5}, {{1024, 1024}, 40},
                            {{8192}, 128}, {{7, 33}, 1}, {{4000}, 0}};
  Inputs in(0x510E527Fu);
  quilCreateFlashBCH();
  int seed = 1;
  for (Layout l : layouts) {
    const int n = static_cast<int>(l.lengths.size());
    d.add(quilInitializeFlashBCH(n, l.lengths.data(), l.t));
    const int parity = quilGetParityLength();
    int total = 0;
    for (int len : l.lengths) total += len;
    V data(total), block(total + n * parity), out(total);
    quilGenerateRandomBits(data.data(), total, seed++);
    d.add({quilEncodeBCH(data.data(), block.data()), parity});
    d.add(data);
    d.add(block);
    for (int i = 0, start = 0; i < n; start += l.lengths[i] + parity, ++i)
      for (int f = 0; f < i + l.t - 1; ++f) block[start + in.below(l.lengths[i] + parity)] ^= 1;
    d.add(quilDecodeBCH(block.data(), out.data()));
    d.add(out);
  }
  quilReleaseFlashBCH();
}

// The Gaussian test channel: doubles through exp/log/sqrt of the platform's
// maths library, compared bit for bit.
void gaussianChannel(Digest& d) {
  V bits(4096);
  std::vector<double> noisy(bits.size());
  quilGenerateRandomBits(bits.data(), static_cast<int>(bits.size()), 77);
  for (double snr : {-3.0, 4.5, 12.0}) {
    quilAddGaussianNoise(bits.data(), noisy.data(), static_cast<int>(bits.size()), snr, 99);
    for (double v : noisy) d.addDouble(v);
  }
}

// Generator streams: every uniform generator, and the classic generators
// whose state is a C long (32 bits on the target, 64 on the host).
void generatorStreams(Digest& d) {
  MT_Rand_Gen mt(12345u);
  RanrotB ranrot(2024u);
  Primitive_RNG lfsr;
  for (Random_Number_Generator* g : {static_cast<Random_Number_Generator*>(&mt),
                                     static_cast<Random_Number_Generator*>(&ranrot),
                                     static_cast<Random_Number_Generator*>(&lfsr)}) {
    for (int i = 0; i < 4096; ++i) d.add(static_cast<int32_t>(g->uniform_int()));
    for (int i = 0; i < 256; ++i) d.addDouble(g->uniform());
  }
  struct Classic {
    double (*draw)(long*);
    long seed;
    int count;
  };
  const Classic classics[] = {{[](long* s) { return ran1(s); }, -7, 2048},
                              {[](long* s) { return ran2(s); }, -11, 2048},
                              {[](long* s) { return expdev(s); }, -13, 512},
                              {[](long* s) { return gasdev(s); }, -17, 512}};
  for (Classic c : classics)
    for (int i = 0; i < c.count; ++i) d.addDouble(c.draw(&c.seed));
}

// The BCH codec directly: systematic encoding, and the three decoders
// (Berlekamp-Massey, the closed form for t <= 3, Reed-Solomon mode) on
// words with a growing number of errors.
void bchCodec(Digest& d) {
  const auto f = qfbtest::codecField();
  Inputs in(0x1F83D9ABu);
  for (int t : {1, 2, 3, 6, 17}) {
    const int k = 200 + in.below(600), n = k + 15 * t;
    BCH code(f.get(), 0, t, 1, k);
    V cw(n + 15, 0);
    code.encode(in.bits(k).data(), cw.data());
    d.add(cw.data(), n);
    for (int errors = 0; errors <= t + 2; ++errors) {
      V rx(cw.begin(), cw.begin() + n);
      for (int e = 0; e < errors; ++e) rx[in.below(n)] ^= 1;
      using Decoder = int (BCH::*)(int*, int*, int);
      for (Decoder decoder : {&BCH::decodeBCH, &BCH::decodeForSmallT, &BCH::decodeRS}) {
        if (decoder == &BCH::decodeForSmallT && t > 3) continue;
        V out(n + 15, 0);
        d.add((code.*decoder)(rx.data(), out.data(), -1));
        d.add(out.data(), n);
      }
    }
  }
}

// Reed-Solomon over GF(2^8): encoding, then errors-only and
// errors-and-erasures decoding at and beyond the bound.
void reedSolomonCodec(Digest& d) {
  const auto f = qfbtest::computedField(8);
  Inputs in(0x5BE0CD19u);
  for (int b0 : {0, 1}) {
    for (int t : {1, 4, 8}) {
      RSECC code(f.get(), t, -1, false, b0);
      const int n = 255 - in.below(100), k = n - 2 * t;
      V msg(k), cw(n);
      for (int& s : msg) s = in.below(256);
      code.encode(msg.data(), k, cw.data(), n);
      d.add(cw);
      for (int errors = 0; errors <= t + 1; ++errors) {
        V plain = cw;
        for (int e = 0; e < errors; ++e) plain[in.below(n)] = in.below(256);
        V withErasures = plain;
        d.add(code.decode(plain.data(), n, -1, nullptr));
        d.add(plain);
        V erasures = {in.below(n), in.below(n)};
        d.add(code.decodeErrorAndErasure(withErasures.data(), n, erasures.data(), 2, -1, nullptr));
        d.add(withErasures);
      }
    }
  }
}

// The line codes: every 12-bit word through the 12/13 code, and random
// streams through the 30/31 code.
void lineCodes(Digest& d) {
  Code12_13_v2 inner;
  for (int w = 0; w < 4096; ++w) {
    int word[12], cw[13];
    for (int j = 0; j < 12; ++j) word[j] = (w >> (11 - j)) & 1;
    d.add(inner.encode(word, cw));
    d.add(cw, 13);
  }
  Code30_31nrz_v2 code;
  Inputs in(0xCBBB9D5Du);
  V words = in.bits(30 * 64), cws(31 * 64), back(30 * 64);
  code.block_encode(words.data(), cws.data(), 64, false);
  d.add(cws);
  for (int i = 0; i < 200; ++i) cws[in.below(31 * 64)] ^= 1;
  code.block_decode(cws.data(), back.data(), 64, false);
  d.add(back);
}

// Fixed-point registers in every mode letter combination: the quantised
// value, the overflow flag and the register word.
void fixedPointRegisters(Digest& d) {
  Inputs in(0x629A292Bu);
  for (const char* mode : {"slr", "slz", "slt", "sor", "soz", "sot", "ulr", "uor", "ult", "slrm", "sorm", "sltm",
                           "slrc", "sorc", "sltc"}) {
    for (int wlen : {1, 8, 12, 31, 32}) {
      FixedPoint x(wlen, in.below(21) - 10, mode);
      for (int i = 0; i < 64; ++i) {
        x = (static_cast<double>(static_cast<int32_t>(in.next())) / 65536.0) * std::ldexp(1.0, in.below(20) - 10);
        d.addDouble(x.get_val());
        d.add(x.get_overflow() ? 1 : 0);
        d.add(static_cast<int32_t>(x.get_unsigned_word(-1)));
      }
    }
  }
}

const struct {
  const char* name;
  void (*produce)(Digest&);
} kSections[] = {
    {"gf.tables", fieldTables},
    {"gf15.element_ops", fieldElementOps},
    {"gf.polynomial_ops", fieldPolynomialOps},
    {"tools.bit_utilities", bitUtilities},
    {"api.flash_blocks", flashBlocks},
    {"api.gaussian_channel", gaussianChannel},
    {"randgen.streams", generatorStreams},
    {"bch.codec", bchCodec},
    {"rsecc.codec", reedSolomonCodec},
    {"tools.line_codes", lineCodes},
    {"tools.fixed_point", fixedPointRegisters},
};

}  // namespace

int main() {
  for (const auto& s : kSections) {
    Digest d;
    s.produce(d);
    std::printf("%s %llu %016llx\n", s.name, static_cast<unsigned long long>(d.count()),
                static_cast<unsigned long long>(d.hash()));
  }
  return 0;
}
