# SPDX-License-Identifier: Apache-2.0
"""One test in all three modes: synchronous, asynchronous, pseudo-asynchronous."""

from policies import EDGE, EDIT
from policymaptest import Lab
import pytest


@pytest.mark.policymap(modes="all", async_delay=0.1)
def test_an_edit_arrives(lab: Lab) -> None:
    lab.load(EDGE)
    lab.advance(1)
    lab.load(EDIT)
    lab.advance(1)
    assert lab.record("edge").rule("web 10").actions["action1"] == 8
