// One thread's tools: a decoder per codeword length (made once, reused for
// every block), a random stream, and scratch for error positions.
//
// simulate() runs one block: for each codeword, random data, encoding,
// the channel's error positions, decoding, and the tally, all on packed
// words and in O(errors) besides the codec's own work.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "simulation.h"

namespace flashbch {

class BlockWorker {
 public:
  BlockWorker(const BlockLayout& layout, const DecoderFactory& makeDecoder);
  PointTally simulate(const Channel& channel, std::uint64_t key);
  CodewordDecoder& decoderFor(int dataBits);
  RandomStream& stream() { return rng_; }
  std::vector<int>& positions() { return positions_; }

 private:
  BlockLayout layout_;
  DecoderFactory makeDecoder_;
  std::map<int, std::unique_ptr<CodewordDecoder>> decoders_;
  RandomStream rng_;
  std::vector<std::uint8_t> message_;
  std::vector<int> positions_;
};

}  // namespace flashbch
