// Runs programs under the MPI launcher with 1, 2 and 3 ranks (more ranks
// than cores are allowed, and running as root, as CI does, is allowed):
// the distribution layer's probe, and flashbch simulate, whose JSON must
// not depend on the number of ranks, and which must survive a dead rank
// through its checkpoint.
#include <unistd.h>

#include <cstdio>
#include <gtest/gtest.h>

#include "apps/flashbchRunner.h"
#include "apps/tableJson.h"
#include "support/testutil.h"

namespace {

using Outcome = flashbchtest::Run;
using flashbchtest::tableJson;

std::string launcher(int ranks, const std::string& exported = "") {
  return std::string("'") + FLASHBCH_MPIEXEC + "' -np " + std::to_string(ranks) + " --oversubscribe" +
         (::geteuid() == 0 ? " --allow-run-as-root" : "") + (exported.empty() ? "" : " -x " + exported);
}

Outcome runUnderMpi(int ranks, const std::string& program, const std::string& args) {
  return flashbchtest::runFlashbch(args, launcher(ranks), program);
}

TEST(MpiRun, CollectiveStepsAgreeOnEveryRank) {
  qfbtest::ScratchDir scratch;
  for (int ranks : {1, 2, 3}) {
    const Outcome run = runUnderMpi(ranks, DISTRIBUTION_PROBE, "");
    ASSERT_EQ(run.status, 0) << run.err;
    // Doubles add in rank order: 0.1 + 0.2 + 0.3 rounds as a program adding
    // them left to right does, and 1e16 + 1 + 1 loses both ones.
    double tenths = 0.0, big = 0.0;
    for (int r = 0; r < ranks; ++r) tenths += 0.1 * (r + 1), big += r == 0 ? 1e16 : 1.0;
    char expected[256];
    std::snprintf(expected, sizeof expected,
                  "size %d counts %d %d %lld reals %a %a broadcast 1 from rank 0 shares 10 mismatches 0\n", ranks,
                  ranks, ranks * (ranks - 1) / 2, (1LL << 40) * ranks + ranks * (ranks - 1) / 2, tenths, big);
    EXPECT_EQ(run.out, expected);
  }
}

TEST(MpiRun, AFailedRankIsNamedAndEndsTheJob) {
  qfbtest::ScratchDir scratch;
  const Outcome run = runUnderMpi(3, DISTRIBUTION_PROBE, "fail 2");
  EXPECT_NE(run.status, 0);
  EXPECT_NE(run.err.find("flashbch: rank 2: disk full; ending the job\n"), std::string::npos) << run.err;
  EXPECT_EQ(run.out, "");
}

TEST(MpiRun, TheTableDoesNotDependOnRanksOrThreads) {
  qfbtest::ScratchDir scratch;
  for (const std::string& sweep : {flashbchtest::kMonteCarloSweep, flashbchtest::kStratifiedSweep}) {
    ASSERT_EQ(flashbchtest::runFlashbch(sweep + " --threads 2 --json plain.json").status, 0) << sweep;
    for (int ranks : {1, 2, 3}) {
      const auto run = flashbchtest::runFlashbch(sweep + " --threads 1 --json ranks.json", launcher(ranks));
      EXPECT_EQ(run.status, 0) << ranks << " ranks: " << run.err;
      EXPECT_EQ(tableJson("ranks.json"), tableJson("plain.json")) << sweep << ", " << ranks << " ranks";
      EXPECT_NE(run.out.find(std::to_string(ranks) + (ranks == 1 ? " rank " : " ranks ")), std::string::npos);
    }
  }
}

// Rank 1 fails after its third round, killed (SIGKILL: only the launcher
// can tell) or by an exception in its simulation (it names itself); rank 0
// has saved every round, and the job resumes with another number of ranks.
TEST(MpiRun, AFailedRankIsNamedAndTheCheckpointResumes) {
  qfbtest::ScratchDir scratch;
  const std::string sweep = flashbchtest::kMonteCarloSweep;
  ASSERT_EQ(flashbchtest::runFlashbch(sweep + " --json whole.json").status, 0);
  const struct {
    int signal;
    const char* report;
  } faults[] = {{9, "rank 1"}, {0, "flashbch: rank 1: test fault after round 3\n"}};
  for (const auto& fault : faults) {
    std::remove("run.ckpt");
    const auto failed = flashbchtest::runFlashbch(
        sweep + " --checkpoint run.ckpt --checkpoint-every 0.001",
        "FLASHBCH_TEST_RAISE=1:3:" + std::to_string(fault.signal) + " " + launcher(2, "FLASHBCH_TEST_RAISE"));
    EXPECT_NE(failed.status, 0);
    EXPECT_NE(failed.err.find(fault.report), std::string::npos) << failed.err;
    const auto resumed = flashbchtest::runFlashbch(sweep + " --resume run.ckpt --json resumed.json", launcher(3));
    EXPECT_EQ(resumed.status, 0) << resumed.err;
    EXPECT_EQ(tableJson("resumed.json"), tableJson("whole.json")) << fault.signal;
  }
}

// SIGINT or SIGTERM to the launcher itself: Open MPI's mpirun sends the
// ranks SIGCONT, SIGTERM odls_base_sigkill_timeout seconds later and SIGKILL
// as long again after that (5 s here, so that a loaded machine still has
// time to save). The ranks stop after the same batch, and rank 0 saves the
// checkpoint and writes the finished points. The signal goes out once the
// first periodic checkpoint shows the ranks at work, however long MPI took
// to start them; the run would take far longer. (That the way out saves
// the checkpoint too is shown single-process, where no periodic one is due.)
TEST(MpiRun, ASignalToTheLauncherSavesTheCheckpoint) {
  qfbtest::ScratchDir scratch;
  const std::string sweep = "simulate --layout 2x1024 --t 4 --channel bsc --rber 1.5e-3,2e-3 --max-fe 1000000000 "
                            "--max-frames 1000000000 --threads 1 --quiet";
  for (const char* signal : {"TERM", "INT"}) {
    std::remove("run.ckpt");
    std::remove("stopped.json");
    const std::string script =
        "(" + launcher(2) + " --mca odls_base_sigkill_timeout 5 '" + FLASHBCH_BINARY + "' " + sweep +
        " --checkpoint run.ckpt --checkpoint-every 0.2 --json stopped.json >stdout.txt 2>stderr.txt </dev/null & "
        "pid=$!; i=0; while [ ! -s run.ckpt ] && [ $i -lt 600 ]; do sleep 0.1; i=$((i + 1)); done; "
        "kill -" + signal + " $pid; wait $pid; echo $? >status.txt)";
    ASSERT_EQ(std::system(script.c_str()), 0);
    const std::string err = qfbtest::readFile("stderr.txt"), saved = qfbtest::readFile("run.ckpt");
    EXPECT_NE(qfbtest::readFile("status.txt"), "0\n") << signal;
    EXPECT_NE(err.find("flashbch simulate: stopped by signal 15; 0 finished points written, and the checkpoint\n"),
              std::string::npos)
        << signal << ": " << err;
    EXPECT_NE(qfbtest::readFile("stopped.json").find("\"points\": []"), std::string::npos) << signal;
    // A whole file, holding the running point's rounds.
    EXPECT_NE(saved.find("\npoint 0 running rounds "), std::string::npos) << saved;
    EXPECT_EQ(saved.rfind("\ncrc32 "), saved.size() - 16) << saved;
  }
}

}  // namespace
