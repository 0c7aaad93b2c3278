// Free field utilities (ascending coefficient order) and bit/symbol streams.
#include <random>
#include <vector>

#include "gf/gf2m.h"
#include "gf/gfutilities.h"
#include "support/testutil.h"

namespace {

const int kP4[] = {1, 0, 0, 1, 1};

class GfUtil : public ::testing::Test {
 protected:
  GF2m f{4, kP4, 4, static_cast<const char*>(nullptr)};
  const int Z = 15;
};

TEST_F(GfUtil, WorkedValues) {
  const int onePlusX[] = {0, 0};
  EXPECT_EQ(evaluatePoly(&f, onePlusX, 1, 4), 1);

  const int a[] = {0, 1};
  int sum[2];
  int degSum = 7;
  polyAdd(&f, a, 1, a, 1, sum, degSum);
  EXPECT_EQ(degSum, -1);
  const int longer[] = {2, 3, 4, 5};
  int sum2[4];
  polyAdd(&f, a, 1, longer, 3, sum2, degSum);
  EXPECT_EQ(degSum, 3);
  EXPECT_EQ(std::vector<int>(sum2, sum2 + 4), (std::vector<int>{f.add(0, 2), f.add(1, 3), 4, 5}));

  // (1 + x)(1 + x + x^3) = 1 + x^2 + x^3 + x^4 over GF(2)
  const int b1[] = {1, 1}, b2[] = {1, 1, 0, 1};
  int prod[5];
  polyMultGF2(b1, 1, b2, 3, prod);
  EXPECT_EQ(std::vector<int>(prod, prod + 5), (std::vector<int>{1, 0, 1, 1, 1}));
}

TEST_F(GfUtil, DivisionEdgeCases) {
  const int a[] = {3, 7, 11};
  // A constant divisor only scales: quot = a / alpha^2, rem untouched.
  const int c[] = {2};
  int quot[3], rem[1] = {-5};
  int degQ = 0, degR = 0;
  longDivision(&f, a, 2, c, 0, quot, degQ, rem, degR);
  EXPECT_EQ(std::vector<int>(quot, quot + 3), (std::vector<int>{1, 5, 9}));
  EXPECT_EQ(degQ, 2);
  EXPECT_EQ(degR, -1);
  EXPECT_EQ(rem[0], -5);
  // A divisor of higher degree leaves the dividend as remainder.
  const int big[] = {1, 2, 3, 4};
  int quot2[1], rem2[3];
  longDivision(&f, a, 2, big, 3, quot2, degQ, rem2, degR);
  EXPECT_EQ(degR, 2);
  EXPECT_LT(degQ, 0);
  EXPECT_EQ(std::vector<int>(rem2, rem2 + 3), (std::vector<int>{3, 7, 11}));
}

TEST_F(GfUtil, LongDivisionRecomposesAndMatchesTheOldVersion) {
  std::mt19937 rng(11);
  std::uniform_int_distribution<int> element(0, 15), nonZero(0, 14), degree(0, 8);
  for (int trial = 0; trial < 500; ++trial) {
    const int degB = degree(rng), degA = degB + degree(rng);
    std::vector<int> a(degA + 1), b(degB + 1);
    for (int& v : a) v = element(rng);
    for (int& v : b) v = element(rng);
    b[degB] = nonZero(rng);
    std::vector<int> q1(degA + 1), r1(degB + 1), q2(degA + 1), r2(degB + 1);
    int dq1, dr1, dq2, dr2;
    longDivision(&f, a.data(), degA, b.data(), degB, q1.data(), dq1, r1.data(), dr1);
    longDivisionOld(&f, a.data(), degA, b.data(), degB, q2.data(), dq2, r2.data(), dr2);
    ASSERT_EQ(dq1, dq2);
    ASSERT_EQ(dr1, dr2);
    ASSERT_EQ(std::vector<int>(q1.begin(), q1.begin() + dq1 + 1), std::vector<int>(q2.begin(), q2.begin() + dq2 + 1));
    ASSERT_EQ(std::vector<int>(r1.begin(), r1.begin() + dr1 + 1), std::vector<int>(r2.begin(), r2.begin() + dr2 + 1));
    // a == q * b + r, with the trimmed degrees.
    std::vector<int> qb(degA + 1, Z);
    if (dq1 >= 0) polyMult(&f, q1.data(), dq1, b.data(), degB, qb.data());
    for (int i = 0; i <= dr1; ++i) qb[i] = f.add(qb[i], r1[i]);
    ASSERT_EQ(qb, a) << "trial " << trial;
  }
}

TEST_F(GfUtil, PolyMultAgreesWithMemberOrder) {
  std::mt19937 rng(5);
  std::uniform_int_distribution<int> element(0, 15);
  std::vector<int> a(6), b(4), asc(10), lead(10);
  for (int trial = 0; trial < 50; ++trial) {
    for (int& v : a) v = element(rng);
    for (int& v : b) v = element(rng);
    polyMult(&f, a.data(), 5, b.data(), 3, asc.data());
    f.polyMult(a.data(), 5, b.data(), 3, lead.data(), 8);  // convolution is order-blind
    ASSERT_EQ(std::vector<int>(asc.begin(), asc.begin() + 9), std::vector<int>(lead.begin(), lead.begin() + 9));
    for (int x = 0; x < 16; ++x)
      ASSERT_EQ(evaluatePoly(&f, asc.data(), 8, x),
                f.multiply(evaluatePoly(&f, a.data(), 5, x), evaluatePoly(&f, b.data(), 3, x)));
  }
}

TEST_F(GfUtil, BitAndSymbolStreams) {
  int bits[4];
  const int zero[] = {15}, one[] = {0};
  symbolStream2bitStream(&f, zero, 1, bits, 4);
  EXPECT_EQ(std::vector<int>(bits, bits + 4), (std::vector<int>{0, 0, 0, 0}));
  symbolStream2bitStream(&f, one, 1, bits, 4);
  EXPECT_EQ(std::vector<int>(bits, bits + 4), (std::vector<int>{0, 0, 0, 1}));

  std::mt19937 rng(1);
  std::vector<int> in(40), symbols(10), out(40);
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
