# SPDX-License-Identifier: Apache-2.0
"""Planned faults: any call, at any time. A fault that is never met fails the test."""

from policies import EDGE
from policymaptest import Lab


def test_the_second_commit_fails_after_it_was_carried_out(lab: Lab) -> None:
    lab.load(EDGE)
    with lab.plan('commitPolicy nth=1 after text="parity error"') as faults:
        lab.load("ip access-list web\n 20 permit tcp any any eq 443")
        assert [met.call for met in faults.met] == ["commitPolicy(edge/input ipv4)"]
        assert lab.failure("edge").error == "parity error"
    assert lab.check() == ()


def test_a_table_with_room_for_one_rule(lab: Lab) -> None:
    lab.plan("capacity rules=1")
    lab.load(EDGE + "ip access-list web\n 20 permit udp any any eq 53")
    assert lab.failure("edge").error.startswith("no room, rules=1")
    lab.load("ip access-list web\n no 20")
    assert len(lab.record("edge").rules) == 1
