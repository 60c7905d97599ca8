# SPDX-License-Identifier: Apache-2.0
"""Shell in the documents runs, in a folder of its own for each document. Commands that stitch,
compile or look at files do what they say. Those that would build, test or install the project are
looked at instead: their scripts, presets, components and packages exist."""

import os
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

from documents import BUILD, DOCUMENTS, ROOT, blocks_of, blocks_with_output, is_part_of, matches

LOOKED_AT = ("apt", "cmake", "ctest", "framequilt", "framequilt-captures", "ldconfig", "sudo")
# A line that stands in one of these is run by another test.
TESTED_SCRIPTS = [ROOT / "tests/package/check_c_consumer"]
EXAMPLES = {"docs/quick-start.md": ["quick_start.cpp"]}


def shell_blocks(document):
    return blocks_with_output(document, "sh")


def is_tested_elsewhere(block):
    lines = [line for line in block.text.splitlines() if line.strip()]
    return all(any(is_part_of(line, path) for path in TESTED_SCRIPTS) for line in lines)


def stand_in(path, name):
    """A program that hands on to commands.py."""
    path.parent.mkdir(parents=True, exist_ok=True)
    program = Path(__file__).with_name("commands.py")
    path.write_text(f'#!/bin/sh\nexec "{sys.executable}" "{program}" "{name}" "$@"\n')
    path.chmod(0o755)


@pytest.fixture
def workplace(tmp_path, document):
    """What a reader has around him: the tree as it is built, pictures, a program of his own."""
    for name in LOOKED_AT:
        stand_in(tmp_path / "bin" / name, name)
    for script in (ROOT / "scripts").iterdir():
        if os.access(script, os.X_OK):
            stand_in(tmp_path / "scripts" / script.name, f"scripts/{script.name}")
    stand_in(tmp_path / "build/release/tools/framequilt", "framequilt")
    stand_in(tmp_path / "build/release/tools/viewer/framequilt-viewer", "framequilt-viewer")
    (tmp_path / "build/packages/packages").mkdir(parents=True)
    links = {
        "examples": ROOT / "examples",
        "FOLDER": ROOT / "examples/moon",
        "build/release/python": BUILD / "python",
        "host": BUILD / "tests/package/stitch_capture",
        "libframequilt.so.1": BUILD / "libframequilt.so.1",
    }
    for name, target in links.items():
        assert target.exists(), target
        (tmp_path / name).symlink_to(target)
    for example in EXAMPLES.get(document, []):
        (tmp_path / example).symlink_to(ROOT / "examples" / example)
    for block in blocks_of(document):
        if block.tag == "cmake":
            (tmp_path / "CMakeLists.txt").write_text(block.text)
    return tmp_path


@pytest.mark.parametrize("document", [d for d in DOCUMENTS if shell_blocks(d)])
def test_commands_do_what_is_said(document, workplace, installed):
    environment = {
        **os.environ,
        "PATH": f"{workplace / 'bin'}:{os.environ['PATH']}",
        "CMAKE_PREFIX_PATH": str(installed),
        "CMAKE_GENERATOR": "Ninja",
        **({"CMAKE_CXX_COMPILER_LAUNCHER": "ccache"} if shutil.which("ccache") else {}),
        "LD_LIBRARY_PATH": str(next(installed.rglob("libframequilt.so")).parent),
    }
    for block, expected in shell_blocks(document):
        if is_tested_elsewhere(block):
            continue
        if "camera_path.py" in block.text:
            pytest.importorskip("matplotlib")
        done = subprocess.run(
            ["bash", "-euo", "pipefail", "-c", block.text],
            cwd=workplace,
            env=environment,
            capture_output=True,
            text=True,
            timeout=200,
        )
        assert done.returncode == 0, f"{block}:\n{done.stderr}"
        if expected is not None:
            # What a compiler or a build says comes before.
            count = len(expected.splitlines())
            last = "".join(f"{line}\n" for line in done.stdout.splitlines()[-count:])
            assert matches(expected, last), f"{block}:\n{done.stdout}"


def test_the_stand_ins_refuse_what_does_not_exist(tmp_path):
    wrong = [
        ["cmake", "--preset", "nowhere"],
        ["cmake", "--install", "build/release", "--prefix", "x", "--component", "nothing"],
        ["ctest", "--preset", "nowhere"],
        ["apt", "install", "./nothing_*.deb"],
        ["scripts/docs", "--unheard-of"],
        ["framequilt", "stitch", "clip.mp4", "--unheard-of", "-o", "m.png"],
    ]
    for arguments in wrong:
        done = subprocess.run(
            [sys.executable, Path(__file__).with_name("commands.py"), *arguments],
            cwd=tmp_path,
            capture_output=True,
            text=True,
        )
        assert done.returncode != 0, arguments
