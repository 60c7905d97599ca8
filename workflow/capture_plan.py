# SPDX-License-Identifier: Apache-2.0
"""What a run has to do, and the files that tell the jobs."""

from __future__ import annotations

import hashlib
import os
import shutil
from dataclasses import dataclass
from pathlib import Path

from capture_record import (
    DONE,
    FAILED,
    Record,
    is_done,
    read_record,
    write_json,
)
from capture_settings import RESULT_FILES, CaptureSettings, Settings, SettingsError
from capture_tree import fingerprint

STATE = ".workflow"
# A process works on the corners of two frames at a time.
THREADS = 2


@dataclass
class Job:
    """A capture and how it is stitched."""

    capture: str  # Path below the tree.
    source: Path
    folder: Path  # Of its results.
    settings: CaptureSettings
    arguments: list[str]
    fingerprint: str
    # "done", or why there is something to do: "new", "changed", "failed", "unfinished".
    state: str

    @property
    def mosaic(self) -> str:
        return f"mosaic.{self.settings.format}"

    @property
    def id(self) -> str:
        """Stands for the capture, whose path may hold anything, in names of files."""
        return hashlib.sha256(os.fsencode(self.capture)).hexdigest()[:16]


def plan_jobs(
    tree: Path, results: Path, captures: list[str], settings: Settings, redo: bool
) -> list[Job]:
    """A job for each capture, the done ones included. SettingsError."""
    jobs = []
    for capture in captures:
        own, source, folder = settings.of(capture), tree / capture, results / capture
        arguments = own.arguments(source)
        job = Job(capture, source, folder, own, arguments, "", "new")
        job.fingerprint = fingerprint(source, arguments, job.mosaic)
        job.state = "new" if redo else _state(folder, read_record(folder), job.fingerprint)
        jobs.append(job)
    _refuse_captures_among_results(jobs)
    return jobs


def _state(folder: Path, record: Record, wanted: str) -> str:
    if is_done(folder, record, wanted):
        return "done"
    if record.get("status") == FAILED:
        return "failed"
    if record.get("status") == DONE:
        return "changed" if record.get("fingerprint") != wanted else "unfinished"
    return "unfinished" if record else "new"


def _refuse_captures_among_results(jobs: list[Job]) -> None:
    """Results of a capture lie beside the folders of the captures below it."""
    folders = {parent for job in jobs for parent in (job.folder, *job.folder.parents)}
    for job in jobs:
        outputs = {str(value) for value in job.settings.options.values()} | RESULT_FILES
        for name in sorted(outputs):
            if job.folder / name in folders:
                raise SettingsError(
                    f"results of '{job.capture}' would hold both a file '{name}' and the captures "
                    "of a folder of that name: rename the folder, or the file in the options"
                )


def write_plan(jobs: list[Job], results: Path, program: str, run: str, redo: bool) -> Path:
    """What the workflow reads, in the folder that is returned."""
    state = results / STATE
    for name in ("wanted", "done", "slurm"):
        shutil.rmtree(state / name, ignore_errors=True)
    for name in ("wanted", "done", "slurm", "locks"):
        (state / name).mkdir(parents=True, exist_ok=True)
    captures = {}
    for job in jobs:
        captures[job.id] = {
            "capture": job.capture,
            "folder": str(job.folder),
            "memory_mb": job.settings.memory_mb,
            "minutes": job.settings.minutes,
        }
        if job.state == "done":
            (state / "done" / job.id).touch()
        wanted = {
            "program": program,
            "source": str(job.source),
            "folder": str(job.folder),
            "mosaic": job.mosaic,
            "options": job.arguments,
            "lock": str(state / "locks" / job.id),
            "run": run,
            "redo": redo,
        }
        write_json(state / "wanted" / f"{job.id}.json", wanted)
    plan = {
        "job": str(Path(__file__).resolve().parent / "stitch_capture.py"),
        "threads": THREADS,
        "run": run,
        "captures": captures,
    }
    write_json(state / "plan.json", plan)
    return state
