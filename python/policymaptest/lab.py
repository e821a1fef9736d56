# SPDX-License-Identifier: Apache-2.0
"""Lab: everything that a test of policy-maps needs, in one object."""

from __future__ import annotations

import dataclasses
import inspect
import json
import math
import os
import pathlib
import weakref
from collections.abc import Callable, Iterable, Iterator, Mapping, Sequence
from types import TracebackType
from typing import Any, overload

import kor

from .faults import Capacity, Fault, FaultScope, PlannedFault, Seconds
from .faults import faults_of, plan_text, seconds_of
from .journal import Journal
from .records import Record, Snapshot

# The options of the kit by their names here.
_SWITCHES = {
    "update_action": "updateAction", "expand_port_channels": "expandPortChannels",
    "sub_rules_for_ports": "subRulesForPorts", "reprogram_on_intf_change": "reprogramOnIntfChange",
    "deny_rules": "denyRules", "ttl": "ttl", "only_ttl_eq": "onlyTtlEq", "ack_or_rst": "ackOrRst",
    "established": "established", "asynchronous": "async", "pseudo_async": "pseudoAsync",
    "layer2": "layer2", "layer3": "layer3", "management": "management", "ip_lists": "ipLists",
    "ip6_lists": "ip6Lists", "mac_lists": "macLists", "access_groups": "accessGroups",
    "leftovers": "leftovers", "idle_commits": "idleCommits",
    "calls_after_failures": "callsAfterFailures", "repeated_creations": "repeatedCreations",
    "missing_commits": "missingCommits",
}
MODES = ("synchronous", "asynchronous", "pseudo-asynchronous")


def rules_text(rules: str | os.PathLike[str]) -> str:
    """The text of a filter set; a str without a rule is the path of its file."""
    if isinstance(rules, os.PathLike) or not ("\n" in rules or rules.startswith("@")):
        return pathlib.Path(rules).read_text()
    return rules


def modes_of(modes: str | Sequence[str]) -> tuple[str, ...]:
    """All modes for "all", or those that are named. Raises ValueError if there is none."""
    if modes == "all":
        return MODES
    if not isinstance(modes, (str, Sequence)):
        raise TypeError(f"modes: expected names of modes, found {modes!r}")
    names = (modes,) if isinstance(modes, str) else tuple(modes)
    unknown = [each for each in names if each not in MODES]
    if unknown or not names:
        raise ValueError(f"modes: expected some of all, {', '.join(MODES)}; found "
                         f"{unknown[0] if unknown else names!r}")
    return names


def options_json(*, async_delay: Seconds | None = None, faults: Mapping[str, str] | None = None,
                 plan: str | Fault | Capacity = "", actions: str = "", mode: str | None = None,
                 **switches: bool) -> str:
    """The options of a lab as the kit reads them. Raises TypeError for an unknown one."""
    options: dict[str, Any] = {}
    if mode is not None:
        if mode not in MODES:
            raise ValueError(f"mode: expected one of {', '.join(MODES)}, found {mode!r}")
        switches = {"asynchronous": mode != MODES[0], "pseudo_async": mode == MODES[2]} | switches
    for name, value in switches.items():
        if name not in _SWITCHES:
            raise TypeError(f"no such option: {name}; there are: {', '.join(sorted(_SWITCHES))}")
        if not isinstance(value, bool):
            raise TypeError(f"{name}: expected True or False, found {value!r}")
        options[_SWITCHES[name]] = value
    if async_delay is not None:
        options["asyncDelay"] = seconds_of(async_delay)
        if not 0 <= options["asyncDelay"] < math.inf:
            raise ValueError(f"async_delay: expected 0 s or more, found {async_delay!r}")
    if faults:
        options["faults"] = [f"{name}={text}" for name, text in faults.items()]
    options |= {name: text for name, text in (("plan", str(plan)), ("actions", actions)) if text}
    return json.dumps(options)


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


class Lab:
    """Configuration, helper, machines and an event loop with virtual time.

    Options, all of them off or empty unless it says so: `update_action`, `expand_port_channels`,
    `sub_rules_for_ports`, `reprogram_on_intf_change`, `deny_rules` (on), `ttl` (on), `only_ttl_eq`,
    `ack_or_rst` (on), `established` (on) are what the hardware can do; `asynchronous`,
    `pseudo_async`, `async_delay` how results arrive, or `mode`, one of "synchronous",
    "asynchronous" and "pseudo-asynchronous"; `faults` errors of the helper by attribute; `plan` a
    fault plan; `actions` what lines of classes become; `layer2`, `layer3`, `management`,
    `ip_lists`, `ip6_lists`, `mac_lists`, `access_groups` (all on) what is served.

    Each lab has its own time and objects. Bad input raises kor.RangeException, a ValueError, which
    names line and column; the configuration is then unchanged.
    """

    def __init__(self, **options: Any) -> None:
        self._options = options_json(**options)
        self._lab: Any = kor.ns.PolicyMapTestKit.Kit().lab(self._options)
        self._before: object = None
        self._scopes: list[Any] = []
        self._closed = False

    @classmethod
    def _of(cls, handle: Any) -> Lab:
        """The lab of a scenario."""
        lab = cls.__new__(cls)
        lab._options, lab._lab, lab._before, lab._scopes = "{}", handle, None, []
        lab._closed = False
        return lab

    # Configuration

    def load(self, policy_text: str) -> None:
        """Applies policy text as an edit of the current configuration, and settles."""
        self._lab.load(policy_text)

    def load_file(self, path: str | os.PathLike[str], tolerant: bool = False) -> None:
        """The same with a file. `tolerant` skips lines that are unknown."""
        self._lab.loadFile(os.fspath(path), "lenient" if tolerant else "strict")

    def load_rules(self, rules: str | os.PathLike[str], classes: int = 1,
                   interfaces: int = 1) -> None:
        """Replaces the configuration by a filter set, a path or its text with a rule per line.

        It is policy-map "rules" with classes "rules-1", "rules-2", ... for nearly equal shares of
        the rules, for input at Ethernet1, Ethernet2, ...
        """
        self._lab.loadRules(rules_text(rules), classes, interfaces)

    def detach_all(self) -> None:
        """Takes all policy-maps and access lists away from the interfaces, and settles."""
        self._lab.detachAll()

    def attach_all(self) -> None:
        """Puts back what detach_all() took away."""
        self._lab.attachAll()

    # Time and results

    def settle(self) -> None:
        """Runs everything that is due now."""
        self._lab.settle()

    def advance(self, time: Seconds) -> None:
        """Advances virtual time, and runs what becomes due. Raises ValueError if it is negative."""
        self._lab.advance(seconds_of(time))

    @property
    def now(self) -> float:
        """Seconds of virtual time since the lab began."""
        now: float = self._lab.now
        return now

    def trigger(self) -> None:
        """Delivers the pending asynchronous result, if there is one, and settles."""
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
        self._lab.release(number)

    def release_all(self) -> None:
        """Delivers all held results, and settles."""
        self._lab.releaseAll()

    # Faults

    def inject(self, fault: str, text: str) -> None:
        """Sets an error attribute of the helper, such as "commitError", and settles.

        Raises ValueError, with the valid names, if there is no such attribute.
        """
        self._lab.inject(fault, text)

    def clear_faults(self) -> None:
        """Removes all injected errors, ends the effect of all plans, and settles."""
        self._lab.clearFaults()

    def plan(self, *faults: str | Fault | Capacity, **words: Any) -> FaultScope:
        """Lets calls of the helper fail as planned: "addRule class=web nth=3 once".

        With words, the text is the operations of one fault: `plan("addRule", nth=3)`; see Fault.
        Raises ValueError for a plan that is invalid, or can select no call.
        """
        scope = self._lab.plan(plan_text(faults, words))
        self._scopes.append(scope)  # which would end without a reference
        return FaultScope(scope)

    def end_plans(self) -> None:
        """Ends all plans, also that of the options."""
        self._lab.endPlans()

    def faults(self) -> tuple[PlannedFault, ...]:
        """What became of the planned faults, of those plans that have not ended."""
        return faults_of(self._lab.faults())

    def findings(self) -> tuple[str, ...]:
        """What the lab has found: faults that were never met, irregular calls of the core."""
        return tuple(self._lab.findings())

    def take_findings(self) -> tuple[str, ...]:
        """Returns and forgets the findings, for a test that expects them."""
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
        self._lab.aroundIs(None if helper is None else _calls_of(weakref.ref(self), helper))
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

    @property
    def journal(self) -> Journal:
        """What has happened so far."""
        return self.journal_since(1)

    def journal_since(self, number: int) -> Journal:
        """The entries of the journal from this number on."""
        return Journal.from_json_lines(self._lab.journalSince(number))

    def check(self) -> tuple[str, ...]:
        """Ends all faults, lets time pass and results arrive, and compares with a new lab that
        loads the same configuration. Returns what is not as it should be; empty is good."""
        return tuple(self._lab.check())

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
        findings = self.findings()
        self._closed = True  # observers of what ends may call this again
        try:
            self._lab.close()
        except kor.Exception:
            self._closed = False
            raise
        return findings

    def __enter__(self) -> Lab:
        return self

    def __exit__(self, error_type: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.close()

    def __repr__(self) -> str:
        return "<Lab: ended>" if self._closed else f"<Lab: {self.now:g} s>"

    def __str__(self) -> str:
        return "the lab has ended" if self._closed else f"{self.records()}\n{self.explain()}"


def _argument_names(operation: str) -> list[str]:
    signature = inspect.signature(getattr(kor.ns.PolicyMap.PolicyMapAclHelper, operation))
    return [name for name in signature.parameters if name != "self"]


_Method = Callable[[list[object], Callable[[], object]], object]


def _calls_of(lab: weakref.ref[Lab],
              helper: object) -> Callable[[str, list[object], Callable[[], object]], object]:
    methods = {name: _method_of(lab, name, getattr(helper, name))
               for name in kor.ns.PolicyMapTestKit.Kit().operations() if hasattr(helper, name)}

    def around(operation: str, args: list[object], proceed: Callable[[], object]) -> object:
        method = methods.get(operation)
        return None if method is None else method(args, proceed)

    return around


def _method_of(lab: weakref.ref[Lab], operation: str, method: Any) -> _Method:
    """A function that calls the method of the lab's helper; it keeps neither."""
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
        owner = lab()
        given = dict(zip(names, args)) | {"proceed": proceed}
        return getattr(owner and owner._before, operation)(
            **{name: value for name, value in given.items() if takes_all or name in taken})

    return call
