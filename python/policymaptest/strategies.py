# SPDX-License-Identifier: Apache-2.0
"""Hypothesis strategies for policy text, valid by construction.

    @given(strategies.configurations(families=("ipv4",)))
    def test_recovers(configuration):
        with Lab() as lab:
            lab.load(configuration.text)
            assert lab.check() == ()

Each shrinks to its simplest text: one rule for all packets, one class, one interface.
"""

from __future__ import annotations

import dataclasses
import functools
import ipaddress
import operator
from collections.abc import Mapping, Sequence
from typing import Any

from hypothesis import strategies as st
from hypothesis.strategies import SearchStrategy

import kor

IPV4, IPV6, MAC = FAMILIES = ("ipv4", "ipv6", "mac")
DIRECTIONS = ("input", "output")

_ALL = {IPV4: "ip any any", IPV6: "ipv6 any any", MAC: "any any"}
_KEYWORDS = {IPV4: "ip", IPV6: "ipv6", MAC: "mac"}
_WITH_PORTS = ("tcp", "udp", "sctp")
_NUMBERS = st.integers(0, 2**32 - 1)


@dataclasses.dataclass(frozen=True)
class AccessList:
    """A list: its rules by number."""

    name: str
    family: str
    rules: tuple[tuple[int, str], ...]

    @property
    def text(self) -> str:
        return "\n".join([f"{_KEYWORDS[self.family]} access-list {self.name}",
                          *(f"  {number} {rule}" for number, rule in self.rules)])


@dataclasses.dataclass(frozen=True)
class ClassMap:
    """A class-map that matches what one of some lists permits."""

    name: str
    lists: tuple[tuple[str, str], ...]  # families and names

    @property
    def text(self) -> str:
        return "\n".join([f"class-map match-any {self.name}",
                          *(f"  match {_KEYWORDS[family]} access-group {name}"
                            for family, name in self.lists)])


@dataclasses.dataclass(frozen=True)
class PolicyMap:
    """A policy-map: its classes in order, each with its actions by number, 1 to 3."""

    name: str
    classes: tuple[tuple[str, tuple[tuple[int, int], ...]], ...]

    @property
    def text(self) -> str:
        lines = [f"policy-map {self.name}"]
        for name, actions in self.classes:
            lines.append(f"  class {name}")
            lines += (f"    set action{kind} {value}" for kind, value in actions)
        return "\n".join(lines)


@dataclasses.dataclass(frozen=True)
class Interface:
    """An interface with addresses of both families, and the policy-maps at it by direction."""

    number: int
    policies: tuple[tuple[str, str], ...]

    @property
    def name(self) -> str:
        return f"Ethernet{self.number}"

    @property
    def text(self) -> str:
        return "\n".join([f"interface {self.name}", f"  ip address 192.0.2.{self.number}/24",
                          f"  ipv6 address 2001:db8::{self.number:x}/64",
                          *(f"  service-policy {direction} {name}"
                            for direction, name in self.policies)])


@dataclasses.dataclass(frozen=True)
class Configuration:
    """A whole configuration; `text` is what a lab loads."""

    lists: tuple[AccessList, ...]
    class_maps: tuple[ClassMap, ...]
    policy_maps: tuple[PolicyMap, ...]
    interfaces: tuple[Interface, ...]

    @property
    def text(self) -> str:
        lines = ["ip routing", "ipv6 unicast-routing"]
        lines += (each.text for each in self.lists)
        lines += (each.text for each in self.class_maps)
        lines += (each.text for each in self.policy_maps)
        lines += (each.text for each in self.interfaces)
        return "\n".join(lines)

    def __str__(self) -> str:
        return self.text


# Rules -------------------------------------------------------------------------------------------


@functools.cache
def ipv4_addresses() -> SearchStrategy[str]:
    """"0.0.0.0", "192.0.2.1"."""
    return st.integers(0, 2**32 - 1).map(lambda number: str(ipaddress.IPv4Address(number)))


@functools.cache
def ipv6_addresses() -> SearchStrategy[str]:
    """"::", "2001:db8::1"."""
    return st.integers(0, 2**128 - 1).map(lambda number: str(ipaddress.IPv6Address(number)))


@functools.cache
def mac_addresses() -> SearchStrategy[str]:
    """"0000.0000.0000", "0011.2233.4455"."""
    def text(number: int) -> str:
        digits = f"{number:012x}"
        return f"{digits[:4]}.{digits[4:8]}.{digits[8:]}"

    return st.integers(0, 2**48 - 1).map(text)


@functools.cache
def ipv4_matches() -> SearchStrategy[str]:
    """"any", "host 192.0.2.1", "192.0.2.0/24", "10.0.0.0 0.0.255.255"."""
    return st.one_of(
        st.just("any"), ipv4_addresses().map("host {}".format),
        st.builds("{}/{}".format, ipv4_addresses(), st.integers(0, 32)),
        st.builds("{} {}".format, ipv4_addresses(), ipv4_addresses()))


@functools.cache
def ipv6_matches() -> SearchStrategy[str]:
    """"any", "host 2001:db8::1", "2001:db8::/32"."""
    return st.one_of(st.just("any"), ipv6_addresses().map("host {}".format),
                     st.builds("{}/{}".format, ipv6_addresses(), st.integers(0, 128)))


@functools.cache
def mac_matches() -> SearchStrategy[str]:
    """"any", "host 0011.2233.4455", "0011.2200.0000 0000.00ff.ffff"."""
    return st.one_of(st.just("any"), mac_addresses().map("host {}".format),
                     st.builds("{} {}".format, mac_addresses(), mac_addresses()))


@functools.cache
def _need_family(family: str, families: Sequence[str]) -> None:
    if family not in families:
        raise ValueError(f"family: expected one of {', '.join(families)}, found {family!r}")


def protocols(family: str = IPV4) -> SearchStrategy[str]:
    """Of an IP family: "ip" or "ipv6", "tcp", "47"."""
    _need_family(family, (IPV4, IPV6))
    return st.one_of(st.just(_KEYWORDS[family]), st.sampled_from(_WITH_PORTS),
                     st.integers(0, 255).map(str))


@functools.cache
def ports() -> SearchStrategy[str]:
    """"" for all, "eq 80", "neq 80", "lt 1", "gt 1023", "range 5004 5008"."""
    number = st.integers(0, 65535)
    return st.one_of(
        st.just(""), number.map("eq {}".format), number.map("neq {}".format),
        st.integers(1, 65535).map("lt {}".format), st.integers(0, 65534).map("gt {}".format),
        st.tuples(number, number).map(lambda pair: f"range {min(pair)} {max(pair)}"))


_OPTIONS = st.one_of(st.just(""), st.integers(0, 63).map("dscp {}".format))
_TCP_OPTIONS = _OPTIONS | st.sampled_from(["syn", "established", "ack", "+syn -ack"])
_TYPES = st.one_of(st.just(""), st.integers(0x600, 0xffff).map(hex))
_VLANS = st.one_of(st.just(""), st.integers(1, 4094).map("vlan {}".format))


@st.composite
def _ip_rules(draw: st.DrawFn, family: str) -> str:
    addresses = ipv4_matches() if family == IPV4 else ipv6_matches()
    protocol = draw(protocols(family))
    words = [protocol]
    for _ in range(2):
        words.append(draw(addresses))
        if protocol in _WITH_PORTS:
            words.append(draw(ports()))
    words.append(draw(_TCP_OPTIONS if protocol == "tcp" else _OPTIONS))
    return " ".join(filter(None, words))


@st.composite
def _mac_rules(draw: st.DrawFn) -> str:
    words = [draw(mac_matches()), draw(mac_matches())]
    words += [draw(_TYPES), draw(_VLANS)]
    return " ".join(filter(None, words))


@functools.cache
def rules(family: str = IPV4) -> SearchStrategy[str]:
    """A rule without its number: "permit ip any any", "deny tcp host 192.0.2.1 any eq 80"."""
    _need_family(family, FAMILIES)
    return st.builds("{} {}".format, st.sampled_from(["permit", "deny"]),
                     _mac_rules() if family == MAC else _ip_rules(family))


# Hypothesis reads the source of each lambda again whenever a strategy with it is made.
_FIRST = operator.itemgetter(0)


def _sorted_items(values: Mapping[Any, Any]) -> tuple[tuple[Any, Any], ...]:
    return tuple(sorted(values.items()))


_ACTIONS = st.dictionaries(st.sampled_from([1, 2, 3]), _NUMBERS, max_size=3).map(_sorted_items)

# Configurations ----------------------------------------------------------------------------------


@functools.cache  # a strategy that is made again for each example makes them slow
def _rule_lists(family: str, max_rules: int) -> SearchStrategy[list[str]]:
    return st.lists(rules(family), min_size=1, max_size=max_rules)


@st.composite
def access_lists(draw: st.DrawFn, name: str = "list", family: str | None = None,
                 max_rules: int = 4) -> AccessList:
    """A list of 1 to `max_rules` rules, which are numbered 10, 20, ...; by default of any family."""
    _need_family(family or IPV4, FAMILIES)
    chosen = family or draw(st.sampled_from(FAMILIES))
    texts = draw(_rule_lists(chosen, max_rules))
    return AccessList(name, chosen, tuple((10 * place, text)
                                          for place, text in enumerate(texts, 1)))


def class_maps(lists: Sequence[AccessList], name: str = "class") -> SearchStrategy[ClassMap]:
    """A class-map that matches some of the lists."""
    names = [(each.family, each.name) for each in lists]
    return st.builds(ClassMap, st.just(name), st.lists(
        st.sampled_from(names), min_size=1, unique=True).map(tuple))


def policy_maps(class_names: Sequence[str], name: str = "policy") -> SearchStrategy[PolicyMap]:
    """A policy-map with some of the classes in any order, each with actions."""
    return st.builds(PolicyMap, st.just(name), st.lists(
        st.tuples(st.sampled_from(class_names), _ACTIONS), min_size=1, unique_by=_FIRST).map(tuple))


def interfaces(policy_names: Sequence[str], number: int = 1) -> SearchStrategy[Interface]:
    """An interface with a policy-map in at least one direction."""
    return st.builds(Interface, st.just(number), st.dictionaries(
        st.sampled_from(DIRECTIONS), st.sampled_from(policy_names), min_size=1,
        max_size=2).map(_sorted_items))


@st.composite
def configurations(draw: st.DrawFn, *, families: Sequence[str] = FAMILIES, max_lists: int = 3,
                   max_rules: int = 4, max_classes: int = 3, max_policies: int = 2,
                   max_interfaces: int = 3) -> Configuration:
    """A whole configuration, in which everything refers to something that there is."""
    lists = tuple(
        draw(access_lists(f"list{number}", draw(st.sampled_from(list(families))), max_rules))
        for number in range(1, draw(st.integers(1, max_lists)) + 1))
    classes = tuple(draw(class_maps(lists, f"class{number}"))
                    for number in range(1, draw(st.integers(1, max_classes)) + 1))
    names = [each.name for each in classes]
    policies = tuple(draw(policy_maps(names, f"policy{number}"))
                     for number in range(1, draw(st.integers(1, max_policies)) + 1))
    attached = tuple(draw(interfaces([each.name for each in policies], number))
                     for number in range(1, draw(st.integers(1, max_interfaces)) + 1))
    return Configuration(lists, classes, policies, attached)


# Edits -------------------------------------------------------------------------------------------


def edits(configuration: Configuration) -> SearchStrategy[str]:
    """Policy text that edits the configuration, or what other such edits have made of it."""
    return st.one_of(_list_edits(configuration), _policy_edits(configuration),
                     _interface_edits(configuration))


@st.composite
def _policy_edits(draw: st.DrawFn, configuration: Configuration) -> str:
    policy = draw(st.sampled_from(configuration.policy_maps))
    name = draw(st.sampled_from([each.name for each in configuration.class_maps]))
    head = f"policy-map {policy.name}\n  "
    kind = draw(st.integers(1, 3))
    return draw(st.one_of(
        st.builds("{}{}".format, st.just(f"{head}class {name}\n    set action{kind} "),
                  _NUMBERS),
        st.just(f"{head}class {name}\n    set action{kind} 1\n    no set action{kind}"),
        st.just(f"{head}class {name}\n  no class {name}\n  class {name}"),
        st.just(f"{head}class {name} insert-before {policy.classes[0][0]}")
        if name != policy.classes[0][0] else st.just(f"{head}class {name}")))


@st.composite
def _list_edits(draw: st.DrawFn, configuration: Configuration) -> str:
    edited = draw(st.sampled_from(configuration.lists))
    number = draw(st.sampled_from([number for number, _ in edited.rules])
                  | st.integers(1, 1000))
    rule = draw(rules(edited.family))
    # Only a rule that there is can be removed.
    line = draw(st.sampled_from([f"{number} {rule}", f"{number} {rule}\n  no {number}"]))
    return f"{_KEYWORDS[edited.family]} access-list {edited.name}\n  {line}"


@st.composite
def _interface_edits(draw: st.DrawFn, configuration: Configuration) -> str:
    interface = draw(st.sampled_from(configuration.interfaces))
    direction = draw(st.sampled_from(DIRECTIONS))
    policy = draw(st.sampled_from(configuration.policy_maps)).name
    line = draw(st.sampled_from(["shutdown", "no shutdown",
                                 f"service-policy {direction} {policy}",
                                 f"service-policy {direction} {policy}\n"
                                 f"  no service-policy {direction} {policy}"]))
    return f"interface {interface.name}\n  {line}"


# Faults ------------------------------------------------------------------------------------------


@functools.cache
def operations() -> SearchStrategy[str]:
    """Operations of the helper that are called after a lab is made, with a text as result."""
    names = kor.ns.PolicyMapTestKit.Kit().operations()
    return st.sampled_from([each for each in names if each not in ("hwInit", "getCountForRule")])


@functools.cache
def fault_plans() -> SearchStrategy[str]:
    """A fault that need not be met: "commitPolicy nth=2 before optional"."""
    which = st.one_of(
        st.just("once"), st.builds("{}={}".format, st.sampled_from(["nth", "first", "every"]),
                                   st.integers(1, 5)))
    return st.builds("{} {} {} optional".format, operations(), which,
                     st.sampled_from(["before", "after", "throws"]))
