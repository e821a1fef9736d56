# SPDX-License-Identifier: Apache-2.0
"""A failure, and the tries after it: 1, 2, 4 ... seconds later."""

from datetime import timedelta

from policies import EDGE
from policymaptest import Lab


def test_a_policy_is_programmed_once_there_is_room(lab: Lab) -> None:
    lab.inject("commitError", "table full")
    lab.load(EDGE)
    assert lab.failure("edge").error == "table full"
    assert "next try in 1 s" in str(lab.explain("edge"))
    lab.clear_faults()
    lab.advance(timedelta(seconds=1))
    assert lab.explain() == ["edge/input ipv4: programmed at Ethernet1"]
    assert [entry.error for entry in lab.journal.calls("commitPolicy")] == ["table full", ""]
