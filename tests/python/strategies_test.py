# SPDX-License-Identifier: Apache-2.0
"""The strategies of Hypothesis: valid, wide, and small in the end."""

import pytest

pytest.importorskip("hypothesis", reason="needs python3-hypothesis")

from hypothesis import HealthCheck, Phase, find, given, settings  # noqa: E402
from hypothesis import strategies as st  # noqa: E402
from hypothesis.stateful import invariant, run_state_machine_as_test  # noqa: E402
from policymaptest import Lab, strategies  # noqa: E402
from policymaptest.stateful import PolicyMachine  # noqa: E402

PROFILE = settings(derandomize=True, deadline=None, database=None, max_examples=30,
                   suppress_health_check=list(HealthCheck))
FINDING = settings(PROFILE, max_examples=300)


def loaded(*texts):
    with Lab() as lab:
        for text in texts:
            lab.load(text)
        return lab.check()


@pytest.mark.parametrize("family", strategies.FAMILIES)
def test_all_rules_are_valid(family):
    @PROFILE
    @given(strategies.rules(family))
    def check(rule):
        assert loaded(strategies.AccessList("a", family, ((10, rule),)).text) == ()

    check()


@PROFILE
@given(strategies.configurations())
def test_all_configurations_are_programmed(configuration):
    with Lab() as lab:
        lab.load(configuration.text)
        assert len(lab.explain()) >= 1 and lab.check() == ()
        assert not any("missing" in line for line in lab.explain())


@PROFILE
@given(st.data())
def test_all_edits_are_valid_one_after_the_other(data):
    configuration = data.draw(strategies.configurations())
    with Lab() as lab:
        lab.load(configuration.text)
        for _ in range(5):
            lab.load(data.draw(strategies.edits(configuration)))
        assert lab.check() == ()


@PROFILE
@given(strategies.fault_plans())
def test_all_plans_are_valid(plan):
    with Lab() as lab:
        lab.plan(plan)
        assert lab.close() == ()


SMALLEST = """ip routing
ipv6 unicast-routing
ip access-list list1
  10 permit ip any any
class-map match-any class1
  match ip access-group list1
policy-map policy1
  class class1
interface Ethernet1
  ip address 192.0.2.1/24
  ipv6 address 2001:db8::1/64
  service-policy input policy1"""


def test_the_smallest_configuration_is_the_simplest():
    assert find(strategies.configurations(), lambda each: True, settings=FINDING).text == SMALLEST


@pytest.mark.parametrize("strategy, text", [
    (strategies.rules("ipv4"), "permit ip any any"),
    (strategies.rules("ipv6"), "permit ipv6 any any"),
    (strategies.rules("mac"), "permit any any"),
    (strategies.ports(), ""),
    (strategies.ipv4_addresses(), "0.0.0.0"),
    (strategies.ipv6_addresses(), "::"),
    (strategies.mac_addresses(), "0000.0000.0000"),
])
def test_smallest_parts(strategy, text):
    assert find(strategy, lambda each: True, settings=FINDING) == text


def test_the_strategies_reach_everything():
    seen = []

    @settings(PROFILE, max_examples=150)
    @given(strategies.configurations())
    def collect(configuration):
        seen.append(configuration.text)

    collect()
    for text in ("deny ", "range ", "neq ", "gt ", "lt ", "host ", "/0", "dscp ", "established",
                 "vlan ", "sctp", "list2", "class class2", "set action3 ", "policy-map policy2",
                 "Ethernet2", "output ", "ipv6 access-list", "mac access-list"):
        assert any(text in each for each in seen), text


def test_a_seeded_bug_is_found_in_a_small_configuration():
    def fails(configuration):
        with Lab() as lab:
            lab.load(configuration.text)
            return any("deny" in rule.match
                       for record in lab.records() for rule in record.rules)

    found = find(strategies.configurations(), fails, settings=FINDING)
    assert len(found.text.splitlines()) == len(SMALLEST.splitlines())


def test_a_value_can_be_written_into_a_test():
    found = find(strategies.configurations(), lambda each: True, settings=FINDING)
    names = {each: getattr(strategies, each) for each in (
        "Configuration", "AccessList", "ClassMap", "PolicyMap", "Interface")}
    assert eval(repr(found), names) == found and str(found) == found.text


@pytest.mark.parametrize("options", [
    {}, {"update_action": True}, {"mode": "asynchronous"}, {"mode": "pseudo-asynchronous"}])
def test_the_machine_finds_nothing_in_the_core(options):
    machine = type("Machine", (PolicyMachine,), {"lab_options": options})
    run_state_machine_as_test(machine, settings=settings(PROFILE, max_examples=5,
                                                         stateful_step_count=10))


class WithTooManyRules(PolicyMachine):
    @invariant()
    def at_most_three_rules(self):
        assert all(record.rule_count <= 3 for record in self.lab.records()), "too many rules"


def test_a_machine_with_an_invariant_of_its_own_fails():
    with pytest.raises(AssertionError, match="too many rules"):
        run_state_machine_as_test(WithTooManyRules, settings=settings(
            PROFILE, max_examples=30, stateful_step_count=5, report_multiple_bugs=False,
            phases=[Phase.generate]))
