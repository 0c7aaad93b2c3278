// flashbch nand and its model files: every field of a model checked, the
// shipped models sane, the JSON and CSV rows consistent with the analytic
// tools, retention units, and refused requests.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "blockLayout.h"
#include "codeFacts.h"
#include "flashbchRunner.h"
#include "nand/pageReadModel.h"
#include "nandCommand.h"
#include "nandModelFile.h"

namespace {

using flashbchtest::messageOf;
using nlohmann::json;

void writeText(const std::string& path, const std::string& text) { std::ofstream(path) << text; }

TEST(NandModelFile, EveryFieldIsCheckedAndNamed) {
  qfbtest::ScratchDir dir;
  const json tlc = json::parse(flashbch::builtInModelText("tlc"));
  // Each case adds or replaces one field of the built-in model at a JSON
  // pointer (a null value removes it), or, without a pointer, is the file.
  struct Case {
    std::string pointer;
    json value;
    std::string message;
  } cases[] = {
      {"/states", nullptr, "field 'states' is missing"},
      {"/states/1/sigma", nullptr, "field 'states[1].sigma' is missing"},
      {"/states/1/sigma", "wide", "field 'states[1].sigma' must be a number"},
      {"/retention/tau0", 1, "field 'retention.tau0' is not known"},
      {"/voltage_range", json::array({1}), "field 'voltage_range' must hold two numbers, min and max"},
      {"/cell", "qlc", "unknown cell type 'qlc': use slc, mlc or tlc"},
      {"/states/0/sigma", -0.1, "state 0: sigma must be a finite number > 0"},
      {"/default_refs/0", nullptr, "a tlc cell needs 7 read references, got 6"},
      {"/wear/alpha", 3, "wear exponent alpha must lie in 0 .. 2"},
      {"", "{\"cell\": \"slc\", \"voltage_range\": [-4, 1e999]}", "not valid JSON or a number out of range"},
      {"", "{\"cell\": ", "not valid JSON"},
  };
  for (const Case& c : cases) {
    const json edit = {{"op", c.value.is_null() ? "remove" : "add"}, {"path", c.pointer}, {"value", c.value}};
    writeText("m.json", c.pointer.empty() ? c.value.get<std::string>() : tlc.patch(json::array({edit})).dump());
    const std::string message = messageOf([] { flashbch::loadCellModel("tlc", "m.json"); });
    EXPECT_EQ(message.substr(0, 16 + c.message.size()), "--model m.json: " + c.message);
  }
}

TEST(NandModelFile, ShippedModelsReadBackTheirDataAndWearOut) {
  for (const char* cell : {"slc", "mlc", "tlc"}) {
    const CellModel model = flashbch::loadCellModel(cell, "");
    EXPECT_EQ(CellModel::cellName(model.bitsPerCell()), cell);
    for (int p = 0; p < model.pages(); ++p) {
      const PageReadModel fresh(model, p, 0, 0), worn(model, p, 3000, 8760);
      const auto& refs = model.parameters().defaultReferences;
      EXPECT_LT(fresh.rber(fresh.pageReferencesOf(refs)), 1e-4) << cell << " " << model.pageName(p);
      EXPECT_GT(worn.rber(worn.pageReferencesOf(refs)), 10 * fresh.rber(fresh.pageReferencesOf(refs)));
    }
  }
}

TEST(NandCommand, RowsCarryTheStableKeysAndTheSmallestSufficientT) {
  qfbtest::ScratchDir dir;
  const auto run = flashbchtest::runFlashbch(
      "nand --cell mlc --pe 0,3000 --retention 0,1y --layout 2x4096 --target-uber 1e-13 --json n.json --csv n.csv");
  ASSERT_EQ(run.status, 0) << run.err;
  const json doc = json::parse(qfbtest::readFile("n.json"));
  const auto& rows = doc.at("rows");
  ASSERT_EQ(rows.size(), 8u);
  EXPECT_EQ(flashbchtest::readCsv("n.csv").size(), 8u);
  const flashbch::BlockLayout base = flashbch::makeLayout({4096, 4096}, 1, false);
  for (const json& row : rows) {
    SCOPED_TRACE(row.dump());
    EXPECT_EQ(row.at("cell"), "mlc");
    const bool lower = row.at("page") == "lower";
    EXPECT_EQ(row.at("optimal_refs").size(), lower ? 1u : 2u);
    const double hours = row.at("retention_hours"), pe = row.at("pe");
    EXPECT_TRUE(hours == 0.0 || hours == 8760.0);
    EXPECT_TRUE(pe == 0.0 || pe == 3000.0);
    EXPECT_LE(row.at("rber_optimal_refs").get<double>(), row.at("rber_default_refs").get<double>());
    for (const char* which : {"default", "optimal"}) {
      const double rber = row.at(std::string("rber_") + which + "_refs");
      const int t = row.at(std::string("t_") + which + "_refs");
      EXPECT_LE(flashbch::log10Uber(flashbch::makeLayout(base.dataBits, t, false), rber), -13.0);
      if (t > 1) {
        EXPECT_GT(flashbch::log10Uber(flashbch::makeLayout(base.dataBits, t - 1, false), rber), -13.0);
      }
    }
  }
}

TEST(NandCommand, RetentionTakesUnits) {
  struct Case {
    std::string text;
    std::vector<double> hours;
  } cases[] = {{"8760", {8760}}, {"1y,2d,3w,5h", {8760, 48, 504, 5}}, {"1:1:3d", {24, 48, 72}}, {"0", {0}}};
  for (const Case& c : cases) EXPECT_EQ(flashbch::parseRetentionSweep("--retention", c.text), c.hours) << c.text;
}

TEST(NandCommand, BadRequestsAreRefused) {
  qfbtest::ScratchDir dir;
  struct Case {
    std::string args, message;
  } cases[] = {
      {"nand --cell mlc --page middle", "flashbch nand: --page: unknown page 'middle' for a mlc cell: use lower or upper"},
      {"nand --pe -5", "flashbch nand: --pe: "},
      {"nand --retention -1", "flashbch nand: --retention: "},
      {"nand --retention 5x", "flashbch nand: --retention: cannot read"},
      {"nand --model nope.json", "flashbch nand: --model nope.json: cannot be read"},
      {"nand --target-uber 2", "flashbch nand: --target-uber: 2 is outside the accepted range (0, 1)"},
      {"nand --pe 10000000 --retention 10000000", "flashbch nand: P/E cycles 10000000 and retention"},
  };
  for (const Case& c : cases) flashbchtest::expectRefused(c.args, c.message);
}

}  // namespace
