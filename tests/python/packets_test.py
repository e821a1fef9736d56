# SPDX-License-Identifier: Apache-2.0
"""Packets in labs, from Python."""

import pickle

import kor
import pytest

from policymaptest import Lab, PacketState, Proof, Treatment

POLICY = """ip access-list web
  10 permit tcp any any eq 80
ip access-list rest
  10 deny udp any any eq 53
  20 permit ip any any
class-map match-any web
  match access-group web
class-map match-any rest
  match access-group rest
policy-map edge
  class web
    set action1 7
  class rest
    set action1 2
interface Ethernet1
  ip address 192.0.2.1/24
  service-policy input edge
"""
WEB = "tcp 10.0.0.1:4000 > 192.0.2.80:80"
DNS = "udp 10.0.0.1 > 192.0.2.53:53"


@pytest.fixture
def loaded(lab: Lab) -> Lab:
    lab.load(POLICY)
    return lab


def test_a_packet_is_traced(loaded: Lab) -> None:
    trace, = loaded.trace(WEB)
    assert (trace.subject, trace.packet, trace.verdict) == ("edge input ipv4", WEB, "the same")
    assert trace.recorded == trace.configured == Treatment(
        "web", {"action1": 7, "action2": 0, "action3": 0})
    assert str(trace.recorded) == "web (action1 7)"
    line, = trace.recorded_rules
    assert (str(line.rule), line.effect) == ("web 10 permit tcp any any eq 80 of class web", "action1 7")
    assert trace.configured_rule and trace.configured_rule.rule.name == "web 10"
    assert trace.around == "tcp any any eq 80"
    assert str(trace).endswith("the same, as for every tcp any any eq 80")


def test_rules_that_are_passed_are_shown_on_request(loaded: Lab) -> None:
    trace, = loaded.trace(DNS, passed=True)
    assert [line.effect for line in trace.recorded_rules] == [
        "does not match", "leaves the class", "the class was left"]
    assert str(trace.recorded) == "no class"
    assert trace.configured_rule is None


def test_the_reading_of_deny_is_an_argument(loaded: Lab) -> None:
    trace, = loaded.trace(DNS, deny="entry")
    assert (trace.verdict, trace.recorded.class_name) == ("different", "rest")
    with pytest.raises(kor.RangeException):
        loaded.trace(DNS, deny="sometimes")


def test_bad_packets_are_named(loaded: Lab) -> None:
    with pytest.raises(kor.RangeException, match="packet:1:16: expected port"):
        loaded.trace("udp 10.0.0.1 > 192.0.2.53:dnss")


def test_records_are_proven(loaded: Lab) -> None:
    assert loaded.prove().same
    assert [type(each) for each in loaded.prove()] == [Proof]
    assert str(loaded.prove()) == "edge input ipv4: the same"
    assert loaded.prove(policy="edge", interface="Ethernet1", direction="input", option="ipv4").same
    assert not loaded.prove(direction="output")
    with pytest.raises(LookupError):
        loaded.prove(policy="other")


def test_mac_rules_and_ip_rules_of_two_classes_are_named(loaded: Lab) -> None:
    loaded.load("""mac access-list frames
  10 permit any any ip
class-map match-any frames
  match mac access-group frames
policy-map edge
  class frames
""")
    proofs = loaded.prove()
    assert proofs.same
    found, = proofs[1].two_classes
    assert (found.frame, str(found.rule)) == (
        "mac 0000.0000.0000 > 0000.0000.0000 ethertype 2048",
        "frames 10 permit any any ethertype 2048 of class frames")
    assert (found.other_option, found.packet, found.other_rule.class_name) == (
        "ipv4", "tcp 0.0.0.0 > 0.0.0.0:80", "web")
    assert [each.two_classes for each in loaded.prove(option="mac")] == [()]


def test_a_difference_has_packet_rules_and_exact_numbers(loaded: Lab) -> None:
    proofs = loaded.prove(deny="entry")
    assert (proofs.same, proofs.verdict) == (False, "different")
    proof, = proofs
    assert proof.packets == 2 ** 142
    assert proof.moved == {("rest", ""): 2 ** 142}
    assert (proof.pairs, proof.at_least) == (1, False)
    difference, = proof.differences
    assert difference.packet == "udp 0.0.0.0 > 0.0.0.0:53"
    assert difference.around == "udp any any eq 53"
    assert str(difference.one_rule) == "rest 10 deny udp any any eq 53 of class rest"
    assert difference.other_rule is None
    assert loaded.prove(deny="entry", except_for="udp any any eq 53").same
    assert loaded.prove(deny="entry", except_for=["tcp any any", "udp any any"]).same
    assert loaded.prove(deny="entry", budget=0).verdict == "undecided"


def test_what_is_not_programmed_has_a_reason() -> None:
    with Lab(layer3=False) as lab:
        lab.load(POLICY)
        proof, = lab.prove()
        assert proof.verdict == "not programmed"
        assert proof.reason.startswith("no interface is eligible")
        assert lab.prove().same


def test_labs_are_compared(loaded: Lab) -> None:
    with Lab() as other:
        other.load(POLICY)
        assert loaded.compare(other).same
        other.load("ip access-list web\n no 10\n 20 permit tcp any any eq 8080\n")
        changes = loaded.compare(other, first=2)
        change, = changes
        assert (change.rules_added, change.rules_removed, change.rules_changed) == (1, 1, 0)
        assert change.moved == {("web", "rest"): 2 ** 150, ("rest", "web"): 2 ** 150}
        assert [each.packet for each in change.differences] == [
            "tcp 0.0.0.0 > 0.0.0.0:80", "tcp 0.0.0.0 > 0.0.0.0:8080"]
        assert loaded.compare(other, of="configuration").verdict == "different"


def test_a_state_stays(loaded: Lab) -> None:
    before = loaded.packets()
    assert isinstance(before, PacketState)
    loaded.load("ip access-list web\n no 10\n")
    assert before.trace(WEB)[0].recorded.class_name == "web"
    assert loaded.trace(WEB)[0].recorded.class_name == "rest"
    assert str(before.compare(loaded.packets())).startswith(
        "edge input ipv4: 1 rule removed; 2^150 packets go from class web to class rest")
    assert before.compare(loaded.packets(), except_for="tcp any any eq 80").same


def test_rules_without_use_are_named(loaded: Lab) -> None:
    assert str(loaded.unused()) == "edge input ipv4: every rule is used"
    loaded.load("ip access-list web\n 20 permit tcp host 10.0.0.1 any eq 80\n")
    unused, = loaded.unused()
    rule, = unused.rules
    assert (rule.rule.name, rule.reason) == ("web 20", "is reached by no packet")
    assert [each.name for each in rule.because] == ["web 10"]


def test_answers_are_tables(loaded: Lab) -> None:
    frame = loaded.prove(deny="entry").to_frame()
    assert list(frame["packet"]) == ["udp 0.0.0.0 > 0.0.0.0:53"]
    assert list(frame["one class"]) == ["rest"]
    assert list(loaded.trace(WEB).to_frame()["action1"]) == [7]
    assert list(loaded.unused().to_frame()) and loaded.unused().to_frame().empty
    assert "udp any any eq 53" in loaded.prove(deny="entry")._repr_html_()
    assert "different" in repr(loaded.prove(deny="entry"))


def test_answers_are_values(loaded: Lab) -> None:
    proofs = loaded.prove(deny="entry")
    assert pickle.loads(pickle.dumps(proofs[0])) == proofs[0]
    assert proofs[0] == loaded.prove(deny="entry")[0]
