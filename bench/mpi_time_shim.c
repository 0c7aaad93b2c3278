/* The time each rank spends in MPI communication, by the MPI profiling
 * interface: every collective flashbch calls is wrapped here, timed with
 * MPI_Wtime and passed on to its PMPI_ twin. Loaded with LD_PRELOAD by
 * bench/mpi_speedup.py; at MPI_Finalize each rank appends one line
 * "rank calls communication_seconds total_seconds" to the file named by
 * QFB_MPI_TIME_FILE. Time inside a collective includes waiting for the
 * slowest rank, so it is the whole cost of sharing out the work. */
#include <mpi.h>
#include <stdio.h>
#include <stdlib.h>

static double started, communicating;
static long calls;

#define TIMED(call)                      \
  do {                                   \
    const double t0 = PMPI_Wtime();      \
    const int rc = (call);               \
    communicating += PMPI_Wtime() - t0;  \
    ++calls;                             \
    return rc;                           \
  } while (0)

int MPI_Init_thread(int* argc, char*** argv, int required, int* provided) {
  const int rc = PMPI_Init_thread(argc, argv, required, provided);
  started = PMPI_Wtime();
  return rc;
}

int MPI_Allreduce(const void* in, void* out, int count, MPI_Datatype type, MPI_Op op, MPI_Comm comm) {
  TIMED(PMPI_Allreduce(in, out, count, type, op, comm));
}

int MPI_Allgather(const void* in, int inCount, MPI_Datatype inType, void* out, int outCount,
                  MPI_Datatype outType, MPI_Comm comm) {
  TIMED(PMPI_Allgather(in, inCount, inType, out, outCount, outType, comm));
}

int MPI_Bcast(void* buffer, int count, MPI_Datatype type, int root, MPI_Comm comm) {
  TIMED(PMPI_Bcast(buffer, count, type, root, comm));
}

int MPI_Finalize(void) {
  const double total = PMPI_Wtime() - started;
  int rank = 0;
  PMPI_Comm_rank(MPI_COMM_WORLD, &rank);
  const char* path = getenv("QFB_MPI_TIME_FILE");
  FILE* f = path ? fopen(path, "a") : NULL;
  if (f) {
    fprintf(f, "%d %ld %.9f %.9f\n", rank, calls, communicating, total);
    fclose(f);
  }
  return PMPI_Finalize();
}
