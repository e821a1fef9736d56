# SPDX-License-Identifier: Apache-2.0
"""Recorded runs: what was done to a lab, as a file that can be performed again."""

from __future__ import annotations

import contextlib
import dataclasses
import json
import os
import pathlib
from collections.abc import Iterable, Iterator
from typing import Any

import kor

from .journal import Journal


def kit() -> Any:
    """The test kit, for what needs no lab."""
    return kor.ns.PolicyMapTestKit.Kit()


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
        return Run(kit().minimise(self.text))

    def save(self, path: str | os.PathLike[str]) -> None:
        pathlib.Path(path).write_text(self.text)


def run_text(steps: Iterable[dict[str, Any]], options: str) -> str:
    """A run file: what is done to a lab with these options, as the kit writes it."""
    lines = [{"run": 1}, {"options": json.loads(options), "reading": "strict"}, *steps]
    return "".join(json.dumps(_writable(each)) + "\n" for each in lines)


def _writable(value: Any) -> Any:
    """Without bytes that are no UTF-8, which JSON cannot have."""
    if isinstance(value, str):
        return value.encode(errors="replace").decode()
    if isinstance(value, dict):
        return {name: _writable(each) for name, each in value.items()}
    return [_writable(each) for each in value] if isinstance(value, list) else value


def replay(run: Run | str | os.PathLike[str]) -> Run:
    """Performs the steps of a run, or of a run file, again, and returns what happens now."""
    text = run.text if isinstance(run, Run) else pathlib.Path(run).read_text()
    return Run(kit().perform(text))


class Recording:
    """What is done to a lab, as the steps of a run.

    A step that is refused changes nothing, so it is kept only if it is the last one.
    """

    def __init__(self) -> None:
        self._steps: list[dict[str, Any]] = []
        self._refused: list[dict[str, Any]] = []
        self.scopes: list[Any] = []  # of the fault plans that last; without a reference they end

    @contextlib.contextmanager
    def step(self, step: str, **members: Any) -> Iterator[None]:
        """Around what is done."""
        done = {"step": step} | members
        self._refused = []
        try:
            yield
        except (kor.RangeException, kor.LookupException):
            self._refused = [done]
            raise
        except BaseException:
            self._steps.append(done)
            raise
        self._steps.append(done)

    def end(self, scope: Any, plan: str) -> None:
        """Ends the scope of a plan, if it lasts."""
        if scope in self.scopes:
            with self.step("end", text=plan):
                scope.end()
            self.scopes.remove(scope)

    @property
    def steps(self) -> list[dict[str, Any]]:
        return self._steps + self._refused
