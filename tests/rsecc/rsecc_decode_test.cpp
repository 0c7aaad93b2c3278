// Error and erasure decoding of RSECC: the worked GF(16) examples, randomised
// correction within the designed bound, agreement between the
// locator searches, and the validity tests and their messages.
#include <algorithm>
#include <random>
#include <tuple>
#include <vector>

#include "rsecc_helpers.h"
#include "support/testutil.h"

namespace {

using namespace rstest;

// e errors and f erasures with 2e + f <= 2tUse, tUse = t or less; a code
// with fewer than 2t parity symbols decodes as far as its syndromes allow.
TEST(RseccDecode, ErrorsAndErasuresWithinTheBound) {
  std::mt19937 rng(9);
  struct Case { int m, t, nParity, n, tUse; };
  const Case cases[] = {{4, 2, -1, 15, -1}, {4, 3, -1, 12, -1}, {8, 4, 9, 60, -1},
                        {8, 8, -1, 255, -1}, {8, 6, -1, 100, 3}, {8, 4, 6, 40, -1}, {4, 1, 2, 5, -1}};
  for (int b0 : {0, 1}) {
    for (const Case& c : cases) {
      GF2m f = field(c.m);
      RSECC rs(&f, c.t, c.nParity, false, b0);
      const int limit = std::min(c.tUse < 0 ? c.t : c.tUse, c.nParity < 0 ? c.t : c.nParity / 2);
      for (int trial = 0; trial < 60; ++trial) {
        const int erasures = trial % (2 * limit + 1);
        const int errors = int(rng() % ((2 * limit - erasures) / 2 + 1));
        const V cw = randomCodeword(rs, f, c.n, rng);
        V where;
        V r = corrupt(cw, f, errors + erasures, rng, &where);
        if (erasures > 0) r[where[errors]] = cw[where[errors]];  // an erased symbol may be right
        V plain = r;
        const int* erased = where.data() + errors;
        ASSERT_EQ(rs.decodeErrorAndErasure(r.data(), c.n, erased, erasures, c.tUse, nullptr), 1);
        ASSERT_EQ(r, cw) << "t=" << c.t << " b0=" << b0 << " e=" << errors << " f=" << erasures;
        if (erasures > 0) continue;
        ASSERT_EQ(rs.decode(plain.data(), c.n, c.tUse, nullptr), 1);
        ASSERT_EQ(plain, cw);
      }
    }
  }
  // Erasure lists it cannot use (too long, outside the word) are refused, the
  // word untouched; tUse = 0 corrects nothing, and that still counts as success.
  GF2m f = field(4);
  RSECC rs(&f, 2, -1, false, 0);
  const V r = corrupt(randomCodeword(rs, f, 15, rng), f, 1, rng);
  for (const V& erased : {V{0, 1, 2, 3, 4}, V{15}, V{-1}}) {
    V w = r;
    EXPECT_EQ(rs.decodeErrorAndErasure(w.data(), 15, erased.data(), int(erased.size()), -1, nullptr), 0);
    EXPECT_EQ(w, r);
  }
  V w = r;
  EXPECT_EQ(rs.decode(w.data(), 15, 0, nullptr), 1);
  EXPECT_EQ(w, r);
}

TEST(RseccDecode, LocatorSearchesAgreeAndErasureFreePathEqualsDecode) {
  GF2m f = field(8);
  std::mt19937 rng(21);
  RSECC rs(&f, 5, -1, false, 1);
  const int n = 80, len = 11;
  for (int trial = 0; trial < 60; ++trial) {
    const V r = corrupt(randomCodeword(rs, f, n, rng), f, trial % 9, rng);
    V S(10);
    rs.syndromesCompute(r.data(), n, S.data(), 10);
    const int erasures[2] = {trial % n, (trial * 7 + 3) % n};
    for (int nEr : {0, 2}) {
      V l1(len), b1(len), l2(len), b2(len), roots1(len - 1), roots2(len - 1);
      int L1, L2, L1b, L2b, n1 = 0, n2 = 0;
      const int* s = S.data();
      const int ok1 = nEr ? rs.BM_EAE_inversionless(n, s, l1.data(), b1.data(), len, L1, L1b, 5, erasures, 2)
                          : rs.BM_inversionless(n, s, l1.data(), b1.data(), len, L1, L1b, 5);
      const int ok2 = nEr ? rs.BM_errorAndErasure(n, s, l2.data(), b2.data(), len, L2, L2b, 5, erasures, 2)
                          : rs.BM(n, s, l2.data(), b2.data(), len, L2, L2b, 5);
      EXPECT_EQ(std::make_tuple(ok1, L1, L1b), std::make_tuple(ok2, L2, L1));
      rs.chienSearch(l1.data(), len, roots1.data(), n1);
      rs.chienSearch(l2.data(), len, roots2.data(), n2);
      EXPECT_EQ(roots1, roots2) << trial;
    }
    V a = r, b = r;
    const int viaErasures = rs.decodeErrorAndErasure(b.data(), n, nullptr, 0, -1, nullptr);
    EXPECT_EQ(rs.decode(a.data(), n, -1, nullptr), viaErasures);
    EXPECT_EQ(a, b);
  }
}

// Beyond the bound decode either gives up with the word untouched (every
// root lies inside a full-length word) or lands on a codeword within t.
TEST(RseccDecode, TooManyErrorsFailCleanlyOrMiscorrectToACodeword) {
  std::mt19937 rng(4);
  for (int m : {4, 8}) {
    GF2m f = field(m);
    const int n = f.getN() - 1, t = m == 4 ? 2 : 4;
    RSECC rs(&f, t, -1, false, m == 4 ? 0 : 1);
    for (int trial = 0; trial < 200; ++trial) {
      const V r = corrupt(randomCodeword(rs, f, n, rng), f, t + 1 + trial % 3, rng);
      V w = r;
      if (rs.decode(w.data(), n, -1, nullptr) == 0) {
        EXPECT_EQ(w, r);
      } else {
        EXPECT_EQ(rs.isValidCodeword(w.data(), n), 1);
        EXPECT_LE(distance(w, r), t);
      }
    }
  }
}

TEST(RseccDecode, MaskedInputCorrectsTheUnmaskedWord) {
  GF2m f = field(8);
  std::mt19937 rng(2);
  RSECC rs(&f, 3, -1, true, 0);
  const V cw = randomCodeword(rs, f, 50, rng);
  V mask(50), sent(50);  // the stored word is the codeword plus the mask
  for (int i = 0; i < 50; ++i) sent[i] = f.add(cw[i], mask[i] = int(rng() % 256));
  V r = corrupt(sent, f, 3, rng);
  const V maskCopy = mask;
  EXPECT_EQ(rs.decode(r.data(), 50, -1, mask.data()), 1);
  EXPECT_EQ(r, sent);
  EXPECT_EQ(mask, maskCopy);
}

TEST(RseccDecode, ChienSearchAndValidityTests) {
  GF2m f = field(4);
  RSECC rs(&f, 2, 5, false, 0);
  int roots[4], nRoots = -1;
  const int xPlusOne[2] = {0, 0};
  rs.chienSearch(xPlusOne, 2, roots, nRoots);
  EXPECT_EQ(std::make_pair(nRoots, roots[0]), std::make_pair(1, 0));
  const int zeroPoly[3] = {15, 15, 15};
  for (int len : {3, 0}) {
    testing::internal::CaptureStdout();
    rs.chienSearch(zeroPoly, len, roots, nRoots);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "WARNING::All zero polynomial is passed to the Chien Search\n");
    EXPECT_EQ(nRoots, 0);
  }

  // One error of value alpha^5 at position 3: locator 1 + alpha^3 x, and
  // all five syndromes alpha^(5 + 3j) as the recurrence requires.
  V w(15, 15);
  w[15 - 1 - 3] = 5;
  const int right[2] = {3, 0}, wrong[2] = {4, 0};
  V S(5);
  rs.syndromesCompute(w.data(), 15, S.data(), 5);
  for (int j = 0; j < 5; ++j) EXPECT_EQ(S[j], (5 + 3 * j) % 15);
  V badS = S;
  badS[3] = f.add(badS[3], 0);
  // Method 2 re-encodes, method 1 only counts roots against nRoots.
  const V got = {rs.isValidErrorLocator(w.data(), 15, right, 2, 1, 2, 2),
                 rs.isValidErrorLocator(w.data(), 15, wrong, 2, 1, 2, 2),
                 rs.isValidErrorLocator(w.data(), 15, wrong, 2, 1, 2, 1),
                 rs.isValidErrorLocator(w.data(), 15, wrong, 2, 0, 2, 1),
                 rs.isValidErrorLocator(w.data(), 15, zeroPoly, 2, 1, 2, 1),
                 rs.isValidErrorLocator(right, 2, 2, S.data()),
                 rs.isValidErrorLocator(wrong, 2, 2, S.data()),
                 rs.fullValidityCheckErrorLocator(right, 2, S.data()),
                 rs.fullValidityCheckErrorLocator(right, 2, badS.data()),
                 rs.isValidSyndromes(S.data(), 2),
                 rs.isValidSyndromes(S.data(), 0),
                 rs.isValidSyndromes(zeroPoly, 1)};
  EXPECT_EQ(got, (V{1, 0, 1, 0, 0, 1, 0, 1, 0, 0, 1, 1}));
  V kept(5);
  rs.returnSyndromes(kept.data(), 5);
  EXPECT_EQ(kept, S);

  testing::internal::CaptureStdout();
  EXPECT_EQ(rs.isValidErrorLocator(w.data(), 15, right, 2, 1, 2, 3), 0);
  V longWord(16, 15);
  rs.syndromesCompute(longWord.data(), 16, S.data(), 5);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "WARNING:::RS_ECC::isValidErrorLocator: no valid method os cnosen to check the validity of error "
            "locator polynomial\nWarning: RSECC::syndromesCompute: invalid codeword size\n");
}

TEST(RseccDecodeDeathTest, FatalPaths) {
  GF2m f = field(4);
  RSECC rs(&f, 2, -1, false, 0);
  const int lambda[2] = {3, 0}, S[4] = {15, 15, 15, 15};
  int w[15] = {};
  EXPECT_EXIT_PRINTS(rs.isValidErrorLocator(lambda, 2, 2, S), 255,
                     "RSECC::isValidErrorLocator: Need to insert extra syndromes to run simplified error "
                     "locator poly validity test, exiting...\n");
  EXPECT_EXIT_PRINTS(rs.decodeErrorAndUnknownErasure(w, 15, 1, 2), 255,
                     "RSECC::decodeErrorAndUnknownErasure() has not been finished\n");
}

}  // namespace
