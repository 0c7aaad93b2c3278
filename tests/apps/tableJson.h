// The JSON that `flashbch simulate --json` writes, without what may differ
// between runs of the same settings: the seconds each point took and the
// number of ranks that ran it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "support/testutil.h"

namespace flashbchtest {

inline std::string tableJson(const std::string& path) {
  const std::string text = qfbtest::readFile(path);
  if (text.empty()) return "(no file " + path + ")";
  nlohmann::ordered_json document = nlohmann::ordered_json::parse(text);
  document.erase("ranks");
  for (auto& point : document["points"]) point.erase("seconds");
  return document.dump(1);
}

}  // namespace flashbchtest
