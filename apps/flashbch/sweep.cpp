#include "sweep.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "usageError.h"

namespace flashbch {

namespace {

bool parseReal(const std::string& text, double& value) {
  if (text.empty()) return false;
  char* end = nullptr;
  value = std::strtod(text.c_str(), &end);
  return end == text.c_str() + text.size() && std::isfinite(value);
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::string::size_type start = 0;
  for (;;) {
    const auto at = text.find(separator, start);
    parts.push_back(text.substr(start, at == std::string::npos ? std::string::npos : at - start));
    if (at == std::string::npos) return parts;
    start = at + 1;
  }
}

[[noreturn]] void malformed(const std::string& flag, const std::string& text, SweepKind kind) {
  std::string forms = "VALUE, A,B,C, START:STEP:STOP or START:*FACTOR:STOP";
  if (kind == SweepKind::Integer) forms = "VALUE, A,B,C or START:STEP:STOP with whole numbers";
  throw UsageError(flag + ": cannot read '" + text + "'; accepted forms: " + forms);
}

}  // namespace

std::string formatNumber(double value) {
  char buffer[32];
  // Whole-number digits are never traded for an exponent: 110, not 1.1e+02.
  const double magnitude = std::fabs(value);
  const int integerDigits = magnitude >= 1.0 && magnitude < 1e15 ? static_cast<int>(std::log10(magnitude)) + 1 : 1;
  for (int digits = integerDigits; digits <= 17; ++digits) {
    std::snprintf(buffer, sizeof buffer, "%.*g", digits, value);
    if (std::strtod(buffer, nullptr) == value) break;
  }
  return buffer;
}

std::vector<double> parseSweep(const std::string& flag, const std::string& text, SweepKind kind, double minValue,
                               double maxValue, int maxPoints) {
  std::vector<double> points;
  const std::vector<std::string> range = split(text, ':');
  if (range.size() == 1) {
    for (const std::string& item : split(text, ',')) {
      double v;
      if (!parseReal(item, v)) malformed(flag, text, kind);
      points.push_back(v);
    }
  } else if (range.size() == 3) {
    double start, stop, step;
    std::string stepText = range[1];
    bool geometric = !stepText.empty() && (stepText[0] == '*' || stepText[0] == 'x');
    if (geometric) stepText.erase(0, 1);
    if (!parseReal(range[0], start) || !parseReal(stepText, step) || !parseReal(range[2], stop))
      malformed(flag, text, kind);
    if (kind == SweepKind::Probability && step >= 1.0) geometric = true;
    if (geometric && kind == SweepKind::Integer) malformed(flag, text, kind);
    if (geometric) {
      if (!(start > 0.0) || !(stop > 0.0) || !(step > 0.0) || step == 1.0)
        throw UsageError(flag + ": a ratio sweep needs START and STOP above 0 and a FACTOR other than 1 ('" + text +
                         "')");
      const double span = std::log(stop / start) / std::log(step);
      if (span < -1e-6) throw UsageError(flag + ": FACTOR leads away from STOP in '" + text + "'");
      if (span + 1.0 > maxPoints)
        throw UsageError(flag + ": '" + text + "' makes more than " + std::to_string(maxPoints) +
                         " points; at most " + std::to_string(maxPoints) + " are accepted");
      const long count = static_cast<long>(std::floor(span + 1e-6)) + 1;
      for (long i = 0; i < count; ++i) points.push_back(start * std::pow(step, static_cast<double>(i)));
    } else {
      if (step == 0.0) throw UsageError(flag + ": STEP must not be 0 in '" + text + "'");
      const double span = (stop - start) / step;
      if (span < -1e-6) throw UsageError(flag + ": STEP leads away from STOP in '" + text + "'");
      if (span + 1.0 > maxPoints)
        throw UsageError(flag + ": '" + text + "' makes more than " + std::to_string(maxPoints) +
                         " points; at most " + std::to_string(maxPoints) + " are accepted");
      const long count = static_cast<long>(std::floor(span + 1e-6)) + 1;
      for (long i = 0; i < count; ++i) points.push_back(start + static_cast<double>(i) * step);
    }
  } else {
    malformed(flag, text, kind);
  }
  if (static_cast<long>(points.size()) > maxPoints)
    throw UsageError(flag + ": '" + text + "' makes " + std::to_string(points.size()) + " points; at most " +
                     std::to_string(maxPoints) + " are accepted");
  for (double v : points) {
    if (kind == SweepKind::Integer && v != std::floor(v)) malformed(flag, text, kind);
    // Rounding in START + i*STEP may leave the last point a hair past a bound.
    const double slack = 1e-9 * std::max(1.0, std::fabs(v));
    if (v < minValue - slack || v > maxValue + slack)
      throw UsageError(flag + ": " + formatNumber(v) + " is outside the accepted range " + formatNumber(minValue) +
                       " .. " + formatNumber(maxValue));
  }
  for (double& v : points) v = std::min(maxValue, std::max(minValue, v));
  return points;
}

}  // namespace flashbch
