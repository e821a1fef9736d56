# SPDX-License-Identifier: Apache-2.0
"""Python objects that come before the helper of a lab."""

from __future__ import annotations

import inspect
from collections.abc import Callable
from typing import Any

import kor

from .runs import kit


def _argument_names(operation: str) -> list[str]:
    signature = inspect.signature(getattr(kor.ns.PolicyMap.PolicyMapAclHelper, operation))
    return [name for name in signature.parameters if name != "self"]


_Method = Callable[[list[object], Callable[[], object]], object]


def calls_of(current: Callable[[], object],
             helper: object) -> Callable[[str, list[object], Callable[[], object]], object]:
    """A function that calls those methods of `helper` that have names of operations.

    They are looked up in `current()`, so that nothing here keeps the helper. Raises TypeError for a
    parameter that the operation does not have.
    """
    methods = {name: _method_of(current, name, getattr(helper, name))
               for name in kit().operations() if hasattr(helper, name)}

    def around(operation: str, args: list[object], proceed: Callable[[], object]) -> object:
        method = methods.get(operation)
        return None if method is None else method(args, proceed)

    return around


def _method_of(current: Callable[[], object], operation: str, method: Any) -> _Method:
    names = _argument_names(operation)
    parameters = inspect.signature(method).parameters.values()
    takes_all = any(each.kind is inspect.Parameter.VAR_KEYWORD for each in parameters)
    taken = {each.name for each in parameters}
    for each in parameters:
        if each.default is each.empty and each.kind in (
                each.POSITIONAL_ONLY, each.POSITIONAL_OR_KEYWORD, each.KEYWORD_ONLY) \
                and each.name not in (*names, "proceed"):
            raise TypeError(f"{operation} has no argument {each.name!r}; there are: "
                            f"{', '.join(names)}, proceed")

    def call(args: list[object], proceed: Callable[[], object]) -> object:
        given = dict(zip(names, args)) | {"proceed": proceed}
        return getattr(current(), operation)(
            **{name: value for name, value in given.items() if takes_all or name in taken})

    return call
