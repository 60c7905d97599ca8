# SPDX-License-Identifier: Apache-2.0
"""Every call that creates, writes, brings to the disk, renames or closes fails once, or from then on,
or the program is killed there: each output is the older one or the complete new one, the exit status
says which, and nothing is left over.

FRAMEQUILT_FAULT_STRIDE=1 takes every call, by default each so many-th is taken."""

import errno
import os
import re
import signal
import subprocess
from pathlib import Path

import pytest
from conftest import (
    OUTPUTS,
    PROGRAM,
    contents,
    leftovers,
    program,
    renewed,
    simulate,
    stitch_command,
)

STRIDE = int(os.environ.get("FRAMEQUILT_FAULT_STRIDE", "13"))
GOES_ON = "; the run goes on without its journal\n"


def disturbed(folder: Path, call: int, how: str, error: int = errno.ENOSPC, log: Path | None = None):
    """The environment in which the call of this number fails for files in the folder."""
    fault = {"FULL_DISK_FOLDER": str(folder), "FULL_DISK_CALL": str(call), "FULL_DISK_HOW": how}
    fault |= {"FULL_DISK_ERROR": str(error), "LD_PRELOAD": os.environ["FRAMEQUILT_FULL_DISK"]}
    return {"env": os.environ | fault | ({"FULL_DISK_LOG": str(log)} if log else {})}


def calls_of(command: list[object], folder: Path, how: str) -> list[str]:
    """What can fail in this run, in its order; the command ends well."""
    log = folder.parent / "calls"
    assert program(*command, **disturbed(folder, 0, how, log=log)).returncode == 0
    calls = log.read_text().splitlines()
    log.unlink()
    return calls


def is_resumable(journal: Path) -> bool:
    file = journal / "journal.jsonl"
    return file.exists() and b"\n" in file.read_bytes()


def assert_one_line_each(told: str):
    """Each names a file and the remedy."""
    for line in told.splitlines():
        assert re.fullmatch(r"framequilt: .*'[^']+'.*[:;] .+", line), told


def assert_old_or_new(out: Path, older: dict, new: dict) -> set[str]:
    """The names of those that are older."""
    now = contents(out)
    assert sorted(now) == sorted(OUTPUTS)
    kept = {name for name in OUTPUTS if now[name] == older[name]}
    assert {name: now[name] for name in set(OUTPUTS) - kept} == {
        name: new[name] for name in set(OUTPUTS) - kept
    }
    return kept


def assert_nothing_is_lost(out: Path, capture: Path, new: dict):
    """What was not written comes by itself, or by another run."""
    if is_resumable(out / "j"):
        again = program("resume", out / "j")
    else:
        again = program(*stitch_command(capture, out, journal=False))
    assert again.returncode == 0, again.stderr
    assert contents(out) == new
    assert leftovers(out) == []


@pytest.mark.parametrize("how", ["once", "on"])
def test_a_call_that_fails(how, capture, undisturbed, older, out):
    command = stitch_command(capture, out)
    count = len(calls_of(command, out, how))
    assert count > 100
    seen = set()
    for call in range(1, count + 1, STRIDE):
        renewed(out, older)
        run = program(*command, **disturbed(out, call, how))
        place = f"call {call} of {count}: {run.stderr}"
        assert_one_line_each(run.stderr)
        kept = assert_old_or_new(out, contents(older), undisturbed)
        assert leftovers(out) == [], place
        seen.add(run.returncode)
        if run.returncode == 0:
            assert kept == set(), place
            # A journal that could not be kept has said so.
            if is_resumable(out / "j") and GOES_ON not in run.stderr:
                assert program("replay", out / "j").returncode == 0, place
            continue
        assert run.returncode == 2, place
        assert kept != set(), place
        told = run.stderr.splitlines()[-1]
        named = any(f"{name}'" in told for name in [*kept, "j", "journal.jsonl"])
        assert named or "no file can be" in told, place
        assert "space" in told or "choose another" in told or "choose a folder" in told, place
        # Those that did not fail were written, unless it ended before anything was stitched.
        assert kept == set(OUTPUTS) or how == "on" or len(kept) == 1, place
        if kept != set(OUTPUTS):
            for name in kept:
                assert f"{name}'" in run.stderr, place
        assert_nothing_is_lost(out, capture, undisturbed)
    assert 2 in seen and seen <= {0, 2}


def test_killed_at_a_call(capture, undisturbed, older, out):
    command = stitch_command(capture, out)
    count = len(calls_of(command, out, "kill"))
    for call in range(1, count + 1, STRIDE):
        renewed(out, older)
        run = program(*command, **disturbed(out, call, "kill"))
        assert run.returncode == -signal.SIGKILL
        assert_old_or_new(out, contents(older), undisturbed)
        assert_nothing_is_lost(out, capture, undisturbed)


def test_an_error_of_the_disk_is_told_as_it_is(capture, out, older):
    renewed(out, older)
    command = stitch_command(capture, out, journal=False)
    calls = calls_of(command, out, "once")
    call = 1 + next(i for i, line in enumerate(calls) if line.startswith("fsync"))
    renewed(out, older)
    run = program(*command, **disturbed(out, call, "once", errno.EIO))
    assert run.returncode == 2
    assert "'m.png" not in run.stderr
    assert (
        run.stderr == f"framequilt: '{out}/m.png' could not be written (Input/output error): "
        "free some space or choose another folder\n"
    )


def test_a_limit_of_sizes_is_an_error_not_a_signal(capture, older, out):
    limited = ["bash", "-c", 'ulimit -f 8; exec "$@"', "bash", PROGRAM]
    command = [*limited, *(str(word) for word in stitch_command(capture, out, journal=False))]
    run = subprocess.run(command, capture_output=True, text=True, check=False)
    assert run.returncode == 2, run
    assert f"'{out}/m.png' could not be written (File too large): free some" in run.stderr
    assert_one_line_each(run.stderr)
    assert contents(out)["m.png"] == contents(older)["m.png"]
    assert leftovers(out) == []


def test_a_small_disk(capture, tmp_path, undisturbed):
    """A real one, where mounting is allowed: each size from nothing to enough."""
    disk = tmp_path / "disk"
    disk.mkdir()
    script = 'mount -t tmpfs -o size="$1" none "$2" && cd "$2" && shift 2 && "$@"; echo $?; ls -A'
    mounted = ["unshare", "-Urm", "sh", "-c", script, "sh"]
    if subprocess.run([*mounted, "64k", disk, "true"], capture_output=True, check=False).returncode:
        pytest.skip("no mounting here")
    command = [PROGRAM, *(str(word) for word in stitch_command(capture, Path("."), journal=False))]
    statuses = set()
    for kilobytes in range(16, 1600, 8 * STRIDE):
        run = subprocess.run(
            [*mounted, f"{kilobytes}k", disk, *command], capture_output=True, text=True, check=False
        )
        *_, status = (line for line in run.stdout.splitlines() if line.isdigit())
        names = run.stdout[run.stdout.rindex(f"{status}\n") :].split()[1:]
        assert_one_line_each(run.stderr)
        assert status == "2" or sorted(names) == sorted(OUTPUTS), run
        assert not any(name.startswith(".") for name in names), run
        statuses.add(status)
    assert statuses == {"0", "2"}


def test_simulated_frames(tmp_path):
    out = tmp_path / "capture"
    command = ["--frames", 3, "--seed", 5]
    assert simulate(out, *command).returncode == 0
    new = {path.name: path.read_bytes() for path in out.iterdir()}
    assert len(new) == 4
    counted = simulate(out, *command, **disturbed(out, 0, "once", log=tmp_path / "calls"))
    assert counted.returncode == 0
    calls = (tmp_path / "calls").read_text().splitlines()
    count = len(calls)
    assert count > 12
    for how in ["once", "on", "kill"]:
        for call in range(1, count + 1, max(1, STRIDE // 4)):
            run = simulate(out, *command, **disturbed(out, call, how))
            if run.returncode == 0:  # The disk complained about a file that was in its place.
                assert how != "kill" and calls[call - 1].startswith("close"), run
                assert {path.name: path.read_bytes() for path in out.iterdir()} == new
                continue
            assert run.returncode == (-signal.SIGKILL if how == "kill" else 2), run
            assert_one_line_each(run.stderr)
            whole = {path.name: path.read_bytes() for path in out.glob("[!.]*")}
            assert whole == {name: new[name] for name in whole}
            assert how == "kill" or leftovers(out) == []
            assert simulate(out, *command).returncode == 0
            assert {path.name: path.read_bytes() for path in out.iterdir()} == new


@pytest.mark.parametrize("closed", [False, True])
def test_standard_output_that_takes_nothing(closed, capture, tmp_path, undisturbed):
    """Full, or a reader that went away: the files are there all the same."""
    table = tmp_path / "p.csv"
    table.write_text("frame,file,x,y,joined\n1,a,0,0,1\n2,b,5,5,1\n", encoding="utf-8")
    commands = [
        ["evaluate", table, table],
        ["info"],
        ["stitch", capture, "-o", tmp_path / "m.png", "--placements", "-", "--backend", "host"],
    ]
    for command in commands:
        if closed:
            reader, writer = os.pipe()
            os.close(reader)
        else:
            writer = os.open("/dev/full", os.O_WRONLY)
        run = program(
            *command, capture_output=False, stdout=writer, stderr=subprocess.PIPE
        )
        os.close(writer)
        assert run.returncode == 2, command
        lines = [line for line in run.stderr.splitlines() if line.startswith("framequilt: ")]
        assert lines == ["framequilt: standard output cannot be written"]
    assert (tmp_path / "m.png").read_bytes() == undisturbed["m.png"]
