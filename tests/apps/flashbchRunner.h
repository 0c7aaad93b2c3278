// Runs the built flashbch binary (path from the build) inside the current
// directory and collects its exit status, standard output and standard
// error; reads its CSV output back by column name.
#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "support/testutil.h"

namespace flashbchtest {

struct Run {
  int status = -1;
  std::string out, err;
};

inline Run runFlashbch(const std::string& args, const std::string& environment = "") {
  const std::string command =
      environment + " '" + std::string(FLASHBCH_BINARY) + "' " + args + " >stdout.txt 2>stderr.txt </dev/null";
  const int raw = std::system(command.c_str());
  Run run;
  run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  run.out = qfbtest::readFile("stdout.txt");
  run.err = qfbtest::readFile("stderr.txt");
  return run;
}

// A refused request: exit status 2 and a standard error starting with `message`.
inline void expectRefused(const std::string& args, const std::string& message, const std::string& environment = "") {
  const Run run = runFlashbch(args, environment);
  EXPECT_EQ(run.status, 2) << args;
  EXPECT_EQ(run.err.substr(0, message.size()), message) << args << ": " << run.err;
}

// Rows of a CSV file without quoted fields, as column name -> text.
inline std::vector<std::map<std::string, std::string>> readCsv(const std::string& path) {
  std::istringstream in(qfbtest::readFile(path));
  std::vector<std::map<std::string, std::string>> rows;
  std::vector<std::string> header;
  for (std::string line; std::getline(in, line);) {
    std::vector<std::string> fields;
    std::istringstream cells(line);
    for (std::string cell; std::getline(cells, cell, ',');) fields.push_back(cell);
    if (header.empty()) {
      header = fields;
      continue;
    }
    std::map<std::string, std::string> row;
    for (size_t i = 0; i < header.size() && i < fields.size(); ++i) row[header[i]] = fields[i];
    rows.push_back(row);
  }
  return rows;
}

}  // namespace flashbchtest
