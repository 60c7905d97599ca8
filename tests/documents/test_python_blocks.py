# SPDX-License-Identifier: Apache-2.0
"""Python in the documents runs, and prints what they say: the blocks of a document one after the
other, as a reader would type them."""

import contextlib
import io
import sys

import pytest

from documents import DOCUMENTS, ROOT, blocks_with_output, matches

sys.path.insert(0, str(ROOT / "tests/python"))
from captures import PATH, cut, scene  # noqa: E402

# What a document leaves to the reader.
GIVEN = {"README.md": lambda: {"frames": [cut(scene(700, 1000), at, 480, 640) for at in PATH]}}


def python_blocks(document):
    return blocks_with_output(document, "python")


@pytest.mark.parametrize("document", [d for d in DOCUMENTS if python_blocks(d)])
def test_blocks_print_what_is_said(document, tmp_path, monkeypatch):
    (tmp_path / "examples").symlink_to(ROOT / "examples")
    monkeypatch.chdir(tmp_path)
    names = GIVEN.get(document, dict)()
    for block, expected in python_blocks(document):
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            exec(compile(block.text, str(block), "exec"), names)
        if expected is not None:
            assert matches(expected, printed.getvalue()), f"{block}:\n{printed.getvalue()}"


def test_documents_show_python():
    assert len(python_blocks("docs/python.md")) >= 6
    assert len(python_blocks("README.md")) == 1
