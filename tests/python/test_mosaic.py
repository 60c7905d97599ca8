# SPDX-License-Identifier: Apache-2.0
"""Views and copies of the mosaic, and how long they live."""

import gc

import numpy as np
import pytest

import framequilt
from captures import COLS, PATH, ROWS, add_path, cut, open_session, scene
from framequilt import Box


def test_nothing_before_two_frames_have_joined():
    for channels, shape in ((1, (0, 0)), (3, (0, 0, 3))):
        with open_session(channels=channels) as session:
            session.add(cut(scene(channels=1), PATH[0]))
            assert session.mosaic().shape == shape
            assert session.mosaic().dtype == np.uint8
            assert not session.mosaic().flags.writeable
            assert session.steady_box == Box(0, 0, 0, 0)
            region = session.copy_region((-2, 1, 3, 4))
            assert region.shape == (4, 3, *shape[2:])
            assert not region.any()


def test_view_is_of_the_session_itself():
    picture = scene(channels=1)
    with open_session() as session:
        add_path(session, picture, PATH[:2])
        before = session.mosaic()
        kept = before.copy()
        joined = session.add(cut(picture, PATH[2]))
        after = session.mosaic()
        assert np.shares_memory(before, after)
        assert after.shape == (ROWS + 30, COLS + 120)
        # The next frame changed pixels of the older view, where the two overlap.
        changed = before != kept
        assert changed.any()
        assert not changed[: joined.changed.y].any()


def test_view_cannot_be_written():
    with open_session() as session:
        add_path(session, scene(channels=1))
        view = session.mosaic()
        with pytest.raises(ValueError):
            view[0, 0] = 1
        with pytest.raises(ValueError):
            view.flags.writeable = True


def test_view_outlives_stop_and_session():
    picture = scene(channels=1)
    session = open_session()
    add_path(session, picture)
    view = session.mosaic()
    kept = view.copy()
    session.stop()
    assert np.array_equal(session.mosaic(), kept)
    del session
    gc.collect()
    # Another mosaic takes what memory is free.
    with open_session() as other:
        add_path(other, scene(channels=1, seed=9))
        assert np.array_equal(view, kept)
        assert not np.array_equal(other.mosaic(), kept)


def test_view_stays_as_it_was_when_the_mosaic_moves():
    # Wide frames to the left, so that the mosaic soon grows beyond its first memory.
    rows, cols = 120, 1500
    picture = scene(rows, 5200, 1)
    with open_session(rows=rows, cols=cols) as session:
        views = []
        for x in (3200, 2500, 1800, 1100, 400):
            result = session.add(cut(picture, (x, 0), rows, cols))
            if views and not np.shares_memory(views[-1], session.mosaic()):
                break
            views = [*views, session.mosaic()] if session.mosaic().size else views
            kept = session.mosaic().copy()
        assert len(views) >= 2
        assert result.verdict is framequilt.Verdict.JOINED
        assert np.array_equal(views[-1], kept)
        assert session.mosaic().shape[1] == kept.shape[1] + 700
        assert result.growth_shift == (700, 0)


def test_views_and_regions_agree():
    with open_session(channels=3) as session:
        add_path(session, scene())
        box = session.steady_box
        assert box == Box(0, 0, COLS + 120, ROWS + 30)
        assert np.array_equal(session.copy_region(box), session.mosaic())
        part = session.copy_region((-1, 5, 4, 2))
        assert not part[:, 0].any()
        assert np.array_equal(part[:, 1:], session.mosaic()[5:7, :3])


def test_regions_are_the_callers():
    with open_session() as session:
        add_path(session, scene(channels=1))
        region = session.copy_region(np.array([0, 0, 5, 4]))
        kept = session.mosaic().copy()
        region[:] = 1
        assert np.array_equal(session.mosaic(), kept)
        assert region.flags.c_contiguous


def test_steady_regions_stay_when_the_mosaic_grows_to_the_left():
    picture = scene(channels=1)
    with open_session() as session:
        add_path(session, picture, ((300, 100), (240, 90)))
        kept = session.copy_region((220, 10, 20, 100))
        joined = session.add(cut(picture, (180, 80)))
        assert joined.growth_shift == (60, 10)
        assert joined.placement == (-120, -20)
        assert joined.mosaic_position == (0, 0)
        assert session.steady_box[:2] == (-120, -20)
        assert np.array_equal(session.copy_region((220, 10, 20, 100)), kept)


@pytest.mark.parametrize("region", [(1, 2, 3), "abcd", None, (0, 0, 1.5, 2), (0, 0, 2**31, 1)])
def test_regions_that_are_no_boxes(region):
    with open_session() as session:
        with pytest.raises(TypeError) as caught:
            session.copy_region(region)
        assert str(caught.value) == (
            f"{region!r} is not a box (x, y, width, height) of whole numbers below 2147483648: "
            "give 4 of them"
        )


def test_regions_of_negative_size():
    with open_session() as session:
        with pytest.raises(framequilt.InputError, match="^the region has a negative size: "):
            session.copy_region((0, 0, -1, 5))


def test_half_scale():
    rows, cols = 480, 640
    picture = scene(rows, cols + 160, 1).repeat(2, axis=0).repeat(2, axis=1)
    with open_session(rows=rows, cols=cols, scale=2) as session:
        session.add(cut(picture, (0, 0), rows, cols))
        joined = session.add(cut(picture, (160, 0), rows, cols))
        assert session.scale == 2
        assert joined.placement == (160, 0)
        assert joined.mosaic_position == (80, 0)
        assert session.mosaic().shape == (rows // 2, (cols + 160) // 2)
