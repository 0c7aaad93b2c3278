#!/usr/bin/env python3
"""Draws the README's simulate plot with matplotlib from quilflashbch.simulate.

Usage: PYTHONPATH=build/python /usr/bin/python3 python/plot_simulate.py [OUT.png|OUT.svg]
           [--layout 4x8192] [--t 40] [--channel awgn|bsc] [--snr ...] [--rber ...]
           [--estimator mc|stratified] [--threads N]

With no options it runs what `flashbch simulate --plot simulate-default.png`
runs (the defaults, seed 1, so the same points) and draws the same series:
the codeword failure rate with its 95% interval, the analytic rate of a
bounded-distance decoder, the UBER with its interval, the miscorrection
rate's upper limit and the raw bit error rate. Default output:
simulate-default.png.
"""
import argparse

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402

import quilflashbch as q  # noqa: E402


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("output", nargs="?", default="simulate-default.png")
    for flag in ("layout", "channel", "snr", "rber", "estimator"):
        parser.add_argument(f"--{flag}")
    parser.add_argument("--t", type=int)
    parser.add_argument("--threads", type=int, default=0)
    args = parser.parse_args()
    options = {k: v for k, v in vars(args).items() if k != "output" and v is not None}

    result = q.simulate(**options)
    a = result.array
    x = result.columns[0]
    fig, ax = plt.subplots(figsize=(9, 5.6), dpi=100)
    below = lambda low, value: np.clip(value - low, 0, None)  # noqa: E731
    ax.errorbar(a[x], a["fer"], yerr=[below(a["fer_low"], a["fer"]), a["fer_high"] - a["fer"]], fmt="o",
                capsize=3, label="codeword failure rate")
    ax.plot(a[x], a["analytic_fer"], lw=2, label="analytic (bounded distance)")
    ax.errorbar(a[x], a["uber"], yerr=[below(a["uber_low"], a["uber"]), a["uber_high"] - a["uber"]], fmt="s",
                capsize=3, label="UBER")
    ax.plot(a[x], a["miscorrection_high"], ls="--", label="miscorrection rate, 95% upper limit")
    ax.plot(a[x], a["raw_ber"], marker="+", label="raw BER")
    ax.set_yscale("log")
    if x == "rber":
        ax.set_xscale("log")
    s = result.settings
    ax.set_title(f"BCH t = {s['t']}, {s['layout']} data bits, {s['channel']} channel, {s['estimator']}")
    ax.set_xlabel("raw bit error rate" if x == "rber" else "SNR (dB)")
    ax.set_ylabel("rate")
    ax.grid(True, which="major")
    ax.legend(loc="best", frameon=True)
    fig.tight_layout()
    fig.savefig(args.output)
    print(f"{args.output}: {len(a)} points")


if __name__ == "__main__":
    main()
