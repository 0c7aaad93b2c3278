#include "blockChannel.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "errorStatistics.h"

namespace flashbch {

void appendBernoulliErrors(int first, int n, double p, double logKeep, RandomStream& rng,
                           std::vector<int>& positions) {
  if (!(p > 0.0)) return;
  double at = first - 1.0;
  for (;;) {
    at += std::floor(std::log(rng.uniformPositive()) / logKeep) + 1.0;
    if (at >= n) return;
    positions.push_back(static_cast<int>(at));
  }
}

double Channel::logWeight(int n, int w) const { return logBinomialProbability(n, w, rawBitErrorRate()); }

void Channel::sampleErrorsOfWeight(int n, int w, RandomStream& rng, std::vector<int>& positions) const {
  // Floyd: for j = n-w .. n-1 add a uniform r <= j, or j itself when r is
  // already in; every w-subset comes out with probability 1 / C(n, w).
  thread_local std::vector<std::uint64_t> taken;
  taken.assign((static_cast<size_t>(n) + 63) / 64, 0);
  positions.clear();
  for (int j = n - w; j < n; ++j) {
    int r = static_cast<int>(rng.below(static_cast<std::uint64_t>(j) + 1));
    if (taken[r >> 6] >> (r & 63) & 1) r = j;
    taken[r >> 6] |= std::uint64_t{1} << (r & 63);
    positions.push_back(r);
  }
  std::sort(positions.begin(), positions.end());
}

namespace {

class BinarySymmetric : public Channel {
 public:
  BinarySymmetric(ChannelKind kind, double parameter, double p)
      : kind_(kind), parameter_(parameter), p_(p), logKeep_(std::log1p(-p)) {}
  ChannelKind kind() const override { return kind_; }
  double parameter() const override { return parameter_; }
  double rawBitErrorRate() const override { return p_; }
  bool independentErrors() const override { return true; }
  void sampleErrors(int n, RandomStream& rng, std::vector<int>& positions) const override {
    positions.clear();
    appendBernoulliErrors(0, n, p_, logKeep_, rng, positions);
  }

 private:
  ChannelKind kind_;
  double parameter_, p_, logKeep_;
};

// One Gaussian per bit; bit 0 is sent as +1, and
// by the symmetry of the noise every bit errs alike.
class GaussianPerBit : public Channel {
 public:
  explicit GaussianPerBit(double snrDb) : snr_(snrDb), sigma_(testChannelSigma(snrDb)) {}
  ChannelKind kind() const override { return ChannelKind::AwgnBits; }
  double parameter() const override { return snr_; }
  double rawBitErrorRate() const override { return hardDecisionErrorRate(sigma_); }
  bool independentErrors() const override { return true; }
  void sampleErrors(int n, RandomStream& rng, std::vector<int>& positions) const override {
    positions.clear();
    for (int i = 0; i < n; i += 2) {
      double u, v;
      const double scale = sigma_ * rng.polarPoint(u, v);
      if (1.0 + scale * u < 0.0) positions.push_back(i);
      if (i + 1 < n && 1.0 + scale * v < 0.0) positions.push_back(i + 1);
    }
  }

 private:
  double snr_, sigma_;
};

}  // namespace

std::unique_ptr<Channel> makeChannel(ChannelKind kind, double parameter) {
  if (kind == ChannelKind::Bsc) {
    if (!(parameter >= 0.0 && parameter < 0.5)) throw std::invalid_argument("the raw bit error rate must be in [0, 0.5)");
    return std::make_unique<BinarySymmetric>(kind, parameter, parameter);
  }
  if (!std::isfinite(parameter)) throw std::invalid_argument("the SNR must be finite");
  if (kind == ChannelKind::AwgnBits) return std::make_unique<GaussianPerBit>(parameter);
  return std::make_unique<BinarySymmetric>(kind, parameter, hardDecisionErrorRate(testChannelSigma(parameter)));
}

const char* channelName(ChannelKind kind) {
  switch (kind) {
    case ChannelKind::Bsc:
      return "bsc";
    case ChannelKind::Awgn:
      return "awgn";
    case ChannelKind::Nand:
      return "nand";
    case ChannelKind::BetaBinomial:
      return "bbm";
    default:
      return "awgn-bits";
  }
}

const char* channelParameterName(ChannelKind kind) {
  if (kind == ChannelKind::Nand) return "pe";
  return kind == ChannelKind::Bsc || kind == ChannelKind::BetaBinomial ? "rber" : "snr_db";
}

}  // namespace flashbch
