# SPDX-License-Identifier: Apache-2.0
"""Every call of the helper fails in turn: does all recover?"""

from policies import EDGE, EDIT
import policymaptest
from policymaptest import Lab
import pytest


@pytest.mark.policymap_sweep(shards=2)
def test_everything_recovers(lab: Lab) -> None:
    lab.load(EDGE)
    lab.load(EDIT)


def test_the_report_tells_more() -> None:
    report = policymaptest.sweep([EDGE, EDIT], modes=["synchronous"], update_action=True)
    assert not report.failed, report
    assert report.injected > len(report.results) / 2


def test_random_edits_recover() -> None:
    walk = policymaptest.walk(EDGE, seed=7, steps=50)
    assert walk.findings == ()
