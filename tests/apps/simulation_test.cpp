// The simulation engine against exact laws and independent counts: the
// channels' error laws (chi-square), the stratified estimator against the
// analytic bounded-distance tail, an exhaustive count and plain Monte
// Carlo, interval coverage, the stop rules, and tables that do not depend on
// the thread count. Every statistical check has a fixed seed; its
// significance is stated beside it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "blockWorker.h"
#include "flashbchRunner.h"
#include "stratifiedEstimator.h"
#include "usageError.h"

namespace {

using namespace flashbch;

// Upper 0.001 point of chi-square with df degrees of freedom (Wilson-Hilferty).
double chiSquareCritical(int df) {
  const double a = 2.0 / (9.0 * df);
  return df * std::pow(1.0 - a + 3.090232 * std::sqrt(a), 3);
}

// Pearson's statistic, cells with expectation below 5 pooled with the next.
bool chiSquareAccepts(const std::vector<double>& observed, const std::vector<double>& probability, double total) {
  double statistic = 0.0, o = 0.0, e = 0.0;
  int cells = 0;
  for (size_t i = 0; i < observed.size(); ++i) {
    o += observed[i];
    e += probability[i] * total;
    if (e >= 5.0 || i + 1 == observed.size()) {
      statistic += (o - e) * (o - e) / std::max(e, 1e-300);
      o = e = 0.0;
      ++cells;
    }
  }
  return cells < 2 || statistic <= chiSquareCritical(cells - 1);
}

bool overlap(const LogInterval& a, const LogInterval& b) {
  return a.log10Low <= b.log10High && b.log10Low <= a.log10High;
}

bool covers(const LogInterval& ci, double value) {
  return std::pow(10.0, ci.log10Low) <= value && value <= std::pow(10.0, ci.log10High);
}

TEST(Channels, ErrorCountsAndPositionsFollowTheirLaws) {
  // 20000 codewords of 400 bits per channel; the count of errors against
  // Binomial(400, p) and the positions against uniform over 20 bins, each a
  // chi-square test at significance 0.001.
  const int n = 400, codewords = 20000, bins = 20;
  const std::pair<ChannelKind, double> cases[] = {
      {ChannelKind::Bsc, 0.01}, {ChannelKind::Bsc, 2e-4}, {ChannelKind::Awgn, 8.0}, {ChannelKind::AwgnBits, 8.0}};
  for (const auto& [kind, parameter] : cases) {
    const auto channel = makeChannel(kind, parameter);
    RandomStream rng(streamKey({7, static_cast<std::uint64_t>(kind)}));
    std::vector<double> counts(n + 1), where(bins), law(n + 1), uniform(bins, 1.0 / bins);
    std::vector<int> positions;
    double errors = 0;
    for (int c = 0; c < codewords; ++c) {
      channel->sampleErrors(n, rng, positions);
      ASSERT_TRUE(std::is_sorted(positions.begin(), positions.end()) &&
                  std::adjacent_find(positions.begin(), positions.end()) == positions.end());
      ASSERT_TRUE(positions.empty() || (positions.front() >= 0 && positions.back() < n));
      ++counts[positions.size()];
      for (int at : positions) ++where[at / (n / bins)];
      errors += static_cast<double>(positions.size());
    }
    for (int w = 0; w <= n; ++w) law[w] = std::exp(logBinomialProbability(n, w, channel->rawBitErrorRate()));
    EXPECT_TRUE(chiSquareAccepts(counts, law, codewords)) << channelName(kind) << " " << parameter;
    EXPECT_TRUE(chiSquareAccepts(where, uniform, errors)) << channelName(kind) << " " << parameter;
  }
  // Given W = 3 of 6 bits, each of the 20 sets equally likely (chi-square, 0.001).
  const auto bsc = makeChannel(ChannelKind::Bsc, 0.1);
  RandomStream rng(99);
  std::map<int, double> seen;
  std::vector<int> positions;
  for (int i = 0; i < 20000; ++i) {
    bsc->sampleErrorsOfWeight(6, 3, rng, positions);
    int mask = 0;
    for (int at : positions) mask |= 1 << at;
    ASSERT_EQ(__builtin_popcount(mask), 3);
    ++seen[mask];
  }
  std::vector<double> observed;
  for (const auto& entry : seen) observed.push_back(entry.second);
  ASSERT_EQ(observed.size(), 20u);
  EXPECT_TRUE(chiSquareAccepts(observed, std::vector<double>(20, 1.0 / 20), 20000));
}

SimulationSettings settingsFor(std::vector<int> dataBits, int t, std::vector<double> rber) {
  SimulationSettings s;
  s.layout = makeLayout(dataBits, t, false);
  s.channel = ChannelKind::Bsc;
  s.parameters = std::move(rber);
  s.seed = 42;
  return s;
}

TEST(Stratified, BoundedDistanceFailureRateIsTheBinomialTail) {
  // One pattern per error count is enough: the failure of w > t is certain.
  for (int t = 1; t <= 72; ++t) {
    const int k = 512, n = k + 15 * t;
    SimulationSettings s = settingsFor({k}, t, {0.5 * t / n, 0.1 * t / n});
    s.maxBlocks = 1;
    StratifiedEstimator estimator(s);
    estimator.run();
    for (int point = 0; point < 2; ++point) {
      const LogInterval fer = estimator.estimate(point).fer;
      const double exact = std::log10(static_cast<double>(flashbchtest::directUpperTail(n, t, s.parameters[point])));
      EXPECT_NEAR(fer.log10Value, exact, 1e-9) << "t = " << t << ", point " << point;
      EXPECT_NEAR(fer.log10Low, exact, 1e-9);
      EXPECT_NEAR(fer.log10High, exact, 1e-9);
    }
  }
}

TEST(Stratified, EnumeratedStratumIsTheExactCount) {
  // 16 data bits, t = 1: all C(31, 2) = 465 patterns of 2 errors are decoded,
  // and counted again here straight through the packed codec.
  SimulationSettings s = settingsFor({16}, 1, {0.05});
  s.maxBlocks = 500;
  StratifiedEstimator estimator(s);
  estimator.run();
  const auto& strata = estimator.strata();
  const auto two = std::find_if(strata.begin(), strata.end(), [](const Stratum& x) { return x.weight == 2; });
  ASSERT_NE(two, strata.end());
  ASSERT_TRUE(two->exhaustive);
  const StratumTally& tally = estimator.tallies()[static_cast<size_t>(two - strata.begin())];
  quil::PackedBCH codec(16, 1);
  std::int64_t miscorrected = 0, uncorrectable = 0;
  for (int i = 0; i < 31; ++i)
    for (int j = i + 1; j < 31; ++j) {
      std::uint8_t data[2] = {0, 0}, parity[2] = {0, 0};
      for (int bit : {i, j}) (bit < 16 ? data[bit / 8] : parity[(bit - 16) / 8]) ^= 0x80 >> (bit % 8);
      const auto result = codec.decode(data, parity);
      uncorrectable += result.status == quil::DecodeStatus::Uncorrectable;
      miscorrected += result.status != quil::DecodeStatus::Uncorrectable && (data[0] | data[1]) != 0;
    }
  EXPECT_EQ(tally.samples, 465);
  EXPECT_EQ(tally.uncorrectable, uncorrectable);
  EXPECT_EQ(tally.miscorrected, miscorrected);
  EXPECT_GT(miscorrected, 0);
}

TEST(Stratified, AgreesWithMonteCarloWhereMiscorrectionIsCommon) {
  // 1024 data bits, t = 1, p = 1e-3: about 28% of codewords fail and 3% of
  // those are miscorrected. Two independent 95% intervals of one quantity
  // fail to overlap with probability below 0.6%.
  SimulationSettings s = settingsFor({1024}, 1, {1e-3});
  s.maxFailures = 1000000000;
  s.maxBlocks = 20000;
  s.threads = 2;
  const PointEstimate mc = Simulator(s).runPoint(0).estimate;
  StratifiedEstimator stratified(s);
  stratified.run();
  const PointEstimate st = stratified.estimate(0);
  EXPECT_GT(mc.miscorrected, 20);
  EXPECT_GT(st.miscorrected, 20);
  EXPECT_TRUE(overlap(mc.fer, st.fer)) << mc.fer.log10Value << " " << st.fer.log10Value;
  EXPECT_TRUE(overlap(mc.miscorrection, st.miscorrection))
      << mc.miscorrection.log10Value << " " << st.miscorrection.log10Value;
  EXPECT_TRUE(overlap(mc.uber, st.uber)) << mc.uber.log10Value << " " << st.uber.log10Value;
}

TEST(Stratified, IntervalsCoverOnASmallCode) {
  // 200 runs of 100 patterns per error count (seeds 1..200) on the code
  // above; the reference value is the mean of all runs, whose standard error
  // is 1/14 of one run's. Nominal coverage is 95%; with 200 runs, 180 or
  // fewer covered has probability below 0.1% if it holds.
  const int runs = 200;
  SimulationSettings s = settingsFor({1024}, 1, {1e-3});
  s.maxFailures = 1000000000;
  s.maxBlocks = 100;
  std::vector<PointEstimate> estimates;
  double miscorrection = 0, uber = 0;
  for (int run = 1; run <= runs; ++run) {
    s.seed = static_cast<std::uint64_t>(run);
    StratifiedEstimator estimator(s);
    estimator.run();
    estimates.push_back(estimator.estimate(0));
    miscorrection += std::pow(10.0, estimates.back().miscorrection.log10Value) / runs;
    uber += std::pow(10.0, estimates.back().uber.log10Value) / runs;
  }
  int coveredMiscorrection = 0, coveredUber = 0;
  for (const PointEstimate& e : estimates) {
    coveredMiscorrection += covers(e.miscorrection, miscorrection);
    coveredUber += covers(e.uber, uber);
  }
  EXPECT_GT(coveredMiscorrection, 180);
  EXPECT_GT(coveredUber, 180);
}

TEST(Stratified, RefusesChannelsWithDependentErrors) {
  struct Bursty : Channel {
    ChannelKind kind() const override { return ChannelKind::Bsc; }
    double parameter() const override { return 0.01; }
    double rawBitErrorRate() const override { return 0.01; }
    bool independentErrors() const override { return false; }
    void sampleErrors(int, RandomStream&, std::vector<int>& positions) const override { positions.clear(); }
  };
  SimulationSettings s = settingsFor({256}, 2, {0.01});
  s.makeChannel = [](double) { return std::make_unique<Bursty>(); };
  EXPECT_EQ(flashbchtest::messageOf([&] { StratifiedEstimator{s}; }),
            "--estimator: stratified estimation needs independent, identically distributed errors; the channel does "
            "not have them");
}

// Blocks 0, 1, ... in rounds of 4, 8, 16, ... with the stop rule after each.
PointTally replay(const SimulationSettings& s, int point) {
  BlockWorker worker(s.layout, {});
  const auto channel = makeChannel(s.channel, s.parameters[static_cast<size_t>(point)]);
  PointTally tally;
  for (std::int64_t round = s.firstRoundBlocks; tally.blocks < s.maxBlocks && tally.failures() < s.maxFailures;
       round *= 2)
    for (std::int64_t b = 0; b < round && tally.blocks < s.maxBlocks; ++b)
      tally.add(worker.simulate(*channel, streamKey({s.seed, static_cast<std::uint64_t>(point),
                                                     static_cast<std::uint64_t>(tally.blocks)})));
  return tally;
}

TEST(Simulator, TablesDoNotDependOnTheThreads) {
  SimulationSettings s = settingsFor({256, 200}, 4, {0.03, 0.002});
  s.maxFailures = 20;
  s.maxBlocks = 60;
  s.firstRoundBlocks = 4;
  std::vector<StratumTally> strata[2];
  for (int threads : {1, 3}) {
    s.threads = threads;
    Simulator simulator(s);
    for (int point = 0; point < 2; ++point) {
      const PointTally expected = replay(s, point);
      const PointTally got = simulator.runPoint(point, [](const Progress&) {}, 0.0).tally;
      EXPECT_TRUE(got == expected) << threads << " threads, point " << point << ": " << got.blocks << " blocks vs "
                                   << expected.blocks;
      EXPECT_TRUE(PointTally::fromArray(got.toArray()) == got);
      EXPECT_EQ(got.bitsSent, got.blocks * (256 + 200 + 2 * 60));
    }
    StratifiedEstimator estimator(s);
    estimator.run();
    strata[threads == 3] = estimator.tallies();
  }
  // Point 0 stops on failures after whole rounds (4 + 8 blocks), point 1 on blocks.
  EXPECT_EQ(replay(s, 0).blocks, 12);
  EXPECT_EQ(replay(s, 1).blocks, 60);
  ASSERT_EQ(strata[0].size(), strata[1].size());
  for (size_t i = 0; i < strata[0].size(); ++i) {
    EXPECT_EQ(strata[0][i].samples, strata[1][i].samples);
    EXPECT_EQ(strata[0][i].miscorrected, strata[1][i].miscorrected);
    EXPECT_EQ(strata[0][i].dataBitErrorsSquared, strata[1][i].dataBitErrorsSquared);
  }
}

TEST(Simulator, StopRulesEndAfterWholeRounds) {
  std::atomic<bool> cancelled{true};
  struct Case {
    double target, timeLimit;
    bool cancel;
    std::int64_t blocks;  // after the first round of 16, or all 2000
  } cases[] = {{0.5, 0, false, 16}, {0, 1e-9, false, 16}, {0, 0, true, 16}, {0.01, 0, false, 2000}};
  for (const Case& c : cases) {
    SimulationSettings s = settingsFor({256}, 1, {0.01});
    s.maxFailures = 1000000;
    s.maxBlocks = 2000;
    s.targetRelativeHalfWidth = c.target;
    s.timeLimit = c.timeLimit;
    s.cancel = c.cancel ? &cancelled : nullptr;
    const auto result = Simulator(s).runPoint(0);
    EXPECT_EQ(result.tally.blocks, c.blocks) << c.target << " " << c.timeLimit << " " << c.cancel;
    if (c.target > 0 && c.blocks < 2000) {
      EXPECT_LE(relativeHalfWidth(result.estimate.fer), c.target);
    }
  }
}

}  // namespace
