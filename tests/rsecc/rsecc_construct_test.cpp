// Construction, generator, encoders, codeword test, the generator log file
// and the run-length-limited pass-through of RSECC, over GF(16) and GF(2^8).
#include <sstream>
#include <string>
#include <vector>

#include "gf/gf2m.h"
#include "rsecc/rsecc.h"
#include "support/testutil.h"

namespace {

const int kP4[] = {1, 0, 0, 1, 1};
const int kP8[] = {1, 0, 0, 0, 1, 1, 1, 0, 1};  // x^8 + x^4 + x^3 + x^2 + 1

GF2m makeField4() { return GF2m(4, kP4, 4, static_cast<const char*>(nullptr)); }

// r(x) at alpha^e by Horner, leading first: an evaluation independent of the
// codec's own routines.
int evalHorner(GF& f, const std::vector<int>& w, int e) {
  int acc = f.getZero();
  for (int c : w) acc = f.add(f.multiply(acc, e), c);
  return acc;
}

TEST(RseccConstruct, GeneratorsOfTheWorkedExamples) {
  GF2m f = makeField4();
  struct Case { int t, nParity, b0; std::vector<int> g; };
  const Case cases[] = {
      {1, 2, 0, {0, 4, 1}},
      {2, 4, 0, {0, 12, 4, 0, 6}},
      {2, 4, 1, {0, 13, 6, 3, 10}},
      {2, -1, 1, {0, 13, 6, 3, 10}},
  };
  for (const Case& c : cases) {
    RSECC rs(&f, c.t, c.nParity, false, c.b0);
    std::vector<int> g(c.g.size());
    rs.getGenPoly(g.data(), int(g.size()));
    EXPECT_EQ(g, c.g) << "t=" << c.t << " b0=" << c.b0;
    EXPECT_EQ(rs.getNParity(), int(c.g.size()) - 1);
  }
}

TEST(RseccConstruct, GeneratorRootsAreConsecutivePowers) {
  GF2m f(8, kP8, 8, static_cast<const char*>(nullptr));
  for (int b0 : {0, 1, 5}) {
    RSECC rs(&f, 4, -1, false, b0);
    std::vector<int> g(9);
    rs.getGenPoly(g.data(), 9);
    EXPECT_EQ(g[0], 0);
    for (int e = 0; e < 20; ++e) {
      const bool root = e >= b0 && e < b0 + 8;
      EXPECT_EQ(evalHorner(f, g, e) == f.getZero(), root) << "b0=" << b0 << " e=" << e;
    }
  }
}

TEST(RseccConstruct, ParityCountWarnings) {
  GF2m f(8, kP8, 8, static_cast<const char*>(nullptr));
  struct Case { int nParity; std::string text; bool trueTest; };
  const Case cases[] = {
      {-1, "", false},
      {8, "", false},
      {6, "RSECC::RSECC: _nPritySymbols is less than the 2*t\n", false},
      {9, "ADV ECC::USING TRUE VALIDITY TEST\n", true},
  };
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
  auto* f = new GF2m(4, kP4, 4, static_cast<const char*>(nullptr));
  RSECC rs(f, 1, 2, false, 0);
  delete f;
  const int msg[3] = {0, 0, 0};
  int cw[5];
  rs.encode(msg, 3, cw, 5);
  EXPECT_EQ(std::vector<int>(cw, cw + 5), (std::vector<int>{0, 0, 0, 7, 9}));
}

TEST(RseccConstruct, ScheduleRowsHoldTheStoredPairs) {
  GF2m f = makeField4();
  RSECC rs(&f, 2, -1, false, 0);
  const std::vector<int> s = rs.getSchedule();
  ASSERT_EQ(s.size(), 70u * 24u);
  auto row = [&](int r) {
    std::vector<int> v(s.begin() + r * 24, s.begin() + r * 24 + 24);
    while (!v.empty() && v.back() == 0) v.pop_back();
    return v;
  };
  EXPECT_EQ(row(0), (std::vector<int>{1, 1}));
  EXPECT_EQ(row(5), (std::vector<int>{4, 2, 4, 1}));
  EXPECT_EQ(row(34), (std::vector<int>{4, 2, 4, 1, 5, 1, 5, 2, 2, 1, 3, 1}));
  EXPECT_EQ(row(66), (std::vector<int>{6, 1, 3, 1, 1, 1, 2, 1}));
  EXPECT_EQ(row(69), (std::vector<int>{4, 2, 4, 1, 5, 1, 5, 2, 1, 1, 2, 1, 3, 1, 6, 1}));
  for (int r = 0; r < 70; ++r) {
    const std::vector<int> v = row(r);
    ASSERT_EQ(v.size() % 2, 0u) << r;
    for (size_t i = 0; i < v.size(); i += 2) {
      EXPECT_TRUE(v[i] >= 1 && v[i] <= 6 && v[i + 1] >= 1 && v[i + 1] <= 2) << r;
    }
  }
}

}  // namespace
