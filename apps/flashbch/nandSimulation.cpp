// Options of the NAND and beta-binomial channels and of the Chase decoder;
// see the header.
#include "nandSimulation.h"

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "betaBinomialChannel.h"
#include "chaseCodewordDecoder.h"
#include "checkpoint.h"
#include "codeFacts.h"
#include "errorStatistics.h"
#include "nandChannel.h"
#include "nandCommand.h"
#include "nandModelFile.h"
#include "sweep.h"
#include "usageError.h"

namespace flashbch {

namespace {

// Runs a library or channel constructor, turning its std::invalid_argument
// into a usage error with the same text.
template <typename F>
auto checked(F make) -> decltype(make()) {
  try {
    return make();
  } catch (const std::invalid_argument& e) {
    throw UsageError(e.what());
  }
}

std::string exact(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.17g", value);
  return text;
}

std::string exactList(const std::vector<double>& values) {
  std::string text;
  for (double v : values) text += (text.empty() ? "" : ",") + exact(v);
  return text;
}

// Every parameter of a cell model, exactly, in a fixed order: two models
// give the same text only when they describe the same cells.
std::string parametersText(const CellParameters& p) {
  std::vector<double> values{static_cast<double>(p.bitsPerCell), p.voltageMin, p.voltageMax};
  for (const StateParameters& state : p.states) values.insert(values.end(), {state.mean, state.sigma});
  values.insert(values.end(), p.defaultReferences.begin(), p.defaultReferences.end());
  values.insert(values.end(), {p.wearScale, p.wearExponent, p.retentionOrigin, p.retentionTau0Hours,
                               p.retentionRateFresh, p.retentionRateWear, p.retentionWearExponent});
  return exactList(values);
}

// --refs as the run reads it: default, optimal, or the volts exactly.
RunSetting referencesSetting(const std::string& refs) {
  if (refs == "default" || refs == "optimal") return {"refs", refs, RunSetting::Kind::Text};
  std::vector<double> volts;
  std::istringstream items(refs);
  for (std::string item; std::getline(items, item, ',');) volts.push_back(std::strtod(item.c_str(), nullptr));
  return {"refs", exactList(volts), RunSetting::Kind::Numbers};
}

bool defaultOrEmpty(const SimulateOptions& o) {
  const SimulateOptions plain;
  return o.cell == plain.cell && o.model.empty() && o.page == plain.page && o.pe.empty() && o.retention.empty() &&
         o.refs == plain.refs && o.softReads == plain.softReads && o.softStep == plain.softStep;
}

}  // namespace

bool applyNandOrBetaBinomialChannel(const SimulateOptions& o, SimulationSettings& s) {
  if (o.channel == "bbm") {
    s.channel = ChannelKind::BetaBinomial;
    if (!o.snr.empty()) throw UsageError("--snr: applies to --channel awgn; bbm is swept with --rber");
    if (!defaultOrEmpty(o)) throw UsageError("--cell, --page, --pe, --retention, --refs, --soft-*: apply to --channel nand");
    if (o.dispersion.empty()) throw UsageError("--dispersion: --channel bbm needs the correlation rho, 0 <= rho < 1");
    char* end = nullptr;
    const double rho = std::strtod(o.dispersion.c_str(), &end);
    if (*end != '\0' || !(rho >= 0.0 && rho < 1.0))
      throw UsageError("--dispersion: '" + o.dispersion + "' is not a number in 0 <= rho < 1");
    s.parameters = parseSweep("--rber", o.rber.empty() ? "2.8e-3:*1.2:7e-3" : o.rber, SweepKind::Probability, 0.0, 0.5);
    for (double p : s.parameters)
      if (!(p < 0.5)) throw UsageError("--rber: " + formatNumber(p) + " is not below 0.5");
    s.makeChannel = [rho](double p) { return std::make_unique<BetaBinomialChannel>(p, rho); };
    s.runSettings.push_back({"dispersion", exact(rho), RunSetting::Kind::Number});
    return true;
  }
  if (o.channel != "nand") return false;
  s.channel = ChannelKind::Nand;
  if (!o.snr.empty() || !o.rber.empty())
    throw UsageError("--snr, --rber: the NAND channel is swept with --pe or --retention");
  if (!o.dispersion.empty()) throw UsageError("--dispersion: applies to --channel bbm");
  auto model = std::make_shared<const CellModel>(loadCellModel(o.cell, o.model));
  NandChannelSettings base;
  base.model = model;
  base.page = checked([&] { return model->pageOfName(o.page); });
  base.refs = o.refs;
  base.softReads = o.softReads;
  base.softStep = o.softStep;
  const std::vector<double> cycles =
      parseSweep("--pe", o.pe.empty() ? "1000:1000:5000" : o.pe, SweepKind::Integer, 0.0, CellModel::kMaxCycles);
  const std::vector<double> hours = parseRetentionSweep("--retention", o.retention.empty() ? "0" : o.retention);
  if (cycles.size() > 1 && hours.size() > 1)
    throw UsageError("--retention: sweep either --pe or --retention; the other must be one value");
  const bool overRetention = hours.size() > 1;
  s.parameters = overRetention ? hours : cycles;
  s.parameterName = overRetention ? "retention_hours" : "pe";
  if (overRetention)
    base.cycles = cycles.front();
  else
    base.retentionHours = hours.front();
  s.makeChannel = [base, overRetention](double parameter) {
    NandChannelSettings at = base;
    (overRetention ? at.retentionHours : at.cycles) = parameter;
    return std::make_unique<NandChannel>(at, parameter);
  };
  for (double parameter : s.parameters) checked([&] { return s.makeChannel(parameter); });

  char crc[16];
  std::snprintf(crc, sizeof crc, "%08" PRIx32, crc32(parametersText(model->parameters())));
  s.runSettings.push_back({"cell", CellModel::cellName(model->bitsPerCell()), RunSetting::Kind::Text});
  s.runSettings.push_back({"model", o.model.empty() ? "built-in" : o.model, RunSetting::Kind::Text});
  s.runSettings.push_back({"model-crc32", crc, RunSetting::Kind::Text});
  s.runSettings.push_back({"page", model->pageName(base.page), RunSetting::Kind::Text});
  if (overRetention)
    s.runSettings.push_back({"pe", exact(base.cycles), RunSetting::Kind::Number});
  else
    s.runSettings.push_back({"retention-hours", exact(base.retentionHours), RunSetting::Kind::Number});
  s.runSettings.push_back(referencesSetting(o.refs));
  s.runSettings.push_back({"soft-reads", std::to_string(o.softReads), RunSetting::Kind::Number});
  s.runSettings.push_back({"soft-step", exact(o.softStep), RunSetting::Kind::Number});
  return true;
}

void applyDecoder(const SimulateOptions& o, SimulationSettings& s) {
  if (o.channel != "bbm" && !o.dispersion.empty()) throw UsageError("--dispersion: applies to --channel bbm");
  if (o.channel != "nand" && o.channel != "bbm" && !defaultOrEmpty(o))
    throw UsageError("--cell, --model, --page, --pe, --retention, --refs, --soft-*: apply to --channel nand");
  if (o.decoder == "hard") {
    s.runSettings.push_back({"decoder", "hard", RunSetting::Kind::Text});
    return;
  }
  if (o.decoder != "chase") throw UsageError("--decoder: '" + o.decoder + "' is not a decoder; accepted: hard, chase");
  const int eta = o.chasePositions;
  if (eta < 0 || eta > quil::PackedBCH::kMaxChasePositions)
    throw UsageError("--chase-positions: eta must be 0 .. " + std::to_string(quil::PackedBCH::kMaxChasePositions) +
                     ", got " + std::to_string(eta));
  s.runSettings.push_back({"decoder", "chase", RunSetting::Kind::Text});
  s.runSettings.push_back({"chase-positions", std::to_string(eta), RunSetting::Kind::Number});
  s.makeDecoder = [eta](int dataBits, int t) { return std::make_unique<ChaseCodewordDecoder>(dataBits, t, eta); };
}

double log10AnalyticFailureRate(const Channel& channel, const BlockLayout& layout) {
  const auto logAdd = [](double a, double b) {
    if (a < b) std::swap(a, b);
    return b == -INFINITY ? a : a + std::log1p(std::exp(b - a));
  };
  if (channel.kind() != ChannelKind::BetaBinomial) return log10BlockFailureRate(layout, channel.rawBitErrorRate());
  double logMean = -INFINITY;
  for (int i = 0; i < layout.codewords(); ++i) {
    const int n = layout.codeLength(i);
    double logTail = -INFINITY;
    for (int w = layout.t + 1; w <= n; ++w) logTail = logAdd(logTail, channel.logWeight(n, w));
    logMean = logAdd(logMean, logTail);
  }
  return (logMean - std::log(static_cast<double>(layout.codewords()))) / std::log(10.0);
}

}  // namespace flashbch
