# SPDX-License-Identifier: Apache-2.0
"""Which captures there are, how they are stitched, and what the front command refuses."""

import json
import os
import re
import shutil
from pathlib import Path

import pytest
from capture_settings import Settings, SettingsError, options_of_stitch
from capture_tree import find_captures, fingerprint
from conftest import PROGRAM, front


def touch(*files):
    for file in files:
        file.parent.mkdir(parents=True, exist_ok=True)
        file.touch()


@pytest.fixture(name="known", scope="module")
def known_options():
    return options_of_stitch(PROGRAM)


def test_captures_are_folders_with_pictures_videos_and_empty_folders(tmp_path):
    touch(tmp_path / "b10/1.png", tmp_path / "b2/1.JPG", tmp_path / "b2/deep/er/x.tif")
    touch(tmp_path / "clips/one.mp4", tmp_path / "notes/read.txt", tmp_path / ".hidden/1.png")
    touch(tmp_path / "dark/1.png", tmp_path / "b2/.thumbnail.png")
    (tmp_path / "empty").mkdir()
    assert find_captures(tmp_path, ["dark"]) == [
        "b2",
        "b2/deep/er",
        "b10",
        "clips/one.mp4",
        "empty",
        "notes",
    ]


def test_the_tree_may_be_a_capture(tmp_path):
    assert find_captures(tmp_path, []) == []
    touch(tmp_path / "1.png")
    assert find_captures(tmp_path, []) == ["."]


def test_links_are_followed_but_not_in_circles(tmp_path):
    touch(tmp_path / "elsewhere/a/1.png")
    (tmp_path / "tree").mkdir()
    (tmp_path / "tree/link").symlink_to(tmp_path / "elsewhere")
    (tmp_path / "elsewhere/a/up").symlink_to(tmp_path / "tree")
    assert find_captures(tmp_path / "tree", []) == ["link/a"]


def test_fingerprints_tell_pictures_and_options(tmp_path):
    touch(tmp_path / "1.png", tmp_path / "2.png", tmp_path / "notes.txt")

    def now(options=(), mosaic="mosaic.png"):
        return fingerprint(tmp_path, list(options), mosaic)

    first = now()
    touch(tmp_path / "notes.txt")
    (tmp_path / "more.txt").write_text("no picture")
    assert now() == first
    seen = {first, now(["--dynamic"]), now(mosaic="mosaic.tif")}
    assert len(seen) == 3
    (tmp_path / "3.png").touch()
    seen.add(now())
    (tmp_path / "1.png").write_bytes(b"x")
    seen.add(now())
    status = (tmp_path / "1.png").stat()
    os.utime(tmp_path / "1.png", ns=(status.st_atime_ns, status.st_mtime_ns - 10**9))
    seen.add(now())
    assert len(seen) == 6
    (tmp_path / "3.png").unlink()
    seen.add(now())
    hints = tmp_path / "hints.csv"
    with_hints = ["--hints", str(hints)]
    seen.add(now(with_hints))
    hints.write_text("frame,x,y\n")
    seen.add(now(with_hints))
    assert len(seen) == 9


def write_settings(folder, content):
    file = folder / "settings.json"
    file.write_text(json.dumps(content), encoding="utf-8")
    return file


def test_what_is_said_of_a_capture_overrules_the_rest(tmp_path, known):
    file = write_settings(
        tmp_path,
        {
            "format": "tif",
            "options": {"mode": "overlap", "corner-budget": 8, "static": True},
            "captures": {
                "plates/*": {"options": {"dynamic": True, "mode": False}, "minutes": 5},
                "plates/b": {"options": {"corner-budget": 40, "hints": "h.csv"}, "format": "png"},
            },
        },
    )
    settings = Settings(known, file, ["--corner-budget", "20", "--outlines", "--scale=2"])

    def words(capture):
        return " ".join(settings.of(capture).arguments(tmp_path / capture))

    assert words("x") == "--corner-budget 20 --mode overlap --outlines --scale 2 --static"
    assert words("plates/a") == "--corner-budget 20 --dynamic --outlines --scale 2"
    (tmp_path / "plates/b").mkdir(parents=True)
    assert words("plates/b") == (
        f"--corner-budget 40 --dynamic --hints {tmp_path}/plates/b/h.csv --outlines --scale 2"
    )
    formats = [settings.of(name).format for name in ("x", "plates/a", "plates/b")]
    assert formats == ["tif", "tif", "png"]
    assert [settings.of(name).minutes for name in ("x", "plates/a")] == [60, 5]
    assert settings.unused(["x", "plates/c"]) == ["plates/b"]


def test_yaml_says_the_same(tmp_path, known):
    pytest.importorskip("yaml")
    file = tmp_path / "settings.yaml"
    file.write_text("memory_mb: 500\noptions: {pixel-size: 0.5}\ncaptures:\n  a: {minutes: 3}\n")
    own = Settings(known, file, []).of("a")
    assert (own.memory_mb, own.minutes, own.options) == (500, 3, {"pixel-size": 0.5})
    file.write_text("options: [\n")
    with pytest.raises(SettingsError, match="cannot be understood .*: correct it"):
        Settings(known, file, [])


@pytest.mark.parametrize(
    "content, words, message",
    [
        ({"options": {"mood": 1}}, [], "option 'mood' is not known"),
        ({"options": {"mode": True}}, [], "option 'mode' needs a value"),
        ({"options": {"dynamic": 3}}, [], "option 'dynamic' has no value"),
        ({"options": {"every": [1]}}, [], "option 'every' has no single value"),
        ({"options": {"output": "m.png"}}, [], "'output' is given by the workflow"),
        ({"options": {"pyramid": "/tmp/x"}}, [], "'/tmp/x' of option 'pyramid' is no plain new"),
        ({"options": {"report-html": "report.json"}}, [], "'report-html' is no plain new name"),
        ({"options": ["--mode"]}, [], "'options' is no table"),
        ({"format": "gif"}, [], "format 'gif' is not known"),
        ({"minutes": "many"}, [], "minutes 'many' is no whole number above 0"),
        ({"captures": {"a": {"memory": 3}}}, [], "'a': 'memory' is no setting"),
        ({"captures": ["a"]}, [], "'captures' is no table"),
        ({"skip": "a"}, [], "'skip' is no list"),
        ([], [], "is no table of settings"),
        ({}, ["frame.png"], "'frame.png' is no option of stitch"),
        ({}, ["-o", "x.png"], "'-o' is no option of stitch with two dashes"),
        ({}, ["--report", "x"], "command line: option 'report' is given by the workflow"),
        ({}, ["--mode"], "'--mode' needs a value"),
    ],
)
def test_wrong_settings_are_told(tmp_path, known, content, words, message):
    with pytest.raises(SettingsError) as failure:
        Settings(known, write_settings(tmp_path, content), words)
    assert message in str(failure.value)
    assert "\n" not in str(failure.value)


def test_the_front_command_refuses_in_one_line(tmp_path, capture):
    tree = tmp_path / "tree"
    shutil.copytree(capture, tree / "a")
    (tmp_path / "empty").mkdir()
    touch(tmp_path / "mine/letter.txt")
    (tree / "a/zoom").mkdir()
    for arguments, message in [
        ([tmp_path / "none", tmp_path / "r"], "none' is no folder: give the folder with the"),
        ([tmp_path / "empty", tmp_path / "r"], "holds no captures: put pictures in folders below"),
        ([tree, tree / "results"], "lies in the captures"),
        ([tree, tmp_path], "lie in the results"),
        ([tree, tmp_path / "mine"], "holds 'letter.txt', which is no part of this output"),
        ([tree, tmp_path / "r", "--settings", tmp_path / "s.json"], "s.json' cannot be read (No"),
        ([tree, tmp_path / "r", "--jobs", "0"], "--jobs 0 is no number above 0"),
        ([tree, tmp_path / "r", "--", "--pyramid", "zoom"], "would hold both a file 'zoom' and"),
    ]:
        run = front("--dry-run", *arguments)
        assert run.returncode == 2
        assert run.stderr.startswith("framequilt-captures: ") and run.stderr.count("\n") == 1
        assert message in run.stderr
    run = front("--dry-run", tree, tmp_path / "r", program=tmp_path / "nothing")
    assert (run.returncode, run.stderr.count("\n")) == (2, 1)
    assert "nothing' is no program: install framequilt" in run.stderr
    assert not (tmp_path / "r").exists()


def test_a_missing_snakemake_is_named(tmp_path, capture, monkeypatch):
    monkeypatch.setenv("PATH", str(tmp_path))
    run = front(capture, tmp_path / "r")
    assert run.returncode == 2
    assert run.stderr == (
        "framequilt-captures: snakemake is not installed: install the package 'snakemake'\n"
    )


def test_a_dry_run_tells_what_there_is_to_do(tmp_path, capture):
    shutil.copytree(capture, tmp_path / "tree/a")
    run = front(tmp_path / "tree", tmp_path / "r", "--dry-run")
    assert (run.returncode, run.stdout) == (0, "a: new\nto do: 1, done: 0\n")
    assert not (tmp_path / "r").exists()


ROOT = Path(__file__).parents[2]


@pytest.mark.parametrize(
    "document, block",
    [
        ("docs/workflow.md", r"^```yaml\n(.*?)^```"),
        ("workflow/framequilt-captures.1", r"^\.Bd -literal[^\n]*\n(.*?)^\.Ed"),
    ],
)
def test_settings_in_documents_are_understood(tmp_path, known, document, block):
    pytest.importorskip("yaml")
    text = (ROOT / document).read_text(encoding="utf-8")
    (content,) = re.findall(block, text, re.DOTALL | re.MULTILINE)
    file = tmp_path / "settings.yaml"
    file.write_text(content, encoding="utf-8")
    settings = Settings(known, file, [])
    pattern = settings.unused([])[0]
    assert settings.of("x").format == "tif"
    assert settings.of(pattern).options != settings.of("x").options


def test_the_manual_has_every_option():
    options = set(re.findall(r"^  (?:-h, )?--([a-z-]+)", front("--help").stdout, re.MULTILINE))
    manual = (ROOT / "workflow/framequilt-captures.1").read_text(encoding="utf-8")
    assert len(options) >= 10
    assert set(re.findall(r"^\.It (?:Fl h , )?Fl -([a-z-]+)", manual, re.MULTILINE)) == options
