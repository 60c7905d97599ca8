# SPDX-License-Identifier: Apache-2.0
"""The example, as a user runs it."""

import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest

pytest.importorskip("matplotlib")
Image = pytest.importorskip("PIL.Image")

ROOT = Path(__file__).parents[2]


def run(*arguments):
    script = ROOT / "examples/python/camera_path.py"
    return subprocess.run(
        [sys.executable, script, *arguments], capture_output=True, text=True, timeout=200
    )


def colours_in(plot):
    return len(np.unique(np.asarray(Image.open(plot).convert("RGB")).reshape(-1, 3), axis=0))


def test_folder_of_pictures(tmp_path):
    plot = tmp_path / "moon.png"
    result = run(ROOT / "examples/moon", "-o", plot)
    assert (result.returncode, result.stderr) == (0, "")
    assert result.stdout == f"joined 12 of 12 frames\nthe plot is in {plot}\n"
    assert colours_in(plot) > 1000


def test_simulated_scene(tmp_path):
    plot = tmp_path / "simulated.png"
    result = run("-o", plot)
    assert (result.returncode, result.stderr) == (0, "")
    assert result.stdout.splitlines()[-2] in {f"joined {n} of 48 frames" for n in range(40, 49)}
    assert colours_in(plot) > 1000


def test_folder_without_pictures(tmp_path):
    result = run(tmp_path)
    assert result.returncode == 1
    assert "holds no pictures: name a folder of PNG, JPEG, BMP or TIFF files" in result.stderr


def test_folder_that_is_not_there(tmp_path):
    result = run(tmp_path / "nowhere")
    assert result.returncode == 1
    assert result.stderr.startswith("camera_path: ")
    assert len(result.stderr.splitlines()) == 1
