# SPDX-License-Identifier: Apache-2.0
"""A state machine of Hypothesis, ready to subclass.

    class Machine(PolicyMachine):
        lab_options = {"update_action": True}

        @invariant()
        def no_more_than_ten_rules(self):
            assert all(record.rule_count <= 10 for record in self.lab.records())

    TestMachine = Machine.TestCase
"""

from __future__ import annotations

from collections.abc import Mapping
from typing import Any, ClassVar

from hypothesis import strategies as st
from hypothesis.stateful import RuleBasedStateMachine, initialize, rule

from . import strategies
from .lab import Lab
from .strategies import Configuration


class PolicyMachine(RuleBasedStateMachine):
    """Edits, faults, results and time on a configuration; `lab` is the lab, `configuration` what
    it has loaded first.

    At the end of each run all faults end, time passes, and the lab must be as a new one with the
    same configuration, without findings.
    """

    # To be overridden: what the labs are, and what they load first.
    lab_options: ClassVar[Mapping[str, Any]] = {}
    configurations: ClassVar[st.SearchStrategy[Configuration]] = strategies.configurations()

    lab: Lab
    configuration: Configuration

    def __init__(self) -> None:
        super().__init__()
        self.lab = Lab(**self.lab_options)

    @initialize(data=st.data())
    def load(self, data: st.DataObject) -> None:
        self.configuration = data.draw(self.configurations, label="configuration")
        self.lab.load(self.configuration.text)

    @rule(data=st.data())
    def edit(self, data: st.DataObject) -> None:
        self.lab.load(data.draw(strategies.edits(self.configuration), label="edit"))

    @rule(plan=strategies.fault_plans())
    def plan(self, plan: str) -> None:
        self.lab.plan(plan)

    @rule(operation=st.sampled_from(["create", "delete", "commit", "addRule", "addIntf"]))
    def inject(self, operation: str) -> None:
        self.lab.inject(f"{operation}Error", "injected")

    @rule()
    def clear_faults(self) -> None:
        self.lab.clear_faults()

    @rule(seconds=st.integers(1, 10))
    def advance(self, seconds: int) -> None:
        self.lab.advance(seconds)

    @rule()
    def trigger(self) -> None:
        self.lab.trigger()

    @rule()
    def detach_and_attach(self) -> None:
        self.lab.detach_all()
        self.lab.attach_all()

    def teardown(self) -> None:
        found = self.lab.check()
        found += self.lab.close()
        assert not found, "\n".join(found)
