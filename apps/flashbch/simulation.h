// Error-rate simulation of a block layout over a noisy channel: settings,
// the summable tallies, the estimates with their intervals, and the Monte
// Carlo estimator (the stratified one is in stratifiedEstimator.h).
//
// Monte Carlo: point p simulates blocks 0, 1, 2, ... in rounds; round r
// holds min(firstRoundBlocks * 2^r, largestRoundBlocks) blocks (16 doubling
// up to 1024 unless set), so that a point that stops early wastes little and
// a long one synchronises rarely. Block b draws its data and errors from the
// stream streamKey({seed, p, b}). After each whole
// round the stop rules are checked: at least maxFailures failed codewords,
// maxBlocks blocks (the last round is cut to end there), the relative
// half-width of the failure rate's interval at most targetRelativeHalfWidth,
// the point's time limit, or a cancel request. The count-based rules see
// whole rounds only, so a table depends on the settings alone, never on the
// number of threads or processes; the time limit and cancelling are the
// exceptions, by their nature. With several processes (settings.ranks),
// each takes its share of the blocks of a batch of rounds, and one reduction
// per batch sums the shares' tallies of every round together with every
// rank's request to stop (time limit, cancel), so that all ranks end a point
// after the same round.
// A point resumed from a checkpoint's state first applies the count-based
// rules to it: a state saved after the point's last round ends the point
// without another round.
//
// Intervals (95%): the failure and miscorrection rates get Wilson score
// intervals on their counts. The data bit error rate after decoding (UBER)
// is the mean of the data bit errors per codeword over the data bits per
// codeword; its interval is the normal one of that mean with the sample
// variance (which holds both how often codewords fail and how many bits
// they lose). With no data bit error seen at all it is [0, fer_high]: a
// failed codeword may lose every data bit.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "blockChannel.h"
#include "blockLayout.h"
#include "codewordDecoder.h"
#include "errorStatistics.h"

namespace flashbch {

class Distribution;

constexpr std::int64_t kFirstRoundBlocks = 16;
constexpr std::int64_t kLargestRoundBlocks = 1024;
// With several ranks, rounds are reduced in batches of at least this many
// blocks per rank (a few milliseconds of work each), so that a reduction's
// latency stays a small share of the run even when a round has fewer blocks
// than the job has ranks. Rounds computed past the one that ends a point are
// dropped, so the table does not change.
constexpr std::int64_t kBatchBlocksPerRank = 64;

enum class Estimator { MonteCarlo, Stratified };
const char* estimatorName(Estimator estimator);

// Makes the decoder of a codeword of dataBits data bits correcting t errors.
using DecoderFactory = std::function<std::unique_ptr<CodewordDecoder>(int dataBits, int t)>;
// Makes the channel of one sweep value.
using ChannelFactory = std::function<std::unique_ptr<Channel>(double parameter)>;

// A channel or decoder setting that decides the table besides the swept
// parameter (a NAND cell's model, page, references and soft reads, the
// dispersion, the decoder): the JSON records it, and a resumed run must
// have the same.
struct RunSetting {
  enum class Kind { Text, Number, Numbers };  // Numbers: separated by commas
  std::string name;  // the flag without dashes (the JSON key has underscores)
  std::string text;  // exact: numbers with 17 significant digits
  Kind kind = Kind::Text;
};

struct SimulationSettings {
  BlockLayout layout;
  ChannelKind channel = ChannelKind::Awgn;
  std::vector<double> parameters;
  Estimator estimator = Estimator::MonteCarlo;
  std::int64_t maxFailures = 100;  // per point (Monte Carlo), per stratum (stratified)
  std::int64_t maxBlocks = 20000;  // blocks per point (Monte Carlo), samples per stratum (stratified)
  double timeLimit = 0.0;          // seconds per point; 0: none
  double targetRelativeHalfWidth = 0.0;  // 0: none
  int threads = 1;
  std::uint64_t seed = 1;
  std::int64_t firstRoundBlocks = kFirstRoundBlocks;
  std::int64_t largestRoundBlocks = kLargestRoundBlocks;
  const std::atomic<bool>* cancel = nullptr;  // stop after the current round when set
  Distribution* ranks = nullptr;              // null: this process alone
  DecoderFactory makeDecoder;                 // empty: PackedHardDecoder
  ChannelFactory makeChannel;                 // empty: makeChannel(channel, parameter)
  std::string parameterName;                  // the sweep's column; empty: channelParameterName(channel)
  std::vector<RunSetting> runSettings;        // in the order of the flags
};

std::unique_ptr<Channel> channelAt(const SimulationSettings& settings, double parameter);

// Counts of one point; sums of independent parts add field by field (threads,
// and later processes and checkpoints).
struct PointTally {
  std::int64_t blocks = 0;
  std::int64_t codewords = 0;
  std::int64_t bitsSent = 0;  // data and parity bits through the channel
  std::int64_t bitFlips = 0;  // channel errors among them
  std::int64_t dataBits = 0;
  std::int64_t dataBitErrors = 0;  // after decoding
  std::int64_t dataBitErrorsSquared = 0;  // sum over codewords of the square of their data bit errors
  std::int64_t uncorrectable = 0;  // the decoder said so
  std::int64_t miscorrected = 0;   // the decoder claimed success, the data differ

  static constexpr int kFields = 9;
  std::int64_t failures() const { return uncorrectable + miscorrected; }
  void add(const PointTally& other);
  bool operator==(const PointTally& other) const;
  std::vector<std::int64_t> toArray() const;
  static PointTally fromArray(const std::vector<std::int64_t>& fields);
};

// What a table row shows, either estimator.
struct PointEstimate {
  double parameter = 0.0;
  double rawBitErrorRate = 0.0;  // measured (Monte Carlo) or the channel's own (stratified)
  LogInterval fer{}, miscorrection{}, uber{};
  std::int64_t uncorrectable = 0, miscorrected = 0, codewords = 0;
  std::int64_t blocks = -1;  // -1: not a block simulation
  double seconds = 0.0;
};

struct Progress {
  int point = 0;  // 0-based; -1 for a whole stratified sweep
  int points = 0;
  std::int64_t blocks = 0;  // blocks, or samples of a stratified sweep
  std::int64_t failures = 0;
  std::int64_t codewords = 0;
  double seconds = 0.0;
};
using ProgressCallback = std::function<void(const Progress&)>;

// The estimate of a Monte Carlo tally.
PointEstimate monteCarloEstimate(double parameter, const PointTally& tally);
// Relative half-width of an interval, (high - low) / 2 / value; infinite
// when the value is 0.
double relativeHalfWidth(const LogInterval& interval);
// A rough upper bound of the memory a run needs, in bytes.
double estimatedMemoryBytes(const SimulationSettings& settings);

class BlockWorker;

class Simulator {
 public:
  explicit Simulator(SimulationSettings settings);
  ~Simulator();

  const SimulationSettings& settings() const { return settings_; }
  struct PointResult {
    PointTally tally;
    PointEstimate estimate;
  };
  // Where a point stands after its last whole round.
  struct RoundState {
    PointTally tally;
    std::int64_t rounds = 0;
    double seconds = 0.0;
  };
  // The next runPoint continues from `state` instead of block 0.
  void resumeNextPoint(const RoundState& state) { resume_ = state; }
  // Called on every rank after every whole round, with the point's state.
  void setRoundHook(std::function<void(int point, const RoundState&)> hook) { roundHook_ = std::move(hook); }
  // onProgress, when set, is called between rounds about every progressSeconds.
  PointResult runPoint(int point, const ProgressCallback& onProgress = {}, double progressSeconds = 0.25);

 private:
  SimulationSettings settings_;
  std::vector<std::unique_ptr<BlockWorker>> workers_;
  RoundState resume_;
  std::function<void(int, const RoundState&)> roundHook_;
};

}  // namespace flashbch
