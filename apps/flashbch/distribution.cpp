#include "distribution.h"

#include <cstdio>
#include <cstdlib>

#include "usageError.h"

#ifdef FLASHBCH_WITH_MPI
#include "mpiDistribution.h"
#endif

namespace flashbch {

BlockRange Distribution::share(std::int64_t first, std::int64_t count) const {
  const std::int64_t ranks = size(), r = rank();
  const std::int64_t base = count / ranks, extra = count % ranks;
  BlockRange range;
  range.begin = first + r * base + (r < extra ? r : extra);
  range.end = range.begin + base + (r < extra ? 1 : 0);
  return range;
}

Distribution::Failure SingleProcessDistribution::failedRank(bool failed, const std::string& message) {
  return failed ? Failure{0, message} : Failure{};
}

void SingleProcessDistribution::abort(const std::string& message, int status) {
  std::fflush(stdout);
  std::fprintf(stderr, "flashbch: %s\n", message.c_str());
  std::fflush(stderr);
  // Worker threads may still run: skip static destructors.
  std::_Exit(status);
}

namespace {

// Open MPI's mpirun, PMIx launchers (srun --mpi=pmix) and PMI-1/2 launchers.
const char* const kRankVariables[] = {"OMPI_COMM_WORLD_RANK", "PMIX_RANK", "PMI_RANK"};

}  // namespace

bool launchedByMpi() {
  for (const char* name : kRankVariables)
    if (std::getenv(name)) return true;
  return false;
}

int launchedRank() {
  for (const char* name : kRankVariables)
    if (const char* value = std::getenv(name)) return std::atoi(value);
  return 0;
}

bool builtWithMpi() {
#ifdef FLASHBCH_WITH_MPI
  return true;
#else
  return false;
#endif
}

std::unique_ptr<Distribution> startDistribution() {
#ifdef FLASHBCH_WITH_MPI
  if (launchedByMpi()) return std::make_unique<MpiDistribution>();
#else
  // Every rank would run the whole job and write the same files.
  if (launchedByMpi())
    throw UsageError("started by an MPI launcher, but this flashbch was built without MPI; run it directly, or build "
                     "it with Open MPI installed (cmake -DQFB_MPI=ON)");
#endif
  return std::make_unique<SingleProcessDistribution>();
}

}  // namespace flashbch
