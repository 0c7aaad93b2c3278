// Rate-12/13 and rate-30/31 run-length-limited codes.
#include <bitset>
#include <map>
#include <random>
#include <sstream>
#include <vector>

#include "Tools/code12_13_v2.h"
#include "Tools/code30_31nrz_v2.h"
#include "support/differential.h"
#include "support/testutil.h"

namespace {

using Bits = std::vector<int>;
using C = Code12_13_v2;

Bits bitsOf(int v, int n) {
  Bits b(n);
  for (int i = 0; i < n; ++i) b[i] = (v >> (n - 1 - i)) & 1;
  return b;
}

// Density and interleave rules on packed values (bit 8 of a 9-bit value is b0).
bool dense(int v, int firstFour) {
  return std::bitset<16>(v).count() >= 5 && (v & firstFour) && (v & 0x003) && (v & 0x154) && (v & 0x0AA);
}
// x = (p, c) as 13 bits; y[i] = x[i+2] ^ x[i] is x ^ (x >> 2).
bool goodFrom(int p, int c) {
  const int x = (p << 11) | c;
  return dense((x ^ (x >> 2)) & 0x7FF, 0x780);
}

// The route a 12-bit word must take, from the word alone (bit 11 is u0).
int expectedRoute(int w) {
  if ((w & 0xFF) <= 192) return C::ViaTable1;
  if (((w >> 4) & 0x1F) == 0x1F) return C::ViaTable3;
  return ((w >> 1) & 0xFF) == 0xF7 ? C::Escape : C::ViaTable2;
}

TEST(Rll1213, TablesFollowTheirRules) {
  Bits t1(256, -1), t2(128, -1), t3(32, -1);
  int n1 = 0, n2 = 0, n3 = 0;
  for (int v = 0; v < 512; ++v)
    if (dense(v, 0x180) && ++n1 <= 193) t1[n1 - 1] = v;
  for (int c = 0; c < 2048; ++c) {
    const bool g0 = goodFrom(0, c), g1 = goodFrom(1, c), g2 = goodFrom(2, c), g3 = goodFrom(3, c);
    if (!g0 && g1 && g2 && g3) t2[n2++] = c;
    if (g0 && !g1 && !g2 && !g3 && n3 < 32) t3[n3++] = c & 511;
  }
  EXPECT_EQ(std::make_pair(n1, n2), std::make_pair(197, 110));
  t2[0] = t2[64] = -1;
  C code;
  EXPECT_EQ(Bits(code.getTable1(), code.getTable1() + 256), t1);
  EXPECT_EQ(Bits(code.getTable2(), code.getTable2() + 128), t2);
  EXPECT_EQ(Bits(code.getTable3(), code.getTable3() + 32), t3);
}

TEST(Rll1213, EveryWordRoundTripsThroughItsRoute) {
  C code;
  std::map<int, int> routes;
  testing::internal::CaptureStdout();
  for (int w = 0; w < 4096; ++w) {
    Bits in = bitsOf(w, 12), cw(13), back(12);
    const int route = code.encode(in.data(), cw.data());
    ASSERT_EQ(route, expectedRoute(w)) << w;
    ASSERT_EQ(code.decode(cw.data(), back.data()), route) << w;
    ASSERT_EQ(back, in) << w;
    ASSERT_EQ(Bits(cw.begin(), cw.begin() + 2), Bits(in.begin(), in.begin() + 2));
    ++routes[route];
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(routes, (std::map<int, int>{{C::ViaTable1, 3088}, {C::ViaTable2, 864}, {C::ViaTable3, 128}, {C::Escape, 16}}));
}

// Table1 and escape codewords carry their pattern through 1/(1+D^2):
// (1+D^2) from zero delays on bits 2..12 exposes it in bits 4..12.
TEST(Rll1213, PrecodedRoutesExposeTheirPattern) {
  C code;
  const int cases[][2] = {{0x000, code.getTable1()[0]}, {0x5B3, code.getTable1()[0xB3]}, {0xBEF, 507}, {0x1EE, 507}};
  for (const auto& c : cases) {
    Bits in = bitsOf(c[0], 12), cw(13);
    code.encode(in.data(), cw.data());
    Bits y(9);
    for (int i = 4; i < 13; ++i) y[i - 4] = cw[i] ^ cw[i - 2];
    EXPECT_EQ(y, bitsOf(c[1], 9)) << c[0];
  }
}

TEST(Rll1213, UnplaceableCodewordsDecodeToZerosAndAreFlagged) {
  C code;
  for (int v = 0; v < 8192; ++v) {
    Bits cw = bitsOf(v, 13), out(12, 7), expected(12, 0);
    const bool isInvalid = code.decode(cw.data(), out.data()) == C::Invalid;
    int flag = -1;
    code.invalidCodewordFlag(cw.data(), flag);
    ASSERT_EQ(flag, isInvalid ? 1 : 0) << v;
    expected[0] = cw[0], expected[1] = cw[1];
    ASSERT_TRUE(!isInvalid || out == expected) << v;
    // The all-zero codeword has no dense pattern in any reading.
    ASSERT_TRUE(v != 0 || isInvalid);
  }
}

TEST(Rll1213, BitHelpers) {
  // dec2bin and bin2dec carry every word of the exhaustive tests above.
  int b[5] = {1, 0, 0, 1, 1};
  C::flip(b, 5);
  EXPECT_EQ(Bits(b, b + 5), (Bits{0, 1, 1, 0, 0}));
  C::flipInterleave(b, 5, 0);
  EXPECT_EQ(Bits(b, b + 5), (Bits{1, 1, 0, 0, 1}));
  C::flipInterleave(b, 5, 1);
  EXPECT_EQ(Bits(b, b + 5), (Bits{1, 0, 0, 1, 1}));

  const int table[] = {4, -1, 9, 9};
  EXPECT_EQ(C::lookup_word(9, table, 4), 2);
  EXPECT_EQ(C::lookup_word(9, table, 2), -1);
  EXPECT_EQ(C::lookup_codeword(bitsOf(4, 9).data(), table, 4), 0);
}

TEST(Rll1213, TableFileFormat) {
  qfbtest::ScratchDir dir;
  C code;
  code.table_write();
  std::ostringstream expected;
  const auto dump = [&](const char* name, const int* t, int n, const char* after) {
    expected << name << "\n";
    for (int i = 0; i < n; ++i) expected << i << "  " << std::bitset<9>(t[i] & 511) << "\n";
    expected << after;
  };
  dump("Table1", code.getTable1(), 256, "\n\n");
  dump("Table2", code.getTable2(), 128, "\n\n");
  dump("Table3", code.getTable3(), 32, "");
  EXPECT_EQ(qfbtest::readFile("table.txt"), expected.str());
}

class Rll3031 : public ::testing::Test {
 protected:
  Bits randomBits(int n) { return qfbtest::randomBits(rng, n); }
  // u0..u7 | 12/13 code of u8..u19 | u20..u(size-1)
  Bits expectedCodeword(Bits u) {
    Bits c(u.begin(), u.begin() + 8), middle(13);
    inner.encode(u.data() + 8, middle.data());
    c.insert(c.end(), middle.begin(), middle.end());
    c.insert(c.end(), u.begin() + 20, u.end());
    return c;
  }
  std::mt19937 rng{3031};
  Code30_31nrz_v2 code;
  C inner;
};

TEST_F(Rll3031, BlocksRoundTripWithTheStatedLayout) {
  const int blocks = 40;
  Bits in = randomBits(30 * blocks), cw(31 * blocks), back(30 * blocks);
  EXPECT_EQ(code.block_encode(in.data(), cw.data(), blocks, true), 31 * blocks);
  for (int b = 0; b < blocks; ++b)
    ASSERT_EQ(Bits(&cw[31 * b], &cw[31 * b] + 31), expectedCodeword(Bits(&in[30 * b], &in[30 * b] + 30)));
  EXPECT_EQ(code.block_decode(cw.data(), back.data(), blocks, false), 30 * blocks);
  EXPECT_EQ(back, in);

  // A copy codes alike and outlives its original.
  auto* original = new Code30_31nrz_v2;
  Code30_31nrz_v2 copy(*original);
  delete original;
  copy.block_decode(cw.data(), back.data(), blocks, true);
  EXPECT_EQ(back, in);
}

TEST_F(Rll3031, PartialWordsRoundTrip) {
  Bits in = randomBits(10), cw(21, -1), back(20, -1);
  EXPECT_EQ(code.encodePartialWord(in.data(), cw.data(), 10, true), 10);
  EXPECT_EQ(code.decodePartialCodeword(cw.data(), back.data(), 10, true), 10);
  EXPECT_EQ(Bits(back.begin(), back.begin() + 10), in);
  EXPECT_EQ(cw[10], -1);
  for (int trial = 0; trial < 50; ++trial) {
    in = randomBits(20);
    EXPECT_EQ(code.encodePartialWord(in.data(), cw.data(), 20, true), 21);
    ASSERT_EQ(cw, expectedCodeword(in));
    EXPECT_EQ(code.decodePartialCodeword(cw.data(), back.data(), 21, true), 20);
    ASSERT_EQ(back, in);
  }
}

TEST_F(Rll3031, IllegalPartialSizesAreFatal) {
  Bits in(40), out(40);
  const char* msg = "CODE30/31nrz::encodePartialWord: Illigal partial word size\n";
  EXPECT_EXIT_PRINTS(code.encodePartialWord(in.data(), out.data(), 15, true), 255, msg);
  EXPECT_EXIT_PRINTS(code.encodePartialWord(in.data(), out.data(), 21, true), 255, msg);
  EXPECT_EXIT_PRINTS(code.decodePartialCodeword(in.data(), out.data(), 20, true), 255, msg);
}

}  // namespace
