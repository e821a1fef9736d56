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

import inspect
import pathlib
from collections.abc import Callable, Generator, Iterator
from typing import Any, Optional

import kor
import pytest

from .approval import Approval, ApprovedSnapshot, file_name, path_for
from .journal import Journal, JournalEntry
from .lab import Lab, watch_labs
from .labs_of_test import LabsOfTest
from .options import modes_of, options_json
from .records import Record, Snapshot, difference
from .runs import kit
from .sweeps import SweepReport, sweep

_MODE = "policymap_mode"
_SHARD = "policymap_shard"
_TRACE_LINES = 500


def pytest_addoption(parser: pytest.Parser) -> None:
    group = parser.getgroup("policymap", "policy-maps")
    group.addoption("--policymap-approve", action="store_true",
                    help="write the snapshots that tests compare with, and remove unused ones")
    group.addoption("--policymap-trace", metavar="SOURCE/LEVEL", default="PolicyMap/3",
                    help="the trace that a failure shows; empty: none (default: %(default)s)")
    group.addoption("--policymap-runs", metavar="FOLDER", default=".policymap-runs",
                    help="where replay files of failed tests are left (default: %(default)s)")


def pytest_configure(config: pytest.Config) -> None:
    try:
        kit().keepTrace(config.getoption("--policymap-trace"), 1)
        kit().keepTrace("", 0)
    except kor.RangeException as error:
        raise pytest.UsageError(f"--policymap-trace: {error}") from None
    config.stash[_approval] = Approval(bool(config.getoption("--policymap-approve")))
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

_labs = pytest.StashKey[LabsOfTest]()


@pytest.hookimpl(hookwrapper=True)  # type: ignore[misc]
def pytest_runtest_protocol(item: pytest.Item) -> Iterator[None]:
    labs = LabsOfTest()
    item.stash[_labs] = labs
    kit().takeTrace()
    kit().keepTrace(item.config.getoption("--policymap-trace"), _TRACE_LINES)
    with watch_labs(labs):
        yield
    kit().keepTrace("", 0)
    del item.stash[_labs]  # or it would keep the labs until the end of the session


@pytest.hookimpl(hookwrapper=True)  # type: ignore[misc]
def pytest_runtest_call(item: pytest.Item) -> Iterator[None]:
    yield
    item.stash[_labs].in_use = False


@pytest.hookimpl(trylast=True)  # type: ignore[misc]
def pytest_runtest_teardown(item: pytest.Item) -> None:
    labs = item.stash[_labs]
    labs.end_plans()
    findings = labs.findings()
    if findings and not item.stash.get(_reported, False):
        pytest.fail("findings of the lab:\n" + "\n".join(findings), pytrace=False)


@pytest.fixture
def make_lab(request: pytest.FixtureRequest) -> Generator[Callable[..., Lab], None, None]:
    """Makes labs with the options of the test's marks and its own; ends them after the test."""
    of_marks = _options_of(request.node)
    mode = _parameter(request.node, _MODE)
    if mode is not None:
        of_marks["mode"] = mode
    options_json(of_marks)  # names the options that there are
    made: list[Lab] = []

    def make(**options: Any) -> Lab:
        made.append(Lab(**(of_marks | options)))
        return made[-1]

    yield make
    for each in made:
        each.close()


@pytest.fixture
def lab(make_lab: Callable[..., Lab]) -> Lab:
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

_reported = pytest.StashKey[bool]()


@pytest.hookimpl(hookwrapper=True)  # type: ignore[misc]
def pytest_runtest_makereport(item: pytest.Item) -> Iterator[None]:
    outcome: Any = yield
    report: pytest.TestReport = outcome.get_result()
    labs = item.stash.get(_labs, None)
    if report.when == "call" and report.passed:
        item.config.stash[_approval].passed.add(_approved_path(item))
    is_sweep = item.get_closest_marker("policymap_sweep") is not None  # in labs of its own
    if not report.failed or labs is None or is_sweep or item.stash.get(_reported, False):
        return
    item.stash[_reported] = True
    folder = pathlib.Path(item.config.getoption("--policymap-runs"))
    sections = labs.sections(folder / file_name(item.nodeid))
    report.sections += sections
    replays: list[tuple[str, object]] = [each for each in sections if each[0].endswith("replay")]
    report.user_properties += replays
    item.user_properties += replays  # of the last report, from which JUnit's file has them
    if trace := kit().takeTrace():
        report.sections.append(("trace", "\n".join(trace)))


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

_approval = pytest.StashKey[Approval]()
_tests = pytest.StashKey[Optional[list[pytest.Item]]]()  # None: not all tests of a file run
_WORKER_RESULT = "policymap_unused"


@pytest.fixture
def approved(request: pytest.FixtureRequest) -> ApprovedSnapshot:
    """The approved snapshot of the test: assert lab.records() == approved.

    A further one of the same test has a name: approved("after the edit").
    """
    return ApprovedSnapshot(_approved_path(request.node), request.config.stash[_approval])


def _approved_path(item: pytest.Item) -> pathlib.Path:
    return path_for(item.path, item.nodeid.partition("::")[2])


def pytest_collection_finish(session: pytest.Session) -> None:
    if _tests not in session.config.stash and not any("::" in each for each in session.config.args):
        session.config.stash[_tests] = list(session.items)


def pytest_deselected(items: list[pytest.Item]) -> None:
    for item in items[:1]:
        item.config.stash[_tests] = None


def _unused(config: pytest.Config) -> list[str] | None:
    """The snapshots that no test uses; None if not all tests ran."""
    tests = config.stash.get(_tests, None)
    if tests is None:
        return None
    own = {_approved_path(each) for each in tests
           if "approved" in getattr(each, "fixturenames", ())}
    unused = config.stash[_approval].unused({each.path for each in tests}, own)
    return [str(each) for each in unused]


def pytest_sessionfinish(session: pytest.Session) -> None:
    result = getattr(session.config, "workeroutput", None)
    if result is not None:  # a process of pytest-xdist, each of which collects all tests
        result[_WORKER_RESULT] = _unused(session.config)


@pytest.hookimpl(optionalhook=True)  # type: ignore[misc]
def pytest_testnodedown(node: Any) -> None:
    unused = getattr(node, "workeroutput", {}).get(_WORKER_RESULT)
    if unused is not None:
        known = node.config.stash.get(_of_workers, None)
        node.config.stash[_of_workers] = set(unused) & (set(unused) if known is None else known)


_of_workers = pytest.StashKey[set[str]]()  # what none of the processes has used


def pytest_terminal_summary(terminalreporter: Any, config: pytest.Config) -> None:
    unused = sorted(config.stash.get(_of_workers, None) or _unused(config) or ())
    if not unused:
        return
    if config.getoption("--policymap-approve"):
        for path in unused:
            pathlib.Path(path).unlink()
        terminalreporter.write_line(f"removed {len(unused)} unused approved snapshots")
    else:
        terminalreporter.section("unused approved snapshots")
        for path in unused:
            terminalreporter.write_line(path)


# Sweeps ------------------------------------------------------------------------------------------


def _scenarios_of(marker: pytest.Mark) -> list[Any]:
    named = marker.kwargs.get("scenario")
    return [*marker.args, *([] if named is None else [named])]


def _sweep_of(item: pytest.Item, marker: pytest.Mark, scenario: Any) -> SweepReport:
    arguments = dict(marker.kwargs)
    arguments.pop("scenario", None)
    shards = arguments.pop("shards", 1)
    if (mode := _parameter(item, _MODE)) is not None:
        arguments["modes"] = [mode]
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
    kit().keepTrace("", 0)  # which would slow all cases down
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
