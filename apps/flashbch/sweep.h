// Parameter sweeps on the command line.
//
//   VALUE                 one point
//   A,B,C                 an explicit list
//   START:STEP:STOP       START, START+STEP, ... up to STOP (inclusive)
//   START:*FACTOR:STOP    START, START*FACTOR, ... up to STOP (also xFACTOR)
//
// Points are computed as START + i*STEP and START * FACTOR^i, never by
// accumulation, and STOP is included when it lies within a millionth of a
// step of the last point. A descending sweep needs a negative STEP (or a
// FACTOR below 1). For a probability sweep (--rber), whose values stay below
// 1, a plain STEP of 1 or more could never reach a second point, so it is
// read as a FACTOR: 1e-3:2:8e-3 is 1e-3, 2e-3, 4e-3, 8e-3.
#pragma once

#include <string>
#include <vector>

namespace flashbch {

enum class SweepKind { Real, Probability, Integer };

// Parses `text` given to `flag`; throws UsageError naming the flag when the
// text is malformed, a point falls outside [minValue, maxValue], or the sweep
// has more than maxPoints points.
std::vector<double> parseSweep(const std::string& flag, const std::string& text, SweepKind kind, double minValue,
                               double maxValue, int maxPoints = 1000);

// Shortest decimal text that reads back as the same double ("%.15g" cut down).
std::string formatNumber(double value);

}  // namespace flashbch
