#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Stitches pictures through Python's own ctypes, without any module to install.

usage: stitch.py [--library libframequilt.so.1] [--log] MOSAIC.png FRAME.ppm FRAME.ppm ...

The frames are PPM or PGM files of 8 bits, all of one size, in the order of the capture.
"""
import argparse
import ctypes as c
import re
import sys
from pathlib import Path

# The structs and constants of framequilt/framequilt_c.h.
JOINED, REFUSED = 1, 2
RGB, GRAY = 1, 3
LogFunction = c.CFUNCTYPE(None, c.POINTER(c.c_char), c.c_size_t, c.c_void_p)
ProgressFunction = c.CFUNCTYPE(c.c_int32, c.c_int32, c.c_int64, c.c_void_p)


def numbers(*names):
    return [(name, c.c_int32) for name in names]


class Options(c.Structure):
    _fields_ = [("size", c.c_size_t),
                *numbers("rows", "cols", "channels", "criterion", "dynamic_scene", "scale",
                         "corner_budget", "max_rows", "max_cols", "backend"),
                ("kernel_file", c.c_char_p), ("log", LogFunction), ("log_user", c.c_void_p),
                ("progress", ProgressFunction), ("progress_user", c.c_void_p)]


class Frame(c.Structure):
    _fields_ = [("size", c.c_size_t), ("pixels", c.c_char_p), ("stride_bytes", c.c_size_t),
                *numbers("rows", "cols", "channels", "order", "has_hint", "hint_x", "hint_y",
                         "reserved")]


class Point(c.Structure):
    _fields_ = numbers("x", "y")


class Rect(c.Structure):
    _fields_ = numbers("x", "y", "width", "height")


class Measure(c.Structure):
    _fields_ = [("value", c.c_double), ("limit", c.c_double), *numbers("known", "reserved")]


class Result(c.Structure):
    _fields_ = [("size", c.c_size_t), ("frame", c.c_int64), *numbers("verdict", "reason"),
                ("judged", c.c_double), ("limit", c.c_double), *numbers("became_first", "full"),
                ("placement", Point), ("mosaic_position", Point), ("changed", Rect),
                ("growth_shift", Point), *numbers("match_count", "has_offset"), ("offset", Point),
                ("matches", Measure), ("moved", Measure), ("overlap", Measure),
                ("change", Measure), ("brightness", Measure), ("sharpness", Measure)]


class View(c.Structure):
    _fields_ = [("size", c.c_size_t), ("pixels", c.POINTER(c.c_ubyte)),
                ("stride_bytes", c.c_size_t), *numbers("rows", "cols", "channels", "reserved"),
                ("box", Rect)]


class Words(c.Structure):
    _fields_ = [("size", c.c_size_t),
                *((name, c.c_char_p)
                  for name in ("reason", "quantity", "unit", "relation", "advice"))]


class Failure(Exception):
    """A function of the library returned something else than 0."""


class Stitcher:
    """One session. The frames are bytes, row by row: 3 a pixel (red, green, blue) or 1 (gray)."""

    def __init__(self, library, rows, cols, channels, log=None):
        self._library = library
        library.framequilt_last_error.restype = c.c_char_p
        self._session = c.c_void_p()
        # Kept, or Python would release it while the library calls it.
        self._log = LogFunction(lambda line, size, _: log(line[:size])) if log else LogFunction()
        options = Options()
        self._call(library.framequilt_init_options, c.byref(options),
                   c.c_size_t(c.sizeof(options)))
        options.rows, options.cols, options.channels = rows, cols, channels
        options.log = self._log
        self._call(library.framequilt_open, c.byref(options), c.byref(self._session))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._library.framequilt_close(self._session)

    def add(self, pixels, rows, cols, channels):
        frame = Frame(size=c.sizeof(Frame), pixels=pixels, rows=rows, cols=cols,
                      channels=channels, order=RGB if channels == 3 else GRAY)
        result = Result(size=c.sizeof(Result))
        self._call(self._library.framequilt_add, self._session, c.byref(frame), c.byref(result))
        return result

    def explain(self, result):
        text = c.create_string_buffer(256)
        self._call(self._library.framequilt_explain, c.byref(result), text,
                   c.c_size_t(len(text)))
        return text.value.decode()

    def advice(self, result):
        words = Words(size=c.sizeof(Words))
        self._call(self._library.framequilt_reason_words, result.reason, c.byref(words))
        return words.advice.decode()

    def mosaic(self):
        """The rows of the mosaic as bytes, blue before green before red."""
        view = View(size=c.sizeof(View))
        self._call(self._library.framequilt_view_mosaic, self._session, c.byref(view))
        start = c.addressof(view.pixels.contents)
        return [c.string_at(start + r * view.stride_bytes, view.cols * view.channels)
                for r in range(view.rows)]

    def save(self, path):
        self._call(self._library.framequilt_save_mosaic, self._session, str(path).encode())

    def _call(self, function, *arguments):
        if function(*arguments) != 0:
            text = self._library.framequilt_last_error(self._session)
            raise Failure(text.decode(errors="replace"))


def read_picture(path):
    """(pixels, rows, cols, channels) of a PPM or PGM file."""
    data = Path(path).read_bytes()
    blank = rb"(?:\s|#[^\n]*\n)+"
    header = re.match(rb"P([56])" + (blank + rb"(\d+)") * 2 + blank + rb"255\s", data)
    if header is None:
        raise Failure(f"{path}: no binary PGM or PPM file of 8 bits: convert it first")
    channels = 3 if header[1] == b"6" else 1
    cols, rows = int(header[2]), int(header[3])
    pixels = data[header.end():]
    if len(pixels) < rows * cols * channels:
        raise Failure(f"{path}: ends too early: write it again")
    return pixels, rows, cols, channels


def stitch(library, mosaic, frames, log):
    first = read_picture(frames[0])
    with Stitcher(library, *first[1:], log) as stitcher:
        for path in frames:
            result = stitcher.add(*read_picture(path))
            if result.verdict == JOINED:
                print(f"{path}: joined at ({result.placement.x}, {result.placement.y})")
            elif result.verdict == REFUSED:
                print(f"{path}: refused, {stitcher.explain(result)}")
                print(f"  {stitcher.advice(result)}")
            else:
                print(f"{path}: first frame")
        rows = stitcher.mosaic()
        print(f"mosaic of {len(rows[0]) // first[3]} x {len(rows)} pixels")
        stitcher.save(mosaic)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--library", default="libframequilt.so.1")
    parser.add_argument("--log", action="store_true", help="print the engine's lines")
    parser.add_argument("mosaic")
    parser.add_argument("frames", nargs="+")
    given = parser.parse_args()
    log = (lambda line: print(line.decode(errors="replace"), file=sys.stderr)) if given.log else None
    try:
        stitch(c.CDLL(given.library), given.mosaic, given.frames, log)
    except (Failure, OSError) as problem:
        sys.exit(f"stitch.py: {problem}")


if __name__ == "__main__":
    main()
