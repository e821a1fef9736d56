# SPDX-License-Identifier: Apache-2.0
"""The labs of one test: what they found, and what a report of its failure shows."""

from __future__ import annotations

import dataclasses
import pathlib
import sys
from typing import Any

import kor

from .journal import Journal, JournalEntry
from .lab import Lab
from .runs import Run, replay

_JOURNAL_LINES = 200
_MOST_LABS = 8  # that a report shows


@dataclasses.dataclass
class _Ended:
    """What is shown of a lab after its end."""

    journal: Journal
    explanation: str


class LabsOfTest:
    """All labs that are made while the test runs, whoever makes them; see watch_labs()."""

    def __init__(self) -> None:
        self.in_use = True  # until the test has returned
        self._labs: dict[Lab, _Ended | None] = {}
        self._findings: list[str] = []

    def made(self, lab: Lab) -> None:
        self._labs[lab] = None
        if len(self._labs) > _MOST_LABS:
            self._forget_one()

    def closing(self, lab: Lab) -> None:
        # The report of a failed test has been written before its fixtures end its labs.
        if lab in self._labs and (self.in_use or lab.findings()):
            self._labs[lab] = _Ended(lab.journal, str(lab.explain()))

    def _forget_one(self) -> None:
        """The oldest that has ended, or that nobody else holds. Keeps its findings."""
        only_here = 3  # the dictionary, the variable, and the argument of getrefcount()
        for lab in self._labs:
            if lab.closed or sys.getrefcount(lab) <= only_here:
                lab.close()
                self._findings += lab.take_findings()
                del self._labs[lab]
                return

    def findings(self) -> list[str]:
        """What the labs have found, without what the test has taken."""
        return self._findings + [each for lab in self._labs for each in lab.findings()]

    def end_plans(self) -> None:
        """A fault of a lab that goes on was not met by the end of the test."""
        for lab in self._labs:
            if not lab.closed:
                lab.end_plans()

    def sections(self, path: pathlib.Path) -> list[tuple[str, str]]:
        """What a report shows, as titles and texts. Writes a replay file for each lab; `path` is
        that of the first one without the ending."""
        sections: list[tuple[str, str]] = []
        for number, (lab, ended) in enumerate(self._labs.items(), 1):
            if lab.closed and ended is None:
                continue
            title = "lab" if len(self._labs) == 1 else f"lab {number}"
            shown = ended or _Ended(lab.journal, str(lab.explain()))
            sections += [(f"{title}: journal", _newest(shown.journal)),
                         (f"{title}: explanation", shown.explanation),
                         (f"{title}: replay",
                          _save(lab.run(), shown.journal, path.with_name(f"{path.name}-{number}.run")))]
        return sections


def _newest(journal: Journal) -> str:
    left_out = len(journal) - _JOURNAL_LINES
    head = f"({left_out} earlier entries left out)\n" if left_out > 0 else ""
    return head + str(journal[-_JOURNAL_LINES:])


def _save(run: Run, journal: Journal, path: pathlib.Path) -> str:
    """Writes a run with what happens when it is performed; returns what is said of it."""
    said = f"policymap-lab replay {path}"
    try:
        run = replay(run)
        if other := _difference(journal, run.journal):
            said += ("\nit does not do all that the test did, as writes to objects and own helpers; "
                     f"it differs at\n  {other}")
    except kor.Exception as error:
        said += f"\nit cannot be performed: {error}"
    try:
        path.parent.mkdir(parents=True, exist_ok=True)
        run.save(path)
    except OSError as error:
        return f"it cannot be written: {error}"
    return said


def _difference(journal: Journal, replayed: Journal) -> str:
    """The first call or result of a journal that was not replayed; empty if there is none."""

    def told(each: JournalEntry) -> dict[str, Any]:
        return {"kind": each.kind, "operation": each.operation, "error": each.error,
                "time": each.time, "rule": (each.policy, each.option, each.acl, each.seq)}

    def calls(entries: Journal) -> list[JournalEntry]:
        return [each for each in entries if each.kind in ("call", "result")]

    if journal and journal[0].number != 1:
        return ""  # the first entries were dropped
    before, again = calls(journal), calls(replayed)
    for entry, other in zip(before, again):
        if told(entry) != told(other):
            return str(entry)
    return str(before[len(again)]) if len(before) > len(again) else ""
