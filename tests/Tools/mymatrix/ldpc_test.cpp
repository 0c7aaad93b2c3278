// Sparse parity-check matrices: alist round trips and rejection of damaged
// files, quasi-cyclic construction, and girth and cycle counts against a
// brute-force enumeration of simple cycles and a published count.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <sstream>

#include "Tools/mymatrix/alist.h"
#include "Tools/mymatrix/tannerCycles.h"

using namespace tools;

namespace {

// Simple cycles of each even length up to maxLen by depth-first search from
// every vertex s over vertices above s; each cycle is seen twice.
std::vector<uint64_t> bruteForceCycles(const SparseBinaryMatrix& h, size_t maxLen) {
  const size_t n = h.cols(), V = n + h.rows();
  std::vector<std::vector<size_t>> adj(V);
  for (size_t i = 0; i < h.rows(); ++i)
    for (size_t j : h.row(i)) {
      adj[j].push_back(n + i);
      adj[n + i].push_back(j);
    }
  std::vector<uint64_t> count(maxLen + 1, 0);
  std::vector<bool> used(V, false);
  for (size_t s = 0; s < V; ++s) {
    std::function<void(size_t, size_t)> dfs = [&](size_t u, size_t len) {
      for (size_t w : adj[u]) {
        if (w == s && len >= 3) ++count[len + 1];
        if (w > s && !used[w] && len + 1 < maxLen) {
          used[w] = true;
          dfs(w, len + 1);
          used[w] = false;
        }
      }
    };
    used[s] = true;
    dfs(s, 0);
    used[s] = false;
  }
  for (auto& c : count) c /= 2;
  return count;
}

SparseBinaryMatrix randomSparse(size_t m, size_t n, double density, std::mt19937& rng) {
  std::bernoulli_distribution bit(density);
  std::vector<std::pair<size_t, size_t>> ones;
  for (size_t i = 0; i < m; ++i)
    for (size_t j = 0; j < n; ++j)
      if (bit(rng)) ones.emplace_back(i, j);
  return SparseBinaryMatrix(m, n, ones);
}

SparseBinaryMatrix distinctPairColumns(size_t m, size_t n, std::mt19937& rng) {
  std::vector<std::pair<size_t, size_t>> pairs, ones;
  for (size_t a = 0; a < m; ++a)
    for (size_t b = a + 1; b < m; ++b) pairs.emplace_back(a, b);
  std::shuffle(pairs.begin(), pairs.end(), rng);
  for (size_t j = 0; j < n && j < pairs.size(); ++j) {
    ones.emplace_back(pairs[j].first, j);
    ones.emplace_back(pairs[j].second, j);
  }
  return SparseBinaryMatrix(m, n, ones);
}

void expectMatchesBruteForce(const SparseBinaryMatrix& h, const std::string& label) {
  const CycleCounts c = countShortCycles(h);
  const std::vector<uint64_t> brute = bruteForceCycles(h, 14);
  size_t g = 0;
  for (size_t L = 4; L <= 14 && g == 0; L += 2)
    if (brute[L] != 0) g = L;
  ASSERT_EQ(c.girth, g) << label;
  EXPECT_EQ(girth(h), g) << label;
  if (g == 0 || g + 4 > 14) return;
  ASSERT_EQ(c.counts.size(), 3u) << label;
  for (const auto& [L, count] : c.counts) EXPECT_EQ(count, brute[L]) << label << " length " << L;
}

}  // namespace

TEST(TannerCycles, CountsEqualBruteForceOnSmallGraphs) {
  std::mt19937 rng(21);
  int withFourCycles = 0, withoutFourCycles = 0;
  for (int trial = 0; trial < 60; ++trial) {
    const size_t m = 4 + rng() % 4, n = 6 + rng() % 5;
    // The second half has column weight 2 with distinct row pairs: no 4-cycles.
    const SparseBinaryMatrix h = trial < 30 ? randomSparse(m, n, 0.4, rng) : distinctPairColumns(m, n, rng);
    const size_t g = countShortCycles(h).girth;
    withFourCycles += g == 4;
    withoutFourCycles += g > 4;
    expectMatchesBruteForce(h, "trial " + std::to_string(trial));
  }
  EXPECT_GT(withFourCycles, 5);
  EXPECT_GT(withoutFourCycles, 5);
  // Quasi-cyclic matrices take the orbit shortcut; the counts must not change.
  std::vector<std::vector<int>> base{{0, 1, -1, 3}, {2, -1, 0, 4}, {-1, 0, 2, 1}};
  const SparseBinaryMatrix qc = quasiCyclic(base, 5);
  EXPECT_EQ(detectCirculantSize(qc), 5u);
  expectMatchesBruteForce(qc, "quasi-cyclic");
  EXPECT_EQ(countShortCycles(quasiCyclic({{0}}, 7)).girth, 0u);  // a permutation matrix has no cycle
}

// The Heawood graph's published 28 six-cycles and a tree's empty count are
// checked through the ldpc command (tests/apps/ldpcCommand_test.cpp).
TEST(TannerCycles, PublishedCountsOfTheTannerCode) {
  // The (155,64) quasi-cyclic code of Tanner, Sridhara and Fuja (2001):
  // circulants of size 31 with shifts 2^j 5^i mod 31. Its girth-8 graph has
  // 465 eight-cycles and 3720 ten-cycles (Halford and Chugg, "An algorithm
  // for counting short cycles in bipartite graphs", IEEE Trans. Inf. Theory
  // 52(1), 2006); its twelve-cycles are checked by enumeration.
  const SparseBinaryMatrix tanner = quasiCyclic(
      {{1, 2, 4, 8, 16}, {5, 10, 20, 9, 18}, {25, 19, 7, 14, 28}}, 31);
  const CycleCounts got = countShortCycles(tanner);
  EXPECT_EQ(std::make_pair(got.girth, got.circulantSize), std::make_pair(size_t{8}, size_t{31}));
  ASSERT_GE(got.counts.size(), 2u);
  using Count = std::pair<size_t, uint64_t>;
  EXPECT_EQ(std::vector<Count>(got.counts.begin(), got.counts.begin() + 2), (std::vector<Count>{{8, 465}, {10, 3720}}));
  expectMatchesBruteForce(tanner, "Tanner (155,64)");
}

TEST(Alist, RoundTripsAndReadsUnpaddedFiles) {
  const SparseBinaryMatrix h = quasiCyclic({{0, 2, -1, 1}, {1, -1, 0, 2}}, 3);
  std::stringstream s;
  writeAlist(s, h);
  EXPECT_TRUE(readAlist(s) == h);
  std::istringstream unpadded("3 2\n2 2\n1 2 1\n2 2\n1\n1 2\n2\n1 2\n2 3\n");
  const SparseBinaryMatrix u = readAlist(unpadded);
  EXPECT_EQ(u.rows(), 2u);
  EXPECT_EQ(u.row(1), (std::vector<size_t>{1, 2}));
  EXPECT_EQ(u.columnDegrees(), (std::map<size_t, size_t>{{1, 2}, {2, 1}}));
}

TEST(Alist, DamagedFilesAreRejectedWithTheLineAtFault) {
  const std::string good = "3 2\n2 2\n1 2 1\n2 2\n1 0\n1 2\n2 0\n1 2\n2 3\n";
  struct Case {
    std::string text, message;
  };
  const Case cases[] = {
      {"", "line 1: file ends before the number of columns"},
      {good.substr(0, good.size() - 4), "line 9: file ends before row 2"},
      {"3 2\n2 2\n1 2 1\n2 2\n1\n", "file ends before the 4 ones"},
      {"3 2\n2 1\n1 2 1\n2 2\n1 0\n1 2\n2 0\n1 2\n2 3\n", "row weight 1 is 2, above the stated maximum 1"},
      {"3 2\n2 2\n1 2 1\n2 2\n1 0\n1 2\n2 0\n1 3\n2 3\n", "row 1 disagrees with the column lists"},
      {"3 2\n2 2\n1 2 1\n2 2\n1 0\n1 3\n2 0\n1 2\n2 3\n", "column 2: index 3 is outside 1 .. 2"},
      {"3 2\n2 2\n1 2 1\n2 2\n1 0\n1 1\n2 0\n1 2\n2 3\n", "column 2: index 1 is repeated"},
      {"3 2\n2 2\n1 2 1\n2 1\n1 0\n1 2\n2 0\n1 2\n2 3\n", "weights sum to 4, row weights to 3"},
      {"99999999999999999999 2\n", "is too large"},
      {"300000000 2\n", "is outside 1 .. 268435456"},
      {"3 2\n2 2\n1 2 1\n2 2\n1 0\n1 2\n2 0\n1 2\n2 3\n7\n", "line 10: data after the last row list"},
      {"3 -2\n", "line 1: unexpected character '-'"},
      {"2000000 2000000\n1 1\n", "file ends before the column weight"},
  };
  for (const Case& c : cases) {
    std::istringstream in(c.text);
    try {
      readAlist(in);
      ADD_FAILURE() << "accepted: " << c.text;
    } catch (const AlistError& e) {
      EXPECT_NE(std::string(e.what()).find(c.message), std::string::npos) << e.what();
    }
  }
  std::istringstream in(good);
  EXPECT_EQ(readAlist(in).ones(), 4u);
  EXPECT_THROW(quasiCyclic({{0, 3}}, 3), std::invalid_argument);
  EXPECT_THROW(SparseBinaryMatrix(2, 2, {{0, 0}, {0, 0}}), std::invalid_argument);
}
