# SPDX-License-Identifier: Apache-2.0
"""Which arrays are frames, how their bytes are read, and what is said of others."""

import tracemalloc

import numpy as np
import pytest

import framequilt
from captures import COLS, PATH, ROWS, cut, open_session, scene


def mosaic_of(frames, channels=3, **how):
    with open_session(channels=channels) as session:
        results = [session.add(frame, **how) for frame in frames]
        assert results[-1].verdict is framequilt.Verdict.JOINED, results[-1]
        return session.mosaic()


def frames_of(picture):
    return [cut(picture, corner) for corner in PATH[:2]]


@pytest.fixture(scope="module")
def colour():
    return scene()


@pytest.fixture(scope="module")
def expected(colour):
    mosaic = mosaic_of([np.ascontiguousarray(frame) for frame in frames_of(colour)])
    assert mosaic.shape == (ROWS + 20, COLS + 60, 3)
    # Where the second frame lies alone.
    assert (mosaic[20:, COLS:] == frames_of(colour)[1][:, COLS - 60 :]).all()
    return mosaic


def within_wider_rows(frame):
    return np.pad(frame, ((0, 0), (3, 5), (0, 0)))[:, 3:-5]


def every_second_column(frame):
    return frame.repeat(2, axis=1)[:, ::2]


def every_second_row(frame):
    return frame.repeat(2, axis=0)[::2]


def upside_down(frame):
    return np.ascontiguousarray(frame[::-1])[::-1]


def mirrored(frame):
    return np.ascontiguousarray(frame[:, ::-1])[:, ::-1]


def planes(frame):
    return np.ascontiguousarray(frame.transpose(2, 0, 1)).transpose(1, 2, 0)


def read_only(frame):
    frame = frame.copy()
    frame.flags.writeable = False
    return frame


LAYOUTS = [
    within_wider_rows,
    every_second_column,
    every_second_row,
    upside_down,
    mirrored,
    planes,
    read_only,
    np.asfortranarray,
]


@pytest.mark.parametrize("layout", LAYOUTS, ids=lambda layout: layout.__name__)
def test_every_layout_gives_the_same_mosaic(colour, expected, layout):
    frames = [layout(frame) for frame in frames_of(colour)]
    before = [frame.copy() for frame in frames]
    assert np.array_equal(mosaic_of(frames), expected)
    assert all(np.array_equal(*pair) for pair in zip(frames, before))


def test_pixel_orders(colour, expected):
    frames = frames_of(colour)
    red_first = [np.ascontiguousarray(frame[..., ::-1]) for frame in frames]
    alpha = [np.dstack([frame, np.full((ROWS, COLS), 9, np.uint8)]) for frame in frames]
    assert np.array_equal(mosaic_of(frames, pixel_order="bgr"), expected)
    assert np.array_equal(mosaic_of(red_first, pixel_order="rgb"), expected)
    assert np.array_equal(
        mosaic_of([frame[..., ::-1] for frame in frames], pixel_order=framequilt.PixelOrder.RGB),
        expected,
    )
    assert np.array_equal(mosaic_of(alpha), expected)
    assert np.array_equal(mosaic_of(alpha, pixel_order="bgra"), expected)


def test_gray_frames_make_gray_or_colour(colour):
    frames = [np.ascontiguousarray(frame[..., 0]) for frame in frames_of(colour)]
    gray = mosaic_of(frames, channels=1)
    assert gray.shape == (ROWS + 20, COLS + 60)
    assert np.array_equal(mosaic_of([frame[..., np.newaxis] for frame in frames], channels=1), gray)
    assert np.array_equal(mosaic_of([frame[:, :] for frame in frames], 1, pixel_order="gray"), gray)
    in_colour = mosaic_of(frames, channels=3)
    assert (in_colour == in_colour[..., :1]).all()


def test_colour_frames_make_gray(colour):
    assert mosaic_of(frames_of(colour), channels=1).shape == (ROWS + 20, COLS + 60)


def test_frames_of_one_value_in_all_rows(colour):
    row = np.ascontiguousarray(colour[0, :COLS])
    with open_session(channels=3) as session:
        # Its rows lie 0 bytes apart.
        result = session.add(np.broadcast_to(row, (ROWS, COLS, 3)))
        assert result.verdict is framequilt.Verdict.WAITING


def test_frames_of_one_row_or_column():
    for rows, cols in ((1, 300), (300, 1)):
        with open_session(rows=rows, cols=cols) as session:
            frame = np.ones((2 * rows, 2 * cols), np.uint8)[::2, ::2]
            assert session.add(frame).verdict is framequilt.Verdict.WAITING


def bytes_that_numpy_takes(frame):
    """While a session gets this frame; its own copies are not numpy's."""
    with open_session(
        rows=frame.shape[0], cols=frame.shape[1], on_progress=lambda progress: False
    ) as session:
        session.add(frame)
        tracemalloc.start()
        try:
            assert session.add(frame).verdict is framequilt.Verdict.CANCELLED
            return tracemalloc.get_traced_memory()[1]
        finally:
            tracemalloc.stop()


def test_packed_rows_at_any_distance_are_read_where_they_lie():
    large = np.ones((1200, 1500, 3), np.uint8)
    for frame in (large, large[100:1100, 200:1200], large[::3], large[..., 0].copy()[:, :700]):
        assert bytes_that_numpy_takes(frame) < 100_000
    for frame in (large[::-1], large[:, ::2], np.asfortranarray(large)):
        assert bytes_that_numpy_takes(frame) >= frame.size


def test_pictures_of_pillow_are_arrays_too(colour, expected):
    image = pytest.importorskip("PIL.Image")
    pictures = [image.fromarray(frame[..., ::-1].copy()) for frame in frames_of(colour)]
    assert np.array_equal(mosaic_of(pictures, pixel_order="rgb"), expected)


@pytest.mark.parametrize(
    "frame, message",
    [
        (None, "frame 1 is of type 'NoneType': give a numpy array of uint8"),
        ([[1, 2], [3]], "frame 1 is of type 'list': give a numpy array of uint8"),
        (
            np.zeros((ROWS, COLS)),
            "frame 1 is an array of float64: give uint8, frame.astype(numpy.uint8) where all "
            "values are 0 to 255",
        ),
        (
            [[1, 2], [3, 4]],
            "frame 1 is an array of int64: give uint8, frame.astype(numpy.uint8) where all values "
            "are 0 to 255",
        ),
        (
            np.zeros((ROWS, COLS), bool),
            "frame 1 is an array of bool: give uint8, frame.astype(numpy.uint8) where all values "
            "are 0 to 255",
        ),
        (
            np.zeros((ROWS, COLS), np.int8),
            "frame 1 is an array of int8: give uint8, frame.astype(numpy.uint8) where all values "
            "are 0 to 255",
        ),
    ],
    ids=["None", "ragged", "float64", "int64", "bool", "int8"],
)
def test_elements_of_other_types(frame, message):
    with open_session() as session:
        session.add(cut(scene(channels=1), PATH[0]))
        with pytest.raises(TypeError) as caught:
            session.add(frame)
        assert str(caught.value) == message


@pytest.mark.parametrize(
    "shape, order, message",
    [
        (
            (ROWS,),
            None,
            "frame 1 has the shape (160,): give (rows, cols) for gray or (rows, cols, 3) for colour",
        ),
        (
            (1, ROWS, COLS, 3),
            None,
            "frame 1 has the shape (1, 160, 240, 3): give (rows, cols) for gray or (rows, cols, 3) "
            "for colour",
        ),
        (
            (3, ROWS, COLS),
            None,
            "frame 1 has the shape (3, 160, 240): give (rows, cols) for gray or (rows, cols, 3) for "
            "colour",
        ),
        (
            (ROWS, COLS, 2),
            None,
            "frame 1 has the shape (160, 240, 2): give (rows, cols) for gray or (rows, cols, 3) for "
            "colour",
        ),
        (
            (ROWS, COLS, 0),
            None,
            "frame 1 has the shape (160, 240, 0): give (rows, cols) for gray or (rows, cols, 3) for "
            "colour",
        ),
        (
            (ROWS, COLS),
            "rgb",
            "frame 1 has the shape (160, 240), pixel order 'rgb' has 3 values a pixel: give another "
            "order or convert the frame",
        ),
        (
            (ROWS, COLS, 3),
            "gray",
            "frame 1 has the shape (160, 240, 3), pixel order 'gray' has 1 value a pixel: give "
            "another order or convert the frame",
        ),
        (
            (COLS, ROWS),
            None,
            "frame 1 has 160 x 240 pixels, the session's frames have 240 x 160 pixels: give frames "
            "of one size",
        ),
        (
            (0, COLS),
            None,
            "frame 1 has 240 x 0 pixels, the session's frames have 240 x 160 pixels: give frames of "
            "one size",
        ),
    ],
)
def test_other_shapes(shape, order, message):
    with open_session() as session:
        session.add(cut(scene(channels=1), PATH[0]))
        with pytest.raises(ValueError) as caught:
            session.add(np.ones(shape, np.uint8), pixel_order=order)
        assert type(caught.value) is framequilt.InputError
        assert caught.value.code is framequilt.ErrorCode.INVALID_FRAME
        assert str(caught.value) == message
        # The session goes on.
        assert session.add(cut(scene(channels=1), PATH[1])).placement == (60, 20)


def test_more_rows_than_anything_has():
    with open_session() as session:
        with pytest.raises(framequilt.InputError, match=r"^frame 0 has the shape .*: give smaller"):
            session.add(np.broadcast_to(np.uint8(1), (2**31, 2)))


def test_unknown_pixel_order():
    with open_session() as session:
        with pytest.raises(ValueError, match="^'cmyk' is no PixelOrder: give one of 'bgr', 'rgb'"):
            session.add(cut(scene(channels=1), PATH[0]), pixel_order="cmyk")
        with pytest.raises(TypeError, match="^3 is no PixelOrder: give one of"):
            session.add(cut(scene(channels=1), PATH[0]), pixel_order=3)
        with pytest.raises(TypeError, match="^<Backend.HOST: 'host'> is no PixelOrder"):
            session.add(cut(scene(channels=1), PATH[0]), pixel_order=framequilt.Backend.HOST)


@pytest.mark.parametrize("hint", [(1.5, 2), (1, 2, 3), "ab", 7, (1, 2**31)])
def test_hints_that_are_no_points(hint):
    with open_session() as session:
        with pytest.raises(TypeError) as caught:
            session.add(cut(scene(channels=1), PATH[0]), hint=hint)
        assert str(caught.value) == (
            f"{hint!r} is not a point (x, y) of whole numbers below 2147483648: give 2 of them"
        )
