// flashbch ldpc end to end: the BCH parity-check matrix, its generator and
// the facts of info read back and checked with the library's own matrix
// arithmetic; refused requests exit with status 2.
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "Tools/mymatrix/alist.h"
#include "Tools/mymatrix/tannerCycles.h"
#include "flashbchRunner.h"

namespace {

using flashbchtest::runFlashbch;

tools::SparseBinaryMatrix readBack(const std::string& path) {
  std::ifstream in(path);
  return tools::readAlist(in);
}

TEST(LdpcCommand, BchMatrixGeneratorAndInfoAgree) {
  qfbtest::ScratchDir dir;
  auto run = runFlashbch("ldpc bch --data-bits 40 --t 2 -o h.alist --json bch.json");
  ASSERT_EQ(run.status, 0) << run.err;
  const tools::BinaryMatrix h = readBack("h.alist").toDense();
  EXPECT_EQ(h.rows(), 30u);
  EXPECT_EQ(h.cols(), 70u);
  run = runFlashbch("ldpc generator h.alist -o g.alist --json g.json");
  ASSERT_EQ(run.status, 0) << run.err;
  const tools::BinaryMatrix g = readBack("g.alist").toDense();
  EXPECT_EQ(g.rows(), 40u);
  EXPECT_EQ(g.rank(), 40u);
  EXPECT_EQ((g * h.transposed()).weight(), 0u);
  const auto gj = nlohmann::json::parse(qfbtest::readFile("g.json"));
  EXPECT_EQ(gj["k"], 40);
  EXPECT_EQ(gj["information_columns"].size(), 40u);

  // The Heawood graph (lines {i, i+1, i+3} of the Fano plane) has girth 6 and 28 six-cycles.
  std::vector<std::pair<size_t, size_t>> ones;
  for (size_t i = 0; i < 7; ++i)
    for (size_t d : {0, 1, 3}) ones.emplace_back(i, (i + d) % 7);
  const tools::SparseBinaryMatrix fano(7, 7, ones);
  std::ostringstream text;
  tools::writeAlist(text, fano);
  qfbtest::writeFile("fano.alist", text.str());
  run = runFlashbch("ldpc info fano.alist --json info.json");
  ASSERT_EQ(run.status, 0) << run.err;
  const auto info = nlohmann::json::parse(qfbtest::readFile("info.json"));
  EXPECT_EQ(info["n"], 7);
  EXPECT_EQ(info["m"], 7);
  EXPECT_EQ(info["rank"], 4);  // the (7, 3) simplex code's dual: rank 4
  EXPECT_EQ(info["girth"], 6);
  EXPECT_EQ(info["cycles"]["6"], 28);
  for (const auto& [length, count] : tools::countShortCycles(fano).counts)
    EXPECT_EQ(info["cycles"][std::to_string(length)], count);
  EXPECT_EQ(info["column_degrees"], nlohmann::json({{"3", 7}}));

  qfbtest::writeFile("tree.alist", "3 2\n2 2\n1 2 1\n2 2\n1\n1 2\n2\n1 2\n2 3\n");
  run = runFlashbch("ldpc info tree.alist --json tree.json");
  ASSERT_EQ(run.status, 0) << run.err;
  const auto tree = nlohmann::json::parse(qfbtest::readFile("tree.json"));
  EXPECT_TRUE(tree["girth"].is_null());
  EXPECT_TRUE(tree["cycles"].empty());
}

TEST(LdpcCommand, RefusedRequestsExitWithStatus2) {
  qfbtest::ScratchDir dir;
  qfbtest::writeFile("cut.alist", "3 2\n2 2\n1 2 1\n2 2\n1 0\n1 2\n");
  qfbtest::writeFile("full.alist", "1 1\n1 1\n1\n1\n1\n1\n");
  const struct {
    std::string args, message;
  } cases[] = {
      {"ldpc info cut.alist",
       "flashbch ldpc: cut.alist: alist line 5: file ends before the 4 ones of the index lists"},
      {"ldpc info missing.alist", "flashbch ldpc: missing.alist: cannot open the input file"},
      {"ldpc generator full.alist -o g.alist", "flashbch ldpc: full.alist: the matrix has full column rank"},
      {"ldpc bch --data-bits 100 --t 129 -o h.alist", "flashbch ldpc: --t: 129 is outside the accepted range 1 .. 128"},
      {"ldpc bch --data-bits 32000 --t 60 -o h.alist",
       "flashbch ldpc: --data-bits: 32000 is outside the accepted range 1 .. 31867 for t = 60"},
      {"ldpc", "flashbch: A subcommand is required"},
  };
  for (const auto& c : cases) flashbchtest::expectRefused(c.args, c.message);
}

}  // namespace
