#include "Tools/utilities/combinatorics.h"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

namespace tools {

namespace {

constexpr uint64_t kMax = std::numeric_limits<uint64_t>::max();

uint64_t saturatingAdd(uint64_t a, uint64_t b) { return a > kMax - b ? kMax : a + b; }

}  // namespace

std::optional<uint64_t> binomialChecked(int64_t n, int64_t k) {
  if (k < 0 || n < 0 || k > n) return uint64_t{0};
  if (k > n - k) k = n - k;
  // C(n, i) = C(n, i-1) * (n-i+1) / i, exact at every step; the product is
  // split by the gcd so that only true overflow of C(n, i) fails.
  uint64_t c = 1;
  for (int64_t i = 1; i <= k; ++i) {
    uint64_t num = static_cast<uint64_t>(n - k + i), den = static_cast<uint64_t>(i);
    uint64_t a = c, b = den;
    while (b != 0) {
      const uint64_t r = a % b;
      a = b;
      b = r;
    }
    const uint64_t g1 = a;  // gcd(c, i)
    const uint64_t cRed = c / g1;
    den /= g1;
    num /= den;  // i / gcd(c, i) divides n-k+i since C(n-k+i, i) is whole
    if (cRed > kMax / num) return std::nullopt;
    c = cRed * num;
  }
  return c;
}

uint64_t binomial(int64_t n, int64_t k) {
  const std::optional<uint64_t> c = binomialChecked(n, k);
  if (!c) throw std::overflow_error("C(" + std::to_string(n) + ", " + std::to_string(k) + ") exceeds 64 bits");
  return *c;
}

double logBinomial(double n, double k) {
  if (k < 0 || k > n) return -std::numeric_limits<double>::infinity();
  return std::lgamma(n + 1) - std::lgamma(k + 1) - std::lgamma(n - k + 1);
}

bool nextSubset(std::vector<int>& s, int n) {
  // The lowest element that can move up by one without meeting the next
  // moves; everything below it drops back to 0, 1, ...
  const size_t k = s.size();
  for (size_t i = 0; i < k; ++i) {
    const int limit = i + 1 < k ? s[i + 1] : n;
    if (s[i] + 1 < limit) {
      ++s[i];
      for (size_t j = 0; j < i; ++j) s[j] = static_cast<int>(j);
      return true;
    }
  }
  return false;
}

SubsetIndexer::SubsetIndexer(int n, int k) : n_(n), k_(k) {
  if (k < 0 || n < 0 || k > n)
    throw std::invalid_argument("SubsetIndexer: k = " + std::to_string(k) + " is outside 0 .. n = " +
                                std::to_string(n));
  count_ = binomial(n, k);
  table_.assign(static_cast<size_t>(k + 1) * (n + 1), 0);
  for (int c = 0; c <= n; ++c) table_[c] = 1;
  for (int j = 1; j <= k; ++j)
    for (int c = j; c <= n; ++c)
      table_[static_cast<size_t>(j) * (n + 1) + c] = saturatingAdd(choose(c - 1, j - 1), choose(c - 1, j));
}

uint64_t SubsetIndexer::rank(const int* subset) const {
  uint64_t r = 0;
  for (int i = 0; i < k_; ++i) {
    const int c = subset[i];
    if (c < 0 || c >= n_ || (i > 0 && c <= subset[i - 1]))
      throw std::invalid_argument("SubsetIndexer::rank: element " + std::to_string(i) + " = " + std::to_string(c) +
                                  " breaks an increasing subset of 0 .. " + std::to_string(n_ - 1));
    r += choose(c, i + 1);  // every term is below count(), so no overflow
  }
  return r;
}

uint64_t SubsetIndexer::rank(const std::vector<int>& subset) const {
  if (subset.size() != static_cast<size_t>(k_))
    throw std::invalid_argument("SubsetIndexer::rank: " + std::to_string(subset.size()) + " elements, expected " +
                                std::to_string(k_));
  return rank(subset.data());
}

void SubsetIndexer::unrank(uint64_t r, int* subset) const {
  if (r >= count_)
    throw std::out_of_range("SubsetIndexer::unrank: rank " + std::to_string(r) + " is not below " +
                            std::to_string(count_));
  int c = n_;
  for (int j = k_; j >= 1; --j) {
    // Largest c with C(c, j) <= r; C(c, j) grows with c, so search down.
    do --c;
    while (choose(c, j) > r);
    subset[j - 1] = c;
    r -= choose(c, j);
  }
}

std::vector<int> SubsetIndexer::unrank(uint64_t r) const {
  std::vector<int> s(k_);
  unrank(r, s.data());
  return s;
}

}  // namespace tools
