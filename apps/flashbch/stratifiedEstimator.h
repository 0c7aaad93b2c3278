// Weight-stratified estimation of codeword failure, miscorrection and data
// bit error rates, for channels whose errors are independent and identically
// distributed over a codeword.
//
// With W the number of errors among the n bits of a codeword,
//   FER = sum_w P(W = w) q(w),  q(w) = P(fail | W = w),
// and given W = w every w-set of positions is equally likely, so q(w) (and
// the miscorrection and bit-loss rates per stratum) are estimated by
// decoding uniform patterns of exactly w errors. The weights P(W = w) come
// from the channel in log space; only the q's are sampled, and they do not
// depend on the channel parameter, so one set of strata serves every point
// of a sweep.
//
// Strata: for a decoder with bounded-distance radius r (-1 if none), the
// strata w <= r are exact zeros and are not sampled; the failure of w > r
// is certain (q = 1), only its split into uncorrectable and miscorrected is
// sampled. At each point, the strata w > r with P(W = w) >= kStratumTolerance
// * P(W > r) are used; the others' total mass is known, and is added to the
// upper limits (their rates lie between 0 and that mass). A stratum with at
// most maxBlocks patterns (C(n, w) of them) is enumerated, and its rates
// are exact.
//
// Sampling runs in rounds: each round gives every stratum still open
// kStratumRoundSamples more patterns, drawn from the stream
// streamKey({seed, tag, dataBits, w, round}); patterns are decoded on the
// all-zero codeword (see codewordDecoder.h). A stratum closes at maxFailures
// failures or maxBlocks samples; the whole run stops when every stratum is
// closed, when every point's failure rate has a relative half-width of at
// most targetRelativeHalfWidth, at the time limit (timeLimit per point of
// the sweep), or on cancel. Tallies are sums of counts, so the result does
// not depend on the number of threads.
//
// Intervals (95%): per stratum, Wilson score intervals (exact values for
// enumerated strata and for the certain outcomes above); the mean data bit
// errors per pattern get the normal interval with the sample variance, or,
// when none were seen, [0, failure upper limit * (w + the decoder's flips,
// at most the data bits)]. Strata combine by MOVER (combineStrata in
// errorStatistics.h).
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "simulation.h"

namespace flashbch {

constexpr double kStratumTolerance = 1e-12;
constexpr std::int64_t kStratumRoundSamples = 32;

struct Stratum {
  int dataBits = 0;
  int codeBits = 0;
  int weight = 0;
  bool exhaustive = false;  // every pattern is decoded once
};

struct StratumTally {
  std::int64_t samples = 0;
  std::int64_t uncorrectable = 0;
  std::int64_t miscorrected = 0;
  std::int64_t dataBitErrors = 0;
  std::int64_t dataBitErrorsSquared = 0;

  std::int64_t failures() const { return uncorrectable + miscorrected; }
  void add(const StratumTally& other);
};

class StratifiedEstimator {
 public:
  // Throws UsageError (naming --estimator) when the channel's errors are not
  // independent and identically distributed.
  explicit StratifiedEstimator(SimulationSettings settings);
  ~StratifiedEstimator();

  // Samples until a stop rule holds; callable again after a cancel.
  void run(const ProgressCallback& onProgress = {}, double progressSeconds = 0.25);
  PointEstimate estimate(int point) const;

  const std::vector<Stratum>& strata() const { return strata_; }
  const std::vector<StratumTally>& tallies() const { return tallies_; }
  std::vector<StratumTally>& tallies() { return tallies_; }

 private:
  struct Use {  // a stratum used at a point
    size_t stratum;
    double logWeight;  // ln P(W = w)
  };
  struct LengthAtPoint {
    int dataBits, count, radius, maxFlips;
    std::vector<Use> uses;
    double logOmitted;  // ln of the mass of the strata w > r left out
  };
  StratumTally sample(int worker, size_t stratum, std::int64_t round, std::int64_t count);
  bool closed(size_t stratum) const;

  SimulationSettings settings_;
  std::vector<std::unique_ptr<class BlockWorker>> workers_;
  std::vector<Stratum> strata_;
  std::vector<StratumTally> tallies_;
  std::vector<std::vector<LengthAtPoint>> points_;
  std::int64_t rounds_ = 0;
  double seconds_ = 0.0;
};

}  // namespace flashbch
