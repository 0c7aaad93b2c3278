// Partial selection against a stable sort, for the inputs where a bar taken
// from a sample, or an ordering of floating-point values, can go wrong:
// negative values, -0 against +0, infinities, many ties, values that are
// nearly all equal, and a sample that misjudges the rest (the fallback).
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "Tools/utilities/selection.h"

namespace {

template <typename T>
void expectSmallestKMatchesAStableSort(const char* type) {
  std::mt19937 rng(9);
  const T inf = std::numeric_limits<T>::infinity();
  // Each draw gives value i of n.
  const std::vector<std::function<T(size_t, size_t)>> draws{
      [&](size_t, size_t) { return static_cast<T>(static_cast<int>(rng() % 2001) - 1000) / 64; },
      [&](size_t, size_t) { return std::ldexp(static_cast<T>(rng() % 1000 + 1), static_cast<int>(rng() % 60) - 30); },
      [&](size_t, size_t) { return T(1) + static_cast<T>(rng() % 100) * std::numeric_limits<T>::epsilon(); },
      [&](size_t, size_t) {
        const T specials[] = {T(0), -T(0), inf, -inf, T(-1e-30), T(3)};
        return specials[rng() % 6];
      },
      // Small values exactly at evenly spaced positions (for n = 5120 those a
      // 256-value sample reads), large ones between.
      [&](size_t i, size_t n) { return i % (n / 256) == 0 ? T(-1) : T(5) + static_cast<T>(rng() % 7); }};
  for (size_t d = 0; d < draws.size(); ++d)
    for (size_t n : {size_t{300}, size_t{5120}})
      for (size_t k : {size_t{0}, size_t{1}, size_t{37}, n / 16, n / 4}) {
        std::vector<T> v(n);
        for (size_t i = 0; i < n; ++i) v[i] = draws[d](i, n);
        std::vector<size_t> order(n);
        std::iota(order.begin(), order.end(), size_t{0});
        std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return v[a] < v[b]; });
        order.resize(k);
        EXPECT_EQ(tools::smallestK(v, k), order) << type << " draw " << d << " n " << n << " k " << k;
      }
}

TEST(Selection, SmallestKMatchesAStableSortOnAwkwardInputs) {
  expectSmallestKMatchesAStableSort<float>("float");
  expectSmallestKMatchesAStableSort<double>("double");
}

}  // namespace
