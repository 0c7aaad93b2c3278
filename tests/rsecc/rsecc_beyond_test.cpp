// Decoding one error beyond the bound: the unique nearest codeword within
// t+1 symbols, against the full list of codewords of small GF(8) codes; its
// gain over decode() on t+1 errors; and no success with a non-codeword.
#include <algorithm>
#include <random>
#include <set>
#include <vector>

#include "rsecc_helpers.h"
#include "support/testutil.h"

namespace {

using namespace rstest;

// The decoders' guarantee, checked on every coset of small codes over GF(8):
// the words whose message part is zero hold one representative of each
// syndrome, and a random codeword added to each moves it anywhere in its
// coset. The nearest codewords come from the full list of codewords.
TEST(RseccBeyond, UniqueNearestWithinOneBeyondTOnEveryCoset) {
  static const int p3[] = {1, 0, 1, 1};  // x^3 + x + 1
  GF2m f(3, p3, 3, static_cast<const char*>(nullptr));
  struct Case { int t, nParity, b0; };
  const Case cases[] = {{1, 2, 0}, {1, 2, 1}, {2, 4, 0}, {2, 4, 1}, {1, 3, 1}};
  const int n = 7;
  std::mt19937 rng(5);
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << "t " << c.t << " parity " << c.nParity << " b0 " << c.b0);
    RSECC rs(&f, c.t, c.nParity, false, c.b0);
    const int k = n - c.nParity;
    std::vector<V> code;
    V msg(k), cw(n);
    for (int index = 0; index < 1 << (3 * k); ++index) {
      for (int i = 0; i < k; ++i) msg[i] = (index >> (3 * i)) & 7;
      rs.encode(msg.data(), k, cw.data(), n);
      code.push_back(cw);
    }
    for (int syndrome = 0; syndrome < 1 << (3 * c.nParity); ++syndrome) {
      V r = code[rng() % code.size()];
      for (int i = 0; i < c.nParity; ++i) r[k + i] = f.add(r[k + i], (syndrome >> (3 * i)) & 7);
      std::set<V> near;
      int nearest = n, atNearest = 0;
      const V* closest = nullptr;
      for (const V& w : code) {
        const int d = distance(w, r);
        if (d <= c.t + 1) near.insert(w);
        if (d < nearest) {
          nearest = d;
          atNearest = 0;
          closest = &w;
        }
        atNearest += d == nearest;
      }
      const bool unique = nearest <= c.t + 1 && atNearest == 1;
      V w = r;
      ASSERT_EQ(rs.decodeBeyondBchBound(w.data(), n, -1, nullptr), unique ? 1 : 0) << syndrome;
      ASSERT_EQ(w, unique ? *closest : r) << syndrome;

      std::vector<V> rows(4 * c.t, V(n));
      std::vector<int*> list;
      for (V& row : rows) list.push_back(row.data());
      const int count = rs.listDecode(r.data(), n, -1, nullptr, list.data(), int(list.size()));
      if (near.size() <= list.size()) {
        ASSERT_EQ(std::set<V>(rows.begin(), rows.begin() + count), near) << syndrome;
      }
      if (nearest <= c.t) {
        ASSERT_EQ(rows[0], *closest) << syndrome;
      }
    }
  }
}

// Five errors against t = 4 in a (40, 32) code over GF(2^8); the third
// variant stores every codeword plus a known mask.
TEST(RseccBeyond, CorrectsOneErrorMoreThanDecodeAndNeverReturnsANonCodeword) {
  GF2m f = field(8);
  std::mt19937 rng(8);
  std::uniform_int_distribution<int> sym(0, 255);
  for (int variant = 0; variant < 3; ++variant) {
    const bool masked = variant == 2;
    RSECC rs(&f, 4, -1, masked, variant % 2);
    const int n = 40, trials = 30;
    int decodeRestored = 0, beyondRestored = 0;
    for (int trial = 0; trial < trials; ++trial) {
      V sent = randomCodeword(rs, f, n, rng), mask(n, 255);
      for (int i = 0; masked && i < n; ++i) sent[i] = f.add(sent[i], mask[i] = sym(rng));
      const V r = corrupt(sent, f, 5, rng);
      V a = r, b = r, unmasked(n);
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
      V noise(n);
      for (int& s : noise) s = sym(rng);
      EXPECT_TRUE(masked || !rs.decodeBeyondBchBound(noise.data(), n, -1, nullptr) ||
                  rs.isValidCodeword(noise.data(), n) == 1);
    }
    EXPECT_EQ(decodeRestored, 0);
    EXPECT_GE(beyondRestored, trials * 4 / 5) << "variant " << variant;
  }
}

TEST(RseccBeyond, InductiveStepSolvesTheSyndromeAndReportsBadStates) {
  GF2m f = field(4);
  RSECC rs(&f, 2, -1, false, 0);
  const int Z = 15;
  for (int delta : {0, 6, Z}) {
    int S[1] = {Z}, lambda[3] = {Z, Z, 0}, B[3] = {Z, Z, 0}, gamma = 0, L = 0;
    ASSERT_EQ(rs.basicInductiveStep(S, 1, lambda, B, 3, gamma, L, delta), 1);
    EXPECT_EQ(S[0], delta);  // Lambda = 1: the discrepancy is the syndrome itself
    EXPECT_EQ(L, delta == Z ? 0 : 1);
    EXPECT_EQ(V(lambda, lambda + 3), (V{Z, delta, 0}));
  }
  int S[2] = {3, Z}, lambda[3] = {Z, 0, Z}, B[3] = {Z, Z, 0}, gamma = 0, L = 1;
  const int deltas[2] = {-1, 4};
  testing::internal::CaptureStdout();
  EXPECT_EQ(rs.BM_beyondBchBound(S, 1, lambda, B, 3, gamma, L, deltas, 2), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "RSECC::basicInductiveStep<<Logical problems\nLIST ECC:: timed out!!!!!!!!!!!!!!!!\n");
}

TEST(RseccBeyondDeathTest, UnsupportedFirstRootIsALogicalError) {
  GF2m f = field(4);
  RSECC rs(&f, 2, -1, false, 2);
  V w(15, 15);
  int* list[1] = {w.data()};
  const char* text = "RSECC:: Logical error, exiting...\n";
  EXPECT_EXIT_PRINTS(rs.decodeBeyondBchBound(w.data(), 15, -1, nullptr), 255, text);
  EXPECT_EXIT_PRINTS(rs.listDecode(w.data(), 15, -1, nullptr, list, 1), 255, text);
}

}  // namespace
