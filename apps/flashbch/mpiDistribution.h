// MpiDistribution: the ranks of MPI_COMM_WORLD.
//
// MPI is initialised with MPI_THREAD_FUNNELED: worker threads never call
// MPI, only the thread that created this object does. MPI_COMM_WORLD's error
// handler is MPI_ERRORS_RETURN, so a failed call comes back here and ends the
// job with a message saying which call failed on which rank, instead of
// Open MPI's default handler killing the job with a generic report.
//
// What can and cannot be told:
// - A rank that fails in flashbch's own code (an exception, a file it cannot
//   write) reports through failedRank(); every rank learns the lowest failed
//   rank and its message, so rank 0 can save a checkpoint of the rounds
//   completed by all ranks before the job ends naming that rank.
// - A rank that dies outright (killed, crashed, out of memory) cannot report
//   anything. Plain MPI offers no way to tell which peer vanished: the
//   launcher notices the lost process, prints its rank and PID ("mpirun
//   noticed that process rank 1 ... exited on signal 9") and ends the job.
//   A collective call that returns an error before that is reported with
//   MPI's error text. Checkpoints are replaced by rename only, so the last
//   one written is always whole.
#pragma once

#include "distribution.h"

namespace flashbch {

class MpiDistribution final : public Distribution {
 public:
  MpiDistribution();
  ~MpiDistribution() override;
  MpiDistribution(const MpiDistribution&) = delete;
  MpiDistribution& operator=(const MpiDistribution&) = delete;

  int rank() const override { return rank_; }
  int size() const override { return size_; }
  void sum(std::int64_t* values, std::size_t count) override;
  void sum(double* values, std::size_t count) override;
  bool broadcast(bool value) override;
  std::string broadcast(const std::string& text) override;
  Failure failedRank(bool failed, const std::string& message) override;
  [[noreturn]] void abort(const std::string& message, int status) override;

 private:
  void check(int code, const char* call);
  int rank_ = 0;
  int size_ = 1;
};

}  // namespace flashbch
