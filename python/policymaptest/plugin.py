# SPDX-License-Identifier: Apache-2.0
"""The pytest plugin: labs as fixtures, differences, snapshots, modes, sweeps.

Fixtures `lab`, `helper` and `journal`, of one lab that is new for each test; `make_lab(**options)`
for more; `approved`, the approved snapshot of the test. A test fails for each finding that it has
not taken with `lab.take_findings()`. After a failure the report has the journal, the trace and the
explanation of each lab, and names a replay file.

    @pytest.mark.policymap(modes="all", update_action=True)
    def test_recovers(lab): ...

    @pytest.mark.policymap_sweep(shards=4)
    def test_every_fault(lab):  # is done again and again, each time with another call failing
        lab.load(POLICY)
"""

from __future__ import annotations

import hashlib
import inspect
import os
import pathlib
import re
from collections.abc import Generator, Iterator
from typing import Any

import kor
import pytest

from .faults import Capacity, Fault, FaultScope, Seconds, plan_text, seconds_of
from .journal import Journal, JournalEntry
from .lab import Lab, modes_of, rules_text
from .records import Record, Snapshot, difference
from .runs import Run, SweepReport, run_text, sweep

_MODE = "policymap_mode"
_SHARD = "policymap_shard"
_TRACE_LINES = 500
_JOURNAL_LINES = 200


def pytest_addoption(parser: pytest.Parser) -> None:
    group = parser.getgroup("policymap", "policy-maps")
    group.addoption("--policymap-approve", action="store_true",
                    help="write the snapshots that tests compare with, and remove unused ones")
    group.addoption("--policymap-trace", metavar="SOURCE/LEVEL", default="PolicyMap/3",
                    help="the trace that a failure shows; empty: none (default: %(default)s)")
    group.addoption("--policymap-runs", metavar="FOLDER", default=".policymap-runs",
                    help="where replay files of failed tests are left (default: %(default)s)")


def pytest_configure(config: pytest.Config) -> None:
    config.addinivalue_line("markers", "policymap(modes=None, **options): options of the labs of the "
                            'test; modes="all", or a list, runs it once in each mode')
    config.addinivalue_line("markers", "policymap_sweep(scenario=the test, shards=1, **arguments): "
                            "a sweep as one item for each shard; with a scenario the test gets the "
                            "fixture shard_report")


def pytest_generate_tests(metafunc: pytest.Metafunc) -> None:
    marker = next((each for each in metafunc.definition.iter_markers("policymap")
                   if "modes" in each.kwargs), None)
    modes = None if marker is None else marker.kwargs["modes"]
    if modes is not None:
        try:
            names = modes_of(modes)
        except (TypeError, ValueError) as error:
            raise pytest.UsageError(f"{metafunc.definition.nodeid}: {error}") from None
        metafunc.fixturenames.append(_MODE)
        metafunc.parametrize(_MODE, names)
    marker = metafunc.definition.get_closest_marker("policymap_sweep")
    if marker is not None:
        shards = marker.kwargs.get("shards", 1)
        if isinstance(shards, bool) or not isinstance(shards, int) or shards < 1:
            raise pytest.UsageError(f"{metafunc.definition.nodeid}: shards: expected 1 or more, "
                                    f"found {shards!r}")
        metafunc.fixturenames.append(_SHARD)
        metafunc.parametrize(_SHARD, range(1, shards + 1),
                             ids=[f"shard{each}of{shards}" for each in range(1, shards + 1)])


def _parameter(item: pytest.Item, name: str) -> Any:
    """What pytest_generate_tests() gave the item; None if nothing."""
    callspec = getattr(item, "callspec", None)
    return None if callspec is None else callspec.params.get(name)


def _options_of(item: pytest.Item) -> dict[str, Any]:
    """Of all marks, the closest last."""
    options: dict[str, Any] = {}
    for marker in reversed(list(item.iter_markers("policymap"))):
        if marker.args:
            raise pytest.UsageError(f"{item.nodeid}: the mark policymap takes named arguments")
        options |= marker.kwargs
    options.pop("modes", None)
    return options


# Labs --------------------------------------------------------------------------------------------


class Labs:
    """The labs of one test."""

    def __init__(self, options: dict[str, Any]) -> None:
        self._options = options
        self.made: list[Lab] = []

    def __call__(self, **options: Any) -> Lab:
        made = RecordedLab(**(self._options | options))
        self.made.append(made)
        return made

    def close(self) -> list[str]:
        """Ends them; returns their findings."""
        return [finding for lab in self.made for finding in lab.close()]


class RecordedLab(Lab):
    """A lab that keeps what the test does, for a replay file."""

    def __init__(self, **options: Any) -> None:
        super().__init__(**options)
        self._steps: list[dict[str, Any]] = []
        self._reading = "strict"

    def load(self, policy_text: str) -> None:
        super().load(policy_text)
        self._steps.append({"step": "load", "name": "policy text", "text": policy_text})

    def load_file(self, path: str | os.PathLike[str], tolerant: bool = False) -> None:
        super().load_file(path, tolerant)
        self._reading = "lenient" if tolerant else self._reading  # there is one for the whole run
        self._steps.append({"step": "load", "name": os.fspath(path),
                            "text": pathlib.Path(path).read_text(errors="replace")})

    def load_rules(self, rules: str | os.PathLike[str], classes: int = 1,
                   interfaces: int = 1) -> None:
        super().load_rules(rules, classes, interfaces)
        self._steps.append({"step": "rules", "name": "rules", "text": rules_text(rules),
                            "classes": classes, "interfaces": interfaces,
                            "portsOnAnyProtocol": False})

    def inject(self, fault: str, text: str) -> None:
        super().inject(fault, text)
        self._steps.append({"step": "inject", "text": f"{fault}={text}"})

    def plan(self, *faults: str | Fault | Capacity, **words: Any) -> FaultScope:
        scope = super().plan(*faults, **words)
        self._steps.append({"step": "faults", "text": plan_text(faults, words)})
        return scope

    def clear_faults(self) -> None:
        super().clear_faults()
        self._steps.append({"step": "clear"})

    def advance(self, time: Seconds) -> None:
        super().advance(time)
        self._steps.append({"step": "advance", "seconds": seconds_of(time)})

    def trigger(self) -> None:
        super().trigger()
        self._steps.append({"step": "trigger"})

    def release_all(self) -> None:
        super().release_all()
        self._steps.append({"step": "release"})

    def detach_all(self) -> None:
        super().detach_all()
        self._steps.append({"step": "detach"})

    def attach_all(self) -> None:
        super().attach_all()
        self._steps.append({"step": "attach"})

    def check(self) -> tuple[str, ...]:
        found = super().check()
        self._steps.append({"step": "check"})
        return found

    def run(self) -> Run:
        """These steps. Writes to objects of the lab, and results that are released one by one, are
        not among them."""
        return Run(run_text(self._steps, self._options, self._reading))


_labs = pytest.StashKey[Labs]()
_reported = pytest.StashKey[bool]()


@pytest.fixture
def make_lab(request: pytest.FixtureRequest) -> Generator[Labs, None, None]:
    """Makes labs with the options of the test's marks and its own; ends them after the test."""
    options = _options_of(request.node)
    mode = _parameter(request.node, _MODE)
    if mode is not None:
        options["mode"] = mode
    trace = request.config.getoption("--policymap-trace")
    kit = kor.ns.PolicyMapTestKit.Kit()
    kit.takeTrace()
    kit.keepTrace(trace, _TRACE_LINES)
    made = Labs(options)
    request.node.stash[_labs] = made
    yield made
    kit.keepTrace("", 0)
    findings = made.close()
    if findings and not request.node.stash.get(_reported, False):
        pytest.fail("findings of the lab:\n" + "\n".join(findings), pytrace=False)


@pytest.fixture
def lab(make_lab: Labs) -> Lab:
    """A new lab."""
    return make_lab()


@pytest.fixture
def helper(lab: Lab) -> Any:
    """The helper of the lab."""
    return lab.helper


class LiveJournal(Journal):
    """The journal of a lab, always as it is now."""

    __slots__ = ("_lab",)

    def __init__(self, lab: Lab) -> None:
        self._lab = lab

    @property
    def _entries(self) -> tuple[JournalEntry, ...]:  # type: ignore[override]
        return tuple(self._lab.journal)


@pytest.fixture
def journal(lab: Lab) -> Journal:
    """The journal of the lab, always as it is now."""
    return LiveJournal(lab)


# Reports -----------------------------------------------------------------------------------------


@pytest.hookimpl(hookwrapper=True)  # type: ignore[misc]
def pytest_runtest_makereport(item: pytest.Item, call: pytest.CallInfo[None]) -> Iterator[None]:
    outcome: Any = yield
    report: pytest.TestReport = outcome.get_result()
    made = item.stash.get(_labs, None)
    if report.when == "teardown" and made is not None:
        del item.stash[_labs]  # or it would keep the labs until the end of the session
    is_sweep = item.get_closest_marker("policymap_sweep") is not None  # in labs of its own
    if report.when == "teardown" or not report.failed or made is None or is_sweep:
        return
    item.stash[_reported] = True
    for number, each in enumerate(made.made, 1):
        title = "lab" if len(made.made) == 1 else f"lab {number}"
        report.sections += _sections(title, each)
        if isinstance(each, RecordedLab):
            path = _replay_path(item, number)
            try:
                path.parent.mkdir(parents=True, exist_ok=True)
                each.run().save(path)
                replay = f"policymap-lab replay {path}"
            except OSError as error:
                replay = f"it cannot be written: {error}"
            report.sections.append((f"{title}: replay", replay))
    trace = kor.ns.PolicyMapTestKit.Kit().takeTrace()
    if trace:
        report.sections.append(("trace", "\n".join(trace)))


def _sections(title: str, each: Lab) -> list[tuple[str, str]]:
    try:
        journal = each.journal
        shown = str(Journal(journal[-_JOURNAL_LINES:]))
        left_out = len(journal) - _JOURNAL_LINES
        if left_out > 0:
            shown = f"({left_out} earlier entries left out)\n{shown}"
        return [(f"{title}: journal", shown), (f"{title}: explanation", str(each.explain()))]
    except kor.Exception as error:  # the test has ended it
        return [(f"{title}: journal", str(error))]


def _file_name(test: str) -> str:
    """Of a test; two tests have different ones, and each fits into a folder."""
    name = re.sub(r"[^\w.-]+", "_", test).strip("_")
    if re.fullmatch(r"[\w./-]+(::[\w.-]+)*(\[[\w.-]+\])?", test) and len(name) <= 120:
        return name
    return f"{name[:100]}-{hashlib.sha256(test.encode(errors='replace')).hexdigest()[:8]}"


def _replay_path(item: pytest.Item, number: int) -> pathlib.Path:
    folder = pathlib.Path(item.config.getoption("--policymap-runs"))
    return folder / f"{_file_name(item.nodeid)}-{number}.run"


def pytest_assertrepr_compare(config: pytest.Config, op: str, left: object,
                              right: object) -> list[str] | None:
    if op != "==":
        return None
    if isinstance(left, ApprovedSnapshot) or isinstance(right, ApprovedSnapshot):
        actual, expected = (left, right) if isinstance(right, ApprovedSnapshot) else (right, left)
        if isinstance(actual, Snapshot) and isinstance(expected, ApprovedSnapshot):
            return expected.explain(actual)
    for kind in (Snapshot, Record):
        if isinstance(left, kind) and isinstance(right, kind):
            changes = difference(left, right)  # type: ignore[arg-type]
            return [f"{kind.__name__} == {kind.__name__}, left -> right:", *changes]
    return None


# Approved snapshots ------------------------------------------------------------------------------


class ApprovedSnapshot:
    """What `lab.records()` is compared with: a file of approved records."""

    def __init__(self, path: pathlib.Path, approve: bool) -> None:
        self.path = path
        self._approve = approve

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Snapshot):
            return NotImplemented
        if self._approve:
            self.path.parent.mkdir(parents=True, exist_ok=True)
            self.path.write_text(other.to_json())
            return True
        return self.path.exists() and self._read() == other

    __hash__ = None  # type: ignore[assignment]

    def _read(self) -> Snapshot:
        return Snapshot.from_json(self.path.read_text())

    def explain(self, actual: Snapshot) -> list[str]:
        if not self.path.exists():
            return [f"there is no approved snapshot {self.path}",
                    "look at the records, then approve them with --policymap-approve", str(actual)]
        return [f"other records than in {self.path}, approved -> now:",
                *difference(self._read(), actual)]

    def __repr__(self) -> str:
        return f"<approved snapshot {self.path.name}>"


def _approved_path(item: pytest.Item) -> pathlib.Path:
    name = _file_name(item.nodeid.partition("::")[2])
    return item.path.parent / "__approved__" / f"{item.path.stem}.{name}.json"


@pytest.fixture
def approved(request: pytest.FixtureRequest) -> ApprovedSnapshot:
    """The approved snapshot of the test: assert lab.records() == approved."""
    approve = bool(request.config.getoption("--policymap-approve"))
    return ApprovedSnapshot(_approved_path(request.node), approve)


# The snapshots of the tests that were collected that no test has; None: not all were collected.
_unused = pytest.StashKey[list[pathlib.Path] | None]()


def pytest_collection_finish(session: pytest.Session) -> None:
    files = {item.path for item in session.items}
    wanted = {_approved_path(item) for item in session.items
              if "approved" in getattr(item, "fixturenames", ())}
    some = any("::" in each for each in session.config.args)
    if not some and _unused not in session.config.stash:
        session.config.stash[_unused] = sorted(
            path for file in files
            for path in (file.parent / "__approved__").glob(f"{file.stem}.*.json")
            if path not in wanted)


def pytest_deselected(items: list[pytest.Item]) -> None:
    for item in items[:1]:
        item.config.stash[_unused] = None


def pytest_terminal_summary(terminalreporter: Any, config: pytest.Config) -> None:
    unused = config.stash.get(_unused, None)
    if not unused:
        return
    if config.getoption("--policymap-approve"):
        for path in unused:
            path.unlink()
        terminalreporter.write_line(f"removed {len(unused)} unused approved snapshots")
    else:
        terminalreporter.section("unused approved snapshots")
        for path in unused:
            terminalreporter.write_line(str(path))


# Sweeps ------------------------------------------------------------------------------------------


def _scenarios_of(marker: pytest.Mark) -> list[Any]:
    named = marker.kwargs.get("scenario")
    return [*marker.args, *([] if named is None else [named])]


def _sweep_of(item: pytest.Item, marker: pytest.Mark, scenario: Any) -> SweepReport:
    arguments = dict(marker.kwargs)
    arguments.pop("scenario", None)
    shards = arguments.pop("shards", 1)
    return sweep(scenario, shard=_parameter(item, _SHARD), shards=shards, progress=False,
                 **(_options_of(item) | arguments))


@pytest.hookimpl(tryfirst=True)  # type: ignore[misc]
def pytest_pyfunc_call(pyfuncitem: pytest.Function) -> bool | None:
    """Without a scenario in the mark, the test itself is the scenario, with its fixture `lab`."""
    marker = pyfuncitem.get_closest_marker("policymap_sweep")
    if marker is None:
        return None
    names = inspect.signature(pyfuncitem.obj).parameters
    if _scenarios_of(marker):
        if "shard_report" not in pyfuncitem.fixturenames:
            raise pytest.UsageError(f"{pyfuncitem.nodeid}: with a scenario, the mark policymap_sweep "
                                    "needs a test with `shard_report`")
        return None
    if "lab" not in names:
        raise pytest.UsageError(
            f"{pyfuncitem.nodeid}: the mark policymap_sweep needs a scenario, or a test with `lab`")
    args = {name: pyfuncitem.funcargs[name] for name in names}
    kor.ns.PolicyMapTestKit.Kit().keepTrace("", 0)  # which would slow all cases down
    report = _sweep_of(pyfuncitem, marker, lambda each: pyfuncitem.obj(**(args | {"lab": each})))
    if report.failed:
        pytest.fail(str(report), pytrace=False)
    return True


@pytest.fixture
def shard_report(request: pytest.FixtureRequest) -> SweepReport:
    """The report of the test's shard of the scenario in the mark policymap_sweep."""
    marker = request.node.get_closest_marker("policymap_sweep")
    scenarios = [] if marker is None else _scenarios_of(marker)
    if marker is None or len(scenarios) != 1:
        raise pytest.UsageError("shard_report needs the mark policymap_sweep(scenario, ...) with one "
                                "scenario")
    return _sweep_of(request.node, marker, scenarios[0])
