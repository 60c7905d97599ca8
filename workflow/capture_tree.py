# SPDX-License-Identifier: Apache-2.0
"""The captures of a tree of folders, and what tells that one has changed."""

from __future__ import annotations

import contextlib
import hashlib
import os
import re
from fnmatch import fnmatchcase
from pathlib import Path
from typing import Any, Iterator

# What `framequilt stitch` takes from a folder, and what it takes for a video.
PICTURES = frozenset(
    ".png .jpg .jpeg .jpe .tif .tiff .bmp .dib .webp .jp2 .pgm .ppm .pnm".split()
)
VIDEOS = frozenset(".avi .mp4 .mkv .mov .webm .mpg .mpeg .m4v .wmv .ogv .ts".split())


def find_captures(tree: Path, skip: list[str]) -> list[str]:
    """Paths below `tree`, in natural order: folders with pictures, videos, and innermost folders
    without either, where pictures are missing. '.' is the tree itself. Hidden files and folders,
    and what a pattern of `skip` fits, are left out. A folder that cannot be listed counts as a
    capture, so that it is missed; OSError where that is the tree."""
    return sorted(_captures_below(tree, Path("."), skip, ()), key=natural_key)


def _captures_below(
    tree: Path, path: Path, skip: list[str], parents: tuple[str, ...]
) -> Iterator[str]:
    real = os.path.realpath(tree / path)
    if real in parents:  # A link back to a folder above.
        return
    try:
        entries = list(os.scandir(tree / path))
    except OSError:
        if path == Path("."):
            raise
        yield str(path)
        return
    pictures = folders = videos = False
    for entry in entries:
        below = path / entry.name
        if entry.name.startswith(".") or fits(str(below), skip):
            continue
        if entry.is_dir():
            folders = True
            yield from _captures_below(tree, below, skip, (*parents, real))
        elif below.suffix.lower() in PICTURES:
            pictures = True
        elif below.suffix.lower() in VIDEOS:
            videos = True
            yield str(below)
    if pictures or not (folders or videos or path == Path(".")):
        yield str(path)


def fits(capture: str, patterns: list[str]) -> bool:
    return any(capture == pattern or fnmatchcase(capture, pattern) for pattern in patterns)


def natural_key(text: str) -> list[Any]:
    """Sorts f2 before f10, and folders before what is in them."""
    parts = re.split(r"([0-9]+)", text.replace("/", "\0"))
    return [(int(part), part) if at % 2 else (-1, part) for at, part in enumerate(parts)]


def fingerprint(source: Path, options: list[str], mosaic: str) -> str:
    """Another one when a picture of the capture comes, goes or changes (size, time), or an option
    does. Files that options name, hints, count too."""
    files = [Path(option) for option in options if os.path.isabs(option)]
    if source.is_dir():
        # A folder that cannot be listed is left to `framequilt stitch`, which tells about it.
        with contextlib.suppress(OSError):
            files += [
                file
                for file in source.iterdir()
                if file.suffix.lower() in PICTURES and not file.name.startswith(".")
            ]
    else:
        files.append(source)
    digest = hashlib.sha256(repr((options, mosaic)).encode())
    for file in sorted(files):
        try:
            status = file.stat()
            line = (file.name, status.st_size, status.st_mtime_ns)
        except OSError:
            line = (file.name, -1, -1)
        digest.update(repr(line).encode())
    return digest.hexdigest()
