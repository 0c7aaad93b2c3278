// Sparse binary matrices, the usual form of LDPC parity-check matrices: the
// positions of the ones, kept both by row and by column (sorted), which is
// the Tanner graph's adjacency (row i = check node i, column j = variable
// node j).
#pragma once

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "Tools/mymatrix/binaryMatrix.h"

namespace tools {

class SparseBinaryMatrix {
 public:
  SparseBinaryMatrix() = default;
  // Throws std::invalid_argument for an entry out of range or given twice.
  SparseBinaryMatrix(size_t rows, size_t cols, const std::vector<std::pair<size_t, size_t>>& ones);
  static SparseBinaryMatrix fromDense(const BinaryMatrix& d);
  BinaryMatrix toDense() const;

  size_t rows() const { return rowLists_.size(); }
  size_t cols() const { return colLists_.size(); }
  size_t ones() const { return ones_; }
  const std::vector<size_t>& row(size_t r) const { return rowLists_[r]; }
  const std::vector<size_t>& col(size_t c) const { return colLists_[c]; }
  bool operator==(const SparseBinaryMatrix& o) const { return rowLists_ == o.rowLists_ && colLists_ == o.colLists_; }

  // Node-perspective degree distributions: degree -> number of nodes.
  std::map<size_t, size_t> columnDegrees() const;
  std::map<size_t, size_t> rowDegrees() const;

 private:
  std::vector<std::vector<size_t>> rowLists_, colLists_;
  size_t ones_ = 0;
};

// The quasi-cyclic matrix of a base matrix of circulant shifts: entry
// base[i][j] = s >= 0 puts a z x z identity cyclically shifted by s at block
// (i, j), so row i*z + k has a one in column j*z + (k + s) mod z; -1 puts a
// zero block. Shifts of z or more, or below -1, are std::invalid_argument.
SparseBinaryMatrix quasiCyclic(const std::vector<std::vector<int>>& base, size_t z);

}  // namespace tools
