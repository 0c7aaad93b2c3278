#include "blockWorker.h"

#include <algorithm>
#include <cstring>

namespace flashbch {

BlockWorker::BlockWorker(const BlockLayout& layout, const DecoderFactory& makeDecoder)
    : layout_(layout), makeDecoder_(makeDecoder) {
  if (!makeDecoder_)
    makeDecoder_ = [](int dataBits, int t) { return std::make_unique<PackedHardDecoder>(dataBits, t); };
}

CodewordDecoder& BlockWorker::decoderFor(int dataBits) {
  auto& decoder = decoders_[dataBits];
  if (!decoder) decoder = makeDecoder_(dataBits, layout_.t);
  return *decoder;
}

PointTally BlockWorker::simulate(const Channel& channel, std::uint64_t key) {
  rng_.reseed(key);
  PointTally tally;
  tally.blocks = 1;
  for (int k : layout_.dataBits) {
    CodewordDecoder& decoder = decoderFor(k);
    message_.resize((static_cast<size_t>(k) + 7) / 8);
    for (size_t at = 0; at < message_.size(); at += 8) {
      const std::uint64_t word = rng_.next();
      std::memcpy(&message_[at], &word, std::min<size_t>(8, message_.size() - at));
    }
    decoder.setMessage(message_.data());
    const int n = decoder.codeBits();
    channel.sampleErrors(n, rng_, positions_);
    const TrialOutcome outcome = decoder.decode(positions_);
    ++tally.codewords;
    tally.bitsSent += n;
    tally.bitFlips += static_cast<std::int64_t>(positions_.size());
    tally.dataBits += k;
    tally.dataBitErrors += outcome.dataBitErrors;
    tally.dataBitErrorsSquared += static_cast<std::int64_t>(outcome.dataBitErrors) * outcome.dataBitErrors;
    if (outcome.uncorrectable)
      ++tally.uncorrectable;
    else if (outcome.dataBitErrors > 0)
      ++tally.miscorrected;
  }
  return tally;
}

}  // namespace flashbch
