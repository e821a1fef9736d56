# SPDX-License-Identifier: Apache-2.0
"""The journal of a lab: each call of the helper, result, and step of the test, in order."""

from __future__ import annotations

import dataclasses
import json
from collections.abc import Iterable, Iterator, Mapping, Sequence
from typing import Any, overload

from .records import Actions, Table


@dataclasses.dataclass(frozen=True)
class JournalEntry:
    """What happened once. A text that the entry does not have is empty."""

    number: int  # from 1
    time: float  # seconds of the lab's clock
    kind: str  # "call", "result", "status" or "test"
    operation: str  # "addRule"; of what the test did "load"
    policy: str = ""
    direction: str = ""
    option: str = ""
    interface: str = ""
    class_name: str = ""
    acl: str = ""
    seq: int | None = None
    sub_rule: str = ""
    match: str = ""
    actions: Mapping[str, int] = Actions()
    error: str = ""  # "" for success
    threw: bool = False
    count: int = 0
    cause: str = ""  # why the core makes the call
    text: str = ""

    @property
    def failed(self) -> bool:
        return bool(self.error) or self.threw

    @classmethod
    def from_dict(cls, data: Mapping[str, Any]) -> JournalEntry:
        names = {"intf": "interface", "class": "class_name", "subRule": "sub_rule"}
        values: dict[str, Any] = {}
        actions: dict[str, int] = {}
        for name, value in data.items():
            if name.startswith("action"):
                actions[name] = value
            else:
                values[names.get(name, name)] = value
        return cls(**values, actions=Actions(actions))

    def __str__(self) -> str:
        policy = f"{self.policy}/{self.direction}" if self.policy else ""
        rule = f"{self.acl}:{self.seq}" if self.seq is not None else ""
        actions = " ".join(f"{name}={value}" for name, value in self.actions.items() if value)
        parts = [str(self.number), f"t={self.time:g}", self.operation, policy, self.option,
                 self.class_name, rule, self.interface, self.sub_rule, self.match, actions,
                 self.text if self.kind != "call" else ""]
        line = " ".join(filter(None, parts))
        return line + (f" -> {self.error}" if self.error else "")


_COLUMNS = ("number", "time", "operation", "policy", "option", "class", "rule", "interface", "error",
            "cause")


class Journal(Table, Sequence[JournalEntry]):
    """Entries in order."""

    __slots__ = ("_entries",)

    def __init__(self, entries: Iterable[JournalEntry] = ()) -> None:
        self._entries = tuple(entries)

    @classmethod
    def from_json_lines(cls, lines: Iterable[str]) -> Journal:
        parsed = (json.loads(line) for line in lines)
        return cls(JournalEntry.from_dict(each) for each in parsed if "number" in each)

    def calls(self, operation: str | None = None) -> Journal:
        """The calls of the helper; with an operation only those."""
        return Journal(each for each in self
                       if each.kind == "call" and operation in (None, each.operation))

    def of_policy(self, policy: str) -> Journal:
        return Journal(each for each in self if each.policy == policy)

    def of_class(self, class_name: str) -> Journal:
        return Journal(each for each in self if each.class_name == class_name)

    def failed(self) -> Journal:
        """The calls and results with an error."""
        return Journal(each for each in self if each.failed)

    def since(self, number: int) -> Journal:
        """From this entry number on."""
        return Journal(each for each in self if each.number >= number)

    def columns(self) -> list[str]:
        return list(_COLUMNS)

    def rows(self) -> list[dict[str, Any]]:
        """One row per entry."""
        return [dict(zip(_COLUMNS, (
            each.number, each.time, each.operation, each.policy, each.option, each.class_name,
            f"{each.acl} {each.seq}" if each.seq is not None else "", each.interface, each.error,
            each.cause), strict=True)) for each in self]

    @overload
    def __getitem__(self, place: int) -> JournalEntry: ...
    @overload
    def __getitem__(self, place: slice) -> Journal: ...
    def __getitem__(self, place: int | slice) -> JournalEntry | Journal:
        return Journal(self._entries[place]) if isinstance(place, slice) else self._entries[place]

    def __len__(self) -> int:
        return len(self._entries)

    def __iter__(self) -> Iterator[JournalEntry]:
        return iter(self._entries)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Journal):
            return NotImplemented
        return self._entries == other._entries

    __hash__ = None  # type: ignore[assignment]

    def __repr__(self) -> str:
        return f"<Journal: {len(self)} entries>"

    def __str__(self) -> str:
        return "\n".join(map(str, self)) or "no entries"
