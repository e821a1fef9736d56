# SPDX-License-Identifier: Apache-2.0
"""A whole configuration from a file: what is programmed, and why the rest is not.

POLICYMAPTEST_CORPUS may name a folder with more configurations.
"""

import os
import pathlib

import policymaptest
from policymaptest import Lab
import pytest

EXAMPLES = pathlib.Path(__file__).parents[1]
CORPUS = os.environ.get("POLICYMAPTEST_CORPUS")


def test_all_policies_of_the_campus_are_programmed(lab: Lab) -> None:
    lab.load_file(EXAMPLES / "campus.cfg")
    assert all("programmed at" in line for line in lab.explain())
    before = lab.records()
    lab.load_file(EXAMPLES / "campus-edit.cfg")
    changes = policymaptest.difference(before, lab.records())
    assert any("action" in line for line in changes)
    assert lab.check() == ()


@pytest.mark.skipif(not CORPUS, reason="POLICYMAPTEST_CORPUS is not set")
def test_configurations_of_others_are_read(lab: Lab) -> None:
    files = sorted(pathlib.Path(CORPUS or "").rglob("*.cfg"))
    assert files
    for file in files[:3]:
        with Lab() as each:
            each.load_file(file, tolerant=True)
            assert each.check() == ()
