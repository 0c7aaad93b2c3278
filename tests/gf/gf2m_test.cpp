// Field construction and element arithmetic of GF2m, checked against an
// independent carry-less multiplication modulo p(x).
#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "gf/exp2Int15.h"
#include "gf/gf2m.h"
#include "support/testutil.h"

namespace {

const int kP4[] = {1, 0, 0, 1, 1};  // x^4 + x + 1

std::vector<int> leadingFirst(int m, unsigned mask) {  // bit j of mask = coefficient of x^j
  std::vector<int> p(m + 1);
  for (int j = 0; j <= m; ++j) p[m - j] = (mask >> j) & 1;
  return p;
}

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

std::vector<int> exp2Table(GF& f) {
  std::vector<int> t(f.getN());
  f.getExp2IntConversionTable(t.data(), f.getN());
  return t;
}
std::vector<int> int2Table(GF& f) {
  std::vector<int> t(f.getN());
  f.getInt2ExpConversionTable(t.data(), f.getN());
  return t;
}

void writeTable(const char* name, const int* v, int count) {
  std::ofstream out(name);
  for (int i = 0; i < count; ++i) out << v[i] << "\n";
}

TEST(GF2m, Gf16TablesAndConstants) {
  GF2m f(4, kP4, 4, static_cast<const char*>(nullptr));
  EXPECT_EQ(exp2Table(f), (std::vector<int>{1, 2, 4, 8, 3, 6, 12, 11, 5, 10, 7, 14, 15, 13, 9, 0}));
  EXPECT_EQ(f.int2Exp(0), 15);
  EXPECT_EQ(f.int2Exp(1), 0);
  EXPECT_EQ(f.int2Exp(3), 4);
  EXPECT_EQ(f.getN(), 16);
  EXPECT_EQ(f.getZero(), 15);
  EXPECT_EQ(f.getOne(), 0);
}

TEST(GF2m, Gf16ElementOperations) {
  GF2m f(4, kP4, 4, static_cast<const char*>(nullptr));
  struct Case { const char* op; int a, b, expected; };
  const Case cases[] = {
      {"add", 0, 1, 4},        {"add", 7, 7, 15},      {"add", 3, 15, 3},     {"multiply", 14, 14, 13},
      {"multiply", 15, 3, 15}, {"multiply", 3, 15, 15}, {"power", 3, 2, 6},    {"power", 10, 2, 5},
      {"power", 15, 0, 0},     {"power", 15, 5, 15},    {"power", 7, 0, 0},    {"inverse", 0, 0, 0},
      {"inverse", 15, 0, 0},   {"inverse", 4, 0, 11},   {"additive", 9, 0, 9},
  };
  for (const Case& c : cases) {
    const std::string op = c.op;
    const int got = op == "add"        ? f.add(c.a, c.b)
                    : op == "multiply" ? f.multiply(c.a, c.b)
                    : op == "power"    ? f.power(c.a, c.b)
                    : op == "inverse"  ? f.multInverse(c.a)
                                       : f.additiveInverse(c.a);
    EXPECT_EQ(got, c.expected) << op << "(" << c.a << ", " << c.b << ")";
  }
}

// Every product and sum of every field listed agrees with polynomial
// arithmetic modulo p(x) done from scratch.
TEST(GF2m, ArithmeticMatchesPolynomialArithmetic) {
  const struct { int m; unsigned pMask; } fields[] = {{2, 0x7}, {3, 0xb}, {4, 0x13}, {5, 0x25}, {8, 0x11d}};
  for (const auto& fd : fields) {
    const std::vector<int> p = leadingFirst(fd.m, fd.pMask);
    GF2m f(fd.m, p.data(), fd.m, static_cast<const char*>(nullptr));
    const int q = f.getN();
    for (int a = 0; a < q; ++a) {
      for (int b = 0; b < q; ++b) {
        ASSERT_EQ(f.exp2Int(f.multiply(a, b)), clmulMod(f.exp2Int(a), f.exp2Int(b), fd.m, fd.pMask))
            << "m=" << fd.m << " a=" << a << " b=" << b;
        ASSERT_EQ(f.exp2Int(f.add(a, b)), f.exp2Int(a) ^ f.exp2Int(b));
      }
      ASSERT_EQ(f.int2Exp(f.exp2Int(a)), a);
    }
  }
}

// The incremental computation of the powers equals the remainder of x^i by
// p(x), which is how the table is defined.
TEST(GF2m, ComputedPowersAreRemaindersOfXToTheI) {
  for (unsigned pMask : {0x13u, 0x25u, 0x43u, 0x11du}) {
    int m = 0;
    while ((pMask >> (m + 1)) != 0) ++m;
    const std::vector<int> p = leadingFirst(m, pMask);
    GF2m f(m, p.data(), m, static_cast<const char*>(nullptr));
    const int q = f.getN();
    std::vector<int> work(q - 1), rem(m);
    for (int i = 0; i < q - 1; ++i) {
      std::fill(work.begin(), work.end(), 0);
      work[q - 2 - i] = 1;
      f.findRemainderGF2(work.data(), q - 1, p.data(), m, rem.data());
      int value = 0;
      for (int j = 0; j < m; ++j) value |= rem[j] << (m - 1 - j);
      ASSERT_EQ(f.exp2Int(i), value) << "m=" << m << " i=" << i;
    }
  }
}

TEST(GF2m, Gf32768FromEverySourceIsTheSameField) {
  qfbtest::ScratchDir dir;
  const std::vector<int> p = leadingFirst(15, (1u << 15) | 3u);
  writeTable("exp2Int15.txt", exp2Int15.data(), kExp2Int15Size);
  GF2m computed(15, p.data(), 15, static_cast<const char*>(nullptr));
  GF2m fromFile(15, p.data(), 15, "exp2Int15.txt");
  GF2m fromMemory(15, p.data(), 15, exp2Int15.data(), kExp2Int15Size);
  GF2m missingFile(15, p.data(), 15, "no-such-table.txt");
  EXPECT_EQ(computed.getZero(), 32767);
  EXPECT_EQ(computed.getN(), 32768);
  EXPECT_EQ(computed.int2Exp(0), 32767);
  EXPECT_EQ(exp2Table(computed), std::vector<int>(exp2Int15.begin(), exp2Int15.end()));
  for (GF2m* other : {&fromFile, &fromMemory, &missingFile}) {
    EXPECT_EQ(exp2Table(*other), exp2Table(computed));
    EXPECT_EQ(int2Table(*other), int2Table(computed));
  }
}

TEST(GF2m, SmallFieldsFromFileEqualComputed) {
  qfbtest::ScratchDir dir;
  for (unsigned pMask : {0x7u, 0xbu, 0x13u, 0x25u, 0x11du}) {
    int m = 0;
    while ((pMask >> (m + 1)) != 0) ++m;
    const std::vector<int> p = leadingFirst(m, pMask);
    GF2m computed(m, p.data(), m, static_cast<const char*>(nullptr));
    const std::vector<int> table = exp2Table(computed);
    writeTable("table.txt", table.data(), static_cast<int>(table.size()));
    GF2m fromFile(m, p.data(), m, "table.txt");
    EXPECT_EQ(exp2Table(fromFile), table) << "m=" << m;
    EXPECT_EQ(int2Table(fromFile), int2Table(computed)) << "m=" << m;
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
    for (int a = 0; a < 16; ++a)
      for (int b = 0; b < 16; ++b) {
        const int s = f.add(a, b);
        ASSERT_TRUE(s >= 0 && s < 16) << c.name;
      }
  }
}

TEST(GF2m, OneBitFieldIsExemptFromTheParityTest) {
  const int p[] = {1, 1};
  GF2m f(1, p, 1, static_cast<const char*>(nullptr));
  EXPECT_EQ(f.getN(), 2);
  EXPECT_EQ(f.exp2Int(0), 1);
  EXPECT_EQ(f.add(0, 0), 1);
}

TEST(GF2mDeath, DefiningPolynomialChecks) {
  const int notMonic[] = {0, 1, 0, 1, 1};
  const int even[] = {1, 1, 0, 0, 0};
  const int p16[17] = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1};  // degree 16: 17 coefficients
  EXPECT_EXIT_PRINTS(GF2m(4, kP4, 3, static_cast<const char*>(nullptr)), 255,
                     "Polynomial p(x) does not generate GF(2^4)\nExiting, ...\n");
  EXPECT_EXIT_PRINTS(GF2m(15, p16, 16, static_cast<const char*>(nullptr)), 255,
                     "Polynomial p(x) does not generate GF(2^15)\nExiting, ...\n");
  EXPECT_EXIT_PRINTS(GF2m(4, notMonic, 4, static_cast<const char*>(nullptr)), 255,
                     "Polynomial p(x) is not monic\nExiting, ...\n");
  EXPECT_EXIT_PRINTS(GF2m(4, even, 4, static_cast<const char*>(nullptr)), 255,
                     "Polynomial p(x) is not prime\nExiting, ...\n");
  // The checks run in order: a polynomial failing two reports the first.
  const int notMonicEven[] = {0, 1, 0, 0, 1};
  EXPECT_EXIT_PRINTS(GF2m(4, notMonicEven, 4, static_cast<const char*>(nullptr)), 255,
                     "Polynomial p(x) is not monic\nExiting, ...\n");
}

TEST(GF2m, CloneIsDeepAndOutlivesItsSource) {
  auto source = std::make_unique<GF2m>(4, kP4, 4, static_cast<const char*>(nullptr));
  const std::vector<int> exp2 = exp2Table(*source), int2 = int2Table(*source);
  std::vector<int> pp(5);
  source->getPP(pp.data(), 4);
  std::unique_ptr<GF> copy(source->clone());
  source.reset();
  EXPECT_EQ(exp2Table(*copy), exp2);
  EXPECT_EQ(int2Table(*copy), int2);
  std::vector<int> copyPP(5);
  copy->getPP(copyPP.data(), 4);
  EXPECT_EQ(copyPP, pp);
  EXPECT_EQ(copy->multiply(14, 14), 13);
  EXPECT_EQ(copy->add(0, 1), 4);
}

TEST(GF2m, FindPrim2to10MatchesThePrimitivityOfEachCandidate) {
  for (unsigned pMask : {0x7u, 0xbu}) {
    int m = 0;
    while ((pMask >> (m + 1)) != 0) ++m;
    const std::vector<int> p = leadingFirst(m, pMask);
    GF2m f(m, p.data(), m, static_cast<const char*>(nullptr));
    int out[3] = {-1, -1, -1};
    f.findPrim2to10(out);
    ASSERT_EQ(out[0], 0);
    EXPECT_EQ(f.irreducible(out, 2), 1);
    EXPECT_EQ(f.primitive(out, 2), 1);
    // No earlier candidate in the search order passes both tests.
    const int found = out[1] * (f.getN() - 1) + out[2];
    for (int index = 0; index < found; ++index) {
      int c[3] = {0, index / (f.getN() - 1), index % (f.getN() - 1)};
      EXPECT_FALSE(f.irreducible(c, 2) && f.primitive(c, 2)) << c[1] << "," << c[2];
    }
  }
}

}  // namespace
