# SPDX-License-Identifier: Apache-2.0
import enum
from typing import (
    Any,
    Callable,
    List,
    Literal,
    NamedTuple,
    Optional,
    Sequence,
    Tuple,
    Union,
)

import numpy as np
import numpy.typing as npt

__version__: str
AUTO_SCALE: int

class PixelOrder(enum.Enum):
    BGR = "bgr"
    RGB = "rgb"
    BGRA = "bgra"
    GRAY = "gray"

class Criterion(enum.Enum):
    MOTION = "motion"
    OVERLAP = "overlap"

class Stage(enum.Enum):
    COPYING = "copying"
    STITCHING = "stitching"
    DONE = "done"

class Backend(enum.Enum):
    AUTO = "auto"
    OPENCL = "opencl"
    HOST = "host"

class Verdict(enum.Enum):
    WAITING = "waiting"
    JOINED = "joined"
    REFUSED = "refused"
    CANCELLED = "cancelled"

class ErrorCode(enum.Enum):
    INVALID_OPTION = "invalid_option"
    SESSION_OPEN = "session_open"
    START_FAILED = "start_failed"
    NO_OPENCL = "no_opencl"
    INVALID_FRAME = "invalid_frame"
    STOPPED = "stopped"
    OUT_OF_MEMORY = "out_of_memory"
    ENGINE_FAILED = "engine_failed"
    BUSY = "busy"

class RefusalWords:
    @property
    def reason(self) -> str: ...
    @property
    def quantity(self) -> str: ...
    @property
    def unit(self) -> str: ...
    @property
    def relation(self) -> str: ...
    @property
    def advice(self) -> str: ...

class Refusal(enum.Enum):
    NO_OVERLAP = "no_overlap"
    TOO_FEW_MATCHES = "too_few_matches"
    MOVED_TOO_LITTLE = "moved_too_little"
    MOVED_TOO_FAR = "moved_too_far"
    MOVING_SCENE = "moving_scene"
    BRIGHTNESS = "brightness"
    SHARPNESS = "sharpness"
    MOSAIC_FULL = "mosaic_full"
    @property
    def words(self) -> RefusalWords: ...

class Error(RuntimeError):
    code: ErrorCode

class InputError(Error, ValueError): ...

class Point(NamedTuple):
    x: int
    y: int

class Box(NamedTuple):
    x: int
    y: int
    width: int
    height: int
    @property
    def slices(self) -> Tuple[slice, slice]: ...

class Measure:
    @property
    def value(self) -> float: ...
    @property
    def limit(self) -> float: ...

class Measures:
    @property
    def matches(self) -> Measure: ...
    @property
    def offset(self) -> Optional[Point]: ...
    @property
    def moved(self) -> Optional[Measure]: ...
    @property
    def overlap(self) -> Optional[Measure]: ...
    @property
    def change(self) -> Optional[Measure]: ...
    @property
    def brightness(self) -> Optional[Measure]: ...
    @property
    def sharpness(self) -> Optional[Measure]: ...

class Progress:
    @property
    def stage(self) -> Stage: ...
    @property
    def frame(self) -> int: ...

class FrameResult:
    @property
    def frame(self) -> int: ...
    @property
    def verdict(self) -> Verdict: ...
    @property
    def reason(self) -> Optional[Refusal]: ...
    @property
    def judged(self) -> Optional[Measure]: ...
    @property
    def became_first(self) -> bool: ...
    @property
    def full(self) -> bool: ...
    @property
    def placement(self) -> Optional[Point]: ...
    @property
    def mosaic_position(self) -> Optional[Point]: ...
    @property
    def changed(self) -> Optional[Box]: ...
    @property
    def growth_shift(self) -> Optional[Point]: ...
    @property
    def measures(self) -> Measures: ...
    def explain(self) -> str: ...

class Session:
    def __init__(
        self,
        *,
        rows: int,
        cols: int,
        channels: int = ...,
        criterion: Union[Criterion, Literal["motion", "overlap"]] = ...,
        dynamic_scene: bool = ...,
        scale: int = ...,
        corner_budget: int = ...,
        max_rows: int = ...,
        max_cols: int = ...,
        backend: Union[Backend, Literal["auto", "opencl", "host"]] = ...,
        kernel_file: str = ...,
        on_progress: Optional[Callable[[Progress], Optional[bool]]] = ...,
    ) -> None: ...
    def add(
        self,
        frame: npt.ArrayLike,
        *,
        pixel_order: Optional[Union[PixelOrder, Literal["bgr", "rgb", "bgra", "gray"]]] = ...,
        hint: Optional[Sequence[int]] = ...,
    ) -> FrameResult: ...
    def mosaic(self) -> npt.NDArray[np.uint8]: ...
    def copy_region(self, region: Sequence[int]) -> npt.NDArray[np.uint8]: ...
    def stop(self) -> None: ...
    @property
    def steady_box(self) -> Box: ...
    @property
    def scale(self) -> int: ...
    @property
    def first_frame(self) -> int: ...
    @property
    def backend(self) -> str: ...
    @property
    def stopped(self) -> bool: ...
    def __enter__(self) -> Session: ...
    def __exit__(self, *args: object) -> None: ...

class OpenclDevice:
    @property
    def platform(self) -> str: ...
    @property
    def name(self) -> str: ...
    @property
    def kind(self) -> str: ...
    @property
    def version(self) -> str: ...
    @property
    def memory_megabytes(self) -> int: ...
    @property
    def used(self) -> bool: ...
    @property
    def reason(self) -> str: ...

def opencl_devices() -> List[OpenclDevice]: ...
def opencl_kernel_file() -> str: ...
def opencl_obstacle(kernel_file: str = ...) -> str: ...
def set_report_sink(sink: Optional[Callable[[str], Any]]) -> None: ...
