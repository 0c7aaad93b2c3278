// Exact page error rates and optimal read references; see the header.
#include "nand/pageReadModel.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace {

// Q(z) = P(Z > z) for a standard normal Z.
double upperTail(double z) { return 0.5 * std::erfc(z / std::sqrt(2.0)); }

}  // namespace

PageReadModel::PageReadModel(const CellModel& model, int page, double cycles, double retentionHours)
    : cell(model), pageIndex(page) {
  if (page < 0 || page >= model.pages())
    throw std::invalid_argument("page index " + std::to_string(page) + " out of range for a " +
                                CellModel::cellName(model.bitsPerCell()) + " cell");
  states = model.distributions(cycles, retentionHours);
  boundaries = model.pageReferences(page);
}

std::vector<double> PageReadModel::pageReferencesOf(const std::vector<double>& all) const {
  cell.checkReferences(all);
  std::vector<double> refs;
  for (int j : boundaries) refs.push_back(all[j]);
  return refs;
}

double PageReadModel::mass(const StateDistribution& d, double lo, double hi) {
  if (!(lo < hi)) return 0.0;
  const double a = (lo - d.mean) / d.sigma, b = (hi - d.mean) / d.sigma;
  // Both ends above the mean: difference of upper tails; both below: of
  // lower tails; otherwise the complement of the two tails.
  if (a >= 0.0) return upperTail(a) - upperTail(b);
  if (b <= 0.0) return upperTail(-b) - upperTail(-a);
  return 1.0 - upperTail(-a) - upperTail(b);
}

double PageReadModel::rber(const std::vector<double>& refs) const {
  if (refs.size() != boundaries.size())
    throw std::invalid_argument("page " + cell.pageName(pageIndex) + " reads with " +
                                std::to_string(boundaries.size()) + " references, got " +
                                std::to_string(refs.size()));
  for (size_t m = 1; m < refs.size(); ++m)
    if (!(refs[m] > refs[m - 1])) throw std::invalid_argument("read references must be strictly increasing");
  const double inf = std::numeric_limits<double>::infinity();
  double wrong = 0.0;
  for (int s = 0; s < cell.states(); ++s) {
    const int bit = cell.bitOf(s, pageIndex);
    for (size_t region = 0; region <= refs.size(); ++region) {
      if (regionBit(static_cast<int>(region)) == bit) continue;
      const double lo = region == 0 ? -inf : refs[region - 1], hi = region == refs.size() ? inf : refs[region];
      wrong += mass(states[s], lo, hi);
    }
  }
  return wrong / cell.states();
}

double PageReadModel::minimiseReference(std::vector<double>& refs, size_t m, double tolerance) const {
  const int j = boundaries[m];
  const double lo = states[j].mean, hi = states[j + 1].mean;
  // Every evaluation is a candidate: the result is never worse than the
  // starting point, the model's default reference or any scanned point.
  double bestX = refs[m], bestValue = rber(refs);
  auto at = [&](double x) {
    refs[m] = x;
    const double v = rber(refs);
    if (v < bestValue) bestValue = v, bestX = x;
    return v;
  };
  const double preset = cell.parameters().defaultReferences[j];
  if (preset > lo && preset < hi) at(preset);
  // Bracket: the best of 64 interior points and its two neighbours.
  constexpr int kScan = 64;
  const double step = (hi - lo) / (kScan + 1);
  int best = 1;
  double scanValue = std::numeric_limits<double>::infinity();
  for (int i = 1; i <= kScan; ++i) {
    const double v = at(lo + i * step);
    if (v < scanValue) scanValue = v, best = i;
  }
  double a = lo + (best - 1) * step, b = lo + (best + 1) * step;
  const double ratio = (std::sqrt(5.0) - 1.0) / 2.0;
  double x1 = b - ratio * (b - a), x2 = a + ratio * (b - a);
  double f1 = at(x1), f2 = at(x2);
  while (b - a > tolerance) {
    if (f1 <= f2) {
      b = x2, x2 = x1, f2 = f1;
      x1 = b - ratio * (b - a), f1 = at(x1);
    } else {
      a = x1, x1 = x2, f1 = f2;
      x2 = a + ratio * (b - a), f2 = at(x2);
    }
  }
  at(0.5 * (a + b));
  refs[m] = bestX;
  return bestX;
}

std::vector<double> PageReadModel::optimalReferences(double tolerance) const {
  if (!(tolerance > 0.0)) throw std::invalid_argument("the reference tolerance must be > 0");
  std::vector<double> refs;
  for (int j : boundaries) refs.push_back(0.5 * (states[j].mean + states[j + 1].mean));
  for (int sweep = 0; sweep < 50; ++sweep) {
    double moved = 0.0;
    for (size_t m = 0; m < refs.size(); ++m) {
      const double before = refs[m];
      moved = std::max(moved, std::fabs(minimiseReference(refs, m, tolerance) - before));
    }
    if (moved <= tolerance) break;
  }
  return refs;
}
