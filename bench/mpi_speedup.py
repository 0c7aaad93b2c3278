#!/usr/bin/env python3
"""Throughput of `flashbch simulate` under MPI on one machine.

Runs the same fixed amount of work (BLOCKS blocks of the default layout at
a raw bit error rate where no point stops early) with 1, 2 and 4 ranks of
one thread each, REPEATS times each, and prints a Markdown table with the
best run of each:

  blocks/s     blocks over the simulation's own seconds (from the JSON, so
               without mpirun's start-up)
  speedup      over one rank
  CPU us/block processor time of every process of the run (mpirun and the
               ranks) per block, less that of a run of 16 blocks with as
               many ranks (the start-up of MPI and of the codecs)
  work ratio   one rank's CPU per block over this run's: 1.0 means sharing
               out the rounds cost no extra work (reductions, waiting)
  in MPI       the share of the run each rank spent inside MPI collectives
               (the reductions, and broadcasts at start-up), lowest and
               highest over the ranks, measured through the MPI profiling
               interface by bench/mpi_time_shim.c (built here with mpicc and
               preloaded). The rank that reaches a reduction last waits
               least, so the lowest share is the cost of communicating; the
               gap up to the highest is waiting for a slower rank.

On an idle machine with at least as many cores as ranks the speedup follows
the work ratio; on a loaded one the wall-clock figures only say how much of
the machine the run got, while the CPU figures stay meaningful. The tables
of all runs must be identical; the script fails if they are not.

    bench/mpi_speedup.py [path/to/flashbch]   # default build/apps/flashbch/flashbch
    RANKS="1 2 4" BLOCKS=20000 REPEATS=3 bench/mpi_speedup.py
"""
import json
import os
import resource
import subprocess
import sys
import tempfile

flashbch = sys.argv[1] if len(sys.argv) > 1 else "build/apps/flashbch/flashbch"
ranks_list = [int(n) for n in os.environ.get("RANKS", "1 2 4").split()]
blocks = int(os.environ.get("BLOCKS", "20000"))
repeats = int(os.environ.get("REPEATS", "3"))
launcher = ["mpirun", "--oversubscribe"] + (["--allow-run-as-root"] if os.geteuid() == 0 else [])
args = ["simulate", "--channel", "bsc", "--rber", "2e-3", "--max-fe", "1000000000", "--threads", "1", "--quiet"]


def table(document):
    document = dict(document)
    document.pop("ranks")
    return json.dumps([{k: v for k, v in p.items() if k != "seconds"} for p in document["points"]])


def build_shim(work):
    shim = os.path.join(work, "mpi_time_shim.so")
    source = os.path.join(os.path.dirname(os.path.abspath(__file__)), "mpi_time_shim.c")
    subprocess.run(["mpicc", "-O2", "-shared", "-fPIC", source, "-o", shim], check=True)
    return shim


def run(ranks, path, shim, count=None):
    count = count or blocks
    times = path + ".mpi-times"
    if os.path.exists(times):
        os.remove(times)
    profile = ["-x", "LD_PRELOAD=" + shim, "-x", "QFB_MPI_TIME_FILE=" + times]
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(launcher + profile + ["-np", str(ranks), flashbch] + args + ["--max-frames", str(count), "--json", path],
                   check=True, stdout=subprocess.DEVNULL)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    cpu = (after.ru_utime - before.ru_utime) + (after.ru_stime - before.ru_stime)
    with open(path) as f:
        document = json.load(f)
    seconds = sum(p["seconds"] for p in document["points"])
    with open(times) as f:
        shares = [float(c) / float(t) for _, _, c, t in (line.split() for line in f)]
    return count / seconds, cpu, table(document), (min(shares), max(shares))


with open("/proc/loadavg") as f:
    load = f.read().split()[0]
print(f"flashbch simulate {' '.join(args[1:])} --max-frames {blocks}, best of {repeats}; {os.cpu_count()} cores, load average {load}")
print()
print("| ranks | blocks/s | speedup | CPU µs/block | work ratio | in MPI (lowest, highest rank) |")
print("|---:|---:|---:|---:|---:|---:|")
reference = None
with tempfile.TemporaryDirectory() as work:
    shim = build_shim(work)
    for ranks in ranks_list:
        startup = min(run(ranks, os.path.join(work, "start.json"), shim, 16)[1] for _ in range(repeats))
        results = [run(ranks, os.path.join(work, f"{ranks}.json"), shim) for _ in range(repeats)]
        best = max(results, key=lambda r: r[0])
        rate = best[0]
        cpu = (min(r[1] for r in results) - startup) / (blocks - 16) * 1e6
        if reference is None:
            reference = (rate, cpu, results[0][2])
        if any(r[2] != reference[2] for r in results):
            sys.exit(f"mpi_speedup: the table of {ranks} ranks differs from the first run's")
        low, high = best[3]
        print(f"| {ranks} | {rate:.0f} | {rate / reference[0]:.2f} | {cpu:.1f} | {reference[1] / cpu:.2f} "
              f"| {100 * low:.1f}%, {100 * high:.1f}% |")
