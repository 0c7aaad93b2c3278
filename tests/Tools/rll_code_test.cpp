// Rate-12/13 and rate-30/31 run-length-limited codes.
#include <bitset>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <vector>

#include "Tools/code12_13_v2.h"
#include "Tools/code30_31nrz_v2.h"
#include "support/testutil.h"

namespace {

using Bits = std::vector<int>;

Bits bitsOf(int v, int n) {
  Bits b(n);
  for (int i = 0; i < n; ++i) b[i] = (v >> (n - 1 - i)) & 1;
  return b;
}

int popcount(int v) { return static_cast<int>(std::bitset<16>(v).count()); }

// The table rules again, on packed integers (bit 8 of a 9-bit value is b0).
bool table1Rule(int v) {
  return popcount(v) >= 5 && (v & 0x180) && (v & 0x003) && (v & 0x154) && (v & 0x0AA);
}

// c is 11 code bits; x = (p, c) as 13 bits, y[i] = x[i+2] ^ x[i] is x ^ (x >> 2).
bool goodFrom(int p, int c) {
  const int x = (p << 11) | c;
  const int y = (x ^ (x >> 2)) & 0x7FF;
  return popcount(y) >= 5 && (y & 0x780) && (y & 0x003) && (y & 0x154) && (y & 0x0AA);
}

// The route a 12-bit word must take, from the word alone (bit 11 of w is u0).
int expectedRoute(int w) {
  const int u4to11 = w & 0xFF;
  const int u3to10 = (w >> 1) & 0xFF;
  if (u4to11 <= 192) return Code12_13_v2::ViaTable1;
  if (((w >> 4) & 0x1F) == 0x1F) return Code12_13_v2::ViaTable3;
  if (u3to10 == 0xF7) return Code12_13_v2::Escape;
  return Code12_13_v2::ViaTable2;
}

TEST(Rll1213, TablesFollowTheirRules) {
  std::vector<int> t1(256, -1), t2(128, -1), t3(32, -1);
  int n1 = 0, n2 = 0, n3 = 0, qualifying = 0;
  for (int v = 0; v < 512; ++v)
    if (table1Rule(v) && qualifying++ < 193) t1[n1++] = v;
  for (int c = 0; c < 2048; ++c) {
    const bool g0 = goodFrom(0, c), g1 = goodFrom(1, c), g2 = goodFrom(2, c), g3 = goodFrom(3, c);
    if (!g0 && g1 && g2 && g3) t2[n2++] = c & 511;
    if (g0 && !g1 && !g2 && !g3 && n3 < 32) t3[n3++] = c & 511;
  }
  EXPECT_EQ(qualifying, 197);
  EXPECT_EQ(n2, 110);
  t2[0] = t2[64] = -1;

  Code12_13_v2 code;
  EXPECT_EQ(std::vector<int>(code.getTable1(), code.getTable1() + 256), t1);
  EXPECT_EQ(std::vector<int>(code.getTable2(), code.getTable2() + 128), t2);
  EXPECT_EQ(std::vector<int>(code.getTable3(), code.getTable3() + 32), t3);
  // The escape pattern must not be a Table1 pattern, or escaped words would
  // decode through Table1.
  EXPECT_EQ(Code12_13_v2::lookup_word(507, code.getTable1(), 256), -1);
}

TEST(Rll1213, EveryWordRoundTripsThroughItsRoute) {
  Code12_13_v2 code;
  std::map<int, int> routes;
  std::set<Bits> codewords;
  testing::internal::CaptureStdout();
  for (int w = 0; w < 4096; ++w) {
    Bits in = bitsOf(w, 12), cw(13), back(12);
    const int route = code.encode(in.data(), cw.data());
    ASSERT_EQ(route, expectedRoute(w)) << w;
    ASSERT_EQ(code.decode(cw.data(), back.data()), route) << w;
    ASSERT_EQ(back, in) << w;
    ASSERT_EQ(cw[0], in[0]);
    ASSERT_EQ(cw[1], in[1]);
    int flag = -1;
    code.invalidCodewordFlag(cw.data(), flag);
    ASSERT_EQ(flag, 0);
    ++routes[route];
    codewords.insert(cw);
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(routes[Code12_13_v2::ViaTable1], 3088);
  EXPECT_EQ(routes[Code12_13_v2::ViaTable2], 864);
  EXPECT_EQ(routes[Code12_13_v2::ViaTable3], 128);
  EXPECT_EQ(routes[Code12_13_v2::Escape], 16);
  EXPECT_EQ(codewords.size(), 4096u);
}

// Table1 and escape codewords are precoded by 1/(1+D^2): undoing it with
// (1+D^2) from zero delays must expose the table pattern in bits 4..12.
TEST(Rll1213, PrecodedRoutesExposeTheirPattern) {
  Code12_13_v2 code;
  const struct {
    int word;
    int pattern;
  } cases[] = {{0x000, code.getTable1()[0]}, {0x5B3, code.getTable1()[0xB3]}, {0xBEF, 507}, {0x1EE, 507}};
  for (const auto& c : cases) {
    Bits in = bitsOf(c.word, 12), cw(13);
    code.encode(in.data(), cw.data());
    Bits y(13);
    for (int i = 0; i < 13; ++i) y[i] = i < 2 ? cw[i] : cw[i] ^ (i >= 4 ? cw[i - 2] : 0);
    EXPECT_EQ(Bits(y.begin() + 4, y.end()), bitsOf(c.pattern, 9)) << c.word;
    EXPECT_EQ(Bits(y.begin(), y.begin() + 3), Bits(in.begin(), in.begin() + 3));
  }
}

TEST(Rll1213, UnplaceableCodewordsDecodeToZerosAndAreFlagged) {
  Code12_13_v2 code;
  int invalid = 0;
  for (int v = 0; v < 8192; ++v) {
    Bits cw = bitsOf(v, 13), out(12, 7);
    const int route = code.decode(cw.data(), out.data());
    int flag = -1;
    code.invalidCodewordFlag(cw.data(), flag);
    ASSERT_EQ(flag, route == Code12_13_v2::Invalid ? 1 : 0);
    if (route != Code12_13_v2::Invalid) continue;
    ++invalid;
    Bits expected(12, 0);
    expected[0] = cw[0];
    expected[1] = cw[1];
    ASSERT_EQ(out, expected) << v;
  }
  EXPECT_GT(invalid, 0);
  Bits zeros(13, 0), out(12);
  zeros[0] = 1;
  EXPECT_EQ(code.decode(zeros.data(), out.data()), Code12_13_v2::Invalid);
}

TEST(Rll1213, BitHelpers) {
  int b[5];
  Code12_13_v2::dec2bin(19, b, 5);
  EXPECT_EQ(Bits(b, b + 5), (Bits{1, 0, 0, 1, 1}));
  EXPECT_EQ(Code12_13_v2::bin2dec(b, 5), 19);
  Code12_13_v2::dec2bin(-1, b, 5);
  EXPECT_EQ(Bits(b, b + 5), (Bits{1, 1, 1, 1, 1}));

  const struct {
    int parity;
    Bits expected;
  } interleave[] = {{0, {0, 1, 1, 1, 0}}, {1, {1, 0, 0, 0, 1}}};
  for (const auto& c : interleave) {
    Bits v{1, 1, 0, 1, 1};
    Code12_13_v2::flipInterleave(v.data(), 5, c.parity);
    EXPECT_EQ(v, c.expected);
  }
  Bits v{1, 0, 0, 1, 1};
  Code12_13_v2::flip(v.data(), 5);
  EXPECT_EQ(v, (Bits{0, 1, 1, 0, 0}));

  const int table[] = {4, -1, 9, 4};
  EXPECT_EQ(Code12_13_v2::lookup_word(4, table, 4), 0);
  EXPECT_EQ(Code12_13_v2::lookup_word(9, table, 4), 2);
  EXPECT_EQ(Code12_13_v2::lookup_word(9, table, 2), -1);
  const int nine[] = {0, 0, 0, 0, 0, 1, 0, 0, 1};
  EXPECT_EQ(Code12_13_v2::lookup_codeword(nine, table, 4), 2);
}

TEST(Rll1213, TableFileFormat) {
  qfbtest::ScratchDir dir;
  Code12_13_v2 code;
  code.table_write();
  std::ostringstream expected;
  const auto dump = [&](const char* name, const int* t, int n) {
    expected << name << "\n";
    for (int i = 0; i < n; ++i) expected << i << "  " << std::bitset<9>(static_cast<unsigned>(t[i]) & 511u) << "\n";
  };
  dump("Table1", code.getTable1(), 256);
  expected << "\n\n";
  dump("Table2", code.getTable2(), 128);
  expected << "\n\n";
  dump("Table3", code.getTable3(), 32);
  const std::string text = qfbtest::readFile("table.txt");
  EXPECT_EQ(text, expected.str());
  EXPECT_NE(text.find("\n193  111111111\n"), std::string::npos);
}

class Rll3031 : public ::testing::Test {
 protected:
  Bits randomBits(int n) {
    Bits b(n);
    for (int& x : b) x = static_cast<int>(rng() & 1u);
    return b;
  }
  std::mt19937 rng{3031};
  Code30_31nrz_v2 code;
  Code12_13_v2 inner;
};

TEST_F(Rll3031, BlocksRoundTripWithTheStatedLayout) {
  EXPECT_EQ(code.getK(), 30);
  EXPECT_EQ(code.getN(), 31);
  const int blocks = 40;
  Bits in = randomBits(30 * blocks), cw(31 * blocks), back(30 * blocks);
  EXPECT_EQ(code.block_encode(in.data(), cw.data(), blocks, true), 31 * blocks);
  for (int b = 0; b < blocks; ++b) {
    const int* u = &in[30 * b];
    const int* c = &cw[31 * b];
    Bits middle(13);
    inner.encode(const_cast<int*>(u) + 8, middle.data());
    ASSERT_EQ(Bits(c, c + 8), Bits(u, u + 8));
    ASSERT_EQ(Bits(c + 8, c + 21), middle);
    ASSERT_EQ(Bits(c + 21, c + 31), Bits(u + 20, u + 30));
  }
  EXPECT_EQ(code.block_decode(cw.data(), back.data(), blocks, false), 30 * blocks);
  EXPECT_EQ(back, in);

  // A copy codes alike and outlives its original.
  auto* original = new Code30_31nrz_v2;
  Code30_31nrz_v2 copy(*original);
  delete original;
  Bits again(31 * blocks);
  copy.block_encode(in.data(), again.data(), blocks, true);
  EXPECT_EQ(again, cw);
}

TEST_F(Rll3031, PartialWordsRoundTrip) {
  Bits in = randomBits(20), cw(21, -1), back(20, -1);
  EXPECT_EQ(code.encodePartialWord(in.data(), cw.data(), 10, true), 10);
  EXPECT_EQ(Bits(cw.begin(), cw.begin() + 10), Bits(in.begin(), in.begin() + 10));
  EXPECT_EQ(cw[10], -1);
  EXPECT_EQ(code.decodePartialCodeword(cw.data(), back.data(), 10, true), 10);
  EXPECT_EQ(Bits(back.begin(), back.begin() + 10), Bits(in.begin(), in.begin() + 10));

  for (int trial = 0; trial < 50; ++trial) {
    in = randomBits(20);
    EXPECT_EQ(code.encodePartialWord(in.data(), cw.data(), 20, true), 21);
    Bits middle(13);
    inner.encode(in.data() + 8, middle.data());
    ASSERT_EQ(Bits(cw.begin() + 8, cw.end()), middle);
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
  EXPECT_EXIT_PRINTS(code.decodePartialCodeword(in.data(), out.data(), 15, true), 255, msg);
}

}  // namespace
