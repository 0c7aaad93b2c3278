// Runs the built flashbch binary (path from the build) inside the current
// directory and collects its exit status, standard output and standard
// error; reads its CSV output back by column name. Also the helpers several
// suites share: usage messages, refused requests, a direct binomial tail.
#pragma once

#include <sys/wait.h>

#include <cmath>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "support/testutil.h"
#include "usageError.h"

namespace flashbchtest {

struct Run {
  int status = -1;
  std::string out, err;
};

// `environment` comes first on the shell line: variables, or a launcher.
inline Run runFlashbch(const std::string& args, const std::string& environment = "",
                       const std::string& program = FLASHBCH_BINARY) {
  const std::string command = environment + " '" + program + "' " + args + " >stdout.txt 2>stderr.txt </dev/null";
  const int raw = std::system(command.c_str());
  Run run;
  run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  run.out = qfbtest::readFile("stdout.txt");
  run.err = qfbtest::readFile("stderr.txt");
  return run;
}

// The message a rejected call throws, or "(accepted)".
inline std::string messageOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const flashbch::UsageError& e) {
    return e.what();
  }
  return "(accepted)";
}

// A refused request: exit status 2 and a standard error starting with `message`.
inline void expectRefused(const std::string& args, const std::string& message, const std::string& environment = "") {
  const Run run = runFlashbch(args, environment);
  EXPECT_EQ(run.status, 2) << args;
  EXPECT_EQ(run.err.substr(0, message.size()), message) << args << ": " << run.err;
}

// P(X > t), X ~ Binomial(n, p): the terms C(n,i) p^i (1-p)^(n-i) for
// i = t+1 .. n summed in long double, each built by the recurrence from i = 0.
inline long double directUpperTail(int n, int t, long double p) {
  long double term = std::pow(1.0L - p, static_cast<long double>(n)), tail = 0.0L;
  for (int i = 0; i <= n; ++i) {
    if (i > t) tail += term;
    term *= (n - i) / static_cast<long double>(i + 1) * p / (1.0L - p);
  }
  return tail;
}

using Row = std::map<std::string, std::string>;

// Rows of a CSV file without quoted fields, as column name -> text.
inline std::vector<Row> readCsv(const std::string& path) {
  std::istringstream in(qfbtest::readFile(path));
  std::vector<std::string> header;
  std::vector<Row> rows;
  std::string line, cell;
  std::getline(in, line);
  for (std::istringstream cells(line); std::getline(cells, cell, ',');) header.push_back(cell);
  while (std::getline(in, line)) {
    std::istringstream cells(line);
    rows.emplace_back();
    for (size_t i = 0; i < header.size() && std::getline(cells, cell, ','); ++i) rows.back()[header[i]] = cell;
  }
  return rows;
}

// Runs flashbch with `args` and --csv out.csv; returns the rows, `count` of
// them (empty ones, so that reading a column fails, if fewer).
inline std::vector<Row> csvRows(const std::string& args, size_t count) {
  const Run run = runFlashbch(args + " --csv out.csv");
  EXPECT_EQ(run.status, 0) << args << "\n" << run.err;
  std::vector<Row> rows = readCsv("out.csv");
  EXPECT_EQ(rows.size(), count) << args;
  rows.resize(count);
  return rows;
}

inline double number(const std::string& text) { return std::strtod(text.c_str(), nullptr); }

}  // namespace flashbchtest
