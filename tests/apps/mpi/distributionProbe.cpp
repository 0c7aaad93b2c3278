// Runs under an MPI launcher and exercises every collective step of the
// distribution layer. Each rank contributes values derived from its rank;
// rank 0 prints what came back, and the test compares that with the sums
// it works out itself. With "fail R" as argument, rank R reports a failure
// through failedRank and rank 0 ends the job naming it.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "distribution.h"

int main(int argc, char** argv) {
  auto job = flashbch::startDistribution();
  const int rank = job->rank(), size = job->size();
  const int failing = argc == 3 && std::string(argv[1]) == "fail" ? std::atoi(argv[2]) : -1;

  const auto failure = job->failedRank(rank == failing, "rank " + std::to_string(rank) + ": disk full");
  if (failure.rank >= 0) {
    if (job->isRoot()) job->abort(failure.message + "; ending the job", 4);
    job->broadcast(false);  // waits for rank 0, which ends the job instead
  }

  std::int64_t counts[3] = {1, rank, (std::int64_t{1} << 40) + rank};
  job->sum(counts, 3);
  double reals[2] = {0.1 * (rank + 1), rank == 0 ? 1e16 : 1.0};
  job->sum(reals, 2);
  const bool flag = job->broadcast(rank == 0);
  const std::string text = job->broadcast(rank == 0 ? std::string("from rank 0") : std::string());
  const flashbch::BlockRange share = job->share(0, 10);

  // Every rank checks that it got what rank 0 got; rank 0 prints it.
  char line[256];
  std::snprintf(line, sizeof line, "size %d counts %lld %lld %lld reals %a %a broadcast %d %s", size,
                static_cast<long long>(counts[0]), static_cast<long long>(counts[1]),
                static_cast<long long>(counts[2]), reals[0], reals[1], flag ? 1 : 0, text.c_str());
  const std::string mine = line, root = job->broadcast(mine);
  std::int64_t shares[2] = {share.size(), mine == root ? 0 : 1};
  job->sum(shares, 2);
  if (job->isRoot()) std::printf("%s shares %lld mismatches %lld\n", line, static_cast<long long>(shares[0]),
                                 static_cast<long long>(shares[1]));
  return 0;
}
