// Page images: files of flash blocks as the codec stores them.
//
// A data file is a sequence of blocks of blockDataBits()/8 bytes; an image
// file is a sequence of blocks of blockStoredBits()/8 bytes, each codeword
// being its data bytes, its 15t parity bits and zero bits up to a whole
// byte. Within a byte the first bit of the codec's bit array is the most
// significant. A controller that stores bytes or bits in another order is
// matched by the swap options: the encoder applies the library's byte swap
// (bytes reversed inside words of wordBits bits) and then its bit swap
// (bits reversed inside groups of groupBits bits) to every block image; the
// decoder undoes them in the opposite order, both being involutions.
//
// Decoding, per codeword: a codeword whose stored data and parity bits
// (the padding is not looked at) hold at most erasedThreshold zeros is an
// erased page: its data come out as all ones and it is not decoded.
// Otherwise it is clean (no error found), corrected (the count is the degree
// of the error locator, the number of bits the decoder flipped) or
// uncorrectable (its data come out as read). A block whose largest
// corrected count reaches scrubThreshold is flagged for scrubbing.
//
// The codec works on the packed bytes throughout (one PackedBCH per distinct
// codeword length), so an image costs what its codewords cost to decode.
// The command line and the Python module share this code; a PageCodec holds
// scratch space and is used by one thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "blockLayout.h"

namespace quil {
class PackedBCH;
}

namespace flashbch {

struct BitOrder {
  int byteSwapWordBits = 0;  // 0: no byte swap
  int bitSwapGroupBits = 0;  // 0: no bit swap
};

// Throws UsageError naming --byte-swap or --bit-swap when the swap does not
// fit the block image.
void checkBitOrder(const BitOrder& order, const BlockLayout& layout);

// The byte swap, then the bit swap, of a packed block image in place;
// unswapBlockImage undoes them (the bit swap first).
void swapBlockImage(const BitOrder& order, std::uint8_t* image, std::int64_t bits);
void unswapBlockImage(const BitOrder& order, std::uint8_t* image, std::int64_t bits);

// Whole file contents; throws UsageError naming the file when it cannot be read.
std::vector<std::uint8_t> readWholeFile(const std::string& path);
// Throws UsageError naming `flag` when `path` names the same file as
// `other`, described by `otherRole`.
void checkDistinctFiles(const std::string& flag, const std::string& path, const std::string& other,
                        const std::string& otherRole);
// Throws UsageError naming the file and the byte offset of a trailing
// partial block, or when the file holds no block.
std::int64_t countBlocks(const std::string& path, std::int64_t fileBytes, std::int64_t blockBytes);

enum class CodewordStatus { Clean, Corrected, Uncorrectable, Erased };
const char* statusName(CodewordStatus status);

struct CodewordReport {
  CodewordStatus status = CodewordStatus::Clean;
  int correctedBits = 0;  // the locator's degree when corrected
  int zeroBits = 0;       // zeros among the stored data and parity bits
};

struct BlockReport {
  std::vector<CodewordReport> codewords;
  int maxCorrected() const;
  bool hasUncorrectable() const;
};

// The thresholds of a decode run. An option of -1 means the default:
// scrubbing at three quarters of t (rounded up), erased pages at up to t
// zeros. Throws UsageError naming --scrub-threshold or --erased-threshold
// when an option is out of range for the layout.
struct DecodeRules {
  int scrubThreshold = 0;
  int erasedThreshold = 0;
  bool scrubRecommended(const BlockReport& block) const { return block.maxCorrected() >= scrubThreshold; }
};
DecodeRules decodeRules(const BlockLayout& layout, int scrubOption, int erasedOption);

// Totals over the decoded blocks of an image.
struct ImageSummary {
  std::int64_t blocks = 0;
  std::int64_t codewords = 0;
  std::int64_t byStatus[4] = {0, 0, 0, 0};  // indexed by CodewordStatus
  std::int64_t correctedBits = 0;
  std::int64_t scrubBlocks = 0;
  int maxCorrected = 0;

  void add(const BlockReport& block, const DecodeRules& rules);
  std::int64_t count(CodewordStatus status) const { return byStatus[static_cast<int>(status)]; }
  // The totals under the names of the decode report, in its order.
  std::vector<std::pair<const char*, std::int64_t>> fields() const;
  // "3 blocks, 6 codewords: 1 clean, 5 corrected (15 bits, at most 5 in one
  // codeword), 0 erased, 0 uncorrectable; scrub recommended for 2 blocks"
  std::string describe() const;
};

class PageCodec {
 public:
  PageCodec(const BlockLayout& layout, const BitOrder& order);
  ~PageCodec();

  const BlockLayout& layout() const { return layout_; }
  std::int64_t dataBytes() const { return layout_.blockDataBits() / 8; }
  std::int64_t imageBytes() const { return layout_.blockStoredBits() / 8; }
  // data: dataBytes() bytes; image: imageBytes() bytes.
  void encodeBlock(const std::uint8_t* data, std::uint8_t* image);
  BlockReport decodeBlock(const std::uint8_t* image, std::uint8_t* data, int erasedThreshold);

 private:
  BlockLayout layout_;
  BitOrder order_;
  std::vector<std::unique_ptr<quil::PackedBCH>> codes_;  // one per distinct data length
  std::vector<int> codeOf_;                              // per codeword, an index into codes_
  std::vector<std::uint8_t> image_;                      // the unswapped block image
};

}  // namespace flashbch
