# SPDX-License-Identifier: Apache-2.0
"""Lab: everything that a test of policy-maps needs, in one object."""

from __future__ import annotations

import contextlib
import dataclasses
import json
import os
import pathlib
import weakref
from collections.abc import Iterable, Iterator, Mapping, Sequence
from types import TracebackType
from typing import Any, Protocol, overload

import kor

from .faults import Capacity, Fault, FaultScope, PlannedFault, Seconds
from .faults import faults_of, plan_text, seconds_of
from .journal import Journal
from .options import options_json
from .own_helper import calls_of
from .packets import PacketChange, PacketResults, PacketState, Proof, Trace, Unused
from .records import Record, Snapshot
from .runs import Recording, Run, kit, run_text

_LONGEST_STEP = 1e6  # seconds that one step of a run may advance


def _rules_text(rules: str | os.PathLike[str]) -> str:
    """The text of a filter set; a str without a rule is the path of its file."""
    if not isinstance(rules, (str, os.PathLike)):
        raise TypeError(f"rules: expected a path or a text, found {rules!r}")
    if isinstance(rules, os.PathLike) or not ("\n" in rules or rules.startswith("@")):
        return pathlib.Path(rules).read_text()
    return rules


def _content(path: str | os.PathLike[str]) -> str:
    """Of a file, as far as it is text; nothing if it cannot be read."""
    try:
        return pathlib.Path(path).read_text(errors="replace")
    except OSError:
        return ""


@dataclasses.dataclass(frozen=True)
class HeldResult:
    """An asynchronous result that a fault holds back."""

    number: int
    since: float  # seconds, when the operation was called
    call: str
    error: str


class Explanations(Sequence[str]):
    """Why each attached policy is, or is not, programmed: a line per policy and option."""

    def __init__(self, lines: Iterable[str]) -> None:
        self._lines = tuple(lines)

    @overload
    def __getitem__(self, place: int) -> str: ...
    @overload
    def __getitem__(self, place: slice) -> Sequence[str]: ...
    def __getitem__(self, place: int | slice) -> str | Sequence[str]:
        return self._lines[place]

    def __len__(self) -> int:
        return len(self._lines)

    def __eq__(self, other: object) -> bool:
        return list(self) == list(other) if isinstance(other, (list, tuple, Explanations)) else False

    __hash__ = None  # type: ignore[assignment]

    def __repr__(self) -> str:
        return f"Explanations({list(self._lines)!r})"

    def __str__(self) -> str:
        return "\n".join(self._lines) or "nothing is attached"


class LabWatch(Protocol):
    """Is told of all labs of the process."""

    def made(self, lab: Lab) -> None: ...

    def closing(self, lab: Lab) -> None:
        """The lab is about to end; its plans have ended."""


_watches: list[LabWatch] = []


@contextlib.contextmanager
def watch_labs(watch: LabWatch) -> Iterator[None]:
    """Within it, the watch is told of all labs that are made or closed."""
    _watches.append(watch)
    try:
        yield
    finally:
        _watches.remove(watch)


class Lab:
    """Configuration, helper, machines and an event loop with virtual time.

    Options: `update_action`, `expand_port_channels`,
    `sub_rules_for_ports`, `reprogram_on_intf_change`, `deny_rules`, `ttl`, `only_ttl_eq`,
    `ack_or_rst`, `established` are what the hardware can do; `asynchronous`, `pseudo_async`,
    `async_delay` how results arrive, or `mode`, one of "synchronous", "asynchronous" and
    "pseudo-asynchronous"; `faults` errors of the helper by attribute; `plan` a fault plan;
    `actions` what lines of classes become; `layer2`, `layer3`, `management`, `ip_lists`,
    `ip6_lists`, `mac_lists`, `access_groups` what is served; `leftovers`, `idle_commits`,
    `calls_after_failures`, `repeated_creations`, `missing_commits` which irregular calls of the
    core are findings.

    Each lab has its own time and objects. Bad input raises kor.RangeException, a ValueError, which
    names line and column; the configuration is then unchanged.
    """

    def __init__(
        self, *, update_action: bool = False, expand_port_channels: bool = False,
        sub_rules_for_ports: bool = False, reprogram_on_intf_change: bool = False,
        deny_rules: bool = True, ttl: bool = True, only_ttl_eq: bool = False,
        ack_or_rst: bool = True, established: bool = True, asynchronous: bool | None = None,
        pseudo_async: bool | None = None, async_delay: Seconds | None = None,
        mode: str | None = None, faults: Mapping[str, str] | None = None,
        plan: str | Fault | Capacity | None = None, actions: str | None = None,
        layer2: bool = True, layer3: bool = True, management: bool = True, ip_lists: bool = True,
        ip6_lists: bool = True, mac_lists: bool = True, access_groups: bool = True,
        leftovers: bool = True, idle_commits: bool = True, calls_after_failures: bool = True,
        repeated_creations: bool = True, missing_commits: bool = True,
    ) -> None:
        given = {name: value for name, value in locals().items() if name != "self"}
        self._begin(kit().lab(options_json(given)), options_json(given))
        for watch in _watches:
            watch.made(self)

    def _begin(self, handle: Any, options: str) -> None:
        self._lab: Any = handle
        self._options = options
        self._before: object = None
        self._recording = Recording()
        self._closed = False
        self._findings: tuple[str, ...] = ()  # of a lab that has ended

    @classmethod
    def _of(cls, handle: Any) -> Lab:
        """The lab of a scenario."""
        lab = cls.__new__(cls)
        lab._begin(handle, "{}")
        return lab

    # Configuration

    def load(self, policy_text: str) -> None:
        """Applies policy text as an edit of the current configuration, and settles."""
        with self._recording.step("load", name="policy text", text=policy_text):
            self._lab.load(policy_text)

    def load_file(self, path: str | os.PathLike[str], tolerant: bool = False) -> None:
        """The same with a file. `tolerant` skips lines that are unknown."""
        reading = "lenient" if tolerant else "strict"
        with self._recording.step("load", name=os.fspath(path), reading=reading,
                                  text=_content(path)):
            self._lab.loadFile(os.fspath(path), reading)

    def load_rules(self, rules: str | os.PathLike[str], classes: int = 1,
                   interfaces: int = 1) -> None:
        """Replaces the configuration by a filter set, a path or its text with a rule per line.

        It is policy-map "rules" with classes "rules-1", "rules-2", ... for nearly equal shares of
        the rules, for input at Ethernet1, Ethernet2, ...
        """
        text = _rules_text(rules)
        with self._recording.step("rules", name="rules", text=text, classes=classes,
                                  interfaces=interfaces, portsOnAnyProtocol=False):
            self._lab.loadRules(text, classes, interfaces)

    def detach_all(self) -> None:
        """Takes all policy-maps and access lists away from the interfaces, and settles."""
        with self._recording.step("detach"):
            self._lab.detachAll()

    def attach_all(self) -> None:
        """Puts back what detach_all() took away."""
        with self._recording.step("attach"):
            self._lab.attachAll()

    # Time and results

    def settle(self) -> None:
        """Runs everything that is due now."""
        self._lab.settle()

    def advance(self, time: Seconds) -> None:
        """Advances virtual time, and runs what becomes due. Raises ValueError if it is negative."""
        seconds = seconds_of(time)
        with self._recording.step("advance", seconds=min(max(seconds, 0.0), _LONGEST_STEP)):
            self._lab.advance(seconds)

    @property
    def now(self) -> float:
        """Seconds of virtual time since the lab began."""
        now: float = self._lab.now
        return now

    def trigger(self) -> None:
        """Delivers the pending asynchronous result, if there is one, and settles."""
        with self._recording.step("trigger"):
            self._lab.trigger()

    def held_results(self) -> tuple[HeldResult, ...]:
        """The results that a fault holds back, in the order of their operations."""
        return tuple(HeldResult(**json.loads(line)) for line in self._lab.heldResults())

    def release(self, number: int | None = None) -> None:
        """Delivers the held result of this number, or the oldest. Raises kor.LookupException if none."""
        if number is None:
            held = self.held_results()
            if not held:
                raise kor.LookupException("no result is held")
            number = held[0].number
        with self._recording.step("release", text=str(number)):
            self._lab.release(number)

    def release_all(self) -> None:
        """Delivers all held results, and settles."""
        with self._recording.step("release"):
            self._lab.releaseAll()

    # Faults

    def inject(self, fault: str, text: str) -> None:
        """Sets an error attribute of the helper, such as "commitError", and settles.

        Raises ValueError, with the valid names, if there is no such attribute.
        """
        with self._recording.step("inject", text=f"{fault}={text}"):
            self._lab.inject(fault, text)

    def clear_faults(self) -> None:
        """Removes all injected errors, ends the effect of all plans, and settles."""
        with self._recording.step("clear"):
            self._lab.clearFaults()

    def plan(self, *faults: str | Fault | Capacity, **words: Any) -> FaultScope:
        """Lets calls of the helper fail as planned: "addRule class=web nth=3 once".

        With words, the text is the operations of one fault: `plan("addRule", nth=3)`; see Fault.
        Raises ValueError for a plan that is invalid, or can select no call.
        """
        text = plan_text(faults, words)
        with self._recording.step("faults", text=text):
            scope = self._lab.plan(text)
        return FaultScope(scope, text, self._recording)

    def end_plans(self) -> None:
        """Ends all plans, also that of the options."""
        with self._recording.step("end"):
            self._lab.endPlans()
        self._recording.scopes.clear()

    def faults(self) -> tuple[PlannedFault, ...]:
        """What became of the planned faults, of those plans that have not ended."""
        return faults_of(self._lab.faults())

    def findings(self) -> tuple[str, ...]:
        """What the lab has found: faults that were never met, irregular calls of the core.

        Also after the end of the lab.
        """
        return self._findings if self._closed else tuple(self._lab.findings())

    def take_findings(self) -> tuple[str, ...]:
        """Returns and forgets the findings, for a test that expects them."""
        if self._closed:
            findings, self._findings = self._findings, ()
            return findings
        return tuple(self._lab.takeFindings())

    def before_helper(self, helper: object) -> None:
        """From now on methods of `helper` that have names of operations are called first.

        A method gets the arguments of the operation by name, as far as it has parameters for them.
        It may return a text, the result in place of the operation; raise, as which the operation
        fails; or return None, which passes the call on. A parameter named `proceed` gets a function
        that carries out the operation and returns its result. A failed assertion also fails the
        test. None: operations are called directly again. Raises TypeError for a parameter that the
        operation does not have.
        """
        owner = weakref.ref(self)  # or the lab would keep itself
        self._lab.aroundIs(
            None if helper is None else calls_of(lambda: _before_of(owner()), helper))
        self._before = helper

    # Results

    def records(self) -> Snapshot:
        """All records, in the order of policy, direction and option."""
        return Snapshot(Record.from_dict(json.loads(line)) for line in self._lab.records())

    def snapshot(self) -> Snapshot:
        """The same as records()."""
        return self.records()

    def record(self, policy: str, direction: str = "input", option: str | None = None) -> Record:
        """One record; see Snapshot.record(). The error says why the policy is not programmed."""
        try:
            return self.records().record(policy, direction, option)
        except LookupError as error:
            raise kor.LookupException(f"{error}\n{self.explain()}") from None

    def failure(self, policy: str, direction: str = "input") -> Any:
        """What failed when a policy was programmed, a PolicyMap.PolicyFailure; its `error` is empty
        if nothing did. Raises kor.LookupException if the policy is not attached."""
        return self._lab.failure(policy, direction)

    def explain(self, policy: str | None = None) -> Explanations:
        """Why what is attached is, or is not, programmed; of one policy-map or of all."""
        return Explanations(
            self._lab.explain() if policy is None else self._lab.explainPolicy(policy))

    # Packets. The policies can be selected by policy-map, interface, direction and option; `deny` says
    # what an entry that denies does to its packets in the hardware: "next-class", "stop" or "entry".

    def packets(self, *, policy: str | None = None, interface: str | None = None,
                direction: str | None = None, option: str | None = None) -> PacketState:
        """What the lab does to packets now, which does not change with the lab.

        Raises kor.LookupException for a policy-map that is not attached.
        """
        return PacketState(self._lab, {"policy": policy, "interface": interface,
                                       "direction": direction, "option": option})

    def trace(self, packet: str, *, policy: str | None = None, interface: str | None = None,
              direction: str | None = None, option: str | None = None, deny: str = "next-class",
              passed: bool = False) -> PacketResults[Trace]:
        """The way of a packet through the records of each policy that it meets, and what is configured.

        `packet` is written as "tcp 10.0.0.1:4000 > 192.0.2.80:80 syn". With `passed` also the rules
        before the one that decides.
        """
        state = self.packets(policy=policy, interface=interface, direction=direction, option=option)
        return state.trace(packet, deny=deny, passed=passed)

    def prove(self, *, policy: str | None = None, interface: str | None = None,
              direction: str | None = None, option: str | None = None, deny: str = "next-class",
              budget: int | None = None, first: int = 1,
              except_for: str | Iterable[str] = ()) -> PacketResults[Proof]:
        """Whether the records treat every packet as the configuration says: `lab.prove().same`.

        Otherwise the first differences, by their packets. `budget` limits the steps of the search for
        each policy and option; what is not decided by then is "undecided". `except_for` are packets
        that do not count, as the match of a rule: "udp any any eq 53".
        """
        state = self.packets(policy=policy, interface=interface, direction=direction, option=option)
        return state.prove(deny=deny, budget=budget, first=first, except_for=except_for)

    def unused(self, *, policy: str | None = None, interface: str | None = None,
               direction: str | None = None, option: str | None = None,
               budget: int | None = None) -> PacketResults[Unused]:
        """The configured rules and classes that no packet reaches, and rules that make no difference."""
        state = self.packets(policy=policy, interface=interface, direction=direction, option=option)
        return state.unused(budget=budget)

    def compare(self, after: Lab | PacketState, *, of: str = "records", deny: str = "next-class",
                budget: int | None = None, first: int = 1,
                except_for: str | Iterable[str] = ()) -> PacketResults[PacketChange]:
        """Which packets another lab treats otherwise, as programmed or, `of="configuration"`, as
        configured. Of one lab before and after an edit: `before = lab.packets()`, and then
        `before.compare(lab.packets())`. The other arguments are those of prove().
        """
        state = after.packets() if isinstance(after, Lab) else after
        return self.packets().compare(state, of=of, deny=deny, budget=budget, first=first,
                                      except_for=except_for)

    @property
    def journal(self) -> Journal:
        """What has happened so far."""
        return self.journal_since(1)

    def journal_since(self, number: int) -> Journal:
        """The entries of the journal from this number on."""
        return Journal.from_json_lines(self._lab.journalSince(number))

    def check(self) -> tuple[str, ...]:
        """Lets five seconds pass, ends all faults, lets time pass until all is repaired, and
        compares with a new lab that loads the same configuration.

        Returns what is not as it should be; empty is good.
        """
        with self._recording.step("check"):
            found = tuple(self._lab.check())
        self._recording.scopes.clear()
        return found

    def run(self) -> Run:
        """What was done to the lab, as a run that is performed again in a new lab.

        Writes to the objects inside, observers and own helpers are not part of it.
        """
        return Run(run_text(self._recording.steps, self._options))

    # The objects inside. What a test writes to them takes effect with the next call that settles.

    @property
    def helper(self) -> kor.ns.PolicyMapTest.AclHelper:
        return self._lab.helper  # type: ignore[no-any-return]

    @property
    def machine(self) -> kor.ns.PolicyMapTest.TestServicePolicySm:
        return self._lab.machine  # type: ignore[no-any-return]

    @property
    def acls(self) -> kor.ns.Acl.Config:
        return self._lab.acls  # type: ignore[no-any-return]

    @property
    def class_maps(self) -> kor.ns.PolicyMap.ClassMapTypeConfig:
        return self._lab.classMaps  # type: ignore[no-any-return]

    @property
    def policy_maps(self) -> kor.ns.PolicyMap.PolicyMapTypeConfig:
        return self._lab.policyMaps  # type: ignore[no-any-return]

    @property
    def status(self) -> kor.ns.PolicyMap.PolicyMapTypeStatus:
        return self._lab.status  # type: ignore[no-any-return]

    # The end

    def close(self) -> tuple[str, ...]:
        """Ends the lab; returns all findings. Again, it does nothing and returns none.

        Raises RangeException during a call that changes the lab, as in an observer.
        """
        if self._closed:
            return ()
        self._lab.endPlans()
        for watch in _watches:
            watch.closing(self)
        self._findings = self.findings()
        self._closed = True  # observers of what ends may call this again
        try:
            self._lab.close()
        except kor.Exception:
            self._closed = False
            raise
        self._recording.scopes.clear()
        return self._findings

    @property
    def closed(self) -> bool:
        """True after the end."""
        return self._closed

    def __enter__(self) -> Lab:
        return self

    def __exit__(self, error_type: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.close()

    def __repr__(self) -> str:
        return "<Lab: ended>" if self._closed else f"<Lab: {self.now:g} s>"

    def __str__(self) -> str:
        return "the lab has ended" if self._closed else f"{self.records()}\n{self.explain()}"


def _before_of(lab: Lab | None) -> object:
    return None if lab is None else lab._before
