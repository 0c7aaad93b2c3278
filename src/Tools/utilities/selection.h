// Partial selection: the k smallest of n values with their positions. Ties
// go to the lower index, so the result is fully determined by the input:
// the least reliable positions of a soft-decision decoder do not depend on
// the library's nth_element.
//
// General case: std::nth_element (introselect) over the indices, O(n)
// average, then a sort of the k chosen, O(k log k).
//
// float and double with k at most n/16 (a decoder wants the 2t + 1 least
// reliable of thousands of bits): a threshold is read off a regular sample
// of 256 values (its order statistic of rank 2.2 k/n x 256 + 4, so that the
// threshold falls below the k-th smallest value with probability about
// 1e-3 when the values are exchangeable), and one pass keeps every value not
// above it. If at least k values are kept, the k smallest are among them
// (the k-th smallest is then at most the threshold, and ties at the
// threshold are all kept), so only the few kept are ordered; otherwise the
// general path runs. The pass compares 16 values at a time into a bit mask
// (SSE2 on x86-64, a plain loop elsewhere: the same mask) and visits only
// the set bits. The kept values are ordered by an integer key: the value's
// bit pattern with the sign bit set for non-negative values and every bit
// flipped for negative ones grows with the value (-0 is first read as +0,
// which compares equal to it), and the index breaks ties. Scratch space is
// per thread, allocated once.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <type_traits>
#include <utility>
#include <vector>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace tools {

namespace selection_detail {

constexpr size_t kSample = 256, kBlock = 16;

// Order-preserving integer key of an IEEE value.
template <typename T>
auto orderKey(T v) {
  using U = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;
  constexpr U kSign = U{1} << (8 * sizeof(U) - 1);
  U bits;
  std::memcpy(&bits, &v, sizeof bits);
  bits = bits == kSign ? U{0} : bits;
  return (bits & kSign) ? static_cast<U>(~bits) : static_cast<U>(bits | kSign);
}

// Bit j set when v[j] <= threshold, j < 16.
template <typename T>
uint32_t notAboveMask(const T* v, T threshold) {
  uint32_t mask = 0;
#ifdef __SSE2__
  if constexpr (std::is_same_v<T, float>) {
    const __m128 t = _mm_set1_ps(threshold);
    for (int q = 0; q < 4; ++q)
      mask |= static_cast<uint32_t>(_mm_movemask_ps(_mm_cmple_ps(_mm_loadu_ps(v + 4 * q), t))) << (4 * q);
  } else {
    const __m128d t = _mm_set1_pd(threshold);
    for (int q = 0; q < 8; ++q)
      mask |= static_cast<uint32_t>(_mm_movemask_pd(_mm_cmple_pd(_mm_loadu_pd(v + 2 * q), t))) << (2 * q);
  }
#else
  for (uint32_t j = 0; j < kBlock; ++j) mask |= static_cast<uint32_t>(v[j] <= threshold) << j;
#endif
  return mask;
}

template <typename T>
bool smallestBelowSampledThreshold(const T* values, size_t n, size_t k, std::vector<size_t>& out) {
  thread_local std::vector<T> sample;
  sample.resize(kSample);
  for (size_t j = 0; j < kSample; ++j) sample[j] = values[j * n / kSample];
  const size_t rank = std::min(kSample - 1, (22 * k * kSample) / (10 * n) + 4);
  std::nth_element(sample.begin(), sample.begin() + static_cast<std::ptrdiff_t>(rank), sample.end());
  const T threshold = sample[rank];

  using Key = decltype(orderKey(T{}));
  thread_local std::vector<std::pair<Key, size_t>> kept;
  kept.clear();
  const auto keep = [&](size_t i) { kept.emplace_back(orderKey(values[i]), i); };
  size_t i = 0;
  for (; i + kBlock <= n; i += kBlock)
    for (uint32_t mask = notAboveMask(values + i, threshold); mask != 0; mask &= mask - 1)
      keep(i + static_cast<size_t>(__builtin_ctz(mask)));
  for (; i < n; ++i)
    if (values[i] <= threshold) keep(i);
  if (kept.size() < k) return false;
  const auto kth = kept.begin() + static_cast<std::ptrdiff_t>(k);
  std::nth_element(kept.begin(), kth, kept.end());
  std::sort(kept.begin(), kth);
  out.resize(k);
  for (size_t j = 0; j < k; ++j) out[j] = kept[j].second;
  return true;
}

}  // namespace selection_detail

// Indices of the k smallest values[0..n-1] by (value, index), smallest
// first, into out; k is clipped to n. Values must be ordered by < (no NaN).
template <typename T>
void smallestK(const T* values, size_t n, size_t k, std::vector<size_t>& out) {
  k = std::min(k, n);
  const auto before = [values](size_t a, size_t b) {
    return values[a] < values[b] || (!(values[b] < values[a]) && a < b);
  };
  out.clear();
  if (k == 0) return;
  if constexpr (std::is_same_v<T, float> || std::is_same_v<T, double>) {
    if (n >= 1024 && k <= n / 16 && selection_detail::smallestBelowSampledThreshold(values, n, k, out)) return;
  }
  out.resize(n);
  std::iota(out.begin(), out.end(), size_t{0});
  if (k < n) std::nth_element(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(k), out.end(), before);
  out.resize(k);
  std::sort(out.begin(), out.end(), before);
}

template <typename T>
std::vector<size_t> smallestK(const T* values, size_t n, size_t k) {
  std::vector<size_t> out;
  smallestK(values, n, k, out);
  return out;
}

template <typename T>
std::vector<size_t> smallestK(const std::vector<T>& values, size_t k) {
  return smallestK(values.data(), values.size(), k);
}

}  // namespace tools
