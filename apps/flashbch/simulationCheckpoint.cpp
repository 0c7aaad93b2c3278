#include "simulationCheckpoint.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <stdexcept>

#include "distribution.h"
#include "stratifiedEstimator.h"
#include "usageError.h"

namespace flashbch {

namespace {

std::string exact(double value) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.17g", value);
  return buffer;
}

// Test hook: FLASHBCH_TEST_RAISE=RANK:ROUNDS:SIGNAL makes rank RANK raise
// SIGNAL after its ROUNDS-th round, so that tests can stop or kill a run at
// a known place; SIGNAL 0 throws an exception there instead, as a fault in
// the simulation would.
void raiseForTest(const Distribution& ranks, std::int64_t rounds) {
  static const char* const request = std::getenv("FLASHBCH_TEST_RAISE");
  int rank = -1, signal = 0;
  long long after = 0;
  if (!request || std::sscanf(request, "%d:%lld:%d", &rank, &after, &signal) != 3 || rank != ranks.rank() ||
      rounds != after)
    return;
  if (signal == 0) throw std::runtime_error("test fault after round " + std::to_string(rounds));
  std::raise(signal);
}

}  // namespace

SettingsFingerprint fingerprintOf(const SimulationSettings& s) {
  SettingsFingerprint f;
  f.add("layout", s.layout.describe());
  f.add("t", std::to_string(s.layout.t));
  f.add("channel", channelName(s.channel));
  std::string sweep;
  for (double p : s.parameters) sweep += (sweep.empty() ? "" : ",") + exact(p);
  std::string swept = s.parameterName.empty() ? channelParameterName(s.channel) : s.parameterName;
  for (char& c : swept) c = c == '_' ? '-' : c;
  f.add(swept, sweep);
  for (const RunSetting& setting : s.runSettings) f.add(setting.name, setting.text);
  f.add("estimator", estimatorName(s.estimator));
  f.add("max-fe", std::to_string(s.maxFailures));
  f.add("max-frames", std::to_string(s.maxBlocks));
  f.add("time-limit", exact(s.timeLimit));
  f.add("target-rel-ci", exact(s.targetRelativeHalfWidth));
  f.add("seed", std::to_string(s.seed));
  f.add("round-blocks", std::to_string(s.firstRoundBlocks) + ".." + std::to_string(s.largestRoundBlocks));
  return f;
}

SimulationCheckpoint::SimulationCheckpoint(CheckpointFile file, const SimulationSettings& settings,
                                           Distribution& ranks)
    : file_(std::move(file)), ranks_(ranks) {
  state_.settings = fingerprintOf(settings);
  std::string text, refusal;
  if (ranks_.isRoot()) {
    try {
      if (const auto saved = file_.resume(state_.settings)) text = saved->serialize();
    } catch (const UsageError& e) {
      refusal = e.what();
    }
  }
  const auto failure = ranks_.failedRank(!refusal.empty(), refusal);
  if (failure.rank >= 0) throw UsageError(failure.message);
  text = ranks_.broadcast(text);
  if (!text.empty()) state_ = Checkpoint::parse(text, "--resume");
}

int SimulationCheckpoint::finishedPoints() const {
  int count = 0;
  for (const PointState& p : state_.points) count += p.finished ? 1 : 0;
  return count;
}

Simulator::PointResult SimulationCheckpoint::finishedPoint(int point) const {
  const PointState& p = state_.points.at(static_cast<size_t>(point));
  Simulator::PointResult result;
  result.tally = PointTally::fromArray(p.counts);
  result.estimate.seconds = p.seconds;
  return result;
}

std::optional<Simulator::RoundState> SimulationCheckpoint::runningPoint() const {
  if (state_.points.empty() || state_.points.back().finished) return std::nullopt;
  const PointState& p = state_.points.back();
  return Simulator::RoundState{PointTally::fromArray(p.counts), p.rounds, p.seconds};
}

void SimulationCheckpoint::roundDone(int point, const Simulator::RoundState& state) {
  if (!state_.points.empty() && !state_.points.back().finished) state_.points.pop_back();
  state_.points.push_back({point, false, state.rounds, state.seconds, state.tally.toArray(), {}});
  saveWhenDue();
}

void SimulationCheckpoint::pointDone(int point, const Simulator::PointResult& result) {
  std::int64_t rounds = 0;
  if (!state_.points.empty() && !state_.points.back().finished) {
    rounds = state_.points.back().rounds;
    state_.points.pop_back();
  }
  state_.points.push_back({point, true, rounds, result.estimate.seconds, result.tally.toArray(), {}});
}

bool SimulationCheckpoint::restore(StratifiedEstimator& estimator) const {
  if (state_.points.empty()) return false;
  const PointState& p = state_.points.front();
  auto& tallies = estimator.tallies();
  if (p.counts.size() != 5 * tallies.size())
    throw UsageError("--resume: the checkpoint holds " + std::to_string(p.counts.size() / 5) +
                     " error counts; these settings have " + std::to_string(tallies.size()));
  for (size_t i = 0; i < tallies.size(); ++i) {
    const std::int64_t* c = &p.counts[5 * i];
    tallies[i] = {c[0], c[1], c[2], c[3], c[4]};
  }
  estimator.resume(p.rounds, p.seconds);
  return p.finished;
}

void SimulationCheckpoint::stratifiedDone(const StratifiedEstimator& estimator, bool finished) {
  PointState p{0, finished, estimator.rounds(), estimator.seconds(), {}, {}};
  for (const StratumTally& t : estimator.tallies())
    p.counts.insert(p.counts.end(), {t.samples, t.uncorrectable, t.miscorrected, t.dataBitErrors,
                                     t.dataBitErrorsSquared});
  state_.points.assign(1, std::move(p));
  if (!finished) saveWhenDue();
}

void SimulationCheckpoint::saveWhenDue() {
  raiseForTest(ranks_, ++roundsSeen_);
  if (file_.enabled() && ranks_.isRoot() && file_.due()) save();
}

void SimulationCheckpoint::save() {
  if (!file_.enabled() || !ranks_.isRoot()) return;
  const std::string failure = file_.write(state_);
  if (!failure.empty())
    std::cerr << "flashbch simulate: --checkpoint: " << failure << "; the previous checkpoint is kept" << std::endl;
}

}  // namespace flashbch
