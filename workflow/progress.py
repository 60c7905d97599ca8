# SPDX-License-Identifier: Apache-2.0
"""Snakemake tells it what happens: prints a line for each capture that has ended."""

from __future__ import annotations

import json
import sys
from pathlib import Path
from typing import Any

_capture_of_job: dict[int, str] = {}
_told: set[str] = set()
_plan: dict[str, Any] = {}

# Names of captures may be no text.
sys.stdout.reconfigure(errors="surrogateescape")  # type: ignore[attr-defined]


def log_handler(message: dict[str, Any]) -> None:
    level = message["level"]
    if level == "job_info" and message["name"] == "stitch":
        _capture_of_job[message["jobid"]] = Path(str(message["output"][0])).name
    elif level in ("job_finished", "job_error"):
        capture = _capture_of_job.get(message["jobid"])
        if capture and capture not in _told:
            _told.add(capture)
            _tell(capture)


def _tell(capture: str) -> None:
    if not _plan:
        _plan.update(json.loads(Path("plan.json").read_text(encoding="utf-8")))
    planned = _plan["captures"][capture]
    try:
        record = json.loads((Path(planned["folder"]) / "capture.json").read_text(encoding="utf-8"))
    except (OSError, ValueError):
        record = {}
    if record.get("status") == "done":
        text = (
            f"{record['joined']} of {record['frames_read']} frames, "
            f"{record['cols']} x {record['rows']} pixels, {record['seconds']} s"
        )
    elif record.get("run") != _plan["run"]:
        text = "failed: no result"
    else:
        text = f"failed: {record.get('error', 'no result')}"
    print(f"{planned['capture']}: {text}", flush=True)
