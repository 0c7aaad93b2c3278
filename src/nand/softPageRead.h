// SoftPageRead: the voltage bins of a page read with extra sensing around
// each reference, and the exact log-likelihood ratio of every bin.
//
// With K soft reads of step delta, each of the page's references r is also
// sensed at r - K delta, ..., r - delta, r + delta, ..., r + K delta (2K
// extra sensings per reference; K = 0 is the plain hard read). The sorted
// sensing voltages cut the axis into bins. For a bin B,
//   P(B | bit = v) = 2^-(b-1) sum_{s : bit(s) = v} P(V_s in B)
// (both bit values are held by half the states), and the bin's LLR is
// ln P(B | 0) / P(B | 1): positive favours 0. The hard decision is the bit
// of the hard read's region holding the bin. LLRs are clamped and
// quantised as a register of `llrBits` bits whose least significant bit
// weighs 2^llrScale (signed, saturating, rounding half up; FixedPoint).
#pragma once

#include <vector>

#include "nand/pageReadModel.h"

class SoftPageRead {
 public:
  static constexpr int kMaxSoftReads = 7;

  struct LlrFormat {
    int bits = 6;    // 2 .. 16
    int scale = -1;  // the LSB weighs 2^scale
  };

  // refs: the page's references (PageReadModel::rber's argument). Throws
  // std::invalid_argument for K outside 0..kMaxSoftReads, a step that is not
  // finite and > 0 when K > 0, or a bad LLR format.
  SoftPageRead(const PageReadModel& read, const std::vector<double>& refs, int softReads, double step,
               LlrFormat format);
  SoftPageRead(const PageReadModel& read, const std::vector<double>& refs, int softReads, double step)
      : SoftPageRead(read, refs, softReads, step, LlrFormat()) {}

  int bins() const { return static_cast<int>(llrs.size()); }
  // Sensing voltages, ascending; bin i lies between thresholds i-1 and i.
  const std::vector<double>& thresholds() const { return edges; }
  int binOf(double voltage) const;
  double probability(int bin, int bit) const { return given[bit][bin]; }
  int hardBit(int bin) const { return hard[bin]; }
  double llr(int bin) const { return llrs[bin]; }
  double quantizedLlr(int bin) const { return quantized[bin]; }
  // The page's raw bit error rate (the hard read's, summed over bins).
  double rber() const;

 private:
  std::vector<double> edges;
  std::vector<double> given[2];
  std::vector<int> hard;
  std::vector<double> llrs, quantized;
};
