// Dense matrices over GF(2), each row packed into 64-bit words (bit c of a
// row is bit c mod 64 of word c / 64; bits past the last column are always
// zero, an invariant every operation keeps).
//
// Elimination is word-parallel and uses the "method of four Russians"
// (M4RI; V. L. Arlazarov, E. A. Dinic, M. A. Kronrod, I. A. Faradzev, 1970;
// G. V. Bard, "Algebraic Cryptanalysis", Springer 2009, ch. 9): up to eight
// pivot rows are found and reduced against each other, the 256 XOR
// combinations of them are tabulated, and every other row is then cleared
// in all eight pivot columns with a single table lookup and one row XOR
// instead of up to eight.
//
// Dimension mismatches throw std::invalid_argument; a singular matrix given
// to inverse() or solve() throws std::domain_error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tools {

class BinaryMatrix {
 public:
  BinaryMatrix() = default;
  BinaryMatrix(size_t rows, size_t cols);
  static BinaryMatrix identity(size_t n);

  size_t rows() const { return rows_; }
  size_t cols() const { return cols_; }
  size_t wordsPerRow() const { return words_; }
  bool get(size_t r, size_t c) const { return (row(r)[c / 64] >> (c % 64)) & 1; }
  void set(size_t r, size_t c, bool v);
  void flip(size_t r, size_t c) { row(r)[c / 64] ^= uint64_t{1} << (c % 64); }
  uint64_t* row(size_t r) { return bits_.data() + r * words_; }
  const uint64_t* row(size_t r) const { return bits_.data() + r * words_; }
  void swapRows(size_t a, size_t b);
  size_t weight() const;
  bool operator==(const BinaryMatrix& o) const {
    return rows_ == o.rows_ && cols_ == o.cols_ && bits_ == o.bits_;
  }
  bool operator!=(const BinaryMatrix& o) const { return !(*this == o); }

  BinaryMatrix operator+(const BinaryMatrix& o) const;
  BinaryMatrix operator*(const BinaryMatrix& o) const;
  BinaryMatrix transposed() const;
  // Columns [first, first + count) as a new matrix.
  BinaryMatrix columns(size_t first, size_t count) const;
  // [this | o], rows must agree.
  BinaryMatrix besides(const BinaryMatrix& o) const;

  size_t rank() const;
  // Reduced row echelon form in place; returns the pivot column of each of
  // the first rank() rows (the remaining rows become zero).
  std::vector<size_t> reduceRowEchelon();
  BinaryMatrix inverse() const;
  // x with A x = b (b: rows() x k, one right-hand side per column); for a
  // singular square or a non-square A, a particular solution when one
  // exists (free variables zero), else std::domain_error.
  BinaryMatrix solve(const BinaryMatrix& b) const;
  // Rows span { x : A x = 0 }: (cols - rank) x cols.
  BinaryMatrix nullSpace() const;

  // Text: one line per row of '0' / '1'.
  std::string toString() const;

 private:
  std::vector<size_t> eliminate(bool full);
  size_t rows_ = 0, cols_ = 0, words_ = 0;
  std::vector<uint64_t> bits_;
};

// A parity-check matrix brought to systematic form.
//   H: the reduced rows (rank r), with an identity in the r check columns;
//   checkColumns[i]: the column of the 1 of row i;
//   infoColumns: the other n - r columns, increasing;
//   permutation: infoColumns followed by checkColumns, so that column j of
//     H permuted is column permutation[j] of the input and H permuted is
//     [A | I_r];
//   G: the (n - r) x n generator in the input's column order, G H^T = 0,
//     with row t the codeword holding a single 1 among the information bits,
//     at infoColumns[t]: a message m is encoded as the codeword m G, whose
//     bits at infoColumns are m.
// Check columns are chosen as far right as possible, so a parity-check
// matrix whose last r columns are independent keeps its columns in place
// (permutation is the identity) and G = [I | P].
struct SystematicForm {
  BinaryMatrix H;
  BinaryMatrix G;
  std::vector<size_t> checkColumns, infoColumns, permutation;
  size_t rank() const { return checkColumns.size(); }
};
SystematicForm systematicForm(const BinaryMatrix& H);
// Just the reduced rows of H with their identity columns as far right as
// possible (SystematicForm::H); checkColumns, when given, receives them.
BinaryMatrix rightmostEchelon(const BinaryMatrix& H, std::vector<size_t>* checkColumns = nullptr);

}  // namespace tools
