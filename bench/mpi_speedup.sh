#!/usr/bin/env bash
# Throughput of `flashbch simulate` under MPI on one machine: 1, 2 and 4
# ranks of one thread each (RANKS to change), the same fixed amount of work
# for each (BLOCKS blocks of the default layout at a raw bit error rate
# where no point stops early), the best of REPEATS runs. Prints a Markdown
# table: blocks per second of the simulation itself (from the JSON seconds,
# so without mpirun's start-up), the speedup over one rank, and the
# efficiency (speedup / ranks). The tables of all runs must be identical;
# the script fails if they are not.
#
#   bench/mpi_speedup.sh [path/to/flashbch]     # default build/apps/flashbch/flashbch
set -euo pipefail
FLASHBCH=${1:-build/apps/flashbch/flashbch}
RANKS=${RANKS:-"1 2 4"}
BLOCKS=${BLOCKS:-8000}
REPEATS=${REPEATS:-3}
PYTHON=$(command -v /usr/bin/python3 || command -v python3)
launcher=(mpirun --oversubscribe)
[ "$(id -u)" -eq 0 ] && launcher+=(--allow-run-as-root)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
args=(simulate --channel bsc --rber 2e-3 --max-fe 1000000000 --max-frames "$BLOCKS" --threads 1 --quiet)

echo "flashbch simulate ${args[*]:1}, best of $REPEATS; $(nproc) cores, load average $(cut -d' ' -f1 /proc/loadavg)"
echo
echo "| ranks | blocks/s | speedup | efficiency |"
echo "|---:|---:|---:|---:|"
base=""
for n in $RANKS; do
  best=0
  for _ in $(seq "$REPEATS"); do
    "${launcher[@]}" -np "$n" "$FLASHBCH" "${args[@]}" --json "$work/$n.json" >/dev/null
    rate=$("$PYTHON" -c 'import json,sys; d=json.load(open(sys.argv[1])); p=d["points"]; print(sum(x["blocks"] for x in p)/sum(x["seconds"] for x in p))' "$work/$n.json")
    best=$("$PYTHON" -c 'import sys; print(max(float(sys.argv[1]), float(sys.argv[2])))' "$best" "$rate")
  done
  # Same settings, same table, whatever the number of ranks.
  "$PYTHON" - "$work/$n.json" "$work/${RANKS%% *}.json" <<'PY'
import json, sys
def table(path):
    d = json.load(open(path))
    d.pop("ranks")
    for p in d["points"]:
        p.pop("seconds")
    return d
sys.exit(0 if table(sys.argv[1]) == table(sys.argv[2]) else "tables differ: " + sys.argv[1])
PY
  [ -z "$base" ] && base=$best
  "$PYTHON" -c 'import sys; b,r,n=float(sys.argv[1]),float(sys.argv[2]),int(sys.argv[3]); print("| %d | %.0f | %.2f | %.0f%% |" % (n, r, r/b, 100*r/b/n))' "$base" "$best" "$n"
done
