// Plots through gnuplot: the tool writes the data as CSV and a small script
// into a private temporary directory and runs `gnuplot` from PATH on it.
// The terminal follows the output's extension (.png: pngcairo, .svg: svg).
#pragma once

#include <string>

namespace flashbch {

// Throws UsageError naming --plot when the extension is neither .png nor
// .svg, or when no gnuplot is found on PATH (checked before any work).
void checkPlotTarget(const std::string& output);

struct PlotRequest {
  std::string output;
  std::string title;
  std::string xLabel;
  std::string yLabel;
  bool logX = false;
  std::string keyPosition = "bottom left";  // where the curves leave room
  std::string csv;                          // the data, with a header line
  std::string series;                       // gnuplot `plot` arguments reading the file 'DATA'
};

// Returns an empty string on success, else what went wrong.
std::string runGnuplot(const PlotRequest& request);

}  // namespace flashbch
