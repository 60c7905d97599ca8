# SPDX-License-Identifier: Apache-2.0
"""One job of the workflow: stitches a capture into the folder of its results.

    stitch_capture.py WANTED.json STAMP

Everything is made in a folder of its own and moved when it is complete; the record (capture.json)
comes last. So whatever ends this job at whatever time, results without a record that says "done"
are not taken for done. The stamp appears for a capture that is done; else the exit status is 1."""

from __future__ import annotations

import contextlib
import fcntl
import os
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path
from types import FrameType
from typing import Any, Iterator

from capture_record import (
    DONE,
    FAILED,
    INTERRUPTED,
    STARTED,
    Record,
    is_done,
    read_json,
    read_record,
    write_record,
)
from capture_tree import fingerprint

PARTIAL = ".partial-"


class Stop:
    """Takes the signals that end this job. The program is killed: told to end, it would write the
    mosaic so far, which nobody wants here."""

    def __init__(self) -> None:
        self.signal = ""
        self.waiting = True  # Until there is something to tidy up.
        self._program: subprocess.Popen[bytes] | None = None
        for number in (signal.SIGTERM, signal.SIGINT):
            signal.signal(number, self._take)

    def _take(self, number: int, frame: FrameType | None) -> None:
        self.signal = signal.Signals(number).name
        if self.waiting:
            sys.exit(1)
        if self._program:
            self._program.kill()

    def wait_for(self, program: subprocess.Popen[bytes]) -> int:
        self._program = program
        if self.signal:
            program.kill()
        status = program.wait()
        self._program = None
        return status


@contextlib.contextmanager
def alone(lock: Path) -> Iterator[None]:
    """One job at a time works on a capture, also beside one that outlived the run that began it."""
    with open(lock, "w", encoding="utf-8") as file:
        # Some network file systems know no locks; then the renames alone keep results whole.
        with contextlib.suppress(OSError):
            fcntl.flock(file, fcntl.LOCK_EX)
        yield


def run_stitch(wanted: dict[str, Any], folder: Path, stop: Stop) -> int:
    """Its exit status, negative for a signal; what it prints goes to log.txt."""
    command = [wanted["program"], "stitch", wanted["source"], "-o", wanted["mosaic"]]
    command += ["--placements", "placements.csv", "--report", "report.json"]
    command += wanted["options"]
    with open(folder / "log.txt", "w", encoding="utf-8", errors="surrogateescape") as log:
        print(shlex.join(command), file=log, flush=True)
        program = subprocess.Popen(
            command, cwd=folder, stdin=subprocess.DEVNULL, stdout=log, stderr=log
        )
        return stop.wait_for(program)


def refusals(report: dict[str, Any]) -> dict[str, int]:
    """Why frames were refused, the most frequent reason first; of two, one that was measured."""
    counts: dict[str, int] = {}
    measured = {}
    for frame in report["frames"]:
        if "reason" in frame:
            text = frame["reason"]["text"]
            counts[text] = counts.get(text, 0) + 1
            measured[text] = "quantity" in frame["reason"]
    return dict(sorted(counts.items(), key=lambda item: (-item[1], not measured[item[0]], item[0])))


def judged(status: int, folder: Path) -> Record:
    """What became of a run that ended with `status`, and its files in `folder`."""
    record: Record = {"status": FAILED}
    report = read_json(folder / "report.json") or {}
    if report:
        record |= {key: report[key] for key in ("version", "backend", "frames_read", "joined")}
        record |= {key: report[key] for key in ("refused", "left_out")}
        record["refusals"] = refusals(report)
        if report["mosaic"]:
            record |= {"cols": report["mosaic"]["cols"], "rows": report["mosaic"]["rows"]}
    if status < 0:
        name = signal.Signals(-status).name
        memory = " (out of memory?)" if name == "SIGKILL" else ""
        record["error"] = f"framequilt was ended by {name}{memory}: see log.txt"
    elif status == 1 and report:
        record["error"] = "nothing could be joined"
    elif status != 0:
        begin = "framequilt: "
        lines = (folder / "log.txt").read_text(encoding="utf-8", errors="replace").splitlines()
        told = [line.removeprefix(begin) for line in lines if line.startswith(begin)]
        unknown = f"framequilt ended with status {status}: see log.txt"
        record["error"] = told[-1] if told else unknown
    elif report.get("interrupted"):
        record |= {"status": INTERRUPTED, "error": "interrupted"}
    else:
        record["status"] = DONE
        if report.get("full"):
            record["remark"] = "the mosaic is full: raise --max-rows or --max-cols"
    return record


def put_in_place(partial: Path, folder: Path, record: Record) -> None:
    """The new results instead of the old ones."""
    new = sorted(os.listdir(partial))
    old = read_record(folder).get("outputs", [])
    # Whoever finds the folder after a sudden end knows what is not a result.
    started = {"status": STARTED, "run": record["run"], "outputs": sorted({*new, *old})}
    write_record(folder, started)
    for name in old:
        remove(folder / name)
    for name in new:
        remove(folder / name)
        os.replace(partial / name, folder / name)
    write_record(folder, record | {"outputs": new})


def remove(path: Path) -> None:
    if path.is_dir() and not path.is_symlink():
        shutil.rmtree(path)
    else:
        path.unlink(missing_ok=True)


def stitch(wanted: dict[str, Any], stop: Stop) -> Record:
    """The record of the capture, which is beside the results then."""
    folder, source = Path(wanted["folder"]), Path(wanted["source"])
    before = fingerprint(source, wanted["options"], wanted["mosaic"])
    record = read_record(folder)
    if not wanted["redo"] and is_done(folder, record, before):
        return record  # By a job that was started earlier.
    outputs = record.get("outputs", [])
    write_record(folder, {"status": STARTED, "run": wanted["run"], "outputs": outputs})
    for left in folder.glob(PARTIAL + "*"):
        shutil.rmtree(left)

    partial = Path(tempfile.mkdtemp(prefix=PARTIAL, dir=folder))
    try:
        start = time.monotonic()
        status = run_stitch(wanted, partial, stop)
        if stop.signal:
            record = {"status": INTERRUPTED, "error": f"interrupted by {stop.signal}"}
        else:
            record = judged(status, partial)
        record["seconds"] = round(time.monotonic() - start, 2)
        after = fingerprint(source, wanted["options"], wanted["mosaic"])
        if record["status"] == DONE and before != after:
            error = "pictures changed while it was stitched: run again"
            record |= {"status": FAILED, "error": error}
        if record["status"] != DONE:
            remove(partial / wanted["mosaic"])
        record |= {"fingerprint": before, "options": wanted["options"], "run": wanted["run"]}
        put_in_place(partial, folder, record)
    finally:
        shutil.rmtree(partial, ignore_errors=True)
    return record


def main() -> int:
    stop = Stop()
    wanted, stamp = read_json(Path(sys.argv[1])), Path(sys.argv[2])
    folder = Path(wanted["folder"])
    folder.mkdir(parents=True, exist_ok=True)
    with alone(Path(wanted["lock"])):
        stop.waiting = False
        try:
            record = stitch(wanted, stop)
        except OSError as failure:
            place = f": '{failure.filename}'" if failure.filename else ""
            record = {"status": FAILED, "error": f"{failure.strerror}{place}", "run": wanted["run"]}
            record["outputs"] = read_record(folder).get("outputs", [])
            write_record(folder, record)
    if record["status"] != DONE:
        return 1
    stamp.touch()
    return 0


if __name__ == "__main__":
    sys.exit(main())
