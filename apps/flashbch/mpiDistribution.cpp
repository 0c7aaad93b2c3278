#include "mpiDistribution.h"

#include <mpi.h>

#include <climits>
#include <cstdio>
#include <vector>

namespace flashbch {

MpiDistribution::MpiDistribution() {
  int provided = 0;
  MPI_Init_thread(nullptr, nullptr, MPI_THREAD_FUNNELED, &provided);
  MPI_Comm_set_errhandler(MPI_COMM_WORLD, MPI_ERRORS_RETURN);
  check(MPI_Comm_rank(MPI_COMM_WORLD, &rank_), "MPI_Comm_rank");
  check(MPI_Comm_size(MPI_COMM_WORLD, &size_), "MPI_Comm_size");
  if (provided < MPI_THREAD_FUNNELED) abort("MPI does not support threads calling it from one thread only", 1);
}

MpiDistribution::~MpiDistribution() { MPI_Finalize(); }

void MpiDistribution::check(int code, const char* call) {
  if (code == MPI_SUCCESS) return;
  char text[MPI_MAX_ERROR_STRING];
  int length = 0;
  MPI_Error_string(code, text, &length);
  abort("rank " + std::to_string(rank_) + ": " + call + " failed: " + std::string(text, static_cast<size_t>(length)) +
            " (another rank has probably died; see the launcher's report)",
        1);
}

void MpiDistribution::sum(std::int64_t* values, std::size_t count) {
  check(MPI_Allreduce(MPI_IN_PLACE, values, static_cast<int>(count), MPI_INT64_T, MPI_SUM, MPI_COMM_WORLD),
        "MPI_Allreduce");
}

void MpiDistribution::sum(double* values, std::size_t count) {
  // Gathered and added in rank order, rather than reduced in whatever order
  // the library's algorithm picks for this job size and message length.
  std::vector<double> all(count * static_cast<size_t>(size_));
  check(MPI_Allgather(values, static_cast<int>(count), MPI_DOUBLE, all.data(), static_cast<int>(count), MPI_DOUBLE,
                      MPI_COMM_WORLD),
        "MPI_Allgather");
  for (size_t i = 0; i < count; ++i) {
    double total = 0.0;
    for (size_t r = 0; r < static_cast<size_t>(size_); ++r) total += all[r * count + i];
    values[i] = total;
  }
}

bool MpiDistribution::broadcast(bool value) {
  int flag = value ? 1 : 0;
  check(MPI_Bcast(&flag, 1, MPI_INT, 0, MPI_COMM_WORLD), "MPI_Bcast");
  return flag != 0;
}

std::string MpiDistribution::broadcast(const std::string& text) {
  std::int64_t length = static_cast<std::int64_t>(text.size());
  check(MPI_Bcast(&length, 1, MPI_INT64_T, 0, MPI_COMM_WORLD), "MPI_Bcast");
  if (length > INT_MAX) abort("a broadcast of " + std::to_string(length) + " bytes is too long", 1);
  std::string copy = rank_ == 0 ? text : std::string(static_cast<size_t>(length), '\0');
  check(MPI_Bcast(copy.data(), static_cast<int>(length), MPI_CHAR, 0, MPI_COMM_WORLD), "MPI_Bcast");
  return copy;
}

Distribution::Failure MpiDistribution::failedRank(bool failed, const std::string& message) {
  int mine = failed ? rank_ : size_, lowest = size_;
  check(MPI_Allreduce(&mine, &lowest, 1, MPI_INT, MPI_MIN, MPI_COMM_WORLD), "MPI_Allreduce");
  if (lowest == size_) return {};
  // The failed rank's message reaches every rank, rank 0 above all.
  std::int64_t length = rank_ == lowest ? static_cast<std::int64_t>(message.size()) : 0;
  check(MPI_Bcast(&length, 1, MPI_INT64_T, lowest, MPI_COMM_WORLD), "MPI_Bcast");
  std::string text = rank_ == lowest ? message : std::string(static_cast<size_t>(length), '\0');
  check(MPI_Bcast(text.data(), static_cast<int>(length), MPI_CHAR, lowest, MPI_COMM_WORLD), "MPI_Bcast");
  return {lowest, text};
}

void MpiDistribution::abort(const std::string& message, int status) {
  std::fflush(stdout);
  std::fprintf(stderr, "flashbch: %s\n", message.c_str());
  std::fflush(stderr);
  MPI_Abort(MPI_COMM_WORLD, status);
  std::_Exit(status);  // MPI_Abort does not return; this is for the compiler
}

}  // namespace flashbch
