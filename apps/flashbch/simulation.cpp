#include "simulation.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <set>
#include <stdexcept>

#include "blockWorker.h"
#include "roundScheduler.h"

namespace flashbch {

const char* estimatorName(Estimator estimator) {
  return estimator == Estimator::MonteCarlo ? "mc" : "stratified";
}

namespace {

template <typename Tally, typename F>
void forEachField(Tally& t, F f) {
  f(t.blocks);
  f(t.codewords);
  f(t.bitsSent);
  f(t.bitFlips);
  f(t.dataBits);
  f(t.dataBitErrors);
  f(t.dataBitErrorsSquared);
  f(t.uncorrectable);
  f(t.miscorrected);
}

double log10Of(double x) { return x > 0.0 ? std::log10(x) : -INFINITY; }

LogInterval logInterval(double value, Interval ci) { return {log10Of(value), log10Of(ci.low), log10Of(ci.high)}; }

}  // namespace

void PointTally::add(const PointTally& o) {
  std::vector<std::int64_t> theirs = o.toArray();
  size_t i = 0;
  forEachField(*this, [&](std::int64_t& field) { field += theirs[i++]; });
}

bool PointTally::operator==(const PointTally& o) const { return toArray() == o.toArray(); }

std::vector<std::int64_t> PointTally::toArray() const {
  std::vector<std::int64_t> fields;
  forEachField(*this, [&](const std::int64_t& field) { fields.push_back(field); });
  return fields;
}

PointTally PointTally::fromArray(const std::vector<std::int64_t>& fields) {
  if (fields.size() != kFields) throw std::invalid_argument("PointTally: wrong number of fields");
  PointTally t;
  size_t i = 0;
  forEachField(t, [&](std::int64_t& field) { field = fields[i++]; });
  return t;
}

PointEstimate monteCarloEstimate(double parameter, const PointTally& t) {
  PointEstimate e;
  e.parameter = parameter;
  e.rawBitErrorRate = t.bitsSent ? static_cast<double>(t.bitFlips) / t.bitsSent : NAN;
  const double n = static_cast<double>(t.codewords);
  const Interval fer = wilsonInterval95(t.failures(), t.codewords);
  e.fer = logInterval(t.failures() / n, fer);
  e.miscorrection = logInterval(t.miscorrected / n, wilsonInterval95(t.miscorrected, t.codewords));
  const double dataPerCodeword = t.dataBits / n;
  Interval uber{0.0, fer.high};
  if (t.dataBitErrors > 0) {
    uber = meanInterval95(static_cast<double>(t.dataBitErrors), static_cast<double>(t.dataBitErrorsSquared),
                          t.codewords);
    uber = {uber.low / dataPerCodeword, uber.high / dataPerCodeword};
  }
  e.uber = logInterval(static_cast<double>(t.dataBitErrors) / t.dataBits, uber);
  e.uncorrectable = t.uncorrectable;
  e.miscorrected = t.miscorrected;
  e.codewords = t.codewords;
  e.blocks = t.blocks;
  return e;
}

std::unique_ptr<Channel> channelAt(const SimulationSettings& s, double parameter) {
  return s.makeChannel ? s.makeChannel(parameter) : makeChannel(s.channel, parameter);
}

double relativeHalfWidth(const LogInterval& ci) {
  if (ci.log10Value == -INFINITY) return INFINITY;
  return (std::pow(10.0, ci.log10High - ci.log10Value) - std::pow(10.0, ci.log10Low - ci.log10Value)) / 2.0;
}

double estimatedMemoryBytes(const SimulationSettings& s) {
  // Per thread and codeword length a codec (field and decoding tables and
  // buffers: about 0.8 MiB, measured as the peak resident size over 20
  // lengths), and per thread the stack it touches and its scratch.
  const std::set<int> lengths(s.layout.dataBits.begin(), s.layout.dataBits.end());
  const double perThread = static_cast<double>(lengths.size()) * (1 << 20) + 256.0 * 1024;
  return std::max(1, s.threads) * perThread;
}

Simulator::Simulator(SimulationSettings settings) : settings_(std::move(settings)) {
  settings_.threads = std::max(1, settings_.threads);
  for (int i = 0; i < settings_.threads; ++i)
    workers_.push_back(std::make_unique<BlockWorker>(settings_.layout, settings_.makeDecoder));
}

Simulator::~Simulator() = default;

Simulator::PointResult Simulator::runPoint(int point, const ProgressCallback& onProgress, double progressSeconds) {
  const SimulationSettings& s = settings_;
  const auto channel = channelAt(s, s.parameters.at(static_cast<size_t>(point)));
  const auto start = std::chrono::steady_clock::now();
  const auto elapsed = [&] { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(); };
  double lastProgress = 0.0;
  PointTally tally;
  std::vector<PointTally> round;
  std::int64_t roundBlocks = std::max<std::int64_t>(1, s.firstRoundBlocks);
  for (;; roundBlocks = std::min(2 * roundBlocks, std::max(roundBlocks, s.largestRoundBlocks))) {
    const std::int64_t first = tally.blocks;
    round.assign(static_cast<size_t>(std::min(roundBlocks, s.maxBlocks - first)), PointTally());
    runRound(s.threads, static_cast<std::int64_t>(round.size()), [&](int worker, std::int64_t i) {
      round[static_cast<size_t>(i)] = workers_[static_cast<size_t>(worker)]->simulate(
          *channel, streamKey({s.seed, static_cast<std::uint64_t>(point), static_cast<std::uint64_t>(first + i)}));
    });
    for (const PointTally& one : round) tally.add(one);
    const double seconds = elapsed();
    if (onProgress && seconds - lastProgress >= progressSeconds) {
      lastProgress = seconds;
      onProgress({point, static_cast<int>(s.parameters.size()), tally.blocks, tally.failures(), tally.codewords,
                  seconds});
    }
    if (tally.failures() >= s.maxFailures || tally.blocks >= s.maxBlocks) break;
    if (s.targetRelativeHalfWidth > 0 &&
        relativeHalfWidth(monteCarloEstimate(0, tally).fer) <= s.targetRelativeHalfWidth)
      break;
    if ((s.timeLimit > 0 && seconds >= s.timeLimit) || (s.cancel && s.cancel->load())) break;
  }
  PointResult result;
  result.tally = tally;
  result.estimate = monteCarloEstimate(channel->parameter(), tally);
  result.estimate.seconds = elapsed();
  return result;
}

}  // namespace flashbch
