#include "blockChannel.h"

#include "errorStatistics.h"
#include "randgen/randgen.h"

namespace flashbch {

double Channel::rawBitErrorRate() const {
  return kind == ChannelKind::Awgn ? hardDecisionErrorRate(testChannelSigma(parameter)) : parameter;
}

std::int64_t Channel::transmit(const int* sent, int* received, std::int64_t n, Random_Number_Generator& rng) const {
  std::int64_t flips = 0;
  if (kind == ChannelKind::Awgn) {
    const double sigma = testChannelSigma(parameter);
    for (std::int64_t i = 0; i < n; ++i) {
      const double sample = (1 - 2 * sent[i]) + sigma * rng.normal();
      received[i] = sample < 0.0 ? 1 : 0;
      flips += received[i] != sent[i];
    }
  } else {
    for (std::int64_t i = 0; i < n; ++i) {
      const bool flip = rng.uniform() < parameter;
      received[i] = flip ? 1 - sent[i] : sent[i];
      flips += flip;
    }
  }
  return flips;
}

const char* channelName(ChannelKind kind) { return kind == ChannelKind::Awgn ? "awgn" : "bsc"; }

const char* channelParameterName(ChannelKind kind) { return kind == ChannelKind::Awgn ? "snr_db" : "rber"; }

namespace {

// SplitMix64 finaliser: a bijection on 64-bit words whose every output bit
// depends on every input bit.
std::uint64_t mix64(std::uint64_t z) {
  z += 0x9E3779B97F4A7C15ull;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  return z ^ (z >> 31);
}

}  // namespace

std::uint32_t blockSeed(std::uint64_t seed, std::uint64_t point, std::uint64_t block) {
  const std::uint64_t h = mix64(mix64(mix64(seed) ^ point) ^ block);
  return static_cast<std::uint32_t>(h ^ (h >> 32));
}

void randomBits(int* bits, std::int64_t n, Random_Number_Generator& rng) {
  for (std::int64_t i = 0; i < n; ++i) bits[i] = rng.uniform() > 0.5 ? 1 : 0;
}

}  // namespace flashbch
