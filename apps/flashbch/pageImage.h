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
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "blockLayout.h"

class FlashBCH;

namespace flashbch {

struct BitOrder {
  int byteSwapWordBits = 0;  // 0: no byte swap
  int bitSwapGroupBits = 0;  // 0: no bit swap
};

// Throws UsageError naming --byte-swap or --bit-swap when the swap does not
// fit the block image.
void checkBitOrder(const BitOrder& order, const BlockLayout& layout);

void bytesToBits(const std::uint8_t* bytes, std::int64_t count, int* bits);
void bitsToBytes(const int* bits, std::int64_t count, std::uint8_t* bytes);

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

class PageCodec {
 public:
  PageCodec(const BlockLayout& layout, const BitOrder& order);
  ~PageCodec();

  std::int64_t dataBytes() const { return layout_.blockDataBits() / 8; }
  std::int64_t imageBytes() const { return layout_.blockStoredBits() / 8; }
  // data: dataBytes() bytes; image: imageBytes() bytes.
  void encodeBlock(const std::uint8_t* data, std::uint8_t* image);
  BlockReport decodeBlock(const std::uint8_t* image, std::uint8_t* data, int erasedThreshold);

 private:
  BlockLayout layout_;
  BitOrder order_;
  std::unique_ptr<FlashBCH> codec_;
  std::vector<int> dataBits_, storedBits_;
  std::vector<int> results_;
  std::vector<std::vector<int>> locators_;
};

}  // namespace flashbch
