// Field-generic arithmetic of GF: everything here reaches the concrete field
// only through add(), multiply() and the conversion tables.
#include "gf/gf.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <vector>

GF::~GF() = default;

int GF::add(int a, int /*b*/) { return a; }

int GF::multiply(int a, int /*b*/) { return a; }

void GF::getExp2Components(int** /*components*/, int /*rows*/, int /*cols*/) {}

void GF::getExp2IntConversionTable(int* dst, int /*size*/) const {
  std::copy(exp2IntTable.get(), exp2IntTable.get() + N, dst);
}

void GF::getInt2ExpConversionTable(int* dst, int /*size*/) const {
  std::copy(int2ExpTable.get(), int2ExpTable.get() + N, dst);
}

void GF::getPP(int* dst, int deg) const { std::copy(PP.get(), PP.get() + deg + 1, dst); }

int GF::multInverse(int a) const { return (N - 1 - a) % (N - 1); }

int GF::power(int a, int e) const {
  if (a == getZero()) return e != 0 ? getZero() : getOne();
  // Signed 32-bit product, as the exponent arithmetic has always been done;
  // the wrap on overflow is computed in unsigned arithmetic to stay defined.
  const int32_t product = static_cast<int32_t>(static_cast<uint32_t>(e) * static_cast<uint32_t>(a));
  return product % (N - 1);
}

void GF::polyMult(const int* a, int degA, const int* b, int degB, int* prod, int degProduct) {
  if (degA + degB != degProduct) {
    std::cout << "GF::polyMult: incorrect value for degProduct variable" << std::endl;
    std::exit(-1);
  }
  for (int k = 0; k <= degProduct; ++k) {
    prod[k] = getZero();
    for (int i = std::max(k - degB, 0); i <= std::min(k, degA); ++i)
      prod[k] = add(prod[k], multiply(a[i], b[k - i]));
  }
}

void GF::polyAdd(const int* a, int degA, const int* b, int degB, int* sum, int& degSum) {
  if (degA < degB) {
    std::copy(b, b + degB + 1, sum);
    for (int i = 0; i <= degA; ++i) sum[degB - degA + i] = add(sum[degB - degA + i], a[i]);
    degSum = degB;
  } else {
    std::copy(a, a + degA + 1, sum);
    for (int i = 0; i <= degB; ++i) sum[degA - degB + i] = add(sum[degA - degB + i], b[i]);
    degSum = degA;
  }
  if (degA != degB) return;
  for (int i = 0; i <= degA && sum[i] == getZero(); ++i) --degSum;
  if (degSum >= 0 && degSum < degA) std::copy(sum + degA - degSum, sum + degA + 1, sum);
}

int GF::divisionStep(int* rem, const int* p, int degP, int next) {
  // A constant divisor has an empty register: every incoming coefficient is
  // itself the lead to divide out.
  if (degP == 0) return next == getZero() ? getZero() : multiply(next, multInverse(p[0]));
  const int lead = rem[0];
  std::copy(rem + 1, rem + degP, rem);
  rem[degP - 1] = next;
  if (lead == getZero()) return getZero();
  const int c = multiply(lead, multInverse(p[0]));
  for (int j = 0; j < degP; ++j) rem[j] = add(rem[j], multiply(p[j + 1], c));
  return c;
}

void GF::findRemainder(const int* a, int degA, const int* p, int degP, int* rem) {
  if (degP <= degA) {
    std::copy(a, a + degP, rem);
    for (int k = degP; k <= degA; ++k) divisionStep(rem, p, degP, a[k]);
    return;
  }
  std::fill(rem, rem + degP, getZero());
  for (int i = 0; i <= degA; ++i) rem[degP - 1 - i] = a[degA - i];
}

void GF::longDivision(const int* a, int degA, const int* p, int degP, int* quot, int degQ, int* rem,
                      int /*unused*/) {
  std::fill(quot, quot + degQ + 1, getZero());
  if (degP <= degA) {
    std::copy(a, a + degP, rem);
    for (int k = degP; k <= degA; ++k) {
      const int c = divisionStep(rem, p, degP, a[k]);
      if (degQ >= 0) {
        std::copy(quot + 1, quot + degQ + 1, quot);
        quot[degQ] = c;
      }
    }
    return;
  }
  // The dividend is shorter than the divisor: it is its own remainder. Only
  // its own positions are written; the rest of rem is the caller's.
  for (int i = 0; i <= degA; ++i) rem[degP - 1 - i] = a[degA - i];
}

int GF::evaluatePoly(const int* poly, int count, int x) {
  int result = getZero();
  for (int i = 0; i < count; ++i) result = add(result, multiply(poly[i], power(x, count - 1 - i)));
  return result;
}

void GF::derivative(const int* poly, int deg, int* out) {
  // The coefficient of x^(deg-i-1) gains the integer factor (deg - i), which
  // in characteristic 2 is one when odd and zero when even; it is formed by
  // repeated addition so that it holds for any subclass's add().
  for (int i = 0; i < deg; ++i) {
    int c = getZero();
    for (int r = 0; r < deg - i; ++r) c = add(c, getOne());
    out[i] = multiply(poly[i], c);
  }
}

int GF::isInvertible(int** M, int rows, int cols) {
  std::vector<int> scratch(static_cast<size_t>(std::max(cols, 0)));
  if (rows != cols) {
    std::cout << "GF::isInvertible: non-square matrices are not invertible" << std::endl;
    std::exit(-1);
  }
  const int n = rows;
  for (int i = 0; i < n - 1; ++i) {
    if (M[i][i] == getZero()) {
      int r = i + 1;
      while (r < n && M[r][i] == getZero()) ++r;
      if (r == n) return 0;
      std::copy(M[i], M[i] + n, scratch.data());
      std::copy(M[r], M[r] + n, M[i]);
      std::copy(scratch.data(), scratch.data() + n, M[r]);
    }
    for (int r = i + 1; r < n; ++r) {
      if (M[r][i] == getZero()) continue;
      const int f = multiply(M[i][i], multInverse(M[r][i]));
      for (int c = 0; c < n; ++c) M[r][c] = add(M[i][c], multiply(M[r][c], f));
    }
  }
  return M[n - 1][n - 1] != getZero() ? 1 : 0;
}

int GF::irreducible(const int* poly, int deg) {
  for (int x = 0; x <= N - 2; ++x)
    if (evaluatePoly(poly, deg + 1, x) == getZero()) return 0;
  return 1;
}

int GF::primitive(const int* poly, int deg) {
  // poly is primitive when x^k + 1 leaves a non-zero remainder for every
  // k = deg+1 .. L-1, with L = 2^(deg*m) - 1.
  //
  // Dividing each x^k + 1 afresh costs O(L^2 deg). The remainder register is
  // linear in the dividend and the dividend x^(k+1) is x^k followed by one
  // more zero coefficient, so the register for x^(k+1) is one more division
  // step applied to the register for x^k. The trailing "+ 1" enters as the
  // last coefficient and is added to the last register entry without further
  // reduction, so x^k + 1 leaves remainder zero exactly when the register
  // for x^k holds (0, ..., 0, one). The answers are those of the plain test.
  if (deg < 1) return 1;
  const int64_t bits = static_cast<int64_t>(deg) * m;
  if (bits >= 62) return 1;  // no search of that size can finish
  const int64_t L = (int64_t(1) << bits) - 1;
  std::vector<int> rem(static_cast<size_t>(deg), getZero());
  rem[0] = getOne();  // the first deg coefficients of every x^k with k >= deg
  divisionStep(rem.data(), poly, deg, getZero());  // register of x^deg
  for (int64_t k = deg + 1; k <= L - 1; ++k) {
    divisionStep(rem.data(), poly, deg, getZero());
    if (rem[deg - 1] != getOne()) continue;
    if (std::all_of(rem.begin(), rem.end() - 1, [&](int v) { return v == getZero(); })) return 0;
  }
  return 1;
}

void GF::printAdditionTable() {
  for (int i = 0; i < N; ++i) {
    for (int j = 0; j < N; ++j) std::cout << add(i, j) << "  ";
    std::cout << "\n";
  }
  std::cout.flush();
}

void GF::printMultiplicationTable() {
  for (int i = 0; i < N; ++i) {
    for (int j = 0; j < N; ++j) std::cout << multiply(i, j) << "  ";
    std::cout << "\n";
  }
  std::cout.flush();
}
