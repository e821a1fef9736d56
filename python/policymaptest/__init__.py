# SPDX-License-Identifier: Apache-2.0
"""Tests of policy-maps: labs, records, journals, planned faults, sweeps.

    from policymaptest import Lab

    def test_web_traffic_gets_its_action():
        with Lab() as lab:
            lab.load(POLICY)
            assert lab.record("edge").rule("web 10").actions["action1"] == 7
"""

import kor

# The types that the other modules use.
kor.load("libPolicyMapTest.so")
kor.load("libPolicyMapTestKit.so")
kor.load("libPolicyMapPackets.so")

from .approval import ApprovedSnapshot  # noqa: E402
from .faults import Capacity, Fault, FaultScope, MetFault, PlannedFault  # noqa: E402
from .journal import Journal, JournalEntry  # noqa: E402
from .lab import Explanations, HeldResult, Lab  # noqa: E402
from .packets import (  # noqa: E402
    PacketChange, PacketDifference, PacketResults, PacketRule, PacketState, Proof, Trace, TraceLine,
    Treatment, TwoClasses, Unused, UnusedRule,
)
from .records import Difference, Record, Rule, Snapshot, difference  # noqa: E402
from .runs import Run, replay  # noqa: E402
from .sweeps import SweepReport, SweepResult, explain, sweep, walk  # noqa: E402

__all__ = [
    "ApprovedSnapshot", "Capacity", "Difference", "Explanations", "Fault", "FaultScope",
    "HeldResult", "Journal", "JournalEntry", "Lab", "MetFault", "PacketChange", "PacketDifference",
    "PacketResults", "PacketRule", "PacketState", "PlannedFault", "Proof", "Record", "Rule", "Run",
    "Snapshot", "SweepReport", "SweepResult", "Trace", "TraceLine", "Treatment", "TwoClasses",
    "Unused", "UnusedRule", "difference", "explain", "replay", "sweep", "walk",
]
