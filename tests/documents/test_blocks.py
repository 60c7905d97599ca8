# SPDX-License-Identifier: Apache-2.0
"""Every block of code in the documents is of a kind that somebody checks."""

import re
import subprocess
from pathlib import Path

import pytest

from documents import BUILD, DOCUMENTS, PROGRAM, ROOT, all_blocks, blocks_of, is_part_of

# Tag to the test that checks such blocks.
CHECKED = {
    "cpp": "test_compiled.py",
    "c": "test_compiled.py",
    "cmake": "test_compiled.py",
    "python": "test_python_blocks.py",
    "sh": "test_shell_blocks.py",
    "yaml": "../workflow/test_plan.py",
}
# The same for what follows a tag, where a block needs more than this folder has: "```sh slurm".
CHECKED_APART = {"slurm": "../../scripts/workflow-slurm"}


def test_documents_have_blocks():
    assert len(all_blocks(*CHECKED)) > 30
    for test in [*CHECKED.values(), *CHECKED_APART.values()]:
        assert (Path(__file__).parent / test).exists(), test


@pytest.mark.parametrize("document", DOCUMENTS)
def test_every_block_is_checked(document):
    for block in blocks_of(document):
        if block.note:
            assert block.note in CHECKED_APART, f"{block}: nobody checks '{block.note}'"
        elif block.tag == "text":
            after = block.after.tag if block.after else ""
            assert after in ("python", "sh") or block in OUTPUT_OF_PICTURES, (
                f"{block}: 'text' is what the block before prints, or what scripts/doc-pictures "
                "says; leave the tag away for output that no test can repeat, and name it here"
            )
        elif block.tag == "":
            assert untagged(block), f"{block}: give it a tag, or name it in this file"
        else:
            assert block.tag in CHECKED, f"{block}: nobody checks '{block.tag}'"


@pytest.mark.parametrize("document", DOCUMENTS)
def test_code_is_fenced(document):
    """Indented code would go unnoticed."""
    lines = (ROOT / document).read_text().splitlines()
    fenced = False
    for number, (before, line) in enumerate(zip(lines, lines[1:]), 2):
        fenced ^= before.startswith("```")
        assert fenced or before or not line.startswith("    "), f"{document}:{number}"


# -- Output without a block that prints it --------------------------------------------------------

OUTPUT_OF_PICTURES = [
    block
    for document in ("docs/how-a-run-works.md", "docs/tuning.md")
    for block in blocks_of(document)
    if block.tag == "text" and not block.after
]


@pytest.fixture(scope="module")
def pictures(tmp_path_factory):
    """Where the program put its pictures, and what it said."""
    folder = tmp_path_factory.mktemp("pictures")
    program = BUILD / "docs" / "pictures" / "doc_pictures"
    done = subprocess.run(
        [program, ROOT / "examples/moon", folder], capture_output=True, text=True, timeout=200
    )
    assert (done.returncode, done.stderr) == (0, "")
    (folder / "said.txt").write_text(done.stdout)
    return folder


def test_pictures_are_those_of_the_documents(pictures):
    made = {path.name for path in pictures.glob("*.jpg")}
    kept = {p.name for kind in ("run", "gate") for p in (ROOT / "docs/images").glob(f"{kind}-*")}
    assert made == kept
    text = "".join((ROOT / document).read_text() for document in DOCUMENTS)
    shown = set(re.findall(r"images/((?:run|gate)-[\w.-]+)", text))
    assert shown == made


def test_what_is_said_of_pictures(pictures):
    assert len(OUTPUT_OF_PICTURES) == 9
    for block in OUTPUT_OF_PICTURES:
        assert is_part_of(block.text, pictures / "said.txt"), str(block)


def untagged(block):
    checks = {
        "framequilt stitch INPUT": expect_synopsis,
        "backends:": expect_info,
        "to do: ": expect_progress,
        "recorded: ": expect_replay,
    }
    for begin, check in checks.items():
        if block.text.startswith(begin):
            check(block)
            return True
    return False


def output_of(*arguments):
    return subprocess.run(
        [PROGRAM, *arguments], capture_output=True, text=True, check=True
    ).stdout


def expect_synopsis(block):
    """The commands are those of the program."""
    commands = output_of("--help").split("Subcommands:\n", 1)[1].split("\n\n", 1)[0]
    wanted = re.findall(r"^  (\w+)", commands, re.M)
    assert re.findall(r"^framequilt (\w+)", block.text, re.M) == wanted, str(block)


def expect_progress(block):
    """The lines are those of runs over several captures, whatever the order and the times."""
    source = (ROOT / "workflow/framequilt-captures").read_text()
    assert 'to do: {' in source and "see {" in source
    forms = (
        r"to do: \d+ of \d+ captures",
        r"[\w/]+: \d+ of \d+ frames, \d+ x \d+ pixels, \d+\.\d\d s",
        r"(framequilt-captures: )?[\w/]+: failed: folder '[\w/]+' holds no pictures: give .* files",
        r"\d+ captures, \d+ done, \d+ failed: see results/summary.md",
    )
    for line in block.text.splitlines():
        assert any(re.fullmatch(form, line) for form in forms), f"{block}: {line}"


def expect_replay(block):
    """Two backends are not everywhere; the lines are those of the command."""
    source = (ROOT / "tools/framequilt/replay_command.cpp").read_text()
    for line in block.text.splitlines():
        assert f"{line.split(': ')[0]}: " in source, f"{block}: {line}"
    assert ", the same: " in source


def expect_info(block):
    """The lines have the form of those here, whatever devices there are."""
    said = output_of("info")
    for line in ("backends:\n", "  host: used (", "  opencl: "):
        assert line in block.text and line in said, f"{block}: {line}"
