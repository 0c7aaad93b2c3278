// Chase decoding in the simulator; see the header.
#include "chaseCodewordDecoder.h"

#include <stdexcept>
#include <string>

namespace flashbch {

namespace {

int checkedEta(int eta) {
  if (eta < 0 || eta > quil::PackedBCH::kMaxChasePositions)
    throw std::invalid_argument("--chase-positions: eta must be 0 .. " +
                                std::to_string(quil::PackedBCH::kMaxChasePositions) + ", got " +
                                std::to_string(eta));
  return eta;
}

}  // namespace

ChaseCodewordDecoder::ChaseCodewordDecoder(int dataBits, int t, int eta)
    : PackedHardDecoder(dataBits, t, t + checkedEta(eta)),
      eta_(eta),
      // Without soft information every bit is as reliable as any other.
      flat_(static_cast<size_t>(codeBits()), 1.0f) {}

quil::DecodeResult ChaseCodewordDecoder::decodeWord(std::uint8_t* data, std::uint8_t* parity, int* corrected) {
  const float* reliability = reliability_ ? reliability_ : flat_.data();
  reliability_ = nullptr;
  return codec().decodeSoft(data, parity, reliability, eta_, corrected);
}

}  // namespace flashbch
