// Partial selection against a stable sort, for the inputs where binning
// floating-point values by their bit patterns can go wrong: negative
// values, -0 against +0, infinities, many ties, values that share one bin,
// a cut that falls inside a bin crowded with ties, and k beyond n; then
// integers, which are not binned.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "Tools/utilities/selection.h"

namespace {

template <typename T>
void expectMatchesAStableSort(const std::vector<T>& v, size_t k, const std::string& label) {
  std::vector<size_t> order(v.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return v[a] < v[b]; });
  order.resize(std::min(k, v.size()));
  EXPECT_EQ(tools::smallestK(v, k), order) << label << " n " << v.size() << " k " << k;
}

template <typename T>
void expectSmallestKMatchesAStableSort(const char* type) {
  std::mt19937 rng(9);
  const T inf = std::numeric_limits<T>::infinity();
  const std::vector<std::function<T()>> draws{
      [&] { return static_cast<T>(static_cast<int>(rng() % 2001) - 1000) / 64; },
      [&] { return std::ldexp(static_cast<T>(rng() % 1000 + 1), static_cast<int>(rng() % 60) - 30); },
      [&] { return T(1) + static_cast<T>(rng() % 100) * std::numeric_limits<T>::epsilon(); },
      [&] {
        const T specials[] = {T(0), -T(0), inf, -inf, T(-1e-30), T(3)};
        return specials[rng() % 6];
      },
      // A few zeros of either sign below everything else: the k smallest
      // are +0s and -0s in index order.
      [&] {
        const unsigned r = rng() % 100;
        return r == 0 ? T(0) : r == 1 ? -T(0) : T(5);
      },
      // Nearly all equal, a few smaller: the k-th smallest lies in a bin
      // crowded with ties that only the index orders.
      [&] { return rng() % 64 == 0 ? static_cast<T>(rng() % 5) : T(7); }};
  for (size_t d = 0; d < draws.size(); ++d)
    for (size_t n : {size_t{300}, size_t{5000}})
      for (size_t k : {size_t{0}, size_t{1}, size_t{37}, n / 16, n / 4, n + 1}) {
        std::vector<T> v(n);
        for (auto& x : v) x = draws[d]();
        expectMatchesAStableSort(v, k, std::string(type) + " draw " + std::to_string(d));
      }
}

TEST(Selection, SmallestKMatchesAStableSortOnAwkwardInputs) {
  expectSmallestKMatchesAStableSort<float>("float");
  expectSmallestKMatchesAStableSort<double>("double");
  std::mt19937 rng(5);
  for (size_t n : {size_t{0}, size_t{1}, size_t{1000}}) {
    std::vector<int> v(n);
    for (auto& x : v) x = static_cast<int>(rng() % 50);
    for (size_t k : {size_t{0}, size_t{7}, size_t{2000}}) expectMatchesAStableSort(v, k, "int");
  }
}

}  // namespace
