// The command line: CLI11 parses, the subcommands check their own ranges
// (UsageError), and every usage error ends with exit status 2 and a message
// on standard error that names the flag or file at fault.
#include <CLI/CLI.hpp>
#include <iostream>
#include <string>

#include "commands.h"
#include "usageError.h"

namespace flashbch {

namespace {

const char* const kLayoutHelp =
    "block layout: codewords x data bits (4x8192) or a comma-separated list of DATABITS or COUNTxDATABITS items";

void addLayout(CLI::App& app, std::string& layout, int& t) {
  app.add_option("--layout", layout, kLayoutHelp)->capture_default_str();
  app.add_option("--t", t, "bit errors each codeword corrects, 1 .. 128")->capture_default_str();
}

void addSimulate(CLI::App& app, SimulateOptions& o) {
  auto* sub = app.add_subcommand(
      "simulate",
      "Codeword failure rate, silent miscorrection rate and UBER of a block layout over a noisy channel.\n"
      "A codeword fails when the decoder reports it uncorrectable or claims success with data that still "
      "differ (miscorrected). fer, miscorrection_rate and uber (data bit errors after decoding per data bit) "
      "come with 95% intervals (_low, _high). analytic_fer is the failure rate of a bounded-distance "
      "decoder, P(X > t) for X ~ Binomial(data + 15t, p) at the channel's raw bit error rate p.\n"
      "--estimator mc simulates whole blocks; a point runs in rounds of 16 blocks doubling up to 1024 until --max-fe codewords "
      "have failed, --max-frames blocks are done, the failure rate's interval is within --target-rel-ci, or "
      "--time-limit has passed. --estimator stratified decodes patterns of exactly w errors for every w that "
      "matters and weighs them with P(W = w); one run serves the whole sweep and reaches rates far below "
      "what blocks can count (down to 1e-20 and beyond); --max-fe and --max-frames then apply per w.\n"
      "Sweeps: VALUE, A,B,C, START:STEP:STOP, or START:*FACTOR:STOP (ratio steps); for --rber a STEP "
      "of 1 or more is a ratio, so 1e-3:2:8e-3 is 1e-3, 2e-3, 4e-3, 8e-3.\n"
      "Results depend only on the options and --seed, never on --threads (--time-limit aside). On SIGINT or "
      "SIGTERM the finished points are written and the exit status is 130 or 143.");
  addLayout(*sub, o.layout, o.t);
  sub->add_option("--channel", o.channel,
                  "awgn (the library's test channel, hard decision), bsc, or awgn-bits (awgn drawn one "
                  "Gaussian per bit: the slow reference)")
      ->capture_default_str();
  sub->add_option("--snr", o.snr,
                  std::string("AWGN sweep in dB: bits sent as +-1 in noise of standard deviation "
                              "2*10^(-snr/20) [default: ") +
                      kDefaultSnrSweep + "]");
  sub->add_option("--rber", o.rber,
                  std::string("BSC sweep of the raw bit error rate, 0 <= p < 0.5 [default: ") + kDefaultRberSweep +
                      "]");
  sub->add_option("--estimator", o.estimator, "mc (Monte Carlo blocks) or stratified (by error count)")
      ->capture_default_str();
  sub->add_option("--max-fe", o.maxFailures, "stop a point (a stratum) after this many failed codewords, >= 1")
      ->capture_default_str();
  sub->add_option("--max-frames", o.maxBlocks,
                  "stop a point after this many blocks (a stratum after this many patterns), >= 1 [default: " +
                      std::to_string(kDefaultMaxBlocks) + "]");
  sub->add_option("--time-limit", o.timeLimit, "stop a point after this many seconds (> 0) [default: none]");
  sub->add_option("--target-rel-ci", o.targetRelCi,
                  "stop a point once fer's 95% interval half-width is at most this fraction of fer (> 0) "
                  "[default: none]");
  sub->add_option("--threads", o.threads, "worker threads [default: every core]");
  sub->add_option("--seed", o.seed, "seed of all data and noise, 0 .. 2^64-1")->capture_default_str();
  sub->add_option("--csv", o.csv, "also write the table as CSV to this file");
  sub->add_option("--json", o.json, "also write the settings and the table as JSON to this file");
  sub->add_option("--plot", o.plot,
                  "draw the rates against the channel parameter (FILE.png or FILE.svg, needs gnuplot)");
  sub->add_flag("--quiet", o.quiet, "no progress line on standard error");
}

void addPage(CLI::App& sub, PageOptions& o, bool decoding) {
  addLayout(sub, o.layout, o.t);
  sub.add_option("input", o.input, decoding ? "page image file to decode" : "data file to encode")->required();
  sub.add_option("-o,--output", o.output, decoding ? "corrected data file to write" : "page image file to write")
      ->required();
  sub.add_option("--byte-swap", o.byteSwap,
                 "the controller stores the bytes of every WORDBITS-bit word in reverse order (16, 32, 64, ...)");
  sub.add_option("--bit-swap", o.bitSwap, "the controller stores every GROUPBITS-bit group in reverse bit order");
}

void addEncode(CLI::App& app, PageOptions& o) {
  auto* sub = app.add_subcommand(
      "encode",
      "Encode a data file into a page image. The data file is a sequence of blocks, each holding the data "
      "bytes of every codeword of the layout (bits most significant first); the image holds per codeword "
      "its data, its 15t parity bits and zero bits to a whole byte. Data lengths must be multiples of 8.");
  addPage(*sub, o, false);
}

void addDecode(CLI::App& app, PageOptions& o) {
  auto* sub = app.add_subcommand(
      "decode",
      "Decode a page image into corrected data and report every codeword as clean, corrected (with the "
      "number of bits flipped), erased or uncorrectable. Exit status 0 when no codeword is uncorrectable, "
      "1 otherwise. The input file is never written.");
  addPage(*sub, o, true);
  sub->add_option("--report", o.report, "write the per-block, per-codeword report as JSON to this file");
  sub->add_option(
      "--scrub-threshold", o.scrubThreshold,
      "recommend scrubbing a block whose largest corrected count reaches this [default: 3t/4 rounded up]");
  sub->add_option("--erased-threshold", o.erasedThreshold,
                  "a codeword whose data and parity bits hold at most this many zeros is an erased page "
                  "[default: t]");
}

void addInfo(CLI::App& app, InfoOptions& o) {
  auto* sub = app.add_subcommand("info",
                                 "Facts about the code of every codeword: lengths, parity, rate, designed "
                                 "distance, generator polynomial, and the analytic failure rate at --rber.");
  addLayout(*sub, o.layout, o.t);
  sub->add_option("--rber", o.rber, "raw bit error rate for the analytic failure rate")->capture_default_str();
}

void addUber(CLI::App& app, UberOptions& o) {
  auto* sub = app.add_subcommand(
      "uber",
      "Analytic codeword failure rate (mean over the block's codewords) and UBER (expected failed "
      "codewords per block / data bits per block) of a bounded-distance decoder, for a sweep of t and "
      "of the raw bit error rate. Sweeps as in simulate.");
  sub->add_option("--layout", o.layout, kLayoutHelp)->capture_default_str();
  sub->add_option("--t", o.t, "sweep of t, whole numbers 1 .. 128")->capture_default_str();
  sub->add_option("--rber", o.rber, "sweep of the raw bit error rate")->capture_default_str();
  sub->add_option("--csv", o.csv, "also write the table as CSV (one row per t and rate) to this file");
  sub->add_option("--plot", o.plot, "draw UBER against the raw bit error rate (FILE.png or FILE.svg, needs gnuplot)");
}

}  // namespace

int runCommandLine(int argc, char** argv) {
  CLI::App app{"flashbch: binary BCH error correction for NAND flash pages - simulation, page images, code facts"};
  app.require_subcommand(1);
  SimulateOptions simulate;
  PageOptions encode, decode;
  InfoOptions info;
  UberOptions uber;
  addSimulate(app, simulate);
  addEncode(app, encode);
  addDecode(app, decode);
  addInfo(app, info);
  addUber(app, uber);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    if (e.get_exit_code() == 0) return app.exit(e);
    std::cerr << "flashbch: " << e.what() << "\nRun 'flashbch --help' or 'flashbch COMMAND --help' for usage."
              << std::endl;
    return 2;
  }
  const std::string command = app.get_subcommands().front()->get_name();
  try {
    if (command == "simulate") return runSimulate(simulate);
    if (command == "encode") return runEncode(encode);
    if (command == "decode") return runDecode(decode);
    if (command == "info") return runInfo(info);
    return runUber(uber);
  } catch (const UsageError& e) {
    std::cout.flush();
    std::cerr << "flashbch " << command << ": " << e.what() << std::endl;
    return 2;
  }
}

}  // namespace flashbch
