// SimulationCheckpoint: what `flashbch simulate` saves to its checkpoint
// file and takes back from it, on top of the engine's states.
//
// Monte Carlo: one record per finished point (its tally, rounds and
// seconds) and one for the point under way (its tally after the last whole
// round). Stratified: one record holding every stratum's tally, the rounds
// done and the seconds spent. The fingerprint holds every setting that
// decides the table, in the order the flags are listed, the channel's and
// the decoder's included (settings.runSettings); not --threads, nor the
// number of ranks, which only decide where blocks are computed.
//
// Only rank 0 reads and writes the file: it reads --resume and sends the
// text to every rank; it writes after a round when --checkpoint-every has
// passed since the last write, and on request (end, signal).
//
// The checkpoint file always holds a whole checkpoint: a rank that dies
// leaves the job to end with the last one written.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "checkpointFile.h"
#include "simulation.h"

namespace flashbch {

class Distribution;
class StratifiedEstimator;

SettingsFingerprint fingerprintOf(const SimulationSettings& settings);

class SimulationCheckpoint {
 public:
  // Throws UsageError on every rank when rank 0 refuses the --resume file.
  SimulationCheckpoint(CheckpointFile file, const SimulationSettings& settings, Distribution& ranks);

  // Monte Carlo: the points finished before, and the state of the next one.
  int finishedPoints() const;
  Simulator::PointResult finishedPoint(int point) const;  // tally and seconds
  std::optional<Simulator::RoundState> runningPoint() const;
  // After every round of a point, and when a point is finished.
  void roundDone(int point, const Simulator::RoundState& state);
  void pointDone(int point, const Simulator::PointResult& result);

  // Stratified: puts a saved state back; records the state after a round,
  // or the end of the run.
  bool restore(StratifiedEstimator& estimator) const;  // true: the saved run had finished
  void stratifiedDone(const StratifiedEstimator& estimator, bool finished);

  // Writes now (rank 0, when a file was asked for).
  void save();
  bool enabled() const { return file_.enabled(); }

 private:
  void saveWhenDue();
  CheckpointFile file_;
  Distribution& ranks_;
  Checkpoint state_;
  std::int64_t roundsSeen_ = 0;
};

}  // namespace flashbch
