# SPDX-License-Identifier: Apache-2.0
"""What became of each capture: summary.csv for programs, summary.md for people."""

from __future__ import annotations

import csv
import io
from pathlib import Path
from typing import Any

from capture_plan import Job
from capture_record import DONE, FAILED, INTERRUPTED, is_done, read_record, write_text

COLUMNS = (
    "capture status frames joined refused left_out cols rows "
    "top_refusal top_refusal_frames seconds remark"
).split()
NOT_RUN = "not run"

Row = dict[str, Any]


def summarize(jobs: list[Job], state: Path, run: str, interrupted: bool) -> list[Row]:
    """A row for each capture; status is "done", "failed" or "not run"."""
    return [_row(job, state, run, interrupted) for job in jobs]


def _row(job: Job, state: Path, run: str, interrupted: bool) -> Row:
    record = read_record(job.folder)
    status = str(record.get("status"))
    remark = str(record.get("error") or record.get("remark") or "")
    of_this_run = record.get("run") == run
    if status == DONE and is_done(job.folder, record, job.fingerprint):
        pass
    elif of_this_run and status == DONE:
        status, remark = FAILED, "changed while the captures were stitched: run again"
    elif of_this_run and status == FAILED:
        pass
    elif interrupted:
        status, remark, record = NOT_RUN, "interrupted: run again", {}
    else:
        if not of_this_run:
            remark, record = "was not begun: run again", {}
        elif status != INTERRUPTED:
            remark, record = "ended without a result (out of memory?): run again", {}
        status = FAILED
        ended = state / "slurm" / f"{job.id}.state"
        if ended.exists():
            remark = _of_slurm(ended.read_text(encoding="utf-8").strip())
    reasons = list(record.get("refusals", {}).items())
    return {
        "capture": job.capture,
        "status": status,
        "frames": record.get("frames_read", ""),
        **{name: record.get(name, "") for name in COLUMNS[3:8]},
        "top_refusal": reasons[0][0] if reasons else "",
        "top_refusal_frames": reasons[0][1] if reasons else "",
        "seconds": record.get("seconds", ""),
        "remark": " ".join(remark.split()),
    }


def _of_slurm(state: str) -> str:
    advice = {"OUT_OF_MEMORY": "raise memory_mb", "TIMEOUT": "raise minutes"}
    return f"ended by Slurm ({state}): {advice.get(state, 'run again')}"


def in_words(row: Row) -> str:
    if row["status"] != DONE:
        return f"{row['status']}: {row['remark']}"
    text = f"{row['joined']} of {row['frames']} frames, {row['cols']} x {row['rows']} pixels"
    left = [f"{row[key]} {key.replace('_', ' ')}" for key in ("refused", "left_out") if row[key]]
    text = ", ".join([text, *left, f"{row['seconds']} s"])
    return f"{text}; {row['remark']}" if row["remark"] else text


def totals(rows: list[Row]) -> str:
    counts = [f"{len(rows)} captures" if len(rows) != 1 else "1 capture"]
    for status in (DONE, FAILED, NOT_RUN):
        count = sum(row["status"] == status for row in rows)
        if count or status == DONE:
            counts.append(f"{count} {status}")
    return ", ".join(counts)


def write_summary(rows: list[Row], results: Path) -> None:
    table = io.StringIO()
    writer = csv.DictWriter(table, COLUMNS, lineterminator="\n")
    writer.writeheader()
    writer.writerows(rows)
    write_text(results / "summary.csv", table.getvalue())
    write_text(results / "summary.md", _document(rows))


def _document(rows: list[Row]) -> str:
    lines = ["# Captures", "", totals(rows) + ".", ""]
    missing = [row for row in rows if row["status"] != DONE]
    if missing:
        lines += ["## Not stitched", ""]
        lines += [f"- {_cell(row['capture'])}: {_cell(in_words(row))}" for row in missing]
        lines += ["", "## All", ""]
    lines += [
        "| capture | status | frames | joined | refused | left out | mosaic | refused for | s |",
        "|---|---|---|---|---|---|---|---|---|",
    ]
    for row in rows:
        size = f"{row['cols']} x {row['rows']}" if row["cols"] != "" else ""
        top, frames = row["top_refusal"], row["top_refusal_frames"]
        reason = f"{top}: {frames}" if top else ""
        cells = [row["capture"], row["status"], row["frames"], row["joined"], row["refused"]]
        cells += [row["left_out"], size, reason, row["seconds"]]
        lines.append(f"| {' | '.join(_cell(cell) for cell in cells)} |")
    return "\n".join(lines) + "\n"


def _cell(content: object) -> str:
    return " ".join(str(content).replace("|", "\\|").split())
