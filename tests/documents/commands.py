#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Stands in for commands of the documents that would build, test or install the project, or wait
for a camera: looks whether what they name exists. Everything else is run.

usage: commands.py NAME ARGUMENT ...
"""

import json
import os
import re
import shutil
import subprocess
import sys

from documents import BUILD, PROGRAM, ROOT


def require(holds, what):
    if not holds:
        sys.exit(f"{' '.join(sys.argv[1:])}: {what}")


def value_of(option, arguments):
    return arguments[arguments.index(option) + 1]


def require_preset(kind, arguments):
    presets = json.loads((ROOT / "CMakePresets.json").read_text())[f"{kind}Presets"]
    name = value_of("--preset", arguments)
    found = [p["name"] for p in presets if not p.get("hidden")]
    require(name in found, f"no {kind} preset '{name}'")


def project_text():
    files = [ROOT / "CMakeLists.txt", *ROOT.glob("cmake/*.cmake")]
    files += [*ROOT.glob("tests/**/CMakeLists.txt"), *ROOT.glob("python/CMakeLists.txt")]
    return "\n".join(path.read_text() for path in files)


def without_stand_ins():
    here = os.path.join(os.getcwd(), "bin")
    return os.pathsep.join(f for f in os.environ["PATH"].split(os.pathsep) if f != here)


def cmake(arguments):
    if "--install" in arguments:
        if "--component" in arguments:
            name = value_of("--component", arguments)
            found = re.findall(r"COMPONENT\s+([\w-]+)", project_text())
            require(name in found, f"no component '{name}'")
    elif "--preset" in arguments:
        require_preset("build" if "--build" in arguments else "configure", arguments)
        for variable in re.findall(r"-D\s?(\w+)", " ".join(arguments)):
            require(variable in project_text(), f"nobody reads {variable}")
    else:
        real = shutil.which("cmake", path=without_stand_ins())
        require(real, "not found")
        os.execv(real, [real, *arguments])


def ctest(arguments):
    require_preset("test", arguments)
    if "-L" in arguments:
        require(value_of("-L", arguments) in project_text(), "no test has this label")


def apt(arguments):
    packages = (ROOT / "cmake/FramequiltPackages.cmake").read_text()
    require(arguments[0] == "install", "only installs")
    for name in arguments[1:]:
        own = re.match(r"\./([\w.-]+)_\*\.deb$", name)
        require(own and own[1] in packages, f"no package '{name}' is made")


def script(path, arguments):
    """Options are those that the script's own text names."""
    text = (ROOT / path).read_text()
    for argument in arguments:
        require(not argument.startswith("-") or argument in text, f"no option {argument}")


def framequilt(arguments):
    """Of videos and cameras that are not there it is enough that the options were understood."""
    missing = [a for a in arguments if a.endswith(".mp4") or a.startswith("camera:")]
    if not missing:
        os.execv(PROGRAM, [PROGRAM, *arguments])
    asked = ["camera:4711" if a.startswith("camera:") else a for a in arguments]
    done = subprocess.run([PROGRAM, *asked], capture_output=True, text=True)
    understood = "cannot be found" in done.stderr or "cannot be opened" in done.stderr
    require(done.returncode == 2 and understood, done.stderr)


def framequilt_captures(arguments):
    """Runs where Snakemake is there; elsewhere it is enough that the options exist."""
    program = ROOT / "workflow/framequilt-captures"
    if shutil.which("snakemake"):
        os.execv(program, [program, *arguments])
    own, _, stitch = " ".join(arguments).partition(" -- ")
    require_options([program], own)
    require_options([PROGRAM, "stitch"], stitch)


def framequilt_viewer(arguments):
    """It would wait for a user."""
    os.environ["QT_QPA_PLATFORM"] = "offscreen"
    require_options([BUILD / "tools/viewer/framequilt-viewer"], " ".join(arguments))


def require_options(program, text):
    known = subprocess.run([*program, "--help"], capture_output=True, text=True, check=True).stdout
    for option in re.findall(r"(?<!\S)--[\w-]+", text):
        require(re.search(rf"(?<!\S){option}\b", known), f"no option {option}")


COMMANDS = {
    "apt": apt,
    "cmake": cmake,
    "ctest": ctest,
    "framequilt": framequilt,
    "framequilt-captures": framequilt_captures,
    "framequilt-viewer": framequilt_viewer,
}


def main():
    name, arguments = sys.argv[1], sys.argv[2:]
    if name.startswith("scripts/"):
        script(name, arguments)
    elif name == "sudo":
        os.execvp(arguments[0], arguments)
    elif name != "ldconfig":
        COMMANDS[name](arguments)


if __name__ == "__main__":
    main()
