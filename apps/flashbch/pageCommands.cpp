// flashbch encode and flashbch decode: page image files block by block.
#include <iostream>

#include "commands.h"
#include "outputFile.h"
#include "pageImage.h"
#include "resultTable.h"
#include "usageError.h"

namespace flashbch {

namespace {

BlockLayout pageLayout(const PageOptions& o, BitOrder& order) {
  const BlockLayout layout = makeLayout(parseLayout(o.layout), o.t, true);
  order.byteSwapWordBits = o.byteSwap;
  order.bitSwapGroupBits = o.bitSwap;
  checkBitOrder(order, layout);
  checkDistinctFiles("--output", o.output, o.input, "the input file; the input is never written over");
  checkWritable("--output", o.output);
  return layout;
}

std::string asString(const std::vector<std::uint8_t>& bytes) { return std::string(bytes.begin(), bytes.end()); }

}  // namespace

int runEncode(const PageOptions& o) {
  BitOrder order;
  const BlockLayout layout = pageLayout(o, order);
  PageCodec codec(layout, order);
  const std::vector<std::uint8_t> data = readWholeFile(o.input);
  const std::int64_t blocks = countBlocks(o.input, static_cast<std::int64_t>(data.size()), codec.dataBytes());
  std::vector<std::uint8_t> image(static_cast<size_t>(blocks * codec.imageBytes()));
  for (std::int64_t b = 0; b < blocks; ++b)
    codec.encodeBlock(data.data() + b * codec.dataBytes(), image.data() + b * codec.imageBytes());
  writeOutputFile("--output", o.output, asString(image));
  std::cout << "flashbch encode: " << blocks << (blocks == 1 ? " block" : " blocks") << " of " << layout.describe()
            << " data bits, t = " << layout.t << ": " << data.size() << " data bytes -> " << image.size()
            << " image bytes" << std::endl;
  return 0;
}

int runDecode(const PageOptions& o) {
  BitOrder order;
  const BlockLayout layout = pageLayout(o, order);
  const int scrubThreshold = o.scrubThreshold < 0 ? (3 * layout.t + 3) / 4 : o.scrubThreshold;
  if (o.scrubThreshold < -1 || scrubThreshold > layout.t)
    throw UsageError("--scrub-threshold: " + std::to_string(o.scrubThreshold) +
                     " is outside the accepted range 0 .. " + std::to_string(layout.t) + " (t)");
  int shortest = layout.codeLength(0);
  for (int i = 0; i < layout.codewords(); ++i) shortest = std::min(shortest, layout.codeLength(i));
  const int erasedThreshold = o.erasedThreshold < 0 ? layout.t : o.erasedThreshold;
  if (o.erasedThreshold < -1 || erasedThreshold >= shortest)
    throw UsageError("--erased-threshold: " + std::to_string(o.erasedThreshold) +
                     " is outside the accepted range 0 .. " + std::to_string(shortest - 1) +
                     " (below the bits of the shortest codeword)");
  if (!o.report.empty()) {
    checkDistinctFiles("--report", o.report, o.input, "the input file; the input is never written over");
    checkDistinctFiles("--report", o.report, o.output, "the --output file as well");
    checkWritable("--report", o.report);
  }

  PageCodec codec(layout, order);
  const std::vector<std::uint8_t> image = readWholeFile(o.input);
  const std::int64_t blocks = countBlocks(o.input, static_cast<std::int64_t>(image.size()), codec.imageBytes());
  std::vector<std::uint8_t> data(static_cast<size_t>(blocks * codec.dataBytes()));

  std::int64_t counts[4] = {0, 0, 0, 0};  // by CodewordStatus
  std::int64_t correctedBits = 0, scrubBlocks = 0;
  int mostCorrected = 0;
  Json blockReports = Json::array();
  for (std::int64_t b = 0; b < blocks; ++b) {
    const BlockReport report = codec.decodeBlock(image.data() + b * codec.imageBytes(),
                                                 data.data() + b * codec.dataBytes(), erasedThreshold);
    Json codewords = Json::array();
    for (size_t i = 0; i < report.codewords.size(); ++i) {
      const CodewordReport& c = report.codewords[i];
      ++counts[static_cast<int>(c.status)];
      correctedBits += c.correctedBits;
      Json entry;
      entry["codeword"] = i;
      entry["status"] = statusName(c.status);
      entry["corrected_bits"] = c.correctedBits;
      if (c.status == CodewordStatus::Erased) entry["zero_bits"] = c.zeroBits;
      codewords.push_back(entry);
    }
    const bool scrub = report.maxCorrected() >= scrubThreshold;
    scrubBlocks += scrub;
    mostCorrected = std::max(mostCorrected, report.maxCorrected());
    Json block;
    block["block"] = b;
    block["image_offset"] = b * codec.imageBytes();
    block["max_corrected_bits"] = report.maxCorrected();
    block["scrub_recommended"] = scrub;
    block["uncorrectable"] = report.hasUncorrectable();
    block["codewords"] = codewords;
    blockReports.push_back(block);
  }
  writeOutputFile("--output", o.output, asString(data));

  const std::int64_t uncorrectable = counts[static_cast<int>(CodewordStatus::Uncorrectable)];
  if (!o.report.empty()) {
    Json document;
    document["input"] = o.input;
    document["layout"] = layout.describe();
    document["data_bits"] = layout.dataBits;
    document["t"] = layout.t;
    document["scrub_threshold"] = scrubThreshold;
    document["erased_threshold"] = erasedThreshold;
    Json summary;
    summary["blocks"] = blocks;
    summary["codewords"] = blocks * layout.codewords();
    summary["clean"] = counts[static_cast<int>(CodewordStatus::Clean)];
    summary["corrected"] = counts[static_cast<int>(CodewordStatus::Corrected)];
    summary["erased"] = counts[static_cast<int>(CodewordStatus::Erased)];
    summary["uncorrectable"] = uncorrectable;
    summary["corrected_bits"] = correctedBits;
    summary["max_corrected_bits"] = mostCorrected;
    summary["scrub_recommended_blocks"] = scrubBlocks;
    document["summary"] = summary;
    document["blocks"] = blockReports;
    writeOutputFile("--report", o.report, document.dump(2) + "\n");
  }
  std::cout << "flashbch decode: " << blocks << (blocks == 1 ? " block, " : " blocks, ")
            << blocks * layout.codewords() << " codewords: " << counts[0] << " clean, " << counts[1] << " corrected ("
            << correctedBits << " bits, at most " << mostCorrected << " in one codeword), " << counts[3]
            << " erased, " << uncorrectable << " uncorrectable; scrub recommended for " << scrubBlocks
            << (scrubBlocks == 1 ? " block" : " blocks") << std::endl;
  return uncorrectable == 0 ? 0 : 1;
}

}  // namespace flashbch
