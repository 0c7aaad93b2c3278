// Cell states, Gray map and the wear and retention laws; see the header.
#include "nand/cellModel.h"

#include <cmath>
#include <sstream>
#include <stdexcept>

namespace {

std::string text(double v) {
  std::ostringstream out;
  out.precision(10);
  out << v;
  return out.str();
}

void require(bool ok, const std::string& message) {
  if (!ok) throw std::invalid_argument(message);
}

bool isFinite(double v) { return std::isfinite(v); }

}  // namespace

CellModel::CellModel(CellParameters p) : params(std::move(p)) {
  const int b = params.bitsPerCell;
  require(b >= 1 && b <= 3, "bits per cell must be 1, 2 or 3, got " + std::to_string(b));
  const size_t count = size_t{1} << b;
  require(params.states.size() == count, "a " + cellName(b) + " cell needs " + std::to_string(count) +
                                             " states, got " + std::to_string(params.states.size()));
  require(isFinite(params.voltageMin) && isFinite(params.voltageMax) && params.voltageMin < params.voltageMax,
          "the voltage range must be two finite numbers, the first below the second");
  for (size_t s = 0; s < count; ++s) {
    const StateParameters& st = params.states[s];
    const std::string name = "state " + std::to_string(s);
    require(isFinite(st.mean) && st.mean > params.voltageMin && st.mean < params.voltageMax,
            name + ": the mean must lie inside the voltage range");
    require(isFinite(st.sigma) && st.sigma > 0.0, name + ": sigma must be a finite number > 0");
    require(s == 0 || st.mean > params.states[s - 1].mean, name + ": state means must be strictly increasing");
  }
  require(isFinite(params.wearScale) && params.wearScale >= 0.0, "wear scale a must be a finite number >= 0");
  require(isFinite(params.wearExponent) && params.wearExponent >= 0.0 && params.wearExponent <= 2.0,
          "wear exponent alpha must lie in 0 .. 2");
  require(isFinite(params.retentionOrigin) && params.retentionOrigin <= params.states[0].mean,
          "retention origin x0 must be finite and not above the erased state's mean");
  require(isFinite(params.retentionTau0Hours) && params.retentionTau0Hours > 0.0,
          "retention time constant tau0 must be a finite number of hours > 0");
  require(isFinite(params.retentionRateFresh) && params.retentionRateFresh >= 0.0,
          "retention rate k_f must be a finite number >= 0");
  require(isFinite(params.retentionRateWear) && params.retentionRateWear >= 0.0,
          "retention rate k_w must be a finite number >= 0");
  require(isFinite(params.retentionWearExponent) && params.retentionWearExponent >= 0.0 &&
              params.retentionWearExponent <= 2.0,
          "retention wear exponent beta must lie in 0 .. 2");
  checkReferences(params.defaultReferences);
}

int CellModel::bitsOfCellName(const std::string& name) {
  if (name == "slc") return 1;
  if (name == "mlc") return 2;
  if (name == "tlc") return 3;
  throw std::invalid_argument("unknown cell type '" + name + "': use slc, mlc or tlc");
}

std::string CellModel::cellName(int bitsPerCell) {
  static const char* const names[] = {"slc", "mlc", "tlc"};
  return bitsPerCell >= 1 && bitsPerCell <= 3 ? names[bitsPerCell - 1] : "unknown";
}

int CellModel::pageOfName(const std::string& name) const {
  for (int p = 0; p < pages(); ++p)
    if (pageName(p) == name) return p;
  std::string accepted;
  for (int p = 0; p < pages(); ++p) accepted += (p == 0 ? "" : p + 1 == pages() ? " or " : ", ") + pageName(p);
  throw std::invalid_argument("unknown page '" + name + "' for a " + cellName(bitsPerCell()) + " cell: use " +
                              accepted);
}

std::string CellModel::pageName(int page) const {
  if (page == 0) return "lower";
  return page == pages() - 1 ? "upper" : "middle";
}

int CellModel::bitOf(int state, int page) const {
  const int gray = state ^ (state >> 1);
  return 1 ^ ((gray >> (bitsPerCell() - 1 - page)) & 1);
}

std::vector<int> CellModel::pageReferences(int page) const {
  std::vector<int> refs;
  for (int j = 0; j + 1 < states(); ++j)
    if (bitOf(j, page) != bitOf(j + 1, page)) refs.push_back(j);
  return refs;
}

std::vector<StateDistribution> CellModel::distributions(double cycles, double retentionHours) const {
  require(isFinite(cycles) && cycles >= 0.0 && cycles <= kMaxCycles,
          "P/E cycles must be a number in 0 .. " + text(kMaxCycles) + ", got " + text(cycles));
  require(isFinite(retentionHours) && retentionHours >= 0.0 && retentionHours <= kMaxRetentionHours,
          "retention must be a number of hours in 0 .. " + text(kMaxRetentionHours) + ", got " +
              text(retentionHours));
  const CellParameters& p = params;
  const double widening = 1.0 + p.wearScale * std::pow(cycles, p.wearExponent);
  const double loss = (p.retentionRateFresh + p.retentionRateWear * std::pow(cycles, p.retentionWearExponent)) *
                      std::log1p(retentionHours / p.retentionTau0Hours);
  require(loss < 1.0, "P/E cycles " + text(cycles) + " and retention " + text(retentionHours) +
                          " h are beyond the model: the retention law would move programmed states below x0");
  std::vector<StateDistribution> d(states());
  for (int s = 0; s < states(); ++s) {
    const StateParameters& st = p.states[s];
    d[s] = {st.mean - (st.mean - p.retentionOrigin) * loss, st.sigma * widening};
  }
  return d;
}

void CellModel::checkReferences(const std::vector<double>& refs) const {
  const size_t need = static_cast<size_t>(states() - 1);
  require(refs.size() == need, "a " + cellName(bitsPerCell()) + " cell needs " + std::to_string(need) +
                                   " read references, got " + std::to_string(refs.size()));
  for (size_t j = 0; j < refs.size(); ++j) {
    require(isFinite(refs[j]) && refs[j] > params.voltageMin && refs[j] < params.voltageMax,
            "read reference " + text(refs[j]) + " lies outside the model's voltage range " +
                text(params.voltageMin) + " .. " + text(params.voltageMax) + " V");
    require(j == 0 || refs[j] > refs[j - 1], "read references must be strictly increasing");
  }
}
