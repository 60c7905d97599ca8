# SPDX-License-Identifier: Apache-2.0
"""What docstrings show runs."""

import framequilt
from captures import PATH, cut, scene


def test_docstring_of_the_package():
    code = framequilt.__doc__.split("import framequilt\n", 1)[1].split("\nCoordinates", 1)[0]
    code = "\n".join(line[4:] for line in code.splitlines())
    frames = [cut(scene(), corner, 200, 300) for corner in PATH]
    code = code.replace("rows=480, cols=640", "rows=200, cols=300")
    names = {"framequilt": framequilt, "frames": frames}
    exec(compile(code, "framequilt", "exec"), names)
    assert names["mosaic"].shape == (230, 420, 3)
