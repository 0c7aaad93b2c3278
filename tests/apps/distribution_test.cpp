// The shares of a round: every block of the round goes to exactly one rank,
// in rank order, and the ranks' loads differ by at most one block. MPI is
// started only under a launcher, and a build without it refuses one.
#include "distribution.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "apps/flashbchRunner.h"

namespace {

using namespace flashbch;

class FakeRank : public SingleProcessDistribution {
 public:
  FakeRank(int rank, int size) : rank_(rank), size_(size) {}
  int rank() const override { return rank_; }
  int size() const override { return size_; }

 private:
  int rank_, size_;
};

TEST(Distribution, SharesCoverARoundInRankOrder) {
  for (int size : {1, 2, 3, 7})
    for (std::int64_t count : {0, 1, 2, 6, 7, 100, 1001}) {
      std::int64_t next = 5000, smallest = count, largest = 0;
      for (int rank = 0; rank < size; ++rank) {
        const BlockRange r = FakeRank(rank, size).share(5000, count);
        EXPECT_EQ(r.begin, next) << size << " ranks, " << count << " blocks, rank " << rank;
        next = r.end;
        smallest = std::min(smallest, r.size());
        largest = std::max(largest, r.size());
      }
      EXPECT_EQ(next, 5000 + count) << size << " ranks, " << count << " blocks";
      EXPECT_LE(largest - smallest, 1);
    }
}

TEST(Distribution, StartsMpiOnlyUnderALauncher) {
  EXPECT_EQ(startDistribution()->size(), 1);
  if (builtWithMpi()) return;  // the launcher tests (mpi/) cover this build
  ::setenv("PMI_RANK", "1", 1);
  EXPECT_EQ(launchedRank(), 1);
  EXPECT_EQ(flashbchtest::messageOf([] { startDistribution(); }),
            "started by an MPI launcher, but this flashbch was built without MPI; run it directly, or build it with "
            "Open MPI installed (cmake -DQFB_MPI=ON)");
  ::unsetenv("PMI_RANK");
}

}  // namespace
