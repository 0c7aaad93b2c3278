// Partial selection: the k smallest of n values with their positions. Ties
// go to the lower index, so the result is fully determined by the input:
// the least reliable positions of a soft-decision decoder do not depend on
// the library's nth_element.
//
// General case: std::nth_element (introselect) over the indices, O(n)
// average, then a sort of the k chosen, O(k log k).
//
// float and double with k at most n/16 (a decoder wants the 2t + 1 least
// reliable of thousands of bits): an IEEE value's bit pattern, with the
// sign bit set for non-negative values and every bit flipped for negative
// ones, is an unsigned integer that grows with the value (-0 is first read
// as +0, which compares equal to it). Its top 11 bits therefore bin the
// values in order. One pass counts the bins, with no data-dependent branch
// (into four interleaved histograms, so that runs of values in one bin do
// not wait on each other's increments); every value in a bin up to the
// first where the running count reaches k is kept, and all values above
// that bin are larger than all kept ones, so the k smallest are among the
// kept few, which alone are sorted. The histograms and the kept values live
// in per-thread scratch space, allocated once.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <type_traits>
#include <vector>

namespace tools {

namespace selection_detail {

// The top 11 bits of the order-preserving key of v.
inline uint32_t orderBin(float v) {
  uint32_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  bits = bits == 0x80000000u ? 0u : bits;
  const uint32_t key = (bits & 0x80000000u) ? ~bits : (bits | 0x80000000u);
  return key >> 21;
}

inline uint32_t orderBin(double v) {
  constexpr uint64_t kSign = uint64_t{1} << 63;
  uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  bits = bits == kSign ? 0u : bits;
  const uint64_t key = (bits & kSign) ? ~bits : (bits | kSign);
  return static_cast<uint32_t>(key >> 53);
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
    if (n >= 1024 && k <= n / 16) {
      constexpr size_t kBins = 2048;
      thread_local std::vector<uint32_t> counts;
      counts.assign(4 * kBins, 0u);
      uint32_t* const c = counts.data();
      const size_t body = n - n % 4;
      size_t i = 0;
      for (; i < body; i += 4) {
        ++c[selection_detail::orderBin(values[i])];
        ++c[kBins + selection_detail::orderBin(values[i + 1])];
        ++c[2 * kBins + selection_detail::orderBin(values[i + 2])];
        ++c[3 * kBins + selection_detail::orderBin(values[i + 3])];
      }
      for (; i < n; ++i) ++c[selection_detail::orderBin(values[i])];
      uint32_t cut = 0;
      for (size_t total = 0;; ++cut) {
        total += counts[cut] + counts[kBins + cut] + counts[2 * kBins + cut] + counts[3 * kBins + cut];
        if (total >= k) break;
      }
      // The kept values beside their indices, so that the sort reads them
      // without an indirection.
      struct Kept {
        T value;
        size_t index;
        bool operator<(const Kept& o) const {
          return value < o.value || (!(o.value < value) && index < o.index);
        }
      };
      thread_local std::vector<Kept> kept;
      kept.clear();
      for (i = 0; i < n; ++i)
        if (selection_detail::orderBin(values[i]) <= cut) kept.push_back({values[i], i});
      std::partial_sort(kept.begin(), kept.begin() + static_cast<std::ptrdiff_t>(k), kept.end());
      out.resize(k);
      for (size_t i = 0; i < k; ++i) out[i] = kept[i].index;
      return;
    }
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
