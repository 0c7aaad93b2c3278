// Partial selection: the k smallest of n values with their positions, in
// O(n + k log k) average time (std::nth_element, introselect, then a sort of
// the k chosen). Ties go to the lower index, so the result is fully
// determined by the input: the least reliable positions of a soft-decision
// decoder do not depend on the library's nth_element.
#pragma once

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <stdexcept>
#include <vector>

namespace tools {

// Indices of the k smallest values[0..n-1] by (value, index), smallest
// first; k is clipped to n. Values must be ordered by < (no NaN).
template <typename T>
std::vector<size_t> smallestK(const T* values, size_t n, size_t k) {
  k = std::min(k, n);
  std::vector<size_t> idx(n);
  std::iota(idx.begin(), idx.end(), size_t{0});
  const auto before = [values](size_t a, size_t b) {
    return values[a] < values[b] || (!(values[b] < values[a]) && a < b);
  };
  if (k < n) std::nth_element(idx.begin(), idx.begin() + static_cast<std::ptrdiff_t>(k), idx.end(), before);
  idx.resize(k);
  std::sort(idx.begin(), idx.end(), before);
  return idx;
}

template <typename T>
std::vector<size_t> smallestK(const std::vector<T>& values, size_t k) {
  return smallestK(values.data(), values.size(), k);
}

}  // namespace tools
