# SPDX-License-Identifier: Apache-2.0
"""Whole runs through Snakemake on this machine."""

import os
import shutil
import signal
import subprocess
import sys
from pathlib import Path

from conftest import FRONT, front, program_that, rows_of, simulate


def times(results: Path) -> dict[str, int]:
    """When each mosaic was written."""
    return {
        str(file.parent.relative_to(results)): file.stat().st_mtime_ns
        for file in results.rglob("mosaic.png")
    }


def test_some_fail_the_others_are_done_and_only_what_changed_is_done_again(tmp_path, capture):
    tree, results = tmp_path / "tree", tmp_path / "results of {all}"
    shutil.copytree(capture, tree / "good")
    odd = os.fsdecode(b"plates/it's {odd}, 50% \"a b\" caf\xe9")
    simulate(tree / odd, seed=3)
    damaged = shutil.copytree(capture, tree / "plates/damaged")
    (damaged / "frame_0004.png").write_bytes(b"no picture")
    (tree / "plates/empty").mkdir()
    shutil.copytree(capture, tree / "dies")
    deadly = program_that(tmp_path, 'case "$*" in */tree/dies*) kill -KILL $PPID $$;; esac')

    run = front(tree, results, "--jobs", "2", "--", "--backend", "host", program=deadly)
    assert run.returncode == 1
    assert "good: 4 of 4 frames, " in run.stdout
    assert run.stdout.splitlines()[-1].startswith("5 captures, 3 done, 2 failed: see ")
    error = (
        f"folder '{tree}/plates/empty' holds no pictures: give a folder with .png, .jpg, .tif or "
        ".bmp files"
    )
    no_result = "ended without a result (out of memory?): run again"
    assert run.stderr == (
        f"framequilt-captures: dies: failed: {no_result}\n"
        f"framequilt-captures: plates/empty: failed: {error}\n"
    )
    rows = rows_of(results)
    assert list(rows) == ["dies", "good", "plates/damaged", "plates/empty", odd]
    assert rows["dies"]["remark"] == no_result
    assert rows["plates/empty"] | {"seconds": ""} == {
        **dict.fromkeys(rows["good"], ""),
        "capture": "plates/empty",
        "status": "failed",
        "remark": error,
    }
    good = rows["good"]
    assert [good[name] for name in ("status", "frames", "joined")] == ["done", "4", "4"]
    assert int(good["cols"]) > 320 and float(good["seconds"]) > 0
    assert rows["plates/damaged"]["left_out"] == "1"
    assert f"- plates/empty: failed: {error}" in (results / "summary.md").read_text(errors="surrogateescape")

    # A failed one has its pictures now, another one changed, a third has another option.
    first = times(results)
    shutil.copytree(capture, tree / "plates/empty", dirs_exist_ok=True)
    (tree / odd / "frame_0004.png").unlink()
    file = tmp_path / "settings.json"
    file.write_text('{"captures": {"g*": {"options": {"corner-budget": 20}}}}')
    run = front(tree, results, "--settings", file, "--jobs", "2", "--", "--backend", "host")
    assert (run.returncode, run.stderr) == (0, "")
    assert run.stdout.startswith("to do: 4 of 5 captures\n")
    second = times(results)
    assert {name for name in second if second[name] == first.get(name)} == {"plates/damaged"}
    assert rows_of(results)[odd]["frames"] == "3"

    # Nothing to do.
    table = (results / "summary.csv").read_bytes()
    run = front(tree, results, "--settings", file, "--", "--backend", "host")
    assert (run.returncode, run.stderr, run.stdout.count("\n")) == (0, "", 1)
    assert times(results) == second and (results / "summary.csv").read_bytes() == table


def children(process: int) -> list[int]:
    told = Path(f"/proc/{process}/task/{process}/children").read_text()
    return [int(child) for child in told.split()]


def test_a_run_that_ends_in_the_middle_is_finished_by_the_next(tmp_path, capture):
    """The program halts with half an output, and tells that it does."""
    fifo = tmp_path / "fifo"
    os.mkfifo(fifo)
    halt = f'echo half >mosaic.png; echo here >"{fifo}"; exec sleep 1000'
    script = f'case "$*" in */tree/slow*) {halt};; esac'
    program = program_that(tmp_path, script)
    tree, results = tmp_path / "tree", tmp_path / "results"
    shutil.copytree(capture, tree / "slow")

    def start() -> subprocess.Popen[str]:
        command = [sys.executable, FRONT, tree, results, "--framequilt", program]
        pipe, null = subprocess.PIPE, subprocess.DEVNULL
        process = subprocess.Popen(command, stdout=null, stderr=pipe, text=True)
        assert fifo.read_text() == "here\n"
        return process

    process = start()
    process.terminate()
    _, told = process.communicate()
    assert (process.returncode, told) == (130, "")
    assert rows_of(results)["slow"]["status"] == "not run"
    assert sorted(os.listdir(results / "slow")) == ["capture.json", "log.txt"]

    process = start()
    (snakemake,) = children(process.pid)
    process.kill()
    process.wait()
    other = front(tree, results)  # The workflow is still at it.
    assert (other.returncode, other.stderr.count("\n")) == (2, 1)
    assert f"another run is at work in '{results}' (process {process.pid} on " in other.stderr
    os.killpg(snakemake, signal.SIGKILL)
    process.communicate()
    assert not (results / "slow/mosaic.png").exists()

    run = front(tree, results)
    assert (run.returncode, run.stderr) == (0, "")
    assert rows_of(results)["slow"]["joined"] == "4"
    assert list((results / "slow").glob(".partial-*")) == []
