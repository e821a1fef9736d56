# SPDX-License-Identifier: Apache-2.0
"""Sweeps, random walks and recorded runs."""

from __future__ import annotations

import dataclasses
import json
import os
import pathlib
import sys
import time
from collections.abc import Callable, Iterable, Iterator, Sequence
from typing import Any, Union

import kor

from .journal import Journal
from .lab import MODES, Explanations, Lab, modes_of, options_json

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


@dataclasses.dataclass(frozen=True)
class Run:
    """What was done to a lab, and what happened, as a file for replay and minimise."""

    text: str  # JSON lines

    def _lines(self) -> Iterator[dict[str, Any]]:
        return map(json.loads, filter(None, self.text.splitlines()))

    @property
    def steps(self) -> tuple[dict[str, Any], ...]:
        """As {"step": "load", "name": ..., "text": ...}."""
        return tuple(each for each in self._lines() if "step" in each)

    @property
    def findings(self) -> tuple[str, ...]:
        return tuple(each["finding"] for each in self._lines() if "finding" in each)

    @property
    def journal(self) -> Journal:
        return Journal.from_json_lines(self.text.splitlines())

    def minimise(self) -> Run:
        """The shortest run that comes to something of the same kind.

        Raises ValueError if nothing of the run is irregular.
        """
        return Run(_kit().minimise(self.text))

    def save(self, path: str | os.PathLike[str]) -> None:
        pathlib.Path(path).write_text(self.text)


def _kit() -> Any:
    return kor.ns.PolicyMapTestKit.Kit()


def run_text(steps: Iterable[dict[str, Any]], options: str, reading: str = "strict") -> str:
    """A run file: what is done to a lab with these options, as the kit writes it."""
    lines = [{"run": 1}, {"options": json.loads(options), "reading": reading}, *steps]
    return "".join(json.dumps(each) + "\n" for each in lines)


def _loads(scenario: str | Sequence[str]) -> list[dict[str, Any]]:
    texts = [scenario] if isinstance(scenario, str) else scenario
    return [{"step": "load", "name": f"text {number}", "text": text}
            for number, text in enumerate(texts, 1)]


def _sweep_of(scenario: Scenario, options: str, settings: dict[str, Any]) -> Any:
    """Pure in its arguments, so it can be made again on any machine."""
    if not callable(scenario) and not isinstance(scenario, (str, Sequence)):
        raise TypeError("scenario: expected policy text, a list of such texts, or a function, "
                        f"found {scenario!r}")
    if callable(scenario):
        perform = scenario  # keeps its type in the function below

        def call(lab: Any) -> None:
            perform(Lab._of(lab))

        return _kit().sweep(run_text([], options), json.dumps(settings), call)
    return _kit().sweep(run_text(_loads(scenario), options), json.dumps(settings), None)


def run_shard(scenario: Scenario, options: str, settings: dict[str, Any]) -> list[dict[str, Any]]:
    """All cases of one shard as plain data: a pure function of its arguments."""
    made = _sweep_of(scenario, options, settings)
    return [json.loads(made.run(case)) for case in made.cases()]


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

    Raises what the scenario raises, and ValueError for a shard that does not exist.
    """
    for name, count in (("shards", shards), ("shard", shard)):
        if isinstance(count, bool) or not isinstance(count, int):
            raise TypeError(f"{name}: expected a number, found {count!r}")
        if count < 1:
            raise ValueError(f"{name}: expected 1 or more, found {count!r}")
    if shard > 1 and client is not None:
        raise ValueError("shard: with a client all shards run")
    settings = {"modes": list(modes_of(modes)), "pairs": pairs, "seed": seed, "journals": journals}
    lab_options = options_json(**options)
    begin = time.perf_counter()
    if progress is None:
        progress = sys.stderr.isatty()
    if client is not None:
        from .cluster import sweep_on

        data = sweep_on(client, scenario, lab_options, settings, shards, progress)
    else:
        settings |= {"shard": shard, "shards": shards}
        made = _sweep_of(scenario, lab_options, settings)
        cases = made.cases()
        data = []
        for number, case in enumerate(cases, 1):
            data.append(json.loads(made.run(case)))
            if progress:
                show_progress(number, len(cases))
    return SweepReport(tuple(map(result_of, data)), time.perf_counter() - begin)


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
    return Run(_kit().walk(run_text(_loads(scenario), options_json(**options)), seed, steps))


def replay(run: Run | str | os.PathLike[str]) -> Run:
    """Performs the steps of a run, or of a run file, again, and returns what happens now."""
    text = run.text if isinstance(run, Run) else pathlib.Path(run).read_text()
    return Run(_kit().perform(text))


def explain(what: Lab | str, policy: str | None = None, **options: Any) -> Explanations:
    """Why what is attached in a lab, or by policy text in a new lab, is or is not programmed."""
    if isinstance(what, Lab):
        return what.explain(policy)
    with Lab(**options) as lab:
        lab.load(what)
        return lab.explain(policy)
