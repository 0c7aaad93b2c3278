// Dense real matrices (row-major doubles): product, transpose, and the
// LU factorisation with partial pivoting (Doolittle; G. H. Golub and C. F.
// Van Loan, "Matrix Computations", 4th ed., alg. 3.4.1) behind inverse,
// solve and determinant. Partial pivoting bounds the growth of the entries
// by 2^(n-1) in theory and keeps it small in practice.
//
// A pivot of magnitude at most n * eps * max|a_ij| counts as zero: inverse
// and solve throw std::domain_error for such (numerically) singular
// matrices, determinant returns 0. Dimension mismatches throw
// std::invalid_argument.
#pragma once

#include <cstddef>
#include <vector>

namespace tools {

class RealMatrix {
 public:
  RealMatrix() = default;
  RealMatrix(size_t rows, size_t cols, double fill = 0.0) : rows_(rows), cols_(cols), a_(rows * cols, fill) {}
  static RealMatrix identity(size_t n);

  size_t rows() const { return rows_; }
  size_t cols() const { return cols_; }
  double& operator()(size_t r, size_t c) { return a_[r * cols_ + c]; }
  double operator()(size_t r, size_t c) const { return a_[r * cols_ + c]; }

  RealMatrix operator*(const RealMatrix& o) const;
  RealMatrix transposed() const;
  RealMatrix inverse() const;
  // x with A x = b for square non-singular A; b has one column per system.
  RealMatrix solve(const RealMatrix& b) const;
  double determinant() const;
  // Largest |a_ij - b_ij|; the shapes must agree.
  double maxAbsDifference(const RealMatrix& o) const;

 private:
  struct Lu;
  Lu factor() const;
  size_t rows_ = 0, cols_ = 0;
  std::vector<double> a_;
};

}  // namespace tools
