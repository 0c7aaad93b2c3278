#include "Tools/mymatrix/tannerCycles.h"

#include <algorithm>
#include <array>
#include <deque>
#include <numeric>
#include <stdexcept>
#include <string>

namespace tools {

namespace {

uint64_t add(uint64_t a, uint64_t b) {
  uint64_t s;
  if (__builtin_add_overflow(a, b, &s)) throw std::overflow_error("cycle count exceeds 64 bits");
  return s;
}

uint64_t mul(uint64_t a, uint64_t b) {
  uint64_t p;
  if (__builtin_mul_overflow(a, b, &p)) throw std::overflow_error("cycle count exceeds 64 bits");
  return p;
}

// The Tanner graph in adjacency-array form: variable j is vertex j, check i
// is vertex n + i; directed edge k runs from its owner to adj[k], and
// reverse[k] is the same edge the other way.
struct TannerGraph {
  size_t n = 0, m = 0;
  std::vector<size_t> start, adj, reverse, tail;

  explicit TannerGraph(const SparseBinaryMatrix& h) : n(h.cols()), m(h.rows()) {
    start.push_back(0);
    for (size_t j = 0; j < n; ++j) {
      for (size_t r : h.col(j)) adj.push_back(n + r);
      start.push_back(adj.size());
    }
    for (size_t i = 0; i < m; ++i) {
      for (size_t c : h.row(i)) adj.push_back(c);
      start.push_back(adj.size());
    }
    reverse.resize(adj.size());
    tail.resize(adj.size());
    for (size_t v = 0; v < n + m; ++v)
      for (size_t k = start[v]; k < start[v + 1]; ++k) {
        tail[k] = v;
        const size_t w = adj[k];
        reverse[k] = static_cast<size_t>(std::lower_bound(adj.begin() + start[w], adj.begin() + start[w + 1], v) -
                                         adj.begin());
      }
  }
  size_t vertices() const { return n + m; }
  bool adjacent(size_t v, size_t w) const {
    return std::binary_search(adj.begin() + start[v], adj.begin() + start[v + 1], w);
  }
};

// Shortest cycle seen by a breadth-first search from s (0 for none); over a
// set of roots meeting every cycle's orbit the minimum is the girth.
size_t shortestCycleFrom(const TannerGraph& g, size_t s, size_t bound, std::vector<int>& dist,
                         std::vector<size_t>& parentEdge) {
  std::vector<size_t> touched{s};
  std::deque<size_t> queue{s};
  dist[s] = 0;
  parentEdge[s] = SIZE_MAX;
  size_t best = bound;
  while (!queue.empty()) {
    const size_t u = queue.front();
    queue.pop_front();
    if (best != 0 && 2 * static_cast<size_t>(dist[u]) + 1 >= best) break;
    for (size_t k = g.start[u]; k < g.start[u + 1]; ++k) {
      if (parentEdge[u] != SIZE_MAX && k == g.reverse[parentEdge[u]]) continue;
      const size_t w = g.adj[k];
      if (dist[w] < 0) {
        dist[w] = dist[u] + 1;
        parentEdge[w] = k;
        touched.push_back(w);
        queue.push_back(w);
      } else {
        const size_t len = static_cast<size_t>(dist[u] + dist[w] + 1);
        if (best == 0 || len < best) best = len;
      }
    }
  }
  for (size_t v : touched) dist[v] = -1;
  return best;
}

// Per-root orbit representatives of one side (first vertex of each block).
std::vector<size_t> representatives(size_t first, size_t count, size_t z) {
  std::vector<size_t> r;
  for (size_t v = 0; v < count; v += z) r.push_back(first + v);
  return r;
}

// For the roots, the number of ordered pairs of non-backtracking walks of
// depth d that end at the same vertex with different first and last edges,
// summed over the roots, for each depth in `depths`.
std::vector<uint64_t> walkPairs(const TannerGraph& g, const std::vector<size_t>& roots,
                                const std::vector<size_t>& depths) {
  const size_t maxDepth = depths.back(), D = depths.size();
  std::vector<uint64_t> result(D, 0);
  std::vector<std::vector<uint64_t>> total(D, std::vector<uint64_t>(g.vertices(), 0)),
      byLast(D, std::vector<uint64_t>(g.adj.size(), 0));
  std::vector<std::vector<size_t>> touchedV(D), touchedE(D);
  std::vector<uint64_t> perVertex(g.vertices(), 0), acc(g.adj.size(), 0);
  std::vector<size_t> perTouched, accTouched;
  std::vector<std::pair<size_t, uint64_t>> frontier, next;

  for (size_t root : roots) {
    std::vector<uint64_t> sameFirst(D, 0), sameBoth(D, 0);
    for (size_t f = g.start[root]; f < g.start[root + 1]; ++f) {
      frontier.assign(1, {f, 1});
      for (size_t depth = 1; depth <= maxDepth; ++depth) {
        const size_t di = static_cast<size_t>(std::find(depths.begin(), depths.end(), depth) - depths.begin());
        if (di < D) {
          for (const auto& [e, c] : frontier) {
            const size_t u = g.adj[e];
            if (total[di][u] == 0) touchedV[di].push_back(u);
            total[di][u] = add(total[di][u], c);
            if (byLast[di][e] == 0) touchedE[di].push_back(e);
            byLast[di][e] = add(byLast[di][e], c);
            if (perVertex[u] == 0) perTouched.push_back(u);
            perVertex[u] = add(perVertex[u], c);
            sameBoth[di] = add(sameBoth[di], mul(c, c));
          }
          for (size_t u : perTouched) {
            sameFirst[di] = add(sameFirst[di], mul(perVertex[u], perVertex[u]));
            perVertex[u] = 0;
          }
          perTouched.clear();
        }
        if (depth == maxDepth) break;
        for (const auto& [e, c] : frontier) {
          const size_t u = g.adj[e], back = g.reverse[e];
          for (size_t k = g.start[u]; k < g.start[u + 1]; ++k) {
            if (k == back) continue;
            if (acc[k] == 0) accTouched.push_back(k);
            acc[k] = add(acc[k], c);
          }
        }
        next.clear();
        for (size_t k : accTouched) {
          next.emplace_back(k, acc[k]);
          acc[k] = 0;
        }
        accTouched.clear();
        frontier.swap(next);
      }
    }
    // pairs = all - same first edge - same last edge + same both
    for (size_t di = 0; di < D; ++di) {
      uint64_t all = 0, sameLast = 0;
      for (size_t u : touchedV[di]) {
        all = add(all, mul(total[di][u], total[di][u]));
        total[di][u] = 0;
      }
      for (size_t e : touchedE[di]) {
        sameLast = add(sameLast, mul(byLast[di][e], byLast[di][e]));
        byLast[di][e] = 0;
      }
      touchedV[di].clear();
      touchedE[di].clear();
      result[di] = add(result[di], add(all, sameBoth[di]) - sameFirst[di] - sameLast);
    }
  }
  return result;
}

// 12 * sum over ordered pairs of directed 4-cycles (v a w b v), (v c x d v)
// through v that join into a tailless non-backtracking closed walk (c != b,
// d != a) of 1 / |I|, where |I| = 1 + [a = c] + [w = x] + [b = d] counts the
// positions at which the walk meets itself; 12 makes every term whole.
//
// The pairs are never listed. With X1 = [a = c], X2 = [w = x], X3 = [b = d],
// 12 / (1 + X1 + X2 + X3) = 12 - 6 sum Xi + 4 sum XiXj - 3 X1X2X3 (Moebius
// inversion over the subsets of {X1, X2, X3}), and [c != b][d != a] =
// (1 - Y1)(1 - Y2) with Y1 = [c = b], Y2 = [d = a]. Each product of
// indicators fixes some components of the second cycle to components of the
// first, so its sum over pairs is a lookup in the cycles sorted by those
// components. X1Y1 and X3Y2 would force a = b and vanish.
uint64_t fourCyclePairWeight(const TannerGraph& g, size_t v) {
  using Key = std::array<size_t, 3>;  // (a, w, b), SIZE_MAX where not fixed
  std::vector<Key> cycles;
  for (size_t ka = g.start[v]; ka < g.start[v + 1]; ++ka) {
    const size_t a = g.adj[ka];
    for (size_t kw = g.start[a]; kw < g.start[a + 1]; ++kw) {
      const size_t w = g.adj[kw];
      if (w == v) continue;
      for (size_t kb = g.start[w]; kb < g.start[w + 1]; ++kb) {
        const size_t b = g.adj[kb];
        if (b != a && g.adjacent(v, b)) cycles.push_back({a, w, b});
      }
    }
  }
  if (cycles.empty()) return 0;
  // byFixed[mask]: the cycles with the components outside mask blanked, sorted.
  std::array<std::vector<Key>, 8> byFixed;
  for (int mask = 0; mask < 8; ++mask) {
    byFixed[mask].reserve(cycles.size());
    for (const Key& c : cycles)
      byFixed[mask].push_back({mask & 1 ? c[0] : SIZE_MAX, mask & 2 ? c[1] : SIZE_MAX, mask & 4 ? c[2] : SIZE_MAX});
    std::sort(byFixed[mask].begin(), byFixed[mask].end());
  }
  static const int64_t kCoefficient[4] = {12, -6, 4, -3};
  int64_t total = 0;
  for (const Key& c1 : cycles)
    for (int terms = 0; terms < 32; ++terms) {  // bits: X1, X2, X3, Y1, Y2
      const bool x1 = terms & 1, x2 = terms & 2, x3 = terms & 4, y1 = terms & 8, y2 = terms & 16;
      if ((x1 && y1) || (x3 && y2)) continue;
      const Key want{x1 ? c1[0] : y1 ? c1[2] : SIZE_MAX, x2 ? c1[1] : SIZE_MAX, x3 ? c1[2] : y2 ? c1[0] : SIZE_MAX};
      const int mask = (want[0] != SIZE_MAX) | (want[1] != SIZE_MAX) << 1 | (want[2] != SIZE_MAX) << 2;
      const auto range = std::equal_range(byFixed[mask].begin(), byFixed[mask].end(), want);
      const int64_t matches = range.second - range.first;
      const int64_t sign = (y1 + y2) % 2 ? -1 : 1;
      if (__builtin_add_overflow(total, sign * kCoefficient[x1 + x2 + x3] * matches, &total))
        throw std::overflow_error("cycle count exceeds 64 bits");
    }
  if (total < 0) throw std::logic_error("negative 4-cycle pair weight");
  return static_cast<uint64_t>(total);
}

}  // namespace

size_t detectCirculantSize(const SparseBinaryMatrix& h) {
  const size_t common = std::gcd(h.rows(), h.cols());
  for (size_t z = common; z > 1; --z) {
    if (common % z != 0) continue;
    bool invariant = true;
    for (size_t r = 0; r < h.rows() && invariant; ++r) {
      const size_t r2 = r / z * z + (r % z + 1) % z;
      const std::vector<size_t>& target = h.row(r2);
      for (size_t c : h.row(r)) {
        const size_t c2 = c / z * z + (c % z + 1) % z;
        if (!std::binary_search(target.begin(), target.end(), c2)) {
          invariant = false;
          break;
        }
      }
    }
    if (invariant) return z;
  }
  return 1;
}

namespace {

struct Roots {
  std::vector<size_t> vertices;
  size_t weight;
};

// One side's orbit representatives: the side with fewer of them.
Roots chooseRoots(const SparseBinaryMatrix& h, size_t z) {
  std::vector<size_t> vars = representatives(0, h.cols(), z), checks = representatives(h.cols(), h.rows(), z);
  return {checks.size() <= vars.size() ? checks : vars, z};
}

size_t girthOf(const TannerGraph& g, const Roots& roots) {
  std::vector<int> dist(g.vertices(), -1);
  std::vector<size_t> parentEdge(g.vertices(), SIZE_MAX);
  size_t best = 0;
  for (size_t s : roots.vertices) {
    const size_t c = shortestCycleFrom(g, s, best, dist, parentEdge);
    if (c != 0 && (best == 0 || c < best)) best = c;
  }
  return best;
}

}  // namespace

size_t girth(const SparseBinaryMatrix& h) {
  const TannerGraph g(h);
  return girthOf(g, chooseRoots(h, detectCirculantSize(h)));
}

CycleCounts countShortCycles(const SparseBinaryMatrix& h) {
  CycleCounts out;
  out.circulantSize = detectCirculantSize(h);
  const TannerGraph g(h);
  const Roots roots = chooseRoots(h, out.circulantSize);
  out.girth = girthOf(g, roots);
  if (out.girth == 0) return out;
  const size_t half = out.girth / 2;
  const std::vector<uint64_t> pairs = walkPairs(g, roots.vertices, {half, half + 1, half + 2});
  for (size_t i = 0; i < 3; ++i) {
    const size_t L = out.girth + 2 * i;
    uint64_t closed = mul(pairs[i], roots.weight);
    if (L == 2 * out.girth) {
      // Non-cycles: S = g * (sum over all vertices of weight/12), half of
      // them starting on the counted side; with g = 4 that is weight/6.
      uint64_t weight = 0;
      for (size_t v = 0; v < g.vertices(); v += out.circulantSize) weight = add(weight, fourCyclePairWeight(g, v));
      weight = mul(weight, out.circulantSize);
      if (weight % 6 != 0 || weight / 6 > closed) throw std::logic_error("inconsistent 8-cycle correction");
      closed -= weight / 6;
    }
    if (closed % L != 0) throw std::logic_error("closed walks not a multiple of the cycle length");
    out.counts.emplace_back(L, closed / L);
  }
  return out;
}

}  // namespace tools
