"""analytic_fer and uber against the binomial tail summed exactly with
Python's integers and fractions."""

from fractions import Fraction
from math import comb

import numpy as np
import pytest

import quilflashbch as q


def exact_tail(n, t, p):
    p = Fraction(p)
    return float(sum(comb(n, i) * p**i * (1 - p) ** (n - i) for i in range(t + 1, n + 1)))


@pytest.mark.parametrize("layout,t,p", [("1x64", 2, 0.01), ("2x128", 3, 0.02), ("64,128", 1, 0.001)])
def test_failure_rates_are_the_binomial_tail(layout, t, p):
    ks = [64, 128] if layout == "64,128" else [int(layout.split("x")[1])] * int(layout.split("x")[0])
    tails = [exact_tail(k + 15 * t, t, p) for k in ks]
    assert q.analytic_fer(layout, t, p) == pytest.approx(sum(tails) / len(tails), rel=1e-9)
    assert q.uber(ks, t, p) == pytest.approx(sum(tails) / sum(ks), rel=1e-9)


def test_arrays_and_log10_keep_shape_and_range():
    rates = np.array([[1e-4, 1e-3], [1e-2, 0.0]])
    fer = q.analytic_fer("4x8192", 40, rates)
    assert fer.shape == rates.shape and fer[1, 1] == 0.0
    assert fer[0, 0] < fer[0, 1] < fer[1, 0] <= 1.0
    assert q.analytic_fer("4x8192", 40, 1e-12) == 0.0  # below the smallest double
    assert -420 < q.analytic_fer("4x8192", 40, 1e-12, log10=True) < -308


def test_rates_outside_zero_to_half_are_refused():
    with pytest.raises(ValueError, match=r"--rber: 0\.6 is outside the accepted range 0 \.\. 0\.5"):
        q.analytic_fer("4x8192", 40, [0.1, 0.6])
