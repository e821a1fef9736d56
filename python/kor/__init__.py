# SPDX-License-Identifier: Apache-2.0
"""Every registered type of the framework by name.

    import kor

    kor.load("libPolicyMapTest.so")
    helper = kor.new("PolicyMapTest::AclHelper", True, False)
    helper = kor.ns.PolicyMapTest.AclHelper(True, expandPortChannels=False)  # the same
    helper.commitError = "table full"
    for key, record in helper.testData.items():
        print(key, record.commitCount)

Attributes of the framework are attributes, its functions methods, its collections mappings, its
enumerations ``enum.IntEnum``. Errors are those of :mod:`kor.errors`.
"""

import builtins
import collections.abc
import enum
import importlib.abc
import importlib.machinery
import inspect
import keyword
import re
import sys

from . import _kor, errors
from .errors import (
    AssertionFailed,
    BadIndexAttrException,
    CallbackException,
    ConstException,
    Exception,
    LookupException,
    OpNotSupportedException,
    RangeException,
    TypeException,
    UnknownArgException,
)

__all__ = [
    "AssertionFailed", "BadIndexAttrException", "CallbackException", "Collection", "ConstException",
    "Exception", "LookupException", "Object", "Observation", "OpNotSupportedException",
    "RangeException", "TypeException", "UnknownArgException", "Value", "attribute_op", "const",
    "is_const", "load", "new", "ns", "observe", "parse", "type", "types",
]

_GET, _COUNT, _FIRST, _NEXT, _SET, _DEL = 0, 1, 2, 3, 128, 129


def load(path):
    """Opens a library, which registers its types. Raises OSError."""
    _kor.load(str(path))


def types():
    """The qualified names of all registered types, in the order of their registration."""
    return _kor.types()


def type(name):
    """The Python class of a type, e.g. "PolicyMapTest::AclHelper"; an IntEnum of an enumeration.

    Raises RangeException, with the nearest names, if there is no such type.
    """
    if not isinstance(name, str):
        raise TypeException(f"name of a type: expected a text, found {name!r}")
    known = _classes.get(name) or _enums.get(name)
    if known is not None:
        return known
    return _enum_of(name) if _kor.describe(name)["enum_names"] else _class_of(name)


def new(name, /, *args, **named):
    """A new object or value of the type, as its class makes it."""
    return type(name)(*args, **named)


def const(obj):
    """The same object or value, whose attributes cannot be written through the result.

    Its functions can be called, also those that change it.
    """
    return _kor.const(obj)


def is_const(obj):
    """True if the object or value must not be changed through this reference."""
    return _kor.is_const(obj)


def attribute_op(obj, id, op, index=None, value=None):
    """One request to the generic interface: the attribute's identifier and the operation code.

    0 reads, returns a member or calls a function; 1 counts; 2 is the first key, 3 the key after the
    index; 128 writes or sets a member; 129 deletes it.
    """
    for what, number in (("id", id), ("op", op)):
        if isinstance(number, bool) or not isinstance(number, int):
            raise TypeException(f"{what}: expected a number, found {number!r}")
        if not 0 <= number < 1 << 32:
            raise RangeException(f"{what}: expected 0 to {(1 << 32) - 1}, found {number}")
    return _kor.attribute_op(obj, id, op, index, value)


class Observation:
    """An observer of an attribute. Lasts until stop(), or until the end of the object.

    As a context manager it stops at the end of the block.
    """

    __slots__ = ("_number",)

    def __init__(self, number):
        self._number = number

    @property
    def active(self):
        """True until it is stopped, and as long as the object exists."""
        return _kor.observes(self._number)

    def stop(self):
        """Ends the observation. Again, it does nothing."""
        _kor.unobserve(self._number)

    def __enter__(self):
        return self

    def __exit__(self, error_type, error, trace):
        self.stop()


def observe(obj, attribute, callback):
    """Lets `callback` be called after each change of an attribute; returns an Observation.

    It is called with the new value; for a collection with the key and the new member, which is None
    if it was removed. A callback that takes fewer arguments gets the first ones.

    The change is made and all observers are called, whatever one of them raises. The outermost call
    from Python into the framework then raises it, as CallbackException and the class that was
    raised; further ones go to ``sys.unraisablehook``. So within a callback ``try`` around a write
    does not catch what other observers raise.

    Raises AttributeError for an unknown attribute, OpNotSupportedException for one that has no
    notifications, and TypeError for a callback that is not callable.
    """
    descriptor = getattr(builtins.type(obj), attribute)
    if not isinstance(descriptor, _kor.Attribute):
        error = OpNotSupportedException(f"{attribute} is a function")
        error.name, error.code = attribute, _GET
        raise error
    if not callable(callback):
        raise TypeError(f"callback: expected a callable, found {callback!r}")
    taken = _arguments_of(callback)

    def changed(subject, key):
        if key is None:
            args = (None if subject is None else getattr(subject, attribute),)
        else:
            args = (key, None if subject is None else getattr(subject, attribute).get(key))
        callback(*args[:taken])

    return Observation(_kor.observe(obj, descriptor, changed))


def _arguments_of(function):
    """The number of positional arguments that a function takes; None for any number."""
    try:
        parameters = inspect.signature(function).parameters.values()
    except (TypeError, ValueError):
        return None
    kinds = [each.kind for each in parameters]
    if inspect.Parameter.VAR_POSITIONAL in kinds:
        return None
    return sum(kind in (inspect.Parameter.POSITIONAL_ONLY,
                        inspect.Parameter.POSITIONAL_OR_KEYWORD) for kind in kinds)


# In a text of the framework. Bytes that are no UTF-8 are \xff there, and \udcff in Python.
_ESCAPE = re.compile(r"\\(?:x([89a-f][0-9a-f])|.)", re.DOTALL)


class Object(_kor.Handle):
    """Base class of all objects and values of the framework.

    Two values are equal if they have the same type and content, and can be hashed and pickled; a
    process that unpickles them must have loaded their types. A value with attributes that can be
    written has another hash when they are. An object is equal to itself alone.
    ``str()`` is the text of the framework; ``repr()`` of a value evaluates to it where ``Value`` is
    ``kor.Value``.
    """

    __slots__ = ()
    _kor_type = None  # the description of the type

    def __new__(cls, *args, **named):
        if cls._kor_type is None:
            raise TypeError("kor.Object is made by kor.new()")
        name = cls._kor_type["name"]
        if named:
            args = _in_order(cls._kor_type["args"], args, named, name)
        return _kor.construct(name, args)

    def __init_subclass__(cls):
        if cls._kor_type is cls.__base__._kor_type:
            raise TypeError(f"{cls.__base__.__qualname__} has no subclasses in Python, because the "
                            "framework would not call their methods")

    def __repr__(self):
        text = str(self)
        if _kor.is_value(self) and not text.startswith("Value("):  # prints as a plain text
            argument, _ = self._kor_type["args"][0]
            text = f"Value('{self._kor_type['name']}', ** {{'{argument}': {text}}})"
        return _ESCAPE.sub(lambda found: rf"\udc{found[1]}" if found[1] else found[0], text)

    def _need_value(self):
        if not _kor.is_value(self):
            raise TypeError(
                f"{self._kor_type['name']} is an object; only values can be copied and pickled")

    def __reduce__(self):
        self._need_value()
        text = str(self)
        if text.startswith("Value("):
            return parse, (text,)
        return new, (self._kor_type["name"], parse(text))  # prints as a plain text

    def __copy__(self):
        make, args = self.__reduce__()
        changes = any(each["is_writable"] for each in self._kor_type["attributes"])
        return make(*args) if changes else self

    def __deepcopy__(self, memo):
        return self.__copy__()


def _in_order(specs, args, named, name):
    """Positional arguments, with those given by name in their places."""
    values = list(args)
    names = [each for each, _ in specs]
    named = {each.removesuffix("_") if each not in names else each: value
             for each, value in named.items()}
    for position in range(len(args), len(names)):
        if not named:
            break
        if names[position] not in named:
            error = TypeException(names[position])
            error.name = names[position]
            raise error
        values.append(named.pop(names[position]))
    if named:
        error = UnknownArgException(name.rpartition("::")[2])
        error.name = next(iter(named))
        raise error
    return tuple(values)


def parse(text):
    """What prints as the text: a number, a text, a list, a value. Raises RangeException."""
    if not isinstance(text, str):
        raise TypeException(f"text: expected a text, found {text!r}")
    return _kor.parse(text)


def Value(name, /, **fields):
    """The value that prints in this way: ``Value('PolicyMapTest::AclPolicyType', ** {...})``."""
    if len(fields) == 1 and list(fields) == [each for each, _ in _kor.describe(name)["args"]]:
        made = new(name, *fields.values())
        if not str(made).startswith("Value("):  # prints as a plain text
            return made
    texts = ", ".join(f"'{key}': {_kor.text(value)}" for key, value in fields.items())
    return _kor.parse(f"Value('{name}', ** {{{texts}}})")


class Collection(collections.abc.MutableMapping):
    """The members of a collection by key, in its own order.

    It may change while it is iterated. A member of a collection of objects is made with
    ``create(key)``.
    """

    __slots__ = ("_owner", "_attribute")

    def __init__(self, owner, attribute):
        self._owner = owner
        self._attribute = attribute

    def _op(self, code, *args):
        return self._attribute.op(self._owner, code, *args)

    def __len__(self):
        return self._op(_COUNT)

    def __iter__(self):
        key = self._op(_FIRST)
        while key is not None:
            yield key
            key = self._op(_NEXT, key)

    def _has(self, key, value):
        # A key without a member reads as the default, so only another value tells at once.
        is_default = not value or (isinstance(value, Object) and _kor.is_value(value))
        return not is_default or any(_kor.equal(each, key) for each in self)

    def __contains__(self, key):
        try:
            return self._has(key, self._op(_GET, key))
        except TypeException:
            return False

    def __getitem__(self, key):
        value = self._op(_GET, key)
        if not self._has(key, value):
            raise KeyError(key)
        return value

    def __setitem__(self, key, value):
        self._op(_SET, key, value)

    def __delitem__(self, key):
        if key not in self:
            raise KeyError(key)
        self._op(_DEL, key)

    def create(self, key):
        """The member at the key, made if there is none."""
        return self._op(_SET, key, [])

    def __repr__(self):
        return f"<{self._attribute.__name__}: {len(self)} members>"


def _spelled(name):
    """A name that Python can write: "async" is "async_"."""
    return name + "_" if keyword.iskeyword(name) else name


def _signature(specs, self_too):
    kind = inspect.Parameter.POSITIONAL_OR_KEYWORD
    parameters = [inspect.Parameter("self", inspect.Parameter.POSITIONAL_ONLY)] if self_too else []
    for name, type_name in specs:
        parameters.append(inspect.Parameter(_spelled(name), kind, annotation=type_name))
    return inspect.Signature(parameters)


_classes = {}
_enums = {}


def _class_of(name):
    known = _classes.get(name)
    if known is not None:
        return known
    described = _kor.describe(name)
    base = _class_of(described["base"]) if described["base"] else Object
    members = {
        "__slots__": (),
        "__module__": "kor.ns." + name.rpartition("::")[0].replace("::", "."),
        "__qualname__": name.rpartition("::")[2],
        "__doc__": f"{name}({', '.join(each for each, _ in described['args'])})",
        "__signature__": _signature(described["args"], False),
        "_kor_type": described,
    }
    for attribute in described["attributes"]:
        if attribute["owner"] == name or not hasattr(base, attribute["name"]):
            members[attribute["name"]] = attribute["descriptor"]
    for nested in types():
        if nested.rpartition("::")[0] == name:
            members[nested.rpartition("::")[2]] = type(nested)
    if name == "Kor::Callable":
        members["__call__"] = _call
    made = _classes[name] = base.__class__(members["__qualname__"], (base,), members)
    return made


def _call(self, *args):
    """Calls the function."""
    return _kor.call(self, args)


def _enum_of(name):
    known = _enums.get(name)
    if known is None:
        names = _kor.describe(name)["enum_names"]
        known = _enums[name] = enum.IntEnum(
            name.rpartition("::")[2],
            {each: number for number, each in enumerate(names)},
            module="kor.ns." + name.rpartition("::")[0].replace("::", "."),
        )
        known.__reduce_ex__ = lambda self, protocol: (_member, (name, int(self)))
        _kor.enum_is(name, known)
    return known


def _member(name, number):
    return type(name)(number)


class _Namespace:
    """The registered types of a namespace as attributes; also a module that can be imported."""

    __path__ = ()

    def __init__(self, prefix):
        self._prefix = prefix

    def __getattr__(self, name):
        if name.startswith("__"):
            raise AttributeError(name)
        whole = self._prefix + name
        if whole in types():
            found = type(whole)
        elif _is_namespace(whole):
            found = _Namespace(whole + "::")
        else:
            raise AttributeError(f"no such type or namespace: {whole}")
        setattr(self, name, found)  # types stay, so it is looked up once
        return found

    def __dir__(self):
        rest = [each[len(self._prefix):] for each in types() if each.startswith(self._prefix)]
        return sorted({each.partition("::")[0] for each in rest})

    def __repr__(self):
        return f"<types of {self._prefix.removesuffix('::') or 'all namespaces'}>"


def _is_namespace(name):
    return any(each.startswith(name + "::") for each in types())


class _NamespaceImporter(importlib.abc.MetaPathFinder, importlib.abc.Loader):
    """Lets ``from kor.ns.PolicyMapTest import AclHelper`` work, and so classes be pickled."""

    def find_spec(self, fullname, path, target=None):
        if not fullname.startswith(ns.__name__ + ".") or not _is_namespace(self._prefix(fullname)):
            return None
        return importlib.machinery.ModuleSpec(fullname, self, is_package=True)

    def create_module(self, spec):
        return _Namespace(self._prefix(spec.name) + "::")

    def exec_module(self, module):
        pass

    @staticmethod
    def _prefix(fullname):
        return fullname.removeprefix(ns.__name__ + ".").replace(".", "::")


ns = _Namespace("")
ns.__name__ = __name__ + ".ns"
ns.__spec__ = importlib.machinery.ModuleSpec(ns.__name__, None, is_package=True)
# "import kor.ns" would otherwise find the folder of the stubs.
sys.modules[ns.__name__] = ns
sys.meta_path.insert(0, _NamespaceImporter())
_kor.begin(errors, _class_of, _enum_of, Collection, lambda args: _signature(args, True))
