// Reading and checking NAND cell model files; see the header.
#include "nandModelFile.h"

#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <stdexcept>

#include "usageError.h"

namespace flashbch {

namespace {

using nlohmann::json;

class FieldReader {
 public:
  explicit FieldReader(std::string origin) : origin(std::move(origin)) {}

  [[noreturn]] void fail(const std::string& field, const std::string& problem) const {
    throw UsageError(origin + ": field '" + field + "' " + problem);
  }
  const json& member(const json& object, const std::string& key, const std::string& path) const {
    if (!object.is_object()) fail(path, "must be an object");
    const auto at = object.find(key);
    if (at == object.end()) fail(path.empty() ? key : path + "." + key, "is missing");
    return *at;
  }
  double number(const json& value, const std::string& path) const {
    if (!value.is_number()) fail(path, "must be a number");
    const double v = value.get<double>();
    if (!std::isfinite(v)) fail(path, "is not a finite number");
    return v;
  }
  double number(const json& object, const std::string& key, const std::string& path) const {
    return number(member(object, key, path), path.empty() ? key : path + "." + key);
  }
  std::vector<double> numbers(const json& value, const std::string& path) const {
    if (!value.is_array()) fail(path, "must be a list of numbers");
    std::vector<double> out;
    for (size_t i = 0; i < value.size(); ++i) out.push_back(number(value[i], path + "[" + std::to_string(i) + "]"));
    return out;
  }
  void onlyKeys(const json& object, const std::set<std::string>& allowed, const std::string& path) const {
    for (const auto& item : object.items())
      if (!allowed.count(item.key())) fail(path.empty() ? item.key() : path + "." + item.key(), "is not known");
  }

 private:
  std::string origin;
};

}  // namespace

CellParameters parseCellModel(const std::string& text, const std::string& origin) {
  json root;
  try {
    root = json::parse(text);
  } catch (const json::exception& e) {
    // Numbers beyond a double (1e999) end up here too: JSON has no infinities.
    throw UsageError(origin + ": not valid JSON or a number out of range (" + e.what() + ")");
  }
  const FieldReader in(origin);
  if (!root.is_object()) throw UsageError(origin + ": the model must be a JSON object");
  in.onlyKeys(root, {"cell", "description", "voltage_range", "states", "default_refs", "wear", "retention"}, "");

  CellParameters p;
  const json& cell = in.member(root, "cell", "");
  if (!cell.is_string()) in.fail("cell", "must be \"slc\", \"mlc\" or \"tlc\"");
  try {
    p.bitsPerCell = CellModel::bitsOfCellName(cell.get<std::string>());
  } catch (const std::invalid_argument& e) {
    throw UsageError(origin + ": " + e.what());
  }
  if (root.contains("description") && !root["description"].is_string()) in.fail("description", "must be text");

  const std::vector<double> range = in.numbers(in.member(root, "voltage_range", ""), "voltage_range");
  if (range.size() != 2) in.fail("voltage_range", "must hold two numbers, min and max");
  p.voltageMin = range[0];
  p.voltageMax = range[1];

  const json& states = in.member(root, "states", "");
  if (!states.is_array()) in.fail("states", "must be a list of {\"mean\", \"sigma\"} objects");
  for (size_t s = 0; s < states.size(); ++s) {
    const std::string path = "states[" + std::to_string(s) + "]";
    in.onlyKeys(states[s], {"mean", "sigma"}, path);
    p.states.push_back({in.number(states[s], "mean", path), in.number(states[s], "sigma", path)});
  }
  p.defaultReferences = in.numbers(in.member(root, "default_refs", ""), "default_refs");

  const json& wear = in.member(root, "wear", "");
  in.onlyKeys(wear, {"a", "alpha"}, "wear");
  p.wearScale = in.number(wear, "a", "wear");
  p.wearExponent = in.number(wear, "alpha", "wear");

  const json& retention = in.member(root, "retention", "");
  in.onlyKeys(retention, {"x0", "tau0_hours", "k_fresh", "k_wear", "beta"}, "retention");
  p.retentionOrigin = in.number(retention, "x0", "retention");
  p.retentionTau0Hours = in.number(retention, "tau0_hours", "retention");
  p.retentionRateFresh = in.number(retention, "k_fresh", "retention");
  p.retentionRateWear = in.number(retention, "k_wear", "retention");
  p.retentionWearExponent = in.number(retention, "beta", "retention");
  return p;
}

CellModel loadCellModel(const std::string& cell, const std::string& modelPath) {
  std::string text, origin;
  if (!modelPath.empty()) {
    std::ifstream file(modelPath, std::ios::binary);
    if (!file) throw UsageError("--model " + modelPath + ": cannot be read");
    std::ostringstream content;
    content << file.rdbuf();
    text = content.str();
    origin = "--model " + modelPath;
  } else {
    try {
      CellModel::bitsOfCellName(cell);
    } catch (const std::invalid_argument& e) {
      throw UsageError(e.what());
    }
    text = builtInModelText(cell);
    origin = "built-in " + cell + " model";
  }
  try {
    return CellModel(parseCellModel(text, origin));
  } catch (const std::invalid_argument& e) {
    throw UsageError(origin + ": " + e.what());
  }
}

}  // namespace flashbch
