#include "pageImage.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "quilPackedBCH.h"
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

namespace {

inline bool bitAt(const std::uint8_t* bytes, std::int64_t i) { return (bytes[i / 8] >> (7 - i % 8)) & 1; }

inline std::uint8_t reversedByte(std::uint8_t b) {
  b = static_cast<std::uint8_t>((b & 0xF0) >> 4 | (b & 0x0F) << 4);
  b = static_cast<std::uint8_t>((b & 0xCC) >> 2 | (b & 0x33) << 2);
  return static_cast<std::uint8_t>((b & 0xAA) >> 1 | (b & 0x55) << 1);
}

// Bytes reversed inside each word of wordBits bits (the image is whole words).
void reverseBytesInWords(std::uint8_t* image, std::int64_t bits, int wordBits) {
  const std::int64_t wordBytes = wordBits / 8;
  for (std::int64_t at = 0; at + wordBytes <= bits / 8; at += wordBytes) std::reverse(image + at, image + at + wordBytes);
}

// Bits reversed inside each group of groupBits bits; a shorter last group is
// reversed over its own length.
void reverseBitGroups(std::uint8_t* image, std::int64_t bits, int groupBits) {
  if (groupBits % 8 == 0) {  // whole bytes: reverse the bytes and the bits of each
    for (std::int64_t at = 0; at < bits / 8; at += groupBits / 8) {
      const std::int64_t end = std::min(at + groupBits / 8, bits / 8);
      std::reverse(image + at, image + end);
      std::transform(image + at, image + end, image + at, reversedByte);
    }
    return;
  }
  for (std::int64_t s = 0; s < bits; s += groupBits) {
    const std::int64_t length = std::min<std::int64_t>(bits - s, groupBits);
    for (std::int64_t j = 0; j < length / 2; ++j) {
      const std::int64_t a = s + j, b = s + length - 1 - j;
      if (bitAt(image, a) != bitAt(image, b)) {
        image[a / 8] = static_cast<std::uint8_t>(image[a / 8] ^ (0x80 >> (a % 8)));
        image[b / 8] = static_cast<std::uint8_t>(image[b / 8] ^ (0x80 >> (b % 8)));
      }
    }
  }
}

// Zeros among `bits` bits from the start of a packed string.
int countZeroBits(const std::uint8_t* bytes, int bits) {
  int ones = 0;
  for (int i = 0; i < bits / 8; ++i) ones += __builtin_popcount(bytes[i]);
  if (bits % 8 != 0) ones += __builtin_popcount(bytes[bits / 8] >> (8 - bits % 8));
  return bits - ones;
}

}  // namespace

void swapBlockImage(const BitOrder& order, std::uint8_t* image, std::int64_t bits) {
  if (order.byteSwapWordBits != 0) reverseBytesInWords(image, bits, order.byteSwapWordBits);
  if (order.bitSwapGroupBits != 0) reverseBitGroups(image, bits, order.bitSwapGroupBits);
}

void unswapBlockImage(const BitOrder& order, std::uint8_t* image, std::int64_t bits) {
  if (order.bitSwapGroupBits != 0) reverseBitGroups(image, bits, order.bitSwapGroupBits);
  if (order.byteSwapWordBits != 0) reverseBytesInWords(image, bits, order.byteSwapWordBits);
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

DecodeRules decodeRules(const BlockLayout& layout, int scrubOption, int erasedOption) {
  DecodeRules rules;
  rules.scrubThreshold = scrubOption < 0 ? (3 * layout.t + 3) / 4 : scrubOption;
  if (scrubOption < -1 || rules.scrubThreshold > layout.t)
    throw UsageError("--scrub-threshold: " + std::to_string(scrubOption) + " is outside the accepted range 0 .. " +
                     std::to_string(layout.t) + " (t)");
  int shortest = layout.codeLength(0);
  for (int i = 0; i < layout.codewords(); ++i) shortest = std::min(shortest, layout.codeLength(i));
  rules.erasedThreshold = erasedOption < 0 ? layout.t : erasedOption;
  if (erasedOption < -1 || rules.erasedThreshold >= shortest)
    throw UsageError("--erased-threshold: " + std::to_string(erasedOption) + " is outside the accepted range 0 .. " +
                     std::to_string(shortest - 1) + " (below the bits of the shortest codeword)");
  return rules;
}

void ImageSummary::add(const BlockReport& block, const DecodeRules& rules) {
  ++blocks;
  for (const CodewordReport& c : block.codewords) {
    ++codewords;
    ++byStatus[static_cast<int>(c.status)];
    correctedBits += c.correctedBits;
  }
  scrubBlocks += rules.scrubRecommended(block);
  maxCorrected = std::max(maxCorrected, block.maxCorrected());
}

std::vector<std::pair<const char*, std::int64_t>> ImageSummary::fields() const {
  return {{"blocks", blocks},
          {"codewords", codewords},
          {"clean", count(CodewordStatus::Clean)},
          {"corrected", count(CodewordStatus::Corrected)},
          {"erased", count(CodewordStatus::Erased)},
          {"uncorrectable", count(CodewordStatus::Uncorrectable)},
          {"corrected_bits", correctedBits},
          {"max_corrected_bits", maxCorrected},
          {"scrub_recommended_blocks", scrubBlocks}};
}

std::string ImageSummary::describe() const {
  return std::to_string(blocks) + (blocks == 1 ? " block, " : " blocks, ") + std::to_string(codewords) +
         " codewords: " + std::to_string(count(CodewordStatus::Clean)) + " clean, " +
         std::to_string(count(CodewordStatus::Corrected)) + " corrected (" + std::to_string(correctedBits) +
         " bits, at most " + std::to_string(maxCorrected) + " in one codeword), " +
         std::to_string(count(CodewordStatus::Erased)) + " erased, " +
         std::to_string(count(CodewordStatus::Uncorrectable)) + " uncorrectable; scrub recommended for " +
         std::to_string(scrubBlocks) + (scrubBlocks == 1 ? " block" : " blocks");
}

PageCodec::PageCodec(const BlockLayout& layout, const BitOrder& order)
    : layout_(layout), order_(order), image_(static_cast<size_t>(imageBytes())) {
  for (int i = 0; i < layout_.codewords(); ++i) {
    if (layout_.dataBits[i] % 8 != 0) throw std::invalid_argument("PageCodec: page images need whole data bytes");
    int code = 0;
    while (code < i && layout_.dataBits[code] != layout_.dataBits[i]) ++code;
    if (code == i) {
      codeOf_.push_back(static_cast<int>(codes_.size()));
      codes_.push_back(std::make_unique<quil::PackedBCH>(layout_.dataBits[i], layout_.t));
    } else {
      codeOf_.push_back(codeOf_[code]);
    }
  }
}

PageCodec::~PageCodec() = default;

// Every codeword starts on a byte: its data are whole bytes and its stored
// parity is padded to whole bytes, so data and parity are copied and coded
// in place, byte-aligned.
void PageCodec::encodeBlock(const std::uint8_t* data, std::uint8_t* image) {
  for (int i = 0; i < layout_.codewords(); ++i) {
    const std::uint8_t* in = data + layout_.dataOffset(i) / 8;
    std::uint8_t* out = image + layout_.storedOffset(i) / 8;
    const int bytes = layout_.dataBits[i] / 8;
    std::copy(in, in + bytes, out);
    codes_[codeOf_[i]]->encode(out, out + bytes);
  }
  swapBlockImage(order_, image, layout_.blockStoredBits());
}

BlockReport PageCodec::decodeBlock(const std::uint8_t* image, std::uint8_t* data, int erasedThreshold) {
  std::copy(image, image + imageBytes(), image_.begin());
  unswapBlockImage(order_, image_.data(), layout_.blockStoredBits());
  BlockReport report;
  for (int i = 0; i < layout_.codewords(); ++i) {
    std::uint8_t* stored = image_.data() + layout_.storedOffset(i) / 8;
    std::uint8_t* out = data + layout_.dataOffset(i) / 8;
    const int bytes = layout_.dataBits[i] / 8;
    CodewordReport c;
    c.zeroBits = countZeroBits(stored, layout_.codeLength(i));
    if (c.zeroBits <= erasedThreshold) {
      c.status = CodewordStatus::Erased;
      std::fill(out, out + bytes, 0xFF);
    } else {
      std::copy(stored, stored + bytes, out);
      const quil::DecodeResult r = codes_[codeOf_[i]]->decode(out, stored + bytes);
      c.status = r.status == quil::DecodeStatus::Uncorrectable ? CodewordStatus::Uncorrectable
                 : r.status == quil::DecodeStatus::Corrected   ? CodewordStatus::Corrected
                                                               : CodewordStatus::Clean;
      c.correctedBits = r.correctedBits;
    }
    report.codewords.push_back(c);
  }
  return report;
}

}  // namespace flashbch
