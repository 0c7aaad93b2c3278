// Decoding one error beyond the bound: the unique nearest codeword within
// t+1 symbols, and the list of all within t+1, against the full list of
// codewords of small GF(8) codes; and the inductive step and its faults.
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
  struct Case { int t, nParity, b0; bool masked; };
  const Case cases[] = {{1, 2, 0, false}, {1, 2, 1, false}, {2, 4, 0, false}, {2, 4, 1, false}, {1, 3, 1, false},
                        {2, 4, 1, true}};
  const int n = 6;  // shortened by one symbol
  std::mt19937 rng(5);
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << "t " << c.t << " parity " << c.nParity << " b0 " << c.b0 << " masked "
                                      << c.masked);
    RSECC rs(&f, c.t, c.nParity, c.masked, c.b0);
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
      // A masked code stores every word plus a known mask (zero: no mask).
      V mask(n, 7);
      if (c.masked) std::generate(mask.begin(), mask.end(), [&] { return int(rng() % 8); });
      auto plusMask = [&](V w) {
        for (int i = 0; i < n; ++i) w[i] = f.add(w[i], mask[i]);
        return w;
      };
      const V stored = plusMask(r);
      V w = stored;
      ASSERT_EQ(rs.decodeBeyondBchBound(w.data(), n, -1, mask.data()), unique ? 1 : 0) << syndrome;
      ASSERT_EQ(w, unique ? plusMask(*closest) : stored) << syndrome;

      std::vector<V> rows(4 * c.t, V(n));
      std::vector<int*> list;
      for (V& row : rows) list.push_back(row.data());
      const int count = rs.listDecode(stored.data(), n, -1, mask.data(), list.data(), int(list.size()));
      std::set<V> listed;
      for (int i = 0; i < count; ++i) listed.insert(plusMask(rows[i]));
      if (near.size() <= list.size()) {
        ASSERT_EQ(listed, near) << syndrome;
      }
      if (nearest <= c.t) {
        ASSERT_EQ(rows[0], plusMask(*closest)) << syndrome;
      }
    }
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
