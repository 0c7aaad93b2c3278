#include "stratifiedEstimator.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <map>

#include "blockWorker.h"
#include "roundScheduler.h"
#include "usageError.h"

namespace flashbch {

namespace {

double logAdd(double a, double b) {
  if (a < b) std::swap(a, b);
  if (b == -INFINITY) return a;
  return a + std::log1p(std::exp(b - a));
}

// C(n, w) when it is at most `limit`, else -1.
std::int64_t smallBinomial(int n, int w, std::int64_t limit) {
  w = std::min(w, n - w);
  const double logC = std::lgamma(n + 1.0) - std::lgamma(w + 1.0) - std::lgamma(n - w + 1.0);
  if (logC > std::log(static_cast<double>(limit)) + 1.0) return -1;
  std::int64_t c = 1;  // C(n, i) for i = 0 .. w, each at most C(n, w)
  for (int i = 1; i <= w; ++i) c = c * (n - w + i) / i;
  return c <= limit ? c : -1;
}

// The next w-subset of 0 .. n-1 in lexicographic order; false after the last.
bool nextCombination(std::vector<int>& c, int n) {
  const int w = static_cast<int>(c.size());
  int i = w - 1;
  while (i >= 0 && c[static_cast<size_t>(i)] == n - w + i) --i;
  if (i < 0) return false;
  ++c[static_cast<size_t>(i)];
  for (int j = i + 1; j < w; ++j) c[static_cast<size_t>(j)] = c[static_cast<size_t>(j - 1)] + 1;
  return true;
}

constexpr std::uint64_t kStratumStreamTag = 0x7374726174756dull;

}  // namespace

void StratumTally::add(const StratumTally& o) {
  samples += o.samples;
  uncorrectable += o.uncorrectable;
  miscorrected += o.miscorrected;
  dataBitErrors += o.dataBitErrors;
  dataBitErrorsSquared += o.dataBitErrorsSquared;
}

StratifiedEstimator::StratifiedEstimator(SimulationSettings settings) : settings_(std::move(settings)) {
  SimulationSettings& s = settings_;
  s.threads = std::max(1, s.threads);
  for (int i = 0; i < s.threads; ++i) workers_.push_back(std::make_unique<BlockWorker>(s.layout, s.makeDecoder));
  std::map<int, int> counts;
  for (int k : s.layout.dataBits) ++counts[k];
  std::map<std::pair<int, int>, size_t> index;
  for (double parameter : s.parameters) {
    const auto channel = channelAt(s, parameter);
    if (!channel->independentErrors())
      throw UsageError(
          "--estimator: stratified estimation needs independent, identically distributed errors; the channel does "
          "not have them");
    std::vector<LengthAtPoint> lengths;
    for (const auto& [k, count] : counts) {
      CodewordDecoder& decoder = workers_[0]->decoderFor(k);
      const int n = decoder.codeBits(), r = decoder.boundedDistanceRadius();
      LengthAtPoint at{k, count, r, decoder.maxFlips(), {}, -INFINITY};
      std::vector<double> logWeight(static_cast<size_t>(n) + 1);
      double logMass = -INFINITY;  // ln P(W > r)
      for (int w = r + 1; w <= n; ++w) logMass = logAdd(logMass, logWeight[w] = channel->logWeight(n, w));
      const double threshold = logMass + std::log(kStratumTolerance);
      for (int w = r + 1; w <= n && logMass > -INFINITY; ++w) {
        if (!(logWeight[w] >= threshold)) {
          at.logOmitted = logAdd(at.logOmitted, logWeight[w]);
          continue;
        }
        auto [it, added] = index.emplace(std::make_pair(k, w), strata_.size());
        if (added) strata_.push_back({k, n, w, smallBinomial(n, w, s.maxBlocks) >= 0});
        at.uses.push_back({it->second, logWeight[w]});
      }
      lengths.push_back(std::move(at));
    }
    points_.push_back(std::move(lengths));
  }
  tallies_.resize(strata_.size());
}

StratifiedEstimator::~StratifiedEstimator() = default;

bool StratifiedEstimator::closed(size_t i) const {
  const StratumTally& t = tallies_[i];
  if (strata_[i].exhaustive) return t.samples > 0;
  return t.samples >= settings_.maxBlocks || t.failures() >= settings_.maxFailures;
}

StratumTally StratifiedEstimator::sample(int worker, size_t i, std::int64_t round, std::int64_t count) {
  const Stratum& st = strata_[i];
  BlockWorker& tools = *workers_[static_cast<size_t>(worker)];
  CodewordDecoder& decoder = tools.decoderFor(st.dataBits);
  const std::vector<std::uint8_t> zeros((static_cast<size_t>(st.dataBits) + 7) / 8, 0);
  decoder.setMessage(zeros.data());
  std::vector<int>& positions = tools.positions();
  StratumTally t;
  auto record = [&] {
    const TrialOutcome o = decoder.decode(positions);
    ++t.samples;
    t.dataBitErrors += o.dataBitErrors;
    t.dataBitErrorsSquared += static_cast<std::int64_t>(o.dataBitErrors) * o.dataBitErrors;
    if (o.uncorrectable)
      ++t.uncorrectable;
    else if (o.dataBitErrors > 0)
      ++t.miscorrected;
  };
  if (st.exhaustive) {
    positions.resize(static_cast<size_t>(st.weight));
    for (int j = 0; j < st.weight; ++j) positions[static_cast<size_t>(j)] = j;
    do {
      record();
    } while (nextCombination(positions, st.codeBits));
    return t;
  }
  // Given W = w the pattern's law does not depend on the channel parameter.
  const auto channel = channelAt(settings_, settings_.parameters.front());
  RandomStream& rng = tools.stream();
  rng.reseed(streamKey({settings_.seed, kStratumStreamTag, static_cast<std::uint64_t>(st.dataBits),
                        static_cast<std::uint64_t>(st.weight), static_cast<std::uint64_t>(round)}));
  for (std::int64_t j = 0; j < count; ++j) {
    channel->sampleErrorsOfWeight(st.codeBits, st.weight, rng, positions);
    record();
  }
  return t;
}

void StratifiedEstimator::run(const ProgressCallback& onProgress, double progressSeconds) {
  const SimulationSettings& s = settings_;
  const auto start = std::chrono::steady_clock::now();
  const double before = seconds_;
  double lastProgress = 0.0;
  for (;;) {
    std::vector<size_t> open;
    for (size_t i = 0; i < strata_.size(); ++i)
      if (!closed(i)) open.push_back(i);
    if (open.empty()) break;
    std::vector<StratumTally> results(open.size());
    runRound(s.threads, static_cast<std::int64_t>(open.size()), [&](int worker, std::int64_t item) {
      const size_t i = open[static_cast<size_t>(item)];
      const std::int64_t count = std::min(kStratumRoundSamples, s.maxBlocks - tallies_[i].samples);
      results[static_cast<size_t>(item)] = sample(worker, i, rounds_, count);
    });
    for (size_t j = 0; j < open.size(); ++j) tallies_[open[j]].add(results[j]);
    ++rounds_;
    const double spent = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    seconds_ = before + spent;
    if (onProgress && spent - lastProgress >= progressSeconds) {
      lastProgress = spent;
      Progress p{-1, static_cast<int>(s.parameters.size()), 0, 0, 0, spent};
      for (const StratumTally& t : tallies_) {
        p.blocks += t.samples;
        p.failures += t.failures();
      }
      p.codewords = p.blocks;
      onProgress(p);
    }
    if (s.targetRelativeHalfWidth > 0) {
      bool met = true;
      for (size_t p = 0; p < points_.size() && met; ++p) {
        const LogInterval fer = estimate(static_cast<int>(p)).fer;
        met = fer.log10High == -INFINITY || relativeHalfWidth(fer) <= s.targetRelativeHalfWidth;
      }
      if (met) break;
    }
    if (s.timeLimit > 0 && spent >= s.timeLimit * static_cast<double>(points_.size())) break;
    if (s.cancel && s.cancel->load()) break;
  }
}

PointEstimate StratifiedEstimator::estimate(int point) const {
  const auto channel = channelAt(settings_, settings_.parameters.at(static_cast<size_t>(point)));
  PointEstimate e;
  e.parameter = channel->parameter();
  e.rawBitErrorRate = channel->rawBitErrorRate();
  e.seconds = seconds_ / static_cast<double>(points_.size());
  double codewords = 0.0, dataBits = 0.0;
  for (int k : settings_.layout.dataBits) {
    codewords += 1.0;
    dataBits += k;
  }
  std::vector<WeightedEstimate> fer, mis, uber;
  double omittedFer = -INFINITY, omittedUber = -INFINITY;
  for (const LengthAtPoint& at : points_[static_cast<size_t>(point)]) {
    const double perCodeword = std::log(at.count / codewords), perDataBit = std::log(at.count / dataBits);
    omittedFer = logAdd(omittedFer, perCodeword + at.logOmitted);
    omittedUber = logAdd(omittedUber, perDataBit + at.logOmitted + std::log(static_cast<double>(at.dataBits)));
    for (const Use& use : at.uses) {
      const Stratum& st = strata_[use.stratum];
      const StratumTally& t = tallies_[use.stratum];
      e.uncorrectable += t.uncorrectable;
      e.miscorrected += t.miscorrected;
      e.codewords += t.samples;
      const double cap = std::min(st.dataBits, st.weight + at.maxFlips);
      const double n = static_cast<double>(t.samples);
      WeightedEstimate f{use.logWeight + perCodeword, 0.0, 0.0, 1.0};
      WeightedEstimate m = f;
      WeightedEstimate u{use.logWeight + perDataBit, 0.0, 0.0, cap};
      if (t.samples > 0) {
        f.value = t.failures() / n;
        m.value = t.miscorrected / n;
        u.value = t.dataBitErrors / n;
        if (st.exhaustive) {
          f.low = f.high = f.value;
          m.low = m.high = m.value;
          u.low = u.high = u.value;
        } else {
          const Interval fi = at.radius >= 0 ? Interval{f.value, f.value} : wilsonInterval95(t.failures(), t.samples);
          const Interval mi = wilsonInterval95(t.miscorrected, t.samples);
          const Interval ui = t.dataBitErrors > 0
                                  ? meanInterval95(static_cast<double>(t.dataBitErrors),
                                                   static_cast<double>(t.dataBitErrorsSquared), t.samples)
                                  : Interval{0.0, fi.high * cap};
          f.low = fi.low;
          f.high = fi.high;
          m.low = mi.low;
          m.high = mi.high;
          u.low = ui.low;
          u.high = ui.high;
        }
      }
      fer.push_back(f);
      mis.push_back(m);
      uber.push_back(u);
    }
  }
  e.fer = combineStrata(fer, omittedFer);
  e.miscorrection = combineStrata(mis, omittedFer);
  e.uber = combineStrata(uber, omittedUber);
  return e;
}

}  // namespace flashbch
