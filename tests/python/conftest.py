"""Shared helpers of the Python module's tests: an independent reference
BCH encoder in plain Python, bit flips, and the command-line runner."""

import os
import subprocess

import pytest

# GF(2^15) from x^15 + x + 1, as exponent/logarithm tables.
_ORDER = (1 << 15) - 1
_EXP = [0] * (2 * _ORDER)
_LOG = [0] * (_ORDER + 1)
_x = 1
for _i in range(_ORDER):
    _EXP[_i] = _EXP[_i + _ORDER] = _x
    _LOG[_x] = _i
    _x <<= 1
    if _x >> 15:
        _x ^= (1 << 15) | 0b11


_GENERATORS = {}


def generator(t):
    """g(x) of the t-error-correcting narrow-sense code as an integer (bit d
    the coefficient of x^d): the product of x + alpha^j over alpha^1 .. alpha^2t
    and their conjugates alpha^(2^s j), each root once."""
    if t not in _GENERATORS:
        poly = [1]  # coefficients in GF(2^15), lowest degree first
        for j in {(i << s) % _ORDER for i in range(1, 2 * t + 1) for s in range(15)}:
            poly = [0] + poly
            for d in range(len(poly) - 1):
                if poly[d + 1]:
                    poly[d] ^= _EXP[_LOG[poly[d + 1]] + j]
        assert set(poly) == {0, 1}, "a product over whole conjugate classes is binary"
        _GENERATORS[t] = sum(1 << d for d, c in enumerate(poly) if c)
    return _GENERATORS[t]


def reference_parity(data, data_bits, t):
    """x^(15t) m(x) mod g(x) as packed parity bytes, most significant first."""
    r = 15 * t
    m = int.from_bytes(bytes(data), "big") >> (8 * len(data) - data_bits)
    g = generator(t)
    rem = m << r
    for degree in range(data_bits + r - 1, r - 1, -1):
        if rem >> degree & 1:
            rem ^= g << (degree - r)
    pad = (8 - r % 8) % 8
    return (rem << pad).to_bytes((r + 7) // 8, "big")


def flip(buffer, positions):
    """A copy of buffer with the given bits (most significant first) flipped."""
    out = bytearray(buffer)
    for p in positions:
        out[p // 8] ^= 0x80 >> (p % 8)
    return bytes(out)


@pytest.fixture
def flashbch(tmp_path):
    """Runs the built command line in a scratch directory."""
    binary = os.environ.get("FLASHBCH_BINARY")
    if not binary:
        pytest.skip("FLASHBCH_BINARY is not set (ctest sets it)")

    def run(*args):
        return subprocess.run([binary, *args], cwd=tmp_path, capture_output=True, text=True)

    run.dir = tmp_path
    return run
