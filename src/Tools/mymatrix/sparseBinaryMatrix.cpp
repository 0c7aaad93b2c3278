#include "Tools/mymatrix/sparseBinaryMatrix.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace tools {

SparseBinaryMatrix::SparseBinaryMatrix(size_t rows, size_t cols, const std::vector<std::pair<size_t, size_t>>& ones)
    : rowLists_(rows), colLists_(cols), ones_(ones.size()) {
  for (const auto& [r, c] : ones) {
    if (r >= rows || c >= cols)
      throw std::invalid_argument("SparseBinaryMatrix: entry (" + std::to_string(r) + ", " + std::to_string(c) +
                                  ") is outside " + std::to_string(rows) + "x" + std::to_string(cols));
    rowLists_[r].push_back(c);
    colLists_[c].push_back(r);
  }
  for (size_t r = 0; r < rows; ++r) {
    auto& l = rowLists_[r];
    std::sort(l.begin(), l.end());
    const auto dup = std::adjacent_find(l.begin(), l.end());
    if (dup != l.end())
      throw std::invalid_argument("SparseBinaryMatrix: entry (" + std::to_string(r) + ", " + std::to_string(*dup) +
                                  ") is given twice");
  }
  for (auto& l : colLists_) std::sort(l.begin(), l.end());
}

SparseBinaryMatrix SparseBinaryMatrix::fromDense(const BinaryMatrix& d) {
  std::vector<std::pair<size_t, size_t>> ones;
  for (size_t r = 0; r < d.rows(); ++r)
    for (size_t c = 0; c < d.cols(); ++c)
      if (d.get(r, c)) ones.emplace_back(r, c);
  return SparseBinaryMatrix(d.rows(), d.cols(), ones);
}

BinaryMatrix SparseBinaryMatrix::toDense() const {
  BinaryMatrix d(rows(), cols());
  for (size_t r = 0; r < rows(); ++r)
    for (size_t c : rowLists_[r]) d.flip(r, c);
  return d;
}

std::map<size_t, size_t> SparseBinaryMatrix::columnDegrees() const {
  std::map<size_t, size_t> d;
  for (const auto& l : colLists_) ++d[l.size()];
  return d;
}

std::map<size_t, size_t> SparseBinaryMatrix::rowDegrees() const {
  std::map<size_t, size_t> d;
  for (const auto& l : rowLists_) ++d[l.size()];
  return d;
}

SparseBinaryMatrix quasiCyclic(const std::vector<std::vector<int>>& base, size_t z) {
  if (z == 0) throw std::invalid_argument("quasiCyclic: circulant size 0");
  const size_t mb = base.size(), nb = mb == 0 ? 0 : base[0].size();
  std::vector<std::pair<size_t, size_t>> ones;
  for (size_t i = 0; i < mb; ++i) {
    if (base[i].size() != nb)
      throw std::invalid_argument("quasiCyclic: base row " + std::to_string(i) + " has " +
                                  std::to_string(base[i].size()) + " entries, row 0 has " + std::to_string(nb));
    for (size_t j = 0; j < nb; ++j) {
      const int s = base[i][j];
      if (s < -1 || (s >= 0 && static_cast<size_t>(s) >= z))
        throw std::invalid_argument("quasiCyclic: shift " + std::to_string(s) + " at (" + std::to_string(i) + ", " +
                                    std::to_string(j) + ") is outside -1 .. " + std::to_string(z - 1));
      if (s < 0) continue;
      for (size_t k = 0; k < z; ++k) ones.emplace_back(i * z + k, j * z + (k + static_cast<size_t>(s)) % z);
    }
  }
  return SparseBinaryMatrix(mb * z, nb * z, ones);
}

}  // namespace tools
