// Checkpoint and resume through the command line: a run stopped mid-point
// (SIGTERM, which saves on the way out, or SIGKILL, which leaves only the
// periodic checkpoint) and resumed prints exactly the uninterrupted table,
// for both estimators; refused requests leave the checkpoint untouched.
#include <gtest/gtest.h>

#include "flashbchRunner.h"
#include "support/testutil.h"
#include "tableJson.h"

namespace {

using flashbchtest::runFlashbch;
using flashbchtest::tableJson;

// Small codes, so that a point takes several rounds in a fraction of a second.
const char* const kMonteCarlo =
    "simulate --layout 2x1024 --t 4 --channel bsc --rber 2e-3,3e-3 --max-fe 50 --max-frames 4000 --threads 2 --quiet";
const char* const kStratified =
    "simulate --layout 2x1024 --t 4 --channel bsc --rber 1e-3,2e-3 --estimator stratified --max-fe 40 "
    "--max-frames 2000 --threads 2 --quiet";

TEST(SimulateResume, AStoppedRunResumesToTheUninterruptedTable) {
  qfbtest::ScratchDir scratch;
  const struct {
    const char* settings;
    int signal, afterRounds;
  } cases[] = {{kMonteCarlo, 15, 3}, {kMonteCarlo, 9, 3}, {kMonteCarlo, 15, 9}, {kStratified, 15, 1}};
  for (const auto& c : cases) {
    const std::string args = c.settings, label = args + ", signal " + std::to_string(c.signal);
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
  const std::string args = "simulate --layout 2x1024 --t 4 --channel bsc --rber 2e-3 --quiet";
  ASSERT_EQ(runFlashbch(args + " --max-frames 100 --checkpoint run.ckpt").status, 0);
  const std::string saved = qfbtest::readFile("run.ckpt");
  qfbtest::writeFile("cut.ckpt", saved.substr(0, saved.size() / 2));
  const struct {
    std::string args, message;
  } cases[] = {
      {" --resume gone.ckpt", "flashbch simulate: --resume: cannot read gone.ckpt: No such file or directory\n"},
      {" --checkpoint run.ckpt --checkpoint-every 0",
       "flashbch simulate: --checkpoint-every: '0' is not a number of seconds greater than 0\n"},
      {" --max-frames 100 --resume cut.ckpt",
       "flashbch simulate: --resume: cut.ckpt: the file is truncated (its closing checksum line is missing)\n"},
      {" --max-frames 100 --seed 7 --resume run.ckpt",
       "flashbch simulate: --resume: run.ckpt was written with other settings: seed is 1 in the checkpoint, 7 on "
       "the command line\n"},
      {" --max-frames 200 --resume run.ckpt",
       "flashbch simulate: --resume: run.ckpt was written with other settings: max-frames is 100 in the "
       "checkpoint, 200 on the command line\n"},
  };
  for (const auto& c : cases) {
    const auto run = runFlashbch(args + c.args);
    EXPECT_EQ(run.status, 2) << c.args;
    EXPECT_EQ(run.err, c.message) << c.args;
  }
  EXPECT_EQ(qfbtest::readFile("run.ckpt"), saved);
  EXPECT_EQ(qfbtest::readFile("cut.ckpt"), saved.substr(0, saved.size() / 2));
}

}  // namespace
