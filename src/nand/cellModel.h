// CellModel: the threshold voltages of NAND flash cells storing b = 1, 2 or
// 3 bits (SLC, MLC, TLC) as 2^b states, and how wear and retention move
// them.
//
// State s (0 = erased) has a normal threshold-voltage distribution whose
// parameters depend on the program/erase cycles N and the retention time
// tau (hours) as
//   sigma_s(N)      = sigma_s0 (1 + a N^alpha)
//   mu_s(N, tau)    = mu_s0 - (mu_s0 - x0) (k_f + k_w N^beta) ln(1 + tau / tau0)
// The widening follows the power law in N of the raw error rate measured on
// cycled MLC parts [N. Mielke et al., "Bit error rate in NAND flash
// memories", IEEE IRPS 2008]. The retention loss is proportional to the
// stored charge above the erased level x0, logarithmic in time and faster
// on worn cells, the form of the charge-loss model of G. Dong, N. Xie and
// T. Zhang, "On the use of soft-decision error-correction codes in NAND
// flash memory", IEEE Trans. Circuits Syst. I 58(2), 2011 (there k_f = 0,
// k_w = Ks Kd = 0.333 * 4e-4, beta = 0.5, x0 = 1.4 V, tau0 = 1 h).
//
// Bits: state s holds the bits of the binary-reflected Gray code of s,
// inverted so that the erased state reads all ones. Page p (0 = lower,
// 1 = middle, b-1 = upper) takes Gray bit b-1-p: the lower page changes
// once along the voltage axis, the middle page twice, the upper page
// 2^(b-1) times, and adjacent states differ in exactly one page. Reference
// j (0 .. 2^b - 2) separates states j and j+1; it belongs to the one page
// whose bit changes there.
#pragma once

#include <string>
#include <vector>

struct StateParameters {
  double mean;   // V, at N = 0 and tau = 0
  double sigma;  // V, at N = 0
};

struct CellParameters {
  int bitsPerCell = 0;
  std::vector<StateParameters> states;  // 2^b, means strictly increasing
  double voltageMin = 0.0, voltageMax = 0.0;  // where read references may lie
  std::vector<double> defaultReferences;      // 2^b - 1, strictly increasing
  double wearScale = 0.0;                     // a
  double wearExponent = 0.0;                  // alpha
  double retentionOrigin = 0.0;               // x0, V
  double retentionTau0Hours = 1.0;            // tau0
  double retentionRateFresh = 0.0;            // k_f
  double retentionRateWear = 0.0;             // k_w
  double retentionWearExponent = 0.0;         // beta
};

struct StateDistribution {
  double mean;
  double sigma;
};

class CellModel {
 public:
  static constexpr double kMaxCycles = 1e7;
  static constexpr double kMaxRetentionHours = 1e7;

  // Throws std::invalid_argument naming the first parameter out of range.
  explicit CellModel(CellParameters parameters);

  // "slc", "mlc", "tlc" <-> 1, 2, 3; throws std::invalid_argument otherwise.
  static int bitsOfCellName(const std::string& name);
  static std::string cellName(int bitsPerCell);
  // "lower", "middle", "upper" for this cell's pages; throws otherwise.
  int pageOfName(const std::string& name) const;
  std::string pageName(int page) const;

  const CellParameters& parameters() const { return params; }
  int bitsPerCell() const { return params.bitsPerCell; }
  int states() const { return 1 << params.bitsPerCell; }
  int pages() const { return params.bitsPerCell; }

  // The stored bit of `page` in `state`.
  int bitOf(int state, int page) const;
  // The references (indices j) where the page's bit changes, ascending.
  std::vector<int> pageReferences(int page) const;

  // The state distributions after `cycles` P/E cycles and `retentionHours`;
  // throws std::invalid_argument for a negative, non-finite or too large
  // argument, or when the retention loss would reorder the states.
  std::vector<StateDistribution> distributions(double cycles, double retentionHours) const;

  // Throws std::invalid_argument unless refs has 2^b - 1 strictly
  // increasing values inside the voltage range.
  void checkReferences(const std::vector<double>& refs) const;

 private:
  CellParameters params;
};
