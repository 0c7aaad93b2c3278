// Chase decoding in the simulator; see the header.
#include "chaseCodewordDecoder.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <stdexcept>
#include <string>

namespace flashbch {

ChaseCodewordDecoder::ChaseCodewordDecoder(int dataBits, int t, int eta)
    : codec_(dataBits, t),
      eta_(eta),
      data_(static_cast<size_t>(codec_.dataBytes())),
      parity_(static_cast<size_t>(codec_.parityBytes())),
      corrected_(static_cast<size_t>(t + eta)) {
  if (eta < 0 || eta > quil::PackedBCH::kMaxChasePositions)
    throw std::invalid_argument("--chase-positions: eta must be 0 .. " +
                                std::to_string(quil::PackedBCH::kMaxChasePositions) + ", got " +
                                std::to_string(eta));
  // Without soft information every bit is as reliable as any other.
  flat_.assign(static_cast<size_t>(codeBits()), 1.0f);
  codec_.encode(data_.data(), parity_.data());
}

void ChaseCodewordDecoder::setMessage(const std::uint8_t* data) {
  std::memcpy(data_.data(), data, data_.size());
  codec_.encode(data_.data(), parity_.data());
}

void ChaseCodewordDecoder::flip(int bit) {
  const int k = codec_.dataBits();
  std::uint8_t* word = bit < k ? data_.data() : parity_.data();
  const int at = bit < k ? bit : bit - k;
  word[at >> 3] = static_cast<std::uint8_t>(word[at >> 3] ^ (0x80 >> (at & 7)));
}

TrialOutcome ChaseCodewordDecoder::decode(const std::vector<int>& errors) {
  for (int bit : errors) flip(bit);
  const float* reliability = reliability_ ? reliability_ : flat_.data();
  const quil::DecodeResult result =
      codec_.decodeSoft(data_.data(), parity_.data(), reliability, eta_, corrected_.data());
  reliability_ = nullptr;
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
