// The library's BCH against the plain reference, member by member, on
// random codes over GF(2^15) and on every code of GF(16): generator, both
// encoders, syndromes with the parity member, codeword test, Berlekamp-
// Massey, Chien search, the three decoders, for clean words, 1..t+5 errors,
// random words and words holding entries other than 0 and 1.
#include <type_traits>

#include "bch/bchEngine.h"
#include "bch_testutil.h"
#include "support/differential.h"
#include "support/referenceBch.h"

namespace {

using bchtest::Probe;
using bchtest::randomBits;
using bchtest::withErrors;
using V = std::vector<int>;

struct Pair {
  Pair(GF* f, int n, int t, int b, int k, const BCH* sibling) : fast(f, n, t, b, k, sibling), ref(f, n, t, b, k) {}
  Probe fast;
  ReferenceBCH ref;
};

// Runs call(codec, buffer) on both codecs, each with its own copy of init;
// expects equal results and buffers, and returns the reference's buffer.
template <class Fast, class Ref, class Call>
V same(Fast& fast, Ref& ref, const V& init, Call call) {
  V a(init), b(init);
  if constexpr (std::is_void_v<decltype(call(ref, b.data()))>) {
    call(fast, a.data());
    call(ref, b.data());
  } else {
    EXPECT_EQ(call(fast, a.data()), call(ref, b.data()));
  }
  EXPECT_EQ(a, b);
  return b;
}

// Fails with a trace when any scratch member differs.
void expectSameState(Pair& p, const char* after) {
  SCOPED_TRACE(after);
  const int t = p.ref.t;
  EXPECT_EQ(p.fast.parity, p.ref.parity);
  EXPECT_TRUE(std::equal(p.ref.syndromes, p.ref.syndromes + 2 * t, p.fast.syndromes));
  EXPECT_TRUE(std::equal(p.ref.lambda, p.ref.lambda + 2 * t + 1, p.fast.lambda));
}

// A received word: a codeword with some errors, a random word, or one whose
// entries include values other than 0 and 1.
V receivedWord(std::mt19937& rng, Pair& p, int kind) {
  V cw(p.ref.n);
  p.ref.encode(randomBits(rng, p.ref.k).data(), cw.data());
  const int t = p.ref.t;
  if (kind <= 1) return kind == 0 ? cw : randomBits(rng, p.ref.n);
  const int counts[] = {
      1, std::max(t / 2, 1), t, t + 1, t + qfbtest::uniformInt(rng, 2, 5), qfbtest::uniformInt(rng, 0, t + 5)};
  V r = withErrors(rng, cw, counts[kind % 6]);
  if (kind == 8)
    for (int i = 0; i < 3; ++i) r[qfbtest::uniformInt(rng, 0, p.ref.n - 1)] = qfbtest::uniformInt(rng, -2, 3);
  return r;
}

// Every member that takes or returns a word, on the same input for both.
void compareOnWord(std::mt19937& rng, Pair& p, const V& in) {
  const int n = p.ref.n, t = p.ref.t;
  EXPECT_EQ(same(p.fast, p.ref, in, [](auto& c, int* w) { return c.isCodeword(w); }), in);
  expectSameState(p, "isCodeword");
  // Negative limits other than -1 correct nothing, like 0.
  for (int limit : {-1, qfbtest::uniformInt(rng, -2, t), t + 3}) {
    SCOPED_TRACE(::testing::Message() << "tLimit " << limit);
    same(p.fast, p.ref, V(n, -9), [&](auto& c, int* out) { return c.decodeBCH(V(in).data(), out, limit); });
    expectSameState(p, "decodeBCH");
    // Berlekamp-Massey and the Chien search on their own, fed the same
    // syndromes and a degree-order word.
    V lam = same(p.fast, p.ref, V(2 * t + 1, -9), [&](auto& c, int* out) { c.BMA(p.ref.syndromes, out, limit); });
    same(p.fast, p.ref, V(in.rbegin(), in.rend()), [&](auto& c, int* w) { return c.chienSearch(lam.data(), w); });
  }
  if (t <= 3) {
    for (int limit = p.ref.b == 1 ? -1 : 0; limit <= (p.ref.b == 1 ? t : 1); ++limit) {
      SCOPED_TRACE(::testing::Message() << "decodeForSmallT " << limit);
      same(p.fast, p.ref, V(n, -9), [&](auto& c, int* out) { return c.decodeForSmallT(V(in).data(), out, limit); });
      expectSameState(p, "decodeForSmallT");
    }
  }
}

// Locators built from chosen error degrees, some beyond the shortened code,
// some repeated, plus random polynomials: the acceptance rule of the search.
void compareChien(std::mt19937& rng, Pair& p, GF& f) {
  const int n = p.ref.n, t = p.ref.t;
  for (int trial = 0; trial < 4; ++trial) {
    V lambda(2 * t + 1, f.getZero());
    const int degree = qfbtest::uniformInt(rng, 0, t);
    if (trial == 3) {
      for (int j = 0; j <= degree; ++j) lambda[j] = qfbtest::uniformInt(rng, 0, f.getN() - 1);
    } else {
      lambda[0] = f.getOne();
      for (int e = 0; e < degree; ++e) {
        // Multiply by (1 + alpha^p x) in place, highest degree first.
        const int pos = trial == 1 && e == 0  ? qfbtest::uniformInt(rng, 0, f.getN() - 2)
                        : trial == 2 && e > 0 ? qfbtest::uniformInt(rng, 0, 3)
                                              : qfbtest::uniformInt(rng, 0, n - 1);
        for (int j = e + 1; j >= 1; --j) lambda[j] = f.add(lambda[j], f.multiply(lambda[j - 1], pos));
      }
    }
    SCOPED_TRACE(::testing::Message() << "trial " << trial << " degree " << degree);
    same(p.fast, p.ref, randomBits(rng, n), [&](auto& c, int* w) { return c.chienSearch(lambda.data(), w); });
  }
}

void compareCode(std::mt19937& rng, GF& f, int n, int t, int b, int k, int words, bool rsMode,
                 const BCH* sibling = nullptr) {
  SCOPED_TRACE(::testing::Message() << "m=" << f.getM() << " n=" << n << " t=" << t << " b=" << b << " k=" << k);
  Pair p(&f, n, t, b, k, sibling);
  // Every code here lies within the packed engine's range; the comparison
  // is about that engine.
  ASSERT_NE(p.fast.packedEngine(), nullptr);
  // ... and about the division kernel this machine dispatches to.
  const int r = p.ref.n - p.ref.k;
  ASSERT_EQ(p.fast.packedEngine()->sharedDivider()->kernelLevel(),
            ClmulRemainder::supports(defaultKernelLevel(), r) ? defaultKernelLevel() : KernelLevel::Scalar);
  ASSERT_EQ(p.fast.n, p.ref.n);
  ASSERT_EQ(p.fast.generator(), V(p.ref.genPoly, p.ref.genPoly + p.ref.n - p.ref.k + 1));
  expectSameState(p, "construction");
  for (int w = 0; w < words; ++w) {
    const V msg = randomBits(rng, p.ref.k);
    same(p.fast, p.ref, V(p.ref.n, -9), [&](auto& c, int* cw) { c.encode(V(msg).data(), cw); });
    same(p.fast, p.ref, V(p.ref.n - p.ref.k, -9), [&](auto& c, int* par) { c.encode_parity(V(msg).data(), par); });
    if (::testing::Test::HasFailure()) return;
    const V in = receivedWord(rng, p, w % 9);
    compareOnWord(rng, p, in);
    if (rsMode) {
      const int limit = qfbtest::uniformInt(rng, -1, t);
      same(p.fast, p.ref, V(p.ref.n), [&](auto& c, int* out) { return c.decode(V(in).data(), out, true, limit); });
      expectSameState(p, "decodeRS leaves the members alone");
    }
  }
  compareChien(rng, p, f);
}

TEST(BchDifferential, RandomCodesOverGF32768) {
  std::mt19937 rng(20261121);
  GF2m& f = bchtest::gf32768();
  const int rounds = qfbtest::differentialRounds(16);
  for (int round = 0; round < rounds; ++round) {
    const int t = round % 8 == 7 ? 1 : qfbtest::randomT(rng);
    const int b = round % 8 == 7 ? 0 : 1;
    const int kMax = 32767 - 15 * t - (b == 0 ? 1 : 0);
    // Long codes cost the reference n*2t steps; keep most of them short.
    const int k = qfbtest::logUniformInt(rng, 1, t > 48 ? std::min(kMax, 3000) : kMax);
    compareCode(rng, f, 0, t, b, k, 9, round % 6 == 0 && k < 2000);
    if (HasFailure()) return;
  }
}

// A code may borrow the length-independent tables of another; only a code
// with the same field, t and b may actually share them.
TEST(BchDifferential, CodesBuiltFromASibling) {
  std::mt19937 rng(8);
  Probe sibling(&bchtest::gf32768(), 0, 8, 1, 1000);
  for (const auto& [t, k] : {std::pair{8, 4000}, std::pair{8, 17}, std::pair{9, 1000}, std::pair{2, 300}})
    compareCode(rng, bchtest::gf32768(), 0, t, 1, k, 9, false, &sibling);
}

// GF(16): every full and some shortened codes. GF(2^8), x^8 + x^4 + x^3 +
// x^2 + 1: its reduction x^8 = x^4 + x^3 + x^2 + 1 has degree 4 (the codec's
// field reduces by x + 1), which the vector root test must fold in more rounds.
TEST(BchDifferential, CodesOverSmallFields) {
  std::mt19937 rng(16);
  struct Code { int m, n, t, b, k; };
  const Code codes[] = {{4, 15, 1, 1, 0}, {4, 15, 2, 1, 0}, {4, 15, 3, 1, 0}, {4, 15, 1, 0, 0},
                        {4, 0, 2, 1, 3},  {4, 0, 3, 1, 1},  {4, 0, 1, 1, 11}, {4, 0, 1, 0, 6},
                        {8, 0, 5, 1, 100}, {8, 0, 12, 1, 60}, {8, 255, 20, 1, 0}};
  for (const Code& c : codes) {
    const auto f = qfbtest::computedField(c.m);
    compareCode(rng, *f, c.n, c.t, c.b, c.k, 36, true);
  }
}

}  // namespace
