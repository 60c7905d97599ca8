# SPDX-License-Identifier: Apache-2.0
"""What the module of C++ hands out and raises that is plain Python."""

from typing import NamedTuple, Tuple


class Point(NamedTuple):
    """x to the right, y down."""

    x: int
    y: int


class Box(NamedTuple):
    """A rectangle: its top-left corner and its size."""

    x: int
    y: int
    width: int
    height: int

    @property
    def slices(self) -> Tuple[slice, slice]:
        """Rows and columns, to cut the box out of an array: ``mosaic[result.changed.slices]``.

        For boxes that do not begin left of or above the array.
        """
        return slice(self.y, self.y + self.height), slice(self.x, self.x + self.width)


class Error(RuntimeError):
    """What a session raises: one line that says what is wrong and what to do.

    ``code`` is an :class:`ErrorCode`.
    """


class InputError(Error, ValueError):
    """An option out of its range, or a frame that does not fit; the session goes on."""
