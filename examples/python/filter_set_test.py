# SPDX-License-Identifier: Apache-2.0
"""A filter set, one rule per line, shared by four classes."""

from policymaptest import Lab

RULE = "@10.{}.0.0/16\t0.0.0.0/0\t0 : 65535\t{} : {}\t0x06/0xFF\t0x0000/0x0000\n"


def test_a_thousand_rules(lab: Lab) -> None:
    lab.load_rules("".join(RULE.format(n % 256, n, n) for n in range(1, 1001)), classes=4)
    record = lab.record("rules")
    assert record.rule_count == 1000
    assert record.rules[0].class_name == "rules-1" and record.rules[-1].class_name == "rules-4"
    assert record.rules[6].match == "permit tcp 10.7.0.0/16 any eq 7"
