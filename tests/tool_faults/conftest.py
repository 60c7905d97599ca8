# SPDX-License-Identifier: Apache-2.0
"""Runs that write every output over older ones, and what became of these."""

import os
import re
import shutil
import subprocess
from pathlib import Path

import pytest

PROGRAM = os.environ["FRAMEQUILT_PROGRAM"]

# All but the journal, which begins empty. What --pyramid makes is a folder.
OUTPUTS = ["m.png", "m-outlines.png", "m.ome.tif", "p.csv", "r.json", "r.html", "zoom"]


def program(*arguments: object, **more) -> subprocess.CompletedProcess[str]:
    command = [PROGRAM, *(str(argument) for argument in arguments)]
    more = {"capture_output": True, "text": True, "check": False, "timeout": 120} | more
    return subprocess.run(command, **more)


def simulate(folder: Path, *more: object, **how) -> subprocess.CompletedProcess[str]:
    size = ["--cols", 320, "--rows", 240, "--gray"]
    return program("simulate", "--generated", *size, *more, "-o", folder, **how)


def stitch_command(capture: Path, out: Path, journal: bool = True) -> list[object]:
    command = ["stitch", capture, "-o", out / "m.png", "--outlines", "--backend", "host"]
    command += ["--ome-tiff", out / "m.ome.tif", "--placements", out / "p.csv"]
    command += ["--report", out / "r.json", "--report-html", out / "r.html"]
    command += ["--pyramid", out / "zoom"]
    return command + (["--journal", out / "j", "--checkpoint-every", 2] if journal else [])


def without_times(content: bytes) -> bytes:
    """Reports and pages are the same but for how long each frame took."""
    return re.sub(rb'("milliseconds": ?)[-+.0-9e]+', rb"\1-", content)


def content_of(path: Path) -> object:
    """Of a file or a folder with all that is in it."""
    if path.is_dir():
        return {entry.name: content_of(entry) for entry in path.iterdir()}
    return without_times(path.read_bytes())


def contents(out: Path) -> dict[str, object]:
    return {name: content_of(out / name) for name in OUTPUTS if (out / name).exists()}


def leftovers(folder: Path) -> list[str]:
    """Of this run: those beside outputs and in the journal."""
    return sorted(str(path) for path in folder.rglob(".*") if path.suffix in (".part", ".old"))


@pytest.fixture(scope="session", name="capture")
def capture_of_three_frames(tmp_path_factory) -> Path:
    folder = tmp_path_factory.mktemp("simulated") / "capture"
    assert simulate(folder, "--frames", 3).returncode == 0
    return folder


@pytest.fixture(scope="session", name="undisturbed")
def outputs_of_an_undisturbed_run(capture, tmp_path_factory) -> dict[str, object]:
    out = tmp_path_factory.mktemp("undisturbed")
    assert program(*stitch_command(capture, out)).returncode == 0
    written = contents(out)
    assert sorted(written) == sorted(OUTPUTS)
    return written


@pytest.fixture(scope="session", name="older")
def outputs_of_an_older_run(tmp_path_factory) -> Path:
    """Another capture, so that none of its outputs is equal to a new one."""
    folder = tmp_path_factory.mktemp("older")
    assert simulate(folder / "capture", "--frames", 2, "--seed", 9).returncode == 0
    (folder / "out").mkdir()
    run = program(*stitch_command(folder / "capture", folder / "out", journal=False))
    assert run.returncode == 0
    return folder / "out"


@pytest.fixture(name="out")
def folder_with_older_outputs(tmp_path, older) -> Path:
    return renewed(tmp_path / "out", older)


def renewed(out: Path, older: Path) -> Path:
    """With older outputs and nothing else."""
    shutil.rmtree(out, ignore_errors=True)
    shutil.copytree(older, out)
    return out
