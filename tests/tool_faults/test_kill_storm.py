# SPDX-License-Identifier: Apache-2.0
"""The script that sends signals at random moments finds nothing, and would find what is damaged."""

import os
import re
import subprocess
import sys
from pathlib import Path

from conftest import PROGRAM

STORM = os.environ["FRAMEQUILT_KILL_STORM"]


def storm(program: Path | str) -> subprocess.CompletedProcess[str]:
    command = [sys.executable, STORM, "--quick", "--program", str(program)]
    return subprocess.run(command, capture_output=True, text=True, check=False, timeout=250)


def test_nothing_is_damaged():
    run = storm(PROGRAM)
    assert run.returncode == 0, run.stderr
    assert re.search(r"moments: 12 .* 0 damaged; .* none after the next run\n$", run.stdout)


def test_damage_is_found(tmp_path):
    """A program that spoils an output as soon as it runs over an older one."""
    program = tmp_path / "framequilt"
    script = f"""#!/bin/sh
    case $4 in */out/m.tif) echo spoilt > "$(dirname "$4")/p.csv" ;; esac
    exec "{PROGRAM}" "$@"
    """
    program.write_text(script.replace("\n    ", "\n"), encoding="utf-8")
    program.chmod(0o755)
    run = storm(program)
    assert run.returncode == 1
    assert "kill-storm: damage: SIG" in run.stderr and "p.csv" in run.stderr
