// The decoder a simulation runs: it sends one codeword, applies the
// channel's errors, decodes, and tells how it went.
//
// A trial is told as (uncorrectable, data bit errors left): the codeword
// failed when the decoder said uncorrectable, or when it claimed success
// while data bits still differ (a miscorrection).
//
// boundedDistanceRadius() is the property the stratified estimator may
// lean on: a radius r >= 0 promises that every pattern of at most r errors
// is corrected and every heavier one fails, so strata of weight <= r need
// no sampling and the failure of heavier strata is certain. The hard BCH
// decoder has r = t: it only ever returns a codeword within t of what it
// read, and a codeword other than the one sent differs from it in its data
// (the parity is a function of the data). A decoder without that promise
// (a soft decoder) returns -1 and every stratum is sampled.
//
// The hard decoder's verdict depends on the error pattern alone (the
// syndromes of c + e are those of e), which lets the stratified estimator
// send the all-zero codeword; a decoder that implements this interface
// must keep that symmetry or be given messages with setMessage.
//
// A soft decoder (Chase) also needs the channel's per-bit reliabilities;
// they are to reach it beside the error positions, through decode().
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "quilPackedBCH.h"

namespace flashbch {

struct TrialOutcome {
  bool uncorrectable = false;
  int dataBitErrors = 0;  // after decoding
};

class CodewordDecoder {
 public:
  virtual ~CodewordDecoder() = default;
  virtual int dataBits() const = 0;
  // Bits of the codeword the channel acts on: data then parity.
  virtual int codeBits() const = 0;
  virtual int boundedDistanceRadius() const = 0;
  // Every pattern of at most this many errors is corrected (-1: no promise),
  // without the radius' promise about heavier ones: the stratified estimator
  // need not sample those strata.
  virtual int correctsUpTo() const { return boundedDistanceRadius(); }
  // The most bits one decoding flips: a pattern of w errors leaves at most
  // w + maxFlips() wrong data bits.
  virtual int maxFlips() const = 0;
  // The codeword to send from now on, from dataBits() packed data bits
  // (most significant bit first).
  virtual void setMessage(const std::uint8_t* data) = 0;
  // Sends the current codeword with the bits at `errors` (ascending, in
  // 0 .. codeBits()-1) flipped and decodes it. The codeword is unchanged after.
  virtual TrialOutcome decode(const std::vector<int>& errors) = 0;
  // Soft decoders: the reliabilities (codeBits() of them) for the next
  // decode() only; the array must live until then. Others ignore them.
  virtual void setReliabilities(const float* reliability) { (void)reliability; }
};

// Bounded-distance hard decoding on the packed codec: O(errors) work besides
// the codec's own, no per-bit arrays. Other decoders of the packed codec
// (Chase) derive from it and replace decodeWord.
class PackedHardDecoder : public CodewordDecoder {
 public:
  PackedHardDecoder(int dataBits, int t) : PackedHardDecoder(dataBits, t, t) {}
  int dataBits() const override { return codec_.dataBits(); }
  int codeBits() const override { return codec_.dataBits() + codec_.parityBits(); }
  int boundedDistanceRadius() const override { return codec_.correctionPower(); }
  int maxFlips() const override { return codec_.correctionPower(); }
  void setMessage(const std::uint8_t* data) override;
  TrialOutcome decode(const std::vector<int>& errors) final;

 protected:
  // mostCorrected: the most bit indices decodeWord may report.
  PackedHardDecoder(int dataBits, int t, int mostCorrected);
  // Decodes data and parity in place; the flipped codeword bits, ascending,
  // go to corrected.
  virtual quil::DecodeResult decodeWord(std::uint8_t* data, std::uint8_t* parity, int* corrected);
  const quil::PackedBCH& codec() const { return codec_; }
  quil::PackedBCH& codec() { return codec_; }

 private:
  void flip(int bit);
  quil::PackedBCH codec_;
  std::vector<std::uint8_t> data_, parity_;
  std::vector<int> corrected_, residual_;
};

}  // namespace flashbch
