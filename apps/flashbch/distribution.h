// Distribution: the ranks of a job that share one simulation, and the few
// collective steps the simulation needs from them.
//
// A point is simulated in rounds of a fixed number of blocks. Each rank
// takes a contiguous share of every round (share()), tallies it with its own
// threads, and the per-round tallies are summed over the ranks (sum()).
// Block b's randomness comes from (seed, point, b) alone and the counts are
// integers, so the round total, and therefore every stop decision taken on
// it, is the same whatever the number of ranks. Communication is one small
// reduction per round, never per block.
//
// Two implementations: SingleProcessDistribution (one rank, every step a
// no-op) and, in builds with MPI, MpiDistribution. startDistribution()
// picks MPI only when the process was started by an MPI launcher (mpirun,
// srun), so a plain `flashbch simulate` never initialises MPI.
//
// Every rank must make the same sequence of collective calls. An error that
// only one rank sees (a file it cannot write, an exception) must end the job
// through abort() or be shared with failedRank(), never by returning early.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace flashbch {

struct BlockRange {
  std::int64_t begin = 0;
  std::int64_t end = 0;  // one past the last
  std::int64_t size() const { return end - begin; }
};

class Distribution {
 public:
  virtual ~Distribution() = default;

  virtual int rank() const = 0;
  virtual int size() const = 0;
  bool isRoot() const { return rank() == 0; }

  // Element-wise sums over all ranks, in place; every rank gets the totals.
  // Integer sums are exact, so they do not depend on the number of ranks.
  // Double sums add the ranks' values in rank order: the same on every
  // rank and in every run with the same number of ranks, but a different
  // split of the same terms may round differently.
  virtual void sum(std::int64_t* values, std::size_t count) = 0;
  virtual void sum(double* values, std::size_t count) = 0;

  // Rank 0's value, on every rank.
  virtual bool broadcast(bool value) = 0;
  virtual std::string broadcast(const std::string& text) = 0;

  // The lowest rank that passed failed = true, with the message it passed,
  // on every rank; -1 when none did. Lets rank 0 save what is safe before
  // the job ends with a message naming the failed rank.
  struct Failure {
    int rank = -1;
    std::string message;
  };
  virtual Failure failedRank(bool failed, const std::string& message) = 0;

  // Ends the whole job at once, from any one rank: "flashbch: message" on
  // standard error and the given exit status. A message about one rank
  // names it.
  [[noreturn]] virtual void abort(const std::string& message, int status) = 0;

  // This rank's contiguous share of the blocks [first, first + count): the
  // first count % size ranks take one block more than the others.
  BlockRange share(std::int64_t first, std::int64_t count) const;
};

// One rank, nothing to exchange.
class SingleProcessDistribution : public Distribution {
 public:
  int rank() const override { return 0; }
  int size() const override { return 1; }
  void sum(std::int64_t*, std::size_t) override {}
  void sum(double*, std::size_t) override {}
  bool broadcast(bool value) override { return value; }
  std::string broadcast(const std::string& text) override { return text; }
  Failure failedRank(bool failed, const std::string& message) override;
  [[noreturn]] void abort(const std::string& message, int status) override;
};

// True when an MPI launcher started this process (its environment names a
// rank); the rank it names, or 0. Known before MPI is initialised, so that
// only rank 0 reports a usage error every rank finds.
bool launchedByMpi();
int launchedRank();

// True in builds with MPI.
bool builtWithMpi();

// MPI when built with it and launchedByMpi(), one process otherwise. MPI
// is finalised when the returned object is destroyed. Throws UsageError
// when an MPI launcher started a build without MPI.
std::unique_ptr<Distribution> startDistribution();

}  // namespace flashbch
