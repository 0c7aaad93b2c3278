// Checkpoint and resume through the command line: a run stopped mid-point
// (SIGTERM, which saves on the way out, or SIGKILL, which leaves only the
// periodic checkpoint) and resumed prints exactly the uninterrupted table,
// for both estimators; refused requests leave the checkpoint untouched.
#include <gtest/gtest.h>

#include "flashbchRunner.h"
#include "nandModelFile.h"
#include "support/testutil.h"
#include "tableJson.h"

namespace {

using flashbchtest::runFlashbch;
using flashbchtest::kMonteCarloSweep;
using flashbchtest::kStratifiedSweep;
using flashbchtest::tableJson;

TEST(SimulateResume, AStoppedRunResumesToTheUninterruptedTable) {
  qfbtest::ScratchDir scratch;
  const struct {
    std::string settings;
    int signal, afterRounds;
  } cases[] = {
      {kMonteCarloSweep, 15, 3}, {kMonteCarloSweep, 9, 3}, {kMonteCarloSweep, 15, 9}, {kStratifiedSweep, 15, 1}};
  for (const auto& c : cases) {
    const std::string args = c.settings + " --threads 2", label = args + ", signal " + std::to_string(c.signal);
    ASSERT_EQ(runFlashbch(args + " --json whole.json").status, 0) << label;
    std::remove("run.ckpt");
    const std::string hook = "FLASHBCH_TEST_RAISE=0:" + std::to_string(c.afterRounds) + ":" + std::to_string(c.signal);
    const auto stopped = runFlashbch(args + " --checkpoint run.ckpt --checkpoint-every 0.001", hook);
    EXPECT_EQ(stopped.status, 128 + c.signal) << label << ": " << stopped.err;
    ASSERT_NE(qfbtest::readFile("run.ckpt"), "") << label;
    const auto resumed = runFlashbch(args + " --resume run.ckpt --json resumed.json");
    EXPECT_EQ(resumed.status, 0) << label << ": " << resumed.err;
    EXPECT_EQ(tableJson("resumed.json"), tableJson("whole.json")) << label;
    // The finished run's checkpoint reprints the same table.
    EXPECT_EQ(runFlashbch(args + " --resume run.ckpt --json again.json").status, 0);
    EXPECT_EQ(tableJson("again.json"), tableJson("whole.json")) << label;
  }
}

TEST(SimulateResume, RefusesWhatItCannotUse) {
  qfbtest::ScratchDir scratch;
  const std::string bsc = "simulate --layout 2x1024 --t 4 --channel bsc --rber 2e-3 --quiet";
  ASSERT_EQ(runFlashbch(bsc + " --max-frames 100 --checkpoint run.ckpt").status, 0);
  const std::string saved = qfbtest::readFile("run.ckpt");
  qfbtest::writeFile("cut.ckpt", saved.substr(0, saved.size() / 2));
  // NAND runs: on the built-in model, and on a model file that is then
  // edited (its name stays, its parameters change). Every channel setting
  // the JSON records is in the fingerprint too (one list serves both).
  const std::string nand =
      "simulate --layout 1x512 --t 4 --channel nand --pe 1000,3000 --max-frames 20 --quiet --page lower";
  const std::string model = flashbch::builtInModelText("mlc"), edit = "2.275";
  qfbtest::writeFile("m.json", model);
  ASSERT_EQ(runFlashbch(nand + " --cell mlc --retention 1y --checkpoint nand.ckpt").status, 0);
  ASSERT_EQ(runFlashbch(nand + " --model m.json --retention 1y --checkpoint file.ckpt").status, 0);
  const std::string nandSaved = qfbtest::readFile("nand.ckpt");
  qfbtest::writeFile("m.json", model.substr(0, model.find(edit)) + "2.3" + model.substr(model.find(edit) + 5));
  const std::string other = " was written with other settings: ";
  const struct {
    std::string args, message;
  } cases[] = {
      {bsc + " --resume gone.ckpt", "--resume: cannot read gone.ckpt: No such file or directory\n"},
      {bsc + " --checkpoint run.ckpt --checkpoint-every 0",
       "--checkpoint-every: '0' is not a number of seconds greater than 0\n"},
      {bsc + " --max-frames 100 --resume cut.ckpt",
       "--resume: cut.ckpt: the file is truncated (its closing checksum line is missing)\n"},
      {bsc + " --max-frames 100 --seed 7 --resume run.ckpt",
       "--resume: run.ckpt" + other + "seed is 1 in the checkpoint, 7 on the command line\n"},
      {bsc + " --max-frames 200 --resume run.ckpt",
       "--resume: run.ckpt" + other + "max-frames is 100 in the checkpoint, 200 on the command line\n"},
      {bsc + " --max-frames 100 --decoder chase --resume run.ckpt",
       "--resume: run.ckpt" + other + "decoder is hard in the checkpoint, chase on the command line\n"},
      {"simulate --layout 1x512 --t 4 --channel nand --pe 1000,3000 --max-frames 20 --cell mlc --page upper "
       "--retention 1y --resume nand.ckpt",
       "--resume: nand.ckpt" + other + "page is lower in the checkpoint, upper on the command line\n"},
      {nand + " --model m.json --retention 1y --resume file.ckpt", "--resume: file.ckpt" + other + "model-crc32 is "},
      {"simulate --layout 1x512 --t 4 --channel nand --cell mlc --page lower --pe 1000 --retention 1y,2y "
       "--max-frames 20 --resume nand.ckpt",
       "--resume: nand.ckpt" + other + "the checkpoint has pe where this command line has retention-hours\n"},
  };
  for (const auto& c : cases) {
    const auto run = runFlashbch(c.args);
    EXPECT_EQ(run.status, 2) << c.args;
    EXPECT_EQ(run.err.substr(0, 19 + c.message.size()), "flashbch simulate: " + c.message) << c.args;
  }
  EXPECT_EQ(qfbtest::readFile("run.ckpt"), saved);
  EXPECT_EQ(qfbtest::readFile("cut.ckpt"), saved.substr(0, saved.size() / 2));
  EXPECT_EQ(qfbtest::readFile("nand.ckpt"), nandSaved);
}

}  // namespace
