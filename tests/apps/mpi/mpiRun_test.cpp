// Runs programs under the MPI launcher with 1, 2 and 3 ranks (more ranks
// than cores are allowed, and running as root, as CI does, is allowed).
#include <unistd.h>

#include <cstdio>
#include <gtest/gtest.h>

#include "apps/flashbchRunner.h"
#include "support/testutil.h"

namespace {

using Outcome = flashbchtest::Run;

std::string launcher(int ranks) {
  return std::string("'") + FLASHBCH_MPIEXEC + "' -np " + std::to_string(ranks) + " --oversubscribe" +
         (::geteuid() == 0 ? " --allow-run-as-root" : "");
}

Outcome runUnderMpi(int ranks, const std::string& program, const std::string& args) {
  const std::string command = launcher(ranks) + " '" + program + "' " + args + " >stdout.txt 2>stderr.txt </dev/null";
  const int raw = std::system(command.c_str());
  Outcome run;
  run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  run.out = qfbtest::readFile("stdout.txt");
  run.err = qfbtest::readFile("stderr.txt");
  return run;
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

}  // namespace
