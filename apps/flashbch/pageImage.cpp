#include "pageImage.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "Tools/utilities.h"
#include "api/FlashBCH.h"
#include "usageError.h"

namespace flashbch {

void checkBitOrder(const BitOrder& order, const BlockLayout& layout) {
  const std::int64_t imageBits = layout.blockStoredBits();
  const int w = order.byteSwapWordBits;
  if (w != 0 && (w < 16 || w % 8 != 0 || imageBits % w != 0))
    throw UsageError("--byte-swap: " + std::to_string(w) +
                     " is not accepted; WORDBITS must be a multiple of 8, at least 16, dividing the " +
                     std::to_string(imageBits) + " bits of a block image");
  const int g = order.bitSwapGroupBits;
  if (g != 0 && (g < 2 || g > imageBits))
    throw UsageError("--bit-swap: " + std::to_string(g) + " is outside the accepted range 2 .. " +
                     std::to_string(imageBits) + " (the bits of a block image)");
}

void bytesToBits(const std::uint8_t* bytes, std::int64_t count, int* bits) {
  for (std::int64_t i = 0; i < count; ++i)
    for (int j = 0; j < 8; ++j) bits[8 * i + j] = (bytes[i] >> (7 - j)) & 1;
}

void bitsToBytes(const int* bits, std::int64_t count, std::uint8_t* bytes) {
  for (std::int64_t i = 0; i < count; ++i) {
    unsigned byte = 0;
    for (int j = 0; j < 8; ++j) byte = (byte << 1) | static_cast<unsigned>(bits[8 * i + j] & 1);
    bytes[i] = static_cast<std::uint8_t>(byte);
  }
}

std::vector<std::uint8_t> readWholeFile(const std::string& path) {
  // Only a regular file has an end to read to: a device such as /dev/zero
  // never ends, and opening a FIFO without a writer blocks.
  std::error_code ec;
  const auto status = std::filesystem::status(path, ec);
  if (!ec && std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
    throw UsageError(path + ": not a regular file; the input must be a regular file");
  std::ifstream in(path, std::ios::binary);
  if (!in || std::filesystem::is_directory(path)) throw UsageError(path + ": cannot open the input file");
  return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void checkDistinctFiles(const std::string& flag, const std::string& path, const std::string& other,
                        const std::string& otherRole) {
  std::error_code ec;
  if (path == other || std::filesystem::equivalent(path, other, ec))
    throw UsageError(flag + ": " + path + " is " + otherRole);
}

std::int64_t countBlocks(const std::string& path, std::int64_t fileBytes, std::int64_t blockBytes) {
  const std::int64_t whole = fileBytes / blockBytes;
  if (whole == 0 && fileBytes == 0) throw UsageError(path + ": the file is empty; it holds no block");
  if (fileBytes % blockBytes != 0)
    throw UsageError(path + ": trailing partial block at byte offset " + std::to_string(whole * blockBytes) + " (" +
                     std::to_string(fileBytes - whole * blockBytes) + " bytes; a block takes " +
                     std::to_string(blockBytes) + " bytes)");
  return whole;
}

const char* statusName(CodewordStatus status) {
  switch (status) {
    case CodewordStatus::Clean:
      return "clean";
    case CodewordStatus::Corrected:
      return "corrected";
    case CodewordStatus::Uncorrectable:
      return "uncorrectable";
    case CodewordStatus::Erased:
      return "erased";
  }
  return "?";
}

int BlockReport::maxCorrected() const {
  int most = 0;
  for (const auto& c : codewords) most = std::max(most, c.correctedBits);
  return most;
}

bool BlockReport::hasUncorrectable() const {
  return std::any_of(codewords.begin(), codewords.end(),
                     [](const CodewordReport& c) { return c.status == CodewordStatus::Uncorrectable; });
}

PageCodec::PageCodec(const BlockLayout& layout, const BitOrder& order)
    : layout_(layout), order_(order), codec_(std::make_unique<FlashBCH>()) {
  codec_->init(layout_.codewords(), layout_.dataBits.data(), layout_.t, false, true, -1, 0, 0);
  dataBits_.resize(static_cast<size_t>(layout_.blockDataBits()));
  storedBits_.resize(static_cast<size_t>(layout_.blockStoredBits()));
  results_.resize(static_cast<size_t>(layout_.codewords()));
  locators_.assign(static_cast<size_t>(layout_.codewords()),
                   std::vector<int>(static_cast<size_t>(2 * layout_.t + 1)));
}

PageCodec::~PageCodec() = default;

void PageCodec::encodeBlock(const std::uint8_t* data, std::uint8_t* image) {
  bytesToBits(data, dataBytes(), dataBits_.data());
  codec_->encode_au(dataBits_.data(), storedBits_.data());
  const int n = static_cast<int>(storedBits_.size());
  byte_and_bit_swap(storedBits_.data(), n, storedBits_.data(), order_.byteSwapWordBits, order_.bitSwapGroupBits,
                    order_.byteSwapWordBits != 0, order_.bitSwapGroupBits != 0);
  bitsToBytes(storedBits_.data(), imageBytes(), image);
}

BlockReport PageCodec::decodeBlock(const std::uint8_t* image, std::uint8_t* data, int erasedThreshold) {
  bytesToBits(image, imageBytes(), storedBits_.data());
  const int n = static_cast<int>(storedBits_.size());
  if (order_.bitSwapGroupBits != 0)
    byte_and_bit_swap(storedBits_.data(), n, storedBits_.data(), 8, order_.bitSwapGroupBits, 0, 1);
  if (order_.byteSwapWordBits != 0)
    byte_and_bit_swap(storedBits_.data(), n, storedBits_.data(), order_.byteSwapWordBits, 1, 1, 0);

  codec_->decode_au(storedBits_.data(), dataBits_.data(), results_.data());
  std::vector<int*> locatorRows;
  for (auto& row : locators_) locatorRows.push_back(row.data());
  codec_->getLambda(locatorRows.data());

  BlockReport report;
  for (int i = 0; i < layout_.codewords(); ++i) {
    CodewordReport c;
    const auto stored = storedBits_.begin() + layout_.storedOffset(i);
    c.zeroBits = static_cast<int>(std::count(stored, stored + layout_.codeLength(i), 0));
    const auto data = dataBits_.begin() + layout_.dataOffset(i);
    if (c.zeroBits <= erasedThreshold) {
      c.status = CodewordStatus::Erased;
      std::fill(data, data + layout_.dataBits[i], 1);
    } else if (results_[static_cast<size_t>(i)] != 0) {
      c.status = CodewordStatus::Uncorrectable;
    } else {
      // The locator's coefficients are indexed by degree; its degree is the
      // number of error positions the decoder found and flipped.
      const auto& locator = locators_[static_cast<size_t>(i)];
      int degree = static_cast<int>(locator.size()) - 1;
      while (degree > 0 && locator[static_cast<size_t>(degree)] == 0) --degree;
      c.correctedBits = degree;
      c.status = degree == 0 ? CodewordStatus::Clean : CodewordStatus::Corrected;
    }
    report.codewords.push_back(c);
  }
  bitsToBytes(dataBits_.data(), dataBytes(), data);
  return report;
}

}  // namespace flashbch
