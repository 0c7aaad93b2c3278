"""FlashCodec: block images byte for byte against the command line, the
decode report against its --report, the codewords against BCH, and refused
inputs."""

import json

import numpy as np
import pytest

import quilflashbch as q
from conftest import flip

# Mixed lengths (several codes in one block) and the controller orders.
SETUPS = [("2x1024", 5, 0, 0), ("1024,512,2x256", 4, 16, 13), ("3x512", 6, 32, 8)]


def _random_blocks(codec, blocks, seed):
    return np.random.default_rng(seed).integers(0, 256, blocks * codec.data_bytes, dtype=np.uint8)


def _swap_args(byte_swap, bit_swap):
    return [*(["--byte-swap", str(byte_swap)] if byte_swap else []), *(["--bit-swap", str(bit_swap)] if bit_swap else [])]


@pytest.mark.parametrize("layout,t,byte_swap,bit_swap", SETUPS)
def test_encode_and_decode_match_the_command_line(flashbch, layout, t, byte_swap, bit_swap):
    codec = q.FlashCodec(layout, t, byte_swap=byte_swap, bit_swap=bit_swap)
    data = _random_blocks(codec, 3, seed=t)
    image = codec.encode(data)
    (flashbch.dir / "data.bin").write_bytes(data.tobytes())
    common = ["--layout", layout, "--t", str(t), *_swap_args(byte_swap, bit_swap)]
    assert flashbch("encode", *common, "data.bin", "-o", "image.bin").returncode == 0
    assert (flashbch.dir / "image.bin").read_bytes() == image.tobytes()
    assert np.array_equal(codec.encode(data, threads=2), image)

    # Errors over the whole image, one block erased (all ones but t-1 zeros).
    rng = np.random.default_rng(t + 1)
    read = bytearray(flip(image.tobytes(), rng.choice(8 * image.size, 3 * t, replace=False)))
    read[codec.image_bytes : 2 * codec.image_bytes] = b"\xff" * codec.image_bytes
    read[codec.image_bytes] = 0xFF >> (t - 1)
    (flashbch.dir / "read.bin").write_bytes(read)
    cli = flashbch("decode", *common, "read.bin", "-o", "fixed.bin", "--report", "report.json")
    report = json.loads((flashbch.dir / "report.json").read_text())
    r = codec.decode(read)
    assert r.data.tobytes() == (flashbch.dir / "fixed.bin").read_bytes()
    assert r.summary == report["summary"] and cli.returncode == int(r.summary["uncorrectable"] > 0)
    assert (r.scrub_threshold, r.erased_threshold) == (report["scrub_threshold"], report["erased_threshold"])
    for b, block in enumerate(report["blocks"]):
        assert [r.scrub_recommended[b], r.uncorrectable[b], r.max_corrected_bits[b]] == [
            block["scrub_recommended"], block["uncorrectable"], block["max_corrected_bits"]]
        for i, cw in enumerate(block["codewords"]):
            assert (q.Status(r.status[b, i]).name.lower(), r.corrected_bits[b, i]) == (cw["status"], cw["corrected_bits"])
            if cw["status"] == "erased":
                assert r.zero_bits[b, i] == cw["zero_bits"]
    assert r.status[1].tolist() == [int(q.Status.ERASED)] * codec.codewords
    threaded = codec.decode(read, threads=3)
    assert np.array_equal(threaded.status, r.status) and np.array_equal(threaded.data, r.data)


def test_codewords_are_data_then_bch_parity_then_padding():
    codec = q.FlashCodec([1024, 512, 256, 256], 4)
    data = _random_blocks(codec, 1, seed=3).tobytes()
    image = codec.encode(data).tobytes()
    at_data = at_image = 0
    for k in codec.data_bits:
        code = q.BCH(k, 4)
        word = data[at_data : at_data + k // 8]
        assert image[at_image : at_image + k // 8 + code.parity_bytes] == word + code.encode(word)
        at_data += k // 8
        at_image += k // 8 + code.parity_bytes
    assert at_image == codec.image_bytes


def test_thresholds_decide_erased_pages_and_scrubbing():
    codec = q.FlashCodec("2x512", 4)
    data = _random_blocks(codec, 1, seed=4)
    image = codec.encode(data).tobytes()
    read = flip(image, [0, 1, 2])  # codeword 0: three errors
    assert codec.decode(read).scrub_recommended.tolist() == [True]  # default ceil(3t/4) = 3
    assert codec.decode(read, scrub_threshold=4).scrub_recommended.tolist() == [False]
    erased = b"\xff" * codec.image_bytes
    blank = flip(erased, range(4))  # four zeros: erased at the default t = 4, not at 3
    assert codec.decode(blank).status.tolist() == [[int(q.Status.ERASED)] * 2]
    assert codec.decode(blank, erased_threshold=3).status[0, 0] != int(q.Status.ERASED)


BAD = [
    (lambda: q.FlashCodec("4y8192", 8), ValueError, "--layout: cannot read '4y8192'"),
    (lambda: q.FlashCodec("2x1024", 5, byte_swap=40), ValueError, "--byte-swap: 40 is not accepted"),
    (lambda: q.FlashCodec("2x1024", 5).encode(bytes(300)), ValueError,
     "data: trailing partial block at byte offset 256 (44 bytes; a block takes 256 bytes)"),
    (lambda: q.FlashCodec("2x1024", 5).decode(bytes(0)), ValueError, "image: the file is empty"),
    (lambda: q.FlashCodec("2x1024", 5).decode(bytes(276), scrub_threshold=6), ValueError,
     "--scrub-threshold: 6 is outside the accepted range 0 .. 5 (t)"),
    (lambda: q.FlashCodec("2x1024", 5).decode(np.zeros(276, np.float32)), TypeError, "dtype uint8"),
    (lambda: q.FlashCodec(1024, 5), TypeError, ""),
]


@pytest.mark.parametrize("call,error,message", BAD)
def test_bad_inputs_raise_with_the_command_line_text(call, error, message):
    with pytest.raises(error) as raised:
        call()
    assert message in str(raised.value)
