// Hard-error injection refuses more flips than the word has bits: with no
// free position left the distinct-position draw could never finish.
#include "bch_testutil.h"

namespace {

TEST(BchInjectLimit, MoreErrorsThanBitsIsFatal) {
  BCH code(&bchtest::gf16(), 15, 2, 1, 0);
  std::vector<int> in(15, 0), out(15, -1);
  long seed = -3;
  for (int numErrors : {16, 1 << 30})
    EXPECT_EXIT_PRINTS(code.injectHardErrors(in.data(), out.data(), numErrors, seed), 255,
                       "injectHardErrors: more errors than the word has bits.\n");
}

}  // namespace
