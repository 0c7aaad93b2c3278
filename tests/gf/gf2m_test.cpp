// Field construction and element arithmetic of GF2m, checked against an
// independent carry-less multiplication modulo p(x).
#include <fstream>
#include <memory>
#include <utility>
#include <vector>

#include "gf/exp2Int15.h"
#include "gf/gf2m.h"
#include "support/fields.h"
#include "support/testutil.h"

namespace {

using namespace qfbtest;
const int kP4[] = {1, 0, 0, 1, 1};  // x^4 + x + 1

// a * b mod p(x) on polynomial-basis integers, shift and add.
int clmulMod(int a, int b, int m, unsigned pMask) {
  int r = 0;
  for (int bit = m - 1; bit >= 0; --bit) {
    r <<= 1;
    if (r >> m) r ^= static_cast<int>(pMask);
    if ((b >> bit) & 1) r ^= a;
  }
  return r;
}

void writeTable(const char* name, const std::vector<int>& v) {
  std::ofstream out(name);
  for (int x : v) out << x << "\n";
}

TEST(GF2m, Gf16WorkedValues) {
  // The tables, sums and products are checked below; these are the conventions at zero.
  GF2m f(4, kP4, 4, static_cast<const char*>(nullptr));
  struct Case { char op; int a, b, expected; };  // power, inverse, negation
  const Case cases[] = {{'p', 3, 2, 6}, {'p', 10, 2, 5}, {'p', 15, 0, 0}, {'p', 15, 5, 15}, {'p', 7, 0, 0},
                        {'i', 0, 0, 0}, {'i', 15, 0, 0}, {'i', 4, 0, 11}, {'n', 9, 0, 9}};
  for (const Case& c : cases) {
    const int got = c.op == 'p' ? f.power(c.a, c.b) : c.op == 'i' ? f.multInverse(c.a) : f.additiveInverse(c.a);
    EXPECT_EQ(got, c.expected) << c.op << "(" << c.a << ", " << c.b << ")";
  }
}

// For every field listed: every product and sum agrees with polynomial
// arithmetic modulo p(x) done from scratch, alpha is x (so alpha^i is the
// remainder of x^i, also through findRemainderGF2), and the table written to
// a file and read back gives the same field.
TEST(GF2m, ArithmeticMatchesPolynomialArithmetic) {
  qfbtest::ScratchDir dir;
  for (unsigned pMask : {0x7u, 0xbu, 0x13u, 0x25u, 0x43u, 0x11du}) {
    const std::vector<int> p = leadingFirst(pMask);
    const int m = int(p.size()) - 1;
    auto f = fieldFromMask(pMask);
    const int q = f->getN();
    ASSERT_EQ(f->exp2Int(1), 2) << "m=" << m;
    for (int a = 0; a < q; ++a) {
      for (int b = 0; b < q; ++b) {
        ASSERT_EQ(f->exp2Int(f->multiply(a, b)), clmulMod(f->exp2Int(a), f->exp2Int(b), m, pMask))
            << "m=" << m << " a=" << a << " b=" << b;
        ASSERT_EQ(f->exp2Int(f->add(a, b)), f->exp2Int(a) ^ f->exp2Int(b));
      }
      ASSERT_EQ(f->int2Exp(f->exp2Int(a)), a);
    }
    std::vector<int> work(q - 1), rem(m);
    for (int i = 0; i < q - 1; ++i) {
      std::fill(work.begin(), work.end(), 0);
      work[q - 2 - i] = 1;
      f->findRemainderGF2(work.data(), q - 1, p.data(), m, rem.data());
      int value = 0;
      for (int j = 0; j < m; ++j) value |= rem[j] << (m - 1 - j);
      ASSERT_EQ(f->exp2Int(i), value) << "m=" << m << " i=" << i;
    }
    writeTable("table.txt", exp2Table(*f));
    GF2m fromFile(m, p.data(), m, "table.txt");
    EXPECT_EQ(exp2Table(fromFile), exp2Table(*f)) << "m=" << m;
    EXPECT_EQ(int2Table(fromFile), int2Table(*f)) << "m=" << m;
  }
}

TEST(GF2m, Gf32768FromEverySourceIsTheSameField) {
  qfbtest::ScratchDir dir;
  const std::vector<int> p = leadingFirst((1u << 15) | 3u);
  writeTable("exp2Int15.txt", std::vector<int>(exp2Int15.begin(), exp2Int15.end()));
  GF2m computed(15, p.data(), 15, static_cast<const char*>(nullptr));
  GF2m fromFile(15, p.data(), 15, "exp2Int15.txt");
  GF2m fromMemory(15, p.data(), 15, exp2Int15.data(), kExp2Int15Size);
  GF2m missingFile(15, p.data(), 15, "no-such-table.txt");
  EXPECT_EQ(exp2Table(computed), std::vector<int>(exp2Int15.begin(), exp2Int15.end()));
  for (GF2m* other : {&fromFile, &fromMemory, &missingFile}) {
    EXPECT_EQ(exp2Table(*other), exp2Table(computed));
    EXPECT_EQ(int2Table(*other), int2Table(computed));
  }
}

// A damaged table file never drives the field out of its tables: values that
// cannot be read or lie outside 0..q-1 become 0, and nothing is printed.
TEST(GF2m, DamagedTableFilesStayInBounds) {
  qfbtest::ScratchDir dir;
  const struct { const char* name; std::string text; std::vector<int> expectedExp2; } cases[] = {
      {"short", "1 2 4\n", {1, 2, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
      {"empty", "", std::vector<int>(16, 0)},
      {"garbage", "1 2 x 8\n", {1, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
      {"range", "1 -2 99999999999 16 15 6 12 11 5 10 7 14 3 13 9\n",
       {1, 0, 0, 0, 15, 6, 12, 11, 5, 10, 7, 14, 3, 13, 9, 0}},
  };
  for (const auto& c : cases) {
    qfbtest::writeFile("bad.txt", c.text);
    testing::internal::CaptureStdout();
    GF2m f(4, kP4, 4, "bad.txt");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << c.name;
    EXPECT_EQ(exp2Table(f), c.expectedExp2) << c.name;
    for (int ab = 0; ab < 256; ++ab) ASSERT_TRUE(f.add(ab / 16, ab % 16) >= 0 && f.add(ab / 16, ab % 16) < 16);
  }
}

TEST(GF2m, OneBitFieldIsExemptFromTheParityTest) {
  auto f = fieldFromMask(0x3);
  EXPECT_EQ(f->getN(), 2);
  EXPECT_EQ(f->exp2Int(0), 1);
  EXPECT_EQ(f->add(0, 0), 1);
}

TEST(GF2mDeath, DefiningPolynomialChecks) {
  const int notMonic[] = {0, 1, 0, 1, 1}, even[] = {1, 1, 0, 0, 0}, notMonicEven[] = {0, 1, 0, 0, 1};
  const int p16[17] = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1};  // degree 16: 17 coefficients
  const char* none = nullptr;
  EXPECT_EXIT_PRINTS(GF2m(4, kP4, 3, none), 255, "Polynomial p(x) does not generate GF(2^4)\nExiting, ...\n");
  EXPECT_EXIT_PRINTS(GF2m(15, p16, 16, none), 255, "Polynomial p(x) does not generate GF(2^15)\nExiting, ...\n");
  EXPECT_EXIT_PRINTS(GF2m(4, notMonic, 4, none), 255, "Polynomial p(x) is not monic\nExiting, ...\n");
  EXPECT_EXIT_PRINTS(GF2m(4, even, 4, none), 255, "Polynomial p(x) is not prime\nExiting, ...\n");
  // The checks run in order: a polynomial failing two reports the first.
  EXPECT_EXIT_PRINTS(GF2m(4, notMonicEven, 4, none), 255, "Polynomial p(x) is not monic\nExiting, ...\n");
}

TEST(GF2m, CloneIsDeepAndOutlivesItsSource) {
  auto source = fieldFromMask(0x13);
  const std::vector<int> exp2 = exp2Table(*source), int2 = int2Table(*source);
  std::unique_ptr<GF> copy(source->clone());
  source.reset();
  EXPECT_EQ(exp2Table(*copy), exp2);
  EXPECT_EQ(int2Table(*copy), int2);
  std::vector<int> pp(5);
  copy->getPP(pp.data(), 4);
  EXPECT_EQ(pp, std::vector<int>(kP4, kP4 + 5));
  EXPECT_EQ(copy->multiply(14, 14), 13);
}

TEST(GF2m, FindPrim2to10MatchesThePrimitivityOfEachCandidate) {
  for (unsigned pMask : {0x7u, 0xbu}) {
    auto f = fieldFromMask(pMask);
    const int n1 = f->getN() - 1;
    int out[3] = {-1, -1, -1};
    f->findPrim2to10(out);
    ASSERT_EQ(out[0], 0);
    EXPECT_EQ(f->irreducible(out, 2), 1);
    EXPECT_EQ(f->primitive(out, 2), 1);
    // No earlier candidate in the search order passes both tests.
    for (int index = 0; index < out[1] * n1 + out[2]; ++index) {
      int c[3] = {0, index / n1, index % n1};
      EXPECT_FALSE(f->irreducible(c, 2) && f->primitive(c, 2)) << c[1] << "," << c[2];
    }
  }
}

}  // namespace
