# SPDX-License-Identifier: Apache-2.0
"""What comes back of a frame."""

import enum
import pickle

import pytest

import framequilt
from captures import COLS, PATH, ROWS, add_path, cut, open_session, scene
from framequilt import Box, Point, Refusal, Verdict


@pytest.fixture(scope="module")
def results():
    """A first frame, two that join, one that stands still, one from elsewhere."""
    picture = scene(channels=1)
    with open_session() as session:
        return add_path(session, picture, (*PATH, PATH[-1], (460, 200)))


def test_verdicts_and_frames(results):
    assert [result.verdict for result in results] == [
        Verdict.WAITING,
        Verdict.JOINED,
        Verdict.JOINED,
        Verdict.REFUSED,
        Verdict.REFUSED,
    ]
    assert [result.frame for result in results] == [0, 1, 2, 3, 4]
    assert not any(result.became_first or result.full for result in results)


def test_joined_frame_has_its_place(results):
    joined = results[2]
    assert joined.placement == (120, 30)
    assert joined.placement.x == 120
    assert joined.mosaic_position == Point(120, 30)
    assert joined.changed == Box(120, 30, COLS, ROWS)
    assert joined.growth_shift == Point(0, 0)
    assert joined.reason is None
    assert joined.judged is None
    assert joined.explain() == ""


def test_first_joined_frame_brings_the_first_one_along(results):
    assert results[1].changed == Box(0, 0, COLS + 60, ROWS + 20)


def test_measures_of_a_joined_frame(results):
    measures = results[2].measures
    assert measures.offset == Point(60, 10)
    assert measures.matches.value >= measures.matches.limit == 11
    assert measures.moved.value == pytest.approx(100 * 60 / COLS)
    assert measures.overlap.value == pytest.approx(100 - 100 * 60 / COLS)
    assert measures.change is None
    assert measures.brightness is None
    assert measures.sharpness is None


def test_refused_frame_says_why(results):
    still = results[3]
    assert still.reason is Refusal.MOVED_TOO_LITTLE
    assert still.judged.value == 0
    assert still.judged.limit == pytest.approx(10, abs=0.001)
    assert still.explain() == "moved too little: moved by 0 %, needs more than 10 %"
    assert results[4].reason is Refusal.NO_OVERLAP
    for refused in results[3:]:
        assert refused.placement is None
        assert refused.mosaic_position is None
        assert refused.changed is None
        assert refused.growth_shift is None


def test_representations_are_readable(results):
    assert repr(results[0]) == "<FrameResult: frame 0 waiting for a frame that joins it>"
    assert repr(results[2]) == "<FrameResult: frame 2 joined at (120, 30)>"
    assert repr(results[3]) == (
        "<FrameResult: frame 3 refused, moved too little: moved by 0 %, needs more than 10 %>"
    )
    assert repr(results[3].judged) == f"Measure(value=0.0, limit={results[3].judged.limit!r})"
    measures = repr(results[2].measures)
    assert measures.startswith("Measures(matches=Measure(value=")
    assert ", offset=(60, 10), moved=Measure(value=25.0, limit=" in measures


def test_words_of_a_reason_are_the_librarys():
    words = Refusal.MOVED_TOO_FAR.words
    assert words.reason == "moved too far"
    assert words.quantity == "overlap"
    assert words.unit == "%"
    assert words.relation == "needs more than"
    assert words.advice == "slow down or take frames more often"
    assert repr(words) == "RefusalWords('moved too far')"
    assert len({reason.words.reason for reason in Refusal}) == len(Refusal) == 8


def test_enumerations_are_pythons():
    assert issubclass(Refusal, enum.Enum)
    assert Refusal("mosaic_full") is Refusal.MOSAIC_FULL
    assert pickle.loads(pickle.dumps(Verdict.JOINED)) is Verdict.JOINED


def test_third_failure_makes_a_new_first_frame():
    picture = scene(channels=1)
    other = scene(channels=1, seed=8)
    with open_session() as session:
        session.add(cut(picture, (0, 0)))
        failed = [session.add(cut(other, corner)) for corner in ((0, 0), (300, 0), (460, 240))]
        assert [result.became_first for result in failed] == [False, False, True]
        assert repr(failed[2]).endswith("; it is the first one from now on>")
        assert session.first_frame == 3


def test_full_mosaic_refuses():
    picture = scene(channels=1)
    # The mosaic begins with more pixels than that.
    with open_session(max_rows=100, max_cols=100) as session:
        joined, refused = add_path(session, picture)[1:]
        assert joined.full
        assert repr(joined) == "<FrameResult: frame 1 joined at (60, 20); the mosaic is full>"
        assert refused.reason is Refusal.MOSAIC_FULL
        assert refused.judged.limit == 10000


def test_overlap_criterion_measures_brightness():
    picture = scene(channels=1)
    with open_session(criterion="overlap", dynamic_scene=True) as session:
        session.add(cut(picture, PATH[0]))
        refused = session.add(cut(picture, PATH[1]) // 2)
        assert refused.reason is Refusal.BRIGHTNESS
        assert refused.measures.brightness.value > refused.measures.brightness.limit
        assert "brightness=Measure(value=" in repr(refused.measures)


def test_hints_are_taken():
    picture = scene(channels=1)
    with open_session() as session:
        session.add(cut(picture, PATH[0]))
        assert session.add(cut(picture, PATH[1]), hint=(60, 20)).placement == (60, 20)
        # Leads nowhere: the whole frame is searched after all.
        assert session.add(cut(picture, PATH[2]), hint=Point(-200, 0)).placement == (120, 30)


def test_boxes_cut_arrays():
    picture = scene(channels=1)
    with open_session() as session:
        last = add_path(session, picture)[-1]
        part = session.mosaic()[last.changed.slices]
        assert part.shape == (ROWS, COLS)
        # The right end is of this frame alone, but for the rounding of the seam.
        difference = part[:, -40:].astype(int) - cut(picture, PATH[-1])[:, -40:]
        assert abs(difference).max() <= 2


def test_version_is_told():
    assert framequilt.__version__.count(".") == 2
