# SPDX-License-Identifier: Apache-2.0
"""The documents and the blocks of code in them."""

import json
import os
import re
from pathlib import Path
from typing import NamedTuple

ROOT = Path(__file__).parents[2]
BUILD = Path(os.environ["FRAMEQUILT_BUILD"])
PROGRAM = BUILD / "tools" / "framequilt"
DOCUMENTS = ["README.md", "HACKING.md", "CHANGELOG.md", "examples/moon/README.md"]
DOCUMENTS += sorted(f"docs/{path.name}" for path in (ROOT / "docs").glob("*.md"))


class Block(NamedTuple):
    document: str
    line: int
    tag: str
    # What follows the tag: such a block is left to a test of its own.
    note: str
    text: str
    # The block before, when nothing but white space lies between them.
    after: object

    def __str__(self):
        return f"{self.document}:{self.line}"


def blocks_of(document):
    """Every fenced block, in order."""
    found, opened, begin = [], None, 0
    last_end = None
    lines = (ROOT / document).read_text().splitlines()
    for number, line in enumerate(lines, 1):
        fence = re.match(r"^```(\S*) ?(.*)$", line)
        if opened is None and fence:
            opened, begin = fence.groups(), number
        elif opened is not None and line == "```":
            between = lines[last_end : begin - 1] if last_end else ["text"]
            before = found[-1] if found and not "".join(between).strip() else None
            text = "".join(f"{line}\n" for line in lines[begin : number - 1])
            found.append(Block(document, begin, *opened, text, before))
            opened, last_end = None, number
    assert opened is None, f"{document}:{begin}: the block has no end"
    return found


def all_blocks(*tags):
    blocks = [block for document in DOCUMENTS for block in blocks_of(document)]
    return [block for block in blocks if block.tag in tags and not block.note]


def blocks_with_output(document, tag):
    """The blocks of a tag, each with the text that it is said to print, or None."""
    blocks = blocks_of(document)
    outputs = {block.after: block.text for block in blocks if block.tag == "text"}
    return [(b, outputs.get(b)) for b in blocks if b.tag == tag and not b.note]


def matches(expected, printed):
    """Whether a text is what was printed. '...' stands for anything: in a line, or for lines."""
    pattern = re.escape(expected).replace(re.escape("..."), "\0")
    pattern = re.sub(r"^\0\\?\n", "(?:.*\\\\n)*?", pattern, flags=re.M).replace("\0", ".*")
    return re.fullmatch(pattern, printed) is not None


def compiled_files():
    """The sources that the build compiles, and the headers beside them."""
    commands = json.loads((BUILD / "compile_commands.json").read_text())
    sources = {Path(command["file"]) for command in commands}
    folders = {path.parent for path in sources if ROOT in path.parents}
    headers = {header for folder in folders for header in folder.glob("*.h")}
    inside = {path for path in sources | headers if ROOT in path.parents}
    return sorted(path for path in inside if BUILD not in path.parents)


def lines_without_indent(text):
    return [line.strip() for line in text.splitlines()]


def is_part_of(text, path):
    """Whether the lines of `text` stand in a file one after the other, however far indented."""
    wanted = "\n".join(lines_without_indent(text))
    return f"\n{wanted}\n" in "\n" + "\n".join(lines_without_indent(path.read_text())) + "\n"


def rows_of(document, heading):
    """The rows of the first table below a heading, each a list of its cells."""
    lines = f"\n{(ROOT / document).read_text()}".split(f"\n{heading}\n", 1)[1].splitlines()
    start = next(i for i, line in enumerate(lines) if line.startswith("|"))
    rows = []
    for line in lines[start:]:
        if not line.startswith("|"):
            break
        rows.append([cell.strip() for cell in line.strip("|").split("|")])
    return rows[2:]


def names_in(cell):
    """What stands in marks of code."""
    return re.findall(r"`([^`]+)`", cell)
