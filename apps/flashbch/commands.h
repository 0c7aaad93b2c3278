// The subcommands of flashbch: their options as parsed from the command
// line, and the functions that carry them out. Each run function returns
// the process exit status and throws UsageError for a request it cannot
// carry out (exit status 2).
#pragma once

#include <cstdint>
#include <string>

namespace flashbch {

struct SimulateOptions {
  std::string layout = "4x8192";
  int t = 40;
  std::string channel = "awgn";
  std::string snr;   // empty: the default sweep
  std::string rber;  // empty: the default sweep
  std::string estimator = "mc";
  // Numbers the tool reads itself, to refuse what does not fit (empty: default).
  std::string maxFailures = "100";
  std::string maxBlocks;
  std::string timeLimit;
  std::string targetRelCi;
  std::string seed = "1";
  int threads = 0;  // 0: every core
  std::string csv, json, plot;
  bool quiet = false;
};

struct PageOptions {
  std::string layout = "4x8192";
  int t = 40;
  std::string input, output, report;
  int byteSwap = 0;
  int bitSwap = 0;
  int scrubThreshold = -1;   // -1: three quarters of t, rounded up
  int erasedThreshold = -1;  // -1: t
};

struct InfoOptions {
  std::string layout = "4x8192";
  int t = 40;
  double rber = 1e-3;
};

struct UberOptions {
  std::string layout = "4x8192";
  std::string t = "8:8:72";
  std::string rber = "1e-5:10:1e-2";
  std::string csv, plot;
};

// Default sweeps of simulate, chosen so that the default layout and t go
// from codeword failure rates near 1 down to about 1e-3.
extern const char* const kDefaultSnrSweep;
extern const char* const kDefaultRberSweep;
extern const std::int64_t kDefaultMaxBlocks;

int runSimulate(const SimulateOptions& options);
int runEncode(const PageOptions& options);
int runDecode(const PageOptions& options);
int runInfo(const InfoOptions& options);
int runUber(const UberOptions& options);

// Parses argv and runs the chosen subcommand; returns the exit status
// (0 success, 1 uncorrectable data, 2 usage error).
int runCommandLine(int argc, char** argv);

}  // namespace flashbch
