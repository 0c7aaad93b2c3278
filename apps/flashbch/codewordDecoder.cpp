#include "codewordDecoder.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace flashbch {

PackedHardDecoder::PackedHardDecoder(int dataBits, int t, int mostCorrected)
    : codec_(dataBits, t),
      data_(static_cast<size_t>(codec_.dataBytes())),
      parity_(static_cast<size_t>(codec_.parityBytes())),
      corrected_(static_cast<size_t>(mostCorrected)) {
  codec_.encode(data_.data(), parity_.data());
}

void PackedHardDecoder::setMessage(const std::uint8_t* data) {
  std::memcpy(data_.data(), data, data_.size());
  codec_.encode(data_.data(), parity_.data());
}

void PackedHardDecoder::flip(int bit) {
  const int k = codec_.dataBits();
  std::uint8_t* word = bit < k ? data_.data() : parity_.data();
  const int at = bit < k ? bit : bit - k;
  word[at >> 3] = static_cast<std::uint8_t>(word[at >> 3] ^ (0x80 >> (at & 7)));
}

quil::DecodeResult PackedHardDecoder::decodeWord(std::uint8_t* data, std::uint8_t* parity, int* corrected) {
  return codec_.decode(data, parity, corrected);
}

TrialOutcome PackedHardDecoder::decode(const std::vector<int>& errors) {
  for (int bit : errors) flip(bit);
  const quil::DecodeResult result = decodeWord(data_.data(), parity_.data(), corrected_.data());
  // The word now differs from the codeword sent in the channel's errors,
  // less the corrections that hit them, plus the ones that did not.
  residual_.clear();
  if (result.status == quil::DecodeStatus::Corrected)
    std::set_symmetric_difference(errors.begin(), errors.end(), corrected_.begin(),
                                  corrected_.begin() + result.correctedBits, std::back_inserter(residual_));
  else
    residual_ = errors;
  TrialOutcome outcome;
  outcome.uncorrectable = result.status == quil::DecodeStatus::Uncorrectable;
  for (int bit : residual_) {
    outcome.dataBitErrors += bit < codec_.dataBits();
    flip(bit);
  }
  return outcome;
}

}  // namespace flashbch
