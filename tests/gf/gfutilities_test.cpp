// Free field utilities (ascending coefficient order) and bit/symbol streams.
#include <random>
#include <vector>

#include "gf/gfutilities.h"
#include "support/fields.h"
#include "support/testutil.h"

namespace {

using V = std::vector<int>;

class GfUtil : public ::testing::Test {
 protected:
  std::unique_ptr<GF2m> fp = qfbtest::fieldFromMask(0x13);
  GF2m& f = *fp;
  const int Z = 15;
};

TEST_F(GfUtil, WorkedValues) {
  const int onePlusX[] = {0, 0}, a[] = {0, 1}, longer[] = {2, 3, 4, 5};
  EXPECT_EQ(evaluatePoly(&f, onePlusX, 1, 4), 1);
  int sum[4], degSum = 7;
  polyAdd(&f, a, 1, a, 1, sum, degSum);
  EXPECT_EQ(degSum, -1);
  polyAdd(&f, a, 1, longer, 3, sum, degSum);
  EXPECT_EQ(degSum, 3);
  EXPECT_EQ(V(sum, sum + 4), (V{f.add(0, 2), f.add(1, 3), 4, 5}));
  // (1 + x)(1 + x + x^3) = 1 + x^2 + x^3 + x^4 over GF(2)
  const int b1[] = {1, 1}, b2[] = {1, 1, 0, 1};
  int prod[5] = {7, 7, 7, 7, 7};  // every entry is written
  polyMultGF2(b1, 1, b2, 3, prod);
  EXPECT_EQ(V(prod, prod + 5), (V{1, 0, 1, 1, 1}));
}

TEST_F(GfUtil, DivisionEdgeCases) {
  const int a[] = {3, 7, 11}, c[] = {2}, big[] = {1, 2, 3, 4};
  // A constant divisor only scales: quot = a / alpha^2, rem untouched.
  int quot[3], rem[3] = {-5}, degQ = 0, degR = 0;
  longDivision(&f, a, 2, c, 0, quot, degQ, rem, degR);
  EXPECT_EQ(V(quot, quot + 3), (V{1, 5, 9}));
  EXPECT_EQ(std::make_pair(degQ, degR), std::make_pair(2, -1));
  EXPECT_EQ(rem[0], -5);
  // A divisor of higher degree leaves the dividend as remainder.
  longDivision(&f, a, 2, big, 3, quot, degQ, rem, degR);
  EXPECT_EQ(degR, 2);
  EXPECT_LT(degQ, 0);
  EXPECT_EQ(V(rem, rem + 3), (V{3, 7, 11}));
}

// a == q * b + r with trimmed degrees, both division versions agree, the
// product agrees pointwise with the product of the evaluations, and the
// free and member products coincide (convolution is order-blind).
TEST_F(GfUtil, DivisionAndProductAgainstEvaluation) {
  std::mt19937 rng(11);
  std::uniform_int_distribution<int> element(0, 15), degree(0, 8);
  for (int trial = 0; trial < 500; ++trial) {
    const int degB = degree(rng), degA = degB + degree(rng);
    V a(degA + 1), b(degB + 1), q1(degA + 1), r1(degB + 1), q2(degA + 1), r2(degB + 1), qb(degA + 1, Z);
    for (int& v : a) v = element(rng);
    for (int& v : b) v = element(rng);
    b[degB] = element(rng) % 15;
    int dq1, dr1, dq2, dr2;
    longDivision(&f, a.data(), degA, b.data(), degB, q1.data(), dq1, r1.data(), dr1);
    longDivisionOld(&f, a.data(), degA, b.data(), degB, q2.data(), dq2, r2.data(), dr2);
    ASSERT_EQ(std::make_pair(dq1, dr1), std::make_pair(dq2, dr2));
    ASSERT_EQ(V(q1.begin(), q1.begin() + dq1 + 1), V(q2.begin(), q2.begin() + dq2 + 1));
    ASSERT_EQ(V(r1.begin(), r1.begin() + dr1 + 1), V(r2.begin(), r2.begin() + dr2 + 1));
    if (dq1 >= 0) polyMult(&f, q1.data(), dq1, b.data(), degB, qb.data());
    for (int i = 0; i <= dr1; ++i) qb[i] = f.add(qb[i], r1[i]);
    ASSERT_EQ(qb, a) << "trial " << trial;
    V ab(degA + degB + 1), lead(degA + degB + 1);
    polyMult(&f, a.data(), degA, b.data(), degB, ab.data());
    f.polyMult(a.data(), degA, b.data(), degB, lead.data(), degA + degB);
    ASSERT_EQ(ab, lead);
    for (int x = 0; x < 16; ++x)
      ASSERT_EQ(evaluatePoly(&f, ab.data(), degA + degB, x),
                f.multiply(evaluatePoly(&f, a.data(), degA, x), evaluatePoly(&f, b.data(), degB, x)));
  }
}

TEST_F(GfUtil, BitAndSymbolStreams) {
  int bits[4];
  const int zero[] = {15}, one[] = {0};
  symbolStream2bitStream(&f, zero, 1, bits, 4);
  EXPECT_EQ(V(bits, bits + 4), (V{0, 0, 0, 0}));
  symbolStream2bitStream(&f, one, 1, bits, 4);
  EXPECT_EQ(V(bits, bits + 4), (V{0, 0, 0, 1}));
  std::mt19937 rng(1);
  V in(40), symbols(10), out(40);
  for (int& v : in) v = int(rng() & 1);
  bitStream2symbolStream(&f, in.data(), 40, symbols.data(), 10);
  symbolStream2bitStream(&f, symbols.data(), 10, out.data(), 40);
  EXPECT_EQ(in, out);
  // MSB first: bits 1,0,1,1 are the integer 11 = alpha^7.
  EXPECT_EQ(symbols[0], f.int2Exp(in[0] * 8 + in[1] * 4 + in[2] * 2 + in[3]));
  // A short last group is read as an n-bit number; values above 0 count as 1.
  const int tail[] = {0, 0, 0, 0, 5, 1};
  int s[2];
  bitStream2symbolStream(&f, tail, 6, s, 2);
  EXPECT_EQ(s[1], f.int2Exp(3));
}

}  // namespace
