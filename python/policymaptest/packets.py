# SPDX-License-Identifier: Apache-2.0
"""Packets: what the records do to them, and whether that is what is configured.

Packets and sets of packets are texts: "tcp 10.0.0.1:4000 > 192.0.2.80:80 syn", "udp any any eq 53".
Numbers of packets are exact.
"""

from __future__ import annotations

import dataclasses
import json
from collections.abc import Callable, Iterable, Mapping, Sequence
from typing import Any, Generic, TypeVar, overload

import kor

from .records import Actions, Table

SAME, DIFFERENT, UNDECIDED, NOT_PROGRAMMED = "the same", "different", "undecided", "not programmed"


@dataclasses.dataclass(frozen=True)
class PacketRule:
    """A rule that decides a packet, in the records or in the configuration."""

    class_name: str
    acl: str  # the list; empty for a rule of the class-map itself
    seq: int
    match: str  # as policy text: "permit tcp any any eq 80"

    @property
    def name(self) -> str:
        """"LIST NUMBER", or "NUMBER" for a rule of the class-map itself."""
        return f"{self.acl} {self.seq}".lstrip()

    def __str__(self) -> str:
        return f"{self.name} {self.match} of class {self.class_name}"


@dataclasses.dataclass(frozen=True)
class Treatment:
    """The class of a packet, and the values of its actions."""

    class_name: str  # empty: no class
    actions: Mapping[str, int]  # by name: {"action1": 7, "action2": 0, "action3": 0}

    def __str__(self) -> str:
        values = [f"{name} {value}" for name, value in self.actions.items() if value]
        return f"{self.class_name} ({', '.join(values) or 'no action'})" if self.class_name else "no class"


@dataclasses.dataclass(frozen=True)
class TraceLine:
    """A rule on the way of a packet, and what it does: "leaves the class", or the actions."""

    rule: PacketRule
    effect: str


@dataclasses.dataclass(frozen=True)
class Trace:
    """The way of one packet through the records of a policy, and what is configured."""

    subject: str  # "edge input ipv4"
    packet: str
    verdict: str  # "the same", "different" or "not programmed"
    reason: str  # of "not programmed"
    recorded: Treatment
    recorded_rules: tuple[TraceLine, ...]  # the last one decides
    configured: Treatment
    configured_rule: TraceLine | None
    around: str  # the packets that are treated the same for the same reason, as the match of a rule
    text: str = dataclasses.field(repr=False)  # as `policymap-lab trace` prints it

    def to_dict(self) -> dict[str, Any]:
        """The row of a table."""
        return {"subject": self.subject, "packet": self.packet, "verdict": self.verdict,
                "class": self.recorded.class_name, **self.recorded.actions,
                "configured class": self.configured.class_name,
                **{f"configured {name}": value for name, value in self.configured.actions.items()},
                "around": self.around}

    def __str__(self) -> str:
        return self.text


@dataclasses.dataclass(frozen=True)
class PacketDifference:
    """Packets that the same two rules decide differently.

    Of a proof, the one side are the records and the other the configuration; of a comparison, they
    are before and after.
    """

    packet: str  # the smallest
    around: str  # packets that are treated the same for the same reason, as the match of a rule
    packets: int  # that the two rules decide
    one: Treatment
    one_rule: PacketRule | None
    other: Treatment
    other_rule: PacketRule | None


@dataclasses.dataclass(frozen=True)
class PacketDifferences:
    """What two sides do differently to the packets of a policy and option."""

    subject: str  # "edge input ipv4"
    verdict: str  # "the same", "different", "undecided" or "not programmed"
    reason: str  # of "not programmed"
    differences: tuple[PacketDifference, ...]  # the first ones, by their packets
    packets: int  # of all differences
    at_least: bool  # there may be more: the budget was spent
    pairs: int  # of rules
    moved: Mapping[tuple[str, str], int]  # packets, by class of one side and of the other
    text: str = dataclasses.field(repr=False)  # as policymap-lab prints it

    def rows(self) -> list[dict[str, Any]]:
        """A row for each difference that is shown, or one."""
        found: Sequence[PacketDifference | None] = self.differences or [None]
        return [{"subject": self.subject, "verdict": self.verdict,
                 "packet": each.packet if each else "", "around": each.around if each else "",
                 "packets": each.packets if each else 0,
                 "one class": each.one.class_name if each else "",
                 "one rule": str(each.one_rule or "") if each else "",
                 "other class": each.other.class_name if each else "",
                 "other rule": str(each.other_rule or "") if each else ""} for each in found]

    def __str__(self) -> str:
        return self.text


@dataclasses.dataclass(frozen=True)
class TwoClasses:
    """A frame that MAC rules give to one class, and rules of another kind to another one."""

    frame: str  # as the MAC rules see it
    rule: PacketRule
    other_option: str  # "ipv4", "ipv6" or "mpls"
    packet: str  # the same as the other rules see it
    other_rule: PacketRule


@dataclasses.dataclass(frozen=True)
class Proof(PacketDifferences):
    """Whether the records of a policy treat every packet as configured."""

    findings: tuple[str, ...]  # what is irregular about the sub-rules, whether or not packets care
    two_classes: tuple[TwoClasses, ...]  # of MAC rules; no difference


@dataclasses.dataclass(frozen=True)
class PacketChange(PacketDifferences):
    """What is otherwise after an edit, or in another lab."""

    rules_added: int
    rules_removed: int
    rules_changed: int
    rules_reordered: bool  # none of these, but another order


@dataclasses.dataclass(frozen=True)
class UnusedRule:
    """A configured rule that could be left out."""

    rule: PacketRule
    reason: str  # "matches no packet", "is reached by no packet" or "makes no difference"
    because: tuple[PacketRule, ...]  # the rules that decide its packets, with it or without it


@dataclasses.dataclass(frozen=True)
class Unused:
    """The rules and classes of a policy and option that no packet needs."""

    subject: str  # "edge input ipv4"
    rules: tuple[UnusedRule, ...]
    classes: tuple[str, ...]  # that no packet reaches
    undecided: bool  # there may be more: the budget was spent
    text: str = dataclasses.field(repr=False)  # as `policymap-lab unused` prints it

    def rows(self) -> list[dict[str, Any]]:
        """A row for each rule."""
        return [{"subject": self.subject, "class": each.rule.class_name, "rule": each.rule.name,
                 "match": each.rule.match, "reason": each.reason,
                 "because": [f"{rule.class_name} {rule.name}" for rule in each.because]}
                for each in self.rules]

    def __str__(self) -> str:
        return self.text


T = TypeVar("T", Trace, Proof, PacketChange, Unused)
_DIFFERENCE_COLUMNS = ["subject", "verdict", "packet", "around", "packets", "one class", "one rule",
                       "other class", "other rule"]


class PacketResults(Table, Sequence[T], Generic[T]):
    """One result for each policy and option."""

    __slots__ = ("_results",)

    def __init__(self, answers: Iterable[T]) -> None:
        self._results = tuple(answers)

    @property
    def verdict(self) -> str:
        """"different" if one is, or else "undecided" if one is, or else "the same"."""
        verdicts = {getattr(each, "verdict", SAME) for each in self}
        return next((each for each in (DIFFERENT, UNDECIDED) if each in verdicts), SAME)

    @property
    def same(self) -> bool:
        """Whether the verdict is "the same". What is not programmed, for a reason, does not count."""
        return self.verdict == SAME

    def columns(self) -> list[str]:
        return list(self.rows()[0]) if self._results and self.rows() else _DIFFERENCE_COLUMNS

    def rows(self) -> list[dict[str, Any]]:
        """One row for each difference, unused rule or trace."""
        return [row for each in self._results
                for row in ([each.to_dict()] if isinstance(each, Trace) else each.rows())]

    @overload
    def __getitem__(self, place: int) -> T: ...
    @overload
    def __getitem__(self, place: slice) -> Sequence[T]: ...
    def __getitem__(self, place: int | slice) -> T | Sequence[T]:
        return self._results[place]

    def __len__(self) -> int:
        return len(self._results)

    def __repr__(self) -> str:
        return f"<{self}>"

    def __str__(self) -> str:
        return "\n".join(map(str, self._results)) or "no attached policy has rules"


class PacketState:
    """What a lab does to packets at the time when it was asked; it does not change with the lab."""

    __slots__ = ("_state",)

    def __init__(self, lab: Any, selection: Mapping[str, str | None]) -> None:
        self._state = kor.ns.PolicyMapPackets.State(lab, _settings(selection))

    def trace(self, packet: str, *, deny: str = "next-class", passed: bool = False) -> PacketResults[Trace]:
        """The way of a packet through each policy that it meets; see Lab.trace()."""
        return _results(self._state.trace(packet, _settings({"deny": deny, "passed": passed})), _trace_of)

    def prove(self, *, deny: str = "next-class", budget: int | None = None, first: int = 1,
              except_for: str | Iterable[str] = ()) -> PacketResults[Proof]:
        """Whether the records treat every packet as configured; see Lab.prove()."""
        return _results(self._state.prove(_search(deny, budget, first, except_for)), _proof_of)

    def unused(self, *, budget: int | None = None) -> PacketResults[Unused]:
        """The configured rules and classes that no packet needs; see Lab.unused()."""
        return _results(self._state.unused(_settings({"budget": budget})), _unused_of)

    def compare(self, after: PacketState, *, of: str = "records", deny: str = "next-class",
                budget: int | None = None, first: int = 1,
                except_for: str | Iterable[str] = ()) -> PacketResults[PacketChange]:
        """Which packets are treated otherwise in another state; see Lab.compare()."""
        settings = _search(deny, budget, first, except_for, of=of)
        return _results(self._state.compare(after._state, settings), _change_of)


def _settings(given: Mapping[str, Any]) -> str:
    return json.dumps({name: value for name, value in given.items() if value is not None})


def _search(deny: str, budget: int | None, first: int, except_for: str | Iterable[str],
            of: str | None = None) -> str:
    sets = [except_for] if isinstance(except_for, str) else list(except_for)
    return _settings({"deny": deny, "budget": budget, "first": first, "of": of,
                      "except": sets or None})


def _results(lines: Iterable[str], read: Callable[[dict[str, Any]], T]) -> PacketResults[T]:
    return PacketResults([read(json.loads(line)) for line in lines])


def _rule_of(data: Mapping[str, Any] | None) -> PacketRule | None:
    return None if data is None else _needed_rule(data)


def _needed_rule(data: Mapping[str, Any]) -> PacketRule:
    return PacketRule(data["class"], data["acl"], data["seq"], data["match"])


def _treatment_of(data: Mapping[str, Any]) -> Treatment:
    return Treatment(data["class"], Actions((name, value) for name, value in data.items() if name != "class"))


def _line_of(data: Mapping[str, Any]) -> TraceLine:
    return TraceLine(_needed_rule(data), data["effect"])


def _trace_of(data: dict[str, Any]) -> Trace:
    rule = data.get("configuredRule")
    return Trace(data["subject"], data["packet"], data["verdict"], data.get("reason", ""),
                 _treatment_of(data["recorded"]), tuple(map(_line_of, data["recordedRules"])),
                 _treatment_of(data["configured"]), rule and _line_of(rule), data["around"], data["text"])


def _common(data: dict[str, Any], one: str, other: str) -> dict[str, Any]:
    """What proofs and changes have in common."""
    return {"subject": data["subject"], "verdict": data["verdict"], "reason": data.get("reason", ""),
            "differences": tuple(
                PacketDifference(each["packet"], each["around"], int(each["packets"]),
                                 _treatment_of(each[one]), _rule_of(each.get(one + "Rule")),
                                 _treatment_of(each[other]), _rule_of(each.get(other + "Rule")))
                for each in data.get("differences", ())),
            "packets": int(data.get("packets", 0)), "at_least": data.get("atLeast", False),
            "pairs": data.get("pairs", 0),
            "moved": {(each[one], each[other]): int(each["packets"]) for each in data.get("moved", ())},
            "text": data["text"]}


def _proof_of(data: dict[str, Any]) -> Proof:
    return Proof(**_common(data, "recorded", "configured"), findings=tuple(data.get("findings", ())),
                 two_classes=tuple(TwoClasses(each["frame"], _needed_rule(each["rule"]), each["otherOption"],
                                              each["packet"], _needed_rule(each["otherRule"]))
                                   for each in data.get("twoClasses", ())))


def _change_of(data: dict[str, Any]) -> PacketChange:
    rules = data["rules"]
    return PacketChange(**_common(data, "before", "after"), rules_added=rules["added"],
                        rules_removed=rules["removed"], rules_changed=rules["changed"],
                        rules_reordered=rules["reordered"])


def _unused_of(data: dict[str, Any]) -> Unused:
    rules = tuple(UnusedRule(_needed_rule(each), each["reason"], tuple(map(_needed_rule, each["because"])))
                  for each in data["rules"])
    return Unused(data["subject"], rules, tuple(data["classes"]), data["undecided"], data["text"])
