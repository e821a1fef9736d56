# SPDX-License-Identifier: Apache-2.0
"""A state machine of Hypothesis: random configurations, edits, faults and time."""

import pytest

pytest.importorskip("hypothesis", reason="needs python3-hypothesis")

from hypothesis import settings  # noqa: E402
from hypothesis.stateful import invariant  # noqa: E402
from policymaptest.stateful import PolicyMachine  # noqa: E402


class Machine(PolicyMachine):
    """That everything recovers is checked by the base class; this is an invariant of our own."""

    @invariant()
    def each_policy_is_created_once_at_least(self) -> None:
        assert all(record.create_count >= 1 for record in self.lab.records() if record.created)


TestMachine = Machine.TestCase
TestMachine.settings = settings(max_examples=5, stateful_step_count=10, deadline=None,
                                database=None, derandomize=True)
