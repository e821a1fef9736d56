# SPDX-License-Identifier: Apache-2.0
"""Types of the registered types, for type checkers.

    python3 -m kor.stubs FOLDER LIBRARY...

Loads the libraries and writes stubs of all registered types into FOLDER, which is the folder of
this package: ``py.typed``, and a module per namespace in ``ns``. Stubs in ``ns`` that were there
before are removed. The same types give the same bytes.

A stub says what a program gets and what it may give:

- An enumeration is an ``enum.IntEnum``; the name of a member may be given, too.
- A value that prints as a plain text may be given as this text.
- A pointer is given as an object or None. It is returned as an object, although it may be None: the
  registry does not say which are never None.
- A function object may be given as anything that can be called.
- A function that also has an overload without arguments is one with arguments.

Types of which Python has no instances, such as "uint32_t", are in no stub.
"""

from __future__ import annotations

import argparse
import keyword
import pathlib
import shutil
import typing
from collections.abc import Iterable, Iterator

import kor

if typing.TYPE_CHECKING:
    from kor._kor import _AttributeRecord, _TypeRecord

_LICENSE = "# SPDX-License-Identifier: Apache-2.0"


class Both(typing.NamedTuple):
    """Annotations of what is returned and of what may be given."""

    returned: str
    given: str


def _same(annotation: str) -> Both:
    return Both(annotation, annotation)


# The types that are others in Python. A name in braces is that of a registered type.
OTHERS: dict[str, Both] = {
    "void": _same("None"),
    "bool": _same("bool"),
    **{f"{sign}int{bits}_t": _same("int") for bits in (8, 16, 32, 64) for sign in ("", "u")},
    "double": _same("float"),
    "Kor::String": _same("str"),
    "Kor::Name": _same("str"),
    "Kor::GenericIf::List_": Both("list[typing.Any]", "list[typing.Any] | tuple[typing.Any, ...]"),
    "Acl::OptionalNumber": _same("int | None"),
    "Acl::OptionalRule": _same(
        "{Acl::IpRuleConfig} | {Acl::Ip6RuleConfig} | {Acl::MacRuleConfig} | None"),
    "PolicyMap::ActionType": _same("int"),  # an enumeration without names
}
_FUNCTION_OBJECT = "Kor::Callable"


def is_opaque(described: _TypeRecord) -> bool:
    """True for a value about which the registry says nothing: it is ``typing.Any`` in the stubs."""
    return (described["is_value"] and not described["can_construct"]
            and not described["enum_names"] and not described["attributes"]
            and described["name"] not in OTHERS)


def is_text(described: _TypeRecord) -> bool:
    """True for a value that prints as a plain text, which may be given in its place."""
    if not described["is_value"] or described["enum_names"]:
        return False
    try:
        kor.parse(f"Value('{described['name']}', ** {{}})")
    except kor.RangeException:
        return True  # it has no fields
    return False


def spelled(name: str) -> str:
    """A name that Python can write: "async" is "async_"."""
    return name + "_" if keyword.iskeyword(name) else name


class _Tree:
    """The types of a namespace, or those that are registered as members of a type."""

    def __init__(self, name: str) -> None:
        self.name = name
        self.described: _TypeRecord | None = None
        self.members: dict[str, _Tree] = {}

    def at(self, name: str) -> _Tree:
        """The member of a qualified name, made if there is none."""
        tree = self
        for part in name.split("::"):
            whole = f"{tree.name}::{part}".removeprefix("::")
            tree = tree.members.setdefault(part, _Tree(whole))
        return tree

    def namespaces(self) -> Iterator[str]:
        return (part for part, member in self.members.items() if member.described is None)


class _Module:
    """The stub of a namespace."""

    def __init__(self, stubs: Stubs, tree: _Tree) -> None:
        self._stubs = stubs
        self._tree = tree
        self._imports: set[str] = set()
        self._lines: list[str] = []

    def text(self) -> str:
        for member in self._tree.members.values():
            if member.described is not None:
                self._type(member, member.described, "")
        parts = [_LICENSE, f'"""Types of {self._tree.name or "all namespaces"}."""', "",
                 "import builtins", "import enum", "import typing", "", "import kor",
                 "from kor import _kor"]
        parts += sorted(self._imports)
        parts += [f"from . import {part} as {part}" for part in self._tree.namespaces()]
        return "\n".join(parts + self._lines) + "\n"

    def _type(self, tree: _Tree, described: _TypeRecord, indent: str) -> None:
        name = self._stubs.class_name(described["name"]).rpartition(".")[2]
        inner = indent + "    "
        if described["enum_names"]:
            self._lines += ["", f"{indent}class {name}(enum.IntEnum):"]
            self._lines += [f"{inner}{each} = {number}"
                            for number, each in enumerate(described["enum_names"])
                            if not keyword.iskeyword(each)]
        else:
            base = self._reference(described["base"]) if described["base"] else "kor.Object"
            self._lines += ["", f"{indent}class {name}({base}):"]
            self._class(described, inner)
        for part, member in tree.members.items():
            if member.described is not None and self._stubs.is_reachable(member.name):
                self._type(member, member.described, inner)
        for part, member in tree.members.items():
            if member.described is not None and not self._stubs.is_reachable(member.name):
                self._type(member, member.described, "")

    def _class(self, described: _TypeRecord, indent: str) -> None:
        own = [each for each in described["attributes"]
               if self._stubs.is_own(each, described)]
        hidden = {each["name"] for each in own}
        self._constructor(described, indent, hidden)
        if described["name"] == _FUNCTION_OBJECT:
            self._lines.append(f"{indent}def __call__(self, *args: object) -> typing.Any: ...")
        for attribute in own:
            if keyword.iskeyword(attribute["name"]):
                continue  # only getattr() reaches it
            if attribute["is_function"]:
                self._function(attribute, indent, hidden)
            else:
                self._data(attribute, indent, hidden)

    def _constructor(self, described: _TypeRecord, indent: str, hidden: set[str]) -> None:
        if described["can_construct"]:
            self._lines.append(
                f"{indent}def __init__({self._parameters(described['args'], hidden)}) -> None: ...")
        else:
            self._lines.append(f"{indent}def __init__("
                               "self, made_only_by_the_framework: typing.NoReturn) -> None: ...")

    def _parameters(self, args: list[tuple[str, str]], hidden: set[str]) -> str:
        return ", ".join(["self"] + [f"{spelled(name)}: {self._both(of, hidden).given}"
                                     for name, of in args])

    def _function(self, attribute: _AttributeRecord, indent: str, hidden: set[str]) -> None:
        result = self._both(attribute["value_type"], hidden).returned
        parameters = self._parameters(attribute["args"], hidden)
        self._lines.append(f"{indent}def {attribute['name']}({parameters}) -> {result}:"
                           + ("" if attribute["prose"] else " ..."))
        self._prose(attribute, indent + "    ")

    def _data(self, attribute: _AttributeRecord, indent: str, hidden: set[str]) -> None:
        value = self._both(attribute["value_type"], hidden)
        if attribute["key_type"]:
            self._property(attribute, self._collection(attribute, value, hidden), indent, hidden)
        elif not attribute["is_writable"]:
            self._property(attribute, value.returned, indent, hidden)
        else:
            annotation = (value.returned if value.given == value.returned
                          else f"_kor.Attribute[{value.returned}, {value.given}]")
            self._lines.append(f"{indent}{attribute['name']}: {annotation}")
            self._prose(attribute, indent)

    def _collection(self, attribute: _AttributeRecord, value: Both, hidden: set[str]) -> str:
        key = self._both(attribute["key_type"], hidden)
        given = "typing.NoReturn" if attribute["is_owned"] else value.given
        if (key.given, given) == (key.returned, value.returned):
            return f"kor.Collection[{key.returned}, {value.returned}]"
        return f"kor._WiderCollection[{key.returned}, {value.returned}, {key.given}, {given}]"

    def _property(self, attribute: _AttributeRecord, annotation: str, indent: str,
                  hidden: set[str]) -> None:
        self._lines += [f"{indent}@{self._builtin('property', hidden)}",
                        f"{indent}def {attribute['name']}(self) -> {annotation}:"
                        + ("" if attribute["prose"] else " ...")]
        self._prose(attribute, indent + "    ")

    def _prose(self, attribute: _AttributeRecord, indent: str) -> None:
        if attribute["prose"]:
            prose = attribute["prose"].replace("\\", "\\\\").replace('"', '\\"')
            self._lines.append(f'{indent}"""{prose}"""')

    def _both(self, name: str, hidden: set[str]) -> Both:
        other = OTHERS.get(name)
        if other is not None:
            return Both(*(self._in_python(each, hidden) for each in other))
        described = self._stubs.described[name]
        if is_opaque(described):
            return _same("typing.Any")
        text = self._builtin("str", hidden)
        own = self._reference(name)
        if name == _FUNCTION_OBJECT:
            return Both(own, f"typing.Callable[..., {self._builtin('object', hidden)}] | None")
        if described["enum_names"] or is_text(described):
            return Both(own, f"{own} | {text}")
        return _same(own) if described["is_value"] else Both(own, f"{own} | None")

    def _in_python(self, annotation: str, hidden: set[str]) -> str:
        words = annotation.split(" ")
        for place, word in enumerate(words):
            if word.startswith("{"):
                words[place] = self._reference(word.strip("{}"))
            else:
                head, bracket, rest = word.partition("[")
                words[place] = self._builtin(head, hidden) + bracket + rest
        return " ".join(words)

    @staticmethod
    def _builtin(name: str, hidden: set[str]) -> str:
        """The name of a built-in type, also in a class with an attribute of that name."""
        return f"builtins.{name}" if name in hidden else name

    def _reference(self, name: str) -> str:
        namespace = self._stubs.namespace_of(name)
        if namespace == self._tree.name:
            return self._stubs.class_name(name)
        outer, _, last = ("kor::ns::" + namespace).removesuffix("::").rpartition("::")
        alias = "_" + namespace.replace("::", "_") if namespace else "_ns"
        self._imports.add(f"from {outer.replace('::', '.')} import {last} as {alias}")
        return f"{alias}.{self._stubs.class_name(name)}"


class Stubs:
    """The stubs of all types that are registered now."""

    def __init__(self) -> None:
        self.described = {name: kor._kor.describe(name) for name in kor.types()}
        self._root = _Tree("")
        for name, described in self.described.items():
            if name not in OTHERS and not is_opaque(described):
                self._root.at(name).described = described

    def modules(self) -> dict[pathlib.PurePosixPath, str]:
        """The text of each stub by its place in the package."""
        return dict(self._modules(self._root, pathlib.PurePosixPath("ns")))

    def _modules(
        self, tree: _Tree, place: pathlib.PurePosixPath
    ) -> Iterator[tuple[pathlib.PurePosixPath, str]]:
        inner = list(tree.namespaces())
        file = place / "__init__.pyi" if inner or not tree.name else place.with_suffix(".pyi")
        yield file, _Module(self, tree).text()
        for part in inner:
            yield from self._modules(tree.members[part], place / part)

    def namespace_of(self, name: str) -> str:
        """The namespace of a type: what is left without the types that have it as a member."""
        namespace = name.rpartition("::")[0]
        while namespace in self.described:
            namespace = namespace.rpartition("::")[0]
        return namespace

    def is_reachable(self, name: str) -> bool:
        """True if ``kor.ns`` has the type: that of a member of a class may be missing."""
        reached: object = kor.ns
        for part in name.split("::"):
            reached = getattr(reached, part, None)
        return reached is kor.type(name)

    def class_name(self, name: str) -> str:
        """The name of a type in the stub of its namespace: "Outer.Inner" for a member of a class.

        A type that is no member of its class at run time has a private name: "_Outer_Inner".
        """
        parts = name.removeprefix(self.namespace_of(name)).removeprefix("::").split("::")
        return ".".join(parts) if self.is_reachable(name) else "_" + "_".join(parts)

    def is_own(self, attribute: _AttributeRecord, described: _TypeRecord) -> bool:
        """True if the class of the type has the attribute, and not only its base."""
        inherited = self.described[described["base"]]["attributes"] if described["base"] else []
        return (attribute["owner"] == described["name"]
                or attribute["name"] not in {each["name"] for each in inherited})


def write(folder: pathlib.Path) -> None:
    """Writes the stubs of all types that are registered now into the folder of the package."""
    if (folder / "ns").is_dir():
        shutil.rmtree(folder / "ns")
    for place, text in Stubs().modules().items():
        file = folder / place
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")
    (folder / "py.typed").write_text("", encoding="utf-8")


def main(args: Iterable[str] | None = None) -> None:
    parser = argparse.ArgumentParser(
        prog="kor.stubs", description="Writes the types of the registered types for type checkers.")
    parser.add_argument("folder", type=pathlib.Path, help="folder of the package kor")
    parser.add_argument("library", nargs="*", help="library whose types are wanted")
    given = parser.parse_args(None if args is None else list(args))
    for library in given.library:
        kor.load(library)
    write(given.folder)


if __name__ == "__main__":
    main()
