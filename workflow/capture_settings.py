# SPDX-License-Identifier: Apache-2.0
"""How each capture is stitched: the settings file and the options of the command line."""

from __future__ import annotations

import json
import re
import subprocess
from dataclasses import dataclass, field
from pathlib import Path, PurePath
from typing import Any, Iterable

from capture_tree import fits

# Value of an option: True for one without a value; False takes it away.
Options = dict[str, Any]

# The workflow gives these itself.
OWN_OPTIONS = frozenset("output placements report help".split())
OUTPUT_OPTIONS = frozenset("pyramid ome-tiff report-html".split())
EXCLUDED_BY = {
    "static": "dynamic",
    "dynamic": "static",
    "quiet": "verbose",
    "verbose": "quiet",
}
FORMATS = ("png", "jpg", "tif", "bmp")
RESULT_FILES = frozenset(
    ["capture.json", "log.txt", "placements.csv", "report.json"]
    + [f"mosaic.{format}" for format in FORMATS]
)


class SettingsError(Exception):
    """What is wrong with the settings, and what to do: one line."""


@dataclass
class CaptureSettings:
    format: str = "png"
    memory_mb: int = 4000
    minutes: int = 60
    options: Options = field(default_factory=dict)

    def arguments(self, source: Path) -> list[str]:
        """For `framequilt stitch` in the folder of the capture's results; hints of a relative name
        lie with the capture."""
        words = []
        for name, value in sorted(self.options.items()):
            if name == "hints":
                folder = source if source.is_dir() else source.parent
                value = folder / str(value)
            if value is True:
                words.append(f"--{name}")
            elif value is not False:
                words += [f"--{name}", str(value)]
        return words


class Settings:
    """Defaults, the settings file, the command line, then what the file says of single captures:
    each overrules those before."""

    def __init__(self, known: dict[str, bool], file: Path | None, words: list[str]):
        """`known` tells of each option of stitch whether it has a value. SettingsError."""
        self._known = known
        self._captures: dict[str, dict[str, Any]] = {}
        content = _read(file) if file else {}
        where = f"'{file}'"
        skip = content.pop("skip", [])
        if not isinstance(skip, list) or not all(isinstance(pattern, str) for pattern in skip):
            raise SettingsError(f"{where}: 'skip' is no list of patterns: write [\"dark/*\"]")
        self.skip: list[str] = skip
        captures = content.pop("captures", {})
        if not isinstance(captures, dict):
            raise SettingsError(f"{where}: 'captures' is no table: write patterns with settings")
        self._general = self._checked(content, where)
        for pattern, own in captures.items():
            self._captures[str(pattern)] = self._checked(own, f"{where}: '{pattern}'")
        self._line = self._checked({"options": self._parsed(words)}, "command line")

    def of(self, capture: str) -> CaptureSettings:
        settings = CaptureSettings()
        parts = [self._general, self._line]
        parts += [own for pattern, own in self._captures.items() if fits(capture, [pattern])]
        for part in parts:
            for name, value in part.items():
                if name == "options":
                    _merge(settings.options, value)
                else:
                    setattr(settings, name, value)
        return settings

    def unused(self, captures: list[str]) -> list[str]:
        """The patterns of the file that fit no capture."""
        return [
            pattern
            for pattern in self._captures
            if not any(fits(capture, [pattern]) for capture in captures)
        ]

    def _parsed(self, words: list[str]) -> Options:
        options: Options = {}
        rest = iter(words)
        for word in rest:
            match = re.fullmatch(r"--([a-z-]+)(?:=(.*))?", word, re.DOTALL)
            if not match:
                raise SettingsError(
                    f"'{word}' is no option of stitch with two dashes: after -- write such as "
                    "--mode overlap; each capture is its own input"
                )
            name, value = match.groups()
            if value is None:
                value = _next(rest, word) if self._known.get(name) else True
            _merge(options, {name: value})
        return options

    def _checked(self, content: Any, where: str) -> dict[str, Any]:
        if not isinstance(content, dict):
            raise SettingsError(f"{where} is no table of settings: write names and values")
        for name, value in content.items():
            if name == "options":
                self._check_options(value, where)
            elif name == "format":
                if value not in FORMATS:
                    known = ", ".join(FORMATS)
                    raise SettingsError(f"{where}: format '{value}' is not known: use {known}")
            elif name in ("memory_mb", "minutes"):
                if type(value) is not int or value < 1:
                    raise SettingsError(f"{where}: {name} '{value}' is no whole number above 0")
            else:
                raise SettingsError(
                    f"{where}: '{name}' is no setting: use options, format, memory_mb, minutes, "
                    "and at the top captures, skip"
                )
        return content

    def _check_options(self, options: Any, where: str) -> None:
        if not isinstance(options, dict):
            raise SettingsError(f"{where}: 'options' is no table: write such as {{mode: overlap}}")
        for name, value in options.items():
            option = f"{where}: option '{name}'"
            if name in OWN_OPTIONS:
                raise SettingsError(f"{option} is given by the workflow: take it away")
            if name not in self._known:
                raise SettingsError(f"{option} is not known: see framequilt stitch --help")
            if value is not False and (value is True) == self._known[name]:
                need = "needs a value" if self._known[name] else "has no value: write true or false"
                raise SettingsError(f"{option} {need}")
            if isinstance(value, (dict, list)) or value is None:
                raise SettingsError(f"{option} has no single value: write one")
            if name in OUTPUT_OPTIONS and value is not False:
                _check_output(name, str(value), where)


def _check_output(option: str, value: str, where: str) -> None:
    if PurePath(value).name != value or value.startswith(".") or value in RESULT_FILES:
        raise SettingsError(
            f"{where}: '{value}' of option '{option}' is no plain new name: it is made in the "
            "folder of each capture's results"
        )


def _merge(options: Options, more: Options) -> None:
    for name, value in more.items():
        options[name] = value
        if value is True:
            options.pop(EXCLUDED_BY.get(name, ""), None)


def _next(words: Iterable[str], option: str) -> str:
    for word in words:
        return word
    raise SettingsError(f"'{option}' needs a value")


def _read(file: Path) -> dict[str, Any]:
    try:
        text = file.read_text(encoding="utf-8")
    except (OSError, UnicodeError) as failure:
        reason = failure.strerror if isinstance(failure, OSError) else "it is no text"
        raise SettingsError(f"'{file}' cannot be read ({reason}): check the path") from None
    try:
        if file.suffix == ".json":
            content = json.loads(text)
        else:
            import yaml  # type: ignore[import]  # Comes with Snakemake.

            try:
                content = yaml.safe_load(text)
            except yaml.YAMLError as failure:
                raise ValueError(" ".join(str(failure).split())) from None
    except ImportError:
        raise SettingsError(
            f"'{file}' cannot be read without python3-yaml: install it, or write JSON (.json)"
        ) from None
    except ValueError as failure:
        raise SettingsError(f"'{file}' cannot be understood ({failure}): correct it") from None
    if content is None:
        return {}
    if not isinstance(content, dict):
        raise SettingsError(f"'{file}' is no table of settings: write names and values")
    return content


def options_of_stitch(program: str) -> dict[str, bool]:
    """Each option of `framequilt stitch`, and whether it has a value. SettingsError."""
    try:
        run = subprocess.run(
            [program, "stitch", "--help"], capture_output=True, text=True, check=True
        )
    except (OSError, subprocess.CalledProcessError):
        run = None
    options = dict(
        re.findall(r"^  (?:-\w,)?--([a-z-]+)(?: ([A-Z]{2,}))?", run.stdout, re.MULTILINE)
        if run
        else ()
    )
    if "placements" not in options:
        raise SettingsError(f"'{program}' does not run as framequilt: check --framequilt")
    return {name: bool(kind) for name, kind in options.items()}
