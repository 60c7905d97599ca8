# SPDX-License-Identifier: Apache-2.0
"""The engine's lines."""

import sys

import pytest

import framequilt
from captures import add_path, open_session, scene


def add_some(**options):
    with open_session(**options) as session:
        return add_path(session, scene(channels=1))


def test_nobody_sees_them_at_first(capfd):
    add_some()
    assert capfd.readouterr() == ("", "")


def test_sink_gets_them_as_text():
    lines = []
    framequilt.set_report_sink(lines.append)
    add_some()
    assert lines.count("imageMosaicFun in") == 2
    framequilt.set_report_sink(None)
    count = len(lines)
    add_some()
    assert len(lines) == count


def test_former_sink_is_let_go():
    def sink(line):
        pass

    before = sys.getrefcount(sink)
    framequilt.set_report_sink(sink)
    assert sys.getrefcount(sink) == before + 1
    framequilt.set_report_sink(print)
    assert sys.getrefcount(sink) == before


def test_what_a_sink_raises_stops_nothing(monkeypatch):
    raised = []
    monkeypatch.setattr(sys, "unraisablehook", lambda failure: raised.append(failure.exc_value))

    def sink(line):
        raise KeyError(line)

    framequilt.set_report_sink(sink)
    assert add_some()[-1].placement == (120, 30)
    assert {type(failure) for failure in raised} == {KeyError}


def test_sink_must_not_call_the_library(monkeypatch):
    raised = []
    monkeypatch.setattr(sys, "unraisablehook", lambda failure: raised.append(failure.exc_value))
    with open_session() as session:
        framequilt.set_report_sink(lambda line: session.copy_region((0, 0, 1, 1)))
        add_path(session, scene(channels=1))
        framequilt.set_report_sink(None)
    assert {str(failure) for failure in raised} == {
        "a report sink must not call framequilt: keep the line and return"
    }


def test_sink_has_to_be_a_function():
    with pytest.raises(TypeError, match="^a report sink has to be a function of one line, or None"):
        framequilt.set_report_sink("stdout")
