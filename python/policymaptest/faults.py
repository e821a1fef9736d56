# SPDX-License-Identifier: Apache-2.0
"""Fault plans as values: which calls of the helper fail, when, and how.

    lab.plan(Fault("addRule", class_name="web", nth=3, once=True))
    lab.plan("addRule", nth=3)                    # the same in short
    lab.plan("addRule nth=3; capacity rules=9")   # or as text
"""

from __future__ import annotations

import dataclasses
import datetime
import json
import math
import numbers
import re
from collections.abc import Iterable, Sequence
from types import TracebackType
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    from .runs import Recording

Seconds = float | datetime.timedelta

_PLAIN = re.compile(r"[^\s\"\\;#]+")


def seconds_of(time: Seconds) -> float:
    """Raises TypeError for anything but seconds and timedeltas."""
    if isinstance(time, datetime.timedelta):
        return time.total_seconds()
    if isinstance(time, bool) or not isinstance(time, numbers.Real):
        raise TypeError(f"expected seconds or a datetime.timedelta, found {time!r}")
    if not math.isfinite(time):
        raise ValueError(f"expected a finite time, found {time!r}")
    return float(time)


def _words(value: object) -> str:
    """The fields of a dataclass as words of a plan, without those that are None, False or empty."""
    words = []
    for field in dataclasses.fields(value):
        name = field.metadata.get("word", field.name)
        content = getattr(value, field.name)
        if content is None or content is False or content == "":
            continue
        if content is True:
            words.append(name)
        elif name:
            words.append(f"{name}={_quoted(content)}")
        else:
            words.append(content)
    return " ".join(words)


def _quoted(content: object) -> str:
    text = format(seconds_of(content), "g") if isinstance(content, datetime.timedelta) \
        else str(content)
    if _PLAIN.fullmatch(text):
        return text
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def _word(word: str, default: Any = None) -> Any:
    return dataclasses.field(default=default, metadata={"word": word})


@dataclasses.dataclass(frozen=True)
class Fault:
    """Calls of the helper that fail. str() is its text in a plan, which the lab checks."""

    operations: str | Sequence[str] = dataclasses.field(default="any", metadata={"word": ""})
    _: dataclasses.KW_ONLY
    # Only calls with these arguments.
    policy: str = ""
    direction: str = ""
    option: str = ""
    class_name: str = _word("class", "")
    rule: str = ""  # "web:10"; of a rule of the class-map itself "10"
    interface: str = ""
    # Which of them, counted from 1; at most one of the first five. Otherwise all.
    nth: int | None = None
    first: int | None = None
    from_: int | None = _word("from")
    every: int | None = None
    probability: float | None = None
    seed: int | None = None
    once: bool = False
    # "before", "after" or "throws"; of a call with an asynchronous result "hold", "drop" or
    # "duplicate".
    effect: str = _word("", "")
    delay: Seconds | None = None  # of an asynchronous result
    text: str = ""  # what the operation returns or throws
    optional: bool = False  # that it is never met is no finding

    def __post_init__(self) -> None:
        if not isinstance(self.operations, str):
            object.__setattr__(self, "operations", ",".join(self.operations))

    def __str__(self) -> str:
        return _words(self)


@dataclasses.dataclass(frozen=True, kw_only=True)
class Capacity:
    """What the simulated hardware has room for; None: no limit."""

    rules: int | None = None  # each sub-rule counts
    rules_per_policy: int | None = _word("rules-per-policy")
    range_checkers: int | None = _word("range-checkers")
    interfaces_per_policy: int | None = _word("interfaces-per-policy")
    policies: int | None = None

    def __str__(self) -> str:
        return f"capacity {_words(self)}"


def plan_text(parts: Sequence[str | Fault | Capacity], words: dict[str, Any]) -> str:
    """One plan of several; with words, one fault of these operations."""
    if words:
        if len(parts) != 1 or not isinstance(parts[0], str):
            raise TypeError("words belong to the operations of one fault")
        return str(Fault(parts[0], **words))
    return "\n".join(map(str, parts))


@dataclasses.dataclass(frozen=True)
class MetFault:
    """A call that a planned fault has hit."""

    number: int  # counts the faults of the lab from 1
    time: float
    call: str  # "addRule(edge/input ipv4 web web:30)"
    text: str  # what it returned or threw; empty for a success


@dataclasses.dataclass(frozen=True)
class PlannedFault:
    """A fault of a plan, and what became of it."""

    fault: str  # as in the plan
    selected: int  # the number of calls that it selected, whether or not they failed
    met: tuple[MetFault, ...]


def faults_of(lines: Iterable[str]) -> tuple[PlannedFault, ...]:
    return tuple(
        PlannedFault(each["fault"], each["selected"],
                     tuple(MetFault(**met) for met in each["met"]))
        for each in map(json.loads, lines))


class FaultScope:
    """How long a fault plan lasts: until the end of the block, end(), or the end of the lab.

    A fault that was never met by then is a finding of the lab, unless it is optional.
    """

    def __init__(self, scope: Any, plan: str, recording: Recording) -> None:
        self._scope = scope
        self._plan = plan
        self._recording = recording
        recording.scopes.append(scope)

    @property
    def faults(self) -> tuple[PlannedFault, ...]:
        """In the order of the plan; also after the end."""
        return faults_of(self._scope.faults())

    @property
    def met(self) -> tuple[MetFault, ...]:
        """The calls that were hit, by the faults in the order of the plan."""
        return tuple(met for each in self.faults for met in each.met)

    def end(self) -> None:
        self._recording.end(self._scope, self._plan)

    def __enter__(self) -> FaultScope:
        return self

    def __exit__(self, error_type: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.end()
