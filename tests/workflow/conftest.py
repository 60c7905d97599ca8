# SPDX-License-Identifier: Apache-2.0
import csv
import io
import os
import subprocess
import sys
from pathlib import Path

import pytest

PROGRAM = os.environ["FRAMEQUILT_PROGRAM"]
FRONT = Path(__file__).parents[2] / "workflow/framequilt-captures"


def simulate(folder: Path, frames: int = 4, seed: int = 1) -> Path:
    folder.parent.mkdir(parents=True, exist_ok=True)
    size = ["--cols", "320", "--rows", "240", "--gray"]
    more = ["--frames", str(frames), "--seed", str(seed), "-o", str(folder)]
    command = [PROGRAM, "simulate", "--generated", *size, *more]
    subprocess.run(command, check=True, capture_output=True)
    return folder


@pytest.fixture(scope="session")
def capture(tmp_path_factory) -> Path:
    """Four frames that join, to be copied."""
    return simulate(tmp_path_factory.mktemp("simulated") / "capture")


def front(*arguments: object, program: Path | str = PROGRAM) -> subprocess.CompletedProcess[str]:
    line = [str(argument) for argument in arguments]
    at = line.index("--") if "--" in line else len(line)
    line[at:at] = ["--framequilt", str(program)]
    command = [sys.executable, FRONT, *line]
    return subprocess.run(
        command, capture_output=True, text=True, errors="surrogateescape", check=False
    )


def rows_of(results: Path) -> dict[str, dict[str, str]]:
    text = (results / "summary.csv").read_text(encoding="utf-8", errors="surrogateescape")
    return {row["capture"]: row for row in csv.DictReader(io.StringIO(text))}


def program_that(folder: Path, script: str) -> Path:
    """Framequilt, but for what `script` does before, in terms of its arguments."""
    program = folder / "framequilt"
    program.write_text(f'#!/bin/sh\n{script}\nexec "{PROGRAM}" "$@"\n', encoding="utf-8")
    program.chmod(0o755)
    return program
