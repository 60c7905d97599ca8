# SPDX-License-Identifier: Apache-2.0
"""A capture becomes results, or a record of why not; and whatever ends a job leaves nothing that
counts as done."""

import json
import os
import shutil
import signal
import subprocess
import sys
from pathlib import Path

import pytest
from capture_record import is_done, read_record, write_record
from capture_tree import fingerprint
from conftest import FRONT, PROGRAM, program_that


class Job:
    """What the workflow gives to a job."""

    def __init__(self, folder: Path, source: Path):
        self.source, self.results, self.stamp = source, folder / "results", folder / "stamp"
        self.file = folder / "wanted.json"
        self.wanted = {
            "program": PROGRAM,
            "source": str(source),
            "folder": str(self.results),
            "mosaic": "mosaic.png",
            "options": ["--backend", "host"],
            "lock": str(folder / "lock"),
            "run": "this",
            "redo": False,
        }

    def start(self, **changes: object) -> subprocess.Popen[str]:
        self.wanted |= changes
        self.file.write_text(json.dumps(self.wanted), encoding="utf-8")
        self.stamp.unlink(missing_ok=True)
        command = [sys.executable, FRONT.parent / "stitch_capture.py", self.file, self.stamp]
        return subprocess.Popen(command, stderr=subprocess.PIPE, text=True)

    def run(self, **changes: object) -> dict:
        """The record it leaves, its exit status and whether there is a stamp included."""
        process = self.start(**changes)
        _, told = process.communicate()
        assert told == ""
        record = read_record(self.results)
        return record | {"exit": process.returncode, "stamp": self.stamp.exists()}

    def is_done(self) -> bool:
        now = fingerprint(self.source, self.wanted["options"], self.wanted["mosaic"])
        return is_done(self.results, read_record(self.results), now)

    def files(self) -> set[str]:
        return set(os.listdir(self.results))


@pytest.fixture(name="job")
def job_of_a_copy(tmp_path, capture):
    return Job(tmp_path, shutil.copytree(capture, tmp_path / "capture"))


def test_results_of_a_capture(job):
    record = job.run()
    assert (record["status"], record["exit"], record["stamp"]) == ("done", 0, True)
    assert (record["frames_read"], record["joined"], record["refused"]) == (4, 4, 0)
    names = {"mosaic.png", "placements.csv", "report.json", "log.txt"}
    assert set(record["outputs"]) == names
    assert job.files() == names | {"capture.json"}
    assert "mosaic: " in (job.results / "log.txt").read_text()
    assert job.is_done()
    (job.results / "mosaic.png").unlink()
    assert not job.is_done()


def test_more_outputs_come_along_and_go_with_their_option(job):
    job.run(options=["--pyramid", "zoom", "--outlines"])
    assert {"zoom", "mosaic-outlines.png"} < job.files()
    (job.results / "child").mkdir()
    job.run(options=[])
    assert not {"zoom", "mosaic-outlines.png"} & job.files()
    assert "child" in job.files()  # Results of a capture below this one.


def test_what_is_done_is_not_done_again(job):
    job.run()
    before = (job.results / "mosaic.png").stat().st_mtime_ns
    assert job.run(program="/nowhere")["stamp"]
    assert (job.results / "mosaic.png").stat().st_mtime_ns == before
    job.run(program=PROGRAM, redo=True)
    assert (job.results / "mosaic.png").stat().st_mtime_ns > before


def test_what_cannot_be_stitched_says_why_and_has_no_mosaic(job):
    job.run()
    for file in sorted(job.source.glob("*.png"))[1:]:
        file.unlink()
    record = job.run()
    assert (record["status"], record["exit"], record["stamp"]) == ("failed", 1, False)
    assert record["error"] == f"'{job.source}' gives only one frame: give two or more"
    assert job.files() == {"capture.json", "log.txt"}


def test_frames_that_do_not_join(job):
    for file in sorted(job.source.glob("*.png"))[1:-1]:
        file.unlink()
    record = job.run()
    assert (record["status"], record["error"]) == ("failed", "nothing could be joined")
    assert list(record["refusals"].items())[0] == ("no overlap found", 1)


def test_a_program_that_is_killed(job, tmp_path):
    record = job.run(program=str(program_that(tmp_path, "kill -KILL $$")))
    assert record["error"] == "framequilt was ended by SIGKILL (out of memory?): see log.txt"
    record = job.run(program="/nowhere")
    assert record["error"] == "No such file or directory: '/nowhere'"


def test_pictures_that_come_while_it_is_stitched(job, tmp_path):
    script = f"cp '{job.source}/frame_0001.png' '{job.source}/late.png'"
    record = job.run(program=str(program_that(tmp_path, script)))
    assert record["error"] == "pictures changed while it was stitched: run again"
    assert "mosaic.png" not in job.files()
    assert job.run(program=PROGRAM)["frames_read"] == 5


def test_an_interrupted_program_has_not_done_its_work(job, tmp_path):
    """It writes the mosaic so far and says so; that is not the mosaic of the capture."""
    report = {"version": "", "backend": "", "frames_read": 2, "joined": 2, "refused": 0}
    report |= {"left_out": 0, "frames": [], "mosaic": {"cols": 1, "rows": 1}, "interrupted": True}
    script = f"echo '{json.dumps(report)}' >report.json; touch mosaic.png; exit 0"
    record = job.run(program=str(program_that(tmp_path, script)))
    assert (record["status"], record["stamp"]) == ("interrupted", False)
    assert "mosaic.png" not in job.files()


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGKILL])
def test_a_job_that_is_stopped(job, tmp_path, number):
    job.run()
    (job.source / "frame_0004.png").unlink()
    fifo = tmp_path / "fifo"
    os.mkfifo(fifo)
    script = f'echo half >mosaic.png; echo $$ >"{fifo}"; exec sleep 1000'
    process = job.start(program=str(program_that(tmp_path, script)))
    stitch = int(fifo.read_text())  # It has begun.
    process.send_signal(number)
    process.communicate()
    assert process.returncode != 0 and not job.stamp.exists() and not job.is_done()
    if number == signal.SIGKILL:
        os.kill(stitch, signal.SIGKILL)
        assert read_record(job.results)["status"] == "started"
    else:
        assert read_record(job.results)["error"] == f"interrupted by {number.name}"
        assert job.files() == {"capture.json", "log.txt"}
        with pytest.raises(ProcessLookupError):
            os.kill(stitch, 0)
    assert job.run(program=PROGRAM)["frames_read"] == 3
    assert job.files() == {"capture.json", "log.txt", "mosaic.png", "placements.csv", "report.json"}


def test_what_a_sudden_end_left_behind_is_cleaned_up(job):
    """Between two renames: the record still tells which files are no results."""
    job.run()
    (job.results / "zoom").mkdir()
    write_record(job.results, {"status": "started", "outputs": ["mosaic.png", "zoom"]})
    assert not job.is_done()
    job.run()
    assert job.is_done() and "zoom" not in job.files()
