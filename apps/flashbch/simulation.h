// Monte Carlo simulation of a block layout over a noisy channel.
//
// Each point of a sweep simulates blocks 0, 1, 2, ... in index order until
// maxFailures codewords have failed (uncorrectable or miscorrected) or
// maxBlocks blocks are done, whichever comes first. Block b of point p draws
// everything from blockSeed(seed, p, b), and the stop rule is applied to the
// blocks in index order, so a point's tally is a function of the settings
// alone: threads only decide which block is computed where. Worker threads
// claim block indices from a shared counter; results arriving out of order
// wait until every earlier block is in, and blocks claimed past the stopping
// block are discarded.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "blockChannel.h"
#include "blockLayout.h"

namespace flashbch {

struct SimulationSettings {
  BlockLayout layout;
  ChannelKind channel = ChannelKind::Awgn;
  std::vector<double> parameters;
  std::int64_t maxFailures = 100;
  std::int64_t maxBlocks = 1000;
  int threads = 1;
  std::uint64_t seed = 1;
};

struct PointTally {
  std::int64_t blocks = 0;
  std::int64_t codewords = 0;
  std::int64_t bitsSent = 0;  // every stored bit, padding included
  std::int64_t bitFlips = 0;  // channel errors among them
  std::int64_t dataBits = 0;
  std::int64_t dataBitErrors = 0;  // after decoding
  std::int64_t uncorrectable = 0;  // the decoder said so
  std::int64_t miscorrected = 0;   // the decoder claimed success, the data differ

  std::int64_t failures() const { return uncorrectable + miscorrected; }
  void add(const PointTally& other);
  bool operator==(const PointTally& other) const;
};

struct PointResult {
  double parameter = 0.0;
  PointTally tally;
  double seconds = 0.0;
};

struct Progress {
  int point = 0;  // 0-based
  int points = 0;
  double parameter = 0.0;
  std::int64_t blocks = 0;
  std::int64_t failures = 0;
  std::int64_t codewords = 0;
  double seconds = 0.0;
};

class BlockWorker;

class Simulator {
 public:
  explicit Simulator(SimulationSettings settings);
  ~Simulator();

  const SimulationSettings& settings() const { return settings_; }
  // onProgress, when set, is called from the calling thread about every
  // progressSeconds while the point runs.
  PointResult runPoint(int point, const std::function<void(const Progress&)>& onProgress = {},
                       double progressSeconds = 0.25);

 private:
  SimulationSettings settings_;
  std::vector<std::unique_ptr<BlockWorker>> workers_;
};

// One block through encoder, channel and decoder, on a worker's own codec
// and generator.
class BlockWorker {
 public:
  explicit BlockWorker(const BlockLayout& layout);
  ~BlockWorker();
  PointTally simulate(const Channel& channel, std::uint32_t seed);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace flashbch
