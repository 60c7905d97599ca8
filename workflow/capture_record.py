# SPDX-License-Identifier: Apache-2.0
"""What is known about the results of a capture: capture.json among them, written last."""

from __future__ import annotations

import json
import os
import tempfile
from pathlib import Path
from typing import Any

RECORD = "capture.json"
# Values of a record's "status".
DONE, FAILED, STARTED, INTERRUPTED = "done", "failed", "started", "interrupted"

Record = dict[str, Any]


def read_json(file: Path) -> Any:
    """None where there is no such file, or a damaged one."""
    try:
        return json.loads(file.read_text(encoding="utf-8"))
    except (OSError, ValueError):
        return None


def write_text(file: Path, text: str) -> None:
    """The file appears when it is complete."""
    handle, name = tempfile.mkstemp(dir=file.parent, prefix=".", suffix=".partial")
    try:
        # Names of files may be no text.
        with os.fdopen(handle, "w", encoding="utf-8", errors="surrogateescape") as stream:
            stream.write(text)
            stream.flush()
            os.fsync(stream.fileno())
        # As any new file of this process, not closed to others as temporary files are.
        mask = os.umask(0)
        os.umask(mask)
        os.chmod(name, 0o666 & ~mask)
        os.replace(name, file)
    except BaseException:
        os.unlink(name)
        raise


def write_json(file: Path, content: Any) -> None:
    write_text(file, json.dumps(content, indent=2) + "\n")


def read_record(folder: Path) -> Record:
    """Of the results in `folder`; {} where nothing was begun."""
    record = read_json(folder / RECORD)
    return record if isinstance(record, dict) else {}


def write_record(folder: Path, record: Record) -> None:
    write_json(folder / RECORD, record)


def is_done(folder: Path, record: Record, fingerprint: str) -> bool:
    """Whether the results are there, complete, and of this state of the capture."""
    return (
        record.get("status") == DONE
        and record.get("fingerprint") == fingerprint
        and all((folder / name).exists() for name in record.get("outputs", []))
    )
