// PageReadModel: the exact raw bit error rate of one page of a NAND cell
// read with given references, and the references that minimise it.
//
// A hard read of page p compares the cell's threshold voltage with the
// page's references r_1 < ... < r_m only; the m + 1 voltage regions they
// cut read alternating bits, starting with the erased state's bit. With
// random data every state is equally likely, so
//   RBER = 2^-b sum_s sum_{regions R read wrong for s} P(V_s in R),
// where each P(V_s in R) is a difference of normal CDFs, computed from the
// tail on the side of the mean that keeps it accurate (no cancellation for
// regions far in a tail).
//
// Optimal references (read retry): RBER is minimised one reference at a
// time over the open interval between the means of the two states it
// separates - a scan on 64 points to bracket the global minimum, then a
// golden-section search to the tolerance - and the sweep is repeated until
// no reference moves by more than the tolerance. Each reference only moves
// mass between its two neighbouring regions, so the sweeps settle quickly.
// The best point evaluated is kept, so the result is never worse than the
// model's default references.
#pragma once

#include <vector>

#include "nand/cellModel.h"

class PageReadModel {
 public:
  static constexpr double kDefaultTolerance = 1e-6;  // V

  // Throws std::invalid_argument as CellModel::distributions does.
  PageReadModel(const CellModel& model, int page, double cycles, double retentionHours);

  const CellModel& model() const { return cell; }
  int page() const { return pageIndex; }
  const std::vector<StateDistribution>& distributions() const { return states; }
  // Reference indices the page uses (CellModel::pageReferences).
  const std::vector<int>& referenceIndices() const { return boundaries; }
  // The page's references out of a full set of 2^b - 1.
  std::vector<double> pageReferencesOf(const std::vector<double>& allReferences) const;

  // The bit a hard read gives in region i (i references below the voltage).
  int regionBit(int region) const { return cell.bitOf(0, pageIndex) ^ (region & 1); }

  // RBER with the page's references (referenceIndices().size() of them,
  // strictly increasing; throws std::invalid_argument otherwise).
  double rber(const std::vector<double>& pageReferences) const;
  // The page's references minimising rber(), each within `tolerance` V.
  std::vector<double> optimalReferences(double tolerance = kDefaultTolerance) const;

  // P(lo < V < hi) for V ~ N(mean, sigma); lo may be -inf, hi +inf.
  static double mass(const StateDistribution& d, double lo, double hi);

 private:
  double minimiseReference(std::vector<double>& refs, size_t m, double tolerance) const;

  const CellModel& cell;
  int pageIndex;
  std::vector<StateDistribution> states;
  std::vector<int> boundaries;
};
