# SPDX-License-Identifier: Apache-2.0
"""Results that come later, and out of their order."""

from policies import EDGE
from policymaptest import Lab
import pytest


@pytest.mark.policymap(asynchronous=True)
def test_each_result_is_asked_for(lab: Lab) -> None:
    lab.load(EDGE)
    assert "waiting for the result of addIntfToPolicy" in str(lab.explain())
    lab.trigger()
    assert "waiting for the result of commitPolicy" in str(lab.explain())
    lab.trigger()
    assert lab.explain() == ["edge/input ipv4: programmed at Ethernet1"]


@pytest.mark.policymap(asynchronous=True, async_delay=0.5)
def test_a_result_is_held_back(lab: Lab) -> None:
    with lab.plan("commitPolicy hold once"):
        lab.load(EDGE)
        lab.advance(1)
        (held,) = lab.held_results()
        assert held.call == "commitPolicy(edge/input ipv4)"
        lab.release()
    assert lab.explain() == ["edge/input ipv4: programmed at Ethernet1"]
