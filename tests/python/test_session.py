# SPDX-License-Identifier: Apache-2.0
"""Opening, stopping, options, progress and what is said when something does not fit."""

import gc
import subprocess
import sys
import textwrap

import pytest

import framequilt
from captures import COLS, PATH, ROWS, add_path, cut, open_session, scene
from framequilt import ErrorCode, Stage, Verdict


def test_with_stops_the_session():
    with open_session() as session:
        assert not session.stopped
        assert repr(session) == (
            "<Session: frames of 160 rows x 240 cols, host, mosaic of 0 rows x 0 cols>"
        )
        add_path(session, scene(channels=1))
    assert session.stopped
    assert repr(session) == (
        "<Session: frames of 160 rows x 240 cols, host, mosaic of 190 rows x 360 cols, stopped>"
    )
    session.stop()
    with pytest.raises(framequilt.Error) as caught:
        session.add(cut(scene(channels=1), PATH[0]))
    assert type(caught.value) is framequilt.Error
    assert caught.value.code is ErrorCode.STOPPED
    assert str(caught.value) == "the session was stopped: open another one"


def test_with_stops_the_session_when_something_is_raised():
    with pytest.raises(KeyError):
        with open_session() as session:
            raise KeyError
    assert session.stopped


def test_one_session_at_a_time():
    with open_session():
        with pytest.raises(framequilt.Error) as caught:
            open_session()
        assert caught.value.code is ErrorCode.SESSION_OPEN
        assert str(caught.value) == "another session is open: stop it first"
    with open_session() as another:
        assert another.backend == "host"


def test_session_that_nobody_holds_is_over():
    session = open_session()
    del session
    with open_session():
        pass


def test_session_that_only_its_callback_holds_is_collected():
    holder = []
    holder.append(open_session(on_progress=lambda progress: bool(holder)))
    del holder
    gc.collect()
    with open_session():
        pass


@pytest.mark.parametrize(
    "options, message",
    [
        ({"rows": 0}, "rows and cols have to be the size of the frames, not 0 x 240"),
        ({"channels": 2}, "channels has to be 3 (colour) or 1 (gray), not 2"),
        (
            {"scale": 3},
            "scale has to be 1, 2 or automatic, not 3: with other scales no corners are found",
        ),
        ({"corner_budget": -1}, "cornerBudget has to be 0 to 1000, not -1"),
        (
            {"max_rows": 50000, "max_cols": 50000},
            "maxRows x maxCols has to stay below 2147483648 pixels: lower one of them",
        ),
        (
            {"backend": "opencl", "scale": 2},
            "OpenCL works at scale 1, not 2: use scale 1 or another backend",
        ),
    ],
)
def test_options_out_of_range(options, message):
    with pytest.raises(ValueError) as caught:
        open_session(**options)
    assert type(caught.value) is framequilt.InputError
    assert caught.value.code is ErrorCode.INVALID_OPTION
    assert str(caught.value) == message
    with open_session():
        pass


def test_options_of_other_types():
    with pytest.raises(TypeError, match="rows: int, cols: int"):
        open_session(rows="160")
    with pytest.raises(TypeError, match="rows: int, cols: int"):
        framequilt.Session(160, 240)
    with pytest.raises(TypeError, match="^on_progress has to be a function of one Progress, or "):
        open_session(on_progress=7)
    with pytest.raises(ValueError, match="^'gpu' is no Backend: give one of 'auto', 'opencl', 'host"):
        open_session(backend="gpu")
    with pytest.raises(TypeError, match="^True is no Criterion: give one of 'motion', 'overlap'$"):
        open_session(criterion=True)


def test_members_of_enumerations_and_their_values_are_options():
    for backend in ("host", framequilt.Backend.HOST):
        with open_session(backend=backend) as session:
            assert session.backend == "host"


def test_opencl_that_is_not_there():
    with pytest.raises(framequilt.Error) as caught:
        open_session(backend="opencl")
    assert caught.value.code is ErrorCode.NO_OPENCL
    assert framequilt.opencl_obstacle() in str(caught.value)
    assert framequilt.opencl_obstacle().startswith("no OpenCL platform")
    assert framequilt.opencl_devices() == []


def test_kernel_file_is_looked_for():
    assert framequilt.opencl_kernel_file().endswith("cl.bin") or not framequilt.opencl_kernel_file()
    assert framequilt.opencl_obstacle("nowhere/kernels")


def test_progress_tells_each_stage():
    seen = []

    def on_progress(progress):
        seen.append((progress.frame, progress.stage))

    with open_session(on_progress=on_progress) as session:
        add_path(session, scene(channels=1), PATH[:2])
    assert seen == [
        (0, Stage.COPYING),
        (0, Stage.DONE),
        (1, Stage.COPYING),
        (1, Stage.STITCHING),
        (1, Stage.DONE),
    ]


def test_progress_is_readable():
    seen = []
    with open_session(on_progress=lambda progress: seen.append(repr(progress))) as session:
        session.add(cut(scene(channels=1), PATH[0]))
    assert seen[0] == "Progress(frame=0, stage=<Stage.COPYING: 'copying'>)"


def test_false_cancels_the_frame():
    answers = iter([None, None, 0, True, True, None])
    picture = scene(channels=1)
    with open_session(on_progress=lambda progress: next(answers)) as session:
        assert session.add(cut(picture, PATH[0])).verdict is Verdict.WAITING
        cancelled = session.add(cut(picture, PATH[1]))
        assert cancelled.verdict is Verdict.CANCELLED
        assert repr(cancelled) == "<FrameResult: frame 1 cancelled>"
        assert session.add(cut(picture, PATH[1])).frame == 1
        assert next(answers, "none left") == "none left"


@pytest.mark.parametrize(
    "stage, joined", [(Stage.COPYING, False), (Stage.STITCHING, False), (Stage.DONE, True)]
)
def test_what_a_callback_raises_leaves_through_add(stage, joined):
    picture = scene(channels=1)
    raising = True

    def on_progress(progress):
        if raising and progress.frame == 1 and progress.stage is stage:
            raise KeyboardInterrupt(stage)

    with open_session(on_progress=on_progress) as session:
        session.add(cut(picture, PATH[0]))
        with pytest.raises(KeyboardInterrupt):
            session.add(cut(picture, PATH[1]))
        # Before it was decided the frame was cancelled.
        assert (session.mosaic().size > 0) == joined
        raising = False
        # Had it been joined, it would hardly have moved since.
        again = session.add(cut(picture, PATH[1]))
        assert again.placement == (None if joined else (60, 20))


@pytest.mark.parametrize("call", ["add", "stop"])
def test_callback_must_not_call_the_session_again(call):
    frame = cut(scene(channels=1), PATH[0])

    def on_progress(progress):
        session.add(frame) if call == "add" else session.stop()

    with open_session(on_progress=on_progress) as session:
        message = rf"^{call}\(\) was called from on_progress: call it when the frame is done$"
        with pytest.raises(RuntimeError, match=message):
            session.add(frame)


def test_callback_may_look_at_the_mosaic():
    shapes = []

    def on_progress(progress):
        shapes.append((session.mosaic().shape, session.steady_box.width, session.first_frame))
        session.copy_region((0, 0, 1, 1))

    with open_session(on_progress=on_progress) as session:
        add_path(session, scene(channels=1))
    assert shapes[-1] == ((ROWS + 30, COLS + 120), COLS + 120, 0)


def run_script(text):
    return subprocess.run(
        [sys.executable, "-c", textwrap.dedent(text)], capture_output=True, text=True, timeout=120
    )


def test_interpreter_ends_while_a_session_is_open():
    run = run_script(
        """
        import numpy, framequilt
        session = framequilt.Session(rows=160, cols=240, channels=1, backend="host")
        framequilt.set_report_sink(lambda line: None)
        session.add(numpy.full((160, 240), 7, numpy.uint8))
        print("end")
        """
    )
    assert (run.returncode, run.stdout, run.stderr) == (0, "end\n", "")


def test_interpreter_ends_while_another_thread_adds_frames():
    run = run_script(
        """
        import threading, numpy, framequilt
        session = framequilt.Session(rows=160, cols=240, channels=1, backend="host")
        begun = threading.Event()
        def add():
            while True:
                session.add(numpy.full((160, 240), 7, numpy.uint8))
                begun.set()
        threading.Thread(target=add, daemon=True).start()
        begun.wait()
        print("end")
        """
    )
    # The thread may still say that the session was stopped.
    assert (run.returncode, run.stdout) == (0, "end\n"), run.stderr
