// The simulation engine: the stop rule applied in block order whatever the
// thread count, checked against a sequential replay of the same blocks.
#include "simulation.h"

#include <gtest/gtest.h>

namespace {

using namespace flashbch;

SimulationSettings smallSettings(ChannelKind channel, std::vector<double> parameters, int t) {
  SimulationSettings s;
  s.layout = makeLayout({256, 200}, t, false);
  s.channel = channel;
  s.parameters = std::move(parameters);
  s.maxFailures = 7;
  s.maxBlocks = 60;
  s.seed = 42;
  return s;
}

// Blocks 0, 1, ... one after the other until the failures or blocks run out.
PointTally replay(const SimulationSettings& s, int point) {
  BlockWorker worker(s.layout);
  PointTally tally;
  while (tally.blocks < s.maxBlocks && tally.failures() < s.maxFailures)
    tally.add(worker.simulate({s.channel, s.parameters[point]}, blockSeed(s.seed, static_cast<std::uint64_t>(point),
                                                                          static_cast<std::uint64_t>(tally.blocks))));
  return tally;
}

TEST(Simulator, ThreadsReproduceTheSequentialStopRule) {
  SimulationSettings settings = smallSettings(ChannelKind::Bsc, {0.03, 0.01, 0.002}, 4);
  for (int threads : {1, 3}) {
    settings.threads = threads;
    Simulator simulator(settings);
    for (int point = 0; point < 3; ++point) {
      const PointTally expected = replay(settings, point);
      const PointResult got = simulator.runPoint(
          point, [](const Progress&) {}, 0.001);
      EXPECT_TRUE(got.tally == expected)
          << threads << " threads, point " << point << ": " << got.tally.blocks << " blocks vs " << expected.blocks;
      EXPECT_EQ(got.tally.codewords, 2 * got.tally.blocks);
      EXPECT_EQ(got.tally.bitsSent, got.tally.blocks * (256 + 200 + 2 * 64));
    }
  }
  // The sweep reaches both stop conditions.
  EXPECT_GE(replay(settings, 0).failures(), 7);
  EXPECT_EQ(replay(settings, 2).blocks, 60);
}

TEST(Simulator, MiscorrectionsAreToldApart) {
  // t = 1 corrects one error; two or more are often "corrected" into another
  // codeword, and the data then differ although the decoder claimed success.
  SimulationSettings settings = smallSettings(ChannelKind::Bsc, {0.02}, 1);
  settings.maxFailures = 1000000;
  const PointTally tally = Simulator(settings).runPoint(0).tally;
  EXPECT_GT(tally.miscorrected, 0);
  EXPECT_GT(tally.uncorrectable, 0);
  EXPECT_GE(tally.dataBitErrors, tally.miscorrected);
}

}  // namespace
