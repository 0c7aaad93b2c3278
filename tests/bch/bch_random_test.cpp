// Randomised round trips over GF(2^15): encode, corrupt, decode, with every
// codeword judged by the independent root check of bch_testutil.h.
#include <functional>

#include "bch_testutil.h"

namespace {

using bchtest::Probe;
using bchtest::randomBits;
using bchtest::withErrors;
using V = std::vector<int>;


struct Config { int k, t, b, tLimit; };

// Within the bound both decoders (the small-t solver too, for t <= 3) must
// restore the codeword; beyond it a decoder either gives up or lands on a
// codeword within the limit of the received word.
TEST(BchRandom, RoundTripsAndBeyondTheBound) {
  const Config configs[] = {{4096, 8, 1, -1}, {1001, 3, 1, -1}, {333, 24, 1, -1}, {2053, 1, 1, -1}, {523, 40, 1, -1},
                            {777, 1, 0, -1},  {1500, 8, 1, 3},  {1003, 2, 1, -1}, {2000, 3, 1, 2}};
  std::mt19937 rng(2024);
  GF2m& f = bchtest::gf32768();
  for (const Config& c : configs) {
    Probe code(&f, 0, c.t, c.b, c.k);
    const int limit = c.tLimit < 0 ? c.t : c.tLimit;
    for (int errors = 0; errors <= limit + 3; ++errors)
      for (int trial = 0; trial < 3; ++trial) {
        SCOPED_TRACE(::testing::Message() << "k=" << c.k << " t=" << c.t << " errors=" << errors);
        const V msg = randomBits(rng, c.k);
        V cw(code.n), parity(code.n - code.k);
        code.encode(V(msg).data(), cw.data());
        code.encode_parity(msg.data(), parity.data());
        ASSERT_TRUE(std::equal(msg.begin(), msg.end(), cw.begin()));
        ASSERT_TRUE(std::equal(parity.begin(), parity.end(), cw.begin() + c.k));
        ASSERT_TRUE(bchtest::hasRoots(f, cw, c.b, 2 * c.t));

        const V in = withErrors(rng, cw, errors);
        V out(code.n, -1);
        const int result = code.decodeBCH(V(in).data(), out.data(), c.tLimit);
        if (errors <= limit) {
          ASSERT_EQ(result, 1);
          ASSERT_EQ(out, cw);
          V lambda(2 * c.t + 1);
          code.returnLambda(lambda.data(), 2 * c.t + 1);
          int degree = 2 * c.t;
          while (degree >= 0 && lambda[degree] == f.getZero()) --degree;
          ASSERT_EQ(degree, errors == 0 ? -1 : errors);
          // The direct small-t solver corrects the same words.
          if (c.t <= 3) {
            V direct(code.n, -1);
            ASSERT_EQ(code.decodeForSmallT(V(in).data(), direct.data(), c.tLimit), 1);
            ASSERT_EQ(direct, cw);
          }
        } else if (result == 0) {
          ASSERT_EQ(out, in);
        } else {
          ASSERT_TRUE(bchtest::hasRoots(f, out, c.b, 2 * c.t));
          ASSERT_LE(std::inner_product(out.begin(), out.end(), in.begin(), 0, std::plus<>(), std::not_equal_to<>()),
                    limit);
        }
      }
  }
}

}  // namespace
