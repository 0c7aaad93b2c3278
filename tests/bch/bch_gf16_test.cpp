// Hand-checkable values of the (15, 7, t = 2) and (15, 5, t = 3) codes over
// GF(16), x^4 + x + 1: they pin the bit and exponent conventions (interface
// order, S_j = r(alpha^j)) that the differential test takes from the plain
// reference, and the decode(), read-back and early-stop paths it does not call.
#include "bch_testutil.h"

namespace {

using bchtest::Probe;
using bchtest::reversed;
using V = std::vector<int>;
constexpr int Z = 15;  // the zero element

V flipped(V word, const V& indices) {
  for (int i : indices) word[i] ^= 1;
  return word;
}
V degreesToWord(const V& degrees) {
  V w(15, 0);
  for (int d : degrees) w[14 - d] ^= 1;
  return w;
}

struct Gf16 : ::testing::Test {
  Probe t2{&bchtest::gf16(), 15, 2, 1, 0};
  Probe t3{&bchtest::gf16(), 15, 3, 1, 0};
  Probe even{&bchtest::gf16(), 15, 1, 0, 0};
  const V cw = {1, 1, 0, 0, 1, 0, 1, 1, 0, 1, 0, 1, 0, 1, 1};  // message 1,1,0,0,1,0,1
  V syndromes(BCH& c, int len) { V s(len); c.returnSyndromes(s.data(), len); return s; }
  V lambda(BCH& c, int len) { V l(len); c.returnLambda(l.data(), len); return l; }
};

TEST_F(Gf16, SystematicEncoding) {
  const std::pair<V, V> cases[] = {
      {{0, 0, 0, 0, 0, 0, 1}, {0, 0, 0, 0, 0, 0, 1, 1, 1, 0, 1, 0, 0, 0, 1}},
      {{1, 0, 0, 0, 0, 0, 0}, {1, 0, 0, 0, 0, 0, 0, 1, 1, 1, 0, 1, 0, 0, 0}},
      {{1, 1, 0, 0, 1, 0, 1}, cw},
  };
  for (const auto& [msg, expected] : cases) {
    V out(15, -1), parity(8, -1);
    t2.encode(V(msg).data(), out.data());
    t2.encode_parity(msg.data(), parity.data());
    EXPECT_EQ(out, expected);
    EXPECT_EQ(parity, V(expected.begin() + 7, expected.end()));
  }
}

TEST_F(Gf16, SyndromesAndParity) {
  for (int i = 0; i < 15; ++i) {
    V word = degreesToWord({i});
    EXPECT_FALSE(t2.isCodeword(word.data()));
    EXPECT_EQ(syndromes(t2, 4), (V{i, 2 * i % 15, 3 * i % 15, 4 * i % 15}));
  }
  // Any non-zero entry is a one bit for the syndromes, but the parity adds
  // values: a 2 in place of a one keeps S zero and still fails the word.
  V word = degreesToWord({0, 2, 4, 5});  // the generator (x + 1)(x^4 + x + 1)
  EXPECT_TRUE(even.isCodeword(word.data()));
  word[10] = 2;
  EXPECT_FALSE(even.isCodeword(word.data()));
  EXPECT_EQ(syndromes(even, 2), (V{Z, Z}));
  EXPECT_EQ(even.parity, 1);
  // A word longer than the field's order is checked by the plain syndrome
  // pass; with b = 1 odd weight is no fault: x^4 + x + 1 is a codeword.
  Probe longer(&bchtest::gf16(), 16, 1, 1, 0);
  V generator(16, 0);
  for (int d : {4, 1, 0}) generator[15 - d] = 1;
  EXPECT_TRUE(longer.isCodeword(generator.data()));
  EXPECT_EQ(longer.parity, 1);
}

TEST_F(Gf16, DecodeBCH) {
  struct Case { V flips; int tLimit; int result; V out; V lambda; };
  const Case cases[] = {
      {{11, 4}, -1, 1, cw, {0, 12, 13, Z, Z}},
      {{11, 4}, 7, 1, cw, {0, 12, 13, Z, Z}},  // above t acts as t
      {{}, -1, 1, cw, {Z, Z, Z, Z, Z}},  // a clean word reports the zero polynomial
      {{13, 12, 10}, -1, 0, flipped(cw, {13, 12, 10}), {0, 8, 7, Z, Z}},  // no roots
      {{14, 9, 4}, -1, 0, flipped(cw, {14, 9, 4}), {0, Z, Z, 0, Z}},      // S = Z,Z,0,Z: degree 3 > t
      {{11, 4}, 1, 1, flipped(cw, {11, 4, 2}), {0, 12, Z, Z, Z}},         // miscorrection
  };
  for (const Case& c : cases) {
    V in = flipped(cw, c.flips), out(15, -1);
    EXPECT_EQ(t2.decode(in.data(), out.data(), false, c.tLimit), c.result);
    EXPECT_EQ(out, c.out);
    EXPECT_EQ(lambda(t2, 5), c.lambda);
    EXPECT_EQ(in, flipped(cw, c.flips));
    for (int j = 0; j < 4; ++j)
      EXPECT_EQ(syndromes(t2, 4)[j], bchtest::evaluateBits(bchtest::gf16(), reversed(in), j + 1));
  }
}

// Words of the t = 2 code that are not t = 3 codewords give S1 = S3 = 0:
// both limits stop at once and leave out in degree order. A t = 1 codeword
// has S1 = 0, S3 != 0: no two-error locator, out back in interface order.
// b = 0: one error is located by r(alpha); two errors (even parity) stop
// early, unless the limit is 0.
TEST_F(Gf16, DecodeForSmallTEarlyStops) {
  const V g2 = {0, 0, 0, 0, 0, 0, 1, 1, 1, 0, 1, 0, 0, 0, 1}, m1 = degreesToWord({0, 1, 4});
  const V two = degreesToWord({7, 3});
  struct Early { BCH* code; V in; int tLimit, result; V out; };
  const Early early[] = {{&t3, g2, 2, 0, reversed(g2)},       {&t3, g2, 3, 0, reversed(g2)}, {&t2, m1, 2, 0, m1},
                         {&even, degreesToWord({7}), -1, 1, V(15, 0)}, {&even, two, 1, 0, reversed(two)},
                         {&even, two, 0, 1, two}, {&t3, degreesToWord({2, 7, 11}), -1, 1, V(15, 0)}};
  for (const Early& e : early) {
    V out(15, -1);
    EXPECT_EQ(e.code->decodeForSmallT(V(e.in).data(), out.data(), e.tLimit), e.result) << e.tLimit;
    EXPECT_EQ(out, e.out);
  }
}

}  // namespace
