// Dense GF(2) and real matrices: the four-Russians elimination against a
// plain bit-by-bit Gaussian elimination (the reduced row echelon form is
// unique, so the two must agree exactly), algebraic identities, the
// systematic form and generator of rank-deficient matrices, and the BCH
// parity-check matrix against the codec's own encoder.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "Tools/mymatrix/bchParityCheck.h"
#include "Tools/mymatrix/binaryMatrix.h"
#include "Tools/mymatrix/realMatrix.h"
#include "bch/bch.h"
#include "gf/gf2m.h"
#include "support/fields.h"

using namespace tools;

namespace {

BinaryMatrix randomMatrix(size_t r, size_t c, double density, std::mt19937& rng) {
  std::bernoulli_distribution bit(density);
  BinaryMatrix m(r, c);
  for (size_t i = 0; i < r; ++i)
    for (size_t j = 0; j < c; ++j)
      if (bit(rng)) m.flip(i, j);
  return m;
}

// Plain Gauss-Jordan, one bit at a time.
BinaryMatrix referenceRref(BinaryMatrix m, size_t& rank) {
  rank = 0;
  for (size_t c = 0; c < m.cols() && rank < m.rows(); ++c) {
    size_t p = rank;
    while (p < m.rows() && !m.get(p, c)) ++p;
    if (p == m.rows()) continue;
    m.swapRows(p, rank);
    for (size_t i = 0; i < m.rows(); ++i)
      if (i != rank && m.get(i, c))
        for (size_t j = 0; j < m.cols(); ++j)
          if (m.get(rank, j)) m.flip(i, j);
    ++rank;
  }
  return m;
}

// Rank exactly k: X (r x k) and Y (k x c) random but for the unit vectors
// e_1..e_k placed in k random rows of X and k random columns of Y, so X has
// full column rank and Y full row rank.
BinaryMatrix knownRank(size_t r, size_t c, size_t k, double density, std::mt19937& rng) {
  BinaryMatrix x = randomMatrix(r, k, density, rng), y = randomMatrix(k, c, density, rng);
  std::vector<size_t> rows(r), cols(c);
  std::iota(rows.begin(), rows.end(), size_t{0});
  std::iota(cols.begin(), cols.end(), size_t{0});
  std::shuffle(rows.begin(), rows.end(), rng);
  std::shuffle(cols.begin(), cols.end(), rng);
  for (size_t i = 0; i < k; ++i)
    for (size_t j = 0; j < k; ++j) {
      x.set(rows[i], j, i == j);
      y.set(j, cols[i], i == j);
    }
  return x * y;
}

}  // namespace

TEST(BinaryMatrix, EliminationAgreesWithPlainGaussJordan) {
  std::mt19937 rng(7);
  struct Shape {
    size_t r, c;
    double density;
  };
  for (const Shape& s : {Shape{1, 1, 0.5}, {5, 130, 0.5}, {70, 70, 0.5}, {130, 64, 0.5}, {100, 300, 0.02},
                         {200, 150, 0.01}, {64, 65, 0.9}}) {
    const BinaryMatrix a = randomMatrix(s.r, s.c, s.density, rng);
    size_t rank = 0;
    const BinaryMatrix ref = referenceRref(a, rank);
    BinaryMatrix fast = a;
    const std::vector<size_t> pivots = fast.reduceRowEchelon();
    EXPECT_EQ(pivots.size(), rank);
    EXPECT_EQ(a.rank(), rank);
    EXPECT_TRUE(fast == ref) << s.r << "x" << s.c;
  }
}

TEST(BinaryMatrix, RankInverseSolveAndNullSpaceObeyTheirIdentities) {
  std::mt19937 rng(8);
  for (auto [r, c, k, density] : {std::tuple<size_t, size_t, size_t, double>{50, 80, 17, 0.5}, {200, 100, 64, 0.5},
                                  {300, 300, 150, 0.03}, {96, 96, 96, 0.5}}) {
    const BinaryMatrix a = knownRank(r, c, k, density, rng);
    ASSERT_EQ(a.rank(), k);
    const BinaryMatrix n = a.nullSpace();
    EXPECT_EQ(n.rows(), c - k);
    EXPECT_EQ(n.rank(), c - k);
    EXPECT_EQ((a * n.transposed()).weight(), 0u);
    const BinaryMatrix x = randomMatrix(c, 3, 0.5, rng), b = a * x;
    EXPECT_TRUE(a * a.solve(b) == b);
    if (r == c && k == r) {
      EXPECT_TRUE(a * a.inverse() == BinaryMatrix::identity(r));
      EXPECT_TRUE(a.inverse() * a == BinaryMatrix::identity(r));
    } else if (r == c) {
      EXPECT_THROW(a.inverse(), std::domain_error);
    }
    EXPECT_EQ(a.transposed().rank(), k);  // transposed() itself is pinned by a * N^T = 0 above
  }
  BinaryMatrix singular = BinaryMatrix::identity(4);
  singular.flip(3, 3);
  BinaryMatrix e3(4, 1);
  e3.flip(3, 0);
  EXPECT_THROW(singular.inverse(), std::domain_error);
  EXPECT_THROW(singular.solve(e3), std::domain_error);  // no solution
  EXPECT_THROW(BinaryMatrix(3, 4) * BinaryMatrix(3, 4), std::invalid_argument);
  EXPECT_THROW(BinaryMatrix(3, 4) + BinaryMatrix(4, 3), std::invalid_argument);
  EXPECT_THROW(BinaryMatrix(3, 4).inverse(), std::invalid_argument);
  EXPECT_THROW(BinaryMatrix(3, 4).solve(BinaryMatrix(4, 1)), std::invalid_argument);
}

TEST(BinaryMatrix, GeneratorOfAnyParityCheckMatrixSpansItsNullSpace) {
  std::mt19937 rng(9);
  for (auto [r, c, k] : {std::tuple<size_t, size_t, size_t>{20, 40, 20}, {30, 50, 12}, {10, 10, 4}, {8, 70, 8}}) {
    const BinaryMatrix h = knownRank(r, c, k, 0.3, rng);  // rank-deficient when k < r
    const SystematicForm f = systematicForm(h);
    ASSERT_EQ(f.rank(), k);
    EXPECT_EQ(f.G.rows(), c - k);
    EXPECT_EQ(f.G.rank(), c - k);
    EXPECT_EQ((f.G * h.transposed()).weight(), 0u);
    // The permuted reduced H is [A | I] and the permuted G is [I | A^T].
    for (size_t i = 0; i < k; ++i)
      for (size_t j = 0; j < k; ++j) EXPECT_EQ(f.H.get(i, f.permutation[c - k + j]), i == j);
    for (size_t t = 0; t < c - k; ++t)
      for (size_t u = 0; u < c - k; ++u) EXPECT_EQ(f.G.get(t, f.permutation[u]), t == u);
  }
}

TEST(BinaryMatrix, BchParityCheckAndItsGeneratorReproduceTheEncoder) {
  const auto computed = qfbtest::computedField(15);  // x^15 + x + 1
  GF2m& field = *computed;
  std::mt19937 rng(10);
  for (auto [k, t, b] : {std::tuple<int, int, int>{16, 1, 0}, {40, 1, 1}, {64, 3, 1}, {200, 8, 1}}) {
    BCH code(&field, 0, t, b, k);
    const size_t n = static_cast<size_t>(k + 15 * t + (b == 0));  // 15 parity bits per root coset, plus x + 1
    std::vector<int> msg(k), cw(n);
    const BinaryMatrix h = bchParityCheck(field, n, t, b);
    ASSERT_EQ(h.rows(), n - k) << "k " << k << " t " << t;
    for (size_t i = 0; i < n - k; ++i)  // systematic: [A | I]
      for (size_t j = 0; j < n - k; ++j) ASSERT_EQ(h.get(i, k + j), i == j);
    const SystematicForm f = systematicForm(h);
    ASSERT_EQ(f.G.rows(), static_cast<size_t>(k));
    EXPECT_EQ((f.G * h.transposed()).weight(), 0u);
    for (size_t j = 0; j < n; ++j) ASSERT_EQ(f.permutation[j], j);  // parity sits in the last columns
    for (int trial = 0; trial < 5; ++trial) {
      for (int& v : msg) v = static_cast<int>(rng() & 1);
      code.encode(msg.data(), cw.data());
      BinaryMatrix m(1, static_cast<size_t>(k));
      for (int i = 0; i < k; ++i) m.set(0, static_cast<size_t>(i), msg[i]);
      const BinaryMatrix c = m * f.G;
      for (size_t j = 0; j < n; ++j) ASSERT_EQ(c.get(0, j), cw[j] != 0) << "k " << k << " t " << t << " bit " << j;
    }
  }
  EXPECT_THROW(bchParityCheck(field, 40000, 2), std::invalid_argument);
}

TEST(RealMatrix, InverseSolveAndDeterminantWithPartialPivoting) {
  std::mt19937 rng(12);
  std::uniform_real_distribution<double> u(-1, 1);
  for (size_t n : {1, 2, 5, 30}) {
    // A = P L U with known factors: det A = sign(P) * prod diag(U).
    RealMatrix l = RealMatrix::identity(n), up(n, n);
    double det = 1;
    for (size_t i = 0; i < n; ++i)
      for (size_t j = 0; j < n; ++j) {
        if (j < i) l(i, j) = u(rng);
        if (j >= i) up(i, j) = j == i ? (u(rng) > 0 ? 1.5 : -0.75) : u(rng);
      }
    for (size_t i = 0; i < n; ++i) det *= up(i, i);
    RealMatrix a = l * up;
    if (n > 1) {  // swap the first two rows: the determinant changes sign
      for (size_t j = 0; j < n; ++j) std::swap(a(0, j), a(1, j));
      det = -det;
    }
    EXPECT_NEAR(a.determinant(), det, 1e-9 * std::fabs(det)) << n;
    EXPECT_LT((a * a.inverse()).maxAbsDifference(RealMatrix::identity(n)), 1e-9);
    RealMatrix x(n, 2);
    for (size_t i = 0; i < n; ++i) x(i, 0) = u(rng), x(i, 1) = u(rng);
    EXPECT_LT(a.solve(a * x).maxAbsDifference(x), 1e-9);
    EXPECT_LT((a * x).transposed().maxAbsDifference(x.transposed() * a.transposed()), 1e-12);
  }
  RealMatrix s(3, 3, 1.0);
  EXPECT_EQ(s.determinant(), 0.0);
  EXPECT_THROW(s.inverse(), std::domain_error);
  EXPECT_THROW(RealMatrix(1, 1).inverse(), std::domain_error);  // pivot 0 is not above n eps max|a| = 0
  EXPECT_THROW(s.solve(RealMatrix(3, 1)), std::domain_error);
  EXPECT_THROW(RealMatrix(2, 3) * RealMatrix(2, 3), std::invalid_argument);
  EXPECT_THROW(RealMatrix(2, 3).inverse(), std::invalid_argument);
}
