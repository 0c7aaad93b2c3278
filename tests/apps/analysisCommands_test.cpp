// flashbch simulate, info and uber end to end, checked against independent
// computations: long-double binomial sums, Q(x) from erfc, and the field's
// own arithmetic for the generator polynomial.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "flashbchRunner.h"
#include "gf/exp2Int15.h"
#include "gf/gf2m.h"

namespace {

using flashbchtest::csvRows;
using flashbchtest::directUpperTail;
using flashbchtest::number;
using flashbchtest::runFlashbch;

std::string withoutSeconds(const std::vector<flashbchtest::Row>& rows) {
  std::string out;
  for (const auto& row : rows)
    for (const auto& [column, value] : row)
      if (column != "seconds") out += column + "=" + value + ";";
  return out;
}

TEST(Simulate, SameSeedSameTableWhateverTheThreads) {
  qfbtest::ScratchDir dir;
  const std::string args = "simulate --layout 2x512 --t 4 --snr 13:2:17 --max-fe 5 --max-frames 40 ";
  const auto rows = csvRows(args + "--seed 9 --threads 1", 3);
  EXPECT_EQ(withoutSeconds(csvRows(args + "--seed 9 --threads 2", 3)), withoutSeconds(rows));
  // The first point stops on failures, the last one on blocks.
  EXPECT_GE(number(rows[0].at("uncorrectable")) + number(rows[0].at("miscorrected")), 5);
  EXPECT_LT(number(rows[0].at("blocks")), 40);
  EXPECT_EQ(rows[2].at("blocks"), "40");
  // Another seed, another table (the same point's first failures come elsewhere).
  EXPECT_NE(withoutSeconds(csvRows(args + "--seed 10 --threads 2", 3)), withoutSeconds(rows));
}

TEST(Simulate, MeasuredRawBerMatchesTheChannel) {
  qfbtest::ScratchDir dir;
  // 40 blocks of 4096 + 32 stored bits: a few standard deviations are ~1e-3 relative.
  const long double bits = 40.0L * (4096 + 32);
  struct Case {
    std::string channel;
    double expected;
  } cases[] = {
      {"--channel bsc --rber 0.02", 0.02},
      {"--channel awgn --snr 6", 0.5 * std::erfc(1.0 / (2.0 * std::pow(10.0, -6.0 / 20.0) * std::sqrt(2.0)))}};
  for (const Case& c : cases) {
    const auto rows = csvRows("simulate --layout 4096 --t 2 --max-frames 40 --max-fe 1000000 " + c.channel, 1);
    const double sd = std::sqrt(c.expected * (1 - c.expected) / static_cast<double>(bits));
    EXPECT_NEAR(number(rows[0].at("raw_ber")), c.expected, 5 * sd) << c.channel;
    EXPECT_NEAR(number(rows[0].at("analytic_fer")), static_cast<double>(directUpperTail(4096 + 30, 2, c.expected)), 1e-9);
  }
}

TEST(Simulate, NoFailuresFarBelowTheThreshold) {
  qfbtest::ScratchDir dir;
  // n = 1144, t = 8 at p = 1e-4: about 0.11 errors per codeword, P(X > 8) ~ 1e-14.
  const auto rows =
      csvRows("simulate --layout 4x1024 --t 8 --channel bsc --rber 1e-4 --max-frames 100 --json r.json", 1);
  EXPECT_GT(number(rows[0].at("raw_ber")), 0);
  for (const char* column : {"uncorrectable", "miscorrected", "uber"}) EXPECT_EQ(rows[0].at(column), "0") << column;
  EXPECT_EQ(rows[0].at("codewords"), "400");
  const double z2 = 1.959963984540054 * 1.959963984540054;  // Wilson bound at 0 events: z^2 / (N + z^2)
  EXPECT_NEAR(number(rows[0].at("fer_high")), z2 / (400 + z2), 1e-12);
  EXPECT_NE(qfbtest::readFile("r.json").find("\"channel\": \"bsc\""), std::string::npos);
}

TEST(Info, FactsPerCodeword) {
  qfbtest::ScratchDir dir;
  const auto run = runFlashbch("info --layout 1024,2048 --t 5 --rber 2e-3");
  ASSERT_EQ(run.status, 0) << run.err;
  // Rows: codeword k n parity_used parity_stored rate stored_rate distance fer uber
  std::istringstream table(run.out.substr(run.out.find("uber\n") + 5));
  for (int k : {1024, 2048}) {
    double v[10];
    for (double& x : v) table >> x;
    const double fer = static_cast<double>(directUpperTail(k + 75, 5, 2e-3L));
    const double expected[10] = {k == 1024 ? 0.0 : 1.0, double(k),      k + 75.0, 75,  80,
                                 k / (k + 75.0),        k / (k + 80.0), 11,       fer, fer / k};
    for (int i = 0; i < 10; ++i)
      EXPECT_NEAR(v[i], expected[i], 1e-3 * std::fabs(expected[i])) << k << " column " << i;
  }
  // The generator polynomial has degree 15t and alpha^1 .. alpha^2t among its roots.
  const std::string marker = "generator polynomial (degree 75, highest degree first): 0x";
  const auto at = run.out.find(marker);
  ASSERT_NE(at, std::string::npos);
  const std::string hex = run.out.substr(at + marker.size(), 19);
  std::vector<int> coefficients;  // highest degree first
  for (char c : hex)
    for (int j = 3; j >= 0; --j) coefficients.push_back((std::stoi(std::string(1, c), nullptr, 16) >> j) & 1);
  ASSERT_EQ(coefficients.size(), 76u);
  ASSERT_EQ(coefficients.front(), 1);
  int primitive[16] = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1};
  GF2m field(15, primitive, 15, exp2Int15.data(), kExp2Int15Size);
  for (int root = 1; root <= 10; ++root) {
    int value = 0;  // Horner in polynomial basis: value = value * alpha^root + c
    for (int c : coefficients) value = field.exp2Int(field.multiply(field.int2Exp(value), root)) ^ c;
    EXPECT_EQ(value, 0) << "alpha^" << root;
  }
}

TEST(Uber, TablesAgainstDirectSums) {
  qfbtest::ScratchDir dir;
  const auto rows = csvRows("uber --layout 4096,1024 --t 4:4:8 --rber 1e-3,1e-2", 4);
  size_t r = 0;
  for (int t : {4, 8})
    for (long double p : {1e-3L, 1e-2L}) {
      const long double a = directUpperTail(4096 + 15 * t, t, p), b = directUpperTail(1024 + 15 * t, t, p);
      EXPECT_EQ(number(rows[r].at("t")), t);
      EXPECT_NEAR(number(rows[r].at("fer")) / static_cast<double>((a + b) / 2), 1.0, 1e-6) << t << " " << (double)p;
      EXPECT_NEAR(number(rows[r].at("uber")) / static_cast<double>((a + b) / 5120), 1.0, 1e-6)
          << t << " " << (double)p;
      ++r;
    }
}

TEST(CommandLine, UsageErrorsNameTheFlag) {
  qfbtest::ScratchDir dir;
  struct Case {
    std::string args, message;
  } cases[] = {
      {"simulate --channel fading", "flashbch simulate: --channel: 'fading' is not a channel; accepted: awgn, bsc"},
      {"simulate --channel bsc --snr 10", "flashbch simulate: --snr: applies to --channel awgn"},
      {"simulate --max-fe 0", "flashbch simulate: --max-fe: 0 is below the accepted minimum 1"},
      {"simulate --bogus", "flashbch: The following argument was not expected: --bogus"},
      {"simulate --plot out.pdf", "flashbch simulate: --plot: out.pdf must end in .png or .svg"},
      {"info --rber 0.7", "flashbch info: --rber: 0.7 is outside the accepted range 0 .. 0.5"},
      {"uber --t 1:*2:8", "flashbch uber: --t: cannot read '1:*2:8'"},
      {"", "flashbch: A subcommand is required"},
  };
  for (const Case& c : cases) flashbchtest::expectRefused(c.args, c.message);
  const auto badNumber = runFlashbch("simulate --threads 0x");
  EXPECT_EQ(badNumber.status, 2);
  EXPECT_NE(badNumber.err.find("--threads"), std::string::npos) << badNumber.err;
  flashbchtest::expectRefused("uber --plot u.png", "flashbch uber: --plot: gnuplot was not found on PATH",
                              "PATH=/nonexistent");
  for (const char* command : {"simulate", "encode", "decode", "info", "uber"}) {
    const auto help = runFlashbch(std::string(command) + " --help");
    EXPECT_EQ(help.status, 0) << command;
    EXPECT_NE(help.out.find("--layout"), std::string::npos) << command;
  }
}

bool gnuplotInstalled() { return std::system("command -v gnuplot >/dev/null 2>&1") == 0; }

TEST(Plot, DrawsPngAndSvgWithGnuplot) {
  if (!gnuplotInstalled()) GTEST_SKIP() << "gnuplot is not installed";
  qfbtest::ScratchDir dir;
  const auto sim = runFlashbch("simulate --layout 2x256 --t 3 --snr 12:2:16 --max-frames 5 --plot s.svg");
  ASSERT_EQ(sim.status, 0) << sim.err;
  EXPECT_NE(qfbtest::readFile("s.svg").find("<svg"), std::string::npos);
  const auto uber = runFlashbch("uber --t 4,8 --plot u.png");
  ASSERT_EQ(uber.status, 0) << uber.err;
  EXPECT_EQ(qfbtest::readFile("u.png").substr(0, 4), "\x89PNG");
}

}  // namespace
