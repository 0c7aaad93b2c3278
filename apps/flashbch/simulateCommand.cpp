// flashbch simulate: runs the sweep point by point, prints each row as it
// is done, shows a progress line on a terminal, and writes CSV, JSON and
// the plot at the end.
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <thread>

#include "codeFacts.h"
#include "commands.h"
#include "errorStatistics.h"
#include "gnuplotRunner.h"
#include "outputFile.h"
#include "resultTable.h"
#include "simulation.h"
#include "sweep.h"
#include "usageError.h"

namespace flashbch {

// Measured with the default layout (4 x 8192 data bits, t = 40) on two
// cores: the sweep spans analytic failure rates from about 0.9 to 1e-3,
// and the run stays under a minute.
const char* const kDefaultSnrSweep = "13.9:0.2:14.9";
const char* const kDefaultRberSweep = "2.8e-3:*1.2:7e-3";
const std::int64_t kDefaultMaxBlocks = 20000;

namespace {

constexpr size_t kColumnWidth = 9;

SimulationSettings settingsFrom(const SimulateOptions& o) {
  SimulationSettings s;
  s.layout = makeLayout(parseLayout(o.layout), o.t, false);
  if (o.channel == "awgn") {
    s.channel = ChannelKind::Awgn;
    if (!o.rber.empty()) throw UsageError("--rber: applies to --channel bsc; the AWGN channel is swept with --snr");
    s.parameters = parseSweep("--snr", o.snr.empty() ? kDefaultSnrSweep : o.snr, SweepKind::Real, -20.0, 60.0);
  } else if (o.channel == "bsc") {
    s.channel = ChannelKind::Bsc;
    if (!o.snr.empty()) throw UsageError("--snr: applies to --channel awgn; the BSC is swept with --rber");
    s.parameters =
        parseSweep("--rber", o.rber.empty() ? kDefaultRberSweep : o.rber, SweepKind::Probability, 0.0, 0.5);
  } else {
    throw UsageError("--channel: '" + o.channel + "' is not a channel; accepted: awgn, bsc");
  }
  if (o.maxFailures < 1)
    throw UsageError("--max-fe: " + std::to_string(o.maxFailures) + " is below the accepted minimum 1");
  s.maxFailures = o.maxFailures;
  s.maxBlocks = o.maxBlocks == 0 ? kDefaultMaxBlocks : o.maxBlocks;
  if (s.maxBlocks < 1)
    throw UsageError("--max-frames: " + std::to_string(o.maxBlocks) + " is below the accepted minimum 1");
  const int cores = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  s.threads = o.threads == 0 ? cores : o.threads;
  if (s.threads < 1 || s.threads > 1024)
    throw UsageError("--threads: " + std::to_string(o.threads) + " is outside the accepted range 1 .. 1024");
  s.seed = o.seed;
  return s;
}

std::string formatSeconds(double seconds) {
  char buffer[32];
  if (seconds < 100)
    std::snprintf(buffer, sizeof buffer, "%.0fs", seconds);
  else
    std::snprintf(buffer, sizeof buffer, "%.0fm%02.0fs", std::floor(seconds / 60), std::fmod(seconds, 60.0));
  return buffer;
}

void showProgress(const Progress& p, const SimulationSettings& s) {
  const double rate = p.codewords ? static_cast<double>(p.failures) / p.codewords : 0.0;
  const double blocksPerSecond = p.seconds > 0 ? p.blocks / p.seconds : 0.0;
  double eta = blocksPerSecond > 0 ? (s.maxBlocks - p.blocks) / blocksPerSecond : NAN;
  if (p.failures > 0 && p.seconds > 0) eta = std::min(eta, (s.maxFailures - p.failures) / (p.failures / p.seconds));
  std::fprintf(stderr, "\r\033[Kpoint %d/%d %s=%s  blocks %lld/%lld  failures %lld/%lld  rate %.3g  ETA %s",
               p.point + 1, p.points, channelParameterName(s.channel), formatNumber(p.parameter).c_str(),
               static_cast<long long>(p.blocks), static_cast<long long>(s.maxBlocks),
               static_cast<long long>(p.failures), static_cast<long long>(s.maxFailures), rate,
               std::isfinite(eta) ? formatSeconds(std::max(0.0, eta)).c_str() : "?");
  std::fflush(stderr);
}

std::vector<Cell> rowOf(const PointResult& r, const SimulationSettings& s) {
  const PointTally& t = r.tally;
  const auto ratio = [](std::int64_t a, std::int64_t b) { return b ? static_cast<double>(a) / b : NAN; };
  const Interval ci = wilsonInterval95(t.uncorrectable, t.codewords);
  const Channel channel{s.channel, r.parameter};
  return {Cell::real(r.parameter),
          Cell::real(ratio(t.bitFlips, t.bitsSent)),
          Cell::real(ratio(t.dataBitErrors, t.dataBits)),
          Cell::real(ratio(t.uncorrectable, t.codewords)),
          Cell::real(ci.low),
          Cell::real(ci.high),
          Cell::integer(t.uncorrectable),
          Cell::integer(t.miscorrected),
          Cell::integer(t.codewords),
          Cell::integer(t.blocks),
          Cell::fromLog10(log10BlockFailureRate(s.layout, channel.rawBitErrorRate())),
          Cell::real(std::round(r.seconds * 100) / 100)};
}

}  // namespace

int runSimulate(const SimulateOptions& o) {
  const SimulationSettings settings = settingsFrom(o);
  if (!o.plot.empty()) checkPlotTarget(o.plot);
  checkWritable("--csv", o.csv);
  checkWritable("--json", o.json);

  const char* parameter = channelParameterName(settings.channel);
  ResultTable table({parameter, "raw_ber", "post_ber", "fer", "fer_low", "fer_high", "uncorrectable", "miscorrected",
                     "codewords", "blocks", "analytic_fer", "seconds"});
  const BlockLayout& layout = settings.layout;
  std::cout << "flashbch simulate: layout " << layout.describe() << " data bits, t = " << layout.t << " ("
            << layout.parityBits() << " parity bits, " << layout.storedParityBits() << " stored), channel "
            << channelName(settings.channel) << ", seed " << settings.seed << ", " << settings.threads
            << (settings.threads == 1 ? " thread" : " threads") << "; a point stops at " << settings.maxFailures
            << " failed codewords or " << settings.maxBlocks << " blocks\n";
  table.writeTextHeader(std::cout, kColumnWidth);
  std::cout.flush();

  const bool live = !o.quiet && ::isatty(STDERR_FILENO);
  Simulator simulator(settings);
  for (int point = 0; point < static_cast<int>(settings.parameters.size()); ++point) {
    std::function<void(const Progress&)> progress;
    if (live) progress = [&](const Progress& p) { showProgress(p, settings); };
    const PointResult result = simulator.runPoint(point, progress);
    if (live) std::fprintf(stderr, "\r\033[K");
    table.addRow(rowOf(result, settings));
    table.writeTextRow(std::cout, table.rows().back(), kColumnWidth);
    std::cout.flush();
  }

  if (!o.csv.empty()) {
    std::ostringstream csv;
    table.writeCsv(csv);
    writeOutputFile("--csv", o.csv, csv.str());
  }
  if (!o.json.empty()) {
    Json document;
    document["command"] = "simulate";
    document["layout"] = layout.describe();
    document["data_bits"] = layout.dataBits;
    document["t"] = layout.t;
    document["parity_bits"] = layout.parityBits();
    document["stored_parity_bits"] = layout.storedParityBits();
    document["channel"] = channelName(settings.channel);
    document["seed"] = settings.seed;
    document["max_fe"] = settings.maxFailures;
    document["max_frames"] = settings.maxBlocks;
    document["confidence_interval"] = "95% Wilson score interval on fer";
    document["points"] = table.toJson();
    writeOutputFile("--json", o.json, document.dump(2) + "\n");
  }
  if (!o.plot.empty()) {
    std::ostringstream csv;
    table.writeCsv(csv);
    PlotRequest plot;
    plot.output = o.plot;
    plot.title = "BCH t = " + std::to_string(layout.t) + ", " + layout.describe() + " data bits, " +
                 channelName(settings.channel) + " channel";
    plot.xLabel = settings.channel == ChannelKind::Awgn ? "SNR (dB)" : "raw bit error rate";
    plot.yLabel = "error rate";
    plot.logX = settings.channel == ChannelKind::Bsc;
    plot.csv = csv.str();
    const std::string x = std::string("'") + parameter + "'";
    plot.series = "'DATA' using " + x +
                  ":'fer':'fer_low':'fer_high' with yerrorbars pt 7 title 'codeword failure rate', " +
                  "'DATA' using " + x + ":'analytic_fer' with lines lw 2 title 'analytic (bounded distance)', " +
                  "'DATA' using " + x + ":'raw_ber' with linespoints title 'raw BER', " + "'DATA' using " + x +
                  ":'post_ber' with linespoints title 'post-decode BER'";
    const std::string failure = runGnuplot(plot);
    if (!failure.empty()) {
      std::cerr << "flashbch simulate: --plot: " << failure << std::endl;
      return 1;
    }
  }
  return 0;
}

}  // namespace flashbch
