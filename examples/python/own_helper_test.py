# SPDX-License-Identifier: Apache-2.0
"""A helper of one's own, before that of the lab: a table with few places."""

from collections.abc import Callable

import kor
from policies import EDGE
from policymaptest import Lab


class SmallTable:
    def __init__(self, places: int) -> None:
        self.places = places

    def addRule(self, key: kor.ns.PolicyMap.AclRuleKey) -> str | None:
        if self.places == 0:
            return f"no place for {key.aclName} {key.seqno}"
        self.places -= 1
        return None  # the call is passed on

    def deletePolicy(self, proceed: Callable[[], str]) -> str:
        self.places += 1
        return proceed()


def test_a_full_table_is_reported(lab: Lab) -> None:
    lab.before_helper(SmallTable(1))
    lab.load(EDGE + "ip access-list web\n 20 permit udp any any eq 53")
    assert lab.failure("edge").error == "no place for web 20"
    lab.load("ip access-list web\n no 20")
    lab.advance(1)
    assert lab.failure("edge").error == ""
