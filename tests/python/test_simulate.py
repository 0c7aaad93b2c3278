"""simulate: the command line's table from Python, as dicts and as a
structured array; options checked with the command line's messages."""

import json
import pathlib
import signal
import subprocess
import sys

import numpy as np
import pytest

import quilflashbch as q

RUNS = [
    (dict(layout="2x1024", t=5, channel="bsc", rber=[2e-3, 4e-3], max_frames=300, seed=3),
     ["--layout", "2x1024", "--t", "5", "--channel", "bsc", "--rber", "2e-3,4e-3", "--max-frames", "300",
      "--seed", "3"]),
    (dict(layout="1x512", t=4, channel="nand", cell="mlc", page="lower", pe=[3000, 6000], retention="1y",
          refs="optimal", soft_reads=1, soft_step=0.04, decoder="chase", chase_positions=3, max_frames=100),
     ["--layout", "1x512", "--t", "4", "--channel", "nand", "--cell", "mlc", "--page", "lower", "--pe",
      "3000,6000", "--retention", "1y", "--refs", "optimal", "--soft-reads", "1", "--soft-step", "0.04",
      "--decoder", "chase", "--chase-positions", "3", "--max-frames", "100"]),
]


def _without_seconds(rows):
    return [{k: v for k, v in row.items() if k != "seconds"} for row in rows]


@pytest.mark.parametrize("run,cli", RUNS)
def test_rows_are_the_command_lines_for_any_thread_count(run, cli, flashbch):
    one = q.simulate(**run, threads=1)
    assert flashbch("simulate", *cli, "--threads", "2", "--quiet", "--json", "run.json").returncode == 0
    document = json.loads((flashbch.dir / "run.json").read_text())
    assert _without_seconds(one.rows) == pytest.approx(_without_seconds(document["points"]))
    assert _without_seconds(q.simulate(**run, threads=2).rows) == _without_seconds(one.rows)
    for key, value in one.settings.items():  # the settings the JSON records too
        if key in document:
            assert document[key] == value, key
    assert one.settings["channel"] == run["channel"] and one.settings["decoder"] == run.get("decoder", "hard")
    for name in one.columns:  # the array holds the same values
        column = [row[name] for row in one.rows]
        assert one.array[name].tolist() == (column if one.array[name].dtype.kind != "f" else pytest.approx(column))


def test_stratified_rows_have_no_block_count():
    r = q.simulate(layout="1x256", t=2, channel="bsc", rber="1e-3", estimator="stratified", max_frames=200)
    assert r.rows[0]["blocks"] is None and np.isnan(r.array["blocks"]).all()
    assert 0 < r.array["fer"][0] < 1 and r.array["estimator"][0] == "stratified"


def test_ctrl_c_stops_the_run():
    def interrupt(progress):
        signal.raise_signal(signal.SIGINT)

    with pytest.raises(KeyboardInterrupt):
        q.simulate(layout="4x8192", t=40, channel="bsc", rber=1e-4, max_frames=10**9, time_limit=60,
                   threads=1, progress=interrupt)


# The checks are the command line's own (its tests hold every message); one
# row per kind of argument conversion: text, number, int, list.
@pytest.mark.parametrize("options,message", [
    (dict(channel="qam"), "--channel: 'qam' is not a channel"),
    (dict(seed=-1), "--seed: '-1' is not a whole number"),
    (dict(threads=2000), "--threads: 2000 is outside the accepted range 1 .. 1024"),
    (dict(rber=[0.1, 0.7], channel="bsc"), "--rber: 0.7 is outside the accepted range"),
    (dict(channel="bbm", rber=1e-3, dispersion=1), "--dispersion: '1' is not a number in 0 <= rho < 1"),
])
def test_bad_options_raise_the_command_line_text(options, message):
    with pytest.raises(ValueError) as raised:
        q.simulate(**options)
    assert message in str(raised.value)


def test_plot_script_draws_a_png(tmp_path):
    script = pathlib.Path(__file__).parents[2] / "python" / "plot_simulate.py"
    out = tmp_path / "plot.png"
    subprocess.run([sys.executable, str(script), str(out), "--layout", "1x256", "--t", "2", "--channel", "bsc",
                    "--rber", "1e-2,2e-2"], check=True, capture_output=True)
    assert out.read_bytes()[:8] == b"\x89PNG\r\n\x1a\n"
