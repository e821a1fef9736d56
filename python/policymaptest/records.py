# SPDX-License-Identifier: Apache-2.0
"""Records as plain values: what would have been programmed."""

from __future__ import annotations

import dataclasses
import html
import json
import re
from collections.abc import Iterable, Iterator, Mapping, Sequence
from typing import Any, NoReturn, overload

import kor

_ACTION = re.compile(r"action\d+")


class Table:
    """What can be shown as a table: text, HTML in a notebook, rich in a terminal, a pandas frame."""

    __slots__ = ()

    def rows(self) -> list[dict[str, Any]]:
        """One dictionary per row, all with the same keys, in the order of the columns."""
        raise NotImplementedError

    def columns(self) -> list[str]:
        """The keys of each row."""
        raise NotImplementedError

    def to_frame(self) -> Any:
        """A pandas.DataFrame of the rows. Raises ImportError without pandas."""
        import pandas  # type: ignore[import]

        return pandas.DataFrame(self.rows(), columns=self.columns())

    def _repr_html_(self) -> str:
        head = "".join(f"<th>{html.escape(name)}</th>" for name in self.columns())
        body = "".join(
            "<tr>" + "".join(f"<td>{html.escape(_cell(each))}</td>" for each in row.values()) + "</tr>"
            for row in self.rows())
        return f"<table><thead><tr>{head}</tr></thead><tbody>{body}</tbody></table>"

    def __rich__(self) -> Any:
        from rich.table import Table as RichTable
        from rich.text import Text

        table = RichTable()
        for name in self.columns():
            table.add_column(name)
        for row in self.rows():
            table.add_row(*(Text(_cell(each)) for each in row.values()))  # a str would be markup
        return table


def _cell(value: object) -> str:
    if isinstance(value, bool):
        return "yes" if value else "no"
    if isinstance(value, (list, tuple)):
        return ", ".join(map(str, value))
    return str(value)


class Actions(dict[str, int]):
    """The values of actions by name, which do not change: {"action1": 7, "action2": 0}."""

    __slots__ = ()

    def _refuse(self, *args: object, **named: object) -> NoReturn:
        raise TypeError("the actions of a record do not change")

    __setitem__ = __delitem__ = __ior__ = _refuse  # type: ignore[assignment]
    clear = pop = popitem = setdefault = update = _refuse  # type: ignore[assignment]

    def __hash__(self) -> int:  # type: ignore[override]
        return hash(frozenset(self.items()))

    def __reduce__(self) -> tuple[type[Actions], tuple[dict[str, int]]]:
        return Actions, (dict(self),)


@dataclasses.dataclass(frozen=True)
class Rule:
    """A recorded rule."""

    class_name: str
    acl: str  # the list; empty for a rule of the class-map itself
    seq: int
    match: str  # as policy text: "permit tcp any any eq 80"
    actions: Mapping[str, int]  # by name: {"action1": 7, "action2": 0, "action3": 0}
    sub_rules: tuple[str, ...]  # ordered by their ports

    @property
    def name(self) -> str:
        """"LIST NUMBER", or "NUMBER" for a rule of the class-map itself."""
        return f"{self.acl} {self.seq}".lstrip()

    def to_dict(self) -> dict[str, Any]:
        """As `policymap-lab run --json` prints it."""
        return {"class": self.class_name, "acl": self.acl, "seq": self.seq, "match": self.match,
                **self.actions, "subRules": list(self.sub_rules)}

    @classmethod
    def from_dict(cls, data: Mapping[str, Any]) -> Rule:
        return cls(data["class"], data["acl"], data["seq"], data["match"],
                   Actions((name, value) for name, value in data.items()
                           if _ACTION.fullmatch(name)),
                   tuple(data["subRules"]))

    def __str__(self) -> str:
        actions = "".join(f", {name} {value}" for name, value in self.actions.items() if value)
        return f"{self.class_name} {self.name}: {self.match}{actions}"


# For the names of columns.
_NO_RULE = Rule("", "", 0, "", Actions(dict.fromkeys(("action1", "action2", "action3"), 0)), ())


@dataclasses.dataclass(frozen=True)
class Record(Table):
    """What is recorded of one policy for one match option."""

    policy: str
    direction: str  # "input" or "output"
    option: str  # "ipv4", "ipv6", "mac" or "mpls"
    created: bool
    dirty: bool
    create_count: int
    commit_count: int
    begin_update_action_count: int
    end_update_action_count: int
    interfaces: tuple[str, ...]  # ascending
    rule_count: int
    sub_rule_count: int
    rules: tuple[Rule, ...]  # in the order in which they were programmed

    @property
    def name(self) -> str:
        """"edge/input ipv4"."""
        return f"{self.policy}/{self.direction} {self.option}"

    def rule(self, name: str) -> Rule:
        """The rule named "LIST NUMBER", "NUMBER", or "CLASS LIST NUMBER".

        Raises kor.LookupException if there is none, or more than one.
        """
        found = [each for each in self.rules if name in (each.name, f"{each.class_name} {each.name}")]
        if len(found) == 1:
            return found[0]
        names = ", ".join(f"{each.class_name} {each.name}" for each in found or self.rules)
        what = "several rules" if found else "no rule"
        raise kor.LookupException(f"{self.name}: {what} '{name}'; there are: {names or 'none'}")

    def to_dict(self) -> dict[str, Any]:
        """As `policymap-lab run --json` prints it, with the rules."""
        data: dict[str, Any] = {}
        for field in dataclasses.fields(self):
            value = getattr(self, field.name)
            data[_json_name(field.name)] = list(value) if isinstance(value, tuple) else value
        data["rules"] = [each.to_dict() for each in self.rules]
        return data

    @classmethod
    def from_dict(cls, data: Mapping[str, Any]) -> Record:
        values = {field.name: data[_json_name(field.name)] for field in dataclasses.fields(cls)}
        values["interfaces"] = tuple(values["interfaces"])
        values["rules"] = tuple(map(Rule.from_dict, values["rules"]))
        return cls(**values)

    def columns(self) -> list[str]:
        return list(_NO_RULE.to_dict())

    def rows(self) -> list[dict[str, Any]]:
        """One row per rule."""
        return [each.to_dict() for each in self.rules]

    def __str__(self) -> str:
        state = "created" if self.created else "not created"
        at = f" at {', '.join(self.interfaces)}" if self.interfaces else ""
        return "\n".join([f"{self.name}: {state}{at}", *(f"  {each}" for each in self.rules)])


def _json_name(name: str) -> str:
    head, *rest = name.split("_")
    return head + "".join(map(str.capitalize, rest))


class Snapshot(Table, Sequence[Record]):
    """All records, ordered by policy, direction and option. Compared by content."""

    __slots__ = ("_records",)

    def __init__(self, records: Iterable[Record] = ()) -> None:
        self._records = tuple(records)

    @classmethod
    def from_json(cls, text: str) -> Snapshot:
        """What to_json() wrote. Raises ValueError for anything else."""
        data = json.loads(text)
        try:
            if isinstance(data, list):
                return cls(map(Record.from_dict, data))
            raise ValueError("expected a list of records")
        except (LookupError, TypeError, AttributeError) as error:
            raise ValueError(f"expected records: {error!r}") from None

    def to_dict(self) -> list[dict[str, Any]]:
        """One dictionary per record."""
        return [each.to_dict() for each in self]

    def to_json(self) -> str:
        """Stable text, a line per value, for a file under version control."""
        return json.dumps(self.to_dict(), indent=1, ensure_ascii=False) + "\n"

    def record(self, policy: str, direction: str = "input", option: str | None = None) -> Record:
        """The record of a policy in one direction.

        Without an option: the only one that is created, or else the only one. Raises kor.LookupException if
        there is none, or more than one.
        """
        found = [each for each in self if (each.policy, each.direction) == (policy, direction)
                 and option in (None, each.option)]
        found = [each for each in found if each.created] or found
        if len(found) == 1:
            return found[0]
        names = ", ".join(each.name for each in found or self)
        what = "several records" if found else "no record"
        wanted = f"{policy}/{direction}" + (f" {option}" if option else "")
        raise kor.LookupException(f"{what} of {wanted}; there are: {names or 'none'}")

    def columns(self) -> list[str]:
        return ["policy", "direction", "option", *_NO_RULE.to_dict()]

    def rows(self) -> list[dict[str, Any]]:
        """One row per rule."""
        return [{"policy": each.policy, "direction": each.direction, "option": each.option,
                 **rule.to_dict()} for each in self for rule in each.rules]

    @overload
    def __getitem__(self, place: int) -> Record: ...
    @overload
    def __getitem__(self, place: slice) -> Sequence[Record]: ...
    def __getitem__(self, place: int | slice) -> Record | Sequence[Record]:
        return self._records[place]

    def __len__(self) -> int:
        return len(self._records)

    def __iter__(self) -> Iterator[Record]:
        return iter(self._records)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Snapshot):
            return NotImplemented
        return self._records == other._records

    def __hash__(self) -> int:
        return hash(self._records)

    def __repr__(self) -> str:
        return f"<Snapshot: {len(self)} records>"

    def __str__(self) -> str:
        return "\n".join(map(str, self)) or "no records"


class Difference(tuple[str, ...]):
    """What changed between two snapshots: a line per policy, rule and field."""

    __slots__ = ()

    def __str__(self) -> str:
        return "\n".join(self) or "no difference"


def difference(before: Snapshot | Record, after: Snapshot | Record) -> Difference:
    """The changes by policy, direction and option, each as "edge/input ipv4: rule web 10: ...".

    Of one record: fields, interfaces, rules that were removed, the other rules in their new order,
    the order of the rules.
    """
    old = {each.name: each for each in _records_of(before)}
    new = {each.name: each for each in _records_of(after)}
    lines: list[str] = []
    for name in sorted(old.keys() | new.keys()):
        if name not in old:
            lines.append(f"{name}: new record, {len(new[name].rules)} rules")
        elif name not in new:
            lines.append(f"{name}: no record any more")
        else:
            lines += (f"{name}: {each}" for each in _changes(old[name], new[name]))
    return Difference(lines)


def _records_of(records: Snapshot | Record) -> Iterable[Record]:
    return [records] if isinstance(records, Record) else records


def _changes(old: Record, new: Record) -> Iterator[str]:
    for field in dataclasses.fields(Record):
        before, after = getattr(old, field.name), getattr(new, field.name)
        if field.name in ("rules", "interfaces") or before == after:
            continue
        yield f"{_json_name(field.name)} {_cell(before)} -> {_cell(after)}"
    yield from (f"interface {each} added" for each in new.interfaces if each not in old.interfaces)
    yield from (f"interface {each} removed" for each in old.interfaces if each not in new.interfaces)
    yield from _rule_changes(old, new)


def _rule_changes(old: Record, new: Record) -> Iterator[str]:
    before = {(each.class_name, each.acl, each.seq): each for each in old.rules}
    after = {(each.class_name, each.acl, each.seq): each for each in new.rules}
    for key, rule in before.items():
        if key not in after:
            yield f"rule {_shown(rule)} removed: {rule.match}"
    for key, rule in after.items():
        if key not in before:
            yield f"rule {_shown(rule)} added: {rule.match}"
            continue
        was, now = before[key].to_dict(), rule.to_dict()
        for name in now:
            if was.get(name) != now[name]:
                yield f"rule {_shown(rule)}: {name} {_cell(was.get(name))} -> {_cell(now[name])}"
    kept = [key for key in before if key in after]
    if kept != [key for key in after if key in before]:
        yield "rules reordered"


def _shown(rule: Rule) -> str:
    return rule.name if rule.class_name == rule.acl else f"{rule.class_name} {rule.name}"
