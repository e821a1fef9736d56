# SPDX-License-Identifier: Apache-2.0
"""Measures kor, and the same work with bindings written by hand, with a mock and with plain Python.

    PYTHONPATH=build/release/python:build/release/bench/python \\
        /usr/bin/python3 bench/python/python_bench.py

Prints a table: each work with kor ("ours") and with each peer, in nanoseconds, the ratio, and
whether the goal is met. A goal is of the ratio, or of the time of ours.

    by hand      a class with pybind11 bindings written by hand (ByHand.cpp)
    mock         a MagicMock; its attributes are mocks, which it makes when they are first used
    mock, given  a MagicMock whose attributes have been given values, which Python then finds
                 without the mock
    plain        a class in Python: nearly the least that Python needs for the work

Samples of ours and of the peers alternate in one process, without garbage collection; a figure is
the median of its samples. Figures of different runs differ with what else the machine does.
"""

from __future__ import annotations

import argparse
import gc
import importlib
import itertools
import json
import statistics
import time
from collections.abc import Callable, Iterator, Mapping, Sequence
from dataclasses import asdict, dataclass, field
from typing import Any, NamedTuple
from unittest.mock import MagicMock

import kor
import policymaptest  # which loads the libraries

types: Any = kor.ns
by_hand: Any = importlib.import_module("by_hand")

OURS, HAND, MOCK, GIVEN_MOCK, PLAIN = "ours", "by hand", "mock", "mock, given", "plain"

# Subjects ----------------------------------------------------------------------------------------


class PlainRuleKey(NamedTuple):
    className: str
    aclName: str
    seqno: int
    matchOption: str


class PlainRecord:
    def __init__(self) -> None:
        self.commitCount = 0
        self.dirty = False
        self.ruleAction1: dict[PlainRuleKey, int] = {}
        self.intf: set[str] = set()


class PlainHelper:
    def __init__(self, updateActionSupported: bool, expandPortChannels: bool) -> None:
        self.updateActionSupported = updateActionSupported
        self.expandPortChannels = expandPortChannels
        self.commitError = ""
        self.addIntfError = ""
        self.asyncError = ""
        self.pseudoAsync = False
        self.testData: dict[tuple[str, str], PlainRecord] = {}

    def scheduleAsyncResult(self, error: str) -> None:
        self.asyncError = error

    def commitPolicy(self, policyData: str, matchOption: str) -> str:
        record = self.testData[policyData, matchOption]
        record.commitCount += 1
        record.dirty = False
        return self.commitError

    def addIntfToPolicy(self, policyData: str, intf: str, matchOption: str) -> str:
        self.testData[policyData, matchOption].intf.add(intf)
        return self.addIntfError


@dataclass
class Subject:
    """What the statements of a work refer to by these names."""

    helper: Any
    record: Any  # of the policy and option that follow
    policy: Any
    option: Any
    intf: Any
    rule: Any  # a key of record.ruleAction1
    Helper: Callable[..., Any]
    RuleKey: Callable[..., Any]
    find_type: Callable[[], Any]  # RuleKey, by its name

    def forget(self) -> None:
        """Drops what a mock keeps of every call."""
        for each in (self.helper, self.record):
            if isinstance(each, MagicMock):
                each.reset_mock()


def our_subject() -> Subject:
    option = types.PolicyMap.ClassMapMatchOption.ipv4
    key = types.PolicyMap.PolicyMapSmKey("edge", "input")
    helper = types.PolicyMapTest.AclHelper(True, False)
    RuleKey = types.PolicyMap.AclRuleKey
    return Subject(
        helper, helper.testData.create(types.PolicyMapTest.AclPolicyType(key, option)),
        types.PolicyMap.PolicyMapSmCommonData(key), option, types.Vorel.IntfId("Ethernet1"),
        RuleKey("web", "101", 10, option), types.PolicyMapTest.AclHelper, RuleKey,
        lambda: types.PolicyMap.AclRuleKey)


def subject_by_hand() -> Subject:
    option = by_hand.MatchOption.ipv4
    key = by_hand.PolicyKey("edge", "input")
    helper = by_hand.AclHelper(True, False)
    return Subject(
        helper, helper.newRecord(by_hand.RecordKey(key, option)), by_hand.PolicyData(key), option,
        by_hand.IntfId("Ethernet1"), by_hand.RuleKey("web", "101", 10, option), by_hand.AclHelper,
        by_hand.RuleKey, lambda: by_hand.RuleKey)


def mock_subject() -> Subject:
    helper, record = MagicMock(), MagicMock()
    helper.commitPolicy.return_value = ""
    helper.addIntfToPolicy.return_value = ""
    record.ruleAction1.__getitem__.return_value = 7
    return Subject(helper, record, "edge", "ipv4", "Ethernet1",
                   PlainRuleKey("web", "101", 10, "ipv4"),
                   lambda *args: MagicMock(), lambda *args: MagicMock(),
                   lambda: helper.PolicyMap.AclRuleKey)


def plain_subject() -> Subject:
    helper = PlainHelper(True, False)
    record = helper.testData["edge", "ipv4"] = PlainRecord()
    return Subject(helper, record, "edge", "ipv4", "Ethernet1",
                   PlainRuleKey("web", "101", 10, "ipv4"), PlainHelper, PlainRuleKey,
                   lambda: PlainRuleKey)


SUBJECTS: Mapping[str, Callable[[], Subject]] = {
    OURS: our_subject, HAND: subject_by_hand, MOCK: mock_subject, GIVEN_MOCK: mock_subject,
    PLAIN: plain_subject,
}

# A test with a lab -------------------------------------------------------------------------------

POLICY = """\
access-list 101 permit tcp any any eq 80
class-map match-any web
  match access-group 101
policy-map edge
  class web
    set action1 7
interface Ethernet1
  service-policy input edge
"""


def lab_test() -> None:
    """What a test of a user does, from the beginning to the end of its lab."""
    with policymaptest.Lab(update_action=True) as lab:
        lab.load(POLICY)
        lab.settle()
        rule = lab.record("edge").rule("101 10")
        if rule.actions["action1"] != 7:
            raise AssertionError(f"the record has {rule}")


# Work --------------------------------------------------------------------------------------------


@dataclass
class Work:
    """Statements of which each does the work once.

    `check`, an expression, is true of every subject but mocks after `calls` statements. What is in
    `given` comes first, but not for the mock whose attributes are mocks.
    """

    name: str
    statements: Sequence[str]
    check: str
    given: Sequence[str] = ()
    peers: Sequence[str] = (HAND, MOCK, PLAIN)
    goals: Mapping[str, float] = field(default_factory=dict)  # the largest ratio, by peer
    limit: float | None = None  # the most nanoseconds of ours
    times: int = 1  # a figure is the time of that many


GOALS = {HAND: 2.0, MOCK: 0.2}
READERS = (HAND, MOCK, GIVEN_MOCK, PLAIN)
WORKS = (
    Work("read a text", ["helper.commitError"], "helper.commitError == 'table full'",
         given=["helper.commitError = 'table full'"], peers=READERS, goals=GOALS),
    Work("read a bool", ["helper.pseudoAsync"], "helper.pseudoAsync is True",
         given=["helper.pseudoAsync = True"], peers=READERS, goals=GOALS),
    Work("read a number", ["record.commitCount"], "record.commitCount == 70_000",
         given=["record.commitCount = 70_000"], peers=READERS, goals=GOALS),
    Work("write a text", ["helper.commitError = 'table full'", "helper.commitError = 'no memory'"],
         "helper.commitError == 'no memory'", goals=GOALS),
    Work("write a bool", ["helper.pseudoAsync = True", "helper.pseudoAsync = False"],
         "helper.pseudoAsync is False", goals=GOALS),
    Work("write a number", ["record.commitCount = 70_000", "record.commitCount = 70_001"],
         "record.commitCount == 70_001", goals=GOALS),
    Work("call with a text",
         ["helper.scheduleAsyncResult('timeout')", "helper.scheduleAsyncResult('refused')"],
         "helper.asyncError == 'refused'", goals=GOALS),
    Work("call with 2 arguments", ["helper.commitPolicy(policy, option)"],
         "record.commitCount == calls", given=["record.commitCount = 0"], goals=GOALS),
    Work("call with 3 arguments", ["helper.addIntfToPolicy(policy, intf, option)"],
         "helper.addIntfToPolicy(policy, intf, option) == ''", goals=GOALS),
    Work("find a type", ["find_type()"], "find_type() is RuleKey"),
    Work("make an object", ["Helper(True, False)"],
         "Helper(True, False).updateActionSupported is True"),
    Work("make a value", ["RuleKey('web', '101', 10, option)"],
         "RuleKey('web', '101', 10, option).seqno == 10"),
    Work("get by key", ["record.ruleAction1[rule]"], "record.ruleAction1[rule] == 7",
         given=["record.ruleAction1[rule] = 7"]),
    Work("set by key", ["record.ruleAction1[rule] = 8", "record.ruleAction1[rule] = 9"],
         "record.ruleAction1[rule] == 9"),
    Work("100,000 calls", ["helper.commitPolicy(policy, option)"], "record.commitCount == calls",
         given=["record.commitCount = 0"], limit=1e9, times=100_000),
    Work("a test with a lab", ["lab_test()"], "lab_test() is None", peers=(), limit=1e6),
)

# Measuring ---------------------------------------------------------------------------------------

# A loop costs a few nanoseconds per round, so its body has many statements.
UNROLLED = 20


class Measured:
    """A work of one subject."""

    def __init__(self, work: Work, who: str) -> None:
        self.times = work.times
        self.subject = SUBJECTS[who]()
        body = list(itertools.islice(itertools.cycle(work.statements), UNROLLED))
        names = vars(self.subject)
        scope: dict[str, Any] = {
            **names, "lab_test": lab_test, "clock": time.perf_counter_ns,
            "repeat": itertools.repeat}
        if who != MOCK:
            for statement in work.given:
                exec(statement, scope)
        # Names of arguments are the fastest that Python has.
        exec("\n".join([
            f"def loop(rounds, {', '.join(f'{name}={name}' for name in scope if name[0] != '_')}):",
            "    begin = clock()",
            "    for _ in repeat(None, rounds):",
            *(f"        {statement}" for statement in body),
            "    return clock() - begin"]), scope)
        self._loop: Callable[[int], int] = scope["loop"]
        self.rounds = 1
        self.samples: list[float] = []
        self._loop(1)
        if who in (MOCK, GIVEN_MOCK):
            return
        if eval(work.check, {**scope, "calls": UNROLLED}) is not True:
            raise AssertionError(f"{work.name}, {who}: not so: {work.check}")

    def calibrate(self, seconds: float) -> None:
        """Lets a sample take about as long, but for a work of a number of times that number."""
        if self.times > 1:
            self.rounds = self.times // UNROLLED
            return
        while (spent := self._loop(self.rounds)) < seconds * 1e8:
            self.rounds *= 4
        self.rounds = max(1, round(self.rounds * seconds * 1e9 / spent))

    def sample(self) -> None:
        self.subject.forget()
        self.samples.append(
            self._loop(self.rounds) / (self.rounds * UNROLLED) * self.times)

    def figure(self) -> float:
        return statistics.median(self.samples)


@dataclass
class Row:
    """Times are in nanoseconds. `goal` is of the ratio, without a peer of the time of ours."""

    work: str
    ours: float
    peer: str | None
    peer_time: float | None
    ratio: float | None
    goal: float | None
    met: bool | None
    samples: int


def rows_of(work: Work, repetitions: int, seconds: float) -> Iterator[Row]:
    measured = {who: Measured(work, who) for who in (OURS, *work.peers)}
    gc.collect()
    gc.disable()
    try:
        if seconds > 0:
            for each in measured.values():
                each.calibrate(seconds)
        for _ in range(repetitions):
            for each in measured.values():
                each.sample()
    finally:
        gc.enable()
    ours = measured[OURS].figure()
    if work.limit is not None:
        yield Row(work.name, ours, None, None, None, work.limit, ours <= work.limit, repetitions)
    for peer in work.peers:
        figure = measured[peer].figure()
        goal = work.goals.get(peer)
        met = None if goal is None else ours <= goal * figure
        yield Row(work.name, ours, peer, figure, ours / figure, goal, met, repetitions)


HEAD = ("work", "ours ns", "peer", "peer ns", "ratio", "goal", "met")


def cells(row: Row) -> tuple[str, ...]:
    goal = ""
    if row.goal is not None:
        goal = f"{row.goal:,.0f} ns" if row.peer is None else f"{row.goal:g}"
    return (
        row.work, f"{row.ours:,.1f}", row.peer or "", "" if row.peer_time is None else
        f"{row.peer_time:,.1f}", "" if row.ratio is None else f"{row.ratio:.3f}", goal,
        "" if row.met is None else "yes" if row.met else "NO")


def line(texts: Sequence[str]) -> str:
    work, ours, peer, peer_time, ratio, goal, met = texts
    return (f"{work:<22} {ours:>14}  {peer:<12} {peer_time:>15} {ratio:>8} {goal:>16}  "
            f"{met}").rstrip()


def main() -> None:
    parser = argparse.ArgumentParser(description="Measures kor and its peers.")
    parser.add_argument("--quick", action="store_true",
                        help="does each work a few times: the figures mean nothing")
    parser.add_argument("--only", metavar="TEXT", default="",
                        help="measures the works with this text in their name")
    parser.add_argument("--json", metavar="FILE", help="also writes a JSON object per row")
    options = parser.parse_args()
    repetitions, seconds = (1, 0.0) if options.quick else (31, 0.004)

    rows: list[Row] = []
    print(line(HEAD), flush=True)
    for work in WORKS:
        if options.only not in work.name:
            continue
        long = work.times > 1
        for row in rows_of(work, min(5, repetitions) if long else repetitions, seconds):
            rows.append(row)
            print(line(cells(row)), flush=True)
    if options.json:
        with open(options.json, "w", encoding="utf-8") as file:
            for row in rows:
                file.write(json.dumps(asdict(row)) + "\n")


if __name__ == "__main__":
    main()
