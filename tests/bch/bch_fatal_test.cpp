// Every fatal path of the code: message, stream and exit status.
#include <cstdio>

#include "bch_testutil.h"

namespace {

using V = std::vector<int>;

// A field whose products are off by one power of alpha: the generator it
// builds has coefficients outside GF(2).
struct SkewedField : GF2m {
  using GF2m::GF2m;
  int multiply(int a, int b) override { return GF2m::multiply(GF2m::multiply(a, b), 1); }
};

TEST(BchFatal, Construction) {
  GF2m& f = bchtest::gf16();
  EXPECT_EXIT_PRINTS(BCH(&f, 15, 1, 2, 0), 255, "only b=1 and b=0 are supported.\n");
  EXPECT_EXIT_PRINTS(BCH(&f, 15, 1, -1, 0), 255, "only b=1 and b=0 are supported.\n");
  EXPECT_EXIT_PRINTS(BCH(&f, 15, 2, 0, 0), 255, "b=0 only supported for t=1.\n");
  const int p[] = {1, 0, 0, 1, 1};
  SkewedField skewed(4, p, 4, static_cast<const char*>(nullptr));
  EXPECT_EXIT_PRINTS(BCH(&skewed, 15, 1, 1, 0), 255, "BCH constructor error!\n");
  // x^4 + x^3 + x^2 + x + 1 passes the field's checks but is not primitive:
  // its table is no field, and the generator built in it is not binary.
  const int notPrimitive[] = {1, 1, 1, 1, 1};
  GF2m broken(4, notPrimitive, 4, static_cast<const char*>(nullptr));
  EXPECT_EXIT_PRINTS(BCH(&broken, 15, 1, 1, 0), 255, "BCH constructor error!\n");
}

TEST(BchFatal, ReadBackBounds) {
  BCH code(&bchtest::gf16(), 15, 2, 1, 0);
  V out(9);
  code.returnSyndromes(out.data(), 8);
  code.returnLambda(out.data(), 5);
  EXPECT_EXIT_PRINTS(code.returnSyndromes(out.data(), 9), 255, "syndrome size cannot be greater than n-k\n");
  // Standard output is discarded: the message must arrive on standard error.
  EXPECT_EXIT(
      {
        if (!std::freopen("/dev/null", "w", stdout)) std::abort();
        code.returnLambda(out.data(), 6);
      },
      ::testing::ExitedWithCode(255), ::testing::Eq(std::string("lambda size cannot be greater than 2t+1.\n")));
}

TEST(BchFatal, SmallTLimits) {
  BCH t3(&bchtest::gf16(), 15, 3, 1, 0), even(&bchtest::gf16(), 15, 1, 0, 0);
  V in(15, 0), out(15);
  in[3] = 1;
  EXPECT_EXIT_PRINTS(t3.decodeForSmallT(in.data(), out.data(), 4), 255, "t>3 is not supported. \n");
  EXPECT_EXIT_PRINTS(t3.decodeForSmallT(in.data(), out.data(), -2), 255, "t>3 is not supported. \n");
  EXPECT_EXIT_PRINTS(even.decodeForSmallT(in.data(), out.data(), 2), 255, "decodeSmallT::b must be 1 for t>1\n");
  EXPECT_EXIT_PRINTS(even.decodeForSmallT(in.data(), out.data(), 4), 255, "decodeSmallT::b must be 1 for t>1\n");
}

}  // namespace
