# SPDX-License-Identifier: Apache-2.0
"""What documents show runs, and prints what they say."""

import contextlib
import io
import re
from pathlib import Path

import framequilt
from captures import PATH, cut, scene

ROOT = Path(__file__).parents[2]


def blocks_of(document):
    """Each block of Python with the text that it is said to print."""
    text = (ROOT / document).read_text()
    return re.findall(r"^```python\n(.*?)^```\n(?:\n```text\n(.*?)^```\n)?", text, re.S | re.M)


def test_python_document():
    blocks = blocks_of("docs/python.md")
    assert len(blocks) >= 6
    names = {}
    for code, expected in blocks:
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            exec(compile(code, "docs/python.md", "exec"), names)
        assert printed.getvalue() == expected


def test_readme_shows_a_session():
    ((code, _),) = blocks_of("README.md")
    code = code.replace("rows=480, cols=640", "rows=160, cols=240")
    names = {"frames": [cut(scene(), corner) for corner in PATH]}
    printed = io.StringIO()
    with contextlib.redirect_stdout(printed):
        exec(compile(code, "README.md", "exec"), names)
    assert printed.getvalue().splitlines()[-1] == "<FrameResult: frame 2 joined at (120, 30)>"
    assert names["mosaic"].shape == (190, 360, 3)


def test_docstring_of_the_package():
    code = framequilt.__doc__.split("import framequilt\n", 1)[1].split("\nCoordinates", 1)[0]
    code = "\n".join(line[4:] for line in code.splitlines())
    frames = [cut(scene(), corner, 200, 300) for corner in PATH]
    code = code.replace("rows=480, cols=640", "rows=200, cols=300")
    names = {"framequilt": framequilt, "frames": frames}
    exec(compile(code, "framequilt", "exec"), names)
    assert names["mosaic"].shape == (230, 420, 3)
