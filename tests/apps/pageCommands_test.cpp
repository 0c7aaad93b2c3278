// flashbch encode / decode end to end: multi-block files with known bit
// flips, an uncorrectable codeword, an erased page, and refused requests.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <string>

#include "flashbchRunner.h"

namespace {

using flashbchtest::runFlashbch;

// Layout 2x1024, t = 5: per codeword 128 data bytes, then 75 parity bits
// and 5 padding bits (10 bytes); a block image is 276 bytes.
constexpr int kT = 5;
constexpr int kDataBytes = 128;
constexpr int kCodewordBytes = 138;
constexpr int kCodeBits = 1024 + 75;
const std::string kLayout = "--layout 2x1024 --t 5 ";

std::string randomData(int bytes, unsigned seed) {
  std::mt19937 rng(seed);
  std::string data(static_cast<size_t>(bytes), '\0');
  for (char& c : data) c = static_cast<char>(rng() & 0xFF);
  return data;
}

// Flips `count` distinct bits among the data and parity bits of codeword
// `index` (counting codewords through the whole file).
void flipBits(std::string& image, int index, int count, std::mt19937& rng) {
  std::set<int> positions;
  while (static_cast<int>(positions.size()) < count) positions.insert(static_cast<int>(rng() % kCodeBits));
  for (int p : positions)
    image[static_cast<size_t>(index * kCodewordBytes + p / 8)] ^= static_cast<char>(0x80 >> (p % 8));
}

// Encodes `blocks` blocks of random data with the command line; returns the image.
std::string encodeRandom(int blocks, unsigned seed, std::string& data) {
  data = randomData(blocks * 2 * kDataBytes, seed);
  qfbtest::writeFile("data.bin", data);
  EXPECT_EQ(runFlashbch("encode " + kLayout + "data.bin -o image.bin").status, 0);
  return qfbtest::readFile("image.bin");
}

TEST(PageCommands, FlippedBitsAreCorrectedAndCounted) {
  qfbtest::ScratchDir dir;
  const int blocks = 3;
  std::string data, image = encodeRandom(blocks, 1, data);
  ASSERT_EQ(image.size(), static_cast<size_t>(blocks * 2 * kCodewordBytes));
  for (int cw = 0; cw < 2 * blocks; ++cw)  // the stored padding is zero
    EXPECT_EQ(image[static_cast<size_t>(cw * kCodewordBytes + kCodewordBytes - 1)] & 0x1F, 0);

  std::mt19937 rng(2);
  const int flips[2 * blocks] = {0, 1, 5, 3, 4, 2};
  for (int cw = 0; cw < 2 * blocks; ++cw) flipBits(image, cw, flips[cw], rng);
  qfbtest::writeFile("read.bin", image);
  const auto run = runFlashbch("decode " + kLayout + "read.bin -o fixed.bin --report report.json");
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(qfbtest::readFile("fixed.bin"), data);
  EXPECT_EQ(qfbtest::readFile("read.bin"), image);

  const auto report = nlohmann::json::parse(qfbtest::readFile("report.json"));
  ASSERT_EQ(report["blocks"].size(), 3u);
  for (int cw = 0; cw < 2 * blocks; ++cw) {
    const auto& entry = report["blocks"][cw / 2]["codewords"][cw % 2];
    EXPECT_EQ(entry["corrected_bits"], flips[cw]) << cw;
    EXPECT_EQ(entry["status"], flips[cw] ? "corrected" : "clean") << cw;
  }
  // Scrubbing at ceil(3t/4) = 4 corrected bits: blocks 1 (5) and 2 (4).
  EXPECT_EQ(report["blocks"][0]["scrub_recommended"], false);
  EXPECT_EQ(report["blocks"][1]["scrub_recommended"], true);
  EXPECT_EQ(report["blocks"][2]["max_corrected_bits"], 4);
  EXPECT_EQ(report["summary"]["corrected_bits"], 15);
  EXPECT_NE(run.out.find("1 clean, 5 corrected (15 bits"), std::string::npos) << run.out;
}

TEST(PageCommands, UncorrectableAndErasedCodewords) {
  qfbtest::ScratchDir dir;
  std::string data, image = encodeRandom(2, 3, data);
  ASSERT_EQ(image.size(), static_cast<size_t>(2 * 2 * kCodewordBytes));
  std::mt19937 rng(4);
  flipBits(image, 1, 3 * kT, rng);
  // Block 1, codeword 0: an erased page with t zero bits left in it.
  std::fill(image.begin() + 2 * kCodewordBytes, image.begin() + 3 * kCodewordBytes, '\xFF');
  for (int i = 0; i < kT; ++i) image[static_cast<size_t>(2 * kCodewordBytes + 11 * i)] = '\x7F';
  qfbtest::writeFile("read.bin", image);

  const auto run = runFlashbch("decode " + kLayout + "read.bin -o fixed.bin --report report.json");
  EXPECT_EQ(run.status, 1);
  const auto report = nlohmann::json::parse(qfbtest::readFile("report.json"));
  EXPECT_EQ(report["blocks"][0]["codewords"][1]["status"], "uncorrectable");
  EXPECT_EQ(report["blocks"][0]["uncorrectable"], true);
  EXPECT_EQ(report["blocks"][1]["codewords"][0]["status"], "erased");
  EXPECT_EQ(report["blocks"][1]["codewords"][0]["zero_bits"], kT);
  EXPECT_EQ(report["summary"]["uncorrectable"], 1);
  const std::string fixed = qfbtest::readFile("fixed.bin");
  EXPECT_EQ(fixed.substr(2 * kDataBytes, kDataBytes), std::string(kDataBytes, '\xFF'));
  EXPECT_EQ(fixed.substr(3 * kDataBytes), data.substr(3 * kDataBytes));
  // One zero more than the threshold and the page is no longer erased.
  const auto strict = runFlashbch("decode " + kLayout + "read.bin -o fixed.bin --erased-threshold 4");
  EXPECT_EQ(strict.status, 1);
  EXPECT_NE(strict.out.find("0 erased, 2 uncorrectable"), std::string::npos) << strict.out;
}

TEST(PageCommands, RefusedRequestsExitWithStatus2) {
  qfbtest::ScratchDir dir;
  qfbtest::writeFile("data.bin", randomData(2 * kDataBytes * 2 + 100, 5));
  qfbtest::writeFile("good.bin", randomData(2 * kDataBytes, 5));
  struct Case {
    std::string args, message;
  } cases[] = {
      {"encode " + kLayout + "data.bin -o image.bin",
       "flashbch encode: data.bin: trailing partial block at byte offset 512 (100 bytes; a block takes 256 bytes)"},
      {"encode " + kLayout + "missing.bin -o image.bin", "flashbch encode: missing.bin: cannot open the input file"},
      {"encode --layout 1001 --t 5 good.bin -o image.bin",
       "flashbch encode: --layout: codeword 0 has 1001 data bits; page images need whole bytes (a multiple of 8)"},
      {"decode " + kLayout + "good.bin -o ./good.bin",
       "flashbch decode: --output: ./good.bin is the input file; the input is never written over"},
      {"decode " + kLayout + "good.bin -o out.bin --report good.bin",
       "flashbch decode: --report: good.bin is the input file; the input is never written over"},
      {"decode " + kLayout + "good.bin -o out.bin --byte-swap 40",
       "flashbch decode: --byte-swap: 40 is not accepted; WORDBITS must be a multiple of 8, at least 16, dividing "
       "the 2208 bits of a block image"},
      {"decode " + kLayout + "good.bin -o out.bin --scrub-threshold 6",
       "flashbch decode: --scrub-threshold: 6 is outside the accepted range 0 .. 5 (t)"},
      {"encode " + kLayout + "good.bin", "flashbch: --output is required"},
  };
  for (const Case& c : cases) flashbchtest::expectRefused(c.args, c.message);
  EXPECT_EQ(qfbtest::readFile("good.bin"), randomData(2 * kDataBytes, 5));
}

}  // namespace
