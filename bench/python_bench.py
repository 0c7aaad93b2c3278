#!/usr/bin/env python3
"""Times the Python module against the C++ packed codec.

Usage: PYTHONPATH=build-bench/python /usr/bin/python3 bench/python_bench.py [path/to/bch_bench]

  decode_batch   10^4 codewords of 8192 data bits, t = 40, t/2 errors each,
                 with threads = 1, 2, 4; per codeword and relative to the C++
                 codec on the same work (bch_bench's packed/8192_t40/decode_t/2,
                 which also restores a 1 KB word per call)
  decode         one clean codeword per call; the overhead of the binding is
                 its time minus bch_bench's packed/8192_t40/decode_clean
Default benchmark binary: build-bench/bench/bch_bench (`make bench`, which
also builds the module in build-bench/python). Times are the best of
--repeat runs (default 5), on whatever else the machine is doing: say so
next to any figure quoted.
"""
import argparse
import json
import os
import subprocess
import sys
import tempfile
import time

import numpy as np

import quilflashbch as q

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def cpp_times(binary):
    """Per-codeword CPU µs of the C++ packed codec, by operation."""
    if not os.path.exists(binary):
        sys.exit(f"{binary}: not found; build it with `make bench` or name it on the command line")
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        subprocess.run([binary, "--benchmark_filter=packed/8192_t40/decode_(clean|t/2)$", "--benchmark_min_time=0.5",
                        f"--benchmark_out={out.name}", "--benchmark_out_format=json"],
                       check=True, capture_output=True)
        runs = json.load(out)["benchmarks"]
    return {r["name"].split("/", 2)[2]: r["cpu_time"] for r in runs}  # unit: us


def best(repeat, call):
    """The least (wall, CPU) seconds of `repeat` calls. On a busy machine the
    process's CPU time is the fairer single-thread measure; wall time is the
    one that shows thread scaling, and only on an otherwise idle machine."""
    runs = []
    for _ in range(repeat):
        wall, cpu = time.perf_counter(), time.process_time()
        call()
        runs.append((time.perf_counter() - wall, time.process_time() - cpu))
    return min(r[0] for r in runs), min(r[1] for r in runs)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("binary", nargs="?", default=os.path.join(ROOT, "build-bench", "bench", "bch_bench"))
    parser.add_argument("--rows", type=int, default=10_000)
    parser.add_argument("--repeat", type=int, default=5)
    args = parser.parse_args()

    cpp = cpp_times(args.binary)
    code = q.BCH(8192, 40)
    rng = np.random.default_rng(1)
    data = rng.integers(0, 256, (args.rows, code.data_bytes), dtype=np.uint8)
    parity = code.encode_batch(data)
    noisy = np.concatenate([data, parity], axis=1)
    for row in noisy:  # t/2 errors among the data and parity bits
        bits = rng.choice(code.data_bits + code.parity_bits, code.t // 2, replace=False)
        bits = np.where(bits < code.data_bits, bits, bits + 8 * code.data_bytes - code.data_bits)
        np.bitwise_xor.at(row, bits // 8, (0x80 >> (bits % 8)).astype(np.uint8))
    noisy_data = np.ascontiguousarray(noisy[:, : code.data_bytes])
    noisy_parity = np.ascontiguousarray(noisy[:, code.data_bytes :])
    check = code.decode_batch(noisy_data, noisy_parity)
    assert (check.corrected_bits == code.t // 2).all() and np.array_equal(check.data, data)

    print(f"C++ packed codec, one thread (CPU time): decode_t/2 {cpp['decode_t/2']:.2f} us, "
          f"decode_clean {cpp['decode_clean']:.2f} us per codeword")
    one_thread = None
    for threads in (1, 2, 4):
        wall, cpu = best(args.repeat, lambda: code.decode_batch(noisy_data, noisy_parity, threads=threads))
        one_thread = one_thread or wall
        line = f"decode_batch, {args.rows} codewords, threads={threads}: wall {wall * 1e3:.1f} ms"
        if threads == 1:
            per_word = cpu / args.rows * 1e6
            line += f", CPU {per_word:.2f} us per codeword = {per_word / cpp['decode_t/2']:.2f}x the C++ CPU time"
        else:
            line += f", wall speed-up {one_thread / wall:.2f}x over threads=1"
        print(line)

    clean_data, clean_parity = data[0].tobytes(), parity[0].tobytes()
    calls = 20_000
    _, cpu = best(args.repeat, lambda: [code.decode(clean_data, clean_parity) for _ in range(calls)])
    per_call = cpu / calls * 1e6
    print(f"decode, one clean codeword per call (CPU time): {per_call:.2f} us per call, "
          f"overhead over the C++ decode {per_call - cpp['decode_clean']:.2f} us")
    print(f"(load average {' '.join(f'{x:.1f}' for x in os.getloadavg())}; {os.cpu_count()} cores)")


if __name__ == "__main__":
    main()
