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
  const DecodeRules rules = decodeRules(layout, o.scrubThreshold, o.erasedThreshold);
  if (!o.report.empty()) {
    checkDistinctFiles("--report", o.report, o.input, "the input file; the input is never written over");
    checkDistinctFiles("--report", o.report, o.output, "the --output file as well");
    checkWritable("--report", o.report);
  }

  PageCodec codec(layout, order);
  const std::vector<std::uint8_t> image = readWholeFile(o.input);
  const std::int64_t blocks = countBlocks(o.input, static_cast<std::int64_t>(image.size()), codec.imageBytes());
  std::vector<std::uint8_t> data(static_cast<size_t>(blocks * codec.dataBytes()));

  ImageSummary summary;
  Json blockReports = Json::array();
  for (std::int64_t b = 0; b < blocks; ++b) {
    const BlockReport report = codec.decodeBlock(image.data() + b * codec.imageBytes(),
                                                 data.data() + b * codec.dataBytes(), rules.erasedThreshold);
    summary.add(report, rules);
    Json codewords = Json::array();
    for (size_t i = 0; i < report.codewords.size(); ++i) {
      const CodewordReport& c = report.codewords[i];
      Json entry;
      entry["codeword"] = i;
      entry["status"] = statusName(c.status);
      entry["corrected_bits"] = c.correctedBits;
      if (c.status == CodewordStatus::Erased) entry["zero_bits"] = c.zeroBits;
      codewords.push_back(entry);
    }
    Json block;
    block["block"] = b;
    block["image_offset"] = b * codec.imageBytes();
    block["max_corrected_bits"] = report.maxCorrected();
    block["scrub_recommended"] = rules.scrubRecommended(report);
    block["uncorrectable"] = report.hasUncorrectable();
    block["codewords"] = codewords;
    blockReports.push_back(block);
  }
  writeOutputFile("--output", o.output, asString(data));

  if (!o.report.empty()) {
    Json document;
    document["input"] = o.input;
    document["layout"] = layout.describe();
    document["data_bits"] = layout.dataBits;
    document["t"] = layout.t;
    document["scrub_threshold"] = rules.scrubThreshold;
    document["erased_threshold"] = rules.erasedThreshold;
    Json totals;
    for (const auto& [name, value] : summary.fields()) totals[name] = value;
    document["summary"] = totals;
    document["blocks"] = blockReports;
    writeOutputFile("--report", o.report, document.dump(2) + "\n");
  }
  std::cout << "flashbch decode: " << summary.describe() << std::endl;
  return summary.count(CodewordStatus::Uncorrectable) == 0 ? 0 : 1;
}

}  // namespace flashbch
