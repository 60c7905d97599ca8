# SPDX-License-Identifier: Apache-2.0
"""Folders, pictures and videos that go away while a run is at work. A run tells every frame on a pipe
that holds one page, so that it waits for the test soon after the line that the test has read."""

import json
import shutil
import signal
import subprocess
from pathlib import Path

import pytest
from conftest import OUTPUTS, PROGRAM, contents, leftovers, program, simulate, stitch_command


FRAMES = 150  # A page takes the lines of some 70.


class HeldRun:
    def __init__(self, command: list[object], *before: str):
        words = [*before, PROGRAM, *(str(word) for word in command), "--verbose"]
        self.process = subprocess.Popen(
            words, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, pipesize=4096
        )
        self.told = ""

    def await_line(self, part: str):
        for line in self.process.stderr:
            self.told += line
            if part in line:
                return
        raise AssertionError(f"no line with {part}: {self.told}")

    def end(self) -> int:
        _, told = self.process.communicate(timeout=120)
        self.told += told
        return self.process.returncode


def long_capture(folder: Path, capture: Path) -> Path:
    """The same pictures again and again, forth and back."""
    pictures = sorted(capture.glob("*.png"))
    folder.mkdir()
    way = [*pictures, *pictures[-2:0:-1]]
    for i in range(FRAMES):
        shutil.copyfile(way[i % len(way)], folder / f"f{i:04}.png")
    return folder


@pytest.fixture(name="pictures")
def pictures_of_a_long_capture(tmp_path, capture) -> Path:
    return long_capture(tmp_path / "pictures", capture)


def started(pictures: Path, out: Path, journal: bool = False) -> HeldRun:
    out.mkdir(exist_ok=True)
    command = stitch_command(pictures, out, journal)
    run = HeldRun(command)
    run.await_line("'f0004.png': joined at ")
    return run


def test_pictures_that_vanish_are_named_and_the_rest_is_stitched(pictures, tmp_path):
    out = tmp_path / "out"
    run = started(pictures, out)
    shutil.rmtree(pictures)
    assert run.end() == 0
    gone = [line for line in run.told.splitlines() if "left out" in line]
    # Each is named, in one line; all but those that had been read.
    report = json.loads((out / "r.json").read_text())
    assert len(gone) == report["left_out"] == FRAMES - report["frames_read"] > 0
    assert "f0149.png' cannot be opened (No such file or directory): left out" in gone[-1]
    assert report["joined"] >= 3
    assert sorted(contents(out)) == sorted(OUTPUTS)


def test_one_picture_that_vanishes(pictures, tmp_path):
    out = tmp_path / "out"
    run = started(pictures, out)
    gone = pictures / "f0140.png"
    gone.unlink()
    assert run.end() == 0
    line = f"framequilt: '{gone}' cannot be opened (No such file or directory): left out\n"
    assert line in run.told
    assert json.loads((out / "r.json").read_text())["frames_read"] == FRAMES - 1


def test_an_output_folder_that_was_removed_is_made_again(pictures, tmp_path):
    out = tmp_path / "out"
    run = started(pictures, out)
    shutil.rmtree(out)
    run.process.send_signal(signal.SIGINT)
    assert run.end() == 0, run.told
    assert sorted(contents(out)) == sorted(OUTPUTS)
    assert leftovers(out) == []
    # What was stitched so far, as a run over these frames writes it.
    frames = json.loads((out / "r.json").read_text())["frames_read"]
    so_far = tmp_path / "so-far"
    so_far.mkdir()
    for i in range(frames):
        shutil.copyfile(pictures / f"f{i:04}.png", so_far / f"f{i:04}.png")
    (tmp_path / "expected").mkdir()
    expected = program(*stitch_command(so_far, tmp_path / "expected", journal=False))
    assert expected.returncode == 0
    for name in ["m.png", "p.csv", "m-outlines.png"]:
        assert (out / name).read_bytes() == (tmp_path / "expected" / name).read_bytes()


def test_an_output_folder_whose_place_is_taken(pictures, tmp_path):
    out, elsewhere = tmp_path / "out", tmp_path / "elsewhere"
    elsewhere.mkdir()
    out.mkdir()
    command = stitch_command(pictures, out, journal=False)
    command[command.index("--report") + 1] = elsewhere / "r.json"
    run = HeldRun(command)
    run.await_line("'f0004.png': joined at ")
    shutil.rmtree(out)
    out.write_text("a file now")
    run.process.send_signal(signal.SIGINT)
    assert run.end() == 2
    told = [line for line in run.told.splitlines() if "could not be written" in line]
    assert any(f"'{out}/m.png' could not be written (Not a directory)" in line for line in told)
    assert json.loads((elsewhere / "r.json").read_text())["joined"] >= 3
    assert out.read_text() == "a file now"


def test_a_journal_that_was_removed_ends_and_the_run_goes_on(pictures, tmp_path):
    out = tmp_path / "out"
    run = started(pictures, out, journal=True)
    shutil.rmtree(out / "j")
    run.await_line("the journal of")
    run.process.send_signal(signal.SIGINT)
    assert run.end() == 0
    assert f"framequilt: the journal of '{out}/j' was removed; the run goes on without" in run.told
    assert run.told.count("the journal of") == 1
    assert sorted(contents(out)) == sorted(OUTPUTS)
    assert not (out / "j").exists()


def test_a_simulation_whose_folder_is_removed(tmp_path):
    out = tmp_path / "capture"
    size = ["--cols", "64", "--rows", "64", "--path", "drift", "--frames", "20000"]
    words = [PROGRAM, "simulate", "--generated", *size, "-o", str(out)]
    with subprocess.Popen(words, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as run:
        while not (out / "frame_0003.png").exists():
            assert run.poll() is None
        while out.exists():
            shutil.rmtree(out, ignore_errors=True)
        _, told = run.communicate(timeout=120)
    assert run.returncode == 2
    assert told.startswith("framequilt: ") and told.count("\n") == 1 and f"'{out}" in told


def test_a_hang_up_is_ignored_where_the_caller_said_so(pictures, tmp_path):
    out = tmp_path / "out"
    out.mkdir()
    run = HeldRun(stitch_command(pictures, out, journal=False), "nohup")
    run.await_line("'f0004.png': joined at ")
    run.process.send_signal(signal.SIGHUP)
    assert run.end() == 0
    assert json.loads((out / "r.json").read_text())["frames_read"] == FRAMES
