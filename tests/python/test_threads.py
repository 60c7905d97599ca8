# SPDX-License-Identifier: Apache-2.0
"""Threads of Python beside and within a session."""

import sys
import threading

import pytest

import framequilt
from captures import PATH, add_path, cut, open_session, scene
from framequilt import Stage, Verdict


@pytest.fixture
def no_forced_switches():
    """Threads change only where one gives up the interpreter."""
    interval = sys.getswitchinterval()
    sys.setswitchinterval(1000)
    yield
    sys.setswitchinterval(interval)


def test_other_threads_go_on_while_a_frame_is_stitched(no_forced_switches):
    picture = scene(channels=1)
    may_step, has_stepped = threading.Lock(), threading.Lock()
    may_step.acquire()
    has_stepped.acquire()
    steps = 0
    steps_before = None
    stepped_meanwhile = False

    def step_whenever_allowed():
        nonlocal steps
        while True:
            may_step.acquire()
            steps += 1
            has_stepped.release()

    # Between the end of one callback and the beginning of the next this thread runs no Python: a
    # step made then was made while the frame was stitched.
    def on_progress(progress):
        nonlocal steps_before, stepped_meanwhile
        if progress.stage is Stage.STITCHING:
            steps_before = steps
            may_step.release()
        elif progress.stage is Stage.DONE and steps_before is not None:
            stepped_meanwhile = steps > steps_before

    with open_session(on_progress=on_progress) as session:
        threading.Thread(target=step_whenever_allowed, daemon=True).start()
        session.add(cut(picture, PATH[0]))
        # Now and then a frame is done before the system has woken the other thread.
        for _ in range(500):
            session.add(cut(picture, PATH[1]))
            has_stepped.acquire()
            if stepped_meanwhile:
                break
    assert stepped_meanwhile


def test_several_threads_add_in_turn():
    frame = cut(scene(channels=1), PATH[0])
    results = []
    with open_session() as session:

        def add_some():
            for _ in range(5):
                results.append(session.add(frame))

        threads = [threading.Thread(target=add_some) for _ in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
    assert sorted(result.frame for result in results) == list(range(20))
    verdicts = {result.frame: result.verdict for result in results}
    assert verdicts.pop(0) is Verdict.WAITING
    assert set(verdicts.values()) == {Verdict.REFUSED}


def test_looking_does_not_wait_for_the_frame():
    picture = scene(channels=1)
    seen = []

    def look():
        seen.append((session.steady_box, session.mosaic().shape, session.copy_region((0, 0, 9, 8))))

    def on_progress(progress):
        if progress.frame == 2 and progress.stage is Stage.STITCHING:
            onlooker = threading.Thread(target=look)
            onlooker.start()
            onlooker.join()

    with open_session(on_progress=on_progress) as session:
        add_path(session, picture)
    ((box, shape, region),) = seen
    assert box == (0, 0, 300, 180)
    assert shape == (180, 300)
    assert region.all()


def test_stop_of_another_thread_waits_for_the_frame():
    picture = scene(channels=1)
    stoppers = []

    def on_progress(progress):
        if progress.frame == 1 and progress.stage is Stage.STITCHING:
            stoppers.append(threading.Thread(target=session.stop))
            stoppers[0].start()

    session = open_session(on_progress=on_progress)
    session.add(cut(picture, PATH[0]))
    assert session.add(cut(picture, PATH[1])).verdict is Verdict.JOINED
    stoppers[0].join()
    assert session.stopped
    with pytest.raises(framequilt.Error, match="^the session was stopped"):
        session.add(cut(picture, PATH[2]))
    assert session.mosaic().shape == (180, 300)


def test_callback_comes_on_the_thread_of_add():
    threads = set()

    def on_progress(progress):
        threads.add(threading.get_ident())

    with open_session(on_progress=on_progress) as session:
        adder = threading.Thread(target=add_path, args=(session, scene(channels=1)))
        adder.start()
        ident = adder.ident
        adder.join()
    assert threads == {ident}
