// Hard-error injection, replayed against ran1 drawn directly, and decoding
// through the owned Reed-Solomon code.
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
}

TEST(BchChannel, DecodeRSWorksOnSymbolsZeroAndOne) {
  bchtest::Probe code(&bchtest::gf16(), 15, 2, 1, 0);
  // (x + 1) c(x), for a codeword c of degree below 14, vanishes at alpha^0 ..
  // alpha^3: the roots of the Reed-Solomon code with 2t = 4 parity symbols.
  V msg = {0, 1, 1, 0, 1, 0, 1}, cw(15), word(15);
  code.encode(msg.data(), cw.data());
  for (int i = 0; i < 15; ++i) word[i] = cw[i] ^ (i + 1 < 15 ? cw[i + 1] : 0);
  ASSERT_TRUE(bchtest::hasRoots(bchtest::gf16(), word, 0, 4));

  // Syndromes, locator and parity member, which the RS decoder leaves alone.
  auto state = [&] {
    V s(10);
    code.returnSyndromes(s.data(), 4);
    code.returnLambda(s.data() + 4, 5);
    s[9] = code.parity;
    return s;
  };
  V received = cw, out(15);
  received[2] ^= 1;
  code.decodeBCH(received.data(), out.data(), -1);
  const V before = state();

  struct Case { V flips; int twos; int tLimit; int result; V out; };
  const Case cases[] = {
      {{}, -1, -1, 1, word},
      {{4}, -1, -1, 1, word},
      {{0, 13}, -1, -1, 1, word},
      {{}, 1, 0, 1, word},       // 2 is not a one bit: it enters, and leaves, as 0
      {{6, 9}, -1, 0, 1, {}},    // limit 0: no decoding
  };
  for (const Case& c : cases) {
    V in = word;
    for (int i : c.flips) in[i] ^= 1;
    if (c.twos >= 0) in[c.twos] = 2;
    EXPECT_EQ(code.decode(in.data(), out.data(), true, c.tLimit), c.result);
    EXPECT_EQ(out, c.out.empty() ? in : c.out);
  }
  EXPECT_EQ(state(), before);
}

}  // namespace
