// Decoding one error beyond the bound: against a brute-force list of all
// codewords of small GF(16) codes, its gain over decode() on t+1 errors, and
// no success with a word that is not a codeword.
#include <algorithm>
#include <random>
#include <set>
#include <vector>

#include "gf/gf2m.h"
#include "rsecc/rsecc.h"
#include "support/testutil.h"

namespace {

const int kP4[] = {1, 0, 0, 1, 1};
const int kP8[] = {1, 0, 0, 0, 1, 1, 1, 0, 1};

int distance(const std::vector<int>& a, const std::vector<int>& b) {
  int d = 0;
  for (size_t i = 0; i < a.size(); ++i) d += a[i] != b[i];
  return d;
}

TEST(RseccBeyond, ListEqualsBruteForceSearchInGf16) {
  GF2m f(4, kP4, 4, static_cast<const char*>(nullptr));
  struct Case { int t, nParity, n, b0; };
  const Case cases[] = {{2, 4, 7, 0}, {2, 4, 7, 1}, {2, 5, 8, 1}, {1, 2, 5, 0}, {1, 3, 6, 1}};
  std::mt19937 rng(3);
  std::uniform_int_distribution<int> sym(0, 15);
  for (const Case& c : cases) {
    RSECC rs(&f, c.t, c.nParity, false, c.b0);
    const int k = c.n - c.nParity;
    std::vector<std::vector<int>> code;
    std::vector<int> msg(k, 0), cw(c.n);
    for (int index = 0; index < 1 << (4 * k); ++index) {
      for (int i = 0; i < k; ++i) msg[i] = (index >> (4 * i)) & 15;
      rs.encode(msg.data(), k, cw.data(), c.n);
      code.push_back(cw);
    }
    for (int trial = 0; trial < 150; ++trial) {
      std::vector<int> r = code[rng() % code.size()];
      for (int e = 0; e < c.t + 1 + trial % 2; ++e) r[rng() % c.n] = sym(rng);
      std::set<std::vector<int>> near;
      int nearest = c.n;
      for (const auto& w : code) {
        const int d = distance(w, r);
        if (d <= c.t + 1) near.insert(w);
        nearest = std::min(nearest, d);
      }
      std::vector<std::vector<int>> rows(4 * c.t, std::vector<int>(c.n));
      std::vector<int*> list;
      for (auto& row : rows) list.push_back(row.data());
      const int count = rs.listDecode(r.data(), c.n, -1, nullptr, list.data(), int(list.size()));
      if (near.size() <= list.size()) {
        EXPECT_EQ(std::set<std::vector<int>>(rows.begin(), rows.begin() + count), near) << trial;
      }
      std::vector<int> w = r;
      const bool unique = nearest <= c.t || near.size() == 1;
      ASSERT_EQ(rs.decodeBeyondBchBound(w.data(), c.n, -1, nullptr), unique ? 1 : 0) << trial;
      EXPECT_TRUE(unique ? near.count(w) && distance(w, r) == nearest : w == r) << trial;
    }
  }
}

// Five errors against t = 4 in a (40, 32) code over GF(2^8); the third
// variant stores every codeword plus a known mask.
TEST(RseccBeyond, CorrectsOneErrorMoreThanDecodeAndNeverReturnsANonCodeword) {
  GF2m f(8, kP8, 8, static_cast<const char*>(nullptr));
  std::mt19937 rng(8);
  std::uniform_int_distribution<int> sym(0, 255), nonZero(0, 254);
  for (int variant = 0; variant < 3; ++variant) {
    const bool masked = variant == 2;
    RSECC rs(&f, 4, -1, masked, variant % 2);
    const int n = 40, k = 32, trials = 30;
    int decodeRestored = 0, beyondRestored = 0;
    for (int trial = 0; trial < trials; ++trial) {
      std::vector<int> msg(k), sent(n), idx(n), mask(n, 255);
      for (int& s : msg) s = sym(rng);
      rs.encode(msg.data(), k, sent.data(), n);
      for (int i = 0; i < n; ++i) {
        if (masked) mask[i] = sym(rng);
        sent[i] = f.add(sent[i], mask[i]);
        idx[i] = i;
      }
      std::shuffle(idx.begin(), idx.end(), rng);
      std::vector<int> r = sent;
      for (int e = 0; e < 5; ++e) r[idx[e]] = f.add(r[idx[e]], nonZero(rng));
      std::vector<int> a = r, b = r, unmasked(n);
      rs.decode(a.data(), n, -1, mask.data());
      decodeRestored += a == sent;
      if (rs.decodeBeyondBchBound(b.data(), n, -1, mask.data())) {
        for (int i = 0; i < n; ++i) unmasked[i] = f.add(b[i], mask[i]);
        EXPECT_EQ(rs.isValidCodeword(unmasked.data(), n), 1);
        EXPECT_LE(distance(b, r), 5);
        beyondRestored += b == sent;
      } else {
        EXPECT_EQ(b, r);
      }
      std::vector<int> noise(n);
      for (int& s : noise) s = sym(rng);
      if (!masked && rs.decodeBeyondBchBound(noise.data(), n, -1, nullptr)) {
        EXPECT_EQ(rs.isValidCodeword(noise.data(), n), 1);
      }
    }
    EXPECT_EQ(decodeRestored, 0);
    EXPECT_GE(beyondRestored, trials * 4 / 5) << "variant " << variant;
  }
}

TEST(RseccBeyond, InductiveStepSolvesTheSyndromeAndReportsBadStates) {
  GF2m f(4, kP4, 4, static_cast<const char*>(nullptr));
  RSECC rs(&f, 2, -1, false, 0);
  const int Z = 15;
  for (int delta : {0, 6, Z}) {
    int S[1] = {Z}, lambda[3] = {Z, Z, 0}, B[3] = {Z, Z, 0}, gamma = 0, L = 0;
    ASSERT_EQ(rs.basicInductiveStep(S, 1, lambda, B, 3, gamma, L, delta), 1);
    EXPECT_EQ(S[0], delta);  // Lambda = 1: the discrepancy is the syndrome itself
    EXPECT_EQ(L, delta == Z ? 0 : 1);
    EXPECT_EQ(std::vector<int>(lambda, lambda + 3), (std::vector<int>{Z, delta, 0}));
  }
  int S[2] = {3, Z}, lambda[3] = {Z, 0, Z}, B[3] = {Z, Z, 0}, gamma = 0, L = 1;
  const int deltas[2] = {-1, 4};
  testing::internal::CaptureStdout();
  EXPECT_EQ(rs.BM_beyondBchBound(S, 1, lambda, B, 3, gamma, L, deltas, 2), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "RSECC::basicInductiveStep<<Logical problems\nLIST ECC:: timed out!!!!!!!!!!!!!!!!\n");
}

TEST(RseccBeyondDeathTest, UnsupportedFirstRootIsALogicalError) {
  GF2m f(4, kP4, 4, static_cast<const char*>(nullptr));
  RSECC rs(&f, 2, -1, false, 2);
  std::vector<int> w(15, 15);
  int* list[1] = {w.data()};
  const char* text = "RSECC:: Logical error, exiting...\n";
  EXPECT_EXIT_PRINTS(rs.decodeBeyondBchBound(w.data(), 15, -1, nullptr), 255, text);
  EXPECT_EXIT_PRINTS(rs.listDecode(w.data(), 15, -1, nullptr, list, 1), 255, text);
}

}  // namespace
