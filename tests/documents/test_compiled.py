# SPDX-License-Identifier: Apache-2.0
"""Code in C++ and C is a part of what the build compiles, or compiles by itself; projects of CMake
find an installed copy."""

import os
import subprocess

import pytest

from documents import ROOT, all_blocks, compiled_files, is_part_of

FILES = compiled_files()
LANGUAGES = {
    "cpp": ["-x", "c++", "-std=c++20"],
    "c": ["-x", "c", "-std=c11", "-pedantic"],
}
# A program has to be one that is built and run.
IS_PROGRAM = ("int main(",)


def include_flags():
    flags = subprocess.run(
        ["pkg-config", "--cflags-only-I", "opencv4"], capture_output=True, text=True, check=True
    ).stdout.split()
    system = [flag.replace("-I", "-isystem", 1) for flag in flags]
    return [f"-I{ROOT}", f"-I{ROOT / 'interface'}", *system]


@pytest.mark.parametrize("block", all_blocks("cpp", "c"), ids=str)
def test_code_compiles(block):
    if any(is_part_of(block.text, path) for path in FILES):
        return
    assert not any(mark in block.text for mark in IS_PROGRAM), (
        f"{block}: the program is none that is built: copy it from examples"
    )
    command = ["g++" if block.tag == "cpp" else "gcc", *LANGUAGES[block.tag], *include_flags()]
    command += ["-fsyntax-only", "-Wall", "-Wextra", "-Werror", "-"]
    done = subprocess.run(command, input=block.text, capture_output=True, text=True, timeout=120)
    assert done.returncode == 0, f"{block}:\n{done.stderr}"


TESTED_PROJECTS = [ROOT / "tests/package/c_consumer/CMakeLists.txt"]


@pytest.mark.parametrize("block", all_blocks("cmake"), ids=str)
def test_project_is_configured(block, installed, tmp_path):
    if any(is_part_of(block.text, path) for path in TESTED_PROJECTS):
        return
    text = block.text
    if "project(" not in text:
        begin = "cmake_minimum_required(VERSION 3.25)\nproject(host LANGUAGES CXX)\n"
        text = f"{begin}add_executable(host host.cpp)\n{text}"
    (tmp_path / "CMakeLists.txt").write_text(text)
    example = (ROOT / "examples/quick_start.cpp").read_text()
    for name in ("host.cpp", "quick_start.cpp"):
        (tmp_path / name).write_text(example)
    done = subprocess.run(
        ["cmake", "-S", tmp_path, "-B", tmp_path / "build", "-G", "Ninja"],
        capture_output=True,
        text=True,
        env={**os.environ, "CMAKE_PREFIX_PATH": str(installed)},
        timeout=120,
    )
    assert done.returncode == 0, f"{block}:\n{done.stderr}"
