// The carry-less Berlekamp-Massey iteration against the logarithm-table one:
// identical locators, all 2t + 1 coefficients, on random syndrome sequences
// (with and without S_2i = S_i^2, the binary shortcut), on sparse ones that
// leave the discrepancy zero for many steps, and with a lowered tLimit, for
// t up to the largest the registers hold, in two fields.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "bch/berlekampMassey.h"
#include "bch/fieldTables.h"
#include "bch_testutil.h"

namespace {

TEST(BerlekampMasseyLevels, CarrylessIterationGivesTheTableIterationsLocator) {
  std::mt19937 rng(11);
  for (GF2m* gf : {&bchtest::gf16(), &bchtest::gf32768()}) {
    const FieldTables field(gf);
    for (int t : {1, 2, 3, 8, 40, 72, 127}) {
      if (!ClmulMassey::supports(field, t, KernelLevel::VectorClmul)) GTEST_SKIP() << "no VPCLMULQDQ here";
      BerlekampMassey table(field, t), carryless(field, t, KernelLevel::VectorClmul);
      std::vector<uint16_t> S(2 * t), expected(2 * t + 1), got(2 * t + 1);
      for (int round = 0; round < 60; ++round) {
        const bool squared = round % 2 == 1, sparse = round % 3 == 2;
        for (int j = 0; j < 2 * t; ++j) {
          const bool zero = sparse && rng() % 8 != 0;
          S[j] = squared && j % 2 == 1 ? field.mul(S[j / 2], S[j / 2])
                                       : static_cast<uint16_t>(zero ? 0 : rng() % (field.order() + 1));
        }
        const int tLimit = round % 5 == 4 ? t / 2 : -1;
        table.locator(S.data(), tLimit, expected.data(), squared);
        carryless.locator(S.data(), tLimit, got.data(), squared);
        ASSERT_EQ(got, expected) << "m " << field.m() << " t " << t << " round " << round;
      }
    }
  }
}

}  // namespace
