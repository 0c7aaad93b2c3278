// flashbch simulate: checks every argument, then runs the sweep point by
// point (Monte Carlo) or as one stratified run, prints each row as it is
// done, shows a progress line on a terminal, and writes CSV, JSON and the
// plot at the end. Existing output files are only ever replaced whole
// (temporary file in the same directory, then rename), and on SIGINT or
// SIGTERM the points finished so far are written before exiting.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <thread>

#include "codeFacts.h"
#include "commands.h"
#include "distribution.h"
#include "simulateCommand.h"
#include "errorStatistics.h"
#include "gnuplotRunner.h"
#include "resultTable.h"
#include "nandSimulation.h"
#include "simulation.h"
#include "simulationCheckpoint.h"
#include "stratifiedEstimator.h"
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

std::atomic<bool> gCancel{false};
volatile std::sig_atomic_t gSignal = 0;

extern "C" void onStopSignal(int signal) {
  gSignal = signal;
  gCancel.store(true);
}

// Catches SIGINT and SIGTERM while alive, restoring the previous handlers.
class StopSignals {
 public:
  StopSignals() {
    gCancel.store(false);
    gSignal = 0;
    previousInt_ = std::signal(SIGINT, onStopSignal);
    previousTerm_ = std::signal(SIGTERM, onStopSignal);
  }
  ~StopSignals() {
    std::signal(SIGINT, previousInt_);
    std::signal(SIGTERM, previousTerm_);
  }

 private:
  void (*previousInt_)(int);
  void (*previousTerm_)(int);
};

std::uint64_t parseWhole(const std::string& flag, const std::string& text, std::uint64_t low, std::uint64_t high) {
  const std::string range = std::to_string(low) + " .. " + std::to_string(high);
  bool digits = !text.empty() && text.size() <= 20;
  for (char c : text) digits = digits && c >= '0' && c <= '9';
  if (!digits) throw UsageError(flag + ": '" + text + "' is not a whole number in " + range);
  errno = 0;
  const unsigned long long value = std::strtoull(text.c_str(), nullptr, 10);
  if (errno == ERANGE || value > high) throw UsageError(flag + ": " + text + " is outside the accepted range " + range);
  if (value < low) throw UsageError(flag + ": " + text + " is below the accepted minimum " + std::to_string(low));
  return value;
}

double parsePositive(const std::string& flag, const std::string& text) {
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !std::isfinite(value))
    throw UsageError(flag + ": '" + text + "' is not a number");
  if (!(value > 0.0)) throw UsageError(flag + ": " + text + " must be above 0");
  return value;
}

}  // namespace

SimulationSettings settingsFrom(const SimulateOptions& o, const std::atomic<bool>* cancel) {
  SimulationSettings s;
  s.layout = makeLayout(parseLayout(o.layout), o.t, false);
  const bool awgn = o.channel == "awgn" || o.channel == "awgn-bits";
  if (awgn) {
    s.channel = o.channel == "awgn" ? ChannelKind::Awgn : ChannelKind::AwgnBits;
    if (!o.rber.empty()) throw UsageError("--rber: applies to --channel bsc; the AWGN channel is swept with --snr");
    s.parameters = parseSweep("--snr", o.snr.empty() ? kDefaultSnrSweep : o.snr, SweepKind::Real, -20.0, 60.0);
  } else if (o.channel == "bsc") {
    s.channel = ChannelKind::Bsc;
    if (!o.snr.empty()) throw UsageError("--snr: applies to --channel awgn; the BSC is swept with --rber");
    s.parameters =
        parseSweep("--rber", o.rber.empty() ? kDefaultRberSweep : o.rber, SweepKind::Probability, 0.0, 0.5);
    for (double p : s.parameters)
      if (!(p < 0.5)) throw UsageError("--rber: " + formatNumber(p) + " is not below 0.5");
  } else if (!applyNandOrBetaBinomialChannel(o, s)) {
    throw UsageError("--channel: '" + o.channel + "' is not a channel; accepted: awgn, bsc, awgn-bits, nand, bbm");
  }
  applyDecoder(o, s);
  if (o.estimator == "stratified") {
    s.estimator = Estimator::Stratified;
    if (s.channel == ChannelKind::AwgnBits)
      throw UsageError("--estimator: stratified estimation weighs error counts and never draws bits; use --channel awgn");
  } else if (o.estimator != "mc") {
    throw UsageError("--estimator: '" + o.estimator + "' is not an estimator; accepted: mc, stratified");
  }
  const std::uint64_t most = 0x7FFFFFFFFFFFFFFFull;
  s.maxFailures = static_cast<std::int64_t>(parseWhole("--max-fe", o.maxFailures, 1, most));
  s.maxBlocks = o.maxBlocks.empty() ? kDefaultMaxBlocks
                                    : static_cast<std::int64_t>(parseWhole("--max-frames", o.maxBlocks, 1, most));
  if (!o.timeLimit.empty()) s.timeLimit = parsePositive("--time-limit", o.timeLimit);
  if (!o.targetRelCi.empty()) s.targetRelativeHalfWidth = parsePositive("--target-rel-ci", o.targetRelCi);
  s.seed = parseWhole("--seed", o.seed, 0, ~std::uint64_t{0});
  const int cores = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  s.threads = o.threads == 0 ? cores : o.threads;
  if (s.threads < 1 || s.threads > 1024)
    throw UsageError("--threads: " + std::to_string(o.threads) + " is outside the accepted range 1 .. 1024");
  const double memory = static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE));
  const double needed = estimatedMemoryBytes(s);
  if (memory > 0 && needed > memory) {
    char message[200];
    std::snprintf(message, sizeof message,
                  "--threads: %d threads on this layout need about %.1f GiB, more than the %.1f GiB of memory", s.threads,
                  needed / (1 << 30), memory / (1 << 30));
    throw UsageError(message);
  }
  s.cancel = cancel;
  return s;
}

namespace {

std::string directoryOf(const std::string& path) {
  const auto slash = path.find_last_of('/');
  return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

// An output path is usable when the file can be written, or created in its
// directory; nothing is created or truncated here.
void checkOutputPath(const std::string& flag, const std::string& path) {
  if (path.empty()) return;
  const bool usable =
      ::access(path.c_str(), F_OK) == 0 ? ::access(path.c_str(), W_OK) == 0 : ::access(directoryOf(path).c_str(), W_OK | X_OK) == 0;
  if (!usable) throw UsageError(flag + ": cannot write " + path);
}

// Writes a temporary file beside `path` and renames it over `path`, so that
// readers see the old file or the new one, never a part.
void replaceFile(const std::string& flag, const std::string& path, const std::string& content) {
  std::string temporary = path + ".XXXXXX";
  const int fd = ::mkstemp(&temporary[0]);
  bool ok = fd >= 0;
  for (size_t done = 0; ok && done < content.size();) {
    const ssize_t n = ::write(fd, content.data() + done, content.size() - done);
    ok = n > 0;
    done += ok ? static_cast<size_t>(n) : 0;
  }
  if (fd >= 0) {
    const mode_t mask = ::umask(0);  // mkstemp makes 0600; give the mode a plain create would
    ::umask(mask);
    ok = ::fchmod(fd, 0666 & ~mask) == 0 && ::close(fd) == 0 && ok;
  }
  ok = ok && std::rename(temporary.c_str(), path.c_str()) == 0;
  if (!ok) {
    if (fd >= 0) std::remove(temporary.c_str());
    throw UsageError(flag + ": cannot write " + path);
  }
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
  if (p.point < 0) {
    std::fprintf(stderr, "\r\033[Kstratified sweep of %d points: %lld patterns decoded, %lld failed, %s", p.points,
                 static_cast<long long>(p.blocks), static_cast<long long>(p.failures),
                 formatSeconds(p.seconds).c_str());
  } else {
    const double rate = p.codewords ? static_cast<double>(p.failures) / p.codewords : 0.0;
    const double blocksPerSecond = p.seconds > 0 ? p.blocks / p.seconds : 0.0;
    double eta = blocksPerSecond > 0 ? (s.maxBlocks - p.blocks) / blocksPerSecond : NAN;
    if (p.failures > 0 && p.seconds > 0) eta = std::min(eta, (s.maxFailures - p.failures) / (p.failures / p.seconds));
    if (s.timeLimit > 0) eta = std::min(eta, s.timeLimit - p.seconds);
    std::fprintf(stderr, "\r\033[Kpoint %d/%d  blocks %lld/%lld  failures %lld/%lld  rate %.3g  ETA %s", p.point + 1,
                 p.points, static_cast<long long>(p.blocks), static_cast<long long>(s.maxBlocks),
                 static_cast<long long>(p.failures), static_cast<long long>(s.maxFailures), rate,
                 std::isfinite(eta) ? formatSeconds(std::max(0.0, eta)).c_str() : "?");
  }
  std::fflush(stderr);
}

std::vector<Cell> rowOf(const PointEstimate& e, const SimulationSettings& s) {
  const auto channel = channelAt(s, e.parameter);
  const auto logCells = [](const LogInterval& ci) {
    return std::vector<Cell>{Cell::fromLog10(ci.log10Value), Cell::fromLog10(ci.log10Low),
                             Cell::fromLog10(ci.log10High)};
  };
  std::vector<Cell> row{Cell::real(e.parameter), Cell::real(e.rawBitErrorRate)};
  for (const LogInterval* ci : {&e.fer, &e.miscorrection, &e.uber})
    for (Cell& cell : logCells(*ci)) row.push_back(cell);
  row.push_back(Cell::integer(e.uncorrectable));
  row.push_back(Cell::integer(e.miscorrected));
  row.push_back(Cell::integer(e.codewords));
  row.push_back(e.blocks >= 0 ? Cell::integer(e.blocks) : Cell::missing());
  row.push_back(Cell::fromLog10(log10AnalyticFailureRate(*channel, s.layout)));
  row.push_back(Cell::text(estimatorName(s.estimator)));
  row.push_back(Cell::real(std::round(e.seconds * 100) / 100));
  return row;
}

}  // namespace

ResultTable simulationTable(const SimulationSettings& settings) {
  const std::string parameter =
      settings.parameterName.empty() ? channelParameterName(settings.channel) : settings.parameterName;
  return ResultTable({parameter, "raw_ber", "fer", "fer_low", "fer_high",
                      "miscorrection_rate", "miscorrection_low", "miscorrection_high", "uber", "uber_low",
                      "uber_high", "uncorrectable", "miscorrected", "codewords", "blocks", "analytic_fer",
                      "estimator", "seconds"});
}

namespace {

// True on every rank when any rank was asked to stop.
bool anyCancelled(const SimulationSettings& settings, Distribution& ranks) {
  std::int64_t cancelled = settings.cancel != nullptr && settings.cancel->load() ? 1 : 0;
  ranks.sum(&cancelled, 1);
  return cancelled > 0;
}

// The Monte Carlo points: those a checkpoint holds as finished are
// reprinted from their saved tallies, the one it holds as running
// continues from its last whole round, and the rest run from block 0.
bool runMonteCarloPoints(const SimulationSettings& settings, Distribution& ranks, SimulationCheckpoint* checkpoint,
                         const ProgressCallback& progress, const std::function<void(const PointEstimate&)>& addRow) {
  Simulator simulator(settings);
  const int points = static_cast<int>(settings.parameters.size());
  int first = 0;
  if (checkpoint) {
    simulator.setRoundHook([&](int point, const Simulator::RoundState& state) { checkpoint->roundDone(point, state); });
    for (first = 0; first < checkpoint->finishedPoints() && first < points; ++first) {
      Simulator::PointResult saved = checkpoint->finishedPoint(first);
      const double parameter = channelAt(settings, settings.parameters[static_cast<size_t>(first)])->parameter();
      const double seconds = saved.estimate.seconds;
      saved.estimate = monteCarloEstimate(parameter, saved.tally);
      saved.estimate.seconds = seconds;
      addRow(saved.estimate);
    }
    if (const auto running = checkpoint->runningPoint()) simulator.resumeNextPoint(*running);
  }
  for (int point = first; point < points; ++point) {
    const Simulator::PointResult result = simulator.runPoint(point, progress);
    if (anyCancelled(settings, ranks)) return true;
    if (checkpoint) checkpoint->pointDone(point, result);
    addRow(result.estimate);
  }
  return false;
}

bool runStratifiedSweep(const SimulationSettings& settings, Distribution& ranks, SimulationCheckpoint* checkpoint,
                        const ProgressCallback& progress, const std::function<void(const PointEstimate&)>& addRow) {
  StratifiedEstimator estimator(settings);
  bool finished = false;
  if (checkpoint) {
    estimator.setRoundHook([&] { checkpoint->stratifiedDone(estimator, false); });
    finished = checkpoint->restore(estimator);
  }
  if (!finished) estimator.run(progress);
  const bool cancelled = anyCancelled(settings, ranks);
  if (checkpoint) checkpoint->stratifiedDone(estimator, !cancelled);
  for (int point = 0; point < static_cast<int>(settings.parameters.size()); ++point) addRow(estimator.estimate(point));
  return cancelled;
}

}  // namespace

bool runSimulationSweep(const SimulationSettings& settings, SimulationCheckpoint* checkpoint, ResultTable& table,
                        const ProgressCallback& progress, const std::function<void(const std::vector<Cell>&)>& onRow) {
  SingleProcessDistribution alone;
  Distribution& ranks = settings.ranks ? *settings.ranks : alone;
  const auto addRow = [&](const PointEstimate& estimate) {
    table.addRow(rowOf(estimate, settings));
    if (onRow) onRow(table.rows().back());
  };
  bool cancelled = false;
  try {
    cancelled = settings.estimator == Estimator::Stratified
                    ? runStratifiedSweep(settings, ranks, checkpoint, progress, addRow)
                    : runMonteCarloPoints(settings, ranks, checkpoint, progress, addRow);
  } catch (const UsageError&) {
    throw;  // every rank finds the same
  } catch (const std::exception& e) {
    // The other ranks wait for this one in the next reduction: end them all.
    if (ranks.size() > 1) ranks.abort("rank " + std::to_string(ranks.rank()) + ": " + e.what(), 1);
    throw;
  }
  if (checkpoint) checkpoint->save();
  return cancelled;
}

namespace {

std::string jsonKey(std::string name) {
  for (char& c : name) c = c == '-' ? '_' : c;
  return name;
}

Json jsonValue(const RunSetting& setting) {
  if (setting.kind == RunSetting::Kind::Text) return setting.text;
  std::vector<double> numbers;
  std::istringstream items(setting.text);
  for (std::string item; std::getline(items, item, ',');) numbers.push_back(std::strtod(item.c_str(), nullptr));
  if (setting.kind == RunSetting::Kind::Numbers) return numbers;
  const double x = numbers.at(0);
  return x == std::floor(x) && std::fabs(x) < 9e15 ? Json(static_cast<std::int64_t>(x)) : Json(x);
}

void writeOutputs(const SimulateOptions& o, const SimulationSettings& settings, int ranks, const ResultTable& table) {
  if (!o.csv.empty()) {
    std::ostringstream csv;
    table.writeCsv(csv);
    replaceFile("--csv", o.csv, csv.str());
  }
  if (!o.json.empty()) {
    const BlockLayout& layout = settings.layout;
    Json document;
    document["command"] = "simulate";
    document["layout"] = layout.describe();
    document["data_bits"] = layout.dataBits;
    document["t"] = layout.t;
    document["parity_bits"] = layout.parityBits();
    document["stored_parity_bits"] = layout.storedParityBits();
    document["channel"] = channelName(settings.channel);
    for (const RunSetting& setting : settings.runSettings) document[jsonKey(setting.name)] = jsonValue(setting);
    document["estimator"] = estimatorName(settings.estimator);
    document["seed"] = settings.seed;
    document["ranks"] = ranks;
    document["max_fe"] = settings.maxFailures;
    document["max_frames"] = settings.maxBlocks;
    document["time_limit"] = settings.timeLimit > 0 ? Json(settings.timeLimit) : Json(nullptr);
    document["target_rel_ci"] =
        settings.targetRelativeHalfWidth > 0 ? Json(settings.targetRelativeHalfWidth) : Json(nullptr);
    document["confidence_interval"] =
        settings.estimator == Estimator::MonteCarlo
            ? "95% Wilson score intervals; uber's is fer's scaled by the data bits lost per failed codeword"
            : "95% Wilson score intervals per error count, combined by MOVER; omitted error counts widen the upper "
              "limits";
    document["points"] = table.toJson();
    replaceFile("--json", o.json, document.dump(2) + "\n");
  }
}

}  // namespace

int runSimulate(const SimulateOptions& o) {
  SimulationSettings settings = settingsFrom(o, &gCancel);
  if (launchedRank() == 0) {  // the rank that writes them
    if (!o.plot.empty()) checkPlotTarget(o.plot);
    checkOutputPath("--csv", o.csv);
    checkOutputPath("--json", o.json);
  }
  CheckpointFile checkpointFile(o.checkpoint, launchedRank() == 0);
  const auto ranks = startDistribution();
  settings.ranks = ranks.get();
  SimulationCheckpoint checkpoint(std::move(checkpointFile), settings, *ranks);
  const StopSignals signals;
  // Rank 0 speaks for the job.
  std::ostringstream elsewhere;
  std::ostream& out = ranks->isRoot() ? std::cout : elsewhere;

  const std::string parameter =
      settings.parameterName.empty() ? channelParameterName(settings.channel) : settings.parameterName;
  ResultTable table = simulationTable(settings);
  const BlockLayout& layout = settings.layout;
  out << "flashbch simulate: layout " << layout.describe() << " data bits, t = " << layout.t << " ("
            << layout.parityBits() << " parity bits, " << layout.storedParityBits() << " stored), channel "
            << channelName(settings.channel) << ", estimator " << estimatorName(settings.estimator) << ", seed "
            << settings.seed << ", " << ranks->size() << (ranks->size() == 1 ? " rank" : " ranks") << " of "
            << settings.threads << (settings.threads == 1 ? " thread" : " threads")
            << (settings.estimator == Estimator::MonteCarlo ? "; a point stops at " : "; an error count stops at ")
            << settings.maxFailures << " failed codewords or " << settings.maxBlocks
            << (settings.estimator == Estimator::MonteCarlo ? " blocks\n" : " patterns\n");
  table.writeTextHeader(out, kColumnWidth);
  out.flush();

  const bool live = !o.quiet && ranks->isRoot() && ::isatty(STDERR_FILENO);
  const auto clearProgress = [&] {
    if (live) std::fprintf(stderr, "\r\033[K");
  };
  ProgressCallback progress;
  if (live) progress = [&](const Progress& p) { showProgress(p, settings); };
  const bool cancelled = runSimulationSweep(settings, &checkpoint, table, progress, [&](const std::vector<Cell>& row) {
    clearProgress();
    table.writeTextRow(out, row, kColumnWidth);
    out.flush();
  });
  clearProgress();
  if (!ranks->isRoot()) return cancelled ? 1 : 0;
  writeOutputs(o, settings, ranks->size(), table);
  if (cancelled) {
    std::cerr << "flashbch simulate: stopped by signal " << gSignal << "; " << table.rows().size()
              << " finished points written" << (checkpoint.enabled() ? ", and the checkpoint" : "") << std::endl;
    return gSignal ? 128 + gSignal : 1;
  }

  if (!o.plot.empty()) {
    std::ostringstream csv;
    table.writeCsv(csv);
    PlotRequest plot;
    plot.output = o.plot;
    plot.title = "BCH t = " + std::to_string(layout.t) + ", " + layout.describe() + " data bits, " +
                 channelName(settings.channel) + " channel, " + estimatorName(settings.estimator);
    const bool rates = settings.channel == ChannelKind::Bsc || settings.channel == ChannelKind::BetaBinomial;
    plot.xLabel = rates ? "raw bit error rate" : settings.channel == ChannelKind::Nand ? parameter : "SNR (dB)";
    plot.yLabel = "rate";
    plot.logX = rates;
    if (plot.logX) plot.keyPosition = "bottom right";  // the rates rise to the right
    plot.csv = csv.str();
    const std::string x = std::string("'") + parameter + "'";
    plot.series = "'DATA' using " + x +
                  ":'fer':'fer_low':'fer_high' with yerrorbars pt 7 title 'codeword failure rate', " +
                  "'DATA' using " + x + ":'analytic_fer' with lines lw 2 title 'analytic (bounded distance)', " +
                  "'DATA' using " + x + ":'uber':'uber_low':'uber_high' with yerrorbars pt 5 title 'UBER', " +
                  "'DATA' using " + x +
                  ":'miscorrection_high' with lines dt 2 title 'miscorrection rate, 95% upper limit', " +
                  "'DATA' using " + x + ":'raw_ber' with linespoints title 'raw BER'";
    const std::string failure = runGnuplot(plot);
    if (!failure.empty()) {
      std::cerr << "flashbch simulate: --plot: " << failure << std::endl;
      return 1;
    }
  }
  return 0;
}

}  // namespace flashbch
