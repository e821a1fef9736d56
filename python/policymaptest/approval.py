# SPDX-License-Identifier: Apache-2.0
"""Approved snapshots: files that the records of tests are compared with."""

from __future__ import annotations

import hashlib
import pathlib
import re

from .records import Snapshot, difference

_FOLDER = "__approved__"


def file_name(test: str) -> str:
    """Of a test; two tests have different ones, and each fits into a folder."""
    name = re.sub(r"[^\w.-]+", "_", test).strip("_")
    if re.fullmatch(r"[\w./-]+(::[\w.-]+)*(\[[\w.-]+\])?", test) and len(name) <= 120:
        return name
    return f"{name[:100]}-{hashlib.sha256(test.encode(errors='replace')).hexdigest()[:8]}"


def path_for(test_file: pathlib.Path, test: str) -> pathlib.Path:
    """Where the snapshot of a test is."""
    return test_file.parent / _FOLDER / f"{test_file.stem}.{file_name(test)}.json"


class Approval:
    """What happens to the approved snapshots of a session."""

    def __init__(self, approve: bool) -> None:
        self.approve = approve
        self.used: set[pathlib.Path] = set()
        self.passed: set[pathlib.Path] = set()  # the snapshots of tests that have passed

    def unused(self, files: set[pathlib.Path], own: set[pathlib.Path]) -> list[pathlib.Path]:
        """The snapshots of these test files, and of test files beside them that are gone, that no
        test has. `own` are those of the tests; named ones are unused if their test has passed."""
        found = [path for folder in {each.parent for each in files}
                 for path in (folder / _FOLDER).glob("*.json")]
        return sorted(path for path in found if path not in own and path not in self.used
                      and self._is_gone(path, files, own))

    def _is_gone(self, path: pathlib.Path, files: set[pathlib.Path],
                 own: set[pathlib.Path]) -> bool:
        test = path.parent.parent / (path.name.partition(".")[0] + ".py")
        base = path.with_name(path.stem.partition("~")[0] + ".json")
        if base != path and base in own:
            return base in self.passed
        return test in files or not test.exists()


class ApprovedSnapshot:
    """What `lab.records()` is compared with: a file of approved records.

    A test that compares several snapshots names the others: `approved("after the edit")`.
    """

    def __init__(self, path: pathlib.Path, approval: Approval) -> None:
        self.path = path
        self._approval = approval
        self._written: Snapshot | None = None

    def __call__(self, name: str) -> ApprovedSnapshot:
        """A further one."""
        path = self.path.with_name(f"{self.path.stem}~{file_name(name)}.json")
        return ApprovedSnapshot(path, self._approval)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Snapshot):
            return NotImplemented
        self._approval.used.add(self.path)
        if self._approval.approve:
            self._write(other)
            return True
        return self.path.exists() and self._read() == other

    __hash__ = None  # type: ignore[assignment]

    def _write(self, records: Snapshot) -> None:
        if self._written not in (None, records):
            raise ValueError(f"{self.path.name}: the test compares different records with it; give "
                             'the others names, as approved("after the edit")')
        self._written = records
        self.path.parent.mkdir(parents=True, exist_ok=True)
        self.path.write_text(records.to_json())

    def _read(self) -> Snapshot:
        try:
            return Snapshot.from_json(self.path.read_text())
        except ValueError as error:
            raise ValueError(f"{self.path} is no snapshot: {error}; --policymap-approve writes it "
                             "again") from None

    def explain(self, actual: Snapshot) -> list[str]:
        """Why `actual` is not equal, in lines."""
        if not self.path.exists():
            return [f"there is no approved snapshot {self.path}",
                    "look at the records, then approve them with --policymap-approve",
                    *str(actual).splitlines()]
        return [f"other records than in {self.path}, approved -> now:",
                *difference(self._read(), actual)]

    def __repr__(self) -> str:
        return f"<approved snapshot {self.path.name}>"
