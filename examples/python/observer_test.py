# SPDX-License-Identifier: Apache-2.0
"""An observer: the status of a policy while it fails and recovers."""

import kor
from policies import EDGE, EDIT
from policymaptest import Lab


def test_each_change_of_the_error_is_seen_once(lab: Lab) -> None:
    lab.load(EDGE)
    status = lab.status.policyMapStatus[kor.ns.PolicyMap.PolicyMapSmKey("edge", "input")]
    errors: list[str] = []
    with kor.observe(status, "error", errors.append):
        lab.inject("commitError", "table full")
        lab.load(EDIT)
        lab.clear_faults()
        lab.advance(1)
    assert errors == ["table full", ""]
