# SPDX-License-Identifier: Apache-2.0
"""The pytest plugin, in sessions of its own."""

import json
import os
import pathlib
import subprocess

import policymaptest as pmt
import pytest

pytest_plugins = "pytester"

POLICY = """
POLICY = '''ip access-list web
  10 permit tcp any any eq 80
class-map match-any web
  match access-group web
policy-map edge
  class web
    set action1 7
interface Ethernet1
  service-policy input edge'''
"""


@pytest.fixture
def run(pytester, monkeypatch):
    """Runs a test file in a process of its own."""
    monkeypatch.delenv("PYTEST_ADDOPTS", raising=False)

    def session(source, *args):
        pytester.makeconftest("pytest_plugins = ['policymaptest.plugin']")
        pytester.makepyfile(test_it="import pytest\n" + POLICY + source)
        return pytester.runpytest_subprocess("-p", "no:cacheprovider", *args)

    return session


def test_the_plugin_is_found_by_its_entry_point(pytester):
    pytester.makepyfile(test_it="def test_lab(lab):\n    assert lab.now == 0\n")
    pytester.runpytest_subprocess("-p", "no:cacheprovider").assert_outcomes(passed=1)


def test_the_fixtures_are_parts_of_one_new_lab(run):
    result = run("""
@pytest.mark.parametrize("time", [1, 2])
def test_parts(lab, helper, journal, make_lab, time):
    assert lab.now == 0 and not lab.records() and len(journal.calls()) <= 1
    lab.load(POLICY)
    lab.advance(time)
    assert helper is lab.helper and len(journal.calls("addRule")) == 1
    other = make_lab(update_action=True)
    assert other.helper.updateActionSupported and not helper.updateActionSupported
""")
    result.assert_outcomes(passed=2)


def test_a_failed_comparison_shows_what_differs(run):
    result = run("""
def test_differs(lab):
    lab.load(POLICY)
    before = lab.records()
    lab.load(POLICY.replace("action1 7", "action1 8"))
    assert before == lab.records()
""")
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines(["*Snapshot == Snapshot, left -> right:",
                                 "E*edge/input ipv4: rule web 10: action1 7 -> 8"])
    assert "Record(" not in result.stdout.str()


def test_a_failure_has_journal_explanation_trace_and_a_replay_file(run, pytester):
    result = run("""
def test_fails(lab):
    lab.inject("commitError", "table full")
    lab.load(POLICY)
    lab.plan("addRule nth=9")
    assert False
""")
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines([
        "*- lab: journal -*", "*commitPolicy edge/input ipv4 -> table full",
        "*- lab: explanation -*", "edge/input ipv4: failed: commitPolicy: table full*",
        "*- lab: replay -*", "policymap-lab replay *", "*- trace -*", "PolicyMap/3 edge/input: *"])
    (file,) = pytester.path.glob(".policymap-runs/*.run")
    replayed = pmt.replay(file)
    assert [each["step"] for each in replayed.steps] == ["inject", "load", "faults"]
    assert "table full" in {each.error for each in replayed.journal}


def replayed(file):
    """policymap-lab replay, which does not need the run-time of sanitizers that Python needs."""
    lab = pathlib.Path(os.environ["BUILD_DIR"], "bin", "policymap-lab")
    environment = {name: each for name, each in os.environ.items() if name != "LD_PRELOAD"}
    return subprocess.run([lab, "replay", file], capture_output=True, text=True, env=environment)


def test_a_replay_file_repeats_what_the_test_did(run, pytester):
    result = run("""
def test_fails(make_lab):
    lab = make_lab(asynchronous=True, async_delay=0.5)
    with lab.plan("addRule nth=1"):
        lab.load(POLICY)
        lab.advance(5)
    with pytest.raises(ValueError):
        lab.load("nonsense")
    lab.plan("addRule nth=99")
    assert lab.check()
""", "--junit-xml=junit.xml")
    result.assert_outcomes(failed=1)
    (file,) = pytester.path.glob(".policymap-runs/*.run")
    done = replayed(file)
    assert done.returncode == 0 and done.stdout.splitlines()[-1].startswith("the same: 6 steps, ")
    assert "it does not do all" not in result.stdout.str()
    assert f'name="lab: replay" value="policymap-lab replay .policymap-runs/{file.name}"' in (
        pytester.path / "junit.xml").read_text()


def test_a_replay_file_that_does_not_do_all_says_so(run, pytester):
    result = run("""
class Refuses:
    def addRule(self):
        return "no"

def test_fails(lab):
    lab.before_helper(Refuses())
    lab.load(POLICY)
    assert False
""")
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines(["policymap-lab replay *", "it does not do all that the test did, *",
                                 "  4 t=0 addRule edge/input ipv4 * -> no"])
    (file,) = pytester.path.glob(".policymap-runs/*.run")
    assert replayed(file).returncode == 0


def test_a_passed_test_leaves_nothing(run, pytester):
    run("def test_passes(lab):\n    lab.load(POLICY)\n").assert_outcomes(passed=1)
    assert not list(pytester.path.glob(".policymap-runs/*"))


@pytest.mark.parametrize("body", [
    "with make_lab() as lab:\n        lab.plan('addRule nth=9')",
    "lab = make_lab()\n    lab.plan('addRule nth=9')\n    lab.close()",
    "lab = pmt.Lab()\n    lab.plan('addRule nth=9')",
    "lab = pmt.Lab()\n    with lab.plan('addRule nth=9'):\n        lab.load(POLICY)",
    "[pmt.Lab().plan('addRule nth=9') for _ in range(1)]\n    [pmt.Lab() for _ in range(30)]",
])
def test_findings_of_every_lab_fail_a_test(run, pytester, body):
    result = run(f"""
import policymaptest as pmt

def test_unmet(make_lab):
    {body}

def test_after(lab):
    pass
""")
    result.assert_outcomes(passed=2, errors=1)
    result.stdout.fnmatch_lines(["*ERROR at teardown of test_unmet*", "*unmet fault: addRule nth=9:*"])


def test_findings_at_the_end_are_reported_like_a_failure(run, pytester):
    result = run("""
def test_unmet(lab):
    lab.load(POLICY)
    lab.plan("addRule nth=9")
""")
    result.stdout.fnmatch_lines(["findings of the lab:", "*- lab: journal -*", "*addRule edge/input*",
                                 "*- lab: explanation -*", "*programmed at Ethernet1*",
                                 "policymap-lab replay *"])
    (file,) = pytester.path.glob(".policymap-runs/*.run")
    assert "unmet fault" in pmt.Run(file.read_text()).findings[0]


def test_labs_that_the_test_has_closed_are_reported(run):
    result = run("""
import policymaptest as pmt

def test_fails():
    with pmt.Lab() as lab:
        lab.load(POLICY)
    assert False
""")
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines(["*- lab: journal -*", "*addRule edge/input*",
                                 "*- lab: explanation -*", "*programmed at Ethernet1*",
                                 "*- lab: replay -*"])


def test_labs_of_other_fixtures_go_on(run):
    run("""
import policymaptest as pmt

@pytest.fixture(scope="module")
def shared():
    with pmt.Lab() as lab:
        yield lab

@pytest.mark.parametrize("number", [1, 2])
def test_shared(shared, number):
    shared.load(POLICY)
    assert len(shared.journal.calls("addRule")) == 1
""").assert_outcomes(passed=2)


def test_findings_fail_a_test_that_does_not_take_them(run):
    result = run("""
def test_unmet(lab):
    lab.plan("addRule nth=9")
    lab.load(POLICY)

def test_taken(lab):
    with lab.plan("addRule nth=9"):
        lab.load(POLICY)
    assert "addRule nth=9" in lab.take_findings()[0]

def test_optional(lab):
    lab.plan("addRule nth=9 optional")
    lab.load(POLICY)
""")
    result.assert_outcomes(passed=3, errors=1)
    result.stdout.fnmatch_lines(["findings of the lab:", "unmet fault: addRule nth=9:*"])


def test_modes(run):
    result = run("""
@pytest.mark.policymap(modes="all", update_action=True)
def test_all(lab):
    assert lab.helper.updateActionSupported

@pytest.mark.policymap(modes=["asynchronous"])
class TestClass:
    @pytest.mark.policymap(update_action=True)
    def test_one(self, lab):
        assert lab.helper.asyncOperations and lab.helper.updateActionSupported
""", "-v")
    result.assert_outcomes(passed=4)
    result.stdout.fnmatch_lines(["*test_all?synchronous*", "*test_all?asynchronous*",
                                 "*test_all?pseudo-asynchronous*", "*test_one?asynchronous*"])


@pytest.mark.parametrize("source, text", [
    ("@pytest.mark.policymap(modes=['later'])\ndef test_x(lab): pass", "found 'later'"),
    ("@pytest.mark.policymap(modes=[])\ndef test_x(lab): pass", "found ()"),
    ("@pytest.mark.policymap(modes=3)\ndef test_x(lab): pass", "modes: expected names of modes"),
    ("@pytest.mark.policymap_sweep(shards=0)\ndef test_x(lab): pass", "shards: expected 1 or more"),
    ("@pytest.mark.policymap_sweep(shards='2')\ndef test_x(lab): pass", "found '2'"),
    ("@pytest.mark.policymap_sweep('')\ndef test_x(lab): pass", "needs a test with `shard_report`"),
    ("@pytest.mark.policymap(True)\ndef test_x(lab): pass", "takes named arguments"),
    ("@pytest.mark.policymap(nothing=True)\ndef test_x(lab): pass", "no such option: nothing"),
    ("@pytest.mark.policymap_sweep()\ndef test_x(): pass", "needs a scenario"),
    ("def test_x(shard_report): pass", "needs the mark"),
])
def test_wrong_marks_are_named(run, source, text):
    result = run(source)
    assert result.ret != 0 and text in result.stdout.str() + result.stderr.str()


def test_a_sweep_is_one_item_per_shard(run):
    result = run("""
@pytest.mark.policymap_sweep(shards=3, modes=["synchronous"])
def test_recovers(lab):
    lab.load(POLICY)

@pytest.mark.policymap_sweep(modes=["synchronous"])
def test_does_not(lab):
    lab.load(POLICY)
    if lab.failure("edge").error:
        lab.load("no policy-map edge")

@pytest.mark.policymap_sweep(POLICY, shards=2)
def test_report(shard_report):
    assert shard_report.results and not shard_report.failed
""", "-v")
    result.assert_outcomes(passed=5, failed=1)
    result.stdout.fnmatch_lines(["*test_recovers?shard1of3* PASSED*", "*test_does_not*FAILED*",
                                 "*cases with findings*", "synchronous *: *"])


APPROVED = """
def test_approved(lab, approved):
    lab.load(POLICY)
    assert lab.records() == approved
"""


def test_a_snapshot_fails_until_it_is_approved(run, pytester):
    result = run(APPROVED)
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines(["*there is no approved snapshot *", "*--policymap-approve*"])
    run(APPROVED, "--policymap-approve").assert_outcomes(passed=1)
    (file,) = pytester.path.glob("__approved__/*.json")
    assert json.loads(file.read_text())[0]["rules"][0]["action1"] == 7
    run(APPROVED).assert_outcomes(passed=1)
    result = run(APPROVED.replace("POLICY)", "POLICY.replace('eq 80', 'eq 81'))"))
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines(["*eq 80 -> *eq 81*"])


def test_tests_of_one_name_have_snapshots_of_their_own(run, pytester):
    source = """
class TestA:
    def test_it(self, lab, approved):
        lab.load(POLICY)
        assert lab.records() == approved

class TestB:
    def test_it(self, lab, approved):
        assert lab.records() == approved
"""
    run(source, "--policymap-approve").assert_outcomes(passed=2)
    assert len(list(pytester.path.glob("__approved__/*.json"))) == 2
    run(source).assert_outcomes(passed=2)


@pytest.mark.parametrize("early", ["assert False", "pytest.skip('later')"])
def test_the_snapshot_of_a_test_that_ends_early_is_kept(run, pytester, early):
    run(APPROVED, "--policymap-approve").assert_outcomes(passed=1)
    result = run(APPROVED.replace("    lab.load", f"    {early}\n    lab.load"),
                 "--policymap-approve")
    assert "unused approved" not in result.stdout.str()
    assert len(list(pytester.path.glob("__approved__/*.json"))) == 1


def test_a_replay_has_files_filter_sets_and_checks(run, pytester):
    pytester.path.joinpath("edge.cfg").write_text("hostname edge\nnonsense\nno such line\n")
    result = run("""
def test_fails(lab):
    lab.load_file("edge.cfg", tolerant=True)
    lab.load_rules("@10.0.0.0/8\\t0.0.0.0/0\\t0 : 65535\\t80 : 80\\t0x06/0xFF\\t0x0000/0x0000\\n")
    assert lab.check() == ()
    assert False
""")
    result.assert_outcomes(failed=1)
    (file,) = pytester.path.glob(".policymap-runs/*.run")
    replayed = pmt.replay(file)
    assert [each["step"] for each in replayed.steps] == ["load", "rules", "check"]
    assert "addRule" in {each.operation for each in replayed.journal}


def test_unused_snapshots_are_named_and_removed(run, pytester):
    run(APPROVED, "--policymap-approve")
    stale = pytester.path / "__approved__" / "test_it.test_gone.json"
    stale.write_text("[]")
    result = run(APPROVED)
    result.stdout.fnmatch_lines(["*unused approved snapshots*", "*test_it.test_gone.json"])
    result = run(APPROVED + "\ndef test_other(lab): pass\n", "-k", "other")
    assert "unused approved" not in result.stdout.str()
    run(APPROVED, "--policymap-approve")
    assert not stale.exists() and len(list(stale.parent.iterdir())) == 1


def test_nothing_leaks_from_test_to_test(run):
    result = run("""
import kor, gc

def test_breaks(lab):
    kor.observe(lab.helper, "commitError", lambda: 1 / 0)
    lab.before_helper(type("H", (), {"createPolicy": lambda self: "no"})())
    lab.plan("addRule nth=1 optional")

def test_is_not_broken(lab):
    lab.inject("commitError", "x")
    lab.clear_faults()
    lab.load(POLICY)
    assert lab.record("edge").created and not lab.journal.failed()
""")
    result.assert_outcomes(passed=2)


def test_in_two_processes(run):
    pytest.importorskip("xdist")
    result = run(APPROVED + """
@pytest.mark.policymap_sweep(shards=4)
def test_recovers(lab):
    lab.load(POLICY)
""", "-n", "2", "--policymap-approve")
    result.assert_outcomes(passed=5)


# Files -------------------------------------------------------------------------------------------


def test_each_test_has_files_of_its_own(run, pytester):
    source = """
@pytest.mark.parametrize("number, name", enumerate(["a b", "a_b", "a/b", "", '"', "x" * 300]))
def test_it(lab, approved, number, name):
    lab.load(POLICY.replace("action1 7", f"action1 {number}"))
    assert lab.records() == approved
    assert not os.environ.get("FAIL")
"""
    run("import os\n" + source, "--policymap-approve").assert_outcomes(passed=6)
    run("import os\n" + source).assert_outcomes(passed=6)
    assert len(list(pytester.path.glob("__approved__/*.json"))) == 6


def test_each_failure_leaves_a_replay_file(run, pytester):
    run("""
@pytest.mark.parametrize("name", ["a b", "a_b", "x" * 300])
def test_it(lab, name):
    lab.load(POLICY)
    assert not name
""").assert_outcomes(failed=3)
    assert len(list(pytester.path.glob(".policymap-runs/*.run"))) == 3


def test_a_replay_file_that_cannot_be_written_is_no_internal_error(run):
    result = run("def test_it(lab):\n    lab.load(POLICY)\n    assert False",
                 "--policymap-runs=test_it.py")
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines(["it cannot be written: *"])


def test_a_failing_fixture_shows_the_journal(run):
    result = run("""
@pytest.fixture
def loaded(lab):
    lab.load(POLICY)
    raise OSError("no")
def test_it(loaded): pass
""")
    result.assert_outcomes(errors=1)
    result.stdout.fnmatch_lines(["*lab: journal*"])


def test_labs_do_not_outlive_their_test(run):
    run("""
import gc, weakref
seen = []
def test_one(lab):
    seen.append(weakref.ref(lab))
def test_two():
    gc.collect()
    assert seen[0]() is None
""").assert_outcomes(passed=2)


def test_a_scenario_has_a_name(run):
    run("""
@pytest.mark.policymap_sweep(scenario="interface Ethernet1", shards=2, modes="synchronous")
def test_it(shard_report):
    assert not shard_report.failed
""").assert_outcomes(passed=2)


# Approved snapshots ------------------------------------------------------------------------------


SEVERAL = """
def test_it(lab, approved):
    lab.load(POLICY)
    assert lab.records() == approved
    lab.load("policy-map edge\\n class web\\n  set action1 8")
    assert lab.records() == approved{name}
"""


def test_a_test_compares_several_snapshots_by_name(run, pytester):
    result = run(SEVERAL.format(name=""), "--policymap-approve")
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines(["*test_it.test_it.json: the test compares different records with it; "
                                 "give the others names, *"])
    run(SEVERAL.format(name="('after')"), "--policymap-approve").assert_outcomes(passed=1)
    names = sorted(each.name for each in pytester.path.glob("__approved__/*"))
    assert names == ["test_it.test_it.json", "test_it.test_it~after.json"]
    result = run(SEVERAL.format(name="('after')"))
    result.assert_outcomes(passed=1)
    assert "unused approved" not in result.stdout.str()
    result = run(SEVERAL.format(name="('later')"))
    result.assert_outcomes(failed=1)
    assert "unused approved" not in result.stdout.str()  # the test did not come to its end
    run(SEVERAL.format(name="('later')"), "--policymap-approve").assert_outcomes(passed=1)
    names = sorted(each.name for each in pytester.path.glob("__approved__/*"))
    assert names == ["test_it.test_it.json", "test_it.test_it~later.json"]


@pytest.mark.parametrize("args", [(), ("-n", "2")])
def test_unused_snapshots_are_named(run, pytester, args):
    folder = pytester.path / "__approved__"
    folder.mkdir()
    for name in ("test_it.test_gone.json", "test_lost.test_it.json", "test_other.test_it.json"):
        (folder / name).write_text("[]")
    (pytester.path / "test_other.py").write_text("def test_it(approved):\n    pass\n")
    source = "def test_it(lab, approved):\n    pass\n"
    result = run(source, *args)
    result.assert_outcomes(passed=2)
    result.stdout.fnmatch_lines(["*unused approved snapshots*", "*test_it.test_gone.json",
                                 "*test_lost.test_it.json"])
    assert "test_other.test_it.json" not in result.stdout.str()
    run(source, "--policymap-approve", *args)
    assert [each.name for each in folder.iterdir()] == ["test_other.test_it.json"]


def test_a_damaged_snapshot_is_named(run, pytester):
    folder = pytester.path / "__approved__"
    folder.mkdir()
    for content in ("{", "{}", "[1]", '[{"policy": 1}]'):
        (folder / "test_it.test_it.json").write_text(content)
        result = run("""
def test_it(lab, approved):
    assert lab.records() == approved
""")
        result.assert_outcomes(failed=1)
        result.stdout.fnmatch_lines(["*test_it.test_it.json is no snapshot: *"])


def test_an_unapproved_snapshot_is_shown_in_lines(run):
    result = run("""
def test_it(lab, approved):
    lab.load(POLICY)
    assert lab.records() == approved
""")
    result.stdout.fnmatch_lines(["E *edge/input ipv4: created at Ethernet1",
                                 "E *web web 10: permit tcp any any eq 80, action1 7"])


def test_a_wrong_trace_is_an_error_of_the_command_line(run):
    result = run("def test_it(lab):\n    pass\n", "--policymap-trace=bogus/level")
    assert result.ret == 4
    result.stderr.fnmatch_lines(["*--policymap-trace: *bogus/level*"])
