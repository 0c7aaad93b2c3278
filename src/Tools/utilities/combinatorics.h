// Binomial coefficients and the combinatorial number system.
//
// A k-subset {c_1 < c_2 < ... < c_k} of {0, .., n-1} has the rank
//   rank = C(c_1, 1) + C(c_2, 2) + ... + C(c_k, k),
// a bijection onto 0 .. C(n, k) - 1 that lists the subsets in colexicographic
// order (D. E. Knuth, TAOCP vol. 4A, 7.2.1.3, eq. (20)). Unranking is greedy:
// c_k is the largest c with C(c, k) <= rank, and so on down.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace tools {

// C(n, k) when it fits in 64 bits, nothing otherwise (0 for k < 0 or k > n).
std::optional<uint64_t> binomialChecked(int64_t n, int64_t k);
// C(n, k); std::overflow_error when it does not fit in 64 bits.
uint64_t binomial(int64_t n, int64_t k);
// ln C(n, k) for 0 <= k <= n (lgamma; relative error near 1e-15 for large n),
// -infinity when k is out of range.
double logBinomial(double n, double k);

// Steps s (k increasing elements below n) to the next subset in colex order,
// the one whose rank is one higher; returns false, leaving s unchanged,
// after the last. Starting from {0, .., k-1} it visits every k-subset once.
bool nextSubset(std::vector<int>& s, int n);

// Ranks and unranks k-subsets of {0, .., n-1} with a table of binomials
// built once; construction throws std::overflow_error when C(n, k) does
// not fit in 64 bits and std::invalid_argument for k < 0, k > n.
class SubsetIndexer {
 public:
  SubsetIndexer(int n, int k);
  int n() const { return n_; }
  int k() const { return k_; }
  uint64_t count() const { return count_; }
  // subset: k distinct elements below n in increasing order, else
  // std::invalid_argument.
  uint64_t rank(const int* subset) const;
  uint64_t rank(const std::vector<int>& subset) const;
  // rank below count(), else std::out_of_range; writes k increasing elements.
  void unrank(uint64_t rank, int* subset) const;
  std::vector<int> unrank(uint64_t rank) const;

 private:
  uint64_t choose(int c, int j) const { return table_[static_cast<size_t>(j) * (n_ + 1) + c]; }
  int n_, k_;
  uint64_t count_;
  std::vector<uint64_t> table_;  // C(c, j), j = 0..k, c = 0..n, saturated at 2^64 - 1
};

}  // namespace tools
