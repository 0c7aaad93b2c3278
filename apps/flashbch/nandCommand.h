// flashbch nand: exact page raw bit error rates of a NAND cell model over
// P/E cycles and retention time, with the default and the optimal read
// references, and the t each page needs to meet a target UBER.
#pragma once

#include <string>
#include <vector>

namespace flashbch {

struct NandOptions {
  std::string cell = "tlc";
  std::string model;  // a JSON model file; wins over --cell
  std::string page = "all";
  std::string pe = "0:1000:5000";
  std::string retention = "0,24,720,8760";
  std::string layout = "4x8192";
  double targetUber = 1e-15;
  std::string csv, json, plot;
};

int runNand(const NandOptions& options);

// Retention times in hours from a sweep (see sweep.h) whose values may end
// in a unit: h (hours, the default), d (days), w (weeks), y (365 days). In
// a START:STEP:STOP sweep the unit ends the whole text and applies to all
// points. Throws UsageError naming `flag`.
std::vector<double> parseRetentionSweep(const std::string& flag, const std::string& text);

}  // namespace flashbch
