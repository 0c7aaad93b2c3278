// Chase-II soft decoding as a simulation's codeword decoder (--decoder
// chase --chase-positions eta): the channel's per-bit reliabilities arrive
// through setReliabilities before each decode. It promises no
// bounded-distance radius (a lighter codeword may win over the one sent),
// only that t - eta errors are always corrected, so the stratified
// estimator samples every heavier stratum.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "codewordDecoder.h"

namespace flashbch {

class ChaseCodewordDecoder : public PackedHardDecoder {
 public:
  // Throws std::invalid_argument for eta outside 0 .. 10.
  ChaseCodewordDecoder(int dataBits, int t, int eta);
  int boundedDistanceRadius() const override { return -1; }
  // With w <= t - eta errors every test word lies within t of the codeword
  // sent, decodes to it, and so does the search.
  int correctsUpTo() const override { return std::max(-1, codec().correctionPower() - eta_); }
  int maxFlips() const override { return codec().correctionPower() + eta_; }
  void setReliabilities(const float* reliability) override { reliability_ = reliability; }

 private:
  quil::DecodeResult decodeWord(std::uint8_t* data, std::uint8_t* parity, int* corrected) override;
  int eta_;
  const float* reliability_ = nullptr;
  std::vector<float> flat_;
};

}  // namespace flashbch
