#include "simulation.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

#include "api/FlashBCH.h"
#include "randgen/randgen.h"

namespace flashbch {

void PointTally::add(const PointTally& o) {
  blocks += o.blocks;
  codewords += o.codewords;
  bitsSent += o.bitsSent;
  bitFlips += o.bitFlips;
  dataBits += o.dataBits;
  dataBitErrors += o.dataBitErrors;
  uncorrectable += o.uncorrectable;
  miscorrected += o.miscorrected;
}

bool PointTally::operator==(const PointTally& o) const {
  return blocks == o.blocks && codewords == o.codewords && bitsSent == o.bitsSent && bitFlips == o.bitFlips &&
         dataBits == o.dataBits && dataBitErrors == o.dataBitErrors && uncorrectable == o.uncorrectable &&
         miscorrected == o.miscorrected;
}

struct BlockWorker::State {
  BlockLayout layout;
  FlashBCH codec;
  MT_Rand_Gen rng{1u};
  std::vector<int> data, stored, received, decoded, results;
};

BlockWorker::BlockWorker(const BlockLayout& layout) : state_(std::make_unique<State>()) {
  State& s = *state_;
  s.layout = layout;
  s.codec.init(layout.codewords(), s.layout.dataBits.data(), layout.t, false, true, -1, 0, 0);
  s.data.resize(static_cast<size_t>(layout.blockDataBits()));
  s.decoded.resize(s.data.size());
  s.stored.resize(static_cast<size_t>(layout.blockStoredBits()));
  s.received.resize(s.stored.size());
  s.results.resize(static_cast<size_t>(layout.codewords()));
}

BlockWorker::~BlockWorker() = default;

PointTally BlockWorker::simulate(const Channel& channel, std::uint32_t seed) {
  State& s = *state_;
  s.rng.initialize(seed);
  randomBits(s.data.data(), static_cast<std::int64_t>(s.data.size()), s.rng);
  s.codec.encode_au(s.data.data(), s.stored.data());
  PointTally tally;
  tally.blocks = 1;
  tally.codewords = s.layout.codewords();
  tally.bitsSent = static_cast<std::int64_t>(s.stored.size());
  tally.bitFlips = channel.transmit(s.stored.data(), s.received.data(), tally.bitsSent, s.rng);
  tally.dataBits = static_cast<std::int64_t>(s.data.size());
  s.codec.decode_au(s.received.data(), s.decoded.data(), s.results.data());
  std::int64_t at = 0;
  for (int i = 0; i < s.layout.codewords(); ++i) {
    std::int64_t errors = 0;
    for (int j = 0; j < s.layout.dataBits[i]; ++j, ++at) errors += s.decoded[at] != s.data[at];
    tally.dataBitErrors += errors;
    if (s.results[i] != 0)
      ++tally.uncorrectable;
    else if (errors != 0)
      ++tally.miscorrected;
  }
  return tally;
}

Simulator::Simulator(SimulationSettings settings) : settings_(std::move(settings)) {
  settings_.threads = std::max(1, settings_.threads);
  for (int i = 0; i < settings_.threads; ++i) workers_.push_back(std::make_unique<BlockWorker>(settings_.layout));
}

Simulator::~Simulator() = default;

PointResult Simulator::runPoint(int point, const std::function<void(const Progress&)>& onProgress,
                                double progressSeconds) {
  const Channel channel{settings_.channel, settings_.parameters.at(static_cast<size_t>(point))};
  const auto start = std::chrono::steady_clock::now();

  std::mutex mutex;
  std::condition_variable finished;
  std::atomic<std::int64_t> nextBlock{0};
  // Blocks at or past stopAt are not needed; it only ever decreases.
  std::atomic<std::int64_t> stopAt{settings_.maxBlocks};
  std::map<std::int64_t, PointTally> waiting;  // done, but an earlier block is not
  PointTally tally;                            // blocks 0 .. tally.blocks-1
  int running = settings_.threads;

  auto work = [&](BlockWorker& worker) {
    for (;;) {
      const std::int64_t block = nextBlock.fetch_add(1);
      if (block >= stopAt.load()) break;
      const PointTally one = worker.simulate(
          channel, blockSeed(settings_.seed, static_cast<std::uint64_t>(point), static_cast<std::uint64_t>(block)));
      std::lock_guard<std::mutex> lock(mutex);
      waiting.emplace(block, one);
      for (auto it = waiting.find(tally.blocks); it != waiting.end() && tally.blocks < stopAt.load();
           it = waiting.find(tally.blocks)) {
        tally.add(it->second);
        waiting.erase(it);
        if (tally.failures() >= settings_.maxFailures) stopAt.store(tally.blocks);
      }
    }
    std::lock_guard<std::mutex> lock(mutex);
    if (--running == 0) finished.notify_all();
  };

  std::vector<std::thread> threads;
  for (int i = 1; i < settings_.threads; ++i) threads.emplace_back(work, std::ref(*workers_[static_cast<size_t>(i)]));
  if (settings_.threads == 1 && !onProgress) {
    work(*workers_[0]);
  } else {
    threads.emplace_back(work, std::ref(*workers_[0]));
    std::unique_lock<std::mutex> lock(mutex);
    while (running > 0) {
      finished.wait_for(lock, std::chrono::duration<double>(progressSeconds));
      if (onProgress && running > 0) {
        Progress p{point,
                   static_cast<int>(settings_.parameters.size()),
                   channel.parameter,
                   tally.blocks,
                   tally.failures(),
                   tally.codewords,
                   std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count()};
        lock.unlock();
        onProgress(p);
        lock.lock();
      }
    }
  }
  for (auto& thread : threads) thread.join();

  PointResult result;
  result.parameter = channel.parameter;
  result.tally = tally;
  result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return result;
}

}  // namespace flashbch
