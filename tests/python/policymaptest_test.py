# SPDX-License-Identifier: Apache-2.0
"""Labs, records, journals, faults and runs from Python."""

import copy
import datetime
import gc
import inspect
import json
import os
import pathlib
import pickle
import subprocess
import sys
import weakref

import kor
import policymaptest as pmt
import pytest

POLICY = """ip access-list web
  10 permit tcp any any eq 80
  20 permit tcp any any eq 443
class-map match-any web
  match access-group web
policy-map edge
  class web
    set action1 7
interface Ethernet1
  service-policy input edge"""
EDIT = "policy-map edge\n class web\n  set action1 8"


@pytest.fixture
def lab():
    with pmt.Lab() as made:
        yield made


# Labs and records --------------------------------------------------------------------------------


def test_policy_text_becomes_records(lab):
    lab.load(POLICY)
    record = lab.record("edge")
    assert (record.created, record.dirty, record.commit_count) == (True, False, 1)
    assert record.interfaces == ("Ethernet1",) and record.rule_count == 2
    rule = record.rule("web 10")
    assert rule.match == "permit tcp any any eq 80"
    assert rule.actions == {"action1": 7, "action2": 0, "action3": 0}
    assert rule.sub_rules == ("dst 80",)
    assert record.rule("web web 20").name == "web 20"
    assert record == lab.records()[0] == lab.records().record("edge", "input", "ipv4")


def test_what_is_not_there_is_a_lookup_error_that_names_what_is(lab):
    lab.load(POLICY)
    with pytest.raises(LookupError, match="no rule 'web 30'; there are: web web 10, web web 20"):
        lab.record("edge").rule("web 30")
    with pytest.raises(LookupError, match="no record of core/input; there are: edge/input ipv4"):
        lab.record("core")
    with pytest.raises(LookupError):
        lab.failure("core")
    with pytest.raises(LookupError):
        lab.explain("core")


def test_bad_input_is_a_value_error_and_changes_nothing(lab):
    lab.load(POLICY)
    before = lab.records()
    with pytest.raises(ValueError, match="policy text:1:1: expected a command"):
        lab.load("nonsense")
    with pytest.raises(ValueError, match="plan:1:"):
        lab.plan("addRul nth=3")
    with pytest.raises(ValueError, match="commitError"):
        lab.inject("comitError", "full")
    with pytest.raises(ValueError):
        lab.advance(-1)
    with pytest.raises(TypeError, match="unexpected keyword argument .update_actions."):
        pmt.Lab(update_actions=True)
    with pytest.raises(TypeError, match="update_action: expected True or False, found 'no'"):
        pmt.Lab(update_action="no")
    with pytest.raises(ValueError, match="expected one of synchronous"):
        pmt.Lab(mode="later")
    assert lab.records() == before


def test_records_are_plain_data(lab):
    lab.load(POLICY)
    records = lab.records()
    data = records.to_dict()
    assert data == json.loads(json.dumps(data))
    assert data[0]["rules"][0]["action1"] == 7
    assert pmt.Record.from_dict(data[0]) == records[0]
    assert pmt.Snapshot.from_json(records.to_json()) == records
    assert copy.deepcopy(records) == records == pickle.loads(pickle.dumps(records))
    assert hash(records) == hash(pmt.Snapshot(records))
    assert len(records.rows()) == 2 and records.rows()[1]["seq"] == 20


def test_records_are_shown_as_tables(lab):
    lab.load(POLICY)
    records = lab.records()
    page = records._repr_html_()
    assert page.count("<tr>") == 3 and "permit tcp any any eq 443" in page
    assert "&lt;" in pmt.Journal([pmt.JournalEntry(1, 0, "call", "<b>")])._repr_html_()
    assert "<th>match</th>" in pmt.Snapshot()._repr_html_()
    assert "web web 10: permit tcp any any eq 80, action1 7" in str(records)


def test_a_frame_has_a_row_per_rule(lab):
    pandas = pytest.importorskip("pandas")
    lab.load(POLICY)
    frame = lab.records().to_frame()
    assert isinstance(frame, pandas.DataFrame)
    assert list(frame["seq"]) == [10, 20] and list(frame["action1"]) == [7, 7]
    assert "addRule" in set(lab.journal.to_frame()["operation"])


def test_a_terminal_shows_a_rich_table(lab):
    console = pytest.importorskip("rich.console")
    lab.load(POLICY)
    shown = console.Console(width=200, record=True, file=open("/dev/null", "w"))
    with shown.file:
        shown.print(lab.records())
    assert "permit tcp any any eq 80" in shown.export_text()


def test_a_difference_names_policy_rule_and_field(lab):
    lab.load(POLICY)
    before = lab.records()
    assert pmt.difference(before, lab.records()) == ()
    assert str(pmt.difference(before, before)) == "no difference"
    lab.load(EDIT + "\nip access-list web\n no 20\n 30 permit udp any any eq 53\n"
             "interface Ethernet2\n service-policy input edge")
    assert pmt.difference(before, lab.records()) == (
        "edge/input ipv4: createCount 1 -> 2",
        "edge/input ipv4: commitCount 1 -> 2",
        "edge/input ipv4: interface Ethernet2 added",
        "edge/input ipv4: rule web 20 removed: permit tcp any any eq 443",
        "edge/input ipv4: rule web 10: action1 7 -> 8",
        "edge/input ipv4: rule web 30 added: permit udp any any eq 53",
    )
    rules = before[0].rules
    swapped = pmt.Snapshot([pmt.Record.from_dict(
        before[0].to_dict() | {"rules": [each.to_dict() for each in reversed(rules)]})])
    assert pmt.difference(before, swapped) == ("edge/input ipv4: rules reordered",)
    assert pmt.difference(pmt.Snapshot(), before) == ("edge/input ipv4: new record, 2 rules",)
    assert pmt.difference(before, pmt.Snapshot()) == ("edge/input ipv4: no record any more",)


def test_files_are_loaded(lab, tmp_path):
    path = tmp_path / "edge.cfg"
    path.write_text(POLICY + "\nunknown line\n")
    with pytest.raises(ValueError, match="edge.cfg:11:1"):
        lab.load_file(path)
    lab.load_file(str(path), tolerant=True)
    assert lab.record("edge").created
    with pytest.raises(ValueError, match="none.cfg"):
        lab.load_file(tmp_path / "none.cfg")


RULES = "@10.0.0.0/8\t0.0.0.0/0\t0 : 65535\t80 : 80\t0x06/0xFF\t0x0000/0x0000\n" * 4


def test_a_filter_set_is_loaded_from_a_path_or_a_text(lab, tmp_path):
    lab.load_rules(RULES, classes=2, interfaces=3)
    record = lab.record("rules")
    assert record.rule_count == 4 and len(record.interfaces) == 3
    assert {each.class_name for each in record.rules} == {"rules-1", "rules-2"}
    path = tmp_path / "rules"
    path.write_text(RULES)
    lab.load_rules(path)
    assert {each.class_name for each in lab.record("rules").rules} == {"rules-1"}
    with pytest.raises(ValueError):
        lab.load_rules(RULES, classes=0)


def test_labs_do_not_influence_each_other(lab):
    with pmt.Lab() as other:
        lab.load(POLICY)
        lab.advance(5)
        assert not other.records() and (lab.now, other.now) == (5.0, 0.0)


def test_a_lab_ends_once(lab):
    lab.load(POLICY)
    lab.plan("addRule nth=9")
    assert len(lab.close()) == 1 and lab.close() == ()
    assert lab.closed and len(lab.findings()) == 1
    assert len(lab.take_findings()) == 1 and lab.findings() == ()
    with pytest.raises(ValueError, match="the lab has ended"):
        lab.settle()
    assert repr(lab) == "<Lab: ended>"


def test_everything_is_detached_and_attached_again(lab):
    lab.load(POLICY)
    lab.detach_all()
    assert not lab.record("edge").created and not lab.explain()
    lab.attach_all()
    assert lab.record("edge").created


# Faults, time and results ------------------------------------------------------------------------


def test_a_fault_fails_until_it_is_cleared(lab):
    lab.inject("commitError", "table full")
    lab.load(POLICY)
    assert lab.failure("edge").error == "table full"
    assert "table full" in str(lab.explain("edge"))
    lab.clear_faults()
    lab.advance(datetime.timedelta(seconds=1))
    assert lab.failure("edge").error == "" and lab.explain("edge") == [
        "edge/input ipv4: programmed at Ethernet1"]


def test_a_plan_tells_what_it_has_met(lab):
    with lab.plan("addRule nth=2 once text=full") as faults:
        lab.load(POLICY)
        assert [each.call for each in faults.met] == ["addRule(edge/input ipv4 web web:20)"]
        assert lab.faults() == faults.faults and lab.faults()[0].selected == 2
    assert lab.faults() == ()
    assert faults.met[0].text == "full"
    assert lab.findings() == ()


@pytest.mark.parametrize("fault, text", [
    (pmt.Fault(), "any"),
    (pmt.Fault("addRule", nth=3, once=True), "addRule nth=3 once"),
    (pmt.Fault(["addRule", "updateAction"], class_name="web", probability=0.1, seed=7),
     "addRule,updateAction class=web probability=0.1 seed=7"),
    (pmt.Fault("commitPolicy", policy="edge", effect="before", text='a "b" \\ c'),
     'commitPolicy policy=edge before text="a \\"b\\" \\\\ c"'),
    (pmt.Fault("commitPolicy", from_=2, delay=datetime.timedelta(seconds=1.5), optional=True),
     "commitPolicy from=2 delay=1.5 optional"),
    (pmt.Capacity(rules=9, rules_per_policy=4), "capacity rules=9 rules-per-policy=4"),
])
def test_faults_are_values_with_a_text_that_labs_understand(lab, fault, text):
    assert str(fault) == text
    lab.plan(fault)
    lab.end_plans()
    lab.take_findings()  # it was not met
    assert pickle.loads(pickle.dumps(fault)) == fault


def test_a_plan_is_given_by_words_or_as_several_faults(lab):
    with lab.plan("addRule", nth=2, text="full") as faults:
        lab.load(POLICY)
        assert faults.met[0].text == "full"
    scope = lab.plan(pmt.Fault("addRule", nth=1), "commitPolicy nth=1; hwInit", pmt.Capacity(rules=9))
    assert [each.fault for each in scope.faults] == ["addRule nth=1", "commitPolicy nth=1", "hwInit"]
    lab.clear_faults()
    for wrong in ({"nth": 3, "nothing": 1}, {"class": "web"}):
        with pytest.raises(TypeError):
            lab.plan("addRule", **wrong)
    with pytest.raises(TypeError, match="one fault"):
        lab.plan("addRule", "commitPolicy", nth=3)
    with pytest.raises(ValueError):
        lab.plan("addRule", effect="hold")
    lab.end_plans()
    assert len(lab.take_findings()) == 3


def test_a_plan_lasts_although_nobody_keeps_its_scope(lab):
    lab.plan("commitPolicy text=full")
    gc.collect()
    lab.load(POLICY)
    assert lab.failure("edge").error == "full"


def test_a_fault_that_is_not_met_is_a_finding(lab):
    with lab.plan("addRule nth=3"):
        lab.load(POLICY)
    (finding,) = lab.findings()
    assert "addRule nth=3" in finding
    assert lab.take_findings() == (finding,) and lab.findings() == ()


def test_results_come_when_they_are_asked_for():
    with pmt.Lab(asynchronous=True) as lab:
        lab.load(POLICY)
        assert "waiting for the result" in str(lab.explain())
        lab.trigger()
        lab.trigger()
        assert "programmed" in str(lab.explain())
    with pmt.Lab(asynchronous=True, async_delay=datetime.timedelta(milliseconds=500)) as lab:
        lab.load(POLICY)
        lab.advance(1)
        assert lab.explain() == ["edge/input ipv4: programmed at Ethernet1"]


def test_held_results_are_released():
    with pmt.Lab(asynchronous=True, async_delay=0, plan="addIntfToPolicy hold once") as lab:
        lab.load(POLICY)
        (held,) = lab.held_results()
        assert held.call == "addIntfToPolicy(edge/input ipv4 Ethernet1)" and held.error == ""
        lab.release(held.number)
        lab.release_all()
        assert lab.held_results() == ()
        with pytest.raises(LookupError):
            lab.release()
        with pytest.raises(LookupError):
            lab.release(held.number)


@pytest.mark.parametrize("mode, asynchronous", [
    ("synchronous", False), ("asynchronous", True), ("pseudo-asynchronous", True)])
def test_modes(mode, asynchronous):
    with pmt.Lab(mode=mode) as lab:
        assert lab.helper.asyncOperations is asynchronous
        assert lab.helper.pseudoAsync is (mode == "pseudo-asynchronous")


def test_the_journal_tells_what_happened(lab):
    lab.load(POLICY)
    lab.inject("commitError", "full")
    lab.load(EDIT)
    journal = lab.journal
    (created,) = journal.calls("createPolicy")
    assert (created.policy, created.direction, created.option) == ("edge", "input", "ipv4")
    assert created.cause == "rules changed" and not created.failed
    rule = journal.calls("addRule").of_class("web")[0]
    assert (rule.acl, rule.seq, rule.match) == ("web", 10, "permit tcp any any eq 80")
    assert rule.actions["action1"] == 7
    assert [each.error for each in journal.failed()] == ["full"]
    assert journal.since(journal[-1].number)[0] == journal[-1]
    assert len(journal.of_policy("edge")) == len(journal.calls()) - 1
    assert lab.journal_since(journal[-1].number) == journal[-1:]
    assert "addRule edge/input ipv4 web web:10" in str(journal)


def test_check_tells_what_is_not_as_in_a_new_lab(lab):
    lab.inject("commitError", "full")
    lab.load(POLICY)
    assert lab.check() == ()
    assert lab.record("edge").created
    record = next(iter(lab.helper.testData.values()))
    key = next(iter(record.ruleAction1))
    record.ruleAction1[key] = 99
    assert lab.check() == (f"edge/input ipv4: rule web {key.seqno}: action1 7 -> 99",)


# Observers and an own helper ---------------------------------------------------------------------


def test_an_observer_gets_value_or_key_and_member(lab):
    seen = []
    kor.observe(lab.helper, "commitError", seen.append)
    kor.observe(lab.helper, "testData", lambda key, member: seen.append((key.option.name, member)))
    lab.helper.commitError = "a"
    lab.helper.commitError = "a"
    lab.load(POLICY)
    assert seen == ["a", ("ipv4", next(iter(lab.helper.testData.values())))]


@pytest.mark.parametrize("callback", [
    lambda: None, lambda value: None, lambda *values: None, print, lambda value, more=1: None])
def test_a_callback_takes_as_many_arguments_as_it_has(lab, callback):
    with kor.observe(lab.helper, "commitError", callback):
        lab.helper.commitError = "x"


def test_an_observation_ends(lab):
    seen = []
    observation = kor.observe(lab.helper, "commitError", seen.append)
    assert observation.active
    observation.stop()
    observation.stop()
    lab.helper.commitError = "a"
    assert seen == [] and not observation.active
    helper = kor.ns.PolicyMapTest.AclHelper(True, False)
    observation = kor.observe(helper, "commitError", seen.append)
    del helper
    assert not observation.active


def test_an_observer_that_raises_fails_the_call_that_made_the_change(lab):
    order = []

    def raises(value):
        order.append("first")
        raise ValueError("no")

    kor.observe(lab.helper, "commitError", raises)
    kor.observe(lab.helper, "commitError", lambda: order.append("second"))
    with pytest.raises(ValueError, match="no") as raised:
        lab.helper.commitError = "a"
    assert isinstance(raised.value, kor.CallbackException)
    assert type(raised.value.__cause__) is ValueError
    assert lab.helper.commitError == "a" and order == ["first", "second"]
    with pytest.raises(kor.CallbackException):
        lab.inject("commitError", "b")
    lab.settle()


def test_a_failed_assertion_in_an_observer_is_that_assertion(lab):
    def fails():
        assert lab is None, "never"

    kor.observe(lab.helper, "commitError", fails)
    with pytest.raises(AssertionError, match="never"):
        lab.helper.commitError = "a"


def test_of_several_observers_that_raise_the_first_fails_the_call(lab, monkeypatch):
    others = []
    monkeypatch.setattr(sys, "unraisablehook", lambda each: others.append(str(each.exc_value)))

    def raising(text):
        def callback():
            raise ValueError(text)
        return callback

    for text in ("first", "second"):
        kor.observe(lab.helper, "commitError", raising(text))
    with pytest.raises(ValueError, match="first"):
        lab.helper.commitError = "a"
    assert others == ["second"]


def test_what_is_no_exception_stays_what_it_is(lab):
    class Stop(BaseException):
        pass

    def stops():
        raise Stop

    with kor.observe(lab.helper, "commitError", stops):
        with pytest.raises(Stop):
            lab.helper.commitError = "a"
    lab.before_helper(type("Stops", (), {"createPolicy": lambda self: stops()})())
    with pytest.raises(Stop):
        lab.load(POLICY)


def test_an_object_that_is_destroyed_is_not_shown_to_its_observers():
    seen = []
    helper = kor.ns.PolicyMapTest.AclHelper(True, False)
    key = kor.ns.PolicyMapTest.AclPolicyType(
        kor.ns.PolicyMap.PolicyMapSmKey("edge", "input"), "ipv4")
    helper.testData.create(key)
    kor.observe(helper, "testData", lambda key, member: seen.append((key, member)))
    del helper
    assert seen == [(key, None)]


def test_an_exception_that_reaches_the_caller_is_raised_once(monkeypatch):
    others = []
    monkeypatch.setattr(sys, "unraisablehook", others.append)

    def scenario(lab):
        assert lab is None, "never"

    with pytest.raises(AssertionError, match="never"):
        pmt.sweep(scenario)
    assert others == []


def test_what_cannot_be_observed(lab):
    lab.load(POLICY)
    record = next(iter(lab.helper.testData.values()))
    with pytest.raises(kor.OpNotSupportedException):
        kor.observe(record, "commitCount", print)
    with pytest.raises(kor.OpNotSupportedException):
        kor.observe(lab.helper, "commitPolicy", print)
    with pytest.raises(AttributeError):
        kor.observe(lab.helper, "nothing", print)


def test_cycles_through_observers_are_collected():
    def make():
        helper = kor.ns.PolicyMapTest.AclHelper(True, False)
        kor.observe(helper, "commitError", lambda: helper.commitError)
        return weakref.ref(helper)

    made = [make() for _ in range(10)]
    gc.collect()
    assert [each() for each in made] == [None] * 10


class SmallTable:
    def __init__(self, room):
        self.room = room

    def addRule(self, key, subRule, policyCommonData, classCommonData):
        assert isinstance(key, kor.ns.PolicyMap.AclRuleKey)
        if self.room == 0:
            return "table full"
        self.room -= 1


def test_an_own_helper_returns_a_text_or_passes_the_call_on(lab):
    table = SmallTable(1)
    lab.before_helper(table)
    lab.load(POLICY)
    assert lab.failure("edge").error == "table full"
    assert lab.failure("edge").operation == "addRule"
    table.room = 2
    lab.advance(1)
    assert lab.failure("edge").error == "" and table.room == 0
    lab.before_helper(None)
    table.room = 0
    lab.load(POLICY.replace("443", "444"))
    assert lab.failure("edge").error == ""


def test_an_own_helper_carries_out_and_changes_the_result(lab):
    calls = []

    class Around:
        def commitPolicy(self, proceed, matchOption):
            calls.append((matchOption.name, proceed()))
            return "" if len(calls) > 1 else "late"

        def getCountForRule(self, **arguments):
            return 42

    lab.before_helper(Around())
    lab.load(POLICY)
    assert calls == [("ipv4", "")] and lab.failure("edge").error == "late"
    lab.advance(1)
    assert lab.failure("edge").error == ""


@pytest.mark.parametrize("operation, result", [
    ("addRule", 5), ("commitPolicy", True), ("createPolicy", [])])
def test_a_result_of_a_wrong_type_is_a_failure(lab, operation, result):
    lab.before_helper(type("Wrong", (), {operation: lambda self: result})())
    lab.load(POLICY)
    failure = lab.failure("edge")
    assert failure.operation == operation and f"result of {operation}" in failure.error


def test_an_own_helper_counts_packets(lab):
    added = []
    lab.before_helper(type("Counts", (), {
        "getCountForRule": lambda self: 42,
        "addRule": lambda self, **given: added.append(given)})())
    lab.load(POLICY)
    given = added[0]
    assert lab.helper.getCountForRule(
        given["key"], given["policyCommonData"], given["classCommonData"]) == 42


def test_an_own_helper_raises(lab):
    class Broken:
        def createPolicy(self):
            raise OSError("bus error")

    lab.before_helper(Broken())
    lab.load(POLICY)
    assert "bus error" in lab.failure("edge").error
    assert not lab.records() or not lab.record("edge").created


def test_a_failed_assertion_in_an_own_helper_fails_the_test(lab):
    class Checks:
        def createPolicy(self, policyData):
            assert policyData is None, "unexpected"

    lab.before_helper(Checks())
    with pytest.raises(AssertionError, match="unexpected"):
        lab.load(POLICY)


def test_a_parameter_that_an_operation_does_not_have_is_refused(lab):
    class Misspelt:
        def addRule(self, rule):
            pass

    with pytest.raises(TypeError, match="addRule.*'rule'.*key, subRule, policyCommonData"):
        lab.before_helper(Misspelt())


def test_an_operation_cannot_be_carried_out_after_it_has_returned(lab):
    kept = []

    class Keeps:
        def createPolicy(self, proceed):
            kept.append(proceed)

    lab.before_helper(Keeps())
    lab.load(POLICY)
    with pytest.raises(ValueError, match="has returned"):
        kept[0]()


def test_a_lab_with_an_own_helper_is_released(monkeypatch):
    monkeypatch.setattr("policymaptest.lab._watches", [])  # the plugin keeps it until the test ends

    class Refers:
        pass

    helper = Refers()
    lab = pmt.Lab()
    helper.lab = lab
    lab.before_helper(helper)
    gone = weakref.ref(lab)
    del lab, helper
    gc.collect()
    assert gone() is None


# What was done to a lab ---------------------------------------------------------------------------


def told(journal):
    return [(each.time, each.kind, each.operation, each.error) for each in journal
            if each.kind in ("call", "result")]


def test_what_was_done_is_performed_again(tmp_path):
    lab = pmt.Lab(asynchronous=True, async_delay=0, update_action=True)
    rules = tmp_path / "rules"
    rules.write_text("@192.0.2.0/24 0.0.0.0/0 0 : 65535 80 : 80 0x06/0xff 0x0000/0x0000\n")
    file = tmp_path / "edge.cfg"
    file.write_text(POLICY + "\nnonsense\n")
    lab.load_file(file, tolerant=True)
    with lab.plan("addIntfToPolicy nth=1", "commitPolicy hold nth=2"):
        lab.load("interface Ethernet2\n service-policy input edge")
        lab.advance(3)
    held = lab.plan("addIntfToPolicy hold first=2")
    lab.load("interface Ethernet3\n service-policy input edge")
    lab.advance(40)
    lab.release()
    lab.release_all()
    held.end()
    lab.inject("commitError", "full")
    with pytest.raises(ValueError):
        lab.load("nonsense")
    lab.load(EDIT)
    lab.clear_faults()
    lab.detach_all()
    lab.attach_all()
    lab.trigger()
    assert lab.check() == ()
    lab.load_rules(rules)
    lab.plan("addRule nth=99 optional")
    lab.end_plans()
    run = pmt.replay(lab.run())
    assert told(run.journal) == told(lab.journal) and len(told(run.journal)) > 40
    assert [each["step"] for each in run.steps] == [
        "load", "faults", "load", "advance", "end", "faults", "load", "advance", "release", "release",
        "end", "inject", "load", "clear", "detach", "attach", "trigger", "check", "rules", "faults",
        "end"]
    lab.take_findings()
    lab.close()
    assert pmt.replay(lab.run()) == run


def test_the_refused_step_at_the_end_is_part_of_what_was_done(lab):
    with pytest.raises(ValueError):
        lab.load("nonsense")
    assert [each["text"] for each in lab.run().steps] == ["nonsense"]
    assert "expected a command" in pmt.replay(lab.run()).findings[0]
    lab.load(POLICY)
    assert [each["text"] for each in lab.run().steps] == [POLICY]


def test_what_was_done_can_always_be_read_again(lab):
    with pytest.raises(ValueError):
        lab.load("class-map match-any \udcff\n \udcff")
    with pytest.raises(ValueError):
        lab.advance(-1)
    lab.advance(2e6)
    assert [each["step"] for each in pmt.replay(lab.run()).steps] == ["advance"]


def test_a_watch_is_told_of_labs():
    class Watch:
        told = []

        def made(self, lab):
            self.told.append(("made", lab))

        def closing(self, lab):
            self.told.append(("closing", lab, lab.closed))

    from policymaptest.lab import watch_labs

    with watch_labs(Watch()):
        lab = pmt.Lab()
        pmt.sweep(POLICY, modes="synchronous")
        lab.close()
        lab.close()
    pmt.Lab().close()
    assert Watch.told == [("made", lab), ("closing", lab, False)]


def test_the_options_are_those_of_the_kit_and_their_defaults():
    options = inspect.signature(pmt.Lab).parameters
    with pmt.Lab() as lab:
        assert pmt.replay(lab.run()).text.splitlines()[1] == '{"options":{},"reading":"strict"}'
    for name, option in options.items():
        if isinstance(option.default, bool):
            with pmt.Lab(**{name: not option.default}) as lab:
                (line,) = [each for each in lab.run().text.splitlines() if '"options"' in each]
            assert (not option.default) in json.loads(line)["options"].values(), name
    for wrong in ({"mode": "synchronous", "asynchronous": True}, {"faults": "commitError"},
                  {"faults": {"commitError": 3}}, {"plan": 3}, {"actions": ["a"]}):
        with pytest.raises(TypeError, match=f"^{list(wrong)[-1]}: "):
            pmt.Lab(**wrong)
    pmt.Lab(plan=None, faults=None, actions=None, async_delay=None, mode=None).close()
    with pytest.raises(TypeError, match="rules: expected a path or a text, found None"):
        pmt.Lab().load_rules(None)


def test_values_of_records_do_not_change(lab):
    lab.load(POLICY)
    rule = lab.record("edge").rule("web 10")
    for change in (lambda: rule.actions.update(action1=9), rule.actions.clear,
                   lambda: rule.actions.pop("action1"), lambda: rule.actions.setdefault("x", 1),
                   lambda: rule.actions.__setitem__("action1", 9),
                   lambda: rule.actions.__delitem__("action1"),
                   lambda: rule.actions.__ior__({"action1": 9}), rule.actions.popitem):
        with pytest.raises(TypeError, match="the actions of a record do not change"):
            change()
    assert json.dumps(rule.actions) == '{"action1": 7, "action2": 0, "action3": 0}'
    assert rule.actions == {"action1": 7, "action2": 0, "action3": 0} == dict(rule.actions)
    assert len({rule, rule, *lab.records()[0].rules}) == len(lab.records()[0].rules)
    assert hash(lab.journal[-1]) == hash(lab.journal[-1]) and hash(lab.records())
    assert pickle.loads(pickle.dumps(rule)) == rule == copy.deepcopy(rule)


def test_tables_without_rows_have_columns(lab):
    for table in (lab.records(), pmt.Journal()):
        assert table.to_frame().empty and list(table.to_frame().columns) == table.columns()
    lab.load(POLICY)
    for table in (lab.records(), lab.records()[0], lab.journal):
        assert all(list(row) == table.columns() for row in table.rows())


def test_cells_are_no_markup_of_rich():
    import rich.console

    console = rich.console.Console(width=200, record=True, file=open(os.devnull, "w"))
    with console.file:
        console.print(pmt.Journal([pmt.JournalEntry(1, 0, "call", "[/x][red]")]))
    assert "[/x][red]" in console.export_text()


# Sweeps and runs ---------------------------------------------------------------------------------


def test_a_sweep_of_a_text_and_of_a_function_recovers():
    report = pmt.sweep([POLICY, EDIT])
    assert len(report.results) > 100 and report.injected > 100
    assert report.failed == () and "0 cases with findings" in str(report)
    calls = []

    def scenario(lab):
        lab.load(POLICY)
        calls.append(lab)

    report = pmt.sweep(scenario, modes=["synchronous"], update_action=True)
    assert report.failed == () and len(calls) >= len(report.results)
    with pytest.raises(ValueError, match="has ended"):
        calls[0].settle()


def test_a_sweep_finds_a_scenario_that_does_not_recover():
    def scenario(lab):
        lab.load(POLICY)
        if lab.failure("edge").error:
            lab.load("no policy-map edge")

    report = pmt.sweep(scenario, modes=["synchronous"])
    assert report.failed
    assert all(each.findings and each.journal for each in report.failed)


def test_shards_are_the_whole_sweep():
    whole = pmt.sweep(POLICY)
    parts = [pmt.sweep(POLICY, shard=each, shards=3) for each in (1, 2, 3)]
    assert sorted(each.case for each in whole.results) == sorted(
        each.case for part in parts for each in part.results)
    with pytest.raises(ValueError):
        pmt.sweep(POLICY, shard=4, shards=3)
    with pytest.raises(ValueError, match="modes"):
        pmt.sweep(POLICY, modes=["later"])


def test_what_a_scenario_raises_is_raised():
    def scenario(lab):
        raise OSError("no")

    with pytest.raises(OSError, match="no") as raised:
        pmt.sweep(scenario)
    assert raised.value.__notes__ == ["in the case: without a fault"]


def test_what_a_scenario_raises_names_the_case():
    def scenario(lab):
        lab.load(POLICY)
        assert not lab.failure("edge").error, "it is not programmed"

    with pytest.raises(AssertionError, match="it is not programmed") as raised:
        pmt.sweep(scenario, modes="synchronous")
    (note,) = raised.value.__notes__
    assert note.startswith("in the case: synchronous createPolicy"), note


def test_a_sweep_has_no_mode_of_its_own():
    for option in ({"mode": "synchronous"}, {"asynchronous": True}, {"pseudo_async": False},
                   {"async_delay": 1}):
        with pytest.raises(TypeError, match=f"^{list(option)[0]}: the mode is given as 'modes'"):
            pmt.sweep(POLICY, **option)


def test_walks_are_repeatable_and_replayed(tmp_path):
    walk = pmt.walk(POLICY, seed=3, steps=30)
    assert walk == pmt.walk(POLICY, seed=3, steps=30) and walk.findings == ()
    assert pmt.replay(walk) == walk and len(walk.journal) > 10
    assert walk != pmt.walk(POLICY, seed=4, steps=30) and len(walk.steps) > 5
    walk.save(tmp_path / "walk.run")
    assert pmt.replay(tmp_path / "walk.run").journal == pmt.replay(walk).journal
    with pytest.raises(ValueError, match="irregular"):
        walk.minimise()
    with pytest.raises(ValueError):
        pmt.walk("", steps=1)


def test_a_long_walk_can_be_interrupted():
    program = f"""
import os, signal, threading
import policymaptest as pmt
threading.Timer(0.5, lambda: os.kill(os.getpid(), signal.SIGINT)).start()
try:
    pmt.walk({POLICY!r}, steps=10_000_000)
except KeyboardInterrupt:
    print("interrupted")
"""
    done = subprocess.run([sys.executable, "-c", program], text=True, capture_output=True, timeout=60)
    assert done.stdout == "interrupted\n" and not done.stderr


def test_explain_in_one_call(lab):
    lab.load(POLICY)
    assert pmt.explain(lab) == pmt.explain(lab, "edge") == lab.explain()
    assert lab.snapshot() == lab.records()
    assert pmt.explain(POLICY) == ["edge/input ipv4: programmed at Ethernet1"]
    assert "missing class-map web" in str(pmt.explain(POLICY.replace("class-map match-any web",
                                                                     "class-map match-any wob")))


def test_a_sweep_runs_on_a_cluster_although_a_worker_dies():
    distributed = pytest.importorskip("distributed")
    program = pathlib.Path(__file__).with_name("cluster_program.py")
    del distributed
    done = subprocess.run([sys.executable, "-B", str(program)], capture_output=True, text=True,
                          timeout=300)
    assert done.returncode == 0, done.stdout + done.stderr
    assert "same results" in done.stdout and "killed" in done.stdout


# Wrong arguments ---------------------------------------------------------------------------------


@pytest.mark.parametrize("call, error, text", [
    (lambda: pmt.Lab(async_delay=-1), ValueError, "async_delay: expected 0 s or more, found -1"),
    (lambda: pmt.Lab(async_delay="1"), TypeError, "expected seconds or a datetime.timedelta, found '1'"),
    (lambda: pmt.Lab().advance("x"), TypeError, "expected seconds or a datetime.timedelta, found 'x'"),
    (lambda: pmt.Lab().advance(True), TypeError, "found True"),
    (lambda: pmt.sweep(5), TypeError, "scenario: expected policy text, .*found 5"),
])
def test_a_wrong_argument_is_named(call, error, text):
    with pytest.raises(error, match=text):
        call()


@pytest.mark.parametrize("call, error, text", [
    (lambda: pmt.Lab().advance(float("inf")), ValueError, "expected a finite time, found inf"),
    (lambda: kor.ns.PolicyMapTestKit.Lab(False, False, False).advance(float("inf")), ValueError,
     "time advances by 0 s or more, not by inf s"),
    (lambda: pmt.sweep("", modes="bogus"), ValueError, "modes: .*; found .bogus"),
    (lambda: pmt.sweep("", modes=[]), ValueError, r"modes: .*; found \(\)"),
    (lambda: pmt.sweep("", shards=0), ValueError, "shards: expected 1 or more, found 0"),
    (lambda: pmt.sweep("", shards="2"), TypeError, "shards: expected a number, found '2'"),
    (lambda: pmt.sweep("", shard=2, shards=2, client=object()), ValueError, "all shards run"),
    (lambda: pmt.Lab().record("none"), kor.LookupException, "no record of none/input"),
    (lambda: pmt.Lab().release(), kor.LookupException, "no result is held"),
])
def test_what_cannot_be_done_is_named(call, error, text):
    with pytest.raises(error, match=text):
        call()


def test_modes_have_names():
    assert len(pmt.sweep(POLICY, modes="synchronous").results) < len(
        pmt.sweep(POLICY, modes="all").results)


def test_a_lab_does_not_end_during_a_call_of_it():
    refused = []

    class Helper:
        def commitPolicy(self):
            with pytest.raises(kor.RangeException, match="cannot end during a call") as error:
                lab.close()
            refused.append(error)

    with pmt.Lab() as lab:
        lab.before_helper(Helper())
        lab.load(POLICY)
        assert len(refused) == 1
        kor.observe(lab.helper, "testData", lambda key, member: lab.close())
        with pytest.raises(kor.RangeException, match="cannot end during a call"):
            lab.load("interface Ethernet1\n no service-policy input edge\n"
                     "policy-map other\n class web\n"
                     "interface Ethernet1\n service-policy input other")
        assert lab.record("other").created
    lab.close()
