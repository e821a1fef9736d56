# SPDX-License-Identifier: Apache-2.0
"""The types that kor.stubs writes: mypy knows them, and they are those of the run time."""

from __future__ import annotations

import ast
import collections
import contextlib
import enum
import inspect
import os
import pathlib
import re
import shutil
import subprocess
import sys
import typing

import kor
import pytest
from kor import stubs

LIBRARIES = ("libPolicyMapTest.so", "libPolicyMapTestKit.so", "libPolicyMapPackets.so")
PACKAGE = pathlib.Path(kor.__file__).parent
for each in LIBRARIES:
    kor.load(each)

PREAMBLE = """
import enum
from collections.abc import Callable, MutableMapping
import kor

kor.load("libPolicyMapTest.so")
kor.load("libPolicyMapTestKit.so")
kor.load("libPolicyMapPackets.so")
P, T = kor.ns.PolicyMap, kor.ns.PolicyMapTest
helper = T.AclHelper(True, expandPortChannels=False)
policy = P.PolicyMapSmKey("edge", second="input")
key = T.AclPolicyType(policy, "ipv4")
record = helper.testData.create(key)
rule = kor.ns.Acl.IpRuleConfig()
rule_key = P.AclRuleKey("web", "web", 10, P.ClassMapMatchOption.ipv4)
"""

ACCEPTED = PREAMBLE + """
import kor.ns
from kor.ns import Acl, Vorel as V

def total(values: MutableMapping[P.AclRuleKey, int]) -> int:
    return sum(values.values())

def commits(records: kor.Collection[T.AclPolicyType, T.AclPolicyData]) -> int:
    return sum(each.commitCount for each in records.values())

helper.commitError = "table full"
text: str = helper.commitError
record.commitCount += 2
record.ruleAction1[rule_key] = 7
del record.ruleAction1[rule_key]
record.ruleAction1.update({rule_key: 8})
assert total(record.ruleAction1) == 8 and commits(helper.testData) == 2

# Interfaces may be given as texts; they are returned as values.
record.intf["Ethernet1"] = True
record.intf[V.IntfId("Ethernet2")] = False
more: dict[str, bool] = {"Ethernet3": True}
record.intf.update(more)
applied: bool = record.intf["Ethernet1"]
nothing: bool | None = record.intf.get("Ethernet9")
popped: bool = record.intf.pop("Ethernet2")
names: list[str] = [intf.name for intf in record.intf]
assert names.count("Ethernet3") == 1 and "Ethernet1" in record.intf and nothing is None

# So may enumerations and addresses; pointers may be None.
rule.source = "10.0.0.0/8"
length: int | None = rule.source.length
rule.destination = Acl.IpAddressMatch("any")
rule.protocol = 6
rule.protocol = None
rule.dstPort = kor.ns.Acl.PortMatch("eq", 80, high=80)
record.ruleMatch[rule_key] = rule
match = P.ClassMapMatch("rule", P.ClassMapMatchOption["ipv4"], "", rule)
again = T.AclPolicyType(option=record.key.option, policyKey=record.key.policyKey)
assert again == key and hash(again) == hash(key) and repr(again) and length == 8
data = P.ClassMapSmCommonData("web", None, aclConfig=None)
data.classMap = None
number: enum.IntEnum = key.option
assert number < 4 and number is P.ClassMapMatchOption.ipv4

subject: T.AclPolicyData = kor.const(record)
assert kor.is_const(subject)
changes: list[object] = []
with kor.observe(helper, "commitError", changes.append) as observation:
    helper.commitError = "other"
    active: bool = observation.active
observation.stop()
assert active and not observation.active and changes == ["other"]

lab = kor.ns.PolicyMapTestKit.Lab(False, False, async_=False)
lab.advance(1)
found: str = lab.helper.commitError
lab.aroundIs(lambda *args: None)
lab.aroundIs(None)
try:
    lab.load("no such line")
    raise SystemExit("it was loaded")
except kor.Exception as error:
    name: str | None = error.name
made = kor.new("PolicyMapTest::AclHelper", True, False)
assert isinstance(made, T.AclHelper) and made.expandPortChannels is False
assert kor.type("PolicyMapTest::AclHelper") is T.AclHelper and kor.types()
assert kor.parse(repr(key)) == key == eval(repr(key), {"Value": kor.Value})
"""


class Refused(typing.NamedTuple):
    """A wrong line: what mypy says of it, and what it raises; None if it does no harm."""

    line: str
    code: str
    message: str
    raises: type[BaseException] | None


REFUSED = [
    Refused('helper.comitError = "x"', "attr-defined", '"AclHelper" has no attribute "comitError"',
            AttributeError),
    Refused("helper.commitError = 1", "assignment", 'variable has type "str"', kor.TypeException),
    Refused('number: int = helper.commitError', "assignment", 'variable has type "int"', None),
    Refused("record.key = key", "misc", '"key".* is read-only', kor.OpNotSupportedException),
    Refused("helper.testData = helper.testData", "misc", '"testData".* is read-only', TypeError),
    Refused("rule.source = 8", "assignment", "IpAddressMatch, str", kor.TypeException),
    Refused("rule.protocol = '6'", "assignment", r"Optional\[int\]", kor.TypeException),
    Refused("T.AclHelper(True)", "call-arg", 'Missing .*"expandPortChannels"', kor.TypeException),
    Refused("T.AclHelper(True, False, other=1)", "call-arg", 'Unexpected keyword argument "other"',
            kor.UnknownArgException),
    Refused('T.AclHelper(True, "no")', "arg-type", 'Argument 2 .* expected "bool"',
            kor.TypeException),
    Refused("helper.handleAsyncTrigger(1)", "call-arg", "Too many arguments",
            kor.UnknownArgException),
    Refused("helper.showAclRule()", "call-arg", 'Missing .*"key"', kor.TypeException),
    Refused("helper.showAclRule(rule=rule_key)", "call-arg", 'Unexpected keyword argument "rule"',
            kor.UnknownArgException),
    Refused("helper.showAclRule(key)", "arg-type", 'expected "AclRuleKey"', kor.TypeException),
    Refused('kor.ns.PolicyMapTestKit.Lab(False, False, False).advance("1")', "arg-type",
            'expected "float"', kor.TypeException),
    Refused('kor.ns.PolicyMapTestKit.Lab(False, False, False).aroundIs("x")', "arg-type",
            r"Callable\[\.\.\., object\]", kor.TypeException),
    Refused('record.ruleAction1["web"] = 1', "index", 'Invalid index type "str"',
            kor.TypeException),
    Refused('record.ruleAction1[rule_key] = "7"', "assignment", 'target has type "int"',
            kor.TypeException),
    Refused("record.intf[1] = True", "index", 'Invalid index type "int"', kor.TypeException),
    Refused('record.intf["Ethernet1"] = 1', "assignment", 'target has type "bool"',
            kor.TypeException),
    Refused("helper.testData[key] = record", "assignment", 'target has type "NoReturn"',
            kor.TypeException),
    Refused("helper.testData.create(policy)", "arg-type", 'expected "AclPolicyType"',
            kor.TypeException),
    Refused("T.AclPolicyType(policy, P.ClassMapMatchType.matchAny)", "arg-type",
            "ClassMapMatchOption, str", kor.TypeException),
    Refused("P.ClassMapMatchOption.ipv5", "attr-defined", 'has no attribute "ipv5"',
            AttributeError),
    Refused("T.AclHelpr(True, False)", "attr-defined", 'Module has no attribute "AclHelpr"',
            AttributeError),
    Refused("kor.ns.PolicyMapTst", "attr-defined", 'Module has no attribute "PolicyMapTst"',
            AttributeError),
    Refused("P.ActionSm()", "call-arg", 'Missing .*"made_only_by_the_framework"',
            kor.RangeException),
    Refused("key < helper", "operator", "Unsupported operand types for <", TypeError),
    Refused('kor.const("x")', "type-var", "cannot be \"str\"", kor.TypeException),
    Refused('kor.observe(helper, "commitError", 1)', "arg-type", r"Callable\[\.\.\., object\]",
            TypeError),
    Refused("kor.load(1)", "arg-type", "PathLike", OSError),
]


# Generation --------------------------------------------------------------------------------------


def generated(folder: pathlib.Path) -> pathlib.Path:
    """A copy of the package with stubs that another process has written."""
    package = folder / "kor"
    shutil.copytree(PACKAGE, package, ignore=shutil.ignore_patterns(
        "CMakeFiles", "*.cmake", "__pycache__", "ns", "py.typed"))
    subprocess.run([sys.executable, "-X", "dev", "-B", "-W", "error", "-m", "kor.stubs",
                    str(package), *LIBRARIES], check=True)
    return package


@pytest.fixture(scope="module")
def package(tmp_path_factory: pytest.TempPathFactory) -> pathlib.Path:
    return generated(tmp_path_factory.mktemp("one"))


def test_two_runs_give_the_same_bytes(package: pathlib.Path, tmp_path: pathlib.Path) -> None:
    def contents(folder: pathlib.Path) -> dict[pathlib.Path, bytes]:
        return {file.relative_to(folder): file.read_bytes()
                for file in folder.rglob("*") if file.suffix in (".pyi", ".typed")}

    assert contents(generated(tmp_path)) == contents(package)
    assert pathlib.Path("py.typed") in contents(package)


def test_stubs_of_namespaces_that_are_gone_are_removed(package: pathlib.Path,
                                                       tmp_path: pathlib.Path) -> None:
    shutil.copytree(package, tmp_path / "kor")
    gone = tmp_path / "kor" / "ns" / "Gone.pyi"
    gone.write_text("")
    stubs.main([str(tmp_path / "kor")])
    assert not gone.exists() and (tmp_path / "kor" / "ns" / "__init__.pyi").exists()


def run(package: pathlib.Path, program: str) -> subprocess.CompletedProcess[str]:
    return subprocess.run([sys.executable, "-X", "dev", "-B", "-W", "error", "-c", program],
                          env={**os.environ, "PYTHONPATH": str(package.parent)},
                          capture_output=True, text=True)


@pytest.mark.parametrize("imports", [
    "import kor", "import kor.ns", "from kor import ns", "from kor.ns import PolicyMapTest"])
def test_the_stubs_hide_nothing_at_run_time(package: pathlib.Path, imports: str) -> None:
    done = run(package, f"""
import kor
kor.load("libPolicyMapTest.so")
before = kor.ns
{imports}
assert kor.ns is before and kor.ns.PolicyMapTest.AclHelper(True, False)
assert "ns" not in globals() or ns is before
assert kor.__file__.startswith({str(package)!r})
""")
    assert done.returncode == 0, done.stderr


# mypy --------------------------------------------------------------------------------------------


@pytest.fixture(scope="module")
def errors(package: pathlib.Path,
           tmp_path_factory: pytest.TempPathFactory) -> dict[str, dict[int, list[str]]]:
    """What `mypy --strict` says, by module and line, of the package and both programs."""
    api = pytest.importorskip("mypy.api", reason="the package python3-mypy is not installed")
    folder = tmp_path_factory.mktemp("programs")
    (folder / "accepted.py").write_text(ACCEPTED)
    (folder / "refused.py").write_text(PREAMBLE + "\n".join(each.line for each in REFUSED) + "\n")
    configuration = folder / "mypy.ini"
    configuration.write_text(f"[mypy]\nmypy_path = {package.parent}:{folder}\n")
    out, trouble, _ = api.run([
        "--strict", "--python-executable", sys.executable, "--config-file", str(configuration),
        "--cache-dir", os.devnull, "--show-error-codes", "--show-absolute-path",
        "--no-error-summary", "-p", "kor", "-m", "accepted", "-m", "refused"])
    assert not trouble
    found: dict[str, dict[int, list[str]]] = collections.defaultdict(
        lambda: collections.defaultdict(list))
    for file, line, message in re.findall(r"^(.*?):(\d+): error: (.*)$", out, re.MULTILINE):
        place = pathlib.Path(file)
        module = place.stem if place.parent == folder else str(place.relative_to(package))
        found[module][int(line)].append(message)
    assert found  # the refused program, at least
    return found


def test_the_package_and_its_stubs_are_typed_strictly(
        errors: dict[str, dict[int, list[str]]]) -> None:
    assert set(errors) <= {"accepted", "refused"}, errors


def test_a_good_program_is_accepted(errors: dict[str, dict[int, list[str]]]) -> None:
    assert "accepted" not in errors, dict(errors["accepted"])


def test_a_good_program_runs(package: pathlib.Path) -> None:
    done = run(package, ACCEPTED)
    assert done.returncode == 0, done.stderr


@pytest.mark.parametrize("place", range(len(REFUSED)), ids=[each.line for each in REFUSED])
def test_a_wrong_line_is_refused(errors: dict[str, dict[int, list[str]]], place: int) -> None:
    messages = errors["refused"].get(PREAMBLE.count("\n") + 1 + place, [])
    assert len(messages) == 1, messages
    assert messages[0].endswith(f"[{REFUSED[place].code}]"), messages
    assert re.search(REFUSED[place].message, messages[0]), messages


def test_no_other_line_of_the_wrong_program_is_refused(
        errors: dict[str, dict[int, list[str]]]) -> None:
    first = PREAMBLE.count("\n") + 1
    assert set(errors["refused"]) <= set(range(first, first + len(REFUSED))), errors["refused"]


@pytest.mark.parametrize("wrong", REFUSED, ids=[each.line for each in REFUSED])
def test_what_is_refused_is_wrong(wrong: Refused) -> None:
    names: dict[str, object] = {}
    exec(PREAMBLE, names)
    with contextlib.ExitStack() as stack:
        if wrong.raises is not None:
            stack.enter_context(pytest.raises(wrong.raises))
        exec(wrong.line, names)


# What is in the stubs is there at run time, and the other way round ------------------------------


def classes_in(body: list[ast.stmt], prefix: str) -> dict[str, ast.ClassDef]:
    found = {}
    for node in body:
        if isinstance(node, ast.ClassDef):
            found[prefix + node.name] = node
            found.update(classes_in(node.body, f"{prefix}{node.name}::"))
    return found


@pytest.fixture(scope="module")
def classes(package: pathlib.Path) -> dict[str, ast.ClassDef]:
    """The classes of all stubs by the names of their types."""
    found = {}
    for file in (package / "ns").rglob("*.pyi"):
        parts = [each for each in file.relative_to(package / "ns").with_suffix("").parts
                 if each != "__init__"]
        found.update(classes_in(ast.parse(file.read_text()).body,
                                "".join(each + "::" for each in parts)))
    return found


def is_private(name: str) -> bool:
    return name.rpartition("::")[2].startswith("_")


def class_of(name: str) -> type[typing.Any] | None:
    """What kor.ns has by that name."""
    reached: typing.Any = kor.ns
    for part in name.split("::"):
        reached = getattr(reached, part, None)
    return reached if isinstance(reached, type) else None


def typed_names() -> list[str]:
    return [name for name in kor.types() if name not in stubs.OTHERS]


def member_classes(classes: dict[str, ast.ClassDef]) -> dict[str, ast.ClassDef]:
    """The stubs of the types that are no enumerations."""
    return {name: node for name, node in classes.items()
            if not is_private(name) and not issubclass(kor.type(name), enum.Enum)}


def arguments(function: ast.FunctionDef) -> dict[str, str]:
    """The annotations of the arguments but self."""
    assert not (function.args.posonlyargs or function.args.kwonlyargs or function.args.defaults)
    return {each.arg: ast.unparse(each.annotation) if each.annotation else ""
            for each in function.args.args[1:]}


class Annotated(typing.NamedTuple):
    """A data attribute in a stub."""

    returned: str
    given: str | None  # None: it is read-only


def data_of(node: ast.ClassDef) -> dict[str, Annotated]:
    found = {}
    for each in node.body:
        if isinstance(each, ast.AnnAssign) and isinstance(each.target, ast.Name):
            annotation = ast.unparse(each.annotation)
            both = [annotation] * 2
            if isinstance(each.annotation, ast.Subscript) and annotation.startswith("_kor."):
                assert isinstance(each.annotation.slice, ast.Tuple)
                both = [ast.unparse(part) for part in each.annotation.slice.elts]
            found[each.target.id] = Annotated(*both)
        elif isinstance(each, ast.FunctionDef) and each.decorator_list:
            assert [ast.unparse(one) for one in each.decorator_list] == ["property"]
            assert each.returns is not None
            found[each.name] = Annotated(ast.unparse(each.returns), None)
    return found


def functions_of(node: ast.ClassDef) -> dict[str, ast.FunctionDef]:
    return {each.name: each for each in node.body
            if isinstance(each, ast.FunctionDef) and not each.decorator_list}


def test_each_type_has_a_stub_and_each_stub_a_type(classes: dict[str, ast.ClassDef]) -> None:
    public = [name for name in classes if not is_private(name)]
    assert set(public) == {name for name in typed_names() if class_of(name) is not None}
    for name in public:
        assert class_of(name) is kor.type(name)
    # A type that kor.ns does not reach has a private name.
    assert len(classes) == len(typed_names())


def test_each_namespace_has_a_stub(package: pathlib.Path) -> None:
    expected: dict[str, set[str]] = collections.defaultdict(set)
    for name in typed_names():
        parts = name.split("::")
        for place, part in enumerate(parts):
            space = "::".join(parts[:place])
            if space not in typed_names():
                expected[space].add(part)
    found = {}
    for file in (package / "ns").rglob("*.pyi"):
        body = ast.parse(file.read_text()).body
        inner = {alias.name for node in body if isinstance(node, ast.ImportFrom) and node.level
                 for alias in node.names if alias.asname == alias.name}
        own = {node.name for node in body if isinstance(node, ast.ClassDef)}
        space = "::".join(each for each in file.relative_to(package / "ns").with_suffix("").parts
                          if each != "__init__")
        found[space] = {name for name in inner | own if not name.startswith("_")}
        reached: typing.Any = kor.ns
        for part in space.split("::") if space else ():
            reached = getattr(reached, part)
        assert found[space] <= set(dir(reached))
    assert found == expected


def test_no_type_is_any() -> None:
    assert [name for name in kor.types() if stubs.is_opaque(kor._kor.describe(name))] == []


def test_bases_and_constructors_are_those_of_the_classes(classes: dict[str, ast.ClassDef]) -> None:
    can = set()
    for name, node in member_classes(classes).items():
        cls = kor.type(name)
        assert [ast.unparse(base).rpartition(".")[2] for base in node.bases] == [
            cls.__base__.__name__]
        constructor = arguments(functions_of(node)["__init__"])
        can.add(kor._kor.describe(name)["can_construct"])
        if kor._kor.describe(name)["can_construct"]:
            assert list(constructor) == list(inspect.signature(cls).parameters)
        else:
            assert list(constructor.values()) == ["typing.NoReturn"]
    assert can == {True, False}


def test_members_are_those_of_the_classes(classes: dict[str, ast.ClassDef]) -> None:
    kinds: collections.Counter[str] = collections.Counter()
    for name, node in member_classes(classes).items():
        cls = kor.type(name)
        records = {each["name"]: each for each in kor._kor.describe(name)["attributes"]}
        own = {each for each, value in vars(cls).items()
               if not each.startswith("_") and not isinstance(value, type)}
        data = data_of(node)
        functions = {each: function for each, function in functions_of(node).items()
                     if not each.startswith("_")}
        assert data.keys() | functions.keys() == own and not data.keys() & functions.keys()
        for each, (_, given) in data.items():
            assert isinstance(vars(cls)[each], kor._kor.Attribute)
            is_collection = bool(records[each]["key_type"])
            assert (given is not None) == (records[each]["is_writable"] and not is_collection)
            kinds["collection" if is_collection else "given" if given else "read-only"] += 1
        for each, function in functions.items():
            assert isinstance(vars(cls)[each], kor._kor.Function)
            assert list(arguments(function)) == [
                stubs.spelled(argument) for argument, _ in records[each]["args"]]
            kinds["function"] += 1
    assert min(kinds[each] for each in ("collection", "given", "read-only", "function")) > 10


def test_enumerations_have_their_members(classes: dict[str, ast.ClassDef]) -> None:
    found = 0
    for name in typed_names():
        cls = kor.type(name)
        if issubclass(cls, enum.IntEnum):
            stub = classes.get(name)
            if stub is None:
                outer, _, inner = name.rpartition("::")
                space, _, last = outer.rpartition("::")
                stub = classes[f"{space}::_{last}_{inner}"]
            members = {target.id: ast.literal_eval(each.value)
                       for each in stub.body if isinstance(each, ast.Assign)
                       for target in each.targets if isinstance(target, ast.Name)}
            assert members == {each.name: each.value for each in cls}
            found += 1
    assert found > 2


def test_attributes_may_have_names_that_python_uses(monkeypatch: pytest.MonkeyPatch) -> None:
    describe, types = kor._kor.describe, kor.types()
    prose = 'a "text", or \\'
    made: typing.Any = describe("PolicyMapTest::AclHelper")
    texts = [{**each, "name": name, "owner": "Made::Up", "prose": prose}
             for each in made["attributes"] if each["name"] == "commitError"
             for name in ("str", "lambda", "plain")]
    made.update(name="Made::Up", attributes=texts)
    monkeypatch.setattr(kor._kor, "describe",
                        lambda name: made if name == "Made::Up" else describe(name))
    monkeypatch.setattr(kor, "types", lambda: [*types, "Made::Up"])
    text = stubs.Stubs().modules()[pathlib.PurePosixPath("ns/Made.pyi")]
    stub = classes_in(ast.parse(text).body, "")["Up"]
    assert data_of(stub) == {"str": Annotated("builtins.str", "builtins.str"),
                             "plain": Annotated("builtins.str", "builtins.str")}
    assert [each.value.value for each in stub.body if isinstance(each, ast.Expr)
            and isinstance(each.value, ast.Constant)] == [prose] * 2


# What may be given -------------------------------------------------------------------------------

PLAIN: dict[str, object] = {
    "bool": True, "double": 1.5, "Kor::String": "x", "Kor::Name": "x", "Kor::GenericIf::List_": [],
    "Acl::OptionalNumber": None, "Acl::OptionalRule": None, "PolicyMap::ActionType": 1,
}


def sample(name: str) -> typing.Any:
    """A value of the type, or an object that needs no other; None if there is none."""
    if name in PLAIN:
        return PLAIN[name]
    if re.fullmatch(r"u?int\d+_t", name):
        return 1
    cls = kor.type(name)
    if issubclass(cls, enum.Enum):
        return list(cls)[-1]
    described = kor._kor.describe(name)
    if described["is_value"]:
        if not stubs.is_text(described):
            return kor.parse(f"Value('{name}', ** {{}})")
        for text in ("any", "", "1"):
            with contextlib.suppress(kor.RangeException):
                return cls(text)
    if not described["can_construct"] or any(
            of not in stubs.OTHERS and not kor._kor.describe(of)["is_value"]
            for _, of in described["args"]):
        return None
    return cls(*(sample(of) for _, of in described["args"]))


def as_text(name: str) -> str:
    """The text that a value of the type would be given as."""
    value = sample(name)
    text = value.name if isinstance(value, enum.Enum) else str(value)
    return str(ast.literal_eval(text)) if text.startswith("'") else text


def is_accepted(action: typing.Callable[[], object]) -> bool:
    """True if what the action gives is of the right type, also if it is out of range."""
    try:
        action()
    except kor.TypeException:
        return False
    except kor.RangeException:
        return True
    return True


def parts_of(annotation: str) -> list[str]:
    return annotation.split(" | ")


def collection_parts(annotation: str) -> list[str]:
    """Key and member, and key and member that may be given."""
    node = ast.parse(annotation, mode="eval").body
    assert isinstance(node, ast.Subscript) and isinstance(node.slice, ast.Tuple)
    parts = [ast.unparse(each) for each in node.slice.elts]
    return parts * 2 if len(parts) == 2 else parts


def test_texts_may_be_given_where_the_stubs_say_so(classes: dict[str, ast.ClassDef]) -> None:
    found: collections.Counter[tuple[str, bool]] = collections.Counter()

    def check(what: str, of: str, annotation: str, give: typing.Callable[[str], object]) -> None:
        if of not in stubs.OTHERS and (kor._kor.describe(of)["is_value"]):
            accepted = is_accepted(lambda: give(as_text(of)))
            assert accepted == ("str" in parts_of(annotation)), (what, of, annotation)
            found[what, accepted] += 1

    for name, node in member_classes(classes).items():
        subject = sample(name)
        if subject is None:
            continue
        described = kor._kor.describe(name)
        if described["can_construct"]:
            args = [sample(of) for _, of in described["args"]]
            annotations = list(arguments(functions_of(node)["__init__"]).values())
            for place, (_, of) in enumerate(described["args"]):
                check("argument", of, annotations[place], lambda text: kor.type(name)(
                    *args[:place], text, *args[place + 1:]))
        for record in described["attributes"]:
            annotated = data_of(node).get(record["name"])
            if annotated is None:
                continue
            if record["key_type"]:
                check("key", record["key_type"], collection_parts(annotated.returned)[2],
                      lambda text: getattr(subject, record["name"]).get(text))
            elif annotated.given is not None:
                check("attribute", record["value_type"], annotated.given,
                      lambda text: setattr(subject, record["name"], text))
    assert found.keys() == {(what, accepted) for what in ("argument", "attribute", "key")
                            for accepted in (True, False)}, found


def test_pointers_may_be_none(classes: dict[str, ast.ClassDef]) -> None:
    found = 0
    for name, node in member_classes(classes).items():
        subject = sample(name)
        types = {each["name"]: each["value_type"] for each in kor._kor.describe(name)["attributes"]}
        for attribute, (returned, given) in data_of(node).items():
            if subject is not None and given is not None:
                value_type = types[attribute]
                accepted = is_accepted(lambda: setattr(subject, attribute, None))
                assert accepted == ("None" in parts_of(given)), (name, attribute)
                found += accepted and value_type not in stubs.OTHERS
                assert "None" not in parts_of(returned) or value_type in stubs.OTHERS
    assert found


def fits(value: object, annotation: str) -> bool:
    names = [each.__name__ for each in type(value).__mro__]
    return any(part == repr(value) if part == "None" else
               re.sub(r"\[.*", "", part).rpartition(".")[2].rpartition("_")[2] in names
               for part in parts_of(annotation))


def test_values_are_of_the_annotated_types(classes: dict[str, ast.ClassDef]) -> None:
    seen = set()
    for name, node in member_classes(classes).items():
        subject = sample(name)
        if subject is None:
            continue
        for attribute, (returned, _) in data_of(node).items():
            value = getattr(subject, attribute)
            record = next(each for each in kor._kor.describe(name)["attributes"]
                          if each["name"] == attribute)
            if isinstance(value, kor.Collection):
                key = sample(record["key_type"])
                if record["is_owned"]:
                    assert fits(value.create(key), collection_parts(returned)[1])
                elif kor._kor.describe(record["value_type"])["is_value"]:
                    with contextlib.suppress(kor.RangeException):  # no such key is allowed
                        value[key] = sample(record["value_type"])
                        assert fits(value[key], collection_parts(returned)[1])
                assert all(fits(each, collection_parts(returned)[0]) for each in value)
            elif value is not None or record["value_type"] in stubs.OTHERS:
                assert fits(value, returned), (name, attribute)
            seen.add(re.sub(r"\[.*", "", returned))
    assert {"int", "bool", "str", "float", "int | None", "kor.Collection",
            "kor._WiderCollection"} <= seen


# The package itself ------------------------------------------------------------------------------


def test_the_stub_of_the_package_is_complete(package: pathlib.Path) -> None:
    stub = ast.parse((package / "__init__.pyi").read_text())
    names = next(ast.literal_eval(node.value) for node in stub.body
                 if isinstance(node, ast.Assign) and ast.unparse(node.targets[0]) == "__all__")
    assert sorted(names) == sorted(kor.__all__)
    nodes = {node.name: node for node in stub.body
             if isinstance(node, (ast.FunctionDef, ast.ClassDef))}
    imported = {alias.asname or alias.name for node in stub.body
                if isinstance(node, (ast.Import, ast.ImportFrom)) for alias in node.names}
    assert set(names) <= nodes.keys() | imported
    functions = 0
    for name, node in nodes.items():
        if name.startswith("_"):
            continue
        actual = getattr(kor, name)
        if isinstance(node, ast.FunctionDef):
            assert list(signature(node)) == list(inspect.signature(actual).parameters.values())
            functions += 1
        else:
            declared = {each.name: each for each in node.body if isinstance(each, ast.FunctionDef)}
            own = {each for each in vars(actual) if not each.startswith("_")}
            assert own == {each for each in declared if not each.startswith("_")}
            for each, method in declared.items():
                assert hasattr(actual, each)
                if each in own and not method.decorator_list:
                    assert list(signature(method)) == list(
                        inspect.signature(vars(actual)[each]).parameters.values())
    assert functions > 5


def signature(node: ast.FunctionDef) -> typing.Iterator[inspect.Parameter]:
    """The parameters of a function in a stub, without their types."""
    kind = inspect.Parameter
    defaults = [ast.literal_eval(each) for each in node.args.defaults]
    unnamed = len(node.args.posonlyargs)
    positional = node.args.posonlyargs + node.args.args
    for place, each in enumerate(positional):
        behind = place - (len(positional) - len(defaults))
        yield kind(each.arg,
                   kind.POSITIONAL_ONLY if place < unnamed else kind.POSITIONAL_OR_KEYWORD,
                   default=defaults[behind] if behind >= 0 else kind.empty)
    if node.args.vararg:
        yield kind(node.args.vararg.arg, kind.VAR_POSITIONAL)
    if node.args.kwarg:
        yield kind(node.args.kwarg.arg, kind.VAR_KEYWORD)


def test_the_stub_of_the_extension_has_nothing_else(package: pathlib.Path) -> None:
    stub = ast.parse((package / "_kor.pyi").read_text())
    names = [node.name for node in stub.body if isinstance(node, (ast.FunctionDef, ast.ClassDef))
             and not node.name.startswith("_")]
    assert names and all(hasattr(kor._kor, name) for name in names)
    records = {node.name: {each.target.id for each in node.body
                           if isinstance(each, ast.AnnAssign) and isinstance(each.target, ast.Name)}
               for node in stub.body if isinstance(node, ast.ClassDef)}
    described = kor._kor.describe("PolicyMapTest::AclHelper")
    assert records["_TypeRecord"] <= described.keys()
    assert records["_AttributeRecord"] <= described["attributes"][0].keys()
