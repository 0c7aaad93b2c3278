// Soft-read bins and their LLRs; see the header.
#include "nand/softPageRead.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

#include "Tools/FixedPoint.h"

SoftPageRead::SoftPageRead(const PageReadModel& read, const std::vector<double>& refs, int softReads,
                           double step, LlrFormat format) {
  if (softReads < 0 || softReads > kMaxSoftReads)
    throw std::invalid_argument("soft reads must be 0 .. " + std::to_string(kMaxSoftReads) + ", got " +
                                std::to_string(softReads));
  if (softReads > 0 && !(std::isfinite(step) && step > 0.0))
    throw std::invalid_argument("the soft-read step must be a finite number of volts > 0");
  if (format.bits < 2 || format.bits > 16 || format.scale < -16 || format.scale > 16)
    throw std::invalid_argument("LLR format: bits must be 2 .. 16 and scale -16 .. 16");
  read.rber(refs);  // checks the references

  for (double r : refs)
    for (int k = -softReads; k <= softReads; ++k) edges.push_back(r + k * step);
  std::sort(edges.begin(), edges.end());
  edges.erase(std::unique(edges.begin(), edges.end()), edges.end());

  const CellModel& cell = read.model();
  const double inf = std::numeric_limits<double>::infinity();
  const double share = 2.0 / cell.states();
  FixedPoint register_(format.bits, format.scale, "slr");
  for (size_t i = 0; i <= edges.size(); ++i) {
    const double lo = i == 0 ? -inf : edges[i - 1], hi = i == edges.size() ? inf : edges[i];
    double p[2] = {0.0, 0.0};
    for (int s = 0; s < cell.states(); ++s)
      p[cell.bitOf(s, read.page())] += share * PageReadModel::mass(read.distributions()[s], lo, hi);
    given[0].push_back(p[0]);
    given[1].push_back(p[1]);
    // The hard read's region: how many page references lie at or below the bin.
    const int region = static_cast<int>(std::upper_bound(refs.begin(), refs.end(), lo) - refs.begin());
    hard.push_back(read.regionBit(region));
    const double value = p[0] > 0.0 || p[1] > 0.0 ? std::log(p[0]) - std::log(p[1]) : 0.0;
    llrs.push_back(value);
    register_ = std::isfinite(value) ? value : std::copysign(1e300, value);
    quantized.push_back(register_.get_val());
  }
}

int SoftPageRead::binOf(double voltage) const {
  return static_cast<int>(std::upper_bound(edges.begin(), edges.end(), voltage) - edges.begin());
}

double SoftPageRead::rber() const {
  double wrong = 0.0;
  for (int i = 0; i < bins(); ++i) wrong += 0.5 * given[1 - hard[i]][i];
  return wrong;
}
