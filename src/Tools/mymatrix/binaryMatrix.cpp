#include "Tools/mymatrix/binaryMatrix.h"

#include <algorithm>
#include <stdexcept>

#include "Tools/utilities/bitVector.h"

namespace tools {

namespace {

constexpr int kTableBits = 8;  // pivots per M4RI table: 256 entries

void mismatch(const char* op, const BinaryMatrix& a, const BinaryMatrix& b) {
  throw std::invalid_argument(std::string(op) + ": " + std::to_string(a.rows()) + "x" + std::to_string(a.cols()) +
                              " and " + std::to_string(b.rows()) + "x" + std::to_string(b.cols()) +
                              " do not fit");
}

inline bool bitOf(const uint64_t* row, size_t c) { return (row[c / 64] >> (c % 64)) & 1; }

// Four independent words per step: the loop is memory-bound, and the
// unrolled form keeps the loads in flight without relying on the
// vectoriser's cost model.
inline void xorInto(uint64_t* __restrict dst, const uint64_t* __restrict src, size_t from, size_t to) {
  size_t w = from;
  for (; w + 4 <= to; w += 4) {
    const uint64_t a = src[w], b = src[w + 1], c = src[w + 2], d = src[w + 3];
    dst[w] ^= a;
    dst[w + 1] ^= b;
    dst[w + 2] ^= c;
    dst[w + 3] ^= d;
  }
  for (; w < to; ++w) dst[w] ^= src[w];
}

}  // namespace

BinaryMatrix::BinaryMatrix(size_t rows, size_t cols)
    : rows_(rows), cols_(cols), words_((cols + 63) / 64), bits_(rows * ((cols + 63) / 64), 0) {}

BinaryMatrix BinaryMatrix::identity(size_t n) {
  BinaryMatrix I(n, n);
  for (size_t i = 0; i < n; ++i) I.flip(i, i);
  return I;
}

void BinaryMatrix::set(size_t r, size_t c, bool v) {
  uint64_t& w = row(r)[c / 64];
  const uint64_t b = uint64_t{1} << (c % 64);
  w = v ? (w | b) : (w & ~b);
}

void BinaryMatrix::swapRows(size_t a, size_t b) {
  if (a != b) std::swap_ranges(row(a), row(a) + words_, row(b));
}

size_t BinaryMatrix::weight() const { return hammingWeight(bits_.data(), bits_.size()); }

BinaryMatrix BinaryMatrix::operator+(const BinaryMatrix& o) const {
  if (rows_ != o.rows_ || cols_ != o.cols_) mismatch("BinaryMatrix +", *this, o);
  BinaryMatrix s = *this;
  for (size_t i = 0; i < bits_.size(); ++i) s.bits_[i] ^= o.bits_[i];
  return s;
}

BinaryMatrix BinaryMatrix::operator*(const BinaryMatrix& o) const {
  if (cols_ != o.rows_) mismatch("BinaryMatrix *", *this, o);
  BinaryMatrix p(rows_, o.cols_);
  for (size_t i = 0; i < rows_; ++i) {
    const uint64_t* a = row(i);
    for (size_t w = 0; w < words_; ++w)
      for (uint64_t bits = a[w]; bits != 0; bits &= bits - 1) {
        const size_t j = 64 * w + static_cast<size_t>(popcount64((bits & (~bits + 1)) - 1));
        xorInto(p.row(i), o.row(j), 0, p.words_);
      }
  }
  return p;
}

BinaryMatrix BinaryMatrix::transposed() const {
  BinaryMatrix t(cols_, rows_);
  for (size_t r = 0; r < rows_; ++r) {
    const uint64_t* a = row(r);
    for (size_t w = 0; w < words_; ++w)
      for (uint64_t bits = a[w]; bits != 0; bits &= bits - 1)
        t.flip(64 * w + static_cast<size_t>(popcount64((bits & (~bits + 1)) - 1)), r);
  }
  return t;
}

BinaryMatrix BinaryMatrix::columns(size_t first, size_t count) const {
  if (first > cols_ || count > cols_ - first)
    throw std::invalid_argument("BinaryMatrix::columns: " + std::to_string(first) + " + " + std::to_string(count) +
                                " exceeds " + std::to_string(cols_) + " columns");
  BinaryMatrix s(rows_, count);
  for (size_t r = 0; r < rows_; ++r)
    for (size_t c = 0; c < count; ++c)
      if (get(r, first + c)) s.flip(r, c);
  return s;
}

BinaryMatrix BinaryMatrix::besides(const BinaryMatrix& o) const {
  if (rows_ != o.rows_) mismatch("BinaryMatrix::besides", *this, o);
  BinaryMatrix s(rows_, cols_ + o.cols_);
  for (size_t r = 0; r < rows_; ++r) {
    std::copy(row(r), row(r) + words_, s.row(r));
    for (size_t c = 0; c < o.cols_; ++c)
      if (o.get(r, c)) s.flip(r, cols_ + c);
  }
  return s;
}

std::vector<size_t> BinaryMatrix::eliminate(bool full) {
  std::vector<size_t> pivots;
  std::vector<uint64_t> table(words_ << kTableBits);
  size_t r = 0, c = 0;
  while (r < rows_ && c < cols_) {
    // Find up to kTableBits pivots, each reduced against the others.
    const size_t blockStart = r, firstWord = c / 64;
    std::vector<size_t> blockCols;
    while (blockCols.size() < static_cast<size_t>(kTableBits) && c < cols_ && r < rows_) {
      size_t found = rows_;
      for (size_t i = r; i < rows_ && found == rows_; ++i) {
        uint64_t* ri = row(i);
        for (size_t p = 0; p < blockCols.size(); ++p)
          if (bitOf(ri, blockCols[p])) xorInto(ri, row(blockStart + p), firstWord, words_);
        if (bitOf(ri, c)) found = i;
      }
      if (found != rows_) {
        swapRows(found, r);
        for (size_t p = 0; p < blockCols.size(); ++p)
          if (bitOf(row(blockStart + p), c)) xorInto(row(blockStart + p), row(r), firstWord, words_);
        blockCols.push_back(c);
        pivots.push_back(c);
        ++r;
      }
      ++c;
    }
    if (blockCols.empty()) break;
    // table[x] = XOR of the pivot rows p with bit p of x set.
    const size_t k = blockCols.size();
    std::fill(table.begin() + firstWord, table.begin() + words_, 0);
    for (size_t x = 1; x < (size_t{1} << k); ++x) {
      const size_t low = x & (~x + 1);
      const size_t p = static_cast<size_t>(popcount64(low - 1));
      uint64_t* t = table.data() + x * words_;
      const uint64_t* prev = table.data() + (x ^ low) * words_;
      const uint64_t* pr = row(blockStart + p);
      for (size_t w = firstWord; w < words_; ++w) t[w] = prev[w] ^ pr[w];
    }
    for (size_t i = full ? 0 : r; i < rows_; ++i) {
      if (i == blockStart) {
        i = r - 1;  // skip the pivot rows themselves
        continue;
      }
      uint64_t* ri = row(i);
      size_t x = 0;
      for (size_t p = 0; p < k; ++p) x |= static_cast<size_t>(bitOf(ri, blockCols[p])) << p;
      if (x != 0) xorInto(ri, table.data() + x * words_, firstWord, words_);
    }
  }
  return pivots;
}

size_t BinaryMatrix::rank() const {
  BinaryMatrix copy = *this;
  return copy.eliminate(false).size();
}

std::vector<size_t> BinaryMatrix::reduceRowEchelon() { return eliminate(true); }

BinaryMatrix BinaryMatrix::inverse() const {
  if (rows_ != cols_) mismatch("BinaryMatrix::inverse", *this, *this);
  BinaryMatrix aug = besides(identity(rows_));
  const std::vector<size_t> pivots = aug.reduceRowEchelon();
  if (pivots.size() < rows_ || pivots.back() >= cols_)
    throw std::domain_error("BinaryMatrix::inverse: the matrix is singular");
  return aug.columns(cols_, cols_);
}

BinaryMatrix BinaryMatrix::solve(const BinaryMatrix& b) const {
  if (b.rows_ != rows_) mismatch("BinaryMatrix::solve", *this, b);
  BinaryMatrix aug = besides(b);
  const std::vector<size_t> pivots = aug.reduceRowEchelon();
  BinaryMatrix x(cols_, b.cols_);
  for (size_t i = 0; i < pivots.size(); ++i) {
    if (pivots[i] >= cols_) throw std::domain_error("BinaryMatrix::solve: the system has no solution");
    for (size_t c = 0; c < b.cols_; ++c)
      if (aug.get(i, cols_ + c)) x.flip(pivots[i], c);
  }
  return x;
}

BinaryMatrix BinaryMatrix::nullSpace() const {
  BinaryMatrix rref = *this;
  const std::vector<size_t> pivots = rref.reduceRowEchelon();
  std::vector<bool> isPivot(cols_, false);
  for (size_t p : pivots) isPivot[p] = true;
  BinaryMatrix basis(cols_ - pivots.size(), cols_);
  size_t b = 0;
  for (size_t f = 0; f < cols_; ++f) {
    if (isPivot[f]) continue;
    basis.flip(b, f);
    for (size_t i = 0; i < pivots.size(); ++i)
      if (rref.get(i, f)) basis.flip(b, pivots[i]);
    ++b;
  }
  return basis;
}

std::string BinaryMatrix::toString() const {
  std::string s;
  s.reserve(rows_ * (cols_ + 1));
  for (size_t r = 0; r < rows_; ++r) {
    for (size_t c = 0; c < cols_; ++c) s += get(r, c) ? '1' : '0';
    s += '\n';
  }
  return s;
}

BinaryMatrix rightmostEchelon(const BinaryMatrix& H, std::vector<size_t>* checkColumns) {
  const size_t n = H.cols();
  // Eliminate on the column-reversed matrix so that pivots fall as far
  // right as possible in the original order.
  BinaryMatrix rev(H.rows(), n);
  for (size_t r = 0; r < H.rows(); ++r)
    for (size_t c = 0; c < n; ++c)
      if (H.get(r, c)) rev.flip(r, n - 1 - c);
  const std::vector<size_t> pivots = rev.reduceRowEchelon();
  const size_t rank = pivots.size();
  BinaryMatrix out(rank, n);
  // Row i of the result is reversed row rank-1-i, so check columns increase.
  for (size_t i = 0; i < rank; ++i) {
    const size_t src = rank - 1 - i;
    if (checkColumns) checkColumns->push_back(n - 1 - pivots[src]);
    for (size_t c = 0; c < n; ++c)
      if (rev.get(src, c)) out.flip(i, n - 1 - c);
  }
  return out;
}

SystematicForm systematicForm(const BinaryMatrix& H) {
  const size_t n = H.cols();
  SystematicForm f;
  f.H = rightmostEchelon(H, &f.checkColumns);
  const size_t rank = f.checkColumns.size();
  std::vector<size_t> infoIndex(n, n);
  {
    std::vector<bool> isCheck(n, false);
    for (size_t c : f.checkColumns) isCheck[c] = true;
    for (size_t c = 0; c < n; ++c)
      if (!isCheck[c]) {
        infoIndex[c] = f.infoColumns.size();
        f.infoColumns.push_back(c);
      }
  }
  f.permutation = f.infoColumns;
  f.permutation.insert(f.permutation.end(), f.checkColumns.begin(), f.checkColumns.end());
  // Row i reads c_check[i] = sum of H[i][j] c_j over the information columns.
  f.G = BinaryMatrix(f.infoColumns.size(), n);
  for (size_t t = 0; t < f.infoColumns.size(); ++t) f.G.flip(t, f.infoColumns[t]);
  for (size_t i = 0; i < rank; ++i) {
    const uint64_t* hr = f.H.row(i);
    for (size_t w = 0; w < f.H.wordsPerRow(); ++w)
      for (uint64_t bits = hr[w]; bits != 0; bits &= bits - 1) {
        const size_t c = 64 * w + static_cast<size_t>(popcount64((bits & (~bits + 1)) - 1));
        if (c != f.checkColumns[i]) f.G.flip(infoIndex[c], f.checkColumns[i]);
      }
  }
  return f;
}

}  // namespace tools
