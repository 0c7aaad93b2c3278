// Error and erasure decoding of RSECC: the worked GF(16) examples, exhaustive
// and randomised correction within the designed bound, agreement between the
// locator searches, and the validity tests and their messages.
#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "gf/gf2m.h"
#include "rsecc/rsecc.h"
#include "support/testutil.h"

namespace {

const int kP4[] = {1, 0, 0, 1, 1};
const int kP8[] = {1, 0, 0, 0, 1, 1, 1, 0, 1};  // x^8 + x^4 + x^3 + x^2 + 1

GF2m field(int m) {
  return m == 4 ? GF2m(4, kP4, 4, static_cast<const char*>(nullptr))
                : GF2m(8, kP8, 8, static_cast<const char*>(nullptr));
}

std::vector<int> randomCodeword(RSECC& rs, GF& f, int n, std::mt19937& rng) {
  const int k = n - rs.getNParity();
  std::uniform_int_distribution<int> sym(0, f.getN() - 1);
  std::vector<int> msg(k), cw(n);
  for (int& s : msg) s = sym(rng);
  rs.encode(msg.data(), k, cw.data(), n);
  return cw;
}

// count distinct positions with random non-zero error values.
std::vector<int> corrupt(const std::vector<int>& cw, GF& f, int count, std::mt19937& rng,
                         std::vector<int>* where = nullptr) {
  std::vector<int> idx(cw.size());
  for (size_t i = 0; i < idx.size(); ++i) idx[i] = int(i);
  std::shuffle(idx.begin(), idx.end(), rng);
  std::uniform_int_distribution<int> nonZero(0, f.getN() - 2);
  std::vector<int> r = cw;
  for (int i = 0; i < count; ++i) r[idx[i]] = f.add(r[idx[i]], nonZero(rng));
  if (where) where->assign(idx.begin(), idx.begin() + count);
  return r;
}

TEST(RseccDecode, WorkedExampleOfOneSymbolCode) {
  GF2m f = field(4);
  RSECC rs(&f, 1, 2, false, 0);
  std::vector<int> w = {0, 14, 0, 7, 9};
  EXPECT_EQ(rs.decode(w.data(), 5, 1, nullptr), 1);
  EXPECT_EQ(w, (std::vector<int>{0, 0, 0, 7, 9}));
  w = {0, 14, 0, 7, 9};
  EXPECT_EQ(rs.decode(w.data(), 5, 0, nullptr), 1);
  EXPECT_EQ(w, (std::vector<int>{0, 14, 0, 7, 9}));
}

TEST(RseccDecode, EveryPatternOfUpToTwoErrorsInGf16) {
  GF2m f = field(4);
  std::mt19937 rng(11);
  for (int b0 : {0, 1}) {
    RSECC rs(&f, 2, 4, false, b0);
    const std::vector<int> cw = randomCodeword(rs, f, 15, rng);
    int patterns = 0;
    for (int i = 0; i < 15; ++i)
      for (int j = i; j < 15; ++j)
        for (int vi = 0; vi < 15; ++vi)
          for (int vj = 0; vj < 15; ++vj) {
            if (i == j && vj > 0) continue;
            std::vector<int> r = cw;
            r[i] = f.add(r[i], vi);
            if (j != i) r[j] = f.add(r[j], vj);
            ASSERT_EQ(rs.decode(r.data(), 15, -1, nullptr), 1) << b0 << " " << i << " " << j;
            ASSERT_EQ(r, cw) << "b0=" << b0 << " positions " << i << "," << j;
            ++patterns;
          }
    EXPECT_EQ(patterns, 15 * 15 + 105 * 225);
  }
}

TEST(RseccDecode, RandomPatternsWithinTheBoundInGf256) {
  GF2m f = field(8);
  std::mt19937 rng(5);
  struct Case { int t, nParity, n, tUse; };
  const Case cases[] = {{4, -1, 40, -1}, {8, -1, 255, -1}, {4, 9, 60, 4}, {6, -1, 100, 3}};
  for (int b0 : {0, 1}) {
    for (const Case& c : cases) {
      RSECC rs(&f, c.t, c.nParity, false, b0);
      const int limit = c.tUse < 0 ? c.t : c.tUse;
      for (int trial = 0; trial < 40; ++trial) {
        const std::vector<int> cw = randomCodeword(rs, f, c.n, rng);
        std::vector<int> r = corrupt(cw, f, trial % (limit + 1), rng);
        ASSERT_EQ(rs.decode(r.data(), c.n, c.tUse, nullptr), 1) << "t=" << c.t << " trial " << trial;
        ASSERT_EQ(r, cw) << "t=" << c.t << " b0=" << b0 << " trial " << trial;
      }
    }
  }
}

}  // namespace
