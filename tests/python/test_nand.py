"""nand: the cell model's page error rates and optimal references, equal to
the command line's JSON rows; bad options raise its messages."""

import json
import pathlib

import pytest

import quilflashbch as q

MLC = pathlib.Path(__file__).parents[2] / "apps" / "flashbch" / "models" / "mlc.json"

# (keyword arguments, the same request on the command line); a model file
# wins over the cell type (tlc by default).
SETTINGS = [
    (dict(model=MLC, pe=1000, retention=24.0), ["--model", str(MLC), "--pe", "1000", "--retention", "24"]),
    (dict(cell="slc", pe=[0, 10000], retention="1y"), ["--cell", "slc", "--pe", "0,10000", "--retention", "1y"]),
    (dict(cell="mlc", page="upper", pe="0:3000:6000", retention=[0, 720], layout="2x4096", target_uber=1e-13),
     ["--cell", "mlc", "--page", "upper", "--pe", "0:3000:6000", "--retention", "0,720", "--layout", "2x4096",
      "--target-uber", "1e-13"]),
    (dict(cell="tlc", page="middle", pe=3000, retention="1:1:2y"),
     ["--cell", "tlc", "--page", "middle", "--pe", "3000", "--retention", "1:1:2y"]),
]


@pytest.mark.parametrize("options,cli", SETTINGS)
def test_rows_are_the_command_lines(options, cli, flashbch):
    run = flashbch("nand", *cli, "--json", "nand.json")
    assert run.returncode == 0, run.stderr
    expected = json.loads((flashbch.dir / "nand.json").read_text())["rows"]
    assert q.nand(**options) == expected


# The checks are the command line's own (its tests hold every message); one
# row per kind of argument conversion: text, number, path.
@pytest.mark.parametrize("options,message", [
    (dict(cell="qlc"), "unknown cell type 'qlc': use slc, mlc or tlc"),
    (dict(pe=-5), "--pe: "),
    (dict(model="nope.json"), "--model nope.json: cannot be read"),
])
def test_bad_options_raise_the_command_line_text(options, message):
    with pytest.raises(ValueError) as raised:
        q.nand(**options)
    assert str(raised.value).startswith(message)
