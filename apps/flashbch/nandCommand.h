// flashbch nand: exact page raw bit error rates of a NAND cell model over
// P/E cycles and retention time, with the default and the optimal read
// references, and the t each page needs to meet a target UBER.
#pragma once

#include <string>
#include <vector>

#include "blockLayout.h"
#include "nand/cellModel.h"

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

// One row of the table: a page after some P/E cycles and retention time.
struct NandRow {
  int page = 0;
  double cycles = 0.0, retentionHours = 0.0;
  std::vector<double> defaultRefs, optimalRefs;  // the page's references, volts
  double rberDefault = 0.0, rberOptimal = 0.0;
  int tDefault = 0, tOptimal = 0;  // 0: not reachable up to kMaxT
};

struct NandTable {
  CellModel model;
  std::vector<int> pages;
  std::vector<double> cycles, hours;
  BlockLayout layout;          // the data bits, with t = 1
  std::vector<NandRow> rows;  // for each page, each P/E count, each retention time
};

// Checks every option but the output files (UsageError naming the flag) and
// computes the rows: what `flashbch nand` prints and the Python module returns.
NandTable computeNandTable(const NandOptions& options);

int runNand(const NandOptions& options);

// Retention times in hours from a sweep (see sweep.h) whose values may end
// in a unit: h (hours, the default), d (days), w (weeks), y (365 days). In
// a START:STEP:STOP sweep the unit ends the whole text and applies to all
// points. Throws UsageError naming `flag`.
std::vector<double> parseRetentionSweep(const std::string& flag, const std::string& text);

}  // namespace flashbch
