# SPDX-License-Identifier: Apache-2.0
"""Scenes for the tests, and sessions that look at them."""

import numpy as np

import framequilt

ROWS, COLS = 160, 240
# Top-left corners of three frames that join each other.
PATH = ((0, 80), (60, 100), (120, 110))


def scene(rows=400, cols=700, channels=3, seed=7):
    """Squares of random colours; no byte is 0."""
    random = np.random.default_rng(seed)
    squares = random.integers(40, 200, (-(-rows // 8), -(-cols // 8), channels), dtype=np.uint8)
    picture = squares.repeat(8, axis=0).repeat(8, axis=1)[:rows, :cols]
    return picture[..., 0] if channels == 1 else picture


def cut(picture, corner, rows=ROWS, cols=COLS):
    """What a camera sees with its top-left pixel at (x, y): a view."""
    x, y = corner
    return picture[y : y + rows, x : x + cols]


def open_session(**options):
    """On the host, as every machine has one; gray, as that is quick."""
    options = {"rows": ROWS, "cols": COLS, "channels": 1, "backend": "host", **options}
    return framequilt.Session(**options)


def add_path(session, picture, path=PATH):
    return [session.add(cut(picture, corner)) for corner in path]
