// The channels a simulated codeword goes through.
//
// A channel hands out the error pattern of one codeword of n stored bits as
// its sorted error positions, so that a codeword costs O(errors), not O(n).
//
//   bsc        every bit flips independently with probability p (--rber).
//   awgn       the library's test channel with hard decisions: bit b is sent
//              as 1 - 2b in Gaussian noise of standard deviation
//              sigma = 2 * 10^(-snr/20) and read as 1 when the sample is
//              negative. The noise crosses zero independently per bit with
//              probability p = Q(1/sigma) = erfc(1/(sigma sqrt 2)) / 2, so
//              this is a BSC with that p, sampled the same way.
//   awgn-bits  the same channel drawn the slow way, one Gaussian per bit: the
//              reference the fast samplers are tested against.
//
// Fast sampling walks the geometric gaps between errors: with U uniform on
// (0, 1], G = floor(ln U / ln(1 - p)) has P(G >= g) = (1 - p)^g, the law of
// the number of correct bits before the next error. One logarithm per error
// (plus one per codeword) gives exactly the Bernoulli(p) process.
//
// For the stratified estimator a channel also says whether its errors are
// independent and identically distributed over the codeword; if so the
// number of errors W is Binomial(n, p), logWeight gives ln P(W = w), and
// given W = w every set of w positions is equally likely, which
// sampleErrorsOfWeight draws (Floyd's algorithm, O(w)). A channel with a
// different law of W (a beta-binomial one, say) overrides logWeight.
// Channels with soft output (per-bit reliabilities for a soft decoder) are
// to extend this interface with a method filling them beside the positions.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "randomStream.h"

namespace flashbch {

enum class ChannelKind { Awgn, AwgnBits, Bsc };

class Channel {
 public:
  virtual ~Channel() = default;
  virtual ChannelKind kind() const = 0;
  // The sweep value: SNR in dB for the AWGN channels, p for the BSC.
  virtual double parameter() const = 0;
  // The probability that one stored bit is misread.
  virtual double rawBitErrorRate() const = 0;
  virtual bool independentErrors() const = 0;
  // Error positions of one codeword of n bits, ascending, replacing `positions`.
  virtual void sampleErrors(int n, RandomStream& rng, std::vector<int>& positions) const = 0;
  // ln P(W = w) for the number W of errors in a codeword of n bits.
  virtual double logWeight(int n, int w) const;
  // A pattern of exactly w errors, as the channel draws them given W = w.
  virtual void sampleErrorsOfWeight(int n, int w, RandomStream& rng, std::vector<int>& positions) const;
};

// Throws std::invalid_argument for a parameter outside the channel's range
// (p outside [0, 0.5), a non-finite SNR).
std::unique_ptr<Channel> makeChannel(ChannelKind kind, double parameter);

const char* channelName(ChannelKind kind);
// The column heading of the channel parameter: "snr_db" or "rber".
const char* channelParameterName(ChannelKind kind);

// Appends the positions of the independent errors of probability p among
// bits first .. n-1 (geometric gaps); `logKeep` is ln(1 - p).
void appendBernoulliErrors(int first, int n, double p, double logKeep, RandomStream& rng,
                           std::vector<int>& positions);

}  // namespace flashbch
