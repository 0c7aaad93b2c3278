"""BCH on packed bytes: parity against an independent reference, corrections,
batches against single calls, threads, the GIL, and refused inputs."""

import array
import random
import threading
import time

import numpy as np
import pytest

import quilflashbch as q
from conftest import flip, reference_parity

CODES = [(1024, 5), (1001, 3), (8, 1), (4096, 40)]


@pytest.mark.parametrize("k,t", CODES)
def test_parity_matches_reference_for_every_buffer_kind(k, t):
    code = q.BCH(k, t)
    assert (code.data_bytes, code.parity_bytes) == ((k + 7) // 8, (15 * t + 7) // 8)
    rng = random.Random(k * 131 + t)
    data = bytes(rng.randrange(256) for _ in range(code.data_bytes))
    expected = reference_parity(data, k, t)
    views = [data, bytearray(data), memoryview(data), array.array("B", data), np.frombuffer(data, np.uint8)]
    assert [code.encode(v) for v in views] == [expected] * len(views)


@pytest.mark.parametrize("k,t", CODES)
def test_up_to_t_flips_are_corrected_at_their_positions(k, t):
    code = q.BCH(k, t)
    rng = random.Random(t)
    data = bytes(rng.randrange(256) for _ in range(code.data_bytes))
    parity = code.encode(data)
    for errors in sorted({0, 1, t // 2, t}):
        positions = sorted(rng.sample(range(k + 15 * t), errors))
        word = flip(data + parity, [p if p < k else 8 * code.data_bytes + p - k for p in positions])
        r = code.decode(word[: code.data_bytes], np.frombuffer(word[code.data_bytes :], np.uint8))
        assert r.status == (q.Status.CORRECTED if errors else q.Status.CLEAN)
        assert (r.corrected_bits, r.error_positions) == (errors, positions)
        assert (r.data, r.parity) == (data, parity)


def test_beyond_t_is_refused_or_lands_on_a_codeword():
    # With 3t errors the decoder either says so and leaves the word, or
    # lands on another codeword within t; it never returns a non-codeword.
    code, t = q.BCH(512, 4), 4
    rng = random.Random(5)
    data = bytes(rng.randrange(256) for _ in range(code.data_bytes))
    parity = code.encode(data)
    for _ in range(50):
        bad = flip(data, rng.sample(range(512), 3 * t))
        r = code.decode(bad, parity)
        if r.status == q.Status.UNCORRECTABLE:
            assert (r.data, r.parity, r.corrected_bits) == (bad, parity, 0)
        else:
            assert r.corrected_bits <= t and code.encode(r.data) == r.parity


def _noisy_batch(code, rows, seed):
    rng = np.random.default_rng(seed)
    data = rng.integers(0, 256, (rows, code.data_bytes), dtype=np.uint8)
    parity = code.encode_batch(data)
    noisy = data.copy()
    for i in range(rows):  # 0 .. 2t errors in the data: some rows uncorrectable
        bits = rng.choice(code.data_bits, int(rng.integers(0, 2 * code.t + 1)), replace=False)
        np.bitwise_xor.at(noisy[i], bits // 8, (0x80 >> (bits % 8)).astype(np.uint8))
    return data, parity, noisy


@pytest.mark.parametrize("threads", [1, 3, 0])
def test_batches_equal_single_calls(threads):
    code = q.BCH(2048, 8)
    data, parity, noisy = _noisy_batch(code, 200, seed=threads)
    assert np.array_equal(code.encode_batch(data, threads=threads), parity)
    assert all(code.encode(row) == parity[i].tobytes() for i, row in enumerate(data))
    before = noisy.copy()
    r = code.decode_batch(noisy, parity, threads=threads)
    assert np.array_equal(noisy, before)  # copies were corrected
    singles = [code.decode(noisy[i], parity[i]) for i in range(len(noisy))]
    assert r.status.tolist() == [int(s.status) for s in singles]
    assert r.corrected_bits.tolist() == [s.corrected_bits for s in singles]
    assert [r.data[i].tobytes() for i in range(len(noisy))] == [s.data for s in singles]
    assert {q.Status(s) for s in r.status} == {q.Status.CLEAN, q.Status.CORRECTED, q.Status.UNCORRECTABLE}
    in_place = code.decode_batch(noisy, parity.copy(), threads=threads, in_place=True)
    assert in_place.data is noisy and np.array_equal(noisy, r.data)


def test_batch_decoding_releases_the_gil():
    # The main thread samples the clock while another thread is inside one
    # decode_batch call. Holding the GIL, the call would leave the main
    # thread no samples in the middle third of it (a switch just before the
    # call gives at most one 5 ms switch interval, and the call takes longer).
    # The batch is repeated until one call on one thread lasts 600 ms, so the
    # test holds on fast and slow machines alike, and a few samples in the
    # middle 200 ms suffice: on a machine so loaded that the main thread gets
    # no processor for that long, it fails rather than passing wrongly.
    code = q.BCH(8192, 40)
    _, parity, noisy = _noisy_batch(code, 500, seed=9)
    while True:
        span, done = [], threading.Event()

        def worker():
            span.append(time.perf_counter())
            code.decode_batch(noisy, parity, threads=1)
            span.append(time.perf_counter())
            done.set()

        samples = []
        thread = threading.Thread(target=worker)
        thread.start()
        while not done.is_set():
            samples.append(time.perf_counter())
        thread.join()
        start, end = span
        if end - start > 0.6:
            break
        noisy, parity = np.tile(noisy, (2, 1)), np.tile(parity, (2, 1))
    third = (end - start) / 3
    assert sum(start + third < s < end - third for s in samples) >= 3


BAD = [
    (lambda: q.BCH(32760, 2), ValueError, "--layout: codeword 0 has 32760 data bits; with t = 2"),
    (lambda: q.BCH(64, 2).encode(bytes(7)), ValueError, "data: 7 bytes where 8 are needed (64 data bits)"),
    (lambda: q.BCH(64, 2).encode("12345678"), TypeError, "data: expected bytes, bytearray"),
    (lambda: q.BCH(64, 2).encode(np.zeros(8, np.int8)), TypeError, "got items of format 'b'"),
    (lambda: q.BCH(64, 2).encode(np.zeros(16, np.uint8)[::2]), ValueError, "data: must be C-contiguous"),
    (lambda: q.BCH(64, 2).decode(bytes(8), bytes(3)), ValueError, "parity: 3 bytes where 4 are needed"),
    (lambda: q.BCH(64, 2).encode_batch(np.zeros(8, np.uint8)), ValueError, "data: expected a 2-D array"),
    (lambda: q.BCH(64, 2).encode_batch(np.zeros((2, 9), np.uint8)), ValueError, "data: rows of 9 bytes"),
    (lambda: q.BCH(64, 2).encode_batch(np.zeros((2, 8), np.uint16)), TypeError, "dtype uint8"),
    (lambda: q.BCH(64, 2).encode_batch(np.zeros((2, 8), np.uint8), threads=-1), ValueError,
     "--threads: -1 is outside the accepted range 1 .. 1024"),
    (lambda: q.BCH(64, 2).decode_batch(np.zeros((2, 8), np.uint8), np.zeros((3, 4), np.uint8)), ValueError,
     "parity: 3 rows where 2 are needed"),
    (lambda: q.BCH(64, 2).decode_batch(bytes(16), bytes(8), in_place=True), ValueError, "writable"),
]


@pytest.mark.parametrize("call,error,message", BAD)
def test_bad_inputs_raise_with_the_command_line_text(call, error, message):
    with pytest.raises(error) as raised:
        call()
    assert message in str(raised.value)
