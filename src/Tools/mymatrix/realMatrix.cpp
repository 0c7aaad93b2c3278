#include "Tools/mymatrix/realMatrix.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

namespace tools {

namespace {

[[noreturn]] void mismatch(const char* op, const RealMatrix& a, const RealMatrix& b) {
  throw std::invalid_argument(std::string(op) + ": " + std::to_string(a.rows()) + "x" + std::to_string(a.cols()) +
                              " and " + std::to_string(b.rows()) + "x" + std::to_string(b.cols()) +
                              " do not fit");
}

}  // namespace

// P A = L U, packed: U on and above the diagonal, L (unit diagonal) below.
struct RealMatrix::Lu {
  RealMatrix lu;
  std::vector<size_t> perm;  // row i of P A is row perm[i] of A
  int sign = 1;              // determinant of P
  bool singular = false;
};

RealMatrix RealMatrix::identity(size_t n) {
  RealMatrix I(n, n);
  for (size_t i = 0; i < n; ++i) I(i, i) = 1.0;
  return I;
}

RealMatrix RealMatrix::operator*(const RealMatrix& o) const {
  if (cols_ != o.rows_) mismatch("RealMatrix *", *this, o);
  RealMatrix p(rows_, o.cols_);
  for (size_t i = 0; i < rows_; ++i)
    for (size_t k = 0; k < cols_; ++k) {
      const double a = (*this)(i, k);
      if (a == 0.0) continue;
      for (size_t j = 0; j < o.cols_; ++j) p(i, j) += a * o(k, j);
    }
  return p;
}

RealMatrix RealMatrix::transposed() const {
  RealMatrix t(cols_, rows_);
  for (size_t r = 0; r < rows_; ++r)
    for (size_t c = 0; c < cols_; ++c) t(c, r) = (*this)(r, c);
  return t;
}

RealMatrix::Lu RealMatrix::factor() const {
  if (rows_ != cols_) mismatch("RealMatrix (square only)", *this, *this);
  const size_t n = rows_;
  Lu f{*this, std::vector<size_t>(n), 1, false};
  for (size_t i = 0; i < n; ++i) f.perm[i] = i;
  double scale = 0.0;
  for (double v : a_) scale = std::max(scale, std::fabs(v));
  const double tiny = static_cast<double>(n) * std::numeric_limits<double>::epsilon() * scale;
  RealMatrix& m = f.lu;
  for (size_t k = 0; k < n; ++k) {
    size_t p = k;
    for (size_t i = k + 1; i < n; ++i)
      if (std::fabs(m(i, k)) > std::fabs(m(p, k))) p = i;
    if (!(std::fabs(m(p, k)) > tiny)) {
      f.singular = true;
      return f;
    }
    if (p != k) {
      for (size_t j = 0; j < n; ++j) std::swap(m(p, j), m(k, j));
      std::swap(f.perm[p], f.perm[k]);
      f.sign = -f.sign;
    }
    for (size_t i = k + 1; i < n; ++i) {
      const double l = m(i, k) / m(k, k);
      m(i, k) = l;
      for (size_t j = k + 1; j < n; ++j) m(i, j) -= l * m(k, j);
    }
  }
  return f;
}

RealMatrix RealMatrix::solve(const RealMatrix& b) const {
  if (b.rows_ != rows_) mismatch("RealMatrix::solve", *this, b);
  const Lu f = factor();
  if (f.singular) throw std::domain_error("RealMatrix::solve: the matrix is singular");
  const size_t n = rows_;
  RealMatrix x(n, b.cols_);
  for (size_t c = 0; c < b.cols_; ++c) {
    for (size_t i = 0; i < n; ++i) {  // L y = P b
      double s = b(f.perm[i], c);
      for (size_t j = 0; j < i; ++j) s -= f.lu(i, j) * x(j, c);
      x(i, c) = s;
    }
    for (size_t i = n; i-- > 0;) {  // U x = y
      double s = x(i, c);
      for (size_t j = i + 1; j < n; ++j) s -= f.lu(i, j) * x(j, c);
      x(i, c) = s / f.lu(i, i);
    }
  }
  return x;
}

RealMatrix RealMatrix::inverse() const {
  if (rows_ != cols_) mismatch("RealMatrix::inverse", *this, *this);
  try {
    return solve(identity(rows_));
  } catch (const std::domain_error&) {
    throw std::domain_error("RealMatrix::inverse: the matrix is singular");
  }
}

double RealMatrix::determinant() const {
  const Lu f = factor();
  if (f.singular) return 0.0;
  double d = f.sign;
  for (size_t i = 0; i < rows_; ++i) d *= f.lu(i, i);
  return d;
}

double RealMatrix::maxAbsDifference(const RealMatrix& o) const {
  if (rows_ != o.rows_ || cols_ != o.cols_) mismatch("RealMatrix::maxAbsDifference", *this, o);
  double d = 0.0;
  for (size_t i = 0; i < a_.size(); ++i) d = std::max(d, std::fabs(a_[i] - o.a_[i]));
  return d;
}

}  // namespace tools
