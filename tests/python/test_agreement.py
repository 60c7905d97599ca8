# SPDX-License-Identifier: Apache-2.0
"""The module, its stubs and the headers of the library say the same."""

import ast
import inspect
import re
from pathlib import Path

import pytest

import framequilt

HEADERS = Path(__file__).parents[2] / "interface" / "framequilt"
STUBS = Path(framequilt.__file__).with_suffix(".pyi")


def public(names):
    return {name for name in names if not name.startswith("_")}


# -- What the stubs declare -----------------------------------------------------------------------


@pytest.fixture(scope="module")
def stubs():
    """Name to node, of all that the stubs declare."""
    declared = {}
    for node in ast.parse(STUBS.read_text()).body:
        if isinstance(node, (ast.ClassDef, ast.FunctionDef)):
            declared[node.name] = node
        elif isinstance(node, ast.AnnAssign):
            declared[node.target.id] = node
    return declared


def members_of(stub):
    """Name to node, of what a class of the stubs has."""
    members = {}
    for node in stub.body:
        if isinstance(node, ast.FunctionDef):
            members[node.name] = node
        elif isinstance(node, ast.AnnAssign):
            members[node.target.id] = node
        elif isinstance(node, ast.Assign):
            members[node.targets[0].id] = node
    return members


def parameters_of(function):
    """(name, keyword only, has a default) of each, without self."""
    arguments = function.args
    positional = arguments.posonlyargs + arguments.args
    without = len(positional) - len(arguments.defaults)
    found = [(a.arg, False, i >= without) for i, a in enumerate(positional)]
    found += [
        (a.arg, True, default is not None)
        for a, default in zip(arguments.kwonlyargs, arguments.kw_defaults)
    ]
    return [parameter for parameter in found if parameter[0] != "self"]


def parameters_of_docstring(function):
    """The same of a function of the module, whose docstring begins with its signature."""
    signature = function.__doc__.splitlines()[0].strip()
    return parameters_of(ast.parse(f"def {signature}: ...").body[0])


def test_stubs_declare_what_the_package_offers(stubs):
    assert set(stubs) == set(framequilt.__all__)
    assert public(stubs) == public(vars(framequilt))
    assert sorted(framequilt.__all__) == framequilt.__all__


def test_package_is_marked_as_typed():
    assert STUBS.with_name("py.typed").exists()


@pytest.mark.parametrize("name", framequilt.__all__)
def test_stubs_and_module_agree(stubs, name):
    stub, its = stubs[name], getattr(framequilt, name)
    if isinstance(stub, ast.AnnAssign):
        assert type(its).__name__ == stub.annotation.id
    elif isinstance(stub, ast.FunctionDef):
        assert parameters_of(stub) == parameters_of_docstring(its)
    else:
        assert its.__module__ == "framequilt"
        assert its.__doc__
        compare_class(stub, its)


def compare_class(stub, its):
    members = members_of(stub)
    # What an exception gets with its cause is no member of its class.
    of_instances = {"code"} if issubclass(its, Exception) else set()
    offered = public(n for n in vars(its) if not n.startswith("_"))
    assert public(members) - of_instances == offered
    for name, member in members.items():
        if isinstance(member, ast.Assign):
            assert getattr(its, name).value == ast.literal_eval(member.value)
        elif isinstance(member, ast.FunctionDef):
            compare_function(member, vars(its)[name])


def compare_function(stub, its):
    decorators = [decorator.id for decorator in stub.decorator_list]
    assert isinstance(its, property) == (decorators == ["property"]), stub.name
    assert its.__doc__, stub.name
    if not isinstance(its, property) and stub.name not in ("__enter__", "__exit__"):
        assert parameters_of(stub) == parameters_of_docstring(its), stub.name


# -- What the headers declare ---------------------------------------------------------------------


def in_small_letters(name):
    return re.sub(r"(?<=[a-z])([A-Z])", r"_\1", name).lower()


def block(kind, name):
    """The text of a declaration, without comments."""
    for header in HEADERS.glob("*.h"):
        found = re.search(rf"^{kind} {name} {{(.*?)}};", header.read_text(), re.S | re.M)
        if found:
            return re.sub(r"//.*", "", found[1])
    raise LookupError(name)


def fields(name):
    """Field to initial value, in the words of Python."""
    declarations = re.findall(r"[\w:<>]+\s+(\w+)(?:\s*=\s*([^;]+))?;", block("struct", name))
    return {in_small_letters(field): value for field, value in declarations}


@pytest.mark.parametrize(
    "name",
    ["Backend", "Criterion", "ErrorCode", "PixelOrder", "Refusal", "Stage", "Verdict"],
)
def test_enumerations_have_every_value(name):
    text = block("enum class", name)
    values = [in_small_letters(value) for value in re.findall(r"\bk(\w+)", text)]
    assert [member.value for member in getattr(framequilt, name)] == [
        value for value in values if value != "none"
    ]
    assert all(member.name == member.value.upper() for member in getattr(framequilt, name))


@pytest.mark.parametrize(
    "name", ["FrameResult", "Measure", "Measures", "OpenclDevice", "Progress", "RefusalWords"]
)
def test_records_have_every_field(name):
    offered = public(vars(getattr(framequilt, name))) - {"explain"}
    assert set(fields(name)) == offered


def test_session_has_every_option_and_its_default():
    signature = framequilt.Session.__init__.__doc__.splitlines()[0]
    options = fields("SessionOptions")
    parameters = parameters_of_docstring(framequilt.Session.__init__)
    # set_report_sink() takes the lines of any session in Python.
    wanted = [name for name in options if name not in ("report_sink", "report_context")]
    assert [name for name, _, _ in parameters] == wanted
    for name, keyword_only, has_default in parameters:
        assert keyword_only
        assert has_default == (name not in ("rows", "cols"))
    for name in ("channels", "corner_budget", "max_rows", "max_cols"):
        assert f"{name}: int = {options[name]}," in signature
    assert "dynamic_scene: bool = False" in signature and options["dynamic_scene"] == "false"
    assert f"scale: int = {framequilt.AUTO_SCALE}" in signature
    assert "criterion: framequilt.Criterion = Criterion.MOTION" in signature
    assert options["criterion"] == "Criterion::kMotion"
    assert "backend: framequilt.Backend = Backend.AUTO" in signature
    assert options["backend"] == "Backend::kAuto"


def test_session_has_every_member_of_the_class():
    text = (HEADERS / "session.h").read_text()
    text = re.search(r"class FRAMEQUILT_EXPORT Session {(.*?)private:", text, re.S)[1]
    text = re.sub(r"//.*", "", text)
    members = set(re.findall(r"\b([a-z]\w+)\((?!\))?[^;{}]*?\)\s*(?:const|noexcept)?\s*;", text))
    assert {in_small_letters(member) for member in members} | {"stopped"} == public(
        vars(framequilt.Session)
    )


def test_every_public_thing_is_documented():
    for name in framequilt.__all__:
        its = getattr(framequilt, name)
        if inspect.isclass(its):
            for member in public(vars(its)):
                value = inspect.getattr_static(its, member)
                assert isinstance(value, its) or value.__doc__, f"{name}.{member}"
