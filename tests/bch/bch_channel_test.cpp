// Hard-error injection, replayed against ran1 drawn directly, and its limit (the decoders,
// the Reed-Solomon mode included, are compared with the plain reference in
// the differential test).
#include <cmath>
#include <set>

#include "bch_testutil.h"
#include "randgen/classicGenerators.h"

namespace {

using V = std::vector<int>;

TEST(BchChannel, InjectHardErrorsFlipsDistinctDrawnPositions) {
  BCH code(&bchtest::gf32768(), 0, 8, 1, 4096);
  const int n = 4216;
  V in(n);
  for (int i = 0; i < n; ++i) in[i] = (i * 7) % 3 == 0;
  for (int numErrors : {1, 9, 200}) {
    long replay = -1;  // a seed <= 0 restarts ran1's table, so both runs start alike
    std::set<int> expected;
    while (static_cast<int>(expected.size()) < numErrors)
      expected.insert(static_cast<int>(std::floor(ran1(&replay) * n)));
    long seed = -1;
    V out(n, -1);
    code.injectHardErrors(in.data(), out.data(), numErrors, seed);
    V flipped = in;
    for (int p : expected) flipped[p] ^= 1;
    EXPECT_EQ(out, flipped);
    EXPECT_EQ(seed, replay);
  }
  // All of a short word; and nothing, without touching the seed.
  BCH small(&bchtest::gf16(), 15, 2, 1, 0);
  V zeros(15, 0), out(15, -1);
  long seed = -3;
  small.injectHardErrors(zeros.data(), out.data(), 15, seed);
  EXPECT_EQ(out, V(15, 1));
  const long before = seed;
  small.injectHardErrors(zeros.data(), out.data(), 0, seed);
  EXPECT_EQ(out, zeros);
  EXPECT_EQ(seed, before);
  // More flips than bits: the distinct-position draw could never finish.
  for (int numErrors : {16, 1 << 30})
    EXPECT_EXIT_PRINTS(small.injectHardErrors(zeros.data(), out.data(), numErrors, seed), 255,
                       "injectHardErrors: more errors than the word has bits.\n");
}

}  // namespace
