"""NAND-flash ECC: binary BCH codes over GF(2^15) on packed bytes."""

import enum
import os
from typing import Callable, Optional, Sequence, Union, overload

import numpy as np
import numpy.typing as npt

_Bytes = Union[bytes, bytearray, memoryview, npt.NDArray[np.uint8]]
_Layout = Union[str, Sequence[int]]

class Status(enum.IntEnum):
    CLEAN = 0
    CORRECTED = 1
    UNCORRECTABLE = 2
    ERASED = 3

class DecodeResult:
    @property
    def status(self) -> Status: ...
    @property
    def corrected_bits(self) -> int: ...
    @property
    def error_positions(self) -> list[int]: ...
    @property
    def data(self) -> bytes: ...
    @property
    def parity(self) -> bytes: ...

class BatchResult:
    @property
    def status(self) -> npt.NDArray[np.uint8]: ...
    @property
    def corrected_bits(self) -> npt.NDArray[np.int32]: ...
    @property
    def data(self) -> npt.NDArray[np.uint8]: ...
    @property
    def parity(self) -> npt.NDArray[np.uint8]: ...

class BCH:
    def __init__(self, data_bits: int, t: int) -> None: ...
    @property
    def data_bits(self) -> int: ...
    @property
    def t(self) -> int: ...
    @property
    def parity_bits(self) -> int: ...
    @property
    def data_bytes(self) -> int: ...
    @property
    def parity_bytes(self) -> int: ...
    def encode(self, data: _Bytes) -> bytes: ...
    def decode(self, data: _Bytes, parity: _Bytes) -> DecodeResult: ...
    def encode_batch(self, data: npt.NDArray[np.uint8], threads: int = 1) -> npt.NDArray[np.uint8]: ...
    def decode_batch(
        self,
        data: npt.NDArray[np.uint8],
        parity: npt.NDArray[np.uint8],
        threads: int = 1,
        in_place: bool = False,
    ) -> BatchResult: ...

class PageDecodeResult:
    @property
    def data(self) -> npt.NDArray[np.uint8]: ...
    @property
    def status(self) -> npt.NDArray[np.uint8]: ...
    @property
    def corrected_bits(self) -> npt.NDArray[np.int32]: ...
    @property
    def zero_bits(self) -> npt.NDArray[np.int32]: ...
    @property
    def scrub_recommended(self) -> npt.NDArray[np.bool_]: ...
    @property
    def uncorrectable(self) -> npt.NDArray[np.bool_]: ...
    @property
    def max_corrected_bits(self) -> npt.NDArray[np.int32]: ...
    @property
    def scrub_threshold(self) -> int: ...
    @property
    def erased_threshold(self) -> int: ...
    @property
    def summary(self) -> dict[str, int]: ...

class FlashCodec:
    def __init__(self, layout: _Layout, t: int, byte_swap: int = 0, bit_swap: int = 0) -> None: ...
    @property
    def layout(self) -> str: ...
    @property
    def data_bits(self) -> list[int]: ...
    @property
    def t(self) -> int: ...
    @property
    def codewords(self) -> int: ...
    @property
    def data_bytes(self) -> int: ...
    @property
    def image_bytes(self) -> int: ...
    def encode(self, data: _Bytes, threads: int = 1) -> npt.NDArray[np.uint8]: ...
    def decode(
        self,
        image: _Bytes,
        scrub_threshold: Optional[int] = None,
        erased_threshold: Optional[int] = None,
        threads: int = 1,
    ) -> PageDecodeResult: ...

@overload
def analytic_fer(layout: _Layout, t: int, rber: float, log10: bool = False) -> float: ...
@overload
def analytic_fer(
    layout: _Layout, t: int, rber: npt.ArrayLike, log10: bool = False
) -> npt.NDArray[np.float64]: ...
@overload
def uber(layout: _Layout, t: int, rber: float, log10: bool = False) -> float: ...
@overload
def uber(layout: _Layout, t: int, rber: npt.ArrayLike, log10: bool = False) -> npt.NDArray[np.float64]: ...

def nand(
    *,
    cell: str = "tlc",
    model: Union[None, str, "os.PathLike[str]"] = None,
    page: str = "all",
    pe: Union[str, int, Sequence[int]] = "0:1000:5000",
    retention: Union[str, float, Sequence[float]] = "0,24,720,8760",
    layout: _Layout = "4x8192",
    target_uber: float = 1e-15,
) -> list[dict[str, Union[int, float, str, list[float], None]]]: ...

class SimulationResult:
    @property
    def rows(self) -> list[dict[str, Union[int, float, str, None]]]: ...
    @property
    def array(self) -> np.ndarray: ...
    @property
    def settings(self) -> dict[str, object]: ...
    @property
    def columns(self) -> list[str]: ...

def simulate(
    *,
    layout: _Layout = "4x8192",
    t: int = 40,
    channel: str = "awgn",
    snr: Union[None, str, float, Sequence[float]] = None,
    rber: Union[None, str, float, Sequence[float]] = None,
    estimator: str = "mc",
    max_fe: int = 100,
    max_frames: Optional[int] = None,
    time_limit: Optional[float] = None,
    target_rel_ci: Optional[float] = None,
    seed: int = 1,
    threads: int = 0,
    progress: Optional[Callable[[dict[str, Union[int, float]]], None]] = None,
    cell: str = "tlc",
    model: Union[None, str, "os.PathLike[str]"] = None,
    page: str = "upper",
    pe: Union[None, str, int, Sequence[int]] = None,
    retention: Union[None, str, float, Sequence[float]] = None,
    refs: Union[str, Sequence[float]] = "default",
    soft_reads: int = 0,
    soft_step: float = 0.05,
    dispersion: Optional[float] = None,
    decoder: str = "hard",
    chase_positions: int = 6,
) -> SimulationResult: ...
