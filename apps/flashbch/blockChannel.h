// The channels a simulated block goes through, and the seeding that makes a
// simulation reproducible whatever the thread count.
//
// AWGN is the library's own test channel: bit b is sent as 1 - 2b and
// Gaussian noise of standard deviation sigma = 2 * 10^(-snr/20) is added;
// the receiver decides 1 for a negative sample (hard decision). Its raw bit
// error rate is Q(1/sigma). BSC flips every bit independently with the
// given probability.
//
// Every block draws its data and its noise from a generator seeded with
// blockSeed(seed, point, block), a mix of the three numbers, so a block's
// outcome depends on nothing but them.
#pragma once

#include <cstdint>
#include <string>

class Random_Number_Generator;

namespace flashbch {

enum class ChannelKind { Awgn, Bsc };

struct Channel {
  ChannelKind kind = ChannelKind::Awgn;
  double parameter = 0.0;  // SNR in dB for AWGN, flip probability for BSC

  // The probability that one bit arrives flipped.
  double rawBitErrorRate() const;
  // received[i] = sent[i] after the channel; returns the number of flips.
  // Draws one deviate (normal for AWGN, uniform for BSC) per bit, in order.
  std::int64_t transmit(const int* sent, int* received, std::int64_t n, Random_Number_Generator& rng) const;
};

const char* channelName(ChannelKind kind);
// The column heading of the channel parameter: "snr_db" or "rber".
const char* channelParameterName(ChannelKind kind);

std::uint32_t blockSeed(std::uint64_t seed, std::uint64_t point, std::uint64_t block);

// n uniformly random bits, 1 when a draw exceeds one half (as the library's
// test-data generator decides).
void randomBits(int* bits, std::int64_t n, Random_Number_Generator& rng);

}  // namespace flashbch
