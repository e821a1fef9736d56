# SPDX-License-Identifier: Apache-2.0
"""What the typed part of the package uses of the extension module."""

from typing import Any, Generic, TypedDict, TypeVar, overload
from typing_extensions import Self

_Read_co = TypeVar("_Read_co", covariant=True)
_Written_contra = TypeVar("_Written_contra", contravariant=True)

class _AttributeRecord(TypedDict):
    name: str
    id: int
    prose: str
    owner: str
    value_type: str
    key_type: str
    is_function: bool
    is_owned: bool
    is_writable: bool
    args: list[tuple[str, str]]

class _TypeRecord(TypedDict):
    name: str
    base: str
    is_value: bool
    can_construct: bool
    args: list[tuple[str, str]]
    enum_names: list[str]
    attributes: list[_AttributeRecord]

class Handle:
    def __eq__(self, other: object) -> bool: ...
    def __hash__(self) -> int: ...
    # Of values with an order; others raise TypeError.
    def __lt__(self, other: Self) -> bool: ...
    def __le__(self, other: Self) -> bool: ...
    def __gt__(self, other: Self) -> bool: ...
    def __ge__(self, other: Self) -> bool: ...

class Attribute(Generic[_Read_co, _Written_contra]):
    """An attribute that accepts more types than it returns."""

    @property
    def __name__(self) -> str: ...
    @overload
    def __get__(self, object: None, owner: type) -> Self: ...
    @overload
    def __get__(self, object: Handle, owner: type) -> _Read_co: ...
    def __set__(self, object: Handle, value: _Written_contra) -> None: ...
    def op(self, handle: Handle, code: int, index: object = ..., value: object = ..., /) -> Any: ...

class Function:
    @property
    def __name__(self) -> str: ...

def load(path: str) -> None: ...
def types() -> list[str]: ...
def describe(name: str) -> _TypeRecord: ...
def parse(text: str) -> Any: ...
