// Code construction: root set sizes, the generator polynomial, lengths.
#include "bch_testutil.h"

namespace {

using bchtest::Probe;

// g is monic of degree r with binary coefficients; if it also vanishes at
// the 2t designed roots (and their conjugates, implied), it is divisible by
// their minimal polynomials, whose product has degree r: g is that product.
void expectGenerator(GF& f, Probe& code, int t, int b) {
  const std::vector<int> g = code.generator();
  EXPECT_EQ(g.front(), 1);
  EXPECT_EQ(g.back(), 1);
  for (int e = b; e < b + 2 * t; ++e) EXPECT_EQ(bchtest::evaluateBits(f, g, e), f.getZero()) << "root " << e;
}

TEST(BchConstruction, SmallFieldCodes) {
  struct Case { int t, b, k; std::vector<int> g; };
  const Case cases[] = {
      {1, 1, 11, {1, 1, 0, 0, 1}},                // x^4 + x + 1
      {2, 1, 7, {1, 0, 0, 0, 1, 0, 1, 1, 1}},     // x^8 + x^7 + x^6 + x^4 + 1
      {3, 1, 5, {}},
      {1, 0, 10, {1, 0, 1, 0, 1, 1}},             // (x + 1)(x^4 + x + 1)
  };
  for (const Case& c : cases) {
    Probe code(&bchtest::gf16(), 15, c.t, c.b, 0);
    EXPECT_EQ(code.k, c.k);
    expectGenerator(bchtest::gf16(), code, c.t, c.b);
    if (!c.g.empty()) {
      EXPECT_EQ(code.generator(), c.g);
    }
  }
}

TEST(BchConstruction, ParityLengthsOverGF32768) {
  GF2m& f = bchtest::gf32768();
  for (int t = 1; t <= 130; ++t) {
    Probe code(&f, 99, t, 1, 1001);
    const int r = t <= 128 ? 15 * t : (t == 129 ? 1920 : 1935);
    ASSERT_EQ(code.n - code.k, r) << "t = " << t;
    if (t == 1 || t == 8 || t == 41 || t == 129) expectGenerator(f, code, t, 1);
  }
  Probe evenParity(&f, 0, 1, 0, 100);
  EXPECT_EQ(evenParity.n - evenParity.k, 16);
  expectGenerator(f, evenParity, 1, 0);
}

}  // namespace
