// The JSON that `flashbch simulate --json` writes, without what may differ
// between runs of the same settings: the seconds each point took and the
// number of ranks that ran it; and the sweeps that stop and resume it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "support/testutil.h"

namespace flashbchtest {

// Small codes, so that a point takes several rounds in a fraction of a
// second, for both estimators.
const std::string kMonteCarloSweep =
    "simulate --layout 2x1024 --t 4 --channel bsc --rber 2e-3,3e-3 --max-fe 50 --max-frames 4000 --quiet";
const std::string kStratifiedSweep =
    "simulate --layout 2x1024 --t 4 --channel bsc --rber 1e-3,2e-3 --estimator stratified --max-fe 40 "
    "--max-frames 2000 --quiet";

inline std::string tableJson(const std::string& path) {
  const std::string text = qfbtest::readFile(path);
  if (text.empty()) return "(no file " + path + ")";
  nlohmann::ordered_json document = nlohmann::ordered_json::parse(text);
  document.erase("ranks");
  for (auto& point : document["points"]) point.erase("seconds");
  return document.dump(1);
}

}  // namespace flashbchtest
