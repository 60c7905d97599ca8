# SPDX-License-Identifier: Apache-2.0
"""Framequilt stitches the frames of a moving camera into one mosaic.

    import framequilt

    with framequilt.Session(rows=480, cols=640) as session:
        for frame in frames:  # numpy arrays of uint8, (rows, cols) or (rows, cols, 3)
            result = session.add(frame)
            if result.verdict is framequilt.Verdict.REFUSED:
                print(result.explain())
    mosaic = session.mosaic()

Coordinates: a placement is in pixels of the frames ("frame pixels"), x to the right and y down,
counted from the top-left corner of the first placed frame, and never changes. The mosaic has frame
pixels divided by the scale ("mosaic pixels"). A pixel of it is named in two ways: within
``mosaic()``, whose top-left corner moves when the mosaic grows left or up; and steadily, counted
from the top-left corner of the first placed frame.

One session at a time in a process. The interpreter runs other threads while a frame is stitched.
"""

from ._framequilt import (
    AUTO_SCALE,
    Backend,
    Criterion,
    ErrorCode,
    FrameResult,
    Measure,
    Measures,
    OpenclDevice,
    PixelOrder,
    Progress,
    Refusal,
    RefusalWords,
    Session,
    Stage,
    Verdict,
    __version__,
    opencl_devices,
    opencl_kernel_file,
    opencl_obstacle,
    set_report_sink,
)
from ._values import Box, Error, InputError, Point

for _value in (Box, Error, InputError, Point):
    _value.__module__ = __name__
del _value

__all__ = [
    "AUTO_SCALE",
    "Backend",
    "Box",
    "Criterion",
    "Error",
    "ErrorCode",
    "FrameResult",
    "InputError",
    "Measure",
    "Measures",
    "OpenclDevice",
    "PixelOrder",
    "Point",
    "Progress",
    "Refusal",
    "RefusalWords",
    "Session",
    "Stage",
    "Verdict",
    "__version__",
    "opencl_devices",
    "opencl_kernel_file",
    "opencl_obstacle",
    "set_report_sink",
]
