// Sweeps and layouts as typed on the command line: what they expand to and
// how a bad one is reported (the message names the flag).
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <string>
#include <vector>

#include "blockLayout.h"
#include "sweep.h"
#include "flashbchRunner.h"

namespace {

using namespace flashbch;
using flashbchtest::messageOf;

TEST(Sweep, Expansions) {
  struct Case {
    const char* text;
    SweepKind kind;
    std::vector<double> points;
  } cases[] = {
      {"13:0.5:15", SweepKind::Real, {13, 13.5, 14, 14.5, 15}},
      {"15:-0.5:14", SweepKind::Real, {15, 14.5, 14}},
      {"0.1:0.1:0.3", SweepKind::Probability, {0.1, 0.2, 0.3}},
      {"1e-3:2:8e-3", SweepKind::Probability, {1e-3, 2e-3, 4e-3, 8e-3}},
      {"1e-5:10:1e-2", SweepKind::Probability, {1e-5, 1e-4, 1e-3, 1e-2}},
      {"1e-3:*2:5e-3", SweepKind::Probability, {1e-3, 2e-3, 4e-3}},
      {"4:x0.5:1", SweepKind::Real, {4, 2, 1}},
      {"8:8:72", SweepKind::Integer, {8, 16, 24, 32, 40, 48, 56, 64, 72}},
      {"3,1,2", SweepKind::Integer, {3, 1, 2}},
      {"14.5", SweepKind::Real, {14.5}},
  };
  for (const Case& c : cases) {
    const std::vector<double> got = parseSweep("--x", c.text, c.kind, 0, 100);
    ASSERT_EQ(got.size(), c.points.size()) << c.text;
    for (size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], c.points[i], 1e-12 * c.points[i]) << c.text;
  }
}

TEST(Sweep, RejectionsNameTheFlag) {
  struct Case {
    const char* text;
    SweepKind kind;
    const char* message;
  } cases[] = {
      {"1:2", SweepKind::Real, "--x: cannot read '1:2'"},
      {"a:1:2", SweepKind::Real, "--x: cannot read 'a:1:2'"},
      {"1,,2", SweepKind::Real, "--x: cannot read '1,,2'"},
      {"1:0:2", SweepKind::Real, "--x: STEP must not be 0"},
      {"1:1:0", SweepKind::Real, "--x: STEP leads away from STOP"},
      {"1:*1:5", SweepKind::Real, "--x: a ratio sweep needs"},
      {"1:*2:0.5", SweepKind::Real, "--x: FACTOR leads away from STOP"},
      {"1.5", SweepKind::Integer, "--x: cannot read '1.5'"},
      {"1:*2:8", SweepKind::Integer, "--x: cannot read"},
      {"50:10:150", SweepKind::Real, "--x: 110 is outside the accepted range 0 .. 100"},
      {"0:0.01:100", SweepKind::Real, "--x: '0:0.01:100' makes more than 1000 points"},
      {"1e-300:*10:1e300", SweepKind::Real, "--x: '1e-300:*10:1e300' makes more than 1000 points"},
  };
  for (const Case& c : cases) {
    const std::string message = messageOf([&] { parseSweep("--x", c.text, c.kind, 0, 100); });
    EXPECT_EQ(message.rfind(c.message, 0), 0u) << c.text << ": " << message;
  }
}

TEST(Layout, Expansions) {
  EXPECT_EQ(parseLayout("4x8192"), std::vector<int>(4, 8192));
  EXPECT_EQ(parseLayout("8192,4096"), (std::vector<int>{8192, 4096}));
  EXPECT_EQ(parseLayout("2x100,7,1x9"), (std::vector<int>{100, 100, 7, 9}));
}

TEST(Layout, RejectionsNameTheFlag) {
  for (const char* text : {"", "4x", "x8", "0x5", "4y8", "-3", "4x0", "8192,"}) {
    const std::string message = messageOf([&] { parseLayout(text); });
    EXPECT_EQ(message.rfind("--layout: cannot read", 0), 0u) << "'" << text << "': " << message;
  }
  EXPECT_EQ(messageOf([] { parseLayout("8,2147483647x8"); }),
            "--layout: more than 4096 codewords in '8,2147483647x8'");
}

TEST(Layout, RangesDependOnT) {
  struct Case {
    std::vector<int> bits;
    int t;
    bool wholeBytes;
    const char* message;
  } cases[] = {
      {{32767 - 600}, 40, false, "(accepted)"},
      {{32767 - 599}, 40, false, "--layout: codeword 0 has 32168 data bits; with t = 40 the accepted range is 1 .. 32167"},
      {{1024}, 0, false, "--t: 0 is outside the accepted range 1 .. 128"},
      {{1024}, 129, false, "--t: 129 is outside the accepted range 1 .. 128"},
      {{1024, 1001}, 8, true, "--layout: codeword 1 has 1001 data bits; page images need whole bytes"},
      {{1024, 1001}, 8, false, "(accepted)"},
  };
  for (const Case& c : cases) {
    const std::string message = messageOf([&] { makeLayout(c.bits, c.t, c.wholeBytes); });
    EXPECT_EQ(message.rfind(c.message, 0), 0u) << message;
  }
}

TEST(Layout, Geometry) {
  // t = 5: 75 parity bits stored in 80; codewords of 100 and 200 data bits.
  const BlockLayout layout = makeLayout({100, 200}, 5, false);
  EXPECT_EQ(layout.parityBits(), 75);
  EXPECT_EQ(layout.storedParityBits(), 80);
  EXPECT_EQ(layout.storedOffset(1), 180);
  EXPECT_EQ(layout.dataOffset(1), 100);
  EXPECT_EQ(layout.blockStoredBits(), 460);
  EXPECT_EQ(layout.codeLength(1), 275);
  EXPECT_EQ(layout.describe(), "100,200");
  EXPECT_EQ(makeLayout({64, 64}, 1, false).describe(), "2x64");
}

TEST(SimulateOptions, RefusedBeforeAnyOutputIsTouched) {
  qfbtest::ScratchDir dir;
  qfbtest::writeFile("old.csv", "old");
  const std::string words = "flashbch simulate: ";
  std::string lengths = "1000";  // 2000 codecs per thread: about 2 TiB on 1024 threads
  for (int k = 1001; k < 3000; ++k) lengths += "," + std::to_string(k);
  const std::string tooLarge = "--t 8 --threads 1024 --layout " + lengths;
  const std::pair<const char*, const char*> cases[] = {
      {tooLarge.c_str(), "--threads: 1024 threads on this layout need about 2000.2 GiB"},
      {"--channel bsc --rber -0.1", "--rber: -0.1 is outside the accepted range 0 .. 0.5"},
      {"--channel bsc --rber nan", "--rber: cannot read 'nan'"},
      {"--channel bsc --rber 0.5", "--rber: 0.5 is not below 0.5"},
      {"--snr inf", "--snr: cannot read 'inf'"},
      {"--estimator stratified --channel awgn-bits", "--estimator: stratified estimation weighs error counts"},
      {"--estimator exact", "--estimator: 'exact' is not an estimator; accepted: mc, stratified"},
      {"--time-limit 0", "--time-limit: 0 must be above 0"},
      {"--target-rel-ci 0", "--target-rel-ci: 0 must be above 0"},
      {"--seed -1", "--seed: '-1' is not a whole number in 0 .. 18446744073709551615"},
      {"--seed 18446744073709551616", "--seed: 18446744073709551616 is outside the accepted range"},
      {"--max-fe 9223372036854775808", "--max-fe: 9223372036854775808 is outside the accepted range"},
      {"--max-frames 0", "--max-frames: 0 is below the accepted minimum 1"},
      {"--max-frames 99999999999999999999999", "--max-frames: '99999999999999999999999' is not a whole number"},
  };
  for (const auto& [args, message] : cases) {
    const auto run = flashbchtest::runFlashbch(std::string("simulate --csv old.csv --json new.json ") + args);
    EXPECT_EQ(run.status, 2) << args;
    EXPECT_EQ(run.err.rfind(words + message, 0), 0u) << args << ": " << run.err;
  }
  EXPECT_EQ(qfbtest::readFile("old.csv"), "old");
  EXPECT_FALSE(std::ifstream("new.json").good());
}

TEST(SimulateOptions, TerminationWritesTheFinishedPoints) {
  // The first point fails at once, the second never: SIGTERM after 3 s.
  qfbtest::ScratchDir dir;
  qfbtest::writeFile("r.csv", "old");
  const auto run = flashbchtest::runFlashbch(
      "simulate --layout 256 --t 2 --snr 0,40 --max-frames 9000000000000000000 --csv r.csv", "timeout --preserve-status -s TERM 3");
  EXPECT_EQ(run.status, 128 + SIGTERM) << run.err;
  const auto rows = flashbchtest::readCsv("r.csv");
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].at("snr_db"), "0");
}

}  // namespace
