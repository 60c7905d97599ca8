# SPDX-License-Identifier: Apache-2.0
"""Tables of the documents say what the code says."""

import inspect
import re
import subprocess

import framequilt
from documents import BUILD, PROGRAM, ROOT, names_in, rows_of

HEADERS = ROOT / "interface" / "framequilt"


def header(name):
    return (HEADERS / name).read_text()


def enumerators(text, enumeration):
    body = re.search(rf"enum (?:class )?{enumeration}\b[^{{]*\{{(.*?)\}}", text, re.S)[1]
    body = re.sub(r"//.*", "", body)
    return [entry.strip() for entry in body.split(",") if entry.strip()]


def c_constants(enumeration):
    """Name to value."""
    entries = enumerators(header("framequilt_c.h"), enumeration)
    return {name: int(value) for name, value in (e.split(" = ") for e in entries)}


def snake(name):
    """kNoOverlap: NO_OVERLAP"""
    return re.sub(r"(?<=[a-z])(?=[A-Z])", "_", name[1:]).upper()


def cell_of_c(cell):
    name, value = re.fullmatch(r"`(\w+)` \((\d+)\)", cell).groups()
    return name, int(value)


PAGE = "docs/results-and-errors.md"


def test_verdicts():
    constants = c_constants("framequilt_verdict")
    names = enumerators(header("session.h"), "Verdict")
    rows = rows_of(PAGE, "## What becomes of a frame")
    assert [names_in(row[0]) for row in rows] == [[f"Verdict::{name}"] for name in names]
    assert dict(cell_of_c(row[1]) for row in rows) == constants
    assert [names_in(row[2]) for row in rows] == [[f"Verdict.{snake(name)}"] for name in names]
    assert {snake(name) for name in names} == set(framequilt.Verdict.__members__)


def measured(words):
    unit = f" ({words.unit})" if words.unit else ""
    return f"{words.quantity}{unit} {words.relation}"


def test_reasons():
    constants = c_constants("framequilt_reason")
    names = enumerators(header("refusal.h"), "Refusal")
    assert names.pop(0) == "kNone" and constants.pop("FRAMEQUILT_NO_REASON") == 0
    rows = rows_of(PAGE, "## Why a frame is refused")
    assert [names_in(row[0]) for row in rows] == [[f"Refusal::{name}"] for name in names]
    assert dict(cell_of_c(row[1]) for row in rows) == constants
    assert [names_in(row[2]) for row in rows] == [[f"Refusal.{snake(name)}"] for name in names]
    for row, name in zip(rows, names):
        assert row[3] == framequilt.Refusal[snake(name)].words.reason


def test_words_of_reasons():
    rows = rows_of(PAGE, "### The words for it")
    words = [reason.words for reason in framequilt.Refusal]
    assert rows == [[w.reason, measured(w), w.advice] for w in words]


def test_errors():
    source = (ROOT / "interface/c_failure.cpp").read_text()
    codes = dict(re.findall(r"case ErrorCode::(\w+):\s+return (\w+);", source))
    codes["kEngineFailed"] = "FRAMEQUILT_E_ENGINE"
    of_input = re.findall(
        r"ErrorCode::(\w+)", re.search(r"ofInput = (.*?);", bind_errors(), re.S)[1]
    )
    values = c_constants("framequilt_code")
    names = enumerators(header("error.h"), "ErrorCode")
    rows = rows_of(PAGE, "## Errors")
    assert [names_in(row[0]) for row in rows] == [[f"ErrorCode::{name}"] for name in names]
    for row, name in zip(rows, names):
        assert cell_of_c(row[1]) == (codes[name], values[codes[name]])
        assert names_in(row[2]) == ["InputError" if name in of_input else "Error"]
        assert names_in(row[3]) == [framequilt.ErrorCode[snake(name)].name]


def bind_errors():
    return (ROOT / "python/bind_errors.cpp").read_text()


def test_exit_statuses():
    source = (ROOT / "tools/framequilt/tool_error.h").read_text()
    values = [e.split(" = ")[1] for e in enumerators(source, "ExitStatus")]
    rows = rows_of(PAGE, "## The program")
    # Two commands give one of them meanings of their own.
    assert [row[0] for row in rows] == sorted({value for value in values if value.isdigit()})
    assert rows == rows_of("docs/command-line.md", "# The command line")


def test_entry_points():
    rows = rows_of(PAGE, "## The three entry points")
    functions = [names_in(row[0])[0] for row in rows if row[0]]
    of_c = header("framequilt.h").split('extern "C" {')[1].split('}  // extern "C"')[0]
    assert functions == re.findall(r"^FRAMEQUILT_EXPORT \w+ (\w+)\(", of_c, re.M)


def test_gates_and_their_knobs():
    rows = rows_of("docs/tuning.md", "# Tuning: what each gate refuses")
    reasons = [re.match(r"\[([\w ]+)\]", row[0])[1] for row in rows]
    assert sorted(reasons) == sorted(r.words.reason for r in framequilt.Refusal)
    options = re.search(r"struct SessionOptions \{(.*?)\n\};", header("session.h"), re.S)[1]
    tuning = header("tuning.h")
    of_c = re.search(r"struct framequilt_options \{(.*?)\}", header("framequilt_c.h"), re.S)[1]
    helped = subprocess.run(
        [PROGRAM, "stitch", "--help"], capture_output=True, text=True, check=True
    ).stdout
    keywords = inspect.getdoc(framequilt.Session.__init__)
    for row in rows:
        for name in names_in(row[2]):
            assert re.search(rf"\b{name}\b", options) or re.search(rf"\b{name}\b", tuning), name
        for name in names_in(row[3]):
            assert re.search(rf"(?<!\S){name} ", helped), name
        for name in names_in(row[4]):
            assert re.search(rf"\b{name};", of_c), name
        for name in names_in(row[5]):
            assert re.search(rf"\b{name}: ", keywords), name


def test_global_variables():
    lines = subprocess.run(
        ["nm", "-D", "--defined-only", BUILD / "libframequilt.so"],
        capture_output=True,
        text=True,
        check=True,
    ).stdout.splitlines()
    variables = [line.split()[2] for line in lines if line.split()[1] in "BDGRSV"]
    assert len(variables) > 200
    text = (ROOT / "docs/integrating.md").read_text()
    listed = text.split("<!-- variables:begin -->")[1].split("<!-- variables:end -->")[0]
    names = [name for name in names_in(listed) if not name.endswith(".h")]
    assert sorted(names) == sorted(variables)


def test_kernels():
    sources = "".join(path.read_text() for path in sorted(ROOT.glob("opencl/kernels/*.cl")))
    kernels = {
        name: ", ".join(parameter.split()[-1] for parameter in parameters.split(","))
        for name, parameters in re.findall(r"__kernel void (\w+)\(([^)]*)\)", sources)
    }
    listed = {}
    page = (ROOT / "docs/kernels.md").read_text()
    for heading in re.findall(r"^## .*\.cl`$", page, re.M):
        for row in rows_of("docs/kernels.md", heading):
            for name in names_in(row[0]):
                listed[name] = names_in(row[3])[0]
    assert listed == kernels
    assert f"The {len(kernels)} kernels" in page
