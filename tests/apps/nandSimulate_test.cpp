// simulate with the NAND page channel, the beta-binomial channel and the
// Chase decoder: the beta-binomial law, stratified against Monte Carlo,
// the limits where they must reduce to the binomial channel and to hard
// decoding, and refused requests.
#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "betaBinomialChannel.h"
#include "errorStatistics.h"
#include "flashbchRunner.h"
#include "randomStream.h"
#include "support/testutil.h"

namespace {

using flashbchtest::number;
using flashbchtest::runFlashbch;

// The rows of a simulate run of `points` points.
std::vector<flashbchtest::Row> rowsOf(const std::string& args, size_t points = 1) {
  return flashbchtest::csvRows(args + " --quiet --threads 2", points);
}

// Mean n p, variance n p (1 - p) (1 + (n - 1) rho) and total probability 1
// (20000 codewords of 1000 bits; mean within 5 standard errors, variance
// within 10%, about 9 standard errors of a sample variance here).
TEST(BetaBinomialChannel, CountsHaveTheOverdispersedLaw) {
  const int n = 1000, codewords = 20000;
  const double p = 0.01, rho = 0.01;
  const flashbch::BetaBinomialChannel channel(p, rho);
  double total = 0.0;
  for (int w = 0; w <= n; ++w) total += std::exp(channel.logWeight(n, w));
  EXPECT_NEAR(total, 1.0, 1e-9);
  flashbch::RandomStream rng(42);
  std::vector<int> positions;
  double sum = 0.0, squares = 0.0;
  for (int i = 0; i < codewords; ++i) {
    channel.sampleErrors(n, rng, positions);
    sum += positions.size();
    squares += static_cast<double>(positions.size()) * positions.size();
  }
  const double mean = sum / codewords, variance = squares / codewords - mean * mean;
  const double expected = n * p * (1 - p) * (1 + (n - 1) * rho);
  EXPECT_NEAR(mean, n * p, 5 * std::sqrt(expected / codewords));
  EXPECT_NEAR(variance, expected, 0.1 * expected);
  // rho -> 0 is the binomial law: the log weights differ by about n^2 p rho.
  for (double small : {1e-9, 1e-12}) {
    const flashbch::BetaBinomialChannel almostBinomial(p, small);
    for (int w : {0, 5, 10, 20, 40})
      EXPECT_NEAR(almostBinomial.logWeight(n, w), flashbch::logBinomialProbability(n, w, p), 1e-4) << w;
  }
}

// Where both estimators see at least 100 failures their 95% intervals must
// overlap (two independent 95% intervals miss each other with probability
// well below 1%; the seeds are fixed).
TEST(NandSimulate, StratifiedAndMonteCarloAgree) {
  qfbtest::ScratchDir dir;
  const std::string code = "simulate --layout 1x1024 --t 4 --max-fe 100 --max-frames 4000 ";
  const std::string channels[] = {
      "--channel nand --cell tlc --page upper --pe 3000 --retention 1y --refs optimal",
      "--channel nand --cell tlc --page upper --pe 3000 --retention 1y --soft-reads 2 --soft-step 0.04 "
      "--decoder chase --chase-positions 4",
      "--channel bbm --rber 2e-3 --dispersion 0.02"};
  for (const std::string& channel : channels) {
    SCOPED_TRACE(channel);
    const auto mc = rowsOf(code + channel);
    const auto st = rowsOf(code + channel + " --estimator stratified");
    EXPECT_GE(number(mc[0].at("uncorrectable")) + number(mc[0].at("miscorrected")), 100);
    EXPECT_LE(number(mc[0].at("fer_low")), number(st[0].at("fer_high")));
    EXPECT_LE(number(st[0].at("fer_low")), number(mc[0].at("fer_high")));
    // The measured raw error rate is the channel's own within 5 standard deviations.
    const double p = number(st[0].at("raw_ber")), bits = number(mc[0].at("codewords")) * (1024 + 60);
    if (channel.find("bbm") == std::string::npos) {
      EXPECT_NEAR(number(mc[0].at("raw_ber")), p, 5 * std::sqrt(p / bits));
    }
  }
}

// Without dispersion the beta-binomial channel is the BSC draw for draw,
// and without soft reads the Chase decoder is the hard decoder.
TEST(NandSimulate, LimitsReduceToTheSimplerChannelAndDecoder) {
  qfbtest::ScratchDir dir;
  const std::string code = "simulate --layout 2x512 --t 3 --max-fe 60 --max-frames 300 ";
  auto columns = [](const std::vector<flashbchtest::Row>& rows) {
    std::string text;
    for (const auto& row : rows)
      for (const char* c : {"fer", "fer_low", "fer_high", "uncorrectable", "miscorrected", "codewords", "uber"})
        text += row.at(c) + ";";
    return text;
  };
  for (const char* estimator : {"mc", "stratified"}) {
    SCOPED_TRACE(estimator);
    const std::string e = std::string(" --estimator ") + estimator;
    EXPECT_EQ(columns(rowsOf(code + "--channel bsc --rber 4e-3,8e-3" + e, 2)),
              columns(rowsOf(code + "--channel bbm --dispersion 0 --rber 4e-3,8e-3" + e, 2)));
  }
  // (Monte Carlo only: the stratified estimator samples every error count
  // for a decoder without a bounded-distance radius, so its intervals differ.)
  const std::string nand = "--channel nand --cell mlc --page upper --pe 4000,6000 --retention 1y";
  EXPECT_EQ(columns(rowsOf(code + nand, 2)), columns(rowsOf(code + nand + " --decoder chase --chase-positions 6", 2)));
}

// The JSON records every setting of the channel and the decoder, as
// numbers where they are numbers; the swept one is in the points.
TEST(NandSimulate, TheJsonRecordsTheChannelAndDecoderSettings) {
  qfbtest::ScratchDir dir;
  using nlohmann::json;
  const struct {
    std::string args;
    json expected;
  } cases[] = {
      {"--channel nand --cell mlc --page lower --pe 1000,3000 --retention 1y --refs optimal --soft-reads 2 "
       "--soft-step 0.04 --decoder chase --chase-positions 4",
       {{"cell", "mlc"}, {"model", "built-in"}, {"page", "lower"}, {"retention_hours", 8760}, {"refs", "optimal"},
        {"soft_reads", 2}, {"soft_step", 0.04}, {"decoder", "chase"}, {"chase_positions", 4}, {"pe", nullptr}}},
      {"--channel nand --cell mlc --page upper --pe 2000 --retention 1d,2d --refs 0.1,1.2,2.3",
       {{"cell", "mlc"}, {"page", "upper"}, {"pe", 2000}, {"refs", {0.1, 1.2, 2.3}}, {"soft_reads", 0},
        {"decoder", "hard"}, {"chase_positions", nullptr}, {"retention_hours", nullptr}}},
      {"--channel bbm --rber 2e-3 --dispersion 0.02", {{"dispersion", 0.02}, {"decoder", "hard"}, {"cell", nullptr}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.args);
    const auto run = runFlashbch("simulate --layout 1x512 --t 4 --max-frames 16 --quiet --json s.json " + c.args);
    ASSERT_EQ(run.status, 0) << run.err;
    const json document = json::parse(qfbtest::readFile("s.json"));
    for (const auto& [key, value] : c.expected.items()) {
      if (value.is_null()) {
        EXPECT_FALSE(document.contains(key)) << key;  // not a setting of this run, or swept
      } else {
        EXPECT_EQ(document.value(key, json()), value) << key;
      }
    }
    if (document.contains("cell")) {
      EXPECT_EQ(document.at("model_crc32").get<std::string>().size(), 8u);
    }
  }
}

TEST(NandSimulate, BadRequestsAreRefused) {
  qfbtest::ScratchDir dir;
  struct Case {
    std::string args, message;
  } cases[] = {
      {"--channel bbm --rber 1e-3 --dispersion 1", "--dispersion: '1' is not a number in 0 <= rho < 1"},
      {"--channel bbm --rber 1e-3", "--dispersion: --channel bbm needs the correlation rho"},
      {"--channel nand --decoder chase --chase-positions 11", "--chase-positions: eta must be 0 .. 10, got 11"},
      {"--channel nand --refs 1,2,3", "a tlc cell needs 7 read references, got 3"},
      {"--channel nand --refs 0,1,2,3,2,5,6", "read references must be strictly increasing"},
      {"--channel nand --refs -9,1,2,3,4,5,6", "read reference -9 lies outside the model's voltage range"},
      {"--channel nand --cell mlc --page middle", "unknown page 'middle' for a mlc cell: use lower or upper"},
      {"--channel nand --cell qlc", "unknown cell type 'qlc': use slc, mlc or tlc"},
      {"--channel nand --pe -1", "--pe: "},
      {"--channel nand --retention -2", "--retention: "},
      {"--channel nand --pe 1,2 --retention 1,2", "--retention: sweep either --pe or --retention"},
      {"--channel nand --soft-reads 9", "soft reads must be 0 .. 7, got 9"},
      {"--channel nand --rber 1e-3", "--snr, --rber: the NAND channel is swept with --pe or --retention"},
      {"--channel bsc --rber 1e-3 --pe 5", "--cell, --model, --page, --pe, --retention, --refs, --soft-*: apply to"},
      {"--channel bsc --rber 1e-3 --decoder soft", "--decoder: 'soft' is not a decoder; accepted: hard, chase"},
  };
  for (const Case& c : cases) flashbchtest::expectRefused("simulate " + c.args, "flashbch simulate: " + c.message);
}

}  // namespace
