// Construction, generator, encoders, codeword test, the generator log file
// and the run-length-limited pass-through of RSECC, over GF(16) and GF(2^8).
#include <algorithm>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Tools/code30_31nrz_v2.h"
#include "rsecc_helpers.h"
#include "support/testutil.h"

namespace {

using namespace rstest;

TEST(RseccConstruct, GeneratorsOfTheWorkedExamples) {
  GF2m f = field(4);
  struct Case { int t, nParity, b0; V g; };
  const Case cases[] = {{1, 2, 0, {0, 4, 1}}, {2, 4, 0, {0, 12, 4, 0, 6}}, {2, 4, 1, {0, 13, 6, 3, 10}},
                        {2, -1, 1, {0, 13, 6, 3, 10}}};
  for (const Case& c : cases) {
    RSECC rs(&f, c.t, c.nParity, false, c.b0);
    V g(c.g.size());
    rs.getGenPoly(g.data(), int(g.size()));
    EXPECT_EQ(g, c.g) << "t=" << c.t << " b0=" << c.b0;
    EXPECT_EQ(rs.getNParity(), int(c.g.size()) - 1);
  }
}

TEST(RseccConstruct, ParityCountWarnings) {
  GF2m f = field(8);
  struct Case { int nParity; std::string text; bool trueTest; };
  const Case cases[] = {{-1, "", false},
                        {8, "", false},
                        {6, "RSECC::RSECC: _nPritySymbols is less than the 2*t\n", false},
                        {9, "ADV ECC::USING TRUE VALIDITY TEST\n", true}};
  for (const Case& c : cases) {
    testing::internal::CaptureStdout();
    RSECC rs(&f, 4, c.nParity, false, 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), c.text);
    EXPECT_EQ(rs.usesTrueValidityTest(), c.trueTest);
    EXPECT_EQ(rs.getNParity(), c.nParity == -1 ? 8 : c.nParity);
    EXPECT_TRUE(rs.isEccRllEnabled());
  }
}

TEST(RseccConstruct, FieldCopyOutlivesTheCallersField) {
  auto* f = new GF2m(field(4));
  RSECC rs(f, 1, 2, false, 0);
  delete f;
  const int msg[3] = {0, 0, 0};
  int cw[5];
  rs.encode(msg, 3, cw, 5);
  EXPECT_EQ(V(cw, cw + 5), (V{0, 0, 0, 7, 9}));
}

// Every row of the stored schedule is a list of (a, b) pairs with a in 1..6
// and b in 1..2, then zeros to the end of its 24 entries; no two rows are
// the same hypothesis, so a damaged entry that ends a row early shows up as
// a repeat of a shorter row.
TEST(RseccConstruct, ScheduleRowsAreZeroTerminatedPairLists) {
  GF2m f = field(4);
  const V s = RSECC(&f, 2, -1, false, 0).getSchedule();
  ASSERT_EQ(s.size(), 70u * 24u);
  std::set<V> rows;
  for (int row = 0; row < 70; ++row) {
    const auto begin = s.begin() + 24 * row, end = begin + 24;
    const auto used = std::find(begin, end, 0);
    EXPECT_TRUE(rows.insert(V(begin, used)).second) << "row " << row << " repeats an earlier one";
    ASSERT_TRUE((used - begin) % 2 == 0 && used > begin) << row;
    EXPECT_TRUE(std::all_of(used, end, [](int v) { return v == 0; })) << row;
    for (auto p = begin; p != used; p += 2) EXPECT_TRUE(p[0] <= 6 && p[1] >= 1 && p[1] <= 2) << row;
  }
  const V row34 = {4, 2, 4, 1, 5, 1, 5, 2, 2, 1, 3, 1};
  EXPECT_TRUE(std::equal(row34.begin(), row34.end(), s.begin() + 34 * 24));
}

TEST(RseccConstruct, EncodersAndCodewordTest) {
  GF2m f = field(8);
  std::mt19937 rng(1);
  for (int b0 : {0, 1}) {
    RSECC rs(&f, 3, 7, false, b0);
    const int k = 20, n = 27;
    V msg(k), cw(n), dummy(n);
    for (int& s : msg) s = int(rng() % 256);
    rs.encode(msg.data(), k, cw.data(), n);
    rs.dummyEncoder(msg.data(), k, dummy.data(), n);
    EXPECT_EQ(V(cw.begin(), cw.begin() + k), msg);
    EXPECT_EQ(rs.isValidCodeword(cw.data(), n), 1);
    for (int j = 0; j < 7; ++j) EXPECT_EQ(evalHorner(f, cw, b0 + j), 255) << j;
    // The dummy word shares the message and the first parity symbol, and
    // has alpha^1 .. alpha^(nParity-1) as roots whatever b0 is.
    EXPECT_EQ(V(dummy.begin(), dummy.begin() + k + 1),
              V(cw.begin(), cw.begin() + k + 1));
    for (int e = 1; e < 7; ++e) EXPECT_EQ(evalHorner(f, dummy, e), 255) << e;
    for (int i : {0, k, n - 1}) {
      V bad = cw;
      bad[i] = f.add(bad[i], 17);
      EXPECT_EQ(rs.isValidCodeword(bad.data(), n), 0) << i;
    }
  }
}

TEST(RseccConstruct, GeneratorLogFileLists22Generators) {
  qfbtest::ScratchDir dir;
  GF2m f = field(8);
  RSECC rs(&f, 2, -1, false, 1);
  rs.logValidRsEccGenPoly();
  std::istringstream in(qfbtest::readFile("validRsEccGenPoly.txt"));
  std::string line;
  std::vector<std::string> lines;
  while (std::getline(in, line)) lines.push_back(line);
  ASSERT_EQ(lines.size(), 24u);
  EXPECT_EQ(lines[0], "Valid RS ECC generator polynomials, t=16:2:36, AECC off");
  EXPECT_EQ(lines[12], "Valid RS ECC generator polynomials, t=16:2:36, AECC on");
  for (int i = 0; i < 22; ++i) {
    const std::string& text = lines[1 + i + i / 11];
    const int degree = 32 + 4 * (i % 11) + i / 11;
    ASSERT_EQ(text.back(), ' ');
    std::istringstream numbers(text);
    V g;
    for (int v; numbers >> v;) g.push_back(f.int2Exp(v));
    ASSERT_EQ(int(g.size()), degree + 1);
    EXPECT_EQ(g[0], 0);
    for (int e = 1; e <= degree; ++e) EXPECT_EQ(evalHorner(f, g, e), 255) << degree << " " << e;
  }
}

TEST(RseccConstruct, RunLengthLimitedPassThrough) {
  GF2m f = field(4);
  RSECC rs(&f, 1, 2, false, 0);
  Code30_31nrz_v2 reference;
  std::mt19937 rng(6);
  struct Case { int nIn, nCoded; };
  for (const Case c : {Case{60, 62}, Case{70, 72}, Case{80, 83}}) {
    V in(c.nIn), coded(c.nCoded + 5, -1), back(c.nIn, -1), first(31);
    for (int& b : in) b = int(rng() & 1);
    rs.lrRllEncode(in.data(), c.nIn, coded.data(), c.nCoded);
    reference.encode(in.data(), first.data(), true);
    EXPECT_EQ(V(coded.begin(), coded.begin() + 31), first);
    EXPECT_EQ(coded[c.nCoded], -1);
    rs.lrRllDecode(coded.data(), c.nCoded, back.data(), c.nIn);
    EXPECT_EQ(back, in) << c.nIn;
  }
}

TEST(RseccConstruct, BitAndSymbolPacking) {
  GF2m f = field(4);
  RSECC rs(&f, 1, 2, false, 0);
  const int bits[6] = {1, 0, 1, 1, 1, 0};
  int symbols[2];
  rs.bitStream2symbolStream(bits, 6, symbols, 2, 4);
  EXPECT_EQ(V(symbols, symbols + 2), (V{f.int2Exp(11), f.int2Exp(2)}));  // a short last group is a 2-bit number
  int out[6] = {};
  rs.symbolStream2bitStream(symbols, 2, out, 6, 4);
  EXPECT_EQ(V(out, out + 6), V(bits, bits + 6));
  const int antipodal[8] = {1, -1, 1, 1, -1, -1, -1, 1};
  rs.bitStream2symbolStreamReverseOrderInt(antipodal, 0, symbols, 2, 4);
  EXPECT_EQ(V(symbols, symbols + 2), (V{11, 1}));
}

}  // namespace
