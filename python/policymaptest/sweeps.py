# SPDX-License-Identifier: Apache-2.0
"""Sweeps, random walks, and explanations without a lab of the caller."""

from __future__ import annotations

import dataclasses
import json
import sys
import time
from collections.abc import Callable, Mapping, Sequence
from typing import Any, Union

from .lab import Explanations, Lab
from .options import MODES, modes_of, options_json
from .runs import Run, kit, run_text

# What is done to a new lab: a function, policy text, or several texts that are loaded in turn.
Scenario = Union[Callable[[Lab], object], str, Sequence[str]]


@dataclasses.dataclass(frozen=True)
class SweepResult:
    """One case of a sweep: the scenario with a fault."""

    case: str  # "asynchronous addRule nth=3 before"
    injected: int  # how many calls failed
    findings: tuple[str, ...]  # what is not as it should be
    journal: tuple[str, ...] = ()  # a line per entry, of a case with findings

    def __str__(self) -> str:
        return f"{self.case}: {'; '.join(self.findings) or 'recovered'}"


@dataclasses.dataclass(frozen=True)
class SweepReport:
    """The results of all cases, in their order."""

    results: tuple[SweepResult, ...]
    seconds: float

    @property
    def failed(self) -> tuple[SweepResult, ...]:
        """Those with findings."""
        return tuple(each for each in self.results if each.findings)

    @property
    def injected(self) -> int:
        return sum(each.injected for each in self.results)

    def __str__(self) -> str:
        head = (f"{len(self.results)} cases, {self.injected} calls failed, "
                f"{len(self.failed)} cases with findings, {self.seconds:.1f} s")
        return "\n".join([head, *map(str, self.failed)])


def _loads(scenario: str | Sequence[str]) -> list[dict[str, Any]]:
    texts = [scenario] if isinstance(scenario, str) else scenario
    return [{"step": "load", "name": f"text {number}", "text": text}
            for number, text in enumerate(texts, 1)]


class _Sweep:
    """The cases of a shard: a pure function of the arguments, the same on any machine."""

    def __init__(self, scenario: Scenario, options: str, settings: dict[str, Any]) -> None:
        self._raised: BaseException | None = None
        if callable(scenario):
            call, steps = self._guarded(scenario), []
        elif isinstance(scenario, (str, Sequence)):
            call, steps = None, _loads(scenario)
        else:
            raise TypeError("scenario: expected policy text, a list of such texts, or a function, "
                            f"found {scenario!r}")
        self._sweep = kit().sweep(run_text(steps, options), json.dumps(settings), call)
        self.cases: list[str] = self._checked("without a fault", self._sweep.cases)

    def run(self, case: str) -> dict[str, Any]:
        """The result of a case as plain data. Raises what the scenario raises."""
        result: dict[str, Any] = json.loads(self._checked(case, self._sweep.run, case))
        return result

    def _guarded(self, scenario: Callable[[Lab], object]) -> Callable[[Any], None]:
        def call(lab: Any) -> None:
            try:
                scenario(Lab._of(lab))
            except BaseException as error:  # is raised when the case has been done
                self._raised = self._raised or error

        return call

    def _checked(self, case: str, function: Callable[..., Any], *args: Any) -> Any:
        try:
            result = function(*args)
        except Exception:
            if self._raised is None:
                raise
        if self._raised is not None:
            raised, self._raised = self._raised, None
            raised.add_note(f"in the case: {case}")
            raise raised
        return result


def run_shard(scenario: Scenario, options: str, settings: dict[str, Any]) -> list[dict[str, Any]]:
    """All cases of one shard as plain data: a pure function of its arguments."""
    made = _Sweep(scenario, options, settings)
    return [made.run(case) for case in made.cases]


def result_of(data: dict[str, Any]) -> SweepResult:
    return SweepResult(data["case"], data["injected"], tuple(data["findings"]),
                       tuple(data.get("journal", ())))


def sweep(scenario: Scenario, *, modes: str | Sequence[str] = MODES, shard: int = 1, shards: int = 1,
          pairs: int = 0, seed: int = 1, journals: bool = False, progress: bool | None = None,
          client: Any = None, **options: Any) -> SweepReport:
    """Runs a scenario again and again, each time with another call of the helper failing, and looks
    whether everything becomes as it is without the fault once the fault is gone.

    The scenario must do the same to each lab, and not look at results. `shard` of `shards` runs a
    part of the cases; `pairs` runs this many cases of two faults instead, chosen by `seed`.
    `options` are those of the labs. With a `client` of Dask the shards run on its workers, `shards`
    of them, or four per worker; a worker that dies costs its shards only, which run elsewhere.
    `progress` shows a bar on the terminal; by default if standard error is one.

    Raises what the scenario raises, with a note that names the case, and ValueError for a shard
    that does not exist.
    """
    _refuse_modes(options, "modes")
    for name, count in (("shards", shards), ("shard", shard)):
        if isinstance(count, bool) or not isinstance(count, int):
            raise TypeError(f"{name}: expected a number, found {count!r}")
        if count < 1:
            raise ValueError(f"{name}: expected 1 or more, found {count!r}")
    if shard > 1 and client is not None:
        raise ValueError("shard: with a client all shards run")
    settings = {"modes": list(modes_of(modes)), "pairs": pairs, "seed": seed, "journals": journals}
    lab_options = options_json(options)
    begin = time.perf_counter()
    if progress is None:
        progress = sys.stderr.isatty()
    if client is not None:
        from .cluster import sweep_on

        data = sweep_on(client, scenario, lab_options, settings, shards, progress)
    else:
        settings |= {"shard": shard, "shards": shards}
        made = _Sweep(scenario, lab_options, settings)
        data = []
        for number, case in enumerate(made.cases, 1):
            data.append(made.run(case))
            if progress:
                show_progress(number, len(made.cases))
    return SweepReport(tuple(map(result_of, data)), time.perf_counter() - begin)


def _refuse_modes(options: Mapping[str, object], instead: str) -> None:
    """What is done in each mode in turn has no mode of its own."""
    for name in ("mode", "asynchronous", "pseudo_async", "async_delay"):
        if name in options:
            raise TypeError(f"{name}: the mode is given as {instead!r}")


def show_progress(done: int, total: int) -> None:
    """A bar on standard error."""
    width = 40
    bar = "#" * (width * done // max(total, 1))
    print(f"\rsweeping [{bar:<{width}}] {done}/{total}", end="\n" if done == total else "",
          file=sys.stderr, flush=True)


def walk(scenario: str | Sequence[str], *, seed: int = 1, steps: int = 1000,
         **options: Any) -> Run:
    """Random edits, faults, time and results on a configuration, until the first irregularity.

    The same arguments give the same walk. Raises ValueError if there is no policy text to edit.
    """
    begin = run_text(_loads(scenario), options_json(options))
    return Run(kit().walk(begin, seed, steps, lambda: None))  # in which Python handles signals


def explain(what: Lab | str, policy: str | None = None, **options: Any) -> Explanations:
    """Why what is attached in a lab, or by policy text in a new lab, is or is not programmed."""
    if isinstance(what, Lab):
        return what.explain(policy)
    with Lab(**options) as lab:
        lab.load(what)
        return lab.explain(policy)
